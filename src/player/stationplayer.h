#pragma once

#include <QString>

// The main window's own player as the station list sees it. The list hands it
// the play bar's keys ("Play", "Stop", ...); the player acts on the grid's
// current row and shows the play bar in the matching state.
class StationPlayer
{
public:
    virtual ~StationPlayer() = default;

    virtual void playKey(const QString &key) = 0;
    // Sets the play bar's look ("play" or "stop", any letter case) without a key.
    virtual void showState(const QString &state) = 0;
    // Plays an address that is no row of the list (a station found in the
    // directory), name in the caption, and shows the bar playing.
    virtual void playAddress(const QString &address, const QString &name) = 0;
    // Stops playback and clears the caption; unlike the "Stop" key it leaves
    // the station check's flag alone.
    virtual void stopPlayback() = 0;
    // The player's play state, in the player's numbering.
    virtual int playState() const = 0;
    // The station check's flag: set while a check runs; the "Stop" key clears it.
    virtual bool scanning() const = 0;
    virtual void setScanning(bool scanning) = 0;
    // Silences the player for another window: closes it and stops it.
    virtual void silence() = 0;
};
