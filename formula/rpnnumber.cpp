// Number literals with engineering prefixes and unit words.

#include "formula/rpnnumber.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>

namespace {

bool isDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

bool isAsciiLetter(char16_t c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

char16_t upper(char16_t c)
{
    return c >= u'a' && c <= u'z' ? char16_t(c - 32) : c;
}

int hexValue(char16_t c)
{
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10;
    return -1;
}

// A decimal number: sign, digits, point, digits and, when `exponentLetters`
// allows it, an exponent whose letter is followed by a sign or a digit.
// Returns the characters taken, 0 when there is no digit.
struct Decimal
{
    qsizetype mantissaEnd = 0; // end of sign, digits and fraction
    qsizetype end = 0;         // end including the exponent
    char16_t exponentLetter = 0;
    qsizetype exponentStart = 0; // first character after the exponent letter
};

bool scanDecimal(QStringView text, Decimal &d, bool withD)
{
    const qsizetype n = text.size();
    auto at = [&](qsizetype i) -> char16_t { return i < n ? text[i].unicode() : char16_t(0); };
    qsizetype i = 0;
    if (at(i) == u'+' || at(i) == u'-')
        ++i;
    qsizetype digits = 0;
    while (isDigit(at(i))) {
        ++i;
        ++digits;
    }
    if (at(i) == u'.') {
        qsizetype j = i + 1;
        qsizetype fraction = 0;
        while (isDigit(at(j))) {
            ++j;
            ++fraction;
        }
        if (digits + fraction > 0) {
            i = j;
            digits += fraction;
        }
    }
    if (digits == 0)
        return false;
    d.mantissaEnd = d.end = i;
    const char16_t e = at(i);
    if (e == u'e' || e == u'E' || (withD && (e == u'd' || e == u'D'))) {
        qsizetype j = i + 1;
        if (at(j) == u'+' || at(j) == u'-')
            ++j;
        if (isDigit(at(j))) {
            while (isDigit(at(j)))
                ++j;
            d.exponentLetter = e;
            d.exponentStart = i + 1;
            d.end = j;
        }
    }
    return true;
}

// The characters [0, length) of `text` as a double, read in the C locale.
// Characters are plain ASCII here: the scan above admitted nothing else.
double toDouble(QStringView text, qsizetype length)
{
    char small[96];
    std::string large;
    char *buf = small;
    if (length >= qsizetype(sizeof small)) {
        large.resize(std::size_t(length) + 1);
        buf = large.data();
    }
    qsizetype k = 0;
    for (qsizetype i = 0; i < length; ++i) {
        const char c = char(text[i].unicode());
        if (c == '+' && i == 0)
            continue; // from_chars takes no plus sign
        buf[k++] = c;
    }
    // "5." is five; from_chars wants a digit after the point.
    if (k > 0 && buf[k - 1] == '.')
        --k;
    double value = 0.0;
    const auto r = std::from_chars(buf, buf + k, value, std::chars_format::general);
    if (r.ec == std::errc::result_out_of_range) {
        // Too large or too small for a double: find out which from the
        // position of the first significant digit and the exponent.
        const bool negative = buf[0] == '-';
        std::int64_t magnitude = 0;
        bool seenPoint = false, seenDigit = false;
        std::int64_t exponent = 0;
        for (qsizetype i = 0; i < k; ++i) {
            const char c = buf[i];
            if (c == '.') {
                seenPoint = true;
            } else if (c >= '0' && c <= '9') {
                if (c != '0')
                    seenDigit = true;
                if (seenDigit && !seenPoint)
                    ++magnitude;
                else if (!seenDigit && seenPoint)
                    --magnitude;
            } else if (c == 'e' || c == 'E') {
                // Saturated: only the sign of magnitude + exponent matters.
                bool minus = false;
                qsizetype j = i + 1;
                if (j < k && (buf[j] == '+' || buf[j] == '-'))
                    minus = buf[j++] == '-';
                for (; j < k && buf[j] >= '0' && buf[j] <= '9'; ++j)
                    exponent = std::min<std::int64_t>(exponent * 10 + (buf[j] - '0'), 1LL << 40);
                if (minus)
                    exponent = -exponent;
                break;
            }
        }
        const bool overflow = magnitude + exponent > 0;
        value = overflow ? HUGE_VAL : 0.0;
        if (negative)
            value = -value;
    }
    return value;
}

// An exponent written after D: the integer of the text, saturated.
int exponentValue(QStringView text)
{
    qsizetype i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-'))
        negative = text[i++] == u'-';
    int v = 0;
    for (; i < text.size() && isDigit(text[i].unicode()); ++i)
        v = std::min(v * 10 + (text[i].unicode() - u'0'), 100000);
    return negative ? -v : v;
}

bool knownUnit(QStringView word)
{
    static const char *const units[] = {
        "HZ", "WB",
        "DEG", "AMP", "OHM", "MHO", "VAC", "VDC", "VPK", "VRM",
        "VOLT", "GRAM", "WATT",
        "FARAD", "HENRY", "METER", "JOULE", "TESLA", "WEBER", "GAUSS", "AMPER",
        "SECOND", "AMPERE",
        "COULOMB",
    };
    const qsizetype n = word.size();
    if (n < 1 || n > 7)
        return false;
    if (n == 1) {
        const char16_t c = word[0].unicode();
        // One letter in either case, but a lower-case l is no litre.
        return c != u'l' && std::u16string_view(u"ACFHJLSVW").find(upper(c)) != std::u16string_view::npos;
    }
    for (const char *u : units) {
        if (qsizetype(std::char_traits<char>::length(u)) != n)
            continue;
        bool same = true;
        for (qsizetype i = 0; i < n && same; ++i)
            same = upper(word[i].unicode()) == char16_t(u[i]);
        if (same)
            return true;
    }
    return false;
}

bool isBlank(char16_t c)
{
    return c == u' ' || c == u'\t';
}

// Reads one part of a complex text: a number and a suffix, where M is milli.
qsizetype readSuffixedNumber(QStringView text, double &value, int &exponent)
{
    value = 0.0;
    exponent = 0;
    Decimal d;
    if (!scanDecimal(text, d, false))
        return 0;
    value = toDouble(text, d.end);
    const qsizetype n = text.size();
    auto at = [&](qsizetype i) -> char16_t { return i < n ? text[i].unicode() : char16_t(0); };
    qsizetype i = d.end;
    while (isBlank(at(i)))
        ++i;
    const char16_t c = upper(at(i));
    qsizetype take = 1;
    switch (c) {
    case u'K': exponent = 3; break;
    case u'M':
        if (upper(at(i + 1)) == u'E' && upper(at(i + 2)) == u'G') {
            exponent = 6;
            take = 3;
        } else {
            exponent = -3;
        }
        break;
    case u'G': exponent = 9; break;
    case u'T': exponent = 12; break;
    case u'U': exponent = -6; break;
    case u'N': exponent = -9; break;
    case u'P': exponent = -12; break;
    default: take = 0; break;
    }
    if (take == 0)
        return d.end;
    value *= std::pow(10.0, exponent);
    return i + take;
}

bool isComplexSeparator(char16_t c)
{
    return c == u' ' || c == u'\t' || c == u',';
}

} // namespace

double ParseNumber(QStringView text, int &consumed, int *exponent)
{
    consumed = 0;
    if (exponent)
        *exponent = 0;
    const qsizetype n = text.size();
    auto at = [&](qsizetype i) -> char16_t { return i < n ? text[i].unicode() : char16_t(0); };

    // Hexadecimal: at most ten characters, the "0x" included, and no suffix.
    if (at(0) == u'0' && (at(1) == u'x' || at(1) == u'X')) {
        const qsizetype end = std::min<qsizetype>(n, 10);
        std::uint64_t v = 0;
        qsizetype i = 2;
        for (; i < end && hexValue(at(i)) >= 0; ++i)
            v = v * 16 + std::uint64_t(hexValue(at(i)));
        consumed = i > 2 ? int(i) : 1; // a bare "0x" is the digit 0
        return double(v);
    }

    Decimal d;
    if (!scanDecimal(text, d, true))
        return 0.0;
    double value;
    if (d.exponentLetter == u'd' || d.exponentLetter == u'D') {
        value = toDouble(text, d.mantissaEnd)
                * std::pow(10.0, exponentValue(text.mid(d.exponentStart, d.end - d.exponentStart)));
    } else {
        value = toDouble(text, d.end);
    }
    qsizetype end = d.end;

    // Prefix, after blanks.
    qsizetype i = end;
    while (isBlank(at(i)))
        ++i;
    double factor = 0.0;
    int prefixExponent = 0;
    qsizetype prefixLength = 1;
    if (upper(at(i)) == u'M' && upper(at(i + 1)) == u'E' && upper(at(i + 2)) == u'G') {
        factor = 1e6;
        prefixExponent = 6;
        prefixLength = 3;
    } else {
        switch (at(i)) {
        case u'k': case u'K': factor = 1e3; prefixExponent = 3; break;
        case u'M': factor = 1e6; prefixExponent = 6; break;
        case u'G': factor = 1e9; prefixExponent = 9; break;
        case u'T': factor = 1e12; prefixExponent = 12; break;
        case u'c': factor = 0.01; prefixExponent = -2; break;
        case u'm': factor = 1e-3; prefixExponent = -3; break;
        case u'u': factor = 1e-6; prefixExponent = -6; break;
        case u'n': factor = 1e-9; prefixExponent = -9; break;
        case u'p': factor = 1e-12; prefixExponent = -12; break;
        default: break;
        }
    }
    if (factor != 0.0) {
        value *= factor;
        i += prefixLength;
        end = i;
        if (exponent)
            *exponent = prefixExponent;
        while (isBlank(at(i)))
            ++i;
    }

    // Unit word: a run of ASCII letters, a plural s allowed.  Blanks before it
    // belong to the number only when a unit follows them.
    qsizetype w = i;
    while (isAsciiLetter(at(w)))
        ++w;
    qsizetype length = w - i;
    if (length > 1 && upper(at(w - 1)) == u'S')
        --length;
    if (length > 0 && knownUnit(text.mid(i, length)))
        end = w;

    consumed = int(std::min<qsizetype>(end, INT32_MAX));
    return value;
}

std::complex<double> ParseComplexText(QStringView text, int &consumed)
{
    consumed = 0;
    double parts[2] = {0.0, 0.0};
    const qsizetype n = text.size();
    qsizetype pos = 0;
    for (int part = 0; part < 2; ++part) {
        qsizetype start = pos;
        while (start < n && isComplexSeparator(text[start].unicode()))
            ++start;
        if (start >= n)
            break;
        qsizetype stop = start;
        while (stop < n) {
            const char16_t c = text[stop].unicode();
            if (isComplexSeparator(c) || c == u'\r' || c == u'\n')
                break;
            ++stop;
        }
        const qsizetype length = std::min<qsizetype>(stop - start, 98);
        int exponent = 0;
        const qsizetype used = readSuffixedNumber(text.mid(start, length), parts[part], exponent);
        if (used == 0)
            break;
        pos = start + used;
        consumed = int(pos);
        if (used < stop - start)
            break; // something that is no number follows inside the part
    }
    // Separators at the end belong to the text that was read.
    if (consumed > 0) {
        qsizetype t = consumed;
        while (t < n && isComplexSeparator(text[t].unicode()))
            ++t;
        if (t == n)
            consumed = int(n);
    }
    return {parts[0], parts[1]};
}

QChar PrefixChar(int exponent)
{
    static const char up[] = " kMGT";
    static const char down[] = " munp";
    if (exponent == 0)
        return QChar(u' ');
    const int i = (exponent > 0 ? exponent : -exponent) / 3;
    if (i >= 5)
        return QChar(u' ');
    return QChar(exponent > 0 ? up[i] : down[i]);
}
