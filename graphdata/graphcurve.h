#pragma once
// CGraphCurve: one plot surface of a graph window, binding curves, axes and
// held curves to one data set.  Several graphs may share a data set, since
// CGraphData is a counted handle; the curves hold their own column
// references, so a data set may be replaced under a curve.
//
// Curve and range management is in graphcurve.cpp, axis fitting
// (FitX, SetXRange, SetYRange, CurveExtent, FitRanges) in graphfit.cpp.

#include "graphdata/curvehold.h"
#include "graphdata/curveinfo.h"
#include "graphdata/graphdata.h"
#include "graphdata/graphrange.h"
#include "graphdata/textnline.h"

#include <QString>
#include <cstdint>
#include <vector>

// The defaults a graph starts from: default curve styles (from a defaults
// file), default Y axis rows and a default X axis.  Counted, since graphs
// opened from one another share it.
class CGraphDefaults
{
public:
    CGraphDefaults();
    void AddRef() { ++m_refCount; }
    void Release()
    {
        if (--m_refCount == 0)
            delete this;
    }

    CCurveDefaultInfoArray m_curveDefaults;
    CArrayGraph_Range m_rangeDefaults; // one row at first
    CGraph_Range m_xDefault;

private:
    ~CGraphDefaults() = default;
    int m_refCount = 1;
};

// Counts that SortAxes reports.
struct CAxisCounts
{
    int left = 0, right = 0, autoFit = 0, slices = 0;
};

class CGraphCurve
{
public:
    // displayFlags
    enum : std::uint32_t {
        DisplayBlackWhite = 0x1,
        DisplayAnimationCursor = 0x10000,
        DisplaySlider = 0x20000,
        DisplaySliderAtEnd = 0x80000,
        DisplayMessageMask = 0x0F000000,
    };

    // graphKind 2 makes the oscilloscope form of the data.
    explicit CGraphCurve(int graphKind = 1, int dpi = 96);
    CGraphCurve(const CGraphCurve &) = delete;
    CGraphCurve &operator=(const CGraphCurve &) = delete;
    virtual ~CGraphCurve();

    virtual int GetType() const { return 1; }

    // ---- curves ------------------------------------------------------------
    // A curve of data column `columnIndex`, labelled with the column's name,
    // in the next default style (see PickDefaultStyle), on axis `axisIndex`
    // (0 when outside the range array).  Bar styles follow the data's style
    // nibble (4: bars; 5: odd columns bars, even ones thick with marks).
    // Returns the curve's index, or -1 for a column that does not exist.
    int AddCurve(int columnIndex, int axisIndex, bool fitAxes, bool &changed);
    // A curve with columns of its own (origin 2) from `count` pairs, X then
    // Y in each pair, or Y then X when interleavedYFirst is set.  X gets
    // kind 0x1000 and Y kind 0x2000.  Returns the index, -1 for no points.
    int AddOwnCurve(const QString &xName, const QString &yName, const double *points, int count,
                    bool interleavedYFirst);
    // Merges a wanted list into the curves: a curve of the same origin (by
    // column for origin 0, by exact ColName otherwise) keeps its columns and
    // caches and takes over the style; unmatched entries of origin 0 become
    // column curves, those of origin 1 are evaluated (see computedcurve.h)
    // and dropped with notFound set when that fails; unmatched curves go.
    // The curves end up in the wanted order, and the ranges are fitted.
    void ApplyCurveList(const CCurveBasicInfoArray &list, bool &notFound);
    // The palette index of the next default style (-1 when it came from
    // elsewhere), with the style itself.
    int PickDefaultStyle(std::uint32_t &color, std::int32_t &thickness, std::int32_t &symbol) const;
    int CurveCount() const { return m_curves.GetSize(); }
    CCurveInfo *Curve(int i) const { return m_curves.GetAt(i); }
    // The axis a curve is drawn on: its YAxisIndex, or 0 when that is outside
    // the range array.
    int AxisOf(const CCurveInfo &curve) const;
    // Drops all derived columns and polyline caches of the curves.
    void ClearCurveCaches();

    // ---- ranges ------------------------------------------------------------
    // Appends a Y axis.  With a template curve it spans that curve's extent
    // in the shown X range and goes one beyond the outermost axis of the
    // side with fewer axes; otherwise it takes the default row's extents (or
    // the first range's).  Styles come from the default row at the new
    // index; only the first axis keeps its grid.  Returns the new index.
    int AddRange(const CCurveInfo *templateCurve = nullptr);
    // Makes the ranges equal to `from`, member by member.
    void CopyRanges(const CArrayGraph_Range &from);
    int RangeCount() const { return m_ranges.GetSize(); }
    CGraph_Range *Range(int i) const { return m_ranges.GetAt(i); }
    // Sorts the drawn axes of kind 0 by side into m_axisOrder, renumbers the
    // sides densely (-n..-1 right, 1..n left) and counts all kinds.
    CAxisCounts SortAxes();

    // ---- axis fitting (graphfit.cpp) ----------------------------------------
    // The full X extent from the data, for a linear or log X axis.
    void FitX(bool logX);
    // Sets the shown X range: from the full extent when fromData is set,
    // else from min and max; held inside the full extent with `clip`.  The
    // tick is kept when useTick is set and positive, else computed with
    // autoTick (NiceStepX, which also rounds the ends).
    void SetXRange(bool fromData, bool clip, double min, double max, double tick, bool useTick, bool autoTick);
    // The same for Y axis `axis`, with NiceStepY and the integer-tick flag.
    void SetYRange(int axis, bool fromData, bool clip, double min, double max, double tick, bool useTick,
                   bool autoTick);
    // The extent of the curves on `axis` over X from xFrom to xTo, in the
    // axis's form (log, dB).  0 (and min, max unchanged) for an empty axis.
    int CurveExtent(int axis, double xFrom, double xTo, double &min, double &max);
    // FitX, then each axis from the extent of its curves in the shown X range.
    void FitRanges();

    // ---- members -------------------------------------------------------------
    // Drawing objects over the plot (lines, rectangles, texts), owned.
    CTextnLineArray m_textObjects;
    std::int32_t m_highlightedCurve = -1;
    std::int32_t m_activeAxis = 0;
    QString m_title;
    std::int32_t m_legendPos = 0;
    std::int32_t m_legendOffset = 0;
    std::uint32_t m_backColor = 0;
    std::uint32_t m_foreColor = 0;
    std::uint32_t m_gridColor = 0;
    std::uint32_t m_displayFlags = 0;
    std::uint32_t m_xAxisFlags = CGraph_Range::AxisLabels | CGraph_Range::AxisMajorGrid;
    std::int32_t m_gridOn = 0;
    std::int32_t m_hideLabels = 0;
    std::int32_t m_xLabelsOn = 1;
    double m_xFullMin = 0, m_xFullMax = 0;
    double m_xViewMin = 0, m_xViewMax = 0;
    double m_xTick = 0;
    std::int32_t m_xLog = 0;
    std::int32_t m_xRotation = 0;
    std::uint32_t m_xTextColor = 0;
    std::int32_t m_xSubDivisions = 5;
    std::int32_t m_majorPenStyle = 2;
    std::uint32_t m_majorColor = 0xD0E6DA;
    std::int32_t m_minorPenStyle = 2;
    std::uint32_t m_minorColor = 0xB2C8BC;
    CGraphFont m_xLabelFont;
    CGraphFont m_titleFont;
    CGraphData m_data;
    CArrayGraph_Range m_ranges;
    std::vector<int> m_axisOrder;
    CCurveInfoArray m_curves;
    std::int32_t m_xColumnIndex = 0;
    QString m_xAxisName;
    std::int32_t m_spectrumMode = 0;
    std::int32_t m_xyMode = 0;
    std::int32_t m_spectrumFirst = -1, m_spectrumLast = -1, m_spectrumStep = 1;
    std::int32_t m_graphKind;
    std::int32_t m_viewKind = 0;
    std::int32_t m_drawLock = 0;
    std::int32_t m_lastDrawnRow = 0;
    std::int32_t m_lastGeneration = 0;

    // Where the last full draw put things, in device pixels: the target it
    // filled, the plot rectangle, the X axis band below the plot and the
    // legend's title box.  Incremental passes, the window's hit tests and the
    // drawing objects work from these.
    CIntRect m_drawTarget;
    // Room the host keeps free round the axes, in pixels at a font scale of
    // 1, on the left, top, right and bottom of the target: the layout works
    // in what is left (the ground is still filled to the target's edges).
    CIntRect m_axisMargins;
    CIntRect m_plotRect;
    CIntRect m_xAxisRect;
    CIntRect m_titleRect;

    // Spectrum frequency column and its log form, filled by the spectrum
    // code; the X extent in spectrum mode comes from them.
    CGraphColumnPtr m_frequencyColumn;
    CGraphColumnPtr m_frequencyLogColumn;
    // Spectrum settings: the span of X (0 and 0: the whole extent), the
    // transform length, the even grid, and the guard that keeps a second
    // transform from starting while one runs (graphdata/spectrum).
    double m_spectrumStart = 0, m_spectrumEnd = 0;
    std::int32_t m_spectrumLength = 0;
    CGraphColumnPtr m_resampledX;
    std::int32_t m_spectrumRunning = 0;
    // The two cursor positions in X, converted when the X axis changes
    // between linear and log.
    double m_cursorX[2] = {0, 0};
    // The row of the animation cursor (display bit 16): rows after it are
    // not drawn; and the slider's track as the last pass drew it.
    std::int32_t m_animationRow = 0;
    CIntRect m_sliderRect;
    // Label rectangles of the curves in the legend, for hit tests.
    std::vector<CIntRect> m_curveHitRects;
    CCurveHoldList m_holds;
    CGraphDefaults *m_defaults;

private:
    int addCurveInfo(CCurveInfo *curve);
};
