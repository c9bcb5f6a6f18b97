// End to end: the recorder window against Debian's icecast2, fed by ezstream
// with MP3 files made here, all on 127.0.0.1.
#include "recorder/frmtc.h"

#include "app/apppaths.h"
#include "app/appstate.h"
#include "fakepowercontrol.h"
#include "support/eventwait.h"
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

#include <gtest/gtest.h>

#include <unistd.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// Artist and title of each song; stations send accented titles all day.
const QList<std::pair<QString, QString>> Songs{
    {u"Tester"_s, u"Song 1"_s}, {u"Beyonc\u00e9"_s, u"Caf\u00e9 Cr\u00e8me"_s}, {u"Tester"_s, u"Song 3"_s}};

QString tool(const QString &name)
{
    return QStandardPaths::findExecutable(name);
}

// Runs a helper's command line to its end; gives its exit code and output.
std::pair<int, QByteArray> run(const QString &command)
{
    QStringList arguments = QProcess::splitCommand(command);
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(tool(arguments.takeFirst()), arguments);
    const bool ended = process.waitForFinished(30000);
    return {ended ? process.exitCode() : -1, process.readAll()};
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
        if (tool(u"icecast2"_s).isEmpty() || tool(u"ezstream"_s).isEmpty())
            GTEST_SKIP() << "icecast2 or ezstream is not installed (make setup installs them)";
        // icecast drops root for nobody: it must reach the folder and write its logs.
        QFile::setPermissions(work.path(), QFile::permissions(work.path()) | QFileDevice::ExeOther |
                                               QFileDevice::ReadOther);
        QDir(work.path()).mkdir(u"log"_s);
        QFile::setPermissions(path("log"), QFileDevice::ReadOther | QFileDevice::WriteOther |
                                               QFileDevice::ExeOther | QFileDevice::ReadOwner |
                                               QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        QByteArray playlist;
        for (int i = 1; i <= 3; ++i) {
            const QString name = work.filePath(u"s%1"_s.arg(i));
            for (const QString &command :
                 {u"espeak-ng -w %1.wav \"This is song number %2 of the test stream.\""_s.arg(name).arg(i),
                  u"lame --quiet --resample 44.1 -b 128 --tt \"%2\" --ta \"%3\" %1.wav %1.mp3"_s.arg(
                      name, Songs[i - 1].second, Songs[i - 1].first)}) {
                const auto [code, output] = run(command);
                ASSERT_EQ(code, 0) << command.toStdString() << ": " << output.toStdString();
            }
            playlist += QFile::encodeName(name) + ".mp3\n";
        }
        TempProfile::writeFile(path("playlist.m3u"), playlist);
        QTcpServer probe;
        ASSERT_TRUE(probe.listen(QHostAddress::LocalHost, 0));
        port = probe.serverPort();
    }

    QString path(const char *name) const { return work.filePath(QLatin1StringView(name)); }

    // Starts a server with its configuration and waits until path answers as expected.
    void startServer(Server &server, const char *program, const char *config, const QString &xml,
                     const QByteArray &target, const QByteArray &answer)
    {
        TempProfile::writeFile(path(config), xml.toUtf8());
        // ezstream refuses a configuration that others can read.
        QFile::setPermissions(path(config), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        server.process->setProcessChannelMode(QProcess::MergedChannels);
        server.process->start(tool(QLatin1StringView(program)), {u"-c"_s, path(config)});
        ASSERT_TRUE(server.process->waitForStarted());
        ASSERT_TRUE(waitUntil([&] { return answers(target).startsWith(answer); }, 15000))
            << server.process->readAll().toStdString();
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
        const auto [code, output] =
            run(u"ffprobe -v error -show_entries format=duration -of csv=p=0 \"%1\""_s.arg(file));
        return code == 0 ? output.trimmed().toDouble() : -1;
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
    // No burst on connect: a burst would place titles by the time of sending, not by the audio.
    ASSERT_NO_FATAL_FAILURE(startServer(
        icecast, "icecast2", "icecast.xml",
        u"<icecast><limits><clients>10</clients><sources>2</sources><burst-size>0</burst-size></limits>"
        "<authentication><source-password>sourcepw</source-password><admin-user>admin</admin-user>"
        "<admin-password>adminpw</admin-password></authentication><hostname>127.0.0.1</hostname>"
        "<listen-socket><port>%1</port><bind-address>127.0.0.1</bind-address></listen-socket>"
        "<paths><basedir>%2</basedir><logdir>%2/log</logdir><webroot>/usr/share/icecast2/web</webroot>"
        "<adminroot>/usr/share/icecast2/admin</adminroot></paths>"
        "<logging><errorlog>error.log</errorlog><loglevel>3</loglevel></logging>"
        "<security><chroot>0</chroot>%3</security></icecast>"_s.arg(port)
            .arg(work.path(), geteuid() == 0
                                  ? u"<changeowner><user>nobody</user><group>nogroup</group></changeowner>"_s
                                  : QString()),
        "/", "HTTP/1.0 "));
    ASSERT_NO_FATAL_FAILURE(startServer(
        ezstream, "ezstream", "ezstream.xml",
        u"<ezstream><servers><server><hostname>127.0.0.1</hostname><port>%1</port><password>sourcepw</"
        u"password>"
        "</server></servers><streams><stream><mountpoint>/stream</mountpoint><format>MP3</format>"
        "<stream_name>Icecast Test FM</stream_name><stream_genre>Speech</stream_genre>"
        "<stream_bitrate>128</stream_bitrate></stream></streams><intakes><intake><type>playlist</type>"
        "<filename>%2</filename></intake></intakes>"
        "<metadata><format_str>@a@ - @t@</format_str></metadata></ezstream>"_s.arg(port)
            .arg(path("playlist.m3u")),
        "/stream", "HTTP/1.0 200"));

    FrmTC window(state, power);
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    const auto label = [&](const char *name) { return window.findChild<QLabel *>(QLatin1StringView(name)); };
    window.findChild<QLineEdit *>(u"txtStream"_s)->setText(u"http://127.0.0.1:%1/stream"_s.arg(port));
    window.findChild<QLineEdit *>(u"txtSave"_s)->setText(u"./%STATION%_%SONG%.mp3"_s);
    label("LblStation")->setText(u"Ice"_s);
    window.findChild<QCheckBox *>(u"chkSingleSong"_s)->setChecked(true);
    auto *record = window.findChild<QPushButton *>(u"cmdRecord"_s);
    window.show();
    record->click();

    // Two title changes after the first title; stop while the buffer holds
    // audio only, so the last file ends on audio too.
    QStringList seen;
    const bool changedTwice = waitUntil(
        [&] {
            const QString title = label("lbSong")->text();
            if (!title.isEmpty() && (seen.isEmpty() || seen.last() != title))
                seen.append(title);
            if (seen.size() < 3 || window.Stream().ReceiveBufferLength() > window.Stream().MetaInterval())
                return false;
            record->click();
            return true;
        },
        40000);
    ASSERT_TRUE(changedTwice) << "titles seen: " << seen.join(u", "_s).toStdString();
    EXPECT_EQ(label("lbStream")->text(), u"Icecast Test FM"_s);
    EXPECT_EQ(label("lbGenre")->text(), u"Speech"_s);

    QStringList expected;
    for (const QString &title : seen) {
        EXPECT_TRUE(std::any_of(Songs.begin(), Songs.end(), [&](const auto &song) {
            return title == song.first + u" - "_s + song.second;
        })) << title.toStdString();
        expected.append(u"Ice_"_s + title + u".mp3"_s);
    }
    expected.sort();
    const QDir recordings(AppPaths::RecordingsFolder());
    EXPECT_EQ(recordings.entryList(QDir::Files, QDir::Name), expected);
    for (const QString &name : expected) {
        const auto [code, output] = run(u"mpg123 -t -q \"%1\""_s.arg(recordings.filePath(name)));
        EXPECT_EQ(code, 0) << name.toStdString() << ": " << output.toStdString();
        EXPECT_GT(duration(recordings.filePath(name)), 0.5) << name.toStdString();
    }
    // The middle song is whole: its own length (3.3 s) plus the interval it
    // shares with the song before, give or take the one-second intervals the
    // split falls on (titles sit on interval boundaries, so a song may lose up
    // to one interval at its start).
    const double middle = duration(recordings.filePath(u"Ice_"_s + seen[1] + u".mp3"_s));
    EXPECT_GT(middle, 2.5);
    EXPECT_LT(middle, 5.5);
}

} // namespace
