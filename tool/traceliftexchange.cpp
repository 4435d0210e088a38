// The exchange between the dialog's fields, the curve records, the canvas and
// the plot: UpdateData, ApplyFields, and the one place where the plot is fed.

#include "tool/tracelifttooldlg.h"

#include "support/controls/exeditctrl.h"
#include "tool/capture/pointtext.h"
#include "tool/curvewnd.h"
#include "tool/traceliftwnd.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <cmath>
#include <utility>

namespace {

// An axis limit as the plot takes it: log10 on a logarithmic axis.
double plotLimit(double v, bool logarithmic)
{
    return logarithmic ? std::log10(v) : v;
}

CPlotAxes plotAxes(const CToolFields &fields)
{
    const CAxisValues v = ReadAxisValues(fields);
    CPlotAxes axes;
    axes.xName = fields.xName;
    axes.yName = fields.yName;
    axes.xLog = v.xLog;
    axes.yLog = v.yLog;
    // A reversed range passes as it is.
    axes.xLow = plotLimit(v.xAtFirst, v.xLog);
    axes.xHigh = plotLimit(v.xAtSecond, v.xLog);
    axes.yLow = plotLimit(v.yAtFirst, v.yLog);
    axes.yHigh = plotLimit(v.yAtSecond, v.yLog);
    return axes;
}

} // namespace

bool CTraceliftToolDlg::UpdateData(bool save)
{
    if (save) {
        const CToolFields f = ReadFields();
        m_xName = f.xName;
        m_yName = f.yName;
        if (!m_records.SaveFields(f))
            return false;
        m_nextAction->setEnabled(true);
    }

    // The record back into the fields, the canvas and the plot.
    const CToolFields f = ReadFields();
    const bool exchanged = f.exchangeXY;
    m_pointsEdit->setText(m_records.CurrentPointText(exchanged));
    m_canvas->SetDefaultRectangle();
    CMyDoubleArray pairs;
    const int count = m_records.CurrentPairs(exchanged, pairs);
    if (count == 0) {
        m_canvas->SetMode(ModeIdle);
    } else {
        const CAxisValues v = ReadAxisValues(f);
        m_canvas->m_capture.SetCalibration(v.xAtFirst, v.yAtFirst, v.xAtSecond, v.yAtSecond,
                                           v.xLog, v.yLog, CMyDoubleArray(pairs), count);
    }
    const bool real = !m_records.CurrentIsTemplate();
    m_pointsEdit->setEnabled(real);
    if (real)
        plotCurrentCurve(f, pairs, count);
    else
        plotAllCurves(f);
    m_canvas->update();
    setHint(HintTextId(m_canvas->Mode(), m_deviceKind));
    m_readout->clear();
    return true;
}

bool CTraceliftToolDlg::StoreFields()
{
    const bool stored = UpdateData(true);
    if (stored)
        UpdateData(false);
    return stored;
}

bool CTraceliftToolDlg::SelectRecord(int index)
{
    if (index < 0 || index >= m_records.Size())
        return false;
    if (m_records.m_currentCurve)
        UpdateData(true);
    m_records.m_currentCurve = m_records.At(index);
    UpdateData(false);
    showPane(false);
    return true;
}

void CTraceliftToolDlg::ApplyFields()
{
    if (m_records.CurrentIsTemplate()) {
        repaintPlot();
        return;
    }
    const CToolFields f = ReadFields();
    CCaptureModel &capture = m_canvas->m_capture;
    ApplyFieldsToCapture(f, capture);
    m_canvas->update();
    plotCurrentCurve(f, capture.m_points.pairs, capture.m_points.count);
    m_fieldsDirty = false;
}

// ---------------------------------------------------------------------------
// The plot.  Everything the plot pane is given passes through the functions
// below.

void CTraceliftToolDlg::plotCurrentCurve(const CToolFields &fields, const CMyDoubleArray &pairs,
                                         int count)
{
    const CPlotAxes axes = plotAxes(fields);
    PlotOneCurve(*m_plot, axes, pairs.GetData(), count);
    SetPlotAxes(*m_plot, axes);
}

void CTraceliftToolDlg::plotAllCurves(const CToolFields &fields)
{
    QList<CPlotCurve> curves;
    for (int i = 0; i < m_records.Size(); ++i) {
        const CGraphInfoData *record = m_records.At(i);
        if (record->IsTemplate())
            continue;
        CPlotCurve curve;
        curve.count = record->GetPointCount();
        curve.pairs.SetSize(2 * curve.count);
        for (int k = 0; k < curve.count; ++k)
            record->GetPoint(k, curve.pairs[2 * k], curve.pairs[2 * k + 1]);
        curves.append(std::move(curve));
    }
    const CPlotAxes axes = plotAxes(fields);
    PlotCurves(*m_plot, axes, curves);
    SetPlotAxes(*m_plot, axes);
}

void CTraceliftToolDlg::plotColumns(const CToolFields &fields, const CMyDoubleArray2D &values)
{
    const CPlotAxes axes = plotAxes(fields);
    PlotColumns(*m_plot, axes, values);
    SetPlotAxes(*m_plot, axes);
}

void CTraceliftToolDlg::replotFromData(bool xLog, bool yLog)
{
    const CGraphCurve *graph = m_plot->GetGraphData();
    if (!graph)
        return;
    CPlotAxes axes;
    axes.xLog = xLog;
    axes.yLog = yLog;
    double xl = 0, xh = 0, yl = 0, yh = 0;
    PlotDataLimits(*graph, xl, xh, yl, yh);
    axes.xLow = plotLimit(xl, xLog);
    axes.xHigh = plotLimit(xh, xLog);
    axes.yLow = plotLimit(yl, yLog);
    axes.yHigh = plotLimit(yh, yLog);
    SetPlotAxes(*m_plot, axes);
}

void CTraceliftToolDlg::repaintPlot()
{
    m_plot->Redraw(1);
}
