// Saving and loading a graph data file of 4 columns x 10^7 rows, against
// writing and reading the same bytes (each column's values and validity
// bytes) with plain fwrite and fread in the same run.  The two take turns
// inside every iteration, and which goes first alternates, so that both see
// the same state of the machine and of the page cache.  Both writers flush
// their data to the disk before the clock stops: a save is not done before
// that.  The disk makes single rounds noisy, so each round's ratio is kept
// and the median over the rounds is printed, for wall time and for the CPU
// time of the writing thread, beside the peak memory of the process; also
// the bytes read when only one column of the file is loaded.
#include "graphdata/file/graphfileload.h"
#include "graphdata/file/graphfilesave.h"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

#ifndef _WIN32
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace {

const int kColumns = 4;
const int kRows = 10'000'000;

std::int64_t g_oneColumnBytes = 0, g_columnBytes = 0;

using Clock = std::chrono::steady_clock;

double seconds(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double threadCpuSeconds()
{
#ifndef _WIN32
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
#else
    return 0;
#endif
}

double median(std::vector<double> v)
{
    if (v.empty())
        return 0;
    std::sort(v.begin(), v.end());
    const std::size_t m = v.size() / 2;
    return v.size() % 2 ? v[m] : 0.5 * (v[m - 1] + v[m]);
}

// One side's time in one round, and the rounds of a comparison.
struct Sample
{
    double wall = 0, cpu = 0;
};

struct Rounds
{
    std::vector<Sample> ours, peer;

    void Print(const char *what, const char *peerName) const
    {
        std::vector<double> oursWall, peerWall, wallRatio, cpuRatio;
        for (std::size_t i = 0; i < ours.size() && i < peer.size(); ++i) {
            oursWall.push_back(ours[i].wall);
            peerWall.push_back(peer[i].wall);
            wallRatio.push_back(ours[i].wall / peer[i].wall);
            if (peer[i].cpu > 0)
                cpuRatio.push_back(ours[i].cpu / peer[i].cpu);
        }
        if (std::getenv("BENCH_ROUNDS"))
            for (std::size_t i = 0; i < wallRatio.size(); ++i)
                std::printf("  round %zu: %.0f / %.0f ms\n", i, oursWall[i] * 1e3, peerWall[i] * 1e3);
        if (wallRatio.empty())
            return;
        std::printf("%s: median %.0f ms, %s %.0f ms (4 x 10^7 rows, %zu rounds): median ratio %.2f wall, %.2f CPU "
                    "(aim: at most 1.5)\n",
                    what, median(oursWall) * 1e3, peerName, median(peerWall) * 1e3, wallRatio.size(),
                    median(wallRatio), median(cpuRatio));
    }
};

Rounds g_saveRounds, g_loadRounds;

template <typename F>
Sample timed(F &&run, bool &ok)
{
    const auto start = Clock::now();
    const double cpu = threadCpuSeconds();
    ok = run();
    return {seconds(start), threadCpuSeconds() - cpu};
}

struct Files
{
    QTemporaryDir dir{QDir::tempPath() + QStringLiteral("/bench_graphfile-XXXXXX")};
    QString mrd = dir.filePath(QStringLiteral("graph.mrd"));
    QString raw = dir.filePath(QStringLiteral("plain.bin"));
    CGraphData data;

    Files()
    {
        data.Create(1, kColumns, kRows, 0);
        for (int c = 0; c < kColumns; ++c) {
            CGraphColumn *column = data.GetColumn(c);
            column->m_name = QStringLiteral("column %1").arg(c);
            for (int i = 0; i < kRows; ++i) {
                column->m_values[i] = c == 0 ? i * 1e-6 : double((i * (c + 7)) % 977) * 0.25 - 50;
                column->m_valid[i] = i % 31 == c ? 2 : 1;
            }
        }
        data->m_rowCount = kRows;
    }
};

Files &files()
{
    static Files f;
    return f;
}

bool plainWrite(const QString &path, const CGraphData &data)
{
    std::FILE *f = std::fopen(QFile::encodeName(path).constData(), "wb");
    if (!f)
        return false;
    for (int c = 0; c < kColumns; ++c) {
        const CGraphColumn *column = data.GetColumn(c);
        std::fwrite(column->m_values, 8, std::size_t(kRows), f);
        std::fwrite(column->m_valid, 1, std::size_t(kRows), f);
    }
    std::fflush(f);
#ifndef _WIN32
    ::fsync(fileno(f));
#endif
    return std::fclose(f) == 0;
}

bool plainRead(const QString &path, std::vector<void *> &blocks)
{
    std::FILE *f = std::fopen(QFile::encodeName(path).constData(), "rb");
    if (!f)
        return false;
    std::size_t got = 0;
    for (int c = 0; c < kColumns; ++c) {
        auto *values = static_cast<double *>(std::malloc(8 * std::size_t(kRows)));
        auto *valid = static_cast<unsigned char *>(std::malloc(std::size_t(kRows)));
        got += std::fread(values, 8, std::size_t(kRows), f);
        got += std::fread(valid, 1, std::size_t(kRows), f);
        blocks.push_back(values);
        blocks.push_back(valid);
    }
    std::fclose(f);
    return got == 2 * std::size_t(kRows) * kColumns;
}

void BM_SaveAgainstFwrite(benchmark::State &state)
{
    Files &f = files();
    int turn = 0;
    for (auto _ : state) {
        Sample ours, peer;
        for (int k = 0; k < 2; ++k) {
            bool ok = false;
            if ((k + turn) % 2 == 0) {
                QString message;
                ours = timed([&] { return bool(SaveGraphData(f.mrd, f.data, nullptr, &message)); }, ok);
                if (!ok)
                    state.SkipWithError(qPrintable(message));
            } else {
                peer = timed([&] { return plainWrite(f.raw, f.data); }, ok);
                if (!ok)
                    state.SkipWithError("fwrite failed");
            }
        }
        g_saveRounds.ours.push_back(ours);
        g_saveRounds.peer.push_back(peer);
        ++turn;
    }
}

void BM_LoadAgainstFread(benchmark::State &state)
{
    Files &f = files();
    QString message;
    if ((!QFile::exists(f.mrd) && !SaveGraphData(f.mrd, f.data, nullptr, &message)) ||
        (!QFile::exists(f.raw) && !plainWrite(f.raw, f.data)))
        state.SkipWithError("the files to read could not be written");
    int turn = 0;
    for (auto _ : state) {
        Sample ours, peer;
        for (int k = 0; k < 2; ++k) {
            bool ok = false;
            if ((k + turn) % 2 == 0) {
                // The content is freed outside the clock, like the plain blocks.
                CGraphFileContent content;
                QString text;
                ours = timed([&] { return ReadGraphFile(f.mrd, content, text) && content.data.RowCount() == kRows; },
                             ok);
                if (!ok)
                    state.SkipWithError(qPrintable(text));
            } else {
                std::vector<void *> blocks;
                peer = timed([&] { return plainRead(f.raw, blocks); }, ok);
                for (void *b : blocks)
                    std::free(b);
                if (!ok)
                    state.SkipWithError("fread failed");
            }
        }
        g_loadRounds.ours.push_back(ours);
        g_loadRounds.peer.push_back(peer);
        ++turn;
    }

    CGraphFileContent one;
    if (ReadGraphFile(f.mrd, one, message, {2})) {
        g_oneColumnBytes = one.bytesRead;
        g_columnBytes = 9 * std::int64_t(kRows);
    }
}

BENCHMARK(BM_SaveAgainstFwrite)->Unit(benchmark::kMillisecond)->Iterations(9);
BENCHMARK(BM_LoadAgainstFread)->Unit(benchmark::kMillisecond)->Iterations(9);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    g_saveRounds.Print("save", "fwrite+fsync");
    g_loadRounds.Print("load", "fread");
    if (g_columnBytes > 0)
        std::printf("loading one column read %lld bytes; the column's values and validity bytes are %lld (%.4f)\n",
                    static_cast<long long>(g_oneColumnBytes), static_cast<long long>(g_columnBytes),
                    double(g_oneColumnBytes) / double(g_columnBytes));
#ifndef _WIN32
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("peak memory of the whole run: %.0f MB (the 4 columns alone are %.0f MB)\n",
                double(usage.ru_maxrss) / 1024.0, 9.0 * kRows * kColumns / 1e6);
#endif
    return 0;
}
