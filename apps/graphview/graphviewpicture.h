#pragma once
// Saving graphview's window as a picture, for --screenshot.

#include <QString>
#include <functional>

class QWidget;

// Writes a picture of `widget` to `path`: PNG unless the suffix names
// another format that Qt writes.  The picture goes to a temporary file in
// the same folder that replaces `path` only once it is complete, so a
// failure leaves an older file as it was.  False with the reason in `error`.
bool SaveWidgetPicture(QWidget &widget, const QString &path, QString &error);

// Calls `done` once, right after the next paint of `widget` has finished.
void AfterNextPaint(QWidget *widget, std::function<void()> done);
