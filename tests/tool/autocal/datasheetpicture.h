#pragma once
// Generated datasheet graphs for the calibration check: a framed plot with a
// full grid or tick marks only, printed tick labels (plain, with unit
// prefixes, or decades with a raised exponent), axis titles, curves across
// the grid, and optionally antialiasing, a small rotation and JPEG
// compression.  Every drawn line is known with its value and its pixel.

#include <QImage>
#include <QList>
#include <QPointF>
#include <QString>
#include <QTransform>

enum class LabelStyle { Plain, Prefixed, Superscript, EForm };

struct CAxisDraw {
    bool log = false;
    // Linear: first value, step, number of steps.  Logarithmic: the power of
    // ten of the first decade and the number of decades.
    double first = 0;
    double step = 1;
    int steps = 5;
    LabelStyle style = LabelStyle::Plain;
    // Prefixed labels print micro as the sign "µ" rather than as "u".
    bool microSign = false;
};

struct CDatasheetLayout {
    QSize size{760, 540};
    CAxisDraw x;
    CAxisDraw y;
    QString font = QStringLiteral("DejaVu Sans");
    int fontPixels = 12;
    bool bold = false;
    bool fullGrid = true;
    bool antialias = true;
    int jpegQuality = 0; // 0: no JPEG
    double rotationDegrees = 0;
    int curves = 2;
    unsigned seed = 1;
};

struct CDatasheetLine {
    double pixel = 0; // column (X) or row (Y) of the line's centre
    double value = 0; // in base units
};

struct CDatasheetPicture {
    QImage image;
    QList<CDatasheetLine> xLines; // every drawn grid line or tick, with its value
    QList<CDatasheetLine> yLines;
    // Maps an unrotated pixel position to the picture (the rotation).
    QTransform rotation;
};

CDatasheetPicture MakeDatasheetPicture(const CDatasheetLayout &layout);
