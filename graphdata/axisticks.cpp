#include "graphdata/axisticks.h"

#include "graphdata/axisscale.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Room for rounding when comparing a computed tick with an end of the axis.
double slack(double step)
{
    return std::fabs(step) * 1e-9;
}

} // namespace

double LinearTicks(double min, double max, double step, std::vector<double> &ticks, int &zeroIndex, int labelEvery,
                   bool labelsOn, std::vector<double> &labels)
{
    ticks.clear();
    labels.clear();
    zeroIndex = -1;
    if (!(step > 0))
        step = 1;
    // max / step - min / step: a span past the largest double still counts
    if (max / step - min / step > 10000)
        step = std::isfinite(max - min) ? (max - min) / 20 : max / 20 - min / 20;
    if (!std::isfinite(min) || !std::isfinite(max) || !std::isfinite(step) || !(step > 0))
        return step;

    double k = std::floor(min / step);
    const bool accumulate = !(std::fabs(k) < 2e8);
    double value;
    if (accumulate) {
        value = min;
    } else {
        // Ticks as k * step keep the labels free of summed-up error.
        if (k * step < min - slack(step))
            k += 1;
        value = k * step;
    }
    const double end = max + slack(step);
    for (int round = 0; value <= end && round <= 10001; ++round) {
        if (!std::isfinite(value))
            break;
        if (!accumulate && k == 0)
            zeroIndex = int(ticks.size());
        ticks.push_back(value);
        if (labelsOn && int(labels.size()) < kMaxAxisLabels) {
            if (labelEvery <= 1 || accumulate
                || std::fmod(std::fabs(k), double(labelEvery)) == 0)
                labels.push_back(value);
        }
        if (accumulate) {
            value += step;
        } else {
            k += 1;
            value = k * step;
        }
    }
    return step;
}

int LabelEvery(double span, double step, double length, double charSize, bool xAxis)
{
    if (!(step > 0) || !(charSize > 0) || !(span > 0))
        return 1;
    const double t = std::floor(span / step);
    // On an X axis a label needs about half as much room per character
    // width as on a Y axis per character height.
    const double unit = xAxis ? 2 * length / charSize : length / charSize;
    if (std::floor(unit) >= t)
        return 1;
    int k = std::floor(2 * unit) >= t ? 2 : 5;
    bool byTwo = true;
    // A span of more steps than an int can count (extreme data) ends the
    // rise at the largest k of the sequence that still fits.
    while (std::floor(double(k) * unit) < t && k <= std::numeric_limits<int>::max() / 5) {
        k *= byTwo ? 2 : 5;
        byTwo = !byTwo;
    }
    return k;
}

void LogTicks(double labelRoom, double min, double max, std::vector<double> &ticks, std::vector<double> &labels)
{
    ticks.clear();
    labels.clear();
    if (!(min > 0))
        min = 1e-6;
    if (!(max > 0))
        max = 1e-6;
    if (max < min)
        std::swap(max, min);
    const double d = std::log10(max) - std::log10(min);
    const double b = 15 * d;
    if (!std::isfinite(d))
        return;

    if (d < 1) {
        double hi = max, lo = min;
        const double step = NiceStepX(hi, lo);
        if (!(step > 0))
            return;
        for (double k = std::ceil(min / step - 1e-9); ; k += 1) {
            const double v = k * step;
            if (!std::isfinite(v) || v > max + slack(step) || ticks.size() > 10000)
                break;
            ticks.push_back(v);
            if (labels.size() < std::size_t(kMaxAxisLabels))
                labels.push_back(v);
        }
        return;
    }

    const int firstDecade = int(std::floor(std::log10(min) + 1e-12));
    if (d <= 5) {
        const bool all = labelRoom > b;
        const bool fives = d < 3 && labelRoom >= 9;
        for (int e = firstDecade; ; ++e) {
            const double p = std::pow(10.0, e);
            if (!std::isfinite(p) || p > max * (1 + 1e-12))
                break;
            for (int m = 1; m <= 9; ++m) {
                const double v = m * p;
                if (v < min * (1 - 1e-12))
                    continue;
                if (v > max * (1 + 1e-12))
                    break;
                ticks.push_back(v);
                if ((all || m == 1 || (fives && m == 5)) && labels.size() < std::size_t(kMaxAxisLabels))
                    labels.push_back(v);
            }
        }
        return;
    }

    const int step = d < 20 ? 1 : d < 100 ? 10 : 100;
    const int labelSpacing = labelRoom < 2 ? int(std::ceil(d / step / 5)) : 1;
    int index = 0;
    for (int e = firstDecade; ; e += step, ++index) {
        const double v = std::pow(10.0, e);
        if (!std::isfinite(v) || v > max * (1 + 1e-12))
            break;
        if (v < min * (1 - 1e-12))
            continue;
        ticks.push_back(v);
        if (index % labelSpacing == 0 && labels.size() < std::size_t(kMaxAxisLabels))
            labels.push_back(v);
    }
}

void MinorTicks(double plotMin, double plotMax, double firstTick, double step, int subDivisions,
                std::vector<double> &minor)
{
    minor.clear();
    if (subDivisions < 2 || subDivisions > 1000 || !(step > 0) || !std::isfinite(firstTick)
        || !(plotMax > plotMin))
        return;
    const double sub = step / subDivisions;
    // Below the first tick, then from it upward, 1000 at most on each side.
    for (int i = 1; i <= 1000; ++i) {
        const double v = firstTick - i * sub;
        if (v < plotMin - slack(sub))
            break;
        if (i % subDivisions != 0)
            minor.push_back(v);
    }
    std::reverse(minor.begin(), minor.end());
    // Between the ticks and past the last one; the tick count is bounded
    // by LinearTicks, so this bounds the walk as well.
    const int cap = (10001 + 1000) * subDivisions;
    for (int i = 1; i <= cap; ++i) {
        const double v = firstTick + i * sub;
        if (v > plotMax + slack(sub))
            break;
        if (i % subDivisions != 0)
            minor.push_back(v);
    }
}
