#pragma once
// The component functions of complex numbers (Real, Imag, abs, Angle) and
// the two that make complex numbers (Complex, Polar).

#include "functions/rpnfunctionkinds.h"
#include "formula/rpnoperators.h"

#include <complex>

// An operation from any value to a real.  Apply spreads over arrays as the
// base does (an ARRAY_R element goes through ApplyReal, an ARRAY cell
// through Apply, a CURVE gives null); every other operand, a COMPLEX
// included, goes through ToReal and gives a REAL.
class CNodeComplexBaseSingle : public CNodeSingleOperand
{
public:
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    virtual double ToReal(const CRpnData &value, unsigned char &status) = 0;
};

// Real(z): the real part.
class CNodeReal : public CNodeComplexBaseSingle
{
public:
    int GetKind() const override { return RPN_NODE_REAL; }
    QString GetName() const override { return QStringLiteral("Real"); }
    CRpnNode *CreateSame() const override { return new CNodeReal; }
    double ApplyReal(double a, double, unsigned char &) override { return a; }
    double ToReal(const CRpnData &value, unsigned char &status) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// Imag(z): the imaginary part; 0 for an element of a real array.
class CNodeImag : public CNodeComplexBaseSingle
{
public:
    int GetKind() const override { return RPN_NODE_IMAG; }
    QString GetName() const override { return QStringLiteral("Imag"); }
    CRpnNode *CreateSame() const override { return new CNodeImag; }
    double ApplyReal(double, double, unsigned char &) override { return 0.0; }
    double ToReal(const CRpnData &value, unsigned char &status) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// abs(z): the magnitude of a COMPLEX, the absolute value of anything else.
class CNodeAbs : public CNodeComplexBaseSingle
{
public:
    int GetKind() const override { return RPN_NODE_ABS; }
    QString GetName() const override { return QStringLiteral("abs"); }
    CRpnNode *CreateSame() const override { return new CNodeAbs; }
    double ApplyReal(double a, double, unsigned char &) override { return std::fabs(a); }
    double ToReal(const CRpnData &value, unsigned char &status) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// Angle(z): atan2(imaginary, real) in radians, whatever the angle setting.
// An element of a real array has the angle 0, also a negative one, while a
// negative REAL has the angle pi; so this class has no real path.
class CNodeAngle : public CNodeComplexBaseSingle
{
public:
    int GetKind() const override { return RPN_NODE_ANGLE; }
    QString GetName() const override { return QStringLiteral("Angle"); }
    CRpnNode *CreateSame() const override { return new CNodeAngle; }
    double ApplyReal(double, double, unsigned char &) override { return 0.0; }
    double ToReal(const CRpnData &value, unsigned char &status) override;
};

// An operation from two values to a complex number.  Apply: two scalars give
// a COMPLEX; an array operand (ARRAY_R, ARRAY, or a CURVE, which counts as
// empty) gives an ARRAY of its size, or of the smaller size when both are
// arrays, whose cells combine the elements in the order of the operands (an
// ARRAY cell is gone into again, so nesting spreads, to any depth).  The
// result is never an ARRAY_R.
class CNodeComplexBaseDouble : public CNodeDoubleOperand
{
public:
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    virtual std::complex<double> Combine(double a, double b) = 0;
};

// Complex(a, b): a + jb.
class CNodeComplex : public CNodeComplexBaseDouble
{
public:
    int GetKind() const override { return RPN_NODE_COMPLEX; }
    QString GetName() const override { return QStringLiteral("Complex"); }
    CRpnNode *CreateSame() const override { return new CNodeComplex; }
    std::complex<double> Combine(double a, double b) override { return {a, b}; }
};

// Polar(m, t): m cos t + j m sin t, t in radians whatever the angle setting.
class CNodePolar : public CNodeComplexBaseDouble
{
public:
    int GetKind() const override { return RPN_NODE_POLAR; }
    QString GetName() const override { return QStringLiteral("Polar"); }
    CRpnNode *CreateSame() const override { return new CNodePolar; }
    std::complex<double> Combine(double m, double t) override { return {m * std::cos(t), m * std::sin(t)}; }
};

class CRpnPrototypeArray;
void ProvideComplexFunctions(CRpnPrototypeArray &prototypes);
