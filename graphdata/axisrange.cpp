#include "graphdata/axisrange.h"

#include "graphdata/axisscale.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

bool CAxisView::IsValid() const
{
    return std::isfinite(min) && std::isfinite(max) && max > min;
}

bool NearlyEqualEnds(double a, double b)
{
    std::uint64_t x, y;
    std::memcpy(&x, &a, sizeof x);
    std::memcpy(&y, &b, sizeof y);
    return (x >> 16) == (y >> 16);
}

void SpreadEqualEnds(double &low, double &high, AxisKind kind)
{
    if (low > high)
        std::swap(low, high);
    if (!NearlyEqualEnds(low, high))
        return;
    if (low == 0) {
        if (kind == AxisKind::X) {
            low = -0.9;
            high = 0.1;
        }
        return;
    }
    const double v = low;
    low = 0.9 * v;
    high = 1.1 * v;
    if (low > high)
        std::swap(low, high);
}

void WidenByTenth(double &low, double &high)
{
    double span = (high - low) / 10;
    if (!std::isfinite(span) && std::isfinite(low) && std::isfinite(high))
        span = (high / 2 - low / 2) / 5;
    double h = high + span, l = low - span;
    if (std::fpclassify(h) == FP_SUBNORMAL)
        h = 0;
    if (std::fpclassify(l) == FP_SUBNORMAL)
        l = 0;
    if (!std::isfinite(h) || !std::isfinite(l))
        return;
    high = h;
    low = l;
}

double NiceStep(double &max, double &min, AxisKind kind)
{
    if (std::isfinite(min) && std::isfinite(max) && !std::isfinite(max - min)) {
        // The span does not fit a double: step the halves, keep the ends.
        double h = max / 2, l = min / 2;
        const double half = kind == AxisKind::X ? NiceStepX(h, l) : NiceStepY(h, l);
        return 2 * half;
    }
    const double oldMin = min, oldMax = max;
    const double step = kind == AxisKind::X ? NiceStepX(max, min) : NiceStepY(max, min);
    if (!std::isfinite(max) || !std::isfinite(min)) {
        // Refined ends past the largest double: the data's ends stay.
        max = oldMax;
        min = oldMin;
    }
    return step;
}

double StepKeepingEnds(double low, double high, AxisKind kind)
{
    return NiceStep(high, low, kind);
}

void LogDecadeEnds(double &low, double &high)
{
    if (!std::isfinite(low) || !std::isfinite(high) || !(high - low >= 1 - 1e-9))
        return;
    // Ends within rounding of a decade stay on it.
    const double lo = std::floor(low + 1e-9), hi = std::ceil(high - 1e-9);
    low = lo;
    high = hi;
}

CAxisView FittedView(double low, double high, AxisKind kind, bool log)
{
    SpreadEqualEnds(low, high, kind);
    CAxisView view;
    if (log) {
        LogDecadeEnds(low, high);
        view.tick = 1;
    } else {
        view.tick = NiceStep(high, low, kind);
    }
    view.min = low;
    view.max = high;
    return view;
}

CAxisView MarginView(double low, double high, AxisKind kind, bool log)
{
    SpreadEqualEnds(low, high, kind);
    if (!(high > low)) {
        // 0 on a Y axis
        low -= 1;
        high += 1;
    }
    WidenByTenth(low, high);
    CAxisView view;
    view.tick = log ? 1 : NiceStep(high, low, kind);
    view.min = low;
    view.max = high;
    return view;
}
