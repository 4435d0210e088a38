// The read-out's complex values: the text, the row of a spectrum a
// frequency falls on, and the window's read-out over a spectrum curve.
#include "graphwnd/graphreadout.h"

#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/polylinecache.h"
#include "graphdata/graphcurve.h"
#include "graphdata/spectrum/spectrumjob.h"
#include "graphwnd/graphwnd.h"
#include "support/languagestring.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace {

TEST(GraphReadout, ComplexValueText)
{
    const struct
    {
        double re, im;
        const char *text;
    } cases[] = {
        {1, 2, "1 +j 2"},
        {0.5, -2, "0.5 +j -2"},
        {-3e-9, 0, "-3e-09 +j 0"},
        {1234567, 1e21, "1.23457e+06 +j 1e+21"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(ComplexValueText(c.re, c.im), QString::fromLatin1(c.text)) << c.text;
}

CGraphColumnPtr column(const std::vector<double> &values, int invalidRow = -1)
{
    CGraphColumnPtr c = CGraphColumnPtr::Adopt(CGraphColumn::Create(int(values.size())));
    for (std::size_t i = 0; i < values.size(); ++i) {
        c->m_values[i] = values[i];
        c->m_valid[i] = int(i) == invalidRow ? 0 : 1;
    }
    return c;
}

// Frequencies 0, 10, 20, 30 with results k + j(10k) in row k; row 2 of the
// imaginary part missing.
TEST(GraphReadout, SpectrumValueIsTheNearestRow)
{
    CGraphCurve g;
    g.m_spectrumMode = 1;
    g.m_frequencyColumn = column({0, 10, 20, 30});
    CCurveInfo curve;
    curve.m_colLabel = QStringLiteral("U");
    curve.m_spectrumReal = column({0, 1, 2, 3});
    curve.m_spectrumImag = column({0, 10, 20, 30}, 2);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct
    {
        double frequency;
        bool found;
        double re, im, at;
    } cases[] = {
        {10, true, 1, 10, 10},   {14.9, true, 1, 10, 10}, {15.1, false, 0, 0, 0}, // row 2 lacks its imaginary part
        {26, true, 3, 30, 30},   {-5, true, 0, 0, 0},     {1e9, true, 3, 30, 30},
        {nan, false, 0, 0, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.frequency);
        double re = -1, im = -1, at = -1;
        ASSERT_EQ(SpectrumValueAt(g, curve, c.frequency, re, im, at), c.found);
        if (c.found) {
            EXPECT_EQ(re, c.re);
            EXPECT_EQ(im, c.im);
            EXPECT_EQ(at, c.at);
            EXPECT_EQ(SpectrumReadoutText(g, curve, c.frequency),
                      QStringLiteral("U (f=%1): ").arg(c.at) + ComplexValueText(c.re, c.im));
        } else {
            EXPECT_TRUE(SpectrumReadoutText(g, curve, c.frequency).isEmpty());
        }
    }
    // Nothing in time mode, nor for a curve without results.
    double re, im, at;
    CCurveInfo bare;
    EXPECT_FALSE(SpectrumValueAt(g, bare, 10, re, im, at));
    g.m_spectrumMode = 0;
    EXPECT_FALSE(SpectrumValueAt(g, curve, 10, re, im, at));
}

// A real spectrum in the window: over the curve the read-out adds its
// complex result at the frequency under the mouse; off the curve it is the
// plain position.
TEST(GraphReadout, WindowShowsTheComplexValueOverASpectrumCurve)
{
    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
    const int n = 256;
    CGraphData data;
    data.Create(1, 2, n, 0);
    data.GetColumn(0)->m_name = QStringLiteral("t");
    data.GetColumn(1)->m_name = QStringLiteral("U");
    std::vector<double> rows;
    for (int i = 0; i < n; ++i)
        rows.insert(rows.end(), {i * 1e-3, 2 * std::cos(2 * std::numbers::pi * 50 * i * 1e-3) + 0.5});
    data.AppendRows(rows.data(), nullptr, 0, 2, 0, n);
    data->m_ordered = 1;
    CGraphWnd wnd;
    wnd.resize(640, 480);
    wnd.SetGraphDataCopy(data);
    CGraphCurve &g = *wnd.GetGraphData();
    ASSERT_EQ(g.CurveCount(), 1); // the window shows the column
    ASSERT_EQ(SetSpectrumMode(g, true), 1);
    wnd.show();
    wnd.grab();
    const auto *pixels = static_cast<const CPolylinePixels *>(g.Curve(0)->LinePixels());
    ASSERT_TRUE(pixels && !pixels->m_points.empty());

    int checked = 0;
    for (std::size_t k = 0; k < pixels->m_points.size(); k += pixels->m_points.size() / 7 + 1) {
        const QPoint on = pixels->m_points[k];
        if (!EdgesToQRect(g.m_plotRect).contains(on) || wnd.CurveAt(on) != 0)
            continue;
        CGraphPosition position;
        ASSERT_TRUE(GraphPositionAt(g, on, position));
        double re, im, at;
        ASSERT_TRUE(SpectrumValueAt(g, *g.Curve(0), position.x, re, im, at));
        EXPECT_EQ(wnd.PositionTextAt(on), GraphPositionText(position) + QStringLiteral("; ") +
                                              SpectrumReadoutText(g, *g.Curve(0), position.x));
        EXPECT_TRUE(wnd.PositionTextAt(on).contains(QStringLiteral(" +j ")));
        ++checked;
    }
    EXPECT_GT(checked, 0);
    // The top left corner of the plot is far from the curve.
    const QPoint off = EdgesToQRect(g.m_plotRect).topLeft() + QPoint(2, 2);
    ASSERT_EQ(wnd.CurveAt(off), -1);
    EXPECT_FALSE(wnd.PositionTextAt(off).contains(QStringLiteral("+j")));
    // The 50 Hz row holds the cosine, as a real part of the right size.
    double re, im, at;
    ASSERT_TRUE(SpectrumValueAt(g, *g.Curve(0), 50, re, im, at));
    EXPECT_GT(std::hypot(re, im), 0.5);
}

} // namespace
