#pragma once
// CMessageBoxCheck: a message with a check box under it, mostly "do not show
// this again".  Control 2962 shows the message, 2961 the icon beside it, and
// 2021 is the check box.
//
// MessageBoxCheck() is what hosts call: it shows the message unless the
// person ticked the box an earlier time, and keeps the tick as a number
// under a settings key (for instance "HideInvalidPointWarning" below
// "STANDARD OPTIONS").

#include "support/controls/userprompts.h"

#include <QDialog>

class QCheckBox;
class QDialogButtonBox;
class QLabel;

class CMessageBoxCheck : public QDialog
{
    Q_OBJECT
public:
    enum : int { IdCheck = 2021, IdIcon = 2961, IdMessage = 2962 };

    // An empty title leaves the application's name; an empty check text
    // takes the usual "do not show again" text.
    CMessageBoxCheck(QWidget *parent, const QString &text, const QString &title = {},
                     const QString &checkText = {}, PromptButtons buttons = PromptButtons::Ok,
                     PromptIcon icon = PromptIcon::Warning);

    bool IsChecked() const;
    void SetChecked(bool checked);
    // The button that closed the box; closing it otherwise counts as
    // Cancel, or No when there is no Cancel, or Ok.
    PromptAnswer Answer() const { return m_answer; }

private:
    QLabel *m_icon;
    QLabel *m_message;
    QCheckBox *m_check;
    QDialogButtonBox *m_buttons;
    PromptAnswer m_answer = PromptAnswer::Ok;
};

// Shows `text` with a check box, unless the value `valueName` under
// `keyPath` is set; a tick stores 1 there, so the message does not come
// again.  When the message is not shown the answer is Ok.  Goes through
// UserPrompts(), so that tests answer it.
PromptAnswer MessageBoxCheck(QWidget *parent, const QString &text, const QString &keyPath,
                             const QString &valueName, PromptButtons buttons = PromptButtons::Ok,
                             PromptIcon icon = PromptIcon::Warning, const QString &checkText = {});
