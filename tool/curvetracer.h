#pragma once
// CCurveTracer: follows a curve of one colour across a picture.  Given a
// spot on the curve and the rectangle to search, it finds in every pixel
// column the centre of the curve's ink, column by column to the left and to
// the right, and so recovers the curve to a fraction of a pixel even where
// it is antialiased, dashed, crossed by grid lines or by another curve, or
// blurred by JPEG.  Positions are picture positions: pixel (i, j) covers
// [i, i+1) x [j, j+1), so its centre is (i + 0.5, j + 0.5).
//
// How a pixel counts: with B the background colour (the commonest colour of
// the rectangle) and T the curve's colour (the strongest ink next to the
// spot), a pixel P is read as a blend P = B + a (T - B).  The blend share a
// is the pixel's weight, taken only when P - B points the way T - B does, so
// that grid lines, labels and curves of other colours weigh nothing.  The
// centre of a column is the weighted mean of its rows.
//
// How the curve is followed: from the spot's column outward, each column's
// runs of ink are compared with the place the last columns predict; the run
// nearest to it is taken when it is near enough and not much longer than the
// line is thick (a longer run is the curve merged with a crossing line).
// Columns without such a run are gaps; the curve ends after more than
// `maxGap` of them in a row.

#include <QImage>
#include <QRectF>

#include <functional>
#include <optional>
#include <vector>

struct CTracedColumn {
    double x = 0; // the column's centre
    double y = 0; // the centre of the curve's ink there
};

struct CCurveTrace {
    bool found = false;
    QRgb colour = 0;     // the ink followed
    QRgb background = 0;
    // One entry a column where the curve was seen, in rising X.
    std::vector<CTracedColumn> columns;
    // The curve's ends in X, to a fraction of a pixel: the first and last
    // columns count by how much of their ink a full column holds.
    double startX = 0;
    double endX = 0;

    // The part of the curve that points are proposed on: the extent, but
    // not further than half a column beyond the outer whole columns, so
    // that no point stands on an end that was only estimated.
    double ProposalStart() const;
    double ProposalEnd() const;

    // The curve's Y at a picture X between startX and endX, interpolated
    // between the columns around it (across gaps too); none outside.
    std::optional<double> YAt(double x) const;
};

class CCurveTracer
{
public:
    // Gaps wider than this many columns end the curve.
    int maxGap = 12;
    // How far (pixels) from the spot the ink's colour is looked for.
    int pickRadius = 3;

    // Follows the curve through `spot` inside `area` (picture positions; the
    // area is cut to the picture).  Nothing found when there is no ink near
    // the spot that stands out from the background.
    CCurveTrace Trace(const QImage &picture, QPointF spot, QRectF area) const;
};

// Where the points of a proposal go along a traced curve.
struct CTraceSpacing {
    enum Kind { EveryNPixels, PerDecade, AtValues };
    Kind kind = EveryNPixels;
    double n = 10;              // pixels apart, or points per decade
    std::vector<double> values; // the X values, for AtValues
};

// The picture X positions of a proposal between `startX` and `endX`: every
// n pixels from the start (and the end itself); n points a decade of X value
// (the values 10^(k/n) inside, and both ends); or the given values inside.
// `valueOf` and `pixelOf` map a picture X to its X value and back.
std::vector<double> ProposalXs(const CTraceSpacing &spacing, double startX, double endX,
                               const std::function<double(double)> &valueOf,
                               const std::function<double(double)> &pixelOf);
