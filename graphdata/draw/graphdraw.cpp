#include "graphdata/draw/graphdraw.h"

#include "graphdata/columnsearch.h"
#include "graphdata/columntransform.h"
#include "graphdata/draw/axispaint.h"
#include "graphdata/draw/curvepaint.h"
#include "graphdata/draw/drawjobs.h"
#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/legendpaint.h"
#include "graphdata/draw/stripboxviews.h"
#include "graphdata/graphcurve.h"
#include "support/languagestring.h"

#include <QFontMetricsF>
#include <QPaintDevice>
#include <QPainter>

#include <cmath>

namespace {

bool isLogAxis(const CGraph_Range &r)
{
    return r.m_logScale != 0 && r.m_dbScale == 0;
}

// A message in the middle of `rect`, in the title font made a tenth larger.
void drawCentredMessage(QPainter &p, const CGraphCurve &g, const QRect &rect, const QString &text, double fontScale,
                        const QColor &color)
{
    QFont font = FontFromDescription(g.m_titleFont, fontScale * 1.1);
    p.setFont(font);
    p.setPen(color);
    p.drawText(rect, Qt::AlignCenter | Qt::TextWordWrap, text);
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

bool orderedColumn(const CGraphColumn *x)
{
    const std::uint32_t f = x->m_orderFlags;
    return (f & CGraphColumn::OrderAscending) && !(f & (CGraphColumn::OrderDescending | CGraphColumn::OrderNone));
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
        const double span = r.m_viewMax - r.m_viewMin;
        if (!(span > 0) || !std::isfinite(span))
            return false;
        m.yMin = r.m_viewMin;
        m.yScale = height / span;
        return true;
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

// The objects over the plot, rectangles first, then lines, then texts.
void drawObjects(QPainter &p, CGraphCurve &g, const CIntRect &plot, double fontScale, int printing)
{
    if (g.m_textObjects.IsEmpty())
        return;
    const double xs = g.m_xViewMax > g.m_xViewMin ? (plot.right - plot.left) / (g.m_xViewMax - g.m_xViewMin) : 0;
    static const int order[3] = {3, 1, 2};
    for (int kind : order) {
        for (CTextnLine *object : g.m_textObjects) {
            if (object->ObjectKind() != kind || (object->m_flags & CTextnLine::FlagHidden))
                continue;
            const int axis = object->m_yAxisIndex >= 0 && object->m_yAxisIndex < g.RangeCount() ? object->m_yAxisIndex : 0;
            const CGraph_Range &r = *g.Range(axis);
            CObjectFrame frame;
            frame.plotRect = EdgesToQRect(plot);
            frame.xMin = g.m_xViewMin;
            frame.xScale = xs;
            frame.yMin = r.m_viewMin;
            frame.yScale = r.m_viewMax > r.m_viewMin ? (plot.bottom - plot.top) / (r.m_viewMax - r.m_viewMin) : 0;
            frame.fontScale = fontScale;
            frame.printing = printing;
            p.save();
            object->Draw(p, false, frame);
            p.restore();
        }
    }
}

} // namespace

CGraphLayout LayoutFor(CGraphCurve &graph, const QRect &target, double fontScale)
{
    return ComputeLayout(graph, target, nullptr, fontScale);
}

CDrawResult DrawGraph(CGraphCurve &g, QPainter &p, const CDrawRequest &req)
{
    CDrawResult result;
    // 1. Option changes in progress hold drawing off.
    if (g.m_drawLock > 0)
        return result;
    double fontScale = req.fontScale, lineScale = req.lineScale;
    if (req.printer && p.device()) {
        const double s = p.device()->logicalDpiY() / 96.0;
        fontScale *= s;
        lineScale *= s;
    }
    const bool overview = (req.flags & DrawOverview) != 0;
    const bool bw = (g.m_displayFlags & CGraphCurve::DisplayBlackWhite) != 0;
    const QColor back = bw ? QColor(Qt::white) : ColorFromRef(g.m_backColor);
    const QColor fore = bw ? QColor(Qt::black) : ColorFromRef(g.m_foreColor);
    const QRect target = req.target;
    CGraphData_Data *data = g.m_data.Data();

    // 2. A data set without data, or a graph told to show a message, shows
    // just the text.
    if ((data->m_dataFlags & CGraphData_Data::NoData) || (g.m_displayFlags & CGraphCurve::DisplayMessageMask)) {
        p.fillRect(target, back);
        QString text;
        {
            CCS_helper guard(g.m_data.Lock());
            text = data->m_messageText;
        }
        if (text.isEmpty())
            text = LanguageString(TextNoData);
        drawCentredMessage(p, g, target, text, fontScale, fore);
        g.m_lastDrawnRow = 0;
        result.kind = CDrawResult::Message;
        return result;
    }

    // The log forms the axes ask for, made before the columns are taken.
    const bool threeD = g.m_viewKind == 1;
    const bool strip = g.m_viewKind == 3;
    if (g.m_xLog && !threeD)
        g.m_data.EnsureLogColumn(g.m_xColumnIndex);
    for (const CCurveInfo *curve : g.m_curves) {
        if (curve->Origin() == CCurveBasicInfo::OriginColumn && isLogAxis(*g.Range(g.AxisOf(*curve))))
            g.m_data.EnsureLogColumn(curve->m_colIndex);
    }

    // 3. Curves per axis, and each curve's slot on its axis.
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

    // 4. An oscilloscope graph without curves shows its grid and axes only.
    if (g.m_data.IsScope() && (jobs.empty() || (data->m_dataFlags & CGraphData_Data::ScopeAxesOnly))) {
        const CGraphLayout L = ComputeLayout(g, target, req.forcedPlot ? &*req.forcedPlot : nullptr, fontScale);
        p.fillRect(target, back);
        DrawGrid(p, g, L, bw);
        DrawAxes(p, g, L, bw);
        drawCentredMessage(p, g, EdgesToQRect(L.plot), LanguageString(TextScopeNoCurves), fontScale, fore);
        g.m_lastDrawnRow = 0;
        result.kind = CDrawResult::Message;
        return result;
    }

    // 5. Under the data lock: the row count, the generation and the columns.
    int rowCount = 0, generation = 0;
    bool full = true;
    {
        CCS_helper guard(g.m_data.Lock());
        if (jobs.empty()) {
            guard.Leave();
            p.fillRect(target, back);
            const int m = int(std::lround(20 * fontScale));
            const QRect frame = target.adjusted(m, m, -m, -m);
            p.setPen(QPen(fore, 0));
            p.setBrush(Qt::NoBrush);
            p.drawRect(frame);
            drawCentredMessage(p, g, frame, LanguageString(TextEmptyPlot), fontScale, fore);
            g.m_lastDrawnRow = 0;
            g.m_plotRect = QRectToEdges(frame);
            g.m_drawTarget = QRectToEdges(target);
            result.kind = CDrawResult::Message;
            return result;
        }
        rowCount = data->m_rowCount;
        generation = data->m_generation;
        if (!overview) {
            if ((req.flags & DrawFull) || generation != g.m_lastGeneration || !(g.m_drawTarget == QRectToEdges(target)))
                g.m_lastDrawnRow = 0;
            full = g.m_lastDrawnRow <= 0;
            if (!full && g.m_lastDrawnRow >= rowCount - 1)
                return result;
        }
        const bool logX = g.m_xLog && !threeD;
        CGraphColumn *xData = logX ? data->GetLogColumn(g.m_xColumnIndex) : data->GetColumn(g.m_xColumnIndex);
        for (CCurveJob &job : jobs) {
            CCurveInfo &curve = *job.curve;
            const CGraph_Range &range = *g.Range(job.axis);
            const CGraphColumn *y = nullptr;
            switch (curve.Origin()) {
            case CCurveBasicInfo::OriginColumn:
                y = isLogAxis(range) && !threeD ? data->GetLogColumn(curve.m_colIndex) : data->GetColumn(curve.m_colIndex);
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
            job.rows = job.ownX ? std::min(job.x->m_count, y->m_count) : std::min(rowCount, y->m_count);
            job.rows = std::min(job.rows, job.x->m_count);
        }
    }

    // Forms the data set does not keep: own and computed columns on a log
    // axis, and anything on a dB axis.
    for (CCurveJob &job : jobs) {
        if (!job.y || threeD)
            continue;
        const CGraph_Range &range = *g.Range(job.axis);
        const bool db = range.m_dbScale != 0;
        const bool needsForm = db || (isLogAxis(range) && job.curve->Origin() != CCurveBasicInfo::OriginColumn);
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

    // 6. The layout on a full pass, the stored rectangles on an incremental one.
    CGraphLayout L;
    CIntRect plot = g.m_plotRect;
    if (full) {
        L = ComputeLayout(g, target, req.forcedPlot ? &*req.forcedPlot : nullptr, fontScale);
        plot = L.plot;
        if (overview)
            plot = QRectToEdges(target.adjusted(1, 1, -2, -2));
    }

    // 8. The X mapping and the rows in view.
    double xMin = g.m_xViewMin, xMax = g.m_xViewMax;
    if (overview) {
        xMin = g.m_xFullMin;
        xMax = g.m_xFullMax;
    }
    const double xScale = xMax > xMin ? (plot.right - plot.left) / (xMax - xMin) : 0;
    const bool canMap = std::isfinite(xScale) && xScale > 0 && (!full || !L.tooSmall);
    for (CCurveJob &job : jobs) {
        if (!job.y || !canMap || job.rows < 1)
            continue;
        job.mapping.xMin = xMin;
        job.mapping.xScale = xScale;
        if (overview) {
            const CGraph_Range &r = *g.Range(job.axis);
            const double span = r.m_fullMax - r.m_fullMin;
            job.mapping.plot = plot;
            job.mapping.yMin = span > 0 ? r.m_fullMin : r.m_fullMin - 1;
            job.mapping.yScale = (plot.bottom - plot.top) / (span > 0 ? span : 2);
            job.usable = true;
        } else if (!strip) {
            job.usable = yMapping(g, job, plot);
        } else {
            job.usable = true; // LayoutStrips maps it
        }
        const int lastRow = job.rows - 1;
        const bool searchLinear = g.m_xLog || g.m_spectrumMode;
        const bool ordered = !searchLinear && (data->m_ordered || orderedColumn(job.x.Get()));
        if (overview || g.m_xyMode || job.ownX) {
            job.first = 0;
            job.last = lastRow;
        } else if (!full) {
            // Only rows after the last pass: the searches start there, so
            // that their cost follows the new rows.
            job.first = std::min(std::max(0, g.m_lastDrawnRow), lastRow);
            job.last = FirstAtOrAfter(job.x.Get(), xMax, job.first, lastRow, ordered);
        } else {
            job.first = LastAtOrBefore(job.x.Get(), xMin, 0, lastRow, ordered);
            job.last = FirstAtOrAfter(job.x.Get(), xMax, 0, lastRow, ordered);
        }
    }
    if (strip && full)
        LayoutStrips(L, jobs);

    // An incremental pass needs every curve where the last pass left it;
    // anything else (a new extent on an auto-fitted axis, bars whose width
    // depends on the rows shown) asks for a full pass.
    if (!full) {
        for (const CCurveJob &job : jobs) {
            if (!job.usable)
                continue;
            const CCurveInfo &c = *job.curve;
            const auto *cache = static_cast<const CPolylinePixels *>(c.LinePixels());
            if (c.IsBar() || strip || threeD || (c.m_symbol != SymbolPixel && (!cache || !(cache->m_mapping == job.mapping)))) {
                full = true;
                break;
            }
        }
        if (full) {
            CDrawRequest again = req;
            again.flags |= DrawFull;
            return DrawGraph(g, p, again);
        }
    }

    if (full) {
        g.m_drawTarget = QRectToEdges(target);
        g.m_plotRect = plot;
        g.m_xAxisRect = QRectToEdges(L.xBand);
        for (int i = 0; i < g.RangeCount(); ++i)
            g.Range(i)->m_areaRect = CIntRect();
        for (const CYAxisPlace &a : L.yAxes)
            g.Range(a.range)->m_areaRect = QRectToEdges(a.area);
        p.fillRect(target, back);
        // 7. Background and axes.
        if (overview) {
            p.setPen(QPen(fore, 0));
            p.drawRect(EdgesToQRect(plot).adjusted(0, 0, -1, -1));
        } else if (threeD) {
            // the box is drawn with the curves
        } else if (strip) {
            DrawStripFrames(p, g, L, jobs, bw);
        } else {
            DrawGrid(p, g, L, bw);
            DrawAxes(p, g, L, bw);
        }
    }

    // 10. The curves; a highlighted one comes last, over the others.
    p.setRenderHint(QPainter::Antialiasing, false);
    const double arrowLength = 0.9 * (full ? L.h : QFontMetricsF(FontFromDescription(g.m_xLabelFont, fontScale)).height());
    int barCurves = 0;
    for (const CCurveJob &job : jobs)
        barCurves += job.curve->IsBar() && job.usable ? 1 : 0;
    int barSlot = 0;
    const int fromRow = g.m_lastDrawnRow;
    auto drawJob = [&](CCurveJob &job) {
        CCurveInfo &curve = *job.curve;
        result.invalidRows = result.invalidRows || job.hasInvalid;
        const QColor color = bw ? QColor(Qt::black) : ColorFromRef(curve.m_color);
        const CCurveArrays arrays = job.Arrays();
        if (curve.IsBar() && !overview) {
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
            result.points += DrawCurveBars(p, arrays, job.first, job.last, job.mapping, w, shift, color);
            return;
        }
        if (curve.m_symbol == SymbolPixel && !overview) {
            const int first = full ? job.first : std::max(job.first, fromRow + 1);
            result.points += DrawCurvePixels(p, arrays, first, job.last, job.mapping, 0, color);
            return;
        }
        const bool symbols = curve.m_symbol >= SymbolCircle && curve.m_symbol <= SymbolStar && !overview;
        const bool arrow = (curve.m_specialDraw & CCurveBasicInfo::SpecialArrow) && (g.m_xyMode || job.ownX) && !overview;
        QPen pen = CurvePen(curve.m_connect ? curve.m_lineThickness : 0, color, lineScale, overview);
        const int thickness = curve.m_lineThickness;
        if (!full) {
            // Only the rows added since the last pass, joined on to the cache.
            auto *cache = static_cast<CPolylinePixels *>(curve.LinePixels());
            const int last = job.ownX || g.m_xyMode
                                 ? job.rows - 1
                                 : FirstAtOrAfter(job.x.Get(), xMax, std::min(cache->m_lastRow, job.rows - 1),
                                                  job.rows - 1, !g.m_xLog && (data->m_ordered || orderedColumn(job.x.Get())));
            if (last <= cache->m_walk.lastWalked)
                return;
            int symbolsFrom = 0;
            const int from = ResumePolyline(*cache, arrays, last, arrow, symbolsFrom);
            if (from >= 0)
                result.points += DrawPolylinePixels(p, *cache, pen, curve.m_symbol, 1, color, arrowLength, from,
                                                    symbolsFrom);
            return;
        }
        CPolylineCache *held = overview ? curve.OverviewPixels() : curve.LinePixels();
        auto *cache = static_cast<CPolylinePixels *>(held);
        // Oscilloscope pictures change with every trigger: never cached.
        if (!cache || g.m_data.IsScope() || !cache->IsValidFor(job.first, job.last, job.mapping, thickness, symbols)) {
            auto *made = new CPolylinePixels;
            BuildPolyline(*made, arrays, job.first, job.last, job.mapping, thickness, symbols, arrow);
            if (overview)
                curve.SetOverviewPixels(made);
            else
                curve.SetLinePixels(made);
            made->Release();
            cache = made;
        }
        cache->m_arrowLength = arrowLength;
        result.points += DrawPolylinePixels(p, *cache, pen, curve.m_symbol, 1, color, arrowLength);
    };
    if (threeD && full) {
        result.points += DrawThreeD(p, g, L, jobs, bw);
    } else {
        const int highlighted = g.m_highlightedCurve;
        for (CCurveJob &job : jobs) {
            if (job.usable && job.index != highlighted)
                drawJob(job);
        }
        if (highlighted >= 0 && highlighted < int(jobs.size()) && jobs[std::size_t(highlighted)].usable)
            drawJob(jobs[std::size_t(highlighted)]);
    }

    // 11. Legend and the labels of auto-fitted and sliced axes.
    if (full && !overview) {
        DrawLegend(p, g, L, bw, lineScale);
        std::vector<CFitLabel> fits;
        for (const CCurveJob &job : jobs) {
            if (job.layout == CGraph_Range::LayoutShared || !job.usable || strip || threeD)
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

    // 12. Drawing objects and the window's own marks.
    if (full && req.mainSurface && !overview) {
        if (!(req.flags & DrawNoTextObjects))
            drawObjects(p, g, plot, fontScale, bw ? 2 : 0);
        if (req.overlay)
            req.overlay(p, g, L);
    }

    // 13. The column references go under the data lock.
    {
        CCS_helper guard(g.m_data.Lock());
        for (CCurveJob &job : jobs) {
            job.x.reset();
            job.y.reset();
        }
    }
    if (!overview) {
        g.m_lastDrawnRow = rowCount - 1;
        g.m_lastGeneration = generation;
    }
    result.kind = full ? CDrawResult::Full : CDrawResult::Incremental;
    return result;
}
