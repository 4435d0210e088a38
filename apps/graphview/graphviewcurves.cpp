#include "graphviewcurves.h"

#include "graphdata/formula/formulacurve.h"
#include "graphdata/graphcurve.h"
#include "graphwnd/formulacurvedialog.h"
#include "graphwnd/graphwnd.h"
#include "graphwnd/scopechannelsdialog.h"
#include "support/languagestring.h"

#include <QAction>
#include <QCommandLineParser>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

#include <cstdio>

namespace {

enum : int {
    TextComputedCurve = 43779,
    TextScopeChannels = 44601,
};

} // namespace

CGraphviewCurves::CGraphviewCurves(QCommandLineParser &parser)
    : m_parser(parser),
      m_curve(QStringLiteral("curve"),
              QStringLiteral("Add the curve NAME computed from FORMULA over the columns, as in "
                             "'P=V1*I1' or 'S=sin(Time)*2+AvgX(V1, 1e-3)'; may be given more than once."),
              QStringLiteral("NAME=FORMULA"))
{
    m_parser.addOption(m_curve);
}

bool CGraphviewCurves::SplitCurveArgument(const QString &argument, QString &name, QString &formula)
{
    for (int i = 0; i < argument.size(); ++i) {
        if (argument[i] != u'=')
            continue;
        const QChar before = i > 0 ? argument[i - 1] : QChar();
        const QChar after = i + 1 < argument.size() ? argument[i + 1] : QChar();
        if (before == u'<' || before == u'>' || before == u'!' || before == u'=' || after == u'=')
            continue;
        name = argument.left(i).trimmed();
        formula = argument.mid(i + 1);
        return !formula.trimmed().isEmpty();
    }
    return false;
}

int CGraphviewCurves::Apply(CGraphWnd &window, bool headless)
{
    CGraphCurve *graph = window.GetGraphData();
    if (!graph)
        return -1;
    bool added = false;
    for (const QString &argument : m_parser.values(m_curve)) {
        QString name, formula;
        if (!SplitCurveArgument(argument, name, formula)) {
            std::fprintf(stderr, "graphview: --curve takes NAME=FORMULA, not %s\n", qPrintable(argument));
            return 2;
        }
        CFormulaCurveJob job;
        bool ok;
        if (headless) {
            ok = job.Prepare(*graph, formula);
            if (ok) {
                job.Run();
                ok = AddFormulaCurve(*graph, job, name) != nullptr;
                if (ok)
                    ReportFailedRows(job);
            }
        } else {
            ok = AddFormulaCurveToWindow(window, name, formula, job) == 1;
        }
        if (!ok) {
            std::fprintf(stderr, "graphview: the curve %s cannot be computed: %s\n", qPrintable(argument),
                         qPrintable(FormulaErrorText(job)));
            return 1;
        }
        added = true;
    }
    if (added) {
        graph->FitRanges();
        window.StoreDefaultView();
        window.Redraw(1);
    }
    return -1;
}

void CGraphviewCurves::SetUpWindow(QMainWindow &window, CGraphWnd &graphWnd)
{
    QMenu *curves = window.menuBar()->addMenu(QStringLiteral("&Curves"));
    QAction *add = curves->addAction(LanguageString(TextComputedCurve));
    add->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_K));
    QObject::connect(add, &QAction::triggered, &window, [&graphWnd] { graphWnd.OnCommand(CmdComputedCurve); });
    // Offered while the window shows an oscilloscope graph.
    QAction *channels = curves->addAction(LanguageString(TextScopeChannels));
    QObject::connect(curves, &QMenu::aboutToShow, channels,
                     [channels, &graphWnd] { channels->setEnabled(CScopeChannelsDialog::Applies(graphWnd)); });
    QObject::connect(channels, &QAction::triggered, &window, [&graphWnd] { graphWnd.OnCommand(CmdScopeChannels); });
}
