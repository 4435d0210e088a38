#include "formula/rpndictionary.h"

CMapStringToRpnData::~CMapStringToRpnData() = default;

bool CMapStringToRpnData::Lookup(const QString &key, CRpnData &value) const
{
    auto it = m_index.constFind(fold(key));
    if (it == m_index.cend())
        return false;
    value = m_entries[std::size_t(*it)].value;
    return true;
}

CRpnData *CMapStringToRpnData::FindHere(const QString &key)
{
    auto it = m_index.constFind(fold(key));
    return it == m_index.cend() ? nullptr : &m_entries[std::size_t(*it)].value;
}

CRpnData *CMapStringToRpnData::Find(const QString &key)
{
    for (CMapStringToRpnData *scope = this; scope; scope = scope->m_parent) {
        if (CRpnData *v = scope->FindHere(key))
            return v;
    }
    return nullptr;
}

void CMapStringToRpnData::SetAt(const QString &key, const CRpnData &value)
{
    const QString k = fold(key);
    auto it = m_index.constFind(k);
    if (it != m_index.cend()) {
        m_entries[std::size_t(*it)].value = value;
        return;
    }
    m_index.insert(k, int(m_entries.size()));
    m_entries.push_back({k, value});
    if (!m_caseSensitive && k != key)
        m_spelling.insert(k, key);
}

bool CMapStringToRpnData::RemoveKey(const QString &key)
{
    const QString k = fold(key);
    auto it = m_index.find(k);
    if (it == m_index.end())
        return false;
    const int at = *it;
    m_index.erase(it);
    m_spelling.remove(k);
    m_entries.erase(m_entries.begin() + at);
    for (int i = at; i < int(m_entries.size()); ++i)
        m_index[m_entries[std::size_t(i)].key] = i;
    return true;
}

void CMapStringToRpnData::RemoveAll()
{
    m_entries.clear();
    m_index.clear();
    m_spelling.clear();
}

QString CMapStringToRpnData::GetSpelling(const QString &key) const
{
    if (m_caseSensitive)
        return key;
    const QString k = fold(key);
    if (!m_index.contains(k))
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
