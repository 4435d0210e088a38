#include "graphdata/exchange/textformat.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

// Blanks inside a cell's field; a tab is a separator of its own in
// tab-separated files.
inline bool isBlank(char c, char separator)
{
    return c == ' ' || (c == '\t' && separator != '\t') || c == '\r';
}

inline bool equalsWord(const char *begin, std::size_t n, const char *word)
{
    if (std::strlen(word) != n)
        return false;
    for (std::size_t i = 0; i < n; ++i) {
        char c = begin[i];
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
        if (c != word[i])
            return false;
    }
    return true;
}

// The end of the field that starts at p: the next separator outside double
// quotes, or the next blank for runs of blanks.
const char *fieldEnd(const char *p, const char *end, char separator)
{
    if (separator == ' ') {
        while (p < end && !isBlank(*p, separator))
            ++p;
        return p;
    }
    bool quoted = false;
    for (; p < end; ++p) {
        if (*p == '"')
            quoted = !quoted;
        else if (!quoted && *p == separator)
            break;
    }
    return p;
}

// Decimal exponent of the leading digit of a number that did not fit a
// double: above 0 it was too large, otherwise too small.
int magnitudeOf(const char *p, const char *end)
{
    if (p < end && (*p == '-' || *p == '+'))
        ++p;
    int intDigits = 0;
    int leadingZeros = 0;
    bool seenDigit = false;
    for (; p < end && *p >= '0' && *p <= '9'; ++p) {
        if (*p != '0' || seenDigit) {
            seenDigit = true;
            ++intDigits;
        }
    }
    if (p < end && *p == '.') {
        for (++p; p < end && *p >= '0' && *p <= '9'; ++p) {
            if (!seenDigit && *p == '0')
                ++leadingZeros;
            else
                seenDigit = true;
        }
    }
    long exponent = 0;
    if (p < end && (*p == 'e' || *p == 'E')) {
        ++p;
        bool negative = false;
        if (p < end && (*p == '-' || *p == '+'))
            negative = *p++ == '-';
        for (; p < end && *p >= '0' && *p <= '9'; ++p)
            exponent = std::min(exponent * 10 + (*p - '0'), 100000L);
        if (negative)
            exponent = -exponent;
    }
    const long lead = intDigits > 0 ? intDigits - 1 : -(leadingZeros + 1);
    return int(std::clamp(lead + exponent, -1000000L, 1000000L));
}

bool isSpecialWord(const char *begin, const char *end)
{
    while (begin < end && (*begin == ' ' || *begin == '"' || *begin == '+' || *begin == '-'))
        ++begin;
    while (end > begin && (end[-1] == ' ' || end[-1] == '"'))
        --end;
    const std::size_t n = std::size_t(end - begin);
    return equalsWord(begin, n, "nan") || equalsWord(begin, n, "inf") || equalsWord(begin, n, "infinity") ||
           equalsWord(begin, n, "missing");
}

struct Line
{
    const char *begin;
    const char *end;
    const char *next; // start of the following line
};

Line lineAt(const char *p, const char *end)
{
    const char *nl = static_cast<const char *>(std::memchr(p, '\n', std::size_t(end - p)));
    Line line{p, nl ? nl : end, nl ? nl + 1 : end};
    if (line.end > line.begin && line.end[-1] == '\r')
        --line.end;
    return line;
}

// Number of fields up to the last non-empty one.
int cellsOf(const char *p, const char *end, char separator)
{
    int cells = 0, field = 0;
    while (p < end) {
        while (p < end && isBlank(*p, separator))
            ++p;
        if (p >= end)
            break;
        const char *e = fieldEnd(p, end, separator);
        ++field;
        if (e > p)
            cells = field;
        p = e;
        if (separator != ' ' && p < end)
            ++p;
    }
    return cells;
}

} // namespace

const char *TextFieldEnd(const char *begin, const char *end, char separator)
{
    return fieldEnd(begin, end, separator);
}

bool IsSkippedLine(const char *p, const char *end, char separator)
{
    while (p < end && (*p == ' ' || *p == '\t' || *p == '\r'))
        ++p;
    if (p >= end)
        return true;
    switch (*p) {
    case '#':
    case '%':
    case '!':
        return true;
    case '/':
        return p + 1 < end && p[1] == '/';
    case ';':
        if (separator != ';')
            return true;
        break;
    default:
        break;
    }
    if (*p != separator)
        return false;
    // A row of nothing but separators, as spreadsheets write empty rows.
    for (; p < end; ++p) {
        if (*p != separator && *p != ' ' && *p != '\t' && *p != '\r')
            return false;
    }
    return true;
}

std::uint8_t ReadTextCell(const char *begin, const char *end, bool decimalComma, double &value)
{
    while (begin < end && (*begin == ' ' || *begin == '\t' || *begin == '\r'))
        ++begin;
    while (end > begin && (end[-1] == ' ' || end[-1] == '\t' || end[-1] == '\r'))
        --end;
    if (end - begin >= 2 && *begin == '"' && end[-1] == '"') {
        ++begin;
        --end;
        while (begin < end && *begin == ' ')
            ++begin;
        while (end > begin && end[-1] == ' ')
            --end;
    }
    if (begin == end)
        return 0;
    if (equalsWord(begin, std::size_t(end - begin), "missing"))
        return 0;
    char buffer[512];
    std::size_t n = 0;
    const char *p = begin;
    if (*p == '+' && end - p > 1)
        ++p;
    if (end - p > std::ptrdiff_t(sizeof buffer))
        return 2;
    for (; p < end; ++p) {
        char c = *p;
        if (c == ',' && decimalComma)
            c = '.';
        else if ((c == 'D' || c == 'd') && n > 0 &&
                 ((buffer[n - 1] >= '0' && buffer[n - 1] <= '9') || buffer[n - 1] == '.'))
            c = 'e';
        buffer[n++] = c;
    }
    double v = 0;
    const auto [ptr, ec] = std::from_chars(buffer, buffer + n, v);
    if (ptr != buffer + n)
        return 2;
    if (ec == std::errc::result_out_of_range) {
        if (magnitudeOf(buffer, buffer + n) > 0)
            return 2;
        value = buffer[0] == '-' ? -0.0 : 0.0;
        return 1;
    }
    if (ec != std::errc() || !std::isfinite(v))
        return 2;
    value = v;
    return 1;
}

CLineCells ReadTextLine(const char *p, const char *end, const CTextFormat &format, double *const *values,
                        std::uint8_t *const *valid, std::size_t row)
{
    CLineCells counts;
    const char separator = format.separator;
    const bool runs = separator == ' ';
    int c = 0;
    for (; c < format.columns; ++c) {
        while (p < end && isBlank(*p, separator))
            ++p;
        if (p >= end)
            break;
        double v;
        const auto [q, ec] = std::from_chars(p, end, v);
        if (ec == std::errc()) {
            const char *r = q;
            while (r < end && isBlank(*r, separator))
                ++r;
            if (r == end || (runs ? r != q : *r == separator)) {
                if (std::isfinite(v)) {
                    values[c][row] = v;
                    valid[c][row] = 1;
                } else {
                    values[c][row] = 0;
                    valid[c][row] = 2;
                    ++counts.invalid;
                }
                p = (!runs && r < end) ? r + 1 : r;
                continue;
            }
        }
        const char *e = fieldEnd(p, end, separator);
        double cell = 0;
        const std::uint8_t byte = ReadTextCell(p, e, format.decimalComma, cell);
        values[c][row] = byte == 1 ? cell : 0;
        valid[c][row] = byte;
        if (byte == 2)
            ++counts.invalid;
        else if (byte == 0)
            ++counts.missing;
        p = (!runs && e < end) ? e + 1 : e;
    }
    for (int m = c; m < format.columns; ++m) {
        values[m][row] = 0;
        valid[m][row] = 0;
    }
    counts.missing += format.columns - c;
    while (p < end) {
        while (p < end && isBlank(*p, separator))
            ++p;
        if (p >= end)
            break;
        const char *e = fieldEnd(p, end, separator);
        if (e > p)
            ++counts.extra;
        p = (!runs && e < end) ? e + 1 : e;
    }
    return counts;
}

CTextFormat SniffTextFormat(const char *bytes, std::size_t size)
{
    CTextFormat format;
    // The sample: the first lines, up to 256 kB.
    const std::size_t kSample = 256 * 1024;
    const char *end = bytes + std::min(size, kSample);
    if (size > kSample) {
        const char *lastNl = end;
        while (lastNl > bytes && lastNl[-1] != '\n')
            --lastNl;
        if (lastNl > bytes)
            end = lastNl;
    }
    const int kLines = 200;

    // Separator: the first of tab, ';' and ',' that every content line
    // but the first (which may be a header) holds.
    std::vector<Line> content;
    for (const char *p = bytes; p < end && int(content.size()) < kLines;) {
        const Line line = lineAt(p, end);
        if (!IsSkippedLine(line.begin, line.end, '\0'))
            content.push_back(line);
        p = line.next;
    }
    const std::size_t from = content.size() > 1 ? 1 : 0;
    format.separator = ' ';
    for (const char candidate : {'\t', ';', ','}) {
        bool inAll = content.size() > from;
        for (std::size_t i = from; i < content.size() && inAll; ++i)
            inAll = fieldEnd(content[i].begin, content[i].end, candidate) != content[i].end;
        if (inAll) {
            format.separator = candidate;
            break;
        }
    }
    format.decimalComma = format.separator == ';' || format.separator == '\t';

    // Header: the first line that is not skipped, when more of its cells
    // are names than numbers.
    std::int64_t lineNo = 0;
    bool first = true;
    int dataCells = 0;
    for (const char *p = bytes; p < end && lineNo < kLines; ++lineNo) {
        const Line line = lineAt(p, end);
        p = line.next;
        if (IsSkippedLine(line.begin, line.end, format.separator))
            continue;
        if (first) {
            first = false;
            int names = 0, numbers = 0;
            QStringList fields;
            for (const char *f = line.begin; f < line.end;) {
                while (f < line.end && isBlank(*f, format.separator))
                    ++f;
                if (f >= line.end && format.separator == ' ')
                    break;
                const char *e = fieldEnd(f, line.end, format.separator);
                double v;
                const std::uint8_t byte = ReadTextCell(f, e, format.decimalComma, v);
                if (byte == 1)
                    ++numbers;
                else if (byte == 2 && !isSpecialWord(f, e))
                    ++names;
                QString name = QString::fromUtf8(f, e - f).trimmed();
                if (name.size() >= 2 && name.startsWith(u'"') && name.endsWith(u'"'))
                    name = name.mid(1, name.size() - 2).trimmed();
                fields.push_back(name);
                if (e >= line.end)
                    break;
                f = format.separator == ' ' ? e : e + 1;
            }
            if (names > numbers) {
                while (!fields.isEmpty() && fields.back().isEmpty())
                    fields.pop_back();
                format.hasHeader = true;
                format.names = fields;
                format.dataStart = std::size_t(line.next - bytes);
                format.linesBeforeData = lineNo + 1;
                continue;
            }
        }
        dataCells = std::max(dataCells, cellsOf(line.begin, line.end, format.separator));
    }
    format.columns = dataCells > 0 ? dataCells : int(format.names.size());
    while (format.names.size() > format.columns)
        format.names.pop_back();
    return format;
}
