#include "graphdata/draw/stripboxviews.h"

#include "graphdata/draw/axispaint.h"
#include "graphdata/draw/curvepaint.h"
#include "graphdata/draw/drawtools.h"
#include "graphdata/graphcurve.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPolygonF>

#include <cmath>

namespace {

QString curveName(const CCurveInfo &c)
{
    return c.m_colLabel.isEmpty() ? c.m_colName : c.m_colLabel;
}

// The box of the three-dimensional view: a front face of three quarters of
// the plot in each direction, at the lower left, and the depth running to
// the upper right corner.
struct Box
{
    QRectF front;
    QPointF depth;
    QPointF at(double fx, double fy, double z) const
    {
        return QPointF(front.left() + fx * front.width() + z * depth.x(),
                       front.bottom() - fy * front.height() + z * depth.y());
    }
};

// Guide lines on the floor at these depth fractions.
const double kFloorGuides[2] = {1.0 / 3.0, 2.0 / 3.0};
// Front face and depth: 3/4 of the plot for the face, the rest for depth.
const double kFaceFraction = 0.75;
// Box width to height, 4 to 3.
const double kBoxAspect = 1.3333333333333333;
// Digits of the box are drawn larger than the tick font.
const double kDigitScale = 1.5;

} // namespace

void LayoutStrips(const CGraphLayout &L, std::vector<CCurveJob> &jobs)
{
    int n = 0;
    for (const CCurveJob &job : jobs)
        n += job.usable ? 1 : 0;
    if (n == 0)
        return;
    const double height = double(L.plot.bottom - L.plot.top) / n;
    int i = 0;
    for (CCurveJob &job : jobs) {
        if (!job.usable)
            continue;
        CPixelMapping &m = job.mapping;
        m.plot = L.plot;
        m.plot.top = L.plot.top + int(std::lround(i * height));
        m.plot.bottom = L.plot.top + int(std::lround((i + 1) * height));
        double span = job.yMax - job.yMin;
        if (!(span != 0) || !std::isfinite(span))
            span = 1;
        const double lo = job.yMin - span / 10, hi = job.yMax + span / 10;
        m.yMin = lo;
        m.yScale = (m.plot.bottom - m.plot.top) / (hi - lo);
        ++i;
    }
}

void DrawStripFrames(QPainter &p, const CGraphCurve &g, const CGraphLayout &L, const std::vector<CCurveJob> &jobs,
                     bool bw)
{
    DrawGrid(p, g, L, bw);
    DrawAxes(p, g, L, bw);
    const QColor fore = bw ? QColor(Qt::black) : ColorFromRef(g.m_foreColor);
    const QFontMetricsF fm(L.xFont);
    p.setFont(L.xFont);
    for (const CCurveJob &job : jobs) {
        if (!job.usable)
            continue;
        const CPixelMapping &m = job.mapping;
        const CIntRect &r = m.plot;
        const CGraph_Range &range = *g.Range(job.axis);
        CAxisTickRequest q;
        q.viewMin = m.yMin;
        q.viewMax = m.yMin + (r.bottom - r.top) / m.yScale;
        q.xAxis = false;
        q.length = r.bottom - r.top;
        q.labelsOn = L.labelsShown;
        q.subDivisions = 0;
        const CAxisTicks ticks = ComputeAxisTicks(q, fm);
        if (!g.m_gridOn) {
            p.setPen(QPen(bw ? QColor(Qt::gray) : ColorFromRef(range.m_gridColor), 0,
                          PenStyleFromCode(range.m_gridPenStyle)));
            for (double v : ticks.major) {
                const int y = MapY(v, m.yMin, m.yScale, r.bottom);
                if (y > r.top && y < r.bottom)
                    p.drawLine(r.left + 1, y, r.right - 1, y);
            }
        }
        p.setPen(QPen(fore, 0));
        p.setBrush(Qt::NoBrush);
        p.drawRect(QRect(r.left, r.top, r.right - r.left, r.bottom - r.top));
        for (int i = 0; i < int(ticks.labelAt.size()); ++i) {
            const int y = MapY(ticks.labelAt[std::size_t(i)], m.yMin, m.yScale, r.bottom);
            if (y < r.top + fm.height() / 2 || y > r.bottom - fm.height() / 2)
                continue;
            const double w = fm.horizontalAdvance(ticks.labels[i]);
            p.drawText(QPointF(r.left - 0.3 * L.h - w, y - fm.height() / 2 + fm.ascent()), ticks.labels[i]);
        }
        p.setPen(bw ? QColor(Qt::black) : ColorFromRef(job.curve->m_color));
        p.drawText(QPointF(r.left + 0.5 * L.cw, r.top + 0.2 * L.h + fm.ascent()), curveName(*job.curve));
    }
}

int DrawThreeD(QPainter &p, const CGraphCurve &g, const CGraphLayout &L, std::vector<CCurveJob> &jobs, bool bw)
{
    const CIntRect &plot = L.plot;
    const double pw = plot.right - plot.left, ph = plot.bottom - plot.top;
    // The box keeps its 4 to 3 shape inside the plot.
    double bw4 = pw, bh3 = ph;
    if (bw4 / bh3 > kBoxAspect)
        bw4 = bh3 * kBoxAspect;
    else
        bh3 = bw4 / kBoxAspect;
    Box box;
    box.front = QRectF(plot.left, plot.bottom - kFaceFraction * bh3, kFaceFraction * bw4, kFaceFraction * bh3);
    box.depth = QPointF((1 - kFaceFraction) * bw4, -(1 - kFaceFraction) * bh3);

    const QColor fore = bw ? QColor(Qt::black) : ColorFromRef(g.m_foreColor);
    const CGraph_Range &range = *g.Range(0);
    const double yMin = range.m_viewMin, yMax = range.m_viewMax;
    const double xMin = g.m_xViewMin, xMax = g.m_xViewMax;
    if (!(xMax > xMin) || !(yMax > yMin))
        return 0;

    // Back wall, floor and left wall, with the grid on the walls.
    CAxisTickRequest qx;
    qx.viewMin = xMin;
    qx.viewMax = xMax;
    qx.step = g.m_xTick;
    qx.length = box.front.width();
    qx.subDivisions = 0;
    qx.labelsOn = L.labelsShown;
    QFont digits = FontFromDescription(range.m_tickFont, kDigitScale);
    const QFontMetricsF fm(digits);
    const CAxisTicks xt = ComputeAxisTicks(qx, fm);
    CAxisTickRequest qy = qx;
    qy.viewMin = yMin;
    qy.viewMax = yMax;
    qy.step = range.m_tick;
    qy.xAxis = false;
    qy.length = box.front.height();
    const CAxisTicks yt = ComputeAxisTicks(qy, fm);

    const QColor gridColor = bw ? QColor(Qt::gray) : ColorFromRef(range.m_gridColor);
    p.setRenderHint(QPainter::Antialiasing, true);
    p.setPen(QPen(gridColor, 0, Qt::DotLine));
    for (double v : yt.major) {
        const double fy = (v - yMin) / (yMax - yMin);
        p.drawLine(box.at(0, fy, 1), box.at(1, fy, 1));
        p.drawLine(box.at(0, fy, 0), box.at(0, fy, 1));
    }
    for (double v : xt.major) {
        const double fx = (v - xMin) / (xMax - xMin);
        p.drawLine(box.at(fx, 0, 0), box.at(fx, 0, 1));
        p.drawLine(box.at(fx, 0, 1), box.at(fx, 1, 1));
    }
    for (double z : kFloorGuides)
        p.drawLine(box.at(0, 0, z), box.at(1, 0, z));
    p.setPen(QPen(fore, 0));
    const QPointF wall[4] = {box.at(0, 0, 1), box.at(1, 0, 1), box.at(1, 1, 1), box.at(0, 1, 1)};
    p.drawPolygon(wall, 4);
    p.drawLine(box.at(0, 0, 0), box.at(0, 0, 1));
    p.drawLine(box.at(1, 0, 0), box.at(1, 0, 1));
    p.drawLine(box.at(0, 1, 0), box.at(0, 1, 1));
    p.drawLine(box.at(0, 0, 0), box.at(1, 0, 0));
    p.drawLine(box.at(0, 0, 0), box.at(0, 1, 0));

    p.setFont(digits);
    for (int i = 0; i < int(xt.labelAt.size()); ++i) {
        const double fx = (xt.labelAt[std::size_t(i)] - xMin) / (xMax - xMin);
        const QPointF at = box.at(fx, 0, 0);
        const double w = fm.horizontalAdvance(xt.labels[i]);
        p.drawText(QPointF(at.x() - w / 2, at.y() + 4 + fm.ascent()), xt.labels[i]);
    }
    for (int i = 0; i < int(yt.labelAt.size()); ++i) {
        const double fy = (yt.labelAt[std::size_t(i)] - yMin) / (yMax - yMin);
        const QPointF at = box.at(0, fy, 0);
        const double w = fm.horizontalAdvance(yt.labels[i]);
        p.drawText(QPointF(at.x() - 0.3 * L.h - w, at.y() - fm.height() / 2 + fm.ascent()), yt.labels[i]);
    }

    // Ribbons, the farthest curve first.
    int n = 0;
    for (const CCurveJob &job : jobs)
        n += job.usable ? 1 : 0;
    if (n == 0)
        return 0;
    const double ribbon = 0.5 / n;
    int quads = 0;
    int slot = n;
    for (auto it = jobs.rbegin(); it != jobs.rend(); ++it) {
        CCurveJob &job = *it;
        if (!job.usable)
            continue;
        --slot;
        // Each curve on its own axis's range, on the front face.
        const CGraph_Range &axis = *g.Range(job.axis);
        if (!(axis.m_viewMax > axis.m_viewMin))
            continue;
        CPixelMapping face;
        face.xMin = xMin;
        face.xScale = box.front.width() / (xMax - xMin);
        face.yMin = axis.m_viewMin;
        face.yScale = box.front.height() / (axis.m_viewMax - axis.m_viewMin);
        face.plot = CIntRect{int(box.front.left()), int(box.front.top()), int(box.front.right()),
                             int(box.front.bottom())};
        const double zc = (slot + 0.5) / n;
        const QPointF d0 = box.depth * (zc - ribbon / 2), d1 = box.depth * (zc + ribbon / 2);
        CPolylinePixels line;
        BuildPolyline(line, job.Arrays(), job.first, job.last, face, 1, false, false);
        const QColor color = bw ? QColor(Qt::black) : ColorFromRef(job.curve->m_color);
        p.setPen(Qt::NoPen);
        p.setBrush(bw ? QColor(Qt::white) : color.lighter(130));
        const QPoint *pt = line.m_points.data();
        for (int runLength : line.m_runLengths) {
            QPolygonF nearEdge, farEdge;
            for (int k = 0; k + 1 < runLength; ++k) {
                const QPointF a = QPointF(pt[k]), b = QPointF(pt[k + 1]);
                const QPointF quad[4] = {a + d0, b + d0, b + d1, a + d1};
                p.drawPolygon(quad, 4);
                ++quads;
            }
            for (int k = 0; k < runLength; ++k) {
                nearEdge << QPointF(pt[k]) + d0;
                farEdge << QPointF(pt[k]) + d1;
            }
            p.setPen(QPen(color.darker(130), 0));
            p.drawPolyline(farEdge);
            p.drawPolyline(nearEdge);
            p.setPen(Qt::NoPen);
            pt += runLength;
        }
    }
    p.setRenderHint(QPainter::Antialiasing, false);
    return quads;
}
