// Component functions of complex numbers and the two that make them.

#include "functions/rpncomplexfunctions.h"

#include "formula/rpnkeywords.h"

#include <algorithm>
#include <cmath>

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

void CNodeComplexBaseDouble::Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status)
{
    const bool aArray = a.IsArrayOrCurve();
    const bool bArray = b.IsArrayOrCurve();
    if (!aArray && !bArray) {
        result.SetComplex(Combine(a.GetDouble(), b.GetDouble()));
        return;
    }
    // A CURVE counts as an array of no elements.
    const int n = aArray && bArray ? std::min(a.GetSize(), b.GetSize()) : aArray ? a.GetSize() : b.GetSize();
    const double *aReals = a.GetKind() == RPN_ARRAY_R ? a.GetRealData() : nullptr;
    const double *bReals = b.GetKind() == RPN_ARRAY_R ? b.GetRealData() : nullptr;
    const double aScalar = aArray ? 0.0 : a.GetDouble();
    const double bScalar = bArray ? 0.0 : b.GetDouble();
    CRpnData out;
    out.SetArray(n);
    CRpnData *cells = out.GetItems();
    for (int i = 0; i < n; ++i) {
        const bool aDirect = !aArray || aReals;
        const bool bDirect = !bArray || bReals;
        if (aDirect && bDirect) {
            cells[i].SetComplex(Combine(aReals ? aReals[i] : aScalar, bReals ? bReals[i] : bScalar));
            continue;
        }
        unsigned char st = 1;
        Apply(cells[i], aArray ? a.GetAt(i) : a, bArray ? b.GetAt(i) : b, st);
        if (st == 0)
            status = 0;
    }
    result = std::move(out);
}

void ProvideComplexFunctions(CRpnPrototypeArray &prototypes)
{
    CRpnNode *const nodes[] = {
        new CNodeAbs, new CNodeReal, new CNodeImag, new CNodeAngle, new CNodeComplex, new CNodePolar,
    };
    for (CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), node);
}
