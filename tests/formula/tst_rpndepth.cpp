// Deep and long inputs: values nested tens of thousands deep are printed,
// compared, combined, copied and freed; texts nested too deeply for the
// thread's stack end with a message; huge shared values print a cut text.

#include "formula/rpnbuffer.h"
#include "formula/rpndictionary.h"
#include "formula/rpntree.h"
#include "formulatest.h"
#include "support/languagestring.h"
#include "support/stackroom.h"

#include <QThread>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr int kDeep = 20000;

QString repeat(const char *piece, int times)
{
    return QString::fromLatin1(piece).repeated(times);
}

// Runs `text`; the value, or the tree's error message in `error`.
CRpnData run(const QString &text, QString &error, CEquationTree *shared = nullptr)
{
    CEquationTree own;
    CEquationTree &tree = shared ? *shared : own;
    CRpnData value;
    error.clear();
    if (!tree.Compile(text, nullptr, true) || tree.Run(value) != 1)
        error = tree.GetErrorMessage();
    return value;
}

// The linked list {n-1, {n-2, ... {0, {}}}} as a script builds it.
QString linkedList(int n)
{
    return QStringLiteral("l = {}; i = 0; while (i < %1) { l = {i, l}; i++ }; ").arg(n);
}

// The text of such a list whose cells are f(i), written out here without
// nesting: "{f(n-1),{f(n-2),...{f(0),}...}}".
QString expectedListText(int n, const std::function<QString(int)> &cell)
{
    QString text;
    for (int i = n - 1; i >= 0; --i)
        text += u'{' + cell(i) + u',';
    return text + QString(n, u'}');
}

TEST(RpnDepth, DeepListsWorkLikeShallowOnes)
{
    struct Case
    {
        const char *what;
        const char *expression; // over the list l
        std::function<QString(int)> cell;
    };
    const Case cases[] = {
        {"printing", "l", [](int i) { return QString::number(i); }},
        {"adding", "l + l", [](int i) { return QString::number(2 * i); }},
        {"scaling", "l * 3", [](int i) { return QString::number(3 * i); }},
        {"comparing", "l == l", [](int) { return QStringLiteral("1"); }},
        {"comparing with a number", "l > 100", [](int i) { return QString::number(i > 100 ? 1 : 0); }},
        {"negating", "-l", [](int i) { return i ? QString::number(-i) : QStringLiteral("-0"); }},
    };
    QString error;
    CEquationTree maker;
    run(linkedList(kDeep), error, &maker);
    ASSERT_TRUE(error.isEmpty()) << error;
    const CRpnData list = *maker.GetVariables()->Find(QStringLiteral("l"));
    for (const Case &c : cases) {
        CEquationTree tree;
        tree.GetVariables()->SetAt(QStringLiteral("l"), list);
        const CRpnData result = run(QString::fromLatin1(c.expression), error, &tree);
        ASSERT_TRUE(error.isEmpty()) << c.what << ": " << error;
        EXPECT_TRUE(result.GetText() == expectedListText(kDeep, c.cell)) << c.what;
    }
}

TEST(RpnDepth, ACopyOfADeepListIsIndependent)
{
    QString error;
    CEquationTree tree;
    run(linkedList(kDeep) + QStringLiteral("m = l; m[1][0] = -5; n = l; q = m"), error, &tree);
    ASSERT_TRUE(error.isEmpty()) << error;
    const CRpnData l = *tree.GetVariables()->Find(QStringLiteral("l"));
    const CRpnData m = *tree.GetVariables()->Find(QStringLiteral("m"));
    EXPECT_EQ(l.GetAt(1).GetAt(0).GetDouble(), kDeep - 2);
    EXPECT_EQ(m.GetAt(1).GetAt(0).GetDouble(), -5.0);
    // The copy goes all the way down.
    CRpnData a = l, b = m;
    int depth = 0;
    while (a.GetSize() == 2 && b.GetSize() == 2) {
        EXPECT_FALSE(a.IsSameAs(b));
        a = a.GetAt(1);
        b = b.GetAt(1);
        ++depth;
    }
    EXPECT_EQ(depth, kDeep);
}

TEST(RpnDepth, ConversionsReachTheFirstElementAtAnyDepth)
{
    struct Case
    {
        CRpnData inner;
        double real;
        int integer;
    };
    const Case cases[] = {{CRpnData(2.995), 2.995, 3}, {CRpnData(7), 7.0, 7}, {Text("12abc"), 12.0, 12},
                          {CRpnData(std::complex<double>(1.5, 2.0)), 1.5, 1}, {Empty(RPN_ARRAY), 0.0, 0}};
    for (const Case &c : cases) {
        CRpnData v = c.inner;
        for (int i = 0; i < 100000; ++i) {
            CRpnData outer;
            outer.SetArray(2);
            outer.SetAt(0, v);
            v = outer;
        }
        EXPECT_EQ(v.GetDouble(), c.real) << Describe(c.inner);
        EXPECT_EQ(v.GetInt(), c.integer) << Describe(c.inner);
        EXPECT_EQ(v.GetComplex(), c.inner.GetComplex()) << Describe(c.inner);
    }
}

TEST(RpnDepth, AListThreeHundredThousandDeepIsFreed)
{
    // Freed with the last handle; the payloads go back to this thread's list.
    int before = 0;
    {
        CRpnData list;
        for (int i = 0; i < 300000; ++i) {
            CRpnData cell;
            cell.SetArray(2);
            cell.SetAt(0, CRpnData(i));
            cell.SetAt(1, list);
            list = cell;
        }
        before = RpnPool::FreeCount();
    }
    // Each cell held its array; its number and the empty end need none.
    EXPECT_EQ(RpnPool::FreeCount(), before + 300000);
    // And the same list made and dropped by a script.
    QString error;
    run(linkedList(300000) + QStringLiteral("1"), error);
    EXPECT_TRUE(error.isEmpty()) << error;
}

TEST(RpnDepth, ADeepListIsSavedAndReadBackCutAtTheReadersDepth)
{
    for (const int depth : {CRpnBuffer::MaxDepth - 1, 300000}) {
        CRpnData list;
        for (int i = 0; i < depth; ++i) {
            CRpnData cell;
            cell.SetArray(2);
            cell.SetAt(0, CRpnData(i));
            cell.SetAt(1, list);
            list = cell;
        }
        CRpnBuffer out(10, 0);
        out.Reset(CBufferIO::ModeWrite, 0);
        list.Serialize(out);
        CRpnBuffer in(10, 0);
        in.LoadForReading(out.ToByteArray());
        CRpnData back;
        back.Serialize(in);
        EXPECT_TRUE(in.AtEnd()) << depth;
        // Walk both down as far as the copy goes.
        CRpnData a = list, b = back;
        int levels = 0;
        while (b.GetSize() == 2) {
            // The cells of the deepest level read are empty.
            if (levels < CRpnBuffer::MaxDepth - 1) {
                EXPECT_EQ(b.GetAt(0).GetInt(), a.GetAt(0).GetInt());
            } else {
                EXPECT_TRUE(b.GetAt(0).IsNull() && b.GetAt(1).IsNull());
            }
            a = a.GetAt(1);
            b = b.GetAt(1);
            ++levels;
        }
        EXPECT_EQ(levels, std::min(depth, CRpnBuffer::MaxDepth)) << depth;
    }
}

TEST(RpnDepth, AHugeSharedValuePrintsACutText)
{
    // Thirty doublings share their halves: 2^30 elements in 31 payloads.
    QString error;
    CEquationTree tree;
    run(QStringLiteral("a = {1}; i = 0; while (i < 30) { a = {a, a}; i++ }"), error, &tree);
    ASSERT_TRUE(error.isEmpty()) << error;
    const CRpnData a = *tree.GetVariables()->Find(QStringLiteral("a"));
    CMapStringToRpnData options;
    options.SetAt(QStringLiteral("SEP"), Text(";"));
    const QString text = a.GetText(), formatted = a.FormatValue(options);
    for (const QString &t : {text, formatted}) {
        EXPECT_EQ(t.size(), RpnMaxTextLength + 3);
        EXPECT_TRUE(t.endsWith(QLatin1StringView("...")));
    }
    EXPECT_TRUE(text.startsWith(repeat("{", 30) + QStringLiteral("1,1},{1,1}},")));
    EXPECT_TRUE(formatted.startsWith(repeat("{", 31) + QStringLiteral("1};{1}};{{1};{1}}};")));
    // A value short of the limit is whole.
    CEquationTree small;
    run(QStringLiteral("a = {1}; i = 0; while (i < 3) { a = {a, a}; i++ }"), error, &small);
    EXPECT_EQ(small.GetVariables()->Find(QStringLiteral("a"))->GetText(), "{{{1,1},{1,1}},{{1,1},{1,1}}}");
}

TEST(RpnDepth, OperatorsOverASharedValueShareTheirResult)
{
    // a and b are made by doubling, apart: 2^20 elements in 21 arrays each.
    // An operator works each array once, and its result shares its halves
    // as the operands do.
    constexpr int kDoublings = 20;
    struct Case
    {
        const char *expression;
        double leaf;
    };
    const Case cases[] = {
        {"-a", -1}, {"!a", 0}, {"a * 2", 2}, {"a + a", 2}, {"a - b", -1}, {"a == b", 0},
        {"a != a", 0}, {"a > 0", 1}, {"2 ^ a", 2}, {"b % a", 0}, {"a && b", 1},
    };
    for (const Case &c : cases) {
        QString error;
        CEquationTree tree;
        run(QStringLiteral("a = {1}; b = {2}; i = 0; while (i < %1) { a = {a, a}; b = {b, b}; i++ }; r = ")
                    .arg(kDoublings)
                + QString::fromLatin1(c.expression),
            error, &tree);
        ASSERT_TRUE(error.isEmpty()) << c.expression << ": " << error;
        CRpnData v = *tree.GetVariables()->Find(QStringLiteral("r"));
        int depth = 0;
        while (v.GetKind() == RPN_ARRAY && v.GetSize() == 2) {
            EXPECT_TRUE(v.GetAt(0).IsSameAs(v.GetAt(1))) << c.expression << " at depth " << depth;
            v = v.GetAt(0);
            ++depth;
        }
        EXPECT_EQ(depth, kDoublings) << c.expression;
        ASSERT_EQ(v.GetSize(), 1) << c.expression;
        EXPECT_EQ(v.GetAt(0).GetDouble(), c.leaf) << c.expression;
    }
}

TEST(RpnDepth, ASharedCellStaysTheSameForEachPairItMeets)
{
    // One array s = {1, {2, 3}} met beside different partners: each pair is its own.
    struct Case
    {
        const char *expression;
        const char *text;
    };
    const Case cases[] = {
        {"{s, s} + {{10, 20}, {30, 40}}", "{{11,{22,23}},{31,{42,43}}}"},
        {"{s, s} * {2, 3}", "{{2,{4,6}},{3,{6,9}}}"},
        {"{s, s} > {1, 0}", "{{0,{1,1}},{1,{1,1}}}"},
        {"{{s, s}, s} - {{1, 2}, 3}", "{{{0,{1,2}},{-1,{0,1}}},{-2,{-1,0}}}"},
        {"-{s, {s, s}}", "{{-1,{-2,-3}},{{-1,{-2,-3}},{-1,{-2,-3}}}}"},
    };
    CRpnData inner, s;
    inner.SetArray(2);
    inner.SetAt(0, CRpnData(2));
    inner.SetAt(1, CRpnData(3));
    s.SetArray(2);
    s.SetAt(0, CRpnData(1));
    s.SetAt(1, inner);
    for (const Case &c : cases) {
        QString error;
        CEquationTree tree;
        tree.GetVariables()->SetAt(QStringLiteral("s"), s);
        const CRpnData result = run(QString::fromLatin1(c.expression), error, &tree);
        ASSERT_TRUE(error.isEmpty()) << c.expression << ": " << error;
        EXPECT_EQ(result.GetText(), QString::fromLatin1(c.text)) << c.expression;
    }
}

TEST(RpnDepth, CopiesOfASharedValueShareWithinThemselvesOnly)
{
    // b is a copy of a (2^20 cells in 21 arrays) made by assignment: as
    // small as a, and nothing of it is a's.  A change through one half of
    // the copy is seen through the other, as it is in a itself.
    constexpr int kDoublings = 20;
    const QString doubled = QStringLiteral("a = {1}; i = 0; while (i < %1) { a = {a, a}; i++ }; ").arg(kDoublings);
    const char *const copies[] = {"b = a", "b = {a, 1}; b = b[0]", "b = {a}; b = b[0]"};
    for (const char *copy : copies) {
        QString error;
        CEquationTree tree;
        run(doubled + QString::fromLatin1(copy), error, &tree);
        ASSERT_TRUE(error.isEmpty()) << copy << ": " << error;
        CRpnData a = *tree.GetVariables()->Find(QStringLiteral("a"));
        CRpnData b = *tree.GetVariables()->Find(QStringLiteral("b"));
        int depth = 0;
        while (b.GetKind() == RPN_ARRAY && b.GetSize() == 2 && b.GetAt(0).GetKind() == RPN_ARRAY) {
            EXPECT_TRUE(b.GetAt(0).IsSameAs(b.GetAt(1))) << copy << " at depth " << depth;
            EXPECT_FALSE(b.IsSameAs(a)) << copy << " at depth " << depth;
            a = a.GetAt(0);
            b = b.GetAt(0);
            ++depth;
        }
        EXPECT_EQ(depth, kDoublings) << copy;

        CEquationTree changed;
        run(doubled + QString::fromLatin1(copy) + QStringLiteral("; b[0][0] = 7"), error, &changed);
        ASSERT_TRUE(error.isEmpty()) << copy << ": " << error;
        a = *changed.GetVariables()->Find(QStringLiteral("a"));
        b = *changed.GetVariables()->Find(QStringLiteral("b"));
        EXPECT_EQ(b.GetAt(1).GetAt(0).GetText(), "7") << copy;
        EXPECT_EQ(a.GetAt(0).GetAt(0).GetKind(), RPN_ARRAY) << copy;
        EXPECT_EQ(a.GetAt(1).GetAt(0).GetKind(), RPN_ARRAY) << copy;
    }
}

TEST(RpnDepth, FormatValueOfADeepListUsesEachLevelsTexts)
{
    QString error;
    CEquationTree tree;
    run(linkedList(kDeep), error, &tree);
    ASSERT_TRUE(error.isEmpty()) << error;
    const CRpnData l = *tree.GetVariables()->Find(QStringLiteral("l"));
    CMapStringToRpnData options;
    options.SetAt(QStringLiteral("BEGIN"), Text("<"));
    options.SetAt(QStringLiteral("END"), Text(">"));
    options.SetAt(QStringLiteral("BEGIN2"), Text("("));
    options.SetAt(QStringLiteral("END2"), Text(")"));
    const QString text = l.FormatValue(options);
    // Only the second level has texts of its own.
    EXPECT_TRUE(text.startsWith(QStringLiteral("<19999,(19998,<19997,<19996,"))) << text.left(40);
    EXPECT_TRUE(text.endsWith(QStringLiteral("<0,<>") + repeat(">", kDeep - 2) + QStringLiteral(")>")))
        << text.right(40);
}

// Runs the cases on a thread with a stack of known size, so that what fits
// and what does not is the same in every build.
class KnownStack : public QThread
{
public:
    explicit KnownStack(std::function<void()> body) : m_body(std::move(body)) { setStackSize(8 * 1024 * 1024); }
    void run() override { m_body(); }

private:
    std::function<void()> m_body;
};

struct DepthCase
{
    const char *what;
    QString text;
    const char *expect; // the start of the value as Calculate gives it, or "E<message>@"
};

// `room`: the stack the cases may use, or 0 for what the thread measures.
void runOnKnownStack(const std::vector<DepthCase> &cases, std::size_t room)
{
    std::vector<std::string> results(cases.size());
    KnownStack thread([&] {
        if (room)
            StackRoom::SetRoomForTesting(room);
        for (std::size_t i = 0; i < cases.size(); ++i)
            results[i] = Calculate(cases[i].text);
    });
    thread.start();
    thread.wait();
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const std::string expect = cases[i].expect;
        EXPECT_EQ(results[i].substr(0, expect.size()), expect) << cases[i].what;
    }
}

TEST(RpnDepth, TextsNestedTooDeeplyEndWithAMessage)
{
    // Half a megabyte of stack, and nesting 100,000 deep: no frame is that small.
    runOnKnownStack(
        {
            {"braces", repeat("{", 100000) + u'1' + repeat("}", 100000), "E43301@"},
            {"IF blocks", QStringLiteral("x = 1; ") + repeat("if (x) { ", 100000) + u'1' + repeat(" }", 100000),
             "E43301@"},
            {"signs in parentheses", QStringLiteral("x = ") + repeat("-(", 100000) + u'1' + repeat(")", 100000),
             "E43301@"},
            {"calls each evaluating a deep list",
             QStringLiteral("function f(n) { if (n > 0) { ") + repeat("{", 500) + QStringLiteral("f(n-1)")
                 + repeat("}", 500) + QStringLiteral(" } else { 0 } }; f(150)"),
             "E43301@"},
        },
        512 * 1024);
}

TEST(RpnDepth, LongFlatChainsNeedNoDeepStack)
{
    // The same half megabyte as above: a chain of 200,000 operators must not
    // take a frame per link, neither to compile nor to run.
    runOnKnownStack(
        {
            {"a sum", u'1' + repeat("+1", 200000), "REAL:200001"},
            {"products and differences", u'1' + repeat("*1-1+1", 100000), "REAL:1"},
            {"texts", QStringLiteral("\"ab\"") + repeat("+\"\"", 200000), "STRING:ab"},
            {"an array", QStringLiteral("{1,2}") + repeat("+1", 200000), "ARRAY:{200001,200002}"},
            {"calls", QStringLiteral("function f(x) { return x + 1 }; 0") + repeat("+f(1)", 100000), "REAL:200000"},
            {"a variable",
             QStringLiteral("x = 2; y = x") + repeat("-x+x", 100000) + QStringLiteral("; y"), "ARRAY:{2,2,2}"},
            {"a failure half way", u'1' + repeat("+1", 100000) + QStringLiteral("+1/0") + repeat("+1", 100000),
             "E41655@1,200003"},
        },
        512 * 1024);
}

TEST(RpnDepth, WhatFitsTheStackIsUntouched)
{
    runOnKnownStack(
        {
            {"a list 500 deep", repeat("{", 500) + QStringLiteral("7,8") + repeat("}", 500),
             "ARRAY:{{{{{{{{{{{{{{{{{{{{{{{{{{{{{{"},
            {"a sum of 1000 terms", u'1' + repeat("+1", 1000), "REAL:1001"},
            {"150 calls",
             QStringLiteral("function f(n) { if (n > 0) { return f(n-1) + 1 } else { return 0 } }; f(150)"),
             "REAL:150"},
            {"the call limit comes first", QStringLiteral("function f(n) { return f(n+1) }; f(0)"), "E43300@"},
        },
        0);
}

TEST(RpnDepth, TheDepthIsReportedWhereItWasFound)
{
    const QString deep = repeat("{", 5000) + u'1' + repeat("}", 5000);
    const QString calls = QStringLiteral("function f(n) { if (n > 0) { ") + repeat("{", 100)
        + QStringLiteral("f(n-1)") + repeat("}", 100) + QStringLiteral(" } else { 0 } }; f(1000)");
    std::string compiled, ran;
    QString message;
    KnownStack thread([&] {
        StackRoom::SetRoomForTesting(256 * 1024);
        compiled = Calculate(deep);
        CEquationTree tree;
        ran = Calculate(calls, &tree);
        message = tree.GetErrorMessage();
    });
    thread.start();
    thread.wait();
    EXPECT_EQ(compiled.substr(0, 7), "E43301@");
    EXPECT_EQ(ran.substr(0, 7), "E43301@");
    // The message is the text itself, with nothing around it.
    EXPECT_EQ(message, GetMessageText(43301));
}

TEST(RpnDepth, ANameBeforeAParenthesisThatIsNoFunction)
{
    CEquationTree first; // the prototypes and the formula support are set up by a first compile
    ASSERT_EQ(first.Compile(QStringLiteral("1"), nullptr, true), 1);
    auto *tree = new CEquationTree;
    ASSERT_EQ(tree->Compile(QStringLiteral("1 + 1"), nullptr, true), 1);
    CRpnData formula;
    formula.SetFormula(tree);
    struct Case
    {
        const char *text;
        const char *expect;
        const char *named; // the name in the message
    };
    const Case cases[] = {
        {"foo(1)", "E43302@1,0", "foo"},
        {"y = 2; sinn(y)", "E43302@1,7", "sinn"},
        {"function f() { return bar(2) }; f()", "E43302@1,22", "bar"},
        {"number(2)", "E43302@1,0", "number"},
        // A name that may hold a formula keeps the old message.
        {"held(2)", "E43032@1,4", nullptr},
        {"z = 1; z(2)", "E43032@1,8", nullptr},
        // Values before a parenthesis are still two values.
        {"2(3)", "E43032@1,1", nullptr},
    };
    for (const Case &c : cases) {
        CEquationTree tree;
        tree.GetVariables()->SetAt(QStringLiteral("held"), formula);
        tree.GetVariables()->SetAt(QStringLiteral("number"), CRpnData(4.0));
        EXPECT_EQ(Calculate(c.text, &tree), c.expect) << c.text;
        if (c.named) {
            EXPECT_EQ(tree.GetErrorMessage(), RpnMessage(43302, {QString::fromLatin1(c.named)})) << c.text;
        }
    }
}

} // namespace

namespace {

const double kChainX[] = {0.0, 0.5, 1.0, 1.5};

void chainGetter(CRpnData &result, int, int row, void *, void *, CRpnNode *, const QString &, int &found)
{
    if (row < 0 || row >= 4) {
        found = 0;
        return;
    }
    result.SetDouble(kChainX[row]);
}

} // namespace

TEST(RpnDepth, AFlatChainRunsRowByRowAndIsWrittenBackOnASmallStack)
{
    // The thread's whole stack is one megabyte: a frame per link of 200,000
    // would run off its end, in the series (with a bound column, with the
    // host's getter, in the throwing mode that always walks the tree) and
    // in writing the formula back as text.
    struct Case
    {
        const char *what;
        QString text;
        double offset; // the value at a row is x + offset
    };
    const std::vector<Case> cases = {
        {"a sum", QStringLiteral("x") + repeat("+1", 200000), 200000.0},
        {"differences", QStringLiteral("x") + repeat("-1", 200000), -200000.0},
        {"products, differences and sums", QStringLiteral("x") + repeat("*1-1+1", 70000), 0.0},
    };
    enum Mode { Column, Getter, Throwing, ModeCount };
    std::vector<std::string> failures;
    QThread *thread = QThread::create([&] {
        for (const Case &c : cases) {
            for (int mode = 0; mode < ModeCount; ++mode) {
                CEquationTree tree;
                if (mode == Column)
                    tree.BindColumn(QStringLiteral("x"), kChainX, nullptr, 4);
                else
                    tree.SetVariableAccess(chainGetter, nullptr);
                tree.throwOnError = mode == Throwing;
                // x is the host's: its matcher claims the name.
                const CRpnVariableMatcher matcher = [](QStringView rest, int &index) {
                    index = 0;
                    return rest.startsWith(u'x') && (rest.size() == 1 || !rest[1].isLetterOrNumber()) ? 1 : 0;
                };
                if (!tree.Compile(c.text, nullptr, true, mode == Column ? CRpnVariableMatcher() : matcher)) {
                    failures.push_back(std::string(c.what) + ": no compile: " + tree.GetErrorMessage().toStdString());
                    continue;
                }
                double values[4] = {};
                unsigned char valid[4] = {};
                const int good = tree.EvaluateSeries(values, valid, 0, 3);
                for (int r = 0; r < 4; ++r) {
                    if (good != 4 || valid[r] != 1 || values[r] != kChainX[r] + c.offset)
                        failures.push_back(std::string(c.what) + ", mode " + std::to_string(mode) + ", row "
                                           + std::to_string(r) + ": " + std::to_string(values[r]));
                }
                if (mode != Column)
                    continue;
                QString written;
                tree.GetFormulaText(written);
                if (written != c.text)
                    failures.push_back(std::string(c.what) + ": written back as " + written.left(40).toStdString());
            }
        }
    });
    thread->setStackSize(1024 * 1024);
    thread->start();
    thread->wait();
    delete thread;
    for (const std::string &failure : failures)
        ADD_FAILURE() << failure;
}
