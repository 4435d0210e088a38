#pragma once
// The even grid a spectrum is computed on, a curve's values on that grid,
// and the frequency axis of the result.  All return 1 on success and 0 on
// failure, and make their output columns themselves.

#include "graphdata/graphcolumn.h"

// Grids of more points than this are thinned: the count is halved until it
// fits, and the grid is marked with CGraphColumn::AttrThinned.
constexpr int kMaxGridPoints = 20000000;

// An even grid from `start` to `end` over the X column `x` (its first
// `rows` rows): first and last are the rows of x that cover the span.  The
// step is the column's sampling step, or its smallest step, or the mean
// spacing of the rows in the span, whichever is smallest (a step below a
// hundred-thousandth of the mean is taken as a thousandth of it).  Fails
// with fewer than 2 rows, rows beyond the column, start not below end, an
// invalid row before or in the span, or fewer than 2 valid rows in it.
// Ensures the column's order scan has run (it sets minStep).
int ResampleGrid(CGraphColumn *x, int rows, double start, double end, int &first, int &last,
                 CGraphColumnPtr &grid);

// `y` over `x` (first `rows` rows) on the points of `grid`, by straight
// lines between the rows where both are present; rows missing in either
// are passed over, values before the first or after the last such row
// follow the nearest line.  Fails at any invalid row, or with fewer than 2
// usable rows.  The result has the grid's length, all valid, and y's name.
// When given, invalidRow receives the invalid row that stopped it, or -1.
int ResampleOnto(const CGraphColumn *x, const CGraphColumn *y, int rows, const CGraphColumn *grid,
                 CGraphColumnPtr &column, int *invalidRow = nullptr);

// The M = (N - 1) / 2 + 1 bins of a transform of length N: k / (x[last] -
// x[first]), all valid, kind KindSpectrum, named "Frequency".  Fails for a
// zero time span, rows outside x, or N below 1.
int FrequencyColumn(int first, int last, int n, const CGraphColumn *x, CGraphColumnPtr &frequency);

// The number of bins of a transform of length n.
inline int SpectrumBins(int n) { return (n - 1) / 2 + 1; }
