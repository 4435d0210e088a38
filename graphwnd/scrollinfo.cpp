#include "graphwnd/scrollinfo.h"

#include "graphdata/graphcurve.h"

#include <algorithm>
#include <cmath>

std::int32_t CScrollInfo::LastPos() const
{
    const std::int64_t last = std::int64_t(nMax) - std::int64_t(std::max<std::uint32_t>(nPage, 1)) + 1;
    return std::int32_t(std::max<std::int64_t>(nMin, last));
}

bool ApplyScrollInfo(CScrollInfo &to, const CScrollInfo &from)
{
    CScrollInfo out = to;
    if (from.fMask & SifRange) {
        if (from.nMax < from.nMin)
            return false;
        out.nMin = from.nMin;
        out.nMax = from.nMax;
    }
    if (from.fMask & SifPage)
        out.nPage = from.nPage;
    if (from.fMask & SifPos)
        out.nPos = from.nPos;
    if (from.fMask & SifTrackPos)
        out.nTrackPos = from.nTrackPos;
    const std::uint64_t size = std::uint64_t(std::int64_t(out.nMax) - out.nMin) + 1;
    out.nPage = std::uint32_t(std::min<std::uint64_t>(out.nPage, size));
    out.nPos = std::clamp(out.nPos, out.nMin, out.LastPos());
    out.nTrackPos = std::clamp(out.nTrackPos, out.nMin, out.LastPos());
    to = out;
    return true;
}

void ReadScrollInfo(const CScrollInfo &from, CScrollInfo &out)
{
    if (out.fMask & SifRange) {
        out.nMin = from.nMin;
        out.nMax = from.nMax;
    }
    if (out.fMask & SifPage)
        out.nPage = from.nPage;
    if (out.fMask & SifPos)
        out.nPos = from.nPos;
    if (out.fMask & SifTrackPos)
        out.nTrackPos = from.nTrackPos;
}

CAxisScroll::CAxisScroll()
{
    m_info.nPos = m_info.nTrackPos = (m_info.nMin + m_info.LastPos()) / 2;
}

int CAxisScroll::Scroll(CGraphCurve &graph, int axis, int n)
{
    return move(graph, axis, n, true);
}

int CAxisScroll::Request(CGraphCurve &graph, int axis, int code, int thumb)
{
    const int page = int(std::max<std::uint32_t>(m_info.nPage, 1));
    switch (code) {
    case ScrollLineDown: return move(graph, axis, -1, false);
    case ScrollLineUp: return move(graph, axis, 1, false);
    case ScrollPageDown: return move(graph, axis, -page, false);
    case ScrollPageUp: return move(graph, axis, page, false);
    case ScrollThumbPosition:
    case ScrollThumbTrack: {
        const int to = std::clamp(thumb, m_info.nMin, m_info.LastPos());
        if (code == ScrollThumbTrack)
            m_info.nTrackPos = to;
        return move(graph, axis, to - m_info.nPos, false);
    }
    case ScrollTop: return move(graph, axis, m_info.nMin - m_info.nPos, false);
    case ScrollBottom: return move(graph, axis, m_info.LastPos() - m_info.nPos, false);
    default: return 0;
    }
}

int CAxisScroll::move(CGraphCurve &g, int axis, int n, bool limitBySpan)
{
    double *lo, *hi, tick;
    if (axis < 0) {
        lo = &g.m_xViewMin;
        hi = &g.m_xViewMax;
        tick = g.m_xTick;
    } else if (axis < g.RangeCount()) {
        lo = &g.Range(axis)->m_viewMin;
        hi = &g.Range(axis)->m_viewMax;
        tick = g.Range(axis)->m_tick;
    } else {
        return 0;
    }
    if (n == 0 || !(tick > 0) || !std::isfinite(tick) || !std::isfinite(*lo) || !std::isfinite(*hi) || !(*hi > *lo))
        return 0;
    if (limitBySpan) {
        // Never more than the view spans: a notch moves at most a screen.
        const double most = std::floor((*hi - *lo) / tick);
        if (most < 1)
            return 0;
        if (std::fabs(double(n)) > most)
            n = n > 0 ? int(std::min(most, 1e9)) : -int(std::min(most, 1e9));
    }
    // Match the record with the view again when the view was changed by
    // other means since the last move.
    if (!m_matched || axis != m_axis || tick != m_tick || *lo != m_low || *hi != m_high || m_info.nPos != m_pos) {
        m_matched = true;
        m_axis = axis;
        m_tick = tick;
        m_matchedPos = m_info.nPos;
        m_matchedLow = *lo;
        m_matchedHigh = *hi;
    }
    const std::int32_t first = m_info.nMin, last = m_info.LastPos();
    if (std::int64_t(m_info.nPos) + n < first || std::int64_t(m_info.nPos) + n > last) {
        // Start again from the middle; the matched position moves with it,
        // so the view does not jump.
        const std::int32_t middle = first + (last - first) / 2;
        m_matchedPos += middle - m_info.nPos;
        m_info.nPos = middle;
        n = int(std::clamp<std::int64_t>(n, std::int64_t(first) - middle, std::int64_t(last) - middle));
        if (n == 0)
            return 0;
    }
    m_info.nPos += n;
    // Both ends from the matched ones, so that the position it was matched
    // at gives back the view exactly.
    const double shift = double(m_info.nPos - m_matchedPos) * m_tick;
    const double low = m_matchedLow + shift;
    const double high = m_matchedHigh + shift;
    if (!std::isfinite(low) || !std::isfinite(high)) {
        m_info.nPos -= n;
        return 0;
    }
    *lo = m_low = low;
    *hi = m_high = high;
    m_pos = m_info.nPos;
    return n;
}
