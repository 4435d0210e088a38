// Axis fitting of a graph: the full X extent from the data, the shown X and
// Y ranges with their ticks, and the extent of the curves on a Y axis.
#include "graphdata/graphcurve.h"

#include "graphdata/axisrange.h"
#include "graphdata/axisscale.h"
#include "graphdata/columnscan.h"
#include "graphdata/columnsearch.h"
#include "graphdata/columntransform.h"
#include "graphdata/graphsnapshot.h"

#include <cmath>
#include <cstring>

namespace {

struct Extent
{
    bool any = false;
    double min = 0, max = 0;
    void add(double lo, double hi)
    {
        if (!any) {
            min = lo;
            max = hi;
            any = true;
        } else {
            min = std::min(min, lo);
            max = std::max(max, hi);
        }
    }
    void addColumn(const CGraphColumn *column)
    {
        double lo, hi;
        bool invalid;
        if (column && RangeOf(column, 0, column->m_count - 1, lo, hi, invalid))
            add(lo, hi);
    }
};

// The log10 form of an own X column, made on first need.
const CGraphColumn *ownXLog(CCurveInfo *curve)
{
    if (!curve->m_ownX)
        return nullptr;
    if (!curve->m_ownXLog) {
        const int rows = curve->m_ownX->m_count;
        curve->m_ownXLog = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows));
        bool invalid;
        LogOf(curve->m_ownX.Get(), curve->m_ownXLog.Get(), rows, invalid);
    }
    return curve->m_ownXLog.Get();
}

void toLog(double &pos, double lo, double hi, bool atLow)
{
    const double l = pos > 10 ? std::log10(pos) : NAN;
    pos = std::isfinite(l) ? l : atLow ? lo + (hi - lo) / 5 : hi - (hi - lo) / 5;
}

void toLinear(double &pos, double lo, double hi, bool atLow)
{
    const double v = pos < 200 ? std::pow(10.0, pos) : NAN;
    pos = std::isfinite(v) ? v : atLow ? lo + (hi - lo) / 5 : hi - (hi - lo) / 5;
}

} // namespace

void CGraphCurve::FitX(bool logX)
{
    Extent extent;
    if (m_spectrumMode) {
        if (logX)
            extent.addColumn(m_frequencyLogColumn.Get());
        else
            extent.addColumn(m_frequencyColumn.Get());
        for (CCurveInfo *curve : m_curves) {
            if (curve->IsLimitLine())
                extent.addColumn(logX ? ownXLog(curve) : curve->m_ownX.Get());
        }
    } else if (m_xyMode) {
        extent.add(0, 0);
        for (CCurveInfo *curve : m_curves) {
            if (curve->m_ownX) {
                extent.addColumn(curve->m_ownX.Get());
            } else {
                CGraphDataSnapshot snapshot;
                snapshot.Take(m_data, {m_xColumnIndex});
                if (snapshot.Column(0) && snapshot.RowCount() > 0)
                    extent.add(snapshot.At(0).minValue, snapshot.At(0).maxValue);
            }
        }
    } else {
        if (logX)
            m_data.EnsureLogColumn(m_xColumnIndex);
        CGraphDataSnapshot snapshot;
        snapshot.Take(m_data, {m_xColumnIndex}, logX);
        if (snapshot.Column(0) && snapshot.RowCount() > 0)
            extent.add(snapshot.At(0).minValue, snapshot.At(0).maxValue);
        for (CCurveInfo *curve : m_curves) {
            if (curve->Origin() == CCurveBasicInfo::OriginOwnColumns)
                extent.addColumn(logX ? ownXLog(curve) : curve->m_ownX.Get());
        }
    }

    double lo = extent.min, hi = extent.max;
    if (NearlyEqualEnds(lo, hi)) {
        if (lo == 0) {
            lo = 0;
            hi = 0.1;
        } else {
            const double v = lo;
            lo = 0.9 * v;
            hi = 1.1 * v;
        }
    }
    if (lo > hi)
        std::swap(lo, hi);

    if (bool(m_xLog) != logX) {
        // Cursor positions follow into the new scale; those that cannot
        // be converted go a fifth of the span in from either end.
        for (int i = 0; i < 2; ++i) {
            if (logX)
                toLog(m_cursorX[i], lo, hi, i == 0);
            else
                toLinear(m_cursorX[i], lo, hi, i == 0);
        }
    }
    m_xFullMin = lo;
    m_xFullMax = hi;
    m_xLog = logX ? 1 : 0;
}

void CGraphCurve::SetXRange(bool fromData, bool clip, double min, double max, double tick, bool useTick,
                            bool autoTick)
{
    if (fromData) {
        min = m_xFullMin;
        max = m_xFullMax;
    }
    SpreadEqualEnds(min, max, AxisKind::X);
    if (clip) {
        min = std::max(min, m_xFullMin);
        max = std::min(max, m_xFullMax);
    }
    const bool log = m_xLog != 0;
    if (log && fromData)
        LogDecadeEnds(min, max);
    if (m_xAxisFlags & CGraph_Range::AxisDateDays) {
        tick = DateAxisStep(max - min);
    } else if (!(useTick && tick > 0)) {
        if (log)
            tick = 1; // decades; the linear nice step would add an empty one
        else if (autoTick || !(m_xTick > 0))
            tick = NiceStep(max, min, AxisKind::X);
        else
            tick = m_xTick;
    }
    m_xViewMin = min;
    m_xViewMax = max;
    m_xTick = tick;
}

void CGraphCurve::SetYRange(int axis, bool fromData, bool clip, double min, double max, double tick, bool useTick,
                            bool autoTick)
{
    if (axis < 0 || axis >= m_ranges.GetSize())
        return;
    CGraph_Range *range = m_ranges.GetAt(axis);
    if (fromData) {
        min = range->m_fullMin;
        max = range->m_fullMax;
    }
    SpreadEqualEnds(min, max, AxisKind::Y);
    if (clip) {
        min = std::max(min, range->m_fullMin);
        max = std::min(max, range->m_fullMax);
    }
    const bool log = range->m_logScale != 0 && range->m_dbScale == 0;
    if (log && fromData)
        LogDecadeEnds(min, max);
    if (!(useTick && tick > 0)) {
        if (log)
            tick = 1;
        else if (autoTick || !(range->m_tick > 0))
            tick = NiceStep(max, min, AxisKind::Y);
        else
            tick = range->m_tick;
    }
    if (range->m_axisFlags & CGraph_Range::AxisIntegerTicks) {
        tick = std::trunc(tick);
        if (!(tick > 0))
            tick = 1;
    }
    range->m_viewMin = min;
    range->m_viewMax = max;
    range->m_tick = tick;
}

int CGraphCurve::CurveExtent(int axis, double xFrom, double xTo, double &min, double &max)
{
    if (axis < 0 || axis >= m_ranges.GetSize())
        return 0;
    const CGraph_Range *range = m_ranges.GetAt(axis);
    const bool logY = range->m_logScale != 0;
    const bool dbY = range->m_dbScale != 0;
    if (xFrom > xTo)
        std::swap(xFrom, xTo);

    // The data columns this axis needs, under the data lock once.
    std::vector<int> wanted{m_xColumnIndex};
    for (const CCurveInfo *curve : m_curves) {
        if (AxisOf(*curve) == axis && curve->Origin() == CCurveBasicInfo::OriginColumn)
            wanted.push_back(curve->m_colIndex);
    }
    if (m_xLog)
        m_data.EnsureLogColumn(m_xColumnIndex);
    if (logY && !dbY) {
        for (std::size_t i = 1; i < wanted.size(); ++i)
            m_data.EnsureLogColumn(wanted[i]);
    }
    CGraphDataSnapshot raw, logs;
    raw.Take(m_data, wanted);
    logs.Take(m_data, wanted, true);
    const int rows = raw.RowCount();
    const CGraphColumn *x = m_xLog ? logs.Column(0) : raw.Column(0);
    const bool ordered = m_data->m_ordered != 0 && !m_xLog;

    Extent extent;
    std::size_t next = 1;
    for (CCurveInfo *curve : m_curves) {
        if (AxisOf(*curve) != axis)
            continue;
        const CGraphColumn *y = nullptr;
        const CGraphColumn *xs = x;
        int count = rows;
        switch (curve->Origin()) {
        case CCurveBasicInfo::OriginColumn: {
            const std::size_t at = next++;
            y = (logY && !dbY) ? logs.Column(int(at)) : raw.Column(int(at));
            if (dbY && y) {
                curve->m_displayColumn = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows));
                bool invalid;
                DbOf(y, curve->m_displayColumn.Get(), rows, invalid);
                y = curve->m_displayColumn.Get();
            }
            break;
        }
        case CCurveBasicInfo::OriginComputed:
        case CCurveBasicInfo::OriginOwnColumns: {
            const CGraphColumn *source = curve->Origin() == CCurveBasicInfo::OriginComputed ? curve->m_computedColumn.Get()
                                                                                             : curve->m_ownY.Get();
            if (!source)
                break;
            if (curve->Origin() == CCurveBasicInfo::OriginOwnColumns) {
                xs = m_xLog ? ownXLog(curve) : curve->m_ownX.Get();
                count = source->m_count;
            } else {
                count = std::min(rows, source->m_count);
            }
            y = source;
            if (logY || dbY) {
                curve->m_displayColumn = CGraphColumnPtr::Adopt(CGraphColumn::Create(source->m_count));
                bool invalid;
                if (dbY)
                    DbOf(source, curve->m_displayColumn.Get(), source->m_count, invalid);
                else
                    LogOf(source, curve->m_displayColumn.Get(), source->m_count, invalid);
                y = curve->m_displayColumn.Get();
            }
            break;
        }
        default:
            break;
        }
        if (!y || !xs || count < 1)
            continue;
        const int last = std::min(count, xs->m_count) - 1;
        const bool own = xs != x;
        const int first = LastAtOrBefore(xs, xFrom, 0, last, ordered && !own);
        const int end = FirstAtOrAfter(xs, xTo, 0, last, ordered && !own);
        double lo, hi;
        bool invalid;
        if (RangeOf(y, first, std::min(end, y->m_count - 1), lo, hi, invalid))
            extent.add(lo, hi);
    }
    if (!extent.any)
        return 0;
    min = extent.min;
    max = extent.max;
    return 1;
}

void CGraphCurve::FitRanges()
{
    FitX(m_xLog != 0);
    // Bars stand out by their half width on each side of their rows: the X
    // extent makes room for those of the first and the last row.
    int bars = 0;
    std::vector<bool> barAxis(std::size_t(m_ranges.GetSize()), false);
    for (const CCurveInfo *curve : m_curves) {
        if (curve->IsBar()) {
            ++bars;
            barAxis[std::size_t(AxisOf(*curve))] = true;
        }
    }
    if (bars > 0 && !m_xLog) {
        double w;
        WidenForBars(bars, std::max(1, m_data.RowCountLocked()), m_xFullMax, m_xFullMin, w);
    }
    SetXRange(true, false, 0, 0, 0, false, true);
    for (int axis = 0; axis < m_ranges.GetSize(); ++axis) {
        double lo, hi;
        CGraph_Range *range = m_ranges.GetAt(axis);
        if (CurveExtent(axis, m_xViewMin, m_xViewMax, lo, hi)) {
            // Bars grow from the zero line, which their axis therefore shows.
            if (barAxis[std::size_t(axis)] && !range->m_logScale && !range->m_dbScale) {
                lo = std::min(lo, 0.0);
                hi = std::max(hi, 0.0);
            }
            range->m_fullMin = lo;
            range->m_fullMax = hi;
        }
        SetYRange(axis, true, false, 0, 0, 0, false, true);
    }
}
