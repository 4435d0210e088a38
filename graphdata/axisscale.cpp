#include "graphdata/axisscale.h"

#include <cmath>
#include <utility>

namespace {

const int kMaxRounds = 1000;

bool isMultiple(double v, double step)
{
    const double q = v / step;
    return std::fabs(q - std::nearbyint(q)) <= 1e-9 * std::max(1.0, std::fabs(q));
}

// Decade exponent and mantissa of d > 0, with the mantissa at most 20.
void decade(double d, int &e, double &m)
{
    e = int(std::floor(std::log10(d)));
    m = d / std::pow(10.0, e);
    for (int round = 0; m > 20 && round < kMaxRounds; ++round) {
        ++e;
        m = d / std::pow(10.0, e);
    }
}

} // namespace

double SnapDown(double v, double step)
{
    if (!(step > 0))
        return v;
    if (v < 0) {
        if (-v < step)
            return -step;
        if (isMultiple(v, step))
            return v;
        return std::floor(v / step) * step;
    }
    if (isMultiple(v, step))
        return std::nearbyint(v / step) * step;
    return std::floor(v / step) * step;
}

double NiceStepX(double &max, double &min)
{
    double step = 0;
    for (int pass = 0; pass < 2; ++pass) {
        const double d = max - min;
        if (!(d > 0) || !std::isfinite(d))
            return step;
        int e;
        double m;
        decade(d, e, m);
        double s = std::pow(10.0, e);
        if (m <= 0.6)
            s *= 0.1;
        else if (m <= 1.501)
            s *= 0.2;
        else if (m <= 3.501)
            s *= 0.5;
        else if (m <= 6.001)
            ;
        else
            s *= 2;
        const double oldMin = min, oldMax = max;
        min = SnapDown(min, s);
        const double tolerance = 0.0001 * std::fabs(max);
        const double r = std::fmod(max - min, s);
        if (std::fabs(r) > tolerance && std::fabs(s - std::fabs(r)) > tolerance) {
            // the first min + k * s that is not below max - tolerance
            double k = std::ceil((max - tolerance - min) / s);
            double candidate = min + k * s;
            for (int round = 0; candidate < max - tolerance && round < kMaxRounds; ++round)
                candidate = min + ++k * s;
            max = candidate;
        }
        step = s;
        if (min == oldMin && max == oldMax)
            break;
    }
    return step;
}

double NiceStepY(double &max, double &min)
{
    if (max == min) {
        if (max == 0) {
            max = 1;
            min = -1;
            return 1;
        }
        const double widen = 0.2 * std::fabs(max);
        max += widen;
        min -= widen;
    }
    double step = 0;
    for (int pass = 0; pass < 2; ++pass) {
        if (max < min)
            std::swap(max, min);
        const double d = max - min;
        if (!(d > 0) || !std::isfinite(d))
            break;
        int e;
        double m;
        decade(d, e, m);
        double s = std::pow(10.0, e);
        if (m < 1.5)
            s *= 0.2;
        else if (m <= 1.75)
            s *= 0.25;
        else if (m <= 3.5)
            s *= 0.5;
        else if (m <= 7)
            ;
        else
            s *= 2;
        double newMin = SnapDown(min, s);
        double newMax = max;
        if (std::fmod(newMax, s) != 0)
            newMax = std::ceil(newMax / s) * s;
        if (!std::isfinite(newMax) || !std::isfinite(newMin) || !std::isfinite(s))
            break;
        // Rounding leftovers far below the scale of the axis become 0.
        if (newMax != 0) {
            const double tiny = std::pow(10.0, std::floor(std::log10(std::fabs(newMax))) - 5);
            if (std::fabs(newMin) < tiny)
                newMin = 0;
        }
        const bool unchanged = newMin == min && newMax == max && s == step;
        min = newMin;
        max = newMax;
        step = s;
        if (unchanged)
            break;
    }
    return step;
}

double NiceStepLog(double max, double min, int minTicks)
{
    const double d = std::fabs(max - min);
    if (!(d > 0) || !std::isfinite(d))
        return 0;
    const int e = int(std::floor(std::log10(d)));
    const double m = d / std::pow(10.0, e);
    const double t = minTicks < 1 ? 5 : minTicks;
    const double p = std::pow(10.0, e);
    if (std::floor(std::fabs(t - m) + 0.49) < 2)
        return p;
    if (t > m)
        return p / std::floor(t / m + 0.49);
    return p * std::floor(m / t + 0.49);
}

int WidenForBars(int barCount, int rows, double &max, double &min, double &w)
{
    const double span = max - min;
    w = 1;
    if (span == 0 || barCount < 1 || rows < 1)
        return 0;
    const double denominator = double((barCount - 1) / 5 + (barCount + 1) * 2) * rows - 4;
    if (!(denominator > 0))
        return 0;
    w = span / denominator;
    double widen = 2 * w;
    if (barCount > 1) {
        if (barCount % 2 == 0)
            widen += (barCount / 2 - 1) * 11 * w / 5 + w + w / 10;
        else
            widen += (barCount - 1) / 2 * 11 * w / 5;
    }
    max += widen;
    min -= widen;
    return 1;
}

double DateAxisStep(double span)
{
    if (span > 61)
        return 30;
    if (span > 30)
        return 7;
    if (span > 15)
        return 1;
    if (span > 3)
        return 0.5;
    if (span > 1.5)
        return 0.25;
    if (span > 1)
        return 0.125;
    return 1.0 / 24;
}
