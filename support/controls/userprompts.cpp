#include "support/controls/userprompts.h"

#include "support/controls/inputboxdlg.h"
#include "support/controls/messageboxcheck.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

namespace {

CUserPrompts *g_prompts = nullptr;

QMessageBox::Icon boxIcon(PromptIcon icon)
{
    switch (icon) {
    case PromptIcon::Information: return QMessageBox::Information;
    case PromptIcon::Question: return QMessageBox::Question;
    case PromptIcon::Warning: return QMessageBox::Warning;
    case PromptIcon::Stop: return QMessageBox::Critical;
    case PromptIcon::None: break;
    }
    return QMessageBox::NoIcon;
}

} // namespace

PromptAnswer CUserPrompts::Message(const CMessagePrompt &prompt)
{
    // A box asked for its check state has the check box, even when its text
    // is missing.
    if (!prompt.checkBoxText.isEmpty() || prompt.checkBoxChecked) {
        CMessageBoxCheck box(prompt.parent, prompt.text, QString(), prompt.checkBoxText, prompt.buttons,
                             prompt.icon);
        box.exec();
        if (prompt.checkBoxChecked)
            *prompt.checkBoxChecked = box.IsChecked();
        return box.Answer();
    }
    QMessageBox box(boxIcon(prompt.icon), QGuiApplication::applicationDisplayName(), prompt.text,
                    QMessageBox::NoButton, prompt.parent);
    PromptAnswer closed = PromptAnswer::Ok;
    switch (prompt.buttons) {
    case PromptButtons::Ok:
        box.setStandardButtons(QMessageBox::Ok);
        break;
    case PromptButtons::OkCancel:
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        closed = PromptAnswer::Cancel;
        break;
    case PromptButtons::YesNo:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        closed = PromptAnswer::No;
        break;
    case PromptButtons::YesNoCancel:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        closed = PromptAnswer::Cancel;
        break;
    }
    const int pressed = box.exec();
    switch (pressed) {
    case QMessageBox::Ok: return PromptAnswer::Ok;
    case QMessageBox::Yes: return PromptAnswer::Yes;
    case QMessageBox::No: return PromptAnswer::No;
    case QMessageBox::Cancel: return PromptAnswer::Cancel;
    default: return closed;
    }
}

QString CUserPrompts::FileName(const CFilePrompt &prompt)
{
    QFileDialog dialog(prompt.parent, prompt.caption, QString(), prompt.filter);
    dialog.setAcceptMode(prompt.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(prompt.save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialog.setDefaultSuffix(prompt.defaultSuffix);
    if (!prompt.fileName.isEmpty()) {
        const QFileInfo info(prompt.fileName);
        if (info.isDir()) {
            dialog.setDirectory(prompt.fileName);
        } else {
            dialog.setDirectory(info.absolutePath());
            dialog.selectFile(info.fileName());
        }
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return QString();
    if (prompt.filterPosition)
        *prompt.filterPosition = int(dialog.nameFilters().indexOf(dialog.selectedNameFilter())) + 1;
    return dialog.selectedFiles().constFirst();
}

bool CUserPrompts::Input(const CInputPrompt &prompt, QString &value)
{
    CInputBoxDlg box(prompt.parent, prompt.prompt, prompt.title, prompt.value, prompt.flags);
    if (box.exec() != QDialog::Accepted)
        return false;
    value = box.Value();
    return true;
}

CUserPrompts *SetUserPrompts(CUserPrompts *prompts)
{
    CUserPrompts *previous = g_prompts;
    g_prompts = prompts;
    return previous;
}

CUserPrompts &UserPrompts()
{
    static CUserPrompts standard;
    return g_prompts ? *g_prompts : standard;
}

PromptAnswer ShowMessage(QWidget *parent, const QString &text, PromptButtons buttons,
                         PromptIcon icon)
{
    CMessagePrompt prompt;
    prompt.parent = parent;
    prompt.text = text;
    prompt.buttons = buttons;
    prompt.icon = icon;
    return UserPrompts().Message(prompt);
}

QString AskFileName(const CFilePrompt &prompt)
{
    return UserPrompts().FileName(prompt);
}

std::optional<QString> AskText(const CInputPrompt &prompt)
{
    QString value = prompt.value;
    if (!UserPrompts().Input(prompt, value))
        return std::nullopt;
    return value;
}
