#pragma once
// The graph engine reports failures that the user must see (a data set that
// cannot grow, a formula that fails) by string number.  The window layer
// installs a reporter that shows a message box; without one the text goes to
// the Qt warning channel.
//
// A report may come from a producer thread: a reporter that shows a box must
// hand the work to the user-interface thread itself.

#include <QString>
#include <functional>

using GraphErrorReporter = std::function<void(int stringId, const QString &detail)>;

// Installs a reporter and returns the previous one (empty for the default).
GraphErrorReporter SetGraphErrorReporter(GraphErrorReporter reporter);

// Reports text `stringId` (none when 0), with an optional detail behind it.
void ReportGraphError(int stringId, const QString &detail = QString());
