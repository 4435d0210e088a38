#include "graphviewload.h"

#include "graphviewdata.h"
#include "graphviewmrd.h"

#include "graphdata/exchange/textimport.h"
#include "support/languagestring.h"

#include <QFileInfo>
#include <QPointer>
#include <QScopeGuard>

namespace {

enum : int {
    TextReading = 43635,
};

} // namespace

CGraphviewReadJob::CGraphviewReadJob(const QString &path) : m_path(path), m_graphFile(IsGraphDataFile(path)) {}

double CGraphviewReadJob::Progress() const
{
    return m_graphFile ? -1.0 : m_progress.load(std::memory_order_relaxed) / 1000.0;
}

void CGraphviewReadJob::Run()
{
    CGraphviewInput result;
    if (m_graphFile) {
        result.outcome = LoadGraphDataFile(m_path, result.data, result.message) ? CGraphviewInput::Read
                                                                                 : CGraphviewInput::Failed;
    } else {
        CTextImportOptions options;
        options.progress = &m_progress;
        options.cancel = &m_stop;
        CTextImportReport report;
        const TextImport read = ImportTextFile(m_path, result.data, report, options);
        if (read == TextImport::Read) {
            result.outcome = CGraphviewInput::Read;
            PrepareFileData(result.data);
            result.badCells = BadCellsText(QFileInfo(m_path).fileName(), report);
        } else if (read == TextImport::Cancelled) {
            result.outcome = CGraphviewInput::Cancelled;
        } else {
            result.message = ImportFailureText(m_path, read, report);
        }
    }
    // Cancel pressed while a file that cannot stop half way was read: its
    // data go, as if the reading had stopped.
    if (m_stop.load() && result.outcome == CGraphviewInput::Read) {
        result.outcome = CGraphviewInput::Cancelled;
        result.data = CGraphData();
    }
    m_result = std::move(result);
}

CGraphviewInput ReadGraphviewFile(QWidget *parent, const QString &path, int showDelay)
{
    CGraphviewReadJob job(path);
    int ran = CProgressWorkingDlg::Done;
    {
        // The box may go with its parent while the reading runs; Run then
        // stops the job and still waits for it.
        QPointer<CProgressWorkingDlg> box = new CProgressWorkingDlg(
            parent, QString(), LanguageString(TextReading).arg(QFileInfo(path).fileName()));
        const auto drop = qScopeGuard([&box] { delete box.data(); });
        box->SetShowDelay(showDelay);
        ran = box->Run(job, job.ShowsProgress() ? CProgressWorkingDlg::WorkThread
                                                : CProgressWorkingDlg::WorkThreadBusy);
    }
    CGraphviewInput result = job.Result();
    if (ran == CProgressWorkingDlg::Stopped && result.outcome == CGraphviewInput::Read) {
        result.outcome = CGraphviewInput::Cancelled;
        result.data = CGraphData();
    }
    return result;
}
