// Saving and loading point text files: OK writes every real curve to a file
// of its own, Load reads one curve table into the fields.

#include "tool/tracelifttooldlg.h"

#include "support/languagestring.h"
#include "tool/capture/familytable.h"
#include "tool/capture/filereplace.h"
#include "tool/capture/pointtextfile.h"
#include "tool/traceliftwnd.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLineEdit>

namespace {

constexpr int TextSaveCaption = 27585;
constexpr int TextLoadCaption = 27586;
constexpr int HeaderTooShortMessage = 27591;
constexpr int SaveWhileTracingMessage = 27592;
constexpr int LineNotAPairMessage = 27593;
constexpr int OnlyCommentsMessage = 27594;
constexpr int WriteFailedMessage = 27596;
constexpr int TextSaveFamilyCaption = 27622;
constexpr int NoFinishedCurveMessage = 27623;
constexpr int XRangeDiffersMessage = 27536;
constexpr int OfferFamilyCsvQuestion = 44300;

// While a curve is captured its points are not in the record yet, and the
// dialog's load half would drop the mode under the shown canvas.
bool capturing(CaptureMode mode)
{
    return mode >= ModeWaitPicture && mode <= ModeTrace;
}

} // namespace

void CTraceliftToolDlg::OnOk()
{
    if (m_canvas->Mode() == ModeTyped)
        OnApplyTypedCurve();
    else if (capturing(m_canvas->Mode()))
        showMessage(SaveWhileTracingMessage);
    else
        saveCurves();
}

bool CTraceliftToolDlg::saveCurves()
{
    const CToolFields f = ReadFields();
    m_xName = f.xName;
    m_yName = f.yName;
    CGraphInfoData *const current = m_records.m_currentCurve;
    const int currentPlace = m_records.List() ? m_records.List()->Find(current) : -1;
    const CSavePlan plan = m_records.PrepareSaving(f, m_deviceKind);
    if (!plan.ok) {
        // The records are as they were.  The fields of the curve under work
        // stay as the user left them; another curve that failed is shown,
        // as choosing it would show it.
        if (!plan.failedCurrent && currentPlace >= 0) {
            const int failing = m_records.List()->Find(m_records.m_currentCurve);
            m_records.m_currentCurve = m_records.At(currentPlace);
            SelectRecord(failing);
        }
        if (plan.messageId)
            showMessage(plan.messageId, plan.messageArgument, PromptIcon::Stop);
        // Curves of one family often end at different X (a curve leaves the
        // graph early, another starts late).  The file per curve stays
        // refused for them; the family CSV, which leaves a cell empty where a
        // curve has no value, takes them as they are.
        if (plan.messageId == XRangeDiffersMessage && ask(OfferFamilyCsvQuestion, PromptButtons::YesNo) == StepAnswer::Yes)
            return OnSaveFamilyCsv();
        return false;
    }
    // Saving the fields loads them back.
    UpdateData(false);
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
        ShowMessage(this, LanguageString(WriteFailedMessage).arg(path, report), PromptButtons::Ok,
                    PromptIcon::Stop);
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
    int line = 0;
    const QString name = QFileInfo(path).fileName();
    // Whatever fails, the fields stay as they are, and the user is told why.
    switch (ReadPointTextFile(path, table, report, &line)) {
    case PointFileRead::OpenFailed:
        ShowMessage(this, report, PromptButtons::Ok, PromptIcon::Stop);
        return;
    case PointFileRead::NoData:
        showMessage(OnlyCommentsMessage, name, PromptIcon::Stop);
        return;
    case PointFileRead::BadLine:
        ShowMessage(this, LanguageString(LineNotAPairMessage).arg(name).arg(line), PromptButtons::Ok,
                    PromptIcon::Stop);
        return;
    case PointFileRead::Read:
        break;
    }

    CToolFields f = ReadFields();
    if (ApplyPointTable(table, f, m_records, m_xName, m_yName) == PointTableApplied::HeaderTooShort) {
        showMessage(HeaderTooShortMessage, name, PromptIcon::Stop);
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

bool CTraceliftToolDlg::OnSaveFamilyCsv()
{
    if (capturing(m_canvas->Mode())) {
        showMessage(SaveWhileTracingMessage);
        return false;
    }
    StoreFields();
    // The records hold the points as they are written to the curve files,
    // crossed when X and Y are exchanged; so do the names and the log flags.
    const CToolFields f = ReadFields();
    const CGraphInfoData *templ = m_records.Template();
    std::vector<CCurvePoints> curves;
    for (int i = 0; i + 1 < m_records.Size(); ++i) {
        const CGraphInfoData *curve = m_records.At(i);
        if (curve->IsTemplate() || curve->GetPointCount() == 0)
            continue;
        CCurvePoints points;
        for (int k = 0; k < curve->GetPointCount(); ++k) {
            double x = 0, y = 0;
            curve->GetPoint(k, x, y);
            points.emplace_back(x, y);
        }
        curves.push_back(std::move(points));
    }
    if (curves.empty() || !templ) {
        showMessage(NoFinishedCurveMessage);
        return false;
    }
    const QString xName = (f.exchangeXY ? f.yName : f.xName).trimmed();
    const QString yName = (f.exchangeXY ? f.xName : f.yName).trimmed();
    QStringList names;
    for (std::size_t c = 1; c <= curves.size(); ++c)
        names << QStringLiteral("%1 %2").arg(yName.isEmpty() ? QStringLiteral("Y") : yName).arg(c);
    const CFamilyTable table = MakeFamilyTable(curves, templ->xLog != 0, templ->yLog != 0);
    const std::string csv = FamilyCsvText(table, xName.isEmpty() ? QStringLiteral("X") : xName, names);

    CFilePrompt prompt;
    prompt.parent = this;
    prompt.save = true;
    prompt.caption = LanguageString(TextSaveFamilyCaption);
    const QFileInfo last(OfferedFileName(m_lastFileName, QCoreApplication::applicationFilePath()));
    prompt.fileName = last.suffix().compare(QLatin1String("txt"), Qt::CaseInsensitive) == 0
        ? last.path() + u'/' + last.completeBaseName() + QStringLiteral(".csv")
        : last.filePath();
    prompt.filter = QStringLiteral("CSV files (*.csv);;All files (*)");
    prompt.defaultSuffix = QStringLiteral("csv");
    const QString path = AskFileName(prompt);
    if (path.isEmpty())
        return false;
    QString reason;
    if (!ReplaceFileContents(path, csv, reason)) {
        ShowMessage(this, LanguageString(WriteFailedMessage).arg(path, reason), PromptButtons::Ok,
                    PromptIcon::Stop);
        return false;
    }
    m_lastFileName = path;
    m_fileName->setText(path);
    return true;
}
