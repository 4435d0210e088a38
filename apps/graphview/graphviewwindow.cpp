#include "graphviewwindow.h"

#include "graphviewdata.h"
#include "graphviewload.h"
#include "graphviewmrd.h"
#include "graphviewpicture.h"

#include "graphdata/graphcurve.h"
#include "graphwnd/graphwnd.h"
#include "support/languagestring.h"

#include <QApplication>
#include <QFileInfo>
#include <QLabel>
#include <QProgressBar>
#include <QStatusBar>

#include <cstdio>

namespace {

// Texts of the program.
enum : int {
    TextReading = 43635,
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
    m_progressTimer.stop();
    m_loader.reset();
    m_scope.StopLive();
}

void CGraphviewProgram::End()
{
    Stop();
    m_graphWnd = nullptr;
    m_cellsLabel = nullptr;
    m_progressBar = nullptr;
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
    m_progressBar = new QProgressBar(m_window.get());
    m_progressBar->setRange(0, 1000);
    m_window->statusBar()->addPermanentWidget(m_cellsLabel);
    m_window->statusBar()->addPermanentWidget(m_progressBar);
    m_cellsLabel->hide();
    m_progressBar->hide();
    m_window->resize(m_options.size);
    m_shown = m_options.file.isEmpty() ? QStringLiteral("demonstration") : QFileInfo(m_options.file).fileName();
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
    m_exchange.SetUpWindow(*m_window, *m_graphWnd, m_shown);
    CGraphviewCurves::SetUpWindow(*m_window, *m_graphWnd);
    m_graphWnd->StoreDefaultView();
    m_graphWnd->Redraw(1);
    if (screenshot)
        AfterNextPaint(m_graphWnd, [this] { saveScreenshot(); });
}

void CGraphviewProgram::startReading()
{
    m_progressBar->setFormat(LanguageString(TextReading).arg(m_shown) + QStringLiteral(" %p%"));
    m_loader = std::make_unique<CDataFileLoader>(m_options.file, [this] {
        m_progressTimer.stop();
        m_progressBar->hide();
        if (m_loader->Result() != TextImport::Read) {
            ShowMessage(m_exchange.Headless() ? nullptr : m_window.get(),
                        ImportFailureText(m_options.file, m_loader->Result(), m_loader->Report()));
            QApplication::exit(1);
            return;
        }
        CGraphData data = m_loader->Data();
        PrepareFileData(data);
        const QString badCells = BadCellsText(m_shown, m_loader->Report());
        if (!badCells.isEmpty()) {
            std::fprintf(stderr, "%s\n", qPrintable(badCells));
            m_cellsLabel->setText(badCells);
            m_cellsLabel->show();
        }
        showData(data, false);
    });
    // A bar for readings that take longer than half a second.
    m_progressTimer.setInterval(50);
    QObject::connect(&m_progressTimer, &QTimer::timeout, [this] {
        if (m_loader->Elapsed() < 500)
            return;
        m_progressBar->show();
        m_progressBar->setValue(m_loader->Progress());
    });
    m_loader->Start();
    m_progressTimer.start();
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
    } else if (IsGraphDataFile(m_options.file)) {
        QTimer::singleShot(0, m_window.get(), [this] {
            CGraphData data;
            QString message;
            if (!LoadGraphDataFile(m_options.file, data, message)) {
                ShowMessage(nullptr, message);
                QApplication::exit(1);
                return;
            }
            showData(data, false);
        });
    } else {
        startReading();
    }
    // An export writes its file without a window.
    if (!m_exchange.Headless())
        m_window->show();
}
