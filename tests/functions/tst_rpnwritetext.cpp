// Writing compiled trees back as source: the text compiles again to a tree
// that writes the same text and gives the same value.  Checked over chosen
// cases, over every script and formula literal of the language tests, and
// over random formulas of every node class (seeded, so a failure repeats).

#include "formula/rpnnodes.h"
#include "formula/rpntree.h"
#include "formulatest.h"
#include "functionstest.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

// A tree that knows a, b and c (1, 2, 3) and lets other names be used
// before they are set.
void Prepare(CEquationTree &tree)
{
    tree.m_freeVariables = 1;
    tree.SetVariable(QStringLiteral("a"), CRpnData(1.0));
    tree.SetVariable(QStringLiteral("b"), CRpnData(2.0));
    tree.SetVariable(QStringLiteral("c"), CRpnData(3.0));
}

// Messages quote the source line with a mark under the column; the written
// text has other lines, so the quotations are left out when values are
// compared: every line of `text` and every mark line.
std::string WithoutQuotedLines(QString described, const QString &text)
{
    if (!described.contains(u'\n'))
        return described.toStdString();
    described.remove(u'\r');
    QStringList lines = text.split(u'\n');
    std::sort(lines.begin(), lines.end(), [](const QString &x, const QString &y) { return x.size() > y.size(); });
    for (const QString &line : lines) {
        const QString trimmed = line.trimmed();
        if (trimmed.size() > 3)
            described.replace(trimmed, QStringLiteral("<line>"));
    }
    static const QRegularExpression mark(QStringLiteral("\n *\\^"));
    static const QRegularExpression indent(QStringLiteral(" *<line>"));
    described.replace(mark, QString());
    described.replace(indent, QStringLiteral("<line>"));
    return described.toStdString();
}

QString Written(const CEquationTree &tree)
{
    QString out;
    tree.GetFormulaText(out);
    return out;
}

// The outcome of one run in a fresh tree: "ok:" and the value, or "failed".
std::string Outcome(const QString &text)
{
    CEquationTree tree;
    Prepare(tree);
    if (!tree.Compile(text))
        return "no compile";
    CRpnData value;
    try {
        if (!tree.Run(value))
            return "failed";
    } catch (const std::exception &e) {
        return std::string("threw ") + e.what();
    }
    return "ok:" + WithoutQuotedLines(QString::fromStdString(Describe(value)), text);
}

// Print, compile, print: the second text is the first, and a text whose
// value is the same on every run gives that value again.  Returns an empty
// text when it holds, else what went wrong; a source that does not compile
// is passed over (empty as well).
std::string RoundTrip(const QString &source)
{
    CEquationTree first;
    Prepare(first);
    if (!first.Compile(source))
        return {};
    const QString text = Written(first);
    CEquationTree second;
    Prepare(second);
    if (!second.Compile(text))
        return "written text does not compile (" + second.GetErrorMessage().toStdString() + " at " +
               std::to_string(second.GetErrorRow()) + "," + std::to_string(second.GetErrorCol()) +
               "): " + text.toStdString() + "\nsource: " + source.toStdString();
    const QString again = Written(second);
    if (again != text)
        return "not a fixed point:\n" + text.toStdString() + "\n--\n" + again.toStdString() + "\nsource: " +
               source.toStdString();
    const std::string a = Outcome(source), b = Outcome(source);
    if (a != b)
        return {}; // the value changes from run to run (random numbers, the clock)
    const std::string c = Outcome(text);
    if (c != a)
        return "value " + c + " instead of " + a + " for " + text.toStdString() + "\nsource: " +
               source.toStdString();
    return {};
}

struct WriteCase {
    const char *source;
    const char *written;
};

class WriteTextCase : public ::testing::TestWithParam<WriteCase> {};

TEST_P(WriteTextCase, WritesExpectedText)
{
    const WriteCase &c = GetParam();
    CEquationTree tree;
    Prepare(tree);
    ASSERT_EQ(tree.Compile(QString::fromUtf8(c.source)), 1) << c.source;
    EXPECT_EQ(Written(tree).toStdString(), c.written);
    EXPECT_EQ(RoundTrip(QString::fromUtf8(c.source)), "");
}

INSTANTIATE_TEST_SUITE_P(Nodes, WriteTextCase, ::testing::Values(
    WriteCase{"y = (a+b)*c", "y=(a+b)*c"},
    WriteCase{"a+b*c", "a+b*c"},
    WriteCase{"a-(b-c)", "a-(b-c)"},
    WriteCase{"y = (a-b)-c", "y=a-b-c"},
    WriteCase{"(a+b)*c", "(a+b)*c"},
    WriteCase{"(1,2)*c", "{1,2}*c"},
    WriteCase{"2^(3^2)", "2^(3^2)"},
    WriteCase{"10k", "10k"},
    WriteCase{"", ""},
    WriteCase{"a <> b", "a!=b"},
    WriteCase{"x = -3; -x; -(-x)", "{x=-3; \r\n-x; \r\n-(-x)}"},
    WriteCase{"1 - -2", "1-(-2)"},
    WriteCase{"-(2.5k) + -2.5k", "-(2.5k)+(-2.5k)"},
    WriteCase{"\"say \" + '\"hi\"'", "\"say \"+'\"hi\"'"},
    WriteCase{"{1, NULL, \"t\"}", "{1,NULL,\"t\"}"},
    WriteCase{"i = 1; i++; --i", "{i=1; \r\ni++; \r\n--i}"},
    WriteCase{"x = {}; {1, {}}", "{x={}; \r\n{1,{}}}"},
    WriteCase{"v = {1,2}; v[1] += 4", "{v={1,2}; \r\nv[1]+=4}"},
    WriteCase{"iif(1 > 2, 3, 4)", "iif(1>2,3,4)"},
    WriteCase{"x = 0; if (x) { 1 } else { 2 }", "{x=0; \r\nif(x)\r\n{\r\n1\r\n}\r\nelse\r\n{\r\n2\r\n}\r\n}"},
    WriteCase{"n = 0; while (n < 3) { n += 1 }", "{n=0; \r\nwhile(n<3)\r\n{\r\nn+=1\r\n}\r\n}"},
    WriteCase{"Catch(Error(\"x\")) { GetLastError() }", "Catch(Error(\"x\"))\r\n{\r\nGetLastError()\r\n}\r\n"},
    WriteCase{"function twice(x, _ref y, k = 2) { y = x * k }\nz = 0; twice(3, z); z",
              "Function twice(x, _ref y, k = 2)\r\n{\r\ny=x*k\r\n}\r\n{z=0; \r\ntwice(3,z); \r\nz}"}));

// Every source the language tests compile: the scripts, and the formula
// literals handed to the test helpers.
std::vector<QString> Corpus()
{
    std::vector<QString> sources;
    const QString root = QStringLiteral(TARN_SOURCE_DIR "/tests");
    for (const char *folder : {"formula", "functions"}) {
        QDir scripts(root + u'/' + QLatin1String(folder) + QStringLiteral("/scripts"));
        for (const QString &name : scripts.entryList({QStringLiteral("*.tarn")}, QDir::Files)) {
            QFile f(scripts.filePath(name));
            if (f.open(QIODevice::ReadOnly))
                sources.push_back(QString::fromUtf8(f.readAll()));
        }
        QDir tests(root + u'/' + QLatin1String(folder));
        static const QRegularExpression literal(
            QStringLiteral(R"((?:Calculate|Eval|Value)\(\s*"((?:[^"\\]|\\.)*)\")"));
        for (const QString &name : tests.entryList({QStringLiteral("tst_*.cpp")}, QDir::Files)) {
            QFile f(tests.filePath(name));
            if (!f.open(QIODevice::ReadOnly))
                continue;
            const QString code = QString::fromUtf8(f.readAll());
            for (auto it = literal.globalMatch(code); it.hasNext();) {
                QString s = it.next().captured(1);
                s.replace(QStringLiteral("\\\""), QStringLiteral("\""));
                s.replace(QStringLiteral("\\n"), QStringLiteral("\n"));
                s.replace(QStringLiteral("\\\\"), QStringLiteral("\\"));
                sources.push_back(s);
            }
        }
    }
    return sources;
}

TEST(WriteText, EveryTestFormulaRoundTrips)
{
    const std::vector<QString> sources = Corpus();
    ASSERT_GT(sources.size(), 50u); // the corpus was found
    int failures = 0;
    for (const QString &source : sources) {
        const std::string problem = RoundTrip(source);
        if (!problem.empty() && ++failures <= 20)
            ADD_FAILURE() << problem;
    }
    EXPECT_EQ(failures, 0);
}

// Random formulas over the node classes: values, operators, assignments,
// indexing, lists, functions of one, two and many arguments, iif, IF, WHILE,
// Catch, the reporters, and formulas built, substituted and evaluated.
class Generator
{
public:
    explicit Generator(unsigned seed) : m_random(seed) {}

    QString Formula()
    {
        QString text = QStringLiteral("a = 2; b = -1.5; s = \"ab\"; v = {1, 2, 3}; ");
        const int statements = pick(1, 4);
        for (int i = 0; i < statements; ++i)
            text += Statement(3) + QStringLiteral("; ");
        return text + Expression(4);
    }

private:
    std::mt19937 m_random;

    int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }

    QString Statement(int depth)
    {
        switch (pick(0, 5)) {
        case 0: return QStringLiteral("a = ") + Expression(depth);
        case 1: return QStringLiteral("b += ") + Expression(depth);
        case 2:
            return QStringLiteral("if (%1) { a = %2 } else { b = %3 }")
                .arg(Expression(depth), Expression(depth - 1), Expression(depth - 1));
        case 3: return QStringLiteral("n = 0; while (n < 3) { n++; b -= %1 }").arg(Expression(depth - 1));
        case 4: return QStringLiteral("Catch(Error(\"bad\", %1)) { GetLastError() }").arg(Expression(depth - 1));
        default: return QStringLiteral("v[%1] = %2").arg(pick(0, 2)).arg(Expression(depth));
        }
    }

    QString Expression(int depth)
    {
        if (depth <= 0)
            return Leaf();
        static const char *binary[] = {"+", "-", "*", "/", "^", "%", "==", "!=", "<", ">", "<=", ">=",
                                       "&&", "||", "&", "|", "<<", ">>", "**"};
        static const char *unary[] = {"-", "+", "!", "~"};
        static const char *functions1[] = {"sin", "abs", "floor", "ceil", "sqrt", "IsEmpty", "TypeName"};
        static const char *functions2[] = {"pow", "mod", "pwr"};
        static const char *functionsN[] = {"min", "max", "sum", "hypot"};
        const int sub = depth - 1;
        switch (pick(0, 10)) {
        case 0:
        case 1:
            return Expression(sub) + u' ' + QLatin1String(binary[pick(0, std::size(binary) - 1)]) + u' ' +
                   Expression(sub);
        case 2:
            return QStringLiteral("(") + Expression(sub) + QStringLiteral(")") +
                   QLatin1String(binary[pick(0, std::size(binary) - 1)]) + QStringLiteral("(") + Expression(sub) +
                   QStringLiteral(")");
        case 3:
            return QStringLiteral("(%1(%2))").arg(QLatin1String(unary[pick(0, std::size(unary) - 1)]), Expression(sub));
        case 4:
            return QLatin1String(functions1[pick(0, std::size(functions1) - 1)]) + QStringLiteral("(") +
                   Expression(sub) + u')';
        case 5:
            return QStringLiteral("%1(%2, %3)").arg(QLatin1String(functions2[pick(0, std::size(functions2) - 1)]),
                                                  Expression(sub), Expression(sub));
        case 6:
            return QStringLiteral("%1(%2, %3, %4)")
                .arg(QLatin1String(functionsN[pick(0, std::size(functionsN) - 1)]), Expression(sub),
                     Expression(sub), Expression(sub));
        case 7: return QStringLiteral("iif(%1, %2, %3)").arg(Expression(sub), Expression(sub), Expression(sub));
        case 8: return QStringLiteral("{%1, %2}").arg(Expression(sub), Expression(sub));
        case 9:
            switch (pick(0, 2)) {
            case 0: return QStringLiteral("Eval(Formula(%1))").arg(Expression(sub));
            case 1: return QStringLiteral("Eval(Formula(%1), \"a\", %2)").arg(Expression(sub), Expression(sub));
            default: return QStringLiteral("Eval(ReplaceF(Formula(%1), b, %2))").arg(Expression(sub), Leaf());
            }
        default: return QStringLiteral("v[%1]").arg(pick(0, 3));
        }
    }

    QString Leaf()
    {
        switch (pick(0, 7)) {
        case 0: return QString::number(pick(0, 20));
        case 1: return QStringLiteral("%1.%2").arg(pick(0, 9)).arg(pick(1, 99));
        case 2: return QStringLiteral("(-%1)").arg(pick(1, 9));
        case 3: return QStringLiteral("2.5k");
        case 4: return QStringLiteral("\"t%1\"").arg(pick(0, 9));
        case 5: return QStringLiteral("NULL");
        case 6: return pick(0, 1) ? QStringLiteral("a++") : QStringLiteral("--b");
        default: return QLatin1String(pick(0, 1) ? "a" : "b");
        }
    }
};

TEST(WriteText, RandomFormulasRoundTrip)
{
    for (unsigned seed : {1u, 2u, 3u}) {
        Generator generator(seed);
        int failures = 0;
        for (int i = 0; i < 1000; ++i) {
            const QString source = generator.Formula();
            CEquationTree probe;
            ASSERT_EQ(probe.Compile(source), 1) << probe.GetErrorMessage().toStdString() << " at "
                                                << probe.GetErrorCol() << ": " << source.toStdString();
            const std::string problem = RoundTrip(source);
            if (!problem.empty() && ++failures <= 10)
                ADD_FAILURE() << "seed " << seed << ", formula " << i << ": " << problem;
        }
        EXPECT_EQ(failures, 0) << "seed " << seed;
    }
}

} // namespace
