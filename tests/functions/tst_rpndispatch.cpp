// The machinery under the functions: script functions and their reports,
// parameters by reference, named parameters, prototypes by class number,
// formulas as operands, and the real paths of series.

#include "functions/rpnfunctionbase.h"
#include "functions/rpnlistfunctions.h"
#include "functions/rpnrealfunctions.h"
#include "formula/rpndictionary.h"
#include "formula/rpnbuffer.h"
#include "formula/rpnkeywords.h"
#include "formula/rpntree.h"

#include "formulatest.h"
#include "functionstest.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>

namespace {

constexpr int kSwapKind = 1990;
constexpr int kNamedKind = 1991;

// TestSwap(a, b): swaps two variables through their references; gives the
// number of arguments.  Fewer than two fail with a text.
class CTestSwap : public CNodeScriptFunction
{
public:
    int GetKind() const override { return kSwapKind; }
    QString GetName() const override { return QStringLiteral("TestSwap"); }
    CRpnNode *CreateSame() const override { return new CTestSwap; }
    int DoFunction(CRpnData &result, QString &errorText) override
    {
        if (GetOperandCount() < 2) {
            errorText = QStringLiteral("Nothing to swap.");
            return 0;
        }
        CRpnData a, b;
        if (!EvaluateOperand(0, a) || !EvaluateOperand(1, b))
            return 0;
        unsigned char status = 1;
        WriteBackParameter(GetOperand(0), b, status);
        WriteBackParameter(GetOperand(1), a, status);
        result.SetInt(GetOperandCount());
        return 1;
    }
};

// TestNamed(...): its named parameters, upper-cased, as "NAME=value;...".
class CTestNamed : public CNodeScriptFunction
{
public:
    int GetKind() const override { return kNamedKind; }
    QString GetName() const override { return QStringLiteral("TestNamed"); }
    CRpnNode *CreateSame() const override { return new CTestNamed; }
    int DoFunction(CRpnData &result, QString &) override
    {
        CMapStringToRpnData map;
        unsigned char status = 1;
        for (int i = 0; i < GetOperandCount() && status == 1; ++i)
            ReadNamedParam(GetOperand(i), map, status, true);
        if (status != 1)
            return 0;
        QString text;
        for (int i = 0; i < map.GetCount(); ++i)
            text += map.GetKeyAt(i) + u'=' + map.GetValueAt(i).GetText() + u';';
        result.SetText(text);
        return 1;
    }
};

void provideTestFunctions(CRpnPrototypeArray &prototypes)
{
    prototypes.SetAt(kSwapKind, new CTestSwap);
    prototypes.SetAt(kNamedKind, new CTestNamed);
}

// The host names its own functions; the nodes come from the prototypes.
CRpnNode *testHook(CEquationTree *tree, const QString &name, int position, int row, int col, unsigned char &)
{
    if (name.compare(QLatin1StringView("TestSwap"), Qt::CaseInsensitive) == 0)
        return CreateNodeOfKind(kSwapKind, tree, position, row, col);
    if (name.compare(QLatin1StringView("TestNamed"), Qt::CaseInsensitive) == 0)
        return CreateNodeOfKind(kNamedKind, tree, position, row, col);
    return nullptr;
}

class RpnDispatch : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { AddPrototypeProvider(provideTestFunctions); }
    void SetUp() override { tree.m_keywordHook = testHook; }
    CEquationTree tree;
};

} // namespace

TEST_F(RpnDispatch, ScriptFunctionFailuresCarryTheirSourceLine)
{
    EXPECT_EQ(Eval("x = 1\ny = TestSwap(x)\nz = 2", &tree), "E:y = TestSwap(x)\nNothing to swap.@2,4");
    EXPECT_EQ(tree.GetErrorToken(), QStringLiteral("TestSwap"));
    ASSERT_EQ(tree.GetErrorList().size(), 1);
    EXPECT_EQ(tree.GetErrorList()[0], QStringLiteral("y = TestSwap(x)\nNothing to swap."));

    // A second failure in the same run keeps the first message but is listed.
    ASSERT_EQ(tree.Compile(QStringLiteral("TestSwap(1)\nTestSwap()"), nullptr, true), 1);
    EXPECT_TRUE(tree.GetErrorList().isEmpty());
    WalkTree(tree.GetRoot(), [](CRpnNode *node) {
        if (node->GetKind() == kSwapKind) {
            CRpnData v;
            unsigned char status = 1;
            node->Evaluate(v, status);
            EXPECT_EQ(status, 0);
            EXPECT_TRUE(v.IsNull());
        }
        return 0;
    });
    EXPECT_EQ(tree.GetErrorMessage(), QStringLiteral("TestSwap(1)\nNothing to swap."));
    EXPECT_EQ(tree.GetErrorList(),
              QStringList({QStringLiteral("TestSwap(1)\nNothing to swap."), QStringLiteral("TestSwap()Nothing to swap.")}));

    // The message of a failing argument stands; nothing is added.
    EXPECT_EQ(Eval("b = 1; TestSwap(1/0, b)", &tree).substr(0, 20), "E:" + Message(41655).substr(0, 18));
    EXPECT_TRUE(tree.GetErrorList().isEmpty());

    // Throwing mode throws the line and the text, named and placed.
    tree.throwOnError = 1;
    ASSERT_EQ(tree.Compile(QStringLiteral("a = 2\n  TestSwap(a)"), nullptr, true), 1);
    CRpnData value;
    try {
        tree.Run(value);
        ADD_FAILURE() << "no exception";
    } catch (const CRpnException &e) {
        EXPECT_EQ(e.message, QStringLiteral("  TestSwap(a)Nothing to swap."));
        EXPECT_EQ(e.token, QStringLiteral("TestSwap"));
        EXPECT_EQ(e.row, 2);
        EXPECT_EQ(e.col, 2);
    }
}

TEST_F(RpnDispatch, ParametersByReference)
{
    EXPECT_EQ(Eval("a = 1; b = \"two\"; TestSwap(a, b); {a, b}", &tree), "ARRAY:{1,two,2,{two,1}}");
    // Only variables are written; other arguments are read.
    EXPECT_EQ(Eval("b = 5; TestSwap(1, b); b", &tree), "ARRAY:{5,2,1}");
    EXPECT_EQ(Eval("b = 5; TestSwap(b + 1, 3); b", &tree), "ARRAY:{5,2,5}");
    EXPECT_EQ(Eval("TestSwap(pi, 3); pi", &tree), "ARRAY:{2,3.141592653589793}");
}

TEST_F(RpnDispatch, NamedParameters)
{
    CRpnData options;
    options.SetDictionary();
    options.DictSet(QStringLiteral("Width"), CRpnData(3));
    options.DictSet(QStringLiteral("Color"), CRpnData(QStringLiteral("red")));
    tree.GetVariables()->SetAt(QStringLiteral("opts"), options);
    const std::vector<std::pair<const char *, const char *>> cases = {
        {"TestNamed(size = 10)", "STRING:SIZE=10;"},
        {"TestNamed(\"Mode\" = \"fast\", 7, \"loose\")", "STRING:MODE=fast;"},
        {"k = {\"key\"}; TestNamed(k[0] = 2)", "ARRAY:{{key},KEY=2;}"},
        // A left side that is no text adds nothing.
        {"k = {1}; TestNamed(k[0] = 2, b = 1)", "ARRAY:{{1},B=1;}"},
        // Dictionaries are merged, named or not.
        {"TestNamed(opts)", "STRING:WIDTH=3;COLOR=red;"},
        {"TestNamed(more = opts, a = 1)", "STRING:WIDTH=3;COLOR=red;A=1;"},
        {"TestNamed(a = 1/0)", "E:"},
    };
    for (const auto &[text, expect] : cases)
        EXPECT_EQ(Eval(text, &tree).substr(0, std::string(expect).size()), expect) << text;
    // Without the upper-case flag the names stay as written.
    ASSERT_EQ(tree.Compile(QStringLiteral("TestNamed(Size = 10, opts)"), nullptr, true), 1);
    CMapStringToRpnData map;
    unsigned char status = 1;
    CRpnNode *call = tree.GetRoot()->GetOperand(0);
    ReadNamedParam(call->GetOperand(0), map, status, false);
    ReadNamedParam(call->GetOperand(1), map, status, false);
    EXPECT_EQ(status, 1);
    ASSERT_EQ(map.GetCount(), 3);
    EXPECT_EQ(map.GetKeyAt(0), QStringLiteral("Size"));
    EXPECT_EQ(map.GetKeyAt(1), QStringLiteral("Width"));
}

TEST_F(RpnDispatch, PrototypesByClassNumber)
{
    CRpnPrototypeArray &prototypes = GetPrototypes();
    EXPECT_EQ(CRpnPrototypeArray::Size, 2000);
    ASSERT_NE(prototypes.GetAt(kSwapKind), nullptr);
    std::unique_ptr<CRpnNode> node(CreateNodeOfKind(RPN_NODE_HYPOT, &tree, 5, 2, 3));
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->GetName(), QStringLiteral("hypot"));
    EXPECT_EQ(node->GetPrecedence(), RPN_PREC_FUNCTION);
    EXPECT_TRUE(node->IsMultiOperand());
    EXPECT_EQ(node->m_tree, &tree);
    EXPECT_EQ(node->m_row, 2);
    EXPECT_EQ(node->m_col, 3);
    // A saved tree comes back through the same numbers.
    ASSERT_EQ(tree.Compile(QStringLiteral("hypot(3, sqrt(16)) + Real(Complex(1, 2)) + atan2d(1, 1)"), nullptr, true), 1);
    CRpnBuffer buffer(10);
    buffer.Reset(CBufferIO::ModeWrite, 64);
    ASSERT_TRUE(tree.Serialize(buffer));
    CRpnBuffer reading(10);
    reading.LoadForReading(buffer.ToByteArray());
    CEquationTree copy;
    ASSERT_TRUE(copy.Serialize(reading));
    CRpnData value;
    ASSERT_EQ(copy.Run(value), 1);
    EXPECT_DOUBLE_EQ(value.GetDouble(), 51.0);
}

TEST_F(RpnDispatch, StatusTenAndStoppingPassTheValueOn)
{
    EXPECT_EQ(Eval("function f() { sqrt(return 16) }; f()", &tree), "REAL:16");
    EXPECT_EQ(Eval("function f() { max(1, return 7, 9) }; f()", &tree), "REAL:7");
    // A stopped tree passes the operand's value on without computing.
    tree.GetVariables()->SetAt(QStringLiteral("v"), CRpnData(-4.0));
    ASSERT_EQ(tree.Compile(QStringLiteral("sqrt(v)"), nullptr, true), 1);
    tree.Stop();
    CRpnData value;
    unsigned char status = 1;
    tree.GetRoot()->GetOperand(0)->Evaluate(value, status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(value.GetDouble(), -4.0);
}

// Series over a column: the block program and the per-row tree give the
// same values, validity and messages.
TEST_F(RpnDispatch, SeriesThroughFunctions)
{
    const std::vector<double> x = {4.0, -1.0, 0.25, 9.0, -16.0, 0.0};
    const int n = int(x.size());
    struct Row {
        const char *text;
        std::vector<double> values;
        std::vector<unsigned char> valid;
    };
    const std::vector<Row> rows = {
        {"sqrt(x)", {2, 0, 0.5, 3, 0, 0}, {1, 0, 1, 1, 0, 1}},
        {"1 + log10(x)", {1 + std::log10(4.0), 0, 1 + std::log10(0.25), 1 + std::log10(9.0), 0, 0}, {1, 0, 1, 1, 0, 0}},
        {"min(x, 0.5) + max(x, 0.25)", {4.5, -0.75, 0.5, 9.5, -15.75, 0.25}, {1, 1, 1, 1, 1, 1}},
        {"hypot(x, 0, 3, 0)", {5, std::sqrt(10.0), std::sqrt(9.0625), std::sqrt(90.0), std::sqrt(265.0), 3}, {1, 1, 1, 1, 1, 1}},
    };
    for (const Row &row : rows) {
        CEquationTree t;
        t.BindColumn(QStringLiteral("x"), x.data(), nullptr, n);
        ASSERT_EQ(t.Compile(QString::fromLatin1(row.text), nullptr, true), 1);
        std::vector<double> values(std::size_t(n), -99.0);
        std::vector<unsigned char> valid(std::size_t(n), 9);
        t.EvaluateSeries(values.data(), valid.data(), 0, n - 1);
        for (int i = 0; i < n; ++i) {
            EXPECT_EQ(valid[std::size_t(i)], row.valid[std::size_t(i)]) << row.text << " row " << i;
            if (row.valid[std::size_t(i)] == 1) {
                EXPECT_DOUBLE_EQ(values[std::size_t(i)], row.values[std::size_t(i)]) << row.text << " row " << i;
            }
        }
        // Each failing row reports once, as the tree would: the first message
        // stays, and the list has one entry per failing row.
        const int failing = int(std::count(row.valid.begin(), row.valid.end(), 0));
        EXPECT_EQ(t.GetErrorList().size(), failing) << row.text;
        EXPECT_EQ(t.HasError(), failing > 0) << row.text;
    }
}
