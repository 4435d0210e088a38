#include "graphviewdata.h"

#include "graphdata/columnscan.h"
#include "tool/capture/pointtextfile.h"

#include <cmath>
#include <vector>

namespace {

// Marks the data as ordered when X rises all the way.
void markOrder(CGraphData &data)
{
    CGraphColumn *x = data.GetColumn(0);
    if (!x || data.RowCount() < 1)
        return;
    const std::uint32_t order = FindOrder(x, 0, data.RowCount() - 1);
    if ((order & CGraphColumn::OrderAscending) && !(order & CGraphColumn::OrderNone))
        data->m_ordered = 1;
}

void fill(CGraphData &data, const QStringList &names, const std::vector<double> &rows)
{
    const int columns = int(names.size());
    const int count = int(rows.size()) / columns;
    data.Create(1, columns, count, 0);
    for (int c = 0; c < columns; ++c)
        data.GetColumn(c)->m_name = names[c];
    if (count > 0)
        data.AppendRows(rows.data(), nullptr, 0, columns, 0, count);
    markOrder(data);
}

} // namespace

CGraphData GraphDataFromTable(const CPointTable &table)
{
    const int columns = table.columnCount;
    QStringList names;
    for (int c = 0; c < columns; ++c) {
        if (c < table.columnNames.size() && !table.columnNames[c].isEmpty())
            names.push_back(table.columnNames[c]);
        else
            names.push_back(c == 0 ? QStringLiteral("X") : QStringLiteral("Y%1").arg(c));
    }
    const int rows = table.values.GetRows();
    std::vector<double> values;
    values.reserve(std::size_t(rows) * std::size_t(columns));
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < columns; ++c)
            values.push_back(c < table.values.GetColumns() ? table.values.GetAt(r, c) : 0.0);
    }
    CGraphData data;
    if (columns > 0)
        fill(data, names, values);
    return data;
}

CGraphData DemonstrationData(bool bars)
{
    CGraphData data;
    std::vector<double> v;
    if (bars) {
        const double a[12] = {42, 38, 35, 30, 24, 18, 15, 17, 23, 31, 37, 41};
        const double b[12] = {30, 29, 27, 25, 22, 20, 19, 20, 22, 25, 28, 30};
        const double c[12] = {12, 14, 17, 21, 26, 30, 33, 32, 27, 21, 16, 13};
        for (int m = 0; m < 12; ++m) {
            v.insert(v.end(), {double(m + 1), a[m], b[m], c[m]});
        }
        fill(data, {QStringLiteral("Month"), QStringLiteral("Heating [kWh]"), QStringLiteral("Water [m3]"),
                    QStringLiteral("Solar [kWh]")},
             v);
        data->m_dataFlags |= 4; // every curve a bar curve
        return data;
    }
    // A second-order low-pass filter driven by a 5 V step at 1 ms.
    const int rows = 2001;
    const double w = 2 * M_PI * 1200, zeta = 0.25;
    const double wd = w * std::sqrt(1 - zeta * zeta);
    for (int i = 0; i < rows; ++i) {
        const double t = i * 5e-6;
        const double input = t >= 1e-3 ? 5.0 : 0.0;
        double out = 0;
        if (t >= 1e-3) {
            const double s = t - 1e-3;
            out = 5 * (1 - std::exp(-zeta * w * s) * (std::cos(wd * s) + zeta / std::sqrt(1 - zeta * zeta) * std::sin(wd * s)));
        }
        const double load = out / 47.0 * 1000; // mA through 47 ohms
        const double ripple = 0.05 * std::sin(2 * M_PI * 10e3 * t) + 0.02 * std::sin(2 * M_PI * 37e3 * t);
        v.insert(v.end(), {t, out + ripple, load, input});
    }
    fill(data, {QStringLiteral("Time"), QStringLiteral("V(out)"), QStringLiteral("I(load) mA"), QStringLiteral("V(in)")},
         v);
    return data;
}
