#pragma once
// Axis steps: the "nice" tick step of a range and the refined ends that go
// with it, and the extra room that bar curves need.

// The multiple of `step` at or below v: a negative value closer to 0 than
// one step gives -step, a multiple stays as it is, and anything else moves
// down to the next multiple.
double SnapDown(double v, double step);

// X axis rules.  Returns the step (0 for an empty or reversed range) and
// moves min down and max up onto multiples of it.  Two refinement passes
// at most.
double NiceStepX(double &max, double &min);

// Y axis rules: equal ends are widened first (0 and 0 give -1 to 1 with
// step 1, others by 20% of |max| each way), reversed ends are exchanged,
// other mantissa thresholds apply, and max is rounded up by exact
// remainder.  A non-finite result keeps the old maximum.
double NiceStepY(double &max, double &min);

// Step for log axes whose span is under one decade, aiming at about
// minTicks ticks (5 when below 1).
double NiceStepLog(double max, double min, int minTicks);

// Widens [min, max] so that `barCount` bar curves over `rows` rows fit, and
// gives the half width w of a bar.  Returns 0 (w = 1, ends unchanged) for a
// span of 0 or no bars.
int WidenForBars(int barCount, int rows, double &max, double &min, double &w);

// The tick step of a date axis (unit one day) for a span in days.
double DateAxisStep(double spanDays);
