#pragma once
// The failure of a file operation, with the operating system's error number
// and a report a person can read.

#include <QString>
#include <exception>

class CFileException : public std::exception
{
public:
    enum Cause { None = 0, Generic, FileNotFound, BadPath, AccessDenied, EndOfFile, DiskFull };

    CFileException(Cause cause, int osError, const QString &fileName);

    const char *what() const noexcept override { return m_what.constData(); }
    // For example: "The file /tmp/a.txt could not be opened: No such file or directory."
    QString GetErrorMessage() const;

    // The cause that goes with an errno value.
    static Cause CauseFromErrno(int osError);

    Cause m_cause;
    int m_osError;
    QString m_fileName;

private:
    QByteArray m_what;
};
