// What surrounds the plot: date labels, X labels that shrink rather than
// crowd, Y axis titles and the host's axis margins, rendered into images.
#include "graphdata/axislabels.h"
#include "graphdata/draw/axisgrid.h"
#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/graphdraw.h"
#include "graphdata/graphcurve.h"

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

struct DateCase
{
    double days, step;
    bool first;
    const char *text;
};

class DateLabels : public ::testing::TestWithParam<DateCase>
{
};

TEST_P(DateLabels, ShowTheDayOrTheTimeByTheStep)
{
    const DateCase &c = GetParam();
    EXPECT_EQ(DateLabelText(c.days, c.step, c.first).toStdString(), c.text) << c.days << " step " << c.step;
}

INSTANTIATE_TEST_SUITE_P(
    Days, DateLabels,
    ::testing::Values(DateCase{0, 1, true, "1899-12-30"},         // day 0 of the count
                      DateCase{61, 30, false, "1900-03-01"},      // no leap day in 1900
                      DateCase{45292, 7, false, "2024-01-01"},
                      DateCase{45351, 30, true, "2024-02-29"},    // a leap day
                      DateCase{-1, 1, false, "1899-12-29"},       // before the origin
                      DateCase{45292.75, 1, false, "2024-01-01"}, // a day step hides the hour
                      DateCase{45292.5, 0.25, false, "12:00"},
                      DateCase{45292.0, 0.25, false, "2024-01-01"}, // midnight gives the date
                      DateCase{45292.0, 0.25, true, "2024-01-01"},
                      DateCase{45292.25, 0.25, true, "2024-01-01 06:00"},
                      DateCase{45292 + 23.0 / 24, 1.0 / 24, false, "23:00"},
                      // an hour step summed 24 times lands a hair short of midnight
                      DateCase{45292 + 24 * (1.0 / 24) - 1e-12, 1.0 / 24, false, "2024-01-02"},
                      DateCase{45292 + 0.5 / 1440 + 1e-9, 1.0 / 24, false, "00:01"}, // minutes round
                      DateCase{1e12, 30, false, "1e+12"},                 // no calendar that far
                      DateCase{std::numeric_limits<double>::quiet_NaN(), 1, false, "nan"}));

TEST(AxisTitleText, AddsTheUnitANameImplies)
{
    const struct
    {
        const char *name, *title;
    } cases[] = {{"Time", "Time [s]"},
                 {"frequency", "frequency [Hz]"},
                 {"Time [ms]", "Time [ms]"},
                 {"Voltage", "Voltage"},
                 {"", ""}};
    for (const auto &c : cases)
        EXPECT_EQ(AxisTitleText(QString::fromUtf8(c.name)).toStdString(), c.title) << c.name;
}

QFont pixelFont(int pixels)
{
    QFont font;
    font.setPixelSize(pixels);
    return font;
}

CAxisTicks labelsAt(std::initializer_list<double> at, const QString &text)
{
    CAxisTicks t;
    for (double v : at) {
        t.labelAt.push_back(v);
        t.labels.push_back(text);
    }
    return t;
}

TEST(XLabelsFit, NeedRoomBetweenNeighbours)
{
    const QFontMetricsF fm(pixelFont(12));
    const QString text = QStringLiteral("2024-01-01");
    const double w = fm.horizontalAdvance(text);
    const double h = fm.height();
    const struct
    {
        const char *what;
        CAxisTicks ticks;
        double length; // over 0..10
        int rotation;
        bool fits;
    } cases[] = {
        {"no labels", CAxisTicks(), 100, 0, true},
        {"one label on a long axis", labelsAt({5}, text), 400, 0, true},
        {"one label wider than the axis", labelsAt({5}, text), w - 1, 0, false},
        {"neighbours a label and a gap apart", labelsAt({0, 1}, text), (w + 3) * 10, 0, true},
        {"neighbours closer than a label", labelsAt({0, 1}, text), (w + 1) * 10, 0, false},
        {"a close pair among wide ones", labelsAt({0, 5, 5.1, 10}, text), 1000, 0, false},
        {"turned upright, a line height apart", labelsAt({0, 1, 2}, text), (h + 2) * 10, 90, true},
        {"turned upright, closer than a line", labelsAt({0, 1, 2}, text), (h - 1) * 10, 90, false},
        {"turned 30 degrees needs twice the line", labelsAt({0, 1}, text), (1.5 * h) * 10, 30, false},
        {"turned 30 degrees with room", labelsAt({0, 1}, text), (2 * h + 3) * 10, -30, true},
    };
    for (const auto &c : cases)
        EXPECT_EQ(XLabelsFit(c.ticks, 0, 10, c.length, c.rotation, fm), c.fits) << c.what;
}

const std::uint32_t kRed = 0x0000FF, kBlue = 0xFF0000;

// A graph of a ramp over days, on a white ground.
struct DatePlot
{
    CGraphCurve graph;
    QImage image;

    DatePlot(int width, int height, double firstDay, double days) : image(width, height, QImage::Format_RGB32)
    {
        const int rows = 50;
        graph.m_data.Create(1, 2, rows, 0);
        std::vector<double> x, y;
        for (int i = 0; i < rows; ++i) {
            x.push_back(firstDay + days * i / (rows - 1));
            y.push_back(i);
        }
        graph.m_data.AppendRows(x.data(), nullptr, 0, 1, 0, rows);
        graph.m_data.AppendRows(y.data(), nullptr, 1, 1, 0, rows);
        bool changed;
        graph.Curve(graph.AddCurve(1, 0, false, changed))->m_color = kRed;
        graph.m_backColor = 0xFFFFFF;
        graph.m_xViewMin = firstDay;
        graph.m_xViewMax = firstDay + days;
        graph.m_xTick = 0;
        graph.m_xAxisFlags |= CGraph_Range::AxisDateDays;
        graph.Range(0)->m_viewMin = 0;
        graph.Range(0)->m_viewMax = rows;
        graph.Range(0)->m_tick = 10;
    }
    void draw()
    {
        image.fill(Qt::white);
        QPainter p(&image);
        CDrawRequest request;
        request.target = image.rect();
        DrawGraph(graph, p, request);
    }
    CGraphLayout layout() { return LayoutFor(graph, image.rect()); }
    QRect plot() const { return EdgesToQRect(graph.m_plotRect); }
    // Pixels that are not white within `r`.
    int inked(const QRect &r) const
    {
        int n = 0;
        const QRect within = r.intersected(image.rect());
        for (int y = within.top(); y <= within.bottom(); ++y)
            for (int x = within.left(); x <= within.right(); ++x)
                n += QColor(image.pixel(x, y)) != QColor(Qt::white) ? 1 : 0;
        return n;
    }
};

TEST(DateAxis, LabelsEveryTickWithItsDate)
{
    DatePlot plot(900, 300, 45292, 60); // 2024-01-01 and on: a step of a week
    const CGraphLayout L = plot.layout();
    ASSERT_EQ(L.xTicks.labels.size(), L.xTicks.major.size());
    ASSERT_GE(L.xTicks.labels.size(), 8);
    for (int i = 0; i < L.xTicks.labels.size(); ++i) {
        const double at = L.xTicks.labelAt[std::size_t(i)];
        EXPECT_DOUBLE_EQ(std::fmod(at, 7), 0) << i;
        EXPECT_EQ(L.xTicks.labels[i], DateLabelText(at, 7, false)) << i;
    }
    // weeks count from day 0, a Saturday
    EXPECT_TRUE(L.xTicks.labels.contains(QStringLiteral("2024-01-06")));
}

TEST(DateAxis, CrowdedLabelsShrinkTheirFontInsteadOfOverlapping)
{
    struct Case
    {
        int width;
        bool smaller;
    };
    const Case cases[] = {{1400, false}, {700, true}, {420, true}};
    int lastSize = 1 << 20;
    for (const Case &c : cases) {
        DatePlot plot(c.width, 300, 45292, 60);
        plot.graph.m_xLabelFont.m_height = -14;
        const CGraphLayout L = plot.layout();
        const int size = L.xLabelFont.pixelSize();
        EXPECT_EQ(size < 14, c.smaller) << c.width;
        EXPECT_LE(size, lastSize) << c.width;
        lastSize = size;
        EXPECT_EQ(L.xFont.pixelSize(), 14) << "the title keeps its font at " << c.width;
        // every label is kept, and they fit side by side at the size chosen
        EXPECT_EQ(L.xTicks.labels.size(), L.xTicks.major.size()) << c.width;
        const double length = L.plot.right - L.plot.left;
        EXPECT_TRUE(XLabelsFit(L.xTicks, plot.graph.m_xViewMin, plot.graph.m_xViewMax, length, 0,
                               QFontMetricsF(L.xLabelFont)))
            << c.width;
    }
}

TEST(DateAxis, LabelsInAPlotTooNarrowStopAtASizeStillRead)
{
    DatePlot plot(160, 200, 45292, 60);
    plot.graph.m_xLabelFont.m_height = -14;
    const CGraphLayout L = plot.layout();
    EXPECT_GE(L.xLabelFont.pixelSize(), 6);
    EXPECT_LT(L.xLabelFont.pixelSize(), 14);
    plot.draw(); // what is left over is drawn without a pair touching
}

// A plain graph of one curve on one axis, to place titles and margins on.
struct TitledPlot
{
    CGraphCurve graph;
    QImage image{480, 320, QImage::Format_RGB32};

    TitledPlot()
    {
        const double x[] = {0, 1, 2, 3}, y[] = {0, 1, 4, 9};
        graph.m_data.Create(1, 2, 4, 0);
        graph.m_data.AppendRows(x, nullptr, 0, 1, 0, 4);
        graph.m_data.AppendRows(y, nullptr, 1, 1, 0, 4);
        bool changed;
        graph.Curve(graph.AddCurve(1, 0, false, changed))->m_color = kRed;
        graph.m_backColor = 0xFFFFFF;
        graph.m_xViewMin = 0;
        graph.m_xViewMax = 3;
        graph.Range(0)->m_viewMin = 0;
        graph.Range(0)->m_viewMax = 10;
        graph.Range(0)->m_tick = 2;
    }
    void draw()
    {
        image.fill(Qt::white);
        QPainter p(&image);
        CDrawRequest request;
        request.target = image.rect();
        DrawGraph(graph, p, request);
    }
    QRect plot() const { return EdgesToQRect(graph.m_plotRect); }
    int colored(std::uint32_t color, const QRect &r) const
    {
        int n = 0;
        const QRect within = r.intersected(image.rect());
        const QColor want = ColorFromRef(color);
        for (int y = within.top(); y <= within.bottom(); ++y)
            for (int x = within.left(); x <= within.right(); ++x) {
                const QColor c(image.pixel(x, y));
                // smoothed text: on the way from white to the colour
                n += std::abs(c.red() - c.blue()) > 60 && (c.blue() > c.red()) == (want.blue() > want.red()) ? 1 : 0;
            }
        return n;
    }
};

TEST(YAxisTitle, StandsOutsideTheLabelsAlongThePlot)
{
    const struct
    {
        int side;
        bool titled;
    } cases[] = {{1, true}, {-1, true}, {1, false}};
    for (const auto &c : cases) {
        TitledPlot plain, titled;
        for (TitledPlot *p : {&plain, &titled}) {
            p->graph.Range(0)->m_axisSide = c.side;
            p->graph.Range(0)->m_textColor = kBlue;
        }
        if (c.titled)
            titled.graph.Range(0)->m_title = QStringLiteral("Voltage");
        plain.draw();
        titled.draw();
        const QRect area = EdgesToQRect(titled.graph.Range(0)->m_areaRect);
        const QRect plainArea = EdgesToQRect(plain.graph.Range(0)->m_areaRect);
        if (!c.titled) {
            EXPECT_EQ(area, plainArea);
            EXPECT_EQ(titled.plot(), plain.plot());
            continue;
        }
        // the axis is wider by the title's line, and the plot narrower
        EXPECT_GT(area.width(), plainArea.width() + 8) << c.side;
        EXPECT_LT(titled.plot().width(), plain.plot().width()) << c.side;
        // the title's ink: a tall, narrow strip at the outer edge of the area,
        // about the plot's middle
        const int strip = area.width() - plainArea.width();
        const QRect outer = c.side > 0 ? QRect(area.left(), area.top(), strip, area.height())
                                       : QRect(area.right() - strip + 1, area.top(), strip, area.height());
        EXPECT_GT(titled.colored(kBlue, outer), 40) << c.side;
        int top = 1 << 20, bottom = -1;
        for (int y = outer.top(); y <= outer.bottom(); ++y) {
            if (titled.colored(kBlue, QRect(outer.left(), y, outer.width(), 1)) > 0) {
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
        }
        const int middle = (titled.plot().top() + titled.plot().bottom()) / 2;
        EXPECT_GT(bottom - top, 30) << c.side;
        EXPECT_NEAR((top + bottom) / 2, middle, 4) << c.side;
    }
}

TEST(YAxisTitle, HidesWithTheLabels)
{
    TitledPlot plain, titled;
    titled.graph.Range(0)->m_title = QStringLiteral("Voltage");
    for (TitledPlot *p : {&plain, &titled})
        p->graph.Range(0)->m_axisFlags &= ~std::uint32_t(CGraph_Range::AxisLabels);
    plain.draw();
    titled.draw();
    EXPECT_EQ(titled.plot(), plain.plot());
}

TEST(AxisMargins, MoveThePlotByTheirAmount)
{
    const struct
    {
        CIntRect margins;
        double fontScale;
    } cases[] = {
        {{0, 2, 20, 20}, 1}, {{30, 0, 0, 0}, 1}, {{10, 10, 10, 10}, 2}, {{-5, 0, 0, 0}, 1}, // negative counts as 0
    };
    for (const auto &c : cases) {
        TitledPlot plain, kept;
        kept.graph.m_axisMargins = c.margins;
        const CGraphLayout a = LayoutFor(plain.graph, plain.image.rect(), c.fontScale);
        const CGraphLayout b = LayoutFor(kept.graph, kept.image.rect(), c.fontScale);
        auto px = [&](int v) { return int(std::lround(std::max(0, v) * c.fontScale)); };
        EXPECT_EQ(b.plot.left - a.plot.left, px(c.margins.left)) << c.margins.left;
        EXPECT_EQ(b.plot.top - a.plot.top, px(c.margins.top)) << c.margins.top;
        EXPECT_EQ(a.plot.right - b.plot.right, px(c.margins.right)) << c.margins.right;
        EXPECT_EQ(a.plot.bottom - b.plot.bottom, px(c.margins.bottom)) << c.margins.bottom;
    }
}

TEST(AxisMargins, WiderThanTheTargetLeaveNoRoomButDrawSafely)
{
    TitledPlot plot;
    plot.graph.m_axisMargins = {300, 200, 300, 200};
    const QRect inner = InsideMargins(plot.image.rect(), plot.graph.m_axisMargins, 1);
    EXPECT_EQ(inner.width(), 1);
    EXPECT_EQ(inner.height(), 1);
    EXPECT_TRUE(plot.image.rect().contains(inner));
    plot.draw();
    EXPECT_TRUE(plot.image.rect().contains(plot.plot()));
}

} // namespace
