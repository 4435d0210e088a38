#include "tool/capture/curverecords.h"

#include "support/myarrays.h"
#include "tool/capture/numbertext.h"
#include "tool/capture/pointtext.h"
#include "tool/capture/toolfields.h"

#include <cmath>
#include <utility>

const char *const CurveElementName = "Curve2D";
const char *const CurveConditionName = "TJ";
const char *const FinishedCurveTemperature = "25";

namespace {

const QString &elementName()
{
    static const QString name = QString::fromLatin1(CurveElementName);
    return name;
}

const QString &conditionName()
{
    static const QString name = QString::fromLatin1(CurveConditionName);
    return name;
}

CGraphInfoData *newPrototype()
{
    auto *record = new CGraphInfoData;
    record->AddCondition(conditionName(), QStringLiteral("Junction temperature"),
                         QStringLiteral("oC"), QStringLiteral("0"));
    return record;
}

// The comparison of the list's sort: the difference of the low 32 bits of
// the keys, taken as a 32-bit number as it wraps.
int compareKeys(const CGraphInfoData *a, const CGraphInfoData *b)
{
    const std::uint32_t d = std::uint32_t(std::uint64_t(a->sortKey)) - std::uint32_t(std::uint64_t(b->sortKey));
    return int(std::int32_t(d));
}

} // namespace

void AddCurveRecordType(CDTypeLib &typeLib)
{
    auto *type = new CDType(CurveRecordType);
    auto *curves = new CArrayOfPtr(&CGraphInfoData::Destruct_GraphInfoData,
                                   &CGraphInfoData::Copy_GraphInfoData);
    curves->AddPtr(newPrototype());
    const CGenericType value(curves, 0);
    type->Add(new CDTypeElement(elementName(), QStringLiteral("Curve vs. Tc"), QString(), 4, value));
    typeLib.Add(type);
}

CDTypeLib &TraceliftTypeLib()
{
    static CDTypeLib lib;
    return lib;
}

std::int64_t SortKeyFromText(const QString &text)
{
    const QByteArray bytes = text.toLatin1();
    const double v = std::floor(PlainToDouble(std::string_view(bytes.constData(), std::size_t(bytes.size()))) * 1000.0 + 0.45);
    if (v != v)
        return 0;
    if (v <= -9.2e18)
        return INT64_MIN;
    if (v >= 9.2e18)
        return INT64_MAX;
    return std::int64_t(v);
}

bool CCurveRecords::Init(CDTypeLib &typeLib)
{
    if (typeLib.IsEmpty())
        AddCurveRecordType(typeLib);
    CDeviceDatabase database;
    database.Init(typeLib);
    m_deviceDatabase = database;
    m_curveList = nullptr;
    m_currentCurve = nullptr;
    m_currentElement = nullptr;
    m_curveCount = 0;

    CDeviceData *record = nullptr;
    if (m_deviceDatabase.GetData().GetSize() == 0) {
        CDType *type = nullptr;
        int index = 0;
        if (!m_deviceDatabase.GetType_TypeConstant(CurveRecordType, type, index))
            return false;
        int count = 0;
        m_deviceDatabase.Add(m_deviceDatabase.New_CDeviceData(type), index, count);
        record = m_deviceDatabase.GetData().GetAt(index);
    } else {
        record = m_deviceDatabase.GetData().GetAt(0);
    }
    if (!record)
        return false;

    CGenericType *value = record->GetValue(elementName());
    if (!value || value->GetKind() != CGenericType::KindArray || !value->GetArray())
        return false;
    m_curveList = value;
    m_currentElement = record->GetType()->GetAt(elementName());
    m_curveCount = Size();

    CGraphInfoData *last = Template();
    if (!last || !last->IsTemplate()) {
        CGraphInfoData *templ = last ? new CGraphInfoData(*last) : newPrototype();
        templ->RemoveAllPoints();
        SetTemperature(templ, QString());
        // The key that follows from the cleared TJ: the one a fresh curve
        // gets, 0.  (Keyed any other way, a template that a loaded file turns
        // into a curve would survive the save's clean-up.)
        templ->sortKey = SortKeyFromText(QString());
        templ->flags |= CGraphInfoData::FlagTemplate;
        List()->AddPtr(templ);
        ++m_curveCount;
    }
    m_currentCurve = Template();
    return true;
}

CArrayOfPtr *CCurveRecords::List() const
{
    return m_curveList ? m_curveList->GetArray() : nullptr;
}

int CCurveRecords::Size() const
{
    const CArrayOfPtr *list = List();
    return list ? list->GetSize() : 0;
}

CGraphInfoData *CCurveRecords::At(int index) const
{
    const CArrayOfPtr *list = List();
    return list ? static_cast<CGraphInfoData *>(list->GetPtrAt(index)) : nullptr;
}

CGraphInfoData *CCurveRecords::Template() const
{
    return At(Size() - 1);
}

bool CCurveRecords::CurrentIsTemplate() const
{
    return m_currentCurve && m_currentCurve->IsTemplate();
}

void CCurveRecords::SetTemperature(CGraphInfoData *record, const QString &text)
{
    record->SetConditionValue(conditionName(), text);
    record->sortKey = SortKeyFromText(text);
}

void CCurveRecords::Sort()
{
    CArrayOfPtr *list = List();
    if (!list || list->GetSize() < 3)
        return;
    // An insertion sort: the lists are short, it keeps equal keys in their
    // order, and it stays within bounds whatever the comparison says.
    void **items = list->GetData();
    const int n = list->GetSize() - 1;
    for (int i = 1; i < n; ++i) {
        void *item = items[i];
        int j = i;
        while (j > 0 && compareKeys(static_cast<CGraphInfoData *>(items[j - 1]),
                                    static_cast<CGraphInfoData *>(item)) > 0) {
            items[j] = items[j - 1];
            --j;
        }
        items[j] = item;
    }
}

void CCurveRecords::RemoveEmptyRecords()
{
    CArrayOfPtr *list = List();
    if (!list)
        return;
    auto otherHasPoints = [this](int skip) {
        for (int k = 0; k < Size(); ++k) {
            const CGraphInfoData *r = At(k);
            if (k != skip && !r->IsTemplate() && r->GetPointCount() > 0)
                return true;
        }
        return false;
    };
    for (int i = 0; i < Size(); ++i) {
        CGraphInfoData *r = At(i);
        if (r->IsTemplate() || r->GetPointCount() != 0 || r->sortKey != 0 || !otherHasPoints(i))
            continue;
        const bool wasCurrent = r == m_currentCurve;
        list->RemoveItem(i);
        if (wasCurrent)
            m_currentCurve = Template();
        --m_curveCount;
        --i;
    }
}

bool CCurveRecords::SaveFields(const CToolFields &fields)
{
    CGraphInfoData *target = Template();
    if (!target)
        return false;
    const CAxisValues v = ReadAxisValues(fields);
    // With the axes exchanged the record's X axis is the fields' Y axis.
    const bool swap = fields.exchangeXY;
    if (swap)
        target->flags |= CGraphInfoData::FlagAxesExchanged;
    else
        target->flags &= ~std::uint32_t(CGraphInfoData::FlagAxesExchanged);
    target->xMin = swap ? v.yAtFirst : v.xAtFirst;
    target->xMax = swap ? v.yAtSecond : v.xAtSecond;
    target->yMin = swap ? v.xAtFirst : v.yAtFirst;
    target->yMax = swap ? v.xAtSecond : v.yAtSecond;
    target->xLog = swap ? v.yLog : v.xLog;
    target->yLog = swap ? v.xLog : v.yLog;
    target->xUnitExponent = swap ? v.yUnitExponent : v.xUnitExponent;
    target->yUnitExponent = swap ? v.xUnitExponent : v.yUnitExponent;

    CGraphInfoData *current = m_currentCurve;
    if (!current || current->IsTemplate())
        return true;
    int count = current->GetPointCount();
    CMyDoubleArray pairs;
    ParsePointText(fields.points, count, pairs, true);
    current->points.SetSize(count);
    double *p = current->points.GetData();
    const int a = fields.exchangeXY ? 1 : 0;
    for (int i = 0; i < count; ++i) {
        p[2 * i] = pairs[2 * i + a];
        p[2 * i + 1] = pairs[2 * i + 1 - a];
    }
    // A curve with points is finished; one without is fresh again.
    const QString tj = count > 0 ? finishedTemperature(current) : QString();
    if (current->ConditionValue(conditionName()) != tj) {
        SetTemperature(current, tj);
        Sort();
    }
    return true;
}

int CCurveRecords::CurrentPairs(bool exchanged, CMyDoubleArray &pairs) const
{
    const int count = m_currentCurve ? m_currentCurve->GetPointCount() : 0;
    pairs.SetSize(2 * count);
    for (int i = 0; i < count; ++i) {
        double x = 0, y = 0;
        m_currentCurve->GetPoint(i, x, y);
        pairs[2 * i] = exchanged ? y : x;
        pairs[2 * i + 1] = exchanged ? x : y;
    }
    return count;
}

QString CCurveRecords::CurrentPointText(bool exchanged) const
{
    CMyDoubleArray pairs;
    const int count = CurrentPairs(exchanged, pairs);
    return FormatPointText(pairs.GetData(), count);
}

bool CCurveRecords::AddCurve(const CToolFields &fields)
{
    if (m_currentCurve)
        SaveFields(fields);
    if (!insertFreshCurve())
        return false;
    return Size() > m_curveCount + 1;
}

bool CCurveRecords::AddFamilyCurve(const CToolFields &fields)
{
    const bool further = AddCurve(fields);
    if (m_currentCurve && !m_currentCurve->IsTemplate())
        m_currentCurve->flags |= CGraphInfoData::FlagFamilyCurve;
    return further;
}

QString CCurveRecords::finishedTemperature(const CGraphInfoData *curve) const
{
    const QString finished = QString::fromLatin1(FinishedCurveTemperature);
    if (!(curve->flags & CGraphInfoData::FlagFamilyCurve))
        return finished;
    // Once finished, a family curve keeps its temperature.
    const QString own = curve->ConditionValue(conditionName());
    if (!own.isEmpty())
        return own;
    auto taken = [&](std::int64_t key) {
        for (int i = 0; i < Size(); ++i) {
            const CGraphInfoData *r = At(i);
            if (r != curve && !r->IsTemplate() && r->sortKey == key)
                return true;
        }
        return false;
    };
    for (int t = finished.toInt();; ++t) {
        const QString text = QString::number(t);
        if (!taken(SortKeyFromText(text)))
            return text;
    }
}

bool CCurveRecords::insertFreshCurve()
{
    CArrayOfPtr *list = List();
    CGraphInfoData *templ = Template();
    if (!list || !templ)
        return false;
    auto *curve = new CGraphInfoData(*templ);
    curve->flags &= ~std::uint32_t(CGraphInfoData::FlagTemplate | CGraphInfoData::FlagFamilyCurve);
    curve->RemoveAllPoints();
    SetTemperature(curve, QString());
    int index = Size() - 1;
    for (int i = 0; i < Size() - 1; ++i)
        if (At(i)->sortKey >= 0) {
            index = i;
            break;
        }
    list->InsertPtrAt(index, curve);
    m_currentCurve = curve;
    return true;
}

void CCurveRecords::FinishTrace(const CToolFields &fields)
{
    SaveFields(fields);
    Sort();
    RemoveEmptyRecords();
}

void CCurveRecords::ResetCurrentCurve()
{
    if (!m_currentCurve || m_currentCurve->IsTemplate())
        return;
    m_currentCurve->RemoveAllPoints();
    SetTemperature(m_currentCurve, QString());
}

CSavePlan CCurveRecords::PrepareSaving(const CToolFields &fields, int deviceKind)
{
    CSavePlan plan;
    if (!m_curveList)
        return plan;
    // What a refusal puts back: a copy of every record, and the records as
    // they stood, so that the failing one is found again by its place.
    const CGenericType before(*m_curveList);
    QList<CGraphInfoData *> order;
    for (int i = 0; i < Size(); ++i)
        order.append(At(i));
    CGraphInfoData *const currentBefore = m_currentCurve;
    const std::int32_t countBefore = m_curveCount;

    if (!SaveFields(fields))
        return plan;
    Sort();
    RemoveEmptyRecords();

    const bool otherKind = deviceKind == 595;
    auto refuse = [&](CGraphInfoData *curve, int id, const QString &argument) {
        const int place = int(order.indexOf(curve));
        plan.failedCurrent = curve == currentBefore;
        *m_curveList = before;
        m_curveCount = countBefore;
        m_currentCurve = At(place >= 0 ? place : Size() - 1);
        plan.messageId = id;
        plan.messageArgument = argument;
        return plan;
    };

    bool first = true;
    std::int64_t previousKey = 0;
    bool haveReference = false;
    double firstReference = 0, lastReference = 0;
    for (int i = 0; i < Size(); ++i) {
        CGraphInfoData *curve = At(i);
        if (curve->IsTemplate())
            continue;
        const int count = curve->GetPointCount();
        double firstX = 0, lastX = 0, y = 0;
        curve->GetPoint(0, firstX, y);
        curve->GetPoint(count - 1, lastX, y);
        if (first) {
            first = false;
            previousKey = curve->sortKey;
            if (count > 0) {
                firstReference = firstX;
                lastReference = lastX;
                haveReference = true;
            } else if (Size() >= 3) {
                return refuse(curve, 27535, QString());
            }
            continue;
        }
        if (curve->sortKey == previousKey)
            return refuse(curve, otherKind ? 27548 : 27534, QString::number(curve->sortKey / 1000));
        if (count == 0)
            return refuse(curve, 27535, QString());
        if (!otherKind && haveReference && (firstX != firstReference || lastX != lastReference)) {
            const double span = lastReference - firstReference;
            if (std::fabs((firstReference - firstX) / span) > 0.1
                || std::fabs((lastReference - lastX) / span) > 0.1)
                return refuse(curve, 27536, fields.xName);
        }
        previousKey = curve->sortKey;
    }

    CGraphInfoData *templ = Template();
    if (templ->xMin > templ->xMax)
        std::swap(templ->xMin, templ->xMax);
    if (templ->yMin > templ->yMax)
        std::swap(templ->yMin, templ->yMax);
    for (int i = 0; i < Size(); ++i) {
        CGraphInfoData *curve = At(i);
        if (curve->IsTemplate())
            continue;
        curve->xUnitExponent = templ->xUnitExponent;
        curve->yUnitExponent = templ->yUnitExponent;
        curve->xMin = templ->xMin;
        curve->xMax = templ->xMax;
        curve->yMin = templ->yMin;
        curve->yMax = templ->yMax;
        curve->xLog = templ->xLog;
        curve->yLog = templ->yLog;
        if (curve->GetPointCount() > 0)
            plan.toWrite.append(curve);
    }
    plan.ok = true;
    return plan;
}

void CCurveRecords::TakeOverLoadedFile()
{
    EnsureRealCurrent();
    m_curveCount = Size();
}

void CCurveRecords::EnsureRealCurrent()
{
    if (!m_currentCurve || m_currentCurve->IsTemplate())
        insertFreshCurve();
}

QString CCurveRecords::CheckInvariant() const
{
    const int n = Size();
    if (n == 0)
        return QStringLiteral("the list is empty");
    bool currentFound = false;
    for (int i = 0; i < n; ++i) {
        const CGraphInfoData *r = At(i);
        currentFound = currentFound || r == m_currentCurve;
        if (r->IsTemplate() != (i == n - 1))
            return QStringLiteral("record %1 of %2 is %3 the template")
                .arg(i).arg(n).arg(r->IsTemplate() ? QString() : QStringLiteral("not"));
        if (r->IsTemplate() && (r->GetPointCount() != 0 || r->sortKey != 0))
            return QStringLiteral("the template has points or a key");
        if (!r->IsTemplate() && r->GetPointCount() == 0 && r->sortKey != 0
            && r->ConditionValue(conditionName()) == QLatin1String(FinishedCurveTemperature))
            return QStringLiteral("record %1 is finished without points").arg(i);
    }
    if (!currentFound)
        return QStringLiteral("the current curve is not in the list");
    return QString();
}
