#pragma once
// Numbered user-visible texts, read from the language files lang/<code>.lang.
//
// A language file is UTF-8 text with one "number<TAB>text" line per string;
// "\n", "\t" and "\\" are escapes, and lines starting with '#' are comments.
// The language is chosen by the "LANG" value of the settings group "Lang"
// (see registry.h); without one, or when its file is missing, English is used.
// A text missing from the chosen language is taken from English.

#include <QString>
#include <QStringList>
#include <cstdint>

// The first two letters of the loaded language, high byte first ("en" = 25966).
extern std::uint16_t g_languageCode;

// The folders searched for <code>.lang, in order: the folder "lang" beside the
// executable (and beside a sibling "bin" folder, as in the build tree), the
// installed data folder share/tarn/lang, and the user's data folders.
// `folder` and `subfolder`, when given, are searched first.  When the
// environment variable TARN_LANG_DIR is set, it is searched instead of the
// usual folders.
QStringList LanguageSearchFolders(const QString &folder = {}, const QString &subfolder = {});

// Loads the chosen language once; later calls return the first result.  False
// when not even en.lang could be found: the program cannot start then.
bool LoadLanguageModule(const QString &folder = {}, const QString &subfolder = {});

// Forgets what was loaded, so that the next LoadLanguageModule() reads again.
void UnloadLanguageModule();

// Loads the given language file (and English as its fallback) directly;
// for tools and tests.  False when the file cannot be read.
bool LoadLanguageFile(const QString &path, const QString &fallbackPath = {});

// The text of string `id`, from the language, then from English, else empty.
QString LanguageString(int id);
void LanguageString(QString &text, int id);

// Parses the content of a language file into (id, text) pairs; malformed
// lines are skipped.  Exposed for tests and tools.
bool ParseLanguageText(const QByteArray &content, QList<QPair<int, QString>> &entries);
