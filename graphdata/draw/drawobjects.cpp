#include "graphdata/draw/drawobjects.h"

#include "support/bufferio.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

// Pixels further out than this are clipped before they reach the painter.
constexpr double kClipMargin = 16;

QColor colorOf(std::uint32_t bgr)
{
    return QColor(int(bgr & 0xFF), int((bgr >> 8) & 0xFF), int((bgr >> 16) & 0xFF));
}

QPen penOf(const CLogPen &record, int printing)
{
    QPen pen(printing & 2 ? QColor(Qt::black) : colorOf(record.color));
    pen.setWidth(std::max(1, record.widthX));
    switch (record.style) {
    case 1: pen.setStyle(Qt::DashLine); break;
    case 2: pen.setStyle(Qt::DotLine); break;
    case 3: pen.setStyle(Qt::DashDotLine); break;
    case 4: pen.setStyle(Qt::DashDotDotLine); break;
    case 5: pen.setStyle(Qt::NoPen); break;
    default: pen.setStyle(Qt::SolidLine); break;
    }
    return pen;
}

// Cuts the segment (x1,y1)-(x2,y2) to `box`; false when nothing is left.
// An end outside is moved onto the edge it lies beyond, along the line as
// seen from the other end: a far end (1e300 pixels out) then does not wash
// the near one away in rounding.
bool clipSegment(const QRectF &box, double &x1, double &y1, double &x2, double &y2)
{
    enum { Left = 1, Right = 2, Top = 4, Bottom = 8 };
    auto code = [&](double x, double y) {
        return (x < box.left() ? Left : x > box.right() ? Right : 0) |
               (y < box.top() ? Top : y > box.bottom() ? Bottom : 0);
    };
    for (int round = 0; round < 8; ++round) {
        const int c1 = code(x1, y1), c2 = code(x2, y2);
        if (!(c1 | c2))
            return true;
        if (c1 & c2)
            return false;
        const bool first = c1 != 0;
        double &x = first ? x1 : x2, &y = first ? y1 : y2;
        const double ax = first ? x2 : x1, ay = first ? y2 : y1;
        const int c = first ? c1 : c2;
        double nx, ny;
        if (c & (Left | Right)) {
            nx = c & Left ? box.left() : box.right();
            ny = ay + (nx - ax) * ((y - ay) / (x - ax));
        } else {
            ny = c & Top ? box.top() : box.bottom();
            nx = ax + (ny - ay) * ((x - ax) / (y - ay));
        }
        if (!std::isfinite(nx) || !std::isfinite(ny))
            return false;
        x = nx;
        y = ny;
    }
    return code(x1, y1) == 0 && code(x2, y2) == 0;
}

QRectF clipBox(const CObjectFrame &frame)
{
    return QRectF(frame.plotRect).adjusted(-kClipMargin, -kClipMargin, kClipMargin, kClipMargin);
}

// The rectangle spanned by two pixels, both included, whatever their order.
QRect spanRect(QPoint a, QPoint b)
{
    return QRect(QPoint(std::min(a.x(), b.x()), std::min(a.y(), b.y())),
                 QPoint(std::max(a.x(), b.x()), std::max(a.y(), b.y())));
}

QRect spanRect(const QRect &r)
{
    return r.isNull() ? r : spanRect(r.topLeft(), r.bottomRight());
}

// A far value that overflows on the way to pixels stays on its side.
double pixelOffset(double value, double min, double scale)
{
    const double t = (value - min) * scale;
    if (std::isinf(t) && std::isfinite(value))
        return std::copysign(1e300, t);
    return std::floor(t);
}

// The pixels of two corners pulled into `box`, a rectangle of the same
// visible part.  Done on the doubles: a rectangle of far corners would lose
// its near edge to rounding.
QRectF clampedBox(const QRectF &box, double ax, double ay, double bx, double by)
{
    auto cx = [&](double v) { return std::clamp(v, box.left(), box.right()); };
    auto cy = [&](double v) { return std::clamp(v, box.top(), box.bottom()); };
    return QRectF(QPointF(std::min(cx(ax), cx(bx)), std::min(cy(ay), cy(by))),
                  QPointF(std::max(cx(ax), cx(bx)), std::max(cy(ay), cy(by))));
}

QPoint toPoint(double x, double y)
{
    return QPoint(int(std::lround(x)), int(std::lround(y)));
}

// An axis position (log10 units on a log axis) as a graph value, and back.
double fromAxis(double position, bool log)
{
    return log ? std::pow(10.0, position) : position;
}

double toAxis(double value, bool log)
{
    if (!log)
        return value;
    return value > 0 ? std::log10(value) : std::numeric_limits<double>::quiet_NaN();
}

// Moves the graph point (x, y) by a pixel delta: by delta / scale in axis
// units, so that a point keeps its place within its pixel.  A point that
// has no pixel stays where it is.
void movePoint(const CObjectFrame &frame, double &x, double &y, QPoint delta, bool moveX = true, bool moveY = true)
{
    double px, py;
    if (!ObjectPixel(frame, x, y, px, py))
        return;
    if (moveX && frame.xScale != 0)
        x = fromAxis(toAxis(x, frame.xLog) + delta.x() / frame.xScale, frame.xLog);
    if (moveY && frame.yScale != 0)
        y = fromAxis(toAxis(y, frame.yLog) - delta.y() / frame.yScale, frame.yLog);
}

void invertBlock(QPainter &painter, QPoint centre)
{
    painter.save();
    painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
    painter.fillRect(QRect(centre.x() - 3, centre.y() - 3, 7, 7), Qt::white);
    painter.restore();
}

QRect squareAround(QPoint p, int reach)
{
    return QRect(p.x() - reach, p.y() - reach, 2 * reach + 1, 2 * reach + 1);
}

// The pixels of two graph points; false when either has none.
bool pixelsOf(const CObjectFrame &frame, double x1, double y1, double x2, double y2, double &ax, double &ay, double &bx,
              double &by)
{
    return ObjectPixel(frame, x1, y1, ax, ay) && ObjectPixel(frame, x2, y2, bx, by);
}

// The pixel bounds of an object spanned by two graph points, pulled to the
// clip margin round the plot and inflated by 2.
QRect spanPixelRect(const CObjectFrame &frame, double x1, double y1, double x2, double y2)
{
    double ax, ay, bx, by;
    if (!pixelsOf(frame, x1, y1, x2, y2, ax, ay, bx, by))
        return QRect();
    return clampedBox(clipBox(frame), ax, ay, bx, by).toAlignedRect().adjusted(-2, -2, 2, 2);
}

// Draws `object` as `change` leaves it, then puts every member back, so
// that the outline of a drag changes nothing.
template <typename T, typename Change>
void drawChanged(T &object, QPainter &painter, const CObjectFrame &frame, Change change)
{
    const T saved = object;
    change();
    object.Draw(painter, false, frame);
    object = saved;
}

// Transfers the Y axis index where the file keeps it, else sets it to 0.
void transferAxis(CBufferIO &io, int fileFormat, int &axis)
{
    if (ObjectsStoreAxis(io, fileFormat)) {
        std::int32_t a = axis;
        io.Transfer(a);
        axis = a;
    } else if (io.IsReading()) {
        axis = 0;
    }
}

void transferPen(CBufferIO &io, CLogPen &pen)
{
    io.Transfer(pen.style).Transfer(pen.widthX).Transfer(pen.widthY).Transfer(pen.color);
}

} // namespace

bool ObjectPixel(const CObjectFrame &frame, double x, double y, double &px, double &py)
{
    px = frame.plotRect.left() + pixelOffset(toAxis(x, frame.xLog), frame.xMin, frame.xScale);
    py = frame.plotRect.bottom() - pixelOffset(toAxis(y, frame.yLog), frame.yMin, frame.yScale);
    return std::isfinite(px) && std::isfinite(py);
}

bool ObjectValue(const CObjectFrame &frame, int px, int py, double &x, double &y)
{
    if (!(frame.xScale != 0) || !(frame.yScale != 0) || !std::isfinite(frame.xScale) || !std::isfinite(frame.yScale))
        return false;
    x = fromAxis(frame.xMin + (px - frame.plotRect.left() + 0.5) / frame.xScale, frame.xLog);
    y = fromAxis(frame.yMin + (frame.plotRect.bottom() - py + 0.5) / frame.yScale, frame.yLog);
    return std::isfinite(x) && std::isfinite(y);
}

bool ObjectsStoreAxis(const CBufferIO &io, int fileFormat)
{
    return fileFormat >= 12 || (fileFormat == 11 && io.m_versionB >= 1);
}

// ---- line ----

void CDrawLines::Draw(QPainter &painter, bool withHandles, const CObjectFrame &frame)
{
    double ax, ay, bx, by;
    if (!pixelsOf(frame, m_x1, m_y1, m_x2, m_y2, ax, ay, bx, by))
        return;
    // Compared as doubles: far ends do not fit an int.
    if (ax == bx && ay == by)
        return;
    // The arrow's direction comes from the whole line, before clipping.
    const double length = std::hypot(bx - ax, by - ay);
    const double ux = (bx - ax) / length, uy = (by - ay) / length;
    const bool headVisible = clipBox(frame).contains(ax, ay);
    double cx1 = ax, cy1 = ay, cx2 = bx, cy2 = by;
    if (!clipSegment(clipBox(frame), cx1, cy1, cx2, cy2))
        return;
    const QPoint p1 = toPoint(cx1, cy1), p2 = toPoint(cx2, cy2);
    QPen pen = penOf(m_pen, frame.printing);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    QRect covered = spanRect(p1, p2);
    const double head = 6.0 + 2.0 * std::max(1, m_pen.widthX);
    if (m_arrowStyle == ArrowFilled && headVisible) {
        // Tail corners, neck, wings and tip: eight corners with the closing one.
        const double half = std::max(1.0, m_pen.widthX / 2.0), wing = head / 2;
        const double nx = -uy, ny = ux;
        const double neckX = ax + ux * head, neckY = ay + uy * head;
        QPolygonF arrow;
        arrow << QPointF(ax, ay) << QPointF(neckX + nx * wing, neckY + ny * wing)
              << QPointF(neckX + nx * half, neckY + ny * half) << QPointF(cx2 + nx * half, cy2 + ny * half)
              << QPointF(cx2 - nx * half, cy2 - ny * half) << QPointF(neckX - nx * half, neckY - ny * half)
              << QPointF(neckX - nx * wing, neckY - ny * wing) << QPointF(ax, ay);
        QColor fill = pen.color();
        QPen border(QColor(fill.red(), fill.green() * 3 / 4, fill.blue()));
        painter.setPen(border);
        painter.setBrush(fill);
        painter.drawPolygon(arrow);
        covered |= arrow.boundingRect().toAlignedRect();
    } else {
        painter.drawLine(p1, p2);
        if (m_arrowStyle == ArrowOpen && headVisible) {
            // Two strokes at 25 degrees to the line.
            const double c = std::cos(0.436), s = std::sin(0.436);
            const QPointF tip(ax, ay);
            const QPointF w1(ax + head * (ux * c - uy * s), ay + head * (uy * c + ux * s));
            const QPointF w2(ax + head * (ux * c + uy * s), ay + head * (uy * c - ux * s));
            painter.drawLine(tip, w1);
            painter.drawLine(tip, w2);
            covered |= QRectF(tip, w1).normalized().toAlignedRect() | QRectF(tip, w2).normalized().toAlignedRect();
        }
    }
    m_end1 = p1;
    m_end2 = p2;
    m_drawn = true;
    m_lastRect = spanRect(covered);
    if (withHandles)
        DrawHandles(painter);
}

void CDrawLines::DrawHandles(QPainter &painter)
{
    if (!m_drawn)
        return;
    invertBlock(painter, m_end1);
    invertBlock(painter, m_end2);
}

bool CDrawLines::HitRect(const QRect &rect) const
{
    if (!m_drawn)
        return false;
    const QRect r = spanRect(rect);
    const QRect box = spanRect(m_end1, m_end2).adjusted(-2, -2, 2, 2);
    if (!r.intersects(box))
        return false;
    // The line, two pixels thick either side, against the rectangle.
    double x1 = m_end1.x(), y1 = m_end1.y(), x2 = m_end2.x(), y2 = m_end2.y();
    const QRectF grown = QRectF(r).adjusted(-2, -2, 2, 2);
    return clipSegment(grown, x1, y1, x2, y2);
}

void CDrawLines::DrawMoved(QPainter &painter, QPoint delta, const CObjectFrame &frame)
{
    drawChanged(*this, painter, frame, [&] { MoveBy(delta, frame); });
}

int CDrawLines::HitTest(QPoint point, bool withHandles) const
{
    if (!m_drawn)
        return 0;
    if (withHandles) {
        if (squareAround(m_end1, 4).contains(point))
            return 1;
        if (squareAround(m_end2, 4).contains(point))
            return 2;
    }
    return HitRect(squareAround(point, 2)) ? 10 : 0;
}

void CDrawLines::MoveBy(QPoint delta, const CObjectFrame &frame)
{
    MoveHandle(1, delta, frame);
    MoveHandle(2, delta, frame);
}

void CDrawLines::MoveHandle(int handle, QPoint delta, const CObjectFrame &frame)
{
    if (handle == 1)
        movePoint(frame, m_x1, m_y1, delta);
    else if (handle == 2)
        movePoint(frame, m_x2, m_y2, delta);
}

QRect CDrawLines::PixelRect(const CObjectFrame &frame) const
{
    return spanPixelRect(frame, m_x1, m_y1, m_x2, m_y2);
}

QRect CDrawLines::LastRect() const
{
    return spanRect(m_lastRect).adjusted(-2, -2, 2, 2);
}

void CDrawLines::Transfer(CBufferIO &io, int fileFormat)
{
    io.Transfer(m_x1).Transfer(m_y1).Transfer(m_x2).Transfer(m_y2);
    transferPen(io, m_pen);
    io.Transfer(m_arrowStyle);
    transferAxis(io, fileFormat, m_yAxisIndex);
}

// ---- rectangle ----

void CDrawRect::Draw(QPainter &painter, bool withHandles, const CObjectFrame &frame)
{
    double ax, ay, bx, by;
    if (!pixelsOf(frame, m_x1, m_y1, m_x2, m_y2, ax, ay, bx, by))
        return;
    // Corners far out are pulled to just outside the plot, where the edges
    // they carry are not seen.
    const QRectF box = clipBox(frame);
    const QRectF cut = clampedBox(box, ax, ay, bx, by);
    // A rectangle wholly outside is squeezed onto the margin: not drawn.
    if (cut.width() == 0 && (cut.left() == box.left() || cut.left() == box.right()))
        return;
    if (cut.height() == 0 && (cut.top() == box.top() || cut.top() == box.bottom()))
        return;
    const QRect pixels = spanRect(toPoint(cut.left(), cut.top()), toPoint(cut.right(), cut.bottom()));
    m_pixels = pixels;
    m_drawn = true;
    painter.setPen(penOf(m_pen, frame.printing));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(pixels.x(), pixels.y(), pixels.width() - 1, pixels.height() - 1);
    if (withHandles)
        DrawHandles(painter);
}

void CDrawRect::DrawHandles(QPainter &painter)
{
    if (!m_drawn)
        return;
    const QRect &r = m_pixels;
    for (const QPoint &p : {r.topLeft(), r.bottomRight(), r.bottomLeft(), r.topRight()})
        invertBlock(painter, p);
}

bool CDrawRect::HitRect(const QRect &rect) const
{
    return m_drawn && spanRect(rect).intersects(m_pixels);
}

int CDrawRect::HitTest(QPoint point, bool withHandles) const
{
    if (!m_drawn)
        return 0;
    if (withHandles) {
        // The handles in the order of the stored corners: the first corner is
        // (x1, y1), which may lie on any side.
        const QRect &r = m_pixels;
        const QPoint corners[4] = {r.topLeft(), r.bottomRight(), r.bottomLeft(), r.topRight()};
        const QPoint edges[4] = {QPoint(r.center().x(), r.top()), QPoint(r.right(), r.center().y()),
                                 QPoint(r.left(), r.center().y()), QPoint(r.center().x(), r.bottom())};
        for (int i = 0; i < 4; ++i)
            if (squareAround(corners[i], 4).contains(point))
                return 11 + i;
        for (int i = 0; i < 4; ++i)
            if (squareAround(edges[i], 4).contains(point))
                return 21 + i;
    }
    return HitRect(squareAround(point, 2)) ? 10 : 0;
}

QRect CDrawRect::PixelRect(const CObjectFrame &frame) const
{
    return spanPixelRect(frame, m_x1, m_y1, m_x2, m_y2);
}

QRect CDrawRect::LastRect() const
{
    return m_pixels.adjusted(-2, -2, 2, 2);
}

void CDrawRect::DrawResized(QPainter &painter, int handle, QPoint delta, const CObjectFrame &frame)
{
    drawChanged(*this, painter, frame, [&] { MoveHandle(handle, delta, frame); });
}

void CDrawRect::MoveHandle(int handle, QPoint delta, const CObjectFrame &frame)
{
    // Handles name corners and edges on the screen: the stored (x1, y1)
    // pair is mapped onto them by where it lies.
    double left = std::min(m_x1, m_x2), right = std::max(m_x1, m_x2);
    double bottom = std::min(m_y1, m_y2), top = std::max(m_y1, m_y2);
    if (frame.yScale < 0)
        std::swap(bottom, top);
    switch (handle) {
    case 10:
        movePoint(frame, left, top, delta);
        movePoint(frame, right, bottom, delta);
        break;
    case 11: movePoint(frame, left, top, delta); break;
    case 12: movePoint(frame, right, bottom, delta); break;
    case 13: movePoint(frame, left, bottom, delta); break;
    case 14: movePoint(frame, right, top, delta); break;
    case 21: movePoint(frame, left, top, delta, false, true); break;
    case 22: movePoint(frame, right, top, delta, true, false); break;
    case 23: movePoint(frame, left, bottom, delta, true, false); break;
    case 24: movePoint(frame, right, bottom, delta, false, true); break;
    default: return;
    }
    m_x1 = left, m_y1 = top, m_x2 = right, m_y2 = bottom;
}

void CDrawRect::Transfer(CBufferIO &io, int fileFormat)
{
    io.Transfer(m_x1).Transfer(m_y1).Transfer(m_x2).Transfer(m_y2);
    transferPen(io, m_pen);
    transferAxis(io, fileFormat, m_yAxisIndex);
}

// ---- text ----

namespace {

int textFlags(int alignment)
{
    switch (alignment) {
    case 2: return Qt::AlignRight | Qt::TextDontClip;
    case 0: return Qt::AlignHCenter | Qt::TextDontClip;
    default: return Qt::AlignLeft | Qt::TextDontClip;
    }
}

QFont fontOf(const CDrawText &t, double scale)
{
    QFont font(t.m_face);
    font.setPointSizeF(std::max(1.0, t.m_fontHeight * (scale > 1.0 ? scale : 1.0)));
    font.setWeight(QFont::Weight(std::clamp(t.m_fontWeight / 10 * 10, 100, 900)));
    font.setItalic(t.m_italic != 0);
    return font;
}

// The text's block on the screen, placed on the point by the alignment.
QRect placeText(int alignment, bool vertical, QPoint at, QSize size)
{
    int w = size.width(), h = size.height();
    if (vertical)
        std::swap(w, h);
    switch (alignment) {
    case 1: return QRect(at.x(), at.y() - h / 2, w, h);
    case 3: return QRect(at.x(), at.y() - h, w, h);
    case 2: return QRect(at.x() - w, at.y() - h / 2, w, h);
    default: return QRect(at.x() - w / 2, at.y() - h / 2, w, h);
    }
}

} // namespace

void CDrawText::Draw(QPainter &painter, bool withHandles, const CObjectFrame &frame)
{
    Q_UNUSED(withHandles);
    double px, py;
    if (!ObjectPixel(frame, m_x, m_y, px, py) || !clipBox(frame).adjusted(-4000, -4000, 4000, 4000).contains(px, py))
        return;
    const QString text = m_text.isEmpty() ? QStringLiteral(" ") : m_text;
    const QFont font = fontOf(*this, frame.fontScale);
    painter.setFont(font);
    painter.setPen(frame.printing & 2 ? QColor(Qt::black) : colorOf(m_color));
    const int flags = textFlags(m_alignment);
    const QSize size = QFontMetrics(font, painter.device()).boundingRect(QRect(), flags, text).size();
    const QRect block = placeText(m_alignment, m_vertical != 0, toPoint(px, py), size);
    if (m_vertical) {
        painter.save();
        painter.translate(block.left(), block.bottom() + 1);
        painter.rotate(-90);
        painter.drawText(QRect(0, 0, size.width(), size.height()), flags, text);
        painter.restore();
    } else {
        painter.drawText(block, flags, text);
    }
    m_lastRect = block;
}

bool CDrawText::HitRect(const QRect &rect) const
{
    return !m_lastRect.isEmpty() && spanRect(rect).intersects(m_lastRect);
}

void CDrawText::DrawMoved(QPainter &painter, QPoint delta, const CObjectFrame &frame)
{
    drawChanged(*this, painter, frame, [&] { MoveBy(delta, frame); });
}

int CDrawText::HitTest(QPoint point, bool withHandles) const
{
    Q_UNUSED(withHandles);
    return m_lastRect.contains(point) ? 10 : 0;
}

void CDrawText::MoveBy(QPoint delta, const CObjectFrame &frame)
{
    movePoint(frame, m_x, m_y, delta);
}

QRect CDrawText::PixelRect(const CObjectFrame &frame) const
{
    double px, py;
    if (!ObjectPixel(frame, m_x, m_y, px, py))
        return QRect();
    const QFont font = fontOf(*this, frame.fontScale);
    const QSize size = QFontMetrics(font).boundingRect(QRect(), textFlags(m_alignment),
                                                       m_text.isEmpty() ? QStringLiteral(" ") : m_text).size();
    return placeText(m_alignment, m_vertical != 0, toPoint(px, py), size).adjusted(-2, -2, 2, 2);
}

QRect CDrawText::LastRect() const
{
    return spanRect(m_lastRect).adjusted(-2, -2, 2, 2);
}

void CDrawText::Transfer(CBufferIO &io, int fileFormat)
{
    io.Transfer(m_x).Transfer(m_y);
    io.Transfer(m_alignment).Transfer(m_vertical);
    io.Transfer(m_fontHeight).Transfer(m_fontWeight).Transfer(m_italic);
    io.TransferString(m_face);
    io.TransferString(m_text);
    io.Transfer(m_color);
    transferAxis(io, fileFormat, m_yAxisIndex);
    if (io.IsReading()) {
        m_alignment = std::clamp(m_alignment, 0, 3);
        if (m_face.isEmpty())
            m_face = QStringLiteral("Arial");
    }
}
