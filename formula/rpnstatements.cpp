// IF, WHILE, else, return, Catch, iif, SETVALUE and SETTEXT.

#include "formula/rpnstatements.h"

#include "formula/rpndictionary.h"
#include "formula/rpnseams.h"
#include "formula/rpntree.h"

#include <exception>

namespace {
const QString kLastError = QStringLiteral("LastError");
}

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

bool CNode_IF::conditionTruth(bool &truth, CRpnData &result, unsigned char &status)
{
    // A condition on plain numbers is read as a double, without a value.
    double x;
    if (m_condition->m_fastValue && !IsStopping() && m_condition->EvaluateFast(x)) {
        truth = x != 0.0;
        return true;
    }
    CRpnData condition;
    if (!EvaluateOrPass(m_condition, condition, result, status))
        return false;
    truth = condition.IsTrue();
    return true;
}

void CNode_IF::Evaluate(CRpnData &result, unsigned char &status)
{
    if (!m_condition || !HasStackRoom(status)) {
        result.SetNull();
        return;
    }
    bool truth;
    if (!conditionTruth(truth, result, status))
        return;
    CRpnNode *branch = truth ? m_then : m_else;
    if (!branch) {
        result.SetNull();
        return;
    }
    branch->Evaluate(result, status);
    if (status == 0)
        result.SetNull();
}

void CNode_IF::Execute(CRpnData &value, unsigned char &status)
{
    if (GetKind() != RPN_NODE_IF || !m_condition) {
        Evaluate(value, status);
        return;
    }
    bool truth;
    if (!conditionTruth(truth, value, status))
        return;
    if (CRpnNode *branch = truth ? m_then : m_else)
        branch->Execute(value, status);
}

void CNode_WHILE::Evaluate(CRpnData &result, unsigned char &status)
{
    if (!m_condition) {
        result.SetNull();
        return;
    }
    CRpnData condition;
    if (!EvaluateOrPass(m_condition, condition, result, status))
        return;
    if (!condition.IsTrue()) {
        result.SetNull();
        return;
    }
    if (!m_programBuilt) {
        m_programBuilt = true;
        m_program = CRpnLoopProgram::Build(m_condition, m_then);
    }
    m_ranAsProgram = false;
    CRpnData value;
    for (int passes = 1;; ++passes) {
        // A loop on numbers goes on as its program once its variables all
        // have places (a first pass may make some of them).
        if (m_program && m_tree && passes <= 2 && m_program->Bind()) {
            m_ranAsProgram = true;
            m_program->Run(MaxPasses - passes + 1, m_tree);
            m_program->Finish();
            result.SetDouble(0.0);
            return;
        }
        if (m_then)
            m_then->Execute(value, status);
        if (status == 10) {
            result = std::move(value);
            return;
        }
        if (status == 0 || IsStopping() || passes >= MaxPasses)
            break;
        double x;
        if (m_condition->m_fastValue && m_condition->EvaluateFast(x)) {
            if (x == 0.0)
                break;
            continue;
        }
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

// --- Catch ---------------------------------------------------------------------------------

CMapStringToRpnData *GetMainVariablesOf(CEquationTree *tree, CRpnNode *node)
{
    if (!tree)
        return nullptr;
    if (tree->m_getVariable) {
        CRpnData value;
        int found = 1;
        tree->m_getVariable(value, -1, tree->m_rowIndex, tree->m_runData1, tree->m_runData2, node,
                            tree->m_mainVariablesName, found);
        if (found && value.IsDictionary())
            return value.GetDictionary(); // the host keeps the dictionary alive
    }
    return tree->GetVariables();
}

void CNode_Catch::Evaluate(CRpnData &result, unsigned char &status)
{
    CRpnData value;
    QString caught;
    bool raised = false;
    if (m_then) {
        try {
            m_then->Evaluate(value, status);
        } catch (const CRpnException &e) {
            caught = e.GetErrorMessage();
            raised = true;
        } catch (const std::exception &e) {
            caught = QString::fromUtf8(e.what()).left(MaxErrorText);
            raised = true;
        }
    }
    if (raised) {
        status = 0;
        value.SetNull();
        if (m_tree)
            m_tree->errorText = caught;
    }
    if (status != 0) {
        result = std::move(value);
        return;
    }
    const QString message = raised ? caught : (m_tree ? m_tree->errorText : QString());
    if (CMapStringToRpnData *variables = GetMainVariablesOf(m_tree, this))
        variables->SetAt(kLastError, CRpnData(message));
    if (m_tree)
        m_tree->ResetError();
    status = 1;
    if (!m_else) {
        result.SetNull();
        return;
    }
    m_else->Evaluate(result, status);
    if (status == 0)
        result.SetNull();
}

// --- three operands --------------------------------------------------------------------------

CNodeTripleOperand::~CNodeTripleOperand()
{
    for (CRpnNode *&node : m_operands) {
        DeleteSubtree(node);
        node = nullptr;
    }
}

bool CNodeTripleOperand::SetOperand(int i, CRpnNode *node)
{
    if (i < 0 || i >= 3)
        return false;
    m_operands[i] = node;
    if (node)
        node->m_parent = this;
    return true;
}

// --- iif ------------------------------------------------------------------------------------------

bool CNode_IIF::EvaluateFast(double &out)
{
    CRpnNode *conditionNode = m_operands[0];
    double c;
    if (!conditionNode || !conditionNode->m_fastValue || IsStopping() || !conditionNode->EvaluateFast(c))
        return false;
    CRpnNode *branch = c != 0.0 ? m_operands[1] : m_operands[2];
    return branch && branch->m_fastValue && branch->EvaluateFast(out);
}

void CNode_IIF::Evaluate(CRpnData &result, unsigned char &status)
{
    CRpnNode *conditionNode = m_operands[0];
    if (!conditionNode) {
        result.SetNull();
        return;
    }
    double x;
    if (EvaluateFast(x)) {
        result.SetDouble(x);
        return;
    }
    CRpnData condition;
    if (!EvaluateOrPass(conditionNode, condition, result, status))
        return;
    bool wasArray = false;
    const bool truth = condition.IsTrue(&wasArray);
    if (wasArray) {
        select(result, condition, status);
        return;
    }
    CRpnNode *branch = truth ? m_operands[1] : m_operands[2];
    if (!branch) {
        result.SetNull();
        return;
    }
    branch->Evaluate(result, status);
    if (status == 0)
        result.SetNull();
}

namespace {

// One branch of an array iif, evaluated with a status of its own.  When it
// fails, the error it reported is remembered and taken back out of the
// tree: it only counts if an element is taken from this branch.
struct Branch
{
    CRpnData value;
    unsigned char status = 1;
    bool isArray = false;
    QString errorText, errorToken;
    int errorRow = -1, errorCol = -1;

    void evaluate(CRpnNode *node, CEquationTree *tree)
    {
        const bool hadError = tree && tree->HasError();
        if (node)
            node->Evaluate(value, status);
        if (status == 0) {
            value.SetNull();
            if (tree && !hadError && tree->HasError()) {
                errorText = tree->errorText;
                errorToken = tree->errorToken;
                errorRow = tree->errorRow;
                errorCol = tree->errorCol;
                tree->ResetError();
            }
        }
        isArray = value.IsArray();
    }
    CRpnData at(int i) const
    {
        if (!isArray)
            return value;
        return i < value.GetSize() ? value.GetAt(i) : CRpnData();
    }
};

} // namespace

void CNode_IIF::select(CRpnData &result, const CRpnData &condition, unsigned char &status)
{
    Branch branches[2];
    for (int b = 0; b < 2; ++b) {
        branches[b].evaluate(m_operands[1 + b], m_tree);
        if (branches[b].status == 10 || IsStopping()) {
            status = branches[b].status;
            result = branches[b].value;
            return;
        }
    }

    // For each element: 0 take from a, 1 from b, -1 the empty value.
    const CRpnCurveRows *rows = nullptr;
    int count = condition.GetSize();
    if (condition.GetKind() == RPN_CURVE) {
        rows = dynamic_cast<const CRpnCurveRows *>(condition.GetObject());
        count = rows ? rows->GetRowCount() : 0;
    }
    auto choice = [&](int i) {
        if (rows) {
            if (rows->GetRowValidity(i) != 1)
                return -1;
            return rows->GetRowValue(i) != 0.0 ? 0 : 1;
        }
        if (condition.GetKind() == RPN_ARRAY_R)
            return condition.GetRealData()[i] != 0.0 ? 0 : 1;
        return condition.GetItems()[i].GetDouble() != 0.0 ? 0 : 1;
    };

    CRpnData out;
    out.SetArray(count);
    bool used[2] = {false, false};
    for (int i = 0; i < count; ++i) {
        const int c = choice(i);
        if (c < 0)
            continue;
        used[c] = true;
        out.GetItems()[i] = branches[c].at(i);
    }
    for (Branch &branch : branches) {
        if (branch.status != 0 || !used[&branch - branches])
            continue;
        // An element needed the failed branch: its error stands.
        if (m_tree && !branch.errorText.isEmpty())
            m_tree->ReportError(status, branch.errorText, branch.errorToken, branch.errorRow, branch.errorCol);
        status = 0;
        result.SetNull();
        return;
    }
    result = std::move(out);
}

// --- SETVALUE and SETTEXT ---------------------------------------------------------------------------

void CNode_SetValue::Evaluate(CRpnData &result, unsigned char &status)
{
    // The target: a plain variable is named, anything else gives its text.
    CRpnNode *target = m_operands[0];
    CNodeVariable *variable = target ? target->AsVariable() : nullptr;
    QString name;
    int index = -1;
    if (variable) {
        name = variable->m_name;
        index = variable->m_index;
    } else if (target) {
        CRpnData value;
        if (!EvaluateOrPass(target, value, result, status))
            return;
        name = value.GetText(16);
    }
    CRpnData values[2];
    for (int i = 0; i < 2; ++i) {
        if (!m_operands[1 + i])
            continue;
        if (!EvaluateOrPass(m_operands[1 + i], values[i], result, status))
            return;
    }
    if (!m_tree || !m_tree->m_setVariable) {
        result.SetNull();
        return;
    }
    result = m_tree->m_setVariable(Convert(values[0]), index, m_tree->m_rowIndex, m_tree->m_runData1,
                                   m_tree->m_runData2, target, name, values[1].GetDouble());
}

CRpnData CNode_SetText::Convert(const CRpnData &value) const
{
    return CRpnData(value.GetText(16));
}
