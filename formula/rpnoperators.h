#pragma once
// The operator family: nodes of one and of two operands, every operator of
// the language, assignments with their index chains, and array indexing.
//
// A node of two operands evaluates the left operand, takes the short cuts
// (`0 * f()` and `0 && f()` keep the left zero, `1 || f()` gives 1.0; only
// for a left REAL), evaluates the right operand, defers to a formula when
// either value is one, and calls Apply.  The generic Apply spreads over
// arrays and calls ApplyReal on numbers; the arithmetic operators use the
// value arithmetic instead.

#include "formula/rpnnodes.h"

#include <cmath>

// --- bases ------------------------------------------------------------------------

class CNodeSingleOperand : public CRpnNode
{
public:
    ~CNodeSingleOperand() override;

    int GetPrecedence() const override { return RPN_PREC_FUNCTION; }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_OPERATION | RPN_TRAIT_UNARY; }
    int GetOperandCount() const override { return 1; }
    CRpnNode *GetOperand(int i) const override { return i == 0 ? m_operand : nullptr; }
    bool SetOperand(int i, CRpnNode *node) override;

    void Evaluate(CRpnData &result, unsigned char &status) override;
    // Spreads over arrays (ARRAY_R stays ARRAY_R, an ARRAY goes cell by cell,
    // nested to any depth), gives COMPLEX to ApplyComplex, a CURVE gives the
    // empty value, anything else REAL(ApplyReal).  A failing cell leaves the
    // status at 0 and the walk goes on.
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    bool EvaluateFast(double &out) override;

    CRpnNode *m_operand = nullptr; // owned
};

class CNodeDoubleOperand : public CRpnNode
{
public:
    ~CNodeDoubleOperand() override;

    int GetPrecedence() const override { return RPN_PREC_FUNCTION; }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_OPERATION | RPN_TRAIT_BINARY; }
    int GetOperandCount() const override { return 2; }
    CRpnNode *GetOperand(int i) const override { return i == 0 ? m_left : i == 1 ? m_right : nullptr; }
    bool SetOperand(int i, CRpnNode *node) override;

    void Evaluate(CRpnData &result, unsigned char &status) override;
    // Arrays on both sides: the smaller size, two ARRAY_R through ApplyReal,
    // any ARRAY cell by cell through Apply.  One side an array: the same with
    // the scalar.  COMPLEX: ApplyComplex.  Otherwise REAL(ApplyReal).
    // Nested arrays are walked with a stack of their own, to any depth: a
    // pair of cells that holds an array is gone into here, unless
    // DecidesPair settles it, and only pairs without arrays reach Apply.  An
    // operator that sends arrays here must therefore treat a nested pair as
    // this does.
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    // A pair with an array that the operator settles without going into it
    // (true, with the value in `result`).  None in the base.
    virtual bool DecidesPair(CRpnData &result, const CRpnData &a, const CRpnData &b);
    bool EvaluateFast(double &out) override;

    CRpnNode *m_left = nullptr;  // owned
    CRpnNode *m_right = nullptr; // owned

private:
    // The node's value from its left operand's value `a` (which may be
    // consumed): the short cuts, the right operand, the operation.
    void evaluateWithLeft(CRpnData &a, CRpnData &result, unsigned char &status);

protected:
    // The operation on the values of both operands (`a` may be consumed).
    void combine(CRpnData &a, const CRpnData &b, CRpnData &result, unsigned char &status);

private:
    // The same on doubles; false when the ordinary evaluation must decide.
    [[gnu::always_inline]] bool fastWithLeft(double a, double &out);
    // EvaluateFast of a chain of + - * links (see isChainLink).
    bool fastChain(double &out);
    void applyToArrays(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status);
    bool applyInPlace(CRpnData &a, const CRpnData &b);
};

// --- arithmetic -----------------------------------------------------------------------

class CNodePlus : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_PLUS; }
    int GetPrecedence() const override { return RPN_PREC_ADD; }
    QString GetName() const override { return QStringLiteral("+"); }
    CRpnNode *CreateSame() const override { return new CNodePlus; }
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    double ApplyReal(double a, double b, unsigned char &) override { return a + b; }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeMinus : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_MINUS; }
    int GetPrecedence() const override { return RPN_PREC_ADD; }
    QString GetName() const override { return QStringLiteral("-"); }
    CRpnNode *CreateSame() const override { return new CNodeMinus; }
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    double ApplyReal(double a, double b, unsigned char &) override { return a - b; }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeMultiply : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_MULTIPLY; }
    int GetPrecedence() const override { return RPN_PREC_MULTIPLY; }
    QString GetName() const override { return QStringLiteral("*"); }
    CRpnNode *CreateSame() const override { return new CNodeMultiply; }
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    double ApplyReal(double a, double b, unsigned char &) override { return a * b; }
    int GetRealPath() const override { return RPN_REAL_PATH_ZERO_CUT; }
};

class CNodeDivide : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_DIVIDE; }
    int GetPrecedence() const override { return RPN_PREC_MULTIPLY; }
    QString GetName() const override { return QStringLiteral("/"); }
    CRpnNode *CreateSame() const override { return new CNodeDivide; }
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    double ApplyReal(double a, double b, unsigned char &status) override;
    int GetRealPath() const override { return RPN_REAL_PATH_DIVISOR; }
};

class CNodeMod : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_MOD; }
    int GetPrecedence() const override { return RPN_PREC_MULTIPLY; }
    QString GetName() const override { return QStringLiteral("%"); }
    CRpnNode *CreateSame() const override { return new CNodeMod; }
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    double ApplyReal(double a, double b, unsigned char &status) override;
    int GetRealPath() const override { return RPN_REAL_PATH_DIVISOR; }
};

// a to the b: pow, with the square taken as a * a, which is the correctly
// rounded square (the library's pow may be one unit off in the last place).
inline double RpnPower(double a, double b)
{
    return b == 2.0 ? a * a : std::pow(a, b);
}

// `^`: pow on reals; on a complex base or exponent the polar form.
class CNodePower : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_POWER; }
    int GetPrecedence() const override { return RPN_PREC_POWER; }
    QString GetName() const override { return QStringLiteral("^"); }
    CRpnNode *CreateSame() const override { return new CNodePower; }
    double ApplyReal(double a, double b, unsigned char &status) override;
    void ApplyComplex(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// `**` and the function `pow`: as `^`.  Written as the operator it binds like
// `^` and is named "**" (flag RPN_NODE_OPERATOR_FORM).
class CNodePower2 : public CNodePower
{
public:
    int GetKind() const override { return RPN_NODE_POWER2; }
    int GetPrecedence() const override
    {
        return (m_flags & RPN_NODE_OPERATOR_FORM) ? RPN_PREC_POWER : RPN_PREC_FUNCTION;
    }
    QString GetName() const override
    {
        return (m_flags & RPN_NODE_OPERATOR_FORM) ? QStringLiteral("**") : QStringLiteral("pow");
    }
    CRpnNode *CreateSame() const override { return new CNodePower2; }
};

// `mod(a, b)`: fmod without a test for zero.
class CNodeMod2 : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_MOD2; }
    QString GetName() const override { return QStringLiteral("mod"); }
    CRpnNode *CreateSame() const override { return new CNodeMod2; }
    double ApplyReal(double a, double b, unsigned char &status) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// `pwr(a, b)`: |a| to the b; a complex base loses its imaginary part.
class CNodeAbsPower : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_ABS_POWER; }
    QString GetName() const override { return QStringLiteral("pwr"); }
    CRpnNode *CreateSame() const override { return new CNodeAbsPower; }
    double ApplyReal(double a, double b, unsigned char &status) override;
    void ApplyComplex(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeSinglePlus : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SINGLE_PLUS; }
    int GetPrecedence() const override { return RPN_PREC_ADD; }
    QString GetName() const override { return QStringLiteral("+"); }
    CRpnNode *CreateSame() const override { return new CNodeSinglePlus; }
    double ApplyReal(double a, double, unsigned char &) override { return a; }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeSingleMinus : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SINGLE_MINUS; }
    int GetPrecedence() const override { return RPN_PREC_ADD; }
    QString GetName() const override { return QStringLiteral("-"); }
    CRpnNode *CreateSame() const override { return new CNodeSingleMinus; }
    double ApplyReal(double a, double, unsigned char &) override { return -a; }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// --- comparisons and logic ---------------------------------------------------------------

class CNode_BaseComparison : public CNodeDoubleOperand
{
public:
    int GetPrecedence() const override { return RPN_PREC_COMPARE; }
    std::uint64_t GetTraits() const override { return CNodeDoubleOperand::GetTraits() | RPN_TRAIT_LOGICAL; }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// `==`: equality of values, an INT 0 or 1; arrays element by element.
class CNodeEqualTo : public CNode_BaseComparison
{
public:
    int GetKind() const override { return RPN_NODE_EQUAL; }
    int GetPrecedence() const override { return RPN_PREC_EQUALITY; }
    QString GetName() const override { return QStringLiteral("=="); }
    CRpnNode *CreateSame() const override { return new CNodeEqualTo; }
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    // Equality settles an array against nothing (null, 0, an empty text).
    bool DecidesPair(CRpnData &result, const CRpnData &a, const CRpnData &b) override;
    double ApplyReal(double a, double b, unsigned char &) override { return a == b ? 1.0 : 0.0; }
    // The scalar result is an INT, not a REAL.
    int GetRealPath() const override { return RPN_REAL_PATH_NONE; }
};

// `!=` and `<>`.
class CNodeNotEqualTo : public CNodeEqualTo
{
public:
    int GetKind() const override { return RPN_NODE_NOT_EQUAL; }
    QString GetName() const override { return QStringLiteral("!="); }
    CRpnNode *CreateSame() const override { return new CNodeNotEqualTo; }
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    bool DecidesPair(CRpnData &result, const CRpnData &a, const CRpnData &b) override;
    double ApplyReal(double a, double b, unsigned char &) override { return a != b ? 1.0 : 0.0; }
};

class CNodeGreaterThan : public CNode_BaseComparison
{
public:
    int GetKind() const override { return RPN_NODE_GREATER; }
    QString GetName() const override { return QStringLiteral(">"); }
    CRpnNode *CreateSame() const override { return new CNodeGreaterThan; }
    double ApplyReal(double a, double b, unsigned char &) override { return a > b ? 1.0 : 0.0; }
};

class CNodeLessThan : public CNode_BaseComparison
{
public:
    int GetKind() const override { return RPN_NODE_LESS; }
    QString GetName() const override { return QStringLiteral("<"); }
    CRpnNode *CreateSame() const override { return new CNodeLessThan; }
    double ApplyReal(double a, double b, unsigned char &) override { return a < b ? 1.0 : 0.0; }
};

class CNodeGreaterEqualThan : public CNode_BaseComparison
{
public:
    int GetKind() const override { return RPN_NODE_GREATER_EQUAL; }
    QString GetName() const override { return QStringLiteral(">="); }
    CRpnNode *CreateSame() const override { return new CNodeGreaterEqualThan; }
    double ApplyReal(double a, double b, unsigned char &) override { return a >= b ? 1.0 : 0.0; }
};

class CNodeLessEqualThan : public CNode_BaseComparison
{
public:
    int GetKind() const override { return RPN_NODE_LESS_EQUAL; }
    QString GetName() const override { return QStringLiteral("<="); }
    CRpnNode *CreateSame() const override { return new CNodeLessEqualThan; }
    double ApplyReal(double a, double b, unsigned char &) override { return a <= b ? 1.0 : 0.0; }
};

// `&&` and AND.
class CNodeAND : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_AND; }
    int GetPrecedence() const override { return RPN_PREC_AND; }
    QString GetName() const override { return QStringLiteral("&&"); }
    std::uint64_t GetTraits() const override { return CNodeDoubleOperand::GetTraits() | RPN_TRAIT_LOGICAL; }
    CRpnNode *CreateSame() const override { return new CNodeAND; }
    double ApplyReal(double a, double b, unsigned char &) override { return a != 0.0 && b != 0.0 ? 1.0 : 0.0; }
    int GetRealPath() const override { return RPN_REAL_PATH_ZERO_CUT; }
};

// `||` and OR.
class CNodeOR : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_OR; }
    int GetPrecedence() const override { return RPN_PREC_OR; }
    QString GetName() const override { return QStringLiteral("||"); }
    std::uint64_t GetTraits() const override { return CNodeDoubleOperand::GetTraits() | RPN_TRAIT_LOGICAL; }
    CRpnNode *CreateSame() const override { return new CNodeOR; }
    double ApplyReal(double a, double b, unsigned char &) override { return a != 0.0 || b != 0.0 ? 1.0 : 0.0; }
    int GetRealPath() const override { return RPN_REAL_PATH_TRUE_CUT; }
};

// `!` and NOT.
class CNodeNot : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_NOT; }
    int GetPrecedence() const override { return RPN_PREC_NOT; }
    QString GetName() const override { return QStringLiteral("!"); }
    CRpnNode *CreateSame() const override { return new CNodeNot; }
    double ApplyReal(double a, double, unsigned char &) override { return a == 0.0 ? 1.0 : 0.0; }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// --- bits -----------------------------------------------------------------------------------
// On 32-bit integers read as GetInt reads a REAL (one hundredth toward the sign).

class CNodeBitwiseAnd : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_BIT_AND; }
    int GetPrecedence() const override { return RPN_PREC_BIT_AND; }
    QString GetName() const override { return QStringLiteral("&"); }
    CRpnNode *CreateSame() const override { return new CNodeBitwiseAnd; }
    double ApplyReal(double a, double b, unsigned char &) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeBitwiseOR : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_BIT_OR; }
    int GetPrecedence() const override { return RPN_PREC_BIT_OR; }
    QString GetName() const override { return QStringLiteral("|"); }
    CRpnNode *CreateSame() const override { return new CNodeBitwiseOR; }
    double ApplyReal(double a, double b, unsigned char &) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeBitwiseNot : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_BIT_NOT; }
    int GetPrecedence() const override { return RPN_PREC_NOT; }
    QString GetName() const override { return QStringLiteral("~"); }
    CRpnNode *CreateSame() const override { return new CNodeBitwiseNot; }
    double ApplyReal(double a, double, unsigned char &) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeBitwiseShiftLeft : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SHIFT_LEFT; }
    int GetPrecedence() const override { return RPN_PREC_ADD; }
    QString GetName() const override { return QStringLiteral("<<"); }
    CRpnNode *CreateSame() const override { return new CNodeBitwiseShiftLeft; }
    double ApplyReal(double a, double b, unsigned char &) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeBitwiseShiftRight : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SHIFT_RIGHT; }
    int GetPrecedence() const override { return RPN_PREC_ADD; }
    QString GetName() const override { return QStringLiteral(">>"); }
    CRpnNode *CreateSame() const override { return new CNodeBitwiseShiftRight; }
    double ApplyReal(double a, double b, unsigned char &) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// --- assignment -------------------------------------------------------------------------------

// `left = right`.  The left side is a variable or an index chain into one
// (`v[i][j] = x`); an ARRAY, ARRAY_R or CURVE that is shared is deep-copied
// before it is stored, which gives arrays value semantics.
class CNodeAssignment : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_ASSIGN; }
    int GetPrecedence() const override { return RPN_PREC_ASSIGN; }
    QString GetName() const override { return QStringLiteral("="); }
    std::uint64_t GetTraits() const override
    {
        return CNodeDoubleOperand::GetTraits() | RPN_TRAIT_ASSIGNMENT_LIKE | RPN_TRAIT_ASSIGNMENT
            | (IsSelf() ? RPN_TRAIT_SELF_ASSIGNMENT : RPN_TRAIT_PLAIN_ASSIGNMENT);
    }
    CRpnNode *CreateSame() const override { return new CNodeAssignment; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
    void Execute(CRpnData &value, unsigned char &status) override { CNodeAssignment::Evaluate(value, status); }
    int CollectDefaults(CMapStringToRpnData &dictionary) override;

    // Stores `value` through the left side `target`: a variable, or an index
    // chain ending in one.  `node` reports the errors.
    static void Store(CRpnNode *node, CRpnNode *target, const CRpnData &value, CRpnData &result,
                      unsigned char &status);

protected:
    virtual bool IsSelf() const { return false; }
    // The compound forms: the operator on the current value and the new one.
    virtual void Combine(CRpnData &result, const CRpnData &current, const CRpnData &value,
                         unsigned char &status);
};

class CNodeAddAssignment : public CNodeAssignment
{
public:
    int GetKind() const override { return RPN_NODE_ADD_ASSIGN; }
    QString GetName() const override { return QStringLiteral("+="); }
    CRpnNode *CreateSame() const override { return new CNodeAddAssignment; }

protected:
    bool IsSelf() const override { return true; }
    void Combine(CRpnData &result, const CRpnData &current, const CRpnData &value, unsigned char &status) override;
};

class CNodeSubAssignment : public CNodeAssignment
{
public:
    int GetKind() const override { return RPN_NODE_SUB_ASSIGN; }
    QString GetName() const override { return QStringLiteral("-="); }
    CRpnNode *CreateSame() const override { return new CNodeSubAssignment; }

protected:
    bool IsSelf() const override { return true; }
    void Combine(CRpnData &result, const CRpnData &current, const CRpnData &value, unsigned char &status) override;
};

class CNodeMulAssignment : public CNodeAssignment
{
public:
    int GetKind() const override { return RPN_NODE_MUL_ASSIGN; }
    QString GetName() const override { return QStringLiteral("*="); }
    CRpnNode *CreateSame() const override { return new CNodeMulAssignment; }

protected:
    bool IsSelf() const override { return true; }
    void Combine(CRpnData &result, const CRpnData &current, const CRpnData &value, unsigned char &status) override;
};

class CNodeDivAssignment : public CNodeAssignment
{
public:
    int GetKind() const override { return RPN_NODE_DIV_ASSIGN; }
    QString GetName() const override { return QStringLiteral("/="); }
    CRpnNode *CreateSame() const override { return new CNodeDivAssignment; }

protected:
    bool IsSelf() const override { return true; }
    void Combine(CRpnData &result, const CRpnData &current, const CRpnData &value, unsigned char &status) override;
};

// `++` and `--` on a variable; m_fix is -1 before the variable, 1 after it.
class CNodeIncrement : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_INCREMENT; }
    QString GetName() const override { return QStringLiteral("++"); }
    std::uint64_t GetTraits() const override { return CNodeSingleOperand::GetTraits() | RPN_TRAIT_ASSIGNMENT; }
    CRpnNode *CreateSame() const override { return new CNodeIncrement; }
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;
    void Evaluate(CRpnData &result, unsigned char &status) override;
    void Execute(CRpnData &value, unsigned char &status) override { CNodeIncrement::Evaluate(value, status); }
    void SerializeNode(CRpnBuffer &buffer) override;

    std::int32_t m_fix = -1;

protected:
    virtual int Step() const { return 1; }
};

class CNodeDecrement : public CNodeIncrement
{
public:
    int GetKind() const override { return RPN_NODE_DECREMENT; }
    QString GetName() const override { return QStringLiteral("--"); }
    CRpnNode *CreateSame() const override { return new CNodeDecrement; }

protected:
    int Step() const override { return -1; }
};

// `value[index]`: the left operand is the indexed value, the right a list of
// indices; an index that is itself an array goes down one level per element.
class CNodeArrayIndex : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_ARRAY_INDEX; }
    int GetPrecedence() const override { return RPN_PREC_ARRAY_INDEX; }
    QString GetName() const override { return QStringLiteral("[ ]"); }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_ARRAY_INDEX; }
    CRpnNode *CreateSame() const override { return new CNodeArrayIndex; }
    // `a[i]` with one index evaluates the index alone: the list of one
    // index is made only where the index is not a number.
    void Evaluate(CRpnData &result, unsigned char &status) override;
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
};

// The comma while parsing; it never reaches a finished tree.
class CNode_Comma : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_COMMA; }
    int GetPrecedence() const override { return RPN_PREC_COMMA; }
    QString GetName() const override { return QStringLiteral(","); }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_COMMA; }
    CRpnNode *CreateSame() const override { return new CNode_Comma; }
};

// --- inspection -----------------------------------------------------------------------------

// IsEmpty(x), IsNull(x): INT 1 for the null value or the shared empty XML
// element, else 0.  A failed operand gives 1 with the status left failed.
class CNodeIsNull : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_IS_NULL; }
    QString GetName() const override { return QStringLiteral("IsEmpty"); }
    std::uint64_t GetTraits() const override { return CNodeSingleOperand::GetTraits() | RPN_TRAIT_LOGICAL; }
    CRpnNode *CreateSame() const override { return new CNodeIsNull; }
    // Asks about the value itself: a formula is not deferred.
    void Evaluate(CRpnData &result, unsigned char &status) override;
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
};

// TypeName(x): the name of the value's kind as the language writes it
// ("REAL", "ARRAY_R", ...; "" for the empty value); null when x fails.
class CNodeTypeName : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_TYPE_NAME; }
    QString GetName() const override { return QStringLiteral("TypeName"); }
    CRpnNode *CreateSame() const override { return new CNodeTypeName; }
    // Asks about the value itself: a formula is not deferred.
    void Evaluate(CRpnData &result, unsigned char &status) override;
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
};

// The division-by-zero report of `/`, `%` and `/=` (message 41655).
void ReportDivisionByZero(CRpnNode *node, unsigned char &status);
