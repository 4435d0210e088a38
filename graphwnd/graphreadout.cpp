#include "graphwnd/graphreadout.h"

#include "graphdata/graphcurve.h"
#include "graphwnd/graphviewops.h"

#include <algorithm>
#include <cmath>

bool GraphPositionAt(const CGraphCurve &g, QPoint point, CGraphPosition &position)
{
    const CAxisMap xm = XAxisMap(g);
    if (!xm.IsValid())
        return false;
    position.x = xm.ToValue(point.x());
    if (g.m_xLog)
        position.x = std::pow(10.0, position.x);
    position.y.clear();
    for (int i = 0; i < g.RangeCount(); ++i) {
        const CGraph_Range &r = *g.Range(i);
        if (r.m_layout != CGraph_Range::LayoutShared || r.m_axisSide == 0)
            continue;
        const CAxisMap ym = YAxisMap(g, i);
        if (!ym.IsValid())
            continue;
        double y = ym.ToValue(point.y());
        if (r.m_logScale && !r.m_dbScale)
            y = std::pow(10.0, y);
        position.y.push_back(y);
    }
    return true;
}

QString GraphPositionText(const CGraphPosition &position)
{
    const std::vector<double> &ys = position.y;
    if (ys.size() <= 1)
        return QString::asprintf("(%f, %f)", position.x, ys.empty() ? 0.0 : ys[0]);
    QString text = QString::asprintf("X=%f, Y1=%f", position.x, ys[0]);
    for (std::size_t i = 1; i < ys.size(); ++i)
        text += QString::asprintf(", Y%i=%f", int(i) + 1, ys[i]);
    return text;
}

QString ComplexValueText(double re, double im)
{
    return QString::asprintf("%g +j %g", re, im);
}

bool SpectrumValueAt(const CGraphCurve &g, const CCurveInfo &curve, double frequency, double &re, double &im,
                     double &rowFrequency)
{
    const CGraphColumn *f = g.m_frequencyColumn.Get();
    const CGraphColumn *real = curve.m_spectrumReal.Get();
    const CGraphColumn *imag = curve.m_spectrumImag.Get();
    if (!g.m_spectrumMode || !f || !real || !imag || !std::isfinite(frequency))
        return false;
    const int rows = std::min({f->m_count, real->m_count, imag->m_count});
    if (rows < 1)
        return false;
    // The frequencies rise: the row at or after the frequency, or the one
    // before it when that is nearer.
    const double *begin = f->m_values;
    int row = int(std::lower_bound(begin, begin + rows, frequency) - begin);
    if (row == rows || (row > 0 && frequency - begin[row - 1] < begin[row] - frequency))
        --row;
    if (f->m_valid[row] != 1 || real->m_valid[row] != 1 || imag->m_valid[row] != 1)
        return false;
    re = real->m_values[row];
    im = imag->m_values[row];
    rowFrequency = begin[row];
    return true;
}

QString SpectrumReadoutText(const CGraphCurve &g, const CCurveInfo &curve, double frequency)
{
    double re = 0, im = 0, at = 0;
    if (!SpectrumValueAt(g, curve, frequency, re, im, at))
        return QString();
    return QString::asprintf("%s (f=%g): ", qPrintable(curve.m_colLabel), at) + ComplexValueText(re, im);
}
