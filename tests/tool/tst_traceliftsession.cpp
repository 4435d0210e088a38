// A whole digitising session as a datasheet user goes through it: a log-log
// graph on the clipboard, pasted, calibrated with unit prefixes, traced
// through the magnifier, saved, loaded back into a fresh dialog, and saved
// again to a file that must equal the first byte for byte.

#include "traceliftfixture.h"

#include "tool/traceliftzoom.h"

#include <QComboBox>
#include <QPushButton>
#include <cmath>


TEST_F(TraceliftTest, ADigitisingSessionFromClipboardToFileAndBack)
{
    const CLogLogPicture g = MakeLogLogPicture({IdOfVds});
    QGuiApplication::clipboard()->setImage(g.image);

    // Ctrl+V: a new capture, and the picture on the canvas.
    QTest::keyClick(dialog.get(), Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(mode(), ModePicturePlaced);
    ASSERT_EQ(canvas()->Bitmap().size(), g.image.size());
    ASSERT_TRUE(canvas()->rect().contains(QRect(QPoint(0, 0), g.image.size())));

    // Calibration on the grid's corners, in millivolts and microamperes.  The
    // grid lines are drawn centred on the pixels' edges, so the corners are
    // aimed at through the magnifier, as precisely as the points.
    next();
    ASSERT_EQ(mode(), ModeCorner1);
    CTraceliftZoom *zoom = canvas()->Magnifier();
    for (const QPoint corner : {g.lowerLeft, g.upperRight}) {
        QTest::mouseClick(canvas(), Qt::RightButton, {}, corner);
        ASSERT_TRUE(zoom->isVisible());
        QTest::mouseClick(zoom, Qt::LeftButton, {}, QPoint(80, 80));
    }
    EXPECT_EQ(canvas()->m_capture.m_calibration.firstCornerX, g.lowerLeft.x());
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
    QList<QPointF> aimed;
    for (int i = 0; i < 20; ++i) {
        const double x = 120 * std::pow(80000 / 120.0, i / 19.0);
        const QPointF target(g.PixelX(x), g.PixelY(IdOfVds(x)));
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
        EXPECT_LE(std::fabs(g.PixelY(y) - g.PixelY(IdOfVds(x))), eighth * (1 + 0.55))
            << i << ": " << x << ", " << y << " against " << IdOfVds(x);
    }

    // Saved again, the loaded curve gives the same file: header, points and
    // line ends.
    EXPECT_EQ(text(IdXName), QStringLiteral("VDS"));
    const QString again = files.filePath(QStringLiteral("id-vds-again.txt"));
    prompts.fileNames = {again};
    control<QPushButton>(CTraceliftToolDlg::IdOk)->click();
    ASSERT_TRUE(prompts.messages.isEmpty()) << qPrintable(prompts.MessageTexts().join(u'|'));
    QFile first(path), second(again);
    ASSERT_TRUE(first.open(QIODevice::ReadOnly) && second.open(QIODevice::ReadOnly));
    const QByteArray firstBytes = first.readAll();
    EXPECT_EQ(firstBytes.count('\n'), 21);
    EXPECT_EQ(second.readAll(), firstBytes);
}
