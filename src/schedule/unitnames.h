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

// The unit name for a task, at most room characters long: the escaped name
// when it fits, else the escaped name cut after a whole character and marked
// with a hash of the whole name. The mark starts with "\x_", which Escape
// never writes, so a shortened name never reads back as another task's.
QString fitted(const QString &name, int room);
bool isShortened(const QString &unitName);

} // namespace UnitNames
