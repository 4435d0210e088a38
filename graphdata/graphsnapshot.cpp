#include "graphdata/graphsnapshot.h"

void CGraphDataSnapshot::Take(const CGraphData &data, const std::vector<int> &columns, bool log)
{
    Release();
    m_data = data;
    CCS_helper guard(m_data.Lock());
    const CGraphData_Data *d = m_data.Data();
    m_rowCount = d->m_rowCount;
    m_capacity = d->m_capacity;
    m_generation = d->m_generation;
    const int n = columns.empty() ? d->m_columnCount : int(columns.size());
    m_entries.resize(std::size_t(n));
    for (int i = 0; i < n; ++i) {
        const int index = columns.empty() ? i : columns[std::size_t(i)];
        CGraphColumn *column = log ? d->GetLogColumn(index) : d->GetColumn(index);
        Entry &e = m_entries[std::size_t(i)];
        e = Entry();
        if (!column)
            continue;
        column->AddRef();
        e.column = column;
        e.minValue = column->m_minValue;
        e.maxValue = column->m_maxValue;
        e.orderFlags = column->m_orderFlags;
        e.hasInvalid = column->m_hasInvalid != 0;
    }
}

void CGraphDataSnapshot::Release()
{
    if (m_entries.empty())
        return;
    CCS_helper guard(m_data.Lock());
    for (Entry &e : m_entries) {
        if (e.column)
            e.column->Release();
    }
    m_entries.clear();
}
