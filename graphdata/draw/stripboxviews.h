#pragma once
// The two views that replace the plain plot: one strip per curve, and the
// curves as flat ribbons in a box seen at an angle.

#include "graphdata/draw/drawjobs.h"
#include "graphdata/draw/graphlayout.h"

#include <vector>

class QPainter;
class CGraphCurve;

// Strip view: the plot cut into as many equal horizontal strips as there
// are curves, each over its curve's extent widened by a tenth of its span
// on both sides (span 1 when it is 0), with its own frame, grid and
// labels.  Sets each job's mapping.
void LayoutStrips(const CGraphLayout &layout, std::vector<CCurveJob> &jobs);
void DrawStripFrames(QPainter &painter, const CGraphCurve &graph, const CGraphLayout &layout,
                     const std::vector<CCurveJob> &jobs, bool blackWhite);

// Three-dimensional view: the box, its floor and back wall with grid and
// labels, then each curve as a ribbon of quadrilaterals, the farthest first.
// Returns the quadrilaterals drawn.
int DrawThreeD(QPainter &painter, const CGraphCurve &graph, const CGraphLayout &layout,
               std::vector<CCurveJob> &jobs, bool blackWhite);
