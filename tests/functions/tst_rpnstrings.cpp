// The text functions and the conversions through Compile and Run: searches
// that fold case (also beyond ASCII), exact replacing and splitting, the
// positions of SubStr, the Trim family writing back, String, ToString and
// Value.

#include "formula/rpndictionary.h"
#include "formula/rpntree.h"

#include "formulatest.h"
#include "functionstest.h"

#include <gtest/gtest.h>

namespace {

const char *const kUmlauts = "Gr\xC3\xBC\xC3\x9F" "e aus K\xC3\x96LN"; // "Grüße aus KÖLN"

std::string quietFailure()
{
    return "E:@-1,-1";
}

} // namespace

TEST(RpnStrings, FindAndFindReverse)
{
    ExpectCases({
        {"", "Find(\"xaby\", \"AB\")", "INT:1"},
        {"", "Find(\"\", \"a\")", "INT:-1"},
        {"", "Find(5, \"5\")", "INT:-1"},
        {"", "Find(\"abc\", \"\")", "INT:-1"},
        {"", "Find(\"abcabc\", \"c\", 3)", "INT:5"},
        {"", "Find(\"abcabc\", \"c\", -7)", "INT:2"},
        {"", "Find(\"abcabc\", \"c\", 6)", "INT:-1"},
        {"", "Find(\"abcabc\", {\"c\", \"\", \"B\"})", "INT:1"},
        {"", "Find(\"abcabc\", {\"x\", \"y\"})", "INT:-1"},
        {"", "Find(\"a1.5b\", 1.5)", "INT:1"},
        // Case folding beyond ASCII; positions in UTF-16 units.
        {(std::string("t = \"") + kUmlauts + "\"").c_str(), "Find(t, \"k\xC3\xB6ln\")", "INT:10"},
        {"", "Find(\"\xCE\x91\xCE\x92\xCE\x93\", \"\xCE\xB2\xCE\xB3\")", "INT:1"},
        {"", "Find(\"\xF0\x9F\x98\x80x\", \"X\")", "INT:2"},
        {"", "FindReverse(\"abcabc\", \"AB\")", "INT:3"},
        {"", "FindReverse(\"abcabc\", \"ab\", 2)", "INT:0"},
        {"", "FindReverse(\"abcabc\", \"ab\", 1)", "INT:0"},
        {"", "FindReverse(\"abcabc\", \"ab\", 0)", "INT:-1"},
        {"", "FindReverse(\"abcabc\", \"ab\", -1)", "INT:3"},
        {"", "FindReverse(\"abcabc\", \"ab\", 99)", "INT:3"},
        {"", "FindReverse(\"abcabc\", {\"a\", \"c\"})", "INT:3"},
        {"", "FindReverse(\"x\xC3\xA4" "by\xC3\x84" "B\", \"\xC3\xA4" "b\")", "INT:4"},
        {"", "Find(\"abc\")", quietFailure()},
    });
}

TEST(RpnStrings, ReplaceSplitAndSplit2)
{
    ExpectCases({
        // Replace compares exactly and goes pair by pair.
        {"", "Replace(\"xaby\", \"AB\", \"Q\")", "STRING:xaby"},
        {"", "Replace(\"a-b-c\", \"-\", \"+\")", "STRING:a+b+c"},
        {"", "Replace(\"abc\", \"a\", \"b\", \"b\", \"c\")", "STRING:ccc"},
        {"", "Replace(\"abc\", \"\", \"x\")", "STRING:abc"},
        {"", "Replace(\"n=1\", 1, 2.5)", "STRING:n=2.5"},
        // A variable stands for its own name, on both sides.
        {"x = 7", "Replace(\"x+1\", x, \"z\")", "STRING:z+1"},
        {"y = 1", "Replace(\"abc\", \"b\", y)", "STRING:ayc"},
        {"", "Replace(\"abc\", \"a\")", FunctionMessage("Replace is missing its parameter 3.")},
        {"", "Replace(5, \"a\", \"b\")", quietFailure()},
        // Split: blanks fold and trim, other separators keep empty tokens.
        {"", "Split(\"a,,b\", \",\")", "ARRAY:{a,,b}"},
        {"", "Split(\"a  b\", \" \")", "ARRAY:{a,b}"},
        {"", "Split(\" a  b \", \" \")", "ARRAY:{a,b}"},
        {"", "Split(\"a,b,\", \",\")", "ARRAY:{a,b}"},
        {"", "Split(\"1; 2;3\", \"; \")", "ARRAY:{1,2,3}"},
        {"", "Split(\"a\", \",\")", "ARRAY:{a}"},
        {"", "Split(12345, 3)", "ARRAY:{12,45}"},
        // Separators beyond ASCII, and characters that only look alike in their low bits.
        {"", "Split(\"a\xC2\xA7" "b,c\", \",\xC2\xA7\")", "ARRAY:{a,b,c}"},
        {"", "Split(\"a\xC4\xAC" "b,c\", \",\")", "ARRAY:{a\xC4\xAC" "b,c}"},
        {"", "Split(\"x\xE2\x80\x94y\xE2\x80\x94\", \"\xE2\x80\x94\")", "ARRAY:{x,y}"},
        {"", "Split(\"a\t b,c\", \",\t\")", "ARRAY:{a,b,c}"},
        {"", "Split(\"AzZa\", \"Z\")", "ARRAY:{Az,a}"},
        {"", "Split(\"a b\")", quietFailure()},
        {"", "Split(\"\", \",\")", quietFailure()},
        // Split2: between markers, or cut at each begin.
        {"", "Split2(\"[a][b]\", \"[\", \"]\")", "ARRAY:{a,b}"},
        {"", "Split2(\"[a][b]\", \"[\", \"]\", 1)", "ARRAY:{[a],[b]}"},
        {"", "Split2(\"x[a]y[b\", \"[\", \"]\")", "ARRAY:{a,b}"},
        {"", "Split2(\"[]a\", \"[\", \"]\")", "ARRAY:{}"},
        {"", "Split2(\"a--b--c\", \"--\")", "ARRAY:{a,b,c}"},
        {"", "Split2(\"a--b--c\", \"--\", \"\", 1)", "ARRAY:{a,--b,--c}"},
        {"", "Split2(\"--a\", \"--\")", "ARRAY:{a}"},
        {"", "Split2(\"aXbxc\", \"x\")", "ARRAY:{aXb,c}"},
        {"", "Split2(\"abc\", \"\")", quietFailure()},
    });
}

TEST(RpnStrings, SubStrAndTheTrimFamily)
{
    ExpectCases({
        {"", "SubStr(\"hello\", -2)", "STRING:lo"},
        {"", "SubStr(\"hello\", 9)", "STRING:"},
        {"", "SubStr(\"hello\", -9)", "STRING:hello"},
        {"", "SubStr(\"hello\", 1, 2)", "STRING:el"},
        {"", "SubStr(\"hello\", 1, 0)", "STRING:"},
        {"", "SubStr(\"hello\", 1, -1)", "STRING:ello"},
        {"", "SubStr(\"hello\", 1, 99)", "STRING:ello"},
        {"", "SubStr(\"hello\")", "STRING:hello"},
        {"", "SubStr(\"gr\xC3\xBC\xC3\x9F" "e\", 2, 2)", "STRING:\xC3\xBC\xC3\x9F"},
        {"", "SubStr(12345, 1, 2)", "STRING:23"},
        {"", "SubStr(\"\")", quietFailure()},
        // The Trim family writes back into a variable, and works on literals.
        {"s = \"  x  \"; Trim(s)", "s", "STRING:x"},
        {"", "Trim(\"  x  \")", "STRING:x"},
        {"", "TrimLeft(\"  a  \")", "STRING:a  "},
        {"", "TrimRight(\"abcc\", \"c\", \"b\")", "STRING:a"},
        {"", "Trim(\"xxaxx\", \"x\")", "STRING:a"},
        {"s = \"stra\xC3\x9F" "e\"; MakeUpper(s)", "s", "STRING:STRASSE"},
        {"", "MakeLower(\"\xC3\x84\xC3\x96\xC3\x9C \xCE\xA3\xCE\x91\")", "STRING:\xC3\xA4\xC3\xB6\xC3\xBC \xCF\x83\xCE\xB1"},
        {"", "MakeUpper(\"abc\", \"ignored\")", "STRING:ABC"},
        {"", "MakeUpper(1.5)", "STRING:1.5"},
        {"", "Trim()", quietFailure()},
    });
}

TEST(RpnStrings, StringToStringAndValue)
{
    const std::string divisionByZero = RpnMessage(41655, {QStringLiteral("1/0\n ^")}).toStdString();
    ExpectCases({
        {"", "String()", "STRING:"},
        {"", "String(1/3)", "STRING:0.3333333333333333"},
        {"", "String(1/3, 3)", "STRING:0.333"},
        {"", "String(1/3, \"x\")", "STRING:0.333333"},
        {"", "String(1/3, 0)", "STRING:0.3333333333333333"},
        {"", "String(1/3, 40)", "STRING:0.3333333333333333"},
        {"", "String({1, \"a\"})", "STRING:{1,a}"},
        {"", "ToString()", "STRING:"},
        {"", "ToString(1/3)", "STRING:0.3333333333333333"},
        {"", "ToString({1, 2}, BEGIN = \"[\", END = \"]\", SEP = \";\")", "STRING:[1;2]"},
        {"", "ToString(\"a\", QUOTE = 1)", "STRING:\"a\""},
        {"", "ToString(1/3, precision = 3)", "STRING:0.333"},
        {"o = Dictionary(); Dict_Set(o, \"SEP\", \" \")", "ToString({1, 2}, o)", "STRING:{1 2}"},
        {"d = Dictionary(); Dict_Set(d, \"a\", 1); Dict_Set(d, \"b\", \"x\")", "ToString(d, ITEMEND = \"|\", SEP = \"\")",
         "STRING:a=1|b=x|"},
        {"", "Value(\"1+2\")", "REAL:3"},
        {"", "Value(\"{1,2\")", "INT:0"},
        {"", "Value(\"1+\")", "INT:0"},
        {"", "Value(\"  {a b}  \")", "STRING:{a b}"},
        {"", "Value(5)", "REAL:5"},
        {"", "Value()", "INT:0"},
        {"", "Value(\"{7}\")", "REAL:7"},
        {"x = 3", "Value(\"x*y\", y = 2)", "REAL:6"},
        // Inside a function the text sees the call's variables; a named value wins.
        {"", "g = 10\nfunction f(a) {\n  b = 4\n  return {Value(\"a*b+g\"), Value(\"a\", a = 7)}\n}\nf(3)",
         "ARRAY:{10,{22,7}}"},
        {"", "Value(\"1/0\")", "E:Error in Value at row 1, column 1. ::" + divisionByZero + "@1,1"},
    });
}

TEST(RpnStrings, FindOnLongTextsAgreesWithTheLibrarysFoldedSearch)
{
    // Long texts take the scan for the code units that fold to the first
    // character; its answers must be those of the library's own search.
    const auto q = [](const char16_t *text) { return QString::fromUtf16(text); };
    const QString filler = q(u"ab").repeated(100);
    const QString texts[] = {
        filler + q(u"KELVIN \u212Aelvin kelvin"),
        filler + q(u"\u017Ftop STOP stop"),
        filler + q(u"\u00DCber \u00FCBER uber"),
        filler + q(u"x\U0001F600y X\U0001F600Y"),
        filler + q(u"needle"),
        q(u"a").repeated(300),
        // The needle at every place of a block of sixteen, and in the tail.
        filler + q(u"k"),
        filler + q(u"x\u212Ax"),
        filler + q(u"xxxxxxxxxxxxxxxS"),
        filler + q(u"xxxxxxxxxxxxxxxxK"),
        filler + q(u"xxxxxxx\u017F") + q(u"b").repeated(9),
        filler + q(u"xxxxxxxxNEEDL") + q(u"needle").repeated(3),
    };
    const struct {
        const char16_t *needle;
        int from;
    } searches[] = {
        {u"kelvin", 0}, {u"kelvin", 201}, {u"KELVIN", 208}, {u"stop", 0}, {u"STOP", 201},
        {u"\u00FCber", 0}, {u"UBER", 0},   {u"x\U0001F600Y", 0}, {u"Y", 205}, {u"NEEDLE", 0},
        {u"needle", 201}, {u"aaaa", 296}, {u"aaaa", 297}, {u"B", 199}, {u"ba", 0},
        {u"K", 0}, {u"k", 201}, {u"s", 0}, {u"S", 215}, {u"sb", 0}, {u"kX", 200}, {u"Needle", 205},
    };
    for (const QString &text : texts) {
        for (const auto &s : searches) {
            const QString needle = QString::fromUtf16(s.needle);
            CEquationTree tree;
            tree.GetVariables()->SetAt(QStringLiteral("t"), CRpnData(text));
            tree.GetVariables()->SetAt(QStringLiteral("w"), CRpnData(needle));
            tree.GetVariables()->SetAt(QStringLiteral("s"), CRpnData(double(s.from)));
            const qsizetype expect = text.indexOf(needle, s.from, Qt::CaseInsensitive);
            EXPECT_EQ(Eval("Find(t, w, s)", &tree), "INT:" + std::to_string(expect))
                << needle.toStdString() << " from " << s.from << " in ..." << text.right(24).toStdString();
        }
    }
}
