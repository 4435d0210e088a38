#pragma once
// The plain nodes: values (constants, texts, NULL, variables), lists, and the
// punctuation that the parser works with before the tree is folded (brackets,
// parentheses, statement ends, commas, comments).

#include "formula/rpnnode.h"

#include <vector>

struct CRpnColumnBinding;
class CMapStringToRpnData;
class CRpnUserFunction;

// Class numbers of the nodes of the language core.
enum RpnNodeKind : int {
    RPN_NODE_CONSTANT = 1,
    RPN_NODE_COMMA = 2,
    RPN_NODE_LIST = 3,
    RPN_NODE_TEXT = 4,
    RPN_NODE_BRACKET = 5,
    RPN_NODE_END = 6,
    RPN_NODE_ERROR = 7,
    RPN_NODE_WARNING = 8,
    RPN_NODE_COMMENT = 9,
    RPN_NODE_ARRAY_INDEX = 10,
    RPN_NODE_RETURN = 11,
    RPN_NODE_VARIABLE = 12,
    RPN_NODE_IS_NULL = 13,
    RPN_NODE_TYPE_NAME = 14,
    RPN_NODE_FUNCTION = 15,
    RPN_NODE_NULL = 16,
    RPN_NODE_PARENTHESIS = 17,
    RPN_NODE_PLUS = 30,
    RPN_NODE_SINGLE_PLUS = 31,
    RPN_NODE_MINUS = 32,
    RPN_NODE_SINGLE_MINUS = 33,
    RPN_NODE_MULTIPLY = 34,
    RPN_NODE_DIVIDE = 35,
    RPN_NODE_POWER = 36,
    RPN_NODE_MOD = 38,
    RPN_NODE_POWER2 = 39,
    RPN_NODE_MOD2 = 40,
    RPN_NODE_ABS_POWER = 42,
    RPN_NODE_EQUAL = 80,
    RPN_NODE_NOT_EQUAL = 81,
    RPN_NODE_GREATER = 82,
    RPN_NODE_LESS = 83,
    RPN_NODE_GREATER_EQUAL = 84,
    RPN_NODE_LESS_EQUAL = 85,
    RPN_NODE_NOT = 86,
    RPN_NODE_AND = 87,
    RPN_NODE_OR = 88,
    RPN_NODE_INCREMENT = 89,
    RPN_NODE_DECREMENT = 90,
    RPN_NODE_BIT_AND = 91,
    RPN_NODE_BIT_OR = 92,
    RPN_NODE_BIT_NOT = 93,
    RPN_NODE_SHIFT_LEFT = 94,
    RPN_NODE_SHIFT_RIGHT = 95,
    RPN_NODE_ASSIGN = 101,
    RPN_NODE_ADD_ASSIGN = 102,
    RPN_NODE_SUB_ASSIGN = 103,
    RPN_NODE_MUL_ASSIGN = 104,
    RPN_NODE_DIV_ASSIGN = 105,
    RPN_NODE_SET_VALUE = 106,
    RPN_NODE_SET_TEXT = 107,
    RPN_NODE_IIF = 108,
    RPN_NODE_IF = 109,
    RPN_NODE_ELSE = 110,
    RPN_NODE_WHILE = 111,
    RPN_NODE_CATCH = 112,
    RPN_NODE_GET_ERROR = 341,
    RPN_NODE_MACRO_DEFINE = 700,
    RPN_NODE_MACRO_UNDEFINE = 701,
    RPN_NODE_MACRO_IF = 702,
    RPN_NODE_MACRO_IFDEF = 703,
    RPN_NODE_MACRO_IFNDEF = 704,
    RPN_NODE_MACRO_ELSE_IF = 705,
    RPN_NODE_MACRO_ELSE = 706,
    RPN_NODE_MACRO_END_IF = 707,
    RPN_NODE_MACRO_BRACKET = 708,
    RPN_NODE_MACRO_ERROR = 709,
};

// A value written in the source: a number, or the base of texts, NULL and
// variables.  `m_text` is the spelling.
class CNodeConstant : public CRpnNode
{
public:
    int GetKind() const override { return RPN_NODE_CONSTANT; }
    QString GetName() const override { return m_text; }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_VALUE; }
    CRpnNode *CreateSame() const override { return new CNodeConstant; }
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;
    void Evaluate(CRpnData &result, unsigned char &status) override;
    bool EvaluateFast(double &out) override;
    void SerializeNode(CRpnBuffer &buffer) override;

    CRpnData m_value;
    QString m_text;
};

class CNodeText : public CNodeConstant
{
public:
    int GetKind() const override { return RPN_NODE_TEXT; }
    std::uint64_t GetTraits() const override { return CNodeConstant::GetTraits() | RPN_TRAIT_TEXT; }
    CRpnNode *CreateSame() const override { return new CNodeText; }
};

class CNodeNULL : public CNodeConstant
{
public:
    CNodeNULL() { m_text = QStringLiteral("NULL"); }
    int GetKind() const override { return RPN_NODE_NULL; }
    CRpnNode *CreateSame() const override { return new CNodeNULL; }
};

// A named value.  Where it lives at run time, in order: a column the host
// bound to the name (CEquationTree::BindColumn); the variables of a running
// user function; the host's getter; the locals given to Compile, then the
// tree's main dictionary.  The value read last is kept in m_value.
//
// The name is looked up once, not on every access: inside a function body
// the node holds its slot in the call's frame (fixed when the body is
// compiled), and in the main text it remembers the position of its entry in
// the main dictionary (its position and address) with the dictionary's
// layout number, and looks the name up again only when that number has
// changed or the name was not there.
class CNodeVariable : public CNodeConstant
{
public:
    enum Mark : std::uint32_t {
        MarkNew = 1,       // first met in this text
        MarkMain = 2,      // a name of the tree's main dictionary
        MarkLocal = 4,     // a name of the locals given to Compile
        MarkConstant = 8,  // `e` and `pi`: m_value is the value
        MarkHost = 16,     // claimed by the host's variable matcher; m_index is its slot
        MarkCurve = 32,    // was assigned a curve
    };

    CNodeVariable() { m_variableNode = true; }
    int GetKind() const override { return RPN_NODE_VARIABLE; }
    QString GetName() const override { return m_name; }
    std::uint64_t GetTraits() const override { return CNodeConstant::GetTraits() | RPN_TRAIT_VARIABLE; }
    CRpnNode *CreateSame() const override { return new CNodeVariable; }
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;
    void Evaluate(CRpnData &result, unsigned char &status) override;
    bool EvaluateFast(double &out) override;
    void SerializeNode(CRpnBuffer &buffer) override;

    bool IsNew() const { return (m_marks & MarkNew) != 0; }
    bool IsMain() const { return (m_marks & MarkMain) != 0; }
    bool IsLocal() const { return (m_marks & MarkLocal) != 0; }
    bool IsConstant() const { return (m_marks & MarkConstant) != 0; }
    bool IsHostBound() const { return (m_marks & MarkHost) != 0; }
    void SetMark(Mark mark, bool on) { m_marks = on ? (m_marks | mark) : (m_marks & ~std::uint32_t(mark)); }

    // The current value; false when no place knows the name (the value is then empty).
    bool GetValue(CRpnData &value);
    // Stores a value; returns what was stored (a host setter may change it).
    CRpnData SetValue(const CRpnData &value, unsigned char &status);
    CRpnData SetValue(const CRpnData &value, int row, unsigned char &status);

    std::int32_t m_index = -1; // host slot
    QString m_tag;             // the unit or tag written before the name: `(V) u = 1`
    QString m_name;
    QString m_note;            // a further text for hosts
    std::uint32_t m_marks = 0;

    // A column bound by the host, found when the binding was made.
    const CRpnColumnBinding *m_column = nullptr;

    // The slot in the frame of a call of m_slotFunction (-1: none).
    int m_slot = -1;
    const CRpnUserFunction *m_slotFunction = nullptr;

    // Where the value lives now: the slot of the running call, or the entry
    // in the main dictionary; null when no place holds the name (a getter's
    // or a column's variable has none).
    CRpnData *FindStorage();
    // The same, the common cases inline (defined in rpnvariableplace.h,
    // which a caller includes).
    inline CRpnData *FindPlace();

private:
    // The remembered entry of the main dictionary (layout 0: none).
    std::uint64_t m_mainLayout = 0;
    int m_mainIndex = -1;
    CRpnData *m_mainSlot = nullptr; // its address, valid under the same layout

    bool lookUp(CRpnData &value);
    CRpnData *mainEntry(CMapStringToRpnData *main);
    void unknown(CRpnData &result, unsigned char &status);
};

// An ordered list of child nodes: array literals, blocks, whole scripts.  Its
// value is an ARRAY with one element for each child.
class CRpnNodeList : public CRpnNode
{
public:
    ~CRpnNodeList() override;

    int GetKind() const override { return RPN_NODE_LIST; }
    int GetPrecedence() const override { return RPN_PREC_LIST; }
    QString GetName() const override { return QStringLiteral("{ }"); }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_LIST; }
    CRpnNode *CreateSame() const override { return new CRpnNodeList; }

    int GetOperandCount() const override { return int(m_children.size()); }
    CRpnNode *GetOperand(int i) const override;
    // An index one past the end appends.
    bool SetOperand(int i, CRpnNode *node) override;

    void Evaluate(CRpnData &result, unsigned char &status) override;
    double EvaluateReal(unsigned char &status) override;
    bool EvaluateFast(double &out) override;
    void Execute(CRpnData &value, unsigned char &status) override;

    void Append(CRpnNode *node) { SetOperand(GetOperandCount(), node); }

    std::vector<CRpnNode *> m_children;
    bool m_ownsChildren = true;
};

// The base of calls that take a list of arguments: the arguments are the
// list's children, and the node evaluates them itself.
class CNodeMultiOperand : public CRpnNodeList
{
public:
    int GetPrecedence() const override { return RPN_PREC_FUNCTION; }
    std::uint64_t GetTraits() const override
    {
        return CRpnNodeList::GetTraits() | RPN_TRAIT_OPERATION | RPN_TRAIT_MULTI_OPERAND;
    }
    CRpnNode *CreateSame() const override { return new CNodeMultiOperand; }
    QString GetName() const override { return QStringLiteral("( )"); }
    // A call is no block: its value is its own, not that of its first argument.
    void Execute(CRpnData &value, unsigned char &status) override { Evaluate(value, status); }
    double EvaluateReal(unsigned char &status) override { return CRpnNode::EvaluateReal(status); }
    bool EvaluateFast(double &) override { return false; }
};

// `{` and `}` while parsing.
class CNodeBracket : public CRpnNode
{
public:
    int GetKind() const override { return RPN_NODE_BRACKET; }
    int GetPrecedence() const override { return RPN_PREC_BRACKET; }
    QString GetName() const override { return m_open ? QStringLiteral("{") : QStringLiteral("}"); }
    std::uint64_t GetTraits() const override
    {
        return RPN_TRAIT_BRACE | (m_open ? RPN_TRAIT_BRACE_OPEN : RPN_TRAIT_BRACE_CLOSE);
    }
    CRpnNode *CreateSame() const override { return new CNodeBracket; }
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;
    void SerializeNode(CRpnBuffer &buffer) override;

    bool m_open = true;
};

// `(`, `)`, `[` and `]` while parsing.
class CNodeParenthese : public CRpnNode
{
public:
    int GetKind() const override { return RPN_NODE_PARENTHESIS; }
    QString GetName() const override;
    std::uint64_t GetTraits() const override
    {
        return RPN_TRAIT_PARENTHESIS | (m_open ? RPN_TRAIT_PARENTHESIS_OPEN : RPN_TRAIT_PARENTHESIS_CLOSE);
    }
    CRpnNode *CreateSame() const override { return new CNodeParenthese; }
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;
    void SerializeNode(CRpnBuffer &buffer) override;

    bool IsOpen() const { return m_open; }
    bool IsClose() const { return !m_open; }
    bool IsRound() const { return !m_square; }
    bool IsSquare() const { return m_square; }

    bool m_open = true;
    bool m_square = false;
};

// `;`, and a line end that ends a statement (flag RPN_NODE_SOFT_END).
class CNode_End : public CRpnNode
{
public:
    int GetKind() const override { return RPN_NODE_END; }
    int GetPrecedence() const override { return RPN_PREC_END; }
    QString GetName() const override { return QStringLiteral(";"); }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_END; }
    CRpnNode *CreateSame() const override { return new CNode_End; }
};

class CNodeComment : public CRpnNode
{
public:
    int GetKind() const override { return RPN_NODE_COMMENT; }
    int GetPrecedence() const override { return RPN_PREC_COMMENT; }
    QString GetName() const override { return m_text; }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_COMMENT; }
    CRpnNode *CreateSame() const override { return new CNodeComment; }
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;
    void SerializeNode(CRpnBuffer &buffer) override;

    QString m_text;
};
