#include "graphdata/spectrum/resample.h"

#include "graphdata/columnscan.h"

#include <algorithm>
#include <cmath>

namespace {

// A sampling descriptor is in force when this flag is set.
const std::uint32_t kSamplingInForce = 16;

} // namespace

int ResampleGrid(CGraphColumn *x, int rows, double start, double end, int &first, int &last,
                 CGraphColumnPtr &grid)
{
    grid.reset();
    first = last = -1;
    if (!x || rows < 2 || rows > x->m_count || !(start < end))
        return 0;
    const std::uint8_t *valid = x->m_valid;
    const double *v = x->m_values;

    // The first valid row not below start, or the one before it when that
    // one is valid, so that the span is covered from its beginning.
    int r = 0;
    for (; r < rows; ++r) {
        if (valid[r] == 2)
            return 0;
        if (valid[r] == 1 && v[r] >= start)
            break;
    }
    if (r == rows)
        return 0;
    first = r;
    if (v[r] > start && r > 0 && valid[r - 1] == 1)
        first = r - 1;

    // The valid rows up to the first that reaches end.
    int n = 0;
    for (r = first; r < rows; ++r) {
        if (valid[r] == 2)
            return 0;
        if (valid[r] != 1)
            continue;
        ++n;
        last = r;
        if (v[r] >= end)
            break;
    }
    if (n < 2)
        return 0;

    if (x->m_orderFlags == 0)
        FindOrder(x, 0, rows - 1);

    const double avg = (end - start) / n;
    double step = avg;
    const CSamplingInfo *sampling = x->m_sampling;
    if (sampling && (sampling->m_flags & kSamplingInForce)) {
        step = sampling->m_step;
        if (sampling->m_mode == 1 && sampling->m_start != start && step > 0) {
            // The grid keeps to the points of the explicit sampling: its
            // start moves to the first of them at or after start.
            const double k = std::ceil((start - sampling->m_start) / step);
            const double shifted = sampling->m_start + k * step;
            if (shifted < end)
                start = shifted;
        }
    } else if (x->m_minStep > 0) {
        step = x->m_minStep;
    }
    if (!(step > 0))
        step = avg;
    step = std::min(avg, step);
    if (step < avg / 100000)
        step = avg / 1000;
    if (!(step > 0))
        return 0;

    double points = std::floor((end - start) / step + 0.5) + 1;
    bool thinned = false;
    if (points > kMaxGridPoints) {
        while (points > kMaxGridPoints)
            points = std::floor(points / 2);
        step = (end - start) / points;
        thinned = true;
    }
    int count = int(points);
    if (count >= 2) {
        const double lastPoint = start + (count - 1) * step, before = start + (count - 2) * step;
        if (std::abs(lastPoint - end) > std::abs(before - end))
            --count;
    }
    if (count < 1)
        return 0;
    grid = CGraphColumnPtr::Adopt(CGraphColumn::Create(count, QStringLiteral("Time")));
    for (int k = 0; k < count; ++k) {
        grid->m_values[k] = start + k * step;
        grid->m_valid[k] = 1;
    }
    grid->m_minValue = grid->m_values[0];
    grid->m_maxValue = grid->m_values[count - 1];
    grid->m_orderFlags = CGraphColumn::OrderAscending | CGraphColumn::OrderEvenStep;
    grid->m_minStep = step;
    if (thinned)
        grid->m_attrFlags |= CGraphColumn::AttrThinned;
    return 1;
}

int ResampleOnto(const CGraphColumn *x, const CGraphColumn *y, int rows, const CGraphColumn *grid,
                 CGraphColumnPtr &column, int *invalidRow)
{
    column.reset();
    if (invalidRow)
        *invalidRow = -1;
    if (!x || !y || !grid || grid->m_count < 1)
        return 0;
    rows = std::min({rows, x->m_count, y->m_count});
    // The usable rows, in order.
    int r0 = -1, r1 = -1;
    auto nextUsable = [&](int from) {
        for (int r = from; r < rows; ++r) {
            if (x->m_valid[r] == 2 || y->m_valid[r] == 2) {
                if (invalidRow)
                    *invalidRow = r;
                return -2;
            }
            if (x->m_valid[r] == 1 && y->m_valid[r] == 1)
                return r;
        }
        return -1;
    };
    r0 = nextUsable(0);
    if (r0 < 0)
        return 0;
    r1 = nextUsable(r0 + 1);
    if (r1 < 0)
        return 0;

    CGraphColumnPtr out = CGraphColumnPtr::Adopt(CGraphColumn::Create(grid->m_count, y->m_name));
    out->m_kind = y->m_kind;
    double lo = 0, hi = 0;
    for (int k = 0; k < grid->m_count; ++k) {
        const double g = grid->m_values[k];
        // Move to the segment that holds g, or the last one.
        while (x->m_values[r1] < g) {
            const int next = nextUsable(r1 + 1);
            if (next == -2)
                return 0;
            if (next < 0)
                break;
            r0 = r1;
            r1 = next;
        }
        const double x0 = x->m_values[r0], x1 = x->m_values[r1];
        const double y0 = y->m_values[r0], y1 = y->m_values[r1];
        const double value = x1 == x0 ? y0 : y0 + (y1 - y0) / (x1 - x0) * (g - x0);
        out->m_values[k] = value;
        out->m_valid[k] = 1;
        if (k == 0) {
            lo = hi = value;
        } else {
            lo = std::min(lo, value);
            hi = std::max(hi, value);
        }
    }
    // Rows after the last grid point are not needed, but an invalid one
    // among those read has failed above.
    out->m_minValue = lo;
    out->m_maxValue = hi;
    column = out;
    return 1;
}

int FrequencyColumn(int first, int last, int n, const CGraphColumn *x, CGraphColumnPtr &frequency)
{
    frequency.reset();
    if (!x || n < 1 || first < 0 || last < 0 || first >= x->m_count || last >= x->m_count)
        return 0;
    const double span = x->m_values[last] - x->m_values[first];
    if (span == 0 || !std::isfinite(span))
        return 0;
    const int bins = SpectrumBins(n);
    CGraphColumnPtr f = CGraphColumnPtr::Adopt(CGraphColumn::Create(bins, QStringLiteral("Frequency")));
    for (int k = 0; k < bins; ++k) {
        f->m_values[k] = k / span;
        f->m_valid[k] = 1;
    }
    f->m_kind = CGraphColumn::KindSpectrum;
    f->m_minValue = std::min(0.0, (bins - 1) / span);
    f->m_maxValue = std::max(0.0, (bins - 1) / span);
    f->m_orderFlags = span > 0 ? CGraphColumn::OrderAscending : CGraphColumn::OrderDescending;
    frequency = f;
    return 1;
}
