#pragma once
// The functions that only graph trees (graphtree.h) know:
//
//   GetSize()              the row count of the data, as a real
//   GetValue(column, row)  a column's value at a row counted from 0; with
//                          anything else than a column, that expression
//                          evaluated at the row
//   SetResult(x)           the number of rows of the run; x is not evaluated
//   SetGraph(row, value)   writes one row of the result column itself, so
//                          that one script can fill a whole computed curve
//
// and the user's own functions (graphcustom.h, kind 2).  A user function's
// body names the curve it is applied to as GRAPH: `smooth(V1)` runs the body
// with every "GRAPH" replaced by "V1", in a graph tree of its own over all
// rows, once before the run; each row of the run then reads its row of that
// result.
//
// All of them reach a formula through the keyword hook of graph trees
// (LookupGraphKeyword), so that other trees never see them.  Their failures
// travel by the status byte only, without a message; a user function whose
// body fails to compile passes the body's error on to the calling tree.

#include "formula/rpnoperators.h"
#include "graphdata/graphcolumn.h"

class CEquationTree_Graph;

// Class numbers of the graph nodes.
enum RpnGraphKind : int {
    RPN_NODE_GET_SIZE = 1101,
    RPN_NODE_GET_VALUE = 1102,
    RPN_NODE_SET_RESULT = 1103,
    RPN_NODE_SET_GRAPH = 1104,
    RPN_NODE_USER_FUNCTION = 1105,
};

class CNodeGetSize : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_GET_SIZE; }
    QString GetName() const override { return QStringLiteral("GetSize"); }
    std::uint64_t GetTraits() const override { return CNodeMultiOperand::GetTraits() | RPN_TRAIT_GRAPH; }
    CRpnNode *CreateSame() const override { return new CNodeGetSize; }
    // The row count as a REAL; 0 with the status at 0 without rows.
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

class CNodeGetValue : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_GET_VALUE; }
    QString GetName() const override { return QStringLiteral("GetValue"); }
    std::uint64_t GetTraits() const override { return CNodeDoubleOperand::GetTraits() | RPN_TRAIT_GRAPH; }
    CRpnNode *CreateSame() const override { return new CNodeGetValue; }
    // Empty without rows, for a failed or outside row, and for a column row
    // that is not valid (status 0).  A column value that is not a number or
    // infinite gives status 2; a denormal reads 0.
    void Evaluate(CRpnData &result, unsigned char &status) override;
    bool EvaluateFast(double &) override { return false; }
};

class CNodeSetResult : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SET_RESULT; }
    QString GetName() const override { return QStringLiteral("SetResult"); }
    std::uint64_t GetTraits() const override { return CNodeSingleOperand::GetTraits() | RPN_TRAIT_GRAPH; }
    CRpnNode *CreateSame() const override { return new CNodeSetResult; }
    int PrepareRun(CEquationTree *tree, int first, int last) override;
    void Evaluate(CRpnData &result, unsigned char &status) override;
    double EvaluateReal(unsigned char &) override { return double(m_count); }
    bool EvaluateFast(double &) override { return false; }

    std::int32_t m_count = 0;
};

class CNodeSetGraph : public CNodeDoubleOperand
{
public:
    int GetKind() const override { return RPN_NODE_SET_GRAPH; }
    QString GetName() const override { return QStringLiteral("SetGraph"); }
    std::uint64_t GetTraits() const override { return CNodeDoubleOperand::GetTraits() | RPN_TRAIT_GRAPH; }
    CRpnNode *CreateSame() const override { return new CNodeSetGraph; }
    // Writes the value at the row (validity: 1, 2 for a NaN or an infinity,
    // the status when that is not good) and gives the value; writes nothing
    // and gives 0 without rows or without a result column.
    void Evaluate(CRpnData &result, unsigned char &status) override;
    bool EvaluateFast(double &) override { return false; }
};

class CNodeUserFunction : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_USER_FUNCTION; }
    QString GetName() const override { return m_name; }
    std::uint64_t GetTraits() const override { return CNodeSingleOperand::GetTraits() | RPN_TRAIT_GRAPH; }
    CRpnNode *CreateSame() const override { return new CNodeUserFunction; }
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;
    void ResetRun() override;
    // Computes the body over all rows (see above).  0 when the body does not
    // compile or the run count is below 1.
    int PrepareRun(CEquationTree *tree, int first, int last) override;
    // The operand, then this row of the prepared result: empty (status 0)
    // where that row is not valid.
    void Evaluate(CRpnData &result, unsigned char &status) override;
    // The same for a REAL operand `a`: the prepared value of the present row
    // (row 0 when the result is the same on every row), status 0 where that
    // row is not valid, `a` itself when nothing was prepared.
    double ApplyReal(double a, double b, unsigned char &status) override;
    bool EvaluateFast(double &) override { return false; }
    // Read a row at a time (the series' row steps), never a block.
    int GetRealPath() const override { return RPN_REAL_PATH_ROW; }

    QString m_name;
    QString m_body;
    std::int32_t m_rows = 0;
    CGraphColumnPtr m_values;
    std::int32_t m_perRow = 0;

private:
    int presentRow() const;
};

// The keyword hook of graph trees: the graph functions above and the user
// functions by name (ignoring case); null for any other name.
CRpnNode *LookupGraphKeyword(CEquationTree *tree, const QString &name, int position, int row, int col,
                             unsigned char &status);

// Reads the user functions again (GetGraphCustom().GetFunctions).  Call it on
// the user-interface thread while no graph formula runs.
void ReloadUserFunctions();
// Registers the language's functions and loads the user functions, once,
// before the first graph tree.
void EnsureGraphFunctions();
// Whether a user function of the name is known (ignoring case).
bool HasUserFunction(const QString &name);
