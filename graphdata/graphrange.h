#pragma once
// CGraph_Range: one axis of a graph, with its extents, view, tick and style.
// Colours are 0x00BBGGRR words; fonts are descriptions that the painter
// turns into real fonts.

#include "support/arrayplus.h"

#include <QString>
#include <cstdint>

// A font as a description: height in pixels (negative: character height,
// as the platform's logical fonts have it), weight and face.
struct CGraphFont
{
    std::int32_t m_height = 0;
    std::int32_t m_width = 0;
    std::int32_t m_weight = 400;
    std::int32_t m_italic = 0;
    QString m_faceName;

    bool operator==(const CGraphFont &other) const = default;
};

// a * b / c rounded to the nearest, halves away from zero.
int MulDiv(int a, int b, int c);

struct CIntRect
{
    std::int32_t left = 0, top = 0, right = 0, bottom = 0;
    bool operator==(const CIntRect &other) const = default;
};

class CGraph_Range
{
public:
    // Layout
    enum : std::int32_t { LayoutShared = 0, LayoutAutoFit = 1, LayoutSlices = 2 };
    // axisFlags (the X axis flags of a graph use the same bits)
    enum : std::uint32_t {
        AxisLabels = 0x10,
        AxisMajorGrid = 0x40,
        AxisMinorGrid = 0x80,
        AxisIntegerTicks = 0x100,
        AxisDateDays = 0x10000, // X axis only
    };

    explicit CGraph_Range(int dpi = 96);
    // An axis drawn in `color`, with a grid of a light shade of it.
    explicit CGraph_Range(std::uint32_t color, int dpi = 96);
    CGraph_Range(const CGraph_Range &) = default;
    CGraph_Range &operator=(const CGraph_Range &) = default;
    virtual ~CGraph_Range();

    // The light grid shade of a colour: each channel at least 215, and the
    // smallest of them exactly 215.
    static std::uint32_t GridColorFor(std::uint32_t color);

    std::int32_t m_layout = LayoutShared;
    std::int32_t m_dbScale = 0;
    std::int32_t m_logScale = 0;
    double m_fullMin = 0;
    double m_fullMax = 0;
    double m_viewMin = 0;
    double m_viewMax = 0;
    double m_tick = 0;
    std::int32_t m_autoScale = 0;
    std::int32_t m_labelOn = 1;
    std::int32_t m_minorDivisions = 5;
    // 0 not drawn; 1, 2, .. left of the plot (1 nearest); -1, -2, .. right.
    std::int32_t m_axisSide = 1;
    CIntRect m_areaRect;
    std::int32_t m_visibleCurveCount = 0;
    std::uint32_t m_textColor = 0;
    std::uint32_t m_axisFlags = AxisLabels | AxisMajorGrid;
    std::int32_t m_labelRotation = 0;
    std::int32_t m_subDivisions = 5;
    std::int32_t m_gridPenStyle = 2; // dotted
    std::uint32_t m_gridColor = 0xD0E6DA;
    CGraphFont m_labelFont;
    std::int32_t m_secondPenStyle = 2;
    std::uint32_t m_secondColor = 0xD0E6DA;
    CGraphFont m_tickFont;
    // Shown beside the axis, turned to read upward; empty: none.
    QString m_title;
};

class CArrayGraph_Range : public CArrayPlus<CGraph_Range>
{
};
