// Writing nodes back as source.  Each class is written after its shape: a
// value as its spelling, an operator between its operands (in parentheses
// where the operand binds less tightly), a function as its name with the
// arguments in parentheses, and the statements with their bodies in braces.

#include "formula/rpnwritetext.h"

#include "formula/rpnkeywords.h"
#include "formula/rpnmacros.h"
#include "formula/rpnnodes.h"
#include "formula/rpnoperators.h"
#include "formula/rpnstatements.h"
#include "formula/rpntree.h"
#include "formula/rpnuserfunction.h"

#include <QStringList>
#include <QVarLengthArray>
#include <algorithm>
#include <cmath>

namespace {

const QString kLineEnd = QStringLiteral("\r\n");

void write(const CRpnNode *node, QString &out, int indent)
{
    if (node)
        node->WriteText(out, indent);
}

// A text literal: in double quotes, or single quotes when it holds a double
// quote; a text with both kinds, or with line ends, is written as pieces
// that the compiler joins again (_CRLF stands for a line end).
void writeText(const QString &text, QString &out)
{
    if (text.isEmpty()) {
        out += QStringLiteral("\"\"");
        return;
    }
    QStringList pieces;
    QString piece;
    auto flush = [&] {
        if (!piece.isEmpty())
            pieces << piece;
        piece.clear();
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') {
            flush();
            pieces << QString(); // a line end
            ++i;
            continue;
        }
        const QChar c = text[i];
        if (c == u'"') {
            if (piece.contains(u'\'')) {
                flush();
            }
        } else if (c == u'\'') {
            if (piece.contains(u'"'))
                flush();
        }
        piece += c;
    }
    flush();
    bool first = true;
    for (const QString &p : pieces) {
        if (!first)
            out += u' ';
        first = false;
        if (p.isEmpty()) {
            out += QStringLiteral("_CRLF");
            continue;
        }
        const QChar quote = p.contains(u'"') ? u'\'' : u'"';
        out += quote;
        out += p;
        out += quote;
    }
}

QString numberText(double value)
{
    if (std::isnan(value))
        return QStringLiteral("(0/0)");
    if (std::isinf(value))
        return value > 0 ? QStringLiteral("1E999") : QStringLiteral("-1E999");
    QString text = QString::number(value, 'g', 17);
    // The shortest spelling that reads back as the same double.
    for (int digits = 1; digits < 17; ++digits) {
        const QString shorter = QString::number(value, 'g', digits);
        if (shorter.toDouble() == value) {
            text = shorter;
            break;
        }
    }
    return text.replace(u'e', u'E');
}

bool isNegativeLiteral(const CRpnNode *node)
{
    if (!node || !node->IsValue() || node->IsVariable() || node->IsText())
        return false;
    QString text;
    node->WriteText(text, 0);
    return text.startsWith(u'-') || text.startsWith(u'+');
}

// How tightly the written form of a node binds: values, lists, indexing and
// everything written as name(...) are closed; a sign or a prefix step binds
// like an addition, so that it is kept in parentheses next to operators.
int writtenPrecedence(const CRpnNode *node)
{
    constexpr int closed = 1000;
    const int kind = node->GetKind();
    switch (kind) {
    case RPN_NODE_SINGLE_MINUS:
    case RPN_NODE_SINGLE_PLUS:
    case RPN_NODE_INCREMENT:
    case RPN_NODE_DECREMENT:
        return RPN_PREC_ADD;
    case RPN_NODE_LIST:
    case RPN_NODE_ARRAY_INDEX:
        return closed;
    default:
        break;
    }
    if (node->IsValue())
        return isNegativeLiteral(node) ? RPN_PREC_ADD : closed;
    if (node->IsIFLike() || node->IsAssignment() || kind == RPN_NODE_COMMA || kind == RPN_NODE_RETURN)
        return node->GetPrecedence();
    if (node->IsMultiOperand() || node->IsUnary() || node->GetOperandCount() == 3)
        return closed;
    if (node->GetPrecedence() >= RPN_PREC_FUNCTION)
        return closed;
    return node->GetPrecedence();
}

// An operand of an operator, in parentheses when it binds less tightly than
// `limit`, or as tightly on the right (`right`), or when on the right it
// starts with a sign: `a<--b` would be read as `a<-` and `-b`.
void writeOperand(const CRpnNode *operand, int limit, bool right, QString &out, int indent)
{
    if (!operand)
        return;
    QString text;
    write(operand, text, indent);
    const int p = writtenPrecedence(operand);
    const bool wrap = p < limit || (right && p == limit) ||
                      (right && (text.startsWith(u'-') || text.startsWith(u'+')));
    if (wrap)
        out += u'(';
    out += text;
    if (wrap)
        out += u')';
}

bool isPlainList(const CRpnNode *node)
{
    return node && node->GetKind() == RPN_NODE_LIST;
}

bool isStatement(const CRpnNode *node)
{
    if (!node || node->IsMacro())
        return false;
    return node->IsIFLike() || node->IsWhile() || node->IsAssignment();
}

// The children of a list: "," between them, or "; " and a line end in a
// block that holds statements (a statement after a comma would be taken as
// part of the expression before it).
void writeItems(const CRpnNode *list, QString &out, int indent)
{
    const int count = list->GetOperandCount();
    bool block = false;
    for (int i = 0; i < count && !block; ++i)
        block = isStatement(list->GetOperand(i));
    for (int i = 0; i < count; ++i) {
        write(list->GetOperand(i), out, indent);
        if (i + 1 < count)
            out += block ? QStringLiteral("; \r\n") : QStringLiteral(",");
    }
}

void writeList(const CRpnNode *list, QString &out, int indent)
{
    const int count = list->GetOperandCount();
    // An empty list inside a formula is written as such; only the empty
    // script writes nothing.
    if (count == 0) {
        if (list->m_parent)
            out += QStringLiteral("{}");
        return;
    }
    // The script itself needs braces only round two or more statements; a
    // list inside a formula always has them, or {x} would come back as x.
    const bool braces = count >= 2 || list->m_parent;
    if (braces)
        out += u'{';
    writeItems(list, out, indent);
    if (braces)
        out += u'}';
}

// The part of a statement between braces: a block's children, or one node.
void writeBody(const CRpnNode *body, QString &out, int indent)
{
    if (isPlainList(body))
        writeItems(body, out, indent + 1);
    else
        write(body, out, indent + 1);
    if (!out.endsWith(kLineEnd))
        out += kLineEnd;
}

// The word a call is written with: its display name when that word compiles
// to the same class, else the keyword of the class (a few functions show a
// name in messages that is not their keyword).
QString callName(const CRpnNode *node)
{
    const QString name = node->GetName();
    const int kind = node->GetKind();
    if (kind == RPN_NODE_FUNCTION)
        return name;
    BuildKeywordTable();
    const int found = GetKeywordTable().Lookup(name.toUpper());
    if (found == kind || (found < 0 && GetPrototypes().GetAt(kind) == nullptr))
        return name;
    for (const CRpnKeywordRow &row : GetLanguageKeywords()) {
        if (row.classNumber == kind)
            return QString::fromLatin1(row.name);
    }
    return name;
}

// A branch of IF or WHILE: a block in braces on lines of its own; a single
// statement that was written without braces stays without them (braces
// would make it a block, whose value is a list).
void writeBranch(const CRpnNode *branch, QString &out, int indent)
{
    if (isPlainList(branch) || !branch) {
        out += QStringLiteral("\r\n{\r\n");
        if (branch)
            writeBody(branch, out, indent);
        out += QStringLiteral("}\r\n");
        return;
    }
    out += u' ';
    write(branch, out, indent + 1);
    out += u' ';
}

void writeCall(const QString &name, const CRpnNode *node, QString &out, int indent)
{
    out += name;
    out += u'(';
    const int count = node->GetOperandCount();
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            out += u',';
        write(node->GetOperand(i), out, indent);
    }
    out += u')';
}

void writeIfLike(const CNode_IF *node, QString &out, int indent)
{
    const int kind = node->GetKind();
    if (node->IsMacro()) {
        if (kind == RPN_NODE_MACRO_END_IF || kind == RPN_NODE_MACRO_ELSE) {
            out += QString::fromLatin1(kind == RPN_NODE_MACRO_END_IF ? CNodeMacroEndIf::DirectiveText
                                                                       : CNodeMacroElse::DirectiveText);
            return;
        }
        out += GetDirectiveSource(node);
        write(node->m_condition, out, indent);
        out += kLineEnd;
        write(node->m_then, out, indent);
        if (node->m_else) {
            out += QString::fromLatin1(CNodeMacroElse::DirectiveText);
            write(node->m_else, out, indent);
        }
        if (kind != RPN_NODE_MACRO_ELSE_IF)
            out += QString::fromLatin1(CNodeMacroEndIf::DirectiveText);
        return;
    }
    if (node->IsCatch()) {
        out += QStringLiteral("Catch(");
        write(node->m_then, out, indent);
        out += QStringLiteral(")\r\n{\r\n");
        if (node->m_else)
            writeBody(node->m_else, out, indent);
        out += QStringLiteral("}\r\n");
        return;
    }
    out += node->IsWhile() ? QStringLiteral("while(") : QStringLiteral("if(");
    write(node->m_condition, out, indent);
    out += u')';
    writeBranch(node->m_then, out, indent);
    if (!node->IsWhile() && node->m_else) {
        out += QStringLiteral("else");
        writeBranch(node->m_else, out, indent);
    }
}

// The node when it is written as `left op right` by the last part of
// writeDouble, else null.
const CNodeDoubleOperand *infixOperator(const CRpnNode *node)
{
    if (!node || node->IsValue() || node->IsIFLike() || node->IsMultiOperand() || node->IsAssignment()
        || node->GetPrecedence() >= RPN_PREC_FUNCTION)
        return nullptr;
    switch (node->GetKind()) {
    case RPN_NODE_LIST:
    case RPN_NODE_END:
    case RPN_NODE_COMMENT:
    case RPN_NODE_GET_ERROR:
    case RPN_NODE_MACRO_ERROR:
    case RPN_NODE_ARRAY_INDEX:
    case RPN_NODE_COMMA:
    case RPN_NODE_MACRO_DEFINE:
    case RPN_NODE_MACRO_UNDEFINE:
        return nullptr;
    default:
        return dynamic_cast<const CNodeDoubleOperand *>(node);
    }
}

void writeDouble(const CNodeDoubleOperand *node, QString &out, int indent)
{
    const int kind = node->GetKind();
    if (kind == RPN_NODE_ARRAY_INDEX) {
        writeOperand(node->m_left, RPN_PREC_FUNCTION, false, out, indent);
        out += u'[';
        if (isPlainList(node->m_right))
            writeItems(node->m_right, out, indent);
        else
            write(node->m_right, out, indent);
        out += u']';
        return;
    }
    if (kind == RPN_NODE_COMMA) {
        write(node->m_left, out, indent);
        out += u',';
        write(node->m_right, out, indent);
        return;
    }
    if (kind == RPN_NODE_MACRO_DEFINE || kind == RPN_NODE_MACRO_UNDEFINE) {
        out += GetDirectiveSource(node);
        write(node->m_left, out, indent);
        if (node->m_right) {
            out += u' ';
            write(node->m_right, out, indent);
        }
        out += kLineEnd;
        return;
    }
    if (node->IsAssignment()) {
        write(node->m_left, out, indent);
        out += node->GetName();
        if (node->m_right && node->m_right->IsValue())
            write(node->m_right, out, indent);
        else
            writeOperand(node->m_right, RPN_PREC_ASSIGN, false, out, indent);
        return;
    }
    const int p = node->GetPrecedence();
    if (p >= RPN_PREC_FUNCTION) {
        writeCall(callName(node), node, out, indent);
        return;
    }
    // Operators group from the left: an operand on the right that binds as
    // tightly as the operator keeps its parentheses.  A left operand that is
    // itself such an operator needs none, so a long left-deep chain (a sum
    // of many terms) is written with a loop, not a frame per link.
    QVarLengthArray<const CNodeDoubleOperand *, 16> chain;
    chain.push_back(node);
    for (;;) {
        const CNodeDoubleOperand *link = chain.back();
        const CNodeDoubleOperand *left = infixOperator(link->m_left);
        if (!left || writtenPrecedence(left) < link->GetPrecedence())
            break;
        chain.push_back(left);
    }
    const CNodeDoubleOperand *innermost = chain.back();
    writeOperand(innermost->m_left, innermost->GetPrecedence(), false, out, indent);
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
        out += (*it)->GetName();
        writeOperand((*it)->m_right, (*it)->GetPrecedence(), true, out, indent);
    }
}

void writeSingle(const CNodeSingleOperand *node, QString &out, int indent)
{
    const int kind = node->GetKind();
    const CRpnNode *operand = node->m_operand;
    if (kind == RPN_NODE_SINGLE_MINUS || kind == RPN_NODE_SINGLE_PLUS) {
        out += node->GetName();
        // A sign right before a number would become the number's own sign.
        const bool number = operand && operand->IsValue() && !operand->IsVariable() && !operand->IsText();
        const bool wrap = operand && (number || writtenPrecedence(operand) <= RPN_PREC_POWER);
        if (wrap)
            out += u'(';
        write(operand, out, indent);
        if (wrap)
            out += u')';
        return;
    }
    if (kind == RPN_NODE_INCREMENT || kind == RPN_NODE_DECREMENT) {
        const bool before = static_cast<const CNodeIncrement *>(node)->m_fix < 0;
        if (before)
            out += node->GetName();
        write(operand, out, indent);
        if (!before)
            out += node->GetName();
        return;
    }
    if (kind == RPN_NODE_RETURN) {
        out += QStringLiteral("return");
        if (operand) {
            out += u' ';
            writeOperand(operand, RPN_PREC_ASSIGN, false, out, indent);
        }
        return;
    }
    out += node->GetName();
    out += u'(';
    write(operand, out, indent);
    out += u')';
}

} // namespace

bool WriteValueLiteral(const CRpnData &value, QString &out)
{
    switch (value.GetKind()) {
    case RPN_NULL:
        out += QStringLiteral("NULL");
        return true;
    case RPN_INT:
        out += QString::number(value.GetIntValue());
        return true;
    case RPN_REAL: {
        const int exponent = value.GetDisplayExponent();
        if (exponent != 0) {
            out += QStringLiteral("%1E%2").arg(numberText(value.GetRealValue() / std::pow(10.0, exponent)))
                       .arg(exponent);
            return true;
        }
        out += numberText(value.GetRealValue());
        return true;
    }
    case RPN_STRING:
        writeText(value.GetTextValue(), out);
        return true;
    default:
        return false;
    }
}

void WriteNodeText(const CRpnNode *node, QString &out, int indent)
{
    if (!node)
        return;
    const int kind = node->GetKind();
    switch (kind) {
    case RPN_NODE_COMMENT:
        out += static_cast<const CNodeComment *>(node)->m_text;
        return;
    case RPN_NODE_NULL:
        out += QStringLiteral("NULL");
        return;
    case RPN_NODE_TEXT:
        writeText(static_cast<const CNodeConstant *>(node)->m_value.GetTextValue(), out);
        return;
    case RPN_NODE_VARIABLE: {
        const auto *v = static_cast<const CNodeVariable *>(node);
        if (!v->m_tag.isEmpty())
            out += QStringLiteral("(%1) ").arg(v->m_tag);
        out += v->m_name;
        return;
    }
    case RPN_NODE_CONSTANT: {
        const auto *c = static_cast<const CNodeConstant *>(node);
        if (!c->m_text.isEmpty())
            out += c->m_text;
        else if (!WriteValueLiteral(c->m_value, out))
            out += QStringLiteral("NULL");
        return;
    }
    case RPN_NODE_END:
        return;
    case RPN_NODE_GET_ERROR:
        out += QStringLiteral("GetLastError()");
        return;
    case RPN_NODE_MACRO_ERROR: {
        QString text;
        const int count = node->GetOperandCount();
        for (int i = 0; i < count; ++i) {
            const CRpnNode *child = node->GetOperand(i);
            if (child && child->IsText())
                text += static_cast<const CNodeConstant *>(child)->m_value.GetTextValue();
        }
        out += GetDirectiveSource(node, text);
        return;
    }
    default:
        break;
    }
    if (node->IsIFLike()) {
        writeIfLike(static_cast<const CNode_IF *>(node), out, indent);
        return;
    }
    if (kind == RPN_NODE_LIST) {
        writeList(node, out, indent);
        return;
    }
    if (node->IsMultiOperand()) {
        writeCall(callName(node), node, out, indent);
        return;
    }
    if (const auto *d = dynamic_cast<const CNodeDoubleOperand *>(node)) {
        writeDouble(d, out, indent);
        return;
    }
    if (const auto *s = dynamic_cast<const CNodeSingleOperand *>(node)) {
        writeSingle(s, out, indent);
        return;
    }
    if (node->GetOperandCount() > 0) { // iif, SETVALUE, SETTEXT, nodes of their own
        writeCall(callName(node), node, out, indent);
        return;
    }
    // Punctuation that the fold leaves no trace of, and nodes without operands.
    out += node->GetName();
}

void CRpnNode::WriteText(QString &out, int indent) const
{
    WriteNodeText(this, out, indent);
}

void CEquationTree::GetFormulaText(QString &out, int indent) const
{
    QList<CRpnUserFunction *> functions = m_functions.values();
    std::sort(functions.begin(), functions.end(),
              [](const CRpnUserFunction *a, const CRpnUserFunction *b) { return a->m_name < b->m_name; });
    for (const CRpnUserFunction *f : functions) {
        out += QStringLiteral("Function %1(").arg(f->m_name);
        for (int i = 0; i < f->GetParameterCount(); ++i) {
            if (i > 0)
                out += QStringLiteral(", ");
            if (f->IsByReference(i))
                out += QStringLiteral("_ref ");
            out += f->m_parameterNames[i];
            const CRpnData def = f->m_defaults.value(i);
            if (!def.IsNull()) {
                out += QStringLiteral(" = ");
                WriteValueLiteral(def, out);
            }
        }
        out += QStringLiteral(")\r\n{\r\n");
        if (f->m_body)
            writeBody(f->m_body, out, indent);
        out += QStringLiteral("}\r\n");
    }
    write(m_root, out, indent);
}
