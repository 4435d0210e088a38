// Saving and loading a graph data file of 4 columns x 10^7 rows, against
// writing and reading the same bytes (each column's values and validity
// bytes) with plain fwrite and fread in the same run.  The two take turns
// inside every iteration, and which goes first alternates, so that both see
// the same state of the machine and of the page cache.  Both writers flush
// their data to the disk before the clock stops: a save is not done before
// that.  Prints the ratios, and the bytes read when only one column of the
// file is loaded.
#include "graphdata/file/graphfileload.h"
#include "graphdata/file/graphfilesave.h"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#ifndef _WIN32
#include <unistd.h>
#endif

namespace {

const int kColumns = 4;
const int kRows = 10'000'000;

double g_save = 0, g_fwrite = 0, g_load = 0, g_fread = 0;
std::int64_t g_oneColumnBytes = 0, g_columnBytes = 0;

using Clock = std::chrono::steady_clock;

double seconds(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
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

double plainWrite(const QString &path, const CGraphData &data)
{
    const auto start = Clock::now();
    std::FILE *f = std::fopen(QFile::encodeName(path).constData(), "wb");
    if (!f)
        return -1;
    for (int c = 0; c < kColumns; ++c) {
        const CGraphColumn *column = data.GetColumn(c);
        std::fwrite(column->m_values, 8, std::size_t(kRows), f);
        std::fwrite(column->m_valid, 1, std::size_t(kRows), f);
    }
    std::fflush(f);
#ifndef _WIN32
    ::fsync(fileno(f));
#endif
    std::fclose(f);
    return seconds(start);
}

double plainRead(const QString &path)
{
    const auto start = Clock::now();
    std::FILE *f = std::fopen(QFile::encodeName(path).constData(), "rb");
    if (!f)
        return -1;
    std::size_t got = 0;
    std::vector<void *> blocks;
    for (int c = 0; c < kColumns; ++c) {
        auto *values = static_cast<double *>(std::malloc(8 * std::size_t(kRows)));
        auto *valid = static_cast<unsigned char *>(std::malloc(std::size_t(kRows)));
        got += std::fread(values, 8, std::size_t(kRows), f);
        got += std::fread(valid, 1, std::size_t(kRows), f);
        blocks.push_back(values);
        blocks.push_back(valid);
    }
    std::fclose(f);
    const double s = seconds(start);
    for (void *b : blocks)
        std::free(b);
    return got == 2 * std::size_t(kRows) * kColumns ? s : -1;
}

void BM_SaveAgainstFwrite(benchmark::State &state)
{
    Files &f = files();
    double save = 0, plain = 0;
    int turn = 0;
    for (auto _ : state) {
        for (int k = 0; k < 2; ++k) {
            if ((k + turn) % 2 == 0) {
                const auto start = Clock::now();
                QString message;
                if (!SaveGraphData(f.mrd, f.data, nullptr, &message))
                    state.SkipWithError(qPrintable(message));
                save += seconds(start);
            } else {
                const double s = plainWrite(f.raw, f.data);
                if (s < 0)
                    state.SkipWithError("fwrite failed");
                plain += s;
            }
        }
        ++turn;
    }
    g_save = save / double(state.iterations());
    g_fwrite = plain / double(state.iterations());
}

void BM_LoadAgainstFread(benchmark::State &state)
{
    Files &f = files();
    QString message;
    if ((!QFile::exists(f.mrd) && !SaveGraphData(f.mrd, f.data, nullptr, &message)) ||
        (!QFile::exists(f.raw) && plainWrite(f.raw, f.data) < 0))
        state.SkipWithError("the files to read could not be written");
    double load = 0, plain = 0;
    int turn = 0;
    for (auto _ : state) {
        for (int k = 0; k < 2; ++k) {
            if ((k + turn) % 2 == 0) {
                const auto start = Clock::now();
                CGraphFileContent content;
                QString message;
                if (!ReadGraphFile(f.mrd, content, message) || content.data.RowCount() != kRows)
                    state.SkipWithError(qPrintable(message));
                load += seconds(start);
            } else {
                const double s = plainRead(f.raw);
                if (s < 0)
                    state.SkipWithError("fread failed");
                plain += s;
            }
        }
        ++turn;
    }
    g_load = load / double(state.iterations());
    g_fread = plain / double(state.iterations());

    CGraphFileContent one;
    if (ReadGraphFile(f.mrd, one, message, {2})) {
        g_oneColumnBytes = one.bytesRead;
        g_columnBytes = 9 * std::int64_t(kRows);
    }
}

BENCHMARK(BM_SaveAgainstFwrite)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_LoadAgainstFread)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (g_fwrite > 0 && g_save > 0)
        std::printf("save %.0f ms, fwrite+fsync %.0f ms (4 x 10^7 rows): ratio %.2f (aim: at most 1.5)\n", g_save * 1e3,
                    g_fwrite * 1e3, g_save / g_fwrite);
    if (g_fread > 0 && g_load > 0)
        std::printf("load %.0f ms, fread %.0f ms (4 x 10^7 rows): ratio %.2f (aim: at most 1.5)\n", g_load * 1e3,
                    g_fread * 1e3, g_load / g_fread);
    if (g_columnBytes > 0)
        std::printf("loading one column read %lld bytes; the column's values and validity bytes are %lld (%.4f)\n",
                    static_cast<long long>(g_oneColumnBytes), static_cast<long long>(g_columnBytes),
                    double(g_oneColumnBytes) / double(g_columnBytes));
    return 0;
}
