// The node classes: their class numbers, precedences, names and kinds of
// node (these are written into saved trees and read by the parser), copies
// of nodes, and the walks that must work on trees of any depth.

#include "formula/rpnbuffer.h"
#include "formula/rpnfunctioncall.h"
#include "formula/rpnkeywords.h"
#include "formula/rpnstatements.h"
#include "formula/rpntree.h"

#include "formulatest.h"

#include <gtest/gtest.h>

namespace {

// The node that a text's first statement compiles to.
struct Compiled
{
    CEquationTree tree;
    CRpnNode *first = nullptr;
    explicit Compiled(const char *text)
    {
        tree.m_freeVariables = 1;
        if (tree.Compile(QString::fromUtf8(text)))
            first = tree.GetRoot()->GetOperand(0);
    }
};

QByteArray savedSubtree(CRpnNode *node)
{
    CEquationTree tree;
    tree.SetRoot(node);
    CRpnBuffer buffer(10);
    buffer.Reset(CBufferIO::ModeWrite, 64);
    tree.Serialize(buffer);
    tree.TakeRoot();
    return buffer.ToByteArray();
}

} // namespace

TEST(RpnNodes, ClassNumbersPrecedencesAndNames)
{
    const struct {
        const char *text; // the first statement's top node is the one meant
        int kind;
        int precedence;
        const char *name;
    } cases[] = {
        {"1", 1, 10, "1"}, {"\"t\"", 4, 10, "t"}, {"x", 12, 10, "x"}, {"NULL", 16, 10, "NULL"}, {"{1}", 3, 1, "{ }"},
        {"x[0]", 10, 5, "[ ]"}, {"a + b", 30, 25, "+"}, {"+a", 31, 25, "+"}, {"a - b", 32, 25, "-"},
        {"-a", 33, 25, "-"}, {"a * b", 34, 30, "*"}, {"a / b", 35, 30, "/"}, {"a ^ b", 36, 40, "^"},
        {"a % b", 38, 30, "%"}, {"a ** b", 39, 40, "**"}, {"pow(a, b)", 39, 50, "pow"}, {"mod(a, b)", 40, 50, "mod"},
        {"pwr(a, b)", 42, 50, "pwr"}, {"a == b", 80, 21, "=="}, {"a != b", 81, 21, "!="}, {"a <> b", 81, 21, "!="},
        {"a > b", 82, 23, ">"}, {"a < b", 83, 23, "<"}, {"a >= b", 84, 23, ">="}, {"a <= b", 85, 23, "<="},
        {"!a", 86, 49, "!"}, {"NOT a", 86, 49, "!"}, {"a && b", 87, 14, "&&"}, {"a AND b", 87, 14, "&&"},
        {"a || b", 88, 13, "||"}, {"a or b", 88, 13, "||"}, {"a++", 89, 50, "++"}, {"a--", 90, 50, "--"},
        {"a & b", 91, 17, "&"}, {"a | b", 92, 16, "|"}, {"~a", 93, 49, "~"}, {"a << b", 94, 25, "<<"},
        {"a >> b", 95, 25, ">>"}, {"a = b", 101, 7, "="}, {"a += b", 102, 7, "+="}, {"a -= b", 103, 7, "-="},
        {"a *= b", 104, 7, "*="}, {"a /= b", 105, 7, "/="}, {"if (a) b", 109, 4, "if"},
        {"while (a) b", 111, 4, "while"}, {"return a", 11, 8, "return"}, {"IsEmpty(a)", 13, 50, "IsEmpty"},
        {"isnull(a)", 13, 50, "IsEmpty"}, {"TypeName(a)", 14, 50, "TypeName"},
        {"function f() { 1 }; f()", 15, 50, "f"},
    };
    for (const auto &c : cases) {
        Compiled compiled(c.text);
        ASSERT_NE(compiled.first, nullptr) << c.text;
        EXPECT_EQ(compiled.first->GetKind(), c.kind) << c.text;
        EXPECT_EQ(compiled.first->GetPrecedence(), c.precedence) << c.text;
        EXPECT_EQ(compiled.first->GetName().toStdString(), c.name) << c.text;
        // The prototype of each class is what saved trees are read back from.
        const CRpnNode *prototype = GetPrototypes().GetAt(c.kind);
        ASSERT_NE(prototype, nullptr) << c.kind;
        EXPECT_EQ(prototype->GetKind(), c.kind);
    }
}

TEST(RpnNodes, KindsOfNode)
{
    const struct {
        const char *text;
        std::uint64_t has;
        std::uint64_t hasNot;
    } cases[] = {
        {"1", RPN_TRAIT_VALUE, RPN_TRAIT_OPERATION | RPN_TRAIT_VARIABLE | RPN_TRAIT_TEXT},
        {"\"t\"", RPN_TRAIT_VALUE | RPN_TRAIT_TEXT, RPN_TRAIT_OPERATION},
        {"x", RPN_TRAIT_VALUE | RPN_TRAIT_VARIABLE, RPN_TRAIT_OPERATION},
        {"a + b", RPN_TRAIT_OPERATION | RPN_TRAIT_BINARY, RPN_TRAIT_UNARY | RPN_TRAIT_VALUE | RPN_TRAIT_LOGICAL},
        {"-a", RPN_TRAIT_OPERATION | RPN_TRAIT_UNARY, RPN_TRAIT_BINARY},
        {"a < b", RPN_TRAIT_LOGICAL | RPN_TRAIT_BINARY, RPN_TRAIT_ASSIGNMENT},
        {"a && b", RPN_TRAIT_LOGICAL, 0}, {"IsEmpty(a)", RPN_TRAIT_LOGICAL | RPN_TRAIT_UNARY, 0},
        {"a = b", RPN_TRAIT_ASSIGNMENT_LIKE | RPN_TRAIT_ASSIGNMENT | RPN_TRAIT_PLAIN_ASSIGNMENT, RPN_TRAIT_SELF_ASSIGNMENT},
        {"a += b", RPN_TRAIT_ASSIGNMENT_LIKE | RPN_TRAIT_SELF_ASSIGNMENT, RPN_TRAIT_PLAIN_ASSIGNMENT},
        {"a++", RPN_TRAIT_ASSIGNMENT, RPN_TRAIT_ASSIGNMENT_LIKE},
        {"x[0]", RPN_TRAIT_ARRAY_INDEX, RPN_TRAIT_OPERATION},
        {"{1}", RPN_TRAIT_LIST, RPN_TRAIT_MULTI_OPERAND | RPN_TRAIT_OPERATION},
        {"if (a) b", RPN_TRAIT_IF_LIKE, RPN_TRAIT_WHILE | RPN_TRAIT_OPERATION},
        {"while (a) b", RPN_TRAIT_IF_LIKE | RPN_TRAIT_WHILE, 0},
        {"function f() { 1 }; f()", RPN_TRAIT_LIST | RPN_TRAIT_MULTI_OPERAND | RPN_TRAIT_FUNCTION_CALL | RPN_TRAIT_OPERATION, 0},
    };
    for (const auto &c : cases) {
        Compiled compiled(c.text);
        ASSERT_NE(compiled.first, nullptr) << c.text;
        const std::uint64_t traits = compiled.first->GetTraits();
        EXPECT_EQ(traits & c.has, c.has) << c.text;
        EXPECT_EQ(traits & c.hasNot, 0u) << c.text;
    }
    // The punctuation of the parser.
    CNodeParenthese square;
    square.m_square = true;
    square.m_open = false;
    EXPECT_TRUE(square.IsParenthesisClose() && square.IsSquare() && !square.IsRound());
    EXPECT_EQ(square.GetName(), QStringLiteral("]"));
    CNodeBracket brace;
    EXPECT_TRUE(brace.IsBraceOpen() && !brace.IsBraceClose());
    CNode_End end;
    EXPECT_TRUE(end.IsEnd());
    CNode_ELSE otherwise;
    EXPECT_TRUE(otherwise.IsELSELike());
    EXPECT_EQ(GetOperandPlaces(&otherwise), 0);
}

TEST(RpnNodes, CopiesKeepEveryField)
{
    // A copy saves to the same bytes as its original, so no field is lost.
    const char *const texts[] = {
        "(V) u = 10k; w = \"text\" + NULL; z = pi * e",
        "i++; --i; a[1][2] = {1,,3}; b[] = 2",
        "if (a) { 1 } else { 2 }; while (b < 3) { b += 1 }",
        "function f(_ref p, q = 2) { return p ** q }; f(x, 3) && !x || ~x << 2 >> 1",
        "a == b; a != b; a >= b; a <= b; a > b; a < b; a % b; mod(a, b); pwr(a, b); a & b | c",
    };
    for (const char *text : texts) {
        Compiled compiled(text);
        ASSERT_NE(compiled.first, nullptr) << text;
        CRpnNode *root = compiled.tree.GetRoot();
        CRpnNode *copy = CloneSubtree(root, &compiled.tree);
        EXPECT_EQ(savedSubtree(copy), savedSubtree(root)) << text;
        DeleteSubtree(copy);
    }
}

TEST(RpnNodes, OperandsAndWalks)
{
    Compiled compiled("if (a) { b + c * d } else { -e2 }");
    ASSERT_NE(compiled.first, nullptr);
    CRpnNode *statement = compiled.first;
    ASSERT_TRUE(statement->IsIFLike());
    EXPECT_EQ(statement->GetOperandCount(), 3);
    CRpnNode *elsePart = statement->GetOperand(2);
    EXPECT_EQ(statement->IndexOfChild(elsePart), 2);
    EXPECT_EQ(elsePart->m_parent, statement);
    EXPECT_EQ(statement->IndexOfChild(statement), -1);

    // Pre-order, operands in order.
    QStringList order;
    WalkTree(statement, [&](CRpnNode *node) {
        order << node->GetName();
        return 0;
    });
    EXPECT_EQ(order.join(u' '), QStringLiteral("if a { } + b * c d { } - e2"));
    // The first visitor that answers stops the walk with its answer.
    int visited = 0;
    EXPECT_EQ(WalkTree(statement, [&](CRpnNode *node) { return ++visited, node->GetName() == u"*" ? 7 : 0; }), 7);
    EXPECT_EQ(visited, 6);

    // Taking an operand out leaves its place empty.
    CRpnNode *taken = statement->TakeOperand(2);
    EXPECT_EQ(statement->GetOperand(2), nullptr);
    EXPECT_EQ(taken->m_parent, nullptr);
    DeleteSubtree(taken);
    EXPECT_EQ(Calculate("if (0) { 1 }"), ":");
}

TEST(RpnNodes, DeepTreesNeedNoDeepStack)
{
    // A chain of a quarter of a million nodes: walked, copied, saved, read
    // back and deleted without recursion.
    constexpr int kDepth = 250000;
    CEquationTree tree;
    CRpnNode *top = new CNodeConstant;
    static_cast<CNodeConstant *>(top)->m_value.SetDouble(1.0);
    for (int i = 0; i < kDepth; ++i) {
        CRpnNode *minus = new CNodeSingleMinus;
        minus->SetOperand(0, top);
        top = minus;
    }
    tree.SetRoot(top);
    int count = 0;
    WalkTree(tree.GetRoot(), [&](CRpnNode *) { return ++count, 0; });
    EXPECT_EQ(count, kDepth + 1);

    CRpnNode *copy = CloneSubtree(tree.GetRoot(), &tree);
    DeleteSubtree(copy);

    CRpnBuffer buffer(10);
    buffer.Reset(CBufferIO::ModeWrite, 1 << 20);
    tree.Serialize(buffer);
    CRpnBuffer reading(10);
    reading.LoadForReading(buffer.ToByteArray());
    CEquationTree readBack;
    ASSERT_TRUE(readBack.Serialize(reading));
    count = 0;
    WalkTree(readBack.GetRoot(), [&](CRpnNode *) { return ++count, 0; });
    EXPECT_EQ(count, kDepth + 1);
}

TEST(RpnNodes, CoreNamesEnterTheKeywordTable)
{
    CEquationTree tree; // the first tree registers the core classes
    const struct {
        const char *name;
        int kind;
    } names[] = {
        {"RETURN", 11}, {"ISEMPTY", 13}, {"ISNULL", 13}, {"TYPENAME", 14}, {"POW", 39}, {"MOD", 40}, {"PWR", 42},
        {"AND", 87}, {"OR", 88}, {"NOT", 86}, {"IF", 109}, {"ELSE", 110}, {"WHILE", 111},
    };
    for (const auto &n : names) {
        unsigned char status = 1;
        std::unique_ptr<CRpnNode> node(LookupKeyword(&tree, QString::fromLatin1(n.name).toLower(), 0, 1, 0, status));
        ASSERT_NE(node, nullptr) << n.name;
        EXPECT_EQ(node->GetKind(), n.kind) << n.name;
        EXPECT_EQ(node->m_tree, &tree);
    }
}
