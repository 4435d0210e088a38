#pragma once
// What a graph window exports: for every curve of its graphs, the X column
// of the mode shown and the Y column in the form its axis shows, X columns
// first and each only once.

#include "graphdata/graphcolumn.h"

#include <QString>
#include <QStringList>
#include <cstdint>
#include <vector>

class CGraphCurve;

struct CExportSelection
{
    std::vector<CGraphColumnPtr> columns;
    // One per curve: high word the list index of its X column, low word that
    // of its Y column.
    std::vector<std::uint32_t> references;
    std::vector<std::uint32_t> colors;
    QStringList labels;
    // The text of the first X column, the first header of the files.
    QString firstHeader;
    // The longest column.
    int rows = 0;

    std::vector<const CGraphColumn *> Pointers() const;
};

// Collects the columns of all curves of `graphs`.  The X column of a curve
// is the frequency (or its log form) in spectrum mode, else the graph's X
// column (or its log form), or the curve's own X.  The Y column is what its
// axis shows: the log or dB form, the spectrum component, or the plain
// column.  An X column named "TIME", "FREQUENCY", "FREQ" or "INDEX" (any
// case) or ordered, that lies wholly inside the shown X span, is taken as
// it is; any other is cut to the rows inside the span, and so are the Y
// columns over it.  Y names of spectrum components get "Angle(D)_",
// "Angle(R)_", "Real_" or "Img_" in front; a computed curve's column goes
// out under the curve's label rather than its formula.  Oscilloscope graphs
// are left out.
CExportSelection CollectExportColumns(const std::vector<CGraphCurve *> &graphs);
