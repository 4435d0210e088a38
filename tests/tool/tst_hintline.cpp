// The hint line: its text broken into two lines at most, and the panes below
// it kept in place whatever it says.

#include "traceliftfixture.h"

#include "tool/hintline.h"

#include <QFontMetrics>
#include <QLayout>

namespace {

const QString g_long = QStringLiteral(
    "The calibration was read from the picture: linear X axis, logarithmic Y axis. The corners are on the "
    "circled grid crossings; check the grid drawn over the picture against the printed one, correct a field if "
    "need be, and press Next to trace.");

struct CLinesCase {
    const char *name;
    QString text;
    int width;
    int lines;
    qsizetype expectLines;
    bool expectCut;
};

class HintLines : public ::testing::TestWithParam<CLinesCase> {};

} // namespace

TEST_P(HintLines, BreaksAtBlanksAndCutsWhatDoesNotFit)
{
    const CLinesCase &c = GetParam();
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(12);
    const QFontMetrics fm(font);
    bool cut = !c.expectCut;
    const QString shown = HintLinesFor(c.text, font, c.width, c.lines, &cut);
    EXPECT_EQ(cut, c.expectCut);
    const QStringList lines = shown.isEmpty() ? QStringList() : shown.split(u'\n');
    EXPECT_EQ(lines.size(), c.expectLines);
    for (const QString &l : lines)
        EXPECT_LE(fm.horizontalAdvance(l), c.width) << l.toStdString();
    if (c.expectCut) {
        EXPECT_TRUE(lines.last().endsWith(QChar(0x2026)));
        // The text's beginning is kept as it was.
        QString head = lines.first();
        head.remove(QChar(0x2026));
        EXPECT_TRUE(c.text.startsWith(head.trimmed())) << head.toStdString();
    } else {
        // Nothing lost but the blanks at the breaks.
        EXPECT_EQ(lines.join(u' '), c.text.simplified());
    }
}

INSTANTIATE_TEST_SUITE_P(
    , HintLines,
    ::testing::Values(CLinesCase{"empty", QString(), 300, 2, 0, false},
                      CLinesCase{"one_line", QStringLiteral("Press Next."), 300, 2, 1, false},
                      CLinesCase{"two_lines", g_long.left(90), 400, 2, 2, false},
                      CLinesCase{"cut_to_two", g_long, 400, 2, 2, true},
                      CLinesCase{"cut_to_one", g_long, 400, 1, 1, true},
                      CLinesCase{"wide_enough", g_long, 3000, 2, 1, false},
                      // A word wider than the line is broken anywhere.
                      CLinesCase{"long_word", QString(60, u'W'), 200, 2, 2, true}),
    [](const auto &info) { return std::string(info.param.name); });

namespace {

class HintLineLayout : public TraceliftTest, public ::testing::WithParamInterface<int> {};

// Where the panes and the fields below the hint stand in the dialog.
QList<int> placesBelowTheHint(CTraceliftToolDlg &dialog, const QList<QWidget *> &widgets)
{
    dialog.layout()->activate();
    QList<int> tops;
    for (QWidget *w : widgets)
        tops << w->mapTo(&dialog, QPoint(0, 0)).y() << w->height();
    return tops;
}

} // namespace

TEST_P(HintLineLayout, PanesStayInPlaceWhateverTheHintSays)
{
    dialog->resize(GetParam(), 760);
    auto *hint = control<CHintLine>(IdHint);
    ASSERT_NE(hint, nullptr);
    const QList<QWidget *> below = {control(CTraceliftToolDlg::IdPlot), control(IdYAtSecond)};
    hint->setText(QString());
    const QList<int> empty = placesBelowTheHint(*dialog, below);
    for (const QString &t : {QStringLiteral("Press Next."), g_long.left(120), g_long, g_long + u' ' + g_long}) {
        SCOPED_TRACE(t.size());
        hint->setText(t);
        EXPECT_EQ(placesBelowTheHint(*dialog, below), empty);
        EXPECT_LE(hint->ShownText().count(u'\n'), CHintLine::Lines - 1);
        // The text itself stays whole for whoever reads it.
        EXPECT_EQ(hint->text(), t);
    }
}

INSTANTIATE_TEST_SUITE_P(, HintLineLayout, ::testing::Values(760, 900, 1100, 1500));
