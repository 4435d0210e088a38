#pragma once
// The first stage of reading a graph off its picture: the picture as a map of
// darkness, its small rotation, the plot frame, and the grid lines (or the
// tick marks where the graph has no full grid) along each axis.

#include <QImage>
#include <QList>
#include <QRectF>
#include <QTransform>

#include <cstdint>
#include <vector>

// 255 minus the luminance of each pixel: ink is high, paper near zero.
struct CDarkness {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> d;

    std::uint8_t At(int x, int y) const { return d[std::size_t(y) * std::size_t(width) + std::size_t(x)]; }
};

CDarkness DarknessOf(const QImage &picture);

// The angle, in degrees, by which the picture's lines are turned clockwise
// (a horizontal line runs down to the right for a positive angle), searched
// within +-maxDegrees.  Zero when the picture holds no line to measure.
double FindRotationDegrees(const CDarkness &dark, double maxDegrees = 1.5);

// The picture turned back by `degrees` about its centre, at its own size;
// what the turn uncovers is white.  `toStraight` maps a pixel position of the
// picture (pixel centres at whole numbers) to its position in the result.
QImage StraightenPicture(const QImage &picture, double degrees, QTransform *toStraight);
// Pixel position (centres at whole numbers) through a transform of the
// continuous plane, as StraightenPicture gives it.
QPointF MapPixel(const QTransform &t, QPointF pixel);

struct CGridLines {
    bool frameFound = false;
    // The frame's edges, at the centres of its lines.
    double left = 0, top = 0, right = 0, bottom = 0;
    // Grid line or tick positions along X (vertical lines) and Y (horizontal
    // lines), the frame's edges included, in rising order.
    QList<double> xLines;
    QList<double> yLines;
    // The lines that run across the whole frame (a full grid) rather than
    // tick marks at its edge.
    int fullXLines = 0;
    int fullYLines = 0;

    QRectF Frame() const { return QRectF(QPointF(left, top), QPointF(right, bottom)); }
};

// Finds the frame (the rectangle of the four longest lines that meet) and the
// lines within it, on a picture whose lines run straight.
CGridLines FindGridLines(const CDarkness &dark);
