// DDeterminant and DInverse (expansion by minors) against Eigen's LU for 4x4,
// 6x6 and 8x8; reading a 10^6-row XY table against a plain from_chars loop
// over the same text; 10^6 GetTableValue lookups.  After the benchmarks the
// ratios of the same runs (processor time of the thread) are printed; on a
// shared machine they are hints.

#include "functions/rpnmatrixfunctions.h"
#include "functions/rpntablefunctions.h"

#include <Eigen/Dense>
#include <benchmark/benchmark.h>
#include <charconv>
#include <ctime>
#include <cstdio>
#include <map>
#include <random>
#include <string>

namespace {

std::vector<double> randomMatrix(int n)
{
    std::mt19937 random(static_cast<std::uint32_t>(n));
    std::uniform_real_distribution<double> cell(-1, 1);
    std::vector<double> m(static_cast<std::size_t>(n * n));
    for (double &x : m)
        x = cell(random);
    return m;
}

const std::string &xyText()
{
    static const std::string text = [] {
        std::string t;
        t.reserve(30u << 20);
        char buffer[64];
        for (int i = 0; i < 1000000; ++i) {
            const double x = i * 0.001, y = std::sin(x) * 1000;
            auto end = std::to_chars(buffer, buffer + 64, x).ptr;
            *end++ = ' ';
            end = std::to_chars(end, buffer + 64, y).ptr;
            *end++ = '\n';
            t.append(buffer, end);
        }
        while (!t.empty() && t.back() == '\n')
            t.pop_back();
        return t;
    }();
    return text;
}

std::map<std::string, double> g_seconds; // per-iteration time of each run

void note(benchmark::State &state, const std::string &name, double seconds)
{
    g_seconds[name] = seconds / double(state.iterations());
}

// The thread's processor time: on a machine shared with others the time on
// the clock is mostly waiting for a core.
double threadSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

template <typename F>
void timed(benchmark::State &state, const std::string &name, F f)
{
    const double start = threadSeconds();
    for (auto _ : state)
        f();
    note(state, name, threadSeconds() - start);
}

void BM_DDeterminant(benchmark::State &state)
{
    const int n = int(state.range(0));
    const auto m = randomMatrix(n);
    timed(state, "det ours " + std::to_string(n), [&] { benchmark::DoNotOptimize(RpnLaplaceDeterminant(n, m.data())); });
}
void BM_EigenDeterminant(benchmark::State &state)
{
    const int n = int(state.range(0));
    const auto m = randomMatrix(n);
    const Eigen::MatrixXd a = Eigen::Map<const Eigen::Matrix<double, -1, -1, Eigen::RowMajor>>(m.data(), n, n);
    timed(state, "det eigen " + std::to_string(n), [&] { benchmark::DoNotOptimize(a.partialPivLu().determinant()); });
}
void BM_DInverse(benchmark::State &state)
{
    const int n = int(state.range(0));
    const auto m = randomMatrix(n);
    std::vector<double> inv(m.size());
    timed(state, "inv ours " + std::to_string(n), [&] {
        RpnLaplaceInverse(n, m.data(), inv.data());
        benchmark::DoNotOptimize(inv.data());
    });
}
void BM_EigenInverse(benchmark::State &state)
{
    const int n = int(state.range(0));
    const auto m = randomMatrix(n);
    const Eigen::MatrixXd a = Eigen::Map<const Eigen::Matrix<double, -1, -1, Eigen::RowMajor>>(m.data(), n, n);
    Eigen::MatrixXd inv;
    timed(state, "inv eigen " + std::to_string(n), [&] {
        inv = a.partialPivLu().inverse();
        benchmark::DoNotOptimize(inv.data());
    });
}
void BM_ReadTable(benchmark::State &state)
{
    const std::string &text = xyText();
    timed(state, "read ours", [&] {
        CRpnTableRecord table;
        QString error;
        ParseTableText(text, CRpnTableRecord::XY, table, error);
        benchmark::DoNotOptimize(table.axis1.data());
    });
}
void BM_FromCharsLoop(benchmark::State &state)
{
    const std::string &text = xyText();
    timed(state, "read from_chars", [&] {
        std::vector<double> xs, ys;
        const char *p = text.data(), *end = p + text.size();
        while (p < end) {
            double x = 0, y = 0;
            p = std::from_chars(p, end, x).ptr;
            while (p < end && *p == ' ')
                ++p;
            p = std::from_chars(p, end, y).ptr;
            while (p < end && (*p == '\n' || *p == ' '))
                ++p;
            xs.push_back(x);
            ys.push_back(y);
        }
        benchmark::DoNotOptimize(xs.data());
    });
}
void BM_GetTableValue(benchmark::State &state)
{
    static CRpnTableRecord table = [] {
        CRpnTableRecord t;
        QString error;
        ParseTableText(xyText(), CRpnTableRecord::XY, t, error);
        return t;
    }();
    std::mt19937 random(3);
    std::uniform_real_distribution<double> x(-10, 1010);
    std::vector<double> probes(1000000);
    for (double &v : probes)
        v = x(random);
    timed(state, "lookups", [&] {
        double sum = 0;
        for (double v : probes)
            sum += table.ValueAt(v, 0, 0);
        benchmark::DoNotOptimize(sum);
    });
}

} // namespace

BENCHMARK(BM_DDeterminant)->Arg(4)->Arg(6)->Arg(8);
BENCHMARK(BM_EigenDeterminant)->Arg(4)->Arg(6)->Arg(8);
BENCHMARK(BM_DInverse)->Arg(4)->Arg(6)->Arg(8);
BENCHMARK(BM_EigenInverse)->Arg(4)->Arg(6)->Arg(8);
BENCHMARK(BM_ReadTable)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_FromCharsLoop)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_GetTableValue)->Unit(benchmark::kMillisecond)->Iterations(3);

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    auto ratio = [](const std::string &ours, const std::string &peer) {
        if (g_seconds.count(ours) && g_seconds.count(peer))
            std::printf("%-18s / %-18s = %8.2f\n", ours.c_str(), peer.c_str(), g_seconds[ours] / g_seconds[peer]);
    };
    for (int n : {4, 6, 8}) {
        ratio("det ours " + std::to_string(n), "det eigen " + std::to_string(n));
        ratio("inv ours " + std::to_string(n), "inv eigen " + std::to_string(n));
    }
    ratio("read ours", "read from_chars");
    if (g_seconds.count("lookups"))
        std::printf("10^6 lookups: %.1f ms\n", g_seconds["lookups"] * 1e3);
    return 0;
}
