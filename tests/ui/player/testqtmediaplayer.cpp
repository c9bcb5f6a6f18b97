// The player over Qt Multimedia against real media: an icecast station,
// playlists and pages served on 127.0.0.1, files in a temporary profile.
#include "ui/player/qtmediaplayer.h"

#include "base/launchoptions.h"
#include "base/themecolors.h"
#include "recorder/streamtitlewatch.h"
#include "support/eventwait.h"
#include "support/icecaststation.h"
#include "support/icyserver.h"
#include "support/tempprofile.h"
#include "ui/player/frmlisten.h"

#include <QLabel>
#include <QMediaPlayer>
#include <QSignalSpy>
#include <QVideoWidget>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int OpenTimeout = 20000;

// A WAVE file whose audio is in a format no decoder knows.
QByteArray unknownFormatWave()
{
    QByteArray format("\x77\x77\x01\x00\x40\x1f\x00\x00\x40\x1f\x00\x00\x01\x00\x08\x00", 16);
    const QByteArray data(8000, '\x5a');
    const auto le32 = [](quint32 v) {
        return QByteArray::fromRawData(reinterpret_cast<const char *>(&v), 4);
    };
    const QByteArray body = "WAVEfmt " + le32(16) + format + "data" + le32(quint32(data.size())) + data;
    return "RIFF" + le32(quint32(body.size())) + body;
}

class QtPlayerTest : public ProfileTest
{
protected:
    static void SetUpTestSuite()
    {
        missing = IcecastStation::missing();
        if (!missing.isEmpty())
            return;
        station = new IcecastStation;
        startFailure = station->start();
    }
    static void TearDownTestSuite()
    {
        delete station;
        station = nullptr;
    }
    void SetUp() override
    {
        if (!missing.isEmpty())
            GTEST_SKIP() << missing.toStdString();
        ASSERT_TRUE(startFailure.isEmpty()) << startFailure.toStdString();
        server.pages["/page.html"] = IcyServer::page("<html><body>Not a stream</body></html>");
        server.pages["/odd.wav"] = IcyServer::page(unknownFormatWave());
        server.pages["/ice.pls"] =
            IcyServer::page("[playlist]\r\nnumberofentries=1\r\nFile1=" + station->url().toUtf8() +
                            "\r\nTitle1=(#1 - 0/10) Ice\r\nLength1=-1\r\nVersion=2\r\n");
        ASSERT_TRUE(server.start());
    }
    static bool reaches(const MediaPlayer &player, int state)
    {
        return waitUntil([&] { return player.playState() == state; }, OpenTimeout);
    }
    // A port of 127.0.0.1 where nothing listens.
    static QString refusedAddress() { return u"http://127.0.0.1:%1/stream"_s.arg(IcyServer::refusedPort()); }

    std::unique_ptr<FrmListen> listenWindow(int row, const QString &url, const QString &title = u"Ice"_s)
    {
        auto window = std::make_unique<FrmListen>(launch, Themes::blackNight(), QtMediaPlayer::create);
        window->setAttribute(Qt::WA_DeleteOnClose, false);
        window->ListenRow = row;
        window->ListenUrl = url;
        window->ListenTitle = title;
        window->show();
        window->Play();
        return window;
    }
    static QMediaPlayer &qtPlayer(const QObject &owner) { return *owner.findChild<QMediaPlayer *>(); }
    static inline QString missing;
    static inline QString startFailure;
    static inline IcecastStation *station = nullptr;
    IcyServer server;
    LaunchOptions launch;
    QVideoWidget video;
};

TEST_F(QtPlayerTest, AStationPlaysPausesAndResumes)
{
    QtMediaPlayer player(video);
    QSignalSpy states(&player, &MediaPlayer::PlayStateChange);
    player.setURL(station->url());
    ASSERT_TRUE(reaches(player, MediaPlayer::Playing)) << player.status().toStdString();
    EXPECT_EQ(states.first().first().toInt(), int(MediaPlayer::Transitioning));
    EXPECT_EQ(player.status(), u"Playing"_s);
    player.pause();
    ASSERT_TRUE(reaches(player, MediaPlayer::Paused));
    player.play();
    ASSERT_TRUE(reaches(player, MediaPlayer::Playing));
    EXPECT_EQ(player.URL(), station->url()) << "resumed, not restarted";
    player.setMute(true);
    player.setVolume(30);
    EXPECT_TRUE(player.mute()) << "a volume change keeps the mute";
    EXPECT_EQ(player.volume(), 30);
    player.setURL({});
    ASSERT_TRUE(reaches(player, MediaPlayer::Stopped));
    EXPECT_EQ(qtPlayer(player).playbackState(), QMediaPlayer::StoppedState);
}

TEST_F(QtPlayerTest, MediaThatCannotPlayFallsBackToReady)
{
    const std::pair<const char *, QString> rows[] = {
        {"refused connection", refusedAddress()},
        {"web page", server.url(u"/page.html"_s)},
        {"unknown audio format", server.url(u"/odd.wav"_s)},
        {"missing file", profile.dataFolder() + u"Rec/gone.mp3"_s}};
    for (const auto &[what, url] : rows) {
        QtMediaPlayer player(video);
        player.setURL(url);
        ASSERT_TRUE(reaches(player, MediaPlayer::Ready)) << what << ": state " << player.playState();
        EXPECT_FALSE(player.status().isEmpty()) << what;
        EXPECT_TRUE(
            waitUntil([&] { return qtPlayer(player).playbackState() == QMediaPlayer::StoppedState; }, 5000))
            << what << ": nothing keeps running";
    }
}

TEST_F(QtPlayerTest, AListeningWindowGivesUpARefusedStreamAfterFiveTries)
{
    auto window = listenWindow(0, refusedAddress());
    QSignalSpy states(&window->MPlayer(), &MediaPlayer::PlayStateChange);
    ASSERT_TRUE(waitUntil([&] { return window->windowTitle().startsWith(u"Unable"); }, 4 * OpenTimeout))
        << window->windowTitle().toStdString();
    EXPECT_EQ(window->windowTitle(), u"Unable to load "_s + window->ListenUrl);
    EXPECT_EQ(states.count(QVariantList{int(MediaPlayer::Ready)}), 5);
    EXPECT_EQ(qtPlayer(*window).playbackState(), QMediaPlayer::StoppedState);
}

TEST_F(QtPlayerTest, AListeningWindowPlaysAPlaylistsStreamOrARecordingAndReportsOnlyTheStation)
{
    const QString recording = profile.dataFolder() + u"Rec/sample.mp3"_s;
    TempProfile::writeFile(recording, IcyServer::dataFile(u"sample.mp3"_s));
    const struct
    {
        int row;
        QString url, title, info;
    } rows[] = {{3, server.url(u"/ice.pls"_s), u"Ice"_s, u"Stream: "_s + station->url()},
                {ListenSession::FileRow, recording, u"sample.mp3"_s, {}}};
    for (const auto &row : rows) {
        auto window = listenWindow(row.row, row.url, row.title);
        QSignalSpy played(window.get(), &FrmListen::stationPlayed);
        ASSERT_TRUE(reaches(window->MPlayer(), MediaPlayer::Playing)) << window->windowTitle().toStdString();
        // The song follows the station's name once the stream names one.
        EXPECT_TRUE(window->windowTitle().startsWith(u"Playing: "_s + row.title))
            << window->windowTitle().toStdString();
        EXPECT_EQ(window->findChild<QLabel *>(u"lblInfo"_s)->text(), row.info);
        EXPECT_EQ(played.isEmpty(), row.row < 0) << "every start of a station is told";
    }
}

TEST_F(QtPlayerTest, TheSongAStationNamesReachesTheListeningWindowsTitle)
{
    auto window = listenWindow(2, station->url());
    QSignalSpy songs(window.get(), &FrmListen::songChanged);
    ASSERT_TRUE(
        waitUntil([&] { return !songs.isEmpty() && !songs.last().at(1).toString().isEmpty(); }, OpenTimeout))
        << window->windowTitle().toStdString();
    const QString title = songs.last().at(1).toString();
    EXPECT_TRUE(IcecastStation::titles().contains(title)) << title.toStdString();
    EXPECT_EQ(songs.last().at(0).toString(), u"Ice"_s);
    EXPECT_EQ(window->windowTitle(), u"Playing: Ice \u2014 "_s + title);
    window->close();
    EXPECT_FALSE(window->findChild<StreamTitleWatch *>()->watching());
}

TEST_F(QtPlayerTest, TheWarmUpVideoStaysPaused)
{
    TempProfile::writeFile(profile.installFolder() + u"/miniTC.avi"_s, IcyServer::dataFile(u"miniTC.avi"_s));
    FrmListen window(launch, Themes::blackNight(), QtMediaPlayer::create);
    window.ListenRow = ListenSession::WarmUpRow;
    window.ListenUrl = profile.installFolder() + u"/miniTC.avi"_s;
    window.Play();
    ASSERT_TRUE(reaches(window.MPlayer(), MediaPlayer::Paused)) << window.MPlayer().status().toStdString();
    QMediaPlayer &media = qtPlayer(window);
    EXPECT_TRUE(waitUntil(
        [&] {
            return media.mediaStatus() == QMediaPlayer::LoadedMedia ||
                   media.mediaStatus() == QMediaPlayer::BufferedMedia;
        },
        OpenTimeout))
        << "the clip is made ready";
    EXPECT_EQ(media.playbackState(), QMediaPlayer::PausedState);
    EXPECT_EQ(media.loops(), ListenSession::WarmUpPlayCount);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(QtPlayerTest, ClosingAListeningWindowLeavesNothingPlaying)
{
    for (const QString &url : {station->url(), refusedAddress()}) {
        auto window = listenWindow(0, url);
        QSignalSpy states(&window->MPlayer(), &MediaPlayer::PlayStateChange);
        // Close while it connects, or once it has fallen back and is retrying.
        if (url != station->url()) {
            ASSERT_TRUE(waitUntil([&] { return states.contains(QVariantList{int(MediaPlayer::Ready)}); },
                                  OpenTimeout));
        }
        window->close();
        QMediaPlayer &media = qtPlayer(*window);
        EXPECT_EQ(media.playbackState(), QMediaPlayer::StoppedState);
        EXPECT_TRUE(media.source().isEmpty());
        EXPECT_TRUE(waitUntil([&] { return window->MPlayer().playState() == MediaPlayer::Stopped; }, 5000));
        EXPECT_TRUE(qtPlayer(*window).source().isEmpty()) << "no retry after closing";
    }
}

} // namespace
