#include "tool/capture/toolfields.h"

#include "support/myarrays.h"
#include "tool/capture/capturemodel.h"
#include "tool/capture/numbertext.h"
#include "tool/capture/pointtext.h"

#include <utility>

QString *CToolFields::Text(int id)
{
    switch (id) {
    case IdXAtFirst: return &xAtFirst;
    case IdXAtSecond: return &xAtSecond;
    case IdYAtSecond: return &yAtSecond;
    case IdYAtFirst: return &yAtFirst;
    case IdPoints: return &points;
    case IdXUnit: return &xUnit;
    case IdXName: return &xName;
    case IdYName: return &yName;
    case IdFileName: return &fileName;
    case IdYUnit: return &yUnit;
    default: return nullptr;
    }
}

bool *CToolFields::Check(int id)
{
    switch (id) {
    case IdXLog: return &xLog;
    case IdYLog: return &yLog;
    case IdExchangeXY: return &exchangeXY;
    default: return nullptr;
    }
}

const CUnitPrefix g_unitPrefixes[9] = {
    {"p", -12}, {"n", -9}, {"u", -6}, {"m", -3}, {" ", 0},
    {"k", 3},   {"M", 6},  {"G", 9},  {"T", 12},
};

int UnitExponentOfPrefix(const QString &prefixText)
{
    return prefixText.isEmpty() ? 0 : UnitExponentFromLetter(prefixText.at(0).unicode());
}

QString UnitPrefixOfExponent(int exponent)
{
    for (const CUnitPrefix &p : g_unitPrefixes)
        if (p.exponent == exponent)
            return QString::fromLatin1(p.text);
    return QStringLiteral(" ");
}

CAxisValues ReadAxisValues(const CToolFields &fields)
{
    CAxisValues v;
    int flag = 0;
    v.xAtFirst = FromFloatExStr(fields.xAtFirst, flag);
    v.xAtSecond = FromFloatExStr(fields.xAtSecond, flag);
    v.yAtFirst = FromFloatExStr(fields.yAtFirst, flag);
    v.yAtSecond = FromFloatExStr(fields.yAtSecond, flag);
    v.xLog = fields.xLog;
    v.yLog = fields.yLog;
    v.xUnitExponent = UnitExponentOfPrefix(fields.xUnit);
    v.yUnitExponent = UnitExponentOfPrefix(fields.yUnit);
    return v;
}

int CheckAxisValues(const CAxisValues &v, AxisCheckTexts texts)
{
    const int base = texts == AxisCheckTexts::Next ? 27528 : 27540;
    if (v.xAtFirst == v.xAtSecond)
        return base;
    if (v.yAtFirst == v.yAtSecond)
        return base + 1;
    if (v.xLog && (!(v.xAtFirst > 0) || !(v.xAtSecond > 0)))
        return base + 2;
    if (v.yLog && (!(v.yAtFirst > 0) || !(v.yAtSecond > 0)))
        return base + 3;
    return 0;
}

void ApplyFieldsToCapture(const CToolFields &fields, CCaptureModel &capture)
{
    const CAxisValues v = ReadAxisValues(fields);
    int count = capture.m_points.count;
    CMyDoubleArray pairs;
    ParsePointText(fields.points, count, pairs, true);
    capture.SetCalibration(v.xAtFirst, v.yAtFirst, v.xAtSecond, v.yAtSecond, v.xLog, v.yLog,
                           std::move(pairs), count);
}

void ExchangeAxisFields(CToolFields &fields)
{
    int count = 0;
    CMyDoubleArray pairs;
    ParsePointText(fields.points, count, pairs, true);
    for (int i = 0; i < count; ++i)
        std::swap(pairs[2 * i], pairs[2 * i + 1]);
    fields.points = FormatPointText(pairs.GetData(), count);

    std::swap(fields.xUnit, fields.yUnit);
    std::swap(fields.xLog, fields.yLog);
    std::swap(fields.xName, fields.yName);

    const CAxisValues v = ReadAxisValues(fields);
    fields.xAtFirst = FormatG(v.yAtFirst, 6, true);
    fields.xAtSecond = FormatG(v.yAtSecond, 6, true);
    fields.yAtFirst = FormatG(v.xAtFirst, 6, true);
    fields.yAtSecond = FormatG(v.xAtSecond, 6, true);
}
