#pragma once
// Matrices as values: an ARRAY of row arrays with RPN_FLAG_MATRIX on the
// outer payload.  Cells are general values, so everything here computes with
// the value arithmetic and takes complex cells.  Results carry the flag.

#include "formula/rpndata.h"

// Rows, and the size of the first row as the column count.
void RpnMatrixSize(const CRpnData &m, int &rows, int &cols);
// The cell, or the null value where the row is missing or too short.
CRpnData RpnMatrixCell(const CRpnData &m, int row, int col);
// Rows of `a` by columns of `b`; null unless a's columns equal b's rows.
CRpnData RpnMatrixMultiply(const CRpnData &a, const CRpnData &b);
// Laplace expansion along the first row; null unless square and not empty.
CRpnData RpnMatrixDeterminant(const CRpnData &m);
// The matrix of signed minors; null unless square and not empty.
CRpnData RpnMatrixCofactor(const CRpnData &m);
// Transposed cofactors times 1.0 / determinant.  A singular matrix is not
// tested for: its cells come out infinite or NaN.
CRpnData RpnMatrixInverse(const CRpnData &m);
