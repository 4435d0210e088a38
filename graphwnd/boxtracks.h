#pragma once
// Tracks that draw a frame and hand back a rectangle: the selection box,
// the zoom box, the title box moved by the mouse, and the box over a span
// of X.

#include "graphwnd/mousetrack.h"

// A dash-dot frame; the result is the rectangle (DragRect).
class CSelectBoxTrackGraph : public CActionMouseTrack
{
public:
    void PaintFeedback(QPainter &painter) override;
};

// A plain frame that zooms to the rectangle; it never scrolls.
class CZoomBoxTrackGraph : public CActionMouseTrack
{
public:
    bool TestAutoScroll(QPoint point) override;
    void ScrollTo(int dx, int dy, bool repeat) override;
    void PaintFeedback(QPainter &painter) override;
};

// The title box (the legend's first entry) following the mouse; the result
// is where it was dropped (MovedRect).
class CTitleBoxTrackGraph : public CActionMouseTrack
{
public:
    bool TestAutoScroll(QPoint point) override;
    void PaintFeedback(QPainter &painter) override;
    QRect MovedRect() const { return m_titleRect.translated(m_current - m_start); }

    QRect m_titleRect;
};

// A box over the plot's whole height between the start's X and the
// mouse's: a span of X.  With m_spanOnly clear the box follows the mouse
// in Y as well, held inside m_top..m_bottom.
class CPartialBoxTrackGraph : public CActionMouseTrack
{
public:
    bool StartTimer() override;
    void OnMouseMove(QPoint point, Qt::KeyboardModifiers keys) override;
    void PaintFeedback(QPainter &painter) override;
    QRect BoxRect() const;

    // the plot's height, set by the window before it starts the track
    int m_top = 0, m_bottom = 0;
    bool m_spanOnly = true;
};
