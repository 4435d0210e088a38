#include "tool/autocal/ticklabels.h"

#include <QPainter>

#include <tesseract/baseapi.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>
#include <numeric>

namespace {

// Ink of text: darker than the grey of light grid lines and of JPEG's halo.
constexpr int TextInk = 70;
// The faint ink of small print.
constexpr int FaintInk = 40;

struct CBlob {
    QRect box;
    int area = 0;
    bool touchesFrame = false;
};

struct CRegion {
    QRect rect;
    // Blob number + 1 of each pixel of the region, 0 for paper.
    std::vector<int> owner;
    std::vector<CBlob> blobs;

    int OwnerAt(int x, int y) const
    {
        return owner[std::size_t(y - rect.top()) * std::size_t(rect.width()) + std::size_t(x - rect.left())];
    }
};

// 8-connected blobs of text ink in `rect`.  A blob that reaches the side of
// the region next to the frame is a tick mark or a label of the other axis
// cut by the region, and is marked.
CRegion blobsIn(const CDarkness &dark, QRect rect, AxisSide side)
{
    CRegion region;
    rect = rect.intersected(QRect(0, 0, dark.width, dark.height));
    region.rect = rect;
    if (rect.isEmpty())
        return region;
    region.owner.assign(std::size_t(rect.width()) * std::size_t(rect.height()), 0);
    std::vector<QPoint> stack;
    for (int y = rect.top(); y <= rect.bottom(); ++y)
        for (int x = rect.left(); x <= rect.right(); ++x) {
            if (dark.At(x, y) < TextInk || region.OwnerAt(x, y))
                continue;
            CBlob blob;
            blob.box = QRect(x, y, 1, 1);
            const int id = int(region.blobs.size()) + 1;
            stack.assign(1, QPoint(x, y));
            region.owner[std::size_t(y - rect.top()) * std::size_t(rect.width()) + std::size_t(x - rect.left())] = id;
            while (!stack.empty()) {
                const QPoint p = stack.back();
                stack.pop_back();
                ++blob.area;
                blob.box |= QRect(p, QSize(1, 1));
                for (int dy = -1; dy <= 1; ++dy)
                    for (int dx = -1; dx <= 1; ++dx) {
                        const int nx = p.x() + dx, ny = p.y() + dy;
                        if (!rect.contains(nx, ny) || dark.At(nx, ny) < TextInk)
                            continue;
                        int &o = region.owner[std::size_t(ny - rect.top()) * std::size_t(rect.width())
                                              + std::size_t(nx - rect.left())];
                        if (o)
                            continue;
                        o = id;
                        stack.emplace_back(nx, ny);
                    }
            }
            blob.touchesFrame = side == AxisSide::X ? blob.box.top() == rect.top() : blob.box.right() == rect.right();
            region.blobs.push_back(blob);
        }
    return region;
}

int findRoot(std::vector<int> &parent, int i)
{
    while (parent[std::size_t(i)] != i)
        i = parent[std::size_t(i)] = parent[std::size_t(parent[std::size_t(i)])];
    return i;
}

struct CGroup {
    std::vector<int> blobs; // indices, sorted by left edge
    QRect box;
};

// The ink of a label's blobs (and the faint rim around them) within a
// rectangle, drawn alone on white at the picture's scale.  A crop that starts
// after a minus sign keeps its left edge, so that no rim of the minus comes
// in as a speck before the first digit.
QImage cropOf(const CDarkness &dark, const CRegion &region, const std::vector<int> &blobs, QRect box,
              bool stretch = false, bool afterMinus = false)
{
    box = box.adjusted(afterMinus ? 0 : -1, -1, 1, 1).intersected(region.rect);
    QImage crop(box.size(), QImage::Format_Grayscale8);
    crop.fill(255);
    for (int y = box.top(); y <= box.bottom(); ++y) {
        uchar *line = crop.scanLine(y - box.top());
        for (int x = box.left(); x <= box.right(); ++x) {
            const int o = region.OwnerAt(x, y);
            const bool mine = o == 0 || std::find(blobs.begin(), blobs.end(), o - 1) != blobs.end();
            // Small raised print, blurred by a straightening, reads better
            // with its contrast stretched.
            const int d = stretch ? std::clamp((dark.At(x, y) - 30) * 2, 0, 255) : dark.At(x, y);
            if (mine)
                line[x - box.left()] = uchar(255 - d);
        }
    }
    return crop;
}

// The ink of one label, column by column: the top and bottom of the ink of
// its own blobs in each column (-1 for a blank column).
struct CColumns {
    int left = 0;
    std::vector<int> top, bottom;

    int Count() const { return int(top.size()); }
    bool Blank(int c) const { return top[std::size_t(c)] < 0; }
};

CColumns columnsOf(const CDarkness &dark, const CRegion &region, const std::vector<int> &blobs, const QRect &box)
{
    CColumns cols;
    cols.left = box.left();
    cols.top.assign(std::size_t(box.width()), -1);
    cols.bottom.assign(std::size_t(box.width()), -1);
    for (int x = box.left(); x <= box.right(); ++x)
        for (int y = box.top(); y <= box.bottom(); ++y) {
            // Faint ink counts too: the dash of a small exponent may be no
            // darker than a blob's rim.
            const int o = region.OwnerAt(x, y);
            const bool mine = o == 0 ? dark.At(x, y) >= FaintInk
                                     : std::find(blobs.begin(), blobs.end(), o - 1) != blobs.end();
            if (!mine)
                continue;
            const std::size_t c = std::size_t(x - box.left());
            if (cols.top[c] < 0)
                cols.top[c] = y;
            cols.bottom[c] = y;
        }
    return cols;
}

// A minus sign at the start of columns [from, to): a flat stroke about the
// middle of the height of the characters that follow it, at least as wide as
// high.  Returns the first column after it, or -1 when there is none.  Before
// a base, lone specks leading in are the rim of something else; in a small
// exponent the minus itself may be no more than such a speck.
int minusEnd(const CColumns &cols, int from, int to, double band, bool speckMayBeMinus)
{
    while (from < to && cols.Blank(from))
        ++from;
    if (!speckMayBeMinus)
        while (from < to && (cols.Blank(from) || (from + 1 < to && cols.Blank(from + 1))))
            ++from;
    // The characters after the stroke set its scale.
    int c = from;
    int top = 1 << 30, bottom = -1;
    int restTop = 1 << 30, restBottom = -1;
    for (int k = from; k < to; ++k)
        if (!cols.Blank(k)) {
            restTop = std::min(restTop, cols.top[std::size_t(k)]);
            restBottom = std::max(restBottom, cols.bottom[std::size_t(k)]);
        }
    const int thin = std::max(2, int(0.3 * (restBottom - restTop + 1)));
    while (c < to && !cols.Blank(c)) {
        const int t = std::min(top, cols.top[std::size_t(c)]), b = std::max(bottom, cols.bottom[std::size_t(c)]);
        if (b - t + 1 > thin)
            break;
        top = t;
        bottom = b;
        ++c;
    }
    restTop = 1 << 30;
    restBottom = -1;
    for (int k = c; k < to; ++k)
        if (!cols.Blank(k)) {
            restTop = std::min(restTop, cols.top[std::size_t(k)]);
            restBottom = std::max(restBottom, cols.bottom[std::size_t(k)]);
        }
    // Something must follow it.
    if (bottom < 0 || restBottom < 0)
        return -1;
    const int height = restBottom - restTop + 1;
    const int width = c - from;
    const double least = speckMayBeMinus && bottom == top ? 1.0 : std::max(2.0, 0.25 * height);
    if (width < least || width < bottom - top + 1)
        return -1;
    const double middle = (top + bottom) / 2.0;
    if (middle < restTop + band * height || middle > restBottom - band * height)
        return -1;
    return c;
}

// The line the characters stand on: the bottom that most inked columns
// reach.  Only a descending letter (p, µ) or the tail of a comma reaches
// below it; without such, the label's own bottom is kept.
int baseLineOf(const CColumns &cols, int bottom)
{
    int best = bottom, bestCount = 0;
    for (int c = 0; c < cols.Count(); ++c) {
        if (cols.Blank(c))
            continue;
        const int b = cols.bottom[std::size_t(c)];
        int count = 0;
        for (int k = 0; k < cols.Count(); ++k)
            if (cols.bottom[std::size_t(k)] == b)
                ++count;
        if (count > bestCount || (count == bestCount && b > best)) {
            best = b;
            bestCount = count;
        }
    }
    int top = best;
    for (int c = 0; c < cols.Count(); ++c)
        if (!cols.Blank(c))
            top = std::min(top, cols.top[std::size_t(c)]);
    const int height = best - top + 1;
    return bottom - best > std::max(1, int(0.12 * height)) ? best : bottom;
}

// A small letter at the end of columns [from, to) whose stem descends below
// the base line: the unit prefixes p and µ.  It must follow digits, stand
// no higher than the small letters (below the top of the digits), and its
// stem must rise from the descent to the letters' height, which a comma's
// tail does not.  Returns the letter's first column, or -1.
int descendingLetterStart(const CColumns &cols, int from, int to, int baseTop, int baseLine)
{
    const int height = baseLine - baseTop + 1;
    const int below = baseLine + std::max(1, int(0.12 * height));
    int last = to - 1;
    while (last >= from && (cols.Blank(last) || cols.bottom[std::size_t(last)] <= below))
        --last;
    if (last < from)
        return -1;
    int first = last;
    bool stemRises = false;
    while (first - 1 >= from && !cols.Blank(first - 1) && cols.bottom[std::size_t(first - 1)] > below)
        --first;
    for (int c = first; c <= last; ++c)
        stemRises = stemRises || cols.top[std::size_t(c)] <= baseLine - 0.4 * height;
    int letterTop = 1 << 30;
    for (int c = first; c < to; ++c)
        if (!cols.Blank(c))
            letterTop = std::min(letterTop, cols.top[std::size_t(c)]);
    const int width = to - first;
    bool digitsBefore = false;
    for (int c = from; c < first; ++c)
        digitsBefore = digitsBefore || (!cols.Blank(c) && cols.top[std::size_t(c)] <= baseTop + 1);
    if (!stemRises || !digitsBefore || letterTop <= baseTop || width < 0.35 * height || width > 1.4 * height)
        return -1;
    return first;
}

// What closes the space between the two strokes of a descending letter at
// the top: nothing in µ (two stems joined at the foot), the top of the bowl
// in p.  The space is found in a row halfway up the small letters, between
// the first two runs of the label's own ink there, and followed upward.
enum class LetterTop { Open, Closed, Unclear };

LetterTop letterTopOf(const CRegion &region, const std::vector<int> &blobs, int from, int to, int baseLine)
{
    const auto ink = [&](int x, int y) {
        const int o = region.OwnerAt(x, y);
        return o && std::find(blobs.begin(), blobs.end(), o - 1) != blobs.end();
    };
    int top = baseLine;
    for (int x = from; x < to; ++x)
        for (int y = region.rect.top(); y < top; ++y)
            if (ink(x, y)) {
                top = y;
                break;
            }
    if (baseLine - top < 3)
        return LetterTop::Unclear;
    // The rows about the middle, the first that shows two strokes.
    const int middle = (top + baseLine) / 2;
    for (int y : {middle, middle - 1, middle + 1}) {
        int x = from;
        while (x < to && !ink(x, y))
            ++x;
        while (x < to && ink(x, y))
            ++x;
        const int gapStart = x;
        while (x < to && !ink(x, y))
            ++x;
        if (x >= to || x == gapStart)
            continue;
        // Every column of the space closed above: a bowl.
        for (int c = gapStart; c < x; ++c) {
            int r = y;
            while (r >= top && !ink(c, r))
                --r;
            if (r < top)
                return LetterTop::Open;
        }
        return LetterTop::Closed;
    }
    return LetterTop::Unclear;
}

} // namespace

QList<CTickLabel> FindTickLabels(const CDarkness &dark, const CGridLines &grid, AxisSide side)
{
    QList<CTickLabel> labels;
    if (!grid.frameFound)
        return labels;
    const int left = int(std::round(grid.left)), right = int(std::round(grid.right));
    const int top = int(std::round(grid.top)), bottom = int(std::round(grid.bottom));
    const QRect rect = side == AxisSide::X ? QRect(QPoint(left - 80, bottom + 2), QPoint(right + 80, bottom + 90))
                                           : QRect(QPoint(left - 220, top - 40), QPoint(left - 2, bottom + 40));
    CRegion region = blobsIn(dark, rect, side);

    std::vector<int> usable;
    std::vector<int> heights;
    for (int i = 0; i < int(region.blobs.size()); ++i) {
        const CBlob &b = region.blobs[std::size_t(i)];
        if (b.touchesFrame || b.area < 2)
            continue;
        usable.push_back(i);
        if (b.box.height() >= 4)
            heights.push_back(b.box.height());
    }
    if (heights.empty())
        return labels;
    std::nth_element(heights.begin(), heights.begin() + std::ptrdiff_t(heights.size() / 2), heights.end());
    const int textHeight = heights[heights.size() / 2];

    // Blobs that overlap in height and stand close side by side are one label.
    std::vector<int> parent(region.blobs.size());
    std::iota(parent.begin(), parent.end(), 0);
    const int gapLimit = std::max(2, int(std::lround(0.8 * textHeight)));
    for (std::size_t a = 0; a < usable.size(); ++a)
        for (std::size_t b = a + 1; b < usable.size(); ++b) {
            const QRect &ra = region.blobs[std::size_t(usable[a])].box;
            const QRect &rb = region.blobs[std::size_t(usable[b])].box;
            // Overlapping by a good part of the smaller height: a raised
            // exponent does, a label of the other axis at the corner does not.
            const int overlap = std::min(ra.bottom(), rb.bottom()) - std::max(ra.top(), rb.top()) + 1;
            const bool overlapY = overlap >= 0.25 * std::min(ra.height(), rb.height());
            const int gapX = std::max(ra.left(), rb.left()) - std::min(ra.right(), rb.right()) - 1;
            if (overlapY && gapX <= gapLimit)
                parent[std::size_t(findRoot(parent, usable[a]))] = findRoot(parent, usable[b]);
        }
    std::vector<CGroup> groups;
    {
        std::vector<int> groupOf(region.blobs.size(), -1);
        for (int i : usable) {
            const int r = findRoot(parent, i);
            if (groupOf[std::size_t(r)] < 0) {
                groupOf[std::size_t(r)] = int(groups.size());
                groups.emplace_back();
            }
            CGroup &g = groups[std::size_t(groupOf[std::size_t(r)])];
            g.blobs.push_back(i);
            g.box |= region.blobs[std::size_t(i)].box;
        }
    }
    // A label holds at least one blob of a digit's height and is not much
    // taller than one line of text (an axis title turned on its side is).
    std::erase_if(groups, [&](const CGroup &g) {
        const bool digit = std::any_of(g.blobs.begin(), g.blobs.end(), [&](int b) {
            return region.blobs[std::size_t(b)].box.height() >= 0.6 * textHeight;
        });
        return !digit || g.box.height() > 2.2 * textHeight;
    });
    if (groups.empty())
        return labels;
    // A one-pixel blob inside a label, in the lower part of its digits, is
    // the decimal point of small print.
    for (const CBlob &b : region.blobs) {
        if (b.area >= 2 || b.touchesFrame)
            continue;
        for (CGroup &g : groups)
            if (b.box.left() > g.box.left() && b.box.right() < g.box.right() && b.box.top() <= g.box.bottom()
                && b.box.top() >= g.box.bottom() - 0.5 * textHeight) {
                g.blobs.push_back(int(&b - region.blobs.data()));
                break;
            }
    }
    // Only the labels next to the frame: the first row below it, the column
    // of labels left of it; axis titles stand further out.
    if (side == AxisSide::X) {
        int firstTop = groups.front().box.top();
        for (const CGroup &g : groups)
            firstTop = std::min(firstTop, g.box.top());
        std::erase_if(groups, [&](const CGroup &g) { return g.box.top() > firstTop + 0.8 * textHeight; });
    } else {
        int nearestRight = groups.front().box.right();
        for (const CGroup &g : groups)
            nearestRight = std::max(nearestRight, g.box.right());
        std::erase_if(groups, [&](const CGroup &g) { return g.box.right() < nearestRight - 3 * textHeight; });
    }

    for (const CGroup &g : groups) {
        // A raised exponent: the columns at the label's end whose ink stays
        // clearly above the base line, after base columns that reach it.
        // Columns rather than blobs, since antialiasing may join an exponent
        // to the digit before it.
        const CColumns cols = columnsOf(dark, region, g.blobs, g.box);
        const int baseLine = baseLineOf(cols, g.box.bottom());
        const double raisedLimit = baseLine - 0.25 * g.box.height();
        int split = cols.Count();
        while (split > 0 && (cols.Blank(split - 1) || cols.bottom[std::size_t(split - 1)] < raisedLimit))
            --split;
        // Where the exponent is a blob of its own, its left edge is the
        // better split: a round digit of the base has columns that stop
        // short of the base line too.  The split then takes in the faint
        // dash of a minus before it, which no base blob reaches.
        {
            std::vector<int> sorted = g.blobs;
            std::sort(sorted.begin(), sorted.end(), [&](int a, int b) {
                return region.blobs[std::size_t(a)].box.left() < region.blobs[std::size_t(b)].box.left();
            });
            std::size_t tail = sorted.size();
            while (tail > 0 && region.blobs[std::size_t(sorted[tail - 1])].box.bottom() < raisedLimit)
                --tail;
            if (tail > 0 && tail < sorted.size()) {
                int blobSplit = cols.Count(), baseRight = -1, raisedTop = 1 << 30, raisedBottom = -1;
                for (std::size_t k = tail; k < sorted.size(); ++k) {
                    const QRect &box = region.blobs[std::size_t(sorted[k])].box;
                    blobSplit = std::min(blobSplit, box.left() - cols.left);
                    raisedTop = std::min(raisedTop, box.top());
                    raisedBottom = std::max(raisedBottom, box.bottom());
                }
                for (std::size_t k = 0; k < tail; ++k)
                    baseRight = std::max(baseRight, region.blobs[std::size_t(sorted[k])].box.right() - cols.left);
                // Unless a raised digit stands before that blob, joined to
                // the base by antialiasing (the 1 of a 12): it reaches as high
                // as the raised blobs over two columns at least, which the
                // round edge of a base digit does not.
                int raisedRun = 0;
                for (int k = split; k < blobSplit && raisedRun < 2; ++k) {
                    const bool raised = !cols.Blank(k) && cols.top[std::size_t(k)] <= raisedTop + 1
                        && cols.bottom[std::size_t(k)] < raisedLimit;
                    raisedRun = raised ? raisedRun + 1 : 0;
                }
                if (blobSplit > baseRight && raisedRun < 2) {
                    // Back over the gap, a thin raised stroke in it (a minus),
                    // and the faint part of a small exponent that fell below
                    // the ink of a blob, all within the height of the raised
                    // blobs.  The faint rim of a base digit's round edge
                    // reaches lower, and right beside the digit only a thin
                    // stroke may stand.
                    int c = blobSplit - 1, firstStroke = blobSplit;
                    while (c > baseRight) {
                        if (!cols.Blank(c)) {
                            const int t = cols.top[std::size_t(c)], b = cols.bottom[std::size_t(c)];
                            if (b >= raisedLimit || t < raisedTop - 1 || b > raisedBottom + 1
                                || (b - t + 1 > 2 && c == baseRight + 1))
                                break;
                            firstStroke = c;
                        }
                        --c;
                    }
                    blobSplit = firstStroke;
                    split = blobSplit;
                }
            }
        }
        int exponentTop = 1 << 30, exponentBottom = -1, baseTop = 1 << 30;
        for (int c = split; c < cols.Count(); ++c)
            if (!cols.Blank(c)) {
                exponentTop = std::min(exponentTop, cols.top[std::size_t(c)]);
                exponentBottom = std::max(exponentBottom, cols.bottom[std::size_t(c)]);
            }
        for (int c = 0; c < split; ++c)
            if (!cols.Blank(c))
                baseTop = std::min(baseTop, cols.top[std::size_t(c)]);
        // An exponent holds a digit, not just a dash, and rises above the
        // base's digits (the top bar of a 7 does not).
        const bool hasExponent = split > 0 && exponentBottom >= 0
            && exponentBottom - exponentTop + 1 >= 0.35 * (baseLine - baseTop + 1) && exponentTop < baseTop;
        const int baseEnd = hasExponent ? split : cols.Count();

        CTickLabel label;
        label.box = g.box;
        label.position = side == AxisSide::X ? (g.box.left() + g.box.right()) / 2.0 : (baseTop + baseLine) / 2.0;
        const int baseMinusEnd = minusEnd(cols, 0, baseEnd, 0.3, false);
        label.baseMinus = baseMinusEnd >= 0;
        const int baseStart = std::max(0, baseMinusEnd);
        // A unit prefix that descends below the base line ends the label: it
        // is told by its shape and the digits before it are read alone.
        int digitsEnd = baseEnd;
        if (const int letter = descendingLetterStart(cols, baseStart, baseEnd, baseTop, baseLine); letter >= 0) {
            const LetterTop shape = letterTopOf(region, g.blobs, cols.left + letter, cols.left + baseEnd, baseLine);
            // A letter of neither shape leaves the label unread.
            label.prefixLetter = shape == LetterTop::Open ? QChar(0x00B5) : shape == LetterTop::Closed ? QChar(u'p') : QChar(u'?');
            digitsEnd = letter;
            while (digitsEnd > baseStart && cols.Blank(digitsEnd - 1))
                --digitsEnd;
        }
        // The base after the minus in runs of inked columns, and among them
        // a decimal point: a speck on the base line between two runs.  Small
        // print loses its point in the engine's hands; it is put back by place.
        {
            const int digitHeight = baseLine - baseTop + 1;
            int runs = 0;
            for (int c = baseStart; c < digitsEnd;) {
                if (cols.Blank(c)) {
                    ++c;
                    continue;
                }
                int top = cols.top[std::size_t(c)], bottom = cols.bottom[std::size_t(c)], end = c;
                while (end < digitsEnd && !cols.Blank(end)) {
                    top = std::min(top, cols.top[std::size_t(end)]);
                    bottom = std::max(bottom, cols.bottom[std::size_t(end)]);
                    ++end;
                }
                const bool speck = end - c <= std::max(2.0, 0.3 * digitHeight)
                    && bottom - top + 1 <= std::max(2.0, 0.3 * digitHeight) && bottom >= baseLine - 1;
                if (speck && runs > 0 && end < digitsEnd && label.pointAfter < 0)
                    label.pointAfter = runs;
                else
                    ++runs;
                c = end;
            }
            label.baseBlobs = runs;
        }
        label.baseCrop = cropOf(dark, region, g.blobs,
                                QRect(QPoint(cols.left + baseStart, baseTop),
                                      QPoint(cols.left + digitsEnd - 1,
                                             label.prefixLetter.isNull() ? g.box.bottom() : baseLine)),
                                false, label.baseMinus);
        if (!label.prefixLetter.isNull())
            label.wholeCrop = cropOf(dark, region, g.blobs,
                                     QRect(QPoint(cols.left + baseStart, baseTop),
                                           QPoint(cols.left + baseEnd - 1, g.box.bottom())),
                                     false, label.baseMinus);
        if (hasExponent) {
            // A raised minus sits a little lower in its digits' height than a
            // minus on the base line.
            const int exponentMinusEnd = minusEnd(cols, split, cols.Count(), 0.2, true);
            label.exponentMinus = exponentMinusEnd >= 0;
            const int exponentStart = std::max(split, exponentMinusEnd);
            label.exponentCrop = cropOf(dark, region, g.blobs,
                                        QRect(QPoint(cols.left + exponentStart, exponentTop),
                                              QPoint(g.box.right(), exponentBottom)),
                                        true, label.exponentMinus);
        }
        labels.append(label);
    }
    // A label belongs to a line within the frame's span.
    const double low = (side == AxisSide::X ? grid.left : grid.top) - 3;
    const double high = (side == AxisSide::X ? grid.right : grid.bottom) + 3;
    labels.removeIf([&](const CTickLabel &l) { return l.position < low || l.position > high; });
    std::sort(labels.begin(), labels.end(),
              [](const CTickLabel &a, const CTickLabel &b) { return a.position < b.position; });
    return labels;
}

namespace {

class COcr
{
public:
    bool Ready()
    {
        if (!m_tried) {
            m_tried = true;
            m_api = std::make_unique<tesseract::TessBaseAPI>();
            // The English data of the system's Tesseract, found where the
            // library was built to look; nothing is fetched.
            if (m_api->Init(nullptr, "eng", tesseract::OEM_LSTM_ONLY) != 0) {
                m_api.reset();
            } else {
                m_api->SetPageSegMode(tesseract::PSM_SINGLE_LINE);
                m_api->SetVariable("debug_file", "/dev/null");
            }
        }
        return m_api != nullptr;
    }

    QString Read(const QImage &gray, const char *alphabet, int &confidence,
                 tesseract::PageSegMode mode = tesseract::PSM_SINGLE_LINE)
    {
        m_api->SetPageSegMode(mode);
        m_api->SetVariable("tessedit_char_whitelist", alphabet);
        m_api->SetImage(gray.constBits(), gray.width(), gray.height(), 1, int(gray.bytesPerLine()));
        m_api->SetSourceResolution(300);
        char *text = m_api->GetUTF8Text();
        confidence = m_api->MeanTextConf();
        const QString r = QString::fromUtf8(text).trimmed();
        delete[] text;
        return r;
    }

private:
    bool m_tried = false;
    std::unique_ptr<tesseract::TessBaseAPI> m_api;
};

// One engine for the process: starting it costs a fifth of a second.  The
// tool runs on one thread; the lock keeps a second caller safe all the same.
std::mutex g_ocrLock;
COcr g_ocr;

} // namespace

namespace {

// A crop enlarged smoothly so that its ink stands about `pixels` high, on a
// white margin: the engine reads text of some 20 to 30 pixels best.
QImage forReading(const QImage &crop, double pixels)
{
    const double scale = std::clamp(pixels / std::max(1, crop.height()), 1.0, 6.0);
    const QImage big = crop.scaled(int(std::round(crop.width() * scale)), int(std::round(crop.height() * scale)),
                                   Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const int pad = 12;
    QImage out(big.width() + 2 * pad, big.height() + 2 * pad, QImage::Format_Grayscale8);
    out.fill(255);
    QPainter p(&out);
    p.drawImage(pad, pad, big);
    return out;
}

// A raised exponent is small print: a digit or two of six or seven pixels.
// The engine passes such a lone digit over, or takes it for another, more
// often at one size than at the next, so it is read at three sizes and a
// reading counts only when two of them give it.  Read as a word, a "12" of
// this size loses its "1"; as a line it does not.  A round "0" may come back
// as a letter.
QString readExponent(COcr &ocr, const CTickLabel &label, int &confidence)
{
    const tesseract::PageSegMode mode = tesseract::PSM_SINGLE_LINE;
    QStringList readings;
    int lowest = 100;
    for (double pixels : {18.0, 22.0, 26.0}) {
        int c = 0;
        QString r = ocr.Read(forReading(label.exponentCrop, pixels), "0123456789oO", c, mode);
        r.replace(u'o', u'0').replace(u'O', u'0');
        readings << r;
        if (!r.isEmpty())
            lowest = std::min(lowest, c);
    }
    for (const QString &r : readings)
        if (!r.isEmpty() && readings.count(r) >= 2) {
            confidence = lowest;
            return r;
        }
    confidence = 0;
    return QString();
}

} // namespace

namespace {

// The base of a label read with its crop enlarged to `pixels`: the engine's
// digits, with the point, the minus and the prefix letter that were told by
// their shape put back.
QString readBase(COcr &ocr, const CTickLabel &l, double pixels, int &confidence)
{
    // A minus sign found by its shape is not given to the engine, which
    // reads a lone small dash poorly.  The English data has no µ (it reads
    // one as p or u, or drops it), so of a label with a prefix letter that
    // descends only the digits are given to the engine.
    const char *alphabet = l.prefixLetter.isNull() ? "0123456789.,-+eEkKMGTmunpx^()" : "0123456789.,";
    QString text = ocr.Read(forReading(l.baseCrop, pixels), alphabet, confidence);
    if (!l.prefixLetter.isNull() && !text.contains(u'.') && !text.contains(u',')) {
        // The point the digits alone lost, from the whole label read with
        // its letter (as whatever the engine takes it for), when the digits
        // of both readings agree.
        int wholeConfidence = 0;
        QString whole = ocr.Read(forReading(l.wholeCrop, pixels), "0123456789.,punm", wholeConfidence);
        while (!whole.isEmpty() && !whole.back().isDigit())
            whole.chop(1);
        whole.replace(u',', u'.');
        if (whole.count(u'.') == 1 && QString(whole).remove(u'.') == text)
            text = whole;
    }
    const bool digitsOnly
        = !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar c) { return c.isDigit(); });
    if (l.pointAfter > 0 && digitsOnly && text.size() == l.baseBlobs)
        text.insert(l.pointAfter, u'.');
    if (l.baseMinus)
        text.prepend(u'-');
    if (!l.prefixLetter.isNull() && !text.isEmpty())
        text.append(l.prefixLetter);
    return text;
}

} // namespace

bool ReadTickLabels(QList<CTickLabel> &labels)
{
    std::lock_guard<std::mutex> lock(g_ocrLock);
    if (!g_ocr.Ready())
        return false;
    for (CTickLabel &l : labels) {
        int baseConfidence = 0, exponentConfidence = 100;
        l.text = readBase(g_ocr, l, 32, baseConfidence);
        if (l.exponentCrop.isNull() && !ParseLabelValue(l.text).ok) {
            // The engine now and then drops a digit or a letter at one size
            // and not at another ("1m" read as "m"): a label that does not
            // read is read at two more sizes, and counts when both agree.
            int small = 0, large = 0;
            const QString a = readBase(g_ocr, l, 24, small), b = readBase(g_ocr, l, 44, large);
            if (a == b && ParseLabelValue(a).ok) {
                l.text = a;
                baseConfidence = std::min(small, large);
            }
        }
        if (!l.exponentCrop.isNull()) {
            l.exponent = readExponent(g_ocr, l, exponentConfidence);
            if (l.exponent.isEmpty()) {
                // An exponent that cannot be read leaves the label unread,
                // rather than read as its base alone.
                l.value = CLabelValue();
                continue;
            }
            if (l.exponentMinus)
                l.exponent.prepend(u'-');
        }
        l.confidence = std::min(baseConfidence, exponentConfidence);
        l.value = ParseLabelValue(l.text, l.exponent);
    }
    return true;
}
