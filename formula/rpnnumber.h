#pragma once
// Text to numbers, the engineer's way: literals may carry an engineering
// prefix (10k, 2.2u, 10 Meg) and a unit word (10 kOhms, 3 Volts) that has no
// effect on the value.

#include <QChar>
#include <QStringView>
#include <complex>

// Reads a number from the start of `text`.  `consumed` receives the number of
// characters taken (0 when the text does not start with a number, and the
// result is then 0).  `exponent`, if given, receives the display exponent of
// the prefix that was read (3 for k, -6 for u, 6 for MEG, 0 for none).
//
//   0x1F       hexadecimal, at most ten characters with the "0x"
//   1.5e3 1D3  exponents; D is an exponent letter too
//   10k 1M 1m  k/K, M, G, T, c, m, u, n, p after optional blanks; MEG in any case
//   2.2uF      then an optional unit word of the known list, plural s allowed
double ParseNumber(QStringView text, int &consumed, int *exponent = nullptr);

// Reads a complex number as two numbers, real part first, separated by
// blanks, tabs or commas.  Each part takes its own suffixes, where M and m
// mean milli unless followed by "eg": K 3, Meg 6, M -3, G 9, T 12, U -6,
// N -9, P -12 (any case).  A missing second part is 0.  `consumed` is the
// number of characters taken.
std::complex<double> ParseComplexText(QStringView text, int &consumed);

// The display letter of a prefix exponent: ' ' for 0, "kMGT" upward and
// "munp" downward by thirds (-2, centi, shows as a blank).
QChar PrefixChar(int exponent);
