// The exchange between the dialog's fields, the curve records, the canvas and
// the plot: UpdateData, ApplyFields, and the one place where the plot is fed.

#include "tool/tracelifttooldlg.h"

#include "support/controls/exeditctrl.h"
#include "tool/capture/pointtext.h"
#include "tool/plotplaceholder.h"
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

void setFieldLimits(CPlotFeed &feed, const CToolFields &fields)
{
    const CAxisValues v = ReadAxisValues(fields);
    feed.xLog = v.xLog;
    feed.yLog = v.yLog;
    // A reversed range passes as it is.
    feed.xLow = plotLimit(v.xAtFirst, v.xLog);
    feed.xHigh = plotLimit(v.xAtSecond, v.xLog);
    feed.yLow = plotLimit(v.yAtFirst, v.yLog);
    feed.yHigh = plotLimit(v.yAtSecond, v.yLog);
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
// below; the pane is a CPlotPlaceholder until the graph window replaces it.

const CPlotFeed &CTraceliftToolDlg::PlotFeed() const
{
    return m_plot->Feed();
}

void CTraceliftToolDlg::plotCurrentCurve(const CToolFields &fields, const CMyDoubleArray &pairs,
                                         int count)
{
    CPlotFeed feed;
    feed.xName = fields.xName;
    feed.yName = fields.yName;
    CPlotCurve curve;
    curve.pairs = pairs;
    curve.count = count;
    feed.curves.append(std::move(curve));
    setFieldLimits(feed, fields);
    m_plot->SetFeed(feed);
}

void CTraceliftToolDlg::plotAllCurves(const CToolFields &fields)
{
    CPlotFeed feed;
    feed.xName = fields.xName;
    feed.yName = fields.yName;
    for (int i = 0; i < m_records.Size(); ++i) {
        const CGraphInfoData *record = m_records.At(i);
        if (record->IsTemplate())
            continue;
        CPlotCurve curve;
        curve.count = record->GetPointCount();
        curve.pairs.SetSize(2 * curve.count);
        for (int k = 0; k < curve.count; ++k)
            record->GetPoint(k, curve.pairs[2 * k], curve.pairs[2 * k + 1]);
        feed.curves.append(std::move(curve));
    }
    setFieldLimits(feed, fields);
    m_plot->SetFeed(feed);
}

void CTraceliftToolDlg::plotColumns(const CToolFields &fields, const CMyDoubleArray2D &values)
{
    CPlotFeed feed;
    feed.xName = fields.xName;
    feed.yName = fields.yName;
    const int rows = values.GetRows();
    for (int c = 1; c < values.GetColumns(); ++c) {
        CPlotCurve curve;
        curve.count = rows;
        curve.pairs.SetSize(2 * rows);
        for (int r = 0; r < rows; ++r) {
            curve.pairs[2 * r] = values.GetAt(r, 0);
            curve.pairs[2 * r + 1] = values.GetAt(r, c);
        }
        feed.curves.append(std::move(curve));
    }
    setFieldLimits(feed, fields);
    m_plot->SetFeed(feed);
}

void CTraceliftToolDlg::replotFromData(bool xLog, bool yLog)
{
    CPlotFeed feed = m_plot->Feed();
    feed.xLog = xLog;
    feed.yLog = yLog;
    double xl = 0, xh = 0, yl = 0, yh = 0;
    feed.DataLimits(xl, xh, yl, yh);
    feed.xLow = plotLimit(xl, xLog);
    feed.xHigh = plotLimit(xh, xLog);
    feed.yLow = plotLimit(yl, yLog);
    feed.yHigh = plotLimit(yh, yLog);
    m_plot->SetFeed(feed);
}

void CTraceliftToolDlg::repaintPlot()
{
    m_plot->update();
}
