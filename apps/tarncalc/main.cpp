// tarn-calc: the formula language on the command line.

#include "calculator.h"
#include "lineinput.h"
#include "terminal.h"

#include "formula/rpnenvironment.h"
#include "functions/rpnfunctions.h"
#include "support/languagestring.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>
#include <cstdio>
#include <iostream>
#include <string>

namespace {

const char *const kHelp =
    "Usage: tarn-calc [--degrees] [-e TEXT | FILE [ARGUMENTS...] | -]\n"
    "\n"
    "Runs a text of the TARN formula language and prints its value.\n"
    "\n"
    "  -e TEXT     run TEXT\n"
    "  FILE        run the script FILE (UTF-8, or UTF-16 with a byte order mark); the words\n"
    "              after it are the script's Array of texts `Arguments`\n"
    "  -           run the text read from standard input; a pipe is read the same way\n"
    "  --degrees   take and give the angles of sin, cos, tan and their inverses in degrees\n"
    "  --help      show this text\n"
    "\n"
    "Each text is compiled in a tree in which new variables may be made, and run once.\n"
    "Its value is printed with 16 significant digits (ScriptOption(PRECISION = n) changes\n"
    "that): \"1+2\" prints 3, and \"a=1; a+1\" prints {1,2}, the values of both statements.\n"
    "An empty value prints nothing.  Print(...) writes a line to standard output,\n"
    "MessageBox(...) writes its text there and answers OK; on a terminal a box with a\n"
    "choice of buttons asks which one.\n"
    "\n"
    "A compile or run error goes to standard error as\n"
    "  Error: <message>  at row: <row>   col = <column>\n"
    "followed by the line it stands in with a caret under the column, and the exit\n"
    "status is 1.  Warnings of the run follow, one per line.\n"
    "\n"
    "Without an argument on a terminal tarn-calc is a prompt: each entry is run against\n"
    "the same variables and its value printed.  An entry whose brackets are still open\n"
    "goes on on the next line.  End it with Ctrl-D.\n";

void print(std::FILE *to, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), to);
    std::fputc('\n', to);
    std::fflush(to);
}

QString readAll(std::istream &in)
{
    std::string all, line;
    while (std::getline(in, line)) {
        all += line;
        all += '\n';
    }
    return QString::fromUtf8(all.data(), qsizetype(all.size()));
}

// Print goes to standard output; Clear clears a terminal and is nothing elsewhere.
void printOutput(const QString &text, int code)
{
    if (code == RPN_OUTPUT_CLEAR) {
        if (StandardOutputIsTerminal()) {
            std::fputs("\033[H\033[2J", stdout);
            std::fflush(stdout);
        }
        return;
    }
    print(stdout, text);
}

// A message box on the command line: its text on standard output.  A box
// with one button answers it at once; with a choice, on a terminal, the user
// types a button's name (or its first letters; Enter takes the first).
// Without a terminal the first button, which Enter would press, answers.
int answerMessageBox(const CRpnMessageBoxRequest &request)
{
    const QString title = request.title == u"TARN" ? QString() : request.title + QStringLiteral(": ");
    print(stdout, title + request.text);
    const std::vector<int> buttons = RpnMessageBoxButtons(request.type);
    if (buttons.size() == 1 || !StandardInputIsTerminal())
        return buttons.front();
    QStringList names;
    for (int b : buttons) {
        const QString name = RpnMessageBoxAnswerText(b);
        names << u'[' + name.left(1) + u']' + name.mid(1).toLower();
    }
    const QString question = names.join(u' ') + QStringLiteral("? ");
    for (;;) {
        std::fputs(question.toUtf8().constData(), stdout);
        std::fflush(stdout);
        std::string line;
        if (!std::getline(std::cin, line)) {
            std::cin.clear();
            for (int b : buttons)
                if (b == RPN_ID_CANCEL)
                    return b;
            return buttons.front();
        }
        const QString typed = QString::fromUtf8(line.data(), qsizetype(line.size())).trimmed().toUpper();
        if (typed.isEmpty())
            return buttons.front();
        for (int b : buttons)
            if (RpnMessageBoxAnswerText(b).startsWith(typed))
                return b;
    }
}

// Runs one text and prints what it gives; the exit status.
int runOnce(CTarnCalculator &calculator, const QString &text, const QString &sourceName)
{
    const CTarnResult r = calculator.Run(text, sourceName);
    if (r.ok && !r.isNull)
        print(stdout, r.value);
    if (!r.ok)
        print(stderr, r.error);
    for (const QString &w : r.warnings)
        print(stderr, w);
    return r.ok ? 0 : 1;
}

// How many brackets of `text` are still open: (, { and [ outside texts in
// quotes and comments.  A prompt entry goes on while some are.
int openBrackets(const QString &text)
{
    int open = 0;
    bool quoted = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (quoted) {
            if (c == u'\\')
                ++i;
            else if (c == u'"')
                quoted = false;
            continue;
        }
        if (c == u'"') {
            quoted = true;
        } else if (c == u'/' && i + 1 < text.size() && text[i + 1] == u'/') {
            while (i < text.size() && text[i] != u'\n')
                ++i;
        } else if (c == u'(' || c == u'{' || c == u'[') {
            ++open;
        } else if (c == u')' || c == u'}' || c == u']') {
            --open;
        }
    }
    return open;
}

int prompt(CTarnCalculator &calculator)
{
    CLineInput input;
    QString line;
    for (;;) {
        if (!input.Read(QStringLiteral("> "), line))
            break;
        QString entry = line;
        while (openBrackets(entry) > 0 && input.Read(QStringLiteral(". "), line))
            entry += u'\n' + line;
        if (entry.trimmed().isEmpty())
            continue;
        input.Remember(entry);
        runOnce(calculator, entry, QString());
    }
    std::fputc('\n', stdout);
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);

    bool degrees = false;
    QString expression, file;
    QStringList scriptArguments;
    bool haveExpression = false, haveFile = false;
    for (int i = 0; i < args.size(); ++i) {
        const QString &a = args[i];
        if (haveFile) {
            scriptArguments << a; // the script's own words
            continue;
        }
        if (a == u"--help" || a == u"-h") {
            std::fputs(kHelp, stdout);
            return 0;
        }
        if (a == u"--degrees") {
            degrees = true;
        } else if (a == u"-e") {
            if (i + 1 >= args.size()) {
                std::fputs("tarn-calc: -e needs a text. See tarn-calc --help.\n", stderr);
                return 2;
            }
            expression = args[++i];
            haveExpression = true;
        } else if (!haveExpression) {
            file = a;
            haveFile = true;
        } else {
            std::fprintf(stderr, "tarn-calc: unexpected argument \"%s\". See tarn-calc --help.\n", qPrintable(a));
            return 2;
        }
    }

    if (!LoadLanguageModule()) {
        std::fputs("Missing file en.lang. Please re-install TARN.\n", stderr);
        return 2;
    }
    RegisterFunctionLibrary();
    SetRpnDefaultMessageBoxHandler(answerMessageBox);
    CTarnCalculator calculator(degrees);
    calculator.SetOutput(printOutput);
    calculator.SetArguments(scriptArguments);

    if (haveExpression)
        return runOnce(calculator, expression, QStringLiteral("-e"));
    if (haveFile && file != u"-") {
        QFile f(file);
        if (!f.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "tarn-calc: cannot read \"%s\": %s\n", qPrintable(file), qPrintable(f.errorString()));
            return 2;
        }
        const QByteArray bytes = f.readAll();
        QString text;
        if (bytes.startsWith("\xFF\xFE"))
            text = QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData() + 2), (bytes.size() - 2) / 2);
        else
            text = QString::fromUtf8(bytes.startsWith("\xEF\xBB\xBF") ? bytes.mid(3) : bytes);
        return runOnce(calculator, text, file);
    }
    if (haveFile || !StandardInputIsTerminal())
        return runOnce(calculator, readAll(std::cin), QStringLiteral("standard input"));
    return prompt(calculator);
}
