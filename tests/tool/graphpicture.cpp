#include "graphpicture.h"

#include <QPainter>

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
