#pragma once
// The scroll-info records of a graph window, one for X and one for the Y
// axis in use, laid out as the platform's scroll bars keep their state,
// and the scrolling of an axis's view through one of them.
//
// A record's position counts ticks: the view's low end stands at the low
// end it had when the record was last matched with it, plus the position's
// distance from then in whole ticks.  The view is worked out from that pair
// each time rather than moved step by step, so scrolling forth and back
// returns it to the very same values.  A view changed by other means (zoom,
// pan, a new tick), or a position set from outside, is matched again where
// the position stands.

#include <cstdint>

class CGraphCurve;

// What a call of ApplyScrollInfo sets, and ReadScrollInfo reads.
enum : std::uint32_t {
    SifRange = 0x1,
    SifPage = 0x2,
    SifPos = 0x4,
    SifDisableNoScroll = 0x8,
    SifTrackPos = 0x10,
    SifAll = SifRange | SifPage | SifPos | SifTrackPos,
};

struct CScrollInfo
{
    std::uint32_t cbSize = 28;
    std::uint32_t fMask = SifAll;
    std::int32_t nMin = 0;
    std::int32_t nMax = 1000;
    std::uint32_t nPage = 10;
    std::int32_t nPos = 0;
    std::int32_t nTrackPos = 0;

    // The highest position the page leaves: nMax - nPage + 1, or nMin.
    std::int32_t LastPos() const;
    bool operator==(const CScrollInfo &) const = default;
};
static_assert(sizeof(CScrollInfo) == 28, "the record has the size it says it has");

// Sets the fields of `to` that `from.fMask` names, then holds the page
// within the range's size and the position between nMin and LastPos.  A
// range whose end lies below its start is refused (false, nothing set).
bool ApplyScrollInfo(CScrollInfo &to, const CScrollInfo &from);

// Copies into `out` the fields of `from` that out.fMask names; cbSize and
// fMask of `out` stay as they are.
void ReadScrollInfo(const CScrollInfo &from, CScrollInfo &out);

// Codes of a scroll request, as a scroll bar sends them.
enum : int {
    ScrollLineDown = 0, // toward lower positions
    ScrollLineUp = 1,
    ScrollPageDown = 2,
    ScrollPageUp = 3,
    ScrollThumbPosition = 4,
    ScrollThumbTrack = 5,
    ScrollTop = 6,
    ScrollBottom = 7,
    ScrollEnd = 8,
};

class CAxisScroll
{
public:
    CAxisScroll();
    CScrollInfo m_info;

    // Moves the view of `axis` (-1 the X axis, 0.. a Y axis) by n ticks,
    // at most as many as the view spans, through the record: the position
    // grows by the ticks moved.  Where the position would leave its range
    // it starts again from the middle (the view goes on from where it is).
    // Returns the ticks moved: 0 without a tick, a valid view or n.
    int Scroll(CGraphCurve &graph, int axis, int n);

    // A scroll request of a scroll bar: a line is a tick, a page nPage
    // ticks, a thumb goes to `thumb`, top and bottom to the ends of the
    // range.  Returns the ticks moved.
    int Request(CGraphCurve &graph, int axis, int code, int thumb);

private:
    int move(CGraphCurve &graph, int axis, int n, bool limitBySpan);

    bool m_matched = false;
    int m_axis = -2;
    std::int32_t m_matchedPos = 0;
    double m_matchedLow = 0, m_matchedHigh = 0;
    double m_tick = 0;
    // the view and the position as the last move left them
    double m_low = 0, m_high = 0;
    std::int32_t m_pos = 0;
};
