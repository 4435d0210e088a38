#include "graphdata/columnsearch.h"

#include "graphdata/graphcolumn.h"

#include <cmath>

namespace {

bool clip(const CGraphColumn *column, int &first, int &last)
{
    if (!column || column->m_count < 1)
        return false;
    if (first < 0)
        first = 0;
    if (last > column->m_count - 1)
        last = column->m_count - 1;
    return first <= last;
}

// Bisects an ascending column over its valid rows: the row after the last
// valid row of first..last for which `before` holds (or `first` when there
// is none).  Invalid rows are stepped over towards the upper end, so a run
// of them costs its length only when a probe lands in it.
template <class Before>
int validBoundary(const CGraphColumn *column, int first, int last, Before before)
{
    const double *v = column->m_values;
    const std::uint8_t *valid = column->m_valid;
    int lo = first, hi = last + 1;
    // Valid rows in first..lo-1 are before, valid rows in hi..last are not.
    while (lo < hi) {
        const int mid = lo + (hi - lo) / 2;
        int probe = mid;
        while (probe < hi && valid[probe] != 1)
            ++probe;
        if (probe < hi && before(v[probe]))
            lo = probe + 1;
        else
            hi = mid;
    }
    return lo;
}

} // namespace

int FirstAtOrAfter(const CGraphColumn *column, double x, int first, int last, bool ordered)
{
    if (!clip(column, first, last))
        return first < 0 ? 0 : first;
    const double *v = column->m_values;
    if (ordered) {
        // lo - 1 is the last valid row below x
        const int lo = validBoundary(column, first, last, [x](double value) { return value < x; });
        return lo > last ? last : lo;
    }
    int below = -1;
    for (int i = first; i <= last; ++i) {
        if (column->m_valid[i] == 1 && v[i] < x)
            below = i;
    }
    if (below < 0)
        return first;
    return below + 1 > last ? last : below + 1;
}

int LastAtOrBefore(const CGraphColumn *column, double x, int first, int last, bool ordered)
{
    if (!clip(column, first, last))
        return first < 0 ? 0 : first;
    const double *v = column->m_values;
    if (ordered) {
        // the first valid row from lo on is the first one above x
        int above = validBoundary(column, first, last, [x](double value) { return value <= x; });
        while (above <= last && column->m_valid[above] != 1)
            ++above;
        if (above > last)
            return last;
        return above - 1 < first ? first : above - 1;
    }
    int above = -1;
    for (int i = last; i >= first; --i) {
        if (column->m_valid[i] == 1 && v[i] > x)
            above = i;
    }
    if (above < 0)
        return last;
    return above - 1 < first ? first : above - 1;
}

bool InterpolateRow(const CGraphColumn *column, int rows, double x, int &lowerRow, int &upperRow, double &fraction,
                    int extrapolate)
{
    lowerRow = upperRow = 0;
    fraction = 0;
    if (!column || rows > column->m_count)
        rows = column ? column->m_count : 0;
    if (rows < 1)
        return false;
    const double *v = column->m_values;
    if (rows == 1)
        return true;
    const bool ascending = v[rows - 1] >= v[0];
    // Position along the direction of the table: t grows with the row.
    auto before = [&](double a, double b) { return ascending ? a < b : a > b; };

    if (!before(v[0], x) && v[0] != x) {
        // before the first row
        lowerRow = 0;
        upperRow = 1;
        if ((extrapolate & ExtrapolateLow) && v[1] != v[0])
            fraction = (x - v[0]) / (v[1] - v[0]);
        else
            upperRow = 0;
        return true;
    }
    if (before(v[rows - 1], x)) {
        // past the last row
        lowerRow = rows - 2;
        upperRow = rows - 1;
        if ((extrapolate & ExtrapolateHigh) && v[rows - 1] != v[rows - 2]) {
            fraction = (x - v[rows - 2]) / (v[rows - 1] - v[rows - 2]);
        } else {
            lowerRow = rows - 1;
        }
        return true;
    }
    // v[lo] is at or before x, v[hi] at or after it.
    int lo = 0, hi = rows - 1;
    while (hi - lo > 1) {
        const int mid = lo + (hi - lo) / 2;
        if (before(x, v[mid]))
            hi = mid;
        else
            lo = mid;
    }
    lowerRow = lo;
    upperRow = hi;
    const double span = v[hi] - v[lo];
    fraction = span != 0 ? (x - v[lo]) / span : 0;
    return true;
}

bool ValueAt(const CGraphColumn *column, int rows, int lowerRow, int upperRow, double fraction,
             const CGraphColumn *xColumn, double x, bool logX, double &value)
{
    if (!column)
        return false;
    if (rows > column->m_count)
        rows = column->m_count;
    if (lowerRow < 0 || upperRow < 0 || lowerRow >= rows || upperRow >= rows)
        return false;
    const std::uint8_t *valid = column->m_valid;
    int lo = lowerRow, hi = upperRow;
    // Missing rows are bridged by the nearest rows that hold data.
    while (lo >= 0 && valid[lo] == 0)
        --lo;
    while (hi < rows && valid[hi] == 0)
        ++hi;
    if (lo < 0 && hi >= rows)
        return false;
    if (lo < 0)
        lo = hi;
    if (hi >= rows)
        hi = lo;
    if (valid[lo] == 2 || valid[hi] == 2)
        return false;
    if (lo != lowerRow || hi != upperRow) {
        fraction = 0;
        if (lo != hi && xColumn && hi < xColumn->m_count) {
            double x0 = xColumn->m_values[lo], x1 = xColumn->m_values[hi], xx = x;
            if (logX) {
                x0 = std::log10(x0);
                x1 = std::log10(x1);
                xx = std::log10(xx);
            }
            if (x1 != x0 && std::isfinite(x1 - x0) && std::isfinite(xx))
                fraction = (xx - x0) / (x1 - x0);
        }
    }
    const double a = column->m_values[lo];
    value = lo == hi ? a : a + fraction * (column->m_values[hi] - a);
    return true;
}
