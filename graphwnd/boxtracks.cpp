#include "graphwnd/boxtracks.h"

#include <QPainter>

#include <algorithm>

namespace {

// The frame inverts what lies under it, so that it shows on any picture
// and goes without a trace.
void invertFrame(QPainter &p, const QRect &r, Qt::PenStyle style)
{
    p.save();
    p.setCompositionMode(QPainter::RasterOp_NotDestination);
    p.setPen(QPen(Qt::white, 1, style));
    p.setBrush(Qt::NoBrush);
    p.drawRect(r);
    p.restore();
}

} // namespace

void CSelectBoxTrackGraph::PaintFeedback(QPainter &painter)
{
    invertFrame(painter, DragRect(), Qt::DashDotLine);
}

bool CZoomBoxTrackGraph::TestAutoScroll(QPoint point)
{
    Q_UNUSED(point);
    m_scrolling = 0;
    return false;
}

void CZoomBoxTrackGraph::ScrollTo(int dx, int dy, bool repeat)
{
    Q_UNUSED(dx);
    Q_UNUSED(dy);
    Q_UNUSED(repeat);
}

void CZoomBoxTrackGraph::PaintFeedback(QPainter &painter)
{
    invertFrame(painter, DragRect(), Qt::SolidLine);
}

bool CTitleBoxTrackGraph::TestAutoScroll(QPoint point)
{
    Q_UNUSED(point);
    m_scrolling = 0;
    return false;
}

void CTitleBoxTrackGraph::PaintFeedback(QPainter &painter)
{
    invertFrame(painter, MovedRect(), Qt::SolidLine);
}

bool CPartialBoxTrackGraph::StartTimer()
{
    // The span is bounded by the plot; there is nothing to scroll to.
    return true;
}

void CPartialBoxTrackGraph::OnMouseMove(QPoint point, Qt::KeyboardModifiers keys)
{
    Q_UNUSED(keys);
    if (m_feedbackShown)
        DrawFeedback();
    point.setX(std::clamp(point.x(), m_clientRect.left(), m_clientRect.right()));
    point.setY(std::clamp(point.y(), std::min(m_top, m_bottom), std::max(m_top, m_bottom)));
    m_current = point;
    if (m_running)
        DrawFeedback();
}

QRect CPartialBoxTrackGraph::BoxRect() const
{
    if (!m_spanOnly)
        return QRect(m_start, m_current).normalized();
    return QRect(QPoint(std::min(m_start.x(), m_current.x()), m_top),
                 QPoint(std::max(m_start.x(), m_current.x()), m_bottom));
}

void CPartialBoxTrackGraph::PaintFeedback(QPainter &painter)
{
    invertFrame(painter, BoxRect(), Qt::SolidLine);
}
