#pragma once
// Tick positions and which of them carry labels, for linear and log axes.
// Positions are axis values (raw values on a log axis, not their log10).

#include <vector>

// Label lists hold at most this many entries.
constexpr int kMaxAxisLabels = 1000;

// Ticks at multiples of `step` from min to max.  A step at or below 0
// becomes 1, and one that would give more than 10000 ticks becomes a
// twentieth of the span.  zeroIndex is the index of the tick at 0 (-1 when
// there is none).  With labels on, every tick is labelled, or with
// labelEvery above 1 only those at multiples of labelEvery steps.
// Returns the step used.
double LinearTicks(double min, double max, double step, std::vector<double> &ticks, int &zeroIndex, int labelEvery,
                   bool labelsOn, std::vector<double> &labels);

// How many steps lie between two labels so that they do not crowd: for an
// axis of `length` pixels with characters `charSize` wide (X axis) or high
// (Y axis).  1, 2, 5, 10, 50, 100, ...
int LabelEvery(double span, double step, double length, double charSize, bool xAxis);

// Ticks and labels of a log axis from min to max (values at or below 0 are
// taken as 1e-6).  labelRoom is the axis length in characters.  Under one
// decade the ticks are multiples of the NiceStepX step; up to five decades
// the multiples 1 to 9 of each decade; beyond that decade powers.
void LogTicks(double labelRoom, double min, double max, std::vector<double> &ticks, std::vector<double> &labels);

// Minor grid positions: each interval of `step` from `firstTick` cut into
// `subDivisions` parts, running on past the ticks until plotMin and
// plotMax, at most 1000 on each side.  Positions on a tick are left out.
void MinorTicks(double plotMin, double plotMax, double firstTick, double step, int subDivisions,
                std::vector<double> &minor);
