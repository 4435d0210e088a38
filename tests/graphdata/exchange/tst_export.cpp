#include "graphdata/exchange/exportcolumns.h"
#include "graphdata/exchange/savefilters.h"
#include "graphdata/exchange/textexport.h"
#include "graphdata/graphcurve.h"
#include "graphdata/spectrum/spectrumjob.h"

#include "tests/graphdata/columnfixture.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <csignal>
#include <cstring>
#include <limits>
#include <sys/resource.h>
#include <vector>

using columnfixture::makeColumn;
using columnfixture::Missing;
using columnfixture::NaN;

namespace {

QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<unreadable>");
}

struct Columns
{
    std::vector<CGraphColumnPtr> owned;
    std::vector<const CGraphColumn *> list;
    void add(CGraphColumnPtr c)
    {
        list.push_back(c.Get());
        owned.push_back(std::move(c));
    }
};

// Time, a column with a blank in its name, a shorter one with an invalid
// and a missing row, and one without a name.
Columns sample()
{
    Columns c;
    c.add(makeColumn({0, 0.5, 1}, u"Time"_qs));
    c.add(makeColumn({1.25, -2, 1e-300}, u"U out"_qs));
    c.add(makeColumn({NaN, Missing}, u"I"_qs));
    c.add(makeColumn({3, 4, 5}));
    return c;
}

} // namespace

TEST(TextExport, DelimitedAndFixedTextOfKnownColumns)
{
    const Columns c = sample();
    const struct
    {
        const char *name;
        int mode;
        const char *text;
    } cases[] = {
        {"tab", ExportTab,
         "Time\tU_out\tI\tGraph(3)\r\n"
         "0\t1.25\tNAN\t3\r\n"
         "0.5\t-2\tMISSING\t4\r\n"
         "1\t1e-300\tMISSING\t5\r\n"},
        {"comma", ExportComma,
         "Time,U_out,I,Graph(3)\r\n"
         "0,1.25,NAN,3\r\n"
         "0.5,-2,MISSING,4\r\n"
         "1,1e-300,MISSING,5\r\n"},
        {"comma without header", ExportCommaNoHeader,
         "0,1.25,NAN,3\r\n"
         "0.5,-2,MISSING,4\r\n"
         "1,1e-300,MISSING,5\r\n"},
        {"fixed", ExportFixed,
         "    Time            U_out             I                 Graph(3)        \r\n"
         "  0.000000000E+00   1.250000000E+00              NAN    3.000000000E+00 \r\n"
         "  5.000000000E-01  -2.000000000E+00          MISSING    4.000000000E+00 \r\n"
         "  1.000000000E+00  1.000000000E-300          MISSING    5.000000000E+00 \r\n"},
    };
    QTemporaryDir dir;
    for (const auto &t : cases) {
        SCOPED_TRACE(t.name);
        const QString path = dir.filePath(u"out.txt"_qs);
        QString error;
        ASSERT_EQ(SaveAsText(path, c.list.data(), 4, 3, t.mode, nullptr, &error), 1) << error.toStdString();
        EXPECT_EQ(readAll(path).toStdString(), std::string(t.text));
    }
}

TEST(TextExport, SpectrumFilesCarryAnIndexAndTheSpan)
{
    const Columns c = sample();
    QTemporaryDir dir;
    const QString path = dir.filePath(u"s.fft"_qs);
    const struct
    {
        int index;
        QString label;
        const char *text;
    } cases[] = {
        {0, u"Frequency"_qs,
         ";; FFT Data from 0.5 (s)\t to   12 (s) \r\n"
         " Frequency   Time             U_out             I                 Graph(3)        \r\n"
         "        1   0.000000000E+00   1.250000000E+00              NAN    3.000000000E+00 \r\n"
         "        2   5.000000000E-01  -2.000000000E+00          MISSING    4.000000000E+00 \r\n"
         "        3   1.000000000E+00  1.000000000E-300          MISSING    5.000000000E+00 \r\n"},
        {1, QString(),
         "Index\tTime\tU_out\tI\tGraph(3)\r\n"
         "        1\t0\t1.25\tNAN\t3\r\n"
         "        2\t0.5\t-2\tMISSING\t4\r\n"
         "        3\t1\t1e-300\tMISSING\t5\r\n"},
        {2, u"Hz"_qs,
         "Hz,Time,U_out,I,Graph(3)\r\n"
         "        1,0,1.25,NAN,3\r\n"
         "        2,0.5,-2,MISSING,4\r\n"
         "        3,1,1e-300,MISSING,5\r\n"},
    };
    for (const auto &t : cases) {
        SCOPED_TRACE(t.index);
        ASSERT_EQ(SaveSpectrumFile(path, t.index, c.list.data(), 4, 3, 0.5, 12, t.label), 1);
        EXPECT_EQ(readAll(path).toStdString(), std::string(t.text));
    }
}

TEST(TextExport, FixedHeaderPaddingRules)
{
    const struct
    {
        const char *name;
        std::vector<QString> names;
        bool index;
        QString label;
        const char *line;
    } cases[] = {
        {"short index label", {u"A"_qs}, true, QString(), "  Index     A               \r\n"},
        {"empty and underscore names", {QString(), u"__"_qs, u"x  "_qs}, false, QString(),
         "    Graph(0)        Graph(1)          x               \r\n"},
        {"a name that fills its field", {u"ABCDEFGHIJKLMNOPQ"_qs, u"B"_qs}, false, QString(),
         "  ABCDEFGHIJKLMNOPQ   B             \r\n"},
    };
    for (const auto &t : cases) {
        SCOPED_TRACE(t.name);
        Columns c;
        for (const QString &n : t.names)
            c.add(makeColumn({1}, n));
        EXPECT_EQ(FixedHeader(c.list.data(), int(c.list.size()), t.index, t.label).toStdString(), std::string(t.line));
    }
}

TEST(TextExport, RowMapAndEmptyInput)
{
    const Columns c = sample();
    // -1 and 7 mean "the row itself"; 0 repeats the first row.
    const int map[] = {2, -1, 7, 0};
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    ASSERT_TRUE(WriteDelimited(buffer, c.list.data(), 2, 4, map, ",", false));
    EXPECT_EQ(buffer.data().toStdString(), "1,1e-300\r\n0.5,-2\r\n1,1e-300\r\n"
                                           "0,1.25\r\n");

    QTemporaryDir dir;
    const QString path = dir.filePath(u"none.txt"_qs);
    EXPECT_EQ(SaveAsText(path, c.list.data(), 0, 3, ExportTab), 0);
    EXPECT_EQ(SaveAsText(path, c.list.data(), 4, 0, ExportTab), 0);
    EXPECT_EQ(SaveAsText(QString(), c.list.data(), 4, 3, ExportTab), 0);
    EXPECT_FALSE(QFile::exists(path));
}

// The delimited text reads back to the same bits.
TEST(TextExport, CommaSeparatedRoundTrip)
{
    std::vector<double> a, b;
    for (int i = 0; i < 500; ++i) {
        a.push_back(i * 0.1);
        b.push_back(std::sin(i * 1.37) * std::pow(10.0, i % 40 - 20));
    }
    Columns c;
    c.add(makeColumn(a, u"t"_qs));
    c.add(makeColumn(b, u"y"_qs));
    QTemporaryDir dir;
    const QString path = dir.filePath(u"r.csv"_qs);
    ASSERT_EQ(SaveAsText(path, c.list.data(), 2, 500, ExportComma), 1);
    const QList<QByteArray> lines = readAll(path).split('\n');
    ASSERT_EQ(lines.size(), 502); // header, 500 rows, the empty rest
    for (int i = 0; i < 500; ++i) {
        const QList<QByteArray> cells = lines[i + 1].trimmed().split(',');
        ASSERT_EQ(cells.size(), 2);
        const double x = cells[0].toDouble(), y = cells[1].toDouble();
        ASSERT_EQ(std::memcmp(&x, &a[i], sizeof x), 0) << i;
        ASSERT_EQ(std::memcmp(&y, &b[i], sizeof y), 0) << i;
    }
}

// A write that fails part way (the file size limit stands in for a full
// disk) leaves the old file as it was and no temporary file behind.
TEST(TextExport, FailedExportKeepsTheOldFile)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"keep.csv"_qs);
    {
        QFile old(path);
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
        old.write("old contents\n");
    }
    std::vector<double> big(200000, 1.0 / 3);
    Columns c;
    c.add(makeColumn(big, u"x"_qs));

    for (int mode : {ExportComma, ExportFixed, ExportMatFile}) {
        SCOPED_TRACE(mode);
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit saved;
        getrlimit(RLIMIT_FSIZE, &saved);
        rlimit small = saved;
        small.rlim_cur = 64 * 1024;
        setrlimit(RLIMIT_FSIZE, &small);
        QString error;
        const int result = SaveAsText(path, c.list.data(), 1, int(big.size()), mode, nullptr, &error);
        setrlimit(RLIMIT_FSIZE, &saved);
        EXPECT_EQ(result, 0);
        EXPECT_FALSE(error.isEmpty());
        EXPECT_EQ(readAll(path), QByteArray("old contents\n"));
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{u"keep.csv"_qs});
    }

    // A folder that does not exist: a message, no file.
    QString error;
    EXPECT_EQ(SaveAsText(dir.filePath(u"no/such/folder/x.txt"_qs), c.list.data(), 1, 3, ExportTab, nullptr, &error),
              0);
    EXPECT_FALSE(error.isEmpty());
}

TEST(SaveFilters, FiltersAndKinds)
{
    EXPECT_EQ(SaveFilters(true, u"Frequency"_qs),
              (QStringList{u"FFT files|*.fft"_qs, u"Tab separated text file (Excel compatible)|*.txt"_qs,
                           u"Comma separated file|*.csv"_qs, u"MAT-files|*.mat"_qs}));
    EXPECT_EQ(SaveFilters(false, u"freq."_qs).at(1), u"Text files|*.fra"_qs);
    EXPECT_EQ(SaveFilters(false, u"Time"_qs).at(1), u"Text files|*.txt"_qs);
    EXPECT_EQ(SaveFilters(false, u"Time"_qs).at(0), u"Mirador files|*.mrd"_qs);

    const struct
    {
        bool spectrum;
        int position, kind;
    } positions[] = {
        {true, 1, 0}, {true, 2, 1}, {true, 3, 2}, {true, 4, 4}, {true, 7, 0},
        {false, 1, 10}, {false, 2, 0}, {false, 3, 1}, {false, 4, 2}, {false, 5, 4}, {false, 0, 0},
    };
    for (const auto &p : positions)
        EXPECT_EQ(SaveKindOfFilter(p.spectrum, p.position), p.kind) << p.spectrum << " " << p.position;

    const struct
    {
        const char *path;
        int index, kind;
    } names[] = {
        {"a.txt", -1, 0}, {"a.FRA", -1, 0}, {"a.csv", -1, 0}, {"a.csv", 2, 2}, {"a.txt", 1, 1}, {"a.fft", -1, 10},
        {"a.mat", -1, 10}, {"a.mrd", -1, 10}, {"a", -1, 10}, {"a.dat", 2, 10},
    };
    for (const auto &n : names)
        EXPECT_EQ(SaveKindOfName(QString::fromLatin1(n.path), n.index), n.kind) << n.path;
}

namespace {

// X = 0..9 named "Time", U1 = 2x, U2 = x^2.
void fillGraph(CGraphCurve &graph)
{
    graph.m_data.Create(1, 3, 10, 0);
    graph.m_data.GetColumn(0)->m_name = u"Time"_qs;
    graph.m_data.GetColumn(1)->m_name = u"U1"_qs;
    graph.m_data.GetColumn(2)->m_name = u"U2"_qs;
    std::vector<double> v;
    for (int r = 0; r < 10; ++r)
        v.insert(v.end(), {double(r), 2.0 * r, double(r * r)});
    graph.m_data.AppendRows(v.data(), nullptr, 0, 3, 0, 10);
    bool changed;
    graph.AddCurve(1, 0, false, changed);
    graph.AddCurve(2, 0, false, changed);
    graph.FitRanges();
}

} // namespace

TEST(ExportColumns, WholeAndZoomedGraphs)
{
    const struct
    {
        const char *name;
        double viewMin, viewMax;
        int rows;
        double firstX;
    } cases[] = {
        {"whole span: X as it is", -1, 100, 10, 0},
        {"zoomed: rows 3 to 6", 2.5, 6.5, 4, 3},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CGraphCurve graph;
        fillGraph(graph);
        graph.m_xViewMin = c.viewMin;
        graph.m_xViewMax = c.viewMax;
        const CExportSelection s = CollectExportColumns({&graph});
        ASSERT_EQ(s.columns.size(), 3u);
        EXPECT_EQ(s.firstHeader, u"Time"_qs);
        EXPECT_EQ(s.rows, c.rows);
        EXPECT_EQ(s.references, (std::vector<std::uint32_t>{1, 2}));
        EXPECT_EQ(s.labels, (QStringList{u"U1"_qs, u"U2"_qs}));
        EXPECT_EQ(s.colors.size(), 2u);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(s.columns[i]->m_count, c.rows) << i;
        EXPECT_EQ(s.columns[0]->m_values[0], c.firstX);
        EXPECT_EQ(s.columns[1]->m_values[0], 2 * c.firstX);
        EXPECT_EQ(s.columns[2]->m_name, u"U2"_qs);
    }
}

TEST(ExportColumns, SpectrumComponentsArePrefixed)
{
    CGraphCurve graph;
    fillGraph(graph);
    graph.Curve(1)->m_source |= CCurveBasicInfo::ComponentAngleDeg;
    ASSERT_EQ(SetSpectrumMode(graph, true), 1);
    const CExportSelection s = CollectExportColumns({&graph});
    ASSERT_EQ(s.columns.size(), 3u);
    EXPECT_EQ(s.columns[0]->m_name, u"Frequency"_qs);
    EXPECT_EQ(s.columns[1]->m_name, u"U1"_qs);
    EXPECT_EQ(s.columns[2]->m_name, u"Angle(D)_U2_Angle"_qs);
    EXPECT_EQ(s.columns[2]->m_count, graph.m_frequencyColumn->m_count);
    EXPECT_NEAR(s.columns[2]->m_values[1], graph.Curve(1)->m_spectrumAngle->m_values[1] * 57.29577951308232, 1e-9);

    QTemporaryDir dir;
    QString error;
    ASSERT_EQ(ExportGraphs({&graph}, dir.filePath(u"s.csv"_qs), SaveKindComma, &error), 1) << error.toStdString();
    EXPECT_TRUE(readAll(dir.filePath(u"s.csv"_qs)).startsWith("Index,Frequency,U1,Angle(D)_U2_Angle\r\n"));
}
