#include "formula/rpnexception.h"

#include "formulatest.h"
#include "support/languagestring.h"

#include <gtest/gtest.h>

TEST(RpnErrors, FirstErrorWinsAndResetClears)
{
    CRpnErrorFields tree;
    unsigned char status = 1;
    tree.ReportError(status, QStringLiteral("first"), QStringLiteral("a"), 3, 7);
    EXPECT_EQ(status, 0);
    status = 1;
    tree.ReportError(status, QStringLiteral("second"), QStringLiteral("b"), 9, 1);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(tree.GetErrorMessage(), "first");
    EXPECT_EQ(tree.GetErrorToken(), "a");
    EXPECT_EQ(tree.GetErrorRow(), 3);
    EXPECT_EQ(tree.GetErrorCol(), 7);

    tree.ResetError();
    EXPECT_FALSE(tree.HasError());
    EXPECT_EQ(tree.GetErrorRow(), -1);
    EXPECT_EQ(tree.GetErrorCol(), -1);
    EXPECT_TRUE(tree.GetErrorMessage().isEmpty());

    // After the reset the next error is kept again.
    tree.ReportError(status, 41655, {QStringLiteral("1/0")}, QStringLiteral("/"), 1, 1);
    EXPECT_TRUE(tree.GetErrorMessage().endsWith("1/0"));
}

TEST(RpnErrors, ThrowingModeRaisesTheStoredError)
{
    CRpnErrorFields tree;
    tree.throwOnError = 1;
    unsigned char status = 1;
    try {
        tree.ReportError(status, QStringLiteral("boom"), QStringLiteral("x"), 2, 5);
        FAIL() << "no exception";
    } catch (const CRpnErrorException &) {
        FAIL() << "a run-time error is no script error";
    } catch (const CRpnException &e) {
        EXPECT_EQ(e.message, "boom");
        EXPECT_EQ(e.token, "x");
        EXPECT_EQ(e.row, 2);
        EXPECT_EQ(e.col, 5);
        EXPECT_STREQ(e.what(), "boom");
    }
    EXPECT_EQ(status, 0);
    // A second error throws again, still with the first message.
    try {
        tree.ReportError(status, QStringLiteral("later"), QStringLiteral("y"), 8, 8);
        FAIL() << "no exception";
    } catch (const std::exception &e) {
        EXPECT_STREQ(e.what(), "boom");
    }
}

TEST(RpnErrors, ScriptErrorsAreRpnExceptionsAndMessagesAreCut)
{
    try {
        ThrowRpnErrorException(QString(1200, u'x'), QStringLiteral("Error"), 4, 2);
    } catch (const CRpnException &e) {
        EXPECT_NE(dynamic_cast<const CRpnErrorException *>(&e), nullptr);
        EXPECT_EQ(e.GetErrorMessage().size(), 999);
        EXPECT_EQ(e.row, 4);
    }
    unsigned char status = 1;
    ReportRpnError(nullptr, status, QStringLiteral("no tree"), QString(), 0, 0);
    EXPECT_EQ(status, 0);
}

TEST(RpnErrors, FormatFillsArgumentsInOrder)
{
    struct Case {
        const char *pattern;
        std::initializer_list<CRpnFormatArg> args;
        const char *expect;
    };
    const Case cases[] = {
        {"Parameter %i is not a valid number.", {3}, "Parameter 3 is not a valid number."},
        {"%s(...) first parameter", {"Copy"}, "Copy(...) first parameter"},
        {"Error: %s  at row: %i   col = %i  ", {"bad", 2, 14}, "Error: bad  at row: 2   col = 14  "},
        {"100%% of %s", {"x"}, "100% of x"}, {"%s and %s", {"one"}, "one and "},
        {"no arguments", {1, 2}, "no arguments"}, {"%c%c", {QChar(u'k'), QChar(u'M')}, "kM"},
        {"odd %q stays", {}, "odd %q stays"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(RpnFormat(QString::fromUtf8(c.pattern), c.args), QString::fromUtf8(c.expect)) << c.pattern;
}

TEST(RpnErrors, FormatPositionMarksTheColumn)
{
    EXPECT_EQ(FormatPosition(QStringLiteral("a = 1\n\tb = 1/0\nc"), 11), "\tb = 1/0\n\t    ^");
    EXPECT_EQ(FormatPosition(QStringLiteral("x/0"), 1), "x/0\n ^");
    EXPECT_EQ(FormatPosition(QStringLiteral("one\r\ntwo"), 2), "one\n  ^");
    EXPECT_EQ(FormatPosition(QStringLiteral("ab"), 99), "ab\n  ^");
    EXPECT_EQ(FormatPosition(QString(), 0), "\n^");
}

// Every number the language reports by has an English text.
TEST(RpnErrors, EveryMessageNumberHasAText)
{
    const int ids[] = {41091, 41094, 41096, 41653, 41655, 41656, 41657, 41658, 41659, 41670, 41830,
                       43027, 43028, 43029, 43030, 43031, 43032, 43034, 43035, 43047, 43166, 43167,
                       43170, 43192, 43198, 43217, 43241, 43242, 43243, 43300, 43301, 43302};
    for (int id : ids)
        EXPECT_FALSE(LanguageString(id).isEmpty()) << id;
    // Messages that take an argument show where it goes.
    for (int id : {41655, 41830, 43035, 43047, 43192, 43217, 43241, 43242, 43300, 43302})
        EXPECT_TRUE(LanguageString(id).contains(QLatin1StringView("%s"))) << id;
}
