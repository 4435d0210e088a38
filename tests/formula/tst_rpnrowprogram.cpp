// Formulas on plain numbers evaluated row by row as steps: every case runs
// as a series of the tree and through the nodes (rowcompare.h); both must
// give the same values, validity, error message and, in the throwing mode,
// the same exception at the same row with the earlier rows written and the
// later ones untouched.

#include "formulatest.h"
#include "rowcompare.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace rowcompare;

namespace {

struct RowCase
{
    const char *text;
    Setup setup;
    bool program; // whether the formula runs as steps
    bool oneStep = false; // and, inside the column, as one step in a loop of its own
};

class RowProgram : public testing::TestWithParam<RowCase>
{
};

TEST_P(RowProgram, SameRowsAsTheNodes)
{
    const RowCase &c = GetParam();
    bool program = false;
    const Outcome steps = bySeries(c.text, c.setup, &program);
    const Outcome nodes = byNodes(c.text, c.setup);
    EXPECT_EQ(program, c.program) << c.text;
    EXPECT_EQ(steps.oneStep, c.oneStep) << c.text;
    EXPECT_EQ(describe(steps), describe(nodes)) << c.text;
    // A case that throws must throw in both; one that should not, in neither.
    EXPECT_EQ(steps.thrown.empty(), !c.setup.throwing || nodes.thrown.empty()) << c.text;
}

const Setup kPlain{};
const Setup kThrowing{Column, true};
const Setup kGetter{Getter};
const Setup kGetterThrowing{Getter, true};

const RowCase kRowCases[] = {
    // Arithmetic, NaN, infinities, a denormal, a cell that is not valid.
    {"x*2+1", kPlain, true, true},
    {"x*2+1", kThrowing, true, true},
    {"(x+1)*(x-1)/(x*x+1)", kThrowing, true},
    {"x^2-3*x+2", kPlain, true},
    {"x^0.5", kPlain, true, true},
    {"0*x + x*0", kPlain, true},
    {"-x % 3", kPlain, true},
    {"x*1e-10", kPlain, true, true},
    // Division by zero: the row of the zero reports, or throws there.
    {"1/x", kPlain, true, true},
    {"1/x", kThrowing, true, true},
    {"x % (x-4)", kThrowing, true},
    {"2/(x-1) + 1", kGetterThrowing, true},
    // Choices and short cuts: the branch not taken may fail, the row may not.
    {"iif(x > 0, 1/x, -x)", kThrowing, true},
    {"x != 0 && 1/x > 0.4", kThrowing, false},
    {"x > 0 && 1/x > 0.4", kThrowing, true},
    {"x < 0 || 1/x > 0.4", kPlain, true},
    {"!x + !(x-1)", kPlain, true},
    // Script functions of one `return`, compiled in place.
    {"function f(t) { return t*t+1 }; f(x)", kThrowing, true, true},
    {"function f(t) { return 1/t }; function g(u) { return f(u) + f(u+1) }; g(x)", kThrowing, true},
    {"function f(t) { if (t) { return 1 }; return 2 }; f(x) + x", kThrowing, false},
    // Variables of the script, made before the formula or by it.
    {"x*k + j", {Column, true, "k = 3; j = -1"}, true},
    {"x*k", {Column, true, "k = \"three\""}, true},
    {"x*k", {Column, false, "k = {1, 2}"}, true},
    // The host's variables: one it does not know on odd rows.
    {"x + gone", kGetter, true},
    {"x + gone", kGetterThrowing, true},
    // Several statements: assignments are seen by the later statements of
    // the row and kept after it; the value is the return's, else the first.
    {"a = x*2; a+1", kThrowing, true},
    {"a = x*2; b = a+1; return a*b", kThrowing, true},
    {"a = 1/x; return a + 1", kThrowing, true},
    {"a = 1/x; return a + 1", kPlain, true},
    {"a = x*2; a = a+1; return a*10", kPlain, true},
    {"b = a*1 + 0; a = x + 1; return b", {Column, false, "a = 100"}, true},
    // A text compared in a choice, once per series.
    {"iif(mode == \"on\", x*2, -x)", {Column, true, "mode = \"on\""}, true, true},
    {"iif(mode != \"on\", x*2, -x)", {Column, true, "mode = \"on\""}, true, true},
    {"iif(mode == 1, x, 2)", {Column, false, "mode = \"on\""}, true},
    {"iif(mode == \"on\", x, 2)", {Column, false, "mode = {1, 2}"}, true},
    // One step on the column and constants, in a loop of its own: the
    // constant on either side, the column on both, a zero divisor, NaN.
    {"1 - x", kThrowing, true, true},
    {"x*x", kPlain, true, true},
    {"-x", kPlain, true, true},
    {"x^2", kThrowing, true, true},
    {"2^x", kPlain, true, true},
    {"x % 3", kPlain, true, true},
    {"3 % x", kThrowing, true, true},
    {"x + 0.5", kPlain, true, true},
    {"x < 1", kPlain, true, true},
    {"x > 0", kThrowing, true, true},
    {"x <= 1", kPlain, true, true},
    {"0 >= x", kPlain, true, true},
    {"x*x + 1", kPlain, true, true},
    {"x*2 + x", kPlain, true, false},
    // The choice made once per series leaves the other branch out: a
    // divisor that is zero there fails nothing; copies are passed through.
    {"iif(mode == \"on\", x*2, 1/x)", {Column, true, "mode = \"on\""}, true, true},
    {"iif(mode == \"on\", x*2, 1/x)", {Column, true, "mode = \"off\""}, true, true},
    {"iif(mode != \"on\", x*2, x) + 1", {Column, true, "mode = \"on\""}, true, true},
    {"iif(mode == \"on\", x, 2)", {Column, true, "mode = \"on\""}, true},
    {"iif(mode == \"on\", x, 2)", {Column, true, "mode = \"off\""}, true},
    // A statement whose value nobody reads still runs, and fails, as in the tree.
    {"a = x*2; 1/x; return a", kThrowing, true},
    {"a = x*2; 1/x; return a", kPlain, true},
    // What stays with the tree.
    {"{x}*2", kThrowing, false},
    {"a = x*2; s = \"t\"; return a", kThrowing, false},
    {"iif(x == 1, 5, 6)", kPlain, false},
    {"k = x*2; iif(k == 2, 1, 0)", kPlain, false},
    {"c = iif(k == 2, x, 0); k = x*3; return c", {Column, false, "k = 2"}, false},
};

INSTANTIATE_TEST_SUITE_P(Cases, RowProgram, testing::ValuesIn(kRowCases));

// A variable made or changed after the formula was compiled is read where
// it lies at each series; a getter set after the program was made is used.
TEST(RowProgramRuns, VariablesAndGettersChangedAfterCompiling)
{
    CEquationTree tree;
    tree.BindColumn(QStringLiteral("x"), kX, kValid, kRows);
    tree.m_freeVariables = 1; // k is made after the compile
    ASSERT_TRUE(tree.Compile(QStringLiteral("x*k"), nullptr, true));
    std::vector<double> values(kRows);
    std::vector<unsigned char> valid(kRows);
    struct Step
    {
        const char *k; // what k holds now (null: not made yet)
        double row3;   // the value of row 3 (x = 4) when k is a number
    };
    const Step steps[] = {{nullptr, 0.0}, {"5", 20.0}, {"\"text\"", 0.0}, {"-2", -8.0}, {"0.5", 2.0}};
    CEquationTree setter;
    setter.SetVariables(tree.GetVariablesValue());
    for (const Step &s : steps) {
        if (s.k) {
            ASSERT_TRUE(setter.Compile(QStringLiteral("k = ") + QString::fromLatin1(s.k)));
            CRpnData ignored;
            setter.Run(ignored);
        }
        tree.EvaluateSeries(values.data(), valid.data(), 0, kRows - 1);
        if (s.row3 != 0.0) {
            EXPECT_EQ(valid[3], 1) << s.k;
            EXPECT_EQ(values[3], s.row3) << s.k;
        }
    }

    // A getter put in place without SetVariableAccess (as CopySettingsFrom
    // does) is the one the next series reads through, where k was read from
    // its place before.
    ASSERT_TRUE(setter.Compile(QStringLiteral("k = 3")));
    CRpnData ignored;
    setter.Run(ignored);
    tree.EvaluateSeries(values.data(), valid.data(), 0, kRows - 1);
    EXPECT_EQ(values[3], 12.0);
    tree.m_getVariable = [](CRpnData &result, int, int row, void *, void *, CRpnNode *, const QString &, int &) {
        result.SetDouble(-row);
    };
    tree.EvaluateSeries(values.data(), valid.data(), 0, kRows - 1);
    EXPECT_EQ(values[3], -12.0);
    EXPECT_EQ(valid[3], 1);

    // And the other way: the host's getter taken away, the name is the
    // script's.  (The throwing mode keeps the series row by row.)
    CEquationTree host;
    host.throwOnError = 1;
    host.m_freeVariables = 1;
    host.SetVariableAccess(
        [](CRpnData &result, int, int row, void *, void *, CRpnNode *, const QString &, int &) {
            result.SetDouble(row);
        },
        nullptr);
    ASSERT_TRUE(host.Compile(QStringLiteral("k*10"), nullptr, true));
    host.EvaluateSeries(values.data(), valid.data(), 0, 3);
    EXPECT_EQ(values[2], 20.0);
    host.m_getVariable = nullptr;
    CEquationTree hostSetter;
    hostSetter.SetVariables(host.GetVariablesValue());
    ASSERT_TRUE(hostSetter.Compile(QStringLiteral("k = 7")));
    hostSetter.Run(ignored);
    host.EvaluateSeries(values.data(), valid.data(), 0, 3);
    EXPECT_EQ(values[1], 70.0);
}

// Over a longer column: series that start and end inside the stretches
// between two stop checks, cells that are not valid at the stretches' edges,
// a column without validity bytes, a series past the column's end (beyond
// which lie numbers no row may read).  Every row is compared with the
// nodes, bit for bit.
struct LongCase
{
    const char *text;
    const char *variables; // run first in the tree
    bool throwing, validity;
    int first, last;
    bool oneStep;
};

class RowProgramLong : public testing::TestWithParam<LongCase>
{
};

constexpr int kLongRows = 700, kLongColumn = 690;

struct LongRun
{
    std::vector<double> values = std::vector<double>(kLongRows, kUntouched);
    std::vector<unsigned char> valid = std::vector<unsigned char>(kLongRows, 9);
    int good = -1;
    std::string thrown, error;
    bool oneStep = false;
};

LongRun runLong(const LongCase &c, bool nodes)
{
    std::vector<double> x(kLongRows, 1000.0);
    std::vector<unsigned char> ok(kLongRows, 1);
    for (int i = 0; i < kLongColumn; ++i)
        x[std::size_t(i)] = i % 9 - 4 + (i % 7) * 0.25; // zeros now and then
    x[300] = kNaN, x[301] = -kInf, x[302] = 1e-310;
    for (int row : {0, 255, 256, 257, 511, 600})
        ok[std::size_t(row)] = row == 600 ? 2 : 0;
    CEquationTree tree;
    tree.BindColumn(QStringLiteral("x"), x.data(), c.validity ? ok.data() : nullptr, kLongColumn);
    CRpnData ignored;
    if (c.variables && (!tree.Compile(QString::fromLatin1(c.variables)) || tree.Run(ignored) != 1))
        ADD_FAILURE() << c.variables;
    tree.throwOnError = c.throwing;
    EXPECT_TRUE(tree.Compile(QString::fromLatin1(c.text), nullptr, true, kMatcher)) << c.text;
    CRpnNode *top = tree.GetRoot();
    while (top && top->IsList() && !top->IsMultiOperand() && top->GetOperandCount() == 1)
        top = top->GetOperand(0);
    std::unique_ptr<CRpnRowProgram> steps = nodes ? nullptr : CRpnRowProgram::Build(&tree, top);
    EXPECT_TRUE(nodes || steps) << c.text;
    LongRun o;
    try {
        if (steps) {
            o.good = steps->Series(&tree, top, o.values.data(), o.valid.data(), c.first, c.last);
        } else {
            WalkTree(tree.GetRoot(), [](CRpnNode *node) {
                node->m_fastPath = node->m_fastValue = false;
                return 0;
            });
            o.good = 0;
            for (int r = c.first; r <= c.last; ++r) {
                tree.m_rowIndex = r;
                unsigned char st = 1;
                double value = top->EvaluateReal(st);
                o.valid[std::size_t(r)] = RpnSeriesValidity(value, st);
                o.values[std::size_t(r)] = value;
                o.good += o.valid[std::size_t(r)] == 1;
            }
        }
    } catch (const std::exception &e) {
        o.thrown = std::to_string(tree.m_rowIndex) + ": " + message(e);
        o.good = -1;
    }
    o.error = tree.GetErrorMessage().toStdString();
    o.oneStep = steps && steps->RunsOneStep();
    return o;
}

TEST_P(RowProgramLong, SameRowsAsTheNodes)
{
    const LongCase &c = GetParam();
    const LongRun steps = runLong(c, false), nodes = runLong(c, true);
    EXPECT_EQ(steps.oneStep, c.oneStep) << c.text;
    EXPECT_EQ(steps.good, nodes.good) << c.text;
    EXPECT_EQ(steps.thrown + " | " + steps.error, nodes.thrown + " | " + nodes.error) << c.text;
    for (std::size_t r = 0; r < std::size_t(kLongRows); ++r) {
        const double a = steps.values[r], b = nodes.values[r];
        ASSERT_TRUE(((std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0)
                    && steps.valid[r] == nodes.valid[r])
            << c.text << " row " << r << ": " << int(steps.valid[r]) << ':' << a << " against " << int(nodes.valid[r])
            << ':' << b;
    }
}

const LongCase kLongCases[] = {
    {"x*2+1", nullptr, false, true, 0, kLongRows - 1, true},
    {"x*2+1", nullptr, false, false, 0, kLongRows - 1, true},
    {"x*2+1", nullptr, false, true, 100, 620, true},
    {"x*2+1", nullptr, false, false, 0, kLongColumn, true}, // one row past the column
    {"x*2+1", nullptr, true, true, 1, 254, true},
    {"x*2+1", nullptr, true, true, 1, kLongRows - 1, true},
    {"1/x", nullptr, false, true, 3, 688, true},
    {"1/x", nullptr, true, false, 0, kLongRows - 1, true},
    {"x % x", nullptr, false, false, 0, 400, true},
    {"x*2 + x", nullptr, false, true, 0, kLongRows - 1, false},
    {"x*k", "k = 3", true, true, 5, 300, false},
    {"iif(mode == \"on\", x*2, 1/x)", "mode = \"on\"", false, true, 0, kLongRows - 1, true},
    {"iif(mode == \"on\", x*2, 1/x)", "mode = \"off\"", false, true, 0, kLongRows - 1, true},
    {"iif(mode != \"on\", x*2, x) - 1", "mode = \"on\"", true, true, 0, 520, true},
};

INSTANTIATE_TEST_SUITE_P(Cases, RowProgramLong, testing::ValuesIn(kLongCases));

} // namespace
