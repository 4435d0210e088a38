#include "graphwnd/viewtracks.h"

#include "graphdata/draw/drawtools.h"
#include "graphwnd/graphwnd.h"

#include <QPainter>

namespace {

// The mouse has to travel this far before a right-button drag counts as a
// pan rather than a click.
const int kClickSlop = 3;

void invertFrame(QPainter &p, const QRect &r, Qt::PenStyle style = Qt::SolidLine)
{
    p.save();
    p.setCompositionMode(QPainter::RasterOp_NotDestination);
    p.setPen(QPen(Qt::white, 1, style));
    p.setBrush(Qt::NoBrush);
    p.drawRect(r);
    p.restore();
}

} // namespace

// ---- CZoomTrack ------------------------------------------------------------

bool CZoomTrack::TestAutoScroll(QPoint point)
{
    Q_UNUSED(point);
    m_scrolling = 0;
    return false;
}

QRect CZoomTrack::FrameRect() const
{
    QRect r = DragRect();
    if (!m_window || !m_window->GetGraphData())
        return r;
    const QRect plot = EdgesToQRect(m_window->GetGraphData()->m_plotRect);
    if (m_axisLock == LockX) {
        r.setTop(plot.top());
        r.setBottom(plot.bottom());
    } else if (m_axisLock == LockY) {
        r.setLeft(plot.left());
        r.setRight(plot.right());
    }
    return r;
}

void CZoomTrack::DrawFeedback()
{
    CActionMouseTrack::DrawFeedback();
    m_haveView = false;
    CGraphCurve *graph = m_window ? m_window->GetGraphData() : nullptr;
    const QRect frame = FrameRect();
    if (!graph || frame.width() < 2 || frame.height() < 2)
        return;
    const CViewRanges old = SaveView(*graph);
    ZoomToPixels(*graph, frame, m_axisLock != LockY, m_axisLock != LockX);
    m_newView = SaveView(*graph);
    RestoreView(*graph, old);
    m_haveView = true;
}

void CZoomTrack::PaintFeedback(QPainter &painter)
{
    invertFrame(painter, FrameRect());
}

// ---- CZoomPanTrack ---------------------------------------------------------

bool CZoomPanTrack::Track(CGraphWnd *window, QPoint point)
{
    if (CGraphCurve *graph = window->GetGraphData())
        m_startView = SaveView(*graph);
    return CActionMouseTrack::Track(window, point);
}

bool CZoomPanTrack::TestAutoScroll(QPoint point)
{
    Q_UNUSED(point);
    m_scrolling = 0;
    return false;
}

void CZoomPanTrack::DrawFeedback()
{
    CActionMouseTrack::DrawFeedback();
    CGraphCurve *graph = m_window ? m_window->GetGraphData() : nullptr;
    if (!graph || !m_feedbackShown)
        return;
    RestoreView(*graph, m_startView);
    const QPoint d = m_current - m_start;
    const QPoint mid = (m_start + m_current) / 2;
    const CIntRect &plot = graph->m_plotRect;
    if (m_axisLock != LockY && d.x() != 0) {
        const CAxisMap xm = XAxisMap(*graph);
        if (xm.IsValid()) {
            double lo = graph->m_xViewMin, hi = graph->m_xViewMax;
            const double dv = d.x() / xm.scale;
            if (mid.x() < (plot.left + plot.right) / 2)
                hi -= dv;
            else
                lo -= dv;
            if (hi > lo) {
                graph->m_xViewMin = lo;
                graph->m_xViewMax = hi;
            }
        }
    }
    if (m_axisLock != LockX && d.y() != 0) {
        for (int axis = 0; axis < graph->RangeCount(); ++axis) {
            if (m_axisIndex >= 0 && axis != m_axisIndex)
                continue;
            const CAxisMap ym = YAxisMap(*graph, axis);
            if (!ym.IsValid())
                continue;
            CGraph_Range &r = *graph->Range(axis);
            double lo = r.m_viewMin, hi = r.m_viewMax;
            const double dv = d.y() / ym.scale;
            if (mid.y() < (plot.top + plot.bottom) / 2)
                lo += dv;
            else
                hi += dv;
            if (hi > lo) {
                r.m_viewMin = lo;
                r.m_viewMax = hi;
            }
        }
    }
    m_window->Redraw(1);
}

void CZoomPanTrack::Cancel()
{
    CActionMouseTrack::Cancel();
    if (CGraphCurve *graph = m_window ? m_window->GetGraphData() : nullptr) {
        RestoreView(*graph, m_startView);
        m_window->Redraw(1);
    }
}

// ---- CPanTrackGraph --------------------------------------------------------

bool CPanTrackGraph::Track(CGraphWnd *window, QPoint point)
{
    if (CGraphCurve *graph = window->GetGraphData())
        m_startView = SaveView(*graph);
    m_scrolled = QPoint();
    m_moved = 0;
    return CActionMouseTrack::Track(window, point);
}

bool CPanTrackGraph::StartTimer()
{
    // The timer runs only while the mouse is outside the client area.
    return true;
}

bool CPanTrackGraph::TestAutoScroll(QPoint point)
{
    MeasureOutside(point);
    if (m_axisLock == LockX)
        m_scrollDy = 0;
    else if (m_axisLock == LockY)
        m_scrollDx = 0;
    if (m_scrollDx == 0 && m_scrollDy == 0) {
        m_scrolling = 0;
        m_timer.stop();
        return false;
    }
    if (!m_scrolling) {
        m_scrolling = 1;
        m_timer.start();
    }
    ScrollTo(m_scrollDx, m_scrollDy, false);
    return true;
}

void CPanTrackGraph::ScrollTo(int dx, int dy, bool repeat)
{
    Q_UNUSED(repeat);
    m_scrolled += QPoint(dx, dy);
    applyPan();
}

void CPanTrackGraph::OnMouseMove(QPoint point, Qt::KeyboardModifiers keys)
{
    Q_UNUSED(keys);
    if ((point - m_start).manhattanLength() > kClickSlop)
        m_moved = 1;
    m_current = point;
    if (TestAutoScroll(point))
        return;
    applyPan();
}

void CPanTrackGraph::OnRightUp(QPoint point)
{
    OnLeftUp(point);
}

void CPanTrackGraph::Cancel()
{
    CActionMouseTrack::Cancel();
    if (CGraphCurve *graph = m_window ? m_window->GetGraphData() : nullptr) {
        RestoreView(*graph, m_startView);
        m_window->Redraw(1);
    }
}

void CPanTrackGraph::applyPan()
{
    CGraphCurve *graph = m_window ? m_window->GetGraphData() : nullptr;
    if (!graph)
        return;
    RestoreView(*graph, m_startView);
    const QPoint delta = m_current - m_start + m_scrolled;
    PanByPixels(*graph, delta, m_axisLock != LockY, m_axisLock != LockX, m_onlyAxis);
    m_window->Redraw(1);
}

// ---- CScrollTrackAxis ------------------------------------------------------

bool CScrollTrackAxis::Track(CGraphWnd *window, QPoint point)
{
    m_onlyAxis = m_axisIndex < 0 ? -1 : m_axisIndex;
    m_axisLock = m_axisIndex < 0 ? LockX : LockY;
    return CPanTrackGraph::Track(window, point);
}

bool CScrollTrackAxis::StartTimer()
{
    return CPanTrackGraph::StartTimer();
}
