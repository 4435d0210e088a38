#pragma once
// Held curves: frozen copies of what curves showed at one run, kept for
// comparison after new data arrive.  A CCurveHold_Set is one held group;
// CCurveHoldList is the owner's list of groups, newest first.

#include "graphdata/graphcolumn.h"

#include <QString>
#include <cstdint>
#include <vector>

class CCurveHold_Set;
class CCurveHoldList;

class CCurveHold
{
public:
    void AddRef() { ++m_refCount; }
    void Release()
    {
        if (--m_refCount == 0)
            delete this;
    }
    int RefCount() const { return m_refCount; }

    std::int32_t m_curveIndex = 0;
    QString m_label;
    QString m_label2;
    std::uint64_t m_id = 0;
    CGraphColumnPtr m_xColumn;
    std::uint64_t m_xColumnId = 0;
    CGraphColumnPtr m_yColumn;
    std::uint64_t m_yColumnId = 0;
    CCurveHold_Set *m_set = nullptr;

private:
    friend class CCurveHold_Set;
    CCurveHold() = default;
    ~CCurveHold() = default;
    int m_refCount = 1;
};

class CCurveHold_Set
{
public:
    CCurveHold_Set() = default;
    CCurveHold_Set(const CCurveHold_Set &) = delete;
    CCurveHold_Set &operator=(const CCurveHold_Set &) = delete;
    // Drops one reference of each member.
    ~CCurveHold_Set();

    // The hold labelled `label`: the one already in the set (existed = 1),
    // or a new one over the given columns (existed = 0).  Columns without an
    // id get one, and the hold records both ids.
    CCurveHold *AddHold(int curveIndex, const QString &label, const QString &label2, CGraphColumn *xColumn,
                        CGraphColumn *yColumn, int &existed);
    CCurveHold *FindHold(const QString &label) const;
    int GetCount() const { return int(m_holds.size()); }
    CCurveHold *GetAt(int i) const { return m_holds[std::size_t(i)]; }

    std::uint64_t m_ownerId = 0;
    QString m_name;
    QString m_label;
    std::vector<CCurveHold *> m_holds;
    CCurveHoldList *m_owner = nullptr;
};

class CCurveHoldList
{
public:
    CCurveHoldList() = default;
    CCurveHoldList(const CCurveHoldList &) = delete;
    CCurveHoldList &operator=(const CCurveHoldList &) = delete;
    ~CCurveHoldList();

    // The name the next group gets: the newest group's name split into a
    // base and trailing digits, with the number raised by one ("Run9" gives
    // "Run10"); "A1" when there is no group or the newest name is all digits.
    QString NextGroupName() const;
    // A new, empty group under the next name, put at the front.
    CCurveHold_Set *NewGroup(std::uint64_t ownerId = 0);
    int GetCount() const { return int(m_sets.size()); }
    CCurveHold_Set *GetAt(int i) const { return m_sets[std::size_t(i)]; }
    void DeleteAll();

private:
    std::vector<CCurveHold_Set *> m_sets;
};
