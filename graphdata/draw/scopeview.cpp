#include "graphdata/draw/scopeview.h"

#include "graphdata/draw/drawpass.h"
#include "graphdata/draw/drawtools.h"
#include "graphdata/graphcurve.h"

#include <QPainter>
#include <QPolygon>

#include <algorithm>
#include <cmath>

namespace {

const CScopeData_Data *scopeOf(const CGraphCurve &g)
{
    return const_cast<CGraphCurve &>(g).m_data.Data()->AsScope();
}

int channelState(const CScopeData_Data &scope, int channel)
{
    return channel >= 0 && channel < int(scope.m_channelStates.size()) ? scope.m_channelStates[std::size_t(channel)]
                                                                       : 0;
}

int plotMiddle(const CIntRect &plot)
{
    return (plot.top + plot.bottom) / 2;
}

double scopeYScale(const CIntRect &plot, double scale)
{
    return (plot.bottom - plot.top) / (scale * kScopeDivisionsY);
}

// A small filled triangle pointing in direction (dx, dy) with its tip at `tip`.
void drawMark(QPainter &p, QPoint tip, int dx, int dy, const QColor &color)
{
    const int s = 5;
    QPolygon mark;
    mark << tip << QPoint(tip.x() - dx * s - dy * s, tip.y() - dy * s - dx * s)
         << QPoint(tip.x() - dx * s + dy * s, tip.y() - dy * s + dx * s);
    p.setPen(color);
    p.setBrush(color);
    p.drawPolygon(mark);
}

} // namespace

void ScopeRowSpan(const CGraphCurve &g, int rowCount, int &first, int &last)
{
    first = 0;
    last = rowCount - 1;
    const CScopeData_Data *scope = scopeOf(g);
    if (scope && scope->m_rollMode && scope->m_rollLength > 0 && std::uint32_t(rowCount) > scope->m_rollLength)
        first = rowCount - int(scope->m_rollLength);
}

bool PrepareScopeView(CGraphCurve &g, int rowCount)
{
    const CScopeData_Data *scope = scopeOf(g);
    if (!scope || !(scope->m_secsPerDiv > 0) || !std::isfinite(scope->m_secsPerDiv))
        return false;
    const CGraphColumn *x = g.m_data.GetColumn(g.m_xColumnIndex);
    int first, last;
    ScopeRowSpan(g, std::min(rowCount, x ? x->m_count : 0), first, last);
    int r = first;
    while (r <= last && x->m_valid[r] != 1)
        ++r;
    if (r > last) {
        // no time yet: the screen still shows its divisions from 0
        g.m_xViewMin = 0;
    } else {
        g.m_xViewMin = x->m_values[r];
    }
    g.m_xViewMax = g.m_xViewMin + kScopeDivisionsX * scope->m_secsPerDiv;
    g.m_xTick = scope->m_secsPerDiv;
    g.m_xLog = 0;
    CGraph_Range &y = *g.Range(0);
    y.m_viewMin = -kScopeDivisionsY / 2;
    y.m_viewMax = kScopeDivisionsY / 2;
    y.m_tick = 1;
    y.m_logScale = 0;
    y.m_dbScale = 0;
    y.m_layout = CGraph_Range::LayoutShared;
    return true;
}

void MapScopeJob(const CDrawPass &pass, CCurveJob &job)
{
    const CIntRect &plot = pass.plot;
    const CCurveInfo &c = *job.curve;
    CPixelMapping &m = job.mapping;
    m.plot = plot;
    const double scale = c.m_scopeScale;
    if (!(scale > 0) || !std::isfinite(scale) || !std::isfinite(c.m_scopeOffset)) {
        job.usable = false;
        return;
    }
    // py = plotBottom - floor((y - yMin) * yScale) equals
    // plotMiddle - floor((y + offset) * yScale) with this yMin, since the
    // distance from the middle to the bottom is a whole number of pixels.
    m.yPre = 1;
    m.yScale = scopeYScale(plot, scale);
    m.yMin = -c.m_scopeOffset - (plot.bottom - plotMiddle(plot)) / m.yScale;
    job.usable = std::isfinite(m.yMin) && m.yScale > 0;
    int first, last;
    ScopeRowSpan(pass.g, job.rows, first, last);
    if (!pass.full)
        first = std::clamp(pass.g.m_lastDrawnRow, first, std::max(first, last));
    job.first = first;
    job.last = last;
}

void FlattenScopeChannels(const CDrawPass &pass, std::vector<CCurveJob> &jobs)
{
    const CScopeData_Data *scope = scopeOf(pass.g);
    if (!scope)
        return;
    for (CCurveJob &job : jobs) {
        if (!job.y || job.curve->Origin() != CCurveBasicInfo::OriginColumn ||
            channelState(*scope, job.curve->m_colIndex) != 2)
            continue;
        CGraphColumnPtr flat = CGraphColumnPtr::Adopt(CGraphColumn::Create(job.rows));
        std::copy(job.y->m_valid, job.y->m_valid + job.rows, flat->m_valid);
        flat->m_minValue = flat->m_maxValue = 0;
        job.y = flat;
        job.yMin = job.yMax = 0;
    }
}

void DrawScopeMarks(QPainter &p, const CGraphCurve &g, const std::vector<CCurveJob> &jobs, const CIntRect &plot,
                    bool bw)
{
    const CScopeData_Data *scope = scopeOf(g);
    if (!scope || !(scope->m_secsPerDiv > 0))
        return;
    p.save();
    p.setRenderHint(QPainter::Antialiasing, false);
    for (const CCurveJob &job : jobs) {
        const CCurveInfo &c = *job.curve;
        if (!(c.m_scopeScale > 0))
            continue;
        const QColor color = bw ? QColor(Qt::black) : ColorFromRef(c.m_color);
        const double py = plotMiddle(plot) - std::floor(c.m_scopeOffset * scopeYScale(plot, c.m_scopeScale));
        if (py >= plot.top && py <= plot.bottom)
            drawMark(p, QPoint(plot.left - 1, int(py)), 1, 0, color);
        if (scope->m_triggerChannel > 0 && c.m_colIndex == scope->m_triggerChannel) {
            const double ty = plotMiddle(plot) -
                              std::floor((scope->m_triggerLevel + c.m_scopeOffset) * scopeYScale(plot, c.m_scopeScale));
            if (ty >= plot.top && ty <= plot.bottom)
                drawMark(p, QPoint(plot.right + 1, int(ty)), -1, 0, color);
        }
    }
    if (!scope->m_rollMode)
        drawMark(p, QPoint(plot.left, plot.top - 1), 0, 1, bw ? QColor(Qt::black) : QColor(200, 120, 0));
    p.restore();
}

int AnimationRow(const CGraphCurve &g, int rowCount)
{
    if (!(g.m_displayFlags & CGraphCurve::DisplayAnimationCursor) || rowCount < 1)
        return -1;
    if (g.m_displayFlags & CGraphCurve::DisplaySliderAtEnd)
        return rowCount - 1;
    return std::clamp(g.m_animationRow, 0, rowCount - 1);
}

void DrawAnimation(QPainter &p, CGraphCurve &g, const CDrawPass &pass, const std::vector<CCurveJob> &jobs)
{
    g.m_sliderRect = CIntRect();
    const int row = AnimationRow(g, pass.rowCount);
    if (row < 0)
        return;
    const CIntRect &plot = pass.plot;
    p.save();
    p.setRenderHint(QPainter::Antialiasing, false);
    // The cursor: at the time of the current row, from the first curve
    // whose X holds it.
    for (const CCurveJob &job : jobs) {
        if (!job.usable || !job.x || row >= job.x->m_count || job.x->m_valid[row] != 1)
            continue;
        const double px = plot.left + std::floor(job.mapping.MapX(job.x->m_values[row]));
        if (px >= plot.left && px <= plot.right) {
            p.setPen(QPen(pass.bw ? QColor(Qt::black) : QColor(220, 40, 40), 1));
            p.drawLine(QPointF(px, plot.top), QPointF(px, plot.bottom));
        }
        break;
    }
    if (g.m_displayFlags & CGraphCurve::DisplaySlider) {
        const double h = pass.L.h;
        const QRect target = pass.target;
        const int left = plot.left + int(1.6 * h), right = plot.right - int(1.6 * h);
        const int bottom = target.bottom() - int(0.2 * h), top = bottom - int(h);
        if (right > left && bottom > top) {
            g.m_sliderRect = CIntRect{left, top, right, bottom};
            const QRect track(QPoint(left, top), QPoint(right, bottom));
            p.setPen(pass.fore);
            p.setBrush(pass.bw ? QColor(Qt::white) : QColor(225, 225, 225));
            p.drawRect(track.adjusted(0, int(0.3 * h), 0, -int(0.3 * h)));
            const double fraction = pass.rowCount > 1 ? double(row) / (pass.rowCount - 1) : 0;
            const int knobX = left + int(std::lround(fraction * (right - left)));
            const int half = std::max(3, int(0.3 * h));
            p.setBrush(pass.bw ? QColor(Qt::black) : QColor(60, 100, 180));
            p.drawRect(QRect(QPoint(knobX - half, top), QPoint(knobX + half, bottom)));
        }
    }
    p.restore();
}

int SliderRowAt(const CGraphCurve &g, int x, int rowCount)
{
    const CIntRect &r = g.m_sliderRect;
    if (r.right <= r.left || rowCount < 1)
        return -1;
    const double fraction = std::clamp(double(x - r.left) / (r.right - r.left), 0.0, 1.0);
    return int(std::lround(fraction * (rowCount - 1)));
}
