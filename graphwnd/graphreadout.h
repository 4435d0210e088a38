#pragma once
// The position read-out of a graph window: the values under a pixel of the
// plot, and the text that shows them.  Values of log axes are values, not
// their logarithms.

#include <QPoint>
#include <QString>
#include <vector>

class CCurveInfo;
class CGraphCurve;

struct CGraphPosition
{
    double x = 0;
    // One value for each Y axis that shares the plot and is drawn, in the
    // order of the axes.
    std::vector<double> y;
};

// The values under `point` on the plot of the graph's last full draw.
// False when the X axis has no usable mapping (nothing drawn yet).
bool GraphPositionAt(const CGraphCurve &graph, QPoint point, CGraphPosition &position);

// "(%f, %f)" with at most one Y axis (0 for Y without one); with several
// "X=%f, Y1=%f" and ", Y%i=%f" for each further axis, counted from 2.
QString GraphPositionText(const CGraphPosition &position);

// A complex value as the read-outs write it: the real part, " +j ", the
// imaginary part, each "%g" (so "0.5 +j -2").
QString ComplexValueText(double re, double im);

// The complex result of a curve in spectrum mode at the frequency row
// nearest to `frequency` (a value, not its log): false when the graph is
// not in spectrum mode, the curve has no results, or that row is not valid.
bool SpectrumValueAt(const CGraphCurve &graph, const CCurveInfo &curve, double frequency, double &re, double &im,
                     double &rowFrequency);

// "label (f=%g): " and the complex value of SpectrumValueAt; empty when
// there is none.
QString SpectrumReadoutText(const CGraphCurve &graph, const CCurveInfo &curve, double frequency);
