#include "tool/capture/curverecords.h"
#include "tool/capture/pointtextfile.h"
#include "tool/capture/toolfields.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <string_view>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

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

// The names in a folder, so that a temporary file left behind shows.
static QStringList namesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

TEST(PointTextFile, ASavedFileHoldsExactlyTheCurve)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("c.txt");
    QString report;
    CGraphInfoData longCurve;
    longCurve.points.SetSize(200);
    for (int i = 0; i < 400; ++i)
        longCurve.points.GetData()[i] = i;
    ASSERT_TRUE(WritePointTextFile(path, longCurve, "U", "I", report));
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0640), 0);
    ASSERT_TRUE(WritePointTextFile(path, curveOf({5, 5.5, 6, 6.5}), "", "", report));
    EXPECT_EQ(readAll(path), "5 5.5\r\n6 6.5\r\n");
    EXPECT_EQ(namesIn(dir.path()), QStringList{"c.txt"});
    // A replaced file keeps its permissions.
    struct stat st {};
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640u);
}

TEST(PointTextFile, AFailedWriteKeepsTheOldFileAndSaysWhy)
{
    QString report;
    CPointTable table;
    EXPECT_FALSE(WritePointTextFile("/nonexistent/dir/c.txt", curveOf({1, 2}), "", "", report));
    EXPECT_EQ(report, QString::fromLocal8Bit(std::strerror(ENOENT)));
    report.clear();
    EXPECT_EQ(ReadPointTextFile("/nonexistent/c.txt", table, report), PointFileRead::OpenFailed);
    EXPECT_TRUE(report.contains("/nonexistent/c.txt"));

    // A folder that cannot be written: the old file stays, nothing is added.
    // (root writes anywhere, so this part needs another user.)
    QTemporaryDir dir;
    const QString path = dir.filePath("old.txt");
    writeFile(path, "1 2\r\n");
    if (::geteuid() != 0) {
        ASSERT_TRUE(QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::ExeOwner));
        EXPECT_FALSE(WritePointTextFile(path, curveOf({3, 4}), "", "", report));
        EXPECT_EQ(report, QString::fromLocal8Bit(std::strerror(EACCES)));
        QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        EXPECT_EQ(readAll(path), "1 2\r\n");
        EXPECT_EQ(namesIn(dir.path()), QStringList{"old.txt"});
    }
}

TEST(PointTextFile, AFullDiskKeepsTheOldFile)
{
    // A file system of 64 KiB of our own, mounted where the test can fill it.
    QTemporaryDir dir;
    if (::geteuid() != 0)
        GTEST_SKIP() << "mounting a small tmpfs needs root";
    const QByteArray mountPoint = QFile::encodeName(dir.path());
    if (::mount("tmpfs", mountPoint.constData(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "mounting a small tmpfs is not allowed here: " << std::strerror(errno);
    struct Unmount {
        QByteArray at;
        ~Unmount() { ::umount(at.constData()); }
    } unmount{mountPoint};

    const QString path = dir.filePath("curve.txt");
    QString report;
    ASSERT_TRUE(WritePointTextFile(path, curveOf({1, 2, 3, 4}), "U", "I", report)) << qPrintable(report);
    const QByteArray before = readAll(path);

    // 4000 points of 12 digits each need far more than 64 KiB.
    CGraphInfoData big;
    big.points.SetSize(4000);
    for (int i = 0; i < 8000; ++i)
        big.points.GetData()[i] = 1.0 / 3.0 + i;
    EXPECT_FALSE(WritePointTextFile(path, big, "U", "I", report));
    EXPECT_EQ(report, QString::fromLocal8Bit(std::strerror(ENOSPC)));
    EXPECT_EQ(readAll(path), before);
    EXPECT_EQ(namesIn(dir.path()), QStringList{"curve.txt"});

    // A new file that does not fit leaves no empty file behind.
    EXPECT_FALSE(WritePointTextFile(dir.filePath("new.txt"), big, "", "", report));
    EXPECT_EQ(namesIn(dir.path()), QStringList{"curve.txt"});
}

TEST(PointTextFile, Reads)
{
    const struct {
        const char *name;
        std::string_view content;
        PointFileRead result;
        QStringList names;
        QStringList rows;
        const char *extremes; // x min, x max, y min, y max; or the line of a bad one
    } cases[] = {
        {"header", "; made by hand\n// twice\n\n  Vce Ic\n1 2\n3 4\n", PointFileRead::Read, {"Vce", "Ic"}, {"1,2", "3,4"}, "1 3 2 4"},
        {"no header", "1 2\n 3,4\n", PointFileRead::Read, {}, {"1,2", "3,4"}, "1 3 2 4"},
        {"tabs, commas, CR LF", "x\ty\r\n1,\t2\r\n\r\n  \t\r\n3 ,4\r\n", PointFileRead::Read, {"x", "y"}, {"1,2", "3,4"}, "1 3 2 4"},
        {"CR alone", "x y\r1 2\r3 4\r", PointFileRead::Read, {"x", "y"}, {"1,2", "3,4"}, "1 3 2 4"},
        {"Fortran exponent", "x y\n1e3 2.5D0\n1 2.5d-3\n", PointFileRead::Read, {"x", "y"}, {"1e3,2.5E0", "1,2.5E-3"}, "1 1e3 2.5E-3 2.5E0"},
        {"numbers are no header", "1 2.5D0\n3 4\n", PointFileRead::Read, {}, {"1,2.5E0", "3,4"}, "1 3 2.5E0 4"},
        {"extremes as written", "x y\n2.50 1\n-1.0 3.000\n10 -2\n", PointFileRead::Read, {"x", "y"}, {"2.50,1", "-1.0,3.000", "10,-2"}, "-1.0 10 -2 3.000"},
        {"Y over all columns", "a b c\n1 5 -7\n2 3 9\n", PointFileRead::Read, {"a", "b", "c"}, {"1,5,-7", "2,3,9"}, "1 2 -7 9"},
        {"surplus ignored", "x y\n1 2 oops\n", PointFileRead::Read, {"x", "y"}, {"1,2"}, "1 1 2 2"},
        {"comments anywhere", "; a\nx y\n; b\n1 2\n// c\n\n3 4\n", PointFileRead::Read, {"x", "y"}, {"1,2", "3,4"}, "1 3 2 4"},
        {"comments before data", "; note\n\n1 2\n", PointFileRead::Read, {}, {"1,2"}, "1 1 2 2"},
        {"UTF-8 mark", "\xEF\xBB\xBFx y\n1 2\n", PointFileRead::Read, {"x", "y"}, {"1,2"}, "1 1 2 2"},
        {"UTF-16 LE with mark", std::string_view("\xFF\xFEx\0 \0y\0\n\0" "1\0 \0" "2\0\n\0", 18), PointFileRead::Read, {"x", "y"}, {"1,2"}, "1 1 2 2"},
        {"UTF-16 BE without mark", std::string_view("\0" "1\0 \0" "2\0\r\0\n\0" "3\0 \0" "4", 16), PointFileRead::Read, {}, {"1,2", "3,4"}, "1 3 2 4"},
        {"only comments", "; one\n// two\n\n", PointFileRead::NoData, {}, {}, ""},
        {"only commas", ",,,\n , ,\n", PointFileRead::NoData, {}, {}, ""},
        {"empty", "", PointFileRead::NoData, {}, {}, ""},
        {"header only", "x y\n  \n", PointFileRead::NoData, {}, {}, ""},
        {"bad character", "x y\n1 2\n3 a\n", PointFileRead::BadLine, {}, {}, "3"},
        {"too few numbers", "x y\n1 2\n3\n", PointFileRead::BadLine, {}, {}, "3"},
        {"one column without a header", "1\n2\n", PointFileRead::BadLine, {}, {}, "1"},
        {"NUL byte", std::string_view("1 2\n3 4\0 junk\n5 6\n", 19), PointFileRead::BadLine, {}, {}, "2"},
    };
    QTemporaryDir dir;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = dir.filePath("in.txt");
        writeFile(path, QByteArray(c.content.data(), qsizetype(c.content.size())));
        CPointTable table;
        table.rows = QStringList{"held"};
        QString report;
        int line = -1;
        ASSERT_EQ(ReadPointTextFile(path, table, report, &line), c.result);
        if (c.result != PointFileRead::Read) {
            EXPECT_EQ(table.rows, QStringList{"held"});
            EXPECT_EQ(QString::number(line), QString::fromLatin1(*c.extremes ? c.extremes : "0"));
            continue;
        }
        EXPECT_EQ(table.columnNames, c.names);
        EXPECT_EQ(table.rows, c.rows);
        EXPECT_EQ(QStringList({table.xMinText, table.xMaxText, table.yMinText, table.yMaxText}).join(' '),
                  c.extremes);
    }
}

TEST(PointTextFile, FortranExponentsReadAsTheirValues)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("d.txt");
    writeFile(path, "2.5D-3 1d2\n-1D0 +4.0D+1\n");
    CPointTable table;
    QString report;
    ASSERT_EQ(ReadPointTextFile(path, table, report), PointFileRead::Read);
    const double expected[] = {2.5e-3, 100, -1, 40};
    for (int i = 0; i < 4; ++i)
        EXPECT_DOUBLE_EQ(table.values.GetData()[i], expected[i]) << i;
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
    // The file belongs to a fresh curve (the template was current); the
    // template stays the template.
    EXPECT_EQ(records.m_curveCount, records.Size());
    EXPECT_TRUE(records.Template()->IsTemplate());
    EXPECT_FALSE(records.CurrentIsTemplate());
    EXPECT_EQ(records.CheckInvariant(), QString());

    // Empty name fields take the file's names, so that a save writes them.
    fields.xName = "";
    fields.yName = " ";
    ASSERT_EQ(ApplyPointTable(table, fields, records, xName, yName), PointTableApplied::Applied);
    EXPECT_EQ(QStringList({fields.xName, fields.yName, xName, yName}), QStringList({"Vce", "Ic", "Vce", "Ic"}));
}

TEST(PointTextFile, OfferedName)
{
    EXPECT_EQ(OfferedFileName("/home/a/last.txt", "/usr/bin/tracelift"), "/home/a/last.txt");
    EXPECT_EQ(OfferedFileName("", "/usr/bin/tracelift"), "/usr/bi");
    EXPECT_EQ(OfferedFileName("", "/tracelift"), "");
    EXPECT_EQ(OfferedFileName("", "tracelift"), "");
}
