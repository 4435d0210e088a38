#pragma once
// The lines of the interactive prompt: read with line editing and a history
// kept between sessions when the program was built with GNU readline, else
// as plain lines from standard input.

#include <QString>

class CLineInput
{
public:
    CLineInput();
    ~CLineInput();
    CLineInput(const CLineInput &) = delete;
    CLineInput &operator=(const CLineInput &) = delete;

    // Shows `prompt` and reads one line (without its line end); false at the
    // end of the input.
    bool Read(const QString &prompt, QString &line);
    // Adds an entry (one or more lines) to the history.
    void Remember(const QString &entry);
    // True when lines are edited with readline.
    static bool HasLineEditing();

private:
    QString m_historyFile;
};
