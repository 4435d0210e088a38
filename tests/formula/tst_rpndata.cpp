#include "formula/rpnbuffer.h"
#include "formula/rpndata.h"
#include "formula/rpndictionary.h"
#include "formula/rpnseams.h"
#include "formula/rpnuserfunction.h"
#include "support/xmlelement.h"

#include "formulatest.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <functional>

namespace {

using C = std::complex<double>;

// An object that counts how often it was destroyed.
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
    static_assert(sizeof(CRpnData) == 2 * sizeof(void *));
    CRpnData a(QStringLiteral("shared"));
    CRpnData b = a;
    EXPECT_TRUE(a.IsSameAs(b));
    EXPECT_EQ(a.GetRefs(), 2);
    b.SetInt(7);
    EXPECT_EQ(a.GetRefs(), 1);
    EXPECT_EQ(Describe(a), "STRING:shared");
    // Numbers are held in the handle: equal bits are the same value.
    CRpnData x(2.5), y(2.5), z(-0.0);
    EXPECT_TRUE(x.IsSameAs(y));
    EXPECT_FALSE(z.IsSameAs(CRpnData(0.0)));
    EXPECT_FALSE(CRpnData(1).IsSameAs(CRpnData(1.0)));

    // Changes through the payload are seen by every handle.
    CRpnData arr = RealItems({1, 2, 3});
    CRpnData alias = arr;
    alias.SetAt(1, CRpnData(20.0));
    EXPECT_EQ(arr.GetAt(1).GetDouble(), 20.0);
    alias = arr;
    arr = arr;
    EXPECT_EQ(arr.GetRefs(), 2);

    // A value may be replaced by one of its own elements or its own text.
    CRpnData nested;
    nested.SetArray(1);
    nested.SetAt(0, Text("inner"));
    nested = nested.GetItems()[0];
    nested.SetText(nested.GetTextValue());
    EXPECT_EQ(Describe(nested), "STRING:inner");

    // Setter rules: negative sizes count as 0, flags as each kind wants them.
    CRpnData v;
    v.SetArray(-4);
    EXPECT_EQ(v.GetSize(), 0);
    v.SetMatrix(2, -1);
    EXPECT_TRUE(v.IsMatrix());
    EXPECT_EQ(Describe(v), "ARRAY:{{},{}}");
    v.SetPart(&a);
    EXPECT_EQ(v.GetFlags(), RPN_FLAG_BORROWED);
    v.SetDouble(1000);
    v.SetDisplayExponent(3);
    EXPECT_EQ(Describe(v), "REAL:1k");
    v.SetDouble(5);
    EXPECT_EQ(v.GetFlags(), 0u);
}

TEST(RpnData, PayloadsComeFromTheThreadsFreeList)
{
    { CRpnData warm(QStringLiteral("w")); } // the list holds at least one payload now
    const int before = RpnPool::FreeCount();
    ASSERT_GT(before, 0);
    {
        CRpnData a(QStringLiteral("a"));
        CRpnData b = a; // a copy takes no payload
        CRpnData c = CRpnData::Add(a, b);
        EXPECT_EQ(RpnPool::FreeCount(), before - 2);
        CRpnData arr;
        arr.SetArray(10); // one for the array; empty cells and numbers take none
        for (int i = 0; i < 10; ++i)
            arr.SetAt(i, i % 2 ? CRpnData(i) : CRpnData(0.5 * i));
        CRpnData sum = CRpnData::Add(CRpnData(1.0), CRpnData(2));
        EXPECT_EQ(RpnPool::FreeCount(), before - 3);
        CRpnData z(std::complex<double>(1.0, 2.0)); // a complex number has one
        EXPECT_EQ(RpnPool::FreeCount(), before - 4);
    }
    EXPECT_EQ(RpnPool::FreeCount(), before);

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
    a.SetAt(3, CRpnData(9.0));
    a.SetRealAt(0, 5); // only for ARRAY_R
    EXPECT_EQ(Describe(a), "ARRAY:{1,2,3}");

    CRpnData r = RealBlock({1.5, 2.5});
    EXPECT_EQ(Describe(r.GetAt(0)), "REAL:1.5");
    r.SetAt(1, Text("7.25"));
    r.Resize(4);
    EXPECT_EQ(Describe(r), "ARRAY_R:1.5,7.25,0,0");
    r.Resize(1);
    r.Resize(3);
    EXPECT_EQ(Describe(r), "ARRAY_R:1.5,0,0");
    r.RemoveAt(0);
    EXPECT_EQ(Describe(r), "ARRAY_R:0,0");
    a.Resize(5);
    EXPECT_EQ(Describe(a), "ARRAY:{1,2,3,,}");
    a.RemoveAt(1);
    a.RemoveAt(7);
    a.Resize(2);
    EXPECT_EQ(Describe(a), "ARRAY:{1,3}");
    for (int i = 2; i < 40; ++i) { // growing one at a time
        a.Resize(i + 1);
        a.SetAt(i, CRpnData(i));
    }
    EXPECT_EQ(a.GetText().left(10), "{1,3,2,3,4");
    EXPECT_EQ(a.GetAt(39).GetInt() + a.GetAt(1).GetInt(), 42);

    EXPECT_EQ(Text("abc").GetSize(), 0);
    EXPECT_EQ(Empty(RPN_DICTIONARY).GetSize(), 0);
}

TEST(RpnData, ArraysOfTextsGrowShrinkAndFree)
{
    // Cells that hold payloads keep them, and their counts, through every
    // move of the block; each step resizes the array and checks all cells.
    const int sizes[] = {1, 2, 3, 4, 7, 12, 40, 41, 9, 0, 5, 100};
    CRpnData outside(QStringLiteral("kept"));
    CRpnData a;
    a.SetArray(0);
    int filled = 0;
    for (const int size : sizes) {
        a.Resize(size);
        for (int i = filled; i < size; ++i)
            a.SetAt(i, i % 3 == 0 ? outside : CRpnData(QString::number(i)));
        filled = size;
        for (int i = 0; i < size; ++i)
            ASSERT_EQ(a.GetAt(i).GetText(), i % 3 == 0 ? QStringLiteral("kept") : QString::number(i))
                << "cell " << i << " at size " << size;
        EXPECT_EQ(outside.GetRefs(), 1 + (size + 2) / 3) << "at size " << size;
    }
    // Freeing the array gives back its payload and those of its own texts.
    const int before = RpnPool::FreeCount();
    const int ownTexts = 100 - (100 + 2) / 3;
    a.SetNull();
    EXPECT_EQ(RpnPool::FreeCount(), before + 1 + ownTexts);
    EXPECT_EQ(outside.GetRefs(), 1);
    // Texts inside arrays inside an array go as well.
    CRpnData outer;
    outer.SetArray(3);
    for (int i = 0; i < 3; ++i) {
        CRpnData inner;
        inner.SetArray(2);
        inner.SetAt(0, CRpnData(QStringLiteral("x")));
        inner.SetAt(1, outside);
        outer.SetAt(i, inner);
    }
    EXPECT_EQ(outside.GetRefs(), 4);
    const int beforeNested = RpnPool::FreeCount();
    outer.SetNull();
    EXPECT_EQ(RpnPool::FreeCount(), beforeNested + 1 + 3 * 2);
    EXPECT_EQ(outside.GetRefs(), 1);
}

// The direct accessors read a value of their own kind and give nothing for
// any other: numbers live in the handle, so reading one as a payload must not
// follow its bits.
struct AccessorCase
{
    const char *name;
    std::function<CRpnData()> make;
};

class RpnDataAccessors : public ::testing::TestWithParam<AccessorCase>
{
};

TEST_P(RpnDataAccessors, GiveNothingForOtherKinds)
{
    const CRpnData v = GetParam().make();
    const std::uint32_t k = v.GetKind();
    const auto owns = [k](std::initializer_list<std::uint32_t> kinds) {
        return std::find(kinds.begin(), kinds.end(), k) != kinds.end();
    };
    EXPECT_EQ(v.GetItems() != nullptr, owns({RPN_ARRAY}));
    EXPECT_EQ(v.GetRealData() != nullptr, owns({RPN_ARRAY_R}));
    EXPECT_EQ(v.GetDictionary() != nullptr, owns({RPN_DICTIONARY}));
    EXPECT_EQ(v.GetFormula(), nullptr);
    EXPECT_EQ(v.GetFunction(), nullptr);
    EXPECT_EQ(v.GetObject() != nullptr, owns({RPN_DOCUMENT}));
    EXPECT_EQ(v.GetPointer() != nullptr, owns({RPN_DOCUMENT, RPN_POINTER, RPN_TARNPART}));
    EXPECT_EQ(v.GetXml() != nullptr, owns({RPN_XML}));
    if (k == RPN_STRING) {
        EXPECT_EQ(v.GetTextValue(), v.GetText());
    } else {
        EXPECT_TRUE(v.GetTextValue().isEmpty());
    }
    if (k != RPN_COMPLEX) {
        EXPECT_EQ(v.GetImagValue(), 0.0);
    }
    if (k != RPN_INT) {
        EXPECT_EQ(v.GetIntValue(), 0);
    }
    if (k != RPN_REAL && k != RPN_COMPLEX) {
        EXPECT_EQ(v.GetRealValue(), 0.0);
    }
    // Out of its own kind the value reads as no array at all.
    if (!v.IsArray()) {
        EXPECT_EQ(v.GetSize(), 0);
    }
}

namespace {
int g_documentDeaths = 0;
int g_pointerTarget = 0;
} // namespace

INSTANTIATE_TEST_SUITE_P(
    EachKind, RpnDataAccessors,
    ::testing::Values(AccessorCase{"null", [] { return CRpnData(); }},
                      AccessorCase{"zero", [] { return CRpnData(0.0); }},
                      AccessorCase{"real", [] { return CRpnData(-2.5e300); }},
                      AccessorCase{"nan", [] { return CRpnData(std::nan("")); }},
                      AccessorCase{"int", [] { return CRpnData(-7); }},
                      AccessorCase{"intMax", [] { return CRpnData(2147483647); }},
                      AccessorCase{"emptyText", [] { return Text(""); }},
                      AccessorCase{"text", [] { return Text("abc"); }},
                      AccessorCase{"complex", [] { return CRpnData(C(1.5, -2.0)); }},
                      AccessorCase{"array", [] { return RealItems({1, 2}); }},
                      AccessorCase{"realArray", [] { return RealBlock({1, 2}); }},
                      AccessorCase{"dictionary", [] { return Empty(RPN_DICTIONARY); }},
                      AccessorCase{"pointer",
                                   [] {
                                       CRpnData v;
                                       v.SetPointer(&g_pointerTarget);
                                       return v;
                                   }},
                      AccessorCase{"part",
                                   [] {
                                       CRpnData v;
                                       v.SetPart(&g_pointerTarget);
                                       return v;
                                   }},
                      AccessorCase{"document",
                                   [] {
                                       CRpnData v;
                                       v.SetDocument(new CountedObject(g_documentDeaths));
                                       return v;
                                   }},
                      AccessorCase{"xml",
                                   [] {
                                       const CXmlElementPtr e = CXmlElementPtr::Create(QStringLiteral("a"));
                                       return CRpnData(e.Get());
                                   }}),
    [](const ::testing::TestParamInfo<AccessorCase> &info) { return std::string(info.param.name); });

TEST(RpnData, DictionaryAccessAndScopes)
{
    CRpnData d = Empty(RPN_DICTIONARY);
    d.DictSet(QStringLiteral("Key"), CRpnData(1.0));
    EXPECT_EQ(d.DictGet(QStringLiteral("Key")).GetDouble(), 1.0);
    EXPECT_TRUE(d.DictGet(QStringLiteral("KEY")).IsNull()); // exact keys by default
    CRpnData notDict(3.0);
    notDict.DictSet(QStringLiteral("x"), CRpnData(1.0));
    EXPECT_TRUE(notDict.DictGet(QStringLiteral("x")).IsNull());

    // With the case switch off keys fold, and the first spelling is kept.
    CMapStringToRpnData scope;
    scope.m_caseSensitive = false;
    scope.SetAt(QStringLiteral("Alpha"), CRpnData(1));
    scope.SetAt(QStringLiteral("ALPHA"), CRpnData(2));
    CRpnData v;
    EXPECT_TRUE(scope.Lookup(QStringLiteral("alpha"), v));
    EXPECT_EQ(v.GetInt(), 2);
    EXPECT_EQ(scope.GetCount(), 1);
    EXPECT_EQ(scope.GetSpelling(QStringLiteral("aLpHa")), "Alpha");

    // Find walks up the parents; Lookup stays in its own scope.
    CMapStringToRpnData inner;
    inner.m_parent = &scope;
    ASSERT_NE(inner.Find(QStringLiteral("ALPHA")), nullptr);
    EXPECT_EQ(inner.Find(QStringLiteral("ALPHA"))->GetInt(), 2);
    EXPECT_FALSE(inner.Lookup(QStringLiteral("ALPHA"), v));
    EXPECT_EQ(inner.Find(QStringLiteral("nowhere")), nullptr);

    // Removal keeps the order of the rest.
    for (const char *k : {"a", "b", "c", "d"})
        inner.SetAt(QString::fromLatin1(k), CRpnData(1));
    EXPECT_TRUE(inner.RemoveKey(QStringLiteral("b")));
    EXPECT_FALSE(inner.RemoveKey(QStringLiteral("b")));
    inner.FindHere(QStringLiteral("d"))->SetInt(4);
    EXPECT_EQ(inner.GetKeyAt(1), "c");
    EXPECT_EQ(inner.GetValueAt(2).GetInt(), 4);
}

TEST(RpnData, Conversions)
{
    CRpnData nested;
    nested.SetArray(2);
    nested.SetAt(0, RealBlock({-2.995}));
    int anything = 0;
    CRpnData pointer, nullPointer;
    pointer.SetPointer(&anything);
    nullPointer.SetPointer(nullptr);
    struct Case {
        CRpnData value;
        double real;
        int integer;
        int checkedOk;
    };
    const Case cases[] = {
        // Integers are biased by one hundredth toward the sign.
        {CRpnData(2.995), 2.995, 3, 1}, {CRpnData(-2.995), -2.995, -3, 1}, {CRpnData(2.98), 2.98, 2, 1},
        {CRpnData(0.995), 0.995, 1, 1}, {CRpnData(-0.995), -0.995, -1, 1}, {CRpnData(0.98), 0.98, 0, 1},
        {CRpnData(1e300), 1e300, 2147483647, 1}, {CRpnData(std::nan("")), std::nan(""), 0, 1},
        {CRpnData(-7), -7, -7, 1}, {CRpnData(C(2.995, 4)), 2.995, 3, 1},
        // Texts: the number reader for reals, plain decimals for integers.
        {Text("12.5kOhm"), 12500, 12, 1}, {Text("3.9 rubbish"), 3.9, 3, 0},
        {Text("  42"), 0, 42, 0}, {Text("-17x"), -17, -17, 0}, {Text("0x1F"), 31, 0, 1},
        {Text("abc"), 0, 0, 0}, {Text(""), 0, 0, 0},
        // Arrays give their first element; other kinds 0 or whether they are set.
        {RealBlock({2.995, 9}), 2.995, 3, 0}, {nested, -2.995, -3, 0}, {Empty(RPN_ARRAY), 0, 0, 0},
        {CRpnData(), 0, 0, 0}, {Empty(RPN_DICTIONARY), 0, 0, 0}, {pointer, 1, 1, 0}, {nullPointer, 0, 0, 0},
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
        EXPECT_TRUE(ok || checked == 0.0);
    }

    struct ComplexCase {
        CRpnData value;
        C expect;
        int checkedOk;
    };
    const ComplexCase complexCases[] = {
        {CRpnData(C(1, -2)), {1, -2}, 1}, {CRpnData(3.0), {3, 0}, 1}, {CRpnData(4), {4, 0}, 1},
        {Text("1.5, 2"), {1.5, 2}, 1}, {Text("2k 3m"), {2000, 0.003}, 1}, {Text("1 2 3"), {1, 2}, 0},
        {Text("x"), {0, 0}, 0}, {RealItems({5, 6}), {5, 0}, 0}, {RealBlock({7}), {7, 0}, 0},
    };
    for (const ComplexCase &c : complexCases) {
        EXPECT_EQ(c.value.GetComplex(), c.expect) << Describe(c.value);
        int ok = -1;
        const C checked = c.value.GetComplexChecked(ok);
        EXPECT_EQ(ok, c.checkedOk) << Describe(c.value);
        EXPECT_TRUE(ok ? checked == c.expect : checked == C()) << Describe(c.value);
    }
}

TEST(RpnData, TruthOfConditions)
{
    struct Case {
        CRpnData value;
        bool truth;
        bool wasArray;
    };
    const Case cases[] = {
        {CRpnData(), false, false}, {CRpnData(0.0), false, false}, {CRpnData(-0.5), true, false},
        {CRpnData(0), false, false}, {CRpnData(2), true, false}, {CRpnData(C(0, 1)), true, false},
        {CRpnData(C(0, 0)), false, false}, {Text(""), false, false}, {Text("0"), true, false},
        {Empty(RPN_DICTIONARY), true, false}, {Empty(RPN_ARRAY), false, true},
        {RealItems({1, 0}), false, true}, {RealItems({1, 2}), true, true},
        {RealBlock({3, 0.5}), true, true}, {RealBlock({3, 0}), false, true}, {Empty(RPN_CURVE), false, true},
    };
    for (const Case &c : cases) {
        bool wasArray = !c.wasArray;
        EXPECT_EQ(c.value.IsTrue(&wasArray), c.truth) << Describe(c.value);
        EXPECT_EQ(wasArray, c.wasArray) << Describe(c.value);
    }
}

TEST(RpnData, DeepCopyIsIndependent)
{
    CRpnData inner = RealItems({1, 2});
    CRpnData outer;
    outer.SetArray(3);
    outer.SetAt(0, inner);
    outer.SetAt(1, Text("shared"));
    outer.SetAt(2, CRpnData(4.0));
    outer.SetMatrixFlag(true);
    CRpnData copy;
    copy.DeepCopy(outer);
    EXPECT_TRUE(copy.IsMatrix());
    // Kinds that are never changed in place are shared, the others copied.
    EXPECT_TRUE(copy.GetItems()[1].IsSameAs(outer.GetItems()[1]));
    EXPECT_TRUE(copy.GetItems()[2].IsSameAs(outer.GetItems()[2]));
    inner.SetAt(0, CRpnData(100.0));
    EXPECT_EQ(Describe(copy), "ARRAY:{{1,2},shared,4}");

    CRpnData dict = Empty(RPN_DICTIONARY);
    dict.DictSet(QStringLiteral("a"), RealItems({1}));
    CRpnData dictCopy;
    dictCopy.DeepCopy(dict);
    dict.DictGet(QStringLiteral("a")).SetAt(0, CRpnData(9.0));
    EXPECT_EQ(Describe(dictCopy), "DICTIONARY:{{a,{1}}}");

    // A curve leaves the target as it was; a copy of itself changes nothing.
    CRpnData target(1.0);
    target.DeepCopy(Empty(RPN_CURVE));
    target.DeepCopy(target);
    EXPECT_EQ(Describe(target), "REAL:1");
    // The source may be an element of the target.
    outer.DeepCopy(outer.GetItems()[0]);
    EXPECT_EQ(Describe(outer), "ARRAY:{100,2}");
}

TEST(RpnData, CopyRange)
{
    struct Case {
        int start;
        int length;
        const char *cells;
        const char *text;
    };
    const Case cases[] = {
        {0, -1, "1,2,3,4,5", "abcde"}, {1, 2, "2,3", "bc"},
        {-1, 3, "3,4,5", "cde"}, // the last three
        {-1, -1, "", ""}, {-3, 2, "1,2", "ab"}, // other negative starts count as 0
        {3, 10, "4,5", "de"}, {9, 1, "", ""}, {2, -5, "", ""},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << c.start << "," << c.length);
        CRpnData a, b, t;
        a.CopyRange(RealItems({1, 2, 3, 4, 5}), c.start, c.length);
        b.CopyRange(RealBlock({1, 2, 3, 4, 5}), c.start, c.length);
        t.CopyRange(Text("abcde"), c.start, c.length);
        EXPECT_EQ(Describe(a), std::string("ARRAY:{") + c.cells + "}");
        EXPECT_EQ(Describe(b), std::string("ARRAY_R:") + c.cells);
        EXPECT_EQ(Describe(t), std::string("STRING:") + c.text);
    }
    // Nested arrays are copied in depth; a part stays borrowed; a curve gives null.
    CRpnData outer;
    outer.SetArray(1);
    outer.SetAt(0, RealItems({7}));
    CRpnData copy;
    copy.CopyRange(outer, 0, -1);
    outer.GetItems()[0].SetAt(0, CRpnData(8.0));
    EXPECT_EQ(Describe(copy), "ARRAY:{{7}}");
    CRpnData part;
    part.SetPart(&copy);
    copy.CopyRange(part, 0, -1);
    EXPECT_TRUE(copy.GetKind() == RPN_TARNPART && !copy.IsSameAs(part) && copy.GetPointer() == part.GetPointer());
    copy.CopyRange(Empty(RPN_CURVE), 0, -1);
    EXPECT_TRUE(copy.IsNull());
}

TEST(RpnData, SerialisationRoundTrips)
{
    CRpnData dict = Empty(RPN_DICTIONARY);
    dict.DictSet(QStringLiteral("name"), Text("value"));
    dict.DictSet(QStringLiteral("list"), RealItems({1, 2}));
    CRpnData matrix;
    matrix.SetMatrix(2, 2);
    matrix.GetItems()[1].SetAt(1, CRpnData(C(1, -1)));
    CRpnData prefixed(2200.0);
    prefixed.SetDisplayExponent(3);
    CRpnData nested;
    nested.SetArray(3);
    nested.SetAt(0, dict);
    nested.SetAt(1, RealBlock({0.5, -1e-300, 3}));
    nested.SetAt(2, CRpnData(-12));

    const CRpnData values[] = {
        CRpnData(), CRpnData(3.25), prefixed, CRpnData(-2147483647 - 1), Text("tab\tand \xc3\xa9"),
        CRpnData(C(1.5, -2.5)), RealBlock({}), matrix, nested, dict,
    };
    for (const CRpnData &v : values) {
        CRpnBuffer out(10, 0);
        out.Reset(CBufferIO::ModeWrite, 0);
        CRpnData(v).Serialize(out);
        CRpnBuffer in(10, 0);
        in.LoadForReading(out.ToByteArray());
        CRpnData back(99.0);
        back.Serialize(in);
        EXPECT_TRUE(in.AtEnd());
        EXPECT_EQ(back.GetFlags(), v.GetFlags());
        EXPECT_EQ(Describe(back) + back.GetText(RPN_TEXT_QUOTES).toStdString(),
                  Describe(v) + v.GetText(RPN_TEXT_QUOTES).toStdString());
    }
}

TEST(RpnData, SerialisationLayoutAndDamage)
{
    // Kind, flags, then the content.
    CRpnBuffer out(10, 0);
    out.Reset(CBufferIO::ModeWrite, 0);
    CRpnData(0x01020304).Serialize(out);
    EXPECT_EQ(out.ToByteArray(), QByteArray::fromHex("03000000" "00000000" "04030201"));

    // A function is written as its name and read back as nothing.
    CRpnUserFunction f;
    f.m_name = QStringLiteral("f");
    CRpnData function;
    function.SetFunction(&f);
    out.Reset(CBufferIO::ModeWrite, 0);
    function.Serialize(out);
    CRpnBuffer in(10, 0);
    in.LoadForReading(out.ToByteArray());
    CRpnData back(1.0);
    back.Serialize(in);
    EXPECT_TRUE(back.IsNull());
    EXPECT_TRUE(in.AtEnd());

    // Counts beyond the bytes left, nesting too deep, a buffer run short.
    in.LoadForReading(QByteArray::fromHex("1f000000" "00000000" "ffffff7f" "01000000"));
    back.Serialize(in);
    EXPECT_EQ(Describe(back), "ARRAY:{}");
    in.LoadForReading(QByteArray::fromHex("1f000000" "00000000" "01000000").repeated(5000));
    back.Serialize(in);
    EXPECT_EQ(back.GetKind(), RPN_ARRAY);
    in.LoadForReading(QByteArray::fromHex("0100"));
    back.Serialize(in);
    EXPECT_TRUE(back.IsNull());
}

TEST(RpnData, XmlValuesCountTheirElements)
{
    CXmlElementPtr a = CreateElement(QStringLiteral("a"));
    CXmlElementPtr b = CreateElement(QStringLiteral("b"));
    {
        CRpnData va(a.Get());
        CRpnData alias = va; // shares the payload, not the element count
        CRpnData vb;
        vb.SetXml(b.Get());
        EXPECT_EQ(a->RefCount(), 2);
        EXPECT_TRUE(va.GetText().contains(QLatin1StringView("<a></a>")));

        CRpnData empty(static_cast<CXmlElement *>(nullptr));
        EXPECT_EQ(empty.GetXml(), CXmlElement::Null());
        EXPECT_EQ(CRpnData::Equals(empty, CRpnData()), 1);
        EXPECT_EQ(CRpnData::Equals(va, CRpnData()), 0);
        EXPECT_EQ(CRpnData::Equals(va, alias), 1);
        EXPECT_EQ(CRpnData::Equals(va, vb), 0);

        // Joined as elements: a nameless element holds both; joining again
        // spreads its children, and the empty element adds nothing.
        const CRpnData ab = CRpnData::Add(va, vb);
        const CRpnData abab = CRpnData::Add(CRpnData::Add(ab, empty), ab);
        QStringList names;
        for (int i = 0; i < abab.GetXml()->GetChildCount(); ++i)
            names << abab.GetXml()->GetChildAt(i)->GetName();
        EXPECT_EQ(names.join(u','), "a,b,a,b");
    }
    EXPECT_EQ(a->RefCount(), 1);
    EXPECT_EQ(b->RefCount(), 1);
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
                CRpnData v(QStringLiteral("text"));
                stale = CRpnDataAccess::Payload(v);
            }
            volatile std::uint32_t kind = stale->m_kind;
            (void)kind;
        },
        "use-after-poison");
}
#endif
