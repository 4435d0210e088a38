#include "lineinput.h"

#include <QDir>
#include <QFile>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#if defined(TARN_HAVE_READLINE)
#include <QLibrary>
#include <readline/history.h>
#include <readline/readline.h>
#endif

namespace {

#if defined(TARN_HAVE_READLINE)
// GNU readline is loaded when the prompt first needs it, not with the
// program: a run of a script or of a text never reads lines, and loading it
// (with its terminal library) would cost every such run their pages.
struct Readline
{
    decltype(&::readline) read = nullptr;
    decltype(&::add_history) addHistory = nullptr;
    decltype(&::stifle_history) stifleHistory = nullptr;
    decltype(&::read_history) readHistory = nullptr;
    decltype(&::write_history) writeHistory = nullptr;
    decltype(&::rl_bind_key) bindKey = nullptr;
    rl_command_func_t *insert = nullptr;
    bool loaded = false;
};

const Readline &readlineLibrary()
{
    static const Readline library = [] {
        Readline r;
        QLibrary lib(QStringLiteral("readline"), RL_VERSION_MAJOR);
        if (!lib.load())
            return r;
        r.read = reinterpret_cast<decltype(r.read)>(lib.resolve("readline"));
        r.addHistory = reinterpret_cast<decltype(r.addHistory)>(lib.resolve("add_history"));
        r.stifleHistory = reinterpret_cast<decltype(r.stifleHistory)>(lib.resolve("stifle_history"));
        r.readHistory = reinterpret_cast<decltype(r.readHistory)>(lib.resolve("read_history"));
        r.writeHistory = reinterpret_cast<decltype(r.writeHistory)>(lib.resolve("write_history"));
        r.bindKey = reinterpret_cast<decltype(r.bindKey)>(lib.resolve("rl_bind_key"));
        r.insert = reinterpret_cast<rl_command_func_t *>(lib.resolve("rl_insert"));
        r.loaded = r.read && r.addHistory && r.stifleHistory && r.readHistory && r.writeHistory && r.bindKey
            && r.insert;
        return r; // the library stays loaded: QLibrary unloads only when asked
    }();
    return library;
}
#endif

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
    return readlineLibrary().loaded;
#else
    return false;
#endif
}

CLineInput::CLineInput() : m_historyFile(historyFile())
{
#if defined(TARN_HAVE_READLINE)
    if (const Readline &rl = readlineLibrary(); rl.loaded) {
        // Names of the language are words with "_" and "."; no file names are completed.
        rl.bindKey('\t', rl.insert);
        rl.stifleHistory(kHistoryLines);
        if (!m_historyFile.isEmpty())
            rl.readHistory(QFile::encodeName(m_historyFile).constData());
    }
#endif
}

CLineInput::~CLineInput()
{
#if defined(TARN_HAVE_READLINE)
    if (const Readline &rl = readlineLibrary(); rl.loaded && !m_historyFile.isEmpty())
        rl.writeHistory(QFile::encodeName(m_historyFile).constData());
#endif
}

bool CLineInput::Read(const QString &prompt, QString &line)
{
#if defined(TARN_HAVE_READLINE)
    if (const Readline &rl = readlineLibrary(); rl.loaded) {
        char *read = rl.read(prompt.toUtf8().constData());
        if (!read)
            return false;
        line = QString::fromUtf8(read);
        std::free(read);
        return true;
    }
#endif
    std::fputs(prompt.toUtf8().constData(), stdout);
    std::fflush(stdout);
    std::string text;
    if (!std::getline(std::cin, text))
        return false;
    line = QString::fromUtf8(text.data(), qsizetype(text.size()));
    if (line.endsWith(u'\r'))
        line.chop(1);
    return true;
}

void CLineInput::Remember(const QString &entry)
{
#if defined(TARN_HAVE_READLINE)
    if (const Readline &rl = readlineLibrary(); rl.loaded)
        rl.addHistory(entry.toUtf8().constData());
#else
    (void)entry;
#endif
}
