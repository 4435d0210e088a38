// What a pasted text keeps in an edit field, for any flag word and text: a
// subsequence of the text, without control characters (line breaks only in a
// multi-line field) or blanks that the flags forbid, and a second filtering
// keeps all of it.
#include "support/controls/exeditfilter.h"

#include <QString>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 3)
        return 0;
    const std::uint16_t flags = std::uint16_t(data[0] | (data[1] << 8));
    const bool multiLine = (data[2] & 1) != 0;
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data + 3), qsizetype(size - 3));
    const QString kept = ExEditFilterPaste(flags, text, multiLine);

    qsizetype at = 0;
    for (QChar c : kept) {
        while (at < text.size() && text[at] != c)
            ++at;
        if (at == text.size())
            std::abort(); // not a subsequence
        ++at;
        const bool lineBreak = c == u'\r' || c == u'\n';
        if (c.unicode() < 32 && !(lineBreak && multiLine))
            std::abort();
        if (c == u' ' && !(flags & ExEditBlanks))
            std::abort();
        if (c == u'.' && (flags & ExEditNoPoint))
            std::abort();
    }
    if (ExEditFilterPaste(flags, kept, multiLine) != kept)
        std::abort();
    return 0;
}
