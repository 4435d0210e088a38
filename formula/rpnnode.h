#pragma once
// CRpnNode: the base of every node of a compiled formula.
//
// What stands here is what the keyword table needs of a node: its class
// number, its name, and cloning a prototype for a new call site.  The node
// tree adds evaluation, operands, precedence and serialisation on top.

#include <QString>
#include <cstdint>

class CEquationTree;

class CRpnNode
{
public:
    CRpnNode() = default;
    CRpnNode(const CRpnNode &) = delete;
    CRpnNode &operator=(const CRpnNode &) = delete;
    virtual ~CRpnNode();

    // The fixed class number; saved trees refer to classes by it.
    virtual int GetKind() const = 0;
    // A blank node of the same class.
    virtual CRpnNode *CreateSame() const = 0;
    // CreateSame bound to `tree` and the source position; flags are copied,
    // children are not.
    virtual CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const;
    // The name or operator text, as messages and regenerated source show it.
    virtual QString GetName() const = 0;

    std::int32_t m_position = 0;
    std::int32_t m_row = 0;
    std::int32_t m_col = 0;
    CEquationTree *m_tree = nullptr; // not owned
    CRpnNode *m_parent = nullptr;    // not owned
    std::uint32_t m_flags = 0;
    std::uint32_t m_flags2 = 0;
};
