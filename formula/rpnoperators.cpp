// The operators: evaluation of one- and two-operand nodes, the arithmetic,
// comparisons, logic and bits, assignments with index chains, and indexing.

#include "formula/rpnoperators.h"

#include "formula/rpnsharedcells.h"

#include <QVarLengthArray>

#include "formula/rpnbuffer.h"
#include "formula/rpndictionary.h"
#include "formula/rpnformulavalue.h"
#include "formula/rpntree.h"
#include "formula/rpnvariableplace.h"
#include "support/xmlelement.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

namespace {

constexpr int kMsgDivisionByZero = 41655;
constexpr int kMsgBadIndex = 43032;
constexpr int kMsgIndexOutside = 43034;
constexpr int kMsgNotAVariable = 43167;

// A STRING operand of `-`, `/` and `%` is read as a number first.
CRpnData numberIfText(const CRpnData &v)
{
    return v.IsString() ? CRpnData(v.GetDouble()) : v;
}

bool isZeroDivisor(const CRpnData &b)
{
    return (b.IsReal() && b.GetRealValue() == 0.0) || (b.IsInt() && b.GetIntValue() == 0) || b.IsNull();
}

// The polar form of `^`: base z, exponent `e` (complex or real).
CRpnData complexPower(std::complex<double> z, const CRpnData &e)
{
    const double r = std::sqrt(z.real() * z.real() + z.imag() * z.imag());
    const double theta = std::atan2(z.imag(), z.real());
    double modulus, angle;
    if (e.IsComplex()) {
        const double c = e.GetRealValue(), d = e.GetImagValue();
        modulus = std::pow(r, c) * std::exp(-d * theta);
        angle = c * theta + d * std::log(r);
    } else {
        const double p = e.GetDouble();
        modulus = std::pow(r, p);
        angle = p * theta;
    }
    return CRpnData(std::complex<double>(modulus * std::cos(angle), modulus * std::sin(angle)));
}

// The indices of an index list: its elements, each array among them spread
// into its own elements (`a[{1,2}]` goes down twice).
template <typename List>
void expandIndices(const CRpnData &indices, List &out)
{
    if (!indices.IsArray()) {
        out.push_back(indices);
        return;
    }
    const int n = indices.GetSize();
    for (int i = 0; i < n; ++i) {
        const CRpnData item = indices.GetAt(i);
        if (item.IsArray()) {
            for (int k = 0; k < item.GetSize(); ++k)
                out.push_back(item.GetAt(k));
        } else {
            out.push_back(item);
        }
    }
}

// The error of an index outside its array or text.
void reportOutside(CRpnNode *node, int index, unsigned char &status)
{
    CEquationTree *tree = node->m_tree;
    if (!tree) {
        status = 0;
        return;
    }
    tree->ReportError(status, tree->HasError() ? QString() : RpnMessage(kMsgIndexOutside) + QStringLiteral("   ") + node->SourceExcerpt(),
                      QStringLiteral("[%1]").arg(index), node->m_row, node->m_col);
}

void reportNotIndexable(CRpnNode *node, unsigned char &status)
{
    ReportRpnError(node->m_tree, status, RpnMessage(kMsgIndexOutside), QStringLiteral("["), node->m_row, node->m_col);
}

// The containers above the one that an indexed store is in, on the stack
// for all but the longest chains of indices.
using CRpnContainerPath = QVarLengthArray<const CRpnData *, 8>;

// Stores `value` at indices[k...] inside `container`, which is changed in
// place or replaced (texts are made anew); the caller writes it back.
// `outer` holds the containers above this one.  A value that holds one of
// them, or this one, is stored as a copy of what it is now, so that no
// container comes to hold itself.
void storeInto(CRpnNode *node, CRpnData &container, const CRpnData *indices, std::size_t count, std::size_t k,
               const CRpnData &given, unsigned char &status, CRpnContainerPath &outer)
{
    const CRpnData &index = indices[k];
    const bool last = k + 1 == count;
    CRpnData copy;
    const CRpnData *put = &given;
    if (last) {
        outer.push_back(&container);
        if (given.HoldsAny(outer.data(), std::size_t(outer.size()))) {
            copy.DeepCopy(given);
            put = &copy;
        }
        outer.pop_back();
    }
    const CRpnData &value = *put;
    switch (container.GetKind()) {
    case RPN_ARRAY:
    case RPN_ARRAY_R: {
        const int size = container.GetSize();
        if (index.IsNull() && last) {
            // a[] = x appends.
            container.Resize(size + 1);
            container.SetAt(size, value);
            return;
        }
        const int i = index.GetInt();
        if (index.IsNull() || i < 0 || i >= size) {
            reportOutside(node, i, status);
            return;
        }
        if (last) {
            container.SetAt(i, value);
            return;
        }
        if (!container.IsArray() || container.GetKind() == RPN_ARRAY_R) {
            reportNotIndexable(node, status);
            return;
        }
        CRpnData child = container.GetAt(i);
        outer.push_back(&container);
        storeInto(node, child, indices, count, k + 1, value, status, outer);
        outer.pop_back();
        if (status != 0)
            container.SetAt(i, child);
        return;
    }
    case RPN_STRING: {
        if (!last) {
            reportNotIndexable(node, status);
            return;
        }
        QString text = container.GetTextValue();
        const QString piece = value.GetText(16);
        const int i = index.GetInt();
        if (index.IsNull() || i >= text.size()) {
            text += piece;
        } else if (i < 0) {
            reportOutside(node, i, status);
            return;
        } else if (piece.size() == 1) {
            text[i] = piece[0];
        } else {
            text.replace(i, 1, piece);
        }
        container.SetText(text);
        return;
    }
    case RPN_DICTIONARY: {
        const QString key = index.GetText(16);
        if (last) {
            container.DictSet(key, value);
            return;
        }
        CRpnData child = container.DictGet(key);
        outer.push_back(&container);
        storeInto(node, child, indices, count, k + 1, value, status, outer);
        outer.pop_back();
        if (status != 0)
            container.DictSet(key, child);
        return;
    }
    default:
        reportNotIndexable(node, status);
        return;
    }
}

} // namespace

void ReportDivisionByZero(CRpnNode *node, unsigned char &status)
{
    node->ReportError(status, kMsgDivisionByZero, {node->SourceExcerpt()});
}

// --- one operand --------------------------------------------------------------------------

CNodeSingleOperand::~CNodeSingleOperand()
{
    DeleteSubtree(m_operand);
}

bool CNodeSingleOperand::SetOperand(int i, CRpnNode *node)
{
    if (i != 0)
        return false;
    m_operand = node;
    if (node)
        node->m_parent = this;
    return true;
}

void CNodeSingleOperand::Evaluate(CRpnData &result, unsigned char &status)
{
    if (m_fastValue && !IsStopping()) {
        double x;
        if (EvaluateFast(x)) {
            result.SetDouble(x);
            return;
        }
    }
    if (!m_operand) {
        result.SetNull();
        return;
    }
    CRpnData value;
    if (!EvaluateOrPass(m_operand, value, result, status))
        return;
    if (value.IsFormula()) {
        MakeFormulaOfNode(this, &value, 1, result);
        return;
    }
    Apply(result, value, CRpnData(0), status);
}

void CNodeSingleOperand::Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status)
{
    switch (a.GetKind()) {
    case RPN_ARRAY_R: {
        const int n = a.GetSize();
        CRpnData out;
        out.SetRealArray(n);
        const double *in = a.GetRealData();
        double *o = out.GetRealData();
        for (int i = 0; i < n; ++i) {
            unsigned char st = 1;
            o[i] = ApplyReal(in[i], 0.0, st);
            if (st == 0)
                status = 0;
        }
        result = std::move(out);
        return;
    }
    case RPN_ARRAY: {
        // Arrays in arrays are gone into with a stack of their own; the
        // other cells go through Apply.
        // An array that several cells hold is worked once (see rpnsharedcells.h).
        struct Level
        {
            CRpnData in, out;
            int next;
            bool keep;
        };
        std::vector<Level> stack;
        CRpnSharedCells shared;
        const CRpnData nothing;
        const auto enter = [&stack](const CRpnData &in, bool keep) {
            Level level{in, CRpnData(), 0, keep};
            level.out.SetArray(in.GetSize());
            stack.push_back(std::move(level));
        };
        enter(a, false);
        CRpnData done;
        while (!stack.empty()) {
            Level &level = stack.back();
            if (level.next == level.in.GetSize()) {
                done = std::move(level.out);
                if (level.keep)
                    shared.Keep(level.in, nothing, done);
                stack.pop_back();
                if (!stack.empty()) {
                    Level &up = stack.back();
                    up.out.GetItems()[up.next++] = std::move(done);
                }
                continue;
            }
            const CRpnData &cell = level.in.GetItems()[level.next];
            if (cell.GetKind() == RPN_ARRAY) {
                const bool keep = CRpnSharedCells::IsShared(cell, 0);
                if (const CRpnData *made = keep ? shared.Find(cell, nothing) : nullptr) {
                    level.out.GetItems()[level.next++] = *made;
                    continue;
                }
                enter(cell, keep); // `level` is not used after this
                continue;
            }
            unsigned char st = 1;
            Apply(level.out.GetItems()[level.next], cell, b, st);
            ++level.next;
            if (st == 0)
                status = 0;
        }
        result = std::move(done);
        return;
    }
    case RPN_COMPLEX:
        ApplyComplex(result, a, b, status);
        return;
    case RPN_CURVE:
        result.SetNull();
        return;
    default:
        result.SetDouble(ApplyReal(a.GetDouble(), 0.0, status));
        return;
    }
}

bool CNodeSingleOperand::EvaluateFast(double &out)
{
    double a;
    // Short of stack the ordinary evaluation reports it.
    if (!m_operand || StackRoom::IsStackLow() || !m_operand->EvaluateFast(a))
        return false;
    unsigned char st = 1;
    out = ApplyReal(a, 0.0, st);
    return st == 1;
}

// --- two operands ----------------------------------------------------------------------------

CNodeDoubleOperand::~CNodeDoubleOperand()
{
    DeleteSubtree(m_left);
    DeleteSubtree(m_right);
}

bool CNodeDoubleOperand::SetOperand(int i, CRpnNode *node)
{
    if (i == 0) {
        m_left = node;
    } else if (i == 1) {
        m_right = node;
    } else {
        return false;
    }
    if (node)
        node->m_parent = this;
    return true;
}

namespace {

// A link of a left-deep chain of + - * (how the parser leaves a long flat sum
// or product): a node whose value is made by CNodeDoubleOperand::Evaluate
// and EvaluateFast themselves.  Such a chain is walked with a loop, so that
// its length is bounded by memory rather than by the stack.
bool isChainLink(const CRpnNode *node)
{
    const int op = node->m_fastOp;
    return op == RPN_FAST_OP_ADD || op == RPN_FAST_OP_SUBTRACT || op == RPN_FAST_OP_MULTIPLY;
}

// The links from `top` down to the last one whose left operand is no link;
// top first.  Links without both operands end the chain.
template <typename List>
void collectChain(CNodeDoubleOperand *top, List &chain)
{
    CNodeDoubleOperand *node = top;
    for (;;) {
        chain.push_back(node);
        CRpnNode *left = node->m_left;
        if (!left || !node->m_right || !isChainLink(left))
            return;
        node = static_cast<CNodeDoubleOperand *>(left);
    }
}

using Chain = QVarLengthArray<CNodeDoubleOperand *, 32>;

} // namespace

void CNodeDoubleOperand::Evaluate(CRpnData &result, unsigned char &status)
{
    if (m_fastValue && !IsStopping()) {
        double x;
        if (EvaluateFast(x)) {
            result.SetDouble(x);
            return;
        }
    }
    if (!m_left || !m_right) {
        result.SetNull();
        return;
    }
    if (m_chainHead) {
        // From the deepest link up, each link's value is the left operand of
        // the one above it.
        Chain chain;
        collectChain(this, chain);
        CNodeDoubleOperand *bottom = chain.back();
        CRpnData a;
        if (!bottom->m_left || !bottom->m_right) {
            result.SetNull();
            return;
        }
        if (!bottom->EvaluateOrPass(bottom->m_left, a, result, status))
            return;
        for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
            CNodeDoubleOperand *link = *it;
            if (it != chain.rbegin()) {
                // The link below is this one's left operand: what it left
                // behind is taken as EvaluateOrPass takes an operand's.
                if (status == 0) {
                    link->NoteFailure(*(it - 1));
                    result.SetNull();
                    return;
                }
                if (status == 10 || IsStopping()) {
                    result = std::move(a);
                    return;
                }
            }
            CRpnData value;
            link->evaluateWithLeft(a, value, status);
            a = std::move(value);
        }
        result = std::move(a);
        return;
    }
    CRpnData a;
    if (!EvaluateOrPass(m_left, a, result, status))
        return;
    evaluateWithLeft(a, result, status);
}

void CNodeDoubleOperand::evaluateWithLeft(CRpnData &a, CRpnData &result, unsigned char &status)
{
    // The short cuts: `0 * f()`, `0 && f()` and `1 || f()` do not evaluate f.
    if (a.IsReal()) {
        const int path = GetRealPath();
        if (path == RPN_REAL_PATH_ZERO_CUT && a.GetRealValue() == 0.0) {
            result = std::move(a);
            return;
        }
        if (path == RPN_REAL_PATH_TRUE_CUT && a.GetRealValue() != 0.0) {
            result.SetDouble(1.0);
            return;
        }
    }
    CRpnData b;
    if (!EvaluateOrPass(m_right, b, result, status))
        return;
    combine(a, b, result, status);
}

void CNodeDoubleOperand::combine(CRpnData &a, const CRpnData &b, CRpnData &result, unsigned char &status)
{
    if (a.IsReal() && b.IsReal()) {
        // Two REALs under an operator whose value arithmetic is the plain
        // double operation: the double, without the value arithmetic's detour
        // (and for the operations marked by PrepareFastPath without a call).
        const double x = a.GetRealValue(), y = b.GetRealValue();
        double r = 0.0;
        bool done = true;
        switch (m_fastOp) {
        case RPN_FAST_OP_ADD: r = x + y; break;
        case RPN_FAST_OP_SUBTRACT: r = x - y; break;
        case RPN_FAST_OP_MULTIPLY: r = x * y; break;
        case RPN_FAST_OP_LESS: r = x < y ? 1.0 : 0.0; break;
        case RPN_FAST_OP_GREATER: r = x > y ? 1.0 : 0.0; break;
        case RPN_FAST_OP_LESS_EQUAL: r = x <= y ? 1.0 : 0.0; break;
        case RPN_FAST_OP_GREATER_EQUAL: r = x >= y ? 1.0 : 0.0; break;
        default: done = false; break;
        }
        if (done) {
            result.SetDouble(r);
            return;
        }
        switch (GetKind()) {
        case RPN_NODE_PLUS:
        case RPN_NODE_MINUS:
        case RPN_NODE_MULTIPLY:
        case RPN_NODE_LESS:
        case RPN_NODE_GREATER:
        case RPN_NODE_LESS_EQUAL:
        case RPN_NODE_GREATER_EQUAL:
            result.SetDouble(ApplyReal(a.GetRealValue(), b.GetRealValue(), status));
            return;
        default:
            break;
        }
    }
    if (a.IsFormula() || b.IsFormula()) {
        const CRpnData operands[2] = {a, b};
        MakeFormulaOfNode(this, operands, 2, result);
        return;
    }
    if (applyInPlace(a, b)) {
        result = std::move(a);
        return;
    }
    Apply(result, a, b, status);
}

bool CNodeDoubleOperand::DecidesPair(CRpnData &, const CRpnData &, const CRpnData &)
{
    return false;
}

void CNodeDoubleOperand::applyToArrays(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status)
{
    // One level of the walk: two operands of which one at least is an array
    // (a CURVE counts as one of no elements), and the cells made so far.
    // A pair that holds an array that several cells hold is worked once
    // (see rpnsharedcells.h).
    struct Level
    {
        CRpnData a, b, out;
        int next, count;
        bool aArray, bArray, keep;
    };
    std::vector<Level> stack;
    CRpnSharedCells shared;
    // Plain doubles (two ARRAY_R, or one with a scalar read once) are done
    // at once into `done` (true); anything else becomes a level.
    const auto start = [&](const CRpnData &x, const CRpnData &y, CRpnData &done, bool keep = false) {
        const bool xArray = x.IsArrayOrCurve(), yArray = y.IsArrayOrCurve();
        const int n = xArray && yArray ? std::min(x.GetSize(), y.GetSize()) : xArray ? x.GetSize() : y.GetSize();
        const bool xReals = x.GetKind() == RPN_ARRAY_R, yReals = y.GetKind() == RPN_ARRAY_R;
        if ((xReals || !xArray) && (yReals || !yArray)) {
            done.SetRealArray(n);
            double *o = done.GetRealData();
            const double *xs = xArray ? x.GetRealData() : nullptr;
            const double *ys = yArray ? y.GetRealData() : nullptr;
            const double xScalar = xArray ? 0.0 : x.GetDouble();
            const double yScalar = yArray ? 0.0 : y.GetDouble();
            for (int i = 0; i < n; ++i) {
                unsigned char st = 1;
                o[i] = ApplyReal(xs ? xs[i] : xScalar, ys ? ys[i] : yScalar, st);
                if (st == 0)
                    status = 0;
            }
            return true;
        }
        Level level{x, y, CRpnData(), 0, n, xArray, yArray, keep};
        level.out.SetArray(n);
        stack.push_back(std::move(level));
        return false;
    };

    CRpnData done;
    if (start(a, b, done)) {
        result = std::move(done);
        return;
    }
    while (!stack.empty()) {
        Level &level = stack.back();
        if (level.next == level.count) {
            done = std::move(level.out);
            if (level.keep)
                shared.Keep(level.a, level.b, done);
            stack.pop_back();
            if (!stack.empty()) {
                Level &up = stack.back();
                up.out.GetItems()[up.next++] = std::move(done);
            }
            continue;
        }
        const CRpnData x = level.aArray ? level.a.GetAt(level.next) : level.a;
        const CRpnData y = level.bArray ? level.b.GetAt(level.next) : level.b;
        CRpnData &cell = level.out.GetItems()[level.next];
        if (!x.IsArrayOrCurve() && !y.IsArrayOrCurve()) {
            unsigned char st = 1;
            Apply(cell, x, y, st);
            if (st == 0)
                status = 0;
        } else if (!DecidesPair(cell, x, y)) {
            // x and y are copies of their cells, one handle each of the walk's
            // own.  A side spread over the other's cells is the same in every
            // pair, so the pair repeats when the cell does.
            const bool keep = (level.aArray && CRpnSharedCells::IsShared(x, 1))
                || (level.bArray && CRpnSharedCells::IsShared(y, 1));
            if (const CRpnData *made = keep ? shared.Find(x, y) : nullptr)
                cell = *made;
            else if (!start(x, y, cell, keep))
                continue; // a new level; `level` is not used after this
        }
        ++level.next;
    }
    result = std::move(done);
}

bool CNodeDoubleOperand::applyInPlace(CRpnData &a, const CRpnData &b)
{
    // A text that no one else holds (the value of `String(i) + ","` in
    // `String(i) + "," + s`) takes a text added to it at its end, so that a
    // chain of + builds its text once instead of copying it at every link.
    if (a.IsString() && b.IsString())
        return GetKind() == RPN_NODE_PLUS && a.AppendText(b.GetTextValue());
    // An array that no one else holds (the value of `a*a` in `a*a + 1`)
    // takes the results of +, - and * with a number in its own cells.
    if (a.GetKind() != RPN_ARRAY || a.GetRefs() != 1 || a.IsMatrix() || !b.IsReal())
        return false;
    const int kind = GetKind();
    if (kind != RPN_NODE_PLUS && kind != RPN_NODE_MINUS && kind != RPN_NODE_MULTIPLY)
        return false;
    const double y = b.GetRealValue();
    CRpnData *items = a.GetItems();
    const int n = a.GetSize();
    for (int i = 0; i < n; ++i) {
        CRpnData &item = items[i];
        if (item.IsReal()) {
            const double x = item.GetRealValue();
            item.SetDouble(kind == RPN_NODE_PLUS ? x + y : kind == RPN_NODE_MINUS ? x - y : x * y);
        } else if (kind == RPN_NODE_PLUS) {
            item = CRpnData::Add(item, b);
        } else if (kind == RPN_NODE_MINUS) {
            item = CRpnData::Subtract(item, b);
        } else {
            item = CRpnData::Multiply(item, b);
        }
    }
    return true;
}

void CNodeDoubleOperand::Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status)
{
    if (a.IsArrayOrCurve() || b.IsArrayOrCurve()) {
        applyToArrays(result, a, b, status);
        return;
    }
    if (a.IsComplex() || b.IsComplex()) {
        ApplyComplex(result, a, b, status);
        return;
    }
    result.SetDouble(ApplyReal(a.GetDouble(), b.GetDouble(), status));
}

inline bool CNodeDoubleOperand::fastWithLeft(double a, double &out)
{
    double b;
    const int path = m_realPath;
    // A short cut needs a REAL on the left.  Where a list inside may have
    // made an ARRAY (or not, if a short cut further in kept a REAL), the
    // ordinary evaluation decides.
    const bool cut = (path == RPN_REAL_PATH_ZERO_CUT && a == 0.0) || (path == RPN_REAL_PATH_TRUE_CUT && a != 0.0);
    if (cut) {
        if (!m_left->m_fastValue)
            return false;
        out = path == RPN_REAL_PATH_ZERO_CUT ? a : 1.0;
        return true;
    }
    if (!m_right->EvaluateFast(b))
        return false;
    switch (m_fastOp) {
    case RPN_FAST_OP_ADD: out = a + b; return true;
    case RPN_FAST_OP_SUBTRACT: out = a - b; return true;
    case RPN_FAST_OP_MULTIPLY: out = a * b; return true;
    case RPN_FAST_OP_LESS: out = a < b ? 1.0 : 0.0; return true;
    case RPN_FAST_OP_GREATER: out = a > b ? 1.0 : 0.0; return true;
    case RPN_FAST_OP_LESS_EQUAL: out = a <= b ? 1.0 : 0.0; return true;
    case RPN_FAST_OP_GREATER_EQUAL: out = a >= b ? 1.0 : 0.0; return true;
    default: break;
    }
    if (path == RPN_REAL_PATH_DIVISOR && b == 0.0)
        return false;
    unsigned char st = 1;
    out = ApplyReal(a, b, st);
    return st == 1;
}

bool CNodeDoubleOperand::EvaluateFast(double &out)
{
    double a;
    // Short of stack the ordinary evaluation reports it.
    if (StackRoom::IsStackLow())
        return false;
    if (m_chainHead)
        return fastChain(out);
    if (!m_left->EvaluateFast(a))
        return false;
    return fastWithLeft(a, out);
}

bool CNodeDoubleOperand::fastChain(double &out)
{
    Chain chain;
    collectChain(this, chain);
    CNodeDoubleOperand *bottom = chain.back();
    double a;
    if (!bottom->m_left || !bottom->m_right || !bottom->m_left->EvaluateFast(a))
        return false;
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
        if (!(*it)->fastWithLeft(a, a))
            return false;
    }
    out = a;
    return true;
}

// --- arithmetic ----------------------------------------------------------------------------------

void CNodePlus::Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &)
{
    result = CRpnData::Add(a, b);
}

void CNodeMinus::Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &)
{
    result = CRpnData::Subtract(numberIfText(a), numberIfText(b));
}

void CNodeMultiply::Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &)
{
    result = CRpnData::Multiply(a, b);
}

void CNodeDivide::Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status)
{
    const CRpnData divisor = numberIfText(b);
    if (isZeroDivisor(divisor)) {
        ReportDivisionByZero(this, status);
        result.SetNull();
        return;
    }
    result = CRpnData::Divide(numberIfText(a), divisor);
}

double CNodeDivide::ApplyReal(double a, double b, unsigned char &status)
{
    if (b == 0.0) {
        ReportDivisionByZero(this, status);
        return 0.0;
    }
    return a / b;
}

void CNodeMod::Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status)
{
    const CRpnData divisor = numberIfText(b);
    if (isZeroDivisor(divisor)) {
        ReportDivisionByZero(this, status);
        result.SetNull();
        return;
    }
    result = CRpnData::Remainder(numberIfText(a), divisor);
}

double CNodeMod::ApplyReal(double a, double b, unsigned char &status)
{
    if (b == 0.0) {
        ReportDivisionByZero(this, status);
        return 0.0;
    }
    return std::fmod(a, b);
}

double CNodePower::ApplyReal(double a, double b, unsigned char &)
{
    return RpnPower(a, b);
}

void CNodePower::ApplyComplex(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &)
{
    result = complexPower(a.GetComplex(), b);
}

double CNodeMod2::ApplyReal(double a, double b, unsigned char &)
{
    return std::fmod(a, b);
}

double CNodeAbsPower::ApplyReal(double a, double b, unsigned char &)
{
    return std::pow(std::fabs(a), b);
}

void CNodeAbsPower::ApplyComplex(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &)
{
    // The imaginary part of the base is dropped; the sign of its real part stays.
    result = complexPower({a.GetComplex().real(), 0.0}, b);
}

// --- comparisons -----------------------------------------------------------------------------------

void CNodeEqualTo::Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status)
{
    if (!CNodeEqualTo::DecidesPair(result, a, b))
        CNodeDoubleOperand::Apply(result, a, b, status);
}

bool CNodeEqualTo::DecidesPair(CRpnData &result, const CRpnData &a, const CRpnData &b)
{
    const int equal = CRpnData::Equals(a, b);
    if (equal == RPN_NOT_DECIDED)
        return false;
    result.SetInt(equal);
    return true;
}

void CNodeNotEqualTo::Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status)
{
    if (!CNodeNotEqualTo::DecidesPair(result, a, b))
        CNodeDoubleOperand::Apply(result, a, b, status);
}

bool CNodeNotEqualTo::DecidesPair(CRpnData &result, const CRpnData &a, const CRpnData &b)
{
    const int equal = CRpnData::Equals(a, b);
    if (equal == RPN_NOT_DECIDED)
        return false;
    result.SetInt(equal ? 0 : 1);
    return true;
}

// --- bits ------------------------------------------------------------------------------------------

double CNodeBitwiseAnd::ApplyReal(double a, double b, unsigned char &)
{
    return RpnBiasedInt(a) & RpnBiasedInt(b);
}

double CNodeBitwiseOR::ApplyReal(double a, double b, unsigned char &)
{
    return RpnBiasedInt(a) | RpnBiasedInt(b);
}

double CNodeBitwiseNot::ApplyReal(double a, double, unsigned char &)
{
    return ~RpnBiasedInt(a);
}

double CNodeBitwiseShiftLeft::ApplyReal(double a, double b, unsigned char &)
{
    // Shifts of 32 places and more, or by a negative count, leave no bits.
    const int s = RpnBiasedInt(b);
    if (s < 0 || s > 31)
        return 0.0;
    return std::int32_t(std::uint32_t(RpnBiasedInt(a)) << s);
}

double CNodeBitwiseShiftRight::ApplyReal(double a, double b, unsigned char &)
{
    // An arithmetic shift: the sign fills in from the left.
    const int s = RpnBiasedInt(b);
    const int x = RpnBiasedInt(a);
    if (s < 0)
        return 0.0;
    return s > 31 ? (x < 0 ? -1.0 : 0.0) : double(x >> s);
}

// --- assignment --------------------------------------------------------------------------------------

void CNodeAssignment::Store(CRpnNode *node, CRpnNode *target, const CRpnData &value, CRpnData &result,
                            unsigned char &status)
{
    if (CNodeVariable *variable = target ? target->AsVariable() : nullptr) {
        result = variable->SetValue(value, status);
        return;
    }
    if (!target || !target->IsArrayIndex()) {
        ReportRpnError(node->m_tree, status, RpnMessage(kMsgNotAVariable), QStringLiteral("="), node->m_row,
                       node->m_col);
        result.SetNull();
        return;
    }
    // The chain v[i][j]...: walked from the outside to the variable, the
    // indices gathered first to last.
    QVarLengthArray<CNodeDoubleOperand *, 8> chain;
    CRpnNode *base = target;
    while (base && base->IsArrayIndex()) {
        chain.push_back(static_cast<CNodeDoubleOperand *>(base));
        base = static_cast<CNodeDoubleOperand *>(base)->m_left;
    }
    CNodeVariable *variable = base ? base->AsVariable() : nullptr;
    if (!variable) {
        ReportRpnError(node->m_tree, status, RpnMessage(kMsgNotAVariable), QStringLiteral("="), node->m_row,
                       node->m_col);
        result.SetNull();
        return;
    }
    QVarLengthArray<CRpnData, 4> indices;
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
        CRpnNode *indexNode = (*it)->m_right;
        // The bracket's list of one index, `a[i] = x` or `a[] = x` (whose
        // list holds a NULL): its one value is taken without making the
        // list's array, the cells of an array index one level deep as the
        // list would give them.
        CRpnNode *single = nullptr;
        if (indexNode && indexNode->GetKind() == RPN_NODE_LIST && !indexNode->IsOperation()) {
            const int n = indexNode->GetOperandCount();
            if (n == 0) {
                indices.push_back(CRpnData());
                continue;
            }
            if (n == 1)
                single = indexNode->GetOperand(0);
        }
        if (single && single->GetKind() == RPN_NODE_NULL) {
            indices.push_back(CRpnData());
            continue;
        }
        CRpnData index;
        if (single)
            single->Evaluate(index, status);
        else if (indexNode)
            indexNode->Evaluate(index, status);
        if (status == 0) {
            ReportRpnError(node->m_tree, status, RpnMessage(kMsgBadIndex), QStringLiteral("["), node->m_row,
                           node->m_col);
            result.SetNull();
            return;
        }
        if (single && index.IsArray()) {
            const int n = index.GetSize();
            for (int k = 0; k < n; ++k)
                indices.push_back(index.GetAt(k));
        } else if (single) {
            indices.push_back(std::move(index));
        } else {
            expandIndices(index, indices);
        }
    }
    if (indices.empty())
        indices.push_back(CRpnData());
    // The value is changed where it lies when it has a place of its own.
    if (CRpnData *slot = variable->FindStorage()) {
        CRpnContainerPath outer;
        storeInto(node, *slot, indices.data(), std::size_t(indices.size()), 0, value, status, outer);
        if (status == 0) {
            result.SetNull();
            return;
        }
        variable->m_value = *slot;
        result = value;
        return;
    }
    CRpnData current;
    variable->GetValue(current);
    CRpnContainerPath outer;
    storeInto(node, current, indices.data(), std::size_t(indices.size()), 0, value, status, outer);
    if (status == 0) {
        result.SetNull();
        return;
    }
    variable->SetValue(current, status);
    result = value;
}

// The log of variables after a store: the variable at the base of the left
// side with its whole new value.
static void logStored(CEquationTree *tree, CRpnNode *target)
{
    while (target && target->IsArrayIndex())
        target = static_cast<CNodeDoubleOperand *>(target)->m_left;
    CNodeVariable *variable = target ? target->AsVariable() : nullptr;
    if (!variable)
        return;
    CRpnData value;
    variable->GetValue(value);
    tree->LogVariable(variable->m_name, value);
}

void CNodeAssignment::Evaluate(CRpnData &result, unsigned char &status)
{
    if (!m_left || !m_right) {
        result.SetNull();
        return;
    }
    CRpnData value;
    bool evaluated = false;
    if (m_plainStore && !IsStopping()) {
        // A variable with a place of its own given the double of an
        // operation on numbers: the variable, the node's copy and the result
        // each take the number in their own payload, overwritten where it
        // lies when no one else holds it.
        double x;
        CNodeVariable *variable = static_cast<CNodeVariable *>(m_left);
        if (m_right->EvaluateFast(x)) {
            if (CRpnData *slot = variable->FindPlace()) {
                slot->SetDouble(x);
                variable->m_value.SetDouble(x);
                result.SetDouble(x);
                if (m_tree)
                    m_tree->LogVariable(variable->m_name, result);
                return;
            }
            // No place yet: the number is stored the ordinary way (which
            // makes the place), without evaluating the right side again.
            value.SetDouble(x);
            evaluated = true;
        }
    }
    if (!evaluated && !EvaluateOrPass(m_right, value, result, status))
        return;
    const bool self = IsSelf();
    if (self && GetKind() == RPN_NODE_ADD_ASSIGN && value.IsString()) {
        // Text onto text: appended where the text lies when no other handle
        // shares it, so that a loop of appends stays linear.
        CNodeVariable *variable = m_left->AsVariable();
        CRpnData *slot = variable ? variable->FindStorage() : nullptr;
        if (slot && slot->IsString()) {
            // The node's own copy of the last value read must not count as a sharer.
            if (variable->m_value.IsSameAs(*slot))
                variable->m_value.SetNull();
            // `s += s`: the value read is the text itself; without that
            // read's share the text is appended to itself where it lies.
            const bool itself = value.IsSameAs(*slot);
            if (itself)
                value.SetNull();
            const auto append = [&] { return itself ? slot->AppendOwnText() : slot->AppendText(value.GetTextValue()); };
            bool appended = append();
            if (!appended && &result != slot && result.IsSameAs(*slot)) {
                // Nor does what the last append left as the caller's value (a
                // loop whose body is this one statement hands that back).
                result.SetNull();
                appended = append();
            }
            if (!appended && itself)
                value = *slot; // shared elsewhere: the sum below makes a new text
            if (appended) {
                result = *slot;
                if (m_tree)
                    m_tree->LogVariable(variable->m_name, result);
                return;
            }
        }
    }
    if (self) {
        CRpnData current;
        m_left->Evaluate(current, status);
        if (status == 0) {
            result.SetNull();
            return;
        }
        CRpnData combined;
        Combine(combined, current, value, status);
        if (status == 0) {
            result.SetNull();
            return;
        }
        value = std::move(combined);
    }
    CNodeVariable *variable = m_left->m_variableNode ? static_cast<CNodeVariable *>(m_left) : nullptr;
    if (value.GetKind() == RPN_CURVE && variable)
        variable->SetMark(CNodeVariable::MarkCurve, true);
    // Value semantics for arrays: a shared one is copied before it is stored.
    if (value.IsArrayOrCurve() && value.GetRefs() >= 2) {
        CRpnData copy = value;
        copy.DeepCopy(value);
        value = std::move(copy);
    }
    if (variable && variable->m_slot >= 0 && m_tree && variable->m_tree == m_tree) {
        // A local of the running call: the slot and the node's copy take
        // the value, as SetValue would give it them.
        CRpnCallFrame *frame = m_tree->GetCallFrame();
        if (frame && frame->GetFunction() == variable->m_slotFunction && !variable->IsConstant()) {
            frame->SetSlot(variable->m_slot, value);
            variable->m_value = value;
            result = std::move(value);
            if (m_tree->Environment().IsLogging())
                logStored(m_tree, m_left);
            return;
        }
    }
    Store(this, m_left, value, result, status);
    if (m_tree && status != 0 && m_tree->Environment().IsLogging())
        logStored(m_tree, m_left);
}

void CNodeAssignment::Combine(CRpnData &result, const CRpnData &, const CRpnData &value, unsigned char &)
{
    result = value;
}

int CNodeAssignment::CollectDefaults(CMapStringToRpnData &dictionary)
{
    int added = CRpnNode::CollectDefaults(dictionary);
    if (CNodeVariable *variable = m_left ? m_left->AsVariable() : nullptr) {
        CRpnData existing;
        if (!dictionary.Lookup(variable->m_name, existing)) {
            dictionary.SetAt(variable->m_name, variable->m_value);
            ++added;
        }
    }
    return added;
}

void CNodeAddAssignment::Combine(CRpnData &result, const CRpnData &current, const CRpnData &value, unsigned char &)
{
    result = CRpnData::Add(current, value);
}

void CNodeSubAssignment::Combine(CRpnData &result, const CRpnData &current, const CRpnData &value, unsigned char &)
{
    result = CRpnData::Subtract(numberIfText(current), numberIfText(value));
}

void CNodeMulAssignment::Combine(CRpnData &result, const CRpnData &current, const CRpnData &value, unsigned char &)
{
    result = CRpnData::Multiply(current, value);
}

void CNodeDivAssignment::Combine(CRpnData &result, const CRpnData &current, const CRpnData &value,
                                 unsigned char &status)
{
    const CRpnData divisor = numberIfText(value);
    if (isZeroDivisor(divisor)) {
        ReportDivisionByZero(this, status);
        result.SetNull();
        return;
    }
    result = CRpnData::Divide(numberIfText(current), divisor);
}

// --- ++ and -- -------------------------------------------------------------------------------------------

CRpnNode *CNodeIncrement::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CNodeIncrement *>(CRpnNode::Clone(tree, position, row, col));
    node->m_fix = m_fix;
    return node;
}

void CNodeIncrement::SerializeNode(CRpnBuffer &buffer)
{
    CRpnNode::SerializeNode(buffer);
    buffer.Transfer(m_fix);
}

void CNodeIncrement::Evaluate(CRpnData &result, unsigned char &status)
{
    CNodeVariable *variable =
        m_operand && m_operand->m_variableNode ? static_cast<CNodeVariable *>(m_operand) : nullptr;
    if (!variable) {
        ReportRpnError(m_tree, status, RpnMessage(kMsgNotAVariable), GetName(), m_row, m_col);
        result.SetNull();
        return;
    }
    // A number in a place of its own is stepped there.
    if (CRpnData *slot = variable->FindPlace(); slot && slot->IsReal()) {
        // Each handle takes the number in its own payload, overwritten where
        // it lies when no one else holds it: no payload changes hands.
        const double old = slot->GetRealValue();
        const double now = old + (m_fastOp == RPN_FAST_OP_STEP_UP     ? 1.0
                                  : m_fastOp == RPN_FAST_OP_STEP_DOWN ? -1.0
                                                                      : double(Step()));
        slot->SetDouble(now);
        variable->m_value.SetDouble(now);
        result.SetDouble(m_fix < 0 ? now : old);
        return;
    }
    if (CRpnData *slot = variable->FindStorage(); slot && slot->IsInt()) {
        CRpnData now;
        now.SetInt(int(std::uint32_t(slot->GetIntValue()) + std::uint32_t(Step())));
        if (m_fix < 0) {
            *slot = now;
            variable->m_value = now;
            result = std::move(now);
        } else {
            result = *slot;
            *slot = now;
            variable->m_value = std::move(now);
        }
        return;
    }
    CRpnData old;
    variable->Evaluate(old, status);
    if (status == 0) {
        result.SetNull();
        return;
    }
    CRpnData now;
    if (old.IsString())
        now = old;
    else if (old.IsInt())
        now.SetInt(int(std::uint32_t(old.GetIntValue()) + std::uint32_t(Step())));
    else
        now.SetDouble(old.GetDouble() + Step());
    variable->SetValue(now, status);
    result = m_fix < 0 ? now : old;
}

// --- indexing ------------------------------------------------------------------------------------------------

void CNodeArrayIndex::Evaluate(CRpnData &result, unsigned char &status)
{
    // The same test of the bracket's list as the stores below make.
    CRpnNode *index = nullptr;
    if (m_right && m_right->GetKind() == RPN_NODE_LIST && !m_right->IsOperation() && m_right->GetOperandCount() == 1)
        index = m_right->GetOperand(0);
    if (!index || !m_left || m_fastValue || IsStopping()) {
        CNodeDoubleOperand::Evaluate(result, status);
        return;
    }
    CRpnData a, i;
    if (!EvaluateOrPass(m_left, a, result, status) || !EvaluateOrPass(index, i, result, status))
        return;
    if ((i.IsReal() || i.IsInt()) && !a.IsFormula()) {
        combine(a, i, result, status);
        return;
    }
    // Any other index goes in the list the brackets would have made.
    CRpnData indices;
    indices.SetArray(1);
    indices.GetItems()[0] = std::move(i);
    combine(a, indices, result, status);
}

void CNodeArrayIndex::Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status)
{
    // One number into an array, the common case of `a[i]`: the cell, with no
    // list of indices made.
    if (a.IsArray() && (b.IsReal() || b.IsInt())) {
        const int i = b.GetInt();
        if (i >= 0 && i < a.GetSize()) {
            if (const CRpnData *items = a.GetItems())
                result = items[i];
            else
                result.SetDouble(a.GetRealData()[i]);
            return;
        }
    }
    CRpnData current = a;
    QVarLengthArray<CRpnData, 4> indices;
    expandIndices(b, indices);
    for (const CRpnData &index : indices) {
        switch (current.GetKind()) {
        case RPN_ARRAY:
        case RPN_ARRAY_R: {
            const int i = index.GetInt();
            if (i < 0 || i >= current.GetSize()) {
                reportOutside(this, i, status);
                result.SetNull();
                return;
            }
            current = current.GetAt(i);
            break;
        }
        case RPN_STRING: {
            const QString &text = current.GetTextValue();
            const int i = index.GetInt();
            if (i < 0 || i >= text.size()) {
                reportOutside(this, i, status);
                result.SetNull();
                return;
            }
            current = CRpnData(QString(text[i]));
            break;
        }
        case RPN_DICTIONARY:
            current = current.DictGet(index.GetText(16));
            break;
        case RPN_XML: {
            CXmlElement *element = current.GetXml();
            if (index.IsString()) {
                bool found = false;
                const QString value = CXmlElement::IsNull(element) ? QString()
                                                                    : element->GetAttribute(index.GetTextValue(), &found);
                if (found)
                    current.SetText(value);
                else
                    current.SetNull();
            } else if (index.IsNull() || (index.IsArray() && index.GetSize() == 0)) {
                current.SetText(CXmlElement::IsNull(element) ? QString() : element->GetName());
            } else {
                reportNotIndexable(this, status);
                result = a;
                return;
            }
            break;
        }
        default:
            reportNotIndexable(this, status);
            result = a;
            return;
        }
    }
    result = std::move(current);
}

// --- inspection ---------------------------------------------------------------------------------------------

// Both look at the operand as it is: a formula is not made into a further
// formula, and an array is not taken cell by cell.
void CNodeIsNull::Evaluate(CRpnData &result, unsigned char &status)
{
    CRpnData value;
    if (m_operand && !EvaluateOrPass(m_operand, value, result, status)) {
        if (status == 0)
            result.SetInt(1); // a failed operand counts as empty
        return;
    }
    Apply(result, value, CRpnData(0), status);
}

void CNodeIsNull::Apply(CRpnData &result, const CRpnData &a, const CRpnData &, unsigned char &)
{
    const bool empty = a.IsNull() || (a.IsXml() && CXmlElement::IsNull(a.GetXml()));
    result.SetInt(empty ? 1 : 0);
}

void CNodeTypeName::Evaluate(CRpnData &result, unsigned char &status)
{
    CRpnData value;
    if (m_operand && !EvaluateOrPass(m_operand, value, result, status))
        return;
    Apply(result, value, CRpnData(0), status);
}

void CNodeTypeName::Apply(CRpnData &result, const CRpnData &a, const CRpnData &, unsigned char &)
{
    result.SetText(CRpnData::KindName(a.GetKind()));
}
