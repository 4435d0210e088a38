#include "tool/capture/familytable.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

const double none = NAN;

struct TableCase {
    const char *name;
    std::vector<CCurvePoints> curves;
    bool xLog, yLog;
    std::vector<double> x;
    std::vector<std::vector<double>> columns;
};

void expectColumn(const std::vector<double> &got, const std::vector<double> &want)
{
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
        if (std::isnan(want[i]))
            EXPECT_TRUE(std::isnan(got[i])) << i << ": " << got[i];
        else
            EXPECT_NEAR(got[i], want[i], 1e-12 * std::max(1.0, std::fabs(want[i]))) << i;
    }
}

} // namespace

TEST(FamilyTable, SharedXAndInterpolatedColumns)
{
    const TableCase cases[] = {
        {"same X", {{{0, 1}, {1, 2}}, {{0, 5}, {1, 6}}}, false, false, {0, 1}, {{1, 2}, {5, 6}}},
        {"X of the other curve interpolated", {{{0, 0}, {2, 4}}, {{1, 10}}}, false, false, {0, 1, 2},
         {{0, 2, 4}, {none, 10, none}}},
        {"clicked backwards", {{{4, 40}, {0, 0}, {2, 10}}}, false, false, {0, 2, 4}, {{0, 10, 40}}},
        {"two clicks at one X: the first counts", {{{1, 7}, {1, 9}, {3, 9}}}, false, false, {1, 3}, {{7, 9}}},
        {"beyond a curve's ends nothing", {{{1, 1}, {2, 2}}, {{0, 0}, {3, 3}}}, false, false, {0, 1, 2, 3},
         {{none, 1, 2, none}, {0, 1, 2, 3}}},
        // On log axes a straight line between decades is a power law.
        {"log-log", {{{1, 1}, {100, 10000}}, {{10, 3}}}, true, true, {1, 10, 100}, {{1, 100, 10000}, {none, 3, none}}},
        {"log X drops what it cannot show", {{{0, 1}, {-1, 2}, {10, 3}, {1000, 5}}}, true, false, {10, 1000}, {{3, 5}}},
        {"not finite", {{{NAN, 1}, {1, INFINITY}, {2, 2}}}, false, false, {2}, {{2}}},
        {"no curves", {}, false, false, {}, {}},
    };
    for (const TableCase &c : cases) {
        SCOPED_TRACE(c.name);
        const CFamilyTable t = MakeFamilyTable(c.curves, c.xLog, c.yLog);
        expectColumn(t.x, c.x);
        ASSERT_EQ(t.columns.size(), c.columns.size());
        for (std::size_t k = 0; k < c.columns.size(); ++k)
            expectColumn(t.columns[k], c.columns[k]);
    }
}

TEST(FamilyTable, CsvText)
{
    CFamilyTable t;
    t.x = {0.1, 1234567.891234};
    t.columns = {{1.0 / 3, none}, {-2e-20, 5}};
    EXPECT_EQ(FamilyCsvText(t, "VCE", {"IC, 1", "say \"2\""}),
              "VCE,\"IC, 1\",\"say \"\"2\"\"\"\r\n"
              "0.1,0.333333333333,-2e-20\r\n"
              "1234567.89123,,5\r\n");
}
