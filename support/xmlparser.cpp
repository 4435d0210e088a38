// The XML parser: one pass over UTF-16 text into CXmlElement nodes.
//
// It is tolerant by design and not a conforming parser.  Comments,
// processing instructions and a doctype are skipped; the five predefined
// entities are replaced and any other '&' is kept as written; a closing tag
// that does not match the open element is ignored.  It refuses:
//   - '>' outside a tag,
//   - an empty element name,
//   - '=' without an attribute name before it, or a second '=',
//   - a quote or a bare value where no '=' waits for one, and '>' right
//     after '=',
//   - a closing tag when no element is open,
// each with the position of the offending character, and a text that ends
// with an element (or a tag, or a quoted value) still open, with position 0.
#include "support/xmlelement.h"

#include <new>
#include <vector>

namespace {

bool isBlank(QChar c)
{
    const char16_t u = c.unicode();
    return u == 9 || u == 10 || u == 13 || u == 32;
}

struct Entity
{
    const char16_t *text;
    int length;
    char16_t replacement;
};

const Entity kEntities[] = {
    {u"&amp;", 5, u'&'}, {u"&apos;", 6, u'\''}, {u"&quot;", 6, u'"'}, {u"&gt;", 4, u'>'}, {u"&lt;", 4, u'<'},
};

// Appends the character at i to out, replacing a known entity; returns the
// index of the last character consumed.
int appendWithEntity(const QChar *text, int i, int limit, QString &out)
{
    if (text[i].unicode() == u'&') {
        for (const Entity &e : kEntities) {
            if (i + e.length > limit)
                continue;
            int k = 1;
            while (k < e.length && text[i + k].unicode() == e.text[k])
                ++k;
            if (k == e.length) {
                out.append(QChar(e.replacement));
                return i + e.length - 1;
            }
        }
    }
    out.append(text[i]);
    return i;
}

bool startsWith(const QChar *text, int i, int limit, const char16_t *what)
{
    for (int k = 0; what[k]; ++k) {
        if (i + k >= limit || text[i + k].unicode() != what[k])
            return false;
    }
    return true;
}

enum class Mode { Text, Instruction, Comment, Doctype, Tag, Value };

// Where the reader stands inside a start tag after its name.
enum class TagState { BeforeName, AttributeName, AfterAttributeName, AfterEquals };

class Parser
{
public:
    Parser(const QChar *text, int limit) : m_text(text), m_limit(limit) {}

    // Returns -1 on success, 0 for an unfinished text, or the error position + 1.
    int run(CXmlElement *root, int start);

private:
    int readTagName(int i, int &nameEnd) const;

    const QChar *m_text;
    int m_limit;
};

int Parser::readTagName(int i, int &nameEnd) const
{
    // The name runs up to a blank, "/>", '=' or '>'.
    int k = i;
    while (k < m_limit) {
        const QChar c = m_text[k];
        if (isBlank(c) || c == u'=' || c == u'>')
            break;
        if (c == u'/' && k + 1 < m_limit && m_text[k + 1] == u'>')
            break;
        ++k;
    }
    nameEnd = k;
    return k;
}

int Parser::run(CXmlElement *root, int start)
{
    std::vector<CXmlElement *> stack{root};
    QString text;
    text.reserve(260);
    Mode mode = Mode::Text;
    TagState state = TagState::BeforeName;
    CXmlElementPtr pending; // the element whose start tag is being read
    QString attributeName;
    QString value;
    QChar quote;

    for (int i = start; i < m_limit; ++i) {
        const QChar c = m_text[i];
        switch (mode) {
        case Mode::Instruction:
            if (c == u'?' && i + 1 < m_limit && m_text[i + 1] == u'>') {
                ++i;
                mode = Mode::Text;
            }
            break;
        case Mode::Comment:
            if (startsWith(m_text, i, m_limit, u"-->")) {
                i += 2;
                mode = Mode::Text;
            }
            break;
        case Mode::Doctype:
            if (c == u'>')
                mode = Mode::Text;
            break;
        case Mode::Text:
            if (c == u'<') {
                if (startsWith(m_text, i, m_limit, u"<?")) {
                    mode = Mode::Instruction;
                    ++i;
                } else if (startsWith(m_text, i, m_limit, u"<!--")) {
                    mode = Mode::Comment;
                    i += 3;
                } else if (startsWith(m_text, i, m_limit, u"<!DOCTYPE")) {
                    mode = Mode::Doctype;
                    i += 8;
                } else if (i + 1 < m_limit && m_text[i + 1] == u'/') {
                    // A closing tag: compare its name with the open element.
                    const int tagStart = i;
                    int nameEnd;
                    readTagName(i + 2, nameEnd);
                    int close = nameEnd;
                    while (close < m_limit && m_text[close] != u'>')
                        ++close;
                    if (close >= m_limit)
                        return 0;
                    if (stack.size() == 1)
                        return tagStart + 1;
                    CXmlElement *top = stack.back();
                    const QStringView name(m_text + i + 2, nameEnd - (i + 2));
                    if (name.size() == top->GetName().size() && name.compare(top->GetName(), Qt::CaseSensitive) == 0) {
                        if (top->GetChildCount() == 0 && !text.isEmpty())
                            top->SetData(text);
                        stack.pop_back();
                    }
                    text.clear();
                    i = close;
                } else {
                    int nameEnd;
                    readTagName(i + 1, nameEnd);
                    if (nameEnd == i + 1)
                        return (nameEnd < m_limit ? nameEnd : i) + 1;
                    for (int k = i + 1; k < nameEnd; ++k) {
                        if (m_text[k] == u'"' || m_text[k] == u'\'')
                            return k + 1;
                    }
                    pending = CXmlElementPtr::Create(m_text + i + 1, nameEnd - (i + 1), CXmlElement::KindElement);
                    mode = Mode::Tag;
                    state = TagState::BeforeName;
                    attributeName.clear();
                    i = nameEnd - 1;
                }
            } else if (c == u'>') {
                return i + 1;
            } else if (stack.size() > 1) {
                // Text of the open element; its leading blanks are dropped.
                if (!(text.isEmpty() && isBlank(c)))
                    i = appendWithEntity(m_text, i, m_limit, text);
            }
            break;
        case Mode::Value:
            if (c == quote) {
                pending->AddAttribute(attributeName, value);
                attributeName.clear();
                state = TagState::BeforeName;
                mode = Mode::Tag;
            } else {
                i = appendWithEntity(m_text, i, m_limit, value);
            }
            break;
        case Mode::Tag:
            if (isBlank(c)) {
                if (state == TagState::AttributeName)
                    state = TagState::AfterAttributeName;
            } else if (c == u'>') {
                if (state == TagState::AfterEquals)
                    return i + 1;
                // The element joins its parent and, unless the tag closed
                // itself with "/>", becomes the open element.
                CXmlElement *parent = stack.back();
                parent->AddChild(pending.Get());
                if (m_text[i - 1] != u'/')
                    stack.push_back(pending.Get());
                pending = CXmlElementPtr();
                text.clear();
                mode = Mode::Text;
            } else if (c == u'=') {
                if (state != TagState::AttributeName && state != TagState::AfterAttributeName)
                    return i + 1;
                state = TagState::AfterEquals;
            } else if (c == u'"' || c == u'\'') {
                if (state != TagState::AfterEquals)
                    return i + 1;
                quote = c;
                value.clear();
                mode = Mode::Value;
            } else if (c == u'/' && i + 1 < m_limit && m_text[i + 1] == u'>') {
                // the '>' that follows closes the empty element
            } else {
                if (state == TagState::AfterEquals)
                    return i + 1; // a value without quotes
                if (state != TagState::AttributeName) {
                    // A name left without '=' and a value is dropped.
                    attributeName.clear();
                    state = TagState::AttributeName;
                }
                attributeName.append(c);
            }
            break;
        }
    }
    if (mode == Mode::Tag || mode == Mode::Value || stack.size() != 1)
        return 0;
    return -1;
}

} // namespace

bool CXmlElement::Parse(CXmlElement *root, const QChar *text, int length, int start, int end, int &position)
{
    position = 0;
    if (IsNull(root) || root->GetKind() == KindNone || !text)
        return false;
    const int limit = end < length ? end : length;
    if (start < 0)
        start = 0;
    try {
        Parser parser(text, limit);
        const int result = parser.run(root, start);
        if (result < 0)
            return true;
        position = result > 0 ? result - 1 : 0;
        return false;
    } catch (const std::bad_alloc &) {
        position = 0;
        return false;
    }
}

bool CXmlElement::Parse(CXmlElement *root, const QString &text, int &position)
{
    return Parse(root, text.constData(), int(text.size()), 0, int(text.size()), position);
}
