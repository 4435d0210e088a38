#include "support/bufferio.h"
#include "support/bytebuffers.h"
#include "support/myarrays.h"
#include "support/ptrstack.h"
#include "support/stringarrays.h"

#include <gtest/gtest.h>

#include <new>
#include <vector>

TEST(MyDoubleArray, ZeroedAndResizedKeepingValues)
{
    CMyDoubleArray a(4);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(a[i], 0.0);
    a[3] = 7;
    a.SetSize(6);
    EXPECT_EQ(a[3], 7.0);
    EXPECT_EQ(a[5], 0.0);
    a.SetSize(2);
    EXPECT_EQ(a.GetSize(), 2);
}

TEST(MyDoubleArray, BorrowedMemoryIsLeftAlone)
{
    std::vector<double> storage{1, 2, 3};
    {
        CMyDoubleArray a(storage.data(), 3, true);
        EXPECT_TRUE(a.IsBorrowed());
        a[1] = 20;
        CMyDoubleArray copy(a); // a copy owns its block
        EXPECT_FALSE(copy.IsBorrowed());
        copy[0] = 99;
    }
    // Still ours, unfreed (the address sanitizer would catch a free), and
    // changed only through the borrowing array.
    EXPECT_EQ(storage, (std::vector<double>{1, 20, 3}));

    CMyDoubleArray b;
    b.Borrow(storage.data(), 3);
    b.SetSize(5); // growing copies into an owned block
    EXPECT_FALSE(b.IsBorrowed());
    EXPECT_EQ(b[1], 20.0);
    b[1] = -1;
    EXPECT_EQ(storage[1], 20.0);
}

TEST(MyDoubleArray, ImpossibleSizeFailsByTheAllocator)
{
    EXPECT_THROW(CMyDoubleArray(-1), std::bad_alloc);
}

TEST(MyDoubleArray2D, RowMajorAndZeroed)
{
    CMyDoubleArray2D m(2, 3);
    EXPECT_EQ(m.GetAt(1, 2), 0.0);
    m.SetAt(1, 0, 5);
    EXPECT_EQ(m.GetData()[3], 5.0);
    CMyDoubleArray2D c = m;
    m.SetAt(1, 0, 6);
    EXPECT_EQ(c.GetAt(1, 0), 5.0);
}

TEST(IntAndWordArrays, CopyAndResize)
{
    CMyIntArray a(2);
    a[1] = -3;
    CMyIntArray b = a;
    b.SetSize(3);
    EXPECT_EQ(b[1], -3);
    EXPECT_EQ(b[2], 0);
    CMyWord64Array w(1);
    w[0] = ~0ull;
    CMyWord64Array w2(std::move(w));
    EXPECT_EQ(w2[0], ~0ull);
    EXPECT_EQ(w.GetSize(), 0);
}

TEST(StringAArrayA, SetAtGrowAndSerialize)
{
    CStringAArrayA a;
    a.SetAtGrow(3, "four");
    EXPECT_EQ(a.GetSize(), 4);
    EXPECT_EQ(a[0], "");
    a.SetAt(0, "one");
    a.InsertAt(1, std::string("x\0y", 3));

    CBufferIO out;
    out.Reset(CBufferIO::ModeWrite, 0);
    a.Serialize(out);
    // count, then each string's length and bytes
    EXPECT_EQ(out.GetLength(), 4 + (4 + 3) + (4 + 3) + 4 + 4 + (4 + 4));

    CBufferIO in;
    in.LoadForReading(out.ToByteArray());
    CStringAArrayA b;
    b.Serialize(in);
    ASSERT_EQ(b.GetSize(), 5);
    EXPECT_EQ(b[1], std::string("x\0y", 3));
    EXPECT_EQ(b[4], "four");
}

TEST(StringAArrayA, TruncatedStreamDoesNotOverread)
{
    CBufferIO in;
    QByteArray bytes("\xff\xff\xff\x7f", 4); // a huge count and nothing behind it
    in.LoadForReading(bytes);
    CStringAArrayA b;
    b.Serialize(in);
    EXPECT_EQ(b.GetSize(), 0);
}

TEST(MapStringAToStringA, LookupAndSerialize)
{
    CMapStringAToStringA m(0);
    EXPECT_EQ(m.GetBlockSize(), 10);
    m.SetAt("Unit", "V");
    m["Name"] = "Vds";
    std::string v;
    EXPECT_TRUE(m.Lookup("Unit", v));
    EXPECT_EQ(v, "V");
    EXPECT_FALSE(m.Lookup("unit", v));

    CBufferIO out;
    out.Reset(CBufferIO::ModeWrite, 0);
    m.Serialize(out);
    CBufferIO in;
    in.LoadForReading(out.ToByteArray());
    CMapStringAToStringA back;
    back.Serialize(in);
    EXPECT_EQ(back.GetCount(), 2);
    ASSERT_NE(back.Find("Name"), nullptr);
    EXPECT_EQ(*back.Find("Name"), "Vds");
}

TEST(ByteBuffers, GrowBufferKeepsContent)
{
    CGrowBuffer g(4);
    std::memcpy(g.Reserve(4), "abcd", 4);
    unsigned char *same = g.Reserve(2);
    EXPECT_EQ(same, g.GetData());
    unsigned char *bigger = g.Reserve(100);
    EXPECT_EQ(std::memcmp(bigger, "abcd", 4), 0);
    EXPECT_EQ(g.GetCapacity(), 100);
}

TEST(ByteBuffers, DynamicBufferAppends)
{
    CDynamicBuffer d;
    for (int i = 0; i < 1000; ++i)
        d.AppendText("ab");
    EXPECT_EQ(d.GetLength(), 2000);
    EXPECT_EQ(d.GetData()[1999], 'b');
}

TEST(PtrStack, LastInFirstOut)
{
    CPtrStack s;
    int a = 0, b = 0;
    s.Push(&a);
    s.Push(&b);
    EXPECT_EQ(s.Pop(), &b);
    EXPECT_EQ(s.Top(), &a);
    EXPECT_EQ(s.Pop(), &a);
    EXPECT_EQ(s.Pop(), nullptr);
}
