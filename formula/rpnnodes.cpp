// Values, variables, lists and the parser's punctuation.

#include "formula/rpnnodes.h"

#include "formula/rpnbuffer.h"
#include "formula/rpndictionary.h"
#include "formula/rpntree.h"
#include "formula/rpnuserfunction.h"
#include "formula/rpnvariableplace.h"

#include <cmath>

namespace {

constexpr int kMsgUnknownVariable = 41830;
constexpr double kE = 2.718281828459045;
constexpr double kPi = 3.141592653589793;

// "pi" in any case and "e" exactly: the constants a getter may not know.
bool namedConstant(const QString &name, CRpnData &value)
{
    if (name == QLatin1StringView("e")) {
        value.SetDouble(kE);
        return true;
    }
    if (name.compare(QLatin1StringView("pi"), Qt::CaseInsensitive) == 0) {
        value.SetDouble(kPi);
        return true;
    }
    return false;
}

void transferString(CRpnBuffer &buffer, QString &text)
{
    buffer.TransferString(text);
}

} // namespace

// --- CNodeConstant ------------------------------------------------------------------

CRpnNode *CNodeConstant::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CNodeConstant *>(CRpnNode::Clone(tree, position, row, col));
    node->m_value = m_value;
    node->m_text = m_text;
    return node;
}

void CNodeConstant::Evaluate(CRpnData &result, unsigned char &)
{
    result = m_value;
}

bool CNodeConstant::EvaluateFast(double &out)
{
    if (!m_value.IsReal())
        return false;
    out = m_value.GetRealValue();
    return true;
}

void CNodeConstant::SerializeNode(CRpnBuffer &buffer)
{
    CRpnNode::SerializeNode(buffer);
    m_value.Serialize(buffer);
    transferString(buffer, m_text);
}

// --- CNodeVariable ----------------------------------------------------------------------

CRpnNode *CNodeVariable::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CNodeVariable *>(CNodeConstant::Clone(tree, position, row, col));
    node->m_index = m_index;
    node->m_tag = m_tag;
    node->m_name = m_name;
    node->m_note = m_note;
    node->m_marks = m_marks;
    node->m_slot = m_slot;
    node->m_slotFunction = m_slotFunction;
    return node;
}

void CNodeVariable::SerializeNode(CRpnBuffer &buffer)
{
    CNodeConstant::SerializeNode(buffer);
    buffer.Transfer(m_index);
    transferString(buffer, m_tag);
    transferString(buffer, m_name);
    transferString(buffer, m_note);
    buffer.Transfer(m_marks);
}

CRpnData *CNodeVariable::mainEntry(CMapStringToRpnData *main)
{
    if (m_mainLayout == main->GetLayout())
        return m_mainSlot;
    const int at = main->IndexOf(m_name);
    if (at < 0)
        return nullptr;
    m_mainLayout = main->GetLayout();
    m_mainIndex = at;
    m_mainSlot = &main->GetValueAt(at);
    return m_mainSlot;
}

CRpnData *CNodeVariable::FindStorage()
{
    CEquationTree *tree = m_tree;
    if (!tree || IsConstant() || m_column)
        return nullptr;
    if (CRpnCallFrame *frame = tree->GetCallFrame()) {
        if (m_slotFunction == frame->GetFunction() && m_slot >= 0)
            return frame->Slot(m_slot);
        return frame->Find(m_name);
    }
    if (tree->m_getVariable)
        return nullptr;
    if (CMapStringToRpnData *locals = tree->GetLocalVariables()) {
        if (CRpnData *slot = locals->Find(m_name))
            return slot;
    }
    CMapStringToRpnData *main = tree->GetVariables();
    if (m_mainLayout == main->GetLayout())
        return m_mainSlot;
    return mainEntry(main);
}

// The value from the places that hold values without a getter: the running
// call's frame, or the locals, then the main dictionary.
bool CNodeVariable::lookUp(CRpnData &value)
{
    if (CRpnData *slot = FindStorage()) {
        value = *slot;
        return true;
    }
    CEquationTree *tree = m_tree;
    if (!tree->GetCallFrame() && m_name == tree->m_mainVariablesName) {
        value = tree->GetVariablesValue();
        return true;
    }
    return false;
}

bool CNodeVariable::GetValue(CRpnData &value)
{
    if (IsConstant() || !m_tree) {
        value = m_value;
        return true;
    }
    if (const CRpnColumnBinding *c = m_column) {
        const int row = m_tree->m_rowIndex;
        if (row >= 0 && row < c->count && (!c->valid || c->valid[row] == 1))
            value.SetDouble(c->values[row]);
        else
            value.SetNull();
        return true;
    }
    CEquationTree *tree = m_tree;
    if (tree->m_getVariable && !tree->GetCallFrame()) {
        int found = 1;
        tree->m_getVariable(value, m_index, tree->m_rowIndex, tree->m_runData1, tree->m_runData2, this,
                            m_name, found);
        return found != 0;
    }
    return lookUp(value);
}

void CNodeVariable::unknown(CRpnData &result, unsigned char &status)
{
    if (namedConstant(m_name, result))
        return;
    result.SetNull();
    if (m_tree->m_quietUnknown)
        return;
    // Without a getter a name nothing holds yet is simply empty; a getter
    // (the host's, or the scope of a function call) knows all names there are.
    if (!m_tree->m_getVariable && !m_tree->GetCallFrame())
        return;
    m_tree->ReportError(status, kMsgUnknownVariable, {m_name, SourceExcerpt()}, m_name, m_row, m_col);
}

void CNodeVariable::Evaluate(CRpnData &result, unsigned char &status)
{
    if (IsConstant() || !m_tree) {
        result = m_value;
        return;
    }
    // A name with a place of its own: read it there.
    if (!m_column) {
        if (const CRpnData *slot = FindPlace()) {
            result = *slot;
            return;
        }
    }
    // The value is read into the node's own handle, which the host's getter
    // can then overwrite in place on the next read.
    if (GetValue(m_value)) {
        result = m_value;
        return;
    }
    unknown(result, status);
}

bool CNodeVariable::EvaluateFast(double &out)
{
    // A name of a function body, read in a call of that function: its slot.
    // (Such a name is never a constant; a column bound to it comes first.)
    if (m_slotFunction && !m_column && m_tree) {
        if (CRpnCallFrame *frame = m_tree->GetCallFrame(); frame && frame->GetFunction() == m_slotFunction) {
            const CRpnData *slot = m_slot >= 0 ? frame->Slot(m_slot) : nullptr;
            if (!slot || !slot->IsReal())
                return false;
            out = slot->GetRealValue();
            return true;
        }
    }
    if (IsConstant() || !m_tree) {
        if (!m_value.IsReal())
            return false;
        out = m_value.GetRealValue();
        return true;
    }
    if (const CRpnColumnBinding *c = m_column) {
        const int row = m_tree->m_rowIndex;
        if (row < 0 || row >= c->count || (c->valid && c->valid[row] != 1))
            return false;
        out = c->values[row];
        return true;
    }
    CEquationTree *tree = m_tree;
    if (tree->m_getVariable && !tree->GetCallFrame()) {
        // The host's variable, straight from its getter.
        int found = 1;
        tree->m_getVariable(m_value, m_index, tree->m_rowIndex, tree->m_runData1, tree->m_runData2, this, m_name,
                            found);
        if (!found || !m_value.IsReal())
            return false;
        out = m_value.GetRealValue();
        return true;
    }
    if (const CRpnData *slot = FindPlace()) {
        if (!slot->IsReal())
            return false;
        out = slot->GetRealValue();
        return true;
    }
    if (!GetValue(m_value) || !m_value.IsReal())
        return false;
    out = m_value.GetRealValue();
    return true;
}

CRpnData CNodeVariable::SetValue(const CRpnData &value, unsigned char &status)
{
    return SetValue(value, m_tree ? m_tree->m_rowIndex : 0, status);
}

CRpnData CNodeVariable::SetValue(const CRpnData &value, int row, unsigned char &)
{
    m_value = value;
    CEquationTree *tree = m_tree;
    if (!tree || IsConstant())
        return m_value;
    if (CRpnCallFrame *frame = tree->GetCallFrame()) {
        if (m_slotFunction == frame->GetFunction() && m_slot >= 0)
            frame->SetSlot(m_slot, value);
        else
            frame->Set(m_name, value);
        return m_value;
    }
    if (tree->m_setVariable) {
        m_value = tree->m_setVariable(value, m_index, row, tree->m_runData1, tree->m_runData2, this, m_name, 0.0);
        return m_value;
    }
    if (CMapStringToRpnData *locals = tree->GetLocalVariables()) {
        if (CRpnData *slot = locals->Find(m_name)) {
            *slot = value;
            return m_value;
        }
    }
    CMapStringToRpnData *main = tree->GetVariables();
    if (CRpnData *entry = mainEntry(main)) {
        *entry = value;
        return m_value;
    }
    m_mainIndex = main->SetAtIndex(m_name, value);
    m_mainLayout = main->GetLayout();
    m_mainSlot = &main->GetValueAt(m_mainIndex);
    return m_value;
}

// --- CRpnNodeList ----------------------------------------------------------------------

CRpnNodeList::~CRpnNodeList()
{
    if (m_ownsChildren) {
        for (CRpnNode *child : m_children)
            DeleteSubtree(child);
    }
}

CRpnNode *CRpnNodeList::GetOperand(int i) const
{
    return i >= 0 && i < int(m_children.size()) ? m_children[std::size_t(i)] : nullptr;
}

bool CRpnNodeList::SetOperand(int i, CRpnNode *node)
{
    if (i < 0 || i > int(m_children.size()))
        return false;
    if (i == int(m_children.size()))
        m_children.push_back(node);
    else
        m_children[std::size_t(i)] = node;
    if (node)
        node->m_parent = this;
    return true;
}

void CRpnNodeList::Evaluate(CRpnData &result, unsigned char &status)
{
    if (!HasStackRoom(status)) {
        result.SetNull();
        return;
    }
    const int n = int(m_children.size());
    // A short block (a function body, say) keeps its values on the stack
    // until it is done: a `return` on the way then takes no array.
    constexpr int kInline = 8;
    if (n <= kInline) {
        CRpnLocalValues<kInline> values(n);
        for (int i = 0; i < n; ++i) {
            CRpnNode *child = m_children[std::size_t(i)];
            if (!child)
                continue;
            child->Evaluate(values[i], status);
            if (status == 0) {
                NoteFailure(child);
                CRpnData array;
                array.SetArray(n);
                CRpnData *items = array.GetItems();
                for (int k = 0; k < i; ++k)
                    items[k] = std::move(values[k]);
                result = std::move(array);
                return;
            }
            if (status == 10 || IsStopping()) {
                result = std::move(values[i]);
                return;
            }
        }
        CRpnData array;
        array.SetArray(n);
        CRpnData *items = array.GetItems();
        for (int i = 0; i < n; ++i)
            items[i] = std::move(values[i]);
        result = std::move(array);
        return;
    }
    CRpnData array;
    array.SetArray(n);
    CRpnData *items = array.GetItems();
    for (int i = 0; i < n; ++i) {
        CRpnNode *child = m_children[std::size_t(i)];
        if (!child)
            continue;
        CRpnData value;
        child->Evaluate(value, status);
        if (status == 0) {
            NoteFailure(child);
            result = array;
            return;
        }
        if (status == 10 || IsStopping()) {
            result = value;
            return;
        }
        items[i] = std::move(value);
    }
    result = std::move(array);
}

void CRpnNodeList::Execute(CRpnData &value, unsigned char &status)
{
    for (CRpnNode *child : m_children) {
        if (!child)
            continue;
        child->Execute(value, status);
        if (status == 0)
            NoteFailure(child);
        if (status == 0 || status == 10 || IsStopping())
            return;
    }
}

double CRpnNodeList::EvaluateReal(unsigned char &status)
{
    // The double of a one-element ARRAY is that of its element: no array is made.
    if (m_children.size() == 1 && !StackRoom::IsStackLow()) {
        if (!m_children[0])
            return 0.0;
        const double x = m_children[0]->EvaluateReal(status);
        return status == 0 ? 0.0 : x;
    }
    CRpnData value;
    Evaluate(value, status);
    return value.GetDouble();
}

bool CRpnNodeList::EvaluateFast(double &out)
{
    // Short of stack the ordinary evaluation reports it.
    return m_children.size() == 1 && m_children[0] && !StackRoom::IsStackLow() && m_children[0]->EvaluateFast(out);
}

// --- punctuation -----------------------------------------------------------------------

CRpnNode *CNodeBracket::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CNodeBracket *>(CRpnNode::Clone(tree, position, row, col));
    node->m_open = m_open;
    return node;
}

void CNodeBracket::SerializeNode(CRpnBuffer &buffer)
{
    CRpnNode::SerializeNode(buffer);
    std::int32_t open = m_open;
    buffer.Transfer(open);
    m_open = open != 0;
}

QString CNodeParenthese::GetName() const
{
    if (m_square)
        return m_open ? QStringLiteral("[") : QStringLiteral("]");
    return m_open ? QStringLiteral("(") : QStringLiteral(")");
}

CRpnNode *CNodeParenthese::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CNodeParenthese *>(CRpnNode::Clone(tree, position, row, col));
    node->m_open = m_open;
    node->m_square = m_square;
    return node;
}

void CNodeParenthese::SerializeNode(CRpnBuffer &buffer)
{
    CRpnNode::SerializeNode(buffer);
    std::int32_t open = m_open, square = m_square;
    buffer.Transfer(open);
    buffer.Transfer(square);
    m_open = open != 0;
    m_square = square != 0;
}

CRpnNode *CNodeComment::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CNodeComment *>(CRpnNode::Clone(tree, position, row, col));
    node->m_text = m_text;
    return node;
}

void CNodeComment::SerializeNode(CRpnBuffer &buffer)
{
    CRpnNode::SerializeNode(buffer);
    transferString(buffer, m_text);
}
