#include "support/bufferio.h"

#include "support/myarrays.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

CBufferIO::CBufferIO(std::uint16_t versionA, std::uint16_t versionB,
                     std::uint16_t versionC, std::uint16_t versionD)
    : m_versionA(versionA), m_versionB(versionB), m_versionC(versionC), m_versionD(versionD)
{
}

CBufferIO::CBufferIO(const CBufferIO &other)
    : m_versionA(other.m_versionA), m_versionB(other.m_versionB),
      m_versionC(other.m_versionC), m_versionD(other.m_versionD),
      m_mode(other.m_mode), m_growBy(other.m_growBy)
{
    if (other.m_length > 0) {
        m_data = static_cast<unsigned char *>(std::malloc(std::size_t(other.m_length)));
        if (!m_data)
            throw std::bad_alloc();
        std::memcpy(m_data, other.m_data, std::size_t(other.m_length));
        m_capacity = m_length = other.m_length;
    }
    m_cursor = m_data + other.GetPosition();
}

CBufferIO &CBufferIO::operator=(const CBufferIO &other)
{
    if (this != &other) {
        CBufferIO copy(other);
        std::swap(m_versionA, copy.m_versionA);
        std::swap(m_versionB, copy.m_versionB);
        std::swap(m_versionC, copy.m_versionC);
        std::swap(m_versionD, copy.m_versionD);
        std::swap(m_mode, copy.m_mode);
        std::swap(m_growBy, copy.m_growBy);
        std::swap(m_capacity, copy.m_capacity);
        std::swap(m_data, copy.m_data);
        std::swap(m_length, copy.m_length);
        std::swap(m_cursor, copy.m_cursor);
    }
    return *this;
}

CBufferIO::~CBufferIO()
{
    std::free(m_data);
}

void CBufferIO::Reset(int mode, int capacity)
{
    m_mode = mode;
    if (capacity > m_capacity) {
        std::free(m_data);
        m_data = static_cast<unsigned char *>(std::malloc(std::size_t(capacity)));
        if (!m_data)
            throw std::bad_alloc();
        m_capacity = capacity;
    }
    m_length = 0;
    m_cursor = m_data;
}

void CBufferIO::Grow(int extra)
{
    // Rounded up to whole steps, and one step more on top.
    const std::int64_t steps = (std::int64_t(std::max(extra, 0)) + m_growBy - 1) / m_growBy;
    const std::int64_t add = steps * m_growBy + m_growBy;
    const std::int64_t capacity = std::int64_t(m_capacity) + add;
    if (capacity > INT32_MAX)
        throw std::bad_alloc();
    const int position = GetPosition();
    auto *p = static_cast<unsigned char *>(std::realloc(m_data, std::size_t(capacity)));
    if (!p)
        throw std::bad_alloc();
    m_data = p;
    m_capacity = int(capacity);
    m_cursor = m_data + position;
}

bool CBufferIO::Seek(int length)
{
    if (length >= 0 && length <= m_capacity) {
        m_cursor = m_data;
        m_length = length;
        return true;
    }
    m_length = m_capacity;
    return false;
}

int CBufferIO::AddZeroes(int n)
{
    if (n > 0) {
        if (m_length + std::int64_t(n) > m_capacity)
            Grow(m_length + n - m_capacity);
        std::memset(m_data + m_length, 0, std::size_t(n));
        m_length += n;
    }
    return m_length;
}

QByteArray CBufferIO::ToByteArray() const
{
    return QByteArray(reinterpret_cast<const char *>(m_data), m_length);
}

void CBufferIO::LoadForReading(const QByteArray &bytes)
{
    Reset(ModeRead, int(bytes.size()));
    if (!bytes.isEmpty())
        std::memcpy(m_data, bytes.constData(), std::size_t(bytes.size()));
    m_length = int(bytes.size());
    m_cursor = m_data;
}

void CBufferIO::write(const void *value, int size)
{
    if (size <= 0)
        return;
    if (m_length + std::int64_t(size) > m_capacity)
        Grow(m_length + size - m_capacity);
    std::memcpy(m_data + m_length, value, std::size_t(size));
    m_length += size;
}

void CBufferIO::read(void *value, int size)
{
    if (size <= 0)
        return;
    const int take = std::clamp(GetRemaining(), 0, size);
    if (take > 0) {
        std::memcpy(value, m_cursor, std::size_t(take));
        m_cursor += take;
    }
    if (take < size)
        std::memset(static_cast<unsigned char *>(value) + take, 0, std::size_t(size - take));
}

void CBufferIO::skip(int size)
{
    m_cursor += std::clamp(GetRemaining(), 0, std::max(size, 0));
}

void CBufferIO::Transfer(void *value, int size)
{
    if (m_mode == ModeWrite)
        write(value, size);
    else if (m_mode == ModeRead)
        read(value, size);
}

int CBufferIO::readCount()
{
    if (GetRemaining() < 4) {
        skip(4);
        return 0;
    }
    std::int32_t n = 0;
    read(&n, 4);
    return std::clamp(n, 0, GetRemaining());
}

void CBufferIO::TransferBlock(CBufferIO &other)
{
    if (m_mode == ModeWrite) {
        std::int32_t n = other.m_length;
        write(&n, 4);
        write(other.m_data, n);
    } else if (m_mode == ModeRead) {
        const int n = readCount();
        other.Reset(ModeWrite, n);
        other.write(m_cursor, n);
        m_cursor += n;
        other.m_mode = ModeRead;
        other.m_cursor = other.m_data;
    }
}

void CBufferIO::TransferBlock(QByteArray &bytes)
{
    if (m_mode == ModeWrite) {
        std::int32_t n = std::int32_t(bytes.size());
        write(&n, 4);
        write(bytes.constData(), n);
    } else if (m_mode == ModeRead) {
        const int n = readCount();
        bytes = QByteArray(reinterpret_cast<const char *>(m_cursor), n);
        m_cursor += n;
    }
}

int CBufferIO::TransferBlock(void *target, int targetSize)
{
    targetSize = std::max(targetSize, 0);
    if (m_mode == ModeWrite) {
        std::int32_t n = targetSize;
        write(&n, 4);
        write(target, n);
        return n;
    }
    if (m_mode != ModeRead)
        return 0;
    const int n = readCount();
    const int take = std::min(n, targetSize);
    read(target, take);
    skip(n - take);
    return n;
}

void CBufferIO::TransferArray(CMyDoubleArray &values)
{
    if (m_mode == ModeWrite) {
        std::int32_t n = values.GetSize();
        write(&n, 4);
        write(values.GetData(), n * int(sizeof(double)));
    } else if (m_mode == ModeRead) {
        std::int32_t n = 0;
        if (GetRemaining() >= 4)
            read(&n, 4);
        else
            skip(4);
        n = std::clamp(n, 0, GetRemaining() / int(sizeof(double)));
        values.SetSize(n);
        read(values.GetData(), n * int(sizeof(double)));
    }
}

bool CBufferIO::oldStringForm() const
{
    return m_versionA < 10 || (m_versionA == 10 && std::int16_t(m_versionB) < 0);
}

void CBufferIO::TransferString(QString &text)
{
    if (m_mode == ModeWrite) {
        if (oldStringForm()) {
            const QByteArray narrow = text.toLocal8Bit();
            std::int16_t n = std::int16_t(std::min<qsizetype>(narrow.size(), INT16_MAX));
            write(&n, 2);
            write(narrow.constData(), n);
        } else {
            std::uint32_t n = std::uint32_t(text.size() * 2 + 2);
            write(&n, 4);
            const std::uint16_t zero = 0;
            write(text.utf16(), int(text.size() * 2));
            write(&zero, 2);
        }
    } else if (m_mode == ModeRead) {
        if (oldStringForm()) {
            std::int16_t n = 0;
            read(&n, 2);
            if (n <= 0 || n > GetRemaining()) {
                text.clear();
                skip(std::max<int>(n, 0));
                return;
            }
            text = QString::fromLocal8Bit(reinterpret_cast<const char *>(m_cursor), n);
            m_cursor += n;
        } else {
            std::uint32_t n = 0;
            read(&n, 4);
            if (n > std::uint32_t(GetRemaining())) {
                // A length that overruns the stream yields an empty string.
                text.clear();
                skip(GetRemaining());
                return;
            }
            // Copied out, since the text need not lie on an even address; the
            // terminator and anything behind an early one are dropped.
            QString all(int(n / 2), Qt::Uninitialized);
            if (!all.isEmpty())
                std::memcpy(all.data(), m_cursor, std::size_t(all.size()) * 2);
            const qsizetype end = all.indexOf(QChar(0));
            text = end < 0 ? all : all.left(end);
            m_cursor += n;
        }
    }
}

void CBufferIO::TransferVersion()
{
    Transfer(m_versionA);
    Transfer(m_versionB);
    Transfer(m_versionC);
    Transfer(m_versionD);
}
