// Matrices of the language and the numeric host routines behind them.

#include "functions/rpnmatrixfunctions.h"

#include "functions/rpnscripthost.h"
#include "formula/rpnexception.h"
#include "formula/rpnkeywords.h"
#include "formula/rpnmatrix.h"

#include <cmath>
#include <vector>

namespace {

constexpr int kMsgMatrixMissing = 43420;
constexpr int kMsgMatrixInvalid = 43421;
constexpr int kMsgMatrixFormat = 43422;
constexpr int kMsgMatrixNoMatch = 43423;
constexpr int kMsgMatrixRows = 43424;
constexpr int kMsgMatrixColumns = 43425;
constexpr int kMsgTransposeKind = 43426;
constexpr int kMsgTransposeMany = 43427;
constexpr int kMsgTransposeRow = 43428;
constexpr int kMsgEyeCount = 43429;
constexpr int kMsgZerosCount = 43430;
constexpr int kMsgEyeNumber = 43431;
constexpr int kMsgZerosNumber = 43432;
constexpr int kMsgSecondNumber = 43433;
constexpr int kMsgSquare = 43434;
constexpr int kMsgSquareMany = 43435;
constexpr int kMsgNotSquare = 43436;
constexpr int kMsgHostSize = 43437;

bool isNumber(const CRpnData &v)
{
    return v.IsReal() || v.IsInt();
}

// An array whose first cell is a non-empty array.
bool hasRows(const CRpnData &v)
{
    return v.IsArray() && v.GetSize() > 0 && v.GetAt(0).IsArray() && v.GetAt(0).GetSize() > 0;
}

bool hasArrayCell(const CRpnData &v)
{
    if (v.GetKind() != RPN_ARRAY)
        return false;
    for (int i = 0; i < v.GetSize(); ++i) {
        if (v.GetItems()[i].IsArray())
            return true;
    }
    return false;
}

// A matrix of rows x cols null cells; false (message set) when too large.
bool makeMatrix(CRpnNode *node, CRpnData &m, double rows, double cols)
{
    rows = std::max(0.0, rows);
    cols = std::max(0.0, cols);
    unsigned char status = 1;
    if (!CheckArrayCells(node, status, rows, false) || !CheckArrayCells(node, status, cols, false)
        || !CheckArrayCells(node, status, rows * cols, false))
        return false;
    m.SetMatrix(int(rows), int(cols));
    return true;
}

// The rows of `source` (all of length cols, checked) as a new matrix whose
// cells share the source's.
void fromRows(const CRpnData &source, int cols, CRpnData &m)
{
    const int rows = source.GetSize();
    m.SetMatrix(rows, cols);
    for (int r = 0; r < rows; ++r) {
        const CRpnData row = source.GetAt(r);
        for (int c = 0; c < cols; ++c)
            m.GetItems()[r].SetAt(c, row.GetAt(c));
    }
}

// -1 when every row is an array of `cols` cells, else the first other row.
int badRow(const CRpnData &source, int cols)
{
    for (int r = 0; r < source.GetSize(); ++r) {
        const CRpnData row = source.GetAt(r);
        if (!row.IsArray() || row.GetSize() != cols)
            return r;
    }
    return -1;
}

// The cells of a square matrix as doubles, row-major.
std::vector<double> doubles(const CRpnData &m, int n)
{
    std::vector<double> out(std::size_t(n) * std::size_t(n));
    for (int r = 0; r < n; ++r)
        for (int c = 0; c < n; ++c)
            out[std::size_t(r) * std::size_t(n) + std::size_t(c)] = RpnMatrixCell(m, r, c).GetDouble();
    return out;
}

void toMatrix(int n, const double *cells, CRpnData &m)
{
    m.SetMatrix(n, n);
    for (int r = 0; r < n; ++r)
        for (int c = 0; c < n; ++c)
            m.GetItems()[r].SetAt(c, CRpnData(cells[r * n + c]));
}

CRpnData transposed(const CRpnData &m)
{
    int rows = 0, cols = 0;
    RpnMatrixSize(m, rows, cols);
    CRpnData t;
    t.SetMatrix(cols, rows);
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < cols; ++c)
            t.GetItems()[c].SetAt(r, RpnMatrixCell(m, r, c));
    return t;
}

// Determinant of the sub-matrix of the listed rows (from `row` on) and columns.
double laplace(const double *m, int n, int row, std::vector<int> &cols)
{
    const int k = n - row;
    auto at = [&](int r, int c) { return m[r * n + cols[std::size_t(c)]]; };
    if (k == 1)
        return at(row, 0);
    if (k == 2)
        return at(row, 0) * at(row + 1, 1) - at(row, 1) * at(row + 1, 0);
    if (k == 3) {
        const int a = row, b = row + 1, c = row + 2;
        return at(a, 0) * (at(b, 1) * at(c, 2) - at(b, 2) * at(c, 1))
            - at(a, 1) * (at(b, 0) * at(c, 2) - at(b, 2) * at(c, 0))
            + at(a, 2) * (at(b, 0) * at(c, 1) - at(b, 1) * at(c, 0));
    }
    double sum = 0, sign = 1;
    for (int j = 0; j < k; ++j) {
        const double cell = at(row, j);
        std::vector<int> rest;
        rest.reserve(std::size_t(k - 1));
        for (int i = 0; i < k; ++i)
            if (i != j)
                rest.push_back(cols[std::size_t(i)]);
        if (cell != 0)
            sum += sign * cell * laplace(m, n, row + 1, rest);
        sign = -sign;
    }
    return sum;
}

// The minor of (i, j) of an n by n matrix.
double minorOf(int n, const double *m, int i, int j)
{
    if (n == 1)
        return 1;
    std::vector<double> sub;
    sub.reserve(std::size_t(n - 1) * std::size_t(n - 1));
    for (int r = 0; r < n; ++r)
        for (int c = 0; c < n; ++c)
            if (r != i && c != j)
                sub.push_back(m[r * n + c]);
    return RpnLaplaceDeterminant(n - 1, sub.data());
}

void cofactors(int n, const double *m, double *out)
{
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            out[i * n + j] = ((i + j) % 2 ? -1.0 : 1.0) * minorOf(n, m, i, j);
}

} // namespace

double RpnLaplaceDeterminant(int n, const double *m)
{
    if (n <= 0)
        return 0;
    std::vector<int> cols(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        cols[std::size_t(i)] = i;
    return laplace(m, n, 0, cols);
}

void RpnLaplaceInverse(int n, const double *m, double *inv)
{
    std::vector<double> c(std::size_t(n) * std::size_t(n));
    cofactors(n, m, c.data());
    double det = 0;
    for (int j = 0; j < n; ++j)
        det += m[j] * c[std::size_t(j)];
    const double scale = 1.0 / det;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            inv[i * n + j] = c[std::size_t(j) * std::size_t(n) + std::size_t(i)] * scale;
}

// --- making matrices -----------------------------------------------------------------------

int CNodeMatrix::DoFunction(CRpnData &result, QString &errorText)
{
    const int count = GetOperandCount();
    if (count == 0) {
        errorText = RpnMessage(kMsgMatrixMissing);
        return 0;
    }
    std::vector<CRpnData> p(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        if (!EvaluateOperand(i, p[std::size_t(i)]))
            return 0;
    auto fail = [&errorText](int id, int row = 0) {
        errorText = RpnMessage(id, {row});
        return 0;
    };
    const CRpnData &first = p[0];
    if (first.IsArray()) {
        if (count > 1)
            return fail(kMsgMatrixInvalid);
        if (first.GetSize() == 0)
            return fail(kMsgMatrixFormat);
        if (hasRows(first)) {
            const int cols = first.GetAt(0).GetSize();
            const int bad = badRow(first, cols);
            if (bad >= 0)
                return fail(kMsgMatrixColumns, bad);
            fromRows(first, cols, result);
            return 1;
        }
        if (hasArrayCell(first))
            return fail(kMsgMatrixFormat);
        const int n = first.GetSize();
        result.SetMatrix(1, n);
        for (int c = 0; c < n; ++c)
            result.GetItems()[0].SetAt(c, first.GetAt(c));
        return 1;
    }
    if (!isNumber(first))
        return fail(kMsgMatrixInvalid);
    const double rows = first.GetInt();
    if (count == 1) {
        if (rows != 0)
            return fail(kMsgMatrixRows);
        result.SetMatrix(0, 0);
        return 1;
    }
    const CRpnData &second = p[1];
    if (second.IsArray())
        return fail(kMsgMatrixFormat);
    if (!isNumber(second) || count > 3)
        return fail(kMsgMatrixInvalid);
    const double cols = second.GetInt();
    if (count == 2) {
        return makeMatrix(this, result, rows, cols) ? 1 : 0;
    }
    const CRpnData &init = p[2];
    if (!init.IsArray())
        return fail(kMsgMatrixInvalid);
    if (init.GetSize() == 0 || (init.GetAt(0).IsArray() && init.GetAt(0).GetSize() == 0))
        return fail(kMsgMatrixFormat);
    if (hasRows(init)) {
        const int firstCols = init.GetAt(0).GetSize();
        if (init.GetSize() != rows && firstCols != cols)
            return fail(kMsgMatrixNoMatch);
        if (init.GetSize() != rows)
            return fail(kMsgMatrixRows);
        const int bad = badRow(init, int(cols));
        if (bad >= 0)
            return fail(kMsgMatrixColumns, bad);
        fromRows(init, int(cols), result);
        return 1;
    }
    if (hasArrayCell(init))
        return fail(kMsgMatrixFormat);
    const int n = init.GetSize();
    if (rows == 1 || cols == n) {
        if (!makeMatrix(this, result, rows, cols))
            return 0;
        for (int c = 0; c < std::min(n, int(cols)); ++c)
            result.GetItems()[0].SetAt(c, init.GetAt(c));
        return 1;
    }
    if (cols == 1 && rows == n) {
        if (!makeMatrix(this, result, rows, cols))
            return 0;
        for (int r = 0; r < n; ++r)
            result.GetItems()[r].SetAt(0, init.GetAt(r));
        return 1;
    }
    return fail(kMsgMatrixNoMatch);
}

int CNodeMatrixTranspose::DoFunction(CRpnData &result, QString &errorText)
{
    const int count = GetOperandCount();
    if (count == 0) {
        errorText = RpnMessage(kMsgTransposeKind);
        return 0;
    }
    if (count > 1) {
        errorText = RpnMessage(kMsgTransposeMany);
        return 0;
    }
    CRpnData m;
    if (!EvaluateOperand(0, m))
        return 0;
    if (!hasRows(m)) {
        errorText = RpnMessage(kMsgTransposeKind);
        return 0;
    }
    const int bad = badRow(m, m.GetAt(0).GetSize());
    if (bad >= 0) {
        errorText = RpnMessage(kMsgTransposeRow, {bad});
        return 0;
    }
    result = transposed(m);
    return 1;
}

namespace {

int eyeOrZeros(CNodeScriptFunction *node, int count, CRpnData *p, bool eye, CRpnData &result, QString &errorText)
{
    const QString name = node->GetName();
    if (count == 0 || count > 2) {
        errorText = RpnMessage(eye ? kMsgEyeCount : kMsgZerosCount, {name, name});
        return 0;
    }
    if (!isNumber(p[0])) {
        errorText = RpnMessage(eye ? kMsgEyeNumber : kMsgZerosNumber, {name, name});
        return 0;
    }
    if (count == 2 && !isNumber(p[1])) {
        errorText = RpnMessage(kMsgSecondNumber, {name, name});
        return 0;
    }
    const int rows = std::max(0, p[0].GetInt());
    const int cols = count == 2 ? std::max(0, p[1].GetInt()) : rows;
    if (!makeMatrix(node, result, rows, cols))
        return 0;
    for (int r = 0; r < rows; ++r) {
        CRpnData &row = result.GetItems()[r];
        for (int c = 0; c < cols; ++c) {
            CRpnData one;
            one.SetInt(eye && r == c ? 1 : 0);
            row.SetAt(c, one);
        }
    }
    return 1;
}

// The checks the Cofactor family shares; n receives the size.
bool squareMatrix(CNodeScriptFunction *node, int count, const CRpnData &m, int &n, QString &errorText)
{
    const QString name = node->GetName();
    if (count == 0 || !m.IsMatrix()) {
        errorText = RpnMessage(kMsgSquare, {name, name});
        return false;
    }
    if (count > 1) {
        errorText = RpnMessage(kMsgSquareMany, {name, name});
        return false;
    }
    int rows = 0, cols = 0;
    RpnMatrixSize(m, rows, cols);
    if (rows != cols || rows == 0) {
        errorText = RpnMessage(kMsgNotSquare, {name, rows, cols});
        return false;
    }
    n = rows;
    return true;
}

enum class Family { Cofactor, Adjoint, Inverse, Determinant };

int family(CNodeScriptFunction *node, int count, const CRpnData &m, Family which, bool inDoubles, CRpnData &result,
           QString &errorText)
{
    int n = 0;
    if (!squareMatrix(node, count, m, n, errorText))
        return 0;
    if (!inDoubles) {
        switch (which) {
        case Family::Cofactor:
            result = RpnMatrixCofactor(m);
            break;
        case Family::Adjoint:
            result = transposed(RpnMatrixCofactor(m));
            break;
        case Family::Inverse:
            result = RpnMatrixInverse(m);
            break;
        case Family::Determinant:
            result = RpnMatrixDeterminant(m);
            break;
        }
        return 1;
    }
    const std::vector<double> cells = doubles(m, n);
    std::vector<double> out(cells.size());
    switch (which) {
    case Family::Determinant:
        result.SetDouble(RpnLaplaceDeterminant(n, cells.data()));
        return 1;
    case Family::Cofactor:
        cofactors(n, cells.data(), out.data());
        break;
    case Family::Adjoint: {
        std::vector<double> c(cells.size());
        cofactors(n, cells.data(), c.data());
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                out[std::size_t(i * n + j)] = c[std::size_t(j * n + i)];
        break;
    }
    case Family::Inverse:
        RpnLaplaceInverse(n, cells.data(), out.data());
        break;
    }
    toMatrix(n, out.data(), result);
    return 1;
}

} // namespace

int CNodeMatrixEye::DoFunction(CRpnData &result, QString &errorText)
{
    const int count = GetOperandCount();
    CRpnData p[2];
    for (int i = 0; i < std::min(count, 2); ++i)
        if (!EvaluateOperand(i, p[i]))
            return 0;
    return eyeOrZeros(this, count, p, true, result, errorText);
}

int CNodeMatrixZeros::DoFunction(CRpnData &result, QString &errorText)
{
    const int count = GetOperandCount();
    CRpnData p[2];
    for (int i = 0; i < std::min(count, 2); ++i)
        if (!EvaluateOperand(i, p[i]))
            return 0;
    return eyeOrZeros(this, count, p, false, result, errorText);
}

#define TARN_FAMILY_BODY(Class, Which, InDoubles)                                                                \
    int Class::DoFunction(CRpnData &result, QString &errorText)                                                  \
    {                                                                                                            \
        const int count = GetOperandCount();                                                                     \
        CRpnData m;                                                                                              \
        if (count > 0 && !EvaluateOperand(0, m))                                                                 \
            return 0;                                                                                            \
        return family(this, count, m, Which, InDoubles, result, errorText);                                      \
    }

TARN_FAMILY_BODY(CNodeMatrixCofactor, Family::Cofactor, false)
TARN_FAMILY_BODY(CNodeMatrixAdjoint, Family::Adjoint, false)
TARN_FAMILY_BODY(CNodeMatrixInverse, Family::Inverse, false)
TARN_FAMILY_BODY(CNodeMatrixDeterminant, Family::Determinant, false)
TARN_FAMILY_BODY(CNodeMatrixCofactor_Dbl, Family::Cofactor, true)
TARN_FAMILY_BODY(CNodeMatrixAdjoint_Dbl, Family::Adjoint, true)
TARN_FAMILY_BODY(CNodeMatrixInverse_Dbl, Family::Inverse, true)
TARN_FAMILY_BODY(CNodeMatrixDeterminant_Dbl, Family::Determinant, true)
#undef TARN_FAMILY_BODY

// --- the host routines ---------------------------------------------------------------------

int CNodeCH::DoFunction(CRpnData &result, QString &errorText)
{
    const int count = GetOperandCount();
    std::vector<CRpnData> p(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        if (!EvaluateOperand(i, p[std::size_t(i)]))
            return 0;
    // An optional size, then the matrix.
    std::size_t at = 0;
    int n = -1;
    if (count > 0 && !p[0].IsArray()) {
        n = p[0].GetInt();
        at = 1;
    }
    if (at >= p.size() || !p[at].IsArray())
        return 0;
    const CRpnData &m = p[at];
    const bool rowForm = m.GetSize() > 0 && m.GetAt(0).IsArray();
    if (n < 0 && rowForm)
        n = m.GetAt(0).GetSize();
    if (n <= 0)
        return 0;
    if (n > RpnMaxHostMatrixSize) {
        errorText = RpnMessage(kMsgHostSize, {GetName(), RpnMaxHostMatrixSize, n});
        return 0;
    }
    const std::size_t cells = std::size_t(n) * std::size_t(n);
    std::vector<double> re(cells, 0.0), im(cells, 0.0);
    bool complex = false;
    if (rowForm) {
        for (int r = 0; r < std::min(n, m.GetSize()); ++r) {
            const CRpnData row = m.GetAt(r);
            // A short row ends the copying; the rest stays 0.
            if (!row.IsArray() || row.GetSize() < n) {
                for (int c = 0; c < std::min(n, row.GetSize()); ++c) {
                    const CRpnData cell = row.GetAt(c);
                    complex = complex || cell.IsComplex();
                    const std::complex<double> z = cell.GetComplex();
                    re[std::size_t(r * n + c)] = z.real();
                    im[std::size_t(r * n + c)] = z.imag();
                }
                break;
            }
            for (int c = 0; c < n; ++c) {
                const CRpnData cell = row.GetAt(c);
                complex = complex || cell.IsComplex();
                const std::complex<double> z = cell.GetComplex();
                re[std::size_t(r * n + c)] = z.real();
                im[std::size_t(r * n + c)] = z.imag();
            }
        }
    } else {
        const std::size_t given = std::min<std::size_t>(cells, std::size_t(m.GetSize()));
        for (std::size_t i = 0; i < given; ++i) {
            const CRpnData cell = m.GetAt(int(i));
            if (cell.IsComplex())
                complex = true;
            const std::complex<double> z = cell.GetComplex();
            re[i] = z.real();
            im[i] = z.imag();
        }
    }
    if (!complex)
        std::fill(im.begin(), im.end(), 0.0);
    return Calculate(n, complex, re, im, result) == 0 ? 1 : 0;
}

namespace {

// Eigenvalues (eRe, eIm) and the eigenvector matrix (vRe, vIm) of an n by n
// matrix, through the complex routine as both eigen functions use it.
struct EigenParts
{
    std::vector<double> eRe, eIm, vRe, vIm;
    int Run(int n, const std::vector<double> &re, const std::vector<double> &im)
    {
        eRe.assign(std::size_t(n), 0.0);
        eIm.assign(std::size_t(n), 0.0);
        vRe.assign(re.size(), 0.0);
        vIm.assign(re.size(), 0.0);
        return get_ceigen(n, re.data(), im.data(), eRe.data(), eIm.data(), vRe.data(), vIm.data());
    }
};

} // namespace

int CNodeCH_eigen::Calculate(int n, bool, const std::vector<double> &re, const std::vector<double> &im,
                             CRpnData &result)
{
    EigenParts parts;
    if (const int status = parts.Run(n, re, im); status != 0)
        return status;
    const std::vector<double> &eRe = parts.eRe, &eIm = parts.eIm;
    result.SetArray(n);
    for (int i = 0; i < n; ++i) {
        CRpnData z;
        z.SetComplex(eRe[std::size_t(i)], eIm[std::size_t(i)]);
        result.SetAt(i, z);
    }
    return 0;
}

int CNodeCH_eigenVector::Calculate(int n, bool, const std::vector<double> &re, const std::vector<double> &im,
                                   CRpnData &result)
{
    EigenParts parts;
    if (const int status = parts.Run(n, re, im); status != 0)
        return status;
    const std::vector<double> &vRe = parts.vRe, &vIm = parts.vIm;
    result.SetArray(n);
    for (int r = 0; r < n; ++r) {
        CRpnData row;
        row.SetArray(n);
        for (int c = 0; c < n; ++c) {
            CRpnData z;
            z.SetComplex(vRe[std::size_t(r * n + c)], vIm[std::size_t(r * n + c)]);
            row.SetAt(c, z);
        }
        result.SetAt(r, row);
    }
    return 0;
}

int CNodeCH_inverse::Calculate(int n, bool complex, const std::vector<double> &re, const std::vector<double> &im,
                               CRpnData &result)
{
    std::vector<double> iRe(re.size()), iIm(re.size());
    const int status = complex ? get_cinverse(n, re.data(), im.data(), iRe.data(), iIm.data())
                               : get_inverse(n, re.data(), iRe.data());
    if (status != 0)
        return status;
    result.SetArray(n);
    for (int r = 0; r < n; ++r) {
        CRpnData row;
        row.SetArray(n);
        for (int c = 0; c < n; ++c) {
            CRpnData v;
            if (complex)
                v.SetComplex(iRe[std::size_t(r * n + c)], iIm[std::size_t(r * n + c)]);
            else
                v.SetDouble(iRe[std::size_t(r * n + c)]);
            row.SetAt(c, v);
        }
        result.SetAt(r, row);
    }
    return 0;
}

int CNodeCH_determinant::Calculate(int n, bool complex, const std::vector<double> &re, const std::vector<double> &im,
                                   CRpnData &result)
{
    double dRe = 0, dIm = 0;
    const int status =
        complex ? get_cdeterminant(n, re.data(), im.data(), &dRe, &dIm) : get_determinant(n, re.data(), &dRe);
    if (status != 0)
        return status;
    if (complex)
        result.SetComplex(dRe, dIm);
    else
        result.SetDouble(dRe);
    return 0;
}

void ProvideMatrixFunctions(CRpnPrototypeArray &prototypes)
{
    CRpnNode *const nodes[] = {
        new CNodeMatrix,           new CNodeMatrixTranspose,    new CNodeMatrixEye,
        new CNodeMatrixZeros,      new CNodeMatrixCofactor,     new CNodeMatrixAdjoint,
        new CNodeMatrixInverse,    new CNodeMatrixDeterminant,  new CNodeMatrixCofactor_Dbl,
        new CNodeMatrixAdjoint_Dbl, new CNodeMatrixInverse_Dbl, new CNodeMatrixDeterminant_Dbl,
        new CNodeCH_eigen,         new CNodeCH_eigenVector,     new CNodeCH_inverse,
        new CNodeCH_determinant,
    };
    for (CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), node);
}
