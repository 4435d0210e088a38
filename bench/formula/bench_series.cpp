// EvaluateSeries over a million rows against muparser on the same array, in
// the same run.  The tree reads x in two ways: as a column bound with
// BindColumn, and through a host getter called for every row.  The series
// runs block by block where the expression allows (not in the throwing
// mode), else row by row: as steps where the formula is made of plain
// numbers, else by walking the node tree.  muparser evaluates the same text
// row by row (Eval after moving its variable, which it reads through a
// pointer) and in its bulk mode.  Like for like, the per-row column that
// faces muparser's Eval is the throwing mode over a bound column; the same
// through the getter is printed beside it, since a host getter is a real use
// too.  The operator expressions come first, then the built-in functions,
// then formulas that always go row by row.

#include "functions/rpnfunctions.h"
#include "formula/rpntree.h"

#include <muParser.h>

#include "bench/benchpeers.h"

#include <cmath>
#include <cstdio>
#include <iterator>
#include <vector>

namespace {

constexpr int kRows = 1000000;

// Written so that the language's own precedence gives the usual meaning;
// muparser reads them the same way.  The last ones go row by row in every
// mode (several statements, a text compared in a choice), and muparser gets
// the same computation in its own words.  `setup` runs in the tree before
// the formula is compiled (the script's own variables).
struct Expression
{
    const char *tarn;
    const char *mu;
    const char *setup = nullptr;
};
const Expression kPairs[] = {
    {"x*2+1", "x*2+1"},
    {"(x+1)*(x-1)/(x*x+1)", "(x+1)*(x-1)/(x*x+1)"},
    {"x^2-3*x+2", "x^2-3*x+2"},
    {"sin(x)*cos(x)", "sin(x)*cos(x)"},
    {"sqrt(x*x+1)", "sqrt(x*x+1)"},
    {"exp(-x)*x", "exp(-x)*x"},
    {"log10(x+1)", "log10(x+1)"},
    {"min(x,0.5)+max(x,0.25)", "min(x,0.5)+max(x,0.25)"},
    {"iif(x > 1, x*2, 1-x)", "x > 1 ? x*2 : 1-x"},
    {"function f(t) { return t*t+1 }; f(x)", "x*x+1"},
    {"a = x*2; b = a+1; return a*b", "a = x*2, b = a+1, a*b"},
    {"iif(mode == \"twice\", x*2, x)", "x*2", "mode = \"twice\""},
};
constexpr int kExpressionCount = int(std::size(kPairs));

// Compiles the formula of pair `i` in `tree`, after its setup.
bool compilePair(CEquationTree &tree, int i, const CRpnVariableMatcher &matcher = {})
{
    if (const char *setup = kPairs[i].setup) {
        CRpnData ignored;
        if (!tree.Compile(QString::fromLatin1(setup)) || tree.Run(ignored) != 1)
            return false;
    }
    return tree.Compile(QString::fromLatin1(kPairs[i].tarn), nullptr, true, matcher) != 0;
}

// muparser with the variables of pair `i` beside x.
void defineMu(mu::Parser &parser, double *x, double *a, double *b, int i)
{
    parser.DefineVar("x", x);
    parser.DefineVar("a", a);
    parser.DefineVar("b", b);
    parser.SetExpr(kPairs[i].mu);
}

const std::vector<double> &column()
{
    static const std::vector<double> x = [] {
        std::vector<double> v(kRows);
        // Where every expression is defined (log10 needs x above -1).
        for (int i = 0; i < kRows; ++i)
            v[std::size_t(i)] = -0.5 + 10.0 * i / kRows;
        return v;
    }();
    return x;
}

const double *g_x = nullptr;

// The host knows x only (the matcher gave it slot 0); the script's own
// variables are the script's.
void getX(CRpnData &result, int index, int row, void *, void *, CRpnNode *, const QString &, int &found)
{
    if (index != 0 || row < 0 || row >= kRows) {
        found = 0;
        return;
    }
    result.SetDouble(g_x[row]);
}

enum Mode { Bound, Getter, Throwing, ThrowingGetter };

void runTree(benchmark::State &state, Mode mode)
{
    const bool bound = mode == Bound || mode == Throwing;
    const std::vector<double> &x = column();
    std::vector<double> values(kRows);
    std::vector<unsigned char> valid(kRows);
    CEquationTree tree;
    const QString name = QStringLiteral("x");
    if (bound) {
        tree.BindColumn(name, x.data(), nullptr, kRows);
    } else {
        g_x = x.data();
        tree.SetVariableAccess(getX, nullptr);
    }
    // x is the host's: a matcher claims it, as a graph host claims its columns.
    const CRpnVariableMatcher matcher = [](QStringView rest, int &index) {
        index = 0;
        return rest.startsWith(u'x') && (rest.size() == 1 || !rest[1].isLetterOrNumber()) ? 1 : 0;
    };
    // The throwing mode always goes row by row.
    tree.throwOnError = mode == Throwing || mode == ThrowingGetter;
    if (!compilePair(tree, int(state.range(0)), matcher)) {
        state.SkipWithError("compile failed");
        return;
    }
    for (auto _ : state) {
        const int good = tree.EvaluateSeries(values.data(), valid.data(), 0, kRows - 1);
        benchmark::DoNotOptimize(good);
        benchmark::DoNotOptimize(values.data());
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void BM_TarnColumn(benchmark::State &state)
{
    runTree(state, Bound);
}

void BM_TarnGetter(benchmark::State &state)
{
    runTree(state, Getter);
}

void BM_TarnTree(benchmark::State &state)
{
    runTree(state, Throwing);
}

void BM_TarnTreeGetter(benchmark::State &state)
{
    runTree(state, ThrowingGetter);
}

void BM_MuParserRow(benchmark::State &state)
{
    const std::vector<double> &x = column();
    std::vector<double> values(kRows);
    double xv = 0.0, a = 0.0, b = 0.0;
    mu::Parser parser;
    defineMu(parser, &xv, &a, &b, int(state.range(0)));
    for (auto _ : state) {
        for (int i = 0; i < kRows; ++i) {
            xv = x[std::size_t(i)];
            values[std::size_t(i)] = parser.Eval();
        }
        benchmark::DoNotOptimize(values.data());
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void BM_MuParserBulk(benchmark::State &state)
{
    std::vector<double> x = column();
    std::vector<double> values(kRows), a(kRows), b(kRows);
    mu::Parser parser;
    defineMu(parser, x.data(), a.data(), b.data(), int(state.range(0)));
    for (auto _ : state) {
        parser.Eval(values.data(), kRows);
        benchmark::DoNotOptimize(values.data());
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

BENCHMARK(BM_TarnColumn)->DenseRange(0, kExpressionCount - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TarnGetter)->DenseRange(0, kExpressionCount - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TarnTree)->DenseRange(0, kExpressionCount - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TarnTreeGetter)->DenseRange(0, kExpressionCount - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MuParserRow)->DenseRange(0, kExpressionCount - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MuParserBulk)->DenseRange(0, kExpressionCount - 1)->Unit(benchmark::kMillisecond);

// Both evaluators must agree before their speeds mean anything.
bool resultsAgree()
{
    const std::vector<double> &x = column();
    std::vector<double> values(kRows), mine(kRows);
    std::vector<unsigned char> valid(kRows);
    bool agree = true;
    for (int p = 0; p < kExpressionCount; ++p) {
        const char *text = kPairs[p].tarn;
        CEquationTree tree;
        tree.BindColumn(QStringLiteral("x"), x.data(), nullptr, kRows);
        if (!compilePair(tree, p)) {
            std::printf("COMPILE FAILED for %s\n", text);
            agree = false;
            continue;
        }
        tree.EvaluateSeries(mine.data(), valid.data(), 0, kRows - 1);
        std::vector<double> xs = x, as(kRows), bs(kRows);
        mu::Parser parser;
        defineMu(parser, xs.data(), as.data(), bs.data(), p);
        parser.Eval(values.data(), kRows);
        for (int i = 0; i < kRows; i += 997) {
            const double a = mine[std::size_t(i)], b = values[std::size_t(i)];
            if (valid[std::size_t(i)] != 1 || std::fabs(a - b) > 1e-12 * std::max(1.0, std::fabs(b))) {
                std::printf("MISMATCH for %s at row %d: %.17g against muparser's %.17g\n", text, i, a, b);
                agree = false;
                break;
            }
        }
    }
    return agree;
}

} // namespace

int main(int argc, char **argv)
{
    UseOneOpenMpThread(argv);
    RegisterFunctionLibrary();
    const bool agree = resultsAgree();
    CCpuTimeReporter reporter;
    RunInterleaved(argc, argv, reporter);
    // Like for like: the series over a bound column (block by block where
    // the expression allows) against muparser's bulk mode; the throwing mode
    // over a bound column (row by row, as muparser's Eval reads its variable
    // through a pointer) against muparser's Eval row by row.  Beside them,
    // the series through a host getter (a getter call per variable and row)
    // in both modes, also against muparser's Eval.
    std::printf("\nRows per second over %d rows (higher is better), CPU time; a ratio above 1: we are faster\n", kRows);
    std::printf("%-40s %9s %9s %6s   %9s %9s %9s %9s %6s %6s %6s\n", "expression", "column", "mu bulk", "c/bulk",
                "row", "getter", "row getr", "mu row", "r/row", "g/row", "rg/row");
    for (int i = 0; i < kExpressionCount; ++i) {
        auto rate = [&](const char *name) {
            const double t = reporter.Seconds(name, i);
            return t > 0 ? kRows / t : 0.0;
        };
        const double column = rate("BM_TarnColumn"), getter = rate("BM_TarnGetter"), tree = rate("BM_TarnTree");
        const double treeGetter = rate("BM_TarnTreeGetter");
        const double row = rate("BM_MuParserRow"), bulk = rate("BM_MuParserBulk");
        auto ratio = [](double a, double b) { return b > 0 ? a / b : 0.0; };
        std::printf("%-40s %9.3g %9.3g %6.2f   %9.3g %9.3g %9.3g %9.3g %6.2f %6.2f %6.2f\n", kPairs[i].tarn, column,
                    bulk, ratio(column, bulk), tree, getter, treeGetter, row, ratio(tree, row), ratio(getter, row),
                    ratio(treeGetter, row));
    }
    if (!agree)
        std::printf("The results of the two evaluators differ: see the mismatches above.\n");
    benchmark::Shutdown();
    return agree ? 0 : 1;
}
