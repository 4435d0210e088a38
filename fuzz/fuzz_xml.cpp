// Feeds arbitrary text to the XML parser.  A text that parses into one
// top-level element whose names are all plain XML names is written and parsed
// again, and both trees must agree.  (The tolerant parser also takes names
// such as "</" or "a/b=" that the writer cannot give back unchanged.)
#include "support/xmlelement.h"

#include <cstdint>
#include <cstdlib>

namespace {

bool plainName(const QString &name)
{
    if (name.isEmpty())
        return false;
    for (QChar c : name) {
        if (!(c.isLetterOrNumber() || c == u'_' || c == u'-' || c == u'.' || c == u':'))
            return false;
    }
    return !name[0].isDigit() && name[0] != u'-' && name[0] != u'.';
}

bool plainNames(const CXmlElement *e)
{
    if (!plainName(e->GetName()))
        return false;
    for (int i = 0; i < e->GetAttributeCount(); ++i) {
        if (!plainName(e->GetAttributeAt(i)->GetName()))
            return false;
    }
    for (int i = 0; i < e->GetChildCount(); ++i) {
        if (!plainNames(e->GetChildAt(i)))
            return false;
    }
    return true;
}

bool sameTree(const CXmlElement *a, const CXmlElement *b)
{
    if (a->GetName() != b->GetName() || a->GetData() != b->GetData()
        || a->GetAttributeCount() != b->GetAttributeCount() || a->GetChildCount() != b->GetChildCount())
        return false;
    for (int i = 0; i < a->GetAttributeCount(); ++i) {
        if (a->GetAttributeAt(i)->GetName() != b->GetAttributeAt(i)->GetName()
            || a->GetAttributeAt(i)->GetData() != b->GetAttributeAt(i)->GetData())
            return false;
    }
    for (int i = 0; i < a->GetChildCount(); ++i) {
        if (!sameTree(a->GetChildAt(i), b->GetChildAt(i)))
            return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    CXmlElementPtr root = CreateElement(QString());
    int position = -1;
    const bool ok = CXmlElement::Parse(root.Get(), text, position);
    if (!ok && (position < 0 || position > text.size()))
        std::abort();
    if (!ok || root->GetChildCount() != 1 || !plainNames(root->GetChildAt(0)))
        return 0;

    QString written;
    if (!CXmlElement::WriteDocument(root.Get(), written))
        std::abort();
    CXmlElementPtr again = CreateElement(QString());
    if (!CXmlElement::Parse(again.Get(), written, position) || !sameTree(root.Get(), again.Get()))
        std::abort();
    return 0;
}
