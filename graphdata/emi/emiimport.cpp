#include "graphdata/emi/emiimport.h"

#include "support/languagestring.h"

#include <QFile>
#include <QHash>
#include <QTextStream>
#include <cmath>

namespace {

constexpr int kValueLimit = 250;

enum : int {
    MsgCannotRead = 43760,
    MsgNoHeader = 43761,
    MsgBadCount = 43762,
    MsgBadPair = 43763,
    MsgUnsorted = 43764,
    MsgDuplicate = 43765,
};

// Section name (lower case) -> key name (lower case) -> value; section and
// key names compare without regard to case, as initialisation files do.
using CIniSections = QHash<QString, QHash<QString, QString>>;

bool readIni(const QString &path, CIniSections &sections)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    QTextStream in(&file);
    QString section;
    while (!in.atEnd()) {
        const QString line = in.readLine().trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char(';')) || line.startsWith(QLatin1Char('#')))
            continue;
        if (line.startsWith(QLatin1Char('['))) {
            const int close = line.indexOf(QLatin1Char(']'));
            section = line.mid(1, close < 0 ? -1 : close - 1).trimmed().toLower();
            continue;
        }
        const int eq = line.indexOf(QLatin1Char('='));
        if (eq <= 0)
            continue;
        const QString key = line.left(eq).trimmed().toLower();
        QString value = line.mid(eq + 1).trimmed();
        if (value.size() >= 2 && value.startsWith(QLatin1Char('"')) && value.endsWith(QLatin1Char('"')))
            value = value.mid(1, value.size() - 2);
        // The first of two equal keys counts.
        QHash<QString, QString> &keys = sections[section];
        if (!keys.contains(key))
            keys.insert(key, value.left(kValueLimit));
    }
    return true;
}

bool lookup(const CIniSections &sections, const QString &section, const QString &key, QString &value)
{
    const auto s = sections.constFind(section.toLower());
    if (s == sections.constEnd())
        return false;
    const auto k = s->constFind(key.toLower());
    if (k == s->constEnd())
        return false;
    value = *k;
    return true;
}

bool refuse(CEmiImport &result, int id, const QString &a = {}, const QString &b = {})
{
    QString text = LanguageString(id);
    if (text.isEmpty())
        text = QStringLiteral("%1 %2").arg(id).arg(a);
    if (!a.isNull())
        text = text.arg(a);
    if (!b.isNull())
        text = text.arg(b);
    result.message = text;
    result.pairs.clear();
    return false;
}

} // namespace

bool ImportEmiLimit(const QString &path, const QString &section, const CCurveInfoArray &existing,
                    CEmiImport &result)
{
    result = CEmiImport();
    CIniSections sections;
    if (!readIni(path, sections))
        return refuse(result, MsgCannotRead, path);
    QString countText;
    if (!lookup(sections, section, QStringLiteral("Name"), result.key) || result.key.isEmpty() ||
        !lookup(sections, section, QStringLiteral("Label"), result.label) ||
        !lookup(sections, section, QStringLiteral("Count"), countText))
        return refuse(result, MsgNoHeader, path, section);
    if (result.label.isEmpty())
        result.label = result.key;
    bool ok = false;
    const int count = countText.toInt(&ok);
    if (!ok || count < 1)
        return refuse(result, MsgBadCount, path, countText);
    for (int i = 1; i <= count; ++i) {
        QString f, v;
        bool okF = false, okV = false;
        double frequency = 0, level = 0;
        if (lookup(sections, QStringLiteral("Data"), QStringLiteral("Freq%1").arg(i), f))
            frequency = f.toDouble(&okF);
        if (lookup(sections, QStringLiteral("Data"), QStringLiteral("Value%1").arg(i), v))
            level = v.toDouble(&okV);
        if (!okF || !okV || !std::isfinite(frequency) || !std::isfinite(level))
            return refuse(result, MsgBadPair, path, QString::number(i));
        // Equal frequencies are a vertical step; only a fall is refused.
        if (!result.pairs.empty() && frequency < result.pairs.back().frequency)
            return refuse(result, MsgUnsorted, path, QString::number(i));
        result.pairs.push_back({frequency, level});
    }
    for (const CCurveInfo *limit : existing) {
        for (const QString &name : {limit->m_colName, limit->m_colLabel}) {
            if (name.compare(result.key, Qt::CaseInsensitive) == 0 ||
                name.compare(result.label, Qt::CaseInsensitive) == 0)
                return refuse(result, MsgDuplicate, path, name);
        }
    }
    return true;
}
