#pragma once
// Label texts of an axis and where they go, as numbers: the scale letter
// (unit prefix) that a label list may share, the text of one label, the
// offsets of plain and rotated labels, and the unit that an axis name
// implies.

#include <QString>

struct CUnitPrefix
{
    QString letter;   // "n", "u", "m", "k", "M", "G", or empty
    double factor = 1; // labels show value * factor
    int digits = 6;    // significant digits for the labels (PrefixFromRange)
};

// The prefix for an axis whose middle value is v.
CUnitPrefix UnitPrefix(double v);

// The prefix and label digits for an axis from min to max.
CUnitPrefix PrefixFromRange(double min, double max);

// A label: "0" for 0, else "%.*g" with `digits` significant digits, with
// trailing zeros behind a decimal point cut (and the point too when
// nothing is left behind it).
QString LabelText(double v, int digits);

// The unit an axis name implies: "s" for a name beginning "Time", "Hz" for
// one beginning "Freq" in any case, else nothing.
QString AxisUnit(const QString &name);

// Where an X label goes: centred under its tick, 4 pixels below the axis;
// a label that would overhang `rightLimit` is right-aligned at its tick.
// Returns the left edge; top is axisY + 4.
double XLabelLeft(double tickX, double textWidth, double rightLimit);
constexpr double kXLabelGap = 4;
// Depth of the line of X labels for a character height h.
inline double XLabelLineDepth(double h)
{
    return 1.8 * h;
}

// How far the origin of a label rotated by `degrees` (stored in degrees)
// moves from where an upright label would start: dx to the left, dy down.
// w is the text width, h its height.
void RotatedLabelOffset(int degrees, double w, double h, double &dx, double &dy);
