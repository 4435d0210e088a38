// The machinery under the functions: script functions and their reports,
// parameters by reference, named parameters, saved trees, and the real paths
// of series.

#include "functions/rpnfunctionbase.h"
#include "functions/rpnfunctionkinds.h"
#include "formula/rpnbuffer.h"
#include "formula/rpndictionary.h"
#include "formula/rpnkeywords.h"
#include "formula/rpntree.h"

#include "formulatest.h"
#include "functionstest.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>

namespace {

constexpr int kTestKind = 1990;

// Test(a, b, ...): swaps its first two arguments through their references
// and gives its named parameters, upper-cased, as "NAME=value;...".  Without
// arguments it fails with a text.
class CTestFunction : public CNodeScriptFunction
{
public:
    int GetKind() const override { return kTestKind; }
    QString GetName() const override { return QStringLiteral("Test"); }
    CRpnNode *CreateSame() const override { return new CTestFunction; }
    int DoFunction(CRpnData &result, QString &errorText) override
    {
        if (GetOperandCount() == 0) {
            errorText = QStringLiteral("Nothing to do.");
            return 0;
        }
        CMapStringToRpnData map;
        unsigned char status = 1;
        for (int i = 0; i < GetOperandCount() && status == 1; ++i)
            ReadNamedParam(GetOperand(i), map, status, true);
        CRpnData a, b;
        if (status != 1 || !EvaluateOperand(0, a) || !EvaluateOperand(GetOperandCount() - 1, b))
            return 0;
        WriteBackParameter(GetOperand(0), b, status);
        WriteBackParameter(GetOperand(GetOperandCount() - 1), a, status);
        QString text;
        for (int i = 0; i < map.GetCount(); ++i)
            text += map.GetKeyAt(i) + u'=' + map.GetValueAt(i).GetText() + u';';
        result.SetText(text);
        return 1;
    }
};

void provideTestFunction(CRpnPrototypeArray &prototypes)
{
    prototypes.SetAt(kTestKind, new CTestFunction);
}

// The host names its own function; the node comes from the prototypes.
CRpnNode *testHook(CEquationTree *tree, const QString &name, int position, int row, int col, unsigned char &)
{
    return name == u"Test" ? CreateNodeOfKind(kTestKind, tree, position, row, col) : nullptr;
}

class RpnDispatch : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { AddPrototypeProvider(provideTestFunction); }
    void SetUp() override { tree.m_keywordHook = testHook; }
    CEquationTree tree;
};

} // namespace

TEST_F(RpnDispatch, ScriptFunctionFailuresCarryTheirSourceLine)
{
    EXPECT_EQ(Eval("x = 1\ny = Test()\nz = 2", &tree), "E:y = Test()\nNothing to do.@2,4");
    EXPECT_EQ(tree.GetErrorToken(), QStringLiteral("Test"));
    EXPECT_EQ(tree.GetErrorList(), QStringList{QStringLiteral("y = Test()\nNothing to do.")});
    // The message of a failing argument stands; nothing is listed.
    EXPECT_EQ(Eval("b = 1; Test(1/0, b)", &tree).substr(0, 20), "E:" + Message(41655).substr(0, 18));
    EXPECT_TRUE(tree.GetErrorList().isEmpty());
    // Throwing mode throws the line and the text, named and placed.
    tree.throwOnError = 1;
    ASSERT_EQ(tree.Compile(QStringLiteral("a = 2\n  Test()"), nullptr, true), 1);
    CRpnData value;
    try {
        tree.Run(value);
        ADD_FAILURE() << "no exception";
    } catch (const CRpnException &e) {
        EXPECT_EQ(e.message, QStringLiteral("  Test() Nothing to do."));
        EXPECT_EQ(e.token, QStringLiteral("Test"));
        EXPECT_EQ(e.col, 2);
    }
}

TEST_F(RpnDispatch, ReferencesAndNamedParameters)
{
    CRpnData options;
    options.SetDictionary();
    options.DictSet(QStringLiteral("Width"), CRpnData(3));
    tree.GetVariables()->SetAt(QStringLiteral("opts"), options);
    CRpnData keys;
    keys.SetArray(2);
    keys.SetAt(0, CRpnData(QStringLiteral("key")));
    keys.SetAt(1, CRpnData(1.0));
    tree.GetVariables()->SetAt(QStringLiteral("k"), keys);
    const std::vector<std::pair<const char *, const char *>> cases = {
        // Only variables are written back; other arguments are read.
        {"a = 1; b = \"two\"; Test(a, b); {a, b}", "ARRAY:{1,two,,{two,1}}"},
        {"b = 5; Test(1, b); b", "ARRAY:{5,,1}"}, {"Test(pi, 3); pi", "ARRAY:{,3.141592653589793}"},
        // Names: a variable's own, or the text of the left side; dictionaries merge.
        {"Test(size = 10)", "STRING:SIZE=10;"}, {"Test(7, \"Mode\" = \"fast\", 8)", "STRING:MODE=fast;"},
        {"Test(k[0] = 2)", "STRING:KEY=2;"}, {"Test(k[1] = 2)", "STRING:"},
        {"Test(opts)", "STRING:WIDTH=3;"}, {"Test(more = opts, a = 1)", "STRING:WIDTH=3;A=1;"},
    };
    for (const auto &[text, expect] : cases)
        EXPECT_EQ(Eval(text, &tree), expect) << text;
    // Without the upper-case flag the names stay as written.
    ASSERT_EQ(tree.Compile(QStringLiteral("Test(Size = 10, opts)"), nullptr, true), 1);
    CMapStringToRpnData map;
    unsigned char status = 1;
    for (int i = 0; i < 2; ++i)
        ReadNamedParam(tree.GetRoot()->GetOperand(0)->GetOperand(i), map, status, false);
    EXPECT_EQ(map.GetKeyAt(0) + map.GetKeyAt(1), QStringLiteral("SizeWidth"));
}

TEST_F(RpnDispatch, SavedTreesAndReturnsThroughFunctions)
{
    ASSERT_EQ(tree.Compile(QStringLiteral("hypot(3, sqrt(16)) + Real(Complex(1, 2)) + atan2d(1, 1) + AvgX(1, 2)"),
                           nullptr, true), 1);
    CRpnBuffer buffer(10);
    buffer.Reset(CBufferIO::ModeWrite, 64);
    ASSERT_TRUE(tree.Serialize(buffer));
    CRpnBuffer reading(10);
    reading.LoadForReading(buffer.ToByteArray());
    CEquationTree copy;
    ASSERT_TRUE(copy.Serialize(reading));
    CRpnData value;
    ASSERT_EQ(copy.Run(value), 1);
    EXPECT_DOUBLE_EQ(value.GetDouble(), 52.0);
    // A return inside an argument passes its value on.
    EXPECT_EQ(Eval("function f() { sqrt(return 16) }; f()"), "REAL:16");
    EXPECT_EQ(Eval("function f() { max(1, return 7, 9) }; f()"), "REAL:7");
}

// Series over a column: the block program and the tree give the same values,
// validity and messages (one listed per failing row).
TEST_F(RpnDispatch, SeriesThroughFunctions)
{
    const std::vector<double> x = {4.0, -1.0, 0.25, 0.0};
    const std::vector<std::pair<const char *, std::vector<double>>> rows = {
        {"sqrt(x)", {2, NAN, 0.5, 0}},
        {"1 + log10(x)", {1 + std::log10(4.0), NAN, 1 + std::log10(0.25), NAN}},
        {"min(x, 0.5) + max(x, 0.25)", {4.5, -0.75, 0.5, 0.25}},
        {"hypot(x, 0, 3, 0)", {5, std::sqrt(10.0), std::sqrt(9.0625), 3}},
    };
    for (const auto &[text, expect] : rows) {
        CEquationTree t;
        t.BindColumn(QStringLiteral("x"), x.data(), nullptr, 4);
        ASSERT_EQ(t.Compile(QString::fromLatin1(text), nullptr, true), 1);
        std::vector<double> values(4);
        std::vector<unsigned char> valid(4);
        t.EvaluateSeries(values.data(), valid.data(), 0, 3);
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(valid[std::size_t(i)], std::isnan(expect[std::size_t(i)]) ? 0 : 1) << text << " row " << i;
            if (valid[std::size_t(i)] == 1) {
                EXPECT_DOUBLE_EQ(values[std::size_t(i)], expect[std::size_t(i)]) << text << " row " << i;
            }
        }
        EXPECT_EQ(t.GetErrorList().size(), std::count(valid.begin(), valid.end(), 0)) << text;
    }
}
