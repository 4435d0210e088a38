#include "support/controls/colorbar.h"

#include "support/controls/exstatic.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace {

const int kGap = 2;

} // namespace

CColorBar::CColorBar(QWidget *parent) : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void CColorBar::SetColors(const std::vector<std::uint32_t> &colors)
{
    m_colors = colors;
    if (m_current >= int(m_colors.size()))
        m_current = -1;
    updateGeometry();
    update();
}

void CColorBar::SetCurrent(int index)
{
    m_current = index >= 0 && index < int(m_colors.size()) ? index : -1;
    update();
}

std::uint32_t CColorBar::CurrentColor(std::uint32_t fallback) const
{
    return m_current >= 0 ? m_colors[m_current] : fallback;
}

QRect CColorBar::SwatchRect(int index) const
{
    const int n = int(m_colors.size());
    if (index < 0 || index >= n)
        return {};
    // The width is shared out so that the swatches fill it to the last pixel.
    const int left = index * width() / n;
    const int right = (index + 1) * width() / n;
    return QRect(left, 0, right - left, height()).adjusted(kGap, kGap, -kGap, -kGap);
}

int CColorBar::IndexAt(QPoint point) const
{
    const int n = int(m_colors.size());
    if (n == 0 || !rect().contains(point))
        return -1;
    const int index = std::min(point.x() * n / std::max(width(), 1), n - 1);
    return SwatchRect(index).contains(point) ? index : -1;
}

QSize CColorBar::sizeHint() const
{
    const int side = fontMetrics().height() + 2 * kGap;
    return QSize(side * std::max<int>(int(m_colors.size()), 1), side);
}

QSize CColorBar::minimumSizeHint() const
{
    const int side = fontMetrics().height() / 2 + 2 * kGap;
    return QSize(side * std::max<int>(int(m_colors.size()), 1), side);
}

void CColorBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    for (int i = 0; i < int(m_colors.size()); ++i) {
        const QRect r = SwatchRect(i);
        painter.fillRect(r, ColorFromRgbWord(m_colors[i]));
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawRect(r.adjusted(0, 0, -1, -1));
        if (i == m_current) {
            // The chosen one is framed outside its swatch.
            painter.setPen(QPen(palette().color(hasFocus() ? QPalette::Highlight : QPalette::Text), 2));
            painter.drawRect(r.adjusted(-1, -1, 0, 0));
        }
    }
}

void CColorBar::choose(int index)
{
    if (index < 0 || index >= int(m_colors.size()))
        return;
    const bool changed = index != m_current;
    m_current = index;
    update();
    if (changed)
        emit ColorChosen(index, m_colors[index]);
}

void CColorBar::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        choose(IndexAt(event->position().toPoint()));
    else
        QWidget::mousePressEvent(event);
}

void CColorBar::keyPressEvent(QKeyEvent *event)
{
    const int n = int(m_colors.size());
    switch (event->key()) {
    case Qt::Key_Left: choose(m_current <= 0 ? 0 : m_current - 1); break;
    case Qt::Key_Right: choose(m_current < 0 ? 0 : std::min(m_current + 1, n - 1)); break;
    case Qt::Key_Home: choose(0); break;
    case Qt::Key_End: choose(n - 1); break;
    default: QWidget::keyPressEvent(event); return;
    }
}
