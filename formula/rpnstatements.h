#pragma once
// The statements that shape a script: IF with its else branch, WHILE, the
// `else` marker the parser folds away, `return`, Catch, the function form
// `iif`, and SETVALUE and SETTEXT for host objects.  The parser treats every
// class from 109 to 112 alike: it takes a condition first and a body next
// (Catch keeps what stands in its parentheses as its guarded expression).

#include "formula/rpnloopprogram.h"
#include "formula/rpnoperators.h"

#include <memory>

// IF (condition) then-part [else else-part].  Its value is the value of the
// branch taken; a false IF without else has the empty value.
class CNode_IF : public CRpnNode
{
public:
    ~CNode_IF() override;

    int GetKind() const override { return RPN_NODE_IF; }
    int GetPrecedence() const override { return RPN_PREC_STATEMENT; }
    QString GetName() const override { return QStringLiteral("if"); }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_IF_LIKE; }
    CRpnNode *CreateSame() const override { return new CNode_IF; }
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;

    int GetOperandCount() const override { return 3; }
    CRpnNode *GetOperand(int i) const override;
    bool SetOperand(int i, CRpnNode *node) override;

    void Evaluate(CRpnData &result, unsigned char &status) override;
    // The branch for its effect (plain IF only; the others evaluate).
    void Execute(CRpnData &value, unsigned char &status) override;

    CRpnNode *m_condition = nullptr; // owned
    CRpnNode *m_then = nullptr;      // owned
    CRpnNode *m_else = nullptr;      // owned, may be null
    // The parser's fold state: 0 condition taken, 1 then-part taken, 2 else
    // seen, 4 else-part taken.
    std::int32_t m_state = 0;
    std::int32_t m_state2 = 0;

protected:
    // The truth of the condition; false when the IF must return at once with
    // `result` as EvaluateOrPass left it.
    bool conditionTruth(bool &truth, CRpnData &result, unsigned char &status);
};

// WHILE (condition) body.  At most 1,000,000 passes; a loop that ends by its
// condition has the value 0.0, an empty one the null value, and only a
// `return` carries a value out.
class CNode_WHILE : public CNode_IF
{
public:
    static constexpr int MaxPasses = 1000000;

    int GetKind() const override { return RPN_NODE_WHILE; }
    QString GetName() const override { return QStringLiteral("while"); }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_IF_LIKE | RPN_TRAIT_WHILE; }
    CRpnNode *CreateSame() const override { return new CNode_WHILE; }
    int GetOperandCount() const override { return 2; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
    void Execute(CRpnData &value, unsigned char &status) override { Evaluate(value, status); }

    // Whether the loop's last run went on as a program of steps (for tests).
    bool RanAsProgram() const { return m_ranAsProgram; }

private:
    // Made at the first run: the loop as steps on numbers, when it qualifies.
    std::unique_ptr<CRpnLoopProgram> m_program;
    bool m_programBuilt = false;
    bool m_ranAsProgram = false;
};

// The `else` of an IF while parsing; the fold takes it out of the tree.
class CNode_ELSE : public CRpnNode
{
public:
    int GetKind() const override { return RPN_NODE_ELSE; }
    int GetPrecedence() const override { return RPN_PREC_ELSE; }
    QString GetName() const override { return QStringLiteral("else"); }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_ELSE_LIKE; }
    CRpnNode *CreateSame() const override { return new CNode_ELSE; }
};

// return expression: the status turns to 10, which unwinds to the function
// call or to the run.
class CNodeReturn : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_RETURN; }
    int GetPrecedence() const override { return RPN_PREC_RETURN; }
    QString GetName() const override { return QStringLiteral("return"); }
    CRpnNode *CreateSame() const override { return new CNodeReturn; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// Catch (expression) handler.  The guarded expression sits in m_then, the
// optional handler in m_else; m_condition stays empty.  An error inside the
// expression, reported or raised as an exception, is caught: its text goes
// to "LastError" in "MainVariables", the tree's error fields are cleared and
// the handler runs.  Without an error the expression's value is the result.
class CNode_Catch : public CNode_IF
{
public:
    int GetKind() const override { return RPN_NODE_CATCH; }
    QString GetName() const override { return QStringLiteral("Catch"); }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_IF_LIKE | RPN_TRAIT_CATCH; }
    CRpnNode *CreateSame() const override { return new CNode_Catch; }
    void Evaluate(CRpnData &result, unsigned char &status) override;

    // Errors caught keep at most this many characters.
    static constexpr int MaxErrorText = 999;
};

// The dictionary that "MainVariables" names for `tree`: the host's, when
// its getter knows the name and gives a DICTIONARY, else the tree's own
// main dictionary.  Catch and GetLastError keep "LastError" there.
CMapStringToRpnData *GetMainVariablesOf(CEquationTree *tree, CRpnNode *node);

// The base of the statements written as a function of three operands.
class CNodeTripleOperand : public CRpnNode
{
public:
    ~CNodeTripleOperand() override;

    int GetPrecedence() const override { return RPN_PREC_FUNCTION; }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_OPERATION; }
    int GetOperandCount() const override { return 3; }
    CRpnNode *GetOperand(int i) const override { return i >= 0 && i < 3 ? m_operands[i] : nullptr; }
    bool SetOperand(int i, CRpnNode *node) override;

    CRpnNode *m_operands[3] = {};
};

// iif(condition, a, b).  A scalar condition evaluates one branch only.  An
// array condition (ARRAY, ARRAY_R or CURVE) evaluates both and picks element
// by element: a scalar branch serves every element, an array branch gives
// its element of the same index (the empty value past its end); the rows of
// a curve that are not valid give the empty value.
class CNode_IIF : public CNodeTripleOperand
{
public:
    int GetKind() const override { return RPN_NODE_IIF; }
    QString GetName() const override { return QStringLiteral("iif"); }
    std::uint64_t GetTraits() const override { return CNodeTripleOperand::GetTraits() | RPN_TRAIT_IIF; }
    CRpnNode *CreateSame() const override { return new CNode_IIF; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
    // A condition and a chosen branch of plain numbers need no values.
    bool EvaluateFast(double &out) override;

private:
    void select(CRpnData &result, const CRpnData &condition, unsigned char &status);
};

// SETVALUE(name, a, b): hands `a` to the tree's setter for the host object
// called `name` (the variable's name when the first operand is a plain
// variable, else the text of its value); `b` goes along as the setter's
// extra number.  The value is what the setter returns; without a setter
// nothing is set and the value is empty.  The operands are evaluated from
// left to right.
class CNode_SetValue : public CNodeTripleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SET_VALUE; }
    QString GetName() const override { return QStringLiteral("SETVALUE"); }
    std::uint64_t GetTraits() const override
    {
        return CNodeTripleOperand::GetTraits() | RPN_TRAIT_ASSIGNMENT_LIKE;
    }
    CRpnNode *CreateSame() const override { return new CNode_SetValue; }
    void Evaluate(CRpnData &result, unsigned char &status) override;

protected:
    // What goes to the setter for the second operand's value.
    virtual CRpnData Convert(const CRpnData &value) const { return value; }
};

// SETTEXT(name, a, b): as SETVALUE, with `a` handed over as its text.
class CNode_SetText : public CNode_SetValue
{
public:
    int GetKind() const override { return RPN_NODE_SET_TEXT; }
    QString GetName() const override { return QStringLiteral("SETTEXT"); }
    CRpnNode *CreateSame() const override { return new CNode_SetText; }

protected:
    CRpnData Convert(const CRpnData &value) const override;
};
