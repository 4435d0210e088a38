// Binary arithmetic and equality of values.
//
// Every operator runs the same steps, and the first that fits decides:
//   1. a FORMULA operand: the operation is deferred into a new formula;
//   2. an array (ARRAY, ARRAY_R) or curve operand: matrices, then array
//      handling, element by element;
//   3. scalars, by the table of each operator.
// Array division never produces an infinity: wherever the divisor is zero the
// result is 0.  Scalar division is IEEE; the operator node tests the divisor
// before it gets here.

#include "formula/rpndata.h"

#include "formula/rpnmatrix.h"
#include "formula/rpnseams.h"
#include "formula/rpnsharedcells.h"
#include "support/xmlelement.h"

#include <cmath>
#include <limits>
#include <vector>

namespace {

int wrapAdd(int a, int b)
{
    return int(std::uint32_t(a) + std::uint32_t(b));
}

int wrapSub(int a, int b)
{
    return int(std::uint32_t(a) - std::uint32_t(b));
}

int wrapMul(int a, int b)
{
    return int(std::uint32_t(a) * std::uint32_t(b));
}

int intQuotient(int a, int b)
{
    if (b == 0)
        return 0;
    if (b == -1)
        return wrapSub(0, a); // INT_MIN / -1 wraps
    return a / b;
}

int intRemainder(int a, int b)
{
    if (b == 0 || b == -1)
        return 0;
    return a % b;
}

// Two XML values joined as elements: a new element without a name that holds
// the elements of both sides.  A side without a name (a parsed document, or
// an earlier join) gives its children rather than itself; the empty element
// gives nothing.
CRpnData joinXml(CXmlElement *left, CXmlElement *right)
{
    CXmlElementPtr joined = CreateElement(QString());
    for (CXmlElement *side : {left, right}) {
        if (CXmlElement::IsNull(side))
            continue;
        if (!side->GetName().isEmpty()) {
            joined->AddChild(side);
            continue;
        }
        for (int i = 0; i < side->GetChildCount(); ++i)
            joined->AddChild(side->GetChildAt(i));
    }
    return CRpnData(joined.Get());
}

CRpnData deferToFormula(int op, const CRpnData &a, const CRpnData &b)
{
    CRpnData result;
    if (CRpnFormulaSupport *f = GetRpnFormulaSupport())
        f->Combine(op, a, b, result);
    return result;
}

std::complex<double> complexQuotient(const CRpnData &a, const CRpnData &b)
{
    // Through the squared modulus of the divisor; zero is not tested.
    if (a.IsComplex() && b.IsComplex()) {
        const double ar = a.GetRealValue(), ai = a.GetImagValue();
        const double br = b.GetRealValue(), bi = b.GetImagValue();
        const double m = br * br + bi * bi;
        return {(ar * br + ai * bi) / m, (ai * br - ar * bi) / m};
    }
    if (a.IsComplex()) {
        const double d = b.GetDouble();
        return {a.GetRealValue() / d, a.GetImagValue() / d};
    }
    const double x = a.GetDouble();
    const double br = b.GetRealValue(), bi = b.GetImagValue();
    const double m = br * br + bi * bi;
    return {x * br / m, -x * bi / m};
}

CRpnData scalarOp(int op, const CRpnData &a, const CRpnData &b)
{
    const std::uint32_t ka = a.GetKind(), kb = b.GetKind();
    const bool complex = ka == RPN_COMPLEX || kb == RPN_COMPLEX;
    const bool real = ka == RPN_REAL || kb == RPN_REAL;
    const bool integer = ka == RPN_INT || kb == RPN_INT;
    switch (op) {
    case '+':
        if (complex)
            return CRpnData(a.GetComplex() + b.GetComplex());
        if (real)
            return CRpnData(a.GetDouble() + b.GetDouble());
        if (integer)
            return CRpnData(wrapAdd(a.GetInt(), b.GetInt()));
        // A string only meeting a string (or no number) is text.
        if (ka == RPN_STRING || kb == RPN_STRING)
            return CRpnData(a.GetText(16) + b.GetText(16));
        if (ka == RPN_XML && kb == RPN_XML)
            return joinXml(a.GetXml(), b.GetXml());
        if (ka == RPN_NULL)
            return b;
        return a;
    case '-':
        if (complex)
            return CRpnData(a.GetComplex() - b.GetComplex());
        if (real)
            return CRpnData(a.GetDouble() - b.GetDouble());
        if (integer)
            return CRpnData(wrapSub(a.GetInt(), b.GetInt()));
        return a;
    case '*':
        if (complex) {
            if (ka == RPN_COMPLEX && kb == RPN_COMPLEX)
                return CRpnData(a.GetComplex() * b.GetComplex());
            // Each part of the complex side scaled by the other's real value.
            const CRpnData &c = ka == RPN_COMPLEX ? a : b;
            const double s = (ka == RPN_COMPLEX ? b : a).GetDouble();
            return CRpnData(std::complex<double>(c.GetRealValue() * s, c.GetImagValue() * s));
        }
        if (real)
            return CRpnData(a.GetDouble() * b.GetDouble());
        if (ka == RPN_INT && kb == RPN_INT)
            return CRpnData(wrapMul(a.GetIntValue(), b.GetIntValue()));
        return CRpnData(a.GetDouble() * b.GetDouble());
    case '/':
        if (complex)
            return CRpnData(complexQuotient(a, b));
        if (real)
            return CRpnData(a.GetDouble() / b.GetDouble());
        return CRpnData(intQuotient(a.GetInt(), b.GetInt()));
    case '%':
        if (complex)
            return a;
        if (real)
            return CRpnData(std::fmod(a.GetDouble(), b.GetDouble()));
        if (integer)
            return CRpnData(intRemainder(a.GetInt(), b.GetInt()));
        return a;
    default:
        return CRpnData();
    }
}

// The double loops: in place against a scalar, and array against array.
// Dividing by zero writes 0.
void realLoop(int op, const double *x, double y, double *out, int n, bool arrayOnLeft)
{
    switch (op) {
    case '+':
        for (int i = 0; i < n; ++i)
            out[i] = x[i] + y;
        break;
    case '-':
        if (arrayOnLeft)
            for (int i = 0; i < n; ++i)
                out[i] = x[i] - y;
        else
            for (int i = 0; i < n; ++i)
                out[i] = y - x[i];
        break;
    case '*':
        for (int i = 0; i < n; ++i)
            out[i] = x[i] * y;
        break;
    case '/':
        if (arrayOnLeft) {
            if (y != 0.0) // by zero: the fresh block stays zero
                for (int i = 0; i < n; ++i)
                    out[i] = x[i] / y;
        } else {
            for (int i = 0; i < n; ++i)
                out[i] = x[i] != 0.0 ? y / x[i] : 0.0;
        }
        break;
    case '%':
        if (arrayOnLeft) {
            if (y != 0.0)
                for (int i = 0; i < n; ++i)
                    out[i] = std::fmod(x[i], y);
        } else {
            for (int i = 0; i < n; ++i)
                out[i] = x[i] != 0.0 ? std::fmod(y, x[i]) : 0.0;
        }
        break;
    default:
        break;
    }
}

void realLoop(int op, const double *x, const double *y, double *out, int n)
{
    switch (op) {
    case '+':
        for (int i = 0; i < n; ++i)
            out[i] = x[i] + y[i];
        break;
    case '-':
        for (int i = 0; i < n; ++i)
            out[i] = x[i] - y[i];
        break;
    case '*':
        for (int i = 0; i < n; ++i)
            out[i] = x[i] * y[i];
        break;
    case '/':
        for (int i = 0; i < n; ++i)
            out[i] = y[i] != 0.0 ? x[i] / y[i] : 0.0;
        break;
    case '%':
        for (int i = 0; i < n; ++i)
            out[i] = y[i] != 0.0 ? std::fmod(x[i], y[i]) : 0.0;
        break;
    default:
        break;
    }
}

CRpnData valueOp(int op, const CRpnData &a, const CRpnData &b);

// In an ARRAY operation a zero divisor between two scalars gives 0 instead
// of an infinity.
bool zeroDivisor(int op, const CRpnData &a, const CRpnData &b)
{
    return (op == '/' || op == '%') && !b.IsArrayOrCurve() && !b.IsFormula() && !b.IsComplex() && !a.IsFormula()
        && !a.IsArrayOrCurve() && b.GetDouble() == 0.0;
}

// One element of an ARRAY operation: the full arithmetic, except for a zero divisor.
CRpnData elementOp(int op, const CRpnData &a, const CRpnData &b)
{
    if (zeroDivisor(op, a, b))
        return CRpnData(0.0);
    return valueOp(op, a, b);
}

// Two REALs under +, - or *: the value arithmetic's result (the plain
// double operation, a REAL without flags), written into `out` where it lies.
// False, with nothing written, for any other pair or operator.
bool realElement(int op, const CRpnData &a, const CRpnData &b, CRpnData &out)
{
    if (!a.IsReal() || !b.IsReal())
        return false;
    const double x = a.GetRealValue(), y = b.GetRealValue();
    switch (op) {
    case '+':
        out.SetDouble(x + y);
        return true;
    case '-':
        out.SetDouble(x - y);
        return true;
    case '*':
        out.SetDouble(x * y);
        return true;
    default:
        return false;
    }
}

std::uint32_t matrixBit(const CRpnData &v)
{
    return v.IsArray() ? (v.GetFlags() & RPN_FLAG_MATRIX) : 0;
}

void setMatrixBit(CRpnData &v, std::uint32_t bit)
{
    if (bit)
        v.SetMatrixFlag(true);
}

CRpnData arrayWithScalar(int op, const CRpnData &array, const CRpnData &scalar, bool arrayOnLeft)
{
    CRpnData result;
    const int n = array.GetSize(); // a curve counts as empty
    if (array.GetKind() == RPN_ARRAY_R) {
        result.SetRealArray(n);
        realLoop(op, array.GetRealData(), scalar.GetDouble(), result.GetRealData(), n, arrayOnLeft);
    } else {
        result.SetArray(n);
        const CRpnData *in = n ? array.GetItems() : nullptr;
        CRpnData *out = result.GetItems();
        for (int i = 0; i < n; ++i) {
            const CRpnData &x = arrayOnLeft ? in[i] : scalar;
            const CRpnData &y = arrayOnLeft ? scalar : in[i];
            if (!realElement(op, x, y, out[i]))
                out[i] = elementOp(op, x, y);
        }
    }
    setMatrixBit(result, matrixBit(array));
    return result;
}

CRpnData arrayWithArray(int op, const CRpnData &a, const CRpnData &b)
{
    CRpnData result;
    const int n = std::min(a.GetSize(), b.GetSize()); // extra elements are dropped
    if (a.GetKind() == RPN_ARRAY_R && b.GetKind() == RPN_ARRAY_R) {
        result.SetRealArray(n);
        realLoop(op, a.GetRealData(), b.GetRealData(), result.GetRealData(), n);
    } else {
        result.SetArray(n);
        CRpnData *out = result.GetItems();
        for (int i = 0; i < n; ++i) {
            if (a.GetKind() == RPN_ARRAY && b.GetKind() == RPN_ARRAY &&
                realElement(op, a.GetItems()[i], b.GetItems()[i], out[i]))
                continue;
            out[i] = elementOp(op, a.GetAt(i), b.GetAt(i));
        }
    }
    setMatrixBit(result, matrixBit(a) | matrixBit(b));
    return result;
}

// An array whose first element is itself a non-empty array.
bool hasRows(const CRpnData &v)
{
    return v.GetKind() == RPN_ARRAY && v.GetSize() > 0 && v.GetItems()[0].IsArray()
        && v.GetItems()[0].GetSize() > 0;
}

bool isMatrixPair(const CRpnData &a, const CRpnData &b)
{
    const bool fa = a.IsMatrix(), fb = b.IsMatrix();
    return (fa && fb) || (fa && hasRows(b)) || (fb && hasRows(a));
}

CRpnData matrixOp(int op, const CRpnData &a, const CRpnData &b)
{
    switch (op) {
    case '+':
    case '-': {
        int ra = 0, ca = 0, rb = 0, cb = 0;
        RpnMatrixSize(a, ra, ca);
        RpnMatrixSize(b, rb, cb);
        if (ra != rb || ca != cb)
            return CRpnData();
        CRpnData result = arrayWithArray(op, a, b);
        result.SetMatrixFlag(true);
        return result;
    }
    case '*':
        return RpnMatrixMultiply(a, b);
    case '/': {
        const CRpnData inverse = RpnMatrixInverse(b);
        return inverse.IsNull() ? inverse : RpnMatrixMultiply(a, inverse);
    }
    default:
        return CRpnData();
    }
}

// Whether an operation goes cell by cell through general values: an ARRAY
// with a scalar or with another array (not two ARRAY_R), neither side a
// formula, and no pair of matrices.
bool goesCellByCell(int op, const CRpnData &a, const CRpnData &b)
{
    if (a.IsFormula() || b.IsFormula())
        return false;
    const bool arrayA = a.IsArrayOrCurve(), arrayB = b.IsArrayOrCurve();
    if (!arrayA && !arrayB)
        return false;
    if (op != '%' && isMatrixPair(a, b))
        return false;
    if (arrayA && arrayB)
        return a.GetKind() == RPN_ARRAY || b.GetKind() == RPN_ARRAY;
    return (arrayA ? a : b).GetKind() == RPN_ARRAY;
}

// One step of an operation, where cells that are arrays again are not gone into.
CRpnData shallowOp(int op, const CRpnData &a, const CRpnData &b);

// Arrays in arrays to any depth: the cells are worked from a stack of levels
// rather than by recursion, so that a list nested 20,000 deep adds up.  A
// pair that holds an array that several cells hold is worked once (see
// rpnsharedcells.h).
CRpnData cellByCell(int op, const CRpnData &a, const CRpnData &b)
{
    struct Level
    {
        CRpnData a, b, out;
        int next, count;
        bool arrayA, arrayB, keep;
    };
    std::vector<Level> stack;
    CRpnSharedCells shared;
    const auto enter = [&stack](const CRpnData &x, const CRpnData &y, bool keep) {
        const bool arrayX = x.IsArrayOrCurve(), arrayY = y.IsArrayOrCurve();
        // The smaller size; extra elements are dropped.  A curve counts as empty.
        const int n = arrayX && arrayY ? std::min(x.GetSize(), y.GetSize()) : arrayX ? x.GetSize() : y.GetSize();
        Level level{x, y, CRpnData(), 0, n, arrayX, arrayY, keep};
        level.out.SetArray(n);
        stack.push_back(std::move(level));
    };
    enter(a, b, false);
    CRpnData done;
    while (!stack.empty()) {
        Level &level = stack.back();
        if (level.next == level.count) {
            done = std::move(level.out);
            setMatrixBit(done, (level.arrayA ? matrixBit(level.a) : 0) | (level.arrayB ? matrixBit(level.b) : 0));
            if (level.keep)
                shared.Keep(level.a, level.b, done);
            stack.pop_back();
            if (!stack.empty()) {
                Level &up = stack.back();
                up.out.GetItems()[up.next++] = std::move(done);
            }
            continue;
        }
        const CRpnData x = level.arrayA ? level.a.GetAt(level.next) : level.a;
        const CRpnData y = level.arrayB ? level.b.GetAt(level.next) : level.b;
        if (!zeroDivisor(op, x, y) && goesCellByCell(op, x, y)) {
            // x and y are copies of their cells, one handle each of the
            // walk's own; a side spread over the other's cells repeats with it.
            const bool keep = (level.arrayA && CRpnSharedCells::IsShared(x, 1))
                || (level.arrayB && CRpnSharedCells::IsShared(y, 1));
            if (const CRpnData *made = keep ? shared.Find(x, y) : nullptr) {
                level.out.GetItems()[level.next++] = *made;
                continue;
            }
            enter(x, y, keep); // `level` is not used after this
            continue;
        }
        level.out.GetItems()[level.next++] = zeroDivisor(op, x, y) ? CRpnData(0.0) : shallowOp(op, x, y);
    }
    return done;
}

CRpnData valueOp(int op, const CRpnData &a, const CRpnData &b)
{
    if (goesCellByCell(op, a, b))
        return cellByCell(op, a, b);
    return shallowOp(op, a, b);
}

CRpnData shallowOp(int op, const CRpnData &a, const CRpnData &b)
{
    if (a.IsFormula() || b.IsFormula())
        return deferToFormula(op, a, b);
    const bool arrayA = a.IsArrayOrCurve(), arrayB = b.IsArrayOrCurve();
    if (arrayA || arrayB) {
        if (op != '%' && isMatrixPair(a, b))
            return matrixOp(op, a, b);
        if (arrayA && arrayB)
            return arrayWithArray(op, a, b);
        return arrayA ? arrayWithScalar(op, a, b, true) : arrayWithScalar(op, b, a, false);
    }
    return scalarOp(op, a, b);
}

bool isEmptyXml(const CRpnData &v)
{
    return CXmlElement::IsNull(v.GetXml());
}

// Rule for a side that is null or the real 0 against the other side:
// 1 or 0 when decided, -1 to go on.
int againstNothing(const CRpnData &v)
{
    if (v.IsNull())
        return 1;
    if (v.IsArrayOrCurve())
        return v.GetSize() == 0 ? 1 : 0;
    if (v.IsString())
        return v.GetTextValue().isEmpty() ? 1 : 0;
    if (v.IsXml())
        return isEmptyXml(v) ? 1 : 0;
    return -1;
}

bool isNothing(const CRpnData &v)
{
    return v.IsNull() || (v.IsReal() && v.GetRealValue() == 0.0);
}

} // namespace

CRpnData CRpnData::Arithmetic(int op, const CRpnData &a, const CRpnData &b)
{
    switch (op) {
    case '+':
    case '-':
    case '*':
    case '/':
    case '%':
        return valueOp(op, a, b);
    default:
        return CRpnData();
    }
}

// Equality in the order of its rules; two REALs were compared inline.
int CRpnData::equalsByRules(const CRpnData &a, const CRpnData &b)
{
    const std::uint32_t ka = a.m_kind, kb = b.m_kind;
    if (isNothing(b)) {
        const int r = againstNothing(a);
        if (r >= 0)
            return r;
    }
    if (isNothing(a) && (b.IsArrayOrCurve() || kb == RPN_STRING || kb == RPN_XML))
        return againstNothing(b);
    if (a.IsArrayOrCurve() || b.IsArrayOrCurve())
        return RPN_NOT_DECIDED;
    if (ka == RPN_STRING || kb == RPN_STRING)
        return a.GetText(16).compare(b.GetText(16), Qt::CaseInsensitive) == 0 ? 1 : 0;
    if (ka == RPN_COMPLEX || kb == RPN_COMPLEX)
        return a.GetComplex() == b.GetComplex() ? 1 : 0;
    if (ka == RPN_REAL || kb == RPN_REAL)
        return a.GetDouble() == b.GetDouble() ? 1 : 0;
    if (ka == kb) {
        switch (ka) {
        case RPN_INT: return a.m_u.i == b.m_u.i ? 1 : 0;
        case RPN_XML: return a.m_u.p->m_xml == b.m_u.p->m_xml ? 1 : 0;
        case RPN_FORMULA: return a.m_u.p->m_tree == b.m_u.p->m_tree ? 1 : 0;
        case RPN_FUNCTION: return a.m_u.p->m_function == b.m_u.p->m_function ? 1 : 0;
        case RPN_DICTIONARY: return a.m_u.p->m_map == b.m_u.p->m_map ? 1 : 0;
        case RPN_POINTER:
        case RPN_TARNPART: return a.m_u.p->m_pointer == b.m_u.p->m_pointer ? 1 : 0;
        case RPN_DOCUMENT: return a.m_u.p->m_object == b.m_u.p->m_object ? 1 : 0;
        default: break;
        }
    }
    return a.GetDouble() == b.GetDouble() ? 1 : 0;
}
