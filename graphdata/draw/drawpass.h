#pragma once
// What every stage of one drawing pass shares: the graph, the painter, the
// request and what the pass decided before drawing (scales, colours, full or
// incremental, the layout, the X window).  The stages are, in order: taking
// the curves' columns (curvejobs), the layout (graphlayout), background and
// axes (axispaint), the curves (curvesdraw), the legend and the labels of
// fitted axes (legendpaint), and the drawing objects (objectpaint).

#include "graphdata/draw/graphdraw.h"
#include "graphdata/draw/graphlayout.h"

#include <QColor>
#include <QRect>

class QPainter;
class CGraphCurve;
class CGraphData_Data;

struct CDrawPass
{
    CDrawPass(CGraphCurve &graph, QPainter &painter, const CDrawRequest &request)
        : g(graph), p(painter), req(request)
    {
    }

    CGraphCurve &g;
    QPainter &p;
    const CDrawRequest &req;
    CGraphData_Data *data = nullptr;
    QRect target;
    double fontScale = 1, lineScale = 1;
    bool overview = false;
    bool bw = false;     // black and white
    bool threeD = false; // the box view
    bool strip = false;  // one strip per curve
    QColor back, fore;
    bool full = true;    // a full pass, not only the rows added since the last
    int rowCount = 0, generation = 0;
    CGraphLayout L;      // only on a full pass
    CIntRect plot;
    double xMin = 0, xMax = 0;
};
