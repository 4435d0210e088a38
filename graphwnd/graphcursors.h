#pragma once
// The fifteen mouse cursors of the graph window, made once and kept for the
// life of the program.  Each has a role; the window picks one by its mouse
// tool and by what lies under the mouse.

#include <QCursor>

enum GraphCursorRole : int {
    CursorZoomBox = 0,  // zoom tools over the plot: a magnifier with a plus
    CursorZoomX,        // zoom along X only: a magnifier with a level arrow
    CursorHand,         // pan tool over the plot: an open hand
    CursorHandGrab,     // while panning: a closed hand
    CursorZoomY,        // zoom along Y only: a magnifier with an upright arrow
    CursorArrow,        // the plain arrow
    CursorMove,         // over a selected object: move it
    CursorSizeVertical, // over a Y axis in the pan tool: scroll it
    CursorSizeHorizontal, // over the X axis in the pan tool: scroll it
    CursorSizeFDiag,    // over the handle of an object: resize
    CursorSizeBDiag,    // the other diagonal handle
    CursorLine,         // drawing a new line
    CursorZoomPan,      // zooming by dragging an edge of the view
    CursorCross,        // the host's graph cursor (tool 11)
    CursorTitle,        // over the title box: drag the legend
    GraphCursorCount
};

// Makes the cursors; the programs call it at start.  Later calls do nothing.
// GraphCursor makes them on first use when nobody did.
void LoadGraphCursors();
const QCursor &GraphCursor(GraphCursorRole role);
