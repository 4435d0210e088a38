#include "graphdata/pages/optionscopy.h"

#include "graphdata/emi/emilimits.h"
#include "graphdata/graphcurve.h"
#include "support/languagestring.h"

#include <cmath>

namespace {

enum : int {
    TextMinBelowMax = 43810,
    TextTickAboveZero = 43811,
    TextLogAboveZero = 43812,
    TextTooManyTicks = 43814,
};

const double kMostTicks = 10000;

// Holds the graph's drawing lock while it lives.
struct DrawLock
{
    explicit DrawLock(CGraphCurve &graph) : m_graph(graph) { ++m_graph.m_drawLock; }
    ~DrawLock() { --m_graph.m_drawLock; }
    CGraphCurve &m_graph;
};

} // namespace

QString CheckAxisFields(double min, double max, double tick, bool log, COptionsFault::Field &field)
{
    field = COptionsFault::FieldNone;
    if (!std::isfinite(min) || !std::isfinite(max) || !(min < max)) {
        field = COptionsFault::FieldMin;
        return LanguageString(TextMinBelowMax);
    }
    if (log && !(min > 0)) {
        field = COptionsFault::FieldMin;
        return LanguageString(TextLogAboveZero).arg(min);
    }
    if (!std::isfinite(tick) || tick < 0) {
        field = COptionsFault::FieldTick;
        return LanguageString(TextTickAboveZero);
    }
    // On a log axis the tick counts decades.
    const double span = log ? std::log10(max) - std::log10(min) : max - min;
    if (tick > 0 && span / tick > kMostTicks) {
        field = COptionsFault::FieldTick;
        return LanguageString(TextTooManyTicks).arg(tick);
    }
    return QString();
}

void CGraphOptionsCopy::Take(const CGraphCurve &graph)
{
    m_curves.DeleteAll();
    for (const CCurveInfo *curve : graph.m_curves)
        m_curves.Add(new CCurveBasicInfo(static_cast<const CCurveBasicInfo &>(*curve)));
    m_ranges.DeleteAll();
    for (int i = 0; i < graph.RangeCount(); ++i)
        m_ranges.Add(new CGraph_Range(*graph.Range(i)));
    m_axisOrder = graph.m_axisOrder;

    m_xMin = graph.m_xViewMin;
    m_xMax = graph.m_xViewMax;
    m_xTick = graph.m_xTick;
    m_xAuto = 0;
    m_xLog = graph.m_xLog;
    m_xAxisFlags = graph.m_xAxisFlags;
    m_xRotation = graph.m_xRotation;
    m_xSubDivisions = graph.m_xSubDivisions;
    m_xTextColor = graph.m_xTextColor;
    m_majorPenStyle = graph.m_majorPenStyle;
    m_majorColor = graph.m_majorColor;
    m_minorPenStyle = graph.m_minorPenStyle;
    m_minorColor = graph.m_minorColor;
    m_xLabelFont = graph.m_xLabelFont;
    m_xAxisName = graph.m_xAxisName;
    m_xyMode = graph.m_xyMode;
    m_xColumnIndex = graph.m_xColumnIndex;
    m_xRowNumbers = !graph.m_xyMode && graph.m_graphKind != 2 &&
                    graph.m_xColumnIndex == graph.m_data.ColumnByName(CGraphData_Data::RowNumberColumnName());
    // Back from the row numbers, X is the first column.
    m_timeColumn = graph.m_xyMode || m_xRowNumbers ? 0 : graph.m_xColumnIndex;
    m_emiLimit = -1;
    for (const CCurveInfo *curve : graph.m_curves) {
        if (curve->IsLimitLine()) {
            m_emiLimit = curve->m_colIndex;
            break;
        }
    }

    m_backColor = graph.m_backColor;
    m_foreColor = graph.m_foreColor;
    m_gridColor = graph.m_gridColor;
    m_gridOn = graph.m_gridOn;
    m_hideLabels = graph.m_hideLabels;

    m_scope = graph.m_graphKind == 2 ? 1 : 0;
    m_spectrum = graph.m_spectrumMode;
    m_columnNames.clear();
    for (int c = 0; c < graph.m_data.ColumnCount(); ++c) {
        const CGraphColumn *column = graph.m_data.GetColumn(c);
        m_columnNames << (column ? column->m_name : QString());
    }
}

bool CGraphOptionsCopy::Check(COptionsFault &fault) const
{
    COptionsFault::Field field;
    if (!m_xAuto && !m_scope) {
        // Log axes keep their ends as powers of ten: any order of those.
        const QString text = CheckAxisFields(m_xMin, m_xMax, m_xTick, false, field);
        if (!text.isEmpty()) {
            fault = {COptionsFault::PageXAxis, 0, field, text};
            return false;
        }
    }
    for (int i = 0; i < m_ranges.GetSize(); ++i) {
        const CGraph_Range *r = m_ranges.GetAt(i);
        if (r->m_autoScale)
            continue;
        const QString text = CheckAxisFields(r->m_viewMin, r->m_viewMax, r->m_tick, false, field);
        if (!text.isEmpty()) {
            fault = {COptionsFault::PageYAxis, i, field, text};
            return false;
        }
    }
    return true;
}

int CGraphOptionsCopy::AddRange()
{
    auto *range = m_ranges.GetSize() > 0 ? new CGraph_Range(*m_ranges.GetAt(0)) : new CGraph_Range;
    // The new axis stands beside the others, on the side with fewer axes.
    int left = 0, right = 0;
    for (const CGraph_Range *r : m_ranges) {
        left = std::max(left, int(r->m_axisSide));
        right = std::max(right, -int(r->m_axisSide));
    }
    range->m_axisSide = right < left ? -(right + 1) : left + 1;
    range->m_areaRect = CIntRect();
    range->m_visibleCurveCount = 0;
    range->m_title.clear(); // the title names the first axis's curves, not the new one's
    return m_ranges.Add(range);
}

void CGraphOptionsCopy::Apply(CGraphCurve &graph, bool &notFound) const
{
    DrawLock lock(graph);

    // A curve on an axis that is gone falls back on axis 0.
    CCurveBasicInfoArray wanted;
    for (const CCurveBasicInfo *curve : m_curves) {
        auto *entry = new CCurveBasicInfo(*curve);
        if (entry->m_yAxisIndex < 0 || entry->m_yAxisIndex >= std::max(1, m_ranges.GetSize()))
            entry->m_yAxisIndex = 0;
        wanted.Add(entry);
    }
    graph.m_xAxisFlags = m_xAxisFlags;
    int xColumn = m_xColumnIndex;
    if (m_xRowNumbers && !m_scope && !m_spectrum) {
        // Without memory for the column X stays what it was.
        const int numbers = graph.m_data.EnsureRowNumberColumn();
        xColumn = numbers >= 0 ? numbers : graph.m_xColumnIndex;
    }
    // Another quantity on X is shown over its whole extent, and an X title
    // that named the old column names the new one.
    const bool newX = graph.m_xyMode != m_xyMode || graph.m_xColumnIndex != xColumn;
    const CGraphColumn *oldX = graph.m_data.GetColumn(graph.m_xColumnIndex);
    const bool titleIsColumn = oldX && m_xAxisName == oldX->m_name;
    graph.m_xyMode = m_xyMode;
    graph.m_xColumnIndex = xColumn;
    graph.ApplyCurveList(wanted, notFound);

    // Limit lines are found in the global list by their key: the user may
    // have removed one before them in this dialog, which renumbers the rest.
    const CCurveInfoArray &limits = GetEmiLimits();
    bool limitShown = false;
    for (CCurveInfo *curve : graph.m_curves) {
        if (!curve->IsLimitLine())
            continue;
        int index = -1;
        for (int i = 0; i < limits.GetSize() && index < 0; ++i) {
            if (limits.GetAt(i)->m_colName == curve->m_colName)
                index = i;
        }
        curve->m_colIndex = index;
        limitShown = limitShown || curve->m_colIndex == m_emiLimit;
    }
    if (m_emiLimit >= 0 && !limitShown && AddEmiLimitToGraph(graph, m_emiLimit) >= 0)
        graph.FitRanges();

    // The data extents were fitted to the new curves; the ranges bring the
    // user's settings, not extents of their own.
    std::vector<std::pair<double, double>> extents;
    for (int i = 0; i < graph.RangeCount(); ++i)
        extents.emplace_back(graph.Range(i)->m_fullMin, graph.Range(i)->m_fullMax);
    graph.CopyRanges(m_ranges);
    for (int i = 0; i < graph.RangeCount(); ++i) {
        CGraph_Range *r = graph.Range(i);
        if (i < int(extents.size())) {
            r->m_fullMin = extents[std::size_t(i)].first;
            r->m_fullMax = extents[std::size_t(i)].second;
        } else {
            double lo, hi;
            if (graph.CurveExtent(i, graph.m_xViewMin, graph.m_xViewMax, lo, hi)) {
                r->m_fullMin = lo;
                r->m_fullMax = hi;
            } else if (graph.RangeCount() > 0) {
                r->m_fullMin = graph.Range(0)->m_fullMin;
                r->m_fullMax = graph.Range(0)->m_fullMax;
            }
        }
    }
    graph.SortAxes();

    graph.m_xRotation = m_xRotation;
    graph.m_xSubDivisions = m_xSubDivisions;
    graph.m_xTextColor = m_xTextColor;
    graph.m_majorPenStyle = m_majorPenStyle;
    graph.m_majorColor = m_majorColor;
    graph.m_minorPenStyle = m_minorPenStyle;
    graph.m_minorColor = m_minorColor;
    graph.m_xLabelFont = m_xLabelFont;
    graph.m_xAxisName = m_xAxisName;
    if (newX && titleIsColumn && !m_scope && !m_spectrum) {
        if (const CGraphColumn *x = graph.m_data.GetColumn(graph.m_xColumnIndex))
            graph.m_xAxisName = x->m_name;
    }
    graph.m_backColor = m_backColor;
    graph.m_foreColor = m_foreColor;
    graph.m_gridColor = m_gridColor;
    graph.m_gridOn = m_gridOn;
    graph.m_hideLabels = m_hideLabels;

    if (!m_scope) {
        if (!m_spectrum && graph.m_xLog != m_xLog)
            graph.FitX(m_xLog != 0);
        if (m_xAuto || newX)
            graph.SetXRange(true, false, 0, 0, 0, false, true);
        else
            graph.SetXRange(false, false, m_xMin, m_xMax, m_xTick, m_xTick > 0, false);
    }
    for (int i = 0; i < graph.RangeCount(); ++i) {
        const CGraph_Range *r = graph.Range(i);
        if (r->m_autoScale)
            graph.SetYRange(i, true, false, 0, 0, 0, false, true);
        else
            graph.SetYRange(i, false, false, r->m_viewMin, r->m_viewMax, r->m_tick, r->m_tick > 0, false);
    }
    for (CCurveInfo *curve : graph.m_curves) {
        curve->SetLinePixels(nullptr);
        curve->SetOverviewPixels(nullptr);
    }
    graph.m_lastDrawnRow = 0;
}
