#pragma once
// The curves stage of a drawing pass: each usable job as bars, single
// pixels or its cached polyline with symbols and arrow, the highlighted
// curve last, over the others.  On an incremental pass only the rows added
// since the last one are joined on to each curve's cache.

#include "graphdata/draw/drawjobs.h"

#include <vector>

struct CDrawPass;

// Returns the points and symbols given to the painter.
int DrawCurves(CDrawPass &pass, std::vector<CCurveJob> &jobs);

// True when every usable job can be drawn over the last pass's picture:
// no bars, no special view, and symbols whose cache has the same mapping.
bool CanDrawIncrementally(const CDrawPass &pass, const std::vector<CCurveJob> &jobs);
