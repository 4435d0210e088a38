#pragma once
// The curve record of the device store: axis limits and flags, the points,
// the conditions under which the curve holds ("TJ", the junction
// temperature), and the key the curve list is sorted by.

#include "support/myarrays.h"

#include <QList>
#include <QString>
#include <cstdint>

// An array of equal elements made of doubles; curve records keep their
// (x, y) pairs in one.
class CStructArray
{
public:
    explicit CStructArray(int doublesPerElement = 2);

    int GetSize() const { return m_count; }
    int GetElementDoubles() const { return m_elementDoubles; }
    // New element count; kept elements stay, new ones are zero.
    void SetSize(int count);
    void RemoveAll() { SetSize(0); }
    double *GetData() { return m_block.GetData(); }
    const double *GetData() const { return m_block.GetData(); }

private:
    int m_elementDoubles;
    int m_count = 0;
    CMyDoubleArray m_block;
};

// A condition of a curve: its name ("TJ"), what it means, its unit, the
// default text, and the value as text.
class CGraphCondition
{
public:
    QString m_name;
    QString m_description;
    QString m_unit;
    QString m_default;
    QString m_value;

    void SetValues(const QString &value) { m_value = value; }
};

class CGraphInfoData
{
public:
    enum : std::uint32_t {
        FlagAxesExchanged = 0x1000, // written with X and Y crossed
        FlagTemplate = 0x10000,     // the template at the end of the curve list
        // A further curve of a picture's family (Trace another curve): it is
        // finished at a temperature of its own, so that the family saves.
        FlagFamilyCurve = 0x20000,
    };

    double xMin = 0.0;
    double yMin = 0.0;
    double xMax = 0.0;
    double yMax = 0.0;
    std::int32_t xLog = 0;
    std::int32_t yLog = 0;
    CStructArray points{2};          // x, y pairs
    std::int32_t xUnitExponent = 0;  // the unit prefix as a power of ten
    std::int32_t yUnitExponent = 0;
    std::uint32_t flags = 0;
    std::int64_t sortKey = 0;        // the temperature in thousandths
    QList<CGraphCondition> m_conditions;

    bool IsTemplate() const { return (flags & FlagTemplate) != 0; }
    int GetPointCount() const { return points.GetSize(); }
    // False, and x and y untouched, for an index outside the points.
    bool GetPoint(int i, double &x, double &y) const;
    void RemoveAllPoints() { points.RemoveAll(); }

    void AddCondition(const QString &name, const QString &description, const QString &unit,
                      const QString &defaultValue);
    CGraphCondition *GetCondition(const QString &name);
    const CGraphCondition *GetCondition(const QString &name) const;
    // The value of a condition; empty when the record has no such condition.
    QString ConditionValue(const QString &name) const;
    // False when the record has no such condition.
    bool SetConditionValue(const QString &name, const QString &text);

    // Element functions for a CArrayOfPtr of records.
    static void Destruct_GraphInfoData(void *record);
    static void *Copy_GraphInfoData(const void *record);
};
