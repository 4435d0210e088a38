#include "graphdata/draw/axisgrid.h"

#include "graphdata/axislabels.h"
#include "graphdata/axisrange.h"
#include "graphdata/axisscale.h"
#include "graphdata/axisticks.h"

#include <algorithm>
#include <cmath>

namespace {

// Text of a label on a linear axis: value times the prefix factor, with
// the prefix letter behind it.
QString linearLabel(double v, double step, const CUnitPrefix &prefix)
{
    // A value within a millionth of a step of 0 is 0, not a rounding rest.
    if (std::fabs(v) < std::fabs(step) * 1e-6)
        return QStringLiteral("0");
    return LabelText(v * prefix.factor, prefix.digits) + prefix.letter;
}

QString logLabel(double v)
{
    const CUnitPrefix prefix = UnitPrefix(v);
    return LabelText(v * prefix.factor, 6) + prefix.letter;
}

double widestOf(const QStringList &texts, const QFontMetricsF &metrics)
{
    double w = 0;
    // Long lists are sampled: their texts differ little in width.
    const int n = int(texts.size());
    const int stride = n > 60 ? n / 30 : 1;
    for (int i = 0; i < n; i += stride)
        w = std::max(w, metrics.horizontalAdvance(texts[i]));
    if (n > 0)
        w = std::max(w, metrics.horizontalAdvance(texts.back()));
    return w;
}

// Leaves out the log labels that would touch another one, decades first:
// every decade label that has room stays, and the labels between decades
// (2, 5, 20u...) only fill the room the decades leave.  Positions are axis
// units over lo..hi on `length` pixels; an X label takes its width and two
// pixels, a Y label its line height and one pixel.
void thinLogLabels(CAxisTicks &out, double lo, double hi, double length, bool xAxis, const QFontMetricsF &metrics)
{
    const int n = int(out.labelAt.size());
    if (n < 2 || !(length > 0))
        return;
    struct Extent
    {
        double from, to;
    };
    std::vector<Extent> extent(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        const double at = (out.labelAt[std::size_t(i)] - lo) / (hi - lo) * length;
        const double size = xAxis ? metrics.horizontalAdvance(out.labels[i]) + 2 : metrics.height() + 1;
        double from = at - size / 2;
        if (xAxis && at + size / 2 > length)
            from = at - size; // the painter right-aligns a label at the end
        extent[std::size_t(i)] = {from, from + size};
    }
    std::vector<char> kept(std::size_t(n), 0);
    auto fits = [&](int i) {
        const Extent &e = extent[std::size_t(i)];
        for (int j = 0; j < n; ++j) {
            if (kept[std::size_t(j)] && e.from < extent[std::size_t(j)].to && extent[std::size_t(j)].from < e.to)
                return false;
        }
        return true;
    };
    auto isDecade = [&](int i) {
        const double at = out.labelAt[std::size_t(i)];
        return std::fabs(at - std::nearbyint(at)) < 1e-9;
    };
    for (int pass = 0; pass < 2; ++pass) {
        for (int i = 0; i < n; ++i) {
            if (isDecade(i) == (pass == 0) && fits(i))
                kept[std::size_t(i)] = 1;
        }
    }
    std::vector<double> at;
    QStringList texts;
    for (int i = 0; i < n; ++i) {
        if (kept[std::size_t(i)]) {
            at.push_back(out.labelAt[std::size_t(i)]);
            texts.push_back(out.labels[i]);
        }
    }
    out.labelAt.swap(at);
    out.labels = texts;
}

} // namespace

CAxisTicks ComputeAxisTicks(const CAxisTickRequest &q, const QFontMetricsF &metrics)
{
    CAxisTicks out;
    double lo = q.viewMin, hi = q.viewMax;
    if (!std::isfinite(lo) || !std::isfinite(hi) || !(hi > lo))
        return out;

    if (q.log) {
        const double room = q.length / (q.xAxis ? metrics.averageCharWidth() : metrics.height());
        std::vector<double> ticks, labels;
        LogTicks(room, std::pow(10.0, lo), std::pow(10.0, hi), ticks, labels);
        for (double v : ticks)
            out.major.push_back(std::log10(v));
        if (q.labelsOn) {
            for (double v : labels) {
                out.labelAt.push_back(std::log10(v));
                out.labels.push_back(logLabel(v));
            }
            thinLogLabels(out, lo, hi, q.length, q.xAxis, metrics);
        }
        out.widest = widestOf(out.labels, metrics);
        return out;
    }

    double step = q.step;
    if (!(step > 0)) {
        double a = hi, b = lo;
        step = q.dateDays ? DateAxisStep(hi - lo) : NiceStep(a, b, q.xAxis ? AxisKind::X : AxisKind::Y);
    }
    if (q.integerTicks) {
        step = std::trunc(step);
        if (!(step > 0))
            step = 1;
    }
    const CUnitPrefix prefix = PrefixFromRange(lo, hi);
    int zeroIndex = -1;
    std::vector<double> ticks, labels;
    step = LinearTicks(lo, hi, step, ticks, zeroIndex, 1, q.labelsOn, labels);
    out.major = ticks;

    if (q.labelsOn && !labels.empty() && q.dateDays) {
        // Every tick of a date axis is labelled: its steps are few by their
        // rule, and labels too long for them shrink their font instead.
        for (double v : labels)
            out.labels.push_back(DateLabelText(v, step, out.labels.isEmpty()));
        out.labelAt = labels;
    } else if (q.labelsOn && !labels.empty()) {
        QStringList texts;
        for (double v : labels)
            texts.push_back(linearLabel(v, step, prefix));
        const double need = q.xAxis ? 2 * (widestOf(texts, metrics) + metrics.averageCharWidth())
                                    : 1.5 * metrics.height();
        // Across the whole of the doubles hi - lo overflows: count the
        // steps from each end instead.
        const bool spanFits = std::isfinite(hi - lo);
        const double every = LabelEvery(spanFits ? hi - lo : hi / step - lo / step, spanFits ? step : 1.0, q.length,
                                        need, q.xAxis);
        if (every > 1) {
            std::vector<double> sparse;
            LinearTicks(lo, hi, step, ticks, zeroIndex, int(every), true, sparse);
            labels.swap(sparse);
            texts.clear();
            for (double v : labels)
                texts.push_back(linearLabel(v, step, prefix));
        }
        out.labelAt = labels;
        out.labels = texts;
    }
    if (q.subDivisions >= 2 && !out.major.empty() && out.major.size() < 2000)
        MinorTicks(lo, hi, out.major.front(), step, q.subDivisions, out.minor);
    out.widest = widestOf(out.labels, metrics);
    return out;
}

bool XLabelsFit(const CAxisTicks &ticks, double lo, double hi, double length, int rotation,
                const QFontMetricsF &metrics)
{
    const int n = int(std::min(ticks.labelAt.size(), std::size_t(ticks.labels.size())));
    if (n == 0 || !(hi > lo) || !(length > 0))
        return true;
    const double perUnit = length / (hi - lo);
    const double slant = std::fabs(std::sin(rotation * M_PI / 180));
    double lastAt = 0, lastHalf = 0;
    for (int i = 0; i < n; ++i) {
        const double at = (ticks.labelAt[std::size_t(i)] - lo) * perUnit;
        const double width = metrics.horizontalAdvance(ticks.labels[i]);
        if (rotation == 0 && width > length)
            return false;
        if (i > 0) {
            const double gap = at - lastAt;
            if (rotation == 0 ? gap < lastHalf + width / 2 + 2 : gap * slant < metrics.height() + 1)
                return false;
        }
        lastAt = at;
        lastHalf = width / 2;
    }
    return true;
}
