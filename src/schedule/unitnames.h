#pragma once

#include <QString>

#include <optional>

// Task names as systemd unit names, by the rules of systemd-escape.
namespace UnitNames {

// The longest unit name systemd takes, suffix included.
inline constexpr int maxUnitName = 255;

// Keeps ASCII letters, digits, ':', '_' and '.' (but not a leading '.'),
// turns '/' into '-' and writes every other byte of the UTF-8 form as "\xNN".
QString escape(const QString &name);
// The task name for a unit name Escape made; nothing for any other text.
std::optional<QString> unescape(const QString &unitName);

} // namespace UnitNames
