#include "support/controls/messageboxcheck.h"

#include "support/controls/windowcreator.h"
#include "support/languagestring.h"
#include "support/registry.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace {

enum : int { TextDontShowAgain = 43602 };

QStyle::StandardPixmap iconPixmap(PromptIcon icon)
{
    switch (icon) {
    case PromptIcon::Information: return QStyle::SP_MessageBoxInformation;
    case PromptIcon::Question: return QStyle::SP_MessageBoxQuestion;
    case PromptIcon::Stop: return QStyle::SP_MessageBoxCritical;
    case PromptIcon::Warning:
    case PromptIcon::None: break;
    }
    return QStyle::SP_MessageBoxWarning;
}

struct ButtonSet {
    QDialogButtonBox::StandardButtons buttons;
    PromptAnswer closed;
};

ButtonSet buttonSet(PromptButtons buttons)
{
    switch (buttons) {
    case PromptButtons::OkCancel: return {QDialogButtonBox::Ok | QDialogButtonBox::Cancel, PromptAnswer::Cancel};
    case PromptButtons::YesNo: return {QDialogButtonBox::Yes | QDialogButtonBox::No, PromptAnswer::No};
    case PromptButtons::YesNoCancel:
        return {QDialogButtonBox::Yes | QDialogButtonBox::No | QDialogButtonBox::Cancel, PromptAnswer::Cancel};
    case PromptButtons::Ok: break;
    }
    return {QDialogButtonBox::Ok, PromptAnswer::Ok};
}

} // namespace

CMessageBoxCheck::CMessageBoxCheck(QWidget *parent, const QString &text, const QString &title,
                                   const QString &checkText, PromptButtons buttons, PromptIcon icon)
    : QDialog(parent), m_icon(new QLabel), m_message(new QLabel(text)),
      m_check(new QCheckBox(checkText.isEmpty() ? LanguageString(TextDontShowAgain) : checkText)),
      m_buttons(new QDialogButtonBox)
{
    setWindowTitle(title.isEmpty() ? QGuiApplication::applicationDisplayName() : title);
    m_icon->setObjectName(ControlIdName(IdIcon));
    m_message->setObjectName(ControlIdName(IdMessage));
    m_check->setObjectName(ControlIdName(IdCheck));

    // The message and its icon stand on a plain panel of the base colour,
    // the check box and buttons below it on the dialog's own.
    auto *panel = new QWidget;
    panel->setBackgroundRole(QPalette::Base);
    panel->setAutoFillBackground(true);
    const int iconSize = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    if (icon != PromptIcon::None)
        m_icon->setPixmap(style()->standardIcon(iconPixmap(icon), nullptr, this).pixmap(iconSize, iconSize));
    m_icon->setVisible(icon != PromptIcon::None);
    m_icon->setAlignment(Qt::AlignTop);
    m_message->setWordWrap(true);
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_message->setMinimumWidth(320);
    m_message->setMaximumWidth(560);
    auto *panelLayout = new QHBoxLayout(panel);
    panelLayout->setContentsMargins(16, 16, 16, 16);
    panelLayout->setSpacing(12);
    panelLayout->addWidget(m_icon, 0, Qt::AlignTop);
    panelLayout->addWidget(m_message, 1);

    const ButtonSet set = buttonSet(buttons);
    m_answer = set.closed;
    m_buttons->setStandardButtons(set.buttons);
    connect(m_buttons, &QDialogButtonBox::clicked, this, [this](QAbstractButton *button) {
        switch (m_buttons->standardButton(button)) {
        case QDialogButtonBox::Ok: m_answer = PromptAnswer::Ok; break;
        case QDialogButtonBox::Yes: m_answer = PromptAnswer::Yes; break;
        case QDialogButtonBox::No: m_answer = PromptAnswer::No; break;
        default: m_answer = PromptAnswer::Cancel; break;
        }
        if (m_answer == PromptAnswer::Cancel)
            reject();
        else
            accept();
    });

    auto *lower = new QVBoxLayout;
    lower->setContentsMargins(16, 8, 16, 12);
    lower->addWidget(m_check);
    lower->addWidget(m_buttons);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(panel, 1);
    layout->addLayout(lower);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

bool CMessageBoxCheck::IsChecked() const
{
    return m_check->isChecked();
}

void CMessageBoxCheck::SetChecked(bool checked)
{
    m_check->setChecked(checked);
}

PromptAnswer MessageBoxCheck(QWidget *parent, const QString &text, const QString &keyPath,
                             const QString &valueName, PromptButtons buttons, PromptIcon icon,
                             const QString &checkText)
{
    if (RegistryGetDword(keyPath, valueName, 0))
        return PromptAnswer::Ok;
    bool hide = false;
    CMessagePrompt prompt;
    prompt.parent = parent;
    prompt.text = text;
    prompt.buttons = buttons;
    prompt.icon = icon;
    prompt.checkBoxText = checkText.isEmpty() ? LanguageString(TextDontShowAgain) : checkText;
    prompt.checkBoxChecked = &hide;
    const PromptAnswer answer = UserPrompts().Message(prompt);
    if (hide)
        RegistrySetDword(keyPath, valueName, 1);
    return answer;
}
