// The node base: defaults of the virtual operations, error reporting, and the
// walks over whole trees (kept iterative, so that deep trees are safe).

#include "formula/rpnnode.h"

#include "formula/rpnbuffer.h"
#include "formula/rpndictionary.h"
#include "formula/rpnfunctioncall.h"
#include "formula/rpnkeywords.h"
#include "formula/rpnstatements.h"
#include "formula/rpntree.h"

#include <unordered_map>

#include <utility>
#include <vector>

namespace {
constexpr int kMsgNotForComplex = 43217;
constexpr int kMsgTooDeep = 43301;
}

CRpnNode::~CRpnNode() = default;

int CRpnNode::IndexOfChild(const CRpnNode *node) const
{
    const int n = GetOperandCount();
    for (int i = 0; i < n; ++i) {
        if (GetOperand(i) == node)
            return i;
    }
    return -1;
}

CRpnNode *CRpnNode::TakeOperand(int i)
{
    CRpnNode *node = GetOperand(i);
    if (node) {
        SetOperand(i, nullptr);
        node->m_parent = nullptr;
    }
    return node;
}

CRpnNode *CRpnNode::Clone(CEquationTree *tree, int position, int row, int col) const
{
    CRpnNode *node = CreateSame();
    node->m_tree = tree;
    node->m_position = position;
    node->m_row = row;
    node->m_col = col;
    node->m_flags = m_flags;
    node->m_flags2 = m_flags2;
    return node;
}

void CRpnNode::Apply(CRpnData &result, const CRpnData &a, const CRpnData &, unsigned char &)
{
    result = a;
}

double CRpnNode::ApplyReal(double a, double, unsigned char &)
{
    return a;
}

bool CRpnNode::ApplyRealBlock(const double *a, double av, const double *b, double bv, double *out,
                              unsigned char *failed, int n)
{
    bool any = false;
    for (int i = 0; i < n; ++i) {
        unsigned char st = 1;
        out[i] = ApplyReal(a ? a[i] : av, b ? b[i] : bv, st);
        if (st != 1) {
            failed[i] = 1;
            any = true;
        }
    }
    return any;
}

void CRpnNode::ApplyComplex(CRpnData &result, const CRpnData &a, const CRpnData &, unsigned char &status)
{
    ReportError(status, kMsgNotForComplex, {GetName()});
    result = a;
}

void CRpnNode::Evaluate(CRpnData &result, unsigned char &)
{
    result.SetNull();
}

double CRpnNode::EvaluateReal(unsigned char &status)
{
    if (m_fastPath && !IsStopping()) {
        double x;
        if (EvaluateFast(x))
            return x;
    }
    CRpnData value;
    Evaluate(value, status);
    return value.GetDouble();
}

int CRpnNode::CollectDefaults(CMapStringToRpnData &dictionary)
{
    int added = 0;
    const int n = GetOperandPlaces(this);
    for (int i = 0; i < n; ++i) {
        if (CRpnNode *child = GetOperand(i))
            added += child->CollectDefaults(dictionary);
    }
    return added;
}

void CRpnNode::SerializeNode(CRpnBuffer &buffer)
{
    std::int32_t kind = GetKind();
    buffer.Transfer(kind);
    buffer.Transfer(m_position);
    buffer.Transfer(m_row);
    buffer.Transfer(m_col);
    buffer.Transfer(m_flags);
    buffer.Transfer(m_flags2);
}

CNodeConstant *CRpnNode::AsConstant()
{
    // Only the constants and their subclasses carry these traits.
    return Has(RPN_TRAIT_VALUE) ? static_cast<CNodeConstant *>(this) : nullptr;
}

CNodeVariable *CRpnNode::AsVariable()
{
    return m_variableNode ? static_cast<CNodeVariable *>(this) : nullptr;
}

CRpnNodeList *CRpnNode::AsList()
{
    return Has(RPN_TRAIT_LIST) ? dynamic_cast<CRpnNodeList *>(this) : nullptr;
}

CNodeMultiOperand *CRpnNode::AsMultiOperand()
{
    return Has(RPN_TRAIT_MULTI_OPERAND) ? dynamic_cast<CNodeMultiOperand *>(this) : nullptr;
}

CNodeSingleOperand *CRpnNode::AsSingleOperand()
{
    return dynamic_cast<CNodeSingleOperand *>(this);
}

CNodeDoubleOperand *CRpnNode::AsDoubleOperand()
{
    return dynamic_cast<CNodeDoubleOperand *>(this);
}

CNode_IF *CRpnNode::AsIF()
{
    return Has(RPN_TRAIT_IF_LIKE) ? dynamic_cast<CNode_IF *>(this) : nullptr;
}

CNode_Function *CRpnNode::AsFunctionCall()
{
    return Has(RPN_TRAIT_FUNCTION_CALL) ? dynamic_cast<CNode_Function *>(this) : nullptr;
}

void CRpnNode::ReportError(unsigned char &status, int id, std::initializer_list<CRpnFormatArg> args)
{
    if (m_tree)
        m_tree->ReportError(status, id, args, GetName(), m_row, m_col);
    else
        status = 0;
}

void CRpnNode::NoteFailure(CRpnNode *failed)
{
    if (m_tree && failed && !m_tree->HasError())
        m_tree->NoteSilentFailure(failed->GetName(), failed->m_row, failed->m_col);
}

void CRpnNode::ReportTooDeep(unsigned char &status)
{
    ReportError(status, kMsgTooDeep, {});
}

void CRpnNode::ReportText(unsigned char &status, const QString &message)
{
    ReportRpnError(m_tree, status, message, GetName(), m_row, m_col);
}

QString CRpnNode::SourceExcerpt() const
{
    return m_tree ? FormatPosition(m_tree->GetSource(), m_position) : QString();
}

// --- walks -------------------------------------------------------------------------

int GetOperandPlaces(const CRpnNode *node)
{
    if (node->IsWhile())
        return 2;
    if (node->IsIFLike())
        return 3;
    return node->GetOperandCount();
}

int WalkTree(CRpnNode *root, const CRpnNodeVisitor &visitor)
{
    std::vector<CRpnNode *> stack;
    if (root)
        stack.push_back(root);
    while (!stack.empty()) {
        CRpnNode *node = stack.back();
        stack.pop_back();
        if (const int r = visitor(node))
            return r;
        // Children go on the stack last first, so that they are visited in order.
        for (int i = GetOperandPlaces(node) - 1; i >= 0; --i) {
            if (CRpnNode *child = node->GetOperand(i))
                stack.push_back(child);
        }
    }
    return 0;
}

namespace {

// The nodes of a subtree with every child after its parent.
std::vector<CRpnNode *> preOrder(CRpnNode *root)
{
    std::vector<CRpnNode *> out;
    WalkTree(root, [&out](CRpnNode *node) {
        out.push_back(node);
        return 0;
    });
    return out;
}

} // namespace

void ResetRunTree(CRpnNode *root)
{
    const std::vector<CRpnNode *> nodes = preOrder(root);
    for (auto it = nodes.rbegin(); it != nodes.rend(); ++it)
        (*it)->ResetRun();
}

namespace {

std::int8_t fastOpOf(int kind)
{
    switch (kind) {
    case RPN_NODE_PLUS: return RPN_FAST_OP_ADD;
    case RPN_NODE_MINUS: return RPN_FAST_OP_SUBTRACT;
    case RPN_NODE_MULTIPLY: return RPN_FAST_OP_MULTIPLY;
    case RPN_NODE_LESS: return RPN_FAST_OP_LESS;
    case RPN_NODE_GREATER: return RPN_FAST_OP_GREATER;
    case RPN_NODE_LESS_EQUAL: return RPN_FAST_OP_LESS_EQUAL;
    case RPN_NODE_GREATER_EQUAL: return RPN_FAST_OP_GREATER_EQUAL;
    case RPN_NODE_INCREMENT: return RPN_FAST_OP_STEP_UP;
    case RPN_NODE_DECREMENT: return RPN_FAST_OP_STEP_DOWN;
    default: return RPN_FAST_OP_NONE;
    }
}

} // namespace

void PrepareFastPath(CRpnNode *root)
{
    // Bottom-up: a node may take the fast path when its class has one and all
    // its operands may.  A list may when it has exactly one child that may.
    const std::vector<CRpnNode *> nodes = preOrder(root);
    std::unordered_map<const CRpnNode *, int> chainLength; // of + - * links, down the left side
    constexpr int kLoopChainLinks = 8;
    for (auto it = nodes.rbegin(); it != nodes.rend(); ++it) {
        CRpnNode *node = *it;
        node->m_realPath = std::int8_t(node->GetRealPath());
        bool fast = false, fastValue = false;
        if (node->IsList() && !node->IsMultiOperand()) {
            fast = node->GetOperandCount() == 1 && node->GetOperand(0) && node->GetOperand(0)->m_fastPath;
        } else if (node->IsValue()) {
            double x;
            // Constants decide now; variables at each read.
            fast = fastValue = node->IsVariable() || node->EvaluateFast(x);
        } else if (node->IsFunctionCall()) {
            // A call of a script function: its arguments decide here, its
            // body at the call (CNode_Function::EvaluateFast).
            fast = fastValue = true;
            const int n = node->GetOperandCount();
            for (int i = 0; i < n; ++i) {
                const CRpnNode *child = node->GetOperand(i);
                fast = fastValue = fastValue && child && child->m_fastValue;
            }
        } else if (node->m_realPath != RPN_REAL_PATH_NONE && node->m_realPath != RPN_REAL_PATH_ROW) {
            fast = fastValue = true;
            const int n = node->GetOperandCount();
            for (int i = 0; i < n; ++i) {
                const CRpnNode *child = node->GetOperand(i);
                fast = fast && child && child->m_fastPath;
                fastValue = fastValue && child && child->m_fastValue;
            }
        }
        node->m_fastValue = fastValue;
        node->m_fastPath = fast;
        // (Not a call: a function may give a number with its display exponent.)
        node->m_plainNumber = fastValue && node->IsOperation() && !node->IsFunctionCall();
        node->m_fastOp = fastOpOf(node->GetKind());
        const auto link = [](const CRpnNode *n) {
            return n && (n->m_fastOp == RPN_FAST_OP_ADD || n->m_fastOp == RPN_FAST_OP_SUBTRACT
                         || n->m_fastOp == RPN_FAST_OP_MULTIPLY);
        };
        // A short chain recurses (which costs less than gathering it); from
        // a few links on it is walked with a loop, so that a long one needs
        // no frame per link.
        int length = 0;
        if (link(node) && node->GetOperandCount() == 2) {
            const CRpnNode *left = node->GetOperand(0);
            const auto it = link(left) ? chainLength.find(left) : chainLength.end();
            length = 1 + (it != chainLength.end() ? it->second : 0);
            chainLength[node] = length;
        }
        node->m_chainHead = length >= kLoopChainLinks;
        if (node->GetKind() == RPN_NODE_ASSIGN) {
            const CRpnNode *left = node->GetOperand(0), *right = node->GetOperand(1);
            node->m_plainStore = left && right && left->m_variableNode && right->m_plainNumber;
        }
    }
}

CRpnNode *CloneSubtree(const CRpnNode *node, CEquationTree *tree)
{
    if (!node)
        return nullptr;
    CRpnNode *copy = node->Clone(tree, node->m_position, node->m_row, node->m_col);
    std::vector<std::pair<const CRpnNode *, CRpnNode *>> stack{{node, copy}};
    while (!stack.empty()) {
        auto [from, to] = stack.back();
        stack.pop_back();
        const int n = GetOperandPlaces(from);
        for (int i = 0; i < n; ++i) {
            const CRpnNode *child = from->GetOperand(i);
            CRpnNode *childCopy = child ? child->Clone(tree, child->m_position, child->m_row, child->m_col) : nullptr;
            to->SetOperand(i, childCopy);
            if (childCopy)
                stack.emplace_back(child, childCopy);
        }
    }
    copy->m_fastPath = copy->m_fastValue = false;
    return copy;
}

void DeleteSubtree(CRpnNode *node)
{
    std::vector<CRpnNode *> stack;
    if (node)
        stack.push_back(node);
    while (!stack.empty()) {
        CRpnNode *n = stack.back();
        stack.pop_back();
        const int places = GetOperandPlaces(n);
        for (int i = 0; i < places; ++i) {
            if (CRpnNode *child = n->TakeOperand(i))
                stack.push_back(child);
        }
        delete n;
    }
}

CRpnNode *CreateNodeOfKind(int kind, CEquationTree *tree, int position, int row, int col)
{
    const CRpnNode *prototype = GetPrototypes().GetAt(kind);
    return prototype ? prototype->Clone(tree, position, row, col) : nullptr;
}
