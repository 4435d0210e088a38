#include "graphdata/draw/axispaint.h"

#include "graphdata/axislabels.h"
#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/polylinecache.h"
#include "graphdata/graphcurve.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

QColor textColor(std::uint32_t color, bool blackWhite)
{
    return blackWhite ? QColor(Qt::black) : ColorFromRef(color);
}

// Pixels of an axis over the plot, through the same mapping as the
// curves, so that ranges near the ends of the doubles map as well: from
// the plot's left edge rightward for X, from its bottom upward for Y.
struct CAxisPixels
{
    double pre = 1, min = 0, scale = 0;
    int origin = 0, dir = 1;
    static CAxisPixels X(double lo, double hi, const CIntRect &r) { return CAxisPixels(lo, hi, r.left, r.right - r.left, 1); }
    static CAxisPixels Y(const CGraph_Range &range, const CIntRect &r)
    {
        return CAxisPixels(range.m_viewMin, range.m_viewMax, r.bottom, r.bottom - r.top, -1);
    }
    int operator()(double v) const
    {
        return origin + dir * int(std::clamp(std::floor((v * pre - min) * scale), -1e7, 1e7));
    }

private:
    CAxisPixels(double lo, double hi, int from, int pixels, int direction) : origin(from), dir(direction)
    {
        AxisMapping(lo, hi, pixels, pre, min, scale);
    }
};

void verticalLines(QPainter &p, const std::vector<double> &at, const CGraphCurve &g, const CIntRect &r)
{
    const CAxisPixels map = CAxisPixels::X(g.m_xViewMin, g.m_xViewMax, r);
    for (double v : at) {
        const int x = map(v);
        if (x > r.left && x < r.right)
            p.drawLine(x, r.top + 1, x, r.bottom - 1);
    }
}

void horizontalLines(QPainter &p, const std::vector<double> &at, const CGraph_Range &range, const CIntRect &r)
{
    const CAxisPixels map = CAxisPixels::Y(range, r);
    for (double v : at) {
        const int y = map(v);
        if (y > r.top && y < r.bottom)
            p.drawLine(r.left + 1, y, r.right - 1, y);
    }
}

QPen gridPen(int style, std::uint32_t color, bool blackWhite)
{
    QPen pen(blackWhite ? QColor(Qt::gray) : ColorFromRef(color), 0, PenStyleFromCode(style));
    return pen;
}

// The title of a Y axis along the outer edge of its area, reading upward,
// centred on the plot's height and cut short where it is longer.
void drawYTitle(QPainter &p, const CYAxisPlace &a, const CIntRect &r)
{
    const QFontMetricsF fm(a.titleFont);
    const int height = r.bottom - r.top;
    const QString text = fm.elidedText(a.title, Qt::ElideRight, height);
    const double w = fm.horizontalAdvance(text);
    // Turned by -90 degrees, the text's baseline runs upward and its ascent
    // points to the left.
    const double baseline = a.side > 0 ? a.area.left() + fm.ascent() : a.area.right() - fm.descent();
    p.save();
    p.setFont(a.titleFont);
    p.translate(baseline, (r.top + r.bottom) / 2.0 + w / 2);
    p.rotate(-90);
    p.drawText(QPointF(0, 0), text);
    p.restore();
}

} // namespace

void DrawGrid(QPainter &p, const CGraphCurve &g, const CGraphLayout &L, bool bw)
{
    if (g.m_gridOn || L.tooSmall)
        return;
    const CIntRect &r = L.plot;
    if (g.m_xAxisFlags & CGraph_Range::AxisMinorGrid) {
        p.setPen(gridPen(g.m_minorPenStyle, g.m_minorColor, bw));
        verticalLines(p, L.xTicks.minor, g, r);
    }
    if (g.m_xAxisFlags & CGraph_Range::AxisMajorGrid) {
        p.setPen(gridPen(g.m_majorPenStyle, g.m_majorColor, bw));
        verticalLines(p, L.xTicks.major, g, r);
    }
    for (const CYAxisPlace &a : L.yAxes) {
        const CGraph_Range &range = *g.Range(a.range);
        if (range.m_axisFlags & CGraph_Range::AxisMinorGrid) {
            p.setPen(gridPen(range.m_secondPenStyle, range.m_secondColor, bw));
            horizontalLines(p, a.ticks.minor, range, r);
        }
        if (range.m_axisFlags & CGraph_Range::AxisMajorGrid) {
            p.setPen(gridPen(range.m_gridPenStyle, range.m_gridColor, bw));
            horizontalLines(p, a.ticks.major, range, r);
        }
    }
}

void DrawAxes(QPainter &p, const CGraphCurve &g, const CGraphLayout &L, bool bw)
{
    const CIntRect &r = L.plot;
    const QColor fore = bw ? QColor(Qt::black) : ColorFromRef(g.m_foreColor);
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(fore, 0));
    p.drawRect(QRect(r.left, r.top, r.right - r.left, r.bottom - r.top));
    if (L.tooSmall)
        return;

    // X axis: ticks inside the frame, labels 4 pixels below it.
    const int tick = std::max(2, int(std::lround(0.3 * L.h)));
    const QColor xColor = textColor(g.m_xTextColor, bw);
    const CAxisPixels xMap = CAxisPixels::X(g.m_xViewMin, g.m_xViewMax, r);
    p.setPen(QPen(xColor, 0));
    for (double v : L.xTicks.major) {
        const int x = xMap(v);
        if (x >= r.left && x <= r.right)
            p.drawLine(x, r.bottom, x, r.bottom - tick);
    }
    p.setFont(L.xLabelFont);
    const QFontMetricsF fm(L.xLabelFont);
    const int labelTop = r.bottom + int(kXLabelGap);
    double lastRight = -1e9;
    for (int i = 0; i < int(L.xTicks.labelAt.size()); ++i) {
        const int x = xMap(L.xTicks.labelAt[std::size_t(i)]);
        if (x < r.left - 1 || x > r.right + 1)
            continue;
        const QString &text = L.xTicks.labels[i];
        const double w = fm.horizontalAdvance(text);
        if (g.m_xRotation != 0) {
            double dx, dy;
            RotatedLabelOffset(g.m_xRotation, w, fm.height(), dx, dy);
            p.save();
            p.translate(x - dx, labelTop + fm.ascent() + dy);
            p.rotate(-g.m_xRotation);
            p.drawText(QPointF(0, 0), text);
            p.restore();
            continue;
        }
        double left = XLabelLeft(x, w, L.target.right());
        left = std::max(left, double(L.target.left()));
        if (left < lastRight + 2)
            continue; // never let two labels touch
        p.drawText(QPointF(left, labelTop + fm.ascent()), text);
        lastRight = left + w;
    }
    if (L.xLabelsShown && !L.xTitle.isEmpty()) {
        p.setFont(L.xFont);
        const QFontMetricsF tfm(L.xFont);
        const double top = r.bottom + XLabelLineDepth(L.h);
        const double w = tfm.horizontalAdvance(L.xTitle);
        const double centre = (r.left + r.right) / 2.0;
        p.drawText(QPointF(std::max(double(L.target.left()), centre - w / 2), top + tfm.ascent()), L.xTitle);
    }

    // Y axes: the nearest on each side stands on the frame with its ticks
    // inside; the others have a line of their own with ticks outside.
    for (const CYAxisPlace &a : L.yAxes) {
        const CGraph_Range &range = *g.Range(a.range);
        const QColor color = textColor(range.m_textColor, bw);
        const bool leftSide = a.side > 0;
        const bool onFrame = a.side == 1 || a.side == -1;
        const CAxisPixels map = CAxisPixels::Y(range, r);
        p.setPen(QPen(color, 0));
        if (!onFrame)
            p.drawLine(a.axisX, r.top, a.axisX, r.bottom);
        const int dir = leftSide ? 1 : -1; // toward the plot
        for (double v : a.ticks.major) {
            const int y = map(v);
            if (y < r.top || y > r.bottom)
                continue;
            if (onFrame)
                p.drawLine(a.axisX, y, a.axisX + dir * tick, y);
            else
                p.drawLine(a.axisX, y, a.axisX - dir * tick, y);
        }
        p.setFont(a.font);
        const QFontMetricsF yfm(a.font);
        const double gap = 0.3 * L.h + (onFrame ? 0 : tick);
        // Labels run upward; one that would touch the one below is left out
        // (a log axis of many decades in a low window labels every decade).
        double lastTop = 1e9;
        for (int i = 0; i < int(a.ticks.labelAt.size()); ++i) {
            const int y = map(a.ticks.labelAt[std::size_t(i)]);
            if (y < r.top - 1 || y > r.bottom + 1)
                continue;
            const double top = y - yfm.height() / 2;
            if (top + yfm.height() > lastTop)
                continue;
            const QString &text = a.ticks.labels[i];
            const double w = yfm.horizontalAdvance(text);
            const double x = leftSide ? a.axisX - gap - w : a.axisX + gap;
            p.drawText(QPointF(x, top + yfm.ascent()), text);
            lastTop = top;
        }
        if (!a.title.isEmpty())
            drawYTitle(p, a, r);
    }
}

void DrawFitLabels(QPainter &p, const CGraphLayout &L, const std::vector<CFitLabel> &labels)
{
    if (L.fitArea.isNull())
        return;
    p.setFont(L.xFont);
    const QFontMetricsF fm(L.xFont);
    const double row = (0.15 + 1) * L.h;
    double y = L.fitArea.top();
    const int width = L.fitArea.width() - int(L.cw);
    for (const CFitLabel &f : labels) {
        const QString range = LabelText(f.min, 4) + QStringLiteral(" … ") + LabelText(f.max, 4);
        const QString text = fm.elidedText(f.text, Qt::ElideRight, width * 0.55) + QStringLiteral("  ") + range;
        p.setPen(f.color);
        if (f.slice) {
            p.save();
            p.setClipRect(QRect(L.fitArea.left(), f.band.top(), L.fitArea.width(), f.band.height()));
            const double mid = (f.band.top() + f.band.bottom()) / 2.0;
            p.drawText(QPointF(L.fitArea.left(), mid - fm.height() / 2 + fm.ascent()),
                       fm.elidedText(text, Qt::ElideRight, width));
            p.restore();
        } else {
            if (y + fm.height() > L.fitArea.bottom())
                break;
            p.drawText(QPointF(L.fitArea.left(), y + fm.ascent()), fm.elidedText(text, Qt::ElideRight, width));
            y += row;
        }
    }
}
