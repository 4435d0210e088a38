// A whole digitising session as a datasheet user goes through it: a log-log
// graph on the clipboard, pasted, calibrated with unit prefixes, traced
// through the magnifier, saved, and loaded back into a fresh dialog.

#include "traceliftfixture.h"

#include "tool/traceliftzoom.h"

#include <QComboBox>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <cmath>

namespace {

// The graph: X from 100 mV to 100 V over three decades, Y from 1 uA to
// 10 mA over four, and the curve ID = 20 uA * (VDS / 1 V)^1.1.  The values
// are in the units the prefixes give: X in mV, Y in uA.
struct LogLogGraph {
    QImage image;
    QPoint lowerLeft{60, 400};
    QPoint upperRight{600, 40};
    double xLow = 100, xHigh = 1e5, yLow = 1, yHigh = 1e4;

    static double Curve(double mV) { return 20 * std::pow(mV / 1000, 1.1); }

    double PixelX(double x) const
    {
        return lowerLeft.x() + (upperRight.x() - lowerLeft.x()) * std::log10(x / xLow) / std::log10(xHigh / xLow);
    }
    double PixelY(double y) const
    {
        return lowerLeft.y() + (upperRight.y() - lowerLeft.y()) * std::log10(y / yLow) / std::log10(yHigh / yLow);
    }
};

LogLogGraph makeLogLogGraph()
{
    LogLogGraph g;
    g.image = QImage(640, 440, QImage::Format_RGB32);
    g.image.fill(Qt::white);
    QPainter p(&g.image);
    p.setRenderHint(QPainter::Antialiasing);
    const QRect area(QPoint(g.lowerLeft.x(), g.upperRight.y()), QPoint(g.upperRight.x(), g.lowerLeft.y()));
    // Decades and their minor lines.
    const QPen minor(QColor(215, 215, 215), 1);
    const QPen major(QColor(160, 160, 160), 1);
    for (double decade = g.xLow; decade < g.xHigh * 0.99; decade *= 10)
        for (int k = 1; k <= 9; ++k) {
            const double x = g.PixelX(decade * k);
            p.setPen(k == 1 ? major : minor);
            p.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
        }
    for (double decade = g.yLow; decade < g.yHigh * 0.99; decade *= 10)
        for (int k = 1; k <= 9; ++k) {
            const double y = g.PixelY(decade * k);
            p.setPen(k == 1 ? major : minor);
            p.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
        }
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setPen(QPen(Qt::black, 1));
    p.drawRect(area);
    p.setRenderHint(QPainter::Antialiasing);
    QFont font = p.font();
    font.setPixelSize(12);
    p.setFont(font);
    const char *xLabels[] = {"100m", "1", "10", "100"};
    for (int i = 0; i < 4; ++i) {
        const double x = g.PixelX(g.xLow * std::pow(10.0, i));
        p.drawText(QRectF(x - 25, area.bottom() + 4, 50, 16), Qt::AlignCenter, QString::fromLatin1(xLabels[i]));
    }
    const char *yLabels[] = {"1u", "10u", "100u", "1m", "10m"};
    for (int i = 0; i < 5; ++i) {
        const double y = g.PixelY(g.yLow * std::pow(10.0, i));
        p.drawText(QRectF(area.left() - 50, y - 8, 44, 16), Qt::AlignRight | Qt::AlignVCenter,
                   QString::fromLatin1(yLabels[i]));
    }
    p.drawText(QRectF(area.left(), area.bottom() + 20, area.width(), 16), Qt::AlignCenter, QStringLiteral("VDS (V)"));
    // The curve, finely sampled and antialiased.
    QPainterPath path;
    for (int i = 0; i <= 600; ++i) {
        const double x = g.xLow * std::pow(g.xHigh / g.xLow, i / 600.0);
        const QPointF q(g.PixelX(x), g.PixelY(LogLogGraph::Curve(x)));
        if (i == 0)
            path.moveTo(q);
        else
            path.lineTo(q);
    }
    p.setPen(QPen(QColor(200, 30, 30), 1.6));
    p.drawPath(path);
    return g;
}

} // namespace

TEST_F(TraceliftTest, ADigitisingSessionFromClipboardToFileAndBack)
{
    const LogLogGraph g = makeLogLogGraph();
    QGuiApplication::clipboard()->setImage(g.image);

    // Ctrl+V: a new capture, and the picture on the canvas.
    QTest::keyClick(dialog.get(), Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(mode(), ModePicturePlaced);
    ASSERT_EQ(canvas()->Bitmap().size(), g.image.size());
    ASSERT_TRUE(canvas()->rect().contains(QRect(QPoint(0, 0), g.image.size())));

    // Calibration on the grid's corners, in millivolts and microamperes.
    next();
    ASSERT_EQ(mode(), ModeCorner1);
    click(g.lowerLeft);
    click(g.upperRight);
    ASSERT_EQ(mode(), ModeCornersSet);
    type(IdXAtFirst, QStringLiteral("100"));
    type(IdXAtSecond, QStringLiteral("100000"));
    type(IdYAtFirst, QStringLiteral("1"));
    type(IdYAtSecond, QStringLiteral("10000"));
    control<QComboBox>(IdXUnit)->setCurrentIndex(control<QComboBox>(IdXUnit)->findText(QStringLiteral("m")));
    control<QComboBox>(IdYUnit)->setCurrentIndex(control<QComboBox>(IdYUnit)->findText(QStringLiteral("u")));
    control<QCheckBox>(IdXLog)->click();
    control<QCheckBox>(IdYLog)->click();
    type(IdXName, QStringLiteral("VDS"));
    type(IdYName, QStringLiteral("ID"));
    next();
    ASSERT_EQ(mode(), ModeTrace);

    // Twenty points, each aimed at through the magnifier: the right button
    // opens it at the nearest whole pixel, the click lands on the eighth of a
    // pixel nearest to the curve.
    CTraceliftZoom *zoom = canvas()->Magnifier();
    QList<QPointF> aimed;
    for (int i = 0; i < 20; ++i) {
        const double x = 120 * std::pow(80000 / 120.0, i / 19.0);
        const QPointF target(g.PixelX(x), g.PixelY(LogLogGraph::Curve(x)));
        const QPoint near(qRound(target.x()), qRound(target.y()));
        QTest::mouseClick(canvas(), Qt::RightButton, {}, near);
        ASSERT_TRUE(zoom->isVisible()) << i;
        const QPoint inWindow(qRound((target.x() - zoom->m_sourceRect.left()) * 8),
                              qRound((target.y() - zoom->m_sourceRect.top()) * 8));
        ASSERT_TRUE(zoom->rect().contains(inWindow)) << i;
        QTest::mouseClick(zoom, Qt::LeftButton, {}, inWindow);
        EXPECT_FALSE(zoom->isVisible()) << i;
        aimed << target;
    }
    ASSERT_EQ(canvas()->m_capture.m_points.count, 20);
    next();
    ASSERT_EQ(mode(), ModePlotted);
    EXPECT_EQ(plotGraph().m_data.RowCount(), 20);
    EXPECT_TRUE(plotGraph().m_xLog && plotGraph().Range(0)->m_logScale);

    const QString path = files.filePath(QStringLiteral("id-vds.txt"));
    prompts.fileNames = {path};
    control<QPushButton>(CTraceliftToolDlg::IdOk)->click();
    ASSERT_TRUE(prompts.messages.isEmpty()) << qPrintable(prompts.MessageTexts().join(u'|'));
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readLine(), QByteArray("VDS ID\r\n"));
    }

    // A fresh dialog loads the file back.
    dialog = std::make_unique<CTraceliftToolDlg>();
    dialog->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog.get()));
    prompts.fileNames = {path};
    control<QPushButton>(IdLoad)->click();
    ASSERT_TRUE(prompts.messages.isEmpty()) << qPrintable(prompts.MessageTexts().join(u'|'));
    const TracedPoints &points = canvas()->m_capture.m_points;
    ASSERT_EQ(points.count, 20);
    ASSERT_EQ(plotGraph().m_data.RowCount(), 20);

    // Every point lies within an eighth of a pixel of where it was aimed, and
    // so on the known curve within what an eighth of a pixel allows: the
    // curve climbs 0.55 pixel for each pixel to the right.
    const double eighth = 1.0 / 8;
    for (int i = 0; i < 20; ++i) {
        const double x = points.pairs[2 * i], y = points.pairs[2 * i + 1];
        EXPECT_DOUBLE_EQ(plotValue(0, i), x);
        EXPECT_DOUBLE_EQ(plotValue(1, i), y);
        EXPECT_LE(std::fabs(g.PixelX(x) - aimed[i].x()), eighth) << i << ": x " << x;
        EXPECT_LE(std::fabs(g.PixelY(y) - aimed[i].y()), eighth) << i << ": y " << y;
        EXPECT_LE(std::fabs(g.PixelY(y) - g.PixelY(LogLogGraph::Curve(x))), eighth * (1 + 0.55))
            << i << ": " << x << ", " << y << " against " << LogLogGraph::Curve(x);
    }
}
