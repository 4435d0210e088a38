#include "support/registry.h"

#include <QSettings>

void RegistrySplitKeyPath(const QString &keyPath, QString &application, QString &group)
{
    QString path = keyPath;
    path.replace(u'\\', u'/');
    QStringList parts = path.split(u'/', Qt::SkipEmptyParts);
    if (parts.size() >= 2 && parts[0].compare(QStringLiteral("Software"), Qt::CaseInsensitive) == 0
        && parts[1].compare(QStringLiteral("HELIOMAR"), Qt::CaseInsensitive) == 0) {
        parts.remove(0, 2);
        application = parts.isEmpty() ? QStringLiteral("TARN") : parts.takeFirst();
    } else {
        application = QStringLiteral("TARN");
    }
    group = parts.join(u'/');
}

namespace {

// Runs `f` with the settings object positioned at the key's group.
template <typename F>
auto withKey(const QString &keyPath, F &&f)
{
    QString application, group;
    RegistrySplitKeyPath(keyPath, application, group);
    QSettings settings(QStringLiteral("HELIOMAR"), application);
    if (!group.isEmpty())
        settings.beginGroup(group);
    return f(settings);
}

} // namespace

std::uint32_t RegistryGetDword(const QString &keyPath, const QString &valueName,
                               std::uint32_t defaultValue)
{
    return withKey(keyPath, [&](QSettings &s) {
        const QVariant v = s.value(valueName);
        bool ok = false;
        const qulonglong n = v.toULongLong(&ok);
        return ok ? std::uint32_t(n) : defaultValue;
    });
}

QString RegistryGetString(const QString &keyPath, const QString &valueName,
                          const QString &defaultValue)
{
    return withKey(keyPath, [&](QSettings &s) {
        const QVariant v = s.value(valueName);
        // Only a text counts, as a string value of the registry would.
        if (!v.isValid() || v.typeId() != QMetaType::QString)
            return defaultValue;
        return v.toString();
    });
}

void RegistrySetDword(const QString &keyPath, const QString &valueName, std::uint32_t value)
{
    withKey(keyPath, [&](QSettings &s) {
        s.setValue(valueName, qulonglong(value));
        return 0;
    });
}

void RegistrySetString(const QString &keyPath, const QString &valueName, const QString &value)
{
    withKey(keyPath, [&](QSettings &s) {
        s.setValue(valueName, value);
        return 0;
    });
}

void RegistryDeleteValue(const QString &keyPath, const QString &valueName)
{
    withKey(keyPath, [&](QSettings &s) {
        s.remove(valueName);
        return 0;
    });
}
