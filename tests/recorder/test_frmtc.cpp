#include "recorder/frmtc.h"

#include "app/apppaths.h"
#include "app/appstate.h"
#include "fakepowercontrol.h"
#include "recorder/recorderstats.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QCheckBox>
#include <QDir>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

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
        window = new FrmTC(state, power, nullptr, hooks);
        return window;
    }

    // Fills the inputs as the main window does, for the scripted station.
    void openFor(const QString &saveTemplate, bool singleSong)
    {
        open();
        edit("txtStream")->setText(server.url());
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

    static QString recordings() { return AppPaths::RecordingsFolder(); }
    static QByteArray recorded(const QString &name) { return TempProfile::readFile(recordings() + name); }
    static QStringList recordedNames() { return QDir(recordings()).entryList(QDir::Files, QDir::Name); }

    ScriptedPrompt prompt;
    AppState state{profile.installFolder(), prompt};
    FakePowerControl power;
    IcyServer server;
    QPointer<FrmTC> window;
    QString dialogAnswer;
    QString dialogShownWith;
};

TEST_F(RecorderWindow, SingleSongModeWritesOneFilePerTitle)
{
    server.songs = {{"Alpha", 3}, {"Beta - Two", 2}, {"Gamma", 60}};
    openFor(u"./%STATION%_%SONG%.mp3"_s, true);
    button("cmdRecord")->click();
    EXPECT_FALSE(edit("txtStream")->isEnabled());
    ASSERT_TRUE(waitUntil([&] { return text("lbSong") == u"Gamma"; }, Wait));
    EXPECT_EQ(server.sent(0).request,
              "GET /stream HTTP/1.0\r\nHost: 127.0.0.1\r\nUser-Agent: WinampMPEG/2.7\r\n"
              "Accept: */*\r\nIcy-MetaData: 1\r\nConnection: Close\r\n\r\n");
    EXPECT_EQ(text("lbStream"), u"Loopback FM"_s);
    EXPECT_EQ(text("lbGenre"), u"Test"_s);
    EXPECT_TRUE(text("lnkStation").contains(u"http://station.example/"_s));
    auto *meta = child<QPlainTextEdit>("txtMeta");
    EXPECT_TRUE(waitUntil([&] { return meta->toPlainText().startsWith(u"StreamTitle='Gamma';"_s); }, Wait));
    button("btShow")->click();
    EXPECT_TRUE(meta->toPlainText().contains(u"icy-metaint:8000"_s));

    const qint64 consumed = stopAfter(8 * server.metaInt);
    EXPECT_TRUE(text("lbSong").isEmpty());
    EXPECT_TRUE(
        waitUntil([&] { return text("lbStore") == RecorderStats::StoredSizeText(double(consumed)); }, Wait));
    EXPECT_EQ(text("lbBitrate"), u"128 kbit/s"_s);

    const QStringList names{u"Loop_Alpha.mp3"_s, u"Loop_Beta - Two.mp3"_s, u"Loop_Gamma.mp3"_s};
    EXPECT_EQ(recordedNames(), names);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(recorded(names[i]), server.songFile(0, i, consumed)) << names[i].toStdString();
}

TEST_F(RecorderWindow, ContinuousModeAsksBeforeOverwritingThenWritesOneFile)
{
    server.songs = {{"One", 2}, {"Two", 60}};
    server.repeatTitles = true;
    const QString name = u"Loop_2024-05-06_07-08.mp3"_s;
    TempProfile::writeFile(recordings() + name, "old");
    openFor(u".\\%STATION%_%DATE%_%TIME%.mp3"_s, false);
    prompt.answers = {false};
    button("cmdRecord")->click();
    EXPECT_EQ(prompt.texts(), QStringList{FrmTC::OverwriteQuestion});
    EXPECT_EQ(prompt.shown[0].title, AppState::AppTitle);
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

TEST_F(RecorderWindow, StationWithoutTitlesSwitchesToOneFile)
{
    server.songs = {{"", 60}};
    openFor(u"./%STATION% %SONG%.mp3"_s, true);
    button("cmdRecord")->click();
    stopAfter(2 * server.metaInt);
    EXPECT_FALSE(child<QCheckBox>("chkSingleSong")->isChecked());
    EXPECT_EQ(recordedNames(), QStringList{u"Loop .mp3"_s});
}

TEST_F(RecorderWindow, EveryFailureIsShownAndStopCleansUp)
{
    QTcpServer closed;
    ASSERT_TRUE(IcyServer::ListenOnLowPort(closed));
    const QString refused = u"127.0.0.1:"_s + QString::number(closed.serverPort()) + u'/';
    closed.close();
    server.songs = {{"Song", 100}};
    server.pages["/list.pls"] =
        IcyServer::page("[playlist]\nnumberofentries=1\nFile1=" + server.url().toLatin1() +
                        "\nTitle1=(#1 - 1/10) Loop\nLength1=-1\nVersion=2\n");
    server.pages["/empty.pls"] = IcyServer::page("[playlist]\nnumberofentries=0\nVersion=2\n\n");
    using enum IcyServer::Fault;
    const QString stream = server.url(), loop = u"Loop"_s, plain = u"./%STATION%.mp3"_s;
    const QString unable = u"Unable to open"_s;
    const struct
    {
        QString address;
        IcyServer::Fault fault;
        QString station, saveTemplate; // single-song mode when the template names the song
        QString status;                // the beginning of lbStream; alternatives split by '|'
        bool recording;                // still recording after the status
    } rows[] = {
        {refused, None, loop, plain, FrmTC::TextNoConnection, true},
        {u"http://nosuchstation.invalid:8000/live"_s, None, loop, plain, FrmTC::TextNoConnection, true},
        {u"stationwithoutpath"_s, None, loop, plain, u"Invalid stream address: "_s, true},
        {server.url(u"/list.pls"_s), None, loop, plain, u"Loopback FM"_s, true},
        {server.url(u"/empty.pls"_s), None, loop, plain, FrmTC::TextNoPlaylistStream, false},
        {server.url(u"/missing.pls"_s), None, loop, plain, u"PLS error: 0: An Error Has Occurred."_s, false},
        // Hung up before or after the request went out, as the timing falls.
        {stream, CloseAtOnce, loop, plain, FrmTC::TextClosedByStation + u'|' + FrmTC::TextNotAccepting, true},
        {stream, EndlessHeader, loop, plain, u"Connected, waiting for the station's answer..."_s, true},
        {stream, None, loop, u"/proc/no/such/folder/%STATION%.mp3"_s, unable, true},
        {stream, None, u"AC/DC Radio"_s, u"./%STATION% %SONG%.mp3"_s, unable, true},
    };
    openFor(plain, false);
    for (const auto &row : rows) {
        SCOPED_TRACE(row.address.toStdString() + ' ' + row.saveTemplate.toStdString());
        QDir(recordings()).removeRecursively();
        server.fault = row.fault;
        edit("txtStream")->setText(row.address);
        edit("txtSave")->setText(row.saveTemplate);
        label("LblStation")->setText(row.station);
        child<QCheckBox>("chkSingleSong")->setChecked(row.saveTemplate.contains(u"%SONG%"_s));
        button("cmdRecord")->click();
        const QStringList statuses = row.status.split(u'|');
        EXPECT_TRUE(waitUntil(
            [&] {
                return std::any_of(statuses.begin(), statuses.end(),
                                   [&](const QString &s) { return text("lbStream").startsWith(s); });
            },
            Wait))
            << text("lbStream").toStdString();
        EXPECT_EQ(window->Recording(), row.recording);
        if (row.fault == EndlessHeader) {
            EXPECT_TRUE(
                waitUntil([&] { return text("lbBuffer_Peak").section(u' ', 0, 0).toInt() > 20000; }, Wait));
        }
        if (window->Recording())
            button("cmdRecord")->click();
        EXPECT_EQ(button("cmdRecord")->text(), FrmTC::CaptionRecord);
        EXPECT_TRUE(edit("txtStream")->isEnabled());
        if (row.fault != None) {
            EXPECT_EQ(recorded(u"Loop.mp3"_s), QByteArray()) << "only audio goes to the file";
        }
    }
}

TEST_F(RecorderWindow, StopDuringTheConnectWaitEndsTheAttempt)
{
    // A listener whose one-place queue is taken: the next connect hangs.
    QTcpServer stalled;
    stalled.setListenBacklogSize(0);
    ASSERT_TRUE(IcyServer::ListenOnLowPort(stalled));
    stalled.pauseAccepting();
    QTcpSocket filler;
    filler.connectToHost(QHostAddress::LocalHost, stalled.serverPort());
    ASSERT_TRUE(filler.waitForConnected(Wait));

    openFor(u"./%STATION%.mp3"_s, true);
    edit("txtStream")->setText(u"127.0.0.1:"_s + QString::number(stalled.serverPort()) + u'/');
    bool stoppedDuringWait = false;
    QTimer::singleShot(200, window, [&] {
        stoppedDuringWait = window->Recording();
        button("cmdRecord")->click();
    });
    button("cmdRecord")->click();
    EXPECT_TRUE(stoppedDuringWait);
    EXPECT_FALSE(window->Recording());
    EXPECT_EQ(child<QTcpSocket>("WS")->state(), QAbstractSocket::UnconnectedState);
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
    } rows[] = {
        {u" -b 1 -xs"_s, {2, 6, 1}, {12}, 0, true}, {u" -b 1 -xh"_s, {2, 6, 1}, {}, 1, false},
        {u" -b 1 -xh"_s, {2, 4, 0}, {}, 0, false},  {u" -b 1"_s, {2, 6, 1}, {}, 0, true},
        {u" -t 1"_s, {2, 6, 1}, {}, 0, true},
    };
    server.songs = {{"Long song", 400}};
    const QString file = recordings() + u"Loop Station.mp3"_s;
    for (const auto &row : rows) {
        SCOPED_TRACE(row.switches.toStdString());
        const bool minutes = row.switches.startsWith(u" -t"_s);
        const qint64 limit = minutes ? Minute : Megabyte;
        TempProfile::writeFile(file, "left from last time");
        power = FakePowerControl();
        power.version = row.version;
        qint64 sizeAtRequest = -1;
        power.onRequest = [&] { sizeAtRequest = window->Recording() ? -2 : QFileInfo(file).size(); };
        state.LaunchMode = true;
        state.CommandArg =
            u"-a "_s + server.url() + u" -w Loop Station -s ./%STATION%.mp3 -m -v"_s + row.switches;
        open();
        EXPECT_FALSE(button("cmdStations")->isEnabled());
        EXPECT_TRUE(child<QRadioButton>(minutes ? "optBreak0" : "optBreak1")->isChecked());
        EXPECT_TRUE(child<QGroupBox>("monitorPanel")->isVisibleTo(window));
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
        EXPECT_EQ(bytes.left(limit), continuousFile(server.sent(client), server.metaInt, limit).left(limit));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_EQ(window.isNull(), row.closes);
        delete window.data();
    }
}

TEST_F(RecorderWindow, ControlsKeepTheirRules)
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
    button("cmdMonitor")->click();
    EXPECT_GT(window->height(), height);
    EXPECT_TRUE(update->isActive());
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
