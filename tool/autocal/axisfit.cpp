#include "tool/autocal/axisfit.h"

#include <algorithm>
#include <cmath>

namespace {

// How far a label may stand from its line, as a part of the lines' spacing.
constexpr double SnapShare = 0.3;
// How far, in pixels, a label's line may lie from the model's position of its
// value for the label to count as agreeing.
constexpr double AgreePixels = 1.5;

struct CCandidate {
    bool log = false;
    double offset = 0, slope = 0;
    int agreeing = 0;
    double spread = 0;
};

double transformed(bool log, double v)
{
    return log ? std::log10(v) : v;
}

CCandidate bestOf(const QList<CAxisLabel> &labels, bool log)
{
    CCandidate best;
    best.log = log;
    for (qsizetype i = 0; i < labels.size(); ++i)
        for (qsizetype j = i + 1; j < labels.size(); ++j) {
            const CAxisLabel &a = labels[i], &b = labels[j];
            if (log && (a.value <= 0 || b.value <= 0))
                continue;
            if (std::abs(a.position - b.position) < 2 || a.value == b.value)
                continue;
            const double ta = transformed(log, a.value), tb = transformed(log, b.value);
            const double slope = (tb - ta) / (b.position - a.position);
            const double offset = ta - slope * a.position;
            int agreeing = 0;
            double spread = 0;
            for (const CAxisLabel &c : labels) {
                if (log && c.value <= 0)
                    continue;
                const double px = (transformed(log, c.value) - offset) / slope;
                const double miss = std::abs(px - c.position);
                if (miss <= AgreePixels) {
                    ++agreeing;
                    spread += miss;
                }
            }
            if (agreeing > best.agreeing || (agreeing == best.agreeing && spread < best.spread)) {
                best.offset = offset;
                best.slope = slope;
                best.agreeing = agreeing;
                best.spread = spread;
            }
        }
    return best;
}

} // namespace

double CAxisModel::PixelOf(double value) const
{
    return ((log ? std::log10(value) : value) - offset) / slope;
}

double CAxisModel::ValueAt(double pixel) const
{
    const double v = offset + slope * pixel;
    return log ? std::pow(10.0, v) : v;
}

CAxisModel FitAxis(const QList<double> &lines, const QList<CAxisLabel> &labels, bool valuesRise)
{
    CAxisModel model;
    if (lines.size() < 2)
        return model;
    // The typical spacing of the lines sets how far a label may stray.
    QList<double> gaps;
    for (qsizetype i = 1; i < lines.size(); ++i)
        gaps.append(lines[i] - lines[i - 1]);
    std::sort(gaps.begin(), gaps.end());
    const double snap = std::max(3.0, SnapShare * gaps[gaps.size() / 2]);

    QList<CAxisLabel> placed;
    for (CAxisLabel l : labels) {
        const auto nearest = std::min_element(lines.begin(), lines.end(), [&](double a, double b) {
            return std::abs(a - l.position) < std::abs(b - l.position);
        });
        if (std::abs(*nearest - l.position) > snap) {
            ++model.disagreeing;
            continue;
        }
        l.position = *nearest;
        placed.append(l);
    }
    if (placed.size() < 3)
        return model;

    const CCandidate linear = bestOf(placed, false);
    const CCandidate log = bestOf(placed, true);
    if (std::max(linear.agreeing, log.agreeing) < 3) {
        model.outcome = CAxisModel::Outcome::Inconsistent;
        return model;
    }
    if (linear.agreeing == log.agreeing) {
        model.outcome = CAxisModel::Outcome::Ambiguous;
        return model;
    }
    const CCandidate &c = linear.agreeing > log.agreeing ? linear : log;
    model.log = c.log;

    // Least squares over the agreeing labels.
    double n = 0, sp = 0, sv = 0, spp = 0, spv = 0;
    for (const CAxisLabel &l : placed) {
        if (c.log && l.value <= 0) {
            ++model.disagreeing;
            continue;
        }
        const double px = (transformed(c.log, l.value) - c.offset) / c.slope;
        if (std::abs(px - l.position) > AgreePixels) {
            ++model.disagreeing;
            continue;
        }
        model.agreeing.append(l);
        const double v = transformed(c.log, l.value);
        n += 1;
        sp += l.position;
        sv += v;
        spp += l.position * l.position;
        spv += l.position * v;
    }
    const double det = n * spp - sp * sp;
    model.slope = det != 0 ? (n * spv - sp * sv) / det : c.slope;
    model.offset = (sv - model.slope * sp) / n;
    for (const CAxisLabel &l : model.agreeing)
        model.worstPixels = std::max(model.worstPixels, std::abs(model.PixelOf(l.value) - l.position));
    model.outcome = (model.slope > 0) == valuesRise ? CAxisModel::Outcome::Fitted : CAxisModel::Outcome::Reversed;
    return model;
}
