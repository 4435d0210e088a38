#include "graphdata/draw/objectstore.h"

#include "graphdata/draw/drawobjects.h"
#include "support/bufferio.h"
#include "support/languagestring.h"

#include <cstring>
#include <memory>

namespace {

// The stream version of this program's files.
constexpr std::uint16_t kMajor = 26, kMinor = 0, kBuild = 0, kRevision = 7209;
constexpr int kTextDamaged = 43785;
// The smallest an object takes in a block: kind, flags, length and a
// position.
constexpr int kSmallestObject = 12 + 16;

} // namespace

CTextnLine *MakeObject(int kind)
{
    switch (kind) {
    case 1: return new CDrawLines;
    case 2: return new CDrawText;
    case 3: return new CDrawRect;
    default: return nullptr;
    }
}

QByteArray StoreObjects(const CTextnLineArray &objects)
{
    return StoreObjects(objects, kMajor, kMinor);
}

QByteArray StoreObjects(const CTextnLineArray &objects, std::uint16_t major, std::uint16_t minor)
{
    CBufferIO io(major, minor, kBuild, kRevision);
    io.Reset(CBufferIO::ModeWrite, 256);
    io.TransferVersion();
    std::uint32_t tag = kObjectsBlockTag;
    std::int32_t count = objects.GetSize();
    io.Transfer(tag).Transfer(count);
    for (CTextnLine *object : objects) {
        std::int32_t kind = object->ObjectKind();
        std::uint32_t flags = object->m_flags;
        io.Transfer(kind).Transfer(flags);
        // Each object framed by its length, so that a cut block shows.
        CBufferIO one(major, minor, kBuild, kRevision);
        one.Reset(CBufferIO::ModeWrite, 128);
        object->Transfer(one, major);
        QByteArray bytes = one.ToByteArray();
        io.TransferBlock(bytes);
    }
    return io.ToByteArray();
}

bool IsObjectsBlock(const QByteArray &block)
{
    if (block.size() < 16)
        return false;
    CBufferIO io;
    io.LoadForReading(block.left(12));
    io.TransferVersion();
    std::uint32_t tag = 0;
    io.Transfer(tag);
    return tag == kObjectsBlockTag;
}

QByteArray FindObjectsBlock(const std::vector<QByteArray> &blocks)
{
    for (const QByteArray &block : blocks) {
        if (IsObjectsBlock(block))
            return block;
    }
    return QByteArray();
}

bool RestoreObjects(const QByteArray &block, CTextnLineArray &objects, QString &message)
{
    auto damaged = [&] {
        message = LanguageString(kTextDamaged);
        return false;
    };
    if (!IsObjectsBlock(block))
        return damaged();
    CBufferIO io;
    io.LoadForReading(block);
    io.TransferVersion();
    std::uint32_t tag = 0;
    std::int32_t count = 0;
    io.Transfer(tag).Transfer(count);
    if (count < 0 || count > io.GetRemaining() / kSmallestObject)
        return damaged();
    std::vector<std::unique_ptr<CTextnLine>> read;
    for (int i = 0; i < count; ++i) {
        std::int32_t kind = 0;
        std::uint32_t flags = 0;
        std::int32_t length = 0;
        if (io.GetRemaining() < kSmallestObject)
            return damaged();
        io.Transfer(kind).Transfer(flags);
        std::memcpy(&length, io.GetData() + io.GetPosition(), sizeof length);
        std::unique_ptr<CTextnLine> object(MakeObject(kind));
        if (!object || length < 16 || length > io.GetRemaining() - 4)
            return damaged();
        QByteArray bytes;
        io.TransferBlock(bytes);
        CBufferIO one(io.m_versionA, io.m_versionB, io.m_versionC, io.m_versionD);
        one.LoadForReading(bytes);
        object->Transfer(one, io.m_versionA);
        object->m_flags = flags;
        read.push_back(std::move(object));
    }
    objects.DeleteAll();
    for (std::unique_ptr<CTextnLine> &object : read)
        objects.Add(object.release());
    return true;
}
