#include "graphdata/spectrum/spectrumjob.h"

#include "graphdata/columnscan.h"
#include "graphdata/columntransform.h"
#include "graphdata/graphcurve.h"
#include "graphdata/graphsnapshot.h"
#include "graphdata/spectrum/resample.h"
#include "graphdata/spectrum/spectrumtransform.h"
#include "support/languagestring.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

namespace {

const double kDegreesPerRadian = 57.29577951308232;

enum : int {
    TextInvalidRow = 43621,
    TextTooFewRows = 43622,
    TextOutOfMemory = 43623,
    TextInvalidRowNoX = 43624,
};

// The transform of the last length used, shared by the curves of a graph
// (they all have the grid's length).  The user-interface thread alone runs
// spectra.
std::unique_ptr<CFourierTransform> &lastTransform()
{
    static std::unique_ptr<CFourierTransform> transform;
    return transform;
}

CFourierTransform *transformFor(int n)
{
    auto &t = lastTransform();
    if (!t || t->Length() != n) {
        t.reset();
        t = std::make_unique<CFourierTransform>(n);
    }
    return t.get();
}

void dropResults(CCurveInfo &curve)
{
    curve.m_spectrumMagnitude.reset();
    curve.m_spectrumAngle.reset();
    curve.m_spectrumReal.reset();
    curve.m_spectrumImag.reset();
    curve.m_displayColumn.reset();
}

struct Guard
{
    explicit Guard(std::int32_t &flag) : m_flag(flag) { m_flag = 1; }
    ~Guard() { m_flag = 0; }
    std::int32_t &m_flag;
};

} // namespace

int PrepareSpectrum(CGraphCurve &graph)
{
    for (CCurveInfo *curve : graph.m_curves)
        dropResults(*curve);
    graph.m_resampledX.reset();
    graph.m_frequencyColumn.reset();
    graph.m_frequencyLogColumn.reset();
    graph.m_spectrumFirst = graph.m_spectrumLast = -1;
    graph.m_spectrumLength = 0;
    graph.m_spectrumStep = 1;

    CGraphDataSnapshot snapshot;
    snapshot.Take(graph.m_data, {graph.m_xColumnIndex});
    CGraphColumn *x = snapshot.Size() > 0 ? snapshot.At(0).column : nullptr;
    const int rows = snapshot.RowCount();
    if (!x || rows < 2)
        return 0;

    double lo, hi;
    bool invalid;
    if (!RangeOf(x, 0, rows - 1, lo, hi, invalid))
        return 0;
    double start = graph.m_spectrumStart, end = graph.m_spectrumEnd;
    if (start == 0 && end == 0) {
        start = lo;
        end = hi;
    }
    if (start > end)
        std::swap(start, end);
    if (end < lo || start > hi) {
        start = lo;
        end = hi;
    }
    start = std::max(start, lo);
    end = std::min(end, hi);

    int first, last;
    CGraphColumnPtr grid;
    if (!ResampleGrid(x, rows, start, end, first, last, grid))
        return 0;
    const int n = SpectrumLength(grid->m_count);
    CGraphColumnPtr frequency;
    if (n < 2 || !FrequencyColumn(first, last, n, x, frequency))
        return 0;
    CGraphColumnPtr logForm = CGraphColumnPtr::Adopt(CGraphColumn::Create(frequency->m_count));
    bool logInvalid;
    LogOf(frequency.Get(), logForm.Get(), frequency->m_count, logInvalid);

    graph.m_spectrumStart = start;
    graph.m_spectrumEnd = end;
    graph.m_spectrumFirst = first;
    graph.m_spectrumLast = last;
    graph.m_spectrumLength = n;
    graph.m_resampledX = grid;
    graph.m_frequencyColumn = frequency;
    graph.m_frequencyLogColumn = logForm;
    return 1;
}

QString SpectrumFailureText(const CSpectrumFailure &failure)
{
    switch (failure.reason) {
    case CSpectrumFailure::InvalidRow:
        if (!std::isfinite(failure.x))
            return LanguageString(TextInvalidRowNoX).arg(failure.name).arg(failure.row + 1);
        return LanguageString(TextInvalidRow).arg(failure.name).arg(failure.row + 1).arg(failure.x, 0, 'g', 10);
    case CSpectrumFailure::OutOfMemory: return LanguageString(TextOutOfMemory).arg(failure.name);
    case CSpectrumFailure::TooFewRows: break;
    }
    return LanguageString(TextTooFewRows).arg(failure.name);
}

int CurveSpectrum(CGraphCurve &graph, CCurveInfo &curve, const CFourierTransform::Progress &progress,
                  CSpectrumFailure *failure)
{
    if (curve.m_spectrumMagnitude)
        return 1;
    if (curve.IsLimitLine() || !graph.m_resampledX || !graph.m_frequencyColumn || graph.m_spectrumRunning)
        return -1;
    Guard guard(graph.m_spectrumRunning);

    // The source: the data column, the computed one, or the curve's own Y
    // over its own X.
    CGraphDataSnapshot snapshot;
    const CGraphColumn *x = nullptr, *y = nullptr;
    int rows = 0;
    QString name = curve.m_colName;
    if (curve.Origin() == CCurveBasicInfo::OriginColumn) {
        snapshot.Take(graph.m_data, {graph.m_xColumnIndex, curve.m_colIndex});
        x = snapshot.Column(0);
        y = snapshot.Column(1);
        rows = snapshot.RowCount();
    } else if (curve.m_ownY) {
        y = curve.m_ownY.Get();
        if (curve.m_ownX) {
            x = curve.m_ownX.Get();
        } else {
            snapshot.Take(graph.m_data, {graph.m_xColumnIndex});
            x = snapshot.Column(0);
        }
        rows = std::min(y->m_count, x ? x->m_count : 0);
    } else if (curve.m_computedColumn) {
        snapshot.Take(graph.m_data, {graph.m_xColumnIndex});
        x = snapshot.Column(0);
        y = curve.m_computedColumn.Get();
        rows = std::min(snapshot.RowCount(), y->m_count);
    }
    if (y && !y->m_name.isEmpty())
        name = y->m_name;

    const int bins = graph.m_frequencyColumn->m_count;
    int result = 0;
    bool cancelled = false;
    CSpectrumFailure why;
    why.name = name;
    try {
        CGraphColumnPtr samples;
        int invalidRow = -1;
        if (x && y && ResampleOnto(x, y, rows, graph.m_resampledX.Get(), samples, &invalidRow)) {
            samples->m_name = name;
            CFourierTransform *transform = transformFor(graph.m_spectrumLength);
            CFourierTransform::Progress watched;
            if (progress)
                watched = [&](double f) { return !(cancelled = !progress(f)); };
            const int done = Spectrum(0, graph.m_spectrumLength, graph.m_spectrumStep, samples.Get(),
                                      curve.m_spectrumMagnitude, curve.m_spectrumAngle, curve.m_spectrumReal,
                                      curve.m_spectrumImag, watched, transform);
            result = done >= 0 ? 1 : 0;
        } else if (invalidRow >= 0) {
            why.reason = CSpectrumFailure::InvalidRow;
            why.row = invalidRow;
            why.x = x && invalidRow < x->m_count && x->m_valid[invalidRow] == 1 ? x->m_values[invalidRow]
                                                                                 : std::nan("");
        }
    } catch (const std::bad_alloc &) {
        why.reason = CSpectrumFailure::OutOfMemory;
        result = 0;
    }
    if (!result && !cancelled && failure)
        *failure = why;
    if (!result) {
        lastTransform().reset();
        EmptySpectrum(bins, name, curve.m_spectrumMagnitude, curve.m_spectrumAngle, curve.m_spectrumReal,
                      curve.m_spectrumImag);
    }
    curve.m_displayColumn.reset();
    return result;
}

int AllCurveSpectra(CGraphCurve &graph, const SpectrumProgressFactory &progress,
                    std::vector<CSpectrumFailure> *failures)
{
    int ok = 1;
    for (CCurveInfo *curve : graph.m_curves) {
        if (curve->m_spectrumMagnitude || curve->IsLimitLine())
            continue;
        const QString name = curve->m_colLabel.isEmpty() ? curve->m_colName : curve->m_colLabel;
        CFourierTransform::Progress report = progress ? progress(name) : CFourierTransform::Progress();
        bool cancelled = false;
        CFourierTransform::Progress watched;
        if (report)
            watched = [&](double f) { return (cancelled = !report(f)) == false; };
        CSpectrumFailure why;
        const int r = CurveSpectrum(graph, *curve, watched, &why);
        if (r == 0)
            ok = 0;
        if (cancelled)
            break;
        if (r == 0 && failures)
            failures->push_back(why);
    }
    return ok;
}

const CGraphColumn *SpectrumXColumn(const CGraphCurve &graph)
{
    return graph.m_xLog ? graph.m_frequencyLogColumn.Get() : graph.m_frequencyColumn.Get();
}

const CGraphColumn *SpectrumCurveColumn(CGraphCurve &graph, CCurveInfo &curve, bool &hasInvalid)
{
    hasInvalid = false;
    const CGraphColumn *base = nullptr;
    switch (curve.Component()) {
    case CCurveBasicInfo::ComponentAngleRad:
    case CCurveBasicInfo::ComponentAngleDeg: base = curve.m_spectrumAngle.Get(); break;
    case CCurveBasicInfo::ComponentReal: base = curve.m_spectrumReal.Get(); break;
    case CCurveBasicInfo::ComponentImag: base = curve.m_spectrumImag.Get(); break;
    default: base = curve.m_spectrumMagnitude.Get(); break;
    }
    if (!base)
        return nullptr;
    const CGraph_Range *range = graph.Range(graph.AxisOf(curve));
    const bool log = range && range->m_logScale && !range->m_dbScale;
    const bool db = range && range->m_dbScale;
    const bool degrees = curve.Component() == CCurveBasicInfo::ComponentAngleDeg;
    if (!log && !db && !degrees)
        return base;

    // The derived form lives in the display column; its kind tells which.
    const std::uint32_t wantedKind = base->m_kind | (log ? CGraphColumn::KindLog : 0u) |
                                     (db ? CGraphColumn::KindDb : 0u) | (degrees ? 0x10000u : 0u);
    CGraphColumnPtr &form = curve.m_displayColumn;
    if (form && form->m_kind == wantedKind && form->m_count == base->m_count) {
        hasInvalid = form->m_hasInvalid != 0;
        return form.Get();
    }
    const int rows = base->m_count;
    CGraphColumnPtr source(const_cast<CGraphColumn *>(base));
    if (degrees) {
        CGraphColumnPtr deg = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows, base->m_name));
        deg->m_kind = base->m_kind;
        for (int i = 0; i < rows; ++i) {
            deg->m_valid[i] = base->m_valid[i];
            deg->m_values[i] = base->m_values[i] * kDegreesPerRadian;
        }
        RecomputeExtents(deg.Get(), rows);
        source = deg;
    }
    if (log || db) {
        CGraphColumnPtr out = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows));
        bool invalid = false;
        if (db)
            DbOf(source.Get(), out.Get(), rows, invalid);
        else
            LogOf(source.Get(), out.Get(), rows, invalid);
        hasInvalid = invalid;
        source = out;
    }
    source->m_kind = wantedKind;
    source->m_hasInvalid = hasInvalid ? 1 : 0;
    form = source;
    return form.Get();
}

void FitSpectrumRanges(CGraphCurve &graph)
{
    graph.FitX(graph.m_xLog != 0);
    graph.SetXRange(true, false, 0, 0, 0, false, true);
    for (int axis = 0; axis < graph.RangeCount(); ++axis) {
        bool any = false;
        double lo = 0, hi = 0;
        for (CCurveInfo *curve : graph.m_curves) {
            if (graph.AxisOf(*curve) != axis)
                continue;
            bool invalid;
            const CGraphColumn *c = curve->IsLimitLine() ? curve->m_ownY.Get()
                                                         : SpectrumCurveColumn(graph, *curve, invalid);
            double a, b;
            if (c && RangeOf(c, 0, c->m_count - 1, a, b, invalid)) {
                lo = any ? std::min(lo, a) : a;
                hi = any ? std::max(hi, b) : b;
                any = true;
            }
        }
        if (any) {
            CGraph_Range *range = graph.Range(axis);
            range->m_fullMin = lo;
            range->m_fullMax = hi;
        }
        graph.SetYRange(axis, true, false, 0, 0, 0, false, true);
    }
}

int SetSpectrumMode(CGraphCurve &graph, bool on, const SpectrumProgressFactory &progress,
                    std::vector<CSpectrumFailure> *failures)
{
    if (on) {
        if (!PrepareSpectrum(graph))
            return 0;
        graph.m_spectrumMode = 1;
        AllCurveSpectra(graph, progress, failures);
        graph.m_xAxisName = QStringLiteral("Frequency");
        FitSpectrumRanges(graph);
    } else {
        graph.m_spectrumMode = 0;
        for (CCurveInfo *curve : graph.m_curves)
            curve->m_displayColumn.reset();
        graph.m_xAxisName = QStringLiteral("Time");
        graph.FitRanges();
    }
    for (CCurveInfo *curve : graph.m_curves) {
        curve->SetLinePixels(nullptr);
        curve->SetOverviewPixels(nullptr);
    }
    graph.m_lastDrawnRow = 0;
    return 1;
}
