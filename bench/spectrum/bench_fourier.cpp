// The complex Fourier transform of CFourierTransform against FFTW's
// (fftw_plan_dft_1d with FFTW_ESTIMATE), for lengths of four shapes: a
// power of two, 2^6 5^6, the product of the odd primes 3 to 17, and a prime
// (which takes the chirp-z path).  Each iteration runs both on the same
// input, one after the other, so that machine load falls on both alike;
// plans and tables are made outside the timing.  Times are the thread's CPU
// time, which a loaded machine disturbs less than the wall clock.  Prints
// the ratios of the medians.
#include "graphdata/spectrum/fouriertransform.h"

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstring>
#include <map>
#include <time.h>
#include <vector>

namespace {

struct Result
{
    std::vector<double> ours, peer;
    double worstDifference = 0;
};
std::map<long, Result> g_results;

double cpuNow()
{
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : v[v.size() / 2];
}

void BM_Fourier(benchmark::State &state)
{
    const long n = long(state.range(0));
    std::vector<std::complex<double>> input(static_cast<std::size_t>(n));
    for (long i = 0; i < n; ++i)
        input[i] = {std::sin(0.001 * double(i)) + 0.5 * std::cos(0.37 * double(i)) + double(i % 17) / 17.0, 0.0};

    CFourierTransform ours(n);
    std::vector<std::complex<double>> a(input.size());
    auto *in = static_cast<fftw_complex *>(fftw_malloc(sizeof(fftw_complex) * std::size_t(n)));
    auto *out = static_cast<fftw_complex *>(fftw_malloc(sizeof(fftw_complex) * std::size_t(n)));
    fftw_plan plan = fftw_plan_dft_1d(int(n), in, out, FFTW_FORWARD, FFTW_ESTIMATE);

    Result &result = g_results[n];
    for (auto _ : state) {
        std::memcpy(a.data(), input.data(), sizeof(fftw_complex) * std::size_t(n));
        std::memcpy(in, input.data(), sizeof(fftw_complex) * std::size_t(n));
        const double t0 = cpuNow();
        ours.Forward(a.data());
        const double t1 = cpuNow();
        fftw_execute(plan);
        const double t2 = cpuNow();
        benchmark::DoNotOptimize(a.data());
        benchmark::DoNotOptimize(out);
        result.ours.push_back(t1 - t0);
        result.peer.push_back(t2 - t1);
    }
    // Both must have computed the same thing.
    double scale = 0, worst = 0;
    for (long k = 0; k < n; ++k)
        scale = std::max(scale, std::abs(std::complex<double>(out[k][0], out[k][1])));
    for (long k = 0; k < n; ++k)
        worst = std::max(worst, std::abs(a[k] - std::complex<double>(out[k][0], out[k][1])));
    result.worstDifference = worst / scale;
    if (result.worstDifference > 1e-9)
        state.SkipWithError("results differ from FFTW's");
    fftw_destroy_plan(plan);
    fftw_free(in);
    fftw_free(out);
}

BENCHMARK(BM_Fourier)->Arg(1 << 20)->Arg(1000000)->Arg(255255)->Arg(999983)
    ->Unit(benchmark::kMillisecond)->Iterations(15);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    const std::map<long, double> goals = {{1 << 20, 2}, {1000000, 2}, {255255, 3}, {999983, 5}};
    for (const auto &[n, r] : g_results) {
        if (r.ours.empty())
            continue;
        const double ours = median(r.ours), peer = median(r.peer);
        const auto goal = goals.find(n);
        std::printf("N = %8ld: ours %8.2f ms, FFTW %8.2f ms (medians of %zu): ratio %.2f (aim: at most %.0f); "
                    "largest difference %.1e of the largest value\n",
                    n, ours * 1e3, peer * 1e3, r.ours.size(), ours / peer, goal == goals.end() ? 0.0 : goal->second,
                    r.worstDifference);
    }
    return 0;
}
