#pragma once
// Columns out to a mat-file (version 5) through libmatio: one double column
// vector per column, named after it.  Written to a temporary file beside the
// target and renamed over it when complete.

#include "graphdata/graphcolumn.h"

#include <QString>
#include <QStringList>

// The variable names of the columns: the name with "(" made "_" and ")"
// dropped, trimmed; empty or "_" gives "Graph_<position>".  So that every
// reader takes them, any other character that cannot stand in a variable
// name becomes '_', a name that does not start with a letter gets "V_" in
// front, names are cut to 63 characters, and a name already used gets
// "_2", "_3" ... behind it.
QStringList MatVariableNames(const CGraphColumn *const *columns, int count);

// Writes the columns.  Without a row map each column is written with its
// own length, its rows that are not valid as NaN; with one, `rows` values
// per column, output row i taking source row rowMap[i] (i when negative or
// past the column), and +infinity where that row is not valid.  Returns 1,
// or 0 with the reason in *error.
int SaveMatFile(const QString &path, const CGraphColumn *const *columns, int count, int rows, const int *rowMap,
                QString *error = nullptr);
