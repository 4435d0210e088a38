#pragma once
// Turns rows of an X and a Y column into the points of a polyline cache,
// with at most a handful of points per pixel column: successive rows that
// fall into one pixel column collapse into the vertical span between their
// lowest and highest point.

#include "graphdata/draw/polylinecache.h"

#include <cstdint>

// The arrays of one curve: values and validity bytes of X and Y, and how
// many rows both hold.
struct CCurveArrays
{
    const double *xValues = nullptr;
    const std::uint8_t *xValid = nullptr;
    const double *yValues = nullptr;
    const std::uint8_t *yValid = nullptr;
    int rows = 0;
};

// Fills `cache` from rows first..last (last is clipped to rows - 1).
//  - The walk starts at `first` when X and Y are both valid there;
//    otherwise it steps back to the nearest earlier row where they are
//    (not across an invalid row), so that the line enters from the left,
//    and failing that it moves forward to the first such row.
//  - A row with a missing value (byte 0) is skipped without breaking the
//    line; when it is the last of the span and more rows exist, the span
//    grows by one row.  A row with an invalid value (byte 2) ends the run.
//  - Each segment is clipped to the plot; a run of one point is dropped.
//  - With `symbols`, one position per pixel column is kept (two where the
//    column holds a vertical span), for points inside the plot only.
//  - With `arrow`, the last two distinct points are kept for the arrow.
// Returns the number of points.
int BuildPolyline(CPolylinePixels &cache, const CCurveArrays &arrays, int first, int last,
                  const CPixelMapping &mapping, int thickness, bool symbols, bool arrow);

// Carries the walk that made `cache` on over the rows after it, up to
// `last`, with the cache's own mapping and settings; the result equals a
// walk over all rows.  The cost is in proportion to the new rows.  Returns
// the index of the first point that changed (points before it stand as
// they were), or -1 when the cache cannot be carried on: then nothing
// changed.  symbolsFrom receives the first symbol position that changed.
int ResumePolyline(CPolylinePixels &cache, const CCurveArrays &arrays, int last, bool arrow, int &symbolsFrom);
