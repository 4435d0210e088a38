#pragma once
// The ticks, grid lines and label texts of one axis, ready to be mapped:
// positions are in the axis's own units (log10 of the value on a log axis),
// so that they map like the curves' values.

#include <QFontMetricsF>
#include <QString>
#include <QStringList>
#include <vector>

struct CAxisTicks
{
    std::vector<double> major; // grid lines and tick marks
    std::vector<double> minor; // minor grid lines
    std::vector<double> labelAt;
    QStringList labels;
    double widest = 0; // width of the widest label in the metrics given
};

struct CAxisTickRequest
{
    double viewMin = 0, viewMax = 0; // axis units
    double step = 0;                 // linear axes; 0 computes one
    bool log = false;
    bool xAxis = true;
    bool integerTicks = false;
    bool dateDays = false;
    bool labelsOn = true;
    int subDivisions = 5; // minor divisions; below 2 none
    double length = 0;    // pixels along the axis
};

// Linear axes: the step (NiceStepX or NiceStepY when none is given),
// labels spaced by LabelEvery so that they do not crowd (an X label needs
// its own width and one character more, a Y label one and a half line
// heights), texts with the range's unit prefix letter behind each number.
// Log axes: LogTicks, each label with the prefix letter of its own value.
// Date axes (dateDays) label every tick with DateLabelText.
CAxisTicks ComputeAxisTicks(const CAxisTickRequest &request, const QFontMetricsF &metrics);

// Whether the X labels of `ticks`, in `metrics`, stand clear of each other
// on an axis from lo to hi drawn `length` pixels long: upright labels need
// their half widths and two pixels between neighbouring ticks, and none may
// be wider than the axis; labels turned by `rotation` degrees need a line
// height (and a pixel) across their slant.
bool XLabelsFit(const CAxisTicks &ticks, double lo, double hi, double length, int rotation,
                const QFontMetricsF &metrics);
