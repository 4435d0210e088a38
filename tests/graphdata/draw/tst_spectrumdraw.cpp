// A graph in spectrum mode, drawn into an image: the curves are their
// spectra over the frequency, in the form their axes ask for.
#include "graphdata/draw/graphdraw.h"
#include "graphdata/draw/polylinecache.h"
#include "graphdata/emi/emilimits.h"
#include "graphdata/graphcurve.h"
#include "graphdata/spectrum/spectrumjob.h"
#include "support/languagestring.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace {

class SpectrumDraw : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }
};

// 256 rows of Time, `step` seconds apart, and U1 = signal(t), drawn as one
// curve on white.
void fill(CGraphCurve &graph, double step, double (*signal)(double))
{
    graph.m_data.Create(1, 2, 256, 0);
    graph.m_data.GetColumn(0)->m_name = u"Time"_qs;
    graph.m_data.GetColumn(1)->m_name = u"U1"_qs;
    std::vector<double> v;
    for (int r = 0; r < 256; ++r)
        v.insert(v.end(), {r * step, signal(r * step)});
    graph.m_data.AppendRows(v.data(), nullptr, 0, 2, 0, 256);
    bool changed;
    graph.AddCurve(1, 0, false, changed);
    graph.m_backColor = 0xFFFFFF;
}

// 0.01 s apart, a peak at 12.5 Hz.
void fill(CGraphCurve &graph)
{
    fill(graph, 0.01, [](double t) { return 1 + 2 * std::sin(2 * std::numbers::pi * 12.5 * t); });
}

// The whole graph drawn into the image.
CDrawResult drawInto(CGraphCurve &graph, QImage &image)
{
    QPainter painter(&image);
    CDrawRequest request;
    request.flags = DrawFull;
    request.target = image.rect();
    return DrawGraph(graph, painter, request);
}

const CPolylinePixels *linePixels(const CGraphCurve &graph, int curve = 0)
{
    return static_cast<const CPolylinePixels *>(graph.Curve(curve)->LinePixels());
}

} // namespace

TEST_F(SpectrumDraw, ThePeakStandsAtItsFrequencyInEveryForm)
{
    const struct
    {
        const char *name;
        int logX, logY, db;
    } cases[] = {
        {"linear", 0, 0, 0},
        {"log frequency: the DC row is left out without a warning", 1, 0, 0},
        {"log magnitude", 0, 1, 0},
        {"dB", 0, 0, 1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CGraphCurve graph;
        fill(graph);
        graph.m_xLog = c.logX;
        graph.Range(0)->m_logScale = c.logY;
        graph.Range(0)->m_dbScale = c.db;
        ASSERT_EQ(SetSpectrumMode(graph, true), 1);

        QImage image(480, 320, QImage::Format_RGB32);
        EXPECT_FALSE(drawInto(graph, image).invalidRows);
        const CPolylinePixels *cache = linePixels(graph);
        ASSERT_NE(cache, nullptr);
        ASSERT_GE(cache->m_points.size(), 10u);

        // The highest point of the line, back in hertz.
        QPoint top = cache->m_points.front();
        for (const QPoint &p : cache->m_points)
            if (p.y() < top.y())
                top = p;
        const CIntRect &plot = graph.m_plotRect;
        const double x =
            graph.m_xViewMin + (top.x() - plot.left) * (graph.m_xViewMax - graph.m_xViewMin) / (plot.right - plot.left);
        const double hertz = c.logX ? std::pow(10.0, x) : x;
        const double bin = graph.m_frequencyColumn->m_values[1];
        EXPECT_NEAR(hertz, 12.5, 1.5 * bin);
        // The line stays inside the plot.
        for (const QPoint &p : cache->m_points) {
            ASSERT_GE(p.x(), plot.left);
            ASSERT_LE(p.x(), plot.right);
            ASSERT_GE(p.y(), plot.top);
            ASSERT_LE(p.y(), plot.bottom);
        }
    }
}

TEST_F(SpectrumDraw, BackToTimeDrawsTheSamples)
{
    CGraphCurve graph;
    fill(graph);
    ASSERT_EQ(SetSpectrumMode(graph, true), 1);
    ASSERT_EQ(SetSpectrumMode(graph, false), 1);
    QImage image(480, 320, QImage::Format_RGB32);
    drawInto(graph, image);
    const CPolylinePixels *cache = linePixels(graph);
    ASSERT_NE(cache, nullptr);
    // The line runs from 0 s to 2.55 s, not over a few hertz.
    const CIntRect &plot = graph.m_plotRect;
    const double perPixel = (graph.m_xViewMax - graph.m_xViewMin) / (plot.right - plot.left);
    EXPECT_NEAR(graph.m_xViewMin + (cache->m_points.front().x() - plot.left) * perPixel, 0, 2 * perPixel);
    EXPECT_NEAR(graph.m_xViewMin + (cache->m_points.back().x() - plot.left) * perPixel, 2.55, 2 * perPixel);
    EXPECT_EQ(graph.m_xAxisName, u"Time"_qs);
}

TEST_F(SpectrumDraw, LimitLinesStandAtTheirLevelsInDb)
{
    // 256 rows 10 ns apart: frequencies up to 50 MHz, so the FCC rows
    // (150 kHz to 30 MHz) lie inside.  The limit's levels are already in dB
    // over a microvolt and are drawn as they are, on a linear and on a log
    // frequency axis.
    for (const int logX : {0, 1}) {
        SCOPED_TRACE(logX);
        CGraphCurve graph;
        fill(graph, 1e-8, [](double t) { return 1000 * std::sin(2 * std::numbers::pi * 1e7 * t); });
        graph.m_xLog = logX;
        graph.Range(0)->m_dbScale = 1;
        const int limitIndex = AddEmiLimitToGraph(graph, 0); // FCC Class A
        ASSERT_EQ(limitIndex, 1);
        ASSERT_TRUE(graph.Curve(limitIndex)->IsLimitLine());
        ASSERT_EQ(SetSpectrumMode(graph, true), 1);

        QImage image(640, 400, QImage::Format_RGB32);
        drawInto(graph, image);

        const CIntRect &plot = graph.m_plotRect;
        const CGraph_Range &y = *graph.Range(0);
        ASSERT_LE(y.m_viewMin, 73);
        ASSERT_GE(y.m_viewMax, 79);
        auto px = [&](double hertz) {
            const double x = logX ? std::log10(hertz) : hertz;
            return plot.left + (x - graph.m_xViewMin) * (plot.right - plot.left) / (graph.m_xViewMax - graph.m_xViewMin);
        };
        auto py = [&](double level) {
            return plot.bottom - (level - y.m_viewMin) * (plot.bottom - plot.top) / (y.m_viewMax - y.m_viewMin);
        };
        // The corners of the line are in the cache where the values say.
        const CPolylinePixels *cache = linePixels(graph, limitIndex);
        ASSERT_NE(cache, nullptr);
        const double corners[][2] = {{500000, 79}, {500000, 73}, {30000000, 73}};
        for (const auto &corner : corners) {
            bool found = false;
            for (const QPoint &p : cache->m_points)
                found = found || (std::abs(p.x() - px(corner[0])) <= 1.5 && std::abs(p.y() - py(corner[1])) <= 1.5);
            EXPECT_TRUE(found) << corner[0] << " Hz, " << corner[1] << " dB";
        }
        // And the picture is black in the middle of the 73 dB segment, in
        // the black of a limit, and not so half a division above it.
        const int midX = int(std::lround(px(logX ? std::sqrt(500000.0 * 30000000.0) : 15250000)));
        const int midY = int(std::lround(py(73)));
        bool black = false;
        for (int dy = -1; dy <= 1; ++dy)
            black = black || (image.pixel(midX, midY + dy) & 0xFFFFFF) == 0;
        EXPECT_TRUE(black);
        const int above = int(std::lround(py(76)));
        EXPECT_NE(image.pixel(midX, above) & 0xFFFFFF, 0u);
    }
}
