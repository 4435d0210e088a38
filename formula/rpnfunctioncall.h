#pragma once
// CNode_Function: the call of a function defined in a script with FUNCTION.
//
// The arguments are the node's children.  A call evaluates them from left to
// right, fills a fresh dictionary with the parameters (defaults for missing
// arguments, extra arguments dropped), adds the owner tree's main dictionary
// under the name "MainVariables", and runs the body with that dictionary as
// its only scope: plain names inside a function are local to the call.
// Parameters passed by reference are copied back into the caller's variables
// when the call ends, also after an error.

#include "formula/rpnnodes.h"

class CRpnUserFunction;

class CNode_Function : public CNodeMultiOperand
{
public:
    // How deep calls may nest before the call fails (a script that recurses
    // without end must not exhaust the machine's stack).
    static constexpr int MaxCallDepth = 200;

    int GetKind() const override { return RPN_NODE_FUNCTION; }
    QString GetName() const override { return m_functionName; }
    std::uint64_t GetTraits() const override { return CNodeMultiOperand::GetTraits() | RPN_TRAIT_FUNCTION_CALL; }
    CRpnNode *CreateSame() const override { return new CNode_Function; }
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;
    void Evaluate(CRpnData &result, unsigned char &status) override;
    // A call whose arguments are plain numbers, of a function whose body is
    // made of `return`, `if` and `v = expression` statements on plain
    // numbers, ending in a `return`: the double, without values, as the fast
    // path promises.
    bool EvaluateFast(double &out) override;
    void SerializeNode(CRpnBuffer &buffer) override;

    CRpnUserFunction *m_function = nullptr; // not owned: the tree's function table holds it
    QString m_functionName;
};
