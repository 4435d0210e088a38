// The user's formula lists, graph trees with their functions, user functions
// with GRAPH, and computed curves over columns with invalid rows.
#include "graphdata/formula/formulacurve.h"
#include "graphdata/formula/graphcustom.h"
#include "graphdata/formula/graphnodes.h"
#include "graphdata/formula/graphtree.h"

#include "formula/rpnnode.h"
#include "graphdata/computedcurve.h"
#include "graphdata/grapherrors.h"
#include "graphdata/graphcurve.h"
#include "support/languagestring.h"
#include "support/registry.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kMissing = -9999.0; // marks a cell left missing (validity 0)

// Time 0..4, V1 with a missing row and a denormal, V2 from -1 up.
void fillGraph(CGraphCurve &graph)
{
    const char *names[] = {"Time", "V1", "V2"};
    const double rows[5][3] = {
        {0, 1, -1}, {1, 2, 0}, {2, kMissing, 1}, {3, 4, 2}, {4, 1e-310, 3},
    };
    graph.m_data.Create(1, 3, 5, 0);
    for (int c = 0; c < 3; ++c)
        graph.m_data.GetColumn(c)->m_name = QString::fromLatin1(names[c]);
    for (int r = 0; r < 5; ++r) {
        std::uint8_t valid[3];
        for (int c = 0; c < 3; ++c)
            valid[c] = rows[r][c] == kMissing ? 0 : 1;
        graph.m_data.AppendRows(rows[r], valid, 0, 3, r, 1);
    }
}

struct Rows
{
    std::vector<double> values;
    std::vector<int> valid;
};

// The curve of `formula` over the graph, row by row; empty when it fails.
Rows curveOf(CGraphCurve &graph, const QString &formula, CFormulaCurveJob *jobOut = nullptr)
{
    CFormulaCurveJob local;
    CFormulaCurveJob &job = jobOut ? *jobOut : local;
    Rows out;
    if (!job.Prepare(graph, formula))
        return out;
    job.Run();
    if (!job.Result())
        return out;
    for (int r = 0; r < job.Result()->m_count; ++r) {
        out.valid.push_back(job.Result()->m_valid[r]);
        out.values.push_back(job.Result()->m_valid[r] == 1 ? job.Result()->m_values[r] : kNaN);
    }
    return out;
}

class GraphFormula : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
        EnsureGraphFunctions(); // the language's functions, for the plain trees too
    }
    void SetUp() override
    {
        ASSERT_TRUE(m_settings.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settings.path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settings.path());
        ResetGraphCustom();
        ReloadUserFunctions();
        fillGraph(m_graph);
    }
    void TearDown() override
    {
        ResetGraphCustom();
        ReloadUserFunctions();
    }
    void setFunctions(const QStringList &items)
    {
        GetGraphCustom().SaveFunctions(items);
        ReloadUserFunctions();
    }

    QTemporaryDir m_settings;
    CGraphCurve m_graph;
};

} // namespace

TEST(GraphCustomItems, ParseItemSplitsHeadParametersAndBody)
{
    const struct
    {
        const char *text;
        bool withParams;
        bool ok;
        const char *head;
        const char *params; // joined by '|'
        const char *body;
    } cases[] = {
        {"f(a,b){a+b}", true, true, "f", "a|b", "a+b"},
        {" scale ( k , d ) { k*GRAPH+d } ", true, true, "scale", "k|d", " k*GRAPH+d "},
        {"f(a,b){a+b}", false, true, "f(a,b)", "", "a+b"},
        {"{x}", true, false, "", "", ""},         // the brace at 0
        {"f{x", true, false, "", "", ""},         // no closing brace
        {"f}x{", true, false, "", "", ""},        // closing before opening
        {"f{a{b}c}d}", true, true, "f", "", "a{b}c}d"}, // the last brace ends the body
        {"   {x}", true, false, "", "", ""},      // empty head
        {"(a){x}", true, true, "(a)", "", "x"},  // a list at 0 is no parameter list
        {"g(){1}", true, true, "g", "", "1"},
    };
    for (const auto &c : cases) {
        QString text = QString::fromLatin1(c.text);
        int open = -1, close = -1;
        QString head;
        QStringList params;
        const bool ok = ParseItem(text, false, open, close, head, c.withParams ? &params : nullptr);
        ASSERT_EQ(ok, c.ok) << c.text;
        if (!ok)
            continue;
        EXPECT_EQ(head, QString::fromLatin1(c.head)) << c.text;
        EXPECT_EQ(text.mid(open + 1, close - open - 1), QString::fromLatin1(c.body)) << c.text;
        if (c.withParams && *c.params) {
            EXPECT_EQ(params.join(u'|'), QString::fromLatin1(c.params)) << c.text;
        }
    }
}

TEST(GraphCustomItems, BlankModeKeepsPositionsOfTheBody)
{
    QString text = u"sq(x)\t{ x*x }  }tail"_s;
    const QString original = text;
    int open = 0, close = 0;
    QString head;
    ASSERT_TRUE(ParseItem(text, true, open, close, head));
    EXPECT_EQ(head, u"sq(x)"_s);
    EXPECT_EQ(text.size(), close);
    EXPECT_EQ(text.left(open + 1), u"     \t "_s); // the tab (not above 32) stays
    EXPECT_EQ(text.mid(open + 1), original.mid(open + 1, close - open - 1));
}

TEST_F(GraphFormula, KindsLoadFromTheSettingsAndSkipBadItems)
{
    const QString key = u"UserFunction"_s;
    RegistrySetDword(key, u"PostProcessCount"_s, 2);
    RegistrySetString(key, u"PostProcess1"_s, u"scale(k, d){k*GRAPH+d}"_s);
    RegistrySetString(key, u"PostProcess2"_s, u"broken(k"_s);
    RegistrySetDword(key, u"FormulaCount"_s, 1);
    RegistrySetString(key, u"Formula1"_s, u"Power{V1*V2}"_s);
    ResetGraphCustom();
    CGraphCustom &custom = GetGraphCustom();
    EXPECT_EQ(custom.m_postProcessNames, QStringList{u"scale"_s});
    EXPECT_EQ(custom.m_postProcessParams, QStringList{u"k,d"_s});
    EXPECT_EQ(custom.m_postProcessBodies, QStringList{u"k*GRAPH+d"_s});
    EXPECT_EQ(custom.m_formulaNames, QStringList{u"Power"_s});
    EXPECT_TRUE(custom.m_functionNames.isEmpty()); // no values at all
    QStringList names, bodies;
    EXPECT_EQ(custom.LoadKind(2, names, bodies), 0);
    EXPECT_EQ(custom.LoadKind(7, names, bodies), 0);
    EXPECT_EQ(custom.LoadKind(1, names, bodies), 1);
}

TEST_F(GraphFormula, SavedFunctionsAreNumberedFromOneAndShrink)
{
    CGraphCustom &custom = GetGraphCustom();
    custom.SaveFunctions({u"a{1}"_s, u"b{2}"_s, u"c{3}"_s});
    custom.SaveFunctions({u"d{GRAPH}"_s});
    const QString key = u"UserFunction"_s;
    EXPECT_EQ(RegistryGetDword(key, u"FunctionCount"_s, 0), 1u);
    EXPECT_EQ(RegistryGetString(key, u"Function1"_s, QString()), u"d{GRAPH}"_s);
    EXPECT_TRUE(RegistryGetString(key, u"Function2"_s, QString()).isEmpty());
    QStringList names, bodies;
    EXPECT_EQ(custom.GetFunctions(names, bodies), 1);
    EXPECT_EQ(names, QStringList{u"d"_s});
    EXPECT_EQ(bodies, QStringList{u"GRAPH"_s});
}

TEST_F(GraphFormula, GraphFunctionsReadAndWriteTheData)
{
    auto data = CGraphTreeData::Take(m_graph.m_data, 0);
    EXPECT_EQ(data->Step(), 1.0);
    const struct
    {
        const char *formula;
        bool isNull;
        double value;
        int status;
    } cases[] = {
        {"GetSize()", false, 5, 1},
        {"GetValue(Time, -1)", true, 0, 1},
        {"GetValue(Time, 5)", true, 0, 1},
        {"GetValue(V2, 3)", false, 2, 1},
        {"GetValue(V2, 2.995)", false, 2, 1}, // rows round the language's way
        {"GetValue(V1, 2)", true, 0, 0},      // a missing cell
        {"GetValue(V1, 4)", false, 0, 1},     // a denormal reads 0
        {"GetValue(V2*10+Time, 3)", false, 23, 1},
        {"SetResult(1/0)", false, 0, 1},      // no run prepared: count 0, operand untouched
        {"SetGraph(1, 5)", false, 0, 1},      // no result column: nothing written
    };
    for (const auto &c : cases) {
        CEquationTree_Graph tree(data);
        ASSERT_EQ(tree.CompileOnColumns(QString::fromLatin1(c.formula)), 1) << c.formula << " "
                                                                           << tree.errorText.toStdString();
        // The statement itself, not the list of statements round it.
        CRpnNode *top = tree.GetRoot();
        while (top->IsList() && !top->IsMultiOperand() && top->GetOperandCount() == 1)
            top = top->GetOperand(0);
        CRpnData value;
        unsigned char status = 1;
        top->Evaluate(value, status);
        EXPECT_EQ(value.IsNull(), c.isNull) << c.formula;
        if (!c.isNull) {
            EXPECT_EQ(value.GetDouble(), c.value) << c.formula;
        }
        EXPECT_EQ(int(status), c.status) << c.formula;
    }
}

TEST_F(GraphFormula, SetGraphFillsTheCurveAndIgnoresOutsideRows)
{
    const Rows rows = curveOf(m_graph, u"i = 0; while (i < GetSize()) { SetGraph(i, i*i); i = i+1 }; "
                                       u"SetGraph(-1, 1); SetGraph(GetSize(), 1); SetGraph(2, 1/0)"_s);
    ASSERT_EQ(rows.values.size(), 5u);
    EXPECT_EQ(rows.values[0], 0);
    EXPECT_EQ(rows.values[1], 1);
    EXPECT_EQ(rows.values[3], 9);
    EXPECT_EQ(rows.values[4], 16);
    EXPECT_EQ(rows.valid[2], 0); // the division failed there
    // SetResult gives the run's row count.
    EXPECT_EQ(curveOf(m_graph, u"SetResult(1/0) + Time*0"_s).values, std::vector<double>(5, 5.0));
}

TEST_F(GraphFormula, CurvesOverColumnsKeepInvalidRowsAsGaps)
{
    const struct
    {
        const char *formula;
        std::vector<int> valid;
        std::vector<double> values; // for the valid rows
    } cases[] = {
        {"V1*2+Time", {1, 1, 0, 1, 1}, {2, 5, 0, 11, 4}},
        {"V2/V2", {1, 2, 1, 1, 1}, {1, 0, 1, 1, 1}},           // division by zero on row 1: invalid
        {"sqrt(V2)+V1", {2, 1, 0, 1, 1}, {0, 2, 0, 5.414213562373095, 1.7320508075688772}},
        {"iif(V2 > 0, V2, 0-V2)", {1, 1, 1, 1, 1}, {1, 0, 1, 2, 3}},
        {"Int(1)", {1, 1, 1, 1, 1}, {0, 1, 2, 3, 4}},          // over the X values, from x = 0
    };
    for (const auto &c : cases) {
        const Rows rows = curveOf(m_graph, QString::fromLatin1(c.formula));
        ASSERT_EQ(rows.valid, c.valid) << c.formula;
        for (std::size_t r = 0; r < c.valid.size(); ++r) {
            if (c.valid[r] == 1) {
                EXPECT_NEAR(rows.values[r], c.values[r], 1e-12) << c.formula << " row " << r;
            }
        }
    }
}

TEST_F(GraphFormula, FormulaErrorsStandAtTheirPlace)
{
    const struct
    {
        const char *formula;
        int position;
        const char *says;
    } cases[] = {
        {"sin(Foo)+V1", 4, "column named Foo"},  // no such column
        {"V1 +\n  Foo", 7, "column named Foo"}, // on the second line
        {"a = 2; a*V1 + b", 14, "column named b"},
        {"V1*(2", -2, ""},                       // somewhere: only that it fails
    };
    for (const auto &c : cases) {
        CFormulaCurveJob job;
        EXPECT_FALSE(job.Prepare(m_graph, QString::fromLatin1(c.formula))) << c.formula;
        EXPECT_FALSE(job.ErrorText().isEmpty()) << c.formula;
        EXPECT_TRUE(job.ErrorText().contains(QString::fromLatin1(c.says))) << job.ErrorText().toStdString();
        if (c.position >= -1) {
            EXPECT_EQ(job.ErrorPosition(), c.position) << c.formula;
        }
    }
    CFormulaCurveJob empty;
    EXPECT_FALSE(empty.Prepare(m_graph, u"  "_s));
}

TEST_F(GraphFormula, UserFunctionsSubstituteTheirCurve)
{
    setFunctions({u"twice{GRAPH*2}"_s, u"seven{7+Time*0}"_s, u"Broken{GRAPH+}"_s, u"second{GetValue(GRAPH, 1)}"_s,
                  u"gapped{iif(GRAPH > 5, GRAPH, V1)}"_s});
    EXPECT_TRUE(HasUserFunction(u"TWICE"_s));
    const std::vector<int> allValid(5, 1);
    Rows rows = curveOf(m_graph, u"twice(V2) + Twice(\"Time\")"_s);
    EXPECT_EQ(rows.valid, allValid);
    EXPECT_EQ(rows.values, (std::vector<double>{-2, 2, 6, 10, 14}));
    // Without GRAPH, every argument gives the same column.
    EXPECT_EQ(curveOf(m_graph, u"seven(V1)"_s).values, curveOf(m_graph, u"seven(V2)"_s).values);
    // A gap of the argument stays a gap.
    rows = curveOf(m_graph, u"twice(V1)"_s);
    EXPECT_EQ(rows.valid, (std::vector<int>{1, 1, 0, 1, 1}));
    // Inside arithmetic, row by row: the prepared row, the gap included.
    rows = curveOf(m_graph, u"twice(V1)*0.5 - V1 + 1"_s);
    EXPECT_EQ(rows.valid, (std::vector<int>{1, 1, 0, 1, 1}));
    EXPECT_EQ(rows.values[0], 1.0);
    EXPECT_EQ(rows.values[4], 1.0);
    // A gap of the body's result is a gap where the argument has none.
    EXPECT_EQ(curveOf(m_graph, u"gapped(V2) + 1"_s).valid, (std::vector<int>{1, 1, 0, 1, 1}));
    EXPECT_EQ(curveOf(m_graph, u"second(V2)"_s).values, std::vector<double>(5, 0.0));
    // A body that does not compile fails the curve with the body's message.
    CFormulaCurveJob job;
    EXPECT_TRUE(curveOf(m_graph, u"broken(V1)"_s, &job).values.empty());
    EXPECT_FALSE(job.ErrorText().isEmpty());
}

TEST_F(GraphFormula, ReloadingFunctionsLeavesCompiledCurvesAlone)
{
    setFunctions({u"f{GRAPH*2}"_s});
    CFormulaCurveJob compiled;
    ASSERT_TRUE(compiled.Prepare(m_graph, u"f(V2)"_s));
    setFunctions({u"f{GRAPH*3}"_s, u"g{GRAPH}"_s});
    compiled.Run();
    ASSERT_TRUE(compiled.Result());
    EXPECT_EQ(compiled.Result()->m_values[4], 6.0); // the body it was compiled with
    EXPECT_EQ(curveOf(m_graph, u"f(V2)"_s).values[4], 9.0);
    setFunctions({});
    CFormulaCurveJob gone;
    EXPECT_FALSE(gone.Prepare(m_graph, u"f(V2)"_s));
}

TEST_F(GraphFormula, ApplyCurveListComputesFormulaCurves)
{
    InstallFormulaCurves();
    std::vector<QString> reports;
    const GraphErrorReporter old = SetGraphErrorReporter(
        [&](int id, const QString &detail) { reports.push_back(QString::number(id) + u' ' + detail); });
    CCurveBasicInfoArray list;
    const char *formulas[] = {"V2*2", "log(V2)", "Nothing*2"};
    for (const char *f : formulas) {
        auto *e = new CCurveBasicInfo;
        e->m_source = CCurveBasicInfo::OriginComputed;
        e->m_colName = QString::fromLatin1(f);
        list.Add(e);
    }
    bool notFound = false;
    m_graph.ApplyCurveList(list, notFound);
    SetGraphErrorReporter(old);
    SetComputedCurveEvaluator({});

    EXPECT_TRUE(notFound); // the third names no column
    ASSERT_EQ(m_graph.CurveCount(), 2);
    const CGraphColumn *doubled = m_graph.Curve(0)->m_computedColumn.Get();
    ASSERT_TRUE(doubled);
    EXPECT_EQ(doubled->m_name, u"V2*2"_s);
    EXPECT_EQ(doubled->m_minValue, -2.0);
    EXPECT_EQ(doubled->m_maxValue, 6.0);
    const CGraphColumn *logs = m_graph.Curve(1)->m_computedColumn.Get();
    ASSERT_TRUE(logs);
    EXPECT_EQ(logs->m_valid[0], 2); // log of -1: invalid, the line breaks
    EXPECT_EQ(logs->m_valid[2], 1);
    // One warning for the rows of log(V2) that failed, one error for the
    // missing column, told at its place.
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_TRUE(reports[0].startsWith(u"43772 "_s)) << reports[0].toStdString();
    EXPECT_TRUE(reports[1].contains(u"line 1, column 1"_s)) << reports[1].toStdString();
}

TEST_F(GraphFormula, PreparedAveragesGiveWhatTheTreeGives)
{
    // 1000 rows over 1 s, V1 with invalid rows now and then.
    const int n = 1000;
    CGraphCurve graph;
    graph.m_data.Create(1, 2, n, 0);
    graph.m_data.GetColumn(0)->m_name = u"Time"_s;
    graph.m_data.GetColumn(1)->m_name = u"V1"_s;
    for (int r = 0; r < n; ++r) {
        const double row[2] = {r * 1e-3, std::sin(r * 0.37) + r % 5};
        const std::uint8_t valid[2] = {1, std::uint8_t(r % 97 == 3 ? 2 : 1)};
        graph.m_data.AppendRows(row, valid, 0, 2, r, 1);
    }
    const char *formulas[] = {"AvgX(V1, 0.05)*2 + sin(Time)", "AvgX(AvgX(V1, 0.01), 0.1) - V1",
                              "iif(Time > 0.5, AvgX(V1, 0.02), 0)"};
    const CGraphColumn *time = graph.m_data.GetColumn(0);
    const CGraphColumn *v1 = graph.m_data.GetColumn(1);
    for (const char *f : formulas) {
        // The language alone, without the graph tree's columns of averages.
        CEquationTree plain;
        plain.BindColumn(u"Time"_s, time->m_values, time->m_valid, n);
        plain.BindColumn(u"V1"_s, v1->m_values, v1->m_valid, n);
        plain.SetSampling(1e-3, time->m_values, n);
        ASSERT_EQ(plain.Compile(QString::fromLatin1(f)), 1) << f;
        plain.ResetRun();
        plain.PrepareRun(0, n - 1);
        std::vector<double> values(n);
        std::vector<unsigned char> valid(n);
        plain.EvaluateSeries(values.data(), valid.data(), 0, n - 1);

        const Rows rows = curveOf(graph, QString::fromLatin1(f));
        ASSERT_EQ(rows.valid.size(), std::size_t(n)) << f;
        for (int r = 0; r < n; ++r) {
            // Where the column itself is invalid the curve is too; where the
            // formula failed the row is invalid.
            const int expected = std::string(f).find("- V1") != std::string::npos && v1->m_valid[r] != 1 ? 2
                                 : valid[r] == 0                                                       ? 2
                                                                                                       : valid[r];
            ASSERT_EQ(rows.valid[r], expected) << f << " row " << r;
            if (expected == 1) {
                ASSERT_DOUBLE_EQ(rows.values[r], values[r]) << f << " row " << r;
            }
        }
    }
}

TEST(FormulaCurveExtents, CoverTheValidRowsOfEveryPiece)
{
    // V runs 0, 7, 14, ... (mod 23) - 11, so the extremes fall on varied
    // rows; the cells of every fifth row are missing and 1/(V-3) fails at
    // V = 3, which leaves extreme values around it out.
    const struct
    {
        int rows, pieceRows;
        const char *formula;
    } cases[] = {
        {1, 0, "V*2"},   {3, 0, "V*2"},   {4, 0, "V*2"},       {9, 0, "V*2"},
        {9, 1, "V*2"},   {9, 2, "-V"},    {23, 4, "1/(V-3)"}, {23, 5, "1/(V-3)"},
        {50, 7, "V*V"},  {50, 0, "1/(V-3)"},
    };
    for (const auto &c : cases) {
        CGraphCurve graph;
        graph.m_data.Create(1, 2, c.rows, 0);
        graph.m_data.GetColumn(0)->m_name = u"Time"_s;
        graph.m_data.GetColumn(1)->m_name = u"V"_s;
        for (int r = 0; r < c.rows; ++r) {
            const double row[2] = {double(r), double((r * 7) % 23 - 11)};
            const std::uint8_t valid[2] = {1, std::uint8_t(r % 5 == 4 ? 0 : 1)};
            graph.m_data.AppendRows(row, valid, 0, 2, r, 1);
        }
        CFormulaCurveJob job;
        job.SetPieceRows(c.pieceRows);
        ASSERT_TRUE(job.Prepare(graph, QString::fromLatin1(c.formula))) << c.formula;
        job.Run();
        ASSERT_TRUE(job.Result()) << c.rows << " " << c.formula;
        const CGraphColumn &result = *job.Result();
        double low = std::numeric_limits<double>::infinity(), high = -low;
        int good = 0;
        for (int r = 0; r < c.rows; ++r) {
            if (result.m_valid[r] != 1)
                continue;
            ++good;
            low = std::min(low, result.m_values[r]);
            high = std::max(high, result.m_values[r]);
        }
        EXPECT_EQ(job.GoodRows(), good) << c.rows << " " << c.formula;
        EXPECT_EQ(result.m_minValue, low) << c.rows << " " << c.pieceRows << " " << c.formula;
        EXPECT_EQ(result.m_maxValue, high) << c.rows << " " << c.pieceRows << " " << c.formula;
        EXPECT_EQ(result.m_hasInvalid, good < c.rows ? 1u : 0u) << c.rows << " " << c.formula;
    }
}
