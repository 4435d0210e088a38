// The functions that reach outside the script: message boxes, printed output,
// the log of variables, options, jobs, lists of files and other scripts; and
// the kind inspections TypeName and IsEmpty.

#include "functionstest.h"

#include "formula/rpntree.h"
#include "functions/rpnenvironmentfunctions.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct Recorder {
    QList<CRpnMessageBoxRequest> boxes;
    QStringList printed;
    QList<int> codes;
    QStringList logged;

    static void output(CEquationTree *, CRpnNode *, void *user1, void *, int, const QString &text, int code)
    {
        auto *self = static_cast<Recorder *>(user1);
        self->printed << text;
        self->codes << code;
    }
    void Attach(CEquationTree &tree, int answer)
    {
        tree.Environment().SetMessageBoxHandler([this, answer](const CRpnMessageBoxRequest &r) {
            boxes << r;
            return answer;
        });
        tree.Environment().SetOutput(&Recorder::output, this);
        tree.Environment().SetLogWindow([this](const QString &line) { logged << line; });
    }
};

// --- MessageBox --------------------------------------------------------------------------------------------

struct BoxCase {
    const char *text;
    int answer;
    std::string expect;
    const char *boxText;
    const char *title;
    unsigned type;
};

class MessageBoxCases : public ::testing::TestWithParam<BoxCase> {};

TEST_P(MessageBoxCases, ShowsAndAnswers)
{
    const BoxCase &c = GetParam();
    CEquationTree tree;
    Recorder r;
    r.Attach(tree, c.answer);
    EXPECT_EQ(Eval(c.text, &tree), c.expect) << c.text;
    ASSERT_EQ(r.boxes.size(), 1) << c.text;
    EXPECT_EQ(r.boxes[0].text.toStdString(), c.boxText);
    EXPECT_EQ(r.boxes[0].title.toStdString(), c.title);
    EXPECT_EQ(r.boxes[0].type, c.type) << c.text;
}

INSTANTIATE_TEST_SUITE_P(Cases, MessageBoxCases, ::testing::Values(
    BoxCase{"MessageBox()", RPN_ID_OK, "STRING:OK", "", "TARN", 0},
    BoxCase{"MessageBox(\"a\", 1.5, \"b\")", RPN_ID_OK, "STRING:OK", "a1.5b", "TARN", 0},
    BoxCase{"MessageBox(\"q\", BUTTON = yesno, ICON = question, TITLE = \"Keep Case\")", RPN_ID_NO, "STRING:NO",
            "q", "Keep Case", RPN_MB_YESNO | RPN_MB_ICONQUESTION},
    BoxCase{"MessageBox(BUTTONS = \" RetryCancel \", ICON = STOP, ICON = nothing)", RPN_ID_RETRY, "STRING:RETRY",
            "", "TARN", RPN_MB_RETRYCANCEL | RPN_MB_ICONSTOP},
    BoxCase{"b = \"CANCELTRYAGAINCONTINUE\"; MessageBox(BUTTON = b)", RPN_ID_TRYAGAIN, "ARRAY:{CANCELTRYAGAINCONTINUE,TRYAGAIN}",
            "", "TARN", RPN_MB_CANCELTRYCONTINUE},
    BoxCase{"MessageBox(\"x\", FOO = 1, BUTTON = \"maybe\", \"TITLE\" = \"not a key\")", RPN_ID_OK, "STRING:OK", "x", "TARN", 0},
    BoxCase{"MessageBox(\"x\", BUTTON = OKCANCEL)", RPN_ID_NONE, ":", "x", "TARN", RPN_MB_OKCANCEL},
    BoxCase{"MessageBox(\"x\", ICON = Information)", 99, ":", "x", "TARN", RPN_MB_ICONINFORMATION}));

TEST(MessageBoxFailure, AFailedTextEndsTheCallWithoutABox)
{
    CEquationTree tree;
    Recorder r;
    r.Attach(tree, RPN_ID_OK);
    EXPECT_EQ(Eval("MessageBox(\"a\", sqrt(-1))", &tree).rfind("E:", 0), 0u);
    EXPECT_TRUE(r.boxes.isEmpty());
}

// --- Print and Clear ----------------------------------------------------------------------------------------

struct PrintCase {
    const char *text;
    QStringList printed;
    QList<int> codes;
};

class PrintCases : public ::testing::TestWithParam<PrintCase> {};

TEST_P(PrintCases, GoesToTheOutput)
{
    CEquationTree tree;
    Recorder r;
    r.Attach(tree, RPN_ID_OK);
    Eval(GetParam().text, &tree);
    EXPECT_EQ(r.printed, GetParam().printed) << GetParam().text;
    EXPECT_EQ(r.codes, GetParam().codes) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Cases, PrintCases, ::testing::Values(
    PrintCase{"Print(1, 2, \"a\", 3)", {"1 2a3"}, {RPN_OUTPUT_PRINT}},
    PrintCase{"Print(1 == 1, 2.5, {1, 2}, 3)", {"1 2.5{1,2}3"}, {RPN_OUTPUT_PRINT}},
    PrintCase{"Print(\"a\", \"b\"); Print()", {"ab", ""}, {RPN_OUTPUT_PRINT, RPN_OUTPUT_PRINT}},
    PrintCase{"ScriptOption(PRECISION = 3); Print(pi, 1/3)", {"3.14 0.333"}, {RPN_OUTPUT_PRINT}},
    PrintCase{"Print(1, sqrt(-1))", {}, {}},
    PrintCase{"Clear()", {QString()}, {RPN_OUTPUT_CLEAR}}));

// --- ScriptOption and the log of variables ---------------------------------------------------------------------

struct PrecisionCase {
    const char *option;
    int precision;
};

class PrecisionCases : public ::testing::TestWithParam<PrecisionCase> {};

TEST_P(PrecisionCases, SetsTheTreesPrecision)
{
    CEquationTree tree;
    tree.m_defaultPrecision = 9;
    EXPECT_EQ(Eval(GetParam().option, &tree), ":") << GetParam().option;
    EXPECT_EQ(tree.m_defaultPrecision, GetParam().precision) << GetParam().option;
}

INSTANTIATE_TEST_SUITE_P(Cases, PrecisionCases, ::testing::Values(
    PrecisionCase{"ScriptOption(PRECISION = 5)", 5}, PrecisionCase{"ScriptOption(precision = 31)", 31},
    PrecisionCase{"ScriptOption(PRECISION = 40)", 16}, PrecisionCase{"ScriptOption(PRECISION = 0)", 16},
    PrecisionCase{"ScriptOption(\"Precision 7\")", 7}, PrecisionCase{"ScriptOption(\"PRECISION: 12\")", 12},
    PrecisionCase{"ScriptOption(\"PRECISIONS 7\")", 9}, PrecisionCase{"ScriptOption(PRECISION = \"x\")", 16}));

struct LogCase {
    const char *text;
    QStringList lines;
};

class LogCases : public ::testing::TestWithParam<LogCase> {};

TEST_P(LogCases, LogsTheChosenVariables)
{
    CEquationTree tree;
    Recorder r;
    r.Attach(tree, RPN_ID_OK);
    EXPECT_NE(Eval(GetParam().text, &tree).rfind("E:", 0), 0u) << GetParam().text;
    EXPECT_EQ(r.logged, GetParam().lines) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Cases, LogCases, ::testing::Values(
    LogCase{"a = 1; b = \"t\"; a += 2", {"a = 1", "b = t", "a = 3"}},
    LogCase{"v = {1, 2}; v[0] = 7; s = \"x\"; s += \"y\"", {"v = {1,2}", "v = {7,2}", "s = x", "s = xy"}},
    LogCase{"ScriptOption(\"NOLOG a\"); a = 1; b = 2", {"b = 2"}},
    LogCase{"ScriptOption(NOLOG = \"A, b\"); a = 1; b = 2; c = 3", {"c = 3"}},
    LogCase{"ScriptOption(\"NOLOG\"); a = 1", {}},
    LogCase{"ScriptOption(\"NOLOG\", \"LOG c\"); a = 1; c = 2", {"a = 1", "c = 2"}},
    LogCase{"ScriptOption(\"LOG c\", \"NOLOG\"); a = 1; c = 2", {}},
    LogCase{"ScriptOption(\"NO LOG *\"); a = 1", {}},
    LogCase{"ScriptOption(\"LOGOFF ALL\"); ScriptOption(\"LOG b\"); a = 1; b = 2", {"b = 2"}},
    LogCase{"ScriptOption(\"NOLOG a\"); ScriptOption(\"LOG ALL\"); a = 1", {"a = 1"}},
    LogCase{"ScriptOption(PRECISION = 3); x = pi", {"x = 3.14"}},
    LogCase{"function f(t) { u = t * 2; return u }; y = f(2)", {"u = 4", "y = 4"}}));

// --- the log file ------------------------------------------------------------------------------------------------

QByteArray utf16le(const char *ascii)
{
    QByteArray out;
    for (const char *p = ascii; *p; ++p)
        out.append(*p).append('\0');
    return out;
}

struct FileCase {
    QByteArray before;
    const char *text;
    QByteArray after;
};

class LogFileCases : public ::testing::TestWithParam<FileCase> {};

TEST_P(LogFileCases, KeepsTheFilesEncoding)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("log.txt"));
    if (!GetParam().before.isNull()) {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(GetParam().before);
    }
    QString error;
    ASSERT_TRUE(RpnAppendToLogFile(path, QString::fromUtf8(GetParam().text), error)) << error.toStdString();
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_EQ(f.readAll(), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(Cases, LogFileCases, ::testing::Values(
    FileCase{QByteArray(), "a = 1\r\n", QByteArray("\xFF\xFE", 2) + utf16le("a = 1\r\n")},
    FileCase{QByteArray(""), "x", QByteArray("\xFF\xFE", 2) + utf16le("x")},
    FileCase{QByteArray("\xFF\xFE", 2) + utf16le("a"), "b", QByteArray("\xFF\xFE", 2) + utf16le("ab")},
    FileCase{QByteArray("old\r\n"), "b = 2\r\n", QByteArray("old\r\nb = 2\r\n")},
    FileCase{QByteArray("\xFF"), "c", QByteArray("\xFF" "c")}));

TEST(LogFile, PrintAndAssignmentsReachTheFileAndAFailureIsToldOnce)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("log.txt"));
    CEquationTree tree;
    const QString text = QStringLiteral("ScriptOption(LOGFILE = \"%1\"); a = 1; Print(\"p\", 2); Clear()").arg(path);
    EXPECT_NE(Eval(text, &tree).rfind("E:", 0), 0u);
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_EQ(f.readAll(), QByteArray("\xFF\xFE", 2) + utf16le("a = 1\r\np2\r\n\r\n"));

    CEquationTree bad;
    const QString unwritable = dir.filePath(QStringLiteral("no/such/folder/log.txt"));
    EXPECT_NE(Eval(QStringLiteral("ScriptOption(LOGFILE = \"%1\"); a = 1; b = 2").arg(unwritable), &bad).rfind("E:", 0),
              0u);
    ASSERT_EQ(bad.m_warnings.size(), 1);
    EXPECT_TRUE(bad.m_warnings[0].contains(unwritable));
}

// --- Wait ---------------------------------------------------------------------------------------------------------

// A job that reports itself finished after a number of looks.
class CountedJob : public CRpnJob
{
public:
    explicit CountedJob(int runningLooks) : m_left(runningLooks) {}
    bool IsFinished() const override
    {
        ++looks;
        return m_left-- <= 0;
    }
    mutable int looks = 0;

private:
    mutable int m_left;
};

struct WaitCase {
    const char *text;
    std::vector<int> jobs; // looks each job stays running
    std::vector<int> looks;
};

class WaitCases : public ::testing::TestWithParam<WaitCase> {};

TEST_P(WaitCases, WaitsForTheJobs)
{
    CEquationTree tree;
    tree.Environment().m_waitIntervalMs = 0;
    std::vector<std::shared_ptr<CountedJob>> jobs;
    for (int n : GetParam().jobs) {
        jobs.push_back(std::make_shared<CountedJob>(n));
        tree.Environment().AddJob(jobs.back());
    }
    EXPECT_EQ(Eval(GetParam().text, &tree), ":");
    std::vector<int> looks;
    for (const auto &job : jobs)
        looks.push_back(job->looks);
    EXPECT_EQ(looks, GetParam().looks) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Cases, WaitCases, ::testing::Values(
    WaitCase{"Wait()", {}, {}},
    WaitCase{"Wait()", {0, 0}, {1, 1}},
    WaitCase{"Wait()", {2}, {3}},
    WaitCase{"Wait(0)", {1, 0}, {2, 1}},
    WaitCase{"Wait(3)", {5, 5}, {1, 1}},
    WaitCase{"Wait(2)", {1, 1}, {2, 2}}));

// --- GetFiles -------------------------------------------------------------------------------------------------------

struct WildcardCase {
    const char *filter;
    const char *name;
    bool match;
};

class WildcardCases : public ::testing::TestWithParam<WildcardCase> {};

TEST_P(WildcardCases, Match)
{
    EXPECT_EQ(RpnWildcardMatch(QString::fromUtf8(GetParam().filter), QString::fromUtf8(GetParam().name)),
              GetParam().match)
        << GetParam().filter << " on " << GetParam().name;
}

INSTANTIATE_TEST_SUITE_P(Cases, WildcardCases, ::testing::Values(
    WildcardCase{"*.TXT", "A.TXT", true}, WildcardCase{"*.TXT", "A.TXTX", false},
    WildcardCase{"*.TXT", ".TXT", true}, WildcardCase{"A*", "A", true}, WildcardCase{"", "ANY", true},
    WildcardCase{"?.T*", "B.TXT", true}, WildcardCase{"?.T*", "BB.TXT", false}, WildcardCase{"!B", "AB", true},
    WildcardCase{"A*B*C", "AXBYC", true}, WildcardCase{"A*B*C", "AXBYCD", false}, WildcardCase{"A*C", "ABCBC", true},
    WildcardCase{"A?", "A", false}, WildcardCase{"abc", "ABC", true}, WildcardCase{"*.*", "NOEXT", false},
    WildcardCase{"ÄB*", "äbc", true}, WildcardCase{"**", "", true}));

struct FilesCase {
    const char *arguments; // after the folder
    QStringList found;     // relative to the folder, "/" between parts
};

class GetFilesCases : public ::testing::TestWithParam<FilesCase> {};

TEST_P(GetFilesCases, ListsTheTree)
{
    QTemporaryDir dir;
    for (const char *name : {"a.txt", "B.TXT", "c.csv", "sub/x.txt", "sub/deep/y.txt", "other/z.dat"}) {
        const QString path = dir.filePath(QString::fromUtf8(name));
        QDir().mkpath(QFileInfo(path).path());
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    }
    const QString root = dir.path() + QDir::separator();
    CEquationTree tree;
    const CRpnData list = Value(QStringLiteral("GetFiles(\"%1\"%2)").arg(dir.path(), QString::fromUtf8(GetParam().arguments))
                                    .toUtf8().constData(), &tree);
    ASSERT_TRUE(list.IsArray());
    QStringList found;
    for (int i = 0; i < list.GetSize(); ++i)
        found << QDir::fromNativeSeparators(list.GetAt(i).GetTextValue().mid(root.size()));
    EXPECT_EQ(found, GetParam().found) << GetParam().arguments;
}

INSTANTIATE_TEST_SUITE_P(Cases, GetFilesCases, ::testing::Values(
    FilesCase{"", {"a.txt", "B.TXT", "c.csv", "other/z.dat", "sub/x.txt", "sub/deep/y.txt"}},
    FilesCase{", \"*.txt\"", {"a.txt", "B.TXT", "sub/x.txt", "sub/deep/y.txt"}},
    FilesCase{", \"*.csv\", \"?.dat\"", {"c.csv", "other/z.dat"}},
    FilesCase{", SUBFOLDERS = 0", {"a.txt", "B.TXT", "c.csv", "other", "sub"}},
    FilesCase{", \"s*\", SUBFOLDERS = 0", {"sub"}},
    FilesCase{", \"*.none\"", {}}));

TEST(GetFilesFailure, ReportsUsageAndMissingFolders)
{
    EXPECT_EQ(Eval("GetFiles(1)").rfind("E:GetFiles(1) GetFiles function needs Directory path", 0), 0u);
    CEquationTree failing;
    EXPECT_EQ(Eval("GetFiles(\".\", sqrt(-1))", &failing).rfind("E:", 0), 0u);
    ASSERT_FALSE(failing.GetErrorList().isEmpty());
    EXPECT_TRUE(failing.GetErrorList().last().contains(QStringLiteral("parameter 2. Expecting wildcard text")));
    CEquationTree tree;
    EXPECT_EQ(Eval("GetFiles(\"/no/such/folder/here\")", &tree), "ARRAY:{}");
    ASSERT_EQ(tree.m_warnings.size(), 1);
    EXPECT_TRUE(tree.m_warnings[0].contains(QStringLiteral("/no/such/folder/here")));
}

// --- LoadScript -----------------------------------------------------------------------------------------------------

struct LoadCase {
    const char *text;     // run in the folder of the files below
    std::string expect;   // an exact description, or "E:" and a part of the message
};

class LoadScriptCases : public ::testing::TestWithParam<LoadCase> {};

TEST_P(LoadScriptCases, RunsTheFile)
{
    QTemporaryDir dir;
    const std::pair<const char *, QByteArray> files[] = {
        {"child.tarn", "r = base * 2\nq = MainVariables[\"top\"]\n"},
        {"self.tarn", "LoadScript(\"self.tarn\")\n"},
        {"ping.tarn", "LoadScript(\"pong.tarn\")\n"},
        {"pong.tarn", "LoadScript(\"ping.tarn\")\n"},
        {"broken.tarn", "x = (1 +\n"},
        {"fails.tarn", "y = 1\nz = sqrt(-1)\n"},
        {"binary.tarn", QByteArray("\x00\x01\x02\x03", 4)},
        {"wide.tarn", QByteArray("\xFF\xFE", 2) + utf16le("w = 3")},
    };
    for (const auto &[name, bytes] : files) {
        QFile f(dir.filePath(QString::fromUtf8(name)));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }
    const QString previous = QDir::currentPath();
    QDir::setCurrent(dir.path());
    const std::string got = Eval(GetParam().text);
    QDir::setCurrent(previous);
    const std::string &expect = GetParam().expect;
    if (expect.rfind("E:", 0) == 0)
        EXPECT_NE(got.find(expect.substr(2)), std::string::npos) << GetParam().text << " gave " << got;
    else
        EXPECT_EQ(got, expect) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Cases, LoadScriptCases, ::testing::Values(
    LoadCase{"top = 5; d = LoadScript(\"child.tarn\", base = 4); Dict_Get(d, \"r\") + Dict_Get(d, \"q\")",
             "ARRAY:{5,{{base,4},{r,8},{q,5}},13}"},
    LoadCase{"d = LoadScript(\"child.tarn\", \"base = 1 + 2\"); Dict_Get(d, \"r\")", "ARRAY:{{{base,3},{r,6},{q,}},6}"},
    LoadCase{"p = Dictionary(); Dict_Set(p, \"base\", 10); Dict_Get(LoadScript(\"child.tarn\", p), \"r\")",
             "ARRAY:{{{base,10}},,20}"},
    LoadCase{"LoadScript(\"wide.tarn\")", "DICTIONARY:{{w,3}}"},
    LoadCase{"LoadScript()", "E:Error in function LoadScript. Parameter is missing: LoadScript(filepath)"},
    LoadCase{"LoadScript(\"none.tarn\")", "E:Error in function LoadScript(\"none.tarn\"). File does not exist."},
    LoadCase{"LoadScript(\" \")", "E:Error in function LoadScript(\"\"). File does not exist."},
    LoadCase{"LoadScript(\"binary.tarn\")", "E:LoadScript(\"binary.tarn\"). Error: the file holds bytes that are not text"},
    LoadCase{"LoadScript(\"self.tarn\")", "E:a script may not load itself"},
    LoadCase{"LoadScript(\"ping.tarn\")", "E:a script may not load itself"},
    LoadCase{"LoadScript(\"broken.tarn\")", "E:Error in file \"broken.tarn\".  Error: "},
    LoadCase{"LoadScript(\"fails.tarn\")", "E:(row 2, column 4)"},
    LoadCase{"LoadScript(\"child.tarn\", \"base = (\")", "E:LoadScript(\"child.tarn\", \"base = (\")"}));

// --- TypeName and IsEmpty ------------------------------------------------------------------------------------------------

class KindCases : public ::testing::TestWithParam<ScriptCase> {};

// "E" stands for any error.
TEST_P(KindCases, Answer)
{
    CEquationTree tree;
    tree.GetVariables()->SetAt(QStringLiteral("g"), CRpnData());
    if (*GetParam().setup) {
        EXPECT_NE(Eval(GetParam().setup, &tree).rfind("E:", 0), 0u) << GetParam().setup;
    }
    const std::string got = Eval(GetParam().text, &tree);
    if (GetParam().expect == "E")
        EXPECT_EQ(got.rfind("E:", 0), 0u) << GetParam().text << " gave " << got;
    else
        EXPECT_EQ(got, GetParam().expect) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Cases, KindCases, ::testing::Values(
    ScriptCase{"", "TypeName(1.5)", "STRING:REAL"}, ScriptCase{"", "TypeName(1 == 1)", "STRING:INT"},
    ScriptCase{"", "TypeName(\"x\")", "STRING:STRING"}, ScriptCase{"", "TypeName(Dictionary())", "STRING:DICTIONARY"},
    ScriptCase{"", "TypeName({1, \"a\"})", "STRING:ARRAY"}, ScriptCase{"", "TypeName(ArrayD(2, 0, 1))", "STRING:ARRAY_R"},
    ScriptCase{"", "TypeName(Complex(1, 2))", "STRING:COMPLEX"},
    ScriptCase{"", "TypeName(XML_New(\"a\"))", "STRING:XML"}, ScriptCase{"", "TypeName(NULL)", "STRING:"},
    ScriptCase{"", "TypeName(sqrt(-1))", "E"},
    ScriptCase{"", "IsEmpty(NULL)", "INT:1"}, ScriptCase{"", "IsNull({})", "INT:0"},
    ScriptCase{"", "IsEmpty(\"\")", "INT:0"},
    ScriptCase{"x = XML_New(\"a\")", "IsEmpty(XML_FindChild(x, \"b\"))", "INT:1"},
    ScriptCase{"", "IsEmpty(sqrt(-1))", "E"}));

} // namespace
