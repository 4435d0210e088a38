#include "tool/autocal/picturegrid.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

// Ink of a line: black and grey lines alike, but not the faint halo that
// JPEG leaves on white paper.
constexpr int LineInk = 36;
// Gaps a run of line ink may have (JPEG, a curve of lighter colour across it).
constexpr int RunGap = 2;

struct CRun {
    int length = 0;
    int start = 0;
    int end = 0; // last pixel
};

// The longest run of ink along one row or column; `at(i)` gives the darkness.
template <typename At>
CRun longestRun(int n, At at)
{
    CRun best;
    int start = -1, lastInk = -1;
    for (int i = 0; i < n; ++i) {
        if (at(i) >= LineInk) {
            if (start < 0 || i - lastInk - 1 > RunGap)
                start = i;
            lastInk = i;
            if (lastInk - start + 1 > best.length)
                best = CRun{lastInk - start + 1, start, lastInk};
        }
    }
    return best;
}

struct CLine {
    double pos = 0;
    int start = 0;
    int end = 0;
    int Length() const { return end - start + 1; }
};

// Neighbouring rows (or columns) with long runs are one line; its position is
// their centroid weighted by the ink along the run.
template <typename At>
std::vector<CLine> longLines(int count, int length, At at)
{
    std::vector<CRun> runs(static_cast<std::size_t>(count));
    int longest = 0;
    for (int i = 0; i < count; ++i) {
        runs[std::size_t(i)] = longestRun(length, [&](int j) { return at(i, j); });
        longest = std::max(longest, runs[std::size_t(i)].length);
    }
    std::vector<CLine> lines;
    const int minLength = std::max(30, longest / 2);
    int i = 0;
    while (i < count) {
        if (runs[std::size_t(i)].length < minLength) {
            ++i;
            continue;
        }
        double sum = 0, weighted = 0;
        CLine line{0, runs[std::size_t(i)].start, runs[std::size_t(i)].end};
        int j = i;
        for (; j < count && runs[std::size_t(j)].length >= minLength; ++j) {
            const CRun &r = runs[std::size_t(j)];
            double ink = 0;
            for (int k = r.start; k <= r.end; ++k)
                ink += at(j, k);
            sum += ink;
            weighted += ink * j;
            line.start = std::min(line.start, r.start);
            line.end = std::max(line.end, r.end);
        }
        line.pos = sum > 0 ? weighted / sum : i;
        lines.push_back(line);
        i = j;
    }
    return lines;
}

// Columns (or rows) whose short stretch beside the frame edge is all ink: the
// tick marks of a graph without a full grid.  `inkAt(i, k)` is the darkness
// at position i, k pixels into the band.
template <typename At>
std::vector<double> tickPositions(int from, int to, int depth, At inkAt)
{
    std::vector<double> ticks;
    int i = from;
    while (i <= to) {
        auto isTick = [&](int p) {
            for (int k = 0; k < depth; ++k)
                if (inkAt(p, k) < LineInk)
                    return false;
            return true;
        };
        if (!isTick(i)) {
            ++i;
            continue;
        }
        double sum = 0, weighted = 0;
        int j = i;
        for (; j <= to && isTick(j); ++j) {
            double ink = 0;
            for (int k = 0; k < depth; ++k)
                ink += inkAt(j, k);
            sum += ink;
            weighted += ink * j;
        }
        // A tick is thin; a wide stretch of ink is a curve lying along the edge.
        if (j - i <= 3)
            ticks.push_back(weighted / sum);
        i = j;
    }
    return ticks;
}

std::vector<double> common(const std::vector<double> &a, const std::vector<double> &b)
{
    std::vector<double> r;
    for (double p : a)
        for (double q : b)
            if (std::abs(p - q) <= 1.0) {
                r.push_back((p + q) / 2);
                break;
            }
    return r;
}

QList<double> merged(double low, double high, std::vector<double> inner)
{
    std::sort(inner.begin(), inner.end());
    QList<double> r{low};
    for (double p : inner)
        if (p - r.last() > 2.0 && high - p > 2.0)
            r.append(p);
    r.append(high);
    return r;
}

} // namespace

CDarkness DarknessOf(const QImage &picture)
{
    CDarkness dark;
    const QImage gray = picture.convertToFormat(QImage::Format_Grayscale8);
    dark.width = gray.width();
    dark.height = gray.height();
    dark.d.resize(std::size_t(dark.width) * std::size_t(dark.height));
    for (int y = 0; y < dark.height; ++y) {
        const uchar *line = gray.constScanLine(y);
        std::uint8_t *out = dark.d.data() + std::size_t(y) * std::size_t(dark.width);
        for (int x = 0; x < dark.width; ++x)
            out[x] = std::uint8_t(255 - line[x]);
    }
    return dark;
}

double FindRotationDegrees(const CDarkness &dark, double maxDegrees)
{
    // Every inked pixel votes for the row (and column) it would lie on at a
    // trial angle; at the picture's true angle the long lines pile their
    // votes into few bins, which the sum of squares rewards.
    // Votes weigh by the ink, so that an antialiased line split over two
    // rows votes as much as a crisp one.
    struct CInk {
        float x, y, w;
    };
    std::vector<CInk> ink;
    for (int y = 0; y < dark.height; ++y)
        for (int x = 0; x < dark.width; ++x)
            if (dark.At(x, y) >= LineInk)
                ink.push_back(CInk{float(x), float(y), float(dark.At(x, y))});
    if (ink.size() < 50)
        return 0;
    const std::size_t stride = std::max<std::size_t>(1, ink.size() / 300000);
    const double maxTan = std::tan(maxDegrees * std::numbers::pi / 180);
    const int margin = int(std::ceil(std::max(dark.width, dark.height) * maxTan)) + 2;
    std::vector<double> rows(std::size_t(dark.height + 2 * margin));
    std::vector<double> cols(std::size_t(dark.width + 2 * margin));

    auto score = [&](double degrees) {
        const double t = std::tan(degrees * std::numbers::pi / 180);
        std::fill(rows.begin(), rows.end(), 0.0);
        std::fill(cols.begin(), cols.end(), 0.0);
        auto vote = [](std::vector<double> &bins, double at, double weight) {
            const double f = std::floor(at);
            const std::size_t i = std::size_t(f);
            const double w = at - f;
            bins[i] += (1 - w) * weight;
            bins[i + 1] += w * weight;
        };
        for (std::size_t k = 0; k < ink.size(); k += stride) {
            const CInk &p = ink[k];
            vote(rows, p.y - p.x * t + margin, p.w);
            vote(cols, p.x + p.y * t + margin, p.w);
        }
        double s = 0;
        for (double b : rows)
            s += b * b;
        for (double b : cols)
            s += b * b;
        return s;
    };

    // Coarse steps over the whole range, then fine ones about the best.
    auto bestAround = [&](double centre, double step, int n) {
        double best = centre, bestScore = -1;
        for (int i = -n; i <= n; ++i) {
            const double s = score(centre + i * step);
            if (s > bestScore) {
                bestScore = s;
                best = centre + i * step;
            }
        }
        return best;
    };
    const double coarse = bestAround(0, 0.05, int(std::round(maxDegrees / 0.05)));
    const double t0 = std::tan(bestAround(coarse, 0.01, 6) * std::numbers::pi / 180);

    // The projection finds the angle to a few hundredths of a degree; the
    // strongest lines, fitted one by one with least squares, give it to a
    // thousandth.  Each line's slope counts by its ink and the square of its
    // length, as its precision goes.
    score(std::atan(t0) * 180 / std::numbers::pi);
    double slopes = 0, weights = 0;
    auto fitLines = [&](const std::vector<double> &bins, bool horizontal) {
        std::vector<std::pair<double, int>> peaks;
        for (std::size_t i = 1; i + 1 < bins.size(); ++i)
            if (bins[i] > 0 && bins[i] >= bins[i - 1] && bins[i] > bins[i + 1])
                peaks.emplace_back(bins[i - 1] + bins[i] + bins[i + 1], int(i));
        std::sort(peaks.begin(), peaks.end(), std::greater<>());
        if (peaks.size() > 8)
            peaks.resize(8);
        for (const auto &[mass, at] : peaks) {
            if (mass < 0.3 * peaks.front().first)
                break;
            // Along the line u, across it v; v = c + m u by least squares,
            // twice, the second time without the ink that strays from it.
            double c = 0, m = horizontal ? t0 : -t0, band = 2.5;
            bool fitted = false;
            double uMin = 1e9, uMax = -1e9;
            for (int pass = 0; pass < 2; ++pass) {
                double sw = 0, su = 0, sv = 0, suu = 0, suv = 0;
                uMin = 1e9;
                uMax = -1e9;
                for (std::size_t k = 0; k < ink.size(); k += stride) {
                    const CInk &p = ink[k];
                    const double u = horizontal ? p.x : p.y, v = horizontal ? p.y : p.x;
                    const double predicted = pass == 0 ? at - margin + (horizontal ? u * t0 : -u * t0) : c + m * u;
                    if (std::abs(v - predicted) > band)
                        continue;
                    sw += p.w;
                    su += p.w * u;
                    sv += p.w * v;
                    suu += p.w * u * u;
                    suv += p.w * u * v;
                    uMin = std::min(uMin, u);
                    uMax = std::max(uMax, u);
                }
                const double det = sw * suu - su * su;
                if (sw <= 0 || det <= 0)
                    break;
                m = (sw * suv - su * sv) / det;
                c = (sv - m * su) / sw;
                fitted = true;
                band = 1.2;
            }
            if (!fitted || uMax - uMin < 50)
                continue;
            const double weight = mass * (uMax - uMin) * (uMax - uMin);
            slopes += weight * (horizontal ? m : -m);
            weights += weight;
        }
    };
    const std::vector<double> rowBins = rows, colBins = cols;
    fitLines(rowBins, true);
    fitLines(colBins, false);
    const double t = weights > 0 ? slopes / weights : t0;
    return std::atan(t) * 180 / std::numbers::pi;
}

QImage StraightenPicture(const QImage &picture, double degrees, QTransform *toStraight)
{
    const double cx = picture.width() / 2.0, cy = picture.height() / 2.0;
    QTransform t;
    t.translate(cx, cy);
    t.rotate(-degrees);
    t.translate(-cx, -cy);
    QImage out(picture.size(), QImage::Format_RGB32);
    out.fill(Qt::white);
    {
        QPainter p(&out);
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        p.setRenderHint(QPainter::Antialiasing);
        p.setTransform(t);
        p.drawImage(0, 0, picture);
    }
    if (toStraight)
        *toStraight = t;
    return out;
}

QPointF MapPixel(const QTransform &t, QPointF pixel)
{
    return t.map(pixel + QPointF(0.5, 0.5)) - QPointF(0.5, 0.5);
}

CGridLines FindGridLines(const CDarkness &dark)
{
    CGridLines g;
    if (dark.width < 20 || dark.height < 20)
        return g;
    const std::vector<CLine> rows =
        longLines(dark.height, dark.width, [&](int y, int x) { return dark.At(x, y); });
    const std::vector<CLine> cols =
        longLines(dark.width, dark.height, [&](int x, int y) { return dark.At(x, y); });
    if (rows.size() < 2 || cols.size() < 2)
        return g;

    // The frame: the outermost long lines on each side, provided that they
    // meet as a rectangle (its top and bottom reach across from its left to
    // its right side, and those from its top to its bottom).
    constexpr double near = 6.0;
    const CLine *left = &cols.front(), *right = &cols.back();
    const CLine *top = &rows.front(), *bottom = &rows.back();
    auto spans = [&](const CLine &l, double from, double to) {
        return l.start <= from + near && l.end >= to - near;
    };
    if (right->pos - left->pos < 20 || bottom->pos - top->pos < 20 || !spans(*top, left->pos, right->pos)
        || !spans(*bottom, left->pos, right->pos) || !spans(*left, top->pos, bottom->pos)
        || !spans(*right, top->pos, bottom->pos))
        return g;
    g.frameFound = true;
    g.left = left->pos;
    g.right = right->pos;
    g.top = top->pos;
    g.bottom = bottom->pos;

    // Full grid lines: long lines inside the frame.
    const double width = g.right - g.left, height = g.bottom - g.top;
    std::vector<double> xs, ys;
    for (const CLine &c : cols)
        if (c.pos > g.left + 1.5 && c.pos < g.right - 1.5 && c.Length() >= 0.6 * height)
            xs.push_back(c.pos);
    for (const CLine &r : rows)
        if (r.pos > g.top + 1.5 && r.pos < g.bottom - 1.5 && r.Length() >= 0.6 * width)
            ys.push_back(r.pos);
    g.fullXLines = int(xs.size());
    g.fullYLines = int(ys.size());

    // Without a full grid the tick marks along the edges stand for the lines.
    // Ticks on both edges of an axis are trusted over those on one, which a
    // curve crossing the edge could imitate.
    constexpr int depth = 4;
    auto clampX = [&](int x) { return std::clamp(x, 0, dark.width - 1); };
    auto clampY = [&](int y) { return std::clamp(y, 0, dark.height - 1); };
    if (xs.size() < 2) {
        const int from = int(std::ceil(g.left + 2)), to = int(std::floor(g.right - 2));
        const int b = int(std::round(g.bottom)), t = int(std::round(g.top));
        auto edgeTicks = [&](int edge, int dir) {
            auto in = tickPositions(from, to, depth, [&](int x, int k) { return dark.At(x, clampY(edge + dir * (2 + k))); });
            auto out = tickPositions(from, to, depth, [&](int x, int k) { return dark.At(x, clampY(edge - dir * (2 + k))); });
            in.insert(in.end(), out.begin(), out.end());
            return in;
        };
        const std::vector<double> atBottom = edgeTicks(b, -1), atTop = edgeTicks(t, 1);
        const std::vector<double> both = common(atBottom, atTop);
        xs = both.size() >= 3 ? both : atBottom;
    }
    if (ys.size() < 2) {
        const int from = int(std::ceil(g.top + 2)), to = int(std::floor(g.bottom - 2));
        const int l = int(std::round(g.left)), r = int(std::round(g.right));
        auto edgeTicks = [&](int edge, int dir) {
            auto in = tickPositions(from, to, depth, [&](int y, int k) { return dark.At(clampX(edge + dir * (2 + k)), y); });
            auto out = tickPositions(from, to, depth, [&](int y, int k) { return dark.At(clampX(edge - dir * (2 + k)), y); });
            in.insert(in.end(), out.begin(), out.end());
            return in;
        };
        const std::vector<double> atLeft = edgeTicks(l, 1), atRight = edgeTicks(r, -1);
        const std::vector<double> both = common(atLeft, atRight);
        ys = both.size() >= 3 ? both : atLeft;
    }
    g.xLines = merged(g.left, g.right, xs);
    g.yLines = merged(g.top, g.bottom, ys);
    return g;
}
