#include "graphdata/formula/graphnodes.h"

#include "graphdata/formula/graphcustom.h"
#include "graphdata/formula/graphtree.h"

#include "functions/rpnfunctions.h"

#include <QHash>
#include <cmath>
#include <cstring>
#include <mutex>

namespace {

CEquationTree_Graph *graphTree(CEquationTree *tree)
{
    return dynamic_cast<CEquationTree_Graph *>(tree);
}

int graphRows(CEquationTree *tree)
{
    const CEquationTree_Graph *graph = graphTree(tree);
    return graph ? graph->RowCount() : 0;
}

// Denormals read as 0.0 (true), NaN and infinities are told by the return.
bool isDenormal(double x)
{
    return std::fpclassify(x) == FP_SUBNORMAL;
}

// The user functions by upper-case name: a prototype with name and body.
struct UserFunctions
{
    std::mutex lock;
    QHash<QString, CNodeUserFunction *> prototypes;
    ~UserFunctions() { qDeleteAll(prototypes); }
};

UserFunctions &userFunctions()
{
    static UserFunctions functions;
    return functions;
}

} // namespace

// --- GetSize -------------------------------------------------------------------------------

void CNodeGetSize::Evaluate(CRpnData &result, unsigned char &status)
{
    const int rows = graphRows(m_tree);
    if (rows < 1)
        status = 0;
    result.SetDouble(double(rows));
}

// --- GetValue -------------------------------------------------------------------------------

void CNodeGetValue::Evaluate(CRpnData &result, unsigned char &status)
{
    status = 1;
    result.SetNull();
    CEquationTree_Graph *graph = graphTree(m_tree);
    const int rows = graph ? graph->RowCount() : 0;
    if (rows < 1 || !m_left || !m_right)
        return;
    const double rowValue = m_right->EvaluateReal(status);
    const int row = RpnBiasedInt(rowValue);
    if (status != 1 || row < 0 || row >= rows)
        return;
    const int column = graph->ColumnOf(m_left);
    if (column >= 0) {
        const CGraphColumn *c = graph->GraphData()->Column(column);
        if (!c || row >= c->m_count)
            return;
        if (c->m_valid[row] != 1) {
            status = 0;
            return;
        }
        double x = c->m_values[row];
        if (isDenormal(x))
            x = 0.0;
        status = std::isfinite(x) ? 1 : 2;
        result.SetDouble(x);
        return;
    }
    // Any other expression is sampled at the row.
    const std::int32_t present = graph->m_rowIndex;
    graph->m_rowIndex = row;
    try {
        m_left->Evaluate(result, status);
    } catch (...) {
        result.SetNull();
    }
    graph->m_rowIndex = present;
}

// --- SetResult -----------------------------------------------------------------------------

int CNodeSetResult::PrepareRun(CEquationTree *, int first, int last)
{
    m_count = last - first + 1;
    return m_count >= 1 ? 1 : 0;
}

void CNodeSetResult::Evaluate(CRpnData &result, unsigned char &)
{
    result.SetInt(m_count);
}

// --- SetGraph ------------------------------------------------------------------------------

void CNodeSetGraph::Evaluate(CRpnData &result, unsigned char &status)
{
    CEquationTree_Graph *graph = graphTree(m_tree);
    const int rows = graph ? graph->RowCount() : 0;
    if (rows < 1 || !graph->m_resultValues || !graph->m_resultValid || !m_left || !m_right) {
        result.SetDouble(0.0);
        return;
    }
    graph->m_resultWritten = true;
    unsigned char rowStatus = 1;
    const int row = RpnBiasedInt(m_left->EvaluateReal(rowStatus));
    unsigned char valueStatus = 1;
    double x = m_right->EvaluateReal(valueStatus);
    if (isDenormal(x))
        x = 0.0;
    if (rowStatus == 1 && row >= 0 && row < rows) {
        graph->m_resultValues[row] = x;
        graph->m_resultValid[row] = valueStatus == 1 ? (std::isfinite(x) ? 1 : 2) : valueStatus;
    }
    (void)status;
    result.SetDouble(x);
}

// --- user functions ------------------------------------------------------------------------

CRpnNode *CNodeUserFunction::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CNodeUserFunction *>(CNodeSingleOperand::Clone(tree, position, row, col));
    node->m_name = m_name;
    node->m_body = m_body;
    node->m_rows = m_rows;
    node->m_values = m_values;
    node->m_perRow = m_perRow;
    return node;
}

void CNodeUserFunction::ResetRun()
{
    m_values.reset();
    m_rows = 0;
    m_perRow = 0;
}

int CNodeUserFunction::PrepareRun(CEquationTree *tree, int first, int last)
{
    if (last - first + 1 < 1)
        return 0;
    CEquationTree_Graph *graph = graphTree(tree);
    if (!m_operand || !graph || !graph->GraphData())
        return 1;
    // The curve the function is applied to, by name.
    QString argument;
    if (m_operand->IsText())
        argument = static_cast<CNodeConstant *>(m_operand)->m_value.GetText();
    else if (CNodeVariable *variable = m_operand->AsVariable())
        argument = variable->m_name;
    else
        return 1;
    const std::shared_ptr<const CGraphTreeData> &data = graph->GraphDataPtr();
    const int rows = data->RowCount();
    if (data->ColumnCount() < 1 || rows < 2)
        return 1;

    QString text = m_body;
    text.replace(QStringLiteral("GRAPH"), argument);
    CEquationTree_Graph inner(data);
    if (!inner.CompileOnColumns(text)) {
        tree->errorRow = inner.errorRow;
        tree->errorCol = inner.errorCol;
        tree->errorToken = inner.errorToken;
        tree->errorText = inner.errorText;
        m_values.reset();
        return 0;
    }
    CGraphColumnPtr values = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows, argument));
    graph->SetInnerTree(&inner);
    inner.PrepareRows(0, rows - 1);
    inner.EvaluateRows(values->m_values, values->m_valid, 0, rows - 1);
    graph->SetInnerTree(nullptr);
    if (inner.HasError() && !tree->HasError()) {
        tree->errorRow = inner.errorRow;
        tree->errorCol = inner.errorCol;
        tree->errorToken = inner.errorToken;
        tree->errorText = inner.errorText;
    }
    // One value on every row needs no row of its own.
    m_perRow = 0;
    for (int r = 1; r < rows && !m_perRow; ++r) {
        m_perRow = values->m_valid[r] != values->m_valid[0]
            || std::memcmp(&values->m_values[r], &values->m_values[0], sizeof(double)) != 0;
    }
    m_rows = rows;
    m_values = std::move(values);
    return 1;
}

int CNodeUserFunction::presentRow() const
{
    if (!m_values || !m_tree)
        return -1;
    const int row = m_perRow ? int(m_tree->m_rowIndex) : 0;
    return row >= 0 && row < m_rows ? row : -1;
}

void CNodeUserFunction::Evaluate(CRpnData &result, unsigned char &status)
{
    CRpnData value;
    if (m_operand && !EvaluateOrPass(m_operand, value, result, status))
        return;
    const int row = presentRow();
    if (!m_values) {
        // Not prepared (no data): the operand's value stands.
        result = std::move(value);
        return;
    }
    if (row < 0 || m_values->m_valid[row] != 1) {
        status = 0;
        result.SetNull();
        return;
    }
    result.SetDouble(m_values->m_values[row]);
}

double CNodeUserFunction::ApplyReal(double a, double, unsigned char &status)
{
    if (!m_values)
        return a;
    const int row = presentRow();
    if (row < 0 || m_values->m_valid[row] != 1) {
        status = 0;
        return 0.0;
    }
    return m_values->m_values[row];
}

// --- the hook ------------------------------------------------------------------------------

CRpnNode *LookupGraphKeyword(CEquationTree *tree, const QString &name, int position, int row, int col,
                             unsigned char &)
{
    static const CNodeGetSize getSize;
    static const CNodeGetValue getValue;
    static const CNodeSetResult setResult;
    static const CNodeSetGraph setGraph;
    const QString upper = name.toUpper();
    if (upper == u"GETSIZE")
        return getSize.Clone(tree, position, row, col);
    if (upper == u"GETVALUE")
        return getValue.Clone(tree, position, row, col);
    if (upper == u"SETRESULT")
        return setResult.Clone(tree, position, row, col);
    if (upper == u"SETGRAPH")
        return setGraph.Clone(tree, position, row, col);
    UserFunctions &functions = userFunctions();
    std::lock_guard<std::mutex> guard(functions.lock);
    if (const CNodeUserFunction *prototype = functions.prototypes.value(upper))
        return prototype->Clone(tree, position, row, col);
    return nullptr;
}

void ReloadUserFunctions()
{
    QStringList names, bodies;
    GetGraphCustom().GetFunctions(names, bodies);
    QHash<QString, CNodeUserFunction *> loaded;
    for (int i = 0; i < names.size(); ++i) {
        QString text = names[i] + u'{' + bodies[i] + u'}';
        int open = 0, close = 0;
        QString head;
        if (!ParseItem(text, true, open, close, head))
            continue;
        auto *prototype = new CNodeUserFunction;
        prototype->m_name = head;
        prototype->m_body = text;
        delete loaded.value(head.toUpper());
        loaded.insert(head.toUpper(), prototype);
    }
    UserFunctions &functions = userFunctions();
    std::lock_guard<std::mutex> guard(functions.lock);
    qDeleteAll(functions.prototypes);
    functions.prototypes.swap(loaded);
}

void EnsureGraphFunctions()
{
    static std::once_flag loaded;
    std::call_once(loaded, [] {
        RegisterFunctionLibrary();
        ReloadUserFunctions();
    });
}

bool HasUserFunction(const QString &name)
{
    UserFunctions &functions = userFunctions();
    std::lock_guard<std::mutex> guard(functions.lock);
    return functions.prototypes.contains(name.toUpper());
}
