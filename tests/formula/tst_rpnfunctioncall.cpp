// Calls of script functions: arguments go straight into the call's frame,
// frames are kept for the next call of the same depth, a body on plain
// numbers runs as a row of steps, and so does any other body that ends in
// `return` (the ordinary way, on any values).  Each script is compiled once and run
// twice, so that what one run leaves behind (a frame not emptied, a depth
// not counted back) shows in the second.

#include "formulatest.h"

#include "formula/rpnexception.h"
#include "formula/rpntree.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

namespace {

struct CallCase
{
    const char *name;
    const char *text;
    const char *expect; // Describe of the value, or the start of the error ("E41655@1,")
};

void PrintTo(const CallCase &c, std::ostream *os)
{
    *os << c.name;
}

std::string errorOf(const CEquationTree &tree)
{
    char text[64];
    std::snprintf(text, sizeof text, "E%d@%d,%d", MessageIdOf(tree.errorText), int(tree.errorRow),
                  int(tree.errorCol));
    return text;
}

class CallScripts : public ::testing::TestWithParam<CallCase>
{
};

TEST_P(CallScripts, GiveTheSameInEveryRun)
{
    const CallCase &c = GetParam();
    CEquationTree tree;
    ASSERT_TRUE(tree.Compile(QString::fromUtf8(c.text), nullptr, true)) << errorOf(tree);
    for (int run = 1; run <= 2; ++run) {
        tree.ResetError();
        CRpnData value;
        const int status = tree.Run(value);
        const std::string got = status == 1 && !tree.HasError() ? Describe(value) : errorOf(tree);
        if (c.expect[0] == 'E')
            EXPECT_EQ(got.substr(0, std::strlen(c.expect)), c.expect) << "run " << run << ": " << c.text;
        else
            EXPECT_EQ(got, c.expect) << "run " << run << ": " << c.text;
        EXPECT_EQ(tree.GetCallFrame(), nullptr) << "run " << run;
    }
}

// `f` names a function on plain numbers (the short way), `g` one that
// assigns a local and so takes the ordinary way: both must agree.
const CallCase kCalls[] = {
    // An argument that calls the same function takes a frame of its own
    // while the outer call's frame is being filled.
    {"argument_calls_same_function_short", "function f(a, b) { return a * 10 + b }; f(f(1, 2), f(3, 4))",
     "REAL:154"},
    {"argument_calls_same_function_ordinary",
     "function g(a, b) { t = a * 10; return t + b }; g(g(1, 2), g(g(0, 3), 4))", "REAL:154"},
    {"arguments_left_to_right", "k = 1; function g(a, b) { t = a; return t * 10 + b }; g(k++, k++) + k",
     "ARRAY:{1,15}"},
    // Extra arguments are evaluated and dropped; a missing one is empty.
    {"extra_argument_evaluated", "k = 0; function g(a) { t = a; return t }; {g(1, k++), k}", "ARRAY:{0,{1,1}}"},
    {"missing_argument_empty", "function g(a, b) { t = a; return IsEmpty(b) }; g(1)", "INT:1"},
    {"missing_argument_default_short", "function f(a, b = 3) { return a * b }; f(2) + f(2, 4)", "REAL:14"},
    // By reference: a parameter past the eighth, and one that got no argument.
    {"by_reference_ninth",
     "x = 0; function g(a, b, c, d, e, f, h, i, _ref j) { j = a + i; return 0 }; g(1, 2, 3, 4, 5, 6, 7, 8, x); x",
     "ARRAY:{0,0,9}"},
    {"by_reference_not_given", "x = 1; function g(a, _ref b) { b = 3; return a }; {g(2), x}", "ARRAY:{1,{2,1}}"},
    // (The first statement's value is the array itself, so it shows the appends.)
    {"by_reference_array_kept", "a = {1, 2}; function g(_ref v, w) { v[] = w; return 0 }; g(a, 3); g(a, 4); a",
     "ARRAY:{{1,2,3,4},0,0,{1,2,3,4}}"},
    // The limit of nested calls, on both ways: 200 calls nest, 201 do not.
    {"depth_at_limit_short", "function f(n) { if (n == 0) { return 0 }; return f(n - 1) + 1 }; f(199)",
     "REAL:199"},
    {"depth_over_limit_short", "function f(n) { if (n == 0) { return 0 }; return f(n - 1) + 1 }; f(200)",
     "E43300@"},
    {"depth_at_limit_ordinary", "function g(n) { if (n == 0) { return 0 }; t = g(n - 1); return t + 1 }; g(199)",
     "REAL:199"},
    {"depth_over_limit_ordinary", "function g(n) { if (n == 0) { return 0 }; t = g(n - 1); return t + 1 }; g(200)",
     "E43300@"},
    // An error deep down is reported where it happened, in the body.
    {"error_deep_short", "function f(n) { if (n == 0) { return 1 / n }; return f(n - 1) }; f(50)", "E41655@1,39"},
    {"error_deep_ordinary", "function g(n) { if (n == 0) { return 1 / n }; t = n; return g(n - 1) }; g(50)",
     "E41655@1,39"},
    {"unset_local_deep",
     "function g(n) { if (n < 0) { q = 1 }; if (n == 0) { return q }; t = n; return g(n - 1) }; g(5)", "E41830@"},
    // Each level has its locals; the main scope only through its name.
    {"locals_per_level", "function g(n) { t = n; if (n > 0) { g(n - 1) }; return t }; g(7)", "REAL:7"},
    {"main_counted_from_every_level",
     "c = 0; function g(n) { MainVariables[\"c\"] = MainVariables[\"c\"] + 1; if (n > 0) { g(n - 1) }; return 0 }; "
     "g(9); c",
     "ARRAY:{0,0,10}"},
    {"main_name_is_local_inside", "t = 5; function g(n) { t = n; return t }; {g(1), t}", "ARRAY:{5,{1,5}}"},
    // Branches laid out as steps: nested `if`, `if` without `else` inside
    // an `if` with one, and a chain of `else`.
    {"nested_if_steps",
     "function f(t) { if (t > 0) { if (t > 5) { return 2 } } else { return -1 }; return 1 }; "
     "f(-3) + f(3) * 10 + f(8) * 100",
     "REAL:209"},
    {"else_chain_steps",
     "function f(t) { if (t < 0) { return -1 } else { if (t == 0) { return 0 } else { return 1 } }; return 7 }; "
     "f(-5) + f(0) * 10 + f(5) * 100",
     "REAL:99"},
    // Locals on numbers stay on the short way: set in a branch, read later.
    {"locals_short",
     "function f(n) { t = n * 2; if (t > 4) { u = t - 1 } else { u = t + 1 }; return u * 10 }; f(1) + f(3) * 100",
     "REAL:5030"},
    {"local_of_a_call_as_main_value", "function f(n) { t = n + 1; return t }; x = f(f(1)); x", "ARRAY:{3,3}"},
    // A local read before it was set: the short way gives up, the ordinary
    // way reports it.
    {"local_unset_short", "function f(n) { if (n > 0) { t = n }; return t + 1 }; f(1) + f(0)", "E41830@"},
    // A local that gets an array: the call is done again the ordinary way.
    {"local_gets_array", "function f(n, s) { t = n + s; return t }; f(1, 2) + f(1, {2})", "ARRAY:{6}"},
    // A body on numbers that meets a text falls back to the ordinary way.
    {"short_way_gives_up_deep",
     "function f(n, s) { if (n == 0) { return s }; return f(n - 1, s) + 1 }; f(3, 2) + f(3, \"2\")", "REAL:10"},
    // Bodies with texts run the ordinary way, laid out as steps: branches,
    // a condition on a text, a `return` in a loop, an `if` without braces.
    {"text_body_recursion",
     "function g(n) { s = \"x\"; if (n < 2) { return n }; return g(n - 1) + g(n - 2) }; g(15)", "REAL:610"},
    {"text_body_nested_if",
     "function g(t) { s = \"\"; if (t > 0) { if (t > 5) { return \"big\" } } else { return \"neg\" }; "
     "return \"small\" }; g(-3) + g(3) + g(8)",
     "STRING:negsmallbig"},
    {"text_condition",
     "function g(s) { if (s == \"a\") { return 1 } else { if (s == \"b\") { return 2 } }; return 3 }; "
     "g(\"a\") * 100 + g(\"b\") * 10 + g(\"c\")",
     "REAL:123"},
    {"return_from_loop_in_body",
     "function g(n) { s = \"x\"; i = 0; while (i < 10) { if (i == n) { return i * 2 }; i++ }; return s }; "
     "{g(3), g(20)}",
     "ARRAY:{6,x}"},
    {"if_without_braces", "function g(n) { s = \"\"; if (n > 0) return s + \"p\"; return s + \"n\" }; g(1) + g(0)",
     "STRING:pn"},
    // An argument that is an operation goes into its slot as a plain
    // number; a written one keeps its display exponent.
    {"argument_exponent_kept", "function g(a) { s = \"\"; return a }; {g(2k), g(2k + 0)}", "ARRAY:{2k,2000}"},
    // A statement after a `return` in a branch does not run; the one after
    // the `if` runs when the branch is not taken.
    {"after_return_not_run",
     "k = 0; function g(n) { s = \"\"; if (n) { return 1; MainVariables[\"k\"] = 5 }; "
     "MainVariables[\"k\"] = MainVariables[\"k\"] + 1; return 2 }; {g(1), g(0), g(0), k}",
     "ARRAY:{0,{1,2,2,2}}"},
    // Globals only through their name; a local named like a global stays local.
    {"globals_from_text_body",
     "c = 10; function g(n) { s = \"x\"; c = n; return MainVariables[\"c\"] + c }; {g(1), c}",
     "ARRAY:{10,{11,10}}"},
    // Arguments by value: a parameter given a new value leaves the caller's
    // variable as it was; by reference the variable takes it, also when the
    // body fails afterwards.
    {"argument_by_value",
     "a = {1, 2}; function g(v) { s = \"x\"; v = {9}; return v }; {g(a), a}", "ARRAY:{{1,2},{{9},{1,2}}}"},
    {"by_reference_kept_on_error",
     "x = 1; function g(_ref v) { s = \"\"; v = 5; return 1 / 0 }; Catch(g(x)); x", "ARRAY:{1,,5}"},
    // A call of a function that cannot take the short way, inside an
    // expression on numbers: the expression goes the ordinary way from then
    // on (the second run), with the same value.
    {"ordinary_call_in_local_store",
     "function g(n) { s = \"x\"; return n * 2 }; function f(n) { t = g(n) + 1; return t * 10 }; f(1) + f(2)",
     "REAL:80"},
    {"ordinary_call_in_iif", "function g(n) { s = \"x\"; return n }; function f(c) { return iif(c, g(5) - 1, 7) }; "
     "f(1) * 10 + f(0)",
     "REAL:47"},
    {"gave_up_call_as_argument",
     "function f(n, s) { return n + s }; function h(a, b) { return a * b }; {h(f(1, 2), 2), h(f(1, {2}), 2), "
     "h(f(1, 2), 3)}",
     "ARRAY:{6,{6},9}"},
    // Depth and errors deep down on the ordinary way with a text in the body.
    {"depth_at_limit_text", "function g(n) { s = \"x\"; if (n == 0) { return 0 }; return g(n - 1) + 1 }; g(199)",
     "REAL:199"},
    {"depth_over_limit_text", "function g(n) { s = \"x\"; if (n == 0) { return 0 }; return g(n - 1) + 1 }; g(200)",
     "E43300@1,58"},
    {"error_deep_text", "function g(n) { s = \"x\"; if (n == 0) { return 1 / n }; return g(n - 1) }; g(50)",
     "E41655@1,48"},
    {"error_in_condition_deep",
     "function g(n) { s = \"x\"; if (n == 0 && 1 / n) { return 0 }; return g(n - 1) }; g(9)", "E41655@1,41"},
};

INSTANTIATE_TEST_SUITE_P(Calls, CallScripts, ::testing::ValuesIn(kCalls),
                         [](const auto &info) { return std::string(info.param.name); });

// A tree compiled again gets new functions of the same names: each run
// calls the body of its own compile, with frames of its size.
TEST(CallPath, AFunctionCompiledAgainRunsItsNewBody)
{
    const CallCase steps[] = {
        {"one_parameter", "function f(a) { return a + 1 }; f(2)", "REAL:3"},
        {"more_locals", "function f(a, b, c) { x = a; y = b * c; return x + y }; f(1, 2, 3)", "REAL:7"},
        {"fewer_again", "function f(a) { return a * 10 }; f(f(2))", "REAL:200"},
        {"array_local", "function f() { t = {1, 2}; return t }; f()", "ARRAY:{1,2}"},
        {"by_reference_now", "x = 1; function f(_ref a) { a = a + 4; return 0 }; f(x); x", "ARRAY:{1,0,5}"},
    };
    CEquationTree tree;
    for (const CallCase &step : steps) {
        ASSERT_TRUE(tree.Compile(QString::fromUtf8(step.text), nullptr, true)) << step.name;
        for (int run = 1; run <= 2; ++run) {
            CRpnData value;
            ASSERT_EQ(tree.Run(value), 1) << step.name << " " << errorOf(tree);
            EXPECT_EQ(Describe(value), step.expect) << step.name << " run " << run;
        }
    }
}

// A run that logs its assignments logs each store of a local once, on
// whichever way the call ran.
TEST(CallPath, LoggedStoresOfLocalsAppearOnce)
{
    const struct
    {
        const char *text;
        QStringList lines;
    } cases[] = {
        {"function f(n) { t = n * 2; return t }; f(3) + f(4)", {"t = 6", "t = 8"}},
        {"function f(n) { if (n > 1) { t = n } else { t = 0 }; return t }; f(2) + f(1)", {"t = 2", "t = 0"}},
        // (A logged array shows as its first element.)
        {"function f(n, s) { t = n + s; return t }; f(1, 2) + f(1, {2})", {"t = 3", "t = 3"}},
    };
    for (const auto &c : cases) {
        CEquationTree tree;
        QStringList lines;
        tree.Environment().SetLogWindow([&lines](const QString &line) { lines << line; });
        ASSERT_TRUE(tree.Compile(QString::fromUtf8(c.text), nullptr, true)) << errorOf(tree);
        CRpnData value;
        ASSERT_EQ(tree.Run(value), 1) << c.text << " " << errorOf(tree);
        EXPECT_EQ(lines, c.lines) << c.text << ": " << lines.join(u'|');
    }
}

// A computed column whose formula calls a function with a text in its body:
// each row calls it the ordinary way with that row's x; a row whose call
// fails is marked and the rows after it still count.
TEST(CallPath, AColumnComputedByAFunctionWithATextInItsBody)
{
    constexpr int kRows = 5;
    const double x[kRows] = {1.0, -2.0, 0.0, 4.0, 0.5};
    const unsigned char xValid[kRows] = {1, 1, 1, 1, 1};
    const struct
    {
        const char *text;
        double values[kRows];
        unsigned char valid[kRows];
    } cases[] = {
        {"function g(t) { s = \"r\"; if (t < 0) { return -t }; return t * 2 }; g(x)",
         {2.0, 2.0, 0.0, 8.0, 1.0},
         {1, 1, 1, 1, 1}},
        {"function g(t) { s = \"r\"; return 1 / t }; g(x) + 1", {2.0, 0.5, 0.0, 1.25, 3.0}, {1, 1, 0, 1, 1}},
        // Recursion in every row, and a local that is a text then a number.
        {"function g(t) { s = \"r\"; if (t < 1) { return 0 }; s = t; return g(t - 1) + s }; g(x)",
         {1.0, 0.0, 0.0, 10.0, 0.0},
         {1, 1, 1, 1, 1}},
    };
    for (const auto &c : cases) {
        CEquationTree tree;
        tree.BindColumn(QStringLiteral("x"), x, xValid, kRows);
        ASSERT_TRUE(tree.Compile(QString::fromUtf8(c.text), nullptr, true)) << c.text << " " << errorOf(tree);
        double values[kRows] = {};
        unsigned char valid[kRows] = {};
        tree.EvaluateSeries(values, valid, 0, kRows - 1);
        for (int r = 0; r < kRows; ++r) {
            EXPECT_EQ(int(valid[r]), int(c.valid[r])) << c.text << " row " << r;
            if (c.valid[r] == 1) {
                EXPECT_EQ(values[r], c.values[r]) << c.text << " row " << r;
            }
        }
        EXPECT_EQ(tree.GetCallFrame(), nullptr) << c.text;
    }
}

// In throwing mode an error deep in a recursion ends the run; the calls it
// unwound count no more, so the full depth is there for the next run.
TEST(CallPath, AnErrorThrownFromADeepCallLeavesTheTreeUsable)
{
    const char *const texts[] = {
        "function f(n) { if (n == 0) { return 1 / n }; return f(n - 1) }; function d(n) { if (n == 0) { return 0 }; "
        "return d(n - 1) + 1 }; if (MainVariables[\"deep\"]) { d(199) } else { f(150) }",
        "function f(n) { if (n == 0) { return 1 / n }; t = n; return f(n - 1) }; function d(n) { if (n == 0) { "
        "return 0 }; t = d(n - 1); return t + 1 }; if (MainVariables[\"deep\"]) { d(199) } else { f(150) }",
    };
    for (const char *text : texts) {
        CEquationTree tree;
        tree.throwOnError = 1;
        ASSERT_TRUE(tree.Compile(QString::fromUtf8(text), nullptr, true)) << errorOf(tree);
        for (int attempt = 0; attempt < 2; ++attempt) {
            // The call catches what its body raised (the run then fails
            // with the error in the tree); what comes out, it must be that error.
            tree.ResetError();
            int message = 0;
            try {
                CRpnData value;
                EXPECT_EQ(tree.Run(value), 0) << text;
                message = MessageIdOf(tree.errorText);
            } catch (const CRpnException &e) {
                message = MessageIdOf(e.message);
            }
            EXPECT_EQ(message, 41655) << text;
            EXPECT_EQ(tree.GetCallFrame(), nullptr) << text;
        }
        tree.ResetError();
        tree.SetVariable(QStringLiteral("deep"), CRpnData(1.0));
        CRpnData value;
        ASSERT_EQ(tree.Run(value), 1) << text << " " << errorOf(tree);
        EXPECT_EQ(Describe(value), "ARRAY:{199}") << text; // the value of the `if` block
    }
}

} // namespace
