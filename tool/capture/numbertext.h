#pragma once
// Numbers as text, free of the process locale: the C-style conversion that the
// point text and the text files rely on, the unit-suffix rule (1k = 1000), and
// the few printf formats the capture model writes.
//
// Qt programs run with the user's LC_NUMERIC, so strtod and printf may expect a
// decimal comma; everything here always uses the point.

#include <QString>
#include <QStringView>
#include <string>
#include <string_view>

// strtod in the "C" locale: leading white space, an optional sign, then a
// decimal or hexadecimal number, "inf" or "nan".  `consumed` gets the number of
// characters taken; 0 when there was no number, and the result is 0 then.
// Out-of-range values give +-HUGE_VAL or a signed zero, as strtod does.
double PlainToDouble(std::string_view text, std::size_t *consumed = nullptr);

// The power of ten of a unit letter: K or k 3, M 6, G or g 9, T or t 12,
// m -3, U or u -6, N or n -9, P or p -12.  Zero for any other character
// (including the blank of the "no prefix" choice).
int UnitExponentFromLetter(char32_t letter);

// PlainToDouble followed by the suffix rule: after blanks, a unit letter
// multiplies the value by 10 to its power.  A zero value, or no letter, is
// left as it is.  `consumed` as above (the letter is not counted).
double ToDoubleWithSuffix(std::string_view text, std::size_t *consumed = nullptr);

// The number of an edit field, with an optional unit suffix ("4.7k", "10 m").
// `flag` is 1 when a number was found, 0 when not (the result is 0 then).
double FromFloatExStr(const QString &text, int &flag);

// printf "%.<precision>g" in the "C" locale, appended to `out`.  With `upper`
// as "%G": the exponent letter and inf/nan in capitals.
void AppendFormatG(std::string &out, double value, int precision, bool upper = false);
// printf "%.<precision>f".
void AppendFormatF(std::string &out, double value, int precision);
// printf "%.<precision>e".
void AppendFormatE(std::string &out, double value, int precision);

// The same as QStrings.
QString FormatG(double value, int precision, bool upper = false);
