#pragma once
// Replacing a file's contents so that no failure can damage it: the bytes go
// to a new file in the same folder, are flushed to the disk, and the new file
// is then renamed over the old one.

#include <QString>
#include <string_view>

// Writes `bytes` as the whole of the file at `path`.  A new file gets the
// usual permissions (0666 less the umask), a replaced one keeps its own; a
// symbolic link is followed, and its target replaced.  On failure (a full
// disk, a folder that cannot be written, a read-only file) the file at `path`
// is as it was, no temporary file is left behind, and `reason` receives the
// system's words for the cause, such as "No space left on device".
bool ReplaceFileContents(const QString &path, std::string_view bytes, QString &reason);
