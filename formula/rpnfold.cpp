// The parser's later passes: block building, the shunting yard into postfix
// order, folding into trees, and the structure check.

#include "formula/rpnparser.h"

#include "formula/rpnexception.h"
#include "formula/rpnstatements.h"
#include "formula/rpntree.h"
#include "support/stackroom.h"

#include <algorithm>

namespace {

constexpr int kMsgCloseWithoutOpen = 43027;
constexpr int kMsgSyntaxError = 43028;
constexpr int kMsgNotClosed = 43029;
constexpr int kMsgStrayParenthesis = 43030;
constexpr int kMsgMissingOperand = 43031;
constexpr int kMsgUsedBeforeAssigned = 43166;
constexpr int kMsgNotAVariable = 43167;
constexpr int kMsgBracketMismatch = 43170;
constexpr int kMsgDirectiveMismatch = 43192;
constexpr int kMsgMisplacedIf = 43198;
constexpr int kMsgTooDeep = 43301;

bool isSquare(const CRpnNode *n)
{
    return n->IsParenthesis() && static_cast<const CNodeParenthese *>(n)->IsSquare();
}

bool isRound(const CRpnNode *n)
{
    return n->IsParenthesis() && !static_cast<const CNodeParenthese *>(n)->IsSquare();
}

// What the shunting yard passes straight to the output.
bool isOperand(const CRpnNode *n)
{
    return n->IsValue() || n->IsText() || n->IsList() || n->IsComment() || n->IsArrayIndex();
}

bool isComparison(const CRpnNode *n)
{
    const int k = n->GetKind();
    return k >= RPN_NODE_EQUAL && k <= RPN_NODE_LESS_EQUAL;
}

// IF takes an else-part; WHILE and the other statements of its family take a
// condition and a body only.
bool takesElse(const CRpnNode *n)
{
    return n->IsIFLike() && !n->IsWhile() && !n->IsCatch();
}

// Everything still held by the working arrays goes back to the list, which
// frees it with itself.
void giveBack(CRpnNodeList *list, std::vector<CRpnNode *> &a, std::vector<CRpnNode *> &b,
              const std::vector<CRpnNode *> &rest, std::size_t from)
{
    list->m_children.clear();
    for (CRpnNode *n : a)
        list->m_children.push_back(n);
    for (CRpnNode *n : b)
        list->m_children.push_back(n);
    for (std::size_t i = from; i < rest.size(); ++i)
        list->m_children.push_back(rest[i]);
    a.clear();
    b.clear();
}

} // namespace

// --- pass 4: block building ---------------------------------------------------------------------

CRpnNodeList *CRpnParser::buildBlocks()
{
    auto *root = make<CRpnNodeList>(0, 1, 0);
    struct Open
    {
        CRpnNodeList *list;
        bool square; // opened by "[" rather than "{"
    };
    std::vector<Open> stack{{root, false}};
    // Reports at `at`, frees what was built and `at` itself (not yet placed).
    auto failHere = [&](CRpnNode *at, int id, std::initializer_list<CRpnFormatArg> args) -> CRpnNodeList * {
        fail(at, id, args);
        delete at;
        DeleteSubtree(root);
        return nullptr;
    };

    for (std::size_t i = 0; i < m_nodes.size(); ++i) {
        CRpnNode *node = m_nodes[i];
        m_nodes[i] = nullptr; // from here on the tree being built, or this loop, owns it
        CRpnNodeList *current = stack.back().list;
        CRpnNode *last = current->m_children.empty() ? nullptr : current->m_children.back();

        if (node->IsBraceOpen()) {
            CRpnNodeList *list;
            if (last && last->IsMultiOperand() && last->GetOperandCount() == 0) {
                list = last->AsList(); // the function's own argument list
            } else {
                list = make<CRpnNodeList>(node->m_position, node->m_row, node->m_col);
                current->Append(list);
            }
            stack.push_back({list, false});
            delete node;
            continue;
        }
        if (isSquare(node) && node->IsParenthesisOpen()) {
            if (!last || !(last->IsVariable() || last->IsArrayIndex()))
                return failHere(node, kMsgBracketMismatch, {});
            current->m_children.pop_back();
            auto *index = make<CNodeArrayIndex>(node->m_position, node->m_row, node->m_col);
            auto *list = make<CRpnNodeList>(node->m_position, node->m_row, node->m_col);
            index->SetOperand(0, last);
            index->SetOperand(1, list);
            current->Append(index);
            stack.push_back({list, true});
            delete node;
            continue;
        }
        if (node->IsBraceClose() || (isSquare(node) && node->IsParenthesisClose())) {
            const bool square = isSquare(node);
            if (stack.size() == 1 || stack.back().square != square) {
                if (node->IsMacro())
                    return failHere(node, kMsgDirectiveMismatch, {node->GetName()});
                return failHere(node, kMsgBracketMismatch, {});
            }
            if (square && stack.back().list->m_children.empty()) {
                // a[] only on the left of an assignment.
                const CRpnNode *next = i + 1 < m_nodes.size() ? m_nodes[i + 1] : nullptr;
                if (!next || !next->IsAssignmentLike())
                    return failHere(node, kMsgBracketMismatch, {});
                stack.back().list->Append(make<CNodeNULL>(node->m_position, node->m_row, node->m_col));
            }
            stack.pop_back();
            delete node;
            continue;
        }
        current->Append(node);
    }
    if (stack.size() > 1) {
        // At the last node of the open list (a statement end made of a line
        // end does not count).
        const CRpnNodeList *open = stack.back().list;
        const CRpnNode *at = open;
        for (auto it = open->m_children.rbegin(); it != open->m_children.rend() && at == open; ++it) {
            if (*it && !(*it)->IsEnd())
                at = *it;
        }
        fail(at, kMsgBracketMismatch, {});
        DeleteSubtree(root);
        return nullptr;
    }
    m_nodes.clear();
    return root;
}

// --- passes 5 and 6: ordering and folding, inner lists first ---------------------------------------

bool CRpnParser::processNode(CRpnNode *node)
{
    if (!node)
        return true;
    if (CRpnNodeList *list = node->AsList())
        return processList(list);
    if (node->IsArrayIndex()) {
        // The index lists of a chain a[i][j], each a list of its own.
        for (CRpnNode *n = node; n && n->IsArrayIndex(); n = n->GetOperand(0)) {
            CRpnNode *right = n->GetOperand(1);
            if (right && right->AsList() && !processList(right->AsList()))
                return false;
        }
    }
    return true;
}

bool CRpnParser::processList(CRpnNodeList *list)
{
    // Lists inside lists are ordered by recursion: deep nesting ends here
    // with a message rather than at the end of the stack.
    if (StackRoom::IsStackLow())
        return fail(list, kMsgTooDeep, {});
    for (CRpnNode *child : list->m_children) {
        if (!processNode(child))
            return false;
    }
    return order(list) && fold(list);
}

bool CRpnParser::order(CRpnNodeList *list)
{
    std::vector<CRpnNode *> in = std::move(list->m_children);
    list->m_children.clear();
    std::vector<CRpnNode *> output, stack;
    int openParentheses = 0; // on the stack

    auto failHere = [&](CRpnNode *at, std::size_t restFrom, int id) {
        fail(at, id, {});
        giveBack(list, output, stack, in, restFrom);
        return false;
    };
    // Moves the operators to the output, up to an open parenthesis if asked.
    auto flush = [&]() {
        while (!stack.empty()) {
            if (stack.back()->IsParenthesisOpen())
                return false;
            output.push_back(stack.back());
            stack.pop_back();
        }
        return true;
    };

    for (std::size_t k = 0; k < in.size(); ++k) {
        CRpnNode *node = in[k];
        const bool inParentheses = openParentheses > 0;
        if (isOperand(node)) {
            output.push_back(node);
        } else if (node->IsEnd()) {
            if (!flush())
                return failHere(stack.back(), k, kMsgNotClosed);
            // Kept as a statement boundary for the fold, which deletes it.
            output.push_back(node);
        } else if (node->IsComma()) {
            // Between parentheses a comma separates arguments: it empties the
            // stack down to the parenthesis and goes.  Between the elements
            // of a list it is a boundary like a statement end.
            if (inParentheses) {
                while (!stack.back()->IsParenthesisOpen()) {
                    output.push_back(stack.back());
                    stack.pop_back();
                }
                delete node;
                in[k] = nullptr;
            } else {
                flush();
                output.push_back(node);
            }
        } else if (node->IsBrace()) {
            if (!flush())
                return failHere(stack.back(), k, kMsgNotClosed);
            output.push_back(node);
        } else if (node->IsELSELike()) {
            if (!flush())
                return failHere(stack.back(), k, kMsgNotClosed);
            const CRpnNode *last = nullptr;
            for (auto it = output.rbegin(); it != output.rend() && !last; ++it)
                last = (*it)->IsEnd() || (*it)->IsComma() ? nullptr : *it;
            if (!last || last->IsIFLike() || last->IsELSELike())
                return failHere(node, k, kMsgSyntaxError);
            output.push_back(node);
        } else if (isRound(node) && node->IsParenthesisOpen()) {
            stack.push_back(node);
            ++openParentheses;
        } else if (isRound(node)) {
            while (!stack.empty() && !stack.back()->IsParenthesisOpen()) {
                output.push_back(stack.back());
                stack.pop_back();
            }
            if (stack.empty())
                return failHere(node, k, kMsgCloseWithoutOpen);
            delete stack.back();
            stack.pop_back();
            --openParentheses;
            delete node;
            in[k] = nullptr;
            // IF (condition): the statement goes out right behind its condition.
            const CRpnNode *following = k + 1 < in.size() ? in[k + 1] : nullptr;
            if (!stack.empty() && stack.back()->IsIFLike() && !(following && isComparison(following))) {
                output.push_back(stack.back());
                stack.pop_back();
            }
        } else {
            const int precedence = node->GetPrecedence();
            while (!stack.empty() && !stack.back()->IsParenthesisOpen()
                   && precedence <= stack.back()->GetPrecedence()) {
                output.push_back(stack.back());
                stack.pop_back();
            }
            stack.push_back(node);
        }
    }
    while (!stack.empty()) {
        if (stack.back()->IsParenthesisOpen()) {
            fail(stack.back(), kMsgNotClosed, {});
            giveBack(list, output, stack, in, in.size());
            return false;
        }
        output.push_back(stack.back());
        stack.pop_back();
    }
    list->m_children = std::move(output);
    return true;
}

bool CRpnParser::fold(CRpnNodeList *list)
{
    struct Entry
    {
        CRpnNode *node;
        bool pending; // an IF still collecting its parts
    };
    std::vector<CRpnNode *> in = std::move(list->m_children);
    list->m_children.clear();
    std::vector<Entry> stack;
    // Statement ends and the commas between list elements are boundaries:
    // nothing before the last one is an operand of what follows it.
    std::size_t floor = 0;

    auto failHere = [&](const CRpnNode *at, std::size_t restFrom, int id) {
        fail(at, id, {});
        std::vector<CRpnNode *> held;
        for (const Entry &e : stack)
            held.push_back(e.node);
        std::vector<CRpnNode *> none;
        giveBack(list, held, none, in, restFrom);
        return false;
    };
    auto topPending = [&]() {
        for (int p = int(stack.size()) - 1; p >= 0; --p) {
            if (stack[std::size_t(p)].pending)
                return p;
        }
        return -1;
    };
    // The pending statement at p takes the first entry above it as its next
    // part; entries after that stay as statements of their own.
    auto takePart = [&](int p) {
        auto *statement = static_cast<CNode_IF *>(stack[std::size_t(p)].node);
        CRpnNode *part = stack[std::size_t(p) + 1].node;
        stack.erase(stack.begin() + p + 1);
        if (statement->m_state == 0) {
            statement->SetOperand(1, part);
            statement->m_state = 1;
        } else {
            statement->SetOperand(2, part);
            statement->m_state = 4;
        }
    };

    for (std::size_t k = 0; k < in.size(); ++k) {
        CRpnNode *node = in[k];
        if (isOperand(node)) {
            stack.push_back({node, false});
            continue;
        }
        if (node->IsEnd() || node->IsComma()) {
            // A Catch closed by `;` or `,` has no handler; across a line end
            // only a block is its handler.
            if (!stack.empty() && stack.back().pending && stack.back().node->IsCatch()) {
                const bool soft = node->IsEnd() && (node->m_flags & RPN_NODE_SOFT_END) != 0;
                const CRpnNode *next = k + 1 < in.size() ? in[k + 1] : nullptr;
                if (!soft || !next || !next->IsList() || next->IsMultiOperand())
                    stack.back().pending = false;
            }
            floor = stack.size();
            delete node;
            in[k] = nullptr;
            continue;
        }
        if (node->IsELSELike()) {
            // The nearest IF waiting for its then-part takes it and the else.
            for (;;) {
                const int p = topPending();
                if (p < 0)
                    return failHere(node, k, kMsgSyntaxError);
                CRpnNode *statement = stack[std::size_t(p)].node;
                const int above = int(stack.size()) - p - 1;
                if (above == 0)
                    return failHere(node, k, kMsgMissingOperand);
                if (!takesElse(statement)) {
                    takePart(p);
                    stack[std::size_t(p)].pending = false;
                    floor = std::min(floor, stack.size());
                    continue;
                }
                if (static_cast<CNode_IF *>(statement)->m_state != 0 || above != 1)
                    return failHere(node, k, kMsgSyntaxError);
                takePart(p);
                static_cast<CNode_IF *>(statement)->m_state = 2;
                floor = std::min(floor, stack.size());
                break;
            }
            delete node;
            in[k] = nullptr;
            continue;
        }
        if (node->IsIFLike()) {
            if (stack.size() <= floor || stack.back().pending)
                return failHere(node, k, kMsgMissingOperand);
            // Catch guards what stands in its parentheses; its handler
            // comes next.
            const bool guarded = node->IsCatch();
            node->SetOperand(guarded ? 1 : 0, stack.back().node);
            stack.pop_back();
            static_cast<CNode_IF *>(node)->m_state = guarded ? 1 : 0;
            stack.push_back({node, true});
            continue;
        }
        if (node->IsParenthesis())
            return failHere(node, k, kMsgStrayParenthesis);
        if (node->IsBrace())
            return failHere(node, k, kMsgSyntaxError);

        const int count = node->GetOperandCount();
        if (stack.size() < floor + std::size_t(count))
            return failHere(node, k, kMsgMissingOperand);
        for (int i = 0; i < count; ++i) {
            if (stack[stack.size() - std::size_t(count) + std::size_t(i)].pending)
                return failHere(node, k, kMsgMisplacedIf);
        }
        if (node->IsAssignmentLike() && count >= 1) {
            const CRpnNode *target = stack[stack.size() - std::size_t(count)].node;
            if (!(target->IsVariable() || target->IsArrayIndex() || target->IsText()))
                return failHere(node, k, kMsgSyntaxError);
        }
        for (int i = 0; i < count; ++i)
            node->SetOperand(i, stack[stack.size() - std::size_t(count) + std::size_t(i)].node);
        stack.resize(stack.size() - std::size_t(count));
        stack.push_back({node, false});
    }

    // Statements still waiting take their last part now.
    for (int p = topPending(); p >= 0; p = topPending()) {
        if (int(stack.size()) - p - 1 == 0 && stack[std::size_t(p)].node->IsCatch()) {
            stack[std::size_t(p)].pending = false; // no handler
            continue;
        }
        if (int(stack.size()) - p - 1 == 0)
            return failHere(stack[std::size_t(p)].node, in.size(), kMsgMissingOperand);
        takePart(p);
        stack[std::size_t(p)].pending = false;
    }
    for (const Entry &e : stack)
        list->m_children.push_back(e.node);
    return true;
}

// --- pass 7: the structure check ----------------------------------------------------------------------

bool CRpnParser::useVariable(CRpnNode *node)
{
    CNodeVariable *variable = node->AsVariable();
    if (variable->IsConstant())
        return true;
    const QString &name = variable->m_name;
    const Qt::CaseSensitivity cs = m_tree->m_caseSensitiveNames ? Qt::CaseSensitive : Qt::CaseInsensitive;
    if (!m_seen.contains(name, cs))
        m_seen.append(name);
    if (variable->IsNew() && !m_known.contains(name, cs) && !m_tree->m_freeVariables)
        return fail(node, kMsgUsedBeforeAssigned, {});
    return true;
}

// A word that a call taking bare words reads by its name: a variable, or
// `variable = variable`.
static bool isBareWord(CRpnNode *operand)
{
    if (operand->IsVariable())
        return true;
    if (!operand->IsPlainAssignment())
        return false;
    CRpnNode *left = operand->GetOperand(0);
    CRpnNode *right = operand->GetOperand(1);
    return left && right && left->IsVariable() && right->IsVariable();
}

namespace {

// Whether operand i of a call is a name rather than a value when it is a
// variable: the names of Replace, ReplaceF, EvalM and EvalVars, and of the
// pairs of Eval.
bool operandIsName(const CRpnNode *call, int i)
{
    if (i < 1 || !call->GetOperand(i) || !call->GetOperand(i)->IsVariable())
        return false;
    switch (call->GetKind()) {
    case 142: return i % 2 == 1;             // Eval(f, name, value, ...)
    case 143: case 144: case 145: case 160: return true;
    default: return false;
    }
}

// An operator of two operands checked as the generic case below checks one:
// left, then right.  A left-deep chain of them (a long flat sum) is checked
// with a loop.
bool plainBinary(const CRpnNode *node)
{
    return node && node->IsBinary() && !node->IsAssignmentLike() && !node->IsFormula() && !node->IsVariable()
        && !node->TakesBareWords() && !node->IsFunctionCall() && GetOperandPlaces(node) == 2;
}

} // namespace

bool CRpnParser::checkStructure(CRpnNode *node)
{
    if (!node)
        return true;
    if (StackRoom::IsStackLow())
        return fail(node, kMsgTooDeep, {});
    if (plainBinary(node) && plainBinary(node->GetOperand(0))) {
        std::vector<CRpnNode *> chain;
        for (CRpnNode *n = node; plainBinary(n); n = n->GetOperand(0))
            chain.push_back(n);
        if (!checkStructure(chain.back()->GetOperand(0)))
            return false;
        for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
            if (!checkStructure((*it)->GetOperand(1)))
                return false;
        }
        return true;
    }
    if (node->IsVariable())
        return useVariable(node);
    if (node->IsFormula()) {
        // The expression of a formula names values to come.
        const std::int32_t free = m_tree->m_freeVariables;
        m_tree->m_freeVariables = 1;
        bool ok = true;
        for (int i = 0; ok && i < node->GetOperandCount(); ++i)
            ok = checkStructure(node->GetOperand(i));
        m_tree->m_freeVariables = free;
        return ok;
    }
    if (node->IsAssignmentLike() && !node->IsBinary()) {
        // SETVALUE and SETTEXT name their target: it need not hold a value.
        CRpnNode *target = node->GetOperand(0);
        for (int i = 1; i < node->GetOperandCount(); ++i) {
            if (!checkStructure(node->GetOperand(i)))
                return false;
        }
        return !target || target->IsVariable() || checkStructure(target);
    }
    if (node->IsAssignmentLike() && node->IsBinary()) {
        CRpnNode *left = node->GetOperand(0);
        CRpnNode *right = node->GetOperand(1);
        if (!left)
            return fail(node, kMsgUsedBeforeAssigned, {});
        if (!(left->IsVariable() || left->IsText() || left->IsArrayIndex()))
            return fail(node, kMsgNotAVariable, {});
        if (!checkStructure(right))
            return false;
        if (left->IsVariable() && !node->IsSelfAssignment()) {
            const QString &name = static_cast<CNodeVariable *>(left)->m_name;
            const Qt::CaseSensitivity cs = m_tree->m_caseSensitiveNames ? Qt::CaseSensitive : Qt::CaseInsensitive;
            if (!m_known.contains(name, cs))
                m_known.append(name);
            if (!m_seen.contains(name, cs) && !static_cast<CNodeVariable *>(left)->IsConstant())
                m_seen.append(name);
            return true;
        }
        return checkStructure(left);
    }
    const int places = GetOperandPlaces(node);
    const bool bareWords = node->TakesBareWords();
    for (int i = 0; i < places; ++i) {
        CRpnNode *operand = node->GetOperand(i);
        if (operandIsName(node, i) || (bareWords && operand && isBareWord(operand)))
            continue;
        if (!checkStructure(operand))
            return false;
    }
    return true;
}
