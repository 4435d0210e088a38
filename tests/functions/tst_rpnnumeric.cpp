// The real and complex functions through Compile and Run: values, failures,
// complex forms, spreading over arrays, the angle setting, and a cross-check
// of the real functions against the C library on random arguments.

#include "functions/rpnrealfunctions.h"
#include "formula/rpndictionary.h"
#include "formula/rpntree.h"

#include "formulatest.h"
#include "functionstest.h"

#include <gtest/gtest.h>
#include <cmath>
#include <functional>
#include <iterator>
#include <random>

namespace {

struct Case {
    const char *text;
    std::string expect;
};

// A tree with a real array r, a graph g and a real array n of negatives.
void expectCases(const std::vector<Case> &cases, int angleMode = 0)
{
    for (const Case &c : cases) {
        CEquationTree tree;
        tree.m_angleMode = angleMode;
        tree.GetVariables()->SetAt(QStringLiteral("r"), RealBlock({4, 9, 1}));
        tree.GetVariables()->SetAt(QStringLiteral("n"), RealBlock({-1, 2}));
        tree.GetVariables()->SetAt(QStringLiteral("g"), Empty(RPN_CURVE));
        EXPECT_EQ(Eval(c.text, &tree), c.expect) << c.text;
    }
}

std::string failure(const char *line, int id, const char *at)
{
    return "E:" + std::string(line) + Message(id) + "@" + at;
}

std::string refused(const char *name)
{
    return "E:" + RpnMessage(43217, {QString::fromLatin1(name)}).toStdString() + "@1,0";
}

} // namespace

TEST(RpnNumeric, ValuesOfTheFunctions)
{
    expectCases({
        {"{ln(e), log(1), log10(1000), ceil(-1.8), floor(-1.2), sqrt(\"9\"), atan2(1, -1) / pi}", "ARRAY:{1,0,3,-1,-2,3,0.75}"},
        {"{sign(-5), sign(3), sign(0), sign(mod(5, 0)), abs(-2.5), mod(-7.5, 2), pwr(-2, 3)}", "ARRAY:{-1,1,0,0,2.5,-1.5,8}"},
        // Complex forms of sqrt and sqr; the others refuse.
        {"sqr(Complex(1, 2))", "COMPLEX:-3+4j"}, {"sqrt(Complex(3, 4))", "COMPLEX:2+1j"},
        {"sqrt(Complex(-4, 0))", "COMPLEX:1.224646799147353E-16+2j"},
        {"sin(Complex(1, 1))", refused("sin")}, {"exp(Complex(0, 1))", refused("exp")},
        // Components, and the makers of complex numbers.
        {"{Real(Complex(3, 4)), Imag(Complex(3, 4)), abs(Complex(3, 4)), Real(2), Imag(2)}", "ARRAY:{3,4,5,2,0}"},
        {"{Real(\"3 4\"), Imag(\"3 4\"), abs(\"-3\"), Angle(Complex(0, 1)) * 2 / pi, Angle(-1) / pi}", "ARRAY:{3,4,3,1,1}"},
        {"{Complex(\"1.5\", 2), Polar(2, 0)}", "ARRAY:{1.5+2j,2+0j}"},
        // Spreading over arrays, nested ones and real arrays.
        {"sqrt({4, {9, 16}})", "ARRAY:{2,{3,4}}"}, {"sqr(r)", "ARRAY_R:16,81,1"}, {"floor({1.5, -1.5})", "ARRAY:{1,-2}"},
        {"sqrt({4, Complex(-9, 0)})", "ARRAY:{2,1.83697019872103E-16+3j}"},
        {"sin(g)", ":"}, {"IsEmpty(sqrt(g))", "INT:1"},
        // An element of a real array takes the real form: Angle and Imag 0.
        {"{Angle(n), Imag(n), Real(n), abs(n)}", "ARRAY:{0,0,0,0,-1,2,1,2}"},
        {"Angle({-1, 2})", "ARRAY:{3.141592653589793,0}"}, {"abs({Complex(3, 4), -2})", "ARRAY:{5,2}"},
        {"Complex({1, 2}, 3)", "ARRAY:{1+3j,2+3j}"}, {"Complex(3, {1, 2})", "ARRAY:{3+1j,3+2j}"},
        {"Complex({1, 2, 3}, {4, 5})", "ARRAY:{1+4j,2+5j}"}, {"Complex({1, {2, 3}}, 0)", "ARRAY:{1+0j,{2+0j,3+0j}}"},
        {"Complex(r, 1)", "ARRAY:{4+1j,9+1j,1+1j}"}, {"Complex(r, {7, {8, 9}})", "ARRAY:{4+7j,{9+8j,9+9j}}"},
        {"Complex(g, 1)", "ARRAY:{}"}, {"Polar({0, 2}, 0)", "ARRAY:{0+0j,2+0j}"},
        // Failures: the source line, a blank where the line has no line feed,
        // then the message; the first stands.
        {"sqrt(-1)", failure("sqrt(-1) ", 41656, "1,0")}, {"log(-1)", failure("log(-1) ", 41657, "1,0")},
        {"log10(0)", failure("log10(0) ", 41658, "1,0")},
        {"x = 4\ny = 1 + log10(-x)\nz = 1", failure("y = 1 + log10(-x)\n", 41658, "2,8")},
        {"sqrt(-1) + ln(0)", failure("sqrt(-1) + ln(0) ", 41656, "1,0")},
    });
    EXPECT_TRUE(std::isnan(Value("mod(5, 0)").GetDouble()));
    EXPECT_TRUE(std::isnan(Value("sqrt(mod(5, 0))").GetDouble()));
    const CRpnData j = Value("sqrt(Complex(-1, 0))");
    EXPECT_NEAR(j.GetRealValue(), 0.0, 1e-15);
    EXPECT_DOUBLE_EQ(j.GetImagValue(), 1.0);
}

TEST(RpnNumeric, ComplexAndPolarGoIntoDeepAndSharedArrays)
{
    // l is a list nested 300,000 deep, {n-1, {n-2, ... {0, {}}}}; a is {1}
    // doubled twenty times, 2^20 cells in 21 arrays.
    constexpr int kDeep = 300000, kDoublings = 20;
    struct Case
    {
        const char *expression;
        int depth;             // levels down the second cell (l) or the first (a)
        bool shared;           // the halves of each level are one array
        double real, imag;     // the first cell of the deepest level, for l at 0
    };
    const Case cases[] = {
        {"Complex(l, 1)", kDeep, false, double(kDeep - 1), 1},
        {"Polar(l, 0)", kDeep, false, double(kDeep - 1), 0},
        {"Complex(2, l)", kDeep, false, 2, double(kDeep - 1)},
        {"Complex(a, a)", kDoublings, true, 1, 1},
        {"Polar(a, {0, 0})", kDoublings, true, 1, 0},
    };
    CEquationTree maker;
    ASSERT_TRUE(maker.Compile(QStringLiteral("l = {}; i = 0; while (i < %1) { l = {i, l}; i++ }; "
                                             "a = {1}; i = 0; while (i < %2) { a = {a, a}; i++ }")
                                  .arg(kDeep)
                                  .arg(kDoublings)));
    CRpnData made;
    ASSERT_EQ(maker.Run(made), 1) << maker.GetErrorMessage().toStdString();
    for (const Case &c : cases) {
        CEquationTree tree;
        tree.GetVariables()->SetAt(QStringLiteral("l"), *maker.GetVariables()->Find(QStringLiteral("l")));
        tree.GetVariables()->SetAt(QStringLiteral("a"), *maker.GetVariables()->Find(QStringLiteral("a")));
        ASSERT_TRUE(tree.Compile(QString::fromLatin1(c.expression))) << c.expression;
        CRpnData v;
        ASSERT_EQ(tree.Run(v), 1) << c.expression << ": " << tree.GetErrorMessage().toStdString();
        const CRpnData top = v;
        int depth = 0;
        while (v.GetKind() == RPN_ARRAY && v.GetSize() == 2 && v.GetAt(c.shared ? 0 : 1).GetKind() == RPN_ARRAY) {
            if (c.shared) {
                ASSERT_TRUE(v.GetAt(0).IsSameAs(v.GetAt(1))) << c.expression << " at depth " << depth;
            }
            v = v.GetAt(c.shared ? 0 : 1);
            ++depth;
        }
        EXPECT_EQ(depth, c.depth) << c.expression;
        const std::complex<double> first = top.GetAt(0).GetComplex();
        EXPECT_EQ(first, std::complex<double>(c.real, c.imag)) << c.expression;
    }
}

TEST(RpnNumeric, AFailingCellLeavesTheOthersComputed)
{
    // The run fails; the node's own value shows every cell.
    for (const char *text : {"sqrt({4, -1, 9})", "sqrt(r)"}) {
        CEquationTree tree;
        tree.GetVariables()->SetAt(QStringLiteral("r"), RealBlock({4, -1, 9}));
        ASSERT_EQ(tree.Compile(QString::fromLatin1(text), nullptr, true), 1);
        CRpnData result;
        unsigned char status = 1;
        tree.GetRoot()->GetOperand(0)->Evaluate(result, status);
        EXPECT_EQ(status, 0) << text;
        ASSERT_EQ(result.GetSize(), 3) << text;
        EXPECT_EQ(result.GetAt(0).GetDouble() + result.GetAt(1).GetDouble() * 10 + result.GetAt(2).GetDouble() * 100,
                  302.0) << text; // 2, 0 and 3
        EXPECT_EQ(tree.GetErrorMessage(), QString::fromLatin1(text) + u' ' + GetMessageText(41656));
        EXPECT_EQ(tree.GetErrorToken(), QStringLiteral("sqrt"));
        EXPECT_EQ(tree.GetErrorList().size(), 1); // one cell failed
    }
}

TEST(RpnNumeric, DegreesAndRadians)
{
    // Only sin, cos, tan and their inverses follow the setting.
    const char *text = "{sin(30), cosr(60), asin(0.5), atan2(1, 2), sind(30), acosd(0.5), sinh(1), Angle(-1), "
                       "Imag(Polar(1, 1))}";
    for (int mode : {0, 1}) {
        const double in = mode ? 0.017453292519943 : 1.0, out = mode ? 57.29577951308233 : 1.0;
        const double expect[] = {std::sin(30 * in), std::cos(60 * in), std::asin(0.5) * out, std::atan2(1.0, 2.0) * out,
                                 std::sin(30 * 0.017453292519943), std::acos(0.5) * 57.29577951308233, std::sinh(1.0),
                                 std::acos(-1.0), std::sin(1.0)};
        CEquationTree tree;
        tree.m_angleMode = mode;
        const CRpnData v = Value(text, &tree);
        for (int i = 0; i < int(std::size(expect)); ++i)
            EXPECT_EQ(v.GetAt(i).GetDouble(), expect[i]) << "mode " << mode << " item " << i;
    }
    EXPECT_NE(RPN_DEGREES_TO_RADIANS, std::acos(-1.0) / 180); // kept as written, not rounded anew
}

// The real functions on random arguments, through the series blocks and
// through the tree (with a number and with a numeric text), against the C
// library, to the last bit.
TEST(RpnNumeric, CrossCheckAgainstTheCLibrary)
{
    struct Function {
        const char *text;
        std::function<double(double)> reference;
        double low, high;
        int angleMode;
    };
    const double d2r = 0.017453292519943, r2d = 57.29577951308233;
    const std::vector<Function> functions = {
        {"sin(x)", [](double x) { return std::sin(x); }, -100, 100, 0},
        {"cos(x)", [&](double x) { return std::cos(x * d2r); }, -720, 720, 1},
        {"tan(x)", [](double x) { return std::tan(x); }, -1.5, 1.5, 0},
        {"asin(x)", [](double x) { return std::asin(x); }, -1, 1, 0},
        {"acos(x)", [&](double x) { return std::acos(x) * r2d; }, -1, 1, 1},
        {"tand(x)", [&](double x) { return std::tan(x * d2r); }, -80, 80, 0},
        {"sinh(x)", [](double x) { return std::sinh(x); }, -20, 20, 0},
        {"exp(x)", [](double x) { return std::exp(x); }, -50, 50, 0},
        {"ln(x)", [](double x) { return std::log(x); }, 1e-9, 1e9, 0},
        {"log10(x)", [](double x) { return std::log10(x); }, 1e-9, 1e9, 0},
        {"sqrt(x)", [](double x) { return std::sqrt(x); }, 0, 1e6, 0},
        {"ceil(x) + floor(x)", [](double x) { return std::ceil(x) + std::floor(x); }, -1e3, 1e3, 0},
        {"atan2d(-1, x)", [&](double x) { return std::atan2(-1.0, x) * r2d; }, -10, 10, 0},
        {"mod(x, 0.7)", [](double x) { return std::fmod(x, 0.7); }, -10, 10, 0},
        {"hypot(x, 3)", [](double x) { return std::sqrt(x * x + 9.0); }, -10, 10, 0},
        {"min(x, 0.5) + max(x, 0.25)", [](double x) { return std::min(x, 0.5) + std::max(x, 0.25); }, -2, 2, 0},
    };
    constexpr int kCount = 4000;
    std::mt19937_64 random(20261122);
    std::vector<double> x(kCount), values(kCount);
    std::vector<unsigned char> valid(kCount);
    for (const Function &f : functions) {
        std::uniform_real_distribution<double> spread(f.low, f.high);
        for (double &v : x)
            v = spread(random);
        CEquationTree series;
        series.m_angleMode = f.angleMode;
        series.BindColumn(QStringLiteral("x"), x.data(), nullptr, kCount);
        ASSERT_EQ(series.Compile(QString::fromLatin1(f.text), nullptr, true), 1) << f.text;
        EXPECT_EQ(series.EvaluateSeries(values.data(), valid.data(), 0, kCount - 1), kCount) << f.text;
        int mismatches = 0;
        for (int i = 0; i < kCount; ++i)
            mismatches += values[std::size_t(i)] != f.reference(x[std::size_t(i)]);

        CEquationTree plain;
        plain.m_angleMode = f.angleMode;
        plain.GetVariables()->SetAt(QStringLiteral("x"), CRpnData(0.0));
        ASSERT_EQ(plain.Compile(QString::fromLatin1(f.text), nullptr, true), 1);
        for (int i = 0; i < kCount; i += 10) {
            for (bool text : {false, true}) {
                const double xi = x[std::size_t(i)];
                plain.GetVariables()->SetAt(QStringLiteral("x"),
                                            text ? CRpnData(QString::number(xi, 'g', 17)) : CRpnData(xi));
                CRpnData v;
                unsigned char status = 1;
                plain.EvaluateTree(v, status);
                mismatches += status != 1 || v.GetAt(0).GetDouble() != f.reference(xi);
            }
        }
        EXPECT_EQ(mismatches, 0) << f.text;
    }
}
