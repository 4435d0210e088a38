#include "support/languagestring.h"
#include "support/registry.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class LanguageTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(settingsDir.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsDir.path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir.path());
        write("en.lang", "# comment\n100\tHello\n101\tTwo\\nlines\\tand tab\n102\tOnly English\nbad line\n");
        write("fr.lang", "100\tBonjour\r\n101\tDeux\n");
        qputenv("TARN_LANG_DIR", langDir.path().toUtf8());
        UnloadLanguageModule();
    }
    void TearDown() override
    {
        qunsetenv("TARN_LANG_DIR");
        UnloadLanguageModule();
    }
    void write(const char *name, const QByteArray &content)
    {
        QFile f(langDir.filePath(name));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(content);
    }
    QTemporaryDir settingsDir;
    QTemporaryDir langDir;
};

} // namespace

TEST_F(LanguageTest, ChosenLanguageAndFallbacks)
{
    struct Case {
        const char *lang; // "" leaves LANG unset
        int id;
        const char *expect;
        std::uint16_t code;
    };
    const Case cases[] = {
        {"", 100, "Hello", 25966},
        {"", 101, "Two\nlines\tand tab", 25966},
        {"fr", 100, "Bonjour", 0x6672},
        {"FR", 101, "Deux", 0x6672},             // the file name case comes from LANG
        {"fr", 102, "Only English", 0x6672},     // only in the fallback
        {"de", 100, "Hello", 25966},             // no de.lang: English
        {"en", 999, "", 25966},                  // unknown everywhere
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.lang);
        UnloadLanguageModule();
        if (*c.lang)
            RegistrySetString(QStringLiteral("Software\\HELIOMAR\\TARN\\Lang"), QStringLiteral("LANG"),
                              QString::fromLatin1(c.lang));
        else
            RegistryDeleteValue(QStringLiteral("Software\\HELIOMAR\\TARN\\Lang"), QStringLiteral("LANG"));
        if (QString::fromLatin1(c.lang) == QStringLiteral("FR"))
            write("FR.lang", "101\tDeux\n");
        ASSERT_TRUE(LoadLanguageModule());
        EXPECT_EQ(LanguageString(c.id), QString::fromUtf8(c.expect));
        EXPECT_EQ(g_languageCode, c.code);
    }
}

TEST_F(LanguageTest, MissingEnglishFailsToLoad)
{
    QFile::remove(langDir.filePath("en.lang"));
    EXPECT_FALSE(LoadLanguageModule());
    // The second call gives the first result.
    write("en.lang", "100\tHello\n");
    EXPECT_FALSE(LoadLanguageModule());
    EXPECT_EQ(LanguageString(100), QString());
}

TEST_F(LanguageTest, ParserSkipsMalformedLines)
{
    QList<QPair<int, QString>> entries;
    EXPECT_FALSE(ParseLanguageText("1\ta\nx\tb\n\n#2\tc\n3\t\\\\n\n", entries));
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0].second, QStringLiteral("a"));
    EXPECT_EQ(entries[1].first, 3);
    EXPECT_EQ(entries[1].second, QStringLiteral("\\n"));
}

TEST_F(LanguageTest, RegistryKeyPathsAndValueKinds)
{
    struct Case { const char *path; const char *app; const char *group; };
    const Case cases[] = {
        {"Software\\HELIOMAR\\TARN\\UserEMI", "TARN", "UserEMI"},
        {"Software\\HELIOMAR\\TARN\\STANDARD OPTIONS", "TARN", "STANDARD OPTIONS"},
        {"Software\\HELIOMAR\\Tracelift\\Settings", "Tracelift", "Settings"},
        {"UserFunction", "TARN", "UserFunction"},
    };
    for (const Case &c : cases) {
        QString app, group;
        RegistrySplitKeyPath(QString::fromLatin1(c.path), app, group);
        EXPECT_EQ(app, QString::fromLatin1(c.app)) << c.path;
        EXPECT_EQ(group, QString::fromLatin1(c.group)) << c.path;
    }
    const QString key = QStringLiteral("Software\\HELIOMAR\\TARN\\UserEMI");
    EXPECT_EQ(RegistryGetDword(key, QStringLiteral("EMICount"), 7u), 7u);
    RegistrySetDword(key, QStringLiteral("EMICount"), 3);
    EXPECT_EQ(RegistryGetDword(key, QStringLiteral("EMICount"), 7u), 3u);
    // A number is not a string value.
    EXPECT_EQ(RegistryGetString(key, QStringLiteral("EMICount"), QStringLiteral("x")), QStringLiteral("x"));
    RegistrySetString(key, QStringLiteral("EMI0"), QStringLiteral("CISPR 25"));
    EXPECT_EQ(RegistryGetString(key, QStringLiteral("EMI0"), QString()), QStringLiteral("CISPR 25"));
}

TEST_F(LanguageTest, FolderOfTheProgramIsSearchedFirst)
{
    QTemporaryDir program;
    ASSERT_TRUE(QDir(program.path()).mkdir(QStringLiteral("lang")));
    QFile f(program.filePath(QStringLiteral("lang/en.lang")));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("100\tBeside the program\n");
    f.close();
    EXPECT_EQ(LanguageSearchFolders(program.path()).value(0), program.filePath(QStringLiteral("lang")));
    ASSERT_TRUE(LoadLanguageModule(program.path()));
    EXPECT_EQ(LanguageString(100), QStringLiteral("Beside the program"));
    EXPECT_EQ(LanguageString(102), QString()); // no other English file is mixed in
}

TEST(LanguageFile, EnglishTextsAreWellFormed)
{
    QFile f(QStringLiteral(TARN_SOURCE_DIR "/lang/en.lang"));
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    QList<QPair<int, QString>> entries;
    EXPECT_TRUE(ParseLanguageText(f.readAll(), entries));
    ASSERT_FALSE(entries.isEmpty());
    for (int i = 0; i < entries.size(); ++i) {
        EXPECT_FALSE(entries[i].second.trimmed().isEmpty()) << entries[i].first;
        if (i > 0) {
            EXPECT_LT(entries[i - 1].first, entries[i].first) << "numbers must rise";
        }
    }
}
