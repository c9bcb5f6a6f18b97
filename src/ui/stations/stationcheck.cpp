#include "ui/stations/stationcheck.h"

#include "catalogue/catalogue.h"
#include "controls/lynxgrid.h"
#include "player/mediaplayer.h"
#include "ui/stations/stationcommands.h"
#include "player/stationplayer.h"

#include <QTimer>

namespace {

const QString keyPlay = QStringLiteral("Play");
const QString keyStop = QStringLiteral("Stop");
const QString lookPlay = QStringLiteral("play");
const QString lookStop = QStringLiteral("stop");

} // namespace

StationCheck::StationCheck(Catalogue &catalogue, StationListHost &list, StationPlayer &player, Timing timing,
                           QObject *parent)
    : QObject(parent), m_catalogue(catalogue), m_list(list), m_player(player), m_timing(timing),
      m_poll(new QTimer(this)), m_step(new QTimer(this))
{
    setObjectName(QStringLiteral("StationCheck"));
    m_poll->setInterval(m_timing.pollInterval);
    connect(m_poll, &QTimer::timeout, this, &StationCheck::poll);
    // The next row starts once the events waiting meanwhile have run.
    m_step->setSingleShot(true);
    m_step->setInterval(0);
    connect(m_step, &QTimer::timeout, this, &StationCheck::nextRow);
}

int StationCheck::ratingFor(int playState, int polls, int pollLimit)
{
    switch (playState) {
    case MediaPlayer::Playing:
        return RatingPlaying;
    case MediaPlayer::Buffering:
        return RatingBuffering;
    case MediaPlayer::Stopped:
        return RatingStopped;
    default:
        return polls >= pollLimit ? RatingNoAnswer : 0;
    }
}

bool StationCheck::running() const
{
    return m_active && m_player.scanning();
}

void StationCheck::start(Mode mode)
{
    abort();
    m_mode = mode;
    m_row = qMax(0, m_list.grid().Row());
    m_active = true;
    m_player.setScanning(true);
    nextRow();
}

void StationCheck::stop()
{
    m_player.setScanning(false);
    m_player.playKey(keyStop);
    m_player.showState(lookStop);
}

void StationCheck::abort()
{
    if (m_active)
        finish();
}

void StationCheck::nextRow()
{
    LynxGrid &grid = m_list.grid();
    // The count is read at every row, so rows removed meanwhile end the
    // check early. The last step is one past the last row: the grid ignores
    // a row it does not have, so the current station plays once more and no
    // station is rated.
    if (m_row > grid.ItemCount()) {
        finish();
        return;
    }
    m_player.showState(lookStop);
    m_player.stopPlayback();
    if (!m_player.scanning()) {
        finish();
        return;
    }
    grid.setItemSelected(m_row - 1, false);
    grid.GotoCell(m_row, 0);
    grid.RefreshView();
    m_index = grid.ItemData(m_row);
    m_player.playKey(keyPlay);
    m_player.showState(lookPlay);
    m_polls = 0;
    m_poll->start();
}

void StationCheck::poll()
{
    const int rating = ratingFor(m_player.playState(), ++m_polls, m_timing.pollLimit);
    if (rating == 0)
        return;
    m_poll->stop();
    // The rows may have been refilled or emptied while the station was tried:
    // the rating goes to the station tried, and its row only when it still shows it.
    if (m_index >= 1 && m_index <= m_catalogue.stationCount()) {
        m_catalogue.at(m_index).Rating = rating;
        const LynxGrid &grid = m_list.grid();
        if (m_row < grid.ItemCount() && grid.ItemData(m_row) == m_index)
            m_list.fillRow(m_row, m_index);
    }
    if (m_mode == Mode::FindNext && rating >= RatingBuffering) {
        finish();
        return;
    }
    ++m_row;
    m_step->start();
}

void StationCheck::finish()
{
    m_active = false;
    m_poll->stop();
    m_step->stop();
    m_player.setScanning(false);
    emit finished();
}
