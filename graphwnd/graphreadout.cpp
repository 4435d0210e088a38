#include "graphwnd/graphreadout.h"

#include "graphdata/graphcurve.h"
#include "graphwnd/graphviewops.h"

#include <cmath>

bool GraphPositionAt(const CGraphCurve &g, QPoint point, CGraphPosition &position)
{
    const CAxisMap xm = XAxisMap(g);
    if (!xm.IsValid())
        return false;
    position.x = xm.ToValue(point.x());
    if (g.m_xLog)
        position.x = std::pow(10.0, position.x);
    position.y.clear();
    for (int i = 0; i < g.RangeCount(); ++i) {
        const CGraph_Range &r = *g.Range(i);
        if (r.m_layout != CGraph_Range::LayoutShared || r.m_axisSide == 0)
            continue;
        const CAxisMap ym = YAxisMap(g, i);
        if (!ym.IsValid())
            continue;
        double y = ym.ToValue(point.y());
        if (r.m_logScale && !r.m_dbScale)
            y = std::pow(10.0, y);
        position.y.push_back(y);
    }
    return true;
}

QString GraphPositionText(const CGraphPosition &position)
{
    const std::vector<double> &ys = position.y;
    if (ys.size() <= 1)
        return QString::asprintf("(%f, %f)", position.x, ys.empty() ? 0.0 : ys[0]);
    QString text = QString::asprintf("X=%f, Y1=%f", position.x, ys[0]);
    for (std::size_t i = 1; i < ys.size(); ++i)
        text += QString::asprintf(", Y%i=%f", int(i) + 1, ys[i]);
    return text;
}
