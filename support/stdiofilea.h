#pragma once
// A C-runtime file read and written as narrow text.

#include <QString>
#include <cstdio>
#include <string>

class CStdioFileA
{
public:
    CStdioFileA() = default;
    CStdioFileA(const CStdioFileA &) = delete;
    CStdioFileA &operator=(const CStdioFileA &) = delete;
    virtual ~CStdioFileA();

    // fopen modes ("r", "rb", "r+b", ...).  False, with errno kept in
    // LastError(), when the file cannot be opened.
    bool Open(const QString &path, const char *mode);
    // Like Open, but failure raises CFileException.
    void OpenOrThrow(const QString &path, const char *mode);
    void Close();
    bool IsOpen() const { return m_file != nullptr; }
    int LastError() const { return m_lastError; }
    const QString &GetFilePath() const { return m_path; }

    // One line without its line feed.  False at the end of the file with
    // nothing read; a read error raises CFileException.
    bool ReadString(std::string &text);
    void WriteString(const std::string &text);
    void Write(const void *bytes, int size);
    void SeekToBegin();
    void Flush();

    std::FILE *m_file = nullptr;

private:
    QString m_path;
    int m_lastError = 0;
};
