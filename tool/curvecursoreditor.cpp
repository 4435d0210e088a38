#include "tool/curvecursoreditor.h"

#include "graphdata/draw/drawtools.h"
#include "graphdata/graphcurve.h"
#include "graphwnd/graphreadout.h"
#include "graphwnd/graphwnd.h"

#include <QLineEdit>

void CCurveCursorEditor::OnCursorEvent(CGraphWnd *window, QPoint point, int keys, CursorEvent event)
{
    Q_UNUSED(keys);
    if (!window)
        return;
    if (event == CursorRightDown) {
        window->ShowContextMenu(point);
        return;
    }
    // Moves and left clicks over the plot read out the values there.
    const CGraphCurve *graph = window->GetGraphData();
    if (!graph || !EdgesToQRect(graph->m_plotRect).contains(point))
        return;
    CGraphPosition position;
    if (!GraphPositionAt(*graph, point, position))
        return;
    OnCursorMoved(position.x, position.y.empty() ? 0.0 : position.y.front(), 0);
}

int CCurveCursorEditor::OnCursorMoved(double x, double y, int flag)
{
    if (flag != 0)
        return 1;
    const QString text = QString::asprintf("(%.5g , %.5g)", x, y);
    if (m_readout)
        m_readout->setText(text);
    return 1;
}
