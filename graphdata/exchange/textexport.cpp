#include "graphdata/exchange/textexport.h"

#include "graphdata/exchange/matexport.h"
#include "graphdata/file/graphfilesave.h"

#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cstdio>

namespace {

int sourceRow(const int *rowMap, int row, int rows)
{
    if (!rowMap)
        return row;
    const int r = rowMap[row];
    return r < 0 || r >= rows ? row : r;
}

QString cleanName(QString name)
{
    name.replace(QLatin1Char(' '), QLatin1Char('_'));
    name.replace(QLatin1Char('\t'), QLatin1Char('_'));
    return name;
}

// Written text is in the narrow character set of the system.
QByteArray narrow(const QString &text) { return text.toLocal8Bit(); }

bool flush(QIODevice &out, QByteArray &buffer)
{
    if (buffer.isEmpty())
        return true;
    const bool ok = out.write(buffer) == buffer.size();
    buffer.clear();
    return ok;
}

// Opens a temporary file beside `path`; the caller writes to it and
// commits.
bool openSave(QSaveFile &file, QString *error)
{
    if (file.open(QIODevice::WriteOnly))
        return true;
    if (error)
        *error = file.errorString();
    return false;
}

bool commit(QSaveFile &file, bool written, QString *error)
{
    if (!written) {
        if (error)
            *error = file.errorString();
        file.cancelWriting();
        file.commit();
        return false;
    }
    if (!file.commit()) {
        if (error)
            *error = file.errorString();
        return false;
    }
    return true;
}

} // namespace

QString ExportHeaderName(const CGraphColumn *column, int position)
{
    QString name = column ? column->m_name : QString();
    if (name.isEmpty())
        name = QStringLiteral("Graph(%1)").arg(position);
    return cleanName(name);
}

QByteArray FixedHeader(const CGraphColumn *const *columns, int count, bool indexOn, const QString &indexLabel)
{
    QByteArray line("  ");
    if (indexOn) {
        QByteArray label = narrow(indexLabel.isEmpty() ? QStringLiteral("Index") : indexLabel).left(100);
        if (label.size() >= 6) {
            // A long label starts one position earlier and keeps one blank
            // behind it.
            line.chop(1);
            line += label;
            line += ' ';
        } else {
            line += label;
        }
        while (line.size() < 10)
            line += ' ';
    }
    // Each name has an 18-position field; the fields line up with the
    // values of the fixed rows (the index takes 10 positions, a value 18).
    int target = indexOn ? 10 : 0;
    for (int i = 0; i < count; ++i) {
        target += 18;
        QString name = columns[i] ? columns[i]->m_name.left(100) : QString();
        while (name.endsWith(QLatin1Char(' ')))
            name.chop(1);
        bool onlyUnderscores = true;
        for (QChar c : name)
            if (c != QLatin1Char('_'))
                onlyUnderscores = false;
        if (name.isEmpty() || onlyUnderscores)
            name = QStringLiteral("Graph(%1)").arg(i);
        const QByteArray text = narrow(cleanName(name));
        if (target - line.size() - text.size() >= 3)
            line += "  ";
        line += text;
        const qsizetype before = line.size();
        while (line.size() < target)
            line += ' ';
        if (line.size() == before)
            line += ' ';
    }
    line += "\r\n";
    return line;
}

bool WriteFixed(QIODevice &out, const CGraphColumn *const *columns, int count, int rows, const int *rowMap,
                bool indexOn, int firstIndex)
{
    QByteArray buffer;
    buffer.reserve(1 << 16);
    char cell[64];
    for (int row = 0; row < rows; ++row) {
        if (indexOn) {
            std::snprintf(cell, sizeof cell, "%*i ", 9, row + firstIndex);
            buffer += cell;
        }
        const int r = sourceRow(rowMap, row, rows);
        for (int c = 0; c < count; ++c) {
            const CGraphColumn *column = columns[c];
            const bool inside = column && r < column->m_count;
            const std::uint8_t byte = !inside ? 0 : column->m_valid ? column->m_valid[r] : 1;
            if (byte == 1)
                std::snprintf(cell, sizeof cell, "%*.9E ", 17, column->m_values[r]);
            else
                std::snprintf(cell, sizeof cell, "%*s ", 17, byte == 0 ? "MISSING " : "NAN ");
            buffer += cell;
        }
        buffer += "\r\n";
        if (buffer.size() > (1 << 16) && !flush(out, buffer))
            return false;
    }
    return flush(out, buffer);
}

QByteArray DelimitedHeader(const CGraphColumn *const *columns, int count, const QByteArray &separator,
                           bool indexOn, const QString &indexLabel)
{
    QByteArray line;
    if (indexOn) {
        line += narrow(cleanName(indexLabel.isEmpty() ? QStringLiteral("Index") : indexLabel));
        if (count > 0)
            line += separator;
    }
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            line += separator;
        line += narrow(ExportHeaderName(columns[i], i));
    }
    line += "\r\n";
    return line;
}

bool WriteDelimited(QIODevice &out, const CGraphColumn *const *columns, int count, int rows, const int *rowMap,
                    const QByteArray &separator, bool indexOn)
{
    QByteArray buffer;
    buffer.reserve(std::max(1 << 16, 40 * count + 100));
    char cell[64];
    for (int row = 0; row < rows; ++row) {
        if (indexOn) {
            std::snprintf(cell, sizeof cell, "%*i", 9, row + 1);
            buffer += cell;
            buffer += separator;
        }
        const int r = sourceRow(rowMap, row, rows);
        for (int c = 0; c < count; ++c) {
            if (c > 0)
                buffer += separator;
            const CGraphColumn *column = columns[c];
            if (!column || r >= column->m_count) {
                buffer += "MISSING";
                continue;
            }
            const std::uint8_t byte = column->m_valid[r];
            if (byte == 1) {
                std::snprintf(cell, sizeof cell, "%.17g", column->m_values[r]);
                buffer += cell;
            } else {
                buffer += byte == 0 ? "MISSING" : "NAN";
            }
        }
        buffer += "\r\n";
        if (buffer.size() > (1 << 16) && !flush(out, buffer))
            return false;
    }
    return flush(out, buffer);
}

int SaveAsText(const QString &path, const CGraphColumn *const *columns, int count, int rows, int mode,
               const int *rowMap, QString *error)
{
    if (path.isEmpty() || !columns || count < 1 || rows < 1)
        return 0;
    if (mode == ExportMatFile)
        return SaveMatFile(path, columns, count, rows, rowMap, error);
    if (mode == ExportRecordFile) {
        // The record file cuts columns but maps no rows.
        return SaveColumns(4, path, const_cast<CGraphColumn *const *>(columns), count, rows, {}, {}, nullptr,
                           error ? error : nullptr);
    }
    QSaveFile file(path);
    if (!openSave(file, error))
        return 0;
    bool ok = true;
    switch (mode) {
    case ExportFixed:
        ok = file.write(FixedHeader(columns, count, false, QString())) >= 0 &&
             WriteFixed(file, columns, count, rows, rowMap, false, 1);
        break;
    case ExportTab:
    case ExportComma:
    case ExportCommaNoHeader: {
        const QByteArray separator = mode == ExportTab ? "\t" : ",";
        if (mode != ExportCommaNoHeader)
            ok = file.write(DelimitedHeader(columns, count, separator, false, QString())) >= 0;
        ok = ok && WriteDelimited(file, columns, count, rows, rowMap, separator, false);
        break;
    }
    default:
        file.cancelWriting();
        if (error)
            *error = QStringLiteral("unknown export form %1").arg(mode);
        return 0;
    }
    return commit(file, ok, error) ? 1 : 0;
}

int SaveSpectrumFile(const QString &path, int index, const CGraphColumn *const *columns, int count, int rows,
                     double startTime, double endTime, const QString &xLabel, QString *error)
{
    if (path.isEmpty() || !columns || count < 1 || rows < 1)
        return 0;
    QSaveFile file(path);
    if (!openSave(file, error))
        return 0;
    bool ok = true;
    if (index == 0) {
        char line[160];
        std::snprintf(line, sizeof line, ";; FFT Data from %g (s)\t to   %g (s) \r\n", startTime, endTime);
        ok = file.write(line) >= 0 && file.write(FixedHeader(columns, count, true, xLabel)) >= 0 &&
             WriteFixed(file, columns, count, rows, nullptr, true, 1);
    } else {
        const QByteArray separator = index == 1 ? "\t" : ",";
        ok = file.write(DelimitedHeader(columns, count, separator, true, xLabel)) >= 0 &&
             WriteDelimited(file, columns, count, rows, nullptr, separator, true);
    }
    return commit(file, ok, error) ? 1 : 0;
}
