#pragma once
// Saving columns, held curves and attachments to a graph data file (.mrd).
//
// The file is written to a temporary file in the target's folder and renamed
// over the target only when everything went well; a failed save leaves the
// old file as it was and says why in the message.

#include "graphdata/graphdata.h"

#include <QByteArray>
#include <QString>
#include <vector>

class CCurveHoldList;

// Writes `count` columns, each cut to `rows` rows, with the held curves of
// `heldSets` (may be null) and the two lists of attachment blocks.
//   mode 4 (and -1, the newest form): wide names, current magic;
//   mode 3: narrow names;  mode 2: narrow names and the older table entries.
// Columns without an id get one.  Returns 1 on success; 0 for any other mode
// (at once) or a failure, with the message in *message, or reported through
// ReportGraphError when message is null.
int SaveColumns(int mode, const QString &path, CGraphColumn *const *columns, int count, int rows,
                const std::vector<QByteArray> &attachments1, const std::vector<QByteArray> &attachments2,
                const CCurveHoldList *heldSets, QString *message = nullptr);

// The columns and rows of a data set, in mode 4.
// `attachments` go into the first list of attachment blocks.
int SaveGraphData(const QString &path, const CGraphData &data, const CCurveHoldList *heldSets = nullptr,
                  QString *message = nullptr, const std::vector<QByteArray> &attachments = {});
