#include "graphdata/curvehold.h"

CCurveHold_Set::~CCurveHold_Set()
{
    for (CCurveHold *hold : m_holds)
        hold->Release();
}

CCurveHold *CCurveHold_Set::FindHold(const QString &label) const
{
    for (CCurveHold *hold : m_holds) {
        if (hold->m_label == label)
            return hold;
    }
    return nullptr;
}

CCurveHold *CCurveHold_Set::AddHold(int curveIndex, const QString &label, const QString &label2,
                                    CGraphColumn *xColumn, CGraphColumn *yColumn, int &existed)
{
    if (CCurveHold *hold = FindHold(label)) {
        existed = 1;
        return hold;
    }
    existed = 0;
    auto *hold = new CCurveHold;
    hold->m_curveIndex = curveIndex;
    hold->m_label = label;
    hold->m_label2 = label2;
    hold->m_set = this;
    AssignColumnId(xColumn);
    AssignColumnId(yColumn);
    hold->m_xColumn = CGraphColumnPtr(xColumn);
    hold->m_yColumn = CGraphColumnPtr(yColumn);
    hold->m_xColumnId = xColumn ? xColumn->m_id : 0;
    hold->m_yColumnId = yColumn ? yColumn->m_id : 0;
    // The hold's own id mixes in the ids of its columns, so that the same
    // pair held twice in one run keeps one identity.
    hold->m_id = hold->m_yColumnId ^ (hold->m_xColumnId << 1) ^ std::uint64_t(curveIndex);
    m_holds.push_back(hold);
    return hold;
}

CCurveHoldList::~CCurveHoldList()
{
    DeleteAll();
}

void CCurveHoldList::DeleteAll()
{
    for (CCurveHold_Set *set : m_sets)
        delete set;
    m_sets.clear();
}

QString CCurveHoldList::NextGroupName() const
{
    if (m_sets.empty())
        return QStringLiteral("A1");
    const QString &newest = m_sets.front()->m_name;
    qsizetype digits = newest.size();
    while (digits > 0 && newest[digits - 1].isDigit() && newest[digits - 1].unicode() < 128)
        --digits;
    const QString base = newest.left(digits);
    if (base.isEmpty())
        return QStringLiteral("A1");
    const qlonglong number = newest.mid(digits).toLongLong(); // 0 without digits
    return base + QString::number(number + 1);
}

CCurveHold_Set *CCurveHoldList::NewGroup(std::uint64_t ownerId)
{
    auto *set = new CCurveHold_Set;
    set->m_name = NextGroupName();
    set->m_ownerId = ownerId;
    set->m_owner = this;
    m_sets.insert(m_sets.begin(), set);
    return set;
}
