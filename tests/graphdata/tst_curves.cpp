#include "graphdata/computedcurve.h"
#include "graphdata/curvehold.h"
#include "graphdata/grapherrors.h"
#include "graphdata/graphcurve.h"
#include "support/languagestring.h"
#include "support/xmlelement.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

// A graph over a data set of `columns` named columns: column 0 holds 0..rows-1,
// column c holds c * row.
void fillData(CGraphCurve &graph, int columns, int rows)
{
    graph.m_data.Create(1, columns, rows, 0);
    for (int c = 0; c < columns; ++c)
        graph.m_data.GetColumn(c)->m_name = c == 0 ? u"Time"_qs : u"U"_qs + QString::number(c);
    std::vector<double> values(std::size_t(columns) * rows);
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < columns; ++c)
            values[std::size_t(r) * columns + c] = c == 0 ? r : double(c) * r;
    }
    graph.m_data.AppendRows(values.data(), nullptr, 0, columns, 0, rows);
}

CXmlElementPtr parse(const QString &text)
{
    CXmlElementPtr root = CreateElement(QString());
    int position = -1;
    EXPECT_TRUE(CXmlElement::Parse(root.Get(), text, position)) << text.toStdString();
    return CXmlElementPtr(root->GetChildAt(0));
}

// Restores the default evaluator when a test ends.
struct EvaluatorGuard
{
    ComputedCurveEvaluator old;
    explicit EvaluatorGuard(ComputedCurveEvaluator e) : old(SetComputedCurveEvaluator(std::move(e))) {}
    ~EvaluatorGuard() { SetComputedCurveEvaluator(old); }
};

} // namespace

TEST(CurveInfo, SavesAttributesInOrderAndForm)
{
    CCurveBasicInfo info;
    info.m_source = 0x102;
    info.m_colIndex = -1;
    info.m_colName = u"Limit"_qs;
    info.m_colLabel = u"A & B"_qs;
    info.m_color = 0xFFFFFFFF;
    info.m_specialDraw = 0x100;
    info.m_yAxisIndex = 2;
    info.m_options = 0x100;
    info.m_paletteIndex = 5;
    CXmlElementPtr e = CreateElement(u"Curve"_qs);
    info.SaveToXml(e.Get());
    QString written;
    ASSERT_TRUE(CXmlElement::WriteDocument(e.Get(), written));
    EXPECT_EQ(written, u"<?xml version='1.0' encoding='UTF-16' ?>\n<Curve Source=\"258\"  ColIndex=\"-1\"  "
                       "ColName=\"Limit\"  ColLabel=\"A &amp; B\"  Color=\"4294967295\"  Connect=\"1\"  "
                       "LineThickness=\"1\"  Symbol=\"0\"  SpecialDraw=\"256\"  YAxisIndex=\"2\"  Options=\"256\" >"
                       "</Curve>\r\n"_qs);

    // Reloading loses PaletteIndex (no "Index" is written).
    CCurveBasicInfo back;
    back.LoadFromXml(e.Get());
    EXPECT_EQ(back.m_paletteIndex, -1);
    EXPECT_EQ(back.m_color, 0xFFFFFFFFu);
    EXPECT_EQ(back.m_colLabel, u"A & B"_qs);
    EXPECT_TRUE(back.IsLimitLine());
}

TEST(CurveInfo, LoadsWithDefaultsAndIndex)
{
    const struct
    {
        const char16_t *xml;
        std::int32_t colIndex;
        const char16_t *label;
        std::uint32_t color;
        std::int32_t thickness, symbol, palette;
    } cases[] = {
        {u"<c ColName='U1'/>", -1, u"U1", 0, 1, 0, -1},
        {u"<c ColName='U1' ColLabel=''/>", -1, u"", 0, 1, 0, -1},
        {u"<c Index='11'/>", -1, u"", 0x58B5DB, 1, 0, 11},
        {u"<c Index='3' Color='255' Symbol='4'/>", -1, u"", 255, 1, 4, 3},
        {u"<c Index='-2' ColIndex='7'/>", 7, u"", 0, 1, 0, -2},
        {u"<c ColIndex='-5'/>", -5, u"", 0, 1, 0, -1},
        {u"<c ColIndex='4294967295'/>", -1, u"", 0, 1, 0, -1},
        {u"<c ColIndex='12abc' Color='junk'/>", 12, u"", 0, 1, 0, -1},
        {u"<c Color='-1'/>", -1, u"", 0xFFFFFFFF, 1, 0, -1},
    };
    for (const auto &c : cases) {
        CXmlElementPtr e = parse(QString::fromUtf16(c.xml));
        CCurveBasicInfo info;
        info.LoadFromXml(e.Get());
        const std::string what = QString::fromUtf16(c.xml).toStdString();
        EXPECT_EQ(info.m_colIndex, c.colIndex) << what;
        EXPECT_EQ(info.m_colLabel, QString::fromUtf16(c.label)) << what;
        EXPECT_EQ(info.m_color, c.color) << what;
        EXPECT_EQ(info.m_lineThickness, c.thickness) << what;
        EXPECT_EQ(info.m_symbol, c.symbol) << what;
        EXPECT_EQ(info.m_paletteIndex, c.palette) << what;
        EXPECT_EQ(info.m_connect, 1) << what;
    }
}

TEST(CurveInfo, Constructors)
{
    const CCurveInfo column(3, u"U3"_qs, 0x123456);
    EXPECT_EQ(column.Origin(), 0);
    EXPECT_EQ(column.m_colIndex, 3);
    const CCurveInfo computed(0x654321u, u"f"_qs);
    EXPECT_EQ(computed.Origin(), 1);
    EXPECT_EQ(computed.m_colIndex, -1);
    EXPECT_EQ(computed.m_scopeScale, 1.0);
    EXPECT_TRUE(computed.IsCurveInfo());
}

TEST(GraphCurve, PaletteAndFallbackPicks)
{
    CGraphCurve graph;
    fillData(graph, 12, 4);
    bool changed = false;
    std::vector<std::uint32_t> colors;
    for (int c = 1; c <= 9; ++c) {
        const int i = graph.AddCurve(c, 0, false, changed);
        ASSERT_GE(i, 0);
        EXPECT_TRUE(changed);
        colors.push_back(graph.Curve(i)->m_color);
    }
    for (int row = 0; row < 8; ++row)
        EXPECT_EQ(colors[std::size_t(row)], g_curvePalette[row].color) << row;
    // The ninth curve: every palette colour is taken.
    EXPECT_EQ(colors[8], 0x7F0000u);
    EXPECT_EQ(graph.Curve(8)->m_paletteIndex, 8);

    // A colour in use is skipped; a freed one earlier in the palette is found.
    const struct
    {
        std::vector<std::uint32_t> present;
        int index;
        std::uint32_t color;
    } cases[] = {
        {{}, 0, g_curvePalette[0].color},
        {{g_curvePalette[1].color}, 2, g_curvePalette[2].color},
        {{0x1, 0x2, 0x3, 0x4, 0x5, 0x6, 0x7, 0x8}, 0, g_curvePalette[0].color},
        {{g_curvePalette[0].color, g_curvePalette[1].color, g_curvePalette[2].color, g_curvePalette[3].color,
          g_curvePalette[4].color, g_curvePalette[6].color, g_curvePalette[7].color, 0x1},
         5, g_curvePalette[5].color},
        {{g_curvePalette[7].color, g_curvePalette[6].color, g_curvePalette[5].color, g_curvePalette[4].color,
          g_curvePalette[3].color, g_curvePalette[2].color, g_curvePalette[1].color},
         0, g_curvePalette[0].color},
    };
    for (const auto &c : cases) {
        CGraphCurve g;
        for (std::uint32_t color : c.present)
            g.m_curves.Add(new CCurveInfo(0, QString(), color));
        std::uint32_t color = 0;
        std::int32_t thickness = 0, symbol = -1;
        EXPECT_EQ(g.PickDefaultStyle(color, thickness, symbol), c.index) << c.present.size();
        EXPECT_EQ(color, c.color) << c.present.size();
        EXPECT_EQ(thickness, 1);
        EXPECT_EQ(symbol, 0);
    }

    // Rows of a defaults list come first, following the last curve's index.
    CGraphCurve g;
    for (int row = 0; row < 2; ++row) {
        auto *d = new CCurveBasicInfo;
        d->m_color = 0xABC000u + std::uint32_t(row);
        d->m_lineThickness = 3;
        d->m_symbol = 2;
        g.m_defaults->m_curveDefaults.Add(d);
    }
    std::uint32_t color;
    std::int32_t thickness, symbol;
    EXPECT_EQ(g.PickDefaultStyle(color, thickness, symbol), 0);
    EXPECT_EQ(color, 0xABC000u);
    EXPECT_EQ(thickness, 3);
    auto *first = new CCurveInfo(0, QString(), color);
    first->m_paletteIndex = 1;
    g.m_curves.Add(first);
    // Row 2 does not exist: back to the palette.
    EXPECT_EQ(g.PickDefaultStyle(color, thickness, symbol), 1);
    EXPECT_EQ(color, g_curvePalette[1].color);
}

TEST(GraphCurve, AddCurveStylesAndRefusals)
{
    const struct
    {
        std::uint32_t style;
        int column;
        bool bar;
        int thickness, symbol;
    } cases[] = {
        {0, 1, false, 1, 0}, {4, 2, true, 1, 0}, {5, 1, true, 1, 0}, {5, 2, false, 2, 2},
    };
    for (const auto &c : cases) {
        CGraphCurve graph;
        fillData(graph, 3, 4);
        graph.m_data->m_dataFlags = c.style;
        bool changed = false;
        const int i = graph.AddCurve(c.column, 7, false, changed);
        ASSERT_EQ(i, 0);
        const CCurveInfo *curve = graph.Curve(i);
        EXPECT_EQ(curve->IsBar(), c.bar) << c.style << " " << c.column;
        EXPECT_EQ(curve->m_lineThickness, c.thickness);
        EXPECT_EQ(curve->m_symbol, c.symbol);
        EXPECT_EQ(curve->m_yAxisIndex, 0); // axis 7 does not exist
        EXPECT_EQ(curve->m_colLabel, u"U"_qs + QString::number(c.column));
    }
    CGraphCurve graph;
    fillData(graph, 2, 4);
    bool changed = true;
    EXPECT_EQ(graph.AddCurve(2, 0, true, changed), -1);
    EXPECT_FALSE(changed);
    EXPECT_EQ(graph.AddCurve(1, 0, true, changed), 0);
    // Fitted: X 0..3, Y 0..3 by the Y rules.
    EXPECT_EQ(graph.m_xViewMin, 0);
    EXPECT_EQ(graph.m_xViewMax, 3);
    EXPECT_EQ(graph.Range(0)->m_viewMin, 0);
    EXPECT_EQ(graph.Range(0)->m_viewMax, 3);
}

TEST(GraphCurve, AddOwnCurve)
{
    CGraphCurve graph;
    const double xy[] = {1, 10, 2, 20, 3, -5};
    const double yx[] = {10, 1, 20, 2, -5, 3};
    for (bool yFirst : {false, true}) {
        const int i = graph.AddOwnCurve(u"f"_qs, u"level"_qs, yFirst ? yx : xy, 3, yFirst);
        ASSERT_GE(i, 0);
        const CCurveInfo *curve = graph.Curve(i);
        EXPECT_EQ(curve->Origin(), 2);
        EXPECT_EQ(curve->m_ownX->m_kind, 0x1000u);
        EXPECT_EQ(curve->m_ownY->m_kind, 0x2000u);
        EXPECT_EQ(curve->m_ownX->m_minValue, 1);
        EXPECT_EQ(curve->m_ownX->m_maxValue, 3);
        EXPECT_EQ(curve->m_ownY->m_minValue, -5);
        EXPECT_EQ(curve->m_ownY->m_maxValue, 20);
    }
    EXPECT_EQ(graph.AddOwnCurve(u"f"_qs, u"g"_qs, xy, 0, false), -1);
    // The second curve took the next palette colour.
    EXPECT_EQ(graph.Curve(1)->m_color, g_curvePalette[1].color);
}

TEST(GraphCurve, ApplyCurveListMergesByOrigin)
{
    CGraphCurve graph;
    fillData(graph, 4, 5);
    bool changed;
    graph.AddCurve(1, 0, false, changed);
    graph.AddCurve(2, 0, false, changed);
    const double xy[] = {0, 1, 4, 2};
    graph.AddOwnCurve(u"x"_qs, u"limit"_qs, xy, 2, false);
    CCurveInfo *keptColumn = graph.Curve(1);
    CCurveInfo *keptOwn = graph.Curve(2);
    keptColumn->m_displayColumn = CGraphColumnPtr::Adopt(CGraphColumn::Create(3));
    graph.m_highlightedCurve = 1;
    graph.m_activeAxis = 1;

    CCurveBasicInfoArray list;
    auto entry = [&](std::uint32_t source, int col, const QString &name, std::uint32_t color) {
        auto *e = new CCurveBasicInfo;
        e->m_source = source;
        e->m_colIndex = col;
        e->m_colName = name;
        e->m_colLabel = u"label "_qs + name;
        e->m_color = color;
        e->m_lineThickness = 4;
        list.Add(e);
    };
    entry(2, -1, u"limit"_qs, 0x11);  // matches the own curve by name
    entry(1, -1, u"U1*2"_qs, 0x22);   // computed: no evaluator yet
    entry(0, 2, u"ignored"_qs, 0x33); // matches column 2
    entry(0, 3, u"U3"_qs, 0x44);      // new column curve
    entry(2, -1, u"other"_qs, 0x55);  // own columns without a match: dropped

    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
    bool notFound = false;
    QString reported;
    const GraphErrorReporter old = SetGraphErrorReporter([&](int, const QString &detail) { reported = detail; });
    graph.ApplyCurveList(list, notFound);
    SetGraphErrorReporter(old);

    EXPECT_TRUE(notFound);
    EXPECT_FALSE(LanguageString(41211).isEmpty());
    EXPECT_EQ(reported, LanguageString(41211));
    EXPECT_EQ(graph.m_highlightedCurve, -1);
    EXPECT_EQ(graph.m_activeAxis, 0);
    ASSERT_EQ(graph.CurveCount(), 3); // column 1 went, the computed one failed
    EXPECT_EQ(graph.Curve(0), keptOwn);
    EXPECT_EQ(graph.Curve(1), keptColumn);
    EXPECT_EQ(keptColumn->m_color, 0x33u);
    EXPECT_EQ(keptColumn->m_lineThickness, 4);
    EXPECT_EQ(keptColumn->m_colName, u"U2"_qs); // ColName is not taken over
    EXPECT_TRUE(keptColumn->m_displayColumn);   // caches stay
    EXPECT_EQ(graph.Curve(2)->m_colIndex, 3);
    EXPECT_EQ(graph.Curve(2)->m_color, 0x44u);
}

TEST(GraphCurve, ComputedCurveSeam)
{
    CGraphCurve graph;
    fillData(graph, 2, 3);
    CCurveInfo curve(0x1u, u"f"_qs);
    curve.m_colName = u"Time*2"_qs;
    QString error;
    int position = 0;
    EXPECT_FALSE(EvaluateComputedCurve(graph, curve, error, position));
    EXPECT_EQ(position, -1);

    // Once the formula library registers, origin 1 entries come through.
    EvaluatorGuard guard([](CGraphCurve &g, CCurveInfo &c, QString &err, int &pos) {
        if (c.m_colName == u"bad"_qs) {
            err = u"syntax"_qs;
            pos = 2;
            return false;
        }
        const int rows = g.m_data.RowCount();
        c.m_computedColumn = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows, c.m_colName));
        for (int r = 0; r < rows; ++r) {
            c.m_computedColumn->m_values[r] = 2 * g.m_data.GetColumn(0)->m_values[r];
            c.m_computedColumn->m_valid[r] = 1;
        }
        return true;
    });
    EXPECT_TRUE(HasComputedCurveEvaluator());
    CCurveBasicInfoArray list;
    for (const char16_t *name : {u"Time*2", u"bad"}) {
        auto *e = new CCurveBasicInfo;
        e->m_source = 1;
        e->m_colName = QString::fromUtf16(name);
        list.Add(e);
    }
    bool notFound = false;
    const GraphErrorReporter old = SetGraphErrorReporter([](int, const QString &) {});
    graph.ApplyCurveList(list, notFound);
    SetGraphErrorReporter(old);
    EXPECT_TRUE(notFound);
    ASSERT_EQ(graph.CurveCount(), 1);
    EXPECT_EQ(graph.Curve(0)->m_computedColumn->m_values[2], 4);
    EXPECT_EQ(graph.Range(0)->m_viewMax, 4); // fitted to the computed values
}

TEST(GraphRange, DefaultsAndGridColour)
{
    const CGraph_Range range;
    EXPECT_EQ(range.m_axisFlags, 0x50u);
    EXPECT_EQ(range.m_gridColor, 0xD0E6DAu);
    EXPECT_EQ(range.m_axisSide, 1);
    EXPECT_EQ(range.m_minorDivisions, 5);
    EXPECT_EQ(range.m_labelFont.m_height, -12);
    EXPECT_EQ(range.m_tickFont.m_height, -8);
    const CGraph_Range big(std::uint32_t(0), 120);
    EXPECT_EQ(big.m_labelFont.m_height, -15);
    EXPECT_EQ(big.m_tickFont.m_height, -10);

    const struct
    {
        std::uint32_t color, grid;
    } cases[] = {
        {0x000000, 0xD7D7D7}, {0x0000FF, 0xD7D7FF}, {0x10F0E0, 0xD7F0E0},
        {0xE6E6E6, 0xE6E6D7}, {0xFFFFFF, 0xFFFFD7}, {0xE0D0F0, 0xE0D7F0},
    };
    for (const auto &c : cases) {
        const CGraph_Range r(c.color);
        EXPECT_EQ(r.m_gridColor, c.grid) << std::hex << c.color;
        EXPECT_EQ(r.m_textColor, c.color);
    }
    EXPECT_EQ(MulDiv(9, 96, 72), 12);
    EXPECT_EQ(MulDiv(-5, 3, 2), -8); // -7.5 rounds away from zero
}

TEST(GraphRange, AddCopyAndSortRanges)
{
    CGraphCurve graph;
    fillData(graph, 3, 5);
    bool changed;
    graph.AddCurve(1, 0, true, changed);
    graph.AddCurve(2, 0, true, changed);

    // Without a template: the default row's extents; the grid stays with axis 0.
    graph.m_defaults->m_rangeDefaults.GetAt(0)->m_viewMax = 42;
    EXPECT_EQ(graph.AddRange(), 1);
    EXPECT_EQ(graph.Range(1)->m_viewMax, 42);
    EXPECT_EQ(graph.Range(1)->m_axisFlags, 0x10u);
    EXPECT_EQ(graph.Range(0)->m_axisFlags, 0x50u);

    // With a template: its extent, on the side with fewer axes.
    graph.Range(1)->m_axisSide = -1;
    EXPECT_EQ(graph.AddRange(graph.Curve(1)), 2);
    EXPECT_EQ(graph.Range(2)->m_viewMin, 0);
    EXPECT_EQ(graph.Range(2)->m_viewMax, 8);
    EXPECT_EQ(graph.Range(2)->m_axisSide, 2); // sides 1 and -1: a tie goes left
    EXPECT_EQ(graph.AddRange(graph.Curve(0)), 3);
    EXPECT_EQ(graph.Range(3)->m_axisSide, -2);

    graph.Range(0)->m_axisSide = 5;
    graph.Range(2)->m_axisSide = 9;
    graph.Range(3)->m_axisSide = -7;
    const CAxisCounts counts = graph.SortAxes();
    EXPECT_EQ(counts.left, 2);
    EXPECT_EQ(counts.right, 2);
    EXPECT_EQ(graph.m_axisOrder, (std::vector<int>{3, 1, 0, 2}));
    EXPECT_EQ(graph.Range(3)->m_axisSide, -2);
    EXPECT_EQ(graph.Range(1)->m_axisSide, -1);
    EXPECT_EQ(graph.Range(0)->m_axisSide, 1);
    EXPECT_EQ(graph.Range(2)->m_axisSide, 2);

    CArrayGraph_Range two;
    two.Add(new CGraph_Range(std::uint32_t(0x0000FF)));
    two.Add(new CGraph_Range);
    two.GetAt(1)->m_layout = 2;
    graph.CopyRanges(two);
    ASSERT_EQ(graph.RangeCount(), 2);
    EXPECT_EQ(graph.Range(0)->m_gridColor, 0xD7D7FFu);
    EXPECT_NE(graph.Range(0), two.GetAt(0));
    EXPECT_EQ(graph.SortAxes().slices, 1);
    CArrayGraph_Range three;
    for (int i = 0; i < 3; ++i)
        three.Add(new CGraph_Range);
    graph.CopyRanges(three);
    EXPECT_EQ(graph.RangeCount(), 3);
}

TEST(CurveHold, GroupNamesAndHolds)
{
    const struct
    {
        const char16_t *newest;
        const char16_t *next;
    } cases[] = {
        {nullptr, u"A1"}, {u"A1", u"A2"}, {u"Run9", u"Run10"}, {u"123", u"A1"}, {u"Test", u"Test1"},
        {u"x2y07", u"x2y8"},
    };
    for (const auto &c : cases) {
        CCurveHoldList list;
        if (c.newest)
            list.NewGroup()->m_name = QString::fromUtf16(c.newest);
        EXPECT_EQ(list.NextGroupName(), QString::fromUtf16(c.next));
    }

    CCurveHoldList list;
    CCurveHold_Set *first = list.NewGroup(7);
    CCurveHold_Set *second = list.NewGroup(7);
    EXPECT_EQ(list.GetAt(0), second); // newest first
    EXPECT_EQ(second->m_name, u"A2"_qs);
    EXPECT_EQ(first->m_owner, &list);

    CGraphColumnPtr x = CGraphColumnPtr::Adopt(CGraphColumn::Create(3, u"t"_qs));
    CGraphColumnPtr y = CGraphColumnPtr::Adopt(CGraphColumn::Create(3, u"u"_qs));
    y->m_id = 99;
    int existed = -1;
    CCurveHold *hold = second->AddHold(0, u"u"_qs, u"u (A2)"_qs, x.Get(), y.Get(), existed);
    EXPECT_EQ(existed, 0);
    EXPECT_NE(x->m_id, 0u); // columns without an id get one
    EXPECT_EQ(hold->m_xColumnId, x->m_id);
    EXPECT_EQ(hold->m_yColumnId, 99u);
    EXPECT_EQ(x->RefCount(), 2);
    EXPECT_EQ(second->AddHold(1, u"u"_qs, QString(), nullptr, nullptr, existed), hold);
    EXPECT_EQ(existed, 1);
    EXPECT_EQ(second->GetCount(), 1);
    list.DeleteAll();
    EXPECT_EQ(x->RefCount(), 1); // the set dropped its member's reference
}

// What a reporter shows: the numbered text with its number, or the number
// alone when there is no such text, and the detail behind it.
TEST(GraphErrors, ReportTextsCarryTheirNumber)
{
    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
    const struct
    {
        int id;
        const char *detail;
        const char *startsWith, *endsWith;
    } cases[] = {
        {41210, "", "There is not enough memory", "(41210)"},
        {41210, "column 3", "There is not enough memory", "(41210): column 3"},
        {99998, "", "99998", "99998"},
        {0, "only this", "only this", "only this"},
    };
    for (const auto &c : cases) {
        const QString text = GraphErrorText(c.id, QString::fromUtf8(c.detail));
        EXPECT_TRUE(text.startsWith(QString::fromUtf8(c.startsWith))) << c.id << " " << qPrintable(text);
        EXPECT_TRUE(text.endsWith(QString::fromUtf8(c.endsWith))) << c.id << " " << qPrintable(text);
    }
}
