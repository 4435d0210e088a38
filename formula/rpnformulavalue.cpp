// Formulas as values.  A FORMULA owns a CEquationTree; the values reach it
// through the support object registered here.

#include "formula/rpnformulavalue.h"

#include "formula/rpnbuffer.h"
#include "formula/rpnoperators.h"
#include "formula/rpnseams.h"
#include "formula/rpntree.h"
#include "formula/rpnwritetext.h"

#include <exception>
#include <mutex>

namespace {

// The version words of the buffers that copy trees: texts in UTF-16.
constexpr std::uint16_t kStreamVersion = 10;

// The expression of a formula's tree: the root without the one-child lists
// round it.
const CRpnNode *expressionOf(const CEquationTree *tree)
{
    const CRpnNode *root = tree ? tree->GetRoot() : nullptr;
    while (root && root->IsList() && !root->IsMultiOperand() && root->GetOperandCount() == 1)
        root = root->GetOperand(0);
    return root;
}

QString sourceOf(const CRpnData &value)
{
    if (value.IsFormula())
        return value.GetFormula() ? value.GetFormula()->GetSource() : QString();
    return value.GetText(16 | RPN_TEXT_QUOTES);
}

class FormulaSupport : public CRpnFormulaSupport
{
public:
    void DeleteTree(CEquationTree *tree) override { delete tree; }

    CEquationTree *CloneTree(const CEquationTree *tree) override
    {
        if (!tree)
            return nullptr;
        // Through the saved form, which copies the nodes and the functions.
        CRpnBuffer buffer(kStreamVersion);
        buffer.Reset(CBufferIO::ModeWrite, 256);
        if (!const_cast<CEquationTree *>(tree)->Serialize(buffer))
            return nullptr;
        buffer.m_mode = CBufferIO::ModeRead;
        buffer.m_cursor = buffer.m_data;
        auto *copy = new CEquationTree(tree->m_hostFactor);
        if (!copy->Serialize(buffer)) {
            delete copy;
            return nullptr;
        }
        copy->CopySettingsFrom(*tree);
        copy->SetSource(tree->GetSource());
        return copy;
    }

    void Evaluate(CEquationTree *tree, CRpnData &result) override
    {
        CRpnData value;
        try {
            if (tree->Run(value) == 1) {
                result = value;
                return;
            }
        } catch (const std::exception &) {
        }
        result.SetNull();
    }

    // The text of a formula is its expression written anew, so that a formula
    // built by arithmetic reads as one would write it.
    QString GetSource(const CEquationTree *tree) override
    {
        QString out;
        if (tree && tree->GetRoot())
            WriteNodeText(tree->GetRoot(), out, 0);
        return out;
    }

    void Combine(int op, const CRpnData &left, const CRpnData &right, CRpnData &result) override
    {
        CNodePlus plus;
        CNodeMinus minus;
        CNodeMultiply multiply;
        CNodeDivide divide;
        CNodeMod mod;
        const CRpnNode *node = nullptr;
        switch (op) {
        case '+': node = &plus; break;
        case '-': node = &minus; break;
        case '*': node = &multiply; break;
        case '/': node = &divide; break;
        case '%': node = &mod; break;
        default: result.SetNull(); return;
        }
        const CRpnData operands[2] = {left, right};
        MakeFormulaOfNode(node, operands, 2, result);
    }

    void SerializeTree(CEquationTree *&tree, CRpnBuffer &buffer) override
    {
        if (buffer.IsWriting()) {
            CEquationTree empty;
            (tree ? tree : &empty)->Serialize(buffer);
            return;
        }
        auto *read = new CEquationTree;
        if (read->Serialize(buffer)) {
            tree = read;
        } else {
            delete read;
            tree = nullptr;
        }
    }

    bool EvaluateText(const QString &text, CRpnData &result) override
    {
        CEquationTree tree;
        if (!tree.Compile(text, nullptr, true))
            return false;
        try {
            return tree.Run(result) == 1;
        } catch (const std::exception &) {
            return false;
        }
    }
};

} // namespace

void MakeFormulaOfNode(const CRpnNode *node, const CRpnData *operands, int count, CRpnData &result)
{
    const CEquationTree *model = nullptr;
    for (int i = 0; i < count && !model; ++i) {
        if (operands[i].IsFormula())
            model = operands[i].GetFormula();
    }
    auto *tree = new CEquationTree(1.0);
    if (model) {
        tree->CopySettingsFrom(*model);
        tree->BorrowFunctions(*model);
    }
    CRpnNode *copy = node->Clone(tree, node->m_position, node->m_row, node->m_col);
    for (int i = 0; i < count; ++i) {
        const CRpnData &value = operands[i];
        CRpnNode *operand;
        if (value.IsFormula()) {
            const CRpnNode *expression = expressionOf(value.GetFormula());
            operand = expression ? CloneSubtree(expression, tree) : new CNodeNULL;
            operand->m_tree = tree;
        } else {
            auto *constant = new CNodeConstant;
            constant->m_tree = tree;
            constant->m_value = value;
            constant->m_text = sourceOf(value);
            operand = constant;
        }
        copy->SetOperand(i, operand);
    }
    auto *root = new CRpnNodeList;
    root->m_tree = tree;
    root->Append(copy);
    tree->SetRoot(root);
    QString source;
    WriteNodeText(root, source, 0);
    tree->SetSource(source);
    result.SetFormula(tree);
}

void RegisterFormulaSupport()
{
    // Never destroyed: values may be freed by static destructors at exit.
    static std::once_flag once;
    std::call_once(once, [] { SetRpnFormulaSupport(new FormulaSupport); });
}
