#include "graphdata/graphcolumn.h"

#include <QDateTime>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <new>

CGraphColumnHost::~CGraphColumnHost() = default;

CGraphColumn *CGraphColumn::Create(int count, const QString &name)
{
    auto *column = new CGraphColumn;
    column->m_name = name;
    if (count > 0) {
        // calloc: fresh pages come zeroed from the system, which keeps the
        // big allocations of a growing data set cheap.
        const std::size_t n = std::size_t(count) + 10;
        column->m_values = static_cast<double *>(std::calloc(n, sizeof(double)));
        column->m_valid = static_cast<std::uint8_t *>(std::calloc(n, 1));
        if (!column->m_values || !column->m_valid) {
            delete column;
            throw std::bad_alloc();
        }
        column->m_count = count;
    }
    return column;
}

CGraphColumn *CGraphColumn::CreateUnfilled(int count, const QString &name)
{
    auto *column = new CGraphColumn;
    column->m_name = name;
    if (count > 0) {
        const std::size_t n = std::size_t(count) + 10;
        column->m_values = static_cast<double *>(std::malloc(n * sizeof(double)));
        column->m_valid = static_cast<std::uint8_t *>(std::malloc(n));
        if (!column->m_values || !column->m_valid) {
            delete column;
            throw std::bad_alloc();
        }
        std::fill(column->m_values + count, column->m_values + n, 0.0);
        std::fill(column->m_valid + count, column->m_valid + n, std::uint8_t(0));
        column->m_count = count;
    }
    return column;
}

CGraphColumn::~CGraphColumn()
{
    std::free(m_values);
    std::free(m_valid);
    if (m_kind == 2)
        delete m_hostObject;
    if (m_sampling)
        m_sampling->Release();
}

void CGraphColumn::Release()
{
    if (m_refCount.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete this;
}

void CGraphColumn::SetSampling(CSamplingInfo *sampling)
{
    if (sampling)
        sampling->AddRef();
    if (m_sampling)
        m_sampling->Release();
    m_sampling = sampling;
}

void CGraphColumn::CopySettingsFrom(const CGraphColumn &other)
{
    m_name = other.m_name;
    m_kind = other.m_kind;
    m_minValue = other.m_minValue;
    m_maxValue = other.m_maxValue;
    m_orderFlags = other.m_orderFlags;
    m_attrFlags = other.m_attrFlags;
    m_attrValue = other.m_attrValue;
    m_minStep = other.m_minStep;
    m_evenStep = other.m_evenStep;
    m_hasInvalid = other.m_hasInvalid;
    m_id = other.m_id;
    SetSampling(other.m_sampling);
}

namespace {
std::atomic<std::uint32_t> g_columnIdSequence{0};
}

void AssignColumnId(CGraphColumn *column)
{
    if (!column || column->m_id != 0)
        return;
    // The id mixes a sequence number, the clock, the name and the column's
    // address, so that equal ids mean the same column in the files of one
    // run and ids of different runs rarely meet.
    const std::uint64_t sequence = g_columnIdSequence.fetch_add(1) + 1;
    const std::uint64_t now = std::uint64_t(QDateTime::currentSecsSinceEpoch());
    std::uint64_t sum = 0;
    if (column->m_name.isEmpty()) {
        sum = now % 255;
    } else {
        for (QChar c : column->m_name)
            sum += c.unicode();
    }
    const std::uint64_t address = std::uint64_t(reinterpret_cast<std::uintptr_t>(column));
    const std::uint64_t ticks = std::uint64_t(std::chrono::duration_cast<std::chrono::milliseconds>(
                                                  std::chrono::steady_clock::now().time_since_epoch())
                                                  .count());
    const std::uint64_t high = (((sequence << 16) | (now & 0xFFFF)) << 8) | (sum & 0xFF);
    column->m_id = (high << 32) | ((address << 16) & 0xFFFFFFFF) | (ticks & 0xFFFF);
}
