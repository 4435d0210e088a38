// The language-file parser on any content: the entries it finds, written
// back as a clean language file, are read again as the same entries, with no
// line found malformed.
#include "support/languagestring.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <cstdint>
#include <cstdlib>

namespace {

QString escaped(const QString &text)
{
    QString out;
    for (QChar c : text) {
        if (c == u'\\')
            out += QStringLiteral("\\\\");
        else if (c == u'\n')
            out += QStringLiteral("\\n");
        else if (c == u'\t')
            out += QStringLiteral("\\t");
        else
            out += c;
    }
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray content(reinterpret_cast<const char *>(data), qsizetype(size));
    QList<QPair<int, QString>> entries;
    ParseLanguageText(content, entries);
    if (entries.size() > content.count('\n') + 1)
        std::abort();

    // CR LF line ends: a text may end in CR, which a line end of LF alone
    // would lose to the reader's dropping of one CR before the LF.
    QString rewritten = QStringLiteral("# written again\r\n");
    for (const auto &e : entries)
        rewritten += QString::number(e.first) + u'\t' + escaped(e.second) + QStringLiteral("\r\n");
    QList<QPair<int, QString>> again;
    if (!ParseLanguageText(rewritten.toUtf8(), again) || again != entries)
        std::abort();
    return 0;
}
