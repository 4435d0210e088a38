#include "graphdata/graphcurve.h"

#include "graphdata/columnscan.h"
#include "graphdata/computedcurve.h"
#include "graphdata/grapherrors.h"

#include <algorithm>
#include <cmath>

CGraphDefaults::CGraphDefaults()
{
    m_rangeDefaults.Add(new CGraph_Range);
}

CGraphCurve::CGraphCurve(int graphKind, int dpi)
    : m_data(graphKind == 2), m_graphKind(graphKind), m_defaults(new CGraphDefaults)
{
    m_xLabelFont.m_height = -MulDiv(8, dpi, 72);
    m_titleFont.m_height = -MulDiv(8, dpi, 72);
    m_ranges.Add(new CGraph_Range(dpi));
}

CGraphCurve::~CGraphCurve()
{
    m_ranges.DeleteAll();
    ClearCurveCaches();
    m_curves.DeleteAll();
    m_defaults->Release();
}

void CGraphCurve::ClearCurveCaches()
{
    for (CCurveInfo *curve : m_curves)
        curve->ClearCaches();
}

int CGraphCurve::AxisOf(const CCurveInfo &curve) const
{
    const int axis = curve.m_yAxisIndex;
    return axis >= 0 && axis < m_ranges.GetSize() ? axis : 0;
}

int CGraphCurve::addCurveInfo(CCurveInfo *curve)
{
    const int index = m_curves.Add(curve);
    m_curveHitRects.clear();
    return index;
}

int CGraphCurve::PickDefaultStyle(std::uint32_t &color, std::int32_t &thickness, std::int32_t &symbol) const
{
    const int n = m_curves.GetSize();

    // 1. the next row of an attached defaults list
    const CCurveDefaultInfoArray &defaults = m_defaults->m_curveDefaults;
    const int next = (n > 0 ? m_curves.GetAt(n - 1)->m_paletteIndex : -1) + 1;
    if (next >= 0 && next < defaults.GetSize()) {
        const CCurveBasicInfo *row = defaults.GetAt(next);
        color = row->m_color;
        thickness = row->m_lineThickness;
        symbol = row->m_symbol;
        return next;
    }

    auto colorInUse = [&](std::uint32_t c) {
        for (const CCurveInfo *curve : m_curves) {
            if (curve->m_color == c)
                return true;
        }
        return false;
    };
    auto take = [&](int row) {
        color = g_curvePalette[row].color;
        thickness = g_curvePalette[row].thickness;
        symbol = g_curvePalette[row].symbol;
        return row;
    };

    // 2. palette row n onward, skipping colours already on the graph
    if (n < 8) {
        for (int row = n; row < 8; ++row) {
            if (!colorInUse(g_curvePalette[row].color))
                return take(row);
        }
    }
    // 3. the first palette colour in no curve, among rows 0 to n - 1
    for (int row = 0; row < n && row < 8; ++row) {
        if (!colorInUse(g_curvePalette[row].color))
            return take(row);
    }
    // 4. the fallback table
    color = g_curveFallbackColors[n % 12];
    thickness = 1;
    symbol = 0;
    return n;
}

int CGraphCurve::AddCurve(int columnIndex, int axisIndex, bool fitAxes, bool &changed)
{
    changed = false;
    QString name;
    {
        // A producer may be replacing the columns: read the name under the lock.
        CCS_helper guard(m_data.Lock());
        const CGraphColumn *column = m_data.GetColumn(columnIndex);
        if (!column)
            return -1;
        name = column->m_name;
    }
    std::uint32_t color;
    std::int32_t thickness, symbol;
    const int palette = PickDefaultStyle(color, thickness, symbol);
    auto *curve = new CCurveInfo(columnIndex, name, color);
    curve->m_colName = name;
    curve->m_lineThickness = thickness;
    curve->m_symbol = symbol;
    curve->m_paletteIndex = palette;
    curve->m_yAxisIndex = axisIndex >= 0 && axisIndex < m_ranges.GetSize() ? axisIndex : 0;
    const std::uint32_t style = m_data->m_dataFlags & CGraphData_Data::StyleMask;
    if (style == 4) {
        curve->m_options |= CCurveBasicInfo::OptionBar;
    } else if (style == 5) {
        if (columnIndex % 2 == 1) {
            curve->m_options |= CCurveBasicInfo::OptionBar;
        } else {
            curve->m_lineThickness = 2;
            curve->m_symbol = 2;
        }
    }
    const int index = addCurveInfo(curve);
    changed = true;
    if (fitAxes)
        FitRanges();
    return index;
}

int CGraphCurve::AddOwnCurve(const QString &xName, const QString &yName, const double *points, int count,
                             bool interleavedYFirst)
{
    if (!points || count < 1)
        return -1;
    CGraphColumnPtr x = CGraphColumnPtr::Adopt(CGraphColumn::Create(count, xName));
    CGraphColumnPtr y = CGraphColumnPtr::Adopt(CGraphColumn::Create(count, yName));
    x->m_kind = CGraphColumn::KindLimitFrequency;
    y->m_kind = CGraphColumn::KindLimitLevel;
    const int xAt = interleavedYFirst ? 1 : 0;
    for (int i = 0; i < count; ++i) {
        const double xv = points[2 * i + xAt], yv = points[2 * i + 1 - xAt];
        x->m_values[i] = xv;
        y->m_values[i] = yv;
        x->m_valid[i] = std::isfinite(xv) ? 1 : 2;
        y->m_valid[i] = std::isfinite(yv) ? 1 : 2;
    }
    RecomputeExtents(x.Get(), count);
    RecomputeExtents(y.Get(), count);

    std::uint32_t color;
    std::int32_t thickness, symbol;
    const int palette = PickDefaultStyle(color, thickness, symbol);
    auto *curve = new CCurveInfo;
    curve->m_source = CCurveBasicInfo::OriginOwnColumns;
    curve->m_colIndex = -1;
    curve->m_colName = yName;
    curve->m_colLabel = yName;
    curve->m_color = color;
    curve->m_lineThickness = thickness;
    curve->m_symbol = symbol;
    curve->m_paletteIndex = palette;
    curve->m_ownX = x;
    curve->m_ownY = y;
    return addCurveInfo(curve);
}

void CGraphCurve::ApplyCurveList(const CCurveBasicInfoArray &list, bool &notFound)
{
    notFound = false;
    m_highlightedCurve = -1;
    m_activeAxis = 0;

    const int current = m_curves.GetSize();
    std::vector<bool> matched(std::size_t(current), false);
    std::vector<CCurveInfo *> wanted;
    for (const CCurveBasicInfo *entry : list) {
        const int origin = entry->Origin();
        int found = -1;
        for (int i = 0; i < current && found < 0; ++i) {
            const CCurveInfo *curve = m_curves.GetAt(i);
            if (matched[std::size_t(i)] || curve->Origin() != origin)
                continue;
            const bool same = origin == CCurveBasicInfo::OriginColumn ? curve->m_colIndex == entry->m_colIndex
                                                                      : curve->m_colName == entry->m_colName;
            if (same)
                found = i;
        }
        if (found >= 0) {
            matched[std::size_t(found)] = true;
            CCurveInfo *curve = m_curves.GetAt(found);
            curve->CopyStyleFrom(*entry);
            wanted.push_back(curve);
            continue;
        }
        if (origin == CCurveBasicInfo::OriginColumn) {
            auto *curve = new CCurveInfo;
            static_cast<CCurveBasicInfo &>(*curve) = *entry;
            wanted.push_back(curve);
        } else if (origin == CCurveBasicInfo::OriginComputed) {
            auto *curve = new CCurveInfo;
            static_cast<CCurveBasicInfo &>(*curve) = *entry;
            QString error;
            int position = -1;
            if (EvaluateComputedCurve(*this, *curve, error, position)) {
                wanted.push_back(curve);
            } else {
                delete curve;
                notFound = true;
                ReportGraphError(0, error);
            }
        }
        // An unmatched curve of origin 2 brings no columns: nothing to add.
    }

    // Curves that no entry wanted go; the rest take the wanted order.
    CCurveInfoArray old;
    old.Swap(m_curves);
    for (int i = current - 1; i >= 0; --i) {
        CCurveInfo *curve = old.Detach(i);
        if (!matched[std::size_t(i)])
            delete curve;
    }
    for (CCurveInfo *curve : wanted)
        m_curves.Add(curve);
    FitRanges();
    m_curveHitRects.clear();
}

int CGraphCurve::AddRange(const CCurveInfo *templateCurve)
{
    const int index = m_ranges.GetSize();
    auto *range = new CGraph_Range;
    const CArrayGraph_Range &defaults = m_defaults->m_rangeDefaults;
    if (index < defaults.GetSize())
        *range = *defaults.GetAt(index); // colours, fonts, flags and pens of that row
    range->m_areaRect = CIntRect();
    range->m_visibleCurveCount = 0;

    if (templateCurve) {
        // The extent of that curve in the shown X span, on a new axis put
        // one beyond the outermost axis of the side with fewer axes.
        m_ranges.Add(range);
        const int curveIndex = m_curves.Find(templateCurve);
        double lo = 0, hi = 0;
        if (curveIndex >= 0) {
            CCurveInfo *curve = m_curves.GetAt(curveIndex);
            const std::int32_t axis = curve->m_yAxisIndex;
            curve->m_yAxisIndex = index;
            if (CurveExtent(index, m_xViewMin, m_xViewMax, lo, hi)) {
                range->m_fullMin = range->m_viewMin = lo;
                range->m_fullMax = range->m_viewMax = hi;
            }
            curve->m_yAxisIndex = axis;
        }
        int left = 0, right = 0, outerLeft = 0, outerRight = 0;
        for (int i = 0; i < index; ++i) {
            const CGraph_Range *r = m_ranges.GetAt(i);
            if (r->m_layout != CGraph_Range::LayoutShared)
                continue;
            if (r->m_axisSide > 0) {
                ++left;
                outerLeft = std::max(outerLeft, r->m_axisSide);
            } else if (r->m_axisSide < 0) {
                ++right;
                outerRight = std::min(outerRight, r->m_axisSide);
            }
        }
        range->m_axisSide = left <= right ? outerLeft + 1 : outerRight - 1;
    } else {
        const CGraph_Range *source = defaults.GetSize() > 0 ? defaults.GetAt(0) : m_ranges.GetAt(0);
        range->m_fullMin = source->m_fullMin;
        range->m_fullMax = source->m_fullMax;
        range->m_viewMin = source->m_viewMin;
        range->m_viewMax = source->m_viewMax;
        range->m_tick = source->m_tick;
        m_ranges.Add(range);
    }
    if (index >= 1)
        range->m_axisFlags &= ~(CGraph_Range::AxisMajorGrid | CGraph_Range::AxisMinorGrid);
    return index;
}

void CGraphCurve::CopyRanges(const CArrayGraph_Range &from)
{
    while (m_ranges.GetSize() > from.GetSize())
        m_ranges.DeleteAt(m_ranges.GetSize() - 1);
    for (int i = 0; i < from.GetSize(); ++i) {
        if (i < m_ranges.GetSize())
            *m_ranges.GetAt(i) = *from.GetAt(i);
        else
            m_ranges.Add(new CGraph_Range(*from.GetAt(i)));
    }
}

CAxisCounts CGraphCurve::SortAxes()
{
    CAxisCounts counts;
    m_axisOrder.clear();
    for (int i = 0; i < m_ranges.GetSize(); ++i) {
        const CGraph_Range *r = m_ranges.GetAt(i);
        if (r->m_layout == CGraph_Range::LayoutAutoFit)
            ++counts.autoFit;
        else if (r->m_layout == CGraph_Range::LayoutSlices)
            ++counts.slices;
        else if (r->m_axisSide != 0)
            m_axisOrder.push_back(i);
    }
    std::stable_sort(m_axisOrder.begin(), m_axisOrder.end(), [&](int a, int b) {
        return m_ranges.GetAt(a)->m_axisSide < m_ranges.GetAt(b)->m_axisSide;
    });
    for (int i : m_axisOrder) {
        if (m_ranges.GetAt(i)->m_axisSide < 0)
            ++counts.right;
        else
            ++counts.left;
    }
    // Dense sides: the right axes -n..-1 (farthest first), the left ones 1..n.
    int side = -counts.right;
    for (int i : m_axisOrder) {
        if (side == 0)
            side = 1;
        m_ranges.GetAt(i)->m_axisSide = side++;
    }
    return counts;
}
