// graphview's command line, its pictures and its file reading: options
// read without a display, pictures saved whole or not at all, and files read
// under the busy box.
#include "graphviewload.h"
#include "graphviewoptions.h"
#include "graphviewpicture.h"
#include "graphviewwindow.h"

#include "graphdata/file/graphfilesave.h"
#include "graphdata/graphcurve.h"
#include "graphwnd/graphwnd.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QMainWindow>
#include <QPushButton>
#include <QScopeGuard>
#include <QTimer>
#include <QDir>
#include <QFile>
#include <QPainter>
#include <QTemporaryDir>
#include <QThread>
#include <QWidget>

#include <gtest/gtest.h>

#include <ostream>

namespace {

struct OptionCase
{
    QStringList arguments; // after the program's name
    GraphViewCommand command;
    QSize size;            // with Run
    int legend;            // with Run
};

void PrintTo(const OptionCase &c, std::ostream *out)
{
    *out << qPrintable(c.arguments.join(u' '));
}

class GraphViewOptions : public ::testing::TestWithParam<OptionCase> {};

TEST_P(GraphViewOptions, AreReadOrRefusedWithAReason)
{
    const OptionCase &c = GetParam();
    CGraphViewOptions options;
    QString text;
    const GraphViewCommand command =
        ParseGraphViewOptions(QStringList{QStringLiteral("graphview")} + c.arguments, options, text);
    EXPECT_EQ(command, c.command) << qPrintable(c.arguments.join(u' '));
    if (c.command == GraphViewCommand::Run) {
        EXPECT_EQ(options.size, c.size);
        EXPECT_EQ(options.legend, c.legend);
    } else {
        EXPECT_FALSE(text.isEmpty());
    }
    if (c.command == GraphViewCommand::Help) {
        EXPECT_TRUE(text.contains(QStringLiteral("--screenshot")));
        EXPECT_TRUE(text.contains(QStringLiteral("graphview")));
    }
}

INSTANTIATE_TEST_SUITE_P(
    CommandLines, GraphViewOptions,
    ::testing::Values(OptionCase{{QStringLiteral("--help")}, GraphViewCommand::Help, {}, 0},
                      OptionCase{{QStringLiteral("-h")}, GraphViewCommand::Help, {}, 0},
                      OptionCase{{QStringLiteral("--bogus")}, GraphViewCommand::Error, {}, 0},
                      OptionCase{{QStringLiteral("a.txt"), QStringLiteral("b.txt")}, GraphViewCommand::Error, {}, 0},
                      OptionCase{{QStringLiteral("--size"), QStringLiteral("60000x60000")}, GraphViewCommand::Error, {}, 0},
                      OptionCase{{QStringLiteral("--size"), QStringLiteral("99x500")}, GraphViewCommand::Error, {}, 0},
                      OptionCase{{QStringLiteral("--size"), QStringLiteral("800")}, GraphViewCommand::Error, {}, 0},
                      OptionCase{{QStringLiteral("--legend"), QStringLiteral("left")}, GraphViewCommand::Error, {}, 0},
                      OptionCase{{}, GraphViewCommand::Run, {900, 600}, 0},
                      OptionCase{{QStringLiteral("--size"), QStringLiteral("16384x100"), QStringLiteral("--legend"),
                                  QStringLiteral("9")},
                                 GraphViewCommand::Run, {16384, 100}, 4}));

TEST(GraphViewOptions, KeepTheFileAndTheView)
{
    CGraphViewOptions options;
    QString text;
    ASSERT_EQ(ParseGraphViewOptions({QStringLiteral("graphview"), QStringLiteral("f.txt"), QStringLiteral("--logx"),
                                     QStringLiteral("--heading"), QStringLiteral("T"), QStringLiteral("--screenshot"),
                                     QStringLiteral("p.png")},
                                    options, text),
              GraphViewCommand::Run);
    EXPECT_EQ(options.file, QStringLiteral("f.txt"));
    EXPECT_TRUE(options.logX);
    EXPECT_FALSE(options.logY);
    EXPECT_TRUE(options.hasTitle);
    EXPECT_EQ(options.title, QStringLiteral("T"));
    EXPECT_EQ(options.screenshot, QStringLiteral("p.png"));
}

class PaintedWidget : public QWidget
{
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter p(this);
        p.fillRect(rect(), Qt::darkCyan);
        ++paints;
    }
};

TEST(GraphViewPicture, IsSavedWholeOrNotAtAll)
{
    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
    QTemporaryDir dir;
    const QString existing = dir.filePath(QStringLiteral("old.png"));
    {
        QFile f(existing);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("old picture");
    }
    struct Case
    {
        QString path;
        bool saved;
        QByteArray magic; // start of the file written
    };
    const Case cases[] = {
        {dir.filePath(QStringLiteral("new.png")), true, QByteArray("\x89PNG", 4)},
        {existing, true, QByteArray("\x89PNG", 4)},
        {dir.filePath(QStringLiteral("p.jpg")), true, QByteArray("\xFF\xD8", 2)},
        {dir.filePath(QStringLiteral("picture.unknown")), true, QByteArray("\x89PNG", 4)},
        {dir.filePath(QStringLiteral("missing/p.png")), false, {}},
        {dir.path(), false, {}},
    };
    PaintedWidget widget;
    widget.resize(120, 80);
    for (const Case &c : cases) {
        QString error;
        EXPECT_EQ(SaveWidgetPicture(widget, c.path, error), c.saved) << qPrintable(c.path);
        if (c.saved) {
            QFile f(c.path);
            ASSERT_TRUE(f.open(QIODevice::ReadOnly));
            EXPECT_TRUE(f.read(c.magic.size()) == c.magic) << qPrintable(c.path);
        } else {
            EXPECT_TRUE(error.contains(c.path)) << qPrintable(error);
        }
    }
    // Nothing but the pictures is left in the folder.
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files).size(), 4);
}

TEST(GraphViewPicture, IsTakenAfterThePaintIsDone)
{
    PaintedWidget widget;
    widget.resize(100, 100);
    int paintsSeen = -1;
    AfterNextPaint(&widget, [&] { paintsSeen = widget.paints; });
    widget.show();
    for (int i = 0; i < 400 && paintsSeen < 0; ++i) {
        QCoreApplication::processEvents();
        QThread::msleep(5);
    }
    EXPECT_GE(paintsSeen, 1) << "called after a paint, not before or never";
}

QString writeFile(const QTemporaryDir &dir, const char *name, const QByteArray &bytes)
{
    QFile f(dir.filePath(QString::fromLatin1(name)));
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size() ? f.fileName() : QString();
}

// The reading job alone, as the busy box runs it: the data or the reason,
// and nothing once it was asked to stop.
TEST(GraphViewLoad, JobGivesTheDataOrTheReasonOrNothing)
{
    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
    QTemporaryDir dir;
    const QString good = writeFile(dir, "good.txt", "t v\n0 1\n1 nan\n2 3\n");
    const QString graphFile = dir.filePath(QStringLiteral("good.mrd"));
    CGraphData data;
    data.Create(1, 2, 4, 0);
    const double rows[] = {0, 5, 1, 6, 2, 7, 3, 8};
    data.AppendRows(rows, nullptr, 0, 2, 0, 4);
    ASSERT_TRUE(SaveGraphData(graphFile, data));
    const QString broken = writeFile(dir, "broken.mrd", "not a graph data file");
    const struct
    {
        QString path;
        bool stopFirst; // Stop before Run: Cancel pressed at once
        CGraphviewInput::Outcome outcome;
        int rows;
    } cases[] = {
        {good, false, CGraphviewInput::Read, 3},
        {good, true, CGraphviewInput::Cancelled, 0},
        {graphFile, false, CGraphviewInput::Read, 4},
        {graphFile, true, CGraphviewInput::Cancelled, 0},
        {broken, false, CGraphviewInput::Failed, 0},
        {dir.filePath(QStringLiteral("none.txt")), false, CGraphviewInput::Failed, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(qPrintable(c.path));
        CGraphviewReadJob job(c.path);
        if (c.stopFirst)
            job.Stop();
        job.Run();
        const CGraphviewInput &r = job.Result();
        EXPECT_EQ(r.outcome, c.outcome);
        EXPECT_EQ(r.data.RowCount(), c.rows);
        EXPECT_EQ(r.data.ColumnCount() > 0, c.rows > 0) << "no half data";
        EXPECT_EQ(r.message.contains(QFileInfo(c.path).fileName()), c.outcome == CGraphviewInput::Failed);
        EXPECT_EQ(!r.badCells.isEmpty(), c.path == good && c.rows > 0); // the nan cell
    }
}

class RecordedPrompts : public CUserPrompts
{
public:
    PromptAnswer Message(const CMessagePrompt &prompt) override
    {
        messages << prompt.text;
        return PromptAnswer::Ok;
    }
    QStringList messages;
};

// File > Open's reading under the busy box: cancelled half way or failed,
// the graph stays as it was; read, the window shows the new file.
TEST(GraphViewLoad, CancelledOrFailedReadingLeavesTheWindowAsItWas)
{
    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
    QTemporaryDir dir;
    // Large enough to be still at work when Cancel is pressed, as soon as
    // the box shows.
    QByteArray text;
    for (int r = 0; r < 1500000; ++r)
        text += QByteArray::number(r) + '\t' + QByteArray::number(r % 977) + '\n';
    const QString large = writeFile(dir, "large.txt", text);
    const QString small = writeFile(dir, "small.txt", "x y\n1 2\n2 4\n3 8\n4 16\n");
    RecordedPrompts prompts;
    CUserPrompts *before = SetUserPrompts(&prompts);
    const auto restore = qScopeGuard([before] { SetUserPrompts(before); });

    CGraphviewProgram program;
    QString error;
    ASSERT_EQ(program.Parse({QStringLiteral("graphview")}, error), GraphViewCommand::Run);
    program.SetBusyBoxDelay(0);
    program.Start();
    for (int i = 0; i < 2000 && !program.GraphWindow().GetGraphData(); ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    ASSERT_NE(program.GraphWindow().GetGraphData(), nullptr);
    const CGraphCurve &shown = *program.GraphWindow().GetGraphData();
    const CGraphData_Data *shownData = shown.m_data.Data();
    const int shownRows = shown.m_data.RowCount(), shownCurves = shown.CurveCount();
    const QString title = program.Window().windowTitle();

    // Presses Cancel on the busy box once it shows.
    bool pressed = false;
    QTimer presser;
    presser.setInterval(0);
    QObject::connect(&presser, &QTimer::timeout, [&] {
        for (QWidget *w : QApplication::topLevelWidgets()) {
            auto *box = qobject_cast<CProgressWorkingDlg *>(w);
            auto *buttons = box && box->isVisible() ? box->findChild<QDialogButtonBox *>() : nullptr;
            if (buttons && buttons->button(QDialogButtonBox::Cancel)->isEnabled()) {
                buttons->button(QDialogButtonBox::Cancel)->click();
                pressed = true;
                presser.stop();
            }
        }
    });
    presser.start();
    const struct
    {
        QString path;
        CGraphviewInput::Outcome outcome;
    } cases[] = {{large, CGraphviewInput::Cancelled}, {dir.filePath(QStringLiteral("missing.txt")), CGraphviewInput::Failed}};
    for (const auto &c : cases) {
        EXPECT_EQ(program.OpenFile(c.path), c.outcome) << qPrintable(c.path);
        const CGraphCurve *graph = program.GraphWindow().GetGraphData();
        ASSERT_NE(graph, nullptr);
        EXPECT_EQ(graph->m_data.Data(), shownData);
        EXPECT_EQ(graph->m_data.RowCount(), shownRows);
        EXPECT_EQ(graph->CurveCount(), shownCurves);
        EXPECT_EQ(program.Window().windowTitle(), title);
    }
    EXPECT_TRUE(pressed);
    ASSERT_EQ(prompts.messages.size(), 1);
    EXPECT_TRUE(prompts.messages[0].contains(QStringLiteral("missing.txt")));

    EXPECT_EQ(program.OpenFile(small), CGraphviewInput::Read);
    ASSERT_NE(program.GraphWindow().GetGraphData(), nullptr);
    EXPECT_EQ(program.GraphWindow().GetGraphData()->m_data.RowCount(), 4);
    EXPECT_TRUE(program.Window().windowTitle().contains(QStringLiteral("small.txt")));
    program.End();
}

} // namespace
