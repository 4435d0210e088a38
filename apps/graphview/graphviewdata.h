#pragma once
// The data graphview shows: a data text file as a data set (column 0 as X),
// or a generated demonstration.

#include "graphdata/exchange/textimport.h"
#include "graphdata/graphdata.h"

#include <QString>

// Makes a data set read from a file ready to show: unnamed columns are named
// "X", "Y1", "Y2", ...; a data set of one column gets a column "Index"
// (1, 2, ...) in front as its X; rising X marks the data as ordered.
void PrepareFileData(CGraphData &data);

// What a reading found wrong with the cells of the file `fileName`, for the
// status line and standard error; empty when every cell was a number.
QString BadCellsText(const QString &fileName, const CTextImportReport &report);

// Why the file at `path` gives nothing to show.
QString ImportFailureText(const QString &path, TextImport result, const CTextImportReport &report);

// The demonstration: the step response of a filter over 10 ms with its
// output voltage, load current, input and a ripple (2001 rows), or with
// `bars`, twelve monthly readings of three meters.
CGraphData DemonstrationData(bool bars);
