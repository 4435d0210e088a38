#include "lineinput.h"

#include <QDir>
#include <QFile>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#if defined(TARN_HAVE_READLINE)
#include <readline/history.h>
#include <readline/readline.h>
#endif

namespace {

// The history of the prompt lives in the user's home folder; TARN_CALC_HISTORY
// names another file (or, empty, none).
QString historyFile()
{
    if (const char *own = std::getenv("TARN_CALC_HISTORY"))
        return QString::fromLocal8Bit(own);
    return QDir::home().filePath(QStringLiteral(".tarn-calc_history"));
}

constexpr int kHistoryLines = 1000;

} // namespace

bool CLineInput::HasLineEditing()
{
#if defined(TARN_HAVE_READLINE)
    return true;
#else
    return false;
#endif
}

CLineInput::CLineInput() : m_historyFile(historyFile())
{
#if defined(TARN_HAVE_READLINE)
    // Names of the language are words with "_" and "."; no file names are completed.
    rl_bind_key('\t', rl_insert);
    stifle_history(kHistoryLines);
    if (!m_historyFile.isEmpty())
        read_history(QFile::encodeName(m_historyFile).constData());
#endif
}

CLineInput::~CLineInput()
{
#if defined(TARN_HAVE_READLINE)
    if (!m_historyFile.isEmpty())
        write_history(QFile::encodeName(m_historyFile).constData());
#endif
}

bool CLineInput::Read(const QString &prompt, QString &line)
{
#if defined(TARN_HAVE_READLINE)
    char *read = readline(prompt.toUtf8().constData());
    if (!read)
        return false;
    line = QString::fromUtf8(read);
    std::free(read);
    return true;
#else
    std::fputs(prompt.toUtf8().constData(), stdout);
    std::fflush(stdout);
    std::string text;
    if (!std::getline(std::cin, text))
        return false;
    line = QString::fromUtf8(text.data(), qsizetype(text.size()));
    if (line.endsWith(u'\r'))
        line.chop(1);
    return true;
#endif
}

void CLineInput::Remember(const QString &entry)
{
#if defined(TARN_HAVE_READLINE)
    add_history(entry.toUtf8().constData());
#else
    (void)entry;
#endif
}
