#include "graphdata/draw/graphdraw.h"

#include "graphdata/draw/axispaint.h"
#include "graphdata/draw/curvejobs.h"
#include "graphdata/draw/curvesdraw.h"
#include "graphdata/draw/drawpass.h"
#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/legendpaint.h"
#include "graphdata/draw/objectpaint.h"
#include "graphdata/draw/scopeview.h"
#include "graphdata/draw/stripboxviews.h"
#include "graphdata/graphcurve.h"
#include "support/languagestring.h"

#include <QPaintDevice>
#include <QPainter>

#include <cmath>

namespace {

// A message in the middle of `rect`, in the title font made a tenth larger.
void drawCentredMessage(QPainter &p, const CGraphCurve &g, const QRect &rect, const QString &text, double fontScale,
                        const QColor &color)
{
    QFont font = FontFromDescription(g.m_titleFont, fontScale * 1.1);
    p.setFont(font);
    p.setPen(color);
    p.drawText(rect, Qt::AlignCenter | Qt::TextWordWrap, text);
}

CDrawResult messageResult(CGraphCurve &g)
{
    g.m_lastDrawnRow = 0;
    CDrawResult result;
    result.kind = CDrawResult::Message;
    return result;
}

// A data set without data, or a graph told to show a message: just the text.
CDrawResult drawDataMessage(CDrawPass &pass)
{
    pass.p.fillRect(pass.target, pass.back);
    QString text;
    {
        CCS_helper guard(pass.g.m_data.Lock());
        text = pass.data->m_messageText;
    }
    if (text.isEmpty())
        text = LanguageString(TextNoData);
    drawCentredMessage(pass.p, pass.g, pass.target, text, pass.fontScale, pass.fore);
    return messageResult(pass.g);
}

// An oscilloscope graph without curves: its grid and axes only.
CDrawResult drawEmptyScope(CDrawPass &pass)
{
    const QRect *forced = pass.req.forcedPlot ? &*pass.req.forcedPlot : nullptr;
    const CGraphLayout L = ComputeLayout(pass.g, pass.target, forced, pass.fontScale);
    pass.p.fillRect(pass.target, pass.back);
    DrawGrid(pass.p, pass.g, L, pass.bw);
    DrawAxes(pass.p, pass.g, L, pass.bw);
    drawCentredMessage(pass.p, pass.g, EdgesToQRect(L.plot), LanguageString(TextScopeNoCurves), pass.fontScale,
                       pass.fore);
    return messageResult(pass.g);
}

// A graph without curves: a frame with the message inside.
CDrawResult drawNoCurves(CDrawPass &pass)
{
    QPainter &p = pass.p;
    p.fillRect(pass.target, pass.back);
    const int m = int(std::lround(20 * pass.fontScale));
    const QRect frame = pass.target.adjusted(m, m, -m, -m);
    p.setPen(QPen(pass.fore, 0));
    p.setBrush(Qt::NoBrush);
    p.drawRect(frame);
    drawCentredMessage(p, pass.g, frame, LanguageString(TextEmptyPlot), pass.fontScale, pass.fore);
    pass.g.m_plotRect = QRectToEdges(frame);
    pass.g.m_drawTarget = QRectToEdges(pass.target);
    return messageResult(pass.g);
}

// Keeps the rectangles of a full pass with the graph, for hit tests and
// the next incremental pass.
void keepLayout(CDrawPass &pass)
{
    CGraphCurve &g = pass.g;
    g.m_drawTarget = QRectToEdges(pass.target);
    g.m_plotRect = pass.plot;
    g.m_xAxisRect = QRectToEdges(pass.L.xBand);
    for (int i = 0; i < g.RangeCount(); ++i)
        g.Range(i)->m_areaRect = CIntRect();
    for (const CYAxisPlace &a : pass.L.yAxes)
        g.Range(a.range)->m_areaRect = QRectToEdges(a.area);
}

// The background, and the grid and axes of the view.
void drawBackground(CDrawPass &pass, const std::vector<CCurveJob> &jobs)
{
    QPainter &p = pass.p;
    p.fillRect(pass.target, pass.back);
    if (pass.overview) {
        p.setPen(QPen(pass.fore, 0));
        p.drawRect(EdgesToQRect(pass.plot).adjusted(0, 0, -1, -1));
    } else if (pass.threeD) {
        // the box is drawn with the curves
    } else if (pass.strip) {
        DrawStripFrames(p, pass.g, pass.L, jobs, pass.bw);
    } else {
        DrawGrid(p, pass.g, pass.L, pass.bw);
        DrawAxes(p, pass.g, pass.L, pass.bw);
    }
}

} // namespace

CGraphLayout LayoutFor(CGraphCurve &graph, const QRect &target, double fontScale)
{
    return ComputeLayout(graph, target, nullptr, fontScale);
}

CDrawResult DrawGraph(CGraphCurve &g, QPainter &p, const CDrawRequest &req)
{
    // Option changes in progress hold drawing off.
    if (g.m_drawLock > 0)
        return CDrawResult();
    CDrawPass pass(g, p, req);
    pass.fontScale = req.fontScale;
    pass.lineScale = req.lineScale;
    if (req.printer && p.device()) {
        const double s = p.device()->logicalDpiY() / 96.0;
        pass.fontScale *= s;
        pass.lineScale *= s;
    }
    pass.overview = (req.flags & DrawOverview) != 0;
    pass.bw = (g.m_displayFlags & CGraphCurve::DisplayBlackWhite) != 0;
    pass.back = pass.bw ? QColor(Qt::white) : ColorFromRef(g.m_backColor);
    pass.fore = pass.bw ? QColor(Qt::black) : ColorFromRef(g.m_foreColor);
    pass.target = req.target;
    pass.data = g.m_data.Data();
    pass.threeD = g.m_viewKind == 1;
    pass.strip = g.m_viewKind == 3;

    if ((pass.data->m_dataFlags & CGraphData_Data::NoData) || (g.m_displayFlags & CGraphCurve::DisplayMessageMask))
        return drawDataMessage(pass);

    EnsureLogForms(g, pass.threeD);
    std::vector<CCurveJob> jobs = MakeCurveJobs(g);
    if (g.m_data.IsScope() && (jobs.empty() || (pass.data->m_dataFlags & CGraphData_Data::ScopeAxesOnly)))
        return drawEmptyScope(pass);

    // Under the data lock: the row count, the generation and the columns.
    {
        CCS_helper guard(g.m_data.Lock());
        if (jobs.empty()) {
            guard.Leave();
            return drawNoCurves(pass);
        }
        pass.rowCount = pass.data->m_rowCount;
        pass.generation = pass.data->m_generation;
        // An oscilloscope screen starts at the first row it shows.
        if (g.m_data.IsScope() && !pass.overview)
            PrepareScopeView(g, pass.rowCount);
        if (!pass.overview) {
            if ((req.flags & DrawFull) || pass.generation != g.m_lastGeneration ||
                !(g.m_drawTarget == QRectToEdges(pass.target)))
                g.m_lastDrawnRow = 0;
            pass.full = g.m_lastDrawnRow <= 0;
            if (!pass.full && g.m_lastDrawnRow >= pass.rowCount - 1)
                return CDrawResult();
        }
        TakeColumns(pass, jobs);
    }
    AddDisplayForms(pass, jobs);
    if (g.m_data.IsScope())
        FlattenScopeChannels(pass, jobs);

    // The layout on a full pass, the stored rectangles on an incremental one.
    pass.plot = g.m_plotRect;
    if (pass.full) {
        pass.L = ComputeLayout(g, pass.target, req.forcedPlot ? &*req.forcedPlot : nullptr, pass.fontScale);
        pass.plot = pass.overview ? QRectToEdges(pass.target.adjusted(1, 1, -2, -2)) : pass.L.plot;
    }
    pass.xMin = pass.overview ? g.m_xFullMin : g.m_xViewMin;
    pass.xMax = pass.overview ? g.m_xFullMax : g.m_xViewMax;
    MapCurveJobs(pass, jobs);
    if (pass.strip && pass.full)
        LayoutStrips(pass.L, jobs);

    // An incremental pass needs every curve where the last pass left it;
    // anything else (a new extent on an auto-fitted axis, bars whose width
    // depends on the rows shown) asks for a full pass.
    if (!pass.full && !CanDrawIncrementally(pass, jobs)) {
        {
            CCS_helper guard(g.m_data.Lock());
            ReleaseColumns(jobs);
        }
        CDrawRequest again = req;
        again.flags |= DrawFull;
        return DrawGraph(g, p, again);
    }

    CDrawResult result;
    if (pass.full) {
        keepLayout(pass);
        drawBackground(pass, jobs);
        if (g.m_data.IsScope() && !pass.overview)
            DrawScopeMarks(p, g, jobs, pass.plot, pass.bw);
    }
    for (const CCurveJob &job : jobs)
        result.invalidRows = result.invalidRows || (job.usable && job.hasInvalid);
    result.points = DrawCurves(pass, jobs);

    if (pass.full && !pass.overview) {
        DrawLegend(p, g, pass.L, pass.bw, pass.lineScale);
        if (!pass.strip && !pass.threeD)
            DrawCurveExtentLabels(p, pass.L, jobs, pass.bw);
    }
    if (pass.full && !pass.overview)
        DrawAnimation(p, g, pass, jobs);
    if (pass.full && req.mainSurface && !pass.overview) {
        if (!(req.flags & DrawNoTextObjects))
            DrawObjects(p, g, pass.plot, pass.fontScale, pass.bw ? 2 : 0);
        if (req.overlay)
            req.overlay(p, g, pass.L);
    }

    // The column references go under the data lock.
    {
        CCS_helper guard(g.m_data.Lock());
        ReleaseColumns(jobs);
    }
    if (!pass.overview) {
        g.m_lastDrawnRow = pass.rowCount - 1;
        g.m_lastGeneration = pass.generation;
    }
    result.kind = pass.full ? CDrawResult::Full : CDrawResult::Incremental;
    return result;
}
