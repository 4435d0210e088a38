#pragma once
// What the benchmarks that set our code against a peer in the same run have
// in common: a reporter that keeps each benchmark's CPU time for the ratios
// printed after the table, one OpenMP thread for a peer that would spread
// over more, and rounds interleaved at random.

#include <benchmark/benchmark.h>

#include <QByteArray>

#include <map>
#include <string>
#include <vector>
#ifdef __linux__
#include <unistd.h>
#endif

// Prints the usual table and keeps each benchmark's CPU time per iteration
// in seconds (the machine may be shared: wall time would count waiting).
// With --benchmark_repetitions the median of the repetitions is kept.
class CCpuTimeReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &r : runs) {
            const bool median = r.run_type == Run::RT_Aggregate && r.aggregate_name == "median";
            if (r.run_type != Run::RT_Iteration && !median)
                continue;
            std::string name = r.run_name.function_name;
            if (!r.run_name.args.empty())
                name += '/' + r.run_name.args;
            if (!median && m_medians.count(name))
                continue;
            if (median)
                m_medians[name] = true;
            const double unit = benchmark::GetTimeUnitMultiplier(r.time_unit);
            m_seconds[name] = r.GetAdjustedCPUTime() / unit;
            m_wallSeconds[name] = r.GetAdjustedRealTime() / unit;
        }
    }

    // The seconds of one iteration of `name` ("BM_X/3" for an argument),
    // 0 when it did not run.
    double Seconds(const std::string &name) const { return find(m_seconds, name); }
    double Seconds(const std::string &name, int argument) const
    {
        return Seconds(name + '/' + std::to_string(argument));
    }
    // The same in wall time, for a benchmark whose work runs on another thread.
    double WallSeconds(const std::string &name, int argument) const
    {
        return find(m_wallSeconds, name + '/' + std::to_string(argument));
    }

private:
    static double find(const std::map<std::string, double> &seconds, const std::string &name)
    {
        const auto it = seconds.find(name);
        return it == seconds.end() ? 0.0 : it->second;
    }
    std::map<std::string, double> m_seconds, m_wallSeconds;
    std::map<std::string, bool> m_medians;
};

// One thread against one thread: a peer's bulk mode would spread over OpenMP
// threads, whose count the runtime reads when it is loaded, before main.  The
// program starts itself again with the count set.
inline void UseOneOpenMpThread(char **argv)
{
    if (qgetenv("OMP_NUM_THREADS") != "1") {
        qputenv("OMP_NUM_THREADS", "1");
#ifdef __linux__
        execv("/proc/self/exe", argv);
#else
        (void)argv;
#endif
    }
}

// Runs the benchmarks with the rounds of all sides interleaved at random,
// unless the command line says otherwise, so that a change of the machine's
// load does not fall on one side of a comparison.
inline void RunInterleaved(int argc, char **argv, benchmark::BenchmarkReporter &reporter)
{
    static char interleave[] = "--benchmark_enable_random_interleaving=true";
    std::vector<char *> args(argv, argv + argc);
    bool given = false;
    for (char *a : args)
        given = given || std::string(a).rfind("--benchmark_enable_random_interleaving", 0) == 0;
    if (!given)
        args.push_back(interleave);
    int count = int(args.size());
    benchmark::Initialize(&count, args.data());
    benchmark::RunSpecifiedBenchmarks(&reporter);
}
