// The window's view operations on a graph, without a window.
#include "graphwnd/graphviewops.h"
#include "graphwnd/trackedits.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>

namespace {

// x 0..100 and y = x on one axis, a plot of 500 by 300 pixels.
struct Graph
{
    CGraphCurve g;
    Graph()
    {
        g.m_data.Create(1, 2, 101, 0);
        std::vector<double> rows;
        for (int i = 0; i <= 100; ++i) {
            rows.push_back(i);
            rows.push_back(i);
        }
        g.m_data.AppendRows(rows.data(), nullptr, 0, 2, 0, 101);
        bool changed;
        g.AddCurve(1, 0, false, changed);
        g.m_plotRect = CIntRect{50, 20, 550, 320};
        g.m_xViewMin = 0;
        g.m_xViewMax = 100;
        g.m_xTick = 10;
        g.Range(0)->m_viewMin = 0;
        g.Range(0)->m_viewMax = 100;
        g.Range(0)->m_tick = 10;
    }
};

} // namespace

TEST(ViewOps, WidenByTenthKeepsOldEndsWhenTheResultIsNotFinite)
{
    struct Case
    {
        double low, high, wantLow, wantHigh;
    };
    const double big = std::numeric_limits<double>::max();
    const Case cases[] = {
        {0, 10, -1, 11},
        {-5, 5, -6, 6},
        {-big, big, -big, big},                            // the margin overflows: old pair
        {1, std::numeric_limits<double>::infinity(), 1, INFINITY},
        {-DBL_MIN * 0.5, DBL_MIN * 0.25, 0, 0},            // denormal ends become 0
    };
    for (const Case &c : cases) {
        double lo = c.low, hi = c.high;
        WidenByTenth(lo, hi);
        EXPECT_EQ(lo, c.wantLow) << c.low << " " << c.high;
        EXPECT_EQ(hi, c.wantHigh) << c.low << " " << c.high;
    }
}

TEST(ViewOps, TheViewUpdateWidensViewsThatTheDataOutgrow)
{
    Graph t;
    t.g.m_xViewMax = 50; // data reach 100
    t.g.Range(0)->m_viewMin = 10;
    const CStepCounts counts = UpdateView(t.g);
    EXPECT_LE(t.g.m_xViewMin, -10);
    EXPECT_GE(t.g.m_xViewMax, 110);
    EXPECT_LE(t.g.Range(0)->m_viewMin, -10);
    EXPECT_GE(t.g.Range(0)->m_viewMax, 110);
    ASSERT_EQ(counts.size(), 2u);
    EXPECT_EQ(counts[0], std::floor((t.g.m_xViewMax - t.g.m_xViewMin) / t.g.m_xTick));

    // A view that holds the data stays as it is.
    t.g.m_xViewMin = -200;
    t.g.m_xViewMax = 300;
    UpdateView(t.g);
    EXPECT_EQ(t.g.m_xViewMin, -200);
    EXPECT_EQ(t.g.m_xViewMax, 300);
}

TEST(ViewOps, AutoscaleFitsYToThePointsInView)
{
    Graph t;
    t.g.m_xViewMin = 20;
    t.g.m_xViewMax = 40;
    Autoscale(t.g);
    EXPECT_EQ(t.g.m_xViewMin, 20);
    // 18..42 with its margin, its ends on the nice step as in the view update.
    const CGraph_Range &r = *t.g.Range(0);
    EXPECT_GT(r.m_tick, 0);
    EXPECT_LE(r.m_viewMin, 18);
    EXPECT_GT(r.m_viewMin, 18 - r.m_tick);
    EXPECT_GE(r.m_viewMax, 42);
    EXPECT_LT(r.m_viewMax, 42 + r.m_tick);
}

TEST(ViewOps, ZoomAroundKeepsThePointUnderTheMouse)
{
    Graph t;
    const QPoint mouse(150, 95); // x = 20, y = 75
    const double x = XAxisMap(t.g).ToValue(mouse.x()), y = YAxisMap(t.g, 0).ToValue(mouse.y());
    ZoomAround(t.g, mouse, 0.9, {10, 10});
    EXPECT_NEAR(t.g.m_xViewMax - t.g.m_xViewMin, 90, 1e-9);
    EXPECT_NEAR(XAxisMap(t.g).ToValue(mouse.x()), x, 1e-9);
    EXPECT_NEAR(YAxisMap(t.g, 0).ToValue(mouse.y()), y, 1e-9);
    // 9 steps of 10 fall below the stored 10: the X tick halves; Y keeps it.
    EXPECT_EQ(t.g.m_xTick, 5);
    EXPECT_EQ(t.g.Range(0)->m_tick, 10);
    for (int i = 0; i < 9; ++i)
        ZoomAround(t.g, mouse, 1.1, {10, 10});
    EXPECT_EQ(t.g.Range(0)->m_tick, 20); // more than twice the stored steps
}

TEST(ViewOps, PixelRectanglesAndPansMapThroughThePlot)
{
    Graph t;
    ZoomToPixels(t.g, QRect(QPoint(100, 170), QPoint(300, 320)), true, false);
    EXPECT_NEAR(t.g.m_xViewMin, 10, 1e-9);
    EXPECT_NEAR(t.g.m_xViewMax, 50, 1e-9);
    EXPECT_EQ(t.g.Range(0)->m_viewMax, 100);
    ZoomToPixels(t.g, QRect(QPoint(100, 170), QPoint(300, 320)), false, true);
    EXPECT_NEAR(t.g.Range(0)->m_viewMin, 0, 1e-9);
    EXPECT_NEAR(t.g.Range(0)->m_viewMax, 50, 1e-9);

    Graph p;
    PanByPixels(p.g, QPoint(50, -30), true, true);
    EXPECT_NEAR(p.g.m_xViewMin, -10, 1e-9);
    EXPECT_NEAR(p.g.Range(0)->m_viewMin, -10, 1e-9);
    PanByPixels(p.g, QPoint(50, 30), true, true, -1); // X alone
    EXPECT_NEAR(p.g.m_xViewMin, -20, 1e-9);
    EXPECT_NEAR(p.g.Range(0)->m_viewMin, -10, 1e-9);
}

// What the zoom frame and the dragged title box end in.
TEST(TrackEdits, ZoomFramesAndLegendMoves)
{
    const struct
    {
        QRect frame;
        bool zooms;
        double xMin, xMax; // the new X view when it zooms
    } frames[] = {
        {QRect(QPoint(100, 50), QPoint(300, 200)), true, 10, 50},
        {QRect(QPoint(0, 0), QPoint(150, 100)), true, 0, 20},      // cut at the plot's corner
        {QRect(QPoint(100, 50), QPoint(101, 200)), false, 0, 0},   // too narrow
        {QRect(QPoint(600, 50), QPoint(700, 200)), false, 0, 0},   // beside the plot
    };
    for (const auto &c : frames) {
        Graph t;
        EXPECT_EQ(ZoomToFrame(t.g, c.frame), c.zooms) << c.frame.left() << "," << c.frame.top();
        EXPECT_NEAR(t.g.m_xViewMin, c.zooms ? c.xMin : 0, 1e-9);
        EXPECT_NEAR(t.g.m_xViewMax, c.zooms ? c.xMax : 100, 1e-9);
    }

    const struct
    {
        int left, offset;
    } moves[] = {{300, 5000}, {50, 0}, {-40, 0}, {550, 10000}, {900, 10000}, {175, 2500}};
    for (const auto &m : moves) {
        Graph t;
        EXPECT_TRUE(MoveLegendTo(t.g, QRect(m.left, 0, 40, 12))) << m.left;
        EXPECT_EQ(t.g.m_legendPos, 1);
        EXPECT_EQ(t.g.m_legendOffset, m.offset) << m.left;
        EXPECT_FALSE(MoveLegendTo(t.g, QRect(m.left, 0, 40, 12))) << "no change the second time";
    }
}
