// Control flow, the reporters and the directives, through Compile and Run.

#include "formula/rpnbuffer.h"
#include "formula/rpndictionary.h"
#include "formula/rpnmacros.h"
#include "formula/rpnparser.h"
#include "formula/rpnscanner.h"
#include "formula/rpnseams.h"
#include "formula/rpntree.h"

#include "support/fileexception.h"

#include "formulatest.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <memory>
#include <vector>

namespace {

struct Case
{
    const char *text;
    const char *expected;
};

// The kinds of a tree in walk order.
std::vector<int> kindsOf(CRpnNode *root)
{
    std::vector<int> kinds;
    WalkTree(root, [&kinds](CRpnNode *node) {
        kinds.push_back(node->GetKind());
        return 0;
    });
    return kinds;
}

void runCases(const std::vector<Case> &cases)
{
    for (const Case &c : cases)
        EXPECT_EQ(Calculate(c.text), c.expected) << c.text;
}

} // namespace

// --- IF, WHILE, return --------------------------------------------------------------------

TEST(RpnStatements, IfWhileAndReturnValues)
{
    runCases({
        {"x = 1; if (x) { 1 } else { 2 }", "ARRAY:{1,{1}}"},
        {"x = 0; if (x) { 1 } else { 2 }", "ARRAY:{0,{2}}"},
        {"x = 0; if (x) { 1 }", "ARRAY:{0,}"},
        {"if ({1,0}) { 1 } else { 2 }", "ARRAY:{2}"},  // no element may be 0
        {"if ({1,2}) { 1 } else { 2 }", "ARRAY:{1}"},
        {"if (\"\") { 1 } else { 2 }", "ARRAY:{2}"},
        {"if (1/0) { 1 } else { 2 }", "E41655@1,5"},
        {"while (0) { 1 }", ":"},                   // never entered: null
        {"x = 0; while (x < 3) { x += 1 }", "ARRAY:{0,0}"}, // ended by its condition: 0.0
        {"x = 0; while (1) { x += 1; if (x == 4) { return x * 10 } }", "REAL:40"},
        {"x = 0; while (x < 5) { x += 1; if (x == 2) { 1/0 } }; x", "E41655@1,46"},
        {"return 3; 4", "REAL:3"},
        {"function f() { while (1) { return 7 } }; f() + 1", "REAL:8"},
    });
}

TEST(RpnStatements, IfValuePrintsAsItsElement)
{
    CEquationTree tree;
    for (double x : {0.0, 1.0}) {
        tree.GetVariables()->SetAt(QStringLiteral("x"), CRpnData(x));
        ASSERT_TRUE(tree.Compile(QStringLiteral("if (x) { 1 } else { 2 }")));
        CRpnData value;
        ASSERT_EQ(tree.Run(value), 1);
        EXPECT_EQ(value.GetKind(), RPN_ARRAY);
        EXPECT_EQ(value.GetText(16), x != 0.0 ? QStringLiteral("1") : QStringLiteral("2"));
    }
}

TEST(RpnStatements, WhileStopsAfterAMillionPassesWithoutAMessage)
{
    CEquationTree tree;
    CRpnData value;
    ASSERT_TRUE(tree.Compile(QStringLiteral("x = 0; while (1) { x = x + 1 }")));
    EXPECT_EQ(tree.Run(value), 1);
    EXPECT_EQ(Describe(value), "ARRAY:{0,0}");
    EXPECT_FALSE(tree.HasError());
    EXPECT_TRUE(tree.m_warnings.isEmpty());
    CRpnData x;
    ASSERT_TRUE(tree.GetVariables()->Lookup(QStringLiteral("x"), x));
    EXPECT_EQ(x.GetDouble(), 1000000.0);
}

// --- iif --------------------------------------------------------------------------------------

TEST(RpnStatements, Iif)
{
    runCases({
        {"iif(1, 10, 20)", "REAL:10"},
        {"iif(0, 10, 20)", "REAL:20"},
        {"iif(\"text\", 10, 20)", "REAL:10"},
        {"iif(1, 5, 1/0)", "REAL:5"},   // the other branch is not evaluated
        {"iif(0, 1/0, 5)", "REAL:5"},
        {"iif(1/0, 1, 2)", "E41655@1,5"},
        {"iif({1,0,1}, 10, 20)", "ARRAY:{10,20,10}"},
        {"iif({1,0,1,0}, {1,2,3,4}, {5,6,7,8})", "ARRAY:{1,6,3,8}"},
        {"iif({1,1,1}, {1,2}, 0)", "ARRAY:{1,2,}"},  // past the branch's end: empty
        {"iif({0,0}, 1, {\"a\"})", "ARRAY:{a,}"},
        {"iif({}, 1, 2)", "ARRAY:{}"},
        {"iif({2,0} > 1, \"big\", \"small\")", "ARRAY:{big,small}"},
        // Both branches of an array condition are evaluated; a failing one
        // only counts when an element is taken from it.
        {"iif({1,1}, 5, 1/0)", "ARRAY:{5,5}"},
        {"iif({1,0}, 5, 1/0)", "E41655@1,15"},
        {"x = 0; iif({1,0}, 1, x = 2); x", "ARRAY:{0,{1,2},2}"},
        {"x = 0; iif(1, 1, x = 2); x", "ARRAY:{0,1,0}"},
        {"iif(iif({1,0}, 1, 0), \"y\", \"n\")", "ARRAY:{y,n}"},
    });
}

TEST(RpnStatements, IifOverAFailingBranchLeavesNoError)
{
    CEquationTree tree;
    ASSERT_TRUE(tree.Compile(QStringLiteral("iif({1,1}, 5, 1/0)")));
    CRpnData value;
    EXPECT_EQ(tree.Run(value), 1);
    EXPECT_FALSE(tree.HasError()) << tree.GetErrorMessage();
}

namespace {

class TestCurve : public CRpnObject, public CRpnCurveRows
{
public:
    TestCurve(std::vector<double> values, std::vector<unsigned char> valid)
        : m_values(std::move(values)), m_valid(std::move(valid))
    {
    }
    int GetRowCount() const override { return int(m_values.size()); }
    double GetRowValue(int row) const override { return m_values[std::size_t(row)]; }
    unsigned char GetRowValidity(int row) const override { return m_valid[std::size_t(row)]; }

private:
    std::vector<double> m_values;
    std::vector<unsigned char> m_valid;
};

} // namespace

TEST(RpnStatements, IifOverACurve)
{
    CEquationTree tree;
    CRpnData curve;
    curve.SetCurve(new TestCurve({1, 0, 3, 4, 0}, {1, 1, 0, 2, 1}));
    tree.GetVariables()->SetAt(QStringLiteral("c"), curve);
    CRpnData bare;
    bare.SetCurve(nullptr);
    tree.GetVariables()->SetAt(QStringLiteral("bare"), bare);
    EXPECT_EQ(Calculate("iif(c, {10,11,12,13,14}, -1)", &tree), "ARRAY:{10,-1,,,-1}");
    EXPECT_EQ(Calculate("iif(bare, 1, 2)", &tree), "ARRAY:{}");
}

// --- Catch and GetLastError ------------------------------------------------------------------------

TEST(RpnStatements, CatchAndGetLastError)
{
    CEquationTree tree;
    ASSERT_TRUE(tree.Compile(QStringLiteral("{Catch(1/0) { GetLastError() }, GetLastError()}")));
    CRpnData value;
    ASSERT_EQ(tree.Run(value), 1);
    ASSERT_EQ(value.GetSize(), 2);
    // The handler is a block: a list of one element.
    const CRpnData handled = value.GetAt(0).GetAt(0);
    EXPECT_EQ(handled.GetKind(), RPN_STRING);
    EXPECT_EQ(MessageIdOf(handled.GetText()), 41655);
    EXPECT_EQ(Describe(value.GetAt(1)), "STRING:");
    EXPECT_FALSE(tree.HasError());
    EXPECT_EQ(tree.GetErrorRow(), -1);
    EXPECT_EQ(tree.GetErrorCol(), -1);

    runCases({
        {"Catch(Error(\"x\"))", ":"},
        {"Catch(Error(\"x\")); 5", "ARRAY:{,5}"},
        {"Catch(Error(\"x\")); GetLastError()", "ARRAY:{,x}"},
        {"Catch(5) { 6 }", "REAL:5"},
        {"Catch(Error(\"x\")) { 6 }", "ARRAY:{6}"},
        {"Catch(Error(\"x\")) { GetLastError() + \"!\" }", "ARRAY:{x!}"},
        {"Catch(Error(\"a\", 1)) { GetLastError() }; GetLastError()", "ARRAY:{{a1},}"},
        {"Catch(Error(\"a\")) { Error(\"b\") }", "E0@1,20"}, // "b" is no numbered text
        {"Catch(Catch(Error(\"in\")) { Error(\"out\") }) { GetLastError() }", "ARRAY:{out}"},
        {"function f() { Error(\"deep\") }; Catch(f()) { GetLastError() }", "ARRAY:{deep}"},
        {"GetLastError()", "STRING:"},
        {"x = 0; Catch(x = 1) { x = 2 }; x", "ARRAY:{0,1,1}"},
        // Across a line end only a block is the handler.
        {"Catch(Error(\"x\"))\n{ 1 }", "ARRAY:{1}"},
        {"Catch(Error(\"x\"))\n2", "ARRAY:{,2}"},
        {"{Catch(Error(\"x\")), 2}", "ARRAY:{,2}"},
    });
}

TEST(RpnStatements, CatchInThrowingModeAndForeignExceptions)
{
    CEquationTree throwing;
    throwing.throwOnError = 1;
    EXPECT_EQ(Calculate("Catch(1/0) { 7 }", &throwing), "ARRAY:{7}");
    EXPECT_EQ(Calculate("Catch(Error(\"e\")) { GetLastError() }", &throwing), "ARRAY:{e}");

    // A file error is an exception of the common base and is caught; what is
    // not of that base passes.
    CEquationTree tree;
    tree.m_keywordHook = [](CEquationTree *t, const QString &name, int position, int row, int col,
                            unsigned char &) -> CRpnNode * {
        struct Thrower : CNodeConstant
        {
            bool foreign = false;
            int GetKind() const override { return 1991; }
            CRpnNode *CreateSame() const override { return new Thrower; }
            void Evaluate(CRpnData &, unsigned char &) override
            {
                if (foreign)
                    throw 42;
                throw CFileException(CFileException::FileNotFound, 2, QStringLiteral("/no/file"));
            }
        };
        if (name != u"fileError" && name != u"foreign")
            return nullptr;
        auto *node = new Thrower;
        node->foreign = name == u"foreign";
        node->m_tree = t;
        node->m_position = position;
        node->m_row = row;
        node->m_col = col;
        return node;
    };
    CRpnData expected(QString::fromUtf8(
        CFileException(CFileException::FileNotFound, 2, QStringLiteral("/no/file")).what()));
    EXPECT_EQ(Calculate("Catch(fileError) { GetLastError() }", &tree), "ARRAY:{" + Describe(expected).substr(7) + "}");
    ASSERT_TRUE(tree.Compile(QStringLiteral("Catch(foreign) { 1 }")));
    CRpnData value;
    EXPECT_THROW(tree.Run(value), int);
}

namespace {

CRpnData g_hostMain;

void hostGetter(CRpnData &result, int, int, void *, void *, CRpnNode *, const QString &name, int &found)
{
    if (name == u"MainVariables")
        result = g_hostMain;
    else
        found = 0;
}

} // namespace

TEST(RpnStatements, CatchKeepsLastErrorWhereTheHostsMainVariablesAre)
{
    g_hostMain.SetDictionary();
    CEquationTree tree;
    tree.SetVariableAccess(hostGetter, nullptr);
    ASSERT_TRUE(tree.Compile(QStringLiteral("Catch(Error(\"host\")) { 1 }")));
    CRpnData value;
    ASSERT_EQ(tree.Run(value), 1);
    EXPECT_EQ(Describe(g_hostMain.DictGet(QStringLiteral("LastError"))), "STRING:host");
    CRpnData own;
    EXPECT_FALSE(tree.GetVariables()->Lookup(QStringLiteral("LastError"), own));
    ASSERT_TRUE(tree.Compile(QStringLiteral("{GetLastError(), GetLastError()}")));
    ASSERT_EQ(tree.Run(value), 1);
    EXPECT_EQ(Describe(value), "ARRAY:{host,}");
    g_hostMain.SetNull();
}

// --- Error and Warning ---------------------------------------------------------------------------------

TEST(RpnStatements, ErrorRaisesWithItsMessage)
{
    struct ErrorCase
    {
        const char *text;
        const char *message; // null: message 41659
        int row, col;
    };
    const ErrorCase cases[] = {
        {"Error(\"\")", nullptr, 1, 0},
        {"Error()", nullptr, 1, 0},
        {"x = 1\n  Error(\"bad \", x + 1, {\" and \", \"list\"})", "bad 2 and list", 2, 2},
        {"Error(1/3)", "0.3333333333333333", 1, 0},
        {"if (0) { Error(\"no\") }; Error(\"yes\")", "yes", 1, 24},
        {"Error(\"x\", 1/0, \"y\")", "xy", 1, 0},
    };
    for (const ErrorCase &c : cases) {
        CEquationTree tree;
        ASSERT_TRUE(tree.Compile(QString::fromUtf8(c.text))) << c.text;
        CRpnData value;
        try {
            tree.Run(value);
            ADD_FAILURE() << "no exception: " << c.text;
        } catch (const CRpnErrorException &e) {
            const QString expected = c.message ? QString::fromUtf8(c.message) : GetMessageText(41659);
            EXPECT_EQ(e.message, expected) << c.text;
            EXPECT_EQ(tree.GetErrorMessage(), expected) << c.text;
            EXPECT_EQ(tree.GetErrorRow(), c.row) << c.text;
            EXPECT_EQ(tree.GetErrorCol(), c.col) << c.text;
            EXPECT_EQ(tree.GetErrorToken(), QStringLiteral("Error")) << c.text;
        }
    }
}

TEST(RpnStatements, WarningsGoToTheTreesList)
{
    CEquationTree tree;
    ASSERT_TRUE(tree.Compile(QStringLiteral("Warning(\"w\", 1); MESSAGE(\"m\", {2, \"x\"}); Warning(\"\"); 3")));
    CRpnData value;
    ASSERT_EQ(tree.Run(value), 1);
    EXPECT_EQ(Describe(value), "ARRAY:{,,,3}");
    EXPECT_EQ(tree.m_warnings, QStringList({QStringLiteral("w1"), QStringLiteral("m2x")}));

    // A failing operand neither fails the warning nor leaves an error behind.
    ASSERT_TRUE(tree.Compile(QStringLiteral("Warning(\"a\", 1/0, \"b\")")));
    tree.m_warnings.clear();
    ASSERT_EQ(tree.Run(value), 1);
    EXPECT_FALSE(tree.HasError());
    EXPECT_EQ(tree.m_warnings, QStringList(QStringLiteral("ab")));
}

// --- SETVALUE and SETTEXT --------------------------------------------------------------------------------------

namespace {

struct SetCall
{
    QString name;
    std::string value;
    double extra;
    int index;
};
std::vector<SetCall> g_setCalls;

CRpnData recordingSetter(const CRpnData &value, int index, int, void *, void *, CRpnNode *, const QString &name,
                         double extra)
{
    g_setCalls.push_back({name, Describe(value), extra, index});
    return CRpnData(double(g_setCalls.size()));
}

} // namespace

TEST(RpnStatements, SetValueAndSetTextCallTheSetter)
{
    g_setCalls.clear();
    CEquationTree tree;
    tree.SetVariableAccess(nullptr, recordingSetter);
    EXPECT_EQ(Calculate("label = \"L\"; SETVALUE(probe, 2 + 3, 7); SETTEXT(label, 1.5, -1)", &tree),
              "ARRAY:{1,2,3}");
    ASSERT_EQ(g_setCalls.size(), 3u); // the assignment goes through the setter too
    EXPECT_EQ(g_setCalls[1].name, QStringLiteral("probe"));
    EXPECT_EQ(g_setCalls[1].value, "REAL:5");
    EXPECT_EQ(g_setCalls[1].extra, 7.0);
    EXPECT_EQ(g_setCalls[2].name, QStringLiteral("label"));
    EXPECT_EQ(g_setCalls[2].value, "STRING:1.5");
    EXPECT_EQ(g_setCalls[2].extra, -1.0);

    // A text target gives its text as the name; a computed one is refused.
    g_setCalls.clear();
    EXPECT_EQ(Calculate("SETVALUE(\"obj\", {1,2}, 0)", &tree), "REAL:1");
    ASSERT_EQ(g_setCalls.size(), 1u);
    EXPECT_EQ(g_setCalls[0].name, QStringLiteral("obj"));
    EXPECT_EQ(g_setCalls[0].value, "ARRAY:{1,2}");
    EXPECT_EQ(Calculate("SETVALUE(\"ob\" + \"j\", 1, 0)", &tree), "E43028@1,0");

    // A failing operand stops the statement before the setter.
    g_setCalls.clear();
    EXPECT_EQ(Calculate("SETVALUE(probe, 1, 1/0)", &tree), "E41655@1,20");
    EXPECT_TRUE(g_setCalls.empty());

    // Without a setter nothing happens.
    EXPECT_EQ(Calculate("SETVALUE(probe, 1, 2)"), ":");
}

TEST(RpnStatements, SavedTreesReadBack)
{
    CEquationTree original;
    ASSERT_TRUE(original.Compile(QStringLiteral(
        "Catch(Error(\"x\", 1)) { GetLastError() }; Catch(2); iif({1,0}, 1, 2); Warning(\"w\"); SETTEXT(t, 1, 2)")));
    CRpnBuffer buffer(10);
    buffer.Reset(CBufferIO::ModeWrite, 64);
    original.Serialize(buffer);
    CRpnBuffer reading(10);
    reading.LoadForReading(buffer.ToByteArray());
    CEquationTree copy;
    ASSERT_TRUE(copy.Serialize(reading));
    EXPECT_EQ(kindsOf(copy.GetRoot()), kindsOf(original.GetRoot()));
    CRpnData v1, v2;
    ASSERT_EQ(original.Run(v1), 1);
    ASSERT_EQ(copy.Run(v2), 1);
    EXPECT_EQ(Describe(v2), "ARRAY:{{x1},2,{1,2},,}");
    EXPECT_EQ(Describe(v1), Describe(v2));
    EXPECT_EQ(copy.m_warnings, QStringList(QStringLiteral("w")));
}

TEST(RpnStatements, KeywordsResolveToTheirClasses)
{
    CEquationTree tree; // registers the language's classes
    const std::vector<std::pair<const char *, const char *>> words = {
        {"iif", "iif"}, {"IF", "if"}, {"else", "else"}, {"While", "while"}, {"catch", "Catch"},
        {"return", "return"}, {"SetValue", "SETVALUE"}, {"settext", "SETTEXT"}, {"error", "Error"},
        {"warning", "Warning"}, {"message", "Warning"}, {"GetLastError", "GetLastError"},
        {"#Error", "#error"},
    };
    for (const auto &[word, name] : words) {
        const QString upper = QString::fromLatin1(word).toUpper();
        int classNumber = -1;
        for (const CRpnKeywordRow &row : GetLanguageKeywords()) {
            if (upper == QLatin1StringView(row.name))
                classNumber = row.classNumber;
        }
        unsigned char status = 1;
        std::unique_ptr<CRpnNode> node(LookupKeyword(&tree, QString::fromLatin1(word), 0, 1, 0, status));
        ASSERT_NE(node, nullptr) << word;
        EXPECT_EQ(node->GetKind(), classNumber) << word;
        EXPECT_EQ(node->GetName(), QString::fromLatin1(name)) << word;
    }
}

// --- directives ---------------------------------------------------------------------------------------------------

namespace {

// Scans `text` with every word "hash_xxx" turned into "#xxx": words with the
// hash sign, as a source could never give them.
bool scanWithDirectives(CEquationTree &tree, const QString &text, CRpnParserItemArray &items)
{
    CRpnParserItemArray functions;
    if (!Scan(&tree, text, items, functions))
        return false;
    for (CRpnParserItem *item : items.m_items) {
        if ((item->m_kind == RPN_TOKEN_WORD || item->m_kind == RPN_TOKEN_CALL) && item->m_text.startsWith(u"hash_"))
            item->m_text = u'#' + item->m_text.mid(5);
    }
    return true;
}

// Parses `text` with its directives into `tree`; false after an error.
bool compileDirectives(CEquationTree &tree, const char *text)
{
    tree.ResetError();
    tree.SetSource(QString::fromUtf8(text));
    CRpnParserItemArray items;
    if (!scanWithDirectives(tree, tree.GetSource(), items))
        return false;
    CRpnParser parser(&tree, nullptr, true, false, nullptr);
    CRpnNode *root = parser.Parse(items);
    if (!root)
        return false;
    tree.SetRoot(root);
    return true;
}

std::string runDirectives(const char *text, CEquationTree *given = nullptr)
{
    CEquationTree fresh;
    CEquationTree &tree = given ? *given : fresh;
    auto error = [&tree] {
        return "E" + std::to_string(MessageIdOf(tree.GetErrorMessage())) + "@" + std::to_string(tree.GetErrorRow())
            + "," + std::to_string(tree.GetErrorCol()) + ":" + tree.GetErrorToken().toStdString();
    };
    if (!compileDirectives(tree, text))
        return error();
    CRpnData value;
    try {
        if (tree.Run(value) != 1)
            return error();
    } catch (const CRpnErrorException &e) {
        return "raised:" + e.message.toStdString();
    }
    return Describe(value);
}

} // namespace

TEST(RpnDirectives, NodeClasses)
{
    struct Row
    {
        const char *word;
        int kind, precedence;
        std::uint32_t flags;
        const char *name, *source;
    };
    const Row rows[] = {
        {"#define", 700, 7, 0x4000, "#define", "#define "},
        {"#undef", 701, 7, 0x4000, "#undef", "#undef "},
        {"#IF", 702, 4, 0x4000, "#if", "#if "},
        {"#ifdef", 703, 4, 0x4000, "#ifdef", "#ifdef "},
        {"#ifndef", 704, 4, 0x4000, "#ifndef", "#ifndef "},
        {"#elif", 705, 4, 0x44000, "#elif", "#elif "},
        {"#else", 706, 9, 0x4000, "#else", "#else\r\n"},
        {"#endif", 707, 4, 0x84000, "#endif", "#endif\r\n"},
        {"#error", 709, 50, 0x4000, "#error", "#error {\"boom\"}\r\n"},
    };
    CEquationTree tree;
    for (const Row &row : rows) {
        unsigned char status = 1;
        std::unique_ptr<CRpnNode> node(LookupKeyword(&tree, QString::fromLatin1(row.word), 3, 2, 1, status));
        ASSERT_NE(node, nullptr) << row.word;
        EXPECT_EQ(node->GetKind(), row.kind) << row.word;
        EXPECT_EQ(node->GetPrecedence(), row.precedence) << row.word;
        EXPECT_EQ(node->m_flags, row.flags) << row.word;
        EXPECT_TRUE(node->IsMacro()) << row.word;
        EXPECT_EQ(node->GetName(), QString::fromLatin1(row.name));
        EXPECT_EQ(GetDirectiveSource(node.get(), QStringLiteral("boom")), QString::fromLatin1(row.source));
    }
    // The section marks: no word; the role goes with a copy (their names
    // are checked through the messages of marks that pair up with nothing).
    std::unique_ptr<CRpnNode> mark(CreateNodeOfKind(708, &tree));
    ASSERT_NE(mark, nullptr);
    static_cast<CNodeMacroBracket *>(mark.get())->m_role = CNodeMacroBracket::RoleEndIf;
    std::unique_ptr<CRpnNode> copy(CloneSubtree(mark.get(), &tree));
    EXPECT_EQ(static_cast<CNodeMacroBracket *>(copy.get())->m_role, CNodeMacroBracket::RoleEndIf);
    EXPECT_TRUE(copy->IsMacro() && copy->IsBrace());
    EXPECT_EQ(copy->GetPrecedence(), 3);
    EXPECT_EQ(GetDirectiveSource(copy.get()), QString());
}

TEST(RpnDirectives, HashLinesOfSourceStayInertTexts)
{
    CEquationTree tree;
    ASSERT_TRUE(tree.Compile(QStringLiteral("#define N 3\nx = 1\n#if 0\nx = 2\n#endif\nx")));
    CRpnData value;
    ASSERT_EQ(tree.Run(value), 1);
    EXPECT_EQ(Describe(value), "ARRAY:{#define N 3,1,#if 0,2,#endif,2}");
    EXPECT_EQ(Calculate("#define N 3\nN"), "E43166@2,0");
}

TEST(RpnDirectives, RunAsStatements)
{
    const std::vector<Case> cases = {
        {"a = 1\nhash_if a\n  \"x\"\nhash_else\n  \"y\"\nhash_endif", "ARRAY:{1,{x}}"},
        {"a = 0\nhash_if a\n  \"x\"\nhash_else\n  \"y\"\nhash_endif", "ARRAY:{0,{y}}"},
        {"a = 0\nhash_if a\n  \"x\"\nhash_endif", "ARRAY:{0,}"},
        {"a = 2\nhash_if a == 1\n  \"one\"\nhash_elif a == 2\n  \"two\"\nhash_else\n  \"many\"\nhash_endif",
         "ARRAY:{2,{two}}"},
        {"a = 5\nhash_if a == 1\n  \"one\"\nhash_elif a == 2\n  \"two\"\nhash_else\n  \"many\"\nhash_endif",
         "ARRAY:{5,{many}}"},
        {"a = 1\nhash_if a == 1\n  \"one\"\nhash_elif a == 2\n  \"two\"\nhash_endif", "ARRAY:{1,{one}}"},
        {"a = 1\nhash_if a\nhash_else\n  \"y\"\nhash_endif", "ARRAY:{1,{}}"},
        {"a = 1; b = 0\nhash_if a\n  hash_if b\n    \"ab\"\n  hash_else\n    \"a\"\n  hash_endif\nhash_endif",
         "ARRAY:{1,0,{{a}}}"},
        {"hash_define N 3\nN * 2", "ARRAY:{3,6}"},
        {"hash_define N -1.5\nN", "ARRAY:{-1.5,-1.5}"},
        {"x = 1\nhash_undef x\nIsEmpty(x)", "ARRAY:{1,,1}"},
        // #ifdef and #ifndef take the truth of their condition alike.
        {"d = 1\nhash_ifdef d\n  \"in\"\nhash_endif", "ARRAY:{1,{in}}"},
        {"d = 1\nhash_ifndef d\n  \"in\"\nhash_endif", "ARRAY:{1,{in}}"},
        {"d = 1\nhash_undef d\nhash_ifdef d\n  \"in\"\nhash_else\n  \"out\"\nhash_endif", "ARRAY:{1,,{out}}"},
        // #error only when reached.
        {"a = 1\nhash_if a\n  \"fine\"\nhash_else\n  hash_error {\"stop\"}\nhash_endif", "ARRAY:{1,{fine}}"},
        {"a = 0\nhash_if a\n  \"fine\"\nhash_else\n  hash_error {\"stop \", a}\nhash_endif", "raised:stop 0"},
        // Section marks that do not pair up.
        {"hash_endif", "E43192@1,0:#endif"},
        {"x = 1\nhash_else\nx", "E43192@2,0:#else"},
        {"x = 1\nhash_elif x\nx", "E43192@2,0:#elif"},
        {"a = 1\nhash_if a\n  x = 2\n", "E43170@3,6:2"},
        {"a = 1\nhash_if a\n  1\nhash_else\n  2\nhash_else\n  3\nhash_endif", "E43028@6,0:#else"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(runDirectives(c.text), c.expected) << c.text;

    // A directive tests values computed before it, results of functions included.
    CEquationTree tree;
    ASSERT_TRUE(tree.Compile(QStringLiteral("function f(v) { return v * 2 }; 0")));
    EXPECT_EQ(runDirectives("x = f(2)\nhash_if x > 3\n  y = x\nhash_endif\ny", &tree), "ARRAY:{4,{4},4}");
    EXPECT_EQ(runDirectives("x = f(1)\nhash_if x > 3\n  y = x\nhash_else\n  y = 0\nhash_endif\ny", &tree),
              "ARRAY:{2,{0},0}");
}

TEST(RpnDirectives, FoldLikeTheStatementsTheyStandFor)
{
    CEquationTree macro, plain;
    ASSERT_TRUE(compileDirectives(macro, "a = 1\nhash_if a\n  x = 1\nhash_else\n  x = 2\nhash_endif"));
    ASSERT_TRUE(plain.Compile(QStringLiteral("a = 1\nif (a) {\n  x = 1\n} else {\n  x = 2\n}")));
    std::vector<int> kinds = kindsOf(macro.GetRoot());
    for (int &k : kinds)
        k = k == RPN_NODE_MACRO_IF ? RPN_NODE_IF : k;
    EXPECT_EQ(kinds, kindsOf(plain.GetRoot()));
}

TEST(RpnDirectives, ASavedTreeWithAMacroIfRunsLikeAnIf)
{
    for (double a : {0.0, 1.0}) {
        CEquationTree original;
        original.GetVariables()->SetAt(QStringLiteral("a"), CRpnData(a));
        ASSERT_TRUE(compileDirectives(
            original, "hash_define N 4\nhash_if a\n  r = N * 2\nhash_else\n  hash_error {\"not taken\"}\nhash_endif\nr"));
        CRpnBuffer buffer(10);
        buffer.Reset(CBufferIO::ModeWrite, 64);
        original.Serialize(buffer);

        CRpnBuffer reading(10);
        reading.LoadForReading(buffer.ToByteArray());
        CEquationTree copy;
        copy.GetVariables()->SetAt(QStringLiteral("a"), CRpnData(a));
        ASSERT_TRUE(copy.Serialize(reading));
        const std::vector<int> kinds = kindsOf(copy.GetRoot());
        EXPECT_EQ(kinds, kindsOf(original.GetRoot()));
        EXPECT_NE(std::find(kinds.begin(), kinds.end(), RPN_NODE_MACRO_IF), kinds.end());
        EXPECT_NE(std::find(kinds.begin(), kinds.end(), RPN_NODE_MACRO_DEFINE), kinds.end());
        WalkTree(copy.GetRoot(), [](CRpnNode *node) {
            if (node->GetKind() >= RPN_NODE_MACRO_DEFINE && node->GetKind() <= RPN_NODE_MACRO_ERROR) {
                EXPECT_TRUE(node->IsMacro()) << node->GetKind();
            }
            return 0;
        });
        CRpnData value;
        if (a != 0.0) {
            ASSERT_EQ(copy.Run(value), 1);
            EXPECT_EQ(Describe(value), "ARRAY:{4,{8},8}");
        } else {
            EXPECT_THROW(copy.Run(value), CRpnErrorException);
            EXPECT_EQ(copy.GetErrorMessage(), QStringLiteral("not taken"));
        }
    }
}

TEST(RpnDirectives, DefinesCountAsDefaults)
{
    CEquationTree tree;
    ASSERT_TRUE(compileDirectives(tree, "hash_define N 4\nhash_define M N + 1\nM"));
    CMapStringToRpnData defaults;
    EXPECT_EQ(tree.GetRoot()->CollectDefaults(defaults), 2);
    CRpnData n;
    EXPECT_TRUE(defaults.Lookup(QStringLiteral("N"), n));
    EXPECT_TRUE(defaults.Lookup(QStringLiteral("M"), n));
}
