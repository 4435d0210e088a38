// Values to texts and texts to values.

#include "functions/rpnconversions.h"

#include "formula/rpndictionary.h"
#include "formula/rpnkeywords.h"
#include "formula/rpntree.h"
#include "formula/rpnuserfunction.h"

namespace {

constexpr int kMsgErrorInFormula = 41653;
constexpr std::uint32_t kDigits = 16;

int digitsOrDefault(int digits)
{
    return digits < 1 || digits > 31 ? int(kDigits) : digits;
}

// The value of the first parameter; false when the call ends there: without
// parameters (the result is `none`), or when the parameter failed.
bool firstValue(CRpnNodeList *node, CRpnData &value, const CRpnData &none, CRpnData &result, unsigned char &status)
{
    if (node->GetOperandCount() == 0) {
        result = none;
        return false;
    }
    return EvaluateArgument(node, 0, value, result, status);
}

// The named values of the parameters after the first; false, with the
// result 0, when one failed.
bool readNamedValues(CRpnNodeList *node, CMapStringToRpnData &named, bool upperNames, CRpnData &result,
                     unsigned char &status)
{
    for (int i = 1; i < node->GetOperandCount(); ++i) {
        ReadNamedParam(node->m_children[std::size_t(i)], named, status, upperNames);
        if (status == 0) {
            result.SetInt(0);
            return false;
        }
    }
    return true;
}

} // namespace

void CNodeToString::Evaluate(CRpnData &result, unsigned char &status)
{
    CRpnData value;
    if (!firstValue(this, value, CRpnData(QString()), result, status))
        return;
    int digits = int(kDigits);
    if (GetOperandCount() >= 2 && m_children[1]) {
        // A failing precision falls back to 16 digits; the call goes on.
        CRpnData d;
        unsigned char own = 1;
        m_children[1]->Evaluate(d, own);
        if (own != 0)
            digits = d.IsReal() || d.IsInt() ? d.GetInt() : 6;
    }
    result.SetText(value.GetText(std::uint32_t(digitsOrDefault(digits))));
}

void CNode_ToString2::Evaluate(CRpnData &result, unsigned char &status)
{
    CRpnData value;
    if (!firstValue(this, value, CRpnData(QString()), result, status))
        return;
    if (GetOperandCount() == 1) {
        result.SetText(value.GetText(kDigits));
        return;
    }
    CMapStringToRpnData options;
    if (readNamedValues(this, options, true, result, status))
        result.SetText(value.FormatValue(options));
}

namespace {

// The failure of a run inside Value, taken over by the calling tree.
void reportInnerFailure(CRpnNode *node, const CEquationTree &inner, unsigned char &status)
{
    status = 0;
    CEquationTree *tree = node->m_tree;
    if (!tree || tree->HasError())
        return;
    const int row = inner.GetErrorRow() > 0 ? inner.GetErrorRow() : 1;
    const int col = inner.GetErrorCol() > 0 ? inner.GetErrorCol() : 0;
    QString message = RpnMessage(kMsgErrorInFormula, {node->GetName(), row, col});
    if (inner.HasError())
        message += QStringLiteral(" ::") + inner.GetErrorMessage();
    // Rows inside the text count from the node's own row.
    tree->ReportError(status, message, node->GetName(), node->m_row + row - 1, node->m_col + col);
}

// Inside a function the text sees the call's variables too, as values:
// what the text assigns stays in the text.  Named values come first.
void offerCallVariables(CEquationTree *tree, CMapStringToRpnData &named)
{
    CRpnCallFrame *frame = tree ? tree->GetCallFrame() : nullptr;
    const CRpnUserFunction *function = frame ? frame->GetFunction() : nullptr;
    if (!function)
        return;
    auto offer = [&named, frame](const QString &name) {
        if (named.FindHere(name))
            return;
        if (CRpnData *v = frame->Find(name))
            named.SetAt(name, *v);
    };
    for (const QString &name : function->m_parameterNames)
        offer(name);
    WalkTree(function->m_body, [&offer](CRpnNode *node) {
        if (CNodeVariable *variable = node->AsVariable(); variable && !variable->IsConstant())
            offer(variable->m_name);
        return 0;
    });
}

// Runs a compiled tree; false (reported) when the run fails.
bool runInner(CRpnNode *node, CEquationTree &inner, CRpnData &outcome, unsigned char &status)
{
    if (inner.Run(outcome) == 1)
        return true;
    reportInnerFailure(node, inner, status);
    return false;
}

} // namespace

void CNodeToValue::Evaluate(CRpnData &result, unsigned char &status)
{
    CRpnData value;
    if (!firstValue(this, value, CRpnData(0), result, status))
        return;
    if (!value.IsString() && !value.IsFormula()) {
        result = std::move(value);
        return;
    }
    // The named values are read before the text is compiled, so that the
    // compiled text finds them among its locals.
    CMapStringToRpnData named;
    if (!readNamedValues(this, named, false, result, status))
        return;
    CRpnData outcome;
    if (value.IsString()) {
        CEquationTree inner;
        if (m_tree) {
            inner.CopySettingsFrom(*m_tree);
            inner.BorrowFunctions(*m_tree);
            inner.m_rowIndex = m_tree->m_rowIndex;
            inner.SetSampling(m_tree->GetSamplingStep(), m_tree->GetSamplingX(), m_tree->GetSamplingCount());
        }
        // The inner tree reports to this node; only the calling tree throws.
        inner.throwOnError = 0;
        offerCallVariables(m_tree, named);
        if (inner.Compile(value.GetTextValue(), &named, true) != 1) {
            const QString trimmed = value.GetTextValue().trimmed();
            if ((!m_tree || !m_tree->HasError()) && trimmed.size() >= 2 && trimmed.startsWith(u'{')
                && trimmed.endsWith(u'}'))
                result.SetText(trimmed);
            else
                result.SetInt(0);
            return;
        }
        if (!runInner(this, inner, outcome, status)) {
            result.SetInt(0);
            return;
        }
    } else {
        outcome = value;
    }
    if (outcome.GetKind() == RPN_ARRAY && outcome.GetSize() == 1)
        outcome = CRpnData(outcome.GetItems()[0]);
    if (outcome.IsFormula() && outcome.GetFormula()) {
        CEquationTree *formula = outcome.GetFormula();
        const std::int32_t throwing = formula->throwOnError;
        formula->throwOnError = 0;
        formula->ResetError();
        CRpnData again;
        const bool ok = runInner(this, *formula, again, status);
        formula->throwOnError = throwing;
        if (!ok) {
            result.SetInt(0);
            return;
        }
        outcome = std::move(again);
    }
    result = std::move(outcome);
}

void ProvideConversionFunctions(CRpnPrototypeArray &prototypes)
{
    CRpnNode *const nodes[] = {new CNodeToValue, new CNodeToString, new CNode_ToString2};
    for (CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), node);
}
