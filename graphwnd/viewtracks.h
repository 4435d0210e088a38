#pragma once
// Tracks that change the view while or after dragging: the zoom frame of
// the axis-bound zoom tools, zooming by dragging an edge, panning, and
// scrolling one axis.

#include "graphwnd/graphviewops.h"
#include "graphwnd/mousetrack.h"

// A rubber frame that zooms when the button goes up.  With the X lock the
// frame spans the plot's height and only X changes; with the Y lock it
// spans the plot's width and only Y changes.  No auto-scroll.
class CZoomTrack : public CActionMouseTrack
{
public:
    bool TestAutoScroll(QPoint point) override;
    // Works out the view the frame stands for (m_newView).
    void DrawFeedback() override;
    void PaintFeedback(QPainter &painter) override;
    QRect FrameRect() const;

    CViewRanges m_newView;
    bool m_haveView = false;
};

// Zooms by dragging one edge of the view: the drag's pixels times the value
// per pixel move the limit on the far side of the drag's midpoint, so that
// the picture stretches or shrinks along the drag.  X changes with lock 0
// or 1, Y (of m_axisIndex, or all Y axes when it is -1) with lock 0 or 2.
// No auto-scroll; Escape restores the view.
class CZoomPanTrack : public CActionMouseTrack
{
public:
    bool Track(CGraphWnd *window, QPoint point) override;
    bool TestAutoScroll(QPoint point) override;
    void DrawFeedback() override;
    void Cancel() override;

    CViewRanges m_startView;
};

// Pans the view while dragging.  Outside the client area the view keeps
// moving by the distance beyond the edge, once at the move and then every
// 200 ms.  Either button can run it; releasing the right one also ends it.
// Escape restores the view.
class CPanTrackGraph : public CActionMouseTrack
{
public:
    bool Track(CGraphWnd *window, QPoint point) override;
    bool StartTimer() override;
    bool TestAutoScroll(QPoint point) override;
    void ScrollTo(int dx, int dy, bool repeat) override;
    void OnMouseMove(QPoint point, Qt::KeyboardModifiers keys) override;
    void OnRightUp(QPoint point) override;
    void Cancel() override;

    // Which axes move: -2 all, -1 X alone, 0.. one Y axis alone.
    int m_onlyAxis = -2;
    CViewRanges m_startView;
    QPoint m_scrolled; // distance added by auto-scroll
    int m_moved = 0;   // the mouse went more than a few pixels

protected:
    void applyPan();
};

// Drags one axis as a scroll bar would: the X axis (m_axisIndex -1) or one
// Y axis moves with the mouse, the others stay.
class CScrollTrackAxis : public CPanTrackGraph
{
public:
    bool Track(CGraphWnd *window, QPoint point) override;
    bool StartTimer() override;
};
