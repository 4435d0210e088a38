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
    //    passed by reference is remembered for the copy back.  A few
    //    arguments live on the stack.
    const int count = int(m_children.size());
    const int parameters = function->GetParameterCount();
    constexpr int kInline = 8;
    CRpnLocalValues<kInline> arguments(count);
    CNodeVariable *inlineReferences[kInline] = {};
    std::vector<CNodeVariable *> moreReferences;
    CNodeVariable **byReference = inlineReferences;
    if (parameters > kInline) {
        moreReferences.assign(std::size_t(parameters), nullptr);
        byReference = moreReferences.data();
    }
    bool anyByReference = false;
    for (int i = 0; i < count; ++i) {
        CRpnNode *child = m_children[std::size_t(i)];
        if (!child)
            continue;
        if (!EvaluateOrPass(child, arguments[i], result, status))
            return;
        if (i < parameters && function->IsByReference(i)) {
            byReference[i] = child->AsVariable();
            anyByReference = anyByReference || byReference[i];
        }
    }
    if (owner->m_callDepth >= MaxCallDepth) {
        ReportError(status, kMsgCallsTooDeep, {m_functionName});
        result.SetNull();
        return;
    }

    // 2. and 3. The call's own variables: the parameters (their defaults
    //    where no argument was given), and the owner's main dictionary under
    //    its name.  The frame is one that an earlier call left, where there is one.
    CRpnCallFrame *frame = function->TakeFrame();
    // The arguments are not needed after this: they move into the frame.
    for (int p = 0; p < parameters; ++p) {
        if (p < count)
            frame->SetSlot(p, std::move(arguments[p]));
        else
            frame->SetSlot(p, function->m_defaults.value(p));
    }
    if (function->GetMainSlot() >= 0)
        frame->SetSlot(function->GetMainSlot(), owner->GetVariablesValue());

    // 4. to 6. The body runs with that frame; an exception ends the call
    //    with status 0.
    CRpnCallFrame *outerFrame = owner->m_callFrame;
    owner->m_callFrame = frame;
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
    owner->m_callFrame = outerFrame;
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
    if (anyByReference) {
        for (int p = 0; p < parameters; ++p) {
            if (CNodeVariable *variable = byReference[p]) {
                CRpnData local;
                if (const CRpnData *slot = frame->Slot(p))
                    local = *slot;
                unsigned char copyStatus = 1;
                variable->SetValue(local, copyStatus);
            }
        }
    }
    function->GiveBackFrame(frame);
    if (callStatus != 1)
        result.SetNull();
    else
        result = std::move(value);
}
