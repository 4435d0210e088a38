#include "graphdata/columnscan.h"
#include "graphdata/curvehold.h"
#include "graphdata/file/filer2.h"
#include "graphdata/file/graphfileformat.h"
#include "graphdata/file/graphfileload.h"
#include "graphdata/file/graphfilesave.h"
#include "support/languagestring.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <cerrno>
#include <cmath>
#include <functional>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#ifndef _WIN32
#include <unistd.h>
#endif

namespace {

class GraphFileTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { LoadLanguageFile(QStringLiteral(TARN_EN_LANG)); }
};

QByteArray fileBytes(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(f.write(bytes), bytes.size());
}

// Four columns of `rows` rows: an even X, a curve with invalid (2) and
// missing (0) rows, odd bit patterns, and a column longer than the rows.
std::vector<CGraphColumnPtr> makeColumns(int rows)
{
    std::vector<CGraphColumnPtr> columns;
    const char *names[] = {"Time", "V(out)", "bits", "long"};
    for (int c = 0; c < 4; ++c) {
        const int count = c == 3 ? rows + 5 : rows;
        CGraphColumnPtr column = CGraphColumnPtr::Adopt(CGraphColumn::Create(count, QString::fromLatin1(names[c])));
        for (int i = 0; i < count; ++i) {
            double v = 0;
            std::uint8_t valid = 1;
            switch (c) {
            case 0: v = i * 0.5; break;
            case 1:
                v = std::sin(i * 0.01) * 3;
                valid = i % 7 == 3 ? 2 : i % 11 == 5 ? 0 : 1;
                break;
            case 2: {
                const double odd[] = {-0.0, std::numeric_limits<double>::denorm_min(), 1e308, -1e-300, 1.0 / 3};
                v = odd[i % 5] * (1 + i);
                break;
            }
            default: v = -i; break;
            }
            column->m_values[i] = v;
            column->m_valid[i] = valid;
        }
        RecomputeExtents(column.Get(), count);
        FindOrder(column.Get(), 0, count - 1);
        column->m_kind = c == 2 ? 132u : 0u;
        column->m_attrFlags = c == 1 ? std::uint32_t(CGraphColumn::AttrThinned) : 0u;
        column->m_attrValue = std::uint32_t(c * 11);
        columns.push_back(column);
    }
    return columns;
}

// Two held groups; the X column is shared and has an even step, so it is
// stored as first, last and step.
struct Holds
{
    CCurveHoldList list;
    CGraphColumnPtr x, y1, y2;

    explicit Holds(int rows)
    {
        x = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows, QStringLiteral("X held")));
        y1 = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows, QStringLiteral("Y1 held")));
        y2 = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows, QStringLiteral("Y2 held")));
        for (int i = 0; i < rows; ++i) {
            x->m_values[i] = 1.5 + i * 0.1;
            y1->m_values[i] = std::exp(-i * 0.001);
            // A large first step: the column has no even step.
            y2->m_values[i] = i == 0 ? -1000.0 : double(i) * i;
            x->m_valid[i] = y2->m_valid[i] = 1;
            y1->m_valid[i] = i % 5 == 1 ? 2 : 1;
        }
        for (CGraphColumn *c : {x.Get(), y1.Get(), y2.Get()}) {
            FindOrder(c, 0, rows - 1);
            RecomputeExtents(c, rows);
            FindOrder(c, 0, rows - 1);
        }
        int existed = 0;
        CCurveHold_Set *older = list.NewGroup(501);
        older->m_label = QStringLiteral("first run");
        older->AddHold(1, QStringLiteral("V(out)"), QStringLiteral("at 25 C"), x.Get(), y1.Get(), existed);
        CCurveHold_Set *newer = list.NewGroup(502);
        newer->m_label = QStringLiteral("second run");
        newer->AddHold(2, QStringLiteral("I(load)"), QString(), x.Get(), y2.Get(), existed);
    }
};

QString savedFile(const QTemporaryDir &dir, int mode, int rows, std::vector<CGraphColumnPtr> &columns, Holds *holds,
                  const std::vector<QByteArray> &a1 = {}, const std::vector<QByteArray> &a2 = {})
{
    const QString path = dir.filePath(QStringLiteral("graph.mrd"));
    columns = makeColumns(rows);
    std::vector<CGraphColumn *> raw;
    for (auto &c : columns)
        raw.push_back(c.Get());
    QString message;
    EXPECT_EQ(SaveColumns(mode, path, raw.data(), int(raw.size()), rows, a1, a2, holds ? &holds->list : nullptr,
                          &message),
              1)
        << qPrintable(message);
    return path;
}

struct RoundTrip
{
    const char *name;
    int mode;
    int rows;
};

class GraphFileRoundTrip : public GraphFileTest, public ::testing::WithParamInterface<RoundTrip>
{
};

void expectSameHeldColumn(const CGraphColumn *read, const CGraphColumn *original, bool exact)
{
    ASSERT_NE(read, nullptr);
    ASSERT_EQ(read->m_count, original->m_count);
    EXPECT_EQ(read->m_name, original->m_name);
    EXPECT_EQ(read->m_id, original->m_id);
    EXPECT_EQ(read->m_orderFlags, original->m_orderFlags);
    for (int i = 0; i < original->m_count; ++i) {
        if (exact) {
            EXPECT_EQ(std::memcmp(&read->m_values[i], &original->m_values[i], 8), 0) << "row " << i;
            EXPECT_EQ(read->m_valid[i], original->m_valid[i]) << "row " << i;
        } else {
            EXPECT_NEAR(read->m_values[i], original->m_values[i], 1e-12 * (1 + std::fabs(original->m_values[i])))
                << "row " << i;
            EXPECT_EQ(read->m_valid[i], 1) << "row " << i;
        }
    }
}

} // namespace

// Every column comes back bit for bit with its validity bytes and fields,
// cut to the rows given; held curves and attachments come back too.
TEST_P(GraphFileRoundTrip, ColumnsHoldsAndAttachments)
{
    const RoundTrip &c = GetParam();
    QTemporaryDir dir;
    std::vector<CGraphColumnPtr> columns;
    Holds holds(std::max(c.rows, 1) < 2000 ? std::max(c.rows, 1) : 2000);
    const std::vector<QByteArray> a1 = {QByteArray("first block"), QByteArray()};
    const std::vector<QByteArray> a2 = {QByteArray(3000, 'z')};
    const QString path = savedFile(dir, c.mode, c.rows, columns, &holds, a1, a2);

    CGraphFileContent content;
    QString message;
    ASSERT_TRUE(ReadGraphFile(path, content, message)) << qPrintable(message);
    EXPECT_EQ(content.mode, c.mode == -1 ? 4 : c.mode);
    ASSERT_EQ(content.data.ColumnCount(), 4);
    EXPECT_EQ(content.data.RowCount(), c.rows);
    for (int k = 0; k < 4; ++k) {
        const CGraphColumn *read = content.data.GetColumn(k);
        const CGraphColumn *original = columns[std::size_t(k)].Get();
        EXPECT_EQ(read->m_name, original->m_name);
        EXPECT_EQ(read->m_id, original->m_id);
        EXPECT_NE(read->m_id, 0u);
        EXPECT_EQ(read->m_kind, original->m_kind);
        EXPECT_EQ(read->m_attrFlags, original->m_attrFlags);
        EXPECT_EQ(read->m_attrValue, original->m_attrValue);
        EXPECT_EQ(read->m_orderFlags, original->m_orderFlags);
        EXPECT_EQ(read->m_evenStep, original->m_evenStep);
        EXPECT_EQ(read->m_hasInvalid, original->m_hasInvalid);
        EXPECT_EQ(std::memcmp(&read->m_minStep, &original->m_minStep, 8), 0);
        ASSERT_GE(read->m_count, c.rows);
        if (c.rows > 0) {
            EXPECT_EQ(std::memcmp(read->m_values, original->m_values, 8 * std::size_t(c.rows)), 0) << "column " << k;
            EXPECT_EQ(std::memcmp(read->m_valid, original->m_valid, std::size_t(c.rows)), 0) << "column " << k;
            double min = 0, max = 0;
            bool invalid = false;
            RangeOf(original, 0, c.rows - 1, min, max, invalid);
            EXPECT_EQ(read->m_minValue, min) << "column " << k;
            EXPECT_EQ(read->m_maxValue, max) << "column " << k;
        }
    }
    EXPECT_EQ(content.attachments1, a1);
    EXPECT_EQ(content.attachments2, a2);

    ASSERT_TRUE(content.holds);
    ASSERT_EQ(content.holds->GetCount(), 2);
    for (int s = 0; s < 2; ++s) {
        const CCurveHold_Set *read = content.holds->GetAt(s);
        const CCurveHold_Set *original = holds.list.GetAt(s);
        EXPECT_EQ(read->m_name, original->m_name);
        EXPECT_EQ(read->m_label, original->m_label);
        EXPECT_EQ(read->m_ownerId, original->m_ownerId);
        ASSERT_EQ(read->GetCount(), 1);
        const CCurveHold *h = read->GetAt(0), *o = original->GetAt(0);
        EXPECT_EQ(h->m_label, o->m_label);
        EXPECT_EQ(h->m_label2, o->m_label2);
        EXPECT_EQ(h->m_curveIndex, o->m_curveIndex);
        EXPECT_EQ(h->m_id, o->m_id);
        expectSameHeldColumn(h->m_xColumn.Get(), o->m_xColumn.Get(), false);
        expectSameHeldColumn(h->m_yColumn.Get(), o->m_yColumn.Get(), true);
    }
    // One X column shared by both holds is read once.
    EXPECT_EQ(content.holds->GetAt(0)->GetAt(0)->m_xColumn.Get(), content.holds->GetAt(1)->GetAt(0)->m_xColumn.Get());
}

INSTANTIATE_TEST_SUITE_P(Modes, GraphFileRoundTrip,
                         ::testing::Values(RoundTrip{"mode2_rows0", 2, 0}, RoundTrip{"mode3_rows1", 3, 1},
                                           RoundTrip{"mode4_rows1", 4, 1}, RoundTrip{"mode4_rows0", 4, 0},
                                           RoundTrip{"newest_rows1000", -1, 1000},
                                           RoundTrip{"mode2_rows1000", 2, 1000},
                                           RoundTrip{"mode3_rows1000", 3, 1000},
                                           RoundTrip{"mode4_rows1000000", 4, 1000000},
                                           RoundTrip{"mode2_rows1000000", 2, 1000000}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(GraphFileTest, OtherModesAreRefused)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("no.mrd"));
    for (int mode : {0, 1, 5, -2}) {
        QString message;
        EXPECT_EQ(SaveColumns(mode, path, nullptr, 0, 0, {}, {}, nullptr, &message), 0) << mode;
        EXPECT_FALSE(QFile::exists(path)) << mode;
    }
}

// Wide names that trim to nothing or "_" keep only the length of the text
// they replaced; narrow names are kept as they are.
TEST_F(GraphFileTest, DirectoryNamesKeepTheirLength)
{
    const struct
    {
        int mode;
        const char *name;
        const char *read;
    } cases[] = {
        {4, "", "G"}, {4, "_", "Gr"}, {4, "  ", "Gra"}, {4, "          ", "Graph(1)"}, {4, "Vce", "Vce"},
        {3, "", ""}, {3, "_", "_"}, {2, "Ic [A]", "Ic [A]"},
    };
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("names.mrd"));
    for (const auto &c : cases) {
        CGraphColumnPtr column = CGraphColumnPtr::Adopt(CGraphColumn::Create(2, QString::fromLatin1(c.name)));
        CGraphColumn *raw = column.Get();
        QString message;
        ASSERT_EQ(SaveColumns(c.mode, path, &raw, 1, 2, {}, {}, nullptr, &message), 1) << qPrintable(message);
        CGraphFileContent content;
        ASSERT_TRUE(ReadGraphFile(path, content, message)) << qPrintable(message);
        EXPECT_EQ(content.data.GetColumn(0)->m_name, QString::fromLatin1(c.read)) << c.mode << " '" << c.name << "'";
    }
}

// Only the held columns asked for are read, and only their bytes.
TEST_F(GraphFileTest, LoadHeldColumnsReadsWhatIsWanted)
{
    QTemporaryDir dir;
    std::vector<CGraphColumnPtr> columns;
    Holds holds(3000);
    const QString path = savedFile(dir, 4, 10, columns, &holds);
    CHeldColumnStore store;
    QString message;
    ASSERT_EQ(LoadHeldColumns(4, path, store, {holds.y2->m_id}, message), 1) << qPrintable(message);
    ASSERT_EQ(store.size(), 1u);
    expectSameHeldColumn(store[holds.y2->m_id].Get(), holds.y2.Get(), true);
    EXPECT_EQ(store[holds.y2->m_id]->m_minValue, -1000.0);
    EXPECT_EQ(store[holds.y2->m_id]->m_maxValue, 2999.0 * 2999.0);
    EXPECT_EQ(LoadHeldColumns(3, path, store, {holds.x->m_id}, message), 0);
    EXPECT_EQ(store.size(), 1u);
}

// An even-step column of one row stores step 0; its value comes back.
TEST_F(GraphFileTest, OneRowEvenStepStoresStepZero)
{
    QTemporaryDir dir;
    std::vector<CGraphColumnPtr> columns;
    Holds holds(1);
    ASSERT_TRUE(holds.x->m_orderFlags & CGraphColumn::OrderEvenStep);
    const QString path = savedFile(dir, 4, 1, columns, &holds);
    CFiler2 filer;
    ASSERT_TRUE(filer.OpenFile(path, 0));
    int found = 0;
    for (int i = 0; i < filer.RecordCount(); ++i) {
        const CFiler2Entry *e = filer.Entry(i);
        if (e->type != GraphFile::RecordHeldColumn || e->id != holds.x->m_id)
            continue;
        ++found;
        double triple[3] = {-1, -1, -1};
        ASSERT_TRUE(filer.ReadRecordPart(i, e->used - 24, triple, 24));
        EXPECT_EQ(triple[0], 1.5);
        EXPECT_EQ(triple[1], 1.5);
        EXPECT_EQ(triple[2], 0.0);
    }
    EXPECT_EQ(found, 1);
}

// A column may come in several blocks, each at its first row.
TEST_F(GraphFileTest, HeldColumnInTwoBlocks)
{
    QTemporaryDir dir;
    std::vector<CGraphColumnPtr> columns;
    Holds holds(10);
    const QString path = savedFile(dir, 4, 0, columns, &holds);
    {
        CFiler2 filer;
        ASSERT_TRUE(filer.OpenFile(path, 0));
        int index = -1;
        for (int i = 0; i < filer.RecordCount(); ++i) {
            if (filer.Entry(i)->type == GraphFile::RecordHeldColumn && filer.Entry(i)->id == holds.y2->m_id)
                index = i;
        }
        ASSERT_GE(index, 0);
        std::int64_t size = 0;
        const QByteArray record(filer.ReadRecord(index, size), qsizetype(filer.RecordSize(index)));
        const CFiler2Entry entry = *filer.Entry(index);
        const int added = filer.AddRecord(record.constData(), record.size(), GraphFile::RecordHeldColumn, 0);
        ASSERT_GE(added, 0);
        CFiler2Entry *e = filer.Entry(added);
        e->id = entry.id;
        e->rows = entry.rows;
        e->firstRow = 10;
        ASSERT_TRUE(filer.WriteRecordOffsets() && filer.WriteFilerFileHeader() && filer.CloseFile());
    }
    CHeldColumnStore store;
    QString message;
    ASSERT_EQ(LoadHeldColumns(4, path, store, {holds.y2->m_id}, message), 1) << qPrintable(message);
    const CGraphColumn *column = store[holds.y2->m_id].Get();
    ASSERT_EQ(column->m_count, 20);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(column->m_values[i], i % 10 == 0 ? -1000.0 : double((i % 10) * (i % 10))) << i;
}

// Newer files and files of an unknown form are refused with their messages.
TEST_F(GraphFileTest, VersionChecks)
{
    const struct
    {
        const char *name;
        int offset;
        std::uint32_t value;
        const char *inMessage; // null: the file is read
    } cases[] = {
        {"newer major", 12, 27, "(27.0.0)"},
        {"newer minor", 16, 1, "(26.1.0)"},
        {"newer revision", 20, 3, "(26.0.3)"},
        {"other build", 24, 999, nullptr},
        {"no known flag", 8, 0x00100000, "It names itself \" Mirador"},
    };
    QTemporaryDir dir;
    std::vector<CGraphColumnPtr> columns;
    Holds holds(5);
    const QString path = savedFile(dir, 4, 5, columns, &holds);
    const QByteArray good = fileBytes(path);
    for (const auto &c : cases) {
        QByteArray bytes = good;
        std::memcpy(bytes.data() + c.offset, &c.value, 4);
        writeBytes(path, bytes);
        CGraphFileContent content;
        QString message;
        CHeldColumnStore store;
        QString heldMessage;
        const bool read = ReadGraphFile(path, content, message);
        const int held = LoadHeldColumns(4, path, store, {holds.x->m_id}, heldMessage);
        if (!c.inMessage) {
            EXPECT_TRUE(read) << c.name << qPrintable(message);
            EXPECT_EQ(held, 1) << c.name;
            continue;
        }
        EXPECT_FALSE(read) << c.name;
        EXPECT_EQ(held, 0) << c.name;
        for (const QString &m : {message, heldMessage}) {
            EXPECT_TRUE(m.contains(path)) << c.name << ": " << qPrintable(m);
            EXPECT_TRUE(m.contains(QString::fromLatin1(c.inMessage))) << c.name << ": " << qPrintable(m);
        }
    }
}

namespace {

struct Layout
{
    std::int64_t tableOffset = 0;
    int directory = -1, column = -1, held = -1;
};

Layout layoutOf(const QString &path, std::uint64_t heldId)
{
    Layout l;
    CFiler2 filer;
    if (!filer.OpenFile(path, 0))
        return l;
    l.tableOffset = filer.m_recordTableOffset;
    for (int i = 0; i < filer.RecordCount(); ++i) {
        const CFiler2Entry *e = filer.Entry(i);
        if (e->type == GraphFile::RecordDirectoryWide)
            l.directory = i;
        if (e->type == GraphFile::RecordColumn && l.column < 0)
            l.column = i;
        if (e->type == GraphFile::RecordHeldColumn && e->id == heldId)
            l.held = i;
    }
    return l;
}

std::int64_t entryAt(const Layout &l, int index, int field)
{
    return l.tableOffset + 4 + std::int64_t(index) * 124 + field;
}

template <typename T>
void put(QByteArray &bytes, std::int64_t at, T value)
{
    if (at >= 0 && at + qsizetype(sizeof value) <= bytes.size())
        std::memcpy(bytes.data() + at, &value, sizeof value);
}

template <typename T>
T get(const QByteArray &bytes, std::int64_t at)
{
    T value{};
    if (at >= 0 && at + qsizetype(sizeof value) <= bytes.size())
        std::memcpy(&value, bytes.constData() + at, sizeof value);
    return value;
}

} // namespace

// Foreign, cut and damaged files give a message that names the file; none
// crashes or asks for more memory than the file can pay for.
TEST_F(GraphFileTest, DamagedAndForeignFiles)
{
    QTemporaryDir dir;
    std::vector<CGraphColumnPtr> columns;
    Holds holds(50);
    const QString path = savedFile(dir, 4, 100, columns, &holds);
    const QByteArray good = fileBytes(path);
    const Layout l = layoutOf(path, holds.y1->m_id);
    ASSERT_GE(l.directory, 0);
    ASSERT_GE(l.column, 0);
    ASSERT_GE(l.held, 0);
    const std::int64_t directoryAt = get<std::int64_t>(good, entryAt(l, l.directory, 0));
    const std::int64_t heldAt = get<std::int64_t>(good, entryAt(l, l.held, 0));
    const std::uint32_t descriptorLength = get<std::uint32_t>(good, heldAt + 148);
    const std::int64_t heldCountAt = heldAt + 152 + 16 + 8 + 4 + 2 * (QStringLiteral("Y1 held").size() + 1);
    ASSERT_EQ(get<std::uint32_t>(good, heldCountAt), 50u);
    ASSERT_GT(descriptorLength, 40u);

    const struct
    {
        const char *name;
        std::function<QByteArray()> make;
        bool heldFails; // LoadHeldColumns of the held column fails too
    } cases[] = {
        {"zero length", [] { return QByteArray(); }, true},
        {"a PNG picture",
         [] { return QByteArray::fromHex("89504e470d0a1a0a0000000d4948445200000001000000010806000000") + QByteArray(300, 'p'); },
         true},
        {"a text file", [] { return QByteArray("Vce Ic\n1 2\n3 4\n").repeated(40); }, true},
        {"header only", [&] { return good.left(192); }, true},
        {"cut in the records", [&] { return good.left(good.size() / 2); }, true},
        {"cut by one byte", [&] { return good.left(good.size() - 1); }, true},
        {"huge record count", [&] { QByteArray b = good; put<std::int32_t>(b, 28, 0x7fffffff); return b; }, true},
        {"negative record count", [&] { QByteArray b = good; put<std::int32_t>(b, 28, -3); return b; }, true},
        {"table offset past the end",
         [&] { QByteArray b = good; put<std::int64_t>(b, 32, b.size() + 1000); return b; }, true},
        {"header end past the end", [&] { QByteArray b = good; put<std::int32_t>(b, 44, 0x7ffffff0); return b; }, true},
        {"record offset past the end",
         [&] { QByteArray b = good; put<std::uint64_t>(b, entryAt(l, l.column, 0), 1ull << 40); return b; }, true},
        {"records overlap",
         [&] { QByteArray b = good; put<std::uint64_t>(b, entryAt(l, l.column, 0), std::uint64_t(directoryAt)); return b; },
         true},
        {"data record claims more rows than it holds",
         [&] { QByteArray b = good; put<std::int32_t>(b, entryAt(l, l.column, 48), 0x7fffff00); return b; }, false},
        {"directory with a huge column count",
         [&] { QByteArray b = good; put<std::uint32_t>(b, directoryAt + 104, 0xfffffff0u); return b; }, false},
        {"held column with a huge count",
         [&] { QByteArray b = good; put<std::uint32_t>(b, heldCountAt, 0x7fff0000u); return b; }, true},
        {"held block at a huge first row",
         [&] { QByteArray b = good; put<std::int32_t>(b, entryAt(l, l.held, 44), 0x7ffff000); return b; }, true},
        {"held block at a negative first row",
         [&] { QByteArray b = good; put<std::int32_t>(b, entryAt(l, l.held, 44), -5); return b; }, true},
        {"descriptor longer than its record",
         [&] { QByteArray b = good; put<std::uint32_t>(b, heldAt + 148, 0x10000000u); return b; }, true},
    };
    for (const auto &c : cases) {
        writeBytes(path, c.make());
        CGraphFileContent content;
        QString message;
        EXPECT_FALSE(ReadGraphFile(path, content, message)) << c.name;
        EXPECT_TRUE(message.contains(path)) << c.name << ": " << qPrintable(message);
        EXPECT_EQ(content.data.ColumnCount(), 0) << c.name;
        CHeldColumnStore store;
        QString heldMessage;
        const int held = LoadHeldColumns(4, path, store, {holds.y1->m_id}, heldMessage);
        EXPECT_EQ(held == 0, c.heldFails) << c.name << ": " << qPrintable(heldMessage);
        if (c.heldFails) {
            EXPECT_TRUE(heldMessage.contains(path)) << c.name;
        }
    }
    writeBytes(path, good);
    CGraphFileContent content;
    QString message;
    EXPECT_TRUE(ReadGraphFile(path, content, message)) << qPrintable(message);
}

// Random damage anywhere: every read either succeeds or names the file.
TEST_F(GraphFileTest, RandomDamageNeverBreaksTheReader)
{
    QTemporaryDir dir;
    std::vector<CGraphColumnPtr> columns;
    Holds holds(40);
    const QString path = savedFile(dir, 4, 60, columns, &holds, {QByteArray("attached")});
    const QByteArray good = fileBytes(path);
    std::mt19937 random(1234);
    int refused = 0;
    for (int round = 0; round < 300; ++round) {
        QByteArray bytes = good;
        const int flips = 1 + int(random() % 8);
        for (int f = 0; f < flips; ++f) {
            // Most damage in the header, the table and the directory.
            const int span = random() % 2 ? 4096 : int(bytes.size());
            bytes[int(random() % std::uint32_t(std::min<int>(span, int(bytes.size()))))] = char(random());
        }
        writeBytes(path, bytes);
        CGraphFileContent content;
        QString message;
        if (!ReadGraphFile(path, content, message)) {
            ++refused;
            EXPECT_TRUE(message.contains(path)) << "round " << round << ": " << qPrintable(message);
        }
        CHeldColumnStore store;
        if (!LoadHeldColumns(4, path, store, {holds.x->m_id, holds.y1->m_id}, message)) {
            EXPECT_TRUE(message.contains(path)) << "round " << round;
        }
    }
    EXPECT_GT(refused, 0);
}

// A full disk: the save fails with the system's reason, and the old file
// stays as it was with no temporary file beside it.
TEST_F(GraphFileTest, FullDiskLeavesOldFile)
{
#ifdef _WIN32
    GTEST_SKIP() << "mounting a small file system needs a Unix system";
#else
    if (geteuid() != 0)
        GTEST_SKIP() << "mounting a small tmpfs needs root";
    QTemporaryDir dir;
    const QString mountPoint = dir.filePath(QStringLiteral("small"));
    ASSERT_TRUE(QDir().mkpath(mountPoint));
    QProcess mount;
    mount.start(QStringLiteral("mount"), {QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"),
                                          QStringLiteral("size=64k"), QStringLiteral("tmpfs"), mountPoint});
    if (!mount.waitForFinished(20000) || mount.exitStatus() != QProcess::NormalExit || mount.exitCode() != 0)
        GTEST_SKIP() << "mounting a small tmpfs was refused: " << mount.readAllStandardError().toStdString();
    struct Unmount
    {
        QString point;
        ~Unmount() { QProcess::execute(QStringLiteral("umount"), {point}); }
    } unmount{mountPoint};

    const QString path = mountPoint + QStringLiteral("/graph.mrd");
    std::vector<CGraphColumnPtr> small = makeColumns(10);
    std::vector<CGraphColumn *> raw;
    for (auto &c : small)
        raw.push_back(c.Get());
    QString message;
    ASSERT_EQ(SaveColumns(4, path, raw.data(), 4, 10, {}, {}, nullptr, &message), 1) << qPrintable(message);
    const QByteArray old = fileBytes(path);

    std::vector<CGraphColumnPtr> big = makeColumns(100000);
    raw.clear();
    for (auto &c : big)
        raw.push_back(c.Get());
    EXPECT_EQ(SaveColumns(4, path, raw.data(), 4, 100000, {}, {}, nullptr, &message), 0);
    EXPECT_TRUE(message.contains(path)) << qPrintable(message);
    EXPECT_TRUE(message.contains(QString::fromLocal8Bit(std::strerror(ENOSPC)))) << qPrintable(message);
    EXPECT_EQ(fileBytes(path), old);
    EXPECT_EQ(QDir(mountPoint).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("graph.mrd")});
    CGraphFileContent content;
    EXPECT_TRUE(ReadGraphFile(path, content, message)) << qPrintable(message);
    EXPECT_EQ(content.data.RowCount(), 10);
#endif
}
