// EvaluateSeries over a million rows against muparser on the same array, in
// the same run.  The tree reads x in two ways: as a column bound with
// BindColumn (the block evaluator), and through a host getter called for
// every row (block by block too where the expression allows); and the node
// tree is walked row by row in the throwing mode, which always takes it.
// muparser evaluates the same text row by row (Eval after moving its
// variable) and in its bulk mode.  The operator expressions come first, then
// the built-in functions.

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
// muparser reads them the same way.  The last ones take the node tree row by
// row in every mode (a choice, a user function, several statements), and
// muparser gets the same computation in its own words.
struct Expression
{
    const char *tarn;
    const char *mu;
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
};
constexpr int kExpressionCount = int(std::size(kPairs));
const char *const kExpressions[kExpressionCount] = {
    kPairs[0].tarn, kPairs[1].tarn, kPairs[2].tarn, kPairs[3].tarn, kPairs[4].tarn,
    kPairs[5].tarn, kPairs[6].tarn, kPairs[7].tarn, kPairs[8].tarn, kPairs[9].tarn,
};

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

void getX(CRpnData &result, int, int row, void *, void *, CRpnNode *, const QString &, int &found)
{
    if (row < 0 || row >= kRows) {
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
    // The throwing mode always walks the node tree row by row.
    tree.throwOnError = mode == Throwing || mode == ThrowingGetter;
    if (!tree.Compile(QString::fromLatin1(kExpressions[state.range(0)]), nullptr, false, matcher)) {
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
    double xv = 0.0;
    mu::Parser parser;
    parser.DefineVar("x", &xv);
    parser.SetExpr(kPairs[state.range(0)].mu);
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
    std::vector<double> values(kRows);
    mu::Parser parser;
    parser.DefineVar("x", x.data());
    parser.SetExpr(kPairs[state.range(0)].mu);
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
    for (const Expression &pair : kPairs) {
        const char *text = pair.tarn;
        CEquationTree tree;
        tree.BindColumn(QStringLiteral("x"), x.data(), nullptr, kRows);
        tree.Compile(QString::fromLatin1(text), nullptr, true);
        tree.EvaluateSeries(mine.data(), valid.data(), 0, kRows - 1);
        std::vector<double> xs = x;
        mu::Parser parser;
        parser.DefineVar("x", xs.data());
        parser.SetExpr(pair.mu);
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
    // Like for like: our block evaluator (a bound column) against muparser's
    // bulk mode; the series through a host getter (block by block where the
    // expression allows, with a getter call per variable and row) and the
    // node tree row by row (the throwing mode, which always takes it)
    // against muparser's Eval row by row.
    std::printf("\nRows per second over %d rows (higher is better), CPU time; a ratio above 1: we are faster\n", kRows);
    std::printf("%-40s %10s %10s %6s   %10s %10s %10s %6s %6s\n", "expression", "tarn block", "mu bulk", "ratio",
                "getter", "tree", "mu row", "g/row", "t/row");
    for (int i = 0; i < kExpressionCount; ++i) {
        auto rate = [&](const char *name) {
            const double t = reporter.Seconds(name, i);
            return t > 0 ? kRows / t : 0.0;
        };
        const double column = rate("BM_TarnColumn"), getter = rate("BM_TarnGetter"), tree = rate("BM_TarnTree");
        const double row = rate("BM_MuParserRow"), bulk = rate("BM_MuParserBulk");
        std::printf("%-40s %10.3g %10.3g %6.2f   %10.3g %10.3g %10.3g %6.2f %6.2f\n", kExpressions[i], column, bulk,
                    bulk > 0 ? column / bulk : 0.0, getter, tree, row, row > 0 ? getter / row : 0.0,
                    row > 0 ? tree / row : 0.0);
    }
    if (!agree)
        std::printf("The results of the two evaluators differ: see the mismatches above.\n");
    benchmark::Shutdown();
    return agree ? 0 : 1;
}
