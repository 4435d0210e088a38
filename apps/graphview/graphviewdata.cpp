#include "graphviewdata.h"

#include "graphdata/columnscan.h"
#include "support/languagestring.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

// Texts of the program.
enum : int {
    TextCannotRead = 43605,
    TextNoPoints = 43606,
    TextTooLarge = 43630,
    TextInvalidCells = 43631,
    TextEmptyCells = 43632,
    TextExtraCells = 43633,
    TextBadCells = 43634,
    TextBadCellsOneLine = 43639,
    TextStopped = 43638,
};

// From a count's text to the one for a single cell.
const int kOneCell = 10;

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

void PrepareFileData(CGraphData &data)
{
    if (data.ColumnCount() == 1) {
        // A series alone: its row numbers become X.
        const int rows = data.RowCount();
        CGraphData indexed;
        indexed.Create(1, 2, rows, 0);
        CGraphColumn *index = indexed.GetColumn(0);
        CGraphColumn *values = indexed.GetColumn(1);
        const CGraphColumn *source = data.GetColumn(0);
        for (int r = 0; r < rows; ++r) {
            index->m_values[r] = r + 1;
            index->m_valid[r] = 1;
        }
        if (rows > 0) {
            std::memcpy(values->m_values, source->m_values, std::size_t(rows) * sizeof(double));
            std::memcpy(values->m_valid, source->m_valid, std::size_t(rows));
        }
        index->m_name = QStringLiteral("Index");
        index->m_minValue = 1;
        index->m_maxValue = rows;
        values->CopySettingsFrom(*source);
        values->m_hasInvalid = source->m_hasInvalid;
        indexed->m_rowCount = rows;
        data = indexed;
    }
    for (int c = 0; c < data.ColumnCount(); ++c) {
        CGraphColumn *column = data.GetColumn(c);
        if (column->m_name.trimmed().isEmpty())
            column->m_name = c == 0 ? QStringLiteral("X") : QStringLiteral("Y%1").arg(c);
    }
    markOrder(data);
}

QString BadCellsText(const QString &fileName, const CTextImportReport &report)
{
    if (!report.HasBadCells())
        return QString();
    QStringList parts;
    // Each count has a text for one cell and one for several.
    auto count = [&parts](std::int64_t n, int text) {
        if (n == 1)
            parts << LanguageString(text + kOneCell);
        else if (n > 1)
            parts << LanguageString(text).arg(n);
    };
    count(report.invalidCells, TextInvalidCells);
    count(report.missingCells, TextEmptyCells);
    count(report.extraCells, TextExtraCells);
    QStringList lines;
    for (std::int64_t line : report.firstBadLines)
        lines << QString::number(line);
    if (report.firstBadLines.size() == CTextImportReport::kBadLinesKept)
        lines.back() += QStringLiteral(", ...");
    const int text = lines.size() == 1 ? TextBadCellsOneLine : TextBadCells;
    return LanguageString(text).arg(fileName, parts.join(QStringLiteral("; ")), lines.join(QStringLiteral(", ")));
}

QString ImportFailureText(const QString &path, TextImport result, const CTextImportReport &report)
{
    const double mb = 1024.0 * 1024.0;
    switch (result) {
    case TextImport::Read:
        return QString();
    case TextImport::OpenFailed:
        return LanguageString(TextCannotRead).arg(path, report.error);
    case TextImport::NoData:
        return LanguageString(TextNoPoints).arg(path);
    case TextImport::TooLarge:
        return LanguageString(TextTooLarge)
            .arg(path)
            .arg(std::ceil(double(report.bytesNeeded) / mb), 0, 'f', 0)
            .arg(std::floor(double(report.bytesAvailable) / mb), 0, 'f', 0);
    case TextImport::Cancelled:
        return LanguageString(TextStopped).arg(path);
    }
    return QString();
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
