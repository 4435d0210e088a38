#pragma once
// CGraphCursorBase: a cursor object a host hands to a graph window.  With
// the window's mouse tool at 11, every left click, right click and mouse
// move over the window goes to OnCursorEvent; what the cursor shows is the
// object's own business.

#include <QPoint>

class CGraphWnd;

class CGraphCursorBase
{
public:
    virtual ~CGraphCursorBase() = default;
    // keys: the Qt::KeyboardModifiers and Qt::MouseButtons of the event,
    // or'ed together.
    virtual void OnCursorEvent(CGraphWnd *window, QPoint point, int keys)
    {
        Q_UNUSED(window);
        Q_UNUSED(point);
        Q_UNUSED(keys);
    }
};
