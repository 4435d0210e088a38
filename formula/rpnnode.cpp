#include "formula/rpnnode.h"

CRpnNode::~CRpnNode() = default;

CRpnNode *CRpnNode::Clone(CEquationTree *tree, int position, int row, int col) const
{
    CRpnNode *node = CreateSame();
    node->m_tree = tree;
    node->m_position = position;
    node->m_row = row;
    node->m_col = col;
    node->m_flags = m_flags;
    node->m_flags2 = m_flags2;
    return node;
}
