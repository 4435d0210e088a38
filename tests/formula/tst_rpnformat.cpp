#include "formula/rpndata.h"
#include "formula/rpndictionary.h"
#include "formula/rpnnumber.h"
#include "formula/rpnuserfunction.h"

#include "formulatest.h"

#include <gtest/gtest.h>
#include <cmath>

TEST(RpnNumber, ParseNumber)
{
    struct Case {
        const char *text;
        double value;
        int consumed;
        int exponent;
    };
    const Case cases[] = {
        // Hexadecimal: at most ten characters, no suffix.
        {"0x1F", 31, 4, 0}, {"0XfFk", 255, 4, 0}, {"0xFFFFFFFFFF", 4294967295.0, 10, 0},
        {"0x", 0, 1, 0}, {"0xg", 0, 1, 0},
        // Plain numbers and their exponents; D is an exponent letter too.
        {"42", 42, 2, 0}, {"-1.5", -1.5, 4, 0}, {"+.5", 0.5, 3, 0}, {"5.", 5, 2, 0},
        {".", 0, 0, 0}, {"-", 0, 0, 0}, {"abc", 0, 0, 0}, {"", 0, 0, 0},
        {"1e3", 1000, 3, 0}, {"1E-2", 0.01, 4, 0}, {"1e", 1, 1, 0}, {"1e+", 1, 1, 0},
        {"1D3", 1000, 3, 0}, {"2.5d-1", 0.25, 6, 0},
        {"1e999", HUGE_VAL, 5, 0}, {"-1e999", -HUGE_VAL, 6, 0}, {"1e-999", 0, 6, 0},
        {"1e99999999999999999999", HUGE_VAL, 22, 0}, {"0.001e-99999999999999999999", 0, 27, 0},
        // Prefixes, with or without blanks before them.
        {"10k", 10000, 3, 3}, {"10 K", 10000, 4, 3}, {"1M", 1e6, 2, 6}, {"1m", 0.001, 2, -3},
        {"1G", 1e9, 2, 9}, {"1T", 1e12, 2, 12}, {"3c", 0.03, 2, -2}, {"2u", 2e-6, 2, -6},
        {"5n", 5e-9, 2, -9}, {"7p", 7e-12, 2, -12}, {"10 Meg", 1e7, 6, 6}, {"10meg", 1e7, 5, 6},
        {"1g", 1, 1, 0}, // no lower-case giga
        // Unit words, plurals allowed, no effect on the value.
        {"10 kOhm", 10000, 7, 3}, {"10kOhms", 10000, 7, 3}, {"10 mV", 0.01, 5, -3},
        {"2.2uF", 2.2e-6, 5, -6}, {"2.5 Volts", 2.5, 9, 0}, {"2.5 Voltage", 2.5, 3, 0},
        {"3 x", 3, 1, 0}, {"1F", 1, 2, 0}, {"1S", 1, 2, 0}, {"1 s", 1, 3, 0}, {"1ms", 0.001, 3, -3},
        {"1 L", 1, 3, 0}, {"1 l", 1, 1, 0}, {"1 ls", 1, 1, 0}, // a lower-case l is no unit
        {"1MHz", 1e6, 4, 6}, {"50 hz", 50, 5, 0}, {"1 Amps", 1, 6, 0}, {"1 ampere", 1, 8, 0},
        {"3 Coulombs", 3, 10, 0}, {"3 Coulombss", 3, 1, 0},
        {"3 coulombs", 0.03, 3, -2}, // a lower-case c is centi first
        {"1 k Ohm", 1000, 7, 3}, {"1 k x", 1000, 3, 3}, {"4 degrees", 4, 1, 0}, {"4 deg", 4, 5, 0},
        {"6VDC", 6, 4, 0}, {"1 mmeter", 0.001, 8, -3},
        {"1 meter", 0.001, 3, -3}, // the prefix comes first, "eter" is no unit
    };
    for (const Case &c : cases) {
        int consumed = -1, exponent = 99;
        const double v = ParseNumber(QString::fromUtf8(c.text), consumed, &exponent);
        EXPECT_DOUBLE_EQ(v, c.value) << c.text;
        EXPECT_EQ(consumed, c.consumed) << c.text;
        EXPECT_EQ(exponent, c.exponent) << c.text;
    }
    // No limit on the number of digits.
    const QString longNumber = QString(400, u'1') + QStringLiteral(".5e-398");
    int consumed = 0;
    EXPECT_NEAR(ParseNumber(longNumber, consumed) / (100.0 / 9), 1.0, 1e-12);
    EXPECT_EQ(consumed, longNumber.size());
}

TEST(RpnNumber, ParseComplexText)
{
    struct Case {
        const char *text;
        std::complex<double> value;
        int consumed;
    };
    const Case cases[] = {
        {"1.5, 2", {1.5, 2}, 6}, {"3", {3, 0}, 1}, {"  3 4 ", {3, 4}, 6},
        {"1k 2M", {1000, 0.002}, 5},   // M is milli here
        {"1Meg,1meg", {1e6, 1e6}, 9}, {"2g\t3T", {2e9, 3e12}, 5}, {"1u 1n", {1e-6, 1e-9}, 5},
        {"1p 1K", {1e-12, 1000}, 5}, {"1 2 3", {1, 2}, 3}, {"1x 2", {1, 0}, 1}, {"x", {0, 0}, 0}, {"", {0, 0}, 0},
        {"1\n2", {1, 0}, 1},
    };
    for (const Case &c : cases) {
        int consumed = -1;
        EXPECT_EQ(ParseComplexText(QString::fromUtf8(c.text), consumed), c.value) << c.text;
        EXPECT_EQ(consumed, c.consumed) << c.text;
    }
    // A part is read from at most 98 characters.
    int consumed = 0;
    ParseComplexText(QString(120, u'1'), consumed);
    EXPECT_EQ(consumed, 98);
}

TEST(RpnNumber, PrefixChar)
{
    const std::pair<int, char> cases[] = {
        {0, ' '}, {3, 'k'}, {6, 'M'}, {9, 'G'}, {12, 'T'}, {15, ' '}, {-2, ' '},
        {-3, 'm'}, {-6, 'u'}, {-9, 'n'}, {-12, 'p'}, {-128, ' '}, {4, 'k'},
    };
    for (const auto &[e, c] : cases)
        EXPECT_EQ(PrefixChar(e), QChar(c)) << e;
}

TEST(RpnFormat, GetTextOfScalars)
{
    CRpnData kilo(2200.0);
    kilo.SetDisplayExponent(3);
    CRpnData centi(0.01);
    centi.SetDisplayExponent(-2);
    CRpnData micro(4.7e-6);
    micro.SetDisplayExponent(-6);
    CRpnUserFunction f;
    f.m_name = QStringLiteral("myFunc");
    CRpnData function;
    function.SetFunction(&f);
    int anything = 0;
    CRpnData pointer;
    pointer.SetPointer(&anything);
    struct Case {
        CRpnData value;
        std::uint32_t flags;
        const char *expect;
    };
    const Case cases[] = {
        {CRpnData(), 0, ""}, {CRpnData(0.1), 0, "0.1"}, {CRpnData(1.0 / 3), 0, "0.3333333333333333"},
        {CRpnData(1.0 / 3), 4, "0.3333"},
        {CRpnData(1.0 / 3), 40, "0.3333333333333333"}, // 32 and up mean 16
        {CRpnData(1e20), 0, "1E+20"}, {CRpnData(-0.0), 0, "-0"}, {CRpnData(HUGE_VAL), 0, "INF"}, {kilo, 0, "2.2k"},
        {centi, 0, "1 "}, {micro, 3, "4.7u"}, {CRpnData(-12), 0, "-12"},
        {CRpnData(std::complex<double>(1, -2)), 0, "1-2j"}, {CRpnData(std::complex<double>(1.5, 0)), 0, "1.5+0j"},
        {CRpnData(std::complex<double>(1.0 / 3, 1)), 2, "0.33+1j"}, {Text("say \"hi\""), 0, "say \"hi\""},
        {Text("q"), RPN_TEXT_QUOTES, "\"q\""}, {function, 0, "myFunc"}, {pointer, 0, ""},
        // Whole numbers round the precision's edge: digits alone, then the exponent.
        {CRpnData(999.0), 3, "999"}, {CRpnData(1000.0), 3, "1E+03"}, {CRpnData(-999.0), 3, "-999"},
        {CRpnData(999999999999999.0), 0, "999999999999999"}, {CRpnData(1e16), 0, "1E+16"},
        {CRpnData(9999999999999998.0), 0, "9999999999999998"}, {CRpnData(0.0), 0, "0"},
        {CRpnData(123456789.0), 20, "123456789"}, {CRpnData(1e20), 31, "100000000000000000000"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(c.value.GetText(c.flags).toStdString(), c.expect) << Describe(c.value);
}

TEST(RpnFormat, GetTextOfLists)
{
    CRpnData one = RealItems({1});
    CRpnData two = RealItems({1, 2});
    CRpnData wrapped;
    wrapped.SetArray(1);
    wrapped.SetAt(0, two);
    CRpnData mixed;
    mixed.SetArray(3);
    mixed.SetAt(0, Text("a"));
    mixed.SetAt(1, one);
    mixed.SetAt(2, RealBlock({0.5, 0.25}));
    CRpnData empty;
    empty.SetArray(0);
    CRpnData dict;
    dict.SetDictionary();
    dict.DictSet(QStringLiteral("k"), CRpnData(1.0));
    dict.DictSet(QStringLiteral("s"), Text("v"));
    CRpnData single;
    single.SetDictionary();
    single.DictSet(QStringLiteral("k"), two);

    struct Case {
        CRpnData value;
        std::uint32_t flags;
        const char *expect;
    };
    const Case cases[] = {
        {one, 0, "1"}, {two, 0, "{1,2}"}, {wrapped, 0, "{1,2}"}, {wrapped, RPN_TEXT_BRACES, "{{1,2}}"},
        {one, RPN_TEXT_BRACES, "{1}"}, {empty, 0, ""}, {empty, RPN_TEXT_BRACES, "{}"}, {mixed, 0, "{a,1,0.5,0.25}"},
        {mixed, RPN_TEXT_BRACES | RPN_TEXT_QUOTES, "{\"a\",{1},0.5,0.25}"}, {RealBlock({1, 2}), RPN_TEXT_BRACES, "1,2"},
        {dict, 0, "{{k,1},{s,v}}"}, {dict, RPN_TEXT_QUOTES, "{{k,1},{s,\"v\"}}"}, {single, 0, "{k,{1,2}}"},
        {single, RPN_TEXT_BRACES, "{{k,{1,2}}}"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(c.value.GetText(c.flags).toStdString(), c.expect) << Describe(c.value);
}

TEST(RpnFormat, LongListsAreCut)
{
    struct Case {
        int size;
        std::uint32_t flags;
        int shown;
        bool ellipsis;
    };
    const Case cases[] = {
        {100, RPN_TEXT_CUT | RPN_TEXT_ELLIPSIS, 100, false},
        {101, RPN_TEXT_CUT | RPN_TEXT_ELLIPSIS, 100, true},
        {101, RPN_TEXT_CUT, 100, false},
        {150, 0, 150, false},
    };
    for (const Case &c : cases) {
        CRpnData items, block, dict;
        items.SetArray(c.size);
        block.SetRealArray(c.size);
        dict.SetDictionary();
        for (int i = 0; i < c.size; ++i) {
            items.SetAt(i, CRpnData(7));
            block.SetRealAt(i, 7);
            dict.DictSet(QString::number(i), CRpnData(7));
        }
        const QString a = items.GetText(c.flags);
        const QString b = block.GetText(c.flags);
        const QString d = dict.GetText(c.flags);
        EXPECT_EQ(a.count(u'7'), c.shown) << c.size;
        EXPECT_EQ(b.count(u'7'), c.shown) << c.size;
        EXPECT_EQ(d.count(QStringLiteral(",7}")), c.shown) << c.size;
        EXPECT_EQ(a.endsWith(QStringLiteral(",...}")), c.ellipsis);
        EXPECT_EQ(b.endsWith(QStringLiteral(",...")), c.ellipsis);
        EXPECT_EQ(d.endsWith(QStringLiteral(",...}")), c.ellipsis);
        EXPECT_TRUE(a.endsWith(u'}'));
    }
}

TEST(RpnFormat, FormatValueOptions)
{
    auto options = [](std::initializer_list<std::pair<const char *, CRpnData>> entries) {
        auto *m = new CMapStringToRpnData;
        for (const auto &[k, v] : entries)
            m->SetAt(QString::fromLatin1(k), v);
        return std::unique_ptr<CMapStringToRpnData>(m);
    };
    CRpnData kilo(2200.0);
    kilo.SetDisplayExponent(3);
    CRpnData inner;
    inner.SetDictionary();
    inner.DictSet(QStringLiteral("x"), CRpnData(1.0));
    inner.DictSet(QStringLiteral("y"), RealItems({1, 2}));
    CRpnData outer;
    outer.SetDictionary();
    outer.DictSet(QStringLiteral("name"), Text("n"));
    outer.DictSet(QStringLiteral("sub"), inner);
    CRpnData nested;
    nested.SetArray(2);
    nested.SetAt(0, RealItems({1, 2}));
    nested.SetAt(1, CRpnData(3.0));

    struct Case {
        CRpnData value;
        std::unique_ptr<CMapStringToRpnData> options;
        const char *expect;
    };
    Case cases[] = {
        {CRpnData(1.0 / 3), options({}), "0.3333333333333333"},
        {CRpnData(1.0 / 3), options({{"PRECISION", CRpnData(3)}}), "0.333"},
        {CRpnData(1.0 / 3), options({{"PRECISION", CRpnData(40)}}), "0.3333333333333333"},
        {CRpnData(1.0 / 3), options({{"PRECISION", CRpnData(0)}}), "0.3333333333333333"}, {kilo, options({}), "2.2k"},
        {kilo, options({{"REAL", CRpnData(1)}}), "2200"}, {Text("s"), options({{"QUOTE", CRpnData(1)}}), "\"s\""},
        {Text("s"), options({{"QUOTE", CRpnData(2)}}), "s"}, {RealItems({1, 2, 3}), options({}), "{1,2,3}"},
        {RealItems({1}), options({}), "{1}"},
        {RealBlock({1.5, 2}), options({{"BEGIN", Text("[")}, {"END", Text("]")}, {"SEP", Text("; ")}}), "[1.5; 2]"},
        {RealBlock({1, 2, 3}), options({{"MAX", CRpnData(2)}}), "{1,2}"},
        {RealBlock({1, 2, 3}), options({{"MAX", CRpnData(5)}}), "{1,2,3}"},
        {RealItems({1, 2}), options({{"SEP", CRpnData(0.0)}}), "{102}"},
        // Per level keys: level 1 is the outermost.
        {nested, options({{"BEGIN1", Text("<")}, {"END1", Text(">")}, {"BEGIN", Text("(")}, {"END", Text(")")}}),
         "<(1,2),3>"},
        {CRpnData(std::complex<double>(1.0 / 3, 1)), options({{"PRECISION", CRpnData(2)}}), "0.33+1j"},
        // Dictionaries: one key=value; a line, or nested braces with FORMAT 2.
        {outer, options({}), "name=n;\r\nsub=x=1;\r\ny={1,2};;"},
        {outer, options({{"FORMAT", CRpnData(2)}}), "{{name,n},{sub,{{x,1},{y,{1,2}}}}}"},
        {outer, options({{"FORMAT", CRpnData(2)}, {"ITEMSEP", Text(":")}, {"QUOTE", CRpnData(1)}}),
         "{{name:\"n\"},{sub:{{x:1},{y:{1,2}}}}}"},
        {outer, options({{"SEP", Text(" | ")}, {"SEP2", Text(", ")}, {"ITEMEND", Text("")}}),
         "name=n | sub=x=1, y={1 | 2}"},
    };
    for (Case &c : cases)
        EXPECT_EQ(c.value.FormatValue(*c.options).toStdString(), c.expect) << Describe(c.value);
}
