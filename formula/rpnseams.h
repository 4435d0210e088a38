#pragma once
// What values hold but do not know: owned foreign objects and formulas.
//
// A FORMULA value owns a compiled tree, and the tree needs the parser and the
// node tree, which stand above the values.  Values reach it only through the
// interface below; the equation tree registers one object at start-up.  Until
// then a formula converts to the empty value, an arithmetic step with a
// formula gives the empty value, and a list default of a function parameter
// cannot be evaluated.

#include <QString>

class CRpnData;
class CRpnBuffer;
class CEquationTree;

// An object that a value owns and frees through its virtual destructor:
// DOCUMENT and CURVE payloads and the table record of ReadTable.
class CRpnObject
{
public:
    virtual ~CRpnObject() = default;
};

// The rows of a CURVE payload, for nodes that read a curve row by row (the
// array condition of `iif`).  A graph host's curve object derives from both
// CRpnObject and this; a curve object without it has no rows.
class CRpnCurveRows
{
public:
    virtual ~CRpnCurveRows() = default;
    virtual int GetRowCount() const = 0;
    virtual double GetRowValue(int row) const = 0;
    // The validity byte of the row: 1 valid, 0 missing, 2 invalid.
    virtual unsigned char GetRowValidity(int row) const = 0;
};

// Formulas as values: filled in by the equation tree.
class CRpnFormulaSupport
{
public:
    virtual ~CRpnFormulaSupport() = default;

    virtual void DeleteTree(CEquationTree *tree) = 0;
    // An independent copy of the tree; null when it cannot be made.
    virtual CEquationTree *CloneTree(const CEquationTree *tree) = 0;
    // Runs the tree's root with a private status; a failed run gives the empty value.
    virtual void Evaluate(CEquationTree *tree, CRpnData &result) = 0;
    // The regenerated source text of the tree.
    virtual QString GetSource(const CEquationTree *tree) = 0;
    // `op` ('+', '-', '*', '/', '%') applied to two values of which at least
    // one is a FORMULA: a new FORMULA whose root is the operator over both.
    virtual void Combine(int op, const CRpnData &left, const CRpnData &right, CRpnData &result) = 0;
    // Writes or reads (after the buffer's mode) the whole compiled tree.  On
    // reading, `tree` receives a new tree or null.
    virtual void SerializeTree(CEquationTree *&tree, CRpnBuffer &buffer) = 0;
    // Compiles `text` as a formula, runs it and stores its value: the default
    // value of a function parameter written as a list.  False on failure.
    virtual bool EvaluateText(const QString &text, CRpnData &result) = 0;
};

// Registration; pass null to unregister.  Registered once at start-up, before
// any thread runs formulas; the object must outlive all values.
void SetRpnFormulaSupport(CRpnFormulaSupport *support);
CRpnFormulaSupport *GetRpnFormulaSupport();
