// The read-out's complex values: the text, the spectrum row a frequency
// falls on, and the window's read-out over a spectrum curve.
#include "graphwnd/graphreadout.h"

#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/polylinecache.h"
#include "graphdata/graphcurve.h"
#include "graphdata/spectrum/spectrumjob.h"
#include "graphwnd/graphwnd.h"
#include "support/languagestring.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace {

TEST(GraphReadout, ComplexValueText)
{
    EXPECT_EQ(ComplexValueText(1, 2), QStringLiteral("1 +j 2"));
    EXPECT_EQ(ComplexValueText(0.5, -2), QStringLiteral("0.5 +j -2"));
    EXPECT_EQ(ComplexValueText(-3e-9, 1e21), QStringLiteral("-3e-09 +j 1e+21"));
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
    CCurveInfo curve, bare;
    curve.m_colLabel = QStringLiteral("U");
    curve.m_spectrumReal = column({0, 1, 2, 3});
    curve.m_spectrumImag = column({0, 10, 20, 30}, 2);
    const struct
    {
        double frequency;
        int row; // -1: none
    } cases[] = {{10, 1}, {14.9, 1}, {15.1, -1}, {26, 3}, {-5, 0}, {1e9, 3},
                 {std::numeric_limits<double>::quiet_NaN(), -1}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.frequency);
        double re = -1, im = -1, at = -1;
        ASSERT_EQ(SpectrumValueAt(g, curve, c.frequency, re, im, at), c.row >= 0);
        if (c.row >= 0) {
            EXPECT_EQ(re, c.row);
            EXPECT_EQ(im, 10 * c.row);
            EXPECT_EQ(at, 10 * c.row);
        }
        EXPECT_EQ(SpectrumReadoutText(g, curve, c.frequency),
                  c.row < 0 ? QString() : QStringLiteral("U (f=%1): %2 +j %3").arg(10 * c.row).arg(c.row).arg(10 * c.row));
    }
    double re, im, at;
    EXPECT_FALSE(SpectrumValueAt(g, bare, 10, re, im, at)) << "a curve without results";
    g.m_spectrumMode = 0;
    EXPECT_FALSE(SpectrumValueAt(g, curve, 10, re, im, at)) << "time mode";
}

// Over a curve of a real spectrum the window's read-out adds its complex
// result; off the curve it is the plain position.
TEST(GraphReadout, WindowShowsTheComplexValueOverASpectrumCurve)
{
    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
    const int n = 256;
    CGraphData data;
    data.Create(1, 2, n, 0);
    for (int i = 0; i < n; ++i) {
        const double row[2] = {i * 1e-3, 2 * std::cos(2 * std::numbers::pi * 50 * i * 1e-3) + 0.5};
        data.AppendRows(row, nullptr, 0, 2, i, 1);
    }
    data->m_ordered = 1;
    CGraphWnd wnd;
    wnd.resize(640, 480);
    wnd.SetGraphDataCopy(data);
    CGraphCurve &g = *wnd.GetGraphData();
    ASSERT_EQ(g.CurveCount(), 1);
    ASSERT_EQ(SetSpectrumMode(g, true), 1);
    wnd.show();
    wnd.grab();
    const auto *pixels = static_cast<const CPolylinePixels *>(g.Curve(0)->LinePixels());
    ASSERT_TRUE(pixels && !pixels->m_points.empty());
    int checked = 0;
    for (std::size_t k = 0; k < pixels->m_points.size(); k += pixels->m_points.size() / 7 + 1) {
        const QPoint on = pixels->m_points[k];
        CGraphPosition position;
        if (!EdgesToQRect(g.m_plotRect).contains(on) || wnd.CurveAt(on) != 0 || !GraphPositionAt(g, on, position))
            continue;
        const QString value = SpectrumReadoutText(g, *g.Curve(0), position.x);
        EXPECT_TRUE(value.contains(QStringLiteral(" +j ")));
        EXPECT_EQ(wnd.PositionTextAt(on), GraphPositionText(position) + QStringLiteral("; ") + value);
        ++checked;
    }
    EXPECT_GT(checked, 0);
    const QPoint off = EdgesToQRect(g.m_plotRect).topLeft() + QPoint(2, 2);
    ASSERT_EQ(wnd.CurveAt(off), -1);
    EXPECT_FALSE(wnd.PositionTextAt(off).contains(QStringLiteral("+j")));
}

} // namespace
