#include "formula/rpndata.h"
#include "formula/rpndictionary.h"
#include "formula/rpnmatrix.h"
#include "formula/rpnseams.h"

#include "formulatest.h"

#include <gtest/gtest.h>
#include <cmath>
#include <limits>

namespace {

using C = std::complex<double>;

CRpnData rows(std::initializer_list<std::initializer_list<double>> cells, bool flagged)
{
    CRpnData m;
    m.SetArray(int(cells.size()));
    int i = 0;
    for (const auto &r : cells)
        m.SetAt(i++, RealItems(r));
    m.SetMatrixFlag(flagged);
    return m;
}

struct Case {
    char op;
    CRpnData a;
    CRpnData b;
    const char *expect;
};

void runCases(const std::vector<Case> &cases)
{
    for (const Case &c : cases) {
        const CRpnData r = CRpnData::Arithmetic(c.op, c.a, c.b);
        EXPECT_EQ(Describe(r), c.expect) << Describe(c.a) << " " << c.op << " " << Describe(c.b);
    }
}

} // namespace

TEST(RpnArith, ScalarTable)
{
    CRpnData dict;
    dict.SetDictionary();
    const int intMin = std::numeric_limits<int>::min();
    runCases({
        // Addition: complex, then real, then integer, then text.
        {'+', Text("3"), CRpnData(4.0), "REAL:7"}, {'+', Text("3"), Text("4"), "STRING:34"},
        {'+', CRpnData(3.0), Text("4"), "REAL:7"}, {'+', CRpnData(), CRpnData(5.0), "REAL:5"},
        {'+', CRpnData(5.0), CRpnData(), "REAL:5"}, {'+', CRpnData(), CRpnData(), ":"},
        {'+', CRpnData(), Text("a"), "STRING:a"}, {'+', Text("a"), CRpnData(), "STRING:a"},
        {'+', Text("x"), CRpnData(0.1), "REAL:0.1"}, {'+', CRpnData(2), Text("5"), "INT:7"},
        {'+', CRpnData(2), CRpnData(0.5), "REAL:2.5"}, {'+', CRpnData(2147483647), CRpnData(1), "INT:-2147483648"},
        {'+', CRpnData(C(1, 2)), CRpnData(3.0), "COMPLEX:4+2j"}, {'+', Text("1"), CRpnData(C(0, -1)), "COMPLEX:1-1j"},
        {'+', dict, CRpnData(1.0), "REAL:1"},
        // Subtraction has no text form: other kinds give the left value.
        {'-', Text("5"), Text("2"), "STRING:5"}, {'-', CRpnData(5), CRpnData(7), "INT:-2"},
        {'-', CRpnData(1.5), CRpnData(1), "REAL:0.5"}, {'-', CRpnData(intMin), CRpnData(1), "INT:2147483647"},
        {'-', CRpnData(C(1, 1)), CRpnData(C(1, 3)), "COMPLEX:0-2j"},
        // Multiplication: INT only from two INTs.
        {'*', CRpnData(3), CRpnData(4), "INT:12"}, {'*', CRpnData(3), Text("4"), "REAL:12"},
        {'*', CRpnData(), CRpnData(5.0), "REAL:0"}, {'*', CRpnData(C(1, 2)), CRpnData(2.0), "COMPLEX:2+4j"},
        {'*', Text("2"), CRpnData(C(1, 2)), "COMPLEX:2+4j"},
        {'*', CRpnData(C(1, 2)), CRpnData(C(3, -1)), "COMPLEX:5+5j"}, {'*', CRpnData(65536), CRpnData(65536), "INT:0"},
        // Division: IEEE between reals, truncating between integers.
        {'/', CRpnData(1.0), CRpnData(0.0), "REAL:INF"}, {'/', CRpnData(7), CRpnData(2), "INT:3"},
        {'/', CRpnData(-7), CRpnData(2), "INT:-3"}, {'/', Text("7"), Text("2"), "INT:3"},
        {'/', CRpnData(1), CRpnData(0), "INT:0"}, {'/', CRpnData(intMin), CRpnData(-1), "INT:-2147483648"},
        {'/', CRpnData(7), CRpnData(2.0), "REAL:3.5"}, {'/', CRpnData(C(1, 2)), CRpnData(C(3, -1)), "COMPLEX:0.1+0.7j"},
        {'/', CRpnData(C(2, 4)), CRpnData(2.0), "COMPLEX:1+2j"},
        {'/', CRpnData(1.0), CRpnData(C(0, 1)), "COMPLEX:0-1j"},
        // Remainder.
        {'%', CRpnData(7.5), CRpnData(2.0), "REAL:1.5"}, {'%', CRpnData(7), CRpnData(3), "INT:1"},
        {'%', CRpnData(-7), CRpnData(3), "INT:-1"}, {'%', CRpnData(5), CRpnData(0), "INT:0"},
        {'%', CRpnData(C(5, 1)), CRpnData(2.0), "COMPLEX:5+1j"}, {'%', Text("a"), Text("b"), "STRING:a"},
    });
}

TEST(RpnArith, ResultsAreNewValues)
{
    CRpnData a(2.0), b(3.0);
    CRpnData sum = CRpnData::Add(a, b);
    EXPECT_FALSE(sum.IsSameAs(a));
    EXPECT_EQ(a.GetDouble(), 2.0);
    EXPECT_EQ(a.GetRefs(), 1);
    // A prefix does not travel into a result.
    CRpnData k(2000.0);
    k.SetDisplayExponent(3);
    EXPECT_EQ(CRpnData::Add(k, CRpnData(1.0)).GetDisplayExponent(), 0);
}

TEST(RpnArith, Arrays)
{
    CRpnData curve;
    curve.SetCurve(nullptr);
    CRpnData mixed;
    mixed.SetArray(2);
    mixed.SetAt(0, Text("a"));
    mixed.SetAt(1, CRpnData(C(1, 1)));
    CRpnData nested;
    nested.SetArray(2);
    nested.SetAt(0, CRpnData(5.0));
    nested.SetAt(1, RealItems({1, 2}));
    runCases({
        {'+', RealItems({1, 2, 3}), RealItems({10, 20}), "ARRAY:{11,22}"},
        {'+', RealBlock({1, 2, 3}), RealBlock({10, 20}), "ARRAY_R:11,22"},
        {'+', RealBlock({1, 2}), RealItems({10, 20}), "ARRAY:{11,22}"},
        {'-', CRpnData(10.0), RealBlock({1, 2}), "ARRAY_R:9,8"},
        {'-', RealBlock({1, 2}), CRpnData(10.0), "ARRAY_R:-9,-8"},
        {'-', CRpnData(10.0), RealItems({1, 2}), "ARRAY:{9,8}"}, {'*', RealBlock({1, 2}), Text("3"), "ARRAY_R:3,6"},
        {'*', RealBlock({1, 2}), CRpnData(C(2, 5)), "ARRAY_R:2,4"}, // the scalar read once as a real
        {'*', nested, CRpnData(2.0), "ARRAY:{10,{2,4}}"}, {'+', mixed, Text("b"), "ARRAY:{ab,1+1j}"},
        // Division never makes an infinity inside an array.
        {'/', RealBlock({1, 2}), CRpnData(0.0), "ARRAY_R:0,0"}, {'/', RealItems({1, 2}), CRpnData(0.0), "ARRAY:{0,0}"},
        {'/', RealItems({1, 2}), CRpnData(), "ARRAY:{0,0}"}, {'/', CRpnData(2.0), RealBlock({1, 0}), "ARRAY_R:2,0"},
        {'/', CRpnData(2.0), RealItems({1, 0}), "ARRAY:{2,0}"},
        {'/', RealBlock({1, 2}), RealBlock({0, 2}), "ARRAY_R:0,1"},
        {'/', RealItems({1, 2}), RealBlock({0, 4}), "ARRAY:{0,0.5}"},
        {'%', RealBlock({5, 7}), CRpnData(0.0), "ARRAY_R:0,0"}, {'%', RealBlock({5, 7}), CRpnData(3.0), "ARRAY_R:2,1"},
        {'%', CRpnData(7.0), RealBlock({0, 4}), "ARRAY_R:0,3"},
        // A curve counts as an empty array.
        {'+', curve, CRpnData(1.0), "ARRAY:{}"}, {'*', RealBlock({1, 2}), curve, "ARRAY:{}"},
    });
}

TEST(RpnArith, MatrixFlagTravels)
{
    const CRpnData m = rows({{1, 2}, {3, 4}}, true);
    EXPECT_TRUE(CRpnData::Multiply(m, CRpnData(2.0)).IsMatrix());
    EXPECT_TRUE(CRpnData::Add(RealItems({1, 2}), m).IsMatrix()); // a flat array is no matrix partner
    EXPECT_FALSE(CRpnData::Add(RealItems({1, 2}), RealItems({1, 2})).IsMatrix());
    CRpnData block = RealBlock({1, 2});
    block.SetMatrixFlag(true);
    EXPECT_TRUE(CRpnData::Subtract(CRpnData(1.0), block).IsMatrix());
    // Remainder is never a matrix operation: element by element.
    EXPECT_EQ(Describe(CRpnData::Remainder(m, rows({{2, 3}, {2, 3}}, false))), "ARRAY:{{1,2},{1,1}}");
}

TEST(RpnArith, Matrices)
{
    const CRpnData a = rows({{1, 2}, {3, 4}}, true);
    runCases({
        {'+', a, rows({{10, 20}, {30, 40}}, false), "ARRAY:{{11,22},{33,44}}"},
        {'-', rows({{10, 20}, {30, 40}}, false), a, "ARRAY:{{9,18},{27,36}}"},
        {'+', a, rows({{1, 2, 3}, {4, 5, 6}}, true), ":"},
        {'*', a, rows({{5, 6}, {7, 8}}, false), "ARRAY:{{19,22},{43,50}}"},
        {'*', rows({{1, 2, 3}}, true), rows({{1}, {2}, {3}}, true), "ARRAY:{{14}}"},
        {'*', a, rows({{1, 2, 3}}, true), ":"}, {'/', a, a, "ARRAY:{{1,0},{0,1}}"},
        {'/', a, rows({{1, 2, 3}, {4, 5, 6}}, true), ":"},
    });
    EXPECT_TRUE(CRpnData::Add(a, rows({{10, 20}, {30, 40}}, false)).IsMatrix());
    EXPECT_TRUE(CRpnData::Multiply(a, a).IsMatrix());
    // Without the flag on either side, rows are plain nested arrays.
    EXPECT_EQ(Describe(CRpnData::Multiply(rows({{1, 2}, {3, 4}}, false), rows({{5, 6}, {7, 8}}, false))),
              "ARRAY:{{5,12},{21,32}}");
}

TEST(RpnArith, MatrixDeterminantCofactorInverse)
{
    struct Case {
        CRpnData m;
        double det;
    };
    const Case cases[] = {
        {rows({{7}}, true), 7},
        {rows({{1, 2}, {3, 4}}, true), -2},
        {rows({{6, 1, 1}, {4, -2, 5}, {2, 8, 7}}, true), -306},
        {rows({{1, 0, 2, -1}, {3, 0, 0, 5}, {2, 1, 4, -3}, {1, 0, 5, 0}}, true), 30},
        {rows({{2, 1, 0, 0, 1}, {1, 3, 1, 0, 0}, {0, 1, 4, 1, 0}, {0, 0, 1, 5, 1}, {1, 0, 0, 1, 6}}, true), 442},
    };
    for (const Case &c : cases) {
        EXPECT_DOUBLE_EQ(RpnMatrixDeterminant(c.m).GetDouble(), c.det) << Describe(c.m);
        // m times its inverse is the identity.
        const CRpnData product = RpnMatrixMultiply(c.m, RpnMatrixInverse(c.m));
        int n = 0, cols = 0;
        RpnMatrixSize(product, n, cols);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                EXPECT_NEAR(RpnMatrixCell(product, i, j).GetDouble(), i == j ? 1.0 : 0.0, 1e-12);
    }
    EXPECT_EQ(Describe(RpnMatrixCofactor(rows({{1, 2}, {3, 4}}, true))), "ARRAY:{{4,-3},{-2,1}}");
    EXPECT_EQ(Describe(RpnMatrixCofactor(rows({{5}}, true))), "ARRAY:{{1}}");
    EXPECT_TRUE(RpnMatrixDeterminant(rows({{1, 2}}, true)).IsNull());

    // A singular matrix is not refused: its inverse is not finite.
    const CRpnData singular = RpnMatrixInverse(rows({{1, 2}, {2, 4}}, true));
    EXPECT_FALSE(std::isfinite(RpnMatrixCell(singular, 0, 0).GetDouble()));

    // Complex cells go through the complex arithmetic.
    CRpnData cm;
    cm.SetMatrix(2, 2);
    cm.GetItems()[0].SetAt(0, CRpnData(C(0, 1)));
    cm.GetItems()[0].SetAt(1, CRpnData(0.0));
    cm.GetItems()[1].SetAt(0, CRpnData(0.0));
    cm.GetItems()[1].SetAt(1, CRpnData(C(0, 1)));
    EXPECT_EQ(Describe(RpnMatrixDeterminant(cm)), "COMPLEX:-1+0j");
}

TEST(RpnArith, Equality)
{
    CRpnData d1, d2;
    d1.SetDictionary();
    d2.SetDictionary();
    CRpnData emptyArray;
    emptyArray.SetArray(0);
    CRpnData curve;
    curve.SetCurve(nullptr);
    const double nan = std::nan("");
    struct EqCase {
        CRpnData a;
        CRpnData b;
        int expect;
    };
    const EqCase cases[] = {
        {CRpnData(0.0), Text(""), 1}, {Text(""), CRpnData(0.0), 1}, {CRpnData(1.0), Text("1"), 1},
        {CRpnData(1.0), Text("1.00"), 0}, {Text("abc"), Text("ABC"), 1}, {CRpnData(0.0), CRpnData(), 1},
        {CRpnData(), CRpnData(), 1},
        {Text("0"), CRpnData(0.0), 0},       // against 0 a text is equal only when empty
        {CRpnData(0), Text(""), 0},          // an INT 0 is no empty value: the texts differ
        {CRpnData(5.0), CRpnData(), 0}, {emptyArray, CRpnData(0.0), 1}, {CRpnData(), RealItems({1}), 0},
        {curve, CRpnData(), 1},
        {RealItems({1, 2}), RealItems({1, 3}), RPN_NOT_DECIDED},
        {RealItems({1}), CRpnData(1.0), RPN_NOT_DECIDED}, {CRpnData(3), CRpnData(3.0), 1},
        {CRpnData(C(1, 0)), CRpnData(1.0), 1}, {CRpnData(C(1, 1)), CRpnData(1.0), 0}, {CRpnData(3), CRpnData(4), 0},
        {d1, d1, 1},
        {d1, d2, 0},
        {CRpnData(nan), CRpnData(nan), 0}, {CRpnData(0.1 + 0.2), CRpnData(0.3), 0}, {CRpnData(0.1), Text("0.1"), 1},
    };
    for (const EqCase &c : cases)
        EXPECT_EQ(CRpnData::Equals(c.a, c.b), c.expect) << Describe(c.a) << " == " << Describe(c.b);
}

namespace {

// Stands in for the equation tree: a "formula" is a heap string.
class FakeFormulas : public CRpnFormulaSupport
{
public:
    static QString &source(CEquationTree *t) { return *reinterpret_cast<QString *>(t); }
    static CEquationTree *make(const QString &s) { return reinterpret_cast<CEquationTree *>(new QString(s)); }

    void DeleteTree(CEquationTree *tree) override
    {
        ++deleted;
        delete reinterpret_cast<QString *>(tree);
    }
    CEquationTree *CloneTree(const CEquationTree *tree) override
    {
        return make(*reinterpret_cast<const QString *>(tree));
    }
    void Evaluate(CEquationTree *tree, CRpnData &result) override { result.SetDouble(source(tree).size()); }
    QString GetSource(const CEquationTree *tree) override { return *reinterpret_cast<const QString *>(tree); }
    void Combine(int op, const CRpnData &a, const CRpnData &b, CRpnData &result) override
    {
        result.SetFormula(make(a.GetText() + QChar(op) + b.GetText()));
    }
    void SerializeTree(CEquationTree *&, CRpnBuffer &) override {}
    bool EvaluateText(const QString &, CRpnData &) override { return false; }

    int deleted = 0;
};

} // namespace

TEST(RpnArith, FormulasAreDeferredThroughTheSeam)
{
    FakeFormulas formulas;
    SetRpnFormulaSupport(&formulas);
    {
        CRpnData f;
        f.SetFormula(FakeFormulas::make(QStringLiteral("x*2")));
        const CRpnData g = CRpnData::Add(f, CRpnData(1.0));
        EXPECT_EQ(Describe(g), "FORMULA:x*2+1");
        // A formula inside an array is deferred element by element.
        CRpnData arr;
        arr.SetArray(1);
        arr.SetAt(0, f);
        EXPECT_EQ(Describe(CRpnData::Multiply(arr, CRpnData(3.0))), "ARRAY:{x*2*3}");
        // Conversions run the formula.
        EXPECT_EQ(f.GetDouble(), 3.0);
        EXPECT_EQ(f.GetInt(), 3);
        CRpnData copy;
        copy.DeepCopy(f);
        EXPECT_FALSE(copy.GetFormula() == f.GetFormula());
        EXPECT_EQ(copy.GetText(), "x*2");
        // A borrowed formula is not deleted with its value.
        CRpnData borrowed;
        borrowed.SetFormulaBorrowed(f.GetFormula());
    }
    EXPECT_EQ(formulas.deleted, 4); // f, g, the element product, the copy
    SetRpnFormulaSupport(nullptr);

    // Without the seam a formula is empty in every respect.
    CRpnData f;
    f.SetFormula(nullptr);
    EXPECT_TRUE(CRpnData::Add(f, CRpnData(1.0)).IsNull());
    EXPECT_EQ(f.GetDouble(), 0.0);
    EXPECT_EQ(f.GetText(), "");
}
