#pragma once
// The last stage: a whole calibration proposed from a picture.  The picture
// is measured for a small rotation and straightened when the rotation would
// move a grid crossing by more than a fraction of a pixel; the frame and the
// grid lines are found, the tick labels read, each axis fitted, and two
// corners proposed on labelled grid crossings, lower left and upper right,
// with the values printed there.  When any step leaves doubt, the proposal
// declines and says how far it came.

#include "tool/autocal/axisfit.h"
#include "tool/autocal/picturegrid.h"
#include "tool/autocal/ticklabels.h"

#include <QImage>
#include <QList>
#include <QPoint>
#include <QTransform>

struct CCalibrationProposal {
    enum class Outcome {
        Proposed,
        NoFrame,       // no plot frame in the picture
        NoOcr,         // the OCR engine could not be started
        XUndecided,    // the X axis could not be read (see xModel.outcome)
        YUndecided,
    };
    Outcome outcome = Outcome::NoFrame;

    // The rotation found, in degrees clockwise, and whether the picture was
    // straightened for it; everything below is then in the straightened
    // picture, which `toStraight` maps the original's pixels into.
    double rotationDegrees = 0;
    bool straightened = false;
    QImage straightPicture;
    QTransform toStraight;

    CGridLines grid;
    QList<CTickLabel> xLabels;
    QList<CTickLabel> yLabels;
    CAxisModel xModel;
    CAxisModel yModel;

    // The proposal: picture pixels of the two corners (first at lower left,
    // second at upper right), the values there in base units, the log flags,
    // and the unit prefix (a power of ten) the labels mostly use.
    QPoint firstCorner;
    QPoint secondCorner;
    double xAtFirst = 0, xAtSecond = 0, yAtFirst = 0, yAtSecond = 0;
    bool xLog = false, yLog = false;
    int xPrefixExponent = 0, yPrefixExponent = 0;
    // From 0 to 1: how sure the proposal is.  Proposals below the threshold
    // of ProposeCalibration are not made.
    double confidence = 0;

    bool Proposed() const { return outcome == Outcome::Proposed; }
    // The number of labels read as numbers on each axis.
    int ReadableLabels(AxisSide side) const;
};

// The least confidence a proposal needs.
constexpr double MinimumConfidence = 0.75;

CCalibrationProposal ProposeCalibration(const QImage &picture);
