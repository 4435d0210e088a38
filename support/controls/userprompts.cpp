#include "support/controls/userprompts.h"

#include <QApplication>
#include <QCheckBox>
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
    QCheckBox *check = nullptr;
    if (!prompt.checkBoxText.isEmpty()) {
        check = new QCheckBox(prompt.checkBoxText, &box);
        box.setCheckBox(check);
    }
    const int pressed = box.exec();
    if (check && prompt.checkBoxChecked)
        *prompt.checkBoxChecked = check->isChecked();
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
