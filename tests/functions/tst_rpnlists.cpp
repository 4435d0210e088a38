// hypot, min, max and sum: how their arguments are classified and read,
// their messages, and the kept behaviour of complex hypot.

#include "formula/rpndictionary.h"
#include "formula/rpntree.h"

#include "formulatest.h"
#include "functionstest.h"

#include <gtest/gtest.h>
#include <cmath>

namespace {

struct Case {
    const char *text;
    std::string expect;
};

// The fixed texts of the list functions: no source line, no token.
std::string textError(const char *text, int row, int col)
{
    return "E:" + std::string(text) + "@" + std::to_string(row) + "," + std::to_string(col);
}

const char *const kOnly = "If first parameter is an Array or Graph. It must be the only parameter.";

} // namespace

TEST(RpnLists, ValuesAndMessages)
{
    CEquationTree tree;
    tree.GetVariables()->SetAt(QStringLiteral("r"), RealBlock({3, -4, 12}));
    tree.GetVariables()->SetAt(QStringLiteral("g"), Empty(RPN_CURVE));
    tree.GetVariables()->SetAt(QStringLiteral("empty"), Empty(RPN_ARRAY));
    const std::vector<Case> cases = {
        // No numbers at all give 0.
        {"min()", "REAL:0"}, {"max()", "REAL:0"}, {"sum()", "REAL:0"}, {"hypot()", "REAL:0"},
        {"min(3, 1, 2)", "REAL:1"}, {"max(3, 1, 2)", "REAL:3"}, {"sum(1, 2, 3.5)", "REAL:6.5"},
        {"hypot(3, 4)", "REAL:5"}, {"hypot(r)", "REAL:13"}, {"sum(r)", "REAL:11"}, {"max(r)", "REAL:12"},
        {"min({4, 2, 8})", "REAL:2"}, {"sum({1, \"2\", 3})", "REAL:6"},
        // An empty array: null with good status.
        {"max({})", ":"}, {"sum(empty)", ":"}, {"IsEmpty(min(empty))", "INT:1"},
        // Numeric texts count as numbers, whole or not at all.
        {"sum(\"1.5\", 2)", "REAL:3.5"}, {"max(\"2k\", 3)", "REAL:2000"},
        {"sum(\"1.5x\", 2)", textError("Parameter 1 is not a valid number.", 1, 0)},
        {"min(1, \"\")", textError("Parameter 2 is not a valid number.", 1, 0)},
        {"x = 1\nsum(1, 2, NULL)", textError("Parameter 3 is not a valid number.", 2, 0)},
        {"sum({1, \"x\"})", textError("Cell 2 of the array is not a valid number.", 1, 0)},
        {"max({1, 2, {3}})", textError("Cell 3 of the array is not a valid number.", 1, 0)},
        // An array must be the only argument; a graph is never accepted.
        {"sum({1, 2}, 3)", textError(kOnly, 1, 0)}, {"max(3, {1, 2})", textError(kOnly, 1, 0)},
        {"sum(g)", textError("Invalid entry.", 1, 0)}, {"sum(g, 1)", textError(kOnly, 1, 0)},
        // A NaN is kept in first place only.
        {"min(1, mod(5, 0), 0.5)", "REAL:0.5"}, {"max(mod(5, 0), 1, 7) == 7", "INT:0"},
        {"max(1, mod(5, 0))", "REAL:1"},
        // Complex numbers: hypot keeps only the last; the others refuse.
        {"hypot(Complex(3, 0), 4)", "COMPLEX:4+0j"}, {"hypot(4, Complex(3, 0))", "COMPLEX:3+0j"},
        {"hypot({Complex(3, 0), 4, 2})", "COMPLEX:2+0j"},
        {"hypot({Complex(3, 0), \"x\"})", textError("Cell 2 of the array is not a valid number.", 1, 0)},
        {"hypot(Complex(3, 0), \"y\")", textError("Parameter 2 is not a valid number.", 1, 0)},
        {"max(Complex(1, 1), 2)", "E:" + RpnMessage(43217, {QStringLiteral("max")}).toStdString() + "@1,0"},
        {"sum({Complex(1, 1), 2})", "E:" + RpnMessage(43217, {QStringLiteral("sum")}).toStdString() + "@1,0"},
        // Many arguments: past the short lists kept on the stack.
        {"sum(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12)", "REAL:78"},
        {"max(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 0)", "REAL:18"},
        // A failing argument ends the call with its own message.
        {"sum(1, 1/0)", "E:" + RpnMessage(41655, {QStringLiteral("sum(1, 1/0)\n        ^")}).toStdString() + "@1,8"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(Eval(c.text, &tree), c.expect) << c.text;
}

TEST(RpnLists, MessagesNameNoFunctionButTheRefusalDoes)
{
    CEquationTree tree;
    Eval("sum({1, \"x\"})", &tree);
    EXPECT_TRUE(tree.GetErrorToken().isEmpty());
    EXPECT_TRUE(tree.GetErrorList().isEmpty());
    Eval("min(Complex(0, 1))", &tree);
    EXPECT_EQ(tree.GetErrorToken(), QStringLiteral("min"));
}

TEST(RpnLists, ComplexHypotIsThePrincipalRootOfTheLastSquare)
{
    // j squared is -1; its principal root is j again, whatever came before.
    for (const char *text : {"hypot(Complex(0, 1))", "hypot(Complex(5, 5), Complex(0, 1))", "hypot({Complex(0, 1)})"}) {
        const CRpnData v = Value(text);
        ASSERT_TRUE(v.IsComplex()) << text;
        EXPECT_NEAR(v.GetRealValue(), 0.0, 1e-15) << text;
        EXPECT_DOUBLE_EQ(v.GetImagValue(), 1.0) << text;
    }
    // -3 - 4j squared is -7 + 24j, whose principal root is 3 + 4j.
    const CRpnData v = Value("hypot(Complex(-3, -4))");
    EXPECT_DOUBLE_EQ(v.GetRealValue(), 3.0);
    EXPECT_DOUBLE_EQ(v.GetImagValue(), 4.0);
}
