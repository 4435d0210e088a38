#include "support/fileexception.h"

#include <cerrno>
#include <cstring>

CFileException::CFileException(Cause cause, int osError, const QString &fileName)
    : m_cause(cause), m_osError(osError), m_fileName(fileName)
{
    m_what = GetErrorMessage().toUtf8();
}

CFileException::Cause CFileException::CauseFromErrno(int osError)
{
    switch (osError) {
    case 0: return None;
    case ENOENT: return FileNotFound;
    case ENOTDIR:
    case ENAMETOOLONG: return BadPath;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR: return AccessDenied;
    case ENOSPC: return DiskFull;
    default: return Generic;
    }
}

QString CFileException::GetErrorMessage() const
{
    const QString reason = m_osError ? QString::fromLocal8Bit(std::strerror(m_osError))
                                     : QStringLiteral("unknown error");
    if (m_cause == EndOfFile)
        return QStringLiteral("An attempt was made to read past the end of %1.").arg(m_fileName);
    return QStringLiteral("The file %1 could not be accessed: %2.").arg(m_fileName, reason);
}
