#include "support/languagestring.h"
#include "tool/capture/capturemodel.h"
#include "tool/capture/capturesteps.h"
#include "tool/capture/curverecords.h"
#include "tool/capture/pointtext.h"
#include "tool/capture/toolfields.h"

#include <gtest/gtest.h>

#include <set>

namespace {

CAxisValues values(double xa, double xb, double ya, double yb, bool xLog = false, bool yLog = false)
{
    CAxisValues v;
    v.xAtFirst = xa;
    v.xAtSecond = xb;
    v.yAtFirst = ya;
    v.yAtSecond = yb;
    v.xLog = xLog;
    v.yLog = yLog;
    return v;
}

const CAxisValues good = values(0, 10, 0, 5);
const CAxisValues equalX = values(3, 3, 0, 5);

// The flags of an action list as letters, so that a table can say which
// things the front end must do: Q question, S start over, P clear the points
// field, C clear the capture, V paste, H clear pictureShown, A apply fields,
// F finish the trace, R repaint, T set the hint, O clear the read-out.
std::string doings(const CStepActions &a)
{
    std::string s;
    if (a.question) s += 'Q';
    if (a.startOver) s += 'S';
    if (a.clearPointsField) s += 'P';
    if (a.clearCapture) s += 'C';
    if (a.pastePicture) s += 'V';
    if (a.clearPictureShown) s += 'H';
    if (a.applyFields) s += 'A';
    if (a.finishTrace) s += 'F';
    if (a.repaint) s += 'R';
    if (a.setHint) s += 'T';
    if (a.clearReadout) s += 'O';
    return s;
}

using V = Visibility;
using B = ButtonState;

} // namespace

TEST(CaptureSteps, Next)
{
    const struct {
        const char *name;
        int mode, points;
        bool clipboard;
        CAxisValues values;
        StepAnswer answer;
        int to, question, message;
        const char *doing;
        V canvas, plot;
        B back;
    } cases[] = {
        {"new capture", 0, 0, false, good, StepAnswer::None, 10, 0, 0, "PCTO", V::Show, V::Hide, B::Keep},
        {"from a typed trace", 6, 0, false, good, StepAnswer::None, 10, 0, 0, "PCTO", V::Show, V::Hide, B::Keep},
        {"points: ask first", 7, 3, false, good, StepAnswer::None, 7, 27525, 0, "Q", V::Keep, V::Keep, B::Keep},
        {"points: Yes", 7, 3, false, good, StepAnswer::Yes, 10, 0, 0, "PCTO", V::Show, V::Hide, B::Keep},
        {"points: No", 7, 3, false, good, StepAnswer::No, 7, 0, 0, "", V::Keep, V::Keep, B::Keep},
        {"points: Cancel", 1, 3, false, good, StepAnswer::Cancel, 1, 0, 0, "", V::Keep, V::Keep, B::Keep},
        {"paste", 10, 0, true, good, StepAnswer::None, 11, 0, 0, "VRTO", V::Keep, V::Keep, B::Enable},
        {"nothing to paste", 10, 0, false, good, StepAnswer::None, 10, 0, 27526, "TO", V::Keep, V::Keep, B::Keep},
        {"picture placed", 11, 0, false, good, StepAnswer::None, 12, 0, 0, "TO", V::Keep, V::Keep, B::Keep},
        {"no first corner", 12, 0, false, good, StepAnswer::None, 12, 0, 27527, "TO", V::Keep, V::Keep, B::Keep},
        {"no second corner", 13, 0, false, good, StepAnswer::None, 12, 0, 27527, "TO", V::Keep, V::Keep, B::Keep},
        {"values good", 14, 0, false, good, StepAnswer::None, 16, 0, 0, "ARTO", V::Keep, V::Keep, B::Keep},
        {"values bad, silently", 14, 0, false, equalX, StepAnswer::None, 15, 0, 0, "RTO", V::Keep, V::Keep, B::Keep},
        {"values bad, told", 15, 0, false, equalX, StepAnswer::None, 15, 0, 27528, "RTO", V::Keep, V::Keep, B::Keep},
        {"values mended", 15, 0, false, good, StepAnswer::None, 16, 0, 0, "ARTO", V::Keep, V::Keep, B::Keep},
        {"trace done", 16, 2, false, good, StepAnswer::None, 7, 0, 0, "FTO", V::Hide, V::Show, B::Disable},
        {"trace empty", 16, 0, false, good, StepAnswer::None, 16, 0, 27533, "TO", V::Keep, V::Keep, B::Keep},
        {"unknown mode", 17, 0, true, good, StepAnswer::None, 17, 0, 0, "TO", V::Keep, V::Keep, B::Keep},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CNextInput in;
        in.mode = CaptureMode(c.mode);
        in.pointCount = c.points;
        in.clipboardHasPicture = c.clipboard;
        in.values = c.values;
        in.answer = c.answer;
        const CStepActions a = NextStep(in);
        EXPECT_TRUE(a.hideMagnifier);
        EXPECT_EQ(a.mode, c.to);
        EXPECT_EQ(a.question, c.question);
        EXPECT_EQ(a.message, c.message);
        EXPECT_EQ(doings(a), c.doing);
        EXPECT_EQ(a.canvas, c.canvas);
        EXPECT_EQ(a.plot, c.plot);
        EXPECT_EQ(a.back, c.back);
        if (a.setHint) {
            EXPECT_EQ(a.hintId, HintTextId(a.mode));
        }
    }
}

TEST(CaptureSteps, ChecksOfTheValuesInTheirOrder)
{
    const struct { CAxisValues v; int next, typed; } cases[] = {
        {good, 0, 0},
        {values(3, 3, 0, 5), 27528, 27540},
        {values(3, 3, 5, 5), 27528, 27540}, // the first failing check speaks
        {values(0, 1, 5, 5, true, true), 27529, 27541},
        {values(0, 10, 1, 5, true), 27530, 27542},
        {values(1, 10, -1, 5, true, true), 27531, 27543},
        {values(1, 10, 1, 0, false, true), 27531, 27543},
        {values(-2, -1, -5, -4), 0, 0},     // negative values are fine on linear axes
    };
    for (const auto &c : cases) {
        EXPECT_EQ(CheckAxisValues(c.v), c.next);
        EXPECT_EQ(CheckAxisValues(c.v, AxisCheckTexts::TypedCurve), c.typed);
    }
}

TEST(CaptureSteps, Back)
{
    const struct { int from, to; const char *doing; B back; } cases[] = {
        {11, 10, "HRTO", B::Disable}, {12, 11, "TO", B::Keep}, {13, 12, "TO", B::Keep},
        {14, 12, "TO", B::Keep},      {15, 12, "TO", B::Keep}, {16, 15, "RTO", B::Keep},
        {10, 10, "TO", B::Disable},   {7, 7, "TO", B::Disable}, {0, 0, "TO", B::Disable},
        {-1, -1, "TO", B::Disable},   {17, 17, "TO", B::Keep},
    };
    for (const auto &c : cases) {
        const CStepActions a = BackStep(CaptureMode(c.from));
        EXPECT_TRUE(a.hideMagnifier);
        EXPECT_EQ(a.mode, c.to) << c.from;
        EXPECT_EQ(doings(a), c.doing) << c.from;
        EXPECT_EQ(a.back, c.back) << c.from;
        EXPECT_EQ(a.hintId, HintTextId(CaptureMode(c.to))) << c.from;
    }
}

TEST(CaptureSteps, StartOver)
{
    EXPECT_EQ(doings(StartOverStep(ModePlotted, false, StepAnswer::Yes)), "");
    EXPECT_EQ(doings(StartOverStep(ModeTrace, true, StepAnswer::Yes)), "");
    EXPECT_EQ(StartOverStep(ModeTrace, false, StepAnswer::None).question, 27537);
    EXPECT_EQ(doings(StartOverStep(ModeTrace, false, StepAnswer::No)), "");
    const CStepActions a = StartOverStep(ModeCorner2, false, StepAnswer::Yes);
    EXPECT_EQ(doings(a), "SPRTO");
    EXPECT_EQ(a.mode, ModeIdle);
    EXPECT_EQ(a.canvas, V::Hide);
    EXPECT_EQ(a.plot, V::Show);
    EXPECT_EQ(a.hintId, 27551);
}

TEST(CaptureSteps, HintOfEachMode)
{
    const struct { int mode, kind; std::optional<int> hint; } cases[] = {
        {0, 0, 27551}, {1, 0, 27551}, {2, 0, {}}, {6, 0, {}}, {7, 0, 27552}, {10, 0, 27510},
        {14, 0, 27514}, {15, 0, 27515}, {15, 595, 27550}, {16, 595, 27516}, {17, 0, {}}, {-1, 0, {}},
    };
    for (const auto &c : cases)
        EXPECT_EQ(HintTextId(CaptureMode(c.mode), c.kind), c.hint) << c.mode;
}

// One picture from the clipboard to a finished curve, the way a front end
// drives the model.
TEST(CaptureSteps, WholeCapture)
{
    CCaptureModel capture;
    CCurveRecords records;
    CDTypeLib lib;
    ASSERT_TRUE(records.Init(lib));
    CToolFields fields;
    records.AddCurve(fields);

    auto next = [&](bool clipboard = false) {
        CNextInput in;
        in.mode = capture.m_mode;
        in.pointCount = capture.m_points.count;
        in.clipboardHasPicture = clipboard;
        in.values = ReadAxisValues(fields);
        const CStepActions a = NextStep(in);
        if (a.clearPointsField)
            fields.points.clear();
        if (a.clearCapture)
            capture.ClearCapture();
        if (a.pastePicture)
            capture.PicturePasted();
        if (a.applyFields)
            ApplyFieldsToCapture(fields, capture);
        if (a.finishTrace)
            records.FinishTrace(fields);
        capture.m_mode = a.mode;
        return a;
    };

    next();
    next(true);
    next();
    capture.SetFirstOrSecondCorner(50, 450);
    capture.SetFirstOrSecondCorner(650, 50);
    fields.xAtSecond = "60";
    fields.yAtFirst = "1m";
    fields.yAtSecond = "1";
    fields.yLog = true;
    next();
    ASSERT_EQ(capture.m_mode, ModeTrace);
    for (double px : {50.0, 350.0, 650.0}) {
        const CClickResult r = capture.SetFirstOrSecondCorner(px, 250);
        ASSERT_EQ(r.reaction, CClickResult::AppendPoint);
        AppendPointText(fields.points, r.x, r.y);
        ApplyFieldsToCapture(fields, capture);
    }
    EXPECT_EQ(fields.points, "(0,0.031623)(30,0.031623)(60,0.031623)");
    EXPECT_EQ(next().mode, ModePlotted);
    ASSERT_EQ(records.Size(), 2);
    EXPECT_EQ(records.m_currentCurve->GetPointCount(), 3);
    EXPECT_EQ(records.m_currentCurve->sortKey, 25000);
    EXPECT_EQ(records.Template()->yLog, 1);
}

// Every text the model can ask for is in the English language file, and the
// texts that take a value have a place for it.
TEST(CaptureTexts, EveryNumberHasItsText)
{
    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_SOURCE_DIR "/lang/en.lang")));
    std::set<int> ids{27534, 27535, 27536, 27548};
    for (int mode = -1; mode <= 20; ++mode) {
        for (int kind : {0, 595})
            if (const auto hint = HintTextId(CaptureMode(mode), kind))
                ids.insert(*hint);
        for (const CAxisValues &v : {good, equalX, values(0, 1, 2, 2), values(0, 1, 2, 3, true),
                                     values(1, 2, 0, 1, false, true)}) {
            CNextInput in;
            in.mode = CaptureMode(mode);
            in.values = v;
            for (int points : {0, 1}) {
                in.pointCount = points;
                ids.insert(NextStep(in).message);
                ids.insert(NextStep(in).question);
            }
            ids.insert(CheckAxisValues(v, AxisCheckTexts::TypedCurve));
        }
        ids.insert(StartOverStep(CaptureMode(mode), false, StepAnswer::None).question);
    }
    ids.erase(0);
    EXPECT_EQ(ids.size(), 27u);
    for (int id : ids)
        EXPECT_FALSE(LanguageString(id).isEmpty()) << id;
    for (int id : {27534, 27536, 27548})
        EXPECT_TRUE(LanguageString(id).contains("%1")) << id;
    UnloadLanguageModule();
}

TEST(ToolFields, ExchangeOfTheAxes)
{
    CToolFields f;
    f.points = QStringLiteral("(1,2) (3k,4)(5)");
    f.xAtFirst = QStringLiteral("1");
    f.xAtSecond = QStringLiteral("2e3");
    f.yAtFirst = QStringLiteral("0.5");
    f.yAtSecond = QStringLiteral("7");
    f.xLog = true;
    f.xUnit = QStringLiteral("k");
    f.yUnit = QStringLiteral("m");
    f.xName = QStringLiteral("VCE");
    f.yName = QStringLiteral("IC");
    f.exchangeXY = true;
    ExchangeAxisFields(f);
    EXPECT_EQ(f.points, QStringLiteral("(2,1)(4,3000)"));
    EXPECT_EQ(f.xAtFirst, QStringLiteral("0.5"));
    EXPECT_EQ(f.xAtSecond, QStringLiteral("7"));
    EXPECT_EQ(f.yAtFirst, QStringLiteral("1"));
    EXPECT_EQ(f.yAtSecond, QStringLiteral("2000"));
    EXPECT_FALSE(f.xLog);
    EXPECT_TRUE(f.yLog);
    EXPECT_EQ(f.xUnit, QStringLiteral("m"));
    EXPECT_EQ(f.yName, QStringLiteral("VCE"));
    EXPECT_TRUE(f.exchangeXY); // the box is the caller's
    ExchangeAxisFields(f);
    EXPECT_EQ(f.points, QStringLiteral("(1,2)(3000,4)"));
    EXPECT_EQ(f.xAtSecond, QStringLiteral("2000"));
    EXPECT_EQ(f.xName, QStringLiteral("VCE"));
}
