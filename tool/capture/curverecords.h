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
    // After a refusal: true when the failing curve is the one that was
    // current, whose fields then stay as they are.
    bool failedCurrent = false;
};

// The curve list.  Every member below keeps this invariant, and
// CheckInvariant() tests it:
//  - the list is never empty, and its last record is the template: the one
//    record flagged FlagTemplate, without points, keyed 0.  It carries the
//    axis limits, log flags and unit exponents the fields last saved.
//  - every other record is a real curve.  A real curve with points is a
//    finished curve and is keyed by its TJ ("25" unless a caller set
//    another); a real curve without points is fresh, with an empty TJ and
//    key 0, so that the next save drops it when any other curve has points.
//    Only a caller can leave an empty curve at another key.
//  - m_currentCurve is a record of the list (a real curve or the template).
//  - a save that is refused changes no record: what a user sees refused can
//    always be mended (Start over empties a curve, which makes it fresh) and
//    saved afterwards.
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

    // The record side of the dialog's Save direction: the pairs of the point
    // text go into the current curve unless it is the template; a real
    // current curve with points then gets TJ "25" when it has another TJ, and
    // one left without points becomes fresh (empty TJ), and the list is
    // sorted when a key changed; the limits,
    // log flags and unit exponents of the fields go into the template (crossed,
    // with FlagAxesExchanged, when field 1848 is ticked).  False only when
    // there is no list.  The dialog then enables Next.
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

    // A further curve of the same picture: added as AddCurve adds one, and
    // flagged so that, once it has points, it is keyed by the lowest whole
    // temperature from 25 up that no other real curve holds (26 beside a
    // first curve at 25, then 27, ...).  Every curve of a family so has a key
    // of its own, and the family passes the key check of saving.
    bool AddFamilyCurve(const CToolFields &fields);

    // The record side of a finished trace (and of an applied typed curve):
    // save the fields (which keys the curve "25" when it has points) and
    // remove empty records.
    void FinishTrace(const CToolFields &fields);

    // Start over: the current curve loses its points and is fresh again (an
    // empty TJ, key 0), so that the next save drops it.
    void ResetCurrentCurve();

    // The checks of saving, stopping at the first failure: save the fields,
    // sort, remove empty records, then walk the curves: keys must differ from
    // the one before, every curve needs points (a lone first curve may lack
    // them when the list holds fewer than 3 records), and every curve must
    // start and end within a tenth of the first curve's X span of where the
    // first curve does (not checked for device kind 595).  When all pass, the
    // template's limits (each pair put in rising order) go into every real
    // curve with its log flags and unit exponents.  A refusal puts every
    // record back as it was before the call, and makes the failing curve
    // current; `plan.failedCurrent` says whether it was the current one.
    CSavePlan PrepareSaving(const CToolFields &fields, int deviceKind = 0);

    // After a text file was loaded: the file's points (in the fields) belong
    // to the current curve, which is the template only when no real curve is
    // under work: then a fresh curve is added for them.  The template stays
    // the template.  m_curveCount takes the list's size.
    void TakeOverLoadedFile();

    // A capture always works on a real curve: when the template is current
    // (the curve under work was dropped by a save, or none was added), a
    // fresh curve is added and made current.
    void EnsureRealCurrent();

    // An empty text when the invariant above holds, else what is wrong.
    QString CheckInvariant() const;

private:
    // A copy of the template, emptied, keyed 0 and made current, inserted
    // before the first record whose key is not negative.
    bool insertFreshCurve();
    // The TJ a curve with points is finished at.
    QString finishedTemperature(const CGraphInfoData *curve) const;
};
