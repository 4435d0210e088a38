// Construction, setters, element access and conversions of CRpnData.

#include "formula/rpndata.h"

#include "formula/rpndictionary.h"
#include "formula/rpnnumber.h"
#include "formula/rpnseams.h"
#include "formula/rpnuserfunction.h"
#include "support/languagestring.h"
#include "support/xmlelement.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

// Language texts of the kind names.
constexpr int kTextReal = 41091;
constexpr int kTextInteger = 41094;
constexpr int kTextEmpty = 41096;
constexpr int kTextText = 41670;

double *allocReals(int capacity)
{
    // One double more than asked for, as the array's block always had.
    auto *p = static_cast<double *>(std::calloc(std::size_t(capacity) + 1, sizeof(double)));
    if (!p)
        throw std::bad_alloc();
    return p;
}

CRpnData *allocItems(int capacity)
{
    return static_cast<CRpnData *>(::operator new(sizeof(CRpnData) * std::size_t(std::max(capacity, 1))));
}

} // namespace

// Truncation toward zero after the bias of one hundredth toward the sign.
int RpnBiasedInt(double x)
{
    if (std::isnan(x))
        return 0;
    const double b = x >= 0 ? x + 0.01 : x - 0.01;
    if (b >= 2147483647.0)
        return std::numeric_limits<int>::max();
    if (b <= -2147483648.0)
        return std::numeric_limits<int>::min();
    return int(b);
}

namespace {

// A non-empty ARRAY converts as its first element: followed by a loop, as
// the first element may be an array again, to any depth.
const CRpnData *firstOfArrays(const CRpnData *v)
{
    while (v->GetKind() == RPN_ARRAY && v->GetSize() > 0)
        v = &v->GetItems()[0];
    return v;
}

int biasedInt(double x)
{
    return RpnBiasedInt(x);
}

// A plain decimal integer at the start of the text, as atoi reads it.
int decimalInt(const QString &text)
{
    qsizetype i = 0;
    const qsizetype n = text.size();
    while (i < n && (text[i] == u' ' || (text[i] >= u'\t' && text[i] <= u'\r')))
        ++i;
    bool negative = false;
    if (i < n && (text[i] == u'+' || text[i] == u'-'))
        negative = text[i++] == u'-';
    std::int64_t v = 0;
    while (i < n && text[i] >= u'0' && text[i] <= u'9') {
        v = v * 10 + (text[i++].unicode() - u'0');
        if (v > 2147483648LL)
            v = 2147483648LL;
    }
    if (negative)
        v = -v;
    return int(std::clamp<std::int64_t>(v, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

CRpnData evaluateFormula(CEquationTree *tree)
{
    CRpnData result;
    CRpnFormulaSupport *f = GetRpnFormulaSupport();
    if (f && tree)
        f->Evaluate(tree, result);
    return result;
}

} // namespace

const QString &CRpnData::emptyText()
{
    static const QString empty;
    return empty;
}

CRpnData::CRpnData(const QString &text) : m_kind(RPN_STRING), m_flags(0)
{
    m_u.p = makePayload(RPN_STRING);
    new (m_u.p->m_textStorage) QString(text);
}

CRpnData::CRpnData(QString &&text) : m_kind(RPN_STRING), m_flags(0)
{
    m_u.p = makePayload(RPN_STRING);
    new (m_u.p->m_textStorage) QString(std::move(text));
}

CRpnData::CRpnData(CXmlElement *element) : m_kind(RPN_XML), m_flags(0)
{
    m_u.p = makePayload(RPN_XML);
    // The shared empty element stands for "no element" and is not counted.
    if (CXmlElement::IsNull(element)) {
        m_u.p->m_xml = CXmlElement::Null();
    } else {
        m_u.p->m_xml = element;
        element->AddRef();
    }
}

// --- flags ---------------------------------------------------------------------

void CRpnData::SetDisplayExponent(int exponent)
{
    if (m_kind == RPN_REAL)
        m_flags = (m_flags & ~RPN_FLAG_EXPONENT_MASK) | (std::uint32_t(exponent) & RPN_FLAG_EXPONENT_MASK);
}

void CRpnData::SetMatrixFlag(bool on)
{
    if (!IsArray())
        return;
    if (on)
        m_u.p->m_flags |= RPN_FLAG_MATRIX;
    else
        m_u.p->m_flags &= ~RPN_FLAG_MATRIX;
}

// --- setters -------------------------------------------------------------------


void CRpnData::SetComplex(std::complex<double> value)
{
    CRpnPayload *p = reset(RPN_COMPLEX);
    p->m_real = value.real();
    p->m_imag = value.imag();
}

void CRpnData::SetText(const QString &text)
{
    // The new text is made before the old payload goes: `text` may live in it.
    CRpnPayload *p = makePayload(RPN_STRING);
    new (p->m_textStorage) QString(text);
    CRpnPayload *old = boxed(m_kind) ? m_u.p : nullptr;
    m_u.p = p;
    m_kind = RPN_STRING;
    m_flags = 0;
    if (old)
        release(old);
}

void CRpnData::SetText(QString &&text)
{
    CRpnPayload *p = makePayload(RPN_STRING);
    new (p->m_textStorage) QString(std::move(text));
    CRpnPayload *old = boxed(m_kind) ? m_u.p : nullptr;
    m_u.p = p;
    m_kind = RPN_STRING;
    m_flags = 0;
    if (old)
        release(old);
}

void CRpnData::SetText(const char *narrow)
{
    SetText(QString::fromUtf8(narrow));
}

void CRpnData::SetXml(CXmlElement *element)
{
    *this = CRpnData(element);
}

void CRpnData::SetTable(CRpnObject *table)
{
    reset(RPN_TABLE)->m_object = table;
}

void CRpnData::SetLookupTable(CRpnObject *table)
{
    reset(RPN_LOOKUP_TABLE)->m_object = table;
}

void CRpnData::SetFormula(CEquationTree *tree)
{
    reset(RPN_FORMULA)->m_tree = tree;
}

void CRpnData::SetFormulaBorrowed(CEquationTree *tree)
{
    CRpnPayload *p = reset(RPN_FORMULA);
    p->m_tree = tree;
    p->m_flags = RPN_FLAG_BORROWED;
}

void CRpnData::SetFunction(CRpnUserFunction *function)
{
    CRpnPayload *p = reset(RPN_FUNCTION);
    p->m_function = function;
    p->m_flags = RPN_FLAG_BORROWED;
}

void CRpnData::SetDictionary()
{
    auto *map = new CMapStringToRpnData;
    reset(RPN_DICTIONARY)->m_map = map;
}

void CRpnData::SetArray(int count)
{
    count = std::max(count, 0);
    CRpnData *items = allocItems(count);
    for (int i = 0; i < count; ++i)
        new (items + i) CRpnData;
    CRpnPayload *p = reset(RPN_ARRAY);
    p->m_items = items;
    p->m_count = count;
    p->m_capacity = std::max(count, 1);
}

void CRpnData::SetRealArray(int count)
{
    count = std::max(count, 0);
    double *reals = allocReals(count);
    CRpnPayload *p = reset(RPN_ARRAY_R);
    p->m_reals = reals;
    p->m_count = count;
    p->m_capacity = count;
}

void CRpnData::SetMatrix(int rows, int cols)
{
    SetArray(rows);
    for (int r = 0; r < GetSize(); ++r)
        m_u.p->m_items[r].SetArray(cols);
    m_u.p->m_flags |= RPN_FLAG_MATRIX;
}

void CRpnData::SetPointer(void *pointer)
{
    reset(RPN_POINTER)->m_pointer = pointer;
}

void CRpnData::SetDocument(CRpnObject *document)
{
    reset(RPN_DOCUMENT)->m_object = document;
}

void CRpnData::SetPart(void *part)
{
    CRpnPayload *p = reset(RPN_TARNPART);
    p->m_pointer = part;
    p->m_flags = RPN_FLAG_BORROWED;
}

void CRpnData::SetCurve(CRpnObject *curve)
{
    reset(RPN_CURVE)->m_object = curve;
}

// --- arrays --------------------------------------------------------------------

CRpnData CRpnData::GetAt(int i) const
{
    if (!IsArray() || i < 0 || i >= m_u.p->m_count)
        return *this;
    if (m_kind == RPN_ARRAY_R)
        return CRpnData(m_u.p->m_reals[i]);
    return m_u.p->m_items[i];
}

void CRpnData::SetAt(int i, const CRpnData &value)
{
    if (!IsArray() || i < 0 || i >= m_u.p->m_count)
        return;
    if (m_kind == RPN_ARRAY_R)
        m_u.p->m_reals[i] = value.GetDouble();
    else
        m_u.p->m_items[i] = value;
}

void CRpnData::SetRealAt(int i, double x)
{
    if (m_kind == RPN_ARRAY_R && i >= 0 && i < m_u.p->m_count)
        m_u.p->m_reals[i] = x;
}

void CRpnData::Resize(int count)
{
    count = std::max(count, 0);
    if (!IsArray() || count == m_u.p->m_count)
        return;
    CRpnPayload *p = m_u.p;
    const int keep = std::min(count, p->m_count);
    const bool borrowed = (p->m_flags & RPN_FLAG_BORROWED) != 0;
    if (p->m_kind == RPN_ARRAY_R) {
        if (count > p->m_capacity || borrowed) {
            // Grows by half again, so that appending one at a time stays linear.
            const int capacity = std::max(count, borrowed ? count : p->m_capacity + p->m_capacity / 2);
            double *reals = allocReals(capacity);
            std::memcpy(reals, p->m_reals, sizeof(double) * std::size_t(keep));
            if (!borrowed)
                std::free(p->m_reals);
            p->m_reals = reals;
            p->m_capacity = capacity;
            p->m_flags &= ~RPN_FLAG_BORROWED;
        } else {
            // Cells beyond the count are kept zero, so only those between
            // the old and the new count (and the spare one) are touched:
            // appending one at a time stays linear.
            std::fill(p->m_reals + keep, p->m_reals + std::max(p->m_count, count) + 1, 0.0);
        }
        p->m_count = count;
        return;
    }
    // ARRAY
    if (count > p->m_capacity || borrowed) {
        const int capacity = std::max(count, borrowed ? count : p->m_capacity + p->m_capacity / 2);
        CRpnData *items = allocItems(capacity);
        if (borrowed) {
            for (int i = 0; i < keep; ++i)
                new (items + i) CRpnData(p->m_items[i]);
        } else {
            // A handle points to nothing of its own, so the cells move to the
            // new block as their bytes; growing here keeps every old cell.
            std::memcpy(static_cast<void *>(items), static_cast<const void *>(p->m_items),
                        sizeof(CRpnData) * std::size_t(keep));
            for (int i = keep; i < p->m_count; ++i)
                p->m_items[i].~CRpnData();
            ::operator delete(p->m_items);
        }
        p->m_items = items;
        p->m_capacity = capacity;
        p->m_flags &= ~RPN_FLAG_BORROWED;
    } else {
        for (int i = keep; i < p->m_count; ++i)
            p->m_items[i].~CRpnData();
    }
    for (int i = keep; i < count; ++i)
        new (p->m_items + i) CRpnData;
    p->m_count = count;
}

void CRpnData::RemoveAt(int i)
{
    if (!IsArray() || i < 0 || i >= m_u.p->m_count)
        return;
    CRpnPayload *p = m_u.p;
    if (p->m_kind == RPN_ARRAY_R) {
        std::memmove(p->m_reals + i, p->m_reals + i + 1, sizeof(double) * std::size_t(p->m_count - i - 1));
        p->m_reals[--p->m_count] = 0.0;
        return;
    }
    // The removed element goes last, so that its payload is freed after the
    // array is consistent again.
    CRpnData removed(std::move(p->m_items[i]));
    for (int k = i; k + 1 < p->m_count; ++k)
        p->m_items[k] = std::move(p->m_items[k + 1]);
    p->m_items[--p->m_count].~CRpnData();
}

// --- dictionaries ------------------------------------------------------------------

CRpnData CRpnData::DictGet(const QString &key) const
{
    CRpnData value;
    if (m_kind == RPN_DICTIONARY && m_u.p->m_map)
        m_u.p->m_map->Lookup(key, value);
    return value;
}

void CRpnData::DictSet(const QString &key, const CRpnData &value)
{
    if (m_kind == RPN_DICTIONARY && m_u.p->m_map)
        m_u.p->m_map->SetAt(key, value);
}

// --- conversions -------------------------------------------------------------------

double CRpnData::doubleOfOther() const
{
    const CRpnData *v = firstOfArrays(this);
    switch (v->m_kind) {
    case RPN_REAL:
        return v->m_u.real;
    case RPN_INT:
        return v->m_u.i;
    case RPN_COMPLEX:
        return v->m_u.p->m_real;
    case RPN_STRING: {
        int consumed = 0;
        return ParseNumber(v->m_u.p->Text(), consumed);
    }
    case RPN_ARRAY_R:
        return v->m_u.p->m_count > 0 ? v->m_u.p->m_reals[0] : 0.0;
    case RPN_ARRAY:
        return 0.0; // an empty one: firstOfArrays went into the others
    case RPN_FORMULA:
        return evaluateFormula(v->m_u.p->m_tree).GetDouble();
    case RPN_POINTER:
        return v->m_u.p->m_pointer ? 1.0 : 0.0;
    case RPN_DOCUMENT:
        return v->m_u.p->m_object ? 1.0 : 0.0;
    default:
        return 0.0;
    }
}

int CRpnData::GetInt() const
{
    const CRpnData *v = firstOfArrays(this);
    switch (v->m_kind) {
    case RPN_INT:
        return v->m_u.i;
    case RPN_REAL:
        return biasedInt(v->m_u.real);
    case RPN_COMPLEX:
        return biasedInt(v->m_u.p->m_real);
    case RPN_STRING:
        return decimalInt(v->m_u.p->Text());
    case RPN_ARRAY_R:
        return v->m_u.p->m_count > 0 ? biasedInt(v->m_u.p->m_reals[0]) : 0;
    case RPN_ARRAY:
        return 0;
    case RPN_FORMULA:
        return evaluateFormula(v->m_u.p->m_tree).GetInt();
    case RPN_POINTER:
        return v->m_u.p->m_pointer ? 1 : 0;
    case RPN_DOCUMENT:
        return v->m_u.p->m_object ? 1 : 0;
    default:
        return 0;
    }
}

double CRpnData::GetDoubleChecked(int &ok) const
{
    ok = 1;
    switch (m_kind) {
    case RPN_REAL:
        return m_u.real;
    case RPN_COMPLEX:
        return m_u.p->m_real;
    case RPN_INT:
        return m_u.i;
    case RPN_STRING: {
        const QString &t = m_u.p->Text();
        int consumed = 0;
        const double v = ParseNumber(t, consumed);
        if (consumed > 0 && consumed == t.size())
            return v;
        break;
    }
    default:
        break;
    }
    ok = 0;
    return 0.0;
}

std::complex<double> CRpnData::GetComplex() const
{
    const CRpnData *v = firstOfArrays(this);
    switch (v->m_kind) {
    case RPN_COMPLEX:
        return {v->m_u.p->m_real, v->m_u.p->m_imag};
    case RPN_REAL:
        return {v->m_u.real, 0.0};
    case RPN_INT:
        return {double(v->m_u.i), 0.0};
    case RPN_STRING: {
        int consumed = 0;
        return ParseComplexText(v->m_u.p->Text(), consumed);
    }
    case RPN_ARRAY_R:
        return {v->m_u.p->m_count > 0 ? v->m_u.p->m_reals[0] : 0.0, 0.0};
    case RPN_ARRAY:
        return {};
    case RPN_FORMULA:
        return evaluateFormula(v->m_u.p->m_tree).GetComplex();
    default:
        return {};
    }
}

std::complex<double> CRpnData::GetComplexChecked(int &ok) const
{
    ok = 1;
    switch (m_kind) {
    case RPN_COMPLEX:
        return {m_u.p->m_real, m_u.p->m_imag};
    case RPN_REAL:
        return {m_u.real, 0.0};
    case RPN_INT:
        return {double(m_u.i), 0.0};
    case RPN_STRING: {
        const QString &t = m_u.p->Text();
        int consumed = 0;
        const std::complex<double> v = ParseComplexText(t, consumed);
        if (consumed > 0 && consumed == t.size())
            return v;
        break;
    }
    default:
        break;
    }
    ok = 0;
    return {};
}

bool CRpnData::IsTrue(bool *wasArray) const
{
    if (wasArray)
        *wasArray = false;
    switch (m_kind) {
    case RPN_NULL:
        return false;
    case RPN_REAL:
        return m_u.real != 0.0;
    case RPN_INT:
        return m_u.i != 0;
    default:
        break;
    }
    const CRpnPayload *p = m_u.p;
    switch (m_kind) {
    case RPN_COMPLEX:
        return p->m_real != 0.0 || p->m_imag != 0.0;
    case RPN_STRING:
        return !p->Text().isEmpty();
    case RPN_ARRAY_R:
        if (wasArray)
            *wasArray = true;
        if (p->m_count == 0)
            return false;
        for (int i = 0; i < p->m_count; ++i) {
            if (p->m_reals[i] == 0.0)
                return false;
        }
        return true;
    case RPN_ARRAY:
        if (wasArray)
            *wasArray = true;
        if (p->m_count == 0)
            return false;
        for (int i = 0; i < p->m_count; ++i) {
            if (p->m_items[i].GetDouble() == 0.0)
                return false;
        }
        return true;
    case RPN_CURVE:
        if (wasArray)
            *wasArray = true;
        return false;
    default:
        return true;
    }
}

// --- names ---------------------------------------------------------------------------

QString CRpnData::KindName(std::uint32_t kind)
{
    switch (kind) {
    case RPN_REAL: return QStringLiteral("REAL");
    case RPN_INT: return QStringLiteral("INT");
    case RPN_STRING: return QStringLiteral("STRING");
    case RPN_POINTER: return QStringLiteral("POINTER");
    case RPN_DOCUMENT: return QStringLiteral("DOCUMENT");
    case RPN_TARNPART: return QStringLiteral("TARNPART");
    case RPN_DICTIONARY: return QStringLiteral("DICTIONARY");
    case RPN_ARRAY_R: return QStringLiteral("ARRAY_R");
    case RPN_ARRAY: return QStringLiteral("ARRAY");
    case RPN_FORMULA: return QStringLiteral("FORMULA");
    case RPN_FUNCTION: return QStringLiteral("FUNCTION");
    case RPN_COMPLEX: return QStringLiteral("COMPLEX");
    case RPN_CURVE: return QStringLiteral("CURVE");
    case RPN_XML: return QStringLiteral("XML");
    default: return QString();
    }
}

QString CRpnData::TypeName(std::uint32_t kind)
{
    switch (kind) {
    case RPN_REAL: return LanguageString(kTextReal);
    case RPN_INT: return LanguageString(kTextInteger);
    case RPN_STRING: return LanguageString(kTextText);
    case RPN_POINTER: return QStringLiteral("Pointer");
    case RPN_DOCUMENT: return QStringLiteral("Document");
    case RPN_TARNPART: return QStringLiteral("Part");
    case RPN_DICTIONARY: return QStringLiteral("Dictionary");
    case RPN_ARRAY_R:
    case RPN_ARRAY: return QStringLiteral("Array");
    case RPN_FORMULA: return QStringLiteral("Formula");
    case RPN_FUNCTION: return QStringLiteral("Function");
    case RPN_COMPLEX: return QStringLiteral("Complex");
    case RPN_CURVE: return QStringLiteral("Graph");
    case RPN_XML: return QStringLiteral("XML");
    default: return LanguageString(kTextEmpty);
    }
}
