// hypot, min, max and sum on lists of reals, and hypot on complex numbers.

#include "functions/rpnlistfunctions.h"

#include "formula/rpnkeywords.h"

#include <cmath>
#include <complex>

double CNodeHypot::RealList(const double *values, int count, unsigned char &)
{
    double sum = 0.0;
    for (int i = 0; i < count; ++i)
        sum += values[i] * values[i];
    return std::sqrt(sum);
}

void CNodeHypot::ComplexList(CRpnData &result, const double *pairs, int count, unsigned char &)
{
    std::complex<double> square;
    for (int i = 0; i + 1 < count; i += 2) {
        const double x = pairs[i], y = pairs[i + 1];
        square = {x * x - y * y, 2.0 * x * y};
    }
    const double r = std::sqrt(square.real() * square.real() + square.imag() * square.imag());
    const double t = std::atan2(square.imag(), square.real());
    result.SetComplex(std::polar(std::pow(r, 0.5), t * 0.5));
}

double CNodeMax::RealList(const double *values, int count, unsigned char &)
{
    if (count <= 0)
        return 0.0;
    double m = values[0];
    for (int i = 1; i < count; ++i) {
        if (values[i] > m)
            m = values[i];
    }
    return m;
}

double CNodeMin::RealList(const double *values, int count, unsigned char &)
{
    if (count <= 0)
        return 0.0;
    double m = values[0];
    for (int i = 1; i < count; ++i) {
        if (values[i] < m)
            m = values[i];
    }
    return m;
}

double CNodeSum::RealList(const double *values, int count, unsigned char &)
{
    double sum = 0.0;
    for (int i = 0; i < count; ++i)
        sum += values[i];
    return sum;
}

void ProvideListFunctions(CRpnPrototypeArray &prototypes)
{
    CRpnNode *const nodes[] = {new CNodeHypot, new CNodeMin, new CNodeMax, new CNodeSum};
    for (CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), node);
}
