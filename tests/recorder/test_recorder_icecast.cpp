// End to end: the recorder window against Debian's icecast2, fed by ezstream
// with MP3 files made here, all on 127.0.0.1.
#include "recorder/frmtc.h"

#include "app/apppaths.h"
#include "app/appstate.h"
#include "eventwait.h"
#include "fakepowercontrol.h"
#include "support/icyserver.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <unistd.h>

#include <memory>

namespace {

const QStringList Titles{QStringLiteral("Tester - Song 1"), QStringLiteral("Tester - Song 2"),
                         QStringLiteral("Tester - Song 3")};

QString tool(const char *name)
{
    return QStandardPaths::findExecutable(QLatin1StringView(name));
}

// Runs a helper to its end; its output goes to the failure message.
void run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    ASSERT_TRUE(process.waitForFinished(30000)) << program.toStdString();
    ASSERT_EQ(process.exitCode(), 0) << program.toStdString() << ": " << process.readAll().toStdString();
}

// A server process of this test, stopped by its own process id.
struct Server
{
    std::unique_ptr<QProcess> process = std::make_unique<QProcess>();

    ~Server()
    {
        if (process->state() == QProcess::NotRunning)
            return;
        process->terminate();
        if (!process->waitForFinished(5000))
            process->kill();
        process->waitForFinished(5000);
    }
};

class RecorderAgainstIcecast : public ProfileTest
{
protected:
    void SetUp() override
    {
        if (tool("icecast2").isEmpty() || tool("ezstream").isEmpty())
            GTEST_SKIP() << "icecast2 or ezstream is not installed (make setup installs them)";
        // icecast drops root for nobody: it must reach the folder and write its logs.
        QFile::setPermissions(work.path(), QFile::permissions(work.path()) | QFileDevice::ExeOther |
                                               QFileDevice::ReadOther);
        QDir(work.path()).mkdir(QStringLiteral("log"));
        QFile::setPermissions(path("log"), QFileDevice::ReadOther | QFileDevice::WriteOther |
                                               QFileDevice::ExeOther | QFileDevice::ReadOwner |
                                               QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        makeSongs();
        QTcpServer probe;
        ASSERT_TRUE(IcyServer::ListenOnLowPort(probe));
        port = probe.serverPort();
        probe.close();
    }

    QString path(const char *name) const { return work.filePath(QLatin1StringView(name)); }

    void makeSongs()
    {
        QByteArray playlist;
        for (int i = 1; i <= 3; ++i) {
            const QString wav = work.filePath(QStringLiteral("s%1.wav").arg(i));
            const QString mp3 = work.filePath(QStringLiteral("s%1.mp3").arg(i));
            run(tool("espeak-ng"), {QStringLiteral("-w"), wav,
                                    QStringLiteral("This is song number %1 of the test stream.").arg(i)});
            run(tool("lame"), {QStringLiteral("--quiet"), QStringLiteral("--resample"),
                               QStringLiteral("44.1"), QStringLiteral("-b"), QStringLiteral("128"),
                               QStringLiteral("--tt"), QStringLiteral("Song %1").arg(i),
                               QStringLiteral("--ta"), QStringLiteral("Tester"), wav, mp3});
            playlist += QFile::encodeName(mp3) + '\n';
        }
        TempProfile::writeFile(path("playlist.m3u"), playlist);
    }

    void startIcecast()
    {
        const QByteArray owner =
            geteuid() == 0 ? "<changeowner><user>nobody</user><group>nogroup</group></changeowner>" : "";
        const QByteArray dir = QFile::encodeName(work.path());
        TempProfile::writeFile(
            path("icecast.xml"),
            "<icecast><limits><clients>10</clients><sources>2</sources><burst-size>0</burst-size></"
            "limits>"
            "<authentication><source-password>sourcepw</source-password><admin-user>admin</admin-user>"
            "<admin-password>adminpw</admin-password></authentication><hostname>127.0.0.1</hostname>"
            "<listen-socket><port>" +
                QByteArray::number(port) +
                "</port><bind-address>127.0.0.1</bind-address></listen-socket>"
                "<paths><basedir>" +
                dir + "</basedir><logdir>" + dir +
                "/log</logdir><webroot>/usr/share/icecast2/web</webroot>"
                "<adminroot>/usr/share/icecast2/admin</adminroot></paths>"
                "<logging><errorlog>error.log</errorlog><loglevel>3</loglevel></logging>"
                "<security><chroot>0</chroot>" +
                owner + "</security></icecast>");
        icecast.process->setProcessChannelMode(QProcess::MergedChannels);
        icecast.process->start(tool("icecast2"), {QStringLiteral("-c"), path("icecast.xml")});
        ASSERT_TRUE(icecast.process->waitForStarted());
        ASSERT_TRUE(waitUntil([&] { return answers("/").startsWith("HTTP/1.0 "); }, 10000))
            << icecast.process->readAll().toStdString();
    }

    void startEzstream()
    {
        TempProfile::writeFile(
            path("ezstream.xml"),
            "<ezstream><servers><server><hostname>127.0.0.1</hostname><port>" + QByteArray::number(port) +
                "</port><password>sourcepw</password></server></servers>"
                "<streams><stream><mountpoint>/stream</mountpoint><format>MP3</format>"
                "<stream_name>Icecast Test FM</stream_name><stream_genre>Speech</stream_genre>"
                "<stream_bitrate>128</stream_bitrate></stream></streams>"
                "<intakes><intake><type>playlist</type><filename>" +
                QFile::encodeName(path("playlist.m3u")) +
                "</filename></intake></intakes>"
                "<metadata><format_str>@a@ - @t@</format_str></metadata></ezstream>");
        // ezstream refuses a configuration that others can read.
        QFile::setPermissions(path("ezstream.xml"), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        ezstream.process->setProcessChannelMode(QProcess::MergedChannels);
        ezstream.process->start(tool("ezstream"), {QStringLiteral("-c"), path("ezstream.xml")});
        ASSERT_TRUE(ezstream.process->waitForStarted());
        ASSERT_TRUE(waitUntil([&] { return answers("/stream").startsWith("HTTP/1.0 200"); }, 15000))
            << ezstream.process->readAll().toStdString();
    }

    // The first bytes icecast answers to a plain request for the path.
    QByteArray answers(const QByteArray &target) const
    {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, port);
        if (!socket.waitForConnected(1000))
            return {};
        socket.write("GET " + target + " HTTP/1.0\r\n\r\n");
        socket.waitForReadyRead(2000);
        return socket.readAll();
    }

    static double duration(const QString &file)
    {
        QProcess probe;
        probe.start(tool("ffprobe"), {QStringLiteral("-v"), QStringLiteral("error"),
                                      QStringLiteral("-show_entries"), QStringLiteral("format=duration"),
                                      QStringLiteral("-of"), QStringLiteral("csv=p=0"), file});
        probe.waitForFinished(30000);
        return probe.exitCode() == 0 ? probe.readAllStandardOutput().trimmed().toDouble() : -1;
    }

    QTemporaryDir work;
    quint16 port = 0;
    Server icecast;
    Server ezstream;
    ScriptedPrompt prompt;
    AppState state{profile.installFolder(), prompt};
    FakePowerControl power;
};

TEST_F(RecorderAgainstIcecast, SingleSongRecordingSplitsAtEachTitleAndEveryFileDecodes)
{
    ASSERT_NO_FATAL_FAILURE(startIcecast());
    ASSERT_NO_FATAL_FAILURE(startEzstream());

    FrmTC window(state, power);
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.findChild<QLineEdit *>(QStringLiteral("txtStream"))
        ->setText(QStringLiteral("http://127.0.0.1:%1/stream").arg(port));
    window.findChild<QLineEdit *>(QStringLiteral("txtSave"))
        ->setText(QStringLiteral("./%STATION%_%SONG%.mp3"));
    window.findChild<QLabel *>(QStringLiteral("LblStation"))->setText(QStringLiteral("Ice"));
    window.findChild<QCheckBox *>(QStringLiteral("chkSingleSong"))->setChecked(true);
    auto *song = window.findChild<QLabel *>(QStringLiteral("lbSong"));
    auto *record = window.findChild<QPushButton *>(QStringLiteral("cmdRecord"));
    window.show();
    record->click();

    // Two title changes after the first title; stop while the buffer holds
    // audio only, so the last file ends on audio too.
    QStringList seen;
    const bool changedTwice = waitUntil(
        [&] {
            const QString title = song->text();
            if (!title.isEmpty() && (seen.isEmpty() || seen.last() != title))
                seen.append(title);
            if (seen.size() < 3 || window.Stream().ReceiveBufferLength() > window.Stream().MetaInterval())
                return false;
            record->click();
            return true;
        },
        40000);
    ASSERT_TRUE(changedTwice) << "titles seen: " << seen.join(QStringLiteral(", ")).toStdString();
    EXPECT_EQ(window.findChild<QLabel *>(QStringLiteral("lbStream"))->text(),
              QStringLiteral("Icecast Test FM"));
    EXPECT_EQ(window.findChild<QLabel *>(QStringLiteral("lbGenre"))->text(), QStringLiteral("Speech"));
    for (const QString &title : seen)
        EXPECT_TRUE(Titles.contains(title)) << title.toStdString();

    QStringList expected;
    for (const QString &title : seen)
        expected.append(QStringLiteral("Ice_") + title + QStringLiteral(".mp3"));
    expected.sort();
    const QDir recordings(AppPaths::RecordingsFolder());
    EXPECT_EQ(recordings.entryList(QDir::Files, QDir::Name), expected);

    for (const QString &name : expected) {
        const QString file = recordings.filePath(name);
        QProcess decode;
        decode.setProcessChannelMode(QProcess::MergedChannels);
        decode.start(tool("mpg123"), {QStringLiteral("-t"), QStringLiteral("-q"), file});
        ASSERT_TRUE(decode.waitForFinished(30000));
        EXPECT_EQ(decode.exitCode(), 0) << name.toStdString() << ": " << decode.readAll().toStdString();
        EXPECT_GT(duration(file), 0.5) << name.toStdString();
    }
    // The middle song is whole: its own length (3.3 s) plus the interval it
    // shares with the song before, give or take the one-second intervals that
    // the split falls on (the server places titles on interval boundaries, so
    // a song may lose up to one interval at its start). (No burst on connect: a burst would place titles by
    // the time of sending, not by the audio.)
    const double middle =
        duration(recordings.filePath(QStringLiteral("Ice_") + seen[1] + QStringLiteral(".mp3")));
    EXPECT_GT(middle, 2.5);
    EXPECT_LT(middle, 5.5);
}

} // namespace
