// graphview: a data file in a graph window of its own (see graphviewwindow.h
// for its command line, graphviewmrd.h for --save).
#include "graphviewmrd.h"
#include "graphviewwindow.h"

#include "graphwnd/formulacurvedialog.h"
#include "graphwnd/grapherrorbox.h"
#include "graphwnd/graphcursors.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    // graphview FILE --save OUT.mrd writes a graph data file without a window.
    if (int code = 0; RunSaveCommand(argc, argv, code))
        return code;
    // The options first: --help and mistakes need no display.
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    CGraphviewProgram program;
    QString optionText;
    switch (program.Parse(arguments, optionText)) {
    case GraphViewCommand::Help:
        std::fputs(qPrintable(optionText), stdout);
        return 0;
    case GraphViewCommand::Error:
        std::fprintf(stderr, "graphview: %s\n", qPrintable(optionText));
        return 1;
    case GraphViewCommand::Run:
        break;
    }

    CGraphviewExchange::PrepareHeadless(argc, argv);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("graphview"));
    InstallGraphErrorBox(QStringLiteral("graphview"));
    if (!LoadLanguageModule()) {
        ShowMessage(nullptr, QStringLiteral("Missing file en.lang. Please re-install TARN."), PromptButtons::Ok,
                    PromptIcon::Stop);
        return 1;
    }
    LoadGraphCursors();
    InstallFormulaCurveProgress();

    program.Start();
    const int result = app.exec();
    program.End();
    return result;
}
