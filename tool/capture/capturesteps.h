#pragma once
// The Next and Back buttons and Start over as transition tables.  Each call
// takes the present mode and what the front end knows (points traced, a
// picture on the clipboard, the axis values, the answer to a question) and
// returns the new mode with the list of things the front end must do.  The
// tables change nothing themselves.
//
// Questions: when an action needs the user's consent, the first call returns
// only `question` (and hideMagnifier).  The front end asks it and calls again
// with the answer in `answer`; an answer other than Yes gives an empty list.

#include "tool/capture/capturemode.h"
#include "tool/capture/toolfields.h"

#include <optional>

enum class StepAnswer { None, Yes, No, Cancel };
enum class Visibility { Keep, Show, Hide };
enum class ButtonState { Keep, Enable, Disable };

// Carry these out in the order of the members.
struct CStepActions {
    bool hideMagnifier = false;
    // Ask this question (Yes/No/Cancel for 27525, Yes/No for 27537) and call
    // again with the answer; do nothing else.
    int question = 0;

    bool startOver = false;         // CCaptureModel::StartOver, and reset the
                                    // current record (CCurveRecords::ResetCurrentCurve)
    bool clearPointsField = false;  // empty field 1075
    bool clearCapture = false;      // CCaptureModel::ClearCapture
    bool pastePicture = false;      // copy the clipboard's picture to the canvas
    bool clearPictureShown = false; // m_calibration.pictureShown = false
    bool applyFields = false;       // apply the fields (ApplyFieldsToCapture, plot)
    bool finishTrace = false;       // the record side of a finished trace
                                    // (CCurveRecords::FinishTrace), then load the fields
    Visibility canvas = Visibility::Keep;
    Visibility plot = Visibility::Keep;
    ButtonState back = ButtonState::Keep;
    CaptureMode mode = ModeIdle;    // the mode to set (unchanged when nothing happens)
    bool repaint = false;
    int message = 0;                // show this message with an OK button
    bool setHint = false;           // set the hint line to hintId (empty when none)
    std::optional<int> hintId;
    bool clearReadout = false;      // empty the read-out 1092
};

struct CNextInput {
    CaptureMode mode = ModeIdle;
    int pointCount = 0;                 // points traced on the canvas
    bool clipboardHasPicture = false;   // asked in ModeWaitPicture
    CAxisValues values;                 // the fields, for the checks of 14 and 15
    StepAnswer answer = StepAnswer::None;
    int deviceKind = 0;                 // the dialog's device kind, for the hint
};

// Next: a new capture from any mode below 10 (asking 27525 when points exist),
// then picture, corners, values, trace, and the finished curve.
CStepActions NextStep(const CNextInput &in);

// Back: one step back along the road of a picture.
CStepActions BackStep(CaptureMode mode, int deviceKind = 0);

// Start over (control 1448): nothing on the template record or below mode 10;
// else, after a Yes to 27537, everything of the capture is cleared and the
// plot is shown.
CStepActions StartOverStep(CaptureMode mode, bool currentIsTemplate, StepAnswer answer);

// The text of the hint line for a mode: 27551 for 0 and 1, 27552 for 7,
// 27500 + mode for 10 to 16; none for the rest.  With the dialog's device kind
// 595, mode 15 takes 27550.
std::optional<int> HintTextId(CaptureMode mode, int deviceKind = 0);
