#pragma once
// A generated datasheet graph: a white picture with a framed plot area, grid,
// tick labels and one curve drawn as a polyline through whole-pixel vertices,
// so that a test knows exactly which values lie under which pixel.

#include <QImage>
#include <QList>
#include <QPoint>
#include <cmath>
#include <initializer_list>

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

// A log-log datasheet graph: X from 100 mV to 100 V over three decades, Y
// from 1 uA to 10 mA over four, with decade and minor grid lines, tick
// labels with unit prefixes, and curves drawn antialiased through finely
// sampled points.  Values are in the units the prefixes give: X in mV, Y
// in uA.
struct CLogLogPicture {
    QImage image;
    QPoint lowerLeft{60, 400};
    QPoint upperRight{600, 40};
    double xLow = 100, xHigh = 1e5, yLow = 1, yHigh = 1e4;

    // The picture position of a value, unrounded.
    double PixelX(double x) const;
    double PixelY(double y) const;
};

CLogLogPicture MakeLogLogPicture(std::initializer_list<double (*)(double)> curves);

// ID = 20 uA * (VDS / 1 V)^1.1, in uA over mV.
double IdOfVds(double mV);

// A datasheet graph for automatic tracing: grid with minor lines, labels, a
// black frame, and three curves drawn antialiased with flat caps, 1.6 pixels
// wide: a blue rising one, a red falling one that crosses it, and a green
// dashed one.  With a JPEG quality the picture goes through JPEG and back.
struct CCurveFamilyPicture {
    struct Curve {
        QColor colour;
        bool dashed = false;
        // The curve as drawn, in picture positions: y of x over [xa, xb],
        // and the X extent of its ink (a dashed curve may end in a space).
        double xa = 0, xb = 0;
        double inkStart = 0, inkEnd = 0;
        double (*shape)(double u) = nullptr; // u in 0..1 across the area, gives 0..1 up
        QPointF seed; // a spot on the curve's ink near its middle
    };
    QImage image;
    QRect area; // the plot area, inside the frame
    QList<Curve> curves;

    double Y(const Curve &c, double x) const;
    // The distance of a picture position from the curve as drawn.
    double Distance(const Curve &c, QPointF p) const;
};

// The curves' inks: three colours, or black, grey and a dashed dark grey,
// which share their hue with the frame, the labels and the grid lines.
enum class CurveInks { Coloured, GreyAndBlack };

CCurveFamilyPicture MakeCurveFamilyPicture(QSize size, int jpegQuality = 0, CurveInks inks = CurveInks::Coloured);
