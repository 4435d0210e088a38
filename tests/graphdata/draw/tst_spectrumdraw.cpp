// A graph in spectrum mode, drawn into an image: the curves are their
// spectra over the frequency, in the form their axes ask for.
#include "graphdata/draw/graphdraw.h"
#include "graphdata/draw/polylinecache.h"
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

// 256 rows 0.01 s apart; U1 = 1 + 2 sin(2 pi 12.5 t), a peak at 12.5 Hz.
void fill(CGraphCurve &graph)
{
    graph.m_data.Create(1, 2, 256, 0);
    graph.m_data.GetColumn(0)->m_name = u"Time"_qs;
    graph.m_data.GetColumn(1)->m_name = u"U1"_qs;
    std::vector<double> v;
    for (int r = 0; r < 256; ++r)
        v.insert(v.end(), {r * 0.01, 1 + 2 * std::sin(2 * std::numbers::pi * 12.5 * r * 0.01)});
    graph.m_data.AppendRows(v.data(), nullptr, 0, 2, 0, 256);
    bool changed;
    graph.AddCurve(1, 0, false, changed);
    graph.m_backColor = 0xFFFFFF;
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
        QPainter painter(&image);
        CDrawRequest request;
        request.flags = DrawFull;
        request.target = image.rect();
        const CDrawResult result = DrawGraph(graph, painter, request);
        EXPECT_FALSE(result.invalidRows);
        const auto *cache = static_cast<const CPolylinePixels *>(graph.Curve(0)->LinePixels());
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
    QPainter painter(&image);
    CDrawRequest request;
    request.flags = DrawFull;
    request.target = image.rect();
    DrawGraph(graph, painter, request);
    const auto *cache = static_cast<const CPolylinePixels *>(graph.Curve(0)->LinePixels());
    ASSERT_NE(cache, nullptr);
    // The line runs from 0 s to 2.55 s, not over a few hertz.
    const CIntRect &plot = graph.m_plotRect;
    const double perPixel = (graph.m_xViewMax - graph.m_xViewMin) / (plot.right - plot.left);
    EXPECT_NEAR(graph.m_xViewMin + (cache->m_points.front().x() - plot.left) * perPixel, 0, 2 * perPixel);
    EXPECT_NEAR(graph.m_xViewMin + (cache->m_points.back().x() - plot.left) * perPixel, 2.55, 2 * perPixel);
    EXPECT_EQ(graph.m_xAxisName, u"Time"_qs);
}
