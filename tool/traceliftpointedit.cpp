// The dialog's point edits: undo and redo of the trace, the arrow keys, the
// Delete key and the copy of the points.  The point text stays the master
// copy: each edit writes it and applies the fields as a click does.

#include "tool/tracelifttooldlg.h"

#include "support/controls/exeditctrl.h"
#include "tool/capture/pointedit.h"
#include "tool/traceliftwnd.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QPushButton>
#include <cmath>
#include <limits>

bool CTraceliftToolDlg::tracing() const
{
    const CaptureMode mode = m_canvas->Mode();
    return mode == ModeTrace || mode == ModeTypedTrace;
}

void CTraceliftToolDlg::editPoints(const QString &text)
{
    const QString before = m_pointsEdit->text();
    if (before != m_editedText) {
        // The text was changed by hand, a load or a new curve: the history
        // belongs to another text.
        m_undoTexts.clear();
        m_redoTexts.clear();
    }
    m_undoTexts << before;
    m_redoTexts.clear();
    m_editedText = text;
    m_pointsEdit->setText(text);
    ApplyFields();
    m_canvas->update();
}

bool CTraceliftToolDlg::OnUndoPoint()
{
    if (!tracing() || m_undoTexts.isEmpty() || m_pointsEdit->text() != m_editedText)
        return false;
    m_redoTexts << m_editedText;
    m_editedText = m_undoTexts.takeLast();
    m_pointsEdit->setText(m_editedText);
    ApplyFields();
    m_canvas->update();
    return true;
}

bool CTraceliftToolDlg::OnRedoPoint()
{
    if (!tracing() || m_redoTexts.isEmpty() || m_pointsEdit->text() != m_editedText)
        return false;
    m_undoTexts << m_editedText;
    m_editedText = m_redoTexts.takeLast();
    m_pointsEdit->setText(m_editedText);
    ApplyFields();
    m_canvas->update();
    return true;
}

bool CTraceliftToolDlg::MoveLastPoint(double dxPixels, double dyPixels)
{
    if (!tracing())
        return false;
    ApplyFields();
    const TracedPoints &points = m_canvas->m_capture.m_points;
    if (points.count < 1)
        return false;
    const CPixelMapping map = m_canvas->m_capture.PixelMapping();
    const int last = points.count - 1;
    const double px = map.PixelX(points.pairs[2 * last]) + dxPixels;
    const double py = map.PixelY(points.pairs[2 * last + 1]) + dyPixels;
    double x = 0, y = 0;
    if (!std::isfinite(px) || !std::isfinite(py) || !m_canvas->m_capture.MapPixelToValue(px, py, x, y))
        return false;
    editPoints(ReplacePointInText(m_pointsEdit->text(), last, x, y));
    return true;
}

bool CTraceliftToolDlg::DeletePointNear(double px, double py)
{
    if (!tracing())
        return false;
    ApplyFields();
    const int nearest = m_canvas->NearestPoint(px, py);
    if (nearest < 0)
        return false;
    editPoints(RemovePointFromText(m_pointsEdit->text(), nearest));
    return true;
}

bool CTraceliftToolDlg::DragPointTo(int index, double px, double py, bool finished)
{
    const bool first = !m_pointDragUnderWay;
    double x = 0, y = 0;
    if (!tracing() || index < 0 || index >= m_canvas->m_capture.m_points.count
        || !std::isfinite(px) || !std::isfinite(py) || !m_canvas->m_capture.MapPixelToValue(px, py, x, y)) {
        if (finished)
            m_pointDragUnderWay = false;
        return false;
    }
    m_pointDragUnderWay = !finished;
    const QString text = ReplacePointInText(m_pointsEdit->text(), index, x, y);
    if (first || m_pointsEdit->text() != m_editedText) {
        editPoints(text);
        return true;
    }
    // Later moves of the same drag rewrite the text under the one undo step.
    m_editedText = text;
    m_pointsEdit->setText(text);
    ApplyFields();
    m_canvas->update();
    return true;
}

void CTraceliftToolDlg::OnCopyPoints()
{
    QGuiApplication::clipboard()->setText(PointTextAsColumns(m_pointsEdit->text()));
}

bool CTraceliftToolDlg::canTraceAnother() const
{
    const CaptureCalibration &c = m_canvas->m_capture.m_calibration;
    return m_canvas->Mode() == ModePlotted && c.pictureLoaded && c.HasRectangle()
        && m_canvas->m_capture.m_points.count > 0;
}

bool CTraceliftToolDlg::OnTraceAnotherCurve()
{
    if (!canTraceAnother())
        return false;
    m_canvas->HideMagnifier();
    // The finished curve keeps its record; the new one is a fresh copy of the
    // template, as Add curve makes it.  Reloading the empty curve leaves the
    // axis fields as they are, and the canvas keeps the picture and corners.
    if (m_records.m_currentCurve)
        UpdateData(true);
    m_records.AddFamilyCurve(ReadFields());
    UpdateData(false);
    m_pointsEdit->clear();
    m_pointsEdit->setEnabled(true);
    m_undoTexts.clear();
    m_redoTexts.clear();
    m_editedText.clear();
    m_canvas->m_capture.m_calibration.pictureShown = true;
    ApplyFields();
    m_canvas->SetMode(ModeTrace);
    showPane(true);
    m_backAction->setEnabled(true);
    m_nextAction->setEnabled(true);
    setHint(HintTextId(ModeTrace, m_deviceKind));
    m_readout->clear();
    m_canvas->update();
    m_traceAnotherButton->setEnabled(false);
    return true;
}
