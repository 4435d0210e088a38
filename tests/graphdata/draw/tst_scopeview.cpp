// The oscilloscope form of the drawing pass: known values at known pixels
// on the 10 by 8 division screen, channels in state 2, roll mode over rows
// that keep coming, the trigger marks, and the animation cursor with its
// slider.
#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/graphdraw.h"
#include "graphdata/draw/polylinecache.h"
#include "graphdata/draw/scopeview.h"
#include "graphdata/graphcurve.h"
#include "support/languagestring.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <chrono>
#include <memory>
#include <thread>

namespace {

// Plot edges 100..600 by 50..450: 500 by 400 pixels, middle row 250.
const QRect kPlot(QPoint(100, 50), QPoint(600, 450));

// An oscilloscope graph of two channels over time column 0.
std::unique_ptr<CGraphCurve> scopeGraph(double secsPerDiv)
{
    auto g = std::make_unique<CGraphCurve>(2);
    g->m_data.Create(2, 3, 100, 0);
    g->m_data->AsScope()->m_secsPerDiv = secsPerDiv;
    g->m_backColor = 0xFFFFFF;
    bool changed;
    g->AddCurve(1, 0, false, changed);
    g->AddCurve(2, 0, false, changed);
    return g;
}

void append(CGraphCurve &g, double t, double a, double b)
{
    const double row[3] = {t, a, b};
    g.m_data.AppendRows(row, nullptr, 0, 3, g.m_data.RowCount(), 1);
}

QImage draw(CGraphCurve &g, unsigned flags = DrawFull)
{
    static QImage image;
    if (image.isNull()) {
        image = QImage(700, 520, QImage::Format_RGB32);
    }
    if (flags & DrawFull)
        image.fill(Qt::white);
    QPainter p(&image);
    CDrawRequest request;
    request.flags = flags;
    request.target = image.rect();
    request.forcedPlot = kPlot;
    DrawGraph(g, p, request);
    return image;
}

const std::vector<QPoint> &points(const CGraphCurve &g, int curve)
{
    static const std::vector<QPoint> none;
    const auto *cache = static_cast<const CPolylinePixels *>(g.Curve(curve)->LinePixels());
    return cache ? cache->m_points : none;
}

bool has(const std::vector<QPoint> &pts, QPoint p)
{
    return std::find(pts.begin(), pts.end(), p) != pts.end();
}

class ScopeView : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }
};

struct MappingCase
{
    const char *name;
    double secsPerDiv, scale, offset;
    double t;  // after the first row's time 1.0
    double y;
    int dx, dy; // pixels right of the plot's left edge and up from its middle row
};

class ScopeMapping : public ScopeView, public ::testing::WithParamInterface<MappingCase>
{
};

// px = left + floor((t - t0) * 500 / (10 secsPerDiv)),
// py = 250 - floor((y + offset) * 400 / (8 scale)).
TEST_P(ScopeMapping, AValueLandsOnItsPixel)
{
    const MappingCase &c = GetParam();
    auto g = scopeGraph(c.secsPerDiv);
    g->Curve(0)->m_scopeScale = c.scale;
    g->Curve(0)->m_scopeOffset = c.offset;
    append(*g, 1.0, 0, 0);
    append(*g, 1.0 + c.t, c.y, 0);
    draw(*g);
    EXPECT_EQ(g->m_xViewMin, 1.0);
    EXPECT_EQ(g->m_plotRect, QRectToEdges(kPlot));
    const std::vector<QPoint> &pts = points(*g, 0);
    EXPECT_TRUE(has(pts, QPoint(100 + c.dx, 250 - c.dy)))
        << "points " << pts.size() << (pts.empty() ? "" : " last ") << (pts.empty() ? 0 : pts.back().x()) << ","
        << (pts.empty() ? 0 : pts.back().y());
}

INSTANTIATE_TEST_SUITE_P(
    Values, ScopeMapping,
    ::testing::Values(MappingCase{"FirstDivision", 0.5, 1, 0, 0.5, 1, 50, 50},
                      MappingCase{"HalfScreen", 0.125, 2, 0, 0.625, 3, 250, 75},
                      MappingCase{"OffsetLifts", 0.25, 0.5, 1, 1.0, -0.5, 200, 50},
                      MappingCase{"BelowTheMiddle", 2, 4, -2, 10, 0, 250, -25},
                      MappingCase{"LastDivision", 1, 1, 0, 9.9, -4, 495, -200},
                      MappingCase{"TopEdge", 1, 1, 0, 3, 4, 150, 200}),
    [](const auto &info) { return std::string(info.param.name); });

// A channel in state 2 lies flat on its zero line; the other is untouched.
TEST_F(ScopeView, StateTwoDrawsTheChannelAtZero)
{
    auto g = scopeGraph(1);
    g->Curve(0)->m_scopeOffset = 1; // zero line one division up: 50 pixels
    g->m_data->AsScope()->m_channelStates[1] = 2;
    for (int i = 0; i < 10; ++i)
        append(*g, i, std::sin(i), 2.0);
    draw(*g);
    const std::vector<QPoint> &flat = points(*g, 0);
    ASSERT_FALSE(flat.empty());
    for (const QPoint &p : flat)
        EXPECT_EQ(p.y(), 200);
    for (const QPoint &p : points(*g, 1))
        EXPECT_EQ(p.y(), 150);
}

// Roll mode: the screen starts at the first of the last rollLength rows, so
// that the newest row stands at the same place while the rows roll on.
TEST_F(ScopeView, RollModeShowsTheLastRowsAsTheyCome)
{
    auto g = scopeGraph(0.01); // 0.1 s on the screen
    CScopeData_Data &scope = *g->m_data->AsScope();
    scope.m_rollMode = 1;
    scope.m_rollLength = 50; // rows 1 ms apart: half the screen
    int rows = 0;
    for (const int batch : {10, 30, 25, 100, 1}) {
        for (int i = 0; i < batch; ++i, ++rows)
            append(*g, rows * 0.001, (rows % 7) * 0.1, 0);
        draw(*g);
        const int first = std::max(0, rows - 50);
        EXPECT_DOUBLE_EQ(g->m_xViewMin, first * 0.001) << rows;
        const std::vector<QPoint> &pts = points(*g, 0);
        ASSERT_FALSE(pts.empty());
        // the newest row: (rows - 1 - first) ms at 500 pixels per 100 ms
        const int newestX = 100 + int(std::floor((rows - 1 - first) * 0.001 * 500 / 0.1 + 1e-9));
        EXPECT_LE(std::abs(pts.back().x() - newestX), 1) << rows;
        EXPECT_GE(pts.front().x(), 100);
        EXPECT_LE(pts.back().x(), 100 + 250);
    }
}

// Without roll mode the sweep grows: a pass over the added rows alone
// carries the traces on to the points a full pass makes.
TEST_F(ScopeView, AddedRowsDrawnAloneMatchAFullPass)
{
    auto g = scopeGraph(0.01);
    for (int i = 0; i < 40; ++i)
        append(*g, i * 0.001, std::sin(i * 0.3), std::cos(i * 0.2));
    draw(*g);
    for (int i = 40; i < 90; ++i)
        append(*g, i * 0.001, std::sin(i * 0.3), std::cos(i * 0.2));
    QImage image(700, 520, QImage::Format_RGB32);
    QPainter p(&image);
    CDrawRequest request;
    request.flags = 0;
    request.target = QRect(0, 0, 700, 520);
    request.forcedPlot = kPlot;
    EXPECT_EQ(DrawGraph(*g, p, request).kind, CDrawResult::Incremental);
    const std::vector<QPoint> added[2] = {points(*g, 0), points(*g, 1)};
    draw(*g);
    for (int c = 0; c < 2; ++c) {
        EXPECT_EQ(added[c], points(*g, c)) << c;
        EXPECT_GT(added[c].size(), 80u);
    }
}

TEST_F(ScopeView, MarksStandAtTheZeroLinesAndTheTrigger)
{
    auto g = scopeGraph(1);
    g->Curve(0)->m_color = 0x0000FF; // red
    g->Curve(1)->m_color = 0xFF0000; // blue
    g->Curve(1)->m_scopeOffset = -2; // two divisions down: row 350
    CScopeData_Data &scope = *g->m_data->AsScope();
    scope.m_triggerChannel = 1;
    scope.m_triggerLevel = 2; // two divisions up on a scale of 1: row 150
    for (int i = 0; i < 5; ++i)
        append(*g, i, 0, 0);
    const QImage image = draw(*g);
    EXPECT_EQ(image.pixel(97, 250), qRgb(255, 0, 0));
    EXPECT_EQ(image.pixel(97, 350), qRgb(0, 0, 255));
    EXPECT_EQ(image.pixel(603, 150), qRgb(255, 0, 0));
    EXPECT_NE(image.pixel(603, 250), qRgb(255, 0, 0));
}

// The animation cursor holds the rows back at the current one; the slider's
// knob and the row under a pixel of its track agree.
TEST_F(ScopeView, TheAnimationCursorStopsTheRows)
{
    CGraphCurve g;
    g.m_data.Create(1, 2, 100, 0);
    for (int i = 0; i < 100; ++i) {
        const double row[2] = {double(i), double(i % 10)};
        g.m_data.AppendRows(row, nullptr, 0, 2, i, 1);
    }
    bool changed;
    g.AddCurve(1, 0, false, changed);
    g.FitRanges();
    g.m_displayFlags |= CGraphCurve::DisplayAnimationCursor | CGraphCurve::DisplaySlider;
    for (const int row : {0, 37, 99, 500}) {
        g.m_animationRow = row;
        draw(g);
        const auto *cache = static_cast<const CPolylinePixels *>(g.Curve(0)->LinePixels());
        ASSERT_NE(cache, nullptr);
        EXPECT_EQ(cache->m_lastRow, std::min(row, 99));
        ASSERT_GT(g.m_sliderRect.right, g.m_sliderRect.left);
        EXPECT_EQ(SliderRowAt(g, g.m_sliderRect.left, 100), 0);
        EXPECT_EQ(SliderRowAt(g, g.m_sliderRect.right, 100), 99);
    }
    g.m_displayFlags |= CGraphCurve::DisplaySliderAtEnd;
    EXPECT_EQ(AnimationRow(g, 100), 99);
}

// ---- scope graphs of data at hand -------------------------------------------------

TEST(ScopeStep, RoundsUpToOneTwoOrFive)
{
    const double cases[][2] = {{1, 1},     {1.01, 2}, {2, 2},       {2.5, 5},    {0.3, 0.5}, {7, 10},
                               {0.04, 0.05}, {1e-9, 1e-9}, {123, 200}, {0, 1},      {-3, 1},    {INFINITY, 1}};
    for (const auto &c : cases)
        EXPECT_NEAR(ScopeStep(c[0]), c[1], c[1] * 1e-12) << c[0];
}

// A file shown as a scope: all rows on the 10 divisions, each channel's
// largest magnitude within 4 of them, rows as they were.
TEST_F(ScopeView, DataAtHandBecomeAScopeGraph)
{
    CGraphData data;
    data.Create(1, 3, 0, 0);
    for (int i = 0; i <= 70; ++i) {
        const double row[3] = {i * 0.001, 3.0 * std::sin(i * 0.1), -0.12 * i / 70};
        data.AppendRows(row, nullptr, 0, 3, i, 1);
    }
    std::unique_ptr<CGraphCurve> g(MakeScopeGraph(data));
    ASSERT_TRUE(g->m_data.IsScope());
    EXPECT_EQ(g->m_data.RowCount(), 71);
    EXPECT_DOUBLE_EQ(g->m_data->AsScope()->m_secsPerDiv, 0.01); // 70 ms over 10 divisions
    ASSERT_EQ(g->CurveCount(), 2);
    EXPECT_DOUBLE_EQ(g->Curve(0)->m_scopeScale, 1);   // 3 over 4 divisions
    EXPECT_DOUBLE_EQ(g->Curve(1)->m_scopeScale, 0.05); // 0.12 over 4
    EXPECT_EQ(g->m_data.GetColumn(1)->m_values[5], data.GetColumn(1)->m_values[5]);
    draw(*g);
    for (int c = 0; c < 2; ++c)
        for (const QPoint &p : points(*g, c))
            EXPECT_TRUE(kPlot.contains(p)) << c;
}

// The live writer feeds a data set while roll mode draws its last rows.
TEST_F(ScopeView, RollModeKeepsUpWithTheWriter)
{
    auto g = std::make_unique<CGraphCurve>(2);
    g->m_data.Create(2, 5, 1000, 0);
    CScopeData_Data &scope = *g->m_data->AsScope();
    scope.m_secsPerDiv = 0.001;
    scope.m_rollMode = 1;
    scope.m_rollLength = 500;
    bool changed;
    for (int c = 1; c <= 4; ++c)
        g->AddCurve(c, 0, false, changed);
    CScopeSignalWriter writer(g->m_data, 50000);
    writer.Start();
    int drawn = 0;
    // frames drawn while the writer appends, however fast either goes
    for (int wait = 0; wait < 4000 && (drawn < 5 || writer.RowsWritten() < 3000); ++wait) {
        draw(*g);
        ++drawn;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    writer.Stop();
    const int rows = g->m_data.RowCount();
    ASSERT_GE(rows, 3000);
    draw(*g);
    // the screen starts 500 rows before the end, whose times the writer set
    double expected[5];
    CScopeSignalWriter::SignalRow(rows - 500, 50000, 4, expected);
    EXPECT_DOUBLE_EQ(g->m_xViewMin, expected[0]);
    CScopeSignalWriter::SignalRow(rows - 1, 50000, 4, expected);
    EXPECT_DOUBLE_EQ(g->m_data.GetColumn(0)->m_values[rows - 1], expected[0]);
    EXPECT_DOUBLE_EQ(g->m_data.GetColumn(2)->m_values[rows - 1], expected[2]);
}

} // namespace
