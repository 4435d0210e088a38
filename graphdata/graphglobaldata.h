#pragma once
// CGraphGlobalData: the program-wide defaults of new graphs, the part of the
// option pages' settings that a user may keep for every graph: the screen
// colours and switches, the X axis's labels, grid pens and subdivisions, and
// the style of a Y axis (flags, grid pens, text colour, label angle).  The
// ranges themselves (minimum, maximum, tick) belong to each graph and are
// not kept here.
//
// They live per user under "STANDARD OPTIONS", one value each.  A value that
// is absent or cannot be meant (a colour above 0xFFFFFF, a pen style or a
// switch out of its range) leaves the built-in default, which is what a
// graph has when nothing was ever stored.

#include "graphdata/graphrange.h"

#include <QString>
#include <cstdint>
#include <functional>

class CGraphCurve;

class CGraphGlobalData
{
public:
    // The settings key of the program's defaults.
    static const QString &DefaultKey();

    // ---- the screen --------------------------------------------------------
    std::uint32_t m_backColor = 0xFFFFFF;
    std::uint32_t m_foreColor = 0;
    std::uint32_t m_gridColor = 0;
    std::int32_t m_gridOn = 0;
    std::int32_t m_hideLabels = 0;

    // ---- the X axis --------------------------------------------------------
    std::uint32_t m_xAxisFlags = CGraph_Range::AxisLabels | CGraph_Range::AxisMajorGrid;
    std::int32_t m_xLabelsOn = 1;
    std::int32_t m_xRotation = 0;
    std::uint32_t m_xTextColor = 0;
    std::int32_t m_xSubDivisions = 5;
    std::int32_t m_majorPenStyle = 2;
    std::uint32_t m_majorColor = 0xD0E6DA;
    std::int32_t m_minorPenStyle = 2;
    std::uint32_t m_minorColor = 0xB2C8BC;

    // ---- a Y axis (its style fields only) ----------------------------------
    std::uint32_t m_yAxisFlags = CGraph_Range::AxisLabels | CGraph_Range::AxisMajorGrid;
    std::int32_t m_yRotation = 0;
    std::uint32_t m_yTextColor = 0;
    std::int32_t m_ySubDivisions = 5;
    std::int32_t m_yGridPenStyle = 2;
    std::uint32_t m_yGridColor = 0xD0E6DA;
    std::int32_t m_ySecondPenStyle = 2;
    std::uint32_t m_ySecondColor = 0xD0E6DA;

    // Reads every value stored under `key`; absent and unusable ones keep
    // what the object holds.  Returns the number of values taken.
    int Load(const QString &key = DefaultKey());
    // Stores every value under `key`.
    void Save(const QString &key = DefaultKey()) const;

    // Gives a graph these defaults: the screen and X axis fields, and the
    // style of each Y axis and of the graph's default axis rows (grids only
    // on the first, as with an added axis).
    void ApplyTo(CGraphCurve &graph) const;
    // Takes the defaults from a graph, or from the option dialog's copies of
    // one (which have no switch for the X labels: that default stays): the
    // screen and X axis fields and the style of the first Y axis.
    template <class Source>
    void TakeFrom(const Source &source);

    bool operator==(const CGraphGlobalData &other) const;

private:
    enum class Kind { Color, Switch, PenStyle, Count, Angle, AxisFlags, XAxisFlags };
    // Calls `visit` with the stored name, the kind and the bits of every
    // field, in a fixed order.
    void forEachField(const std::function<void(const char *name, Kind kind, std::uint32_t &bits)> &visit);
    static bool usable(Kind kind, std::uint32_t bits);
};

template <class Source>
void CGraphGlobalData::TakeFrom(const Source &source)
{
    m_backColor = source.m_backColor;
    m_foreColor = source.m_foreColor;
    m_gridColor = source.m_gridColor;
    m_gridOn = source.m_gridOn;
    m_hideLabels = source.m_hideLabels;
    m_xAxisFlags = source.m_xAxisFlags;
    if constexpr (requires { source.m_xLabelsOn; })
        m_xLabelsOn = source.m_xLabelsOn;
    m_xRotation = source.m_xRotation;
    m_xTextColor = source.m_xTextColor;
    m_xSubDivisions = source.m_xSubDivisions;
    m_majorPenStyle = source.m_majorPenStyle;
    m_majorColor = source.m_majorColor;
    m_minorPenStyle = source.m_minorPenStyle;
    m_minorColor = source.m_minorColor;
    if (source.m_ranges.GetSize() > 0) {
        const CGraph_Range &y = *source.m_ranges.GetAt(0);
        m_yAxisFlags = y.m_axisFlags;
        m_yRotation = y.m_labelRotation;
        m_yTextColor = y.m_textColor;
        m_ySubDivisions = y.m_subDivisions;
        m_yGridPenStyle = y.m_gridPenStyle;
        m_yGridColor = y.m_gridColor;
        m_ySecondPenStyle = y.m_secondPenStyle;
        m_ySecondColor = y.m_secondColor;
    }
}

// The program's defaults, loaded from DefaultKey() on first use.  Read and
// changed on the user-interface thread only.
CGraphGlobalData &GetGraphGlobalData();
