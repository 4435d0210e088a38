// Where variables live once a text is compiled: the slots of a call's frame,
// the remembered entries of the main dictionary, and the names that come
// into being after the compile.

#include "formulatest.h"

#include "formula/rpnbuffer.h"
#include "formula/rpndictionary.h"
#include "formula/rpntree.h"
#include "formula/rpnuserfunction.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

struct ScriptCase
{
    const char *name;
    const char *text;
    const char *expect; // Describe of the value, or the start of the error ("E41830")
};

void PrintTo(const ScriptCase &c, std::ostream *os)
{
    *os << c.name;
}

class VariableScripts : public ::testing::TestWithParam<ScriptCase>
{
};

TEST_P(VariableScripts, GiveTheirValue)
{
    const ScriptCase &c = GetParam();
    const std::string got = Calculate(c.text);
    if (c.expect[0] == 'E')
        EXPECT_EQ(got.substr(0, std::strlen(c.expect)), c.expect) << c.text << " gave " << got;
    else
        EXPECT_EQ(got, c.expect) << c.text;
}

const ScriptCase kScripts[] = {
    // Each call has its own locals, also when the calls nest.
    {"recursion_keeps_locals",
     "function f(n) { k = n * 2; if (n > 0) { r = f(n - 1) } else { r = 0 }; return k + r }; f(3)", "REAL:12"},
    {"mutual_recursion",
     "function even(n) { if (n == 0) { return 1 }; return odd(n - 1) }\n"
     "function odd(n) { if (n == 0) { return 0 }; return even(n - 1) }\n"
     "{even(10), odd(7), even(7)}",
     "ARRAY:{1,1,0}"},
    {"parameter_hides_main", "x = 5; function g(x) { x = x + 1; return x }; {g(1), x}", "ARRAY:{5,{2,5}}"},
    {"local_does_not_reach_main", "y = 1; function h() { y = 9; return y }; {h(), y}", "ARRAY:{1,{9,1}}"},
    {"main_read_through_its_name", "y = 3; function h() { return MainVariables[\"y\"] * 2 }; h()",
     "ARRAY:{3,6}"},
    {"main_written_through_its_name",
     "z = 0; function s() { MainVariables[\"z\"] = 7; z = 1; return z }; {s(), z}", "ARRAY:{0,{1,7}}"},
    // A main name read in a body is a local read before it was set.
    {"main_name_unknown_inside_function", "w = 1; function u() { return w }; u()", "E43166"},
    // A frame serves the next call empty: what one call set, the next does not see.
    {"frame_forgets_between_calls", "function v(a) { if (a) { t = 5 }; return t }; v(1); v(0)", "E41830"},
    {"default_then_argument", "function d(a, b = 4) { return a * b }; {d(2), d(2, 5), d(3)}",
     "ARRAY:{8,10,12}"},
    {"by_reference_through_recursion",
     "function down(_ref c, n) { if (n > 0) { c = c + 1; down(c, n - 1) }; return c }; k = 0; {down(k, 4), k}",
     "ARRAY:{0,{4,4}}"},
    // Appends and index writes change a value where it lies, without
    // reaching another variable that had the same value.  The value of the
    // statement that made an array is that same array, so it shows the appends.
    {"text_append_keeps_copy", "s = \"ab\"; t = s; s += \"c\"; s += \"d\"; {s, t}",
     "ARRAY:{ab,ab,abc,abcd,{abcd,ab}}"},
    {"text_append_in_function", "function f(x) { s = \"a\"; s += x; s += x; return s }; {f(\"b\"), f(\"c\")}",
     "ARRAY:{abb,acc}"},
    {"text_append_number_is_sum", "s = \"2\"; s += 3; s", "ARRAY:{2,5,5}"},
    // A text appended to itself: in a loop, in a function, with a copy
    // that keeps its value.
    {"text_append_self_in_loop", "s = \"ab\"; i = 0; while (i < 3) { s += s; i++ }; s",
     "ARRAY:{ab,0,0,abababababababab}"},
    {"text_append_self_loop_of_one_statement", "s = \"xy\"; while (s != \"xyxyxyxy\") { s += s }; s",
     "ARRAY:{xy,0,xyxyxyxy}"},
    {"text_append_self_keeps_copy", "s = \"ab\"; t = s; s += s; u = s; s += s; {s, t, u}",
     "ARRAY:{ab,ab,abab,abab,abababab,{abababab,ab,abab}}"},
    {"text_append_self_in_function", "function f(x) { s = x; s += s; s += \"-\"; s += s; return s }; {f(\"a\"), f(\"b\")}",
     "ARRAY:{aa-aa-,bb-bb-}"},
    {"array_append_keeps_copy", "a = {1}; b = a; b[] = 2; b[0] = 7; {a, b}",
     "ARRAY:{{1},{7,2},2,7,{{1},{7,2}}}"},
    {"array_append_by_reference", "a = {1}; function f(_ref x) { x[] = 2; x[] = 3 }; f(a); a",
     "ARRAY:{{1,2,3},{2,3},{1,2,3}}"},
    {"array_append_in_loop", "a = {}; i = 0; while (i < 5) { a[] = i * i; i++ }; a",
     "ARRAY:{{0,1,4,9,16},0,0,{0,1,4,9,16}}"},
    // Arithmetic on an array made on the way reuses its cells; the array of
    // a variable is never changed by it.
    {"array_arithmetic_leaves_operand", "a = {1, \"3\", 2.5}; b = a * 2 + 1; c = {1,2} * 3 - 1; {a, b, c}",
     "ARRAY:{{1,3,2.5},{3,7,6},{2,5},{{1,3,2.5},{3,7,6},{2,5}}}"},
    {"increment_kinds", "i = 1; i++; j = \"x\"; j++; k = 2.5; k--; {i, j, k}",
     "ARRAY:{1,1,x,x,2.5,2.5,{2,x,1.5}}"},
    // A loop's body gives no value, but a return inside it does.
    {"return_from_loop_body",
     "function first(limit) { k = 1; while (1) { if (k * k > limit) { return k }; k++ } }; first(50)", "REAL:8"},
    {"return_from_nested_block", "i = 0; while (i < 10) { { if (i == 3) { return i * 10 } }; i++ }", "REAL:30"},
    // Calls of functions on plain numbers take a shorter way (no values, the
    // frame's slots only); what they give and report must not change.
    {"number_recursion", "function fib(n) { if (n < 2) { return n }; return fib(n - 1) + fib(n - 2) }; fib(15)",
     "REAL:610"},
    {"number_call_else_branch", "function s(t) { if (t < 0) { return -t } else { if (t > 9) { return 9 } }; return t }; "
                                "s(-2) + s(12) * 10 + s(4) * 100",
     "REAL:492"},
    {"number_call_defaults", "function d(a, b = 4) { return a * b }; d(2) + d(2, 5)", "REAL:18"},
    {"number_call_in_condition", "function sq(t) { return t*t }; i = 0; while (sq(i) < 50) { i++ }; i",
     "ARRAY:{0,0,8}"},
    {"number_call_keeps_display_exponent", "function f(a) { return a }; y = f(2k); y", "ARRAY:{2k,2k}"},
    {"number_call_argument_of_text", "s = \"4\"; function h(a) { return a * 2 }; {h(3), h(s), h(5)}",
     "ARRAY:{4,{6,8,10}}"},
    {"number_call_array_at_the_bottom",
     "function g(n) { if (n < 1) { return {n} }; return g(n - 1) * 2 }; g(3) + 1", "ARRAY:{1}"},
    {"number_call_zero_divisor", "function q(a) { return 1 / a }; {q(2), q(0)}", "E41655"},
    {"number_call_without_end", "function r(n) { return r(n + 1) }; r(0)", "E43300"},
};

INSTANTIATE_TEST_SUITE_P(Slots, VariableScripts, ::testing::ValuesIn(kScripts),
                         [](const auto &info) { return std::string(info.param.name); });

// The main dictionary changes between runs, as a host changes it: names
// added after the compile, entries removed so that the others move, the
// whole dictionary emptied.  Each step runs the same compiled text again.
TEST(MainVariables, ChangesAfterTheCompileAreSeen)
{
    struct Step
    {
        const char *what;
        void (*change)(CMapStringToRpnData &);
        const char *expect;
    };
    const Step steps[] = {
        {"unknown at first", [](CMapStringToRpnData &) {}, "REAL:0"},
        {"added by the host", [](CMapStringToRpnData &m) { m.SetAt(QStringLiteral("q"), CRpnData(2.0)); }, "REAL:20"},
        {"an entry before it removed",
         [](CMapStringToRpnData &m) {
             m.RemoveKey(QStringLiteral("p"));
             m.SetAt(QStringLiteral("q"), CRpnData(3.0));
         },
         "REAL:30"},
        {"emptied and set again",
         [](CMapStringToRpnData &m) {
             m.RemoveAll();
             m.SetAt(QStringLiteral("other"), CRpnData(1.0));
             m.SetAt(QStringLiteral("q"), CRpnData(4.0));
         },
         "REAL:40"},
        {"removed", [](CMapStringToRpnData &m) { m.RemoveKey(QStringLiteral("q")); }, "REAL:0"},
        // The entries' block moves as the map grows: the remembered address goes with it.
        {"set", [](CMapStringToRpnData &m) { m.SetAt(QStringLiteral("q"), CRpnData(5.0)); }, "REAL:50"},
        {"many names added after it, then set again",
         [](CMapStringToRpnData &m) {
             for (int i = 0; i < 5000; ++i)
                 m.SetAt(QStringLiteral("n%1").arg(i), CRpnData(double(i)));
             m.SetAt(QStringLiteral("q"), CRpnData(7.0));
         },
         "REAL:70"},
    };
    CEquationTree tree;
    tree.m_freeVariables = 1; // the host gives its names later
    tree.GetVariables()->SetAt(QStringLiteral("p"), CRpnData(1.0));
    ASSERT_EQ(tree.Compile(QStringLiteral("q * 10")), 1);
    for (const Step &step : steps) {
        step.change(*tree.GetVariables());
        CRpnData value;
        tree.Run(value);
        EXPECT_EQ(Describe(value), step.expect) << step.what;
    }
}

// A write after the host moved the entries lands in the entry of the name.
TEST(MainVariables, WritesFollowMovedEntries)
{
    CEquationTree tree;
    tree.m_freeVariables = 1;
    CMapStringToRpnData &main = *tree.GetVariables();
    ASSERT_EQ(tree.Compile(QStringLiteral("b = b + 1")), 1);
    main.SetAt(QStringLiteral("a"), CRpnData(100.0));
    main.SetAt(QStringLiteral("b"), CRpnData(1.0));
    tree.Run();
    main.RemoveKey(QStringLiteral("a"));
    tree.Run();
    main.SetAt(QStringLiteral("c"), CRpnData(7.0));
    tree.Run();
    CRpnData a, b, c;
    EXPECT_FALSE(main.Lookup(QStringLiteral("a"), a));
    ASSERT_TRUE(main.Lookup(QStringLiteral("b"), b));
    ASSERT_TRUE(main.Lookup(QStringLiteral("c"), c));
    EXPECT_EQ(Describe(b), "REAL:4");
    EXPECT_EQ(Describe(c), "REAL:7");
    EXPECT_EQ(main.GetCount(), 2);
}

// The names a run made are listed afterwards in the order they were first set.
TEST(MainVariables, ListedByNameAfterTheRun)
{
    CEquationTree tree;
    ASSERT_EQ(tree.Compile(QStringLiteral("count = 0; while (count < 5) { count++; last = count * 2 }; note = \"t\"")),
              1);
    tree.Run();
    const CMapStringToRpnData &main = *tree.GetVariables();
    ASSERT_EQ(main.GetCount(), 3);
    const char *names[] = {"count", "last", "note"};
    const char *values[] = {"REAL:5", "REAL:10", "STRING:t"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(main.GetKeyAt(i), QString::fromLatin1(names[i]));
        EXPECT_EQ(Describe(main.GetValueAt(i)), values[i]) << names[i];
    }
}

// Reading a variable leaves no holder of its value behind, so that a text or
// an array read before is still changed where it lies afterwards.
TEST(MainVariables, ReadingTakesNoLastingShare)
{
    const struct {
        const char *setup;
        const char *reads;
    } cases[] = {
        {"v = \"a\" + \"b\"", "n = v == \"ab\"; m = v + \"c\""},
        {"v = \"a\" + \"b\"", "i = 0; while (i < 3) { x = v + v; i++ }"},
        {"v = {1, 2} + 1", "x = v[0] + v[1]; y = v[0] < v[1]"},
        {"v = {1, {2}}", "x = v[1][0]; v; 0"},
        {"v = \"abc\"", "x = v[1]; if (v == \"abc\") { y = 1 }"},
    };
    for (const auto &c : cases) {
        CEquationTree tree;
        ASSERT_EQ(tree.Compile(QString::fromLatin1(c.setup)), 1) << c.setup;
        tree.Run();
        // A new text drops the nodes of the old one, and whatever they held.
        ASSERT_EQ(tree.Compile(QStringLiteral("0")), 1);
        tree.Run();
        const int before = tree.GetVariables()->Find(QStringLiteral("v"))->GetRefs();
        ASSERT_EQ(tree.Compile(QString::fromLatin1(c.reads)), 1) << c.reads;
        tree.Run();
        const CRpnData *v = tree.GetVariables()->Find(QStringLiteral("v"));
        ASSERT_NE(v, nullptr) << c.reads;
        EXPECT_EQ(v->GetRefs(), before) << c.reads;
    }
}

TEST(MainVariables, TenThousandInOneScript)
{
    constexpr int n = 10000;
    QString text;
    for (int i = 0; i < n; ++i)
        text += QStringLiteral("v%1 = %1\n").arg(i);
    text += QStringLiteral("total = v0 + v9999 + v5000");
    CEquationTree tree;
    ASSERT_EQ(tree.Compile(text), 1);
    ASSERT_EQ(tree.Run(), 1);
    const CMapStringToRpnData &main = *tree.GetVariables();
    EXPECT_EQ(main.GetCount(), n + 1);
    CRpnData v;
    ASSERT_TRUE(main.Lookup(QStringLiteral("total"), v));
    EXPECT_EQ(Describe(v), "REAL:14999");
    ASSERT_TRUE(main.Lookup(QStringLiteral("v1234"), v));
    EXPECT_EQ(Describe(v), "REAL:1234");
    EXPECT_EQ(main.GetKeyAt(4321), QStringLiteral("v4321"));
}

// With names compared without case, a name of the body meets its parameter
// whatever case it is written in.
TEST(CallFrames, NamesWithoutCase)
{
    CEquationTree tree;
    tree.m_caseSensitiveNames = 0;
    EXPECT_EQ(Calculate("function f(Abc) { ABC = abc + 1; return aBc * 2 }; f(3)", &tree), "REAL:8");
}

// Names that a call makes while it runs (a text evaluated at run time, a
// host) live beside the slots, and go with the call.
TEST(CallFrames, NamesMadeAtRunTime)
{
    CEquationTree tree;
    ASSERT_EQ(tree.Compile(QStringLiteral("function f(a) { b = a }; 0")), 1);
    CRpnUserFunction *f = tree.FindFunction(QStringLiteral("f"));
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(f->SlotOf(QStringLiteral("a")), 0);
    ASSERT_GE(f->SlotOf(QStringLiteral("b")), 1);
    EXPECT_EQ(f->SlotOf(QStringLiteral("zz")), -1);

    CRpnCallFrame *frame = f->TakeFrame();
    EXPECT_EQ(frame->Find(QStringLiteral("b")), nullptr);
    frame->Set(QStringLiteral("zz"), CRpnData(3.0));
    frame->Set(QStringLiteral("b"), CRpnData(2.0));
    ASSERT_NE(frame->Find(QStringLiteral("zz")), nullptr);
    EXPECT_EQ(Describe(*frame->Find(QStringLiteral("zz"))), "REAL:3");
    ASSERT_NE(frame->Slot(f->SlotOf(QStringLiteral("b"))), nullptr);
    EXPECT_EQ(Describe(*frame->Slot(f->SlotOf(QStringLiteral("b")))), "REAL:2");
    f->GiveBackFrame(frame);

    CRpnCallFrame *again = f->TakeFrame();
    EXPECT_EQ(again, frame); // the spare frame serves again
    EXPECT_EQ(again->Find(QStringLiteral("zz")), nullptr);
    EXPECT_EQ(again->Find(QStringLiteral("b")), nullptr);
    f->GiveBackFrame(again);
}

// Outside a call the tree's own lookup by name sees and makes main variables.
TEST(MainVariables, FoundAndSetByName)
{
    CEquationTree tree;
    tree.m_freeVariables = 1;
    ASSERT_EQ(tree.Compile(QStringLiteral("n * 2")), 1);
    EXPECT_EQ(tree.FindVariable(QStringLiteral("n")), nullptr);
    EXPECT_TRUE(tree.SetVariable(QStringLiteral("n"), CRpnData(4.0)));
    ASSERT_NE(tree.FindVariable(QStringLiteral("n")), nullptr);
    CRpnData value;
    tree.Run(value);
    EXPECT_EQ(Describe(value), "REAL:8");
}

// A series over a bound column takes the node tree row by row for user
// functions (the row's value as the argument; several statements and a
// return alike) and for choices, whose branches may be of any kind.
TEST(CallFrames, SeriesThroughTheTree)
{
    const double x[] = {-0.5, 1.0, 2.0};
    struct Case
    {
        const char *text;
        double expect[3];
    };
    const Case cases[] = {
        {"function f(t) { return t*t+1 }; f(x)", {1.25, 2.0, 5.0}},
        {"function f(t) { return t*t+1 }; f(x) + 0", {1.25, 2.0, 5.0}},
        {"function g(t) { u = t * 3; if (u > 2) { return u }; return -u }; g(x)", {1.5, 3.0, 6.0}},
        {"iif(x > 1, x*2, 1-x)", {1.5, 0.0, 4.0}},
        {"iif(x > 1, \"a\", {x})", {-0.5, 1.0, 0.0}},
        {"function h(t) { if (t < 0) { return -t }; if (t > 1.5) { return h(t - 1) * 2 }; return t }; h(x) * 2",
         {1.0, 2.0, 4.0}},
    };
    for (const Case &c : cases) {
        CEquationTree tree;
        tree.BindColumn(QStringLiteral("x"), x, nullptr, 3);
        ASSERT_EQ(tree.Compile(QString::fromLatin1(c.text)), 1) << c.text;
        double values[3] = {};
        unsigned char valid[3] = {};
        EXPECT_EQ(tree.EvaluateSeries(values, valid, 0, 2), 3) << c.text;
        for (int r = 0; r < 3; ++r)
            EXPECT_DOUBLE_EQ(values[r], c.expect[r]) << c.text << " row " << r;
    }
}

// A saved and read tree gives its functions' variables their slots again.
TEST(CallFrames, ReadTreeRunsItsFunctions)
{
    CEquationTree tree;
    ASSERT_EQ(tree.Compile(QStringLiteral("function f(n) { k = n + 1; return k * k }; f(2) + f(3)")), 1);
    CRpnBuffer buffer(10);
    buffer.Reset(CBufferIO::ModeWrite, 64);
    ASSERT_TRUE(tree.Serialize(buffer));
    CRpnBuffer reading(10);
    reading.LoadForReading(buffer.ToByteArray());
    CEquationTree copy;
    ASSERT_TRUE(copy.Serialize(reading));
    CRpnData value;
    copy.Run(value);
    EXPECT_EQ(Describe(value), "REAL:25");
    CRpnUserFunction *f = copy.FindFunction(QStringLiteral("f"));
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(f->SlotOf(QStringLiteral("k")), 1);
}

} // namespace
