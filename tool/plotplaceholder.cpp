#include "tool/plotplaceholder.h"

#include "tool/capture/numbertext.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

bool CPlotFeed::DataLimits(double &xl, double &xh, double &yl, double &yh) const
{
    bool any = false;
    for (int c = 0; c < curves.size(); ++c) {
        const CPlotCurve &curve = curves.at(c);
        for (int i = 0; i < curve.count; ++i) {
            const double x = curve.pairs[2 * i];
            const double y = curve.pairs[2 * i + 1];
            if (!any) {
                xl = xh = x;
                yl = yh = y;
                any = true;
                continue;
            }
            xl = std::min(xl, x);
            xh = std::max(xh, x);
            if (c == 0) {
                yl = std::min(yl, y);
                yh = std::max(yh, y);
            }
        }
    }
    return any;
}

CPlotPlaceholder::CPlotPlaceholder(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void CPlotPlaceholder::SetFeed(const CPlotFeed &feed)
{
    m_feed = feed;
    update();
}

void CPlotPlaceholder::Paint(QPainter &painter, const QSize &size) const
{
    painter.fillRect(QRect(QPoint(0, 0), size), Qt::white);
    const QFontMetrics fm(painter.font());
    const int line = fm.height();
    const QRectF frame = QRectF(QPointF(0, 0), QSizeF(size))
                             .adjusted(fm.horizontalAdvance(QStringLiteral("-0.0000e-00")) + 8,
                                       line + 8, -24, -2 * line - 8);
    painter.setPen(QPen(QColor(160, 160, 160), 1));
    painter.drawRect(frame);

    const CPlotFeed &f = m_feed;
    const double dx = f.xHigh - f.xLow;
    const double dy = f.yHigh - f.yLow;
    if (!(std::isfinite(dx) && std::isfinite(dy) && dx != 0 && dy != 0))
        return;

    // The limits at the ends of the axes, and the axis names.
    auto limit = [](double v, bool log) { return FormatG(log ? std::pow(10.0, v) : v, 5); };
    painter.setPen(Qt::black);
    const int below = int(frame.bottom()) + 4;
    painter.drawText(QRectF(frame.left() - 100, below, 200, line), Qt::AlignHCenter, limit(f.xLow, f.xLog));
    painter.drawText(QRectF(frame.right() - 100, below, 200, line), Qt::AlignHCenter, limit(f.xHigh, f.xLog));
    painter.drawText(QRectF(frame.left(), below + line, frame.width(), line), Qt::AlignHCenter, f.xName);
    const qreal left = frame.left() - 6;
    painter.drawText(QRectF(0, frame.bottom() - line / 2, left, line), Qt::AlignRight, limit(f.yLow, f.yLog));
    painter.drawText(QRectF(0, frame.top() - line / 2, left, line), Qt::AlignRight, limit(f.yHigh, f.yLog));
    painter.drawText(QRectF(frame.left(), frame.top() - line - 6, frame.width(), line), Qt::AlignLeft, f.yName);
    auto axis = [](double v, bool log) { return log ? (v > 0 ? std::log10(v) : NAN) : v; };
    painter.save();
    painter.setClipRect(frame);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(200, 40, 40), 1.5));
    for (const CPlotCurve &curve : f.curves) {
        QPainterPath path;
        bool open = false;
        for (int i = 0; i < curve.count; ++i) {
            const double vx = (axis(curve.pairs[2 * i], f.xLog) - f.xLow) / dx;
            const double vy = (axis(curve.pairs[2 * i + 1], f.yLog) - f.yLow) / dy;
            if (!std::isfinite(vx) || !std::isfinite(vy)) {
                open = false;
                continue;
            }
            const QPointF p(frame.left() + vx * frame.width(), frame.bottom() - vy * frame.height());
            if (open)
                path.lineTo(p);
            else
                path.moveTo(p);
            open = true;
        }
        painter.drawPath(path);
    }
    painter.restore();
}

void CPlotPlaceholder::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    Paint(painter, size());
}
