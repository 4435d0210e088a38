#include "formula/rpndictionary.h"

#include <atomic>

std::uint64_t CMapStringToRpnData::NextLayout()
{
    static std::atomic<std::uint64_t> next{1};
    return next.fetch_add(1, std::memory_order_relaxed);
}

CMapStringToRpnData::~CMapStringToRpnData() = default;

bool CMapStringToRpnData::Lookup(const QString &key, CRpnData &value) const
{
    auto it = findIndex(key);
    if (it == m_index.cend())
        return false;
    value = m_entries[std::size_t(it->second)].value;
    return true;
}

CRpnData *CMapStringToRpnData::FindHere(const QString &key)
{
    auto it = findIndex(key);
    return it == m_index.cend() ? nullptr : &m_entries[std::size_t(it->second)].value;
}

CRpnData *CMapStringToRpnData::Find(const QString &key)
{
    for (CMapStringToRpnData *scope = this; scope; scope = scope->m_parent) {
        if (CRpnData *v = scope->FindHere(key))
            return v;
    }
    return nullptr;
}

int CMapStringToRpnData::IndexOf(const QString &key) const
{
    auto it = findIndex(key);
    return it == m_index.cend() ? -1 : it->second;
}

int CMapStringToRpnData::SetAtIndex(const QString &key, const CRpnData &value)
{
    const QString k = fold(key);
    auto it = m_index.find(k);
    if (it != m_index.end()) {
        m_entries[std::size_t(it->second)].value = value;
        return it->second;
    }
    const int at = int(m_entries.size());
    m_index.emplace(k, at);
    // A block that moves takes the entries' addresses with it: a new layout.
    const Entry *block = m_entries.data();
    m_entries.push_back({k, value});
    if (m_entries.data() != block)
        m_layout = NextLayout();
    if (!m_caseSensitive && k != key)
        m_spelling.insert(k, key);
    return at;
}

bool CMapStringToRpnData::RemoveKey(const QString &key)
{
    const QString k = fold(key);
    auto it = m_index.find(k);
    if (it == m_index.end())
        return false;
    const int at = it->second;
    m_index.erase(it);
    m_spelling.remove(k);
    m_entries.erase(m_entries.begin() + at);
    m_layout = NextLayout();
    for (int i = at; i < int(m_entries.size()); ++i)
        m_index[m_entries[std::size_t(i)].key] = i;
    return true;
}

void CMapStringToRpnData::RemoveAll()
{
    m_entries.clear();
    m_layout = NextLayout();
    m_index.clear();
    m_spelling.clear();
}

QString CMapStringToRpnData::GetSpelling(const QString &key) const
{
    if (m_caseSensitive)
        return key;
    const QString k = fold(key);
    if (m_index.find(k) == m_index.end())
        return key;
    return m_spelling.value(k, k);
}

CMapStringToRpnData *CMapStringToRpnData::Clone() const
{
    auto *copy = new CMapStringToRpnData;
    copy->m_caseSensitive = m_caseSensitive;
    copy->m_entries.reserve(m_entries.size());
    for (const Entry &e : m_entries) {
        CRpnData v;
        v.DeepCopy(e.value);
        copy->m_entries.push_back({e.key, v});
    }
    copy->m_index = m_index;
    copy->m_spelling = m_spelling;
    return copy;
}
