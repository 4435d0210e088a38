#pragma once
// A generated datasheet graph: a white picture with a framed plot area, grid,
// tick labels and one curve drawn as a polyline through whole-pixel vertices,
// so that a test knows exactly which values lie under which pixel.

#include <QImage>
#include <QList>
#include <QPoint>
#include <cmath>

struct CGraphPicture {
    QImage image;
    // The plot area: value (xLow, yLow) at pixel lowerLeft, (xHigh, yHigh) at
    // upperRight.  A logarithmic axis runs in decades.
    QPoint lowerLeft;
    QPoint upperRight;
    double xLow = 0, xHigh = 0, yLow = 0, yHigh = 0;
    bool xLog = false, yLog = false;
    // The vertices of the drawn curve, in picture pixels.
    QList<QPoint> vertices;

    double XAt(double px) const;
    double YAt(double py) const;
};

// Draws y = f(x) at the given X values, each vertex rounded to a whole pixel.
CGraphPicture MakeGraphPicture(bool yLog, double (*f)(double), const QList<double> &xs);
