#pragma once
// CGraphColumn: one reference-counted column of a data set, the unit that
// curves, files and exporters hold.  Every value has a validity byte beside
// it: 0 missing, 1 valid, 2 invalid (not a number); code tests the byte for
// equality with 1 before it uses the value.
//
// The arrays have 10 spare entries behind `m_count` so that unrolled readers
// need no tail test.  The value of a row whose byte is not 1 is undefined.
//
// When a data set grows, a column that someone else holds is replaced by a
// new one and released only by reference, so a reader that holds a column
// may keep reading it without the data lock; a column that only the data
// set holds is resized where it lies.

#include <QString>
#include <atomic>
#include <cstdint>

// Optional description of how a column was sampled; written by outside tools
// and carried along.  Bit 16 of m_flags says it is in force; mode 1 means an
// explicit start and step, any other mode a step alone.
class CSamplingInfo
{
public:
    void AddRef() { m_refCount.fetch_add(1, std::memory_order_relaxed); }
    void Release()
    {
        if (m_refCount.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

    std::uint32_t m_flags = 0;
    std::int32_t m_mode = 0;
    double m_start = 0;
    double m_step = 0;

private:
    std::atomic<int> m_refCount{1};
};

// An object attached to a column by its host.  The column deletes it only
// when the column's kind is exactly 2; otherwise the host owns it.
class CGraphColumnHost
{
public:
    virtual ~CGraphColumnHost();
};

class CGraphColumn
{
public:
    // orderFlags
    enum : std::uint32_t {
        OrderAscending = 1,
        OrderDescending = 2,
        OrderEqualNeighbours = 4,
        OrderEvenStep = 8,
        OrderNone = 16,
    };
    // kind bits
    enum : std::uint32_t {
        KindLog = 1,
        KindSpectrum = 4,
        KindDb = 8,
        KindComponentMask = 0xF0,
        KindLimitFrequency = 0x1000,
        KindLimitLevel = 0x2000,
    };
    // attrFlags
    enum : std::uint32_t { AttrThinned = 0x10000 };

    // A column of `count` rows (no arrays when count is below 1), all
    // values 0 and all rows missing, holding one reference.  Throws
    // std::bad_alloc when memory runs out.
    static CGraphColumn *Create(int count, const QString &name = QString());
    // The same without clearing the rows (only the spare entries past the
    // end are cleared), for a writer that fills every row before anyone
    // reads the column: clearing a reused block costs a pass over it.
    static CGraphColumn *CreateUnfilled(int count, const QString &name = QString());

    void AddRef() { m_refCount.fetch_add(1, std::memory_order_relaxed); }
    void Release();
    int RefCount() const { return m_refCount.load(std::memory_order_relaxed); }

    // Name, kind, attributes, id, sampling, extents and order of `other`;
    // not its rows.
    void CopySettingsFrom(const CGraphColumn &other);
    void SetSampling(CSamplingInfo *sampling); // adds a reference

    std::int32_t m_count = 0;
    double *m_values = nullptr;
    std::uint8_t *m_valid = nullptr;
    double m_minValue = 0;
    double m_maxValue = 0;
    std::uint32_t m_orderFlags = 0;
    std::uint32_t m_kind = 0;
    QString m_name;
    CGraphColumnHost *m_hostObject = nullptr;
    std::uint32_t m_attrFlags = 0;
    std::uint32_t m_attrValue = 0;
    double m_minStep = 0;
    std::uint32_t m_evenStep = 0;
    std::uint32_t m_hasInvalid = 0;
    std::uint64_t m_id = 0;
    CSamplingInfo *m_sampling = nullptr;

private:
    CGraphColumn() = default;
    ~CGraphColumn();
    CGraphColumn(const CGraphColumn &) = delete;
    CGraphColumn &operator=(const CGraphColumn &) = delete;

    // Counted atomically, so that a reader that drops its snapshot outside
    // the data lock cannot corrupt the count.
    std::atomic<int> m_refCount{1};
};

// Holds one reference to a column.
class CGraphColumnPtr
{
public:
    CGraphColumnPtr() = default;
    // Takes over a reference the caller already holds (as from Create).
    static CGraphColumnPtr Adopt(CGraphColumn *column)
    {
        CGraphColumnPtr p;
        p.m_column = column;
        return p;
    }
    // Adds a reference of its own.
    explicit CGraphColumnPtr(CGraphColumn *column) : m_column(column)
    {
        if (m_column)
            m_column->AddRef();
    }
    CGraphColumnPtr(const CGraphColumnPtr &other) : CGraphColumnPtr(other.m_column) {}
    CGraphColumnPtr(CGraphColumnPtr &&other) noexcept : m_column(other.m_column) { other.m_column = nullptr; }
    CGraphColumnPtr &operator=(const CGraphColumnPtr &other)
    {
        CGraphColumnPtr copy(other);
        std::swap(m_column, copy.m_column);
        return *this;
    }
    CGraphColumnPtr &operator=(CGraphColumnPtr &&other) noexcept
    {
        std::swap(m_column, other.m_column);
        return *this;
    }
    ~CGraphColumnPtr() { reset(); }

    void reset()
    {
        if (m_column) {
            m_column->Release();
            m_column = nullptr;
        }
    }
    CGraphColumn *Get() const { return m_column; }
    CGraphColumn *operator->() const { return m_column; }
    CGraphColumn &operator*() const { return *m_column; }
    explicit operator bool() const { return m_column != nullptr; }

private:
    CGraphColumn *m_column = nullptr;
};

// Gives a column without an id the next id of the program-wide sequence
// (see AssignIds in graphdata.h); an id once given never changes.
void AssignColumnId(CGraphColumn *column);
