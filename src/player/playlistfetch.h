#pragma once

#include <QByteArray>
#include <QString>

// What both players do with a station address that names a playlist.
namespace PlaylistFetch {

// True when the address names a playlist: ".pls" in any letter case.
bool IsPlaylistAddress(const QString &address);

// Where the playlist of such an address is downloaded from: a directory
// reference ("ssrn#<number>.pls") from the directory's playlist service,
// anything else from the address itself.
QString DownloadAddress(const QString &address);

// The stream a downloaded playlist offers, as the player takes it; empty when
// the playlist names none.
QString StreamFromPlaylist(const QByteArray &body);

} // namespace PlaylistFetch
