// Making and changing arrays.

#include "functions/rpnarrayfunctions.h"

#include "formula/rpnkeywords.h"
#include "formula/rpnnumber.h"

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <new>

namespace {

// An empty range gives this many null cells.
constexpr int kEmptyRangeCells = 100;
constexpr int kMsgLimitsNotFinite = 43312;

// Sets `result` to `cells` null cells (or, with `reals`, a Real array of
// `cells` zeros), or reports why it cannot.
bool makeCells(CRpnNode *node, CRpnData &result, unsigned char &status, double cells, bool reals)
{
    if (!CheckArrayCells(node, status, cells, reals)) {
        result.SetNull();
        return false;
    }
    const int n = cells > 0 ? int(cells) : 0;
    try {
        if (reals)
            result.SetRealArray(n);
        else
            result.SetArray(n);
    } catch (const std::bad_alloc &) {
        result.SetNull();
        ReportOutOfMemory(node, status, cells);
        return false;
    }
    return true;
}

bool makeArray(CRpnNode *node, CRpnData &result, unsigned char &status, double cells)
{
    return makeCells(node, result, status, cells, false);
}

bool makeRealArray(CRpnNode *node, CRpnData &result, unsigned char &status, double cells)
{
    return makeCells(node, result, status, cells, true);
}

// Steps that fit between the ends of a range: NaN (0 / 0) counts as none.
double stepsIn(double distance, double step)
{
    const double n = std::trunc(std::fabs(distance) / std::fabs(step));
    return std::isnan(n) ? 0.0 : n;
}

// Array(start, stop, step) and ArrayD(start, stop, step).
void sequence(CRpnNodeList *node, CRpnData &result, unsigned char &status, bool realBlock)
{
    CRpnData v[3];
    for (int i = 0; i < 3; ++i) {
        if (!EvaluateArgument(node, i, v[i], result, status))
            return;
    }
    if (!realBlock && (v[0].IsComplex() || v[1].IsComplex() || v[2].IsComplex())) {
        const std::complex<double> start = v[0].GetComplex(), stop = v[1].GetComplex(), step = v[2].GetComplex();
        const std::complex<double> d = stop - start;
        if (d.real() == 0.0 && d.imag() == 0.0) {
            makeArray(node, result, status, kEmptyRangeCells);
            return;
        }
        const double count = std::max(stepsIn(d.real(), step.real()), stepsIn(d.imag(), step.imag())) + 1.0;
        if (!makeArray(node, result, status, count))
            return;
        const double sre = d.real() <= 0.0 ? -std::fabs(step.real()) : std::fabs(step.real());
        const double sim = d.imag() <= 0.0 ? -std::fabs(step.imag()) : std::fabs(step.imag());
        CRpnData *cells = result.GetItems();
        for (int k = 0; k < result.GetSize(); ++k)
            cells[k].SetComplex(k * sre + start.real(), k * sim + start.imag());
        return;
    }
    if (!realBlock && v[0].IsInt() && v[1].IsInt() && v[2].IsInt()) {
        const std::int64_t start = v[0].GetIntValue(), stop = v[1].GetIntValue();
        std::int64_t step = v[2].GetIntValue();
        if (step == 0)
            step = 1;
        if (start == stop) {
            makeArray(node, result, status, kEmptyRangeCells);
            return;
        }
        const std::int64_t span = start > stop ? start - stop : stop - start;
        const std::int64_t width = step < 0 ? -step : step;
        if (!makeArray(node, result, status, double(span / width + 1)))
            return;
        step = stop - start < 1 ? -width : width;
        CRpnData *cells = result.GetItems();
        for (int k = 0; k < result.GetSize(); ++k)
            cells[k].SetInt(int(start + k * step));
        return;
    }
    const double start = v[0].GetDouble(), stop = v[1].GetDouble();
    double step = v[2].GetDouble();
    if (step == 0.0)
        step = 1.0;
    const double d = stop - start;
    if (d == 0.0) {
        // Even ArrayD gives the null cells of Array here.
        makeArray(node, result, status, kEmptyRangeCells);
        return;
    }
    const double count = std::trunc(std::fabs(d) / std::fabs(step)) + 1.0;
    step = d <= 0.0 ? -std::fabs(step) : std::fabs(step);
    if (realBlock) {
        if (!makeRealArray(node, result, status, count))
            return;
        double *x = result.GetRealData();
        for (int k = 0; k < result.GetSize(); ++k)
            x[k] = k * step + start;
        return;
    }
    if (!makeArray(node, result, status, count))
        return;
    CRpnData *cells = result.GetItems();
    for (int k = 0; k < result.GetSize(); ++k)
        cells[k].SetDouble(k * step + start);
}

// The size argument of Array and ArrayD: an integer, negative as 0; a huge
// request keeps its own value for the refusal.
double sizeArgument(const CRpnData &v)
{
    const int n = v.GetInt();
    if (n <= 0)
        return 0.0;
    if (n == std::numeric_limits<int>::max())
        return std::max(v.GetDouble(), double(n));
    return n;
}

// A value appended to a real array: numbers as they are, a text by its
// leading number, anything else 0.
double appendedReal(const CRpnData &v)
{
    switch (v.GetKind()) {
    case RPN_REAL:
        return v.GetRealValue();
    case RPN_INT:
        return v.GetIntValue();
    case RPN_STRING: {
        int consumed = 0;
        return ParseNumber(QStringView(v.GetTextValue()), consumed);
    }
    default:
        return 0.0;
    }
}

bool isArrayTarget(const CRpnData &v)
{
    const std::uint32_t kind = v.GetKind();
    return kind == RPN_ARRAY_R || kind == RPN_ARRAY || kind == RPN_CURVE;
}

void failQuietly(CRpnData &result, unsigned char &status)
{
    result.SetNull();
    status = 0;
}

// Equal for FindNext: the upper six bytes of the two doubles agree.
bool nearlySame(double a, double b)
{
    std::uint64_t x, y;
    std::memcpy(&x, &a, sizeof x);
    std::memcpy(&y, &b, sizeof y);
    return (x >> 16) == (y >> 16);
}

template <class CellAt>
CRpnCrossing findCrossing(const CellAt &cellAt, int n, double level, int start)
{
    CRpnCrossing c;
    if (std::isnan(level) || std::isinf(level))
        return c;
    if (std::fpclassify(level) == FP_SUBNORMAL)
        level = 0.0;
    if (n <= 0)
        return c;
    int i = start >= n ? n - 1 : start;
    if (i < 0)
        i = 0;
    double v = cellAt(i);
    if (nearlySame(v, level)) {
        c.left = c.right = i;
        c.found = true;
        return c;
    }
    const bool rising = level > v;
    double previous = v;
    for (++i; i < n; ++i) {
        v = cellAt(i);
        if (rising ? v >= level : v <= level)
            break;
        previous = v;
    }
    c.left = c.right = i;
    if (i >= n)
        return c;
    c.found = true;
    c.fraction = nearlySame(v, level) ? 0.0 : (level - previous) / (v - previous);
    return c;
}

} // namespace

CRpnCrossing FindCrossing(const double *cells, int n, double level, int start)
{
    return findCrossing([cells](int i) { return cells[i]; }, n, level, start);
}

// --- Array, ArrayD, ArrayLog ---------------------------------------------------------------

void CNodeNewArray::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    if (count == 0) {
        result.SetArray(0);
        return;
    }
    if (count == 3) {
        sequence(this, result, status, false);
        return;
    }
    CRpnData size, fill;
    if (!EvaluateArgument(this, 0, size, result, status))
        return;
    if (count >= 2 && !EvaluateArgument(this, 1, fill, result, status))
        return;
    if (!makeArray(this, result, status, sizeArgument(size)) || count < 2 || fill.IsNull())
        return;
    CRpnData *cells = result.GetItems();
    for (int i = 0; i < result.GetSize(); ++i)
        cells[i] = fill;
}

void CNodeNewArrayDouble::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    if (count == 0) {
        result.SetRealArray(kEmptyRangeCells);
        return;
    }
    if (count == 3) {
        sequence(this, result, status, true);
        return;
    }
    CRpnData size, fill;
    if (!EvaluateArgument(this, 0, size, result, status))
        return;
    if (count >= 2 && !EvaluateArgument(this, 1, fill, result, status))
        return;
    if (!makeRealArray(this, result, status, sizeArgument(size)) || count < 2)
        return;
    const double x = fill.GetDouble();
    std::fill(result.GetRealData(), result.GetRealData() + result.GetSize(), x);
}

void CNodeNewLogArray::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    if (count == 0) {
        // The repeated product, as the grid has always been shown.
        result.SetArray(10);
        double x = 0.001;
        for (int i = 0; i < 10; ++i, x *= 10.0)
            result.GetItems()[i].SetDouble(x);
        return;
    }
    CRpnData a, b;
    if (!EvaluateArgument(this, 0, a, result, status))
        return;
    if (count >= 2 && !EvaluateArgument(this, 1, b, result, status))
        return;
    double low = a.GetDouble();
    if (!(low > 0.0))
        low = 1.0;
    double high = count >= 2 ? b.GetDouble() : 1e6;
    if (!(high > 0.0))
        high = 6.0;
    if (std::isinf(low) || std::isinf(high)) {
        ReportFunctionText(this, status, RpnMessage(kMsgLimitsNotFinite, {GetName()}));
        result.SetNull();
        return;
    }
    const bool descending = low > high;
    if (descending)
        std::swap(low, high);
    int d0 = int(std::floor(std::log10(low)));
    int d1 = int(std::ceil(std::log10(high)));
    if (d0 == d1) {
        --d0;
        ++d1;
    }
    const int decades = d1 - d0;
    // Rounding of the powers may leave a mantissa a hair outside 1 to 10.
    const int m0 = std::clamp(int(std::floor(low / std::pow(10.0, d0))), 1, 10);
    const int m1 = std::clamp(int(std::ceil(high / std::pow(10.0, d1 - 1))), 1, 10);
    const int total = decades * 9 - m0 + m1 - 8;
    if (!makeArray(this, result, status, total))
        return;
    CRpnData *cells = result.GetItems();
    int k = 0;
    for (int j = 0; j < decades; ++j) {
        // Below 1 the mantissa is divided by a power of ten, which is exact
        // where the product with 0.1 is not (6 * 0.1 is not 0.6).
        const int exponent = d0 + j;
        const double power = std::pow(10.0, exponent < 0 ? -exponent : exponent);
        const int first = j == 0 ? m0 : 1;
        const int last = j == decades - 1 ? m1 : 9;
        for (int m = first; m <= last && k < total; ++m, ++k)
            cells[descending ? total - 1 - k : k].SetDouble(exponent < 0 ? m / power : m * power);
    }
}

// --- SizeOf, AddToArray, RemoveCell, AppendArray, Copy -----------------------------------------

void CNodeSizeOfArray::Apply(CRpnData &result, const CRpnData &a, const CRpnData &, unsigned char &)
{
    if (a.IsArray())
        result.SetInt(a.GetSize());
    else if (a.IsString())
        result.SetInt(int(std::min<qsizetype>(a.GetTextValue().size(), std::numeric_limits<int>::max())));
    else
        result.SetInt(0);
}

void CNodeAddToArray::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    if (count == 0) {
        failQuietly(result, status);
        return;
    }
    CRpnData target;
    if (!EvaluateArgument(this, 0, target, result, status))
        return;
    if (!isArrayTarget(target)) {
        ReportFunctionText(this, status, RpnFormat(QStringLiteral("%s(...) first parameter must be of type array."),
                                                   {GetName()}));
        result.SetNull();
        return;
    }
    const int added = count - 1;
    CRpnValueList values(added);
    for (int i = 0; i < added; ++i) {
        if (!EvaluateArgument(this, i + 1, values[i], result, status))
            return;
    }
    if (target.GetKind() == RPN_CURVE || added == 0) {
        result = std::move(target);
        return;
    }
    // A value that holds the array itself goes in as a copy of what it is
    // now, so that the array never holds itself.
    for (int i = 0; i < added; ++i) {
        if (values[i].Holds(target)) {
            CRpnData copy;
            copy.DeepCopy(values[i]);
            values[i] = std::move(copy);
        }
    }
    const bool reals = target.GetKind() == RPN_ARRAY_R;
    const int old = target.GetSize();
    const double total = double(old) + added;
    if (!CheckArrayCells(this, status, total, reals)) {
        result.SetNull();
        return;
    }
    try {
        target.Resize(int(total));
    } catch (const std::bad_alloc &) {
        result.SetNull();
        ReportOutOfMemory(this, status, total);
        return;
    }
    if (reals) {
        double *x = target.GetRealData() + old;
        for (int i = 0; i < added; ++i)
            x[i] = appendedReal(values[i]);
    } else {
        CRpnData *cells = target.GetItems() + old;
        for (int i = 0; i < added; ++i)
            cells[i] = std::move(values[i]);
    }
    result = std::move(target);
}

void CNodeArrayRemoveCell::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    if (count == 0) {
        failQuietly(result, status);
        return;
    }
    CRpnData target;
    if (!EvaluateArgument(this, 0, target, result, status))
        return;
    if (!isArrayTarget(target)) {
        ReportFunctionText(this, status,
                           RpnFormat(QStringLiteral("%s(array, index) first parameter must be of type array."),
                                     {GetName()}));
        result.SetNull();
        return;
    }
    if (count < 2) {
        ReportMissingParameter(this, status, 2);
        result.SetNull();
        return;
    }
    CRpnData index;
    if (!EvaluateArgument(this, 1, index, result, status))
        return;
    target.RemoveAt(index.GetInt()); // outside the array: nothing happens
    result = std::move(target);
}

void CNodeAppendArray::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    if (count == 0) {
        failQuietly(result, status);
        return;
    }
    CRpnValueList parts(count);
    double total = 0.0;
    for (int i = 0; i < count; ++i) {
        if (!EvaluateArgument(this, i, parts[i], result, status))
            return;
        if (!isArrayTarget(parts[i])) {
            ReportFunctionText(this, status,
                               RpnFormat(QStringLiteral("AppendArray's parameter %i must be of type array or graph."),
                                         {i + 1}));
            result.SetNull();
            return;
        }
        total += parts[i].GetSize();
    }
    const std::uint32_t kind = parts[0].GetKind();
    if (kind == RPN_CURVE) {
        result.SetNull();
        return;
    }
    CRpnData out;
    if (kind == RPN_ARRAY_R) {
        if (!makeRealArray(this, out, status, total)) {
            result.SetNull();
            return;
        }
        double *x = out.GetRealData();
        for (int i = 0; i < count; ++i) {
            const CRpnData &part = parts[i];
            const int n = part.GetSize();
            if (part.GetKind() == RPN_ARRAY_R) {
                if (n > 0)
                    std::memcpy(x, part.GetRealData(), sizeof(double) * std::size_t(n));
            } else {
                for (int k = 0; k < n; ++k)
                    x[k] = part.GetItems()[k].GetDouble();
            }
            x += n;
        }
    } else {
        if (!makeArray(this, out, status, total)) {
            result.SetNull();
            return;
        }
        CRpnData *cells = out.GetItems();
        for (int i = 0; i < count; ++i) {
            const CRpnData &part = parts[i];
            const int n = part.GetSize();
            if (part.GetKind() == RPN_ARRAY) {
                for (int k = 0; k < n; ++k)
                    cells[k] = part.GetItems()[k];
            } else {
                for (int k = 0; k < n; ++k)
                    cells[k].SetDouble(part.GetRealData()[k]);
            }
            cells += n;
        }
    }
    result = std::move(out);
}

void CNodeCopy::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    if (count == 0) {
        failQuietly(result, status);
        return;
    }
    CRpnData value, start, length;
    if (!EvaluateArgument(this, 0, value, result, status))
        return;
    if (count > 1 && !EvaluateArgument(this, 1, start, result, status))
        return;
    if (count > 2 && !EvaluateArgument(this, 2, length, result, status))
        return;
    result.CopyRange(value, count > 1 ? start.GetInt() : 0, count > 2 ? length.GetInt() : -1);
}

// --- FindNext ------------------------------------------------------------------------------------

void CNodeFindNext::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    if (count < 2) {
        failQuietly(result, status);
        return;
    }
    CRpnData level, data, start;
    if (!EvaluateArgument(this, 0, level, result, status) || !EvaluateArgument(this, 1, data, result, status))
        return;
    if (count > 2 && !EvaluateArgument(this, 2, start, result, status))
        return;
    if (data.GetKind() != RPN_ARRAY && data.GetKind() != RPN_CURVE) {
        ReportFunctionText(this, status, QStringLiteral("Expecting Array or Graph curve as second parameter."));
        result.SetNull();
        return;
    }
    // A graph curve has no cells here and finds nothing.
    const int n = data.GetSize();
    const CRpnData *cells = data.GetItems();
    const CRpnCrossing c = findCrossing([cells](int i) { return cells[i].GetDouble(); }, n, level.GetDouble(),
                                        count > 2 ? start.GetInt() : 0);
    if (count > 2)
        WriteBackParameter(m_children[2], CRpnData(c.left == c.right ? c.right + 1 : c.right), status);
    if (count > 3)
        WriteBackParameter(m_children[3], CRpnData(c.fraction), status);
    if (status == 0) {
        result.SetNull();
        return;
    }
    if (c.found)
        result.SetInt(c.left);
    else
        result.SetNull();
}

void ProvideArrayFunctions(CRpnPrototypeArray &prototypes)
{
    CRpnNode *const nodes[] = {new CNodeNewArray,       new CNodeNewArrayDouble, new CNodeNewLogArray,
                               new CNodeSizeOfArray,    new CNodeAddToArray,     new CNodeArrayRemoveCell,
                               new CNodeAppendArray,    new CNodeCopy,           new CNodeFindNext};
    for (CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), node);
}
