// The drawing pass while a producer thread appends rows: the pass takes the
// data lock only for its snapshot and draws new rows incrementally; in the
// end the picture's polyline is the one a single pass over all rows makes.
#include "graphdata/draw/graphdraw.h"
#include "graphdata/draw/polylinecache.h"
#include "graphdata/graphcurve.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

TEST(GraphDrawThreads, DrawingFollowsAProducer)
{
    const int blocks = 200, blockRows = 1000, rows = blocks * blockRows;
    CGraphCurve graph;
    graph.m_data.Create(1, 2, 0, 4096); // grows while it fills
    graph.m_data->m_ordered = 1;
    graph.m_backColor = 0xFFFFFF;
    bool changed;
    graph.AddCurve(1, 0, false, changed);
    graph.m_xViewMin = 0;
    graph.m_xViewMax = rows;
    graph.Range(0)->m_viewMin = -1.2;
    graph.Range(0)->m_viewMax = 1.2;

    std::atomic<bool> done{false};
    std::thread producer([&] {
        std::vector<double> block(2 * std::size_t(blockRows));
        for (int b = 0; b < blocks; ++b) {
            for (int i = 0; i < blockRows; ++i) {
                const int row = b * blockRows + i;
                block[2 * std::size_t(i)] = row;
                block[2 * std::size_t(i) + 1] = std::sin(row * 1e-4) + 0.1 * std::sin(row * 0.3);
            }
            graph.m_data.AppendRows(block.data(), nullptr, 0, 2, b * blockRows, blockRows);
        }
        done = true;
    });

    QImage image(600, 300, QImage::Format_RGB32);
    int incremental = 0;
    auto draw = [&](unsigned flags) {
        QPainter p(&image);
        CDrawRequest request;
        request.flags = flags;
        request.target = image.rect();
        const CDrawResult r = DrawGraph(graph, p, request);
        incremental += r.kind == CDrawResult::Incremental ? 1 : 0;
    };
    draw(DrawFull);
    while (!done)
        draw(0);
    producer.join();
    draw(0);
    EXPECT_EQ(graph.m_lastDrawnRow, rows - 1);

    const auto *cache = static_cast<const CPolylinePixels *>(graph.Curve(0)->LinePixels());
    ASSERT_NE(cache, nullptr);
    const std::vector<QPoint> drawn = cache->m_points;
    const std::vector<int> runs = cache->m_runLengths;
    graph.ClearCurveCaches();
    draw(DrawFull);
    cache = static_cast<const CPolylinePixels *>(graph.Curve(0)->LinePixels());
    EXPECT_EQ(drawn, cache->m_points);
    EXPECT_EQ(runs, cache->m_runLengths);
    RecordProperty("incremental passes", incremental);
}
