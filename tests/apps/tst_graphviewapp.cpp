// graphview's command line and its pictures: options read without a
// display, and pictures saved whole or not at all.
#include "graphviewload.h"
#include "graphviewoptions.h"
#include "graphviewpicture.h"

#include "support/languagestring.h"

#include <QCoreApplication>
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

// The file is read on its own thread; the window's thread hears of the end
// through the event loop, with the data or the reason.
TEST(GraphViewLoad, TellsTheEndOnTheWindowsThread)
{
    QTemporaryDir dir;
    const QString good = dir.filePath(QStringLiteral("good.txt"));
    {
        QFile f(good);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("t v\n0 1\n1 nan\n2 3\n");
    }
    struct Case
    {
        QString path;
        TextImport result;
        int rows;
    };
    const Case cases[] = {
        {good, TextImport::Read, 3},
        {dir.filePath(QStringLiteral("none.txt")), TextImport::OpenFailed, 0},
    };
    for (const Case &c : cases) {
        bool finished = false;
        bool onThisThread = false;
        CDataFileLoader loader(c.path, [&] {
            finished = true;
            onThisThread = QThread::currentThread() == QCoreApplication::instance()->thread();
        });
        loader.Start();
        for (int i = 0; i < 1000 && !finished; ++i) {
            QCoreApplication::processEvents();
            QThread::msleep(5);
        }
        ASSERT_TRUE(finished) << qPrintable(c.path);
        EXPECT_TRUE(onThisThread);
        EXPECT_FALSE(loader.Running());
        EXPECT_EQ(loader.Result(), c.result);
        if (c.result == TextImport::Read) {
            EXPECT_EQ(loader.Data().RowCount(), c.rows);
            EXPECT_EQ(loader.Report().invalidCells, 1);
            EXPECT_EQ(loader.Progress(), 1000);
        }
    }
}

} // namespace
