// The picture stages on generated graphs: the rotation measured, the frame
// and the lines found where they were drawn.

#include "datasheetpicture.h"

#include "tool/autocal/picturegrid.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

struct CGridCase {
    double degrees;
    bool fullGrid;
    bool antialias;
    int jpegQuality;
};

class PictureGrid : public ::testing::TestWithParam<CGridCase> {};

CDatasheetLayout specOf(const CGridCase &c)
{
    CDatasheetLayout s;
    s.x = {false, 0, 2, 5, LabelStyle::Plain};
    s.y = {true, -2, 1, 4, LabelStyle::Plain};
    s.fullGrid = c.fullGrid;
    s.antialias = c.antialias;
    s.jpegQuality = c.jpegQuality;
    s.rotationDegrees = c.degrees;
    return s;
}

} // namespace

TEST_P(PictureGrid, MeasuresTheRotation)
{
    const CDatasheetPicture pic = MakeDatasheetPicture(specOf(GetParam()));
    EXPECT_NEAR(FindRotationDegrees(DarknessOf(pic.image)), GetParam().degrees, 0.01);
}

TEST_P(PictureGrid, FindsTheFrameAndTheMajorLinesOnceStraight)
{
    const CDatasheetPicture pic = MakeDatasheetPicture(specOf(GetParam()));
    QTransform toStraight;
    const QImage straight = GetParam().degrees == 0
        ? pic.image : StraightenPicture(pic.image, GetParam().degrees, &toStraight);
    const CGridLines g = FindGridLines(DarknessOf(straight));
    ASSERT_TRUE(g.frameFound);
    // Every major line (those the labels stand at) is found within half a
    // pixel of where it was drawn; minor lines may or may not be.
    auto check = [&](const QList<CDatasheetLine> &drawn, const QList<double> &found, bool alongX, bool log) {
        for (const CDatasheetLine &l : drawn) {
            if (log && std::abs(std::log10(l.value) - std::round(std::log10(l.value))) > 1e-9)
                continue;
            const QPointF at = MapPixel(toStraight, MapPixel(pic.rotation, alongX ? QPointF(l.pixel, 300)
                                                                                   : QPointF(300, l.pixel)));
            const double want = alongX ? at.x() : at.y();
            double nearest = 1e9;
            for (double f : found)
                nearest = std::min(nearest, std::abs(f - want));
            EXPECT_LE(nearest, 0.5) << (alongX ? "x line " : "y line ") << l.value;
        }
    };
    check(pic.xLines, g.xLines, true, false);
    check(pic.yLines, g.yLines, false, true);
}

INSTANTIATE_TEST_SUITE_P(, PictureGrid,
                         ::testing::Values(CGridCase{0, true, true, 0}, CGridCase{0, false, false, 0},
                                           CGridCase{0.7, true, true, 0}, CGridCase{-0.4, false, true, 70},
                                           CGridCase{1.0, true, false, 70}, CGridCase{-1.0, false, true, 0},
                                           CGridCase{0.15, true, true, 70}));

TEST(PictureGridBlank, FindsNoFrameInAPictureWithoutOne)
{
    QImage blank(400, 300, QImage::Format_RGB32);
    blank.fill(Qt::white);
    EXPECT_FALSE(FindGridLines(DarknessOf(blank)).frameFound);
    EXPECT_EQ(FindRotationDegrees(DarknessOf(blank)), 0.0);
}
