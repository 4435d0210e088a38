#include "graphdata/exchange/exportcolumns.h"

#include "graphdata/columnscan.h"
#include "graphdata/graphcurve.h"
#include "graphdata/graphsnapshot.h"
#include "graphdata/spectrum/spectrumjob.h"

#include <algorithm>
#include <map>

std::vector<const CGraphColumn *> CExportSelection::Pointers() const
{
    std::vector<const CGraphColumn *> list;
    for (const CGraphColumnPtr &c : columns)
        list.push_back(c.Get());
    return list;
}

namespace {

bool namedAsAxis(const QString &name)
{
    for (const char *n : {"TIME", "FREQUENCY", "FREQ", "INDEX"})
        if (name.compare(QLatin1String(n), Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

bool ordered(const CGraphColumn *c)
{
    return (c->m_orderFlags & (CGraphColumn::OrderAscending | CGraphColumn::OrderDescending)) != 0 &&
           (c->m_orderFlags & CGraphColumn::OrderNone) == 0;
}

CGraphColumnPtr cut(const CGraphColumn *c, int first, int last, const QString &name)
{
    const int rows = std::max(0, std::min(last, c->m_count - 1) - first + 1);
    CGraphColumnPtr out = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows, name));
    out->m_kind = c->m_kind;
    for (int i = 0; i < rows; ++i) {
        out->m_values[i] = c->m_values[first + i];
        out->m_valid[i] = c->m_valid[first + i];
    }
    RecomputeExtents(out.Get(), rows);
    return out;
}

// A copy of the first `rows` rows of a data column: the store may grow the
// original while the export runs.
CGraphColumnPtr rowsOf(const CGraphColumn *c, int rows) { return cut(c, 0, rows - 1, c->m_name); }

QString componentPrefix(int component)
{
    switch (component) {
    case CCurveBasicInfo::ComponentAngleDeg: return QStringLiteral("Angle(D)_");
    case CCurveBasicInfo::ComponentAngleRad: return QStringLiteral("Angle(R)_");
    case CCurveBasicInfo::ComponentReal: return QStringLiteral("Real_");
    case CCurveBasicInfo::ComponentImag: return QStringLiteral("Img_");
    default: return QString();
    }
}

struct XEntry
{
    CGraphColumnPtr column; // as exported (maybe cut)
    int first = 0, last = -1;
    bool isCut = false;
    int place = -1;
};

} // namespace

CExportSelection CollectExportColumns(const std::vector<CGraphCurve *> &graphs)
{
    CExportSelection result;
    std::vector<CGraphColumnPtr> xs, ys;
    std::vector<std::pair<int, int>> curveRefs; // x place, y place
    std::map<const CGraphColumn *, XEntry> xPlaces;

    for (CGraphCurve *graph : graphs) {
        if (!graph || graph->m_data.IsScope())
            continue;
        CGraphDataSnapshot snapshot;
        std::vector<int> wanted{graph->m_xColumnIndex};
        for (const CCurveInfo *curve : graph->m_curves)
            wanted.push_back(curve->m_colIndex);
        if (graph->m_xLog && !graph->m_spectrumMode)
            graph->m_data.EnsureLogColumn(graph->m_xColumnIndex);
        snapshot.Take(graph->m_data, wanted);
        CGraphDataSnapshot logs;
        logs.Take(graph->m_data, wanted, true);
        const int rows = snapshot.RowCount();

        for (int i = 0; i < graph->CurveCount(); ++i) {
            CCurveInfo *curve = graph->Curve(i);
            const CGraphColumn *x = nullptr, *y = nullptr;
            int yRows = rows, xRows = rows;
            QString yName;
            if (graph->m_spectrumMode && !curve->IsLimitLine()) {
                x = SpectrumXColumn(*graph);
                if (!curve->m_spectrumMagnitude)
                    CurveSpectrum(*graph, *curve);
                bool invalid;
                y = SpectrumCurveColumn(*graph, *curve, invalid);
                xRows = x ? x->m_count : 0;
                yRows = y ? y->m_count : 0;
                yName = componentPrefix(curve->Component()) + (y ? y->m_name : QString());
            } else if (curve->m_ownX) {
                x = graph->m_xLog && curve->m_ownXLog ? curve->m_ownXLog.Get() : curve->m_ownX.Get();
                y = curve->m_ownY.Get();
                xRows = x->m_count;
                yRows = y ? y->m_count : 0;
            } else {
                x = graph->m_xLog ? logs.Column(0) : snapshot.Column(0);
                const CGraph_Range *range = graph->Range(graph->AxisOf(*curve));
                const bool logY = range && range->m_logScale && !range->m_dbScale;
                if (curve->Origin() == CCurveBasicInfo::OriginColumn)
                    y = logY ? logs.Column(i + 1) : snapshot.Column(i + 1);
                else
                    y = curve->m_computedColumn ? curve->m_computedColumn.Get() : curve->m_ownY.Get();
                if (range && range->m_dbScale && curve->m_displayColumn)
                    y = curve->m_displayColumn.Get();
                if (y && curve->Origin() != CCurveBasicInfo::OriginColumn)
                    yRows = std::min(rows, y->m_count);
            }
            if (!x || !y)
                continue;
            // A computed column is named after its formula; the user knows
            // the curve by the name given to it, so that heads its column.
            const bool named = curve->Origin() == CCurveBasicInfo::OriginComputed && !curve->m_colLabel.isEmpty();
            if (named)
                yName = componentPrefix(graph->m_spectrumMode ? curve->Component() : 0) + curve->m_colLabel;
            else if (yName.isEmpty())
                yName = y->m_name;

            auto found = xPlaces.find(x);
            if (found == xPlaces.end()) {
                XEntry entry;
                double lo = 0, hi = 0;
                bool invalid;
                const bool any = RangeOf(x, 0, xRows - 1, lo, hi, invalid);
                const bool inside = any && lo >= graph->m_xViewMin && hi <= graph->m_xViewMax;
                if ((namedAsAxis(x->m_name) || ordered(x)) && inside) {
                    entry.column = x->m_count == xRows ? CGraphColumnPtr(const_cast<CGraphColumn *>(x))
                                                       : rowsOf(x, xRows);
                    entry.last = xRows - 1;
                } else {
                    // The rows inside the shown span.
                    int first = -1, last = -1;
                    for (int r = 0; r < xRows; ++r) {
                        if (x->m_valid[r] != 1)
                            continue;
                        const double v = x->m_values[r];
                        if (v >= graph->m_xViewMin && v <= graph->m_xViewMax) {
                            if (first < 0)
                                first = r;
                            last = r;
                        }
                    }
                    if (first < 0)
                        first = 0;
                    entry.first = first;
                    entry.last = last;
                    entry.isCut = true;
                    entry.column = cut(x, first, last, x->m_name);
                }
                entry.place = int(xs.size());
                xs.push_back(entry.column);
                found = xPlaces.emplace(x, entry).first;
            }
            const XEntry &entry = found->second;
            CGraphColumnPtr yOut;
            if (entry.isCut)
                yOut = cut(y, entry.first, std::min(entry.last, yRows - 1), yName);
            else if (y->m_count == yRows && yName == y->m_name)
                yOut = CGraphColumnPtr(const_cast<CGraphColumn *>(y));
            else
                yOut = cut(y, 0, yRows - 1, yName);
            curveRefs.emplace_back(entry.place, int(ys.size()));
            ys.push_back(yOut);
            result.colors.push_back(curve->m_color);
            result.labels << (curve->m_colLabel.isEmpty() ? yName : curve->m_colLabel);
        }
    }
    // X columns lead, in the order met, so the first is the first curve's.
    for (CGraphColumnPtr &c : xs)
        result.columns.push_back(c);
    for (CGraphColumnPtr &c : ys)
        result.columns.push_back(c);
    const int xCount = int(xs.size());
    for (const auto &[xp, yp] : curveRefs)
        result.references.push_back(std::uint32_t(xp) << 16 | std::uint32_t(xCount + yp));
    for (const CGraphColumnPtr &c : result.columns)
        result.rows = std::max(result.rows, c->m_count);
    if (!result.columns.empty())
        result.firstHeader = result.columns.front()->m_name;
    return result;
}
