// The live oscilloscope: a writer thread appends 100,000 rows a second over
// 4 channels while frames of the roll-mode screen (the last 10,000 rows, a
// tenth of a second) are drawn one after the other into a 900 by 560
// image, as the window does.  Reported: the time a frame takes, how many
// frames a second that allows, and the rows the writer kept up.  The goal
// is 60 frames a second with each frame under 4 ms.
//
// Then the sweep (no roll): rows added to a screen drawn only where they
// are new, in batches of 1,000, 10,000 and 100,000 rows, to show that the
// incremental pass costs in proportion to the new rows.
#include "graphdata/draw/graphdraw.h"
#include "graphdata/graphcurve.h"
#include "graphdata/scopegraph.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr double kRate = 1e5;

std::unique_ptr<CGraphCurve> liveGraph(bool roll, double secsPerDiv)
{
    auto g = std::make_unique<CGraphCurve>(2);
    g->m_data.Create(2, 5, 1 << 20, 1 << 20);
    CScopeData_Data &scope = *g->m_data->AsScope();
    scope.m_secsPerDiv = secsPerDiv;
    scope.m_rollMode = roll ? 1 : 0;
    scope.m_rollLength = std::uint32_t(kRate * secsPerDiv * kScopeDivisionsX);
    bool changed;
    for (int c = 1; c <= 4; ++c) {
        const int at = g->AddCurve(c, 0, false, changed);
        g->Curve(at)->m_scopeOffset = 3 - 2 * (c - 1);
    }
    return g;
}

void appendSignal(CGraphCurve &g, int count)
{
    const int first = g.m_data.RowCount();
    std::vector<double> rows(std::size_t(count) * 5);
    for (int i = 0; i < count; ++i)
        CScopeSignalWriter::SignalRow(first + i, kRate, 4, rows.data() + i * 5);
    g.m_data.AppendRows(rows.data(), nullptr, 0, 5, first, count);
}

// Frames at the window's pace, one each 1/60 s: each draws what the writer
// added since the last (in roll mode the screen moves, so that is a full
// pass over the 10,000 rows shown).  Only the drawing is timed.
void BM_LiveRollFrame(benchmark::State &state)
{
    using clock = std::chrono::steady_clock;
    auto g = liveGraph(true, 0.01);
    appendSignal(*g, 20000); // a full screen before the first frame
    QImage image(900, 560, QImage::Format_RGB32);
    CScopeSignalWriter writer(g->m_data, kRate);
    writer.Start();
    const auto start = clock::now();
    const auto period = std::chrono::microseconds(16667);
    auto next = start;
    double worst = 0, total = 0;
    int full = 0;
    for (auto _ : state) {
        next += period;
        std::this_thread::sleep_until(next);
        const auto t0 = clock::now();
        QPainter p(&image);
        CDrawRequest request;
        request.flags = 0; // as the window asks: added rows, or all when the screen moved
        request.target = image.rect();
        full += DrawGraph(*g, p, request).kind == CDrawResult::Full;
        p.end();
        const double seconds = std::chrono::duration<double>(clock::now() - t0).count();
        state.SetIterationTime(seconds);
        worst = std::max(worst, seconds);
        total += seconds;
    }
    const double wall = std::chrono::duration<double>(clock::now() - start).count();
    const std::int64_t written = writer.RowsWritten();
    writer.Stop();
    state.counters["frames_per_s"] = double(state.iterations()) / wall;
    state.counters["ms_per_frame"] = 1000 * total / double(state.iterations());
    state.counters["worst_ms"] = 1000 * worst;
    state.counters["full_passes"] = full;
    state.counters["rows_per_s"] = double(written) / wall;
}
BENCHMARK(BM_LiveRollFrame)->Unit(benchmark::kMillisecond)->Iterations(180)->UseManualTime();

// One roll-mode frame drawn in full, without the writer: the cost of the
// 10,000 rows a screen shows, over 4 channels.
void BM_RollFrameFull(benchmark::State &state)
{
    auto g = liveGraph(true, 0.01);
    appendSignal(*g, 30000);
    QImage image(900, 560, QImage::Format_RGB32);
    for (auto _ : state) {
        QPainter p(&image);
        CDrawRequest request;
        request.target = image.rect();
        benchmark::DoNotOptimize(DrawGraph(*g, p, request));
    }
}
BENCHMARK(BM_RollFrameFull)->Unit(benchmark::kMillisecond)->MinTime(0.5);

// The sweep: a screen wide enough for every row, drawn once in
// full, then only the rows of each new batch.
void BM_SweepAddedRows(benchmark::State &state)
{
    const int batch = int(state.range(0));
    auto g = liveGraph(false, 1000);
    appendSignal(*g, 10000);
    QImage image(900, 560, QImage::Format_RGB32);
    {
        QPainter p(&image);
        CDrawRequest request;
        request.target = image.rect();
        DrawGraph(*g, p, request);
    }
    int incremental = 0;
    for (auto _ : state) {
        state.PauseTiming();
        if (g->m_data.RowCount() > 1'000'000) {
            // a fresh sweep, drawn in full outside the timing
            g = liveGraph(false, 1000);
            appendSignal(*g, 10000);
            QPainter p(&image);
            CDrawRequest request;
            request.target = image.rect();
            DrawGraph(*g, p, request);
        }
        appendSignal(*g, batch);
        state.ResumeTiming();
        QPainter p(&image);
        CDrawRequest request;
        request.flags = 0;
        request.target = image.rect();
        incremental += DrawGraph(*g, p, request).kind == CDrawResult::Incremental;
    }
    state.counters["incremental"] = double(incremental) / double(state.iterations());
    state.counters["seconds_per_row"] = benchmark::Counter(double(batch) * double(state.iterations()),
                                                      benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_SweepAddedRows)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond)->Iterations(60);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
