#pragma once

#include <QString>

// The names glimpso answers to on the session bus.
namespace DBusNames {
inline const QString service = QStringLiteral("com.tovarine.glimpso");
inline const QString path = QStringLiteral("/com/tovarine/glimpso");
inline const QString captureInterface = QStringLiteral("com.tovarine.glimpso.Capture");
inline const QString singleInstanceInterface = QStringLiteral("com.tovarine.glimpso.SingleInstance");
} // namespace DBusNames
