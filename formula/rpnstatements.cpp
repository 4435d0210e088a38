// IF, WHILE, else and return.

#include "formula/rpnstatements.h"

#include "formula/rpntree.h"

CNode_IF::~CNode_IF()
{
    DeleteSubtree(m_condition);
    DeleteSubtree(m_then);
    DeleteSubtree(m_else);
}

CRpnNode *CNode_IF::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CNode_IF *>(CRpnNode::Clone(tree, position, row, col));
    node->m_state = m_state;
    node->m_state2 = m_state2;
    return node;
}

CRpnNode *CNode_IF::GetOperand(int i) const
{
    switch (i) {
    case 0: return m_condition;
    case 1: return m_then;
    case 2: return m_else;
    default: return nullptr;
    }
}

bool CNode_IF::SetOperand(int i, CRpnNode *node)
{
    switch (i) {
    case 0: m_condition = node; break;
    case 1: m_then = node; break;
    case 2: m_else = node; break;
    default: return false;
    }
    if (node)
        node->m_parent = this;
    return true;
}

void CNode_IF::Evaluate(CRpnData &result, unsigned char &status)
{
    if (!m_condition) {
        result.SetNull();
        return;
    }
    CRpnData condition;
    m_condition->Evaluate(condition, status);
    if (status == 0) {
        result.SetNull();
        return;
    }
    if (status == 10 || IsStopping()) {
        result = std::move(condition);
        return;
    }
    CRpnNode *branch = condition.IsTrue() ? m_then : m_else;
    if (!branch) {
        result.SetNull();
        return;
    }
    branch->Evaluate(result, status);
    if (status == 0)
        result.SetNull();
}

void CNode_WHILE::Evaluate(CRpnData &result, unsigned char &status)
{
    if (!m_condition) {
        result.SetNull();
        return;
    }
    CRpnData condition;
    m_condition->Evaluate(condition, status);
    if (status == 0) {
        result.SetNull();
        return;
    }
    if (status == 10 || IsStopping()) {
        result = std::move(condition);
        return;
    }
    if (!condition.IsTrue()) {
        result.SetNull();
        return;
    }
    CRpnData value;
    for (int passes = 1;; ++passes) {
        if (m_then)
            m_then->Evaluate(value, status);
        if (status == 10) {
            result = std::move(value);
            return;
        }
        if (status == 0 || IsStopping() || passes >= MaxPasses)
            break;
        m_condition->Evaluate(condition, status);
        if (status != 1 || !condition.IsTrue())
            break;
    }
    if (status == 10) {
        // A return in the condition carries its value out.
        result = std::move(condition);
        return;
    }
    result.SetDouble(0.0);
}

void CNodeReturn::Evaluate(CRpnData &result, unsigned char &status)
{
    if (!m_operand) {
        result.SetNull();
        status = 10;
        return;
    }
    m_operand->Evaluate(result, status);
    if (status == 0)
        result.SetNull();
    else
        status = 10;
}
