#pragma once
// Clips one line segment of a polyline to the plot rectangle.

#include "graphdata/graphrange.h"

// A point inside the plot rectangle, edges included.
inline bool InsidePlot(double x, double y, const CIntRect &r)
{
    return x >= r.left && x <= r.right && y >= r.top && y <= r.bottom;
}

// Clips the segment (x1, y1)-(x2, y2), given in device pixels, to `rect`.
// A vertical or horizontal segment is clamped to the interior (one pixel
// inside each edge) and refused when it lies wholly outside.  Any other is
// cut along the line through both ends, in double precision, first at its
// second end and then at its first: at the bottom, top, right and left
// edge in turn, where the end lies beyond that edge and the crossing lies
// strictly between the two edges across; the end then moves to the
// crossing, one pixel inside.  True, with the clipped ends rounded to whole
// pixels, when both ends finish inside.
bool ClipSegment(double x1, double y1, double x2, double y2, const CIntRect &rect, int &ox1, int &oy1, int &ox2,
                 int &oy2);

#include <QPointF>

inline bool InsidePlotF(QPointF p, const CIntRect &r)
{
    return InsidePlot(p.x(), p.y(), r);
}
