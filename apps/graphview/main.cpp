// graphview: a data file in a graph window of its own.
//
//   graphview [options] [FILE]
//
// FILE is a graph data file (.mrd) or a point text file of the digitiser;
// with --save OUT.mrd it is written to a graph data file without a window
// (see graphviewmrd.h).  Without a file a generated
// demonstration is shown.  The options set up the view, so that every kind
// of picture can be looked at (and saved with --screenshot).
#include "graphviewdata.h"
#include "graphviewexchange.h"
#include "graphviewmrd.h"

#include "graphdata/graphcurve.h"
#include "graphwnd/graphcursors.h"
#include "graphwnd/graphwnd.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"
#include "tool/capture/pointtextfile.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QMainWindow>
#include <QStatusBar>
#include <QTimer>

#include <cstdio>

namespace {

// Texts of the program.
enum : int {
    TextCannotRead = 43605,
    TextNoPoints = 43606,
    TextBadLine = 43607,
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

bool loadFile(const QString &path, CGraphData &data)
{
    if (IsGraphDataFile(path)) {
        QString message;
        const bool read = LoadGraphDataFile(path, data, message);
        if (!read)
            ShowMessage(nullptr, message);
        return read;
    }
    CPointTable table;
    QString report;
    switch (ReadPointTextFile(path, table, report)) {
    case PointFileRead::Read:
        data = GraphDataFromTable(table);
        return true;
    case PointFileRead::OpenFailed:
        ShowMessage(nullptr, LanguageString(TextCannotRead).arg(path, report));
        return false;
    case PointFileRead::NoData:
        ShowMessage(nullptr, LanguageString(TextNoPoints).arg(path));
        return false;
    case PointFileRead::BadLine:
        ShowMessage(nullptr, LanguageString(TextBadLine).arg(path));
        return false;
    }
    return false;
}

} // namespace

int main(int argc, char **argv)
{
    // graphview FILE --save OUT.mrd writes a graph data file without a window.
    if (int code = 0; RunSaveCommand(argc, argv, code))
        return code;
    CGraphviewExchange::PrepareHeadless(argc, argv);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("graphview"));
    if (!LoadLanguageModule()) {
        ShowMessage(nullptr, QStringLiteral("Missing file en.lang. Please re-install TARN."), PromptButtons::Ok,
                    PromptIcon::Stop);
        return 1;
    }
    LoadGraphCursors();

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows a point text file, or a demonstration, in a graph window."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("A point text file of the digitiser."));
    const QCommandLineOption logX(QStringLiteral("logx"), QStringLiteral("Logarithmic X axis."));
    const QCommandLineOption logY(QStringLiteral("logy"), QStringLiteral("Logarithmic Y axis."));
    const QCommandLineOption axes(QStringLiteral("axes"), QStringLiteral("Each curve on a Y axis of its own."));
    const QCommandLineOption legend(QStringLiteral("legend"), QStringLiteral("Legend position 0 to 4."),
                                    QStringLiteral("position"), QStringLiteral("0"));
    const QCommandLineOption bars(QStringLiteral("bars"), QStringLiteral("The bar demonstration."));
    const QCommandLineOption symbols(QStringLiteral("symbols"), QStringLiteral("Marks on the points."));
    const QCommandLineOption strip(QStringLiteral("strip"), QStringLiteral("One strip per curve."));
    const QCommandLineOption box(QStringLiteral("box"), QStringLiteral("The three-dimensional view."));
    // Not "title": on X11 the application object takes that one for itself.
    const QCommandLineOption title(QStringLiteral("heading"), QStringLiteral("Title of the graph."), QStringLiteral("text"));
    const QCommandLineOption size(QStringLiteral("size"), QStringLiteral("Window size."), QStringLiteral("WxH"),
                                  QStringLiteral("900x600"));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Save the window as a PNG picture and quit."),
                                        QStringLiteral("file"));
    parser.addOptions({logX, logY, axes, legend, bars, symbols, strip, box, title, size, screenshot});
    CGraphviewExchange exchange(parser);
    parser.process(app);

    CSilentPrompts silent;
    if (parser.isSet(screenshot) || exchange.Headless())
        SetUserPrompts(&silent);

    CGraphData data;
    QString shown = QStringLiteral("demonstration");
    const QStringList files = parser.positionalArguments();
    if (!files.isEmpty()) {
        if (!loadFile(files[0], data))
            return 1;
        shown = QFileInfo(files[0]).fileName();
    } else {
        data = DemonstrationData(parser.isSet(bars));
    }

    QMainWindow window;
    auto *graphWnd = new CGraphWnd(&window);
    window.setCentralWidget(graphWnd);
    window.setWindowTitle(QStringLiteral("graphview - %1").arg(shown));
    QObject::connect(graphWnd, &CGraphWnd::PositionText, window.statusBar(),
                     [&window](const QString &text) { window.statusBar()->showMessage(text); });

    graphWnd->SetGraphDataCopy(data);
    CGraphCurve &graph = *graphWnd->GetGraphData();
    graph.m_title = parser.isSet(title) ? parser.value(title) : QString();
    graph.m_legendPos = std::clamp(parser.value(legend).toInt(), 0, 4);
    graph.m_legendOffset = 3000;
    if (parser.isSet(logX))
        graph.m_xLog = 1;
    if (parser.isSet(logY))
        graph.Range(0)->m_logScale = 1;
    if (parser.isSet(symbols)) {
        for (int i = 0; i < graph.CurveCount(); ++i)
            graph.Curve(i)->m_symbol = 1 + i % 4;
    }
    // The demonstration's current is in milliamperes: it gets a Y axis of
    // its own on the right.
    const bool demoCurrentAxis = files.isEmpty() && !parser.isSet(bars) && !parser.isSet(axes) && graph.CurveCount() > 1;
    if (parser.isSet(axes) || demoCurrentAxis) {
        for (int i = 1; i < (demoCurrentAxis ? 2 : graph.CurveCount()); ++i) {
            CCurveInfo *curve = graph.Curve(i);
            const int axis = graph.AddRange(curve);
            curve->m_yAxisIndex = axis;
            graph.Range(axis)->m_textColor = curve->m_color;
            graph.Range(axis)->m_logScale = graph.Range(0)->m_logScale;
        }
        graph.Range(0)->m_textColor = graph.CurveCount() > 0 ? graph.Curve(0)->m_color : 0;
    }
    if (parser.isSet(strip))
        graph.m_viewKind = 3;
    if (parser.isSet(box))
        graph.m_viewKind = 1;
    graph.FitRanges();
    if (const int code = exchange.Run(graph, shown); code >= 0)
        return code;
    exchange.SetUpWindow(window, *graphWnd, shown);
    graphWnd->StoreDefaultView();
    graphWnd->Redraw(1);

    const QStringList wh = parser.value(size).split(u'x');
    window.resize(wh.value(0).toInt() > 0 ? wh.value(0).toInt() : 900, wh.value(1).toInt() > 0 ? wh.value(1).toInt() : 600);
    window.show();
    if (parser.isSet(screenshot)) {
        const QString path = parser.value(screenshot);
        QTimer::singleShot(200, &window, [&window, path] {
            if (!window.grab().save(path))
                std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
            QApplication::quit();
        });
    }
    return app.exec();
}
