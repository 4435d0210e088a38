#include "tool/autocal/labelvalue.h"

#include <cmath>
#include <optional>

namespace {

// Letters that OCR and typesetting use for the same sign.
QString normalised(QString t)
{
    t.replace(QChar(0x2212), u'-'); // minus sign
    t.replace(QChar(0x2013), u'-'); // en dash
    t.replace(QChar(0x00D7), u'x'); // multiplication sign
    t.replace(QChar(0x00B7), u'x'); // middle dot as in 1·10
    t.replace(QChar(0x03BC), QChar(0x00B5)); // Greek mu as micro sign
    t.remove(u' ');
    t.remove(u'\n');
    t.remove(u'\t');
    // A single comma is a decimal comma; thousands separators are not used
    // on axes that a digitiser calibrates from.
    if (t.count(u',') == 1 && !t.contains(u'.'))
        t.replace(u',', u'.');
    return t;
}

std::optional<int> prefixExponent(QChar c)
{
    switch (c.unicode()) {
    case u'p': return -12;
    case u'n': return -9;
    case u'u': case 0x00B5: return -6;
    case u'm': return -3;
    case u'k': case u'K': return 3;
    case u'M': return 6;
    case u'G': return 9;
    case u'T': return 12;
    default: return std::nullopt;
    }
}

// An optional sign, digits with at most one point, at least one digit.
// Returns the number of characters taken, 0 for none.
qsizetype scanDecimal(const QString &t, qsizetype from, double &value)
{
    qsizetype i = from;
    if (i < t.size() && (t[i] == u'-' || t[i] == u'+'))
        ++i;
    int digits = 0;
    bool point = false;
    while (i < t.size()) {
        if (t[i].isDigit() && t[i].unicode() < 128) {
            ++digits;
        } else if (t[i] == u'.' && !point) {
            point = true;
        } else {
            break;
        }
        ++i;
    }
    if (digits == 0)
        return 0;
    bool ok = false;
    value = t.mid(from, i - from).toDouble(&ok);
    return ok ? i - from : 0;
}

// A whole-number exponent, possibly in parentheses, that must fill the rest.
std::optional<int> exponentOf(QString t)
{
    if (t.startsWith(u'(') && t.endsWith(u')'))
        t = t.mid(1, t.size() - 2);
    if (t.isEmpty() || t.size() > 4)
        return std::nullopt;
    bool ok = false;
    const int e = t.toInt(&ok);
    if (!ok || std::abs(e) > 30)
        return std::nullopt;
    return e;
}

} // namespace

CLabelValue ParseLabelValue(const QString &rawText, const QString &rawExponent)
{
    CLabelValue r;
    const QString t = normalised(rawText);
    if (t.isEmpty())
        return r;

    if (!rawExponent.isEmpty()) {
        const std::optional<int> e = exponentOf(normalised(rawExponent));
        if (!e)
            return r;
        double mantissa = 1;
        if (t == QLatin1String("10")) {
            mantissa = 1;
        } else if (t.endsWith(QLatin1String("x10"))) {
            double m = 0;
            const QString head = t.left(t.size() - 3);
            if (scanDecimal(head, 0, m) != head.size())
                return r;
            mantissa = m;
        } else {
            return r;
        }
        r.ok = true;
        r.value = mantissa * std::pow(10.0, *e);
        r.decadeForm = true;
        return r;
    }

    double number = 0;
    const qsizetype n = scanDecimal(t, 0, number);
    if (n == 0)
        return r;
    const QString rest = t.mid(n);
    if (rest.isEmpty()) {
        r.ok = true;
        r.value = number;
        return r;
    }
    // 1E-3, 1e3
    if (rest.startsWith(u'E') || rest.startsWith(u'e')) {
        if (const std::optional<int> e = exponentOf(rest.mid(1))) {
            r.ok = true;
            r.value = number * std::pow(10.0, *e);
            r.decadeForm = true;
        }
        return r;
    }
    // 10^-3, 10^(-3), 2x10^3
    const qsizetype caret = rest.indexOf(u'^');
    if (caret >= 0) {
        const QString before = t.left(n + caret);
        double mantissa = 1;
        if (before == QLatin1String("10")) {
            mantissa = 1;
        } else if (before.endsWith(QLatin1String("x10"))) {
            const QString head = before.left(before.size() - 3);
            if (scanDecimal(head, 0, mantissa) != head.size())
                return r;
        } else {
            return r;
        }
        if (const std::optional<int> e = exponentOf(rest.mid(caret + 1))) {
            r.ok = true;
            r.value = mantissa * std::pow(10.0, *e);
            r.decadeForm = true;
        }
        return r;
    }
    // One prefix letter and nothing after it.
    if (rest.size() == 1) {
        if (const std::optional<int> p = prefixExponent(rest[0])) {
            r.ok = true;
            r.prefixExponent = *p;
            r.value = number * std::pow(10.0, *p);
        }
    }
    return r;
}
