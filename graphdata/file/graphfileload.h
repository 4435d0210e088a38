#pragma once
// Reading graph data files (.mrd): the whole file (columns, held curves and
// attachments), or only the held columns a caller asks for.
//
// Every reader checks what it reads against the file: a file that is cut
// short, damaged, of another kind or newer than this program gives a message
// that names the file and the result false, never more memory than the file
// can justify (a column of n rows needs 9 n bytes in the file; the rows of an
// even-step column, stored as three numbers, are bounded by the file's size
// plus a million).

#include "graphdata/curvehold.h"
#include "graphdata/graphdata.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <vector>

class CFiler2;
struct CFiler2Entry;

struct CGraphFileContent
{
    CGraphData data;                       // the columns, named, with their settings
    std::unique_ptr<CCurveHoldList> holds; // the held curves, or null when there are none
    std::vector<QByteArray> attachments1;
    std::vector<QByteArray> attachments2;
    int mode = 0;                          // the writer's mode: 2, 3 or 4
    std::int64_t bytesRead = 0;            // what the reading took from the file
};

// Reads the whole file.  With `columns` given, only the data of those column
// numbers is read (the others stay missing) and held curves are skipped.
bool ReadGraphFile(const QString &path, CGraphFileContent &out, QString &message, const QList<int> &columns = {});

// Held columns by id.
using CHeldColumnStore = std::map<std::uint64_t, CGraphColumnPtr>;

// Loads the held columns whose ids are in `wantedIds` into `store`.  Mode 4
// only.  Returns 1 on success, 0 with the message otherwise.
int LoadHeldColumns(int mode, const QString &path, CHeldColumnStore &store, const std::set<std::uint64_t> &wantedIds,
                    QString &message);

// Rows a load may still allocate; shared by the blocks of one file.
struct CLoadBudget
{
    std::int64_t rows = 0;
    bool Take(std::int64_t n)
    {
        if (n < 0 || n > rows)
            return false;
        rows -= n;
        return true;
    }
};

// Loads one held column block (record `index` of an open filer) into the
// store: the column of its id grows to hold the block's rows.  False when the
// record does not hold what its entry says.
bool LoadColumnBlock(CHeldColumnStore &store, CFiler2 &filer, int index, const CFiler2Entry &entry,
                     CLoadBudget &budget);
