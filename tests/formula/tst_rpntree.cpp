// The equation tree as hosts use it: variable access, runs and their status,
// series with their validity, host columns, the guarded run, throwing mode,
// user functions, and saving trees.

#include "formula/rpnbuffer.h"
#include "formula/rpndictionary.h"
#include "formula/rpnkeywords.h"
#include "formula/rpnnodes.h"
#include "formula/rpnseries.h"
#include "formula/rpnrowprogram.h"
#include "formula/rpntree.h"
#include "formula/rpnuserfunction.h"

#include "formulatest.h"

#include <gtest/gtest.h>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <stdexcept>

namespace {

// The host of these tests: variables "a" (slot 0) and "b" (slot 1) live in
// an array the run data points at; assignments are recorded.
struct Host
{
    double cells[2] = {2.0, 3.0};
    QStringList assigned;
};

void hostGet(CRpnData &result, int, int, void *data, void *, CRpnNode *, const QString &name, int &found)
{
    Host *host = static_cast<Host *>(data);
    if (name == u"a")
        result.SetDouble(host->cells[0]);
    else if (name == u"b")
        result.SetDouble(host->cells[1]);
    else
        found = 0;
}

CRpnData hostSet(const CRpnData &value, int, int, void *data, void *, CRpnNode *, const QString &name, double)
{
    static_cast<Host *>(data)->assigned << name + u'=' + value.GetText(16);
    return value;
}

void throwingGet(CRpnData &, int index, int, void *, void *, CRpnNode *, const QString &, int &)
{
    if (index == 1)
        throw std::runtime_error("host failure");
    throw 42;
}

QString g_boxText, g_boxCaption;
void recordBox(const QString &text, const QString &caption)
{
    g_boxText = text;
    g_boxCaption = caption;
}

} // namespace

TEST(RpnTree, HostVariablesThroughGetterAndSetter)
{
    Host host;
    CEquationTree tree;
    tree.m_freeVariables = 1;
    tree.SetVariableAccess(hostGet, hostSet);
    ASSERT_TRUE(tree.Compile(QStringLiteral("c = a * b + pi; b = 7")));
    unsigned char status = 0;
    EXPECT_EQ(tree.Run(&host, nullptr, nullptr, &status), 1);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(host.assigned.join(u' '), QStringLiteral("c=9.141592653589793 b=7"));

    // A name the getter does not know is an error that names it.
    ASSERT_TRUE(tree.Compile(QStringLiteral("a + nothing")));
    EXPECT_EQ(tree.Run(&host), 0);
    EXPECT_EQ(tree.GetErrorMessage(), RpnMessage(41830, {QStringLiteral("nothing"), QStringLiteral("a + nothing\n    ^")}));
    EXPECT_EQ(tree.GetErrorCol(), 4);
    // ... unless unknown names are to be quiet.
    tree.m_quietUnknown = 1;
    ASSERT_TRUE(tree.Compile(QStringLiteral("a + nothing")));
    CRpnData value;
    tree.m_runData1 = &host;
    EXPECT_EQ(tree.Run(value), 1);
    EXPECT_EQ(Describe(value), "REAL:2");
}

TEST(RpnTree, RunStatusAndReturn)
{
    EXPECT_EQ(Calculate("return 5; 6"), "REAL:5");
    EXPECT_EQ(Calculate("x = 1; if (x) { return x + 1 }; 9"), "REAL:2");
    EXPECT_EQ(Calculate("x = 0; while (1) { x = x + 1; if (x == 10) { return x * 2 } }"), "REAL:20");
    EXPECT_EQ(Calculate("x = 0; while (x < 3) { x = x + 1 }"), "ARRAY:{0,0}");
    EXPECT_EQ(Calculate("while (0) { 1 }"), ":");
    EXPECT_EQ(Calculate("if (0) { 1 }"), ":");
    EXPECT_EQ(Calculate("if (0) { 1 } else { 2 }"), "ARRAY:{2}");
    EXPECT_EQ(Calculate("if ({1,1}) 1 else 2"), "REAL:1");
    // The loop ends after a million passes with 0.0 and no message.
    CEquationTree tree;
    EXPECT_EQ(Calculate("x = 0; while (1) { x = x + 1 }; x", &tree), "ARRAY:{0,0,1000000}");
    EXPECT_FALSE(tree.HasError());

    CEquationTree empty;
    unsigned char status = 0;
    EXPECT_EQ(empty.Run(nullptr, nullptr, nullptr, &status), 1);
    CRpnData value(1.0);
    empty.EvaluateTree(value, status);
    EXPECT_TRUE(value.IsNull());
}

TEST(RpnTree, UserFunctions)
{
    const struct {
        const char *text;
        const char *expect;
    } cases[] = {
        {"function f(a) { return a*2 }; f(3)", "REAL:6"},
        {"function f(a) { a*2 }; f(3)", "ARRAY:{6}"},
        {"function f(a, b=5) { return a+b }; f(1)", "REAL:6"},
        {"function f(a, b=-5, c=\"x\") { return {a, b, c} }; f(1)", "ARRAY:{1,-5,x}"},
        {"function f(a={1,2}) { return a }; f()", "ARRAY:{1,2}"},
        {"function f(a) { return a }; f(1, 2, 3)", "REAL:1"},
        {"function f(a, b) { return IsEmpty(b) }; f(1)", "INT:1"},
        {"function f(n) { if (n < 2) { return 1 }; return n*f(n-1) }; f(10)", "REAL:3628800"},
        {"function g() { return h() }; function h() { return 4 }; g()", "REAL:4"},
        // Plain names inside a function are its own; MainVariables reaches the main scope.
        {"y = 3; function f() { y = 1 }; f(); y", "ARRAY:{3,{1},3}"},
        {"y = 3; function f() { MainVariables[\"y\"] = 1 }; f(); y", "ARRAY:{3,{1},1}"},
        {"y = 3; function f() { return MainVariables[\"y\"] }; f()", "ARRAY:{3,3}"},
        {"y = 3; function f() { return y }; f()", "E43166@1,29"},
        // By reference: written back, also after an error; a constant argument is allowed.
        {"function f(_ref a) { a = 2 }; x = 1; f(x); x", "ARRAY:{1,{2},2}"},
        {"function f(_ref a) { a = 2 }; f(1)", "ARRAY:{2}"},
        {"function f(_ref a) { a = 2 }; x = 1; f(x + 0); x", "ARRAY:{1,{2},1}"},
        {"function f() { f() }; f()", "E43300@1,15"},
        {"function f(a) { return 1/a }; f(0)", "E41655@1,24"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(Calculate(c.text), c.expect) << c.text;

    CEquationTree tree;
    EXPECT_EQ(Calculate("function f(_ref a) { a = 7; 1/0 }; x = 1; f(x)", &tree), "E41655@1,29");
    EXPECT_EQ(Describe(*tree.GetVariables()->Find(QStringLiteral("x"))), "REAL:7");

    // A name that only the main scope has is unknown inside a function.
    CEquationTree free;
    free.m_freeVariables = 1;
    EXPECT_EQ(Calculate("y = 3; function f() { return y }; f()", &free), "E41830@1,29");

    // Definitions are checked by the scanner and the parameter reader.
    EXPECT_EQ(Calculate("function f(a) { 1 }; function f(b) { 2 }"), "E43241@1,30");
    EXPECT_EQ(Calculate("function f(a) { q }"), "E43166@1,16");
}

TEST(RpnTree, SeriesValidityAndColumns)
{
    const double x[] = {0.0, 1.0, 2.0, -1.0, 4.0};
    const unsigned char xValid[] = {1, 1, 1, 1, 0};
    CEquationTree tree;
    tree.BindColumn(QStringLiteral("x"), x, xValid, 5);
    double values[7];
    unsigned char valid[7];
    auto series = [&](const char *text, int first = 0, int last = 4) {
        std::fill(std::begin(values), std::end(values), -99.0);
        std::fill(std::begin(valid), std::end(valid), 9);
        EXPECT_TRUE(tree.Compile(QString::fromLatin1(text), nullptr, false)) << text;
        tree.ResetError();
        tree.EvaluateSeries(values, valid, first, last);
        std::string out;
        for (int r = first; r <= last; ++r)
            out += std::to_string(valid[r]) + ":" + QString::number(values[r]).toStdString() + " ";
        return out;
    };
    // The error path marks a row 0; array division does not fail.  A row past
    // the column, or not valid there, reads the empty value.
    EXPECT_EQ(series("1/x"), "0:0 1:1 1:0.5 1:-1 0:0 ");
    EXPECT_EQ(series("1.0/{x}"), "1:0 1:1 1:0.5 1:-1 1:0 ");
    EXPECT_EQ(series("x^0.5"), "1:0 1:1 1:1.41421 2:nan 1:0 ");
    EXPECT_EQ(series("x*1e308*10"), "1:0 2:inf 2:inf 2:-inf 1:0 ");
    EXPECT_EQ(series("x*1e-310"), "1:0 1:0 1:0 1:0 1:0 ");
    EXPECT_EQ(series("x + 1", 3, 6), "1:0 1:1 1:1 1:1 ");
    EXPECT_EQ(series("return x*2"), "1:0 1:2 1:4 1:-2 1:0 ");
    // A series of one row per expression, and the error of the first failing row stays.
    EXPECT_EQ(series("x > 0 && 1/x > 0.4"), "1:0 1:1 1:1 1:0 1:0 ");
    EXPECT_EQ(series("2/(x-1)"), "1:-2 0:0 1:2 1:-1 1:-2 ");
    EXPECT_EQ(MessageIdOf(tree.GetErrorMessage()), 41655);
}

namespace {

// Random expressions over two columns, with the operators that have a real path.
// Script functions that the expressions call: one of a single `return`,
// one whose body calls the other, and one that is no single `return`.
const char *const kFunctions = "function f(p, q) { return p * q - p / 2 }; "
                               "function g(t) { return iif(t > 0, f(t, 1), -t) }; "
                               "function h(u) { if (u) { return 1 }; return 2 }; ";

struct ExpressionMaker
{
    std::mt19937 random{20240611};
    QString make(int depth)
    {
        std::uniform_int_distribution<int> pick(0, depth <= 0 ? 3 : 15);
        switch (pick(random)) {
        case 0: return QStringLiteral("x");
        case 1: return QStringLiteral("y");
        case 2: return QString::number(std::uniform_int_distribution<int>(-3, 3)(random));
        case 3: return QStringLiteral("0.5");
        // A unary minus right after a binary operator is refused: it goes in parentheses.
        case 4: return QStringLiteral("(-(") + make(depth - 1) + QStringLiteral("))");
        case 5: return QStringLiteral("!(") + make(depth - 1) + QStringLiteral(")");
        case 6: return QStringLiteral("(") + make(depth - 1) + QStringLiteral(")");
        case 7: return QStringLiteral("{") + make(depth - 1) + QStringLiteral("}");
        case 13:
            return QStringLiteral("iif(") + make(depth - 1) + QStringLiteral(", ") + make(depth - 1)
                + QStringLiteral(", ") + make(depth - 1) + u')';
        // The functions of kFunctions.
        case 14: return QStringLiteral("f(") + make(depth - 1) + QStringLiteral(", ") + make(depth - 1) + u')';
        case 15: return QStringLiteral("g(") + make(depth - 1) + u')';
        default: {
            static const char *const ops[] = {"+", "-", "*", "/", "%", "^", "<", ">=", "&&", "||", "**"};
            const char *op = ops[std::uniform_int_distribution<int>(0, 10)(random)];
            return make(depth - 1) + u' ' + QString::fromLatin1(op) + u' ' + make(depth - 1);
        }
        }
    }
};

const double *g_columns[2];
const unsigned char *g_valid[2];

void columnGet(CRpnData &result, int index, int row, void *, void *, CRpnNode *, const QString &, int &)
{
    if (g_valid[index][row] == 1)
        result.SetDouble(g_columns[index][row]);
    else
        result.SetNull();
}

bool sameDouble(double a, double b)
{
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace

// The block evaluator over bound columns, the node tree's fast path through a
// getter, the plain evaluation of the nodes, and the row steps over bound
// columns and through a getter give the same value, validity and error for
// every row.
TEST(RpnTree, SeriesEvaluatorsAgree)
{
    constexpr int kRows = 600;
    std::vector<double> x(kRows), y(kRows);
    std::vector<unsigned char> xv(kRows, 1), yv(kRows, 1);
    std::mt19937 random(7);
    for (int i = 0; i < kRows; ++i) {
        x[std::size_t(i)] = std::uniform_int_distribution<int>(-4, 4)(random) * 0.5;
        y[std::size_t(i)] = std::uniform_real_distribution<double>(-3, 3)(random);
        if (i % 37 == 5)
            xv[std::size_t(i)] = 0;
        if (i % 53 == 7)
            yv[std::size_t(i)] = 2;
    }
    g_columns[0] = x.data();
    g_columns[1] = y.data();
    g_valid[0] = xv.data();
    g_valid[1] = yv.data();
    const CRpnVariableMatcher matcher = [](QStringView rest, int &index) {
        index = rest.startsWith(u'x') ? 0 : 1;
        return (rest.startsWith(u'x') || rest.startsWith(u'y')) && (rest.size() == 1 || !rest[1].isLetter()) ? 1 : 0;
    };

    ExpressionMaker maker;
    int withProgram = 0, withRows = 0;
    for (int n = 0; n < 300; ++n) {
        QString text = maker.make(5);
        // Now and then a call of a body that stays with the tree.
        if (n % 10 == 3)
            text += QStringLiteral(" + h(x > 0)");
        text.prepend(QString::fromLatin1(kFunctions));
        CEquationTree block, getter, fast, plain, rows, rowsGetter;
        for (CEquationTree *t : {&block, &rows}) {
            t->BindColumn(QStringLiteral("x"), x.data(), xv.data(), kRows);
            t->BindColumn(QStringLiteral("y"), y.data(), yv.data(), kRows);
            ASSERT_TRUE(t->Compile(text, nullptr, false)) << text.toStdString();
        }
        for (CEquationTree *t : {&getter, &fast, &plain, &rowsGetter}) {
            t->SetVariableAccess(columnGet, nullptr);
            ASSERT_TRUE(t->Compile(text, nullptr, false, matcher)) << text.toStdString();
        }
        // The plain tree never takes the fast path.
        WalkTree(plain.GetRoot(), [](CRpnNode *node) {
            node->m_fastPath = node->m_fastValue = false;
            return 0;
        });
        withProgram += CRpnSeriesProgram::Build(&block) != nullptr;

        // The two series go block by block where they can (over columns,
        // and through the getter); the fast and the plain tree row by row.
        // The row steps go row by row where they can, else the tree.
        std::vector<double> v[6];
        std::vector<unsigned char> ok[6];
        CEquationTree *trees[6] = {&block, &getter, &fast, &plain, &rows, &rowsGetter};
        for (int k = 0; k < 6; ++k) {
            v[k].assign(kRows, 0.0);
            ok[k].assign(kRows, 9);
            if (k < 2) {
                trees[k]->EvaluateSeries(v[k].data(), ok[k].data(), 0, kRows - 1);
                continue;
            }
            if (k >= 4) {
                CRpnNode *top = trees[k]->GetRoot();
                while (top->IsList() && !top->IsMultiOperand() && top->GetOperandCount() == 1)
                    top = top->GetOperand(0);
                if (std::unique_ptr<CRpnRowProgram> program = CRpnRowProgram::Build(trees[k], top)) {
                    withRows += k == 4;
                    program->Series(trees[k], top, v[k].data(), ok[k].data(), 0, kRows - 1);
                    continue;
                }
            }
            for (int r = 0; r < kRows; ++r) {
                trees[k]->m_rowIndex = r;
                unsigned char st = 1;
                double value = trees[k]->GetRoot()->EvaluateReal(st);
                ok[k][std::size_t(r)] = RpnSeriesValidity(value, st);
                v[k][std::size_t(r)] = value;
            }
        }
        for (int k = 1; k < 6; ++k) {
            EXPECT_EQ(trees[k]->GetErrorMessage(), block.GetErrorMessage()) << text.toStdString();
            for (int r = 0; r < kRows; ++r) {
                ASSERT_EQ(ok[k][std::size_t(r)], ok[0][std::size_t(r)]) << text.toStdString() << " row " << r << " tree " << k;
                if (ok[0][std::size_t(r)] != 0) {
                    ASSERT_TRUE(sameDouble(v[k][std::size_t(r)], v[0][std::size_t(r)]))
                        << text.toStdString() << " row " << r << " tree " << k << ": " << v[k][std::size_t(r)]
                        << " against " << v[0][std::size_t(r)];
                }
            }
        }
    }
    // Most of the expressions are the block evaluator's (the rest hold `!{...}` and the like).
    EXPECT_GT(withProgram, 150);
    EXPECT_GT(withRows, 150);
}

TEST(RpnTree, GuardedRunAndThrowingMode)
{
    CEquationTree tree;
    Host host;
    QString message;
    ASSERT_TRUE(tree.Compile(QStringLiteral("z = 1\nz / 0")));
    EXPECT_EQ(tree.ReportCalculation(&host, nullptr, nullptr, nullptr, nullptr, message), 0);
    EXPECT_EQ(message, QStringLiteral("Error:  ") + RpnMessage(41655, {QStringLiteral("z / 0\n  ^")})
                           + QStringLiteral(" at Row: 2   Col: 2"));
    // The callbacks are the former ones again.
    EXPECT_EQ(tree.m_getVariable, nullptr);
    EXPECT_EQ(tree.m_runData1, nullptr);

    // Exceptions of the host.
    tree.m_freeVariables = 1;
    ASSERT_TRUE(tree.Compile(QStringLiteral("v + 1"), nullptr, true,
                             [](QStringView rest, int &index) {
                                 index = 1;
                                 return rest.startsWith(u'v') ? 1 : 0;
                             }));
    EXPECT_EQ(tree.ReportCalculation(nullptr, nullptr, nullptr, throwingGet, nullptr, message), 0);
    EXPECT_EQ(message, QStringLiteral("host failure"));
    ASSERT_TRUE(tree.Compile(QStringLiteral("w + 1")));
    SetRpnMessageBoxHook(recordBox);
    tree.SetVariableAccess(throwingGet, nullptr);
    tree.ResetError();
    EXPECT_EQ(tree.ReportCalculation(nullptr, nullptr, nullptr, throwingGet, nullptr, message, false), 0);
    EXPECT_EQ(message, QStringLiteral("Unknown Error during formula calculation..."));
    EXPECT_TRUE(g_boxText.isEmpty());
    EXPECT_EQ(tree.ReportCalculation(nullptr, nullptr, nullptr, throwingGet, nullptr, message, true), 0);
    EXPECT_EQ(g_boxText, QStringLiteral("Unknown Error..."));
    EXPECT_EQ(g_boxCaption, QStringLiteral("TARN Calculator"));
    SetRpnMessageBoxHook(nullptr);

    // Throwing mode: the first error is raised with its fields.
    CEquationTree throwing;
    throwing.throwOnError = 1;
    ASSERT_TRUE(throwing.Compile(QStringLiteral("a = 1\nb = a / 0")));
    try {
        throwing.Run();
        ADD_FAILURE() << "no exception";
    } catch (const CRpnException &e) {
        EXPECT_EQ(e.row, 2);
        EXPECT_EQ(e.col, 6);
        EXPECT_EQ(e.token, QStringLiteral("/"));
        EXPECT_EQ(MessageIdOf(e.message), 41655);
    }
    // A compile reports and does not throw.
    EXPECT_FALSE(throwing.Compile(QStringLiteral("(")));
}

namespace {

std::string roundTrip(const char *text, bool run = true)
{
    CEquationTree original;
    if (!original.Compile(QString::fromUtf8(text)))
        return "compile failed";
    CRpnBuffer buffer(10);
    buffer.Reset(CBufferIO::ModeWrite, 64);
    original.Serialize(buffer);
    const QByteArray bytes = buffer.ToByteArray();

    CRpnBuffer reading(10);
    reading.LoadForReading(bytes);
    CEquationTree copy;
    if (!copy.Serialize(reading))
        return "read failed";
    // Written again, the copy gives the same bytes.
    CRpnBuffer again(10);
    again.Reset(CBufferIO::ModeWrite, 64);
    copy.Serialize(again);
    if (again.ToByteArray() != bytes)
        return "bytes differ";
    if (!run)
        return "ok";
    CRpnData v1, v2;
    const int s1 = original.Run(v1), s2 = copy.Run(v2);
    if (s1 != s2 || Describe(v1) != Describe(v2))
        return Describe(v1) + " against " + Describe(v2);
    return Describe(v2);
}

} // namespace

TEST(RpnTree, SavedTreesReadBack)
{
    const struct {
        const char *text;
        const char *expect;
    } cases[] = {
        {"1+2*3", "REAL:7"},
        {"a = {1, \"two\", NULL}; a[1] = \"zwei\"; a", "ARRAY:{{1,zwei,},zwei,{1,zwei,}}"},
        {"x = 0; while (x < 5) { x += 1 }; if (x == 5) { \"five\" } else { \"other\" }", "ARRAY:{0,0,{five}}"},
        {"function f(a, _ref b = 2, c = {1,2}) { b = a + c[1]; return b }; y = 1; f(3, y); y", "ARRAY:{1,5,5}"},
        {"i = 1; i++; ++i; -10k + i ** 2 + pow(2, 2) + mod(7, 4)", "ARRAY:{1,1,3,-9984}"},
        {"(V) u = 5; u", "ARRAY:{5,5}"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(roundTrip(c.text), c.expect) << c.text;

    // A cut saved tree is read as a failure, or (where what is missing reads
    // as zeros) as a tree that runs; never past its end.
    CEquationTree original;
    ASSERT_TRUE(original.Compile(QString::fromUtf8(cases[3].text)));
    CRpnBuffer buffer(10);
    buffer.Reset(CBufferIO::ModeWrite, 64);
    original.Serialize(buffer);
    const QByteArray bytes = buffer.ToByteArray();
    int failed = 0;
    for (qsizetype cut = 0; cut < bytes.size(); ++cut) {
        CRpnBuffer reading(10);
        reading.LoadForReading(bytes.left(cut));
        CEquationTree copy;
        if (copy.Serialize(reading)) {
            CRpnData value;
            copy.Run(value);
        } else {
            ++failed;
        }
    }
    EXPECT_GT(failed, bytes.size() * 9 / 10);
}

namespace {

// A node that counts the calls of a run's set-up.
int g_resets = 0, g_prepares = 0, g_prepareA = 0, g_prepareB = 0;

class CountingNode : public CNodeConstant
{
public:
    int GetKind() const override { return 1990; }
    CRpnNode *CreateSame() const override { return new CountingNode; }
    void ResetRun() override { ++g_resets; }
    int PrepareRun(CEquationTree *, int a, int b) override
    {
        ++g_prepares;
        g_prepareA = a;
        g_prepareB = b;
        return 1;
    }
};

CRpnNode *countingHook(CEquationTree *tree, const QString &name, int position, int row, int col, unsigned char &)
{
    if (name != u"counted")
        return nullptr;
    CRpnNode *node = new CountingNode;
    node->m_tree = tree;
    node->m_position = position;
    node->m_row = row;
    node->m_col = col;
    return node;
}

} // namespace

TEST(RpnTree, RunsPrepareEveryNode)
{
    CEquationTree tree;
    tree.m_keywordHook = countingHook;
    ASSERT_TRUE(tree.Compile(QStringLiteral("counted; function f() { counted }; {counted, f()}")));
    g_resets = g_prepares = 0;
    EXPECT_EQ(tree.Run(nullptr, nullptr, nullptr, nullptr, 3, 8), 1);
    EXPECT_EQ(g_resets, 3); // the function's body too
    EXPECT_EQ(g_prepares, 2);
    EXPECT_EQ(g_prepareA, 3);
    EXPECT_EQ(g_prepareB, 8);
    tree.ResetRun();
    EXPECT_EQ(g_resets, 6);

    // CollectDefaults gives each assigned variable once.
    ASSERT_TRUE(tree.Compile(QStringLiteral("a = 1; b = {2}; a = 3")));
    tree.Run();
    CMapStringToRpnData defaults;
    EXPECT_EQ(tree.GetRoot()->CollectDefaults(defaults), 2);
    EXPECT_EQ(defaults.GetCount(), 2);

    // SetRoot finds the host's variables again.
    const CRpnVariableMatcher matcher = [](QStringView rest, int &index) {
        index = 4;
        return rest.startsWith(u"H") ? 1 : 0;
    };
    tree.m_freeVariables = 1;
    ASSERT_TRUE(tree.Compile(QStringLiteral("H + H"), nullptr, true, matcher));
    EXPECT_EQ(tree.m_macroNodes.size(), 2u);
    CRpnNode *root = tree.GetRoot()->GetOperand(0)->TakeOperand(0);
    tree.SetRoot(root);
    EXPECT_EQ(tree.GetRoot(), root);
    EXPECT_EQ(tree.m_macroNodes.size(), 1u);
}

TEST(RpnTree, CopySettingsAndExtras)
{
    CEquationTree a;
    a.m_angleMode = 1;
    a.throwOnError = 1;
    a.m_caseSensitiveNames = 0;
    a.GetVariables()->SetAt(QStringLiteral("v"), CRpnData(2.0));
    CEquationTree b;
    b.CopySettingsFrom(a);
    EXPECT_EQ(b.m_angleMode, 1);
    EXPECT_EQ(b.throwOnError, 1);
    EXPECT_EQ(b.m_caseSensitiveNames, 0);
    EXPECT_EQ(b.GetVariables(), a.GetVariables());
    EXPECT_EQ(b.AddExtra(new CEquationExtra_Formula(new CEquationTree)), 0);
    EXPECT_EQ(b.m_extras.size(), 1u);
    EXPECT_EQ(b.Stop(), 1);
    EXPECT_TRUE(b.IsStopping());
}

namespace {

CRpnData doublingSet(const CRpnData &value, int, int, void *, void *, CRpnNode *, const QString &, double)
{
    return CRpnData(value.GetDouble() * 2);
}

} // namespace

TEST(RpnTree, VariablesAcrossCompilesAndModes)
{
    // Main variables survive a new compile: a prompt runs line after line.
    CEquationTree tree;
    EXPECT_EQ(Calculate("a = 5", &tree), "REAL:5");
    EXPECT_EQ(Calculate("a * 2", &tree), "REAL:10");
    EXPECT_EQ(Calculate("MainVariables[\"a\"] + 1", &tree), "REAL:6");

    // Names without regard to case.
    CEquationTree folded;
    folded.m_caseSensitiveNames = 0;
    EXPECT_EQ(Calculate("Abc = 1; ABC + abc", &folded), "ARRAY:{1,2}");
    EXPECT_EQ(Calculate("Abc = 1; ABC + abc"), "E43166@1,9");

    // The setter's answer is what the variable keeps.
    CEquationTree host;
    host.m_freeVariables = 1;
    host.SetVariableAccess(nullptr, doublingSet);
    EXPECT_EQ(Calculate("v = 3", &host), "REAL:6");

    // Bindings made after the compile, changed, and taken away.
    const double one[] = {1.0, 2.0};
    const double two[] = {10.0, 20.0};
    CEquationTree columns;
    columns.BindColumn(QStringLiteral("c"), one, nullptr, 2);
    ASSERT_TRUE(columns.Compile(QStringLiteral("c + 1"), nullptr, false));
    double values[2];
    unsigned char valid[2];
    EXPECT_EQ(columns.EvaluateSeries(values, valid, 0, 1), 2);
    EXPECT_EQ(values[1], 3.0);
    columns.BindColumn(QStringLiteral("c"), two, nullptr, 2);
    columns.EvaluateSeries(values, valid, 0, 1);
    EXPECT_EQ(values[1], 21.0);
    columns.ClearColumnBindings();
    columns.EvaluateSeries(values, valid, 0, 1);
    EXPECT_EQ(values[1], 1.0); // an unbound name reads as empty
    EXPECT_EQ(valid[1], 1);
}

#if (defined(__x86_64__) || defined(__i386__)) && (defined(__GNUC__) || defined(__clang__))
#include <cpuid.h>

// Whether the processor keeps wide register halves marked in use (bit 2 of
// the state in use, read by xgetbv with ecx 1); -1 when it cannot tell.
static int upperHalvesInUse()
{
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (!__builtin_cpu_supports("avx") || !__get_cpuid_count(0xD, 1, &a, &b, &c, &d) || !(a & 4))
        return -1;
    unsigned low = 0, high = 0;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(1));
    return (low & 4) ? 1 : 0;
}

TEST(RpnSeries, ClearsTheUpperHalvesOfTheVectorRegisters)
{
    if (upperHalvesInUse() < 0)
        GTEST_SKIP() << "the processor does not tell";
    // What a library routine may leave behind.
    asm volatile("vpcmpeqb %%ymm15, %%ymm15, %%ymm15" ::: "xmm15");
    ASSERT_EQ(upperHalvesInUse(), 1);
    RpnClearUpperVectorState();
    EXPECT_EQ(upperHalvesInUse(), 0);
}
#endif
