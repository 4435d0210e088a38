// A data text file's bytes through the reader, into a graph with a curve for
// each column, and one draw pass into a picture.  Checks what the reader
// promises: every cell has a validity byte of 0, 1 or 2, the counts of bad
// cells match the bytes, valid values are finite and inside their column's
// extents.
#include "graphdata/draw/graphdraw.h"
#include "graphdata/exchange/textimport.h"
#include "graphdata/graphcurve.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

void check(const CGraphData &data, const CTextImportReport &report)
{
    if (data.RowCount() != report.rows || data.RowCount() < 1)
        std::abort();
    std::int64_t invalid = 0, missing = 0;
    for (int c = 0; c < data.ColumnCount(); ++c) {
        const CGraphColumn *column = data.GetColumn(c);
        for (int r = 0; r < data.RowCount(); ++r) {
            switch (column->m_valid[r]) {
            case 0:
                ++missing;
                break;
            case 1:
                if (!std::isfinite(column->m_values[r]) || column->m_values[r] < column->m_minValue ||
                    column->m_values[r] > column->m_maxValue)
                    std::abort();
                break;
            case 2:
                ++invalid;
                break;
            default:
                std::abort();
            }
        }
    }
    if (invalid != report.invalidCells || missing != report.missingCells)
        std::abort();
    if (report.HasBadCells() == report.firstBadLines.empty())
        std::abort();
}

} // namespace

// The font system keeps caches for the life of the process.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libfontconfig\nleak:libfreetype\n";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz_textimport";
    static char *argv[] = {name, nullptr};
    static QGuiApplication *app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QGuiApplication(argc, argv);
    }();
    (void)app;

    CGraphData data;
    CTextImportReport report;
    if (ImportTextBytes(reinterpret_cast<const char *>(bytes), size, data, report) != TextImport::Read)
        return 0;
    check(data, report);

    CGraphCurve graph(1, 96);
    graph.m_data = data;
    graph.m_backColor = 0xFFFFFF;
    bool changed;
    const int curves = std::min(data.ColumnCount(), 9);
    for (int c = 1; c < curves; ++c)
        graph.AddCurve(c, 0, false, changed);
    if (curves == 1)
        graph.AddCurve(0, 0, false, changed);
    graph.FitRanges();
    QImage image(320, 200, QImage::Format_RGB32);
    QPainter painter(&image);
    CDrawRequest request;
    request.target = image.rect();
    DrawGraph(graph, painter, request);
    return 0;
}
