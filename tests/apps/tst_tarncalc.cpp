// tarn-calc run as a user runs it: script files with their arguments, scripts
// that load other scripts, log to a file and list a folder tree, errors with
// their place, and (where the system has pseudo-terminals) the interactive
// prompt typed into line by line.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#if defined(__linux__)
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
#define TARN_TEST_PTY 1
#endif

namespace {

struct FileText {
    const char *name;
    QByteArray bytes;
};

// Files every case finds in its folder.  A script's value (the values of
// its statements) is printed after what it printed itself.
const FileText kFiles[] = {
    {"lib.tarn", "s = n * (n + 1) / 2\nlabel = \"sum to \" + String(n)\n"},
    {"main.tarn", "d = LoadScript(\"lib.tarn\", n = 4)\nPrint(Dict_Get(d, \"label\"), \": \", Dict_Get(d, \"s\"))\n"
                  "NULL\n"},
    {"log.tarn", "ScriptOption(LOGFILE = \"run.log\", \"NOLOG hidden\")\na = 1\nhidden = 2\nb = a + 1\nPrint(\"done\")\n"},
    {"files.tarn", "list = GetFiles(\"tree\", \"*.txt\")\nPrint(SizeOf(list))\nNULL\n"},
    {"args.tarn", "Print(SizeOf(Arguments), \" \", Arguments[1])\nNULL\n"},
    {"bad.tarn", "x = 1\ny = sqrt(-1)\n"},
    {"tabbed.tarn", "\tz =\tsqrt(-1)\n"},
    {"tree/a.txt", ""},
    {"tree/b.dat", ""},
    {"tree/sub/c.txt", ""},
};

struct RunCase {
    QStringList arguments;
    const char *out;        // all of standard output
    const char *errorPart;  // a part of standard error ("" for none at all)
    int exitCode;
};

class TarnCalcRuns : public ::testing::TestWithParam<RunCase> {};

TEST_P(TarnCalcRuns, PrintsAndFails)
{
    QTemporaryDir dir;
    for (const FileText &f : kFiles) {
        const QString path = dir.filePath(QString::fromUtf8(f.name));
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(f.bytes);
    }
    QProcess p;
    p.setWorkingDirectory(dir.path());
    p.start(QStringLiteral(TARN_CALC), GetParam().arguments);
    p.closeWriteChannel();
    ASSERT_TRUE(p.waitForFinished(60000));
    const QString out = QString::fromUtf8(p.readAllStandardOutput());
    const QString err = QString::fromUtf8(p.readAllStandardError());
    const QString args = GetParam().arguments.join(u' ');
    EXPECT_EQ(out.toStdString(), GetParam().out) << args.toStdString();
    if (*GetParam().errorPart)
        EXPECT_TRUE(err.contains(QString::fromUtf8(GetParam().errorPart))) << args.toStdString() << "\n" << err.toStdString();
    else
        EXPECT_TRUE(err.isEmpty()) << args.toStdString() << "\n" << err.toStdString();
    EXPECT_EQ(p.exitCode(), GetParam().exitCode) << args.toStdString();

    if (args == u"log.tarn") {
        // The log, read back: UTF-16 after FF FE, the hidden variable left out.
        QFile log(dir.filePath(QStringLiteral("run.log")));
        ASSERT_TRUE(log.open(QIODevice::ReadOnly));
        const QByteArray bytes = log.readAll();
        ASSERT_TRUE(bytes.startsWith("\xFF\xFE"));
        const QString text = QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData() + 2),
                                                (bytes.size() - 2) / 2);
        EXPECT_EQ(text.toStdString(), "a = 1\r\nb = 2\r\ndone\r\n");
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, TarnCalcRuns, ::testing::Values(
    RunCase{{"main.tarn"}, "sum to 4: 10\n{{{n,4},{s,10},{label,sum to 4}},,}\n", "", 0},
    RunCase{{"log.tarn"}, "done\n{,1,2,2,}\n", "", 0},
    RunCase{{"files.tarn"}, "2\n{{tree/a.txt,tree/sub/c.txt},,}\n", "", 0},
    RunCase{{"args.tarn", "one", "two words"}, "2 two words\n{,}\n", "", 0},
    RunCase{{"-e", "Print(1, 2, \"a\", 3)"}, "1 2a3\n", "", 0},
    RunCase{{"-e", "MessageBox(\"Sure?\", BUTTON = YESNO, TITLE = \"Check\")"}, "Check: Sure?\nYES\n", "", 0},
    RunCase{{"bad.tarn"}, "", "\n  in bad.tarn at row 2, col 4:\n  2 | y = sqrt(-1)\n    |     ^\n", 1},
    RunCase{{"tabbed.tarn"}, "", "  1 | \tz =\tsqrt(-1)\n    | \t   \t^\n", 1},
    RunCase{{"-e", "a = 1; SubStr()"}, "",
            "Error: SubStr failed without giving a reason: a parameter may be missing or of a kind it cannot take."
            "  at row: 1   col = 7  \n  in -e at row 1, col 7:\n  1 | a = 1; SubStr()\n    |        ^\n", 1},
    // An error inside a formula names its place in the formula, then the
    // place in the script, each once.
    RunCase{{"-e", "x = Eval(\"1+\")"}, "",
            "Error: An operator is missing its operand.  at row: 1   col = 1  \n  in -e at row 1, col 4:\n"
            "  1 | x = Eval(\"1+\")\n    |     ^\n", 1},
    RunCase{{"-e", "LoadScript(\"missing.tarn\")"}, "", "Error in function LoadScript(\"missing.tarn\"). File does not exist.",
            1}));

#if defined(TARN_TEST_PTY)

// tarn-calc on the other side of a pseudo-terminal.
class Session
{
public:
    explicit Session(const QByteArray &historyFile)
    {
        m_pid = forkpty(&m_fd, nullptr, nullptr, nullptr);
        if (m_pid == 0) {
            setenv("TERM", "dumb", 1);
            setenv("TARN_CALC_HISTORY", historyFile.constData(), 1);
            execl(TARN_CALC, TARN_CALC, static_cast<char *>(nullptr));
            _exit(127);
        }
    }
    ~Session()
    {
        if (m_pid > 0) {
            kill(m_pid, SIGKILL);
            waitpid(m_pid, nullptr, 0);
        }
        if (m_fd >= 0)
            close(m_fd);
    }
    bool Started() const { return m_pid > 0; }
    void Type(const QByteArray &keys) { ASSERT_EQ(write(m_fd, keys.constData(), size_t(keys.size())), keys.size()); }
    // Reads until `text` has come after what was read before; false when
    // the program ends or stays silent for a long while first.
    bool Expect(const QByteArray &text)
    {
        for (;;) {
            const qsizetype at = m_output.indexOf(text, m_seen);
            if (at >= 0) {
                m_seen = at + text.size();
                return true;
            }
            pollfd p{m_fd, POLLIN, 0};
            if (poll(&p, 1, 30000) <= 0)
                return false;
            char buffer[4096];
            const ssize_t n = read(m_fd, buffer, sizeof buffer);
            if (n <= 0)
                return false;
            m_output.append(buffer, n);
        }
    }
    // Ends the input and returns the exit status.
    int Finish()
    {
        Type("\x04");
        while (Expect("\x01never")) {
        }
        int status = 0;
        waitpid(m_pid, &status, 0);
        m_pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    const QByteArray &Output() const { return m_output; }

private:
    pid_t m_pid = -1;
    int m_fd = -1;
    QByteArray m_output;
    qsizetype m_seen = 0;
};

struct Exchange {
    QByteArray typed;
    QByteArray answer; // what must appear after it
};

struct SessionCase {
    const char *name;
    std::vector<Exchange> steps;
};

class TarnCalcPrompt : public ::testing::TestWithParam<SessionCase> {};

TEST_P(TarnCalcPrompt, AnswersEachEntry)
{
    QTemporaryDir dir;
    Session s(QFile::encodeName(dir.filePath(QStringLiteral("history"))));
    ASSERT_TRUE(s.Started());
    ASSERT_TRUE(s.Expect("> "));
    for (const Exchange &e : GetParam().steps) {
        s.Type(e.typed);
        EXPECT_TRUE(s.Expect(e.answer)) << GetParam().name << ": after " << e.typed.toStdString() << " no "
                                        << e.answer.toStdString() << " in\n" << s.Output().toStdString();
    }
    EXPECT_EQ(s.Finish(), 0);
}

INSTANTIATE_TEST_SUITE_P(Cases, TarnCalcPrompt, ::testing::Values(
    SessionCase{"variables", {{"a = 2\n", "2\r\n> "}, {"a * 3\n", "6\r\n> "}}},
    SessionCase{"print", {{"Print(\"hi\", 1)\n", "hi1\r\n> "}, {"ScriptOption(PRECISION = 3)\n", "> "},
                          {"pi\n", "3.14\r\n> "}}},
    SessionCase{"open brackets", {{"f = {1,\n", ". "}, {"2}\n", "{1,2}\r\n> "}}},
    SessionCase{"block of prints", {{"if (1) {\n", ". "}, {"Print(\"in\")\n", ". "}, {"}\n", "in\r\n> "},
                                    {"\"\"\n", "\r\n> "}}},
    SessionCase{"error", {{"1 +\n", "Error: "}, {"", "  1 | 1 +\r\n    |   ^\r\n> "}, {"5\n", "5\r\n> "}}},
    SessionCase{"message box", {{"MessageBox(\"Go on?\", BUTTON = YESNOCANCEL)\n", "[Y]es [N]o [C]ancel? "},
                                {"n\n", "NO\r\n> "}}}));

#if defined(TARN_HAVE_READLINE)
TEST(TarnCalcPrompt, RecallsEarlierEntriesAcrossSessions)
{
    QTemporaryDir dir;
    const QByteArray history = QFile::encodeName(dir.filePath(QStringLiteral("history")));
    {
        Session s(history);
        ASSERT_TRUE(s.Expect("> "));
        s.Type("21 * 2\n");
        ASSERT_TRUE(s.Expect("42\r\n> "));
        s.Type("\x1b[A\n"); // the arrow up: the entry before
        EXPECT_TRUE(s.Expect("42\r\n> ")) << s.Output().toStdString();
        EXPECT_EQ(s.Finish(), 0);
    }
    Session again(history);
    ASSERT_TRUE(again.Expect("> "));
    again.Type("\x1b[A\n");
    EXPECT_TRUE(again.Expect("42\r\n> ")) << again.Output().toStdString();
    EXPECT_EQ(again.Finish(), 0);
}
#endif

#endif

} // namespace
