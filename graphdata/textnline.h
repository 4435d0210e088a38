#pragma once
// CTextnLine: a drawing object over a plot (a line, a rectangle or a text),
// kept in graph values so that it follows zoom and pan.  A graph owns its
// objects in a CTextnLineArray; the graph window selects, moves, resizes and
// deletes them through the operations below.  Painting needs QtGui, so the
// painter is only named here: the classes that draw live above this layer.

#include "support/arrayplus.h"

#include <QPoint>
#include <QRect>

class QPainter;
class CBufferIO;

// What a drawing object needs to know about the plot it is drawn on: the
// plot rectangle and the mapping of the X axis and of its own Y axis
// (pixel = plotLeft + floor((x - xMin) * xScale), and
// plotBottom - floor((y - yMin) * yScale)).  On a log axis the minimum and
// the scale are in log10 units, as the axis keeps its view, while the
// objects keep plain graph values: they stay on the same data when the axis
// changes between linear and log.
struct CObjectFrame
{
    QRect plotRect;
    double xMin = 0, xScale = 1;
    double yMin = 0, yScale = 1;
    bool xLog = false, yLog = false;
    double fontScale = 1;
    int printing = 0; // bit 1: black and white
};

class CTextnLine
{
public:
    // Bit of m_flags: the object is hidden and not drawn.
    enum : unsigned { FlagHidden = 0x1000, FlagLocked = 0x40 };

    virtual ~CTextnLine() = default;

    // 1 line, 2 text, 3 rectangle.
    virtual int ObjectKind() const = 0;
    // Draws the object, with its grab handles when withHandles is set, and
    // remembers the rectangle it covered (LastRect).
    virtual void Draw(QPainter &painter, bool withHandles, const CObjectFrame &frame) = 0;
    virtual void DrawHandles(QPainter &painter) { Q_UNUSED(painter); }
    // True when the object touches `rect` (pixels).
    virtual bool HitRect(const QRect &rect) const = 0;
    // The outline during a drag: drawn as if moved by `delta`, without
    // changing the object.
    virtual void DrawMoved(QPainter &painter, QPoint delta, const CObjectFrame &frame) = 0;
    // 0 no hit; 1, 2 .. a grab handle (with handles); 10 the object itself.
    virtual int HitTest(QPoint point, bool withHandles) const = 0;
    // Moves the object by a pixel delta on the given frame.
    virtual void MoveBy(QPoint delta, const CObjectFrame &frame) = 0;
    // The object's pixel bounds on `frame`, inflated by 2.
    virtual QRect PixelRect(const CObjectFrame &frame) const = 0;
    // The rectangle of the last Draw, inflated by 2.
    virtual QRect LastRect() const = 0;
    // The outline while handle `handle` is dragged by `delta`; objects that
    // cannot be resized draw nothing.
    virtual void DrawResized(QPainter &painter, int handle, QPoint delta, const CObjectFrame &frame)
    {
        Q_UNUSED(painter);
        Q_UNUSED(handle);
        Q_UNUSED(delta);
        Q_UNUSED(frame);
    }
    virtual void MoveHandle(int handle, QPoint delta, const CObjectFrame &frame)
    {
        Q_UNUSED(handle);
        Q_UNUSED(delta);
        Q_UNUSED(frame);
    }

    // Writes or reads the object in the direction of `io`: its position,
    // its attributes, then (from graph file format 12, or 11 with the
    // buffer's second version word at 1 or above) the Y axis index.
    // Objects that keep nothing of their own store nothing.
    virtual void Transfer(CBufferIO &io, int fileFormat)
    {
        Q_UNUSED(io);
        Q_UNUSED(fileFormat);
    }

    // Index of the Y axis the object's values belong to.
    int m_yAxisIndex = 0;
    unsigned m_flags = 0;
};

class CTextnLineArray : public CArrayPlus<CTextnLine>
{
};
