#include "graphdata/file/filer2.h"
#include "graphdata/file/graphfileformat.h"
#include "support/languagestring.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstring>
#include <vector>

namespace {

QByteArray bytesOf(int size, char seed)
{
    QByteArray b(size, '\0');
    for (int i = 0; i < size; ++i)
        b[i] = char(seed + i * 7);
    return b;
}

QByteArray fileBytes(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

bool createFile(CFiler2 &filer, const QString &path, bool fullTable, int tableEntries = 20)
{
    return filer.CreateNewFile(path, GraphFile::MagicCurrent, 26, 0, 564, 0, GraphFile::FileFlags,
                               GraphFile::IdentificationText(), fullTable) &&
           filer.WriteHeaderData("head", 4) && filer.AllocateRecordOffsetsSpace(tableEntries);
}

bool finish(CFiler2 &filer)
{
    return filer.WriteRecordOffsets() && filer.WriteFilerFileHeader() && filer.CloseFile();
}

// Every record holds what the model says, records follow each other in
// order without overlap, and every allocation is whole blocks with a spare byte.
void expectRecords(CFiler2 &filer, const std::vector<QByteArray> &model, const std::string &where)
{
    ASSERT_EQ(filer.RecordCount(), int(model.size())) << where;
    std::int64_t end = filer.RecordsStart();
    for (int i = 0; i < filer.RecordCount(); ++i) {
        std::int64_t size = 0;
        const char *data = filer.ReadRecord(i, size);
        EXPECT_EQ(QByteArray(data, qsizetype(size)), model[std::size_t(i)]) << where << " record " << i;
        const CFiler2Entry *e = filer.Entry(i);
        EXPECT_GE(std::int64_t(e->offset), end) << where << " record " << i;
        EXPECT_GT(filer.RecordAllocated(i), filer.RecordSize(i)) << where << " record " << i;
        EXPECT_EQ(filer.RecordAllocated(i) % filer.BlockSize(), 0) << where << " record " << i;
        EXPECT_EQ(e->type, 100u) << where;
        end = std::int64_t(e->offset) + filer.RecordAllocated(i);
    }
}

struct TableCase
{
    const char *name;
    bool fullTable;
    int blockSize;
    int tableEntries;
};

class Filer2Edits : public ::testing::TestWithParam<TableCase>
{
};

} // namespace

TEST(Filer2, BlockRounding)
{
    const struct
    {
        int block;
        std::int64_t n, rounded;
    } cases[] = {
        {64, 0, 64}, {64, 63, 64}, {64, 64, 128}, {64, 1000, 1024},
        {16, 0, 256}, {16, 256, 512}, {31, 10, 256}, {32, 32, 64}, {0, 1, 256},
    };
    for (const auto &c : cases) {
        CFiler2 filer;
        filer.SetBlockSize(c.block);
        EXPECT_EQ(filer.RoundedSize(c.n), c.rounded) << "block " << c.block << " n " << c.n;
    }
}

// Inserts, growing writes, shrinking writes, deletes and reservations in
// place, each checked against a model, then again after the file was closed
// and opened: in both table forms, with the table in front or behind the records.
TEST_P(Filer2Edits, KeepRecordsAndTableRight)
{
    const TableCase &c = GetParam();
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("edits.mrd"));
    CFiler2 filer;
    filer.SetBlockSize(c.blockSize);
    ASSERT_TRUE(createFile(filer, path, c.fullTable, c.tableEntries));
    std::vector<QByteArray> model;
    auto add = [&](int size, char seed) {
        model.push_back(bytesOf(size, seed));
        ASSERT_EQ(filer.AddRecord(model.back().constData(), size, 100, 0), int(model.size()) - 1);
    };
    add(10, 'a');
    add(0, 'b');
    add(300, 'c');
    add(63, 'd');
    add(64, 'e');
    expectRecords(filer, model, "added");

    // A record growing by more than its spare bytes moves all later ones.
    const std::int64_t before = std::int64_t(filer.Entry(3)->offset);
    model[1] = bytesOf(700, 'B');
    ASSERT_TRUE(filer.WriteRecord(1, model[1].constData(), 700, 100, 0));
    EXPECT_GT(std::int64_t(filer.Entry(3)->offset), before);
    expectRecords(filer, model, "grown");

    model[2] = bytesOf(5, 'C');
    ASSERT_TRUE(filer.WriteRecord(2, model[2].constData(), 5, 100, 0));
    expectRecords(filer, model, "shrunk in place");

    int at = 0;
    model.insert(model.begin(), bytesOf(129, 'F'));
    ASSERT_TRUE(filer.InsertRecord(at, model[0].constData(), 129, 100, 0));
    at = 3;
    model.insert(model.begin() + 3, bytesOf(1, 'G'));
    ASSERT_TRUE(filer.InsertRecord(at, model[3].constData(), 1, 100, 0));
    at = 99; // clamped to the end
    model.push_back(bytesOf(20, 'H'));
    ASSERT_TRUE(filer.InsertRecord(at, model.back().constData(), 20, 100, 0));
    EXPECT_EQ(at, int(model.size()) - 1);
    expectRecords(filer, model, "inserted");

    ASSERT_TRUE(filer.DeleteRecord(2));
    model.erase(model.begin() + 2);
    ASSERT_TRUE(filer.DeleteRecord(0));
    model.erase(model.begin());
    expectRecords(filer, model, "deleted");

    // Reserve: grow record 1 to 5000 bytes and stream into it, then a fresh one.
    std::int64_t allocated = 0;
    model[1] = bytesOf(5000, 'R');
    CUtilFile *file = filer.Reserve(1, 5000, allocated);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(allocated, filer.RoundedSize(5000));
    ASSERT_TRUE(file->Write(model[1].constData(), 5000));
    model.push_back(bytesOf(77, 'S'));
    file = filer.Reserve(filer.RecordCount(), 77, allocated);
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(file->Write(model.back().constData(), 77));
    filer.Entry(filer.RecordCount() - 1)->type = 100;
    expectRecords(filer, model, "reserved");

    ASSERT_TRUE(finish(filer)) << qPrintable(filer.LastMessage());
    CFiler2 again;
    ASSERT_TRUE(again.OpenFile(path, GraphFile::MagicCurrent)) << qPrintable(again.LastMessage());
    EXPECT_EQ((again.m_flags & CFiler::FlagFullTable) != 0, c.fullTable);
    QByteArray head;
    ASSERT_TRUE(again.ReadHeaderData(head));
    EXPECT_EQ(head, QByteArray("head"));
    expectRecords(again, model, "reopened");

    // Edits in place of an opened file, and the table written back.
    ASSERT_TRUE(again.DeleteRecord(again.RecordCount() - 1));
    model.pop_back();
    ASSERT_TRUE(finish(again));
    CFiler2 third;
    ASSERT_TRUE(third.OpenFile(path, 0));
    expectRecords(third, model, "edited in place");
    EXPECT_EQ(QFileInfo(path).size(), std::max(third.RecordsEnd(), third.m_recordTableOffset + 4 + 124 * third.RecordCount()));
}

INSTANTIATE_TEST_SUITE_P(Forms, Filer2Edits,
                         ::testing::Values(TableCase{"full", true, 64, 20}, TableCase{"older", false, 64, 20},
                                           TableCase{"block16", true, 16, 20},
                                           TableCase{"tableBehind", true, 64, 1},
                                           TableCase{"olderTableBehind", false, 32, 0}),
                         [](const auto &info) { return std::string(info.param.name); });

// The older form puts a 4-byte offset first and everything else 4 bytes lower.
TEST(Filer2, OlderEntryFormOnDisk)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("old.mrd"));
    CFiler2 filer;
    ASSERT_TRUE(createFile(filer, path, false));
    ASSERT_EQ(filer.AddRecord("abc", 3, 7, 9), 0);
    filer.Entry(0)->column = 5;
    filer.Entry(0)->id = 0x1122334455667788ull;
    const std::uint64_t offset = filer.Entry(0)->offset;
    ASSERT_TRUE(finish(filer)) << qPrintable(filer.LastMessage());

    const QByteArray raw = fileBytes(path);
    CFiler2 reader;
    ASSERT_TRUE(reader.OpenFile(path, 0));
    const char *entry = raw.constData() + reader.m_recordTableOffset + 4;
    std::uint32_t words[5];
    std::memcpy(words, entry, sizeof words);
    EXPECT_EQ(words[0], offset);
    EXPECT_EQ(words[1], 3u);  // used
    EXPECT_EQ(words[2], 64u); // allocated
    EXPECT_EQ(words[3], 7u);  // type
    EXPECT_EQ(words[4], 9u);  // parameter
    std::int32_t column = 0;
    std::memcpy(&column, entry + 36, 4);
    EXPECT_EQ(column, 5);
    std::uint64_t id = 0;
    std::memcpy(&id, entry + 48, 8);
    EXPECT_EQ(id, 0x1122334455667788ull);
    // Read back into the full form.
    EXPECT_EQ(reader.Entry(0)->offset, offset);
    EXPECT_EQ(reader.Entry(0)->column, 5);
    EXPECT_EQ(reader.Entry(0)->id, 0x1122334455667788ull);
    EXPECT_EQ(reader.RecordType(0), 7);
    EXPECT_EQ(reader.RecordParam(0), 9);
}

TEST(Filer2, ReadRecordIntoSmallBufferGivesNeededSize)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("r.mrd"));
    CFiler2 filer;
    ASSERT_TRUE(createFile(filer, path, true));
    ASSERT_EQ(filer.AddRecord("0123456789", 10, 1, 0), 0);
    char small[4];
    std::int64_t size = sizeof small;
    EXPECT_FALSE(filer.ReadRecord(0, small, size));
    EXPECT_EQ(size, 10);
    char big[16] = {};
    size = sizeof big;
    EXPECT_TRUE(filer.ReadRecord(0, big, size));
    EXPECT_EQ(QByteArray(big, 10), QByteArray("0123456789"));
    EXPECT_EQ(filer.FindType(1), 0);
    EXPECT_EQ(filer.FindType(2), -1);
    EXPECT_EQ(filer.FindType(0, 1), -1);
}

// A save that is abandoned, or a file that is dropped unsaved, leaves the old
// file byte for byte and no temporary file behind.
TEST(Filer2, AbandonedSaveLeavesOldFile)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("keep.mrd"));
    {
        CFiler2 filer;
        ASSERT_TRUE(createFile(filer, path, true));
        ASSERT_EQ(filer.AddRecord("old", 3, 1, 0), 0);
        ASSERT_TRUE(finish(filer)) << qPrintable(filer.LastMessage());
    }
    const QByteArray old = fileBytes(path);
    ASSERT_FALSE(old.isEmpty());
    for (int way = 0; way < 2; ++way) {
        CFiler2 filer;
        ASSERT_TRUE(createFile(filer, path, true));
        ASSERT_EQ(filer.AddRecord("new!", 4, 1, 0), 0);
        if (way == 0)
            filer.TerminateFile();
        // way 1: the filer goes out of scope while still open
    }
    EXPECT_EQ(fileBytes(path), old);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("keep.mrd")});
}
