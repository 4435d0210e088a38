#pragma once
// CRpnNode: the base of every node of a compiled formula.
//
// A compiled formula is a tree of nodes.  Every operator, statement, value
// and function is a class with a fixed class number (GetKind, written into
// saved trees), a precedence (read by the parser's shunting yard) and a name
// (shown in messages).  Nodes own their operands.
//
// Evaluation passes the status byte by reference: 1 good, 0 failed (an error
// stands in the tree), 10 a `return` is unwinding.  A composite checks it after
// each child: on 0 it gives the empty value, on 10 (or when the tree was asked
// to stop) it passes the child's value on at once.
//
// Beside Evaluate there is a fast path for REAL scalars: EvaluateFast gives a
// double without making values, for the node classes whose value on REAL
// operands is exactly REAL(ApplyReal(a, b)).  It never reports an error and
// never has a side effect; whenever anything is unusual (an operand that is no
// REAL, a zero divisor, an unknown variable, a failing ApplyReal) it answers
// false and the caller evaluates the ordinary way, which then reports what
// needs reporting.  PrepareFastPath decides once per compiled tree which
// subtrees may try it.

#include "formula/rpndata.h"
#include "formula/rpnexception.h"
#include "formula/rpntree.h"
#include "support/stackroom.h"

#include <QString>
#include <cstdint>
#include <functional>

class CEquationTree;
class CRpnBuffer;
class CMapStringToRpnData;
class CNodeConstant;
class CNodeVariable;
class CRpnNodeList;
class CNodeMultiOperand;
class CNodeDoubleOperand;
class CNodeSingleOperand;
class CNode_IF;
class CNode_Function;

// Flag bits of m_flags.
inline constexpr std::uint32_t RPN_NODE_OPERATOR_FORM = 0x1; // a function written as an operator (`**`)
inline constexpr std::uint32_t RPN_NODE_SOFT_END = 0x10;    // a statement end made from a line end
inline constexpr std::uint32_t RPN_NODE_MACRO = 0x4000;      // a directive node
inline constexpr std::uint32_t RPN_NODE_MACRO_ELIF = 0x40000;
inline constexpr std::uint32_t RPN_NODE_MACRO_ENDIF = 0x80000;

// Precedences (GetPrecedence); higher binds tighter.
enum RpnPrecedence : int {
    RPN_PREC_COMMENT = 0,
    RPN_PREC_LIST = 1,
    RPN_PREC_END = 2,
    RPN_PREC_BRACKET = 3,
    RPN_PREC_STATEMENT = 4, // IF, WHILE, Catch, #if
    RPN_PREC_ARRAY_INDEX = 5,
    RPN_PREC_COMMA = 6,
    RPN_PREC_ASSIGN = 7,
    RPN_PREC_RETURN = 8,
    RPN_PREC_ELSE = 9,
    RPN_PREC_VALUE = 10,
    RPN_PREC_OR = 13,
    RPN_PREC_AND = 14,
    RPN_PREC_BIT_OR = 16,
    RPN_PREC_BIT_AND = 17,
    RPN_PREC_EQUALITY = 21,
    RPN_PREC_COMPARE = 23,
    RPN_PREC_ADD = 25,
    RPN_PREC_MULTIPLY = 30,
    RPN_PREC_POWER = 40,
    RPN_PREC_NOT = 49,
    RPN_PREC_FUNCTION = 50,
};

// What a node is, as a set of bits (GetTraits).  Each class adds its own bits
// to those of its base; the Is... predicates below read them.
enum RpnNodeTrait : std::uint64_t {
    RPN_TRAIT_COMMENT = 1ull << 0,
    RPN_TRAIT_LOGICAL = 1ull << 1,           // comparisons, IsNull, AND, OR
    RPN_TRAIT_VALUE = 1ull << 2,             // constant, null, text, variable
    RPN_TRAIT_ARRAY_INDEX = 1ull << 3,
    RPN_TRAIT_VARIABLE = 1ull << 4,
    RPN_TRAIT_END = 1ull << 5,
    RPN_TRAIT_BRACE = 1ull << 6,
    RPN_TRAIT_BRACE_OPEN = 1ull << 7,
    RPN_TRAIT_BRACE_CLOSE = 1ull << 8,
    RPN_TRAIT_PARENTHESIS = 1ull << 9,
    RPN_TRAIT_PARENTHESIS_OPEN = 1ull << 10,
    RPN_TRAIT_PARENTHESIS_CLOSE = 1ull << 11,
    RPN_TRAIT_ASSIGNMENT_LIKE = 1ull << 12,  // assignments, SETVALUE, SETTEXT
    RPN_TRAIT_COMMA = 1ull << 13,
    RPN_TRAIT_LIST = 1ull << 14,
    RPN_TRAIT_OPERATION = 1ull << 15,        // all operators and functions
    RPN_TRAIT_BINARY = 1ull << 16,
    RPN_TRAIT_UNARY = 1ull << 17,
    RPN_TRAIT_MULTI_OPERAND = 1ull << 18,
    RPN_TRAIT_SCRIPT_FUNCTION = 1ull << 19,
    RPN_TRAIT_MATRIX_HOST_FUNCTION = 1ull << 20,
    RPN_TRAIT_TEXT = 1ull << 21,
    RPN_TRAIT_IIF = 1ull << 22,
    RPN_TRAIT_IF_LIKE = 1ull << 23,
    RPN_TRAIT_ELSE_LIKE = 1ull << 24,
    RPN_TRAIT_WHILE = 1ull << 25,
    RPN_TRAIT_CATCH = 1ull << 26,
    RPN_TRAIT_ASSIGNMENT = 1ull << 27,       // assignments and ++, --
    RPN_TRAIT_PLAIN_ASSIGNMENT = 1ull << 28, // `=`
    RPN_TRAIT_SELF_ASSIGNMENT = 1ull << 29,  // `+=` and its kin
    RPN_TRAIT_ERROR = 1ull << 30,
    RPN_TRAIT_WARNING = 1ull << 31,
    RPN_TRAIT_GRAPH = 1ull << 32,            // graph-bound nodes of a host
    RPN_TRAIT_FORMULA = 1ull << 33,
    RPN_TRAIT_FUNCTION_CALL = 1ull << 34,
    RPN_TRAIT_EVAL = 1ull << 35,
    RPN_TRAIT_TO_VALUE = 1ull << 36,
};

// How a node's value on REAL operands relates to ApplyReal (GetRealPath).
enum RpnRealPath : int {
    RPN_REAL_PATH_NONE = 0,  // no fast path
    RPN_REAL_PATH_PLAIN,     // REAL(ApplyReal(a, b)); b is 0 for one operand
    RPN_REAL_PATH_ZERO_CUT,  // as PLAIN, but a left 0.0 is the result (`*`, AND)
    RPN_REAL_PATH_TRUE_CUT,  // as PLAIN, but a non-zero left gives 1.0 (OR)
    RPN_REAL_PATH_DIVISOR,   // as PLAIN, but a zero right operand is an error (`/`, `%`)
    RPN_REAL_PATH_ROW,       // as PLAIN, but ApplyReal reads the tree's present row: only for
                             // evaluations a row at a time, and no fast path of the node tree
};

// The operation of m_fastOp.
enum RpnFastOp : std::int8_t {
    RPN_FAST_OP_NONE = 0,
    RPN_FAST_OP_ADD,
    RPN_FAST_OP_SUBTRACT,
    RPN_FAST_OP_MULTIPLY,
    RPN_FAST_OP_LESS,
    RPN_FAST_OP_GREATER,
    RPN_FAST_OP_LESS_EQUAL,
    RPN_FAST_OP_GREATER_EQUAL,
    RPN_FAST_OP_STEP_UP,   // ++
    RPN_FAST_OP_STEP_DOWN, // --
};

class CRpnNode
{
public:
    CRpnNode() = default;
    CRpnNode(const CRpnNode &) = delete;
    CRpnNode &operator=(const CRpnNode &) = delete;
    virtual ~CRpnNode();

    // --- identity -----------------------------------------------------------
    // The fixed class number; saved trees refer to classes by it.
    virtual int GetKind() const = 0;
    virtual int GetPrecedence() const { return RPN_PREC_VALUE; }
    // The name or operator text, as messages show it.
    virtual QString GetName() const = 0;
    virtual std::uint64_t GetTraits() const { return 0; }

    // --- operands -------------------------------------------------------------
    virtual int GetOperandCount() const { return 0; }
    virtual CRpnNode *GetOperand(int) const { return nullptr; }
    // Stores `node` (may be null) as operand i and makes this its parent.  The
    // node that stood there before is not deleted: it belongs to the caller.
    // False when the node has no such place.
    virtual bool SetOperand(int, CRpnNode *) { return false; }
    int IndexOfChild(const CRpnNode *node) const;
    bool HasOperands() const { return GetOperandCount() > 0; }
    // Takes operand i out (its place becomes null) and gives it to the caller.
    CRpnNode *TakeOperand(int i);

    // --- making nodes ----------------------------------------------------------
    // A blank node of the same class.
    virtual CRpnNode *CreateSame() const = 0;
    // A copy bound to `tree` at the given position: the base fields and the
    // class's own fields are copied, the operands are not.
    virtual CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const;

    // --- evaluation --------------------------------------------------------------
    // The operator on evaluated operands.  The base gives `a`.
    virtual void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status);
    virtual double ApplyReal(double a, double b, unsigned char &status);
    // ApplyReal over n rows: out[i] = ApplyReal(a[i], b[i]), where a null
    // pointer stands for the constant beside it (b is 0 for one operand).
    // A row whose status did not stay 1 is marked in `failed`; true when
    // any was.  Classes whose ApplyReal is one call of the maths library
    // give it as one loop without a virtual call per row.
    virtual bool ApplyRealBlock(const double *a, double av, const double *b, double bv, double *out,
                                unsigned char *failed, int n);
    // The operator with a COMPLEX operand.  The base refuses with message 43217.
    virtual void ApplyComplex(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status);
    // The node's value.  The base has none: the empty value.
    virtual void Evaluate(CRpnData &result, unsigned char &status);
    // Evaluate, then GetDouble; through the fast path where it is open.
    virtual double EvaluateReal(unsigned char &status);
    // The fast path (see above).  The base has none.
    virtual bool EvaluateFast(double &) { return false; }
    // Evaluation whose value only counts when the status turns to 10 (a
    // loop's body: its value is dropped unless a `return` carries it out).
    // Blocks and IFs evaluate their parts the same way and build no array.
    virtual void Execute(CRpnData &value, unsigned char &status) { Evaluate(value, status); }
    virtual int GetRealPath() const { return RPN_REAL_PATH_NONE; }

    // --- runs ----------------------------------------------------------------------
    // Forgets state gathered over a series of runs.
    virtual void ResetRun() {}
    // Sets up before a series of runs over the rows a to b.  Returns 1.
    virtual int PrepareRun(CEquationTree *, int, int) { return 1; }
    // Adds each variable assigned in this subtree with its value to
    // `dictionary` unless it is there already; returns the count added.
    virtual int CollectDefaults(CMapStringToRpnData &dictionary);
    // A call that reads its bare-word arguments by name: an argument that is
    // a variable, or `name = variable`, may name a variable that holds no
    // value (`MessageBox("?", BUTTON = YESNO)`), and is no compile error.
    virtual bool TakesBareWords() const { return false; }

    // --- source ---------------------------------------------------------------------
    // Appends the node's source, its subtree included, to `out`; compiled
    // again the text gives an equal subtree.  `indent` goes to the children.
    virtual void WriteText(QString &out, int indent) const;

    // --- saving ----------------------------------------------------------------------
    // Writes or reads (after the buffer's mode) the node's own fields: kind,
    // position, row, column and the two flag words, each as 4 bytes.  Classes
    // with fields of their own add them after these.
    virtual void SerializeNode(CRpnBuffer &buffer);

    // --- predicates ------------------------------------------------------------------
    bool Has(std::uint64_t traits) const { return (GetTraits() & traits) != 0; }
    bool IsComment() const { return Has(RPN_TRAIT_COMMENT); }
    bool IsLogical() const { return Has(RPN_TRAIT_LOGICAL); }
    bool IsValue() const { return Has(RPN_TRAIT_VALUE); }
    bool IsArrayIndex() const { return Has(RPN_TRAIT_ARRAY_INDEX); }
    bool IsVariable() const { return Has(RPN_TRAIT_VARIABLE); }
    bool IsEnd() const { return Has(RPN_TRAIT_END); }
    bool IsBrace() const { return Has(RPN_TRAIT_BRACE); }
    bool IsBraceOpen() const { return Has(RPN_TRAIT_BRACE_OPEN); }
    bool IsBraceClose() const { return Has(RPN_TRAIT_BRACE_CLOSE); }
    bool IsParenthesis() const { return Has(RPN_TRAIT_PARENTHESIS); }
    bool IsParenthesisOpen() const { return Has(RPN_TRAIT_PARENTHESIS_OPEN); }
    bool IsParenthesisClose() const { return Has(RPN_TRAIT_PARENTHESIS_CLOSE); }
    bool IsAssignmentLike() const { return Has(RPN_TRAIT_ASSIGNMENT_LIKE); }
    bool IsComma() const { return Has(RPN_TRAIT_COMMA); }
    bool IsList() const { return Has(RPN_TRAIT_LIST); }
    bool IsOperation() const { return Has(RPN_TRAIT_OPERATION); }
    bool IsBinary() const { return Has(RPN_TRAIT_BINARY); }
    bool IsUnary() const { return Has(RPN_TRAIT_UNARY); }
    bool IsMultiOperand() const { return Has(RPN_TRAIT_MULTI_OPERAND); }
    bool IsScriptFunction() const { return Has(RPN_TRAIT_SCRIPT_FUNCTION); }
    bool IsMatrixHostFunction() const { return Has(RPN_TRAIT_MATRIX_HOST_FUNCTION); }
    bool IsText() const { return Has(RPN_TRAIT_TEXT); }
    bool IsIIF() const { return Has(RPN_TRAIT_IIF); }
    bool IsIFLike() const { return Has(RPN_TRAIT_IF_LIKE); }
    bool IsELSELike() const { return Has(RPN_TRAIT_ELSE_LIKE); }
    bool IsWhile() const { return Has(RPN_TRAIT_WHILE); }
    bool IsCatch() const { return Has(RPN_TRAIT_CATCH); }
    bool IsAssignment() const { return Has(RPN_TRAIT_ASSIGNMENT); }
    bool IsPlainAssignment() const { return Has(RPN_TRAIT_PLAIN_ASSIGNMENT); }
    bool IsSelfAssignment() const { return Has(RPN_TRAIT_SELF_ASSIGNMENT); }
    bool IsError() const { return Has(RPN_TRAIT_ERROR); }
    bool IsWarning() const { return Has(RPN_TRAIT_WARNING); }
    bool IsFormula() const { return Has(RPN_TRAIT_FORMULA); }
    bool IsFunctionCall() const { return Has(RPN_TRAIT_FUNCTION_CALL); }
    bool IsEval() const { return Has(RPN_TRAIT_EVAL); }
    bool IsToValue() const { return Has(RPN_TRAIT_TO_VALUE); }
    bool IsMacro() const { return (m_flags & RPN_NODE_MACRO) != 0; }

    // --- casts: the node as the class named, or null -----------------------------
    CNodeConstant *AsConstant();
    CNodeVariable *AsVariable();
    CRpnNodeList *AsList();
    CNodeMultiOperand *AsMultiOperand();
    CNodeSingleOperand *AsSingleOperand();
    CNodeDoubleOperand *AsDoubleOperand();
    CNode_IF *AsIF();
    CNode_Function *AsFunctionCall();

    // --- helpers for nodes ---------------------------------------------------------
    // The stop test of composites: the tree was asked to stop.
    bool IsStopping() const { return m_tree && m_tree->IsStopping(); }
    // Evaluates an operand of a composite into `value`.  False when the
    // composite must return at once with `result` as set here: null after a
    // failure, the operand's value while a `return` unwinds or a stop is asked.
    [[gnu::always_inline]] bool EvaluateOrPass(CRpnNode *operand, CRpnData &value, CRpnData &result,
                                               unsigned char &status)
    {
        if (!HasStackRoom(status)) {
            result.SetNull();
            return false;
        }
        operand->Evaluate(value, status);
        if (status == 0) {
            NoteFailure(operand);
            result.SetNull();
            return false;
        }
        if (status == 10 || IsStopping()) {
            result = std::move(value);
            return false;
        }
        return true;
    }
    // Keeps `failed` as the place where the run stopped when it gave no message.
    void NoteFailure(CRpnNode *failed);
    // Whether the thread's stack has room to go one level deeper.  When not,
    // the nesting is reported at this node (status 0) and false is returned.
    bool HasStackRoom(unsigned char &status)
    {
        if (!StackRoom::IsStackLow())
            return true;
        ReportTooDeep(status);
        return false;
    }
    void ReportTooDeep(unsigned char &status);
    // Reports message `id` at this node (row, column, name as the token).
    void ReportError(unsigned char &status, int id, std::initializer_list<CRpnFormatArg> args);
    void ReportText(unsigned char &status, const QString &message);
    // The source line of this node with a mark under its position.
    QString SourceExcerpt() const;

    std::int32_t m_position = 0;
    std::int32_t m_row = 0;
    std::int32_t m_col = 0;
    CEquationTree *m_tree = nullptr; // not owned
    CRpnNode *m_parent = nullptr;    // not owned
    std::uint32_t m_flags = 0;
    std::uint32_t m_flags2 = 0;
    // Set by PrepareFastPath: this subtree may try EvaluateFast for its
    // double (m_fastPath), and for its value too (m_fastValue: no list inside,
    // whose value would be an ARRAY); and the node's GetRealPath.
    bool m_fastPath = false;
    bool m_fastValue = false;
    std::int8_t m_realPath = RPN_REAL_PATH_NONE;
    // Set by PrepareFastPath on a plain `=` whose left side is a variable and
    // whose right side is an operation that may give a double.
    bool m_plainStore = false;
    // Set by PrepareFastPath on an operation (not a call of a script
    // function) that may give a double: where EvaluateFast gives one, its
    // value is exactly that REAL, without a display exponent.
    bool m_plainNumber = false;
    // The node is a CNodeVariable (AsVariable without a virtual call).
    bool m_variableNode = false;
    // Set by PrepareFastPath on the operators whose ApplyReal is plain
    // arithmetic or a comparison, and on ++ and --, so that the hot paths
    // need no virtual call for it: one of RpnFastOp.
    std::int8_t m_fastOp = 0;
    // Set by PrepareFastPath on a + - * whose left operand is one of these
    // too: the head of a chain that is evaluated with a loop.
    bool m_chainHead = false;
};

// --- walks -----------------------------------------------------------------------------

// A pre-order walk that stops at the first visitor returning non-zero, whose
// value it returns.  IF-like nodes show all three operands (WHILE two), other
// nodes GetOperandCount; missing operands are passed over.  The walk keeps its
// own stack, so deep trees do not exhaust the machine's.
using CRpnNodeVisitor = std::function<int(CRpnNode *node)>;
int WalkTree(CRpnNode *root, const CRpnNodeVisitor &visitor);

// The operand places a walk or a saved tree gives a node: 2 for WHILE, 3 for
// the other IF-like nodes, GetOperandCount for the rest.
int GetOperandPlaces(const CRpnNode *node);

// Calls ResetRun on every node, children before their parents.
void ResetRunTree(CRpnNode *root);

// Decides bottom-up which subtrees may take the fast path.
void PrepareFastPath(CRpnNode *root);

// A copy of a whole subtree bound to `tree`.
CRpnNode *CloneSubtree(const CRpnNode *node, CEquationTree *tree);

// Deletes a subtree without recursion (deep trees are deleted level by level).
void DeleteSubtree(CRpnNode *node);

// A new node of class `kind` from the prototypes, bound to `tree`; null when
// the class has no prototype.
CRpnNode *CreateNodeOfKind(int kind, CEquationTree *tree, int position = 0, int row = 0, int col = 0);
