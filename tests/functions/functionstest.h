#pragma once
// Shared by the function tests: the library is registered and the English
// texts loaded before any test runs.

#include "formula/rpndata.h"

#include <QString>
#include <string>

class CEquationTree;

// Compiles and runs `text` in `tree` (a fresh one, in the given angle mode,
// when null) and describes the outcome: "KIND:text" for a value (braces round
// lists), or "E:<message>@<row>,<col>" for a compile or run error.
std::string Eval(const QString &text, CEquationTree *tree = nullptr, int angleMode = 0);
inline std::string Eval(const char *utf8, CEquationTree *tree = nullptr, int angleMode = 0)
{
    return Eval(QString::fromUtf8(utf8), tree, angleMode);
}
// The value of a text that must run (a failed run fails the test).
CRpnData Value(const char *utf8, CEquationTree *tree = nullptr);

// The English text of message `id`, without formatting.
std::string Message(int id);
