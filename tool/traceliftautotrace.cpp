// Automatic tracing in the digitiser dialog: Shift+click on a curve follows
// it (CCurveTracer), the points at the chosen spacing are proposed on the
// canvas, and Accept makes them the point text, which stays the master copy.

#include "tool/tracelifttooldlg.h"

#include "support/controls/exeditctrl.h"
#include "support/languagestring.h"
#include "tool/capture/numbertext.h"
#include "tool/capture/pointtext.h"
#include "tool/traceliftwnd.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <cmath>

namespace {

enum : int {
    TextAutoTrace = 27624,
    TextEveryNPixels = 27626,
    TextPerDecade = 27627,
    TextAtValues = 27628,
    TextAccept = 27630,
    NoCurveThereMessage = 27632,
    BadSpacingMessage = 27633,
    NoPointWithSpacingMessage = 27634,
};

// The spacing of the controls; false when its text says nothing usable.
bool readSpacing(int kind, const QString &text, CTraceSpacing &spacing)
{
    spacing = CTraceSpacing();
    spacing.kind = CTraceSpacing::Kind(std::clamp(kind, 0, 2));
    if (spacing.kind == CTraceSpacing::AtValues) {
        static const QRegularExpression separators(QStringLiteral("[;\\s]+"));
        for (const QString &part : text.split(separators, Qt::SkipEmptyParts)) {
            int found = 0;
            const double v = FromFloatExStr(part, found);
            if (!found || !std::isfinite(v))
                return false;
            spacing.values.push_back(v);
        }
        return !spacing.values.empty();
    }
    int found = 0;
    spacing.n = FromFloatExStr(text.trimmed(), found);
    return found && spacing.n >= 1 && std::isfinite(spacing.n);
}

} // namespace

QWidget *CTraceliftToolDlg::buildAutoTraceControls()
{
    auto *box = new QWidget(this);
    auto *row = new QHBoxLayout(box);
    row->setContentsMargins(0, 0, 0, 0);
    m_spacingCombo = new QComboBox(box);
    m_spacingCombo->setObjectName(QString::number(IdTraceSpacing));
    m_spacingCombo->setToolTip(LanguageString(IdTraceSpacing));
    for (int id : {TextEveryNPixels, TextPerDecade, TextAtValues})
        m_spacingCombo->addItem(LanguageString(id));
    m_spacingEdit = new QLineEdit(QStringLiteral("10"), box);
    m_spacingEdit->setObjectName(QString::number(IdTraceSpacingValue));
    m_spacingEdit->setToolTip(LanguageString(IdTraceSpacingValue));
    m_spacingEdit->setMaximumWidth(120);
    m_acceptTraceButton = new QPushButton(LanguageString(TextAccept), box);
    m_acceptTraceButton->setObjectName(QString::number(IdAcceptTrace));
    m_acceptTraceButton->setToolTip(LanguageString(IdAcceptTrace));
    m_acceptTraceButton->setAutoDefault(false);
    m_acceptTraceButton->setEnabled(false);
    auto *label = new QLabel(LanguageString(TextAutoTrace), box);
    label->setBuddy(m_spacingCombo);
    row->addWidget(label);
    row->addWidget(m_spacingCombo);
    row->addWidget(m_spacingEdit);
    row->addWidget(m_acceptTraceButton);
    connect(m_acceptTraceButton, &QPushButton::clicked, this, &CTraceliftToolDlg::AcceptProposal);
    connect(m_spacingCombo, &QComboBox::activated, this, [this] { showProposal(); });
    connect(m_spacingEdit, &QLineEdit::editingFinished, this, [this] { showProposal(); });
    return box;
}

void CTraceliftToolDlg::SetTraceSpacing(int kind, const QString &text)
{
    m_spacingCombo->setCurrentIndex(std::clamp(kind, 0, 2));
    m_spacingEdit->setText(text);
    if (m_autoTrace)
        showProposal();
}

bool CTraceliftToolDlg::PickCurveAt(double px, double py)
{
    if (!tracing())
        return false;
    ApplyFields();
    const CaptureCalibration &c = m_canvas->m_capture.m_calibration;
    const QPointF pan(c.panX, c.panY);
    const QRectF area = QRectF(QPointF(c.firstCornerX, c.firstCornerY), QPointF(c.secondCornerX, c.secondCornerY))
                            .normalized()
                            .translated(pan);
    CCurveTrace trace = CCurveTracer().Trace(m_canvas->Bitmap(), QPointF(px, py) + pan, area);
    if (!trace.found) {
        dropProposal();
        showMessage(NoCurveThereMessage);
        return false;
    }
    m_autoTrace = std::make_unique<CCurveTrace>(std::move(trace));
    return showProposal();
}

bool CTraceliftToolDlg::showProposal()
{
    if (!m_autoTrace)
        return false;
    CTraceSpacing spacing;
    if (!readSpacing(m_spacingCombo->currentIndex(), m_spacingEdit->text(), spacing)) {
        m_canvas->SetProposal({});
        m_acceptTraceButton->setEnabled(false);
        showMessage(BadSpacingMessage, m_spacingEdit->text());
        return false;
    }
    const CCaptureModel &capture = m_canvas->m_capture;
    const CaptureCalibration &c = capture.m_calibration;
    const CPixelMapping map = capture.PixelMapping();
    // The tracer works in picture positions, the calibration in canvas ones.
    const auto valueOf = [&](double pictureX) {
        double x = NAN, y = NAN;
        capture.MapPixelToValue(pictureX - c.panX, c.firstCornerY, x, y);
        return x;
    };
    const auto pixelOf = [&](double value) { return map.PixelX(value) + c.panX; };
    QList<QPointF> points;
    for (double x : ProposalXs(spacing, m_autoTrace->ProposalStart(), m_autoTrace->ProposalEnd(), valueOf, pixelOf))
        if (const std::optional<double> y = m_autoTrace->YAt(x))
            points << QPointF(x - c.panX, *y - c.panY);
    m_canvas->SetProposal(points);
    m_acceptTraceButton->setEnabled(!points.isEmpty());
    if (points.isEmpty())
        showMessage(NoPointWithSpacingMessage);
    return !points.isEmpty();
}

void CTraceliftToolDlg::dropProposal()
{
    m_autoTrace.reset();
    if (!m_canvas->Proposal().isEmpty())
        m_canvas->SetProposal({});
    if (m_acceptTraceButton)
        m_acceptTraceButton->setEnabled(false);
}

bool CTraceliftToolDlg::AcceptProposal()
{
    const QList<QPointF> points = m_canvas->Proposal();
    if (!tracing() || points.isEmpty())
        return false;
    QString text;
    for (const QPointF &p : points) {
        double x = 0, y = 0;
        if (m_canvas->m_capture.MapPixelToValue(p.x(), p.y(), x, y))
            AppendPointText(text, x, y);
    }
    dropProposal();
    editPoints(text);
    return true;
}
