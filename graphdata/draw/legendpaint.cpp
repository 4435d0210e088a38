#include "graphdata/draw/legendpaint.h"

#include "graphdata/draw/axispaint.h"
#include "graphdata/draw/curvepaint.h"
#include "graphdata/draw/drawtools.h"
#include "graphdata/graphcurve.h"

#include <QFontMetricsF>
#include <QPainter>

void DrawLegend(QPainter &p, CGraphCurve &graph, const CGraphLayout &L, bool bw, double lineScale)
{
    graph.m_curveHitRects.assign(std::size_t(graph.CurveCount()), CIntRect());
    graph.m_titleRect = CIntRect();
    p.setFont(L.titleFont);
    const QFontMetricsF fm(L.titleFont);
    const QColor fore = bw ? QColor(Qt::black) : ColorFromRef(graph.m_foreColor);
    for (const CLegendEntry &e : L.legend.entries) {
        if (e.curve < 0) {
            graph.m_titleRect = QRectToEdges(e.textRect);
            if (!e.text.isEmpty()) {
                p.setPen(fore);
                p.drawText(QPointF(e.textRect.left(), e.textRect.top() + fm.ascent()), e.text);
            }
            continue;
        }
        if (e.curve >= graph.CurveCount())
            continue;
        const CCurveInfo &curve = *graph.Curve(e.curve);
        const QColor color = bw ? QColor(Qt::black) : ColorFromRef(curve.m_color);
        const int mid = e.sampleRect.center().y();
        const QPen pen = CurvePen(curve.m_lineThickness, color, lineScale, false);
        if (curve.IsBar()) {
            p.setPen(QPen(color.darker(130), 1));
            p.setBrush(color);
            const int h = std::max(3, e.sampleRect.height() / 2);
            p.drawRect(QRect(e.sampleRect.left() + e.sampleRect.width() / 4, mid - h / 2, e.sampleRect.width() / 2, h));
        } else {
            if (pen.style() != Qt::NoPen && curve.m_symbol != SymbolPixel) {
                p.setPen(pen);
                p.drawLine(e.sampleRect.left(), mid, e.sampleRect.right(), mid);
            }
            if (curve.m_symbol >= SymbolCircle && curve.m_symbol <= SymbolStar)
                DrawSymbol(p, QPoint(e.sampleRect.center().x(), mid), curve.m_symbol, 1, color);
            else if (curve.m_symbol == SymbolPixel) {
                p.setPen(QPen(color, 1));
                for (int x = e.sampleRect.left(); x <= e.sampleRect.right(); x += 3)
                    p.drawPoint(x, mid);
            }
        }
        p.setPen(color);
        p.setBrush(Qt::NoBrush);
        p.drawText(QPointF(e.textRect.left(), e.textRect.top() + fm.ascent()), e.text);
        graph.m_curveHitRects[std::size_t(e.curve)] = QRectToEdges(e.textRect);
    }
}

void DrawCurveExtentLabels(QPainter &p, const CGraphLayout &L, const std::vector<CCurveJob> &jobs, bool bw)
{
    std::vector<CFitLabel> fits;
    for (const CCurveJob &job : jobs) {
        if (job.layout == CGraph_Range::LayoutShared || !job.usable)
            continue;
        CFitLabel f;
        f.curve = job.index;
        f.slice = job.layout == CGraph_Range::LayoutSlices;
        f.band = EdgesToQRect(job.mapping.plot);
        f.min = job.yMin;
        f.max = job.yMax;
        f.color = bw ? QColor(Qt::black) : ColorFromRef(job.curve->m_color);
        f.text = job.curve->m_colLabel.isEmpty() ? job.curve->m_colName : job.curve->m_colLabel;
        fits.push_back(f);
    }
    DrawFitLabels(p, L, fits);
}
