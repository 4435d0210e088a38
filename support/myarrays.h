#pragma once
// Plain numeric arrays of a fixed element kind.  The element block is exposed
// on purpose (m_data), counts are signed 32-bit, and CMyDoubleArray can lie over
// memory it does not own.

#include <cstdint>

// Doubles; bit 0 of m_flags says the block is borrowed and is not freed here.
class CMyDoubleArray
{
public:
    enum : int { FlagBorrowed = 1 };

    CMyDoubleArray() = default;
    explicit CMyDoubleArray(int size);                 // zeroed
    CMyDoubleArray(double *data, int size, bool borrowed); // takes over or borrows data
    CMyDoubleArray(const CMyDoubleArray &other);       // a copy always owns
    CMyDoubleArray(CMyDoubleArray &&other) noexcept;
    CMyDoubleArray &operator=(const CMyDoubleArray &other);
    CMyDoubleArray &operator=(CMyDoubleArray &&other) noexcept;
    virtual ~CMyDoubleArray();

    int GetSize() const { return m_size; }
    bool IsEmpty() const { return m_size == 0; }
    bool IsBorrowed() const { return (m_flags & FlagBorrowed) != 0; }
    double *GetData() { return m_data; }
    const double *GetData() const { return m_data; }
    double GetAt(int i) const { return m_data[i]; }
    void SetAt(int i, double v) { m_data[i] = v; }
    double &operator[](int i) { return m_data[i]; }
    double operator[](int i) const { return m_data[i]; }

    // New size; kept elements stay, new ones are zero.  A borrowed block is
    // copied into an owned one first.
    void SetSize(int size);
    // Lies over foreign memory from now on; the old block is released.
    void Borrow(double *data, int size);
    void RemoveAll();

    int m_size = 0;
    double *m_data = nullptr;
    int m_flags = 0;

private:
    void release();
};

// Row-major doubles, rows times columns, zeroed at construction.
class CMyDoubleArray2D
{
public:
    CMyDoubleArray2D() = default;
    CMyDoubleArray2D(int rows, int columns);
    CMyDoubleArray2D(const CMyDoubleArray2D &other);
    CMyDoubleArray2D(CMyDoubleArray2D &&other) noexcept;
    CMyDoubleArray2D &operator=(const CMyDoubleArray2D &other);
    CMyDoubleArray2D &operator=(CMyDoubleArray2D &&other) noexcept;
    virtual ~CMyDoubleArray2D();

    int GetRows() const { return m_rows; }
    int GetColumns() const { return m_columns; }
    double GetAt(int row, int column) const { return m_data[std::int64_t(row) * m_columns + column]; }
    void SetAt(int row, int column, double v) { m_data[std::int64_t(row) * m_columns + column] = v; }
    double *GetData() { return m_data; }
    const double *GetData() const { return m_data; }
    // New shape, all zero.
    void SetSize(int rows, int columns);

    int m_rows = 0;
    int m_columns = 0;
    double *m_data = nullptr;
};

// 32-bit integers; always owns its block.
class CMyIntArray
{
public:
    CMyIntArray() = default;
    explicit CMyIntArray(int size);
    CMyIntArray(const CMyIntArray &other);
    CMyIntArray(CMyIntArray &&other) noexcept;
    CMyIntArray &operator=(const CMyIntArray &other);
    CMyIntArray &operator=(CMyIntArray &&other) noexcept;
    virtual ~CMyIntArray();

    int GetSize() const { return m_size; }
    std::int32_t *GetData() { return m_data; }
    const std::int32_t *GetData() const { return m_data; }
    std::int32_t &operator[](int i) { return m_data[i]; }
    std::int32_t operator[](int i) const { return m_data[i]; }
    void SetSize(int size);

    int m_size = 0;
    std::int32_t *m_data = nullptr;
};

// 64-bit words; always owns its block.
class CMyWord64Array
{
public:
    CMyWord64Array() = default;
    explicit CMyWord64Array(int size);
    CMyWord64Array(const CMyWord64Array &other);
    CMyWord64Array(CMyWord64Array &&other) noexcept;
    CMyWord64Array &operator=(const CMyWord64Array &other);
    CMyWord64Array &operator=(CMyWord64Array &&other) noexcept;
    virtual ~CMyWord64Array();

    int GetSize() const { return m_size; }
    std::uint64_t *GetData() { return m_data; }
    const std::uint64_t *GetData() const { return m_data; }
    std::uint64_t &operator[](int i) { return m_data[i]; }
    std::uint64_t operator[](int i) const { return m_data[i]; }
    void SetSize(int size);

    int m_size = 0;
    std::uint64_t *m_data = nullptr;
};
