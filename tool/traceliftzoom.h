#pragma once
// CTraceliftZoom: the magnifier of the canvas.  The right button opens it
// over the spot where it was pressed; it shows the 20 by 20 pixel patch of
// the picture round that spot eight times enlarged, and a click in it is a
// click on the canvas at an eighth of a pixel: window position (x, y)
// stands for canvas position (left + x / 8, top + y / 8) of the patch.
// Near the canvas's edge the window runs past it and is clipped there.

#include <QRect>
#include <QWidget>

class CTraceliftWnd;

class CTraceliftZoom : public QWidget
{
    Q_OBJECT
public:
    enum : int { Magnification = 8, PatchSize = 20, WindowSize = PatchSize * Magnification };

    // A hidden child of the canvas with the given control id.
    CTraceliftZoom(CTraceliftWnd *canvas, int id);

    // Opens the magnifier centred on point + offset (canvas client
    // coordinates; offset is zero from the canvas).  Does nothing and gives
    // false unless the canvas holds a picture and shows it.
    bool OpenAt(QPoint point, QPoint offset = QPoint());
    // Hides the window; true.
    bool Hide();

    // The canvas position a point of the window stands for.
    QPointF CanvasPosition(QPointF windowPoint) const;

    // Draws the enlarged patch into any painter (no frame, no crosshair).
    void Paint(QPainter &painter) const;

    QPoint m_center;
    QRect m_sourceRect; // the patch, in canvas client coordinates
    QRect m_screenRect; // the window's own place in the canvas

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    CTraceliftWnd *m_canvas; // the owner
};
