#include "player/playertexts.h"

PlayerTexts PlayerTexts::standard()
{
    PlayerTexts t;
    t.playlistChange = {
        QStringLiteral("An unknown change has occurred."),
        QStringLiteral("The playlist has been cleared."),
        QStringLiteral("A playlist attribute has changed value."),
        QStringLiteral("A media item within the playlist has been moved to a new position."),
        QStringLiteral("A media item has been deleted from the playlist."),
        QStringLiteral("A media item has been inserted into the playlist."),
        QStringLiteral("A media item has been appended to the playlist."),
        QStringLiteral("Not supported."),
        QStringLiteral("The name of the playlist has changed."),
        QStringLiteral("Not supported."),
        QStringLiteral("The playlist has been sorted."),
        QStringLiteral("Last enumerated value. Not a valid change type."),
    };
    t.playState = {
        QStringLiteral("Undefined"),
        QStringLiteral("Stopped"),
        QStringLiteral("Paused"),
        QStringLiteral("Playing"),
        QStringLiteral("ScanForward"),
        QStringLiteral("ScanReverse"),
        QStringLiteral("Media is being buffered"),
        QStringLiteral("Waiting for streaming data"),
        QStringLiteral("MediaEnded"),
        QStringLiteral("Preparing new media"),
        QStringLiteral("Ready to begin playing"),
        QStringLiteral("Reconnecting"),
        QStringLiteral("Last Playstate"),
    };
    t.openState = {
        QStringLiteral("Undefined"),
        QStringLiteral("PlaylistChanging"),
        QStringLiteral("PlaylistLocating"),
        QStringLiteral("PlaylistConnecting"),
        QStringLiteral("PlaylistLoading"),
        QStringLiteral("PlaylistOpening"),
        QStringLiteral("PlaylistOpenNoMedia"),
        QStringLiteral("PlaylistChanged"),
        QStringLiteral("MediaChanging"),
        QStringLiteral("MediaLocating"),
        QStringLiteral("MediaConnecting"),
        QStringLiteral("MediaLoading"),
        QStringLiteral("MediaOpening"),
        QStringLiteral("MediaOpen"),
        QStringLiteral("BeginCodecAcquisition"),
        QStringLiteral("EndCodecAcquisition"),
        QStringLiteral("BeginLicenseAcquisition"),
        QStringLiteral("EndLicenseAcquisition"),
        QStringLiteral("BeginIndividualization"),
        QStringLiteral("EndIndividualization"),
        QStringLiteral("MediaWaiting"),
        QStringLiteral("OpeningUnknownURL"),
    };
    return t;
}
