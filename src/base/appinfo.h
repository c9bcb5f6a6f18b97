#pragma once

#include <QString>

// The program's name, as windows, message boxes and tasks show it, and its version.
namespace AppInfo {

inline const QString title = QStringLiteral("Tunecatch");

QString version();

} // namespace AppInfo
