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

// Text 41210: no memory to grow the data or to draw.
constexpr int kGraphTextNoMemory = 41210;

// The text of a report as a person reads it: the numbered text (or the
// number when the text is missing), its number in brackets, and the detail.
QString GraphErrorText(int stringId, const QString &detail);

// A reporter for programs without windows: each report becomes one line on
// stderr, "program: text (number): detail".
GraphErrorReporter ConsoleGraphErrorReporter(const QString &program);
