#pragma once
// The point text files of the digitiser: one curve table in plain text.
//
//     ; comment lines (also "//") and blank lines, anywhere
//     Vce Ic                 <- optional header: the column names
//     0.5 0.001              <- data lines: numbers separated by blanks,
//     1.2e0,2.5D-3              tabs or commas
//
// Files are written with "%.12g", CR LF line ends, and a header line when
// both axis names are given.  A file is written whole to a temporary file in
// its folder and renamed over the old one, so that it holds exactly the
// curve saved, or, when writing fails, stays as it was.

#include "support/myarrays.h"

#include <QString>
#include <QStringList>

class CCurveRecords;
class CGraphInfoData;
struct CToolFields;

// The name the file dialogs start with: the last file written or read, else
// the program's own path cut one character before its last separator.
QString OfferedFileName(const QString &lastFileName, const QString &applicationFilePath);

// Filter and default suffix of the file dialogs.
QString PointTextFileFilter();   // "Text Files (*.txt);;All files (*)"
QString PointTextFileSuffix();   // "txt"

// Writes the points of a curve.  The header line "xName yName" is written
// when both names, trimmed, are non-empty; names go out in the local 8-bit
// encoding.  False, with the system's reason ("No space left on device") in
// `errorReport`, when the file cannot be written; the old file is then kept.
bool WritePointTextFile(const QString &path, const CGraphInfoData &curve, const QString &xName,
                        const QString &yName, QString &errorReport);

// The same with the names of fields 1173 and 1186, crossed when field 1848 is
// ticked.
bool WriteCurveFile(const QString &path, const CGraphInfoData &curve, const CToolFields &fields,
                    QString &errorReport);

// A curve table as read from a file.
struct CPointTable {
    QStringList columnNames;  // the header's tokens; empty without a header
    bool hasHeader = false;
    int columnCount = 0;
    QStringList rows;         // the tokens of each data line joined with ","
    CMyDoubleArray2D values;  // rows by columns, as atof reads the tokens
    // The extremes as they stand in the file: X from column 0, Y from all
    // other columns.
    QString xMinText, xMaxText, yMinText, yMaxText;
};

enum class PointFileRead {
    Read,       // `table` holds the file
    OpenFailed, // the file cannot be opened or read; `errorReport` says why
    NoData,     // nothing but comments and blank lines (and maybe a header)
    BadLine,    // a data line with too few numbers (fewer than two without a
                // header), or a token that no number is (a NUL byte in a
                // file that is not UTF-16 makes one too): the reading stops
};

// Reads a point text file: 8-bit (a UTF-8 byte order mark is skipped) or
// UTF-16 (with a byte order mark, or when the first character is ASCII), its
// lines ending in LF, CR LF or CR alone.  Comment lines (";" or "//") and
// blank lines are skipped wherever they stand.  The first line left is a
// header unless each of its tokens reads as a number (the "2.5D0" form
// included); its tokens are the column names.  Without a header, the first
// line gives the column count, at least two.  Each data line gives the first
// columnCount tokens (more are ignored), which may hold only digits and
// "+-.DEde"; a D exponent reads as E.  `table` changes only when the result
// is Read; for BadLine, `problemLine` receives the 1-based line.
PointFileRead ReadPointTextFile(const QString &path, CPointTable &table, QString &errorReport,
                                int *problemLine = nullptr);

enum class PointTableApplied {
    Applied,
    HeaderTooShort, // a header of fewer than two names: an invalid argument
};

// Puts a table read from a file into the fields and the curve list:
//  - field 1848 is cleared;
//  - with a header, the present texts of fields 1173 and 1186 stay the axis
//    names, and an empty one takes the file's name (xName, yName receive
//    the names).  A header with fewer than two names stops here with
//    HeaderTooShort, after 1848 was cleared;
//  - the extremes go to fields 1052 (X min), 1056 (X max), 1063 (Y min) and
//    1060 (Y max);
//  - each row becomes a group "(row)" of the point text, so of a row of three
//    numbers the point text keeps the first two;
//  - the curve list takes the loaded file (CCurveRecords::TakeOverLoadedFile).
// The front end then sets mode 10, clears the capture, gives every column a
// curve on the plot, sets mode 16, applies the fields, repaints, sets mode 0
// and shows the file name in field 1333.
PointTableApplied ApplyPointTable(const CPointTable &table, CToolFields &fields,
                                  CCurveRecords &records, QString &xName, QString &yName);
