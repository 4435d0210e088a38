// The array functions through Compile and Run: sizes and sequences, the
// changes in place that every holder of an array sees, copies, FindNext's
// walk over crossings, and the refusals with their messages.

#include "functions/rpnarrayfunctions.h"
#include "formula/rpndictionary.h"
#include "formula/rpntree.h"

#include "formulatest.h"
#include "functionstest.h"

#include <gtest/gtest.h>
#include <cmath>
#include <limits>

namespace {

// The functions' own messages name the call: the text alone, at the call.
std::string named(const std::string &text)
{
    return FunctionMessage(text);
}

void runCases(const std::vector<ScriptCase> &cases)
{
    ExpectCases(cases);
}

} // namespace

TEST(RpnArrays, MakingArrays)
{
    runCases({
        {"", "Array()", "ARRAY:{}"},
        {"", "Array(3)", "ARRAY:{,,}"},
        {"", "Array(-4)", "ARRAY:{}"},
        // Sizes round the language's way: a hundredth toward the sign.
        {"", "SizeOf(Array(2.995))", "INT:3"},
        {"", "SizeOf(Array(2.98))", "INT:2"},
        {"", "Array(2, \"x\")", "ARRAY:{x,x}"},
        {"", "Array(2, 7, 9, 11)", "ARRAY:{7,7}"},
        // Sequences: the sign of the step follows the range.
        {"", "Array(5, 1, 2)", "ARRAY:{5,3,1}"},
        {"", "Array(1, 5, -2)", "ARRAY:{1,3,5}"},
        {"", "Array(0, 1, 0)", "ARRAY:{0,1}"},
        {"", "Array(0, 1, 0.4)", "ARRAY:{0,0.4,0.8}"},
        {"i = Array(SizeOf(\"abcdef\"), SizeOf(\"a\"), SizeOf(\"ab\"))", "i", "ARRAY:{6,4,2}"},
        {"i = Array(SizeOf(\"abcdef\"), SizeOf(\"a\"), SizeOf(\"ab\"))", "TypeName(i[2])", "STRING:INT"},
        {"", "Array(Complex(0, 0), Complex(2, 1), Complex(1, 0.5))", "ARRAY:{0+0j,1+0.5j,2+1j}"},
        // A complex part that does not move still takes the negative step.
        {"", "Array(Complex(0, 0), Complex(-2, 0), Complex(1, 1))", "ARRAY:{0+0j,-1-1j,-2-2j}"},
        // An empty range gives 100 null cells, whatever the kinds.
        {"z = Array(1, 1, 1)", "SizeOf(z)", "INT:100"},
        {"z = Array(1, 1, 1)", "IsEmpty(z[99])", "INT:1"},
        {"", "SizeOf(Array(SizeOf(\"ab\"), SizeOf(\"ab\"), 1))", "INT:100"},
        {"", "SizeOf(Array(Complex(1, 1), Complex(1, 1), 1))", "INT:100"},
        // ArrayD: a block of doubles.
        {"", "ArrayD(1, 2, 0.5)", "ARRAY_R:1,1.5,2"},
        {"", "ArrayD(3, 2.5)", "ARRAY_R:2.5,2.5,2.5"},
        {"", "ArrayD(2)", "ARRAY_R:0,0"},
        {"", "SizeOf(ArrayD()) + sum(ArrayD())", "REAL:100"},
        {"", "TypeName(ArrayD(2, 2, 1))", "STRING:ARRAY"},
        {"", "SizeOf(ArrayD(2, 2, 1))", "INT:100"},
        // ArrayLog: the decade grid.
        {"", "ArrayLog(1, 1000)",
         "ARRAY:{1,2,3,4,5,6,7,8,9,10,20,30,40,50,60,70,80,90,100,200,300,400,500,600,700,800,900,1000}"},
        {"", "ArrayLog(20, 300)", "ARRAY:{20,30,40,50,60,70,80,90,100,200,300}"},
        {"", "ArrayLog(300, 20)", "ARRAY:{300,200,100,90,80,70,60,50,40,30,20}"},
        {"", "ArrayLog()", "ARRAY:{0.001,0.01,0.1,1,10,100,1000,10000,100000,1000000}"},
        // A high limit at or below 0 means 6, not a million; a low one 1.
        {"", "ArrayLog(0.5, 0)", "ARRAY:{0.5,0.6,0.7,0.8,0.9,1,2,3,4,5,6}"},
        {"", "SizeOf(ArrayLog(-1))", "INT:55"},
        {"", "ArrayLog(1, 1)", "ARRAY:{1}"},
        // SizeOf counts UTF-16 units of a text.
        {"", "SizeOf(\"h\xC3\xA9llo\")", "INT:5"},
        {"", "SizeOf(\"\xF0\x9F\x98\x80\")", "INT:2"},
        {"", "SizeOf(5)", "INT:0"},
        {"", "SizeOf(Dictionary())", "INT:0"},
        {"", "SizeOf(g)", "INT:0"},
    });
}

TEST(RpnArrays, HugeAndBadSizesAreRefusedWithTheFunctionsName)
{
    const std::string most = std::to_string(RpnMaxArrayCells);
    const std::string mostReal = std::to_string(RpnMaxRealArrayCells);
    runCases({
        {"", "Array(1e12)", named("Array cannot make an array of 1000000000000 cells: one array holds at most " + most
                                   + " cells.")},
        {"", "ArrayD(1e12)", named("ArrayD cannot make an array of 1000000000000 cells: one array holds at most "
                                    + mostReal + " cells.")},
        {"", "Array(0, 1e12, 1)", named("Array cannot make an array of 1000000000001 cells: one array holds at most "
                                         + most + " cells.")},
        {"", "Array(0, 1, mod(5, 0))", named("Array cannot make an array of NaN cells: one array holds at most " + most
                                              + " cells.")},
        {"", "ArrayLog(1, 1e308 * 10)", named("ArrayLog needs limits that are finite numbers.")},
        {"", "Array(2, 1/0)", "E:" + RpnMessage(41655, {QStringLiteral("Array(2, 1/0)\n          ^")}).toStdString()
                                  + "@1,10"},
    });
    CEquationTree tree;
    Eval("Array(1e12)", &tree);
    EXPECT_EQ(tree.GetErrorToken(), QStringLiteral("Array"));
    EXPECT_TRUE(tree.GetErrorList().isEmpty());
}

TEST(RpnArrays, ChangesInPlaceAndCopies)
{
    runCases({
        // AddToArray and RemoveCell change the variable passed in; `=`
        // stores a copy of an array that is held elsewhere.
        {"a = {1}; b = a; AddToArray(a, 2, \"x\")", "a", "ARRAY:{1,2,x}"},
        {"a = {1}; b = a; AddToArray(a, 2, \"x\")", "b", "ARRAY:{1}"},
        {"a = {1}; c = AddToArray(a, 2); AddToArray(c, 3)", "a", "ARRAY:{1,2}"},
        {"a = {1}; c = AddToArray(a, 2); AddToArray(c, 3)", "c", "ARRAY:{1,2,3}"},
        {"r = ArrayD(1, 9); AddToArray(r, \"7;x\", Complex(1, 2), \"x\", 2)", "r", "ARRAY_R:9,7,0,0,2"},
        {"", "AddToArray({})", "ARRAY:{}"},
        {"", "AddToArray(g, 1)", "CURVE:"},
        {"", "AddToArray(5, 1)", named("AddToArray(...) first parameter must be of type array.")},
        {"a = {1, 2, 3}; RemoveCell(a, 0)", "a", "ARRAY:{2,3}"},
        {"", "RemoveCell({1, 2, 3}, -1)", "ARRAY:{1,2,3}"},
        {"", "RemoveCell({1, 2, 3}, 3)", "ARRAY:{1,2,3}"},
        {"", "RemoveCell({1, 2, 3}, 1.995)", "ARRAY:{1,2}"},
        {"", "RemoveCell(ArrayD(3, 1), 0)", "ARRAY_R:1,1"},
        {"", "RemoveCell(g, 0)", "CURVE:"},
        {"", "RemoveCell({1, 2, 3})", named("RemoveCell is missing its parameter 2.")},
        {"", "RemoveCell(\"abc\", 1)", named("RemoveCell(array, index) first parameter must be of type array.")},
        // AppendArray: a new record of the first one's kind.
        {"", "AppendArray({1, \"x\"}, ArrayD(2, 7))", "ARRAY:{1,x,7,7}"},
        {"x = AppendArray({1}, ArrayD(1, 7))", "TypeName(x[1])", "STRING:" + Value("TypeName(1.5)").GetText().toStdString()},
        {"", "AppendArray(ArrayD(1, 5), {\"2\", 3}, g)", "ARRAY_R:5,2,3"},
        {"", "AppendArray({1}, g, {})", "ARRAY:{1}"},
        {"", "AppendArray(g, {1})", ":"},
        {"a = {1}; c = AppendArray(a); AddToArray(c, 2)", "a", "ARRAY:{1}"},
        {"", "AppendArray({1}, 2)", named("AppendArray's parameter 2 must be of type array or graph.")},
        // Copy: start -1 counts back from the end; ranges are clipped.
        {"", "Copy({1, 2, 3, 4, 5}, -1, 3)", "ARRAY:{3,4,5}"},
        {"", "Copy({1, 2, 3, 4, 5}, 1)", "ARRAY:{2,3,4,5}"},
        {"", "Copy({1, 2, 3}, -5)", "ARRAY:{1,2,3}"},
        {"", "Copy({1, 2, 3}, 1, 10)", "ARRAY:{2,3}"},
        {"", "Copy({1, 2, 3}, 5)", "ARRAY:{}"},
        {"", "Copy(\"hello\", 1, 3)", "STRING:ell"},
        {"", "Copy(\"hello\", -1, 2)", "STRING:lo"},
        {"", "Copy(ArrayD(3, 2), 1)", "ARRAY_R:2,2"},
        {"", "Copy(g)", ":"},
        {"", "Copy(5)", "REAL:5"},
        // In depth: the inner array of a copy is a record of its own.
        {"a = {{1, 2}, 3}; c = Copy(a); AddToArray(c[0], 9)", "a", "ARRAY:{{1,2},3}"},
        {"a = {{1, 2}, 3}; c = Copy(a); AddToArray(c[0], 9)", "c", "ARRAY:{{1,2,9},3}"},
        // An array held twice is copied once: the copy shares it within
        // itself as the original does, and not with the original.
        {"x = {1, 2}; a = {x, {x, 5}}; c = Copy(a); AddToArray(c[0], 9)", "c", "ARRAY:{{1,2,9},{{1,2,9},5}}"},
        {"x = {1, 2}; a = {x, {x, 5}}; c = Copy(a); AddToArray(c[0], 9)", "a", "ARRAY:{{1,2},{{1,2},5}}"},
        {"x = {1, 2}; a = {x, {x, 5}}; c = Copy(a, 1); AddToArray(c[0][0], 9)", "{a, c}",
         "ARRAY:{{{1,2},{{1,2},5}},{{{1,2,9},5}}}"},
        // A value that holds the array goes in as a copy of what it is: the
        // array never holds itself, and the operators over it end.
        {"a = {1, 2}; AddToArray(a, a, 3)", "a", "ARRAY:{1,2,{1,2},3}"},
        {"a = {1, 2}; b = {0, {a}}; AddToArray(a, b); b = 0", "a", "ARRAY:{1,2,{0,{{1,2}}}}"},
        {"a = {1, 2}; AddToArray(a, a); b = -a", "b", "ARRAY:{-1,-2,{-1,-2}}"},
        {"a = {1, {2, 3}}; a[1][0] = a", "a", "ARRAY:{1,{{1,{2,3}},3}}"},
        {"a = {1, {2, 3}}; b = {a}; a[1][] = b", "a", "ARRAY:{1,{2,3,{{1,{2,3}}}}}"},
        // A list 300,000 deep is copied to its bottom.
        {"l = {}; i = 0; while (i < 300000) { l = {i, l}; i++ }; c = Copy(l, 0, 2); c[1][0] = -5",
         "{l[1][0], c[1][0], SizeOf(c[1][1][1][1][1][1])}", "ARRAY:{299998,-5,2}"},
    });
}

TEST(RpnArrays, CallsWithoutParametersFailWithoutAMessage)
{
    for (const char *text : {"AddToArray()", "RemoveCell()", "AppendArray()", "Copy()", "FindNext(1)"}) {
        CEquationTree tree;
        ASSERT_EQ(tree.Compile(QString::fromLatin1(text), nullptr, true), 1) << text;
        CRpnData value;
        EXPECT_EQ(tree.Run(value), 0) << text;
        EXPECT_TRUE(tree.GetErrorMessage().isEmpty()) << text;
    }
}

TEST(RpnArrays, AFailingValueLeavesTheArrayAsItWas)
{
    CEquationTree tree;
    Eval("a = {1}", &tree);
    EXPECT_EQ(Eval("AddToArray(a, 2, 1/0)", &tree).rfind("E:", 0), 0u);
    EXPECT_EQ(Eval("a", &tree), "ARRAY:{1}");
}

TEST(RpnArrays, FindNextWalksFromCrossingToCrossing)
{
    CEquationTree tree;
    ASSERT_EQ(Eval("data = {0, 1, 2, 3, 2, 1, 0, 1, 2, 3}; s = 0; f = 0", &tree).rfind("E:", 0), std::string::npos);
    // Rising, falling, rising: each call goes on behind the last crossing.
    const struct {
        std::string found, start, fraction;
    } steps[] = {
        {"INT:2", "INT:3", "REAL:0.5"},
        {"INT:5", "INT:6", "REAL:0.5"},
        {"INT:8", "INT:9", "REAL:0.5"},
        {":", "INT:11", "REAL:0"},
    };
    for (const auto &step : steps) {
        EXPECT_EQ(Eval("FindNext(1.5, data, s, f)", &tree), step.found);
        EXPECT_EQ(Eval("s", &tree), step.start);
        EXPECT_EQ(Eval("f", &tree), step.fraction);
    }
}

TEST(RpnArrays, FindNextLevelsAndEdges)
{
    runCases({
        {"", "FindNext(2, {0, 1, 2, 3})", "INT:2"},
        // The cell reached counts as equal when only the lowest 16 bits of
        // the mantissa differ: no fraction then.  A cell just below the
        // level is no crossing yet.
        {"s = 0; f = 1", "FindNext(3 + 1e-15, {0, 1, 2, 3 + 2e-15}, s, f) + f", "REAL:3"},
        {"s = 0; f = 1; x = FindNext(3 - 1e-10, {0, 1, 2, 3}, s, f)", "{x, f > 0.99, f < 1}", "ARRAY:{3,1,1}"},
        {"s = 0; f = 1; x = FindNext(2 + 1e-15, {0, 1, 2, 3}, s, f)", "{x, f > 0, f < 1e-14}", "ARRAY:{3,1,1}"},
        {"", "FindNext(0.5, {3, 2, 1, 0})", "INT:3"},
        {"s = 0; f = 0; FindNext(0.25, {3, 2, 1, 0}, s, f)", "f", "REAL:0.75"},
        {"", "FindNext(1.5, {0, 1, 2, 3}, -4)", "INT:2"},
        {"", "FindNext(2.5, {0, 1, 2, 3}, 10)", ":"},
        {"", "FindNext(mod(5, 0), {1, 2})", ":"},
        {"s = 5; FindNext(mod(5, 0), {1, 2}, s)", "s", "INT:1"},
        {"", "FindNext(1, {})", ":"},
        {"", "FindNext(1, g)", ":"},
        {"", "FindNext(1.5, {0, \"3\"})", "INT:1"},
        {"", "FindNext(1, ArrayD(3))", named("Expecting Array or Graph curve as second parameter.")},
        {"", "FindNext(1, 2)", named("Expecting Array or Graph curve as second parameter.")},
    });
}

TEST(RpnArrays, FindCrossingOnDoubles)
{
    const double rising[] = {0, 1, 2, 3};
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        double level;
        int start;
        int left;
        double fraction;
        bool found;
    } cases[] = {
        {1.25, 0, 2, 0.25, true}, {3.0, 0, 3, 0.0, true},  {3.5, 0, 4, 0.0, false},
        {inf, 0, 0, 0.0, false},  {-1.0, 0, 4, 0.0, false}, {0.5, 3, 4, 0.0, false},
        {2.5, 2, 3, 0.5, true},   {4.9e-324, 0, 0, 0.0, true},
    };
    for (const auto &c : cases) {
        const CRpnCrossing r = FindCrossing(rising, 4, c.level, c.start);
        EXPECT_EQ(r.found, c.found) << c.level;
        EXPECT_EQ(r.left, c.left) << c.level;
        EXPECT_EQ(r.right, r.left) << c.level;
        EXPECT_DOUBLE_EQ(r.fraction, c.fraction) << c.level;
    }
}
