#pragma once
// CGraphCursorBase: a cursor object a host hands to a graph window.  With
// the window's mouse tool at 11, every left click, right click and mouse
// move over the window goes to OnCursorEvent; what the cursor shows is the
// object's own business.  The window does not own the object.

#include <QPoint>

class CGraphWnd;

class CGraphCursorBase
{
public:
    // What brought the event: a move (with or without buttons held), or the
    // press of the left or the right button.
    enum CursorEvent : int { CursorMove = 0, CursorLeftDown = 1, CursorRightDown = 2 };

    virtual ~CGraphCursorBase() = default;
    // keys: the Qt::KeyboardModifiers and Qt::MouseButtons of the event,
    // or'ed together.  Nothing happens in the base.
    virtual void OnCursorEvent(CGraphWnd *window, QPoint point, int keys, CursorEvent event)
    {
        Q_UNUSED(window);
        Q_UNUSED(point);
        Q_UNUSED(keys);
        Q_UNUSED(event);
    }
};
