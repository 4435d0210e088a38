#pragma once
// CFiler: the base of our record files.  It owns the file handle, the fixed
// header at the front of the file and its update on close, the header data
// block behind it, and the place of the record table; a derived class owns
// the entries of the table and what the records mean.
//
// A new file is never written where the old one lies: CreateNewFile opens a
// temporary file in the same folder, and CloseFile flushes it to the disk
// and renames it over the target.  A save that fails anywhere (TerminateFile,
// or the object destroyed while still open) removes the temporary file and
// leaves the old file as it was.
//
// On-disk layout (all integers little-endian):
//
//   [fixed header, 192 bytes][header data][table space][records ...][table, when it did not fit]
//
// Fixed header:
//   offset size field
//      0    4  magic: the kind of file, given by the caller
//      4    4  size of this fixed header (192)
//      8    4  flags: bit 0 = the record table is stored in full form; the
//              other bits belong to the caller
//     12    4  major version          (i32)
//     16    4  minor version          (i32)
//     20    4  revision               (i32) the field after minor: a file whose
//              major and minor equal ours is newer only when this exceeds ours
//     24    4  build                  (i32)
//     28    4  record count           (i32)
//     32    8  record table offset    (i64)
//     40    4  bytes reserved for the table behind the header data (i32)
//     44    4  header end: fixed header plus header data (i32); the table
//              space starts here and the records behind it
//     48    4  block size of the records (i32), for the derived class
//     52   12  zero
//     64  128  identification text, UTF-8, zero-padded (at most 127 bytes)
//
// The record table is written at the header end when it fits into the space
// reserved there (AllocateRecordOffsetsSpace), otherwise behind the last
// record.  The fixed header is written when the file is created and again,
// with the final table offset and record count, by WriteFilerFileHeader.
//
// Failures are return values; the message a person should read (a numbered
// text naming the file) is kept in LastMessage() and passed to MyMessageBox.

#include <QByteArray>
#include <QFile>
#include <QString>
#include <cstdint>
#include <memory>

// A file handle that counts what passes through it.
class CUtilFile
{
public:
    CUtilFile() = default;
    ~CUtilFile();
    CUtilFile(const CUtilFile &) = delete;
    CUtilFile &operator=(const CUtilFile &) = delete;

    // Opens `path` for reading (write false) or reading and writing.
    bool Open(const QString &path, bool write);
    // Opens a new temporary file in the folder of `target`.
    bool OpenTemporary(const QString &target);
    void Close();
    bool IsOpen() const { return m_file && m_file->isOpen(); }

    // Bytes read; fewer than asked at the end of the file, -1 on an error.
    std::int64_t Read(void *data, std::int64_t size);
    // True when all bytes were written.
    bool Write(const void *data, std::int64_t size);
    bool WriteZeros(std::int64_t size);
    bool Seek(std::int64_t position) { return Seek64(position); }
    bool Seek64(std::int64_t position);
    std::int64_t Position() const;
    std::int64_t Size() const;
    bool SetLength64(std::int64_t length);
    // Flushes Qt's buffers and asks the system to put the bytes on the disk.
    bool Sync();
    QString ErrorText() const;
    QString FileName() const;
    QFile *File() const { return m_file.get(); }

    std::int64_t m_bytesRead = 0;
    std::int64_t m_bytesWritten = 0;

private:
    std::unique_ptr<QFile> m_file;
    QString m_error;
};

class CFiler
{
public:
    enum : std::uint32_t { FlagFullTable = 1 };
    enum : int { FixedHeaderSize = 192, TextBytes = 128 };

    CFiler();
    virtual ~CFiler();
    CFiler(const CFiler &) = delete;
    CFiler &operator=(const CFiler &) = delete;

    // Starts a new file that will replace `path` on CloseFile.  `fullTable`
    // sets flag bit 0 (the record table in full form) or clears it.
    virtual bool CreateNewFile(const QString &path, std::uint32_t magic, int major, int minor, int build,
                               int revision, std::uint32_t flags, const QString &text, bool fullTable);
    // Opens an existing file for reading.  `magic` 0 accepts any magic the
    // derived class accepts (AcceptsMagic).  Checks the fixed header and
    // reads the record table; false with the message kept otherwise.
    virtual bool OpenFile(const QString &path, std::uint32_t magic);
    // 1: make the open file writable (a created file already is); 0: reading.
    virtual bool ReOpenFile(int write);
    // A created file: flush, sync, rename over the target; an opened one:
    // close.  False, with the message kept, when the rename or flush fails
    // (the target is then untouched).
    virtual bool CloseFile();
    // Abandons the file: a created one is removed, the target untouched.
    virtual void TerminateFile();

    bool IsOpen() const { return m_file.IsOpen(); }
    CUtilFile *FileHandle() { return &m_file; }
    const QString &FilePath() const { return m_path; }

    // The block of the caller's own header data behind the fixed header; it
    // can be written only while the file has no records.
    bool WriteHeaderData(const void *data, int size);
    bool ReadHeaderData(QByteArray &out);
    // Reserves room for `entries` table entries in front of the records;
    // only while the file has no records.
    bool AllocateRecordOffsetsSpace(int entries);
    // Writes the record table (where it fits) and the fixed header.
    bool WriteRecordOffsets();
    bool WriteFilerFileHeader();

    // Header fields as read or as they will be written.
    std::uint32_t m_magic = 0;
    std::uint32_t m_flags = 0;
    std::int32_t m_major = 0, m_minor = 0, m_revision = 0, m_build = 0;
    std::int32_t m_recordCountField = 0;
    std::int64_t m_recordTableOffset = FixedHeaderSize;
    std::int32_t m_tableSpace = 0;
    std::int32_t m_headerEnd = FixedHeaderSize;
    std::int32_t m_blockSizeField = 0;
    QString m_text;

    // Where records begin: behind the header data and the table space.
    std::int64_t RecordsStart() const { return std::int64_t(m_headerEnd) + m_tableSpace; }

    // The last failure, as a numbered text that names the file.
    const QString &LastMessage() const { return m_message; }
    // Keeps `text` as the last message; derived classes may show it.
    virtual void MyMessageBox(const QString &text);

    QByteArray &GetReturnBuffer() { return m_returnBuffer; }
    QByteArray &GetTempBuffer() { return m_tempBuffer; }

    // Message numbers of the record file.
    enum : int {
        TextCannotOpen = 43111,  // %1 path, %2 reason
        TextNotOurFile = 43112,  // %1 path
        TextDamaged = 43113,     // %1 path
        TextSaveFailed = 43114,  // %1 path, %2 reason
    };
    void ReportFailure(int textId, const QString &reason = QString());

protected:
    // The derived class's table.
    virtual bool AcceptsMagic(std::uint32_t magic) const { return magic != 0; }
    virtual int RecordEntrySize() const = 0;
    virtual std::int32_t RecordCount() const = 0;
    // End of the last record's allocation (RecordsStart when none).
    virtual std::int64_t RecordsEnd() const = 0;
    virtual bool ReadRecordTable() = 0;
    // The table as it goes to disk.
    virtual bool EncodeRecordTable(QByteArray &out) = 0;
    virtual void ClearRecordTable() = 0;

    bool writeFixedHeader();

    CUtilFile m_file;
    QString m_path;          // the file as the user named it
    bool m_created = false;  // m_file is a temporary file that replaces m_path
    bool m_writable = false;
    QString m_message;
    QByteArray m_returnBuffer;
    QByteArray m_tempBuffer;
};
