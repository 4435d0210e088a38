// tarn-calc: the formula language on the command line.

#include "calculator.h"
#include "terminal.h"

#include "functions/rpnfunctions.h"
#include "support/languagestring.h"

#include <QCoreApplication>
#include <QFile>
#include <QString>
#include <QStringList>
#include <cstdio>
#include <iostream>
#include <string>

namespace {

const char *const kHelp =
    "Usage: tarn-calc [--degrees] [-e TEXT | FILE | -]\n"
    "\n"
    "Runs a text of the TARN formula language and prints its value.\n"
    "\n"
    "  -e TEXT     run TEXT\n"
    "  FILE        run the text of FILE (UTF-8)\n"
    "  -           run the text read from standard input; a pipe is read the same way\n"
    "  --degrees   take and give the angles of sin, cos, tan and their inverses in degrees\n"
    "  --help      show this text\n"
    "\n"
    "Each text is compiled in a fresh tree in which new variables may be made, and run once.\n"
    "Its value is printed with 16 significant digits: \"1+2\" prints 3, and \"a=1; a+1\"\n"
    "prints {1,2}, the values of both statements.\n"
    "\n"
    "A compile or run error goes to standard error as\n"
    "  Error: <message>  at row: <row>   col = <column>\n"
    "and the exit status is 1.  Warnings of the run follow the value on standard error,\n"
    "one per line.\n"
    "\n"
    "Without an argument on a terminal tarn-calc is a prompt: each line is run against\n"
    "the same variables and its value printed.  End it with an empty input (Ctrl-D).\n";

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

// Runs one text and prints what it gives; the exit status.
int runOnce(CTarnCalculator &calculator, const QString &text)
{
    QString output, error;
    QStringList warnings;
    const bool ok = calculator.RunText(text, output, error, warnings);
    if (ok)
        print(stdout, output);
    else
        print(stderr, error);
    for (const QString &w : warnings)
        print(stderr, w);
    return ok ? 0 : 1;
}

int prompt(CTarnCalculator &calculator)
{
    std::string line;
    for (;;) {
        std::fputs("> ", stdout);
        std::fflush(stdout);
        if (!std::getline(std::cin, line))
            break;
        const QString text = QString::fromUtf8(line.data(), qsizetype(line.size()));
        if (text.trimmed().isEmpty())
            continue;
        runOnce(calculator, text);
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
    bool haveExpression = false, haveFile = false;
    for (int i = 0; i < args.size(); ++i) {
        const QString &a = args[i];
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
        } else if (!haveFile && !haveExpression) {
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
    CTarnCalculator calculator(degrees);

    if (haveExpression)
        return runOnce(calculator, expression);
    if (haveFile && file != u"-") {
        QFile f(file);
        if (!f.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "tarn-calc: cannot read \"%s\": %s\n", qPrintable(file), qPrintable(f.errorString()));
            return 2;
        }
        return runOnce(calculator, QString::fromUtf8(f.readAll()));
    }
    if (haveFile || !StandardInputIsTerminal())
        return runOnce(calculator, readAll(std::cin));
    return prompt(calculator);
}
