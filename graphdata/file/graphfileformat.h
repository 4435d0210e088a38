#pragma once
// The graph data file (.mrd): the numbers that say what a file is, the record
// types, and the column fields that the directory and the held columns share.
//
// A file is a CFiler2 record file:
//   header data   1024 bytes: u32 26, three u32 0, u32 column count, u32 row count, zeros
//   record 0      column directory (type 5 with wide names, type 1 with narrow ones)
//   [record]      held list (type 6), when held curves are saved
//   records       one column data record (type 2) per column, in order
//   records       one held column record (type 7) per distinct held column
//   records       attachments (type 3, then type 8)
// Strings inside records are u32 byte length with the terminator, then
// UTF-16LE with the terminator (see CBufferIO::TransferString).

#include "support/bufferio.h"

#include <QString>
#include <cstdint>

class CGraphColumn;

namespace GraphFile {

enum : std::uint32_t {
    MagicCurrent = 0xEDF094CC, // wide names (writer modes 4 and -1)
    MagicNarrow2 = 0xEDF094CA, // narrow names, older table entries (writer mode 2)
    MagicNarrow3 = 0xEDF094CB, // narrow names (writer mode 3)
    FileFlags = 0x10000001,    // bit 0: the record table in full form
};

enum : int {
    VersionMajor = 26,
    VersionMinor = 0,
    VersionBuild = 564,
    VersionRevision = 0,
    HeaderBlockSize = 1024,
    DirectoryLead = 100, // zero bytes in front of the directory
    RecordPad = 124,     // zero bytes in front of column data
    HeldHeadSize = 152,  // pad, flags, five zero words, descriptor length
};

// The stream version carried by the records' buffers.
enum : std::uint16_t { StreamA = 26, StreamB = 0, StreamC = 0, StreamD = 7209 };

enum RecordType : std::uint32_t {
    RecordDirectoryNarrow = 1,
    RecordColumn = 2,
    RecordAttachment1 = 3,
    RecordDirectoryWide = 5,
    RecordHeldList = 6,
    RecordHeldColumn = 7,
    RecordAttachment2 = 8,
};

enum : std::uint32_t {
    EntryColumnFlag = 0x100000, // entry flags of a column data record
    HeldTriple = 0x10000,       // an even-step column stored as first, last, step
    HeldValidBytes = 0x100000,  // valid bytes follow the values
    HeldHasInvalid = 0x1000,
};

// Texts.
enum : int {
    TextUnknownForm = 43116, // %1 path, %2 identification text
    TextNewerFile = 43117,   // %1 path, %2 major, %3 minor, %4 revision
};

// The text a file names itself by: the program line and the version.
QString IdentificationText();

// A buffer for records, carrying the stream version.
inline CBufferIO MakeBuffer()
{
    return CBufferIO(StreamA, StreamB, StreamC, StreamD);
}

// The fields of a column that the directory and the held columns carry
// (everything but the rows, the name and the id).
struct ColumnFields
{
    std::uint32_t count = 0;
    std::uint32_t orderFlags = 0;
    std::uint32_t kind = 0;
    std::uint32_t attrFlags = 0;
    std::uint32_t attrValue = 0;
    double minStep = 0;
    std::uint32_t evenStep = 0;
    std::uint32_t hasInvalid = 0;

    static ColumnFields Of(const CGraphColumn &column, int count);
    void ApplyTo(CGraphColumn &column) const;
    // count, orderFlags, kind, attrFlags, attrValue, minStep, evenStep, hasInvalid.
    void Transfer(CBufferIO &io);
    // The same without the count, as in a directory block.
    void TransferWithoutCount(CBufferIO &io);
};

// Skips (reading) or writes (writing) n zero bytes.
void TransferZeros(CBufferIO &io, int n);

} // namespace GraphFile
