#include "formula/rpnexception.h"
#include "formula/rpnscanner.h"
#include "formula/rpnseams.h"
#include "formula/rpnuserfunction.h"

#include "formulatest.h"

#include <gtest/gtest.h>

namespace {

// Items as "kind:text@row,col", separated by blanks; control characters escaped.
std::string stream(const CRpnParserItemArray &items)
{
    QString out;
    for (const CRpnParserItem *item : items.m_items) {
        if (!out.isEmpty())
            out += u' ';
        QString t = item->m_text;
        t.replace(u'\r', QStringLiteral("\\r")).replace(u'\n', QStringLiteral("\\n")).replace(u'\t', QStringLiteral("\\t"));
        out += QStringLiteral("%1:%2@%3,%4").arg(item->m_kind).arg(t).arg(item->m_row).arg(item->m_col);
        if (item->m_kind == RPN_TOKEN_HOST_VARIABLE)
            out += QStringLiteral("#%1").arg(item->m_index);
    }
    return out.toStdString();
}

struct Scanned
{
    int result = 0;
    CRpnErrorFields errors;
    CRpnParserItemArray root;
    CRpnParserItemArray functions;
};

std::unique_ptr<Scanned> scan(const QString &text, const CRpnVariableMatcher &matcher = {})
{
    auto s = std::make_unique<Scanned>();
    s->result = Scan(&s->errors, text, s->root, s->functions, matcher);
    return s;
}

} // namespace

TEST(RpnScanner, TokenStreams)
{
    struct Case {
        const char16_t *text;
        const char *expect;
    };
    const Case cases[] = {
        {u"x=1 // note\ny", "0:x@1,0 4:=@1,1 1:1@1,2 20: @1,3 22:// note@1,4 21:\\n@1,11 0:y@2,0"},
        {u"a!b a!=b", "0:a!b@1,0 20: @1,3 0:a@1,4 4:!=@1,5 0:b@1,7"}, {u"!a", "4:!@1,0 0:a@1,1"},
        {u"sin(1)", "3:sin@1,0 5:(@1,3 1:1@1,4 5:)@1,5"},
        {u"Sin \t(1)", "3:Sin@1,0 20: \\t@1,3 5:(@1,5 1:1@1,6 5:)@1,7"},
        {u"2 (x)", "1:2@1,0 20: @1,1 5:(@1,2 0:x@1,3 5:)@1,4"},
        {u"a[0]{}", "0:a@1,0 5:[@1,1 1:0@1,2 5:]@1,3 5:{@1,4 5:}@1,5"}, {u"<--BEGIN-->a\"b'c<--END-->", "7:a\"b'c@1,0"},
        {u"<--begin-->x\ny<--End-->z", "7:x\\ny@1,0 0:z@2,10"},
        {u"_CRLF _CRLFx _crlf _TB_QT", "7:\\r\\n@1,0 20: @1,5 0:_CRLFx@1,6 20: @1,12 0:_crlf@1,13 20: @1,18 0:_TB_QT@1,19"},
        {u"_LF+_CR+_TB+_QT", "7:\\n@1,0 4:+@1,3 7:\\r@1,4 4:+@1,7 7:\\t@1,8 4:+@1,11 7:\"@1,12"},
        {u"\"ab\" 'c\nd' x", "7:\"ab\"@1,0 20: @1,4 7:'c\\nd'@1,5 20: @2,2 0:x@2,3"}, {u"'open", "99:'@1,0 0:open@1,1"},
        {u"a\r\nb\rc", "0:a@1,0 21:\\r\\n@1,1 0:b@2,0 21:\\r@2,1 0:c@2,2"}, {u"\n\n\nz", "21:\\n\\n\\n@1,0 0:z@4,0"},
        {u"#define N 3\r\nN", "7:#define N 3\\r@1,0 21:\\n@1,12 0:N@2,0"},
        {u"10 kOhm+2.5e3-.5", "1:10 kOhm@1,0 4:+@1,7 1:2.5e3@1,8 4:-@1,13 1:.5@1,14"},
        {u"3 x 1e", "1:3@1,0 20: @1,1 0:x@1,2 20: @1,3 1:1@1,4 0:e@1,5"}, {u"0x1Fz", "1:0x1F@1,0 0:z@1,4"},
        {u"x.5 $v:w", "0:x.5@1,0 20: @1,3 0:$v:w@1,4"},
        {u"/* a\nb */c /* open", "22:/* a\\nb */@1,0 0:c@2,4 20: @2,5 22:/* open@2,6"},
        {u"\u2003\u2009x", "20:\u2003\u2009@1,0 0:x@1,2"}, {u"a\u2003b", "0:a\u2003b@1,0"}, {u"a<--b", ""},
    };
    for (const Case &c : cases) {
        const QString text = QString::fromUtf16(c.text);
        auto s = scan(text);
        if (!*c.expect) {
            EXPECT_EQ(s->result, 0) << text;
            continue;
        }
        EXPECT_EQ(s->result, 1) << text;
        EXPECT_EQ(stream(s->root), QString::fromUtf8(c.expect).toStdString()) << text;
    }
}

TEST(RpnScanner, Operators)
{
    auto s = scan(QStringLiteral("== != <= >= <> << >> && || ++ -- += -= *= /= ** + - * / ^ % ! < > = & | ~ , ; <<= =!"));
    QStringList ops;
    for (const CRpnParserItem *item : s->root.m_items) {
        if (item->IsSignificant()) {
            EXPECT_EQ(item->m_kind, RPN_TOKEN_OPERATOR) << item->m_text;
            ops << item->m_text;
        }
    }
    EXPECT_EQ(ops.join(u' '), "== != <= >= <> << >> && || ++ -- += -= *= /= ** + - * / ^ % ! < > = & | ~ , ; << = = !");
}

TEST(RpnScanner, HostVariables)
{
    // The host knows "Col1" (slot 4) and "U(t)" (slot 9).
    const CRpnVariableMatcher matcher = [](QStringView rest, int &index) {
        if (rest.startsWith(u"Col1")) {
            index = 4;
            return 4;
        }
        if (rest.startsWith(u"U(t)")) {
            index = 9;
            return 4;
        }
        return 0;
    };
    auto s = scan(QStringLiteral("Col1+U(t)*Col10 x"), matcher);
    EXPECT_EQ(stream(s->root), "8:Col1@1,0#4 4:+@1,4 8:U(t)@1,5#9 4:*@1,9 8:Col1@1,10#4 1:0@1,14 20: @1,15 0:x@1,16");
    // Operators, numbers and quoted text come before the host.
    s = scan(QStringLiteral("1+'Col1'"), matcher);
    EXPECT_EQ(stream(s->root), "1:1@1,0 4:+@1,1 7:'Col1'@1,2");
}

TEST(RpnScanner, FunctionDefinitions)
{
    auto s = scan(QStringLiteral("x = 1\nfunction f(a, b) { return a+b }\nf(x, (2))\nFUNCTION g(){}"));
    ASSERT_EQ(s->result, 1);
    EXPECT_EQ(stream(s->root), "0:x@1,0 20: @1,1 4:=@1,2 20: @1,3 1:1@1,4 21:\\n@1,5 21:\\n@2,31 "
                               "3:f@3,0 5:(@3,1 0:x@3,2 4:,@3,3 20: @3,4 5:(@3,5 1:2@3,6 5:)@3,7 5:)@3,8 "
                               "21:\\n@3,9");
    ASSERT_EQ(s->functions.GetSize(), 2);
    const CRpnParserFunction *f = s->functions.GetAt(0)->AsFunction();
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(f->m_name, "f");
    EXPECT_EQ(f->m_row, 2);
    EXPECT_EQ(f->m_col, 9);
    EXPECT_EQ(stream(f->m_parameters), "0:a@2,11 4:,@2,12 20: @2,13 0:b@2,14");
    EXPECT_EQ(stream(f->m_body), "20: @2,18 0:return@2,19 20: @2,25 0:a@2,26 4:+@2,27 0:b@2,28 20: @2,29");
    const CRpnParserFunction *g = s->functions.GetAt(1)->AsFunction();
    EXPECT_EQ(g->m_name, "g");
    EXPECT_EQ(g->m_parameters.GetSize(), 0);
    EXPECT_EQ(g->m_body.GetSize(), 0);

    // Brackets nest inside parameters and body; a call in the body is still a call.
    s = scan(QStringLiteral("function h(a = {1,(2)}) { if (a) { b = sin(a) } }"));
    ASSERT_EQ(s->result, 1);
    const CRpnParserFunction *h = s->functions.GetAt(0)->AsFunction();
    EXPECT_EQ(h->m_parameters.GetSize(), 11);
    EXPECT_EQ(h->m_body.GetAt(1)->m_kind, RPN_TOKEN_CALL); // "if"
    EXPECT_EQ(s->root.GetSize(), 0);
}

TEST(RpnScanner, ErrorsOfDefinitions)
{
    struct Case {
        const char *text;
        int message;
        const char *token;
        int row;
        int col;
    };
    const Case cases[] = {
        {"function f(a){}\nfunction f(b){}", 43241, "f", 2, 9}, {"function 1f(){}", 43241, "1f", 1, 9},
        {"function (a){}", 43241, "(", 1, 9}, {"function f a", 43242, " ( ", 1, 11},
        {"function f[a]", 43029, " ( ", 1, 10}, {"function f(a) b", 43242, " { ", 1, 14},
        {"function f(a) (", 43242, " { ", 1, 14}, {"{ function f(){} }", 43243, "function", 1, 2},
        {"(function f(){})", 43243, "function", 1, 1}, {"function f(){ function g(){} }", 43243, "function", 1, 14},
        {"function f(function){}", 43243, "function", 1, 11}, {"function function(){}", 43243, "function", 1, 9},
        {"function f(a", 43029, " ( ", 1, 12}, {"function f(a) { x", 43170, " { ", 1, 17},
        {"function f(a)", 43242, " { ", 1, 13}, {"function", 43241, "", 1, 8},
        {"a <--BEGIN x", 43242, " <--BEGIN--> ", 1, 2}, {"\n<--BEGIN--> abc", 43242, " <--END--> ", 2, 0},
    };
    for (const Case &c : cases) {
        auto s = scan(QString::fromUtf8(c.text));
        EXPECT_EQ(s->result, 0) << c.text;
        EXPECT_EQ(s->errors.GetErrorMessage(), RpnMessage(c.message, {QString::fromUtf8(c.token)})) << c.text;
        EXPECT_EQ(s->errors.GetErrorToken(), QString::fromUtf8(c.token)) << c.text;
        EXPECT_EQ(s->errors.GetErrorRow(), c.row) << c.text;
        EXPECT_EQ(s->errors.GetErrorCol(), c.col) << c.text;
    }
    // In throwing mode the scanner's error is an exception.
    CRpnErrorFields errors;
    errors.throwOnError = 1;
    CRpnParserItemArray root, functions;
    EXPECT_THROW(Scan(&errors, QStringLiteral("(function f(){})"), root, functions), CRpnException);
}

namespace {

// Evaluates list defaults as their text, so that the seam is seen to be used.
class ListDefaults : public CRpnFormulaSupport
{
public:
    void DeleteTree(CEquationTree *) override {}
    CEquationTree *CloneTree(const CEquationTree *) override { return nullptr; }
    void Evaluate(CEquationTree *, CRpnData &) override {}
    QString GetSource(const CEquationTree *) override { return {}; }
    void Combine(int, const CRpnData &, const CRpnData &, CRpnData &) override {}
    void SerializeTree(CEquationTree *&, CRpnBuffer &) override {}
    bool EvaluateText(const QString &text, CRpnData &result) override
    {
        result.SetText(QStringLiteral("list ") + text);
        return !text.contains(u'!');
    }
};

} // namespace

TEST(RpnScanner, ParameterLists)
{
    const QString source = QStringLiteral(
        "function f(_ref a, b = 2, c = -1.5k, d = \"t\", e = 'u', g = +3, h = {1, {2}}) {}");
    auto s = scan(source);
    ASSERT_EQ(s->result, 1);
    ListDefaults lists;
    SetRpnFormulaSupport(&lists);
    CRpnUserFunction record;
    const bool ok = ParseParameterList(&s->errors, source, *s->functions.GetAt(0)->AsFunction(), record);
    SetRpnFormulaSupport(nullptr);
    ASSERT_TRUE(ok) << s->errors.GetErrorMessage();
    EXPECT_EQ(record.m_name, "f");
    EXPECT_EQ(record.m_parameterNames.join(u','), "a,b,c,d,e,g,h");
    EXPECT_TRUE(record.IsByReference(0));
    EXPECT_FALSE(record.IsByReference(1));
    QStringList defaults;
    for (const CRpnData &d : record.m_defaults)
        defaults << QString::fromStdString(Describe(d));
    EXPECT_EQ(defaults.join(u'|'), ":|REAL:2|REAL:-1.5k|STRING:t|STRING:u|REAL:3|STRING:list {1, {2}}");

    struct Case {
        const char *text;
        const char *token; // where the refusal is reported
    };
    const Case refusals[] = {
        {"function f(a,) {}", "f"}, {"function f(1) {}", "1"}, {"function f(a b) {}", "b"},
        {"function f(a = b) {}", "b"}, {"function f(a = ) {}", "f"}, {"function f(a = -\"x\") {}", "-"},
        {"function f(_ref) {}", "f"},
        {"function f(a = {1}) {}", "{"}, // no formula support registered
    };
    for (const Case &c : refusals) {
        const QString text = QString::fromUtf8(c.text);
        auto r = scan(text);
        ASSERT_EQ(r->result, 1) << c.text;
        CRpnUserFunction rec;
        EXPECT_FALSE(ParseParameterList(&r->errors, text, *r->functions.GetAt(0)->AsFunction(), rec)) << c.text;
        EXPECT_EQ(r->errors.GetErrorMessage(), RpnMessage(43028)) << c.text;
        EXPECT_EQ(r->errors.GetErrorToken(), QString::fromUtf8(c.token)) << c.text;
    }
    auto empty = scan(QStringLiteral("function f() {}"));
    CRpnUserFunction none;
    EXPECT_TRUE(ParseParameterList(nullptr, QString(), *empty->functions.GetAt(0)->AsFunction(), none));
    EXPECT_EQ(none.GetParameterCount(), 0);
}
