#pragma once
// What the canvas holds while a picture is digitised: the mode, the two
// calibration corners with the axis values, the grid, and the traced points;
// the mapping between picture pixels and graph values; the click rule.

#include "support/myarrays.h"
#include "tool/capture/capturemode.h"

#include <QString>
#include <QStringList>
#include <cstdint>

// The calibration.  Corners are canvas client pixels; the values are as the
// user entered them (xAtFirst from field 1052, xAtSecond 1056, yAtFirst 1063,
// yAtSecond 1060).  The scale runs from the first corner to the second, so a
// first corner right of the second simply gives a falling scale.
struct CaptureCalibration {
    // Corners are as precise as points: one placed through the magnifier
    // keeps its eighths, and a plain click gives the centre of its pixel as
    // a plain point click does, so that corners and points are measured
    // alike (whole-pixel corners put every value off by up to half a pixel).
    // Canvas position p lies in pixel floor(p); pixel i's centre is i + 0.5.
    double firstCornerX = 0;
    double firstCornerY = 0;
    double secondCornerX = 0;
    double secondCornerY = 0;
    double xAtFirst = 0.0;
    double yAtFirst = 0.0;
    double xAtSecond = 0.0;
    double yAtSecond = 0.0;
    bool xLog = false;
    bool yLog = false;
    // The axis values after the tick rule rounded them outward (ascending).
    double xGridLow = 0.0;
    double yGridLow = 0.0;
    double xGridHigh = 0.0;
    double yGridHigh = 0.0;
    // One label a tick; the SI letter of a scaled linear axis ("k", "m", ...).
    QStringList xTickLabels;
    QStringList yTickLabels;
    QString xScaleLetter;
    QString yScaleLetter;
    // Both set by a paste; going Back from ModePicturePlaced clears
    // pictureShown.  Grid lines are drawn only when one of them is clear.
    bool pictureLoaded = false;
    bool pictureShown = false;
    // Offset of the picture's corner: picture pixel = canvas pixel + pan.
    std::int32_t panX = 0;
    std::int32_t panY = 0;

    // A rectangle is set when the corners differ on both axes.
    bool HasRectangle() const
    {
        return secondCornerX != firstCornerX && secondCornerY != firstCornerY;
    }
};

// The canvas's copy of the traced points: x, y doubles in graph values.  The
// block may be larger than 2 * count.
struct TracedPoints {
    CMyDoubleArray pairs;
    std::int32_t count = 0;
};

// Graph values to canvas pixels, for drawing the grid and the traced curve.
// Logarithmic axes work in decades; valuePerPixel is graph units (or decades)
// per pixel.  Nothing is drawn unless `drawable`.
struct CPixelMapping {
    double lowX = 0, highX = 0, gridLowX = 0, gridHighX = 0, valuePerPixelX = 0;
    double lowY = 0, highY = 0, gridLowY = 0, gridHighY = 0, valuePerPixelY = 0;
    double firstCornerX = 0, firstCornerY = 0;
    bool xLog = false, yLog = false;
    bool drawable = false;

    // The pixel of a value, unrounded.  On a logarithmic axis the value is
    // taken as log10 without a test, so zero or less gives no finite pixel.
    double PixelX(double x) const;
    double PixelY(double y) const;
};

// Rounds half away from zero: +0.5 on a non-negative value, -0.5 on a
// negative one, then truncated.
double RoundPixel(double v);
// The same as a whole pixel for a painter; what lies beyond the int range
// (and NaN) is pinned to its ends (NaN to 0).
int RoundPixelToInt(double v);

// A corner rectangle in canvas pixels, first corner at lower left.
struct CCornerRect {
    std::int32_t firstX = 0, firstY = 0, secondX = 0, secondY = 0;
};

// The rectangle used when none is set, from the canvas's client size and the
// width of the text "10000.00" in the canvas's font: the left margin makes room
// for a Y label, and the others are a twentieth of the size.
CCornerRect DefaultRectangle(int width, int height, int labelTextWidth);

// What a click on the picture leads to (see CCaptureModel::SetFirstOrSecondCorner).
struct CClickResult {
    enum Reaction {
        None,           // the dialog ignores the click
        FocusXAtSecond, // mode 4 reached: the keyboard goes to field 1056
        AppendPoint,    // modes 6 and 16: (x, y) becomes a point of the trace
    };
    Reaction reaction = None;
    double x = 0.0; // the mapped values, or the pixel itself where mapping failed
    double y = 0.0; // or the click was not a trace click
    bool repaint = false;
};

class CCaptureModel
{
public:
    CaptureMode m_mode = ModeIdle;
    CaptureCalibration m_calibration;
    TracedPoints m_points;

    // The value under a picture pixel (fractions come from the magnifier).
    // Y is written whenever it can be mapped; the result is true only when X
    // was mapped as well.  X is left alone when its corners are equal or, on
    // a logarithmic axis, a value is not above zero: the result is false, but
    // y still holds its value.  Y fails (false, y untouched) for equal Y
    // corners or a non-positive value on a logarithmic Y.
    bool MapPixelToValue(double px, double py, double &x, double &y) const;

    // The value-to-pixel mapping of the present calibration.
    CPixelMapping PixelMapping() const;

    // Stores the axis values (as entered and as grid limits), takes over the
    // points, and makes the tick labels of both axes.  The caller repaints.
    // All zero, both linear and no points clears the capture.
    void SetCalibration(double xAtFirst, double yAtFirst, double xAtSecond, double yAtSecond,
                        bool xLog, bool yLog, CMyDoubleArray &&points, int count);
    void ClearCapture();

    // The click rule.  Modes 1 and 12 place the first corner (to 2 and 13),
    // modes 2 and 13 the second (to 4 and 14, repaint).  A corner is the
    // click's position as it is given, fractions and all (a position that is
    // not finite gives 0).  In modes 6 and 16 the pixel is mapped and
    // goes to the dialog as a point, mapped or not; in all others the pixel
    // goes to the dialog as it is.
    CClickResult SetFirstOrSecondCorner(double px, double py);

    // Sets the default rectangle when no rectangle is set, and the mode to
    // ModePlotted in every case.
    void SetDefaultRectangle(int width, int height, int labelTextWidth);
    // The canvas changed its size: in ModePlotted the rectangle follows it.
    void CanvasResized(int width, int height, int labelTextWidth);

    // A picture came from the clipboard: both picture flags set, pan and mode
    // cleared (the caller then sets the mode it wants).
    void PicturePasted();

    // The capture side of Start over: picture flags, mode, corners and the
    // values as entered are cleared, the capture is cleared, and the mode is
    // ModeIdle.
    void StartOver();
};
