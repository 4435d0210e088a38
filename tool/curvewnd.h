#pragma once
// CCurveWnd: the plot pane of the digitiser, a graph window like any other
// with its toolbar, pop-up menu and option commands.  What makes it a
// preview is only how the dialog feeds it (tool/plotfeed.h).

#include "graphwnd/graphwnd.h"

class CCurveWnd : public CGraphWnd
{
    Q_OBJECT
public:
    enum : int { IdPlot = 10101 };

    // Without a graph: the dialog gives it one.
    explicit CCurveWnd(QWidget *parent = nullptr);
};
