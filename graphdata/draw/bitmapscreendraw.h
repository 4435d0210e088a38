#pragma once
// The back buffer of a graph: an image kept from one paint to the next, and
// a scoped painter on it that copies what was drawn onto the real target
// when it goes.

#include <QImage>
#include <QPainter>
#include <QRect>
#include <optional>

class CBitmapScreenDraw
{
public:
    QImage m_image;
    int m_width = 0;
    int m_height = 0;
    // scoped painters working on the image now
    int m_useCount = 0;

    // Forgets the image, so that the next paint makes a new one.
    void Drop()
    {
        m_image = QImage();
        m_width = m_height = 0;
    }
};

class CDC_BitmapScreenDraw
{
public:
    // Paints into the stored image, which is kept when it is at least as
    // wide and as high as `rect` and otherwise replaced by one of exactly
    // that size.  Coordinates are those of `target`: the painter is moved so
    // that rect's corner falls on the image's corner.
    CDC_BitmapScreenDraw(CBitmapScreenDraw &store, QPainter &target, const QRect &rect);
    // Copies the rectangle onto the target.
    ~CDC_BitmapScreenDraw();
    CDC_BitmapScreenDraw(const CDC_BitmapScreenDraw &) = delete;
    CDC_BitmapScreenDraw &operator=(const CDC_BitmapScreenDraw &) = delete;

    QPainter &Painter() { return *m_painter; }

private:
    CBitmapScreenDraw &m_store;
    QPainter &m_target;
    QRect m_rect;
    std::optional<QPainter> m_painter;
};
