// "Calibrate from the picture": the dialog's side of reading the calibration
// off a pasted graph.  The reading itself is tool/autocal's; here its
// proposal is carried out on the canvas and the fields as the user's own
// clicks and typing would be, so that Back, the fields and clicking the
// corners by hand go on working as before.

#include "tool/tracelifttooldlg.h"

#include "support/controls/exeditctrl.h"
#include "support/languagestring.h"
#include "tool/autocal/calibrationproposal.h"
#include "tool/capture/numbertext.h"
#include "tool/traceliftwnd.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>

#include <cmath>

namespace {

enum : int {
    TextProposed = 27642,
    TextStraightened = 27643,
    TextNoFrame = 27644,
    TextNoOcr = 27645,
    TextXUndecided = 27646,
    TextYUndecided = 27647,
    TextTooFewLabels = 27648,
    TextInconsistent = 27649,
    TextAmbiguous = 27650,
    TextReversed = 27651,
    TextFound = 27652,
    TextNoPicture = 27653,
    TextLinear = 27654,
    TextLogarithmic = 27655,
};

QString reasonOf(const CCalibrationProposal &p, AxisSide side)
{
    const CAxisModel &m = side == AxisSide::X ? p.xModel : p.yModel;
    const int labels = int((side == AxisSide::X ? p.xLabels : p.yLabels).size());
    switch (m.outcome) {
    case CAxisModel::Outcome::TooFewLabels:
        return LanguageString(TextTooFewLabels).arg(p.ReadableLabels(side)).arg(labels);
    case CAxisModel::Outcome::Ambiguous:
        return LanguageString(TextAmbiguous);
    case CAxisModel::Outcome::Reversed:
        return LanguageString(TextReversed);
    case CAxisModel::Outcome::Inconsistent:
    case CAxisModel::Outcome::Fitted: // fitted, but with too many labels against it
        return LanguageString(TextInconsistent).arg(m.agreeing.size()).arg(labels);
    }
    return QString();
}

QString labelText(const CTickLabel &l)
{
    if (!l.value.ok)
        return QStringLiteral("?");
    return l.exponent.isEmpty() ? l.text : l.text + u'^' + l.exponent;
}

// The value as typed into a field, in units of the axis's prefix.
QString fieldText(double value, int prefixExponent)
{
    return FormatG(value / std::pow(10.0, prefixExponent), 6);
}

} // namespace

bool CTraceliftToolDlg::OnCalibrateFromPicture()
{
    CCaptureModel &capture = m_canvas->m_capture;
    const CaptureMode mode = m_canvas->Mode();
    const bool pictureShown = capture.m_calibration.pictureLoaded && capture.m_calibration.pictureShown;
    if (!pictureShown || mode < ModePicturePlaced || mode > ModeValuesAwaited) {
        showMessage(TextNoPicture);
        return false;
    }
    m_canvas->HideMagnifier();
    const CCalibrationProposal p = ProposeCalibration(m_canvas->Bitmap());

    QString said;
    if (p.straightened) {
        // The straightened picture replaces the pasted one; where it stood
        // in view and the step of the capture stay as they were.
        const int panX = capture.m_calibration.panX, panY = capture.m_calibration.panY;
        m_canvas->CopyBitmap(p.straightPicture);
        capture.m_calibration.panX = panX;
        capture.m_calibration.panY = panY;
        m_canvas->SetMode(mode);
        said = LanguageString(TextStraightened).arg(QString::number(p.rotationDegrees, 'f', 2)) + u' ';
    }

    CProposalOverlay overlay;
    overlay.frame = p.grid.Frame();
    overlay.xLines = p.grid.xLines;
    overlay.yLines = p.grid.yLines;
    for (const QList<CTickLabel> *labels : {&p.xLabels, &p.yLabels})
        for (const CTickLabel &l : *labels) {
            overlay.labelBoxes.append(l.box);
            overlay.labelTexts.append(labelText(l));
        }
    if (p.Proposed())
        overlay.corners = {p.firstCorner, p.secondCorner};
    if (p.grid.frameFound)
        m_canvas->SetProposalOverlay(overlay);

    if (!p.Proposed()) {
        if (p.grid.frameFound)
            said += LanguageString(TextFound).arg(p.grid.xLines.size()).arg(p.grid.yLines.size()) + u' ';
        switch (p.outcome) {
        case CCalibrationProposal::Outcome::NoFrame: said += LanguageString(TextNoFrame); break;
        case CCalibrationProposal::Outcome::NoOcr: said += LanguageString(TextNoOcr); break;
        case CCalibrationProposal::Outcome::XUndecided:
            said += LanguageString(TextXUndecided).arg(reasonOf(p, AxisSide::X));
            break;
        case CCalibrationProposal::Outcome::YUndecided:
            said += LanguageString(TextYUndecided).arg(reasonOf(p, AxisSide::Y));
            break;
        case CCalibrationProposal::Outcome::Proposed: break;
        }
        m_hint->setText(said);
        return false;
    }

    // The steps a user takes: to the first corner (Next from the placed
    // picture, Back from the later steps), two clicks, then the fields.
    if (m_canvas->Mode() == ModePicturePlaced)
        OnNext();
    while (m_canvas->Mode() > ModeCorner1 && m_canvas->Mode() <= ModeValuesAwaited)
        OnBack();
    const int panX = capture.m_calibration.panX, panY = capture.m_calibration.panY;
    m_canvas->ClickAt(p.firstCorner.x() - panX, p.firstCorner.y() - panY);
    m_canvas->ClickAt(p.secondCorner.x() - panX, p.secondCorner.y() - panY);
    m_xAtFirstEdit->setText(fieldText(p.xAtFirst, p.xPrefixExponent));
    m_xAtSecondEdit->setText(fieldText(p.xAtSecond, p.xPrefixExponent));
    m_yAtFirstEdit->setText(fieldText(p.yAtFirst, p.yPrefixExponent));
    m_yAtSecondEdit->setText(fieldText(p.yAtSecond, p.yPrefixExponent));
    m_xLogCheck->setChecked(p.xLog);
    m_yLogCheck->setChecked(p.yLog);
    selectUnit(m_xUnitCombo, UnitPrefixOfExponent(p.xPrefixExponent));
    selectUnit(m_yUnitCombo, UnitPrefixOfExponent(p.yPrefixExponent));
    // The grid of the proposal is drawn at once, so that it can be checked
    // against the printed one before Next.
    ApplyFields();
    m_canvas->update();
    said += LanguageString(TextProposed)
                .arg(LanguageString(p.xLog ? TextLogarithmic : TextLinear),
                     LanguageString(p.yLog ? TextLogarithmic : TextLinear));
    m_hint->setText(said);
    return true;
}
