#pragma once
// The tick rule of the calibration grid, and the labels of its ticks.

#include <QString>
#include <QStringList>

// Rounds [low, high] outward to whole steps of 1, 2, 2.5 or 5 times a power of
// ten and returns the number of steps between the new limits.  The rule runs
// twice, so that the second pass sees the limits of the first: -3..7 becomes
// -4..8 by 2, then -5..10 by 2.5, six steps.
//
// A span that is not positive and finite gives step 0 and count 0, and the
// limits are left as they are.
int NiceScale(double &low, double &high, double &step);

// The engineering scale of a linear axis: the power of ten, a multiple of 3,
// that brings the span's values to the range 1..1000, as a factor to multiply
// the shown values with and the SI letter of the axis ("k" for a factor of
// 0.001).  Spans whose decimal exponent lies from -2 to 2, and spans beyond
// the letters p to T, keep factor 1 and no letter.
void EngineeringScale(double span, double &factor, QString &letter);

// The labels of one calibration axis.  `low` and `high` come in as the values
// at the two corners and leave as the grid limits, rounded outward by the tick
// rule (in ascending order).  On a linear axis the labels are low + i * step,
// scaled by the engineering factor and written "%3.3f" with one trailing zero
// dropped; `letter` gets the SI letter.  On a logarithmic axis they are the
// decades 10^(low + i), written "%3.2e".  The list is left empty when the
// limits come out equal, the step is zero, or a logarithmic limit is not
// positive.
void MakeGridLabels(double &low, double &high, bool logarithmic, QStringList &labels,
                    QString &letter);
