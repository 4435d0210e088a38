// Feeds arbitrary text to the XML parser.  A text that parses into one
// top-level element is written and parsed again, and both trees must agree.
#include "support/xmlelement.h"

#include <cstdint>
#include <cstdlib>

namespace {

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
    if (!ok || root->GetChildCount() != 1)
        return 0;

    QString written;
    if (!CXmlElement::WriteDocument(root.Get(), written))
        std::abort();
    CXmlElementPtr again = CreateElement(QString());
    if (!CXmlElement::Parse(again.Get(), written, position) || !sameTree(root.Get(), again.Get()))
        std::abort();
    return 0;
}
