#include "datasheetpicture.h"

#include <QBuffer>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <random>

namespace {

const char *const g_prefixLetters[] = {"p", "n", "u", "m", "", "k", "M", "G"};

// The text of a value with the prefix that keeps its number from 1 to 999.
QString prefixed(double v, bool microSign)
{
    if (v == 0)
        return QStringLiteral("0");
    int e3 = int(std::floor(std::log10(std::abs(v)) / 3 + 1e-9));
    e3 = std::clamp(e3, -4, 3);
    const double shown = v / std::pow(10.0, 3 * e3);
    const QString prefix = e3 == -2 && microSign ? QString(QChar(0x00B5)) : QString::fromLatin1(g_prefixLetters[e3 + 4]);
    return QString::number(shown, 'g', 6) + prefix;
}

struct CTick {
    double pixel;
    double value;
    bool major;
};

QList<CTick> ticksOf(const CAxisDraw &a, double from, double to)
{
    QList<CTick> ticks;
    const double span = to - from;
    if (!a.log) {
        for (int i = 0; i <= a.steps; ++i)
            ticks.append({from + span * i / a.steps, a.first + a.step * i, true});
        return ticks;
    }
    for (int d = 0; d <= a.steps; ++d) {
        const double decade = std::pow(10.0, a.first + d);
        ticks.append({from + span * d / a.steps, decade, true});
        if (d == a.steps)
            break;
        for (int m = 2; m <= 9; ++m)
            ticks.append({from + span * (d + std::log10(double(m))) / a.steps, decade * m, false});
    }
    return ticks;
}

// Draws a label's text; a decade with a raised exponent in two sizes.
// `anchor` is the point the label is placed by; `align` 0 centres it
// horizontally below the point, 1 puts its right edge there, centred
// vertically.
void drawLabel(QPainter &p, const QFont &font, const CAxisDraw &a, const CTick &t, QPointF anchor, int align)
{
    QString base, exponent;
    if (!a.log) {
        base = a.style == LabelStyle::Prefixed ? prefixed(t.value, a.microSign) : QString::number(t.value, 'g', 6);
    } else {
        const int e = int(std::lround(std::log10(t.value)));
        switch (a.style) {
        case LabelStyle::Plain: base = QString::number(t.value, 'g', 12); break;
        case LabelStyle::Prefixed: base = prefixed(t.value, a.microSign); break;
        case LabelStyle::Superscript: base = QStringLiteral("10"); exponent = QString::number(e); break;
        case LabelStyle::EForm: base = QStringLiteral("1E%1").arg(e); break;
        }
    }
    if (base.startsWith(u'-'))
        base.replace(0, 1, QChar(0x2212)); // a printed minus sign
    QFont small = font;
    small.setPixelSize(std::max(7, int(std::lround(font.pixelSize() * 0.7))));
    const QFontMetricsF fm(font), fs(small);
    const double width = fm.horizontalAdvance(base) + (exponent.isEmpty() ? 0 : fs.horizontalAdvance(exponent) + 1);
    const double capHeight = fm.capHeight();
    double left, baseline;
    if (align == 0) {
        left = anchor.x() - width / 2;
        baseline = anchor.y() + capHeight + (exponent.isEmpty() ? 0 : 0.45 * font.pixelSize());
    } else {
        left = anchor.x() - width;
        baseline = anchor.y() + capHeight / 2;
    }
    p.setFont(font);
    p.drawText(QPointF(left, baseline), base);
    if (!exponent.isEmpty()) {
        p.setFont(small);
        p.drawText(QPointF(left + fm.horizontalAdvance(base) + 1, baseline - 0.45 * font.pixelSize()), exponent);
        p.setFont(font);
    }
}

} // namespace

CDatasheetPicture MakeDatasheetPicture(const CDatasheetLayout &s)
{
    std::mt19937 random(s.seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    CDatasheetPicture out;
    QImage image(s.size, QImage::Format_RGB32);
    image.fill(Qt::white);

    QFont font(s.font);
    font.setPixelSize(s.fontPixels);
    font.setBold(s.bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    const QFontMetricsF fm(font);

    // Room for the Y labels and title on the left, the X labels below; the
    // frame's width and height are whole multiples of the steps, so that
    // the major lines fall on whole pixels.
    const int left = int(fm.horizontalAdvance(QStringLiteral("0000.0m")) + 3.5 * s.fontPixels) + int(unit(random) * 20);
    const int top = 20 + int(unit(random) * 20);
    const int availableW = s.size.width() - left - 30;
    const int availableH = s.size.height() - top - int(4.5 * s.fontPixels) - 20;
    const int right = left + availableW / s.x.steps * s.x.steps;
    const int bottom = top + availableH / s.y.steps * s.y.steps;

    const QList<CTick> xTicks = ticksOf(s.x, left, right);
    QList<CTick> yTicks = ticksOf(s.y, bottom, top);
    {
        QPainter p(&image);
        p.setRenderHint(QPainter::Antialiasing, s.antialias);
        p.setRenderHint(QPainter::TextAntialiasing, s.antialias);
        auto snapped = [&](double v) { return s.antialias ? v : std::round(v); };
        auto vline = [&](double x, double y0, double y1) {
            p.drawLine(QPointF(snapped(x) + 0.5, y0), QPointF(snapped(x) + 0.5, y1));
        };
        auto hline = [&](double y, double x0, double x1) {
            p.drawLine(QPointF(x0, snapped(y) + 0.5), QPointF(x1, snapped(y) + 0.5));
        };
        const QPen majorPen(QColor(150, 150, 150), 1, Qt::SolidLine, Qt::FlatCap);
        const QPen minorPen(QColor(200, 200, 200), 1, Qt::SolidLine, Qt::FlatCap);
        const QPen framePen(Qt::black, 1, Qt::SolidLine, Qt::FlatCap);
        for (const CTick &t : xTicks) {
            if (t.pixel == left || t.pixel == right)
                continue;
            if (s.fullGrid) {
                p.setPen(t.major ? majorPen : minorPen);
                vline(t.pixel, top, bottom + 1);
            } else {
                p.setPen(framePen);
                const double len = t.major ? 6 : 3;
                vline(t.pixel, bottom + 1 - len, bottom + 1);
                vline(t.pixel, top, top + len);
            }
        }
        for (const CTick &t : yTicks) {
            if (t.pixel == top || t.pixel == bottom)
                continue;
            if (s.fullGrid) {
                p.setPen(t.major ? majorPen : minorPen);
                hline(t.pixel, left, right + 1);
            } else {
                p.setPen(framePen);
                const double len = t.major ? 6 : 3;
                hline(t.pixel, left, left + len);
                hline(t.pixel, right + 1 - len, right + 1);
            }
        }
        // Curves across the grid, clipped to the frame.
        p.save();
        p.setClipRect(QRect(QPoint(left, top), QPoint(right, bottom)));
        const QColor colours[] = {QColor(20, 20, 160), QColor(180, 20, 20), QColor(0, 0, 0)};
        for (int c = 0; c < s.curves; ++c) {
            QPainterPath path;
            const double a = 0.2 + 0.6 * unit(random), b = 1.5 + 3 * unit(random), ph = 6 * unit(random);
            for (int i = 0; i <= 200; ++i) {
                const double u = i / 200.0;
                const double v = a + 0.25 * std::sin(b * u + ph) + 0.3 * (u - 0.5) * (c - 0.5);
                const QPointF pt(left + u * (right - left), bottom - v * (bottom - top));
                if (i == 0)
                    path.moveTo(pt);
                else
                    path.lineTo(pt);
            }
            p.setPen(QPen(colours[c % 3], 1.6));
            p.drawPath(path);
        }
        p.restore();
        p.setPen(framePen);
        vline(left, top, bottom + 1);
        vline(right, top, bottom + 1);
        hline(top, left, right + 1);
        hline(bottom, left, right + 1);

        // Labels at the major lines.
        p.setPen(Qt::black);
        for (const CTick &t : xTicks)
            if (t.major)
                drawLabel(p, font, s.x, t, QPointF(t.pixel + 0.5, bottom + 3 + 0.5 * s.fontPixels), 0);
        for (const CTick &t : yTicks)
            if (t.major)
                drawLabel(p, font, s.y, t, QPointF(left - 4, t.pixel + 0.5), 1);
        // Axis titles.
        p.setFont(font);
        const QString xTitle = QStringLiteral("VDS, Drain-Source Voltage (V)");
        p.drawText(QPointF((left + right) / 2.0 - fm.horizontalAdvance(xTitle) / 2,
                           bottom + 3 + 3.1 * s.fontPixels), xTitle);
        p.save();
        p.translate(12 + fm.ascent(), (top + bottom) / 2.0);
        p.rotate(-90);
        const QString yTitle = QStringLiteral("ID, Drain Current (A)");
        p.drawText(QPointF(-fm.horizontalAdvance(yTitle) / 2, 0), yTitle);
        p.restore();
    }

    for (const CTick &t : xTicks)
        out.xLines.append({s.antialias || t.major ? t.pixel : std::round(t.pixel), t.value});
    for (const CTick &t : yTicks)
        out.yLines.append({s.antialias || t.major ? t.pixel : std::round(t.pixel), t.value});

    if (s.rotationDegrees != 0) {
        const double cx = image.width() / 2.0, cy = image.height() / 2.0;
        QTransform t;
        t.translate(cx, cy);
        t.rotate(s.rotationDegrees);
        t.translate(-cx, -cy);
        QImage turned(image.size(), QImage::Format_RGB32);
        turned.fill(Qt::white);
        QPainter p(&turned);
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        p.setRenderHint(QPainter::Antialiasing);
        p.setTransform(t);
        p.drawImage(0, 0, image);
        p.end();
        image = turned;
        out.rotation = t;
    }
    if (s.jpegQuality > 0) {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "JPG", s.jpegQuality);
        image = QImage::fromData(buffer.data(), "JPG").convertToFormat(QImage::Format_RGB32);
    }
    out.image = image;
    return out;
}
