#include "ui/recorder/frmtc.h"

#include "base/apppaths.h"
#include "base/launchoptions.h"
#include "support/fakepowercontrol.h"
#include "recorder/recorderstats.h"
#include "support/accessiblenames.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QAccessible>
#include <QCheckBox>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int Wait = 15000;

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

class RecorderWindow : public ProfileTest
{
protected:
    void SetUp() override { ASSERT_TRUE(server.start()); }
    void TearDown() override { delete window.data(); }
    FrmTC *open()
    {
        FrmTC::Hooks hooks;
        hooks.now = [] { return QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9)); };
        hooks.chooseSavePath = [this](QWidget *, const QString &current) {
            dialogShownWith = current;
            return dialogAnswer;
        };
        hooks.connection = {1000ms, {50ms, 100ms, 150ms}};
        window = new FrmTC(prompt, launch, power, nullptr, hooks);
        return window;
    }
    // Fills the inputs as the main window does, for the scripted station.
    void openFor(const QString &saveTemplate, bool singleSong, const QString &address = {})
    {
        open();
        edit("txtStream")->setText(address.isEmpty() ? server.url() : address);
        edit("txtSave")->setText(saveTemplate);
        label("LblStation")->setText(u"Loop"_s);
        child<QCheckBox>("chkSingleSong")->setChecked(singleSong);
        button("cmdMonitor")->click();
        window->show();
    }
    template <typename T> T *child(const char *name) const
    {
        T *widget = window->findChild<T *>(QLatin1StringView(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    QLabel *label(const char *name) const { return child<QLabel>(name); }
    QLineEdit *edit(const char *name) const { return child<QLineEdit>(name); }
    QPushButton *button(const char *name) const { return child<QPushButton>(name); }
    QString text(const char *name) const { return label(name)->text(); }
    bool showsStatus(const QString &start) const
    {
        return waitUntil([&] { return text("lbStream").startsWith(start); }, Wait);
    }
    // Stops the recording (by Record or by closing the window) once it has
    // taken at least `audio` bytes and holds nothing half-read, so the files
    // end exactly at an interval. Returns the audio bytes taken.
    qint64 stopAfter(qint64 audio, bool byClosing = false)
    {
        qint64 consumed = -1;
        const bool drained = waitUntil(
            [&] {
                const IcyStream &stream = window->Stream();
                if (stream.BytesTotal() < double(audio) || stream.ReceiveBufferLength() != 0)
                    return false;
                consumed = qint64(stream.BytesTotal());
                if (byClosing)
                    window->close();
                else
                    button("cmdRecord")->click();
                return true;
            },
            Wait);
        EXPECT_TRUE(drained);
        return consumed;
    }
    static QString recordings() { return AppPaths::recordingsFolder(); }
    static QByteArray recorded(const QString &name) { return TempProfile::readFile(recordings() + name); }
    static QStringList recordedNames() { return QDir(recordings()).entryList(QDir::Files, QDir::Name); }
    ScriptedPrompt prompt;
    LaunchOptions launch;
    FakePowerControl power;
    IcyServer server;
    QPointer<FrmTC> window;
    QString dialogAnswer, dialogShownWith;
};

TEST_F(RecorderWindow, SingleSongModeWritesOneFilePerTitle)
{
    // Accented titles as stations send them, in UTF-8 or in Latin-1, named in every block; and
    // two songs in the same minute whose names clean to the same file name.
    server.songs = {
        {"AC/DC", 2}, {"Beyonc\xc3\xa9 - Caf\xc3\xa9 Cr\xc3\xa8me", 2}, {"ACDC", 2}, {"Zo\xeb", 60}};
    server.repeatTitles = true;
    openFor(u"./%STATION%_%SONG%.mp3"_s, true);
    button("cmdRecord")->click();
    EXPECT_FALSE(edit("txtStream")->isEnabled());
    ASSERT_TRUE(waitUntil([&] { return text("lbSong") == u"Zo\u00eb"; }, Wait));
    EXPECT_GT(server.port(), 32767);
    EXPECT_EQ(server.sent(0).request,
              "GET /stream HTTP/1.0\r\nHost: 127.0.0.1\r\nUser-Agent: WinampMPEG/2.7\r\n"
              "Accept: */*\r\nIcy-MetaData: 1\r\nConnection: Close\r\n\r\n");
    EXPECT_EQ(text("lbStream"), u"Loopback FM"_s);
    EXPECT_EQ(text("lbGenre"), u"Test"_s);
    EXPECT_TRUE(text("lnkStation").contains(u"http://station.example/"_s));
    auto *meta = child<QPlainTextEdit>("txtMeta");
    EXPECT_TRUE(
        waitUntil([&] { return meta->toPlainText().startsWith(u"StreamTitle='Zo\u00eb';"_s); }, Wait));
    EXPECT_TRUE(label("lbValid")->isVisible());
    button("btShow")->click();
    EXPECT_TRUE(meta->toPlainText().contains(u"icy-metaint:8000"_s));
    const qint64 consumed = stopAfter(9 * server.metaInt);
    EXPECT_TRUE(text("lbSong").isEmpty());
    EXPECT_TRUE(
        waitUntil([&] { return text("lbStore") == RecorderStats::StoredSizeText(double(consumed)); }, Wait));
    EXPECT_EQ(text("lbBitrate"), u"128 kbit/s"_s);
    EXPECT_EQ(window->Stream().ResyncCount(), 0);
    // The second song of the cleaned name "ACDC" truncated the first.
    const QStringList names = {u"Loop_ACDC.mp3"_s, u"Loop_Beyonc\u00e9 - Caf\u00e9 Cr\u00e8me.mp3"_s,
                               u"Loop_Zo\u00eb.mp3"_s};
    EXPECT_EQ(recordedNames(), names);
    const int songs[] = {2, 1, 3}; // each file's song in the script
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(recorded(names[i]), server.songFile(0, songs[i], consumed)) << i;
}

TEST_F(RecorderWindow, ContinuousModeAsksBeforeOverwritingThenWritesOneFile)
{
    server.songs = {{"One", 2}, {"Two", 60}};
    server.repeatTitles = true;
    const QString name = u"Loop_2024-05-06_07-08.mp3"_s;
    TempProfile::writeFile(recordings() + name, "old");
    // The file is one for the whole recording, so it is named without the song.
    openFor(u".\\%STATION%_%DATE%_%TIME%%SONG%.mp3"_s, false);
    prompt.answers = {false};
    button("cmdRecord")->click();
    EXPECT_EQ(prompt.texts(), QStringList{FrmTC::OverwriteQuestion});
    button("cmdRecord")->click();
    EXPECT_EQ(server.clientCount(), 0);
    EXPECT_EQ(recorded(name), "old");
    prompt.answers = {true};
    button("cmdRecord")->click();
    QSignalSpy unloaded(window.data(), &FrmTC::unloaded);
    // Closing the window stops the recording: all of it sat in the write cache until then.
    const qint64 consumed = stopAfter(4 * server.metaInt, true);
    EXPECT_EQ(unloaded.size(), 1);
    EXPECT_EQ(recordedNames(), QStringList{name});
    EXPECT_EQ(recorded(name), continuousFile(server.sent(0), server.metaInt, consumed));
}

TEST_F(RecorderWindow, StationsThatNameNoSongAreRecordedIntoOneFileFromTheFirstByte)
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
        openFor(u"./%STATION% %SONG%.mp3"_s, row.singleSong);
        button("cmdRecord")->click();
        const qint64 consumed = stopAfter(3 * server.metaInt);
        EXPECT_FALSE(child<QCheckBox>("chkSingleSong")->isChecked());
        EXPECT_EQ(recordedNames(), QStringList{u"Loop .mp3"_s});
        EXPECT_EQ(recorded(u"Loop .mp3"_s), server.sent(client).audio.left(consumed));
        EXPECT_LT(window->Stream().PeakBuffer(), 64 * 1024);
        delete window.data();
    }
}

TEST_F(RecorderWindow, PlaylistAddressesLoseTheirLineEndsWhereverTheyAreFound)
{
    server.songs = {{"Song", 100}};
    const QByteArray playlist = "[playlist]\r\nnumberofentries=1\r\nFile1=" + server.url().toLatin1() +
                                "\r\nTitle1=(#1 - 1/10) Loop\r\nLength1=-1\r\nVersion=2\r\n";
    for (const QByteArray path : {"/list.pls", "/LIST.PLS", "/get.pls?sid=1",
                                  "/sbin/shoutcast-playlist.pls?rn=12345&file=filename.pls"})
        server.pages[path] = IcyServer::page(playlist);
    qputenv(FrmTC::PlaylistServiceVariable, u"http://127.0.0.1:%1"_s.arg(server.port()).toLatin1());
    openFor(u"./%STATION%.mp3"_s, false);
    for (const QString &address : {server.url(u"/list.pls"_s), server.url(u"/LIST.PLS"_s),
                                   server.url(u"/get.pls?sid=1"_s), u"ssrn#12345.pls"_s}) {
        SCOPED_TRACE(address.toStdString());
        label("lbStream")->clear();
        prompt.answers = {true};
        edit("txtStream")->setText(address);
        button("cmdRecord")->click();
        ASSERT_TRUE(showsStatus(u"Loopback FM"_s)) << text("lbStream").toStdString();
        EXPECT_TRUE(server.sent(server.clientCount() - 1).request.startsWith("GET /stream HTTP/1.0\r\n"));
        button("cmdRecord")->click();
    }
    qunsetenv(FrmTC::PlaylistServiceVariable);
}

TEST_F(RecorderWindow, WhatCannotGoOnStopsWithEverythingWrittenAndSaysWhy)
{
    const QString refused = u"127.0.0.1:"_s + QString::number(IcyServer::refusedPort()) + u'/';
    server.songs = {{"Song", 100}};
    server.pages["/empty.pls"] = IcyServer::page("[playlist]\nnumberofentries=0\nVersion=2\n\n");
    using enum IcyServer::Fault;
    const QString stream = server.url(), loop = u"Loop"_s, plain = u"./%STATION%.mp3"_s;
    const QString unable = u"Unable to open"_s, invalid = u"Invalid stream address: "_s;
    const struct
    {
        QString address;
        IcyServer::Fault fault;
        QString station, saveTemplate; // single-song mode when the template names the song
        QString status;                // the beginning of lbStream
    } rows[] = {
        {refused, None, loop, plain, StreamConnection::TextNoConnection},
        {u"http://nosuchstation.invalid:8000/live"_s, None, loop, plain, StreamConnection::TextNoConnection},
        {u"stationwithoutpath"_s, None, loop, plain, invalid},
        {u"host:65536/"_s, None, loop, plain, invalid + u"the port must be a number from 1 to 65535"_s},
        {server.url(u"/empty.pls"_s), None, loop, plain, FrmTC::TextNoPlaylistStream},
        {server.url(u"/missing.pls"_s), None, loop, plain, u"PLS error: 0: An Error Has Occurred."_s},
        {stream, CloseAtOnce, loop, plain, StreamConnection::TextNotAccepting},
        {stream, EndlessHeader, loop, plain, StreamConnection::TextNoStream},
        {stream, None, loop, u"/proc/no/such/folder/%STATION%.mp3"_s, unable},
        {stream, None, u"AC/DC Radio"_s, u"./%STATION% %SONG%.mp3"_s, unable},
        {stream, None, loop, u"/dev/full"_s, u"Unable to write \"/dev/full\""_s}};
    openFor(plain, false);
    for (const auto &row : rows) {
        SCOPED_TRACE(row.address.toStdString() + ' ' + row.saveTemplate.toStdString());
        QDir(recordings()).removeRecursively();
        server.fault = row.fault;
        prompt.answers = {true};
        edit("txtStream")->setText(row.address);
        edit("txtSave")->setText(row.saveTemplate);
        label("LblStation")->setText(row.station);
        child<QCheckBox>("chkSingleSong")->setChecked(row.saveTemplate.contains(u"%SONG%"_s));
        button("cmdRecord")->click();
        EXPECT_TRUE(waitUntil([&] { return !window->Recording(); }, Wait));
        EXPECT_TRUE(text("lbStream").startsWith(row.status)) << text("lbStream").toStdString();
        EXPECT_EQ(button("cmdRecord")->text(), FrmTC::CaptionRecord);
        EXPECT_TRUE(edit("txtStream")->isEnabled());
        if (row.fault != None) {
            EXPECT_EQ(recorded(u"Loop.mp3"_s), QByteArray()) << "only audio goes to the file";
        }
        EXPECT_LE(window->Connection().PeakHeader(),
                  StreamConnection::MaxHeader + StreamConnection::ReadAhead);
    }
}

TEST_F(RecorderWindow, AStationThatDropsIsReconnectedAndTheSongGoesOn)
{
    server.songs = {{"Alpha", 5}, {"Beta", 100}};
    server.dropAfter = 3;
    openFor(u"./%SONG%.mp3"_s, true);
    button("cmdRecord")->click();
    ASSERT_TRUE(showsStatus(u"Reconnecting... (try 1 of 3)"_s));
    server.dropAfter = 0;
    // The second connection starts the script again: Alpha goes on in its file until Beta comes.
    ASSERT_TRUE(showsStatus(u"Loopback FM"_s));
    const qint64 consumed = stopAfter(3 * server.metaInt + 8 * server.metaInt) - 3 * server.metaInt;
    ASSERT_EQ(server.clientCount(), 2);
    EXPECT_EQ(recordedNames(), (QStringList{u"Alpha.mp3"_s, u"Beta.mp3"_s}));
    EXPECT_EQ(recorded(u"Alpha.mp3"_s), server.sent(0).audio + server.sent(1).audio.left(5 * server.metaInt));
    EXPECT_EQ(recorded(u"Beta.mp3"_s), server.songFile(1, 1, consumed));
}

TEST_F(RecorderWindow, ALaunchedRecordingWhoseStationIsGoneEndsLikeALimit)
{
    server.songs = {{"Song", 100}};
    server.stallAfter = 2;
    launch.launchMode = true;
    launch.commandArg = u"-a "_s + server.url() + u" -w Loop -s ./%STATION%.mp3 -xs"_s;
    open();
    QSignalSpy unloaded(window.data(), &FrmTC::unloaded);
    window->show();
    // Silent after two intervals, then no more answers.
    ASSERT_TRUE(waitUntil([&] { return server.clientCount() == 2; }, Wait));
    server.stopListening();
    ASSERT_TRUE(unloaded.wait(Wait));
    EXPECT_EQ(power.exitCalls, QList<quint32>{12});
    EXPECT_EQ(recorded(u"Loop.mp3"_s),
              continuousFile(server.sent(0), server.metaInt, 2 * server.metaInt) + server.sent(1).audio);
}

TEST_F(RecorderWindow, AFloodKeepsMemoryBounded)
{
    server.songs = {{"Song", 1}};
    server.repeat = true;
    server.flood = true;
    server.keepSent = false;
    openFor(u"./%STATION%.mp3"_s, false);
    button("cmdRecord")->click();
    // The buffer never runs dry in a flood: stop wherever it stands.
    ASSERT_TRUE(waitUntil([&] { return window->Stream().BytesTotal() >= 40 * 1024 * 1024; }, Wait));
    button("cmdRecord")->click();
    EXPECT_LE(window->Stream().PeakBuffer(), 2 * 1024 * 1024);
    EXPECT_EQ(QFileInfo(recordings() + u"Loop.mp3"_s).size(),
              qint64(window->Stream().BytesTotal()) + server.metaInt);
}

TEST_F(RecorderWindow, WriteEnabledCarriesOverToTheNextRecordingOfTheWindow)
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
        openFor(u"./%STATION%.mp3"_s, false);
        if (recordedBefore) {
            button("cmdRecord")->click();
            stopAfter(2 * server.metaInt);
        }
        const int client = slow.clientCount();
        edit("txtStream")->setText(slow.url());
        button("cmdRecord")->click();
        ASSERT_TRUE(waitUntil([&] { return window->Stream().ReceiveBufferLength() >= 8000; }, Wait));
        button("cmdRecord")->click();
        EXPECT_EQ(window->Output().WriteEnabled(), recordedBefore);
        const QByteArray bytes = recorded(u"Loop.mp3"_s);
        EXPECT_EQ(bytes.size() >= 8000, recordedBefore);
        EXPECT_TRUE(slow.sent(client).audio.startsWith(bytes));
        delete window.data();
    }
}

TEST_F(RecorderWindow, StopDuringTheConnectWaitEndsTheAttempt)
{
    // A listener whose one-place queue is taken: the next connect hangs.
    QTcpServer stalled;
    stalled.setListenBacklogSize(0);
    ASSERT_TRUE(stalled.listen(QHostAddress::LocalHost, 0));
    stalled.pauseAccepting();
    QTcpSocket filler;
    filler.connectToHost(QHostAddress::LocalHost, stalled.serverPort());
    ASSERT_TRUE(filler.waitForConnected(Wait));
    openFor(u"./%STATION%.mp3"_s, true, u"127.0.0.1:"_s + QString::number(stalled.serverPort()) + u'/');
    button("cmdRecord")->click();
    const auto &socket = window->Connection().Socket();
    ASSERT_TRUE(waitUntil([&] { return socket.state() == QAbstractSocket::ConnectingState; }, Wait));
    button("cmdRecord")->click();
    EXPECT_FALSE(window->Recording());
    EXPECT_EQ(socket.state(), QAbstractSocket::UnconnectedState);
}

TEST_F(RecorderWindow, LaunchRecordsToItsLimitThenActs)
{
    // One megabyte written, or one minute of audio at 128 kbit/s.
    constexpr qint64 Megabyte = 1024 * 1024;
    constexpr qint64 Minute = 59 * 16000;
    const struct
    {
        QString switches;
        PowerControl::Version version;
        QList<quint32> exits;
        int suspends;
        bool closes;
    } rows[] = {{u" -b 1 -xs"_s, {2, 6, 1}, {12}, 0, true},
                {u" -b 1 -xh"_s, {2, 6, 1}, {}, 1, false},
                {u" -b 1 -xh"_s, {2, 4, 0}, {}, 0, false},
                {u" -b 1 -n"_s, {2, 6, 1}, {}, 0, true},
                {u" -t 1"_s, {2, 6, 1}, {}, 0, true}};
    server.songs = {{"Long song", 400}};
    const QString file = recordings() + u"Loop Station.mp3"_s;
    for (const auto &row : rows) {
        SCOPED_TRACE(row.switches.toStdString());
        const bool minutes = row.switches.startsWith(u" -t"_s);
        const bool singleSong = row.switches.endsWith(u"-n"_s);
        const qint64 limit = minutes ? Minute : Megabyte;
        TempProfile::writeFile(file, "left from last time");
        power = FakePowerControl();
        power.version = row.version;
        qint64 sizeAtRequest = -1;
        power.onRequest = [&] { sizeAtRequest = window->Recording() ? -2 : QFileInfo(file).size(); };
        launch.launchMode = true;
        launch.commandArg =
            u"-a "_s + server.url() + u" -w Loop Station -s ./%STATION%.mp3 -m -v"_s + row.switches;
        open();
        EXPECT_FALSE(button("cmdStations")->isEnabled());
        EXPECT_TRUE(child<QRadioButton>(minutes ? "optBreak0" : "optBreak1")->isChecked());
        EXPECT_EQ(child<QCheckBox>("chkSingleSong")->isChecked(), singleSong);
        EXPECT_TRUE(child<QWidget>("monitorPanel")->isVisibleTo(window));
        EXPECT_TRUE(window->windowState() & Qt::WindowMinimized);
        QSignalSpy unloaded(window.data(), &FrmTC::unloaded);
        window->show();
        const int client = server.clientCount();
        ASSERT_TRUE(waitUntil(
            [&] { return server.clientCount() > client && (!window || !window->Recording()); }, Wait));
        EXPECT_TRUE(prompt.shown.isEmpty());
        EXPECT_EQ(power.exitCalls, row.exits);
        EXPECT_EQ(power.suspendCalls.size(), row.suspends);
        EXPECT_EQ(unloaded.size(), row.closes ? 1 : 0);
        const QByteArray bytes = TempProfile::readFile(file);
        if (!row.exits.isEmpty() || row.suspends) {
            EXPECT_EQ(sizeAtRequest, bytes.size());
        }
        EXPECT_GE(bytes.size(), limit);
        // One song: its file holds the audio from the first byte, as a continuous file would but
        // for the interval in front of the title, which that writes twice.
        const IcyServer::Sent &sent = server.sent(client);
        EXPECT_EQ(bytes.left(limit), singleSong ? sent.audio.left(limit)
                                                : continuousFile(sent, server.metaInt, limit).left(limit));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_EQ(window.isNull(), row.closes);
        delete window.data();
    }
}

TEST_F(RecorderWindow, ControlsKeepTheirRulesAndEachHasItsOwnName)
{
    open();
    auto *hibernate = child<QCheckBox>("ChkHibernate");
    auto *shutDown = child<QCheckBox>("ChkShutDown");
    hibernate->click();
    shutDown->click();
    EXPECT_FALSE(hibernate->isChecked());
    hibernate->click();
    EXPECT_FALSE(shutDown->isChecked());
    window->show();
    const int height = window->height();
    auto *update = window->findChild<QTimer *>(u"tmrUpdate"_s);
    // A screen reader's press opens the monitor panel as a click does.
    QAccessible::queryAccessibleInterface(button("cmdMonitor"))
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    ASSERT_TRUE(waitUntil([&] { return child<QWidget>("monitorPanel")->isVisible(); }, Wait));
    EXPECT_GT(window->height(), height);
    EXPECT_TRUE(update->isActive());
    // Fields and bars are named by their captions or for themselves; values are tied to their captions.
    expectAccessibleNames(window);
    for (QWidget *bar : window->findChildren<QProgressBar *>())
        EXPECT_FALSE(QAccessible::queryAccessibleInterface(bar)->text(QAccessible::Name).isEmpty())
            << bar->objectName().toStdString();
    for (QLabel *value : window->findChildren<QLabel *>()) {
        if (value->objectName().isEmpty() || !value->accessibleName().isEmpty() || !value->text().isEmpty())
            continue;
        const auto labelledBy = QAccessible::queryAccessibleInterface(value)->relations(QAccessible::Label);
        ASSERT_FALSE(labelledBy.isEmpty()) << value->objectName().toStdString();
        EXPECT_FALSE(labelledBy.first().first->text(QAccessible::Name).isEmpty());
    }
    button("cmdMonitor")->click();
    EXPECT_EQ(window->height(), height);
    EXPECT_FALSE(update->isActive());
    dialogAnswer = u"/music/chosen.mp3"_s;
    button("btSave")->click();
    EXPECT_EQ(dialogShownWith, u".\\%STATION%_%DATE%_%TIME%.mp3"_s) << "the default template";
    dialogAnswer.clear();
    button("btSave")->click();
    EXPECT_EQ(edit("txtSave")->text(), u"/music/chosen.mp3"_s);
}

} // namespace
