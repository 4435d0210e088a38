#include "support/bytebuffers.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

CGrowBuffer::CGrowBuffer(int size)
{
    if (size >= 1)
        Reserve(size);
}

CGrowBuffer::~CGrowBuffer()
{
    std::free(m_data);
}

unsigned char *CGrowBuffer::Reserve(int size)
{
    if (size <= m_capacity)
        return m_data;
    auto *p = static_cast<unsigned char *>(std::malloc(std::size_t(size)));
    if (!p)
        throw std::bad_alloc();
    if (m_capacity > 0)
        std::memcpy(p, m_data, std::size_t(m_capacity));
    std::free(m_data);
    m_data = p;
    m_capacity = size;
    return m_data;
}

CDynamicBuffer::~CDynamicBuffer()
{
    std::free(m_data);
}

void CDynamicBuffer::Append(const void *bytes, int size)
{
    if (size <= 0)
        return;
    if (std::int64_t(m_length) + size > m_capacity) {
        // Doubling keeps a long run of small appends linear.
        const std::int64_t want = std::max<std::int64_t>(std::int64_t(m_length) + size,
                                                         std::int64_t(m_capacity) * 2 + 64);
        if (want > INT32_MAX)
            throw std::bad_alloc();
        auto *p = static_cast<unsigned char *>(std::realloc(m_data, std::size_t(want)));
        if (!p)
            throw std::bad_alloc();
        m_data = p;
        m_capacity = std::int32_t(want);
    }
    std::memcpy(m_data + m_length, bytes, std::size_t(size));
    m_length += size;
}

void CDynamicBuffer::AppendText(const char *text)
{
    Append(text, int(std::strlen(text)));
}
