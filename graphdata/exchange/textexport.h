#pragma once
// Columns out to text: fixed-width columns, delimited text (tab or comma),
// and the spectrum files.  Everything is written to a temporary file in the
// target's folder and renamed over the target only when all of it was
// written, so a failed export leaves the old file as it was.
//
// Every writer takes a row map: an optional array (one entry per output
// row) with the source row of each output row; a negative entry, or one at
// or past the row count, means the output row itself.

#include "graphdata/graphcolumn.h"

#include <QByteArray>
#include <QString>
#include <vector>

class QIODevice;

// Modes of SaveAsText.
enum : int {
    ExportFixed = 0,
    ExportTab = 1,
    ExportComma = 2,
    ExportCommaNoHeader = 3,
    ExportMatFile = 4,
    ExportRecordFile = 10,
};

// The header name of the column at `position`: its name, or "Graph(%i)"
// without one; blanks and tabs become '_'.
QString ExportHeaderName(const CGraphColumn *column, int position);

// The header line of the fixed form: two blanks, the index label when
// indexOn ("Index" without one) in ten positions, then an 18-position field
// for each name (see the .cpp for the padding rules); ends with "\r\n".
QByteArray FixedHeader(const CGraphColumn *const *columns, int count, bool indexOn, const QString &indexLabel);

// Rows of the fixed form: optional index "%9i ", then per column "%17.9E "
// for a valid value, or "MISSING " / "NAN " right-aligned in 17 positions.
// Writes `rows` rows, the index counting from firstIndex.  False when the
// device refuses to write.
bool WriteFixed(QIODevice &out, const CGraphColumn *const *columns, int count, int rows, const int *rowMap,
                bool indexOn, int firstIndex);

// The delimited header: the index label first when indexOn, then the names,
// joined by the separator; ends with "\r\n".
QByteArray DelimitedHeader(const CGraphColumn *const *columns, int count, const QByteArray &separator,
                           bool indexOn, const QString &indexLabel);

// Rows of the delimited form: optional index "%9i" from 1 and a separator;
// per column "%.17g", or "MISSING" (missing row or past the column's end),
// or "NAN" (invalid); separators between values only; "\r\n".
bool WriteDelimited(QIODevice &out, const CGraphColumn *const *columns, int count, int rows, const int *rowMap,
                    const QByteArray &separator, bool indexOn);

// Writes `count` columns of `rows` rows to `path` in `mode` (fixed,
// delimited, mat-file or record file).  Returns 1 on success; 0 when the
// path, the column list or the counts are empty (no file is made) or when
// writing failed, with the reason in *error.
int SaveAsText(const QString &path, const CGraphColumn *const *columns, int count, int rows, int mode,
               const int *rowMap = nullptr, QString *error = nullptr);

// A spectrum file.  Index 0: the line ";; FFT Data from <start> (s)\t to
// <end> (s) ", the fixed header with the index headed by xLabel, and the
// fixed rows indexed from 1.  Index 1 and 2: the delimited header and rows
// with tab or comma, index first.  Returns as SaveAsText.
int SaveSpectrumFile(const QString &path, int index, const CGraphColumn *const *columns, int count, int rows,
                     double startTime, double endTime, const QString &xLabel, QString *error = nullptr);
