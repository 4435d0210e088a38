#pragma once
// The Save As command of a graph window: a file dialog with every kind the
// graph can be saved as, then the export of what the graph shows.

#include <QString>

#include <functional>

class CGraphCurve;
class QWidget;

// The filters of the dialog in Qt's form ("description (*.ext);;...").
QString SaveAsDialogFilter(const CGraphCurve &graph);

// Asks for a file and writes the graph there in the kind of the filter
// chosen.  A failure is reported in a message box (the old file stays as
// it was).  The record file kind goes to `saveRecord` when given (which
// reports its own failures).  Returns 1 saved, 0 cancelled or failed.
int SaveGraphAs(QWidget *parent, CGraphCurve &graph,
                const std::function<bool(const QString &path)> &saveRecord = {});
