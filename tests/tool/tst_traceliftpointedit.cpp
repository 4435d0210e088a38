// The edit keys of a trace: each key rewrites the point text at once (and the
// traced points the canvas draws with it), and undo or redo brings back the
// text exactly as it was.

#include "traceliftfixture.h"

#include "support/myarrays.h"
#include "tool/capture/pointtext.h"

#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QRegularExpression>
#include <cmath>
#include <functional>

namespace {

double saturation(double x) { return 100.0 * (1 - std::exp(-x / 2.5)); }

// The saturating curve drawn through twelve X, 0.8 apart from 0.2 on.
CGraphPicture saturationPicture()
{
    QList<double> xs;
    for (double x = 0.2; x < 10; x += 0.8)
        xs << x;
    return MakeGraphPicture(false, saturation, xs);
}

QList<QPointF> pixelsOf(const QString &text, const CGraphPicture &g)
{
    int count = 0;
    CMyDoubleArray pairs;
    ParsePointText(text, count, pairs, true);
    QList<QPointF> out;
    const double sx = (g.upperRight.x() - g.lowerLeft.x()) / (g.xHigh - g.xLow);
    const double sy = (g.upperRight.y() - g.lowerLeft.y()) / (g.yHigh - g.yLow);
    for (int i = 0; i < count; ++i)
        out << QPointF(g.lowerLeft.x() + (pairs[2 * i] - g.xLow) * sx, g.lowerLeft.y() + (pairs[2 * i + 1] - g.yLow) * sy);
    return out;
}

struct KeyCase {
    const char *name;
    Qt::Key key;
    Qt::KeyboardModifiers mods;
    int mouseAt;       // the clicked point the mouse rests on, or -1
    Qt::KeyboardModifiers inverseMods; // Ctrl (undo) or Ctrl+Shift (redo) on Z
    // What becomes of the three clicked points: the one removed (or -1), and
    // the move of the last one in pixels.
    int removed;
    double dx, dy;
};

const KeyCase keyCases[] = {
    {"Ctrl+Z undoes the last click", Qt::Key_Z, Qt::ControlModifier, -1, Qt::ControlModifier | Qt::ShiftModifier, 2, 0, 0},
    {"Left", Qt::Key_Left, Qt::NoModifier, -1, Qt::ControlModifier, -1, -0.125, 0},
    {"Right", Qt::Key_Right, Qt::NoModifier, -1, Qt::ControlModifier, -1, 0.125, 0},
    {"Up", Qt::Key_Up, Qt::NoModifier, -1, Qt::ControlModifier, -1, 0, -0.125},
    {"Down", Qt::Key_Down, Qt::NoModifier, -1, Qt::ControlModifier, -1, 0, 0.125},
    {"Shift+Left", Qt::Key_Left, Qt::ShiftModifier, -1, Qt::ControlModifier, -1, -1, 0},
    {"Shift+Down", Qt::Key_Down, Qt::ShiftModifier, -1, Qt::ControlModifier, -1, 0, 1},
    {"Delete near the first", Qt::Key_Delete, Qt::NoModifier, 0, Qt::ControlModifier, 0, 0, 0},
    {"Delete near the middle", Qt::Key_Delete, Qt::NoModifier, 1, Qt::ControlModifier, 1, 0, 0},
};

// The dialog over the saturating curve.
class PointEditTest : public TraceliftTest
{
protected:
    // Three points clicked on the curve: `clicked` is their text, `base`
    // their pixels.
    void traceThree()
    {
        reach(ModeTrace, g);
        ASSERT_EQ(mode(), ModeTrace);
        for (int i : {2, 5, 8})
            click(g.vertices[i]);
        clicked = text(IdPoints);
        base = pixelsOf(clicked, g);
        ASSERT_EQ(base.size(), 3);
    }

    // Curve after curve of a family from the trace on, each clicked at its
    // own vertices of the curve, `drop` pixels lower than the one before, and
    // finished with Next; onClicked(curve) runs before the Next.
    void traceFamily(const QList<QList<int>> &vertices, int drop, const std::function<void(int)> &onClicked = {})
    {
        ASSERT_EQ(mode(), ModeTrace);
        for (int curve = 0; curve < vertices.size(); ++curve) {
            if (curve > 0) {
                ASSERT_TRUE(dialog->OnTraceAnotherCurve()) << curve;
            }
            for (int i : vertices[curve])
                click(g.vertices[i] + QPoint(0, drop * curve));
            if (onClicked)
                onClicked(curve);
            next();
            ASSERT_EQ(mode(), ModePlotted) << curve;
        }
    }

    const CGraphPicture g = saturationPicture();
    QString clicked;
    QList<QPointF> base;
};

} // namespace

TEST_F(PointEditTest, EditKeysRewriteThePointTextAndUndoBringsItBack)
{
    traceThree();
    ASSERT_FALSE(HasFatalFailure());

    for (const KeyCase &c : keyCases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(text(IdPoints), clicked);
        if (c.mouseAt >= 0)
            QTest::mouseMove(canvas(), (base[c.mouseAt] + QPointF(2, -1)).toPoint());
        QTest::keyClick(canvas(), c.key, c.mods);

        QList<QPointF> expected = base;
        expected.last() += QPointF(c.dx, c.dy);
        if (c.removed >= 0)
            expected.removeAt(c.removed);
        const QString edited = text(IdPoints);
        const QList<QPointF> got = pixelsOf(edited, g);
        ASSERT_EQ(got.size(), expected.size()) << qPrintable(edited);
        for (int i = 0; i < got.size(); ++i) {
            // Five digits of the values leave well under a hundredth of a pixel.
            EXPECT_NEAR(got[i].x(), expected[i].x(), 0.01) << i;
            EXPECT_NEAR(got[i].y(), expected[i].y(), 0.01) << i;
        }
        // The canvas draws what the text holds.
        const TracedPoints &drawn = canvas()->m_capture.m_points;
        ASSERT_EQ(drawn.count, got.size());
        EXPECT_EQ(pixelsOf(FormatPointText(drawn.pairs.GetData(), drawn.count), g).size(), got.size());

        QTest::keyClick(canvas(), Qt::Key_Z, c.inverseMods);
        EXPECT_EQ(text(IdPoints), clicked);
        const Qt::KeyboardModifiers again =
            c.inverseMods == Qt::ControlModifier ? Qt::ControlModifier | Qt::ShiftModifier : Qt::ControlModifier;
        QTest::keyClick(canvas(), Qt::Key_Z, again);
        EXPECT_EQ(text(IdPoints), edited);
        QTest::keyClick(canvas(), Qt::Key_Z, c.inverseMods);
        EXPECT_EQ(text(IdPoints), clicked);
    }

    // A text typed by hand starts a new history: undo has nothing to undo.
    type(IdPoints, QStringLiteral("(1,2)"));
    canvas()->setFocus();
    QTest::keyClick(canvas(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(text(IdPoints), QStringLiteral("(1,2)"));

    // Once the curve is finished the keys edit nothing.
    type(IdPoints, clicked);
    next();
    ASSERT_EQ(mode(), ModePlotted);
    canvas()->setFocus();
    QTest::keyClick(canvas(), Qt::Key_Left);
    QTest::keyClick(canvas(), Qt::Key_Delete);
    EXPECT_EQ(text(IdPoints), clicked);
}

TEST_F(TraceliftTest, CopiedPointsPasteAsTwoColumns)
{
    struct Case {
        const char *points;
        bool byKey; // Ctrl+Shift+C in the points field, else the button
        QList<QPair<double, double>> rows;
    };
    const Case cases[] = {
        {"(1,2)(3.25,-4e-3)", true, {{1, 2}, {3.25, -0.004}}},
        {"(1k,5) (2.5m,7)", false, {{1000, 5}, {0.0025, 7}}},
        {"(0.00012345,123456789)", true, {{0.00012345, 123456789}}},
        {"", false, {}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.points);
        QGuiApplication::clipboard()->setText(QStringLiteral("old"));
        type(IdPoints, QString::fromLatin1(c.points));
        if (c.byKey)
            QTest::keyClick(edit(IdPoints), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        else
            control<QPushButton>(CTraceliftToolDlg::IdCopyPoints)->click();
        const QString copied = QGuiApplication::clipboard()->text();
        QStringList lines = copied.split(u'\n');
        ASSERT_EQ(lines.takeLast(), QString()) << qPrintable(copied); // every line ends
        ASSERT_EQ(lines.size(), c.rows.size()) << qPrintable(copied);
        for (int i = 0; i < lines.size(); ++i) {
            const QStringList cells = lines[i].split(u'\t');
            ASSERT_EQ(cells.size(), 2) << qPrintable(lines[i]);
            EXPECT_DOUBLE_EQ(cells[0].toDouble(), c.rows[i].first) << i;
            EXPECT_DOUBLE_EQ(cells[1].toDouble(), c.rows[i].second) << i;
        }
    }
}

TEST_F(PointEditTest, TraceAnotherCurveKeepsPictureCornersAndValues)
{
    QPushButton *another = control<QPushButton>(CTraceliftToolDlg::IdTraceAnother);
    EXPECT_FALSE(dialog->OnTraceAnotherCurve()); // nothing traced yet
    reach(ModeTrace, g);
    EXPECT_FALSE(another->isEnabled());
    EXPECT_FALSE(dialog->OnTraceAnotherCurve()); // the curve is not finished
    for (int i : {2, 5, 8})
        click(g.vertices[i]);
    next();
    ASSERT_EQ(mode(), ModePlotted);
    const CaptureCalibration before = canvas()->m_capture.m_calibration;
    const QString xAtSecond = text(IdXAtSecond), yAtSecond = text(IdYAtSecond);
    const int records = dialog->Records().Size();
    ASSERT_TRUE(another->isEnabled());

    another->click();
    EXPECT_EQ(mode(), ModeTrace);
    EXPECT_TRUE(canvas()->isVisible());
    EXPECT_TRUE(text(IdPoints).isEmpty());
    EXPECT_EQ(text(IdXAtSecond), xAtSecond);
    EXPECT_EQ(text(IdYAtSecond), yAtSecond);
    const CaptureCalibration &now = canvas()->m_capture.m_calibration;
    EXPECT_EQ(QRectF(QPointF(now.firstCornerX, now.firstCornerY), QPointF(now.secondCornerX, now.secondCornerY)),
              QRectF(QPointF(before.firstCornerX, before.firstCornerY), QPointF(before.secondCornerX, before.secondCornerY)));
    EXPECT_TRUE(now.pictureLoaded && now.pictureShown);
    EXPECT_EQ(dialog->Records().Size(), records + 1);
    EXPECT_EQ(dialog->Records().CheckInvariant(), QString());

    // The second curve is traced on the same calibration: its points map as
    // the first curve's did.
    for (int i : {3, 9})
        click(g.vertices[i]);
    const TracedPoints &p = canvas()->m_capture.m_points;
    ASSERT_EQ(p.count, 2);
    EXPECT_NEAR(p.pairs[0], g.XAt(g.vertices[3].x()), 0.01 * (g.xHigh - g.xLow));
    EXPECT_NEAR(p.pairs[3], g.YAt(g.vertices[9].y()), 0.01 * (g.yHigh - g.yLow));
    next();
    EXPECT_EQ(mode(), ModePlotted);
    EXPECT_EQ(dialog->Records().CheckInvariant(), QString());
    int withPoints = 0;
    for (int i = 0; i + 1 < dialog->Records().Size(); ++i)
        withPoints += dialog->Records().At(i)->GetPointCount() > 0;
    EXPECT_EQ(withPoints, 2);
}

TEST_F(PointEditTest, AFamilyTracedCurveByCurveSavesAndLoadsBack)
{
    // Three curves over the same X range: the drawn one and two below it.
    QStringList traced;
    reach(ModeTrace, g);
    traceFamily({{2, 5, 8}, {2, 5, 8}, {2, 5, 8}}, 25, [&](int) { traced << text(IdPoints); });
    ASSERT_FALSE(HasFatalFailure());

    QStringList paths;
    for (int i = 0; i < 3; ++i)
        paths << files.filePath(QStringLiteral("curve%1.txt").arg(i));
    prompts.fileNames = paths;
    control<QPushButton>(CTraceliftToolDlg::IdOk)->click();
    ASSERT_TRUE(prompts.messages.isEmpty()) << qPrintable(prompts.MessageTexts().join(u'|'));
    EXPECT_EQ(prompts.filePrompts.size(), 3);

    // Each file holds one of the curves; read back, each gives its points.
    QStringList loaded;
    for (const QString &path : paths) {
        dialog = std::make_unique<CTraceliftToolDlg>();
        dialog->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog.get()));
        prompts.fileNames = {path};
        control<QPushButton>(IdLoad)->click();
        ASSERT_TRUE(prompts.messages.isEmpty()) << qPrintable(prompts.MessageTexts().join(u'|'));
        loaded << FormatPointText(canvas()->m_capture.m_points.pairs.GetData(), canvas()->m_capture.m_points.count);
    }
    for (const QString &t : traced) {
        int count = 0;
        CMyDoubleArray pairs;
        ParsePointText(t, count, pairs, true);
        EXPECT_TRUE(loaded.contains(FormatPointText(pairs.GetData(), count))) << qPrintable(t);
    }
}

TEST_F(PointEditTest, APointDraggedWithTheMouseMovesByTheDragAndUndoesAsOneStep)
{
    traceThree();
    ASSERT_FALSE(HasFatalFailure());

    struct Case {
        const char *name;
        int at;          // the point pressed near, or -1 for a spot far from all
        QPoint grab;     // where, from that point
        QList<QPoint> moves; // the path of the mouse from the press
        int moved;       // the point that moves, or -1 when a point is added
    };
    const Case cases[] = {
        {"on the point", 1, {0, 0}, {{5, 0}, {10, -20}}, 1},
        {"beside the first", 0, {3, -2}, {{-4, 4}, {-8, 12}}, 0},
        {"the last, back and forth", 2, {-2, 2}, {{30, 0}, {-6, 9}}, 2},
        {"a wobble is a click", 1, {1, 1}, {{1, 0}, {2, 0}}, -1},
        {"far from any point", -1, {0, 0}, {{10, 10}}, -1},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(text(IdPoints), clicked);
        const QPoint from = c.at >= 0 ? base[c.at].toPoint() + c.grab : QPoint(300, 60);
        QTest::mousePress(canvas(), Qt::LeftButton, {}, from);
        for (const QPoint &m : c.moves)
            QTest::mouseMove(canvas(), from + m);
        QTest::mouseRelease(canvas(), Qt::LeftButton, {}, from + c.moves.last());

        const QList<QPointF> got = pixelsOf(text(IdPoints), g);
        QList<QPointF> expected = base;
        if (c.moved >= 0)
            expected[c.moved] += QPointF(c.moves.last());
        else
            expected << QPointF(from);
        ASSERT_EQ(got.size(), expected.size()) << qPrintable(text(IdPoints));
        for (int i = 0; i < got.size(); ++i) {
            // A moved point keeps its place under the mouse to five digits;
            // an added one lies within the pixel clicked.
            const double tolerance = c.moved >= 0 || i < base.size() ? 0.01 : 1.0;
            EXPECT_NEAR(got[i].x(), expected[i].x(), tolerance) << i;
            EXPECT_NEAR(got[i].y(), expected[i].y(), tolerance) << i;
        }
        EXPECT_EQ(canvas()->m_capture.m_points.count, got.size());
        // However many moves, the drag is one step of undo.
        QTest::keyClick(canvas(), Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(text(IdPoints), clicked);
    }
}

TEST_F(PointEditTest, AFamilySavedAsOneCsvReadsBackAtSharedX)
{
    const QString path = files.filePath(QStringLiteral("family.csv"));
    prompts.fileNames = {path};
    EXPECT_FALSE(dialog->OnSaveFamilyCsv()); // nothing finished yet
    EXPECT_EQ(prompts.messages.size(), 1);
    prompts.messages.clear();

    reach(ModeTrace, g);
    type(IdXName, QStringLiteral("VCE"));
    type(IdYName, QStringLiteral("IC"));
    // The second curve is clicked at other X values than the first.
    QList<QList<QPointF>> values;
    traceFamily({{2, 5, 8}, {3, 7}}, 30, [&](int) {
        QList<QPointF> v;
        const TracedPoints &p = canvas()->m_capture.m_points;
        for (int k = 0; k < p.count; ++k)
            v << QPointF(p.pairs[2 * k], p.pairs[2 * k + 1]);
        values << v;
    });
    ASSERT_FALSE(HasFatalFailure());
    prompts.fileNames = {path};
    ASSERT_TRUE(dialog->OnSaveFamilyCsv()) << qPrintable(prompts.MessageTexts().join(u'|'));

    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QStringList lines = QString::fromUtf8(file.readAll()).split(QStringLiteral("\r\n"));
    ASSERT_EQ(lines.takeLast(), QString());
    ASSERT_EQ(lines.takeFirst(), QStringLiteral("VCE,IC 1,IC 2"));
    ASSERT_EQ(lines.size(), 5); // the three X of the first curve and the two of the second
    // Every row against the curves read as straight lines between their points.
    auto at = [](const QList<QPointF> &c, double x) {
        for (int k = 1; k < c.size(); ++k)
            if (x >= c[k - 1].x() && x <= c[k].x())
                return c[k - 1].y() + (x - c[k - 1].x()) * (c[k].y() - c[k - 1].y()) / (c[k].x() - c[k - 1].x());
        return double(NAN);
    };
    double previous = -INFINITY;
    for (const QString &line : lines) {
        const QStringList cells = line.split(u',');
        ASSERT_EQ(cells.size(), 3) << qPrintable(line);
        const double x = cells[0].toDouble();
        EXPECT_GT(x, previous);
        previous = x;
        for (int c = 0; c < 2; ++c) {
            const double want = at(values[c], x);
            if (std::isnan(want))
                EXPECT_TRUE(cells[c + 1].isEmpty()) << qPrintable(line);
            else
                EXPECT_NEAR(cells[c + 1].toDouble(), want, 1e-9 * (1 + std::fabs(want))) << qPrintable(line);
        }
    }
}

TEST_F(TraceliftTest, ShiftClickProposesATraceThatAcceptBecomesThePointText)
{
    const CCurveFamilyPicture d = MakeCurveFamilyPicture(QSize(900, 640), 70);
    canvas()->parentWidget()->window()->resize(1300, 1000);
    next();
    QGuiApplication::clipboard()->setImage(d.image);
    next();
    ASSERT_EQ(mode(), ModePicturePlaced);
    ASSERT_TRUE(canvas()->rect().contains(d.area)) << canvas()->width() << "x" << canvas()->height();
    next();
    click(d.area.bottomLeft());
    click(d.area.topRight());
    type(IdXAtFirst, QStringLiteral("0"));
    type(IdXAtSecond, QStringLiteral("20"));
    type(IdYAtFirst, QStringLiteral("0"));
    type(IdYAtSecond, QStringLiteral("4"));
    next();
    ASSERT_EQ(mode(), ModeTrace);
    click(d.curves[0].seed.toPoint() + QPoint(0, 40)); // a clicked point, replaced on Accept
    const QString before = text(IdPoints);

    // A spot with no curve tells so and proposes nothing.
    EXPECT_FALSE(dialog->PickCurveAt(d.area.left() + d.area.width() * 45.5 / 50, d.area.top() + d.area.height() * 1.5 / 40));
    EXPECT_EQ(prompts.messages.size(), 1);
    EXPECT_FALSE(dialog->AcceptProposal());

    const struct {
        const char *name;
        int curve;
        int kind;
        const char *spacing;
        int count; // points proposed, or -1: about one every 25 pixels
    } cases[] = {
        {"every 25 pixels", 0, 0, "25", -1},
        {"at given X", 1, 2, "5; 10 15", 3},
        {"dashed, every 25 pixels", 2, 0, "25", -1},
    };
    const CPixelMapping map = canvas()->m_capture.PixelMapping();
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const CCurveFamilyPicture::Curve &curve = d.curves[c.curve];
        dialog->SetTraceSpacing(c.kind, QString::fromLatin1(c.spacing));
        QTest::mouseClick(canvas(), Qt::LeftButton, Qt::ShiftModifier, curve.seed.toPoint());
        const QList<QPointF> proposed = canvas()->Proposal();
        const int expected = c.count >= 0 ? c.count : int(std::ceil((curve.inkEnd - curve.inkStart) / 25));
        EXPECT_NEAR(proposed.size(), expected, 1);
        EXPECT_EQ(text(IdPoints), before); // nothing changes before Accept
        ASSERT_TRUE(control<QPushButton>(CTraceliftToolDlg::IdAcceptTrace)->isEnabled());
        control<QPushButton>(CTraceliftToolDlg::IdAcceptTrace)->click();
        EXPECT_TRUE(canvas()->Proposal().isEmpty());

        // The point text holds the proposal, each point on the curve within
        // half a pixel (and what five digits leave).
        int count = 0;
        CMyDoubleArray pairs;
        ParsePointText(text(IdPoints), count, pairs, true);
        ASSERT_EQ(count, proposed.size());
        for (int i = 0; i < count; ++i) {
            const QPointF at(map.PixelX(pairs[2 * i]), map.PixelY(pairs[2 * i + 1]));
            EXPECT_LE(d.Distance(curve, at), 0.52) << i;
        }
        if (c.kind == 2) {
            EXPECT_NEAR(pairs[0], 5, 1e-4);
            EXPECT_NEAR(pairs[4], 15, 1e-4);
        }
        // One undo brings the text before back.
        QTest::keyClick(canvas(), Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(text(IdPoints), before);
    }
    // Spacings that give no point, or are no number, say so and propose nothing.
    const struct {
        int kind;
        const char *text;
    } empty[] = {{2, "25; -3"}, {0, "0.5"}, {2, "x"}, {1, ""}};
    for (const auto &e : empty) {
        SCOPED_TRACE(e.text);
        dialog->SetTraceSpacing(0, QStringLiteral("25"));
        ASSERT_TRUE(dialog->PickCurveAt(d.curves[0].seed.x(), d.curves[0].seed.y()));
        prompts.messages.clear();
        dialog->SetTraceSpacing(e.kind, QString::fromLatin1(e.text));
        EXPECT_FALSE(dialog->PickCurveAt(d.curves[0].seed.x(), d.curves[0].seed.y()));
        EXPECT_TRUE(canvas()->Proposal().isEmpty());
        EXPECT_GE(prompts.messages.size(), 1);
    }
    dialog->SetTraceSpacing(0, QStringLiteral("25"));
    // Leaving the trace drops a proposal.
    QTest::mouseClick(canvas(), Qt::LeftButton, Qt::ShiftModifier, d.curves[0].seed.toPoint());
    EXPECT_FALSE(canvas()->Proposal().isEmpty());
    next();
    EXPECT_TRUE(canvas()->Proposal().isEmpty());
}

namespace {

// A family of two curves saved with OK, whose second curve is clicked at the
// given vertices, and how the user answers the offer of the family CSV.
struct FamilySave {
    const char *name;
    QList<int> second;
    PromptAnswer answer;
    bool refused;         // the X ranges differ by more than a tenth
    QStringList written;  // the files left in the folder
    int csvRows;          // the rows of the family CSV: each X of either curve once
};

class TraceliftFamilySave : public PointEditTest, public ::testing::WithParamInterface<FamilySave>
{
};

const FamilySave g_familySaves[] = {
    {"ranges apart, family CSV taken", {3, 5}, PromptAnswer::Yes, true, {"family.csv"}, 4},
    {"ranges apart, family CSV declined", {3, 5}, PromptAnswer::No, true, {}, 0},
    {"second curve starts early", {0, 5, 8}, PromptAnswer::Yes, true, {"family.csv"}, 4},
    {"ranges alike within a tenth", {2, 6, 8}, PromptAnswer::Yes, false, {"a.txt", "b.txt"}, 0},
};

} // namespace

TEST_P(TraceliftFamilySave, ARefusedRangeOffersTheFamilyCsv)
{
    const FamilySave &c = GetParam();
    reach(ModeTrace, g);
    traceFamily({{2, 5, 8}, c.second}, 30);
    ASSERT_FALSE(HasFatalFailure());
    prompts.answers = {PromptAnswer::Ok, c.answer};
    for (const char *name : {"a.txt", "b.txt"})
        prompts.fileNames << files.filePath(QString::fromLatin1(name));
    if (c.refused)
        prompts.fileNames = {files.filePath(QStringLiteral("family.csv"))};
    control<QPushButton>(CTraceliftToolDlg::IdOk)->click();

    const QStringList texts = prompts.MessageTexts();
    if (c.refused) {
        // The refusal comes first, as it always does; the offer follows it.
        ASSERT_EQ(texts.size(), 2) << qPrintable(texts.join(u'|'));
        EXPECT_EQ(prompts.messages[0].icon, PromptIcon::Stop);
        EXPECT_EQ(texts[0], message(27536, text(IdXName)));
        EXPECT_EQ(prompts.messages[1].buttons, PromptButtons::YesNo);
    } else {
        EXPECT_TRUE(texts.isEmpty()) << qPrintable(texts.join(u'|'));
    }
    EXPECT_EQ(QDir(files.path()).entryList(QDir::Files), c.written);
    if (c.written == QStringList{QStringLiteral("family.csv")}) {
        QFile file(files.filePath(QStringLiteral("family.csv")));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QStringList lines = QString::fromUtf8(file.readAll()).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
        EXPECT_EQ(lines.size(), 1 + c.csvRows) << qPrintable(lines.join(u'|'));
        EXPECT_EQ(lines.value(0).count(u','), 2);
    }
}

INSTANTIATE_TEST_SUITE_P(Roads, TraceliftFamilySave, ::testing::ValuesIn(g_familySaves),
                         [](const testing::TestParamInfo<FamilySave> &i) {
                             QString n = QString::fromLatin1(i.param.name);
                             n.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9]")), QStringLiteral("_"));
                             return n.toStdString();
                         });
