// The numeric routines of the matrix host, over Eigen.

#include "functions/rpnscripthost.h"

#include <Eigen/Dense>
#include <cmath>
#include <complex>

namespace {

using RealMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using ComplexMatrix = Eigen::Matrix<std::complex<double>, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

RealMatrix realFrom(int n, const double *m)
{
    return Eigen::Map<const RealMatrix>(m, n, n);
}

ComplexMatrix complexFrom(int n, const double *re, const double *im)
{
    ComplexMatrix a(n, n);
    for (int i = 0; i < n * n; ++i)
        a.data()[i] = {re[i], im[i]};
    return a;
}

bool finite(const std::complex<double> &z)
{
    return std::isfinite(z.real()) && std::isfinite(z.imag());
}

} // namespace

int get_eigen(int nSize, const double *m1, double *res)
{
    if (nSize <= 0)
        return 1;
    Eigen::EigenSolver<RealMatrix> solver(realFrom(nSize, m1), false);
    if (solver.info() != Eigen::Success)
        return 1;
    for (int i = 0; i < nSize; ++i) {
        res[i] = solver.eigenvalues()[i].real();
        res[nSize + i] = solver.eigenvalues()[i].imag();
    }
    return 0;
}

int get_ceigen(int nSize, const double *mReal, const double *mImag, double *eReal, double *eImag, double *evReal,
               double *evImag)
{
    if (nSize <= 0)
        return 1;
    const ComplexMatrix a = complexFrom(nSize, mReal, mImag);
    if (!a.allFinite())
        return 1;
    Eigen::ComplexEigenSolver<ComplexMatrix> solver(a, true);
    if (solver.info() != Eigen::Success)
        return 1;
    for (int i = 0; i < nSize; ++i) {
        eReal[i] = solver.eigenvalues()[i].real();
        eImag[i] = solver.eigenvalues()[i].imag();
    }
    for (int r = 0; r < nSize; ++r) {
        for (int c = 0; c < nSize; ++c) {
            const std::complex<double> v = solver.eigenvectors()(r, c);
            evReal[r * nSize + c] = v.real();
            evImag[r * nSize + c] = v.imag();
        }
    }
    return 0;
}

int get_inverse(int nSize, const double *m1, double *inv)
{
    if (nSize <= 0)
        return 1;
    const RealMatrix a = realFrom(nSize, m1);
    if (!a.allFinite())
        return 1;
    Eigen::FullPivLU<RealMatrix> lu(a);
    if (!lu.isInvertible())
        return 1;
    const RealMatrix result = lu.inverse();
    if (!result.allFinite())
        return 1;
    Eigen::Map<RealMatrix>(inv, nSize, nSize) = result;
    return 0;
}

int get_cinverse(int nSize, const double *mReal, const double *mImag, double *invReal, double *invImag)
{
    if (nSize <= 0)
        return 1;
    const ComplexMatrix a = complexFrom(nSize, mReal, mImag);
    if (!a.allFinite())
        return 1;
    Eigen::FullPivLU<ComplexMatrix> lu(a);
    if (!lu.isInvertible())
        return 1;
    const ComplexMatrix result = lu.inverse();
    if (!result.allFinite())
        return 1;
    for (int i = 0; i < nSize * nSize; ++i) {
        invReal[i] = result.data()[i].real();
        invImag[i] = result.data()[i].imag();
    }
    return 0;
}

int get_determinant(int nSize, const double *m1, double *det)
{
    if (nSize <= 0)
        return 1;
    const double d = Eigen::PartialPivLU<RealMatrix>(realFrom(nSize, m1)).determinant();
    if (!std::isfinite(d))
        return 1;
    *det = d;
    return 0;
}

int get_cdeterminant(int nSize, const double *mReal, const double *mImag, double *detReal, double *detImag)
{
    if (nSize <= 0)
        return 1;
    const std::complex<double> d = Eigen::PartialPivLU<ComplexMatrix>(complexFrom(nSize, mReal, mImag)).determinant();
    if (!finite(d))
        return 1;
    *detReal = d.real();
    *detImag = d.imag();
    return 0;
}
