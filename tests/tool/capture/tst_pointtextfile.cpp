#include "tool/capture/curverecords.h"
#include "tool/capture/pointtextfile.h"
#include "tool/capture/toolfields.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

CGraphInfoData curveOf(std::initializer_list<double> xy)
{
    CGraphInfoData g;
    g.points.SetSize(int(xy.size() / 2));
    std::copy(xy.begin(), xy.end(), g.points.GetData());
    return g;
}

QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("(unreadable)");
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
}

} // namespace

TEST(PointTextFile, WritesTwelveDigitsThatReadBack)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("curve.txt");
    const CGraphInfoData curve = curveOf({1.23456789012, 9.87654321098e-7, -3.14159265359e10, 2, 0.1, 1e-300});
    QString report;
    ASSERT_TRUE(WritePointTextFile(path, curve, "  Vce ", "Ic", report));
    EXPECT_EQ(readAll(path), "Vce Ic\r\n1.23456789012 9.87654321098e-07\r\n-31415926535.9 2\r\n"
                             "0.1 1e-300\r\n");

    CPointTable table;
    ASSERT_EQ(ReadPointTextFile(path, table, report), PointFileRead::Read);
    EXPECT_EQ(table.columnNames, QStringList({"Vce", "Ic"}));
    ASSERT_EQ(table.values.GetRows(), 3);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(table.values.GetData()[i], curve.points.GetData()[i]) << i;

    // The header needs both names, and follows the exchange of the axes.
    CToolFields fields;
    fields.xName = "V";
    ASSERT_TRUE(WriteCurveFile(path, curveOf({1, 2}), fields, report));
    EXPECT_TRUE(readAll(path).startsWith("1 2\r\n"));
    fields.yName = "I";
    fields.exchangeXY = true;
    ASSERT_TRUE(WriteCurveFile(path, curveOf({1, 2}), fields, report));
    EXPECT_TRUE(readAll(path).startsWith("I V\r\n1 2\r\n"));
}

TEST(PointTextFile, ShorterFileLeavesTheOldTail)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("c.txt");
    QString report;
    ASSERT_TRUE(WritePointTextFile(path, curveOf({1, 1, 2, 2, 3, 3, 4, 4}), "", "", report));
    const QByteArray before = readAll(path);
    ASSERT_TRUE(WritePointTextFile(path, curveOf({5, 5.5}), "", "", report));
    EXPECT_EQ(readAll(path), "5 5.5\r\n" + before.mid(7));
}

TEST(PointTextFile, FailedOpenIsReported)
{
    QString report;
    CPointTable table;
    EXPECT_FALSE(WritePointTextFile("/nonexistent/dir/c.txt", curveOf({1, 2}), "", "", report));
    EXPECT_TRUE(report.contains("/nonexistent/dir/c.txt"));
    report.clear();
    EXPECT_EQ(ReadPointTextFile("/nonexistent/c.txt", table, report), PointFileRead::OpenFailed);
    EXPECT_TRUE(report.contains("/nonexistent/c.txt"));
}

TEST(PointTextFile, Reads)
{
    const struct {
        const char *name;
        const char *content;
        PointFileRead result;
        QStringList names;
        QStringList rows;
        const char *extremes; // x min, x max, y min, y max
    } cases[] = {
        {"header", "; made by hand\n// twice\n\n  Vce Ic\n1 2\n3 4\n", PointFileRead::Read, {"Vce", "Ic"}, {"1,2", "3,4"}, "1 3 2 4"},
        {"no header", "1 2\n 3,4\n", PointFileRead::Read, {}, {"1,2", "3,4"}, "1 3 2 4"},
        {"tabs, commas, CR LF", "x\ty\r\n1,\t2\r\n\r\n  \t\r\n3 ,4\r\n", PointFileRead::Read, {"x", "y"}, {"1,2", "3,4"}, "1 3 2 4"},
        {"Fortran exponent", "x y\n1e3 2.5D0\n", PointFileRead::Read, {"x", "y"}, {"1e3,2.5D0"}, "1e3 1e3 2.5D0 2.5D0"},
        {"extremes as written", "x y\n2.50 1\n-1.0 3.000\n10 -2\n", PointFileRead::Read, {"x", "y"}, {"2.50,1", "-1.0,3.000", "10,-2"}, "-1.0 10 -2 3.000"},
        {"Y over all columns", "a b c\n1 5 -7\n2 3 9\n", PointFileRead::Read, {"a", "b", "c"}, {"1,5,-7", "2,3,9"}, "1 2 -7 9"},
        {"surplus ignored", "x y\n1 2 oops\n", PointFileRead::Read, {"x", "y"}, {"1,2"}, "1 1 2 2"},
        {"only comments", "; one\n// two\n\n", PointFileRead::NoData, {}, {}, ""},
        {"empty", "", PointFileRead::NoData, {}, {}, ""},
        {"header only", "x y\n  \n", PointFileRead::NoData, {}, {}, ""},
        {"bad character", "x y\n1 2\n3 a\n", PointFileRead::BadLine, {}, {}, ""},
        {"too few numbers", "x y\n1 2\n3\n", PointFileRead::BadLine, {}, {}, ""},
        {"comment after a header", "x y\n; note\n1 2\n", PointFileRead::BadLine, {}, {}, ""},
        // Without a header the file is read again from its start.
        {"comment before data", "; note\n1 2\n", PointFileRead::BadLine, {}, {}, ""},
    };
    QTemporaryDir dir;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = dir.filePath("in.txt");
        writeFile(path, c.content);
        CPointTable table;
        table.rows = QStringList{"held"};
        QString report;
        ASSERT_EQ(ReadPointTextFile(path, table, report), c.result);
        if (c.result != PointFileRead::Read) {
            EXPECT_EQ(table.rows, QStringList{"held"});
            continue;
        }
        EXPECT_EQ(table.columnNames, c.names);
        EXPECT_EQ(table.rows, c.rows);
        EXPECT_EQ(QStringList({table.xMinText, table.xMaxText, table.yMinText, table.yMaxText}).join(' '),
                  c.extremes);
    }
}

TEST(PointTextFile, TableGoesIntoTheFields)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("in.txt");
    CDTypeLib lib;
    CCurveRecords records;
    ASSERT_TRUE(records.Init(lib));
    CToolFields fields;
    fields.xName = "U";
    fields.yName = "I";
    fields.points = "(9,9)";
    fields.xAtFirst = "7";
    fields.exchangeXY = true;
    QString xName = "old x", yName = "old y", report;

    // A header of one word: an invalid argument, and only the exchange box
    // has been cleared by then.
    writeFile(path, "Vce\n1\n2\n");
    CPointTable table;
    ASSERT_EQ(ReadPointTextFile(path, table, report), PointFileRead::Read);
    EXPECT_EQ(ApplyPointTable(table, fields, records, xName, yName), PointTableApplied::HeaderTooShort);
    EXPECT_FALSE(fields.exchangeXY);
    EXPECT_EQ(fields.points, "(9,9)");
    EXPECT_EQ(fields.xAtFirst, "7");
    EXPECT_EQ(xName, "old x");
    EXPECT_TRUE(records.Template()->IsTemplate());

    writeFile(path, "Vce Ic Ib\n1 5 -7\n2 3 9\n");
    ASSERT_EQ(ReadPointTextFile(path, table, report), PointFileRead::Read);
    EXPECT_EQ(ApplyPointTable(table, fields, records, xName, yName), PointTableApplied::Applied);
    EXPECT_EQ(fields.points, "(1,5,-7)(2,3,9)");
    EXPECT_EQ(QStringList({fields.xAtFirst, fields.xAtSecond, fields.yAtFirst, fields.yAtSecond}),
              QStringList({"1", "2", "-7", "9"}));
    EXPECT_EQ(xName, "U"); // the names in the fields win over the file's
    EXPECT_EQ(yName, "I");
    EXPECT_EQ(records.m_curveCount, records.Size());
    EXPECT_FALSE(records.Template()->IsTemplate());
}

TEST(PointTextFile, OfferedName)
{
    EXPECT_EQ(OfferedFileName("/home/a/last.txt", "/usr/bin/tracelift"), "/home/a/last.txt");
    EXPECT_EQ(OfferedFileName("", "/usr/bin/tracelift"), "/usr/bi");
    EXPECT_EQ(OfferedFileName("", "/tracelift"), "");
    EXPECT_EQ(OfferedFileName("", "tracelift"), "");
}
