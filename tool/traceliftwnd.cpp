#include "tool/traceliftwnd.h"

#include "support/controls/userprompts.h"
#include "support/languagestring.h"
#include "tool/traceliftzoom.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>
#include <QUrl>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

namespace {

constexpr int TextOpenPicture = 27580;
constexpr int TextOpenPictureCaption = 27582;
constexpr int TextPictureFilter = 27583;

// Colours are kept as 0x00BBGGRR words, as everywhere in the capture.
constexpr quint32 CurveColour = 0x8080ff; // the traced curve
constexpr quint32 FrameColour = 0xff8080; // frame and grid
constexpr quint32 LabelColour = 0xff0000; // labels when no picture is shown
constexpr quint32 ProposalColour = 0x00a000; // points proposed by automatic tracing

QColor colourOf(quint32 bgr)
{
    return QColor(int(bgr & 0xff), int((bgr >> 8) & 0xff), int((bgr >> 16) & 0xff));
}

bool isReadoutMode(CaptureMode mode)
{
    return mode == ModeTypedTrace || mode == ModePlotted || mode == ModeTrace;
}

bool isTraceMode(CaptureMode mode)
{
    return mode == ModeTypedTrace || mode == ModeTrace;
}

bool isDragMode(CaptureMode mode)
{
    return mode == ModeIdle || mode == ModePicturePlaced;
}

// The corners are used for the frame in the modes where they mean something:
// not while they are being placed, and not before a picture is calibrated.
bool cornersFrameMode(CaptureMode mode)
{
    return mode != ModeIdle && mode >= ModeTypedCornersSet
        && !(mode >= ModeWaitPicture && mode <= ModeCorner2);
}

void drawFrame(QPainter &painter, const QRect &r)
{
    painter.drawRect(r.normalized().adjusted(0, 0, -1, -1));
}

// The pixel a canvas position lies in, pinned to the int range.
int pixelOf(double p)
{
    if (!(p > double(INT_MIN)))
        return INT_MIN;
    if (p >= double(INT_MAX))
        return INT_MAX;
    return int(std::floor(p));
}

// A plain click stands for the centre of the pixel under the mouse.
QPointF pixelCentre(QPointF p)
{
    return QPointF(std::floor(p.x()) + 0.5, std::floor(p.y()) + 0.5);
}

QString withLetter(const QString &label, const QString &letter)
{
    return letter.trimmed().isEmpty() ? label : label + letter.trimmed();
}

} // namespace

CTraceliftWnd::CTraceliftWnd(QWidget *parent) : QWidget(parent)
{
    setObjectName(QString::number(IdCanvas));
    m_font = font();
    m_font.setPixelSize(12);
    m_font.setWeight(QFont::Normal);
    setMouseTracking(true);
    // A click gives the canvas the keyboard, so that the edit keys reach the trace.
    setFocusPolicy(Qt::ClickFocus);
    setAcceptDrops(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_zoom = new CTraceliftZoom(this, IdMagnifier);
}

void CTraceliftWnd::SetMode(CaptureMode mode)
{
    m_capture.m_mode = mode;
    updateCursor();
}

QImage CTraceliftWnd::ClipboardPicture()
{
    const QClipboard *clipboard = QGuiApplication::clipboard();
    const QMimeData *data = clipboard ? clipboard->mimeData() : nullptr;
    if (!data || !data->hasImage())
        return QImage();
    const QVariant v = data->imageData();
    QImage image = qvariant_cast<QImage>(v);
    if (image.isNull())
        image = qvariant_cast<QPixmap>(v).toImage();
    return image;
}

bool CTraceliftWnd::ClipboardHasPicture()
{
    return !ClipboardPicture().isNull();
}

bool CTraceliftWnd::PasteFromClipboard()
{
    return CopyBitmap(ClipboardPicture());
}

bool CTraceliftWnd::CopyBitmap(const QImage &source)
{
    if (source.isNull())
        return false;
    // Transparent parts of a picture show as the white of the canvas.
    QImage copy(source.size(), QImage::Format_RGB32);
    copy.fill(Qt::white);
    {
        QPainter p(&copy);
        p.drawImage(0, 0, source);
    }
    m_bitmap = std::move(copy);
    m_pictureWidth = m_bitmap.width();
    m_pictureHeight = m_bitmap.height();
    m_dragging = false;
    m_overlay = CProposalOverlay();
    m_capture.PicturePasted();
    updateCursor();
    update();
    return true;
}

int CTraceliftWnd::LabelTextWidth() const
{
    return QFontMetrics(m_font).horizontalAdvance(QStringLiteral("10000.00"));
}

void CTraceliftWnd::SetDefaultRectangle()
{
    m_capture.SetDefaultRectangle(width(), height(), LabelTextWidth());
    updateCursor();
}

void CTraceliftWnd::HideMagnifier()
{
    if (m_zoom->isVisible())
        m_zoom->Hide();
}

QRect CTraceliftWnd::FrameRect(const QSize &size) const
{
    const CaptureCalibration &c = m_capture.m_calibration;
    if (c.HasRectangle() && cornersFrameMode(m_capture.m_mode))
        return QRect(QPoint(pixelOf(c.firstCornerX), pixelOf(c.secondCornerY)),
                     QPoint(pixelOf(c.secondCornerX), pixelOf(c.firstCornerY)));
    const CCornerRect r = DefaultRectangle(size.width(), size.height(), LabelTextWidth());
    return QRect(QPoint(r.firstX, r.secondY), QPoint(r.secondX, r.firstY));
}

void CTraceliftWnd::Paint(QPainter &painter, const QSize &size) const
{
    const CaptureCalibration &c = m_capture.m_calibration;
    const CaptureMode mode = m_capture.m_mode;
    painter.save();
    painter.setFont(m_font);
    const QRect frame = FrameRect(size);
    const QPen curvePen(colourOf(CurveColour), 1);
    const QPen framePen(colourOf(FrameColour), 1);
    const bool pictureShown = c.pictureLoaded && c.pictureShown;

    painter.fillRect(QRect(QPoint(0, 0), size), Qt::white);
    if (pictureShown) {
        painter.drawImage(QPoint(-c.panX, -c.panY), m_bitmap);
        painter.setPen(framePen);
        painter.setBrush(Qt::NoBrush);
        if (mode != ModeIdle && !(mode >= ModeWaitPicture && mode <= ModeCorner2))
            drawFrame(painter, frame);
    } else {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(Qt::black, 1));
        drawFrame(painter, frame);
        painter.setPen(framePen);
        drawFrame(painter, frame);
    }

    if (pictureShown && !m_overlay.IsEmpty() && mode >= ModePicturePlaced && mode <= ModeValuesAwaited)
        paintOverlay(painter);

    // While the second corner is awaited, a small cross shows where the first
    // one was placed.
    if (mode == ModeCorner2 || mode == ModeTypedCorner2) {
        painter.setPen(QPen(colourOf(CurveColour), 2));
        const QPoint corner(pixelOf(c.firstCornerX), pixelOf(c.firstCornerY));
        painter.drawLine(corner - QPoint(9, 0), corner + QPoint(9, 0));
        painter.drawLine(corner - QPoint(0, 9), corner + QPoint(0, 9));
    }

    if (c.HasRectangle() && cornersFrameMode(mode) && c.xAtFirst != c.xAtSecond
        && c.yAtFirst != c.yAtSecond) {
        paintGrid(painter, frame, pictureShown);

        // The curve: straight segments in click order, no markers.
        const CPixelMapping m = m_capture.PixelMapping();
        if (m.drawable && m_capture.m_points.count > 1) {
            painter.setPen(curvePen);
            const double *p = m_capture.m_points.pairs.GetData();
            QPoint last(RoundPixelToInt(m.PixelX(p[0])), RoundPixelToInt(m.PixelY(p[1])));
            for (int i = 1; i < m_capture.m_points.count; ++i) {
                const QPoint next(RoundPixelToInt(m.PixelX(p[2 * i])),
                                  RoundPixelToInt(m.PixelY(p[2 * i + 1])));
                painter.drawLine(last, next);
                last = next;
            }
        }
    }
    // A proposal of automatic tracing: small rings joined by a thin line.
    if (!m_proposal.isEmpty()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(colourOf(ProposalColour), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawPolyline(m_proposal.constData(), int(m_proposal.size()));
        painter.setPen(QPen(colourOf(ProposalColour), 1.5));
        for (const QPointF &p : m_proposal)
            painter.drawEllipse(p, 3.0, 3.0);
    }
    painter.restore();
}

void CTraceliftWnd::paintGrid(QPainter &painter, const QRect &frameRect, bool pictureShown) const
{
    const CaptureCalibration &c = m_capture.m_calibration;
    const CPixelMapping m = m_capture.PixelMapping();
    if (!m.drawable)
        return;
    const QRect frame = frameRect.normalized();
    const QFontMetrics fm(m_font);
    const QColor textColour = colourOf(LabelColour);
    // Over a picture a label gets a white backing, so that it stays legible
    // where the picture has labels of its own.
    auto drawLabel = [&](int left, int top, const QString &text, int width) {
        if (pictureShown)
            painter.fillRect(QRect(left - 1, top, width + 2, fm.height()), Qt::white);
        painter.setPen(textColour);
        painter.drawText(left, top + fm.ascent(), text);
    };
    const QPen gridPen = painter.pen();
    // A tick exactly on a corner must not fall out by a rounding error.
    constexpr double slack = 1e-6;

    // X: labels centred below the frame, grid lines across it.
    const int nx = int(c.xTickLabels.size());
    const double xStep = nx >= 2 ? (m.gridHighX - m.gridLowX) / (nx - 1) : 0.0;
    const double xStepPx = xStep / m.valuePerPixelX;
    const double xFirst = (m.gridLowX - m.lowX) / m.valuePerPixelX + m.firstCornerX;
    const double xMin = std::min(c.firstCornerX, c.secondCornerX) - slack;
    const double xMax = std::max(c.firstCornerX, c.secondCornerX) + slack;
    for (int i = 0; i < nx; ++i) {
        const double x = xFirst + i * xStepPx;
        if (!pictureShown && c.xLog && i > 0) {
            painter.setPen(gridPen);
            for (int k = 2; k <= 9; ++k) {
                const double minor = std::log10(double(k)) * xStep / m.valuePerPixelX + (x - xStepPx);
                if (minor >= xMin && minor <= xMax) {
                    const int xm = RoundPixelToInt(minor);
                    painter.drawLine(xm, frame.top(), xm, frame.bottom());
                }
            }
        }
        if (x < xMin || x > xMax)
            continue;
        const int xi = RoundPixelToInt(x);
        if (i > 0 && i < nx - 1 && !pictureShown) {
            painter.setPen(gridPen);
            painter.drawLine(xi, frame.top(), xi, frame.bottom());
        }
        const QString label = withLetter(c.xTickLabels.at(i), c.xScaleLetter);
        const int w = fm.horizontalAdvance(label);
        drawLabel(xi - w / 2, frame.bottom() + 1, label, w);
    }

    // Y: labels right-aligned left of the frame, tested on whole pixels.
    const int ny = int(c.yTickLabels.size());
    const double yStep = ny >= 2 ? (m.gridHighY - m.gridLowY) / (ny - 1) : 0.0;
    const double yStepPx = yStep / m.valuePerPixelY;
    const double yFirst = (m.gridLowY - m.lowY) / m.valuePerPixelY + m.firstCornerY;
    const int yMin = pixelOf(std::min(c.firstCornerY, c.secondCornerY));
    const int yMax = pixelOf(std::max(c.firstCornerY, c.secondCornerY));
    for (int i = 0; i < ny; ++i) {
        const double y = yFirst + i * yStepPx;
        if (!pictureShown && c.yLog && i > 0) {
            painter.setPen(gridPen);
            for (int k = 2; k <= 9; ++k) {
                const int ym = RoundPixelToInt(std::log10(double(k)) * yStep / m.valuePerPixelY
                                               + (y - yStepPx));
                if (ym >= yMin && ym <= yMax)
                    painter.drawLine(frame.left(), ym, frame.right(), ym);
            }
        }
        const int yi = RoundPixelToInt(y);
        if (yi < yMin || yi > yMax)
            continue;
        if (i > 0 && i < ny - 1 && !pictureShown) {
            painter.setPen(gridPen);
            painter.drawLine(frame.left(), yi, frame.right(), yi);
        }
        const QString label = withLetter(c.yTickLabels.at(i), c.yScaleLetter);
        const int w = fm.horizontalAdvance(label);
        drawLabel(frame.left() - w - 2, yi - fm.height() / 2, label, w);
    }
    painter.setPen(gridPen);
}

void CTraceliftWnd::SetProposalOverlay(const CProposalOverlay &overlay)
{
    m_overlay = overlay;
    update();
}

void CTraceliftWnd::paintOverlay(QPainter &painter) const
{
    const CaptureCalibration &c = m_capture.m_calibration;
    painter.save();
    painter.translate(-c.panX, -c.panY);
    const QColor found(0, 150, 60);
    QPen dotted(found, 1, Qt::DotLine);
    painter.setPen(dotted);
    const QRectF f = m_overlay.frame;
    for (double x : m_overlay.xLines)
        painter.drawLine(QPointF(x + 0.5, f.top() - 6), QPointF(x + 0.5, f.bottom() + 6));
    for (double y : m_overlay.yLines)
        painter.drawLine(QPointF(f.left() - 6, y + 0.5), QPointF(f.right() + 6, y + 0.5));
    QFont small = m_font;
    small.setPixelSize(10);
    painter.setFont(small);
    const QFontMetrics fm(small);
    for (qsizetype i = 0; i < m_overlay.labelBoxes.size(); ++i) {
        const QRect &box = m_overlay.labelBoxes[i];
        painter.setPen(QPen(found, 1));
        painter.drawRect(box.adjusted(-1, -1, 0, 0));
        const QString text = m_overlay.labelTexts.value(i);
        if (text.isEmpty())
            continue;
        const QRect where(box.right() + 2, box.top() - fm.height() + 2, fm.horizontalAdvance(text) + 4, fm.height());
        painter.fillRect(where, QColor(235, 255, 240));
        painter.drawText(where, Qt::AlignCenter, text);
    }
    painter.setPen(QPen(QColor(220, 0, 0), 2));
    for (const QPoint &p : m_overlay.corners)
        painter.drawEllipse(QPointF(p.x() + 0.5, p.y() + 0.5), 6, 6);
    painter.restore();
}

void CTraceliftWnd::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    Paint(painter, size());
}

void CTraceliftWnd::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_capture.CanvasResized(width(), height(), LabelTextWidth());
}

void CTraceliftWnd::updateCursor()
{
    const CaptureCalibration &c = m_capture.m_calibration;
    const CaptureMode mode = m_capture.m_mode;
    if (c.pictureLoaded && c.pictureShown && isDragMode(mode))
        setCursor(m_dragging ? Qt::ClosedHandCursor : Qt::OpenHandCursor);
    else if (isReadoutMode(mode))
        setCursor(Qt::CrossCursor);
    else if (c.pictureLoaded && c.pictureShown && (mode == ModeCorner1 || mode == ModeCorner2))
        setCursor(Qt::CrossCursor); // aiming at a corner
    else
        unsetCursor();
}

void CTraceliftWnd::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::RightButton) {
        // Over a shown picture the right button opens the magnifier there.
        if (!m_zoom->OpenAt(event->position().toPoint()))
            QWidget::mousePressEvent(event);
        return;
    }
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    if (isDragMode(m_capture.m_mode)) {
        m_dragLast = event->position().toPoint();
        m_dragging = true;
        updateCursor();
        return;
    }
    if (isTraceMode(m_capture.m_mode) && (event->modifiers() & Qt::ShiftModifier)) {
        emit curvePicked(event->position().x(), event->position().y());
        return;
    }
    if (isTraceMode(m_capture.m_mode)) {
        double distance = 0;
        const int nearest = NearestPoint(event->position().x(), event->position().y(), &distance);
        if (nearest >= 0 && distance <= GrabRadius) {
            const CPixelMapping map = m_capture.PixelMapping();
            m_grabbedPoint = nearest;
            m_grabbedAt = event->position();
            m_grabbedPointPixel = QPointF(map.PixelX(m_capture.m_points.pairs[2 * nearest]),
                                          map.PixelY(m_capture.m_points.pairs[2 * nearest + 1]));
            m_pointDragging = false;
            return;
        }
    }
    const QPointF at = pixelCentre(event->position());
    ClickAt(at.x(), at.y());
}

void CTraceliftWnd::SetProposal(const QList<QPointF> &points)
{
    m_proposal = points;
    update();
}

int CTraceliftWnd::NearestPoint(double px, double py, double *distance) const
{
    const TracedPoints &points = m_capture.m_points;
    const CPixelMapping map = m_capture.PixelMapping();
    int nearest = -1;
    double best = std::numeric_limits<double>::infinity();
    if (!map.drawable)
        return -1;
    for (int i = 0; i < points.count; ++i) {
        const double d = std::hypot(map.PixelX(points.pairs[2 * i]) - px, map.PixelY(points.pairs[2 * i + 1]) - py);
        if (d < best) {
            best = d;
            nearest = i;
        }
    }
    if (distance)
        *distance = best;
    return nearest;
}

void CTraceliftWnd::ClickAt(double px, double py)
{
    const CaptureMode before = m_capture.m_mode;
    const CClickResult r = m_capture.SetFirstOrSecondCorner(px, py);
    if (r.repaint)
        update();
    updateCursor();
    HideMagnifier();
    emit clicked(r, before);
}

void CTraceliftWnd::ReadOut(double px, double py)
{
    double x = 0, y = 0;
    if (m_capture.MapPixelToValue(px, py, x, y))
        emit valueUnderMouse(x, y);
}

void CTraceliftWnd::mouseMoveEvent(QMouseEvent *event)
{
    m_mouse = event->position();
    const CaptureMode mode = m_capture.m_mode;
    if (m_grabbedPoint >= 0) {
        if (!(event->buttons() & Qt::LeftButton) || !isTraceMode(mode)) {
            // The button came up outside the window: the drag ends where it is.
            endPointDrag(event->position());
        } else {
            // A few pixels of wobble still make a click.
            constexpr double wobble = 2.0;
            const QPointF d = event->position() - m_grabbedAt;
            m_pointDragging = m_pointDragging || std::hypot(d.x(), d.y()) > wobble;
            if (m_pointDragging) {
                const QPointF to = m_grabbedPointPixel + d;
                emit pointDragged(m_grabbedPoint, to.x(), to.y(), false);
                ReadOut(to.x(), to.y());
            }
        }
    } else if (isDragMode(mode) && m_dragging) {
        if (!(event->buttons() & Qt::LeftButton)) {
            // The button came up outside the window.
            m_dragging = false;
            update();
        } else {
            const QPoint p = event->position().toPoint();
            if (p != m_dragLast) {
                m_capture.m_calibration.panX -= p.x() - m_dragLast.x();
                m_capture.m_calibration.panY -= p.y() - m_dragLast.y();
                m_dragLast = p;
                update();
            }
        }
    } else if (isReadoutMode(mode)) {
        // What a click here would give.
        const QPointF at = pixelCentre(event->position());
        ReadOut(at.x(), at.y());
    }
    updateCursor();
}

void CTraceliftWnd::endPointDrag(QPointF at)
{
    const int index = m_grabbedPoint;
    const bool dragged = m_pointDragging;
    const QPointF pressed = m_grabbedAt;
    m_grabbedPoint = -1;
    m_pointDragging = false;
    if (dragged) {
        const QPointF to = m_grabbedPointPixel + (at - pressed);
        emit pointDragged(index, to.x(), to.y(), true);
    }
    else if (isTraceMode(m_capture.m_mode))
        ClickAt(pixelCentre(pressed).x(), pixelCentre(pressed).y());
}

void CTraceliftWnd::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && m_grabbedPoint >= 0) {
        endPointDrag(event->position());
        return;
    }
    if (event->button() == Qt::LeftButton && m_dragging) {
        m_dragging = false;
        update();
        updateCursor();
    }
    QWidget::mouseReleaseEvent(event);
}

void CTraceliftWnd::contextMenuEvent(QContextMenuEvent *event)
{
    // The menu to open a picture file is there while a picture is awaited
    // and the right button did not open the magnifier instead.
    if (m_capture.m_mode != ModeWaitPicture || m_zoom->isVisible()) {
        event->ignore();
        return;
    }
    QMenu menu(this);
    QAction *open = menu.addAction(LanguageString(TextOpenPicture));
    if (menu.exec(event->globalPos()) == open)
        choosePictureFile();
}

void CTraceliftWnd::choosePictureFile()
{
    CFilePrompt prompt;
    prompt.parent = this;
    prompt.caption = LanguageString(TextOpenPictureCaption);
    prompt.filter = LanguageString(TextPictureFilter);
    const QString path = AskFileName(prompt);
    if (!path.isEmpty())
        emit pictureFileOffered(path);
}

namespace {

QString firstLocalFile(const QMimeData *data)
{
    if (!data || !data->hasUrls())
        return QString();
    for (const QUrl &url : data->urls())
        if (url.isLocalFile())
            return url.toLocalFile();
    return QString();
}

} // namespace

void CTraceliftWnd::dragEnterEvent(QDragEnterEvent *event)
{
    if (m_capture.m_mode == ModeWaitPicture && !firstLocalFile(event->mimeData()).isEmpty())
        event->acceptProposedAction();
    else
        event->ignore();
}

void CTraceliftWnd::dropEvent(QDropEvent *event)
{
    const QString path = firstLocalFile(event->mimeData());
    if (m_capture.m_mode != ModeWaitPicture || path.isEmpty()) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    emit pictureFileOffered(path);
}
