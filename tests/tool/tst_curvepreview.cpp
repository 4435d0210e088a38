// The plot pane of the digitiser: what it is fed from a traced curve and
// from the template record, Replot, the read-out over the plot, and where
// the curve's pixels land.

#include "traceliftfixture.h"

#include "graphdata/draw/drawtools.h"
#include "graphwnd/graphviewops.h"
#include "tool/curvecursoreditor.h"
#include "tool/plotfeed.h"

#include <QApplication>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <cmath>
#include <memory>

namespace {

double saturation(double x) { return 100.0 * (1 - std::exp(-x / 2.5)); }
double exponential(double x) { return 1e-3 * std::pow(10.0, x / 2.2); }

QList<double> samples()
{
    QList<double> xs;
    for (double x = 0.2; x < 10; x += 0.8)
        xs << x;
    return xs;
}

bool within5Digits(double a, double b)
{
    return std::fabs(a - b) <= 5e-5 * std::fabs(b) + 1e-12;
}

QColor colourOf(quint32 bgr)
{
    return QColor(int(bgr & 0xff), int((bgr >> 8) & 0xff), int((bgr >> 16) & 0xff));
}

// True when a pixel within `reach` of p has the colour.
bool colourNear(const QImage &image, QPoint p, QColor colour, int reach = 1)
{
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx) {
            const QPoint q = p + QPoint(dx, dy);
            if (image.rect().contains(q) && image.pixelColor(q) == colour)
                return true;
        }
    return false;
}

class CurvePreviewTest : public TraceliftTest
{
protected:
    // A curve traced through the picture's vertices, shifted up by `lift`
    // pixels, and finished: the plot shows it.
    void traceCurve(const CGraphPicture &g, int lift)
    {
        for (QPoint v : g.vertices)
            click(v + QPoint(0, -lift));
        next();
        ASSERT_EQ(mode(), ModePlotted);
    }

    // The pixel of a value pair on the plot as last drawn.
    QPoint plotPixel(double x, double y) const
    {
        const CGraphCurve &g = plotGraph();
        const CAxisMap xm = XAxisMap(g);
        const CAxisMap ym = YAxisMap(g, 0);
        const double vx = g.m_xLog ? std::log10(x) : x;
        const double vy = g.Range(0)->m_logScale ? std::log10(y) : y;
        return QPoint(xm.origin + int(std::floor((vx - xm.min) * xm.scale)),
                      ym.origin - int(std::floor((vy - ym.min) * ym.scale)));
    }
};

} // namespace

TEST_F(CurvePreviewTest, TheTemplateRecordPlotsEveryCurve)
{
    for (bool logY : {false, true}) {
        SCOPED_TRACE(logY ? "logarithmic Y" : "linear Y");
        dialog = std::make_unique<CTraceliftToolDlg>();
        dialog->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog.get()));
        const CGraphPicture g = MakeGraphPicture(logY, logY ? exponential : saturation, samples());
        reach(ModeTrace, g);
        type(IdXName, QStringLiteral("VCE"));
        type(IdYName, QStringLiteral("IC"));
        traceCurve(g, 0);
        // The one curve goes in as two named columns.
        ASSERT_EQ(plotGraph().CurveCount(), 1);
        EXPECT_EQ(plotGraph().Curve(0)->Origin(), int(CCurveBasicInfo::OriginColumn));
        EXPECT_EQ(plotGraph().m_data.GetColumn(0)->m_name, QStringLiteral("VCE"));
        EXPECT_EQ(plotGraph().m_data.GetColumn(1)->m_name, QStringLiteral("IC"));
        EXPECT_EQ(plotGraph().Curve(0)->m_lineThickness, 3);

        control<QPushButton>(CTraceliftToolDlg::IdAddCurve)->click();
        next();
        ASSERT_EQ(mode(), ModeTrace);
        traceCurve(g, 30);

        CCurveRecords &records = dialog->Records();
        ASSERT_EQ(records.Size(), 3);
        ASSERT_TRUE(dialog->SelectRecord(records.Size() - 1));
        ASSERT_TRUE(records.CurrentIsTemplate());
        EXPECT_TRUE(plot()->isVisible());
        EXPECT_FALSE(edit(IdPoints)->isEnabled());

        const CGraphCurve &graph = plotGraph();
        ASSERT_EQ(graph.CurveCount(), 2);
        EXPECT_EQ(graph.Range(0)->m_logScale != 0, logY);
        EXPECT_DOUBLE_EQ(graph.Range(0)->m_viewMin, logY ? std::log10(g.yLow) : g.yLow);
        EXPECT_DOUBLE_EQ(graph.Range(0)->m_viewMax, logY ? std::log10(g.yHigh) : g.yHigh);
        // Both curves, each with the values under its clicks.
        // A new curve goes in before the others: the one traced last is first.
        const int lifts[] = {30, 0};
        for (int c = 0; c < 2; ++c) {
            const CCurveInfo &curve = *graph.Curve(c);
            EXPECT_EQ(curve.Origin(), int(CCurveBasicInfo::OriginOwnColumns));
            EXPECT_TRUE(curve.m_colLabel.isEmpty());
            EXPECT_EQ(curve.m_lineThickness, 3);
            ASSERT_TRUE(curve.m_ownX && curve.m_ownY);
            ASSERT_EQ(curve.m_ownX->m_count, g.vertices.size());
            // A logarithmic Y has its log10 column ready; the linear X has none.
            EXPECT_FALSE(curve.m_ownXLog);
            ASSERT_EQ(bool(curve.m_displayColumn), logY);
            if (logY) {
                EXPECT_TRUE(curve.m_displayColumn->m_kind & CGraphColumn::KindLog);
                EXPECT_DOUBLE_EQ(curve.m_displayColumn->m_values[3], std::log10(curve.m_ownY->m_values[3]));
            }
            for (int i = 0; i < g.vertices.size(); ++i) {
                const QPoint v = g.vertices[i] + QPoint(0, -lifts[c]);
                EXPECT_TRUE(within5Digits(curve.m_ownX->m_values[i], g.XAt(v.x()))) << c << "/" << i;
                EXPECT_TRUE(within5Digits(curve.m_ownY->m_values[i], g.YAt(v.y())))
                    << c << "/" << i << ": " << curve.m_ownY->m_values[i] << " vs " << g.YAt(v.y());
            }
        }
        // Back on a real curve, the plot shows that one alone.
        ASSERT_TRUE(dialog->SelectRecord(0));
        EXPECT_EQ(plotGraph().CurveCount(), 1);
        EXPECT_EQ(plotGraph().m_data.RowCount(), g.vertices.size());
        EXPECT_FALSE(dialog->SelectRecord(records.Size()));
    }
}

TEST_F(CurvePreviewTest, ReplotTakesTheLimitsOfTheData)
{
    struct Case {
        bool xLog, yLog;
        const char *points;
        double xLow, xHigh, yLow, yHigh; // the view Replot sets, as the axes keep it
    };
    const Case cases[] = {
        {false, false, "(0,1)(1,4)(2,9)", 0, 2, 1, 9},
        {true, true, "(1,10)(10,1000)(100,100)", 0, 2, 1, 3},
        {false, true, "(-1,0.01)(3,1)", -1, 3, -2, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.points);
        dialog = std::make_unique<CTraceliftToolDlg>();
        dialog->show();
        type(IdXAtFirst, QStringLiteral("0.5"));
        type(IdXAtSecond, QStringLiteral("500"));
        type(IdYAtFirst, QStringLiteral("0.5"));
        type(IdYAtSecond, QStringLiteral("5000"));
        if (c.xLog)
            control<QCheckBox>(IdXLog)->click();
        if (c.yLog)
            control<QCheckBox>(IdYLog)->click();
        type(IdPoints, QString::fromLatin1(c.points));
        control<QPushButton>(CTraceliftToolDlg::IdApplyTyped)->click();
        ASSERT_EQ(mode(), ModePlotted);
        // The fields' limits first.
        EXPECT_DOUBLE_EQ(plotGraph().m_xViewMin, c.xLog ? std::log10(0.5) : 0.5);
        EXPECT_DOUBLE_EQ(plotGraph().Range(0)->m_viewMax, c.yLog ? std::log10(5000.0) : 5000.0);

        control<QPushButton>(CTraceliftToolDlg::IdReplot)->click();
        EXPECT_EQ(plotGraph().m_xLog != 0, c.xLog);
        EXPECT_EQ(plotGraph().Range(0)->m_logScale != 0, c.yLog);
        EXPECT_DOUBLE_EQ(plotGraph().m_xViewMin, c.xLow);
        EXPECT_DOUBLE_EQ(plotGraph().m_xViewMax, c.xHigh);
        EXPECT_DOUBLE_EQ(plotGraph().Range(0)->m_viewMin, c.yLow);
        EXPECT_DOUBLE_EQ(plotGraph().Range(0)->m_viewMax, c.yHigh);
    }
}

TEST(PlotDataLimits, ByTheKindOfTheFirstCurve)
{
    CGraphCurve g;
    g.m_data.Create(1, 3, 4);
    const double rows[] = {1, 10, 100, 2, 20, 50, 3, 5, 60, 4, 15, 70};
    g.m_data.AppendRows(rows, nullptr, 0, 3, 0, 4);
    double xl, xh, yl, yh;
    EXPECT_FALSE(PlotDataLimits(g, xl, xh, yl, yh));

    bool changed;
    g.AddCurve(2, 0, false, changed); // column 2: 50 .. 100
    ASSERT_TRUE(PlotDataLimits(g, xl, xh, yl, yh));
    EXPECT_EQ(std::vector<double>({xl, xh, yl, yh}), std::vector<double>({1, 4, 50, 100}));

    // A computed curve: the X column of the data, Y its own result.
    g.Curve(0)->m_source = CCurveBasicInfo::OriginComputed;
    g.Curve(0)->m_computedColumn = CGraphColumnPtr::Adopt(CGraphColumn::Create(2));
    g.Curve(0)->m_computedColumn->m_minValue = -7;
    g.Curve(0)->m_computedColumn->m_maxValue = 8;
    ASSERT_TRUE(PlotDataLimits(g, xl, xh, yl, yh));
    EXPECT_EQ(std::vector<double>({xl, xh, yl, yh}), std::vector<double>({1, 4, -7, 8}));

    // A curve with its own columns.
    const double own[] = {0.5, -1, 9, 3};
    g.Curve(0)->m_source = CCurveBasicInfo::OriginOwnColumns;
    g.Curve(0)->m_ownX = CGraphColumnPtr::Adopt(CGraphColumn::Create(2));
    g.Curve(0)->m_ownY = CGraphColumnPtr::Adopt(CGraphColumn::Create(2));
    g.Curve(0)->m_ownX->m_minValue = own[0];
    g.Curve(0)->m_ownX->m_maxValue = own[2];
    g.Curve(0)->m_ownY->m_minValue = own[1];
    g.Curve(0)->m_ownY->m_maxValue = own[3];
    ASSERT_TRUE(PlotDataLimits(g, xl, xh, yl, yh));
    EXPECT_EQ(std::vector<double>({xl, xh, yl, yh}), std::vector<double>({0.5, 9, -1, 3}));

    // Any other kind has no range.
    g.Curve(0)->m_source = 5;
    ASSERT_TRUE(PlotDataLimits(g, xl, xh, yl, yh));
    EXPECT_EQ(std::vector<double>({xl, xh, yl, yh}), std::vector<double>({0, 0, 0, 0}));
}

TEST_F(CurvePreviewTest, TheReadoutFollowsTheMouseOverThePlot)
{
    type(IdXAtFirst, QStringLiteral("0"));
    type(IdXAtSecond, QStringLiteral("10"));
    type(IdYAtFirst, QStringLiteral("1"));
    type(IdYAtSecond, QStringLiteral("1000"));
    control<QCheckBox>(IdYLog)->click();
    type(IdPoints, QStringLiteral("(1,2)(5,30)(9,800)"));
    control<QPushButton>(CTraceliftToolDlg::IdApplyTyped)->click();
    ASSERT_EQ(mode(), ModePlotted);
    ASSERT_TRUE(plot()->isVisible());
    EXPECT_EQ(plot()->Tool(), 11);
    EXPECT_EQ(plot()->CursorObject(), &dialog->CursorEditor());
    plot()->repaint();

    // Over each point the read-out gives that point within a pixel's worth.
    const CGraphCurve &g = plotGraph();
    const double xPerPixel = 1 / XAxisMap(g).scale;
    const double decadesPerPixel = 1 / YAxisMap(g, 0).scale;
    for (const auto &[x, y] : {std::pair{1.0, 2.0}, {5.0, 30.0}, {9.0, 800.0}}) {
        const QPoint p = plotPixel(x, y);
        QTest::mouseMove(plot(), p);
        const QString t = text(IdReadout);
        ASSERT_TRUE(t.startsWith(u'(') && t.endsWith(u')') && t.contains(QLatin1String(" , "))) << qPrintable(t);
        const QStringList parts = t.mid(1, t.size() - 2).split(QStringLiteral(" , "));
        ASSERT_EQ(parts.size(), 2);
        EXPECT_NEAR(parts[0].toDouble(), x, 1.01 * xPerPixel) << qPrintable(t);
        EXPECT_NEAR(std::log10(parts[1].toDouble()), std::log10(y), 1.01 * decadesPerPixel) << qPrintable(t);
        // The text is the cursor editor's.
        EXPECT_EQ(t, QString::asprintf("(%.5g , %.5g)", parts[0].toDouble(), parts[1].toDouble()));
    }
    // Outside the plot area the read-out stays.
    const QString last = text(IdReadout);
    QTest::mouseMove(plot(), QPoint(2, plot()->height() - 2));
    EXPECT_EQ(text(IdReadout), last);

    // The right button opens the graph window's own menu.
    auto menuItems = std::make_shared<int>(-1);
    QTimer::singleShot(0, [menuItems] {
        if (auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) {
            *menuItems = int(menu->actions().size());
            menu->close();
        }
    });
    QTest::mouseClick(plot(), Qt::RightButton, {}, plotPixel(5, 30));
    EXPECT_GT(*menuItems, 0);

    // Another tool of the plot's toolbar: the window's own read-out.
    ASSERT_TRUE(plot()->OnCommand(CmdToolPan));
    const QPoint p = plotPixel(5, 30);
    QTest::mouseMove(plot(), p);
    EXPECT_EQ(text(IdReadout), plot()->PositionTextAt(p));
    EXPECT_TRUE(text(IdReadout).startsWith(QStringLiteral("(5.")) || text(IdReadout).startsWith(QStringLiteral("(4.9")))
        << qPrintable(text(IdReadout));
}

TEST(CurveCursorEditor, WritesThePositionForFlagZeroOnly)
{
    QLineEdit edit;
    CCurveCursorEditor editor;
    EXPECT_EQ(editor.OnCursorMoved(1, 2, 0), 1); // without an edit: nothing to write
    editor.SetReadout(&edit);
    struct Case {
        double x, y;
        int flag;
        const char *text;
    };
    const Case cases[] = {
        {1.5, -2e-7, 0, "(1.5 , -2e-07)"},
        {123456.7, 0.000123456, 0, "(1.2346e+05 , 0.00012346)"},
        {3, 4, 1, "(1.2346e+05 , 0.00012346)"}, // other flags leave the text
        {3, 4, -1, "(1.2346e+05 , 0.00012346)"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(editor.OnCursorMoved(c.x, c.y, c.flag), 1);
        EXPECT_EQ(edit.text(), QString::fromLatin1(c.text));
    }
}

TEST_F(CurvePreviewTest, TheDrawnCurveLiesWhereItsValuesSay)
{
    const CGraphPicture g = MakeGraphPicture(true, exponential, samples());
    reach(ModeTrace, g);
    traceCurve(g, 0);
    ASSERT_TRUE(plot()->isVisible());
    const QImage image = plot()->grab().toImage();
    const CGraphCurve &graph = plotGraph();
    const QColor colour = colourOf(graph.Curve(0)->m_color);
    const QRect plotRect = EdgesToQRect(graph.m_plotRect);
    int checked = 0;
    for (QPoint v : g.vertices) {
        const double x = g.XAt(v.x()), y = g.YAt(v.y());
        const QPoint p = plotPixel(x, y);
        if (!plotRect.contains(p))
            continue;
        ++checked;
        EXPECT_TRUE(colourNear(image, p, colour)) << x << ", " << y << " at " << p.x() << ", " << p.y();
        // Mirrored to the other half of the plot there is no curve.
        const QPoint mirror(p.x(), plotRect.bottom() + plotRect.top() - p.y());
        if (std::abs(mirror.y() - p.y()) > 20) {
            EXPECT_FALSE(colourNear(image, mirror, colour)) << mirror.x() << ", " << mirror.y();
        }
    }
    EXPECT_GE(checked, g.vertices.size() - 1);
}
