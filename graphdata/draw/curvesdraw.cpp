#include "graphdata/draw/curvesdraw.h"

#include "graphdata/columnsearch.h"
#include "graphdata/draw/curvejobs.h"
#include "graphdata/draw/curvepaint.h"
#include "graphdata/draw/drawpass.h"
#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/stripboxviews.h"
#include "graphdata/graphcurve.h"

#include <QFontMetricsF>
#include <QPainter>

namespace {

struct CCurvesStage
{
    CDrawPass &pass;
    double arrowLength = 0;
    int barCurves = 0;
    int barSlot = 0;
    int fromRow = 0;
    int points = 0;

    void drawBars(CCurveJob &job, const CCurveArrays &arrays, const QColor &color)
    {
        int shown = 0;
        double lo = 0, hi = 0;
        for (int i = std::max(0, job.first); i <= job.last && i < job.rows; ++i) {
            if (arrays.xValid[i] != 1)
                continue;
            const double v = arrays.xValues[i];
            lo = shown == 0 ? v : std::min(lo, v);
            hi = shown == 0 ? v : std::max(hi, v);
            ++shown;
        }
        const double w = BarHalfWidth(barCurves, shown, hi - lo);
        const double shift = BarShift(barCurves, barSlot++, w);
        points += DrawCurveBars(pass.p, arrays, job.first, job.last, job.mapping, w, shift, color);
    }

    // Only the rows added since the last pass, joined on to the cache.
    void drawAdded(CCurveJob &job, const CCurveArrays &arrays, const QPen &pen, const QColor &color, bool arrow)
    {
        const CGraphCurve &g = pass.g;
        CCurveInfo &curve = *job.curve;
        auto *cache = static_cast<CPolylinePixels *>(curve.LinePixels());
        const bool ordered = !g.m_xLog && (pass.data->m_ordered || OrderedColumn(job.x.Get()));
        const int last = job.ownX || g.m_xyMode
                             ? job.rows - 1
                             : FirstAtOrAfter(job.x.Get(), pass.xMax, std::min(cache->m_lastRow, job.rows - 1),
                                              job.rows - 1, ordered);
        if (last <= cache->m_walk.lastWalked)
            return;
        int symbolsFrom = 0;
        const int from = ResumePolyline(*cache, arrays, last, arrow, symbolsFrom);
        if (from >= 0)
            points += DrawPolylinePixels(pass.p, *cache, pen, curve.m_symbol, 1, color, arrowLength, from, symbolsFrom);
    }

    void draw(CCurveJob &job)
    {
        const CGraphCurve &g = pass.g;
        CCurveInfo &curve = *job.curve;
        const QColor color = pass.bw ? QColor(Qt::black) : ColorFromRef(curve.m_color);
        const CCurveArrays arrays = job.Arrays();
        if (curve.IsBar() && !pass.overview) {
            drawBars(job, arrays, color);
            return;
        }
        if (curve.m_symbol == SymbolPixel && !pass.overview) {
            const int first = pass.full ? job.first : std::max(job.first, fromRow + 1);
            points += DrawCurvePixels(pass.p, arrays, first, job.last, job.mapping, 0, color);
            return;
        }
        const bool symbols = curve.m_symbol >= SymbolCircle && curve.m_symbol <= SymbolStar && !pass.overview;
        const bool arrow =
            (curve.m_specialDraw & CCurveBasicInfo::SpecialArrow) && (g.m_xyMode || job.ownX) && !pass.overview;
        const QPen pen = CurvePen(curve.m_connect ? curve.m_lineThickness : 0, color, pass.lineScale, pass.overview);
        if (!pass.full) {
            drawAdded(job, arrays, pen, color, arrow);
            return;
        }
        const int thickness = curve.m_lineThickness;
        CPolylineCache *held = pass.overview ? curve.OverviewPixels() : curve.LinePixels();
        auto *cache = static_cast<CPolylinePixels *>(held);
        // Oscilloscope pictures change with every trigger: never cached.
        if (!cache || g.m_data.IsScope() || !cache->IsValidFor(job.first, job.last, job.mapping, thickness, symbols)) {
            auto *made = new CPolylinePixels;
            BuildPolyline(*made, arrays, job.first, job.last, job.mapping, thickness, symbols, arrow);
            if (pass.overview)
                curve.SetOverviewPixels(made);
            else
                curve.SetLinePixels(made);
            made->Release();
            cache = made;
        }
        cache->m_arrowLength = arrowLength;
        points += DrawPolylinePixels(pass.p, *cache, pen, curve.m_symbol, 1, color, arrowLength);
    }
};

} // namespace

bool CanDrawIncrementally(const CDrawPass &pass, const std::vector<CCurveJob> &jobs)
{
    // The cursor and the slider move with the rows.
    if (pass.g.m_displayFlags & CGraphCurve::DisplayAnimationCursor)
        return false;
    for (const CCurveJob &job : jobs) {
        if (!job.usable)
            continue;
        const CCurveInfo &c = *job.curve;
        const auto *cache = static_cast<const CPolylinePixels *>(c.LinePixels());
        if (c.IsBar() || pass.strip || pass.threeD ||
            (c.m_symbol != SymbolPixel && (!cache || !(cache->m_mapping == job.mapping))))
            return false;
    }
    return true;
}

int DrawCurves(CDrawPass &pass, std::vector<CCurveJob> &jobs)
{
    CGraphCurve &g = pass.g;
    pass.p.setRenderHint(QPainter::Antialiasing, false);
    if (pass.threeD)
        return pass.full ? DrawThreeD(pass.p, g, pass.L, jobs, pass.bw) : 0;

    CCurvesStage stage{pass};
    stage.arrowLength =
        0.9 * (pass.full ? pass.L.h : QFontMetricsF(FontFromDescription(g.m_xLabelFont, pass.fontScale)).height());
    for (const CCurveJob &job : jobs)
        stage.barCurves += job.curve->IsBar() && job.usable ? 1 : 0;
    stage.fromRow = g.m_lastDrawnRow;
    const int highlighted = g.m_highlightedCurve;
    for (CCurveJob &job : jobs) {
        if (job.usable && job.index != highlighted)
            stage.draw(job);
    }
    if (highlighted >= 0 && highlighted < int(jobs.size()) && jobs[std::size_t(highlighted)].usable)
        stage.draw(jobs[std::size_t(highlighted)]);
    return stage.points;
}
