#include "recorder/streamrecorder.h"

#include "base/apppaths.h"
#include "recorder/streamformat.h"
#include "recorder/titledelay.h"
#include "support/eventwait.h"
#include "support/fakepowercontrol.h"
#include "support/icyserver.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"
#include "support/testaudio.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTcpServer>
#include <QTcpSocket>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int Wait = 15000;
using Kind = StopReason::Kind;
using enum RecordingSettings::PowerAction;

// A continuous file of the first `consumed` audio bytes: every interval once,
// and the interval in front of a title announcement twice (it ends the old
// song and begins the new one).
QByteArray continuousFile(const IcyServer::Sent &sent, int metaInt, qint64 consumed)
{
    QByteArray file;
    for (qint64 at = 0; at < consumed; at += metaInt) {
        const QByteArray interval = sent.audio.mid(at, metaInt);
        file += interval;
        for (const IcyServer::TitleMark &mark : sent.marks) {
            if (mark.offset == at + metaInt)
                file += interval;
        }
    }
    return file;
}

class StreamRecorderTest : public ProfileTest
{
protected:
    void SetUp() override { ASSERT_TRUE(server.start()); }
    // A recorder of the scripted station; `status` follows what the window's
    // status line would show.
    StreamRecorder &make(const QString &saveTemplate, bool singleSong, bool launchMode = false)
    {
        StreamRecorder::Options options{launchMode, [this] { return now; }, {1000ms, {50ms, 100ms, 150ms}}};
        recorder = std::make_unique<StreamRecorder>(prompt, power, options);
        status.clear();
        titles.clear();
        stops.clear();
        finished = 0;
        StreamRecorder *r = recorder.get();
        const auto show = [this](const QString &text) { status = text; };
        QObject::connect(r, &StreamRecorder::statusChanged, r, show);
        QObject::connect(r, &StreamRecorder::stationNameChanged, r, show);
        QObject::connect(r, &StreamRecorder::titleChanged, r, [this](const QString &t) { titles << t; });
        QObject::connect(r, &StreamRecorder::stopped, r,
                         [this](const StopReason &why) { stops.append(why); });
        QObject::connect(r, &StreamRecorder::finished, r, [this] { ++finished; });
        settings = {};
        settings.address = server.url();
        settings.saveTemplate = saveTemplate;
        settings.station = u"Loop"_s;
        settings.singleSong = singleSong;
        // Files of the scripted station's bytes are compared byte for byte,
        // cut by the whole-frame rule the station's script knows.
        settings.songFiles.writeTags = false;
        settings.songFiles.cutAtQuietMoment = false;
        return *recorder;
    }
    void start()
    {
        recorder->setSettings(settings);
        recorder->start();
    }
    bool stopsWith(Kind kind)
    {
        return waitUntil([&] { return !stops.isEmpty(); }, Wait) && stops.last().kind == kind;
    }
    // Stops once the recorder has taken at least `audio` bytes and holds
    // nothing half-read, so the files end exactly at an interval. Returns the
    // audio bytes taken.
    qint64 stopAfter(qint64 audio)
    {
        qint64 consumed = -1;
        EXPECT_TRUE(waitUntil(
            [&] {
                const RecorderStats::Counters counters = recorder->counters();
                if (counters.bytesTotal < double(audio) || counters.receiveBuffer != 0)
                    return false;
                consumed = qint64(counters.bytesTotal);
                recorder->stop();
                return true;
            },
            Wait));
        return consumed;
    }
    // Stops as soon as the recorder has taken at least `audio` bytes, wherever
    // in an interval it is (a paced station seldom leaves none half-read).
    void stopSoonAfter(qint64 audio)
    {
        EXPECT_TRUE(waitUntil([&] { return recorder->counters().bytesTotal >= double(audio); }, Wait));
        recorder->stop();
    }
    static QString recordings() { return AppPaths::recordingsFolder(); }
    static QByteArray recorded(const QString &name) { return TempProfile::readFile(recordings() + name); }
    static QStringList recordedNames() { return QDir(recordings()).entryList(QDir::Files, QDir::Name); }
    ScriptedPrompt prompt;
    FakePowerControl power;
    IcyServer server;
    QDateTime now{QDate(2024, 5, 6), QTime(7, 8, 9)};
    std::unique_ptr<StreamRecorder> recorder;
    RecordingSettings settings;
    QString status;
    QStringList titles;
    QList<StopReason> stops;
    int finished = 0;
};

TEST_F(StreamRecorderTest, SingleSongModeWritesOneFilePerTitle)
{
    // Accented titles as stations send them, in UTF-8 or in Latin-1, named in every block; and
    // two songs in the same minute whose names clean to the same file name.
    server.songs = {
        {"AC/DC", 2}, {"Beyonc\xc3\xa9 - Caf\xc3\xa9 Cr\xc3\xa8me", 2}, {"ACDC", 2}, {"Zo\xeb", 60}};
    server.repeatTitles = true;
    make(u"./%STATION%_%SONG%.mp3"_s, true);
    QString genre, link;
    QObject::connect(recorder.get(), &StreamRecorder::genreChanged, [&](const QString &g) { genre = g; });
    QObject::connect(recorder.get(), &StreamRecorder::stationLinkChanged,
                     [&](const QString &u) { link = u; });
    start();
    ASSERT_TRUE(waitUntil([&] { return !titles.isEmpty() && titles.last() == u"Zo\u00eb"; }, Wait));
    EXPECT_GT(server.port(), 32767);
    EXPECT_EQ(server.sent(0).request,
              "GET /stream HTTP/1.0\r\nHost: 127.0.0.1\r\nUser-Agent: WinampMPEG/2.7\r\n"
              "Accept: */*\r\nIcy-MetaData: 1\r\nConnection: Close\r\n\r\n");
    EXPECT_EQ(status, u"Loopback FM"_s);
    EXPECT_EQ(genre, u"Test"_s);
    EXPECT_EQ(link, u"http://station.example/"_s);
    const qint64 consumed = stopAfter(9 * server.metaInt);
    EXPECT_EQ(titles,
              (QStringList{
                  {}, u"AC/DC"_s, u"Beyonc\u00e9 - Caf\u00e9 Cr\u00e8me"_s, u"ACDC"_s, u"Zo\u00eb"_s, {}}));
    ASSERT_EQ(stops.size(), 1);
    EXPECT_EQ(stops[0].kind, Kind::Stopped);
    EXPECT_TRUE(stops[0].text.isEmpty());
    const RecorderStats::Counters counters = recorder->counters();
    EXPECT_EQ(counters.bitrate, 128);
    EXPECT_EQ(counters.resyncCount, 0);
    EXPECT_TRUE(counters.lastText.startsWith(u"StreamTitle='Zo\u00eb';"_s));
    EXPECT_TRUE(counters.headerText.contains(u"icy-metaint:8000"_s));
    // The second song of the cleaned name "ACDC" took the next free name. Bytes
    // that are no audio are written as they come.
    const QStringList names = {u"Loop_ACDC (2).mp3"_s, u"Loop_ACDC.mp3"_s,
                               u"Loop_Beyonc\u00e9 - Caf\u00e9 Cr\u00e8me.mp3"_s, u"Loop_Zo\u00eb.mp3"_s};
    EXPECT_EQ(recordedNames(), names);
    const int songs[] = {2, 0, 1, 3}; // each file's song in the script
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(recorded(names[i]), server.songFile(0, songs[i], consumed)) << i;
}

TEST_F(StreamRecorderTest, FilesFollowTheStationsFormatAndSongFilesAreTaggedWholeFrames)
{
    using namespace TestAudio;
    const struct
    {
        Clip clip;
        QByteArray contentType;
    } rows[] = {{Clip::Mp3, "audio/mpeg"}, {Clip::Adts, "audio/aacp"}, {Clip::Vorbis, "application/ogg"}};
    // Short intervals at a pace, so that the recording stays within the clip
    // (3 s, 36 kB of AAC) even when the stop comes late.
    server.metaInt = 3000;
    server.bytesPerSecond = 48000;
    server.songs = {{"Artist - One", 3}, {"Two", 3}, {"Three", 60}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.contentType.toStdString());
        QDir(recordings()).removeRecursively();
        const Encoded &audio = encoded(row.clip);
        server.audio = audio.bytes;
        server.contentType = row.contentType;
        make(u"./%STATION% %SONG%.mp3"_s, true);
        settings.songFiles.writeTags = true;
        QString format;
        QObject::connect(recorder.get(), &StreamRecorder::formatChanged,
                         [&](const QString &f) { format = f; });
        start();
        stopSoonAfter(8 * server.metaInt);
        EXPECT_EQ(format, formatName(audio.format));
        const QString ext = formatExtension(audio.format);
        ASSERT_EQ(recordedNames(),
                  (QStringList{u"Loop Artist - One"_s + ext, u"Loop Three"_s + ext, u"Loop Two"_s + ext}));
        const QStringList fields[] = {{u"Artist"_s, u"One"_s, u"partial"_s},
                                      {{}, u"Three"_s, u"partial"_s},
                                      {{}, u"Two"_s, u"complete"_s}};
        for (int i = 0; i < 3; ++i) {
            const QString file = recordings() + recordedNames()[i];
            EXPECT_EQ(decodeErrors(file), QString()) << i;
            EXPECT_EQ(readTags(file, audio.format),
                      (QStringList{fields[i][0], fields[i][1], u"Loop"_s, u"2024-05-06T07:08:09"_s,
                                   server.url(), fields[i][2], u"Tunecatch"_s}))
                << i;
        }
    }
    // One file for the recording: named for the format too, tagged, with a cue sheet beside it.
    QDir(recordings()).removeRecursively();
    server.metaInt = 8000;
    make(u"./%STATION%.mp3"_s, false);
    settings.songFiles.writeTags = true;
    start();
    stopSoonAfter(4 * server.metaInt);
    EXPECT_EQ(recordedNames(), (QStringList{u"Loop.cue"_s, u"Loop.ogg"_s}));
    EXPECT_EQ(readTags(recordings() + u"Loop.ogg"_s, StreamFormat::Ogg)[1], u"Loop"_s);
    const QByteArray sheet = recorded(u"Loop.cue"_s);
    EXPECT_TRUE(sheet.contains("FILE \"Loop.ogg\" WAVE\r\n  TRACK 01 AUDIO\r\n    PERFORMER \"Artist\"\r\n"
                               "    TITLE \"One\"\r\n    INDEX 01 00:00:00\r\n  TRACK 02 AUDIO\r\n"
                               "    TITLE \"Two\"\r\n"))
        << sheet.toStdString();
}

TEST_F(StreamRecorderTest, ARepeatedTitleIsNoChangeAlsoWhileTheRecordingStops)
{
    // Stations that name the song in every block, a stop that finds intervals
    // still waiting, and a minute that turned meanwhile.
    server.songs = {{"One", 2}, {"Two", 400}};
    server.repeatTitles = true;
    server.flood = true;
    make(u"./%TIME% %SONG%.mp3"_s, true);
    settings.limit = {{RecorderStats::Limit::Megabytes, 0.5}};
    start();
    ASSERT_TRUE(waitUntil([&] { return titles.last() == u"Two"_s; }, Wait));
    now = now.addSecs(60);
    ASSERT_TRUE(stopsWith(Kind::LimitReached));
    EXPECT_EQ(recordedNames(), (QStringList{u"07-08 One.mp3"_s, u"07-08 Two.mp3"_s}));
    const QByteArray two = recorded(u"07-08 Two.mp3"_s);
    EXPECT_GE(two.size(), 500 * 1024 - 3 * server.metaInt);
    EXPECT_TRUE(two.startsWith(server.songFile(0, 1, 400000)));
}

TEST_F(StreamRecorderTest, ContinuousModeAsksBeforeOverwritingThenWritesOneFile)
{
    server.songs = {{"One", 2}, {"Two", 60}};
    server.repeatTitles = true;
    const QString name = u"Loop_2024-05-06_07-08.mp3"_s;
    TempProfile::writeFile(recordings() + name, "old");
    // The file is one for the whole recording, so it is named without the song.
    make(u".\\%STATION%_%DATE%_%TIME%%SONG%.mp3"_s, false);
    prompt.answers = {false};
    start();
    EXPECT_EQ(prompt.texts(), QStringList{u"Warning! This file already exists. Overwrite it?"_s});
    EXPECT_TRUE(recorder->Recording()) << "a No leaves the recording waiting for its Stop";
    recorder->stop();
    EXPECT_EQ(server.clientCount(), 0);
    EXPECT_EQ(recorded(name), "old");
    prompt.answers = {true};
    start();
    // All of it sat in the write cache until the stop.
    const qint64 consumed = stopAfter(4 * server.metaInt);
    EXPECT_EQ(recordedNames(), (QStringList{u"Loop_2024-05-06_07-08.cue"_s, name}));
    EXPECT_EQ(recorded(name), continuousFile(server.sent(0), server.metaInt, consumed));
}

TEST_F(StreamRecorderTest, StationsThatNameNoSongAreRecordedIntoOneFileFromTheFirstByte)
{
    const struct
    {
        const char *name;
        QByteArray title;
        bool titles, interval, singleSong;
    } rows[] = {{"empty titles", "", true, true, true},
                {"only empty blocks", "Unsent", false, true, true},
                {"no interval, continuous", "Unsent", true, false, false},
                {"no interval, one file per song", "Unsent", true, false, true}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        QDir(recordings()).removeRecursively();
        server.songs = {{row.title, 60}};
        server.titles = row.titles;
        server.announceInterval = row.interval;
        const int client = server.clientCount();
        make(u"./%STATION% %SONG%.mp3"_s, row.singleSong);
        int switched = 0;
        QObject::connect(recorder.get(), &StreamRecorder::switchedToContinuous, [&] { ++switched; });
        start();
        const qint64 consumed = stopAfter(3 * server.metaInt);
        EXPECT_EQ(switched, row.singleSong ? 1 : 0);
        EXPECT_FALSE(recorder->settings().singleSong);
        EXPECT_EQ(recordedNames(), QStringList{u"Loop .mp3"_s});
        EXPECT_EQ(recorded(u"Loop .mp3"_s), server.sent(client).audio.left(consumed));
        EXPECT_LT(recorder->counters().peakBuffer, 64 * 1024);
    }
}

TEST_F(StreamRecorderTest, PlaylistAddressesLoseTheirLineEndsWhereverTheyAreFound)
{
    server.songs = {{"Song", 100}};
    const QByteArray playlist = "[playlist]\r\nnumberofentries=1\r\nFile1=" + server.url().toLatin1() +
                                "\r\nTitle1=(#1 - 1/10) Loop\r\nLength1=-1\r\nVersion=2\r\n";
    for (const QByteArray path : {"/list.pls", "/LIST.PLS", "/get.pls?sid=1",
                                  "/sbin/shoutcast-playlist.pls?rn=12345&file=filename.pls"})
        server.pages[path] = IcyServer::page(playlist);
    qputenv(StreamRecorder::PlaylistServiceVariable, u"http://127.0.0.1:%1"_s.arg(server.port()).toLatin1());
    make(u"./%STATION%.mp3"_s, false);
    for (const QString &address : {server.url(u"/list.pls"_s), server.url(u"/LIST.PLS"_s),
                                   server.url(u"/get.pls?sid=1"_s), u"ssrn#12345.pls"_s}) {
        SCOPED_TRACE(address.toStdString());
        status.clear();
        prompt.answers = {true};
        settings.address = address;
        start();
        ASSERT_TRUE(waitUntil([&] { return status == u"Loopback FM"_s; }, Wait)) << status.toStdString();
        EXPECT_TRUE(server.sent(server.clientCount() - 1).request.startsWith("GET /stream HTTP/1.0\r\n"));
        recorder->stop();
    }
    qunsetenv(StreamRecorder::PlaylistServiceVariable);
}

TEST_F(StreamRecorderTest, WhatCannotGoOnStopsWithEverythingWrittenAndSaysWhy)
{
    const QString refused = u"127.0.0.1:"_s + QString::number(IcyServer::refusedPort()) + u'/';
    server.songs = {{"Song", 100}};
    server.pages["/empty.pls"] = IcyServer::page("[playlist]\nnumberofentries=0\nVersion=2\n\n");
    using enum IcyServer::Fault;
    const QString stream = server.url(), loop = u"Loop"_s, plain = u"./%STATION%.mp3"_s;
    const QString unable = u"Unable to open"_s, invalid = u"Invalid stream address: "_s;
    // A disk that fills up: the file the user agreed to replace leads to /dev/full.
    const QString full = u"Unable to write \""_s + recordings() + u"Full.mp3\": The disk is full"_s;
    const struct
    {
        QString address;
        IcyServer::Fault fault;
        QString station, saveTemplate; // single-song mode when the template names the song
        Kind kind;
        QString status; // its beginning
    } rows[] = {{refused, None, loop, plain, Kind::Unreachable, StreamConnection::TextNoConnection},
                {u"http://nosuchstation.invalid:8000/live"_s, None, loop, plain, Kind::Unreachable,
                 StreamConnection::TextNoConnection},
                {u"stationwithoutpath"_s, None, loop, plain, Kind::BadAddress, invalid},
                {u"host:65536/"_s, None, loop, plain, Kind::BadAddress,
                 invalid + u"the port must be a number from 1 to 65535"_s},
                {server.url(u"/empty.pls"_s), None, loop, plain, Kind::Unreachable,
                 u"PLS contains no valid stream url"_s},
                {server.url(u"/missing.pls"_s), None, loop, plain, Kind::Unreachable,
                 u"PLS error: 0: An Error Has Occurred."_s},
                {stream, CloseAtOnce, loop, plain, Kind::Unreachable, StreamConnection::TextNotAccepting},
                {stream, EndlessHeader, loop, plain, Kind::Unreachable, StreamConnection::TextNoStream},
                {stream, None, loop, u"/proc/no/such/folder/%STATION%.mp3"_s, Kind::OutputFailed, unable},
                {stream, None, loop, u"/proc/no/such/folder/%SONG%.mp3"_s, Kind::OutputFailed, unable},
                {stream, None, u"Full"_s, plain, Kind::OutputFailed, full}};
    make(plain, false);
    for (const auto &row : rows) {
        SCOPED_TRACE(row.address.toStdString() + ' ' + row.saveTemplate.toStdString());
        QDir(recordings()).removeRecursively();
        stops.clear();
        server.fault = row.fault;
        prompt.answers = {true};
        settings.address = row.address;
        settings.saveTemplate = row.saveTemplate;
        settings.station = row.station;
        settings.singleSong = row.saveTemplate.contains(u"%SONG%"_s);
        if (row.status == full) {
            ASSERT_TRUE(QDir().mkpath(recordings()) &&
                        QFile::link(u"/dev/full"_s, recordings() + u"Full.mp3"_s));
        }
        start();
        EXPECT_TRUE(stopsWith(row.kind)) << (stops.isEmpty() ? -1 : int(stops.last().kind));
        EXPECT_FALSE(recorder->Recording());
        EXPECT_TRUE(status.startsWith(row.status)) << status.toStdString();
        EXPECT_EQ(stops.last().text, status);
        if (row.fault != None) {
            EXPECT_EQ(recorded(u"Loop.mp3"_s), QByteArray()) << "only audio goes to the file";
        }
        EXPECT_LE(recorder->connection().peakHeader(),
                  StreamConnection::MaxHeader + StreamConnection::ReadAhead);
    }
    EXPECT_EQ(finished, 0) << "only a launched recording finishes on a failure";
}

TEST_F(StreamRecorderTest, AStationThatDropsIsReconnectedAndTheSongGoesOn)
{
    server.songs = {{"Alpha", 5}, {"Beta", 100}};
    server.dropAfter = 3;
    make(u"./%SONG%.mp3"_s, true);
    start();
    ASSERT_TRUE(waitUntil([&] { return status == u"Reconnecting... (try 1 of 3)"_s; }, Wait));
    server.dropAfter = 0;
    // The second connection starts the script again: Alpha goes on in its file until Beta comes.
    ASSERT_TRUE(waitUntil([&] { return status == u"Loopback FM"_s; }, Wait));
    const qint64 consumed = stopAfter(3 * server.metaInt + 8 * server.metaInt) - 3 * server.metaInt;
    ASSERT_EQ(server.clientCount(), 2);
    EXPECT_EQ(recordedNames(), (QStringList{u"Alpha.mp3"_s, u"Beta.mp3"_s}));
    EXPECT_EQ(recorded(u"Alpha.mp3"_s), server.sent(0).audio + server.sent(1).audio.left(5 * server.metaInt));
    EXPECT_EQ(recorded(u"Beta.mp3"_s), server.songFile(1, 1, consumed));
}

TEST_F(StreamRecorderTest, ALaunchedRecordingWhoseStationIsGoneEndsLikeALimit)
{
    server.songs = {{"Song", 100}};
    server.stallAfter = 2;
    make(u"./%STATION%.mp3"_s, false, true);
    settings.powerAction = ShutDown;
    start();
    // Silent after two intervals, then no more answers.
    ASSERT_TRUE(waitUntil([&] { return server.clientCount() == 2; }, Wait));
    server.stopListening();
    ASSERT_TRUE(waitUntil([&] { return finished == 1; }, Wait));
    ASSERT_EQ(stops.size(), 1);
    EXPECT_EQ(stops[0].kind, Kind::Dropped);
    EXPECT_TRUE(stops[0].text.startsWith(u"Radio Station could not be reached again after 3 tries."_s));
    EXPECT_EQ(power.exitCalls, QList<quint32>{12});
    EXPECT_EQ(recorded(u"Loop.mp3"_s),
              continuousFile(server.sent(0), server.metaInt, 2 * server.metaInt) + server.sent(1).audio);
}

TEST_F(StreamRecorderTest, LimitsStopTheRecordingThenThePowerActionFollows)
{
    // One megabyte written, or one minute of audio at 128 kbit/s.
    constexpr qint64 Megabyte = 1024 * 1024;
    constexpr qint64 Minute = 59 * 16000;
    using enum RecorderStats::Limit;
    const struct
    {
        RecorderStats::Limit limit;
        RecordingSettings::PowerAction action;
        bool singleSong, launchMode;
        PowerControl::Version version;
        QList<quint32> exits;
        int suspends, finishes;
    } rows[] = {{Megabytes, ShutDown, false, false, {2, 6, 1}, {12}, 0, 1},
                {Megabytes, Hibernate, false, true, {2, 6, 1}, {}, 1, 0},
                {Megabytes, Hibernate, false, true, {2, 4, 0}, {}, 0, 0},
                {Megabytes, None, true, true, {2, 6, 1}, {}, 0, 1},
                {Megabytes, None, false, false, {2, 6, 1}, {}, 0, 0},
                {Minutes, None, false, true, {2, 6, 1}, {}, 0, 1}};
    server.songs = {{"Long song", 400}};
    const QString file = recordings() + u"Loop Station.mp3"_s;
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message()
                     << "limit " << int(row.limit) << ", action " << int(row.action) << ", single song "
                     << row.singleSong << ", launched " << row.launchMode);
        const qint64 limit = row.limit == Minutes ? Minute : Megabyte;
        TempProfile::writeFile(file, "left from last time");
        prompt.answers = {true};
        power = FakePowerControl();
        power.version = row.version;
        qint64 sizeAtRequest = -1;
        power.onRequest = [&] { sizeAtRequest = recorder->Recording() ? -2 : QFileInfo(file).size(); };
        make(u"./%STATION%.mp3"_s, row.singleSong, row.launchMode);
        settings.station = u"Loop Station"_s;
        settings.limit = {row.limit, 1};
        settings.powerAction = row.action;
        int progress = -1;
        QObject::connect(recorder.get(), &StreamRecorder::limitProgress,
                         [&](int percent) { progress = percent; });
        const int client = server.clientCount();
        start();
        ASSERT_TRUE(stopsWith(Kind::LimitReached));
        EXPECT_EQ(progress, 100);
        EXPECT_EQ(prompt.shown.size(), row.launchMode ? 0 : 1) << "launched recordings overwrite unasked";
        EXPECT_EQ(power.exitCalls, row.exits);
        EXPECT_EQ(power.suspendCalls.size(), row.suspends);
        EXPECT_EQ(finished, row.finishes);
        const QByteArray bytes = TempProfile::readFile(file);
        if (!row.exits.isEmpty() || row.suspends) {
            EXPECT_EQ(sizeAtRequest, bytes.size());
        }
        EXPECT_GE(bytes.size(), limit);
        // One song: its file holds the audio from the first byte, as a continuous file would but
        // for the interval in front of the title, which that writes twice.
        const IcyServer::Sent &sent = server.sent(client);
        EXPECT_EQ(bytes.left(limit), row.singleSong
                                         ? sent.audio.left(limit)
                                         : continuousFile(sent, server.metaInt, limit).left(limit));
        prompt.shown.clear();
    }
}

TEST_F(StreamRecorderTest, ATimeLimitEndsByTheClockWhateverTheStationSends)
{
    // 0.02 minutes: 1.2 s. A station that trickles ten bytes a second, and one that names no bit rate.
    const struct
    {
        qint64 bytesPerSecond;
        bool bitrate;
    } rows[] = {{10, true}, {16000, false}};
    server.songs = {{"Song", 100}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.bytesPerSecond);
        server.bytesPerSecond = row.bytesPerSecond;
        server.announceBitrate = row.bitrate;
        make(u"./%STATION%.mp3"_s, false, true);
        settings.limit = {{RecorderStats::Limit::Minutes, 0.02}};
        QElapsedTimer clock;
        clock.start();
        start();
        ASSERT_TRUE(stopsWith(Kind::LimitReached));
        EXPECT_GE(clock.elapsed(), 1200);
        EXPECT_EQ(finished, 1);
    }
}

TEST_F(StreamRecorderTest, ASizeLimitStopsWhereTheBytesAreWritten)
{
    server.songs = {{"One", 1}, {"Two", 1}};
    server.repeat = true;
    server.flood = true;
    server.keepSent = false;
    for (const bool singleSong : {false, true}) {
        SCOPED_TRACE(singleSong);
        QDir(recordings()).removeRecursively();
        make(u"./%SONG%%STATION%.mp3"_s, singleSong, true);
        settings.limit = {{RecorderStats::Limit::Megabytes, 0.05}};
        start();
        ASSERT_TRUE(stopsWith(Kind::LimitReached));
        qint64 total = 0;
        for (const QString &name : recordedNames())
            total += QFileInfo(recordings() + name).size();
        // Past it at most the interval that reached it, the one written twice at a
        // title, and the frames a song file held back to find where its song begins.
        EXPECT_GE(total, qint64(0.05 * 1024 * 1024));
        EXPECT_LE(total, qint64(0.05 * 1024 * 1024) + 3 * server.metaInt);
    }
}

TEST_F(StreamRecorderTest, TwoRecordingsOfOneStationNeverWriteIntoTheSameFile)
{
    server.songs = {{"Song", 400}};
    server.bytesPerSecond = 64000;
    // Launched: a file left from before is replaced unasked, but not one in use.
    TempProfile::writeFile(recordings() + u"Loop.mp3"_s, "left from last time");
    make(u"./%STATION%.mp3"_s, false, true);
    std::unique_ptr<StreamRecorder> first = std::move(recorder);
    first->setSettings(settings);
    first->start();
    ASSERT_TRUE(waitUntil([&] { return first->counters().bytesWritten > 0; }, Wait));
    make(u"./%STATION%.mp3"_s, false, true);
    start();
    ASSERT_TRUE(waitUntil([&] { return recorder->counters().bytesTotal >= 2 * server.metaInt; }, Wait));
    EXPECT_EQ(recorder->output().FileName(), recordings() + u"Loop (2).mp3"_s);
    recorder->stop();
    first->stop();
    EXPECT_EQ(stops.last().kind, Kind::Stopped);
    const QByteArray a = recorded(u"Loop.mp3"_s), b = recorded(u"Loop (2).mp3"_s);
    EXPECT_TRUE(continuousFile(server.sent(0), server.metaInt, a.size()).startsWith(a));
    EXPECT_TRUE(continuousFile(server.sent(1), server.metaInt, b.size()).startsWith(b));
}

TEST_F(StreamRecorderTest, AFloodKeepsMemoryBounded)
{
    server.songs = {{"Song", 1}};
    server.repeat = true;
    server.flood = true;
    server.keepSent = false;
    make(u"./%STATION%.mp3"_s, false);
    start();
    // The buffer never runs dry in a flood: stop wherever it stands.
    ASSERT_TRUE(waitUntil([&] { return recorder->counters().bytesTotal >= 40 * 1024 * 1024; }, Wait));
    recorder->stop();
    EXPECT_LE(recorder->counters().peakBuffer, 2 * 1024 * 1024);
    EXPECT_EQ(QFileInfo(recordings() + u"Loop.mp3"_s).size(),
              qint64(recorder->counters().bytesTotal) + server.metaInt);
}

TEST_F(StreamRecorderTest, WriteEnabledCarriesOverToTheNextRecording)
{
    // An interval longer than the test lasts: only what a stop flushes reaches the file.
    IcyServer slow;
    slow.metaInt = 64000;
    slow.bytesPerSecond = 64000;
    slow.songs = {{"Slow", 10}};
    ASSERT_TRUE(slow.start());
    server.songs = {{"Song", 100}};
    for (const bool recordedBefore : {false, true}) {
        SCOPED_TRACE(recordedBefore);
        prompt.answers = {true, true};
        make(u"./%STATION%.mp3"_s, false);
        if (recordedBefore) {
            start();
            stopAfter(2 * server.metaInt);
        }
        const int client = slow.clientCount();
        settings.address = slow.url();
        start();
        ASSERT_TRUE(waitUntil([&] { return recorder->counters().receiveBuffer >= 8000; }, Wait));
        recorder->stop();
        EXPECT_EQ(recorder->output().WriteEnabled(), recordedBefore);
        const QByteArray bytes = recorded(u"Loop.mp3"_s);
        EXPECT_EQ(bytes.size() >= 8000, recordedBefore);
        EXPECT_TRUE(slow.sent(client).audio.startsWith(bytes));
    }
}

TEST_F(StreamRecorderTest, StopDuringTheConnectWaitEndsTheAttempt)
{
    // A listener whose one-place queue is taken: the next connect hangs.
    QTcpServer stalled;
    stalled.setListenBacklogSize(0);
    ASSERT_TRUE(stalled.listen(QHostAddress::LocalHost, 0));
    stalled.pauseAccepting();
    QTcpSocket filler;
    filler.connectToHost(QHostAddress::LocalHost, stalled.serverPort());
    ASSERT_TRUE(filler.waitForConnected(Wait));
    make(u"./%STATION%.mp3"_s, true);
    settings.address = u"127.0.0.1:"_s + QString::number(stalled.serverPort()) + u'/';
    start();
    const auto &socket = recorder->connection().socket();
    ASSERT_TRUE(waitUntil([&] { return socket.state() == QAbstractSocket::ConnectingState; }, Wait));
    recorder->stop();
    EXPECT_FALSE(recorder->Recording());
    EXPECT_EQ(socket.state(), QAbstractSocket::UnconnectedState);
}

// Songs with known gaps (real MP3 and AAC) from the loopback station, each
// title announced `late` seconds after its song begins, at the first block
// after that moment; recorded into song files cut at the quiet moment.
class QuietCutTest : public StreamRecorderTest
{
protected:
    static constexpr int Interval = 1600; // a tenth of a second at 128 kbit/s

    // Returns the audio bytes the script sends: whole intervals of the sound, once.
    qint64 script(const TestAudio::SongPlan &plan, const TestAudio::EncodedSound &sound, double late)
    {
        server.audio = sound.bytes;
        server.metaInt = Interval;
        server.songs.clear();
        qint64 begun = 0; // the interval the song before began with
        for (int i = 1; i < plan.songs(); ++i) {
            // A song's title comes in the block after its first interval.
            const qint64 block = (sound.offsetAt(plan.start(i) + late) + Interval - 1) / Interval;
            server.songs.append({u"Song %1"_s.arg(i - 1).toUtf8(), int(block - 1 - begun)});
            begun = block - 1;
        }
        const qint64 intervals = sound.bytes.size() / Interval;
        server.songs.append({u"Song %1"_s.arg(plan.songs() - 1).toUtf8(), int(intervals - begun)});
        return intervals * Interval;
    }
    // Starts a recording with the cut on.
    void recordCut(const QString &station)
    {
        QDir(recordings()).removeRecursively();
        make(u"./%SONG%.mp3"_s, true);
        settings.station = station;
        settings.songFiles.writeTags = true;
        settings.songFiles.cutAtQuietMoment = true;
        start();
    }
    // Records until `stopAt` audio bytes have come, all of the sound.
    qint64 record(const QString &station, qint64 stopAt)
    {
        recordCut(station);
        return stopAfter(stopAt);
    }
    // The audio of each song file, in song order.
    static QList<QByteArray> songAudio()
    {
        QList<QByteArray> out;
        for (const QString &name : recordedNames()) {
            const QByteArray bytes = recorded(name);
            out.append(bytes.sliced(TestAudio::id3Size(bytes)));
        }
        return out;
    }
    // Where each file begins in the sound, in seconds; checks that together
    // they hold the sound from the first cut on, every byte once.
    static QList<double> fileStarts(const QList<QByteArray> &files, const TestAudio::EncodedSound &sound)
    {
        const QByteArray all = files.join();
        const qsizetype first = sound.bytes.indexOf(all);
        EXPECT_GE(first, 0) << "the files are the sound, each byte once and in order";
        QList<double> starts;
        qint64 offset = first;
        for (const QByteArray &file : files) {
            double time = 0;
            for (const AudioFrame &frame : sound.frames) {
                if (frame.offset >= offset)
                    break;
                time += frame.duration;
            }
            starts.append(time);
            offset += file.size();
        }
        return starts;
    }
};

TEST_F(QuietCutTest, EachSongBeginsInItsGapWhetherTheTitleComesEarlyOnTimeOrLate)
{
    using namespace TestAudio;
    const SongPlan plan{{0.8, 0.8, 0.8}, 8};
    for (const StreamFormat format : {StreamFormat::Mp3, StreamFormat::Aac}) {
        const EncodedSound &sound = encodeSound(plan, plan.total(), {format});
        ASSERT_FALSE(sound.frames.empty());
        for (const double late : {-2.0, 0.0, 2.0}) {
            SCOPED_TRACE(formatName(format).toStdString() + " late " + std::to_string(late));
            const qint64 sent = script(plan, sound, late);
            server.contentType = format == StreamFormat::Mp3 ? "audio/mpeg" : "audio/aacp";
            record(u"Gaps %1 %2"_s.arg(formatName(format)).arg(late), sent);
            ASSERT_EQ(recordedNames().size(), plan.songs());
            const QList<double> starts = fileStarts(songAudio(), sound);
            for (int i = 1; i < plan.songs(); ++i) {
                EXPECT_GE(starts[i], plan.end(i - 1) - 0.05) << i;
                EXPECT_LE(starts[i], plan.start(i) + 0.05) << i;
            }
            const QString ext = formatExtension(format);
            EXPECT_EQ(readTags(recordings() + u"Song 1"_s + ext, format)[5], u"complete; cut at silence"_s);
            const RecorderStats::Counters counters = recorder->counters();
            EXPECT_GT(counters.peakCutHeld, 0);
            // The windows' 12 s and the decoder's settling at 128 kbit/s.
            EXPECT_LE(counters.peakCutHeld, 13 * 16000);
        }
    }
}

TEST_F(QuietCutTest, TheDelayIsLearntFromThreeSongsAndPlacesACrossfadeWithoutAGap)
{
    using namespace TestAudio;
    // Three gaps, then songs that crossfade over a second: nothing quiet to find.
    const SongPlan plan{{0.8, 0.8, 0.8, -1.0}, 8};
    const EncodedSound &sound = encodeSound(plan, plan.total(), {});
    const qint64 sent = script(plan, sound, 2.0);
    const QString station = u"Late by two"_s;
    record(station, sent);
    ASSERT_EQ(recordedNames().size(), plan.songs());
    const QList<double> starts = fileStarts(songAudio(), sound);
    for (int i = 1; i < 4; ++i)
        EXPECT_LE(std::abs(starts[i] - (plan.end(i - 1) + plan.start(i)) / 2), 0.45) << i;
    // By the title alone the last song would begin 2 s into the next; the
    // learnt delay puts it near where the crossfade begins.
    EXPECT_LE(std::abs(starts[4] - plan.start(4)), 1.0) << starts[4];
    const TitleDelay delay(station);
    EXPECT_EQ(delay.source(), TitleDelay::Source::Learnt);
    EXPECT_NEAR(delay.seconds(), 2.4, 0.5);
    EXPECT_EQ(recorder->titleDelayText(), delay.text());
    const QStringList recording = {u"partial"_s, u"complete; cut at silence"_s, u"complete; cut at silence"_s,
                                   u"complete; cut at title"_s, u"partial"_s};
    for (int i = 0; i < plan.songs(); ++i)
        EXPECT_EQ(readTags(recordings() + recordedNames()[i], StreamFormat::Mp3)[5], recording[i]) << i;
    // Set by hand it is no longer learnt; reset, it is learnt again from nothing.
    recorder->setTitleDelay(-1.5);
    EXPECT_EQ(TitleDelay(station).seconds(), -1.5);
    EXPECT_EQ(TitleDelay(station).source(), TitleDelay::Source::ByHand);
    recorder->resetTitleDelay();
    EXPECT_EQ(TitleDelay(station).source(), TitleDelay::Source::NotYetKnown);
}

TEST_F(QuietCutTest, StoppingInsideAWindowLosesNothing)
{
    using namespace TestAudio;
    const SongPlan plan{{0.8, 0.8, 0.8}, 8};
    const EncodedSound &sound = encodeSound(plan, plan.total(), {});
    script(plan, sound, 0.0);
    server.bytesPerSecond = 32000;
    recordCut(u"Stopped early"_s);
    // Half a second after the second title: its cut still waits for the audio after it.
    stopSoonAfter(sound.offsetAt(plan.start(2) + 0.5));
    const auto consumed = qint64(recorder->counters().bytesTotal);
    ASSERT_LT(consumed, sound.offsetAt(plan.start(2) + 3));
    ASSERT_EQ(recordedNames().size(), 3);
    const QList<QByteArray> files = songAudio();
    const QList<double> starts = fileStarts(files, sound);
    EXPECT_GE(starts[2], plan.end(1) - 0.05);
    EXPECT_LE(starts[2], plan.start(2) + 0.05);
    // Up to the last byte taken, but for an unfinished last frame.
    const qint64 first = sound.bytes.indexOf(files.join());
    EXPECT_GE(first + files.join().size(), consumed - 1500);
    EXPECT_EQ(recorder->counters().cutHeld, 0);
}

} // namespace
