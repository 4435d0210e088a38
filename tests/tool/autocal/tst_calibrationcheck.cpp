// The measured check of the calibration read off the picture: over generated
// datasheet graphs of many kinds, every proposal must map every grid
// crossing to within one pixel of where it was drawn.  A proposal that does
// not is counted wrong; the goal is none wrong and nine in ten proposed.

#include "datasheetpicture.h"

#include "tool/autocal/calibrationproposal.h"
#include "tool/autocal/picturegrid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

namespace {

const CAxisDraw g_linearAxes[] = {
    {false, 0, 2, 5, LabelStyle::Plain},        // 0 .. 10
    {false, 0, 0.1, 5, LabelStyle::Prefixed},   // 0 .. 500m
    {false, -40, 40, 5, LabelStyle::Plain},     // -40 .. 160
    {false, 0, 0.5, 6, LabelStyle::Plain},      // 0 .. 3
    {false, 0, 10, 6, LabelStyle::Plain},       // 0 .. 60
    {false, 0, 2e-6, 4, LabelStyle::Prefixed},  // 0 .. 8u
};
const CAxisDraw g_logAxes[] = {
    {true, 0, 1, 4, LabelStyle::Prefixed},      // 1 .. 10k
    {true, -4, 1, 3, LabelStyle::Prefixed},     // 100u .. 100m
    {true, -3, 1, 4, LabelStyle::Superscript},  // 10^-3 .. 10^1
    {true, -2, 1, 4, LabelStyle::Plain},        // 0.01 .. 100
    {true, -9, 1, 3, LabelStyle::EForm},        // 1E-9 .. 1E-6
};
// Axes labelled with the micro sign, for the last pictures of the set.
const CAxisDraw g_microAxes[] = {
    {false, 0, 2e-6, 4, LabelStyle::Prefixed, true},  // 0 .. 8µ
    {true, -6, 1, 3, LabelStyle::Prefixed, true},     // 1µ .. 1m
    {false, 0, 1e-4, 5, LabelStyle::Prefixed, true},  // 0 .. 500µ
    {true, -5, 1, 3, LabelStyle::Prefixed, true},     // 10µ .. 10m
};
const char *const g_fonts[] = {"DejaVu Sans", "DejaVu Serif", "DejaVu Sans Mono", "DejaVu Sans Condensed"};

// Picture number i: each axis linear or logarithmic in turn, the fonts and
// sizes, grid, antialiasing, JPEG and rotation all varied against each other.
CDatasheetLayout layoutNumber(int i)
{
    CDatasheetLayout s;
    const bool xLog = i % 2 == 1, yLog = (i / 2) % 2 == 1;
    s.x = xLog ? g_logAxes[i % std::size(g_logAxes)] : g_linearAxes[i % std::size(g_linearAxes)];
    s.y = yLog ? g_logAxes[(i + 2) % std::size(g_logAxes)] : g_linearAxes[(i + 3) % std::size(g_linearAxes)];
    s.font = QString::fromLatin1(g_fonts[(i / 4) % std::size(g_fonts)]);
    s.fontPixels = 10 + (i * 7) % 6;
    s.bold = i % 11 == 5;
    s.fullGrid = i % 3 != 2;
    s.antialias = i % 5 != 4;
    s.jpegQuality = i % 4 == 3 ? 70 : 0;
    s.rotationDegrees = i % 6 == 1 ? 0.7 : i % 6 == 4 ? -0.4 : i % 12 == 9 ? 1.0 : 0;
    s.curves = 1 + i % 3;
    s.size = QSize(700 + (i % 3) * 60, 500 + (i % 2) * 50);
    s.seed = unsigned(i + 1);
    // From picture 48 on, one axis or both carry the micro sign.
    if (i >= 48) {
        const int k = i - 48;
        if (k % 3 != 1)
            s.x = g_microAxes[k % std::size(g_microAxes)];
        if (k % 3 != 0)
            s.y = g_microAxes[(k + 1) % std::size(g_microAxes)];
    }
    return s;
}

constexpr int PictureCount = 60;

enum class Verdict { Correct, Declined, Wrong };

// Where the proposal puts a value along one axis, as the capture maps it.
double proposedPixel(double value, bool log, double atFirst, double atSecond, int first, int second)
{
    auto t = [log](double v) { return log ? std::log10(v) : v; };
    return (t(value) - t(atFirst)) / (t(atSecond) - t(atFirst)) * (second - first) + first;
}

Verdict judge(const CDatasheetPicture &pic, const CDatasheetLayout &layout, const CCalibrationProposal &p,
              double &worst)
{
    worst = 0;
    if (!p.Proposed())
        return Verdict::Declined;
    if (p.xLog != layout.x.log || p.yLog != layout.y.log) {
        worst = 1e9;
        return Verdict::Wrong;
    }
    for (const CDatasheetLine &xl : pic.xLines)
        for (const CDatasheetLine &yl : pic.yLines) {
            QPointF truth = MapPixel(pic.rotation, QPointF(xl.pixel, yl.pixel));
            if (p.straightened)
                truth = MapPixel(p.toStraight, truth);
            const double px = proposedPixel(xl.value, p.xLog, p.xAtFirst, p.xAtSecond, p.firstCorner.x(),
                                            p.secondCorner.x());
            const double py = proposedPixel(yl.value, p.yLog, p.yAtFirst, p.yAtSecond, p.firstCorner.y(),
                                            p.secondCorner.y());
            worst = std::max({worst, std::abs(px - truth.x()), std::abs(py - truth.y())});
        }
    return worst <= 1.0 ? Verdict::Correct : Verdict::Wrong;
}

} // namespace

TEST(CalibrationCheck, ProposesRightOrDeclinesOnGeneratedDatasheets)
{
    int correct = 0, declined = 0, wrong = 0;
    for (int i = 0; i < PictureCount; ++i) {
        const CDatasheetLayout layout = layoutNumber(i);
        const CDatasheetPicture pic = MakeDatasheetPicture(layout);
        const CCalibrationProposal p = ProposeCalibration(pic.image);
        double worst = 0;
        const Verdict v = judge(pic, layout, p, worst);
        (v == Verdict::Correct ? correct : v == Verdict::Declined ? declined : wrong) += 1;
        if (v != Verdict::Correct && !qEnvironmentVariableIsEmpty("TARN_AUTOCAL_DUMP")) {
            // For a look at what went astray.
            const QString dir = qEnvironmentVariable("TARN_AUTOCAL_DUMP");
            pic.image.save(QStringLiteral("%1/picture%2.png").arg(dir).arg(i));
            if (p.straightened)
                p.straightPicture.save(QStringLiteral("%1/picture%2s.png").arg(dir).arg(i));
            for (qsizetype k = 0; k < p.yLabels.size(); ++k) {
                p.yLabels[k].baseCrop.save(QStringLiteral("%1/picture%2y%3.png").arg(dir).arg(i).arg(k));
                if (!p.yLabels[k].exponentCrop.isNull())
                    p.yLabels[k].exponentCrop.save(QStringLiteral("%1/picture%2y%3e.png").arg(dir).arg(i).arg(k));
            }
            for (qsizetype k = 0; k < p.xLabels.size(); ++k) {
                p.xLabels[k].baseCrop.save(QStringLiteral("%1/picture%2x%3.png").arg(dir).arg(i).arg(k));
                if (!p.xLabels[k].exponentCrop.isNull())
                    p.xLabels[k].exponentCrop.save(QStringLiteral("%1/picture%2x%3e.png").arg(dir).arg(i).arg(k));
            }
        }
        if (v != Verdict::Correct) {
            QStringList xs, ys;
            for (const CTickLabel &l : p.xLabels)
                xs << l.text + (l.exponent.isEmpty() ? QString() : u'^' + l.exponent) + u'/' + QString::number(l.confidence);
            for (const CTickLabel &l : p.yLabels)
                ys << l.text + (l.exponent.isEmpty() ? QString() : u'^' + l.exponent) + u'/' + QString::number(l.confidence);
            std::printf("picture %d: %s (outcome %d, axes %d %d, confidence %.2f, worst %.2f px, rotation %.2f, x lines %lld, y lines %lld)\n"
                        "  x labels: %s\n  y labels: %s\n",
                        i, v == Verdict::Declined ? "declined" : "WRONG", int(p.outcome), int(p.xModel.outcome),
                        int(p.yModel.outcome), p.confidence, worst,
                        p.rotationDegrees, qlonglong(p.grid.xLines.size()), qlonglong(p.grid.yLines.size()),
                        qPrintable(xs.join(u' ')), qPrintable(ys.join(u' ')));
        }
    }
    std::printf("%d pictures: %d correct, %d declined, %d wrong\n", PictureCount, correct, declined, wrong);
    // A wrong proposal is worse than none: there must be none, and nine
    // pictures in ten must get a proposal.
    EXPECT_EQ(wrong, 0);
    EXPECT_GE(correct * 100, PictureCount * 90);
}
