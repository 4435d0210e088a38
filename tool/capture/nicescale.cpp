#include "tool/capture/nicescale.h"

#include "tool/capture/numbertext.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <string>
#include <utility>

namespace {

// More ticks than this cannot be told apart on any screen; such a grid is
// left out rather than drawn.
constexpr int MaxGridTicks = 10000;

int clampToInt(double v)
{
    if (!(v > INT_MIN))
        return v != v ? 0 : INT_MIN;
    if (!(v < INT_MAX))
        return INT_MAX;
    return int(v);
}

} // namespace

int NiceScale(double &low, double &high, double &step)
{
    step = 0.0;
    if (!std::isfinite(low) || !std::isfinite(high) || !std::isfinite(high - low) || !(high > low))
        return 0;

    double lo = low;
    double hi = high;
    double s = 0.0;
    double previousStep = 0.0;
    int ticks = 0;
    for (int pass = 0; pass < 2; ++pass) {
        double span = hi - lo;
        if (!(span > 0.0) || !std::isfinite(span))
            break; // the first pass ran into the end of the doubles
        const double e = std::log10(span);
        double k = std::trunc(e);
        if (e < 0)
            k -= 1;
        if (e < 0 || k != 0)
            span *= std::pow(10.0, -k);
        const double unit = std::pow(10.0, k);

        if (span <= 1.001)
            s = unit * 0.2;
        else if (span <= 2.001)
            s = unit * 0.25;
        else if (span <= 3.501)
            s = unit * 0.5;
        else if (span <= 6.001)
            s = unit;
        else
            s = unit * 2;
        if (s == 0.0)
            s = 0.001;
        if (s != previousStep)
            ticks = 0;
        previousStep = s;

        // The low limit goes down to a whole step.
        if (lo >= 0) {
            lo = s * std::trunc(lo / s);
        } else if (s <= std::fabs(lo)) {
            const double r = std::fmod(lo, s);
            lo = r == 0 ? s * std::trunc(lo / s) : lo - r - s;
        } else {
            lo = -s;
        }

        // The high limit goes up to the first whole step from the low one,
        // unless it lies on a step already.
        if (std::fabs(hi - std::trunc(hi / s) * s) >= hi * 0.0001) {
            double top = lo;
            int i = 0;
            while (top + hi * 0.0001 < hi) {
                const double next = lo + double(i + 1) * s;
                if (!(next > top))
                    break; // the step is lost in the precision of the limits
                ++i;
                top = next;
            }
            ticks = i;
            hi = top;
        }
    }
    if (ticks == 0)
        ticks = clampToInt(std::trunc((hi - lo) / s));
    low = lo;
    high = hi;
    step = s;
    return ticks;
}

void EngineeringScale(double span, double &factor, QString &letter)
{
    factor = 1.0;
    letter.clear();
    if (!(span > 0.0) || !std::isfinite(span))
        return;
    const double exponent = std::floor(std::log10(span));
    if (exponent >= -2 && exponent <= 2)
        return;
    const int power = 3 * int(std::floor(exponent / 3.0));
    static const char *const letters[] = {"p", "n", "u", "m", "", "k", "M", "G", "T"};
    if (power < -12 || power > 12)
        return;
    factor = std::pow(10.0, -power);
    letter = QString::fromLatin1(letters[(power + 12) / 3]);
}

void MakeGridLabels(double &low, double &high, bool logarithmic, QStringList &labels,
                    QString &letter)
{
    labels.clear();
    letter.clear();
    if (low > high)
        std::swap(low, high);

    std::string text;
    if (!logarithmic) {
        double step = 0.0;
        const int ticks = NiceScale(low, high, step);
        if (low == high || step == 0.0 || ticks < 0 || ticks > MaxGridTicks)
            return;
        double factor = 1.0;
        EngineeringScale(high - low, factor, letter);
        labels.reserve(ticks + 1);
        for (int i = 0; i <= ticks; ++i) {
            text.clear();
            AppendFormatF(text, (low + i * step) * factor, 3);
            if (!text.empty() && text.back() == '0')
                text.pop_back();
            labels.append(QString::fromLatin1(text.data(), qsizetype(text.size())));
        }
        return;
    }

    if (!(low > 0.0) || !(high > 0.0) || !std::isfinite(low) || !std::isfinite(high))
        return;
    const double trueLow = std::log10(low);
    double decadeLow = std::trunc(trueLow);
    if (decadeLow > trueLow)
        decadeLow -= 1;
    const double trueHigh = std::log10(high);
    double decadeHigh = std::trunc(trueHigh);
    if (decadeHigh < trueHigh)
        decadeHigh += 1;
    low = std::pow(10.0, decadeLow);
    high = std::pow(10.0, decadeHigh);
    const int ticks = int(decadeHigh - decadeLow);
    if (ticks <= 0 || ticks > MaxGridTicks)
        return;
    labels.reserve(ticks + 1);
    for (int i = 0; i <= ticks; ++i) {
        text.clear();
        AppendFormatE(text, std::pow(10.0, decadeLow + i), 2);
        labels.append(QString::fromLatin1(text.data(), qsizetype(text.size())));
    }
}
