#pragma once
// The polyline cache of a curve: the device points a drawing pass made of
// its rows, cut into runs, with the symbol positions and the arrow at the
// end, and the mapping they were made with.  A repaint with the same rows,
// mapping, thickness and symbol state draws the cache again without
// walking the rows.

#include "graphdata/curveinfo.h"
#include "graphdata/graphrange.h"

#include <QPoint>
#include <QPointF>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

// How values become device pixels:
//   px = plot.left + floor((x * xPre - xMin) * xScale)
//   py = plot.bottom - floor((y * yPre - yMin) * yScale)
// xPre and yPre are powers of two, 1 unless the range is too wide or too
// narrow for its span or its scale to be a double (values near 1.7e308,
// or denormals); xMin and yMin are then in the pre-scaled units as well.
struct CPixelMapping
{
    double xMin = 0, xScale = 1;
    double yMin = 0, yScale = 1;
    CIntRect plot;
    double yPre = 1, xPre = 1;

    bool operator==(const CPixelMapping &other) const = default;
    double MapX(double x) const { return (x * xPre - xMin) * xScale; }
    double MapY(double y) const { return (y * yPre - yMin) * yScale; }
};

// The exact pre-scale of an axis from lo to hi over `pixels`: 1 when the
// span and pixels / span are ordinary doubles, else the power of two that
// brings the larger end near 1 (or as near as a double allows).
inline double AxisPreScale(double lo, double hi, double pixels)
{
    const double span = hi - lo;
    const double big = std::max(std::fabs(lo), std::fabs(hi));
    if ((std::isfinite(span) && std::isfinite(pixels / span) && span > 1e-290) || !(big > 0) || !std::isfinite(big))
        return 1;
    // 2^1000 at most: a larger power would itself overflow
    return std::ldexp(1.0, std::clamp(-std::ilogb(big), -1000, 1000));
}

// The mapping of one axis, X or Y, from lo to hi over `pixels`: a value v
// lies (v * pre - min) * scale pixels from the axis start.  False, with
// scale 0, when the view is no finite rising range.
inline bool AxisMapping(double lo, double hi, double pixels, double &pre, double &min, double &scale)
{
    pre = 1;
    min = lo;
    scale = 0;
    if (!(hi > lo) || !std::isfinite(lo) || !std::isfinite(hi) || !(pixels > 0))
        return false;
    pre = AxisPreScale(lo, hi, pixels);
    min = lo * pre;
    scale = pixels / (hi * pre - min);
    if (std::isfinite(scale) && scale > 0)
        return true;
    scale = 0;
    return false;
}

class CPolylinePixels : public CPolylineCache
{
public:
    // points, cut into runs of m_runLengths points each
    std::vector<QPoint> m_points;
    std::vector<int> m_runLengths;
    // symbol positions; only kept when the curve shows symbols
    std::vector<QPoint> m_symbolPoints;
    bool m_hasSymbols = false;
    // rows covered
    int m_firstRow = 0;
    int m_lastRow = -1;
    CPixelMapping m_mapping;
    int m_thickness = 1;
    // The arrow at the end of an X-Y curve: the last two distinct points,
    // unrounded; the head's size comes from the font when it is drawn.
    int m_arrowOn = 0;
    QPointF m_arrowFrom, m_arrowTo;
    double m_arrowLength = 0;
    double m_arrowWidth = 0;
    double m_arrowAngle = 20;
    int m_arrowFill = 1;

    // Where the walk that made the points stopped, so that rows added later
    // carry it on exactly as one walk over all rows would have gone: the
    // pixel column still open, the run being drawn, and the sizes of the
    // arrays before that column was written out.
    struct WalkState
    {
        bool resumable = false;
        bool columnOpen = false;
        std::int64_t col = 0, lo = 0, hi = 0, entry = 0, exit = 0;
        bool runOpen = false;
        QPoint runEnd;
        int runStart = 0;
        int points = 0, runs = 0, symbols = 0;
        QPoint keep; // the point before the mark, which closing may drop
        int lastWalked = -1; // the last row looked at
        int start = -1;      // the first row drawn
        int lastGood = -1;   // the last row with X and Y valid
    };
    WalkState m_walk;

    int RunCount() const { return int(m_runLengths.size()); }

    // The cache stands for a pass over rows firstRow..lastRow with this
    // mapping (scales, minima and plot rectangle), thickness and symbol state.
    bool IsValidFor(int firstRow, int lastRow, const CPixelMapping &mapping, int thickness, bool symbols) const
    {
        return m_firstRow == firstRow && m_lastRow == lastRow && m_mapping == mapping && m_thickness == thickness
            && m_hasSymbols == symbols;
    }
};
