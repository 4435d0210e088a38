#pragma once
// The position read-out of a graph window: the values under a pixel of the
// plot, and the text that shows them.  Values of log axes are values, not
// their logarithms.

#include <QPoint>
#include <QString>
#include <vector>

class CGraphCurve;

struct CGraphPosition
{
    double x = 0;
    // One value for each Y axis that shares the plot and is drawn, in the
    // order of the axes.
    std::vector<double> y;
};

// The values under `point` on the plot of the graph's last full draw.
// False when the X axis has no usable mapping (nothing drawn yet).
bool GraphPositionAt(const CGraphCurve &graph, QPoint point, CGraphPosition &position);

// "(%f, %f)" with at most one Y axis (0 for Y without one); with several
// "X=%f, Y1=%f" and ", Y%i=%f" for each further axis, counted from 2.
QString GraphPositionText(const CGraphPosition &position);
