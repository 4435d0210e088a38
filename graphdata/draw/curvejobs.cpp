#include "graphdata/draw/curvejobs.h"

#include "graphdata/columnsearch.h"
#include "graphdata/columntransform.h"
#include "graphdata/draw/drawpass.h"
#include "graphdata/draw/scopeview.h"
#include "graphdata/graphcurve.h"
#include "graphdata/spectrum/spectrumjob.h"

#include <cmath>

namespace {

bool isLogAxis(const CGraph_Range &r)
{
    return r.m_logScale != 0 && r.m_dbScale == 0;
}

// The log or dB form of a column that the data set does not keep: made
// again when missing, of another form or of another length.
const CGraphColumn *displayForm(CCurveInfo &curve, const CGraphColumn *source, int rows, bool db)
{
    CGraphColumnPtr &form = curve.m_displayColumn;
    const std::uint32_t kind = db ? CGraphColumn::KindDb : CGraphColumn::KindLog;
    if (!form || form->m_count != rows || !(form->m_kind & kind)) {
        form = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows));
        bool invalid = false;
        if (db)
            DbOf(source, form.Get(), rows, invalid);
        else
            LogOf(source, form.Get(), rows, invalid);
    }
    return form.Get();
}

// The Y mapping of a curve on its axis, in the plot or, for a sliced axis,
// in its slice.  False when the axis shows no usable range.
bool yMapping(const CGraphCurve &g, CCurveJob &job, const CIntRect &plot)
{
    const CGraph_Range &r = *g.Range(job.axis);
    CPixelMapping &m = job.mapping;
    m.plot = plot;
    const double height = plot.bottom - plot.top;
    if (job.layout == CGraph_Range::LayoutShared) {
        return AxisMapping(r.m_viewMin, r.m_viewMax, height, m.yPre, m.yMin, m.yScale);
    }
    double band = height;
    if (job.layout == CGraph_Range::LayoutSlices) {
        band = height / std::max(1, job.slotCount);
        m.plot.top = plot.top + int(std::lround(band * job.slot));
        m.plot.bottom = plot.top + int(std::lround(band * (job.slot + 1)));
        band = m.plot.bottom - m.plot.top;
    }
    const double span = job.yMax - job.yMin;
    if (!std::isfinite(span))
        return false;
    if (span == 0) {
        m.yMin = job.yMin - 1;
        m.yScale = band / 2;
    } else {
        m.yMin = job.yMin - span / 20;
        m.yScale = band / (1.1 * span);
    }
    return true;
}

} // namespace

bool OrderedColumn(const CGraphColumn *x)
{
    const std::uint32_t f = x->m_orderFlags;
    return (f & CGraphColumn::OrderAscending) && !(f & (CGraphColumn::OrderDescending | CGraphColumn::OrderNone));
}

bool SpectrumJob(const CGraphCurve &g, const CCurveInfo &curve)
{
    return g.m_spectrumMode && !curve.IsLimitLine();
}

void EnsureLogForms(CGraphCurve &g, bool threeD)
{
    if (g.m_spectrumMode) {
        // The grid, and the results of curves that have none yet (added
        // since the switch); a running transform is not entered again.
        if (!g.m_frequencyColumn && !g.m_spectrumRunning)
            PrepareSpectrum(g);
        for (CCurveInfo *curve : g.m_curves) {
            if (!curve->m_spectrumMagnitude && !curve->IsLimitLine())
                CurveSpectrum(g, *curve);
        }
        return;
    }
    if (g.m_xLog && !threeD)
        g.m_data.EnsureLogColumn(g.m_xColumnIndex);
    for (const CCurveInfo *curve : g.m_curves) {
        if (curve->Origin() == CCurveBasicInfo::OriginColumn && isLogAxis(*g.Range(g.AxisOf(*curve))))
            g.m_data.EnsureLogColumn(curve->m_colIndex);
    }
}

std::vector<CCurveJob> MakeCurveJobs(CGraphCurve &g)
{
    std::vector<int> perAxis(std::size_t(g.RangeCount()), 0);
    std::vector<CCurveJob> jobs(std::size_t(g.CurveCount()));
    for (int i = 0; i < g.CurveCount(); ++i) {
        CCurveJob &job = jobs[std::size_t(i)];
        job.index = i;
        job.curve = g.Curve(i);
        job.axis = g.AxisOf(*job.curve);
        job.layout = g.Range(job.axis)->m_layout;
        job.slot = perAxis[std::size_t(job.axis)]++;
    }
    for (CCurveJob &job : jobs)
        job.slotCount = perAxis[std::size_t(job.axis)];
    return jobs;
}

void TakeColumns(CDrawPass &pass, std::vector<CCurveJob> &jobs)
{
    CGraphCurve &g = pass.g;
    CGraphData_Data *data = pass.data;
    const bool logX = g.m_xLog && !pass.threeD;
    CGraphColumn *xData = logX ? data->GetLogColumn(g.m_xColumnIndex) : data->GetColumn(g.m_xColumnIndex);
    for (CCurveJob &job : jobs) {
        CCurveInfo &curve = *job.curve;
        const CGraph_Range &range = *g.Range(job.axis);
        const CGraphColumn *y = nullptr;
        if (SpectrumJob(g, curve)) {
            // The frequency (or its log form) against the component the
            // curve shows, in its axis's form.
            const CGraphColumn *x = SpectrumXColumn(g);
            bool invalid = false;
            y = SpectrumCurveColumn(g, curve, invalid);
            if (!x || !y)
                continue;
            job.x = CGraphColumnPtr(const_cast<CGraphColumn *>(x));
            job.y = CGraphColumnPtr(const_cast<CGraphColumn *>(y));
            job.yMin = y->m_minValue;
            job.yMax = y->m_maxValue;
            job.hasInvalid = invalid || x->m_hasInvalid != 0;
            job.rows = std::min(x->m_count, y->m_count);
            continue;
        }
        switch (curve.Origin()) {
        case CCurveBasicInfo::OriginColumn:
            y = isLogAxis(range) && !pass.threeD ? data->GetLogColumn(curve.m_colIndex)
                                                 : data->GetColumn(curve.m_colIndex);
            job.x = CGraphColumnPtr(xData);
            break;
        case CCurveBasicInfo::OriginComputed:
            y = curve.m_computedColumn.Get();
            job.x = CGraphColumnPtr(xData);
            break;
        case CCurveBasicInfo::OriginOwnColumns:
            y = curve.m_ownY.Get();
            job.x = curve.m_ownX;
            job.ownX = true;
            break;
        default:
            break;
        }
        if (!y || !job.x)
            continue;
        job.y = CGraphColumnPtr(const_cast<CGraphColumn *>(y));
        job.yMin = y->m_minValue;
        job.yMax = y->m_maxValue;
        job.hasInvalid = y->m_hasInvalid != 0 || job.x->m_hasInvalid != 0;
        job.rows = job.ownX ? std::min(job.x->m_count, y->m_count) : std::min(pass.rowCount, y->m_count);
        job.rows = std::min(job.rows, job.x->m_count);
    }
}

void AddDisplayForms(CDrawPass &pass, std::vector<CCurveJob> &jobs)
{
    CGraphCurve &g = pass.g;
    for (CCurveJob &job : jobs) {
        if (!job.y || pass.threeD || SpectrumJob(g, *job.curve))
            continue;
        const CGraph_Range &range = *g.Range(job.axis);
        const bool db = range.m_dbScale != 0;
        // A limit line's levels are in dB over a microvolt already: on a dB
        // axis they are drawn as they stand.
        const bool dbLimit = db && job.curve->IsLimitLine();
        const bool needsForm =
            !dbLimit && (db || (isLogAxis(range) && job.curve->Origin() != CCurveBasicInfo::OriginColumn));
        if (needsForm) {
            const CGraphColumn *form = displayForm(*job.curve, job.y.Get(), job.rows, db);
            job.y = CGraphColumnPtr(const_cast<CGraphColumn *>(form));
            job.yMin = form->m_minValue;
            job.yMax = form->m_maxValue;
        }
        if (job.ownX && g.m_xLog) {
            CCurveInfo &curve = *job.curve;
            if (!curve.m_ownXLog || curve.m_ownXLog->m_count != curve.m_ownX->m_count) {
                curve.m_ownXLog = CGraphColumnPtr::Adopt(CGraphColumn::Create(curve.m_ownX->m_count));
                bool invalid;
                LogOf(curve.m_ownX.Get(), curve.m_ownXLog.Get(), curve.m_ownX->m_count, invalid);
            }
            job.x = curve.m_ownXLog;
        }
    }
}

void MapCurveJobs(CDrawPass &pass, std::vector<CCurveJob> &jobs)
{
    CGraphCurve &g = pass.g;
    const CIntRect &plot = pass.plot;
    const double xMin = pass.xMin, xMax = pass.xMax;
    CPixelMapping x;
    const bool canMap = AxisMapping(xMin, xMax, plot.right - plot.left, x.xPre, x.xMin, x.xScale) &&
                        (!pass.full || !pass.L.tooSmall);
    const bool scope = g.m_data.IsScope() && !pass.overview;
    const int animationRow = pass.overview ? -1 : AnimationRow(g, pass.rowCount);
    for (CCurveJob &job : jobs) {
        if (!job.y || !canMap || job.rows < 1)
            continue;
        job.mapping.xPre = x.xPre;
        job.mapping.xMin = x.xMin;
        job.mapping.xScale = x.xScale;
        if (scope) {
            MapScopeJob(pass, job);
            continue;
        }
        if (pass.overview) {
            const CGraph_Range &r = *g.Range(job.axis);
            CPixelMapping &m = job.mapping;
            const double height = plot.bottom - plot.top;
            m.plot = plot;
            if (!AxisMapping(r.m_fullMin, r.m_fullMax, height, m.yPre, m.yMin, m.yScale))
                AxisMapping(r.m_fullMin - 1, r.m_fullMin + 1, height, m.yPre, m.yMin, m.yScale);
            job.usable = true;
        } else if (!pass.strip) {
            job.usable = yMapping(g, job, plot);
        } else {
            job.usable = true; // LayoutStrips maps it
        }
        const int lastRow = job.rows - 1;
        const bool searchLinear = g.m_xLog || g.m_spectrumMode;
        const bool ordered = !searchLinear && (pass.data->m_ordered || OrderedColumn(job.x.Get()));
        if (pass.overview || g.m_xyMode || job.ownX) {
            job.first = 0;
            job.last = lastRow;
        } else if (!pass.full) {
            // Only rows after the last pass: the searches start there, so
            // that their cost follows the new rows.
            job.first = std::min(std::max(0, g.m_lastDrawnRow), lastRow);
            job.last = FirstAtOrAfter(job.x.Get(), xMax, job.first, lastRow, ordered);
        } else {
            job.first = LastAtOrBefore(job.x.Get(), xMin, 0, lastRow, ordered);
            job.last = FirstAtOrAfter(job.x.Get(), xMax, 0, lastRow, ordered);
        }
        // The animation cursor: nothing after the current row.
        if (animationRow >= 0 && !job.ownX)
            job.last = std::min(job.last, animationRow);
    }
}

void ReleaseColumns(std::vector<CCurveJob> &jobs)
{
    for (CCurveJob &job : jobs) {
        job.x.reset();
        job.y.reset();
    }
}
