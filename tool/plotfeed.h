#pragma once
// What the digitiser gives its plot pane each time the plot is fed: curves of
// (x, y) pairs, the axis names, the log flags and the axis limits.

#include "support/myarrays.h"

#include <QList>
#include <QString>

struct CPlotCurve {
    QString name;
    CMyDoubleArray pairs; // x0, y0, x1, y1, ... as the values stand (not log10)
    int count = 0;
};

struct CPlotFeed {
    QString xName;
    QString yName;
    QList<CPlotCurve> curves;
    bool xLog = false;
    bool yLog = false;
    // The limits as set on the axes: log10 of the values on a logarithmic
    // axis, in either order.
    double xLow = 0.0, xHigh = 0.0, yLow = 0.0, yHigh = 0.0;

    // The X range of all curves and the Y range of the first, as values.
    // False when there is no point.
    bool DataLimits(double &xLow, double &xHigh, double &yLow, double &yHigh) const;
};
