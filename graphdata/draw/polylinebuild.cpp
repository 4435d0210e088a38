#include "graphdata/draw/polylinebuild.h"

#include "graphdata/draw/segmentclip.h"

#include <algorithm>
#include <cmath>

namespace {

// Mapped coordinates are kept in 64 bits and clamped this far out, so that a
// value far beyond the view still gives a line of the right direction.
constexpr double kFar = 1e15;

inline std::int64_t floorToPixel(double t)
{
    if (!(t > -kFar && t < kFar))
        return t > 0 ? std::int64_t(kFar) : -std::int64_t(kFar);
    const auto i = std::int64_t(t);
    return i - (double(i) > t ? 1 : 0);
}

// The X values that certainly fall into one pixel column: (low, high),
// kept a millionth of a pixel (and a few rounding steps of X) inside the
// column's edges, so that a value between them maps to the column whatever
// the rounding.  Not usable when the pixels are too narrow for that margin.
struct CColumnBounds
{
    double low = 0, high = 0;
    bool usable = false;
};

CColumnBounds ColumnBounds(const CPixelMapping &m, std::int64_t col)
{
    CColumnBounds b;
    if (!(m.xScale > 0) || !std::isfinite(m.xScale))
        return b;
    const double width = 1 / m.xScale;
    const double k = double(col - m.plot.left);
    const double a = m.xMin + k * width, z = m.xMin + (k + 1) * width;
    const double tolerance = width * 1e-6 + std::max(std::fabs(a), std::fabs(z)) * 1e-12;
    if (!std::isfinite(a) || !std::isfinite(z) || 4 * tolerance >= width)
        return b;
    // back from the pre-scaled units to the values of the column
    b.low = (a + tolerance) / m.xPre;
    b.high = (z - tolerance) / m.xPre;
    if (!(b.high > b.low) || !std::isfinite(b.low) || !std::isfinite(b.high))
        return b;
    b.usable = true;
    return b;
}

// The fast part of the walk: from `row` on, the rows with X and Y valid
// whose X lies in (low, high), that is in the open pixel column; their Y
// extent and last Y.  Returns the first row that is not such a row.
inline int sameColumnRows(const double *xv, const std::uint8_t *xb, const double *yv, const std::uint8_t *yb, int row,
                          int last, double low, double high, double &yLow, double &yHigh, double &yLast)
{
    double lo = yLow, hi = yHigh, y = yLast;
    for (; row <= last; ++row) {
        if ((xb[row] ^ 1) | (yb[row] ^ 1))
            break;
        const double x = xv[row];
        if (!(x > low && x < high))
            break;
        y = yv[row];
        lo = std::min(lo, y);
        hi = std::max(hi, y);
    }
    yLow = lo;
    yHigh = hi;
    yLast = y;
    return row;
}

// The walk over the rows.  Its state lives in the cache between calls, so
// that a later call can carry it on.
class Walker
{
public:
    Walker(CPolylinePixels &cache)
        : m_cache(cache), m_s(cache.m_walk), m_points(cache.m_points), m_runs(cache.m_runLengths),
          m_symbols(cache.m_symbolPoints), m_plot(cache.m_mapping.plot), m_keepSymbols(cache.m_hasSymbols)
    {
    }

    // Walks rows from..last; returns the last row looked at (the span may
    // grow past `last` over missing rows).
    int Walk(const CCurveArrays &a, int from, int last)
    {
        const double *xv = a.xValues, *yv = a.yValues;
        const std::uint8_t *xb = a.xValid, *yb = a.yValid;
        const CPixelMapping &m = m_cache.m_mapping;
        const double xMin = m.xMin, xScale = m.xScale, xPre = m.xPre, yMin = m.yMin, yScale = m.yScale, yPre = m.yPre;
        const std::int64_t left = m.plot.left, bottom = m.plot.bottom;
        const int rows = a.rows;
        auto mapY = [&](double y) { return bottom - floorToPixel((y * yPre - yMin) * yScale); };

        bool open = m_s.columnOpen;
        std::int64_t col = m_s.col, lo = m_s.lo, hi = m_s.hi, exitY = m_s.exit;
        int lastGood = m_s.lastGood;
        CColumnBounds bounds;
        if (open)
            bounds = ColumnBounds(m, col);
        int row = from;
        while (row <= last) {
            if (open && bounds.usable) {
                // Rows that stay in the open column, on their Y values alone.
                double yLow = HUGE_VAL, yHigh = -HUGE_VAL, yLast = 0;
                const int stop = sameColumnRows(xv, xb, yv, yb, row, last, bounds.low, bounds.high, yLow, yHigh, yLast);
                if (stop > row) {
                    lo = std::min(lo, mapY(yHigh));
                    hi = std::max(hi, mapY(yLow));
                    exitY = mapY(yLast);
                    lastGood = stop - 1;
                    row = stop;
                    if (row > last)
                        break;
                }
            }
            const std::uint8_t bx = xb[row], by = yb[row];
            if (bx == 1 && by == 1) {
                const std::int64_t px = left + floorToPixel((xv[row] * xPre - xMin) * xScale);
                const std::int64_t py = mapY(yv[row]);
                lastGood = row;
                if (open && px == col) {
                    lo = std::min(lo, py);
                    hi = std::max(hi, py);
                    exitY = py;
                    ++row;
                    continue;
                }
                if (open) {
                    m_s.lo = lo;
                    m_s.hi = hi;
                    m_s.exit = exitY;
                    flushColumn();
                    segment(col, exitY, px, py);
                }
                startColumn(px, py);
                open = true;
                col = px;
                lo = hi = exitY = py;
                bounds = ColumnBounds(m, col);
            } else if (bx == 2 || by == 2) {
                if (open) {
                    m_s.lo = lo;
                    m_s.hi = hi;
                    m_s.exit = exitY;
                    flushColumn();
                    closeRun();
                    open = false;
                }
            } else if (row == last && last < rows - 1) {
                ++last; // a missing last row: the line goes on to the next good one
            }
            ++row;
        }
        m_s.columnOpen = open;
        if (open) {
            m_s.lo = lo;
            m_s.hi = hi;
            m_s.exit = exitY;
        }
        m_s.lastGood = lastGood;
        m_s.lastWalked = std::min(row, last + 1) - 1;
        return m_s.lastWalked;
    }

    void StartColumn(std::int64_t px, std::int64_t py)
    {
        startColumn(px, py);
        m_s.columnOpen = true;
    }

    // Writes the open column and ends the open run, remembering first what
    // they will be carried on from.  Both only append, except that a run of
    // one point is dropped when it closes: the point just before the mark
    // is kept aside for that.
    void Finish()
    {
        m_s.points = int(m_points.size());
        m_s.runs = int(m_runs.size());
        m_s.symbols = int(m_symbols.size());
        m_s.keep = m_points.empty() ? QPoint() : m_points.back();
        m_s.resumable = true;
        const bool runOpen = m_s.runOpen;
        const QPoint runEnd = m_s.runEnd;
        const int runStart = m_s.runStart;
        if (m_s.columnOpen)
            flushColumn();
        closeRun();
        // The state to carry on from is the one before these two steps.
        m_s.runOpen = runOpen;
        m_s.runEnd = runEnd;
        m_s.runStart = runStart;
    }

    // Goes back to where Finish started, so that the walk can go on.
    // Returns the first point that may differ from the finished arrays.
    int Reopen()
    {
        if (m_s.points > 0) {
            m_points.resize(std::size_t(m_s.points - 1));
            m_points.push_back(m_s.keep);
        } else {
            m_points.clear();
        }
        m_runs.resize(std::size_t(m_s.runs));
        m_symbols.resize(std::size_t(m_s.symbols));
        return std::max(0, m_s.points - 1);
    }

private:
    void startColumn(std::int64_t px, std::int64_t py)
    {
        m_s.col = px;
        m_s.lo = m_s.hi = m_s.entry = m_s.exit = py;
    }

    // The column's vertical extent as segments from its entry over both
    // extremes to its exit, then its symbol positions.
    void flushColumn()
    {
        if (m_s.lo != m_s.hi) {
            std::int64_t a = m_s.lo, b = m_s.hi;
            if (m_s.entry == m_s.hi || m_s.exit == m_s.lo)
                std::swap(a, b);
            vertical(m_s.entry, a);
            vertical(a, b);
            vertical(b, m_s.exit);
        }
        if (m_keepSymbols) {
            addSymbol(m_s.col, m_s.lo);
            if (m_s.hi != m_s.lo)
                addSymbol(m_s.col, m_s.hi);
        }
    }

    void closeRun()
    {
        if (!m_s.runOpen)
            return;
        const int n = int(m_points.size()) - m_s.runStart;
        if (n <= 1)
            m_points.resize(std::size_t(m_s.runStart));
        else
            m_runs.push_back(n);
        m_s.runOpen = false;
    }

    void vertical(std::int64_t y1, std::int64_t y2)
    {
        if (y1 != y2)
            segment(m_s.col, y1, m_s.col, y2);
    }

    bool inside(std::int64_t x, std::int64_t y) const
    {
        return x >= m_plot.left && x <= m_plot.right && y >= m_plot.top && y <= m_plot.bottom;
    }

    void segment(std::int64_t x1, std::int64_t y1, std::int64_t x2, std::int64_t y2)
    {
        if (inside(x1, y1) && inside(x2, y2)) {
            pushSegment(QPoint(int(x1), int(y1)), QPoint(int(x2), int(y2)));
            return;
        }
        int a, b, c, d;
        if (ClipSegment(double(x1), double(y1), double(x2), double(y2), m_plot, a, b, c, d))
            pushSegment(QPoint(a, b), QPoint(c, d));
    }

    // A segment that starts where the open run ends carries it on; any
    // other closes it and starts a new one.
    void pushSegment(QPoint a, QPoint b)
    {
        if (m_s.runOpen && a == m_s.runEnd) {
            if (b != a) {
                m_points.push_back(b);
                m_s.runEnd = b;
            }
            return;
        }
        closeRun();
        m_s.runStart = int(m_points.size());
        m_points.push_back(a);
        if (b != a)
            m_points.push_back(b);
        m_s.runEnd = m_points.back();
        m_s.runOpen = true;
    }

    void addSymbol(std::int64_t x, std::int64_t y)
    {
        if (!inside(x, y))
            return;
        const QPoint p{int(x), int(y)};
        // Positions arrive column by column, so a duplicate can only be
        // among the last two.
        const std::size_t n = m_symbols.size();
        if ((n >= 1 && m_symbols[n - 1] == p) || (n >= 2 && m_symbols[n - 2] == p))
            return;
        m_symbols.push_back(p);
    }

    CPolylinePixels &m_cache;
    CPolylinePixels::WalkState &m_s;
    std::vector<QPoint> &m_points;
    std::vector<int> &m_runs;
    std::vector<QPoint> &m_symbols;
    const CIntRect m_plot;
    const bool m_keepSymbols;
};

bool arraysUsable(const CCurveArrays &a)
{
    return a.rows >= 1 && a.xValues && a.yValues && a.xValid && a.yValid;
}

// The last two distinct points before and at the last good row, unrounded,
// for the direction of the arrow head.
void findArrow(CPolylinePixels &cache, const CCurveArrays &a)
{
    cache.m_arrowOn = 0;
    const int lastGood = cache.m_walk.lastGood;
    if (lastGood < 0)
        return;
    const CPixelMapping &m = cache.m_mapping;
    auto unrounded = [&](int i) {
        return QPointF(m.plot.left + m.MapX(a.xValues[i]),
                       m.plot.bottom - m.MapY(a.yValues[i]));
    };
    const QPointF to = unrounded(lastGood);
    for (int i = lastGood - 1; i >= 0; --i) {
        if (a.xValid[i] != 1 || a.yValid[i] != 1)
            continue;
        const QPointF from = unrounded(i);
        if (from != to) {
            cache.m_arrowOn = 1;
            cache.m_arrowFrom = from;
            cache.m_arrowTo = to;
            return;
        }
    }
}

} // namespace

int BuildPolyline(CPolylinePixels &cache, const CCurveArrays &arrays, int first, int last,
                  const CPixelMapping &mapping, int thickness, bool symbols, bool arrow)
{
    cache.m_points.clear();
    cache.m_runLengths.clear();
    cache.m_symbolPoints.clear();
    cache.m_hasSymbols = symbols;
    cache.m_firstRow = first;
    cache.m_lastRow = last;
    cache.m_mapping = mapping;
    cache.m_thickness = thickness;
    cache.m_arrowOn = 0;
    cache.m_walk = CPolylinePixels::WalkState();

    if (!arraysUsable(arrays))
        return 0;
    const int rows = arrays.rows;
    first = std::max(first, 0);
    last = std::min(last, rows - 1);
    if (first > last)
        return 0;

    const std::uint8_t *xb = arrays.xValid, *yb = arrays.yValid;
    auto usable = [&](int i) { return xb[i] == 1 && yb[i] == 1; };
    int start = first;
    if (!usable(first)) {
        int back = first - 1;
        while (back >= 0 && xb[back] != 2 && yb[back] != 2 && !usable(back))
            --back;
        if (back >= 0 && usable(back)) {
            start = back;
        } else {
            while (start <= last && !usable(start))
                ++start;
        }
    }
    if (start > last) {
        // Nothing to draw yet; rows added later start the walk afresh.
        cache.m_walk.resumable = true;
        cache.m_walk.lastWalked = last;
        return 0;
    }

    // Dense ordered data give a few points per pixel column; anything else
    // can give up to one point per row.
    const long long width = std::max(1, mapping.plot.right - mapping.plot.left);
    cache.m_points.reserve(std::size_t(std::min<long long>(last - start + 2, 8 * width + 100)));
    if (symbols)
        cache.m_symbolPoints.reserve(std::size_t(std::min<long long>(last - start + 2, 2 * width + 10)));

    Walker walker(cache);
    walker.StartColumn(mapping.plot.left + floorToPixel(mapping.MapX(arrays.xValues[start])),
                       mapping.plot.bottom - floorToPixel(mapping.MapY(arrays.yValues[start])));
    cache.m_walk.start = start;
    cache.m_walk.lastGood = start;
    walker.Walk(arrays, start + 1, last);
    walker.Finish();
    if (arrow)
        findArrow(cache, arrays);
    return int(cache.m_points.size());
}

int ResumePolyline(CPolylinePixels &cache, const CCurveArrays &arrays, int last, bool arrow, int &symbolsFrom)
{
    symbolsFrom = int(cache.m_symbolPoints.size());
    CPolylinePixels::WalkState &s = cache.m_walk;
    if (!s.resumable || !arraysUsable(arrays))
        return -1;
    last = std::min(last, arrays.rows - 1);
    const int from = s.lastWalked + 1;
    if (last < from)
        return int(cache.m_points.size());

    Walker walker(cache);
    const int changed = walker.Reopen();
    symbolsFrom = s.symbols;
    int row = from;
    if (s.start < 0) {
        // No good row so far: the first one now starts the walk.
        while (row <= last && (arrays.xValid[row] != 1 || arrays.yValid[row] != 1))
            ++row;
        if (row > last) {
            s.lastWalked = last;
            return changed;
        }
        const CPixelMapping &m = cache.m_mapping;
        walker.StartColumn(m.plot.left + floorToPixel(m.MapX(arrays.xValues[row])),
                           m.plot.bottom - floorToPixel(m.MapY(arrays.yValues[row])));
        s.start = row;
        s.lastGood = row;
        ++row;
    }
    walker.Walk(arrays, row, last);
    walker.Finish();
    cache.m_lastRow = std::max(cache.m_lastRow, last);
    if (arrow)
        findArrow(cache, arrays);
    // A run that was open before may have been written over from its start.
    return std::min(changed, int(cache.m_points.size()));
}
