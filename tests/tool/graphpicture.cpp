#include "graphpicture.h"

#include <QBuffer>
#include <QPainter>
#include <QPainterPath>

namespace {

double along(double low, double high, bool log, double t)
{
    if (!log)
        return low + (high - low) * t;
    return std::pow(10.0, std::log10(low) + (std::log10(high) - std::log10(low)) * t);
}

double fraction(double low, double high, bool log, double v)
{
    if (!log)
        return (v - low) / (high - low);
    return (std::log10(v) - std::log10(low)) / (std::log10(high) - std::log10(low));
}

} // namespace

double CGraphPicture::XAt(double px) const
{
    return along(xLow, xHigh, xLog, (px - lowerLeft.x()) / double(upperRight.x() - lowerLeft.x()));
}

double CGraphPicture::YAt(double py) const
{
    return along(yLow, yHigh, yLog, (py - lowerLeft.y()) / double(upperRight.y() - lowerLeft.y()));
}

CGraphPicture MakeGraphPicture(bool yLog, double (*f)(double), const QList<double> &xs)
{
    CGraphPicture g;
    g.image = QImage(640, 420, QImage::Format_RGB32);
    g.image.fill(Qt::white);
    g.lowerLeft = QPoint(70, 370);
    g.upperRight = QPoint(570, 50);
    g.xLow = 0;
    g.xHigh = 10;
    g.yLog = yLog;
    g.yLow = yLog ? 1e-3 : 0;
    g.yHigh = yLog ? 1e2 : 100;

    QPainter p(&g.image);
    const QRect area(QPoint(g.lowerLeft.x(), g.upperRight.y()), QPoint(g.upperRight.x(), g.lowerLeft.y()));
    p.setPen(QPen(QColor(200, 200, 200), 1));
    for (int i = 1; i < 10; ++i) {
        const int x = area.left() + area.width() * i / 10;
        p.drawLine(x, area.top(), x, area.bottom());
    }
    const int rows = yLog ? 5 : 10;
    for (int i = 1; i < rows; ++i) {
        const int y = area.top() + area.height() * i / rows;
        p.drawLine(area.left(), y, area.right(), y);
    }
    p.setPen(QPen(Qt::black, 1));
    p.drawRect(area);
    QFont font = p.font();
    font.setPixelSize(13);
    p.setFont(font);
    for (int i = 0; i <= 10; i += 2)
        p.drawText(QRect(area.left() + area.width() * i / 10 - 20, area.bottom() + 4, 40, 16),
                   Qt::AlignCenter, QString::number(i));
    for (int i = 0; i <= rows; ++i) {
        const QString label = yLog ? QStringLiteral("1e%1").arg(2 - i) : QString::number(100 - 10 * i);
        p.drawText(QRect(area.left() - 50, area.top() + area.height() * i / rows - 8, 44, 16),
                   Qt::AlignRight | Qt::AlignVCenter, label);
    }
    p.drawText(QRect(area.left(), area.bottom() + 22, area.width(), 18), Qt::AlignCenter,
               QStringLiteral("VCE (V)"));

    for (double x : xs) {
        const double fx = fraction(g.xLow, g.xHigh, false, x);
        const double fy = fraction(g.yLow, g.yHigh, yLog, f(x));
        g.vertices.append(QPoint(int(std::lround(g.lowerLeft.x() + fx * (g.upperRight.x() - g.lowerLeft.x()))),
                                 int(std::lround(g.lowerLeft.y() + fy * (g.upperRight.y() - g.lowerLeft.y())))));
    }
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(20, 40, 160), 2));
    for (int i = 1; i < g.vertices.size(); ++i)
        p.drawLine(g.vertices[i - 1], g.vertices[i]);
    return g;
}

double IdOfVds(double mV)
{
    return 20 * std::pow(mV / 1000, 1.1);
}

double CLogLogPicture::PixelX(double x) const
{
    return lowerLeft.x() + (upperRight.x() - lowerLeft.x()) * std::log10(x / xLow) / std::log10(xHigh / xLow);
}

double CLogLogPicture::PixelY(double y) const
{
    return lowerLeft.y() + (upperRight.y() - lowerLeft.y()) * std::log10(y / yLow) / std::log10(yHigh / yLow);
}

CLogLogPicture MakeLogLogPicture(std::initializer_list<double (*)(double)> curves)
{
    CLogLogPicture g;
    g.image = QImage(640, 440, QImage::Format_RGB32);
    g.image.fill(Qt::white);
    QPainter p(&g.image);
    p.setRenderHint(QPainter::Antialiasing);
    const QRect area(QPoint(g.lowerLeft.x(), g.upperRight.y()), QPoint(g.upperRight.x(), g.lowerLeft.y()));
    // Decades and their minor lines.
    const QPen minor(QColor(215, 215, 215), 1);
    const QPen major(QColor(160, 160, 160), 1);
    for (double decade = g.xLow; decade < g.xHigh * 0.99; decade *= 10)
        for (int k = 1; k <= 9; ++k) {
            const double x = g.PixelX(decade * k);
            p.setPen(k == 1 ? major : minor);
            p.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
        }
    for (double decade = g.yLow; decade < g.yHigh * 0.99; decade *= 10)
        for (int k = 1; k <= 9; ++k) {
            const double y = g.PixelY(decade * k);
            p.setPen(k == 1 ? major : minor);
            p.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
        }
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setPen(QPen(Qt::black, 1));
    p.drawRect(area);
    p.setRenderHint(QPainter::Antialiasing);
    QFont font = p.font();
    font.setPixelSize(12);
    p.setFont(font);
    const char *xLabels[] = {"100m", "1", "10", "100"};
    for (int i = 0; i < 4; ++i) {
        const double x = g.PixelX(g.xLow * std::pow(10.0, i));
        p.drawText(QRectF(x - 25, area.bottom() + 4, 50, 16), Qt::AlignCenter, QString::fromLatin1(xLabels[i]));
    }
    const char *yLabels[] = {"1u", "10u", "100u", "1m", "10m"};
    for (int i = 0; i < 5; ++i) {
        const double y = g.PixelY(g.yLow * std::pow(10.0, i));
        p.drawText(QRectF(area.left() - 50, y - 8, 44, 16), Qt::AlignRight | Qt::AlignVCenter,
                   QString::fromLatin1(yLabels[i]));
    }
    p.drawText(QRectF(area.left(), area.bottom() + 20, area.width(), 16), Qt::AlignCenter,
               QStringLiteral("VDS (V)"));
    p.save();
    p.translate(area.left() - 48, area.center().y());
    p.rotate(-90);
    p.drawText(QRectF(-100, -16, 200, 16), Qt::AlignCenter, QStringLiteral("ID (A)"));
    p.restore();
    // The curves, finely sampled and antialiased; what leaves the area is cut.
    p.setClipRect(area);
    p.setPen(QPen(QColor(200, 30, 30), 1.6));
    for (double (*f)(double) : curves) {
        QPainterPath path;
        for (int i = 0; i <= 600; ++i) {
            const double x = g.xLow * std::pow(g.xHigh / g.xLow, i / 600.0);
            const QPointF q(g.PixelX(x), g.PixelY(f(x)));
            if (i == 0)
                path.moveTo(q);
            else
                path.lineTo(q);
        }
        p.drawPath(path);
    }
    return g;
}

namespace {

double risingShape(double u) { return 0.1 + 0.75 * (1 - std::exp(-3 * u)); }
double fallingShape(double u) { return 0.85 - 0.7 * std::pow(u, 1.5); }
double wavyShape(double u) { return 0.3 + 0.15 * std::sin(2 * M_PI * 1.5 * u); }

} // namespace

double CCurveFamilyPicture::Y(const Curve &c, double x) const
{
    const double u = (x - area.left()) / double(area.width());
    return area.top() + area.height() * (1 - c.shape(u));
}

double CCurveFamilyPicture::Distance(const Curve &c, QPointF p) const
{
    double best = INFINITY;
    for (double x = std::max(c.xa, p.x() - 3); x <= std::min(c.xb, p.x() + 3); x += 0.01)
        best = std::min(best, std::hypot(x - p.x(), Y(c, x) - p.y()));
    return best;
}

CCurveFamilyPicture MakeCurveFamilyPicture(QSize size, int jpegQuality, CurveInks inks)
{
    CCurveFamilyPicture d;
    d.image = QImage(size, QImage::Format_RGB32);
    d.image.fill(Qt::white);
    d.area = QRect(QPoint(90, 40), QPoint(size.width() - 40, size.height() - 70));
    const QRect &a = d.area;
    QPainter p(&d.image);
    // Grid: ten by eight divisions, each with four minor lines.
    for (int i = 0; i <= 50; ++i) {
        p.setPen(QPen(i % 5 ? QColor(222, 222, 222) : QColor(170, 170, 170), 1));
        const int x = a.left() + int(std::lround(a.width() * i / 50.0));
        p.drawLine(x, a.top(), x, a.bottom());
    }
    for (int i = 0; i <= 40; ++i) {
        p.setPen(QPen(i % 5 ? QColor(222, 222, 222) : QColor(170, 170, 170), 1));
        const int y = a.top() + int(std::lround(a.height() * i / 40.0));
        p.drawLine(a.left(), y, a.right(), y);
    }
    p.setPen(QPen(Qt::black, 1));
    p.drawRect(a.adjusted(-1, -1, 0, 0));
    QFont font = p.font();
    font.setPixelSize(13);
    p.setFont(font);
    for (int i = 0; i <= 10; ++i)
        p.drawText(QRect(a.left() + a.width() * i / 10 - 20, a.bottom() + 6, 40, 16), Qt::AlignCenter,
                   QString::number(i * 2));
    for (int i = 0; i <= 8; ++i)
        p.drawText(QRect(a.left() - 60, a.bottom() - a.height() * i / 8 - 8, 52, 16),
                   Qt::AlignRight | Qt::AlignVCenter, QString::number(i * 0.5, 'f', 1));
    p.drawText(QRect(a.left(), a.bottom() + 26, a.width(), 18), Qt::AlignCenter, QStringLiteral("VDS (V)"));
    p.drawText(QRect(a.left() + 10, a.top() + 8, 200, 18), Qt::AlignLeft, QStringLiteral("TJ = 25 oC"));

    const struct {
        QColor colour;
        bool dashed;
        double ua, ub;
        double (*shape)(double);
    } specs[] = {
        {QColor(20, 40, 170), false, 0.02, 0.98, risingShape},
        {QColor(200, 30, 30), false, 0.05, 0.95, fallingShape},
        {QColor(20, 140, 40), true, 0.1, 0.9, wavyShape},
    };
    const QColor greys[] = {Qt::black, QColor(120, 120, 120), QColor(70, 70, 70)};
    p.setRenderHint(QPainter::Antialiasing);
    for (const auto &s : specs) {
        CCurveFamilyPicture::Curve c;
        c.colour = inks == CurveInks::Coloured ? s.colour : greys[&s - specs];
        c.dashed = s.dashed;
        c.shape = s.shape;
        c.xa = a.left() + s.ua * a.width();
        c.xb = a.left() + s.ub * a.width();
        QPainterPath path;
        for (double x = c.xa;; x = std::min(c.xb, x + 0.5)) {
            const QPointF q(x, d.Y(c, x));
            if (x == c.xa)
                path.moveTo(q);
            else
                path.lineTo(q);
            if (x == c.xb)
                break;
        }
        QPen pen(c.colour, 1.6, s.dashed ? Qt::DashLine : Qt::SolidLine, Qt::FlatCap);
        p.setPen(pen);
        p.drawPath(path);
        c.inkStart = c.xa;
        c.inkEnd = c.xb;
        // A dash is 4 pen widths and a space 2: the ink may stop before the path does.
        const double w = pen.widthF(), period = 6 * w, length = path.length();
        const double into = std::fmod(length, period);
        double inkLength = into > 4 * w ? length - (into - 4 * w) : length;
        if (s.dashed)
            c.inkEnd = path.pointAtPercent(path.percentAtLength(inkLength)).x();
        // The seed: the point near the middle whose pixel is darkest.
        double best = 1e9;
        for (double x = (c.xa + c.xb) / 2 - 5; x < (c.xa + c.xb) / 2 + 5; x += 0.25) {
            const QPointF q(x, d.Y(c, x));
            const QRgb px = d.image.pixel(q.toPoint());
            const double v = qRed(px) + qGreen(px) + qBlue(px);
            if (v < best) {
                best = v;
                c.seed = q;
            }
        }
        d.curves << c;
    }
    p.end();
    if (jpegQuality > 0) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        d.image.save(&buffer, "JPG", jpegQuality);
        d.image = QImage::fromData(bytes, "JPG").convertToFormat(QImage::Format_RGB32);
    }
    return d;
}
