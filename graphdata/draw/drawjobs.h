#pragma once
// What the drawing pass knows of one curve between taking its columns and
// drawing them; shared by the pass and the special views.

#include "graphdata/draw/polylinebuild.h"
#include "graphdata/graphcolumn.h"

class CCurveInfo;

struct CCurveJob
{
    int index = -1;
    CCurveInfo *curve = nullptr;
    CGraphColumnPtr x, y;     // referenced under the data lock
    double yMin = 0, yMax = 0; // extent of Y when it was taken
    bool hasInvalid = false;
    int rows = 0;             // rows both columns hold
    bool ownX = false;        // X is the curve's own column
    int axis = 0;
    int layout = 0;           // of its axis
    int slot = 0;             // place among the curves of its axis
    int slotCount = 1;
    CPixelMapping mapping;
    int first = 0, last = -1; // rows to draw
    bool usable = false;      // columns present and a mapping exists

    CCurveArrays Arrays() const
    {
        CCurveArrays a;
        if (x && y) {
            a.xValues = x->m_values;
            a.xValid = x->m_valid;
            a.yValues = y->m_values;
            a.yValid = y->m_valid;
            a.rows = rows;
        }
        return a;
    }
};
