#pragma once
// Tracks on drawing objects: moving the selected ones, dragging a handle of
// one, and drawing a new line.  The outlines come from the objects
// themselves; nothing changes until the button goes up.

#include "graphwnd/mousetrack.h"

#include <vector>

class CTextnLine;

class CMoveTrackGraph : public CActionMouseTrack
{
public:
    // With result 1 each object moves by the drag.
    int EndTrack(int result) override;
    bool StartTimer() override;
    void Cancel() override;
    void ScrollTo(int dx, int dy, bool repeat) override;
    void PaintFeedback(QPainter &painter) override;

    std::vector<CTextnLine *> m_objects; // not owned
};

class CResizeTrackGraph : public CActionMouseTrack
{
public:
    // The object and the grab handle (as its HitTest gives them) in use.
    virtual void SetHandle(CTextnLine *object, int handle);
    int EndTrack(int result) override;
    void Cancel() override;
    void ScrollTo(int dx, int dy, bool repeat) override;
    void PaintFeedback(QPainter &painter) override;

    CTextnLine *m_object = nullptr;
    int m_handle = 0;
};

// A single line from the start to the mouse; the result is the line.
class CLineDragTrack : public CActionMouseTrack
{
public:
    int EndTrack(int result) override;
    bool StartTimer() override;
    void Cancel() override;
    void ScrollTo(int dx, int dy, bool repeat) override;
    void PaintFeedback(QPainter &painter) override;

    QPoint m_lineStart, m_lineEnd; // set when the track ends with 1
};
