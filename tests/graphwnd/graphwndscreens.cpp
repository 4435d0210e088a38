// Pictures of the graph window for the README: a graph marked with an
// arrow, a box and a text placed with the mouse tools, and a spectrum with
// two EMI limits over it, and a series over calendar days with titled Y
// axes.  Run under a display (xvfb-run works) or on the offscreen platform:
//     graphwnd_screens OUTPUT_FOLDER
// It writes graphwnd-objects.png, graphwnd-emi.png, graphwnd-dates.png,
// graphwnd-textattributes.png (the dialog of a text object) and
// graphwnd-channels.png (an oscilloscope's channel formulas, one refused).

#include "screenshots.h"

#include "graphdata/draw/drawtools.h"
#include "graphdata/emi/emilimits.h"
#include "graphdata/spectrum/spectrumjob.h"
#include "graphdata/scopegraph.h"
#include "graphwnd/graphwnd.h"
#include "graphwnd/scopechannelsdialog.h"
#include "graphwnd/textattributes.h"

#include <cmath>
#include <numbers>

#include <QLineEdit>

namespace {

// A step response: a damped oscillation settling at 1.
CGraphData stepResponse()
{
    CGraphData data;
    data.Create(1, 2, 0, 0);
    for (int i = 0; i <= 600; ++i) {
        const double t = i * 0.01;
        const double row[2] = {t, 1 - std::exp(-0.9 * t) * std::cos(4 * t)};
        data.AppendRows(row, nullptr, 0, 2, i, 1);
    }
    data.GetColumn(0)->m_name = QStringLiteral("t");
    data.GetColumn(1)->m_name = QStringLiteral("response");
    return data;
}

// Six weeks of a battery test from 2024-03-01, one row every six hours:
// the capacity fading, and the cell temperature following the lab's week.
CGraphData batteryLog()
{
    CGraphData data;
    data.Create(1, 3, 0, 0);
    const double firstDay = 45352; // 2024-03-01 in days from 1899-12-30
    for (int i = 0; i <= 45 * 4; ++i) {
        const double day = i / 4.0;
        const double row[3] = {firstDay + day, 100 - 0.12 * day - 0.9 * (1 - std::exp(-day / 5)),
                               24 + 3 * std::sin(2 * std::numbers::pi * day / 7) + 0.6 * std::sin(day)};
        data.AppendRows(row, nullptr, 0, 3, i, 1);
    }
    data.GetColumn(0)->m_name = QStringLiteral("Date");
    data.GetColumn(1)->m_name = QStringLiteral("capacity");
    data.GetColumn(2)->m_name = QStringLiteral("temperature");
    return data;
}

QPoint at(CGraphWnd &wnd, double x, double y)
{
    double px, py;
    ObjectPixel(wnd.ObjectFrame(0), x, y, px, py);
    return QPoint(int(px), int(py));
}

void drag(CGraphWnd &wnd, QPoint from, QPoint to, Qt::KeyboardModifiers keys = Qt::NoModifier)
{
    QTest::mousePress(&wnd, Qt::LeftButton, keys, from);
    QTest::mouseMove(&wnd, (from + to) / 2);
    QTest::mouseMove(&wnd, to);
    QTest::mouseRelease(&wnd, Qt::LeftButton, keys, to);
}

} // namespace

int main(int argc, char **argv)
{
    const CScreenshotRun run(argc, argv);
    if (run.ExitCode() != 0)
        return run.ExitCode();
    bool ok = true;

    {
        CGraphWnd wnd;
        wnd.resize(860, 520);
        wnd.SetGraphDataCopy(stepResponse());
        wnd.GetGraphData()->m_backColor = 0xFFFFFF;
        wnd.GetGraphData()->m_title = QStringLiteral("Step response");
        ShowExposed(wnd);
        wnd.grab();
        // the overshoot boxed, an arrow to it from a text
        wnd.OnCommand(CmdToolRect);
        drag(wnd, at(wnd, 0.45, 1.42), at(wnd, 1.15, 1.15));
        wnd.OnCommand(CmdToolLine);
        drag(wnd, at(wnd, 2.2, 1.5), at(wnd, 1.2, 1.35));
        wnd.m_askObjectText = [](CGraphWnd &, QPoint) { return QStringLiteral("overshoot 29 %"); };
        wnd.OnCommand(CmdToolText);
        QTest::mouseClick(&wnd, Qt::LeftButton, Qt::NoModifier, at(wnd, 2.25, 1.5));
        // the settling span, marked over the whole height
        wnd.m_newPen.color = 0x008000;
        wnd.OnCommand(CmdToolRect);
        drag(wnd, at(wnd, 3.4, 0.5), at(wnd, 5.9, 0.6), Qt::ShiftModifier);
        wnd.m_askObjectText = [](CGraphWnd &, QPoint) { return QStringLiteral("within 2 %"); };
        wnd.m_newPen.color = 0x008000;
        wnd.OnCommand(CmdToolText);
        QTest::mouseClick(&wnd, Qt::LeftButton, Qt::NoModifier, at(wnd, 3.5, 0.35));
        wnd.OnCommand(CmdToolSelect);
        wnd.grab();
        ok = run.Save(wnd.grab(), QStringLiteral("graphwnd-objects.png")) && ok;
    }
    {
        CGraphWnd wnd;
        wnd.resize(860, 520);
        wnd.SetGraphDataCopy(SwitchingNode(1 << 15, false));
        CGraphCurve &g = *wnd.GetGraphData();
        g.m_backColor = 0xFFFFFF;
        g.m_xLog = 1;
        SetSpectrumMode(g, true);
        wnd.ShowEmiLimit(0, true); // FCC Class A
        wnd.ShowEmiLimit(1, true); // FCC Class B
        g.Curve(g.CurveCount() - 1)->m_color = 0x0000C0;
        ShowExposed(wnd);
        wnd.grab();
        ok = run.Save(wnd.grab(), QStringLiteral("graphwnd-emi.png")) && ok;
    }
    {
        CDrawText text;
        text.m_text = QStringLiteral("overshoot 29 %");
        text.m_face = QStringLiteral("DejaVu Serif");
        text.m_fontHeight = 14;
        text.m_fontWeight = 700;
        text.m_color = 0x0000C0;
        CTextAttributes dialog;
        dialog.Load(text);
        ShowExposed(dialog);
        ok = run.Save(dialog.grab(), QStringLiteral("graphwnd-textattributes.png")) && ok;
    }
    {
        CGraphWnd wnd;
        wnd.resize(860, 520);
        wnd.SetGraphDataCopy(batteryLog());
        CGraphCurve &g = *wnd.GetGraphData();
        g.m_title = QStringLiteral("Cycling test, cell 7");
        g.m_xAxisFlags |= CGraph_Range::AxisDateDays;
        g.Range(0)->m_title = QStringLiteral("Capacity [%]");
        g.Range(0)->m_textColor = g.Curve(0)->m_color;
        CCurveInfo &temperature = *g.Curve(1);
        temperature.m_yAxisIndex = g.AddRange(&temperature);
        g.Range(temperature.m_yAxisIndex)->m_title = QStringLiteral("Cell temperature [°C]");
        g.Range(temperature.m_yAxisIndex)->m_textColor = temperature.m_color;
        g.FitRanges();
        wnd.UpdateView();
        wnd.StoreDefaultView();
        ShowExposed(wnd);
        wnd.grab();
        ok = run.Save(wnd.grab(), QStringLiteral("graphwnd-dates.png")) && ok;
    }
    {
        // Three channels over 2 ms; the third is given a formula with a name
        // the oscilloscope has no column for.
        CGraphData data(true);
        data.Create(2, 4, 2000, 2000);
        const char *names[4] = {"t", "sine", "square", "sum"};
        for (int c = 0; c < 4; ++c)
            data.GetColumn(c)->m_name = QString::fromLatin1(names[c]);
        for (int i = 0; i < 2000; ++i) {
            const double t = i * 1e-6;
            const double row[4] = {t, std::sin(2 * std::numbers::pi * 1000 * t),
                                   std::fmod(t * 1500, 1.0) < 0.5 ? 1.0 : -1.0, 0.0};
            data.AppendRows(row, nullptr, 0, 4, i, 1);
        }
        CGraphWnd wnd;
        wnd.resize(860, 520);
        wnd.SetGraphData(MakeScopeGraph(data), 0, true);
        CScopeChannelsDialog dialog(wnd);
        dialog.FormulaEdit(1)->setText(QStringLiteral("sine*2"));
        dialog.FormulaEdit(3)->setText(QStringLiteral("sine + sqare/2"));
        dialog.accept();
        ShowExposed(dialog);
        ok = run.Save(dialog.grab(), QStringLiteral("graphwnd-channels.png")) && ok;
    }
    return ok ? 0 : 1;
}
