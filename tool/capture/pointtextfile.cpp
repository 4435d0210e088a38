#include "tool/capture/pointtextfile.h"

#include "support/fileexception.h"
#include "support/stdiofilea.h"
#include "tool/capture/curverecords.h"
#include "tool/capture/graphinfodata.h"
#include "tool/capture/numbertext.h"
#include "tool/capture/toolfields.h"
#include "tool/capture/filereplace.h"

#include <QDir>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
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

// A number of a data line, also in Fortran's "2.5D0" form.
bool isNumberToken(std::string_view token)
{
    for (char c : token)
        if (!(isDigit(c) || c == '+' || c == '-' || c == '.' || c == 'D' || c == 'E' || c == 'd'
              || c == 'e'))
            return false;
    return true;
}

bool isCSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// A token that converts to a number in full, the D exponent form included.
bool readsAsNumber(std::string_view token)
{
    if (token.empty() || !isNumberToken(token))
        return false;
    std::string s(token);
    std::replace_if(s.begin(), s.end(), [](char ch) { return ch == 'D' || ch == 'd'; }, 'E');
    char *end = nullptr;
    std::strtod(s.c_str(), &end);
    return end == s.c_str() + s.size();
}

// The bytes of a file as 8-bit text: a UTF-16 file (with its byte order
// mark, or without one when its first character is ASCII) is converted to the
// local 8-bit encoding; a UTF-8 byte order mark is dropped.
std::string decodedText(std::string bytes)
{
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const std::size_t n = bytes.size();
    if (n >= 3 && at(0) == 0xEF && at(1) == 0xBB && at(2) == 0xBF)
        return bytes.substr(3);
    if (n < 2)
        return bytes;
    const bool littleBom = at(0) == 0xFF && at(1) == 0xFE;
    const bool bigBom = at(0) == 0xFE && at(1) == 0xFF;
    const bool little = littleBom || (at(0) != 0 && at(0) < 0x80 && at(1) == 0);
    const bool big = bigBom || (at(0) == 0 && at(1) != 0 && at(1) < 0x80);
    if (!little && !big)
        return bytes;
    const std::size_t skip = (littleBom || bigBom) ? 2 : 0;
    std::u16string units;
    units.reserve((n - skip) / 2 + 1);
    for (std::size_t i = skip; i + 1 < n; i += 2)
        units.push_back(little ? char16_t(at(i) | (at(i + 1) << 8)) : char16_t((at(i) << 8) | at(i + 1)));
    if ((n - skip) % 2)
        units.push_back(u'\uFFFD'); // an odd last byte is no character
    const QByteArray local = QString::fromUtf16(units.data(), qsizetype(units.size())).toLocal8Bit();
    return std::string(local.constData(), std::size_t(local.size()));
}

// The lines of a text, numbered from 1; a line ends at LF, CR LF, or a CR
// alone.
class CLineSplitter
{
public:
    explicit CLineSplitter(std::string_view text) : m_text(text) {}

    bool Next(std::string_view &line, int &number)
    {
        if (m_pos >= m_text.size())
            return false;
        std::size_t end = m_pos;
        while (end < m_text.size() && m_text[end] != '\n' && m_text[end] != '\r')
            ++end;
        line = m_text.substr(m_pos, end - m_pos);
        if (end < m_text.size() && m_text[end] == '\r' && end + 1 < m_text.size() && m_text[end + 1] == '\n')
            ++end;
        m_pos = end + 1;
        number = ++m_number;
        return true;
    }

private:
    std::string_view m_text;
    std::size_t m_pos = 0;
    int m_number = 0;
};

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
    // The file holds exactly this curve, or stays as it was.
    return ReplaceFileContents(path, out, errorReport);
}

bool WriteCurveFile(const QString &path, const CGraphInfoData &curve, const CToolFields &fields,
                    QString &errorReport)
{
    if (fields.exchangeXY)
        return WritePointTextFile(path, curve, fields.yName, fields.xName, errorReport);
    return WritePointTextFile(path, curve, fields.xName, fields.yName, errorReport);
}

PointFileRead ReadPointTextFile(const QString &path, CPointTable &table, QString &errorReport,
                                int *problemLine)
{
    int unused = 0;
    int &lineNumber = problemLine ? *problemLine : unused;
    lineNumber = 0;
    CStdioFileA file;
    if (!file.Open(path, "rb")) {
        errorReport = openFailure(file, path);
        return PointFileRead::OpenFailed;
    }
    std::string bytes;
    try {
        char block[65536];
        for (;;) {
            const std::size_t got = std::fread(block, 1, sizeof block, file.m_file);
            bytes.append(block, got);
            if (got < sizeof block) {
                if (std::ferror(file.m_file)) {
                    const int err = errno ? errno : EIO;
                    throw CFileException(CFileException::CauseFromErrno(err), err, path);
                }
                break;
            }
        }
        file.Close();
    } catch (const CFileException &e) {
        errorReport = e.GetErrorMessage();
        return PointFileRead::OpenFailed;
    }
    const std::string text = decodedText(std::move(bytes));

    CPointTable t;
    bool haveColumns = false;
    std::vector<std::string_view> tokens;
    std::vector<double> values;
    Extremes x, y;
    std::string row, number;
    CLineSplitter lines(text);
    std::string_view line;
    while (lines.Next(line, lineNumber)) {
        // Text after a NUL byte is not dropped: the line is no pair of numbers.
        if (line.find('\0') != std::string_view::npos)
            return PointFileRead::BadLine;
        std::size_t start = 0;
        while (start < line.size() && isCSpace(line[start]))
            ++start;
        line.remove_prefix(start);
        // Comments and blank lines (a line of nothing but separators too)
        // may stand anywhere.
        if (line.empty() || line[0] == ';' || line.substr(0, 2) == "//")
            continue;
        splitTokens(line, tokens);
        if (tokens.empty())
            continue;
        if (!haveColumns) {
            haveColumns = true;
            t.columnCount = int(tokens.size());
            // The first line is a header unless it reads as numbers, so a
            // data line is never taken for one.
            if (!std::all_of(tokens.begin(), tokens.end(), readsAsNumber)) {
                t.hasHeader = true;
                for (std::string_view name : tokens)
                    t.columnNames.append(QString::fromLocal8Bit(name.data(), qsizetype(name.size())));
                continue;
            }
            // Without a header, a pair is the least a line must give.
            if (t.columnCount < 2)
                return PointFileRead::BadLine;
        }
        if (int(tokens.size()) < t.columnCount)
            return PointFileRead::BadLine;
        row.clear();
        for (int c = 0; c < t.columnCount; ++c) {
            const std::string_view token = tokens[std::size_t(c)];
            if (!isNumberToken(token))
                return PointFileRead::BadLine;
            // "2.5D-3" is Fortran's 2.5E-3: the row and the extremes take
            // the E form, which the fields read as the file meant it.
            number.assign(token);
            std::replace_if(number.begin(), number.end(), [](char ch) { return ch == 'D' || ch == 'd'; }, 'E');
            if (c > 0)
                row += ',';
            row += number;
            const double v = PlainToDouble(number);
            values.push_back(v);
            (c == 0 ? x : y).Take(v, number);
        }
        t.rows.append(QString::fromLatin1(row.data(), qsizetype(row.size())));
    }
    lineNumber = 0;
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
}

PointTableApplied ApplyPointTable(const CPointTable &table, CToolFields &fields,
                                  CCurveRecords &records, QString &xName, QString &yName)
{
    fields.exchangeXY = false;
    if (table.hasHeader) {
        if (table.columnNames.size() < 2)
            return PointTableApplied::HeaderTooShort;
        // The names already in the fields win; an empty field takes the
        // file's name, so that saving a loaded file writes its header again.
        xName = fields.xName.trimmed().isEmpty() ? table.columnNames.at(0) : fields.xName;
        yName = fields.yName.trimmed().isEmpty() ? table.columnNames.at(1) : fields.yName;
        fields.xName = xName;
        fields.yName = yName;
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
