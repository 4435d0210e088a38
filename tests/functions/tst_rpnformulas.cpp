// Formulas as values: Formula, the arithmetic that builds formulas, Eval and
// its bindings, EvalM, EvalVars, ReplaceF and Replace on formulas, and the
// messages that come back from a formula's own tree.

#include "formula/rpntree.h"
#include "formulatest.h"
#include "functionstest.h"

#include <gtest/gtest.h>

namespace {

// The message of a failure inside a formula, as the calling tree holds it
// (reported at the call, which stands at the start of the text).
std::string Inner(const std::string &message, int row, int col)
{
    return FunctionMessage("Error: " + message + "  at row: " + std::to_string(row) + "   col = " +
                           std::to_string(col) + "  ");
}

std::string QuietFailure()
{
    return "E:@-1,-1";
}

TEST(RpnFormulas, FormulaKeepsTheExpressionUntilEval)
{
    ExpectCases({
        {"f = Formula(x*2); x = 3", "Eval(f)", "REAL:6"},
        {"f = Formula(x*2); x = 3; Eval(f); x = 4", "Eval(f)", "REAL:8"},
        {"x = 1; f = Formula(x); x = 7", "Eval(f)", "REAL:7"},
        {"f = Formula(x*2)", "f", "FORMULA:x*2"},
        // A text is compiled; its spacing is not kept.
        {"", "Formula(\"a  +  b*2\")", "FORMULA:a+b*2"},
        {"f = Formula(\"q - 1\"); q = 10", "Eval(f)", "REAL:9"},
        {"", "Formula()", ":"},
        {"", "Formula(\"1+\")", Inner(Message(43031), 1, 1)},
        // The operand is only looked at: the division happens at Eval.
        {"f = Formula(1/0)", "TypeName(f)", "STRING:FORMULA"},
        {"f = Formula(x)", "IsEmpty(f)", "INT:0"},
        {"", "IsEmpty(Formula())", "INT:1"},
        // A formula of a formula call is that formula.
        {"", "Formula(Formula(a+1))", "FORMULA:a+1"},
        {"", "Eval(5)", "REAL:5"},
    });
}

TEST(RpnFormulas, OperatorsBuildFormulasWithNeededParenthesesOnly)
{
    ExpectCases({
        {"f = Formula(x*2)", "f + 1", "FORMULA:x*2+1"},
        {"f = Formula(x*2); g = f + 1; x = 5", "Eval(g)", "REAL:11"},
        {"f = Formula(a+b)", "f*3", "FORMULA:(a+b)*3"},
        {"f = Formula(a-b)", "10 - f", "FORMULA:10-(a-b)"},
        {"f = Formula(a-b)", "f - 10", "FORMULA:a-b-10"},
        {"f = Formula(a+b)", "-f", "FORMULA:-(a+b)"},
        {"f = Formula(a); g = Formula(b)", "f/g", "FORMULA:a/b"},
        {"f = Formula(a); g = Formula(b); h = f/g; a = 6; b = 3", "Eval(h)", "REAL:2"},
        // Assignments store the formula itself.
        {"f = Formula(a); h = f", "TypeName(h)", "STRING:FORMULA"},
    });
}

TEST(RpnFormulas, EvalBindsNamesForOneRun)
{
    ExpectCases({
        {"f = Formula(x*y)", "Eval(f, \"x\", 2, \"y\", 5)", "REAL:10"},
        // A name without a binding is read as the formula reads it.
        {"f = Formula(x*y); x = 100; y = 3", "Eval(f, \"x\", 2)", "REAL:6"},
        // The binding does not reach the caller's variable.
        {"f = Formula(x*y); x = 100", "Eval(f, \"x\", 2, \"y\", 1) + x", "REAL:102"},
        {"f = Formula(x*2)", "Eval(f, x, 4)", "REAL:8"},
        {"f = Formula(x*2); x = 1", "Eval(f, \"X\", 4)", "REAL:2"},
        {"d = Dictionary(); Dict_Set(d, \"x\", 3); Dict_Set(d, \"y\", 4); f = Formula(x*y)", "Eval(f, d)",
         "REAL:12"},
        {"", "Eval(\"2*3\")", "REAL:6"},
        {"", "Eval(\"u+v\", \"u\", 1, \"v\", 2)", "REAL:3"},
        {"", "Eval(\"1+\")", Inner(Message(43031), 1, 1)},
        {"f = Formula(x)", "Eval(f, \"x\")", FunctionMessage("Eval is missing its parameter 3.")},
        {"f = Formula(x)", "Eval(f, 5)", FunctionMessage("Eval is missing its parameter 3.")},
    });
}

TEST(RpnFormulas, ReplaceSubstitutesWholeVariables)
{
    ExpectCases({
        {"", "Replace(Formula(a+b), \"a\", Formula(c))", "FORMULA:c+b"},
        {"", "Replace(\"ab+b\", \"b\", 2)", "STRING:a2+2"},
        {"", "ReplaceF(\"ab+b\", \"b\", 2)", "FORMULA:ab+2"},
        // Names match in any case; the new part is grouped where it must be.
        {"f = Formula(a*b)", "Replace(f, \"A\", \"c+d\")", "FORMULA:(c+d)*b"},
        {"f = Formula(a*b); g = Replace(f, \"a\", 2)", "f", "FORMULA:a*b"},
        // Pair by pair: the second pair sees what the first made.
        {"f = ReplaceF(Formula(a*b), a, 2, b, a); a = 5", "f", "FORMULA:2*a"},
        {"f = ReplaceF(Formula(a*b), a, 2, b, a); a = 5", "Eval(f)", "REAL:10"},
        {"", "ReplaceF(Formula(a), \"a\", 2.5)", "FORMULA:2.5"},
        {"", "ReplaceF(Formula(a+b), \"a\", \"\")", "FORMULA:NULL+b"},
        {"", "ReplaceF(Formula(a), \"a\", \"1+\")", Inner(Message(43031), 1, 1)},
        {"", "ReplaceF(5, \"a\", 1)", QuietFailure()},
        {"f = Formula(a+b)", "ReplaceF(f, \"a\")", FunctionMessage("ReplaceF is missing its parameter 3.")},
        {"f = Formula(a+b)", "Replace(f, \"a\")", FunctionMessage("Replace is missing its parameter 3.")},
    });
}

TEST(RpnFormulas, EvalVarsAndEvalM)
{
    ExpectCases({
        {"", "EvalVars(\"x*y\", \"x\")", FunctionMessage("Invalid variable \"y\"  in formula: x*y ")},
        {"x = 2; y = 3", "EvalVars(Formula(x*y), x, y)", "REAL:6"},
        {"x = 2; y = 3", "EvalVars(Formula(x*y), {\"x\", \"y\"})", "REAL:6"},
        {"x = 2", "EvalVars(Formula(x*pi), \"x\") > 6.28", "REAL:1"},
        {"", "EvalVars(7)", QuietFailure()},
        // A marked name is read in the caller's scope: here the function's x.
        {"", "function g(f, x) { return EvalM(f, x) }\nf = Formula(x*10); x = 1\ng(f, 5)", "ARRAY:{x*10,1,50}"},
        {"", "function g(f, x) { return EvalM(f) }\nf = Formula(x*10); x = 1\ng(f, 5)", "ARRAY:{x*10,1,10}"},
        {"x = 3", "EvalM(\"x+1\")", "REAL:4"},
        {"", "EvalM(5)", QuietFailure()},
    });
}

// A formula that fails when it runs: the caller gets one message with the
// row and column inside the formula, and stops there.
TEST(RpnFormulas, RunFailuresComeBackToTheCaller)
{
    CEquationTree tree;
    ASSERT_EQ(tree.Compile(QStringLiteral("f = Formula(1/0)")), 1);
    ASSERT_EQ(tree.Run(), 1);
    // Building the formula left no error behind.
    EXPECT_FALSE(tree.HasError());

    ASSERT_EQ(tree.Compile(QStringLiteral("y = 1\nEval(f)\ny = 2")), 1);
    CRpnData value;
    EXPECT_EQ(tree.Run(value), 0);
    const QString message = tree.GetErrorMessage();
    EXPECT_TRUE(message.startsWith(QStringLiteral("Error: "))) << message;
    EXPECT_TRUE(message.contains(GetMessageText(41655).section(u'%', 0, 0))) << message;
    EXPECT_TRUE(message.endsWith(QStringLiteral("  at row: 1   col = 13  "))) << message;
    EXPECT_EQ(tree.GetErrorRow(), 2);
    EXPECT_EQ(tree.GetVariables()->Find(QStringLiteral("y"))->GetDouble(), 1.0);

    // In throwing mode the caller throws with the same text.
    CEquationTree throwing;
    throwing.throwOnError = 1;
    ASSERT_EQ(throwing.Compile(QStringLiteral("f = Formula(1/0)\nEval(f)")), 1);
    try {
        throwing.Run(value);
        ADD_FAILURE() << "no exception";
    } catch (const CRpnException &e) {
        EXPECT_EQ(e.message, message);
    }
}

// Formulas are independent values: copies do not share the tree, and the
// text of a formula compiles back to a formula of the same value.
TEST(RpnFormulas, TextOfAFormulaCompilesBack)
{
    const char *const sources[] = {"Formula(a-(b-c))", "Formula(a+b)*Formula(a-b)", "Formula(2^(a+1))/4",
                                   "ReplaceF(Formula(a*b+c), b, \"b-a\")", "-Formula(a)+1"};
    for (const char *source : sources) {
        CEquationTree tree;
        tree.SetVariable(QStringLiteral("a"), CRpnData(3.0));
        tree.SetVariable(QStringLiteral("b"), CRpnData(5.0));
        tree.SetVariable(QStringLiteral("c"), CRpnData(7.0));
        const CRpnData f = Value(source, &tree);
        ASSERT_TRUE(f.IsFormula()) << source;
        const QString text = f.GetText();
        CEquationTree again;
        again.SetVariables(tree.GetVariablesValue());
        ASSERT_EQ(again.Compile(text), 1) << text;
        CRpnData value;
        ASSERT_EQ(again.Run(value), 1) << text;
        EXPECT_EQ(value.GetDouble(), f.GetDouble()) << source << " as " << text;
    }
}

} // namespace

namespace {

// A host that knows y (10) and keeps the other names in the tree's main
// dictionary, which it gets as its first run pointer.
void hostGetter(CRpnData &result, int, int, void *runData1, void *, CRpnNode *, const QString &name, int &found)
{
    if (name == QStringLiteral("y")) {
        result.SetDouble(10.0);
        return;
    }
    const CRpnData *value = static_cast<CEquationTree *>(runData1)->GetVariables()->Find(name);
    if (value)
        result = *value;
    else
        found = 0;
}

// Bindings come before the host's getter, which still answers for the
// names that are not bound.
TEST(RpnFormulas, BindingsGoBeforeTheHostsGetter)
{
    CEquationTree tree;
    tree.SetVariableAccess(hostGetter, nullptr);
    tree.m_runData1 = &tree;
    auto run = [&tree](const char *text, std::string &out) {
        CRpnData value;
        if (tree.Compile(QString::fromUtf8(text)) != 1 || tree.Run(value) != 1)
            return false;
        out = Describe(value);
        return true;
    };
    std::string out;
    ASSERT_TRUE(run("f = Formula(x*y)", out)) << tree.GetErrorMessage();
    ASSERT_TRUE(run("Eval(f, \"x\", 3)", out)) << tree.GetErrorMessage();
    EXPECT_EQ(out, "REAL:30");
    ASSERT_TRUE(run("function g(f, x) { return EvalM(f, x) }\ng(f, 4)", out)) << tree.GetErrorMessage();
    EXPECT_EQ(out, "REAL:40");
    // Unbound, x is a name the host does not know.
    tree.ResetError();
    EXPECT_FALSE(run("Eval(f)", out));
    EXPECT_TRUE(tree.GetErrorMessage().startsWith(QStringLiteral("Error: "))) << tree.GetErrorMessage();
    EXPECT_TRUE(tree.GetErrorMessage().contains(QStringLiteral("x"))) << tree.GetErrorMessage();
}

} // namespace
