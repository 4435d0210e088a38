#pragma once
// The value of a printed tick label, as OCR reads it: plain numbers ("0.5",
// "-20", "2,5"), numbers with a unit prefix ("100m", "4.7k", "10 u", "1µ"),
// exponent forms ("1E-3", "10^-3", "10^(-3)") and a decade written as a base
// with a raised exponent, which the label reader passes as two texts.

#include <QString>

struct CLabelValue {
    bool ok = false;
    // The value in base units (a prefix applied: "100m" gives 0.1).
    double value = 0;
    // The power of ten of the unit prefix the label carried (0 for none, and
    // for the exponent forms).
    int prefixExponent = 0;
    // True for a label that names a power of ten by its exponent ("10^-3").
    bool decadeForm = false;
};

// `exponent` is the text of a raised exponent, empty when the label had none;
// with one, the base must read "10" (or "1x10") for the label to count.
CLabelValue ParseLabelValue(const QString &text, const QString &exponent = QString());
