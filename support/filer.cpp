#include "support/filer.h"

#include "support/languagestring.h"

#include <QFileInfo>
#include <QTemporaryFile>
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {

std::filesystem::path nativePath(const QString &path)
{
#ifdef _WIN32
    return std::filesystem::path(path.toStdWString());
#else
    return std::filesystem::path(QFile::encodeName(path).toStdString());
#endif
}

void putU32(unsigned char *p, std::uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<unsigned char>(v >> (8 * i));
}

void putI64(unsigned char *p, std::int64_t v)
{
    for (int i = 0; i < 8; ++i)
        p[i] = static_cast<unsigned char>(std::uint64_t(v) >> (8 * i));
}

std::uint32_t getU32(const unsigned char *p)
{
    return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 | std::uint32_t(p[3]) << 24;
}

std::int64_t getI64(const unsigned char *p)
{
    std::uint64_t v = 0;
    for (int i = 7; i >= 0; --i)
        v = v << 8 | p[i];
    return std::int64_t(v);
}

} // namespace

// ---------------------------------------------------------------- CUtilFile

CUtilFile::~CUtilFile()
{
    Close();
}

bool CUtilFile::Open(const QString &path, bool write)
{
    Close();
    m_file = std::make_unique<QFile>(path);
    // Unbuffered: the record code gathers small pieces itself, and large
    // column blocks go to the system without a copy.
    const QIODevice::OpenMode mode = (write ? QIODevice::ReadWrite : QIODevice::ReadOnly) | QIODevice::Unbuffered;
    if (!m_file->open(mode)) {
        m_error = m_file->errorString();
        m_file.reset();
        return false;
    }
    return true;
}

bool CUtilFile::OpenTemporary(const QString &target)
{
    Close();
    const QFileInfo info(target);
    auto file = std::make_unique<QTemporaryFile>(info.absolutePath() + QStringLiteral("/.") + info.fileName() +
                                                 QStringLiteral(".XXXXXX"));
    if (!file->open()) {
        m_error = file->errorString();
        return false;
    }
    // Asking for the name gives the file one at once (the system may have
    // opened it without a name), so that it can be renamed over the target.
    if (file->fileName().isEmpty()) {
        m_error = file->errorString();
        return false;
    }
    // A temporary file is private to its owner; the saved file gets the
    // permissions of the one it replaces, or the usual ones of a new file.
    const QFileDevice::Permissions usual = QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                           QFileDevice::ReadGroup | QFileDevice::ReadOther;
    file->setPermissions(info.exists() ? QFile::permissions(target) : usual);
    // Removed by CFiler::TerminateFile on failure, renamed on success.
    file->setAutoRemove(false);
    m_file = std::move(file);
    return true;
}

void CUtilFile::Close()
{
    if (m_file) {
        m_file->close();
        m_file.reset();
    }
}

std::int64_t CUtilFile::Read(void *data, std::int64_t size)
{
    if (!IsOpen() || size < 0)
        return -1;
    std::int64_t done = 0;
    auto *p = static_cast<char *>(data);
    while (done < size) {
        const std::int64_t n = m_file->read(p + done, size - done);
        if (n < 0) {
            m_error = m_file->errorString();
            return -1;
        }
        if (n == 0)
            break;
        done += n;
    }
    m_bytesRead += done;
    return done;
}

bool CUtilFile::Write(const void *data, std::int64_t size)
{
    if (!IsOpen() || size < 0)
        return false;
    std::int64_t done = 0;
    const auto *p = static_cast<const char *>(data);
    while (done < size) {
        const std::int64_t n = m_file->write(p + done, size - done);
        if (n <= 0) {
            m_error = m_file->errorString();
            return false;
        }
        done += n;
    }
    m_bytesWritten += done;
    return true;
}

bool CUtilFile::WriteZeros(std::int64_t size)
{
    static const char zeros[4096] = {};
    while (size > 0) {
        const std::int64_t n = std::min<std::int64_t>(size, sizeof zeros);
        if (!Write(zeros, n))
            return false;
        size -= n;
    }
    return true;
}

bool CUtilFile::Seek64(std::int64_t position)
{
    if (!IsOpen() || position < 0)
        return false;
    if (!m_file->seek(position)) {
        m_error = m_file->errorString();
        return false;
    }
    return true;
}

std::int64_t CUtilFile::Position() const
{
    return IsOpen() ? m_file->pos() : -1;
}

std::int64_t CUtilFile::Size() const
{
    return IsOpen() ? m_file->size() : -1;
}

bool CUtilFile::SetLength64(std::int64_t length)
{
    if (!IsOpen() || !m_file->resize(length)) {
        if (m_file)
            m_error = m_file->errorString();
        return false;
    }
    return true;
}

bool CUtilFile::Sync()
{
    if (!IsOpen())
        return false;
    if (!m_file->flush()) {
        m_error = m_file->errorString();
        return false;
    }
#ifdef _WIN32
    const int result = _commit(m_file->handle());
#else
    const int result = ::fsync(m_file->handle());
#endif
    if (result != 0) {
        m_error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    return true;
}

QString CUtilFile::ErrorText() const
{
    return m_error;
}

QString CUtilFile::FileName() const
{
    return m_file ? m_file->fileName() : QString();
}

// ------------------------------------------------------------------- CFiler

CFiler::CFiler() = default;

CFiler::~CFiler()
{
    // Still open here means the save did not reach CloseFile: drop it.
    if (m_created)
        TerminateFile();
}

void CFiler::MyMessageBox(const QString &text)
{
    m_message = text;
}

void CFiler::ReportFailure(int textId, const QString &reason)
{
    QString text = LanguageString(textId);
    if (text.isEmpty())
        text = QStringLiteral("%1: %2");
    text = text.contains(QStringLiteral("%2")) ? text.arg(m_path, reason) : text.arg(m_path);
    MyMessageBox(text);
}

bool CFiler::CreateNewFile(const QString &path, std::uint32_t magic, int major, int minor, int build, int revision,
                           std::uint32_t flags, const QString &text, bool fullTable)
{
    TerminateFile();
    m_path = path;
    m_message.clear();
    if (!m_file.OpenTemporary(path)) {
        ReportFailure(TextSaveFailed, m_file.ErrorText());
        return false;
    }
    m_created = true;
    m_writable = true;
    m_magic = magic;
    m_flags = fullTable ? (flags | FlagFullTable) : (flags & ~std::uint32_t(FlagFullTable));
    m_major = major;
    m_minor = minor;
    m_build = build;
    m_revision = revision;
    m_text = text;
    m_recordCountField = 0;
    m_headerEnd = FixedHeaderSize;
    m_tableSpace = 0;
    m_recordTableOffset = FixedHeaderSize;
    ClearRecordTable();
    if (!writeFixedHeader()) {
        ReportFailure(TextSaveFailed, m_file.ErrorText());
        TerminateFile();
        return false;
    }
    return true;
}

bool CFiler::writeFixedHeader()
{
    unsigned char h[FixedHeaderSize] = {};
    putU32(h + 0, m_magic);
    putU32(h + 4, FixedHeaderSize);
    putU32(h + 8, m_flags);
    putU32(h + 12, std::uint32_t(m_major));
    putU32(h + 16, std::uint32_t(m_minor));
    putU32(h + 20, std::uint32_t(m_revision));
    putU32(h + 24, std::uint32_t(m_build));
    putU32(h + 28, std::uint32_t(m_recordCountField));
    putI64(h + 32, m_recordTableOffset);
    putU32(h + 40, std::uint32_t(m_tableSpace));
    putU32(h + 44, std::uint32_t(m_headerEnd));
    putU32(h + 48, std::uint32_t(m_blockSizeField));
    const QByteArray t = m_text.toUtf8().left(TextBytes - 1);
    std::memcpy(h + 64, t.constData(), std::size_t(t.size()));
    return m_file.Seek64(0) && m_file.Write(h, FixedHeaderSize);
}

bool CFiler::OpenFile(const QString &path, std::uint32_t magic)
{
    TerminateFile();
    m_path = path;
    m_message.clear();
    if (!m_file.Open(path, false)) {
        ReportFailure(TextCannotOpen, m_file.ErrorText());
        return false;
    }
    m_writable = false;
    unsigned char h[FixedHeaderSize] = {};
    const std::int64_t size = m_file.Size();
    if (size < FixedHeaderSize || m_file.Read(h, FixedHeaderSize) != FixedHeaderSize) {
        ReportFailure(TextNotOurFile);
        m_file.Close();
        return false;
    }
    m_magic = getU32(h);
    const std::uint32_t headerSize = getU32(h + 4);
    if ((magic != 0 ? m_magic != magic : !AcceptsMagic(m_magic)) || headerSize != FixedHeaderSize) {
        ReportFailure(TextNotOurFile);
        m_file.Close();
        return false;
    }
    m_flags = getU32(h + 8);
    m_major = std::int32_t(getU32(h + 12));
    m_minor = std::int32_t(getU32(h + 16));
    m_revision = std::int32_t(getU32(h + 20));
    m_build = std::int32_t(getU32(h + 24));
    m_recordCountField = std::int32_t(getU32(h + 28));
    m_recordTableOffset = getI64(h + 32);
    m_tableSpace = std::int32_t(getU32(h + 40));
    m_headerEnd = std::int32_t(getU32(h + 44));
    m_blockSizeField = std::int32_t(getU32(h + 48));
    const char *t = reinterpret_cast<const char *>(h + 64);
    m_text = QString::fromUtf8(t, qsizetype(strnlen(t, TextBytes)));
    // Everything the header points at must lie inside the file.
    if (m_headerEnd < FixedHeaderSize || m_headerEnd > size || m_tableSpace < 0 ||
        RecordsStart() > size || m_recordTableOffset < FixedHeaderSize || m_recordTableOffset > size) {
        ReportFailure(TextDamaged);
        m_file.Close();
        return false;
    }
    ClearRecordTable();
    if (!ReadRecordTable()) {
        if (m_message.isEmpty())
            ReportFailure(TextDamaged);
        ClearRecordTable();
        m_file.Close();
        return false;
    }
    return true;
}

bool CFiler::ReOpenFile(int write)
{
    if (!IsOpen())
        return false;
    if (!write || m_writable)
        return true;
    const std::int64_t position = m_file.Position();
    if (!m_file.Open(m_path, true)) {
        ReportFailure(TextSaveFailed, m_file.ErrorText());
        // Back to reading, so that the records stay readable.
        m_file.Open(m_path, false);
        return false;
    }
    m_writable = true;
    m_file.Seek64(position);
    return true;
}

bool CFiler::CloseFile()
{
    if (!IsOpen())
        return !m_created;
    if (!m_created) {
        bool ok = true;
        if (m_writable)
            ok = m_file.Sync();
        if (!ok)
            ReportFailure(TextSaveFailed, m_file.ErrorText());
        m_file.Close();
        m_writable = false;
        return ok;
    }
    if (!m_file.Sync()) {
        ReportFailure(TextSaveFailed, m_file.ErrorText());
        TerminateFile();
        return false;
    }
    const QString temp = m_file.FileName();
    m_file.Close();
    std::error_code error;
    std::filesystem::rename(nativePath(temp), nativePath(m_path), error);
    if (error) {
        ReportFailure(TextSaveFailed, QString::fromLocal8Bit(error.message().c_str()));
        QFile::remove(temp);
        m_created = false;
        return false;
    }
    m_created = false;
    m_writable = false;
    return true;
}

void CFiler::TerminateFile()
{
    if (m_created) {
        const QString temp = m_file.FileName();
        m_file.Close();
        if (!temp.isEmpty())
            QFile::remove(temp);
        m_created = false;
    } else {
        m_file.Close();
    }
    m_writable = false;
}

bool CFiler::WriteHeaderData(const void *data, int size)
{
    if (!IsOpen() || !m_writable || RecordCount() > 0 || size < 0)
        return false;
    if (!m_file.Seek64(FixedHeaderSize) || !m_file.Write(data, size)) {
        ReportFailure(TextSaveFailed, m_file.ErrorText());
        return false;
    }
    m_headerEnd = FixedHeaderSize + size;
    m_recordTableOffset = m_headerEnd;
    return true;
}

bool CFiler::ReadHeaderData(QByteArray &out)
{
    out.clear();
    const int size = m_headerEnd - FixedHeaderSize;
    if (!IsOpen() || size < 0)
        return false;
    out.resize(size);
    if (!m_file.Seek64(FixedHeaderSize) || m_file.Read(out.data(), size) != size) {
        out.clear();
        return false;
    }
    return true;
}

bool CFiler::AllocateRecordOffsetsSpace(int entries)
{
    if (!IsOpen() || !m_writable || RecordCount() > 0 || entries < 0)
        return false;
    const std::int64_t space = 4 + std::int64_t(entries) * RecordEntrySize();
    if (space > INT32_MAX)
        return false;
    m_tableSpace = std::int32_t(space);
    m_recordTableOffset = m_headerEnd;
    // The space is written out now, so that the first record lands behind it.
    if (!m_file.Seek64(m_headerEnd) || !m_file.WriteZeros(space)) {
        ReportFailure(TextSaveFailed, m_file.ErrorText());
        return false;
    }
    return true;
}

bool CFiler::WriteRecordOffsets()
{
    if (!IsOpen() || !m_writable)
        return false;
    QByteArray table;
    if (!EncodeRecordTable(table)) {
        if (m_message.isEmpty())
            ReportFailure(TextSaveFailed, QString());
        return false;
    }
    const std::int64_t end = RecordsEnd();
    const std::int64_t place = table.size() <= m_tableSpace ? std::int64_t(m_headerEnd) : end;
    if (!m_file.Seek64(place) || !m_file.Write(table.constData(), table.size())) {
        ReportFailure(TextSaveFailed, m_file.ErrorText());
        return false;
    }
    m_recordTableOffset = place;
    m_recordCountField = RecordCount();
    // Nothing stale behind the last record or the table.
    const std::int64_t length = std::max<std::int64_t>(end, place + table.size());
    if (m_file.Size() != length && !m_file.SetLength64(length)) {
        ReportFailure(TextSaveFailed, m_file.ErrorText());
        return false;
    }
    return true;
}

bool CFiler::WriteFilerFileHeader()
{
    if (!IsOpen() || !m_writable)
        return false;
    m_recordCountField = RecordCount();
    if (!writeFixedHeader()) {
        ReportFailure(TextSaveFailed, m_file.ErrorText());
        return false;
    }
    return true;
}
