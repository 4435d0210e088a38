#pragma once
// The six numeric routines behind eigen, eigenvector, inverseCH and
// determinantCH.  Matrices travel as flat row-major buffers of n times n
// doubles (real and imaginary parts apart on the complex paths); each routine
// returns 0 on success and a non-zero status when it cannot give a result, so
// that no infinite or NaN cell is ever handed back as an answer.

// Eigenvalues of a real matrix into res: n real parts, then n imaginary parts.
int get_eigen(int nSize, const double *m1, double *res);
// Eigenvalues and the eigenvector matrix (column k belongs to value k, stored
// row-major) of a complex matrix.
int get_ceigen(int nSize, const double *mReal, const double *mImag, double *eReal, double *eImag, double *evReal,
               double *evImag);
// The inverse; status 1 for a matrix that is singular or too close to it.
int get_inverse(int nSize, const double *m1, double *inv);
int get_cinverse(int nSize, const double *mReal, const double *mImag, double *invReal, double *invImag);
// The determinant; status 1 when it is not finite.
int get_determinant(int nSize, const double *m1, double *det);
int get_cdeterminant(int nSize, const double *mReal, const double *mImag, double *detReal, double *detImag);
