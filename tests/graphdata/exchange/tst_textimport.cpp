// The data text reader: cells, file shapes and encodings, bad cells with
// their line numbers, and the block-parallel reading against one block.
#include "graphdata/exchange/textformat.h"
#include "graphdata/exchange/textimport.h"

#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include "tests/graphdata/exchange/bigtextfile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <ostream>
#include <string>

namespace {

struct CellCase
{
    const char *text;
    bool decimalComma;
    int byte;
    double value;
};

void PrintTo(const CellCase &c, std::ostream *out)
{
    *out << '"' << std::string(c.text).substr(0, 40) << '"';
}

class TextCell : public ::testing::TestWithParam<CellCase> {};

TEST_P(TextCell, GivesItsValidityAndValue)
{
    const CellCase &c = GetParam();
    const std::string text = c.text;
    double value = -12345;
    const std::uint8_t byte = ReadTextCell(text.data(), text.data() + text.size(), c.decimalComma, value);
    EXPECT_EQ(int(byte), c.byte) << '"' << c.text << '"';
    if (c.byte == 1) {
        EXPECT_EQ(value, c.value) << '"' << c.text << '"';
        EXPECT_EQ(std::signbit(value), std::signbit(c.value)) << '"' << c.text << '"';
    }
}

const std::string kHugeInteger = "1" + std::string(400, '0');
const std::string kTinyMantissa = "0." + std::string(330, '0') + "1";

INSTANTIATE_TEST_SUITE_P(
    Cells, TextCell,
    ::testing::Values(CellCase{"1.5", false, 1, 1.5}, CellCase{"  -3e-3 ", false, 1, -3e-3},
                      CellCase{"+2", false, 1, 2}, CellCase{"2.5D-3", false, 1, 2.5e-3},
                      CellCase{"\" 4 \"", false, 1, 4}, CellCase{"1,5", true, 1, 1.5},
                      CellCase{"1,5", false, 2, 0}, CellCase{"nan", false, 2, 0}, CellCase{"NaN", false, 2, 0},
                      CellCase{"inf", false, 2, 0}, CellCase{"-Infinity", false, 2, 0},
                      CellCase{"1e400", false, 2, 0}, CellCase{"-1.7e309", false, 2, 0},
                      CellCase{kHugeInteger.c_str(), false, 2, 0}, CellCase{"1e-400", false, 1, 0.0},
                      CellCase{"-1e-400", false, 1, -0.0}, CellCase{kTinyMantissa.c_str(), false, 1, 0.0},
                      CellCase{"4e-320", false, 1, 4e-320}, CellCase{"1.7976931348623157e308", false, 1, 1.7976931348623157e308},
                      CellCase{"abc", false, 2, 0}, CellCase{"1.5V", false, 2, 0}, CellCase{"0x10", false, 2, 0},
                      CellCase{"", false, 0, 0}, CellCase{"   ", false, 0, 0}, CellCase{"\"\"", false, 0, 0},
                      CellCase{"MISSING", false, 0, 0}));

// A column expected after reading: its name, then the cells as text, "-"
// for missing and "x" for invalid.
struct ColumnExpect
{
    QString name;
    std::vector<std::string> cells;
};

struct FileCase
{
    const char *label;
    QByteArray bytes;
    std::vector<ColumnExpect> columns;
    std::int64_t invalid, missing, extra;
    std::vector<std::int64_t> badLines;
    bool transposed = false;
};

QByteArray utf16(const QString &text, bool littleEndian)
{
    QByteArray out(littleEndian ? "\xFF\xFE" : "\xFE\xFF", 2);
    for (QChar ch : text) {
        const char lo = char(ch.unicode() & 0xFF), hi = char(ch.unicode() >> 8);
        out.append(littleEndian ? lo : hi);
        out.append(littleEndian ? hi : lo);
    }
    return out;
}

const QString kSpreadsheet = QStringLiteral("Zeit\tSpannung\r\n0,5\t1,25\r\n1\t-2,5e-1\r\n");

std::vector<FileCase> fileCases()
{
    return {
        {"blanks, header, CR LF", "Vce Ic\r\n0.5 0.001\r\n1.2e0   2.5D-3\r\n",
         {{"Vce", {"0.5", "1.2"}}, {"Ic", {"0.001", "0.0025"}}}, 0, 0, 0, {}},
        {"tabs and decimal commas", kSpreadsheet.toUtf8(),
         {{"Zeit", {"0.5", "1"}}, {"Spannung", {"1.25", "-0.25"}}}, 0, 0, 0, {}},
        {"semicolons, quoted names", "\"Time\";\"V(out)\";\"I\"\n0;1,5;2\n1;2,5;3\n",
         {{"Time", {"0", "1"}}, {"V(out)", {"1.5", "2.5"}}, {"I", {"2", "3"}}}, 0, 0, 0, {}},
        {"commas, comments and blank lines", "# made by hand\n// and checked\nx, y\n% units: s, V\n1, 10\n\n2, 20\n   \n3,30\n",
         {{"x", {"1", "2", "3"}}, {"y", {"10", "20", "30"}}}, 0, 0, 0, {}},
        {"a row of separators is an empty row", "a,b\n1,2\n,,\n3,4\n", {{"a", {"1", "3"}}, {"b", {"2", "4"}}}, 0, 0, 0, {}},
        {"every kind of bad cell", "t,a,b\n0,1,2\n1,nan,inf\n2,,5\n3,1e400\n4,word,-inf\n5,6,7\n",
         {{"t", {"0", "1", "2", "3", "4", "5"}}, {"a", {"1", "x", "-", "x", "x", "6"}}, {"b", {"2", "x", "5", "-", "x", "7"}}},
         5, 2, 0, {3, 4, 5, 6}},
        {"bad lines past the first five are counted, not listed", "1 2\nx 1\nx 2\nx 3\nx 4\nx 5\nx 6\n",
         {{"", {"1", "x", "x", "x", "x", "x", "x"}}, {"", {"2", "1", "2", "3", "4", "5", "6"}}}, 6, 0, 0, {2, 3, 4, 5, 6}},
        {"a short first row takes the width of the longest", "1\n2 3\n", {{"", {"1", "2"}}, {"", {"-", "3"}}}, 0, 1, 0, {1}},
        {"lone CR line ends", "a b\r1 2\r3 4\r", {{"a", {"1", "3"}}, {"b", {"2", "4"}}}, 0, 0, 0, {}},
        {"no final line end", "1 2\n3 4", {{"", {"1", "3"}}, {"", {"2", "4"}}}, 0, 0, 0, {}},
        {"UTF-8 with a mark", "\xEF\xBB\xBFx;y\n1;2\n", {{"x", {"1"}}, {"y", {"2"}}}, 0, 0, 0, {}},
        {"UTF-16 little-endian with a mark", utf16(kSpreadsheet, true),
         {{"Zeit", {"0.5", "1"}}, {"Spannung", {"1.25", "-0.25"}}}, 0, 0, 0, {}},
        {"UTF-16 big-endian with a mark", utf16(QStringLiteral("\u00b5s V\n1 2\n"), false),
         {{QStringLiteral("\u00b5s"), {"1"}}, {"V", {"2"}}}, 0, 0, 0, {}},
        {"one row is a series", "# one line\n1 2 3 nan 5\n", {{"", {"1", "2", "3", "x", "5"}}}, 1, 0, 0, {2}, true},
        {"one row with commas", "1,2,,4,\n", {{"", {"1", "2", "-", "4"}}}, 0, 1, 0, {1}, true},
    };
}

void PrintTo(const FileCase &c, std::ostream *out)
{
    *out << c.label;
}

class TextFile : public ::testing::TestWithParam<FileCase> {};

void expectColumns(const CGraphData &data, const std::vector<ColumnExpect> &columns, const char *label)
{
    ASSERT_EQ(data.ColumnCount(), int(columns.size())) << label;
    ASSERT_EQ(data.RowCount(), int(columns[0].cells.size())) << label;
    for (int c = 0; c < data.ColumnCount(); ++c) {
        const CGraphColumn *column = data.GetColumn(c);
        EXPECT_EQ(column->m_name, columns[std::size_t(c)].name) << label;
        bool any = false, other = false;
        double lo = 0, hi = 0;
        for (int r = 0; r < data.RowCount(); ++r) {
            const std::string &cell = columns[std::size_t(c)].cells[std::size_t(r)];
            const int byte = cell == "-" ? 0 : cell == "x" ? 2 : 1;
            EXPECT_EQ(int(column->m_valid[r]), byte) << label << " column " << c << " row " << r;
            if (byte == 1) {
                const double v = std::stod(cell);
                EXPECT_DOUBLE_EQ(column->m_values[r], v) << label << " column " << c << " row " << r;
                lo = any ? std::min(lo, v) : v;
                hi = any ? std::max(hi, v) : v;
                any = true;
            } else {
                other = true;
            }
        }
        EXPECT_DOUBLE_EQ(column->m_minValue, lo) << label;
        EXPECT_DOUBLE_EQ(column->m_maxValue, hi) << label;
        EXPECT_EQ(column->m_hasInvalid != 0, other) << label;
    }
}

TEST_P(TextFile, ReadsEveryRowAndReportsTheBadCells)
{
    const FileCase &c = GetParam();
    CGraphData data;
    CTextImportReport report;
    ASSERT_EQ(ImportTextBytes(c.bytes.constData(), std::size_t(c.bytes.size()), data, report), TextImport::Read)
        << c.label;
    expectColumns(data, c.columns, c.label);
    EXPECT_EQ(report.rows, data.RowCount()) << c.label;
    EXPECT_EQ(report.invalidCells, c.invalid) << c.label;
    EXPECT_EQ(report.missingCells, c.missing) << c.label;
    EXPECT_EQ(report.extraCells, c.extra) << c.label;
    EXPECT_EQ(report.firstBadLines, c.badLines) << c.label;
    EXPECT_EQ(report.transposed, c.transposed) << c.label;
}

INSTANTIATE_TEST_SUITE_P(Files, TextFile, ::testing::ValuesIn(fileCases()));

// The width is taken from the first lines; a wider row further on keeps
// the width, and its further cells are counted as left out.
TEST(TextImport, CellsPastTheLastColumnAreLeftOutAndCounted)
{
    QByteArray text;
    for (int i = 0; i < 300; ++i)
        text += QByteArray::number(i) + " 1\n";
    text += "7 8 9 10\n7 8,\n";
    CGraphData data;
    CTextImportReport report;
    ASSERT_EQ(ImportTextBytes(text.constData(), std::size_t(text.size()), data, report), TextImport::Read);
    EXPECT_EQ(data.ColumnCount(), 2);
    ASSERT_EQ(data.RowCount(), 302);
    EXPECT_EQ(data.GetColumn(1)->m_values[300], 8);
    EXPECT_EQ(report.extraCells, 2);
    EXPECT_EQ(report.invalidCells, 1) << "8, is not a number where blanks separate";
    EXPECT_EQ(report.firstBadLines, (std::vector<std::int64_t>{301, 302}));
}

TEST(TextImport, FilesWithoutRowsGiveNoData)
{
    const char *texts[] = {"", "\n\n  \n", "# only a comment\n", "x y\n", "; old style comment\n// another\n"};
    for (const char *text : texts) {
        CGraphData data;
        data.Create(1, 2, 5);
        CTextImportReport report;
        EXPECT_EQ(ImportTextBytes(text, std::strlen(text), data, report), TextImport::NoData) << text;
        EXPECT_EQ(data.ColumnCount(), 2) << "the data set stays as it was";
    }
}

using bigtextfile::bigFile;
using bigtextfile::kBigRows;

TEST(TextImport, AFileOnDiskIsReadAsItsBytesAre)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("data.csv"));
    const QByteArray text = bigFile();
    {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(text);
    }
    CGraphData fromFile, fromBytes;
    CTextImportReport fileReport, bytesReport;
    std::atomic<int> progress{0};
    CTextImportOptions options;
    options.progress = &progress;
    ASSERT_EQ(ImportTextFile(path, fromFile, fileReport, options), TextImport::Read);
    ASSERT_EQ(ImportTextBytes(text.constData(), std::size_t(text.size()), fromBytes, bytesReport), TextImport::Read);
    EXPECT_EQ(progress.load(), 1000);
    EXPECT_EQ(fileReport.lines, bytesReport.lines);
    ASSERT_EQ(fromFile.RowCount(), fromBytes.RowCount());
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(std::memcmp(fromFile.GetColumn(c)->m_valid, fromBytes.GetColumn(c)->m_valid,
                              std::size_t(fromFile.RowCount())),
                  0);
        EXPECT_EQ(fromFile.GetColumn(c)->m_name, fromBytes.GetColumn(c)->m_name);
    }
}

TEST(TextImport, RefusalsLeaveTheDataAsTheyWere)
{
    QTemporaryDir dir;
    const QByteArray text = "1 2\n3 4\n5 6\n";
    const QByteArray wide = "1 2 3 4 5 6 7 8 9 10\n";
    std::atomic<bool> cancel{true};
    struct Case
    {
        const char *label;
        QString path;
        const QByteArray *bytes;
        std::uint64_t memoryLimit;
        bool cancelled;
        TextImport expected;
    };
    const Case cases[] = {
        {"missing file", dir.filePath(QStringLiteral("none.txt")), nullptr, 0, false, TextImport::OpenFailed},
        {"columns larger than the memory", QString(), &text, 50, false, TextImport::TooLarge},
        {"a series larger than the memory", QString(), &wide, 60, false, TextImport::TooLarge},
        {"cancelled", QString(), &text, 0, true, TextImport::Cancelled},
    };
    for (const Case &c : cases) {
        CGraphData data;
        data.Create(1, 1, 3);
        CTextImportReport report;
        CTextImportOptions options;
        options.memoryLimit = c.memoryLimit;
        options.cancel = c.cancelled ? &cancel : nullptr;
        const TextImport result = c.bytes ? ImportTextBytes(c.bytes->constData(), std::size_t(c.bytes->size()),
                                                            data, report, options)
                                          : ImportTextFile(c.path, data, report, options);
        EXPECT_EQ(result, c.expected) << c.label;
        EXPECT_EQ(data.ColumnCount(), 1) << c.label;
        if (c.expected == TextImport::TooLarge) {
            EXPECT_GT(report.bytesNeeded, c.memoryLimit) << c.label;
            EXPECT_EQ(report.bytesAvailable, c.memoryLimit) << c.label;
        }
        if (c.expected == TextImport::OpenFailed) {
            EXPECT_FALSE(report.error.isEmpty());
        }
    }
}

} // namespace
