#include "tool/curvetracer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>

namespace {

// A pixel less than this share of the ink is no ink (of a coloured ink's
// colour part: the blurred colours of JPEG spread it thinner).
constexpr double MinShare = 0.2;
constexpr double MinChromaShare = 0.3;
// ... and never less colour than this (JPEG tints grey lines beside a curve).
constexpr double MinPixelChroma = 12;
// The least cosine between P - B and T - B for a pixel of the ink's colour:
// loose enough for JPEG's blurred colours, tight enough for grey grid lines
// under a coloured curve.
constexpr double MinCosine = 0.8;
// A pixel further than this share of the ink from the background, but not
// of the ink's colour, is something drawn over or beside the curve.
constexpr double ForeignShare = 0.3;
// The most of a grey ink a pixel may hold and still be of it.
constexpr double MaxGreyShare = 1.35;

struct Colour {
    double r = 0, g = 0, b = 0;
};

// The colour part of a difference from the background: what is left
// when its grey part (the mean of the three channels) is taken away.
Colour chromaOf(double r, double g, double b)
{
    const double m = (r + g + b) / 3;
    return {r - m, g - m, b - m};
}

double dotOf(const Colour &a, const Colour &b)
{
    return a.r * b.r + a.g * b.g + a.b * b.b;
}

struct InkModel {
    Colour background;
    Colour towardInk; // T - B
    double inkNorm2 = 0;
    // A coloured ink is told from grey and black (grid lines, frame, labels)
    // by its colour part alone; a grey or black ink by the whole difference.
    bool coloured = false;
    Colour inkChroma;
    double chromaNorm2 = 0;

    void set(const Colour &b, const Colour &t)
    {
        background = b;
        towardInk = {t.r - b.r, t.g - b.g, t.b - b.b};
        inkNorm2 = dotOf(towardInk, towardInk);
        inkChroma = chromaOf(towardInk.r, towardInk.g, towardInk.b);
        chromaNorm2 = dotOf(inkChroma, inkChroma);
        constexpr double MinChroma = 20;
        coloured = chromaNorm2 >= MinChroma * MinChroma && chromaNorm2 >= 0.0225 * inkNorm2;
    }

    // The ink share of a pixel (0 when it is not of the ink's colour), and
    // whether it is foreign: far from the background, but not ink.
    double share(QRgb pixel, bool *foreign = nullptr) const
    {
        const Colour d{qRed(pixel) - background.r, qGreen(pixel) - background.g, qBlue(pixel) - background.b};
        const double dot = dotOf(d, towardInk);
        const double d2 = dotOf(d, d);
        const double a = dot / inkNorm2;
        bool ink = false;
        if (coloured) {
            const Colour c = chromaOf(d.r, d.g, d.b);
            const double cdot = dotOf(c, inkChroma);
            ink = a >= MinShare && cdot >= MinChromaShare * chromaNorm2
                && cdot * cdot >= MinPixelChroma * MinPixelChroma * chromaNorm2
                && cdot * cdot >= MinCosine * MinCosine * dotOf(c, c) * chromaNorm2;
        } else {
            // Much darker than a grey ink is another ink (a black curve
            // across a grey one), not more of it.
            ink = a >= MinShare && a <= MaxGreyShare && dot * dot >= MinCosine * MinCosine * d2 * inkNorm2;
        }
        if (foreign)
            *foreign = !ink && d2 > ForeignShare * ForeignShare * inkNorm2;
        return ink ? std::clamp(a, 0.0, 1.0) : 0.0;
    }
};

struct Run {
    int first = 0, last = 0; // rows
    double centre = 0;       // weighted, as a picture position
    double weight = 0;
    bool touchesForeign = false;
    int length() const { return last - first + 1; }
};

class ColumnReader
{
public:
    ColumnReader(const QImage &image, const InkModel &ink, int top, int bottom)
        : m_image(image), m_ink(ink), m_top(top), m_bottom(bottom)
    {
    }

    std::vector<Run> runs(int x) const
    {
        std::vector<Run> out;
        Run run;
        bool open = false;
        bool foreignBefore = false;
        double sumY = 0;
        for (int y = m_top; y <= m_bottom; ++y) {
            bool foreign = false;
            const double w = m_ink.share(reinterpret_cast<const QRgb *>(m_image.constScanLine(y))[x], &foreign);
            if (w > 0) {
                if (!open) {
                    run = Run();
                    run.first = y;
                    run.touchesForeign = foreignBefore;
                    sumY = 0;
                    open = true;
                }
                run.last = y;
                run.weight += w;
                sumY += w * (y + 0.5);
            } else if (open) {
                run.touchesForeign = run.touchesForeign || foreign;
                run.centre = sumY / run.weight;
                out.push_back(run);
                open = false;
            }
            foreignBefore = foreign;
        }
        if (open) {
            run.centre = sumY / run.weight;
            out.push_back(run);
        }
        return out;
    }

private:
    const QImage &m_image;
    const InkModel &m_ink;
    int m_top, m_bottom;
};

// The commonest colour of the area, from a sample of its pixels.
Colour backgroundOf(const QImage &image, int left, int top, int right, int bottom)
{
    std::vector<int> counts(4096, 0);
    std::vector<std::array<double, 3>> sums(4096, {0, 0, 0});
    const int step = std::max(1, std::min(right - left, bottom - top) / 200);
    for (int y = top; y <= bottom; y += step) {
        const QRgb *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        for (int x = left; x <= right; x += step) {
            const QRgb c = line[x];
            const int bin = ((qRed(c) >> 4) << 8) | ((qGreen(c) >> 4) << 4) | (qBlue(c) >> 4);
            ++counts[bin];
            sums[bin][0] += qRed(c);
            sums[bin][1] += qGreen(c);
            sums[bin][2] += qBlue(c);
        }
    }
    const int best = int(std::max_element(counts.begin(), counts.end()) - counts.begin());
    if (counts[best] == 0)
        return {255, 255, 255};
    return {sums[best][0] / counts[best], sums[best][1] / counts[best], sums[best][2] / counts[best]};
}

} // namespace

double CCurveTrace::ProposalStart() const
{
    return columns.empty() ? startX : std::max(startX, columns.front().x - 0.5);
}

double CCurveTrace::ProposalEnd() const
{
    return columns.empty() ? endX : std::min(endX, columns.back().x + 0.5);
}

std::optional<double> CCurveTrace::YAt(double x) const
{
    if (!found || columns.empty() || x < startX || x > endX)
        return std::nullopt;
    // Beyond the outer whole columns the curve goes on as between the last two.
    if (columns.size() >= 2 && x < columns.front().x) {
        const CTracedColumn &a = columns[0], &b = columns[1];
        return a.y + (x - a.x) * (b.y - a.y) / (b.x - a.x);
    }
    if (columns.size() >= 2 && x > columns.back().x) {
        const CTracedColumn &a = columns[columns.size() - 2], &b = columns.back();
        return b.y + (x - b.x) * (b.y - a.y) / (b.x - a.x);
    }
    if (x <= columns.front().x)
        return columns.front().y;
    if (x >= columns.back().x)
        return columns.back().y;
    const auto above = std::lower_bound(columns.begin(), columns.end(), x,
                                        [](const CTracedColumn &c, double v) { return c.x < v; });
    const auto below = above - 1;
    const double t = (x - below->x) / (above->x - below->x);
    return below->y + t * (above->y - below->y);
}

CCurveTrace CCurveTracer::Trace(const QImage &source, QPointF spot, QRectF area) const
{
    CCurveTrace trace;
    if (source.isNull())
        return trace;
    const QImage image = source.format() == QImage::Format_RGB32 || source.format() == QImage::Format_ARGB32
        ? source
        : source.convertToFormat(QImage::Format_RGB32);
    const int left = std::max(0, int(std::floor(std::min(area.left(), area.right()))));
    const int right = std::min(image.width() - 1, int(std::ceil(std::max(area.left(), area.right()))) - 1);
    const int top = std::max(0, int(std::floor(std::min(area.top(), area.bottom()))));
    const int bottom = std::min(image.height() - 1, int(std::ceil(std::max(area.top(), area.bottom()))) - 1);
    const int sx = int(std::floor(spot.x())), sy = int(std::floor(spot.y()));
    if (right < left || bottom < top || sx < left || sx > right || sy < top || sy > bottom)
        return trace;

    // The background, and the ink: the pixel near the spot that differs most from it.
    InkModel ink;
    ink.background = backgroundOf(image, left, top, right, bottom);
    double farthest = 0;
    QRgb inkColour = 0;
    for (int y = std::max(top, sy - pickRadius); y <= std::min(bottom, sy + pickRadius); ++y)
        for (int x = std::max(left, sx - pickRadius); x <= std::min(right, sx + pickRadius); ++x) {
            const QRgb c = reinterpret_cast<const QRgb *>(image.constScanLine(y))[x];
            const double d = std::hypot(qRed(c) - ink.background.r, qGreen(c) - ink.background.g,
                                        qBlue(c) - ink.background.b);
            if (d > farthest) {
                farthest = d;
                inkColour = c;
            }
        }
    constexpr double MinContrast = 40;
    if (farthest < MinContrast)
        return trace;
    // The ink's colour: the mean of the strong pixels there, for JPEG keeps
    // the colour of a thin line at half the resolution of its lightness, so
    // that a single pixel's colour may be far from the line's.
    Colour sum;
    int strong = 0;
    for (int y = std::max(top, sy - pickRadius); y <= std::min(bottom, sy + pickRadius); ++y)
        for (int x = std::max(left, sx - pickRadius); x <= std::min(right, sx + pickRadius); ++x) {
            const QRgb c = reinterpret_cast<const QRgb *>(image.constScanLine(y))[x];
            const double d = std::hypot(qRed(c) - ink.background.r, qGreen(c) - ink.background.g,
                                        qBlue(c) - ink.background.b);
            if (d >= 0.6 * farthest) {
                sum.r += qRed(c);
                sum.g += qGreen(c);
                sum.b += qBlue(c);
                ++strong;
            }
        }
    ink.set(ink.background, {sum.r / strong, sum.g / strong, sum.b / strong});
    inkColour = qRgb(int(std::lround(sum.r / strong)), int(std::lround(sum.g / strong)), int(std::lround(sum.b / strong)));
    trace.colour = inkColour;
    trace.background = qRgb(int(std::lround(ink.background.r)), int(std::lround(ink.background.g)),
                             int(std::lround(ink.background.b)));

    const ColumnReader reader(image, ink, top, bottom);
    // The run at the spot, or the nearest within the pick radius.
    const std::vector<Run> seedRuns = reader.runs(sx);
    const Run *seed = nullptr;
    double seedDistance = pickRadius + 1.0;
    for (const Run &r : seedRuns) {
        const double d = std::max({0.0, r.first - spot.y(), spot.y() - (r.last + 1)});
        if (d < seedDistance) {
            seedDistance = d;
            seed = &r;
        }
    }
    if (!seed)
        return trace;

    double thickness = seed->length();
    double fullWeight = seed->weight;
    struct Accepted {
        int x;
        double y;
        double weight;
        double slope;
    };
    std::vector<Accepted> sides[2];
    for (int side = 0; side < 2; ++side) {
        const int dir = side == 0 ? -1 : 1;
        std::deque<std::pair<int, double>> recent{{sx, seed->centre}};
        int gap = 0;
        for (int x = sx + dir; x >= left && x <= right; x += dir) {
            // The place the last columns point to.
            double slope = 0;
            if (recent.size() >= 2) {
                const auto &a = recent.front(), &b = recent.back();
                slope = (b.second - a.second) / double(b.first - a.first);
            }
            const auto &last = recent.back();
            const double predicted = last.second + slope * (x - last.first);
            const double tolerance = 2.5 + 0.5 * thickness + std::fabs(slope) * (1 + 0.5 * gap) + 0.5 * gap;
            const double expectedLength = thickness + std::fabs(slope) + 1;

            const std::vector<Run> runs = reader.runs(x);
            const Run *best = nullptr;
            double bestDistance = tolerance;
            for (const Run &r : runs) {
                const double d = std::max({0.0, r.first - predicted, predicted - (r.last + 1)});
                if (d <= bestDistance) {
                    bestDistance = d;
                    best = &r;
                }
            }
            // A run much longer than the line is thick is the curve merged
            // with a line across it; one that touches foreign ink may be cut
            // by it.  Both are gaps, bridged by the columns around them.
            // A grey or black ink shares its hue with grid lines and the
            // frame, whose runs are thin or pale: a run of such ink must hold
            // most of the ink of a whole column of the curve.
            const bool faint = best && !ink.coloured
                && best->weight < 0.7 * fullWeight * std::sqrt(1 + slope * slope);
            if (!best || best->length() > 2 * expectedLength + 2 || best->touchesForeign || faint) {
                if (++gap > maxGap)
                    break;
                continue;
            }
            gap = 0;
            sides[side].push_back({x, best->centre, best->weight, slope});
            recent.emplace_back(x, best->centre);
            while (recent.size() > 5)
                recent.pop_front();
            if (std::fabs(slope) < 0.5)
                thickness += 0.1 * (best->length() - thickness);
            // A line of one thickness holds sqrt(1 + slope^2) times as much
            // ink in a column as where it runs flat.
            fullWeight += 0.1 * (best->weight / std::sqrt(1 + slope * slope) - fullWeight);
        }
    }

    struct Column {
        double x, y, weight, slope;
    };
    std::vector<Column> all;
    all.reserve(sides[0].size() + sides[1].size() + 1);
    for (auto it = sides[0].rbegin(); it != sides[0].rend(); ++it)
        all.push_back({it->x + 0.5, it->y, it->weight, it->slope});
    all.push_back({sx + 0.5, seed->centre, seed->weight, 0.0});
    for (const Accepted &a : sides[1])
        all.push_back({a.x + 0.5, a.y, a.weight, a.slope});
    // A column beside a gap may hold only part of its ink (the end of a
    // dash, the edge of a crossing), whose centre is off the curve by as
    // much as the curve climbs in half a column: only whole columns count.
    // A column with clearly less ink than a whole one holds is partial too.
    for (std::size_t i = 0; i < all.size(); ++i) {
        const bool before = i > 0 && all[i - 1].x == all[i].x - 1;
        const bool after = i + 1 < all.size() && all[i + 1].x == all[i].x + 1;
        const double expected = fullWeight * std::sqrt(1 + all[i].slope * all[i].slope);
        if (before && after && all[i].weight >= 0.8 * expected)
            trace.columns.push_back({all[i].x, all[i].y});
    }
    // A curve is smooth from one pixel to the next: a column off the line
    // through its neighbours (within 5 pixels each side) by more than a few
    // tenths of a pixel met a grid line or a label, and is dropped.
    {
        std::vector<CTracedColumn> kept;
        const std::vector<CTracedColumn> &cols = trace.columns;
        std::size_t lo = 0, hi = 0;
        for (std::size_t i = 0; i < cols.size(); ++i) {
            while (cols[lo].x < cols[i].x - 5)
                ++lo;
            while (hi < cols.size() && cols[hi].x <= cols[i].x + 5)
                ++hi;
            double n = 0, sx = 0, sy = 0, sxx = 0, sxy = 0;
            for (std::size_t k = lo; k < hi; ++k) {
                if (k == i)
                    continue;
                const double u = cols[k].x - cols[i].x;
                n += 1;
                sx += u;
                sy += cols[k].y;
                sxx += u * u;
                sxy += u * cols[k].y;
            }
            const double det = n * sxx - sx * sx;
            if (n < 4 || det <= 0) {
                kept.push_back(cols[i]);
                continue;
            }
            const double atCentre = (sy * sxx - sx * sxy) / det;
            constexpr double MaxOff = 0.4;
            if (std::fabs(cols[i].y - atCentre) <= MaxOff)
                kept.push_back(cols[i]);
        }
        if (kept.size() >= 2)
            trace.columns = std::move(kept);
    }
    if (trace.columns.empty())
        for (const Column &c : all)
            trace.columns.push_back({c.x, c.y});

    // The ends: an end column holds a share of a full column's ink.
    auto endShare = [&](const std::vector<Accepted> &side, double seedWeight) {
        const double w = side.empty() ? seedWeight : side.back().weight;
        const double slope = side.empty() ? 0 : side.back().slope;
        if (fullWeight <= 0)
            return 1.0;
        return std::clamp(w / (fullWeight * std::sqrt(1 + slope * slope)), 0.0, 1.0);
    };
    trace.startX = all.front().x + 0.5 - endShare(sides[0], seed->weight);
    trace.endX = all.back().x - 0.5 + endShare(sides[1], seed->weight);
    trace.found = true;
    return trace;
}

std::vector<double> ProposalXs(const CTraceSpacing &spacing, double startX, double endX,
                               const std::function<double(double)> &valueOf,
                               const std::function<double(double)> &pixelOf)
{
    std::vector<double> xs;
    if (!(endX >= startX))
        return xs;
    switch (spacing.kind) {
    case CTraceSpacing::EveryNPixels: {
        if (!(spacing.n >= 1))
            return xs;
        for (double x = startX; x < endX; x += spacing.n)
            xs.push_back(x);
        xs.push_back(endX);
        break;
    }
    case CTraceSpacing::PerDecade: {
        const double a = valueOf(startX), b = valueOf(endX);
        if (!(spacing.n >= 1) || !(a > 0) || !(b > 0) || !std::isfinite(a) || !std::isfinite(b))
            return xs;
        xs.push_back(startX);
        const double lo = std::log10(std::min(a, b)) * spacing.n, hi = std::log10(std::max(a, b)) * spacing.n;
        for (double k = std::ceil(lo); k <= hi; ++k) {
            const double x = pixelOf(std::pow(10.0, k / spacing.n));
            if (x > startX && x < endX)
                xs.push_back(x);
        }
        xs.push_back(endX);
        break;
    }
    case CTraceSpacing::AtValues:
        for (double v : spacing.values) {
            const double x = pixelOf(v);
            if (x >= startX && x <= endX)
                xs.push_back(x);
        }
        break;
    }
    std::sort(xs.begin(), xs.end());
    xs.erase(std::unique(xs.begin(), xs.end()), xs.end());
    return xs;
}
