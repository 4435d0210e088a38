// The graph window on the offscreen platform: tools driven by QTest mouse
// and key events, commands, notifications, the menu and the read-out.
#include "graphdata/draw/drawtools.h"
#include "graphdata/grapherrors.h"
#include "graphwnd/graphcursorbase.h"
#include "graphwnd/graphtoolbar.h"
#include "graphwnd/graphwnd.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"
#include "support/registry.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QPainter>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

#include <new>

#include "graphdata/pages/curve2page.h"
#include "graphdata/pages/options2dlg.h"
#include "graphdata/pages/optionspage.h"

#include <QTabWidget>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

// Answers the window's boxes and keeps what they said; ticks the "do not
// show again" box when told to.
struct RecordingPrompts : CUserPrompts
{
    QStringList messages;
    int warnings = 0;
    bool tick = false;
    PromptAnswer Message(const CMessagePrompt &prompt) override
    {
        messages << prompt.text;
        if (prompt.checkBoxChecked) {
            ++warnings;
            *prompt.checkBoxChecked = tick;
        }
        return PromptAnswer::Ok;
    }
};

// A drawing object: a rectangle in graph values.
class TestBox : public CTextnLine
{
public:
    TestBox(double x0, double y0, double x1, double y1) : m_x0(x0), m_y0(y0), m_x1(x1), m_y1(y1) {}
    int ObjectKind() const override { return 3; }
    void Draw(QPainter &p, bool, const CObjectFrame &f) override
    {
        m_last = PixelRect(f).adjusted(2, 2, -2, -2);
        p.setPen(Qt::black);
        p.drawRect(m_last);
    }
    bool HitRect(const QRect &r) const override { return m_last.intersects(r); }
    void DrawMoved(QPainter &p, QPoint delta, const CObjectFrame &) override { p.drawRect(m_last.translated(delta)); }
    int HitTest(QPoint point, bool withHandles) const override
    {
        if (withHandles && (point - m_last.topLeft()).manhattanLength() <= 3)
            return 1;
        return m_last.contains(point) ? 10 : 0;
    }
    void MoveHandle(int handle, QPoint d, const CObjectFrame &f) override
    {
        if (handle == 1) {
            m_x0 += d.x() / f.xScale;
            m_y1 -= d.y() / f.yScale;
        }
        m_handleMoved = handle;
    }
    void MoveBy(QPoint d, const CObjectFrame &f) override
    {
        m_x0 += d.x() / f.xScale;
        m_x1 += d.x() / f.xScale;
        m_y0 -= d.y() / f.yScale;
        m_y1 -= d.y() / f.yScale;
        ++m_moves;
    }
    QRect PixelRect(const CObjectFrame &f) const override
    {
        auto px = [&](double x) { return f.plotRect.left() + int(std::floor((x - f.xMin) * f.xScale)); };
        auto py = [&](double y) { return f.plotRect.bottom() - int(std::floor((y - f.yMin) * f.yScale)); };
        return QRect(QPoint(px(m_x0), py(m_y1)), QPoint(px(m_x1), py(m_y0))).normalized().adjusted(-2, -2, 2, 2);
    }
    QRect LastRect() const override { return m_last.adjusted(-2, -2, 2, 2); }

    double m_x0, m_y0, m_x1, m_y1;
    QRect m_last;
    int m_moves = 0;
    int m_handleMoved = 0;
};

struct CursorSpy : CGraphCursorBase
{
    int events = 0;
    QPoint last;
    std::vector<CursorEvent> kinds;
    void OnCursorEvent(CGraphWnd *, QPoint point, int, CursorEvent event) override
    {
        ++events;
        last = point;
        kinds.push_back(event);
    }
};

class GraphWnd : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }

    void SetUp() override
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settings.path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settings.path());
        m_oldPrompts = SetUserPrompts(&m_prompts);
        // x 0..100, y1 = x, y2 = 100 - x
        CGraphData data;
        data.Create(1, 3, 101, 0);
        std::vector<double> rows;
        for (int i = 0; i <= 100; ++i)
            rows.insert(rows.end(), {double(i), double(i), 100.0 - i});
        data.AppendRows(rows.data(), nullptr, 0, 3, 0, 101);
        data->m_ordered = 1;
        m_wnd.resize(640, 480);
        m_wnd.SetGraphDataCopy(data);
        QObject::connect(&m_wnd, &CGraphWnd::GraphNotify, [this](int code, CGraphNotifyRecord *record) {
            m_notes.push_back(code);
            if (code == NotifyObjectClicked && m_consumeClicks)
                record->consumed = true;
        });
        m_wnd.show();
        paint();
    }
    void TearDown() override { SetUserPrompts(m_oldPrompts); }

    // Paints the window now, so that the plot's rectangles are known.
    QImage paint() { return m_wnd.grab().toImage(); }
    CGraphCurve &graph() { return *m_wnd.GetGraphData(); }
    QRect plot() { return EdgesToQRect(graph().m_plotRect); }
    double xAt(int px) { return XAxisMap(graph()).ToValue(px); }
    double yAt(int py) { return YAxisMap(graph(), 0).ToValue(py); }
    void wheel(QPoint at, int delta, Qt::KeyboardModifiers keys, int pixels)
    {
        QWheelEvent e(at, m_wnd.mapToGlobal(at), QPoint(0, pixels), QPoint(0, delta), Qt::NoButton, keys,
                      Qt::NoScrollPhase, false);
        QApplication::sendEvent(&m_wnd, &e);
    }
    void wheel(QPoint at, int delta, Qt::KeyboardModifiers keys)
    {
        QWheelEvent e(at, m_wnd.mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton, keys, Qt::NoScrollPhase,
                      false);
        QApplication::sendEvent(&m_wnd, &e);
    }

    QTemporaryDir m_settings;
    RecordingPrompts m_prompts;
    CUserPrompts *m_oldPrompts = nullptr;
    CGraphWnd m_wnd;
    std::vector<int> m_notes;
    bool m_consumeClicks = false;
};

} // namespace

TEST_F(GraphWnd, AZoomBoxZoomsToTheValuesUnderIt)
{
    m_wnd.OnCommand(CmdToolZoomBox);
    const QRect r = plot();
    const QPoint a = r.topLeft() + QPoint(100, 60), b = r.topLeft() + QPoint(300, 200);
    const double x0 = xAt(a.x()), x1 = xAt(b.x()), y0 = yAt(b.y()), y1 = yAt(a.y());
    QTest::mousePress(&m_wnd, Qt::LeftButton, Qt::NoModifier, a);
    ASSERT_EQ(m_wnd.ActiveTrack(), &m_wnd.m_zoomBoxTrack);
    QTest::mouseMove(&m_wnd, b);
    EXPECT_TRUE(m_wnd.m_zoomBoxTrack.m_feedbackShown);
    QTest::mouseRelease(&m_wnd, Qt::LeftButton, Qt::NoModifier, b);
    EXPECT_EQ(m_wnd.ActiveTrack(), nullptr);
    EXPECT_NEAR(graph().m_xViewMin, x0, 1e-9);
    EXPECT_NEAR(graph().m_xViewMax, x1, 1e-9);
    EXPECT_NEAR(graph().Range(0)->m_viewMin, y0, 1e-9);
    EXPECT_NEAR(graph().Range(0)->m_viewMax, y1, 1e-9);
    EXPECT_NE(std::find(m_notes.begin(), m_notes.end(), int(NotifyObjectsChanged)), m_notes.end());

    // Full view goes back to the ranges the window was given.
    m_wnd.OnCommand(CmdFullView);
    EXPECT_EQ(graph().m_xViewMin, 0);
    EXPECT_EQ(graph().m_xViewMax, 100);
    EXPECT_EQ(graph().Range(0)->m_viewMin, 0);
    EXPECT_EQ(graph().Range(0)->m_viewMax, 100);
}

TEST_F(GraphWnd, APanMovesTheViewWithTheMouse)
{
    m_wnd.OnCommand(CmdToolPan);
    const QPoint a = plot().center();
    const double x = xAt(a.x()), y = yAt(a.y());
    QTest::mousePress(&m_wnd, Qt::LeftButton, Qt::NoModifier, a);
    QTest::mouseMove(&m_wnd, a + QPoint(60, -40));
    QTest::mouseRelease(&m_wnd, Qt::LeftButton, Qt::NoModifier, a + QPoint(60, -40));
    // the value that was under the mouse is under it still (on the plot as
    // it was drawn: new labels may move the plot at the next paint)
    EXPECT_NEAR(xAt(a.x() + 60), x, 1e-9);
    EXPECT_NEAR(yAt(a.y() - 40), y, 1e-9);
    EXPECT_EQ(graph().m_xViewMax - graph().m_xViewMin, 100);
}

TEST_F(GraphWnd, EscapeAndTheOtherButtonCancelADrag)
{
    struct Case
    {
        int command;
        bool rightButton; // cancel with the right button instead of Escape
    };
    for (const Case c : {Case{CmdToolPan, false}, Case{CmdToolZoomBox, false}, Case{CmdToolPan, true}}) {
        m_wnd.OnCommand(c.command);
        const CViewRanges before = SaveView(graph());
        const QPoint a = plot().center();
        QTest::mousePress(&m_wnd, Qt::LeftButton, Qt::NoModifier, a);
        QTest::mouseMove(&m_wnd, a + QPoint(80, 50));
        CActionMouseTrack *track = m_wnd.ActiveTrack();
        ASSERT_NE(track, nullptr);
        if (c.rightButton)
            QTest::mousePress(&m_wnd, Qt::RightButton, Qt::NoModifier, a + QPoint(80, 50));
        else
            QTest::keyClick(&m_wnd, Qt::Key_Escape);
        EXPECT_EQ(m_wnd.ActiveTrack(), nullptr) << c.command;
        EXPECT_EQ(track->Result(), 0) << c.command;
        QTest::mouseRelease(&m_wnd, Qt::LeftButton, Qt::NoModifier, a + QPoint(80, 50));
        EXPECT_EQ(graph().m_xViewMin, before.xMin) << c.command;
        EXPECT_EQ(graph().m_xViewMax, before.xMax) << c.command;
        EXPECT_EQ(graph().Range(0)->m_viewMin, before.y[0].min) << c.command;
    }
}

TEST_F(GraphWnd, ADragOutsideKeepsScrollingByTheTimer)
{
    m_wnd.OnCommand(CmdToolPan);
    const QPoint a = plot().center();
    QTest::mousePress(&m_wnd, Qt::LeftButton, Qt::NoModifier, a);
    const QPoint outside(m_wnd.width() + 30, a.y());
    QTest::mouseMove(&m_wnd, outside);
    EXPECT_TRUE(m_wnd.m_panTrack.m_timer.isActive());
    const double afterMove = graph().m_xViewMin;
    // each tick of the timer pans once more by the distance beyond the edge
    m_wnd.m_panTrack.OnTimer();
    const double afterTick = graph().m_xViewMin;
    m_wnd.m_panTrack.OnTimer();
    EXPECT_LT(afterTick, afterMove);
    EXPECT_NEAR(graph().m_xViewMin - afterTick, afterTick - afterMove, 1e-9);
    QTest::mouseMove(&m_wnd, a);
    EXPECT_FALSE(m_wnd.m_panTrack.m_timer.isActive());
    QTest::mouseRelease(&m_wnd, Qt::LeftButton, Qt::NoModifier, a);
}

TEST_F(GraphWnd, ControlWheelZoomsRoundThePointAndTheWheelScrolls)
{
    const QPoint at = plot().topLeft() + QPoint(120, 80);
    const double x = xAt(at.x()), y = yAt(at.y());
    const double span = graph().m_xViewMax - graph().m_xViewMin;
    wheel(at, 120, Qt::ControlModifier);
    EXPECT_NEAR(graph().m_xViewMax - graph().m_xViewMin, 0.9 * span, 1e-9);
    EXPECT_NEAR(xAt(at.x()), x, 1e-9);
    EXPECT_NEAR(yAt(at.y()), y, 1e-9);
    wheel(at, -120, Qt::ControlModifier);
    EXPECT_NEAR(graph().m_xViewMax - graph().m_xViewMin, 0.99 * span, 1e-9);

    const double y0 = graph().Range(0)->m_viewMin, tick = graph().Range(0)->m_tick;
    wheel(at, 240, Qt::NoModifier);
    EXPECT_NEAR(graph().Range(0)->m_viewMin, y0 + 2 * tick, 1e-9);
    const double x0 = graph().m_xViewMin;
    wheel(at, -120, Qt::ShiftModifier);
    EXPECT_NEAR(graph().m_xViewMin, x0 - graph().m_xTick, 1e-9);
    const double x1 = graph().m_xViewMin;
    wheel(at, 120, Qt::AltModifier); // any other key: nothing
    EXPECT_EQ(graph().m_xViewMin, x1);
}

// A notch of a classic wheel, the same notch from a fine wheel in eight
// parts, and a touchpad's pixels: each moves the view as far as it says.
TEST_F(GraphWnd, FineWheelsAndTouchpadsAddUpToNotchesAndPixels)
{
    const struct
    {
        const char *name;
        int events, angle, pixels;
        Qt::KeyboardModifiers keys;
        double zoom;      // X span afterwards over before (Control)
        double ticks;     // Y view moved by ticks (no key) or X (Shift)
        double pixelMove; // view moved by pixels' worth
    } cases[] = {
        {"one notch zooms", 1, 120, 0, Qt::ControlModifier, 0.9, 0, 0},
        {"eight parts zoom as one notch", 8, 15, 0, Qt::ControlModifier, 0.9, 0, 0},
        {"seven parts wait for the eighth", 7, 15, 0, Qt::ControlModifier, 1, 0, 0},
        {"parts the other way zoom out", 24, -5, 0, Qt::ControlModifier, 1.1, 0, 0},
        {"one notch scrolls a tick", 1, 120, 0, Qt::NoModifier, 1, 1, 0},
        {"eight parts scroll a tick", 8, 15, 0, Qt::NoModifier, 1, 1, 0},
        {"shifted parts scroll X back", 8, -15, 0, Qt::ShiftModifier, 1, -1, 0},
        {"touchpad pixels scroll Y by pixels", 120, 2, 1, Qt::NoModifier, 1, 0, 120},
        {"shifted touchpad pixels scroll X", 40, -2, -1, Qt::ShiftModifier, 1, 0, -40},
    };
    const CViewRanges start = SaveView(graph());
    for (const auto &c : cases) {
        RestoreView(graph(), start);
        paint();
        const QPoint at = plot().topLeft() + QPoint(120, 80);
        const double span = graph().m_xViewMax - graph().m_xViewMin;
        const double x0 = graph().m_xViewMin, y0 = graph().Range(0)->m_viewMin;
        const double xTick = graph().m_xTick, yTick = graph().Range(0)->m_tick;
        const double xPerPixel = 1 / XAxisMap(graph()).scale, yPerPixel = 1 / YAxisMap(graph(), 0).scale;
        for (int i = 0; i < c.events; ++i)
            wheel(at, c.angle, c.keys, c.pixels);
        EXPECT_NEAR((graph().m_xViewMax - graph().m_xViewMin) / span, c.zoom, 1e-9) << c.name;
        if (c.keys == Qt::ControlModifier)
            continue;
        const bool onX = c.keys == Qt::ShiftModifier;
        const double moved = onX ? graph().m_xViewMin - x0 : graph().Range(0)->m_viewMin - y0;
        const double want = c.ticks * (onX ? xTick : yTick) + c.pixelMove * (onX ? xPerPixel : yPerPixel);
        EXPECT_NEAR(moved, want, 1e-9 * (1 + std::fabs(want))) << c.name;
        EXPECT_NE(want, 0) << c.name;
        wheel(at, 60, Qt::AltModifier); // another key: a part left over is dropped
    }
}

namespace {

// A drawing object whose drawing runs out of memory while `failing` is set.
struct CFailingObject : CTextnLine
{
    bool failing = true;
    int ObjectKind() const override { return 1; }
    void Draw(QPainter &, bool, const CObjectFrame &) override
    {
        if (failing)
            throw std::bad_alloc();
    }
    bool HitRect(const QRect &) const override { return false; }
    void DrawMoved(QPainter &, QPoint, const CObjectFrame &) override {}
    int HitTest(QPoint, bool) const override { return 0; }
    void MoveBy(QPoint, const CObjectFrame &) override {}
    QRect PixelRect(const CObjectFrame &) const override { return QRect(); }
    QRect LastRect() const override { return QRect(); }
};

} // namespace

// A draw pass that runs out of memory leaves the last good picture on the
// screen and says so once, until a pass succeeds again.
TEST_F(GraphWnd, RunningOutOfMemoryWhileDrawingKeepsTheLastPicture)
{
    for (bool cached : {true, false}) {
        std::vector<int> reports;
        const GraphErrorReporter old =
            SetGraphErrorReporter([&reports](int id, const QString &) { reports.push_back(id); });
        m_wnd.m_useBitmapCache = cached;
        m_wnd.m_drawDirect = !cached;
        m_wnd.Redraw(1);
        const QImage good = paint();
        auto *object = new CFailingObject;
        graph().m_textObjects.Add(object);
        graph().m_xViewMax *= 2; // a picture that would differ
        m_wnd.Redraw(1);
        const QImage first = paint();
        m_wnd.Redraw(1);
        const QImage second = paint();
        if (cached) { // drawing straight has no picture of its own to keep
            EXPECT_EQ(first, good);
            EXPECT_EQ(second, good);
        }
        EXPECT_EQ(reports, std::vector<int>{43640}) << cached;
        object->failing = false;
        m_wnd.Redraw(1);
        EXPECT_NE(paint(), good) << cached;
        EXPECT_EQ(reports.size(), 1u) << cached;
        graph().m_textObjects.DeleteAll();
        SetGraphErrorReporter(old);
    }
}

TEST_F(GraphWnd, AxisLockedZoomChangesOneAxis)
{
    for (int tool : {6, 7}) {
        m_wnd.OnCommand(CmdFullView);
        paint();
        m_wnd.SetTool(tool);
        const QRect r = plot();
        QTest::mousePress(&m_wnd, Qt::LeftButton, Qt::NoModifier, r.topLeft() + QPoint(50, 40));
        QTest::mouseMove(&m_wnd, r.topLeft() + QPoint(250, 200));
        QTest::mouseRelease(&m_wnd, Qt::LeftButton, Qt::NoModifier, r.topLeft() + QPoint(250, 200));
        if (tool == 6) {
            EXPECT_GT(graph().m_xViewMin, 0);
            EXPECT_EQ(graph().Range(0)->m_viewMax, 100);
        } else {
            EXPECT_EQ(graph().m_xViewMin, 0);
            EXPECT_LT(graph().Range(0)->m_viewMax, 100);
        }
    }
}

TEST_F(GraphWnd, ObjectsAreSelectedMovedAndDeleted)
{
    auto *box = new TestBox(20, 20, 40, 40);
    graph().m_textObjects.Add(box);
    m_wnd.Redraw(1);
    paint();
    ASSERT_FALSE(box->m_last.isEmpty());

    // a host that takes the click leaves the object alone
    m_consumeClicks = true;
    QTest::mouseClick(&m_wnd, Qt::LeftButton, Qt::NoModifier, box->m_last.center());
    EXPECT_TRUE(m_wnd.Selection().empty());
    m_consumeClicks = false;

    const QPoint grab = box->m_last.center();
    QTest::mousePress(&m_wnd, Qt::LeftButton, Qt::NoModifier, grab);
    ASSERT_EQ(m_wnd.ActiveTrack(), &m_wnd.m_moveTrack);
    QTest::mouseMove(&m_wnd, grab + QPoint(25, 0));
    QTest::mouseRelease(&m_wnd, Qt::LeftButton, Qt::NoModifier, grab + QPoint(25, 0));
    EXPECT_EQ(box->m_moves, 1);
    EXPECT_NEAR(box->m_x0, 20 + 25 / XAxisMap(graph()).scale, 1e-9);
    ASSERT_EQ(m_wnd.Selection().size(), 1u);

    m_notes.clear();
    QTest::keyClick(&m_wnd, Qt::Key_Delete);
    EXPECT_TRUE(m_wnd.Selection().empty());
    EXPECT_EQ(graph().m_textObjects.GetSize(), 0);
    EXPECT_EQ(m_notes, std::vector<int>{NotifyObjectsChanged});
}

TEST_F(GraphWnd, TheSelectionBoxSelectsTheObjectsItTouches)
{
    auto *inside = new TestBox(20, 20, 30, 30);
    auto *outside = new TestBox(70, 70, 80, 80);
    graph().m_textObjects.Add(inside);
    graph().m_textObjects.Add(outside);
    m_wnd.Redraw(1);
    paint();
    const QPoint a = EdgesToQRect(graph().m_plotRect).bottomLeft() + QPoint(5, -5);
    const QPoint b = inside->m_last.center();
    QTest::mousePress(&m_wnd, Qt::LeftButton, Qt::NoModifier, a);
    ASSERT_EQ(m_wnd.ActiveTrack(), &m_wnd.m_selectBoxTrack);
    QTest::mouseMove(&m_wnd, b);
    QTest::mouseRelease(&m_wnd, Qt::LeftButton, Qt::NoModifier, b);
    EXPECT_EQ(m_wnd.Selection(), std::vector<CTextnLine *>{inside});
}

TEST_F(GraphWnd, TheTitleBoxDragsTheLegend)
{
    const QRect title = EdgesToQRect(graph().m_titleRect);
    ASSERT_FALSE(title.isEmpty());
    QTest::mousePress(&m_wnd, Qt::LeftButton, Qt::NoModifier, title.center());
    ASSERT_EQ(m_wnd.ActiveTrack(), &m_wnd.m_titleBoxTrack);
    QTest::mouseMove(&m_wnd, title.center() + QPoint(plot().width() / 2, 0));
    QTest::mouseRelease(&m_wnd, Qt::LeftButton, Qt::NoModifier, title.center() + QPoint(plot().width() / 2, 0));
    EXPECT_EQ(graph().m_legendPos, 1);
    EXPECT_NEAR(graph().m_legendOffset, 5000, 100);
}

TEST_F(GraphWnd, OptionCommandsOpenTheirPageAndToolsAreShared)
{
    // Each command opens the option dialog on its page; Cancel closes it.
    const struct
    {
        int command;
        COptionsFault::Page page; // CmdOptions: the page used last
    } commands[] = {{CmdGraphOptions, COptionsFault::PageCurves},
                    {CmdXAxis, COptionsFault::PageXAxis},
                    {CmdYAxisDialog, COptionsFault::PageYAxis},
                    {CmdOptions, COptionsFault::PageYAxis}};
    for (const auto &c : commands) {
        SCOPED_TRACE(c.command);
        bool opened = false, onPage = false;
        QTimer::singleShot(0, [&] {
            auto *dialog = qobject_cast<COptions2_Dlg *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            opened = true;
            onPage = dialog->Tabs()->currentWidget() == dialog->Page(c.page);
            dialog->reject();
        });
        EXPECT_TRUE(m_wnd.OnCommand(c.command));
        EXPECT_TRUE(opened);
        EXPECT_TRUE(onPage);
    }
    EXPECT_TRUE(m_prompts.messages.isEmpty());
    EXPECT_FALSE(m_wnd.OnCommand(12345));

    // the toolbar shows the tool in force and runs its commands
    m_wnd.ToolBar()->ActionFor(CmdToolPan)->trigger();
    EXPECT_EQ(m_wnd.Tool(), 2);
    EXPECT_TRUE(m_wnd.ToolBar()->ActionFor(CmdToolPan)->isChecked());
    EXPECT_EQ(m_wnd.ToolBar()->ActionFor(CmdToolPan)->toolTip(), LanguageString(CmdToolPan));

    CGraphWnd other(nullptr, false);
    m_wnd.m_sharedTool = other.m_sharedTool = 1;
    m_wnd.SetTool(3);
    EXPECT_EQ(other.Tool(), 3);
    CGraphWnd::SetSharedToolVeto([](int tool) { return tool != 4; });
    m_wnd.SetTool(4);
    EXPECT_EQ(other.Tool(), 3);
    CGraphWnd::SetSharedToolVeto(nullptr);
    m_wnd.m_sharedTool = 0;
}

TEST_F(GraphWnd, TheReadOutNamesEveryYAxis)
{
    const QPoint at = plot().topLeft() + QPoint(plot().width() / 4, plot().height() / 2);
    const QString one = m_wnd.PositionTextAt(at);
    EXPECT_TRUE(one.startsWith(u'(') && one.endsWith(u')')) << one.toStdString();
    EXPECT_EQ(one, QString::asprintf("(%f, %f)", xAt(at.x()), yAt(at.y())));

    CCurveInfo *second = graph().Curve(1);
    second->m_yAxisIndex = graph().AddRange(second);
    graph().Range(1)->m_logScale = 1;
    graph().Range(1)->m_viewMin = 0;
    graph().Range(1)->m_viewMax = 2;
    m_wnd.Redraw(1);
    paint();
    const QString two = m_wnd.PositionTextAt(at);
    const double y2 = std::pow(10.0, YAxisMap(graph(), 1).ToValue(at.y()));
    EXPECT_EQ(two, QString::asprintf("X=%f, Y1=%f, Y2=%f", xAt(at.x()), yAt(at.y()), y2));
}

TEST_F(GraphWnd, TheMenuOffersWhatLiesUnderTheMouse)
{
    auto ids = [this](QPoint at) {
        QMenu menu;
        m_wnd.BuildContextMenu(at, menu);
        std::vector<int> found;
        std::function<void(QMenu *)> walk = [&](QMenu *m) {
            for (QAction *a : m->actions()) {
                if (a->menu())
                    walk(a->menu());
                else if (!a->isSeparator())
                    found.push_back(a->data().toInt());
            }
        };
        walk(&menu);
        return found;
    };
    auto has = [](const std::vector<int> &v, int id) { return std::find(v.begin(), v.end(), id) != v.end(); };

    const std::vector<int> frame = ids(QPoint(plot().left() - 3, plot().center().y()));
    EXPECT_TRUE(has(frame, CmdGraphOptions) && has(frame, CmdXAxisDialog) && has(frame, CmdYAxisDialog));
    EXPECT_EQ(frame.back(), int(CmdCopyPicture));

    // the line y1 = x runs through the plot's middle
    const QPoint onCurve = plot().center();
    const std::vector<int> curve = ids(onCurve);
    for (int id : {CmdCurveTitle, CmdCurveProperties, CmdDelete, CmdOwnAxis, CmdHighlight, CmdCopyValues, CmdSymbols})
        EXPECT_TRUE(has(curve, id)) << id;

    const std::vector<int> area = ids(plot().topLeft() + QPoint(40, plot().height() - 10));
    for (int id = CmdThicknessNone; id <= CmdThicknessNone + 6; ++id)
        EXPECT_TRUE(has(area, id)) << id;
    EXPECT_TRUE(has(area, CmdColumnFirst + 1) && has(area, CmdColumnFirst + 2) && has(area, CmdAllColumns));
    EXPECT_FALSE(has(area, CmdColumnFirst)); // the X column

    const int hit = m_wnd.CurveAt(onCurve);
    ASSERT_GE(hit, 0);
    // Properties opens the curve page on the row of the curve clicked.
    int shownTab = -1, shownRow = -1;
    QTimer::singleShot(0, [&] {
        auto *dialog = qobject_cast<COptions2_Dlg *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        shownTab = dialog->Tabs()->currentIndex();
        shownRow = dialog->m_curvePage->m_list->currentRow();
        dialog->reject();
    });
    m_wnd.OnContextCommand(CmdCurveProperties, onCurve);
    EXPECT_EQ(shownTab, 0);
    EXPECT_EQ(shownRow, hit);
    m_wnd.OnContextCommand(CmdHighlight, onCurve);
    EXPECT_EQ(graph().m_highlightedCurve, hit);
    m_wnd.OnContextCommand(CmdOwnAxis, onCurve);
    EXPECT_EQ(graph().RangeCount(), 2);
    EXPECT_EQ(graph().Curve(hit)->m_yAxisIndex, 1);
    m_wnd.OnContextCommand(CmdThicknessNone + 3, plot().topLeft() + QPoint(40, plot().height() - 10));
    EXPECT_EQ(graph().Curve(0)->m_lineThickness, 3);
    m_wnd.OnContextCommand(CmdColumnFirst + 2, QPoint());
    EXPECT_EQ(graph().CurveCount(), 1);
    m_wnd.OnContextCommand(CmdAllColumns, QPoint());
    EXPECT_EQ(graph().CurveCount(), 2);
}

TEST_F(GraphWnd, TheCursorObjectTakesTheEventsOfTool11)
{
    CursorSpy spy;
    m_wnd.SetCursorObject(&spy);
    m_wnd.SetTool(11);
    const QPoint at = plot().center();
    QTest::mouseClick(&m_wnd, Qt::LeftButton, Qt::NoModifier, at);
    QTest::mouseMove(&m_wnd, at + QPoint(5, 5));
    QTest::mouseClick(&m_wnd, Qt::RightButton, Qt::NoModifier, at);
    EXPECT_EQ(spy.events, 3);
    const std::vector<CGraphCursorBase::CursorEvent> kinds{CGraphCursorBase::CursorLeftDown,
                                                           CGraphCursorBase::CursorMove,
                                                           CGraphCursorBase::CursorRightDown};
    EXPECT_EQ(spy.kinds, kinds);
    EXPECT_EQ(spy.last, at);
    EXPECT_EQ(m_wnd.ActiveTrack(), nullptr);
    m_wnd.SetCursorObject(nullptr);
}

TEST_F(GraphWnd, NewRowsAreDrawnOntoTheCachedPicture)
{
    // Add the same rows again further right: only they are drawn.
    graph().m_xViewMax = 200;
    m_wnd.Redraw(1);
    paint();
    const int before = graph().m_lastDrawnRow;
    EXPECT_EQ(before, 100);
    std::vector<double> rows;
    for (int i = 101; i <= 150; ++i)
        rows.insert(rows.end(), {double(i), 100.0, 0.0});
    graph().m_data.AppendRows(rows.data(), nullptr, 0, 3, 101, 50);
    m_wnd.Redraw(0);
    const QImage image = paint();
    EXPECT_EQ(graph().m_lastDrawnRow, 150);
    const QColor color = ColorFromRef(graph().Curve(0)->m_color);
    const int x = int(XAxisMap(graph()).origin + std::floor((140 - graph().m_xViewMin) * XAxisMap(graph()).scale));
    const int y = graph().m_plotRect.bottom - int(std::floor((100 - graph().Range(0)->m_viewMin) * YAxisMap(graph(), 0).scale));
    EXPECT_EQ(QColor(image.pixel(x, y)), color);
}

TEST_F(GraphWnd, InvalidPointsWarnOnceAndCanBeSilenced)
{
    graph().m_data.GetColumn(1)->m_valid[10] = 2;
    graph().m_data.GetColumn(1)->m_hasInvalid = 1;
    m_prompts.tick = true;
    for (int pass = 0; pass < 2; ++pass) {
        m_wnd.Redraw(1);
        paint();
        QCoreApplication::processEvents(); // the warning comes up once the paint is done
    }
    EXPECT_EQ(m_prompts.warnings, 1);
    EXPECT_EQ(RegistryGetDword(QStringLiteral("STANDARD OPTIONS"), QStringLiteral("HideInvalidPointWarning"), 0), 1u);
    CGraphWnd again;
    again.SetGraphDataCopy(graph().m_data);
    again.resize(400, 300);
    again.grab();
    QCoreApplication::processEvents();
    EXPECT_EQ(m_prompts.warnings, 1);
}

TEST_F(GraphWnd, ViewCommandsAndTheCopyOfAData)
{
    // rows far beyond the view: the view update takes them in with a margin
    std::vector<double> rows = {400, 400, -300};
    graph().m_data.AppendRows(rows.data(), nullptr, 0, 3, 101, 1);
    m_wnd.PostViewCommand(2);
    QCoreApplication::sendPostedEvents(&m_wnd);
    EXPECT_EQ(m_wnd.m_autoRange, 0);
    EXPECT_GE(graph().m_xViewMax, 400 + 40);
    EXPECT_LE(graph().Range(0)->m_viewMin, -300 - 70);
    EXPECT_EQ(graph().CurveCount(), 2);
    EXPECT_EQ(graph().Curve(0)->m_colIndex, 1);
    m_wnd.DeleteGraphData();
    EXPECT_EQ(m_wnd.GetGraphData(), nullptr);
    paint(); // an empty window paints without a graph
}

TEST_F(GraphWnd, AHandleOfASelectedObjectResizesIt)
{
    auto *box = new TestBox(20, 20, 40, 40);
    graph().m_textObjects.Add(box);
    m_wnd.Redraw(1);
    paint();
    QTest::mouseClick(&m_wnd, Qt::LeftButton, Qt::NoModifier, box->m_last.center());
    ASSERT_EQ(m_wnd.Selection().size(), 1u);
    const QPoint corner = box->m_last.topLeft();
    QTest::mousePress(&m_wnd, Qt::LeftButton, Qt::NoModifier, corner);
    ASSERT_EQ(m_wnd.ActiveTrack(), &m_wnd.m_resizeTrack);
    QTest::mouseMove(&m_wnd, corner - QPoint(10, 10));
    QTest::mouseRelease(&m_wnd, Qt::LeftButton, Qt::NoModifier, corner - QPoint(10, 10));
    EXPECT_EQ(box->m_handleMoved, 1);
    EXPECT_LT(box->m_x0, 20);
    EXPECT_EQ(box->m_x1, 40);
}

TEST_F(GraphWnd, DraggingAnEdgeZoomsTheFarSide)
{
    m_wnd.SetTool(5);
    const QRect r = plot();
    // grab in the lower half and drag up: the top limit comes down
    const QPoint a(r.center().x(), r.bottom() - 30);
    QTest::mousePress(&m_wnd, Qt::LeftButton, Qt::NoModifier, a);
    ASSERT_EQ(m_wnd.ActiveTrack(), &m_wnd.m_zoomPanTrack);
    const double perPixel = 1 / YAxisMap(graph(), 0).scale;
    QTest::mouseMove(&m_wnd, a + QPoint(40, -50));
    QTest::mouseRelease(&m_wnd, Qt::LeftButton, Qt::NoModifier, a + QPoint(40, -50));
    EXPECT_EQ(graph().Range(0)->m_viewMin, 0);
    EXPECT_NEAR(graph().Range(0)->m_viewMax, 100 - 50 * perPixel, 1e-9);
    EXPECT_EQ(graph().m_xViewMin, 0); // the Y lock keeps X
    EXPECT_EQ(graph().m_xViewMax, 100);
}

TEST_F(GraphWnd, TracksWithoutATool)
{
    // the span of X between two points, over the plot's whole height
    const QRect r = plot();
    m_wnd.m_partialBoxTrack.m_top = r.top();
    m_wnd.m_partialBoxTrack.m_bottom = r.bottom();
    ASSERT_TRUE(m_wnd.m_partialBoxTrack.Track(&m_wnd, r.center()));
    m_wnd.m_partialBoxTrack.OnMouseMove(r.center() + QPoint(-60, 45), Qt::NoModifier);
    EXPECT_EQ(m_wnd.m_partialBoxTrack.BoxRect(), QRect(QPoint(r.center().x() - 60, r.top()), QPoint(r.center().x(), r.bottom())));
    m_wnd.m_partialBoxTrack.OnLeftUp(QPoint());
    EXPECT_EQ(m_wnd.m_partialBoxTrack.EndTrack(1), 1);

    // a new line from the start to where the button goes up; Escape leaves none
    CLineDragTrack &line = m_wnd.m_lineDragTrack;
    ASSERT_TRUE(line.Track(&m_wnd, r.center()));
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    line.HandleEvent(&escape);
    EXPECT_TRUE(line.HasEnded());
    EXPECT_EQ(line.Result(), 0);
    EXPECT_EQ(line.m_lineEnd, QPoint());
    ASSERT_TRUE(line.Track(&m_wnd, r.center()));
    QMouseEvent move(QEvent::MouseMove, QPointF(r.center() + QPoint(30, 20)), QPointF(), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    line.HandleEvent(&move);
    QMouseEvent up(QEvent::MouseButtonRelease, QPointF(r.center() + QPoint(30, 20)), QPointF(), Qt::LeftButton,
                   Qt::NoButton, Qt::NoModifier);
    line.HandleEvent(&up);
    EXPECT_EQ(line.Result(), 1);
    EXPECT_EQ(line.m_lineStart, r.center());
    EXPECT_EQ(line.m_lineEnd, r.center() + QPoint(30, 20));
}

TEST_F(GraphWnd, DirectDrawingShowsTheSamePicture)
{
    const QImage cached = paint();
    m_wnd.m_drawDirect = 1;
    const QImage direct = paint();
    EXPECT_EQ(cached, direct);
}
