// graphview --curve NAME=FORMULA: how the argument splits, and the curves it
// adds or refuses.
#include "graphviewcurves.h"
#include "graphviewexchange.h"

#include "graphdata/graphcurve.h"
#include "graphwnd/graphwnd.h"
#include "support/languagestring.h"

#include <QCommandLineParser>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// Time = 0, 0.5, ... 4.5 and V1 = 0, 1, ... 9.
void FillData(CGraphData &data)
{
    data.Create(1, 2, 10, 0);
    data.GetColumn(0)->m_name = u"Time"_s;
    data.GetColumn(1)->m_name = u"V1"_s;
    for (int r = 0; r < 10; ++r) {
        const double row[2] = {r * 0.5, r * 1.0};
        data.AppendRows(row, nullptr, 0, 2, r, 1);
    }
}

} // namespace

TEST(GraphViewCurves, ArgumentSplitsAtTheFirstPlainEquals)
{
    const struct
    {
        const char *argument;
        bool ok;
        const char *name, *formula;
    } cases[] = {
        {"P=V1*I1", true, "P", "V1*I1"},
        {" S = sin(Time)*2", true, "S", " sin(Time)*2"},
        {"=V1+1", true, "", "V1+1"},
        {"big=iif(V1 >= 2, 1, 0)", true, "big", "iif(V1 >= 2, 1, 0)"},
        {"V1 == 2", false, "", ""},   // an operator, not a name
        {"V1 <= 2", false, "", ""},
        {"name=", false, "", ""},
        {"no formula", false, "", ""},
    };
    for (const auto &c : cases) {
        QString name, formula;
        ASSERT_EQ(CGraphviewCurves::SplitCurveArgument(QString::fromLatin1(c.argument), name, formula), c.ok)
            << c.argument;
        if (c.ok) {
            EXPECT_EQ(name, QString::fromLatin1(c.name)) << c.argument;
            EXPECT_EQ(formula, QString::fromLatin1(c.formula)) << c.argument;
        }
    }
}

TEST(GraphViewCurves, CurvesAreAddedOrTheFirstFailureEndsTheProgram)
{
    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
    const struct
    {
        std::vector<const char *> curves;
        int code;
        int curveCount;
    } cases[] = {
        {{"D=V1*2", "=V1+Time"}, -1, 3},
        {{"D=V1*2", "X=nope+1"}, 1, 2},
        {{"oops"}, 2, 1},
    };
    for (const auto &c : cases) {
        CGraphData data;
        FillData(data);
        CGraphWnd window;
        window.SetGraphDataCopy(data);
        QCommandLineParser parser;
        CGraphviewCurves curves(parser);
        QStringList arguments{u"graphview"_s};
        for (const char *curve : c.curves)
            arguments << u"--curve"_s << QString::fromLatin1(curve);
        ASSERT_TRUE(parser.parse(arguments));
        EXPECT_EQ(curves.Apply(window, true), c.code) << c.curves.back();
        CGraphCurve &graph = *window.GetGraphData();
        ASSERT_EQ(graph.CurveCount(), c.curveCount) << c.curves.back();
        if (c.code == -1) {
            EXPECT_EQ(graph.Curve(1)->m_colLabel, u"D"_s);
            EXPECT_EQ(graph.Curve(2)->m_colLabel, u"V1+Time"_s);
            EXPECT_EQ(graph.Curve(2)->m_computedColumn->m_values[4], 6.0);
        }
    }
}

TEST(GraphViewCurves, AnExportedCurveIsHeadedByItsName)
{
    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const struct
    {
        std::vector<const char *> curves;
        const char *file;
        const char *head, *thirdLine;
    } cases[] = {
        {{"S=V1*2"}, "a.csv", "Time,V1,S", "0.5,1,2"},
        {{"S=V1*2"}, "a.tsv", "Time\tV1\tS", "0.5\t1\t2"},
        {{"=V1+Time", "two words=V1-1"}, "b.csv", "Time,V1,V1+Time,two_words", "0.5,1,1.5,0"},
    };
    for (const auto &c : cases) {
        CGraphData data;
        FillData(data);
        CGraphWnd window;
        window.SetGraphDataCopy(data);
        QCommandLineParser parser;
        CGraphviewCurves curves(parser);
        CGraphviewExchange exchange(parser);
        const QString path = dir.filePath(QString::fromLatin1(c.file));
        QStringList arguments{u"graphview"_s, u"--export"_s, path};
        for (const char *curve : c.curves)
            arguments << u"--curve"_s << QString::fromLatin1(curve);
        ASSERT_TRUE(parser.parse(arguments));
        ASSERT_EQ(curves.Apply(window, true), -1) << c.file;
        ASSERT_EQ(exchange.Run(*window.GetGraphData(), u"test"_s), 0) << c.file;
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << c.file;
        const QStringList lines = QString::fromUtf8(file.readAll()).split(QRegularExpression(u"\r?\n"_s));
        ASSERT_GE(lines.size(), 3) << c.file;
        EXPECT_EQ(lines[0].toStdString(), c.head) << c.file;
        EXPECT_EQ(lines[2].toStdString(), c.thirdLine) << c.file;
    }
}
