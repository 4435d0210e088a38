#include "../../common/scriptedprompts.h"
#include "support/controls/exeditctrl.h"
#include "support/controls/inputboxdlg.h"
#include "support/controls/messageboxcheck.h"
#include "support/controls/progressworkingdlg.h"
#include "support/controls/scrollparentdlg.h"
#include "support/languagestring.h"
#include "support/registry.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

namespace {

// Runs `act` on the first dialog of type T that shows, once the modal loop
// that is about to start runs.  A modal dialog of another kind is a failure,
// and is closed so that the test does not wait for ever.
template <typename T, typename F> void whenShown(F act)
{
    auto *timer = new QTimer;
    timer->setInterval(0);
    QObject::connect(timer, &QTimer::timeout, [timer, act] {
        for (QWidget *w : QApplication::topLevelWidgets()) {
            if (auto *dialog = qobject_cast<T *>(w); dialog && dialog->isVisible()) {
                timer->stop();
                timer->deleteLater();
                act(dialog);
                return;
            }
        }
        if (auto *other = qobject_cast<QDialog *>(QApplication::activeModalWidget()); other && !qobject_cast<T *>(other)) {
            ADD_FAILURE() << "another dialog came up: " << other->metaObject()->className();
            other->reject();
        }
    });
    timer->start();
}

class TempSettings : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }
    void SetUp() override
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_dir.path());
    }
    QTemporaryDir m_dir;
};

// Ticks or leaves the check box of a message, and answers it.
class TickingPrompts : public CScriptedPrompts
{
public:
    bool tick = false;
    PromptAnswer Message(const CMessagePrompt &prompt) override
    {
        if (prompt.checkBoxChecked)
            *prompt.checkBoxChecked = tick;
        return CScriptedPrompts::Message(prompt);
    }
};

struct CheckCase {
    unsigned stored; // the value before
    bool tick;       // the person ticks the box
    bool shown;
    unsigned after;
};

class MessageCheck : public TempSettings, public ::testing::WithParamInterface<CheckCase> {};

const QString kKey = QStringLiteral("STANDARD OPTIONS");
const QString kValue = QStringLiteral("HideInvalidPointWarning");

} // namespace

TEST_P(MessageCheck, TheTickIsKeptAndSilencesTheMessage)
{
    const CheckCase c = GetParam();
    if (c.stored)
        RegistrySetDword(kKey, kValue, c.stored);
    TickingPrompts prompts;
    prompts.tick = c.tick;
    prompts.answers = {PromptAnswer::Yes};
    const PromptAnswer answer =
        MessageBoxCheck(nullptr, QStringLiteral("Points left out"), kKey, kValue, PromptButtons::YesNo);
    EXPECT_EQ(prompts.messages.size(), c.shown ? 1 : 0);
    EXPECT_EQ(answer, c.shown ? PromptAnswer::Yes : PromptAnswer::Ok);
    EXPECT_EQ(RegistryGetDword(kKey, kValue, 0), c.after);
    if (c.shown) {
        EXPECT_FALSE(prompts.messages[0].checkBoxText.isEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(States, MessageCheck,
                         ::testing::Values(CheckCase{0, false, true, 0}, CheckCase{0, true, true, 1},
                                           CheckCase{1, false, false, 1}, CheckCase{7, true, false, 7}));

TEST_F(TempSettings, MessageBoxCheckDialogStoresWhatIsTicked)
{
    // The real box, through the standard prompts: tick 2021, press Ok; the
    // second call does not show it again.
    for (const bool tick : {false, true}) {
        RegistryDeleteValue(kKey, kValue);
        int shown = 0;
        whenShown<CMessageBoxCheck>([&](CMessageBoxCheck *box) {
            ++shown;
            EXPECT_EQ(box->findChild<QLabel *>(QStringLiteral("2962"))->text(), u"Careful");
            auto *check = box->findChild<QCheckBox *>(QStringLiteral("2021"));
            ASSERT_NE(check, nullptr);
            check->setChecked(tick);
            box->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
        });
        EXPECT_EQ(MessageBoxCheck(nullptr, QStringLiteral("Careful"), kKey, kValue), PromptAnswer::Ok);
        EXPECT_EQ(shown, 1);
        EXPECT_EQ(RegistryGetDword(kKey, kValue, 0), tick ? 1u : 0u);
    }
    // Already ticked: no box comes (one would wait here for ever).
    EXPECT_EQ(MessageBoxCheck(nullptr, QStringLiteral("Careful"), kKey, kValue), PromptAnswer::Ok);
}

TEST(MessageBoxCheckDialog, TitleButtonsAndClosing)
{
    const struct {
        QString title;
        PromptButtons buttons;
        QDialogButtonBox::StandardButton press; // NoButton: Escape
        PromptAnswer answer;
    } cases[] = {
        {QStringLiteral("Warning"), PromptButtons::OkCancel, QDialogButtonBox::Cancel, PromptAnswer::Cancel},
        {QString(), PromptButtons::YesNo, QDialogButtonBox::No, PromptAnswer::No},
        {QString(), PromptButtons::YesNo, QDialogButtonBox::NoButton, PromptAnswer::No},
        {QString(), PromptButtons::YesNoCancel, QDialogButtonBox::NoButton, PromptAnswer::Cancel},
        {QString(), PromptButtons::YesNoCancel, QDialogButtonBox::Yes, PromptAnswer::Yes},
    };
    QApplication::setApplicationDisplayName(QStringLiteral("Graph test"));
    for (const auto &c : cases) {
        CMessageBoxCheck box(nullptr, QStringLiteral("text"), c.title, QString(), c.buttons);
        EXPECT_EQ(box.windowTitle(), c.title.isEmpty() ? QStringLiteral("Graph test") : c.title);
        whenShown<CMessageBoxCheck>([&](CMessageBoxCheck *shown) {
            if (c.press == QDialogButtonBox::NoButton)
                QTest::keyClick(shown, Qt::Key_Escape);
            else
                shown->findChild<QDialogButtonBox *>()->button(c.press)->click();
        });
        box.exec();
        EXPECT_EQ(box.Answer(), c.answer);
    }
}

TEST(InputBox, AcceptAndCancel)
{
    QApplication::setApplicationDisplayName(QStringLiteral("Graph test"));
    const struct {
        QString prompt, title, start, typed;
        bool accept;
        std::optional<QString> result;
    } cases[] = {
        {QStringLiteral("Label:"), QStringLiteral("Text"), QString(), QStringLiteral("peak"), true, QStringLiteral("peak")},
        {QStringLiteral("Label:"), QString(), QStringLiteral("old"), QStringLiteral("new"), false, std::nullopt},
        // Accepted with nothing typed is an empty text, not a cancel.
        {QString(), QString(), QString(), QString(), true, QString()},
        {QString(), QString(), QStringLiteral("kept"), QString(), true, QStringLiteral("kept")},
    };
    for (const auto &c : cases) {
        whenShown<CInputBoxDlg>([&](CInputBoxDlg *box) {
            EXPECT_EQ(box->windowTitle(), c.title.isEmpty() ? QStringLiteral("Graph test") : c.title);
            EXPECT_EQ(box->findChild<QLabel *>(QStringLiteral("1257"))->isVisible(), !c.prompt.isEmpty());
            auto *edit = box->findChild<CExEditCtrl *>(QStringLiteral("1173"));
            ASSERT_NE(edit, nullptr);
            EXPECT_EQ(edit->text(), c.start);
            if (!c.typed.isEmpty()) {
                edit->selectAll();
                QTest::keyClicks(edit, c.typed);
            }
            QTest::keyClick(edit, c.accept ? Qt::Key_Return : Qt::Key_Escape);
        });
        CInputPrompt prompt;
        prompt.prompt = c.prompt;
        prompt.title = c.title;
        prompt.value = c.start;
        const std::optional<QString> result = AskText(prompt);
        ASSERT_EQ(result.has_value(), c.result.has_value()) << qPrintable(c.typed);
        if (result) {
            EXPECT_EQ(*result, *c.result);
        }
    }
}

namespace {

// Works until it is stopped.
class EndlessJob : public CWorkingJob
{
public:
    void Run() override
    {
        while (!m_stop.load())
            std::this_thread::yield();
        ran = true;
    }
    void Stop() override { m_stop.store(true); }
    std::atomic<bool> m_stop{false};
    bool ran = false;
};

} // namespace

TEST(ProgressBox, CancelStopsTheJobAndTheBoxEnds)
{
    // Cancel by its button, by Escape and by closing the window.
    for (int how = 0; how < 3; ++how) {
        CProgressWorkingDlg box(nullptr, QStringLiteral("Busy"), QStringLiteral("Counting"));
        box.SetShowDelay(0);
        whenShown<CProgressWorkingDlg>([how](CProgressWorkingDlg *shown) {
            if (how == 0)
                shown->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel)->click();
            else if (how == 1)
                QTest::keyClick(shown, Qt::Key_Escape);
            else
                shown->close();
        });
        EndlessJob job;
        EXPECT_EQ(box.Run(job), CProgressWorkingDlg::Stopped) << how;
        EXPECT_TRUE(job.ran);
        EXPECT_TRUE(box.WasCancelled());
        EXPECT_FALSE(box.isVisible());
    }
}

TEST(ProgressBox, KindsAndResults)
{
    const struct {
        int kind;
        bool throws;
        int result;
        bool runs;
    } cases[] = {
        {CProgressWorkingDlg::WorkThread, false, CProgressWorkingDlg::Done, true},
        {CProgressWorkingDlg::WorkThreadBusy, false, CProgressWorkingDlg::Done, true},
        {CProgressWorkingDlg::WorkNone, false, CProgressWorkingDlg::Done, false},
        {CProgressWorkingDlg::WorkThread, true, 0, true},
    };
    for (const auto &c : cases) {
        CProgressWorkingDlg box(nullptr);
        bool ran = false;
        CWorkingFunctionJob job([&](const std::atomic<bool> &, std::atomic<double> &progress) {
            ran = true;
            progress = 1;
            if (c.throws)
                throw std::runtime_error("disk gone");
        });
        if (c.throws) {
            EXPECT_THROW(box.Run(job, c.kind), std::runtime_error);
        } else {
            EXPECT_EQ(box.Run(job, c.kind), c.result);
        }
        EXPECT_EQ(ran, c.runs) << c.kind;
        EXPECT_FALSE(box.WasCancelled());
        EXPECT_FALSE(box.isVisible());
    }
}

TEST(ProgressBox, WorkThatCannotStopIsWaitedFor)
{
    CProgressWorkingDlg box(nullptr);
    box.SetShowDelay(0);
    box.SetCancelable(false);
    std::atomic<bool> release{false};
    CWorkingFunctionJob job([&](const std::atomic<bool> &, std::atomic<double> &) {
        while (!release.load())
            std::this_thread::yield();
    });
    whenShown<CProgressWorkingDlg>([&](CProgressWorkingDlg *shown) {
        QTest::keyClick(shown, Qt::Key_Escape);
        shown->close();
        shown->Cancel();
        EXPECT_TRUE(shown->isVisible());
        release = true;
    });
    EXPECT_EQ(box.Run(job), CProgressWorkingDlg::Done);
    EXPECT_FALSE(job.Stopped());
    EXPECT_FALSE(box.WasCancelled());
}

TEST(ProgressBox, ParentClosedWhileWorkingStopsTheJob)
{
    auto *owner = new QWidget;
    auto *box = new CProgressWorkingDlg(owner);
    QTimer::singleShot(0, [owner] { delete owner; });
    EndlessJob job;
    EXPECT_EQ(box->Run(job), CProgressWorkingDlg::Stopped);
    EXPECT_TRUE(job.ran);
}

TEST(ProgressBox, StepsOnTheCallersThread)
{
    CProgressWorkingDlg box(nullptr, QString(), QStringLiteral("Spectrum of u"));
    box.SetShowDelay(0);
    box.Begin();
    EXPECT_TRUE(box.isVisible());
    int steps = 0;
    while (box.Step(steps / 100.0)) {
        if (++steps == 10)
            box.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel)->click();
        ASSERT_LT(steps, 100);
    }
    EXPECT_EQ(steps, 10);
    EXPECT_FALSE(box.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel)->isEnabled());
    box.End();
    EXPECT_FALSE(box.isVisible());
    // A new run starts without the old Cancel.
    box.Begin();
    EXPECT_TRUE(box.Step(0.5));
    box.End();
}

TEST(ProgressBox, ElapsedTimeText)
{
    const struct {
        qint64 seconds;
        const char *text;
    } cases[] = {{0, "0:00"}, {9, "0:09"}, {59, "0:59"}, {60, "1:00"}, {61, "1:01"}, {3599, "59:59"},
                 {3600, "1:00:00"}, {3725, "1:02:05"}, {36000 + 59, "10:00:59"}, {-5, "0:00"}};
    for (const auto &c : cases)
        EXPECT_EQ(CProgressWorkingDlg::FormatElapsed(c.seconds), QLatin1String(c.text)) << c.seconds;
}

TEST(ScrollParent, PagesHandThemselvesToTheirParent)
{
    CScrollParent parent;
    parent.resize(200, 100);
    auto *first = new CScrollParentDlg(&parent);
    first->setMinimumHeight(80);
    auto *second = new CScrollParentDlg(&parent);
    second->setMinimumHeight(80);
    parent.TakePage(first); // already there: stays first
    parent.show();
    QApplication::processEvents();
    ASSERT_EQ(parent.PageCount(), 2);
    EXPECT_EQ(parent.Page(0), first);
    EXPECT_EQ(first->ScrollParent(), &parent);
    EXPECT_LT(first->geometry().bottom(), second->geometry().top());
    // Taller than the view: it scrolls, and the pages are as wide as the view.
    EXPECT_GT(parent.verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(first->width(), parent.viewport()->width());
    delete first;
    EXPECT_EQ(parent.PageCount(), 1);
    EXPECT_EQ(parent.Page(0), second);
    EXPECT_EQ(parent.Page(1), nullptr);
}
