#include "graphdata/formula/graphtree.h"

#include "graphdata/formula/graphnodes.h"

#include "formula/rpnnode.h"
#include "formula/rpnnodes.h"

#include <algorithm>

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

int CEquationTree_Graph::EvaluateRows(double *values, unsigned char *valid, int first, int last)
{
    if (last < first)
        return 0;
    if (!m_rowColumnsKnown) {
        m_rowColumnsKnown = true;
        WalkTree(GetRoot(), [this](CRpnNode *node) {
            CNodeVariable *variable = node->AsVariable();
            if (!variable || !variable->m_column)
                return 0;
            const CRpnNode *parent = node->m_parent;
            const bool notAtRow = parent
                && ((parent->GetKind() == RPN_NODE_GET_VALUE && parent->GetOperand(0) == node)
                    || parent->GetKind() == RPN_NODE_USER_FUNCTION);
            if (!notAtRow && std::find(m_rowColumns.begin(), m_rowColumns.end(), variable->m_column) == m_rowColumns.end())
                m_rowColumns.push_back(variable->m_column);
            return 0;
        });
    }
    int good = EvaluateSeries(values, valid, first, last);
    for (const CRpnColumnBinding *column : m_rowColumns) {
        for (int r = first; r <= last; ++r) {
            const bool inside = r < column->count && (!column->valid || column->valid[r] == 1);
            if (!inside && valid[r] != 0) {
                good -= valid[r] == 1;
                valid[r] = 0;
            }
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
