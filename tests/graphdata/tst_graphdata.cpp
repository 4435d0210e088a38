#include "graphdata/columnscan.h"
#include "graphdata/columnsearch.h"
#include "graphdata/columntransform.h"
#include "graphdata/graphdata.h"
#include "graphdata/graphsnapshot.h"
#include "graphdata/opendatatable.h"

#include "tests/graphdata/columnfixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using columnfixture::makeColumn;
using columnfixture::Missing;
using columnfixture::NaN;

TEST(GraphColumn, FindOrderOnCraftedColumns)
{
    const struct
    {
        const char *name;
        std::vector<double> values;
        std::uint32_t flags;
        double minStep;
    } cases[] = {
        {"even ascending", {1, 2, 3, 4}, 1 | 8, 1},
        {"even descending", {4, 3, 2, 1}, 2 | 8, -1},
        {"rounding noise of an even grid", {0, 0.1, 0.2, 0.30000000000000004, 0.4}, 1 | 8, 0.1},
        {"smaller later step clears even", {0, 2, 3}, 1, 1},
        {"larger later gap keeps even", {0, 1, 3, 4}, 1 | 8, 1},
        {"change of direction", {1, 3, 2}, 16, -1},
        {"equal neighbours after direction", {1, 2, 2, 3}, 1 | 4 | 8, 1},
        {"equal neighbours first: no direction", {1, 1, 2, 3}, 4 | 8, 1},
        {"direction change after equal is not seen", {1, 1, 3, 2}, 4, -1},
        {"invalid rows are skipped", {1, NaN, 2, Missing, 3}, 1 | 8, 1},
        {"one valid row", {5, NaN}, 1 | 8, 0},
    };
    for (const auto &c : cases) {
        CGraphColumnPtr column = makeColumn(c.values);
        EXPECT_EQ(FindOrder(column.Get(), 0, int(c.values.size()) - 1), c.flags) << c.name;
        EXPECT_EQ(column->m_orderFlags, c.flags) << c.name;
        EXPECT_DOUBLE_EQ(column->m_minStep, c.minStep) << c.name;
        EXPECT_EQ(column->m_evenStep, (c.flags & 8) ? 1u : 0u) << c.name;
    }
    CGraphColumnPtr withInvalid = makeColumn({1, NaN, 3});
    FindOrder(withInvalid.Get(), 0, 2);
    EXPECT_EQ(withInvalid->m_hasInvalid, 1u);
    FindOrder(withInvalid.Get(), 2, 2);
    EXPECT_EQ(withInvalid->m_hasInvalid, 0u);
}

TEST(GraphColumn, ExtentsAndRanges)
{
    CGraphColumnPtr column = makeColumn({NaN, 4, -2, Missing, 7, 1});
    column->m_orderFlags = 9;
    RecomputeExtents(column.Get(), 6);
    EXPECT_EQ(column->m_minValue, -2);
    EXPECT_EQ(column->m_maxValue, 7);
    EXPECT_EQ(column->m_orderFlags, 0u);
    EXPECT_EQ(column->m_hasInvalid, 1u);

    double lo = 0, hi = 0;
    bool invalid = false;
    EXPECT_EQ(RangeOf(column.Get(), 1, 2, lo, hi, invalid), 1);
    EXPECT_EQ(lo, -2);
    EXPECT_EQ(hi, 4);
    EXPECT_FALSE(invalid);
    EXPECT_EQ(RangeOf(column.Get(), 4, 1000, lo, hi, invalid), 1); // last is clipped
    EXPECT_EQ(lo, 1);
    EXPECT_EQ(hi, 7);
    EXPECT_EQ(RangeOf(column.Get(), 0, 0, lo, hi, invalid), 0);
    EXPECT_TRUE(invalid);
}

TEST(GraphColumn, SearchHelpers)
{
    CGraphColumnPtr x = makeColumn({0, 1, 2, 3, 4, 5});
    const struct
    {
        double x;
        int firstAtOrAfter, lastAtOrBefore;
    } cases[] = {
        {-1, 0, 0}, {0, 0, 0}, {2.5, 3, 2}, {3, 3, 3}, {5, 5, 5}, {9, 5, 5},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(FirstAtOrAfter(x.Get(), c.x, 0, 5), c.firstAtOrAfter) << c.x;
        EXPECT_EQ(FirstAtOrAfter(x.Get(), c.x, 0, 5, true), c.firstAtOrAfter) << c.x;
        EXPECT_EQ(LastAtOrBefore(x.Get(), c.x, 0, 5), c.lastAtOrBefore) << c.x;
        EXPECT_EQ(LastAtOrBefore(x.Get(), c.x, 0, 5, true), c.lastAtOrBefore) << c.x;
    }
    // Invalid rows take no part: row 2 holds 0 but is invalid.
    CGraphColumnPtr holes = makeColumn({0, 1, NaN, 3, 4});
    holes->m_hasInvalid = 1;
    EXPECT_EQ(FirstAtOrAfter(holes.Get(), 2, 0, 4, true), 2);
    EXPECT_EQ(LastAtOrBefore(holes.Get(), 2, 0, 4, true), 2);
}

// Rows 0..9 with X = row, appended through the data set with row `invalid`
// marked not valid and holding `junk`: the ordered searches must give what
// a walk over the valid rows gives, wherever the invalid row lies.
TEST(GraphData, OrderedSearchesSkipAppendedInvalidRows)
{
    const double probes[] = {-1, 0, 0.5, 2, 4.5, 5, 6.5, 8.99, 9, 12};
    const double junk[] = {-1e300, 1e300, 4.0};
    for (int invalid = 0; invalid < 10; ++invalid) {
        for (double bad : junk) {
            CGraphData data;
            data.Create(1, 1, 0, 0);
            double values[10];
            std::uint8_t valid[10];
            for (int i = 0; i < 10; ++i) {
                values[i] = i == invalid ? bad : i;
                valid[i] = i == invalid ? 2 : 1;
            }
            ASSERT_EQ(data.AppendRows(values, valid, 0, 1, 0, 10), 10);
            const CGraphColumn *x = data.GetColumn(0);
            EXPECT_TRUE(x->m_hasInvalid) << invalid;
            for (double probe : probes) {
                // The definition, walked: after the last valid row below,
                // before the first valid row above.
                int below = -1, above = -1;
                for (int i = 0; i < 10; ++i) {
                    if (i != invalid && i < probe)
                        below = i;
                    if (i != invalid && i > probe && above < 0)
                        above = i;
                }
                const int first = below < 0 ? 0 : std::min(below + 1, 9);
                const int last = above < 0 ? 9 : std::max(above - 1, 0);
                EXPECT_EQ(FirstAtOrAfter(x, probe, 0, 9, true), first) << "invalid " << invalid << " x " << probe;
                EXPECT_EQ(LastAtOrBefore(x, probe, 0, 9, true), last) << "invalid " << invalid << " x " << probe;
            }
        }
    }
    // A run of invalid rows at the front, in the middle and at the end.
    const struct
    {
        std::vector<double> values;
        double x;
        int first, last;
    } runs[] = {
        {{NaN, NaN, NaN, 3, 4, 5}, 3.5, 4, 3},
        {{0, 1, NaN, NaN, NaN, 5, 6}, 3, 2, 4},
        {{0, 1, 2, NaN, NaN, NaN}, 1.5, 2, 1},
        {{0, 1, 2, NaN, NaN, NaN}, 7, 3, 5},
        {{NaN, NaN, NaN}, 1, 0, 2},
    };
    for (const auto &c : runs) {
        CGraphColumnPtr column = makeColumn(c.values);
        const int end = int(c.values.size()) - 1;
        EXPECT_EQ(FirstAtOrAfter(column.Get(), c.x, 0, end, true), c.first) << c.x;
        EXPECT_EQ(LastAtOrBefore(column.Get(), c.x, 0, end, true), c.last) << c.x;
        EXPECT_EQ(FirstAtOrAfter(column.Get(), c.x, 0, end, false), c.first) << c.x;
        EXPECT_EQ(LastAtOrBefore(column.Get(), c.x, 0, end, false), c.last) << c.x;
    }
}

TEST(GraphColumn, InterpolateRow)
{
    CGraphColumnPtr up = makeColumn({0, 10, 20, 40});
    CGraphColumnPtr down = makeColumn({40, 20, 10, 0});
    const struct
    {
        const CGraphColumn *column;
        double x;
        int extrapolate;
        int lower, upper;
        double fraction;
    } cases[] = {
        {up.Get(), 15, 0, 1, 2, 0.5},
        {up.Get(), 30, 0, 2, 3, 0.5},
        {up.Get(), 0, 0, 0, 1, 0},
        {up.Get(), -5, 0, 0, 0, 0},
        {up.Get(), -5, ExtrapolateLow, 0, 1, -0.5},
        {up.Get(), 50, 0, 3, 3, 0},
        {up.Get(), 50, ExtrapolateHigh, 2, 3, 1.5},
        {down.Get(), 15, 0, 1, 2, 0.5},
        {down.Get(), 50, 0, 0, 0, 0},
    };
    for (const auto &c : cases) {
        int lower = -1, upper = -1;
        double fraction = -9;
        ASSERT_TRUE(InterpolateRow(c.column, 4, c.x, lower, upper, fraction, c.extrapolate));
        EXPECT_EQ(lower, c.lower) << c.x;
        EXPECT_EQ(upper, c.upper) << c.x;
        EXPECT_DOUBLE_EQ(fraction, c.fraction) << c.x;
    }
    int lower, upper;
    double fraction;
    EXPECT_FALSE(InterpolateRow(up.Get(), 0, 1, lower, upper, fraction));
}

TEST(GraphColumn, ValueAtBridgesMissingRowsAndRefusesInvalidOnes)
{
    CGraphColumnPtr x = makeColumn({1, 10, 100, 1000});
    CGraphColumnPtr y = makeColumn({0, Missing, 20, NaN});
    double value = 0;
    // Row 1 is missing: rows 0 and 2 stand in, the fraction comes from X.
    ASSERT_TRUE(ValueAt(y.Get(), 4, 1, 2, 0.5, x.Get(), 55, false, value));
    EXPECT_DOUBLE_EQ(value, 20 * (55.0 - 1) / 99);
    ASSERT_TRUE(ValueAt(y.Get(), 4, 1, 2, 0.5, x.Get(), 10, true, value));
    EXPECT_DOUBLE_EQ(value, 10); // half way in decades
    EXPECT_FALSE(ValueAt(y.Get(), 4, 2, 3, 0.5, x.Get(), 500, false, value));
    ASSERT_TRUE(ValueAt(y.Get(), 4, 0, 2, 0.25, x.Get(), 0, false, value));
    EXPECT_DOUBLE_EQ(value, 5); // no row missing: the given fraction holds
}

TEST(GraphColumn, LogAndDbForms)
{
    const struct
    {
        const char *name;
        QString columnName;
        std::vector<double> values;
        std::vector<std::uint8_t> bytes;
        bool hasInvalid;
    } cases[] = {
        {"zero and negative", u"U"_qs, {10, 0, -3, 100}, {1, 2, 2, 1}, true},
        {"DC bin of a spectrum", u"FREQUENCY"_qs, {0, 10, 100}, {2, 1, 1}, false},
        {"DC bin counts past row 0", u"Frequency"_qs, {10, 0}, {1, 2}, true},
        {"invalid source row", u"U"_qs, {NaN, 10}, {2, 1}, true},
        {"missing source row", u"U"_qs, {Missing, 10}, {0, 1}, false},
    };
    for (const auto &c : cases) {
        CGraphColumnPtr source = makeColumn(c.values, c.columnName);
        CGraphColumnPtr log = CGraphColumnPtr::Adopt(CGraphColumn::Create(int(c.values.size())));
        bool hasInvalid = !c.hasInvalid;
        LogOf(source.Get(), log.Get(), int(c.values.size()), hasInvalid);
        EXPECT_EQ(hasInvalid, c.hasInvalid) << c.name;
        EXPECT_EQ(log->m_name, c.columnName) << c.name;
        EXPECT_EQ(log->m_kind & 1u, 1u);
        for (std::size_t i = 0; i < c.values.size(); ++i) {
            EXPECT_EQ(log->m_valid[i], c.bytes[i]) << c.name << " row " << i;
            if (c.bytes[i] == 1) {
                EXPECT_DOUBLE_EQ(log->m_values[i], std::log10(c.values[i]));
            }
        }
    }
    CGraphColumnPtr source = makeColumn({0, 1e-6, 1}, u"Frequency"_qs);
    CGraphColumnPtr db = CGraphColumnPtr::Adopt(CGraphColumn::Create(3));
    bool hasInvalid = false;
    DbOf(source.Get(), db.Get(), 3, hasInvalid);
    EXPECT_TRUE(hasInvalid); // no DC exception for dB
    EXPECT_DOUBLE_EQ(db->m_values[1], 0);
    EXPECT_DOUBLE_EQ(db->m_values[2], 120);
    EXPECT_EQ(db->m_minValue, 0);
    EXPECT_EQ(db->m_maxValue, 120);
    EXPECT_EQ(db->m_kind & 8u, 8u);
}

TEST(GraphData, EnsureRowsTargets)
{
    const struct
    {
        int capacity, growBy, row;
        bool ok;
        int newCapacity;
    } cases[] = {
        {1000, 1000, 999, true, 1000},   // below capacity: nothing to do
        {1000, 1000, 1000, true, 3000},  // the target must exceed row + step
        {1000, 0, 1500, true, 3000},     // growBy below 1 counts as 1000
        {0, 100, 0, true, 200},
        {0, 100, 250, true, 400},
        {10000, 1000, 10000, true, 20000}, // the step widens to half the capacity
        {1000, 1000, -1, true, 1000},
    };
    for (const auto &c : cases) {
        CGraphData data;
        data.Create(1, 2, c.capacity, c.growBy);
        data->m_growBy = c.growBy;
        EXPECT_EQ(data.EnsureRows(c.row), c.ok) << c.row;
        EXPECT_EQ(data.Capacity(), c.newCapacity) << c.capacity << " " << c.row;
        EXPECT_EQ(data.GetColumn(1)->m_count, c.newCapacity);
    }
    CGraphData empty; // no columns: nothing to grow
    EXPECT_TRUE(empty.EnsureRows(5000));
    EXPECT_EQ(empty.Capacity(), 0);
}

TEST(GraphData, AppendRowsWritesCellsAndExtents)
{
    CGraphData data;
    data.Create(1, 3, 0, 0);
    EXPECT_EQ(data.GetColumn(0)->m_values, nullptr); // capacity 0 allocates no arrays

    // Row 0 with an invalid cell in column 1 leaves that column's extents at 0.
    const double rows1[] = {1, 5, -1, 2, 7, -3};
    const std::uint8_t valid1[] = {1, 2, 1, 1, 1, 1};
    EXPECT_EQ(data.AppendRows(rows1, valid1, 0, 3, 0, 2), 2);
    EXPECT_EQ(data.Capacity(), 1000); // grown by one step of 1000 rows
    EXPECT_EQ(data.RowCount(), 2);
    const CGraphColumn *c1 = data.GetColumn(1);
    EXPECT_EQ(c1->m_valid[0], 2);
    EXPECT_EQ(c1->m_values[1], 7);
    EXPECT_EQ(c1->m_minValue, 0);
    EXPECT_EQ(c1->m_maxValue, 7);
    EXPECT_EQ(data.GetColumn(2)->m_minValue, -3);
    EXPECT_EQ(data.GetColumn(2)->m_maxValue, -1);

    // Columns 1 and 2 only, all valid, from row 2 on; column 0 stays missing.
    const double rows2[] = {10, 20, -10, -20};
    EXPECT_EQ(data.AppendRows(rows2, nullptr, 1, 2, 2, 2), 2);
    EXPECT_EQ(data.RowCount(), 4);
    EXPECT_EQ(data.GetColumn(0)->m_valid[3], 0);
    EXPECT_EQ(data.GetColumn(1)->m_maxValue, 10);
    EXPECT_EQ(data.GetColumn(2)->m_minValue, -20);
    EXPECT_EQ(data->m_generation, 0);

    // Rewriting rows that exist raises the generation.
    EXPECT_EQ(data.AppendRows(rows2, nullptr, 1, 2, 0, 1), 1);
    EXPECT_EQ(data->m_generation, 1);
    EXPECT_EQ(data.RowCount(), 4);
}

TEST(GraphData, AppendRowsRefusesBadArguments)
{
    CGraphData data;
    data.Create(1, 3, 10, 0);
    const double v[8] = {};
    const struct
    {
        const double *values;
        int firstColumn, columnsInRow, firstRow, rows;
    } cases[] = {
        {v, -1, 1, 0, 1}, {v, 3, 1, 0, 1}, {v, 2, 2, 0, 1}, {v, 0, 0, 0, 1},
        {v, 0, 1, 0, 0},  {v, 0, 1, -1, 1}, {nullptr, 0, 1, 0, 1}, {v, 0, 1, 2147483000, 1000},
    };
    for (const auto &c : cases)
        EXPECT_EQ(data.AppendRows(c.values, nullptr, c.firstColumn, c.columnsInRow, c.firstRow, c.rows), 0);
    EXPECT_EQ(data.RowCount(), 0);
    EXPECT_EQ(data.Capacity(), 10);
}

TEST(GraphData, GrowKeepsRowsNamesAndLogColumns)
{
    CGraphData data;
    data.Create(1, 2, 4, 0);
    data.GetColumn(0)->m_name = u"Time"_qs;
    data.GetColumn(1)->m_name = u"U"_qs;
    const double rows[] = {1, 10, 2, -5, 3, 1000};
    ASSERT_EQ(data.AppendRows(rows, nullptr, 0, 2, 0, 3), 3);
    CGraphColumn *log = data.EnsureLogColumn(1);
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(log->m_valid[1], 2);
    EXPECT_EQ(log->m_hasInvalid, 1u);
    EXPECT_DOUBLE_EQ(log->m_maxValue, 3);

    CGraphColumnPtr old(data.GetColumn(1));
    ASSERT_TRUE(data.Grow(100));
    EXPECT_NE(data.GetColumn(1), old.Get());  // a new column...
    EXPECT_EQ(old->m_values[2], 1000);         // ...and the old one still readable
    EXPECT_EQ(data.GetColumn(1)->m_name, u"U"_qs);
    EXPECT_EQ(data.GetColumn(1)->m_values[2], 1000);
    EXPECT_EQ(data.GetColumn(1)->m_maxValue, 1000);

    // Appending goes on into the grown log column.
    const double more[] = {4, 100};
    ASSERT_EQ(data.AppendRows(more, nullptr, 0, 2, 3, 1), 1);
    log = data->GetLogColumn(1);
    EXPECT_EQ(log->m_count, 100);
    EXPECT_DOUBLE_EQ(log->m_values[3], 2);
    EXPECT_DOUBLE_EQ(log->m_minValue, 1);

    // Shrinking keeps what fits.
    ASSERT_TRUE(data.Grow(2));
    EXPECT_EQ(data.RowCount(), 2);
    EXPECT_EQ(data.GetColumn(1)->m_count, 2);
}

TEST(GraphData, GrowResizesUnsharedColumnsWhereTheyAre)
{
    CGraphData data;
    data.Create(1, 1, 3, 0);
    const double rows[] = {7, 8, 9};
    ASSERT_EQ(data.AppendRows(rows, nullptr, 0, 1, 0, 3), 3);
    data.GetColumn(0)->m_kind = 2; // the column owns its host object
    data.GetColumn(0)->m_hostObject = new CGraphColumnHost;
    const CGraphColumn *before = data.GetColumn(0);
    ASSERT_TRUE(data.Grow(5000));
    const CGraphColumn *after = data.GetColumn(0);
    EXPECT_EQ(after, before); // nobody else held it
    EXPECT_EQ(after->m_count, 5000);
    EXPECT_NE(after->m_hostObject, nullptr);
    EXPECT_EQ(after->m_values[2], 9);
    EXPECT_EQ(after->m_valid[2], 1);
    for (int r = 3; r < 5010; ++r)
        ASSERT_EQ(after->m_valid[r], 0) << r; // new rows are missing
    EXPECT_EQ(after->m_maxValue, 9);
    // Appending leaves a gap of missing rows.
    ASSERT_EQ(data.AppendRows(rows, nullptr, 0, 1, 10, 1), 1);
    EXPECT_EQ(after->m_valid[5], 0);
    EXPECT_EQ(data.RowCount(), 11);
}

TEST(GraphData, SwapNameLookupAndIds)
{
    CGraphData data;
    data.Create(1, 3, 5, 0);
    data.GetColumn(0)->m_name = u"Time"_qs;
    data.GetColumn(1)->m_name = u"Ua"_qs;
    data.GetColumn(2)->m_name = u"ua"_qs;
    EXPECT_EQ(data.ColumnByName(u"UA"_qs), 1);
    EXPECT_EQ(data.ColumnByName(u"UA"_qs, 2), 2);
    EXPECT_EQ(data.ColumnByName(u"none"_qs), -1);
    ASSERT_NE(data.EnsureLogColumn(2), nullptr);
    EXPECT_TRUE(data.SwapColumns(0, 2));
    EXPECT_EQ(data.GetColumn(0)->m_name, u"ua"_qs);
    EXPECT_NE(data->GetLogColumn(0), nullptr);
    EXPECT_EQ(data->GetLogColumn(2), nullptr);
    EXPECT_FALSE(data.SwapColumns(0, 3));
    EXPECT_EQ(data.EnsureLogColumn(7), nullptr);

    data.GetColumn(1)->m_id = 42;
    data.AssignIds();
    EXPECT_EQ(data.GetColumn(1)->m_id, 42u); // an id never changes
    const std::uint64_t a = data.GetColumn(0)->m_id, b = data.GetColumn(2)->m_id;
    EXPECT_NE(a, 0u);
    EXPECT_NE(b, 0u);
    EXPECT_NE(a, b);
    // The name's code units sum into bits 32-39: "ua" is 117 + 97.
    EXPECT_EQ((a >> 32) & 0xFF, (117u + 97u) & 0xFF);
    // The sequence is one apart.
    EXPECT_EQ(((b >> 56) - (a >> 56)) & 0xFF, 1u);
}

TEST(GraphData, HandlesShareAndTheTableTracksThem)
{
    const int before = OpenGraphDataCount();
    CGraphData found;
    int slot = 0;
    {
        CGraphData a;
        a.Create(1, 1, 10, 0);
        CGraphData b = a;
        EXPECT_EQ(a.Data(), b.Data());
        EXPECT_EQ(a->m_refCount.load(), 2);
        slot = a->m_globalSlot;
        EXPECT_GE(slot, 1);
        ASSERT_TRUE(OpenGraphDataAt(slot, found));
        EXPECT_EQ(found.Data(), a.Data());
        EXPECT_EQ(OpenGraphDataCount(), before + 1); // the empty set that Create replaced is gone
    }
    // The handle from the table keeps the data alive.
    EXPECT_EQ(found->m_refCount.load(), 1);
    found = CGraphData();
    CGraphData again;
    EXPECT_FALSE(OpenGraphDataAt(slot, again) && again.Data()->m_columnCount == 1);
    EXPECT_FALSE(OpenGraphDataAt(0, again));
}

TEST(GraphData, ScopeForm)
{
    CGraphData data;
    data.Create(2, 3, 20, 0);
    ASSERT_TRUE(data.IsScope());
    CScopeData_Data *scope = data->AsScope();
    ASSERT_NE(scope, nullptr);
    EXPECT_EQ(scope->GetKind(), 2);
    EXPECT_EQ(scope->m_channels.size(), 3u);
    // Two channels after the time base, a record of 4 + 4 + 24 bytes each.
    EXPECT_EQ(scope->m_channelLog.GetLength(), 2 * 32);
    std::int32_t kind = 0, channel = 0;
    CBufferIO log = scope->m_channelLog;
    log.m_mode = CBufferIO::ModeRead;
    log.m_cursor = log.m_data + 32;
    log.Transfer(kind);
    log.Transfer(channel);
    EXPECT_EQ(kind, 1);
    EXPECT_EQ(channel, 2);
    ASSERT_TRUE(data.Grow(50));
    EXPECT_EQ(scope->m_minColumns[2]->m_count, 50);
    EXPECT_EQ(scope->m_rawInput[0]->m_count, 50);
}

TEST(GraphData, SnapshotHoldsColumnsAcrossGrowth)
{
    CGraphData data;
    data.Create(1, 2, 4, 0);
    const double rows[] = {1, 2, 3, 4};
    data.AppendRows(rows, nullptr, 0, 2, 0, 2);
    CGraphDataSnapshot snapshot;
    snapshot.Take(data, {1, 5});
    EXPECT_EQ(snapshot.RowCount(), 2);
    ASSERT_EQ(snapshot.Size(), 2);
    EXPECT_EQ(snapshot.Column(1), nullptr);
    const CGraphColumn *held = snapshot.Column(0);
    EXPECT_EQ(held->RefCount(), 2);
    data.Grow(1000);
    EXPECT_EQ(held->RefCount(), 1);
    EXPECT_EQ(held->m_values[1], 4);
    EXPECT_EQ(snapshot.At(0).maxValue, 4);
    snapshot.Release();
    EXPECT_EQ(snapshot.Size(), 0);
}

// The row number column of an X axis over the rows: found by its name, or
// added at the end and kept numbered through appends, growth and swaps.
TEST(GraphData, RowNumberColumnNumbersEveryRow)
{
    const struct
    {
        const char *name;
        const char *named; // a column already called so, or null
        int before, after; // rows appended before and after it is asked for
        int expected;      // its index
    } cases[] = {
        {"added to an empty set", nullptr, 0, 5, 2},
        {"numbered before and after, through growth", nullptr, 3, 2500, 2},
        {"taken by its name, whatever the case", "INDEX", 4, 0, 1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CGraphData data;
        data.Create(1, 2, 4, 0);
        if (c.named)
            data.GetColumn(1)->m_name = QString::fromLatin1(c.named);
        auto append = [&](int from, int rows) {
            for (int r = from; r < from + rows; ++r) {
                const double row[2] = {0.5 * r * r, 2.0};
                ASSERT_EQ(data.AppendRows(row, nullptr, 0, 2, r, 1), 1);
            }
        };
        append(0, c.before);
        ASSERT_NE(data.EnsureLogColumn(0), nullptr); // the log table widens too
        ASSERT_EQ(data.EnsureRowNumberColumn(), c.expected);
        ASSERT_EQ(data.EnsureRowNumberColumn(), c.expected) << "asked again: the same column";
        EXPECT_EQ(data.ColumnCount(), 3 - (c.named ? 1 : 0));
        if (c.named)
            continue;
        append(c.before, c.after);
        const int rows = c.before + c.after;
        const CGraphColumn *numbers = data.GetColumn(c.expected);
        EXPECT_EQ(numbers->m_name, QStringLiteral("Index"));
        for (int r = 0; r < rows; ++r)
            ASSERT_TRUE(numbers->m_valid[r] == 1 && numbers->m_values[r] == r + 1.0) << r;
        EXPECT_EQ(numbers->m_maxValue, rows);
        EXPECT_EQ(data.GetColumn(0)->m_values[2], 2.0); // the others keep their cells
        EXPECT_NE(data->GetLogColumn(0), nullptr);
        // Swapped to the front, it is still the one numbered.
        ASSERT_TRUE(data.SwapColumns(0, c.expected));
        const double row[2] = {1, 2};
        ASSERT_EQ(data.AppendRows(row, nullptr, 1, 2, rows, 1), 1);
        EXPECT_EQ(data.GetColumn(0)->m_values[rows], rows + 1.0);
    }
    CGraphData scope(true);
    scope.Create(2, 2, 4, 0);
    EXPECT_EQ(scope.EnsureRowNumberColumn(), -1);
    EXPECT_EQ(scope.ColumnCount(), 2);
}
