#include "graphwnd/trackedits.h"

#include "graphdata/draw/drawtools.h"
#include "graphwnd/graphviewops.h"

#include <algorithm>

bool ZoomToFrame(CGraphCurve &g, const QRect &frame)
{
    const QRect inside = frame.normalized().intersected(EdgesToQRect(g.m_plotRect));
    if (inside.width() <= 2 || inside.height() <= 2)
        return false;
    ZoomToPixels(g, inside, true, true);
    return true;
}

bool MoveLegendTo(CGraphCurve &g, const QRect &moved)
{
    const CIntRect &plot = g.m_plotRect;
    const int width = std::max(1, plot.right - plot.left);
    const int offset = std::clamp((moved.left() - plot.left) * 10000 / width, 0, 10000);
    if (g.m_legendPos == 1 && g.m_legendOffset == offset)
        return false;
    g.m_legendPos = 1;
    g.m_legendOffset = offset;
    return true;
}

bool SelectObjectsIn(const CGraphCurve &g, const QRect &box, std::vector<CTextnLine *> &selection)
{
    bool added = false;
    for (CTextnLine *object : g.m_textObjects) {
        if ((object->m_flags & CTextnLine::FlagHidden) || !object->HitRect(box))
            continue;
        if (std::find(selection.begin(), selection.end(), object) != selection.end())
            continue;
        selection.push_back(object);
        added = true;
    }
    return added;
}
