#pragma once
// Every message box and file dialog of the programs goes through here, so
// that one object decides how they are answered: normally the standard Qt
// boxes and a person, in tests a script.

#include <QString>
#include <cstdint>
#include <optional>

class QWidget;

enum class PromptButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class PromptIcon { None, Information, Question, Warning, Stop };
enum class PromptAnswer { Ok, Cancel, Yes, No };

struct CMessagePrompt {
    QWidget *parent = nullptr;
    QString text;
    PromptButtons buttons = PromptButtons::Ok;
    PromptIcon icon = PromptIcon::Warning;
    // With a text or a place for its state, the box has a check box ("do not
    // show this again"); its state on closing goes to *checkBoxChecked.
    QString checkBoxText;
    bool *checkBoxChecked = nullptr;
};

struct CFilePrompt {
    QWidget *parent = nullptr;
    bool save = false;       // a save dialog (asks before overwriting), else open
    QString caption;
    QString fileName;        // the name, or folder, the dialog starts with
    QString filter;          // Qt's form: "Text Files (*.txt);;All files (*)"
    QString defaultSuffix;   // added to a name typed without one
    int *filterPosition = nullptr; // when set: receives the 1-based position of the filter chosen
};

struct CInputPrompt {
    QWidget *parent = nullptr;
    QString title;           // empty: the application's name
    QString prompt;          // the line above the field; may be empty
    QString value;           // the text the field starts with
    std::uint16_t flags = 255; // what may be typed, as in CExEditCtrl (255: any text)
};

class CUserPrompts
{
public:
    virtual ~CUserPrompts() = default;
    // Shows a message box; the button pressed.  Closing the box counts as
    // Cancel, or as No when there is no Cancel, or as Ok.
    virtual PromptAnswer Message(const CMessagePrompt &prompt);
    // Asks for a file; empty when the dialog was cancelled.
    virtual QString FileName(const CFilePrompt &prompt);
    // Asks for one line of text; false when the box was cancelled, with
    // `value` left as it was.
    virtual bool Input(const CInputPrompt &prompt, QString &value);
};

// Puts `prompts` in charge from now on (null: the standard boxes again) and
// returns the one that was.  The caller keeps ownership.
CUserPrompts *SetUserPrompts(CUserPrompts *prompts);
CUserPrompts &UserPrompts();

PromptAnswer ShowMessage(QWidget *parent, const QString &text,
                         PromptButtons buttons = PromptButtons::Ok,
                         PromptIcon icon = PromptIcon::Warning);
QString AskFileName(const CFilePrompt &prompt);
// One line of text; nothing when the person cancelled.
std::optional<QString> AskText(const CInputPrompt &prompt);
