#pragma once
// The oscilloscope form of the drawing pass, and the animation cursor with
// its slider, which any graph may show.
//
// An oscilloscope graph (its data in the scope form) shows a screen of 10 by
// 8 divisions.  X starts at the time of the first row shown and spans
// 10 * secsPerDiv; all rows are shown, or in roll mode only the last
// rollLength, so that the trace runs from right to left as rows come in.
// Each channel has its own scale (value per division) and offset:
//   px = plotLeft + floor((t - t0) * plotWidth / (secsPerDiv * 10))
//   py = plotMiddle - floor((y + offset) * plotHeight / (scale * 8))
// A channel in state 2 is drawn flat, as if all its values were 0.  The
// trigger marks stand at the plot's edges: a mark on the left at each
// channel's zero line, one at the top where the sweep starts (not in roll
// mode), one on the right at the trigger level of the trigger channel.

#include "graphdata/draw/drawjobs.h"
#include "graphdata/graphrange.h"
#include "graphdata/scopegraph.h"

#include <QRect>
#include <vector>

class QPainter;
class CGraphCurve;
struct CDrawPass;
struct CGraphLayout;

// The rows an oscilloscope graph of `rowCount` rows shows: all, or in roll
// mode the last rollLength (all when that is 0).
void ScopeRowSpan(const CGraphCurve &graph, int rowCount, int &first, int &last);

// Before the layout of a full pass over an oscilloscope graph: the X view
// from the first shown row's time over 10 divisions, the first Y axis over
// the 8 divisions (-4 to 4, a tick each).  The caller holds the data lock.
// False, with the views unchanged, when secsPerDiv is not positive or no
// shown row has a time.
bool PrepareScopeView(CGraphCurve &graph, int rowCount);

// The mapping and rows of a curve of an oscilloscope graph.
void MapScopeJob(const CDrawPass &pass, CCurveJob &job);

// Channels in state 2 get a column of zeros (rows valid where theirs are).
void FlattenScopeChannels(const CDrawPass &pass, std::vector<CCurveJob> &jobs);

void DrawScopeMarks(QPainter &painter, const CGraphCurve &graph, const std::vector<CCurveJob> &jobs,
                    const CIntRect &plot, bool blackWhite);

// The current row of the animation cursor: the last row when the slider
// is held at the end, else the graph's m_animationRow within 0..rows-1;
// -1 when the cursor is off.
int AnimationRow(const CGraphCurve &graph, int rowCount);

// The cursor (a line at the X of the current row) and, with the slider
// flag, the slider's track and knob; the track is kept in m_sliderRect.
void DrawAnimation(QPainter &painter, CGraphCurve &graph, const CDrawPass &pass, const std::vector<CCurveJob> &jobs);

// The slider's row for a pixel X on its track (the window's drag).
int SliderRowAt(const CGraphCurve &graph, int x, int rowCount);
