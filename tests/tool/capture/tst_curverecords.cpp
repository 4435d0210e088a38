#include "tool/capture/curverecords.h"
#include "tool/capture/toolfields.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// A list of real curves (given by their temperature and first and last X;
// no X means no points) and the template, with the template current.
struct Curve {
    const char *tj;
    std::vector<double> xs;
};

class Records
{
public:
    explicit Records(const std::vector<Curve> &curves)
    {
        EXPECT_TRUE(r.Init(lib));
        // Drop the type's prototype curve; keep the template.
        while (r.Size() > 1)
            r.List()->RemoveItem(0);
        for (const Curve &c : curves) {
            auto *g = new CGraphInfoData(*r.Template());
            g->flags = 0;
            CCurveRecords::SetTemperature(g, c.tj);
            g->points.SetSize(int(c.xs.size()));
            for (std::size_t i = 0; i < c.xs.size(); ++i)
                g->points.GetData()[2 * i] = c.xs[i];
            int at = r.Size() - 1;
            r.List()->InsertPtrAt(at, g);
        }
        r.m_curveCount = r.Size();
        r.m_currentCurve = r.Template();
    }

    // The temperatures of the curves in list order, "T" for the template.
    std::vector<std::string> Order() const
    {
        std::vector<std::string> out;
        for (int i = 0; i < r.Size(); ++i)
            out.push_back(r.At(i)->IsTemplate() ? "T" : r.At(i)->ConditionValue("TJ").toStdString()
                                                          + (r.At(i)->GetPointCount() ? "" : "-"));
        return out;
    }

    CDTypeLib lib;
    CCurveRecords r;
};

using S = std::vector<std::string>;

} // namespace

TEST(CurveRecords, TypeAndStartingList)
{
    CDTypeLib lib;
    CCurveRecords r;
    ASSERT_TRUE(r.Init(lib));
    CDType *type = nullptr;
    int index = -1;
    ASSERT_TRUE(r.m_deviceDatabase.GetType_TypeConstant(112, type, index));
    EXPECT_EQ(r.m_deviceDatabase.GetType_TypeConstant(113, type, index), 0);
    ASSERT_NE(r.m_currentElement, nullptr);
    EXPECT_EQ(r.m_currentElement->m_description, "Curve vs. Tc");
    EXPECT_EQ(r.m_deviceDatabase.GetData().GetSize(), 1);

    // The type's prototype, then the template, keyed as a fresh curve is.
    ASSERT_EQ(r.Size(), 2);
    EXPECT_EQ(r.m_curveCount, 2);
    EXPECT_EQ(r.m_currentCurve, r.Template());
    EXPECT_TRUE(r.Template()->IsTemplate());
    EXPECT_EQ(r.Template()->sortKey, 0);
    ASSERT_NE(r.At(0)->GetCondition("TJ"), nullptr);
    EXPECT_EQ(r.At(0)->GetCondition("TJ")->m_description, "Junction temperature");

    // The first curve of a capture stays in mode 1; further ones go on to 14.
    CToolFields fields;
    EXPECT_FALSE(r.AddCurve(fields));
    EXPECT_EQ(r.At(0), r.m_currentCurve);
    fields.points = "(1,2)";
    r.FinishTrace(fields);
    EXPECT_EQ(r.m_curveCount, 1); // the empty prototype went
    EXPECT_TRUE(r.AddCurve(fields));
}

TEST(CurveRecords, SortKeys)
{
    const struct { const char *text; std::int64_t key; } cases[] = {
        {"", 0}, {"25", 25000}, {"-5", -5000}, {"0.00056", 1}, {"0.00054", 0}, {"1e3", 1000000},
        {"12.3456", 12346}, {"abc", 0}, {"1e300", INT64_MAX},
    };
    for (const auto &c : cases)
        EXPECT_EQ(SortKeyFromText(c.text), c.key) << c.text;
}

TEST(CurveRecords, SortsAllButTheTemplate)
{
    const struct { std::vector<Curve> in; S out; } cases[] = {
        {{{"30", {1}}, {"25", {1}}, {"-5", {1}}, {"100", {1}}}, {"-5", "25", "30", "100", "T"}},
        // Equal keys keep their order.
        {{{"25", {1}}, {"25", {}}, {"10", {1}}}, {"10", "25", "25-", "T"}},
        // The low 32 bits are compared as a wrapped difference: 3e9 thousandths
        // count as below zero.
        {{{"0", {1}}, {"3000000", {1}}}, {"3000000", "0", "T"}},
    };
    for (const auto &c : cases) {
        Records rec(c.in);
        rec.r.Sort();
        EXPECT_EQ(rec.Order(), c.out);
    }
}

TEST(CurveRecords, RemovesEmptyRecords)
{
    const struct { std::vector<Curve> in; S out; } cases[] = {
        {{{"", {}}, {"25", {1}}}, {"25", "T"}},
        {{{"25", {1}}, {"", {}}, {"", {}}}, {"25", "T"}},
        {{{"", {}}, {"", {}}}, {"-", "-", "T"}},       // nobody has points
        {{{"25", {}}, {"30", {1}}}, {"25-", "30", "T"}}, // key not 0
    };
    for (const auto &c : cases) {
        Records rec(c.in);
        const int before = rec.r.m_curveCount;
        rec.r.RemoveEmptyRecords();
        EXPECT_EQ(rec.Order(), c.out);
        EXPECT_EQ(rec.r.m_curveCount, before - (int(c.in.size()) + 1 - rec.r.Size()));
    }
}

TEST(CurveRecords, SavingChecks)
{
    const struct {
        const char *name;
        std::vector<Curve> in;
        int kind;
        int message;
        const char *argument;
        int current; // index of the curve made current
        int toWrite;
    } cases[] = {
        {"one curve", {{"25", {0, 10}}}, 0, 0, "", -1, 1},
        {"lone curve without points", {{"25", {}}}, 0, 0, "", -1, 0},
        {"two at the same temperature", {{"25", {0, 10}}, {"25", {0, 10}}}, 0, 27534, "25", 1, 0},
        {"temperature truncated", {{"-7.9", {0, 10}}, {"-7.9", {0, 10}}}, 0, 27534, "-7", 1, 0},
        {"first without points", {{"25", {}}, {"30", {0, 10}}}, 0, 27535, "", 0, 0},
        {"later without points", {{"25", {0, 10}}, {"30", {}}}, 0, 27535, "", 1, 0},
        {"X range within a tenth", {{"25", {0, 10}}, {"30", {1, 9}}, {"35", {-1, 11}}}, 0, 0, "", -1, 3},
        {"X range starts late", {{"25", {0, 10}}, {"30", {1.5, 10}}}, 0, 27536, "Vce", 1, 0},
        {"X range ends early", {{"25", {0, 10}}, {"30", {0, 8.9}}}, 0, 27536, "Vce", 1, 0},
        {"other kind: no range check", {{"25", {0, 10}}, {"30", {0, 5}}}, 595, 0, "", -1, 2},
        {"other kind: same key", {{"25", {0, 10}}, {"25", {0, 10}}}, 595, 27548, "25", 1, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        Records rec(c.in);
        CToolFields fields;
        fields.xName = "Vce";
        fields.xAtFirst = "10";
        fields.xAtSecond = "0";
        fields.yAtFirst = "1";
        fields.yAtSecond = "2";
        fields.yLog = true;
        fields.xUnit = "m";
        const S before = rec.Order();
        const CSavePlan plan = rec.r.PrepareSaving(fields, c.kind);
        EXPECT_EQ(plan.ok, c.message == 0);
        // A refusal changes no record.
        if (!plan.ok) {
            EXPECT_EQ(rec.Order(), before);
            EXPECT_EQ(rec.r.Template()->xMax, 0.0);
        }
        EXPECT_EQ(plan.messageId, c.message);
        EXPECT_EQ(plan.messageArgument, c.argument);
        EXPECT_EQ(plan.toWrite.size(), c.toWrite);
        if (c.current >= 0) {
            EXPECT_EQ(rec.r.m_currentCurve, rec.r.At(c.current));
        }
        if (plan.ok) {
            // The template's limits, in rising order, reach every curve.
            for (int i = 0; i < rec.r.Size(); ++i) {
                const CGraphInfoData *g = rec.r.At(i);
                EXPECT_EQ(g->xMin, 0.0);
                EXPECT_EQ(g->xMax, 10.0);
                EXPECT_EQ(g->yMax, 2.0);
                EXPECT_EQ(g->yLog, 1);
                EXPECT_EQ(g->xUnitExponent, -3);
            }
        }
    }
}

TEST(CurveRecords, FurtherCurvesOfAFamilyGetKeysOfTheirOwn)
{
    // Each step adds a curve and finishes it with points: 'A' as Add curve
    // does, 'F' as a further curve of a family; 'R' starts the current curve
    // over and finishes it again.
    const struct { const char *steps; S order; int message; } cases[] = {
        {"AFF", {"25", "26", "27", "T"}, 0},
        {"F", {"25", "T"}, 0},
        {"AA", {"25", "25", "T"}, 27534}, // Add curve alone keeps every curve at 25
        {"AFA", {"25", "25", "26", "T"}, 27534},
        {"AFFR", {"25", "26", "27", "T"}, 0}, // the restarted curve takes its old key again
        {"AFRF", {"25", "26", "27", "T"}, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.steps);
        Records rec({});
        CToolFields fields;
        fields.xAtFirst = "0";
        fields.xAtSecond = "10";
        fields.yAtFirst = "0";
        fields.yAtSecond = "1";
        for (const char *step = c.steps; *step; ++step) {
            fields.points = "(0,1)(10,2)";
            if (*step == 'R') {
                rec.r.ResetCurrentCurve();
                fields.points.clear();
                rec.r.SaveFields(fields);
                EXPECT_EQ(rec.r.m_currentCurve->sortKey, 0);
                fields.points = "(0,1)(10,2)";
            } else if (*step == 'F') {
                rec.r.AddFamilyCurve(fields);
            } else {
                rec.r.AddCurve(fields);
            }
            rec.r.FinishTrace(fields);
            EXPECT_EQ(rec.r.CheckInvariant(), QString());
        }
        EXPECT_EQ(rec.Order(), c.order);
        EXPECT_EQ(rec.r.PrepareSaving(fields).messageId, c.message);
    }
}

TEST(CurveRecords, SavedFieldsCrossWhenAxesAreExchanged)
{
    Records rec({});
    CToolFields fields;
    fields.xAtFirst = "1";
    fields.xAtSecond = "2";
    fields.yAtFirst = "3";
    fields.yAtSecond = "4";
    fields.xLog = true;
    fields.yUnit = "k";
    fields.points = "(1,2)(3,4k)";
    EXPECT_FALSE(rec.r.AddCurve(fields));
    CGraphInfoData *curve = rec.r.m_currentCurve;
    for (bool exchanged : {false, true}) {
        fields.exchangeXY = exchanged;
        ASSERT_TRUE(rec.r.SaveFields(fields));
        const CGraphInfoData *t = rec.r.Template();
        EXPECT_EQ(t->flags & CGraphInfoData::FlagAxesExchanged, exchanged ? 0x1000u : 0u);
        EXPECT_EQ(t->xMin, exchanged ? 3 : 1);
        EXPECT_EQ(t->xMax, exchanged ? 4 : 2);
        EXPECT_EQ(t->yMin, exchanged ? 1 : 3);
        EXPECT_EQ(t->yMax, exchanged ? 2 : 4);
        EXPECT_EQ(t->xLog, exchanged ? 0 : 1);
        EXPECT_EQ(t->yLog, exchanged ? 1 : 0);
        EXPECT_EQ(t->xUnitExponent, exchanged ? 3 : 0);
        EXPECT_EQ(t->yUnitExponent, exchanged ? 0 : 3);
        double x = 0, y = 0;
        ASSERT_TRUE(curve->GetPoint(1, x, y));
        EXPECT_EQ(x, exchanged ? 4000 : 3);
        // Crossing back when loading gives the text that was saved.
        EXPECT_EQ(rec.r.CurrentPointText(exchanged), "(1,2)(3,4000)");
    }
    // Start over makes the curve fresh again, so that a save drops it.
    EXPECT_EQ(curve->sortKey, 25000);
    rec.r.ResetCurrentCurve();
    EXPECT_EQ(curve->GetPointCount(), 0);
    EXPECT_EQ(curve->sortKey, 0);
}

TEST(DeviceDatabase, CopiesOwnTheirRecords)
{
    CDTypeLib lib;
    AddCurveRecordType(lib);
    CDeviceDatabase db;
    db.Init(lib);
    CDType *type = nullptr;
    int index = 0, count = 0;
    ASSERT_TRUE(db.GetType_TypeConstant(112, type, index));
    EXPECT_EQ(db.Add(db.New_CDeviceData(type), index, count), 1);
    EXPECT_EQ(db.Add(nullptr, index, count), 0);
    EXPECT_EQ(count, 1);

    CDeviceDatabase copy;
    copy = db;
    CArrayOfPtr *mine = db.GetData().GetAt(0)->GetValue("Curve2D")->GetArray();
    CArrayOfPtr *theirs = copy.GetData().GetAt(0)->GetValue("Curve2D")->GetArray();
    EXPECT_NE(mine->GetPtrAt(0), theirs->GetPtrAt(0));
    int at = 99; // brought into range
    theirs->InsertPtrAt(at, new CGraphInfoData);
    EXPECT_EQ(at, 1);
    EXPECT_EQ(theirs->Find(mine->GetPtrAt(0)), -1);
    EXPECT_TRUE(theirs->RemoveItem(0));
    EXPECT_FALSE(theirs->RemoveItem(1));
    EXPECT_EQ(mine->GetSize(), 1);
    // New records start from a copy of the type's value, not the value itself.
    EXPECT_EQ(type->GetAt("Curve2D")->m_defaultValue.GetArray()->GetSize(), 1);
}
