#include "tool/capture/graphinfodata.h"

#include <climits>

CStructArray::CStructArray(int doublesPerElement)
    : m_elementDoubles(doublesPerElement < 1 ? 1 : doublesPerElement)
{
}

void CStructArray::SetSize(int count)
{
    if (count < 0)
        count = 0;
    if (std::int64_t(count) * m_elementDoubles > INT_MAX)
        count = INT_MAX / m_elementDoubles;
    m_block.SetSize(count * m_elementDoubles);
    m_count = count;
}

bool CGraphInfoData::GetPoint(int i, double &x, double &y) const
{
    if (i < 0 || i >= points.GetSize())
        return false;
    const double *p = points.GetData() + std::int64_t(i) * points.GetElementDoubles();
    x = p[0];
    y = points.GetElementDoubles() > 1 ? p[1] : 0.0;
    return true;
}

void CGraphInfoData::AddCondition(const QString &name, const QString &description,
                                  const QString &unit, const QString &defaultValue)
{
    CGraphCondition c;
    c.m_name = name;
    c.m_description = description;
    c.m_unit = unit;
    c.m_default = defaultValue;
    m_conditions.append(c);
}

CGraphCondition *CGraphInfoData::GetCondition(const QString &name)
{
    for (CGraphCondition &c : m_conditions)
        if (c.m_name == name)
            return &c;
    return nullptr;
}

const CGraphCondition *CGraphInfoData::GetCondition(const QString &name) const
{
    for (const CGraphCondition &c : m_conditions)
        if (c.m_name == name)
            return &c;
    return nullptr;
}

QString CGraphInfoData::ConditionValue(const QString &name) const
{
    const CGraphCondition *c = GetCondition(name);
    return c ? c->m_value : QString();
}

bool CGraphInfoData::SetConditionValue(const QString &name, const QString &text)
{
    CGraphCondition *c = GetCondition(name);
    if (!c)
        return false;
    c->SetValues(text);
    return true;
}

void CGraphInfoData::Destruct_GraphInfoData(void *record)
{
    delete static_cast<CGraphInfoData *>(record);
}

void *CGraphInfoData::Copy_GraphInfoData(const void *record)
{
    return new CGraphInfoData(*static_cast<const CGraphInfoData *>(record));
}
