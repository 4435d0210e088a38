#pragma once
// The digitiser's curves in the device store: one record of type 112 whose
// element "Curve2D" holds the list of curve records.  The last record of the
// list is always the template: it carries the axis limits and flags common to
// all curves and no points.  Every other record is a real curve, keyed by its
// "TJ" condition (the junction temperature) in thousandths.

#include "tool/capture/devicedatabase.h"
#include "tool/capture/graphinfodata.h"

#include <QList>
#include <QString>
#include <cstdint>

class CMyDoubleArray;
struct CToolFields;

constexpr int CurveRecordType = 112;
extern const char *const CurveElementName;   // "Curve2D"
extern const char *const CurveConditionName; // "TJ"
extern const char *const FinishedCurveTemperature; // "25": the TJ of every finished curve

// Adds the record type 112 with its element "Curve2D" (an array of curve
// records whose prototype carries the condition "TJ") to a type library.
void AddCurveRecordType(CDTypeLib &typeLib);

// The digitiser's own type library, built on first use.
CDTypeLib &TraceliftTypeLib();

// The key of a condition text: floor(value * 1000 + 0.45), the value read as
// atof reads it ("" gives 0, "25" 25000).
std::int64_t SortKeyFromText(const QString &text);

// The outcome of the checks of saving.
struct CSavePlan {
    bool ok = false;
    // The refusal: 27534 (two curves at one temperature, %1 the temperature),
    // 27535 (a curve without points) or 27536 (a curve whose X range differs
    // by more than a tenth, %1 the X name), or the texts that replace them for
    // device kind 595.  The failing curve is made the current one.  Zero when
    // the fields could not be saved.
    int messageId = 0;
    QString messageArgument;
    // When ok: the curves to write, one file each, in list order.
    QList<CGraphInfoData *> toWrite;
};

class CCurveRecords
{
public:
    CDeviceDatabase m_deviceDatabase;
    CGenericType *m_curveList = nullptr;     // the value of "Curve2D" in the record
    std::int32_t m_curveCount = 0;           // records counted at the moments below
    CGraphInfoData *m_currentCurve = nullptr;
    CDTypeElement *m_currentElement = nullptr;

    // Builds the store over the type library (adding type 112 when the library
    // is empty), makes or takes its one record, appends a template to the list
    // when the last record is none, and makes the template current.
    bool Init(CDTypeLib &typeLib);

    CArrayOfPtr *List() const;
    int Size() const;
    CGraphInfoData *At(int index) const;
    CGraphInfoData *Template() const; // the last record
    bool CurrentIsTemplate() const;

    // The condition "TJ" of a record and its key.
    static void SetTemperature(CGraphInfoData *record, const QString &text);

    // Orders all records but the template by the low 32 bits of their keys.
    // Equal keys keep their order.
    void Sort();

    // Removes each real record without points and with key 0, as long as some
    // other real record has points; m_curveCount falls by one for each.
    void RemoveEmptyRecords();

    // The record side of the dialog's Save direction: a real current curve
    // gets TJ "25" (and the list is sorted) when it has another; the limits,
    // log flags and unit exponents of the fields go into the template (crossed,
    // with FlagAxesExchanged, when field 1848 is ticked); the pairs of the
    // point text go into the current curve unless it is the template.  False
    // only when there is no list.  The dialog then enables Next.
    bool SaveFields(const CToolFields &fields);

    // The current curve's pairs (crossed when `exchanged`) as the point text
    // "(%G,%G)...", and as doubles; the count is returned.
    QString CurrentPointText(bool exchanged) const;
    int CurrentPairs(bool exchanged, CMyDoubleArray &pairs) const;

    // A new curve: the fields are saved into the current curve, then a copy of
    // the template, emptied and keyed 0, is inserted before the first record
    // whose key is not negative and made current.  True when the list now
    // holds more records than m_curveCount + 1: a further curve on the same
    // picture, which goes straight to entering values (mode 14).
    bool AddCurve(const CToolFields &fields);

    // The record side of a finished trace (and of an applied typed curve):
    // TJ "25", sort, save the fields, remove empty records.
    void FinishTrace(const CToolFields &fields);

    // Start over: the current curve loses its points and gets TJ "25".
    void ResetCurrentCurve();

    // The checks of saving, stopping at the first failure: save the fields,
    // sort, remove empty records, then walk the curves: keys must differ from
    // the one before, every curve needs points (a lone first curve may lack
    // them when the list holds fewer than 3 records), and every curve must
    // start and end within a tenth of the first curve's X span of where the
    // first curve does (not checked for device kind 595).  When all pass, the
    // template's limits (each pair put in rising order) go into every real
    // curve with its log flags and unit exponents.
    CSavePlan PrepareSaving(const CToolFields &fields, int deviceKind = 0);

    // After a text file was loaded: m_curveCount takes the list's size, and
    // the last record loses its points and its template flag.
    void TakeOverLoadedFile();
};
