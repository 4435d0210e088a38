// Prototypes of the core node classes.  Saved trees are read back by class
// number from these, so the punctuation and value classes are here too,
// although no keyword names them.

#include "formula/rpnprototypes.h"

#include "formula/rpnformulanodes.h"
#include "formula/rpnformulavalue.h"
#include "formula/rpnfunctioncall.h"
#include "formula/rpnkeywords.h"
#include "formula/rpnmacros.h"
#include "formula/rpnreporters.h"
#include "formula/rpnstatements.h"

#include <mutex>

namespace {

void provideCoreNodes(CRpnPrototypeArray &prototypes)
{
    const CRpnNode *nodes[] = {
        new CNodeConstant, new CNode_Comma, new CRpnNodeList, new CNodeText, new CNodeBracket, new CNode_End,
        new CNodeComment, new CNodeArrayIndex, new CNodeReturn, new CNodeVariable, new CNodeIsNull,
        new CNodeTypeName, new CNode_Function, new CNodeNULL, new CNodeParenthese,
        new CNodePlus, new CNodeSinglePlus, new CNodeMinus, new CNodeSingleMinus, new CNodeMultiply,
        new CNodeDivide, new CNodePower, new CNodeMod, new CNodePower2, new CNodeMod2, new CNodeAbsPower,
        new CNodeEqualTo, new CNodeNotEqualTo, new CNodeGreaterThan, new CNodeLessThan,
        new CNodeGreaterEqualThan, new CNodeLessEqualThan, new CNodeNot, new CNodeAND, new CNodeOR,
        new CNodeIncrement, new CNodeDecrement, new CNodeBitwiseAnd, new CNodeBitwiseOR, new CNodeBitwiseNot,
        new CNodeBitwiseShiftLeft, new CNodeBitwiseShiftRight,
        new CNodeAssignment, new CNodeAddAssignment, new CNodeSubAssignment, new CNodeMulAssignment,
        new CNodeDivAssignment, new CNode_IF, new CNode_ELSE, new CNode_WHILE,
    };
    for (const CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), const_cast<CRpnNode *>(node));
}

// The further statements, the reporters and the directives.
void provideStatementNodes(CRpnPrototypeArray &prototypes)
{
    const CRpnNode *nodes[] = {
        new CNode_IIF, new CNode_Catch, new CNode_SetValue, new CNode_SetText,
        new CNodeError, new CNodeWarning, new CNodeGetError,
        new CNodeMacroDefine, new CNodeMacroUnDefine, new CNodeMacroIf, new CNodeMacroIfDef,
        new CNodeMacroIfNDef, new CNodeMacroElseIf, new CNodeMacroElse, new CNodeMacroEndIf,
        new CNodeMacroBracket, new CNodeMacroError,
    };
    for (const CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), const_cast<CRpnNode *>(node));
}

} // namespace

void RegisterLanguageCore()
{
    static std::once_flag once;
    std::call_once(once, [] {
        AddPrototypeProvider(provideCoreNodes);
        AddPrototypeProvider(provideStatementNodes);
        AddPrototypeProvider(ProvideFormulaNodes);
        RegisterFormulaSupport();
    });
}
