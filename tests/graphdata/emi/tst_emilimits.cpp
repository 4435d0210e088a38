// The limit list: the built-in standards, user limits in the settings with
// their numbering, and the import of a limit file with its refusals.
#include "graphdata/emi/emiimport.h"
#include "graphdata/emi/emilimits.h"
#include "support/languagestring.h"
#include "support/registry.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

namespace {

const QString kKey = QStringLiteral("Software\\HELIOMAR\\TARN\\UserEMI");

class EmiLimits : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }
    void SetUp() override
    {
        ASSERT_TRUE(m_settings.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settings.path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settings.path());
        ForgetEmiLimits();
    }
    void TearDown() override { ForgetEmiLimits(); }

    QString writeFile(const char *text)
    {
        const QString path = m_settings.path() + QStringLiteral("/limit.ini");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
        return path;
    }

    QTemporaryDir m_settings;
};

std::vector<CEmiPair> rows(const CCurveInfo &c)
{
    return EmiLimitPairs(c);
}

} // namespace

TEST_F(EmiLimits, BuiltInTableHoldsThePublishedRows)
{
    // A sample of rows, read back from the built curves.
    const struct
    {
        int index;
        const char *key, *label;
        std::vector<CEmiPair> pairs;
    } cases[] = {
        {0, "FCC_ClassA", "FCC Class A", {{150000, 79}, {500000, 79}, {500000, 73}, {30000000, 73}}},
        {1, "FCC_ClassB", "FCC Class B", {{150000, 66}, {500000, 56}, {5000000, 56}, {5000000, 60}, {30000000, 60}}},
        {4,
         "CISPR25",
         "CISPR 25 (Class 3)",
         {{150000, 77}, {300000, 77}, {530000, 57}, {1800000, 57}, {5900000, 52}, {6200000, 52}, {76000000, 37},
          {108000000, 37}}},
        {9, "Mil_461_28", "Mil-Std 461 (28V)", {{10000, 94}, {500000, 60}, {10000000, 60}}},
        {13, "Mil_461_440", "Mil-Std 461 (440V)", {{10000, 106}, {500000, 72}, {10000000, 72}}},
        {15,
         "EN55011_ClassA_Group2",
         "EN55011(Class - A Group - 2)",
         {{150000, 100}, {500000, 100}, {500000, 86}, {5000000, 86}, {5000000, 90}, {30000000, 70}}},
        {17,
         "EN55011_ClassB",
         "EN55011(Class - B)",
         {{150000, 66}, {500000, 56}, {5000000, 56}, {5000000, 60}, {30000000, 60}}},
    };
    CCurveInfoArray &list = GetEmiLimits();
    ASSERT_EQ(EmiBuiltInCount(), 18);
    ASSERT_EQ(list.GetSize(), 18); // no user limits in a fresh settings folder
    for (const auto &c : cases) {
        SCOPED_TRACE(c.key);
        const CCurveInfo &limit = *list.GetAt(c.index);
        EXPECT_EQ(limit.m_colName, QString::fromUtf8(c.label));
        EXPECT_EQ(limit.m_colLabel, QString::fromUtf8(c.label));
        EXPECT_EQ(limit.m_displayColumn->m_name, QString::fromUtf8(c.key));
        EXPECT_EQ(limit.m_source, 0x102u);
        EXPECT_EQ(limit.m_color, 0u);
        EXPECT_EQ(limit.m_lineThickness, 2);
        EXPECT_EQ(limit.m_colIndex, c.index);
        EXPECT_EQ(limit.m_ownX->m_kind, 4096u);
        EXPECT_EQ(limit.m_displayColumn->m_kind, 8204u);
        EXPECT_EQ(limit.m_ownY->m_kind, 8192u);
        EXPECT_EQ(limit.m_ownXLog->m_kind, 4097u);
        const std::vector<CEmiPair> got = rows(limit);
        ASSERT_EQ(got.size(), c.pairs.size());
        for (std::size_t i = 0; i < got.size(); ++i) {
            EXPECT_EQ(got[i].frequency, c.pairs[i].frequency) << i;
            EXPECT_EQ(got[i].level, c.pairs[i].level) << i;
            EXPECT_EQ(limit.m_displayColumn->m_values[i], c.pairs[i].level) << i;
            EXPECT_DOUBLE_EQ(limit.m_ownXLog->m_values[i], std::log10(c.pairs[i].frequency)) << i;
        }
    }
}

TEST_F(EmiLimits, SettingsTextsAreReadAsFarAsTheyGo)
{
    const struct
    {
        const char *name, *text;
        bool ok;
        int pairs;
    } cases[] = {
        {"whole", "Mine\nMy limit\n2\n1000\n40\n2e+06\n30\n", true, 2},
        {"short text keeps the pairs read", "Mine\nMy limit\n3\n1000\n40\n2000\n", true, 1},
        {"no pair at all", "Mine\nMy limit\n2\n", false, 0},
        {"count below one", "Mine\nMy limit\n0\n1000\n40\n", false, 0},
        {"header cut short", "Mine\nMy limit\n", false, 0},
        {"one pair draws one point", "Dot\nDot\n1\n5e6\n20\n", true, 1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        QString key, label;
        std::vector<CEmiPair> pairs;
        EXPECT_EQ(ParseUserLimitText(QString::fromUtf8(c.text), key, label, pairs), c.ok);
        EXPECT_EQ(int(pairs.size()), c.pairs);
    }
    // Written and read back, a limit keeps its pairs; its display name becomes
    // its key.
    std::unique_ptr<CCurveInfo> limit(BuildEmiLimit(u"K"_qs, u"Label"_qs, {{1e5, 40.5}, {2e6, 33}}, 20));
    QString key, label;
    std::vector<CEmiPair> pairs;
    ASSERT_TRUE(ParseUserLimitText(FormatUserLimitText(*limit), key, label, pairs));
    EXPECT_EQ(key, u"Label"_qs);
    ASSERT_EQ(pairs.size(), 2u);
    EXPECT_EQ(pairs[1].frequency, 2e6);
    EXPECT_EQ(pairs[0].level, 40.5);
}

TEST_F(EmiLimits, UserLimitsAreSavedRenumberedAndReloaded)
{
    const int base = EmiBuiltInCount();
    EXPECT_EQ(AddUserLimit(u"A"_qs, u"Alpha"_qs, {{1e5, 50}, {1e6, 40}}), base);
    EXPECT_EQ(AddUserLimit(u"B"_qs, u"Beta"_qs, {{2e5, 60}}), base + 1);
    EXPECT_EQ(AddUserLimit(u"C"_qs, u"Gamma"_qs, {{3e5, 70}, {3e5, 65}}), base + 2);
    EXPECT_TRUE(EmiUserListChanged());
    SaveUserLimits(true);
    EXPECT_EQ(RegistryGetDword(kKey, u"EMICount"_qs, 0), 3u);

    // Built-ins cannot be removed; the first user limit can, and the others
    // move down a place, in the list and in the settings.
    EXPECT_FALSE(RemoveUserLimit(0));
    EXPECT_FALSE(RemoveUserLimit(base + 3));
    ASSERT_TRUE(RemoveUserLimit(base));
    CCurveInfoArray &list = GetEmiLimits();
    ASSERT_EQ(list.GetSize(), base + 2);
    EXPECT_EQ(list.GetAt(base)->m_colLabel, u"Beta"_qs);
    EXPECT_EQ(list.GetAt(base)->m_colIndex, base);
    EXPECT_EQ(list.GetAt(base + 1)->m_colIndex, base + 1);
    EXPECT_EQ(RegistryGetDword(kKey, u"EMICount"_qs, 0), 2u);
    EXPECT_TRUE(RegistryGetString(kKey, u"EMI1"_qs, {}).startsWith(u"Beta\n"_qs));
    EXPECT_TRUE(RegistryGetString(kKey, u"EMI2"_qs, {}).startsWith(u"Gamma\n"_qs));
    EXPECT_TRUE(RegistryGetString(kKey, u"EMI3"_qs, {}).isEmpty()); // the surplus value is gone

    // A malformed entry is skipped on reading; the rest load in order.
    RegistrySetDword(kKey, u"EMICount"_qs, 3);
    RegistrySetString(kKey, u"EMI3"_qs, u"Broken\nBroken\n"_qs);
    ForgetEmiLimits();
    CCurveInfoArray &again = GetEmiLimits();
    ASSERT_EQ(again.GetSize(), base + 2);
    EXPECT_EQ(again.GetAt(base + 1)->m_colName, u"Gamma"_qs);
    const std::vector<CEmiPair> step = rows(*again.GetAt(base + 1));
    ASSERT_EQ(step.size(), 2u);
    EXPECT_EQ(step[0].frequency, step[1].frequency); // a vertical step, kept unsorted
    EXPECT_FALSE(EmiUserListChanged());
}

TEST_F(EmiLimits, ImportRefusesBadFilesWithAMessage)
{
    const struct
    {
        const char *name, *text;
        const char *messagePart; // empty: accepted
        int pairs;
    } cases[] = {
        {"good", "[Limit]\nName=Own\nLabel=Own limit\nCount=3\n[Data]\nFreq1=150000\nValue1=60\n"
                 "Freq2=500000\nValue2=60\nFreq3=500000\nValue3=50\n",
         "", 3},
        {"missing level", "[Limit]\nName=Own\nLabel=Own\nCount=2\n[Data]\nFreq1=1e5\nValue1=60\nFreq2=2e5\n",
         "pair 2 lacks", 0},
        {"level not a number", "[Limit]\nName=Own\nLabel=Own\nCount=1\n[Data]\nFreq1=1e5\nValue1=high\n",
         "pair 1 lacks", 0},
        {"falling frequency", "[Limit]\nName=Own\nLabel=Own\nCount=2\n[Data]\nFreq1=2e5\nValue1=60\nFreq2=1e5\nValue2=50\n",
         "frequency of pair 2 is below", 0},
        {"duplicate name", "[Limit]\nName=Mine\nLabel=FCC Class A\nCount=1\n[Data]\nFreq1=1e5\nValue1=60\n",
         "\"FCC Class A\" exists already", 0},
        {"no header", "[Other]\nName=Own\n[Data]\nFreq1=1e5\nValue1=60\n", "no Name, Label or Count in section [Limit]", 0},
        {"bad count", "[Limit]\nName=Own\nLabel=Own\nCount=none\n", "\"none\" as its pair count", 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = writeFile(c.text);
        CEmiImport result;
        const bool ok = ImportEmiLimit(path, u"Limit"_qs, GetEmiLimits(), result);
        EXPECT_EQ(ok, *c.messagePart == 0);
        EXPECT_EQ(int(result.pairs.size()), c.pairs);
        if (*c.messagePart)
            EXPECT_TRUE(result.message.contains(QString::fromUtf8(c.messagePart))) << result.message.toStdString();
        else
            EXPECT_TRUE(result.message.isEmpty());
    }
    CEmiImport result;
    EXPECT_FALSE(ImportEmiLimit(m_settings.path() + u"/absent.ini"_qs, u"Limit"_qs, GetEmiLimits(), result));
    EXPECT_TRUE(result.message.contains(u"cannot be read"_qs));
}
