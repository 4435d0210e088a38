#pragma once
// Shared by the function tests: the library is registered and the English
// texts loaded before any test runs.

#include "formula/rpndata.h"

#include <QString>
#include <string>
#include <vector>

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

// A case of a table: `setup` runs first and must succeed, then `text` is
// described by Eval in the same tree.  Each case has a fresh tree with a
// graph curve in the variable g.
struct ScriptCase {
    const char *setup;
    const char *text;
    std::string expect;
};
void ExpectCases(const std::vector<ScriptCase> &cases);
// The outcome of a function's own message: the text alone, at row 1, column 0.
std::string FunctionMessage(const std::string &text);

// The English text of message `id`, without formatting.
std::string Message(int id);
