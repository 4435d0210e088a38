// The drawing pass of one curve of 10 million rows into a 1000 pixel wide
// image, against the floor no drawing can beat: a plain loop that finds the
// minimum and maximum of each pixel column over the same two arrays.  Then
// the incremental pass that draws 10,000 rows added to that curve, against
// the full pass and against the plain loop over just the new rows.  Prints
// the times, the ratios and the points that reach the painter.
#include "graphdata/draw/graphdraw.h"
#include "graphdata/graphcurve.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

const int kRows = 10'000'000;
const int kAdded = 10'000;
const int kWidth = 1000;
const int kIncrementalRounds = 40;

double g_peerSeconds = 0, g_drawSeconds = 0, g_incrementalSeconds = 0, g_peerNewSeconds = 0;
int g_points = 0, g_incrementalPoints = 0, g_plotWidth = 0;

double valueAt(int row)
{
    return std::sin(row * 2e-6) + 0.25 * std::sin(row * 0.37) + 0.05 * double((std::int64_t(row) * 7919) % 13);
}

// Appends rows first.. first + count - 1 of the test curve.
void appendRows(CGraphData &data, int first, int count)
{
    std::vector<double> rows(std::size_t(count) * 2);
    for (int i = 0; i < count; ++i) {
        rows[2 * std::size_t(i)] = first + i;
        rows[2 * std::size_t(i) + 1] = valueAt(first + i);
    }
    data.AppendRows(rows.data(), nullptr, 0, 2, first, count);
}

struct Setup
{
    CGraphCurve graph;
    QImage image{kWidth, 400, QImage::Format_RGB32};
    explicit Setup(double xMax)
    {
        graph.m_data.Create(1, 2, kRows + kIncrementalRounds * kAdded + 10, 0);
        for (int r = 0; r < kRows; r += 100'000)
            appendRows(graph.m_data, r, 100'000);
        graph.m_data->m_ordered = 1;
        graph.m_backColor = 0xFFFFFF;
        bool changed;
        graph.AddCurve(1, 0, false, changed);
        graph.m_xViewMin = 0;
        graph.m_xViewMax = xMax;
        graph.Range(0)->m_viewMin = -1.5;
        graph.Range(0)->m_viewMax = 1.9;
    }
    CDrawResult draw(unsigned flags)
    {
        QPainter p(&image);
        CDrawRequest request;
        request.flags = flags;
        request.target = image.rect();
        return DrawGraph(graph, p, request);
    }
};

// The floor: one pass over both arrays, a minimum and a maximum per column.
void minMaxPerColumn(const double *x, const double *y, int first, int last, double xMin, double xScale,
                     std::vector<double> &lo, std::vector<double> &hi)
{
    const int columns = int(lo.size());
    for (int i = first; i <= last; ++i) {
        const int c = int((x[i] - xMin) * xScale);
        if (c < 0 || c >= columns)
            continue;
        const double v = y[i];
        if (v < lo[std::size_t(c)])
            lo[std::size_t(c)] = v;
        if (v > hi[std::size_t(c)])
            hi[std::size_t(c)] = v;
    }
}

double seconds(std::chrono::steady_clock::time_point since)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

Setup *g_full = nullptr;

void BM_MinMaxPeer(benchmark::State &state)
{
    const CGraphColumn *x = g_full->graph.m_data.GetColumn(0), *y = g_full->graph.m_data.GetColumn(1);
    std::vector<double> lo(kWidth), hi(kWidth);
    double total = 0;
    for (auto _ : state) {
        std::fill(lo.begin(), lo.end(), 1e300);
        std::fill(hi.begin(), hi.end(), -1e300);
        const auto start = std::chrono::steady_clock::now();
        minMaxPerColumn(x->m_values, y->m_values, 0, kRows - 1, 0, double(kWidth) / kRows, lo, hi);
        benchmark::DoNotOptimize(lo.data());
        benchmark::DoNotOptimize(hi.data());
        total += seconds(start);
    }
    g_peerSeconds = total / double(state.iterations());
}

void BM_DrawPass(benchmark::State &state)
{
    double total = 0;
    for (auto _ : state) {
        // Without the cache, so that every pass walks all rows.
        g_full->graph.ClearCurveCaches();
        const auto start = std::chrono::steady_clock::now();
        const CDrawResult result = g_full->draw(DrawFull);
        total += seconds(start);
        g_points = result.points;
    }
    g_drawSeconds = total / double(state.iterations());
    g_plotWidth = g_full->graph.m_plotRect.right - g_full->graph.m_plotRect.left;
}

void BM_IncrementalPass(benchmark::State &state)
{
    // The view reaches past the rows to come, so that they are drawn.
    Setup setup(kRows + double(kIncrementalRounds) * kAdded);
    setup.draw(DrawFull);
    int next = kRows;
    double total = 0, peer = 0;
    int points = 0;
    std::vector<double> lo(kWidth), hi(kWidth);
    for (auto _ : state) {
        state.PauseTiming();
        appendRows(setup.graph.m_data, next, kAdded);
        state.ResumeTiming();
        const auto start = std::chrono::steady_clock::now();
        const CDrawResult result = setup.draw(0);
        total += seconds(start);
        if (result.kind != CDrawResult::Incremental)
            state.SkipWithError("the pass was not incremental");
        points += result.points;
        const CGraphColumn *x = setup.graph.m_data.GetColumn(0), *y = setup.graph.m_data.GetColumn(1);
        const auto peerStart = std::chrono::steady_clock::now();
        minMaxPerColumn(x->m_values, y->m_values, next, next + kAdded - 1, 0,
                        kWidth / (kRows + double(kIncrementalRounds) * kAdded), lo, hi);
        benchmark::DoNotOptimize(lo.data());
        peer += seconds(peerStart);
        next += kAdded;
    }
    g_incrementalSeconds = total / double(state.iterations());
    g_peerNewSeconds = peer / double(state.iterations());
    g_incrementalPoints = points / int(state.iterations());
}

BENCHMARK(BM_MinMaxPeer)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_DrawPass)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_IncrementalPass)->Unit(benchmark::kMicrosecond)->Iterations(kIncrementalRounds);

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    Setup full(kRows);
    full.draw(DrawFull); // fonts and layout warmed up
    g_full = &full;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (g_peerSeconds > 0 && g_drawSeconds > 0) {
        std::printf("Draw pass of %d rows into a %d pixel wide image (plot %d pixels): %.1f ms; "
                    "min/max per pixel column loop: %.1f ms; ratio %.2f (aim: at most 2); "
                    "%d points reached the painter\n",
                    kRows, kWidth, g_plotWidth, g_drawSeconds * 1e3, g_peerSeconds * 1e3, g_drawSeconds / g_peerSeconds,
                    g_points);
    }
    if (g_incrementalSeconds > 0 && g_drawSeconds > 0 && g_peerNewSeconds > 0) {
        std::printf("Incremental pass of %d new rows on %d drawn: %.3f ms (%.1f ns per new row); "
                    "full pass %.1f ms (%.1f ns per row); min/max loop over the new rows %.3f ms, ratio %.2f; "
                    "%d points drawn per pass\n",
                    kAdded, kRows, g_incrementalSeconds * 1e3, g_incrementalSeconds / kAdded * 1e9, g_drawSeconds * 1e3,
                    g_drawSeconds / kRows * 1e9, g_peerNewSeconds * 1e3, g_incrementalSeconds / g_peerNewSeconds,
                    g_incrementalPoints);
    }
    return 0;
}
