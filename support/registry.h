#pragma once
// Per-user settings, kept by QSettings under the organization "HELIOMAR".
//
// Key paths are written as in the Windows registry, "Software\HELIOMAR\TARN\UserEMI":
// the component after "HELIOMAR" is the QSettings application ("TARN", or
// "Tracelift" for the digitiser's own key), and the rest is the group path
// ("UserEMI").  A path without the "Software\HELIOMAR\" prefix is taken to lie
// below "TARN".  On Windows these are those very registry keys.

#include <QString>
#include <cstdint>

std::uint32_t RegistryGetDword(const QString &keyPath, const QString &valueName,
                               std::uint32_t defaultValue);
QString RegistryGetString(const QString &keyPath, const QString &valueName,
                          const QString &defaultValue);
void RegistrySetDword(const QString &keyPath, const QString &valueName, std::uint32_t value);
void RegistrySetString(const QString &keyPath, const QString &valueName, const QString &value);
void RegistryDeleteValue(const QString &keyPath, const QString &valueName);

// The QSettings application and group for a key path, as described above.
void RegistrySplitKeyPath(const QString &keyPath, QString &application, QString &group);
