#pragma once
// The capture mode: the numbered state of the digitiser's canvas.  The road of
// one picture runs 10, 11, 12, 13, 14, (15,) 16 and ends in 7; the modes below
// 10 belong to curves typed by hand and to plotted results.

#include <cstdint>

// Held as a plain 32-bit number: any value may be stored, and the transition
// tables accept every one of them.
enum CaptureMode : std::int32_t {
    ModeIdle = 0,             // nothing under way; a picture, if any, may be dragged
    ModeTyped = 1,            // a fresh blank curve, typed by hand
    ModeTypedCorner2 = 2,     // as ModeCorner2, entered from ModeTyped
    ModeTypedCornersSet = 4,  // as ModeCornersSet, entered from ModeTypedCorner2
    ModeTypedTrace = 6,       // as ModeTrace for mapping and clicking; no step leads here
    ModePlotted = 7,          // the trace is finished and shown on the plot
    ModeWaitPicture = 10,     // waits for a picture on the clipboard
    ModePicturePlaced = 11,   // picture shown; dragging moves it
    ModeCorner1 = 12,         // the next click sets the first corner
    ModeCorner2 = 13,         // the next click sets the second corner
    ModeCornersSet = 14,      // both corners set; axis values are awaited
    ModeValuesAwaited = 15,   // the values were found wrong once; Next explains why
    ModeTrace = 16,           // every click appends a point
};
