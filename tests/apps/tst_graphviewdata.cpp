// graphview's data: point tables as data sets, and the demonstration.
#include "graphviewdata.h"

#include "tool/capture/pointtextfile.h"

#include <gtest/gtest.h>

TEST(GraphViewData, ATableBecomesColumnsWithXFirst)
{
    struct Case
    {
        QStringList header;
        std::vector<double> rows; // two columns
        QStringList names;
        bool ordered;
    };
    const Case cases[] = {
        {{QStringLiteral("Vce"), QStringLiteral("Ic")}, {0.5, 1e-3, 1.0, 2e-3, 2.0, 4e-3},
         {QStringLiteral("Vce"), QStringLiteral("Ic")}, true},
        {{}, {3, 1, 2, 2, 1, 3}, {QStringLiteral("X"), QStringLiteral("Y1")}, false},
    };
    for (const Case &c : cases) {
        CPointTable table;
        table.columnNames = c.header;
        table.hasHeader = !c.header.isEmpty();
        table.columnCount = 2;
        const int rows = int(c.rows.size()) / 2;
        table.values.SetSize(rows, 2);
        for (int r = 0; r < rows; ++r) {
            table.values.SetAt(r, 0, c.rows[std::size_t(2 * r)]);
            table.values.SetAt(r, 1, c.rows[std::size_t(2 * r + 1)]);
        }
        const CGraphData data = GraphDataFromTable(table);
        ASSERT_EQ(data.ColumnCount(), 2);
        ASSERT_EQ(data.RowCount(), rows);
        EXPECT_EQ(data.GetColumn(0)->m_name, c.names[0]);
        EXPECT_EQ(data.GetColumn(1)->m_name, c.names[1]);
        EXPECT_EQ(data.GetColumn(1)->m_values[rows - 1], c.rows.back());
        EXPECT_EQ(data->m_ordered != 0, c.ordered);
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
