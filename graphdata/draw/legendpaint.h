#pragma once
// Painting the legend: the graph's title, then a sample of each curve's
// line beside its label in the curve's colour.  Each label's rectangle
// becomes the curve's hit rectangle, and the title's the title box.

#include "graphdata/draw/drawjobs.h"
#include "graphdata/draw/graphlayout.h"

#include <vector>

class QPainter;
class CGraphCurve;

void DrawLegend(QPainter &painter, CGraphCurve &graph, const CGraphLayout &layout, bool blackWhite,
                double lineScale);

// The labels beside auto-fitted and sliced axes: each usable curve on such
// an axis with the extent its band or slice shows.  None in the strip and
// box views, which label their own.
void DrawCurveExtentLabels(QPainter &painter, const CGraphLayout &layout, const std::vector<CCurveJob> &jobs,
                           bool blackWhite);
