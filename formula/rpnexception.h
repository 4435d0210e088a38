#pragma once
// Errors of the formula language.
//
// An error normally travels as the status byte (0 failed) plus the error
// fields of the tree that runs: the first error wins, later ones leave the
// fields alone.  Scripts and trees in throwing mode get an exception as well.
// Exceptions are thrown by value and caught by reference; nothing is deleted
// by the catcher.  std::exception is the common base that a general catch
// takes (file errors included).

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <exception>

class CRpnException : public std::exception
{
public:
    CRpnException(const QString &message, const QString &token, int row, int col);

    const char *what() const noexcept override { return m_what.constData(); }
    // The message as a catcher reads it: at most 999 characters.
    QString GetErrorMessage() const;

    QString token;
    QString message;
    std::int32_t row;
    std::int32_t col;

private:
    QByteArray m_what;
};

// Raised on purpose by a script (`Error`, `#error`).
class CRpnErrorException : public CRpnException
{
public:
    using CRpnException::CRpnException;
};

[[noreturn]] void ThrowRpnException(const QString &message, const QString &token, int row, int col);
[[noreturn]] void ThrowRpnErrorException(const QString &message, const QString &token, int row, int col);

// The text of message `id` from the language file.
QString GetMessageText(int id);

// printf-style formatting of message texts: %s takes the next argument as
// text, %i, %d and %u as an integer, %c as one character, %% is a percent
// sign.  Surplus arguments are ignored; a missing one prints as nothing.
class CRpnFormatArg
{
public:
    CRpnFormatArg(const QString &text) : m_text(text) {}
    CRpnFormatArg(const char *text) : m_text(QString::fromUtf8(text)) {}
    CRpnFormatArg(QChar c) : m_text(c) {}
    CRpnFormatArg(int value) : m_text(QString::number(value)) {}
    CRpnFormatArg(unsigned value) : m_text(QString::number(value)) {}
    CRpnFormatArg(std::int64_t value) : m_text(QString::number(value)) {}
    const QString &Text() const { return m_text; }

private:
    QString m_text;
};
QString RpnFormat(const QString &pattern, std::initializer_list<CRpnFormatArg> args);
// Message `id` formatted with `args`.
QString RpnMessage(int id, std::initializer_list<CRpnFormatArg> args = {});

// The line of `text` that holds `position`, and under it a line that marks
// the position with "^" (tabs kept, so that the mark lines up).
QString FormatPosition(const QString &text, int position);

// The error fields that every tree carries, in this order.  Whatever reports
// an error (the scanner, the parser, any node at run time) goes through
// ReportError, which follows one pattern:
//   1. the status byte goes to 0;
//   2. only while no message is stored: the message, its row, column and the
//      offending token are stored;
//   3. in throwing mode a CRpnException with the stored fields is raised.
class CRpnErrorFields
{
public:
    virtual ~CRpnErrorFields() = default;

    void ReportError(unsigned char &status, const QString &message, const QString &token,
                     int row, int col);
    void ReportError(unsigned char &status, int messageId, std::initializer_list<CRpnFormatArg> args,
                     const QString &token, int row, int col);
    // Forgets the error: row and column -1, texts empty (after `Catch`).
    void ResetError();
    bool HasError() const { return !errorText.isEmpty(); }

    const QString &GetErrorMessage() const { return errorText; }
    const QString &GetErrorToken() const { return errorToken; }
    int GetErrorRow() const { return errorRow; }
    int GetErrorCol() const { return errorCol; }

    // A step that failed without a message (a function given too little,
    // say): the first such node's name and place, kept only while no error
    // is stored, so that a host can still tell the user where the run
    // stopped.  ResetError forgets it too.
    void NoteSilentFailure(const QString &name, int row, int col)
    {
        if (errorText.isEmpty() && silentName.isEmpty()) {
            silentName = name;
            silentRow = row;
            silentCol = col;
        }
    }

    std::int32_t errorRow = -1;
    std::int32_t errorCol = -1;
    QString errorToken;
    QString errorText;
    std::int32_t throwOnError = 0;
    QString silentName;
    std::int32_t silentRow = -1;
    std::int32_t silentCol = -1;
};

// The reporter for code that may run without a tree: with `tree` null only
// the status changes.
void ReportRpnError(CRpnErrorFields *tree, unsigned char &status, const QString &message,
                    const QString &token, int row, int col);

// The fixed formats of a message handed from an inner run to the outer tree,
// and of the guarded run.  Both are kept exactly, spaces included.
inline constexpr const char *RPN_INNER_ERROR_FORMAT = "Error: %s  at row: %i   col = %i  ";
inline constexpr const char *RPN_GUARDED_ERROR_FORMAT = "Error:  %s at Row: %i   Col: %i";
