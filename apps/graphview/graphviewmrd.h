#pragma once
// graphview and the graph data file (.mrd): opening one, and writing one
// from the command line without a window:
//
//   graphview FILE --save OUT.mrd
//
// FILE is a graph data file or a data text file.

#include "graphdata/graphdata.h"

#include <QString>

// True when the path names a graph data file (by its extension, .mrd).
bool IsGraphDataFile(const QString &path);

// The columns of a graph data file; false with the message naming the file.
bool LoadGraphDataFile(const QString &path, CGraphData &data, QString &message);

// The data graphview would show for FILE: a graph data file, or a data text
// file read as the window reads it (bad cells are told on standard error).
// False with the message.
bool LoadGraphViewInput(const QString &path, CGraphData &data, QString &message);

// When the arguments hold --save OUT (or --save=OUT), reads the file named
// among them, writes OUT without opening a window, reports failures on
// standard error, sets the exit code and returns true.  False when there is
// no --save: graphview then runs as usual.
bool RunSaveCommand(int argc, char **argv, int &exitCode);
