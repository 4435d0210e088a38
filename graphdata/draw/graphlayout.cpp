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

// Labels made smaller to fit stop at this pixel size.
const int kSmallestLabelPixels = 7;

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

QRect InsideMargins(const QRect &target, const CIntRect &margins, double fontScale)
{
    auto scaled = [fontScale](std::int32_t v) { return int(std::lround(std::max(0, v) * fontScale)); };
    // Margins that leave less than a pixel keep one, where their shares put it.
    auto side = [](int from, int length, int before, int after, int &start, int &size) {
        if (before + after < length) {
            start = from + before;
            size = length - before - after;
        } else {
            start = from + int(std::lround(double(before) / std::max(1, before + after) * (length - 1)));
            size = 1;
        }
    };
    int x, w, y, hgt;
    side(target.left(), target.width(), scaled(margins.left), scaled(margins.right), x, w);
    side(target.top(), target.height(), scaled(margins.top), scaled(margins.bottom), y, hgt);
    return QRect(x, y, w, hgt);
}

CLegendPlace LayoutLegend(const CGraphCurve &graph, const QFont &font, QPoint origin, int wrapRight, bool column,
                          bool measuring, int maxHeight)
{
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
    bool full = false; // rows past maxHeight are left out
    auto place = [&](CLegendEntry entry, int textWidth, bool sample) {
        const int room = wrapRight - rowStart - (sample ? sampleW + gap : 0);
        if (!column && textWidth > room && room > 0) {
            // A label wider than the legend's room is cut short.
            entry.text = fm.elidedText(entry.text, Qt::ElideRight, room);
            textWidth = std::min(room, int(std::ceil(fm.horizontalAdvance(entry.text))));
        }
        const int width = (sample ? sampleW + gap : 0) + textWidth;
        if (!firstInRow && (column || x + width > wrapRight)) {
            if (full || y + int(rowH) + int(lineH) > origin.y() + maxHeight) {
                full = true;
                return;
            }
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
    if (graph.m_title.isEmpty() && !measuring) {
        // No indent for a missing title: its box (to drag the legend by)
        // lies over the first line sample and takes no room in the row.
        title.textRect = QRect(x, y, sampleW, int(lineH));
        legend.rect = title.textRect;
        legend.entries.push_back(title);
    } else {
        const QString measured = graph.m_title.isEmpty() ? QString::fromLatin1(kEmptyTitle) : graph.m_title;
        place(title, int(std::ceil(fm.horizontalAdvance(measured))), false);
    }
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

CGraphLayout ComputeLayout(CGraphCurve &graph, const QRect &fullTarget, const QRect *forcedPlot, double fontScale)
{
    CGraphLayout L;
    const QRect target = InsideMargins(fullTarget, graph.m_axisMargins, fontScale);
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

    const double top0 = target.top() + 0.5 * h;
    const double bottom0 =
        target.bottom() - 0.25 * h - (L.labelsShown ? (L.xLabelsShown ? 3 * h : 1.5 * h) : 0.5 * h);
    const double left0 = target.left() + 0.5 * h;
    const double right0 = target.right() - 0.5 * h;
    double top = top0, bottom = bottom0, left = left0, right = right0;

    const int legendPos = std::clamp(graph.m_legendPos, 0, 4);
    const double gapToLegend = 0.5 * h;
    // The legend above or below never takes the plot: the plot keeps half
    // the window's height where there is that much, and half of what the
    // margins leave otherwise; rows past that room are left out.
    const double available = std::max(0.0, bottom0 - top0);
    const int legendRoom = int(std::max(0.0, std::min(available / 2, available - target.height() / 2.0) - gapToLegend));
    const bool legendBeside = legendPos >= 3;
    if (legendBeside) {
        const CLegendPlace measure = LayoutLegend(graph, L.titleFont, QPoint(0, 0), 0, true, true);
        if (legendPos == 3)
            left += measure.rect.width() + gapToLegend;
        else
            right -= measure.rect.width() + gapToLegend;
    }
    const double fitLeft = left, fitW = anyFit && !strip && !threeD ? target.width() / 4.0 : 0;
    left += fitW;

    // Y axes of the shared kind, nearest first on each side, for a plot of
    // a given height.
    const double gap = 0.5 * h;
    std::vector<double> leftWidths, rightWidths;
    std::vector<CYAxisPlace> leftAxes, rightAxes;
    auto placeAxes = [&](double height) {
        leftWidths.clear();
        rightWidths.clear();
        leftAxes.clear();
        rightAxes.clear();
        if (strip || threeD)
            return;
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
                place.ticks = yTicks(range, place.font, height, L.labelsShown);
                place.width = place.ticks.widest > 0 ? place.ticks.widest + 0.3 * yfm.height() + 0.3 * h : 0.4 * h;
                if (place.width <= target.width() / 4.0)
                    break;
                const int size = place.font.pixelSize();
                const int smaller = size * 4 / 5;
                if (smaller == size || smaller < 1)
                    break;
                place.font.setPixelSize(smaller);
            }
            // The title stands in a line of its own outside the labels.
            place.titleFont = FontFromDescription(range.m_labelFont, fontScale);
            if (L.labelsShown && (range.m_axisFlags & CGraph_Range::AxisLabels) && !range.m_title.isEmpty()) {
                place.title = AxisTitleText(range.m_title);
                place.width += std::ceil(QFontMetricsF(place.titleFont).height()) + 0.3 * h;
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
    };
    auto sideTotal = [gap](const std::vector<double> &widths) {
        double total = 0;
        for (double w : widths)
            total += w + gap;
        return widths.empty() ? 0.0 : total - gap;
    };
    if (strip || threeD)
        left += 7 * L.cw; // strip and box views carry their own value labels

    // The legend's room is measured at the width it is laid out at, which
    // the axes beside the plot decide, and their labels depend on the
    // plot's height, which the legend decides: a few rounds settle it, and
    // the legend is then laid out at the very width it was measured at.
    CLegendPlace measure;
    int legendWidth = int(right - left);
    int legendLeft = 0;  // where the legend's rows start
    int legendShift = 0; // position 1: from there
    double leftTotal = 0, rightTotal = 0;
    for (int round = 0; round < 4; ++round) {
        top = top0;
        bottom = bottom0;
        if (!legendBeside) {
            measure = LayoutLegend(graph, L.titleFont, QPoint(0, 0), std::max(1, legendWidth), false, true,
                                   legendRoom);
            const double rows = measure.rect.height() + gapToLegend;
            if (legendPos == 2)
                bottom -= rows;
            else
                top += rows;
        }
        placeAxes(bottom - top);
        leftTotal = sideTotal(leftWidths);
        rightTotal = sideTotal(rightWidths);
        // The legend runs along the plot, or along the window when the axes
        // leave the plot too narrow for it.
        legendLeft = int(std::lround(left + leftTotal));
        int bandWidth = int(std::lround(right - rightTotal)) - legendLeft;
        if (bandWidth < (right0 - left0) / 3) {
            legendLeft = int(std::lround(left0));
            bandWidth = int(right0 - left0);
        }
        legendShift = legendPos == 1 ? int(std::lround(double(graph.m_legendOffset) / 10000.0 * bandWidth)) : 0;
        legendShift = std::clamp(legendShift, 0, std::max(0, bandWidth / 2));
        const int width = std::max(1, bandWidth - legendShift);
        if (legendBeside || width == legendWidth)
            break;
        legendWidth = width;
    }
    if (fitW > 0)
        L.fitArea = QRect(int(fitLeft), int(top), int(fitW), int(bottom - top));

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
    // Labels that crowd each other (a date axis labels every tick) are made
    // to fit by a font of 4/5 the height, again and again, down to a size
    // still to be read; the painter leaves out any that touch after that.
    L.xLabelFont = L.xFont;
    const int smallest = std::min(L.xLabelFont.pixelSize(), kSmallestLabelPixels);
    for (int round = 0; round < 500; ++round) {
        const QFontMetricsF labelMetrics(L.xLabelFont);
        L.xTicks = ComputeAxisTicks(q, labelMetrics);
        if (!L.xLabelsShown || q.log ||
            XLabelsFit(L.xTicks, q.viewMin, q.viewMax, q.length, graph.m_xRotation, labelMetrics))
            break;
        const int size = L.xLabelFont.pixelSize();
        const int smaller = std::max(smallest, size * 4 / 5);
        if (smaller == size)
            break;
        L.xLabelFont.setPixelSize(smaller);
    }
    L.xTitle = AxisTitleText(graph.m_xAxisName);
    L.xBand = QRect(QPoint(L.plot.left, L.plot.bottom + 1),
                    QPoint(L.plot.right, L.plot.bottom + int(std::lround(L.xLabelsShown ? 3 * h : h))));

    // The legend at its place, at the width it was measured at.
    QPoint origin;
    bool column = false;
    int wrapRight = L.plot.right;
    int maxHeight = legendRoom;
    switch (legendPos) {
    case 0:
    case 1: {
        const int x = legendLeft + legendShift;
        origin = QPoint(x, L.plot.top - measure.rect.height() - int(gapToLegend));
        wrapRight = x + legendWidth;
        break;
    }
    case 2: {
        const double down = L.xLabelsShown ? 3 * h : L.labelsShown ? h : 0.5 * h;
        origin = QPoint(legendLeft, L.plot.bottom + int(std::lround(down)));
        wrapRight = legendLeft + legendWidth;
        break;
    }
    case 3: {
        const CLegendPlace beside = LayoutLegend(graph, L.titleFont, QPoint(0, 0), 0, true, true);
        int edge = L.plot.left;
        for (const CYAxisPlace &a : L.yAxes)
            edge = std::min(edge, a.area.left());
        if (!L.fitArea.isNull())
            edge = std::min(edge, L.fitArea.left());
        origin = QPoint(edge - int(gapToLegend) - beside.rect.width(), L.plot.top);
        column = true;
        maxHeight = target.bottom() - L.plot.top;
        break;
    }
    default: {
        int edge = L.plot.right;
        for (const CYAxisPlace &a : L.yAxes)
            edge = std::max(edge, a.area.right());
        origin = QPoint(edge + int(gapToLegend), L.plot.top);
        column = true;
        maxHeight = target.bottom() - L.plot.top;
        break;
    }
    }
    L.legend = LayoutLegend(graph, L.titleFont, origin, wrapRight, column, false, maxHeight);
    return L;
}
