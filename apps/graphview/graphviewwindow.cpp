#include "graphviewwindow.h"

#include "graphviewdata.h"
#include "graphviewload.h"
#include "graphviewmrd.h"
#include "graphviewpicture.h"

#include "graphdata/graphcurve.h"
#include "graphwnd/graphwnd.h"
#include "support/languagestring.h"

#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>

#include <cstdio>

namespace {

// Texts of the program.
enum : int {
    TextFileMenu = 44500,
    TextOpen = 44501,
    TextOpenCaption = 44502,
    TextOpenFilter = 44503,
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

PromptAnswer CGraphviewProgram::CSilentPrompts::Message(const CMessagePrompt &prompt)
{
    std::fprintf(stderr, "%s\n", qPrintable(prompt.text));
    return PromptAnswer::Ok;
}

CGraphviewProgram::CGraphviewProgram() : m_exchange(m_parser), m_scope(m_parser), m_curves(m_parser) {}

CGraphviewProgram::~CGraphviewProgram()
{
    End();
    if (m_promptsSet)
        SetUserPrompts(nullptr);
}

GraphViewCommand CGraphviewProgram::Parse(const QStringList &arguments, QString &text)
{
    return ParseGraphViewOptions(m_parser, arguments, m_options, text);
}

void CGraphviewProgram::Stop()
{
    m_scope.StopLive();
}

void CGraphviewProgram::End()
{
    Stop();
    m_graphWnd = nullptr;
    m_cellsLabel = nullptr;
    m_windowSetUp = false;
    m_window.reset();
}

void CGraphviewProgram::buildWindow()
{
    m_window = std::make_unique<QMainWindow>();
    m_graphWnd = new CGraphWnd(m_window.get());
    m_window->setCentralWidget(m_graphWnd);
    QObject::connect(m_graphWnd, &CGraphWnd::PositionText, m_window->statusBar(),
                     [this](const QString &text) { m_window->statusBar()->showMessage(text); });
    m_cellsLabel = new QLabel(m_window.get());
    m_window->statusBar()->addPermanentWidget(m_cellsLabel);
    m_cellsLabel->hide();
    m_window->resize(m_options.size);
    setShown(m_options.file.isEmpty() ? QStringLiteral("demonstration") : QFileInfo(m_options.file).fileName());
    // Another file in the same window; not for the oscilloscope, whose data
    // come from its run.
    if (!m_scope.Scope() && !m_scope.Live()) {
        QMenu *file = m_window->menuBar()->addMenu(LanguageString(TextFileMenu));
        QAction *open = file->addAction(LanguageString(TextOpen));
        open->setShortcut(QKeySequence::Open);
        QObject::connect(open, &QAction::triggered, m_window.get(), [this] {
            CFilePrompt prompt;
            prompt.parent = m_window.get();
            prompt.caption = LanguageString(TextOpenCaption);
            prompt.filter = LanguageString(TextOpenFilter);
            prompt.fileName = m_options.file;
            const QString path = AskFileName(prompt);
            if (!path.isEmpty())
                OpenFile(path);
        });
    }
}

void CGraphviewProgram::setShown(const QString &name)
{
    m_shown = name;
    m_window->setWindowTitle(QStringLiteral("graphview - %1").arg(m_shown));
}

void CGraphviewProgram::saveScreenshot()
{
    QString error;
    const bool saved = SaveWidgetPicture(*m_window, m_options.screenshot, error);
    if (!saved)
        std::fprintf(stderr, "%s\n", qPrintable(error));
    QApplication::exit(saved ? 0 : 1);
}

// Shows the data (on the event loop): a spectrum or an export when asked;
// with --screenshot, saves the picture once they are painted.  Either of
// these ends the program with its outcome.
void CGraphviewProgram::showData(const CGraphData &data, bool demonstration)
{
    const bool screenshot = !m_options.screenshot.isEmpty();
    if (m_scope.Scope())
        CGraphviewScope::ShowAsScope(*m_graphWnd, data);
    else
        m_graphWnd->SetGraphDataCopy(data);
    CGraphCurve &graph = *m_graphWnd->GetGraphData();
    if (!m_scope.Scope())
        applyViewOptions(graph, m_options, demonstration);
    if (const int code = m_curves.Apply(*m_graphWnd, m_exchange.Headless() || screenshot); code >= 0) {
        QApplication::exit(code);
        return;
    }
    if (const int code = m_exchange.Run(graph, m_shown); code >= 0) {
        QApplication::exit(code);
        return;
    }
    if (!m_windowSetUp) {
        m_exchange.SetUpWindow(*m_window, *m_graphWnd, m_shown);
        CGraphviewCurves::SetUpWindow(*m_window, *m_graphWnd);
        m_windowSetUp = true;
    }
    m_graphWnd->StoreDefaultView();
    m_graphWnd->Redraw(1);
    if (screenshot)
        AfterNextPaint(m_graphWnd, [this] { saveScreenshot(); });
}

CGraphviewInput::Outcome CGraphviewProgram::OpenFile(const QString &path)
{
    return openFile(path, false);
}

CGraphviewInput::Outcome CGraphviewProgram::openFile(const QString &path, bool atStart)
{
    const bool first = !m_graphWnd->GetGraphData();
    const CGraphviewInput input = ReadGraphviewFile(m_exchange.Headless() ? nullptr : m_window.get(), path, m_busyDelay);
    if (!m_window)
        return input.outcome; // the program ended meanwhile
    switch (input.outcome) {
    case CGraphviewInput::Read:
        break;
    case CGraphviewInput::Cancelled:
        // The graph stays as it was: the reading handed nothing over.
        return input.outcome;
    case CGraphviewInput::Failed:
        ShowMessage(m_exchange.Headless() ? nullptr : m_window.get(), input.message);
        // A file named on the command line that cannot be read ends the
        // program; one opened from the window leaves the window as it was.
        if (atStart)
            QApplication::exit(1);
        return input.outcome;
    }
    m_options.file = path;
    setShown(QFileInfo(path).fileName());
    m_cellsLabel->setVisible(!input.badCells.isEmpty());
    m_cellsLabel->setText(input.badCells);
    if (!input.badCells.isEmpty())
        std::fprintf(stderr, "%s\n", qPrintable(input.badCells));
    if (first) {
        showData(input.data, false);
    } else {
        m_graphWnd->SetGraphDataCopy(input.data);
        applyViewOptions(*m_graphWnd->GetGraphData(), m_options, false);
        m_graphWnd->StoreDefaultView();
        m_graphWnd->Redraw(1);
    }
    return input.outcome;
}

void CGraphviewProgram::Start()
{
    const bool screenshot = !m_options.screenshot.isEmpty();
    if (screenshot || m_exchange.Headless()) {
        SetUserPrompts(&m_silent);
        m_promptsSet = true;
    }
    buildWindow();
    if (m_scope.Live()) {
        QTimer::singleShot(0, m_window.get(), [this, screenshot] {
            m_cellsLabel->show();
            m_scope.StartLive(*m_graphWnd, m_cellsLabel);
            // a moment of live data first
            if (screenshot)
                QTimer::singleShot(1500, m_window.get(), [this] { saveScreenshot(); });
        });
    } else if (m_options.file.isEmpty()) {
        QTimer::singleShot(0, m_window.get(), [this] { showData(DemonstrationData(m_options.bars), true); });
    } else {
        // Read on the event loop, with the window up behind the busy box.
        QTimer::singleShot(0, m_window.get(), [this] { openFile(m_options.file, true); });
    }
    // An export writes its file without a window.
    if (!m_exchange.Headless())
        m_window->show();
}
