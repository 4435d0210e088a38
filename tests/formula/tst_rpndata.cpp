#include "formula/rpnbuffer.h"
#include "formula/rpndata.h"
#include "formula/rpndictionary.h"
#include "formula/rpnseams.h"
#include "formula/rpnuserfunction.h"

#include "formulatest.h"

#include <gtest/gtest.h>
#include <cmath>

namespace {

CRpnData text(const char *s)
{
    return CRpnData(QString::fromUtf8(s));
}

// A document that counts how often it was destroyed.
class CountedObject : public CRpnObject
{
public:
    explicit CountedObject(int &deaths) : m_deaths(deaths) {}
    ~CountedObject() override { ++m_deaths; }

private:
    int &m_deaths;
};

} // namespace

TEST(RpnData, CopiesShareAndSettersDetach)
{
    CRpnData a(2.5);
    CRpnData b = a;
    EXPECT_TRUE(a.IsSameAs(b));
    EXPECT_EQ(a.GetRefs(), 2);
    b.SetInt(7);
    EXPECT_FALSE(a.IsSameAs(b));
    EXPECT_EQ(a.GetRefs(), 1);
    EXPECT_EQ(a.GetDouble(), 2.5);
    EXPECT_EQ(b.GetKind(), RPN_INT);

    // Changes through the payload are seen by every handle.
    CRpnData arr = RealItems({1, 2, 3});
    CRpnData alias = arr;
    alias.SetAt(1, CRpnData(20.0));
    EXPECT_EQ(arr.GetAt(1).GetDouble(), 20.0);

    // Self-assignment and assignment between sharers keep the payload alive.
    alias = arr;
    arr = arr;
    EXPECT_EQ(arr.GetRefs(), 2);

    // A value may be replaced by one of its own elements.
    CRpnData nested;
    nested.SetArray(1);
    nested.SetAt(0, text("inner"));
    nested = nested.GetItems()[0];
    EXPECT_EQ(Describe(nested), "STRING:inner");
    nested.SetText(nested.GetTextValue());
    EXPECT_EQ(nested.GetTextValue(), "inner");
}

TEST(RpnData, DefaultIsNullAndSettersMakeTheirKinds)
{
    CRpnData v;
    EXPECT_TRUE(v.IsNull());
    struct Case {
        std::function<void(CRpnData &)> set;
        std::uint32_t kind;
        std::uint32_t flags;
        int size;
    };
    int dummy = 0;
    const Case cases[] = {
        {[](CRpnData &d) { d.SetInt(3); }, RPN_INT, 0, 0},
        {[](CRpnData &d) { d.SetDouble(1.5); }, RPN_REAL, 0, 0},
        {[](CRpnData &d) { d.SetComplex(1, 2); }, RPN_COMPLEX, 0, 0},
        {[](CRpnData &d) { d.SetText("narrow"); }, RPN_STRING, 0, 0},
        {[](CRpnData &d) { d.SetDictionary(); }, RPN_DICTIONARY, 0, 0},
        {[](CRpnData &d) { d.SetArray(-4); }, RPN_ARRAY, 0, 0},
        {[](CRpnData &d) { d.SetArray(3); }, RPN_ARRAY, 0, 3},
        {[](CRpnData &d) { d.SetRealArray(5); }, RPN_ARRAY_R, 0, 5},
        {[](CRpnData &d) { d.SetMatrix(2, -1); }, RPN_ARRAY, RPN_FLAG_MATRIX, 2},
        {[&](CRpnData &d) { d.SetPointer(&dummy); }, RPN_POINTER, 0, 0},
        {[&](CRpnData &d) { d.SetPart(&dummy); }, RPN_TARNPART, RPN_FLAG_BORROWED, 0},
        {[](CRpnData &d) { d.SetFunction(nullptr); }, RPN_FUNCTION, RPN_FLAG_BORROWED, 0},
        {[](CRpnData &d) { d.SetFormulaBorrowed(nullptr); }, RPN_FORMULA, RPN_FLAG_BORROWED, 0},
        {[](CRpnData &d) { d.SetCurve(nullptr); }, RPN_CURVE, 0, 0},
        {[](CRpnData &d) { d.SetNull(); }, RPN_NULL, 0, 0},
    };
    for (const Case &c : cases) {
        c.set(v);
        EXPECT_EQ(v.GetKind(), c.kind);
        EXPECT_EQ(v.GetFlags(), c.flags) << c.kind;
        EXPECT_EQ(v.GetSize(), c.size) << c.kind;
    }
    // SetDouble clears a display exponent.
    v.SetDouble(1000);
    v.SetDisplayExponent(3);
    EXPECT_EQ(v.GetDisplayExponent(), 3);
    v.SetDouble(5);
    EXPECT_EQ(v.GetFlags(), 0u);
}

TEST(RpnData, OwnedObjectsAreFreedWithTheLastHandle)
{
    int deaths = 0;
    {
        CRpnData doc;
        doc.SetDocument(new CountedObject(deaths));
        CRpnData other = doc;
        doc.SetNull();
        EXPECT_EQ(deaths, 0);
        EXPECT_EQ(other.GetDouble(), 1.0); // a set document reads as 1
        CRpnData table;
        table.SetTable(new CountedObject(deaths));
    }
    EXPECT_EQ(deaths, 2);
}

TEST(RpnData, ArrayAccess)
{
    CRpnData a = RealItems({1, 2, 3});
    // Out of range gives the array itself, not null.
    EXPECT_TRUE(a.GetAt(5).IsSameAs(a));
    EXPECT_TRUE(a.GetAt(-1).IsSameAs(a));
    EXPECT_TRUE(a.GetAt(1).IsSameAs(a.GetItems()[1]));
    a.SetAt(3, CRpnData(9.0)); // ignored
    EXPECT_EQ(a.GetSize(), 3);

    CRpnData r = RealBlock({1.5, 2.5});
    CRpnData cell = r.GetAt(0);
    EXPECT_EQ(Describe(cell), "REAL:1.5");
    r.SetAt(1, text("7.25"));
    EXPECT_EQ(r.GetRealData()[1], 7.25);
    a.SetRealAt(0, 5); // only for ARRAY_R
    EXPECT_EQ(a.GetAt(0).GetDouble(), 1.0);

    // Resize keeps the head and fills with zeros or nulls.
    r.Resize(4);
    EXPECT_EQ(Describe(r), "ARRAY_R:1.5,7.25,0,0");
    r.Resize(1);
    r.Resize(3);
    EXPECT_EQ(Describe(r), "ARRAY_R:1.5,0,0");
    a.Resize(5);
    EXPECT_EQ(Describe(a), "ARRAY:{1,2,3,,}");
    a.Resize(2);
    EXPECT_EQ(Describe(a), "ARRAY:{1,2}");

    // RemoveAt shifts down; out of range is ignored.
    CRpnData b = RealItems({1, 2, 3, 4});
    b.RemoveAt(1);
    b.RemoveAt(7);
    EXPECT_EQ(Describe(b), "ARRAY:{1,3,4}");
    r.RemoveAt(0);
    EXPECT_EQ(Describe(r), "ARRAY_R:0,0");

    // Growing one at a time keeps what was there.
    CRpnData grow;
    grow.SetArray(0);
    for (int i = 0; i < 50; ++i) {
        grow.Resize(i + 1);
        grow.SetAt(i, CRpnData(i));
    }
    EXPECT_EQ(grow.GetAt(49).GetInt(), 49);
    EXPECT_EQ(grow.GetAt(0).GetInt(), 0);

    EXPECT_EQ(text("abc").GetSize(), 0);
    CRpnData dict;
    dict.SetDictionary();
    EXPECT_EQ(dict.GetSize(), 0);
}

TEST(RpnData, DictionaryAccessAndCaseSwitch)
{
    CRpnData d;
    d.SetDictionary();
    d.DictSet(QStringLiteral("Key"), CRpnData(1.0));
    EXPECT_EQ(d.DictGet(QStringLiteral("Key")).GetDouble(), 1.0);
    EXPECT_TRUE(d.DictGet(QStringLiteral("KEY")).IsNull()); // exact keys by default
    CRpnData notDict(3.0);
    notDict.DictSet(QStringLiteral("x"), CRpnData(1.0)); // ignored
    EXPECT_TRUE(notDict.DictGet(QStringLiteral("x")).IsNull());

    CMapStringToRpnData scope;
    scope.m_caseSensitive = false;
    scope.SetAt(QStringLiteral("Alpha"), CRpnData(1));
    scope.SetAt(QStringLiteral("ALPHA"), CRpnData(2));
    EXPECT_EQ(scope.GetCount(), 1);
    CRpnData v;
    EXPECT_TRUE(scope.Lookup(QStringLiteral("alpha"), v));
    EXPECT_EQ(v.GetInt(), 2);
    EXPECT_EQ(scope.GetKeyAt(0), "ALPHA");
    EXPECT_EQ(scope.GetSpelling(QStringLiteral("aLpHa")), "Alpha");

    // Find walks up the parents; Lookup stays in its own scope.
    CMapStringToRpnData inner;
    inner.m_parent = &scope;
    inner.SetAt(QStringLiteral("b"), CRpnData(5));
    ASSERT_NE(inner.Find(QStringLiteral("ALPHA")), nullptr);
    EXPECT_EQ(inner.Find(QStringLiteral("ALPHA"))->GetInt(), 2);
    EXPECT_FALSE(inner.Lookup(QStringLiteral("ALPHA"), v));
    EXPECT_EQ(inner.Find(QStringLiteral("nowhere")), nullptr);

    // Removal keeps the order of the rest.
    CMapStringToRpnData m;
    for (const char *k : {"a", "b", "c", "d"})
        m.SetAt(QString::fromLatin1(k), CRpnData(1));
    EXPECT_TRUE(m.RemoveKey(QStringLiteral("b")));
    EXPECT_FALSE(m.RemoveKey(QStringLiteral("b")));
    ASSERT_EQ(m.GetCount(), 3);
    EXPECT_EQ(m.GetKeyAt(1), "c");
    ASSERT_NE(m.FindHere(QStringLiteral("d")), nullptr);
    m.FindHere(QStringLiteral("d"))->SetInt(4);
    EXPECT_EQ(m.GetValueAt(2).GetInt(), 4);
}

TEST(RpnData, Conversions)
{
    struct Case {
        CRpnData value;
        double real;
        int integer;
        int checkedOk;
    };
    CRpnData empty;
    CRpnData emptyArray;
    emptyArray.SetArray(0);
    CRpnData nested;
    nested.SetArray(2);
    nested.SetAt(0, RealBlock({-2.995}));
    CRpnData pointer;
    int anything = 0;
    pointer.SetPointer(&anything);
    CRpnData nullPointer;
    nullPointer.SetPointer(nullptr);
    CRpnData dict;
    dict.SetDictionary();
    const Case cases[] = {
        {CRpnData(2.995), 2.995, 3, 1},
        {CRpnData(-2.995), -2.995, -3, 1},
        {CRpnData(2.98), 2.98, 2, 1},
        {CRpnData(0.995), 0.995, 1, 1},
        {CRpnData(-0.995), -0.995, -1, 1},
        {CRpnData(0.98), 0.98, 0, 1},
        {CRpnData(1e300), 1e300, 2147483647, 1},
        {CRpnData(std::nan("")), std::nan(""), 0, 1},
        {CRpnData(-7), -7, -7, 1},
        {CRpnData(std::complex<double>(2.995, 4)), 2.995, 3, 1},
        {text("12.5kOhm"), 12500, 12, 1},
        {text("3.9 rubbish"), 3.9, 3, 0},
        {text("  42"), 0, 42, 0},          // the number reader takes no leading blank
        {text("-17x"), -17, -17, 0},
        {text("0x1F"), 31, 0, 1},           // the integer reading has no hexadecimal
        {text("abc"), 0, 0, 0},
        {text(""), 0, 0, 0},
        {RealBlock({2.995, 9}), 2.995, 3, 0},
        {nested, -2.995, -3, 0},
        {emptyArray, 0, 0, 0},
        {empty, 0, 0, 0},
        {dict, 0, 0, 0},
        {pointer, 1, 1, 0},
        {nullPointer, 0, 0, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(Describe(c.value));
        if (std::isnan(c.real))
            EXPECT_TRUE(std::isnan(c.value.GetDouble()));
        else
            EXPECT_DOUBLE_EQ(c.value.GetDouble(), c.real);
        EXPECT_EQ(c.value.GetInt(), c.integer);
        int ok = -1;
        const double checked = c.value.GetDoubleChecked(ok);
        EXPECT_EQ(ok, c.checkedOk);
        if (!ok) {
            EXPECT_EQ(checked, 0.0);
        }
    }
}

TEST(RpnData, ComplexConversions)
{
    struct Case {
        CRpnData value;
        std::complex<double> expect;
        int checkedOk;
    };
    const Case cases[] = {
        {CRpnData(std::complex<double>(1, -2)), {1, -2}, 1},
        {CRpnData(3.0), {3, 0}, 1},
        {CRpnData(4), {4, 0}, 1},
        {text("1.5, 2"), {1.5, 2}, 1},
        {text("2k 3m"), {2000, 0.003}, 1},
        {text("1 2 3"), {1, 2}, 0},
        {text("x"), {0, 0}, 0},
        {RealItems({5, 6}), {5, 0}, 0},
        {RealBlock({7}), {7, 0}, 0},
        {CRpnData(), {0, 0}, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(Describe(c.value));
        EXPECT_EQ(c.value.GetComplex(), c.expect);
        int ok = -1;
        const std::complex<double> checked = c.value.GetComplexChecked(ok);
        EXPECT_EQ(ok, c.checkedOk);
        if (ok) {
            EXPECT_EQ(checked, c.expect);
        }
    }
}

TEST(RpnData, TruthOfConditions)
{
    CRpnData curve;
    curve.SetCurve(nullptr);
    CRpnData dict;
    dict.SetDictionary();
    CRpnData emptyArray;
    emptyArray.SetArray(0);
    struct Case {
        CRpnData value;
        bool truth;
        bool wasArray;
    };
    const Case cases[] = {
        {CRpnData(), false, false},
        {CRpnData(0.0), false, false},
        {CRpnData(-0.5), true, false},
        {CRpnData(0), false, false},
        {CRpnData(2), true, false},
        {CRpnData(std::complex<double>(0, 1)), true, false},
        {CRpnData(std::complex<double>(0, 0)), false, false},
        {text(""), false, false},
        {text("0"), true, false},
        {dict, true, false},
        {emptyArray, false, true},
        {RealItems({1, 0}), false, true},
        {RealItems({1, 2}), true, true},
        {RealBlock({3, 0.5}), true, true},
        {RealBlock({3, 0}), false, true},
        {curve, false, true},
    };
    for (const Case &c : cases) {
        bool wasArray = !c.wasArray;
        EXPECT_EQ(c.value.IsTrue(&wasArray), c.truth) << Describe(c.value);
        EXPECT_EQ(wasArray, c.wasArray) << Describe(c.value);
    }
}

TEST(RpnData, DeepCopyIsIndependent)
{
    CRpnData inner = RealBlock({1, 2});
    CRpnData outer;
    outer.SetArray(3);
    outer.SetAt(0, inner);
    outer.SetAt(1, text("shared"));
    outer.SetAt(2, CRpnData(4.0));
    outer.SetMatrixFlag(true);

    CRpnData copy;
    copy.DeepCopy(outer);
    EXPECT_FALSE(copy.IsSameAs(outer));
    EXPECT_TRUE(copy.IsMatrix());
    EXPECT_FALSE(copy.GetItems()[0].IsSameAs(inner)); // changeable kinds are copied
    EXPECT_TRUE(copy.GetItems()[1].IsSameAs(outer.GetItems()[1]));
    EXPECT_TRUE(copy.GetItems()[2].IsSameAs(outer.GetItems()[2]));
    inner.SetRealAt(0, 100);
    EXPECT_EQ(Describe(copy), "ARRAY:{1,2,shared,4}"); // a real block prints without braces

    CRpnData dict;
    dict.SetDictionary();
    dict.DictSet(QStringLiteral("a"), RealItems({1}));
    CRpnData dictCopy;
    dictCopy.DeepCopy(dict);
    dict.DictGet(QStringLiteral("a")).SetAt(0, CRpnData(9.0));
    EXPECT_EQ(dictCopy.DictGet(QStringLiteral("a")).GetAt(0).GetDouble(), 1.0);

    CRpnData s = text("abc");
    CRpnData sCopy;
    sCopy.DeepCopy(s);
    EXPECT_FALSE(sCopy.IsSameAs(s));
    EXPECT_EQ(sCopy.GetTextValue(), "abc");

    // Numbers share; a curve leaves the target as it was; self-copy is a no-op.
    CRpnData n(5.0);
    CRpnData nCopy;
    nCopy.DeepCopy(n);
    EXPECT_TRUE(nCopy.IsSameAs(n));
    CRpnData curve;
    curve.SetCurve(nullptr);
    CRpnData target(1.0);
    target.DeepCopy(curve);
    EXPECT_EQ(Describe(target), "REAL:1");
    target.DeepCopy(target);
    EXPECT_EQ(Describe(target), "REAL:1");

    // Copying out of an element of the target itself.
    outer.DeepCopy(outer.GetItems()[0]);
    EXPECT_EQ(Describe(outer), "ARRAY_R:100,2");
}

TEST(RpnData, CopyRange)
{
    struct Case {
        int start;
        int length;
        const char *array;
        const char *text;
    };
    const Case cases[] = {
        {0, -1, "{1,2,3,4,5}", "abcde"},
        {1, 2, "{2,3}", "bc"},
        {-1, 3, "{3,4,5}", "cde"},    // the last three
        {-1, -1, "{}", ""},
        {-3, 2, "{1,2}", "ab"},       // other negative starts count as 0
        {3, 10, "{4,5}", "de"},
        {9, 1, "{}", ""},
        {2, -5, "{}", ""},
    };
    const CRpnData array = RealItems({1, 2, 3, 4, 5});
    const CRpnData block = RealBlock({1, 2, 3, 4, 5});
    const CRpnData s = text("abcde");
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << c.start << "," << c.length);
        CRpnData a, b, t;
        a.CopyRange(array, c.start, c.length);
        b.CopyRange(block, c.start, c.length);
        t.CopyRange(s, c.start, c.length);
        EXPECT_EQ(a.GetText(RPN_TEXT_BRACES).toStdString(), c.array);
        EXPECT_EQ(b.GetKind(), RPN_ARRAY_R);
        EXPECT_EQ(("{" + b.GetText() + "}").toStdString(), c.array);
        EXPECT_EQ(t.GetTextValue().toStdString(), c.text);
    }
    // Nested arrays are copied in depth; a part stays borrowed; a curve gives null.
    CRpnData outer;
    outer.SetArray(1);
    outer.SetAt(0, RealItems({7}));
    CRpnData copy;
    copy.CopyRange(outer, 0, -1);
    outer.GetItems()[0].SetAt(0, CRpnData(8.0));
    EXPECT_EQ(Describe(copy), "ARRAY:{{7}}");
    int part = 0;
    CRpnData p;
    p.SetPart(&part);
    copy.CopyRange(p, 0, -1);
    EXPECT_EQ(copy.GetKind(), RPN_TARNPART);
    EXPECT_FALSE(copy.IsSameAs(p));
    EXPECT_EQ(copy.GetPointer(), &part);
    CRpnData curve;
    curve.SetCurve(nullptr);
    copy.CopyRange(curve, 0, -1);
    EXPECT_TRUE(copy.IsNull());
}

TEST(RpnData, Names)
{
    EXPECT_EQ(CRpnData::KindName(RPN_ARRAY_R), "ARRAY_R");
    EXPECT_EQ(CRpnData::KindName(RPN_CURVE), "CURVE");
    EXPECT_EQ(CRpnData::KindName(RPN_TABLE), "");
    EXPECT_EQ(CRpnData::KindName(77), "");
    EXPECT_EQ(CRpnData::TypeName(RPN_CURVE), "Graph");
    EXPECT_EQ(CRpnData::TypeName(RPN_ARRAY_R), "Array");
    EXPECT_EQ(CRpnData::TypeName(RPN_REAL), "Real");
    EXPECT_EQ(CRpnData::TypeName(RPN_NULL), CRpnData::TypeName(77));
    EXPECT_FALSE(CRpnData::TypeName(RPN_NULL).isEmpty());
}

TEST(RpnData, SerialisationRoundTrips)
{
    CRpnData dict;
    dict.SetDictionary();
    dict.DictSet(QStringLiteral("name"), text("value"));
    dict.DictSet(QStringLiteral("list"), RealItems({1, 2}));
    CRpnData matrix;
    matrix.SetMatrix(2, 2);
    matrix.GetItems()[1].SetAt(1, CRpnData(std::complex<double>(1, -1)));
    CRpnData prefixed(2200.0);
    prefixed.SetDisplayExponent(3);
    CRpnData nested;
    nested.SetArray(3);
    nested.SetAt(0, dict);
    nested.SetAt(1, RealBlock({0.5, -1e-300, 3}));
    nested.SetAt(2, CRpnData(-12));

    const CRpnData values[] = {
        CRpnData(),
        CRpnData(3.25),
        prefixed,
        CRpnData(-2147483647 - 1),
        text("tab\tand \xc3\xa9"),
        CRpnData(std::complex<double>(1.5, -2.5)),
        RealBlock({}),
        matrix,
        nested,
        dict,
    };
    for (const CRpnData &v : values) {
        SCOPED_TRACE(Describe(v));
        CRpnBuffer out(10, 0);
        out.Reset(CBufferIO::ModeWrite, 0);
        CRpnData copy = v;
        copy.Serialize(out);
        CRpnBuffer in(10, 0);
        in.LoadForReading(out.ToByteArray());
        CRpnData back(99.0);
        back.Serialize(in);
        EXPECT_TRUE(in.AtEnd());
        EXPECT_EQ(back.GetKind(), v.GetKind());
        EXPECT_EQ(back.GetFlags(), v.GetFlags());
        EXPECT_EQ(back.GetText(RPN_TEXT_BRACES | RPN_TEXT_QUOTES), v.GetText(RPN_TEXT_BRACES | RPN_TEXT_QUOTES));
    }
}

TEST(RpnData, SerialisationOfKindsWithoutContent)
{
    // Words and layout: kind, flags, then the content.
    CRpnBuffer out(10, 0);
    out.Reset(CBufferIO::ModeWrite, 0);
    CRpnData i(0x01020304);
    i.Serialize(out);
    const QByteArray bytes = out.ToByteArray();
    EXPECT_EQ(bytes, QByteArray::fromHex("03000000" "00000000" "04030201"));

    CRpnUserFunction f;
    f.m_name = QStringLiteral("f");
    int anything = 0;
    CRpnData function, pointer;
    function.SetFunction(&f);
    pointer.SetPointer(&anything);
    for (CRpnData *v : {&function, &pointer}) {
        CRpnBuffer w(10, 0);
        w.Reset(CBufferIO::ModeWrite, 0);
        v->Serialize(w);
        CRpnBuffer r(10, 0);
        r.LoadForReading(w.ToByteArray());
        CRpnData back(1.0);
        back.Serialize(r);
        EXPECT_TRUE(back.IsNull());
        EXPECT_TRUE(r.AtEnd()); // the function's name is read past
    }
}

TEST(RpnData, DamagedBuffersReadSafely)
{
    // An array that promises more than the buffer holds, and deep nesting.
    QByteArray bytes = QByteArray::fromHex("1f000000" "00000000" "ffffff7f" "01000000");
    CRpnBuffer in(10, 0);
    in.LoadForReading(bytes);
    CRpnData v;
    v.Serialize(in);
    EXPECT_EQ(v.GetKind(), RPN_ARRAY);
    EXPECT_LE(v.GetSize(), 1);

    QByteArray deep;
    for (int i = 0; i < 5000; ++i)
        deep += QByteArray::fromHex("1f000000" "00000000" "01000000");
    in.LoadForReading(deep);
    v.Serialize(in);
    EXPECT_EQ(v.GetKind(), RPN_ARRAY);

    in.LoadForReading(QByteArray::fromHex("0100"));
    v.Serialize(in);
    EXPECT_TRUE(v.IsNull());
}

TEST(RpnData, HandlesAreOnePointerAndPayloadsAreReused)
{
    static_assert(sizeof(CRpnData) == sizeof(void *));
    { CRpnData warm(0.0); } // the thread's free list holds at least one payload now
    const int before = RpnPool::FreeCount();
    ASSERT_GT(before, 0);
    {
        CRpnData a(1.0);
        CRpnData b = a; // a copy takes no payload
        EXPECT_EQ(RpnPool::FreeCount(), before - 1);
        CRpnData c = CRpnData::Add(a, b);
        EXPECT_EQ(RpnPool::FreeCount(), before - 2);
    }
    EXPECT_EQ(RpnPool::FreeCount(), before);
    // An array takes one payload for itself and one for each element.
    {
        CRpnData arr;
        arr.SetArray(10);
        EXPECT_EQ(RpnPool::FreeCount(), before - 11);
    }
    EXPECT_EQ(RpnPool::FreeCount(), before);
}

namespace {

// Stands in for the XML document classes: an element is a counter.
struct FakeElement
{
    int refs = 1;
    QString name;
};

class FakeXml : public CRpnXmlSupport
{
public:
    static FakeElement *of(CXmlElement *e) { return reinterpret_cast<FakeElement *>(e); }
    static CXmlElement *as(FakeElement *e) { return reinterpret_cast<CXmlElement *>(e); }

    CXmlElement *EmptyElement() override { return as(&empty); }
    void AddRef(CXmlElement *e) override { ++of(e)->refs; }
    void Release(CXmlElement *e) override
    {
        if (--of(e)->refs == 0) {
            ++freed;
            delete of(e);
        }
    }
    QString GetText(CXmlElement *e) override { return QStringLiteral("<%1>").arg(of(e)->name); }
    CXmlElement *Concatenate(CXmlElement *a, CXmlElement *b) override
    {
        return as(new FakeElement{1, of(a)->name + of(b)->name});
    }

    FakeElement empty{1000, QString()};
    int freed = 0;
};

} // namespace

TEST(RpnData, XmlValuesThroughTheSeam)
{
    FakeXml xml;
    SetRpnXmlSupport(&xml);
    {
        auto *a = new FakeElement{1, QStringLiteral("a")};
        CRpnData va(FakeXml::as(a)); // counts the element
        EXPECT_EQ(a->refs, 2);
        CRpnData alias = va; // shares the payload, not the element count
        EXPECT_EQ(a->refs, 2);
        xml.Release(FakeXml::as(a)); // our own reference
        EXPECT_EQ(va.GetText(), "<a>");
        EXPECT_TRUE(va.IsTrue());

        CRpnData empty(static_cast<CXmlElement *>(nullptr));
        EXPECT_EQ(empty.GetXml(), xml.EmptyElement());
        EXPECT_EQ(xml.empty.refs, 1000); // never counted
        EXPECT_EQ(CRpnData::Equals(empty, CRpnData()), 1);
        EXPECT_EQ(CRpnData::Equals(va, CRpnData()), 0);
        EXPECT_EQ(CRpnData::Equals(va, alias), 1);

        auto *b = new FakeElement{1, QStringLiteral("b")};
        CRpnData vb;
        vb.SetXml(FakeXml::as(b));
        xml.Release(FakeXml::as(b));
        const CRpnData joined = CRpnData::Add(va, vb);
        EXPECT_EQ(joined.GetText(), "<ab>");
        EXPECT_EQ(FakeXml::of(joined.GetXml())->refs, 1);
    }
    EXPECT_EQ(xml.freed, 3);
    EXPECT_EQ(xml.empty.refs, 1000);
    SetRpnXmlSupport(nullptr);
}

#ifdef RPN_POOL_ASAN
// A payload back on the free list is poisoned: touching it through a stale
// pointer is reported although the pool keeps the memory.
TEST(RpnDataDeathTest, UseAfterReleaseIsReported)
{
    EXPECT_DEATH(
        {
            CRpnPayload *stale = nullptr;
            {
                CRpnData v(1.0);
                stale = CRpnDataAccess::Payload(v);
            }
            volatile std::uint32_t kind = stale->m_kind;
            (void)kind;
        },
        "use-after-poison");
}
#endif
