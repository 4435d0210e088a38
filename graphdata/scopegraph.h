#pragma once
// Oscilloscope graphs of data that are at hand: a graph of the scope form
// over the rows of a data set, and a writer thread that feeds a scope data
// set with generated signals at a steady row rate, for live showing.

#include "graphdata/graphcurve.h"

#include <atomic>
#include <cstdint>
#include <thread>

// Divisions of the oscilloscope screen: 10 across, 8 up.
constexpr int kScopeDivisionsX = 10;
constexpr int kScopeDivisionsY = 8;

// The smallest of 1, 2 and 5 times a power of ten that is at least `value`
// (1 for a value that is not positive and finite).
double ScopeStep(double value);

// A new graph of the oscilloscope form showing `source`: column 0 is the
// time, every other column a channel.  secsPerDiv is the step that puts all
// rows on the screen's 10 divisions; each channel's scale the step that
// puts its largest magnitude within 4 divisions, so that its zero line is
// the middle row.  Rows are copied; the caller owns the graph.
CGraphCurve *MakeScopeGraph(const CGraphData &source);

// Appends rows of a time column and `channels` signal channels to a scope
// data set at `rowsPerSecond`, from a thread of its own, in blocks of what
// the elapsed time asks for (about one every millisecond).  The signals:
// a sine, a square wave, a sawtooth and a sine with noise, repeated.
class CScopeSignalWriter
{
public:
    CScopeSignalWriter(CGraphData data, double rowsPerSecond);
    ~CScopeSignalWriter();
    CScopeSignalWriter(const CScopeSignalWriter &) = delete;
    CScopeSignalWriter &operator=(const CScopeSignalWriter &) = delete;

    void Start();
    void Stop();
    std::int64_t RowsWritten() const { return m_written.load(std::memory_order_relaxed); }

    // The values of row `row` into `out` (time, then one per channel).
    static void SignalRow(std::int64_t row, double rowsPerSecond, int channels, double *out);

private:
    void run();

    CGraphData m_data;
    double m_rate;
    std::atomic<bool> m_running{false};
    std::atomic<std::int64_t> m_written{0};
    std::thread m_thread;
};
