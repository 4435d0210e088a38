// The readers of graph data files (.mrd) on any file: the whole-file reader,
// then the held-column reader for every held column the table names.  A read
// that succeeds must give a consistent data set.
#include "graphdata/file/filer2.h"
#include "graphdata/file/graphfileformat.h"
#include "graphdata/file/graphfileload.h"
#include "support/languagestring.h"

#include <QCoreApplication>
#include <QDir>
#include <QString>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <set>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // The messages name the file: they need the texts.
    static const bool texts = LoadLanguageFile(QStringLiteral(TARN_EN_LANG));
    if (!texts)
        std::abort();
    static const QString path =
        QDir::temp().filePath(QStringLiteral("fuzz_graphfile_%1.mrd").arg(QCoreApplication::applicationPid()));
    std::FILE *f = std::fopen(path.toLocal8Bit().constData(), "wb");
    if (!f)
        return 0;
    std::fwrite(data, 1, size, f);
    std::fclose(f);

    CGraphFileContent content;
    QString message;
    if (ReadGraphFile(path, content, message)) {
        for (int c = 0; c < content.data.ColumnCount(); ++c) {
            const CGraphColumn *column = content.data.GetColumn(c);
            if (!column || column->m_count < content.data.RowCount())
                std::abort();
        }
    } else if (!message.contains(path)) {
        std::abort();
    }

    std::set<std::uint64_t> ids;
    {
        CFiler2 filer;
        if (filer.OpenFile(path, 0)) {
            for (int i = 0; i < filer.RecordCount(); ++i) {
                if (filer.Entry(i)->type == GraphFile::RecordHeldColumn)
                    ids.insert(filer.Entry(i)->id);
            }
        }
    }
    CHeldColumnStore store;
    if (LoadHeldColumns(4, path, store, ids, message)) {
        for (const auto &[id, column] : store) {
            if (!column || column->m_id != id || column->m_count < 0)
                std::abort();
        }
    } else if (!message.isEmpty() && !message.contains(path)) {
        std::abort();
    }
    return 0;
}
