#pragma once
// The equation tree of a graph: a formula that sees the columns of a data
// set.  Each column whose name can be written as a variable ("Time", "V1")
// is bound to that name, so that a formula over whole columns runs a block
// of rows at a time; the X column gives the sampling context (its values,
// and the step between its first two rows), so that the per-sample
// functions (Int, Avg, AvgX...) work over X.
//
// Beside the language's functions a graph tree knows GetSize, GetValue,
// SetResult, SetGraph and the user functions (graphnodes.h).
//
// A graph tree reads a snapshot of the data (CGraphTreeData): the rows that
// stood when it was taken, which a producer never rewrites, with a reference
// on every column, so the data set may grow or be replaced while it runs.

#include "formula/rpntree.h"
#include "graphdata/graphdata.h"
#include "graphdata/graphsnapshot.h"

#include <QStringList>
#include <memory>
#include <mutex>
#include <vector>

class CGraphTreeData
{
public:
    // Every column of `data` as it stands, X being column `xColumn` (0 when
    // that is no column).
    static std::shared_ptr<const CGraphTreeData> Take(const CGraphData &data, int xColumn);

    int RowCount() const { return m_snapshot.RowCount(); }
    int ColumnCount() const { return m_snapshot.Size(); }
    const CGraphColumn *Column(int i) const { return m_snapshot.Column(i); }
    const QString &Name(int i) const { return m_names[i]; }
    const QStringList &Names() const { return m_names; }
    int XColumn() const { return m_xColumn; }
    // The X values and their validity bytes (null without columns).
    const double *X() const;
    const unsigned char *XValid() const;
    // x[1] - x[0], or 0 with fewer than two valid X rows.
    double Step() const;
    // Whether a column name can be written as a variable of a formula.
    static bool IsVariableName(const QString &name);

private:
    CGraphDataSnapshot m_snapshot;
    QStringList m_names;
    int m_xColumn = 0;
};

class CEquationTree_Graph : public CEquationTree
{
public:
    explicit CEquationTree_Graph(std::shared_ptr<const CGraphTreeData> data);
    ~CEquationTree_Graph() override;

    // Binds the columns and compiles `text`; a name that is neither a
    // column nor assigned in the text is an error at that name.  Returns 1,
    // or 0 with the error fields set.
    int CompileOnColumns(const QString &text);

    const CGraphTreeData *GraphData() const { return m_data.get(); }
    const std::shared_ptr<const CGraphTreeData> &GraphDataPtr() const { return m_data; }
    int RowCount() const { return m_data ? m_data->RowCount() : 0; }
    // The column a variable is bound to, -1 when it is bound to none.
    int ColumnOf(const CRpnNode *node) const;
    // EvaluateSeries over rows first..last, where moreover a row is not
    // valid (0) when a column the formula reads at that row is not valid
    // there: in the language an empty value counts as 0, so a missing cell
    // would otherwise give a number instead of a gap.  GetValue's column and
    // the argument of a user function are not read at the row.  Returns the
    // number of valid rows.
    int EvaluateRows(double *values, unsigned char *valid, int first, int last);

    // Whether the compiled text writes the result itself (SetGraph).
    bool WritesResult() const;

    // Stops this tree and the tree of a user function it runs now.
    int Stop() override;
    // The tree of a user function that runs inside this one (null: none).
    void SetInnerTree(CEquationTree *inner);

    // Where SetGraph writes: the result column's values and validity bytes
    // (RowCount entries each, not owned), and whether it wrote.
    double *m_resultValues = nullptr;
    unsigned char *m_resultValid = nullptr;
    bool m_resultWritten = false;

private:
    bool IsVariableNameUsable(const QString &name) const;

    std::shared_ptr<const CGraphTreeData> m_data;
    std::vector<const CRpnColumnBinding *> m_rowColumns; // read at the row
    bool m_rowColumnsKnown = false;
    std::mutex m_innerLock;
    CEquationTree *m_inner = nullptr;
};
