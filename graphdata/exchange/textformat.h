#pragma once
// The shape of a data text file, as a spreadsheet user writes one, and the
// reading of one line of it into cells.
//
//     # comment lines start with '#', '%', '!', "//" or (unless the
//     # separator is ';') with ';'; blank lines are skipped too
//     Time;V(out);I(load)          <- optional header line: the names
//     0,001;1,25;-3e-3             <- rows: cells split by the separator
//
// The separator is a tab, ';', ',' or, when the first lines hold none of
// them, runs of blanks.  With a tab or ';' a comma inside a number is its
// decimal point.  Cells may stand in double quotes, carry blanks around
// them, a leading '+' or a Fortran exponent ("2.5D-3").
//
// Each cell gets a validity byte as the data store keeps it: 1 a finite
// number; 2 invalid (a word, "nan", "inf", a number out of the range of a
// double such as 1e400); 0 missing (an empty field, "MISSING", or a cell past
// the end of a short row).  Numbers too small for a double read as 0.

#include <QStringList>
#include <cstddef>
#include <cstdint>

struct CTextFormat
{
    char separator = ' ';      // '\t', ';', ',' or ' ' for runs of blanks
    bool decimalComma = false; // a ',' inside a cell is the decimal point
    bool hasHeader = false;
    QStringList names;         // the header's names, one per column
    int columns = 0;           // cells of a row
    std::size_t dataStart = 0; // offset of the first line after the header
    std::int64_t linesBeforeData = 0; // lines in front of dataStart
};

// Looks at the first lines of `bytes` (UTF-8, without a byte order mark):
// separator, header and the number of columns, the most cells of the header
// and of the first rows.  `columns` stays 0 when the sample holds no row.
CTextFormat SniffTextFormat(const char *bytes, std::size_t size);

// True for a line that holds no cells: blank, or a comment.
bool IsSkippedLine(const char *begin, const char *end, char separator);

// Counts of one line's reading.
struct CLineCells
{
    int invalid = 0; // cells that are not finite numbers
    int missing = 0; // empty cells, and cells a short row lacks
    int extra = 0;   // non-empty cells past the last column, left out
};

// Reads the line [begin, end) (no line end) into row `row` of the columns:
// cell c goes to values[c][row] and valid[c][row].  Every one of the
// format's columns is written.
CLineCells ReadTextLine(const char *begin, const char *end, const CTextFormat &format, double *const *values,
                        std::uint8_t *const *valid, std::size_t row);

// The end of the field that starts at `begin`: the next separator outside
// double quotes, or the next blank when blanks separate.
const char *TextFieldEnd(const char *begin, const char *end, char separator);

// One cell [begin, end), without separators: the validity byte, the value
// in `value` when it is 1.
std::uint8_t ReadTextCell(const char *begin, const char *end, bool decimalComma, double &value);
