#pragma once
// Shared by the formula tests: the English texts are loaded from the source
// tree before any test runs, and a few helpers print values compactly.

#include "formula/rpndata.h"

#include <QString>
#include <initializer_list>
#include <ostream>

// The path of lang/en.lang in the source tree.
QString EnglishLanguageFile();

// An ARRAY of REAL values, and an ARRAY_R.
CRpnData RealItems(std::initializer_list<double> values);
CRpnData RealBlock(std::initializer_list<double> values);
// A STRING from UTF-8.
CRpnData Text(const char *utf8);
// A fresh empty value of a collection kind: ARRAY, DICTIONARY or CURVE.
CRpnData Empty(std::uint32_t kind);
// A value as "KIND:text" with braces, e.g. "ARRAY:{1,2}", "REAL:3".
std::string Describe(const CRpnData &v);

inline std::ostream &operator<<(std::ostream &os, const QString &s)
{
    return os << s.toStdString();
}
