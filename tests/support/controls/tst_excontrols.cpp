#include "support/controls/colorbar.h"
#include "support/controls/exlistbox.h"
#include "support/controls/exstatic.h"

#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

TEST(ExControls, RgbWordsAndColours)
{
    const struct {
        std::uint32_t word;
        QColor color;
    } cases[] = {{0x000000FF, QColor(255, 0, 0)}, {0x0000FF00, QColor(0, 255, 0)},
                 {0x00FF0000, QColor(0, 0, 255)}, {0x00123456, QColor(0x56, 0x34, 0x12)},
                 {0x00000000, QColor(0, 0, 0)}};
    for (const auto &c : cases) {
        EXPECT_EQ(ColorFromRgbWord(c.word), c.color) << std::hex << c.word;
        EXPECT_EQ(RgbWordFromColor(c.color), c.word);
    }
    // The unused high byte is ignored.
    EXPECT_EQ(ColorFromRgbWord(0xFF0000FF), QColor(255, 0, 0));
}

TEST(ExControls, StaticPaintsItsColours)
{
    CExStatic label(QStringLiteral("Axis"));
    label.resize(60, 20);
    EXPECT_FALSE(label.autoFillBackground());
    label.SetBackColor(0x0000FF00);
    label.SetTextColor(0x000000FF);
    EXPECT_EQ(label.grab().toImage().pixelColor(1, 1), QColor(0, 255, 0));
    EXPECT_EQ(label.palette().color(QPalette::WindowText), QColor(255, 0, 0));
    label.ClearColors();
    EXPECT_FALSE(label.BackColor().has_value());
    EXPECT_FALSE(label.autoFillBackground());
}

TEST(ExControls, ListBoxRowsKeepTheirColoursAndTicks)
{
    CExListBox colours;
    EXPECT_EQ(colours.AddItem(QStringLiteral("u"), 0x000000FF), 0);
    EXPECT_EQ(colours.AddItem(QStringLiteral("i"), 0x00FF0000), 1);
    colours.SetItemColor(0, 0x0000FF00);
    EXPECT_EQ(colours.ItemColor(0), 0x0000FF00u);
    EXPECT_EQ(colours.ItemColor(1), 0x00FF0000u);
    EXPECT_EQ(colours.ItemColor(2), 0u);
    // The swatch shows the colour in its middle.
    const QImage swatch = colours.Swatch(0x00FF0000).toImage();
    EXPECT_EQ(swatch.pixelColor(swatch.width() / 2, swatch.height() / 2), QColor(0, 0, 255));

    CExListBox2 ticks;
    QSignalSpy changed(&ticks, &CExListBox2::CheckChanged);
    for (const bool on : {true, false, true, false})
        ticks.AddItem(QStringLiteral("c"), on);
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(ticks.CheckedRows(), (QList<int>{0, 2}));
    ticks.SetChecked(3, true);
    ticks.SetChecked(0, false);
    ticks.SetChecked(9, true);
    EXPECT_EQ(ticks.CheckedRows(), (QList<int>{2, 3}));
    ASSERT_EQ(changed.count(), 2);
    EXPECT_EQ(changed[0][0].toInt(), 3);
    EXPECT_TRUE(changed[0][1].toBool());
    EXPECT_FALSE(ticks.IsChecked(9));
}

TEST(ExControls, ColorBarHitsAndChoices)
{
    CColorBar bar;
    bar.SetColors({0x000000FF, 0x0000FF00, 0x00FF0000, 0x00FFFFFF});
    bar.resize(100, 20);
    QSignalSpy chosen(&bar, &CColorBar::ColorChosen);
    // Four swatches of 25 pixels with a gap of 2 round each.
    const struct {
        QPoint point;
        int index;
    } hits[] = {{{12, 10}, 0}, {{2, 2}, 0},   {{1, 10}, -1}, {{24, 10}, -1}, {{27, 10}, 1},
                {{60, 10}, 2}, {{97, 17}, 3}, {{99, 10}, -1}, {{50, 0}, -1},  {{120, 10}, -1}};
    for (const auto &h : hits)
        EXPECT_EQ(bar.IndexAt(h.point), h.index) << h.point.x() << "," << h.point.y();

    QTest::mouseClick(&bar, Qt::LeftButton, {}, QPoint(60, 10));
    EXPECT_EQ(bar.Current(), 2);
    EXPECT_EQ(bar.CurrentColor(), 0x00FF0000u);
    QTest::mouseClick(&bar, Qt::LeftButton, {}, QPoint(24, 10)); // a gap: no change
    EXPECT_EQ(bar.Current(), 2);
    QTest::keyClick(&bar, Qt::Key_Right);
    QTest::keyClick(&bar, Qt::Key_Right); // at the end it stays
    EXPECT_EQ(bar.Current(), 3);
    QTest::keyClick(&bar, Qt::Key_Home);
    EXPECT_EQ(bar.Current(), 0);
    ASSERT_EQ(chosen.count(), 3);
    EXPECT_EQ(chosen[2][1].toUInt(), 0x000000FFu);
    // The picture shows the colours where the swatches are.
    const QImage picture = bar.grab().toImage();
    EXPECT_EQ(picture.pixelColor(bar.SwatchRect(1).center()), QColor(0, 255, 0));
    // Fewer colours: a choice beyond them is dropped.
    bar.SetCurrent(3);
    bar.SetColors({0x0});
    EXPECT_EQ(bar.Current(), -1);
    EXPECT_EQ(bar.CurrentColor(0x123), 0x123u);
}
