// The directive nodes.

#include "formula/rpnmacros.h"

#include "formula/rpnbuffer.h"

void CNodeMacroUnDefine::Evaluate(CRpnData &result, unsigned char &status)
{
    if (!m_left) {
        result.SetNull();
        return;
    }
    Store(this, m_left, CRpnData(), result, status);
}

QString CNodeMacroBracket::GetName() const
{
    switch (m_role) {
    case RoleElse: return QStringLiteral("#else");
    case RoleEndIf: return QStringLiteral("#endif");
    default: return QStringLiteral("#elif");
    }
}

CRpnNode *CNodeMacroBracket::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CNodeMacroBracket *>(CNodeBracket::Clone(tree, position, row, col));
    node->m_role = m_role;
    return node;
}

void CNodeMacroBracket::SerializeNode(CRpnBuffer &buffer)
{
    CNodeBracket::SerializeNode(buffer);
    buffer.Transfer(m_role);
}

QString GetDirectiveSource(const CRpnNode *node, const QString &errorText)
{
    if (!node)
        return QString();
    const char *text = nullptr;
    switch (node->GetKind()) {
    case RPN_NODE_MACRO_DEFINE: text = CNodeMacroDefine::DirectiveText; break;
    case RPN_NODE_MACRO_UNDEFINE: text = CNodeMacroUnDefine::DirectiveText; break;
    case RPN_NODE_MACRO_IF: text = CNodeMacroIf::DirectiveText; break;
    case RPN_NODE_MACRO_IFDEF: text = CNodeMacroIfDef::DirectiveText; break;
    case RPN_NODE_MACRO_IFNDEF: text = CNodeMacroIfNDef::DirectiveText; break;
    case RPN_NODE_MACRO_ELSE_IF: text = CNodeMacroElseIf::DirectiveText; break;
    case RPN_NODE_MACRO_ELSE: text = CNodeMacroElse::DirectiveText; break;
    case RPN_NODE_MACRO_END_IF: text = CNodeMacroEndIf::DirectiveText; break;
    case RPN_NODE_MACRO_ERROR:
        return QString::fromLatin1(CNodeMacroError::DirectiveText) + errorText + QStringLiteral("\"}\r\n");
    default: return QString();
    }
    return QString::fromLatin1(text);
}
