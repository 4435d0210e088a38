#include "graphdata/formula/graphtree.h"

#include "graphdata/formula/graphnodes.h"

#include "formula/rpnnode.h"
#include "formula/rpnnodes.h"
#include "functions/rpnsampling.h"

#include <algorithm>
#include <cstring>

std::shared_ptr<const CGraphTreeData> CGraphTreeData::Take(const CGraphData &data, int xColumn)
{
    auto taken = std::make_shared<CGraphTreeData>();
    taken->m_snapshot.Take(data);
    for (int i = 0; i < taken->m_snapshot.Size(); ++i) {
        const CGraphColumn *column = taken->m_snapshot.Column(i);
        taken->m_names.append(column ? column->m_name : QString());
    }
    taken->m_xColumn = xColumn >= 0 && xColumn < taken->m_snapshot.Size() ? xColumn : 0;
    return taken;
}

const double *CGraphTreeData::X() const
{
    const CGraphColumn *x = m_xColumn < ColumnCount() ? Column(m_xColumn) : nullptr;
    return x ? x->m_values : nullptr;
}

const unsigned char *CGraphTreeData::XValid() const
{
    const CGraphColumn *x = m_xColumn < ColumnCount() ? Column(m_xColumn) : nullptr;
    return x ? x->m_valid : nullptr;
}

double CGraphTreeData::Step() const
{
    const double *x = X();
    const unsigned char *valid = XValid();
    if (!x || RowCount() < 2 || valid[0] != 1 || valid[1] != 1)
        return 0.0;
    return x[1] - x[0];
}

bool CGraphTreeData::IsVariableName(const QString &name)
{
    if (name.isEmpty() || !(name[0].isLetter() || name[0] == u'_'))
        return false;
    for (QChar c : name) {
        if (!(c.isLetterOrNumber() || c == u'_'))
            return false;
    }
    return true;
}

CEquationTree_Graph::CEquationTree_Graph(std::shared_ptr<const CGraphTreeData> data)
    : CEquationTree(data ? data->Step() : 0.0), m_data(std::move(data))
{
    EnsureGraphFunctions();
    m_keywordHook = LookupGraphKeyword;
    SetHostData(this);
    if (m_data && m_data->RowCount() > 0)
        SetSampling(m_data->Step(), m_data->X(), m_data->RowCount());
}

CEquationTree_Graph::~CEquationTree_Graph() = default;

int CEquationTree_Graph::CompileOnColumns(const QString &text)
{
    ClearColumnBindings();
    if (m_data) {
        const int rows = m_data->RowCount();
        // The first of several columns of one name is the one a formula sees.
        for (int i = m_data->ColumnCount() - 1; i >= 0; --i) {
            const CGraphColumn *column = m_data->Column(i);
            const QString &name = m_data->Name(i);
            if (column && IsVariableNameUsable(name))
                BindColumn(name, column->m_values, column->m_valid, std::min(rows, int(column->m_count)));
        }
    }
    return Compile(text, nullptr, true);
}

bool CEquationTree_Graph::IsVariableNameUsable(const QString &name) const
{
    return CGraphTreeData::IsVariableName(name);
}

int CEquationTree_Graph::ColumnOf(const CRpnNode *node) const
{
    CNodeVariable *variable = node ? const_cast<CRpnNode *>(node)->AsVariable() : nullptr;
    if (!variable || !variable->m_column || !m_data)
        return -1;
    // Bound in CompileOnColumns from the last column to the first: the
    // first column of the name is the one bound.
    return int(m_data->Names().indexOf(variable->m_column->name));
}

int CEquationTree_Graph::PrepareRows(int first, int last)
{
    ResetRun();
    m_gapRows = m_failedRows = 0;
    m_rowColumnsKnown = false;
    m_rowColumns.clear();
    if (!PrepareRun(first, last))
        return 0;
    if (first != 0 || last < first)
        return 1;
    // The outermost AvgX nodes prepared over these rows.
    std::vector<CNodeAvgX *> prepared;
    WalkTree(GetRoot(), [&](CRpnNode *node) {
        if (node->GetKind() != RPN_NODE_AVGX)
            return 0;
        auto *avg = static_cast<CNodeAvgX *>(node);
        for (const CRpnNode *p = node->m_parent; p; p = p->m_parent) {
            if (std::find(prepared.begin(), prepared.end(), p) != prepared.end())
                return 0;
        }
        if (avg->m_values && avg->m_validity && avg->m_first == 0 && avg->m_parent
            && std::int64_t(avg->m_values->size()) > last)
            prepared.push_back(avg);
        return 0;
    });
    for (CNodeAvgX *avg : prepared) {
        CRpnNode *parent = avg->m_parent;
        int place = -1;
        for (int i = 0; i < GetOperandPlaces(parent) && place < 0; ++i) {
            if (parent->GetOperand(i) == avg)
                place = i;
        }
        if (place < 0)
            continue;
        auto *variable = new CNodeVariable;
        variable->m_tree = this;
        variable->m_name = variable->m_text = QStringLiteral("AvgX#%1").arg(m_preparedValues.size());
        variable->m_position = avg->m_position;
        variable->m_row = avg->m_row;
        variable->m_col = avg->m_col;
        if (!parent->SetOperand(place, variable)) {
            delete variable;
            continue;
        }
        std::vector<unsigned char> valid(avg->m_validity->size());
        for (std::size_t r = 0; r < valid.size(); ++r)
            valid[r] = (*avg->m_validity)[r] == CNodeAvgX::FlagValid ? 1 : 0;
        m_preparedValues.push_back(avg->m_values);
        m_preparedValid.push_back(std::move(valid));
        BindColumn(variable->m_name, m_preparedValues.back()->data(), m_preparedValid.back().data(), last + 1);
        DeleteSubtree(avg);
    }
    return 1;
}

int CEquationTree_Graph::EvaluateRows(double *values, unsigned char *valid, int first, int last)
{
    if (last < first)
        return 0;
    if (!m_rowColumnsKnown) {
        m_rowColumnsKnown = true;
        WalkTree(GetRoot(), [this](CRpnNode *node) {
            if (node->GetKind() == RPN_NODE_USER_FUNCTION) {
                // What the function computed stands for a column here.
                const auto *function = static_cast<CNodeUserFunction *>(node);
                if (function->m_values)
                    m_rowColumns.push_back({function->m_values->m_valid, function->m_rows, !function->m_perRow});
                return 0;
            }
            CNodeVariable *variable = node->AsVariable();
            if (!variable || !variable->m_column)
                return 0;
            const CRpnNode *parent = node->m_parent;
            const bool notAtRow = parent
                && ((parent->GetKind() == RPN_NODE_GET_VALUE && parent->GetOperand(0) == node)
                    || parent->GetKind() == RPN_NODE_USER_FUNCTION);
            const CRpnColumnBinding *c = variable->m_column;
            for (const Input &known : m_rowColumns) {
                if (known.valid == c->valid && known.count == c->count)
                    return 0;
            }
            if (!notAtRow)
                m_rowColumns.push_back({c->valid, c->count, false});
            return 0;
        });
    }
    int good = EvaluateSeries(values, valid, first, last);
    // Whether an input has a gap in these rows at all: mostly none.
    bool anyGap = false;
    for (const Input &input : m_rowColumns) {
        if (input.single || last >= input.count) {
            anyGap = true;
            continue;
        }
        if (!input.valid)
            continue;
        unsigned char notOne = 0;
        for (int r = first; r <= last; ++r)
            notOne |= input.valid[r] ^ 1;
        anyGap = anyGap || notOne != 0;
    }
    if (!anyGap) {
        // The formula failed where a row is 0: an invalid row, where lines break.
        unsigned char *p = valid + first, *end = valid + last + 1;
        while ((p = static_cast<unsigned char *>(std::memchr(p, 0, std::size_t(end - p))))) {
            *p++ = 2;
            ++m_failedRows;
        }
        return good;
    }
    for (int r = first; r <= last; ++r) {
        // The input's gap: invalid (2) when an input is invalid there, else
        // missing (0) when one is missing or ends before the row.
        unsigned char gap = 1;
        for (const Input &input : m_rowColumns) {
            const int row = input.single ? 0 : r;
            const unsigned char v = row >= input.count ? 0 : input.valid ? input.valid[row] : 1;
            if (v != 1)
                gap = gap == 1 ? v : std::max(gap, v);
        }
        if (gap != 1) {
            good -= valid[r] == 1;
            valid[r] = gap;
            ++m_gapRows;
        } else if (valid[r] == 0) {
            valid[r] = 2;
            ++m_failedRows;
        }
    }
    return good;
}

bool CEquationTree_Graph::WritesResult() const
{
    return WalkTree(GetRoot(), [](CRpnNode *node) { return node->GetKind() == RPN_NODE_SET_GRAPH ? 1 : 0; }) != 0;
}

int CEquationTree_Graph::Stop()
{
    CEquationTree::Stop();
    std::lock_guard<std::mutex> guard(m_innerLock);
    if (m_inner)
        m_inner->Stop();
    return 1;
}

void CEquationTree_Graph::SetInnerTree(CEquationTree *inner)
{
    std::lock_guard<std::mutex> guard(m_innerLock);
    m_inner = inner;
    if (inner && IsStopping())
        inner->Stop();
}
