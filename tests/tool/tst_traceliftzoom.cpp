// The magnifier over the picture: when it opens, what it shows, and what a
// click and a move in it do on the canvas.

#include "traceliftfixture.h"

#include "tool/capture/numbertext.h"
#include "tool/traceliftzoom.h"

#include <QPainter>
#include <cmath>

namespace {

double saturation(double x) { return 100.0 * (1 - std::exp(-x / 2.5)); }

QList<double> samples()
{
    QList<double> xs;
    for (double x = 0.2; x < 10; x += 0.8)
        xs << x;
    return xs;
}

class ZoomTest : public TraceliftTest
{
protected:
    CTraceliftZoom *zoom() const { return canvas()->Magnifier(); }
    void rightClick(QPoint p) { QTest::mouseClick(canvas(), Qt::RightButton, {}, p); }
    void zoomClick(QPoint p) { QTest::mouseClick(zoom(), Qt::LeftButton, {}, p); }
    QString readoutOf(double x, double y) const
    {
        return u'(' + FormatG(x, 5) + u',' + FormatG(y, 5) + u')';
    }
};

} // namespace

TEST_F(ZoomTest, OpensOnlyOverAShownPicture)
{
    ASSERT_NE(zoom(), nullptr);
    EXPECT_EQ(zoom()->objectName(), QStringLiteral("1100"));
    EXPECT_EQ(zoom()->parentWidget(), canvas());
    const CGraphPicture g = MakeGraphPicture(false, saturation, samples());

    // No picture yet: the right button does nothing.
    next();
    ASSERT_EQ(mode(), ModeWaitPicture);
    EXPECT_FALSE(zoom()->OpenAt(QPoint(100, 100)));
    rightClick(QPoint(100, 100));
    EXPECT_FALSE(zoom()->isVisible());

    QGuiApplication::clipboard()->setImage(g.image);
    next();
    ASSERT_EQ(mode(), ModePicturePlaced);
    const QPoint at(200, 150);
    rightClick(at);
    ASSERT_TRUE(zoom()->isVisible());
    EXPECT_EQ(zoom()->m_center, at);
    EXPECT_EQ(zoom()->geometry(), QRect(120, 70, 160, 160));
    EXPECT_EQ(zoom()->m_sourceRect, QRect(190, 140, 20, 20));
    // A second right click moves it.
    rightClick(QPoint(300, 200));
    EXPECT_EQ(zoom()->geometry(), QRect(220, 120, 160, 160));

    // Next and Back hide it.
    next();
    EXPECT_FALSE(zoom()->isVisible());
    rightClick(at);
    EXPECT_TRUE(zoom()->isVisible());
    back();
    EXPECT_FALSE(zoom()->isVisible());

    // Near the edge it runs past the canvas and is clipped, not moved in.
    rightClick(QPoint(3, 4));
    ASSERT_TRUE(zoom()->isVisible());
    EXPECT_EQ(zoom()->geometry(), QRect(-77, -76, 160, 160));
    const QPoint far(canvas()->width() - 2, canvas()->height() - 1);
    rightClick(far);
    EXPECT_EQ(zoom()->geometry(), QRect(far - QPoint(80, 80), QSize(160, 160)));
    EXPECT_FALSE(canvas()->rect().contains(zoom()->geometry()));
}

TEST_F(ZoomTest, ShowsThePatchEightTimesEnlarged)
{
    const CGraphPicture g = MakeGraphPicture(false, saturation, samples());
    reach(ModePicturePlaced, g);
    // Pan the picture a little, so that canvas and picture pixels differ.
    QTest::mousePress(canvas(), Qt::LeftButton, {}, QPoint(300, 300));
    QTest::mouseMove(canvas(), QPoint(290, 295));
    QTest::mouseRelease(canvas(), Qt::LeftButton, {}, QPoint(290, 295));
    const CaptureCalibration &c = canvas()->m_capture.m_calibration;
    ASSERT_EQ(QPoint(c.panX, c.panY), QPoint(10, 5));

    for (QPoint at : {g.vertices[4] - QPoint(c.panX, c.panY), QPoint(5, 5)}) {
        SCOPED_TRACE(QStringLiteral("at %1,%2").arg(at.x()).arg(at.y()).toStdString());
        rightClick(at);
        ASSERT_TRUE(zoom()->isVisible());
        QImage shown(160, 160, QImage::Format_RGB32);
        shown.fill(Qt::black);
        {
            QPainter p(&shown);
            zoom()->Paint(p);
        }
        const QImage &picture = canvas()->Bitmap();
        int mismatches = 0;
        for (int y = 0; y < 160; ++y)
            for (int x = 0; x < 160; ++x) {
                const QPoint source = zoom()->m_sourceRect.topLeft() + QPoint(x / 8, y / 8) + QPoint(c.panX, c.panY);
                const QRgb expected = picture.rect().contains(source) ? picture.pixel(source) : qRgb(255, 255, 255);
                mismatches += shown.pixel(x, y) != expected;
            }
        EXPECT_EQ(mismatches, 0);
    }
}

TEST_F(ZoomTest, AClickPlacesACornerAndAPointOnAnEighth)
{
    const CGraphPicture g = MakeGraphPicture(false, saturation, samples());
    reach(ModeCorner1, g);
    ASSERT_EQ(mode(), ModeCorner1);

    // Corners keep the eighths of a pixel, as points do.
    struct Corner {
        QPoint openAt;
        QPoint inWindow;
    };
    const Corner corners[] = {
        {g.lowerLeft + QPoint(3, -2), QPoint(80 - 24 + 7, 80 + 16 + 5)},
        {g.upperRight + QPoint(-1, 1), QPoint(80 + 8 + 6, 80 - 8 + 1)},
    };
    for (const Corner &k : corners) {
        rightClick(k.openAt);
        ASSERT_TRUE(zoom()->isVisible());
        zoomClick(k.inWindow);
        EXPECT_FALSE(zoom()->isVisible());
    }
    ASSERT_EQ(mode(), ModeCornersSet);
    const CaptureCalibration &c = canvas()->m_capture.m_calibration;
    EXPECT_EQ(QPointF(c.firstCornerX, c.firstCornerY), QPointF(g.lowerLeft) + QPointF(0.875, 0.625));
    EXPECT_EQ(QPointF(c.secondCornerX, c.secondCornerY), QPointF(g.upperRight) + QPointF(0.75, 0.125));

    typeValues(g);
    next();
    ASSERT_EQ(mode(), ModeTrace);

    // Trace points keep the fraction: (left + x / 8, top + y / 8).
    const QPoint v = g.vertices[5];
    rightClick(v);
    const QPoint inWindow(80 + 3, 80 - 5);
    const QPointF expected(v.x() + 3 / 8.0, v.y() - 5 / 8.0);
    EXPECT_EQ(zoom()->CanvasPosition(inWindow), expected);

    // A move reads the value out.
    QTest::mouseMove(zoom(), inWindow);
    double x = 0, y = 0;
    ASSERT_TRUE(canvas()->m_capture.MapPixelToValue(expected.x(), expected.y(), x, y));
    // ... on the scale the fractional corners set.
    EXPECT_NEAR(x, g.xLow + (expected.x() - c.firstCornerX) * (g.xHigh - g.xLow) / (c.secondCornerX - c.firstCornerX), 1e-9);
    EXPECT_NEAR(y, g.yLow + (expected.y() - c.firstCornerY) * (g.yHigh - g.yLow) / (c.secondCornerY - c.firstCornerY), 1e-9);
    EXPECT_EQ(text(IdReadout), readoutOf(x, y));

    zoomClick(inWindow);
    EXPECT_FALSE(zoom()->isVisible());
    ASSERT_EQ(canvas()->m_capture.m_points.count, 1);
    EXPECT_EQ(text(IdPoints), QStringLiteral("(%1,%2)").arg(FormatG(x, 5), FormatG(y, 5)));

    // The right button inside the magnifier does nothing.
    rightClick(v);
    QTest::mouseClick(zoom(), Qt::RightButton, {}, inWindow);
    EXPECT_TRUE(zoom()->isVisible());
    EXPECT_EQ(canvas()->m_capture.m_points.count, 1);
}
