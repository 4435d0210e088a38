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

// The title shown beside an axis: its name, followed by " [unit]" when the
// name implies a unit and does not already give one in brackets.
QString AxisTitleText(const QString &name);

// The label of a date axis, whose values count days from 1899-12-30 (day 0,
// the day count spreadsheets use, so that their date columns plot as they
// are).  With a tick step of a day or more the label is the date,
// "yyyy-MM-dd"; with a shorter step it is the time of day, "HH:mm", rounded
// to the minute, except at midnight, where it is the date, and on the first
// label (`first`), which gives "yyyy-MM-dd HH:mm" so that the day shows
// even on a view that holds no midnight.  Values outside the years 100 to 9999, or not finite,
// fall back on the plain number.
QString DateLabelText(double days, double step, bool first);

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
