// Error, Warning and GetLastError.

#include "formula/rpnreporters.h"

#include "formula/rpndictionary.h"
#include "formula/rpnstatements.h"
#include "formula/rpntree.h"

namespace {

constexpr int kMsgScriptError = 41659;
const QString kLastError = QStringLiteral("LastError");

void appendText(QString &message, const CRpnData &value)
{
    if (value.GetKind() == RPN_ARRAY) {
        for (int i = 0; i < value.GetSize(); ++i)
            message += value.GetItems()[i].GetText(16);
    } else if (value.GetKind() == RPN_ARRAY_R) {
        for (int i = 0; i < value.GetSize(); ++i)
            message += CRpnData(value.GetRealData()[i]).GetText(16);
    } else {
        message += value.GetText(16);
    }
}

} // namespace

QString CNodeErrorWarningBase::FormMessage()
{
    QString message;
    const bool hadError = m_tree && m_tree->HasError();
    for (CRpnNode *child : m_children) {
        if (!child)
            continue;
        CRpnData value;
        unsigned char status = 1;
        child->Evaluate(value, status);
        // A failing operand adds nothing, and its error does not stay in
        // the tree: the message is what this node reports.
        if (status == 0) {
            if (m_tree && !hadError)
                m_tree->ResetError();
            continue;
        }
        appendText(message, value);
    }
    return message;
}

void CNodeError::Evaluate(CRpnData &result, unsigned char &status)
{
    status = 0;
    result.SetNull();
    QString message = FormMessage();
    if (message.isEmpty())
        message = RpnMessage(kMsgScriptError);
    if (m_tree) {
        // Reported without the tree's own throw: what unwinds is the
        // script's exception.
        const int throwing = m_tree->throwOnError;
        m_tree->throwOnError = 0;
        m_tree->ReportError(status, message, GetName(), m_row, m_col);
        m_tree->throwOnError = throwing;
    }
    ThrowRpnErrorException(message, GetName(), m_row, m_col);
}

void CNodeWarning::Evaluate(CRpnData &result, unsigned char &status)
{
    const QString message = FormMessage();
    if (!message.isEmpty() && m_tree)
        m_tree->m_warnings.append(message);
    status = 1;
    result.SetNull();
}

void CNodeGetError::Evaluate(CRpnData &result, unsigned char &)
{
    if (CMapStringToRpnData *variables = GetMainVariablesOf(m_tree, this)) {
        if (variables->Lookup(kLastError, result)) {
            variables->RemoveKey(kLastError);
            return;
        }
    }
    result = CRpnData(m_tree ? m_tree->errorText : QString());
}
