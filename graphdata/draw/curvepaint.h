#pragma once
// Painting one curve: its cached polyline with symbols and arrow, single
// pixels (symbol 10), and bars.

#include "graphdata/draw/polylinebuild.h"

#include <QColor>
#include <QPen>

class QPainter;

// Symbol shapes: 1 circle, 2 square, 3 triangle, 4 star; 10 single pixels.
enum : int { SymbolNone = 0, SymbolCircle = 1, SymbolSquare = 2, SymbolTriangle = 3, SymbolStar = 4,
             SymbolPixel = 10 };

// One symbol around `centre`, filled in `color`, of size s (1 on screen).
void DrawSymbol(QPainter &painter, QPoint centre, int symbol, double s, const QColor &color);

// The runs of the cache with `pen` (none when the pen is Qt::NoPen), then
// its symbols, then the arrow, whose head is `arrowLength` pixels long.
// With fromPoint and fromSymbol only the part from those indices on is
// drawn (the line from the point before fromPoint).  Returns the number of
// points given to the painter.
int DrawPolylinePixels(QPainter &painter, const CPolylinePixels &cache, const QPen &pen, int symbol, double s,
                       const QColor &color, double arrowLength, int fromPoint = 0, int fromSymbol = 0);

// An arrow head at `to`, pointing away from `from`, with sides at `angle`
// degrees to the shaft; filled when `fill` is set.
void DrawArrowHead(QPainter &painter, QPointF from, QPointF to, double length, double angle, bool fill,
                   const QColor &color);

// Symbol 10: every row first..last with X and Y valid that maps into the
// plot becomes one pixel, shifted right by `shift` pixels.  Returns the
// pixels set.
int DrawCurvePixels(QPainter &painter, const CCurveArrays &arrays, int first, int last,
                    const CPixelMapping &mapping, int shift, const QColor &color);

// Bars of rows first..last: from x - halfWidth + shift to x + halfWidth +
// shift (values), from the zero line, or the plot bottom when 0 is below
// the view, to the value; each clipped to the plot, filled in `color` with
// a one-pixel outline.  Returns the bars drawn.
int DrawCurveBars(QPainter &painter, const CCurveArrays &arrays, int first, int last, const CPixelMapping &mapping,
                  double halfWidth, double shift, const QColor &color);

// Half width of the bars of one of `barCurves` bar curves over `rows`
// shown rows spanning `span` in X (1 when the span is 0), and the shift of
// bar curve `slot` (0-based) of them: the plot spacing is 11/5 of the half
// width, centred on the row's X.
double BarHalfWidth(int barCurves, int rows, double span);
double BarShift(int barCurves, int slot, double halfWidth);
