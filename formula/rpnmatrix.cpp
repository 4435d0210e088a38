#include "formula/rpnmatrix.h"

#include <vector>

namespace {

bool isSquare(const CRpnData &m, int &n)
{
    int rows = 0, cols = 0;
    RpnMatrixSize(m, rows, cols);
    n = rows;
    return rows > 0 && rows == cols;
}

// Determinant of the sub-matrix of the rows and columns listed.
CRpnData determinant(const CRpnData &m, const std::vector<int> &rows, const std::vector<int> &cols)
{
    const std::size_t n = rows.size();
    auto c = [&](std::size_t i, std::size_t j) { return RpnMatrixCell(m, rows[i], cols[j]); };
    if (n == 0)
        return CRpnData(1.0);
    if (n == 1)
        return c(0, 0);
    if (n == 2)
        return CRpnData::Subtract(CRpnData::Multiply(c(0, 0), c(1, 1)), CRpnData::Multiply(c(0, 1), c(1, 0)));
    if (n == 3) {
        auto triple = [&](std::size_t a, std::size_t b, std::size_t d) {
            return CRpnData::Multiply(CRpnData::Multiply(c(0, a), c(1, b)), c(2, d));
        };
        CRpnData plus = CRpnData::Add(CRpnData::Add(triple(0, 1, 2), triple(1, 2, 0)), triple(2, 0, 1));
        CRpnData minus = CRpnData::Add(CRpnData::Add(triple(2, 1, 0), triple(0, 2, 1)), triple(1, 0, 2));
        return CRpnData::Subtract(plus, minus);
    }
    std::vector<int> subRows(rows.begin() + 1, rows.end());
    std::vector<int> subCols(n - 1);
    CRpnData sum;
    for (std::size_t j = 0; j < n; ++j) {
        for (std::size_t k = 0, t = 0; k < n; ++k) {
            if (k != j)
                subCols[t++] = cols[k];
        }
        CRpnData term = CRpnData::Multiply(c(0, j), determinant(m, subRows, subCols));
        if (j == 0)
            sum = term;
        else
            sum = (j % 2) ? CRpnData::Subtract(sum, term) : CRpnData::Add(sum, term);
    }
    return sum;
}

std::vector<int> indicesWithout(int n, int skip)
{
    std::vector<int> v;
    v.reserve(std::size_t(n));
    for (int i = 0; i < n; ++i) {
        if (i != skip)
            v.push_back(i);
    }
    return v;
}

} // namespace

void RpnMatrixSize(const CRpnData &m, int &rows, int &cols)
{
    rows = m.GetSize();
    cols = 0;
    if (rows > 0 && m.GetKind() == RPN_ARRAY)
        cols = m.GetItems()[0].GetSize();
}

CRpnData RpnMatrixCell(const CRpnData &m, int row, int col)
{
    if (m.GetKind() != RPN_ARRAY || row < 0 || row >= m.GetSize())
        return CRpnData();
    const CRpnData &r = m.GetItems()[row];
    if (!r.IsArray() || col < 0 || col >= r.GetSize())
        return CRpnData();
    return r.GetAt(col);
}

CRpnData RpnMatrixMultiply(const CRpnData &a, const CRpnData &b)
{
    int ra = 0, ca = 0, rb = 0, cb = 0;
    RpnMatrixSize(a, ra, ca);
    RpnMatrixSize(b, rb, cb);
    CRpnData result;
    if (ca != rb)
        return result;
    result.SetMatrix(ra, cb);
    for (int i = 0; i < ra; ++i) {
        CRpnData &row = result.GetItems()[i];
        for (int j = 0; j < cb; ++j) {
            CRpnData sum;
            for (int k = 0; k < ca; ++k) {
                CRpnData term = CRpnData::Multiply(RpnMatrixCell(a, i, k), RpnMatrixCell(b, k, j));
                sum = k == 0 ? term : CRpnData::Add(sum, term);
            }
            row.GetItems()[j] = sum;
        }
    }
    return result;
}

CRpnData RpnMatrixDeterminant(const CRpnData &m)
{
    int n = 0;
    if (!isSquare(m, n))
        return CRpnData();
    return determinant(m, indicesWithout(n, -1), indicesWithout(n, -1));
}

CRpnData RpnMatrixCofactor(const CRpnData &m)
{
    int n = 0;
    CRpnData result;
    if (!isSquare(m, n))
        return result;
    result.SetMatrix(n, n);
    for (int i = 0; i < n; ++i) {
        const std::vector<int> rows = indicesWithout(n, i);
        for (int j = 0; j < n; ++j) {
            CRpnData minor = determinant(m, rows, indicesWithout(n, j));
            if ((i + j) % 2)
                minor = CRpnData::Multiply(CRpnData(-1.0), minor);
            result.GetItems()[i].GetItems()[j] = minor;
        }
    }
    return result;
}

CRpnData RpnMatrixInverse(const CRpnData &m)
{
    int n = 0;
    CRpnData result;
    if (!isSquare(m, n))
        return result;
    const CRpnData cofactor = RpnMatrixCofactor(m);
    CRpnData det;
    for (int j = 0; j < n; ++j) {
        CRpnData term = CRpnData::Multiply(RpnMatrixCell(m, 0, j), RpnMatrixCell(cofactor, 0, j));
        det = j == 0 ? term : CRpnData::Add(det, term);
    }
    const CRpnData scale = CRpnData::Divide(CRpnData(1.0), det);
    result.SetMatrix(n, n);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j)
            result.GetItems()[i].GetItems()[j] = CRpnData::Multiply(RpnMatrixCell(cofactor, j, i), scale);
    }
    return result;
}
