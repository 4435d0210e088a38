#include "graphdata/axislabels.h"
#include "graphdata/axislayout.h"
#include "graphdata/axisrange.h"
#include "graphdata/axisscale.h"
#include "graphdata/axisticks.h"
#include "graphdata/graphcurve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

void expectList(const std::vector<double> &got, const std::vector<double> &want, const char *what)
{
    ASSERT_EQ(got.size(), want.size()) << what;
    for (std::size_t i = 0; i < want.size(); ++i)
        EXPECT_NEAR(got[i], want[i], 1e-9 * std::max(1.0, std::fabs(want[i]))) << what << " [" << i << "]";
}

} // namespace

TEST(AxisScale, NiceStepX)
{
    const struct
    {
        double min, max;
        double step, newMin, newMax;
    } cases[] = {
        {3, 7, 1, 3, 7},            // m = 4
        {0, 1, 0.2, 0, 1},          // m = 1
        {0, 0.1, 0.02, 0, 0.1},     // the fitted 0..0.1 of an empty X axis
        {0.13, 0.97, 0.2, 0, 1},    // m = 8.4: twice the decade step
        {-3.7, 12.2, 5, -5, 15},    // a negative end closer to 0 than a step
        {-12, -3, 2, -12, -2},      // m = 9
        {10, 10.00001, 2e-6, 10, 10.00001},
        {5, 5, 0, 5, 5},            // empty: no step
        {7, 3, 0, 7, 3},            // reversed: no step, ends left
        {100, 100.6, 0.1, 100, 100.6},
    };
    for (const auto &c : cases) {
        double max = c.max, min = c.min;
        const double step = NiceStepX(max, min);
        EXPECT_NEAR(step, c.step, 1e-12 * std::max(1.0, c.step)) << c.min << ".." << c.max;
        EXPECT_NEAR(min, c.newMin, 1e-9) << c.min << ".." << c.max;
        EXPECT_NEAR(max, c.newMax, 1e-9) << c.min << ".." << c.max;
    }
}

TEST(AxisScale, NiceStepY)
{
    const struct
    {
        double min, max;
        double step, newMin, newMax;
    } cases[] = {
        {3, 7, 1, 3, 7},           // m = 4
        {0, 0, 1, -1, 1},          // both 0
        {5, 5, 0.5, 4, 6},         // widened by 20% of |max|
        {-5, -5, 0.5, -6, -4},
        {7, 3, 1, 3, 7},           // reversed ends are exchanged
        {0.13, 0.97, 0.2, 0, 1},   // m = 8.4 (above 7)
        {0, 1.6, 0.25, 0, 1.75},   // m = 1.6
        {0, 1.4, 0.2, 0, 1.4},     // m = 1.4
        {-12, -3, 2, -12, -2},
        {1, 4, 0.5, 1, 4},         // m = 3
    };
    for (const auto &c : cases) {
        double max = c.max, min = c.min;
        const double step = NiceStepY(max, min);
        EXPECT_NEAR(step, c.step, 1e-12) << c.min << ".." << c.max;
        EXPECT_NEAR(min, c.newMin, 1e-9) << c.min << ".." << c.max;
        EXPECT_NEAR(max, c.newMax, 1e-9) << c.min << ".." << c.max;
    }
    double max = kNaN, min = 0;
    NiceStepY(max, min);
    EXPECT_TRUE(std::isnan(max)); // a range that is not finite is left as it is
}

TEST(AxisScale, NiceStepLogAndSnapDown)
{
    const struct
    {
        double max, min;
        int minTicks;
        double step;
    } cases[] = {
        {0.5, 0.1, 5, 0.1},   // |t - m| = 1: the decade step
        {0.9, 0.1, 10, 0.1},  // t > m: divided by floor(10/8 + 0.49) = 1
        {0.12, 0.1, 5, 0.005}, // t > m: 0.01 / floor(2.5 + 0.49)
        {1.0, 0.1, 2, 0.4},   // m > t: 0.1 * floor(4.5 + 0.49)
        {0.12, 0.1, 0, 0.005}, // minTicks below 1 counts as 5
    };
    for (const auto &c : cases)
        EXPECT_NEAR(NiceStepLog(c.max, c.min, c.minTicks), c.step, 1e-12) << c.max << " " << c.minTicks;

    const struct
    {
        double v, step, snapped;
    } snaps[] = {{-0.3, 1, -1}, {-2, 1, -2}, {-2.5, 1, -3}, {2.5, 1, 2}, {0, 1, 0}, {-0.3, 0.1, -0.3}};
    for (const auto &s : snaps)
        EXPECT_NEAR(SnapDown(s.v, s.step), s.snapped, 1e-12) << s.v;
}

TEST(AxisScale, WidenForBars)
{
    const struct
    {
        int bars, rows;
        double span;
        int result;
        double w;
        double widen; // in units of w
    } cases[] = {
        {1, 10, 36, 1, 1, 2},             // span / ((0 + 4) * 10 - 4)
        {2, 10, 56, 1, 1, 3.1},           // 2w + 0 + w + w/10
        {3, 10, 76, 1, 1, 2 + 11.0 / 5},  // 2w + 1 * 11w/5
        {6, 10, 146, 1, 1, 7.5},          // (1 + 14) * 10 - 4; 2w + 2 * 11w/5 + w + w/10
        {0, 10, 10, 0, 1, 0},
        {2, 10, 0, 0, 1, 0},
    };
    for (const auto &c : cases) {
        double min = 100, max = 100 + c.span, w = 0;
        EXPECT_EQ(WidenForBars(c.bars, c.rows, max, min, w), c.result) << c.bars;
        EXPECT_DOUBLE_EQ(w, c.w) << c.bars;
        EXPECT_NEAR(100 - min, c.widen * w, 1e-9) << c.bars;
        EXPECT_NEAR(max - (100 + c.span), c.widen * w, 1e-9) << c.bars;
    }
}

TEST(AxisTicks, LinearTicks)
{
    const struct
    {
        const char *what;
        double min, max, step;
        int labelEvery;
        bool labelsOn;
        std::vector<double> ticks, labels;
        int zeroIndex;
        double stepUsed;
    } cases[] = {
        {"plain", 0, 1, 0.2, 1, true, {0, 0.2, 0.4, 0.6, 0.8, 1}, {0, 0.2, 0.4, 0.6, 0.8, 1}, 0, 0.2},
        {"every second label", -1, 1, 0.5, 2, true, {-1, -0.5, 0, 0.5, 1}, {-1, 0, 1}, 2, 0.5},
        {"labels off", 0.3, 1.1, 0.25, 1, false, {0.5, 0.75, 1}, {}, -1, 0.25},
        {"step 0 becomes 1", 0, 3, 0, 1, true, {0, 1, 2, 3}, {0, 1, 2, 3}, 0, 1},
        {"ends off the grid", 0.05, 0.31, 0.1, 1, true, {0.1, 0.2, 0.3}, {0.1, 0.2, 0.3}, -1, 0.1},
    };
    for (const auto &c : cases) {
        std::vector<double> ticks, labels;
        int zero = -7;
        EXPECT_DOUBLE_EQ(LinearTicks(c.min, c.max, c.step, ticks, zero, c.labelEvery, c.labelsOn, labels),
                         c.stepUsed) << c.what;
        expectList(ticks, c.ticks, c.what);
        expectList(labels, c.labels, c.what);
        EXPECT_EQ(zero, c.zeroIndex) << c.what;
    }

    // 20000 potential ticks: the step becomes a twentieth of the span.
    std::vector<double> ticks, labels;
    int zero;
    EXPECT_EQ(LinearTicks(0, 20000, 1, ticks, zero, 1, true, labels), 1000);
    EXPECT_EQ(ticks.size(), 21u);

    // Far from 0 the ticks are summed from min.
    LinearTicks(1e9, 1e9 + 4, 1, ticks, zero, 1, true, labels);
    expectList(ticks, {1e9, 1e9 + 1, 1e9 + 2, 1e9 + 3, 1e9 + 4}, "far");

    // No more than 1000 labels.
    LinearTicks(0, 5000, 1, ticks, zero, 1, true, labels);
    EXPECT_EQ(ticks.size(), 5001u);
    EXPECT_EQ(labels.size(), std::size_t(kMaxAxisLabels));

    // Broken ends stop at once.
    LinearTicks(kNaN, 1, 0.1, ticks, zero, 1, true, labels);
    EXPECT_TRUE(ticks.empty());
}

TEST(AxisTicks, LabelDensity)
{
    const struct
    {
        double span, step, length, charSize;
        bool x;
        int every;
    } cases[] = {
        {50, 1, 500, 10, true, 1},    // 2L/cw = 100 >= 50
        {150, 1, 500, 10, true, 2},   // 4L/cw = 200 >= 150
        {300, 1, 500, 10, true, 5},
        {1200, 1, 500, 10, true, 50}, // 5, then x2 (10), then x5 (50)
        {10, 1, 200, 20, false, 1},   // L/ch = 10
        {15, 1, 200, 20, false, 2},
        {40, 1, 200, 20, false, 5},
        {80, 1, 200, 20, false, 10},
        {10, 0, 200, 20, false, 1},
    };
    for (const auto &c : cases)
        EXPECT_EQ(LabelEvery(c.span, c.step, c.length, c.charSize, c.x), c.every) << c.span << " " << c.x;

    // Far more steps than an int counts: the rise stops at a large k instead
    // of overflowing.
    for (const double span : {1e300, 3.4e308}) {
        const int every = LabelEvery(span, 1e-10, 500, 10, true);
        EXPECT_GE(every, 100000000) << span;
    }
}

TEST(AxisTicks, LogTicksAcrossDecades)
{
    const std::vector<double> oneDecade{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    const struct
    {
        const char *what;
        double room, min, max;
        std::vector<double> ticks, labels;
    } cases[] = {
        {"one decade, much room", 20, 1, 10, oneDecade, oneDecade},
        {"one decade, room 15", 15, 1, 10, oneDecade, {1, 5, 10}},
        {"one decade, room 9", 9, 1, 10, oneDecade, {1, 5, 10}},
        {"one decade, room 8", 8, 1, 10, oneDecade, {1, 10}},
        {"under a decade", 10, 2, 5, {2, 2.5, 3, 3.5, 4, 4.5, 5}, {2, 2.5, 3, 3.5, 4, 4.5, 5}},
        {"eight decades, room 5", 5, 1e-3, 1e5, {1e-3, 1e-2, 0.1, 1, 10, 100, 1e3, 1e4, 1e5},
         {1e-3, 1e-2, 0.1, 1, 10, 100, 1e3, 1e4, 1e5}},
        {"eight decades, room 1", 1, 1e-3, 1e5, {1e-3, 1e-2, 0.1, 1, 10, 100, 1e3, 1e4, 1e5},
         {1e-3, 0.1, 10, 1e3, 1e5}},
        {"forty decades", 5, 1e-20, 1e20, {1e-20, 1e-10, 1, 1e10, 1e20}, {1e-20, 1e-10, 1, 1e10, 1e20}},
    };
    for (const auto &c : cases) {
        std::vector<double> ticks, labels;
        LogTicks(c.room, c.min, c.max, ticks, labels);
        expectList(ticks, c.ticks, c.what);
        expectList(labels, c.labels, c.what);
    }

    // Three decades: the multiples of each decade, labels by the room.
    std::vector<double> ticks, labels;
    LogTicks(50, 1, 1000, ticks, labels);
    EXPECT_EQ(ticks.size(), 28u);
    EXPECT_EQ(labels.size(), 28u);
    LogTicks(10, 1, 1000, ticks, labels);
    expectList(labels, {1, 10, 100, 1000}, "three decades, room 10");
    LogTicks(10, 1, 100, ticks, labels);
    expectList(labels, {1, 5, 10, 50, 100}, "two decades, room 10");

    // Ends at or below 0 are taken as 1e-6.
    LogTicks(100, 0, 1e-5, ticks, labels);
    ASSERT_FALSE(ticks.empty());
    EXPECT_NEAR(ticks.front(), 1e-6, 1e-18);
}

TEST(AxisTicks, MinorTicks)
{
    std::vector<double> minor;
    MinorTicks(-0.5, 2.2, 0, 1, 4, minor);
    // Quarters between the ticks, running on to both plot ends, none on a tick.
    expectList(minor, {-0.5, -0.25, 0.25, 0.5, 0.75, 1.25, 1.5, 1.75}, "minor");
    MinorTicks(0, 1, 0, 1, 1, minor);
    EXPECT_TRUE(minor.empty());
}

TEST(AxisLabels, Prefixes)
{
    const struct
    {
        double v;
        const char *letter;
        double factor;
    } cases[] = {
        {5e-9, "n", 1e9}, {-5e-6, "u", 1e6}, {0.0001, "m", 1000}, {0.05, "m", 1000}, {0.5, "", 1},
        {999, "", 1},     {1000, "k", 1e-3}, {2e6, "M", 1e-6},    {3e9, "G", 1e-9},  {2e12, "", 1},
        {0, "", 1},
    };
    for (const auto &c : cases) {
        const CUnitPrefix p = UnitPrefix(c.v);
        EXPECT_EQ(p.letter, QString::fromLatin1(c.letter)) << c.v;
        EXPECT_DOUBLE_EQ(p.factor, c.factor) << c.v;
    }

    // Worked through by hand:
    //   1e6..9e6: a = floor(6 + .99) = 6, b = floor(6.954 + .99) = 7, p = 6 - 2 = 4, 4 mod 3 = 1 -> 3: "k"
    //   2e-6..8e-6: a = floor(-5.70 + .99) = -5, b = -5, p = -3, a multiple of 3: "m"
    //   0..5000: b = floor(3.70 + .99) = 4, p = 2, 2 mod 3 = 2 -> 3: "k"
    //   1000..1000.5: a = b = 3, c = floor(-0.30 + .99) = 0, digits 3 + 4 = 7, p = 1 -> 0: none
    const struct
    {
        double min, max;
        const char *letter;
        int digits;
    } worked[] = {
        {1e6, 9e6, "k", 6}, {2e-6, 8e-6, "m", 6}, {0, 5000, "k", 6}, {1000, 1000.5, "", 7}, {0, 0, "", 6},
    };
    for (const auto &w : worked) {
        const CUnitPrefix p = PrefixFromRange(w.min, w.max);
        EXPECT_EQ(p.letter, QString::fromLatin1(w.letter)) << w.min << ".." << w.max;
        EXPECT_EQ(p.digits, w.digits) << w.min << ".." << w.max;
    }
}

TEST(AxisLabels, TextsUnitsAndPlaces)
{
    const struct
    {
        double v;
        int digits;
        const char *text;
    } cases[] = {
        {0, 6, "0"},         {-0.0, 6, "0"},       {1.5, 6, "1.5"},         {2.0, 6, "2"},
        {100, 6, "100"},     {0.000125, 3, "0.000125"}, {1234567, 4, "1.235e+06"}, {1e-5, 2, "1e-05"},
        {-2.50, 6, "-2.5"},  {0.1 + 0.2, 6, "0.3"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(LabelText(c.v, c.digits), QString::fromLatin1(c.text)) << c.v;

    EXPECT_EQ(AxisUnit(u"Time [s]"_qs), u"s"_qs);
    EXPECT_EQ(AxisUnit(u"time"_qs), QString());
    EXPECT_EQ(AxisUnit(u"FREQUENCY"_qs), u"Hz"_qs);
    EXPECT_EQ(AxisUnit(u"U1"_qs), QString());

    EXPECT_DOUBLE_EQ(XLabelLeft(100, 20, 500), 90);
    EXPECT_DOUBLE_EQ(XLabelLeft(495, 20, 500), 475); // would overhang: right-aligned
    EXPECT_DOUBLE_EQ(XLabelLineDepth(10), 18);
    double dx, dy;
    RotatedLabelOffset(90, 40, 10, dx, dy);
    EXPECT_NEAR(dx, 5, 1e-9);
    EXPECT_NEAR(dy, 40, 1e-9);
    RotatedLabelOffset(30, 40, 10, dx, dy);
    EXPECT_NEAR(dx, 2.5 + 40 * std::cos(M_PI / 6), 1e-9);
    EXPECT_NEAR(dy, 20, 1e-9);
    RotatedLabelOffset(-90, 40, 10, dx, dy);
    EXPECT_NEAR(dx, -5, 1e-9);
    EXPECT_NEAR(dy, 0, 1e-9);
    RotatedLabelOffset(0, 40, 10, dx, dy);
    EXPECT_EQ(dx, 0);
}

TEST(AxisLayout, StackAndTighten)
{
    std::vector<CAxisSpan> left, right;
    StackAxesOutward(100, 500, {30, 20}, {25}, 5, left, right);
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ(left[0].left, 70);
    EXPECT_EQ(left[0].right, 100);
    EXPECT_EQ(left[1].left, 45);
    EXPECT_EQ(left[1].right, 65);
    EXPECT_EQ(right[0].left, 500);
    EXPECT_EQ(right[0].right, 525);

    // The nearest left axis needs 10 less: it and the one outside move in.
    EXPECT_EQ(TightenAxes(left, {20, 20}, 5, true), 10);
    EXPECT_EQ(left[0].left, 80);
    EXPECT_EQ(left[1].left, 55);
    EXPECT_EQ(left[1].right, 75);
    // Spare room within the gap stays.
    EXPECT_EQ(TightenAxes(right, {22}, 5, false), 0);
    EXPECT_EQ(right[0].right, 525);
    EXPECT_EQ(TightenAxes(right, {15}, 5, false), 10);
    EXPECT_EQ(right[0].right, 515);
}

namespace {

// A graph of rows (x, y) in columns 0 and 1 with a curve of column 1.
void makeGraph(CGraphCurve &graph, const std::vector<double> &x, const std::vector<double> &y)
{
    graph.m_data.Create(1, 2, int(x.size()), 0);
    graph.m_data.GetColumn(0)->m_name = u"Time"_qs;
    graph.m_data.GetColumn(1)->m_name = u"U"_qs;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double row[2] = {x[i], y[i]};
        const std::uint8_t valid[2] = {1, std::uint8_t(std::isnan(y[i]) ? 2 : 1)};
        graph.m_data.AppendRows(row, valid, 0, 2, int(i), 1);
    }
    bool changed;
    graph.AddCurve(1, 0, false, changed);
}

} // namespace

TEST(AxisFit, FitAndSetRanges)
{
    const struct
    {
        const char *what;
        std::vector<double> x, y;
        double xMin, xMax, yMin, yMax;
    } cases[] = {
        {"plain", {0, 1, 2, 3}, {3, 5, 7, 4}, 0, 3, 3, 7},
        {"constant zero", {0, 0, 0}, {0, 0, 0}, 0, 0.1, -1, 1},
        {"constant x", {5, 5}, {1, 2}, 4.5, 5.5, 1, 2},
        {"negative constant x", {-5, -5}, {1, 2}, -5.5, -4.5, 1, 2},
    };
    for (const auto &c : cases) {
        CGraphCurve graph;
        makeGraph(graph, c.x, c.y);
        graph.FitX(false);
        EXPECT_NEAR(graph.m_xFullMin, c.xMin, 1e-12) << c.what;
        EXPECT_NEAR(graph.m_xFullMax, c.xMax, 1e-12) << c.what;
        graph.FitRanges();
        EXPECT_NEAR(graph.Range(0)->m_viewMin, c.yMin, 1e-12) << c.what;
        EXPECT_NEAR(graph.Range(0)->m_viewMax, c.yMax, 1e-12) << c.what;
    }

    CGraphCurve graph;
    makeGraph(graph, {0, 1, 2, 3, 4}, {1, 10, 100, 1000, 10000});
    graph.FitX(false);
    // Equal ends at 0 give -0.9 to 0.1 when set by hand.
    graph.SetXRange(false, false, 0, 0, 0, false, true);
    EXPECT_NEAR(graph.m_xViewMin, -1, 1e-12); // -0.9 snapped onto the step 0.2
    EXPECT_NEAR(graph.m_xViewMax, 0.2, 1e-12);
    // Reversed ends, clipped to the full extent, with a tick kept.
    graph.SetXRange(false, true, 9, -3, 0.5, true, true);
    EXPECT_EQ(graph.m_xViewMin, 0);
    EXPECT_EQ(graph.m_xViewMax, 4);
    EXPECT_EQ(graph.m_xTick, 0.5);
    // A date axis takes its step from the span in days.
    graph.m_xAxisFlags |= CGraph_Range::AxisDateDays;
    const struct
    {
        double span, tick;
    } dates[] = {{100, 30}, {40, 7}, {20, 1}, {5, 0.5}, {2, 0.25}, {1.2, 0.125}, {0.5, 1.0 / 24}};
    for (const auto &d : dates) {
        graph.SetXRange(false, false, 0, d.span, 0, false, true);
        EXPECT_DOUBLE_EQ(graph.m_xTick, d.tick) << d.span;
    }
    // Integer ticks on Y.
    graph.Range(0)->m_axisFlags |= CGraph_Range::AxisIntegerTicks;
    graph.SetYRange(0, false, false, 0, 1, 0, false, true);
    EXPECT_EQ(graph.Range(0)->m_tick, 1); // 0.2 truncates to 0, which becomes 1
    graph.SetYRange(0, false, false, 0, 30, 0, false, true);
    EXPECT_EQ(graph.Range(0)->m_tick, 5);
}

TEST(AxisFit, CurveExtentInSpanAndForms)
{
    CGraphCurve graph;
    makeGraph(graph, {0, 1, 2, 3, 4, 5}, {4, -2, 100, kNaN, 0.01, 8});
    double lo = 0, hi = 0;
    ASSERT_EQ(graph.CurveExtent(0, 0.5, 2.5, lo, hi), 1);
    // Rows from the last at or before 0.5 to the first at or after 2.5.
    EXPECT_EQ(lo, -2);
    EXPECT_EQ(hi, 100);
    ASSERT_EQ(graph.CurveExtent(0, 3.5, 5, lo, hi), 1);
    EXPECT_EQ(lo, 0.01);
    EXPECT_EQ(hi, 8);

    graph.Range(0)->m_logScale = 1; // -2 has no log, 0.01 gives -2
    ASSERT_EQ(graph.CurveExtent(0, 0, 5, lo, hi), 1);
    EXPECT_NEAR(lo, -2, 1e-12);
    EXPECT_NEAR(hi, 2, 1e-12);
    graph.Range(0)->m_logScale = 0;
    graph.Range(0)->m_dbScale = 1; // 20 log10(v * 1e6): 0.01 gives 80, 100 gives 160
    ASSERT_EQ(graph.CurveExtent(0, 0, 5, lo, hi), 1);
    EXPECT_NEAR(lo, 80, 1e-9);
    EXPECT_NEAR(hi, 160, 1e-9);

    // An axis without curves fails and leaves the values alone.
    graph.AddRange();
    lo = hi = 77;
    EXPECT_EQ(graph.CurveExtent(1, 0, 5, lo, hi), 0);
    EXPECT_EQ(lo, 77);
    EXPECT_EQ(graph.CurveExtent(9, 0, 5, lo, hi), 0);
}

TEST(AxisFit, LogXConvertsCursors)
{
    CGraphCurve graph;
    makeGraph(graph, {1, 10, 100, 1000}, {1, 2, 3, 4});
    graph.m_cursorX[0] = 100;
    graph.m_cursorX[1] = 5; // at or below 10: placed a fifth of the span in
    graph.FitX(true);
    EXPECT_EQ(graph.m_xLog, 1);
    EXPECT_NEAR(graph.m_xFullMin, 0, 1e-12);
    EXPECT_NEAR(graph.m_xFullMax, 3, 1e-12);
    EXPECT_NEAR(graph.m_cursorX[0], 2, 1e-12);
    EXPECT_NEAR(graph.m_cursorX[1], 3 - 0.6, 1e-12);
    graph.m_cursorX[1] = 500; // too large for pow(10, x)
    graph.FitX(false);
    EXPECT_NEAR(graph.m_cursorX[0], 100, 1e-9);
    EXPECT_NEAR(graph.m_cursorX[1], 1000 - 999 / 5.0, 1e-9);
}

// The fitted view and the view update's margin, from one place, over
// ordinary, log, overflowing and denormal extents: always a usable range
// that holds the data, whole decades on a log axis.
TEST(AxisRange, ViewsOfDataExtents)
{
    const double big = 1.7e308;
    const struct
    {
        const char *name;
        double lo, hi;
        AxisKind kind;
        bool log;
        double wantMin, wantMax; // NaN: only holds the data
    } cases[] = {
        {"log decades", 0, 7, AxisKind::X, true, 0, 7},
        {"log round out", 0.3, 6.8, AxisKind::Y, true, 0, 7},
        {"log under a decade", -5.8, -5.2, AxisKind::X, true, -5.8, -5.2},
        {"linear X", 0, 9, AxisKind::X, false, 0, 10},
        {"all doubles", -big, big, AxisKind::Y, false, NAN, NAN},
        {"denormals", 1e-320, 5e-320, AxisKind::Y, false, NAN, NAN},
        {"denormals round zero", -3e-321, 2e-321, AxisKind::X, false, NAN, NAN},
    };
    for (const auto &c : cases) {
        for (bool margin : {false, true}) {
            const CAxisView v = margin ? MarginView(c.lo, c.hi, c.kind, c.log) : FittedView(c.lo, c.hi, c.kind, c.log);
            EXPECT_TRUE(v.IsValid()) << c.name << " " << margin;
            EXPECT_LE(v.min, c.lo) << c.name << " " << margin;
            EXPECT_GE(v.max, c.hi) << c.name << " " << margin;
            EXPECT_GT(v.tick, 0) << c.name << " " << margin;
            EXPECT_TRUE(std::isfinite(v.tick)) << c.name << " " << margin;
            if (!margin && !std::isnan(c.wantMin)) {
                EXPECT_DOUBLE_EQ(v.min, c.wantMin) << c.name;
                EXPECT_DOUBLE_EQ(v.max, c.wantMax) << c.name;
            }
        }
    }
}
