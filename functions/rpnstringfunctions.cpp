// Searching and cutting texts.

#include "functions/rpnstringfunctions.h"

#include "formula/rpnformulanodes.h"
#include "formula/rpnkeywords.h"

#include <QStringView>

#include <array>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

// The code units whose case folding is that of each ASCII character: 'a'
// and 'A', 'k', 'K' and the Kelvin sign, 's', 'S' and the long s.  Made once
// from the whole basic plane.
struct FoldVariants
{
    char16_t unit[4];
    int count;
};

const std::array<FoldVariants, 128> &asciiFoldVariants()
{
    static const std::array<FoldVariants, 128> table = [] {
        std::array<FoldVariants, 128> byFold{};
        for (char32_t u = 0; u <= 0xFFFF; ++u) {
            if (QChar::isSurrogate(u))
                continue;
            const char32_t f = QChar::toCaseFolded(u);
            if (f < 128 && byFold[f].count < 4)
                byFold[f].unit[byFold[f].count++] = char16_t(u);
        }
        std::array<FoldVariants, 128> out{};
        for (char32_t a = 0; a < 128; ++a)
            out[a] = byFold[QChar::toCaseFolded(a)];
        return out;
    }();
    return table;
}

// The first position at or behind `from` that holds one of the `count`
// (1 to 4) code units, or -1.  One pass over the text however many units
// are looked for: eight units at a time where the processor compares them
// side by side.
qsizetype firstOfUnits(const char16_t *text, qsizetype from, qsizetype n, const char16_t *units, int count)
{
    qsizetype i = from;
#ifdef __SSE2__
    __m128i wanted[4];
    for (int k = 0; k < count; ++k)
        wanted[k] = _mm_set1_epi16(short(units[k]));
    const auto matches = [&](qsizetype at) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text + at));
        __m128i m = _mm_cmpeq_epi16(x, wanted[0]);
        for (int k = 1; k < count; ++k)
            m = _mm_or_si128(m, _mm_cmpeq_epi16(x, wanted[k]));
        return _mm_movemask_epi8(m);
    };
    for (; i + 16 <= n; i += 16) {
        const int low = matches(i), high = matches(i + 8);
        if (low | high)
            return low ? i + (__builtin_ctz(unsigned(low)) >> 1) : i + 8 + (__builtin_ctz(unsigned(high)) >> 1);
    }
    for (; i + 8 <= n; i += 8) {
        if (const int m = matches(i))
            return i + (__builtin_ctz(unsigned(m)) >> 1);
    }
#endif
    for (; i < n; ++i) {
        for (int k = 0; k < count; ++k) {
            if (text[i] == units[k])
                return i;
        }
    }
    return -1;
}

// Case-folded search, as QString::indexOf with Qt::CaseInsensitive.  A
// needle that begins with an ASCII character is found by scanning for the
// few code units that fold to it and comparing the rest at each of those
// places; others go to the library.
qsizetype foldedIndexOf(QStringView text, QStringView needle, qsizetype from)
{
    const qsizetype m = needle.size();
    const char16_t first = needle.front().unicode();
    if (first >= 128 || text.size() < 64)
        return text.indexOf(needle, from, Qt::CaseInsensitive);
    const qsizetype last = text.size() - m;
    const FoldVariants &v = asciiFoldVariants()[first];
    const char16_t *units = reinterpret_cast<const char16_t *>(text.data());
    const QStringView rest = needle.mid(1);
    while (from <= last) {
        const qsizetype at = firstOfUnits(units, from, last + 1, v.unit, v.count);
        if (at < 0)
            return -1;
        if (text.mid(at + 1, m - 1).compare(rest, Qt::CaseInsensitive) == 0)
            return at;
        from = at + 1;
    }
    return -1;
}

constexpr std::uint32_t kDigits = 16;

bool isBlankOrTab(QChar c)
{
    return c == u' ' || c == u'\t';
}

// The separator set of Split: the ASCII members as bits, so that the walk
// tests most characters without a call; others are looked up in the text.
class SeparatorSet
{
public:
    explicit SeparatorSet(QStringView set) : m_set(set)
    {
        for (QChar c : set) {
            const char16_t u = c.unicode();
            if (u < 128)
                m_ascii[u >> 6] |= std::uint64_t(1) << (u & 63);
            else
                m_hasOthers = true;
        }
    }
    bool contains(QChar c) const
    {
        const char16_t u = c.unicode();
        if (u < 128)
            return (m_ascii[u >> 6] >> (u & 63)) & 1;
        return m_hasOthers && m_set.contains(c);
    }

private:
    QStringView m_set;
    std::uint64_t m_ascii[2] = {0, 0};
    bool m_hasOthers = false;
};

// Calls onToken(token) for each token of Split; see CNodeSplit.
template <class Emit>
void splitWalk(QStringView text, const SeparatorSet &set, const Emit &onToken)
{
    const qsizetype n = text.size();
    const QChar *chars = text.data();
    qsizetype pos = 0;
    while (pos < n) {
        qsizetype j = pos;
        while (j < n && !set.contains(chars[j]))
            ++j;
        if (j < n && isBlankOrTab(text[j])) {
            const QStringView token = text.mid(pos, j - pos).trimmed();
            while (j < n && isBlankOrTab(text[j]))
                ++j;
            if (!token.isEmpty())
                onToken(token);
            pos = j;
        } else {
            onToken(text.mid(pos, j - pos));
            pos = j + 1;
        }
    }
}

// Calls onToken(token) for each token of Split2; see CNodeSplit2.
template <class Emit>
void split2Walk(QStringView text, QStringView begin, QStringView end, bool keep, const Emit &onToken)
{
    const qsizetype n = text.size();
    auto add = [&](qsizetype from, qsizetype to) {
        if (to > from)
            onToken(text.mid(from, to - from));
    };
    if (!end.isEmpty()) {
        qsizetype pos = 0;
        for (;;) {
            const qsizetype b = text.indexOf(begin, pos);
            if (b < 0)
                return;
            const qsizetype inside = b + begin.size();
            const qsizetype e = text.indexOf(end, inside);
            if (e < 0) {
                add(keep ? b : inside, n);
                return;
            }
            add(keep ? b : inside, keep ? e + end.size() : e);
            pos = e + end.size();
        }
    }
    qsizetype tokenStart = 0, searchFrom = 0;
    for (;;) {
        const qsizetype b = text.indexOf(begin, searchFrom);
        if (b < 0) {
            add(tokenStart, n);
            return;
        }
        add(tokenStart, b);
        tokenStart = keep ? b : b + begin.size();
        searchFrom = b + begin.size();
    }
}

// An ARRAY of the tokens a walk gives: counted first, then made, so that the
// array is allocated once.
template <class Walk>
void tokensToArray(CRpnNode *node, CRpnData &result, unsigned char &status, const Walk &walk)
{
    qsizetype count = 0;
    walk([&count](QStringView) { ++count; });
    if (!CheckArrayCells(node, status, double(count), false)) {
        result.SetNull();
        return;
    }
    result.SetArray(int(count));
    CRpnData *cells = result.GetItems();
    int i = 0;
    walk([&cells, &i](QStringView token) { cells[i++].SetText(token.toString()); });
}

bool inSet(const QString &set, QChar c)
{
    return set.contains(c);
}

QString trimLeft(const QString &text, const QString &set)
{
    qsizetype i = 0;
    if (set.isEmpty()) {
        while (i < text.size() && text[i].isSpace())
            ++i;
    } else {
        while (i < text.size() && inSet(set, text[i]))
            ++i;
    }
    return text.mid(i);
}

QString trimRight(const QString &text, const QString &set)
{
    qsizetype n = text.size();
    if (set.isEmpty()) {
        while (n > 0 && text[n - 1].isSpace())
            --n;
    } else {
        while (n > 0 && inSet(set, text[n - 1]))
            --n;
    }
    return text.left(n);
}

} // namespace

// --- Find, FindReverse ------------------------------------------------------------------------

qsizetype CNodeFindChar::Search(const QString &text, const QString &what, int start, bool) const
{
    return foldedIndexOf(text, what, start < 0 ? 0 : start);
}

qsizetype CNodeFindReverseChar::Search(const QString &text, const QString &what, int start, bool hasStart) const
{
    const qsizetype n = text.size();
    qsizetype last = hasStart ? start : n - 1;
    if (last < 0 || last >= n)
        last = n - 1;
    const qsizetype from = last - what.size() + 1;
    if (from < 0)
        return -1;
    return text.lastIndexOf(what, from, Qt::CaseInsensitive);
}

void CNodeFindChar::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    result.SetInt(-1);
    if (count < 2) {
        status = 0;
        return;
    }
    CRpnData text, what, start;
    if (!EvaluateArgument(this, 0, text, result, status))
        return;
    if (!text.IsString() || text.GetTextValue().isEmpty())
        return;
    if (!EvaluateArgument(this, 1, what, result, status))
        return;
    if (count > 2 && !EvaluateArgument(this, 2, start, result, status))
        return;
    const bool hasStart = count > 2;
    const int from = hasStart ? start.GetInt() : 0;
    const QString &haystack = text.GetTextValue();
    qsizetype found = -1;
    if (what.GetKind() != RPN_ARRAY) {
        const QString needle = what.GetText(kDigits);
        if (!needle.isEmpty())
            found = Search(haystack, needle, from, hasStart);
    } else {
        for (int i = 0; i < what.GetSize(); ++i) {
            const QString needle = what.GetItems()[i].GetText(kDigits);
            if (needle.isEmpty())
                continue;
            const qsizetype at = Search(haystack, needle, from, hasStart);
            if (at >= 0 && (found < 0 || at < found))
                found = at;
        }
    }
    result.SetInt(int(found));
}

// --- Replace --------------------------------------------------------------------------------------

void CNodeReplaceThis::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    if (count == 0) {
        result.SetNull();
        status = 0;
        return;
    }
    CRpnData value;
    if (!EvaluateArgument(this, 0, value, result, status))
        return;
    if (!value.IsFormula() && !value.IsString()) {
        result.SetNull();
        status = 0;
        return;
    }
    std::vector<CRpnSubstitution> pairs;
    if (!ReadSubstitutions(this, 1, pairs, result, status))
        return;
    if (value.IsFormula()) {
        // Whole variables of the formula, whatever their case.
        SubstituteInFormula(this, value, pairs, result, status);
        return;
    }
    // In a text every occurrence, word or not.
    QString text = value.GetTextValue();
    for (const CRpnSubstitution &pair : pairs) {
        if (!pair.name.isEmpty())
            text.replace(pair.name, pair.text, Qt::CaseSensitive);
    }
    result.SetText(text);
}

// --- Split, Split2 ----------------------------------------------------------------------------------

void CNodeSplit::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    CRpnData value, separators;
    if (count == 0) {
        result.SetNull();
        status = 0;
        return;
    }
    if (!EvaluateArgument(this, 0, value, result, status))
        return;
    const QString text = value.GetText(kDigits);
    if (text.isEmpty()) {
        result.SetNull();
        status = 0;
        return;
    }
    QString set;
    if (count > 1) {
        if (!EvaluateArgument(this, 1, separators, result, status))
            return;
        set = separators.GetText(kDigits);
    }
    if (set.isEmpty()) {
        result.SetNull();
        status = 0;
        return;
    }
    const SeparatorSet separatorSet(set);
    tokensToArray(this, result, status, [&](const auto &onToken) { splitWalk(text, separatorSet, onToken); });
}

void CNodeSplit2::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    if (count == 0) {
        result.SetNull();
        status = 0;
        return;
    }
    CRpnData value, begin, end, keep;
    if (!EvaluateArgument(this, 0, value, result, status))
        return;
    const QString text = value.GetText(kDigits);
    if (text.isEmpty()) {
        result.SetNull();
        status = 0;
        return;
    }
    if (count > 1 && !EvaluateArgument(this, 1, begin, result, status))
        return;
    if (count > 2 && !EvaluateArgument(this, 2, end, result, status))
        return;
    if (count > 3 && !EvaluateArgument(this, 3, keep, result, status))
        return;
    const QString beginMark = count > 1 ? begin.GetText(kDigits) : QString();
    const QString endMark = count > 2 ? end.GetText(kDigits) : QString();
    const bool keepMarks = count > 3 && keep.GetInt() != 0;
    if (beginMark.isEmpty()) {
        result.SetNull();
        status = 0;
        return;
    }
    tokensToArray(this, result, status, [&](const auto &onToken) { split2Walk(text, beginMark, endMark, keepMarks, onToken); });
}

// --- SubStr --------------------------------------------------------------------------------------------

void CNodeSubString::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    if (count == 0) {
        result.SetText(QString());
        status = 0;
        return;
    }
    CRpnData value, start, length;
    if (!EvaluateArgument(this, 0, value, result, status))
        return;
    const QString text = value.GetText(kDigits);
    if (text.isEmpty()) {
        result.SetText(QString());
        status = 0;
        return;
    }
    if (count == 1) {
        result.SetText(text);
        return;
    }
    if (!EvaluateArgument(this, 1, start, result, status))
        return;
    if (count > 2 && !EvaluateArgument(this, 2, length, result, status))
        return;
    const qsizetype n = text.size();
    qsizetype from = start.GetInt();
    if (from < 0)
        from = std::max<qsizetype>(n + from, 0);
    if (from >= n) {
        result.SetText(QString());
        return;
    }
    const qsizetype take = count > 2 ? length.GetInt() : -1;
    result.SetText(take < 0 ? text.mid(from) : text.mid(from, take));
}

// --- the Trim family ------------------------------------------------------------------------------------

void CNodeString_base::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    result.SetText(QString());
    if (count == 0) {
        status = 0;
        return;
    }
    CRpnNode *first = m_children[0];
    const bool byReference = first && first->IsVariable();
    CRpnData value;
    if (!EvaluateArgument(this, 0, value, result, status))
        return;
    const QString text = value.GetText(kDigits);
    QString set;
    for (int i = 1; i < count; ++i) {
        CRpnData part;
        if (!EvaluateArgument(this, i, part, result, status))
            return;
        set += part.GetText(kDigits);
    }
    result.SetText(Operate(text, set));
    if (byReference)
        WriteBackParameter(first, result, status);
}

QString CNodeTrimChar::Operate(const QString &text, const QString &set) const
{
    return trimLeft(trimRight(text, set), set);
}

QString CNodeTrimLeftChar::Operate(const QString &text, const QString &set) const
{
    return trimLeft(text, set);
}

QString CNodeTrimRightChar::Operate(const QString &text, const QString &set) const
{
    return trimRight(text, set);
}

QString CNodeMakeUpperChar::Operate(const QString &text, const QString &) const
{
    return text.toUpper();
}

QString CNodeMakeLowerChar::Operate(const QString &text, const QString &) const
{
    return text.toLower();
}

void ProvideStringFunctions(CRpnPrototypeArray &prototypes)
{
    CRpnNode *const nodes[] = {new CNodeFindChar,      new CNodeFindReverseChar, new CNodeReplaceThis,
                               new CNodeSplit,         new CNodeSplit2,          new CNodeSubString,
                               new CNodeTrimChar,      new CNodeTrimLeftChar,    new CNodeTrimRightChar,
                               new CNodeMakeUpperChar, new CNodeMakeLowerChar};
    for (CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), node);
}
