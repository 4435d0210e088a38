#pragma once
// The drawing objects of a graph (rectangles, lines and texts placed in
// axis values) over the plot: rectangles first, then lines, then texts, so
// that a text is never hidden under a filled rectangle.

#include "graphdata/graphrange.h"
#include "graphdata/textnline.h"

class QPainter;
class CGraphCurve;

// The frame of the objects on Y axis `axis` (the first when there is no
// such axis) over `plot`, from the graph's present views.
CObjectFrame ObjectFrameOf(const CGraphCurve &graph, const CIntRect &plot, int axis);

// `printing` is passed to each object: 0 screen, 2 black and white.
void DrawObjects(QPainter &painter, CGraphCurve &graph, const CIntRect &plot, double fontScale, int printing);
