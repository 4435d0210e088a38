// Walks the 160 keywords of the language: each resolves to the node class of
// its row, or belongs to a family that has not landed yet.  Prints which.

#include "functions/rpnfunctionbase.h"
#include "formula/rpnkeywords.h"
#include "formula/rpnnode.h"

#include "functionstest.h"

#include <QMap>
#include <gtest/gtest.h>
#include <iostream>
#include <memory>
#include <typeinfo>
#if defined(__GNUC__)
#include <cxxabi.h>
#endif

namespace {

std::string className(const CRpnNode &node)
{
    const char *name = typeid(node).name();
#if defined(__GNUC__)
    int status = 0;
    std::unique_ptr<char, void (*)(void *)> plain(abi::__cxa_demangle(name, nullptr, nullptr, &status), std::free);
    if (status == 0 && plain)
        return plain.get();
#endif
    std::string s = name;
    return s.rfind("class ", 0) == 0 ? s.substr(6) : s;
}

// The family of each keyword.  The families of kLanded must resolve; the
// others resolve once their families land.
const QStringList kLanded = {QStringLiteral("core"),   QStringLiteral("numeric"), QStringLiteral("conversions"),
                             QStringLiteral("arrays"), QStringLiteral("strings"), QStringLiteral("dictionaries"),
                             QStringLiteral("tables"), QStringLiteral("matrices"), QStringLiteral("xml"),
                             QStringLiteral("environment"), QStringLiteral("formulas")};

// Keywords whose display name is another word: aliases and renamed calls.
bool shownAsAlias(const QString &name, const QString &shown)
{
    return (name.endsWith(u'R') && shown == name.chopped(1)) || (name.startsWith(u"ARC") && shown == u'A' + name.mid(3))
        || (name == u"LOG" && shown == u"LN") || (name == u"TOVALUE" && shown == u"VALUE")
        || (name == u"DICTIONARYTOARRAY" && shown == u"CONVERTTOARRAY")
        || (name == u"XML_ADDNEW" && shown == u"XML_ADDNEW") || (name.endsWith(u"ADJUGATE") && shown == name.chopped(5) + QStringLiteral("OINT"));
}

QMap<QString, QString> families()
{
    const char *const groups[][2] = {
        {"core", "RETURN ISEMPTY ISNULL TYPENAME POW MOD PWR AND OR IF ELSE NOT WHILE"},
        {"numeric", "SQRT SQR HYPOT SIN COS TAN ASIN ARCSIN ACOS ARCCOS ATAN ARCTAN ATAN2 SIND COSD TAND ASIND ACOSD "
                    "ATAND ATAN2D SINR COSR TANR ASINR ACOSR ATANR ATAN2R SINH COSH TANH MIN MAX SUM EXP LOG LN LOG10 "
                    "ABS SIGN AVG AVGX INT HIPASS CEIL FLOOR COMPLEX POLAR REAL IMAG ANGLE"},
        {"statements", "IIF CATCH SETTEXT SETVALUE ERROR WARNING MESSAGE GETLASTERROR"},
        {"directives", "#DEFINE #UNDEF #IF #IFDEF #IFNDEF #ELIF #ELSE #ENDIF #ERROR"},
        {"formulas", "FORMULA EVAL REPLACEF EVALM EVALVARS"},
        {"conversions", "VALUE TOVALUE STRING TOSTRING"},
        {"arrays", "ARRAY ARRAYLOG ARRAYD SIZEOF ADDTOARRAY REMOVECELL APPENDARRAY COPY FINDNEXT"},
        {"strings", "REPLACE SPLIT SPLIT2 FIND FINDREVERSE TRIM TRIMLEFT TRIMRIGHT MAKEUPPER MAKELOWER SUBSTR"},
        {"dictionaries", "DICTIONARY DICT_SET DICT_GET DICTIONARYTOARRAY"},
        {"environment", "SCRIPTOPTION LOADSCRIPT MESSAGEBOX GETFILES WAIT PRINT CLEAR GETVERSION ISVERSIONGE"},
        {"matrices", "MATRIX TRANSPOSE EYE ZEROS COFACTOR ADJOINT ADJUGATE INVERSE DETERMINANT DCOFACTOR DADJOINT "
                     "DADJUGATE DINVERSE DDETERMINANT EIGEN EIGENVECTOR INVERSECH DETERMINANTCH"},
        {"tables", "READTABLE GETTABLEVALUE GRAPH2D GRAPH3D GRAPH4D LOOKUP_TABLE"},
        {"xml", "XML_NEW XML_ADDNEW XML_SETATTRIBUTE XML_GETATTRIBUTE XML_DELATTRIBUTE XML_GETALLATTRIBUTES "
                "XML_ADDCHILD XML_FINDCHILD XML_DELCHILD XML_GETALLCHILDREN XML_GETNAME XML_GETDATA XML_SETDATA "
                "XML_PARSE"},
    };
    QMap<QString, QString> out;
    for (const auto &group : groups) {
        for (const QString &name : QString::fromLatin1(group[1]).split(u' ')) {
            EXPECT_FALSE(out.contains(name)) << name.toStdString() << " in two families";
            out.insert(name, QString::fromLatin1(group[0]));
        }
    }
    return out;
}

} // namespace

TEST(RpnKeywordWalk, EveryKeywordResolvesOrIsPending)
{
    const QMap<QString, QString> family = families();
    EXPECT_EQ(family.size(), 160);
    QMap<QString, QStringList> resolved, pending;
    int resolvedCount = 0;
    for (const CRpnKeywordRow &row : GetLanguageKeywords()) {
        const QString name = QString::fromLatin1(row.name);
        ASSERT_TRUE(family.contains(name)) << row.name << " belongs to no family";
        const QString f = family.value(name);
        const bool mustResolve = kLanded.contains(f);
        unsigned char status = 1;
        std::unique_ptr<CRpnNode> node(LookupKeyword(nullptr, name.toLower(), 0, 1, 0, status));
        if (!node) {
            EXPECT_FALSE(mustResolve) << row.name << " does not resolve";
            EXPECT_EQ(GetPrototypes().GetAt(row.classNumber), nullptr) << row.name;
            pending[f] << name;
            continue;
        }
        ++resolvedCount;
        resolved[f] << name;
        // The right class: its number and its name.
        EXPECT_EQ(node->GetKind(), row.classNumber) << row.name;
        EXPECT_EQ(className(*node), row.className) << row.name;
        EXPECT_EQ(GetKeywordTable().Lookup(name), row.classNumber) << row.name;
        if (mustResolve && f != u"core") {
            EXPECT_EQ(node->GetPrecedence(), RPN_PREC_FUNCTION) << row.name;
            // The display name is the keyword, or what an alias stands for
            // (SINR sin, ARCSIN asin, LOG ln, TOVALUE Value).
            const QString shown = node->GetName().toUpper();
            EXPECT_TRUE(shown == name || shownAsAlias(name, shown)) << row.name << " shown as " << shown.toStdString();
        }
    }
    std::cout << "[ keywords ] " << resolvedCount << " of 160 resolve\n";
    for (auto it = resolved.cbegin(); it != resolved.cend(); ++it)
        std::cout << "[ resolved ] " << it.key().toStdString() << ": " << it.value().join(u' ').toStdString() << "\n";
    for (auto it = pending.cbegin(); it != pending.cend(); ++it)
        std::cout << "[ pending  ] " << it.key().toStdString() << ": " << it.value().join(u' ').toStdString() << "\n";
    EXPECT_GE(resolvedCount, 146);
}
