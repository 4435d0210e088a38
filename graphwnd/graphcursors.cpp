#include "graphwnd/graphcursors.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <array>
#include <optional>

namespace {

std::optional<std::array<QCursor, GraphCursorCount>> g_cursors;

enum class Mark { Plus, Horizontal, Vertical, Edges };

// A magnifier glass with a mark inside, hot spot in the glass's centre.
QCursor magnifier(Mark mark)
{
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const QPointF c(12, 12);
    p.setPen(QPen(Qt::white, 5, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(19, 19), QPointF(28, 28));
    p.drawEllipse(c, 9, 9);
    p.setPen(QPen(Qt::black, 3, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(19, 19), QPointF(28, 28));
    p.setPen(QPen(Qt::black, 1.6));
    p.setBrush(QColor(255, 255, 255, 200));
    p.drawEllipse(c, 9, 9);
    p.setPen(QPen(Qt::black, 1.6, Qt::SolidLine, Qt::FlatCap));
    switch (mark) {
    case Mark::Plus:
        p.drawLine(QPointF(7, 12), QPointF(17, 12));
        p.drawLine(QPointF(12, 7), QPointF(12, 17));
        break;
    case Mark::Horizontal:
        p.drawLine(QPointF(6, 12), QPointF(18, 12));
        p.drawLine(QPointF(6, 12), QPointF(9, 9));
        p.drawLine(QPointF(6, 12), QPointF(9, 15));
        p.drawLine(QPointF(18, 12), QPointF(15, 9));
        p.drawLine(QPointF(18, 12), QPointF(15, 15));
        break;
    case Mark::Vertical:
        p.drawLine(QPointF(12, 6), QPointF(12, 18));
        p.drawLine(QPointF(12, 6), QPointF(9, 9));
        p.drawLine(QPointF(12, 6), QPointF(15, 9));
        p.drawLine(QPointF(12, 18), QPointF(9, 15));
        p.drawLine(QPointF(12, 18), QPointF(15, 15));
        break;
    case Mark::Edges:
        p.drawRect(QRectF(8, 8, 8, 8));
        break;
    }
    p.end();
    return QCursor(pixmap, 12, 12);
}

// A cross of two lines with a small gap round the hot spot.
QCursor thinCross()
{
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    for (int pass = 0; pass < 2; ++pass) {
        p.setPen(QPen(pass == 0 ? Qt::white : Qt::black, pass == 0 ? 3 : 1));
        p.drawLine(16, 2, 16, 12);
        p.drawLine(16, 20, 16, 30);
        p.drawLine(2, 16, 12, 16);
        p.drawLine(20, 16, 30, 16);
    }
    p.end();
    return QCursor(pixmap, 16, 16);
}

// A pen tip for drawing a line, hot spot at the tip.
QCursor pencil()
{
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    QPainterPath body;
    body.moveTo(1, 1);
    body.lineTo(5, 12);
    body.lineTo(20, 27);
    body.lineTo(27, 20);
    body.lineTo(12, 5);
    body.closeSubpath();
    p.setPen(QPen(Qt::black, 1.2));
    p.setBrush(QColor(250, 230, 160));
    p.drawPath(body);
    p.end();
    return QCursor(pixmap, 1, 1);
}

} // namespace

void LoadGraphCursors()
{
    if (g_cursors)
        return;
    std::array<QCursor, GraphCursorCount> c;
    c[CursorZoomBox] = magnifier(Mark::Plus);
    c[CursorZoomX] = magnifier(Mark::Horizontal);
    c[CursorHand] = QCursor(Qt::OpenHandCursor);
    c[CursorHandGrab] = QCursor(Qt::ClosedHandCursor);
    c[CursorZoomY] = magnifier(Mark::Vertical);
    c[CursorArrow] = QCursor(Qt::ArrowCursor);
    c[CursorMove] = QCursor(Qt::SizeAllCursor);
    c[CursorSizeVertical] = QCursor(Qt::SizeVerCursor);
    c[CursorSizeHorizontal] = QCursor(Qt::SizeHorCursor);
    c[CursorSizeFDiag] = QCursor(Qt::SizeFDiagCursor);
    c[CursorSizeBDiag] = QCursor(Qt::SizeBDiagCursor);
    c[CursorLine] = pencil();
    c[CursorZoomPan] = magnifier(Mark::Edges);
    c[CursorCross] = thinCross();
    c[CursorTitle] = QCursor(Qt::PointingHandCursor);
    g_cursors = c;
    // Pixmap cursors must go while the application object still stands.
    qAddPostRoutine([] { g_cursors.reset(); });
}

const QCursor &GraphCursor(GraphCursorRole role)
{
    LoadGraphCursors();
    const int i = role >= 0 && role < GraphCursorCount ? role : CursorArrow;
    return (*g_cursors)[std::size_t(i)];
}
