#pragma once
// The drawing pass of a graph: one routine that turns a CGraphCurve into
// pixels on a painter, for the screen, the printer, an overview and images
// in tests.  It lays out the plot, draws grid and axes, turns each curve's
// rows into a cached polyline of a few points per pixel column and draws
// it with its symbols, then the legend, the drawing objects and whatever
// the window puts on top.
//
// Incremental drawing: when rows were only added since the last pass (same
// generation, same target), a pass without DrawFull draws just the new rows
// over the picture left by the last one.
//
// The data lock is held only to take the row count, the generation and
// references to the columns; the pixel loops run without it.

#include "graphdata/draw/graphlayout.h"

#include <QRect>
#include <functional>
#include <optional>

class QPainter;
class CGraphCurve;

// Flags of a pass.
enum : unsigned {
    DrawFull = 0x1,            // draw everything, not only rows added since the last pass
    DrawNoTextObjects = 0x100, // leave the drawing objects out
    DrawOverview = 0x1000,     // the small overview: all rows, each axis over its full range
};

// Texts of the pass.
enum : int {
    TextScopeNoCurves = 43093, // an oscilloscope graph without curves
    TextEmptyPlot = 43240,     // a graph without curves
    TextNoData = 43601,        // the data set says it has no data and gives no text
};

struct CDrawRequest
{
    unsigned flags = DrawFull;
    QRect target;
    std::optional<QRect> forcedPlot;
    double fontScale = 1;
    double lineScale = 1;
    // The painter's device is a printer: fonts and lines scale with its
    // resolution against 96 dots per inch.
    bool printer = false;
    // The window's own picture: drawing objects and the overlay go on it.
    bool mainSurface = true;
    // Called last on the main surface, for the window's cursors.
    std::function<void(QPainter &, CGraphCurve &, const CGraphLayout &)> overlay;
};

struct CDrawResult
{
    enum Kind { Nothing, Full, Incremental, Message };
    Kind kind = Nothing;
    int points = 0;           // points and symbols given to the painter
    bool invalidRows = false; // a drawn column holds invalid rows
};

CDrawResult DrawGraph(CGraphCurve &graph, QPainter &painter, const CDrawRequest &request);

// The layout of the last full pass is kept with the graph only as the
// rectangles it stores (plot, X band, title box, axis areas); this gives
// the whole of it again for the same target.
CGraphLayout LayoutFor(CGraphCurve &graph, const QRect &target, double fontScale = 1);
