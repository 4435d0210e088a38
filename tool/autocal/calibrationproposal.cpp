#include "tool/autocal/calibrationproposal.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>

namespace {

// A rotation is corrected once it moves the ends of the picture's longest
// line by this much against each other.
constexpr double StraightenPixels = 0.4;

QList<CAxisLabel> axisLabels(const QList<CTickLabel> &labels)
{
    QList<CAxisLabel> r;
    for (const CTickLabel &l : labels)
        // The engine's own confidence is not used: it is often nil for a
        // right reading of a short label.  The axis fit weeds out misreadings.
        if (l.value.ok)
            r.append(CAxisLabel{l.position, l.value.value, l.value.prefixExponent});
    return r;
}

// The prefix most of the agreeing labels carry; decade forms count as none.
int commonPrefix(const QList<CAxisLabel> &labels)
{
    std::map<int, int> counts;
    for (const CAxisLabel &l : labels)
        ++counts[l.prefixExponent];
    int best = 0, bestCount = -1;
    for (const auto &[exponent, count] : counts)
        if (count > bestCount) {
            best = exponent;
            bestCount = count;
        }
    return best;
}

// How much an axis model is to be trusted, from 0 to 1: every label that
// disagrees, and a fit that is loose, costs; three agreeing labels are the
// least that makes a model at all.
double axisConfidence(const CAxisModel &m)
{
    if (!m.Fitted())
        return 0;
    const double agreeing = m.agreeing.size();
    double c = agreeing / (agreeing + m.disagreeing);
    if (m.agreeing.size() == 3)
        c *= 0.9;
    c *= std::clamp(1.25 - m.worstPixels / 2, 0.0, 1.0);
    return c;
}

} // namespace

int CCalibrationProposal::ReadableLabels(AxisSide side) const
{
    const QList<CTickLabel> &labels = side == AxisSide::X ? xLabels : yLabels;
    return int(std::count_if(labels.begin(), labels.end(), [](const CTickLabel &l) { return l.value.ok; }));
}

CCalibrationProposal ProposeCalibration(const QImage &picture)
{
    CCalibrationProposal p;
    CDarkness dark = DarknessOf(picture);
    p.rotationDegrees = FindRotationDegrees(dark);
    const double reach = std::max(dark.width, dark.height);
    if (std::abs(p.rotationDegrees * std::numbers::pi / 180) * reach > StraightenPixels) {
        p.straightPicture = StraightenPicture(picture, p.rotationDegrees, &p.toStraight);
        p.straightened = true;
        dark = DarknessOf(p.straightPicture);
    }

    p.grid = FindGridLines(dark);
    if (!p.grid.frameFound) {
        p.outcome = CCalibrationProposal::Outcome::NoFrame;
        return p;
    }
    p.xLabels = FindTickLabels(dark, p.grid, AxisSide::X);
    p.yLabels = FindTickLabels(dark, p.grid, AxisSide::Y);
    if (!ReadTickLabels(p.xLabels) || !ReadTickLabels(p.yLabels)) {
        p.outcome = CCalibrationProposal::Outcome::NoOcr;
        return p;
    }
    p.xModel = FitAxis(p.grid.xLines, axisLabels(p.xLabels), true);
    p.yModel = FitAxis(p.grid.yLines, axisLabels(p.yLabels), false);
    const double xConfidence = axisConfidence(p.xModel), yConfidence = axisConfidence(p.yModel);
    p.confidence = std::min(xConfidence, yConfidence);
    if (xConfidence < MinimumConfidence) {
        p.outcome = CCalibrationProposal::Outcome::XUndecided;
        return p;
    }
    if (yConfidence < MinimumConfidence) {
        p.outcome = CCalibrationProposal::Outcome::YUndecided;
        return p;
    }

    // The corners on the outermost labelled lines: the widest rectangle keeps
    // the error of a whole-pixel corner smallest over the graph.
    const auto byPosition = [](const CAxisLabel &a, const CAxisLabel &b) { return a.position < b.position; };
    const auto [xMin, xMax] = std::minmax_element(p.xModel.agreeing.begin(), p.xModel.agreeing.end(), byPosition);
    const auto [yMin, yMax] = std::minmax_element(p.yModel.agreeing.begin(), p.yModel.agreeing.end(), byPosition);
    p.firstCorner = QPoint(int(std::lround(xMin->position)), int(std::lround(yMax->position)));
    p.secondCorner = QPoint(int(std::lround(xMax->position)), int(std::lround(yMin->position)));
    p.xAtFirst = xMin->value;
    p.xAtSecond = xMax->value;
    p.yAtFirst = yMax->value;
    p.yAtSecond = yMin->value;
    p.xLog = p.xModel.log;
    p.yLog = p.yModel.log;
    p.xPrefixExponent = commonPrefix(p.xModel.agreeing);
    p.yPrefixExponent = commonPrefix(p.yModel.agreeing);
    p.outcome = CCalibrationProposal::Outcome::Proposed;
    return p;
}
