// Operators at run time: short cuts, division by zero, comparisons, bits,
// assignments with index chains into every kind, ++ and --, value semantics,
// and formulas as operands.

#include "formula/rpndictionary.h"
#include "formula/rpntree.h"

#include "formulatest.h"

#include <gtest/gtest.h>
#include <cmath>

namespace {

struct Case {
    const char *text;
    const char *expect;
};

void runCases(const std::vector<Case> &cases, CEquationTree *tree = nullptr)
{
    for (const Case &c : cases)
        EXPECT_EQ(Calculate(c.text, tree), c.expect) << c.text;
}

// `f()` sets the main variable n to 1 and gives 5: whether it ran shows.
const char *const kMarker = "n = 0; function f() { MainVariables[\"n\"] = 1; 5 };";

std::string withMarker(const char *text)
{
    return std::string(kMarker) + text;
}

} // namespace

TEST(RpnOperators, ShortCuts)
{
    const std::vector<Case> cases = {
        // A REAL zero on the left of * and && decides; so does a non-zero left of ||.
        {"0 * f(); n", "REAL:0"}, {"0.0 * f(); n", "REAL:0"}, {"0 && f(); n", "REAL:0"},
        {"1 || f(); n", "REAL:0"}, {"2 * f(); n", "REAL:1"}, {"0 || f(); n", "REAL:1"},
        // An INT zero takes no short cut.
        {"z = (1 == 2); z * f(); n", "REAL:1"}, {"z = (1 == 2); z && f(); n", "REAL:1"},
        // The left operand's value is the result.
        {"0 * f()", "REAL:0"}, {"1 || f()", "REAL:1"}, {"0 && f()", "REAL:0"}, {"7 || 0", "REAL:1"},
    };
    for (const Case &c : cases) {
        const std::string text = withMarker(c.text);
        const std::string got = Calculate(text.c_str());
        // The last element of the script's value is what the case is about.
        const auto comma = got.rfind(',');
        const std::string last = got.substr(comma + 1, got.size() - comma - 2);
        EXPECT_EQ("REAL:" + last, c.expect) << c.text << " gave " << got;
    }
    runCases({
        {"x = 5; 0 * (x = 1); x", "ARRAY:{5,0,5}"}, {"x = 5; 0.0 * (x = 1); x", "ARRAY:{5,0,5}"},
        {"x = 5; z = (1 == 2); z * (x = 1); x", "ARRAY:{5,0,0,1}"},
    });
}

TEST(RpnOperators, DivisionAndArithmeticOnKinds)
{
    runCases({
        {"1/0", "E41655@1,1"}, {"x = 1; x / (x - 1)", "E41655@1,9"}, {"5 % 0", "E41655@1,2"},
        {"{1,2}/0", "E41655@1,5"}, {"x = 1; x /= 0", "E41655@1,9"}, {"1/NULL", "E41655@1,1"},
        {"\"6\" / \"0\"", "E41655@1,4"},
        // Arrays never divide by zero: a zero divisor gives 0.
        {"{1,2}/{0,1}", "ARRAY:{0,2}"}, {"1.0/{1,0}", "ARRAY:{1,0}"},
        {"\"6\" - \"2\"", "REAL:4"}, {"\"6\" / \"2\"", "REAL:3"}, {"\"3\" + \"4\"", "STRING:34"},
        {"3.0 + \"4\"", "REAL:7"}, {"7.5 % 2", "REAL:1.5"}, {"{1,2} + 1", "ARRAY:{2,3}"},
        {"{1,2} * {3,4,5}", "ARRAY:{3,8}"}, {"-{1,2}", "ARRAY:{-1,-2}"}, {"!{0,2}", "ARRAY:{1,0}"},
        {"{1,2}^2", "ARRAY:{1,4}"}, {"(-8)^(1/3) == (-8)^(1/3)", "INT:0"},
    });
    // The message shows the source line and marks the operator.
    CEquationTree tree;
    EXPECT_EQ(Calculate("x = 2\ny = x / 0", &tree), "E41655@2,6");
    EXPECT_EQ(tree.GetErrorMessage(), RpnMessage(41655, {QStringLiteral("y = x / 0\n      ^")}));
    EXPECT_EQ(tree.GetErrorToken(), QStringLiteral("/"));
}

TEST(RpnOperators, ComparisonsLogicAndBits)
{
    runCases({
        {"{1,2} == {1,3}", "ARRAY:{1,0}"}, {"{1,2} != {1,3}", "ARRAY:{0,1}"}, {"{1,5} > 2", "ARRAY:{0,1}"},
        {"\"abc\" == \"ABC\"", "INT:1"}, {"0 == \"\"", "INT:1"}, {"0 == NULL", "INT:1"}, {"1 <> 2", "INT:1"},
        {"2 >= 2", "REAL:1"}, {"2 <= 1", "REAL:0"}, {"2 < 3", "REAL:1"},
        {"(0-1)^0.5 == (0-1)^0.5", "INT:0"}, {"!0", "REAL:1"}, {"NOT 3", "REAL:0"},
        {"1 AND 0", "REAL:0"}, {"0 OR 2", "REAL:1"},
        {"6 & 3", "REAL:2"}, {"6 | 3", "REAL:7"}, {"~5", "REAL:-6"}, {"2.995 & 3", "REAL:3"},
        {"1 << 31", "REAL:-2147483648"}, {"1 << 40", "REAL:0"}, {"1 << -1", "REAL:0"},
        {"-8 >> 1", "REAL:-4"}, {"-8 >> 40", "REAL:-1"}, {"8 >> 40", "REAL:0"},
        {"2 ** 10", "REAL:1024"}, {"pwr(-2, 2)", "REAL:4"}, {"mod(-7, 4)", "REAL:-3"},
        {"TypeName(1)", "STRING:REAL"}, {"TypeName(\"x\")", "STRING:STRING"}, {"TypeName({1})", "STRING:ARRAY"},
        {"TypeName(NULL)", "STRING:"}, {"TypeName(1 == 1)", "STRING:INT"}, {"IsEmpty({})", "INT:0"},
    });
    EXPECT_TRUE(std::isnan(CRpnData(QStringLiteral("x")).GetDouble() + std::fmod(5.0, 0.0)));
    CEquationTree tree;
    ASSERT_EQ(Calculate("mod(5, 0)", &tree).substr(0, 5), "REAL:");
    EXPECT_FALSE(tree.HasError()); // mod does not test for zero
}

TEST(RpnOperators, AssignmentIntoEveryKind)
{
    runCases({
        // Arrays.
        {"a = {1,2,3}; a[1] = 9; a", "ARRAY:{{1,9,3},9,{1,9,3}}"}, {"a = {1,2,3}; a[] = 4; a[3]", "ARRAY:{{1,2,3,4},4,4}"},
        {"a = {1,2,3}; a[5] = 1", "E43034@1,18"}, {"a = {1,2,3}; a[-1] = 1", "E43034@1,19"},
        {"a = {{1,2},{3,4}}; a[1][0] = 9; a", "ARRAY:{{{1,2},{9,4}},9,{{1,2},{9,4}}}"},
        {"a = {{1,2},{3,4}}; a[{1,1}]", "ARRAY:{{{1,2},{3,4}},4}"}, {"a = {{1,2},{3,4}}; a[{1,1}] = 7; a[1]", "ARRAY:{{{1,2},{3,7}},7,{3,7}}"},
        {"a = {{1,2},{3,4}}; a[1, 0] = 6; a[1]", "ARRAY:{{{1,2},{6,4}},6,{6,4}}"},
        {"a = {{1,2},{3,4}}; i = {1}; a[i][i[0] - 1] = 8; a[1]", "ARRAY:{{{1,2},{8,4}},{1},8,{8,4}}"},
        {"a = {1}; a[NULL] = 5; a", "ARRAY:{{1,5},5,{1,5}}"}, {"a = {1}; a[{}] = 5; a", "ARRAY:{{1,5},5,{1,5}}"},
        {"a = {1,2}; a[2.995]", "E43034@1,12"}, {"a = {1,2,3}; a[1.995]", "ARRAY:{{1,2,3},3}"},
        // One index read: a whole-number INT, an index that fails, a null index, a text key.
        {"a = {5,6,7}; k = (1 == 1); a[k + k]", "ARRAY:{{5,6,7},1,7}"},
        {"a = {5,6,7}; a[-0.5]", "ARRAY:{{5,6,7},5}"}, {"a = {5,6,7}; a[-1]", "E43034@1,14"},
        {"a = {5,6,7}; a[1/0]", "E41655@1,16"}, {"a = {5,6,7}; a[NULL]", "ARRAY:{{5,6,7},5}"},
        {"a = {5,6,7}; a[\"1\"]", "ARRAY:{{5,6,7},6}"},
        // Texts: one character replaces one, a longer text replaces one character, past the end appends.
        {"s = \"abc\"; s[1] = \"XY\"; s", "ARRAY:{abc,XY,aXYc}"}, {"s = \"abc\"; s[0] = \"z\"; s", "ARRAY:{abc,z,zbc}"},
        {"s = \"abc\"; s[9] = \"d\"; s", "ARRAY:{abc,d,abcd}"}, {"s = \"abc\"; s[] = 1.5; s", "ARRAY:{abc,1.5,abc1.5}"},
        {"s = \"abc\"; s[1]", "ARRAY:{abc,b}"}, {"s = \"abc\"; s[3]", "E43034@1,12"},
        // Not indexable.
        {"x = 1; x[0] = 2", "E43034@1,12"}, {"x = 1; x[0]", "E43034@1,8"},
        {"\"a\" = 1", "E43167@1,4"},
    });

    // ARRAY_R and DICTIONARY values come from the host.
    CEquationTree tree;
    CMapStringToRpnData *vars = tree.GetVariables();
    vars->SetAt(QStringLiteral("r"), RealBlock({1, 2, 3}));
    CRpnData inner;
    inner.SetDictionary();
    CRpnData d;
    d.SetDictionary();
    d.DictSet(QStringLiteral("a"), CRpnData(1.0));
    d.DictSet(QStringLiteral("inner"), inner);
    vars->SetAt(QStringLiteral("d"), d);
    runCases(
        {
            {"r[1] = 7; r", "ARRAY:{7,1,7,3}"}, {"r[] = 4; r[3]", "ARRAY:{4,4}"}, {"r[9] = 1", "E43034@1,5"},
            {"d[\"b\"] = 2; d[\"b\"] + d[\"a\"]", "ARRAY:{2,3}"}, {"d[5] = \"x\"; d[\"5\"]", "ARRAY:{x,x}"},
            {"d[\"inner\"][\"k\"] = 3; d[\"inner\"][\"k\"]", "ARRAY:{3,3}"}, {"d[\"missing\"]", ":"},
            {"d[\"missing\"][\"k\"] = 1", "E43034@1,18"},
        },
        &tree);
    EXPECT_EQ(Describe(vars->Find(QStringLiteral("r"))->GetAt(1)), "REAL:7");
    EXPECT_EQ(vars->Find(QStringLiteral("r"))->GetKind(), RPN_ARRAY_R);
}

TEST(RpnOperators, ValueSemanticsIncrementsAndCompoundAssignment)
{
    runCases({
        // A shared array is copied when it is assigned.
        {"a = {1,2}; b = a; b[0] = 5; a", "ARRAY:{{1,2},{5,2},5,{1,2}}"},
        {"a = {{1}}; b = a; b[0][0] = 5; a[0][0]", "ARRAY:{{{1}},{{5}},5,1}"},
        {"i = 1; i++", "ARRAY:{1,1}"}, {"i = 1; ++i", "ARRAY:{1,2}"}, {"i = 1; i--; i", "ARRAY:{1,1,0}"},
        {"i = 1; --i; i", "ARRAY:{1,0,0}"}, {"s = \"a\"; s++; s", "ARRAY:{a,a,a}"},
        {"x = 2; x *= 3; x -= 1; x /= 2; x", "ARRAY:{2,6,5,2.5,2.5}"}, {"s = \"a\"; s += \"b\"", "ARRAY:{a,ab}"},
        {"s = \"7\"; s -= 2", "ARRAY:{7,5}"}, {"a = {1,2}; a += 1", "ARRAY:{{1,2},{2,3}}"},
        {"a = {1,2}; a[0] += 5; a", "ARRAY:{{6,2},6,{6,2}}"},
        // A chain of + on texts builds one text; no operand it read from changes.
        {"x = \"p\"; y = x + \"q\" + \"r\"; x", "ARRAY:{p,pqr,p}"},
        {"a = {\"c\"}; b = a[0] + \"d\" + a[0]; a", "ARRAY:{{c},cdc,{c}}"},
        {"(\"1\" + \",\") + \"2.5\" + \",\" + 3", "REAL:4"},
        {"(\"1\" + \",\") + \"2.5\" + \",\" + \"3\"", "STRING:1,2.5,3"},
        {"i = 0; while (i < 3) { r = \"a\" + \"b\" + \"c\"; i++ }; r", "ARRAY:{0,0,abc}"},
        {"function f(t) { return t + \"!\" }; s = \"hi\"; {f(s), f(s), s}", "ARRAY:{hi,{hi!,hi!,hi}}"},
    });
    // An INT counts on as an INT.
    CEquationTree tree;
    Calculate("k = (1 == 1); k++", &tree);
    EXPECT_EQ(tree.GetVariables()->Find(QStringLiteral("k"))->GetKind(), RPN_INT);
    EXPECT_EQ(Describe(*tree.GetVariables()->Find(QStringLiteral("k"))), "INT:2");
}

TEST(RpnOperators, ComplexOperands)
{
    CEquationTree tree;
    tree.GetVariables()->SetAt(QStringLiteral("z"), CRpnData(std::complex<double>(0.0, 1.0)));
    tree.GetVariables()->SetAt(QStringLiteral("w"), CRpnData(std::complex<double>(-2.0, 5.0)));
    CRpnData value;
    auto complexOf = [&](const char *text) {
        EXPECT_TRUE(tree.Compile(QString::fromLatin1(text)));
        EXPECT_EQ(tree.Run(value), 1) << text;
        return value.GetComplex();
    };
    const std::complex<double> square = complexOf("z^2");
    EXPECT_NEAR(square.real(), -1.0, 1e-15);
    EXPECT_NEAR(square.imag(), 0.0, 1e-15);
    // i to the i is e^(-pi/2).
    const std::complex<double> ii = complexOf("z^z");
    EXPECT_NEAR(ii.real(), std::exp(-M_PI / 2), 1e-15);
    EXPECT_NEAR(ii.imag(), 0.0, 1e-15);
    // pwr drops the imaginary part of its base but keeps the sign of the real part.
    const std::complex<double> p = complexOf("pwr(w, 2)");
    EXPECT_NEAR(p.real(), 4.0, 1e-13);
    EXPECT_NEAR(p.imag(), 0.0, 1e-13);
    const std::complex<double> half = complexOf("pwr(w, 0.5)");
    EXPECT_NEAR(half.real(), 0.0, 1e-15);
    EXPECT_NEAR(half.imag(), std::sqrt(2.0), 1e-15);
    EXPECT_EQ(Calculate("z + 1", &tree), "COMPLEX:1+1j");
    // Operators without a complex form refuse with the operator's name.
    EXPECT_EQ(Calculate("z > 1", &tree), "E43217@1,2");
    EXPECT_EQ(tree.GetErrorMessage(), RpnMessage(43217, {QStringLiteral(">")}));
}

TEST(RpnOperators, FormulasAsOperands)
{
    // A formula over q, made in a tree that shares the script's variables.
    CEquationTree script;
    script.m_freeVariables = 1;
    auto *made = new CEquationTree;
    made->m_freeVariables = 1;
    made->SetVariables(script.GetVariablesValue());
    ASSERT_TRUE(made->Compile(QStringLiteral("q*2")));
    CRpnData f;
    f.SetFormula(made);
    script.GetVariables()->SetAt(QStringLiteral("f"), f);

    // A formula prints as its expression; an operator over one makes another,
    // with parentheses only where the order of operations needs them.
    EXPECT_EQ(Calculate("g = f + 1; h = -f; q = 3; g + 0", &script), "ARRAY:{q*2+1,-(q*2),3,q*2+1+0}");
    const CRpnData g = *script.GetVariables()->Find(QStringLiteral("g"));
    ASSERT_TRUE(g.IsFormula());
    EXPECT_EQ(g.GetFormula()->GetSource(), QStringLiteral("q*2+1"));
    EXPECT_EQ(g.GetDouble(), 7.0);
    EXPECT_EQ(script.GetVariables()->Find(QStringLiteral("h"))->GetDouble(), -6.0);
    // Assignment stores the formula itself.
    EXPECT_TRUE(script.GetVariables()->Find(QStringLiteral("f"))->IsFormula());

    // Through the value arithmetic, and copies of formulas.
    const CRpnData sum = CRpnData::Add(CRpnData(10.0), f);
    EXPECT_EQ(sum.GetDouble(), 16.0);
    CRpnData copy;
    copy.DeepCopy(sum);
    ASSERT_TRUE(copy.IsFormula());
    EXPECT_NE(copy.GetFormula(), sum.GetFormula());
    EXPECT_EQ(copy.GetDouble(), 16.0);
    EXPECT_EQ(copy.GetText(), QStringLiteral("10+q*2"));
}
