#pragma once

#include <QObject>

class Catalogue;
class QTimer;
class StationListHost;
class StationPlayer;

// Plays the stations of the list one after another in the main window's
// player and rates each by what the player reached: 4 playing, 3 buffering,
// 2 stopped, 1 anything else within the poll limit (a player that gave up on
// an address it cannot open sits at Ready, and that is rated 1). It runs on
// timers, so the window stays usable while it waits; the player's scan flag
// is set while it runs, and clearing it (the play bar's Stop, a second click)
// ends the check at its next row. Ratings go straight into the records
// without marking the catalogue changed.
class StationCheck : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StationCheck)

public:
    enum class Mode
    {
        CheckAll, // every row from the current one on
        FindNext, // ends at the first station that plays or buffers, leaving it playing
    };

    struct Timing
    {
        int pollInterval = 100; // ms between two looks at the player
        int pollLimit = 101;    // looks before a station counts as not answering
    };

    static constexpr int RatingPlaying = 4;
    static constexpr int RatingBuffering = 3;
    static constexpr int RatingStopped = 2;
    static constexpr int RatingNoAnswer = 1;

    StationCheck(Catalogue &catalogue, StationListHost &list, StationPlayer &player, Timing timing,
                 QObject *parent = nullptr);

    // The rating a look at the player gives after polls looks (counting this
    // one), or 0 while the station is still to be waited for.
    static int ratingFor(int playState, int polls, int pollLimit);

    // True while the scan flag is set.
    bool running() const;
    // Starts at the current row (row 0 when there is none). A check that was
    // told to stop but still waits on its row is dropped first.
    void start(Mode mode);
    // The second click: clears the scan flag and stops the player; the check
    // ends at its next row.
    void stop();
    // Ends the check now, rating nothing more: the window is going.
    void abort();

signals:
    void finished();

private:
    void nextRow();
    void poll();
    void finish();

    Catalogue &m_catalogue;
    StationListHost &m_list;
    StationPlayer &m_player;
    Timing m_timing;
    QTimer *m_poll;
    QTimer *m_step;

    Mode m_mode = Mode::CheckAll;
    bool m_active = false;
    int m_row = 0;
    int m_index = 0; // the station of m_row when its step began
    int m_polls = 0;
};
