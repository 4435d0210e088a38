// Calls of functions defined in scripts.

#include "formula/rpnfunctioncall.h"

#include "formula/rpnbuffer.h"
#include "formula/rpnenvironment.h"
#include "formula/rpnoperators.h"
#include "formula/rpnstatements.h"
#include "formula/rpntree.h"
#include "formula/rpnuserfunction.h"

#include <exception>
#include <vector>

namespace {
constexpr int kMsgUnknownName = 43028;
constexpr int kMsgCallsTooDeep = 43300;

bool isBlock(const CRpnNode *node)
{
    const std::uint64_t traits = node->GetTraits();
    return (traits & RPN_TRAIT_LIST) && !(traits & RPN_TRAIT_MULTI_OPERAND);
}

// Whether a statement may run on the fast path: `return` of an expression on
// plain numbers, `if` with such a condition, `v = expression` on plain numbers
// into a local of the function, and blocks of these.
bool fastStatement(const CRpnNode *node, const CRpnUserFunction *function)
{
    if (!node)
        return true;
    if (StackRoom::IsStackLow())
        return false;
    if (isBlock(node)) {
        for (const CRpnNode *child : static_cast<const CRpnNodeList *>(node)->m_children) {
            if (!fastStatement(child, function))
                return false;
        }
        return true;
    }
    switch (node->GetKind()) {
    case RPN_NODE_RETURN: {
        const CRpnNode *value = static_cast<const CNodeReturn *>(node)->m_operand;
        return value && value->m_fastValue;
    }
    case RPN_NODE_IF: {
        const auto *branch = static_cast<const CNode_IF *>(node);
        return branch->m_condition && branch->m_condition->m_fastValue && fastStatement(branch->m_then, function)
            && fastStatement(branch->m_else, function);
    }
    case RPN_NODE_ASSIGN: {
        // m_plainStore: a variable on the left, an operation on numbers on the right.
        if (!node->m_plainStore)
            return false;
        const auto *variable = static_cast<const CNodeVariable *>(static_cast<const CNodeAssignment *>(node)->m_left);
        return variable->m_slotFunction == function && variable->m_slot >= 0 && !variable->m_column;
    }
    default:
        return false;
    }
}

bool fastBody(CRpnUserFunction *function)
{
    return !function->HasByReference() && function->EndsInReturn() && fastStatement(function->m_body, function);
}

// Lays out statements that fastStatement accepted as steps (see CRpnFastStep).
void layOut(CRpnNode *node, std::vector<CRpnFastStep> &steps)
{
    if (!node)
        return;
    switch (node->GetKind()) {
    case RPN_NODE_RETURN:
        steps.push_back({CRpnFastStep::Return, 0, static_cast<CNodeReturn *>(node)->m_operand});
        return;
    case RPN_NODE_ASSIGN:
        steps.push_back({CRpnFastStep::Store, 0, node});
        return;
    case RPN_NODE_IF: {
        auto *branch = static_cast<CNode_IF *>(node);
        const std::size_t test = steps.size();
        steps.push_back({CRpnFastStep::Test, 0, branch->m_condition});
        layOut(branch->m_then, steps);
        if (branch->m_else) {
            const std::size_t jump = steps.size();
            steps.push_back({CRpnFastStep::Jump, 0, nullptr});
            steps[test].target = int(steps.size());
            layOut(branch->m_else, steps);
            steps[jump].target = int(steps.size());
        } else {
            steps[test].target = int(steps.size());
        }
        return;
    }
    default: // a block
        for (CRpnNode *child : static_cast<CRpnNodeList *>(node)->m_children)
            layOut(child, steps);
    }
}

// Runs the steps of a body in `frame`; false when one gave up or the steps
// ran out without a `return`.
bool runSteps(const std::vector<CRpnFastStep> &steps, CRpnCallFrame *frame, double &out)
{
    const CRpnFastStep *step = steps.data();
    const CRpnFastStep *const end = step + steps.size();
    const CRpnFastStep *const begin = step;
    while (step < end) {
        switch (step->code) {
        case CRpnFastStep::Return:
            return step->expr->EvaluateFast(out);
        case CRpnFastStep::Test: {
            double c;
            if (!step->expr->EvaluateFast(c))
                return false;
            step = c != 0.0 ? step + 1 : begin + step->target;
            break;
        }
        case CRpnFastStep::Store: {
            // What the ordinary store leaves: the number in the slot and in
            // the node's copy of the last value.
            auto *assignment = static_cast<CNodeAssignment *>(step->expr);
            double x;
            if (!assignment->m_right->EvaluateFast(x))
                return false;
            auto *variable = static_cast<CNodeVariable *>(assignment->m_left);
            if (CRpnData *slot = frame->Slot(variable->m_slot))
                slot->SetDouble(x);
            else
                frame->SetSlot(variable->m_slot, CRpnData(x));
            variable->m_value.SetDouble(x);
            ++step;
            break;
        }
        case CRpnFastStep::Jump:
            step = begin + step->target;
            break;
        }
    }
    return false;
}

// Lays out a body for the ordinary way (see CRpnBodyStep).  `noted` is the
// statement of the innermost block around `node`: where a block would note
// a failure that left no message.
void layOutBody(CRpnNode *node, CRpnNode *noted, std::vector<CRpnBodyStep> &steps)
{
    if (!node)
        return;
    if (isBlock(node)) {
        for (CRpnNode *child : static_cast<CRpnNodeList *>(node)->m_children)
            layOutBody(child, child, steps);
        return;
    }
    switch (node->GetKind()) {
    case RPN_NODE_RETURN:
        steps.push_back({CRpnBodyStep::Return, 0, static_cast<CNodeReturn *>(node)->m_operand, node, noted});
        return;
    case RPN_NODE_IF: {
        auto *branch = static_cast<CNode_IF *>(node);
        if (!branch->m_condition)
            break; // its Execute gives the empty value
        const std::size_t test = steps.size();
        steps.push_back({CRpnBodyStep::Test, 0, branch->m_condition, node, noted});
        layOutBody(branch->m_then, noted, steps);
        if (branch->m_else) {
            const std::size_t jump = steps.size();
            steps.push_back({CRpnBodyStep::Jump, 0, nullptr, nullptr, nullptr});
            steps[test].target = int(steps.size());
            layOutBody(branch->m_else, noted, steps);
            steps[jump].target = int(steps.size());
        } else {
            steps[test].target = int(steps.size());
        }
        return;
    }
    default:
        break;
    }
    steps.push_back({CRpnBodyStep::Run, 0, node, nullptr, noted});
}

// Runs a body laid out by layOutBody as its blocks would run it: each
// statement for its effect, until one fails (status 0), a `return` ends the
// call (status 10) or the tree is asked to stop.  `value` is left as the
// blocks would leave it.
void runBody(const std::vector<CRpnBodyStep> &steps, CRpnData &value, unsigned char &status)
{
    const CRpnBodyStep *const begin = steps.data();
    const CRpnBodyStep *const end = begin + steps.size();
    const CRpnBodyStep *step = begin;
    while (step < end) {
        CRpnNode *node = step->node;
        switch (step->code) {
        case CRpnBodyStep::Run:
            node->Execute(value, status);
            if (status == 0) {
                step->noted->NoteFailure(step->noted);
                return;
            }
            if (status == 10 || node->IsStopping())
                return;
            ++step;
            break;
        case CRpnBodyStep::Test: {
            // As the `if` reads its condition: a double where the fast path
            // gives one, else the value and its truth.
            CRpnNode *branch = step->at;
            double x;
            bool truth;
            if (node->m_fastValue && !branch->IsStopping() && node->EvaluateFast(x)) {
                truth = x != 0.0;
            } else {
                CRpnData condition;
                if (!branch->EvaluateOrPass(node, condition, value, status)) {
                    if (status == 0)
                        step->noted->NoteFailure(step->noted);
                    return;
                }
                truth = condition.IsTrue();
            }
            step = truth ? step + 1 : begin + step->target;
            break;
        }
        case CRpnBodyStep::Return:
            if (!node) {
                value.SetNull();
                status = 10;
                return;
            }
            node->Evaluate(value, status);
            if (status == 0) {
                value.SetNull();
                step->noted->NoteFailure(step->noted);
            } else {
                status = 10;
            }
            return;
        case CRpnBodyStep::Jump:
            step = begin + step->target;
            break;
        }
    }
}

// A call whose function cannot take the fast path (its body's form, or a
// call that had to give up) gives no double that way, and neither do the
// expressions around it: they are marked so, and go the ordinary way
// without trying first.
void closeFastPath(CRpnNode *call)
{
    CRpnNode *node = call, *below = nullptr;
    while (node && (node->m_fastPath || node->m_fastValue || node->m_plainNumber)) {
        node->m_fastPath = node->m_fastValue = node->m_plainNumber = false;
        below = node;
        node = node->m_parent;
    }
    // `v = expression` with such a call in the expression stores the ordinary way.
    if (node && below && node->m_plainStore && static_cast<CNodeAssignment *>(node)->m_right == below)
        node->m_plainStore = false;
}

// Puts the owner's frame and depth back when a call on the fast path ends.
struct FastCallScope
{
    int &depth;
    CRpnCallFrame *&current;
    CRpnCallFrame *outer;
    CRpnUserFunction *function;
    CRpnCallFrame *frame;
    ~FastCallScope()
    {
        --depth;
        current = outer;
        function->GiveBackFrame(frame);
    }
};

// Gives a frame back to its function however a call ends (an exception of a
// throwing tree included).
struct FrameHolder
{
    CRpnUserFunction *function;
    CRpnCallFrame *frame;
    ~FrameHolder() { function->GiveBackFrame(frame); }
};

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

    // 1. The arguments, left to right, each straight into the slot of its
    //    parameter in the call's frame (a spare one that an earlier call left,
    //    where there is one); the frame becomes the current scope only once
    //    all arguments are there.  A variable given for a parameter passed by
    //    reference is remembered for the copy back.
    const int count = int(m_children.size());
    const int parameters = function->GetParameterCount();
    const bool anyReferenceParameter = function->HasByReference();
    constexpr int kInline = 8;
    CNodeVariable *inlineReferences[kInline];
    std::vector<CNodeVariable *> moreReferences;
    CNodeVariable **byReference = inlineReferences;
    if (anyReferenceParameter) {
        if (parameters > kInline) {
            moreReferences.assign(std::size_t(parameters), nullptr);
            byReference = moreReferences.data();
        } else {
            std::fill(inlineReferences, inlineReferences + kInline, nullptr);
        }
    }
    FrameHolder held{function, function->TakeFrame()};
    CRpnCallFrame *frame = held.frame;
    bool anyByReference = false;
    CRpnData argument;
    for (int i = 0; i < count; ++i) {
        CRpnNode *child = m_children[std::size_t(i)];
        // An operation on numbers gives its double straight into the slot,
        // as its Evaluate would give it.
        double x;
        if (i < parameters && child && child->m_plainNumber && child->m_fastValue && !IsStopping() && child->EvaluateFast(x)) {
            frame->SetDoubleSlot(i, x);
            continue;
        }
        if (child && !EvaluateOrPass(child, argument, result, status))
            return;
        if (i >= parameters) {
            argument.SetNull(); // extra arguments are dropped
            continue;
        }
        frame->SetSlot(i, std::move(argument));
        if (child && anyReferenceParameter && function->IsByReference(i)) {
            byReference[i] = child->AsVariable();
            anyByReference = anyByReference || byReference[i];
        }
    }
    if (owner->m_callDepth >= MaxCallDepth) {
        ReportError(status, kMsgCallsTooDeep, {m_functionName});
        result.SetNull();
        return;
    }

    // 2. and 3. The parameters without an argument take their defaults, and
    //    the owner's main dictionary stands under its name.
    for (int p = count; p < parameters; ++p)
        frame->SetSlot(p, function->m_defaults.value(p));
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
        if (function->EndsInReturn()) {
            if (function->m_bodySteps.empty())
                layOutBody(function->m_body, function->m_body, function->m_bodySteps);
            runBody(function->m_bodySteps, value, callStatus);
        } else {
            function->m_body->Evaluate(value, callStatus);
        }
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
        for (int p = 0; p < std::min(count, parameters); ++p) {
            if (CNodeVariable *variable = byReference[p]) {
                CRpnData local;
                if (const CRpnData *slot = frame->Slot(p))
                    local = *slot;
                unsigned char copyStatus = 1;
                variable->SetValue(local, copyStatus);
            }
        }
    }
    if (callStatus != 1)
        result.SetNull();
    else
        result = std::move(value);
}

bool CNode_Function::EvaluateFast(double &out)
{
    CRpnUserFunction *function = m_function;
    // m_fastPath: every argument may give its double this way.
    if (!m_fastPath || !function || !function->m_body)
        return false;
    if (function->m_fastBody == 0) {
        closeFastPath(this);
        return false;
    }
    if (function->m_fastBody < 0) {
        function->m_fastSteps.clear();
        if (fastBody(function)) {
            layOut(function->m_body, function->m_fastSteps);
            function->m_fastBody = 1;
        } else {
            function->m_fastBody = 0;
            closeFastPath(this);
            return false;
        }
    }
    CEquationTree *owner = function->m_owner ? function->m_owner : m_tree;
    // The limits and a stop are the ordinary path's to report, and a run
    // that logs its assignments logs them there (a call that gives up here
    // is done again from the start).
    if (!owner || owner->m_callDepth >= MaxCallDepth || owner->IsStopping() || StackRoom::IsStackLow()
        || owner->Environment().IsLogging())
        return false;
    constexpr int kMaxArguments = 8;
    const int count = int(m_children.size());
    if (count > kMaxArguments)
        return false;
    double arguments[kMaxArguments];
    for (int i = 0; i < count; ++i) {
        if (!m_children[std::size_t(i)]->EvaluateFast(arguments[i]))
            return false;
    }
    const int parameters = function->GetParameterCount();
    CRpnCallFrame *frame = function->TakeFrame();
    for (int p = 0; p < parameters; ++p) {
        if (p < count)
            frame->SetSlot(p, CRpnData(arguments[p]));
        else
            frame->SetSlot(p, function->m_defaults.value(p));
    }
    if (function->GetMainSlot() >= 0)
        frame->SetSlot(function->GetMainSlot(), owner->GetVariablesValue());
    FastCallScope scope{owner->m_callDepth, owner->m_callFrame, owner->m_callFrame, function, frame};
    owner->m_callFrame = frame;
    ++owner->m_callDepth;
    if (runSteps(function->m_fastSteps, frame, out))
        return true;
    // Something unusual on the way (a value that is no number, a zero
    // divisor, a limit): this call is done again the ordinary way, and so
    // are the calls of this function from now on, so that a recursion that
    // gives up deep down is not tried again at every level.
    function->m_fastBody = 0;
    closeFastPath(this);
    return false;
}
