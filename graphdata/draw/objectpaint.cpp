#include "graphdata/draw/objectpaint.h"

#include "graphdata/draw/drawtools.h"
#include "graphdata/graphcurve.h"

#include <QPainter>

void DrawObjects(QPainter &p, CGraphCurve &g, const CIntRect &plot, double fontScale, int printing)
{
    if (g.m_textObjects.IsEmpty())
        return;
    const double xs = g.m_xViewMax > g.m_xViewMin ? (plot.right - plot.left) / (g.m_xViewMax - g.m_xViewMin) : 0;
    static const int order[3] = {3, 1, 2};
    for (int kind : order) {
        for (CTextnLine *object : g.m_textObjects) {
            if (object->ObjectKind() != kind || (object->m_flags & CTextnLine::FlagHidden))
                continue;
            const int axis =
                object->m_yAxisIndex >= 0 && object->m_yAxisIndex < g.RangeCount() ? object->m_yAxisIndex : 0;
            const CGraph_Range &r = *g.Range(axis);
            CObjectFrame frame;
            frame.plotRect = EdgesToQRect(plot);
            frame.xMin = g.m_xViewMin;
            frame.xScale = xs;
            frame.yMin = r.m_viewMin;
            frame.yScale = r.m_viewMax > r.m_viewMin ? (plot.bottom - plot.top) / (r.m_viewMax - r.m_viewMin) : 0;
            frame.fontScale = fontScale;
            frame.printing = printing;
            p.save();
            object->Draw(p, false, frame);
            p.restore();
        }
    }
}
