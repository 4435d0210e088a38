#pragma once
// The program-wide table of open data sets, so that functions of the
// language can reach a graph's data by its slot.  Every CGraphData_Data
// enters at construction and leaves at destruction, under the table's lock.
//
// Lock order: a data set's own lock may be held when this table's lock is
// taken, never the other way round, so nothing here takes a data lock.

#include "graphdata/graphdata.h"

// Enters a data set; returns its slot (from 1 on).
int RegisterOpenGraphData(CGraphData_Data *data);
// Clears the data set's slot.
void UnregisterOpenGraphData(CGraphData_Data *data);
// Data sets in the table now.
int OpenGraphDataCount();
// A handle on the data set in `slot`, or false when the slot is empty or its
// data set is being destroyed.
bool OpenGraphDataAt(int slot, CGraphData &handle);
