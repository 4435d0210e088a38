#pragma once
// The three kinds of drawing object: a line with an optional arrow at its
// first end, a rectangle outline and a text.  Positions are graph values on
// the X axis and on the object's Y axis; pixels come from the frame of the
// present drawing, so the objects follow zoom and pan.  A position that is
// not a number is not drawn; one far outside the plot is clipped.

#include "graphdata/textnline.h"

#include <QString>
#include <cstdint>

class CBufferIO;

// A stored pen: style, width (x; y unused) and colour 0x00BBGGRR, 16 bytes.
struct CLogPen
{
    std::uint32_t style = 0;
    std::int32_t widthX = 1;
    std::int32_t widthY = 0;
    std::uint32_t color = 0;
};
static_assert(sizeof(CLogPen) == 16);

// The pixel of a graph value on `frame`: plotLeft + floor((x - xMin) *
// xScale), plotBottom - floor((y - yMin) * yScale), in doubles so that a far
// value stays representable, with log10 of the value on a log axis.  False
// when either is not finite, or not above 0 on a log axis.
bool ObjectPixel(const CObjectFrame &frame, double x, double y, double &px, double &py);
// The graph value whose pixel on `frame` is (px, py): aimed at the middle
// of the pixel, so that ObjectPixel gives that pixel back.  False when the
// frame has no scale.
bool ObjectValue(const CObjectFrame &frame, int px, int py, double &x, double &y);
// Whether the graph file of `fileFormat` stores the Y axis index of objects.
bool ObjectsStoreAxis(const CBufferIO &io, int fileFormat);

class CDrawLines : public CTextnLine
{
public:
    enum : int { ArrowNone = 0, ArrowOpen = 1, ArrowFilled = 2 };

    int ObjectKind() const override { return 1; }
    void Draw(QPainter &painter, bool withHandles, const CObjectFrame &frame) override;
    void DrawHandles(QPainter &painter) override;
    bool HitRect(const QRect &rect) const override;
    void DrawMoved(QPainter &painter, QPoint delta, const CObjectFrame &frame) override;
    // 1 and 2 the ends (with handles), 10 the line.
    int HitTest(QPoint point, bool withHandles) const override;
    void MoveBy(QPoint delta, const CObjectFrame &frame) override;
    QRect PixelRect(const CObjectFrame &frame) const override;
    QRect LastRect() const override;
    // Handle 1 or 2 moves that end.
    void MoveHandle(int handle, QPoint delta, const CObjectFrame &frame) override;
    void Transfer(CBufferIO &io, int fileFormat) override;

    double m_x1 = 0, m_y1 = 0, m_x2 = 0, m_y2 = 0;
    CLogPen m_pen;
    std::int32_t m_arrowStyle = ArrowNone;
    QPoint m_end1, m_end2; // pixels of the last drawing
    bool m_drawn = false;  // the ends above are from a drawing
    QRect m_lastRect;
};

class CDrawRect : public CTextnLine
{
public:
    int ObjectKind() const override { return 3; }
    void Draw(QPainter &painter, bool withHandles, const CObjectFrame &frame) override;
    void DrawHandles(QPainter &painter) override;
    bool HitRect(const QRect &rect) const override;
    // A rectangle's outline follows its handles: moving it is handle 10.
    void DrawMoved(QPainter &, QPoint, const CObjectFrame &) override {}
    // With handles: 11 to 14 the corners, 21 to 24 the edges; 10 inside.
    int HitTest(QPoint point, bool withHandles) const override;
    void MoveBy(QPoint, const CObjectFrame &) override {}
    QRect PixelRect(const CObjectFrame &frame) const override;
    QRect LastRect() const override;
    void DrawResized(QPainter &painter, int handle, QPoint delta, const CObjectFrame &frame) override;
    // 10 both corners; 11 (x1, y1), 12 (x2, y2), 13 (x1, y2), 14 (x2, y1);
    // 21 y1, 22 x2, 23 x1, 24 y2; other codes change nothing.
    void MoveHandle(int handle, QPoint delta, const CObjectFrame &frame) override;
    void Transfer(CBufferIO &io, int fileFormat) override;

    double m_x1 = 0, m_y1 = 0, m_x2 = 0, m_y2 = 0;
    CLogPen m_pen;
    QRect m_pixels; // normalised corners of the last drawing
    bool m_drawn = false;
};

class CDrawText : public CTextnLine
{
public:
    // Alignment: 0 centred on the point, 1 left edge on it and centred
    // vertically, 2 right edge on it and centred vertically, 3 left edge and
    // bottom on it.
    int ObjectKind() const override { return 2; }
    void Draw(QPainter &painter, bool withHandles, const CObjectFrame &frame) override;
    bool HitRect(const QRect &rect) const override;
    void DrawMoved(QPainter &painter, QPoint delta, const CObjectFrame &frame) override;
    int HitTest(QPoint point, bool withHandles) const override;
    void MoveBy(QPoint delta, const CObjectFrame &frame) override;
    QRect PixelRect(const CObjectFrame &frame) const override;
    QRect LastRect() const override;
    void Transfer(CBufferIO &io, int fileFormat) override;

    double m_x = 0, m_y = 0;
    std::int32_t m_alignment = 1;
    std::int32_t m_vertical = 0;
    std::int32_t m_fontHeight = 9; // points
    std::int32_t m_fontWeight = 400;
    std::int32_t m_italic = 0;
    QString m_face = QStringLiteral("Arial");
    QString m_text;
    std::uint32_t m_color = 0;
    QRect m_lastRect;
};
