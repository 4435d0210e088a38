#pragma once
// Whole-column scans: extents, order, and the range of a row span.
// All of them look at valid rows only (validity byte 1).

#include <cstdint>

class CGraphColumn;

// Sets minValue and maxValue from the valid rows among the first `rows`
// (0 and 0 when there is none), clears orderFlags and stores hasInvalid.
void RecomputeExtents(CGraphColumn *column, int rows);

// Walks the valid rows first..last and fills orderFlags, minStep, evenStep
// and hasInvalid; returns orderFlags.
//   - Direction (1 ascending, 2 descending) is judged only until the first
//     pair of equal neighbours; a change of direction gives 16 instead.
//   - Equal neighbours add 4.
//   - Bit 8 (even step) stays until a nonzero difference smaller in size
//     than the first one turns up.  A later, larger gap does not clear it:
//     what later code needs is the smallest step, kept in minStep (signed).
// Fewer than two valid rows count as ascending with an even step.
std::uint32_t FindOrder(CGraphColumn *column, int first, int last);

// The extent of the valid rows first..last (last is clipped to count - 1).
// Returns 0 when there is no valid row; hasInvalid tells whether a row of
// the span is not valid.
int RangeOf(const CGraphColumn *column, int first, int last, double &min, double &max, bool &hasInvalid);
