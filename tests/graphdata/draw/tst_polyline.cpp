// The segment clipper and the polyline walk, on plain arrays.
#include "graphdata/draw/polylinebuild.h"
#include "graphdata/draw/segmentclip.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <vector>

namespace {

const CIntRect kPlot{100, 50, 500, 350};

struct ClipCase
{
    const char *name;
    double x1, y1, x2, y2;
    bool kept;
    int ox1, oy1, ox2, oy2;
};

// Columns of a walk: x and y values with their bytes (1 unless given).
struct Arrays
{
    std::vector<double> x, y;
    std::vector<std::uint8_t> xb, yb;
    Arrays(std::vector<double> xs, std::vector<double> ys) : x(std::move(xs)), y(std::move(ys))
    {
        xb.assign(x.size(), 1);
        yb.assign(y.size(), 1);
    }
    CCurveArrays Get() const
    {
        return CCurveArrays{x.data(), xb.data(), y.data(), yb.data(), int(std::min(x.size(), y.size()))};
    }
};

// One value unit per pixel: x 0..400 over the plot's width, y 0..300 over its height.
CPixelMapping unitMapping()
{
    CPixelMapping m;
    m.plot = kPlot;
    m.xMin = 0;
    m.xScale = 1;
    m.yMin = 0;
    m.yScale = 1;
    return m;
}

} // namespace

TEST(SegmentClip, KeepsTheVisiblePartOnePixelInside)
{
    const ClipCase cases[] = {
        {"inside to far right", 200, 200, 1e9, 200.5, true, 200, 200, 499, 200},
        {"inside to far below", 300, 100, 300.5, 1e12, true, 300, 100, 300, 349},
        {"diagonal out of the right edge", 400, 200, 600, 100, true, 400, 200, 499, 150},
        {"diagonal through both sides", 0, 20, 600, 320, true, 101, 70, 499, 270},
        {"horizontal beyond the left", -50, 200, 300, 200, true, 101, 200, 300, 200},
        {"vertical across the plot", 250, -10, 250, 1000, true, 250, 51, 250, 349},
        {"vertical left of the plot", 90, 100, 90, 200, false, 0, 0, 0, 0},
        {"wholly right of the plot", 600, 100, 700, 120, false, 0, 0, 0, 0},
        {"wholly above the plot", 200, 10, 300, 20, false, 0, 0, 0, 0},
        {"passing a corner outside", 90, 60, 110, 40, false, 0, 0, 0, 0},
    };
    for (const ClipCase &c : cases) {
        int a = -1, b = -1, d = -1, e = -1;
        const bool kept = ClipSegment(c.x1, c.y1, c.x2, c.y2, kPlot, a, b, d, e);
        EXPECT_EQ(kept, c.kept) << c.name;
        if (c.kept && kept) {
            EXPECT_EQ(a, c.ox1) << c.name;
            EXPECT_EQ(b, c.oy1) << c.name;
            EXPECT_EQ(d, c.ox2) << c.name;
            EXPECT_EQ(e, c.oy2) << c.name;
            EXPECT_TRUE(InsidePlot(a, b, kPlot) && InsidePlot(d, e, kPlot)) << c.name;
        }
    }
}

TEST(Polyline, RunsAndSymbolsFollowTheValidityBytes)
{
    struct Case
    {
        const char *name;
        std::vector<double> y;
        std::vector<std::uint8_t> yb; // empty: all valid
        int points, runs, symbols;
    };
    // x runs 0, 10, 20, ...: every row its own pixel column.
    const Case cases[] = {
        {"one point: no line, one mark", {5}, {}, 0, 0, 1},
        {"all missing: nothing", {1, 2, 3, 4}, {0, 0, 0, 0}, 0, 0, 0},
        {"straight line", {1, 2, 3, 4}, {}, 4, 1, 4},
        {"missing row is skipped", {1, 2, 3, 4}, {1, 0, 1, 1}, 3, 1, 3},
        {"invalid row breaks the run", {1, 2, 3, 4, 5, 6}, {1, 1, 2, 1, 1, 1}, 5, 2, 5},
        {"lone point between breaks is dropped", {1, 2, 3, 4, 5}, {1, 2, 1, 2, 1}, 0, 0, 3},
    };
    for (const Case &c : cases) {
        std::vector<double> x;
        for (std::size_t i = 0; i < c.y.size(); ++i)
            x.push_back(10.0 * double(i));
        Arrays a(x, c.y);
        if (!c.yb.empty())
            a.yb = c.yb;
        CPolylinePixels cache;
        const int points = BuildPolyline(cache, a.Get(), 0, int(x.size()) - 1, unitMapping(), 1, true, false);
        EXPECT_EQ(points, c.points) << c.name;
        EXPECT_EQ(cache.RunCount(), c.runs) << c.name;
        EXPECT_EQ(int(cache.m_symbolPoints.size()), c.symbols) << c.name;
        int total = 0;
        for (int n : cache.m_runLengths) {
            EXPECT_GE(n, 2) << c.name;
            total += n;
        }
        EXPECT_EQ(total, int(cache.m_points.size())) << c.name;
    }
}

TEST(Polyline, StartsAtAnEarlierRowSoThatTheLineEntersFromTheLeft)
{
    // The span starts at row 3, which is missing: the walk steps back to
    // row 1 (left of the plot) and the line enters at the left edge.
    Arrays a({-50, -20, -10, 5, 30}, {100, 100, 100, 100, 100});
    a.yb = {1, 1, 0, 0, 1};
    CPolylinePixels cache;
    BuildPolyline(cache, a.Get(), 3, 4, unitMapping(), 1, false, false);
    ASSERT_EQ(cache.m_points.size(), 2u);
    EXPECT_EQ(cache.m_points.front(), QPoint(101, 250));
    EXPECT_EQ(cache.m_points.back(), QPoint(130, 250));
}

TEST(Polyline, AMissingLastRowExtendsTheSpan)
{
    Arrays a({0, 100, 200, 300}, {0, 100, 0, 100});
    a.yb = {1, 1, 0, 1};
    CPolylinePixels cache;
    BuildPolyline(cache, a.Get(), 0, 2, unitMapping(), 1, false, false);
    ASSERT_FALSE(cache.m_points.empty());
    EXPECT_EQ(cache.m_points.back(), QPoint(400, 250));
}

TEST(Polyline, TenMillionRowsGiveAFewPointsPerPixelColumn)
{
    const int rows = 10'000'000;
    std::vector<double> x(rows), y(rows);
    for (int i = 0; i < rows; ++i) {
        x[std::size_t(i)] = i;
        y[std::size_t(i)] = std::sin(i * 1e-4) + 0.3 * std::sin(i * 0.37);
    }
    Arrays a(std::move(x), std::move(y));
    CPixelMapping m;
    m.plot = CIntRect{0, 0, 1000, 400};
    m.xMin = 0;
    m.xScale = 1000.0 / rows;
    m.yMin = -1.5;
    m.yScale = 400 / 3.0;
    CPolylinePixels cache;
    const int points = BuildPolyline(cache, a.Get(), 0, rows - 1, m, 1, true, false);
    EXPECT_GE(points, 2000);
    EXPECT_LE(points, 4002);
    EXPECT_EQ(cache.RunCount(), 1);
    EXPECT_LE(cache.m_symbolPoints.size(), 2002u);
    for (const QPoint &p : cache.m_points)
        ASSERT_TRUE(InsidePlot(p.x(), p.y(), m.plot));
}

TEST(Polyline, EachPixelColumnSpansExactlyItsRows)
{
    // Four rows per pixel, many of them right on a column's edge, and
    // pixel widths down to a few rounding steps of X.
    for (double offset : {0.0, 1e9}) {
        std::vector<double> x, y;
        for (int i = 0; i < 1600; ++i) {
            x.push_back(offset + i * 0.25);
            y.push_back(150 + 140 * std::sin(i * 0.05) * std::cos(i * 0.31));
        }
        Arrays a(x, y);
        CPixelMapping m = unitMapping();
        m.xMin = offset;
        CPolylinePixels cache;
        BuildPolyline(cache, a.Get(), 0, int(x.size()) - 1, m, 1, false, false);
        std::map<int, std::pair<int, int>> want, got;
        auto widen = [](std::map<int, std::pair<int, int>> &spans, int px, int py) {
            auto [it, fresh] = spans.emplace(px, std::make_pair(py, py));
            if (!fresh)
                it->second = {std::min(it->second.first, py), std::max(it->second.second, py)};
        };
        for (std::size_t i = 0; i < x.size(); ++i)
            widen(want, kPlot.left + int(std::floor((x[i] - m.xMin) * m.xScale)),
                  kPlot.bottom - int(std::floor((y[i] - m.yMin) * m.yScale)));
        for (const QPoint &p : cache.m_points)
            widen(got, p.x(), p.y());
        EXPECT_EQ(got, want) << offset;
        EXPECT_EQ(cache.RunCount(), 1);
    }
}

TEST(Polyline, CarryingTheWalkOnGivesTheWalkOfAllRows)
{
    // A curve that leaves and re-enters the plot, with several rows per
    // pixel column, a break, and a lone point before the break.
    std::vector<double> x, y;
    for (int i = 0; i < 3000; ++i) {
        x.push_back(i * 0.2 - 50);
        y.push_back(150 + 200 * std::sin(i * 0.01));
    }
    Arrays a(x, y);
    a.yb[1700] = 2;
    a.yb[1702] = 2;
    const CPixelMapping m = unitMapping();
    CPolylinePixels whole;
    BuildPolyline(whole, a.Get(), 0, 2999, m, 1, true, false);
    ASSERT_GE(whole.RunCount(), 2);
    for (int split : {0, 1000, 1001, 1700, 1701, 1702, 2500}) {
        CPolylinePixels part;
        BuildPolyline(part, a.Get(), 0, split, m, 1, true, false);
        int symbolsFrom = -1;
        const int from = ResumePolyline(part, a.Get(), 2999, false, symbolsFrom);
        ASSERT_GE(from, 0) << split;
        EXPECT_EQ(part.m_runLengths, whole.m_runLengths) << split;
        EXPECT_EQ(part.m_points, whole.m_points) << split;
        EXPECT_EQ(part.m_symbolPoints, whole.m_symbolPoints) << split;
        EXPECT_EQ(part.m_lastRow, 2999);
        // Carrying on with no new rows changes nothing.
        EXPECT_EQ(ResumePolyline(part, a.Get(), 2999, false, symbolsFrom), int(part.m_points.size()));
        EXPECT_EQ(part.m_points, whole.m_points) << split;
    }
}

TEST(Polyline, ACurveWithoutGoodRowsStartsWhenOneArrives)
{
    Arrays a({0, 10, 20, 30}, {5, 6, 7, 8});
    a.yb = {0, 0, 1, 1};
    CPolylinePixels cache;
    EXPECT_EQ(BuildPolyline(cache, a.Get(), 0, 1, unitMapping(), 1, false, false), 0);
    int symbolsFrom;
    EXPECT_EQ(ResumePolyline(cache, a.Get(), 3, false, symbolsFrom), 0);
    EXPECT_EQ(cache.m_points, (std::vector<QPoint>{QPoint(120, 343), QPoint(130, 342)}));
}

TEST(Polyline, ArrowTakesTheLastTwoDistinctPoints)
{
    Arrays a({10, 20, 30, 30}, {10, 20, 40, 40});
    CPolylinePixels cache;
    BuildPolyline(cache, a.Get(), 0, 3, unitMapping(), 1, false, true);
    ASSERT_EQ(cache.m_arrowOn, 1);
    EXPECT_EQ(cache.m_arrowTo, QPointF(130, 310));
    EXPECT_EQ(cache.m_arrowFrom, QPointF(120, 330));
}
