#pragma once
// The statements that shape a script: IF with its else branch, WHILE, the
// `else` marker the parser folds away, and `return`.  The parser treats every
// class from 109 to 112 alike: it takes a condition first and a body next.

#include "formula/rpnoperators.h"

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

    CRpnNode *m_condition = nullptr; // owned
    CRpnNode *m_then = nullptr;      // owned
    CRpnNode *m_else = nullptr;      // owned, may be null
    // The parser's fold state: 0 condition taken, 1 then-part taken, 2 else
    // seen, 4 else-part taken.
    std::int32_t m_state = 0;
    std::int32_t m_state2 = 0;
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
