#pragma once
// A family of curves as one table: a shared X column (every X of every
// curve, in rising order) and a column per curve, each curve's Y at those X
// values, interpolated between its neighbouring points.  Written as CSV, it
// opens in a spreadsheet with the curves side by side.

#include <QString>
#include <QStringList>
#include <string>
#include <utility>
#include <vector>

using CCurvePoints = std::vector<std::pair<double, double>>;

struct CFamilyTable {
    std::vector<double> x;
    // columns[c][row]: curve c at x[row]; NaN outside the curve's X range
    // (nothing is extrapolated) and where the curve gives no value.
    std::vector<std::vector<double>> columns;
};

// Points are taken in any order; a curve is interpolated along its points
// sorted by X (two points at one X: the first one traced counts).  On a
// logarithmic axis the interpolation runs in decades, as the axis is drawn;
// non-positive values and values that are not finite are left out there.
CFamilyTable MakeFamilyTable(const std::vector<CCurvePoints> &curves, bool xLog, bool yLog);

// The table as CSV: a header of the X name and the column names (quoted
// where they hold a comma, a quote or a line end), then one line a row, the
// numbers with twelve significant digits, an empty cell where a curve has no
// value; CR LF line ends.
std::string FamilyCsvText(const CFamilyTable &table, const QString &xName, const QStringList &columnNames);
