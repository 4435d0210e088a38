// The graph window's data, drawing and commands; the mouse, the wheel and
// the pop-up menu are in graphwndmouse.cpp.
#include "graphwnd/graphwnd.h"

#include "graphdata/graphglobaldata.h"

#include "graphwnd/formulacurvedialog.h"
#include "graphwnd/scopechannelsdialog.h"

#include "graphdata/columnscan.h"
#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/graphdraw.h"
#include "graphdata/draw/objectpaint.h"
#include "graphdata/draw/objectstore.h"
#include "graphdata/grapherrors.h"
#include "graphdata/graphglobaldata.h"
#include "graphdata/pages/curve2page.h"
#include "graphdata/pages/options2dlg.h"
#include "graphwnd/grapherrorbox.h"
#include "graphwnd/graphsaveas.h"
#include "graphwnd/graphtoolbar.h"
#include "support/controls/messageboxcheck.h"
#include "support/controls/userprompts.h"
#include "support/controls/windowdpi.h"
#include "support/languagestring.h"
#include "support/registry.h"

#include <QCloseEvent>
#include <QMetaObject>
#include <QPaintEvent>
#include <QPainter>
#include <QTimer>

#include <new>

namespace {

const int kTextInvalidPoints = 43090;
const int kTextDontShowAgain = 43602;
const int kTextNotAvailable = 43603;
const char kOptionsKey[] = "STANDARD OPTIONS";
const char kHideInvalidWarning[] = "HideInvalidPointWarning";

// The tool all graph windows share when they are told to, and who may
// refuse a change of it.
int g_sharedTool = 1;
std::function<bool(int)> g_sharedToolVeto;

void scaleFont(CGraphFont &font, int from, int to)
{
    font.m_height = MulDiv(font.m_height, to, from);
}

} // namespace

CGraphWnd::CGraphWnd(QWidget *parent, bool showToolBar) : QWidget(parent), m_showToolBar(showToolBar ? 1 : 0)
{
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(120, 90);
    if (m_showToolBar) {
        m_toolBar = new CGraphToolBar(this);
        // The window paints only below the toolbar.
        m_toolBar->setAutoFillBackground(true);
        connect(m_toolBar, &CGraphToolBar::Command, this, [this](int id) { OnCommand(id); });
        m_toolBarHeight = m_toolBar->sizeHint().height();
    }
    syncToolBar();
}

CGraphWnd::~CGraphWnd()
{
    if (m_activeTrack) {
        CActionMouseTrack *track = m_activeTrack;
        m_activeTrack = nullptr;
        track->EndTrack(0);
    }
    DeleteGraphData();
}

// ---- the data --------------------------------------------------------------

void CGraphWnd::DeleteGraphData()
{
    m_selection.clear();
    if (m_ownsData)
        delete m_graphData;
    m_graphData = nullptr;
    m_ownsData = 0;
    m_cachedBitmapValid = 1;
    update();
}

void CGraphWnd::SetGraphData(CGraphCurve *graph, int kind, bool owns, const QFont *font, int printFlags)
{
    if (graph == m_graphData) {
        m_ownsData = owns ? 1 : 0;
    } else {
        DeleteGraphData();
        m_graphData = graph;
        m_ownsData = owns ? 1 : 0;
    }
    m_printFlags = printFlags;
    if (graph && font) {
        const int pixels = font->pixelSize() > 0 ? font->pixelSize() : MulDiv(int(font->pointSizeF() + 0.5), m_dpi, 72);
        graph->m_xLabelFont.m_faceName = graph->m_titleFont.m_faceName = font->family();
        graph->m_xLabelFont.m_height = graph->m_titleFont.m_height = -pixels;
    }
    if (kind >= 1 && kind <= 4) {
        m_tool = 1;
    } else if (kind == 0) {
        m_tool = 1;
        g_sharedTool = 1;
    }
    m_invalidWarned = false;
    if (graph && m_marginsSet)
        graph->m_axisMargins = m_axisMargins;
    if (graph) {
        graph->m_lastDrawnRow = 0;
        StoreDefaultView();
    }
    syncToolBar();
    Redraw(1);
}

void CGraphWnd::SetGraphDataCopy(const CGraphData &data)
{
    auto *graph = new CGraphCurve(data.Data()->GetKind(), m_dpi);
    graph->m_data = data;
    // The user's defaults of new graphs: white and black when none are kept.
    GetGraphGlobalData().ApplyTo(*graph);
    {
        CCS_helper guard(data.Lock());
        if (const CGraphColumn *x = data.GetColumn(0))
            graph->m_xAxisName = x->m_name;
    }
    bool changed;
    for (int c = 1; c < data.ColumnCount(); ++c)
        graph->AddCurve(c, 0, false, changed);
    graph->FitRanges();
    // Drawing objects that came with the data from a graph file.
    const QByteArray &objects = data->m_fileBlocks[0];
    QString message;
    if (IsObjectsBlock(objects) && !RestoreObjects(objects, graph->m_textObjects, message))
        ShowMessage(this, message);
    SetGraphData(graph, 0, true);
}

void CGraphWnd::SetAxisMargins(int left, int top, int right, int bottom)
{
    m_axisMargins = CIntRect{left, top, right, bottom};
    m_marginsSet = true;
    if (m_graphData) {
        m_graphData->m_axisMargins = m_axisMargins;
        Redraw(1);
    }
}

// ---- drawing ---------------------------------------------------------------

QRect CGraphWnd::ClientRect() const
{
    QRect r = rect();
    if (m_showToolBar && m_toolBar)
        r.setTop(m_toolBarHeight);
    return r;
}

void CGraphWnd::Redraw(int flags)
{
    if (flags)
        m_cachedBitmapValid = 1;
    else
        m_pendingRows = true;
    update();
}

void CGraphWnd::PostViewCommand(int code)
{
    QMetaObject::invokeMethod(
        this,
        [this, code] {
            if (code == 1 || code == 2) {
                if (code == 2)
                    m_autoRange = 0;
                UpdateView();
            } else {
                Redraw(1);
            }
        },
        Qt::QueuedConnection);
}

void CGraphWnd::UpdateView()
{
    if (!m_graphData)
        return;
    m_stepCounts = ::UpdateView(*m_graphData);
    Redraw(1);
}

void CGraphWnd::StoreDefaultView()
{
    if (!m_graphData)
        return;
    m_defaultView = SaveView(*m_graphData);
    m_stepCounts.clear();
    m_stepCounts.push_back(m_graphData->m_xTick > 0
                               ? std::floor((m_graphData->m_xViewMax - m_graphData->m_xViewMin) / m_graphData->m_xTick)
                               : 0);
    for (int i = 0; i < m_graphData->RangeCount(); ++i) {
        const CGraph_Range &r = *m_graphData->Range(i);
        m_stepCounts.push_back(r.m_tick > 0 ? std::floor((r.m_viewMax - r.m_viewMin) / r.m_tick) : 0);
    }
}

void CGraphWnd::checkDpi()
{
    int dpiX = 96, dpi = 96;
    GetDpiOfWindow(this, dpiX, dpi);
    if (dpi == m_dpi)
        return;
    if (m_graphData) {
        scaleFont(m_graphData->m_xLabelFont, m_dpi, dpi);
        scaleFont(m_graphData->m_titleFont, m_dpi, dpi);
        for (int i = 0; i < m_graphData->RangeCount(); ++i) {
            scaleFont(m_graphData->Range(i)->m_labelFont, m_dpi, dpi);
            scaleFont(m_graphData->Range(i)->m_tickFont, m_dpi, dpi);
        }
    }
    m_dpi = dpi;
    m_backBuffer.Drop();
    m_cachedBitmapValid = 1;
}

void CGraphWnd::drawPicture(QPainter &painter, const QRect &client, unsigned flags)
{
    CDrawRequest request;
    request.flags = flags;
    request.target = client;
    const CDrawResult result = DrawGraph(*m_graphData, painter, request);
    if (result.invalidRows && !m_invalidWarned) {
        m_invalidWarned = true;
        if (!RegistryGetDword(QString::fromLatin1(kOptionsKey), QString::fromLatin1(kHideInvalidWarning), 0)) {
            // Not from inside a paint: the box comes up once this one is done.
            // Another window may have been told meanwhile not to warn again,
            // which the box looks at before it shows.
            QTimer::singleShot(0, this, [this] {
                MessageBoxCheck(this, LanguageString(kTextInvalidPoints), QString::fromLatin1(kOptionsKey),
                                QString::fromLatin1(kHideInvalidWarning), PromptButtons::Ok, PromptIcon::Warning,
                                LanguageString(kTextDontShowAgain));
            });
        }
    }
}

bool CGraphWnd::drawSafely(QPainter &painter, const QRect &client, unsigned flags)
{
    try {
        drawPicture(painter, client, flags);
        m_drawFailed = false;
        return true;
    } catch (const std::bad_alloc &) {
        // Said once until a pass succeeds again; the box comes up after
        // this paint.
        if (!m_drawFailed)
            ReportGraphError(kGraphTextNoMemoryToDraw);
        m_drawFailed = true;
        return false;
    }
}

void CGraphWnd::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event);
    checkDpi();
    QPainter p(this);
    const QRect client = ClientRect();
    if (!m_graphData || client.isEmpty()) {
        p.fillRect(client, palette().window());
        return;
    }
    if (m_drawDirect || !m_useBitmapCache) {
        CDC_BitmapScreenDraw dc(m_backBuffer, p, client);
        if (!drawSafely(dc.Painter(), client, DrawFull) && !m_memoryBitmap.isNull())
            dc.Painter().drawImage(client.topLeft(), m_memoryBitmap);
    } else {
        if (m_cachedBitmapValid || m_memoryBitmap.size() != client.size()) {
            // Drawn aside: a pass that runs out of memory leaves the last
            // good picture in place.
            QImage next(client.size(), QImage::Format_RGB32);
            bool drawn = false;
            if (next.isNull()) {
                if (!m_drawFailed)
                    ReportGraphError(kGraphTextNoMemoryToDraw);
                m_drawFailed = true;
            } else {
                QPainter ip(&next);
                ip.translate(-client.topLeft());
                drawn = drawSafely(ip, client, DrawFull);
            }
            if (drawn) {
                m_memoryBitmap.swap(next);
                m_cachedBitmapValid = 0;
                m_pendingRows = false;
            }
        } else if (m_pendingRows) {
            QPainter ip(&m_memoryBitmap);
            ip.translate(-client.topLeft());
            if (!drawSafely(ip, client, 0))
                m_cachedBitmapValid = 1; // half drawn rows: all again next time
            m_pendingRows = false;
        }
        if (!m_memoryBitmap.isNull())
            p.drawImage(client.topLeft(), m_memoryBitmap);
        else
            p.fillRect(client, palette().window());
    }
    // Selection frames, then the feedback of a running track, on top.
    p.save();
    p.setCompositionMode(QPainter::RasterOp_NotDestination);
    p.setPen(QPen(Qt::white, 1, Qt::DotLine));
    p.setBrush(Qt::NoBrush);
    for (CTextnLine *object : m_selection)
        p.drawRect(object->LastRect());
    p.restore();
    for (CTextnLine *object : m_selection)
        object->DrawHandles(p);
    if (m_activeTrack && m_activeTrack->m_feedbackShown)
        m_activeTrack->PaintFeedback(p);
}

void CGraphWnd::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_toolBar) {
        m_toolBarHeight = m_toolBar->sizeHint().height();
        m_toolBar->setGeometry(0, 0, width(), m_toolBarHeight);
    }
    m_cachedBitmapValid = 1;
}

QImage CGraphWnd::RenderImage(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    if (m_graphData) {
        QPainter p(&image);
        CDrawRequest request;
        request.target = image.rect();
        request.mainSurface = false;
        try {
            DrawGraph(*m_graphData, p, request);
        } catch (const std::bad_alloc &) {
            ReportGraphError(kGraphTextNoMemoryToDraw);
            p.end();
            image = QImage();
        }
        // The window's own picture has to be drawn again for its target.
        m_cachedBitmapValid = 1;
    }
    return image;
}

CObjectFrame CGraphWnd::ObjectFrame(int axis) const
{
    if (!m_graphData)
        return CObjectFrame();
    return ObjectFrameOf(*m_graphData, m_graphData->m_plotRect, axis);
}

// ---- tools -----------------------------------------------------------------

int CGraphWnd::Tool() const
{
    return m_sharedTool ? g_sharedTool : m_tool;
}

void CGraphWnd::SetTool(int tool)
{
    if (m_sharedTool) {
        if (g_sharedToolVeto && !g_sharedToolVeto(tool))
            return;
        g_sharedTool = tool;
    }
    m_tool = tool;
    syncToolBar();
}

void CGraphWnd::SetSharedToolVeto(std::function<bool(int)> veto)
{
    g_sharedToolVeto = std::move(veto);
}

void CGraphWnd::syncToolBar()
{
    if (m_toolBar)
        m_toolBar->ShowTool(Tool());
}

// ---- commands --------------------------------------------------------------

void CGraphWnd::notify(int code, CGraphNotifyRecord &record)
{
    record.window = this;
    emit GraphNotify(code, &record);
}

void CGraphWnd::notifyChanged()
{
    CGraphNotifyRecord record;
    notify(NotifyObjectsChanged, record);
}

void CGraphWnd::notAvailable()
{
    ShowMessage(this, LanguageString(kTextNotAvailable), PromptButtons::Ok, PromptIcon::Information);
}

void CGraphWnd::openOptions(int page, int curve)
{
    if (!m_graphData) {
        notAvailable();
        return;
    }
    COptions2_Dlg dialog(*m_graphData, page, this);
    if (curve >= 0 && curve < dialog.m_curvePage->m_list->rowCount())
        dialog.m_curvePage->m_list->setCurrentCell(curve, 0);
    if (dialog.exec() != QDialog::Accepted)
        return;
    Redraw(1);
    notifyChanged();
}

bool CGraphWnd::OnCommand(int id)
{
    if (onObjectCommand(id) || onEmiCommand(id))
        return true;
    switch (id) {
    case CmdToolSelect:
        SetTool(1);
        return true;
    case CmdToolPan:
        SetTool(2);
        return true;
    case CmdToolZoomBox:
        SetTool(3);
        return true;
    case CmdToolZoomPath:
        SetTool(4);
        return true;
    case CmdGraphOptions:
        openOptions(COptionsFault::PageCurves);
        return true;
    case CmdXAxisDialog:
    case CmdXAxis:
        openOptions(COptionsFault::PageXAxis);
        return true;
    case CmdYAxisDialog:
    case CmdYAxis:
        openOptions(COptionsFault::PageYAxis);
        return true;
    case CmdOptions:
        openOptions(-1);
        return true;
    case CmdSaveAs:
        // Every kind the graph can be saved as; the record file keeps the
        // whole data set with its held curves.
        if (m_graphData)
            SaveGraphAs(this, *m_graphData, [this](const QString &path) { return SaveDataFile(path); });
        return true;
    default:
        break;
    }
    if (!m_graphData)
        return id >= CmdFullView && id <= CmdZoomOut;
    switch (id) {
    case CmdComputedCurve: {
        CFormulaCurveDialog dialog(*this);
        dialog.exec();
        return true;
    }
    case CmdScopeChannels: {
        if (!CScopeChannelsDialog::Applies(*this))
            return false;
        CScopeChannelsDialog dialog(*this);
        dialog.exec();
        return true;
    }
    case CmdFullView:
        RestoreView(*m_graphData, m_defaultView);
        Redraw(1);
        notifyChanged();
        return true;
    case CmdAutoscale:
        Autoscale(*m_graphData);
        Redraw(1);
        notifyChanged();
        return true;
    case CmdZoomIn:
    case CmdZoomOut:
        ZoomBy(*m_graphData, id == CmdZoomIn ? 0.9 : 1 / 0.9);
        Redraw(1);
        notifyChanged();
        return true;
    default:
        return false;
    }
}

void CGraphWnd::deleteSelection()
{
    if (!m_graphData || m_selection.empty())
        return;
    RememberObjects();
    QRect dirty;
    for (CTextnLine *object : m_selection) {
        dirty = dirty.united(object->LastRect());
        const int index = m_graphData->m_textObjects.Find(object);
        if (index >= 0)
            m_graphData->m_textObjects.DeleteAt(index);
    }
    m_selection.clear();
    m_cachedBitmapValid = 1;
    update(dirty.adjusted(-4, -4, 4, 4));
    notifyChanged();
}

void CGraphWnd::closeEvent(QCloseEvent *event)
{
    if (m_graphData && m_graphData->m_data.Data()->GetKind() == 1 && m_graphData->CurveCount() > 0) {
        CGraphNotifyRecord record;
        notify(NotifyCloseAsked, record);
        if (record.consumed) {
            event->ignore();
            return;
        }
    }
    QWidget::closeEvent(event);
}
