#include "graphpicture.h"
#include "support/languagestring.h"
#include "tool/traceliftwnd.h"

#include <QApplication>
#include <QClipboard>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace {

const QRgb FrameColour = qRgb(128, 128, 255);
const QRgb CurveColour = qRgb(255, 128, 128);
const QRgb LabelColour = qRgb(0, 0, 255);

QImage render(const CTraceliftWnd &canvas)
{
    QImage image(canvas.size(), QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter p(&image);
    canvas.Paint(p, canvas.size());
    return image;
}

int countColour(const QImage &image, const QRect &box, QRgb colour)
{
    int n = 0;
    for (int y = box.top(); y <= box.bottom(); ++y)
        for (int x = box.left(); x <= box.right(); ++x)
            if (image.rect().contains(x, y) && image.pixel(x, y) == colour)
                ++n;
    return n;
}

void send(QWidget *w, QEvent::Type type, QPoint p, Qt::MouseButton button, Qt::MouseButtons held)
{
    QMouseEvent e(type, QPointF(p), w->mapToGlobal(QPointF(p)), button, held, Qt::NoModifier);
    QApplication::sendEvent(w, &e);
}

// A canvas of 400 by 300 with a calibration of X 0..10 and Y 0..100 (or
// 1..100 logarithmic) over the rectangle (50, 250)-(350, 50).
void calibrate(CTraceliftWnd &canvas, CaptureMode mode, bool yLog, CMyDoubleArray points = {}, int count = 0)
{
    canvas.resize(400, 300);
    CaptureCalibration &c = canvas.m_capture.m_calibration;
    c.firstCornerX = 50;
    c.firstCornerY = 250;
    c.secondCornerX = 350;
    c.secondCornerY = 50;
    canvas.m_capture.SetCalibration(0, yLog ? 1 : 0, 10, 100, false, yLog, std::move(points), count);
    canvas.SetMode(mode);
}

} // namespace

TEST(TraceliftWnd, GridLabelsAndCurveWithoutPicture)
{
    CTraceliftWnd canvas;
    CMyDoubleArray points(4);
    points[0] = 1;
    points[1] = 10;
    points[2] = 9;
    points[3] = 90;
    calibrate(canvas, ModePlotted, false, points, 2);
    const QImage image = render(canvas);
    EXPECT_EQ(image.pixel(5, 5), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(50, 150), FrameColour);  // frame
    EXPECT_EQ(image.pixel(110, 120), FrameColour); // grid line at X = 2
    EXPECT_EQ(image.pixel(100, 170), FrameColour); // grid line at Y = 40
    EXPECT_EQ(image.pixel(80, 120), qRgb(255, 255, 255));
    // The curve from (1, 10) to (9, 90): pixels (80, 230) to (320, 70).
    EXPECT_EQ(image.pixel(80, 230), CurveColour);
    EXPECT_GT(countColour(image, QRect(195, 145, 11, 11), CurveColour), 0);
    // Labels under every X tick, the last one included, and left of the Y ticks.
    for (int x : {50, 110, 170, 230, 290, 350})
        EXPECT_GT(countColour(image, QRect(x - 12, 252, 24, 14), LabelColour), 0) << x;
    EXPECT_GT(countColour(image, QRect(0, 44, 49, 12), LabelColour), 0);

    // Logarithmic Y: minor lines at 2..9 within each decade.
    calibrate(canvas, ModePlotted, true);
    const QImage log = render(canvas);
    const int two = 250 - int(std::lround(std::log10(2.0) * 100)); // 100 pixels a decade
    EXPECT_EQ(log.pixel(200, two), FrameColour);
    EXPECT_EQ(log.pixel(200, two - 3), qRgb(255, 255, 255));
    EXPECT_EQ(canvas.m_capture.m_calibration.yTickLabels.size(), 3);
}

TEST(TraceliftWnd, PictureHidesTheGridButNotTheFrame)
{
    CTraceliftWnd canvas;
    QImage picture(400, 300, QImage::Format_RGB32);
    picture.fill(qRgb(200, 200, 200));
    ASSERT_TRUE(canvas.CopyBitmap(picture));
    EXPECT_EQ(canvas.Mode(), ModeIdle);
    calibrate(canvas, ModeTrace, false);
    QImage image = render(canvas);
    EXPECT_EQ(image.pixel(110, 120), qRgb(200, 200, 200)); // no grid line over a picture
    EXPECT_EQ(image.pixel(50, 150), FrameColour);
    EXPECT_GT(countColour(image, QRect(98, 252, 24, 14), LabelColour), 0);

    // While the corners are placed there is no frame at the corners.
    canvas.SetMode(ModeCorner2);
    image = render(canvas);
    EXPECT_EQ(image.pixel(50, 150), qRgb(200, 200, 200));

    // Panned beyond the picture, the rest stays white.
    canvas.m_capture.m_calibration.panX = 350;
    image = render(canvas);
    EXPECT_EQ(image.pixel(10, 10), qRgb(200, 200, 200));
    EXPECT_EQ(image.pixel(100, 10), qRgb(255, 255, 255));
}

TEST(TraceliftWnd, FrameFollowsTheModeAndTheSize)
{
    CTraceliftWnd canvas;
    calibrate(canvas, ModeTrace, false);
    const int label = canvas.LabelTextWidth();
    struct Case {
        CaptureMode mode;
        bool corners;
    };
    const Case cases[] = {
        {ModeIdle, false},      {ModeTyped, false},        {ModeTypedCorner2, false},
        {ModeTypedCornersSet, true}, {ModePlotted, true},  {ModeWaitPicture, false},
        {ModeCorner2, false},   {ModeCornersSet, true},    {ModeTrace, true},
    };
    for (const Case &c : cases) {
        canvas.SetMode(c.mode);
        const QRect expect = c.corners ? QRect(QPoint(50, 50), QPoint(350, 250))
                                       : QRect(QPoint(label, 15), QPoint(380, 285));
        EXPECT_EQ(canvas.FrameRect(canvas.size()).normalized(), expect) << int(c.mode);
    }

    // In mode 7 the rectangle follows the size; in the trace it does not.
    canvas.show();
    canvas.SetMode(ModeTrace);
    canvas.resize(600, 400);
    EXPECT_EQ(canvas.m_capture.m_calibration.secondCornerX, 350);
    canvas.SetMode(ModePlotted);
    canvas.resize(800, 600);
    EXPECT_EQ(canvas.m_capture.m_calibration.secondCornerX, 760);
    EXPECT_EQ(canvas.m_capture.m_calibration.firstCornerY, 570);
    EXPECT_EQ(canvas.m_capture.m_calibration.firstCornerX, label);
}

TEST(TraceliftWnd, DragsClicksAndReadout)
{
    CTraceliftWnd canvas;
    canvas.resize(400, 300);
    QImage picture(200, 100, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    ASSERT_TRUE(canvas.CopyBitmap(picture));
    EXPECT_EQ(canvas.Bitmap().pixel(5, 5), qRgb(255, 255, 255)); // transparent shows white
    canvas.SetMode(ModePicturePlaced);

    send(&canvas, QEvent::MouseButtonPress, {100, 100}, Qt::LeftButton, Qt::LeftButton);
    send(&canvas, QEvent::MouseMove, {90, 80}, Qt::NoButton, Qt::LeftButton);
    EXPECT_EQ(canvas.m_capture.m_calibration.panX, 10);
    EXPECT_EQ(canvas.m_capture.m_calibration.panY, 20);
    // The button came up outside: the next move without it ends the drag.
    send(&canvas, QEvent::MouseMove, {70, 70}, Qt::NoButton, Qt::NoButton);
    send(&canvas, QEvent::MouseMove, {60, 60}, Qt::NoButton, Qt::LeftButton);
    EXPECT_EQ(canvas.m_capture.m_calibration.panX, 10);
    EXPECT_EQ(canvas.Mode(), ModePicturePlaced);

    // A plain click stands for the centre of its pixel, for a corner as for
    // a point.
    QSignalSpy clicks(&canvas, &CTraceliftWnd::clicked);
    canvas.SetMode(ModeCorner1);
    send(&canvas, QEvent::MouseButtonPress, {40, 260}, Qt::LeftButton, Qt::LeftButton);
    send(&canvas, QEvent::MouseButtonPress, {340, 60}, Qt::LeftButton, Qt::LeftButton);
    EXPECT_EQ(canvas.Mode(), ModeCornersSet);
    EXPECT_EQ(canvas.m_capture.m_calibration.firstCornerX, 40.5);
    EXPECT_EQ(canvas.m_capture.m_calibration.secondCornerY, 60.5);
    ASSERT_EQ(clicks.size(), 2);
    EXPECT_EQ(clicks[1][1].toInt(), int(ModeCorner2));

    canvas.m_capture.SetCalibration(0, 0, 300, 200, false, false, CMyDoubleArray(), 0);
    canvas.SetMode(ModeTrace);
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(190.5, 160.25), canvas.mapToGlobal(QPointF(190.5, 160.25)),
                      Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&canvas, &press);
    ASSERT_EQ(clicks.size(), 3);
    const CClickResult r = clicks[2][0].value<CClickResult>();
    EXPECT_EQ(r.reaction, CClickResult::AppendPoint);
    EXPECT_DOUBLE_EQ(r.x, 150.0);
    EXPECT_DOUBLE_EQ(r.y, 100.0);

    QSignalSpy readout(&canvas, &CTraceliftWnd::valueUnderMouse);
    send(&canvas, QEvent::MouseMove, {40, 60}, Qt::NoButton, Qt::NoButton);
    ASSERT_EQ(readout.size(), 1);
    EXPECT_DOUBLE_EQ(readout[0][0].toDouble(), 0.0);
    EXPECT_DOUBLE_EQ(readout[0][1].toDouble(), 200.0);
    canvas.SetMode(ModeCornersSet);
    send(&canvas, QEvent::MouseMove, {41, 60}, Qt::NoButton, Qt::NoButton);
    EXPECT_EQ(readout.size(), 1); // no read-out while values are awaited
}

TEST(TraceliftWnd, OnlyAPictureOnTheClipboardPastes)
{
    CTraceliftWnd canvas;
    QGuiApplication::clipboard()->setText(QStringLiteral("not a picture"));
    EXPECT_FALSE(CTraceliftWnd::ClipboardHasPicture());
    EXPECT_FALSE(canvas.PasteFromClipboard());
    EXPECT_FALSE(canvas.m_capture.m_calibration.pictureLoaded);

    QImage picture(30, 20, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QGuiApplication::clipboard()->setImage(picture);
    canvas.SetMode(ModeWaitPicture);
    canvas.m_capture.m_calibration.panX = 7;
    ASSERT_TRUE(canvas.PasteFromClipboard());
    EXPECT_EQ(canvas.Bitmap().size(), QSize(30, 20));
    EXPECT_EQ(canvas.Mode(), ModeIdle);
    EXPECT_EQ(canvas.m_capture.m_calibration.panX, 0);
    EXPECT_TRUE(canvas.m_capture.m_calibration.pictureShown);
}
