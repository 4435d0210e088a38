#pragma once
// What tarn-calc does with one text: compile it in a tree that allows new
// variables, run it, and give the value as text, or the error line.  The
// tree is kept, so that texts run one after the other share their variables.

#include "formula/rpntree.h"

#include <QString>
#include <QStringList>

class CTarnCalculator
{
public:
    explicit CTarnCalculator(bool degrees);

    // True with the value's text (16 significant digits) in `output`; false
    // with "Error: ...  at row: ...   col = ...  " in `error`.  Warnings the
    // run gave are in `warnings` either way.
    bool RunText(const QString &text, QString &output, QString &error, QStringList &warnings);

private:
    CEquationTree m_tree;
};
