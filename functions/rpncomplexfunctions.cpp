// Component functions of complex numbers and the two that make them.

#include "functions/rpncomplexfunctions.h"

#include "formula/rpnkeywords.h"
#include "formula/rpnsharedcells.h"

#include <algorithm>
#include <cmath>
#include <vector>

// --- one operand ----------------------------------------------------------------------------

void CNodeComplexBaseSingle::Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status)
{
    switch (a.GetKind()) {
    case RPN_ARRAY_R:
    case RPN_ARRAY:
    case RPN_CURVE:
        CNodeSingleOperand::Apply(result, a, b, status);
        return;
    default:
        result.SetDouble(ToReal(a, status));
        return;
    }
}

// Reals and integers have the imaginary part 0, a numeric text is read as a
// complex number; other values read as 0.
double CNodeReal::ToReal(const CRpnData &value, unsigned char &)
{
    return value.GetComplex().real();
}

double CNodeImag::ToReal(const CRpnData &value, unsigned char &)
{
    return value.GetComplex().imag();
}

double CNodeAbs::ToReal(const CRpnData &value, unsigned char &)
{
    if (value.IsComplex()) {
        const double x = value.GetRealValue(), y = value.GetImagValue();
        return std::sqrt(x * x + y * y);
    }
    return std::fabs(value.GetDouble());
}

double CNodeAngle::ToReal(const CRpnData &value, unsigned char &)
{
    const std::complex<double> z = value.GetComplex();
    return std::atan2(z.imag(), z.real());
}

// --- two operands -----------------------------------------------------------------------------

void CNodeComplexBaseDouble::Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &)
{
    if (!a.IsArrayOrCurve() && !b.IsArrayOrCurve()) {
        result.SetComplex(Combine(a.GetDouble(), b.GetDouble()));
        return;
    }
    // Arrays in arrays are gone into with a stack of levels rather than by
    // recursion, for they may nest deeply; a pair that holds an array that
    // several cells hold is worked once (see rpnsharedcells.h).
    struct Level
    {
        CRpnData a, b, out;
        int next, count;
        bool aArray, bArray, keep;
    };
    std::vector<Level> stack;
    CRpnSharedCells shared;
    // Numbers on both sides (an ARRAY_R or a scalar) are combined at once
    // into `done` (true); anything else becomes a level.
    const auto start = [&](const CRpnData &x, const CRpnData &y, CRpnData &done, bool keep) {
        const bool xArray = x.IsArrayOrCurve(), yArray = y.IsArrayOrCurve();
        // A CURVE counts as an array of no elements.
        const int n = xArray && yArray ? std::min(x.GetSize(), y.GetSize()) : xArray ? x.GetSize() : y.GetSize();
        const double *xReals = x.GetKind() == RPN_ARRAY_R ? x.GetRealData() : nullptr;
        const double *yReals = y.GetKind() == RPN_ARRAY_R ? y.GetRealData() : nullptr;
        if ((!xArray || xReals) && (!yArray || yReals)) {
            const double xScalar = xArray ? 0.0 : x.GetDouble();
            const double yScalar = yArray ? 0.0 : y.GetDouble();
            done.SetArray(n);
            CRpnData *cells = done.GetItems();
            for (int i = 0; i < n; ++i)
                cells[i].SetComplex(Combine(xReals ? xReals[i] : xScalar, yReals ? yReals[i] : yScalar));
            return true;
        }
        Level level{x, y, CRpnData(), 0, n, xArray, yArray, keep};
        level.out.SetArray(n);
        stack.push_back(std::move(level));
        return false;
    };
    CRpnData done;
    if (start(a, b, done, false)) {
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
            cell.SetComplex(Combine(x.GetDouble(), y.GetDouble()));
        } else {
            // x and y are copies of their cells, one handle each of the
            // walk's own; a side spread over the other's cells repeats with it.
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

void ProvideComplexFunctions(CRpnPrototypeArray &prototypes)
{
    CRpnNode *const nodes[] = {
        new CNodeAbs, new CNodeReal, new CNodeImag, new CNodeAngle, new CNodeComplex, new CNodePolar,
    };
    for (CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), node);
}
