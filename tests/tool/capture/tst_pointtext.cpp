#include "support/myarrays.h"
#include "tool/capture/numbertext.h"
#include "tool/capture/pointtext.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

std::vector<double> parse(const QString &text, bool suffixes = true, int hint = 0)
{
    int count = hint;
    CMyDoubleArray pairs;
    ParsePointText(text, count, pairs, suffixes);
    EXPECT_GE(pairs.GetSize(), 2 * count);
    return std::vector<double>(pairs.GetData(), pairs.GetData() + 2 * count);
}

} // namespace

TEST(PointText, ParsesGroups)
{
    using V = std::vector<double>;
    const struct {
        const char *text;
        V pairs;
    } cases[] = {
        {"(1,2)(3,4)", {1, 2, 3, 4}},
        {"(1 2)", {1, 2}},
        {"(1,2,3,4)", {1, 2, 3, 4}},
        {"(1,2,3,4,5)", {1, 2, 3, 4}},
        {"(1,2)(3)", {1, 2}},                  // an incomplete group is dropped
        {"[1,2] [3,4]", {1, 2, 3, 4}},
        {"[1,2)(3,4]", {1, 2, 3, 4}},
        {"( 1 , 2 )", {1, 2}},
        {"((1,2)),(3,4)", {1, 2, 3, 4}},
        {"x = (1,2); y = (3,4).", {1, 2, 3, 4}}, // text outside groups is ignored
        {"(1,2", {1, 2}},                      // the end closes an open group
        {"(1,2(3,4)", {1, 2, 3, 4}},           // so does a new group
        {"(-1.5e3,+2.5E-1)", {-1500, 0.25}},
        {"(1k,2m)", {1000, 0.002}},
        {"(3M,4G)(5T,6u)(7n,8p)(0k,9K)", {3e6, 4e9, 5e12, 6e-6, 7e-9, 8e-12, 0, 9000}},
        {"(1x,2)", {1, 2}},                    // no suffix: the number stands
        {"(a,b)", {0, 0}},
        {"(1,2é)", {1, 2}},
        {"", {}},
        {"()", {}},
        {"(,)", {}},
        {"1,2", {}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        const V got = parse(QString::fromUtf8(c.text));
        ASSERT_EQ(got.size(), c.pairs.size());
        for (std::size_t i = 0; i < got.size(); ++i)
            EXPECT_DOUBLE_EQ(got[i], c.pairs[i]);
    }
    EXPECT_EQ(parse("(1k,2m)", false), (std::vector<double>{1, 2}));
}

TEST(PointText, ArrayStartsAtTenPairsAndDoubles)
{
    const struct { int hint; int pairs; int capacity; } cases[] = {
        {0, 3, 10}, {5, 3, 15}, {99, 3, 109}, {100, 3, 10}, {-4, 3, 10},
        {0, 10, 10}, {0, 11, 20}, {5, 16, 30}, {0, 21, 40}, {0, 81, 160}, {99, 110, 218},
    };
    for (const auto &c : cases) {
        QString text;
        for (int i = 0; i < c.pairs; ++i)
            AppendPointText(text, i, -i);
        int count = c.hint;
        CMyDoubleArray pairs;
        ParsePointText(text, count, pairs, true);
        EXPECT_EQ(count, c.pairs);
        EXPECT_EQ(pairs.GetSize(), 2 * c.capacity) << c.hint << " " << c.pairs;
        EXPECT_EQ(pairs[2 * (c.pairs - 1) + 1], -(c.pairs - 1));
    }
}

TEST(PointText, Formats)
{
    QString text;
    AppendPointText(text, 3.14159265, 2.7182818e-5);
    AppendPointText(text, -123456789, 0);
    EXPECT_EQ(text, "(3.1416,2.7183e-05)(-1.2346e+08,0)");
    const double pairs[] = {1.5, -2e-7, 1234567, 0, INFINITY, 100000};
    EXPECT_EQ(FormatPointText(pairs, 3), "(1.5,-2E-07)(1.23457E+06,0)(INF,100000)");
    EXPECT_EQ(FormatPointText(nullptr, 3), "");
}

TEST(NumberText, ConvertsAsTheCLocale)
{
    const struct { const char *text; double value; std::size_t consumed; } cases[] = {
        {"  12.5xyz", 12.5, 6}, {"-.5", -0.5, 3}, {"+7", 7, 2}, {"+-1", 0, 0}, {"--1", 0, 0},
        {"1,5", 1, 1}, {"0x1A", 26, 4}, {"0x", 0, 1}, {"0x-1", 0, 1}, {"1e400", HUGE_VAL, 5},
        {"-1e400", -HUGE_VAL, 6}, {"1e-400", 0, 6}, {"0.0001e-320", 0, 11}, {"inf", HUGE_VAL, 3},
        {"", 0, 0}, {"abc", 0, 0}, {"2.5D0", 2.5, 3}, {"1e", 1, 1},
    };
    for (const auto &c : cases) {
        std::size_t consumed = 99;
        EXPECT_EQ(PlainToDouble(c.text, &consumed), c.value) << c.text;
        EXPECT_EQ(consumed, c.consumed) << c.text;
    }

    int flag = -1;
    EXPECT_DOUBLE_EQ(FromFloatExStr("4.7k", flag), 4700);
    EXPECT_EQ(flag, 1);
    EXPECT_DOUBLE_EQ(FromFloatExStr(" 10 m", flag), 0.01);
    EXPECT_EQ(FromFloatExStr("0k", flag), 0.0);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(FromFloatExStr("k", flag), 0.0);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(FromFloatExStr("", flag), 0.0);
    EXPECT_EQ(flag, 0);
}
