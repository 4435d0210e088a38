// Calls of functions defined in scripts.

#include "formula/rpnfunctioncall.h"

#include "formula/rpnbuffer.h"
#include "formula/rpntree.h"
#include "formula/rpnuserfunction.h"

#include <exception>
#include <vector>

namespace {
constexpr int kMsgUnknownName = 43028;
constexpr int kMsgCallsTooDeep = 43300;
} // namespace

CRpnNode *CNode_Function::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CNode_Function *>(CRpnNode::Clone(tree, position, row, col));
    node->m_function = m_function;
    node->m_functionName = m_functionName;
    return node;
}

void CNode_Function::SerializeNode(CRpnBuffer &buffer)
{
    CRpnNode::SerializeNode(buffer);
    buffer.TransferString(m_functionName);
}

void CNode_Function::Evaluate(CRpnData &result, unsigned char &status)
{
    CRpnUserFunction *function = m_function;
    if (!function || !function->m_body) {
        ReportError(status, kMsgUnknownName, {});
        result.SetNull();
        return;
    }
    CEquationTree *owner = function->m_owner ? function->m_owner : m_tree;
    if (!owner || !HasStackRoom(status)) {
        status = 0;
        result.SetNull();
        return;
    }

    // 1. The arguments, left to right; a variable given for a parameter
    //    passed by reference is remembered for the copy back.
    const int count = int(m_children.size());
    const int parameters = function->GetParameterCount();
    std::vector<CRpnData> arguments(static_cast<std::size_t>(count));
    std::vector<CNodeVariable *> byReference(std::size_t(parameters), nullptr);
    for (int i = 0; i < count; ++i) {
        CRpnNode *child = m_children[std::size_t(i)];
        if (!child)
            continue;
        if (!EvaluateOrPass(child, arguments[std::size_t(i)], result, status))
            return;
        if (i < parameters && function->IsByReference(i))
            byReference[std::size_t(i)] = child->AsVariable();
    }
    if (owner->m_callDepth >= MaxCallDepth) {
        ReportError(status, kMsgCallsTooDeep, {m_functionName});
        result.SetNull();
        return;
    }

    // 2. and 3. The call's own variables: the parameters, and the owner's
    //    main dictionary under its name.
    CRpnData frameValue;
    frameValue.SetDictionary();
    CMapStringToRpnData *frame = frameValue.GetDictionary();
    frame->m_caseSensitive = owner->m_caseSensitiveNames != 0;
    for (int p = 0; p < parameters; ++p) {
        const CRpnData &value = p < count ? arguments[std::size_t(p)] : function->m_defaults.value(p);
        frame->SetAt(function->m_parameterNames[p], value);
    }
    frame->SetAt(owner->m_mainVariablesName, owner->GetVariablesValue());

    // 4. to 6. The body runs with that scope; an exception ends the call
    //    with status 0.
    CMapStringToRpnData *outerScope = owner->m_callScope;
    owner->m_callScope = frame;
    ++owner->m_callDepth;
    unsigned char callStatus = 1;
    CRpnData value;
    try {
        function->m_body->Evaluate(value, callStatus);
    } catch (const std::exception &) {
        if (callStatus == 1)
            callStatus = 0;
    }
    --owner->m_callDepth;
    owner->m_callScope = outerScope;
    if (callStatus == 10)
        callStatus = 1;

    // 7. An error of the body reaches the calling tree.
    if (callStatus != 1) {
        status = 0;
        if (m_tree && m_tree != owner && owner->HasError()) {
            unsigned char ignored = 1;
            const int throwing = m_tree->throwOnError;
            m_tree->throwOnError = 0;
            m_tree->ReportError(ignored, owner->errorText, owner->errorToken, owner->errorRow, owner->errorCol);
            m_tree->throwOnError = throwing;
        }
    }

    // 8. Parameters passed by reference go back, also after an error.
    for (int p = 0; p < parameters; ++p) {
        if (CNodeVariable *variable = byReference[std::size_t(p)]) {
            CRpnData local;
            frame->Lookup(function->m_parameterNames[p], local);
            unsigned char copyStatus = 1;
            variable->SetValue(local, copyStatus);
        }
    }
    if (callStatus != 1)
        result.SetNull();
    else
        result = std::move(value);
}
