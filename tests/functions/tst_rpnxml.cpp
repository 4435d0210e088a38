// XML values in scripts: building, finding, deleting and parsing, the
// messages, and the depth that XML_Parse refuses.

#include "functions/rpnxmlfunctions.h"
#include "formula/rpndictionary.h"
#include "formula/rpnexception.h"
#include "formula/rpntree.h"

#include "formulatest.h"
#include "functionstest.h"

#include <gtest/gtest.h>

namespace {

std::string failure(const char *call, const QString &text)
{
    return FunctionMessage(std::string(call) + " " + text.toStdString());
}

#define TREE                                                                                                   \
    "r = XML_New(\"root\", kind = \"a\"); c1 = XML_AddNew(r, \"item\", id = 1, \"one\"); "                                 \
    "c2 = XML_AddNew(r, \"Item\", id = 2, \"two\"); XML_AddNew(r, \"other\")"
const char *const kTree = TREE;

} // namespace

TEST(RpnXml, BuildFindDeleteAndParse)
{
    const QString addChild = QStringLiteral("XML_AddChild");
    const std::vector<ScriptCase> cases = {
        // A bare word is the tag even when a variable of that name has a value.
        {"root = 5", "XML_GetName(XML_New(root))", "STRING:root"},
        {kTree, "XML_GetAttribute(r, \"kind\")", "STRING:a"},
        {kTree, "XML_GetAttribute(r, \"none\")", "STRING:"},
        {kTree, "XML_GetData(XML_FindChild(r, \"ITEM\", ID = \"2\"))", "STRING:two"},
        {kTree, "XML_GetData(XML_FindChild(r))", "STRING:one"},
        {kTree, "IsNull(XML_FindChild(r, \"nothing\"))", "INT:1"},
        {kTree, "SizeOf(XML_GetAllChildren(r, \"item\"))", "INT:2"},
        {kTree, "SizeOf(XML_GetAllChildren(r))", "INT:3"},
        {kTree, "XML_DelChild(r, \"nothing\")", "INT:0"},
        {TREE "; XML_DelChild(r, \"item\", id = 1)", "XML_GetData(XML_FindChild(r, \"item\"))", "STRING:two"},
        {TREE "; XML_SetAttribute(r, \"kind\", 3.5)", "XML_GetAttribute(r, \"kind\")", "STRING:3.5"},
        {TREE "; XML_DelAttribute(r, \"kind\")", "SizeOf(ToString(XML_GetAllAttributes(r)))", "INT:0"},
        {TREE "; XML_SetData(c1, 7)", "XML_GetData(c1)", "STRING:7"},
        {"n = Dict_Get(Dictionary(), \"z\")", "XML_GetName(XML_AddNew(n, \"free\"))", "STRING:free"},
        // The first cell is added, then the number stops the call.
        {"p = XML_New(\"p\"); c = XML_New(\"c\")", "XML_AddChild(p, {c, 1})",
         failure("XML_AddChild(p, {c, 1})", RpnMessage(43452, {addChild}))},
        {"p = XML_New(\"p\"); c = XML_New(\"c\"); catch(XML_AddChild(p, {c, 1}))", "SizeOf(XML_GetAllChildren(p))", "INT:1"},
        {"", "XML_GetData(XML_Parse(\"<a x='1'>hi</a>\"))", "STRING:hi"},
        {"", "XML_GetAttribute(XML_Parse({\"<a x='1'>\", \"<b/></a>\"}), \"X\")", "STRING:"},
        {"", "XML_GetAttribute(XML_Parse({\"<a x='1'>\", \"<b/></a>\"}), \"x\")", "STRING:1"},
        {"", "XML_Parse(\"<a><b></a>\")", failure("XML_Parse(\"<a><b></a>\")", RpnMessage(43458))},
        {"", "XML_Parse(5)", failure("XML_Parse(5)", RpnMessage(43457, {"XML_Parse"}))},
        {"", "XML_GetName(5)", failure("XML_GetName(5)", RpnMessage(43446, {"XML_GetName"}))},
        {"", "XML_New()", failure("XML_New()", RpnMessage(43440, {"XML_New", "XML_New"}))},
        {"", "XML_AddNew(5, \"a\")", failure("XML_AddNew(5, \"a\")", RpnMessage(43442, {"XML_AddNew"}))},
        // Dictionary items give attributes, any other value the data.
        {"d = Dictionary(); Dict_Set(d, \"Volt\", 5); el = XML_New(\"a\", d, \"x\")",
         "XML_GetAttribute(el, \"Volt\") + XML_GetData(el)", "STRING:5x"},
        // An XML value as the tag is taken as it is, without the items after it.
        {"r = XML_New(\"r\"); XML_AddNew(r, \"a\", k = 1)",
         "XML_GetAttribute(XML_New(XML_FindChild(r), k = 2), \"k\")", "STRING:1"},
        {"r = XML_New(\"r\"); XML_AddNew(r, \"a\", k = 1); s = XML_New(\"s\"); XML_AddNew(s, XML_FindChild(r), k = 2)",
         "XML_GetName(XML_FindChild(s)) + XML_GetAttribute(XML_FindChild(s), \"k\")", "STRING:a1"},
        {"", "XML_New(\"\")", failure("XML_New(\"\")", RpnMessage(43443, {"XML_New", "XML_New"}))},
        {"r = XML_New(\"r\")", "XML_AddNew(r, \"\")",
         failure("XML_AddNew(r, \"\")", RpnMessage(43444, {"XML_AddNew", "XML_AddNew"}))},
        {TREE "; XML_SetAttribute(r, kind = \"b\", size = 4)",
         "XML_GetAttribute(r, \"kind\") + XML_GetAttribute(r, \"size\")", "STRING:b4"},
        {kTree, "XML_SetAttribute(r, 5, 1)",
         failure("XML_SetAttribute(r, 5, 1)", RpnMessage(43447, {"XML_SetAttribute", "XML_SetAttribute"}))},
        // Pairs without a tag match any tag; every pair must match.
        {kTree, "XML_GetData(XML_FindChild(r, id = 2))", "STRING:two"},
        {kTree, "IsNull(XML_FindChild(r, id = 2, kind = \"a\"))", "INT:1"},
        {TREE "; XML_DelChild(r, id = 2)", "SizeOf(XML_GetAllChildren(r))", "INT:2"},
    };
    ExpectCases(cases);
}

TEST(RpnXml, DeepNestingIsRefusedNotOverflowed)
{
    for (int depth : {RpnMaxXmlDepth, 100000}) {
        std::string text;
        for (int i = 0; i < depth; ++i)
            text += "<e>";
        for (int i = 0; i < depth; ++i)
            text += "</e>";
        CEquationTree tree;
        tree.GetVariables()->SetAt(QStringLiteral("t"), CRpnData(QString::fromStdString(text)));
        const std::string got = Eval("IsNull(XML_Parse(t))", &tree);
        if (depth <= RpnMaxXmlDepth) {
            EXPECT_EQ(got, "INT:0") << depth;
        } else {
            EXPECT_EQ(got, "E:IsNull(XML_Parse(t)) " + RpnMessage(43459, {"XML_Parse", RpnMaxXmlDepth}).toStdString()
                               + "@1,7");
        }
    }
}
