#include "support/controls/windowcreator.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

namespace {

Qt::Alignment textAlignment(std::uint32_t style)
{
    if (style & CreatorAlignRight)
        return Qt::AlignRight | Qt::AlignVCenter;
    if (style & CreatorAlignCenter)
        return Qt::AlignHCenter | Qt::AlignVCenter;
    return Qt::AlignLeft | Qt::AlignVCenter;
}

} // namespace

QString ControlIdName(int id)
{
    return QString::number(id);
}

CAnyWindowCreator::CAnyWindowCreator(const QString &text, const QRect &rect, int baseId, int idStep,
                                     std::uint32_t style)
    : m_style(style), m_rect(rect), m_text(text), m_baseId(baseId), m_idStep(idStep)
{
}

int CAnyWindowCreator::RowId(int rowIndex, int rowStep) const
{
    if (m_baseId == -1)
        return -1;
    // Worked in 64 bits and wrapped as the 32-bit id word would be.
    const std::int64_t id = std::int64_t(m_baseId) + std::int64_t(rowStep) * m_idStep * rowIndex;
    return int(std::uint32_t(std::uint64_t(id)));
}

QWidget *CAnyWindowCreator::CreateInRow(QWidget *parent, QPoint offset, int rowIndex, int rowStep)
{
    const QRect rect = m_rect.translated(offset);
    QWidget *widget = Build(m_text, rect, parent, RowId(rowIndex, rowStep));
    if (widget && m_font)
        widget->setFont(*m_font);
    return widget;
}

void CAnyWindowCreator::Setup(QWidget *widget, const QRect &rect, int id) const
{
    widget->setGeometry(rect);
    if (id != -1)
        widget->setObjectName(ControlIdName(id));
    widget->setEnabled(!(m_style & CreatorStyleDisabled));
    // A parent that is already on screen does not show new children by
    // itself; one that is not yet shown shows them with it.
    if (m_style & CreatorStyleVisible) {
        if (widget->parentWidget()->isVisible())
            widget->show();
    } else {
        widget->hide();
    }
}

QWidget *CAnyWindowCreator::Build(const QString &text, const QRect &rect, QWidget *parent, int id)
{
    // A control without a parent would be a window of its own.
    if (!parent)
        return nullptr;
    auto *widget = new QWidget(parent);
    widget->setProperty("className", m_className);
    widget->setWindowTitle(text);
    Setup(widget, rect, id);
    return widget;
}

QWidget *CAnyButtonCreator::Build(const QString &text, const QRect &rect, QWidget *parent, int id)
{
    if (!parent)
        return nullptr;
    QWidget *widget = nullptr;
    switch (m_style & CreatorButtonKindMask) {
    case CreatorButtonCheckBox:
    case CreatorButtonAutoCheckBox:
        widget = new QCheckBox(text, parent);
        break;
    case CreatorButtonRadio:
    case CreatorButtonAutoRadio:
        widget = new QRadioButton(text, parent);
        break;
    case CreatorButtonGroupBox:
        widget = new QGroupBox(text, parent);
        break;
    default: {
        auto *button = new QPushButton(text, parent);
        button->setDefault((m_style & CreatorButtonKindMask) == CreatorButtonDefault);
        button->setAutoDefault(false);
        widget = button;
        break;
    }
    }
    Setup(widget, rect, id);
    return widget;
}

QWidget *CAnyStaticCreator::Build(const QString &text, const QRect &rect, QWidget *parent, int id)
{
    if (!parent)
        return nullptr;
    auto *label = new QLabel(text, parent);
    label->setAlignment(textAlignment(m_style));
    Setup(label, rect, id);
    return label;
}

QWidget *CAnyEditCreator::Build(const QString &text, const QRect &rect, QWidget *parent, int id)
{
    if (!parent)
        return nullptr;
    auto *edit = new QLineEdit(text, parent);
    edit->setAlignment(textAlignment(m_style));
    edit->setReadOnly(m_style & CreatorEditReadOnly);
    if (m_style & CreatorEditPassword)
        edit->setEchoMode(QLineEdit::Password);
    Setup(edit, rect, id);
    return edit;
}
