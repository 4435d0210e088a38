// The graph window's drawing objects: placing lines, rectangles and texts
// with tools 8 to 10, the end of the tracks that move and resize them, and
// the undo of the last edit.  The objects live with the graph, in graph
// values; the undo keeps the whole list as the graph file stores it.
#include "graphwnd/graphwnd.h"

#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/objectstore.h"
#include "graphwnd/textattributes.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <algorithm>
#include <memory>

namespace {

enum : int {
    TextNewLabel = 43784,
};

// A drag shorter than this places nothing: it was a click.
constexpr int kSmallestDrag = 3;

} // namespace

void CGraphWnd::RememberObjects()
{
    if (!m_graphData)
        return;
    m_undoObjects = StoreObjects(m_graphData->m_textObjects);
    m_haveUndo = true;
}

bool CGraphWnd::UndoObjectEdit()
{
    if (!m_graphData || !m_haveUndo)
        return false;
    QString message;
    m_selection.clear();
    const bool restored = RestoreObjects(m_undoObjects, m_graphData->m_textObjects, message);
    m_haveUndo = false;
    m_undoObjects.clear();
    if (!restored)
        return false;
    Redraw(1);
    notifyChanged();
    return true;
}

namespace {

bool sameAttributes(const CDrawText &a, const CDrawText &b)
{
    return a.m_text == b.m_text && a.m_face == b.m_face && a.m_fontHeight == b.m_fontHeight &&
           a.m_fontWeight == b.m_fontWeight && a.m_italic == b.m_italic && a.m_color == b.m_color &&
           a.m_alignment == b.m_alignment && a.m_vertical == b.m_vertical;
}

} // namespace

bool CGraphWnd::EditTextAttributes(CDrawText *text)
{
    if (!m_graphData || !text)
        return false;
    CTextAttributes dialog(this);
    dialog.Load(*text);
    const int result = m_runTextAttributes ? m_runTextAttributes(dialog) : dialog.exec();
    // The dialog may have run the event loop: the text must still be ours.
    if (result != QDialog::Accepted || !m_graphData || m_graphData->m_textObjects.Find(text) < 0)
        return false;
    CDrawText edited = *text;
    dialog.Store(edited);
    if (sameAttributes(edited, *text))
        return false;
    RememberObjects();
    dialog.Store(*text);
    Redraw(1);
    notifyChanged();
    return true;
}

bool CGraphWnd::onObjectCommand(int id)
{
    switch (id) {
    case CmdToolLine:
        SetTool(8);
        return true;
    case CmdToolRect:
        SetTool(9);
        return true;
    case CmdToolText:
        SetTool(10);
        return true;
    case CmdUndoObject:
        UndoObjectEdit();
        return true;
    default:
        return false;
    }
}

bool CGraphWnd::startPlacing(int tool, QPoint point, Qt::KeyboardModifiers keys)
{
    if (tool < 8 || tool > 10)
        return false;
    const QRect plot = EdgesToQRect(m_graphData->m_plotRect);
    if (!plot.contains(point))
        return true;
    if (tool == 8) {
        startTrack(m_lineDragTrack, point);
    } else if (tool == 9) {
        m_partialBoxTrack.m_top = plot.top();
        m_partialBoxTrack.m_bottom = plot.bottom();
        m_partialBoxTrack.m_spanOnly = keys & Qt::ShiftModifier;
        startTrack(m_partialBoxTrack, point);
    } else {
        QString text;
        if (m_askObjectText) {
            text = m_askObjectText(*this, point);
        } else {
            CInputPrompt prompt;
            prompt.parent = this;
            prompt.title = LanguageString(CmdToolText);
            prompt.prompt = LanguageString(TextNewLabel);
            text = AskText(prompt).value_or(QString());
        }
        double x, y;
        const int axis = std::clamp(m_graphData->m_activeAxis, 0, m_graphData->RangeCount() - 1);
        if (text.isEmpty() || !m_graphData || !ObjectValue(ObjectFrame(axis), point.x(), point.y(), x, y))
            return true;
        RememberObjects();
        auto *object = new CDrawText;
        object->m_x = x;
        object->m_y = y;
        object->m_yAxisIndex = axis;
        object->m_text = text;
        object->m_color = m_newPen.color;
        m_graphData->m_textObjects.Add(object);
        m_selection.assign(1, object);
        Redraw(1);
        notifyChanged();
    }
    return true;
}

bool CGraphWnd::objectTrackEnded(CActionMouseTrack *track, int result)
{
    CGraphCurve &g = *m_graphData;
    if (track == &m_moveTrack || track == &m_resizeTrack) {
        if (result == 1 && track->Current() != track->Start()) {
            m_undoObjects = m_pendingUndo;
            m_haveUndo = true;
            Redraw(1);
            notifyChanged();
        }
        m_pendingUndo.clear();
        return true;
    }
    if (track != &m_lineDragTrack && track != &m_partialBoxTrack)
        return false;
    if (result != 1)
        return true;
    const int axis = std::clamp(g.m_activeAxis, 0, g.RangeCount() - 1);
    const CObjectFrame frame = ObjectFrame(axis);
    CTextnLine *made = nullptr;
    if (track == &m_lineDragTrack) {
        // The arrow points where the drag ended: its head is the first end.
        const QPoint from = m_lineDragTrack.m_lineEnd, to = m_lineDragTrack.m_lineStart;
        auto line = std::make_unique<CDrawLines>();
        if ((to - from).manhattanLength() < kSmallestDrag ||
            !ObjectValue(frame, from.x(), from.y(), line->m_x1, line->m_y1) ||
            !ObjectValue(frame, to.x(), to.y(), line->m_x2, line->m_y2))
            return true;
        line->m_pen = m_newPen;
        line->m_arrowStyle = m_newArrowStyle;
        made = line.release();
    } else {
        const QRect box = m_partialBoxTrack.BoxRect();
        auto rect = std::make_unique<CDrawRect>();
        if (box.width() < kSmallestDrag || box.height() < kSmallestDrag ||
            !ObjectValue(frame, box.left(), box.top(), rect->m_x1, rect->m_y1) ||
            !ObjectValue(frame, box.right(), box.bottom(), rect->m_x2, rect->m_y2))
            return true;
        rect->m_pen = m_newPen;
        made = rect.release();
    }
    RememberObjects();
    made->m_yAxisIndex = axis;
    g.m_textObjects.Add(made);
    m_selection.assign(1, made);
    Redraw(1);
    notifyChanged();
    return true;
}
