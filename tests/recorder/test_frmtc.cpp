#include "recorder/frmtc.h"

#include "app/apppaths.h"
#include "app/appstate.h"
#include "eventwait.h"
#include "fakepowercontrol.h"
#include "recorder/recorderstats.h"
#include "support/icyserver.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
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

namespace {

constexpr int Wait = 15000;
const QByteArray Request = "GET /stream HTTP/1.0\r\nHost: 127.0.0.1\r\nUser-Agent: WinampMPEG/2.7\r\n"
                           "Accept: */*\r\nIcy-MetaData: 1\r\nConnection: Close\r\n\r\n";

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
    FrmTC *openFor(const QString &saveTemplate, bool singleSong,
                   const QString &path = QStringLiteral("/stream"))
    {
        open();
        edit("txtStream")->setText(server.url(path));
        edit("txtSave")->setText(saveTemplate);
        label("LblStation")->setText(QStringLiteral("Loop"));
        child<QCheckBox>("chkSingleSong")->setChecked(singleSong);
        button("cmdMonitor")->click();
        window->show();
        return window;
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

    bool waitForText(const char *name, const QString &expected) const
    {
        return waitUntil([&] { return text(name) == expected; }, Wait);
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
    openFor(QStringLiteral("./%STATION%_%SONG%.mp3"), true);
    button("cmdRecord")->click();
    EXPECT_EQ(button("cmdRecord")->text(), FrmTC::CaptionStop);
    EXPECT_FALSE(edit("txtStream")->isEnabled());
    EXPECT_FALSE(button("btSave")->isEnabled());

    ASSERT_TRUE(waitForText("lbSong", QStringLiteral("Gamma")));
    EXPECT_EQ(server.sent(0).request, Request);
    EXPECT_EQ(text("lbStream"), QStringLiteral("Loopback FM"));
    EXPECT_EQ(text("lbGenre"), QStringLiteral("Test"));
    EXPECT_TRUE(text("lnkStation").contains(QStringLiteral("http://station.example/")));
    EXPECT_TRUE(label("lbSync")->isVisibleTo(window));
    EXPECT_FALSE(label("lbInvalid")->isVisibleTo(window));
    auto *meta = child<QPlainTextEdit>("txtMeta");
    EXPECT_TRUE(waitUntil(
        [&] { return meta->toPlainText().startsWith(QStringLiteral("StreamTitle='Gamma';")); }, Wait));
    button("btShow")->click();
    EXPECT_TRUE(meta->toPlainText().contains(QStringLiteral("icy-metaint:8000")));

    const qint64 consumed = stopAfter(8 * server.metaInt);
    EXPECT_EQ(button("cmdRecord")->text(), FrmTC::CaptionRecord);
    EXPECT_TRUE(edit("txtStream")->isEnabled());
    EXPECT_TRUE(text("lbSong").isEmpty());
    EXPECT_EQ(text("lbStream"), QStringLiteral("Loopback FM"));
    EXPECT_TRUE(waitForText("lbStore", RecorderStats::StoredSizeText(double(consumed))));
    EXPECT_EQ(text("lbTime"), RecorderStats::MakeTime(*RecorderStats::ElapsedSeconds(double(consumed), 128)));
    EXPECT_EQ(text("lbBitrate"), QStringLiteral("128 kbit/s"));

    const QStringList names{QStringLiteral("Loop_Alpha.mp3"), QStringLiteral("Loop_Beta - Two.mp3"),
                            QStringLiteral("Loop_Gamma.mp3")};
    EXPECT_EQ(recordedNames(), names);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(recorded(names[i]), server.songFile(0, i, consumed)) << names[i].toStdString();
}

TEST_F(RecorderWindow, ContinuousModeWritesOneFileNamedByTheDefaultTemplate)
{
    server.songs = {{"One", 2}, {"Two", 60}};
    server.repeatTitles = true;
    openFor(QStringLiteral(".\\%STATION%_%DATE%_%TIME%.mp3"), false);
    button("cmdRecord")->click();
    QSignalSpy unloaded(window.data(), &FrmTC::unloaded);
    // Closing the window stops the recording: all of it sat in the write
    // cache until then.
    const qint64 consumed = stopAfter(4 * server.metaInt, true);
    EXPECT_EQ(unloaded.size(), 1);

    EXPECT_EQ(recordedNames(), QStringList{QStringLiteral("Loop_2024-05-06_07-08.mp3")});
    EXPECT_EQ(recorded(QStringLiteral("Loop_2024-05-06_07-08.mp3")),
              continuousFile(server.sent(0), server.metaInt, consumed));
}

TEST_F(RecorderWindow, StationWithoutTitlesSwitchesToOneFile)
{
    server.songs = {{"", 60}};
    openFor(QStringLiteral("./%STATION% %SONG%.mp3"), true);
    button("cmdRecord")->click();
    stopAfter(2 * server.metaInt);
    EXPECT_FALSE(child<QCheckBox>("chkSingleSong")->isChecked());
    EXPECT_EQ(recordedNames(), QStringList{QStringLiteral("Loop .mp3")});
}

TEST_F(RecorderWindow, FailedConnectionsAreShownAndStopCleansUp)
{
    QTcpServer closed;
    ASSERT_TRUE(IcyServer::ListenOnLowPort(closed));
    const QString refused = QStringLiteral("127.0.0.1:") + QString::number(closed.serverPort()) + u'/';
    closed.close();
    const struct
    {
        QString address;
        QString status;
    } rows[] = {
        {refused, FrmTC::TextNoConnection},
        {QStringLiteral("http://nosuchstation.invalid:8000/live"), FrmTC::TextNoConnection},
        {QStringLiteral("stationwithoutpath"), QStringLiteral("Invalid stream address: ")},
    };
    openFor(QStringLiteral("./%STATION%.mp3"), true);
    for (const auto &row : rows) {
        edit("txtStream")->setText(row.address);
        button("cmdRecord")->click();
        EXPECT_TRUE(waitUntil([&] { return text("lbStream").startsWith(row.status); }, Wait))
            << row.address.toStdString() << " shows " << text("lbStream").toStdString();
        EXPECT_EQ(button("cmdRecord")->text(), FrmTC::CaptionStop);
        button("cmdRecord")->click();
        EXPECT_EQ(button("cmdRecord")->text(), FrmTC::CaptionRecord);
        EXPECT_TRUE(edit("txtStream")->isEnabled());
    }
}

TEST_F(RecorderWindow, MisbehavingStationsWriteNothingAndSayWhy)
{
    const struct
    {
        IcyServer::Fault fault;
        QString status;
    } rows[] = {
        // Hung up before or after the request went out, as the timing falls.
        {IcyServer::Fault::CloseAtOnce, FrmTC::TextClosedByStation + u'|' + FrmTC::TextNotAccepting},
        {IcyServer::Fault::EndlessHeader, QStringLiteral("Connected, waiting for the station's answer...")},
        {IcyServer::Fault::Garbage, QStringLiteral("Connected, waiting for the station's answer...")},
    };
    server.songs = {{"Never", 100}};
    openFor(QStringLiteral("./%STATION%.mp3"), false);
    for (const auto &row : rows) {
        server.fault = row.fault;
        button("cmdRecord")->click();
        EXPECT_TRUE(waitUntil([&] { return row.status.split(u'|').contains(text("lbStream")); }, Wait))
            << text("lbStream").toStdString();
        if (row.fault != IcyServer::Fault::CloseAtOnce) {
            EXPECT_TRUE(
                waitUntil([&] { return text("lbBuffer_Peak").section(u' ', 0, 0).toInt() > 20000; }, Wait));
        }
        button("cmdRecord")->click();
        EXPECT_EQ(recorded(QStringLiteral("Loop.mp3")), QByteArray());
        QFile::remove(recordings() + QStringLiteral("Loop.mp3"));
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

    openFor(QStringLiteral("./%STATION%.mp3"), true);
    edit("txtStream")->setText(QStringLiteral("127.0.0.1:") + QString::number(stalled.serverPort()) + u'/');
    bool stoppedDuringWait = false;
    QTimer::singleShot(200, window, [&] {
        stoppedDuringWait = window->Recording();
        button("cmdRecord")->click();
    });
    button("cmdRecord")->click();
    EXPECT_TRUE(stoppedDuringWait);
    EXPECT_FALSE(window->Recording());
    EXPECT_EQ(button("cmdRecord")->text(), FrmTC::CaptionRecord);
    EXPECT_EQ(child<QTcpSocket>("WS")->state(), QAbstractSocket::UnconnectedState);
}

TEST_F(RecorderWindow, OverwriteQuestionDecidesWhetherToRecord)
{
    server.songs = {{"Only", 60}};
    TempProfile::writeFile(recordings() + QStringLiteral("Loop.mp3"), "old");
    openFor(QStringLiteral("./%STATION%.mp3"), false);

    prompt.answers = {false};
    button("cmdRecord")->click();
    EXPECT_EQ(prompt.texts(), QStringList{FrmTC::OverwriteQuestion});
    EXPECT_EQ(prompt.shown[0].title, AppState::AppTitle);
    EXPECT_EQ(button("cmdRecord")->text(), FrmTC::CaptionStop);
    button("cmdRecord")->click();
    EXPECT_EQ(server.clientCount(), 0);
    EXPECT_EQ(recorded(QStringLiteral("Loop.mp3")), QByteArray("old"));

    prompt.answers = {true};
    button("cmdRecord")->click();
    const qint64 consumed = stopAfter(2 * server.metaInt);
    EXPECT_EQ(recorded(QStringLiteral("Loop.mp3")), continuousFile(server.sent(0), server.metaInt, consumed));
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
        {QStringLiteral(" -b 1 -xs"), {2, 6, 1}, {12}, 0, true},
        {QStringLiteral(" -b 1 -xh"), {2, 6, 1}, {}, 1, false},
        {QStringLiteral(" -b 1 -xh"), {2, 4, 0}, {}, 0, false},
        {QStringLiteral(" -b 1"), {2, 6, 1}, {}, 0, true},
        {QStringLiteral(" -t 1"), {2, 6, 1}, {}, 0, true},
    };
    server.songs = {{"Long song", 400}};
    const QString file = recordings() + QStringLiteral("Loop Station.mp3");
    for (const auto &row : rows) {
        SCOPED_TRACE(row.switches.toStdString());
        const bool minutes = row.switches.startsWith(QStringLiteral(" -t"));
        const qint64 limit = minutes ? Minute : Megabyte;
        TempProfile::writeFile(file, "left from last time");
        power = FakePowerControl();
        power.version = row.version;
        qint64 sizeAtRequest = -1;
        power.onRequest = [&] { sizeAtRequest = window->Recording() ? -2 : QFileInfo(file).size(); };
        state.LaunchMode = true;
        state.CommandArg = QStringLiteral("-a ") + server.url() +
                           QStringLiteral(" -w Loop Station -s ./%STATION%.mp3 -m -v") + row.switches;
        open();
        EXPECT_FALSE(button("cmdStations")->isEnabled());
        EXPECT_EQ(edit("txtStream")->text(), server.url());
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

TEST_F(RecorderWindow, PlaylistAddressesAreResolvedFirst)
{
    server.songs = {{"Listed", 40}};
    server.pages["/list.pls"] = "[playlist]\nnumberofentries=1\nFile1=" + server.url().toLatin1() +
                                "\nTitle1=(#1 - 1/10) Loop\nLength1=-1\nVersion=2\n";
    server.pages["/empty.pls"] = "[playlist]\nnumberofentries=0\nVersion=2\n\n";
    const struct
    {
        QString path;
        QString status;
        bool recording;
    } rows[] = {
        {QStringLiteral("/list.pls"), QStringLiteral("Loopback FM"), true},
        {QStringLiteral("/empty.pls"), FrmTC::TextNoPlaylistStream, false},
        {QStringLiteral("/missing.pls"), QStringLiteral("PLS error: 0: An Error Has Occurred."), false},
    };
    openFor(QStringLiteral("./%STATION%.mp3"), false);
    for (const auto &row : rows) {
        edit("txtStream")->setText(server.url(row.path));
        button("cmdRecord")->click();
        EXPECT_TRUE(waitForText("lbStream", row.status)) << text("lbStream").toStdString();
        EXPECT_EQ(window->Recording(), row.recording);
        if (window->Recording())
            button("cmdRecord")->click();
    }
}

TEST_F(RecorderWindow, BadOutputPathsAreReported)
{
    server.songs = {{"Song", 3}};
    const struct
    {
        QString station;
        QString saveTemplate;
        bool singleSong;
    } rows[] = {
        {QStringLiteral("Loop"), QStringLiteral("/proc/no/such/folder/%STATION%.mp3"), false},
        {QStringLiteral("AC/DC Radio"), QStringLiteral("./%STATION% %SONG%.mp3"), true},
    };
    for (const auto &row : rows) {
        openFor(row.saveTemplate, row.singleSong);
        label("LblStation")->setText(row.station);
        button("cmdRecord")->click();
        EXPECT_TRUE(
            waitUntil([&] { return text("lbStream").startsWith(QStringLiteral("Unable to open")); }, Wait))
            << text("lbStream").toStdString();
        button("cmdRecord")->click();
        delete window.data();
    }
}

TEST_F(RecorderWindow, ControlsKeepTheirRules)
{
    open();
    EXPECT_EQ(edit("txtSave")->text(), QStringLiteral(".\\%STATION%_%DATE%_%TIME%.mp3"));
    EXPECT_FALSE(button("cmdSchedule")->isEnabled());
    EXPECT_FALSE(button("cmdSchedule")->toolTip().isEmpty());
    for (const char *timer : {"tmrStats", "tmrUpdate", "tmrLaunch"})
        EXPECT_NE(window->findChild<QTimer *>(QLatin1StringView(timer)), nullptr) << timer;
    EXPECT_FALSE(window->findChild<QTimer *>(QStringLiteral("tmrLaunch"))->isActive());

    auto *hibernate = child<QCheckBox>("ChkHibernate");
    auto *shutDown = child<QCheckBox>("ChkShutDown");
    hibernate->click();
    shutDown->click();
    EXPECT_FALSE(hibernate->isChecked());
    hibernate->click();
    EXPECT_FALSE(shutDown->isChecked());

    EXPECT_EQ(button("btShow")->text(), FrmTC::CaptionShowHeader);
    button("btShow")->click();
    EXPECT_EQ(button("btShow")->text(), FrmTC::CaptionShowMetadata);

    window->show();
    const int height = window->height();
    button("cmdMonitor")->click();
    EXPECT_GT(window->height(), height);
    EXPECT_TRUE(window->findChild<QTimer *>(QStringLiteral("tmrUpdate"))->isActive());
    button("cmdMonitor")->click();
    EXPECT_EQ(window->height(), height);
    EXPECT_FALSE(window->findChild<QTimer *>(QStringLiteral("tmrUpdate"))->isActive());

    dialogAnswer = QStringLiteral("/music/chosen.mp3");
    button("btSave")->click();
    EXPECT_EQ(dialogShownWith, QStringLiteral(".\\%STATION%_%DATE%_%TIME%.mp3"));
    dialogAnswer.clear();
    button("btSave")->click();
    EXPECT_EQ(edit("txtSave")->text(), QStringLiteral("/music/chosen.mp3"));

    QSignalSpy stations(window.data(), &FrmTC::stationsRequested);
    button("cmdStations")->click();
    EXPECT_EQ(stations.size(), 1);
}

} // namespace
