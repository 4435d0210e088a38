#include "graphdata/file/filer2.h"

#include "graphdata/file/graphfileformat.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

template <typename T>
void store(unsigned char *p, T value)
{
    std::memcpy(p, &value, sizeof value);
}

template <typename T>
void load(const unsigned char *p, T &value)
{
    std::memcpy(&value, p, sizeof value);
}

} // namespace

// Full form: the offset in 8 bytes, everything behind it from byte 8.  Older
// form: the offset in 4 bytes, everything behind it 4 bytes lower.
bool CFiler2::EncodeEntry(const CFiler2Entry &e, bool fullForm, unsigned char *p)
{
    std::memset(p, 0, EntrySize);
    int at = 8;
    if (fullForm) {
        store(p, e.offset);
    } else {
        if (e.offset > std::numeric_limits<std::uint32_t>::max())
            return false;
        store(p, std::uint32_t(e.offset));
        at = 4;
    }
    store(p + at, e.used);
    store(p + at + 4, e.allocated);
    store(p + at + 8, e.type);
    store(p + at + 12, e.param);
    store(p + at + 16, e.reserved1);
    store(p + at + 24, e.flags);
    store(p + at + 28, e.kind);
    store(p + at + 32, e.column);
    store(p + at + 36, e.firstRow);
    store(p + at + 40, e.rows);
    store(p + at + 44, e.id);
    std::memcpy(p + at + 52, e.reserved2, sizeof e.reserved2);
    return true;
}

void CFiler2::DecodeEntry(const unsigned char *p, bool fullForm, CFiler2Entry &e)
{
    int at = 8;
    if (fullForm) {
        load(p, e.offset);
    } else {
        std::uint32_t offset = 0;
        load(p, offset);
        e.offset = offset;
        at = 4;
    }
    load(p + at, e.used);
    load(p + at + 4, e.allocated);
    load(p + at + 8, e.type);
    load(p + at + 12, e.param);
    load(p + at + 16, e.reserved1);
    load(p + at + 24, e.flags);
    load(p + at + 28, e.kind);
    load(p + at + 32, e.column);
    load(p + at + 36, e.firstRow);
    load(p + at + 40, e.rows);
    load(p + at + 44, e.id);
    std::memcpy(e.reserved2, p + at + 52, sizeof e.reserved2);
}

CFiler2::CFiler2()
{
    m_blockSizeField = m_blockSize;
}

CFiler2::~CFiler2() = default;

bool CFiler2::AcceptsMagic(std::uint32_t magic) const
{
    return magic == GraphFile::MagicCurrent || magic == GraphFile::MagicNarrow2 || magic == GraphFile::MagicNarrow3;
}

CFiler2Entry *CFiler2::Entry(int i)
{
    return i >= 0 && i < RecordCount() ? &m_entries[std::size_t(i)] : nullptr;
}

const CFiler2Entry *CFiler2::Entry(int i) const
{
    return i >= 0 && i < RecordCount() ? &m_entries[std::size_t(i)] : nullptr;
}

CFiler2Companion *CFiler2::Companion(int i)
{
    return i >= 0 && i < RecordCount() ? &m_companions[std::size_t(i)] : nullptr;
}

std::int64_t CFiler2::RecordSize(int i) const
{
    const CFiler2Entry *e = Entry(i);
    return e ? std::int64_t(e->used) : 0;
}

std::int32_t CFiler2::RecordType(int i) const
{
    const CFiler2Entry *e = Entry(i);
    return e ? std::int32_t(e->type) : 0;
}

std::int32_t CFiler2::RecordParam(int i) const
{
    const CFiler2Entry *e = Entry(i);
    return e ? std::int32_t(e->param) : 0;
}

std::int64_t CFiler2::RecordAllocated(int i) const
{
    return i >= 0 && i < RecordCount() ? std::int64_t(m_companions[std::size_t(i)].allocated) : 0;
}

std::int64_t CFiler2::RecordsEnd() const
{
    if (m_entries.empty())
        return RecordsStart();
    const CFiler2Entry &last = m_entries.back();
    return std::int64_t(last.offset) + last.allocated;
}

int CFiler2::FindType(std::uint32_t type, int start) const
{
    for (int i = std::max(start, 0); i < RecordCount(); ++i) {
        if (TypeMatches(m_entries[std::size_t(i)].type, type))
            return i;
    }
    return -1;
}

int CFiler2::FindRecordAppParam_Index(std::uint32_t type, std::uint32_t param) const
{
    for (int i = 0; i < RecordCount(); ++i) {
        if (TypeMatches(m_entries[std::size_t(i)].type, type) && m_entries[std::size_t(i)].param == param)
            return i;
    }
    return -1;
}

void CFiler2::ClearRecordTable()
{
    m_entries.clear();
    m_companions.clear();
}

bool CFiler2::ReadRecordTable()
{
    m_blockSize = m_blockSizeField;
    if (m_recordCountField <= 0)
        return m_recordCountField == 0;
    const std::int64_t size = m_file.Size();
    const std::int64_t count = m_recordCountField;
    // The count must fit between the table offset and the end of the file
    // before anything is allocated for it.
    if (m_recordTableOffset + 4 > size || count > (size - m_recordTableOffset - 4) / EntrySize)
        return false;
    std::uint32_t stored = 0;
    if (!m_file.Seek64(m_recordTableOffset) || m_file.Read(&stored, 4) != 4 || stored != std::uint32_t(count))
        return false;
    std::vector<unsigned char> raw(std::size_t(count) * EntrySize);
    if (m_file.Read(raw.data(), std::int64_t(raw.size())) != std::int64_t(raw.size()))
        return false;
    const bool full = (m_flags & FlagFullTable) != 0;
    m_entries.resize(std::size_t(count));
    m_companions.assign(std::size_t(count), CFiler2Companion{});
    std::int64_t end = RecordsStart();
    for (std::size_t i = 0; i < std::size_t(count); ++i) {
        CFiler2Entry &e = m_entries[i];
        DecodeEntry(raw.data() + i * EntrySize, full, e);
        if (e.used > e.allocated || e.offset > std::uint64_t(size) || std::int64_t(e.offset) < end ||
            std::int64_t(e.offset) + std::int64_t(e.allocated) > size)
            return false;
        end = std::int64_t(e.offset) + e.allocated;
        m_companions[i].allocated = e.allocated;
    }
    return true;
}

bool CFiler2::EncodeRecordTable(QByteArray &out)
{
    m_blockSizeField = m_blockSize;
    const std::size_t count = m_entries.size();
    out.resize(qsizetype(4 + count * EntrySize));
    unsigned char *p = reinterpret_cast<unsigned char *>(out.data());
    const std::uint32_t n = std::uint32_t(count);
    std::memcpy(p, &n, 4);
    const bool full = (m_flags & FlagFullTable) != 0;
    for (std::size_t i = 0; i < count; ++i) {
        CFiler2Entry e = m_entries[i];
        e.allocated = m_companions[i].allocated;
        if (!EncodeEntry(e, full, p + 4 + i * EntrySize)) {
            // The older form cannot point past 4 GB.
            ReportFailure(TextSaveFailed, QStringLiteral("4 GB"));
            return false;
        }
    }
    return true;
}

bool CFiler2::writeFailed()
{
    if (m_message.isEmpty())
        ReportFailure(TextSaveFailed, m_file.ErrorText());
    TerminateFile();
    return false;
}

const char *CFiler2::ReadRecord(int i, std::int64_t &size)
{
    size = 0;
    const CFiler2Entry *e = Entry(i);
    if (!e || e->used == 0)
        return nullptr;
    QByteArray &buffer = GetReturnBuffer();
    buffer.resize(qsizetype(e->used));
    if (!ReadRecordPart(i, 0, buffer.data(), e->used))
        return nullptr;
    size = e->used;
    return buffer.constData();
}

bool CFiler2::ReadRecord(int i, void *buffer, std::int64_t &size)
{
    const CFiler2Entry *e = Entry(i);
    if (!e)
        return false;
    if (size < std::int64_t(e->used)) {
        size = e->used;
        return false;
    }
    size = e->used;
    return ReadRecordPart(i, 0, buffer, e->used);
}

bool CFiler2::ReadRecordPart(int i, std::int64_t offset, void *buffer, std::int64_t size)
{
    const CFiler2Entry *e = Entry(i);
    if (!e || offset < 0 || size < 0 || offset + size > std::int64_t(e->used))
        return false;
    if (size == 0)
        return true;
    if (!m_file.Seek64(std::int64_t(e->offset) + offset) || m_file.Read(buffer, size) != size)
        return false;
    m_companions[std::size_t(i)].loaded = 1;
    return true;
}

bool CFiler2::ShiftRecordsUp(std::int64_t bytes, int first)
{
    if (bytes <= 0 || first < 0 || first >= RecordCount())
        return true;
    const std::int64_t start = std::int64_t(m_entries[std::size_t(first)].offset);
    std::int64_t end = RecordsEnd();
    std::vector<char> chunk(ShiftChunk);
    // From the end backwards, so that no byte is overwritten before it moved.
    while (end > start) {
        const std::int64_t n = std::min<std::int64_t>(ShiftChunk, end - start);
        end -= n;
        if (!m_file.Seek64(end) || m_file.Read(chunk.data(), n) != n || !m_file.Seek64(end + bytes) ||
            !m_file.Write(chunk.data(), n))
            return writeFailed();
    }
    for (std::size_t j = std::size_t(first); j < m_entries.size(); ++j)
        m_entries[j].offset += std::uint64_t(bytes);
    return true;
}

bool CFiler2::ShiftRecordsDown(std::int64_t bytes, int first)
{
    if (bytes <= 0 || first < 0 || first >= RecordCount())
        return true;
    std::int64_t from = std::int64_t(m_entries[std::size_t(first)].offset);
    if (from - bytes < RecordsStart())
        return false;
    const std::int64_t end = RecordsEnd();
    std::vector<char> chunk(ShiftChunk);
    // From the front, the mirror of ShiftRecordsUp.
    while (from < end) {
        const std::int64_t n = std::min<std::int64_t>(ShiftChunk, end - from);
        if (!m_file.Seek64(from) || m_file.Read(chunk.data(), n) != n || !m_file.Seek64(from - bytes) ||
            !m_file.Write(chunk.data(), n))
            return writeFailed();
        from += n;
    }
    for (std::size_t j = std::size_t(first); j < m_entries.size(); ++j)
        m_entries[j].offset -= std::uint64_t(bytes);
    return true;
}

bool CFiler2::growRecord(int i, std::int64_t size)
{
    CFiler2Companion &c = m_companions[std::size_t(i)];
    if (size <= std::int64_t(c.allocated))
        return true;
    const std::int64_t rounded = RoundedSize(size);
    if (rounded > std::numeric_limits<std::uint32_t>::max())
        return false;
    if (!ShiftRecordsUp(rounded - c.allocated, i + 1))
        return false;
    c.allocated = std::uint32_t(rounded);
    m_entries[std::size_t(i)].allocated = c.allocated;
    return true;
}

bool CFiler2::insertEntry(int index, std::int64_t offset, std::int64_t allocated)
{
    if (allocated > std::numeric_limits<std::uint32_t>::max())
        return false;
    CFiler2Entry e;
    e.offset = std::uint64_t(offset);
    e.allocated = std::uint32_t(allocated);
    CFiler2Companion c;
    c.allocated = e.allocated;
    c.changed = 1;
    m_entries.insert(m_entries.begin() + index, e);
    m_companions.insert(m_companions.begin() + index, c);
    m_recordCountField = RecordCount();
    return true;
}

bool CFiler2::WriteRecord(int i, const void *data, std::int64_t size, std::uint32_t type, std::uint32_t param)
{
    if (i == RecordCount())
        return AddRecord(data, size, type, param) >= 0;
    if (!Entry(i) || size < 0 || !ReOpenFile(1))
        return false;
    if (!growRecord(i, size))
        return false;
    CFiler2Entry &e = m_entries[std::size_t(i)];
    const std::int64_t allocated = m_companions[std::size_t(i)].allocated;
    if (!m_file.Seek64(std::int64_t(e.offset)) || !m_file.Write(data, size) || !m_file.WriteZeros(allocated - size))
        return writeFailed();
    e.used = std::uint32_t(size);
    e.type = type;
    e.param = param;
    m_companions[std::size_t(i)].changed = 1;
    return true;
}

int CFiler2::AddRecord(const void *data, std::int64_t size, std::uint32_t type, std::uint32_t param)
{
    int index = RecordCount();
    return InsertRecord(index, data, size, type, param) ? index : -1;
}

bool CFiler2::InsertRecord(int &index, const void *data, std::int64_t size, std::uint32_t type, std::uint32_t param)
{
    if (!IsOpen() || size < 0 || size > std::numeric_limits<std::uint32_t>::max() - 2 * std::int64_t(BlockSize()))
        return false;
    index = std::clamp(index, 0, int(RecordCount()));
    if (!ReOpenFile(1))
        return false;
    const std::int64_t allocated = RoundedSize(size);
    std::int64_t offset = RecordsEnd();
    if (index < RecordCount()) {
        offset = std::int64_t(m_entries[std::size_t(index)].offset);
        if (!ShiftRecordsUp(allocated, index))
            return false;
    }
    if (!insertEntry(index, offset, allocated))
        return false;
    CFiler2Entry &e = m_entries[std::size_t(index)];
    e.used = std::uint32_t(size);
    e.type = type;
    e.param = param;
    if (!m_file.Seek64(offset) || (size > 0 && !m_file.Write(data, size)) || !m_file.WriteZeros(allocated - size))
        return writeFailed();
    return true;
}

bool CFiler2::DeleteRecord(int i)
{
    if (!Entry(i) || !ReOpenFile(1))
        return false;
    const std::int64_t allocated = m_companions[std::size_t(i)].allocated;
    m_entries.erase(m_entries.begin() + i);
    m_companions.erase(m_companions.begin() + i);
    m_recordCountField = RecordCount();
    if (!ShiftRecordsDown(allocated, i))
        return false;
    if (!m_file.SetLength64(RecordsEnd()))
        return writeFailed();
    return true;
}

CUtilFile *CFiler2::Reserve(int index, std::int64_t bytes, std::int64_t &allocated)
{
    allocated = 0;
    if (!IsOpen() || bytes < 0 || index < 0 || index > RecordCount() || !ReOpenFile(1))
        return nullptr;
    if (index == RecordCount()) {
        const std::int64_t rounded = RoundedSize(bytes);
        if (!insertEntry(index, RecordsEnd(), rounded))
            return nullptr;
    } else if (!growRecord(index, bytes)) {
        return nullptr;
    }
    CFiler2Entry &e = m_entries[std::size_t(index)];
    e.used = std::uint32_t(bytes);
    m_companions[std::size_t(index)].changed = 1;
    allocated = m_companions[std::size_t(index)].allocated;
    if (!m_file.Seek64(std::int64_t(e.offset))) {
        writeFailed();
        return nullptr;
    }
    return &m_file;
}
