#pragma once
// The one place that turns an extent of data into the range an axis shows:
// the rule for equal ends, the ten per cent margin of the view update, the
// nice step with its refined ends on a linear axis, and whole decades on a
// log axis.  The graph's own fits (SetXRange, SetYRange) and the window's
// view update and autoscale all go through here.  Values of a log axis are
// log10 units, as the ranges keep them.

struct CAxisView
{
    double min = 0, max = 0, tick = 0;
    bool IsValid() const;
};

enum class AxisKind { X, Y };

// Ends equal in their six most significant bytes count as equal.
bool NearlyEqualEnds(double a, double b);

// Equal ends are spread: on X 0 becomes -0.9 to 0.1 and v becomes 0.9 v to
// 1.1 v; on Y 0 stays (its nice step makes -1 to 1) and v becomes 0.9 v to
// 1.1 v.  Reversed ends are exchanged first.
void SpreadEqualEnds(double &low, double &high, AxisKind kind);

// Widens [low, high] by a tenth of its span at both ends.  A denormal end
// becomes 0; a result that is not a finite number restores the old pair.
// Spans too wide for a double are widened from their halves.
void WidenByTenth(double &low, double &high);

// The tick step of a linear axis with its ends refined onto multiples of it
// (NiceStepX or NiceStepY); spans too wide for a double are stepped from
// their halves and keep their ends.
double NiceStep(double &max, double &min, AxisKind kind);

// The nice step of a view whose ends stay where they are (a zoom).
double StepKeepingEnds(double low, double high, AxisKind kind);

// A log axis over at least one decade ends on whole decades round the data
// (1..1e7 stays 1..1e7, never 1e8); a shorter one keeps its ends.
void LogDecadeEnds(double &low, double &high);

// The fitted view of a data extent (SetXRange and SetYRange from data):
// equal ends spread, then on a log axis whole decades with step 1, on a
// linear one the nice step and its ends.
CAxisView FittedView(double low, double high, AxisKind kind, bool log);

// The view update's range for data that left the view (and autoscale):
// equal ends spread, the ten per cent margin, then step 1 on a log axis or
// the nice step on a linear one.  Denormal data whose margin would make
// both ends 0 keep their own ends.
CAxisView MarginView(double low, double high, AxisKind kind, bool log);
