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
#include <random>

namespace {

struct NumberCase {
    const char *text;
    double expect;
};

void expectNumbers(const std::vector<NumberCase> &cases, int angleMode = 0)
{
    for (const NumberCase &c : cases) {
        CEquationTree tree;
        tree.m_angleMode = angleMode;
        const CRpnData v = Value(c.text, &tree);
        EXPECT_TRUE(v.IsReal()) << c.text << " gave " << Describe(v);
        EXPECT_DOUBLE_EQ(v.GetDouble(), c.expect) << c.text;
    }
}

struct TextCase {
    const char *text;
    std::string expect;
};

void expectTexts(const std::vector<TextCase> &cases, CEquationTree *tree = nullptr)
{
    for (const TextCase &c : cases)
        EXPECT_EQ(Eval(c.text, tree), c.expect) << c.text;
}

std::string failure(const char *line, int id, int row, int col)
{
    return "E:" + std::string(line) + Message(id) + "@" + std::to_string(row) + "," + std::to_string(col);
}

const double kPi = std::acos(-1.0);

} // namespace

TEST(RpnNumeric, RealFunctions)
{
    expectNumbers({
        {"sqrt(16)", 4}, {"sqr(-3)", 9}, {"sin(0)", 0}, {"cos(0)", 1}, {"tan(0)", 0}, {"asin(1)", kPi / 2},
        {"arccos(1)", 0}, {"ATAN(1)", kPi / 4}, {"sinh(0)", 0}, {"cosh(0)", 1}, {"tanh(0)", 0}, {"exp(0)", 1},
        {"ln(e)", 1}, {"log(1)", 0}, {"log10(1000)", 3}, {"ceil(1.2)", 2}, {"ceil(-1.8)", -1}, {"floor(-1.2)", -2},
        {"floor(2.9)", 2}, {"sign(-5)", -1}, {"sign(3)", 1}, {"sign(0)", 0}, {"sign(mod(5, 0))", 0},
        {"abs(-2.5)", 2.5}, {"pow(2, 10)", 1024}, {"pwr(-2, 3)", 8}, {"mod(7.5, 2)", 1.5}, {"mod(-7.5, 2)", -1.5},
        {"atan2(1, 1)", kPi / 4}, {"atan2(1, -1)", 3 * kPi / 4}, {"atan2d(1, 1)", 45}, {"sind(90)", 1},
        {"cosd(180)", std::cos(180 * 0.017453292519943)}, {"asind(1)", 90}, {"acosd(0)", 90}, {"atand(1)", 45},
        {"tand(45)", std::tan(45 * 0.017453292519943)}, {"SINR(1)", std::sin(1.0)}, {"sqrt(\"9\")", 3},
    });
    // NaN passes through, and mod by zero is no error.
    EXPECT_TRUE(std::isnan(Value("mod(5, 0)").GetDouble()));
    EXPECT_TRUE(std::isnan(Value("sqrt(mod(5, 0))").GetDouble()));
    EXPECT_TRUE(std::isnan(Value("max(mod(5, 0), 1, 7)").GetDouble()));
}

TEST(RpnNumeric, FailuresCarryTheSourceLine)
{
    expectTexts({
        {"sqrt(-1)", failure("sqrt(-1)", 41656, 1, 0)},
        {"ln(0)", failure("ln(0)", 41657, 1, 0)},
        {"log(-1)", failure("log(-1)", 41657, 1, 0)},
        {"log10(0)", failure("log10(0)", 41658, 1, 0)},
        {"x = 4\ny = 1 + log10(-x)\nz = 1", failure("y = 1 + log10(-x)\n", 41658, 2, 8)},
        // The first error stands.
        {"sqrt(-1) + ln(0)", failure("sqrt(-1) + ln(0)", 41656, 1, 0)},
    });
    CEquationTree tree;
    EXPECT_EQ(Eval("sqrt(-4)", &tree), failure("sqrt(-4)", 41656, 1, 0));
    EXPECT_EQ(tree.GetErrorToken(), QStringLiteral("sqrt"));
    ASSERT_EQ(tree.GetErrorList().size(), 1);
    EXPECT_EQ(tree.GetErrorList()[0], QStringLiteral("sqrt(-4)") + GetMessageText(41656));

    // A tree in throwing mode throws the same message.
    CEquationTree throwing;
    throwing.throwOnError = 1;
    ASSERT_EQ(throwing.Compile(QStringLiteral("a = 1\nln(a - 1)"), nullptr, true), 1);
    CRpnData value;
    try {
        throwing.Run(value);
        ADD_FAILURE() << "no exception";
    } catch (const CRpnException &e) {
        EXPECT_EQ(e.message, QStringLiteral("ln(a - 1)") + GetMessageText(41657));
        EXPECT_EQ(e.token, QStringLiteral("ln"));
        EXPECT_EQ(e.row, 2);
        EXPECT_EQ(e.col, 0);
    }
    EXPECT_TRUE(throwing.GetErrorList().isEmpty());
}

TEST(RpnNumeric, ComplexForms)
{
    expectTexts({
        {"sqr(Complex(1, 2))", "COMPLEX:-3+4j"},
        {"sqrt(Complex(-4, 0))", "COMPLEX:1.224646799147353E-16+2j"},
        {"sqrt(Complex(3, 4))", "COMPLEX:2+1j"},
        {"sin(Complex(1, 1))", "E:" + RpnMessage(43217, {QStringLiteral("sin")}).toStdString() + "@1,0"},
        {"exp(Complex(0, 1))", "E:" + RpnMessage(43217, {QStringLiteral("exp")}).toStdString() + "@1,0"},
        {"Complex(1, 2)", "COMPLEX:1+2j"}, {"Complex(\"1.5\", 2)", "COMPLEX:1.5+2j"},
        {"Polar(2, 0)", "COMPLEX:2+0j"},
        {"Real(Complex(3, 4))", "REAL:3"}, {"Imag(Complex(3, 4))", "REAL:4"}, {"abs(Complex(3, 4))", "REAL:5"},
        {"Angle(Complex(0, 1))", "REAL:1.570796326794897"}, {"Real(2)", "REAL:2"}, {"Imag(2)", "REAL:0"},
        {"Imag(\"3 4\")", "REAL:4"}, {"Real(\"3 4\")", "REAL:3"}, {"abs(\"-3\")", "REAL:3"},
        {"Angle(-1)", "REAL:3.141592653589793"},
    });
    const CRpnData j = Value("sqrt(Complex(-1, 0))");
    ASSERT_TRUE(j.IsComplex());
    EXPECT_NEAR(j.GetRealValue(), 0.0, 1e-15);
    EXPECT_DOUBLE_EQ(j.GetImagValue(), 1.0);
    const CRpnData q = Value("Polar(2, pi / 2)");
    EXPECT_NEAR(q.GetRealValue(), 0.0, 1e-15);
    EXPECT_DOUBLE_EQ(q.GetImagValue(), 2.0);
}

TEST(RpnNumeric, ComplexAndPolarSpreadOverArrays)
{
    CEquationTree tree;
    tree.GetVariables()->SetAt(QStringLiteral("r"), RealBlock({1, 2, 3}));
    tree.GetVariables()->SetAt(QStringLiteral("g"), Empty(RPN_CURVE));
    expectTexts({
        {"Complex({1, 2}, 3)", "ARRAY:{1+3j,2+3j}"}, {"Complex(3, {1, 2})", "ARRAY:{3+1j,3+2j}"},
        {"Complex({1, 2, 3}, {4, 5})", "ARRAY:{1+4j,2+5j}"}, {"Complex({1, {2, 3}}, 0)", "ARRAY:{1+0j,{2+0j,3+0j}}"},
        {"Complex(r, 1)", "ARRAY:{1+1j,2+1j,3+1j}"}, {"Complex(r, {7, {8, 9}})", "ARRAY:{1+7j,{2+8j,2+9j}}"},
        {"Complex(g, 1)", "ARRAY:{}"}, {"Complex(r, g)", "ARRAY:{}"}, {"Polar({0, 2}, 0)", "ARRAY:{0+0j,2+0j}"},
    }, &tree);
}

TEST(RpnNumeric, OneOperandFunctionsSpreadOverArrays)
{
    CEquationTree tree;
    tree.GetVariables()->SetAt(QStringLiteral("r"), RealBlock({4, 9, -1}));
    tree.GetVariables()->SetAt(QStringLiteral("n"), RealBlock({-1, 2}));
    tree.GetVariables()->SetAt(QStringLiteral("g"), Empty(RPN_CURVE));
    expectTexts({
        {"sqrt({4, {9, 16}})", "ARRAY:{2,{3,4}}"}, {"sqr(r)", "ARRAY_R:16,81,1"}, {"floor({1.5, -1.5})", "ARRAY:{1,-2}"},
        {"sqrt({4, Complex(-9, 0)})", "ARRAY:{2,1.83697019872103E-16+3j}"},
        // A graph gives null and no error.
        {"sin(g)", ":"}, {"IsEmpty(sqrt(g))", "INT:1"},
        // An element of a real array goes through the real form: Angle 0, Imag 0.
        {"Angle(n)", "ARRAY_R:0,0"}, {"Imag(n)", "ARRAY_R:0,0"}, {"Real(n)", "ARRAY_R:-1,2"},
        {"abs(n)", "ARRAY_R:1,2"}, {"Angle({-1, 2})", "ARRAY:{3.141592653589793,0}"},
        {"abs({Complex(3, 4), -2})", "ARRAY:{5,2}"},
    }, &tree);
}

TEST(RpnNumeric, AFailingCellLeavesTheOthersComputed)
{
    // The run fails; the node's own value shows every cell.
    for (const char *text : {"sqrt({4, -1, 9})", "sqrt(r)"}) {
        CEquationTree tree;
        tree.GetVariables()->SetAt(QStringLiteral("r"), RealBlock({4, -1, 9}));
        ASSERT_EQ(tree.Compile(QString::fromLatin1(text), nullptr, true), 1);
        CRpnNode *call = tree.GetRoot()->GetOperand(0);
        ASSERT_NE(call, nullptr);
        CRpnData result;
        unsigned char status = 1;
        call->Evaluate(result, status);
        EXPECT_EQ(status, 0) << text;
        ASSERT_EQ(result.GetSize(), 3) << text;
        EXPECT_EQ(result.GetAt(0).GetDouble(), 2.0);
        EXPECT_EQ(result.GetAt(1).GetDouble(), 0.0);
        EXPECT_EQ(result.GetAt(2).GetDouble(), 3.0) << text;
        EXPECT_EQ(tree.GetErrorMessage(), QString::fromLatin1(text) + GetMessageText(41656));
    }
}

TEST(RpnNumeric, DegreesAndRadians)
{
    struct Pair {
        const char *text;
        double radians; // the value with the tree in radians
        double degrees; // and in degrees
    };
    const double d2r = 0.017453292519943, r2d = 57.29577951308233;
    const std::vector<Pair> pairs = {
        {"sin(30)", std::sin(30.0), std::sin(30 * d2r)},
        {"cos(60)", std::cos(60.0), std::cos(60 * d2r)},
        {"tanr(45)", std::tan(45.0), std::tan(45 * d2r)},
        {"asin(0.5)", std::asin(0.5), std::asin(0.5) * r2d},
        {"acosr(0.5)", std::acos(0.5), std::acos(0.5) * r2d},
        {"arctan(2)", std::atan(2.0), std::atan(2.0) * r2d},
        {"atan2(1, 2)", std::atan2(1.0, 2.0), std::atan2(1.0, 2.0) * r2d},
        {"atan2r(-1, -2)", std::atan2(-1.0, -2.0), std::atan2(-1.0, -2.0) * r2d},
        // Always degrees, or never.
        {"sind(30)", std::sin(30 * d2r), std::sin(30 * d2r)},
        {"acosd(0.5)", std::acos(0.5) * r2d, std::acos(0.5) * r2d},
        {"atan2d(1, 2)", std::atan2(1.0, 2.0) * r2d, std::atan2(1.0, 2.0) * r2d},
        {"sinh(1)", std::sinh(1.0), std::sinh(1.0)},
        {"tanh(0.5)", std::tanh(0.5), std::tanh(0.5)},
        {"Angle(-1)", kPi, kPi},
        {"Imag(Polar(1, 1))", std::sin(1.0), std::sin(1.0)},
    };
    for (const Pair &p : pairs) {
        for (int mode : {0, 1}) {
            CEquationTree tree;
            tree.m_angleMode = mode;
            EXPECT_EQ(Value(p.text, &tree).GetDouble(), mode ? p.degrees : p.radians) << p.text << " mode " << mode;
        }
    }
    // sin in degrees and sind agree exactly; the factor is not the rounded pi / 180.
    CEquationTree degrees;
    degrees.m_angleMode = 1;
    EXPECT_EQ(Value("sin(37) - sind(37)", &degrees).GetDouble(), 0.0);
    EXPECT_NE(RPN_DEGREES_TO_RADIANS, kPi / 180);
}

// The real functions on random arguments, through the series blocks, the
// per-row fast path and the plain evaluation, against the C library.
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
        {"cos(x)", [](double x) { return std::cos(x); }, -100, 100, 0},
        {"tan(x)", [](double x) { return std::tan(x); }, -1.5, 1.5, 0},
        {"sin(x)", [&](double x) { return std::sin(x * d2r); }, -720, 720, 1},
        {"asin(x)", [](double x) { return std::asin(x); }, -1, 1, 0},
        {"acos(x)", [&](double x) { return std::acos(x) * r2d; }, -1, 1, 1},
        {"atan(x)", [](double x) { return std::atan(x); }, -1e3, 1e3, 0},
        {"sind(x)", [&](double x) { return std::sin(x * d2r); }, -720, 720, 0},
        {"cosd(x)", [&](double x) { return std::cos(x * d2r); }, -720, 720, 0},
        {"tand(x)", [&](double x) { return std::tan(x * d2r); }, -80, 80, 0},
        {"asind(x)", [&](double x) { return std::asin(x) * r2d; }, -1, 1, 0},
        {"acosd(x)", [&](double x) { return std::acos(x) * r2d; }, -1, 1, 0},
        {"atand(x)", [&](double x) { return std::atan(x) * r2d; }, -50, 50, 0},
        {"sinh(x)", [](double x) { return std::sinh(x); }, -20, 20, 0},
        {"cosh(x)", [](double x) { return std::cosh(x); }, -20, 20, 0},
        {"tanh(x)", [](double x) { return std::tanh(x); }, -20, 20, 0},
        {"exp(x)", [](double x) { return std::exp(x); }, -50, 50, 0},
        {"ln(x)", [](double x) { return std::log(x); }, 1e-9, 1e9, 0},
        {"log10(x)", [](double x) { return std::log10(x); }, 1e-9, 1e9, 0},
        {"sqrt(x)", [](double x) { return std::sqrt(x); }, 0, 1e6, 0},
        {"sqr(x)", [](double x) { return x * x; }, -1e3, 1e3, 0},
        {"ceil(x)", [](double x) { return std::ceil(x); }, -1e3, 1e3, 0},
        {"floor(x)", [](double x) { return std::floor(x); }, -1e3, 1e3, 0},
        {"abs(x)", [](double x) { return std::fabs(x); }, -1e3, 1e3, 0},
        {"atan2(x, 0.5)", [](double x) { return std::atan2(x, 0.5); }, -10, 10, 0},
        {"atan2d(-1, x)", [&](double x) { return std::atan2(-1.0, x) * r2d; }, -10, 10, 0},
        {"mod(x, 0.7)", [](double x) { return std::fmod(x, 0.7); }, -10, 10, 0},
        {"pwr(x, 1.5)", [](double x) { return std::pow(std::fabs(x), 1.5); }, -10, 10, 0},
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
        // Series over a bound column: the block program.
        CEquationTree tree;
        tree.m_angleMode = f.angleMode;
        tree.BindColumn(QStringLiteral("x"), x.data(), nullptr, kCount);
        ASSERT_EQ(tree.Compile(QString::fromLatin1(f.text), nullptr, true), 1) << f.text;
        EXPECT_EQ(tree.EvaluateSeries(values.data(), valid.data(), 0, kCount - 1), kCount) << f.text;
        int mismatches = 0;
        for (int i = 0; i < kCount; ++i)
            mismatches += values[std::size_t(i)] != f.reference(x[std::size_t(i)]);
        EXPECT_EQ(mismatches, 0) << f.text << " (series)";

        // The value of each row through a variable of the tree: the fast
        // path of Evaluate, and with a text operand the plain one.
        CEquationTree plain;
        plain.m_angleMode = f.angleMode;
        plain.GetVariables()->SetAt(QStringLiteral("x"), CRpnData(0.0));
        ASSERT_EQ(plain.Compile(QString::fromLatin1(f.text), nullptr, true), 1);
        mismatches = 0;
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
        EXPECT_EQ(mismatches, 0) << f.text << " (tree)";
    }
}
