#pragma once
// The third stage: an axis model from the lines found along an axis and the
// labels read beside it.  Each readable label is placed on the line nearest
// to it; the model (linear, or logarithmic over values above zero) is the one
// that the most labels agree with, and where linear and logarithmic fit
// equally well, or too few labels agree, the axis stays undecided.

#include <QList>

struct CAxisLabel {
    double position = 0; // where the label stands along the axis, in pixels
    double value = 0;    // in base units
    int prefixExponent = 0;
};

struct CAxisModel {
    enum class Outcome { Fitted, TooFewLabels, Inconsistent, Ambiguous, Reversed };
    Outcome outcome = Outcome::TooFewLabels;
    bool log = false;
    // value (log10 of it on a logarithmic axis) = offset + slope * pixel
    double offset = 0;
    double slope = 0;
    // The labels the model agrees with, each at the position of its line.
    QList<CAxisLabel> agreeing;
    // Labels read but not on the model (an OCR misreading, a stray text).
    int disagreeing = 0;
    // The largest distance, in pixels, between an agreeing label's line and
    // the model's position of its value.
    double worstPixels = 0;

    bool Fitted() const { return outcome == Outcome::Fitted; }
    double PixelOf(double value) const;
    double ValueAt(double pixel) const;
};

// `lines` in rising order; `labels` with their read values.  Graphs have
// values rising to the right and upward: `valuesRise` says whether the values
// rise with the pixel position (X) or fall (Y); a model the other way round is
// more likely a misread sign than a reversed axis, and is refused (Reversed).
CAxisModel FitAxis(const QList<double> &lines, const QList<CAxisLabel> &labels, bool valuesRise);
