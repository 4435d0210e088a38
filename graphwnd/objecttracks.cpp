#include "graphwnd/objecttracks.h"

#include "graphdata/draw/drawobjects.h"
#include "graphwnd/graphwnd.h"

#include <QPainter>

namespace {

void beginInverted(QPainter &p)
{
    p.save();
    p.setCompositionMode(QPainter::RasterOp_NotDestination);
    p.setPen(QPen(Qt::white, 1));
    p.setBrush(Qt::NoBrush);
}

} // namespace

int CMoveTrackGraph::EndTrack(int result)
{
    const QPoint delta = m_current - m_start;
    const int r = CActionMouseTrack::EndTrack(result);
    if (r == 1 && !delta.isNull() && m_window) {
        for (CTextnLine *object : m_objects) {
            // A rectangle moves by its handle 10, both corners together.
            if (dynamic_cast<CDrawRect *>(object))
                object->MoveHandle(10, delta, m_window->ObjectFrame(object->m_yAxisIndex));
            else
                object->MoveBy(delta, m_window->ObjectFrame(object->m_yAxisIndex));
        }
    }
    return r;
}

bool CMoveTrackGraph::StartTimer()
{
    return true;
}

void CMoveTrackGraph::Cancel()
{
    CActionMouseTrack::Cancel();
}

void CMoveTrackGraph::ScrollTo(int dx, int dy, bool repeat)
{
    Q_UNUSED(dx);
    Q_UNUSED(dy);
    Q_UNUSED(repeat);
}

void CMoveTrackGraph::PaintFeedback(QPainter &painter)
{
    if (!m_window)
        return;
    beginInverted(painter);
    for (CTextnLine *object : m_objects) {
        const CObjectFrame frame = m_window->ObjectFrame(object->m_yAxisIndex);
        if (dynamic_cast<CDrawRect *>(object))
            object->DrawResized(painter, 10, m_current - m_start, frame);
        else
            object->DrawMoved(painter, m_current - m_start, frame);
    }
    painter.restore();
}

void CResizeTrackGraph::SetHandle(CTextnLine *object, int handle)
{
    m_object = object;
    m_handle = handle;
}

int CResizeTrackGraph::EndTrack(int result)
{
    const QPoint delta = m_current - m_start;
    const int r = CActionMouseTrack::EndTrack(result);
    if (r == 1 && m_object && !delta.isNull() && m_window)
        m_object->MoveHandle(m_handle, delta, m_window->ObjectFrame(m_object->m_yAxisIndex));
    return r;
}

void CResizeTrackGraph::Cancel()
{
    CActionMouseTrack::Cancel();
}

void CResizeTrackGraph::ScrollTo(int dx, int dy, bool repeat)
{
    Q_UNUSED(dx);
    Q_UNUSED(dy);
    Q_UNUSED(repeat);
}

void CResizeTrackGraph::PaintFeedback(QPainter &painter)
{
    if (!m_window || !m_object)
        return;
    beginInverted(painter);
    m_object->DrawResized(painter, m_handle, m_current - m_start, m_window->ObjectFrame(m_object->m_yAxisIndex));
    painter.restore();
}

int CLineDragTrack::EndTrack(int result)
{
    const int r = CActionMouseTrack::EndTrack(result);
    if (r == 1) {
        m_lineStart = m_start;
        m_lineEnd = m_current;
    }
    return r;
}

bool CLineDragTrack::StartTimer()
{
    return true;
}

void CLineDragTrack::Cancel()
{
    CActionMouseTrack::Cancel();
}

void CLineDragTrack::ScrollTo(int dx, int dy, bool repeat)
{
    Q_UNUSED(dx);
    Q_UNUSED(dy);
    Q_UNUSED(repeat);
}

void CLineDragTrack::PaintFeedback(QPainter &painter)
{
    beginInverted(painter);
    painter.drawLine(m_start, m_current);
    painter.restore();
}
