#include "support/stdiofilea.h"

#include "support/fileexception.h"

#include <cerrno>
#include <cstring>

CStdioFileA::~CStdioFileA()
{
    Close();
}

bool CStdioFileA::Open(const QString &path, const char *mode)
{
    Close();
    m_path = path;
    errno = 0;
    m_file = std::fopen(path.toLocal8Bit().constData(), mode);
    m_lastError = m_file ? 0 : errno;
    return m_file != nullptr;
}

void CStdioFileA::OpenOrThrow(const QString &path, const char *mode)
{
    if (!Open(path, mode))
        throw CFileException(CFileException::CauseFromErrno(m_lastError), m_lastError, path);
}

void CStdioFileA::Close()
{
    if (m_file) {
        std::fclose(m_file);
        m_file = nullptr;
    }
}

bool CStdioFileA::ReadString(std::string &text)
{
    text.clear();
    if (!m_file)
        return false;
    // Pieces of 128 characters until one is shorter or ends in a line feed.
    char piece[129];
    bool any = false;
    for (;;) {
        errno = 0;
        if (!std::fgets(piece, sizeof piece, m_file)) {
            if (std::ferror(m_file)) {
                const int err = errno ? errno : EIO;
                std::clearerr(m_file);
                throw CFileException(CFileException::CauseFromErrno(err), err, m_path);
            }
            break;
        }
        any = true;
        const std::size_t n = std::strlen(piece);
        text.append(piece, n);
        if (n < 128 || piece[n - 1] == '\n')
            break;
        text.reserve(text.size() + 138);
    }
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    return any;
}

void CStdioFileA::WriteString(const std::string &text)
{
    Write(text.data(), int(text.size()));
}

void CStdioFileA::Write(const void *bytes, int size)
{
    if (!m_file || size <= 0)
        return;
    if (std::fwrite(bytes, 1, std::size_t(size), m_file) != std::size_t(size)) {
        const int err = errno ? errno : EIO;
        throw CFileException(CFileException::CauseFromErrno(err), err, m_path);
    }
}

void CStdioFileA::SeekToBegin()
{
    if (m_file)
        std::rewind(m_file);
}

void CStdioFileA::Flush()
{
    if (m_file)
        std::fflush(m_file);
}
