#include "tool/curvewnd.h"

// The window is a child of the dialog's pane and never carries a menu bar;
// beyond that it is created as any graph window is.
CCurveWnd::CCurveWnd(QWidget *parent) : CGraphWnd(parent, true)
{
    setObjectName(QString::number(IdPlot));
}
