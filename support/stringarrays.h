#pragma once
// Narrow-string containers: an array and a string-to-string hash map, both
// able to serialise themselves through a CBufferIO.

#include <string>
#include <unordered_map>
#include <vector>

class CBufferIO;

// An array of narrow strings.  m_growBy 0 means the default growth.
class CStringAArrayA
{
public:
    CStringAArrayA() = default;
    virtual ~CStringAArrayA();

    int GetSize() const { return int(m_data.size()); }
    bool IsEmpty() const { return m_data.empty(); }
    const std::string &GetAt(int i) const { return m_data[std::size_t(i)]; }
    std::string &ElementAt(int i) { return m_data[std::size_t(i)]; }
    const std::string &operator[](int i) const { return GetAt(i); }
    void SetAt(int i, const std::string &text) { m_data[std::size_t(i)] = text; }
    // Enlarges the array as needed so that `i` is a valid index.
    void SetAtGrow(int i, const std::string &text);
    int Add(const std::string &text);
    void InsertAt(int i, const std::string &text);
    void RemoveAt(int i, int count = 1);
    void RemoveAll() { m_data.clear(); }
    void SetSize(int size, int growBy = -1);
    int GetUpperBound() const { return GetSize() - 1; }

    // Count, then each string as its length and bytes.
    virtual void Serialize(CBufferIO &io);

    int m_growBy = 0;

private:
    void reserveFor(int size);
    std::vector<std::string> m_data;
};

// A hash map of narrow strings.  The table starts at 17 slots; the block size
// of nodes is kept for its callers' sake (at least 1, else 10).
class CMapStringAToStringA
{
public:
    explicit CMapStringAToStringA(int blockSize = 10);
    virtual ~CMapStringAToStringA();

    int GetCount() const { return int(m_map.size()); }
    bool IsEmpty() const { return m_map.empty(); }
    bool Lookup(const std::string &key, std::string &value) const;
    const std::string *Find(const std::string &key) const;
    void SetAt(const std::string &key, const std::string &value) { m_map[key] = value; }
    std::string &operator[](const std::string &key) { return m_map[key]; }
    bool RemoveKey(const std::string &key) { return m_map.erase(key) > 0; }
    void RemoveAll() { m_map.clear(); }
    int GetBlockSize() const { return m_blockSize; }

    // Walks the entries in no defined order.
    template <typename F>
    void ForEach(F &&f) const
    {
        for (const auto &[k, v] : m_map)
            f(k, v);
    }

    // Count, then each key and value as length and bytes.
    virtual void Serialize(CBufferIO &io);

private:
    int m_blockSize;
    std::unordered_map<std::string, std::string> m_map;
};
