#include "graphdata/axislabels.h"

#include <QDate>
#include <QTime>

#include <cmath>
#include <cstdio>

CUnitPrefix UnitPrefix(double v)
{
    const double a = std::fabs(v);
    struct Row
    {
        double from, to;
        const char *letter;
        double factor;
    };
    static const Row rows[] = {
        {1e-10, 1e-7, "n", 1e9}, {1e-7, 0.0001, "u", 1e6}, {0.0001, 0.1, "m", 1000},
        {1000, 1e6, "k", 0.001}, {1e6, 1e9, "M", 1e-6},    {1e9, 1e12, "G", 1e-9},
    };
    CUnitPrefix prefix;
    for (const Row &r : rows) {
        if (a >= r.from && a < r.to) {
            prefix.letter = QString::fromLatin1(r.letter);
            prefix.factor = r.factor;
            break;
        }
    }
    return prefix;
}

namespace {

// log10 |v| + 0.99, rounded down; nullopt-like flag for 0.
bool exponentOf(double v, int &e)
{
    const double a = std::fabs(v);
    if (!(a > 0) || !std::isfinite(a))
        return false;
    e = int(std::floor(std::log10(a) + 0.99));
    return true;
}

} // namespace

CUnitPrefix PrefixFromRange(double min, double max)
{
    CUnitPrefix prefix;
    int a = 0, b = 0, c = 1;
    const bool haveA = exponentOf(min, a);
    const bool haveB = exponentOf(max, b);
    if (!haveA && !haveB)
        return prefix;
    if (!haveA)
        a = b; // an end at 0 takes the other end's exponent
    if (!haveB)
        b = a;
    if (!std::isfinite(max - min))
        c = std::max(a, b) + 1; // a span past the largest double
    else if (!exponentOf(max - min, c))
        c = 1; // a span of 0 uses exponent 1
    // never more digits than a double holds
    prefix.digits = std::min(std::max(std::max(a - c, b - c) + 4, 6), 17);

    int p = std::min(a, b);
    if (p >= 2)
        p -= 2;
    else if (p < -1)
        p += 2;
    // onto a multiple of 3: the multiplier 10^-p moves by 10 or by 0.1
    const int r = ((p % 3) + 3) % 3;
    if (r == 1)
        p -= 1;
    else if (r == 2)
        p += 1;
    static const struct
    {
        int exponent;
        const char *letter;
    } letters[] = {{-9, "n"}, {-6, "u"}, {-3, "m"}, {3, "k"}, {6, "M"}, {9, "G"}};
    for (const auto &l : letters) {
        if (l.exponent == p) {
            prefix.letter = QString::fromLatin1(l.letter);
            prefix.factor = std::pow(10.0, -p);
            break;
        }
    }
    return prefix;
}

QString LabelText(double v, int digits)
{
    if (std::fabs(v) == 0)
        return QStringLiteral("0");
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*g", digits, v);
    QString text = QString::fromLatin1(buffer);
    if (text.contains(u'.')) {
        while (text.endsWith(u'0'))
            text.chop(1);
        if (text.endsWith(u'.'))
            text.chop(1);
    }
    return text;
}

QString AxisUnit(const QString &name)
{
    if (name.startsWith(QStringLiteral("Time")))
        return QStringLiteral("s");
    if (name.startsWith(QStringLiteral("Freq"), Qt::CaseInsensitive))
        return QStringLiteral("Hz");
    return QString();
}

QString AxisTitleText(const QString &name)
{
    const QString unit = AxisUnit(name);
    if (unit.isEmpty() || name.contains(u'['))
        return name;
    return name + QStringLiteral(" [") + unit + u']';
}

QString DateLabelText(double days, double step, bool first)
{
    // Day 0 of the count; 2958465 is the last day of the year 9999 and
    // -657434 the first of the year 100.
    static const QDate origin(1899, 12, 30);
    if (!std::isfinite(days) || days < -657434 || days >= 2958466)
        return LabelText(days, 6);
    // Whole minutes first, so that a tick a hair below midnight (k / 24
    // summed up) counts as the midnight it stands for.
    const double minutes = std::nearbyint(days * 1440);
    const double day = std::floor(minutes / 1440);
    const int minuteOfDay = int(minutes - day * 1440);
    const QDate date = origin.addDays(qint64(day));
    const QString dateText = date.toString(QStringLiteral("yyyy-MM-dd"));
    if (step >= 1 || minuteOfDay == 0)
        return dateText;
    const QString time = QTime(minuteOfDay / 60, minuteOfDay % 60).toString(QStringLiteral("HH:mm"));
    return first ? dateText + u' ' + time : time;
}

double XLabelLeft(double tickX, double textWidth, double rightLimit)
{
    const double left = tickX - textWidth / 2;
    if (left + textWidth > rightLimit)
        return tickX - textWidth;
    return left;
}

void RotatedLabelOffset(int degrees, double w, double h, double &dx, double &dy)
{
    dx = dy = 0;
    // The painter works in tenths of a degree; the offsets only need radians.
    const double a = degrees * M_PI / 180;
    if (degrees >= 1 && degrees <= 90) {
        dx = h * std::sin(a) * 0.5 + w * std::cos(a);
        dy = w * std::sin(a);
    } else if (degrees >= -90 && degrees <= -1) {
        dx = h * std::sin(a) * 0.5;
    }
}
