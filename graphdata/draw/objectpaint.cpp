#include "graphdata/draw/objectpaint.h"

#include "graphdata/draw/drawtools.h"
#include "graphdata/graphcurve.h"

#include <QPainter>

CObjectFrame ObjectFrameOf(const CGraphCurve &g, const CIntRect &plot, int axis)
{
    CObjectFrame frame;
    frame.plotRect = EdgesToQRect(plot);
    frame.xMin = g.m_xViewMin;
    frame.xScale = g.m_xViewMax > g.m_xViewMin ? (plot.right - plot.left) / (g.m_xViewMax - g.m_xViewMin) : 0;
    frame.xLog = g.m_xLog != 0;
    if (axis < 0 || axis >= g.RangeCount())
        axis = 0;
    if (g.RangeCount() == 0)
        return frame;
    const CGraph_Range &r = *g.Range(axis);
    frame.yMin = r.m_viewMin;
    frame.yScale = r.m_viewMax > r.m_viewMin ? (plot.bottom - plot.top) / (r.m_viewMax - r.m_viewMin) : 0;
    // A dB axis shows its values as they stand.
    frame.yLog = r.m_logScale != 0 && r.m_dbScale == 0;
    return frame;
}

void DrawObjects(QPainter &p, CGraphCurve &g, const CIntRect &plot, double fontScale, int printing)
{
    if (g.m_textObjects.IsEmpty())
        return;
    static const int order[3] = {3, 1, 2};
    for (int kind : order) {
        for (CTextnLine *object : g.m_textObjects) {
            if (object->ObjectKind() != kind || (object->m_flags & CTextnLine::FlagHidden))
                continue;
            CObjectFrame frame = ObjectFrameOf(g, plot, object->m_yAxisIndex);
            frame.fontScale = fontScale;
            frame.printing = printing;
            p.save();
            object->Draw(p, false, frame);
            p.restore();
        }
    }
}
