// Every text form of the exports, read back by the program's own reader of
// data text files and compared with what was written.
#include "graphdata/exchange/savefilters.h"
#include "graphdata/exchange/textexport.h"
#include "graphdata/exchange/textimport.h"
#include "graphdata/graphcurve.h"
#include "graphdata/spectrum/spectrumjob.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace {

// Three columns of awkward values: X rising, Y over many decades.
void fill(CGraphCurve &graph, int rows)
{
    graph.m_data.Create(1, 3, rows, 0);
    graph.m_data.GetColumn(0)->m_name = u"Time"_qs;
    graph.m_data.GetColumn(1)->m_name = u"U1"_qs;
    graph.m_data.GetColumn(2)->m_name = u"I2"_qs;
    std::vector<double> v;
    for (int r = 0; r < rows; ++r)
        v.insert(v.end(), {r / 3.0, std::sin(r * 0.91) * std::pow(10.0, r % 30 - 15), -r * 1e-7 + 0.1});
    graph.m_data.AppendRows(v.data(), nullptr, 0, 3, 0, rows);
    bool changed;
    graph.AddCurve(1, 0, false, changed);
    graph.AddCurve(2, 0, false, changed);
    graph.FitRanges();
}

bool sameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

} // namespace

TEST(ExportImport, TextFormsReadBackByTheTextReader)
{
    const struct
    {
        const char *name;
        const char *file;
        int kind;
        bool spectrum;
        int firstColumn;  // columns before the data (the index of spectrum files)
        double tolerance; // 0: the same bits
    } cases[] = {
        {"tab separated", "t.txt", SaveKindTab, false, 0, 0},
        {"comma separated", "c.csv", SaveKindComma, false, 0, 0},
        {"fixed columns, nine digits", "f.txt", SaveKindText, false, 0, 1e-9},
        {"spectrum, fixed", "s.fft", SaveKindText, true, 1, 1e-9},
        {"spectrum, tab separated", "s.txt", SaveKindTab, true, 1, 0},
        {"spectrum, comma separated", "s.csv", SaveKindComma, true, 1, 0},
    };
    QTemporaryDir dir;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CGraphCurve graph;
        fill(graph, 300);
        if (c.spectrum) {
            ASSERT_EQ(SetSpectrumMode(graph, true), 1);
        }
        const QString path = dir.filePath(QString::fromLatin1(c.file));
        QString error;
        ASSERT_EQ(ExportGraphs({&graph}, path, c.kind, &error), 1) << error.toStdString();

        CGraphData data;
        CTextImportReport report;
        ASSERT_EQ(ImportTextFile(path, data, report), TextImport::Read) << report.error.toStdString();
        EXPECT_FALSE(report.HasBadCells());
        ASSERT_EQ(data.ColumnCount(), 3 + c.firstColumn);

        // What was shown: X, then each curve.
        std::vector<const CGraphColumn *> shown;
        if (c.spectrum) {
            shown = {graph.m_frequencyColumn.Get(), graph.Curve(0)->m_spectrumMagnitude.Get(),
                     graph.Curve(1)->m_spectrumMagnitude.Get()};
        } else {
            shown = {graph.m_data.GetColumn(0), graph.m_data.GetColumn(1), graph.m_data.GetColumn(2)};
        }
        const QString names[] = {c.spectrum ? u"Frequency"_qs : u"Time"_qs, u"U1"_qs, u"I2"_qs};
        for (int k = 0; k < 3; ++k) {
            const CGraphColumn *read = data.GetColumn(k + c.firstColumn);
            EXPECT_EQ(read->m_name, names[k]);
            const int rows = c.spectrum ? shown[k]->m_count : graph.m_data.RowCount();
            ASSERT_EQ(data.RowCount(), rows);
            for (int r = 0; r < rows; ++r) {
                const double want = shown[k]->m_values[r], got = read->m_values[r];
                if (c.tolerance == 0)
                    ASSERT_TRUE(sameBits(got, want)) << k << " " << r << ": " << got << " " << want;
                else
                    ASSERT_LE(std::abs(got - want), c.tolerance * std::abs(want) + 1e-300) << k << " " << r;
            }
        }
        if (c.firstColumn == 1) {
            const CGraphColumn *index = data.GetColumn(0);
            EXPECT_EQ(index->m_values[0], 1);
            EXPECT_EQ(index->m_values[data.RowCount() - 1], data.RowCount());
        }
    }
}

// Rows that are missing or invalid come back as such, in every form.
TEST(ExportImport, MissingAndInvalidRowsComeBack)
{
    CGraphColumnPtr a = CGraphColumnPtr::Adopt(CGraphColumn::Create(4, u"A"_qs));
    CGraphColumnPtr b = CGraphColumnPtr::Adopt(CGraphColumn::Create(2, u"B"_qs));
    const double av[] = {1, 2, 3, 4};
    const std::uint8_t avalid[] = {1, 0, 2, 1};
    for (int i = 0; i < 4; ++i) {
        a->m_values[i] = av[i];
        a->m_valid[i] = avalid[i];
    }
    b->m_values[0] = 5;
    b->m_valid[0] = 1;
    b->m_values[1] = 0;
    b->m_valid[1] = 2;
    const CGraphColumn *list[] = {a.Get(), b.Get()};
    // What the reader should give: A as written, B with rows 2 and 3
    // missing (past its end).
    const std::uint8_t wantA[] = {1, 0, 2, 1}, wantB[] = {1, 2, 0, 0};
    QTemporaryDir dir;
    for (int mode : {ExportFixed, ExportTab, ExportComma}) {
        SCOPED_TRACE(mode);
        const QString path = dir.filePath(u"m.txt"_qs);
        ASSERT_EQ(SaveAsText(path, list, 2, 4, mode), 1);
        CGraphData data;
        CTextImportReport report;
        ASSERT_EQ(ImportTextFile(path, data, report), TextImport::Read);
        ASSERT_EQ(data.ColumnCount(), 2);
        ASSERT_EQ(data.RowCount(), 4);
        for (int r = 0; r < 4; ++r) {
            EXPECT_EQ(data.GetColumn(0)->m_valid[r], wantA[r]) << r;
            EXPECT_EQ(data.GetColumn(1)->m_valid[r], wantB[r]) << r;
        }
        EXPECT_EQ(data.GetColumn(0)->m_values[3], 4);
        EXPECT_EQ(data.GetColumn(1)->m_values[0], 5);
    }
}
