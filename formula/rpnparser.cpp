// The parser's first passes: items to nodes, the rewriting of neighbours and
// the sequence check.  Block building, ordering, folding and the structure
// check are in rpnfold.cpp.

#include "formula/rpnparser.h"

#include "formula/rpndictionary.h"
#include "formula/rpnexception.h"
#include "formula/rpnfunctioncall.h"
#include "formula/rpnkeywords.h"
#include "formula/rpnmacros.h"
#include "formula/rpnnumber.h"
#include "formula/rpnscanner.h"
#include "formula/rpnstatements.h"
#include "formula/rpntree.h"

namespace {

constexpr int kMsgSyntaxError = 43028;
constexpr int kMsgMissingOperand = 43031;
constexpr int kMsgTwoValues = 43032;
constexpr int kMsgCannotAssign = 43035;
constexpr int kMsgRefused = 43047;
constexpr int kMsgNoSuchFunction = 43302;

constexpr double kE = 2.718281828459045;
constexpr double kPi = 3.141592653589793;

bool isRoundOpen(const CRpnNode *n)
{
    return n && n->IsParenthesisOpen() && !static_cast<const CNodeParenthese *>(n)->IsSquare();
}

bool isRoundClose(const CRpnNode *n)
{
    return n && n->IsParenthesisClose() && !static_cast<const CNodeParenthese *>(n)->IsSquare();
}

bool isSquareOpen(const CRpnNode *n)
{
    return n && n->IsParenthesisOpen() && static_cast<const CNodeParenthese *>(n)->IsSquare();
}

bool isSoftEnd(const CRpnNode *n)
{
    return n && n->IsEnd() && (n->m_flags & RPN_NODE_SOFT_END) != 0;
}

bool isIncrement(const CRpnNode *n)
{
    return n && (n->GetKind() == RPN_NODE_INCREMENT || n->GetKind() == RPN_NODE_DECREMENT);
}

// A postfix ++ or -- ends a value; a prefix one waits for its operand.
bool isPostfix(const CRpnNode *n)
{
    return isIncrement(n) && static_cast<const CNodeIncrement *>(n)->m_fix > 0;
}

bool isWordItem(const CRpnParserItem &item)
{
    return item.m_kind == RPN_TOKEN_WORD || item.m_kind == RPN_TOKEN_CALL || item.m_kind == RPN_TOKEN_HOST_VARIABLE;
}

} // namespace

CRpnParser::CRpnParser(CEquationTree *tree, CMapStringToRpnData *locals, bool allowNewVariables,
                       bool functionBody, QStringList *outVariableNames)
    : m_tree(tree), m_locals(locals), m_allowNew(allowNewVariables), m_functionBody(functionBody),
      m_outNames(outVariableNames)
{
}

CRpnParser::~CRpnParser()
{
    for (CRpnNode *node : m_nodes)
        DeleteSubtree(node);
}

bool CRpnParser::fail(const CRpnNode *at, int messageId, std::initializer_list<CRpnFormatArg> args)
{
    unsigned char status = 1;
    const int throwing = m_tree->throwOnError;
    m_tree->throwOnError = 0; // a compile reports, it does not throw
    if (at)
        m_tree->ReportError(status, messageId, args, at->GetName(), at->m_row, at->m_col);
    else
        m_tree->ReportError(status, messageId, args, QString(), 1, 0);
    m_tree->throwOnError = throwing;
    return false;
}

bool CRpnParser::failAtItem(const CRpnParserItem &item, int messageId, std::initializer_list<CRpnFormatArg> args)
{
    unsigned char status = 1;
    const int throwing = m_tree->throwOnError;
    m_tree->throwOnError = 0;
    m_tree->ReportError(status, messageId, args, item.m_text, item.m_row, item.m_col);
    m_tree->throwOnError = throwing;
    return false;
}

CRpnNode *CRpnParser::Parse(const CRpnParserItemArray &items)
{
    bool any = false;
    for (const CRpnParserItem *item : items.m_items)
        any = any || item->IsSignificant();
    if (!any)
        return make<CNode_End>(0, 1, 0);

    if (!itemsToNodes(items) || !rewrite() || !checkSequence())
        return nullptr;
    CRpnNodeList *root = buildBlocks();
    if (!root)
        return nullptr;
    if (!processList(root) || !checkStructure(root)) {
        DeleteSubtree(root);
        return nullptr;
    }
    if (m_outNames)
        *m_outNames = m_seen;
    return root;
}

// --- pass 1: items to nodes ------------------------------------------------------------

bool CRpnParser::itemsToNodes(const CRpnParserItemArray &items)
{
    for (const CRpnParserItem *item : items.m_items) {
        if (item->m_kind == RPN_TOKEN_LINE_END) {
            lineEnd(*item);
            if (m_sectionPending)
                m_sectionLineEnded = true;
            continue;
        }
        if (!item->IsSignificant())
            continue;
        if (m_sectionPending && m_sectionLineEnded) {
            // The body of the directive before starts with this line.
            appendSectionMark(true, CNodeMacroBracket::RoleElseIf, m_sectionPending);
            m_sectionPending = nullptr;
        }
        CRpnNode *node = makeNode(*item);
        if (!node)
            return false;
        place(node, *item);
        CRpnNode *placed = previous(); // a sign is placed as a node of its own class
        if (m_definePending && m_nodes.size() >= 2 && m_nodes[m_nodes.size() - 2] == m_definePending) {
            // "#define a b" is read as "a #define b", an assignment.
            std::swap(m_nodes[m_nodes.size() - 2], m_nodes.back());
            m_definePending = nullptr;
        } else if (placed->IsMacro()) {
            arrangeDirective(placed);
        }
    }
    return true;
}

// --- directives ----------------------------------------------------------------------------

void CRpnParser::appendSectionMark(bool open, int role, const CRpnNode *at)
{
    auto *mark = make<CNodeMacroBracket>(at->m_position, at->m_row, at->m_col);
    mark->m_open = open;
    mark->m_role = role;
    m_nodes.push_back(mark);
}

void CRpnParser::dropSoftEnd()
{
    if (isSoftEnd(previous())) {
        delete m_nodes.back();
        m_nodes.pop_back();
    }
}

// A directive node has just been appended: it is put into IF shape.
void CRpnParser::arrangeDirective(CRpnNode *node)
{
    if (node->IsELSELike()) {
        // } #else {
        m_nodes.pop_back();
        dropSoftEnd();
        appendSectionMark(false, CNodeMacroBracket::RoleElse, node);
        m_nodes.push_back(node);
        appendSectionMark(true, CNodeMacroBracket::RoleElse, node);
        return;
    }
    if (node->IsIFLike()) {
        if (node->m_flags & RPN_NODE_MACRO_ENDIF) {
            // #endif is only the end of a section.
            m_nodes.pop_back();
            dropSoftEnd();
            appendSectionMark(false, CNodeMacroBracket::RoleEndIf, node);
            delete node;
            return;
        }
        if (node->m_flags & RPN_NODE_MACRO_ELIF) {
            // } #else #elif: the IF of the else-part.
            m_nodes.pop_back();
            dropSoftEnd();
            appendSectionMark(false, CNodeMacroBracket::RoleElseIf, node);
            m_nodes.push_back(make<CNodeMacroElse>(node->m_position, node->m_row, node->m_col));
            m_nodes.push_back(node);
        }
        m_sectionPending = node;
        m_sectionLineEnded = false;
        return;
    }
    if (node->GetKind() == RPN_NODE_MACRO_DEFINE)
        m_definePending = node;
}

// A line end ends the statement when what came last can end one.
void CRpnParser::lineEnd(const CRpnParserItem &item)
{
    const CRpnNode *p = previous();
    if (!p || p->IsEnd() || p->IsBinary() || p->IsParenthesisOpen() || p->IsComma() || p->IsBraceOpen())
        return;
    if (p->IsOperation() && !p->IsValue() && !isPostfix(p))
        return;
    auto *end = make<CNode_End>(item.m_position, item.m_row, item.m_col);
    end->m_flags |= RPN_NODE_SOFT_END;
    m_nodes.push_back(end);
}

CRpnNode *CRpnParser::makeNode(const CRpnParserItem &item)
{
    switch (item.m_kind) {
    case RPN_TOKEN_BRACKET: {
        const QChar c = item.m_text.isEmpty() ? QChar() : item.m_text[0];
        if (c == u'{' || c == u'}') {
            auto *b = make<CNodeBracket>(item.m_position, item.m_row, item.m_col);
            b->m_open = c == u'{';
            return b;
        }
        auto *p = make<CNodeParenthese>(item.m_position, item.m_row, item.m_col);
        p->m_open = c == u'(' || c == u'[';
        p->m_square = c == u'[' || c == u']';
        return p;
    }
    case RPN_TOKEN_NUMBER: {
        auto *n = make<CNodeConstant>(item.m_position, item.m_row, item.m_col);
        int consumed = 0, exponent = 0;
        n->m_value.SetDouble(ParseNumber(item.m_text, consumed, &exponent));
        n->m_value.SetDisplayExponent(exponent);
        n->m_text = item.m_text;
        return n;
    }
    case RPN_TOKEN_TEXT: {
        auto *t = make<CNodeText>(item.m_position, item.m_row, item.m_col);
        QString text = item.m_text;
        if (text.size() >= 2 && (text[0] == u'"' || text[0] == u'\'') && text.back() == text[0])
            text = text.mid(1, text.size() - 2);
        t->m_value.SetText(text);
        t->m_text = text;
        return t;
    }
    case RPN_TOKEN_HOST_VARIABLE: {
        auto *v = make<CNodeVariable>(item.m_position, item.m_row, item.m_col);
        v->m_name = v->m_text = item.m_text;
        v->m_index = item.m_index;
        v->m_marks = CNodeVariable::MarkHost;
        return v;
    }
    case RPN_TOKEN_OPERATOR:
        return makeOperator(item);
    case RPN_TOKEN_WORD:
    case RPN_TOKEN_CALL:
        return makeWord(item);
    default:
        failAtItem(item, kMsgSyntaxError, {});
        return nullptr;
    }
}

CRpnNode *CRpnParser::makeOperator(const CRpnParserItem &item)
{
    const QString &t = item.m_text;
    const int pos = item.m_position, row = item.m_row, col = item.m_col;
    if (t == u";")
        return make<CNode_End>(pos, row, col);
    if (t == u",")
        return make<CNode_Comma>(pos, row, col);
    if (t == u"=")
        return make<CNodeAssignment>(pos, row, col);
    if (t == u"+")
        return make<CNodePlus>(pos, row, col); // the sign is decided when it is placed
    if (t == u"-")
        return make<CNodeMinus>(pos, row, col);
    if (t == u"*")
        return make<CNodeMultiply>(pos, row, col);
    if (t == u"/")
        return make<CNodeDivide>(pos, row, col);
    if (t == u"%")
        return make<CNodeMod>(pos, row, col);
    if (t == u"^")
        return make<CNodePower>(pos, row, col);
    if (t == u"**") {
        auto *p = make<CNodePower2>(pos, row, col);
        p->m_flags |= RPN_NODE_OPERATOR_FORM;
        return p;
    }
    if (t == u"==")
        return make<CNodeEqualTo>(pos, row, col);
    if (t == u"!=" || t == u"<>")
        return make<CNodeNotEqualTo>(pos, row, col);
    if (t == u">")
        return make<CNodeGreaterThan>(pos, row, col);
    if (t == u"<")
        return make<CNodeLessThan>(pos, row, col);
    if (t == u">=")
        return make<CNodeGreaterEqualThan>(pos, row, col);
    if (t == u"<=")
        return make<CNodeLessEqualThan>(pos, row, col);
    if (t == u"!")
        return make<CNodeNot>(pos, row, col);
    if (t == u"&&")
        return make<CNodeAND>(pos, row, col);
    if (t == u"||")
        return make<CNodeOR>(pos, row, col);
    if (t == u"++")
        return make<CNodeIncrement>(pos, row, col);
    if (t == u"--")
        return make<CNodeDecrement>(pos, row, col);
    if (t == u"&")
        return make<CNodeBitwiseAnd>(pos, row, col);
    if (t == u"|")
        return make<CNodeBitwiseOR>(pos, row, col);
    if (t == u"~")
        return make<CNodeBitwiseNot>(pos, row, col);
    if (t == u"<<")
        return make<CNodeBitwiseShiftLeft>(pos, row, col);
    if (t == u">>")
        return make<CNodeBitwiseShiftRight>(pos, row, col);
    if (t == u"+=")
        return make<CNodeAddAssignment>(pos, row, col);
    if (t == u"-=")
        return make<CNodeSubAssignment>(pos, row, col);
    if (t == u"*=")
        return make<CNodeMulAssignment>(pos, row, col);
    if (t == u"/=")
        return make<CNodeDivAssignment>(pos, row, col);
    failAtItem(item, kMsgSyntaxError, {});
    return nullptr;
}

// A word: keyword, user function, the named values, a known variable, the
// constants e and pi, or a new variable.
CRpnNode *CRpnParser::makeWord(const CRpnParserItem &item)
{
    const QString &word = item.m_text;
    const int pos = item.m_position, row = item.m_row, col = item.m_col;
    unsigned char status = 1;
    if (CRpnNode *node = LookupKeyword(m_tree, word, pos, row, col, status, m_tree->m_keywordHook))
        return node;
    if (status == 11) {
        failAtItem(item, kMsgRefused, {word});
        return nullptr;
    }
    if (CRpnUserFunction *function = m_tree->FindFunction(word)) {
        auto *call = make<CNode_Function>(pos, row, col);
        call->m_function = function;
        call->m_functionName = word;
        return call;
    }
    const QString upper = word.toUpper();
    if (upper == u"NULL")
        return make<CNodeNULL>(pos, row, col);
    if (upper == u"_CRLF") {
        auto *t = make<CNodeText>(pos, row, col);
        t->m_text = QStringLiteral("\r\n");
        t->m_value.SetText(t->m_text);
        return t;
    }
    if (upper == u"TRUE" || upper == u"FALSE") {
        auto *c = make<CNodeConstant>(pos, row, col);
        c->m_value.SetDouble(upper == u"TRUE" ? 1.0 : 0.0);
        c->m_text = word;
        return c;
    }
    auto *variable = make<CNodeVariable>(pos, row, col);
    variable->m_name = variable->m_text = word;
    if (m_locals && m_locals->Find(word)) {
        variable->m_marks = CNodeVariable::MarkLocal;
        return variable;
    }
    if (word == m_tree->m_mainVariablesName) {
        variable->m_marks = m_functionBody ? CNodeVariable::MarkLocal : CNodeVariable::MarkMain;
        return variable;
    }
    if (!m_functionBody && m_tree->HasColumnBinding(word)) {
        variable->m_marks = CNodeVariable::MarkHost;
        return variable;
    }
    if (!m_functionBody && m_tree->GetVariables()->FindHere(word)) {
        variable->m_marks = CNodeVariable::MarkMain;
        return variable;
    }
    if (word == u"e" || upper == u"PI") {
        variable->m_marks = CNodeVariable::MarkConstant;
        variable->m_value.SetDouble(word == u"e" ? kE : kPi);
        return variable;
    }
    if (!m_allowNew) {
        delete variable;
        failAtItem(item, kMsgSyntaxError, {word});
        return nullptr;
    }
    variable->m_marks = CNodeVariable::MarkNew;
    const QString key = m_tree->m_caseSensitiveNames ? word : upper;
    if (!m_newNames.contains(key)) {
        m_newNames.insert(key);
        m_firstUses.insert(variable);
    }
    return variable;
}

// `( name ) variable`: the name in brackets is the tag of the variable after it.
bool CRpnParser::isTagPattern() const
{
    const std::size_t n = m_nodes.size();
    if (n < 3)
        return false;
    const CRpnNode *open = m_nodes[n - 3], *name = m_nodes[n - 2], *close = m_nodes[n - 1];
    const CNodeVariable *v = const_cast<CRpnNode *>(name)->AsVariable();
    if (!v || !v->IsNew())
        return false;
    return (open->IsBraceOpen() && close->IsBraceClose()) || (isRoundOpen(open) && isRoundClose(close));
}

void CRpnParser::place(CRpnNode *node, const CRpnParserItem &item)
{
    // The sign of + and -: unary at the start and after what cannot end a
    // value; a soft end is looked behind.
    const int kind = node->GetKind();
    if (kind == RPN_NODE_PLUS || kind == RPN_NODE_MINUS) {
        const CRpnNode *q = previous();
        if (isSoftEnd(q))
            q = m_nodes.size() >= 2 ? m_nodes[m_nodes.size() - 2] : nullptr;
        const bool unary = !q || q->IsEnd() || q->IsBraceOpen() || q->IsParenthesisOpen()
            || q->IsAssignmentLike() || q->IsComma() || q->IsBinary() || (q->IsUnary() && !isPostfix(q))
            || q->IsELSELike();
        if (unary) {
            CRpnNode *single = kind == RPN_NODE_PLUS ? static_cast<CRpnNode *>(make<CNodeSinglePlus>(0, 0, 0))
                                                     : make<CNodeSingleMinus>(0, 0, 0);
            single->m_position = node->m_position;
            single->m_row = node->m_row;
            single->m_col = node->m_col;
            delete node;
            node = single;
        }
    }
    if (isIncrement(node))
        static_cast<CNodeIncrement *>(node)->m_fix = previous() && previous()->IsVariable() ? 1 : -1;

    // A soft end gives way to a line that goes on with an operator or closes.
    if (isSoftEnd(previous())
        && ((node->IsBinary() && !node->IsMacro()) || node->IsParenthesisClose() || node->IsBraceClose())) {
        delete m_nodes.back();
        m_nodes.pop_back();
    }

    // Implicit commas between the elements of a list.
    if (m_tree->m_listMode) {
        const CRpnNode *p = previous();
        bool comma = false;
        if (p) {
            const bool closes = p->IsBraceClose() || p->IsParenthesisClose();
            if (item.m_kind == RPN_TOKEN_NUMBER)
                comma = closes || (p->IsValue() && !p->IsText());
            else if (isWordItem(item))
                comma = (closes || p->IsValue()) && !node->IsBinary() && !node->IsELSELike()
                    && !(node->IsVariable() && isTagPattern());
            else if (node->IsBraceOpen())
                comma = p->IsBraceClose();
            else if (isRoundOpen(node))
                comma = isRoundClose(p);
        }
        if (comma)
            m_nodes.push_back(make<CNode_Comma>(node->m_position, node->m_row, node->m_col));
    }
    m_nodes.push_back(node);
}

// --- pass 2: rewriting neighbours ---------------------------------------------------------

int CRpnParser::matchingParenthesis(int open) const
{
    int depth = 0;
    for (int i = open; i < int(m_nodes.size()); ++i) {
        if (isRoundOpen(m_nodes[std::size_t(i)]))
            ++depth;
        else if (isRoundClose(m_nodes[std::size_t(i)]) && --depth == 0)
            return i;
    }
    return -1;
}

bool CRpnParser::hasCommaInside(int open, int close) const
{
    int depth = 0;
    for (int i = open + 1; i < close; ++i) {
        const CRpnNode *node = m_nodes[std::size_t(i)];
        if (node->IsParenthesisOpen() || node->IsBraceOpen())
            ++depth;
        else if (node->IsParenthesisClose() || node->IsBraceClose())
            --depth;
        else if (depth == 0 && node->IsComma())
            return true;
    }
    return false;
}

void CRpnParser::turnIntoBraces(int open, int close)
{
    for (int i : {open, close}) {
        CRpnNode *old = m_nodes[std::size_t(i)];
        auto *brace = make<CNodeBracket>(old->m_position, old->m_row, old->m_col);
        brace->m_open = i == open;
        m_nodes[std::size_t(i)] = brace;
        delete old;
    }
}

bool CRpnParser::rewrite()
{
    // In list mode a text that starts with a parenthesised list is a list of
    // lists: (1,2),(3,4) reads as {1,2},{3,4}.  A group that is neither a
    // list itself nor followed by one stays a parenthesis, so that (a+b)*c
    // keeps its grouping.
    if (m_tree->m_listMode) {
        int open = 0;
        while (open < int(m_nodes.size()) && isRoundOpen(m_nodes[std::size_t(open)])) {
            const int close = matchingParenthesis(open);
            if (close < 0)
                break;
            const bool commaFollows =
                close + 1 < int(m_nodes.size()) && m_nodes[std::size_t(close) + 1]->IsComma();
            if (open == 0 && !commaFollows && !hasCommaInside(open, close))
                break;
            turnIntoBraces(open, close);
            if (close + 2 < int(m_nodes.size()) && m_nodes[std::size_t(close) + 1]->IsComma())
                open = close + 2;
            else
                break;
        }
    }

    std::size_t i = 0;
    while (i + 1 < m_nodes.size()) {
        CRpnNode *a = m_nodes[i];
        CRpnNode *b = m_nodes[i + 1];
        // (tag) variable at the start of a statement or element: the tag
        // goes to the variable, the three nodes go.  A tag is a name met
        // here for the first time (else it is a condition or a value).
        const CRpnNode *before = i > 0 ? m_nodes[i - 1] : nullptr;
        const bool starts = !before || before->IsEnd() || before->IsComma() || before->IsBraceOpen()
            || before->IsParenthesisOpen();
        if (starts && (a->IsBraceOpen() || isRoundOpen(a)) && i + 3 < m_nodes.size()) {
            CNodeVariable *tag = b->AsVariable();
            CRpnNode *close = m_nodes[i + 2];
            CNodeVariable *target = m_nodes[i + 3]->AsVariable();
            const bool matches = a->IsBraceOpen() ? close->IsBraceClose() : isRoundClose(close);
            if (tag && tag->IsNew() && m_firstUses.contains(tag) && matches && target) {
                target->m_tag = tag->m_name;
                delete a;
                delete b;
                delete close;
                m_nodes.erase(m_nodes.begin() + std::ptrdiff_t(i), m_nodes.begin() + std::ptrdiff_t(i) + 3);
                continue;
            }
        }
        // Two texts in a row are one.
        if (a->GetKind() == RPN_NODE_TEXT && b->GetKind() == RPN_NODE_TEXT) {
            auto *t = static_cast<CNodeText *>(a);
            t->m_text += static_cast<CNodeText *>(b)->m_text;
            t->m_value.SetText(t->m_text);
            delete b;
            m_nodes.erase(m_nodes.begin() + std::ptrdiff_t(i) + 1);
            continue;
        }
        // A minus right before a number is the number's sign: -2^2 is 4.
        if (a->GetKind() == RPN_NODE_SINGLE_MINUS && b->GetKind() == RPN_NODE_CONSTANT) {
            auto *c = static_cast<CNodeConstant *>(b);
            if (c->m_value.IsReal() || c->m_value.IsInt()) {
                if (c->m_value.IsInt()) {
                    c->m_value.SetInt(int(0u - std::uint32_t(c->m_value.GetIntValue())));
                } else {
                    const int exponent = c->m_value.GetDisplayExponent();
                    c->m_value.SetDouble(-c->m_value.GetRealValue());
                    c->m_value.SetDisplayExponent(exponent);
                }
                c->m_text.prepend(u'-');
                c->m_position = a->m_position;
                c->m_row = a->m_row;
                c->m_col = a->m_col;
                delete a;
                m_nodes.erase(m_nodes.begin() + std::ptrdiff_t(i));
                if (i > 0)
                    --i;
                continue;
            }
        }
        // An empty place in a list holds NULL: {1,,3} and {1,}.
        const bool opens = a->IsParenthesisOpen() || a->IsBraceOpen();
        const bool closes = b->IsParenthesisClose() || b->IsBraceClose();
        if ((a->IsComma() && b->IsComma()) || (opens && b->IsComma()) || (a->IsComma() && closes)) {
            m_nodes.insert(m_nodes.begin() + std::ptrdiff_t(i) + 1, make<CNodeNULL>(b->m_position, b->m_row, b->m_col));
            ++i;
            continue;
        }
        ++i;
    }

    // The argument list of a list function is a list of its own.
    for (std::size_t k = 0; k + 1 < m_nodes.size(); ++k) {
        if (m_nodes[k]->IsMultiOperand() && isRoundOpen(m_nodes[k + 1])) {
            const int close = matchingParenthesis(int(k) + 1);
            if (close > 0)
                turnIntoBraces(int(k) + 1, close);
        }
    }
    return true;
}

// --- pass 3: the sequence check --------------------------------------------------------------

bool CRpnParser::checkSequence()
{
    // Whether a name may stand for a formula: a variable that holds one now,
    // one the host owns, or one the text assigns to somewhere.
    const auto mayHoldFormula = [this](const CNodeVariable *name) {
        if (name->IsHostBound())
            return true;
        CRpnData *value = nullptr;
        if (name->IsLocal() && m_locals)
            value = m_locals->Find(name->m_name);
        else if (name->IsMain())
            value = m_tree->GetVariables()->FindHere(name->m_name);
        if (value)
            return value->IsFormula();
        const Qt::CaseSensitivity cs = m_tree->m_caseSensitiveNames ? Qt::CaseSensitive : Qt::CaseInsensitive;
        for (std::size_t k = 0; k + 1 < m_nodes.size(); ++k) {
            const CNodeVariable *v = m_nodes[k]->AsVariable();
            if (v && m_nodes[k + 1]->IsAssignmentLike() && v->m_name.compare(name->m_name, cs) == 0)
                return true;
        }
        return false;
    };
    for (std::size_t i = 0; i < m_nodes.size(); ++i) {
        CRpnNode *cur = m_nodes[i];
        CRpnNode *prev = i > 0 ? m_nodes[i - 1] : nullptr;
        CRpnNode *next = i + 1 < m_nodes.size() ? m_nodes[i + 1] : nullptr;

        if (isIncrement(cur)) {
            auto *inc = static_cast<CNodeIncrement *>(cur);
            if (prev && prev->IsVariable())
                inc->m_fix = 1;
            else if (next && next->IsVariable())
                inc->m_fix = -1;
            else
                return fail(cur, kMsgMissingOperand, {});
        }
        if (!prev)
            continue;
        if (prev->IsValue() && cur->IsValue())
            return fail(cur, kMsgTwoValues, {});
        if (prev->IsValue() && cur->IsUnary() && !isPostfix(cur))
            return fail(cur, kMsgTwoValues, {});
        if (prev->IsValue() && isRoundOpen(cur)) {
            // A name before "(" was most likely meant as a call: unless the
            // name holds a formula, say that no such function exists.
            if (CNodeVariable *name = prev->AsVariable(); name && !mayHoldFormula(name))
                return fail(prev, kMsgNoSuchFunction, {name->m_name});
            return fail(cur, kMsgTwoValues, {});
        }
        if (cur->IsAssignmentLike()) {
            if (prev->IsOperation() && !prev->IsValue())
                return fail(cur, kMsgCannotAssign, {prev->GetName()});
            if ((prev->IsValue() && !prev->IsVariable() && !prev->IsText()) || isRoundClose(prev))
                return fail(cur, kMsgMissingOperand, {});
        }
        if (prev->IsIFLike() && (cur->IsIFLike() || cur->IsELSELike() || cur->IsBraceClose()))
            return fail(cur, kMsgMissingOperand, {});
        if (prev->IsBraceOpen() && cur->IsELSELike())
            return fail(cur, kMsgMissingOperand, {});
        // In list mode [..] after (..) starts a new row.
        if (m_tree->m_listMode && isSquareOpen(cur) && isRoundClose(prev)) {
            m_nodes.insert(m_nodes.begin() + std::ptrdiff_t(i), make<CNode_Comma>(cur->m_position, cur->m_row, cur->m_col));
            ++i;
        }
    }
    return true;
}
