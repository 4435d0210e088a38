#include "formula/rpnkeywords.h"
#include "formula/rpnnode.h"

#include "formulatest.h"

#include <QSet>
#include <gtest/gtest.h>
#include <iostream>
#include <map>

namespace {

// A stand-in node class, one instance per class number.
class TestNode : public CRpnNode
{
public:
    explicit TestNode(int kind) : m_kind(kind) {}
    int GetKind() const override { return m_kind; }
    CRpnNode *CreateSame() const override { return new TestNode(m_kind); }
    QString GetName() const override { return QStringLiteral("test%1").arg(m_kind); }

private:
    int m_kind;
};

void provideTestNodes(CRpnPrototypeArray &prototypes)
{
    // sin and its aliases, and IsEmpty/IsNull.
    prototypes.SetAt(250, new TestNode(250));
    auto *isNull = new TestNode(13);
    isNull->m_flags = 0x4000;
    prototypes.SetAt(13, isNull);
}

CRpnNode *hostHook(CEquationTree *, const QString &name, int, int, int, unsigned char &status)
{
    if (name == QLatin1StringView("refused")) {
        status = 11;
        return nullptr;
    }
    if (name.compare(QLatin1StringView("MyFunc"), Qt::CaseInsensitive) == 0)
        return new TestNode(1999);
    return nullptr;
}

} // namespace

TEST(RpnKeywords, LanguageTableRows)
{
    const std::vector<CRpnKeywordRow> &rows = GetLanguageKeywords();
    EXPECT_EQ(rows.size(), 160u);
    QSet<QString> names;
    std::map<int, std::string> classOf;
    for (const CRpnKeywordRow &row : rows) {
        const QString name = QString::fromLatin1(row.name);
        EXPECT_EQ(name, name.toUpper()) << row.name;
        EXPECT_FALSE(names.contains(name)) << row.name;
        names.insert(name);
        EXPECT_GT(row.classNumber, 0);
        EXPECT_LT(row.classNumber, CRpnPrototypeArray::Size);
        // One class number, one class.
        auto [it, fresh] = classOf.emplace(row.classNumber, row.className);
        EXPECT_EQ(it->second, row.className) << row.name;
    }
    // Names that share a prototype.
    const std::vector<std::vector<const char *>> aliases = {
        {"ISEMPTY", "ISNULL"}, {"ASIN", "ARCSIN", "ASINR"}, {"ACOS", "ARCCOS", "ACOSR"},
        {"ATAN", "ARCTAN", "ATANR"}, {"ATAN2", "ATAN2R"}, {"SIN", "SINR"}, {"COS", "COSR"},
        {"TAN", "TANR"}, {"LOG", "LN"}, {"VALUE", "TOVALUE"}, {"WARNING", "MESSAGE"},
        {"ADJOINT", "ADJUGATE"}, {"DADJOINT", "DADJUGATE"},
    };
    auto classNumber = [&](const char *name) {
        for (const CRpnKeywordRow &row : rows)
            if (qstrcmp(row.name, name) == 0)
                return row.classNumber;
        return -1;
    };
    for (const auto &group : aliases)
        for (const char *name : group)
            EXPECT_EQ(classNumber(name), classNumber(group.front())) << name;
    EXPECT_EQ(classOf.size(), 160u - 16u); // 16 names are aliases
    EXPECT_EQ(classNumber("POW"), 39);
    EXPECT_EQ(classNumber("INT"), 314);
    EXPECT_EQ(classNumber("DICTIONARYTOARRAY"), 223);
    EXPECT_EQ(classNumber("#ERROR"), 709);
    EXPECT_EQ(classNumber("GETLASTERROR"), 341);
}

// Which names of the language are present (a node class stands behind
// them) and which are still pending; the table holds exactly the present ones.
TEST(RpnKeywords, PresentAndPendingNames)
{
    const CRpnKeywordTable &table = GetKeywordTable();
    const CRpnPrototypeArray &prototypes = GetPrototypes();
    QStringList present, pending;
    for (const CRpnKeywordRow &row : GetLanguageKeywords()) {
        const QString name = QString::fromLatin1(row.name);
        if (prototypes.GetAt(row.classNumber)) {
            present << name;
            EXPECT_EQ(table.Lookup(name), row.classNumber) << row.name;
        } else {
            pending << name;
            EXPECT_FALSE(table.Contains(name)) << row.name;
        }
    }
    EXPECT_EQ(present.size() + pending.size(), 160);
    std::cout << "[ keywords ] present " << present.size() << ": " << present.join(u' ').toStdString() << "\n"
              << "[ keywords ] pending " << pending.size() << ": " << pending.join(u' ').toStdString() << "\n";
}

TEST(RpnKeywords, LookupClonesPrototypesAndAsksTheHost)
{
    AddPrototypeProvider(provideTestNodes); // after the first build: runs at once
    auto *tree = reinterpret_cast<CEquationTree *>(0x1000);
    unsigned char status = 1;
    for (const char *word : {"sin", "SIN", "Sin", "sinR"}) {
        std::unique_ptr<CRpnNode> node(LookupKeyword(tree, QString::fromLatin1(word), 17, 3, 4, status));
        ASSERT_NE(node, nullptr) << word;
        EXPECT_EQ(node->GetKind(), 250);
        EXPECT_EQ(node->m_tree, tree);
        EXPECT_EQ(node->m_position, 17);
        EXPECT_EQ(node->m_row, 3);
        EXPECT_EQ(node->m_col, 4);
        EXPECT_NE(node.get(), GetPrototypes().GetAt(250));
    }
    std::unique_ptr<CRpnNode> isNull(LookupKeyword(tree, QStringLiteral("isnull"), 0, 1, 0, status));
    ASSERT_NE(isNull, nullptr);
    EXPECT_EQ(isNull->GetKind(), 13);
    EXPECT_EQ(isNull->m_flags, 0x4000u); // flags travel with the clone
    EXPECT_EQ(GetKeywordTable().Lookup(QStringLiteral("ISEMPTY")), 13);

    // Words of pending classes and unknown words go to the host's hook.
    EXPECT_EQ(LookupKeyword(tree, QStringLiteral("cos"), 0, 1, 0, status), nullptr);
    std::unique_ptr<CRpnNode> mine(LookupKeyword(tree, QStringLiteral("myfunc"), 0, 1, 0, status, hostHook));
    ASSERT_NE(mine, nullptr);
    EXPECT_EQ(mine->GetKind(), 1999);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(LookupKeyword(tree, QStringLiteral("refused"), 0, 1, 0, status, hostHook), nullptr);
    EXPECT_EQ(status, 11);
}
