#include "tool/capture/capturesteps.h"

namespace {

constexpr int AskDiscardPoints = 27525;
constexpr int NoPictureOnClipboard = 27526;
constexpr int CornersNotSet = 27527;
constexpr int NoPointTraced = 27533;
constexpr int AskStartOver = 27537;

// Every Next and Back ends by setting the hint of the new mode and emptying
// the read-out.
CStepActions &finish(CStepActions &a, int deviceKind)
{
    a.setHint = true;
    a.hintId = HintTextId(a.mode, deviceKind);
    a.clearReadout = true;
    return a;
}

} // namespace

std::optional<int> HintTextId(CaptureMode mode, int deviceKind)
{
    switch (mode) {
    case ModeIdle:
    case ModeTyped:
        return 27551;
    case ModePlotted:
        return 27552;
    case ModeValuesAwaited:
        return deviceKind == 595 ? 27550 : 27515;
    default:
        if (mode >= ModeWaitPicture && mode <= ModeTrace)
            return 27500 + int(mode);
        return std::nullopt;
    }
}

CStepActions NextStep(const CNextInput &in)
{
    CStepActions a;
    a.hideMagnifier = true;
    a.mode = in.mode;

    if (in.mode < ModeWaitPicture) {
        if (in.pointCount > 0) {
            if (in.answer == StepAnswer::None) {
                a.question = AskDiscardPoints;
                return a;
            }
            if (in.answer != StepAnswer::Yes)
                return a;
        }
        a.mode = ModeWaitPicture;
        a.clearPointsField = true;
        a.clearCapture = true;
        a.canvas = Visibility::Show;
        a.plot = Visibility::Hide;
        return finish(a, in.deviceKind);
    }

    switch (in.mode) {
    case ModeWaitPicture:
        if (in.clipboardHasPicture) {
            a.pastePicture = true;
            a.repaint = true;
            a.back = ButtonState::Enable;
            a.mode = ModePicturePlaced;
        } else {
            a.message = NoPictureOnClipboard;
        }
        break;
    case ModePicturePlaced:
        a.mode = ModeCorner1;
        break;
    case ModeCorner1:
    case ModeCorner2:
        a.message = CornersNotSet;
        a.mode = ModeCorner1;
        break;
    case ModeCornersSet:
    case ModeValuesAwaited: {
        const int failed = CheckAxisValues(in.values);
        a.repaint = true;
        if (failed == 0) {
            a.applyFields = true;
            a.mode = ModeTrace;
        } else {
            // The first time the values are only marked; from then on Next
            // says what is wrong.
            if (in.mode == ModeValuesAwaited)
                a.message = failed;
            a.mode = ModeValuesAwaited;
        }
        break;
    }
    case ModeTrace:
        if (in.pointCount > 0) {
            a.back = ButtonState::Disable;
            a.canvas = Visibility::Hide;
            a.plot = Visibility::Show;
            a.finishTrace = true;
            a.mode = ModePlotted;
        } else {
            a.message = NoPointTraced;
        }
        break;
    default:
        break;
    }
    return finish(a, in.deviceKind);
}

CStepActions BackStep(CaptureMode mode, int deviceKind)
{
    CStepActions a;
    a.hideMagnifier = true;
    a.mode = mode;
    switch (mode) {
    case ModePicturePlaced:
        a.back = ButtonState::Disable;
        a.clearPictureShown = true;
        a.repaint = true;
        a.mode = ModeWaitPicture;
        break;
    case ModeCorner1:
        a.mode = ModePicturePlaced;
        break;
    case ModeCorner2:
    case ModeCornersSet:
    case ModeValuesAwaited:
        a.mode = ModeCorner1;
        break;
    case ModeTrace:
        a.repaint = true;
        a.mode = ModeValuesAwaited;
        break;
    default:
        if (mode <= ModeWaitPicture)
            a.back = ButtonState::Disable;
        break;
    }
    return finish(a, deviceKind);
}

CStepActions StartOverStep(CaptureMode mode, bool currentIsTemplate, StepAnswer answer)
{
    CStepActions a;
    a.mode = mode;
    if (currentIsTemplate || mode < ModeWaitPicture)
        return a;
    if (answer == StepAnswer::None) {
        a.question = AskStartOver;
        return a;
    }
    if (answer != StepAnswer::Yes)
        return a;
    a.startOver = true;
    a.clearPointsField = true;
    a.repaint = true;
    a.mode = ModeIdle;
    a.canvas = Visibility::Hide;
    a.plot = Visibility::Show;
    a.setHint = true;
    a.hintId = HintTextId(ModeIdle);
    a.clearReadout = true;
    return a;
}
