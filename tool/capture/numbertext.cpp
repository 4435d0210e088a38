#include "tool/capture/numbertext.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace {

bool isCSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// from_chars leaves the value alone when it is out of range; strtod gives
// HUGE_VAL or zero.  Which one depends on the magnitude of the text, which
// we estimate from the position of its first significant digit and its
// exponent part.
double outOfRangeValue(const char *begin, const char *end, bool hex)
{
    const char exponentLetter = hex ? 'p' : 'e';
    long lead = 0;       // decimal exponent of the first significant digit
    bool found = false;
    bool afterPoint = false;
    long integerDigits = 0;
    long zerosAfterPoint = 0;
    const char *p = begin;
    for (; p < end && (*p | 0x20) != exponentLetter; ++p) {
        if (*p == '.') {
            afterPoint = true;
            continue;
        }
        if (!found && *p == '0') {
            if (afterPoint)
                ++zerosAfterPoint;
            continue;
        }
        found = true;
        if (!afterPoint)
            ++integerDigits;
    }
    if (!found)
        return 0.0;
    lead = integerDigits > 0 ? integerDigits - 1 : -(zerosAfterPoint + 1);
    long exponent = 0;
    if (p < end) {
        ++p;
        bool negative = false;
        if (p < end && (*p == '+' || *p == '-'))
            negative = *p++ == '-';
        for (; p < end && isDigit(*p); ++p)
            if (exponent < 100000000)
                exponent = exponent * 10 + (*p - '0');
        if (negative)
            exponent = -exponent;
    }
    if (hex)
        return exponent < 0 ? 0.0 : HUGE_VAL;
    return lead + exponent > 0 ? HUGE_VAL : 0.0;
}

void appendChars(std::string &out, std::to_chars_result r, char *begin)
{
    if (r.ec == std::errc())
        out.append(begin, std::size_t(r.ptr - begin));
}

} // namespace

double PlainToDouble(std::string_view text, std::size_t *consumed)
{
    const char *const start = text.data();
    const char *const end = start + text.size();
    const char *p = start;
    while (p < end && isCSpace(*p))
        ++p;
    bool negative = false;
    if (p < end && (*p == '+' || *p == '-'))
        negative = *p++ == '-';

    double value = 0.0;
    const char *stop = start; // nothing taken yet
    if (p < end && *p != '+' && *p != '-') {
        if (end - p >= 2 && p[0] == '0' && (p[1] | 0x20) == 'x') {
            // Hexadecimal as strtod reads it; without hex digits behind the
            // prefix only the "0" counts.
            const char *h = p + 2;
            std::from_chars_result r{h, std::errc::invalid_argument};
            if (h < end && *h != '+' && *h != '-')
                r = std::from_chars(h, end, value, std::chars_format::hex);
            if (r.ec == std::errc()) {
                stop = r.ptr;
            } else if (r.ec == std::errc::result_out_of_range) {
                value = outOfRangeValue(h, r.ptr, true);
                stop = r.ptr;
            } else {
                value = 0.0;
                stop = p + 1;
            }
        } else {
            const std::from_chars_result r = std::from_chars(p, end, value, std::chars_format::general);
            if (r.ec == std::errc()) {
                stop = r.ptr;
            } else if (r.ec == std::errc::result_out_of_range) {
                value = outOfRangeValue(p, r.ptr, false);
                stop = r.ptr;
            }
        }
    }
    if (stop == start) {
        if (consumed)
            *consumed = 0;
        return 0.0;
    }
    if (consumed)
        *consumed = std::size_t(stop - start);
    return negative ? -value : value;
}

int UnitExponentFromLetter(char32_t letter)
{
    switch (letter) {
    case 'K': case 'k': return 3;
    case 'M': return 6;
    case 'G': case 'g': return 9;
    case 'T': case 't': return 12;
    case 'm': return -3;
    case 'U': case 'u': return -6;
    case 'N': case 'n': return -9;
    case 'P': case 'p': return -12;
    default: return 0;
    }
}

double ToDoubleWithSuffix(std::string_view text, std::size_t *consumed)
{
    std::size_t taken = 0;
    double value = PlainToDouble(text, &taken);
    if (consumed)
        *consumed = taken;
    if (taken == 0 || value == 0.0)
        return value;
    std::size_t i = taken;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t'))
        ++i;
    if (i < text.size()) {
        const int exponent = UnitExponentFromLetter(static_cast<unsigned char>(text[i]));
        if (exponent != 0)
            value *= std::pow(10.0, exponent);
    }
    return value;
}

double FromFloatExStr(const QString &text, int &flag)
{
    // Characters outside Latin-1 become '?', which ends any number.
    const QByteArray bytes = text.toLatin1();
    std::size_t consumed = 0;
    const double value = ToDoubleWithSuffix(std::string_view(bytes.constData(), std::size_t(bytes.size())), &consumed);
    flag = consumed > 0 ? 1 : 0;
    return value;
}

void AppendFormatG(std::string &out, double value, int precision, bool upper)
{
    char buffer[64];
    const auto r = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general,
                                 precision < 1 ? 1 : precision);
    if (upper && r.ec == std::errc())
        for (char *c = buffer; c < r.ptr; ++c)
            if (*c >= 'a' && *c <= 'z')
                *c = char(*c - 'a' + 'A');
    appendChars(out, r, buffer);
}

void AppendFormatF(std::string &out, double value, int precision)
{
    // Room for the 309 integer digits of the largest double.
    char buffer[400];
    const auto r = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, precision);
    appendChars(out, r, buffer);
}

void AppendFormatE(std::string &out, double value, int precision)
{
    char buffer[64];
    const auto r = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific, precision);
    appendChars(out, r, buffer);
}

QString FormatG(double value, int precision, bool upper)
{
    std::string s;
    AppendFormatG(s, value, precision, upper);
    return QString::fromLatin1(s.data(), qsizetype(s.size()));
}
