#pragma once
// Painting the legend: the graph's title, then a sample of each curve's
// line beside its label in the curve's colour.  Each label's rectangle
// becomes the curve's hit rectangle, and the title's the title box.

#include "graphdata/draw/graphlayout.h"

class QPainter;
class CGraphCurve;

void DrawLegend(QPainter &painter, CGraphCurve &graph, const CGraphLayout &layout, bool blackWhite,
                double lineScale);
