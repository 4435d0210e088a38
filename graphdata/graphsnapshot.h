#pragma once
// What a reader takes from a data set that a producer may be filling: under
// the data lock, the row count, the generation and a reference to each
// column asked for, with the extents those columns had.  The reader then
// works on the first RowCount() rows of the columns without the lock; the
// references are dropped under the lock again when the snapshot goes.

#include "graphdata/graphdata.h"

#include <vector>

class CGraphDataSnapshot
{
public:
    struct Entry
    {
        CGraphColumn *column = nullptr; // referenced; null for a bad index
        double minValue = 0;
        double maxValue = 0;
        std::uint32_t orderFlags = 0;
        bool hasInvalid = false;
    };

    CGraphDataSnapshot() = default;
    CGraphDataSnapshot(const CGraphDataSnapshot &) = delete;
    CGraphDataSnapshot &operator=(const CGraphDataSnapshot &) = delete;
    ~CGraphDataSnapshot() { Release(); }

    // Takes the listed columns (all of them when the list is empty), and
    // their log forms instead when `log` is set (null where none was built).
    void Take(const CGraphData &data, const std::vector<int> &columns = {}, bool log = false);
    // Drops the references under the data lock.
    void Release();

    int RowCount() const { return m_rowCount; }
    int Capacity() const { return m_capacity; }
    int Generation() const { return m_generation; }
    int Size() const { return int(m_entries.size()); }
    const Entry &At(int i) const { return m_entries[std::size_t(i)]; }
    const CGraphColumn *Column(int i) const { return m_entries[std::size_t(i)].column; }

private:
    CGraphData m_data;
    std::vector<Entry> m_entries;
    int m_rowCount = 0;
    int m_capacity = 0;
    int m_generation = 0;
};
