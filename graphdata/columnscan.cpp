#include "graphdata/columnscan.h"

#include "graphdata/graphcolumn.h"

#include <cmath>

void RecomputeExtents(CGraphColumn *column, int rows)
{
    if (!column)
        return;
    // A column without a valid row has the extent 0..0.
    double lo = 0, hi = 0;
    bool invalid = false;
    RangeOf(column, 0, rows - 1, lo, hi, invalid);
    column->m_minValue = lo;
    column->m_maxValue = hi;
    column->m_orderFlags = 0;
    column->m_hasInvalid = invalid ? 1 : 0;
}

std::uint32_t FindOrder(CGraphColumn *column, int first, int last)
{
    if (!column)
        return 0;
    if (first < 0)
        first = 0;
    if (last > column->m_count - 1)
        last = column->m_count - 1;

    const double *values = column->m_values;
    const std::uint8_t *valid = column->m_valid;
    bool invalid = false;
    bool havePrevious = false;
    double previous = 0;
    double firstStep = 0;   // first nonzero difference
    double minStep = 0;     // nonzero difference of smallest size, signed
    bool even = true;
    bool equal = false;
    bool noOrder = false;
    std::uint32_t direction = 0;

    for (int i = first; i <= last; ++i) {
        if (valid[i] != 1) {
            invalid = true;
            continue;
        }
        const double v = values[i];
        if (!havePrevious) {
            previous = v;
            havePrevious = true;
            continue;
        }
        const double d = v - previous;
        previous = v;
        if (d == 0) {
            equal = true;
            continue;
        }
        if (firstStep == 0) {
            firstStep = d;
            minStep = d;
        } else {
            if (std::fabs(d) < std::fabs(minStep))
                minStep = d;
            // A relative margin keeps rounding noise of an even grid
            // (0.1, 0.30000000000000004 - 0.2, ...) from counting as smaller.
            if (std::fabs(d) < std::fabs(firstStep) * (1 - 1e-9))
                even = false;
        }
        if (!equal && !noOrder) {
            const std::uint32_t dir = d > 0 ? CGraphColumn::OrderAscending : CGraphColumn::OrderDescending;
            if (direction == 0)
                direction = dir;
            else if (direction != dir)
                noOrder = true;
        }
    }

    std::uint32_t flags = noOrder ? CGraphColumn::OrderNone : direction;
    if (!noOrder && direction == 0 && !equal)
        flags = CGraphColumn::OrderAscending; // fewer than two valid rows
    if (equal)
        flags |= CGraphColumn::OrderEqualNeighbours;
    if (even)
        flags |= CGraphColumn::OrderEvenStep;
    column->m_orderFlags = flags;
    column->m_minStep = minStep;
    column->m_evenStep = even ? 1 : 0;
    column->m_hasInvalid = invalid ? 1 : 0;
    return flags;
}

int RangeOf(const CGraphColumn *column, int first, int last, double &min, double &max, bool &hasInvalid)
{
    hasInvalid = false;
    if (!column)
        return 0;
    if (first < 0)
        first = 0;
    if (last > column->m_count - 1)
        last = column->m_count - 1;
    bool any = false;
    for (int i = first; i <= last; ++i) {
        if (column->m_valid[i] != 1) {
            hasInvalid = true;
            continue;
        }
        const double v = column->m_values[i];
        if (!any) {
            min = max = v;
            any = true;
        } else if (v < min) {
            min = v;
        } else if (v > max) {
            max = v;
        }
    }
    return any ? 1 : 0;
}
