// graphview's data: point tables as data sets, and the demonstration.
#include "graphviewdata.h"

#include "support/languagestring.h"

#include <cstring>

#include <gtest/gtest.h>

TEST(GraphViewData, FileDataGetNamesAnXAndTheirOrder)
{
    struct Case
    {
        const char *text;
        QStringList names;
        double lastX;
        bool ordered;
    };
    const Case cases[] = {
        {"Vce Ic\n0.5 1e-3\n1 2e-3\n2 4e-3\n", {QStringLiteral("Vce"), QStringLiteral("Ic")}, 2, true},
        {"3 1 7\n2 2 8\n1 3 9\n", {QStringLiteral("X"), QStringLiteral("Y1"), QStringLiteral("Y2")}, 1, false},
        {"a,,c\n1,2,3\n2,3,4\n", {QStringLiteral("a"), QStringLiteral("Y1"), QStringLiteral("c")}, 2, true},
        {"5 nan 7 8\n", {QStringLiteral("Index"), QStringLiteral("Y1")}, 4, true},
        {"Volts\n5\n6\n", {QStringLiteral("Index"), QStringLiteral("Volts")}, 2, true},
    };
    for (const Case &c : cases) {
        CGraphData data;
        CTextImportReport report;
        ASSERT_EQ(ImportTextBytes(c.text, std::strlen(c.text), data, report), TextImport::Read) << c.text;
        const int rows = data.RowCount();
        PrepareFileData(data);
        ASSERT_EQ(data.ColumnCount(), c.names.size()) << c.text;
        ASSERT_EQ(data.RowCount(), rows) << c.text;
        for (int i = 0; i < c.names.size(); ++i)
            EXPECT_EQ(data.GetColumn(i)->m_name, c.names[i]) << c.text;
        EXPECT_EQ(data.GetColumn(0)->m_values[rows - 1], c.lastX) << c.text;
        EXPECT_EQ(data->m_ordered != 0, c.ordered) << c.text;
    }
}

TEST(GraphViewData, BadCellsAreToldWithTheirFirstLines)
{
    struct Case
    {
        const char *text;
        const char *says; // "" for no report
    };
    const Case cases[] = {
        {"1 2\n3 4\n", ""},
        {"1 nan\n3\n", "f.txt: one cell is not a valid number; one cell is empty (first in lines 1, 2)."},
        {"1 2 3\n4 5\n", "f.txt: one cell is empty (in line 2)."},
        {"1 2 3\n4 x x\n", "f.txt: 2 cells are not valid numbers (in line 2)."},
        {"1 x\n2 x\n3 x\n4 x\n5 x\n6 x\n", "f.txt: 6 cells are not valid numbers (first in lines 1, 2, 3, 4, 5, ...)."},
    };
    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
    for (const Case &c : cases) {
        CGraphData data;
        CTextImportReport report;
        ASSERT_EQ(ImportTextBytes(c.text, std::strlen(c.text), data, report), TextImport::Read) << c.text;
        EXPECT_EQ(BadCellsText(QStringLiteral("f.txt"), report).toStdString(), c.says);
    }
}

TEST(GraphViewData, TheDemonstrationsHaveRisingX)
{
    for (bool bars : {false, true}) {
        const CGraphData data = DemonstrationData(bars);
        EXPECT_EQ(data.ColumnCount(), 4);
        EXPECT_EQ(data.RowCount(), bars ? 12 : 2001);
        EXPECT_EQ(data->m_ordered, 1);
        EXPECT_EQ((data->m_dataFlags & CGraphData_Data::StyleMask) == 4, bars);
    }
}
