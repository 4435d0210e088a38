#include "graphdata/draw/graphlayout.h"

#include "graphdata/axislabels.h"
#include "graphdata/axislayout.h"
#include "graphdata/draw/drawtools.h"
#include "graphdata/graphcurve.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace {

// Stands in for an empty title while measuring, so that the legend keeps
// room for a title typed in later.
const char kEmptyTitle[] = "_________";

bool onSlicedAxis(const CGraphCurve &graph, const CCurveInfo &curve)
{
    return graph.Range(graph.AxisOf(curve))->m_layout == CGraph_Range::LayoutSlices;
}

QString curveLabel(const CCurveInfo &curve)
{
    return curve.m_colLabel.isEmpty() ? curve.m_colName : curve.m_colLabel;
}

CAxisTicks yTicks(const CGraph_Range &range, const QFont &font, double length, bool labelsShown)
{
    CAxisTickRequest q;
    q.viewMin = range.m_viewMin;
    q.viewMax = range.m_viewMax;
    q.step = range.m_tick;
    q.log = range.m_logScale != 0 && range.m_dbScale == 0;
    q.xAxis = false;
    q.integerTicks = (range.m_axisFlags & CGraph_Range::AxisIntegerTicks) != 0;
    q.labelsOn = labelsShown && (range.m_axisFlags & CGraph_Range::AxisLabels) && range.m_labelOn;
    q.subDivisions = (range.m_axisFlags & CGraph_Range::AxisMinorGrid) ? range.m_subDivisions : 0;
    q.length = length;
    return ComputeAxisTicks(q, QFontMetricsF(font));
}

} // namespace

CLegendPlace LayoutLegend(const CGraphCurve &graph, const QFont &font, QPoint origin, int wrapRight, bool column,
                          bool measuring)
{
    Q_UNUSED(measuring);
    CLegendPlace legend;
    legend.position = graph.m_legendPos;
    const QFontMetricsF fm(font);
    const double lineH = std::ceil(fm.height());
    const double rowH = std::ceil(lineH * 1.2);
    const double cw = fm.averageCharWidth();
    const int sampleW = int(std::lround(3 * cw));
    const int gap = std::max(1, int(std::lround(cw / 4)));
    const int spacing = int(std::lround(1.5 * cw));

    int x = origin.x(), y = origin.y();
    const int rowStart = origin.x();
    legend.rows = 1;
    bool firstInRow = true;
    auto place = [&](CLegendEntry entry, int textWidth, bool sample) {
        const int width = (sample ? sampleW + gap : 0) + textWidth;
        if (!firstInRow && (column || x + width > wrapRight)) {
            x = rowStart;
            y += int(rowH);
            ++legend.rows;
        }
        if (sample) {
            entry.sampleRect = QRect(x, y, sampleW, int(lineH));
            x += sampleW + gap;
        }
        entry.textRect = QRect(x, y, textWidth, int(lineH));
        x += textWidth + spacing;
        firstInRow = false;
        legend.rect = legend.rect.isNull() ? entry.textRect.united(entry.sampleRect.isNull() ? entry.textRect
                                                                                            : entry.sampleRect)
                                           : legend.rect.united(entry.textRect);
        if (!entry.sampleRect.isNull())
            legend.rect = legend.rect.united(entry.sampleRect);
        legend.entries.push_back(entry);
    };

    CLegendEntry title;
    title.curve = -1;
    title.text = graph.m_title;
    const QString measured = graph.m_title.isEmpty() ? QString::fromLatin1(kEmptyTitle) : graph.m_title;
    place(title, int(std::ceil(fm.horizontalAdvance(measured))), false);
    for (int i = 0; i < graph.CurveCount(); ++i) {
        const CCurveInfo &curve = *graph.Curve(i);
        if (onSlicedAxis(graph, curve))
            continue;
        CLegendEntry entry;
        entry.curve = i;
        entry.text = curveLabel(curve);
        place(entry, int(std::ceil(fm.horizontalAdvance(entry.text))), true);
    }
    return legend;
}

CGraphLayout ComputeLayout(CGraphCurve &graph, const QRect &target, const QRect *forcedPlot, double fontScale)
{
    CGraphLayout L;
    L.target = target;
    L.xFont = FontFromDescription(graph.m_xLabelFont, fontScale);
    L.titleFont = FontFromDescription(graph.m_titleFont, fontScale);
    const QFontMetricsF fm(L.xFont);
    L.h = fm.height();
    L.cw = fm.averageCharWidth();
    const double h = L.h;
    L.labelsShown = graph.m_hideLabels == 0;
    L.xLabelsShown = L.labelsShown && graph.m_xLabelsOn != 0 && (graph.m_xAxisFlags & CGraph_Range::AxisLabels);
    const bool strip = graph.m_viewKind == 3;
    const bool threeD = graph.m_viewKind == 1;

    graph.SortAxes();
    bool anyFit = false;
    for (const CCurveInfo *curve : graph.m_curves) {
        if (graph.Range(graph.AxisOf(*curve))->m_layout != CGraph_Range::LayoutShared)
            anyFit = true;
    }

    double top = target.top() + 0.5 * h;
    double bottom = target.bottom() - 0.25 * h - (L.labelsShown ? (L.xLabelsShown ? 3 * h : 1.5 * h) : 0.5 * h);
    double left = target.left() + 0.5 * h;
    double right = target.right() - 0.5 * h;

    const int legendPos = std::clamp(graph.m_legendPos, 0, 4);
    const double gapToLegend = 0.5 * h;
    if (legendPos <= 2) {
        const CLegendPlace measure =
            LayoutLegend(graph, L.titleFont, QPoint(0, 0), int(right - left), false, true);
        const double rows = measure.rect.height() + gapToLegend;
        if (legendPos == 2)
            bottom -= rows;
        else
            top += rows;
    } else {
        const CLegendPlace measure = LayoutLegend(graph, L.titleFont, QPoint(0, 0), 0, true, true);
        if (legendPos == 3)
            left += measure.rect.width() + gapToLegend;
        else
            right -= measure.rect.width() + gapToLegend;
    }
    if (anyFit && !strip && !threeD) {
        const double fitW = target.width() / 4.0;
        L.fitArea = QRect(int(left), int(top), int(fitW), int(bottom - top));
        left += fitW;
    }

    // Y axes of the shared kind, nearest first on each side.
    const double gap = 0.5 * h;
    std::vector<double> leftWidths, rightWidths;
    std::vector<CYAxisPlace> leftAxes, rightAxes;
    if (!strip && !threeD) {
        for (int index : graph.m_axisOrder) {
            const CGraph_Range &range = *graph.Range(index);
            CYAxisPlace place;
            place.range = index;
            place.side = range.m_axisSide;
            place.font = FontFromDescription(range.m_labelFont, fontScale);
            // Labels wider than a quarter of the target shrink their font
            // to 4/5 until they fit or the font stops getting smaller.
            for (int round = 0; round < 500; ++round) {
                const QFontMetricsF yfm(place.font);
                place.ticks = yTicks(range, place.font, bottom - top, L.labelsShown);
                place.width = place.ticks.widest > 0 ? place.ticks.widest + 0.3 * yfm.height() + 0.3 * h : 0.4 * h;
                if (place.width <= target.width() / 4.0)
                    break;
                const int size = place.font.pixelSize();
                const int smaller = size * 4 / 5;
                if (smaller == size || smaller < 1)
                    break;
                place.font.setPixelSize(smaller);
            }
            if (place.side > 0) {
                leftAxes.push_back(place);
                leftWidths.push_back(place.width);
            } else {
                rightAxes.push_back(place);
                rightWidths.push_back(place.width);
            }
        }
        // m_axisOrder runs from the farthest right axis to the farthest
        // left one: nearest first means right axes reversed.
        std::reverse(rightAxes.begin(), rightAxes.end());
        std::reverse(rightWidths.begin(), rightWidths.end());
    } else {
        // Strip and three-dimensional views carry their own value labels.
        left += 7 * L.cw;
    }
    double leftTotal = 0, rightTotal = 0;
    for (double w : leftWidths)
        leftTotal += w + gap;
    for (double w : rightWidths)
        rightTotal += w + gap;
    if (!leftWidths.empty())
        leftTotal -= gap;
    if (!rightWidths.empty())
        rightTotal -= gap;

    QRect plot(QPoint(int(std::lround(left + leftTotal)), int(std::lround(top))),
               QPoint(int(std::lround(right - rightTotal)), int(std::lround(bottom))));
    if (forcedPlot)
        plot = *forcedPlot;
    if (plot.width() < 8 || plot.height() < 8) {
        L.tooSmall = true;
        if (plot.width() < 2)
            plot.setRight(plot.left() + 1);
        if (plot.height() < 2)
            plot.setBottom(plot.top() + 1);
    }
    L.plot = QRectToEdges(plot);

    std::vector<CAxisSpan> leftAreas, rightAreas;
    StackAxesOutward(L.plot.left, L.plot.right, leftWidths, rightWidths, gap, leftAreas, rightAreas);
    for (std::size_t i = 0; i < leftAxes.size(); ++i) {
        CYAxisPlace &a = leftAxes[i];
        a.area = QRect(QPoint(int(std::floor(leftAreas[i].left)), L.plot.top),
                       QPoint(int(std::ceil(leftAreas[i].right)), L.plot.bottom));
        a.axisX = int(std::lround(leftAreas[i].right));
        L.yAxes.push_back(a);
    }
    for (std::size_t i = 0; i < rightAxes.size(); ++i) {
        CYAxisPlace &a = rightAxes[i];
        a.area = QRect(QPoint(int(std::floor(rightAreas[i].left)), L.plot.top),
                       QPoint(int(std::ceil(rightAreas[i].right)), L.plot.bottom));
        a.axisX = int(std::lround(rightAreas[i].left));
        L.yAxes.push_back(a);
    }

    // X axis
    CAxisTickRequest q;
    q.viewMin = graph.m_xViewMin;
    q.viewMax = graph.m_xViewMax;
    q.step = graph.m_xTick;
    q.log = graph.m_xLog != 0;
    q.xAxis = true;
    q.integerTicks = (graph.m_xAxisFlags & CGraph_Range::AxisIntegerTicks) != 0;
    q.dateDays = (graph.m_xAxisFlags & CGraph_Range::AxisDateDays) != 0;
    q.labelsOn = L.xLabelsShown;
    q.subDivisions = (graph.m_xAxisFlags & CGraph_Range::AxisMinorGrid) ? graph.m_xSubDivisions : 0;
    q.length = L.plot.right - L.plot.left;
    L.xTicks = ComputeAxisTicks(q, fm);
    QString title = graph.m_xAxisName;
    const QString unit = AxisUnit(title);
    if (!unit.isEmpty() && !title.contains(u'['))
        title += QStringLiteral(" [") + unit + u']';
    L.xTitle = title;
    L.xBand = QRect(QPoint(L.plot.left, L.plot.bottom + 1),
                    QPoint(L.plot.right, L.plot.bottom + int(std::lround(L.xLabelsShown ? 3 * h : h))));

    // The legend at its place.
    QPoint origin;
    bool column = false;
    int wrapRight = L.plot.right;
    const CLegendPlace measure = LayoutLegend(graph, L.titleFont, QPoint(0, 0), L.plot.right - L.plot.left,
                                              legendPos >= 3, true);
    switch (legendPos) {
    case 0:
    case 1: {
        int x = L.plot.left;
        if (legendPos == 1)
            x += int(std::lround(double(graph.m_legendOffset) / 10000.0 * (L.plot.right - L.plot.left)));
        origin = QPoint(x, L.plot.top - measure.rect.height() - int(gapToLegend));
        wrapRight = std::max(L.plot.right, x + 1);
        break;
    }
    case 2: {
        const double down = L.xLabelsShown ? 3 * h : L.labelsShown ? h : 0.5 * h;
        origin = QPoint(L.plot.left, L.plot.bottom + int(std::lround(down)));
        break;
    }
    case 3: {
        int edge = L.plot.left;
        for (const CYAxisPlace &a : L.yAxes)
            edge = std::min(edge, a.area.left());
        if (!L.fitArea.isNull())
            edge = std::min(edge, L.fitArea.left());
        origin = QPoint(edge - int(gapToLegend) - measure.rect.width(), L.plot.top);
        column = true;
        break;
    }
    default: {
        int edge = L.plot.right;
        for (const CYAxisPlace &a : L.yAxes)
            edge = std::max(edge, a.area.right());
        origin = QPoint(edge + int(gapToLegend), L.plot.top);
        column = true;
        break;
    }
    }
    L.legend = LayoutLegend(graph, L.titleFont, origin, wrapRight, column, false);
    return L;
}
