#pragma once
// CTraceliftWnd: the canvas of the digitiser.  It shows the pasted picture,
// takes the clicks of the calibration and of the trace, draws the reference
// frame, the calibration grid with its labels and the traced curve, and reads
// out the value under the mouse.  The capture itself (mode, calibration,
// points) is the window-free CCaptureModel it holds.

#include "tool/capture/capturemodel.h"

#include <QFont>
#include <QImage>
#include <QWidget>

class CTraceliftZoom;
class QPainter;

// What the calibration read off the picture found, drawn over it until the
// trace begins: the lines along each axis, the labels with what was read
// in them, and the two proposed corners.  In picture pixels.
struct CProposalOverlay {
    QList<double> xLines;
    QList<double> yLines;
    QRectF frame;
    QList<QRect> labelBoxes;
    QStringList labelTexts;
    QList<QPoint> corners;
    bool IsEmpty() const { return frame.isNull(); }
};

class CTraceliftWnd : public QWidget
{
    Q_OBJECT
public:
    enum : int { IdCanvas = 1095, IdMagnifier = 1100 };

    explicit CTraceliftWnd(QWidget *parent = nullptr);

    CCaptureModel m_capture;

    CaptureMode Mode() const { return m_capture.m_mode; }
    void SetMode(CaptureMode mode);

    // Takes the clipboard's picture; false when the clipboard holds none.
    bool PasteFromClipboard();
    // Makes a copy of the picture the canvas's own, shows it, and clears the
    // drag, the pan and the mode (the caller sets the mode it wants).  False
    // for a null picture.
    bool CopyBitmap(const QImage &source);
    const QImage &Bitmap() const { return m_bitmap; }

    // The overlay of a proposed calibration; an empty one removes it, and so
    // does a new picture.
    void SetProposalOverlay(const CProposalOverlay &overlay);
    const CProposalOverlay &ProposalOverlay() const { return m_overlay; }

    // Draws the canvas as it stands into any painter of the given size.
    void Paint(QPainter &painter, const QSize &size) const;

    // The frame rectangle of the present mode, in canvas pixels.
    QRect FrameRect(const QSize &size) const;
    // The width of "10000.00" in the canvas's font: the room kept for the
    // Y labels left of the default rectangle.
    int LabelTextWidth() const;
    // Sets the default rectangle from the present size (the mode becomes
    // ModePlotted).
    void SetDefaultRectangle();

    // The magnifier (control 1100), a child of the canvas that the right
    // button opens over a shown picture; every click and step hides it.
    CTraceliftZoom *Magnifier() const { return m_zoom; }
    void HideMagnifier();

    // A left click at a canvas position, whole or (from the magnifier) in
    // fractions of a pixel: the click rule runs, the magnifier is hidden,
    // and `clicked` goes out.
    void ClickAt(double px, double py);
    // Where the mouse last was over the canvas.
    QPointF MousePosition() const { return m_mouse; }
    // The traced point drawn nearest to a canvas position, or -1 when there
    // is none; its distance in pixels goes to `distance` when given.
    int NearestPoint(double px, double py, double *distance = nullptr) const;
    // How near (in pixels) a press must come to a traced point to grab it.
    static constexpr double GrabRadius = 5.0;
    // The value under a canvas position to the read-out, when it maps.
    void ReadOut(double px, double py);

    // A proposal of automatic tracing, in canvas positions: drawn as marks
    // over the picture until it is accepted or dropped.
    void SetProposal(const QList<QPointF> &points);
    const QList<QPointF> &Proposal() const { return m_proposal; }

    // The picture is a clipboard's or a dropped file's; both count.
    static bool ClipboardHasPicture();
    static QImage ClipboardPicture();

signals:
    // A left click outside the drag modes, after the click rule ran; the
    // mode the click found.
    void clicked(const CClickResult &result, int modeBefore);
    // The mouse is over a spot that maps to (x, y), in a read-out mode.
    void valueUnderMouse(double x, double y);
    // A picture file was dropped or chosen while the canvas waits for a picture.
    void pictureFileOffered(const QString &path);
    // Shift and the left button in trace mode: follow the curve there
    // (canvas position).
    void curvePicked(double px, double py);
    // A traced point is dragged with the left button: the point's new canvas
    // position (where it was, moved as far as the mouse moved since the
    // press), as each move brings it; `finished` on the release.
    void pointDragged(int index, double px, double py, bool finished);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void updateCursor();
    void endPointDrag(QPointF at);
    void paintGrid(QPainter &painter, const QRect &frame, bool pictureShown) const;
    void paintOverlay(QPainter &painter) const;
    void choosePictureFile();

    QImage m_bitmap;
    int m_pictureWidth = 0;
    int m_pictureHeight = 0;
    QFont m_font;
    CTraceliftZoom *m_zoom = nullptr;
    QPoint m_dragLast;
    QPointF m_mouse;
    bool m_dragging = false;
    // A press near a traced point grabs it; it is dragged once the mouse
    // moves away from where it was pressed, else the press is a plain click.
    QList<QPointF> m_proposal;
    int m_grabbedPoint = -1;
    QPointF m_grabbedAt;
    QPointF m_grabbedPointPixel; // where the grabbed point was drawn
    bool m_pointDragging = false;
    CProposalOverlay m_overlay;
};
