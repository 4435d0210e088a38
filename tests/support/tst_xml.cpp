#include "support/xmlelement.h"

#include <gtest/gtest.h>

namespace {

struct ParseCase
{
    const char *name;
    const char16_t *text;
    bool ok;
    int position; // checked when the parse fails
};

// Writes the tree below `root` in a compact form for comparisons:
// name[attr=value,...]{data}(children)
QString dump(const CXmlElement *e)
{
    QString s = e->GetName();
    if (e->GetAttributeCount()) {
        s += u'[';
        for (int i = 0; i < e->GetAttributeCount(); ++i)
            s += QString::fromUtf16(i ? u"," : u"") + e->GetAttributeAt(i)->GetName() + u'=' + e->GetAttributeAt(i)->GetData();
        s += u']';
    }
    if (!e->GetData().isEmpty())
        s += u'{' + e->GetData() + u'}';
    if (e->GetChildCount()) {
        s += u'(';
        for (int i = 0; i < e->GetChildCount(); ++i)
            s += QString::fromUtf16(i ? u" " : u"") + dump(e->GetChildAt(i));
        s += u')';
    }
    return s;
}

QString parseAndDump(const QString &text, bool *ok = nullptr, int *position = nullptr)
{
    CXmlElementPtr root = CreateElement(QString());
    int pos = -1;
    const bool result = CXmlElement::Parse(root.Get(), text, pos);
    if (ok)
        *ok = result;
    if (position)
        *position = pos;
    return dump(root.Get());
}

} // namespace

TEST(XmlParse, AcceptsAndRefusesAsDocumented)
{
    const ParseCase cases[] = {
        {"plain", u"<a></a>", true, 0},
        {"header, comment, doctype", u"<?xml version='1.0'?><!DOCTYPE a><!-- c > --><a/>", true, 0},
        {"unmatched close leaves a open", u"<a></b>", false, 0},
        {"mismatched quotes run to the end", u"<a b=\"1' />", false, 0},
        {"gt outside a tag", u"<a>1 > 0</a>", false, 5},
        {"gt at top level", u">", false, 0},
        {"close with nothing open", u"</a>", false, 0},
        {"close after root closed", u"<a/></a>", false, 4},
        {"equals without a name", u"<a =\"1\"></a>", false, 3},
        {"second equals", u"<a b==\"1\"></a>", false, 5},
        {"value without equals", u"<a b \"1\"></a>", false, 5},
        {"quote in the tag name", u"<a\"b></a\"b>", false, 2},
        {"unquoted value", u"<a b=1></a>", false, 5},
        {"equals then gt", u"<a b=></a>", false, 5},
        {"empty name", u"<>", false, 1},
        {"open at the end", u"<a><b></b>", false, 0},
        {"inside a tag at the end", u"<a", false, 0},
        {"closing tag without gt", u"<a></a", false, 0},
        {"unterminated comment is skipped", u"<!-- never closed", true, 0},
    };
    for (const ParseCase &c : cases) {
        bool ok = false;
        int position = -1;
        parseAndDump(QString::fromUtf16(c.text), &ok, &position);
        EXPECT_EQ(ok, c.ok) << c.name;
        if (!c.ok) {
            EXPECT_EQ(position, c.position) << c.name;
        }
    }
}

TEST(XmlParse, BuildsTheTree)
{
    const struct
    {
        const char16_t *text;
        const char16_t *tree;
    } cases[] = {
        {u"<a b=\"1\" c='x\"y'>t</a>", u"(a[b=1,c=x\"y]{t})"},
        {u"<a>x&bogus;y</a>", u"(a{x&bogus;y})"},
        {u"<a>&lt;&amp;&gt;&quot;&apos;&amp</a>", u"(a{<&>\"'&amp})"},
        {u"<a v='&lt;&apos;'/>", u"(a[v=<'])"},
        {u"<a>\r\n\t  lead and trail  </a>", u"(a{lead and trail  })"},
        {u"<a>dropped<b>kept</b>dropped too</a>", u"(a(b{kept}))"},
        {u"<a><b/><c x='1'/></a>", u"(a(b c[x=1]))"},
        {u"<a><b></c>y</b></a>", u"(a(b{y}))"},
        {u"<A></a></A>", u"(A)"},
        {u"<a b c='2'/>", u"(a[c=2])"},
        {u"<a>x<!-- note -->y</a>", u"(a{xy})"},
        {u"<a/><b/>", u"(a b)"},
    };
    for (const auto &c : cases) {
        bool ok = false;
        const QString tree = parseAndDump(QString::fromUtf16(c.text), &ok);
        EXPECT_TRUE(ok) << QString::fromUtf16(c.text).toStdString();
        EXPECT_EQ(tree, QString::fromUtf16(c.tree)) << QString::fromUtf16(c.text).toStdString();
    }
}

TEST(XmlParse, HonoursStartAndEnd)
{
    const QString text = u"junk<a>1</a>junk"_qs;
    CXmlElementPtr root = CreateElement(QString());
    int position = -1;
    EXPECT_TRUE(CXmlElement::Parse(root.Get(), text.constData(), int(text.size()), 4, 12, position));
    EXPECT_EQ(dump(root.Get()), u"(a{1})"_qs);
    // An end past the length is cut to the length.
    CXmlElementPtr other = CreateElement(QString());
    EXPECT_TRUE(CXmlElement::Parse(other.Get(), text.constData(), 12, 4, 1000, position));
    EXPECT_FALSE(CXmlElement::Parse(CXmlElement::Null(), text, position));
    EXPECT_FALSE(CXmlElement::Parse(nullptr, text, position));
}

TEST(XmlParse, ErrorKeepsWhatWasAttachedAndFreesTheRest)
{
    // The address sanitizer checks that the element of the broken tag is freed.
    CXmlElementPtr root = CreateElement(QString());
    int position = -1;
    EXPECT_FALSE(CXmlElement::Parse(root.Get(), u"<a><b/><c x=1></c></a>"_qs, position));
    EXPECT_EQ(position, 12);
    EXPECT_EQ(dump(root.Get()), u"(a(b))"_qs);
}

TEST(XmlWrite, ExactForm)
{
    CXmlElementPtr doc = CreateElement(u"doc"_qs);
    doc->AddAttribute(u"v"_qs, u"a&b<c>\"d'"_qs);
    doc->AddAttribute(u"w"_qs, u"2"_qs);
    CXmlElementPtr leaf = CreateElement(u"leaf"_qs);
    leaf->SetData(u"x > y"_qs);
    doc->AddChild(leaf.Get());
    CXmlElementPtr empty = CreateElement(u"empty"_qs);
    CXmlElementPtr inner = CreateElement(u"inner"_qs);
    inner->AddChild(empty.Get());
    doc->AddChild(inner.Get());
    CXmlElementPtr text = CreateElement(u"ignored"_qs, CXmlElement::KindText);
    text->SetData(u"free text"_qs);
    doc->AddChild(text.Get());

    QString out;
    ASSERT_TRUE(CXmlElement::WriteDocument(doc.Get(), out));
    EXPECT_EQ(out, u"<?xml version='1.0' encoding='UTF-16' ?>\n"
                   "<doc v=\"a&amp;b&lt;c&gt;&quot;d&apos;\"  w=\"2\" >\r\n"
                   "\t<leaf>x &gt; y</leaf>\r\n"
                   "\t<inner>\r\n"
                   "\t\t<empty></empty>\r\n"
                   "\t</inner>\r\n"
                   "free text\r\n"
                   "</doc>\r\n"_qs);
}

TEST(XmlWrite, NamelessRootWithOneChildIsLeftOut)
{
    CXmlElementPtr root = CreateElement(QString());
    CXmlElementPtr a = CreateElement(u"a"_qs);
    root->AddChild(a.Get());
    QString out;
    ASSERT_TRUE(CXmlElement::WriteDocument(root.Get(), out));
    EXPECT_EQ(out, u"<?xml version='1.0' encoding='UTF-16' ?>\n<a></a>\r\n"_qs);

    // With two children the nameless wrapper stays.
    CXmlElementPtr b = CreateElement(u"b"_qs);
    root->AddChild(b.Get());
    ASSERT_TRUE(CXmlElement::WriteDocument(root.Get(), out));
    EXPECT_EQ(out, u"<?xml version='1.0' encoding='UTF-16' ?>\n<>\r\n\t<a></a>\r\n\t<b></b>\r\n</>\r\n"_qs);

    EXPECT_FALSE(CXmlElement::WriteDocument(CXmlElement::Null(), out));
    EXPECT_FALSE(CXmlElement::WriteDocument(nullptr, out));
}

TEST(XmlWrite, ParseWriteParseGivesTheSameTree)
{
    const char16_t *texts[] = {
        u"<a b='1' c=\"&lt;2&gt;\"><b>x &amp; y</b><c/><d e='q&apos;'><f>deep</f></d></a>",
        u"<root><item id='1'>one</item><item id='2'>two</item></root>",
        u"<a>&quot;quoted&quot; and 'single'</a>",
    };
    for (const char16_t *t : texts) {
        CXmlElementPtr first = CreateElement(QString());
        int position = -1;
        ASSERT_TRUE(CXmlElement::Parse(first.Get(), QString::fromUtf16(t), position));
        QString written;
        ASSERT_TRUE(CXmlElement::WriteDocument(first.Get(), written));
        CXmlElementPtr second = CreateElement(QString());
        ASSERT_TRUE(CXmlElement::Parse(second.Get(), written, position)) << written.toStdString();
        EXPECT_EQ(dump(second.Get()), dump(first.Get()));
    }
}

TEST(XmlElement, ChildrenNeverFormACycle)
{
    CXmlElementPtr a = CreateElement(u"a"_qs);
    CXmlElementPtr b = CreateElement(u"b"_qs);
    CXmlElementPtr c = CreateElement(u"c"_qs);
    a->SetNamespace(u":ns"_qs);
    EXPECT_TRUE(a->AddChild(b.Get()));
    EXPECT_EQ(b->GetNamespace(), u":ns"_qs);
    EXPECT_TRUE(b->AddChild(c.Get()));
    EXPECT_FALSE(b->AddChild(a.Get())); // a holds b directly
    EXPECT_FALSE(c->AddChild(a.Get())); // a holds c deeper
    EXPECT_FALSE(a->AddChild(a.Get()));
    EXPECT_FALSE(a->AddChild(nullptr));
    EXPECT_FALSE(a->AddChild(CXmlElement::Null()));
    EXPECT_FALSE(CXmlElement::Null()->AddChild(b.Get()));
    CXmlElementPtr none = CreateElement(u"n"_qs, CXmlElement::KindNone);
    EXPECT_FALSE(a->AddChild(none.Get()));
    // Sharing without a cycle is allowed, and each parent counts.
    EXPECT_TRUE(a->AddChild(c.Get()));
    EXPECT_EQ(c->RefCount(), 3);
    EXPECT_EQ(a->RemoveChildAt(1), 1);
    EXPECT_EQ(c->RefCount(), 2);
    EXPECT_EQ(a->RemoveChildAt(5), 0);
}

TEST(XmlElement, Attributes)
{
    CXmlElementPtr a = CreateElement(u"a"_qs);
    EXPECT_NE(a->AddAttribute(u"k"_qs, u"1"_qs), nullptr);
    EXPECT_NE(a->AddAttribute(u"k"_qs, u"2"_qs), nullptr); // duplicates are not looked for
    EXPECT_EQ(a->GetAttributeCount(), 2);
    a->SetAttribute(u"k"_qs, u"3"_qs);
    EXPECT_EQ(a->GetAttributeAt(0)->GetData(), u"3"_qs);
    EXPECT_EQ(a->GetAttributeAt(1)->GetData(), u"2"_qs);
    a->SetAttribute(u"new"_qs, u"4"_qs);
    EXPECT_EQ(a->GetAttributeCount(), 3);
    EXPECT_EQ(a->AddAttribute(QString(), u"x"_qs), nullptr);
    EXPECT_EQ(CXmlElement::Null()->AddAttribute(u"k"_qs, u"x"_qs), nullptr);
    bool found = true;
    EXPECT_TRUE(a->GetAttribute(u"missing"_qs, &found).isEmpty());
    EXPECT_FALSE(found);
    EXPECT_EQ(a->RemoveAttribute(u"k"_qs), 1);
    EXPECT_EQ(a->GetAttribute(u"k"_qs), u"2"_qs);
    EXPECT_EQ(a->RemoveAttribute(u"missing"_qs), 0);
}

TEST(XmlElement, DeepTreesAreParsedAndFreedWithoutRecursion)
{
    // 200000 levels would overflow the stack of a recursive destructor.
    const int depth = 200000;
    QString text;
    for (int i = 0; i < depth; ++i)
        text += u"<e>";
    for (int i = 0; i < depth; ++i)
        text += u"</e>";
    CXmlElementPtr root = CreateElement(QString());
    int position = -1;
    ASSERT_TRUE(CXmlElement::Parse(root.Get(), text, position));
    const CXmlElement *deepest = root.Get();
    while (deepest->GetChildCount())
        deepest = deepest->GetChildAt(0);
    EXPECT_TRUE(root->Contains(deepest));
    EXPECT_FALSE(deepest->Contains(root.Get()));
}

TEST(XmlWrite, DeepTreeIndentsEveryLevel)
{
    // The output grows with the square of the depth, so the depth stays modest.
    const int depth = 3000;
    CXmlElementPtr root = CreateElement(u"e"_qs);
    CXmlElement *parent = root.Get();
    for (int i = 1; i < depth; ++i) {
        CXmlElementPtr child = CreateElement(u"e"_qs);
        parent->AddChild(child.Get());
        parent = child.Get();
    }
    QString written;
    ASSERT_TRUE(CXmlElement::WriteDocument(root.Get(), written));
    EXPECT_TRUE(written.contains(QString(depth - 1, u'\t') + u"<e></e>\r\n"_qs));
    EXPECT_EQ(written.count(u"</e>\r\n"_qs), depth);
}
