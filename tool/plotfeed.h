#pragma once
// How the digitiser feeds its plot pane.  Each feed starts from an empty
// graph: the columns and curves of the last feed are dropped, the new
// points go in, the axes take the log flags and the limits, and the plot is
// drawn again.  One traced curve goes in as a two-column data set (X in
// column 0, Y in column 1); the curves of the template record, which have
// X values of their own, go in as curves with their own columns.

#include "support/myarrays.h"

#include <QList>
#include <QString>

class CGraphCurve;
class CGraphWnd;

struct CPlotAxes {
    QString xName;
    QString yName;
    bool xLog = false;
    bool yLog = false;
    // The limits as the axes take them: log10 of the values on a logarithmic
    // axis.  A reversed pair is passed on as it is.
    double xLow = 0.0, xHigh = 0.0, yLow = 0.0, yHigh = 0.0;
};

struct CPlotCurve {
    CMyDoubleArray pairs; // x0, y0, x1, y1, ... as the values stand (not log10)
    int count = 0;
};

// An empty graph in the plot: no columns, no curves.  The axes stay.
void ClearPlot(CGraphWnd &plot);

// One curve from `count` pairs: column 0 named xName, column 1 named yName,
// one curve of column 1 drawn with a pen of width 3.  No pairs: no curve.
void PlotOneCurve(CGraphWnd &plot, const CPlotAxes &axes, const double *pairs, int count);

// Curves with their own X and Y columns, unnamed, each with a pen of width
// 3; curves without points are left out.
void PlotCurves(CGraphWnd &plot, const CPlotAxes &axes, const QList<CPlotCurve> &curves);

// A table: column 0 is X, each further column a curve of its own.
void PlotColumns(CGraphWnd &plot, const CPlotAxes &axes, const CMyDoubleArray2D &values);

// The log flags of X and of the first Y axis, the view limits, and a redraw.
void SetPlotAxes(CGraphWnd &plot, const CPlotAxes &axes);

// The limits of the plotted data, as values (not log10): X from the data
// set's X column (or, for a curve with its own X, from that column), Y from
// the first curve's Y column, whichever kind of curve it is.  A limit that
// cannot be found is 0.  False when the graph has no curve.
bool PlotDataLimits(const CGraphCurve &graph, double &xLow, double &xHigh, double &yLow, double &yHigh);
