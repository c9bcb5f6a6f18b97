#pragma once

#include <QString>

// The main window's own player as the station list sees it. The list hands it
// the play bar's keys ("Play", "Stop", ...); the player acts on the grid's
// current row and shows the play bar in the matching state.
class StationPlayer
{
public:
    virtual ~StationPlayer() = default;

    virtual void PlayKey(const QString &key) = 0;
};
