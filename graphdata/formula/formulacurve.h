#pragma once
// Computed curves: a formula over the columns of a graph ("sin(Time)*2 +
// AvgX(V1, 1e-3)") run over every row of the data into a column of its own,
// which the curve then shows like any other (it is drawn, exported, saved
// and transformed as its m_computedColumn).
//
// A run can take long, so it is a job in three steps: Prepare on the thread
// that owns the graph (takes the rows as they stand and compiles, so that a
// formula that does not compile gives its message at once), Run on any
// thread (a worker, while a progress box shows Progress and its Cancel calls
// Stop), and the result read back on the owning thread.  A stopped job
// leaves no column: the graph stays as it was.
//
// Rows where the formula fails (the log of a negative, a division by zero)
// become invalid rows of the result, where the lines break; the job keeps
// their count and the first message for one warning.  A row where a column
// the formula reads is missing or invalid is so in the result too.

#include "graphdata/formula/graphtree.h"
#include "graphdata/graphcolumn.h"

#include <QString>
#include <atomic>
#include <functional>
#include <limits>
#include <memory>

class CGraphCurve;
class CCurveInfo;

class CFormulaCurveJob
{
public:
    // Rows per piece of a run: the stop flag and the progress are looked at
    // between pieces.
    static constexpr int PieceRows = 1 << 15;

    CFormulaCurveJob();
    ~CFormulaCurveJob();
    CFormulaCurveJob(const CFormulaCurveJob &) = delete;
    CFormulaCurveJob &operator=(const CFormulaCurveJob &) = delete;

    // Takes the graph's rows and compiles `formula` against its columns.
    // False for an empty formula, for a graph without rows, or when the
    // formula does not compile (ErrorText, ErrorRow, ErrorCol and
    // ErrorPosition tell what and where).
    bool Prepare(const CGraphCurve &graph, const QString &formula);
    // Runs every row.  Once, after a successful Prepare, on any thread.
    void Run();
    // Rows per piece for the next Run (PieceRows unless told otherwise; the
    // benchmark runs all rows as one piece to see what the pieces cost).
    void SetPieceRows(int rows) { m_pieceRows = rows > 0 ? rows : PieceRows; }
    // Whether the next Run looks at the stop flag and stores the progress
    // between pieces (the default); the benchmark turns it off to see what
    // the looking costs.  The series' own stop check stays.
    void SetWatched(bool watched) { m_watched = watched; }
    // Asks a run to end soon; any thread, any number of times.
    void Stop();
    bool IsStopped() const { return m_stopped.load(std::memory_order_relaxed); }
    // The part of the rows done, 0 to 1, and whether Run has returned.
    double Progress() const { return m_progress.load(std::memory_order_relaxed); }
    bool IsFinished() const { return m_finished.load(std::memory_order_acquire); }

    // After Run: the result column of RowCount rows named after the formula,
    // with its extents; null when the job was stopped or failed.
    const CGraphColumnPtr &Result() const { return m_result; }
    int RowCount() const { return m_tree ? m_tree->RowCount() : 0; }
    // Rows computed as valid, and rows where the formula failed (made
    // invalid; the gaps of the columns it reads do not count).
    int GoodRows() const { return m_goodRows; }
    int FailedRows() const { return m_failedRows; }

    // The error of a failed Prepare or Run, or (with a result) the first
    // message of the rows that failed.  Row counts from 1 as the language
    // counts lines, column and position from 0; -1 when unknown.
    const QString &ErrorText() const { return m_errorText; }
    int ErrorRow() const { return m_errorRow; }
    int ErrorCol() const { return m_errorCol; }
    int ErrorPosition() const { return m_errorPosition; }
    const QString &Formula() const { return m_formula; }

private:
    void takeError();
    void runPieces(CGraphColumn *column);

    QString m_formula;
    int m_pieceRows = PieceRows;
    bool m_watched = true;
    std::unique_ptr<CEquationTree_Graph> m_tree;
    CGraphColumnPtr m_result;
    std::atomic<bool> m_stopped{false};
    std::atomic<bool> m_finished{false};
    std::atomic<double> m_progress{0.0};
    int m_goodRows = 0;
    double m_low = std::numeric_limits<double>::infinity();
    double m_high = -std::numeric_limits<double>::infinity();
    int m_failedRows = 0;
    QString m_errorText;
    int m_errorRow = -1;
    int m_errorCol = -1;
    int m_errorPosition = -1;
};

// How a program runs a prepared job to its end: a window runs it on a worker
// thread behind a progress box with Cancel.  Without one it runs on the
// calling thread.
using FormulaCurveRunner = std::function<void(CFormulaCurveJob &job)>;

// The text of a formula error for a person: the message with the row and
// column where it stands.
QString FormulaErrorText(const CFormulaCurveJob &job);

// The one warning for a job whose result has rows that failed (text 43772
// through ReportGraphError); nothing when no row failed.
void ReportFailedRows(const CFormulaCurveJob &job);

// Adds the result of a finished job to the graph as a computed curve in the
// next default style: ColName the formula, ColLabel `label` (the formula
// when empty).  Null (nothing added) when the job has no result.
CCurveInfo *AddFormulaCurve(CGraphCurve &graph, const CFormulaCurveJob &job, const QString &label);

// Fills curve.m_computedColumn from the formula in curve.m_colName over the
// graph's data, through `runner`.  On failure (no rows, a compile error, a
// stopped run, no row computed): false with the message and the position in
// the formula (-1 when none).  When only some rows fail, the curve is made
// and one warning (text 43772) is reported through ReportGraphError.
bool EvaluateFormulaCurve(CGraphCurve &graph, CCurveInfo &curve, QString &error, int &errorPosition,
                          const FormulaCurveRunner &runner = {});

// Makes EvaluateFormulaCurve with `runner` the evaluator of computed curves
// (see computedcurve.h), so that ApplyCurveList computes curves of origin 1.
void InstallFormulaCurves(FormulaCurveRunner runner = {});
