#include "support/stringarrays.h"

#include "support/bufferio.h"

#include <QDebug>
#include <algorithm>

namespace {

void transferText(CBufferIO &io, std::string &text)
{
    if (io.IsWriting()) {
        std::int32_t n = std::int32_t(text.size());
        io.Transfer(n);
        io.Transfer(text.data(), n);
    } else if (io.IsReading()) {
        std::int32_t n = 0;
        io.Transfer(n);
        n = std::clamp(n, 0, io.GetRemaining());
        text.assign(std::size_t(n), '\0');
        io.Transfer(text.data(), n);
    }
}

} // namespace

// ---- CStringAArrayA ---------------------------------------------------------

CStringAArrayA::~CStringAArrayA()
{
    // Destroying strings cannot fail; a failure here would be reported and
    // swallowed rather than passed out of a destructor.
    try {
        m_data.clear();
    } catch (...) {
        qWarning("Exception thrown in destructor (%s:%d)", __FILE__, __LINE__);
    }
}

void CStringAArrayA::reserveFor(int size)
{
    if (std::size_t(size) <= m_data.capacity())
        return;
    // The default growth of an array: an eighth of the size, at least 4 and at most 1024.
    int grow = m_growBy;
    if (grow <= 0)
        grow = std::clamp(GetSize() / 8, 4, 1024);
    m_data.reserve(std::size_t(std::max(size, GetSize() + grow)));
}

void CStringAArrayA::SetAtGrow(int i, const std::string &text)
{
    if (i < 0)
        return;
    if (i >= GetSize()) {
        reserveFor(i + 1);
        m_data.resize(std::size_t(i) + 1);
    }
    m_data[std::size_t(i)] = text;
}

int CStringAArrayA::Add(const std::string &text)
{
    reserveFor(GetSize() + 1);
    m_data.push_back(text);
    return GetSize() - 1;
}

void CStringAArrayA::InsertAt(int i, const std::string &text)
{
    if (i < 0)
        return;
    if (i >= GetSize()) {
        SetAtGrow(i, text);
        return;
    }
    reserveFor(GetSize() + 1);
    m_data.insert(m_data.begin() + i, text);
}

void CStringAArrayA::RemoveAt(int i, int count)
{
    if (i < 0 || count <= 0 || i >= GetSize())
        return;
    const int end = std::min(GetSize(), i + count);
    m_data.erase(m_data.begin() + i, m_data.begin() + end);
}

void CStringAArrayA::SetSize(int size, int growBy)
{
    if (growBy >= 0)
        m_growBy = growBy;
    m_data.resize(std::size_t(std::max(size, 0)));
}

void CStringAArrayA::Serialize(CBufferIO &io)
{
    if (io.IsWriting()) {
        std::int32_t n = GetSize();
        io.Transfer(n);
        for (auto &s : m_data)
            transferText(io, s);
    } else if (io.IsReading()) {
        std::int32_t n = 0;
        io.Transfer(n);
        // Every string needs at least its four length bytes.
        n = std::clamp(n, 0, io.GetRemaining() / 4);
        SetSize(n);
        for (auto &s : m_data)
            transferText(io, s);
    }
}

// ---- CMapStringAToStringA ---------------------------------------------------

CMapStringAToStringA::CMapStringAToStringA(int blockSize)
    : m_blockSize(blockSize < 1 ? 10 : blockSize), m_map(17)
{
}

CMapStringAToStringA::~CMapStringAToStringA() = default;

bool CMapStringAToStringA::Lookup(const std::string &key, std::string &value) const
{
    auto it = m_map.find(key);
    if (it == m_map.end())
        return false;
    value = it->second;
    return true;
}

const std::string *CMapStringAToStringA::Find(const std::string &key) const
{
    auto it = m_map.find(key);
    return it == m_map.end() ? nullptr : &it->second;
}

void CMapStringAToStringA::Serialize(CBufferIO &io)
{
    if (io.IsWriting()) {
        std::int32_t n = GetCount();
        io.Transfer(n);
        for (auto &[k, v] : m_map) {
            std::string key = k;
            transferText(io, key);
            transferText(io, v);
        }
    } else if (io.IsReading()) {
        std::int32_t n = 0;
        io.Transfer(n);
        n = std::clamp(n, 0, io.GetRemaining() / 8);
        m_map.clear();
        for (int i = 0; i < n; ++i) {
            std::string key, value;
            transferText(io, key);
            transferText(io, value);
            m_map[key] = value;
        }
    }
}
