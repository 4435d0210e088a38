#pragma once
// What tarn-calc does with one text: compile it in a tree that allows new
// variables, run it, and give the value as text, or the error with the place
// it stands.  The tree is kept, so that texts run one after the other (the
// lines of the prompt) share their variables and options.

#include "formula/rpntree.h"

#include <QString>
#include <QStringList>
#include <functional>

struct CTarnResult {
    bool ok = false;
    bool isNull = true;  // nothing to print: the empty value, or a value without text that is no String
    QString value;       // the value's text with the tree's precision
    QString error;       // the error: message line, then where it stands
    QStringList warnings;
};

class CTarnCalculator
{
public:
    explicit CTarnCalculator(bool degrees);

    // Where Print and Clear go: the text and its code (RPN_OUTPUT_PRINT,
    // RPN_OUTPUT_CLEAR with a null text).
    void SetOutput(std::function<void(const QString &text, int code)> output);
    // The words after the script's name, as the Array of texts `Arguments`.
    void SetArguments(const QStringList &arguments);

    // Runs `text`; `sourceName` names it in error places ("script.tarn",
    // "-e"); empty for a line of the prompt, whose place is its caret alone.
    CTarnResult Run(const QString &text, const QString &sourceName);

    CEquationTree &Tree() { return m_tree; }

    // The error block: "Error: <message>  at row: R   col = C  ", then, when
    // the place is known, "  in <source> at row R, col C:" and the line
    // with a caret under the column.
    static QString FormatError(const QString &text, const QString &sourceName, const QString &message, int row,
                               int col);

private:
    static void output(CEquationTree *, CRpnNode *, void *user1, void *, int, const QString &text, int code);

    CEquationTree m_tree;
    std::function<void(const QString &, int)> m_output;
};
