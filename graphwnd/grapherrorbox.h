#pragma once
// The graph error reporter of a window program: each report comes up as a
// message box once the user-interface thread is free (never from inside a
// paint, never from a producer thread), and goes to stderr as a line too,
// for a program started from a terminal.  While a box for a text is waiting
// or open, more reports of the same text do not add boxes.

#include <QString>

void InstallGraphErrorBox(const QString &program);

// Text 43640: a draw pass ran out of memory.
constexpr int kGraphTextNoMemoryToDraw = 43640;
