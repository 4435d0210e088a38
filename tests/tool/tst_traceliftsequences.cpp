// Sequences of user actions on the digitiser dialog, each row one road a
// user may take, with the files it must leave on disk and the messages it
// must show.  After every action the curve list must keep its invariant, and
// no road may leave Save failing: every row ends with a fresh trace that
// must save.

#include "traceliftfixture.h"

#include <QDir>
#include <QFile>
#include <QPushButton>
#include <functional>
#include <map>
#include <vector>

namespace {

double rising(double x) { return 10 + 8 * x; }

QList<double> sampleXs()
{
    return {0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5, 8.5, 9.5};
}

// A curve file as the program writes it: a header and n points.
QByteArray curveFile(int n)
{
    QByteArray out = "U I\r\n";
    for (int i = 0; i < n; ++i)
        out += QByteArray::number(i + 1) + ' ' + QByteArray::number(2 * i + 0.5) + "\r\n";
    return out;
}

// The number of "x y" lines of a file; -1 when it is missing.
int pointLines(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return -1;
    int n = 0;
    for (const QByteArray &line : f.readAll().split('\n')) {
        bool ok = false;
        line.trimmed().split(' ').value(0).toDouble(&ok);
        n += ok ? 1 : 0;
    }
    return n;
}

enum class Act {
    WriteFile,   // arg: name, n: points of a program-written file
    Trace,       // n points along the picture's curve, then Next
    Save,        // arg: the names the file dialogs get, "|"-separated
    Load,        // arg: the name
    AddCurve,
    StartOver,   // answered Yes
    Next,        // a question on the way is answered Yes
    Enter,       // n: the field
    TypePoints,  // arg: the text of the points field
    SetTj,       // a caller's change: the curve whose TJ is "25" gets arg
};

struct Step {
    Act act;
    const char *arg = "";
    int n = 0;
};

struct FileOnDisk {
    const char *name;
    int points;
};

struct Road {
    const char *name;
    std::vector<Step> steps;
    std::vector<int> messages;      // shown, questions aside, in order
    std::vector<FileOnDisk> files;  // every file in the folder at the end
    const char *sameA = nullptr;    // two files that must be byte for byte equal
    const char *sameB = nullptr;
};

void PrintTo(const Road &road, std::ostream *os)
{
    *os << road.name;
}

const Road roads[] = {
    {"trace, save", {{Act::Trace, "", 6}, {Act::Save, "a.txt"}}, {}, {{"a.txt", 6}}},
    {"load, save",
     {{Act::WriteFile, "in.txt", 5}, {Act::Load, "in.txt"}, {Act::Save, "out.txt"}},
     {},
     {{"in.txt", 5}, {"out.txt", 5}},
     "in.txt",
     "out.txt"},
    {"load, save over the loaded file, load again",
     {{Act::WriteFile, "in.txt", 5}, {Act::Load, "in.txt"}, {Act::Save, "in.txt"}, {Act::Load, "in.txt"},
      {Act::Save, "again.txt"}},
     {},
     {{"in.txt", 5}, {"again.txt", 5}},
     "in.txt",
     "again.txt"},
    {"a shorter curve over a longer file, then loaded",
     {{Act::WriteFile, "long.txt", 200}, {Act::Trace, "", 5}, {Act::Save, "long.txt"}, {Act::Load, "long.txt"},
      {Act::Save, "copy.txt"}},
     {},
     {{"long.txt", 5}, {"copy.txt", 5}},
     "long.txt",
     "copy.txt"},
    // The refusal shows the second curve at 25, the loaded one, and Start
    // over empties the curve shown.
    {"load, add curve, trace, save: two curves at 25, mended by Start over",
     {{Act::WriteFile, "in.txt", 5}, {Act::Load, "in.txt"}, {Act::AddCurve}, {Act::Trace, "", 4},
      {Act::Save, "x.txt|y.txt"}, {Act::Next}, {Act::StartOver}, {Act::Save, "out.txt"}},
     {27534},
     {{"in.txt", 5}, {"out.txt", 4}}},
    {"two curves at two temperatures",
     {{Act::Trace, "", 5}, {Act::AddCurve}, {Act::SetTj, "100"}, {Act::Trace, "", 5},
      {Act::Save, "at25.txt|at100.txt"}},
     {},
     {{"at25.txt", 5}, {"at100.txt", 5}}},
    // The refusal shows the curve at 100, which differs from the first one;
    // Start over drops it.
    {"two curves over different X ranges, mended by Start over",
     {{Act::Trace, "", 3}, {Act::AddCurve}, {Act::SetTj, "100"}, {Act::Trace, "", 7},
      {Act::Save, "a.txt|b.txt"}, {Act::Next}, {Act::StartOver}, {Act::Save, "a.txt|b.txt"}},
     {27536},
     {{"a.txt", 7}}},
    {"save while tracing is refused, and the trace goes on",
     {{Act::Trace, "", 0}, {Act::Save, "early.txt"}, {Act::Trace, "", 4}, {Act::Save, "late.txt"}},
     {27592},
     {{"late.txt", 4}}},
    {"Enter in each axis field while values are awaited, then trace and save",
     {{Act::Trace, "", -14}, {Act::Enter, "", IdXAtFirst}, {Act::Enter, "", IdXAtSecond},
      {Act::Enter, "", IdYAtSecond}, {Act::Enter, "", IdYAtFirst}, {Act::Trace, "", 4}, {Act::Save, "e.txt"}},
     // The first Enter starts the trace; the others find no point yet.
     {27533, 27533, 27533},
     {{"e.txt", 4}}},
    {"points emptied by hand: the curve is dropped, not refused",
     {{Act::Trace, "", 3}, {Act::AddCurve}, {Act::Trace, "", 3}, {Act::TypePoints, ""},
      {Act::Save, "only.txt"}},
     {},
     {{"only.txt", 3}}},
    {"a refused save keeps the loaded points in the field",
     {{Act::Trace, "", 3}, {Act::AddCurve}, {Act::WriteFile, "in.txt", 5}, {Act::Load, "in.txt"},
      {Act::Save, "a.txt|b.txt"}, {Act::Save, "c.txt|d.txt"}},
     {27534, 27534},
     {{"in.txt", 5}}},
};

class TraceliftRoads : public TraceliftTest, public ::testing::WithParamInterface<Road>
{
protected:
    QString path(const char *name) const { return files.filePath(QString::fromLatin1(name)); }

    QString invariant() { return dialog->Records().CheckInvariant(); }

    // Yes to any question on the way (a new capture over traced points).
    void yesToQuestions() { prompts.answers = {PromptAnswer::Yes, PromptAnswer::Yes}; }

    // n > 0: a whole curve of n points; 0: up to tracing, with no point;
    // -14: up to the values awaited.  A further curve starts at the values.
    void trace(int n)
    {
        yesToQuestions();
        const CaptureMode target = n == -14 ? ModeCornersSet : ModeTrace;
        if (mode() == ModeCornersSet || mode() == ModeValuesAwaited) {
            typeValues(g);
            if (target == ModeTrace)
                next();
        } else if (mode() != ModeTrace) {
            if (mode() >= ModeWaitPicture) {
                dialog->OnStartOver();
                yesToQuestions();
            }
            ASSERT_LT(mode(), ModeWaitPicture);
            reach(target, g);
        }
        for (int i = 0; i < n; ++i)
            click(g.vertices[i]);
        if (n > 0)
            next();
        prompts.answers.clear();
    }

    void run(const Step &s)
    {
        switch (s.act) {
        case Act::WriteFile: {
            QFile f(path(s.arg));
            ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
            f.write(curveFile(s.n));
            break;
        }
        case Act::Trace:
            trace(s.n);
            break;
        case Act::Save: {
            prompts.fileNames.clear();
            for (const QString &name : QString::fromLatin1(s.arg).split(u'|'))
                prompts.fileNames << files.filePath(name);
            control<QPushButton>(CTraceliftToolDlg::IdOk)->click();
            prompts.fileNames.clear();
            break;
        }
        case Act::Load:
            prompts.fileNames = {path(s.arg)};
            control<QPushButton>(IdLoad)->click();
            break;
        case Act::AddCurve:
            dialog->OnAddCurve();
            break;
        case Act::StartOver:
            prompts.answers = {PromptAnswer::Yes};
            dialog->OnStartOver();
            break;
        case Act::Next:
            yesToQuestions();
            next();
            break;
        case Act::Enter:
            QTest::keyClick(edit(s.n), Qt::Key_Return);
            break;
        case Act::TypePoints:
            edit(IdPoints)->setText(QString::fromLatin1(s.arg));
            break;
        case Act::SetTj: {
            CCurveRecords &r = dialog->Records();
            for (int i = 0; i < r.Size(); ++i)
                if (r.At(i)->ConditionValue(QStringLiteral("TJ")) == QLatin1String("25"))
                    CCurveRecords::SetTemperature(r.At(i), QString::fromLatin1(s.arg));
            break;
        }
        }
        prompts.answers.clear();
    }

    std::vector<int> shownMessages() const
    {
        std::vector<int> ids;
        for (const CMessagePrompt &m : prompts.messages) {
            if (m.icon == PromptIcon::Question)
                continue;
            int id = 0;
            for (int candidate : {27526, 27527, 27528, 27533, 27534, 27535, 27536, 27592, 27593, 27596})
                if (m.text == message(candidate, QStringLiteral("25"))
                    || m.text.startsWith(LanguageString(candidate).section(u'%', 0, 0)))
                    id = candidate;
            ids.push_back(id ? id : -1);
        }
        return ids;
    }

    const CGraphPicture g = MakeGraphPicture(false, rising, sampleXs());
};

} // namespace

TEST_P(TraceliftRoads, LeavesTheFilesAndMessagesItShould)
{
    const Road &road = GetParam();
    for (std::size_t i = 0; i < road.steps.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "step " << i);
        run(road.steps[i]);
        ASSERT_EQ(invariant(), QString());
    }
    EXPECT_EQ(shownMessages(), road.messages) << qPrintable(prompts.MessageTexts().join(u'|'));

    std::map<QString, int> expected;
    for (const FileOnDisk &f : road.files)
        expected[QString::fromLatin1(f.name)] = f.points;
    std::map<QString, int> found;
    for (const QString &name : QDir(files.path()).entryList(QDir::Files | QDir::Hidden))
        found[name] = pointLines(files.filePath(name));
    EXPECT_EQ(found, expected);
    if (road.sameA) {
        QFile a(path(road.sameA)), b(path(road.sameB));
        ASSERT_TRUE(a.open(QIODevice::ReadOnly) && b.open(QIODevice::ReadOnly));
        EXPECT_EQ(a.readAll(), b.readAll());
    }

    // Whatever came before, Start over on the curve shown lets Save through.
    prompts.messages.clear();
    run({Act::Next});
    run({Act::StartOver});
    run({Act::Save, "rest1.txt|rest2.txt"});
    EXPECT_TRUE(shownMessages().empty()) << qPrintable(prompts.MessageTexts().join(u'|'));
    ASSERT_EQ(invariant(), QString());
    // And when no other curve is left with points, a fresh trace saves as
    // well.  (Beside another curve it would stand at 25 degrees as that one
    // does, and be refused.)
    bool othersWithPoints = false;
    for (int i = 0; i < dialog->Records().Size(); ++i)
        othersWithPoints = othersWithPoints || dialog->Records().At(i)->GetPointCount() > 0;
    if (!othersWithPoints) {
        trace(5);
        run({Act::Save, "final.txt"});
        EXPECT_TRUE(shownMessages().empty()) << qPrintable(prompts.MessageTexts().join(u'|'));
        EXPECT_EQ(pointLines(path("final.txt")), 5);
    }
}

INSTANTIATE_TEST_SUITE_P(Digitiser, TraceliftRoads, ::testing::ValuesIn(roads));

// Enter in every field, in every mode of a capture: it never saves, it moves
// on as Next does, and the capture can go on to a saved file.
TEST_F(TraceliftTest, EnterDuringACaptureActsAsNext)
{
    const CGraphPicture g = MakeGraphPicture(false, rising, sampleXs());
    const struct {
        CaptureMode from;
        CaptureMode to;
        int message;
    } cases[] = {
        {ModeWaitPicture, ModeWaitPicture, 27526}, // no picture on the clipboard
        {ModePicturePlaced, ModeCorner1, 0},
        {ModeCorner1, ModeCorner1, 27527},
        {ModeCorner2, ModeCorner1, 27527},
        {ModeCornersSet, ModeTrace, 0},
        {ModeValuesAwaited, ModeValuesAwaited, 27528},
        {ModeTrace, ModeTrace, 27533}, // no point yet
    };
    for (const auto &c : cases) {
        for (int field : {IdXAtFirst, IdXAtSecond, IdYAtSecond, IdYAtFirst, IdPoints}) {
            SCOPED_TRACE(testing::Message() << "mode " << int(c.from) << ", field " << field);
            dialog = std::make_unique<CTraceliftToolDlg>();
            dialog->show();
            QGuiApplication::clipboard()->clear();
            reach(c.from, g);
            ASSERT_EQ(mode(), c.from);
            prompts.messages.clear();
            QTest::keyClick(edit(field), Qt::Key_Return);
            EXPECT_EQ(mode(), c.to);
            EXPECT_TRUE(prompts.filePrompts.isEmpty());
            EXPECT_EQ(prompts.MessageTexts(), c.message ? QStringList{message(c.message)} : QStringList());
            EXPECT_EQ(dialog->Records().CheckInvariant(), QString());
        }
    }
}

// Outside a capture Enter is the Save button's, as ever.
TEST_F(TraceliftTest, EnterAfterATraceSaves)
{
    const CGraphPicture g = MakeGraphPicture(false, rising, sampleXs());
    reach(ModeTrace, g);
    for (int i = 0; i < 4; ++i)
        click(g.vertices[i]);
    next();
    ASSERT_EQ(mode(), ModePlotted);
    const QString path = files.filePath(QStringLiteral("enter.txt"));
    prompts.fileNames = {path};
    QTest::keyClick(edit(IdXAtFirst), Qt::Key_Return);
    EXPECT_TRUE(prompts.messages.isEmpty()) << qPrintable(prompts.MessageTexts().join(u'|'));
    EXPECT_EQ(pointLines(path), 4);
}

// Back, Start over, Enter and Save in every mode of a capture: none of them
// leaves the dialog unable to trace and save a curve afterwards.
TEST_F(TraceliftTest, NoActionDuringACaptureLeavesSaveFailing)
{
    const CGraphPicture g = MakeGraphPicture(false, rising, sampleXs());
    enum class Action { Back, StartOver, Enter, Save };
    const CaptureMode modes[] = {ModeWaitPicture, ModePicturePlaced, ModeCorner1, ModeCorner2,
                                 ModeCornersSet, ModeValuesAwaited, ModeTrace};
    int run = 0;
    for (CaptureMode from : modes) {
        for (Action action : {Action::Back, Action::StartOver, Action::Enter, Action::Save}) {
            SCOPED_TRACE(testing::Message() << "mode " << int(from) << ", action " << int(action));
            dialog = std::make_unique<CTraceliftToolDlg>();
            dialog->show();
            QGuiApplication::clipboard()->clear();
            reach(from, g);
            if (from == ModeTrace)
                click(g.vertices[0]);
            prompts.filePrompts.clear();
            prompts.answers = {PromptAnswer::Yes};
            switch (action) {
            case Action::Back: back(); break;
            case Action::StartOver: dialog->OnStartOver(); break;
            case Action::Enter: QTest::keyClick(edit(IdYAtFirst), Qt::Key_Return); break;
            case Action::Save: control<QPushButton>(CTraceliftToolDlg::IdOk)->click(); break;
            }
            EXPECT_TRUE(prompts.filePrompts.isEmpty());
            ASSERT_EQ(dialog->Records().CheckInvariant(), QString());

            // The way on: Start over what is under way, and trace afresh.
            prompts.answers = {PromptAnswer::Yes};
            if (mode() >= ModeWaitPicture)
                dialog->OnStartOver();
            ASSERT_LT(mode(), ModeWaitPicture);
            prompts.answers = {PromptAnswer::Yes};
            reach(ModeTrace, g);
            for (int i = 0; i < 4; ++i)
                click(g.vertices[i]);
            next();
            ASSERT_EQ(mode(), ModePlotted);
            prompts.messages.clear();
            const QString path = files.filePath(QStringLiteral("after%1.txt").arg(run++));
            prompts.fileNames = {path};
            control<QPushButton>(CTraceliftToolDlg::IdOk)->click();
            EXPECT_TRUE(prompts.messages.isEmpty()) << qPrintable(prompts.MessageTexts().join(u'|'));
            EXPECT_EQ(pointLines(path), 4);
        }
    }
}
