// Tables of numbers read from text files, and interpolation in them.

#include "functions/rpntablefunctions.h"

#include "formula/rpnexception.h"
#include "formula/rpnkeywords.h"
#include "formula/rpnnodes.h"
#include "formula/rpntree.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace {

constexpr int kMsgReadMissing = 43400;
constexpr int kMsgNoFile = 43401;
constexpr int kMsgTypeFailed = 43402;
constexpr int kMsgReading = 43403;
constexpr int kMsgUnknownType = 43404;
constexpr int kMsgBadLine = 43405;
constexpr int kMsgGetMissing = 43406;
constexpr int kMsgNotTable = 43407;
constexpr int kMsgNeed3 = 43408;
constexpr int kMsgNeed4 = 43409;
constexpr int kMsgLookupEmpty = 43410;
constexpr int kMsgLookupParams1 = 43411; // ... 43414 for four coordinates
constexpr int kMsgTooManyCells = 43415;

const char *const kValidTypes = "XY , 2DInterpolation , 2DInteger , 3DInterpolation";

// --- the text reader ---------------------------------------------------------------------

bool isSeparator(char c)
{
    return c == ' ' || c == '\t' || c == ',';
}
bool isBreak(char c)
{
    return c == '\r' || c == '\n';
}
bool endsNumber(char c)
{
    return c == '\0' || c == '\t' || c == '\n' || c == '\r' || c == ' ' || c == ',';
}

struct Cursor
{
    const char *p;
    const char *end;
    int line = 1; // counts line feeds

    bool atEnd() const { return p >= end; }
    void skipSeparators()
    {
        while (p < end && isSeparator(*p))
            ++p;
    }
    // Passes a run of CR and LF with separators among them; false when
    // there is none here.
    bool passBreak()
    {
        skipSeparators();
        if (p >= end || !isBreak(*p))
            return false;
        while (p < end && (isBreak(*p) || isSeparator(*p))) {
            if (*p == '\n')
                ++line;
            ++p;
        }
        return true;
    }
    // Goes past the rest of the line and its break.
    void nextLine()
    {
        while (p < end && !isBreak(*p))
            ++p;
        passBreak();
    }
    // Reads one number; values allow the exponent letters, header counts only
    // signs, digits and the point.  A word that is no number is passed all
    // the same.
    bool readNumber(double &out, bool header)
    {
        skipSeparators();
        const char *start = p;
        if (!header && readPlainNumber(out))
            return true;
        bool bad = false, fortran = false;
        for (; p < end && !endsNumber(*p); ++p) {
            const char c = *p;
            if ((c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.')
                continue;
            if (!header && (c == 'e' || c == 'E'))
                continue;
            if (!header && (c == 'd' || c == 'D'))
                fortran = true;
            else
                bad = true;
        }
        const std::size_t length = std::size_t(p - start);
        if (length == 0 || bad)
            return false;
        // Most numbers are converted where they stand; an exponent written
        // with d, or a number longer than the 99 characters that count, is
        // copied first.
        char buffer[100];
        const char *first = start;
        const char *last = p;
        if (fortran || length > 99) {
            const std::size_t kept = std::min<std::size_t>(length, 99);
            for (std::size_t i = 0; i < kept; ++i)
                buffer[i] = (start[i] == 'd' || start[i] == 'D') ? 'e' : start[i];
            first = buffer;
            last = buffer + kept;
        }
        if (first < last && *first == '+')
            ++first;
        const auto [ptr, ec] = std::from_chars(first, last, out);
        if (ec == std::errc::result_out_of_range) {
            out = std::strtod(std::string(first, last).c_str(), nullptr);
            return true;
        }
        return ec == std::errc() && ptr != first;
    }
    // The common case in one step: a number that starts with a digit or a
    // point (after a sign), is read whole by from_chars, ends where a number
    // ends and is not too long.  Anything else is left to readNumber's checks.
    bool readPlainNumber(double &out)
    {
        const char *q = p;
        if (q < end && *q == '+')
            ++q; // from_chars takes no plus sign
        const char *first = q < end && *q == '-' ? q + 1 : q;
        if (first >= end || !((*first >= '0' && *first <= '9') || *first == '.'))
            return false;
        const auto [ptr, ec] = std::from_chars(q, end, out);
        if (ec != std::errc() || (ptr < end && !endsNumber(*ptr)) || ptr - p > 99)
            return false;
        p = ptr;
        return true;
    }
    bool readCount(int &out)
    {
        double v = 0;
        if (!readNumber(v, true) || !(v >= 0) || v > 2147483647.0)
            return false;
        out = int(v);
        return true;
    }
};

enum class RowEnd { Full, Short, TextEnd };

// Reads `n` values of one line into `dst` and passes the line's break.
// Values beyond `n` on the line are passed over.
RowEnd readRow(Cursor &c, double *dst, int n, int &badLine)
{
    for (int j = 0; j < n; ++j) {
        c.skipSeparators();
        if (c.atEnd())
            return RowEnd::TextEnd;
        const int line = c.line;
        if (isBreak(*c.p) || !c.readNumber(dst[j], false)) {
            if (badLine == 0)
                badLine = line;
            c.nextLine();
            return RowEnd::Short;
        }
    }
    c.nextLine();
    return RowEnd::Full;
}

bool parseXY(Cursor &c, CRpnTableRecord &t)
{
    std::vector<double> &xs = t.axis1;
    std::vector<double> &ys = t.axis2;
    // A pair a line: the line feeds tell how much room the columns need
    // (texts with CR alone as the line end grow as they go).
    const std::size_t lines = std::size_t(std::count(c.p, c.end, '\n')) + 1;
    xs.reserve(lines);
    ys.reserve(lines);
    while (!c.atEnd()) {
        double x = 0, y = 0;
        if (!c.readNumber(x, false) || !c.readNumber(y, false)) {
            // A line that is no pair (a comment at the end) costs the last pair.
            if (!xs.empty()) {
                xs.pop_back();
                ys.pop_back();
            }
            break;
        }
        xs.push_back(x);
        ys.push_back(y);
        if (!c.passBreak())
            break;
    }
    if (xs.capacity() > xs.size() + xs.size() / 8 + 16) {
        xs.shrink_to_fit();
        ys.shrink_to_fit();
    }
    t.count1 = int(xs.size());
    return true;
}

QString lineError(int line)
{
    return RpnMessage(kMsgBadLine, {line});
}

bool checkCells(double cells, QString &error)
{
    if (cells <= double(RpnMaxTableCells))
        return true;
    error = RpnMessage(kMsgTooManyCells, {QString::number(cells, 'g', 16), std::int64_t(RpnMaxTableCells)});
    return false;
}

bool parseGrid(Cursor &c, int type, CRpnTableRecord &t, QString &error)
{
    const bool cube = type == CRpnTableRecord::Interpolation3D;
    const bool integer = type == CRpnTableRecord::Integer2D;
    int n1 = 0, n2 = 0, n3 = 1;
    if (!c.readCount(n1)) {
        error = lineError(1);
        return false;
    }
    if (!c.readCount(n2)) {
        if (integer) {
            error = lineError(1);
            return false;
        }
        return true; // an empty table
    }
    if (cube && !c.readCount(n3))
        return true;
    if (!checkCells(std::max(double(n1) * double(n2) * double(n3), double(n1) + double(n2) + double(n3)), error))
        return false;
    // Each slice of a cube is a record of its own, worth about four cells of
    // memory however few cells it holds: a header of a few rows and millions
    // of slices asks for as much as millions of cells.
    if (cube && !checkCells(double(n1) * double(n2) * double(n3) + double(n1) + double(n2) + 5.0 * double(n3), error))
        return false;
    c.nextLine();
    t.count1 = n1;
    t.count2 = n2;
    t.count3 = cube ? n3 : 0;
    int badLine = 0;
    bool ended = false;
    auto row = [&](std::vector<double> &into, int n) {
        into.assign(std::size_t(n), 0.0);
        if (!ended && readRow(c, into.data(), n, badLine) == RowEnd::TextEnd)
            ended = true;
    };
    if (!integer) {
        row(t.axis1, n1);
        row(t.axis2, n2);
        if (cube)
            row(t.axis3, n3);
    }
    t.slices.assign(std::size_t(n3), {});
    for (std::vector<double> &slice : t.slices) {
        slice.assign(std::size_t(n1) * std::size_t(n2), 0.0);
        for (int i = 0; i < n1 && !ended; ++i) {
            if (readRow(c, slice.data() + std::size_t(i) * std::size_t(n2), n2, badLine) == RowEnd::TextEnd)
                ended = true;
        }
    }
    if (badLine != 0) {
        error = lineError(badLine);
        return false;
    }
    return true;
}

double cell(const std::vector<double> &m, int cols, int i, int j)
{
    return m[std::size_t(i) * std::size_t(cols) + std::size_t(j)];
}

// Along x in one matrix at column iy.
double alongX(const std::vector<double> &m, int cols, int ix, double fx, int iy)
{
    const double low = cell(m, cols, ix, iy);
    return fx == 0 ? low : (cell(m, cols, ix + 1, iy) - low) * fx + low;
}

double inSlice(const std::vector<double> &m, int cols, int ix, double fx, int iy, double fy)
{
    const double a = alongX(m, cols, ix, fx, iy);
    if (fy == 0)
        return a;
    const double b = alongX(m, cols, ix, fx, iy + 1);
    return (b - a) * fy + a;
}

} // namespace

// --- the record ----------------------------------------------------------------------------

int TableTypeFromText(const QString &text)
{
    QString word = text.trimmed();
    word.remove(u' ');
    word.remove(u'\t');
    word = word.toUpper();
    if (word.isEmpty() || word == u"XY")
        return CRpnTableRecord::XY;
    if (word == u"2DINTEGER" || word == u"2DI")
        return CRpnTableRecord::Integer2D;
    if (word == u"2DINTERPOLATION" || word == u"2DIP")
        return CRpnTableRecord::Interpolation2D;
    if (word == u"3DINTERPOLATION" || word == u"3DIP")
        return CRpnTableRecord::Interpolation3D;
    return 0;
}

bool ParseTableText(std::string_view text, int type, CRpnTableRecord &table, QString &error)
{
    table = CRpnTableRecord();
    table.type = type;
    Cursor c{text.data(), text.data() + text.size()};
    if (type == CRpnTableRecord::XY)
        return parseXY(c, table);
    return parseGrid(c, type, table, error);
}

void LocateOnAxis(const double *a, int n, double v, int &index, double &fraction)
{
    fraction = 0;
    if (n < 1) {
        index = -1;
        return;
    }
    if (n == 1) {
        index = 0;
        return;
    }
    // The first point from 1 on at or above v, found by halving.
    int low = 1, high = n; // the answer lies in [low, high]; n means none
    while (low < high) {
        const int mid = low + (high - low) / 2;
        if (a[mid] >= v)
            high = mid;
        else
            low = mid + 1;
    }
    const int k = low == n ? n - 1 : low;
    if (v == a[k]) {
        index = k;
    } else if (k == 1 && a[0] > v) {
        index = 0;
    } else if (k + 1 == n && v > a[k]) {
        index = k;
    } else {
        index = k - 1;
        if (a[k] != a[k - 1])
            fraction = (v - a[k - 1]) / (a[k] - a[k - 1]);
    }
}

double CRpnTableRecord::ValueAt(double x, double y, double z) const
{
    switch (type) {
    case XY: {
        int ix;
        double fx;
        LocateOnAxis(axis1.data(), int(axis1.size()), x, ix, fx);
        if (ix < 0 || axis2.size() != axis1.size())
            return 0;
        const double low = axis2[std::size_t(ix)];
        return fx == 0 ? low : (axis2[std::size_t(ix) + 1] - low) * fx + low;
    }
    case Integer2D: {
        const double i = std::floor(x + 0.49), j = std::floor(y + 0.49);
        if (slices.empty() || !(i >= 1 && i <= count1 && j >= 1 && j <= count2))
            return 0;
        return cell(slices[0], count2, int(i) - 1, int(j) - 1);
    }
    case Interpolation2D:
    case Interpolation3D: {
        int ix, iy, iz = 0;
        double fx, fy, fz = 0;
        LocateOnAxis(axis1.data(), int(axis1.size()), x, ix, fx);
        LocateOnAxis(axis2.data(), int(axis2.size()), y, iy, fy);
        if (type == Interpolation3D)
            LocateOnAxis(axis3.data(), int(axis3.size()), z, iz, fz);
        if (ix < 0 || iy < 0 || iz < 0 || std::size_t(iz) >= slices.size())
            return 0;
        const double a = inSlice(slices[std::size_t(iz)], count2, ix, fx, iy, fy);
        if (fz == 0)
            return a;
        const double b = inSlice(slices[std::size_t(iz) + 1], count2, ix, fx, iy, fy);
        return a + (b - a) * fz;
    }
    default:
        return 0;
    }
}

// --- ReadTable -----------------------------------------------------------------------------

int CNodeReadTable::DoFunction(CRpnData &result, QString &errorText)
{
    const QString name = GetName();
    if (GetOperandCount() < 2) {
        errorText = RpnMessage(kMsgReadMissing, {name, name, kValidTypes});
        return 0;
    }
    CRpnData pathValue;
    if (!EvaluateOperand(0, pathValue))
        return 0;
    const QString path = pathValue.GetText().trimmed();
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists() || info.isDir()) {
        errorText = RpnMessage(kMsgNoFile, {name, path});
        return 0;
    }
    QString typeText;
    CRpnNode *typeNode = m_children[1];
    if (CNodeVariable *variable = typeNode ? typeNode->AsVariable() : nullptr) {
        CRpnData v;
        const bool known = variable->GetValue(v);
        if (!known && m_tree && m_tree->m_getVariable)
            typeText = variable->m_name; // a bare word names the type
        else
            typeText = v.GetText();
    } else {
        CRpnData v;
        if (!EvaluateOperand(1, v)) {
            errorText = RpnMessage(kMsgTypeFailed, {name, kValidTypes});
            return 0;
        }
        typeText = v.GetText();
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        errorText = RpnMessage(kMsgReading, {name, path, file.errorString()});
        return 0;
    }
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        errorText = RpnMessage(kMsgReading, {name, path, file.errorString()});
        return 0;
    }
    const int type = TableTypeFromText(typeText);
    if (type == 0) {
        errorText = RpnMessage(kMsgUnknownType, {name, typeText.trimmed(), kValidTypes});
        return 0;
    }
    // Texts in UTF-16 become UTF-8 first; the numbers are plain ASCII in both.
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF")) {
        auto encoding = bytes.startsWith("\xFF\xFE") ? QStringDecoder::Utf16LE : QStringDecoder::Utf16BE;
        QStringDecoder decode(encoding);
        bytes = QString(decode(bytes.mid(2))).toUtf8();
    } else if (bytes.startsWith("\xEF\xBB\xBF")) {
        bytes.remove(0, 3);
    }
    const QByteArray text = std::move(bytes).trimmed();
    auto table = std::make_unique<CRpnTableRecord>();
    QString parseError;
    if (!ParseTableText(std::string_view(text.constData(), std::size_t(text.size())), type, *table, parseError)) {
        errorText = RpnMessage(kMsgReading, {name, path, parseError});
        return 0;
    }
    result.SetTable(table.release());
    return 1;
}

// --- GetTableValue -------------------------------------------------------------------------

int CNodeGetTableValue::DoFunction(CRpnData &result, QString &errorText)
{
    const QString name = GetName();
    const int count = GetOperandCount();
    if (count < 2) {
        errorText = RpnMessage(kMsgGetMissing, {name, name});
        return 0;
    }
    CRpnData tableValue;
    if (!EvaluateOperand(0, tableValue))
        return 0;
    const CRpnTableRecord *table = tableValue.GetKind() == RPN_TABLE
        ? dynamic_cast<const CRpnTableRecord *>(tableValue.GetObject())
        : nullptr;
    if (!table) {
        errorText = RpnMessage(kMsgNotTable, {name, name});
        return 0;
    }
    int needed = 2;
    if (table->type == CRpnTableRecord::Interpolation3D) {
        needed = 4;
        if (count < needed) {
            errorText = RpnMessage(kMsgNeed4, {name, name});
            return 0;
        }
    } else if (table->type != CRpnTableRecord::XY) {
        needed = 3;
        if (count < needed) {
            errorText = RpnMessage(kMsgNeed3, {name, name});
            return 0;
        }
    }
    double coordinates[3] = {0, 0, 0};
    for (int i = 1; i < needed; ++i) {
        CRpnData v;
        if (!EvaluateOperand(i, v))
            return 0;
        coordinates[i - 1] = v.GetDouble();
    }
    result.SetDouble(table->ValueAt(coordinates[0], coordinates[1], coordinates[2]));
    return 1;
}

// --- Lookup_table --------------------------------------------------------------------------

CRpnNode *CLookup_table::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CLookup_table *>(CNodeScriptFunction::Clone(tree, position, row, col));
    node->m_table = m_table;
    return node;
}

namespace {

struct AxisPlace
{
    int low = 0, high = 0;
    double fraction = 0;
};

bool placeOnAxis(const std::vector<double> &a, double v, int options, AxisPlace &place)
{
    const int n = int(a.size());
    if (n == 0)
        return false;
    place = AxisPlace();
    if (v <= a[0]) {
        if ((options & 1) && n >= 2) {
            place.high = 1;
            if (a[1] != a[0])
                place.fraction = (v - a[0]) / (a[1] - a[0]);
        }
        return true;
    }
    if (v >= a[std::size_t(n - 1)]) {
        place.low = place.high = n - 1;
        if ((options & 2) && n >= 2) {
            place.low = n - 2;
            const double span = a[std::size_t(n - 1)] - a[std::size_t(n - 2)];
            if (span != 0)
                place.fraction = (v - a[std::size_t(n - 2)]) / span;
        }
        return true;
    }
    int low = 0, high = n - 1;
    while (high - low > 1) {
        const int mid = low + (high - low) / 2;
        const double m = a[std::size_t(mid)];
        if (m == v) {
            place.low = place.high = mid;
            return true;
        }
        if (m < v)
            low = mid;
        else
            high = mid;
    }
    place.low = low;
    place.high = high;
    const double span = a[std::size_t(high)] - a[std::size_t(low)];
    if (span != 0)
        place.fraction = (v - a[std::size_t(low)]) / span;
    return true;
}

} // namespace

bool CLookup_table::Interpolate(const CRpnLookupTable &table, const double *coordinates, int options,
                                std::vector<double> &outputs)
{
    const int dims = table.GetDimension();
    if (dims < 1 || dims > 4)
        return false;
    AxisPlace places[4];
    for (int d = 0; d < dims; ++d) {
        if (!placeOnAxis(table.GetAxis(d), coordinates[d], options, places[d]))
            return false;
    }
    const int corners = 1 << dims;
    outputs.assign(std::size_t(std::max(0, table.GetOutputCount())), 0.0);
    double values[16];
    for (std::size_t column = 0; column < outputs.size(); ++column) {
        for (int c = 0; c < corners; ++c) {
            int indices[4];
            for (int d = 0; d < dims; ++d)
                indices[d] = (c >> d) & 1 ? places[d].high : places[d].low;
            values[c] = table.GetCell(int(column), indices);
        }
        // Blend along the first axis, then the second, and so on.
        int width = corners;
        for (int d = 0; d < dims; ++d) {
            width /= 2;
            for (int c = 0; c < width; ++c) {
                const double low = values[2 * c], high = values[2 * c + 1];
                values[c] = (high - low) * places[d].fraction + low;
            }
        }
        outputs[column] = values[0];
    }
    return true;
}

int CLookup_table::DoFunction(CRpnData &result, QString &errorText)
{
    const int count = GetOperandCount();
    const QString threeCoordinates = RpnMessage(kMsgLookupParams1 + 2);
    if (count < 2) {
        errorText = threeCoordinates;
        return 0;
    }
    CRpnData first;
    if (!EvaluateOperand(0, first))
        return 0;
    // `first` keeps a table value alive until the call is over.
    const CRpnLookupTable *table = nullptr;
    if (first.IsString())
        table = m_table.get();
    else if (first.GetKind() == RPN_LOOKUP_TABLE)
        table = dynamic_cast<const CRpnLookupTable *>(first.GetObject());
    if (!table) {
        errorText = threeCoordinates;
        return 0;
    }
    double coordinates[4] = {0, 0, 0, 0};
    const int given = std::min(count - 1, 4);
    for (int i = 0; i < given; ++i) {
        CRpnData v;
        if (!EvaluateOperand(i + 1, v))
            return 0;
        coordinates[i] = v.GetDouble();
    }
    if (table->GetOutputCount() <= 0) {
        errorText = RpnMessage(kMsgLookupEmpty);
        return 0;
    }
    int options = 0;
    if (m_tree) {
        if (CRpnData *word = m_tree->FindVariable(QStringLiteral("_Lookup_Options_")))
            options = word->GetInt();
    }
    const int dims = table->GetDimension();
    if (given != dims) {
        errorText = RpnMessage(kMsgLookupParams1 + std::clamp(dims, 1, 4) - 1);
        return 0;
    }
    std::vector<double> outputs;
    if (!Interpolate(*table, coordinates, options, outputs)) {
        errorText = RpnMessage(kMsgLookupEmpty);
        return 0;
    }
    result.SetDouble(outputs[0]);
    return 1;
}

// --- the grid table ------------------------------------------------------------------------

bool CRpnLookupGrid::Assign(std::vector<std::vector<double>> axes, std::vector<std::vector<double>> columns)
{
    if (axes.empty() || axes.size() > 4)
        return false;
    std::size_t points = 1;
    for (const std::vector<double> &axis : axes) {
        if (axis.empty() || axis.size() > std::size_t(RpnMaxTableCells))
            return false;
        points *= axis.size();
        if (points > std::size_t(RpnMaxTableCells))
            return false;
    }
    for (const std::vector<double> &column : columns) {
        if (column.size() != points)
            return false;
    }
    m_axes = std::move(axes);
    m_columns = std::move(columns);
    return true;
}

double CRpnLookupGrid::GetCell(int column, const int *indices) const
{
    std::size_t at = 0, stride = 1;
    for (std::size_t d = 0; d < m_axes.size(); ++d) {
        at += std::size_t(indices[d]) * stride;
        stride *= m_axes[d].size();
    }
    return m_columns[std::size_t(column)][at];
}

// --- reserved names ------------------------------------------------------------------------

int CGraph2D::DoFunction(CRpnData &result, QString &)
{
    result.SetNull();
    return 0;
}
int CGraph3D::DoFunction(CRpnData &result, QString &)
{
    result.SetNull();
    return 0;
}
int CGraph4D::DoFunction(CRpnData &result, QString &)
{
    result.SetNull();
    return 0;
}

void ProvideTableFunctions(CRpnPrototypeArray &prototypes)
{
    CRpnNode *const nodes[] = {new CNodeReadTable, new CNodeGetTableValue, new CLookup_table,
                               new CGraph2D,       new CGraph3D,           new CGraph4D};
    for (CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), node);
}
