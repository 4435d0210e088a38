// graphview: a data file in a graph window of its own.
//
//   graphview [options] [FILE]
//
// FILE is a graph data file (.mrd) or a data text file (see
// graphdata/exchange/textformat.h); with --save OUT.mrd it is written to a
// graph data file without a window (see graphviewmrd.h).  Without a file a
// generated demonstration is shown.  A text file is read on a thread of its
// own while the window stands, with a progress bar when that takes longer
// than half a second.  The options set up the view, so that every kind
// of picture can be looked at (and saved with --screenshot); --spectrum and
// --export are graphviewexchange.h's, --scope and --live graphviewscope.h's.
#include "graphviewcurves.h"
#include "graphviewdata.h"
#include "graphviewexchange.h"
#include "graphviewload.h"
#include "graphviewmrd.h"
#include "graphviewoptions.h"
#include "graphviewpicture.h"
#include "graphviewscope.h"

#include "graphdata/graphcurve.h"
#include "graphwnd/formulacurvedialog.h"
#include "graphwnd/grapherrorbox.h"
#include "graphwnd/graphcursors.h"
#include "graphwnd/graphwnd.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QLabel>
#include <QMainWindow>
#include <QProgressBar>
#include <QStatusBar>
#include <QTimer>

#include <cstdio>
#include <memory>

namespace {

// Texts of the program.
enum : int {
    TextReading = 43635,
};

// For --screenshot: nobody is there to answer a box.
class CSilentPrompts : public CUserPrompts
{
public:
    PromptAnswer Message(const CMessagePrompt &prompt) override
    {
        std::fprintf(stderr, "%s\n", qPrintable(prompt.text));
        return PromptAnswer::Ok;
    }
};

// Sets the graph up as the options say and fits the axes.
void applyViewOptions(CGraphCurve &graph, const CGraphViewOptions &options, bool demonstration)
{
    graph.m_title = options.hasTitle ? options.title : QString();
    graph.m_legendPos = options.legend;
    graph.m_legendOffset = 3000;
    if (options.logX)
        graph.m_xLog = 1;
    if (options.logY)
        graph.Range(0)->m_logScale = 1;
    if (options.symbols) {
        for (int i = 0; i < graph.CurveCount(); ++i)
            graph.Curve(i)->m_symbol = 1 + i % 4;
    }
    // The demonstration's current is in milliamperes: it gets a Y axis of
    // its own on the right.
    const bool demoCurrentAxis = demonstration && !options.bars && !options.axes && graph.CurveCount() > 1;
    if (options.axes || demoCurrentAxis) {
        for (int i = 1; i < (demoCurrentAxis ? 2 : graph.CurveCount()); ++i) {
            CCurveInfo *curve = graph.Curve(i);
            const int axis = graph.AddRange(curve);
            curve->m_yAxisIndex = axis;
            graph.Range(axis)->m_textColor = curve->m_color;
            graph.Range(axis)->m_logScale = graph.Range(0)->m_logScale;
        }
        graph.Range(0)->m_textColor = graph.CurveCount() > 0 ? graph.Curve(0)->m_color : 0;
    }
    if (options.strip)
        graph.m_viewKind = 3;
    if (options.box)
        graph.m_viewKind = 1;
    graph.FitRanges();
}

} // namespace

int main(int argc, char **argv)
{
    // graphview FILE --save OUT.mrd writes a graph data file without a window.
    if (int code = 0; RunSaveCommand(argc, argv, code))
        return code;
    // The options first: --help and mistakes need no display.
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    QCommandLineParser parser;
    CGraphviewExchange exchange(parser);
    CGraphviewScope scope(parser);
    CGraphviewCurves curves(parser);
    CGraphViewOptions options;
    QString optionText;
    switch (ParseGraphViewOptions(parser, arguments, options, optionText)) {
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

    const bool screenshot = !options.screenshot.isEmpty();
    CSilentPrompts silent;
    if (screenshot || exchange.Headless())
        SetUserPrompts(&silent);

    QMainWindow window;
    auto *graphWnd = new CGraphWnd(&window);
    window.setCentralWidget(graphWnd);
    QObject::connect(graphWnd, &CGraphWnd::PositionText, window.statusBar(),
                     [&window](const QString &text) { window.statusBar()->showMessage(text); });
    auto *cellsLabel = new QLabel(&window);
    auto *progressBar = new QProgressBar(&window);
    progressBar->setRange(0, 1000);
    window.statusBar()->addPermanentWidget(cellsLabel);
    window.statusBar()->addPermanentWidget(progressBar);
    cellsLabel->hide();
    progressBar->hide();
    window.resize(options.size);
    const QString shown =
        options.file.isEmpty() ? QStringLiteral("demonstration") : QFileInfo(options.file).fileName();
    window.setWindowTitle(QStringLiteral("graphview - %1").arg(shown));

    // Shows the data (on the event loop): a spectrum or an export when
    // asked; with --screenshot, saves the picture once they are painted.
    // Either of these ends the program with its outcome.
    auto showData = [&](const CGraphData &data, bool demonstration) {
        if (scope.Scope())
            CGraphviewScope::ShowAsScope(*graphWnd, data);
        else
            graphWnd->SetGraphDataCopy(data);
        CGraphCurve &graph = *graphWnd->GetGraphData();
        if (!scope.Scope())
            applyViewOptions(graph, options, demonstration);
        if (const int code = curves.Apply(*graphWnd, exchange.Headless() || screenshot); code >= 0) {
            QApplication::exit(code);
            return;
        }
        if (const int code = exchange.Run(graph, shown); code >= 0) {
            QApplication::exit(code);
            return;
        }
        exchange.SetUpWindow(window, *graphWnd, shown);
        CGraphviewCurves::SetUpWindow(window, *graphWnd);
        graphWnd->StoreDefaultView();
        graphWnd->Redraw(1);
        if (screenshot) {
            AfterNextPaint(graphWnd, [&window, &options] {
                QString error;
                const bool saved = SaveWidgetPicture(window, options.screenshot, error);
                if (!saved)
                    std::fprintf(stderr, "%s\n", qPrintable(error));
                QApplication::exit(saved ? 0 : 1);
            });
        }
    };

    std::unique_ptr<CDataFileLoader> loader;
    QTimer progressTimer;
    if (scope.Live()) {
        QTimer::singleShot(0, [&] {
            cellsLabel->show();
            scope.StartLive(*graphWnd, cellsLabel);
            if (screenshot) {
                // a moment of live data first
                QTimer::singleShot(1500, [&window, &options] {
                    QString error;
                    const bool saved = SaveWidgetPicture(window, options.screenshot, error);
                    if (!saved)
                        std::fprintf(stderr, "%s\n", qPrintable(error));
                    QApplication::exit(saved ? 0 : 1);
                });
            }
        });
    } else if (options.file.isEmpty()) {
        QTimer::singleShot(0, [&] { showData(DemonstrationData(options.bars), true); });
    } else if (IsGraphDataFile(options.file)) {
        QTimer::singleShot(0, [&] {
            CGraphData data;
            QString message;
            if (!LoadGraphDataFile(options.file, data, message)) {
                ShowMessage(nullptr, message);
                QApplication::exit(1);
                return;
            }
            showData(data, false);
        });
    } else {
        progressBar->setFormat(LanguageString(TextReading).arg(shown) + QStringLiteral(" %p%"));
        loader = std::make_unique<CDataFileLoader>(options.file, [&] {
            progressTimer.stop();
            progressBar->hide();
            if (loader->Result() != TextImport::Read) {
                ShowMessage(exchange.Headless() ? nullptr : &window,
                            ImportFailureText(options.file, loader->Result(), loader->Report()));
                QApplication::exit(1);
                return;
            }
            CGraphData data = loader->Data();
            PrepareFileData(data);
            const QString badCells = BadCellsText(shown, loader->Report());
            if (!badCells.isEmpty()) {
                std::fprintf(stderr, "%s\n", qPrintable(badCells));
                cellsLabel->setText(badCells);
                cellsLabel->show();
            }
            showData(data, false);
        });
        // A bar for readings that take longer than half a second.
        progressTimer.setInterval(50);
        QObject::connect(&progressTimer, &QTimer::timeout, [&] {
            if (loader->Elapsed() < 500)
                return;
            progressBar->show();
            progressBar->setValue(loader->Progress());
        });
        loader->Start();
        progressTimer.start();
    }
    // An export writes its file without a window.
    if (!exchange.Headless())
        window.show();
    const int result = app.exec();
    loader.reset();
    return result;
}
