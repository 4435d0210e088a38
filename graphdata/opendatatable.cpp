#include "graphdata/opendatatable.h"

#include <vector>

namespace {

CMyCriticalSection g_openDataLock;
// Slot n lives at index n - 1; freed slots are reused.
std::vector<CGraphData_Data *> g_openData;
int g_openDataCount = 0;

} // namespace

int RegisterOpenGraphData(CGraphData_Data *data)
{
    CCS_helper guard(g_openDataLock);
    for (std::size_t i = 0; i < g_openData.size(); ++i) {
        if (!g_openData[i]) {
            g_openData[i] = data;
            ++g_openDataCount;
            return int(i) + 1;
        }
    }
    g_openData.push_back(data);
    ++g_openDataCount;
    return int(g_openData.size());
}

void UnregisterOpenGraphData(CGraphData_Data *data)
{
    CCS_helper guard(g_openDataLock);
    const int slot = data->m_globalSlot;
    if (slot >= 1 && slot <= int(g_openData.size()) && g_openData[std::size_t(slot - 1)] == data) {
        g_openData[std::size_t(slot - 1)] = nullptr;
        --g_openDataCount;
    }
    data->m_globalSlot = 0;
}

int OpenGraphDataCount()
{
    CCS_helper guard(g_openDataLock);
    return g_openDataCount;
}

bool OpenGraphDataAt(int slot, CGraphData &handle)
{
    CGraphData_Data *data = nullptr;
    {
        CCS_helper guard(g_openDataLock);
        if (slot < 1 || slot > int(g_openData.size()))
            return false;
        data = g_openData[std::size_t(slot - 1)];
        if (!data)
            return false;
        // A data set whose count reached 0 is on its way out: waiting for
        // this lock to leave the table.  Take a reference only while it is alive.
        int count = data->m_refCount.load();
        do {
            if (count <= 0)
                return false;
        } while (!data->m_refCount.compare_exchange_weak(count, count + 1));
    }
    handle = CGraphData::Adopt(data);
    return true;
}
