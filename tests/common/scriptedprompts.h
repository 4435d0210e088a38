#pragma once
// Answers message boxes and file dialogs from a script, and records what was
// asked.  Installed for the lifetime of the object.

#include "support/controls/userprompts.h"

#include <QList>
#include <QStringList>

class CScriptedPrompts : public CUserPrompts
{
public:
    CScriptedPrompts() { m_previous = SetUserPrompts(this); }
    ~CScriptedPrompts() override { SetUserPrompts(m_previous); }

    // Answers given in turn; when they run out, Ok (or Cancel for a question).
    QList<PromptAnswer> answers;
    // File names given in turn; when they run out, the dialog is cancelled.
    QStringList fileNames;

    // Texts typed into input boxes in turn; a null string cancels, and so
    // does running out.
    QStringList inputs;

    QList<CMessagePrompt> messages;
    QList<CFilePrompt> filePrompts;
    QList<CInputPrompt> inputPrompts;

    PromptAnswer Message(const CMessagePrompt &prompt) override
    {
        messages.append(prompt);
        if (!answers.isEmpty())
            return answers.takeFirst();
        return prompt.buttons == PromptButtons::Ok ? PromptAnswer::Ok : PromptAnswer::Cancel;
    }

    QString FileName(const CFilePrompt &prompt) override
    {
        filePrompts.append(prompt);
        return fileNames.isEmpty() ? QString() : fileNames.takeFirst();
    }

    bool Input(const CInputPrompt &prompt, QString &value) override
    {
        inputPrompts.append(prompt);
        const QString typed = inputs.isEmpty() ? QString() : inputs.takeFirst();
        if (typed.isNull())
            return false;
        value = typed;
        return true;
    }

    QStringList MessageTexts() const
    {
        QStringList texts;
        for (const CMessagePrompt &m : messages)
            texts << m.text;
        return texts;
    }

private:
    CUserPrompts *m_previous = nullptr;
};
