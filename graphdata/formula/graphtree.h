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
    // ResetRun and PrepareRun(first, last) for a run over rows first..last.
    // What the per-sample AvgX prepared over the rows from 0 is then read as
    // a column of its own, so that an expression round it still runs a
    // block of rows at a time.  0 when the preparation failed.
    int PrepareRows(int first, int last);

    // EvaluateSeries over rows first..last (after PrepareRows), with the
    // validity a curve needs.  In the language an empty value counts as 0,
    // so a missing cell would give a number: a row where a column the
    // formula reads at the row (or a user function's result) is not valid
    // takes that input's validity instead (2 when one is invalid, else 0),
    // and counts as a gap.  A row where the formula itself failed becomes
    // invalid (2), so that lines break there, and counts as failed.
    // GetValue's column and a user function's argument are not read at the
    // row.  Returns the number of valid rows.
    int EvaluateRows(double *values, unsigned char *valid, int first, int last);
    // The gaps and the failed rows of EvaluateRows since the last PrepareRows.
    int GapRows() const { return m_gapRows; }
    int FailedRows() const { return m_failedRows; }

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
    struct Input
    {
        const unsigned char *valid; // null: all valid
        int count;
        bool single;                // one row stands for all
    };
    std::vector<Input> m_rowColumns; // read at the row
    // The prepared columns: averages (shared with the node that made them)
    // and validity bytes.
    std::vector<std::shared_ptr<std::vector<double>>> m_preparedValues;
    std::vector<std::vector<unsigned char>> m_preparedValid;
    bool m_rowColumnsKnown = false;
    int m_gapRows = 0;
    int m_failedRows = 0;
    std::mutex m_innerLock;
    CEquationTree *m_inner = nullptr;
};
