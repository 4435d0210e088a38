// The mapping of axis values to pixels when the axis's span overflows or
// vanishes: far pixels, never an integer made from a double out of range.
#include "graphdata/draw/axispaint.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(AxisPixels, StayWithinTheFarLimitForEveryOffset)
{
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const int far = int(kFarPixels);
    struct Case
    {
        double v, vmin, scale;
        int x; // MapX with left 100; MapY with bottom 100 mirrors it
    };
    const Case cases[] = {
        {5, 0, 10, 150},
        {-0.25, 0, 10, 97},
        {1.7e308, -1.7e308, 1e-300, 100 + far},     // the span overflows to infinity
        {-1.7e308, 1.7e308, 1e-300, 100 - far},
        {1, 0, inf, 100 + far},
        {0, 0, inf, 100 - far},                     // 0 times infinity: no number
        {nan, 0, 1, 100 - far},
        {1e-320, 0, 1e300, 100 + 0},                // denormal steps of a tiny axis
        {3e9, 0, 1, 100 + far},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(MapX(c.v, c.vmin, c.scale, 100), c.x) << c.v << ' ' << c.vmin << ' ' << c.scale;
        EXPECT_EQ(MapY(c.v, c.vmin, c.scale, 100), 200 - c.x) << c.v << ' ' << c.vmin << ' ' << c.scale;
    }
}

} // namespace
