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
