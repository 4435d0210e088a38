#pragma once
// The data graphview shows: a point text file of the digitiser as a data
// set (column 0 as X), or a generated demonstration.

#include "graphdata/graphdata.h"

#include <QString>

struct CPointTable;

// A data set of the table's columns, named by its header or "X", "Y1",
// "Y2", ...; rows whose X values rise are marked as ordered.
CGraphData GraphDataFromTable(const CPointTable &table);

// The demonstration: the step response of a filter over 10 ms with its
// output voltage, load current, input and a ripple (2001 rows), or with
// `bars`, twelve monthly readings of three meters.
CGraphData DemonstrationData(bool bars);
