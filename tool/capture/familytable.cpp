#include "tool/capture/familytable.h"

#include "tool/capture/numbertext.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// A value on the axis's own scale, or NaN where the axis cannot show it.
double onAxis(double v, bool logarithmic)
{
    if (!std::isfinite(v))
        return std::numeric_limits<double>::quiet_NaN();
    if (!logarithmic)
        return v;
    return v > 0 ? std::log10(v) : std::numeric_limits<double>::quiet_NaN();
}

double offAxis(double v, bool logarithmic)
{
    return logarithmic ? std::pow(10.0, v) : v;
}

// A curve's usable points, on the axes' scales, sorted by X; of two at
// one X the first traced stays.
CCurvePoints prepared(const CCurvePoints &curve, bool xLog, bool yLog)
{
    CCurvePoints out;
    for (const auto &[x, y] : curve) {
        const double u = onAxis(x, xLog), w = onAxis(y, yLog);
        if (!std::isnan(u) && !std::isnan(w))
            out.emplace_back(u, w);
    }
    std::stable_sort(out.begin(), out.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    out.erase(std::unique(out.begin(), out.end(), [](const auto &a, const auto &b) { return a.first == b.first; }),
              out.end());
    return out;
}

double interpolate(const CCurvePoints &curve, double u)
{
    if (curve.empty() || u < curve.front().first || u > curve.back().first)
        return std::numeric_limits<double>::quiet_NaN();
    const auto above = std::lower_bound(curve.begin(), curve.end(), u,
                                        [](const auto &p, double v) { return p.first < v; });
    if (above->first == u)
        return above->second;
    const auto below = above - 1;
    const double t = (u - below->first) / (above->first - below->first);
    return below->second + t * (above->second - below->second);
}

void appendCell(std::string &out, const QString &text)
{
    const bool quote = text.contains(u',') || text.contains(u'"') || text.contains(u'\n') || text.contains(u'\r');
    const QByteArray bytes = text.toUtf8();
    if (!quote) {
        out.append(bytes.constData(), std::size_t(bytes.size()));
        return;
    }
    out += '"';
    for (char c : bytes) {
        if (c == '"')
            out += '"';
        out += c;
    }
    out += '"';
}

} // namespace

CFamilyTable MakeFamilyTable(const std::vector<CCurvePoints> &curves, bool xLog, bool yLog)
{
    CFamilyTable table;
    std::vector<CCurvePoints> ready;
    std::vector<double> xs;
    for (const CCurvePoints &c : curves) {
        ready.push_back(prepared(c, xLog, yLog));
        for (const auto &p : ready.back())
            xs.push_back(p.first);
    }
    std::sort(xs.begin(), xs.end());
    xs.erase(std::unique(xs.begin(), xs.end()), xs.end());
    for (double u : xs)
        table.x.push_back(offAxis(u, xLog));
    for (const CCurvePoints &c : ready) {
        std::vector<double> column;
        column.reserve(xs.size());
        for (double u : xs) {
            const double w = interpolate(c, u);
            column.push_back(std::isnan(w) ? w : offAxis(w, yLog));
        }
        table.columns.push_back(std::move(column));
    }
    return table;
}

std::string FamilyCsvText(const CFamilyTable &table, const QString &xName, const QStringList &columnNames)
{
    std::string out;
    appendCell(out, xName);
    for (std::size_t c = 0; c < table.columns.size(); ++c) {
        out += ',';
        appendCell(out, columnNames.value(qsizetype(c)));
    }
    out += "\r\n";
    for (std::size_t row = 0; row < table.x.size(); ++row) {
        AppendFormatG(out, table.x[row], 12);
        for (const std::vector<double> &column : table.columns) {
            out += ',';
            if (!std::isnan(column[row]))
                AppendFormatG(out, column[row], 12);
        }
        out += "\r\n";
    }
    return out;
}
