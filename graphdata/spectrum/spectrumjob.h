#pragma once
// A graph's spectrum mode: the grid and frequency axis of the graph
// (PrepareSpectrum), the four result columns of each curve
// (CurveSpectrum), the column a curve shows in that mode, and the switch
// between time and frequency (SetSpectrumMode).
//
// Transforms report progress through a callback so that a window can show
// a modal progress box with a Cancel button; the graph's m_spectrumRunning
// guard keeps a second transform from starting while one runs (as when the
// box's event processing repaints the graph).

#include "graphdata/spectrum/fouriertransform.h"

#include <QString>
#include <functional>
#include <vector>

class CGraphCurve;
class CCurveInfo;
class CGraphColumn;

// Why a curve got no spectrum, for the message that tells the user.
struct CSpectrumFailure
{
    enum Reason { InvalidRow, TooFewRows, OutOfMemory };
    QString name;   // the transformed column
    Reason reason = TooFewRows;
    int row = -1;   // the invalid row (from 0), for InvalidRow
    double x = 0;   // X at that row, when it has one
};

// The user's text for a failure.
QString SpectrumFailureText(const CSpectrumFailure &failure);

// Makes the progress callback for the transform of one curve, given the
// name of the column being transformed; an empty function reports nothing.
using SpectrumProgressFactory = std::function<CFourierTransform::Progress(const QString &columnName)>;

// Drops all former spectrum results of the graph and builds the even grid
// and the frequency column (with its log form) over the graph's span
// m_spectrumStart..m_spectrumEnd: both 0 mean the whole extent of the X
// column; the span is clipped to the extent, and one outside it is replaced
// by the whole extent.  Stores the span actually used, the covered rows
// (m_spectrumFirst, m_spectrumLast) and the transform length.  Returns 1,
// or 0 (grid and frequency released) when the grid cannot be made.
int PrepareSpectrum(CGraphCurve &graph);

// The four result columns of one curve, computed once while its magnitude
// is missing; limit lines are skipped.  On failure or cancel, four empty
// columns of the frequency's length stand in, so that the curve shows
// nothing without trying again.  Returns 1 computed (or already there),
// 0 failed or cancelled, -1 when skipped (limit line, no grid, or another
// transform running).  A failure other than a cancel is described in
// `failure` when given.
int CurveSpectrum(CGraphCurve &graph, CCurveInfo &curve, const CFourierTransform::Progress &progress = {},
                  CSpectrumFailure *failure = nullptr);

// Every curve's results; 0 when any failed or was cancelled (a cancel stops
// the rest, which keep no results and are tried again on the next pass).
// The curves that failed other than by a cancel are added to `failures`.
int AllCurveSpectra(CGraphCurve &graph, const SpectrumProgressFactory &progress = {},
                    std::vector<CSpectrumFailure> *failures = nullptr);

// The column a curve shows in spectrum mode: its component (magnitude,
// angle in radians or degrees, sine or cosine amplitude), in the log or dB
// form its axis asks for (kept in the curve's display column).  Null when
// the curve has no results.  hasInvalid tells whether a row of the form is
// invalid (the DC row on a log axis does not count).
const CGraphColumn *SpectrumCurveColumn(CGraphCurve &graph, CCurveInfo &curve, bool &hasInvalid);

// The X column of spectrum mode: the frequency, or its log form.
const CGraphColumn *SpectrumXColumn(const CGraphCurve &graph);

// Enters (on) or leaves spectrum mode: the spectra are computed on entry,
// the axes fitted again, and the X label becomes "Frequency" or "Time".
// Returns 0 when entering failed (the graph stays in time mode).  Curves
// whose own spectrum failed on entry are added to `failures`.
int SetSpectrumMode(CGraphCurve &graph, bool on, const SpectrumProgressFactory &progress = {},
                    std::vector<CSpectrumFailure> *failures = nullptr);

// Fits the axes of a graph in spectrum mode to its frequency and results.
void FitSpectrumRanges(CGraphCurve &graph);
