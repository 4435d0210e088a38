// The graph window's mouse, wheel and keys, its cursors, its read-out and
// its pop-up menu.
#include "graphwnd/graphwnd.h"

#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/objectstore.h"
#include "graphdata/draw/polylinecache.h"
#include "graphdata/pages/optionscopy.h"
#include "graphwnd/graphcursorbase.h"
#include "graphwnd/graphcursors.h"
#include "graphwnd/graphreadout.h"
#include "graphwnd/scopechannelsdialog.h"
#include "graphwnd/trackedits.h"
#include "support/languagestring.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QWheelEvent>

#include <cmath>

namespace {

// Texts of the pop-up menu.
enum : int {
    TextGraphOptions = 43065,
    TextXAxis = 43066,
    TextYAxis = 43067,
    TextNoLine = 43125,
    TextCopyPicture = 43162,
    TextProperties = 43220,
    TextDelete = 43221,
    TextAllColumns = 43222,
    TextOwnAxis = 43223,
    TextBackToNormal = 43224,
    TextOnTop = 43225,
    TextCopyValues = 43226,
    TextSymbols = 43228,
    TextAddCurve = 43229,
    TextLocked = 43245,
    TextLineWidth = 43604,
    TextComputedCurve = 43779,
    TextScopeChannels = 44601,
};

// A curve line counts as hit this close to the mouse.
const int kLineHitDistance = 3;

QAction *addItem(QMenu &menu, int id, const QString &text, bool enabled = true)
{
    QAction *action = menu.addAction(text);
    action->setData(id);
    action->setEnabled(enabled);
    action->setObjectName(QString::number(id));
    return action;
}

double distanceToSegment(QPointF p, QPointF a, QPointF b)
{
    const QPointF d = b - a;
    const double len2 = d.x() * d.x() + d.y() * d.y();
    double t = len2 > 0 ? QPointF::dotProduct(p - a, d) / len2 : 0;
    t = std::clamp(t, 0.0, 1.0);
    const QPointF q = a + t * d;
    return std::hypot(p.x() - q.x(), p.y() - q.y());
}

QString curveLabel(const CCurveInfo &c)
{
    return c.m_colLabel.isEmpty() ? c.m_colName : c.m_colLabel;
}

} // namespace

// ---- hit tests --------------------------------------------------------------

int CGraphWnd::CurveAt(QPoint point) const
{
    if (!m_graphData)
        return -1;
    const CGraphCurve &g = *m_graphData;
    for (std::size_t i = 0; i < g.m_curveHitRects.size() && int(i) < g.CurveCount(); ++i) {
        if (EdgesToQRect(g.m_curveHitRects[i]).contains(point))
            return int(i);
    }
    for (int i = g.CurveCount() - 1; i >= 0; --i) {
        const auto *cache = static_cast<const CPolylinePixels *>(g.Curve(i)->LinePixels());
        if (!cache)
            continue;
        const QPoint *pts = cache->m_points.data();
        for (int n : cache->m_runLengths) {
            for (int k = 0; k + 1 < n; ++k) {
                if (distanceToSegment(point, pts[k], pts[k + 1]) <= kLineHitDistance)
                    return i;
            }
            pts += n;
        }
        for (const QPoint &s : cache->m_symbolPoints) {
            if ((s - point).manhattanLength() <= 2 * kLineHitDistance)
                return i;
        }
    }
    return -1;
}

int CGraphWnd::ObjectAt(QPoint point, int &handle) const
{
    handle = 0;
    if (!m_graphData)
        return -1;
    const CTextnLineArray &objects = m_graphData->m_textObjects;
    for (int i = objects.GetSize() - 1; i >= 0; --i) {
        const CTextnLine *object = objects.GetAt(i);
        if (object->m_flags & CTextnLine::FlagHidden)
            continue;
        const bool selected = std::find(m_selection.begin(), m_selection.end(), object) != m_selection.end();
        const int hit = object->HitTest(point, selected);
        if (hit) {
            handle = hit;
            return i;
        }
    }
    return -1;
}

int CGraphWnd::AxisAt(QPoint point) const
{
    if (!m_graphData)
        return -2;
    if (EdgesToQRect(m_graphData->m_xAxisRect).contains(point))
        return -1;
    for (int i = 0; i < m_graphData->RangeCount(); ++i) {
        const CIntRect &a = m_graphData->Range(i)->m_areaRect;
        if (a.right > a.left && EdgesToQRect(a).contains(point))
            return i;
    }
    return -2;
}

QString CGraphWnd::PositionTextAt(QPoint point) const
{
    CGraphPosition position;
    if (!m_graphData || !GraphPositionAt(*m_graphData, point, position))
        return QString();
    QString text = GraphPositionText(position);
    // Over a curve of a spectrum, its complex result at that frequency.
    if (m_graphData->m_spectrumMode) {
        const int curve = CurveAt(point);
        if (curve >= 0 && !m_graphData->Curve(curve)->IsLimitLine()) {
            const QString value = SpectrumReadoutText(*m_graphData, *m_graphData->Curve(curve), position.x);
            if (!value.isEmpty())
                text += QStringLiteral("; ") + value;
        }
    }
    return text;
}

// ---- tracks ------------------------------------------------------------------

bool CGraphWnd::startTrack(CActionMouseTrack &track, QPoint point, bool buttonsSwapped)
{
    track.m_buttonsSwapped = buttonsSwapped ? 1 : 0;
    if (&track == &m_moveTrack || &track == &m_resizeTrack)
        m_pendingUndo = StoreObjects(m_graphData->m_textObjects);
    m_activeTrack = &track;
    if (!track.Track(this, point)) {
        m_activeTrack = nullptr;
        return false;
    }
    return true;
}

void CGraphWnd::TrackEnded(CActionMouseTrack *track, int result)
{
    m_activeTrack = nullptr;
    if (!m_graphData) {
        update();
        return;
    }
    CGraphCurve &g = *m_graphData;
    // The track has decided; the edits are the graph's operations.
    if (objectTrackEnded(track, result)) {
        // placed, moved or resized objects
    } else if (track == &m_zoomBoxTrack) {
        if (result == 1 && ZoomToFrame(g, track->DragRect())) {
            Redraw(1);
            notifyChanged();
        }
    } else if (track == &m_zoomTrack) {
        if (result == 1 && m_zoomTrack.m_haveView) {
            RestoreView(g, m_zoomTrack.m_newView);
            Redraw(1);
            notifyChanged();
        }
    } else if (track == &m_zoomPanTrack) {
        if (result == 1)
            notifyChanged();
    } else if (track == &m_panTrack || track == &m_scrollTrack) {
        auto *pan = static_cast<CPanTrackGraph *>(track);
        if (result == 1 && pan->m_moved)
            notifyChanged();
        // A right click that did not drag opens the pop-up menu.
        if (track == &m_panTrack && pan->m_buttonsSwapped && !pan->m_moved) {
            if (result == 1)
                ShowContextMenu(pan->Start());
        }
    } else if (track == &m_selectBoxTrack) {
        if (result == 1)
            SelectObjectsIn(g, track->DragRect(), m_selection);
    } else if (track == &m_titleBoxTrack) {
        if (result == 1 && m_titleBoxTrack.Current() != m_titleBoxTrack.Start()
            && MoveLegendTo(g, m_titleBoxTrack.MovedRect()))
            Redraw(1);
    }
    update();
}

// ---- mouse -----------------------------------------------------------------

void CGraphWnd::mousePressEvent(QMouseEvent *event)
{
    if (m_activeTrack) {
        m_activeTrack->HandleEvent(event);
        return;
    }
    const QPoint point = event->position().toPoint();
    if (!m_graphData || !ClientRect().contains(point))
        return;
    setFocus(Qt::MouseFocusReason);
    if (event->button() == Qt::RightButton) {
        if (Tool() == 11 && m_cursorObject) {
            m_cursorObject->OnCursorEvent(this, point, int(event->modifiers()) | int(event->buttons()),
                                          CGraphCursorBase::CursorRightDown);
            return;
        }
        // Dragging with the right button pans; a right click opens the menu
        // (when the pan track ends without a move).
        if (EdgesToQRect(m_graphData->m_plotRect).contains(point)) {
            m_panTrack.m_axisLock = CActionMouseTrack::LockNone;
            m_panTrack.m_onlyAxis = -2;
            startTrack(m_panTrack, point, true);
        } else {
            ShowContextMenu(point);
        }
        return;
    }
    if (event->button() == Qt::LeftButton && !sliderMouse(point, true))
        onLeftDown(point, event->modifiers());
}

void CGraphWnd::onLeftDown(QPoint point, Qt::KeyboardModifiers keys)
{
    CGraphCurve &g = *m_graphData;
    const int tool = Tool();
    int handle = 0;
    const int objectIndex = ObjectAt(point, handle);
    if (objectIndex >= 0) {
        CGraphNotifyRecord record;
        record.point = point;
        record.objectIndex = objectIndex;
        notify(NotifyObjectClicked, record);
        if (record.consumed)
            return;
    }
    if (tool == 11) {
        if (m_cursorObject)
            m_cursorObject->OnCursorEvent(this, point, int(keys) | int(Qt::LeftButton), CGraphCursorBase::CursorLeftDown);
        return;
    }
    const bool control = keys & Qt::ControlModifier;
    const QRect plot = EdgesToQRect(g.m_plotRect);
    if (startPlacing(tool, point, keys))
        return;
    if (tool == 1 && EdgesToQRect(g.m_titleRect).contains(point)) {
        m_titleBoxTrack.m_titleRect = EdgesToQRect(g.m_titleRect);
        startTrack(m_titleBoxTrack, point);
        return;
    }
    switch (tool) {
    case 1:
        if (objectIndex >= 0) {
            CTextnLine *object = g.m_textObjects.GetAt(objectIndex);
            const auto at = std::find(m_selection.begin(), m_selection.end(), object);
            const bool selected = at != m_selection.end();
            if (selected && handle != 10) {
                m_resizeTrack.SetHandle(object, handle);
                startTrack(m_resizeTrack, point);
                return;
            }
            if (control && selected) {
                m_selection.erase(at);
                update();
                return;
            }
            if (!selected) {
                if (!control)
                    m_selection.clear();
                m_selection.push_back(object);
            }
            m_moveTrack.m_objects = m_selection;
            update();
            startTrack(m_moveTrack, point);
            return;
        }
        if (!control)
            m_selection.clear();
        update();
        startTrack(m_selectBoxTrack, point);
        return;
    case 2: {
        const int axis = AxisAt(point);
        if (axis >= -1) {
            m_scrollTrack.m_axisIndex = axis;
            startTrack(m_scrollTrack, point);
        } else if (plot.contains(point)) {
            m_panTrack.m_axisLock = CActionMouseTrack::LockNone;
            m_panTrack.m_onlyAxis = -2;
            startTrack(m_panTrack, point);
        }
        return;
    }
    case 3:
    case 4:
        if (plot.contains(point))
            startTrack(m_zoomBoxTrack, point);
        return;
    case 5: {
        const int axis = AxisAt(point);
        m_zoomPanTrack.m_axisIndex = axis >= 0 ? axis : -1;
        m_zoomPanTrack.m_axisLock = CActionMouseTrack::LockY;
        startTrack(m_zoomPanTrack, point);
        return;
    }
    case 6:
    case 7:
        if (plot.contains(point)) {
            m_zoomTrack.m_axisLock = tool == 6 ? CActionMouseTrack::LockX : CActionMouseTrack::LockY;
            startTrack(m_zoomTrack, point);
        }
        return;
    default:
        return;
    }
}

void CGraphWnd::mouseReleaseEvent(QMouseEvent *event)
{
    m_sliderDrag = false;
    if (m_activeTrack)
        m_activeTrack->HandleEvent(event);
}

void CGraphWnd::mouseMoveEvent(QMouseEvent *event)
{
    if (m_activeTrack) {
        m_activeTrack->HandleEvent(event);
        return;
    }
    const QPoint point = event->position().toPoint();
    if (!m_graphData)
        return;
    if (m_sliderDrag && (event->buttons() & Qt::LeftButton) && sliderMouse(point, false))
        return;
    if (Tool() == 11 && m_cursorObject) {
        m_cursorObject->OnCursorEvent(this, point, int(event->modifiers()) | int(event->buttons()),
                                      CGraphCursorBase::CursorMove);
    } else if (EdgesToQRect(m_graphData->m_plotRect).contains(point)) {
        emit PositionText(PositionTextAt(point));
    }
    updateCursor(point);
}

// A double click on a text object with the select tool opens its
// attributes; anywhere else it is a second click.
void CGraphWnd::mouseDoubleClickEvent(QMouseEvent *event)
{
    int handle = 0;
    const int object = event->button() == Qt::LeftButton && Tool() == 1 && m_graphData && !m_activeTrack
                           ? ObjectAt(event->position().toPoint(), handle)
                           : -1;
    if (object >= 0) {
        if (auto *text = dynamic_cast<CDrawText *>(m_graphData->m_textObjects.GetAt(object))) {
            EditTextAttributes(text);
            return;
        }
    }
    QWidget::mouseDoubleClickEvent(event);
}

void CGraphWnd::updateCursor(QPoint point)
{
    GraphCursorRole role = CursorArrow;
    const bool inPlot = m_graphData && EdgesToQRect(m_graphData->m_plotRect).contains(point);
    switch (Tool()) {
    case 1: {
        int handle = 0;
        if (m_graphData && EdgesToQRect(m_graphData->m_titleRect).contains(point))
            role = CursorTitle;
        else if (ObjectAt(point, handle) >= 0)
            role = handle == 10 ? CursorMove : (handle % 2 ? CursorSizeFDiag : CursorSizeBDiag);
        break;
    }
    case 8:
    case 9:
    case 10:
        role = inPlot ? CursorCross : CursorArrow;
        break;
    case 2: {
        const int axis = AxisAt(point);
        role = axis == -1 ? CursorSizeHorizontal : axis >= 0 ? CursorSizeVertical : inPlot ? CursorHand : CursorArrow;
        break;
    }
    case 3:
    case 4:
        role = inPlot ? CursorZoomBox : CursorArrow;
        break;
    case 5:
        role = CursorZoomPan;
        break;
    case 6:
        role = inPlot ? CursorZoomX : CursorArrow;
        break;
    case 7:
        role = inPlot ? CursorZoomY : CursorArrow;
        break;
    case 11:
        role = CursorCross;
        break;
    default:
        break;
    }
    if (m_activeTrack == &m_panTrack || m_activeTrack == &m_scrollTrack)
        role = CursorHandGrab;
    setCursor(GraphCursor(role));
}

void CGraphWnd::keyPressEvent(QKeyEvent *event)
{
    if (m_activeTrack) {
        m_activeTrack->HandleEvent(event);
        return;
    }
    if (event->matches(QKeySequence::Undo) && UndoObjectEdit())
        return;
    if (event->key() == Qt::Key_Delete && Tool() == 1 && m_graphData && m_graphData->m_drawLock == 0) {
        deleteSelection();
        return;
    }
    QWidget::keyPressEvent(event);
}

// ---- wheel -----------------------------------------------------------------

int CGraphWnd::scrollAxis(int bar) const
{
    if (bar == 0)
        return -1;
    return m_graphData && m_graphData->RangeCount() > 0
               ? std::clamp(int(m_graphData->m_activeAxis), 0, m_graphData->RangeCount() - 1)
               : 0;
}

void CGraphWnd::wheelScroll(int bar, int notches)
{
    if (m_scroll[bar].Scroll(*m_graphData, scrollAxis(bar), notches) != 0)
        Redraw(1);
}

bool CGraphWnd::GetScrollInfo(int bar, CScrollInfo &info) const
{
    if (bar != 0 && bar != 1)
        return false;
    ReadScrollInfo(m_scroll[bar].m_info, info);
    return true;
}

bool CGraphWnd::SetScrollInfo(int bar, const CScrollInfo &info)
{
    if (bar != 0 && bar != 1)
        return false;
    return ApplyScrollInfo(m_scroll[bar].m_info, info);
}

void CGraphWnd::OnScroll(int bar, int code, int thumb)
{
    if ((bar != 0 && bar != 1) || !m_graphData || m_graphData->RangeCount() == 0 || m_activeTrack)
        return;
    if (m_scroll[bar].Request(*m_graphData, scrollAxis(bar), code, thumb) == 0)
        return;
    Redraw(1);
    if (bar == 0)
        notifyChanged();
}

void CGraphWnd::wheelEvent(QWheelEvent *event)
{
    if (!m_graphData || m_graphData->RangeCount() == 0 || m_activeTrack)
        return;
    const QPoint angles = event->angleDelta(), pixels = event->pixelDelta();
    const int angle = angles.y() != 0 ? angles.y() : angles.x();
    const int pixel = pixels.y() != 0 ? pixels.y() : pixels.x();
    const Qt::KeyboardModifiers keys = event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier);
    event->accept();
    if (keys != Qt::NoModifier && keys != Qt::ShiftModifier && keys != Qt::ControlModifier) {
        m_wheelSteps.Reset();
        return;
    }
    if (keys != Qt::ControlModifier && pixel != 0) {
        // A touchpad that gives pixels scrolls by them, smoothly: the
        // picture follows the fingers.
        m_wheelSteps.Reset();
        if (keys == Qt::NoModifier) {
            const int axis = std::clamp(m_graphData->m_activeAxis, 0, m_graphData->RangeCount() - 1);
            PanByPixels(*m_graphData, QPoint(0, pixel), false, true, axis);
        } else {
            PanByPixels(*m_graphData, QPoint(-pixel, 0), true, false, -1);
            notifyChanged();
        }
        Redraw(1);
        return;
    }
    const int notches = m_wheelSteps.Take(angle, int(keys));
    if (notches == 0)
        return;
    if (keys == Qt::NoModifier) {
        wheelScroll(1, notches);
    } else if (keys == Qt::ShiftModifier) {
        wheelScroll(0, notches);
        notifyChanged();
    } else {
        const QPoint at = event->position().toPoint();
        for (int i = 0; i < std::abs(notches); ++i)
            ZoomAround(*m_graphData, at, notches > 0 ? 0.9 : 1.1, m_stepCounts);
        Redraw(1);
        notifyChanged();
    }
}

// ---- pop-up menu -------------------------------------------------------------

void CGraphWnd::BuildContextMenu(QPoint point, QMenu &menu)
{
    if (!m_graphData)
        return;
    const CGraphCurve &g = *m_graphData;
    const QRect plot = EdgesToQRect(g.m_plotRect);
    int handle = 0;
    const int object = ObjectAt(point, handle);
    const int curve = object < 0 ? CurveAt(point) : -1;
    if (!plot.adjusted(2, 2, -2, -2).contains(point) && curve < 0 && object < 0) {
        // over the frame and the axes
        addItem(menu, CmdGraphOptions, LanguageString(TextGraphOptions));
        addItem(menu, CmdXAxisDialog, LanguageString(TextXAxis));
        addItem(menu, CmdYAxisDialog, LanguageString(TextYAxis));
    } else if (curve >= 0 || object >= 0) {
        if (curve >= 0) {
            const CCurveInfo &c = *g.Curve(curve);
            addItem(menu, CmdCurveTitle, QString::asprintf("%s : %s", qPrintable(c.m_colName), qPrintable(curveLabel(c))),
                    false);
        }
        addItem(menu, CmdCurveProperties, LanguageString(TextProperties));
        addItem(menu, CmdDelete, LanguageString(TextDelete));
        if (curve >= 0) {
            const CCurveInfo &c = *g.Curve(curve);
            menu.addSeparator();
            addItem(menu, CmdOwnAxis, LanguageString(g.AxisOf(c) == 0 ? TextOwnAxis : TextBackToNormal));
            addItem(menu, CmdHighlight, LanguageString(g.m_highlightedCurve == curve ? TextBackToNormal : TextOnTop));
            menu.addSeparator();
            addItem(menu, CmdCopyValues, LanguageString(TextCopyValues));
            QAction *symbols = addItem(menu, CmdSymbols, LanguageString(TextSymbols));
            symbols->setCheckable(true);
            symbols->setChecked(c.m_symbol != 0);
        } else {
            menu.addSeparator();
            QAction *locked = addItem(menu, CmdLockObject, LanguageString(TextLocked));
            locked->setCheckable(true);
            locked->setChecked(g.m_textObjects.GetAt(object)->m_flags & CTextnLine::FlagLocked);
        }
    } else {
        // over the plot area
        QMenu *widths = menu.addMenu(LanguageString(TextLineWidth));
        for (int t = 0; t <= 6; ++t)
            addItem(*widths, CmdThicknessNone + t, ThicknessName(t));
        addItem(menu, CmdDelete, LanguageString(TextDelete), !m_selection.empty());
        addItem(menu, CmdUndoObject, LanguageString(CmdUndoObject), CanUndoObjectEdit());
        QMenu *columns = menu.addMenu(LanguageString(TextAddCurve));
        CCS_helper guard(g.m_data.Lock());
        for (int c = 0; c < g.m_data.ColumnCount(); ++c) {
            if (c == g.m_xColumnIndex)
                continue;
            const CGraphColumn *column = g.m_data.GetColumn(c);
            QAction *a = addItem(*columns, CmdColumnFirst + c, column ? column->m_name : QString::number(c));
            a->setCheckable(true);
            for (const CCurveInfo *info : g.m_curves)
                a->setChecked(a->isChecked() || (info->Origin() == CCurveBasicInfo::OriginColumn && info->m_colIndex == c));
        }
        columns->addSeparator();
        addItem(*columns, CmdAllColumns, LanguageString(TextAllColumns));
        addItem(*columns, CmdComputedCurve, LanguageString(TextComputedCurve));
        if (CScopeChannelsDialog::Applies(*this))
            addItem(menu, CmdScopeChannels, LanguageString(TextScopeChannels));
        addEmiMenu(menu);
    }
    menu.addSeparator();
    addItem(menu, CmdCopyPicture, LanguageString(TextCopyPicture));
}

void CGraphWnd::ShowContextMenu(QPoint point)
{
    QMenu menu(this);
    BuildContextMenu(point, menu);
    if (menu.isEmpty())
        return;
    const QAction *chosen = menu.exec(mapToGlobal(point));
    if (chosen)
        OnContextCommand(chosen->data().toInt(), point);
}

void CGraphWnd::OnContextCommand(int id, QPoint point)
{
    if (!m_graphData)
        return;
    CGraphCurve &g = *m_graphData;
    if (OnCommand(id))
        return;
    int handle = 0;
    const int object = ObjectAt(point, handle);
    const int curve = object < 0 ? CurveAt(point) : -1;
    bool changed = true;
    if (id >= CmdThicknessNone && id <= CmdThicknessNone + 6) {
        for (int i = 0; i < g.CurveCount(); ++i)
            g.Curve(i)->m_lineThickness = id - CmdThicknessNone;
    } else if (id >= CmdColumnFirst && id < CmdColumnFirst + g.m_data.ColumnCount()) {
        const int column = id - CmdColumnFirst;
        int present = -1;
        for (int i = 0; i < g.CurveCount(); ++i) {
            if (g.Curve(i)->Origin() == CCurveBasicInfo::OriginColumn && g.Curve(i)->m_colIndex == column)
                present = i;
        }
        if (present >= 0) {
            g.m_curves.DeleteAt(present);
            g.m_highlightedCurve = -1;
            g.m_curveHitRects.clear();
        } else {
            g.AddCurve(column, 0, false, changed);
        }
    } else {
        switch (id) {
        case CmdAllColumns:
            for (int c = 0; c < g.m_data.ColumnCount(); ++c) {
                bool present = c == g.m_xColumnIndex;
                for (const CCurveInfo *info : g.m_curves)
                    present = present || (info->Origin() == CCurveBasicInfo::OriginColumn && info->m_colIndex == c);
                if (!present)
                    g.AddCurve(c, 0, false, changed);
            }
            break;
        case CmdCurveProperties:
            if (auto *text = object >= 0 ? dynamic_cast<CDrawText *>(g.m_textObjects.GetAt(object)) : nullptr) {
                EditTextAttributes(text);
                return;
            }
            openOptions(COptionsFault::PageCurves, curve);
            return;
        case CmdDelete:
            if (object >= 0) {
                RememberObjects();
                CTextnLine *o = g.m_textObjects.GetAt(object);
                m_selection.erase(std::remove(m_selection.begin(), m_selection.end(), o), m_selection.end());
                g.m_textObjects.DeleteAt(object);
            } else if (curve >= 0) {
                g.m_curves.DeleteAt(curve);
                g.m_highlightedCurve = -1;
                g.m_curveHitRects.clear();
            } else {
                deleteSelection();
                return;
            }
            break;
        case CmdOwnAxis:
            if (curve >= 0) {
                CCurveInfo *c = g.Curve(curve);
                if (g.AxisOf(*c) == 0) {
                    const int axis = g.AddRange(c);
                    g.Range(axis)->m_textColor = c->m_color;
                    c->m_yAxisIndex = axis;
                    if (!(g.Range(axis)->m_viewMax > g.Range(axis)->m_viewMin))
                        g.SetYRange(axis, true, false, 0, 0, 0, false, true);
                    else
                        g.SetYRange(axis, false, false, g.Range(axis)->m_viewMin, g.Range(axis)->m_viewMax, 0, false, true);
                } else {
                    c->m_yAxisIndex = 0;
                }
            }
            break;
        case CmdHighlight:
            if (curve >= 0)
                g.m_highlightedCurve = g.m_highlightedCurve == curve ? -1 : curve;
            break;
        case CmdCopyValues:
            if (curve >= 0) {
                const CCurveInfo &c = *g.Curve(curve);
                QString text;
                CCS_helper guard(g.m_data.Lock());
                const CGraphColumn *x = c.m_ownX ? c.m_ownX.Get() : g.m_data.GetColumn(g.m_xColumnIndex);
                const CGraphColumn *y = c.Origin() == CCurveBasicInfo::OriginOwnColumns ? c.m_ownY.Get()
                                        : c.Origin() == CCurveBasicInfo::OriginComputed ? c.m_computedColumn.Get()
                                                                                         : g.m_data.GetColumn(c.m_colIndex);
                if (x && y) {
                    const int rows = c.m_ownX ? std::min(x->m_count, y->m_count) : std::min(g.m_data.RowCount(), y->m_count);
                    for (int r = 0; r < rows && r < x->m_count; ++r) {
                        if (x->m_valid[r] == 1 && y->m_valid[r] == 1)
                            text += QString::asprintf("%.12g\t%.12g\n", x->m_values[r], y->m_values[r]);
                    }
                }
                guard.Leave();
                QApplication::clipboard()->setText(text);
            }
            changed = false;
            break;
        case CmdSymbols:
            if (curve >= 0) {
                CCurveInfo *c = g.Curve(curve);
                c->m_symbol = c->m_symbol ? 0 : 2;
            }
            break;
        case CmdLockObject:
            if (object >= 0) {
                RememberObjects();
                g.m_textObjects.GetAt(object)->m_flags ^= CTextnLine::FlagLocked;
            }
            break;
        case CmdCopyPicture:
            QApplication::clipboard()->setImage(RenderImage(ClientRect().size()));
            changed = false;
            break;
        default:
            changed = false;
            break;
        }
    }
    if (changed) {
        Redraw(1);
        notifyChanged();
    }
}
