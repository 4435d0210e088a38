// Computed curves over a million rows against muparser's bulk mode on the
// same columns, in the same run.  Each expression runs as a graph's
// computed curve (CFormulaCurveJob: the snapshot, the compile, the run in
// pieces with its stop check and progress, the gaps of invalid input, the
// result column with its extents), and as a bare series of the language over
// bound columns in one piece; muparser evaluates the same columns in bulk.
// The first ratio is the curve's against muparser's, the second what the
// job adds to the bare series (its pieces, progress, stop check and gaps).
//
// AvgX has no peer in muparser: its block averages are computed by a plain
// loop there, inside the timed part, and muparser adds the rest.  The last
// expressions take the language's node tree row by row (a choice, a
// function of the text, a user function of the graph).

#include "graphdata/formula/formulacurve.h"
#include "graphdata/formula/graphcustom.h"
#include "graphdata/formula/graphnodes.h"
#include "graphdata/graphcurve.h"

#include "formula/rpnseries.h"
#include "formula/rpntree.h"

#include <muParser.h>

#include <QSettings>
#include <QTemporaryDir>

#include "bench/benchpeers.h"

#include <cmath>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kRows = 1000000;
constexpr double kStep = 1e-6; // Time runs over one second
constexpr double kWidth = 1e-3; // AvgX's blocks: a thousand rows each

struct Expression
{
    const char *tarn;
    const char *mu;     // over Time, V1 and (for AvgX) A, the block averages of V1
    bool averages;
};
const Expression kPairs[] = {
    {"V1*2+1", "V1*2+1", false},
    {"(V1+1)*(V1-1)/(V1*V1+1)", "(V1+1)*(V1-1)/(V1*V1+1)", false},
    {"V1^2-3*V1+2", "V1^2-3*V1+2", false},
    {"sin(V1)*cos(V1)", "sin(V1)*cos(V1)", false},
    {"sqrt(V1*V1+1)", "sqrt(V1*V1+1)", false},
    {"exp(-V1)*V1", "exp(-V1)*V1", false},
    {"log10(V1+1)", "log10(V1+1)", false},
    {"min(V1,0.5)+max(V1,0.25)", "min(V1,0.5)+max(V1,0.25)", false},
    {"sin(Time)*2+AvgX(V1, 1e-3)", "sin(Time)*2+A", true},
    {"iif(V1 > 1, V1*2, 1-V1)", "V1 > 1 ? V1*2 : 1-V1", false},
    {"function f(t) { return t*t+1 }; f(V1)", "V1*V1+1", false},
    {"square(V1)", "V1*V1+1", false}, // the graph's user function square{GRAPH*GRAPH+1}
};
constexpr int kExpressionCount = int(std::size(kPairs));

struct Columns
{
    std::vector<double> time, v1;
};

const Columns &columns()
{
    static const Columns c = [] {
        Columns out;
        out.time.resize(kRows);
        out.v1.resize(kRows);
        for (int i = 0; i < kRows; ++i) {
            out.time[std::size_t(i)] = i * kStep;
            out.v1[std::size_t(i)] = -0.5 + 10.0 * i / kRows;
        }
        return out;
    }();
    return c;
}

CGraphCurve &graph()
{
    static CGraphCurve *g = [] {
        auto *curve = new CGraphCurve;
        const Columns &c = columns();
        curve->m_data.Create(1, 2, kRows, 0);
        curve->m_data.GetColumn(0)->m_name = QStringLiteral("Time");
        curve->m_data.GetColumn(1)->m_name = QStringLiteral("V1");
        std::vector<double> rows(std::size_t(kRows) * 2);
        for (int i = 0; i < kRows; ++i) {
            rows[std::size_t(i) * 2] = c.time[std::size_t(i)];
            rows[std::size_t(i) * 2 + 1] = c.v1[std::size_t(i)];
        }
        curve->m_data.AppendRows(rows.data(), nullptr, 0, 2, 0, kRows);
        return curve;
    }();
    return *g;
}

// AvgX's blocks by a plain loop: the mean of V1 over each run of rows that
// covers kWidth of Time (even steps: the weights are equal).
void blockAverages(const std::vector<double> &v, std::vector<double> &out)
{
    const int block = int(std::lround(kWidth / kStep));
    for (int start = 0; start < kRows; start += block) {
        const int end = std::min(kRows, start + block);
        double sum = 0;
        for (int i = start; i < end; ++i)
            sum += v[std::size_t(i)];
        const double mean = sum / (end - start);
        for (int i = start; i < end; ++i)
            out[std::size_t(i)] = mean;
    }
}

// How a curve's job runs: in pieces with the stop check and the progress
// between them, as a window runs it; in one piece (no progress, no stop
// check between pieces); in the same pieces without looking at the stop
// flag or storing the progress (what the looking costs, at equal pieces);
// or in pieces on a worker thread that this thread looks at every
// millisecond, as the progress box's timer would (far more often than it
// does; wall time, as the work is on the other thread, its start included).
enum class Mode { Pieces, Whole, Unwatched, OnWorker };

void runCurve(benchmark::State &state, Mode mode)
{
    const QString formula = QString::fromLatin1(kPairs[state.range(0)].tarn);
    double seen = 0;
    for (auto _ : state) {
        CFormulaCurveJob job;
        if (mode == Mode::Whole)
            job.SetPieceRows(kRows);
        job.SetWatched(mode != Mode::Unwatched);
        if (!job.Prepare(graph(), formula)) {
            state.SkipWithError("the formula does not compile");
            return;
        }
        if (mode == Mode::OnWorker) {
            std::thread worker([&job] { job.Run(); });
            while (!job.IsFinished()) {
                seen += job.Progress();
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            worker.join();
        } else {
            job.Run();
        }
        benchmark::DoNotOptimize(job.Result().Get());
    }
    benchmark::DoNotOptimize(seen);
    state.SetItemsProcessed(state.iterations() * kRows);
}

void BM_Curve(benchmark::State &state)
{
    runCurve(state, Mode::Pieces);
}

void BM_CurveWhole(benchmark::State &state)
{
    runCurve(state, Mode::Whole);
}

void BM_CurveUnwatched(benchmark::State &state)
{
    runCurve(state, Mode::Unwatched);
}

void BM_CurveOnWorker(benchmark::State &state)
{
    runCurve(state, Mode::OnWorker);
}

void BM_Series(benchmark::State &state)
{
    const Columns &c = columns();
    std::vector<double> values(kRows), x(kRows);
    std::vector<unsigned char> valid(kRows);
    CEquationTree tree;
    tree.BindColumn(QStringLiteral("Time"), c.time.data(), nullptr, kRows);
    tree.BindColumn(QStringLiteral("V1"), c.v1.data(), nullptr, kRows);
    tree.SetSampling(kStep, c.time.data(), kRows);
    if (std::string(kPairs[state.range(0)].tarn).rfind("square", 0) == 0) {
        state.SkipWithError("a user function of the graph needs a graph tree");
        return;
    }
    if (!tree.Compile(QString::fromLatin1(kPairs[state.range(0)].tarn))) {
        state.SkipWithError("the formula does not compile");
        return;
    }
    for (auto _ : state) {
        tree.ResetRun();
        tree.PrepareRun(0, kRows - 1);
        const int good = tree.EvaluateSeries(values.data(), valid.data(), 0, kRows - 1);
        benchmark::DoNotOptimize(good);
        benchmark::DoNotOptimize(values.data());
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void BM_MuParserBulk(benchmark::State &state)
{
    const Expression &e = kPairs[state.range(0)];
    std::vector<double> time = columns().time, v1 = columns().v1, averages(kRows), values(kRows);
    mu::Parser parser;
    parser.DefineVar("Time", time.data());
    parser.DefineVar("V1", v1.data());
    parser.DefineVar("A", averages.data());
    parser.SetExpr(e.mu);
    for (auto _ : state) {
        // As the curve's run does: a string hashed anywhere in the process
        // may have left the wide registers dirty (see rpnseries.h), which
        // would slow every call of the maths library on both sides.
        RpnClearUpperVectorState();
        if (e.averages)
            blockAverages(v1, averages);
        parser.Eval(values.data(), kRows);
        benchmark::DoNotOptimize(values.data());
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

BENCHMARK(BM_Curve)->DenseRange(0, kExpressionCount - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CurveWhole)->DenseRange(0, kExpressionCount - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CurveUnwatched)->DenseRange(0, kExpressionCount - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CurveOnWorker)->DenseRange(0, kExpressionCount - 1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Series)->DenseRange(0, kExpressionCount - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MuParserBulk)->DenseRange(0, kExpressionCount - 1)->Unit(benchmark::kMillisecond);

// Both must agree before their speeds mean anything.
bool resultsAgree()
{
    std::vector<double> time = columns().time, v1 = columns().v1, averages(kRows), values(kRows);
    blockAverages(v1, averages);
    bool agree = true;
    for (const Expression &e : kPairs) {
        CFormulaCurveJob job;
        if (!job.Prepare(graph(), QString::fromLatin1(e.tarn))) {
            std::printf("%s does not compile: %s\n", e.tarn, qPrintable(FormulaErrorText(job)));
            agree = false;
            continue;
        }
        job.Run();
        mu::Parser parser;
        parser.DefineVar("Time", time.data());
        parser.DefineVar("V1", v1.data());
        parser.DefineVar("A", averages.data());
        parser.SetExpr(e.mu);
        parser.Eval(values.data(), kRows);
        const CGraphColumn *mine = job.Result().Get();
        for (int i = 0; i < kRows; i += 997) {
            const double b = values[std::size_t(i)];
            if (!mine || mine->m_valid[i] != 1 || std::fabs(mine->m_values[i] - b) > 1e-9 * std::max(1.0, std::fabs(b))) {
                std::printf("MISMATCH for %s at row %d: %.17g against muparser's %.17g\n", e.tarn, i,
                            mine ? mine->m_values[i] : 0.0, b);
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
    // The user function lives in settings of this run only.
    QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    EnsureGraphFunctions();
    GetGraphCustom().SaveFunctions({QStringLiteral("square{GRAPH*GRAPH+1}")});
    ReloadUserFunctions();

    const bool agree = resultsAgree();
    CCpuTimeReporter reporter;
    RunInterleaved(argc, argv, reporter);
    std::printf("\nRows per second over %d rows (higher is better), CPU time\n", kRows);
    std::printf("%-40s %12s %12s %8s   %12s %10s %10s %10s %10s\n", "expression", "curve", "mu bulk", "ratio",
                "series", "job cost", "pieces", "watching", "worker");
    for (int i = 0; i < kExpressionCount; ++i) {
        auto seconds = [&](const char *name) { return reporter.Seconds(name, i); };
        const double curve = seconds("BM_Curve"), series = seconds("BM_Series"), bulk = seconds("BM_MuParserBulk");
        const double whole = seconds("BM_CurveWhole"), unwatched = seconds("BM_CurveUnwatched");
        const double worker = reporter.WallSeconds("BM_CurveOnWorker", i);
        const double wholeWall = reporter.WallSeconds("BM_CurveWhole", i);
        if (curve <= 0)
            continue;
        auto change = [](double a, double b) { return b > 0 && a > 0 ? (a / b - 1) * 100 : 0.0; };
        std::printf("%-40s %12.3g %12.3g %8.2f   %12.3g %9.1f%% %9.1f%% %9.1f%% %9.1f%%\n", kPairs[i].tarn,
                    kRows / curve, bulk > 0 ? kRows / bulk : 0.0, bulk > 0 ? bulk / curve : 0.0,
                    series > 0 ? kRows / series : 0.0, change(curve, series), change(curve, whole),
                    change(curve, unwatched), change(worker, wholeWall));
    }
    std::printf("ratio: muparser's time over the curve's (above 1: the curve is faster); job cost: the curve's "
                "time over the bare series', less one (the snapshot, compile, new column, extents and gaps); "
                "pieces: the curve in pieces with progress and stop checks over the curve in one piece, less one; "
                "watching: the curve over the same pieces without the stop checks and progress, less one; "
                "worker: the curve on a worker thread watched every millisecond over the curve in one piece, both "
                "in wall time, less one.  With --benchmark_repetitions the medians are taken.\n");
    if (!agree)
        std::printf("The results differ: see the mismatches above.\n");
    benchmark::Shutdown();
    return agree ? 0 : 1;
}
