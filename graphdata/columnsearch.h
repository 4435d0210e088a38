#pragma once
// Row searches over a column, for plotting, cursors and the exporters.
// Only valid rows (validity byte 1) take part.

class CGraphColumn;

// The row after the last valid row first..last whose value is below x, or
// `first` when none is below x; never past `last`.  On a column whose valid
// rows are in ascending order pass ordered = true to bisect instead of
// walking; the rows that are not valid may lie anywhere.
int FirstAtOrAfter(const CGraphColumn *column, double x, int first, int last, bool ordered = false);

// The mirror: the row before the first valid row first..last whose value is
// above x, or `last` when none is above x; never before `first`.
int LastAtOrBefore(const CGraphColumn *column, double x, int first, int last, bool ordered = false);

// Bits of InterpolateRow's `extrapolate`.
enum : int { ExtrapolateLow = 1, ExtrapolateHigh = 2 };

// Locates x in the first `rows` rows of a strictly ordered column (either
// direction) by bisection: value(lower) + fraction * (value(upper) -
// value(lower)) = x.  Outside the table the end rows are given with
// fraction 0, unless the extrapolate bit of that end is set: then the two
// end rows with a fraction below 0 or above 1.  False without rows.
bool InterpolateRow(const CGraphColumn *column, int rows, double x, int &lowerRow, int &upperRow, double &fraction,
                    int extrapolate = 0);

// The value of `column` between lowerRow and upperRow at `fraction`.  A
// missing end row (byte 0) is replaced by the nearest row with data beyond
// it, and the fraction is then recomputed from xColumn at x (on log10 of X
// when logX is set).  False when an end row is invalid (byte 2) or no row
// with data is found.
bool ValueAt(const CGraphColumn *column, int rows, int lowerRow, int upperRow, double fraction,
             const CGraphColumn *xColumn, double x, bool logX, double &value);
