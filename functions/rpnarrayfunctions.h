#pragma once
// The functions that make and change arrays: Array, ArrayD, ArrayLog,
// SizeOf, AddToArray, RemoveCell, AppendArray, Copy and FindNext.
//
// Indices are 0-based; messages count cells and parameters from 1.  An array
// passed to AddToArray or RemoveCell is changed in its shared record, so
// every variable that holds it sees the change; AppendArray and Copy make new
// records.  A graph curve has no cells here.  Sizes above RpnMaxArrayCells
// (value arrays) or RpnMaxRealArrayCells (real arrays) are refused with a
// message that names the function.

#include "functions/rpnfunctionbase.h"
#include "functions/rpnfunctionkinds.h"
#include "formula/rpnoperators.h"

// Array(): empty.  Array(size [, fill]) (also with four and more
// parameters, of which the rest are not read): size cells, each sharing
// `fill` or null.  Array(start, stop, step): a sequence, complex, integer
// or real after the kinds of the three; an empty range gives 100 null cells.
class CNodeNewArray : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_NEW_ARRAY; }
    QString GetName() const override { return QStringLiteral("Array"); }
    CRpnNode *CreateSame() const override { return new CNodeNewArray; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// ArrayD: as Array, but a block of doubles.  No parameters give 100 zeros.
class CNodeNewArrayDouble : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_NEW_ARRAY_DOUBLE; }
    QString GetName() const override { return QStringLiteral("ArrayD"); }
    CRpnNode *CreateSame() const override { return new CNodeNewArrayDouble; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// ArrayLog(low, high): the 1-2-...-9 grid of the decades from low to high,
// descending when low exceeds high.
class CNodeNewLogArray : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_NEW_LOG_ARRAY; }
    QString GetName() const override { return QStringLiteral("ArrayLog"); }
    CRpnNode *CreateSame() const override { return new CNodeNewLogArray; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// SizeOf: cells of an array, characters (UTF-16 code units) of a text, 0 for
// anything else; an Integer.
class CNodeSizeOfArray : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SIZE_OF; }
    QString GetName() const override { return QStringLiteral("SizeOf"); }
    CRpnNode *CreateSame() const override { return new CNodeSizeOfArray; }
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    bool EvaluateFast(double &) override { return false; }
};

// AddToArray(array, value, ...): appends in place and gives the array.
class CNodeAddToArray : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_ADD_TO_ARRAY; }
    QString GetName() const override { return QStringLiteral("AddToArray"); }
    CRpnNode *CreateSame() const override { return new CNodeAddToArray; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// RemoveCell(array, index): removes in place; an index outside does nothing.
class CNodeArrayRemoveCell : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_REMOVE_CELL; }
    QString GetName() const override { return QStringLiteral("RemoveCell"); }
    CRpnNode *CreateSame() const override { return new CNodeArrayRemoveCell; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// AppendArray(a, b, ...): a new array of the first one's kind with all cells.
class CNodeAppendArray : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_APPEND_ARRAY; }
    QString GetName() const override { return QStringLiteral("AppendArray"); }
    CRpnNode *CreateSame() const override { return new CNodeAppendArray; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// Copy(value, start, count): a new record (see CRpnData::CopyRange).
class CNodeCopy : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_COPY; }
    QString GetName() const override { return QStringLiteral("Copy"); }
    CRpnNode *CreateSame() const override { return new CNodeCopy; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// FindNext(level, array, start, fraction): the next place behind `start`
// where the cells pass `level`.  The direction is taken from the cell at
// start, so that a variable fed back as start walks from crossing to
// crossing, rising and falling.  A variable as start receives the index to
// go on from, one as fraction the interpolation fraction.
class CNodeFindNext : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_FIND_NEXT; }
    QString GetName() const override { return QStringLiteral("FindNext"); }
    CRpnNode *CreateSame() const override { return new CNodeFindNext; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// The search of FindNext on plain doubles, for the node and for tests.
struct CRpnCrossing
{
    int left = 0;
    int right = 0;
    double fraction = 0.0;
    bool found = false;
};
CRpnCrossing FindCrossing(const double *cells, int n, double level, int start);

class CRpnPrototypeArray;
void ProvideArrayFunctions(CRpnPrototypeArray &prototypes);
