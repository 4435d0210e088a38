// The commands of the digitiser dialog: Next, Back, Start over, Add curve,
// Replot, the exchange of X and Y, typed curves, pasting, and the canvas's
// clicks and read-out.  The decisions are the capture model's; this carries
// them out on the controls.

#include "tool/tracelifttooldlg.h"

#include "support/controls/exeditctrl.h"
#include "support/languagestring.h"
#include "tool/capture/numbertext.h"
#include "tool/capture/pointtext.h"
#include "tool/curvewnd.h"
#include "tool/traceliftwnd.h"

#include <QAction>
#include <QCheckBox>
#include <QFileInfo>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

constexpr int NoPictureOnClipboard = 27526;
constexpr int FileIsNoPicture = 27590;

QString readoutText(double x, double y)
{
    return u'(' + FormatG(x, 5) + u',' + FormatG(y, 5) + u')';
}

} // namespace

void CTraceliftToolDlg::showMessage(int id, const QString &argument, PromptIcon icon)
{
    QString text = LanguageString(id);
    if (text.contains(QLatin1String("%1")))
        text = text.arg(argument);
    ShowMessage(this, text, PromptButtons::Ok, icon);
}

StepAnswer CTraceliftToolDlg::ask(int id, PromptButtons buttons)
{
    switch (ShowMessage(this, LanguageString(id), buttons, PromptIcon::Question)) {
    case PromptAnswer::Yes: return StepAnswer::Yes;
    case PromptAnswer::No: return StepAnswer::No;
    default: return StepAnswer::Cancel;
    }
}

void CTraceliftToolDlg::setHint(std::optional<int> id)
{
    m_hint->setText(id ? LanguageString(*id) : QString());
}

void CTraceliftToolDlg::showPane(bool canvas)
{
    m_canvas->setVisible(canvas);
    m_plot->setVisible(!canvas);
}

void CTraceliftToolDlg::perform(const CStepActions &a, const QImage *offered)
{
    CCaptureModel &capture = m_canvas->m_capture;
    if (a.hideMagnifier)
        m_canvas->HideMagnifier();
    if (a.startOver) {
        capture.StartOver();
        m_records.ResetCurrentCurve();
    }
    if (a.clearPointsField)
        m_pointsEdit->clear();
    if (a.clearCapture) {
        capture.ClearCapture();
        // The new capture's points need a curve of their own.
        m_records.EnsureRealCurrent();
        m_pointsEdit->setEnabled(true);
    }
    if (a.pastePicture) {
        const bool pasted = offered ? m_canvas->CopyBitmap(*offered) : m_canvas->PasteFromClipboard();
        if (!pasted) {
            // The clipboard changed between the look and the paste.
            showMessage(NoPictureOnClipboard);
            return;
        }
    }
    if (a.clearPictureShown)
        capture.m_calibration.pictureShown = false;
    if (a.applyFields)
        ApplyFields();
    if (a.finishTrace) {
        m_records.FinishTrace(ReadFields());
        UpdateData(false);
    }
    if (a.canvas != Visibility::Keep)
        m_canvas->setVisible(a.canvas == Visibility::Show);
    if (a.plot != Visibility::Keep)
        m_plot->setVisible(a.plot == Visibility::Show);
    if (a.back != ButtonState::Keep)
        m_backAction->setEnabled(a.back == ButtonState::Enable);
    m_canvas->SetMode(a.mode);
    if (a.repaint)
        m_canvas->update();
    if (a.message)
        showMessage(a.message);
    if (a.setHint)
        setHint(a.hintId);
    if (a.clearReadout)
        m_readout->clear();
    m_traceAnotherButton->setEnabled(canTraceAnother());
    if (!tracing())
        dropProposal();
}

void CTraceliftToolDlg::nextStep(const QImage *offered)
{
    CNextInput in;
    in.mode = m_canvas->Mode();
    in.pointCount = m_canvas->m_capture.m_points.count;
    in.clipboardHasPicture = offered || (in.mode == ModeWaitPicture && CTraceliftWnd::ClipboardHasPicture());
    in.values = ReadAxisValues(ReadFields());
    in.deviceKind = m_deviceKind;
    CStepActions a = NextStep(in);
    if (a.question) {
        if (a.hideMagnifier)
            m_canvas->HideMagnifier();
        in.answer = ask(a.question, PromptButtons::YesNoCancel);
        a = NextStep(in);
    }
    perform(a, offered);
}

void CTraceliftToolDlg::OnNext()
{
    nextStep(nullptr);
}

void CTraceliftToolDlg::OnBack()
{
    perform(BackStep(m_canvas->Mode(), m_deviceKind));
}

void CTraceliftToolDlg::OnStartOver()
{
    const bool isTemplate = m_records.CurrentIsTemplate();
    CStepActions a = StartOverStep(m_canvas->Mode(), isTemplate, StepAnswer::None);
    if (a.question)
        a = StartOverStep(m_canvas->Mode(), isTemplate, ask(a.question, PromptButtons::YesNo));
    perform(a);
}

void CTraceliftToolDlg::OnAddCurve()
{
    if (m_records.m_currentCurve)
        UpdateData(true);
    const bool furtherCurve = m_records.AddCurve(ReadFields());
    UpdateData(false);
    m_canvas->SetMode(ModeTyped);
    m_pointsEdit->clear();
    m_nextAction->setEnabled(m_records.m_currentCurve != nullptr);
    if (furtherCurve) {
        // A further curve on the same picture: straight to the axis values.
        m_canvas->SetMode(ModeCornersSet);
        showPane(true);
    }
    setHint(HintTextId(m_canvas->Mode(), m_deviceKind));
    m_readout->clear();
}

void CTraceliftToolDlg::OnReplot()
{
    m_canvas->HideMagnifier();
    if (m_canvas->Mode() < ModeWaitPicture) {
        m_nextAction->setEnabled(true);
        const CToolFields f = ReadFields();
        if (!m_records.CurrentIsTemplate()) {
            replotFromData(f.xLog, f.yLog);
        } else {
            StoreFields();
        }
        return;
    }
    m_canvas->m_capture.m_calibration.panX = 0;
    m_canvas->m_capture.m_calibration.panY = 0;
    ApplyFields();
}

void CTraceliftToolDlg::OnExchangeXY()
{
    CToolFields f = ReadFields();
    ExchangeAxisFields(f);
    writeFields(f);
    m_xName = f.xName;
    m_yName = f.yName;
    if (!m_records.CurrentIsTemplate()) {
        ApplyFields();
    } else {
        StoreFields();
    }
}

void CTraceliftToolDlg::OnApplyTypedCurve()
{
    const bool typed = m_canvas->Mode() == ModeTyped;
    if (typed) {
        const int failed = CheckAxisValues(ReadAxisValues(ReadFields()), AxisCheckTexts::TypedCurve);
        if (failed) {
            showMessage(failed);
            ApplyFields();
            return;
        }
    }
    ApplyFields();
    if (!typed) {
        if (!m_plot->isHidden()) {
            StoreFields();
        }
        return;
    }
    m_records.FinishTrace(ReadFields());
    m_canvas->SetMode(ModePlotted);
    UpdateData(false);
}

void CTraceliftToolDlg::OnPaste()
{
    const CaptureMode mode = m_canvas->Mode();
    if (mode == ModeWaitPicture) {
        nextStep(nullptr);
        return;
    }
    const QImage picture = CTraceliftWnd::ClipboardPicture();
    if (picture.isNull()) {
        showMessage(NoPictureOnClipboard);
        return;
    }
    if (mode < ModeWaitPicture) {
        // A new capture first, then the paste, as two presses of Next would.
        nextStep(nullptr);
        if (m_canvas->Mode() == ModeWaitPicture)
            nextStep(nullptr);
        return;
    }
    // Under way: a fresh copy of the picture replaces the old one, and the
    // capture goes on where it stood.
    m_canvas->CopyBitmap(picture);
    m_canvas->SetMode(mode);
}

void CTraceliftToolDlg::OfferPicture(const QImage &picture)
{
    if (m_canvas->Mode() != ModeWaitPicture || picture.isNull())
        return;
    nextStep(&picture);
}

void CTraceliftToolDlg::OfferPictureFile(const QString &path)
{
    QImageReader reader(path);
    const QImage picture = reader.read();
    if (picture.isNull()) {
        showMessage(FileIsNoPicture, QFileInfo(path).fileName());
        return;
    }
    OfferPicture(picture);
}

bool CTraceliftToolDlg::OpenPictureFile(const QString &path)
{
    if (m_canvas->Mode() < ModeWaitPicture)
        nextStep(nullptr);
    if (m_canvas->Mode() != ModeWaitPicture)
        return false;
    OfferPictureFile(path);
    return m_canvas->Mode() == ModePicturePlaced;
}

void CTraceliftToolDlg::markDirty()
{
    m_fieldsDirty = true;
}

void CTraceliftToolDlg::onCanvasClicked(const CClickResult &r, int modeBefore)
{
    switch (r.reaction) {
    case CClickResult::FocusXAtSecond:
        m_xAtSecondEdit->setFocus();
        break;
    case CClickResult::AppendPoint: {
        m_readout->setText(readoutText(r.x, r.y));
        QString points = m_pointsEdit->text();
        AppendPointText(points, r.x, r.y);
        editPoints(points);
        break;
    }
    case CClickResult::None:
        // A corner of a picture placed: the hint follows the mode, and once
        // both are set the keyboard goes to the first axis value.
        if (modeBefore == ModeCorner1 || modeBefore == ModeCorner2)
            setHint(HintTextId(m_canvas->Mode(), m_deviceKind));
        if (modeBefore == ModeCorner2)
            m_xAtFirstEdit->setFocus();
        break;
    }
}

void CTraceliftToolDlg::onValueUnderMouse(double x, double y)
{
    if (m_fieldsDirty) {
        ApplyFields();
        m_fieldsDirty = false;
        m_canvas->update();
    }
    m_readout->setText(readoutText(x, y));
}
