// Drawing objects in the graph window on the offscreen platform: placing
// each kind with its tool, hitting, moving and resizing them with the mouse,
// the undo of the last edit, and their way through the stored block and the
// graph data file.
#include "../common/scriptedprompts.h"

#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/objectstore.h"
#include "graphdata/draw/polylinecache.h"
#include "graphdata/file/graphfileload.h"
#include "graphwnd/graphreadout.h"
#include "graphdata/pages/optionspage.h"
#include "graphwnd/graphwnd.h"
#include "graphwnd/textattributes.h"
#include "support/languagestring.h"

#include <QApplication>
#include <QCheckBox>
#include <QFontComboBox>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

// One row for each whole number from `first` to `last`, with y = x.
CGraphData diagonal(int first, int last)
{
    CGraphData data;
    data.Create(1, 2, last - first + 1, 0);
    for (int i = first; i <= last; ++i) {
        const double row[2] = {double(i), double(i)};
        data.AppendRows(row, nullptr, 0, 2, i - first, 1);
    }
    return data;
}

// x 0..100 and y 0..100 over a 640 by 480 window.
class WndObjects : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }

    void SetUp() override
    {
        m_wnd.resize(640, 480);
        m_wnd.SetGraphDataCopy(diagonal(0, 100));
        m_wnd.m_askObjectText = [this](CGraphWnd &, QPoint) { return m_answer; };
        m_wnd.show();
        paint();
    }

    void paint() { m_wnd.grab(); }
    CGraphCurve &graph() { return *m_wnd.GetGraphData(); }
    QRect plot() { return EdgesToQRect(graph().m_plotRect); }
    CTextnLineArray &objects() { return graph().m_textObjects; }
    // The pixel of a graph value on the window's present frame.
    QPoint pixel(double x, double y)
    {
        double px, py;
        EXPECT_TRUE(ObjectPixel(m_wnd.ObjectFrame(0), x, y, px, py));
        return QPoint(int(px), int(py));
    }
    // A line from (x1, y1) to (x2, y2) among the objects, drawn.
    CDrawLines *addLine(double x1, double y1, double x2, double y2)
    {
        auto *line = new CDrawLines;
        line->m_x1 = x1, line->m_y1 = y1, line->m_x2 = x2, line->m_y2 = y2;
        objects().Add(line);
        m_wnd.Redraw(1);
        paint();
        return line;
    }
    void drag(QPoint from, QPoint to, Qt::KeyboardModifiers keys = Qt::NoModifier)
    {
        QTest::mousePress(&m_wnd, Qt::LeftButton, keys, from);
        QTest::mouseMove(&m_wnd, (from + to) / 2);
        QTest::mouseMove(&m_wnd, to);
        QTest::mouseRelease(&m_wnd, Qt::LeftButton, keys, to);
        paint();
    }

    CScriptedPrompts m_prompts;
    CGraphWnd m_wnd;
    QString m_answer = QStringLiteral("peak");
};

// ---- placing -------------------------------------------------------------------

struct PlaceCase
{
    const char *name;
    int command;
    QPoint from, to; // offsets from the plot's centre
    Qt::KeyboardModifiers keys;
    int kind;        // 0: nothing is placed
};

class PlaceObjects : public WndObjects, public ::testing::WithParamInterface<PlaceCase>
{
};

TEST_P(PlaceObjects, ADragOrClickPlacesTheObjectAtItsPixels)
{
    const PlaceCase &c = GetParam();
    m_wnd.OnCommand(c.command);
    const QPoint centre = plot().center();
    const QPoint from = centre + c.from, to = centre + c.to;
    drag(from, to, c.keys);
    if (c.kind == 0) {
        EXPECT_EQ(objects().GetSize(), 0);
        EXPECT_FALSE(m_wnd.CanUndoObjectEdit());
        return;
    }
    ASSERT_EQ(objects().GetSize(), 1);
    CTextnLine *made = objects().GetAt(0);
    ASSERT_EQ(made->ObjectKind(), c.kind);
    EXPECT_EQ(m_wnd.Selection(), std::vector<CTextnLine *>{made});
    if (auto *line = dynamic_cast<CDrawLines *>(made)) {
        // the head is where the drag ended
        EXPECT_EQ(pixel(line->m_x1, line->m_y1), to);
        EXPECT_EQ(pixel(line->m_x2, line->m_y2), from);
        EXPECT_EQ(line->m_arrowStyle, m_wnd.m_newArrowStyle);
    } else if (auto *rect = dynamic_cast<CDrawRect *>(made)) {
        const QRect r = QRect(from, to).normalized();
        const bool span = c.keys & Qt::ShiftModifier;
        EXPECT_EQ(pixel(rect->m_x1, rect->m_y1), QPoint(r.left(), span ? plot().top() : r.top()));
        EXPECT_EQ(pixel(rect->m_x2, rect->m_y2), QPoint(r.right(), span ? plot().bottom() : r.bottom()));
    } else {
        auto *text = dynamic_cast<CDrawText *>(made);
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(text->m_text, m_answer);
        EXPECT_EQ(pixel(text->m_x, text->m_y), to);
    }
    // the placing is the edit that undo takes back
    ASSERT_TRUE(m_wnd.UndoObjectEdit());
    EXPECT_EQ(objects().GetSize(), 0);
    EXPECT_TRUE(m_wnd.Selection().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Tools, PlaceObjects,
    ::testing::Values(PlaceCase{"Line", CmdToolLine, {-50, 40}, {60, -30}, Qt::NoModifier, 1},
                      PlaceCase{"LineSteep", CmdToolLine, {0, 80}, {1, -80}, Qt::NoModifier, 1},
                      PlaceCase{"LineTooShort", CmdToolLine, {0, 0}, {1, 1}, Qt::NoModifier, 0},
                      PlaceCase{"Rectangle", CmdToolRect, {40, 30}, {-70, -50}, Qt::NoModifier, 3},
                      PlaceCase{"SpanOfX", CmdToolRect, {-20, 10}, {45, -5}, Qt::ShiftModifier, 3},
                      PlaceCase{"RectangleFlat", CmdToolRect, {-20, 10}, {45, 11}, Qt::NoModifier, 0},
                      PlaceCase{"Text", CmdToolText, {30, 20}, {30, 20}, Qt::NoModifier, 2}),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(WndObjects, NoTextAnsweredPlacesNoText)
{
    m_answer.clear();
    m_wnd.OnCommand(CmdToolText);
    drag(plot().center(), plot().center());
    EXPECT_EQ(objects().GetSize(), 0);
}

// ---- hit, move, resize -------------------------------------------------------

struct EditCase
{
    const char *name;
    int kind;
    int handle;   // 10: move the whole object
    QPoint delta;
};

class EditObjects : public WndObjects, public ::testing::WithParamInterface<EditCase>
{
protected:
    // A line from (20, 30) to (60, 70), a rectangle (30, 60)-(70, 20), a
    // text at (50, 50).
    CTextnLine *add(int kind)
    {
        CTextnLine *object = nullptr;
        if (kind == 1) {
            auto *l = new CDrawLines;
            l->m_x1 = 20, l->m_y1 = 30, l->m_x2 = 60, l->m_y2 = 70;
            object = l;
        } else if (kind == 3) {
            auto *r = new CDrawRect;
            r->m_x1 = 30, r->m_y1 = 60, r->m_x2 = 70, r->m_y2 = 20;
            object = r;
        } else {
            auto *t = new CDrawText;
            t->m_x = 50, t->m_y = 50;
            t->m_text = QStringLiteral("label");
            object = t;
        }
        objects().Add(object);
        m_wnd.Redraw(1);
        paint();
        return object;
    }
    // Where the object is grabbed: a point on it, or its handle.
    QPoint grip(CTextnLine *object, int handle)
    {
        if (auto *l = dynamic_cast<CDrawLines *>(object)) {
            if (handle == 1)
                return pixel(l->m_x1, l->m_y1);
            if (handle == 2)
                return pixel(l->m_x2, l->m_y2);
            return (pixel(l->m_x1, l->m_y1) + pixel(l->m_x2, l->m_y2)) / 2;
        }
        if (auto *r = dynamic_cast<CDrawRect *>(object)) {
            const QRect box = r->m_pixels;
            switch (handle) {
            case 11: return box.topLeft();
            case 12: return box.bottomRight();
            case 21: return QPoint(box.center().x(), box.top());
            default: return box.center() + QPoint(5, 3);
            }
        }
        return object->LastRect().center();
    }
    // Pixels of the object's defining points.
    std::vector<QPoint> points(CTextnLine *object)
    {
        if (auto *l = dynamic_cast<CDrawLines *>(object))
            return {pixel(l->m_x1, l->m_y1), pixel(l->m_x2, l->m_y2)};
        if (auto *r = dynamic_cast<CDrawRect *>(object)) {
            const QPoint a = pixel(r->m_x1, r->m_y1), b = pixel(r->m_x2, r->m_y2);
            return {QPoint(std::min(a.x(), b.x()), std::min(a.y(), b.y())),
                    QPoint(std::max(a.x(), b.x()), std::max(a.y(), b.y()))};
        }
        auto *t = dynamic_cast<CDrawText *>(object);
        return {pixel(t->m_x, t->m_y)};
    }
};

TEST_P(EditObjects, TheMouseMovesWhatItGrabs)
{
    const EditCase &c = GetParam();
    CTextnLine *object = add(c.kind);
    const std::vector<QPoint> before = points(object);
    // a click selects; only then do the handles count
    int handle = 0;
    const QPoint onIt = grip(object, 10);
    ASSERT_EQ(m_wnd.ObjectAt(onIt, handle), 0);
    EXPECT_EQ(handle, 10);
    QTest::mouseClick(&m_wnd, Qt::LeftButton, Qt::NoModifier, onIt);
    paint();
    ASSERT_EQ(m_wnd.Selection().size(), 1u);
    const QPoint at = grip(object, c.handle);
    ASSERT_EQ(m_wnd.ObjectAt(at, handle), 0);
    ASSERT_EQ(handle, c.handle);
    drag(at, at + c.delta);

    // each defining point moved by the delta when the handle carries it
    const std::vector<QPoint> after = points(object);
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < after.size(); ++i) {
        QPoint expected = before[i];
        const bool carried = c.handle == 10 || (c.kind == 1 && int(i) + 1 == c.handle) ||
                             (c.kind == 3 && c.handle == 11 && i == 0) || (c.kind == 3 && c.handle == 12 && i == 1);
        if (carried)
            expected += c.delta;
        else if (c.kind == 3 && c.handle == 21 && i == 0)
            expected.ry() += c.delta.y(); // the top edge: Y only
        EXPECT_LE((after[i] - expected).manhattanLength(), 2) << "point " << i;
    }
    // undo puts it back where it was
    QTest::keyClick(&m_wnd, Qt::Key_Z, Qt::ControlModifier);
    paint();
    ASSERT_EQ(objects().GetSize(), 1);
    const std::vector<QPoint> undone = points(objects().GetAt(0));
    for (std::size_t i = 0; i < undone.size(); ++i)
        EXPECT_EQ(undone[i], before[i]);
}

INSTANTIATE_TEST_SUITE_P(Kinds, EditObjects,
                         ::testing::Values(EditCase{"MoveLine", 1, 10, {25, -15}}, EditCase{"LineEnd1", 1, 1, {-30, 12}},
                                           EditCase{"LineEnd2", 1, 2, {18, 40}}, EditCase{"MoveText", 2, 10, {-40, 22}},
                                           EditCase{"MoveRect", 3, 10, {-33, 17}},
                                           EditCase{"RectCorner", 3, 11, {-20, -25}},
                                           EditCase{"RectOtherCorner", 3, 12, {15, 35}},
                                           EditCase{"RectTopEdge", 3, 21, {9, -20}}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(WndObjects, AnEscapedDragChangesNothingAndLeavesNoUndo)
{
    CDrawLines *line = addLine(10, 10, 90, 90);
    const QPoint mid = (pixel(10, 10) + pixel(90, 90)) / 2;
    QTest::mousePress(&m_wnd, Qt::LeftButton, Qt::NoModifier, mid);
    QTest::mouseMove(&m_wnd, mid + QPoint(40, 40));
    QTest::keyClick(&m_wnd, Qt::Key_Escape);
    QTest::mouseRelease(&m_wnd, Qt::LeftButton, Qt::NoModifier, mid + QPoint(40, 40));
    EXPECT_EQ(line->m_x1, 10);
    EXPECT_EQ(line->m_y2, 90);
    EXPECT_FALSE(m_wnd.CanUndoObjectEdit());
}

TEST_F(WndObjects, DeleteIsUndoneToo)
{
    auto *rect = new CDrawRect;
    rect->m_x1 = 20, rect->m_y1 = 20, rect->m_x2 = 40, rect->m_y2 = 40;
    objects().Add(rect);
    m_wnd.Redraw(1);
    paint();
    QTest::mouseClick(&m_wnd, Qt::LeftButton, Qt::NoModifier, pixel(20, 30));
    ASSERT_EQ(m_wnd.Selection().size(), 1u);
    QTest::keyClick(&m_wnd, Qt::Key_Delete);
    EXPECT_EQ(objects().GetSize(), 0);
    m_wnd.OnCommand(CmdUndoObject);
    ASSERT_EQ(objects().GetSize(), 1);
    auto *back = dynamic_cast<CDrawRect *>(objects().GetAt(0));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->m_x2, 40);
    // only the last edit: a second undo has nothing left
    EXPECT_FALSE(m_wnd.UndoObjectEdit());
}

// Objects whose values are not numbers or lie far out are drawn clipped or
// not at all; the window paints, and hits follow what was drawn.
struct FarCase
{
    const char *name;
    int kind; // 1 line, 3 rectangle
    double x1, y1, x2, y2;
    double hitX, hitY; // a value where the object is, or NaN for none
    double missX, missY;
};

class FarObjects : public WndObjects, public ::testing::WithParamInterface<FarCase>
{
};

TEST_P(FarObjects, AreClippedOrSkipped)
{
    const FarCase &c = GetParam();
    CTextnLine *object = nullptr;
    if (c.kind == 1) {
        auto *l = new CDrawLines;
        l->m_x1 = c.x1, l->m_y1 = c.y1, l->m_x2 = c.x2, l->m_y2 = c.y2;
        object = l;
    } else {
        auto *r = new CDrawRect;
        r->m_x1 = c.x1, r->m_y1 = c.y1, r->m_x2 = c.x2, r->m_y2 = c.y2;
        object = r;
    }
    objects().Add(object);
    m_wnd.Redraw(1);
    paint();
    int handle = 0;
    if (std::isnan(c.hitX)) {
        for (int x = 0; x <= 100; x += 10)
            EXPECT_EQ(m_wnd.ObjectAt(pixel(x, 50), handle), -1);
    } else {
        EXPECT_EQ(m_wnd.ObjectAt(pixel(c.hitX, c.hitY), handle), 0);
        // what is drawn stays within a few pixels of the plot
        EXPECT_TRUE(plot().adjusted(-20, -20, 20, 20).contains(object->LastRect()));
    }
    EXPECT_EQ(m_wnd.ObjectAt(pixel(c.missX, c.missY), handle), -1);
}

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

INSTANTIATE_TEST_SUITE_P(
    Positions, FarObjects,
    ::testing::Values(FarCase{"LineNaN", 1, kNaN, 10, 50, 50, kNaN, 0, 30, 30},
                      FarCase{"LineInfinite", 1, 50, 50, INFINITY, 50, kNaN, 0, 60, 50},
                      FarCase{"LineFromFarLeft", 1, -1e308, 50, 50, 50, 25, 50, 75, 50},
                      FarCase{"LineIntoTheFar", 1, 50, 50, 1e300, 1e300, 50, 50, 20, 80},
                      FarCase{"RectNaN", 3, 10, 10, kNaN, 90, kNaN, 0, 50, 50},
                      FarCase{"RectRoundThePlot", 3, -1e300, -1e300, 1e300, 1e300, 25, 80, -20, -20},
                      FarCase{"RectFarAway", 3, 1e200, 1e200, 2e200, 2e200, kNaN, 0, 99, 99}),
    [](const auto &info) { return std::string(info.param.name); });

// ---- log axes ------------------------------------------------------------------

struct LogAxesCase
{
    const char *name;
    bool xLog, yLog;
};

// Values 1..1000 on both axes, each axis linear or log.  The read-out of
// the status line maps pixels to values on its own path: an object must lie
// on the pixel whose values bracket its own.
class LogAxesObjects : public ::testing::TestWithParam<LogAxesCase>
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }

    void SetUp() override
    {
        m_wnd.resize(640, 480);
        m_wnd.SetGraphDataCopy(diagonal(1, 1000));
        CGraphCurve &g = *m_wnd.GetGraphData();
        g.m_xLog = GetParam().xLog;
        g.Range(0)->m_logScale = GetParam().yLog;
        g.FitRanges();
        m_wnd.m_askObjectText = [](CGraphWnd &, QPoint) { return QStringLiteral("here"); };
        m_wnd.show();
        m_wnd.Redraw(1);
        m_wnd.grab();
    }

    // True when the value (x, y) belongs to pixel `p` as the read-out sees it.
    ::testing::AssertionResult onPixel(double x, double y, QPoint p)
    {
        CGraphPosition at, next;
        const CGraphCurve &g = *m_wnd.GetGraphData();
        if (!GraphPositionAt(g, p, at) || !GraphPositionAt(g, p + QPoint(1, -1), next) || at.y.empty())
            return ::testing::AssertionFailure() << "no read-out";
        const double slack = 1e-9;
        if (x < at.x * (1 - slack) || x > next.x * (1 + slack))
            return ::testing::AssertionFailure() << "x " << x << " not in [" << at.x << ", " << next.x << "]";
        if (y < at.y[0] * (1 - slack) || y > next.y[0] * (1 + slack))
            return ::testing::AssertionFailure() << "y " << y << " not in [" << at.y[0] << ", " << next.y[0] << "]";
        return ::testing::AssertionSuccess();
    }

    CScriptedPrompts m_prompts;
    CGraphWnd m_wnd;
};

TEST_P(LogAxesObjects, AreDrawnHitAndMovedWhereTheirValuesAre)
{
    CTextnLineArray &objects = m_wnd.GetGraphData()->m_textObjects;
    auto *line = new CDrawLines;
    line->m_x1 = 3, line->m_y1 = 5, line->m_x2 = 400, line->m_y2 = 700;
    objects.Add(line);
    m_wnd.Redraw(1);
    m_wnd.grab();
    ASSERT_TRUE(line->m_drawn);
    EXPECT_TRUE(onPixel(3, 5, line->m_end1));
    EXPECT_TRUE(onPixel(400, 700, line->m_end2));

    // a click on the middle of the drawn line selects it; a drag moves it
    const QPoint middle = (line->m_end1 + line->m_end2) / 2;
    int handle = 0;
    ASSERT_EQ(m_wnd.ObjectAt(middle, handle), 0);
    QTest::mouseClick(&m_wnd, Qt::LeftButton, Qt::NoModifier, middle);
    ASSERT_EQ(m_wnd.Selection().size(), 1u);
    const QPoint end1 = line->m_end1, delta(37, -21);
    QTest::mousePress(&m_wnd, Qt::LeftButton, Qt::NoModifier, middle);
    QTest::mouseMove(&m_wnd, middle + delta / 2);
    QTest::mouseMove(&m_wnd, middle + delta);
    QTest::mouseRelease(&m_wnd, Qt::LeftButton, Qt::NoModifier, middle + delta);
    m_wnd.grab();
    EXPECT_LE((line->m_end1 - (end1 + delta)).manhattanLength(), 1);
    EXPECT_TRUE(onPixel(line->m_x1, line->m_y1, line->m_end1));

    // a text placed with its tool keeps the values under the click
    const QPoint click = EdgesToQRect(m_wnd.GetGraphData()->m_plotRect).center() + QPoint(-60, 40);
    m_wnd.OnCommand(CmdToolText);
    QTest::mouseClick(&m_wnd, Qt::LeftButton, Qt::NoModifier, click);
    m_wnd.grab();
    ASSERT_EQ(objects.GetSize(), 2);
    auto *text = dynamic_cast<CDrawText *>(objects.GetAt(1));
    ASSERT_NE(text, nullptr);
    EXPECT_TRUE(onPixel(text->m_x, text->m_y, click));
    EXPECT_TRUE(text->LastRect().contains(click));
}

INSTANTIATE_TEST_SUITE_P(Axes, LogAxesObjects,
                         ::testing::Values(LogAxesCase{"Linear", false, false}, LogAxesCase{"LogX", true, false},
                                           LogAxesCase{"LogY", false, true}, LogAxesCase{"LogXY", true, true}),
                         [](const auto &info) { return std::string(info.param.name); });

// ---- text attributes -------------------------------------------------------------

struct AttributesCase
{
    const char *name;
    bool byMenu;        // Properties in the pop-up menu, else a double click
    QString text;       // typed into the fields
    int size;
    QString color;
    bool bold;
    bool pressOk;       // else Cancel
    bool changed;       // the object takes the fields
    bool refused;       // OK keeps the dialog open with a reason
};

void PrintTo(const AttributesCase &c, std::ostream *out)
{
    *out << c.name;
}

class TextAttributes : public WndObjects, public ::testing::WithParamInterface<AttributesCase>
{
protected:
    // Red pixels of the window inside `rect`.
    int redPixels(const QRect &rect)
    {
        const QImage image = m_wnd.grab().toImage();
        int n = 0;
        for (int y = rect.top(); y <= rect.bottom(); ++y)
            for (int x = rect.left(); x <= rect.right(); ++x) {
                const QColor c = image.pixelColor(x, y);
                n += c.red() > 180 && c.green() < 90 && c.blue() < 90;
            }
        return n;
    }
};

TEST_P(TextAttributes, TheDialogChangesTheTextOrLeavesIt)
{
    const AttributesCase &c = GetParam();
    auto *text = new CDrawText;
    text->m_x = 50, text->m_y = 50;
    text->m_text = QStringLiteral("label");
    objects().Add(text);
    m_wnd.Redraw(1);
    paint();
    const CDrawText before = *text;
    const QRect drawnBefore = text->LastRect();
    ASSERT_EQ(redPixels(drawnBefore), 0);

    int runs = 0;
    bool refused = false;
    QString face;
    m_wnd.m_runTextAttributes = [&](CTextAttributes &dialog) {
        ++runs;
        EXPECT_EQ(dialog.TextEdit()->text(), QStringLiteral("label"));
        EXPECT_EQ(dialog.SizeBox()->value(), before.m_fontHeight);
        dialog.TextEdit()->clear();
        QTest::keyClicks(dialog.TextEdit(), c.text);
        dialog.SizeBox()->setValue(c.size);
        dialog.BoldBox()->setChecked(c.bold);
        dialog.ColorField()->Edit()->clear();
        QTest::keyClicks(dialog.ColorField()->Edit(), c.color);
        // another face than the one shown
        for (const QString &family : QFontDatabase::families())
            if (family != dialog.FaceBox()->currentText()) {
                face = family;
                break;
            }
        dialog.FaceBox()->setCurrentFont(QFont(face));
        if (c.pressOk) {
            dialog.accept();
            refused = dialog.result() != QDialog::Accepted && dialog.ErrorLabel()->isVisibleTo(&dialog);
            if (refused)
                dialog.reject();
        } else {
            dialog.reject();
        }
        return dialog.result();
    };
    const QPoint on = drawnBefore.center();
    if (c.byMenu) {
        m_wnd.OnContextCommand(CmdCurveProperties, on);
    } else {
        QTest::mouseDClick(&m_wnd, Qt::LeftButton, Qt::NoModifier, on);
    }
    paint();
    ASSERT_EQ(runs, 1);
    EXPECT_EQ(refused, c.refused);
    ASSERT_EQ(objects().GetSize(), 1);
    if (!c.changed) {
        EXPECT_EQ(text->m_text, before.m_text);
        EXPECT_EQ(text->m_fontHeight, before.m_fontHeight);
        EXPECT_EQ(text->m_color, before.m_color);
        EXPECT_EQ(text->m_face, before.m_face);
        EXPECT_FALSE(m_wnd.CanUndoObjectEdit());
        return;
    }
    EXPECT_EQ(text->m_text, c.text);
    EXPECT_EQ(text->m_fontHeight, c.size);
    EXPECT_EQ(text->m_fontWeight >= 600, c.bold);
    EXPECT_EQ(text->m_face, face);
    EXPECT_EQ(text->m_color, 0x0000FFu); // red, as 0x00BBGGRR
    // redrawn: in red, and taller for the larger font
    EXPECT_GT(redPixels(text->LastRect()), 10);
    EXPECT_GT(text->LastRect().height(), drawnBefore.height());
    // one undo takes the whole change back
    ASSERT_TRUE(m_wnd.UndoObjectEdit());
    paint();
    auto *back = dynamic_cast<CDrawText *>(objects().GetAt(0));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->m_text, before.m_text);
    EXPECT_EQ(back->m_fontHeight, before.m_fontHeight);
    EXPECT_EQ(back->m_color, before.m_color);
    EXPECT_EQ(redPixels(back->LastRect()), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Edits, TextAttributes,
    ::testing::Values(
        AttributesCase{"DoubleClickOk", false, QStringLiteral("Peak 3 dB"), 20, QStringLiteral("#FF0000"), true, true,
                       true, false},
        AttributesCase{"MenuOk", true, QStringLiteral("fc"), 24, QStringLiteral("red"), false, true, true, false},
        AttributesCase{"Cancel", false, QStringLiteral("other"), 20, QStringLiteral("#FF0000"), true, false, false,
                       false},
        AttributesCase{"NoColour", true, QStringLiteral("other"), 20, QStringLiteral("#12"), false, true, false, true},
        AttributesCase{"NoText", false, QString(), 20, QStringLiteral("#FF0000"), false, true, false, true}),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(WndObjects, OnlyTextsOpenTheAttributes)
{
    addLine(10, 10, 90, 90);
    int runs = 0;
    m_wnd.m_runTextAttributes = [&](CTextAttributes &) { return ++runs, int(QDialog::Rejected); };
    QTest::mouseDClick(&m_wnd, Qt::LeftButton, Qt::NoModifier, pixel(50, 50));
    EXPECT_EQ(runs, 0);
    EXPECT_EQ(objects().GetSize(), 1);
}

// ---- stored form ---------------------------------------------------------------

CTextnLineArray *sampleObjects()
{
    auto *list = new CTextnLineArray;
    auto *line = new CDrawLines;
    line->m_x1 = 1.5, line->m_y1 = -2, line->m_x2 = 1e-9, line->m_y2 = 7e12;
    line->m_pen = {2, 3, 0, 0x00FF8040};
    line->m_arrowStyle = CDrawLines::ArrowOpen;
    line->m_yAxisIndex = 2;
    line->m_flags = CTextnLine::FlagLocked;
    list->Add(line);
    auto *rect = new CDrawRect;
    rect->m_x1 = -5, rect->m_y1 = 5, rect->m_x2 = 50, rect->m_y2 = -50;
    rect->m_pen = {1, 1, 0, 0x123456};
    rect->m_yAxisIndex = 1;
    list->Add(rect);
    auto *text = new CDrawText;
    text->m_x = 3, text->m_y = 4;
    text->m_text = QStringLiteral("Ω 10 kHz \u2192 limit");
    text->m_alignment = 3;
    text->m_vertical = 1;
    text->m_color = 0xFF;
    text->m_face = QStringLiteral("DejaVu Sans");
    text->m_fontHeight = 14;
    text->m_fontWeight = 700;
    text->m_italic = 1;
    text->m_yAxisIndex = 1;
    list->Add(text);
    return list;
}

// Every field that decides where and how an object is drawn.
QString describe(const CTextnLineArray &list)
{
    QString s;
    for (const CTextnLine *o : list) {
        s += QStringLiteral("[%1 f%2 a%3 ").arg(o->ObjectKind()).arg(o->m_flags).arg(o->m_yAxisIndex);
        if (auto *l = dynamic_cast<const CDrawLines *>(o))
            s += QStringLiteral("%1 %2 %3 %4 p%5,%6,%7 s%8")
                     .arg(l->m_x1, 0, 'g', 17).arg(l->m_y1, 0, 'g', 17).arg(l->m_x2, 0, 'g', 17).arg(l->m_y2, 0, 'g', 17)
                     .arg(l->m_pen.style).arg(l->m_pen.widthX).arg(l->m_pen.color).arg(l->m_arrowStyle);
        if (auto *r = dynamic_cast<const CDrawRect *>(o))
            s += QStringLiteral("%1 %2 %3 %4 p%5,%6")
                     .arg(r->m_x1).arg(r->m_y1).arg(r->m_x2).arg(r->m_y2).arg(r->m_pen.style).arg(r->m_pen.color);
        if (auto *t = dynamic_cast<const CDrawText *>(o))
            s += QStringLiteral("%1 %2 %3 %4 %5 %6 %7 %8 %9 %10")
                     .arg(t->m_x).arg(t->m_y).arg(t->m_text).arg(t->m_alignment).arg(t->m_vertical).arg(t->m_color)
                     .arg(t->m_face).arg(t->m_fontHeight).arg(t->m_fontWeight).arg(t->m_italic);
        s += u']';
    }
    return s;
}

TEST(ObjectStore, AllKindsComeBackAsTheyWere)
{
    std::unique_ptr<CTextnLineArray> list(sampleObjects());
    const QByteArray block = StoreObjects(*list);
    EXPECT_TRUE(IsObjectsBlock(block));
    CTextnLineArray back;
    QString message;
    ASSERT_TRUE(RestoreObjects(block, back, message)) << qPrintable(message);
    EXPECT_EQ(describe(back), describe(*list));
}

// Files older than format 11.1 keep no axis index: it reads as 0.
TEST(ObjectStore, OlderFormsReadTheAxisAsTheFirst)
{
    std::unique_ptr<CTextnLineArray> list(sampleObjects());
    const struct
    {
        std::uint16_t major, minor;
        bool axisKept;
    } forms[] = {{10, 0, false}, {11, 0, false}, {11, 1, true}, {12, 0, true}};
    for (const auto &form : forms) {
        CTextnLineArray back;
        QString message;
        ASSERT_TRUE(RestoreObjects(StoreObjects(*list, form.major, form.minor), back, message));
        ASSERT_EQ(back.GetSize(), 3);
        EXPECT_EQ(back.GetAt(0)->m_yAxisIndex, form.axisKept ? 2 : 0) << form.major << "." << form.minor;
        EXPECT_EQ(back.GetAt(2)->m_yAxisIndex, form.axisKept ? 1 : 0);
    }
}

// A block cut anywhere, or with a broken count or kind, is refused and the
// objects in place stay.
TEST(ObjectStore, DamagedBlocksLeaveTheObjectsAlone)
{
    std::unique_ptr<CTextnLineArray> list(sampleObjects());
    const QByteArray block = StoreObjects(*list);
    CTextnLineArray kept;
    kept.Add(new CDrawRect);
    QString message;
    for (int length = 0; length < block.size(); ++length) {
        EXPECT_FALSE(RestoreObjects(block.left(length), kept, message)) << length;
        EXPECT_EQ(kept.GetSize(), 1);
    }
    EXPECT_FALSE(message.isEmpty());
    QByteArray badCount = block;
    badCount[12] = char(0xFF);
    badCount[15] = char(0x7F);
    EXPECT_FALSE(RestoreObjects(badCount, kept, message));
    QByteArray badKind = block;
    badKind[16] = 9;
    EXPECT_FALSE(RestoreObjects(badKind, kept, message));
    EXPECT_EQ(kept.GetSize(), 1);
}

// The window's Save writes the objects with the columns; a window given the
// data read back from the file shows them again.
TEST_F(WndObjects, TheGraphFileKeepsTheObjects)
{
    std::unique_ptr<CTextnLineArray> list(sampleObjects());
    while (!list->IsEmpty())
        objects().Add(list->Detach(0));
    const QString expected = describe(objects());
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("marked.mrd"));
    ASSERT_TRUE(m_wnd.SaveDataFile(path));
    CGraphFileContent content;
    QString message;
    ASSERT_TRUE(ReadGraphFile(path, content, message)) << qPrintable(message);
    const QByteArray block = FindObjectsBlock(content.attachments1);
    ASSERT_FALSE(block.isEmpty());
    content.data->m_fileBlocks[0] = block;
    CGraphWnd other;
    other.SetGraphDataCopy(content.data);
    EXPECT_EQ(describe(other.GetGraphData()->m_textObjects), expected);
}

} // namespace

namespace {

// The animation slider: a press on its track and a drag along it move the
// current row; the rows after it are not drawn.
TEST_F(WndObjects, TheSliderMovesTheAnimationCursor)
{
    graph().m_displayFlags |= CGraphCurve::DisplayAnimationCursor | CGraphCurve::DisplaySlider |
                              CGraphCurve::DisplaySliderAtEnd;
    m_wnd.Redraw(1);
    paint();
    const QRect track = EdgesToQRect(graph().m_sliderRect);
    ASSERT_GT(track.width(), 10);
    const int rows = graph().m_data.RowCount();
    QTest::mousePress(&m_wnd, Qt::LeftButton, Qt::NoModifier, QPoint(track.left(), track.center().y()));
    EXPECT_EQ(graph().m_animationRow, 0);
    EXPECT_FALSE(graph().m_displayFlags & CGraphCurve::DisplaySliderAtEnd);
    EXPECT_EQ(m_wnd.ActiveTrack(), nullptr); // no select box under the slider
    QMouseEvent move(QEvent::MouseMove, QPointF(track.center().x(), track.center().y()), QPointF(), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&m_wnd, &move);
    EXPECT_NEAR(graph().m_animationRow, (rows - 1) / 2, 1);
    QTest::mouseRelease(&m_wnd, Qt::LeftButton, Qt::NoModifier, track.center());
    paint();
    const auto *cache = static_cast<const CPolylinePixels *>(graph().Curve(0)->LinePixels());
    ASSERT_NE(cache, nullptr);
    EXPECT_EQ(cache->m_lastRow, graph().m_animationRow);
    // once let go, moves do nothing
    const int row = graph().m_animationRow;
    QTest::mouseMove(&m_wnd, QPoint(track.right(), track.center().y()));
    EXPECT_EQ(graph().m_animationRow, row);
}

} // namespace
