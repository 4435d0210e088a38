#include "graphdata/file/graphfileload.h"

#include "graphdata/curvehold.h"
#include "graphdata/file/filer2.h"
#include "graphdata/file/graphfileformat.h"
#include "support/languagestring.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>

using namespace GraphFile;

namespace {

// Rows a file may bring beyond what its bytes pay for: held columns in the
// even-step form hold any number of rows in three numbers.
constexpr std::int64_t kSpareRows = std::int64_t(1) << 20;
// Cells of a whole data set beyond the file's size: columns without data
// still get the rows of the data set.
constexpr std::int64_t kSpareCells = std::int64_t(1) << 24;
// Rows read at once while the extents are taken on the way.
constexpr int kChunkRows = 1 << 16;

struct DirectoryColumn
{
    QString name;
    ColumnFields fields;
    std::uint64_t id = 0;
};

struct HeldInfo
{
    std::uint64_t setId = 0, xId = 0, yId = 0;
    std::uint32_t position = 0, index = 0;
    QString label, label2, setName, setLabel;
};

QString damaged(const QString &path)
{
    return LanguageString(CFiler::TextDamaged).arg(path);
}

// The version and form tests every reader makes before it trusts a record.
bool checkVersion(const CFiler2 &filer, QString &message)
{
    if ((filer.m_flags & FileFlags) == 0) {
        message = LanguageString(TextUnknownForm).arg(filer.FilePath(), filer.m_text);
        return false;
    }
    const bool newer = filer.m_major > VersionMajor ||
                       (filer.m_major == VersionMajor && filer.m_minor > VersionMinor) ||
                       (filer.m_major == VersionMajor && filer.m_minor == VersionMinor &&
                        filer.m_revision > VersionRevision);
    if (newer) {
        message = LanguageString(TextNewerFile)
                      .arg(filer.FilePath())
                      .arg(filer.m_major)
                      .arg(filer.m_minor)
                      .arg(filer.m_revision);
        return false;
    }
    return true;
}

bool readRecordBuffer(CFiler2 &filer, int index, CBufferIO &io)
{
    std::int64_t size = 0;
    const char *data = filer.ReadRecord(index, size);
    if (!data && filer.RecordSize(index) > 0)
        return false;
    io.LoadForReading(QByteArray(data, qsizetype(size)));
    return true;
}

QString wideName(const char *bytes, std::uint32_t length)
{
    QString name(qsizetype(length / 2), Qt::Uninitialized);
    if (!name.isEmpty())
        std::memcpy(name.data(), bytes, std::size_t(name.size()) * 2);
    const qsizetype end = name.indexOf(QChar(0));
    return end < 0 ? name : name.left(end);
}

bool readDirectory(CFiler2 &filer, int index, bool wide, std::vector<DirectoryColumn> &out)
{
    CBufferIO io = MakeBuffer();
    if (!readRecordBuffer(filer, index, io) || io.GetLength() < DirectoryLead + 24)
        return false;
    TransferZeros(io, DirectoryLead);
    std::uint32_t word = 0, count = 0;
    io.Transfer(word);
    io.Transfer(count);
    TransferZeros(io, 16);
    // Each column takes at least eight bytes of names.
    if (count > std::uint32_t(io.GetRemaining() / 8))
        return false;
    out.assign(count, DirectoryColumn{});
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint32_t column = 0, length = 0;
        io.Transfer(column);
        io.Transfer(length);
        if (length > std::uint32_t(io.GetRemaining()))
            return false;
        const char *bytes = reinterpret_cast<const char *>(io.GetData() + io.GetPosition());
        QString name;
        if (wide) {
            name = wideName(bytes, length);
        } else {
            const qsizetype end = qsizetype(strnlen(bytes, length));
            name = QString::fromLocal8Bit(bytes, end);
        }
        TransferZeros(io, int(length));
        if (column < count)
            out[column].name = name;
    }
    std::uint32_t zero = 0, blocks = 0;
    io.Transfer(zero);
    io.Transfer(blocks);
    for (std::uint32_t i = 0; i < blocks && !io.AtEnd(); ++i) {
        CBufferIO block = MakeBuffer();
        io.TransferBlock(block);
        std::uint32_t column = 0;
        block.Transfer(column);
        ColumnFields fields;
        fields.TransferWithoutCount(block);
        std::uint64_t id = 0;
        block.Transfer(id);
        if (column < count) {
            out[column].fields = fields;
            out[column].id = id;
        }
    }
    return true;
}

void readHeldColumnPart(CBufferIO &io)
{
    TransferZeros(io, 16 + 16);
    QString name;
    io.TransferString(name);
    ColumnFields fields;
    fields.Transfer(io);
}

std::vector<HeldInfo> readHeldList(CFiler2 &filer, int index)
{
    std::vector<HeldInfo> list;
    CBufferIO io = MakeBuffer();
    if (!readRecordBuffer(filer, index, io))
        return list;
    const int count = std::max(filer.Entry(index)->rows, 0);
    for (int i = 0; i < count && !io.AtEnd(); ++i) {
        CBufferIO block = MakeBuffer();
        io.TransferBlock(block);
        std::uint32_t version[4] = {};
        for (std::uint32_t &v : version)
            block.Transfer(v);
        // The strings of the block follow its own stream version.
        block.m_versionA = std::uint16_t(version[0]);
        block.m_versionB = std::uint16_t(version[1]);
        block.m_versionC = std::uint16_t(version[2]);
        block.m_versionD = std::uint16_t(version[3]);
        HeldInfo h;
        block.Transfer(h.setId);
        block.Transfer(h.xId);
        block.Transfer(h.yId);
        block.Transfer(h.position);
        block.Transfer(h.index);
        block.TransferString(h.label);
        block.TransferString(h.label2);
        TransferZeros(block, 32);
        block.TransferString(h.setName);
        block.TransferString(h.setLabel);
        readHeldColumnPart(block);
        readHeldColumnPart(block);
        list.push_back(h);
    }
    return list;
}

// Valid bytes first, then the values in chunks, the extents taken while a
// chunk is still in the cache.
bool readColumnData(CFiler2 &filer, int index, CGraphColumn *column, int n)
{
    if (n <= 0)
        return true;
    if (!filer.ReadRecordPart(index, RecordPad + 8 * std::int64_t(n), column->m_valid, n))
        return false;
    // Without branches and in four independent lanes, so that the scan
    // keeps pace with the reading.
    const double inf = std::numeric_limits<double>::infinity();
    double lo[4] = {inf, inf, inf, inf}, hi[4] = {-inf, -inf, -inf, -inf};
    for (int row = 0; row < n; row += kChunkRows) {
        const int m = std::min(kChunkRows, n - row);
        double *v = column->m_values + row;
        if (!filer.ReadRecordPart(index, RecordPad + 8 * std::int64_t(row), v, 8 * std::int64_t(m)))
            return false;
        const std::uint8_t *valid = column->m_valid + row;
        int r = 0;
        for (; r + 4 <= m; r += 4) {
            for (int k = 0; k < 4; ++k) {
                const bool use = valid[r + k] == 1;
                const double a = use ? v[r + k] : inf, b = use ? v[r + k] : -inf;
                lo[k] = a < lo[k] ? a : lo[k];
                hi[k] = b > hi[k] ? b : hi[k];
            }
        }
        for (; r < m; ++r) {
            const bool use = valid[r] == 1;
            const double a = use ? v[r] : inf, b = use ? v[r] : -inf;
            lo[0] = a < lo[0] ? a : lo[0];
            hi[0] = b > hi[0] ? b : hi[0];
        }
    }
    const double low = std::min(std::min(lo[0], lo[1]), std::min(lo[2], lo[3]));
    const double high = std::max(std::max(hi[0], hi[1]), std::max(hi[2], hi[3]));
    const bool any = low <= high;
    const double min = any ? low : 0, max = any ? high : 0;
    column->m_minValue = min;
    column->m_maxValue = max;
    return true;
}

void buildHolds(CGraphFileContent &out, const std::vector<HeldInfo> &list, CHeldColumnStore &store)
{
    if (list.empty())
        return;
    out.holds = std::make_unique<CCurveHoldList>();
    std::map<std::uint32_t, CCurveHold_Set *> sets;
    std::vector<std::uint32_t> positions;
    for (const HeldInfo &h : list)
        positions.push_back(h.position);
    std::sort(positions.begin(), positions.end());
    positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
    // New groups go to the front: the last position first.
    for (auto it = positions.rbegin(); it != positions.rend(); ++it)
        sets[*it] = out.holds->NewGroup();
    for (const HeldInfo &h : list) {
        CCurveHold_Set *set = sets[h.position];
        set->m_ownerId = h.setId;
        set->m_name = h.setName;
        set->m_label = h.setLabel;
        auto column = [&store](std::uint64_t id) -> CGraphColumn * {
            const auto found = store.find(id);
            return id != 0 && found != store.end() ? found->second.Get() : nullptr;
        };
        int existed = 0;
        CCurveHold *hold = set->AddHold(int(h.index), h.label, h.label2, column(h.xId), column(h.yId), existed);
        hold->m_xColumnId = h.xId;
        hold->m_yColumnId = h.yId;
    }
}

bool readWhole(const QString &path, CGraphFileContent &out, QString &message, const QList<int> &wanted)
{
    CFiler2 filer;
    CFiler2_MemHandler guard(filer);
    struct Count
    {
        CFiler2 &filer;
        std::int64_t &bytes;
        ~Count() { bytes = filer.FileHandle()->m_bytesRead; }
    } count{filer, out.bytesRead};
    if (!filer.OpenFile(path, 0)) {
        message = filer.LastMessage();
        return false;
    }
    if (!checkVersion(filer, message))
        return false;
    out.mode = filer.m_magic == MagicNarrow2 ? 2 : filer.m_magic == MagicNarrow3 ? 3 : 4;
    const std::int64_t fileSize = filer.FileHandle()->Size();

    int directory = filer.FindType(RecordDirectoryWide);
    const bool wide = directory >= 0;
    if (directory < 0)
        directory = filer.FindType(RecordDirectoryNarrow);
    std::vector<DirectoryColumn> columns;
    if (directory < 0 || !readDirectory(filer, directory, wide, columns)) {
        message = damaged(path);
        return false;
    }
    const int columnCount = int(columns.size());
    auto isWanted = [&wanted](int c) { return wanted.isEmpty() || wanted.contains(c); };

    // Every data record must hold the rows its entry claims.
    int rows = 0;
    for (int i = 0; i < filer.RecordCount(); ++i) {
        const CFiler2Entry &e = *filer.Entry(i);
        if (e.type != RecordColumn || e.column < 0 || e.column >= columnCount)
            continue;
        if (e.rows < 0 || RecordPad + 9 * std::int64_t(e.rows) > std::int64_t(e.used)) {
            message = damaged(path);
            return false;
        }
        if (isWanted(e.column))
            rows = std::max(rows, e.rows);
    }
    if (std::int64_t(columnCount) * rows > fileSize + kSpareCells) {
        message = damaged(path);
        return false;
    }

    out.data.Create(1, columnCount, rows, 0);
    for (int c = 0; c < columnCount; ++c) {
        CGraphColumn *column = out.data.GetColumn(c);
        column->m_name = columns[std::size_t(c)].name;
        columns[std::size_t(c)].fields.ApplyTo(*column);
        column->m_id = columns[std::size_t(c)].id;
    }
    for (int i = 0; i < filer.RecordCount(); ++i) {
        const CFiler2Entry &e = *filer.Entry(i);
        if (e.type != RecordColumn || e.column < 0 || e.column >= columnCount || !isWanted(e.column))
            continue;
        if (!readColumnData(filer, i, out.data.GetColumn(e.column), e.rows)) {
            message = damaged(path);
            return false;
        }
    }
    out.data->m_rowCount = rows;
    if (CGraphColumn *x = out.data.GetColumn(0)) {
        if ((x->m_orderFlags & CGraphColumn::OrderAscending) && !(x->m_orderFlags & CGraphColumn::OrderNone))
            out.data->m_ordered = 1;
    }

    if (wanted.isEmpty()) {
        CHeldColumnStore store;
        CLoadBudget budget{fileSize + kSpareRows};
        for (int i = 0; i < filer.RecordCount(); ++i) {
            const CFiler2Entry &e = *filer.Entry(i);
            if (e.type == RecordHeldColumn && e.id != 0 && !LoadColumnBlock(store, filer, i, e, budget)) {
                message = damaged(path);
                return false;
            }
        }
        const int list = filer.FindType(RecordHeldList);
        if (list >= 0)
            buildHolds(out, readHeldList(filer, list), store);
    }

    for (int i = 0; i < filer.RecordCount(); ++i) {
        const CFiler2Entry &e = *filer.Entry(i);
        if (e.type != RecordAttachment1 && e.type != RecordAttachment2)
            continue;
        std::int64_t size = 0;
        const char *data = filer.ReadRecord(i, size);
        if (!data && e.used > 0) {
            message = damaged(path);
            return false;
        }
        (e.type == RecordAttachment1 ? out.attachments1 : out.attachments2).emplace_back(data, qsizetype(size));
    }
    return true;
}

// A column of `rows` rows holding what `old` held.
CGraphColumnPtr grownColumn(const CGraphColumnPtr &old, int rows)
{
    CGraphColumnPtr column = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows));
    column->CopySettingsFrom(*old);
    if (old->m_count > 0) {
        std::memcpy(column->m_values, old->m_values, std::size_t(old->m_count) * 8);
        std::memcpy(column->m_valid, old->m_valid, std::size_t(old->m_count));
    }
    return column;
}

QString outOfMemory(const QString &path)
{
    return LanguageString(CFiler::TextCannotOpen).arg(path, QString::fromLocal8Bit(std::strerror(ENOMEM)));
}

} // namespace

bool LoadColumnBlock(CHeldColumnStore &store, CFiler2 &filer, int index, const CFiler2Entry &entry,
                     CLoadBudget &budget)
{
    const std::int64_t used = entry.used;
    const int first = entry.firstRow, rows = entry.rows;
    if (first < 0 || rows < 0 || used < HeldHeadSize)
        return false;
    unsigned char head[HeldHeadSize];
    if (!filer.ReadRecordPart(index, 0, head, HeldHeadSize))
        return false;
    std::uint32_t flags = 0, length = 0;
    std::memcpy(&flags, head + RecordPad, 4);
    std::memcpy(&length, head + HeldHeadSize - 4, 4);
    if (length > used - HeldHeadSize)
        return false;
    QByteArray descriptorBytes(qsizetype(length), '\0');
    if (!filer.ReadRecordPart(index, HeldHeadSize, descriptorBytes.data(), length))
        return false;
    CBufferIO descriptor = MakeBuffer();
    descriptor.LoadForReading(descriptorBytes);
    TransferZeros(descriptor, 16);
    std::uint64_t id = 0;
    descriptor.Transfer(id);
    QString name;
    descriptor.TransferString(name);
    ColumnFields fields;
    fields.Transfer(descriptor);

    const bool triple = (flags & HeldTriple) != 0;
    const bool validBytes = !triple && (flags & HeldValidBytes) != 0;
    const std::int64_t dataAt = HeldHeadSize + std::int64_t(length);
    const std::int64_t need = triple ? 24 : std::int64_t(rows) * (validBytes ? 9 : 8);
    if (dataAt + need > used)
        return false;

    const std::int64_t total = std::max<std::int64_t>(fields.count, std::int64_t(first) + rows);
    if (total > INT32_MAX - 16)
        return false;
    CGraphColumnPtr column;
    const auto found = store.find(id);
    if (found != store.end()) {
        column = found->second;
        if (total > column->m_count) {
            if (!budget.Take(total - column->m_count))
                return false;
            column = grownColumn(column, int(total));
        }
    } else {
        if (!budget.Take(total))
            return false;
        column = CGraphColumnPtr::Adopt(CGraphColumn::Create(int(total), name));
        fields.ApplyTo(*column);
        column->m_id = id;
    }

    double *values = column->m_values + first;
    if (triple) {
        double v[3] = {};
        if (!filer.ReadRecordPart(index, dataAt, v, sizeof v))
            return false;
        // Added up step by step, and started afresh from first + i * step
        // every 100 rows so that the error does not grow with the length.
        double x = v[0];
        for (int i = 0; i < rows; ++i) {
            x = i % 100 == 0 ? v[0] + i * v[2] : x + v[2];
            values[i] = x;
        }
    } else if (rows > 0 && !filer.ReadRecordPart(index, dataAt, values, 8 * std::int64_t(rows))) {
        return false;
    }
    if (validBytes) {
        if (rows > 0 && !filer.ReadRecordPart(index, dataAt + 8 * std::int64_t(rows), column->m_valid + first, rows))
            return false;
    } else if (rows > 0) {
        std::memset(column->m_valid + first, 1, std::size_t(rows));
    }
    if (column->m_minValue == 0 && column->m_maxValue == 0) {
        bool any = false;
        for (int r = 0; r < column->m_count; ++r) {
            if (column->m_valid[r] != 1)
                continue;
            const double x = column->m_values[r];
            if (!any) {
                column->m_minValue = column->m_maxValue = x;
                any = true;
            } else {
                column->m_minValue = std::min(column->m_minValue, x);
                column->m_maxValue = std::max(column->m_maxValue, x);
            }
        }
    }
    store[id] = column;
    return true;
}

bool ReadGraphFile(const QString &path, CGraphFileContent &out, QString &message, const QList<int> &columns)
{
    out.data = CGraphData();
    out.holds.reset();
    out.attachments1.clear();
    out.attachments2.clear();
    out.mode = 0;
    out.bytesRead = 0;
    message.clear();
    try {
        if (readWhole(path, out, message, columns))
            return true;
    } catch (const std::bad_alloc &) {
        message = outOfMemory(path);
    }
    out.data = CGraphData();
    out.holds.reset();
    return false;
}

int LoadHeldColumns(int mode, const QString &path, CHeldColumnStore &store, const std::set<std::uint64_t> &wantedIds,
                    QString &message)
{
    message.clear();
    if (mode != 4)
        return 0;
    try {
        CFiler2 filer;
        CFiler2_MemHandler guard(filer);
        if (!filer.OpenFile(path, MagicCurrent)) {
            message = filer.LastMessage();
            return 0;
        }
        if (!checkVersion(filer, message))
            return 0;
        CLoadBudget budget{filer.FileHandle()->Size() + kSpareRows};
        for (int i = 0; i < filer.RecordCount(); ++i) {
            const CFiler2Entry &e = *filer.Entry(i);
            if (e.type != RecordHeldColumn || e.id == 0 || !wantedIds.count(e.id))
                continue;
            if (!LoadColumnBlock(store, filer, i, e, budget)) {
                message = damaged(path);
                return 0;
            }
        }
        return 1;
    } catch (const std::bad_alloc &) {
        message = outOfMemory(path);
        return 0;
    }
}
