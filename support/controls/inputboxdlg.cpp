#include "support/controls/inputboxdlg.h"

#include "support/controls/exeditctrl.h"
#include "support/controls/windowcreator.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

CInputBoxDlg::CInputBoxDlg(QWidget *parent, const QString &prompt, const QString &title, const QString &value,
                           std::uint16_t flags)
    : QDialog(parent), m_prompt(new QLabel(prompt)), m_edit(new CExEditCtrl(nullptr, flags))
{
    setWindowTitle(title.isEmpty() ? QGuiApplication::applicationDisplayName() : title);
    m_prompt->setObjectName(ControlIdName(IdPrompt));
    m_prompt->setWordWrap(true);
    m_prompt->setBuddy(m_edit);
    m_prompt->setVisible(!prompt.isEmpty());
    m_edit->setObjectName(ControlIdName(IdValue));
    m_edit->setText(value);
    m_edit->selectAll();
    m_edit->setMinimumWidth(m_edit->fontMetrics().averageCharWidth() * 40);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_prompt);
    layout->addWidget(m_edit);
    layout->addSpacing(4);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    m_edit->setFocus();
}

QString CInputBoxDlg::Value() const
{
    return m_edit->text();
}
