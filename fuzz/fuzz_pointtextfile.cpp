// The reader of point text files on any file, followed by what the dialog
// does with a table it read: into the fields, and the point text parsed.
#include "support/myarrays.h"
#include "tool/capture/curverecords.h"
#include "tool/capture/pointtext.h"
#include "tool/capture/pointtextfile.h"
#include "tool/capture/toolfields.h"

#include <QCoreApplication>
#include <QDir>
#include <QString>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QString path =
        QDir::temp().filePath(QStringLiteral("fuzz_pointtextfile_%1.txt").arg(QCoreApplication::applicationPid()));
    std::FILE *f = std::fopen(path.toLocal8Bit().constData(), "wb");
    if (!f)
        return 0;
    std::fwrite(data, 1, size, f);
    std::fclose(f);

    CPointTable table;
    QString report;
    if (ReadPointTextFile(path, table, report) != PointFileRead::Read)
        return 0;
    if (table.rows.size() != table.values.GetRows() || table.columnCount != table.values.GetColumns())
        std::abort();

    static CDTypeLib lib;
    CCurveRecords records;
    if (!records.Init(lib))
        std::abort();
    CToolFields fields;
    QString xName, yName;
    if (ApplyPointTable(table, fields, records, xName, yName) != PointTableApplied::Applied)
        return 0;
    int count = 0;
    CMyDoubleArray pairs;
    ParsePointText(fields.points, count, pairs, true);
    // Every row of two or more columns gives one pair.
    if (table.columnCount >= 2 && count < table.rows.size())
        std::abort();
    return 0;
}
