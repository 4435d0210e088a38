#include "tool/capture/pointtext.h"

#include "support/myarrays.h"
#include "tool/capture/numbertext.h"

#include <climits>
#include <string>

void AppendPointText(QString &text, double x, double y)
{
    std::string group;
    group += '(';
    AppendFormatG(group, x, 5);
    group += ',';
    AppendFormatG(group, y, 5);
    group += ')';
    text += QLatin1String(group.data(), qsizetype(group.size()));
}

QString FormatPointText(const double *pairs, int count)
{
    std::string text;
    if (pairs && count > 0)
        text.reserve(std::size_t(count) * 24);
    for (int i = 0; pairs && i < count; ++i) {
        text += '(';
        AppendFormatG(text, pairs[2 * i], 6, true);
        text += ',';
        AppendFormatG(text, pairs[2 * i + 1], 6, true);
        text += ')';
    }
    return QString::fromLatin1(text.data(), qsizetype(text.size()));
}

namespace {

bool isOpening(QChar c)
{
    return c == u'(' || c == u'[';
}

bool isClosing(QChar c)
{
    return c == u')' || c == u']';
}

// Collects the pairs into the caller's array, which starts at ten pairs (or
// the caller's count plus ten) and doubles whenever it is full, so that a
// long text costs one pass and no copy per ten pairs.
class PairSink
{
public:
    PairSink(CMyDoubleArray &pairs, int hint) : m_pairs(pairs)
    {
        m_pairs.RemoveAll();
        m_pairs.SetSize(2 * (hint >= 1 && hint <= 99 ? hint + 10 : 10));
    }

    void Add(double x, double y)
    {
        if (2 * (m_count + 1) > m_pairs.GetSize())
            m_pairs.SetSize(m_pairs.GetSize() < (INT_MAX / 2) ? 2 * m_pairs.GetSize() : INT_MAX - 1);
        m_pairs[2 * m_count] = x;
        m_pairs[2 * m_count + 1] = y;
        ++m_count;
    }

    int Count() const { return m_count; }

private:
    CMyDoubleArray &m_pairs;
    int m_count = 0;
};

} // namespace

void ParsePointText(QStringView text, int &count, CMyDoubleArray &pairs, bool useUnitSuffixes)
{
    PairSink sink(pairs, count);
    std::string buffer; // the characters of the number being read
    bool inGroup = false;
    bool haveFirst = false; // the group's first number is kept
    double first = 0.0;

    auto convert = [&]() {
        const std::string_view s(buffer);
        return useUnitSuffixes ? ToDoubleWithSuffix(s) : PlainToDouble(s);
    };

    const qsizetype n = text.size();
    qsizetype i = 0;
    while (i < n) {
        const QChar c = text[i];
        if (isOpening(c)) {
            if (inGroup && haveFirst && !buffer.empty())
                sink.Add(first, convert());
            inGroup = true;
            haveFirst = false;
            buffer.clear();
            ++i;
            while (i < n && (text[i] == u' ' || isOpening(text[i])))
                ++i;
            continue;
        }
        if (!inGroup) {
            ++i;
            continue;
        }
        if (c == u',' || c == u' ') {
            const double value = convert();
            buffer.clear();
            if (haveFirst) {
                sink.Add(first, value);
                haveFirst = false;
            } else {
                first = value;
                haveFirst = true;
            }
            ++i;
            while (i < n && (text[i] == u' ' || text[i] == u','))
                ++i;
            continue;
        }
        if (isClosing(c)) {
            if (haveFirst && !buffer.empty())
                sink.Add(first, convert());
            inGroup = false;
            haveFirst = false;
            buffer.clear();
            ++i;
            while (i < n && (text[i] == u' ' || text[i] == u',' || isClosing(text[i])))
                ++i;
            continue;
        }
        // Part of a number.  Anything outside ASCII cannot be, and stops the
        // conversion where it stands.
        const char16_t u = c.unicode();
        buffer += u < 0x80 ? char(u) : '\x7f';
        ++i;
    }
    if (inGroup && haveFirst && !buffer.empty())
        sink.Add(first, convert());
    count = sink.Count();
}
