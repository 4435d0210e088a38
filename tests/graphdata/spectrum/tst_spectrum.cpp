#include "graphdata/columntransform.h"
#include "graphdata/graphcurve.h"
#include "graphdata/spectrum/resample.h"
#include "graphdata/spectrum/spectrumjob.h"
#include "graphdata/spectrum/spectrumtransform.h"
#include "support/languagestring.h"

#include "tests/graphdata/columnfixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

using columnfixture::makeColumn;
using columnfixture::Missing;
using columnfixture::NaN;

namespace {

const double Pi = std::numbers::pi;

std::vector<double> wave(int n, double offset, double amplitude, double cycles, double phase)
{
    std::vector<double> v(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        v[i] = offset + amplitude * std::sin(2 * Pi * cycles * i / n + phase);
    return v;
}

} // namespace

// ---- the four result columns ------------------------------------------------

TEST(Spectrum, ResultColumnsOfKnownSignals)
{
    const struct
    {
        const char *name;
        std::vector<double> samples;
        int result;
        int bin;          // a bin to check besides DC
        double dc, magnitude, angle, sine, cosine;
    } cases[] = {
        {"constant: DC alone", std::vector<double>(16, 2.5), 0, 3, 2.5, 0, 0, 0, 0},
        {"sine of 3 at bin 5, even N", wave(64, 0, 3, 5, 0), 1, 5, 0, 3, 0, 3, 0},
        {"sine of 3 at bin 5, odd N", wave(63, 0, 3, 5, 0), 1, 5, 0, 3, 0, 3, 0},
        {"cosine of 2 at bin 1", wave(10, 0, 2, 1, Pi / 2), 1, 1, 0, 2, Pi / 2, 0, 2},
        {"offset -1 and a phase of 0.7", wave(40, -1, 1.5, 7, 0.7), 1, 7, 1, 1.5, 0.7, 1.5 * std::cos(0.7),
         1.5 * std::sin(0.7)},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const int n = int(c.samples.size());
        CGraphColumnPtr samples = makeColumn(c.samples, u"U1"_qs), mag, ang, re, im;
        ASSERT_EQ(Spectrum(0, n, 1, samples.Get(), mag, ang, re, im), c.result);
        ASSERT_EQ(mag->m_count, (n - 1) / 2 + 1);
        EXPECT_EQ(mag->m_kind, 4u);
        EXPECT_EQ(ang->m_kind, 20u);
        EXPECT_EQ(re->m_kind, 132u);
        EXPECT_EQ(im->m_kind, 164u);
        EXPECT_EQ(ang->m_name, u"U1_Angle"_qs);
        EXPECT_EQ(re->m_name, u"U1_Real"_qs);
        EXPECT_EQ(im->m_name, u"U1_Img"_qs);
        EXPECT_NEAR(mag->m_values[0], c.dc, 1e-12);
        EXPECT_NEAR(re->m_values[0], c.dc, 1e-12);
        EXPECT_EQ(ang->m_values[0], 0);
        EXPECT_NEAR(mag->m_values[c.bin], c.magnitude, 1e-12);
        EXPECT_NEAR(re->m_values[c.bin], c.sine, 1e-12);
        EXPECT_NEAR(im->m_values[c.bin], c.cosine, 1e-12);
        if (c.magnitude > 0) {
            EXPECT_NEAR(ang->m_values[c.bin], c.angle, 1e-12);
        }
        double others = 0;
        for (int k = 1; k < mag->m_count; ++k) {
            EXPECT_EQ(mag->m_valid[k], 1);
            if (k != c.bin)
                others = std::max(others, mag->m_values[k]);
        }
        EXPECT_LT(others, 1e-12);
        EXPECT_NEAR(mag->m_maxValue, std::max(c.magnitude, std::abs(c.dc)), 1e-12);
    }
}

TEST(Spectrum, RefusesTooFewSamplesAndStopsAtAnInvalidOne)
{
    CGraphColumnPtr mag, ang, re, im;
    const struct
    {
        const char *name;
        std::vector<double> samples;
        int n;
        int result;
    } cases[] = {
        {"one row", {1.0}, 1, -1},
        {"invalid second row", {1.0, NaN, 2.0, 3.0}, 4, -1},
        {"empty", {}, 4, -1},
        // A missing row counts as 0; an invalid third row leaves two
        // samples, padded with zeros: the transform of (1, 0, 0, 0).
        {"missing then invalid", {1.0, Missing, NaN, 5.0}, 4, 1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CGraphColumnPtr samples = makeColumn(c.samples);
        EXPECT_EQ(Spectrum(0, c.n, 1, samples.Get(), mag, ang, re, im), c.result);
        EXPECT_EQ(bool(mag), c.result >= 0);
    }
    ASSERT_TRUE(mag);
    // (1, 0, 0, 0) / 4: DC 0.25, bin 1 of amplitude 0.5 (cosine).
    EXPECT_DOUBLE_EQ(mag->m_values[0], 0.25);
    EXPECT_DOUBLE_EQ(im->m_values[1], 0.5);
}

TEST(Spectrum, EvenLengthTopBinIsNotDoubled)
{
    // (1, -1, 1, -1 ...) has all its energy in bin N/2.
    for (int n : {4, 8, 10}) {
        std::vector<std::complex<double>> c(static_cast<std::size_t>(n));
        c[n / 2] = 1.0; // transform / N of the alternating signal
        c[1] = {0.25, -0.5};
        std::vector<double> a(static_cast<std::size_t>(n), -7);
        PackAmplitudes(c.data(), n, a.data());
        EXPECT_EQ(a[n - 1], 1.0) << n;
        EXPECT_EQ(a[1], 0.5) << n;
        EXPECT_EQ(a[2], 1.0) << n;
        EXPECT_EQ(a[0], 0.0) << n;
    }
    // Odd N has no such bin: the last pair is doubled like the others.
    std::vector<std::complex<double>> c = {0, 0, {0.5, 0.5}};
    std::vector<double> a(5);
    PackAmplitudes(c.data(), 5, a.data());
    EXPECT_EQ(a[3], 1.0);
    EXPECT_EQ(a[4], -1.0);
}

// ---- grid, resampling, frequency ------------------------------------------------

TEST(SpectrumGrid, ResampleGridCases)
{
    const struct
    {
        const char *name;
        std::vector<double> x;
        double start, end;
        int ok, first, last, count;
        double step;
    } cases[] = {
        {"start equal to end", {0, 1, 2, 3}, 1, 1, 0, -1, -1, 0, 0},
        {"start above end", {0, 1, 2, 3}, 2, 1, 0, -1, -1, 0, 0},
        {"one row", {0}, 0, 1, 0, -1, -1, 0, 0},
        {"invalid row before the span", {0, NaN, 2, 3, 4}, 2, 4, 0, 2, -1, 0, 0},
        {"invalid row in the span", {0, 1, NaN, 3, 4}, 0, 4, 0, 0, -1, 0, 0},
        {"one valid row in the span", {0, 1, 2, 3}, 3, 3.5, 0, 3, 3, 0, 0},
        {"falling X reaches the end at once", {4, 3, 2, 1, 0}, 0, 4, 0, 0, 0, 0, 0},
        // 5 rows over 0..4: mean spacing 4/5 is below the step of 1.
        {"even rows, whole span", {0, 1, 2, 3, 4}, 0, 4, 1, 0, 4, 6, 0.8},
        // 1.5 lies between rows 1 and 2: the row before covers it; rows
        // 1 to 4 give a mean spacing of 2 / 4.
        {"span inside, row before kept", {0, 1, 2, 3, 4}, 1.5, 3.5, 1, 1, 4, 5, 0.5},
        // The smallest step (0.1) wins over the mean (10 / 4).
        {"uneven rows", {0, 0.1, 5, 10}, 0, 10, 1, 0, 3, 101, 0.1},
        {"missing rows are passed over", {0, Missing, 2, Missing, 4}, 0, 4, 1, 0, 4, 4, 4.0 / 3},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CGraphColumnPtr x = makeColumn(c.x);
        int first = -5, last = -5;
        CGraphColumnPtr grid;
        ASSERT_EQ(ResampleGrid(x.Get(), int(c.x.size()), c.start, c.end, first, last, grid), c.ok);
        if (!c.ok) {
            EXPECT_FALSE(grid);
            continue;
        }
        EXPECT_EQ(first, c.first);
        EXPECT_EQ(last, c.last);
        ASSERT_EQ(grid->m_count, c.count);
        EXPECT_DOUBLE_EQ(grid->m_values[0], c.start);
        EXPECT_NEAR(grid->m_values[1] - grid->m_values[0], c.step, 1e-12);
        EXPECT_NEAR(grid->m_maxValue, c.end, c.step / 2 + 1e-12);
        EXPECT_EQ(grid->m_attrFlags & CGraphColumn::AttrThinned, 0u);
    }
}

TEST(SpectrumGrid, GridOfThirtyMillionPointsIsHalved)
{
    // 301 rows over 0..300 whose smallest step asks for 3e7 points.
    std::vector<double> x(301);
    for (int i = 0; i <= 300; ++i)
        x[i] = i;
    x[1] = 300.0 / (3e7 - 1);
    CGraphColumnPtr column = makeColumn(x);
    int first, last;
    CGraphColumnPtr grid;
    ASSERT_EQ(ResampleGrid(column.Get(), 301, 0, 300, first, last, grid), 1);
    EXPECT_EQ(grid->m_count, 15000000);
    EXPECT_NE(grid->m_attrFlags & CGraphColumn::AttrThinned, 0u);
    EXPECT_DOUBLE_EQ(grid->m_values[1], 300.0 / 1.5e7);
}

TEST(SpectrumGrid, ResampleOntoInterpolatesAndFails)
{
    CGraphColumnPtr grid = makeColumn({0, 0.5, 1, 1.5, 2, 2.5, 3});
    const struct
    {
        const char *name;
        std::vector<double> x, y;
        int ok;
        std::vector<double> expected;
    } cases[] = {
        {"straight lines", {0, 1, 2, 3}, {0, 2, 2, -4}, 1, {0, 1, 2, 2, 2, -1, -4}},
        {"missing rows skipped", {0, 1, 2, 3}, {0, Missing, 4, 6}, 1, {0, 1, 2, 3, 4, 5, 6}},
        {"before the first row the first line goes on", {1, 2, 3}, {10, 20, 30}, 1, {0, 5, 10, 15, 20, 25, 30}},
        {"equal X takes the first value", {0, 0, 3}, {5, 9, 9}, 1, {5, 9, 9, 9, 9, 9, 9}},
        {"an invalid row fails", {0, 1, 2, 3}, {0, NaN, 2, 3}, 0, {}},
        {"one usable row fails", {0, 1}, {1, Missing}, 0, {}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CGraphColumnPtr x = makeColumn(c.x), y = makeColumn(c.y, u"V"_qs), out;
        ASSERT_EQ(ResampleOnto(x.Get(), y.Get(), int(c.x.size()), grid.Get(), out), c.ok);
        if (!c.ok)
            continue;
        ASSERT_EQ(out->m_count, 7);
        EXPECT_EQ(out->m_name, u"V"_qs);
        for (int i = 0; i < 7; ++i) {
            EXPECT_NEAR(out->m_values[i], c.expected[i], 1e-12) << i;
            EXPECT_EQ(out->m_valid[i], 1);
        }
    }
}

TEST(SpectrumGrid, FrequencyColumnAndLength)
{
    CGraphColumnPtr x = makeColumn({0, 0.5, 1, 1.5, 2});
    CGraphColumnPtr f;
    ASSERT_EQ(FrequencyColumn(0, 4, 9, x.Get(), f), 1);
    ASSERT_EQ(f->m_count, 5);
    EXPECT_EQ(f->m_name, u"Frequency"_qs);
    EXPECT_EQ(f->m_kind, 4u);
    for (int k = 0; k < 5; ++k)
        EXPECT_DOUBLE_EQ(f->m_values[k], k / 2.0);
    EXPECT_EQ(FrequencyColumn(2, 2, 9, x.Get(), f), 0);
    EXPECT_EQ(FrequencyColumn(0, 5, 9, x.Get(), f), 0);

    const std::vector<int> preferred = {1, 3, 5, 9, 15, 25, 45, 75, 125, 375, 625};
    const struct
    {
        int grid;
        std::vector<int> preferred;
        int length;
    } lengths[] = {
        {123457, {}, 123457}, {1999, preferred, 1999}, {3000, preferred, 3000}, {2996, preferred, 3000},
        {5000, preferred, 5000}, {4999, preferred, 5000},
    };
    for (const auto &l : lengths)
        EXPECT_EQ(SpectrumLength(l.grid, l.preferred), l.length) << l.grid;
}

// ---- the graph's spectrum mode --------------------------------------------------

namespace {

// X = 0..rows-1, U1 a sine of amplitude 2 and period 16 rows with an
// offset of 1, U2 with an invalid row when `invalidRow` is set.
void fillGraph(CGraphCurve &graph, int rows, bool invalidRow)
{
    graph.m_data.Create(1, 3, rows, 0);
    graph.m_data.GetColumn(0)->m_name = u"Time"_qs;
    graph.m_data.GetColumn(1)->m_name = u"U1"_qs;
    graph.m_data.GetColumn(2)->m_name = u"U2"_qs;
    std::vector<double> values(std::size_t(rows) * 3);
    std::vector<std::uint8_t> valid(values.size(), 1);
    for (int r = 0; r < rows; ++r) {
        values[3 * r] = r;
        values[3 * r + 1] = 1 + 2 * std::sin(2 * Pi * r / 16);
        values[3 * r + 2] = r % 3;
    }
    if (invalidRow)
        valid[3 * 10 + 2] = 2;
    graph.m_data.AppendRows(values.data(), valid.data(), 0, 3, 0, rows);
    bool changed;
    graph.AddCurve(1, 0, false, changed);
    graph.AddCurve(2, 0, false, changed);
}

} // namespace

TEST(SpectrumMode, EnteringComputesEveryCurveAndLeavingReturnsToTime)
{
    CGraphCurve graph;
    fillGraph(graph, 1024, true);
    ASSERT_EQ(SetSpectrumMode(graph, true), 1);
    EXPECT_EQ(graph.m_spectrumMode, 1);
    EXPECT_EQ(graph.m_xAxisName, u"Frequency"_qs);
    ASSERT_TRUE(graph.m_frequencyColumn);
    const CGraphColumn *f = graph.m_frequencyColumn.Get();
    EXPECT_EQ(f->m_count, SpectrumBins(graph.m_spectrumLength));
    EXPECT_EQ(graph.m_spectrumStart, 0);
    EXPECT_EQ(graph.m_spectrumEnd, 1023);

    // The sine: a peak of about 2 near 1/16 Hz, and a DC of 1.
    CCurveInfo *sine = graph.Curve(0);
    ASSERT_TRUE(sine->m_spectrumMagnitude);
    const CGraphColumn *mag = sine->m_spectrumMagnitude.Get();
    int peak = 1;
    for (int k = 1; k < mag->m_count; ++k)
        if (mag->m_values[k] > mag->m_values[peak])
            peak = k;
    EXPECT_NEAR(f->m_values[peak], 1.0 / 16, f->m_values[1]);
    EXPECT_NEAR(mag->m_values[peak], 2, 0.1);
    EXPECT_NEAR(mag->m_values[0], 1, 0.01);

    // The curve with an invalid row: four empty columns of the frequency's
    // length, not tried again.
    CCurveInfo *broken = graph.Curve(1);
    ASSERT_TRUE(broken->m_spectrumMagnitude);
    EXPECT_EQ(broken->m_spectrumMagnitude->m_count, f->m_count);
    EXPECT_EQ(broken->m_spectrumImag->m_kind, 164u);
    for (int k = 0; k < f->m_count; ++k)
        ASSERT_EQ(broken->m_spectrumMagnitude->m_valid[k], 0);
    const CGraphColumn *before = broken->m_spectrumMagnitude.Get();
    EXPECT_EQ(CurveSpectrum(graph, *broken), 1);
    EXPECT_EQ(broken->m_spectrumMagnitude.Get(), before);

    // The X axis spans the frequencies; the Y axis the magnitudes.
    EXPECT_LE(graph.m_xViewMin, 0);
    EXPECT_GE(graph.m_xViewMax, f->m_maxValue);
    EXPECT_GE(graph.Range(0)->m_viewMax, mag->m_values[peak]);

    ASSERT_EQ(SetSpectrumMode(graph, false), 1);
    EXPECT_EQ(graph.m_spectrumMode, 0);
    EXPECT_EQ(graph.m_xAxisName, u"Time"_qs);
    EXPECT_GE(graph.m_xViewMax, 1023);
}

TEST(SpectrumMode, CurvesLeftWithoutSpectrumAreNamedWithTheirRow)
{
    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
    const struct
    {
        const char *name;
        int invalidRow;     // in U2
        double start, end;  // the span asked for
        int failedRow;      // -1: U2 gets its spectrum
    } cases[] = {
        {"invalid row inside the span", 10, 0, 0, 10},
        {"invalid row before the span is still read", 5, 20, 50, 5},
        {"invalid row past the span is never read", 90, 0, 50, -1},
        {"no invalid row", -1, 0, 0, -1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CGraphCurve graph;
        fillGraph(graph, 100, false);
        if (c.invalidRow >= 0)
            graph.m_data.GetColumn(2)->m_valid[c.invalidRow] = 2;
        graph.m_spectrumStart = c.start;
        graph.m_spectrumEnd = c.end;
        std::vector<CSpectrumFailure> failures;
        ASSERT_EQ(SetSpectrumMode(graph, true, {}, &failures), 1);
        if (c.failedRow < 0) {
            EXPECT_TRUE(failures.empty());
            EXPECT_EQ(graph.Curve(1)->m_spectrumMagnitude->m_valid[1], 1);
            continue;
        }
        ASSERT_EQ(failures.size(), 1u);
        const CSpectrumFailure &f = failures[0];
        EXPECT_EQ(f.name, u"U2"_qs);
        EXPECT_EQ(f.reason, CSpectrumFailure::InvalidRow);
        EXPECT_EQ(f.row, c.failedRow);
        EXPECT_EQ(f.x, c.failedRow);
        // The text names the curve and the row as the user counts them.
        const QString text = SpectrumFailureText(f);
        EXPECT_TRUE(text.contains(u"U2"_qs)) << text.toStdString();
        EXPECT_TRUE(text.contains(QString::number(c.failedRow + 1))) << text.toStdString();
    }

    // A cancel is the user's choice, not a failure to report.
    CGraphCurve graph;
    fillGraph(graph, 1 << 12, true);
    ASSERT_EQ(PrepareSpectrum(graph), 1);
    std::vector<CSpectrumFailure> failures;
    AllCurveSpectra(graph, [](const QString &) { return [](double) { return false; }; }, &failures);
    EXPECT_TRUE(failures.empty());
}

TEST(SpectrumMode, LogAndDecibelFormsAndTheDcRow)
{
    CGraphCurve graph;
    fillGraph(graph, 256, false);
    graph.m_xLog = 1;
    ASSERT_EQ(SetSpectrumMode(graph, true), 1);
    // The log frequency axis: row 0 (0 Hz) is invalid, without a warning.
    const CGraphColumn *x = SpectrumXColumn(graph);
    ASSERT_EQ(x, graph.m_frequencyLogColumn.Get());
    EXPECT_EQ(x->m_valid[0], 2);
    EXPECT_EQ(x->m_hasInvalid, 0u);
    EXPECT_DOUBLE_EQ(x->m_values[1], std::log10(graph.m_frequencyColumn->m_values[1]));

    CCurveInfo *curve = graph.Curve(0);
    const struct
    {
        const char *name;
        int log, db;
        std::uint32_t component;
        double (*form)(double);
    } cases[] = {
        {"magnitude, linear", 0, 0, CCurveBasicInfo::ComponentMagnitude, [](double v) { return v; }},
        {"magnitude, log", 1, 0, CCurveBasicInfo::ComponentMagnitude, [](double v) { return std::log10(v); }},
        {"magnitude, dB", 0, 1, CCurveBasicInfo::ComponentMagnitude,
         [](double v) { return 20 * std::log10(v * 1e6); }},
        {"angle in degrees", 0, 0, CCurveBasicInfo::ComponentAngleDeg,
         [](double v) { return v; /* compared below against the radians */ }},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        graph.Range(0)->m_logScale = c.log;
        graph.Range(0)->m_dbScale = c.db;
        curve->m_source = (curve->m_source & ~CCurveBasicInfo::ComponentMask) | c.component;
        bool invalid;
        const CGraphColumn *shown = SpectrumCurveColumn(graph, *curve, invalid);
        ASSERT_TRUE(shown);
        const CGraphColumn *base = c.component == CCurveBasicInfo::ComponentAngleDeg
                                       ? curve->m_spectrumAngle.Get()
                                       : curve->m_spectrumMagnitude.Get();
        for (int k = 0; k < base->m_count; ++k) {
            if (base->m_values[k] <= 0 && (c.log || c.db)) {
                EXPECT_EQ(shown->m_valid[k], 2);
                continue;
            }
            const double expected = c.component == CCurveBasicInfo::ComponentAngleDeg
                                        ? base->m_values[k] * 57.29577951308232
                                        : c.form(base->m_values[k]);
            ASSERT_DOUBLE_EQ(shown->m_values[k], expected) << k;
        }
    }
}

TEST(SpectrumMode, CancelAndGuardLeaveNoHalfResults)
{
    CGraphCurve graph;
    fillGraph(graph, 1 << 15, false);
    ASSERT_EQ(PrepareSpectrum(graph), 1);

    // While a transform runs, no second one starts.
    graph.m_spectrumRunning = 1;
    EXPECT_EQ(CurveSpectrum(graph, *graph.Curve(0)), -1);
    EXPECT_FALSE(graph.Curve(0)->m_spectrumMagnitude);
    graph.m_spectrumRunning = 0;

    // Cancel on the first report: the curve gets empty columns, the guard
    // is down again, and the others are left for later.
    int boxes = 0;
    const int ok = AllCurveSpectra(graph, [&](const QString &name) {
        ++boxes;
        EXPECT_EQ(name, u"U1"_qs);
        return [](double) { return false; };
    });
    EXPECT_EQ(ok, 0);
    EXPECT_EQ(boxes, 1);
    EXPECT_EQ(graph.m_spectrumRunning, 0);
    ASSERT_TRUE(graph.Curve(0)->m_spectrumMagnitude);
    EXPECT_EQ(graph.Curve(0)->m_spectrumMagnitude->m_valid[1], 0);
    EXPECT_FALSE(graph.Curve(1)->m_spectrumMagnitude);
}

TEST(SpectrumMode, SpanIsClippedOrReplaced)
{
    const struct
    {
        const char *name;
        double start, end;
        double usedStart, usedEnd;
    } cases[] = {
        {"whole extent", 0, 0, 0, 99},
        {"inside", 10, 20, 10, 20},
        {"reaching past the end", 50, 500, 50, 99},
        {"wholly outside", 200, 300, 0, 99},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CGraphCurve graph;
        fillGraph(graph, 100, false);
        graph.m_spectrumStart = c.start;
        graph.m_spectrumEnd = c.end;
        ASSERT_EQ(PrepareSpectrum(graph), 1);
        EXPECT_EQ(graph.m_spectrumStart, c.usedStart);
        EXPECT_EQ(graph.m_spectrumEnd, c.usedEnd);
        EXPECT_NEAR(graph.m_resampledX->m_values[0], c.usedStart, 1e-12);
    }
    CGraphCurve empty;
    fillGraph(empty, 1, false);
    EXPECT_EQ(PrepareSpectrum(empty), 0);
    EXPECT_FALSE(empty.m_frequencyColumn);
    EXPECT_EQ(SetSpectrumMode(empty, true), 0);
    EXPECT_EQ(empty.m_spectrumMode, 0);
}
