// Values to text: GetText under its flag word, FormatValue under a dictionary
// of print options.

#include "formula/rpndata.h"

#include "formula/rpndictionary.h"
#include "formula/rpnnumber.h"
#include "formula/rpnseams.h"
#include "formula/rpnuserfunction.h"
#include "support/xmlelement.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <deque>
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
    // A whole number of fewer digits than the precision prints as its
    // digits alone, which to_chars writes much faster than printf.
    static constexpr double kPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,
                                         1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17};
    if (precision < int(std::size(kPowers)) && std::fabs(v) < kPowers[precision] && v == std::trunc(v)
        && !(v == 0 && std::signbit(v))) {
        char digits[24];
        const auto end = std::to_chars(digits, digits + sizeof digits, static_cast<long long>(v)).ptr;
        out += QLatin1StringView(digits, end - digits);
        return;
    }
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
    const int precision = precisionOf(flags);
    QString out;
    switch (m_kind) {
    case RPN_NULL:
        return out;
    case RPN_REAL:
        appendReal(out, m_u.real, GetDisplayExponent(), precision);
        return out;
    case RPN_INT:
        return QString::number(m_u.i);
    default:
        break;
    }
    const CRpnPayload *p = m_u.p;
    switch (m_kind) {
    case RPN_STRING:
        if (flags & RPN_TEXT_QUOTES)
            return u'"' + p->Text() + u'"';
        return p->Text();
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

bool holdsValues(const CRpnData &v)
{
    return v.GetKind() == RPN_ARRAY || v.GetKind() == RPN_DICTIONARY;
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
    if (!holdsValues(*this))
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
    enter(m_u.p);
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
        if (holdsValues(*value))
            enter(value->m_u.p); // `level` is not used after this
        else if (value->m_kind == RPN_REAL) // the common cells straight into the text
            appendReal(out, value->m_u.real, value->GetDisplayExponent(), precisionOf(flags));
        else if (value->m_kind == RPN_INT)
            out += QString::number(value->m_u.i);
        else
            out += value->plainText(flags);
    }
    endIfTooLong(out);
    return out;
}

namespace {

// What the options say for one level, read once per level rather than per element.
struct LevelForm
{
    int precision;
    bool plainReal; // REAL bit 0: no display exponent
    bool quote;     // QUOTE bit 0
    int max;        // MAX: elements of an array shown, 0 for all
    QString begin, end, sep;                                        // arrays
    QString mapBegin, mapEnd, mapSep, itemBegin, itemEnd, itemSep; // dictionaries
};

LevelForm levelForm(const CMapStringToRpnData &options, int depth)
{
    const PrintOptions o(options, depth);
    LevelForm f;
    f.precision = o.Int(QStringLiteral("PRECISION"), 16);
    if (f.precision < 1 || f.precision > 31)
        f.precision = 16;
    f.plainReal = (o.Int(QStringLiteral("REAL"), 0) & 1) != 0;
    f.quote = (o.Int(QStringLiteral("QUOTE"), 0) & 1) != 0;
    f.max = o.Int(QStringLiteral("MAX"), 0);
    f.begin = o.Text(QStringLiteral("BEGIN"), QStringLiteral("{"));
    f.end = o.Text(QStringLiteral("END"), QStringLiteral("}"));
    f.sep = o.Text(QStringLiteral("SEP"), QStringLiteral(","));
    // FORMAT 2 prints nested braces; anything else one key=value; a line.
    const bool braces = o.Int(QStringLiteral("FORMAT"), 0) == 2;
    f.mapBegin = o.Text(QStringLiteral("BEGIN"), braces ? QStringLiteral("{") : QString());
    f.mapEnd = o.Text(QStringLiteral("END"), braces ? QStringLiteral("}") : QString());
    f.mapSep = o.Text(QStringLiteral("SEP"), braces ? QStringLiteral(",") : QStringLiteral("\r\n"));
    f.itemBegin = o.Text(QStringLiteral("ITEMBEGIN"), braces ? QStringLiteral("{") : QString());
    f.itemEnd = o.Text(QStringLiteral("ITEMEND"), braces ? QStringLiteral("}") : QStringLiteral(";"));
    f.itemSep = o.Text(QStringLiteral("ITEMSEP"), braces ? QStringLiteral(",") : QStringLiteral("="));
    return f;
}

int shownOf(const LevelForm &f, int count)
{
    return f.max != 0 && f.max < count ? std::max(f.max, 0) : count;
}

// The print form of a value that holds no others.
QString formatPlain(const CRpnData &v, const LevelForm &f)
{
    QString out;
    switch (v.GetKind()) {
    case RPN_REAL:
        appendReal(out, v.GetRealValue(), f.plainReal ? 0 : v.GetDisplayExponent(), f.precision);
        return out;
    case RPN_STRING:
        if (f.quote)
            return u'"' + v.GetTextValue() + u'"';
        return v.GetTextValue();
    case RPN_ARRAY_R: {
        const int shown = shownOf(f, v.GetSize());
        const double *reals = v.GetRealData();
        out = f.begin;
        for (int i = 0; i < shown && out.size() <= RpnMaxTextLength; ++i) {
            if (i)
                out += f.sep;
            appendG(out, reals[i], f.precision);
        }
        out += f.end;
        return out;
    }
    default:
        return v.GetText(std::uint32_t(f.precision));
    }
}

} // namespace

QString CRpnData::FormatValue(const CMapStringToRpnData &options, int depth) const
{
    // The forms of the levels met so far, from `depth` down.
    std::deque<LevelForm> forms; // a deque: references stay valid as it grows
    const auto formAt = [&](int level) -> const LevelForm & {
        while (int(forms.size()) <= level - depth)
            forms.push_back(levelForm(options, depth + int(forms.size())));
        return forms[std::size_t(level - depth)];
    };
    if (!holdsValues(*this))
        return formatPlain(*this, formAt(depth));

    // As GetText, with the texts of each level from the options.
    struct Level
    {
        const CRpnPayload *p;
        int depth;
        int next;
        int shown;
        bool entryOpen;
    };
    std::vector<Level> stack;
    QString out;
    const auto enter = [&](const CRpnPayload *p, int level) {
        const LevelForm &f = formAt(level);
        if (p->m_kind == RPN_ARRAY) {
            out += f.begin;
            stack.push_back({p, level, 0, shownOf(f, p->m_count), false});
        } else {
            out += f.mapBegin;
            stack.push_back({p, level, 0, p->m_map ? p->m_map->GetCount() : 0, false});
        }
    };
    enter(m_u.p, depth);
    while (!stack.empty()) {
        if (endIfTooLong(out))
            return out;
        Level &level = stack.back();
        const bool isArray = level.p->m_kind == RPN_ARRAY;
        const LevelForm &f = formAt(level.depth);
        if (level.entryOpen) {
            out += f.itemEnd;
            level.entryOpen = false;
        }
        if (level.next == level.shown) {
            out += isArray ? f.end : f.mapEnd;
            stack.pop_back();
            continue;
        }
        if (level.next)
            out += isArray ? f.sep : f.mapSep;
        const CRpnData *value;
        if (isArray) {
            value = &level.p->m_items[level.next];
        } else {
            const CMapStringToRpnData *map = level.p->m_map;
            out += f.itemBegin;
            out += map->GetSpelling(map->GetKeyAt(level.next));
            out += f.itemSep;
            value = &map->GetValueAt(level.next);
            level.entryOpen = true;
        }
        ++level.next;
        const int inner = level.depth + 1;
        if (holdsValues(*value))
            enter(value->m_u.p, inner); // `level` and `f` are not used after this
        else if (value->IsReal())
            appendReal(out, value->GetRealValue(), formAt(inner).plainReal ? 0 : value->GetDisplayExponent(),
                       formAt(inner).precision);
        else
            out += formatPlain(*value, formAt(inner));
    }
    endIfTooLong(out);
    return out;
}
