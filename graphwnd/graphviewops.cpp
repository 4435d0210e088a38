#include "graphwnd/graphviewops.h"

#include "graphdata/axisrange.h"
#include "graphdata/axisscale.h"

#include <cmath>

namespace {

bool isLog(const CGraph_Range &r)
{
    return r.m_logScale != 0 && r.m_dbScale == 0;
}

double steps(double low, double high, double tick)
{
    return tick > 0 ? std::floor((high - low) / tick) : 0;
}

bool validView(double low, double high)
{
    return std::isfinite(low) && std::isfinite(high) && high > low;
}

} // namespace

CAxisMap XAxisMap(const CGraphCurve &g)
{
    CAxisMap m;
    const CIntRect &r = g.m_plotRect;
    m.min = g.m_xViewMin;
    m.origin = r.left;
    if (g.m_xViewMax > g.m_xViewMin)
        m.scale = (r.right - r.left) / (g.m_xViewMax - g.m_xViewMin);
    return m;
}

CAxisMap YAxisMap(const CGraphCurve &g, int axis)
{
    CAxisMap m;
    m.vertical = true;
    if (axis < 0 || axis >= g.RangeCount())
        return m;
    const CGraph_Range &range = *g.Range(axis);
    const CIntRect &r = g.m_plotRect;
    m.min = range.m_viewMin;
    m.origin = r.bottom;
    if (range.m_viewMax > range.m_viewMin)
        m.scale = (r.bottom - r.top) / (range.m_viewMax - range.m_viewMin);
    return m;
}

CViewRanges SaveView(const CGraphCurve &g)
{
    CViewRanges v;
    v.xMin = g.m_xViewMin;
    v.xMax = g.m_xViewMax;
    v.xTick = g.m_xTick;
    for (int i = 0; i < g.RangeCount(); ++i)
        v.y.push_back({g.Range(i)->m_viewMin, g.Range(i)->m_viewMax, g.Range(i)->m_tick});
    return v;
}

void RestoreView(CGraphCurve &g, const CViewRanges &v)
{
    g.m_xViewMin = v.xMin;
    g.m_xViewMax = v.xMax;
    g.m_xTick = v.xTick;
    for (int i = 0; i < g.RangeCount() && i < int(v.y.size()); ++i) {
        g.Range(i)->m_viewMin = v.y[std::size_t(i)].min;
        g.Range(i)->m_viewMax = v.y[std::size_t(i)].max;
        g.Range(i)->m_tick = v.y[std::size_t(i)].tick;
    }
}

CStepCounts UpdateView(CGraphCurve &g)
{
    CStepCounts counts;
    g.FitX(g.m_xLog != 0);
    if (g.m_xFullMin < g.m_xViewMin || g.m_xFullMax > g.m_xViewMax || !validView(g.m_xViewMin, g.m_xViewMax)) {
        const CAxisView view = MarginView(g.m_xFullMin, g.m_xFullMax, AxisKind::X, g.m_xLog != 0);
        if (view.IsValid()) {
            g.m_xViewMin = view.min;
            g.m_xViewMax = view.max;
            g.m_xTick = view.tick;
        }
    }
    counts.push_back(steps(g.m_xViewMin, g.m_xViewMax, g.m_xTick));
    for (int axis = 0; axis < g.RangeCount(); ++axis) {
        CGraph_Range &r = *g.Range(axis);
        double lo = r.m_fullMin, hi = r.m_fullMax;
        if (g.CurveExtent(axis, g.m_xViewMin, g.m_xViewMax, lo, hi)) {
            r.m_fullMin = lo;
            r.m_fullMax = hi;
        }
        if (r.m_fullMin < r.m_viewMin || r.m_fullMax > r.m_viewMax || !validView(r.m_viewMin, r.m_viewMax)) {
            const CAxisView view = MarginView(r.m_fullMin, r.m_fullMax, AxisKind::Y, isLog(r));
            if (view.IsValid()) {
                r.m_viewMin = view.min;
                r.m_viewMax = view.max;
                r.m_tick = view.tick;
            }
        }
        counts.push_back(steps(r.m_viewMin, r.m_viewMax, r.m_tick));
    }
    return counts;
}

void Autoscale(CGraphCurve &g)
{
    for (int axis = 0; axis < g.RangeCount(); ++axis) {
        double lo, hi;
        if (!g.CurveExtent(axis, g.m_xViewMin, g.m_xViewMax, lo, hi))
            continue;
        CGraph_Range &r = *g.Range(axis);
        const CAxisView view = MarginView(lo, hi, AxisKind::Y, isLog(r));
        if (!view.IsValid())
            continue;
        r.m_viewMin = view.min;
        r.m_viewMax = view.max;
        r.m_tick = view.tick;
    }
}

void ZoomBy(CGraphCurve &g, double f)
{
    auto zoom = [f](double &lo, double &hi) {
        const double mid = (lo + hi) / 2, half = (hi - lo) / 2 * f;
        const double l = mid - half, h = mid + half;
        if (std::isfinite(l) && std::isfinite(h) && h > l) {
            lo = l;
            hi = h;
        }
    };
    zoom(g.m_xViewMin, g.m_xViewMax);
    if (!g.m_xLog)
        g.m_xTick = StepKeepingEnds(g.m_xViewMin, g.m_xViewMax, AxisKind::X);
    for (int axis = 0; axis < g.RangeCount(); ++axis) {
        CGraph_Range &r = *g.Range(axis);
        zoom(r.m_viewMin, r.m_viewMax);
        if (!(r.m_logScale && !r.m_dbScale))
            r.m_tick = StepKeepingEnds(r.m_viewMin, r.m_viewMax, AxisKind::Y);
    }
}

void ZoomAround(CGraphCurve &g, QPoint pixel, double f, const CStepCounts &stored)
{
    auto zoom = [f](double &lo, double &hi, double p) {
        const double h = (hi - p) * f + p, l = p - (p - lo) * f;
        if (std::isfinite(l) && std::isfinite(h) && h > l) {
            lo = l;
            hi = h;
        }
    };
    const CAxisMap xm = XAxisMap(g);
    if (xm.IsValid()) {
        zoom(g.m_xViewMin, g.m_xViewMax, xm.ToValue(pixel.x()));
        const double count = steps(g.m_xViewMin, g.m_xViewMax, g.m_xTick);
        const double old = stored.empty() ? count : stored[0];
        if (g.m_xTick > 0 && !g.m_xLog) {
            if (count > 2 * old)
                g.m_xTick *= 2;
            else if (count < old)
                g.m_xTick /= 2;
        }
    }
    for (int axis = 0; axis < g.RangeCount(); ++axis) {
        const CAxisMap ym = YAxisMap(g, axis);
        if (!ym.IsValid())
            continue;
        CGraph_Range &r = *g.Range(axis);
        zoom(r.m_viewMin, r.m_viewMax, ym.ToValue(pixel.y()));
        const double count = steps(r.m_viewMin, r.m_viewMax, r.m_tick);
        const double old = std::size_t(axis + 1) < stored.size() ? stored[std::size_t(axis + 1)] : count;
        if (r.m_tick > 0 && !(r.m_logScale && !r.m_dbScale)) {
            if (count > 2 * old)
                r.m_tick *= 2;
            else if (count < old / 2)
                r.m_tick /= 2;
        }
    }
}

void ZoomToPixels(CGraphCurve &g, const QRect &pixels, bool changeX, bool changeY)
{
    const QRect r = pixels.normalized();
    if (changeX) {
        const CAxisMap xm = XAxisMap(g);
        if (xm.IsValid() && r.width() > 0) {
            const double lo = xm.ToValue(r.left()), hi = xm.ToValue(r.right());
            g.m_xViewMin = lo;
            g.m_xViewMax = hi;
            if (!g.m_xLog)
                g.m_xTick = StepKeepingEnds(lo, hi, AxisKind::X);
        }
    }
    if (changeY) {
        for (int axis = 0; axis < g.RangeCount(); ++axis) {
            const CAxisMap ym = YAxisMap(g, axis);
            if (!ym.IsValid() || r.height() <= 0)
                continue;
            CGraph_Range &range = *g.Range(axis);
            const double lo = ym.ToValue(r.bottom()), hi = ym.ToValue(r.top());
            range.m_viewMin = lo;
            range.m_viewMax = hi;
            if (!(range.m_logScale && !range.m_dbScale))
                range.m_tick = StepKeepingEnds(lo, hi, AxisKind::Y);
        }
    }
}

void PanByPixels(CGraphCurve &g, QPoint delta, bool moveX, bool moveY, int onlyAxis)
{
    if (moveX && (onlyAxis == -2 || onlyAxis == -1)) {
        const CAxisMap xm = XAxisMap(g);
        if (xm.IsValid()) {
            const double dv = delta.x() / xm.scale;
            g.m_xViewMin -= dv;
            g.m_xViewMax -= dv;
        }
    }
    if (moveY) {
        for (int axis = 0; axis < g.RangeCount(); ++axis) {
            if (onlyAxis != -2 && onlyAxis != axis)
                continue;
            const CAxisMap ym = YAxisMap(g, axis);
            if (!ym.IsValid())
                continue;
            const double dv = delta.y() / ym.scale;
            g.Range(axis)->m_viewMin += dv;
            g.Range(axis)->m_viewMax += dv;
        }
    }
}
