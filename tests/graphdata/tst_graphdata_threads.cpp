// A producer appends rows while a second thread grows the store and a third
// takes snapshots and reads them without the lock.  Run under the thread
// sanitizer by CI; the counts below keep it to a few seconds there.
#include "graphdata/graphdata.h"
#include "graphdata/graphsnapshot.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

namespace {

const int kColumns = 4;
const int kRows = 60000;
const int kBlock = 250;
const int kGrowths = 60;

// The cells of row r: the row number, a line, a parabola that goes
// negative, and a column with every seventh row invalid.
double cell(int r, int c)
{
    switch (c) {
    case 0: return r;
    case 1: return 0.5 * r + 1;
    case 2: return (r - 1000.0) * (r - 1000.0) * 1e-3 - 50;
    default: return std::sin(r * 0.01);
    }
}
std::uint8_t cellValid(int r, int c)
{
    return (c == 3 && r % 7 == 3) ? 2 : 1;
}

} // namespace

TEST(GraphDataThreads, AppendGrowAndSnapshotConcurrently)
{
    CGraphData data;
    data.Create(1, kColumns, 0, 256);

    std::atomic<bool> producerDone{false}, growerDone{false};
    std::atomic<int> badRows{0}, shrinkingCounts{0}, snapshots{0};

    std::thread producer([&] {
        std::vector<double> values(std::size_t(kBlock) * kColumns);
        std::vector<std::uint8_t> valid(values.size());
        for (int first = 0; first < kRows; first += kBlock) {
            for (int r = 0; r < kBlock; ++r) {
                for (int c = 0; c < kColumns; ++c) {
                    values[std::size_t(r) * kColumns + c] = cell(first + r, c);
                    valid[std::size_t(r) * kColumns + c] = cellValid(first + r, c);
                }
            }
            if (data.AppendRows(values.data(), valid.data(), 0, kColumns, first, kBlock) != kBlock)
                badRows.fetch_add(kBlock);
        }
        producerDone = true;
    });

    std::thread grower([&] {
        // Grows while the producer may grow too.  Once the capacity is far
        // beyond what the producer needs, only this thread changes it, and
        // it replaces the columns at the same capacity.
        for (int i = 0; i < kGrowths; ++i) {
            const int capacity = [&] {
                CCS_helper guard(data.Lock());
                return data.Capacity();
            }();
            if (capacity < 2 * kRows)
                data.EnsureRows(capacity);
            else
                data.Grow(capacity);
        }
        growerDone = true;
    });

    std::thread reader([&] {
        int lastCount = 0;
        while (!producerDone || !growerDone || snapshots < 20) {
            CGraphDataSnapshot snapshot;
            snapshot.Take(data);
            const int rows = snapshot.RowCount();
            if (rows < lastCount)
                shrinkingCounts.fetch_add(1);
            lastCount = rows;
            for (int c = 0; c < kColumns; ++c) {
                const CGraphColumn *column = snapshot.Column(c);
                if (rows > 0 && (!column || column->m_count < rows)) {
                    badRows.fetch_add(1);
                    continue;
                }
                for (int r = 0; r < rows; ++r) {
                    const std::uint8_t b = cellValid(r, c);
                    if (column->m_valid[r] != b || (b == 1 && column->m_values[r] != cell(r, c)))
                        badRows.fetch_add(1);
                }
            }
            snapshots.fetch_add(1);
        }
    });

    producer.join();
    grower.join();
    reader.join();

    EXPECT_EQ(badRows.load(), 0);
    EXPECT_EQ(shrinkingCounts.load(), 0);
    EXPECT_GE(snapshots.load(), 20);
    ASSERT_EQ(data.RowCount(), kRows);

    // Every row arrived, and the extents kept while appending are those of a
    // full scan.
    for (int c = 0; c < kColumns; ++c) {
        const CGraphColumn *column = data.GetColumn(c);
        double lo = 0, hi = 0;
        bool any = false;
        for (int r = 0; r < kRows; ++r) {
            ASSERT_EQ(column->m_valid[r], cellValid(r, c)) << c << " " << r;
            if (column->m_valid[r] != 1)
                continue;
            ASSERT_EQ(column->m_values[r], cell(r, c)) << c << " " << r;
            const double v = column->m_values[r];
            lo = any ? std::min(lo, v) : v;
            hi = any ? std::max(hi, v) : v;
            any = true;
        }
        EXPECT_EQ(column->m_minValue, lo) << c;
        EXPECT_EQ(column->m_maxValue, hi) << c;
    }
}
