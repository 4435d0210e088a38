// The budget of the evaluator: adding, multiplying and comparing REAL values
// through CRpnData arithmetic, against the same loop on plain doubles.  Every
// step of the value loop makes a new value (a payload from the free list) and
// drops the old one, as the evaluator's nodes do.

#include "formula/rpndata.h"

#include "bench/benchpeers.h"

#include <cstdio>
#include <vector>

namespace {

// Few enough inputs that their payloads stay in the cache, as the constants
// of a formula evaluated row after row do.
constexpr int kCount = 512;

struct Inputs
{
    std::vector<double> a, b, c;
    Inputs()
    {
        for (int i = 0; i < kCount; ++i) {
            a.push_back(0.5 + (i % 7));
            b.push_back(1.0 + 1e-9 * (i % 5));
            c.push_back(i % 3 ? 1.0 : 2.0);
        }
    }
};

const Inputs &inputs()
{
    static const Inputs in;
    return in;
}

void BM_Doubles(benchmark::State &state)
{
    const Inputs &in = inputs();
    for (auto _ : state) {
        double acc = 0.0;
        int equal = 0;
        for (int i = 0; i < kCount; ++i) {
            acc = acc + in.a[std::size_t(i)];
            acc = acc * in.b[std::size_t(i)];
            equal += acc == in.c[std::size_t(i)];
        }
        benchmark::DoNotOptimize(acc);
        benchmark::DoNotOptimize(equal);
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void BM_RpnData(benchmark::State &state)
{
    const Inputs &in = inputs();
    std::vector<CRpnData> a, b, c;
    for (int i = 0; i < kCount; ++i) {
        a.emplace_back(in.a[std::size_t(i)]);
        b.emplace_back(in.b[std::size_t(i)]);
        c.emplace_back(in.c[std::size_t(i)]);
    }
    for (auto _ : state) {
        CRpnData acc(0.0);
        int equal = 0;
        for (int i = 0; i < kCount; ++i) {
            acc = CRpnData::Add(acc, a[std::size_t(i)]);
            acc = CRpnData::Multiply(acc, b[std::size_t(i)]);
            equal += CRpnData::Equals(acc, c[std::size_t(i)]);
        }
        benchmark::DoNotOptimize(acc.GetRealValue());
        benchmark::DoNotOptimize(equal);
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

BENCHMARK(BM_Doubles);
BENCHMARK(BM_RpnData);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    CCpuTimeReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    const double doubles = reporter.Seconds("BM_Doubles") * 1e9;
    const double values = reporter.Seconds("BM_RpnData") * 1e9;
    if (doubles > 0 && values > 0)
        std::printf("CRpnData add/multiply/compare vs plain doubles: %.1f times the time "
                    "(%.2f ns against %.2f ns per step)\n",
                    values / doubles, values / kCount, doubles / kCount);
    benchmark::Shutdown();
    return 0;
}
