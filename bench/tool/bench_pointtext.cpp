// The digitiser's point text with a million points: parsing the text of the
// points field, against strtod over the same numbers (the least any parser
// of that text must do); and reading a point file of a million lines,
// against fscanf over the same file.  Prints both ratios.
#include "support/myarrays.h"
#include "tool/capture/pointtext.h"
#include "tool/capture/pointtextfile.h"

#include <QDir>
#include <QFile>
#include <QString>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

const int kPoints = 1'000'000;

const QString &pointText()
{
    static const QString text = [] {
        QString t;
        for (int i = 0; i < kPoints; ++i)
            AppendPointText(t, 0.001 * i + 1, 1e-3 * (i % 997) + 0.5);
        return t;
    }();
    return text;
}

const QString &pointFile()
{
    static const QString path = [] {
        const QString p = QDir::temp().filePath(QStringLiteral("bench_pointtext.txt"));
        std::string out = "U I\r\n";
        char line[64];
        for (int i = 0; i < kPoints; ++i) {
            std::snprintf(line, sizeof line, "%.12g %.12g\r\n", 0.001 * i + 1, 1e-3 * (i % 997) + 0.5);
            out += line;
        }
        std::FILE *f = std::fopen(p.toLocal8Bit().constData(), "wb");
        std::fwrite(out.data(), 1, out.size(), f);
        std::fclose(f);
        return p;
    }();
    return path;
}

double g_parse = 0, g_strtod = 0, g_read = 0, g_fscanf = 0;

void BM_ParsePointText(benchmark::State &state)
{
    const QString &text = pointText();
    for (auto _ : state) {
        int count = 0;
        CMyDoubleArray pairs;
        ParsePointText(text, count, pairs, true);
        if (count != kPoints)
            state.SkipWithError("wrong count");
        benchmark::DoNotOptimize(pairs.GetData());
    }
}

void BM_StrtodPeer(benchmark::State &state)
{
    const QByteArray bytes = pointText().toLatin1();
    for (auto _ : state) {
        double sum = 0;
        int n = 0;
        const char *p = bytes.constData();
        const char *end = p + bytes.size();
        while (p < end) {
            if (*p == '(' || *p == ',' || *p == ')') {
                ++p;
                continue;
            }
            char *next = nullptr;
            sum += std::strtod(p, &next);
            p = next;
            ++n;
        }
        if (n != 2 * kPoints)
            state.SkipWithError("wrong count");
        benchmark::DoNotOptimize(sum);
    }
}

void BM_ReadPointFile(benchmark::State &state)
{
    const QString &path = pointFile();
    for (auto _ : state) {
        CPointTable table;
        QString report;
        if (ReadPointTextFile(path, table, report) != PointFileRead::Read || table.rows.size() != kPoints)
            state.SkipWithError("not read");
        benchmark::DoNotOptimize(table.values.GetData());
    }
}

void BM_FscanfPeer(benchmark::State &state)
{
    const QByteArray path = pointFile().toLocal8Bit();
    for (auto _ : state) {
        std::FILE *f = std::fopen(path.constData(), "rb");
        char header[64];
        if (!f || !std::fgets(header, sizeof header, f)) {
            state.SkipWithError("not read");
            break;
        }
        double x = 0, y = 0, sum = 0;
        int n = 0;
        while (std::fscanf(f, "%lf %lf", &x, &y) == 2) {
            sum += x + y;
            ++n;
        }
        std::fclose(f);
        if (n != kPoints)
            state.SkipWithError("wrong count");
        benchmark::DoNotOptimize(sum);
    }
}

} // namespace

BENCHMARK(BM_ParsePointText)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_StrtodPeer)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ReadPointFile)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_FscanfPeer)->Unit(benchmark::kMillisecond)->Iterations(2);

// The ratios come from the reporter's own numbers.
class CRatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &r : runs) {
            const double t = r.GetAdjustedRealTime();
            const std::string name = r.benchmark_name();
            if (name.rfind("BM_ParsePointText", 0) == 0) g_parse = t;
            if (name.rfind("BM_StrtodPeer", 0) == 0) g_strtod = t;
            if (name.rfind("BM_ReadPointFile", 0) == 0) g_read = t;
            if (name.rfind("BM_FscanfPeer", 0) == 0) g_fscanf = t;
        }
    }
};

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    CRatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    if (g_strtod > 0)
        std::printf("point text parse / strtod peer: %.2f\n", g_parse / g_strtod);
    if (g_fscanf > 0)
        std::printf("point file read / fscanf peer: %.2f\n", g_read / g_fscanf);
    QFile::remove(pointFile());
    benchmark::Shutdown();
    return 0;
}
