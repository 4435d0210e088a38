#pragma once
// Shared by the formula tests: the English texts are loaded from the source
// tree before any test runs, and a few helpers print values compactly.

#include "formula/rpndata.h"

#include <QString>
#include <functional>
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

class CEquationTree;

// The number of the language message that `text` is (its text up to the
// first argument matches), or 0.
int MessageIdOf(const QString &text);

// Compiles `text` in `tree` (a fresh one when null, new variables allowed),
// runs it, and describes what came out: the value as Describe gives it, or
// "E<message>@<row>,<col>" for a compile or run error.
// Compiles and runs text in t: the value by Describe, or what error() makes
// of the tree's error when the compile or the run fails.
std::string CompileAndRun(CEquationTree &t, const QString &text, const std::function<std::string()> &error);
std::string Calculate(const QString &text, CEquationTree *tree = nullptr);
inline std::string Calculate(const char *utf8, CEquationTree *tree = nullptr)
{
    return Calculate(QString::fromUtf8(utf8), tree);
}

inline std::ostream &operator<<(std::ostream &os, const QString &s)
{
    return os << s.toStdString();
}
