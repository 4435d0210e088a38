#include "support/bufferio.h"
#include "support/myarrays.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

CBufferIO readerOver(const QByteArray &bytes)
{
    CBufferIO io(26, 0, 0, 0);
    io.LoadForReading(bytes);
    return io;
}

QByteArray le32(std::int32_t v)
{
    QByteArray b(4, '\0');
    std::memcpy(b.data(), &v, 4);
    return b;
}

} // namespace

TEST(BufferIO, ShortReadGivesWhatRemainsAndZeroes)
{
    CBufferIO io = readerOver(QByteArray("\x11\x22", 2));
    std::uint32_t v = 0xFFFFFFFFu;
    io.Transfer(v);
    EXPECT_EQ(v, 0x2211u);
    EXPECT_TRUE(io.AtEnd());
    // Further reads give zeroes and stay at the end.
    double d = 1.5;
    io.Transfer(d);
    EXPECT_EQ(d, 0.0);
    EXPECT_EQ(io.GetPosition(), 2);
}

TEST(BufferIO, RoundTripOfMixedValues)
{
    CBufferIO out(26, 0, 0, 7209);
    out.Reset(CBufferIO::ModeWrite, 0);
    std::int32_t i = -7;
    double d = 3.25;
    std::uint64_t w = 0x0123456789ABCDEFull;
    std::int16_t s = -2;
    QString text = QStringLiteral("µ-Ohm");
    CMyDoubleArray arr(3);
    arr[0] = 1; arr[1] = -2; arr[2] = 1e300;
    out.TransferVersion();
    out.Transfer(i).Transfer(d).Transfer(w).Transfer(s);
    out.TransferString(text);
    out.TransferArray(arr);

    CBufferIO in;
    in.LoadForReading(out.ToByteArray());
    std::int32_t i2 = 0;
    double d2 = 0;
    std::uint64_t w2 = 0;
    std::int16_t s2 = 0;
    QString text2;
    CMyDoubleArray arr2;
    in.TransferVersion();
    in.Transfer(i2).Transfer(d2).Transfer(w2).Transfer(s2);
    in.TransferString(text2);
    in.TransferArray(arr2);
    EXPECT_EQ(in.m_versionA, 26);
    EXPECT_EQ(in.m_versionD, 7209);
    EXPECT_EQ(i2, i);
    EXPECT_EQ(d2, d);
    EXPECT_EQ(w2, w);
    EXPECT_EQ(s2, s);
    EXPECT_EQ(text2, text);
    ASSERT_EQ(arr2.GetSize(), 3);
    EXPECT_EQ(arr2[2], 1e300);
    EXPECT_TRUE(in.AtEnd());
}

// Counted blocks: what a reader gets for each stored length and target size.
TEST(BufferIO, CountedBlockReadRules)
{
    struct Case {
        const char *name;
        QByteArray stored;
        int targetSize;
        int expectReturned;
        QByteArray expectTarget;
        int expectPosition;
    };
    const Case cases[] = {
        {"exact", le32(3) + "abc", 3, 3, "abc", 7},
        {"target smaller skips surplus", le32(4) + "abcdXY", 2, 4, "ab", 8},
        {"length passes end is cut", le32(10) + "abc", 8, 3, QByteArray("abc\0\0\0\0\0", 8), 7},
        {"length beyond end is zero", QByteArray("\x05\x00", 2), 4, 0, QByteArray(4, '\0'), 2},
        {"negative length is zero", le32(-5) + "abc", 3, 0, QByteArray(3, '\0'), 4},
        {"negative target reads nothing", le32(2) + "ab", -1, 2, QByteArray(), 6},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        CBufferIO io = readerOver(c.stored);
        QByteArray target(std::max(c.targetSize, 0), '\0');
        const int n = io.TransferBlock(target.data(), c.targetSize);
        EXPECT_EQ(n, c.expectReturned);
        EXPECT_EQ(target, c.expectTarget);
        EXPECT_EQ(io.GetPosition(), c.expectPosition);
    }
}

TEST(BufferIO, NestedBufferRoundTrip)
{
    CBufferIO inner;
    inner.Reset(CBufferIO::ModeWrite, 0);
    std::int32_t v = 42;
    inner.Transfer(v);

    CBufferIO outer;
    outer.Reset(CBufferIO::ModeWrite, 0);
    outer.TransferBlock(inner);
    std::int32_t tail = 9;
    outer.Transfer(tail);

    CBufferIO back = readerOver(outer.ToByteArray());
    CBufferIO got;
    back.TransferBlock(got);
    std::int32_t v2 = 0, tail2 = 0;
    got.Transfer(v2);
    back.Transfer(tail2);
    EXPECT_EQ(v2, 42);
    EXPECT_EQ(tail2, 9);
}

TEST(BufferIO, GrowRoundsUpByStepAndAddsOneStep)
{
    struct Case { int extra; int expectCapacity; };
    const Case cases[] = {{0, 256}, {1, 512}, {256, 512}, {257, 768}, {1000, 1280}};
    for (const Case &c : cases) {
        CBufferIO io;
        io.Grow(c.extra);
        EXPECT_EQ(io.GetCapacity(), c.expectCapacity) << "extra " << c.extra;
    }
}

TEST(BufferIO, GrowKeepsContentAndCursor)
{
    CBufferIO io;
    io.LoadForReading(QByteArray("abcdef"));
    char two[2];
    io.Transfer(two, 2);
    io.Grow(5000);
    char next = 0;
    io.Transfer(&next, 1);
    EXPECT_EQ(next, 'c');
}

TEST(BufferIO, SeekWithinAndBeyondCapacity)
{
    CBufferIO io;
    io.Reset(CBufferIO::ModeWrite, 100);
    EXPECT_TRUE(io.Seek(40));
    EXPECT_EQ(io.GetLength(), 40);
    EXPECT_EQ(io.GetPosition(), 0);
    EXPECT_FALSE(io.Seek(101));
    EXPECT_EQ(io.GetLength(), 100);
}

TEST(BufferIO, AddZeroesAppendsAndReportsLength)
{
    CBufferIO io;
    io.Reset(CBufferIO::ModeWrite, 0);
    std::int32_t v = -1;
    io.Transfer(v);
    EXPECT_EQ(io.AddZeroes(100), 104);
    const QByteArray bytes = io.ToByteArray();
    EXPECT_EQ(bytes.mid(4), QByteArray(100, '\0'));
}

TEST(BufferIO, StringForms)
{
    struct Case { std::uint16_t major; std::uint16_t minor; int expectBytes; };
    // "abc": UTF-16 form 4 + 8 bytes; the old narrow form 2 + 3 bytes.
    const Case cases[] = {{26, 0, 12}, {10, 0, 12}, {10, 0xFFFF, 5}, {9, 5, 5}};
    for (const Case &c : cases) {
        CBufferIO out(c.major, c.minor);
        out.Reset(CBufferIO::ModeWrite, 0);
        QString s = QStringLiteral("abc");
        out.TransferString(s);
        EXPECT_EQ(out.GetLength(), c.expectBytes) << c.major << "." << c.minor;
        CBufferIO in(c.major, c.minor);
        in.LoadForReading(out.ToByteArray());
        QString back;
        in.TransferString(back);
        EXPECT_EQ(back, s);
    }
}

TEST(BufferIO, StringLengthOverrunningTheStreamIsEmpty)
{
    CBufferIO io(26);
    io.LoadForReading(le32(50) + QByteArray("a\0b\0", 4));
    QString s = QStringLiteral("old");
    io.TransferString(s);
    EXPECT_TRUE(s.isEmpty());
    EXPECT_TRUE(io.AtEnd());
}

TEST(BufferIO, ArrayCountCutToWhatRemains)
{
    QByteArray bytes = le32(1000);
    const double one = 1.0;
    bytes.append(reinterpret_cast<const char *>(&one), 8);
    bytes.append("xyz");
    CBufferIO io;
    io.LoadForReading(bytes);
    CMyDoubleArray arr;
    io.TransferArray(arr);
    ASSERT_EQ(arr.GetSize(), 1);
    EXPECT_EQ(arr[0], 1.0);
}
