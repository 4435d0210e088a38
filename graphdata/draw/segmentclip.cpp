#include "graphdata/draw/segmentclip.h"

#include <algorithm>
#include <cmath>

namespace {

double clampInterior(double v, int low, int high)
{
    // A plot too small for an interior keeps its edge.
    if (high - low < 2)
        return std::clamp(v, double(low), double(high));
    return std::clamp(v, double(low + 1), double(high - 1));
}

// Moves (px, py), an end of the segment (ax, ay)-(bx, by), onto the first
// edge it lies beyond where the segment crosses that edge strictly between
// the two edges across it.
void clipEnd(double &px, double &py, double ax, double ay, double bx, double by, const CIntRect &r)
{
    const double dx = bx - ax, dy = by - ay;
    auto onSegment = [](double t) { return t >= 0 && t <= 1; };
    if (py > r.bottom && onSegment((r.bottom - ay) / dy)) {
        const double cx = ax + dx * (r.bottom - ay) / dy;
        if (cx > r.left && cx < r.right) {
            px = cx;
            py = r.bottom - 1;
        }
    }
    if (py < r.top && onSegment((r.top - ay) / dy)) {
        const double cx = ax + dx * (r.top - ay) / dy;
        if (cx > r.left && cx < r.right) {
            px = cx;
            py = r.top + 1;
        }
    }
    if (px > r.right && onSegment((r.right - ax) / dx)) {
        const double cy = ay + dy * (r.right - ax) / dx;
        if (cy > r.top && cy < r.bottom) {
            px = r.right - 1;
            py = cy;
        }
    }
    if (px < r.left && onSegment((r.left - ax) / dx)) {
        const double cy = ay + dy * (r.left - ax) / dx;
        if (cy > r.top && cy < r.bottom) {
            px = r.left + 1;
            py = cy;
        }
    }
}

int toPixel(double v, int low, int high)
{
    return int(std::lround(std::clamp(v, double(low), double(high))));
}

} // namespace

bool ClipSegment(double x1, double y1, double x2, double y2, const CIntRect &r, int &ox1, int &oy1, int &ox2,
                 int &oy2)
{
    if (x1 == x2) {
        if (x1 < r.left || x1 > r.right || std::max(y1, y2) < r.top || std::min(y1, y2) > r.bottom)
            return false;
        x1 = x2 = clampInterior(x1, r.left, r.right);
        y1 = clampInterior(y1, r.top, r.bottom);
        y2 = clampInterior(y2, r.top, r.bottom);
    } else if (y1 == y2) {
        if (y1 < r.top || y1 > r.bottom || std::max(x1, x2) < r.left || std::min(x1, x2) > r.right)
            return false;
        y1 = y2 = clampInterior(y1, r.top, r.bottom);
        x1 = clampInterior(x1, r.left, r.right);
        x2 = clampInterior(x2, r.left, r.right);
    } else {
        const double ax = x1, ay = y1, bx = x2, by = y2;
        clipEnd(x2, y2, ax, ay, bx, by, r);
        clipEnd(x1, y1, ax, ay, bx, by, r);
        if (!InsidePlot(x1, y1, r) || !InsidePlot(x2, y2, r))
            return false;
    }
    ox1 = toPixel(x1, r.left, r.right);
    oy1 = toPixel(y1, r.top, r.bottom);
    ox2 = toPixel(x2, r.left, r.right);
    oy2 = toPixel(y2, r.top, r.bottom);
    return true;
}
