#pragma once
// The real functions: square root and square, the circular functions with
// their degree forms and inverses, the hyperbolic functions, exp and the
// logarithms, rounding and sign, and atan2.  Each is ApplyReal on a double;
// the bases spread them over arrays (formula/rpnoperators.h).
//
// sin, cos, tan and their inverses follow the tree's angle setting
// (m_angleMode 1: degrees); the ...d forms always work in degrees, the
// hyperbolic ones never.  Degrees become radians by the factor
// 0.017453292519943, which is kept with exactly these digits (it is not the
// fully rounded pi / 180), and radians become degrees by 57.29577951308233.

#include "functions/rpnfunctionkinds.h"
#include "formula/rpnoperators.h"

#include <cmath>

inline constexpr double RPN_DEGREES_TO_RADIANS = 0.017453292519943;
inline constexpr double RPN_RADIANS_TO_DEGREES = 57.29577951308233;

// An angle argument in radians, and an angle result in the tree's unit.
// Inline: a sine of a row evaluated alone is a call less.
inline double RpnAngleIn(const CEquationTree *tree, double a)
{
    return tree && tree->m_angleMode == 1 ? a * RPN_DEGREES_TO_RADIANS : a;
}
inline double RpnAngleOut(const CEquationTree *tree, double radians)
{
    return tree && tree->m_angleMode == 1 ? radians * RPN_RADIANS_TO_DEGREES : radians;
}
// What RpnAngleIn multiplies by: 1 for radians (a product by 1 is exact).
inline double RpnAngleInFactor(const CEquationTree *tree)
{
    return tree && tree->m_angleMode == 1 ? RPN_DEGREES_TO_RADIANS : 1.0;
}

// ApplyRealBlock of a one-operand function that never fails: one loop.
template <typename F>
bool RpnPlainBlock(const double *a, double av, double *out, int n, F f)
{
    if (a) {
        for (int i = 0; i < n; ++i)
            out[i] = f(a[i]);
    } else {
        const double x = f(av);
        for (int i = 0; i < n; ++i)
            out[i] = x;
    }
    return false;
}

// sqrt: a negative real fails with message 41656 (result 0); a COMPLEX has
// the principal root.
class CNodeSqrt : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SQRT; }
    QString GetName() const override { return QStringLiteral("sqrt"); }
    CRpnNode *CreateSame() const override { return new CNodeSqrt; }
    double ApplyReal(double a, double b, unsigned char &status) override;
    void ApplyComplex(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    bool EvaluateFast(double &out) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// ln (LOG, LN): at or below 0 fails with message 41657 (result 0).
class CNodeLog : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_LOG; }
    QString GetName() const override { return QStringLiteral("ln"); }
    CRpnNode *CreateSame() const override { return new CNodeLog; }
    double ApplyReal(double a, double b, unsigned char &status) override;
    bool EvaluateFast(double &out) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// log10: at or below 0 fails with message 41658 (result 0).
class CNodeLog10 : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_LOG10; }
    QString GetName() const override { return QStringLiteral("log10"); }
    CRpnNode *CreateSame() const override { return new CNodeLog10; }
    double ApplyReal(double a, double b, unsigned char &status) override;
    bool EvaluateFast(double &out) override;
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// sqr: x times x; a COMPLEX is squared as one.
class CNodeSqr : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SQR; }
    QString GetName() const override { return QStringLiteral("sqr"); }
    CRpnNode *CreateSame() const override { return new CNodeSqr; }
    double ApplyReal(double a, double, unsigned char &) override { return a * a; }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
    void ApplyComplex(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
};

class CNodeSin : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SIN; }
    QString GetName() const override { return QStringLiteral("sin"); }
    CRpnNode *CreateSame() const override { return new CNodeSin; }
    double ApplyReal(double a, double, unsigned char &) override { return std::sin(RpnAngleIn(m_tree, a)); }
    bool ApplyRealBlock(const double *a, double av, const double *, double, double *out, unsigned char *,
                        int n) override
    {
        const double k = RpnAngleInFactor(m_tree);
        return RpnPlainBlock(a, av, out, n, [k](double x) { return std::sin(x * k); });
    }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeCos : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_COS; }
    QString GetName() const override { return QStringLiteral("cos"); }
    CRpnNode *CreateSame() const override { return new CNodeCos; }
    double ApplyReal(double a, double, unsigned char &) override { return std::cos(RpnAngleIn(m_tree, a)); }
    bool ApplyRealBlock(const double *a, double av, const double *, double, double *out, unsigned char *,
                        int n) override
    {
        const double k = RpnAngleInFactor(m_tree);
        return RpnPlainBlock(a, av, out, n, [k](double x) { return std::cos(x * k); });
    }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeTan : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_TAN; }
    QString GetName() const override { return QStringLiteral("tan"); }
    CRpnNode *CreateSame() const override { return new CNodeTan; }
    double ApplyReal(double a, double, unsigned char &) override { return std::tan(RpnAngleIn(m_tree, a)); }
    bool ApplyRealBlock(const double *a, double av, const double *, double, double *out, unsigned char *,
                        int n) override
    {
        const double k = RpnAngleInFactor(m_tree);
        return RpnPlainBlock(a, av, out, n, [k](double x) { return std::tan(x * k); });
    }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeAsin : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_ASIN; }
    QString GetName() const override { return QStringLiteral("asin"); }
    CRpnNode *CreateSame() const override { return new CNodeAsin; }
    double ApplyReal(double a, double, unsigned char &) override { return RpnAngleOut(m_tree, std::asin(a)); }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeAcos : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_ACOS; }
    QString GetName() const override { return QStringLiteral("acos"); }
    CRpnNode *CreateSame() const override { return new CNodeAcos; }
    double ApplyReal(double a, double, unsigned char &) override { return RpnAngleOut(m_tree, std::acos(a)); }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeAtan : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_ATAN; }
    QString GetName() const override { return QStringLiteral("atan"); }
    CRpnNode *CreateSame() const override { return new CNodeAtan; }
    double ApplyReal(double a, double, unsigned char &) override { return RpnAngleOut(m_tree, std::atan(a)); }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeSinH : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SINH; }
    QString GetName() const override { return QStringLiteral("sinh"); }
    CRpnNode *CreateSame() const override { return new CNodeSinH; }
    double ApplyReal(double a, double, unsigned char &) override { return std::sinh(a); }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeCosH : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_COSH; }
    QString GetName() const override { return QStringLiteral("cosh"); }
    CRpnNode *CreateSame() const override { return new CNodeCosH; }
    double ApplyReal(double a, double, unsigned char &) override { return std::cosh(a); }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeTanH : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_TANH; }
    QString GetName() const override { return QStringLiteral("tanh"); }
    CRpnNode *CreateSame() const override { return new CNodeTanH; }
    double ApplyReal(double a, double, unsigned char &) override { return std::tanh(a); }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeSinD : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SIND; }
    QString GetName() const override { return QStringLiteral("sind"); }
    CRpnNode *CreateSame() const override { return new CNodeSinD; }
    double ApplyReal(double a, double, unsigned char &) override { return std::sin(a * RPN_DEGREES_TO_RADIANS); }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeCosD : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_COSD; }
    QString GetName() const override { return QStringLiteral("cosd"); }
    CRpnNode *CreateSame() const override { return new CNodeCosD; }
    double ApplyReal(double a, double, unsigned char &) override { return std::cos(a * RPN_DEGREES_TO_RADIANS); }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeTanD : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_TAND; }
    QString GetName() const override { return QStringLiteral("tand"); }
    CRpnNode *CreateSame() const override { return new CNodeTanD; }
    double ApplyReal(double a, double, unsigned char &) override { return std::tan(a * RPN_DEGREES_TO_RADIANS); }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeAsinD : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_ASIND; }
    QString GetName() const override { return QStringLiteral("asind"); }
    CRpnNode *CreateSame() const override { return new CNodeAsinD; }
    double ApplyReal(double a, double, unsigned char &) override { return std::asin(a) * RPN_RADIANS_TO_DEGREES; }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeAcosD : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_ACOSD; }
    QString GetName() const override { return QStringLiteral("acosd"); }
    CRpnNode *CreateSame() const override { return new CNodeAcosD; }
    double ApplyReal(double a, double, unsigned char &) override { return std::acos(a) * RPN_RADIANS_TO_DEGREES; }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeAtanD : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_ATAND; }
    QString GetName() const override { return QStringLiteral("atand"); }
    CRpnNode *CreateSame() const override { return new CNodeAtanD; }
    double ApplyReal(double a, double, unsigned char &) override { return std::atan(a) * RPN_RADIANS_TO_DEGREES; }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeExp : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_EXP; }
    QString GetName() const override { return QStringLiteral("exp"); }
    CRpnNode *CreateSame() const override { return new CNodeExp; }
    double ApplyReal(double a, double, unsigned char &) override { return std::exp(a); }
    bool ApplyRealBlock(const double *a, double av, const double *, double, double *out, unsigned char *,
                        int n) override
    {
        return RpnPlainBlock(a, av, out, n, [](double x) { return std::exp(x); });
    }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeCeil : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_CEIL; }
    QString GetName() const override { return QStringLiteral("ceil"); }
    CRpnNode *CreateSame() const override { return new CNodeCeil; }
    double ApplyReal(double a, double, unsigned char &) override { return std::ceil(a); }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeFloor : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_FLOOR; }
    QString GetName() const override { return QStringLiteral("floor"); }
    CRpnNode *CreateSame() const override { return new CNodeFloor; }
    double ApplyReal(double a, double, unsigned char &) override { return std::floor(a); }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// 0 for zero and for NaN.
class CNodeSign : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SIGN; }
    QString GetName() const override { return QStringLiteral("sign"); }
    CRpnNode *CreateSame() const override { return new CNodeSign; }
    double ApplyReal(double a, double, unsigned char &) override { return a < 0.0 ? -1.0 : a > 0.0 ? 1.0 : 0.0; }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

// atan2(y, x): the first operand is y; the result follows the angle setting.
class CNodeAtan2 : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_ATAN2; }
    QString GetName() const override { return QStringLiteral("atan2"); }
    CRpnNode *CreateSame() const override { return new CNodeAtan2; }
    double ApplyReal(double a, double b, unsigned char &) override { return RpnAngleOut(m_tree, std::atan2(a, b)); }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CNodeAtan2D : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_ATAN2D; }
    QString GetName() const override { return QStringLiteral("atan2d"); }
    CRpnNode *CreateSame() const override { return new CNodeAtan2D; }
    double ApplyReal(double a, double b, unsigned char &) override { return std::atan2(a, b) * RPN_RADIANS_TO_DEGREES; }
    int GetRealPath() const override { return RPN_REAL_PATH_PLAIN; }
};

class CRpnPrototypeArray;
// Puts one prototype of each class above into the array.
void ProvideRealFunctions(CRpnPrototypeArray &prototypes);
