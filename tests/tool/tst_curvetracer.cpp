// Automatic tracing measured on generated datasheet pictures: every traced
// column and every proposed point within half a pixel of the curve as drawn,
// and the curve's X extent within one pixel.

#include "graphpicture.h"
#include "tool/curvetracer.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

struct TraceCase {
    const char *name;
    int curve;       // of the datasheet picture
    int jpegQuality; // 0: the picture as drawn
    CurveInks inks = CurveInks::Coloured;
};

class CurveTracerTest : public ::testing::TestWithParam<TraceCase>
{
};

const CCurveFamilyPicture &picture(int quality, CurveInks inks = CurveInks::Coloured)
{
    static const CCurveFamilyPicture png = MakeCurveFamilyPicture(QSize(900, 640));
    static const CCurveFamilyPicture jpeg = MakeCurveFamilyPicture(QSize(900, 640), 70);
    static const CCurveFamilyPicture greyPng = MakeCurveFamilyPicture(QSize(900, 640), 0, CurveInks::GreyAndBlack);
    static const CCurveFamilyPicture greyJpeg = MakeCurveFamilyPicture(QSize(900, 640), 70, CurveInks::GreyAndBlack);
    if (inks == CurveInks::GreyAndBlack)
        return quality ? greyJpeg : greyPng;
    return quality ? jpeg : png;
}

} // namespace

TEST_P(CurveTracerTest, FollowsTheCurveWithinHalfAPixel)
{
    const TraceCase &c = GetParam();
    const CCurveFamilyPicture &d = picture(c.jpegQuality, c.inks);
    const CCurveFamilyPicture::Curve &curve = d.curves[c.curve];
    const CCurveTrace t = CCurveTracer().Trace(d.image, curve.seed, QRectF(d.area));
    ASSERT_TRUE(t.found);
    EXPECT_NEAR(t.startX, curve.inkStart, 1.0);
    EXPECT_NEAR(t.endX, curve.inkEnd, 1.0);
    int far = 0;
    double worst = 0;
    for (const CTracedColumn &col : t.columns) {
        const double e = d.Distance(curve, QPointF(col.x, col.y));
        worst = std::max(worst, e);
        far += e > 0.5;
    }
    EXPECT_EQ(far, 0) << "worst " << worst << " of " << t.columns.size() << " columns";
    // The columns cover the curve but for the gaps of crossings and dashes.
    EXPECT_GT(double(t.columns.size()), (curve.dashed ? 0.25 : 0.6) * (curve.inkEnd - curve.inkStart));

    // A proposal every 7 pixels: every point on the curve too.
    const auto same = [](double v) { return v; };
    const std::vector<double> xs = ProposalXs({CTraceSpacing::EveryNPixels, 7, {}}, t.ProposalStart(), t.ProposalEnd(), same, same);
    ASSERT_GE(xs.size(), 10u);
    // The outer points stand on the outer whole columns; a dash's end
    // column or two are partial.
    const double endSlack = curve.dashed ? 2.5 : 1.5;
    EXPECT_NEAR(xs.front(), curve.inkStart, endSlack);
    EXPECT_NEAR(xs.back(), curve.inkEnd, endSlack);
    for (double x : xs) {
        const std::optional<double> y = t.YAt(x);
        ASSERT_TRUE(y.has_value()) << x;
        EXPECT_LE(d.Distance(curve, QPointF(x, *y)), 0.5) << "at x " << x;
    }
}

INSTANTIATE_TEST_SUITE_P(DatasheetPictures, CurveTracerTest,
                         ::testing::Values(TraceCase{"rising", 0, 0}, TraceCase{"crossing", 1, 0},
                                           TraceCase{"dashed", 2, 0}, TraceCase{"risingJpeg70", 0, 70},
                                           TraceCase{"crossingJpeg70", 1, 70}, TraceCase{"dashedJpeg70", 2, 70},
                                           // An ink of the grid's and the frame's hue, crossed
                                           // by a black curve and a dark grey one.  (The black
                                           // and the dashed dark grey curve of that picture,
                                           // and all three under JPEG, are not yet followed
                                           // within these bounds.)
                                           TraceCase{"greyCrossing", 1, 0, CurveInks::GreyAndBlack}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(CurveTracer, NothingToFollow)
{
    const CCurveFamilyPicture &d = picture(0);
    const struct {
        const char *name;
        QPointF spot;
        QRectF area;
    } cases[] = {
        // The middle of a cell of the grid, far from every curve.
        {"blank spot", QPointF(d.area.left() + d.area.width() * 45.5 / 50, d.area.top() + d.area.height() * 1.5 / 40),
         QRectF(d.area)},
        {"spot outside the area", d.curves[0].seed, QRectF(d.area.left(), d.area.top(), 20, 20)},
        {"area outside the picture", QPointF(-5, -5), QRectF(-50, -50, 40, 40)},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_FALSE(CCurveTracer().Trace(d.image, c.spot, c.area).found);
    }
    EXPECT_FALSE(CCurveTracer().Trace(QImage(), QPointF(1, 1), QRectF(0, 0, 9, 9)).found);
}

TEST(CurveTracer, ProposalSpacing)
{
    // A log axis of three decades over 300 pixels: 1 at x 0, 1000 at x 300.
    const auto valueOf = [](double x) { return std::pow(10.0, x / 100); };
    const auto pixelOf = [](double v) { return 100 * std::log10(v); };
    const struct {
        const char *name;
        CTraceSpacing::Kind kind;
        double n;
        std::initializer_list<double> values;
        double start, end;
        std::initializer_list<double> xs;
    } cases[] = {
        {"every 40 px", CTraceSpacing::EveryNPixels, 40, {}, 10, 100, {10, 50, 90, 100}},
        {"every 45 px ends on a step", CTraceSpacing::EveryNPixels, 45, {}, 10, 100, {10, 55, 100}},
        {"below a pixel apart", CTraceSpacing::EveryNPixels, 0.5, {}, 10, 100, {}},
        {"2 a decade", CTraceSpacing::PerDecade, 2, {}, 20, 160, {20, 50, 100, 150, 160}},
        {"1 a decade, ends on decades", CTraceSpacing::PerDecade, 1, {}, 0, 300, {0, 100, 200, 300}},
        {"given X, those inside", CTraceSpacing::AtValues, 0, {100, 2, 5000, 10}, 0, 250, {30.103, 100, 200}},
        {"reversed ends", CTraceSpacing::EveryNPixels, 10, {}, 50, 40, {}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CTraceSpacing spacing;
        spacing.kind = c.kind;
        spacing.n = c.n;
        spacing.values = c.values;
        const std::vector<double> got = ProposalXs(spacing, c.start, c.end, valueOf, pixelOf);
        const std::vector<double> want = c.xs;
        ASSERT_EQ(got.size(), want.size());
        for (std::size_t i = 0; i < got.size(); ++i)
            EXPECT_NEAR(got[i], want[i], 1e-3) << i;
    }
}
