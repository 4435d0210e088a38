#pragma once
// The view operations of a graph window that need no window: mapping
// pixels to values and back, the view update with its ten per cent margin,
// autoscale, zoom by a factor, zoom round a point and the wheel scroll.
// Values on a log axis are in log10 units, as the ranges keep them.

#include "graphdata/axisrange.h"
#include "graphdata/graphcurve.h"

#include <QPoint>
#include <QRect>
#include <cmath>
#include <vector>

// The mapping of one axis on the plot of the last full draw:
// pixel = origin + floor((v - min) * scale) for X, origin - floor(..) for Y.
struct CAxisMap
{
    double min = 0;
    double scale = 0;
    int origin = 0;
    bool vertical = false;

    bool IsValid() const { return scale > 0 && std::isfinite(scale); }
    double ToValue(double pixel) const { return vertical ? min + (origin - pixel) / scale : min + (pixel - origin) / scale; }
};

CAxisMap XAxisMap(const CGraphCurve &graph);
CAxisMap YAxisMap(const CGraphCurve &graph, int axis);

// The ranges a window can go back to: the X view and each Y view with
// their ticks.
struct CViewRanges
{
    double xMin = 0, xMax = 0, xTick = 0;
    struct Y
    {
        double min = 0, max = 0, tick = 0;
    };
    std::vector<Y> y;
};
CViewRanges SaveView(const CGraphCurve &graph);
void RestoreView(CGraphCurve &graph, const CViewRanges &view);

// Step counts of the axes (X first, then each Y axis), floor(span / tick),
// as the view update leaves them; the wheel zoom compares against them.
using CStepCounts = std::vector<double>;

// The view update: each axis whose data reach beyond its view, or whose
// view is not valid, is set to the data's extent widened by a tenth, with
// a step of 1 on a log axis or the nice step otherwise.  Returns the step
// counts.
CStepCounts UpdateView(CGraphCurve &graph);

// Autoscale: X stays; every Y axis takes the extent of the points in the
// shown X range, widened by a tenth.
void Autoscale(CGraphCurve &graph);

// Both axes (every Y axis) shrink or grow round their middle by `factor`.
void ZoomBy(CGraphCurve &graph, double factor);

// Zoom by `factor` round the point under `pixel`: X round its value there,
// every Y axis round its own value at the same height.  The X tick doubles
// when the step count grows above twice the stored one and halves when it
// falls below it; a Y tick doubles above twice and halves below half.
void ZoomAround(CGraphCurve &graph, QPoint pixel, double factor, const CStepCounts &stored);

// Sets the X view (with changeX) and every Y view (with changeY) to the
// values under a pixel rectangle.
void ZoomToPixels(CGraphCurve &graph, const QRect &pixels, bool changeX, bool changeY);

// Moves the views by a pixel distance, so that the picture follows it: X
// with moveX, the Y axes with moveY; onlyAxis -1 is the X axis alone, 0.. one
// Y axis alone, -2 all of them.
void PanByPixels(CGraphCurve &graph, QPoint delta, bool moveX, bool moveY, int onlyAxis = -2);
