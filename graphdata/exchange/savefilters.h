#pragma once
// The file types a graph window saves to, and the export that goes with
// each: the filter list of the Save As dialog, the kind index its choice
// maps to, the kind a file name without a dialog selects, and the export
// itself.

#include <QString>
#include <QStringList>
#include <vector>

class CGraphCurve;

// Save kinds: 0 the fixed (or, in spectrum mode, the spectrum) text form,
// 1 tab separated, 2 comma separated, 10 the record file (.mrd), 4 the
// mat-file.
enum : int {
    SaveKindText = 0,
    SaveKindTab = 1,
    SaveKindComma = 2,
    SaveKindMat = 4,
    SaveKindRecord = 10,
};

// The filters in the order offered, as "description|*.ext" pairs; the
// mat-file comes last.
QStringList SaveFilters(bool spectrumMode, const QString &firstColumnName);

// The kind of the 1-based filter position chosen in the dialog.
int SaveKindOfFilter(bool spectrumMode, int position);

// The kind a file name selects when no dialog chose one: ".txt", ".fra" and
// ".csv" select the fixed columns (or `index` when it is not negative), any
// other name the record file.  A caller that wants ".csv" as comma separated
// text or ".mat" as a mat-file says so with the kind itself.
int SaveKindOfName(const QString &path, int index = -1);

// Saves what the graphs show to `path` in `kind` (see above).  Returns 1,
// or 0 with the reason in *error.
int ExportGraphs(const std::vector<CGraphCurve *> &graphs, const QString &path, int kind, QString *error);
