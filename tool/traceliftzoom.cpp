#include "tool/traceliftzoom.h"

#include "tool/traceliftwnd.h"

#include <QMouseEvent>
#include <QPainter>

CTraceliftZoom::CTraceliftZoom(CTraceliftWnd *canvas, int id) : QWidget(canvas), m_canvas(canvas)
{
    setObjectName(QString::number(id));
    setGeometry(0, 0, 10, 10);
    setMouseTracking(true);
    setCursor(Qt::CrossCursor);
    setAttribute(Qt::WA_OpaquePaintEvent);
    hide();
}

bool CTraceliftZoom::OpenAt(QPoint point, QPoint offset)
{
    const CaptureCalibration &c = m_canvas->m_capture.m_calibration;
    if (!(c.pictureLoaded && c.pictureShown))
        return false;
    const QPoint centre = point + offset;
    const int half = WindowSize / 2;
    const int patchHalf = PatchSize / 2;
    m_center = centre;
    m_screenRect = QRect(centre - QPoint(half, half), QSize(WindowSize, WindowSize));
    m_sourceRect = QRect(centre - QPoint(patchHalf, patchHalf), QSize(PatchSize, PatchSize));
    // Left where it falls: the canvas clips what runs past its edge.
    setGeometry(m_screenRect);
    show();
    raise();
    update();
    return true;
}

bool CTraceliftZoom::Hide()
{
    hide();
    return true;
}

QPointF CTraceliftZoom::CanvasPosition(QPointF windowPoint) const
{
    constexpr double eighth = 1.0 / int(Magnification);
    return QPointF(m_sourceRect.left() + windowPoint.x() * eighth, m_sourceRect.top() + windowPoint.y() * eighth);
}

void CTraceliftZoom::Paint(QPainter &painter) const
{
    // The patch as the picture has it (white where the picture ends), then
    // stretched without smoothing so that each picture pixel stays a square.
    const CaptureCalibration &c = m_canvas->m_capture.m_calibration;
    QImage patch(m_sourceRect.size(), QImage::Format_RGB32);
    patch.fill(Qt::white);
    {
        QPainter p(&patch);
        p.drawImage(QPoint(0, 0), m_canvas->Bitmap(),
                    m_sourceRect.translated(c.panX, c.panY));
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(QRect(QPoint(0, 0), m_screenRect.size()), patch);
}

void CTraceliftZoom::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    Paint(painter);
    // The window's own thin border, so that the enlarged patch stands apart
    // from the picture round it.
    painter.setPen(palette().color(QPalette::WindowText));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void CTraceliftZoom::mousePressEvent(QMouseEvent *event)
{
    // The right button does nothing here.
    if (event->button() != Qt::LeftButton) {
        event->accept();
        return;
    }
    const QPointF p = CanvasPosition(event->position());
    m_canvas->ClickAt(p.x(), p.y());
}

void CTraceliftZoom::mouseMoveEvent(QMouseEvent *event)
{
    const QPointF p = CanvasPosition(event->position());
    m_canvas->ReadOut(p.x(), p.y());
}
