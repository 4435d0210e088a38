// The animation slider of the graph window: a press on its track moves the
// current row there, and the row follows the mouse while the button is held.
#include "graphwnd/graphwnd.h"

#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/scopeview.h"

bool CGraphWnd::SetAnimationRow(int row)
{
    if (!m_graphData)
        return false;
    CGraphCurve &g = *m_graphData;
    // a row chosen by hand no longer follows the end
    g.m_displayFlags &= ~CGraphCurve::DisplaySliderAtEnd;
    if (g.m_animationRow == row)
        return false;
    g.m_animationRow = row;
    Redraw(1);
    return true;
}

bool CGraphWnd::sliderMouse(QPoint point, bool press)
{
    if (!m_graphData || !(m_graphData->m_displayFlags & CGraphCurve::DisplaySlider))
        return false;
    if (press) {
        const CIntRect &r = m_graphData->m_sliderRect;
        m_sliderDrag = r.right > r.left && EdgesToQRect(r).contains(point);
    }
    if (!m_sliderDrag)
        return false;
    const int row = SliderRowAt(*m_graphData, point.x(), m_graphData->m_data.RowCountLocked());
    if (row >= 0)
        SetAnimationRow(row);
    return true;
}
