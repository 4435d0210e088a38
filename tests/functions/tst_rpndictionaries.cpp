// Dictionaries through Compile and Run: the exact messages, records shared
// between variables, copies that are not, and DictionaryToArray writing its
// key and value arrays back.

#include "formula/rpntree.h"

#include "formulatest.h"
#include "functionstest.h"

#include <gtest/gtest.h>

namespace {

const std::string kSetCount = "Dict_Set requires 3 parameters. Dict_Set(dictinary, \"text\", val);";
const std::string kSetFirst = "Dict_Set's first parameter must be of type Dictionary. Dict_Set(dictinary, \"text\", val);";
const std::string kSetSecond = "Dict_Set's second parameter must be of type Text. Dict_Set(dictinary, \"text\", val);";
const std::string kGetCount = "Dict_Get requires 2 parameters. val = Dict_Get(dictinary, \"text\");";
const std::string kGetFirst =
    "Dict_Get's first parameter must be of type Dictionary. val = Dict_Get(dictinary, \"text\");";
const std::string kGetSecond = "Dict_Get's second parameter must be of type Text. val = Dict_Get(dictinary, \"text\");";
const std::string kToArrayNone =
    "DictionaryToArray requires a parameter of type Dictionary:   DictionaryToArray(dictionary, arrNames, arrValues); ";
const std::string kToArrayKind =
    "DictionaryToArray requires 1 parameter of type Dictionary:   DictionaryToArray(dictionary, arrNames, arrValues); ";

} // namespace

TEST(RpnDictionaries, MessagesAndValues)
{
    ExpectCases({
        {"", "Dictionary()", "DICTIONARY:{}"},
        {"", "Dictionary(1/0)", "DICTIONARY:{}"},
        {"", "Dict_Set(Dictionary(), 1, 2)", FunctionMessage(kSetSecond)},
        {"", "Dict_Set(Dictionary(), \"1\", 2)", ":"},
        {"", "Dict_Set(5, \"a\", 1)", FunctionMessage(kSetFirst)},
        // The count is checked before anything is evaluated.
        {"", "Dict_Set(1/0, \"a\")", FunctionMessage(kSetCount)},
        {"", "Dict_Set(Dictionary(), \"a\", 1, 2)", FunctionMessage(kSetCount)},
        {"", "Dict_Get(Dictionary(), \"z\")", ":"},
        {"", "IsEmpty(Dict_Get(Dictionary(), \"z\"))", "INT:1"},
        {"", "Dict_Get(Dictionary())", FunctionMessage(kGetCount)},
        {"", "Dict_Get(5, \"a\")", FunctionMessage(kGetFirst)},
        {"", "Dict_Get(Dictionary(), 5)", FunctionMessage(kGetSecond)},
        {"d = Dictionary(); Dict_Set(d, \"k\", 1); Dict_Set(d, \"k\", \"new\")", "Dict_Get(d, \"k\")", "STRING:new"},
        // Keys are compared exactly.
        {"d = Dictionary(); Dict_Set(d, \"Key\", 1)", "IsEmpty(Dict_Get(d, \"KEY\"))", "INT:1"},
        // Two variables, one record; a stored array is shared too.
        {"d = Dictionary(); d2 = d; Dict_Set(d2, \"k\", 1)", "Dict_Get(d, \"k\")", "REAL:1"},
        {"d = Dictionary(); a = {1}; Dict_Set(d, \"a\", a); AddToArray(a, 2)", "Dict_Get(d, \"a\")", "ARRAY:{1,2}"},
        // A copy is a record of its own, in depth.
        {"d = Dictionary(); Dict_Set(d, \"k\", {1}); c = Copy(d); Dict_Set(c, \"n\", 2); AddToArray(Dict_Get(c, \"k\"), 5)",
         "ToString(d)", "STRING:{k,1}"},
        // A value that holds the dictionary goes in as a copy of what it is:
        // the dictionary never holds itself, and copies and prints end.
        {"d = Dictionary(); Dict_Set(d, \"a\", 1); Dict_Set(d, \"k\", d); c = Copy(d)", "ToString(c)",
         "STRING:{{a,1},{k,{a,1}}}"},
        {"d = Dictionary(); x = {1, d}; Dict_Set(d, \"k\", x); Dict_Set(d, \"n\", 2)", "ToString(d)",
         "STRING:{{k,{1,}},{n,2}}"},
        {"d = Dictionary(); d[\"k\"] = d; d[\"n\"] = {d, 1}", "ToString(d)", "STRING:{{k,},{n,{{k,},1}}}"},
        {"a = {1, 2}; d = Dictionary(); Dict_Set(d, \"a\", a); a[0] = d", "{SizeOf(a), a[1], a[0][\"a\"]}",
         "ARRAY:{2,2,{1,2}}"},
        // DictionaryToArray: pairs, and the keys and values written back.
        {"d = Dictionary(); Dict_Set(d, \"a\", 1); Dict_Set(d, \"b\", \"x\"); k = 0; v = 0; p = DictionaryToArray(d, k, v)",
         "p", "ARRAY:{{a,1},{b,x}}"},
        {"d = Dictionary(); Dict_Set(d, \"a\", 1); Dict_Set(d, \"b\", \"x\"); k = 0; v = 0; p = DictionaryToArray(d, k, v)",
         "k", "ARRAY:{a,b}"},
        {"d = Dictionary(); Dict_Set(d, \"a\", 1); Dict_Set(d, \"b\", \"x\"); k = 0; v = 0; p = DictionaryToArray(d, k, v)",
         "v", "ARRAY:{1,x}"},
        {"k = 1; v = 1; p = DictionaryToArray(Dictionary(), k, v)", "{p, k, v}", "ARRAY:{{},{},{}}"},
        // Parameters that are no variables are not evaluated.
        {"", "DictionaryToArray(Dictionary(), 1/0, 2)", "ARRAY:{}"},
        {"", "DictionaryToArray()", FunctionMessage(kToArrayNone)},
        {"", "DictionaryToArray(5)", FunctionMessage(kToArrayKind)},
    });
}

TEST(RpnDictionaries, FailuresNameTheFunctionAndLeaveTheDictionary)
{
    const struct {
        const char *text;
        const char *token;
    } cases[] = {
        {"Dict_Set(d, 5, 1)", "Dict_Set"},
        {"Dict_Get(d)", "Dict_Get"},
        {"DictionaryToArray(\"d\")", "ConvertToArray"},
    };
    for (const auto &c : cases) {
        CEquationTree tree;
        ASSERT_EQ(Eval("d = Dictionary(); Dict_Set(d, \"k\", 1)", &tree).rfind("E:", 0), std::string::npos);
        EXPECT_EQ(Eval(c.text, &tree).rfind("E:", 0), 0u) << c.text;
        EXPECT_EQ(tree.GetErrorToken().toStdString(), c.token) << c.text;
        EXPECT_TRUE(tree.GetErrorList().isEmpty()) << c.text;
        tree.ResetError();
        EXPECT_EQ(Eval("ToString(d)", &tree), "STRING:{k,1}") << c.text;
    }
}
