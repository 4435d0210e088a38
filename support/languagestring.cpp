#include "support/languagestring.h"

#include "support/registry.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QStandardPaths>
#include <mutex>

std::uint16_t g_languageCode = 0;

namespace {

struct LanguageTables {
    std::mutex lock;
    bool loaded = false;
    bool result = false;
    QHash<int, QString> texts;    // the chosen language
    QHash<int, QString> fallback; // English, when another language was chosen
};

LanguageTables &tables()
{
    static LanguageTables t;
    return t;
}

QString unescape(QStringView s)
{
    QString out;
    out.reserve(s.size());
    for (qsizetype i = 0; i < s.size(); ++i) {
        const QChar c = s[i];
        if (c == u'\\' && i + 1 < s.size()) {
            const QChar n = s[++i];
            if (n == u'n')
                out += u'\n';
            else if (n == u't')
                out += u'\t';
            else if (n == u'\\')
                out += u'\\';
            else {
                out += c;
                out += n;
            }
        } else {
            out += c;
        }
    }
    return out;
}

bool readTable(const QString &path, QHash<int, QString> &table)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return false;
    QList<QPair<int, QString>> entries;
    ParseLanguageText(f.readAll(), entries);
    table.clear();
    for (const auto &e : entries)
        table.insert(e.first, e.second);
    return true;
}

QString findFile(const QStringList &folders, const QString &name)
{
    for (const QString &d : folders) {
        const QString p = QDir(d).filePath(name);
        if (QFileInfo::exists(p))
            return p;
    }
    return {};
}

std::uint16_t codeOf(const QString &language)
{
    const QByteArray b = language.toLatin1().toLower();
    if (b.size() < 2)
        return 0;
    return std::uint16_t((std::uint8_t(b[0]) << 8) | std::uint8_t(b[1]));
}

} // namespace

bool ParseLanguageText(const QByteArray &content, QList<QPair<int, QString>> &entries)
{
    const QString text = QString::fromUtf8(content);
    bool allGood = true;
    for (QStringView line : QStringView(text).split(u'\n')) {
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (line.trimmed().isEmpty() || line.startsWith(u'#'))
            continue;
        const qsizetype tab = line.indexOf(u'\t');
        bool ok = false;
        const int id = tab > 0 ? line.left(tab).trimmed().toInt(&ok) : 0;
        if (!ok) {
            allGood = false;
            continue;
        }
        entries.append({id, unescape(line.mid(tab + 1))});
    }
    return allGood;
}

QStringList LanguageSearchFolders(const QString &folder, const QString &subfolder)
{
    QStringList dirs;
    if (!folder.isEmpty()) {
        if (!subfolder.isEmpty())
            dirs << QDir(folder).filePath(subfolder + QStringLiteral("/lang"));
        dirs << QDir(folder).filePath(QStringLiteral("lang"));
    }
    // The environment names the one folder to use, in place of the usual ones.
    const QString env = qEnvironmentVariable("TARN_LANG_DIR");
    if (!env.isEmpty())
        return dirs << env;
    if (QCoreApplication::instance()) {
        const QString app = QCoreApplication::applicationDirPath();
        dirs << app + QStringLiteral("/lang")
             << app + QStringLiteral("/../bin/lang")
             << app + QStringLiteral("/../share/tarn/lang");
    }
    for (const QString &d : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation))
        dirs << d + QStringLiteral("/tarn/lang");
    return dirs;
}

bool LoadLanguageModule(const QString &folder, const QString &subfolder)
{
    LanguageTables &t = tables();
    std::lock_guard guard(t.lock);
    if (t.loaded)
        return t.result;
    t.loaded = true;

    QString language = RegistryGetString(QStringLiteral("Software\\HELIOMAR\\TARN\\Lang"),
                                         QStringLiteral("LANG"), QString());
    if (language.size() < 1)
        language = QStringLiteral("en");

    const QStringList dirs = LanguageSearchFolders(folder, subfolder);
    const QString english = findFile(dirs, QStringLiteral("en.lang"));
    const bool isEnglish = language.compare(QStringLiteral("en"), Qt::CaseInsensitive) == 0;

    t.texts.clear();
    t.fallback.clear();
    if (!isEnglish) {
        const QString chosen = findFile(dirs, language + QStringLiteral(".lang"));
        if (!chosen.isEmpty() && readTable(chosen, t.texts)) {
            g_languageCode = codeOf(language);
            if (!english.isEmpty())
                readTable(english, t.fallback);
            t.result = true;
            return true;
        }
    }
    t.result = !english.isEmpty() && readTable(english, t.texts);
    g_languageCode = t.result ? codeOf(QStringLiteral("en")) : 0;
    return t.result;
}

void UnloadLanguageModule()
{
    LanguageTables &t = tables();
    std::lock_guard guard(t.lock);
    t.loaded = false;
    t.result = false;
    t.texts.clear();
    t.fallback.clear();
    g_languageCode = 0;
}

bool LoadLanguageFile(const QString &path, const QString &fallbackPath)
{
    LanguageTables &t = tables();
    std::lock_guard guard(t.lock);
    t.loaded = true;
    t.fallback.clear();
    t.result = readTable(path, t.texts);
    if (!fallbackPath.isEmpty())
        readTable(fallbackPath, t.fallback);
    g_languageCode = t.result ? codeOf(QFileInfo(path).baseName()) : 0;
    return t.result;
}

QString LanguageString(int id)
{
    LanguageTables &t = tables();
    {
        std::lock_guard guard(t.lock);
        if (t.loaded) {
            auto it = t.texts.constFind(id);
            if (it != t.texts.cend())
                return *it;
            auto f = t.fallback.constFind(id);
            return f != t.fallback.cend() ? *f : QString();
        }
    }
    // First use without an explicit load: load the chosen language now.
    LoadLanguageModule();
    return LanguageString(id);
}

void LanguageString(QString &text, int id)
{
    text = LanguageString(id);
}
