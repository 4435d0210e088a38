// The parser through Compile and Run: precedence, line ends, implicit commas,
// rewrites, and the forms it rejects with their messages and positions.

#include "formula/rpnkeywords.h"
#include "formula/rpnnodes.h"
#include "formula/rpntree.h"

#include "formulatest.h"

#include <gtest/gtest.h>

namespace {

struct Case {
    const char *text;
    const char *expect;
};

void runCases(const std::vector<Case> &cases)
{
    for (const Case &c : cases)
        EXPECT_EQ(Calculate(c.text), c.expect) << c.text;
}

} // namespace

TEST(RpnParser, PrecedenceAndAssociativity)
{
    runCases({
        // Every operator is left-associative, ^ included.
        {"2^3^2", "REAL:64"}, {"2**3**2", "REAL:64"}, {"1-2-3", "REAL:-4"}, {"8/4/2", "REAL:1"},
        // A minus before a number is part of the number; before a name it is an operator.
        {"-2^2", "REAL:4"}, {"x=2; -x^2", "ARRAY:{2,-4}"}, {"x=2; -x*3", "ARRAY:{2,-6}"},
        // Shifts bind like addition.
        {"1<<2+1", "REAL:5"}, {"1+1<<2", "REAL:8"},
        {"2+3*4", "REAL:14"}, {"2*3^2", "REAL:18"}, {"1*(2+3)*4", "REAL:20"}, {"7-2*3", "REAL:1"},
        {"1+2 > 2", "REAL:1"}, {"1 == 1", "INT:1"}, {"1 || 0 && 0", "REAL:1"}, {"3 & 5 | 2", "REAL:3"},
        // ! binds tighter than ==: (!5) == 1 is 0 where !(5 == 1) would be 1.
        {"a=5; b=1; !a == b", "ARRAY:{5,1,0}"},
        {"a = 1 + 2", "REAL:3"}, {"pow(2, 3) + 1", "REAL:9"}, {"mod(7, 4)", "REAL:3"},
        // A text that starts with a parenthesised list is a list in list
        // mode; a parenthesis that only groups stays a grouping.
        {"(2+3)*4", "REAL:20"}, {"(1,2)*2", "ARRAY:{2,4}"}, {"(1),(2)", "ARRAY:{{1},{2}}"},
        {"(2+3)*4, 1", "ARRAY:{20,1}"}, {"(1,2),(3)", "ARRAY:{{1,2},{3}}"},
        // Numbers keep their prefixes.
        {"10k + 1", "REAL:10001"}, {"-10k", "REAL:-10k"}, {"0x1F", "REAL:31"},
    });
}

TEST(RpnParser, RejectedFormsWithMessageAndPosition)
{
    runCases({
        // A unary operator cannot stand behind a binary one (unless a number follows).
        {"a=1; b=2; a*-b", "E43031@1,11"}, {"a=1; b=2; a+-b", "E43031@1,11"}, {"a=1; a*-2", "ARRAY:{1,-2}"},
        {")", "E43027@1,0"}, {"1 +\n 2)", "E43027@2,2"}, {"(1", "E43029@1,0"}, {"x = (1 + (2)", "E43029@1,4"},
        {"1 +", "E43031@1,2"}, {"1 = 2", "E43031@1,2"}, {"5++", "E43031@1,1"}, {"if if", "E43031@1,3"},
        {"x = 1; x (1)", "E43032@1,9"}, {"\"a\" 1", "E43032@1,4"}, {"1 \"a\"", "E43032@1,2"},
        {"a = b = 1", "E43028@1,6"}, {"else 1", "E43028@1,0"}, {"x = 1; if (x) else 2", "E43028@1,14"},
        {"a + = 1", "E43035@1,4"},
        {"{1", "E43170@1,1"}, {"1}", "E43170@1,1"}, {"[1]", "E43170@1,0"}, {"a = {1}; a[]", "E43170@1,11"},
        {"a = {1}; a[0", "E43170@1,11"}, {"{1]", "E43170@1,2"},
        // Names used before a value was assigned.
        {"y", "E43166@1,0"}, {"y = y + 1", "E43166@1,4"}, {"y += 1", "E43166@1,0"}, {"y++", "E43166@1,0"},
        {"(1 2) = 3", "E43028@1,6"},
    });
}

TEST(RpnParser, SoftLineEnds)
{
    runCases({
        // A line that starts with a binary operator goes on with the statement before.
        {"a = 1\n+ 2", "REAL:3"}, {"a = 1\n- 2", "REAL:-1"}, {"a = 1;\n+ 2", "ARRAY:{1,2}"},
        {"x = 1\ny = 2\nx + y", "ARRAY:{1,2,3}"}, {"x = (1 +\n2)", "REAL:3"}, {"x = 1 // note\n+ 1", "REAL:2"},
        {"x = {1,\n2}", "ARRAY:{1,2}"}, {"x = {1\n2}", "ARRAY:{1,2}"}, {"x = {\n1\n}", "ARRAY:{1}"},
        {"x = 3\nif (x > 2)\n  y = 1\nelse\n  y = 2\ny", "ARRAY:{3,1,1}"},
        {"if (0) {\n1\n}\nelse {\n2\n}", "ARRAY:{2}"},
        {"\n\n1 + 1\n\n", "REAL:2"}, {"", ":"}, {"   // nothing\n", ":"},
    });
}

TEST(RpnParser, ListsAndImplicitCommas)
{
    runCases({
        {"{1 2 3}", "ARRAY:{1,2,3}"}, {"{1,2,3}", "ARRAY:{1,2,3}"}, {"1 2 3", "ARRAY:{1,2,3}"},
        {"{1,,3}", "ARRAY:{1,,3}"}, {"{1,}", "ARRAY:{1,}"}, {"{,1}", "ARRAY:{,1}"},
        {"(1,2),(3,4)", "ARRAY:{{1,2},{3,4}}"}, {"(1,2)", "ARRAY:{1,2}"},
        {"{1}{2}", "ARRAY:{{1},{2}}"}, {"{{1 2} {3 4}}", "ARRAY:{{1,2},{3,4}}"},
        // (a)(b) is a list of two, not a product.
        {"a=1; b=2; (a)(b)", "ARRAY:{1,2,1,2}"}, {"x = 3; 2 x", "ARRAY:{3,2,3}"},
        {"x = 3; x x", "ARRAY:{3,3,3}"}, {"\"a\" \"b\" 1", "E43032@1,8"},
    });
    // Without list mode nothing is inserted.
    CEquationTree tree;
    tree.m_listMode = 0;
    EXPECT_EQ(Calculate("{1 2}", &tree), "E43032@1,3");
    EXPECT_EQ(Calculate("(1,2)", &tree), "ARRAY:{1,2}");
}

TEST(RpnParser, NamedValuesTextsAndTags)
{
    runCases({
        {"\"ab\" \"cd\"", "STRING:abcd"}, {"'x' \"y\"", "STRING:xy"}, {"TRUE + true", "REAL:2"},
        {"False", "REAL:0"}, {"NULL", ":"}, {"IsEmpty(null)", "INT:1"}, {"IsNull(1)", "INT:0"},
        {"_crlf", "STRING:\r\n"}, {"_CRLF + \"x\"", "STRING:\r\nx"}, {"e", "REAL:2.718281828459045"},
        {"PI", "REAL:3.141592653589793"}, {"E", "E43166@1,0"}, {"<--BEGIN-->a\"b<--END-->", "STRING:a\"b"},
        // A # line is an inert text statement.
        {"#define N 3", "STRING:#define N 3"}, {"#define N 3\nN", "E43166@2,0"},
    });

    // The name in brackets before a variable becomes its tag.
    CEquationTree tree;
    ASSERT_TRUE(tree.Compile(QStringLiteral("(V) u = 5; {A} i = 2")));
    QStringList tags;
    WalkTree(tree.GetRoot(), [&](CRpnNode *node) {
        if (CNodeVariable *v = node->AsVariable())
            tags << v->m_name + u':' + v->m_tag;
        return 0;
    });
    EXPECT_EQ(tags.join(u' '), QStringLiteral("u:V i:A"));

    // A main variable called e shadows the constant.
    CEquationTree shadow;
    shadow.GetVariables()->SetAt(QStringLiteral("e"), CRpnData(1.0));
    EXPECT_EQ(Calculate("e + 1", &shadow), "REAL:2");
}

TEST(RpnParser, VariablesKnownAndNew)
{
    // Names in first-use order.
    CEquationTree tree;
    QStringList names;
    ASSERT_TRUE(tree.Compile(QStringLiteral("a = 1; b = a * 2 + pi; c = b"), nullptr, true, {}, &names));
    EXPECT_EQ(names.join(u','), QStringLiteral("a,b,c"));

    // Without new variables an unknown name is a syntax error at its place.
    EXPECT_FALSE(tree.Compile(QStringLiteral("1 + zz"), nullptr, false));
    EXPECT_EQ(MessageIdOf(tree.GetErrorMessage()), 43028);
    EXPECT_EQ(tree.GetErrorToken(), QStringLiteral("zz"));
    EXPECT_EQ(tree.GetErrorCol(), 4);

    // Locals and main variables are known; locals are read and written in place.
    CMapStringToRpnData locals;
    locals.SetAt(QStringLiteral("w"), CRpnData(4.0));
    tree.GetVariables()->SetAt(QStringLiteral("m"), CRpnData(3.0));
    ASSERT_TRUE(tree.Compile(QStringLiteral("w = w + m; w"), &locals, false));
    CRpnData value;
    EXPECT_EQ(tree.Run(value), 1);
    EXPECT_EQ(Describe(value), "ARRAY:{7,7}");
    EXPECT_EQ(Describe(*locals.Find(QStringLiteral("w"))), "REAL:7");

    // In free-variable mode a name may be read before it is assigned.
    CEquationTree free;
    free.m_freeVariables = 1;
    EXPECT_EQ(Calculate("q", &free), ":");
}

namespace {

CRpnNode *refusingHook(CEquationTree *, const QString &name, int, int, int, unsigned char &status)
{
    if (name == u"forbidden")
        status = 11;
    return nullptr;
}

void hostGetter(CRpnData &result, int index, int, void *, void *, CRpnNode *, const QString &, int &found)
{
    if (index == 7)
        result.SetDouble(21.0);
    else
        found = 0;
}

} // namespace

TEST(RpnParser, HostVariablesAndKeywordHook)
{
    CEquationTree tree;
    tree.m_keywordHook = refusingHook;
    EXPECT_EQ(Calculate("1 + forbidden", &tree), "E43047@1,4");

    // The host's matcher claims Col1 as its variable of slot 7.
    const CRpnVariableMatcher matcher = [](QStringView rest, int &index) {
        index = 7;
        return rest.startsWith(u"Col1") ? 4 : 0;
    };
    tree.SetVariableAccess(hostGetter, nullptr);
    ASSERT_TRUE(tree.Compile(QStringLiteral("Col1 * 2 + Col1"), nullptr, false, matcher));
    ASSERT_EQ(tree.m_macroNodes.size(), 2u);
    EXPECT_EQ(tree.m_macroNodes[0]->AsVariable()->m_index, 7);
    CRpnData value;
    EXPECT_EQ(tree.Run(value), 1);
    EXPECT_EQ(Describe(value), "REAL:63");
}
