// Serialisation of values into a CRpnBuffer.

#include "formula/rpnbuffer.h"

#include "formula/rpndata.h"
#include "formula/rpndictionary.h"
#include "formula/rpnseams.h"
#include "formula/rpnuserfunction.h"

#include <algorithm>

namespace {

void writeValue(CRpnBuffer &b, const CRpnData &v)
{
    std::uint32_t kind = v.GetKind();
    std::uint32_t flags = v.GetFlags() & ~RPN_FLAG_BORROWED;
    b.Transfer(kind);
    b.Transfer(flags);
    // The reader takes no content below its deepest level, so none is
    // written there either: a value nested deeper is saved cut at that level.
    if (b.m_depth >= CRpnBuffer::MaxDepth)
        return;
    switch (kind) {
    case RPN_REAL: {
        double x = v.GetRealValue();
        b.Transfer(x);
        break;
    }
    case RPN_INT: {
        std::int32_t i = v.GetIntValue();
        b.Transfer(i);
        break;
    }
    case RPN_STRING: {
        QString t = v.GetTextValue();
        b.TransferString(t);
        break;
    }
    case RPN_DICTIONARY: {
        const CMapStringToRpnData *map = v.GetDictionary();
        std::int32_t n = map ? map->GetCount() : 0;
        b.Transfer(n);
        ++b.m_depth;
        for (int i = 0; i < n; ++i) {
            QString key = map->GetSpelling(map->GetKeyAt(i));
            b.TransferString(key);
            writeValue(b, map->GetValueAt(i));
        }
        --b.m_depth;
        break;
    }
    case RPN_ARRAY_R: {
        std::int32_t n = v.GetSize();
        b.Transfer(n);
        b.Transfer(v.GetRealData(), int(sizeof(double)) * n);
        break;
    }
    case RPN_ARRAY: {
        std::int32_t n = v.GetSize();
        b.Transfer(n);
        ++b.m_depth;
        for (int i = 0; i < n; ++i)
            writeValue(b, v.GetItems()[i]);
        --b.m_depth;
        break;
    }
    case RPN_FORMULA: {
        CEquationTree *tree = v.GetFormula();
        if (CRpnFormulaSupport *f = GetRpnFormulaSupport())
            f->SerializeTree(tree, b);
        break;
    }
    case RPN_FUNCTION: {
        QString name = v.GetFunction() ? v.GetFunction()->m_name : QString();
        b.TransferString(name);
        break;
    }
    case RPN_COMPLEX: {
        double re = v.GetRealValue(), im = v.GetImagValue();
        b.Transfer(re);
        b.Transfer(im);
        break;
    }
    default:
        break;
    }
}

template <typename T>
T readWord(CRpnBuffer &b)
{
    static_assert(sizeof(T) == 4);
    return T(b.ReadWord());
}

// A count that cannot promise more elements than the bytes left could hold.
int readCount(CRpnBuffer &b, int minBytesEach)
{
    const std::int32_t n = readWord<std::int32_t>(b);
    return std::clamp(n, 0, b.GetRemaining() / minBytesEach);
}

void readValue(CRpnBuffer &b, CRpnData &v)
{
    v.SetNull();
    const std::uint32_t kind = readWord<std::uint32_t>(b);
    // What is read is owned.
    const std::uint32_t flags = readWord<std::uint32_t>(b) & ~RPN_FLAG_BORROWED; // what is read is owned
    if (b.m_depth >= CRpnBuffer::MaxDepth)
        return;
    switch (kind) {
    case RPN_REAL: {
        double x = 0;
        b.Transfer(x);
        v.SetDouble(x);
        v.SetDisplayExponent(int(flags & RPN_FLAG_EXPONENT_MASK));
        break;
    }
    case RPN_INT:
        v.SetInt(readWord<std::int32_t>(b));
        break;
    case RPN_STRING: {
        QString t;
        b.TransferString(t);
        v.SetText(t);
        break;
    }
    case RPN_DICTIONARY: {
        // Each entry takes at least a text length and a value's two words.
        const int n = readCount(b, 12);
        v.SetDictionary();
        ++b.m_depth;
        for (int i = 0; i < n; ++i) {
            QString key;
            b.TransferString(key);
            CRpnData item;
            readValue(b, item);
            v.DictSet(key, item);
        }
        --b.m_depth;
        break;
    }
    case RPN_ARRAY_R: {
        const int n = readCount(b, int(sizeof(double)));
        v.SetRealArray(n);
        b.Transfer(v.GetRealData(), int(sizeof(double)) * n);
        v.SetMatrixFlag((flags & RPN_FLAG_MATRIX) != 0);
        break;
    }
    case RPN_ARRAY: {
        const int n = readCount(b, 8);
        v.SetArray(n);
        ++b.m_depth;
        for (int i = 0; i < n; ++i)
            readValue(b, v.GetItems()[i]);
        --b.m_depth;
        v.SetMatrixFlag((flags & RPN_FLAG_MATRIX) != 0);
        break;
    }
    case RPN_FORMULA: {
        CEquationTree *tree = nullptr;
        if (CRpnFormulaSupport *f = GetRpnFormulaSupport())
            f->SerializeTree(tree, b);
        if (tree)
            v.SetFormula(tree);
        break;
    }
    case RPN_FUNCTION: {
        QString name;
        b.TransferString(name); // the record is not restored
        break;
    }
    case RPN_COMPLEX: {
        double re = 0, im = 0;
        b.Transfer(re);
        b.Transfer(im);
        v.SetComplex(re, im);
        break;
    }
    default:
        // Kinds without content come back empty: their pointers mean
        // nothing in another process.
        break;
    }
}

} // namespace

std::uint32_t CRpnBuffer::ReadWord()
{
    std::uint32_t value = 0;
    if (GetRemaining() >= 4)
        read(&value, 4);
    else
        skip(GetRemaining());
    return value;
}

void CRpnData::Serialize(CRpnBuffer &buffer)
{
    if (buffer.IsWriting())
        writeValue(buffer, *this);
    else if (buffer.IsReading())
        readValue(buffer, *this);
}
