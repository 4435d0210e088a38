#include "graphdata/scopegraph.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numbers>
#include <vector>

double ScopeStep(double value)
{
    if (!(value > 0) || !std::isfinite(value))
        return 1;
    const double decade = std::pow(10.0, std::floor(std::log10(value)));
    for (const double m : {1.0, 2.0, 5.0, 10.0}) {
        // a hair of tolerance: 0.3 / 0.1 must give 5, not 10
        if (m * decade >= value * (1 - 1e-12))
            return m * decade;
    }
    return 10 * decade;
}

CGraphCurve *MakeScopeGraph(const CGraphData &source)
{
    auto *graph = new CGraphCurve(2);
    CCS_helper guard(source.Lock());
    const int columns = source.ColumnCount(), rows = source.RowCount();
    graph->m_data.Create(2, std::max(columns, 2), rows, 0);
    std::vector<double> values(std::size_t(std::max(columns, 1)));
    std::vector<std::uint8_t> valid(values.size());
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < columns; ++c) {
            const CGraphColumn *column = source.GetColumn(c);
            const bool has = column && r < column->m_count;
            values[std::size_t(c)] = has ? column->m_values[r] : 0;
            valid[std::size_t(c)] = has ? column->m_valid[r] : 0;
        }
        graph->m_data.AppendRows(values.data(), valid.data(), 0, columns, r, 1);
    }
    for (int c = 0; c < columns; ++c) {
        if (const CGraphColumn *column = source.GetColumn(c))
            graph->m_data.GetColumn(c)->m_name = column->m_name;
    }
    guard.Leave();
    CScopeData_Data &scope = *graph->m_data->AsScope();
    for (int c = 0; c < columns; ++c)
        scope.m_channels[std::size_t(c)].m_variableName = graph->m_data.GetColumn(c)->m_name;
    const CGraphColumn *time = graph->m_data.GetColumn(0);
    const double span = time && rows > 0 ? time->m_maxValue - time->m_minValue : 0;
    scope.m_secsPerDiv = ScopeStep(span / kScopeDivisionsX);
    graph->m_backColor = 0xFFFFFF;
    bool changed;
    for (int c = 1; c < columns; ++c) {
        const int at = graph->AddCurve(c, 0, false, changed);
        if (at < 0)
            continue;
        const CGraphColumn *y = graph->m_data.GetColumn(c);
        const double largest = std::max(std::fabs(y->m_minValue), std::fabs(y->m_maxValue));
        graph->Curve(at)->m_scopeScale = ScopeStep(largest / 4);
    }
    graph->m_xAxisName = time ? time->m_name : QString();
    return graph;
}

// ---- the writer --------------------------------------------------------------

CScopeSignalWriter::CScopeSignalWriter(CGraphData data, double rowsPerSecond) : m_data(data), m_rate(rowsPerSecond)
{
}

CScopeSignalWriter::~CScopeSignalWriter()
{
    Stop();
}

void CScopeSignalWriter::Start()
{
    if (m_running.exchange(true))
        return;
    m_thread = std::thread([this] { run(); });
}

void CScopeSignalWriter::Stop()
{
    m_running = false;
    if (m_thread.joinable())
        m_thread.join();
}

void CScopeSignalWriter::SignalRow(std::int64_t row, double rate, int channels, double *out)
{
    const double t = row / rate;
    out[0] = t;
    for (int c = 1; c <= channels; ++c) {
        double v = 0;
        switch ((c - 1) % 4) {
        case 0: v = std::sin(2 * std::numbers::pi * 50 * t); break;
        case 1: v = std::fmod(t * 20, 1.0) < 0.5 ? 1.5 : -1.5; break;
        case 2: v = 2 * std::fmod(t * 35, 1.0) - 1; break;
        default: {
            // a cheap, repeatable noise from the row number
            std::uint64_t h = std::uint64_t(row) * 0x9E3779B97F4A7C15ull;
            h ^= h >> 29;
            v = 0.8 * std::sin(2 * std::numbers::pi * 7 * t) + 0.15 * (double(h % 2001) / 1000 - 1);
            break;
        }
        }
        out[c] = v;
    }
}

void CScopeSignalWriter::run()
{
    using clock = std::chrono::steady_clock;
    const int columns = m_data.ColumnCount();
    const int channels = columns - 1;
    if (channels < 1) {
        m_running = false;
        return;
    }
    const auto start = clock::now();
    std::int64_t row = m_data.RowCountLocked();
    const std::int64_t first = row;
    std::vector<double> block;
    while (m_running.load()) {
        const double elapsed = std::chrono::duration<double>(clock::now() - start).count();
        const std::int64_t due = first + std::int64_t(elapsed * m_rate);
        // at most a tenth of a second at once, so that a stalled thread
        // does not come back with a flood
        const std::int64_t n = std::min<std::int64_t>(due - row, std::int64_t(m_rate / 10) + 1);
        if (n > 0) {
            block.resize(std::size_t(n) * std::size_t(columns));
            for (std::int64_t i = 0; i < n; ++i)
                SignalRow(row + i, m_rate, channels, block.data() + i * columns);
            if (row + n > INT32_MAX - 1 || m_data.AppendRows(block.data(), nullptr, 0, columns, int(row), int(n)) != n) {
                m_running = false;
                break;
            }
            row += n;
            m_written.store(row - first, std::memory_order_relaxed);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}
