// The dialog's "Calibrate from the picture": after a paste the command
// places the corners and fills the fields as clicks and typing would, Back
// and the fields work after it as after the user's own steps, and where the
// picture is no graph it says so and leaves everything to the user.

#include "datasheetpicture.h"
#include "../traceliftfixture.h"

#include "tool/capture/toolfields.h"

#include <QComboBox>
#include <QLabel>

#include <cmath>

namespace {

struct CCommandCase {
    const char *name;
    CAxisDraw x, y;
    // The texts the fields must get, and the unit prefixes.
    const char *xAtFirst, *xAtSecond, *yAtFirst, *yAtSecond;
    const char *xUnit, *yUnit;
};

class TraceliftCalibrateCommand : public TraceliftTest, public ::testing::WithParamInterface<CCommandCase>
{
protected:
    // Pastes the picture and leaves the capture at the placed picture.
    void paste(const QImage &picture)
    {
        next();
        QGuiApplication::clipboard()->setImage(picture);
        next();
        ASSERT_EQ(mode(), ModePicturePlaced);
    }
    QAction *command() const { return action(CTraceliftToolDlg::IdCalibrateFromPicture); }
};

} // namespace

TEST_P(TraceliftCalibrateCommand, FillsCornersAndFieldsAsTheUserWould)
{
    const CCommandCase &c = GetParam();
    CDatasheetLayout layout;
    layout.x = c.x;
    layout.y = c.y;
    const CDatasheetPicture pic = MakeDatasheetPicture(layout);
    paste(pic.image);
    command()->trigger();

    ASSERT_EQ(mode(), ModeCornersSet) << qPrintable(control<QLabel>(IdHint)->text());
    EXPECT_EQ(text(IdXAtFirst), QLatin1String(c.xAtFirst));
    EXPECT_EQ(text(IdXAtSecond), QLatin1String(c.xAtSecond));
    EXPECT_EQ(text(IdYAtFirst), QLatin1String(c.yAtFirst));
    EXPECT_EQ(text(IdYAtSecond), QLatin1String(c.yAtSecond));
    EXPECT_EQ(control<QComboBox>(IdXUnit)->currentText().trimmed(), QLatin1String(c.xUnit));
    EXPECT_EQ(control<QComboBox>(IdYUnit)->currentText().trimmed(), QLatin1String(c.yUnit));
    EXPECT_EQ(control<QCheckBox>(IdXLog)->isChecked(), c.x.log);
    EXPECT_EQ(control<QCheckBox>(IdYLog)->isChecked(), c.y.log);
    // The corners lie on the outermost labelled lines: the frame's corners.
    const CaptureCalibration &cal = canvas()->m_capture.m_calibration;
    EXPECT_EQ(cal.firstCornerX, int(pic.xLines.first().pixel));
    EXPECT_EQ(cal.firstCornerY, int(pic.yLines.first().pixel));
    EXPECT_EQ(cal.secondCornerX, int(pic.xLines.last().pixel));
    EXPECT_EQ(cal.secondCornerY, int(pic.yLines.last().pixel));
    EXPECT_TRUE(prompts.messages.isEmpty());

    // Next starts the trace as after typing; a click in the middle of the
    // frame reads the value there.
    next();
    ASSERT_EQ(mode(), ModeTrace);
    double x = 0, y = 0;
    const CDatasheetLine &xMid = pic.xLines[pic.xLines.size() / 2];
    const CDatasheetLine &yMid = pic.yLines[pic.yLines.size() / 2];
    ASSERT_TRUE(canvas()->m_capture.MapPixelToValue(xMid.pixel, yMid.pixel, x, y));
    const double xScale = std::pow(10.0, UnitExponentOfPrefix(control<QComboBox>(IdXUnit)->currentText()));
    const double yScale = std::pow(10.0, UnitExponentOfPrefix(control<QComboBox>(IdYUnit)->currentText()));
    EXPECT_NEAR(x * xScale, xMid.value, std::abs(xMid.value) * 0.02 + 1e-12);
    EXPECT_NEAR(y * yScale, yMid.value, std::abs(yMid.value) * 0.02 + 1e-12);
}

TEST_P(TraceliftCalibrateCommand, BackAndAnEditedFieldWorkAfterIt)
{
    CDatasheetLayout layout;
    layout.x = GetParam().x;
    layout.y = GetParam().y;
    const CDatasheetPicture pic = MakeDatasheetPicture(layout);
    paste(pic.image);
    command()->trigger();
    ASSERT_EQ(mode(), ModeCornersSet);

    // Back returns to the first corner, the typed values stay, and a corner
    // clicked by hand takes the place of the proposed one.
    back();
    EXPECT_EQ(mode(), ModeCorner1);
    EXPECT_EQ(text(IdXAtFirst), QLatin1String(GetParam().xAtFirst));
    click(QPoint(int(pic.xLines.first().pixel), int(pic.yLines.first().pixel)));
    EXPECT_EQ(mode(), ModeCorner2);
    click(QPoint(int(pic.xLines.last().pixel), int(pic.yLines.last().pixel)));
    EXPECT_EQ(mode(), ModeCornersSet);

    // A field changed after the proposal is what the trace maps with.
    type(IdXAtSecond, QStringLiteral("777"));
    next();
    ASSERT_EQ(mode(), ModeTrace);
    double x = 0, y = 0;
    const CaptureCalibration &cal = canvas()->m_capture.m_calibration;
    canvas()->m_capture.MapPixelToValue(cal.secondCornerX, cal.secondCornerY, x, y);
    EXPECT_DOUBLE_EQ(x, 777);
}

INSTANTIATE_TEST_SUITE_P(
    , TraceliftCalibrateCommand,
    ::testing::Values(CCommandCase{"linear", {false, 0, 2, 5, LabelStyle::Plain}, {false, 0, 0.1, 5, LabelStyle::Prefixed},
                                   "0", "10", "0", "500", "", "m"},
                      CCommandCase{"loglog", {true, 0, 1, 4, LabelStyle::Prefixed}, {true, -4, 1, 3, LabelStyle::Prefixed},
                                   "1", "10000", "0.1", "100", "", "m"},
                      // Labels printed with the micro sign fill the prefix
                      // boxes with the digitiser's own "u".
                      CCommandCase{"micro", {false, 0, 2e-6, 4, LabelStyle::Prefixed, true},
                                   {true, -6, 1, 2, LabelStyle::Prefixed, true}, "0", "8", "1", "100", "u", "u"}),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(TraceliftTest, CalibrateFromThePictureWithoutPictureOrGraph)
{
    // Before any paste: a message, and nothing else changes.
    EXPECT_FALSE(dialog->OnCalibrateFromPicture());
    EXPECT_EQ(prompts.MessageTexts(), QStringList{message(27653)});
    EXPECT_EQ(mode(), ModeTyped);

    // A picture without a plot frame: the hint says so, the capture stays.
    next();
    QImage blank(500, 400, QImage::Format_RGB32);
    blank.fill(Qt::white);
    QGuiApplication::clipboard()->setImage(blank);
    next();
    ASSERT_EQ(mode(), ModePicturePlaced);
    EXPECT_FALSE(dialog->OnCalibrateFromPicture());
    EXPECT_EQ(mode(), ModePicturePlaced);
    EXPECT_EQ(control<QLabel>(IdHint)->text(), message(27644));
    EXPECT_TRUE(text(IdXAtFirst).isEmpty());
}
