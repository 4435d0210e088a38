#include "tool/capture/capturemodel.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

namespace {

constexpr double Unset = -12345.0;

struct MapCase {
    const char *name;
    int x1, y1, x2, y2;     // corners
    double xa, ya, xb, yb;  // values at the first and the second corner
    bool xLog, yLog;
    double px, py;
    bool result;
    double x, y;            // Unset: left alone
};

CCaptureModel calibrated(const MapCase &c)
{
    CCaptureModel m;
    m.m_calibration.firstCornerX = c.x1;
    m.m_calibration.firstCornerY = c.y1;
    m.m_calibration.secondCornerX = c.x2;
    m.m_calibration.secondCornerY = c.y2;
    m.SetCalibration(c.xa, c.ya, c.xb, c.yb, c.xLog, c.yLog, CMyDoubleArray(), 0);
    return m;
}

const MapCase mapCases[] = {
    {"linear", 100, 400, 500, 100, 0, 0, 10, 5, false, false, 300, 250, true, 5, 2.5},
    {"outside the rectangle", 100, 400, 500, 100, 0, 0, 10, 5, false, false, 0, 460, true, -2.5, -1},
    {"log X", 0, 300, 300, 0, 1, 0, 1000, 3, true, false, 100, 200, true, 10, 1},
    {"log both", 0, 200, 200, 0, 1, 1, 100, 100, true, true, 50, 100, true, std::sqrt(10.0), 10},
    {"falling X", 500, 400, 100, 100, 0, 0, 10, 3, false, false, 400, 100, true, 2.5, 3},
    {"fraction from the magnifier", 0, 100, 100, 0, 0, 0, 100, 100, false, false, 12.125, 99.875, true, 12.125, 0.125},
    // X fails and Y is still written: the required asymmetry.
    {"equal X corners", 100, 400, 100, 100, 0, 0, 10, 5, false, false, 300, 250, false, Unset, 2.5},
    {"log X at zero", 0, 300, 300, 0, 0, 0, 1000, 3, true, false, 100, 200, false, Unset, 1},
    {"log X below zero", 0, 300, 300, 0, 1, 0, -5, 3, true, false, 100, 200, false, Unset, 1},
    // Y fails: nothing more is written.
    {"equal Y corners", 0, 100, 100, 100, 0, 0, 10, 5, false, false, 50, 20, false, 5, Unset},
    {"log Y at zero", 0, 100, 100, 0, 0, 0, 10, 5, false, true, 50, 20, false, 5, Unset},
    {"all zero", 0, 0, 0, 0, 0, 0, 0, 0, false, false, 50, 20, false, Unset, Unset},
};

} // namespace

TEST(CaptureMapping, PixelToValue)
{
    for (const MapCase &c : mapCases) {
        SCOPED_TRACE(c.name);
        const CCaptureModel m = calibrated(c);
        double x = Unset, y = Unset;
        EXPECT_EQ(m.MapPixelToValue(c.px, c.py, x, y), c.result);
        EXPECT_NEAR(x, c.x, 1e-12 * std::max(1.0, std::fabs(c.x)));
        EXPECT_NEAR(y, c.y, 1e-12 * std::max(1.0, std::fabs(c.y)));
    }
}

TEST(CaptureMapping, ValueToPixelInvertsTheMapping)
{
    for (const MapCase &c : mapCases) {
        if (!c.result)
            continue;
        SCOPED_TRACE(c.name);
        const CCaptureModel m = calibrated(c);
        const CPixelMapping p = m.PixelMapping();
        ASSERT_TRUE(p.drawable);
        EXPECT_NEAR(p.PixelX(c.x), c.px, 1e-9);
        EXPECT_NEAR(p.PixelY(c.y), c.py, 1e-9);
    }
    // Equal corners or equal values leave nothing to draw.
    EXPECT_FALSE(calibrated(mapCases[6]).PixelMapping().drawable);
    MapCase flat = mapCases[0];
    flat.xb = flat.xa;
    EXPECT_FALSE(calibrated(flat).PixelMapping().drawable);
}

TEST(CaptureMapping, RoundsHalfAwayFromZero)
{
    const struct { double in; double out; } cases[] = {
        {2.5, 3}, {2.49, 2}, {-2.5, -3}, {-2.49, -2}, {-0.4, 0}, {0, 0}, {1e10, 1e10}};
    for (const auto &c : cases)
        EXPECT_EQ(RoundPixel(c.in), c.out) << c.in;
    EXPECT_EQ(RoundPixelToInt(-7.5), -8);
    EXPECT_EQ(RoundPixelToInt(1e300), INT_MAX);
    EXPECT_EQ(RoundPixelToInt(-INFINITY), INT_MIN);
    EXPECT_EQ(RoundPixelToInt(NAN), 0);
}

TEST(CaptureClicks, CornersThenPoints)
{
    const struct {
        CaptureMode mode, after;
        CClickResult::Reaction reaction;
        bool repaint;
    } cases[] = {
        {ModeCorner1, ModeCorner2, CClickResult::None, false},
        {ModeTyped, ModeTypedCorner2, CClickResult::None, false},
        {ModeCorner2, ModeCornersSet, CClickResult::None, true},
        {ModeTypedCorner2, ModeTypedCornersSet, CClickResult::FocusXAtSecond, true},
        {ModeTypedCornersSet, ModeTypedCornersSet, CClickResult::FocusXAtSecond, false},
        {ModeIdle, ModeIdle, CClickResult::None, false},
        {ModePlotted, ModePlotted, CClickResult::None, false},
        {ModeCornersSet, ModeCornersSet, CClickResult::None, false},
        {ModeTrace, ModeTrace, CClickResult::AppendPoint, false},
        {ModeTypedTrace, ModeTypedTrace, CClickResult::AppendPoint, false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(int(c.mode));
        CCaptureModel m;
        m.m_mode = c.mode;
        // The click of the magnifier, with fractions of a pixel.
        const CClickResult r = m.SetFirstOrSecondCorner(10.875, -3.125);
        EXPECT_EQ(m.m_mode, c.after);
        EXPECT_EQ(r.reaction, c.reaction);
        EXPECT_EQ(r.repaint, c.repaint);
        // No calibration: even trace clicks travel on as the pixel.
        EXPECT_EQ(r.x, 10.875);
        EXPECT_EQ(r.y, -3.125);
        const CaptureCalibration &k = m.m_calibration;
        // A corner keeps the fractions, as a point does.
        EXPECT_EQ(k.firstCornerX + k.secondCornerX, c.after == c.mode ? 0 : 10.875);
        EXPECT_EQ(k.firstCornerY + k.secondCornerY, c.after == c.mode ? 0 : -3.125);
        EXPECT_EQ(k.firstCornerX == 10.875, c.mode == ModeCorner1 || c.mode == ModeTyped);
    }
    // A position that is no number places the corner at 0.
    CCaptureModel m;
    m.m_mode = ModeCorner1;
    m.SetFirstOrSecondCorner(NAN, INFINITY);
    EXPECT_EQ(m.m_calibration.firstCornerX, 0.0);
    EXPECT_EQ(m.m_calibration.firstCornerY, 0.0);
}

TEST(CaptureModel, DefaultRectangleAndResize)
{
    const CCornerRect r = DefaultRectangle(640, 480, 50);
    EXPECT_EQ(r.firstX, 50);
    EXPECT_EQ(r.firstY, 456);
    EXPECT_EQ(r.secondX, 608);
    EXPECT_EQ(r.secondY, 24);
    const CCornerRect small = DefaultRectangle(39, 19, 7);
    EXPECT_EQ(small.secondX, 38);
    EXPECT_EQ(small.secondY, 0);
    EXPECT_EQ(small.firstY, 19);

    CCaptureModel m;
    m.m_mode = ModeTrace;
    m.SetDefaultRectangle(640, 480, 50);
    EXPECT_EQ(m.m_mode, ModePlotted);
    EXPECT_EQ(m.m_calibration.secondCornerX, 608);
    m.SetDefaultRectangle(100, 100, 5); // a rectangle is set: kept
    EXPECT_EQ(m.m_calibration.secondCornerX, 608);
    m.CanvasResized(100, 100, 5);       // in mode 7 it follows the size
    EXPECT_EQ(m.m_calibration.secondCornerX, 95);
    m.m_mode = ModeTrace;
    m.CanvasResized(640, 480, 50);      // elsewhere it stays
    EXPECT_EQ(m.m_calibration.secondCornerX, 95);
}

TEST(CaptureModel, CalibrationTakesThePointsAndStartOverClearsAll)
{
    CCaptureModel m;
    m.PicturePasted();
    EXPECT_TRUE(m.m_calibration.pictureLoaded && m.m_calibration.pictureShown);
    m.m_calibration.firstCornerX = 5;
    m.m_calibration.secondCornerY = 9;
    CMyDoubleArray points(6);
    points[4] = 7;
    m.SetCalibration(0, 0.05, 10, 50, false, true, std::move(points), 3);
    EXPECT_EQ(m.m_points.pairs[4], 7.0);
    EXPECT_EQ(m.m_calibration.yTickLabels.size(), 5);
    EXPECT_DOUBLE_EQ(m.m_calibration.yGridLow, 0.01);

    // A count beyond the block is cut to what the block holds.
    m.SetCalibration(0, 0, 1, 1, false, false, CMyDoubleArray(4), 9);
    EXPECT_EQ(m.m_points.count, 2);

    m.m_mode = ModeTrace;
    m.StartOver();
    EXPECT_EQ(m.m_mode, ModeIdle);
    EXPECT_FALSE(m.m_calibration.pictureLoaded || m.m_calibration.pictureShown);
    EXPECT_EQ(m.m_calibration.firstCornerX + m.m_calibration.secondCornerY, 0);
    EXPECT_EQ(m.m_points.count, 0);
    EXPECT_TRUE(m.m_calibration.yTickLabels.isEmpty());
}
