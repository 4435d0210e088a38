// The scanner.  At each position the rules are tried in a fixed order: line
// ends, comments, blanks, brackets, numbers, <--BEGIN--> blocks, operators,
// quoted text, _CRLF words, # lines, the host's variables, words, and last a
// single character of its own.

#include "formula/rpnscanner.h"

#include "formula/rpndata.h"
#include "formula/rpnexception.h"
#include "formula/rpnnumber.h"
#include "formula/rpnseams.h"
#include "formula/rpnuserfunction.h"

#include <algorithm>

namespace {

constexpr int kMsgParenthesisNotClosed = 43029;
constexpr int kMsgSyntaxError = 43028;
constexpr int kMsgBracketMismatch = 43170;
constexpr int kMsgBadFunctionName = 43241;
constexpr int kMsgExpected = 43242;
constexpr int kMsgFunctionMisplaced = 43243;

const QString kExpectRound = QStringLiteral(" ( ");
const QString kExpectCurly = QStringLiteral(" { ");
const QString kExpectBegin = QStringLiteral(" <--BEGIN--> ");
const QString kExpectEnd = QStringLiteral(" <--END--> ");

bool isWordEnd(QStringView s, qsizetype i)
{
    switch (s[i].unicode()) {
    case u'\t': case u'\n': case u'\r': case u' ': case u'"': case u'#': case u'%':
    case u'&': case u'\'': case u'(': case u')': case u'*': case u'+': case u',':
    case u'-': case u'/': case u';': case u'<': case u'=': case u'>': case u'[':
    case u']': case u'^': case u'{': case u'|': case u'}': case u'~':
        return true;
    case u'!':
        return i + 1 < s.size() && s[i + 1] == u'=';
    default:
        return false;
    }
}

bool isBlankChar(char16_t c)
{
    // Blank, tab and the typographic spaces of U+2000 to U+20FF.
    return c == u' ' || c == u'\t' || (c > 256 && (c >> 8) == 0x20);
}

bool isBracket(char16_t c)
{
    return c == u'(' || c == u')' || c == u'[' || c == u']' || c == u'{' || c == u'}';
}

struct NamedText
{
    const char16_t *word;
    const char16_t *text;
};
constexpr NamedText kNamedTexts[] = {
    {u"_CRLF", u"\r\n"}, {u"_LF", u"\n"}, {u"_CR", u"\r"}, {u"_TB", u"\t"}, {u"_QT", u"\""},
};

class Scanner
{
public:
    Scanner(CRpnErrorFields *tree, const QString &text, CRpnParserItemArray &root,
            CRpnParserItemArray &functions, const CRpnVariableMatcher &matcher)
        : m_tree(tree), m_text(text), m_s(text), m_root(root), m_functions(functions), m_matcher(matcher)
    {
    }
    ~Scanner() { delete m_function; }

    int Run();

private:
    enum State { Main = 0, Name = 1, OpenParameters = 10, Parameters = 11, OpenBody = 20, Body = 21 };

    qsizetype wordLength(qsizetype from) const
    {
        qsizetype i = from;
        while (i < m_s.size() && !isWordEnd(m_s, i))
            ++i;
        return i - from;
    }
    // Moves over `count` characters, counting rows and columns.
    void advance(qsizetype count)
    {
        for (qsizetype k = 0; k < count && m_pos < m_s.size(); ++k, ++m_pos) {
            if (m_s[m_pos] == u'\n') {
                ++m_row;
                m_col = 0;
            } else {
                ++m_col;
            }
        }
    }
    CRpnParserItemArray *target()
    {
        switch (m_state) {
        case Main: return &m_root;
        case Parameters:
        case Body: return m_function->m_current;
        default: return nullptr; // between the parts of a definition nothing is kept
        }
    }
    // Makes an item of the next `length` characters and moves over them.
    void addItem(int kind, qsizetype length, const QString *text = nullptr)
    {
        auto *item = new CRpnParserItem(text ? *text : m_text.mid(m_pos, length), kind, int(m_pos),
                                        int(length), m_row, m_col);
        advance(length);
        if (CRpnParserItemArray *list = target())
            list->Add(item);
        else
            delete item;
    }
    bool fail(int messageId, const QString &argument, int row, int col)
    {
        unsigned char status = 1;
        if (m_tree)
            m_tree->ReportError(status, messageId, {argument}, argument, row, col);
        return false;
    }
    bool fail(int messageId, const QString &argument) { return fail(messageId, argument, m_row, m_col); }

    bool bracket(char16_t c);
    bool word(qsizetype length);
    bool beginBlock();
    qsizetype operatorLength() const;

    CRpnErrorFields *m_tree;
    const QString &m_text;
    QStringView m_s;
    CRpnParserItemArray &m_root;
    CRpnParserItemArray &m_functions;
    const CRpnVariableMatcher &m_matcher;

    qsizetype m_pos = 0;
    int m_row = 1;
    int m_col = 0;
    State m_state = Main;
    int m_round = 0;   // open round brackets of the main text
    int m_curly = 0;   // open curly brackets of the main text
    int m_depth = 0;   // open brackets of the definition part being read
    CRpnParserFunction *m_function = nullptr; // the definition being read
};

qsizetype Scanner::operatorLength() const
{
    const char16_t c = m_s[m_pos].unicode();
    const char16_t d = m_pos + 1 < m_s.size() ? m_s[m_pos + 1].unicode() : char16_t(0);
    switch (c) {
    case u'=': case u'!': return d == u'=' ? 2 : 1;
    case u'<': return d == u'=' || d == u'<' || d == u'>' ? 2 : 1;
    case u'>': return d == u'=' || d == u'>' ? 2 : 1;
    case u'&': case u'|': return d == c ? 2 : 1;
    case u'+': case u'-': case u'*': return d == c || d == u'=' ? 2 : 1;
    case u'/': return d == u'=' ? 2 : 1;
    case u'^': case u'%': case u'~': case u',': case u';': return 1;
    default: return 0;
    }
}

bool Scanner::bracket(char16_t c)
{
    switch (m_state) {
    case OpenParameters:
        if (c != u'(')
            return fail(kMsgParenthesisNotClosed, kExpectRound);
        advance(1);
        m_state = Parameters;
        m_function->m_current = &m_function->m_parameters;
        m_depth = 1;
        return true;
    case OpenBody:
        if (c != u'{')
            return fail(kMsgExpected, kExpectCurly);
        advance(1);
        m_state = Body;
        m_function->m_current = &m_function->m_body;
        m_depth = 1;
        return true;
    case Parameters:
    case Body: {
        const char16_t open = m_state == Parameters ? u'(' : u'{';
        const char16_t close = m_state == Parameters ? u')' : u'}';
        if (c == open)
            ++m_depth;
        else if (c == close && --m_depth == 0) {
            advance(1);
            if (m_state == Parameters) {
                m_state = OpenBody;
            } else {
                // The definition is complete; the main text goes on.
                m_functions.Add(m_function);
                m_function = nullptr;
                m_state = Main;
            }
            return true;
        }
        break;
    }
    case Main:
        if (c == u'(')
            ++m_round;
        else if (c == u')' && m_round > 0)
            --m_round;
        else if (c == u'{')
            ++m_curly;
        else if (c == u'}' && m_curly > 0)
            --m_curly;
        break;
    case Name:
        return fail(kMsgBadFunctionName, QString(QChar(c)));
    }
    if (c == u'(') {
        // A word right before "(" (blanks between do not count) is a call.
        CRpnParserItemArray *list = target();
        for (int i = list->GetSize() - 1; i >= 0; --i) {
            CRpnParserItem *item = list->GetAt(i);
            if (item->m_kind == RPN_TOKEN_BLANK)
                continue;
            if (item->m_kind == RPN_TOKEN_WORD)
                item->m_kind = RPN_TOKEN_CALL;
            break;
        }
    }
    addItem(RPN_TOKEN_BRACKET, 1);
    return true;
}

bool Scanner::word(qsizetype length)
{
    const QStringView w = m_s.mid(m_pos, length);
    const bool isFunction = w.compare(QLatin1StringView("FUNCTION"), Qt::CaseInsensitive) == 0;
    if (m_state == Name) {
        const QString name = w.toString();
        bool known = false;
        for (CRpnParserItem *f : m_functions.m_items)
            known = known || f->AsFunction()->m_name == name;
        if (isFunction)
            return fail(kMsgFunctionMisplaced, name);
        if (!IsValidFunctionName(name) || known)
            return fail(kMsgBadFunctionName, name);
        m_function->m_name = name;
        m_function->m_text = name;
        m_function->m_position = int(m_pos);
        m_function->m_length = int(length);
        m_function->m_row = m_row;
        m_function->m_col = m_col;
        advance(length);
        m_state = OpenParameters;
        return true;
    }
    if (m_state == OpenParameters)
        return fail(kMsgExpected, kExpectRound);
    if (m_state == OpenBody)
        return fail(kMsgExpected, kExpectCurly);
    if (isFunction) {
        if (m_state != Main || m_round != 0 || m_curly != 0)
            return fail(kMsgFunctionMisplaced, w.toString());
        advance(length);
        m_function = new CRpnParserFunction;
        m_function->m_kind = RPN_TOKEN_WORD;
        m_function->m_significant = 1;
        m_state = Name;
        return true;
    }
    addItem(RPN_TOKEN_WORD, length);
    return true;
}

bool Scanner::beginBlock()
{
    static const QLatin1StringView begin("<--BEGIN-->");
    static const QLatin1StringView end("<--END-->");
    if (m_s.mid(m_pos, begin.size()).compare(begin, Qt::CaseInsensitive) != 0)
        return fail(kMsgExpected, kExpectBegin);
    const qsizetype inner = m_pos + begin.size();
    const qsizetype stop = m_s.indexOf(end, inner, Qt::CaseInsensitive);
    if (stop < 0)
        return fail(kMsgExpected, kExpectEnd);
    const QString content = m_text.mid(inner, stop - inner);
    addItem(RPN_TOKEN_TEXT, stop + end.size() - m_pos, &content);
    return true;
}

int Scanner::Run()
{
    const qsizetype n = m_s.size();
    while (m_pos < n) {
        const char16_t c = m_s[m_pos].unicode();
        const char16_t next = m_pos + 1 < n ? m_s[m_pos + 1].unicode() : char16_t(0);
        const bool inDefinitionGap = m_state == Name || m_state == OpenParameters || m_state == OpenBody;

        // 1. Line ends.
        if (c == u'\r' || c == u'\n') {
            qsizetype i = m_pos;
            while (i < n && (m_s[i] == u'\r' || m_s[i] == u'\n'))
                ++i;
            addItem(RPN_TOKEN_LINE_END, i - m_pos);
            continue;
        }
        // 2. Comments.
        if (c == u'/' && next == u'/') {
            qsizetype i = m_pos;
            while (i < n && m_s[i] != u'\n')
                ++i;
            addItem(RPN_TOKEN_COMMENT, i - m_pos);
            continue;
        }
        if (c == u'/' && next == u'*') {
            const qsizetype close = m_s.indexOf(QLatin1StringView("*/"), m_pos + 2);
            addItem(RPN_TOKEN_COMMENT, close < 0 ? n - m_pos : close + 2 - m_pos);
            continue;
        }
        // 3. Blanks.
        if (isBlankChar(c)) {
            qsizetype i = m_pos;
            while (i < n && isBlankChar(m_s[i].unicode()))
                ++i;
            addItem(RPN_TOKEN_BLANK, i - m_pos);
            continue;
        }
        // 4. Brackets.
        if (isBracket(c)) {
            if (!bracket(c))
                return 0;
            continue;
        }
        // Between the parts of a definition only words (the name) may follow.
        if (inDefinitionGap && (m_state != Name || isWordEnd(m_s, m_pos) || (c >= u'0' && c <= u'9'))) {
            if (m_state == Name) {
                const qsizetype len = std::max<qsizetype>(wordLength(m_pos), 1);
                return fail(kMsgBadFunctionName, m_text.mid(m_pos, len));
            }
            return fail(kMsgExpected, m_state == OpenParameters ? kExpectRound : kExpectCurly);
        }
        // 5. Numbers.
        if ((c >= u'0' && c <= u'9') || (c == u'.' && next >= u'0' && next <= u'9')) {
            int consumed = 0;
            ParseNumber(m_s.mid(m_pos), consumed);
            addItem(RPN_TOKEN_NUMBER, std::max(consumed, 1));
            continue;
        }
        // 6. Text blocks.
        if (c == u'<' && next == u'-' && m_pos + 3 < n && m_s[m_pos + 2] == u'-'
            && (m_s[m_pos + 3] == u'B' || m_s[m_pos + 3] == u'b')) {
            if (!beginBlock())
                return 0;
            continue;
        }
        // 7. Operators.
        if (const qsizetype len = operatorLength()) {
            addItem(RPN_TOKEN_OPERATOR, len);
            continue;
        }
        // 8. Quoted text; a quote without its partner is left to the rules below.
        if (c == u'"' || c == u'\'') {
            const qsizetype close = m_s.indexOf(QChar(c), m_pos + 1);
            if (close >= 0) {
                addItem(RPN_TOKEN_TEXT, close + 1 - m_pos);
                continue;
            }
        }
        // 9. Named texts.
        if (c == u'_' && m_state != Name) {
            const qsizetype len = wordLength(m_pos);
            const QStringView w = m_s.mid(m_pos, len);
            bool hit = false;
            for (const NamedText &t : kNamedTexts) {
                if (w == QStringView(t.word)) {
                    const QString text = QString::fromUtf16(t.text);
                    addItem(RPN_TOKEN_TEXT, len, &text);
                    hit = true;
                    break;
                }
            }
            if (hit)
                continue;
        }
        // 10. # lines: inert text.
        if (c == u'#') {
            qsizetype i = m_pos;
            while (i < n && m_s[i] != u'\n')
                ++i;
            addItem(RPN_TOKEN_TEXT, i - m_pos);
            continue;
        }
        // 11. The host's variables.
        if (m_matcher && m_state != Name) {
            int index = -1;
            const int len = m_matcher(m_s.mid(m_pos), index);
            if (len > 0) {
                addItem(RPN_TOKEN_HOST_VARIABLE, std::min<qsizetype>(len, n - m_pos));
                CRpnParserItemArray *list = target();
                list->GetAt(list->GetSize() - 1)->m_index = index;
                continue;
            }
        }
        // 12. Words.
        if (const qsizetype len = wordLength(m_pos)) {
            if (!word(len))
                return 0;
            continue;
        }
        // 13. Anything else.
        if (m_state == Name)
            return fail(kMsgBadFunctionName, QString(QChar(c)));
        addItem(RPN_TOKEN_OTHER, 1);
    }

    // The text ended inside a definition.
    switch (m_state) {
    case Main: return 1;
    case Name: fail(kMsgBadFunctionName, QString()); break;
    case OpenParameters: fail(kMsgExpected, kExpectRound); break;
    case Parameters: fail(kMsgParenthesisNotClosed, kExpectRound); break;
    case OpenBody: fail(kMsgExpected, kExpectCurly); break;
    case Body: fail(kMsgBracketMismatch, kExpectCurly); break;
    }
    return 0;
}

// The significant items of a list.
std::vector<const CRpnParserItem *> significant(const CRpnParserItemArray &list)
{
    std::vector<const CRpnParserItem *> out;
    for (const CRpnParserItem *item : list.m_items) {
        if (item->IsSignificant())
            out.push_back(item);
    }
    return out;
}

bool isOperator(const CRpnParserItem *item, QStringView text)
{
    return item->Is(RPN_TOKEN_OPERATOR, text);
}

} // namespace

CRpnParserItem::CRpnParserItem(const QString &text, int kind, int position, int length, int row, int col)
    : m_text(text), m_kind(kind),
      m_significant(kind == RPN_TOKEN_BLANK || kind == RPN_TOKEN_LINE_END || kind == RPN_TOKEN_COMMENT ? 0 : 1),
      m_position(position), m_length(length), m_row(row), m_col(col)
{
}

CRpnParserItem::~CRpnParserItem() = default;

CRpnParserItemArray::~CRpnParserItemArray()
{
    RemoveAll();
}

void CRpnParserItemArray::RemoveAll()
{
    for (CRpnParserItem *item : m_items)
        delete item;
    m_items.clear();
}

int Scan(CRpnErrorFields *tree, const QString &text, CRpnParserItemArray &root,
         CRpnParserItemArray &functions, const CRpnVariableMatcher &matcher)
{
    Scanner scanner(tree, text, root, functions, matcher);
    return scanner.Run();
}

bool IsValidFunctionName(QStringView name)
{
    if (name.isEmpty())
        return false;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const char16_t c = name[i].unicode();
        const bool letter = (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_';
        if (!letter && (i == 0 || c < u'0' || c > u'9'))
            return false;
    }
    return true;
}

bool ParseParameterList(CRpnErrorFields *tree, const QString &source,
                        const CRpnParserFunction &function, CRpnUserFunction &record)
{
    record.m_name = function.m_name;
    record.m_parameterNames.clear();
    record.m_defaults.clear();
    record.m_parameterFlags.clear();

    const std::vector<const CRpnParserItem *> items = significant(function.m_parameters);
    const std::size_t n = items.size();
    auto refuse = [&](std::size_t i) {
        unsigned char status = 1;
        const CRpnParserItem *at = i < n ? items[i] : &function;
        if (tree)
            tree->ReportError(status, kMsgSyntaxError, {}, at->m_text, at->m_row, at->m_col);
        return false;
    };

    std::size_t i = 0;
    while (i < n) {
        std::uint32_t flags = 0;
        if (items[i]->Is(RPN_TOKEN_WORD, u"_ref")) {
            flags |= CRpnUserFunction::ParamByReference;
            ++i;
        }
        if (i >= n || (items[i]->m_kind != RPN_TOKEN_WORD && items[i]->m_kind != RPN_TOKEN_HOST_VARIABLE))
            return refuse(i);
        const QString name = items[i++]->m_text;

        CRpnData value;
        if (i < n && isOperator(items[i], u"=")) {
            ++i;
            double sign = 1.0;
            if (i + 1 < n && (isOperator(items[i], u"+") || isOperator(items[i], u"-"))
                && items[i + 1]->m_kind == RPN_TOKEN_NUMBER) {
                sign = isOperator(items[i], u"-") ? -1.0 : 1.0;
                ++i;
            }
            if (i >= n)
                return refuse(i);
            const CRpnParserItem *d = items[i];
            if (d->m_kind == RPN_TOKEN_NUMBER) {
                int consumed = 0, exponent = 0;
                value.SetDouble(sign * ParseNumber(d->m_text, consumed, &exponent));
                value.SetDisplayExponent(exponent);
                ++i;
            } else if (d->m_kind == RPN_TOKEN_TEXT) {
                QString t = d->m_text;
                if (t.size() >= 2 && (t[0] == u'"' || t[0] == u'\'') && t.back() == t[0])
                    t = t.mid(1, t.size() - 2);
                value.SetText(t);
                ++i;
            } else if (d->Is(RPN_TOKEN_BRACKET, u"{")) {
                // The list runs to its matching brace and is evaluated as a formula.
                std::size_t k = i;
                int depth = 0;
                for (; k < n; ++k) {
                    if (items[k]->Is(RPN_TOKEN_BRACKET, u"{"))
                        ++depth;
                    else if (items[k]->Is(RPN_TOKEN_BRACKET, u"}") && --depth == 0)
                        break;
                }
                if (k >= n)
                    return refuse(i);
                const int from = d->m_position;
                const QString text = source.mid(from, items[k]->m_position + 1 - from);
                CRpnFormulaSupport *f = GetRpnFormulaSupport();
                if (!f || !f->EvaluateText(text, value))
                    return refuse(i);
                i = k + 1;
            } else {
                return refuse(i);
            }
        }
        record.m_parameterNames.append(name);
        record.m_defaults.append(value);
        record.m_parameterFlags.append(flags);

        if (i < n) {
            if (!isOperator(items[i], u",") || i + 1 >= n)
                return refuse(i + (isOperator(items[i], u",") ? 1 : 0));
            ++i;
        }
    }
    return true;
}
