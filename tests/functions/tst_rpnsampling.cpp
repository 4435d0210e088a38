// Int, Avg, HIPass and AvgX over a sampling context, against trapezoids and
// block averages worked out by hand.

#include "functions/rpnsampling.h"
#include "formula/rpnseries.h"
#include "formula/rpntree.h"

#include "formulatest.h"
#include "functionstest.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>

namespace {

// The series of `text` over the column y (bound as "y"), rows 0 to n - 1.
std::vector<double> series(CEquationTree &tree, const char *text, const std::vector<double> &y)
{
    tree.BindColumn(QStringLiteral("y"), y.data(), nullptr, int(y.size()));
    EXPECT_EQ(tree.Compile(QString::fromLatin1(text), nullptr, true), 1) << text;
    std::vector<double> values(y.size());
    std::vector<unsigned char> valid(y.size());
    tree.ResetRun();
    tree.EvaluateSeries(values.data(), valid.data(), 0, int(y.size()) - 1);
    return values;
}

void expectSeries(const std::vector<double> &got, const std::vector<double> &expect, const char *what)
{
    ASSERT_EQ(got.size(), expect.size()) << what;
    for (std::size_t i = 0; i < got.size(); ++i)
        EXPECT_DOUBLE_EQ(got[i], expect[i]) << what << " sample " << i;
}

} // namespace

TEST(RpnSampling, IntAndAvgAgainstHandTrapezoids)
{
    const std::vector<double> y = {2, 4, 6, 8};
    const std::vector<double> x = {1, 2, 4, 7};
    struct Case {
        const char *text;
        double step;
        bool withX;
        std::vector<double> expect;
    };
    const std::vector<Case> cases = {
        // No sampling context: no x span, nothing integrated.
        {"Int(y)", 0.0, false, {0, 0, 0, 0}},
        {"Avg(y)", 0.0, false, {0, 0, 0, 0}},
        // Step 0.5: x = 0.5, 1, 1.5, 2; the curve starts at (0, 0).
        {"Int(y)", 0.5, false, {0.5, 0.5 + 1.5, 2.0 + 2.5, 4.5 + 3.5}},
        // The first sample weighs one step; then trapezoids over the width.
        {"Avg(y)", 0.5, false, {2, 2.5 / 1.0, 5.0 / 1.5, 8.5 / 2.0}},
        // Uneven x: 1, 2, 4, 7.
        {"Int(y)", 0.0, true, {1, 1 + 3, 4 + 10, 14 + 21}},
        {"Avg(y)", 0.0, true, {2, (2 + 3.0) / 2, (5 + 10.0) / 4, (15 + 21.0) / 7}},
        // The state is per node: two calls integrate on their own.
        {"Int(y) - Int(2 * y)", 0.5, false, {-0.5, -2.0, -4.5, -8.0}},
    };
    for (const Case &c : cases) {
        CEquationTree tree;
        tree.SetSampling(c.step, c.withX ? x.data() : nullptr, c.withX ? int(x.size()) : 0);
        expectSeries(series(tree, c.text, y), c.expect, c.text);
    }
}

TEST(RpnSampling, StateLastsUntilResetRunAndTravelsWithClones)
{
    const std::vector<double> y = {1, 1, 1};
    CEquationTree tree;
    tree.SetSampling(1.0);
    expectSeries(series(tree, "Int(y)", y), {0.5, 1.5, 2.5}, "first run");
    // Without ResetRun the integral goes on.
    std::vector<double> values(3);
    std::vector<unsigned char> valid(3);
    tree.EvaluateSeries(values.data(), valid.data(), 0, 2);
    expectSeries(values, {3.5, 4.5, 5.5}, "second run");

    // A clone goes on from the same state; ResetRun starts the tree afresh.
    std::unique_ptr<CRpnNode> copy(CloneSubtree(tree.GetRoot()->GetOperand(0), &tree));
    unsigned char status = 1;
    tree.m_rowIndex = 3;
    EXPECT_DOUBLE_EQ(copy->ApplyReal(1.0, 0.0, status), 6.5);
    tree.ResetRun();
    tree.EvaluateSeries(values.data(), valid.data(), 0, 2);
    expectSeries(values, {0.5, 1.5, 2.5}, "after ResetRun");
}

TEST(RpnSampling, StateAdvancesPerElementOfAnArray)
{
    CEquationTree tree;
    tree.SetSampling(1.0);
    // All three elements at sample 0: the first from x 0, the others by a step each.
    EXPECT_EQ(Eval("Int({1, 1, 1})", &tree), "ARRAY:{0.5,1.5,2.5}");
    EXPECT_EQ(Eval("Avg({2, 4})", &tree), "ARRAY:{2,2.5}");
    // Without a context Int and Avg are 0 for every input.
    EXPECT_EQ(Eval("{Int(5), Avg(-3), Int({1, 2})}"), "ARRAY:{0,0,{0,0}}");
}

TEST(RpnSampling, HighPassFilter)
{
    // A step input: the output jumps, then decays to nothing (no DC passes);
    // a run after ResetRun is the same run.
    std::vector<double> y(4000, 1.0);
    y[0] = 0.0;
    CEquationTree tree;
    tree.SetSampling(0.001);
    const std::vector<double> out = series(tree, "HIPass(y)", y);
    const double peak = std::max(-*std::min_element(out.begin(), out.end()), *std::max_element(out.begin(), out.end()));
    EXPECT_GT(peak, 1e-3);
    EXPECT_LT(std::fabs(out.back()), peak * 1e-3);
    EXPECT_EQ(series(tree, "HIPass(y)", y), out);
}

TEST(RpnSampling, AvgXOverBlocks)
{
    const double nan = std::nan("");
    struct Case {
        const char *text;
        std::vector<double> y;
        double step;
        std::vector<double> x; // empty: evenly spaced
        std::vector<double> expect; // NaN: the sample has no value (null)
        double operandAtLast;       // the operand's value at the last sample
    };
    const std::vector<Case> cases = {
        // Width of two steps: pairs of samples share their average.
        {"AvgX(y, 2)", {1, 2, 3, 4, 5, 6}, 1.0, {}, {1.5, 1.5, 3.5, 3.5, 5.5, 5.5}, 6},
        {"AvgX(y, 3 * 0.5)", {1, 2, 3, 4, 5, 6, 7}, 0.5, {}, {2, 2, 2, 5, 5, 5, 7}, 7},
        // A block is weighted by x steps, over its valid samples only.
        {"AvgX(y, 2)", {1, nan, 3, 5}, 1.0, {}, {1, 1, 4, 4}, 5},
        {"AvgX(y, 2)", {nan, nan, 3, 5}, 1.0, {}, {nan, nan, 4, 4}, 5},
        // Uneven x (the first sample a step after 0): blocks close where two
        // units are covered, each sample weighed by its x step.
        {"AvgX(y, 2)", {1, 2, 4, 8}, 1.0, {1, 2, 3, 6}, {1.5, 1.5, (4 + 3 * 8) / 4.0, (4 + 3 * 8) / 4.0}, 8},
        {"AvgX(y * y, 2)", {1, 2, 3, 4}, 1.0, {}, {2.5, 2.5, 12.5, 12.5}, 16},
    };
    for (const Case &c : cases) {
        CEquationTree tree;
        tree.SetSampling(c.step, c.x.empty() ? nullptr : c.x.data(), int(c.x.size()));
        tree.BindColumn(QStringLiteral("y"), c.y.data(), nullptr, int(c.y.size()));
        ASSERT_EQ(tree.Compile(QString::fromLatin1(c.text), nullptr, true), 1);
        const int last = int(c.y.size()) - 1;
        tree.ResetRun();
        ASSERT_EQ(tree.PrepareRun(0, last), 1);
        CRpnNode *node = tree.GetRoot()->GetOperand(0);
        for (int i = 0; i <= last; ++i) {
            tree.m_rowIndex = i;
            CRpnData v;
            unsigned char status = 1;
            node->Evaluate(v, status);
            EXPECT_EQ(status, 1);
            const double e = c.expect[std::size_t(i)];
            if (std::isnan(e)) {
                EXPECT_TRUE(v.IsNull()) << c.text << " sample " << i;
            } else {
                EXPECT_DOUBLE_EQ(v.GetDouble(), e) << c.text << " sample " << i;
            }
            // Apply gives the flag of the sample.
            CRpnData flag;
            node->Apply(flag, CRpnData(0.0), CRpnData(0.0), status);
            EXPECT_EQ(flag.GetInt(), std::isnan(e) ? 2 : 1) << c.text << " sample " << i;
        }
        // ResetRun drops the prepared blocks: the operand itself again.
        tree.ResetRun();
        CRpnData v;
        unsigned char status = 1;
        node->Evaluate(v, status);
        EXPECT_EQ(v.GetDouble(), c.operandAtLast) << c.text;
    }
    // Without a sampling context AvgX is its operand.
    EXPECT_EQ(Eval("AvgX(3, 2)"), "REAL:3");
}

// AvgX runs its operand a block of samples at a time where the operand is
// plain arithmetic over bound columns; given through an assignment the same
// operand goes row by row.  Both must give every sample the same average and flag, over
// gaps, failures and blocks of several hundred rows.
TEST(RpnSampling, AvgXOperandInBlocksAsRowByRow)
{
    constexpr int kRows = 1500;
    std::vector<double> y(kRows);
    std::vector<unsigned char> valid(kRows, 1);
    for (int i = 0; i < kRows; ++i) {
        y[std::size_t(i)] = std::sin(i * 0.37) * 5.0;
        if (i % 97 == 3)
            valid[std::size_t(i)] = 0; // a missing cell
        if (i % 131 == 7)
            valid[std::size_t(i)] = 2; // an invalid one
        if (i % 211 == 11)
            y[std::size_t(i)] = 0.0;   // 1/y and log10(y) fail here
    }
    const char *const operands[] = {"y", "y * 2 + 1", "1 / y", "log10(y)", "sin(y) * y", "y ^ 0.5", "y * 1e308 * 10"};
    for (const char *operand : operands) {
        for (const char *width : {"7", "250", "0.5"}) {
            struct Prepared
            {
                int result;
                int error; // the message's number: the texts quote the formula
                std::vector<double> values;
                std::vector<unsigned char> flags;
            };
            auto prepared = [&](const QString &text, bool &blockPath) {
                CEquationTree tree;
                tree.SetSampling(1.0, nullptr, 0);
                tree.BindColumn(QStringLiteral("y"), y.data(), valid.data(), kRows);
                EXPECT_EQ(tree.Compile(text, nullptr, true), 1) << text.toStdString();
                auto *avg = static_cast<CNodeAvgX *>(tree.GetRoot()->GetOperand(0));
                blockPath = CRpnSeriesProgram::Build(&tree, avg->m_operand) != nullptr;
                tree.ResetRun();
                // A failing row reports (and so the preparation answers 0).
                const int result = tree.PrepareRun(0, kRows - 1);
                return Prepared{result, MessageIdOf(tree.GetErrorMessage()), *avg->m_values, *avg->m_validity};
            };
            bool inBlocks = false, rowByRow = true;
            const auto a = prepared(QStringLiteral("AvgX(%1, %2)").arg(QLatin1String(operand), QLatin1String(width)),
                                    inBlocks);
            const auto b = prepared(
                QStringLiteral("AvgX(t = %1, %2)").arg(QLatin1String(operand), QLatin1String(width)), rowByRow);
            ASSERT_TRUE(inBlocks) << operand;
            ASSERT_FALSE(rowByRow) << operand;
            EXPECT_EQ(a.result, b.result) << operand;
            EXPECT_EQ(a.error, b.error) << operand;
            ASSERT_EQ(a.values.size(), b.values.size());
            for (std::size_t i = 0; i < a.values.size(); ++i) {
                ASSERT_EQ(a.flags[i], b.flags[i]) << operand << " width " << width << " sample " << i;
                if (a.flags[i] == CNodeAvgX::FlagValid) {
                    ASSERT_EQ(a.values[i], b.values[i]) << operand << " width " << width << " sample " << i;
                }
            }
        }
    }
}
