// The drawing pass, rendered into images: pixels, the cached polylines and
// the rectangles the pass leaves with the graph.
#include "graphdata/draw/bitmapscreendraw.h"
#include "graphdata/draw/curvepaint.h"
#include "graphdata/draw/drawtools.h"
#include "graphdata/axislabels.h"
#include "graphdata/draw/graphdraw.h"
#include "graphdata/draw/polylinecache.h"
#include "graphdata/graphcurve.h"
#include "support/languagestring.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <QFontMetricsF>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

const std::uint32_t kRed = 0x0000FF, kBlue = 0xFF0000;

// A graph on a white ground with column 0 as X and further columns as given.
struct Plot
{
    CGraphCurve graph;
    QImage image{480, 320, QImage::Format_RGB32};

    explicit Plot(const std::vector<std::vector<double>> &columns)
    {
        const int rows = columns.empty() ? 0 : int(columns[0].size());
        graph.m_data.Create(1, int(columns.size()), rows, 0);
        for (int c = 0; c < int(columns.size()); ++c) {
            graph.m_data.GetColumn(c)->m_name = c == 0 ? QStringLiteral("X") : QStringLiteral("Y%1").arg(c);
            if (rows > 0)
                graph.m_data.AppendRows(columns[std::size_t(c)].data(), nullptr, c, 1, 0, rows);
        }
        graph.m_backColor = 0xFFFFFF;
        graph.m_foreColor = 0;
    }
    CCurveInfo &curve(int column, std::uint32_t color, int axis = 0)
    {
        bool changed;
        const int i = graph.AddCurve(column, axis, false, changed);
        CCurveInfo &c = *graph.Curve(i);
        c.m_color = color;
        return c;
    }
    void view(double x0, double x1, double y0, double y1, int axis = 0)
    {
        graph.m_xViewMin = x0;
        graph.m_xViewMax = x1;
        graph.Range(axis)->m_viewMin = y0;
        graph.Range(axis)->m_viewMax = y1;
    }
    CDrawResult draw(unsigned flags = DrawFull)
    {
        QPainter p(&image);
        CDrawRequest request;
        request.flags = flags;
        request.target = image.rect();
        return DrawGraph(graph, p, request);
    }
    const CPolylinePixels *cache(int curve) const
    {
        return static_cast<const CPolylinePixels *>(graph.Curve(curve)->LinePixels());
    }
    bool is(int x, int y, std::uint32_t color) const
    {
        return QColor(image.pixel(x, y)) == ColorFromRef(color);
    }
    int count(std::uint32_t color, const QRect &within) const
    {
        int n = 0;
        for (int y = within.top(); y <= within.bottom(); ++y)
            for (int x = within.left(); x <= within.right(); ++x)
                n += is(x, y, color) ? 1 : 0;
        return n;
    }
    // Pixels of text in `color` over the white ground: smoothed text mixes
    // the two, so a pixel counts when it lies on the way from white to it.
    int countText(std::uint32_t color, const QRect &within) const
    {
        const QColor ref = ColorFromRef(color);
        const int rc[3] = {ref.red(), ref.green(), ref.blue()};
        int n = 0;
        for (int y = within.top(); y <= within.bottom(); ++y)
            for (int x = within.left(); x <= within.right(); ++x) {
                const QColor c(image.pixel(x, y));
                const int pc[3] = {c.red(), c.green(), c.blue()};
                int k = 0;
                for (int i = 1; i < 3; ++i)
                    if (255 - rc[i] > 255 - rc[k])
                        k = i;
                const double a = double(255 - pc[k]) / (255 - rc[k]);
                if (a < 0.3)
                    continue;
                bool on = true;
                for (int i = 0; i < 3; ++i)
                    on = on && std::abs(pc[i] - (255 * (1 - a) + rc[i] * a)) < 30;
                n += on ? 1 : 0;
            }
        return n;
    }
    QRect plot() const { return EdgesToQRect(graph.m_plotRect); }
};

std::vector<double> ramp(int n, double from = 0, double step = 1)
{
    std::vector<double> v;
    for (int i = 0; i < n; ++i)
        v.push_back(from + i * step);
    return v;
}

class GraphDraw : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }
};

} // namespace

TEST_F(GraphDraw, ConstantCurveOnAnAutoFittedAxisDrawsAtMidHeight)
{
    Plot plot({ramp(50), std::vector<double>(50, 7.5)});
    plot.curve(1, kRed);
    plot.graph.Range(0)->m_layout = CGraph_Range::LayoutAutoFit;
    plot.view(0, 49, 0, 1);
    ASSERT_EQ(plot.draw().kind, CDrawResult::Full);
    const CIntRect r = plot.graph.m_plotRect;
    const int mid = r.bottom - (r.bottom - r.top) / 2;
    const CPolylinePixels *cache = plot.cache(0);
    ASSERT_NE(cache, nullptr);
    ASSERT_FALSE(cache->m_points.empty());
    for (const QPoint &p : cache->m_points)
        EXPECT_EQ(p.y(), mid);
    EXPECT_TRUE(plot.is((r.left + r.right) / 2, mid, kRed));
}

TEST_F(GraphDraw, MissingAndSinglePointCurves)
{
    struct Case
    {
        const char *name;
        std::vector<std::uint8_t> valid;
        int symbol;
        int expectedPixels; // of the curve's colour: 0 none, 1 some
    };
    const Case cases[] = {
        {"all missing", {0, 0, 0, 0, 0}, 2, 0},
        {"one point without symbol", {0, 0, 1, 0, 0}, 0, 0},
        {"one point with symbol", {0, 0, 1, 0, 0}, 2, 1},
    };
    for (const Case &c : cases) {
        Plot plot({ramp(5), ramp(5)});
        plot.graph.m_data.GetColumn(1)->m_valid[0] = c.valid[0];
        for (int i = 0; i < 5; ++i)
            plot.graph.m_data.GetColumn(1)->m_valid[i] = c.valid[std::size_t(i)];
        plot.curve(1, kRed).m_symbol = c.symbol;
        plot.view(0, 4, 0, 4);
        const CDrawResult result = plot.draw();
        const CPolylinePixels *cache = plot.cache(0);
        ASSERT_NE(cache, nullptr) << c.name;
        EXPECT_TRUE(cache->m_points.empty()) << c.name;
        const int pixels = plot.count(kRed, plot.plot());
        if (c.expectedPixels == 0) {
            EXPECT_EQ(pixels, 0) << c.name;
        } else {
            // a 5 by 5 square around the point's place
            const QRect r = plot.plot();
            const QPoint centre(r.left() + r.width() / 2, r.bottom() - r.height() / 2);
            EXPECT_EQ(cache->m_symbolPoints.size(), 1u) << c.name;
            EXPECT_TRUE(plot.is(cache->m_symbolPoints[0].x(), cache->m_symbolPoints[0].y(), kRed)) << c.name;
            EXPECT_LE((cache->m_symbolPoints[0] - centre).manhattanLength(), 2) << c.name;
            EXPECT_GE(pixels, 16) << c.name;
            EXPECT_LE(pixels, 25) << c.name;
        }
        EXPECT_EQ(result.points, int(cache->m_symbolPoints.size()) * (c.symbol ? 1 : 0)) << c.name;
    }
}

TEST_F(GraphDraw, ALineLeavingThePlotEndsOnePixelInside)
{
    Plot plot({{0, 1}, {1, 1e6}});
    plot.curve(1, kRed);
    plot.view(0, 10, 0, 10);
    plot.draw();
    const CPolylinePixels *cache = plot.cache(0);
    ASSERT_EQ(cache->m_points.size(), 2u);
    EXPECT_EQ(cache->m_points.back().y(), plot.graph.m_plotRect.top + 1);
    EXPECT_TRUE(plot.is(cache->m_points.back().x(), cache->m_points.back().y(), kRed));
    EXPECT_FALSE(plot.is(cache->m_points.back().x(), plot.graph.m_plotRect.top - 1, kRed));
}

TEST_F(GraphDraw, InvalidRowsBreakTheLineAndAreReported)
{
    Plot plot({ramp(9), ramp(9)});
    plot.graph.m_data.GetColumn(1)->m_valid[4] = 2;
    plot.graph.m_data.GetColumn(1)->m_hasInvalid = 1;
    plot.curve(1, kRed);
    plot.view(0, 8, 0, 8);
    const CDrawResult result = plot.draw();
    EXPECT_TRUE(result.invalidRows);
    EXPECT_EQ(plot.cache(0)->RunCount(), 2);
}

TEST_F(GraphDraw, TheCacheIsReusedUntilTheViewChanges)
{
    Plot plot({ramp(1000), ramp(1000, 0, 0.5)});
    plot.curve(1, kRed);
    plot.view(0, 999, 0, 500);
    plot.draw();
    const CPolylinePixels *first = plot.cache(0);
    ASSERT_NE(first, nullptr);
    plot.draw();
    EXPECT_EQ(plot.cache(0), first);
    plot.view(0, 500, 0, 500);
    plot.draw();
    EXPECT_NE(plot.cache(0), first);
    const CPolylinePixels *second = plot.cache(0);
    plot.graph.Range(0)->m_viewMax = 250;
    plot.draw();
    EXPECT_NE(plot.cache(0), second);
    EXPECT_EQ(plot.cache(0)->m_mapping.yScale, (plot.graph.m_plotRect.bottom - plot.graph.m_plotRect.top) / 250.0);
}

TEST_F(GraphDraw, RowsAddedLaterAreDrawnIncrementally)
{
    Plot plot({ramp(100), ramp(100)});
    plot.graph.m_data->m_ordered = 1;
    plot.curve(1, kRed);
    plot.view(0, 200, 0, 200);
    EXPECT_EQ(plot.draw().kind, CDrawResult::Full);
    const CPolylinePixels *cache = plot.cache(0);
    const QPoint oldEnd = cache->m_points.back();
    // Nothing new: nothing is drawn.
    EXPECT_EQ(plot.draw(0).kind, CDrawResult::Nothing);

    std::vector<double> rows;
    for (int i = 100; i < 150; ++i) {
        rows.push_back(i);
        rows.push_back(i);
    }
    plot.graph.m_data.AppendRows(rows.data(), nullptr, 0, 2, 100, 50);
    const CDrawResult result = plot.draw(0);
    EXPECT_EQ(result.kind, CDrawResult::Incremental);
    EXPECT_EQ(plot.cache(0), cache);
    EXPECT_EQ(cache->m_lastRow, 149);
    EXPECT_GT(result.points, 1);
    EXPECT_LT(result.points, int(cache->m_points.size()));
    const QPoint newEnd = cache->m_points.back();
    EXPECT_GT(newEnd.x(), oldEnd.x());
    EXPECT_TRUE(plot.is(newEnd.x(), newEnd.y(), kRed));

    // A full pass afterwards finds the cache valid and keeps it.
    plot.draw();
    EXPECT_EQ(plot.cache(0), cache);
    // A changed generation asks for a full pass.
    plot.graph.m_data->m_generation++;
    EXPECT_EQ(plot.draw(0).kind, CDrawResult::Full);
}

TEST_F(GraphDraw, MessagesStandInForAPlot)
{
    {
        Plot plot({ramp(3), ramp(3)});
        EXPECT_EQ(plot.draw().kind, CDrawResult::Message); // no curves
        EXPECT_GT(plot.countText(0, plot.image.rect().adjusted(100, 120, -100, -120)), 20);
    }
    {
        Plot plot({ramp(3), ramp(3)});
        plot.curve(1, kRed);
        plot.view(0, 2, 0, 2);
        plot.graph.m_data->m_dataFlags |= CGraphData_Data::NoData;
        plot.graph.m_data->m_messageText = QStringLiteral("Waiting for the simulation");
        EXPECT_EQ(plot.draw().kind, CDrawResult::Message);
        EXPECT_EQ(plot.count(kRed, plot.image.rect()), 0);
        EXPECT_GT(plot.countText(0, plot.image.rect()), 20);
    }
    {
        Plot plot({ramp(3), ramp(3)});
        plot.curve(1, kRed);
        plot.view(0, 2, 0, 2);
        plot.graph.m_drawLock = 1;
        plot.image.fill(Qt::green);
        EXPECT_EQ(plot.draw().kind, CDrawResult::Nothing);
        EXPECT_EQ(plot.image.pixel(10, 10), QColor(Qt::green).rgb());
    }
}

TEST_F(GraphDraw, TheLegendStandsWhereItsPositionSays)
{
    for (int position = 0; position <= 4; ++position) {
        Plot plot({ramp(20), ramp(20), ramp(20, 20, -1)});
        plot.curve(1, kRed);
        plot.curve(2, kBlue);
        plot.graph.m_title = QStringLiteral("Title");
        plot.graph.m_legendPos = position;
        plot.graph.m_legendOffset = 5000;
        plot.view(0, 19, 0, 20);
        plot.draw();
        const QRect r = plot.plot();
        ASSERT_EQ(plot.graph.m_curveHitRects.size(), 2u) << position;
        const QRect title = EdgesToQRect(plot.graph.m_titleRect);
        for (int i = 0; i < 2; ++i) {
            const QRect hit = EdgesToQRect(plot.graph.m_curveHitRects[std::size_t(i)]);
            EXPECT_FALSE(hit.isEmpty()) << position;
            EXPECT_TRUE(plot.image.rect().contains(hit)) << position;
            switch (position) {
            case 0:
            case 1:
                EXPECT_LT(hit.bottom(), r.top()) << position;
                break;
            case 2:
                EXPECT_GT(hit.top(), r.bottom()) << position;
                break;
            case 3:
                EXPECT_LT(hit.right(), r.left()) << position;
                break;
            default:
                EXPECT_GT(hit.left(), r.right()) << position;
            }
            // the label is written in the curve's colour
            EXPECT_GT(plot.countText(i == 0 ? kRed : kBlue, hit), 5) << position;
        }
        if (position == 1) {
            EXPECT_GE(title.left(), r.left() + r.width() / 2 - 1);
        }
        if (position >= 3) {
            EXPECT_LT(plot.graph.m_curveHitRects[0].bottom, plot.graph.m_curveHitRects[1].top) << position;
        }
    }
}

TEST_F(GraphDraw, BarsStandBesideEachOtherOnTheirRows)
{
    Plot plot({{1, 2, 3}, {4, 6, 8}, {2, 3, 4}});
    plot.curve(1, kRed).m_options |= CCurveBasicInfo::OptionBar;
    plot.curve(2, kBlue).m_options |= CCurveBasicInfo::OptionBar;
    plot.view(0, 4, 0, 10);
    EXPECT_EQ(plot.draw().points, 6);
    const CIntRect r = plot.graph.m_plotRect;
    const double xs = (r.right - r.left) / 4.0, ys = (r.bottom - r.top) / 10.0;
    // Row 2 (x = 2): the first curve's bar left of x, the second's right of it.
    const int x = r.left + int(2 * xs);
    EXPECT_TRUE(plot.is(x - 8, r.bottom - int(5.5 * ys), kRed));
    EXPECT_FALSE(plot.is(x - 8, r.bottom - int(6.5 * ys), kRed));
    EXPECT_TRUE(plot.is(x + 8, r.bottom - int(2.5 * ys), kBlue));
    EXPECT_FALSE(plot.is(x + 8, r.bottom - int(3.5 * ys), kBlue));
    EXPECT_DOUBLE_EQ(BarHalfWidth(2, 3, 2.0), 2.0 / (6 * 3));
    EXPECT_DOUBLE_EQ(BarHalfWidth(1, 21, 2.0), 2.0 / (1 + 42));
    EXPECT_DOUBLE_EQ(BarShift(3, 0, 1.0), -2.2);
    EXPECT_DOUBLE_EQ(BarShift(2, 1, 1.0), 1.1);
}

TEST_F(GraphDraw, SinglePixelCurvesSetOnePixelPerRow)
{
    Plot plot({ramp(5, 1), {1, 2, 3, 4, 5}});
    plot.curve(1, kRed).m_symbol = SymbolPixel;
    plot.view(0, 6, 0, 6);
    EXPECT_EQ(plot.draw().points, 5);
    EXPECT_EQ(plot.count(kRed, plot.plot()), 5);
    EXPECT_EQ(plot.graph.Curve(0)->LinePixels(), nullptr);
}

TEST_F(GraphDraw, AxesStackOutsideThePlot)
{
    Plot plot({ramp(20), ramp(20), ramp(20, 1000, 50)});
    plot.curve(1, kRed);
    CCurveInfo &second = plot.curve(2, kBlue);
    second.m_yAxisIndex = plot.graph.AddRange(&second);
    plot.graph.AddRange();
    plot.graph.Range(2)->m_axisSide = 2;
    plot.graph.FitRanges();
    plot.draw();
    const QRect r = plot.plot();
    const QRect a0 = EdgesToQRect(plot.graph.Range(0)->m_areaRect);
    const QRect a1 = EdgesToQRect(plot.graph.Range(1)->m_areaRect);
    const QRect a2 = EdgesToQRect(plot.graph.Range(2)->m_areaRect);
    EXPECT_LE(a0.right(), r.left());
    EXPECT_GE(a1.left(), r.right());
    EXPECT_LT(a2.right(), a0.left());
    EXPECT_GE(a2.left(), 0);
    EXPECT_LE(a1.right(), plot.image.width());
}

TEST_F(GraphDraw, LogarithmicAxesMapDecades)
{
    Plot plot({{1, 10, 100}, {1, 10, 100}});
    plot.graph.m_xLog = 1;
    plot.graph.Range(0)->m_logScale = 1;
    plot.curve(1, kRed);
    plot.view(0, 2, 0, 2); // log10 units
    plot.draw();
    const CIntRect r = plot.graph.m_plotRect;
    const CPolylinePixels *cache = plot.cache(0);
    ASSERT_GE(cache->m_points.size(), 2u);
    EXPECT_EQ(cache->m_points.front(), QPoint(r.left, r.bottom));
    EXPECT_EQ(cache->m_points.back(), QPoint(r.right, r.top));
    const QPoint middle((r.left + r.right) / 2, (r.top + r.bottom) / 2);
    EXPECT_GE(plot.count(kRed, QRect(middle - QPoint(1, 1), QSize(3, 3))), 1);
}

TEST_F(GraphDraw, SlicesAndStripsKeepEachCurveInItsBand)
{
    for (int mode = 0; mode < 2; ++mode) {
        Plot plot({ramp(30), ramp(30), ramp(30, 100, -3), std::vector<double>(30, 1)});
        for (int c = 1; c <= 3; ++c)
            plot.curve(c, c == 1 ? kRed : c == 2 ? kBlue : 0x00A000);
        plot.view(0, 29, 0, 1);
        if (mode == 0)
            plot.graph.Range(0)->m_layout = CGraph_Range::LayoutSlices;
        else
            plot.graph.m_viewKind = 3;
        plot.draw();
        const CIntRect r = plot.graph.m_plotRect;
        const double band = (r.bottom - r.top) / 3.0;
        for (int c = 0; c < 3; ++c) {
            const CPolylinePixels *cache = plot.cache(c);
            ASSERT_FALSE(cache->m_points.empty());
            for (const QPoint &p : cache->m_points) {
                EXPECT_GE(p.y(), r.top + int(c * band) - 1) << mode << " " << c;
                EXPECT_LE(p.y(), r.top + int((c + 1) * band) + 1) << mode << " " << c;
            }
        }
    }
}

TEST_F(GraphDraw, TheBoxViewDrawsRibbons)
{
    Plot plot({ramp(30), ramp(30), ramp(30, 30, -1)});
    plot.curve(1, kRed);
    plot.curve(2, kBlue);
    plot.graph.m_viewKind = 1;
    plot.view(0, 29, 0, 30);
    const CDrawResult result = plot.draw();
    // one quadrilateral between each two points of each curve's line
    EXPECT_GE(result.points, 2 * 2);
    int reddish = 0;
    for (int y = 0; y < plot.image.height(); ++y)
        for (int x = 0; x < plot.image.width(); ++x) {
            const QColor c(plot.image.pixel(x, y));
            reddish += c.red() > 180 && c.green() < 140 && c.blue() < 140 ? 1 : 0;
        }
    EXPECT_GT(reddish, 100);
}

TEST_F(GraphDraw, AnXYCurveEndsInAnArrow)
{
    Plot plot({ramp(3)});
    const double pairs[] = {1, 1, 2, 3, 4, 4};
    const int i = plot.graph.AddOwnCurve(QStringLiteral("X"), QStringLiteral("Y"), pairs, 3, false);
    plot.graph.Curve(i)->m_color = kRed;
    plot.graph.Curve(i)->m_specialDraw = CCurveBasicInfo::SpecialArrow;
    plot.view(0, 5, 0, 5);
    plot.draw();
    const CPolylinePixels *cache = plot.cache(i);
    ASSERT_EQ(cache->m_arrowOn, 1);
    const CIntRect r = plot.graph.m_plotRect;
    const double xs = (r.right - r.left) / 5.0;
    EXPECT_NEAR(cache->m_arrowTo.x(), r.left + 4 * xs, 1e-9);
    // the head is filled a few pixels back along the line
    const QPointF back = cache->m_arrowTo + (cache->m_arrowFrom - cache->m_arrowTo) * (4.0 / QLineF(cache->m_arrowFrom, cache->m_arrowTo).length());
    EXPECT_TRUE(plot.is(int(back.x()), int(back.y()), kRed));
}

TEST(BitmapScreenDraw, KeepsALargeEnoughImageAndCopiesTheRectangle)
{
    CBitmapScreenDraw store;
    QImage screen(200, 100, QImage::Format_RGB32);
    screen.fill(Qt::white);
    {
        QPainter target(&screen);
        CDC_BitmapScreenDraw dc(store, target, QRect(50, 20, 100, 60));
        dc.Painter().fillRect(QRect(50, 20, 100, 60), Qt::white);
        dc.Painter().fillRect(QRect(60, 30, 10, 10), Qt::red);
    }
    EXPECT_EQ(store.m_width, 100);
    EXPECT_EQ(QColor(screen.pixel(65, 35)), QColor(Qt::red));
    const qint64 key = store.m_image.cacheKey();
    {
        QPainter target(&screen);
        CDC_BitmapScreenDraw dc(store, target, QRect(0, 0, 80, 40));
        dc.Painter().fillRect(QRect(0, 0, 80, 40), Qt::blue);
    }
    EXPECT_EQ(store.m_image.cacheKey() >> 32, key >> 32); // the same image
    EXPECT_EQ(QColor(screen.pixel(79, 39)), QColor(Qt::blue));
    EXPECT_EQ(QColor(screen.pixel(81, 41)), QColor(Qt::white));
    {
        QPainter target(&screen);
        CDC_BitmapScreenDraw dc(store, target, QRect(0, 0, 200, 100));
    }
    EXPECT_EQ(store.m_width, 200);
    EXPECT_EQ(store.m_useCount, 0);
}

TEST_F(GraphDraw, TheOverviewShowsAllRowsOverTheFullRanges)
{
    Plot plot({ramp(100), ramp(100, 0, 2)});
    plot.curve(1, kRed).m_lineThickness = 4;
    plot.graph.m_xFullMin = 0;
    plot.graph.m_xFullMax = 99;
    plot.graph.Range(0)->m_fullMin = 0;
    plot.graph.Range(0)->m_fullMax = 198;
    plot.view(40, 60, 80, 120); // the window's view: the overview ignores it
    plot.graph.m_lastDrawnRow = 7;
    EXPECT_EQ(plot.draw(DrawFull | DrawOverview).kind, CDrawResult::Full);
    const auto *cache = static_cast<const CPolylinePixels *>(plot.graph.Curve(0)->OverviewPixels());
    ASSERT_NE(cache, nullptr);
    EXPECT_EQ(plot.graph.Curve(0)->LinePixels(), nullptr);
    EXPECT_EQ(cache->m_firstRow, 0);
    EXPECT_EQ(cache->m_lastRow, 99);
    // corner to corner of the image, inside a frame of two pixels
    EXPECT_EQ(cache->m_points.front(), QPoint(1, plot.image.height() - 3));
    EXPECT_EQ(cache->m_points.back(), QPoint(plot.image.width() - 3, 1));
    // one pixel wide, whatever the curve's thickness
    const int y = plot.image.height() / 2;
    int wide = 0;
    for (int x = 0; x < plot.image.width(); ++x)
        wide += plot.is(x, y, kRed) ? 1 : 0;
    EXPECT_LE(wide, 2);
    EXPECT_EQ(plot.graph.m_lastDrawnRow, 7); // the window's incremental state stays
}

namespace {

// The labels of an axis that the painter keeps: X labels from the left,
// one that would come within 2 pixels of the last is left out; Y labels
// from the bottom, one that would overlap the last is left out.
std::vector<double> paintedLabels(const CAxisTicks &ticks, double lo, double hi, int from, int to, bool xAxis,
                                  const QFontMetricsF &fm, int targetRight)
{
    std::vector<double> kept;
    const double scale = std::abs(to - from) / (hi - lo);
    double last = xAxis ? -1e9 : 1e9;
    for (int i = 0; i < int(ticks.labelAt.size()); ++i) {
        const double v = ticks.labelAt[std::size_t(i)];
        if (xAxis) {
            const int x = from + int(std::floor((v - lo) * scale));
            const double w = fm.horizontalAdvance(ticks.labels[i]);
            const double left = std::max(0.0, XLabelLeft(x, w, targetRight));
            if (left < last + 2)
                continue;
            last = left + w;
        } else {
            const int y = from - int(std::floor((v - lo) * scale));
            const double top = y - fm.height() / 2;
            if (top + fm.height() > last)
                continue;
            last = top;
        }
        kept.push_back(v);
    }
    return kept;
}

} // namespace

// Log axes fitted to 1..1e7 and 1e-6..1e-3 end on the data's decades, and
// every decade keeps its label however crowded the axis, in windows of
// several sizes.
TEST_F(GraphDraw, LogAxesEndOnTheDataAndKeepEveryDecadeLabel)
{
    const struct
    {
        double from, to; // data extent
    } extents[] = {{1, 1e7}, {1e-6, 1e-3}, {1e-6, 1e-4}};
    // the smallest still has room for eight decade labels on each axis
    const QSize sizes[] = {{300, 200}, {360, 240}, {480, 320}, {900, 600}};
    for (const auto &e : extents) {
        std::vector<double> values;
        const double l0 = std::log10(e.from), l1 = std::log10(e.to);
        for (int i = 0; i <= 70; ++i)
            values.push_back(std::pow(10.0, l0 + (l1 - l0) * i / 70));
        for (const QSize &size : sizes) {
            Plot plot({values, values});
            plot.image = QImage(size, QImage::Format_RGB32);
            plot.graph.m_xLog = 1;
            plot.graph.Range(0)->m_logScale = 1;
            plot.curve(1, kRed);
            plot.graph.FitRanges();
            const double decades[2][2] = {{plot.graph.m_xViewMin, plot.graph.m_xViewMax},
                                          {plot.graph.Range(0)->m_viewMin, plot.graph.Range(0)->m_viewMax}};
            for (const auto &d : decades) {
                EXPECT_NEAR(d[0], l0, 1e-9) << e.from << " " << e.to; // no empty decade below
                EXPECT_NEAR(d[1], l1, 1e-9) << e.from << " " << e.to; // nor above
            }
            plot.draw();
            const CGraphLayout L = LayoutFor(plot.graph, plot.image.rect());
            ASSERT_EQ(L.yAxes.size(), 1u);
            const QFontMetricsF xfm(L.xFont), yfm(L.yAxes[0].font);
            const std::vector<double> xs =
                paintedLabels(L.xTicks, plot.graph.m_xViewMin, plot.graph.m_xViewMax, L.plot.left, L.plot.right,
                              true, xfm, plot.image.rect().right());
            const std::vector<double> ys =
                paintedLabels(L.yAxes[0].ticks, plot.graph.Range(0)->m_viewMin, plot.graph.Range(0)->m_viewMax,
                              L.plot.bottom, L.plot.top, false, yfm, 0);
            for (int decade = int(std::lround(l0)); decade <= int(std::lround(l1)); ++decade) {
                auto has = [decade](const std::vector<double> &at) {
                    return std::any_of(at.begin(), at.end(), [decade](double v) { return std::fabs(v - decade) < 1e-9; });
                };
                EXPECT_TRUE(has(xs)) << "X label 1e" << decade << " at " << size.width() << "x" << size.height();
                EXPECT_TRUE(has(ys)) << "Y label 1e" << decade << " at " << size.width() << "x" << size.height();
            }
        }
    }
}

// The legend above and below the plot with 1 to 10 Y axes beside it, in
// windows of several widths and heights: every entry stays inside the
// window and off the plot, and the plot keeps half the window's height.
TEST_F(GraphDraw, TheLegendStaysInItsRoomWhateverTheAxes)
{
    const QSize sizes[] = {{260, 300}, {400, 300}, {640, 300}, {900, 400}, {400, 160}};
    for (int axes = 1; axes <= 10; ++axes) {
        for (const QSize &size : sizes) {
            for (int position : {0, 1, 2}) {
                std::vector<std::vector<double>> columns{ramp(20)};
                for (int a = 0; a < axes; ++a)
                    columns.push_back(ramp(20, 1000.0 * (a + 1), 37.5 * (a + 1)));
                Plot plot(columns);
                plot.image = QImage(size, QImage::Format_RGB32);
                for (int a = 0; a < axes; ++a) {
                    CCurveInfo &c = plot.curve(a + 1, a % 2 ? kBlue : kRed);
                    c.m_colLabel = QStringLiteral("Pressure in chamber %1").arg(a + 1);
                    if (a > 0) {
                        c.m_yAxisIndex = plot.graph.AddRange(&c);
                        plot.graph.Range(c.m_yAxisIndex)->m_axisSide = a % 2 ? -(a + 1) / 2 : a / 2 + 1;
                    }
                }
                plot.graph.m_legendPos = position;
                plot.graph.m_legendOffset = 3000;
                plot.graph.FitRanges();
                plot.image.fill(Qt::white);
                plot.draw();
                const QRect r = plot.plot();
                const std::string where = std::to_string(axes) + " axes, " + std::to_string(size.width()) + "x" +
                                          std::to_string(size.height()) + ", position " + std::to_string(position);
                int shown = 0;
                for (const CIntRect &edges : plot.graph.m_curveHitRects) {
                    if (edges == CIntRect())
                        continue; // left out for want of room
                    const QRect hit = EdgesToQRect(edges);
                    ++shown;
                    EXPECT_TRUE(plot.image.rect().contains(hit)) << where;
                    if (position == 2)
                        EXPECT_GT(hit.top(), r.bottom()) << where;
                    else
                        EXPECT_LT(hit.bottom(), r.top()) << where;
                }
                EXPECT_GE(shown, 1) << where;
                EXPECT_GE(r.height(), size.height() / 2 - 1) << where;
            }
        }
    }
}

// Curves over the whole range of doubles, over denormal values, and with
// values that are not finite, on X, on Y and on both: the curve is drawn
// across the plot (with gaps where values are not finite, reported as
// invalid rows) on axes with ticks and distinct labels.
TEST_F(GraphDraw, ExtremeAndNonFiniteValuesStillMakeAPlot)
{
    const double big = 1.7e308, tiny = 4.9e-324;
    const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    // ten rising values from lo to hi, without forming hi - lo
    auto spread = [](double lo, double hi) {
        std::vector<double> v;
        for (int i = 0; i < 10; ++i)
            v.push_back(lo * (1 - i / 9.0) + hi * (i / 9.0));
        return v;
    };
    const std::vector<double> ordinaryX = ramp(10), ordinaryY = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3};
    const std::vector<double> allY = {-big, big, -big / 2, big / 3, 0, -big, big, 1, -1, big};
    const std::vector<double> denormalY = {1e-310, 3e-310, 2e-310, 5e-310, 4e-310, 1e-310, 2e-310, 5e-310, 3e-310, 4e-310};
    const struct
    {
        const char *name;
        std::vector<double> x, y;
        bool invalid;
    } cases[] = {
        {"all of the doubles", ordinaryX, allY, false},
        {"denormals", ordinaryX, {tiny, 3 * tiny, 10 * tiny, 2 * tiny, 7 * tiny, 20 * tiny, 4 * tiny, tiny, 9 * tiny, 5 * tiny}, false},
        {"denormals round zero", ordinaryX, {-5e-320, 4e-320, -3e-320, 2e-320, 0, 1e-320, -1e-320, 3e-320, -4e-320, 5e-320}, false},
        {"one value far out", ordinaryX, {1, 2, 1e300, 3, 2, 1, 2, 3, 2, 1}, false},
        {"infinities and a NaN", ordinaryX, {1, 2, inf, 3, 2, -inf, 2, nan, 2, 1}, true},
        {"overflow in a file", ordinaryX, {1, 2, 1e308 * 10, 3, 2, 1, 2, 3, 2, 1}, true},
        {"X over all of the doubles", spread(-big, big), ordinaryY, false},
        {"X from 0 to the largest double", spread(0, big), ordinaryY, false},
        {"X denormal", spread(1e-310, 5e-310), ordinaryY, false},
        {"X denormal round zero", spread(-5e-320, 5e-320), ordinaryY, false},
        {"X and Y over all of the doubles", spread(-big, big), allY, false},
        {"X and Y denormal", spread(1e-310, 5e-310), denormalY, false},
        {"X over all of the doubles, Y denormal", spread(-big, big), denormalY, false},
    };
    for (const auto &c : cases) {
        Plot plot({c.x, c.y});
        plot.curve(1, kRed).m_symbol = SymbolSquare;
        plot.graph.FitRanges();
        plot.image.fill(Qt::white);
        const CDrawResult result = plot.draw();
        EXPECT_EQ(result.kind, CDrawResult::Full) << c.name;
        EXPECT_EQ(result.invalidRows, c.invalid) << c.name;
        const CGraph_Range &r = *plot.graph.Range(0);
        EXPECT_TRUE(std::isfinite(r.m_viewMin) && std::isfinite(r.m_viewMax) && r.m_viewMax > r.m_viewMin) << c.name;
        EXPECT_TRUE(std::isfinite(plot.graph.m_xViewMin) && std::isfinite(plot.graph.m_xViewMax) &&
                    plot.graph.m_xViewMax > plot.graph.m_xViewMin)
            << c.name;
        // every finite value has its mark in the plot, and the marks run
        // across it: each third of the plot's width holds some
        int finite = 0;
        for (double v : c.y)
            finite += std::isfinite(v) ? 1 : 0;
        const QRect inside = plot.plot();
        EXPECT_GE(plot.count(kRed, inside), finite * 9) << c.name << " " << r.m_viewMin << " " << r.m_viewMax;
        for (int third = 0; third < 3; ++third) {
            const int left = inside.left() + inside.width() * third / 3;
            const QRect part(left, inside.top(), inside.width() / 3, inside.height());
            EXPECT_GE(plot.count(kRed, part), 9) << c.name << ", third " << third;
        }
        const CGraphLayout L = LayoutFor(plot.graph, plot.image.rect());
        ASSERT_EQ(L.yAxes.size(), 1u) << c.name;
        for (const QStringList *labels : {&L.yAxes[0].ticks.labels, &L.xTicks.labels}) {
            const char *axis = labels == &L.xTicks.labels ? " X" : " Y";
            EXPECT_GE(labels->size(), 2) << c.name << axis;
            EXPECT_EQ(QSet<QString>(labels->begin(), labels->end()).size(), labels->size())
                << c.name << axis << " " << qPrintable(labels->join(u' '));
            for (const QString &label : *labels)
                EXPECT_LE(label.size(), 12) << c.name << axis << " " << qPrintable(label); // "-1.5e+308", not 309 digits
        }
    }
}

// A graph without a title starts its legend with the first curve, not
// after the room a title would take.
TEST_F(GraphDraw, AnUntitledLegendIsNotIndented)
{
    for (int position : {0, 2}) {
        Plot plot({ramp(20), ramp(20)});
        plot.curve(1, kRed).m_colLabel = QStringLiteral("Level");
        plot.graph.m_legendPos = position;
        plot.view(0, 19, 0, 20);
        plot.draw();
        const QRect hit = EdgesToQRect(plot.graph.m_curveHitRects.at(0));
        const QFontMetricsF fm(FontFromDescription(plot.graph.m_titleFont, 1));
        // the line sample and its gap stand before the label, nothing more
        EXPECT_LT(hit.left() - plot.plot().left(), 4 * fm.averageCharWidth()) << position;
        EXPECT_GE(hit.left(), plot.plot().left()) << position;
    }
}
