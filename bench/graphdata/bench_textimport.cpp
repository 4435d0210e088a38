// Reading a data text file of 10 million rows and 3 columns (about 290 MB)
// with the graph engine's reader, against the floor: a plain from_chars
// loop over the mapped bytes into arrays allocated beforehand, one thread,
// no checks beyond the number's end.  The two take turns, each in a child
// process of its own, so that each has its own peak resident memory and
// neither profits from the other's pages.  Prints both times, both peaks and
// the ratio, and the same for processor time, which a loaded machine
// disturbs less than the time on the clock.
//
// The file is made in the temporary folder unless TARN_TEXT_FILE names one;
// the reader uses every core unless TARN_READ_THREADS says how many.
#include "graphdata/exchange/textimport.h"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QFile>
#include <QString>

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const int kRows = 10'000'000;

QString g_path;

struct Outcome
{
    double seconds = 0;
    double cpuSeconds = 0; // user and system time of all threads
    long peakKb = 0;
    long rows = 0;
};

QString makeFile()
{
    if (const char *given = std::getenv("TARN_TEXT_FILE"))
        return QString::fromLocal8Bit(given);
    const QString path = QDir::temp().filePath(QStringLiteral("tarn_bench_10M_x3.txt"));
    if (QFile::exists(path))
        return path;
    std::FILE *f = std::fopen(path.toLocal8Bit().constData(), "wb");
    if (!f)
        return QString();
    char line[128];
    for (int i = 0; i < kRows; ++i) {
        const double t = i * 1e-6;
        const int n = std::snprintf(line, sizeof line, "%.6f %.7g %.7g\n", t, std::sin(t * 3000.0),
                                    std::cos(t * 700.0) * 25.0);
        std::fwrite(line, 1, std::size_t(n), f);
    }
    std::fclose(f);
    return path;
}

// The floor: mapped bytes, three from_chars a line, straight into arrays.
long floorRead(const char *path)
{
    const int fd = open(path, O_RDONLY);
    struct stat st;
    if (fd < 0 || fstat(fd, &st) != 0)
        return -1;
    const std::size_t size = std::size_t(st.st_size);
    const char *bytes = static_cast<const char *>(mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0));
    close(fd);
    if (bytes == MAP_FAILED)
        return -1;
    std::vector<double> columns[3];
    std::vector<unsigned char> valid[3];
    for (int c = 0; c < 3; ++c) {
        columns[c].resize(kRows + 16);
        valid[c].resize(kRows + 16);
    }
    const char *p = bytes, *end = bytes + size;
    long row = 0;
    while (p < end && row < kRows + 16) {
        for (int c = 0; c < 3; ++c) {
            while (p < end && *p == ' ')
                ++p;
            double v = 0;
            const auto r = std::from_chars(p, end, v);
            columns[c][std::size_t(row)] = v;
            valid[c][std::size_t(row)] = r.ec == std::errc();
            p = r.ptr;
        }
        while (p < end && *p++ != '\n') {
        }
        ++row;
    }
    benchmark::DoNotOptimize(columns[2].data());
    munmap(const_cast<char *>(bytes), size);
    return row;
}

long engineRead(const QString &path)
{
    CGraphData data;
    CTextImportReport report;
    CTextImportOptions options;
    // TARN_READ_THREADS=1 shows what one thread does.
    if (const char *threads = std::getenv("TARN_READ_THREADS"))
        options.threads = std::atoi(threads);
    if (ImportTextFile(path, data, report, options) != TextImport::Read)
        return -1;
    return data.RowCount();
}

// Runs one reading in a child process: its time and peak.
Outcome inChild(bool engine)
{
    int fds[2];
    Outcome out;
    if (pipe(fds) != 0)
        return out;
    const pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        const auto start = std::chrono::steady_clock::now();
        const long rows = engine ? engineRead(g_path) : floorRead(g_path.toLocal8Bit().constData());
        Outcome o;
        o.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        o.rows = rows;
        struct rusage usage;
        getrusage(RUSAGE_SELF, &usage);
        o.peakKb = usage.ru_maxrss;
        o.cpuSeconds = double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                       double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
        if (write(fds[1], &o, sizeof o) != ssize_t(sizeof o))
            _exit(2);
        _exit(0);
    }
    close(fds[1]);
    if (read(fds[0], &out, sizeof out) != ssize_t(sizeof out))
        out = Outcome();
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    return out;
}

Outcome g_engine, g_floor;

void BM_ReadTextFile(benchmark::State &state)
{
    double engineSeconds = 0, floorSeconds = 0, engineCpu = 0, floorCpu = 0;
    long enginePeak = 0, floorPeak = 0;
    for (auto _ : state) {
        const Outcome f = inChild(false);
        const Outcome e = inChild(true);
        if (e.rows != kRows || f.rows < kRows) {
            state.SkipWithError("a reading lost rows");
            return;
        }
        engineSeconds += e.seconds;
        floorSeconds += f.seconds;
        engineCpu += e.cpuSeconds;
        floorCpu += f.cpuSeconds;
        enginePeak = std::max(enginePeak, e.peakKb);
        floorPeak = std::max(floorPeak, f.peakKb);
        state.SetIterationTime(e.seconds);
    }
    const double n = double(state.iterations());
    g_engine = {engineSeconds / n, engineCpu / n, enginePeak, kRows};
    g_floor = {floorSeconds / n, floorCpu / n, floorPeak, kRows};
    state.counters["floor_ms"] = g_floor.seconds * 1e3;
    state.counters["peak_MB"] = double(enginePeak) / 1024.0;
    state.counters["floor_peak_MB"] = double(floorPeak) / 1024.0;
}

BENCHMARK(BM_ReadTextFile)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);

} // namespace

int main(int argc, char **argv)
{
    g_path = makeFile();
    if (g_path.isEmpty()) {
        std::fprintf(stderr, "cannot make the data file\n");
        return 1;
    }
    // Once through the file, so that both readings find it in the cache.
    if (std::FILE *f = std::fopen(g_path.toLocal8Bit().constData(), "rb")) {
        std::vector<char> block(1 << 20);
        while (std::fread(block.data(), 1, block.size(), f) == block.size()) {
        }
        std::fclose(f);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (g_engine.seconds > 0 && g_floor.seconds > 0) {
        std::printf("10M rows x 3 columns (%s, %.0f MB): reader %.0f ms, peak %.0f MB; from_chars floor %.0f ms, "
                    "peak %.0f MB: ratio %.2f (aim: under 1.5)\n",
                    qPrintable(g_path), double(QFile(g_path).size()) / (1024.0 * 1024.0), g_engine.seconds * 1e3,
                    double(g_engine.peakKb) / 1024.0, g_floor.seconds * 1e3, double(g_floor.peakKb) / 1024.0,
                    g_engine.seconds / g_floor.seconds);
        std::printf("processor time (all threads, user and system): reader %.0f ms, floor %.0f ms: ratio %.2f\n",
                    g_engine.cpuSeconds * 1e3, g_floor.cpuSeconds * 1e3, g_engine.cpuSeconds / g_floor.cpuSeconds);
    }
    return 0;
}
