// The desktop's side of the program over the real main window (scripted
// players), a session bus of the test's own with a notification service,
// and the media controls called as a desktop calls them.
#include "app/desktopparts.h"

#include "controls/lynxgrid.h"
#include "player/mainplayer.h"
#include "recorder/streamrecorder.h"
#include "support/eventwait.h"
#include "support/fakenotifications.h"
#include "support/icyserver.h"
#include "support/mprisclient.h"
#include "support/privatebus.h"
#include "support/stationwindow.h"
#include "ui/player/frmlisten.h"
#include "ui/player/ucplaybar.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Player = MediaPlayer;

class DesktopPartsTest : public StationWindowTest
{
protected:
    void SetUp() override
    {
        StationWindowTest::SetUp();
        ASSERT_TRUE(notifications.serveOn(bus.connect()));
        EXPECT_EQ(parts.open(), QString());
        open();
        parts.attach(*window);
        wmp1 = players.first();
        ASSERT_TRUE(desktop.listen(bus.connect(), parts.mpris().busName()));
    }
    // The history as "station: title", oldest first.
    QStringList history()
    {
        QStringList entries;
        for (qsizetype i = 0; i < parts.history().size(); ++i)
            entries << parts.history().at(i).station + u": "_s + parts.history().at(i).title;
        return entries;
    }
    QString status() { return desktop.get(MprisClient::Player, u"PlaybackStatus"_s).toString(); }
    bool can(const char *ability)
    {
        return desktop.get(MprisClient::Player, QLatin1StringView(ability)).toBool();
    }
    void call(const char *method)
    {
        EXPECT_EQ(desktop.call(MprisClient::Player, QLatin1StringView(method)).type(),
                  QDBusMessage::ReplyMessage);
    }

    PrivateBus bus;
    FakeNotifications notifications;
    bool notificationsOn = true;
    DesktopParts parts{
        {profile.dataFolder() + u"history.tsv"_s, bus.connect(), [this] { return notificationsOn; }}};
    MprisClient desktop;
    ScriptedPlayer *wmp1 = nullptr;
};

TEST_F(DesktopPartsTest, TheMediaControlsActAsThePlayBarsButtonsSliderAndTheGridsRows)
{
    ucPlayBar &bar = window->playBar();
    grid->setRow(0);
    EXPECT_TRUE(can("CanPlay"));
    EXPECT_TRUE(can("CanGoNext"));
    EXPECT_FALSE(can("CanGoPrevious"));
    const struct
    {
        const char *method;
        int enters; // the state the scripted player reaches then, or 0
        QString status, played, caption;
    } steps[] = {
        {"PlayPause", Player::Playing, u"Playing"_s, u"http://127.0.0.1:8000/a"_s, u"Playing: Rock One"_s},
        {"Play", 0, u"Playing"_s, u"http://127.0.0.1:8000/a"_s, u"Playing: Rock One"_s},
        {"PlayPause", Player::Paused, u"Paused"_s, u"http://127.0.0.1:8000/a"_s, u"Paused: Rock One"_s},
        {"Next", Player::Playing, u"Playing"_s, u"http://127.0.0.1:8000/b"_s, u"Playing: Classic Hits"_s},
        {"Next", Player::Playing, u"Playing"_s, u"http://127.0.0.1:8000/c"_s, u"Playing: Jazz Cafe"_s},
        {"Previous", Player::Playing, u"Playing"_s, u"http://127.0.0.1:8000/b"_s, u"Playing: Classic Hits"_s},
        {"Pause", Player::Paused, u"Paused"_s, u"http://127.0.0.1:8000/b"_s, u"Paused: Classic Hits"_s},
        {"Stop", Player::Stopped, u"Stopped"_s, {}, {}},
        {"Next", 0, u"Stopped"_s, {}, {}},
    };
    for (const auto &step : steps) {
        call(step.method);
        if (step.enters)
            wmp1->enter(step.enters);
        EXPECT_TRUE(waitUntil([&] { return status() == step.status; }, 5000)) << step.method;
        EXPECT_EQ(wmp1->URL(), step.played) << step.method;
        EXPECT_EQ(bar.Caption(), step.caption) << step.method;
    }
    EXPECT_EQ(grid->Row(), 2) << "a stopped player still moves through the rows";

    // A station that fails after it played is stopped for the desktop, while
    // the bar still offers Pause and Stop: Play starts it again, Stop stops it.
    for (const auto &[method, address] :
         {std::pair{"Play", u"http://127.0.0.1:8000/c"_s}, {"Stop", QString()}}) {
        call("Play");
        wmp1->enter(Player::Playing);
        wmp1->enter(Player::Ready);
        EXPECT_TRUE(waitUntil([&] { return status() == u"Stopped"_s; }, 5000));
        wmp1->log.clear();
        call(method);
        EXPECT_TRUE(wmp1->log.contains(u"URL="_s)) << method << ": the failed station is not let go";
        EXPECT_EQ(wmp1->URL(), address) << method;
    }
    // One that never starts the player lets go of itself; Play tries it again.
    call("Play");
    wmp1->enter(Player::Ready);
    EXPECT_TRUE(waitUntil([&] { return status() == u"Stopped"_s; }, 5000));
    EXPECT_EQ(wmp1->URL(), QString());
    call("Play");
    EXPECT_EQ(wmp1->URL(), u"http://127.0.0.1:8000/c"_s);
    call("Stop");
    EXPECT_TRUE(can("CanGoPrevious"));
    grid->setRow(grid->ItemCount() - 1);
    EXPECT_FALSE(can("CanGoNext"));

    EXPECT_EQ(desktop.set(MprisClient::Player, u"Volume"_s, 0.3).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(bar.volume(), 30);
    EXPECT_EQ(wmp1->volume(), 30);
    EXPECT_TRUE(desktop.waitForChange(u"Volume"_s, 0.3));
    bar.setVolume(70);
    EXPECT_TRUE(desktop.waitForChange(u"Volume"_s, 0.7));

    window->showMinimized();
    EXPECT_EQ(desktop.call(MprisClient::Root, u"Raise"_s).type(), QDBusMessage::ReplyMessage);
    EXPECT_FALSE(window->isMinimized());
    EXPECT_TRUE(window->isVisible());
}

TEST_F(DesktopPartsTest, ASongReachesThePanelTheHistoryAndANotificationWhileNoWindowIsActive)
{
    grid->setRow(2);
    call("Play");
    wmp1->enter(Player::Playing);
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    emit wmp1->titleChanged(u"Chet Baker - Almost <Blue>"_s);
    ASSERT_TRUE(desktop.waitForChange(
        u"Metadata"_s, QVariantMap{{u"mpris:trackid"_s, desktop.metadata().value(u"mpris:trackid"_s)},
                                   {u"xesam:title"_s, u"Almost <Blue>"_s},
                                   {u"xesam:artist"_s, QStringList{u"Chet Baker"_s}},
                                   {u"xesam:album"_s, u"Jazz Cafe"_s}}));
    EXPECT_EQ(window->playBar().Caption(), u"Playing: Jazz Cafe \u2014 Chet Baker - Almost <Blue>"_s);
    EXPECT_EQ(history(), QStringList{u"Jazz Cafe: Chet Baker - Almost <Blue>"_s});

    // Told once no window of the program is active, and when they are on.
    window->hide();
    ASSERT_TRUE(waitUntil([] { return !QApplication::activeWindow(); }, 5000));
    notificationsOn = false;
    emit wmp1->titleChanged(u"Chet Baker - Time After Time"_s);
    notificationsOn = true;
    emit wmp1->titleChanged(u"Chet Baker - My Funny Valentine"_s);
    ASSERT_TRUE(waitUntil([&] { return notifications.shown.size() == 1; }, 5000));
    EXPECT_EQ(notifications.shown[0].summary, u"My Funny Valentine"_s);
    EXPECT_EQ(notifications.shown[0].body, u"Chet Baker\nJazz Cafe"_s);

    // A listening window's songs count as well; the warm-up window's do not.
    FrmListen *listening = window->createListenWindow();
    listening->ListenRow = 4;
    listening->ListenTitle = u"Rockabilly"_s;
    listening->ListenUrl = u"http://127.0.0.1:8000/e"_s;
    listening->Play();
    emit players[1]->titleChanged(u"Warm - Up"_s);
    emit players.last()->titleChanged(u"Elvis - Hound Dog"_s);
    ASSERT_TRUE(waitUntil([&] { return notifications.shown.size() == 2; }, 5000));
    EXPECT_EQ(notifications.shown[1].summary, u"Hound Dog"_s);
    EXPECT_EQ(
        history(),
        (QStringList{u"Jazz Cafe: Chet Baker - Almost <Blue>"_s, u"Jazz Cafe: Chet Baker - Time After Time"_s,
                     u"Jazz Cafe: Chet Baker - My Funny Valentine"_s, u"Rockabilly: Elvis - Hound Dog"_s}));
}

TEST_F(DesktopPartsTest, ARecordingsSongsGoIntoTheHistoryUnderItsStation)
{
    IcyServer station;
    station.songs = {{"First - Song", 2}, {"Second - Song", 2}};
    ASSERT_TRUE(station.start());
    const auto record = [&](const QString &name, qsizetype entries) {
        StreamRecorder recorder(prompt, power, {true, {}, {1000ms, {50ms}}});
        parts.attach(recorder);
        RecordingSettings settings;
        settings.address = station.url();
        settings.saveTemplate = profile.root() + u"/rec.mp3"_s;
        settings.station = name;
        recorder.setSettings(settings);
        recorder.start();
        EXPECT_TRUE(waitUntil([&] { return history().size() == entries; }, 15000)) << name.toStdString();
        recorder.stop();
    };
    record(u"My Loop"_s, 2);
    // Without a name in the station field, the station's own.
    record(u"  "_s, 4);
    EXPECT_EQ(history(), (QStringList{u"My Loop: First - Song"_s, u"My Loop: Second - Song"_s,
                                      u"Loopback FM: First - Song"_s, u"Loopback FM: Second - Song"_s}));
}

TEST(DesktopPartsAlone, WithoutABusTheHistoryStillFillsAndNothingIsSaid)
{
    TempProfile profile;
    DesktopParts parts(
        {profile.root() + u"/history.tsv"_s, QDBusConnection(u"no bus"_s), [] { return true; }});
    EXPECT_EQ(parts.open(), QString());
    EXPECT_EQ(parts.mpris().busName(), QString());
    parts.heard(u"Jazz"_s, u"A - B"_s);
    parts.heard(u"Jazz"_s, u"  "_s);
    EXPECT_EQ(parts.history().size(), 1);
}

} // namespace
