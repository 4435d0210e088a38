// The data text reader in parallel blocks against one block, on a file big
// enough to be cut into blocks (also run under ThreadSanitizer).
#include "graphdata/exchange/textimport.h"

#include <QByteArray>

#include "tests/graphdata/exchange/bigtextfile.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using bigtextfile::bigFile;
using bigtextfile::kBigRows;

TEST(TextImport, ParallelBlocksReadAsOneBlockDoes)
{
    const QByteArray text = bigFile();
    ASSERT_GT(text.size(), 8 << 20);
    CGraphData one, many;
    CTextImportReport oneReport, manyReport;
    CTextImportOptions single;
    single.threads = 1;
    CTextImportOptions parallel;
    parallel.threads = 3;
    ASSERT_EQ(ImportTextBytes(text.constData(), std::size_t(text.size()), one, oneReport, single), TextImport::Read);
    ASSERT_EQ(ImportTextBytes(text.constData(), std::size_t(text.size()), many, manyReport, parallel), TextImport::Read);
    ASSERT_EQ(one.RowCount(), kBigRows);
    ASSERT_EQ(many.RowCount(), one.RowCount());
    EXPECT_EQ(manyReport.invalidCells, oneReport.invalidCells);
    EXPECT_EQ(manyReport.missingCells, oneReport.missingCells);
    EXPECT_EQ(manyReport.firstBadLines, oneReport.firstBadLines);
    EXPECT_EQ(oneReport.invalidCells, (kBigRows - 1) / 7919 + 1);
    EXPECT_EQ(oneReport.missingCells, oneReport.invalidCells);
    for (int c = 0; c < 3; ++c) {
        const CGraphColumn *a = one.GetColumn(c), *b = many.GetColumn(c);
        EXPECT_EQ(std::memcmp(a->m_valid, b->m_valid, std::size_t(one.RowCount())), 0) << c;
        EXPECT_EQ(a->m_minValue, b->m_minValue);
        EXPECT_EQ(a->m_maxValue, b->m_maxValue);
        for (int r = 0; r < one.RowCount(); ++r) {
            if (a->m_valid[r] == 1 && a->m_values[r] != b->m_values[r]) {
                ADD_FAILURE() << "column " << c << " row " << r;
                break;
            }
        }
    }
    // Row r holds the file's value r, holes of the skipped lines closed.
    EXPECT_EQ(many.GetColumn(0)->m_values[kBigRows - 1], kBigRows - 1);
    EXPECT_EQ(many.GetColumn(1)->m_values[123457], 123457 * 0.5);
}

} // namespace
