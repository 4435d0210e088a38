#include "graphdata/formula/formulacurve.h"

#include "graphdata/columnscan.h"
#include "graphdata/computedcurve.h"
#include "graphdata/grapherrors.h"
#include "graphdata/graphcurve.h"
#include "support/languagestring.h"

#include <algorithm>

namespace {

enum : int {
    TextNoRows = 43770,
    TextErrorAt = 43771,
    TextSomeRowsFailed = 43772,
    TextStopped = 43773,
    TextNoRowComputed = 43774,
    TextFailedRowsDetail = 43775,
};

// The index in `text` of line `row` (from 1), column `col` (from 0).
int positionOf(const QString &text, int row, int col)
{
    if (row < 1 || col < 0)
        return -1;
    int start = 0;
    for (int r = 1; r < row; ++r) {
        const int end = int(text.indexOf(u'\n', start));
        if (end < 0)
            return -1;
        start = end + 1;
    }
    return std::min(start + col, int(text.size()));
}

// Widens lo and hi by the valid rows first..last.  A row that is not valid
// offers the value that changes nothing, so that the loop has no branch and
// runs in four independent lanes: a single running minimum kept in memory
// cost as much as the formula itself.
void widenExtents(const double *values, const unsigned char *valid, int first, int last, double &lo, double &hi)
{
    constexpr double inf = std::numeric_limits<double>::infinity();
    double l[4] = {lo, lo, lo, lo}, h[4] = {hi, hi, hi, hi};
    int r = first;
    for (; r + 3 <= last; r += 4) {
        for (int k = 0; k < 4; ++k) {
            const bool good = valid[r + k] == 1;
            const double v = values[r + k];
            const double a = good ? v : inf, b = good ? v : -inf;
            l[k] = a < l[k] ? a : l[k];
            h[k] = b > h[k] ? b : h[k];
        }
    }
    for (; r <= last; ++r) {
        const bool good = valid[r] == 1;
        const double v = values[r];
        const double a = good ? v : inf, b = good ? v : -inf;
        l[0] = a < l[0] ? a : l[0];
        h[0] = b > h[0] ? b : h[0];
    }
    lo = std::min(std::min(l[0], l[1]), std::min(l[2], l[3]));
    hi = std::max(std::max(h[0], h[1]), std::max(h[2], h[3]));
}

} // namespace

CFormulaCurveJob::CFormulaCurveJob() = default;

CFormulaCurveJob::~CFormulaCurveJob() = default;

void CFormulaCurveJob::takeError()
{
    m_errorText = m_tree->errorText;
    m_errorRow = m_tree->errorRow;
    m_errorCol = m_tree->errorCol;
    m_errorPosition = positionOf(m_formula, m_errorRow, m_errorCol);
}

bool CFormulaCurveJob::Prepare(const CGraphCurve &graph, const QString &formula)
{
    m_formula = formula;
    if (formula.trimmed().isEmpty())
        return false;
    auto data = CGraphTreeData::Take(graph.m_data, graph.m_xColumnIndex);
    if (data->RowCount() < 1) {
        m_errorText = LanguageString(TextNoRows);
        return false;
    }
    m_tree = std::make_unique<CEquationTree_Graph>(std::move(data));
    if (!m_tree->CompileOnColumns(formula)) {
        takeError();
        m_tree.reset();
        return false;
    }
    return true;
}

void CFormulaCurveJob::Stop()
{
    m_stopped.store(true, std::memory_order_relaxed);
    if (m_tree)
        m_tree->Stop();
}

void CFormulaCurveJob::runPieces(CGraphColumn *column)
{
    const int rows = m_tree->RowCount();
    for (int first = 0; first < rows; first += m_pieceRows) {
        if (m_watched && IsStopped())
            return;
        const int last = int(std::min<std::int64_t>(rows, std::int64_t(first) + m_pieceRows)) - 1;
        m_goodRows += m_tree->EvaluateRows(column->m_values, column->m_valid, first, last);
        // The extents while the piece is at hand.
        widenExtents(column->m_values, column->m_valid, first, last, m_low, m_high);
        if (m_watched)
            m_progress.store(double(last + 1) / rows, std::memory_order_relaxed);
    }
}

void CFormulaCurveJob::Run()
{
    if (!m_tree || m_finished.load()) {
        m_finished.store(true, std::memory_order_release);
        return;
    }
    const int rows = m_tree->RowCount();
    // A formula that writes the result itself (SetGraph) may leave rows
    // alone, which must then be missing; otherwise every row is written.
    const bool writesItself = m_tree->WritesResult();
    CGraphColumnPtr column;
    try {
        column = CGraphColumnPtr::Adopt(writesItself ? CGraphColumn::Create(rows, m_formula)
                                                     : CGraphColumn::CreateUnfilled(rows, m_formula));
    } catch (const std::bad_alloc &) {
        m_errorText = LanguageString(kGraphTextNoMemory);
        m_finished.store(true, std::memory_order_release);
        return;
    }
    m_tree->ResetError();
    bool prepared = m_tree->PrepareRows(0, rows - 1) != 0;
    bool runByRows = false;
    if (prepared && !IsStopped()) {
        runByRows = !writesItself;
        if (!runByRows) {
            // The script fills the column itself, row by row, in one run.
            m_tree->m_resultValues = column->m_values;
            m_tree->m_resultValid = column->m_valid;
            m_tree->m_resultWritten = false;
            CRpnData value;
            unsigned char status = 1;
            try {
                m_tree->EvaluateTree(value, status);
            } catch (...) {
                status = 0;
            }
            m_tree->m_resultValues = nullptr;
            m_tree->m_resultValid = nullptr;
            prepared = status != 0 && m_tree->m_resultWritten;
            m_progress.store(1.0, std::memory_order_relaxed);
        } else {
            runPieces(column.Get());
        }
    }
    if (!IsStopped() && !m_tree->IsStopping()) {
        if (!runByRows) {
            for (int r = 0; r < rows; ++r)
                m_goodRows += column->m_valid[r] == 1;
        }
        m_failedRows = m_tree->FailedRows();
        if (m_tree->HasError())
            takeError();
        if (prepared && m_goodRows > 0) {
            if (runByRows) {
                column->m_minValue = m_low;
                column->m_maxValue = m_high;
                column->m_orderFlags = 0;
                column->m_hasInvalid = m_goodRows < rows ? 1 : 0;
            } else {
                RecomputeExtents(column.Get(), rows);
            }
            m_result = std::move(column);
        } else if (m_errorText.isEmpty()) {
            m_errorText = LanguageString(TextNoRowComputed);
        }
    }
    m_finished.store(true, std::memory_order_release);
}

QString FormulaErrorText(const CFormulaCurveJob &job)
{
    if (job.ErrorRow() < 1 || job.ErrorCol() < 0)
        return job.ErrorText();
    return LanguageString(TextErrorAt).arg(job.ErrorText()).arg(job.ErrorRow()).arg(job.ErrorCol() + 1);
}

void ReportFailedRows(const CFormulaCurveJob &job)
{
    if (job.FailedRows() < 1)
        return;
    // Once per curve, with the first message of the rows that failed.
    QString detail = LanguageString(TextFailedRowsDetail).arg(job.FailedRows()).arg(job.RowCount()).arg(job.Formula());
    if (!job.ErrorText().isEmpty())
        detail += QStringLiteral(" ") + FormulaErrorText(job);
    ReportGraphError(TextSomeRowsFailed, detail);
}

CCurveInfo *AddFormulaCurve(CGraphCurve &graph, const CFormulaCurveJob &job, const QString &label)
{
    if (!job.Result())
        return nullptr;
    std::uint32_t color = 0;
    std::int32_t thickness = 1, symbol = 0;
    const int palette = graph.PickDefaultStyle(color, thickness, symbol);
    auto *curve = new CCurveInfo(color, label.isEmpty() ? job.Formula() : label);
    curve->m_colName = job.Formula();
    curve->m_lineThickness = thickness;
    curve->m_symbol = symbol;
    curve->m_paletteIndex = palette;
    curve->m_computedColumn = job.Result();
    graph.m_curves.Add(curve);
    graph.m_curveHitRects.clear();
    return curve;
}

bool EvaluateFormulaCurve(CGraphCurve &graph, CCurveInfo &curve, QString &error, int &errorPosition,
                          const FormulaCurveRunner &runner)
{
    error.clear();
    errorPosition = -1;
    CFormulaCurveJob job;
    if (!job.Prepare(graph, curve.m_colName)) {
        error = FormulaErrorText(job);
        errorPosition = job.ErrorPosition();
        return false;
    }
    if (runner)
        runner(job);
    else
        job.Run();
    if (!job.Result()) {
        if (job.IsStopped()) {
            error = LanguageString(TextStopped).arg(job.Formula());
        } else {
            error = FormulaErrorText(job);
            errorPosition = job.ErrorPosition();
        }
        return false;
    }
    curve.m_computedColumn = job.Result();
    curve.m_source = (curve.m_source & ~CCurveBasicInfo::OriginMask) | CCurveBasicInfo::OriginComputed;
    ReportFailedRows(job);
    return true;
}

void InstallFormulaCurves(FormulaCurveRunner runner)
{
    SetComputedCurveEvaluator([runner](CGraphCurve &graph, CCurveInfo &curve, QString &error, int &position) {
        return EvaluateFormulaCurve(graph, curve, error, position, runner);
    });
}
