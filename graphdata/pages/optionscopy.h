#pragma once
// The private copies that the option dialog edits: the curves, the Y ranges
// with the order of the axes, the X axis fields and the screen fields of a
// graph.  Taken when the dialog opens, checked and written back when it is
// accepted; until then the graph itself is not touched.

#include "graphdata/curveinfo.h"
#include "graphdata/graphrange.h"

#include <QString>
#include <QStringList>
#include <cstdint>
#include <vector>

class CGraphCurve;

// Where a check failed: the page, the axis (Y ranges) or curve row, the
// field, and the text for the user.
struct COptionsFault
{
    enum Page { PageCurves, PageDisplay, PageXAxis, PageYAxis, PageScreen, PageEmi };
    enum Field { FieldNone, FieldMin, FieldMax, FieldTick, FieldColor, FieldFormula, FieldLabel };
    Page page = PageCurves;
    int index = 0;
    Field field = FieldNone;
    QString text;
};

class CGraphOptionsCopy
{
public:
    CGraphOptionsCopy() = default;
    CGraphOptionsCopy(const CGraphOptionsCopy &) = delete;
    CGraphOptionsCopy &operator=(const CGraphOptionsCopy &) = delete;

    void Take(const CGraphCurve &graph);
    // The ranges once more, as stored (log ends as powers of ten); false
    // with the first fault.
    bool Check(COptionsFault &fault) const;
    // Writes the copies back into the graph, under its drawing lock: the
    // curves through ApplyCurveList, the ranges through CopyRanges, the
    // axes sorted, the X fields, and a refit of every axis on automatic
    // scaling.  notFound as ApplyCurveList sets it.
    void Apply(CGraphCurve &graph, bool &notFound) const;

    // A new Y range with the settings of the first one (or the defaults
    // when there is none); its index.
    int AddRange();

    // ---- the curves ----------------------------------------------------------
    CCurveBasicInfoArray m_curves;

    // ---- the Y ranges --------------------------------------------------------
    CArrayGraph_Range m_ranges;
    std::vector<int> m_axisOrder;

    // ---- the X axis ----------------------------------------------------------
    double m_xMin = 0, m_xMax = 1, m_xTick = 0;
    std::int32_t m_xAuto = 1;
    std::int32_t m_xLog = 0;
    std::uint32_t m_xAxisFlags = 0;
    std::int32_t m_xRotation = 0;
    std::int32_t m_xSubDivisions = 5;
    std::uint32_t m_xTextColor = 0;
    std::int32_t m_majorPenStyle = 2;
    std::uint32_t m_majorColor = 0;
    std::int32_t m_minorPenStyle = 2;
    std::uint32_t m_minorColor = 0;
    CGraphFont m_xLabelFont;
    QString m_xAxisName;
    std::int32_t m_xyMode = 0;
    std::int32_t m_xColumnIndex = 0;
    // The column the graph draws over when not in X-Y mode ("Time").
    std::int32_t m_timeColumn = 0;
    // X is the row number ("Index"): on acceptance the graph draws over the
    // data's column of row numbers, made when it has none.
    std::int32_t m_xRowNumbers = 0;

    // ---- the limit line ----------------------------------------------------------
    // The limit of the global list to add on acceptance when the graph does
    // not show it yet; -1 for none.  Limits already shown are curve entries.
    int m_emiLimit = -1;

    // ---- the screen ------------------------------------------------------------
    std::uint32_t m_backColor = 0;
    std::uint32_t m_foreColor = 0;
    std::uint32_t m_gridColor = 0;
    std::int32_t m_gridOn = 0;
    std::int32_t m_hideLabels = 0;

    // ---- what the pages show or hide (not written back) ----------------------
    std::int32_t m_scope = 0;       // an oscilloscope graph: no X controls
    std::int32_t m_spectrum = 0;    // spectrum mode: no X log switch
    QStringList m_columnNames;      // of the data set, for the X column list
};

// Checks one axis's fields: min below max, a tick above 0 (0 means
// automatic), a log axis above 0, and not more than 10000 ticks.  Empty
// when they are right, else the text and the field in `field`.
QString CheckAxisFields(double min, double max, double tick, bool log, COptionsFault::Field &field);
