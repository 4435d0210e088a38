#include "graphviewexchange.h"

#include "graphdata/exchange/savefilters.h"
#include "graphdata/graphcurve.h"
#include "graphdata/spectrum/spectrumjob.h"
#include "graphwnd/graphwnd.h"
#include "graphwnd/spectrumprogress.h"
#include "support/languagestring.h"

#include <QAction>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QMainWindow>
#include <QMenuBar>

#include <cstdio>

namespace {

enum : int {
    TextSaveFailed = 43114,
    TextSpectrumTitle = 43119,
    TextNoSpectrum = 43620,
};

struct ExportExtension
{
    const char *extension;
    int kind;
};

const ExportExtension exportExtensions[] = {
    {"txt", SaveKindText}, {"fra", SaveKindText},  {"fft", SaveKindText},   {"csv", SaveKindComma},
    {"tsv", SaveKindTab},  {"mat", SaveKindMat},   {"mrd", SaveKindRecord},
};

} // namespace

CGraphviewExchange::CGraphviewExchange(QCommandLineParser &parser)
    : m_parser(parser),
      m_spectrum(QStringLiteral("spectrum"), QStringLiteral("Show the spectrum of every curve.")),
      m_from(QStringLiteral("from"), QStringLiteral("Start of the spectrum's span of X."), QStringLiteral("T0")),
      m_to(QStringLiteral("to"), QStringLiteral("End of the spectrum's span of X."), QStringLiteral("T1")),
      m_export(QStringLiteral("export"),
               QStringLiteral("Write the graph to FILE (.txt fixed columns, .csv, .tsv, .mat, .mrd) and quit."),
               QStringLiteral("FILE"))
{
    m_parser.addOptions({m_spectrum, m_from, m_to, m_export});
}

void CGraphviewExchange::PrepareHeadless(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray arg(argv[i]);
        if ((arg == "--export" || arg.startsWith("--export=")) && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
    }
}

int CGraphviewExchange::ExportKindOfName(const QString &path)
{
    const QString ext = QFileInfo(path).suffix().toLower();
    for (const ExportExtension &e : exportExtensions)
        if (ext == QLatin1String(e.extension))
            return e.kind;
    return -1;
}

bool CGraphviewExchange::Headless() const { return m_parser.isSet(m_export); }

int CGraphviewExchange::Run(CGraphCurve &graph, const QString &shownName)
{
    if (m_parser.isSet(m_spectrum)) {
        bool okFrom = true, okTo = true;
        graph.m_spectrumStart = m_parser.isSet(m_from) ? m_parser.value(m_from).toDouble(&okFrom) : 0;
        graph.m_spectrumEnd = m_parser.isSet(m_to) ? m_parser.value(m_to).toDouble(&okTo) : 0;
        if (!okFrom || !okTo) {
            std::fprintf(stderr, "graphview: --from and --to take numbers\n");
            return 2;
        }
        if (m_parser.isSet(m_from) && m_parser.isSet(m_to) && !(graph.m_spectrumStart < graph.m_spectrumEnd)) {
            std::fprintf(stderr, "graphview: the span --from %s --to %s is empty\n", qPrintable(m_parser.value(m_from)),
                         qPrintable(m_parser.value(m_to)));
            return 2;
        }
        std::vector<CSpectrumFailure> failures;
        if (!SetSpectrumMode(graph, true, {}, &failures)) {
            std::fprintf(stderr, "%s\n", qPrintable(LanguageString(TextNoSpectrum).arg(shownName)));
            return 1;
        }
        for (const CSpectrumFailure &failure : failures)
            std::fprintf(stderr, "%s\n", qPrintable(SpectrumFailureText(failure)));
    }
    if (!m_parser.isSet(m_export))
        return -1;
    const QString path = m_parser.value(m_export);
    const int kind = ExportKindOfName(path);
    if (kind < 0) {
        std::fprintf(stderr,
                     "graphview: --export does not know the kind of file %s: name it .txt, .fra, .fft, .csv, .tsv, "
                     ".mat or .mrd\n",
                     qPrintable(path));
        return 2;
    }
    QString error;
    if (!ExportGraphs({&graph}, path, kind, &error)) {
        std::fprintf(stderr, "%s\n", qPrintable(LanguageString(TextSaveFailed).arg(path, error)));
        return 1;
    }
    return 0;
}

void CGraphviewExchange::SetUpWindow(QMainWindow &window, CGraphWnd &graphWnd, const QString &shownName)
{
    QMenu *view = window.menuBar()->addMenu(QStringLiteral("&View"));
    QAction *spectrum = view->addAction(LanguageString(TextSpectrumTitle));
    spectrum->setCheckable(true);
    spectrum->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_F));
    spectrum->setChecked(graphWnd.GetGraphData() && graphWnd.GetGraphData()->m_spectrumMode);
    QObject::connect(spectrum, &QAction::triggered, &window, [&graphWnd, spectrum, shownName](bool on) {
        CGraphCurve *graph = graphWnd.GetGraphData();
        if (!graph)
            return;
        SwitchSpectrumMode(&graphWnd, *graph, on, shownName);
        spectrum->setChecked(graph->m_spectrumMode != 0);
        graphWnd.StoreDefaultView();
        graphWnd.Redraw(1);
    });
}
