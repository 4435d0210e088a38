#include "tool/plotfeed.h"

#include "graphdata/axisscale.h"
#include "graphdata/columntransform.h"
#include "graphdata/graphcurve.h"
#include "graphwnd/graphwnd.h"

#include <algorithm>


namespace {

// The pen of a digitised curve: three pixels wide.
constexpr int CurvePenWidth = 3;

CGraphCurve *graphOf(CGraphWnd &plot)
{
    return plot.GetGraphData();
}

// The data set replaced by one of `columns` columns with room for `rows`
// rows, named from the axes (column 0 X, the others Y).
void newData(CGraphCurve &g, const CPlotAxes &axes, int columns, int rows)
{
    g.m_data.Create(1, columns, rows);
    for (int c = 0; c < columns; ++c)
        if (CGraphColumn *column = g.m_data.GetColumn(c))
            column->m_name = c == 0 ? axes.xName : axes.yName;
    g.m_xColumnIndex = 0;
    g.m_xAxisName = axes.xName;
    if (g.RangeCount() > 0)
        g.Range(0)->m_title = axes.yName;
}

// A tick step for the range that leaves its ends where they are: one
// decade on a logarithmic axis, else the nice step of the axis.
double tickFor(double low, double high, bool logarithmic, bool xAxis)
{
    if (logarithmic)
        return 1.0;
    double max = std::max(low, high), min = std::min(low, high);
    return xAxis ? NiceStepX(max, min) : NiceStepY(max, min);
}

} // namespace

void ClearPlot(CGraphWnd &plot)
{
    CGraphCurve *g = graphOf(plot);
    if (!g)
        return;
    g->ClearCurveCaches();
    g->m_curves.DeleteAll();
    g->m_curveHitRects.clear();
    g->m_highlightedCurve = -1;
    if (g->m_data.ColumnCount() > 0)
        g->m_data.Create(1, 0, 0);
    g->m_lastDrawnRow = 0;
}

void PlotOneCurve(CGraphWnd &plot, const CPlotAxes &axes, const double *pairs, int count)
{
    ClearPlot(plot);
    CGraphCurve *g = graphOf(plot);
    if (!g || count <= 0)
        return;
    newData(*g, axes, 2, count);
    // The pairs are the rows of the two columns as they stand.
    g->m_data.AppendRows(pairs, nullptr, 0, 2, 0, count);
    bool changed = false;
    const int index = g->AddCurve(1, 0, false, changed);
    if (index >= 0)
        g->Curve(index)->m_lineThickness = CurvePenWidth;
}

void PlotCurves(CGraphWnd &plot, const CPlotAxes &axes, const QList<CPlotCurve> &curves)
{
    ClearPlot(plot);
    CGraphCurve *g = graphOf(plot);
    if (!g)
        return;
    g->m_xAxisName = axes.xName;
    if (g->RangeCount() > 0)
        g->Range(0)->m_title = axes.yName;
    for (const CPlotCurve &curve : curves) {
        const int index = g->AddOwnCurve(QString(), QString(), curve.pairs.GetData(), curve.count, false);
        if (index < 0)
            continue;
        CCurveInfo &c = *g->Curve(index);
        c.m_lineThickness = CurvePenWidth;
        // The log10 forms of a logarithmic axis's data, made now: the draw
        // pass takes them as they are.
        bool invalid = false;
        if (axes.xLog) {
            c.m_ownXLog = CGraphColumnPtr::Adopt(CGraphColumn::Create(curve.count));
            LogOf(c.m_ownX.Get(), c.m_ownXLog.Get(), curve.count, invalid);
        }
        if (axes.yLog) {
            c.m_displayColumn = CGraphColumnPtr::Adopt(CGraphColumn::Create(curve.count));
            LogOf(c.m_ownY.Get(), c.m_displayColumn.Get(), curve.count, invalid);
        }
    }
}

void PlotColumns(CGraphWnd &plot, const CPlotAxes &axes, const CMyDoubleArray2D &values)
{
    ClearPlot(plot);
    CGraphCurve *g = graphOf(plot);
    const int rows = values.GetRows();
    const int columns = values.GetColumns();
    if (!g || rows <= 0 || columns < 2)
        return;
    newData(*g, axes, columns, rows);
    g->m_data.AppendRows(values.GetData(), nullptr, 0, columns, 0, rows);
    bool changed = false;
    for (int c = 1; c < columns; ++c) {
        const int index = g->AddCurve(c, 0, false, changed);
        if (index >= 0)
            g->Curve(index)->m_lineThickness = CurvePenWidth;
    }
}

void SetPlotAxes(CGraphWnd &plot, const CPlotAxes &axes)
{
    CGraphCurve *g = graphOf(plot);
    if (!g)
        return;
    g->m_xLog = axes.xLog ? 1 : 0;
    if (g->RangeCount() > 0)
        g->Range(0)->m_logScale = axes.yLog ? 1 : 0;
    // The limits go in as they are: no margin, and a reversed pair is left to
    // the setters, which put it in order.
    g->SetXRange(false, false, axes.xLow, axes.xHigh, tickFor(axes.xLow, axes.xHigh, axes.xLog, true), true,
                 false);
    g->SetYRange(0, false, false, axes.yLow, axes.yHigh, tickFor(axes.yLow, axes.yHigh, axes.yLog, false),
                 true, false);
    g->m_lastDrawnRow = 0;
    // Full view comes back to these limits.
    plot.StoreDefaultView();
    plot.Redraw(1);
    plot.repaint();
}

bool PlotDataLimits(const CGraphCurve &g, double &xLow, double &xHigh, double &yLow, double &yHigh)
{
    xLow = xHigh = yLow = yHigh = 0.0;
    if (g.CurveCount() == 0)
        return false;
    const CCurveInfo &curve = *g.Curve(0);
    const CGraphColumn *x = nullptr;
    const CGraphColumn *y = nullptr;
    switch (curve.Origin()) {
    case CCurveBasicInfo::OriginColumn:
        x = g.m_data.GetColumn(g.m_xColumnIndex);
        y = g.m_data.GetColumn(curve.m_colIndex);
        break;
    case CCurveBasicInfo::OriginComputed:
        x = g.m_data.GetColumn(g.m_xColumnIndex);
        y = curve.m_computedColumn.Get();
        break;
    case CCurveBasicInfo::OriginOwnColumns:
        x = curve.m_ownX.Get();
        y = curve.m_ownY.Get();
        break;
    default:
        break;
    }
    if (x) {
        xLow = x->m_minValue;
        xHigh = x->m_maxValue;
    }
    if (y) {
        yLow = y->m_minValue;
        yHigh = y->m_maxValue;
    }
    return true;
}
