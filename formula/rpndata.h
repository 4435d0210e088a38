#pragma once
// CRpnData: the one value type of the formula language.
//
// A value is a handle of two words.  Null, REAL and INT live in the handle
// itself, so numbers cost no allocation and an array of numbers 16 bytes a
// cell.  Every other kind is a pointer onto a shared payload with a plain
// (non-atomic) reference count.  Copying a handle shares the payload; a value
// may therefore only be shared inside one thread.  Setters detach: they drop
// the old payload and take a fresh one, so other handles keep the old value.
// Changes made through the payload (SetAt, Resize, DictSet, ...) are seen by
// every handle that shares it; deep copies are explicit.
//
// Payloads come from a per-thread free list (rpnpool.cpp), never from the
// general allocator one by one.  A payload freed on another thread than the
// one that made it goes to that other thread's list, which is fine because
// payload blocks are never handed back to the system.

#include "formula/rpnkinds.h"

#include <QString>
#include <complex>
#include <cstdint>
#include <cstring>
#include <new>

// Under AddressSanitizer a payload on a free list is poisoned, so that a use
// after the last handle let go of it is still reported although the memory
// stays with the pool.
#if defined(__SANITIZE_ADDRESS__)
#define RPN_POOL_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define RPN_POOL_ASAN 1
#endif
#endif
#ifdef RPN_POOL_ASAN
#include <sanitizer/asan_interface.h>
#define RPN_POOL_POISON(p) ASAN_POISON_MEMORY_REGION((p), sizeof(CRpnPayload))
#define RPN_POOL_UNPOISON(p) ASAN_UNPOISON_MEMORY_REGION((p), sizeof(CRpnPayload))
#else
#define RPN_POOL_POISON(p) ((void)(p))
#define RPN_POOL_UNPOISON(p) ((void)(p))
#endif

class CMapStringToRpnData;
class CRpnBuffer;
class CRpnObject;
class CRpnUserFunction;
class CEquationTree;
class CXmlElement;
class CRpnData;

// The shared record behind one or more handles.
struct CRpnPayload
{
    std::uint32_t m_kind;
    // RPN_FLAG_MATRIX; RPN_FLAG_BORROWED: the pointed-to object is not freed
    // with the payload.
    std::uint32_t m_flags;
    std::int32_t m_count;    // elements of ARRAY and ARRAY_R
    std::int32_t m_refs;
    union {
        double m_real;        // real part of COMPLEX
        void *m_pointer;      // POINTER, TARNPART
        double *m_reals;      // ARRAY_R: room for m_capacity + 1 doubles
        CRpnData *m_items;    // ARRAY: room for m_capacity handles
        CMapStringToRpnData *m_map;
        CEquationTree *m_tree;
        CRpnUserFunction *m_function;
        CRpnObject *m_object; // DOCUMENT, CURVE, table, lookup table
        CXmlElement *m_xml;
    };
    double m_imag;           // imaginary part of COMPLEX
    std::int32_t m_capacity; // elements the array block has room for
    std::int32_t m_reserved;
    // STRING: the text, constructed in place.
    alignas(QString) unsigned char m_textStorage[sizeof(QString)];

    QString &Text() { return *std::launder(reinterpret_cast<QString *>(m_textStorage)); }
    const QString &Text() const { return *std::launder(reinterpret_cast<const QString *>(m_textStorage)); }
};

namespace RpnPool {
struct FreeNode
{
    FreeNode *next;
};
struct ThreadCache
{
    FreeNode *head;
    int count;
    bool ended; // the thread's list was handed over at thread exit
};
// The calling thread's free list.  Trivial and constant-initialised, so that
// reaching it costs no initialisation check.
extern constinit thread_local ThreadCache t_cache;

// The slow paths, in rpnpool.cpp.
CRpnPayload *Refill();
// Destroys what the payload owns.  Values nested in it are freed without
// recursion: while one payload is being destroyed, others that reach no
// handle on the way are queued and destroyed after it, and then this returns
// false for them (they go to the free list when their turn comes).
bool DestroyContent(CRpnPayload *payload);
void GiveBackShared(CRpnPayload *payload);

// A payload from the calling thread's free list, uninitialised.
inline CRpnPayload *Take()
{
    ThreadCache &c = t_cache;
    if (FreeNode *n = c.head) {
        RPN_POOL_UNPOISON(n);
        c.head = n->next;
        --c.count;
        return reinterpret_cast<CRpnPayload *>(n);
    }
    return Refill();
}

// Destroys what the payload owns and returns it to the free list.
inline void Free(CRpnPayload *payload)
{
    // Null, numbers and complex numbers own nothing.
    const std::uint32_t kind = payload->m_kind;
    if (kind > RPN_INT && kind != RPN_COMPLEX && !DestroyContent(payload))
        return;
    ThreadCache &c = t_cache;
    if (c.ended) {
        GiveBackShared(payload);
        return;
    }
    auto *n = reinterpret_cast<FreeNode *>(payload);
    n->next = c.head;
    RPN_POOL_POISON(n);
    c.head = n;
    ++c.count;
}

// Payload blocks held by the calling thread's free list (for tests).
inline int FreeCount()
{
    return t_cache.count;
}
} // namespace RpnPool

// A double as an integer the language's way: 0.01 toward the sign, then
// truncated; out of the 32-bit range saturates, NaN gives 0.  This is the
// rounding of every index and integer argument.
int RpnBiasedInt(double x);

// The longest text GetText and FormatValue make, in characters; a longer one
// is cut there and ends with "...".  (A value may share its parts: 30 levels
// of {a, a} hold 2^30 elements, which no text could show.)
inline constexpr qsizetype RpnMaxTextLength = qsizetype(1) << 24;

// Result of CRpnData::Equals when the operator node has to compare element by element.
inline constexpr int RPN_NOT_DECIDED = -1;

class CRpnData
{
public:
    CRpnData() : m_kind(RPN_NULL), m_flags(0) { m_u.p = nullptr; }
    explicit CRpnData(int value) : m_kind(RPN_INT), m_flags(0)
    {
        m_u.p = nullptr;
        m_u.i = value;
    }
    explicit CRpnData(double value) : m_kind(RPN_REAL), m_flags(0) { m_u.real = value; }
    explicit CRpnData(std::complex<double> value) : m_kind(RPN_COMPLEX), m_flags(0)
    {
        m_u.p = makePayload(RPN_COMPLEX);
        m_u.p->m_real = value.real();
        m_u.p->m_imag = value.imag();
    }
    explicit CRpnData(const QString &text);
    explicit CRpnData(QString &&text);
    // Counts the element unless it is the shared empty element.
    explicit CRpnData(CXmlElement *element);

    CRpnData(const CRpnData &other) : m_u(other.m_u), m_kind(other.m_kind), m_flags(other.m_flags)
    {
        if (boxed(m_kind))
            ++m_u.p->m_refs;
    }
    // Leaves `other` empty.
    CRpnData(CRpnData &&other) noexcept : m_u(other.m_u), m_kind(other.m_kind), m_flags(other.m_flags)
    {
        other.clear();
    }
    ~CRpnData()
    {
        if (boxed(m_kind))
            release(m_u.p);
    }

    // Shares the right side's payload.
    CRpnData &operator=(const CRpnData &other)
    {
        if (boxed(other.m_kind))
            ++other.m_u.p->m_refs;
        CRpnPayload *old = boxed(m_kind) ? m_u.p : nullptr;
        m_u = other.m_u;
        m_kind = other.m_kind;
        m_flags = other.m_flags;
        if (old)
            release(old);
        return *this;
    }
    CRpnData &operator=(CRpnData &&other) noexcept
    {
        if (this != &other) {
            CRpnPayload *old = boxed(m_kind) ? m_u.p : nullptr;
            m_u = other.m_u;
            m_kind = other.m_kind;
            m_flags = other.m_flags;
            other.clear();
            if (old)
                release(old);
        }
        return *this;
    }

    // --- kind and flags ------------------------------------------------------
    std::uint32_t GetKind() const { return m_kind; }
    std::uint32_t GetFlags() const { return boxed(m_kind) ? m_u.p->m_flags : m_flags; }
    // Handles that share the payload; 1 for the kinds held in the handle.
    int GetRefs() const { return boxed(m_kind) ? m_u.p->m_refs : 1; }
    bool IsNull() const { return m_kind == RPN_NULL; }
    bool IsReal() const { return m_kind == RPN_REAL; }
    bool IsInt() const { return m_kind == RPN_INT; }
    bool IsString() const { return m_kind == RPN_STRING; }
    bool IsComplex() const { return m_kind == RPN_COMPLEX; }
    bool IsDictionary() const { return m_kind == RPN_DICTIONARY; }
    bool IsFormula() const { return m_kind == RPN_FORMULA; }
    bool IsXml() const { return m_kind == RPN_XML; }
    // ARRAY or ARRAY_R.
    bool IsArray() const { return m_kind == RPN_ARRAY || m_kind == RPN_ARRAY_R; }
    // ARRAY, ARRAY_R or CURVE: the kinds that arithmetic treats as arrays.
    bool IsArrayOrCurve() const { return IsArray() || m_kind == RPN_CURVE; }
    bool IsMatrix() const { return IsArray() && (m_u.p->m_flags & RPN_FLAG_MATRIX) != 0; }
    // Same payload; for the kinds held in the handle, the same kind and bits.
    bool IsSameAs(const CRpnData &other) const
    {
        if (m_kind != other.m_kind)
            return false;
        switch (m_kind) {
        case RPN_NULL: return true;
        case RPN_INT: return m_u.i == other.m_u.i;
        case RPN_REAL: return std::memcmp(&m_u.real, &other.m_u.real, sizeof(double)) == 0;
        default: return m_u.p == other.m_u.p;
        }
    }

    // What IsSameAs compares, as a number to go with the kind: the payload's
    // address, or for the kinds held in the handle the bits of the number.
    std::uint64_t GetIdentity() const
    {
        switch (m_kind) {
        case RPN_NULL: return 0;
        case RPN_INT: return std::uint32_t(m_u.i);
        case RPN_REAL: {
            std::uint64_t bits;
            std::memcpy(&bits, &m_u.real, sizeof bits);
            return bits;
        }
        default: return reinterpret_cast<std::uintptr_t>(m_u.p);
        }
    }

    // The display exponent of a REAL, from the engineering suffix it was written with.
    int GetDisplayExponent() const { return std::int8_t(GetFlags() & RPN_FLAG_EXPONENT_MASK); }
    void SetDisplayExponent(int exponent);
    void SetMatrixFlag(bool on);

    // --- setters: each detaches from the old payload ---------------------------
    void SetNull()
    {
        CRpnPayload *old = boxed(m_kind) ? m_u.p : nullptr;
        clear();
        if (old)
            release(old);
    }
    void SetInt(int value)
    {
        CRpnPayload *old = boxed(m_kind) ? m_u.p : nullptr;
        m_u.p = nullptr;
        m_u.i = value;
        m_kind = RPN_INT;
        m_flags = 0;
        if (old)
            release(old);
    }
    void SetDouble(double value)
    {
        // Numbers live in the handle itself: setting one takes no payload.
        CRpnPayload *old = boxed(m_kind) ? m_u.p : nullptr;
        m_u.real = value;
        m_kind = RPN_REAL;
        m_flags = 0;
        if (old)
            release(old);
    }
    void SetComplex(std::complex<double> value);
    void SetComplex(double re, double im) { SetComplex({re, im}); }
    void SetText(const QString &text);
    // Takes the text over: a text just made moves in without a count taken and given back.
    void SetText(QString &&text);
    void SetText(const char *narrow); // widened from UTF-8
    void SetXml(CXmlElement *element);
    void SetTable(CRpnObject *table);
    // Owns `table`, an object of the host that Lookup_table interpolates in.
    void SetLookupTable(CRpnObject *table);
    void SetFormula(CEquationTree *tree);
    void SetFormulaBorrowed(CEquationTree *tree);
    void SetFunction(CRpnUserFunction *function);
    void SetDictionary();
    void SetArray(int count);
    void SetRealArray(int count);
    void SetMatrix(int rows, int cols);
    void SetPointer(void *pointer);
    void SetDocument(CRpnObject *document);
    void SetPart(void *part);
    void SetCurve(CRpnObject *curve);

    // --- direct access ---------------------------------------------------------
    // Each reads what the value holds when it is of the kind named, and gives
    // 0, the empty text or a null pointer for any other kind, so that a caller
    // that did not test the kind first gets nothing rather than a number's
    // bits read as an address.
    // REAL, or the real part of COMPLEX.
    double GetRealValue() const
    {
        return m_kind == RPN_REAL ? m_u.real : m_kind == RPN_COMPLEX ? m_u.p->m_real : 0.0;
    }
    int GetIntValue() const { return m_kind == RPN_INT ? m_u.i : 0; }
    double GetImagValue() const { return m_kind == RPN_COMPLEX ? m_u.p->m_imag : 0.0; }
    const QString &GetTextValue() const { return m_kind == RPN_STRING ? m_u.p->Text() : emptyText(); }
    // Appends to a STRING that no other handle shares; false (and nothing
    // done) for any other value.
    bool AppendText(const QString &tail)
    {
        if (m_kind != RPN_STRING || m_u.p->m_refs != 1 || (m_u.p->m_flags & RPN_FLAG_BORROWED))
            return false;
        m_u.p->Text().append(tail);
        return true;
    }
    // Appends a STRING that no other handle shares to itself (`s += s`);
    // false (and nothing done) for any other value.
    bool AppendOwnText()
    {
        if (m_kind != RPN_STRING || m_u.p->m_refs != 1 || (m_u.p->m_flags & RPN_FLAG_BORROWED))
            return false;
        QString &text = m_u.p->Text();
        text.append(text); // QString appends a range of itself safely
        return true;
    }
    double *GetRealData() const { return m_kind == RPN_ARRAY_R ? m_u.p->m_reals : nullptr; }
    // The number of a REAL where it lies in the handle (null for other
    // kinds), for code that steps it many times while it stays a REAL.
    double *RealPlace() { return m_kind == RPN_REAL ? &m_u.real : nullptr; }
    CRpnData *GetItems() const { return m_kind == RPN_ARRAY ? m_u.p->m_items : nullptr; }
    CMapStringToRpnData *GetDictionary() const { return m_kind == RPN_DICTIONARY ? m_u.p->m_map : nullptr; }
    CEquationTree *GetFormula() const { return m_kind == RPN_FORMULA ? m_u.p->m_tree : nullptr; }
    CRpnUserFunction *GetFunction() const { return m_kind == RPN_FUNCTION ? m_u.p->m_function : nullptr; }
    // DOCUMENT, CURVE, table and lookup table.
    CRpnObject *GetObject() const
    {
        switch (m_kind) {
        case RPN_DOCUMENT:
        case RPN_CURVE:
        case RPN_TABLE:
        case RPN_LOOKUP_TABLE: return m_u.p->m_object;
        default: return nullptr;
        }
    }
    CXmlElement *GetXml() const { return m_kind == RPN_XML ? m_u.p->m_xml : nullptr; }
    // POINTER, TARNPART, and the object of a DOCUMENT.
    void *GetPointer() const
    {
        switch (m_kind) {
        case RPN_POINTER:
        case RPN_TARNPART:
        case RPN_DOCUMENT: return m_u.p->m_pointer;
        default: return nullptr;
        }
    }

    // --- arrays ------------------------------------------------------------------
    // Elements of ARRAY and ARRAY_R; 0 for every other kind.
    int GetSize() const { return IsArray() ? m_u.p->m_count : 0; }
    // Out of range, or no array: the value itself.  ARRAY_R gives a fresh REAL.
    CRpnData GetAt(int i) const;
    // Ignored out of range; ARRAY_R stores GetDouble of the value.
    void SetAt(int i, const CRpnData &value);
    void SetRealAt(int i, double x);
    void Resize(int count);
    void RemoveAt(int i);

    // --- dictionaries ------------------------------------------------------------
    CRpnData DictGet(const QString &key) const;
    void DictSet(const QString &key, const CRpnData &value);

    // --- conversions ---------------------------------------------------------------
    double GetDouble() const
    {
        if (m_kind == RPN_REAL)
            return m_u.real;
        return doubleOfOther();
    }
    // Reals are biased by 0.01 toward their sign and truncated: 2.995 gives 3,
    // 2.98 gives 2.  Out of the 32-bit range saturates, NaN gives 0.
    int GetInt() const;
    double GetDoubleChecked(int &ok) const;
    std::complex<double> GetComplex() const;
    std::complex<double> GetComplexChecked(int &ok) const;
    // The value's text under the RPN_TEXT_* flags; the low byte is the precision.
    QString GetText(std::uint32_t flags = 0) const;
    // The print form under a dictionary of options (rpnformat.cpp).
    QString FormatValue(const CMapStringToRpnData &options, int depth = 0) const;
    // Truth of a condition.  `wasArray` is set when the value is an array or curve.
    bool IsTrue(bool *wasArray = nullptr) const;

    // --- copies --------------------------------------------------------------------
    void DeepCopy(const CRpnData &from);
    // True when this value is one of the `count` containers, or holds one
    // of them at some depth through arrays and dictionaries.  A value put
    // into a container that it holds would come to hold itself, which no
    // walk over it could finish: those who store into a container in place
    // store a copy of such a value (rpncopy.cpp).
    bool HoldsAny(const CRpnData *const *containers, std::size_t count) const;
    bool Holds(const CRpnData &container) const
    {
        const CRpnData *one = &container;
        return HoldsAny(&one, 1);
    }
    // The language's Copy(value, start, count): see rpncopy.cpp.
    void CopyRange(const CRpnData &from, int start, int length);

    // --- arithmetic (rpnarith.cpp) --------------------------------------------------
    // Each returns a new value; the operands may be shared and stay unchanged.
    // Two REALs take the short way here; everything else goes to Arithmetic.
    static CRpnData Add(const CRpnData &a, const CRpnData &b)
    {
        if (a.m_kind == RPN_REAL && b.m_kind == RPN_REAL)
            return CRpnData(a.m_u.real + b.m_u.real);
        return Arithmetic('+', a, b);
    }
    static CRpnData Subtract(const CRpnData &a, const CRpnData &b)
    {
        if (a.m_kind == RPN_REAL && b.m_kind == RPN_REAL)
            return CRpnData(a.m_u.real - b.m_u.real);
        return Arithmetic('-', a, b);
    }
    static CRpnData Multiply(const CRpnData &a, const CRpnData &b)
    {
        if (a.m_kind == RPN_REAL && b.m_kind == RPN_REAL)
            return CRpnData(a.m_u.real * b.m_u.real);
        return Arithmetic('*', a, b);
    }
    static CRpnData Divide(const CRpnData &a, const CRpnData &b)
    {
        if (a.m_kind == RPN_REAL && b.m_kind == RPN_REAL)
            return CRpnData(a.m_u.real / b.m_u.real);
        return Arithmetic('/', a, b);
    }
    static CRpnData Remainder(const CRpnData &a, const CRpnData &b) { return Arithmetic('%', a, b); }
    // `op` is one of '+', '-', '*', '/', '%'; any other gives the null value.
    static CRpnData Arithmetic(int op, const CRpnData &a, const CRpnData &b);
    // 1 equal, 0 not equal, or RPN_NOT_DECIDED when an array or curve takes part.
    static int Equals(const CRpnData &a, const CRpnData &b)
    {
        if (a.m_kind == RPN_REAL && b.m_kind == RPN_REAL)
            return a.m_u.real == b.m_u.real ? 1 : 0;
        return equalsByRules(a, b);
    }

    // --- names --------------------------------------------------------------------
    // "REAL", "INT", ...; the empty text for null, table and unknown kinds.
    static QString KindName(std::uint32_t kind);
    // The name a person reads: "Real", "Array", "Graph", ...
    static QString TypeName(std::uint32_t kind);

    // Writes or reads the value after the buffer's mode (rpnbuffer.cpp).
    void Serialize(CRpnBuffer &buffer);

private:
    // Null, REAL and INT are held in the handle itself (a REAL's display
    // exponent in m_flags); every other kind in a payload that m_u.p points
    // to, whose kind m_kind repeats and whose flags are the value's.
    union Cell {
        CRpnPayload *p;
        double real;
        std::int32_t i;
    };
    static bool boxed(std::uint32_t kind) { return kind > RPN_INT; }

    void clear()
    {
        m_u.p = nullptr;
        m_kind = RPN_NULL;
        m_flags = 0;
    }
    double doubleOfOther() const;
    static const QString &emptyText();
    static int equalsByRules(const CRpnData &a, const CRpnData &b);
    // GetText of a value that holds no other values (rpnformat.cpp).
    QString plainText(std::uint32_t flags) const;
    static CRpnPayload *makePayload(std::uint32_t kind)
    {
        CRpnPayload *p = RpnPool::Take();
        p->m_kind = kind;
        p->m_flags = 0;
        p->m_count = 0;
        p->m_refs = 1;
        p->m_real = 0.0;
        p->m_imag = 0.0;
        p->m_capacity = 0;
        return p;
    }
    static void release(CRpnPayload *p)
    {
        if (--p->m_refs == 0)
            RpnPool::Free(p);
    }
    // Drops the old value and takes a fresh payload of `kind` (not null, REAL or INT).
    CRpnPayload *reset(std::uint32_t kind)
    {
        CRpnPayload *old = boxed(m_kind) ? m_u.p : nullptr;
        m_u.p = makePayload(kind);
        m_kind = kind;
        m_flags = 0;
        if (old)
            release(old);
        return m_u.p;
    }
    // The payload of a boxed value.
    CRpnPayload *payload() const { return m_u.p; }
    friend class CRpnDataAccess;

    Cell m_u;
    std::uint32_t m_kind;
    std::uint32_t m_flags;
};

// Helpers shared by the value's own source files.
class CRpnDataAccess
{
public:
    // The payload of a value of a kind that has one (not null, REAL or INT).
    static CRpnPayload *Payload(const CRpnData &v) { return v.m_u.p; }
    static CRpnPayload *Reset(CRpnData &v, std::uint32_t kind) { return v.reset(kind); }
};

// `count` empty values, on the stack when there are at most N of them, for
// the arguments of a call or the statements of a short block.
template <int N>
class CRpnLocalValues
{
public:
    explicit CRpnLocalValues(int count) : m_count(count < 0 ? 0 : count)
    {
        m_items = m_count <= N ? reinterpret_cast<CRpnData *>(m_inline)
                               : static_cast<CRpnData *>(::operator new(sizeof(CRpnData) * std::size_t(m_count)));
        for (int i = 0; i < m_count; ++i)
            new (m_items + i) CRpnData;
    }
    ~CRpnLocalValues()
    {
        for (int i = 0; i < m_count; ++i)
            m_items[i].~CRpnData();
        if (m_count > N)
            ::operator delete(m_items);
    }
    CRpnLocalValues(const CRpnLocalValues &) = delete;
    CRpnLocalValues &operator=(const CRpnLocalValues &) = delete;

    int size() const { return m_count; }
    CRpnData &operator[](int i) { return m_items[i]; }

private:
    alignas(CRpnData) unsigned char m_inline[N * sizeof(CRpnData)];
    CRpnData *m_items;
    int m_count;
};
