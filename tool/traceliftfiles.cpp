// Saving and loading point text files: OK writes every real curve to a file
// of its own, Load reads one curve table into the fields.

#include "tool/tracelifttooldlg.h"

#include "support/languagestring.h"
#include "tool/capture/pointtextfile.h"
#include "tool/traceliftwnd.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLineEdit>

namespace {

constexpr int TextSaveCaption = 27585;
constexpr int TextLoadCaption = 27586;
constexpr int HeaderTooShortMessage = 27591;

} // namespace

void CTraceliftToolDlg::OnOk()
{
    if (m_canvas->Mode() == ModeTyped)
        OnApplyTypedCurve();
    else
        saveCurves();
}

bool CTraceliftToolDlg::saveCurves()
{
    const CToolFields f = ReadFields();
    m_xName = f.xName;
    m_yName = f.yName;
    const CSavePlan plan = m_records.PrepareSaving(f, m_deviceKind);
    // Saving the fields loads them back; after a refusal that shows the
    // curve that failed.
    UpdateData(false);
    if (!plan.ok) {
        if (plan.messageId)
            showMessage(plan.messageId, plan.messageArgument, PromptIcon::Stop);
        return false;
    }
    for (const CGraphInfoData *curve : plan.toWrite)
        if (!writeCurve(*curve, f))
            return false;
    return true;
}

bool CTraceliftToolDlg::writeCurve(const CGraphInfoData &curve, const CToolFields &fields)
{
    CFilePrompt prompt;
    prompt.parent = this;
    prompt.save = true;
    prompt.caption = LanguageString(TextSaveCaption);
    prompt.fileName = OfferedFileName(m_lastFileName, QCoreApplication::applicationFilePath());
    prompt.filter = PointTextFileFilter();
    prompt.defaultSuffix = PointTextFileSuffix();
    const QString path = AskFileName(prompt);
    if (path.isEmpty())
        return false;
    QString report;
    if (!WriteCurveFile(path, curve, fields, report)) {
        ShowMessage(this, report, PromptButtons::Ok, PromptIcon::Stop);
        return false;
    }
    m_lastFileName = path;
    m_fileName->setText(path);
    return true;
}

void CTraceliftToolDlg::OnLoad()
{
    CFilePrompt prompt;
    prompt.parent = this;
    prompt.caption = LanguageString(TextLoadCaption);
    prompt.fileName = OfferedFileName(m_lastFileName, QCoreApplication::applicationFilePath());
    prompt.filter = PointTextFileFilter();
    prompt.defaultSuffix = PointTextFileSuffix();
    const QString path = AskFileName(prompt);
    if (path.isEmpty())
        return;

    CPointTable table;
    QString report;
    switch (ReadPointTextFile(path, table, report)) {
    case PointFileRead::OpenFailed:
        ShowMessage(this, report, PromptButtons::Ok, PromptIcon::Stop);
        return;
    case PointFileRead::NoData:
    case PointFileRead::BadLine:
        // Nothing to take: the fields stay as they are.
        return;
    case PointFileRead::Read:
        break;
    }

    CToolFields f = ReadFields();
    if (ApplyPointTable(table, f, m_records, m_xName, m_yName) == PointTableApplied::HeaderTooShort) {
        showMessage(HeaderTooShortMessage, QFileInfo(path).fileName(), PromptIcon::Stop);
        return;
    }
    // The fields take the file; the plot shows every column until the
    // fields are applied.
    m_canvas->SetMode(ModeWaitPicture);
    m_canvas->m_capture.ClearCapture();
    writeFields(f);
    plotColumns(f, table.values);
    m_canvas->SetMode(ModeTrace);
    ApplyFields();
    m_canvas->update();
    update();
    m_canvas->SetMode(ModeIdle);
    m_lastFileName = path;
    m_fileName->setText(path);
}
