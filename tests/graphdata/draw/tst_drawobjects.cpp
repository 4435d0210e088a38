// Drawing objects on a plot: where they are drawn, what a click hits, how a
// drag or a handle changes their graph values, their stored form, and
// positions that are not numbers or lie far outside.
#include "graphdata/draw/drawobjects.h"
#include "support/bufferio.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

namespace {

// Plot pixels 10..209 both ways; values 0..100 on both axes, 2 pixels a unit.
CObjectFrame frame()
{
    CObjectFrame f;
    f.plotRect = QRect(QPoint(10, 10), QPoint(209, 209));
    f.xMin = 0;
    f.xScale = 2;
    f.yMin = 0;
    f.yScale = 2;
    return f;
}

QImage drawn(CTextnLine &object, bool withHandles = false)
{
    QImage image(220, 220, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    object.Draw(painter, withHandles, frame());
    return image;
}

bool dark(const QImage &image, int x, int y)
{
    return qGray(image.pixel(x, y)) < 128;
}

int darkPixels(const QImage &image)
{
    int n = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            n += dark(image, x, y);
    return n;
}

template <typename T>
std::unique_ptr<T> roundTrip(T &object, int fileFormat, int versionB, int *bytes = nullptr)
{
    CBufferIO out(0, std::uint16_t(versionB));
    out.Reset(CBufferIO::ModeWrite, 0);
    object.Transfer(out, fileFormat);
    if (bytes)
        *bytes = out.GetLength();
    CBufferIO in(0, std::uint16_t(versionB));
    in.LoadForReading(out.ToByteArray());
    auto back = std::make_unique<T>();
    back->Transfer(in, fileFormat);
    EXPECT_TRUE(in.AtEnd());
    return back;
}

} // namespace

TEST(DrawObjects, LineIsDrawnAndHitAtItsPixels)
{
    CDrawLines line;
    line.m_x1 = 10, line.m_y1 = 10, line.m_x2 = 60, line.m_y2 = 60; // pixels (30,189) to (130,89)
    const QImage image = drawn(line);
    EXPECT_EQ(line.m_end1, QPoint(30, 189));
    EXPECT_EQ(line.m_end2, QPoint(130, 89));
    EXPECT_TRUE(dark(image, 80, 139));
    EXPECT_FALSE(dark(image, 80, 100));
    const struct
    {
        QPoint at;
        bool handles;
        int expected;
    } cases[] = {
        {{30, 189}, true, 1},  {{33, 186}, true, 1},  {{130, 89}, true, 2}, {{80, 139}, true, 10},
        {{30, 189}, false, 10}, {{82, 139}, false, 10}, {{80, 100}, false, 0}, {{140, 79}, true, 0},
    };
    for (const auto &c : cases)
        EXPECT_EQ(line.HitTest(c.at, c.handles), c.expected) << c.at.x() << "," << c.at.y();
    EXPECT_TRUE(line.HitRect(QRect(QPoint(120, 80), QPoint(100, 100)))); // unnormalised, over the line
    EXPECT_FALSE(line.HitRect(QRect(100, 60, 20, 20)));                  // inside the box, off the line
    EXPECT_EQ(line.LastRect(), QRect(QPoint(28, 87), QPoint(132, 191)));
}

TEST(DrawObjects, LineDragsMoveValuesOnlyWhenTheDragEnds)
{
    CDrawLines line;
    line.m_x1 = 10, line.m_y1 = 10, line.m_x2 = 60, line.m_y2 = 60;
    drawn(line);
    {
        QImage image(220, 220, QImage::Format_RGB32);
        QPainter painter(&image);
        line.DrawMoved(painter, QPoint(40, 0), frame());
    }
    EXPECT_EQ(line.m_x1, 10);
    EXPECT_EQ(line.m_end1, QPoint(30, 189));

    line.MoveBy(QPoint(10, -20), frame());
    EXPECT_DOUBLE_EQ(line.m_x1, 15);
    EXPECT_DOUBLE_EQ(line.m_y1, 20);
    EXPECT_DOUBLE_EQ(line.m_x2, 65);
    EXPECT_DOUBLE_EQ(line.m_y2, 70);
    line.MoveHandle(2, QPoint(-20, 0), frame());
    EXPECT_DOUBLE_EQ(line.m_x2, 55);
    EXPECT_DOUBLE_EQ(line.m_x1, 15);
}

TEST(DrawObjects, ArrowsAddTheirHeadAtTheFirstEnd)
{
    int plain = 0;
    for (int style : {0, 1, 2}) {
        CDrawLines line;
        line.m_x1 = 20, line.m_y1 = 50, line.m_x2 = 80, line.m_y2 = 50;
        line.m_arrowStyle = style;
        const QImage image = drawn(line);
        const int n = darkPixels(image);
        if (style == 0)
            plain = n;
        else
            EXPECT_GT(n, plain + 6) << style; // the head's strokes or its filled body
        // Nothing lies beyond the last end.
        EXPECT_FALSE(dark(image, 175, 109)) << style;
    }
}

TEST(DrawObjects, RectangleHandlesAndTheirMoves)
{
    CDrawRect rect;
    rect.m_x1 = 10, rect.m_y1 = 80, rect.m_x2 = 60, rect.m_y2 = 30; // pixels x 30..130, y 49..149
    const QImage image = drawn(rect);
    EXPECT_EQ(rect.m_pixels, QRect(QPoint(30, 49), QPoint(130, 149)));
    EXPECT_TRUE(dark(image, 80, 49));
    EXPECT_FALSE(dark(image, 80, 99)); // an outline, never filled
    const struct
    {
        QPoint at;
        bool handles;
        int expected;
    } hits[] = {
        {{30, 49}, true, 11},  {{130, 149}, true, 12}, {{30, 149}, true, 13}, {{130, 49}, true, 14},
        {{80, 49}, true, 21},  {{130, 99}, true, 22},  {{30, 99}, true, 23},  {{80, 149}, true, 24},
        {{80, 99}, false, 10}, {{30, 49}, false, 10},  {{180, 180}, true, 0},
    };
    for (const auto &c : hits)
        EXPECT_EQ(rect.HitTest(c.at, c.handles), c.expected) << c.at.x() << "," << c.at.y();

    const struct
    {
        int handle;
        double x1, y1, x2, y2;
    } moves[] = {
        {10, 15, 75, 65, 25}, {11, 15, 75, 60, 30}, {12, 10, 80, 65, 25}, {13, 15, 80, 60, 25},
        {14, 10, 75, 65, 30}, {21, 10, 75, 60, 30}, {22, 10, 80, 65, 30}, {23, 15, 80, 60, 30},
        {24, 10, 80, 60, 25}, {99, 10, 80, 60, 30},
    };
    for (const auto &m : moves) {
        SCOPED_TRACE(m.handle);
        CDrawRect r;
        r.m_x1 = 10, r.m_y1 = 80, r.m_x2 = 60, r.m_y2 = 30;
        {
            QImage scratch(220, 220, QImage::Format_RGB32);
            QPainter painter(&scratch);
            r.DrawResized(painter, m.handle, QPoint(10, 10), frame());
        }
        EXPECT_EQ(r.m_x1, 10); // the outline alone follows the drag
        r.MoveHandle(m.handle, QPoint(10, 10), frame());
        EXPECT_DOUBLE_EQ(r.m_x1, m.x1);
        EXPECT_DOUBLE_EQ(r.m_y1, m.y1);
        EXPECT_DOUBLE_EQ(r.m_x2, m.x2);
        EXPECT_DOUBLE_EQ(r.m_y2, m.y2);
    }
}

TEST(DrawObjects, TextIsPlacedByItsAlignment)
{
    const struct
    {
        int alignment;
        bool leftOnPoint, rightOnPoint, bottomOnPoint;
    } cases[] = {{1, true, false, false}, {2, false, true, false}, {3, true, false, true}, {0, false, false, false}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.alignment);
        CDrawText text;
        text.m_x = 50, text.m_y = 50; // pixel (110, 109)
        text.m_text = QStringLiteral("Peak");
        text.m_alignment = c.alignment;
        const QImage image = drawn(text);
        const QRect r = text.LastRect().adjusted(2, 2, -2, -2);
        ASSERT_FALSE(r.isEmpty());
        EXPECT_GT(darkPixels(image), 10);
        if (c.leftOnPoint) {
            EXPECT_EQ(r.left(), 110);
        }
        if (c.rightOnPoint) {
            EXPECT_EQ(r.left() + r.width(), 110);
        }
        if (c.bottomOnPoint) {
            EXPECT_EQ(r.top() + r.height(), 109);
        } else {
            EXPECT_LE(std::abs(r.center().y() - 109), 1);
        }
        if (!c.leftOnPoint && !c.rightOnPoint) {
            EXPECT_LE(std::abs(r.center().x() - 110), 1);
        }
        EXPECT_EQ(text.HitTest(r.center(), false), 10);
        EXPECT_EQ(text.HitTest(r.topLeft() - QPoint(3, 3), false), 0);
        text.MoveBy(QPoint(20, 0), frame());
        EXPECT_DOUBLE_EQ(text.m_x, 60);
        EXPECT_DOUBLE_EQ(text.m_y, 50);
    }
}

TEST(DrawObjects, StoredFormsReadBack)
{
    CDrawLines line;
    line.m_x1 = 1.5, line.m_y1 = -2, line.m_x2 = 1e9, line.m_y2 = 3;
    line.m_pen.color = 0x0000FF;
    line.m_pen.widthX = 3;
    line.m_arrowStyle = 2;
    line.m_yAxisIndex = 2;
    const struct
    {
        int format, versionB, axisBack;
    } cases[] = {{12, 0, 2}, {11, 1, 2}, {11, 0, 0}, {10, 3, 0}};
    int withAxis = 0;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.format * 10 + c.versionB);
        int bytes = 0;
        const auto back = roundTrip(line, c.format, c.versionB, &bytes);
        EXPECT_EQ(back->m_x1, 1.5);
        EXPECT_EQ(back->m_y1, -2);
        EXPECT_EQ(back->m_x2, 1e9);
        EXPECT_EQ(back->m_pen.color, 0x0000FFu);
        EXPECT_EQ(back->m_pen.widthX, 3);
        EXPECT_EQ(back->m_arrowStyle, 2);
        EXPECT_EQ(back->m_yAxisIndex, c.axisBack);
        if (c.axisBack)
            withAxis = bytes;
        else
            EXPECT_EQ(bytes + 4, withAxis); // four doubles, the pen, the style, the axis
    }
    EXPECT_EQ(withAxis, 4 * 8 + 16 + 4 + 4);

    CDrawRect rect;
    rect.m_x1 = 4, rect.m_y1 = 5, rect.m_x2 = 6, rect.m_y2 = 7;
    rect.m_pen.style = 2;
    rect.m_yAxisIndex = 1;
    const auto rectBack = roundTrip(rect, 12, 0);
    EXPECT_EQ(rectBack->m_y2, 7);
    EXPECT_EQ(rectBack->m_pen.style, 2u);
    EXPECT_EQ(rectBack->m_yAxisIndex, 1);

    CDrawText text;
    text.m_x = 8, text.m_y = 9;
    text.m_alignment = 3;
    text.m_vertical = 1;
    text.m_fontHeight = 14;
    text.m_text = QStringLiteral("Ü 50 Hz");
    text.m_color = 0x123456;
    text.m_yAxisIndex = 1;
    const auto textBack = roundTrip(text, 12, 0);
    EXPECT_EQ(textBack->m_text, text.m_text);
    EXPECT_EQ(textBack->m_face, QStringLiteral("Arial"));
    EXPECT_EQ(textBack->m_alignment, 3);
    EXPECT_EQ(textBack->m_vertical, 1);
    EXPECT_EQ(textBack->m_fontHeight, 14);
    EXPECT_EQ(textBack->m_color, 0x123456u);
    EXPECT_EQ(textBack->m_yAxisIndex, 1);
}

TEST(DrawObjects, PositionsNotNumbersOrFarOutAreSkippedOrClipped)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    {
        CDrawLines line;
        line.m_x1 = 10, line.m_y1 = 10, line.m_x2 = nan, line.m_y2 = 60;
        EXPECT_EQ(darkPixels(drawn(line)), 0);
        EXPECT_EQ(line.HitTest(QPoint(30, 189), true), 0);
        EXPECT_TRUE(line.PixelRect(frame()).isEmpty());
    }
    {
        // From inside the plot to far beyond its right side: drawn up to the
        // edge of the picture, hit inside the plot.
        CDrawLines line;
        line.m_x1 = 50, line.m_y1 = 50, line.m_x2 = 1e300, line.m_y2 = 50;
        line.m_arrowStyle = 2;
        const QImage image = drawn(line);
        EXPECT_TRUE(dark(image, 150, 109));
        EXPECT_TRUE(dark(image, 205, 109));
        EXPECT_EQ(line.HitTest(QPoint(180, 109), false), 10);
        EXPECT_LE(line.PixelRect(frame()).right(), 209 + 16 + 2);
    }
    {
        CDrawRect rect;
        rect.m_x1 = -1e308, rect.m_y1 = 80, rect.m_x2 = 60, rect.m_y2 = -1e308;
        const QImage image = drawn(rect);
        EXPECT_TRUE(dark(image, 80, 49));  // the top edge, in the plot
        EXPECT_TRUE(dark(image, 130, 99)); // the right edge
        EXPECT_EQ(rect.HitTest(QPoint(100, 100), false), 10);
    }
    {
        CDrawText text;
        text.m_x = nan, text.m_y = 1;
        text.m_text = QStringLiteral("x");
        EXPECT_EQ(darkPixels(drawn(text)), 0);
        EXPECT_EQ(text.HitTest(QPoint(10, 209), false), 0);
    }
}

namespace {

// The same plot with 50 pixels a decade, from 1 to 10^4, on a log axis.
CObjectFrame frameOn(bool xLog, bool yLog)
{
    CObjectFrame f = frame();
    if (xLog)
        f.xLog = true, f.xMin = 0, f.xScale = 50;
    if (yLog)
        f.yLog = true, f.yMin = 0, f.yScale = 50;
    return f;
}

struct LogCase
{
    const char *name;
    bool xLog, yLog;
    double x1, y1, x2, y2;
    bool drawn;
    QPoint end1, end2;
    double movedX1, movedY1, movedX2, movedY2; // after a move by (50, -50)
};

class ObjectsOnLogAxes : public ::testing::TestWithParam<LogCase>
{
};

} // namespace

TEST_P(ObjectsOnLogAxes, LineIsDrawnHitAndMovedInLogUnits)
{
    const LogCase &c = GetParam();
    const CObjectFrame f = frameOn(c.xLog, c.yLog);
    CDrawLines line;
    line.m_x1 = c.x1, line.m_y1 = c.y1, line.m_x2 = c.x2, line.m_y2 = c.y2;
    QImage image(220, 220, QImage::Format_RGB32);
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        line.Draw(painter, false, f);
    }
    if (!c.drawn) {
        EXPECT_EQ(darkPixels(image), 0);
        EXPECT_EQ(line.HitTest(QPoint(110, 110), false), 0);
        EXPECT_TRUE(line.PixelRect(f).isEmpty());
        line.MoveBy(QPoint(50, -50), f); // a value the axis cannot show stays as it was
        EXPECT_EQ(line.m_x1, c.x1);
        EXPECT_EQ(line.m_y1, c.y1);
        return;
    }
    EXPECT_EQ(line.m_end1, c.end1);
    EXPECT_EQ(line.m_end2, c.end2);
    const QPoint middle = (c.end1 + c.end2) / 2;
    EXPECT_TRUE(dark(image, middle.x(), middle.y()));
    EXPECT_EQ(line.HitTest(middle, false), 10);
    EXPECT_EQ(line.HitTest(c.end2, true), 2);
    EXPECT_TRUE(line.PixelRect(f).contains(QRect(c.end1, c.end2).normalized()));

    line.MoveBy(QPoint(50, -50), f);
    EXPECT_NEAR(line.m_x1, c.movedX1, 1e-9 * std::abs(c.movedX1));
    EXPECT_NEAR(line.m_y1, c.movedY1, 1e-9 * std::abs(c.movedY1));
    EXPECT_NEAR(line.m_x2, c.movedX2, 1e-9 * std::abs(c.movedX2));
    EXPECT_NEAR(line.m_y2, c.movedY2, 1e-9 * std::abs(c.movedY2));
}

// A value taken from a pixel gives that pixel back, across the whole plot.
TEST_P(ObjectsOnLogAxes, PixelsComeBackFromTheirValues)
{
    const LogCase &c = GetParam();
    const CObjectFrame f = frameOn(c.xLog, c.yLog);
    for (int p = 10; p <= 209; p += 3) {
        double x, y, px, py;
        ASSERT_TRUE(ObjectValue(f, p, 219 - p, x, y));
        ASSERT_TRUE(ObjectPixel(f, x, y, px, py));
        EXPECT_EQ(px, p);
        EXPECT_EQ(py, 219 - p);
        if (c.xLog) {
            EXPECT_GT(x, 0);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Axes, ObjectsOnLogAxes,
    ::testing::Values(LogCase{"Linear", false, false, 10, 10, 60, 60, true, {30, 189}, {130, 89}, 35, 35, 85, 85},
                      LogCase{"LogX", true, false, 10, 10, 1000, 60, true, {60, 189}, {160, 89}, 100, 35, 1e4, 85},
                      LogCase{"LogY", false, true, 10, 10, 60, 100, true, {30, 159}, {130, 109}, 35, 100, 85, 1000},
                      LogCase{"LogXY", true, true, 10, 10, 1000, 100, true, {60, 159}, {160, 109}, 100, 100, 1e4,
                              1000},
                      LogCase{"ZeroOnLogX", true, false, 0, 10, 100, 60, false, {}, {}, 0, 0, 0, 0},
                      LogCase{"NegativeOnLogY", false, true, 10, -5, 60, 100, false, {}, {}, 0, 0, 0, 0}),
    [](const auto &info) { return std::string(info.param.name); });

// A rectangle's corner handle and a text's move keep to the log scale.
TEST(DrawObjects, RectangleAndTextFollowALogAxis)
{
    const CObjectFrame f = frameOn(true, true);
    CDrawRect rect;
    rect.m_x1 = 10, rect.m_y1 = 1000, rect.m_x2 = 100, rect.m_y2 = 10; // pixels x 60..110, y 59..159
    QImage image(220, 220, QImage::Format_RGB32);
    image.fill(Qt::white);
    CDrawText text;
    text.m_x = 100, text.m_y = 100; // pixel (110, 109)
    text.m_text = QStringLiteral("1 kHz");
    text.m_alignment = 1;
    {
        QPainter painter(&image);
        rect.Draw(painter, false, f);
        text.Draw(painter, false, f);
    }
    EXPECT_EQ(rect.m_pixels, QRect(QPoint(60, 59), QPoint(110, 159)));
    EXPECT_EQ(rect.HitTest(QPoint(110, 59), true), 14);
    EXPECT_EQ(text.LastRect().left() + 2, 110);
    EXPECT_EQ(text.HitTest(text.LastRect().center(), false), 10);
    rect.MoveHandle(12, QPoint(50, 50), f); // the lower right corner a decade right and down
    EXPECT_NEAR(rect.m_x2, 1000, 1e-9);
    EXPECT_NEAR(rect.m_y2, 1, 1e-12);
    EXPECT_NEAR(rect.m_x1, 10, 1e-12);
    text.MoveBy(QPoint(-100, 0), f);
    EXPECT_NEAR(text.m_x, 1, 1e-12);
    EXPECT_EQ(text.m_y, 100);
}
