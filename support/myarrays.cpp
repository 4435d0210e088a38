#include "support/myarrays.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace {

// Element count to byte count.  A count that cannot be honoured (negative, or
// a product that would overflow) fails as the allocator would fail for the
// largest size: with std::bad_alloc.
template <typename T>
std::size_t byteCount(std::int64_t count)
{
    if (count < 0 || std::uint64_t(count) > std::numeric_limits<std::size_t>::max() / sizeof(T))
        throw std::bad_alloc();
    return std::size_t(count) * sizeof(T);
}

template <typename T>
T *allocZeroed(std::int64_t count)
{
    if (count == 0)
        return nullptr;
    const std::size_t bytes = byteCount<T>(count);
    T *p = static_cast<T *>(::operator new(bytes));
    std::memset(p, 0, bytes);
    return p;
}

template <typename T>
void freeBlock(T *p)
{
    ::operator delete(p);
}

// Copy of the first `keep` elements into a new zeroed block of `size`.
template <typename T>
T *resized(const T *old, int oldSize, int size)
{
    T *p = allocZeroed<T>(size);
    const int keep = std::min(oldSize, size);
    if (keep > 0)
        std::memcpy(p, old, std::size_t(keep) * sizeof(T));
    return p;
}

} // namespace

// ---- CMyDoubleArray -------------------------------------------------------

CMyDoubleArray::CMyDoubleArray(int size)
    : m_size(size), m_data(allocZeroed<double>(size))
{
}

CMyDoubleArray::CMyDoubleArray(double *data, int size, bool borrowed)
    : m_size(size), m_data(data), m_flags(borrowed ? FlagBorrowed : 0)
{
}

CMyDoubleArray::CMyDoubleArray(const CMyDoubleArray &other)
    : m_size(other.m_size), m_data(resized(other.m_data, other.m_size, other.m_size))
{
}

CMyDoubleArray::CMyDoubleArray(CMyDoubleArray &&other) noexcept
    : m_size(std::exchange(other.m_size, 0)),
      m_data(std::exchange(other.m_data, nullptr)),
      m_flags(std::exchange(other.m_flags, 0))
{
}

CMyDoubleArray &CMyDoubleArray::operator=(const CMyDoubleArray &other)
{
    if (this != &other) {
        double *p = resized(other.m_data, other.m_size, other.m_size);
        release();
        m_data = p;
        m_size = other.m_size;
        m_flags = 0;
    }
    return *this;
}

CMyDoubleArray &CMyDoubleArray::operator=(CMyDoubleArray &&other) noexcept
{
    if (this != &other) {
        release();
        m_size = std::exchange(other.m_size, 0);
        m_data = std::exchange(other.m_data, nullptr);
        m_flags = std::exchange(other.m_flags, 0);
    }
    return *this;
}

CMyDoubleArray::~CMyDoubleArray()
{
    release();
}

void CMyDoubleArray::release()
{
    if (!(m_flags & FlagBorrowed))
        freeBlock(m_data);
    m_data = nullptr;
    m_size = 0;
    m_flags = 0;
}

void CMyDoubleArray::SetSize(int size)
{
    if (size == m_size && !IsBorrowed())
        return;
    double *p = resized(m_data, m_size, size);
    release();
    m_data = p;
    m_size = size;
}

void CMyDoubleArray::Borrow(double *data, int size)
{
    release();
    m_data = data;
    m_size = size;
    m_flags = FlagBorrowed;
}

void CMyDoubleArray::RemoveAll()
{
    release();
}

// ---- CMyDoubleArray2D -----------------------------------------------------

CMyDoubleArray2D::CMyDoubleArray2D(int rows, int columns)
    : m_rows(rows), m_columns(columns),
      m_data(allocZeroed<double>(std::int64_t(rows) * columns))
{
}

CMyDoubleArray2D::CMyDoubleArray2D(const CMyDoubleArray2D &other)
    : m_rows(other.m_rows), m_columns(other.m_columns)
{
    const std::int64_t n = std::int64_t(m_rows) * m_columns;
    m_data = allocZeroed<double>(n);
    if (n > 0)
        std::memcpy(m_data, other.m_data, std::size_t(n) * sizeof(double));
}

CMyDoubleArray2D::CMyDoubleArray2D(CMyDoubleArray2D &&other) noexcept
    : m_rows(std::exchange(other.m_rows, 0)),
      m_columns(std::exchange(other.m_columns, 0)),
      m_data(std::exchange(other.m_data, nullptr))
{
}

CMyDoubleArray2D &CMyDoubleArray2D::operator=(const CMyDoubleArray2D &other)
{
    if (this != &other) {
        CMyDoubleArray2D copy(other);
        *this = std::move(copy);
    }
    return *this;
}

CMyDoubleArray2D &CMyDoubleArray2D::operator=(CMyDoubleArray2D &&other) noexcept
{
    if (this != &other) {
        freeBlock(m_data);
        m_rows = std::exchange(other.m_rows, 0);
        m_columns = std::exchange(other.m_columns, 0);
        m_data = std::exchange(other.m_data, nullptr);
    }
    return *this;
}

CMyDoubleArray2D::~CMyDoubleArray2D()
{
    freeBlock(m_data);
}

void CMyDoubleArray2D::SetSize(int rows, int columns)
{
    double *p = allocZeroed<double>(std::int64_t(rows) * columns);
    freeBlock(m_data);
    m_data = p;
    m_rows = rows;
    m_columns = columns;
}

// ---- CMyIntArray and CMyWord64Array ---------------------------------------

#define TARN_OWNED_ARRAY(Class, T)                                              \
    Class::Class(int size) : m_size(size), m_data(allocZeroed<T>(size)) {}      \
    Class::Class(const Class &other)                                            \
        : m_size(other.m_size), m_data(resized(other.m_data, other.m_size, other.m_size)) {} \
    Class::Class(Class &&other) noexcept                                        \
        : m_size(std::exchange(other.m_size, 0)), m_data(std::exchange(other.m_data, nullptr)) {} \
    Class &Class::operator=(const Class &other)                                 \
    {                                                                           \
        if (this != &other) {                                                   \
            T *p = resized(other.m_data, other.m_size, other.m_size);           \
            freeBlock(m_data);                                                  \
            m_data = p;                                                         \
            m_size = other.m_size;                                              \
        }                                                                       \
        return *this;                                                           \
    }                                                                           \
    Class &Class::operator=(Class &&other) noexcept                             \
    {                                                                           \
        if (this != &other) {                                                   \
            freeBlock(m_data);                                                  \
            m_size = std::exchange(other.m_size, 0);                            \
            m_data = std::exchange(other.m_data, nullptr);                      \
        }                                                                       \
        return *this;                                                           \
    }                                                                           \
    Class::~Class() { freeBlock(m_data); }                                      \
    void Class::SetSize(int size)                                               \
    {                                                                           \
        if (size == m_size)                                                     \
            return;                                                             \
        T *p = resized(m_data, m_size, size);                                   \
        freeBlock(m_data);                                                      \
        m_data = p;                                                             \
        m_size = size;                                                          \
    }

TARN_OWNED_ARRAY(CMyIntArray, std::int32_t)
TARN_OWNED_ARRAY(CMyWord64Array, std::uint64_t)

#undef TARN_OWNED_ARRAY
