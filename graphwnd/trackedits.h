#pragma once
// The edits that the window's mouse tracks end in, without a window: a
// track only decides what the user asked for (a frame, a moved title box,
// a box round objects), and these carry it out on the graph.  Each returns
// whether the graph changed, so that the window knows to redraw and to
// tell its host.

#include "graphdata/graphcurve.h"

#include <QRect>
#include <vector>

class CTextnLine;

// Zoom to a frame dragged over the plot: the part of it inside the plot,
// when that is more than 2 pixels each way, becomes the view of X and of
// every Y axis.
bool ZoomToFrame(CGraphCurve &graph, const QRect &frame);

// The title box dragged to `moved`: the legend stands above the plot at
// that left edge, as a fraction of the plot's width (legendPos 1).
bool MoveLegendTo(CGraphCurve &graph, const QRect &moved);

// Adds the shown objects that touch `box` to `selection`, each once.
// Returns whether any was added.
bool SelectObjectsIn(const CGraphCurve &graph, const QRect &box, std::vector<CTextnLine *> &selection);
