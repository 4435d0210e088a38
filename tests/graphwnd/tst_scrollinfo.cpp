// The scroll-info records of the graph window: setting and reading them
// back, scrolling an axis through them by ticks, and the window's wheel and
// scroll requests going through them.
#include "graphwnd/graphwnd.h"
#include "graphwnd/scrollinfo.h"

#include <QApplication>
#include <QWheelEvent>

#include <gtest/gtest.h>

namespace {

CScrollInfo record(std::uint32_t mask, int min, int max, unsigned page, int pos, int track = 0)
{
    CScrollInfo r;
    r.fMask = mask;
    r.nMin = min;
    r.nMax = max;
    r.nPage = page;
    r.nPos = pos;
    r.nTrackPos = track;
    return r;
}

TEST(ScrollInfo, SetHoldsTheFieldsInRangeAndReadsBackWhatWasSet)
{
    const struct
    {
        const char *what;
        CScrollInfo set;
        bool accepted;
        int min, max;
        unsigned page;
        int pos;
    } cases[] = {
        {"all fields within range", record(SifAll, 0, 1000, 10, 300), true, 0, 1000, 10, 300},
        {"a position past the last page", record(SifPos, 0, 0, 0, 995), true, 0, 1000, 10, 991},
        {"a position below the range", record(SifPos, 0, 0, 0, -4), true, 0, 1000, 10, 0},
        {"only the range: the position follows it", record(SifRange, 0, 100, 0, 0), true, 0, 100, 10, 91},
        {"a page larger than the range", record(SifRange | SifPage, 5, 9, 50, 0), true, 5, 9, 5, 5},
        {"a page of 0 still leaves the end", record(SifPage | SifPos, 0, 0, 0, 1000), true, 0, 1000, 0, 1000},
        {"a reversed range is refused", record(SifRange | SifPos, 10, 5, 1, 7), false, 0, 1000, 10, 500},
        {"nothing in the mask", record(0, 1, 2, 3, 4), true, 0, 1000, 10, 500},
    };
    for (const auto &c : cases) {
        CScrollInfo r = record(SifAll, 0, 1000, 10, 500);
        EXPECT_EQ(ApplyScrollInfo(r, c.set), c.accepted) << c.what;
        CScrollInfo back;
        back.fMask = SifAll;
        ReadScrollInfo(r, back);
        EXPECT_EQ(back.cbSize, 28u) << c.what;
        EXPECT_EQ(back.nMin, c.min) << c.what;
        EXPECT_EQ(back.nMax, c.max) << c.what;
        EXPECT_EQ(back.nPage, c.page) << c.what;
        EXPECT_EQ(back.nPos, c.pos) << c.what;
    }
}

TEST(ScrollInfo, ReadingFillsOnlyTheFieldsAskedFor)
{
    const CScrollInfo from = record(SifAll, 3, 70, 7, 40, 41);
    CScrollInfo out = record(SifPos, -1, -1, 1, -1, -1);
    ReadScrollInfo(from, out);
    EXPECT_EQ(out, record(SifPos, -1, -1, 1, 40, -1));
    out.fMask = SifRange | SifTrackPos;
    ReadScrollInfo(from, out);
    EXPECT_EQ(out, record(SifRange | SifTrackPos, 3, 70, 1, 40, 41));
}

// A graph with X and one Y axis, views 0..100 with a tick of 10, unless told.
struct Views
{
    CGraphCurve g;
    Views(double lo = 0, double hi = 100, double tick = 10)
    {
        g.m_xViewMin = g.Range(0)->m_viewMin = lo;
        g.m_xViewMax = g.Range(0)->m_viewMax = hi;
        g.m_xTick = g.Range(0)->m_tick = tick;
    }
};

TEST(AxisScroll, MovesWholeTicksAndCountsThemInThePosition)
{
    const struct
    {
        int axis, n, moved;
        double low;
    } cases[] = {
        {0, 1, 1, 10}, {0, -3, -3, -30}, {-1, 2, 2, 20}, {0, 50, 10, 100}, // at most the view's span
        {0, -50, -10, -100}, {0, 0, 0, 0}, {3, 1, 0, 0},                   // no such axis
    };
    for (const auto &c : cases) {
        Views v;
        CAxisScroll s;
        const int start = s.m_info.nPos;
        EXPECT_EQ(s.Scroll(v.g, c.axis, c.n), c.moved) << c.axis << ' ' << c.n;
        EXPECT_EQ(s.m_info.nPos, start + c.moved);
        const double lo = c.axis < 0 ? v.g.m_xViewMin : v.g.Range(0)->m_viewMin;
        const double hi = c.axis < 0 ? v.g.m_xViewMax : v.g.Range(0)->m_viewMax;
        EXPECT_EQ(lo, c.low) << c.axis << ' ' << c.n;
        EXPECT_EQ(hi - lo, 100) << c.axis << ' ' << c.n;
    }
}

TEST(AxisScroll, NothingMovesWithoutATickOrAView)
{
    const struct
    {
        double lo, hi, tick;
    } cases[] = {{0, 100, 0}, {0, 100, -1}, {5, 5, 1}, {10, 0, 1}, {0, 0.5, 1}};
    for (const auto &c : cases) {
        Views v(c.lo, c.hi, c.tick);
        CAxisScroll s;
        const int start = s.m_info.nPos;
        EXPECT_EQ(s.Scroll(v.g, 0, 1), 0) << c.lo << ' ' << c.hi << ' ' << c.tick;
        EXPECT_EQ(s.m_info.nPos, start);
        EXPECT_EQ(v.g.Range(0)->m_viewMin, c.lo);
    }
}

TEST(AxisScroll, ForthAndBackReturnsTheVeryView)
{
    // Ends and ticks that are no binary fractions: adding a tick again and
    // again would drift off them.
    const struct
    {
        double lo, hi, tick;
        int steps;
    } cases[] = {{0.1, 0.7, 0.1, 13}, {-3.3, 2.2, 1.1, 40}, {1e-9, 7e-9, 1e-9, 997}, {0, 1, 0.05, 2500}};
    for (const auto &c : cases) {
        Views v(c.lo, c.hi, c.tick);
        CAxisScroll s;
        const int start = s.m_info.nPos;
        for (int i = 0; i < c.steps; ++i)
            s.Scroll(v.g, 0, 1);
        EXPECT_NEAR(v.g.Range(0)->m_viewMin, c.lo + c.steps * c.tick, 1e-9 * std::fabs(c.steps * c.tick));
        for (int i = 0; i < c.steps; ++i)
            s.Scroll(v.g, 0, -1);
        EXPECT_EQ(v.g.Range(0)->m_viewMin, c.lo) << c.steps;
        EXPECT_EQ(v.g.Range(0)->m_viewMax, c.hi) << c.steps;
        // past the end of the record it went on from the middle
        if (c.steps < 490) {
            EXPECT_EQ(s.m_info.nPos, start);
        }
    }
    // ten tenths from 0 make 1, not a hair below it
    Views v(0, 0.5, 0.1);
    CAxisScroll s;
    for (int i = 0; i < 10; ++i)
        s.Scroll(v.g, 0, 1);
    EXPECT_EQ(v.g.Range(0)->m_viewMin, 1.0);
}

TEST(AxisScroll, AViewChangedMeanwhileIsTakenAsItIs)
{
    Views v;
    CAxisScroll s;
    s.Scroll(v.g, 0, 2); // 20..120
    v.g.Range(0)->m_viewMin = 50; // a zoom or a pan
    v.g.Range(0)->m_viewMax = 70;
    v.g.Range(0)->m_tick = 5;
    EXPECT_EQ(s.Scroll(v.g, 0, 1), 1);
    EXPECT_EQ(v.g.Range(0)->m_viewMin, 55);
    EXPECT_EQ(v.g.Range(0)->m_viewMax, 75);
    // another axis takes the record over from where its own view stands
    EXPECT_EQ(s.Scroll(v.g, -1, -1), -1);
    EXPECT_EQ(v.g.m_xViewMin, -10);
}

TEST(AxisScroll, RequestsOfAScrollBar)
{
    const struct
    {
        int code, thumb;
        int pos; // from 500, page 10
        double low;
    } cases[] = {
        {ScrollLineUp, 0, 501, 10},   {ScrollLineDown, 0, 499, -10}, {ScrollPageUp, 0, 510, 100},
        {ScrollPageDown, 0, 490, -100}, {ScrollThumbTrack, 520, 520, 200}, {ScrollThumbPosition, 5000, 991, 4910},
        {ScrollTop, 0, 0, -5000},     {ScrollBottom, 0, 991, 4910},  {ScrollEnd, 0, 500, 0},
    };
    for (const auto &c : cases) {
        Views v;
        CAxisScroll s;
        s.m_info.nPos = 500;
        s.Request(v.g, 0, c.code, c.thumb);
        EXPECT_EQ(s.m_info.nPos, c.pos) << c.code;
        EXPECT_EQ(v.g.Range(0)->m_viewMin, c.low) << c.code;
        EXPECT_EQ(v.g.Range(0)->m_viewMax, c.low + 100) << c.code;
    }
}

TEST(GraphWndScroll, TheWheelAndScrollRequestsGoThroughTheRecords)
{
    CGraphWnd wnd(nullptr, false);
    wnd.resize(400, 300);
    auto *g = new CGraphCurve;
    g->m_xViewMin = g->Range(0)->m_viewMin = 0;
    g->m_xViewMax = g->Range(0)->m_viewMax = 100;
    g->m_xTick = g->Range(0)->m_tick = 10;
    wnd.SetGraphData(g);
    int notes = 0;
    QObject::connect(&wnd, &CGraphWnd::GraphNotify, [&notes](int code, CGraphNotifyRecord *) {
        notes += code == NotifyObjectsChanged ? 1 : 0;
    });
    auto position = [&wnd](int bar) {
        CScrollInfo info;
        info.fMask = SifPos;
        EXPECT_TRUE(wnd.GetScrollInfo(bar, info));
        return info.nPos;
    };
    auto wheel = [&wnd](int delta, Qt::KeyboardModifiers keys) {
        QWheelEvent e(QPointF(100, 100), QPointF(100, 100), QPoint(), QPoint(0, delta), Qt::NoButton, keys,
                      Qt::NoScrollPhase, false);
        QApplication::sendEvent(&wnd, &e);
    };
    const int x0 = position(0), y0 = position(1);
    wheel(240, Qt::NoModifier);
    EXPECT_EQ(position(1), y0 + 2);
    EXPECT_EQ(g->Range(0)->m_viewMin, 20);
    wheel(-120, Qt::ShiftModifier);
    EXPECT_EQ(position(0), x0 - 1);
    EXPECT_EQ(g->m_xViewMin, -10);
    EXPECT_EQ(notes, 1);
    wnd.OnScroll(1, ScrollLineDown);
    wnd.OnScroll(1, ScrollLineDown);
    EXPECT_EQ(position(1), y0);
    EXPECT_EQ(g->Range(0)->m_viewMin, 0);
    wnd.OnScroll(0, ScrollThumbPosition, x0 + 3);
    EXPECT_EQ(g->m_xViewMin, 30);
    EXPECT_EQ(notes, 2);
    wnd.OnScroll(2, ScrollLineUp); // no such bar
    EXPECT_FALSE(wnd.SetScrollInfo(2, CScrollInfo()));
    EXPECT_EQ(notes, 2);
    // a record set by the host is kept, and scrolling goes on from it
    EXPECT_TRUE(wnd.SetScrollInfo(1, record(SifRange | SifPage | SifPos, 0, 100, 20, 50)));
    wnd.OnScroll(1, ScrollPageUp);
    EXPECT_EQ(position(1), 70);
    EXPECT_EQ(g->Range(0)->m_viewMin, 200);
}

TEST(GraphWndScroll, AxisMarginsGoToEveryGraphTheWindowTakes)
{
    CGraphWnd wnd(nullptr, false);
    wnd.SetGraphData(new CGraphCurve);
    wnd.SetAxisMargins(0, 2, 20, 20);
    const CIntRect want{0, 2, 20, 20};
    EXPECT_EQ(wnd.GetGraphData()->m_axisMargins, want);
    wnd.SetGraphData(new CGraphCurve);
    EXPECT_EQ(wnd.GetGraphData()->m_axisMargins, want);
    EXPECT_EQ(wnd.AxisMargins(), want);
}

} // namespace
