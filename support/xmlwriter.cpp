// The XML writer.  Its form is fixed, because other programs compare files:
//   - a header line "<?xml version='1.0' encoding='UTF-16' ?>" and "\n",
//   - one tab per level, lines ending in "\r\n",
//   - each attribute as a blank, name, '="', value, '" ' (so a tag with
//     attributes ends in '" >'),
//   - never the self-closing form,
//   - a text node (kind 3) as its data and "\r\n".
// A root without a name that holds exactly one child is left out, and the
// child is written as the root.  Lists are cut at the first null entry or
// node of kind 0.
#include "support/xmlelement.h"

#include <algorithm>
#include <new>
#include <vector>

namespace {

bool usable(const CXmlElement *node)
{
    return !CXmlElement::IsNull(node) && node->GetKind() != CXmlElement::KindNone;
}

// Room for the next piece plus 1000 characters, and never less than half of
// what is there, so that a long document is not copied over and over.
void makeRoom(QString &out, qsizetype extra)
{
    if (out.capacity() - out.size() < extra)
        out.reserve(out.size() + std::max<qsizetype>(extra + 1000, out.size() / 2));
}

// Appends text with &, >, <, " and ' replaced, in that order.
void appendEscaped(QString &out, const QString &text)
{
    bool special = false;
    for (QChar c : text) {
        if (c == u'&' || c == u'>' || c == u'<' || c == u'"' || c == u'\'') {
            special = true;
            break;
        }
    }
    if (!special) {
        out.append(text);
        return;
    }
    // One pass gives what the five replacements in their order give, since
    // only the first of them brings in characters that a later one looks at.
    makeRoom(out, text.size() * 6);
    for (QChar c : text) {
        switch (c.unicode()) {
        case u'&': out.append(u"&amp;"); break;
        case u'>': out.append(u"&gt;"); break;
        case u'<': out.append(u"&lt;"); break;
        case u'"': out.append(u"&quot;"); break;
        case u'\'': out.append(u"&apos;"); break;
        default: out.append(c); break;
        }
    }
}

void appendTabs(QString &out, int depth)
{
    makeRoom(out, depth);
    out.append(QString(depth, u'\t'));
}

int usableCount(const CArrayXmlElement &list)
{
    const int n = list.GetSize();
    for (int i = 0; i < n; ++i) {
        if (!usable(list.GetAt(i)))
            return i;
    }
    return n;
}

void writeOpening(QString &out, const CXmlElement *e, int depth)
{
    appendTabs(out, depth);
    makeRoom(out, e->GetName().size() + e->GetNamespace().size() + 1);
    out.append(u'<');
    out.append(e->GetName());
    out.append(e->GetNamespace());
    const CArrayXmlElement &attributes = e->Attributes();
    const int n = usableCount(attributes);
    for (int i = 0; i < n; ++i) {
        const CXmlElement *a = attributes.GetAt(i);
        makeRoom(out, a->GetName().size() + a->GetData().size() + 5);
        out.append(u' ');
        out.append(a->GetName());
        out.append(u"=\"");
        appendEscaped(out, a->GetData());
        out.append(u"\" ");
    }
}

void writeClosing(QString &out, const CXmlElement *e)
{
    makeRoom(out, e->GetData().size() + e->GetName().size() + 5);
    appendEscaped(out, e->GetData());
    out.append(u"</");
    out.append(e->GetName());
    out.append(u">\r\n");
}

struct Frame
{
    const CXmlElement *element;
    int depth;
    int next;  // index of the next child to write
    int count; // children to write
};

void writeTree(QString &out, const CXmlElement *root)
{
    std::vector<Frame> stack;
    auto open = [&](const CXmlElement *e, int depth) {
        if (e->GetKind() == CXmlElement::KindText) {
            makeRoom(out, e->GetData().size() + 2);
            appendEscaped(out, e->GetData());
            out.append(u"\r\n");
            return;
        }
        writeOpening(out, e, depth);
        const int count = usableCount(e->Children());
        if (count == 0) {
            out.append(u'>');
            writeClosing(out, e);
            return;
        }
        out.append(u">\r\n");
        stack.push_back({e, depth, 0, count});
    };

    open(root, 0);
    while (!stack.empty()) {
        Frame &f = stack.back();
        if (f.next < f.count) {
            const CXmlElement *child = f.element->Children().GetAt(f.next++);
            open(child, f.depth + 1); // may reallocate the stack: f is not used after
            continue;
        }
        appendTabs(out, f.depth);
        writeClosing(out, f.element);
        stack.pop_back();
    }
}

} // namespace

bool CXmlElement::WriteDocument(const CXmlElement *root, QString &text)
{
    text.clear();
    if (!usable(root))
        return false;
    try {
        text.append(u"<?xml version='1.0' encoding='UTF-16' ?>\n");
        const CXmlElement *top = root;
        if (root->GetName().isEmpty() && root->GetChildCount() == 1 && usable(root->GetChildAt(0)))
            top = root->GetChildAt(0);
        writeTree(text, top);
        return true;
    } catch (const std::bad_alloc &) {
        text.clear();
        return false;
    }
}
