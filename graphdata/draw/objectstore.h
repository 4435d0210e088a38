#pragma once
// The drawing objects of a graph as one block of bytes, for the graph data
// file (an attachment record) and for the window's undo.  The block holds
// the stream's four version words, a tag, the object count, then for each
// object its kind and flags followed by what its Transfer writes.  The
// version words tell the reader which form the objects were written in.

#include "graphdata/textnline.h"

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <vector>

// The tag that marks an objects block among a file's attachments.
constexpr std::uint32_t kObjectsBlockTag = 0x4A424F44;

// The objects in the newest form.
QByteArray StoreObjects(const CTextnLineArray &objects);
// The same in the form of another stream version (major.minor), for files
// of older programs and for tests of their reading.
QByteArray StoreObjects(const CTextnLineArray &objects, std::uint16_t major, std::uint16_t minor);

// True when `block` starts like an objects block.
bool IsObjectsBlock(const QByteArray &block);
// The first objects block among `blocks`, or an empty array.
QByteArray FindObjectsBlock(const std::vector<QByteArray> &blocks);

// Replaces `objects` with those of `block`.  A damaged block (cut short, an
// unknown kind, a count the bytes cannot hold) leaves `objects` as they were
// and gives false with text 43785 in `message`.
bool RestoreObjects(const QByteArray &block, CTextnLineArray &objects, QString &message);

// A new object of kind 1 (line), 2 (text) or 3 (rectangle); null otherwise.
CTextnLine *MakeObject(int kind);
