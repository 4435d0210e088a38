#pragma once
// Painting the grid, the frame and the axes of a laid-out graph, and the
// labels of auto-fitted and sliced axes.

#include "graphdata/draw/graphlayout.h"

#include <QColor>
#include <algorithm>
#include <cmath>
#include <vector>

class QPainter;
class CGraphCurve;

// Grid lines of the X axis and of the Y axes that have a grid.  Nothing when
// the graph's grid switch (m_gridOn, shown inverted in the options) is set.
void DrawGrid(QPainter &painter, const CGraphCurve &graph, const CGraphLayout &layout, bool blackWhite);

// The plot's frame, tick marks, labels and the X axis title.
void DrawAxes(QPainter &painter, const CGraphCurve &graph, const CGraphLayout &layout, bool blackWhite);

// One curve of an auto-fitted (kind 1) or sliced (kind 2) axis, with the
// extent its band or slice shows.
struct CFitLabel
{
    int curve = -1;
    bool slice = false;
    QRect band;        // the slice, for kind 2
    double min = 0, max = 0;
    QColor color;
    QString text;
};

// Kind 1 labels run down the label area, a row of (1.15 h) each; kind 2
// labels stand beside their slice, clipped to it.
void DrawFitLabels(QPainter &painter, const CGraphLayout &layout, const std::vector<CFitLabel> &labels);

// How far from its axis's start a pixel may lie: far outside any window,
// yet room enough for the window's coordinates to be added to it.
constexpr double kFarPixels = 1 << 24;

// The whole pixels of an offset from the axis's start.  An axis whose span
// overflows or vanishes gives offsets of infinity or no number: these go to
// the far limit (no number to the low side), never to an integer that a
// double outside its range would make.
inline int PixelOffset(double offset)
{
    if (std::isnan(offset))
        return -int(kFarPixels);
    return int(std::floor(std::clamp(offset, -kFarPixels, kFarPixels)));
}

// Pixel of an axis value: the mapping of the plotting pipeline.
inline int MapX(double v, double vmin, double scale, int left)
{
    return left + PixelOffset((v - vmin) * scale);
}
inline int MapY(double v, double vmin, double scale, int bottom)
{
    return bottom - PixelOffset((v - vmin) * scale);
}
