#include "graphdata/axisrange.h"

#include "graphdata/axisscale.h"

#include <algorithm>
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
    if (std::fpclassify(a) == FP_SUBNORMAL || std::fpclassify(b) == FP_SUBNORMAL)
        return std::fabs(a - b) <= std::max(std::fabs(a), std::fabs(b)) * 0x1p-36; // as the bits of normal ones

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
    auto rule = [kind](double &hi, double &lo) { return kind == AxisKind::X ? NiceStepX(hi, lo) : NiceStepY(hi, lo); };
    if (std::isfinite(min) && std::isfinite(max) && !std::isfinite(max - min)) {
        // The span does not fit a double: step the halves, keep the ends.
        double h = max / 2, l = min / 2;
        return 2 * rule(h, l);
    }
    const double big = std::max(std::fabs(min), std::fabs(max));
    if (big > 0 && big < 1e-290) {
        // Denormal ranges are stepped a factor 1e300 up, where the decade
        // arithmetic of the rules is exact enough, and brought back.
        double h = max * 1e300, l = min * 1e300;
        const double step = rule(h, l) / 1e300;
        if (step > 0) {
            max = h / 1e300;
            min = l / 1e300;
        }
        return step;
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
    const double dataLow = low, dataHigh = high;
    WidenByTenth(low, high);
    if (!(high > low)) {
        // denormal ends made 0: the data's own ends still make a range
        low = dataLow;
        high = dataHigh;
    }
    CAxisView view;
    view.tick = log ? 1 : NiceStep(high, low, kind);
    view.min = low;
    view.max = high;
    return view;
}
