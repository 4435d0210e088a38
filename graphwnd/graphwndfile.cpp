// The graph window's data file: the Save command writes the columns, the
// computed curves' columns and the held curves of the shown graph to a graph
// data file (.mrd), with its drawing objects.
#include "graphwnd/graphwnd.h"

#include "graphdata/draw/objectstore.h"
#include "graphdata/file/graphfilesave.h"
#include "graphdata/graphsnapshot.h"
#include "support/controls/progressworkingdlg.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <QFileInfo>
#include <QPointer>
#include <QScopeGuard>

namespace {

enum : int {
    TextSaveCaption = 14012,
    TextDataFileFilter = 43115,
    TextWriting = 43953,
};

} // namespace

bool CGraphWnd::SaveDataFile(QString path)
{
    if (!m_graphData)
        return false;
    if (path.isEmpty()) {
        CFilePrompt prompt;
        prompt.parent = this;
        prompt.save = true;
        prompt.caption = LanguageString(TextSaveCaption);
        prompt.filter = LanguageString(TextDataFileFilter);
        prompt.defaultSuffix = QStringLiteral("mrd");
        path = AskFileName(prompt);
        if (path.isEmpty())
            return false;
    }
    QString message;
    // The drawing objects go with the columns, as an attachment block.
    std::vector<QByteArray> attachments;
    if (!m_graphData->m_textObjects.IsEmpty())
        attachments.push_back(StoreObjects(m_graphData->m_textObjects));
    // The columns and rows as they are now (a producer may go on appending),
    // and behind them the columns of the computed curves, so that the file
    // keeps every curve the graph shows.
    CGraphDataSnapshot snapshot;
    snapshot.Take(m_graphData->m_data);
    std::vector<CGraphColumn *> columns;
    for (int i = 0; i < snapshot.Size(); ++i)
        columns.push_back(const_cast<CGraphColumn *>(snapshot.Column(i)));
    std::vector<CGraphColumnPtr> computedKept; // alive while the file is written
    for (CCurveInfo *curve : m_graphData->m_curves) {
        CGraphColumn *computed = curve->m_computedColumn.Get();
        if (curve->Origin() == CCurveBasicInfo::OriginComputed && computed && computed->m_count >= snapshot.RowCount()) {
            columns.push_back(computed);
            computedKept.push_back(curve->m_computedColumn);
        }
    }
    // A large file takes a while: it is written on a worker thread under the
    // busy box, which keeps the window painted and shows the time it takes.
    // Writing cannot be stopped half way, so the box has no Cancel.
    int saved = 0;
    const CCurveHoldList *holds = &m_graphData->m_holds;
    CWorkingFunctionJob work([&](const std::atomic<bool> &, std::atomic<double> &) {
        saved = SaveColumns(4, path, columns.data(), int(columns.size()), snapshot.RowCount(), attachments, {},
                            holds, &message);
    });
    {
        QPointer<CProgressWorkingDlg> box =
            new CProgressWorkingDlg(this, LanguageString(TextSaveCaption),
                                    LanguageString(TextWriting).arg(QFileInfo(path).fileName()));
        const auto drop = qScopeGuard([&box] { delete box.data(); });
        box->SetCancelable(false);
        box->Run(work, CProgressWorkingDlg::WorkThreadBusy);
    }
    if (!saved) {
        ShowMessage(this, message, PromptButtons::Ok, PromptIcon::Stop);
        return false;
    }
    return true;
}
