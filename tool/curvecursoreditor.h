#pragma once
// CCurveCursorEditor: the plot's cursor object.  With the plot's mouse tool
// at 11 the graph window hands it every move and click; it turns the point
// into graph values and shows them in the dialog's read-out.  A right click
// opens the graph window's own pop-up menu, so that the window's commands
// stay at hand in the preview.

#include "graphwnd/graphcursorbase.h"

class QLineEdit;

class CCurveCursorEditor : public CGraphCursorBase
{
public:
    void OnCursorEvent(CGraphWnd *window, QPoint point, int keys, CursorEvent event) override;

    // Flag 0: the position (x, y) as "(%.5g , %.5g)" into the read-out, when
    // one is set.  Other flags show nothing.  Always 1.
    virtual int OnCursorMoved(double x, double y, int flag);

    // The edit that shows the position (control 1092); not owned.
    void SetReadout(QLineEdit *edit) { m_readout = edit; }

private:
    QLineEdit *m_readout = nullptr;
};
