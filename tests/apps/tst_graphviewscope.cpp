// graphview as a whole with --scope and --live: the program object driven in
// this process, and the program itself run on the offscreen platform.
#include "graphviewwindow.h"

#include "graphdata/graphcurve.h"
#include "graphwnd/graphwnd.h"
#include "support/languagestring.h"

#include <QApplication>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>

namespace {

// A generous bound for work on the loaded test machine; reaching it is a
// failure, never a measurement.
constexpr int kPatienceMs = 60000;

// 201 rows over 0.2 s: a sine of amplitude 3 and a square of 0.5.
QString writeChannels(const QTemporaryDir &dir)
{
    const QString path = dir.filePath(QStringLiteral("channels.txt"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QString();
    file.write("t sine square\n");
    for (int i = 0; i <= 200; ++i) {
        const double t = i * 1e-3;
        file.write(QByteArray::number(t, 'g', 17) + ' ' + QByteArray::number(3 * std::sin(60 * t), 'g', 17) + ' ' +
                   (i % 40 < 20 ? "0.5" : "-0.5") + '\n');
    }
    return path;
}

class GraphviewProgram : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }

    QTemporaryDir m_dir;
};

struct ScopeCase
{
    const char *name;
    bool scopeOption;
};

class GraphviewScopeOption : public GraphviewProgram, public ::testing::WithParamInterface<ScopeCase>
{
};

TEST_P(GraphviewScopeOption, ShowsTheFileInTheFormItAsksFor)
{
    const QString file = writeChannels(m_dir);
    ASSERT_FALSE(file.isEmpty());
    QStringList arguments{QStringLiteral("graphview"), file, QStringLiteral("--size"), QStringLiteral("500x400")};
    if (GetParam().scopeOption)
        arguments << QStringLiteral("--scope");
    CGraphviewProgram program;
    QString text;
    ASSERT_EQ(program.Parse(arguments, text), GraphViewCommand::Run) << qPrintable(text);
    program.Start();
    // the file is read on a thread of its own, then shown
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            const CGraphCurve *g = program.GraphWindow().GetGraphData();
            return g && g->CurveCount() == 2;
        },
        kPatienceMs));
    CGraphCurve &g = *program.GraphWindow().GetGraphData();
    ASSERT_EQ(g.m_data.IsScope(), GetParam().scopeOption);
    EXPECT_TRUE(program.Window().windowTitle().contains(QStringLiteral("channels.txt")));
    EXPECT_EQ(g.m_data.RowCount(), 201);
    if (!GetParam().scopeOption)
        return;
    // 10 divisions hold the 0.2 s; 4 divisions hold each channel's peak
    const CScopeData_Data &scope = *g.m_data->AsScope();
    EXPECT_GE(scope.m_secsPerDiv * 10, 0.2 * (1 - 1e-12));
    EXPECT_LT(scope.m_secsPerDiv * 10, 0.2 * 5);
    const double peaks[2] = {3, 0.5};
    for (int c = 0; c < 2; ++c) {
        EXPECT_GE(g.Curve(c)->m_scopeScale * 4, peaks[c] * 0.999) << c;
        EXPECT_LT(g.Curve(c)->m_scopeScale * 4, peaks[c] * 5) << c;
    }
    EXPECT_EQ(scope.m_rollMode, 0);
}

INSTANTIATE_TEST_SUITE_P(Forms, GraphviewScopeOption,
                         ::testing::Values(ScopeCase{"Scope", true}, ScopeCase{"Plain", false}),
                         [](const auto &info) { return std::string(info.param.name); });

// --live fills a scope data set in roll mode from the writer thread while
// the window redraws; closing the window ends the event loop and the writer.
TEST_F(GraphviewProgram, LiveAppendsRowsAndEndsWhenTheWindowCloses)
{
    CGraphviewProgram program;
    QString text;
    ASSERT_EQ(program.Parse({QStringLiteral("graphview"), QStringLiteral("--live"), QStringLiteral("--size"),
                             QStringLiteral("500x400")},
                            text),
              GraphViewCommand::Run);
    program.Start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return program.Scope().LiveRunning(); }, kPatienceMs));
    const std::int64_t first = program.Scope().LiveRows();
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return program.Scope().LiveRows() > first + 2000 && program.Scope().LiveFrames() >= 3; },
        kPatienceMs));
    CGraphCurve &g = *program.GraphWindow().GetGraphData();
    ASSERT_TRUE(g.m_data.IsScope());
    EXPECT_EQ(g.m_data->AsScope()->m_rollMode, 1);
    EXPECT_EQ(g.CurveCount(), 4);
    EXPECT_GT(g.m_data.RowCount(), 0);
    const CGraphData live = g.m_data; // the writer's data set

    QApplication::setQuitOnLastWindowClosed(true);
    QTimer::singleShot(0, &program.Window(), [&] { program.Window().close(); });
    // should the close not end the loop, this ends it with a failing code
    QTimer guard;
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, [] { QApplication::exit(99); });
    guard.start(kPatienceMs);
    EXPECT_EQ(QApplication::exec(), 0);
    program.Stop();
    EXPECT_FALSE(program.Scope().LiveRunning());
    // a writer still running would go on appending
    const int rows = live.RowCount();
    QTest::qWait(50);
    EXPECT_EQ(live.RowCount(), rows);
}

// The program itself, saving its window with --screenshot and so ending on
// its own: the exit code, and the picture of the window it showed.
struct RunCase
{
    const char *name;
    QStringList arguments; // FILE stands for the channel file
    double darkShare;      // at least this share of the picture is dark
    double lightShare;     // at least this share is light
};

class GraphviewRuns : public GraphviewProgram, public ::testing::WithParamInterface<RunCase>
{
};

TEST_P(GraphviewRuns, EndWithThePictureOfTheirWindow)
{
    const RunCase &c = GetParam();
    const QString file = writeChannels(m_dir);
    const QString picture = m_dir.filePath(QStringLiteral("window.png"));
    QStringList arguments;
    for (const QString &a : c.arguments)
        arguments << (a == QStringLiteral("FILE") ? file : a);
    arguments << QStringLiteral("--size") << QStringLiteral("500x400") << QStringLiteral("--screenshot") << picture;
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(GRAPHVIEW_PROGRAM), arguments);
    ASSERT_TRUE(process.waitForFinished(kPatienceMs));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
    const QImage image(picture);
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(500, 400));
    int dark = 0, light = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const int grey = qGray(image.pixel(x, y));
            dark += grey < 80;
            light += grey > 200;
        }
    const double all = double(image.width()) * image.height();
    EXPECT_GE(dark / all, c.darkShare);
    EXPECT_GE(light / all, c.lightShare);
}

INSTANTIATE_TEST_SUITE_P(
    CommandLines, GraphviewRuns,
    ::testing::Values(RunCase{"ScopeFile", {QStringLiteral("FILE"), QStringLiteral("--scope")}, 0, 0.5},
                      // the live screen is dark, save the status line
                      RunCase{"Live", {QStringLiteral("--live")}, 0.5, 0}),
    [](const auto &info) { return std::string(info.param.name); });

} // namespace
