#include "graphdata/draw/curvepaint.h"

#include "graphdata/draw/segmentclip.h"

#include <QPainter>
#include <QPolygon>

#include <algorithm>
#include <cmath>

void DrawSymbol(QPainter &painter, QPoint c, int symbol, double s, const QColor &color)
{
    const int k = std::max(1, int(std::lround(s)));
    painter.setPen(QPen(color, 1));
    painter.setBrush(color);
    switch (symbol) {
    case SymbolCircle:
        painter.drawEllipse(c, 3 * k, 3 * k);
        break;
    case SymbolSquare: {
        const QPoint p[4] = {c + QPoint(-2 * k, -2 * k), c + QPoint(-2 * k, 2 * k), c + QPoint(2 * k, 2 * k),
                             c + QPoint(2 * k, -2 * k)};
        painter.drawPolygon(p, 4);
        break;
    }
    case SymbolTriangle: {
        const QPoint p[3] = {c + QPoint(0, -3 * k), c + QPoint(-3 * k, 3 * k), c + QPoint(3 * k, 3 * k)};
        painter.drawPolygon(p, 3);
        break;
    }
    case SymbolStar: {
        const QPoint p[5] = {c + QPoint(0, -4 * k), c + QPoint(2 * k, 3 * k), c + QPoint(-4 * k, -k),
                             c + QPoint(4 * k, -k), c + QPoint(-2 * k, 3 * k)};
        painter.drawPolygon(p, 5, Qt::WindingFill);
        break;
    }
    default:
        break;
    }
}

void DrawArrowHead(QPainter &painter, QPointF from, QPointF to, double length, double angle, bool fill,
                   const QColor &color)
{
    const double dx = to.x() - from.x(), dy = to.y() - from.y();
    const double d = std::hypot(dx, dy);
    if (!(d > 0) || !(length > 0))
        return;
    const double ux = dx / d, uy = dy / d;
    const double a = angle * M_PI / 180;
    const double back = length * std::cos(a), side = length * std::sin(a);
    const QPointF base(to.x() - ux * back, to.y() - uy * back);
    const QPointF p[3] = {to, QPointF(base.x() - uy * side, base.y() + ux * side),
                          QPointF(base.x() + uy * side, base.y() - ux * side)};
    painter.setPen(QPen(color, 1));
    painter.setBrush(fill ? QBrush(color) : QBrush(Qt::NoBrush));
    painter.drawPolygon(p, 3);
}

int DrawPolylinePixels(QPainter &painter, const CPolylinePixels &cache, const QPen &pen, int symbol, double s,
                       const QColor &color, double arrowLength, int fromPoint, int fromSymbol)
{
    int drawn = 0;
    if (pen.style() != Qt::NoPen && !cache.m_points.empty()) {
        painter.setPen(pen);
        painter.setBrush(Qt::NoBrush);
        const QPoint *points = cache.m_points.data();
        int start = 0;
        for (int n : cache.m_runLengths) {
            const int end = start + n;
            if (end > fromPoint) {
                const int from = std::max(start, fromPoint - 1);
                if (end - from >= 2) {
                    painter.drawPolyline(points + from, end - from);
                    drawn += end - from;
                }
            }
            start = end;
        }
    }
    if (symbol >= SymbolCircle && symbol <= SymbolStar) {
        for (std::size_t i = std::size_t(std::max(0, fromSymbol)); i < cache.m_symbolPoints.size(); ++i)
            DrawSymbol(painter, cache.m_symbolPoints[i], symbol, s, color);
        drawn += int(cache.m_symbolPoints.size()) - std::max(0, fromSymbol);
    }
    if (cache.m_arrowOn && InsidePlotF(cache.m_arrowTo, cache.m_mapping.plot))
        DrawArrowHead(painter, cache.m_arrowFrom, cache.m_arrowTo, arrowLength, cache.m_arrowAngle,
                      cache.m_arrowFill != 0, color);
    return drawn;
}

int DrawCurvePixels(QPainter &painter, const CCurveArrays &a, int first, int last, const CPixelMapping &m,
                    int shift, const QColor &color)
{
    if (a.rows < 1 || !a.xValues || !a.yValues)
        return 0;
    first = std::max(first, 0);
    last = std::min(last, a.rows - 1);
    const CIntRect &r = m.plot;
    std::vector<QPoint> points;
    points.reserve(std::size_t(std::max(0, std::min(last - first + 1, 1 << 20))));
    for (int i = first; i <= last; ++i) {
        if (a.xValid[i] != 1 || a.yValid[i] != 1)
            continue;
        const double px = r.left + std::floor(m.MapX(a.xValues[i])) + shift;
        const double py = r.bottom - std::floor(m.MapY(a.yValues[i]));
        if (px < r.left || px > r.right || py < r.top || py > r.bottom)
            continue;
        points.emplace_back(int(px), int(py));
    }
    painter.setPen(QPen(color, 1));
    painter.drawPoints(points.data(), int(points.size()));
    return int(points.size());
}

double BarHalfWidth(int n, int m, double span)
{
    if (!(span > 0) || n < 1 || m < 1)
        return 1;
    if (n > 1)
        return span / (double((n - 1) / 5 + (n + 1) * 2) * m);
    return span / (double((m - 1) / 20) + 2.0 * m);
}

double BarShift(int n, int slot, double w)
{
    const double spacing = 11.0 / 5.0 * w;
    double first;
    if (n % 2 == 0)
        first = -(n / 2 - 1) * spacing - w - w / 10;
    else
        first = -((n - 1) / 2) * spacing;
    return first + slot * spacing;
}

int DrawCurveBars(QPainter &painter, const CCurveArrays &a, int first, int last, const CPixelMapping &m,
                  double w, double shift, const QColor &color)
{
    if (a.rows < 1 || !a.xValues || !a.yValues)
        return 0;
    first = std::max(first, 0);
    last = std::min(last, a.rows - 1);
    const CIntRect &r = m.plot;
    const QRect plot(QPoint(r.left, r.top), QPoint(r.right, r.bottom));
    // The zero line, or the plot bottom when 0 lies below the view.
    double base = std::clamp(r.bottom - std::floor(m.MapY(0)), -1e7, 1e7);
    base = std::clamp(base, double(r.top), double(r.bottom));
    painter.setPen(QPen(color.darker(130), 1));
    painter.setBrush(color);
    int drawn = 0;
    auto toX = [&](double x) { return std::clamp(r.left + std::floor(m.MapX(x)), -1e7, 1e7); };
    for (int i = first; i <= last; ++i) {
        if (a.xValid[i] != 1 || a.yValid[i] != 1)
            continue;
        const double x = a.xValues[i] + shift;
        const double x1 = toX(x - w), x2 = toX(x + w);
        const double y = std::clamp(r.bottom - std::floor(m.MapY(a.yValues[i])), -1e7, 1e7);
        QRect bar(QPoint(int(std::min(x1, x2)), int(std::min(y, base))),
                  QPoint(int(std::max(x1, x2)), int(std::max(y, base))));
        bar = bar.intersected(plot);
        if (bar.isEmpty())
            continue;
        // drawRect paints one pixel past the right and bottom edges
        painter.drawRect(bar.adjusted(0, 0, -1, -1));
        ++drawn;
    }
    return drawn;
}
