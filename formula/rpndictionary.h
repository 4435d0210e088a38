#pragma once
// CMapStringToRpnData: text keys to values, the payload of a DICTIONARY and
// the variable scopes of trees and function calls.
//
// With m_caseSensitive on (the default, and always for script dictionaries)
// keys are compared exactly.  With it off every key is made upper case before
// a set and a get, and the spelling of the key as first written is kept
// beside it.  m_parent links a scope to the one around it: Find walks up the
// chain, the other operations see this scope alone.
//
// Entries keep the order in which they were first set; that is the order of
// iteration and of printing.
//
// An entry keeps its position while the map only grows, so that a compiled
// variable can keep the position of its name instead of looking the name up
// on every access.  Each map has a layout number, unique over all maps of the
// process; it changes whenever positions may have moved (an entry removed,
// the map emptied, or the block of entries moved as the map grew).  A position
// or an entry's address remembered together with the layout number is valid
// as long as GetLayout still returns that number.

#include "formula/rpndata.h"

#include <QHash>
#include <QString>
#include <cstdint>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <vector>

class CMapStringToRpnData
{
public:
    CMapStringToRpnData() : m_layout(NextLayout()) {}
    CMapStringToRpnData(const CMapStringToRpnData &) = delete;
    CMapStringToRpnData &operator=(const CMapStringToRpnData &) = delete;
    virtual ~CMapStringToRpnData();

    int GetCount() const { return int(m_entries.size()); }
    bool IsEmpty() const { return m_entries.empty(); }

    // This scope only.
    bool Lookup(const QString &key, CRpnData &value) const;
    CRpnData *FindHere(const QString &key);
    // This scope, then each parent in turn; null when no scope has the key.
    CRpnData *Find(const QString &key);
    void SetAt(const QString &key, const CRpnData &value) { SetAtIndex(key, value); }
    // Sets the entry and returns its position.
    int SetAtIndex(const QString &key, const CRpnData &value);
    // The position of the key in this scope, -1 when absent.
    int IndexOf(const QString &key) const;
    // Changes when positions may have moved (see above); never 0.
    std::uint64_t GetLayout() const { return m_layout; }
    bool RemoveKey(const QString &key);
    void RemoveAll();

    // The key as it was first written; the key itself when case counts or it is unknown.
    QString GetSpelling(const QString &key) const;

    // Entries in iteration order.  The key is the stored (folded) key.
    const QString &GetKeyAt(int i) const { return m_entries[std::size_t(i)].key; }
    CRpnData &GetValueAt(int i) { return m_entries[std::size_t(i)].value; }
    const CRpnData &GetValueAt(int i) const { return m_entries[std::size_t(i)].value; }

    // An independent copy: entries deep-copied, the same case switch, no parent.
    CMapStringToRpnData *Clone() const;

    bool m_caseSensitive = true;
    CMapStringToRpnData *m_parent = nullptr; // not owned

private:
    static std::uint64_t NextLayout();

    struct Entry
    {
        QString key;
        CRpnData value;
    };
    QString fold(const QString &key) const { return m_caseSensitive ? key : key.toUpper(); }

    std::uint64_t m_layout;
    std::vector<Entry> m_entries;
    // A plain hash of the UTF-16 units: much cheaper than qHash's seeded
    // one, and a script's keys are not chosen to collide.
    struct KeyHash
    {
        std::size_t operator()(const QString &key) const noexcept
        {
            return std::hash<std::u16string_view>{}(
                std::u16string_view(reinterpret_cast<const char16_t *>(key.constData()), std::size_t(key.size())));
        }
    };
    using Index = std::unordered_map<QString, int, KeyHash>;
    Index m_index;                      // stored key to entry position
    // The index entry of `key`; exact keys are looked up without a copy.
    Index::const_iterator findIndex(const QString &key) const
    {
        return m_caseSensitive ? m_index.find(key) : m_index.find(key.toUpper());
    }
    QHash<QString, QString> m_spelling; // folded key to key as written (case switch off)
};
