#pragma once

#include <QString>

// Station directory references ("ssrn#<number>.pls") and the choice of a
// stream from a downloaded ".pls" playlist.
namespace Playlist {

// Scheme and host of the station directory's playlist service.
inline const QString serviceHost = QStringLiteral("http://yp.shoutcast.com");

// True when the address contains "ssrn#" in any letter case.
bool isDirectoryReference(const QString &url);

// The reference without its first 5 and last 4 characters ("ssrn#12345.pls"
// gives "12345"). Throws AppError::InvalidArgument when it is shorter than 9.
QString directoryNumber(const QString &url);

// The playlist service address for a directory number.
QString playlistServiceAddress(const QString &number);

// The first server of the playlist whose listeners x 1.1 stay below its
// maximum, else the first entry's address, else empty. Reads the directory's
// playlist layout by line position ([playlist], numberofentries=N, then
// File/Title/Length lines per entry). An address is the second "="-piece of
// its line, a CR before the line break included. Never throws.
QString chooseStreamFromPlaylist(const QString &text);

// An address chosen from a playlist as a connection or a player may use it:
// the CR, LF and blanks a playlist line ends with are dropped. The choice
// above keeps them, so that it reads the playlist exactly as it stands.
QString usableAddress(const QString &chosen);

// Why an address (a station's, or one a playlist names) cannot be a stream:
// a scheme other than http://, https:// or icyx:// (file://, ftp://, ...), or
// a control character inside it. Empty when nothing speaks against it.
QString streamAddressProblem(const QString &address);

} // namespace Playlist
