#pragma once
// The values of the digitiser dialog's fields, as the model reads and writes
// them, keyed by the dialog's control ids.  The dialog copies its controls
// into a CToolFields, calls the model, and copies the result back.

#include <QString>

class CCaptureModel;

// Control ids of the dialog's fields.  A widget's objectName() is its id as
// text ("1052").
enum ToolControlId : int {
    IdXAtFirst = 1052,   // X value at the first corner
    IdXAtSecond = 1056,  // X value at the second corner
    IdYAtSecond = 1060,  // Y value at the second corner
    IdYAtFirst = 1063,   // Y value at the first corner
    IdXLog = 1068,       // X axis logarithmic
    IdYLog = 1072,       // Y axis logarithmic
    IdPoints = 1075,     // the point text
    IdHint = 1089,       // the hint line above the picture
    IdReadout = 1092,    // the position read-out
    IdXUnit = 1172,      // unit prefix of X
    IdXName = 1173,      // name of the X axis
    IdYName = 1186,      // name of the Y axis
    IdFileName = 1333,   // the file last written or read
    IdStartOver = 1448,  // the Start over button
    IdLoad = 1457,       // the Load button
    IdYUnit = 1739,      // unit prefix of Y
    IdExchangeXY = 1848, // X and Y exchanged
};

struct CToolFields {
    QString xAtFirst;        // 1052
    QString xAtSecond;       // 1056
    QString yAtSecond;       // 1060
    QString yAtFirst;        // 1063
    bool xLog = false;       // 1068, ticked (a third, undecided state counts as not)
    bool yLog = false;       // 1072
    QString points;          // 1075
    QString xUnit = QStringLiteral(" "); // 1172, the text of the chosen prefix
    QString xName;           // 1173
    QString yName;           // 1186
    QString fileName;        // 1333
    QString yUnit = QStringLiteral(" "); // 1739
    bool exchangeXY = false; // 1848

    // The text field of a control id, or null when the id is no text field.
    QString *Text(int id);
    // The check box of a control id, or null.
    bool *Check(int id);
};

// The unit prefixes of the two combo boxes, in their order.
struct CUnitPrefix {
    const char *text;
    int exponent;
};
extern const CUnitPrefix g_unitPrefixes[9];

// The power of ten of a chosen prefix: its first letter by the unit-letter
// rule ("k" 3, " " 0).
int UnitExponentOfPrefix(const QString &prefixText);
// The prefix text of a power of ten; " " when it has none.
QString UnitPrefixOfExponent(int exponent);

// The axis values as numbers.
struct CAxisValues {
    double xAtFirst = 0.0;
    double xAtSecond = 0.0;
    double yAtFirst = 0.0;
    double yAtSecond = 0.0;
    bool xLog = false;
    bool yLog = false;
    int xUnitExponent = 0;
    int yUnitExponent = 0;
};

// Converts the fields with FromFloatExStr; an empty or bad field reads as 0.
CAxisValues ReadAxisValues(const CToolFields &fields);

// The message of the first check the values fail, 0 when all pass.  In this
// order: equal X values, equal Y values, a logarithmic X with a value not
// above 0, the same for Y.  Next uses 27528-27531; applying a typed curve uses
// 27540-27543 for the same checks.
enum class AxisCheckTexts { Next, TypedCurve };
int CheckAxisValues(const CAxisValues &values, AxisCheckTexts texts = AxisCheckTexts::Next);

// What every change of the fields ends in, on the capture side: the point
// text is parsed (with unit suffixes) and the values and pairs go to the
// canvas's calibration.  The caller repaints and feeds the plot.
void ApplyFieldsToCapture(const CToolFields &fields, CCaptureModel &capture);

// X and Y change places in the fields (box 1848 was just toggled; it is left
// as it is): every pair of the point text is crossed and the text rewritten
// "(%G,%G)"; the unit prefixes, the log boxes and the axis names change
// places; and the axis values are rewritten "%G" crosswise: 1052 takes the
// old 1063, 1056 the old 1060, 1063 the old 1052 and 1060 the old 1056.
void ExchangeAxisFields(CToolFields &fields);
