#include "player/playlistfetch.h"

#include "catalogue/playlist.h"

namespace PlaylistFetch {

bool IsPlaylistAddress(const QString &address)
{
    return address.toLower().contains(u".pls");
}

QString DownloadAddress(const QString &address)
{
    // A playlist address holds both "ssrn#" and ".pls", so it is long enough for a number.
    if (Playlist::isDirectoryReference(address))
        return Playlist::playlistServiceAddress(Playlist::directoryNumber(address));
    return address;
}

QString StreamFromPlaylist(const QByteArray &body)
{
    // Playlist bytes are text in the local 8-bit code page.
    return Playlist::usableAddress(Playlist::chooseStreamFromPlaylist(QString::fromLocal8Bit(body)));
}

} // namespace PlaylistFetch
