#include "graphwnd/formulacurvedialog.h"

#include "graphdata/formula/formulacurve.h"
#include "graphdata/graphcurve.h"
#include "graphdata/spectrum/spectrumjob.h"
#include "graphwnd/graphwnd.h"
#include "support/controls/progressworkingdlg.h"
#include "support/languagestring.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QScopeGuard>
#include <QVBoxLayout>

namespace {

enum : int {
    TextComputing = 43194,
    TextDialogTitle = 43776,
    TextName = 43777,
    TextFormula = 43778,
};

bool g_running = false;

// The computed curve's job as the busy box runs it.
class CFormulaCurveWork : public CWorkingJob
{
public:
    explicit CFormulaCurveWork(CFormulaCurveJob &job) : m_job(job) {}
    void Run() override { m_job.Run(); }
    void Stop() override { m_job.Stop(); }
    double Progress() const override { return m_job.Progress(); }

private:
    CFormulaCurveJob &m_job;
};

} // namespace

void RunFormulaCurveJob(QWidget *parent, CFormulaCurveJob &job)
{
    // Made on the heap: should the window close while the job runs, the box
    // goes with it, and the job is stopped and waited for all the same.
    QPointer<CProgressWorkingDlg> box = new CProgressWorkingDlg(
        parent, LanguageString(TextComputing), QStringLiteral("%1: %2").arg(LanguageString(TextComputing), job.Formula()));
    const auto drop = qScopeGuard([&box] { delete box.data(); });
    box->SetShowDelay(300);
    CFormulaCurveWork work(job);
    box->Run(work);
}

void InstallFormulaCurveProgress()
{
    InstallFormulaCurves([](CFormulaCurveJob &job) { RunFormulaCurveJob(QApplication::activeWindow(), job); });
}

int AddFormulaCurveToWindow(CGraphWnd &window, const QString &name, const QString &formula, CFormulaCurveJob &job)
{
    CGraphCurve *graph = window.GetGraphData();
    if (!graph || g_running || !job.Prepare(*graph, formula))
        return 0;
    g_running = true;
    QPointer<CGraphWnd> alive(&window);
    RunFormulaCurveJob(&window, job);
    g_running = false;
    if (!alive || window.GetGraphData() != graph || job.IsStopped())
        return -1;
    CCurveInfo *curve = AddFormulaCurve(*graph, job, name);
    if (!curve)
        return 0;
    ReportFailedRows(job);
    if (graph->m_spectrumMode) {
        CurveSpectrum(*graph, *curve);
        FitSpectrumRanges(*graph);
    } else {
        graph->FitRanges();
    }
    window.Redraw(1);
    return 1;
}

CFormulaCurveDialog::CFormulaCurveDialog(CGraphWnd &window)
    : QDialog(&window), m_window(window), m_name(new QLineEdit(this)), m_formula(new QLineEdit(this)),
      m_error(new QLabel(this))
{
    setWindowTitle(LanguageString(TextDialogTitle));
    m_name->setObjectName(QStringLiteral("name"));
    m_formula->setObjectName(QStringLiteral("formula"));
    m_error->setObjectName(QStringLiteral("error"));
    m_error->setWordWrap(true);
    m_error->setStyleSheet(QStringLiteral("color: #b00000"));
    m_formula->setMinimumWidth(360);
    // The column names as a hint of what a formula can read.
    if (const CGraphCurve *graph = window.GetGraphData()) {
        QStringList names;
        for (int i = 0; i < graph->m_data.ColumnCount() && names.size() < 12; ++i)
            names << graph->m_data.GetColumn(i)->m_name;
        m_formula->setPlaceholderText(names.join(QStringLiteral(", ")));
    }
    auto *form = new QFormLayout;
    form->addRow(LanguageString(TextName), m_name);
    form->addRow(LanguageString(TextFormula), m_formula);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &CFormulaCurveDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CFormulaCurveDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_error);
    layout->addWidget(buttons);
    m_error->hide();
}

void CFormulaCurveDialog::accept()
{
    CFormulaCurveJob job;
    const int result = AddFormulaCurveToWindow(m_window, m_name->text().trimmed(), m_formula->text(), job);
    if (result == 1) {
        QDialog::accept();
        return;
    }
    if (result < 0) // stopped: the dialog stays for another try
        return;
    m_error->setText(FormulaErrorText(job));
    m_error->setVisible(!m_error->text().isEmpty());
    m_formula->setFocus();
    if (job.ErrorPosition() >= 0) {
        m_formula->setCursorPosition(job.ErrorPosition());
        // The word at the place, selected.
        const QString text = m_formula->text();
        int end = job.ErrorPosition();
        while (end < text.size() && (text[end].isLetterOrNumber() || text[end] == u'_'))
            ++end;
        if (end > job.ErrorPosition())
            m_formula->setSelection(job.ErrorPosition(), end - job.ErrorPosition());
    }
}
