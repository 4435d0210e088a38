#include "../../common/scriptedprompts.h"
#include "support/controls/exeditctrl.h"
#include "support/controls/windowdpi.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTest>
#include <gtest/gtest.h>

namespace {

using Action = CExEditKeyResult::Action;

struct KeyCase {
    std::uint16_t flags;
    const char *text;
    int caret;
    char16_t c;
    Action action;
    const char *result; // the new text of a Replace
    int cursor;
    bool readOnly = false;
    bool accepted = true;
};

} // namespace

TEST(ExEditFilter, TypedCharacters)
{
    const KeyCase cases[] = {
        // The axis fields: digits, a floating number, a minus anywhere.
        {ExEditAxisValue, "", 0, u'5', Action::Default, "", 0},
        {ExEditAxisValue, "1", 1, u'e', Action::Default, "", 0},
        {ExEditAxisValue, "12", 1, u'-', Action::Default, "", 0},
        {ExEditAxisValue, "1", 1, u'k', Action::Drop, "", 0},
        {ExEditAxisValue, "1", 1, u' ', Action::Drop, "", 0},
        // A digit field takes a minus only as the sign of an exponent.
        {ExEditDigits | ExEditFloat, "1e", 2, u'-', Action::Default, "", 0},
        {ExEditDigits | ExEditFloat, "12", 1, u'-', Action::Drop, "", 0},
        {ExEditDigits | ExEditFloat, "e", 1, u'-', Action::Drop, "", 0},
        // Without the floating class the sign keys change the whole number.
        {ExEditDigits | ExEditMinusAnywhere, "12", 1, u'-', Action::Replace, "-12", 2},
        {ExEditDigits | ExEditMinusAnywhere, "-12", 3, u'+', Action::Replace, "12", 2},
        {ExEditDigits | ExEditMinusAnywhere, "12", 2, u'+', Action::Drop, "", 0},
        {ExEditDigits | ExEditMinusAnywhere, "12", 1, u'-', Action::Drop, "", 0, true},
        // SI letters take the place of whatever follows the last digit.
        {ExEditDigits | ExEditSiSuffix, "4.7", 3, u'k', Action::Replace, "4.7k", 4},
        {ExEditDigits | ExEditSiSuffix, "4.7m", 1, u'M', Action::Replace, "4.7M", 4},
        {ExEditDigits | ExEditSiSuffix, "5", 1, u'u', Action::Replace, "5u", 2},
        {ExEditDigits | ExEditSiSuffix, "0", 1, u'k', Action::Drop, "", 0},
        {ExEditDigits | ExEditSiSuffix, "", 0, u'k', Action::Drop, "", 0},
        {ExEditDigits | ExEditSiSuffix, "5", 1, u'q', Action::Drop, "", 0},
        // Text fields.
        {ExEditText, "", 0, u'a', Action::Default, "", 0},
        {ExEditText, "a", 1, u'1', Action::Drop, "", 0},
        {ExEditText, "a", 1, u' ', Action::Drop, "", 0},
        {ExEditText | ExEditBlanks, "a", 1, u' ', Action::Default, "", 0},
        {ExEditOther, "", 0, u'#', Action::Default, "", 0},
        {ExEditDigits | ExEditNoPoint | ExEditFloat, "1", 1, u'.', Action::Drop, "", 0},
        {ExEditAnyText, "(1,2)", 5, u'(', Action::Default, "", 0},
        // The identifier field, and the control's own veto.
        {ExEditIdentifier, "a", 1, u'_', Action::Default, "", 0},
        {ExEditIdentifier, "a", 1, u'9', Action::Default, "", 0},
        {ExEditIdentifier, "a", 1, u'-', Action::Drop, "", 0},
        {ExEditIdentifier, "a", 1, u' ', Action::Drop, "", 0},
        {ExEditIdentifier, "a", 1, u'\b', Action::Default, "", 0},
        {ExEditDigits, "1", 1, u'5', Action::Drop, "", 0, false, false},
    };
    for (const KeyCase &k : cases) {
        SCOPED_TRACE(testing::Message() << "flags " << k.flags << " text '" << k.text << "' char "
                                        << char(k.c));
        CExEditState state;
        state.text = QString::fromLatin1(k.text);
        state.selectionStart = k.caret;
        state.readOnly = k.readOnly;
        const CExEditKeyResult r = ExEditFilterChar(k.flags, state, QChar(k.c), k.accepted);
        EXPECT_EQ(r.action, k.action);
        if (k.action == Action::Replace) {
            EXPECT_EQ(r.text, QString::fromLatin1(k.result));
            EXPECT_EQ(r.cursor, k.cursor);
        }
    }
}

TEST(ExEditFilter, PastedTextAndSteps)
{
    struct PasteCase {
        std::uint16_t flags;
        const char *text;
        bool multiLine;
        const char *kept;
    };
    const PasteCase pastes[] = {
        {ExEditAxisValue, "  -1.5e-3 kV\t", false, "-1.5e-3"},
        {ExEditAnyText, "(1, 2)\t(3,4)", false, "(1, 2)(3,4)"},
        {ExEditDigits | ExEditNoPoint, "1.5", false, "15"},
        {ExEditText, "Vce 1_a", false, "Vce_a"},
        {ExEditDigits, "1\r\n2", true, "1\r\n2"},
        {ExEditDigits, "1\r\n2", false, "12"},
        {ExEditIdentifier, "a.b-c_1", false, "abc_1"},
    };
    for (const PasteCase &p : pastes)
        EXPECT_EQ(ExEditFilterPaste(p.flags, QString::fromLatin1(p.text), p.multiLine),
                  QString::fromLatin1(p.kept))
            << p.text;

    struct StepCase {
        const char *text;
        int direction;
        bool ok;
        const char *result;
    };
    const StepCase steps[] = {
        {"5", 1, true, "4"},     {"5", 0, true, "6"},      {"-3", 1, true, "-4"},
        {"32766", 0, true, "32767"}, {"32767", 0, false, "32767"}, {"1.5", 0, false, "1.5"},
        {"", 0, false, ""},
    };
    for (const StepCase &s : steps) {
        QString t = QString::fromLatin1(s.text);
        EXPECT_EQ(ExEditStepText(t, s.direction), s.ok) << s.text;
        EXPECT_EQ(t, QString::fromLatin1(s.result)) << s.text;
    }
}

namespace {

class CountingEdit : public CExEditCtrl
{
public:
    using CExEditCtrl::CExEditCtrl;
    int badSteps = 0;
    void OnBadStep() override { ++badSteps; }
    bool AcceptChar(QChar c) override { return c != u'7'; }
};

} // namespace

TEST(ExEditCtrl, TypingPastingAndStepping)
{
    CountingEdit axis(nullptr, ExEditAxisValue);
    QTest::keyClicks(&axis, "12k-3e-7 4");
    EXPECT_EQ(axis.text(), QStringLiteral("12-3e-4")); // k, blank and the vetoed 7 dropped

    CExEditCtrl sign(nullptr, ExEditDigits | ExEditMinusAnywhere);
    QTest::keyClicks(&sign, "12-");
    EXPECT_EQ(sign.text(), QStringLiteral("-12"));
    QTest::keyClicks(&sign, "+");
    EXPECT_EQ(sign.text(), QStringLiteral("12"));

    // The limit binds typing and pasting, not the program.
    CExEditCtrl limited(nullptr, ExEditAnyText);
    limited.SetLimitText(5);
    QTest::keyClicks(&limited, "1234567");
    EXPECT_EQ(limited.text(), QStringLiteral("12345"));
    limited.setText(QStringLiteral("1234567890"));
    EXPECT_EQ(limited.text(), QStringLiteral("1234567890"));
    limited.setText(QStringLiteral("123"));
    limited.end(false);
    limited.PasteText(QStringLiteral("abcdef"));
    EXPECT_EQ(limited.text(), QStringLiteral("123ab"));

    // Ctrl+V goes through the paste filter.
    QGuiApplication::clipboard()->setText(QStringLiteral(" 1.5 kV"));
    axis.clear();
    QTest::keyClick(&axis, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(axis.text(), QStringLiteral("1.5"));

    CountingEdit counter(nullptr, ExEditDigits);
    counter.setText(QStringLiteral("9"));
    counter.Step(0);
    EXPECT_EQ(counter.text(), QStringLiteral("10"));
    EXPECT_EQ(counter.selectedText(), QStringLiteral("10"));
    counter.setText(QStringLiteral("x"));
    counter.Step(1);
    EXPECT_EQ(counter.badSteps, 1);
    EXPECT_EQ(counter.text(), QStringLiteral("x"));
}

TEST(UserPrompts, ScriptedPromptsAnswerAndStandardReturns)
{
    CUserPrompts *standard = &UserPrompts();
    {
        CScriptedPrompts script;
        script.answers = {PromptAnswer::No};
        script.fileNames = {QStringLiteral("/tmp/x.txt")};
        EXPECT_EQ(ShowMessage(nullptr, QStringLiteral("Go?"), PromptButtons::YesNo, PromptIcon::Question),
                  PromptAnswer::No);
        EXPECT_EQ(ShowMessage(nullptr, QStringLiteral("Stop"), PromptButtons::Ok, PromptIcon::Stop),
                  PromptAnswer::Ok);
        CFilePrompt file;
        file.save = true;
        EXPECT_EQ(AskFileName(file), QStringLiteral("/tmp/x.txt"));
        EXPECT_EQ(AskFileName(file), QString());
        ASSERT_EQ(script.messages.size(), 2);
        EXPECT_EQ(script.messages[1].icon, PromptIcon::Stop);
        EXPECT_EQ(script.filePrompts.size(), 2);
    }
    EXPECT_EQ(&UserPrompts(), standard);

    int x = 0, y = 0;
    EXPECT_FALSE(GetDpiOfWindow(nullptr, x, y));
    EXPECT_EQ(x, 96);
    EXPECT_EQ(y, 96);
    QWidget w;
    EXPECT_TRUE(GetDpiOfWindow(&w, x, y));
    EXPECT_GT(x, 0);
}
