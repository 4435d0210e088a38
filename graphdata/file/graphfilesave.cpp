#include "graphdata/file/graphfilesave.h"

#include "graphdata/curvehold.h"
#include "graphdata/file/filer2.h"
#include "graphdata/file/graphfileformat.h"
#include "graphdata/grapherrors.h"
#include "graphdata/graphsnapshot.h"
#include "support/languagestring.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

using namespace GraphFile;

namespace {

struct HeldPair
{
    CCurveHold *hold;
    std::uint32_t position; // the set's place in the list
};

// The name bytes of the directory.  With wide names, a name that trims to
// nothing or to "_" is replaced by "Graph(n)" while its length stays that of
// the text it replaced, so the file keeps only the first character or two
// of the replacement; readers take what is there.
QByteArray directoryName(const QString &name, int index, bool wide)
{
    if (!wide) {
        QByteArray narrow = name.toLocal8Bit();
        narrow.append('\0');
        return narrow;
    }
    const qsizetype length = 2 * name.size() + 2;
    QString text = name;
    const QString trimmed = name.trimmed();
    if (trimmed.isEmpty() || trimmed == QStringLiteral("_"))
        text = QStringLiteral("Graph(%1)").arg(index + 1);
    QByteArray bytes(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
    bytes.append(2, '\0');
    if (bytes.size() < length)
        bytes.append(length - bytes.size(), '\0');
    else
        bytes.resize(length);
    return bytes;
}

void buildDirectory(CBufferIO &io, CGraphColumn *const *columns, int count, bool wide)
{
    io.AddZeroes(DirectoryLead);
    std::uint32_t word = 256;
    io.Transfer(word);
    std::uint32_t n = std::uint32_t(count);
    io.Transfer(n);
    TransferZeros(io, 16);
    for (int i = 0; i < count; ++i) {
        std::uint32_t index = std::uint32_t(i);
        io.Transfer(index);
        const QByteArray name = directoryName(columns[i] ? columns[i]->m_name : QString(), i, wide);
        std::uint32_t length = std::uint32_t(name.size());
        io.Transfer(length);
        io.Transfer(const_cast<char *>(name.constData()), int(name.size()));
    }
    std::uint32_t zero = 0;
    io.Transfer(zero);
    io.Transfer(n);
    for (int i = 0; i < count; ++i) {
        CBufferIO block = MakeBuffer();
        block.Reset(CBufferIO::ModeWrite, 64);
        std::uint32_t index = std::uint32_t(i);
        block.Transfer(index);
        ColumnFields fields = columns[i] ? ColumnFields::Of(*columns[i], 0) : ColumnFields{};
        fields.TransferWithoutCount(block);
        std::uint64_t id = columns[i] ? columns[i]->m_id : 0;
        block.Transfer(id);
        io.TransferBlock(block);
    }
}

void writeHeldColumnPart(CBufferIO &io, CGraphColumn *column)
{
    TransferZeros(io, 16);
    double min = column ? column->m_minValue : 0, max = column ? column->m_maxValue : 0;
    io.Transfer(min);
    io.Transfer(max);
    QString name = column ? column->m_name : QString();
    io.TransferString(name);
    ColumnFields fields = column ? ColumnFields::Of(*column, column->m_count) : ColumnFields{};
    fields.Transfer(io);
}

void buildHeldList(CBufferIO &io, const std::vector<HeldPair> &pairs)
{
    for (const HeldPair &pair : pairs) {
        CCurveHold *hold = pair.hold;
        CBufferIO block = MakeBuffer();
        block.Reset(CBufferIO::ModeWrite, 512);
        std::uint32_t version[4] = {StreamA, StreamB, StreamC, StreamD};
        for (std::uint32_t &v : version)
            block.Transfer(v);
        std::uint64_t setId = hold->m_set ? hold->m_set->m_ownerId : 0;
        std::uint64_t xId = hold->m_xColumnId, yId = hold->m_yColumnId;
        std::uint32_t position = pair.position, index = std::uint32_t(hold->m_curveIndex);
        block.Transfer(setId);
        block.Transfer(xId);
        block.Transfer(yId);
        block.Transfer(position);
        block.Transfer(index);
        QString label = hold->m_label, label2 = hold->m_label2;
        block.TransferString(label);
        block.TransferString(label2);
        TransferZeros(block, 32);
        QString setName = hold->m_set ? hold->m_set->m_name : QString();
        QString setLabel = hold->m_set ? hold->m_set->m_label : QString();
        block.TransferString(setName);
        block.TransferString(setLabel);
        writeHeldColumnPart(block, hold->m_xColumn.Get());
        writeHeldColumnPart(block, hold->m_yColumn.Get());
        io.TransferBlock(block);
    }
}

class CSaver
{
public:
    CSaver(int mode, const QString &path) : m_mode(mode == -1 ? 4 : mode), m_path(path) {}

    bool Run(CGraphColumn *const *columns, int count, int rows, const std::vector<QByteArray> &attachments1,
             const std::vector<QByteArray> &attachments2, const CCurveHoldList *heldSets);
    QString Message() const { return m_filer.LastMessage(); }

private:
    bool addBuffer(const CBufferIO &io, std::uint32_t type, int column, int rows);
    bool writeColumn(int index, CGraphColumn *column, int rows);
    bool writeHeldColumn(int number, CGraphColumn *column);
    bool streamFailed();

    int m_mode;
    QString m_path;
    CFiler2 m_filer;
};

bool CSaver::streamFailed()
{
    m_filer.ReportFailure(CFiler::TextSaveFailed, m_filer.FileHandle()->ErrorText());
    return false;
}

bool CSaver::addBuffer(const CBufferIO &io, std::uint32_t type, int column, int rows)
{
    const int index = m_filer.AddRecord(io.GetData(), io.GetLength(), type, 0);
    if (index < 0)
        return false;
    CFiler2Entry *e = m_filer.Entry(index);
    e->column = column;
    e->firstRow = 0;
    e->rows = rows;
    return true;
}

bool CSaver::writeColumn(int index, CGraphColumn *column, int rows)
{
    const int n = column ? std::clamp(std::min(column->m_count, rows), 0, rows) : 0;
    const std::int64_t used = RecordPad + 9 * std::int64_t(n);
    std::int64_t allocated = 0;
    const int record = m_filer.RecordCount();
    CUtilFile *file = m_filer.Reserve(record, used, allocated);
    if (!file)
        return false;
    // Straight from the column's arrays: no copy of the rows.
    if (!file->WriteZeros(RecordPad) || (n > 0 && !file->Write(column->m_values, 8 * std::int64_t(n))) ||
        (n > 0 && !file->Write(column->m_valid, n)) || !file->WriteZeros(allocated - used))
        return streamFailed();
    CFiler2Entry *e = m_filer.Entry(record);
    e->type = RecordColumn;
    e->flags = EntryColumnFlag;
    e->kind = column ? column->m_kind : 0;
    e->column = index;
    e->id = column ? column->m_id : 0;
    e->firstRow = 0;
    e->rows = n;
    return true;
}

bool CSaver::writeHeldColumn(int number, CGraphColumn *column)
{
    const int n = std::max(column->m_count, 0);
    const bool triple = (column->m_orderFlags & CGraphColumn::OrderEvenStep) != 0;
    CBufferIO descriptor = MakeBuffer();
    descriptor.Reset(CBufferIO::ModeWrite, 256);
    TransferZeros(descriptor, 16);
    std::uint64_t id = column->m_id;
    descriptor.Transfer(id);
    QString name = column->m_name;
    descriptor.TransferString(name);
    ColumnFields fields = ColumnFields::Of(*column, n);
    fields.Transfer(descriptor);

    std::uint32_t flags = HeldTriple;
    if (!triple)
        flags = HeldValidBytes | (column->m_hasInvalid ? std::uint32_t(HeldHasInvalid) : 0u);
    CBufferIO head = MakeBuffer();
    head.Reset(CBufferIO::ModeWrite, HeldHeadSize + descriptor.GetLength());
    head.AddZeroes(RecordPad);
    head.Transfer(flags);
    TransferZeros(head, 20);
    std::uint32_t length = std::uint32_t(descriptor.GetLength());
    head.Transfer(length);
    head.Transfer(const_cast<unsigned char *>(descriptor.GetData()), descriptor.GetLength());

    const std::int64_t used = head.GetLength() + (triple ? 24 : 9 * std::int64_t(n));
    std::int64_t allocated = 0;
    const int record = m_filer.RecordCount();
    CUtilFile *file = m_filer.Reserve(record, used, allocated);
    if (!file)
        return false;
    bool ok = file->Write(head.GetData(), head.GetLength());
    if (triple) {
        // One row has no step: 0.
        double v[3] = {0, 0, 0};
        if (n > 0) {
            v[0] = column->m_values[0];
            v[1] = column->m_values[n - 1];
            v[2] = n > 1 ? (v[1] - v[0]) / (n - 1) : 0.0;
        }
        ok = ok && file->Write(v, sizeof v);
    } else if (n > 0) {
        ok = ok && file->Write(column->m_values, 8 * std::int64_t(n)) && file->Write(column->m_valid, n);
    }
    if (!ok || !file->WriteZeros(allocated - used))
        return streamFailed();
    CFiler2Entry *e = m_filer.Entry(record);
    e->type = RecordHeldColumn;
    e->kind = column->m_kind;
    e->column = number;
    e->id = column->m_id;
    e->firstRow = 0;
    e->rows = n;
    return true;
}

bool CSaver::Run(CGraphColumn *const *columns, int count, int rows, const std::vector<QByteArray> &attachments1,
                 const std::vector<QByteArray> &attachments2, const CCurveHoldList *heldSets)
{
    const bool wide = m_mode == 4;
    const std::uint32_t magic = m_mode == 2 ? MagicNarrow2 : m_mode == 3 ? MagicNarrow3 : MagicCurrent;
    CFiler2_MemHandler guard(m_filer);
    if (!m_filer.CreateNewFile(m_path, magic, VersionMajor, VersionMinor, VersionBuild, VersionRevision, FileFlags,
                               IdentificationText(), m_mode != 2))
        return false;

    // The held pairs, one per hold id, in the order of the ids.
    std::vector<HeldPair> pairs;
    if (heldSets) {
        for (int s = 0; s < heldSets->GetCount(); ++s) {
            CCurveHold_Set *set = heldSets->GetAt(s);
            for (int h = 0; h < set->GetCount(); ++h)
                pairs.push_back({set->GetAt(h), std::uint32_t(s)});
        }
    }
    std::stable_sort(pairs.begin(), pairs.end(),
                     [](const HeldPair &a, const HeldPair &b) { return a.hold->m_id < b.hold->m_id; });
    pairs.erase(std::unique(pairs.begin(), pairs.end(),
                            [](const HeldPair &a, const HeldPair &b) { return a.hold->m_id == b.hold->m_id; }),
                pairs.end());
    std::vector<CGraphColumn *> heldColumns;
    for (const HeldPair &pair : pairs) {
        for (CGraphColumn *c : {pair.hold->m_xColumn.Get(), pair.hold->m_yColumn.Get()}) {
            if (c && c->m_id != 0 &&
                std::none_of(heldColumns.begin(), heldColumns.end(), [c](CGraphColumn *o) { return o->m_id == c->m_id; }))
                heldColumns.push_back(c);
        }
    }

    unsigned char header[HeaderBlockSize] = {};
    const std::uint32_t words[6] = {std::uint32_t(VersionMajor), 0, 0, 0, std::uint32_t(count), std::uint32_t(rows)};
    std::memcpy(header, words, sizeof words);
    if (!m_filer.WriteHeaderData(header, HeaderBlockSize) ||
        !m_filer.AllocateRecordOffsetsSpace(int(attachments1.size() + attachments2.size()) + 10 + 3 * count))
        return false;

    CBufferIO directory = MakeBuffer();
    directory.Reset(CBufferIO::ModeWrite, 1024);
    buildDirectory(directory, columns, count, wide);
    if (!addBuffer(directory, wide ? RecordDirectoryWide : RecordDirectoryNarrow, -1, count))
        return false;
    if (!pairs.empty()) {
        CBufferIO list = MakeBuffer();
        list.Reset(CBufferIO::ModeWrite, 1024);
        buildHeldList(list, pairs);
        if (!addBuffer(list, RecordHeldList, -1, int(pairs.size())))
            return false;
    }
    if (!m_filer.ReOpenFile(1))
        return false;
    for (int i = 0; i < count; ++i) {
        if (!writeColumn(i, columns[i], rows))
            return false;
    }
    for (std::size_t i = 0; i < heldColumns.size(); ++i) {
        if (!writeHeldColumn(int(i), heldColumns[i]))
            return false;
    }
    for (const QByteArray &block : attachments1) {
        if (m_filer.AddRecord(block.constData(), block.size(), RecordAttachment1, 0) < 0)
            return false;
    }
    for (const QByteArray &block : attachments2) {
        const int index = m_filer.AddRecord(block.constData(), block.size(), RecordAttachment2, 0);
        if (index < 0)
            return false;
        // The 64-bit field at 32 is 1, and the column field too.
        CFiler2Entry *e = m_filer.Entry(index);
        e->flags = 1;
        e->kind = 0;
        e->column = 1;
    }
    return m_filer.WriteRecordOffsets() && m_filer.WriteFilerFileHeader() && m_filer.CloseFile();
}

} // namespace

int SaveColumns(int mode, const QString &path, CGraphColumn *const *columns, int count, int rows,
                const std::vector<QByteArray> &attachments1, const std::vector<QByteArray> &attachments2,
                const CCurveHoldList *heldSets, QString *message)
{
    if (mode != 2 && mode != 3 && mode != 4 && mode != -1)
        return 0;
    if (message)
        message->clear();
    count = std::max(count, 0);
    rows = std::max(rows, 0);
    // A reference to each column for the length of the save.
    std::vector<CGraphColumnPtr> held;
    for (int i = 0; i < count; ++i) {
        held.emplace_back(columns[i]);
        AssignColumnId(columns[i]);
    }
    CSaver saver(mode, path);
    bool ok = false;
    QString text;
    try {
        ok = saver.Run(columns, count, rows, attachments1, attachments2, heldSets);
        text = saver.Message();
    } catch (const std::bad_alloc &) {
        text = LanguageString(CFiler::TextSaveFailed).arg(path, QString::fromLocal8Bit(std::strerror(ENOMEM)));
    }
    if (!ok) {
        if (text.isEmpty())
            text = path;
        if (message)
            *message = text;
        else
            ReportGraphError(0, text);
        return 0;
    }
    return 1;
}

int SaveGraphData(const QString &path, const CGraphData &data, const CCurveHoldList *heldSets, QString *message,
                  const std::vector<QByteArray> &attachments)
{
    // The columns and row count as they are now, taken under the data lock:
    // a producer may go on appending while the rows below are written.
    CGraphDataSnapshot snapshot;
    snapshot.Take(data);
    std::vector<CGraphColumn *> columns;
    for (int i = 0; i < snapshot.Size(); ++i)
        columns.push_back(const_cast<CGraphColumn *>(snapshot.Column(i)));
    return SaveColumns(4, path, columns.data(), int(columns.size()), snapshot.RowCount(), attachments, {}, heldSets,
                       message);
}
