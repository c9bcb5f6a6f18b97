#include "recorder/streamtitlewatch.h"

#include "support/eventwait.h"
#include "support/icyserver.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int Wait = 15000;

class StreamTitleWatchTest : public ::testing::Test
{
protected:
    QStringList titles() const
    {
        QStringList told;
        for (const QVariantList &arguments : changes)
            told << arguments.first().toString();
        return told;
    }
    IcyServer server;
    StreamTitleWatch watch{StreamTiming{1000ms, {50ms, 100ms}}};
    QSignalSpy changes{&watch, &StreamTitleWatch::titleChanged};
};

TEST_F(StreamTitleWatchTest, TitlesAreToldAsTheyChange)
{
    server.songs = {
        {"Artist - One", 2}, {"Artist - One", 2}, {"Zwei \xc3\xa4 - Drei", 3}, {"", 2}, {"Last", 2}};
    server.repeatTitles = true;
    ASSERT_TRUE(server.start());
    watch.watch(server.url());
    ASSERT_TRUE(waitUntil([&] { return watch.title() == u"Last"_s; }, Wait))
        << titles().join(u'|').toStdString();
    EXPECT_EQ(titles(), (QStringList{u"Artist - One"_s, u"Zwei ä - Drei"_s, QString(), u"Last"_s}));
    EXPECT_TRUE(watch.watching());
    watch.stop();
    EXPECT_FALSE(watch.watching());
    EXPECT_EQ(watch.title(), u"Last"_s);
}

TEST_F(StreamTitleWatchTest, ADroppedStationIsFollowedAgain)
{
    // Every connection hears the script from its start and is dropped after three intervals.
    server.songs = {{"A", 2}, {"B", 2}};
    server.dropAfter = 3;
    ASSERT_TRUE(server.start());
    watch.watch(server.url());
    ASSERT_TRUE(waitUntil([&] { return changes.size() >= 3; }, Wait)) << titles().join(u'|').toStdString();
    EXPECT_EQ(titles().mid(0, 3), (QStringList{u"A"_s, u"B"_s, u"A"_s}));
}

TEST_F(StreamTitleWatchTest, StationsThatNameNoTitlesAreLetGo)
{
    const auto lets = [this](const QString &address) {
        watch.watch(address);
        return waitUntil([&] { return !watch.watching(); }, Wait);
    };
    server.songs = {{"Never seen", 500}};
    server.announceInterval = false;
    ASSERT_TRUE(server.start());
    EXPECT_TRUE(lets(server.url())) << "no metadata interval";
    EXPECT_TRUE(lets(u"http://127.0.0.1:%1/stream"_s.arg(IcyServer::refusedPort()))) << "refused";
    for (const QString &address : {u"/home/me/Rec/song.mp3"_s, u"file:///tmp/a.mp3"_s, u"http://"_s})
        EXPECT_TRUE(lets(address)) << address.toStdString();
    EXPECT_TRUE(changes.isEmpty());
    EXPECT_TRUE(StreamTitleWatch::watches(u"ICYX://host:8000/x"_s));
}

} // namespace
