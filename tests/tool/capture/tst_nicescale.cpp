#include "tool/capture/nicescale.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(NiceScale, RoundsOutwardInTwoPasses)
{
    // Worked by hand through both passes of the rule.
    const struct {
        double low, high;
        double newLow, newHigh, step;
        int ticks;
    } cases[] = {
        {-3, 7, -5, 10, 2.5, 6},     // 2 then 2.5: -4..8, then -5..10
        {0, 10, 0, 10, 2, 5},        // on whole steps already: count from the span
        {0, 1, 0, 1, 0.2, 5},
        {0.5, 3.7, 0.5, 4, 0.5, 7},  // the second pass keeps the count of the first
        {-0.3, 9, -2.5, 10, 2.5, 5}, // a step above |low| gives low = -step
        {-7, -2, -7, 0, 1, 7},       // a negative high always walks one step past
        {0.001, 0.0042, 0.001, 0.0045, 0.0005, 7},
        {100, 1000, 0, 1000, 200, 5},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.low << ".." << c.high);
        double low = c.low, high = c.high, step = 0;
        EXPECT_EQ(NiceScale(low, high, step), c.ticks);
        EXPECT_NEAR(low, c.newLow, 1e-12);
        EXPECT_NEAR(high, c.newHigh, 1e-12);
        EXPECT_NEAR(step, c.step, 1e-15);
    }
}

TEST(NiceScale, RefusesSpansItCannotScale)
{
    const double bad[][2] = {{5, 5}, {7, -3}, {NAN, 1}, {0, INFINITY}, {-1e308, 1e308}};
    for (const auto &b : bad) {
        double low = b[0], high = b[1], step = 9;
        EXPECT_EQ(NiceScale(low, high, step), 0);
        EXPECT_EQ(step, 0.0);
        EXPECT_TRUE(low == b[0] || (std::isnan(low) && std::isnan(b[0])));
        EXPECT_EQ(high, b[1]);
    }
    // Limits so large that a step vanishes in their precision still end.
    double low = 1e20, high = std::nextafter(1e20, 1e21), step = 0;
    NiceScale(low, high, step);
    EXPECT_GT(step, 0.0);
}

TEST(GridLabels, LinearAndLogarithmic)
{
    const struct {
        double low, high;
        bool log;
        QStringList labels;
        const char *letter;
        double gridLow, gridHigh;
    } cases[] = {
        {0, 10, false, {"0.00", "2.00", "4.00", "6.00", "8.00", "10.00"}, "", 0, 10},
        {-3, 7, false, {"-5.00", "-2.50", "0.00", "2.50", "5.00", "7.50", "10.00"}, "", -5, 10},
        {10, 0, false, {"0.00", "2.00", "4.00", "6.00", "8.00", "10.00"}, "", 0, 10},
        {0, 5000, false, {"0.00", "1.00", "2.00", "3.00", "4.00", "5.00"}, "k", 0, 5000},
        {0, 0.004, false, {"0.00", "1.00", "2.00", "3.00", "4.00"}, "m", 0, 0.004},
        {0, 2e7, false, {"0.00", "2.50", "5.00", "7.50", "10.00", "12.50", "15.00", "17.50", "20.00"}, "M", 0, 2e7},
        {0.05, 50, true, {"1.00e-02", "1.00e-01", "1.00e+00", "1.00e+01", "1.00e+02"}, "", 0.01, 100},
        {1, 1000, true, {"1.00e+00", "1.00e+01", "1.00e+02", "1.00e+03"}, "", 1, 1000},
        {5, 5, false, {}, "", 5, 5},
        {10, 10, true, {}, "", 10, 10},
        {0, 100, true, {}, "", 0, 100},  // a log axis needs positive ends
        {-1, 100, true, {}, "", -1, 100},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.low << ".." << c.high << (c.log ? " log" : ""));
        double low = c.low, high = c.high;
        QStringList labels{"stale"};
        QString letter = "x";
        MakeGridLabels(low, high, c.log, labels, letter);
        EXPECT_EQ(labels, c.labels);
        EXPECT_EQ(letter, QString(c.letter));
        EXPECT_DOUBLE_EQ(low, c.gridLow);
        EXPECT_DOUBLE_EQ(high, c.gridHigh);
    }
}
