#pragma once

#include <QStringList>

// The media player's texts, indexed by its own playlist-change, play-state
// and open-state codes.
struct PlayerTexts
{
    QStringList playlistChange; // 0..11
    QStringList playState;      // 0..12
    QStringList openState;      // 0..21

    static PlayerTexts standard();
};
