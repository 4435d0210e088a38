#pragma once
// Derived forms of a column for logarithmic and dB axes.  Both write the
// first `rows` rows of `target` (which must be at least that long), set its
// kind and extents, copy the source's name when the target has none, and
// return through hasInvalid whether a row came out invalid.

class CGraphColumn;

// log10 of each valid value above 0; values at or below 0 become invalid
// (byte 2).  Row 0 of a column named "Frequency" (any case) does not raise
// hasInvalid: that is the DC bin of a spectrum.  Kind gains bit 1.
void LogOf(const CGraphColumn *source, CGraphColumn *target, int rows, bool &hasInvalid);

// 20 * log10(value * 1e6), dB above one microvolt, of each valid value
// above 0; others as for LogOf, without the exception for row 0.  Kind
// gains bit 8.
void DbOf(const CGraphColumn *source, CGraphColumn *target, int rows, bool &hasInvalid);
