#include "support/controls/exlistbox.h"

#include "support/controls/exstatic.h"

#include <QPainter>

namespace {

const int kColorRole = Qt::UserRole + 1;

} // namespace

CExListBox::CExListBox(QWidget *parent) : QListWidget(parent)
{
    const int side = fontMetrics().height();
    setIconSize(QSize(side * 2, side));
}

QPixmap CExListBox::Swatch(std::uint32_t color) const
{
    const QSize size = iconSize();
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setPen(palette().color(QPalette::Text));
    painter.setBrush(ColorFromRgbWord(color));
    painter.drawRect(QRect(QPoint(1, 2), size - QSize(3, 5)));
    return pixmap;
}

int CExListBox::AddItem(const QString &text, std::uint32_t color)
{
    auto *item = new QListWidgetItem(text, this);
    item->setData(kColorRole, quint32(color));
    item->setIcon(QIcon(Swatch(color)));
    return row(item);
}

void CExListBox::SetItemColor(int row, std::uint32_t color)
{
    if (QListWidgetItem *it = item(row)) {
        it->setData(kColorRole, quint32(color));
        it->setIcon(QIcon(Swatch(color)));
    }
}

std::uint32_t CExListBox::ItemColor(int row) const
{
    const QListWidgetItem *it = item(row);
    return it ? std::uint32_t(it->data(kColorRole).toUInt()) : 0;
}

CExListBox2::CExListBox2(QWidget *parent) : QListWidget(parent)
{
    connect(this, &QListWidget::itemChanged, this, [this](QListWidgetItem *it) {
        emit CheckChanged(row(it), it->checkState() == Qt::Checked);
    });
}

int CExListBox2::AddItem(const QString &text, bool checked)
{
    auto *item = new QListWidgetItem(text);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
    // Added before it is in the list, so that adding is no change of a tick.
    addItem(item);
    return row(item);
}

void CExListBox2::SetChecked(int row, bool checked)
{
    if (QListWidgetItem *it = item(row))
        it->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
}

bool CExListBox2::IsChecked(int row) const
{
    const QListWidgetItem *it = item(row);
    return it && it->checkState() == Qt::Checked;
}

QList<int> CExListBox2::CheckedRows() const
{
    QList<int> rows;
    for (int i = 0; i < count(); ++i)
        if (item(i)->checkState() == Qt::Checked)
            rows << i;
    return rows;
}
