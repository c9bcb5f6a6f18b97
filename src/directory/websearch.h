#pragma once

#include <QString>

// The web station directory's search page for a text and a genre. The
// directory is configuration: the built-in host below, or another one named
// by the environment variable TUNECATCH_DIRECTORY_HOST.
namespace WebSearch {

inline const QString defaultDirectoryHost = QStringLiteral("http://www.shoutcast.com");
inline constexpr char hostVariable[] = "TUNECATCH_DIRECTORY_HOST";

// The host from the environment when set and not empty, else the default.
QString directoryHost();

// The search address: blanks in text become "+", "AAAAA" in the template
// becomes the genre, and nothing else is escaped. Empty when text is empty.
QString searchAddress(const QString &host, const QString &text, const QString &genre);

} // namespace WebSearch
