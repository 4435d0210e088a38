#pragma once
// Reading a data text file into a data set: every row of the file becomes a
// row of the data set, every cell a value with its validity byte (see
// textformat.h for what a cell may hold).  Bad cells do not stop the
// reading; they are counted, with the first lines that hold one.
//
// The text is UTF-8 (a byte order mark is skipped) or UTF-16 with a byte
// order mark.  Lines end in LF or CR LF.
//
// A file read from disk is mapped and parsed straight into the columns,
// in as many blocks as the machine has cores when it is large: the lines
// are counted first, so the columns are allocated once at their final size
// and the memory they will need is known (and refused when the machine
// does not have it) before anything is allocated.
//
// A file whose data is a single row without a header is read as one column
// with a row for each of its cells: a series written on one line.

#include "graphdata/graphdata.h"

#include <QString>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

enum class TextImport {
    Read,        // `data` holds the file
    OpenFailed,  // the file cannot be opened or mapped; the report says why
    NoData,      // no row (only blank lines, comments, maybe a header)
    TooLarge,    // the columns would need more memory than is free
    Cancelled,   // the cancel flag was raised
};

struct CTextImportReport
{
    std::int64_t lines = 0;        // lines of the file
    std::int64_t rows = 0;         // rows read
    int columns = 0;
    bool transposed = false;       // one row read as one column
    std::int64_t invalidCells = 0; // not finite numbers: validity byte 2
    std::int64_t missingCells = 0; // empty, or lacking in a short row: byte 0
    std::int64_t extraCells = 0;   // past the last column: left out
    std::vector<std::int64_t> firstBadLines; // 1-based, rising, at most kBadLinesKept
    std::uint64_t bytesNeeded = 0;    // memory the columns take
    std::uint64_t bytesAvailable = 0; // free memory, when TooLarge
    QString error;                    // with OpenFailed

    static constexpr std::size_t kBadLinesKept = 5;
    bool HasBadCells() const { return invalidCells + missingCells + extraCells > 0; }
};

struct CTextImportOptions
{
    // Progress in thousandths, raised while reading; may be null.
    std::atomic<int> *progress = nullptr;
    // Raised by another thread to stop the reading; may be null.
    const std::atomic<bool> *cancel = nullptr;
    // Worker threads; 0: one per core.  Small files are read by one.
    int threads = 0;
    // Memory the columns may take; 0: what the system says is available.
    std::uint64_t memoryLimit = 0;
};

// Reads the file at `path`.  `data` changes only when the result is Read;
// its columns are named by the header, unnamed without one.
TextImport ImportTextFile(const QString &path, CGraphData &data, CTextImportReport &report,
                          const CTextImportOptions &options = {});

// The same on bytes in memory (the whole file, byte order mark included).
TextImport ImportTextBytes(const char *bytes, std::size_t size, CGraphData &data, CTextImportReport &report,
                           const CTextImportOptions &options = {});

// The memory the system has free for a new allocation, in bytes.
std::uint64_t AvailableMemory();
