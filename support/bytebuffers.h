#pragma once
// Raw byte blocks: CGrowBuffer reserves a block of at least a given size,
// CDynamicBuffer gathers bytes by appending.

#include <cstdint>

class CGrowBuffer
{
public:
    explicit CGrowBuffer(int size = 0);
    CGrowBuffer(const CGrowBuffer &) = delete;
    CGrowBuffer &operator=(const CGrowBuffer &) = delete;
    virtual ~CGrowBuffer();

    // The block, enlarged to `size` bytes if it is smaller; old content is kept.
    unsigned char *Reserve(int size);
    unsigned char *GetData() const { return m_data; }
    int GetCapacity() const { return m_capacity; }

    std::int32_t m_capacity = 0;
    unsigned char *m_data = nullptr;
};

class CDynamicBuffer
{
public:
    CDynamicBuffer() = default;
    CDynamicBuffer(const CDynamicBuffer &) = delete;
    CDynamicBuffer &operator=(const CDynamicBuffer &) = delete;
    virtual ~CDynamicBuffer();

    void Append(const void *bytes, int size);
    void AppendText(const char *text);
    const unsigned char *GetData() const { return m_data; }
    int GetLength() const { return m_length; }
    void Clear() { m_length = 0; }

private:
    unsigned char *m_data = nullptr;
    std::int32_t m_length = 0;
    std::int32_t m_capacity = 0;
};
