#pragma once
// Where a full drawing pass puts things: the plot rectangle, the stacked Y
// axes with their ticks, the X axis band, the label area of auto-fitted and
// sliced axes, and the legend.  Computed from the target rectangle and the
// fonts, before anything is drawn.

#include "graphdata/draw/axisgrid.h"
#include "graphdata/graphrange.h"

#include <QFont>
#include <QRect>
#include <QString>
#include <vector>

class CGraphCurve;

struct CYAxisPlace
{
    int range = -1;    // index into the graph's ranges
    int side = 0;      // > 0 left of the plot, < 0 right
    QRect area;        // labels and ticks, for hit tests
    int axisX = 0;     // where the axis line stands
    QFont font;
    CAxisTicks ticks;
    double width = 0;  // room the axis needs, its title's line included
    QString title;     // with its unit; empty when none is shown
    QFont titleFont;   // the axis's font as it was before labels shrank it
};

struct CLegendEntry
{
    int curve = -1;    // -1: the graph's title
    QString text;
    QRect textRect;    // where the label goes
    QRect sampleRect;  // where the line sample goes
};

struct CLegendPlace
{
    int position = 0;  // legendPos
    QRect rect;        // all entries
    int rows = 0;
    std::vector<CLegendEntry> entries;
};

struct CGraphLayout
{
    QRect target;
    CIntRect plot;
    QFont xFont;       // X title (and the font h and cw come from)
    QFont xLabelFont;  // X labels: xFont, made smaller where they crowd
    QFont titleFont;   // legend
    double h = 10;     // character height of the axis font
    double cw = 6;     // its average character width
    bool labelsShown = true;
    bool xLabelsShown = true;
    std::vector<CYAxisPlace> yAxes;
    CAxisTicks xTicks;
    QString xTitle;
    QRect xBand;       // below the plot: X labels and title
    QRect fitArea;     // labels of the auto-fitted and sliced axes
    CLegendPlace legend;
    bool tooSmall = false; // no room for a plot
};

// The part of `target` inside the graph's axis margins (negative margins
// count as 0), each scaled by fontScale; margins that leave no room give a
// rectangle of one pixel's width or height in the middle.
QRect InsideMargins(const QRect &target, const CIntRect &margins, double fontScale);

// Computes the layout of `graph` in `target` less its axis margins;
// `fontScale` multiplies every font and the margins.  With `forcedPlot` the plot takes that rectangle and the axes are
// stacked outward from it.  The graph's axes must be sorted (SortAxes).
CGraphLayout ComputeLayout(CGraphCurve &graph, const QRect &target, const QRect *forcedPlot, double fontScale);

// The legend's entries laid out from `origin`, wrapping at `wrapRight`
// (or one entry per row when `column` is set); rows that would reach past
// origin.y + maxHeight are left out.  The graph's title, or "_________" for
// an empty one while only measuring, comes first; then each curve not on a
// sliced axis.  An empty title takes no room when drawing: its box lies
// over the first line sample.
CLegendPlace LayoutLegend(const CGraphCurve &graph, const QFont &font, QPoint origin, int wrapRight, bool column,
                          bool measuring, int maxHeight = 1 << 29);
