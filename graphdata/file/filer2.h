#pragma once
// CFiler2: the record file of the graph data (.mrd).  Over the fixed header
// of CFiler it keeps a table of 124-byte entries with 64-bit offsets, one per
// record, and rewrites records in place with padding: every record owns an
// allocation rounded up to whole blocks, so that it may grow a little without
// moving the others; a record that outgrows its allocation moves all later
// records up.
//
// Entry, full form (header flag bit 0 set):
//   offset size field
//      0    8  file offset of the record
//      8    4  bytes used
//     12    4  bytes allocated (at least used, whole blocks)
//     16    4  type
//     20    4  parameter
//     24    8  zero
//     32    4  flags (0x100000 in a column record)
//     36    4  column kind
//     40    4  column number, or -1
//     44    4  first row of the block
//     48    4  row count, or the item count of a list record
//     52    8  column id
//     60   64  zero
// Older form (flag bit 0 clear), also 124 bytes: the offset takes 4 bytes, so
// everything behind it sits 4 bytes lower (used at 4, allocated at 8, type at
// 12, parameter at 16, zero at 20, flags at 28, kind at 32, column at 36,
// first row at 40, rows at 44, id at 48, zero from 56).  The table is read
// into the full form and written back in the form of the file.
//
// Records lie in the file in the order of their entries, without overlap.
// The file's table is checked on opening: a record outside the file, one
// overlapping its neighbour or a count the file cannot hold makes the file
// damaged, and nothing of it is used.

#include "support/filer.h"

#include <cstdint>
#include <vector>

// One entry as the program holds it; on disk it takes 124 bytes in the
// layout above (see EncodeEntry and DecodeEntry).
struct CFiler2Entry
{
    std::uint64_t offset = 0;
    std::uint32_t used = 0;
    std::uint32_t allocated = 0;
    std::uint32_t type = 0;
    std::uint32_t param = 0;
    std::uint64_t reserved1 = 0;
    std::uint32_t flags = 0;
    std::uint32_t kind = 0;
    std::int32_t column = -1;
    std::int32_t firstRow = 0;
    std::int32_t rows = 0;
    std::uint64_t id = 0;
    std::uint8_t reserved2[64] = {};
};

// What the program keeps beside each entry while the file is open: 20 bytes.
struct CFiler2Companion
{
    std::uint32_t allocated = 0; // mirror of the entry's allocation
    std::uint32_t changed = 0;   // 1 once the record was written in this session
    std::uint32_t loaded = 0;    // 1 once the record was read in this session
    std::uint32_t reserved[2] = {0, 0};
};
static_assert(sizeof(CFiler2Companion) == 20);

class CFiler2 : public CFiler
{
public:
    // The entry in 124 bytes, in the full form or the older one; false when
    // the older form cannot hold the offset (past 4 GB).
    static bool EncodeEntry(const CFiler2Entry &entry, bool fullForm, unsigned char *out);
    static void DecodeEntry(const unsigned char *in, bool fullForm, CFiler2Entry &entry);

    enum : int { EntrySize = 124, ShiftChunk = 10240, DefaultBlockSize = 64 };

    CFiler2();
    ~CFiler2() override;

    bool IsOpen() const { return CFiler::IsOpen(); }
    static bool TypeMatches(std::uint32_t a, std::uint32_t b) { return b == 0 || a == b; }

    CFiler2Entry *Entry(int i);
    const CFiler2Entry *Entry(int i) const;
    CFiler2Companion *Companion(int i);
    std::int64_t RecordSize(int i) const;
    std::int32_t RecordType(int i) const;
    std::int32_t RecordParam(int i) const;
    std::int64_t RecordAllocated(int i) const;
    std::int32_t RecordCount() const override { return std::int32_t(m_entries.size()); }

    // Reads record i into GetReturnBuffer(); null and size 0 for an empty
    // record or a read error.
    const char *ReadRecord(int i, std::int64_t &size);
    // Reads record i into `buffer` of `size` bytes; a buffer too small gets
    // the needed size in `size` and the result false.
    bool ReadRecord(int i, void *buffer, std::int64_t &size);
    // Reads `size` bytes at `offset` inside record i (bounded by its used size).
    bool ReadRecordPart(int i, std::int64_t offset, void *buffer, std::int64_t size);

    // Replaces record i (appends when i equals the count).  Data longer than
    // the allocation move the later records up by the growth.  False when a
    // write comes up short: the file is closed then.
    bool WriteRecord(int i, const void *data, std::int64_t size, std::uint32_t type, std::uint32_t param);
    // A new record at the end; its index, or -1.
    int AddRecord(const void *data, std::int64_t size, std::uint32_t type, std::uint32_t param);
    int AddNewRecord(const void *data, std::int64_t size, std::uint32_t type, std::uint32_t param)
    {
        return AddRecord(data, size, type, param);
    }
    // Inserts before `index` (clamped to 0..count; the index used is given
    // back): the records from there on move up by the new allocation.
    bool InsertRecord(int &index, const void *data, std::int64_t size, std::uint32_t type, std::uint32_t param);
    bool InsertRecordAt(int index, const void *data, std::int64_t size, std::uint32_t type, std::uint32_t param)
    {
        return InsertRecord(index, data, size, type, param);
    }
    // Removes record i; the later records move down by its allocation and
    // the file is cut behind the last one.
    bool DeleteRecord(int i);
    // Makes room for `bytes` in record i (a fresh record when i equals the
    // count) and returns the file positioned at its start, or null.  The
    // record's used size becomes `bytes`; `allocated` gets its allocation.
    CUtilFile *Reserve(int index, std::int64_t bytes, std::int64_t &allocated);

    // First index from `start` on with record type `type` (0: any), or -1.
    int FindType(std::uint32_t type, int start = 0) const;
    int FindRecordAppParam_Index(std::uint32_t type, std::uint32_t param) const;

    // The block of the allocations: below 32 counts as 256.
    int BlockSize() const { return m_blockSize < 32 ? 256 : m_blockSize; }
    void SetBlockSize(int size) { m_blockSize = size; }
    // Allocation for n bytes: (n / block + 1) * block, always a spare byte.
    std::int64_t RoundedSize(std::int64_t n) const { return (n / BlockSize() + 1) * BlockSize(); }

    // Moves the records from `first` to the last up (or down) by `bytes`,
    // in chunks of 10240 bytes, and corrects their offsets.
    bool ShiftRecordsUp(std::int64_t bytes, int first);
    bool ShiftRecordsDown(std::int64_t bytes, int first);

    std::int64_t RecordsEnd() const override;

protected:
    bool AcceptsMagic(std::uint32_t magic) const override;
    int RecordEntrySize() const override { return EntrySize; }
    bool ReadRecordTable() override;
    bool EncodeRecordTable(QByteArray &out) override;
    void ClearRecordTable() override;

private:
    bool growRecord(int i, std::int64_t size);
    bool insertEntry(int index, std::int64_t offset, std::int64_t allocated);
    bool writeFailed();

    std::vector<CFiler2Entry> m_entries;
    std::vector<CFiler2Companion> m_companions;
    std::int32_t m_blockSize = DefaultBlockSize;
};

// Holds a filer for the length of a scope and closes what is still open,
// without saving, on any way out.
class CFiler2_MemHandler
{
public:
    explicit CFiler2_MemHandler(CFiler2 &filer) : m_filer(filer) {}
    ~CFiler2_MemHandler() { m_filer.TerminateFile(); }
    CFiler2_MemHandler(const CFiler2_MemHandler &) = delete;
    CFiler2_MemHandler &operator=(const CFiler2_MemHandler &) = delete;

private:
    CFiler2 &m_filer;
};
