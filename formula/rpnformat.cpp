// Values to text: GetText under its flag word, FormatValue under a dictionary
// of print options.

#include "formula/rpndata.h"

#include "formula/rpndictionary.h"
#include "formula/rpnnumber.h"
#include "formula/rpnseams.h"
#include "formula/rpnuserfunction.h"
#include "support/xmlelement.h"

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int kCutAfter = 100;

int precisionOf(std::uint32_t flags)
{
    const int p = int(flags & RPN_TEXT_PRECISION_MASK);
    return p == 0 || p >= 32 ? 16 : p;
}

// printf's "%.*G".
void appendG(QString &out, double v, int precision)
{
    char buf[64];
    const int n = std::snprintf(buf, sizeof buf, "%.*G", precision, v);
    out += QLatin1StringView(buf, n > 0 ? std::min(n, int(sizeof buf) - 1) : 0);
}

void appendComplex(QString &out, double re, double im, int precision)
{
    appendG(out, re, precision);
    if (im < 0) {
        out += u'-';
        appendG(out, -im, precision);
    } else {
        out += u'+';
        appendG(out, im, precision);
    }
    out += u'j';
}

void appendReal(QString &out, double v, int exponent, int precision)
{
    if (exponent == 0) {
        appendG(out, v, precision);
        return;
    }
    appendG(out, v / std::pow(10.0, exponent), precision);
    out += PrefixChar(exponent);
}

// One level's print options: KEY<level> first, then KEY.
class PrintOptions
{
public:
    PrintOptions(const CMapStringToRpnData &map, int depth)
        : m_map(map), m_level(QString::number(depth + 1))
    {
    }
    bool Get(const QString &key, CRpnData &value) const
    {
        return m_map.Lookup(key + m_level, value) || m_map.Lookup(key, value);
    }
    QString Text(const QString &key, const QString &fallback) const
    {
        CRpnData v;
        return Get(key, v) ? v.GetText(16) : fallback;
    }
    int Int(const QString &key, int fallback) const
    {
        CRpnData v;
        return Get(key, v) ? v.GetInt() : fallback;
    }

private:
    const CMapStringToRpnData &m_map;
    QString m_level;
};

} // namespace

// The text of a value that holds no other values: every kind but ARRAY and DICTIONARY.
QString CRpnData::plainText(std::uint32_t flags) const
{
    const CRpnPayload *p = m_p;
    const int precision = precisionOf(flags);
    QString out;
    switch (p->m_kind) {
    case RPN_STRING:
        if (flags & RPN_TEXT_QUOTES)
            return u'"' + p->Text() + u'"';
        return p->Text();
    case RPN_REAL:
        appendReal(out, p->m_real, GetDisplayExponent(), precision);
        return out;
    case RPN_INT:
        return QString::number(p->m_int);
    case RPN_COMPLEX:
        appendComplex(out, p->m_real, p->m_imag, precision);
        return out;
    case RPN_ARRAY_R: {
        const bool cut = (flags & RPN_TEXT_CUT) && p->m_count > kCutAfter;
        const int shown = cut ? kCutAfter : p->m_count;
        for (int i = 0; i < shown && out.size() <= RpnMaxTextLength; ++i) {
            if (i)
                out += u',';
            appendG(out, p->m_reals[i], precision);
        }
        if (cut && (flags & RPN_TEXT_ELLIPSIS))
            out += QLatin1StringView(",...");
        return out;
    }
    case RPN_FORMULA:
        if (CRpnFormulaSupport *f = GetRpnFormulaSupport(); f && p->m_tree)
            return f->GetSource(p->m_tree);
        return out;
    case RPN_FUNCTION:
        return p->m_function ? p->m_function->m_name : out;
    case RPN_XML:
        if (!CXmlElement::IsNull(p->m_xml))
            CXmlElement::WriteDocument(p->m_xml, out);
        return out;
    default: // null, POINTER, DOCUMENT, TARNPART, table, CURVE
        return out;
    }
}

namespace {

bool holdsValues(const CRpnPayload *p)
{
    return p->m_kind == RPN_ARRAY || p->m_kind == RPN_DICTIONARY;
}

// Ends a text that grew past the longest one made: cut, with "..." to show it.
bool endIfTooLong(QString &out)
{
    if (out.size() <= RpnMaxTextLength)
        return false;
    out.truncate(RpnMaxTextLength);
    out += QLatin1StringView("...");
    return true;
}

} // namespace

QString CRpnData::GetText(std::uint32_t flags) const
{
    if (!holdsValues(m_p))
        return plainText(flags);

    // Arrays and dictionaries nest to any depth: the walk keeps its own stack.
    struct Level
    {
        const CRpnPayload *p;
        int next;         // element to print next
        int shown;        // elements printed in all
        bool open;        // a brace was written
        bool cut;         // elements were left out
        bool entryOpen;   // a dictionary entry waits for its closing brace
    };
    std::vector<Level> stack;
    QString out;
    const auto enter = [&](const CRpnPayload *p) {
        const int count = p->m_kind == RPN_ARRAY ? p->m_count : (p->m_map ? p->m_map->GetCount() : 0);
        const bool cut = (flags & RPN_TEXT_CUT) && count > kCutAfter;
        const bool open = (flags & RPN_TEXT_BRACES) || count > 1;
        if (open)
            out += u'{';
        stack.push_back({p, 0, cut ? kCutAfter : count, open, cut, false});
    };
    enter(m_p);
    while (!stack.empty()) {
        if (endIfTooLong(out))
            return out;
        Level &level = stack.back();
        if (level.entryOpen) {
            out += u'}';
            level.entryOpen = false;
        }
        if (level.next == level.shown) {
            if (level.cut && (flags & RPN_TEXT_ELLIPSIS))
                out += QLatin1StringView(",...}");
            else if (level.open)
                out += u'}';
            stack.pop_back();
            continue;
        }
        if (level.next)
            out += u',';
        const CRpnData *value;
        if (level.p->m_kind == RPN_ARRAY) {
            value = &level.p->m_items[level.next];
        } else {
            const CMapStringToRpnData *map = level.p->m_map;
            out += u'{';
            out += map->GetSpelling(map->GetKeyAt(level.next));
            out += u',';
            value = &map->GetValueAt(level.next);
            level.entryOpen = true;
        }
        ++level.next;
        if (holdsValues(value->m_p))
            enter(value->m_p); // `level` is not used after this
        else
            out += value->plainText(flags);
    }
    endIfTooLong(out);
    return out;
}

// The print form of a value that holds no others, at `depth`.
QString CRpnData::formatPlain(const CMapStringToRpnData &options, int depth) const
{
    const PrintOptions o(options, depth);
    int precision = o.Int(QStringLiteral("PRECISION"), 16);
    if (precision < 1 || precision > 31)
        precision = 16;
    const CRpnPayload *p = m_p;
    QString out;
    switch (p->m_kind) {
    case RPN_REAL:
        appendReal(out, p->m_real, (o.Int(QStringLiteral("REAL"), 0) & 1) ? 0 : GetDisplayExponent(), precision);
        return out;
    case RPN_STRING:
        if (o.Int(QStringLiteral("QUOTE"), 0) & 1)
            return u'"' + p->Text() + u'"';
        return p->Text();
    case RPN_ARRAY_R: {
        const QString sep = o.Text(QStringLiteral("SEP"), QStringLiteral(","));
        int shown = p->m_count;
        const int max = o.Int(QStringLiteral("MAX"), 0);
        if (max != 0 && max < shown)
            shown = std::max(max, 0);
        out = o.Text(QStringLiteral("BEGIN"), QStringLiteral("{"));
        for (int i = 0; i < shown && out.size() <= RpnMaxTextLength; ++i) {
            if (i)
                out += sep;
            appendG(out, p->m_reals[i], precision);
        }
        out += o.Text(QStringLiteral("END"), QStringLiteral("}"));
        return out;
    }
    default:
        return GetText(std::uint32_t(precision));
    }
}

QString CRpnData::FormatValue(const CMapStringToRpnData &options, int depth) const
{
    if (m_p->m_kind != RPN_ARRAY && m_p->m_kind != RPN_DICTIONARY)
        return formatPlain(options, depth);

    // As GetText, with the texts of each level from the options.
    struct Level
    {
        const CRpnPayload *p;
        int depth;
        int next;
        int shown;
        QString end, sep, itemBegin, itemEnd, itemSep;
        bool entryOpen;
    };
    std::vector<Level> stack;
    QString out;
    const auto enter = [&](const CRpnPayload *p, int level) {
        const PrintOptions o(options, level);
        Level l{p, level, 0, 0, {}, {}, {}, {}, {}, false};
        if (p->m_kind == RPN_ARRAY) {
            l.shown = p->m_count;
            const int max = o.Int(QStringLiteral("MAX"), 0);
            if (max != 0 && max < l.shown)
                l.shown = std::max(max, 0);
            out += o.Text(QStringLiteral("BEGIN"), QStringLiteral("{"));
            l.end = o.Text(QStringLiteral("END"), QStringLiteral("}"));
            l.sep = o.Text(QStringLiteral("SEP"), QStringLiteral(","));
        } else {
            // FORMAT 2 prints nested braces; anything else one key=value; a line.
            const bool braces = o.Int(QStringLiteral("FORMAT"), 0) == 2;
            l.shown = p->m_map ? p->m_map->GetCount() : 0;
            out += o.Text(QStringLiteral("BEGIN"), braces ? QStringLiteral("{") : QString());
            l.end = o.Text(QStringLiteral("END"), braces ? QStringLiteral("}") : QString());
            l.sep = o.Text(QStringLiteral("SEP"), braces ? QStringLiteral(",") : QStringLiteral("\r\n"));
            l.itemBegin = o.Text(QStringLiteral("ITEMBEGIN"), braces ? QStringLiteral("{") : QString());
            l.itemEnd = o.Text(QStringLiteral("ITEMEND"), braces ? QStringLiteral("}") : QStringLiteral(";"));
            l.itemSep = o.Text(QStringLiteral("ITEMSEP"), braces ? QStringLiteral(",") : QStringLiteral("="));
        }
        stack.push_back(std::move(l));
    };
    enter(m_p, depth);
    while (!stack.empty()) {
        if (endIfTooLong(out))
            return out;
        Level &level = stack.back();
        if (level.entryOpen) {
            out += level.itemEnd;
            level.entryOpen = false;
        }
        if (level.next == level.shown) {
            out += level.end;
            stack.pop_back();
            continue;
        }
        if (level.next)
            out += level.sep;
        const CRpnData *value;
        if (level.p->m_kind == RPN_ARRAY) {
            value = &level.p->m_items[level.next];
        } else {
            const CMapStringToRpnData *map = level.p->m_map;
            out += level.itemBegin;
            out += map->GetSpelling(map->GetKeyAt(level.next));
            out += level.itemSep;
            value = &map->GetValueAt(level.next);
            level.entryOpen = true;
        }
        ++level.next;
        const int inner = level.depth + 1;
        if (holdsValues(value->m_p))
            enter(value->m_p, inner); // `level` is not used after this
        else
            out += value->formatPlain(options, inner);
    }
    endIfTooLong(out);
    return out;
}
