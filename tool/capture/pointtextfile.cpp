#include "tool/capture/pointtextfile.h"

#include "support/fileexception.h"
#include "support/stdiofilea.h"
#include "tool/capture/curverecords.h"
#include "tool/capture/graphinfodata.h"
#include "tool/capture/numbertext.h"
#include "tool/capture/toolfields.h"

#include <QDir>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

QString openFailure(const CStdioFileA &file, const QString &path)
{
    const int err = file.LastError();
    return CFileException(CFileException::CauseFromErrno(err), err, path).GetErrorMessage();
}

bool isSeparator(char c)
{
    return c == ' ' || c == '\t' || c == ',' || c == '\r' || c == '\n';
}

// The tokens of a line, at most `limit` of them.
void splitTokens(std::string_view line, std::vector<std::string_view> &tokens, int limit = INT_MAX)
{
    tokens.clear();
    std::size_t i = 0;
    while (i < line.size() && int(tokens.size()) < limit) {
        while (i < line.size() && isSeparator(line[i]))
            ++i;
        const std::size_t start = i;
        while (i < line.size() && !isSeparator(line[i]))
            ++i;
        if (i > start)
            tokens.push_back(line.substr(start, i - start));
    }
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// A line of numbers holds nothing but these; anything else makes a header.
bool isHeaderLine(std::string_view line)
{
    for (char c : line)
        if (!(isDigit(c) || c == '\t' || c == ' ' || c == '+' || c == ',' || c == '-' || c == '.'
              || c == 'E' || c == 'e'))
            return true;
    return false;
}

// A number of a data line, also in Fortran's "2.5D0" form.
bool isNumberToken(std::string_view token)
{
    for (char c : token)
        if (!(isDigit(c) || c == '+' || c == '-' || c == '.' || c == 'D' || c == 'E' || c == 'd'
              || c == 'e'))
            return false;
    return true;
}

bool isBlankLine(std::string_view line)
{
    for (char c : line)
        if (c != ' ' && c != '\t')
            return false;
    return true;
}

bool isCSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// Lines are read as text: a CR before the line feed belongs to the line end.
void dropCarriageReturn(std::string &line)
{
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
}

// The smallest and largest value of a column group, with their texts.
struct Extremes {
    bool any = false;
    double low = 0, high = 0;
    QString lowKept, highKept;

    void Take(double v, std::string_view text)
    {
        if (!any || v < low) {
            low = v;
            lowKept = QString::fromLatin1(text.data(), qsizetype(text.size()));
        }
        if (!any || v > high) {
            high = v;
            highKept = QString::fromLatin1(text.data(), qsizetype(text.size()));
        }
        any = true;
    }
};

} // namespace

QString OfferedFileName(const QString &lastFileName, const QString &applicationFilePath)
{
    if (!lastFileName.isEmpty())
        return lastFileName;
    const qsizetype separator = std::max(applicationFilePath.lastIndexOf(u'/'),
                                         applicationFilePath.lastIndexOf(QDir::separator()));
    // One character short of the folder: that is the name the dialogs have
    // always been offered.
    if (separator < 1)
        return QString();
    return applicationFilePath.left(separator - 1);
}

QString PointTextFileFilter()
{
    return QStringLiteral("Text Files (*.txt);;All files (*)");
}

QString PointTextFileSuffix()
{
    return QStringLiteral("txt");
}

bool WritePointTextFile(const QString &path, const CGraphInfoData &curve, const QString &xName,
                        const QString &yName, QString &errorReport)
{
    CStdioFileA file;
    // Create the file when it is missing, but never truncate it.
    if (!file.Open(path, "r+b") && file.LastError() == ENOENT)
        file.Open(path, "wb");
    if (!file.IsOpen()) {
        errorReport = openFailure(file, path);
        return false;
    }
    try {
        std::string out;
        const QString xn = xName.trimmed();
        const QString yn = yName.trimmed();
        if (!xn.isEmpty() && !yn.isEmpty()) {
            out += xn.toLocal8Bit().toStdString();
            out += ' ';
            out += yn.toLocal8Bit().toStdString();
            out += "\r\n";
        }
        const int count = curve.GetPointCount();
        out.reserve(out.size() + std::size_t(count) * 40);
        for (int i = 0; i < count; ++i) {
            double x = 0, y = 0;
            curve.GetPoint(i, x, y);
            AppendFormatG(out, x, 12);
            out += ' ';
            AppendFormatG(out, y, 12);
            out += "\r\n";
        }
        file.Write(out.data(), int(out.size()));
        errno = 0;
        if (std::fflush(file.m_file) != 0) {
            const int err = errno ? errno : EIO;
            throw CFileException(CFileException::CauseFromErrno(err), err, path);
        }
        file.Close();
    } catch (const CFileException &e) {
        errorReport = e.GetErrorMessage();
        return false;
    }
    return true;
}

bool WriteCurveFile(const QString &path, const CGraphInfoData &curve, const CToolFields &fields,
                    QString &errorReport)
{
    if (fields.exchangeXY)
        return WritePointTextFile(path, curve, fields.yName, fields.xName, errorReport);
    return WritePointTextFile(path, curve, fields.xName, fields.yName, errorReport);
}

PointFileRead ReadPointTextFile(const QString &path, CPointTable &table, QString &errorReport)
{
    CStdioFileA file;
    if (!file.Open(path, "rb")) {
        errorReport = openFailure(file, path);
        return PointFileRead::OpenFailed;
    }
    try {
        std::string line;
        std::string_view first;
        for (;;) {
            if (!file.ReadString(line))
                return PointFileRead::NoData;
            dropCarriageReturn(line);
            std::size_t start = 0;
            while (start < line.size() && isCSpace(line[start]))
                ++start;
            first = std::string_view(line).substr(start);
            if (first.empty() || first[0] == ';' || first.substr(0, 2) == "//")
                continue;
            break;
        }

        CPointTable t;
        std::vector<std::string_view> tokens;
        splitTokens(first, tokens);
        t.columnCount = int(tokens.size());
        if (isHeaderLine(first)) {
            t.hasHeader = true;
            for (std::string_view name : tokens)
                t.columnNames.append(QString::fromLocal8Bit(name.data(), qsizetype(name.size())));
        } else {
            // The first line is data: read it again with the rest.
            file.SeekToBegin();
        }

        std::vector<double> values;
        Extremes x, y;
        std::string row;
        while (file.ReadString(line)) {
            dropCarriageReturn(line);
            if (isBlankLine(line))
                continue;
            splitTokens(line, tokens, t.columnCount);
            if (int(tokens.size()) < t.columnCount)
                return PointFileRead::BadLine;
            row.clear();
            for (int c = 0; c < t.columnCount; ++c) {
                const std::string_view token = tokens[std::size_t(c)];
                if (!isNumberToken(token))
                    return PointFileRead::BadLine;
                if (c > 0)
                    row += ',';
                row.append(token);
                const double v = PlainToDouble(token);
                values.push_back(v);
                (c == 0 ? x : y).Take(v, token);
            }
            t.rows.append(QString::fromLatin1(row.data(), qsizetype(row.size())));
        }
        if (t.rows.isEmpty())
            return PointFileRead::NoData;

        t.values.SetSize(int(t.rows.size()), t.columnCount);
        std::copy(values.begin(), values.end(), t.values.GetData());
        t.xMinText = x.lowKept;
        t.xMaxText = x.highKept;
        t.yMinText = y.lowKept;
        t.yMaxText = y.highKept;
        table = std::move(t);
        return PointFileRead::Read;
    } catch (const CFileException &e) {
        errorReport = e.GetErrorMessage();
        return PointFileRead::OpenFailed;
    }
}

PointTableApplied ApplyPointTable(const CPointTable &table, CToolFields &fields,
                                  CCurveRecords &records, QString &xName, QString &yName)
{
    fields.exchangeXY = false;
    if (table.hasHeader) {
        if (table.columnNames.size() < 2)
            return PointTableApplied::HeaderTooShort;
        // The file's names are taken first, and then give way to the names
        // already in the fields.
        xName = table.columnNames.at(0);
        yName = table.columnNames.at(1);
        xName = fields.xName;
        yName = fields.yName;
    }
    fields.xAtFirst = table.xMinText;
    fields.xAtSecond = table.xMaxText;
    fields.yAtFirst = table.yMinText;
    fields.yAtSecond = table.yMaxText;

    QString points;
    for (const QString &row : table.rows) {
        points += u'(';
        points += row;
        points += u')';
    }
    fields.points = points;
    records.TakeOverLoadedFile();
    return PointTableApplied::Applied;
}
