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

QString CRpnData::GetText(std::uint32_t flags) const
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
        for (int i = 0; i < shown; ++i) {
            if (i)
                out += u',';
            appendG(out, p->m_reals[i], precision);
        }
        if (cut && (flags & RPN_TEXT_ELLIPSIS))
            out += QLatin1StringView(",...");
        return out;
    }
    case RPN_ARRAY:
    case RPN_DICTIONARY: {
        const bool isArray = p->m_kind == RPN_ARRAY;
        const int count = isArray ? p->m_count : (p->m_map ? p->m_map->GetCount() : 0);
        const bool cut = (flags & RPN_TEXT_CUT) && count > kCutAfter;
        const int shown = cut ? kCutAfter : count;
        const bool open = (flags & RPN_TEXT_BRACES) || count > 1;
        if (open)
            out += u'{';
        for (int i = 0; i < shown; ++i) {
            if (i)
                out += u',';
            if (isArray) {
                out += p->m_items[i].GetText(flags);
            } else {
                out += u'{';
                out += p->m_map->GetSpelling(p->m_map->GetKeyAt(i));
                out += u',';
                out += p->m_map->GetValueAt(i).GetText(flags);
                out += u'}';
            }
        }
        if (cut && (flags & RPN_TEXT_ELLIPSIS))
            out += QLatin1StringView(",...}");
        else if (open)
            out += u'}';
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

QString CRpnData::FormatValue(const CMapStringToRpnData &options, int depth) const
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
    case RPN_ARRAY_R:
    case RPN_ARRAY: {
        const QString sep = o.Text(QStringLiteral("SEP"), QStringLiteral(","));
        int shown = p->m_count;
        const int max = o.Int(QStringLiteral("MAX"), 0);
        if (max != 0 && max < shown)
            shown = std::max(max, 0);
        out = o.Text(QStringLiteral("BEGIN"), QStringLiteral("{"));
        for (int i = 0; i < shown; ++i) {
            if (i)
                out += sep;
            if (p->m_kind == RPN_ARRAY_R)
                appendG(out, p->m_reals[i], precision);
            else
                out += p->m_items[i].FormatValue(options, depth + 1);
        }
        out += o.Text(QStringLiteral("END"), QStringLiteral("}"));
        return out;
    }
    case RPN_DICTIONARY: {
        // FORMAT 2 prints nested braces; anything else one key=value; a line.
        const bool braces = o.Int(QStringLiteral("FORMAT"), 0) == 2;
        const QString begin = o.Text(QStringLiteral("BEGIN"), braces ? QStringLiteral("{") : QString());
        const QString end = o.Text(QStringLiteral("END"), braces ? QStringLiteral("}") : QString());
        const QString sep = o.Text(QStringLiteral("SEP"), braces ? QStringLiteral(",") : QStringLiteral("\r\n"));
        const QString itemBegin = o.Text(QStringLiteral("ITEMBEGIN"), braces ? QStringLiteral("{") : QString());
        const QString itemEnd = o.Text(QStringLiteral("ITEMEND"), braces ? QStringLiteral("}") : QStringLiteral(";"));
        const QString itemSep = o.Text(QStringLiteral("ITEMSEP"), braces ? QStringLiteral(",") : QStringLiteral("="));
        out = begin;
        const CMapStringToRpnData *map = p->m_map;
        const int count = map ? map->GetCount() : 0;
        for (int i = 0; i < count; ++i) {
            if (i)
                out += sep;
            out += itemBegin;
            out += map->GetSpelling(map->GetKeyAt(i));
            out += itemSep;
            out += map->GetValueAt(i).FormatValue(options, depth + 1);
            out += itemEnd;
        }
        out += end;
        return out;
    }
    default:
        return GetText(std::uint32_t(precision));
    }
}
