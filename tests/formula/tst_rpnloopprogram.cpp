// Loops on plain numbers that run as a program of steps: each case runs
// twice, once as written and once with an inert text statement in the body,
// which keeps the loop on the node tree; both must give the same value, and
// the first must (or must not) have run as a program.

#include "formula/rpnstatements.h"
#include "formula/rpntree.h"
#include "formula/rpnuserfunction.h"

#include "formulatest.h"

#include <gtest/gtest.h>

namespace {

struct LoopCase
{
    const char *text; // `@` marks where the inert statement goes
    const char *expected;
    bool program;     // whether the loop as written runs as a program
};

// Whether any WHILE of the tree or of its functions ran as a program.
bool ranAsProgram(CEquationTree &tree)
{
    bool ran = false;
    const auto look = [&ran](CRpnNode *node) {
        if (node->IsWhile() && static_cast<CNode_WHILE *>(node)->RanAsProgram())
            ran = true;
        return 0;
    };
    WalkTree(tree.GetRoot(), look);
    for (CRpnUserFunction *f : tree.GetFunctions())
        WalkTree(f->m_body, look);
    return ran;
}

std::string run(const QString &text, bool *program)
{
    CEquationTree tree;
    const std::string value = Calculate(text, &tree);
    if (program)
        *program = ranAsProgram(tree);
    return value;
}

class LoopProgram : public testing::TestWithParam<LoopCase>
{
};

} // namespace

TEST_P(LoopProgram, GivesWhatTheNodeTreeGives)
{
    const LoopCase &c = GetParam();
    const QString text = QString::fromUtf8(c.text);
    bool program = false;
    const std::string fast = run(QString(text).replace(QLatin1Char('@'), QString()), &program);
    const std::string tree = run(QString(text).replace(QLatin1Char('@'), QStringLiteral("; \"\"")), nullptr);
    EXPECT_EQ(fast, c.expected);
    EXPECT_EQ(tree, c.expected);
    EXPECT_EQ(program, c.program);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, LoopProgram,
    testing::Values(
        LoopCase{"i = 0; s = 0; while (i < 5) { s = s + i; i++ @ }; s", "ARRAY:{0,0,0,10}", true},
        LoopCase{"i = 5; n = 0; while (i > 0) { n += i * i; i-- @ }; n", "ARRAY:{5,0,0,55}", true},
        // Never entered: the variables stay as they are.
        LoopCase{"i = 7; while (i < 3) { i++ @ }; i", "ARRAY:{7,,7}", false},
        // The loop's own limit of a million passes holds on the program too.
        LoopCase{"i = 0; while (i >= 0) { i++ @ }; i", "ARRAY:{0,0,1000000}", true},
        // 0 times anything is 0, even infinity, as the operator has it.
        LoopCase{"z = 1e308 * 10; x = 0; r = 1; i = 0; while (i < 1) { r = x * z; i++ @ }; r",
                 "ARRAY:{INF,0,1,0,0,0}", true},
        // A variable the first pass makes: the rest of the loop is a program.
        LoopCase{"i = 0; while (i < 4) { t = i * 2 - 1; i++ @ }; t", "ARRAY:{0,0,5}", true},
        LoopCase{"i = 0; p = 1; m = 0; while (i < 5) { p *= 2; m -= i % 3; n = -m; i++ @ }; {p, m, n}",
                 "ARRAY:{0,1,0,0,{32,-4,4}}", true},
        LoopCase{"i = 0; h = 0; while ((i + 1) <= 4) { h = h + i / 2; i += 1 @ }; h", "ARRAY:{0,0,0,3}", true},
        LoopCase{"function f(n) { s = 0; k = 0; while (k < n) { s += k; k++ @ }; return s }; f(10)",
                 "REAL:45", true},
        LoopCase{"c = 0; function g() { c = 0; while (c < pi) { c = c + 1 @ }; return c }; g()", "ARRAY:{0,4}", true},
        // What the program leaves to the node tree.
        LoopCase{"i = 0; d = 0; while (i < 2) { q = i / d; i++ @ }", "E41655@1,36", false},
        LoopCase{"i = 0; while (i < 4) { i++; i++ @ }; i", "ARRAY:{0,0,4}", false},
        LoopCase{"s = \"a\"; i = 0; while (i < 3) { s += \"b\"; i++ @ }; s", "ARRAY:{a,0,0,abbb}", false},
        LoopCase{"i = 0; while (i < 3) { v = 2k; i++ @ }; v", "ARRAY:{0,0,2k}", false},
        LoopCase{"i = 0; while (i < 3) { w = i; i++ @ }; w", "ARRAY:{0,0,2}", false},
        LoopCase{"i = 0; while (i < 3) { i = i + {1} @ }; i", "ARRAY:{0,0,{3}}", false},
        LoopCase{"i = 0; while (i != 3) { i++ @ }; i", "ARRAY:{0,0,3}", false},
        // A list is an array, even of one number.
        LoopCase{"i = 0; while (i < 3) { i = i + 1; j = {i} @ }; j", "ARRAY:{0,0,{3}}", false},
        // A number shown with its exponent is stored as a plain one.
        LoopCase{"v = 1k; i = 0; while (i < 2) { v = v + 1; i++ @ }; v", "ARRAY:{1k,0,0,1002}", true}));
