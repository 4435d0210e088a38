// Decade labels with a raised exponent, printed small below a frame: the
// exponent is told from its base, its minus sign from its digits, and the
// label reads as the power of ten it names.

#include "tool/autocal/picturegrid.h"
#include "tool/autocal/ticklabels.h"

#include <QFontMetricsF>
#include <QPainter>
#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <string>

namespace {

struct CDecadeCase {
    const char *font;
    int pixels;
    // A turn of the picture, straightened again before the labels are
    // looked for: what a slightly rotated scan leaves of small print.
    double turnDegrees;
    // How many of the six labels must be read at least.
    int leastRead;
};

class DecadeLabels : public ::testing::TestWithParam<CDecadeCase> {};

const int g_exponents[] = {-3, -2, -1, 0, 1, 12};
constexpr int LabelSpacing = 70;

// A frame and, below it, one label "10" with a raised exponent for each of
// g_exponents, drawn as datasheets print them: the exponent in a smaller
// size, its base line raised by nearly half the font's height.
QImage decadePicture(const CDecadeCase &c, CGridLines &grid)
{
    QImage image(560, 200, QImage::Format_RGB32);
    image.fill(Qt::white);
    grid.frameFound = true;
    grid.left = 40;
    grid.right = 40 + LabelSpacing * (int(std::size(g_exponents)) - 1);
    grid.top = 20;
    grid.bottom = 120;
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);
    p.setPen(Qt::black);
    p.drawRect(QRectF(grid.left, grid.top, grid.right - grid.left, grid.bottom - grid.top));
    QFont font(QString::fromLatin1(c.font));
    font.setPixelSize(c.pixels);
    QFont small = font;
    small.setPixelSize(std::max(7, int(std::lround(c.pixels * 0.7))));
    const QFontMetricsF fm(font), fs(small);
    for (std::size_t i = 0; i < std::size(g_exponents); ++i) {
        const QString base = QStringLiteral("10"), exponent = QString::number(g_exponents[i]);
        const double width = fm.horizontalAdvance(base) + fs.horizontalAdvance(exponent) + 1;
        const double left = grid.left + LabelSpacing * double(i) - width / 2;
        const double baseline = grid.bottom + 6 + fm.capHeight() + 0.45 * c.pixels;
        p.setFont(font);
        p.drawText(QPointF(left, baseline), base);
        p.setFont(small);
        p.drawText(QPointF(left + fm.horizontalAdvance(base) + 1, baseline - 0.45 * c.pixels), exponent);
    }
    p.end();
    if (c.turnDegrees == 0)
        return image;
    return StraightenPicture(StraightenPicture(image, -c.turnDegrees, nullptr), c.turnDegrees, nullptr);
}

} // namespace

TEST_P(DecadeLabels, SplitsTheExponentAndItsMinus)
{
    CGridLines grid;
    const QImage image = decadePicture(GetParam(), grid);
    QList<CTickLabel> labels = FindTickLabels(DarknessOf(image), grid, AxisSide::X);
    ASSERT_EQ(labels.size(), qsizetype(std::size(g_exponents)));
    for (qsizetype i = 0; i < labels.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "10^" << g_exponents[i]);
        const CTickLabel &l = labels[i];
        EXPECT_NEAR(l.position, grid.left + LabelSpacing * double(i), 2.0);
        ASSERT_FALSE(l.exponentCrop.isNull());
        EXPECT_FALSE(l.baseMinus);
        EXPECT_EQ(l.exponentMinus, g_exponents[i] < 0);
    }
}

TEST_P(DecadeLabels, ReadsEachLabelAsItsPowerOfTenOrNotAtAll)
{
    CGridLines grid;
    const QImage image = decadePicture(GetParam(), grid);
    QList<CTickLabel> labels = FindTickLabels(DarknessOf(image), grid, AxisSide::X);
    ASSERT_EQ(labels.size(), qsizetype(std::size(g_exponents)));
    ASSERT_TRUE(ReadTickLabels(labels));
    int read = 0;
    for (qsizetype i = 0; i < labels.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "10^" << g_exponents[i]);
        // A label the engine cannot make out is left unread; one that is
        // read must be read right, or the axis fit has to weed it out.
        if (!labels[i].value.ok)
            continue;
        ++read;
        EXPECT_DOUBLE_EQ(labels[i].value.value, std::pow(10.0, g_exponents[i]));
    }
    EXPECT_GE(read, GetParam().leastRead);
}

INSTANTIATE_TEST_SUITE_P(, DecadeLabels,
                         // Most labels must be read, or the axis fit has
                         // too few to go by; but 7-pixel condensed print
                         // blurred by a turn leaves most exponents unread.
                         ::testing::Values(CDecadeCase{"DejaVu Sans", 11, 0, 4}, CDecadeCase{"DejaVu Serif", 11, 0, 4},
                                           CDecadeCase{"DejaVu Serif", 11, 0.7, 4}, CDecadeCase{"DejaVu Sans", 14, 0, 5},
                                           CDecadeCase{"DejaVu Sans Condensed", 10, 0.4, 2},
                                           CDecadeCase{"DejaVu Sans", 16, 0.7, 5}),
                         [](const testing::TestParamInfo<CDecadeCase> &i) {
                             std::string name = std::string(i.param.font) + "_" + std::to_string(i.param.pixels)
                                 + (i.param.turnDegrees != 0 ? "px_turned" : "px");
                             for (char &ch : name)
                                 if (!std::isalnum(static_cast<unsigned char>(ch)))
                                     ch = '_';
                             return name;
                         });
