#pragma once
// The functions of a list of numbers: hypot, min, max, sum.  How their
// arguments are read (arrays, complex numbers, numeric texts) is the base's
// (functions/rpnfunctionbase.h); each gives 0 for no numbers at all.

#include "functions/rpnfunctionbase.h"
#include "functions/rpnfunctionkinds.h"

// hypot: the square root of the sum of squares.  Of complex numbers only the
// last counts: each square overwrites the one before, and the result is the
// principal root of the last square, a COMPLEX.  Scripts rely on this.
class CNodeHypot : public CNodeMultiOperand_Numbers
{
public:
    int GetKind() const override { return RPN_NODE_HYPOT; }
    QString GetName() const override { return QStringLiteral("hypot"); }
    CRpnNode *CreateSame() const override { return new CNodeHypot; }
    double RealList(const double *values, int count, unsigned char &status) override;
    void ComplexList(CRpnData &result, const double *pairs, int count, unsigned char &status) override;
};

// max: the first value, then each later one that is strictly greater, so a
// NaN stays only in first place.
class CNodeMax : public CNodeMultiOperand_Numbers
{
public:
    int GetKind() const override { return RPN_NODE_MAX; }
    QString GetName() const override { return QStringLiteral("max"); }
    CRpnNode *CreateSame() const override { return new CNodeMax; }
    double RealList(const double *values, int count, unsigned char &status) override;
};

// min: as max with strictly smaller.
class CNodeMin : public CNodeMultiOperand_Numbers
{
public:
    int GetKind() const override { return RPN_NODE_MIN; }
    QString GetName() const override { return QStringLiteral("min"); }
    CRpnNode *CreateSame() const override { return new CNodeMin; }
    double RealList(const double *values, int count, unsigned char &status) override;
};

// sum: in order.
class CNodeSum : public CNodeMultiOperand_Numbers
{
public:
    int GetKind() const override { return RPN_NODE_SUM; }
    QString GetName() const override { return QStringLiteral("sum"); }
    CRpnNode *CreateSame() const override { return new CNodeSum; }
    double RealList(const double *values, int count, unsigned char &status) override;
};

class CRpnPrototypeArray;
void ProvideListFunctions(CRpnPrototypeArray &prototypes);
