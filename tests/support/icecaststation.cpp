#include "support/icecaststation.h"

#include "support/eventwait.h"
#include "support/icyserver.h"
#include "support/tempprofile.h"

#include <QDir>
#include <QFile>
#include <QTcpSocket>

#include <unistd.h>

using namespace Qt::StringLiterals;

IcecastStation::IcecastStation() = default;
IcecastStation::~IcecastStation() = default;

IcecastStation::Server::~Server()
{
    if (process->state() == QProcess::NotRunning)
        return;
    process->terminate();
    if (!process->waitForFinished(5000))
        process->kill();
    process->waitForFinished(5000);
}

QString IcecastStation::missing()
{
    for (const char *name : {"icecast2", "ezstream", "espeak-ng", "lame"}) {
        if (tool(QLatin1StringView(name)).isEmpty())
            return QLatin1StringView(name) + u" is not installed (make setup installs it)"_s;
    }
    return {};
}

std::pair<int, QByteArray> IcecastStation::run(const QString &command)
{
    QStringList arguments = QProcess::splitCommand(command);
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(tool(arguments.takeFirst()), arguments);
    const bool ended = process.waitForFinished(30000);
    return {ended ? process.exitCode() : -1, process.readAll()};
}

QString IcecastStation::url(const QString &path) const
{
    return u"http://127.0.0.1:%1"_s.arg(m_port) + path;
}

QString IcecastStation::path(const char *name) const
{
    return m_work.filePath(QLatin1StringView(name));
}

QStringList IcecastStation::titles()
{
    QStringList titles;
    for (const auto &[artist, title] : songs)
        titles.append(artist + u" - "_s + title);
    return titles;
}

QString IcecastStation::makeSongs()
{
    // icecast drops root for nobody: it must reach the folder and write its logs.
    QFile::setPermissions(m_work.path(),
                          QFile::permissions(m_work.path()) | QFileDevice::ExeOther | QFileDevice::ReadOther);
    QDir(m_work.path()).mkdir(u"log"_s);
    QFile::setPermissions(path("log"), QFileDevice::Permissions(0x7007)); // rwx for the owner and others
    QByteArray playlist;
    for (int i = 1; i <= songs.size(); ++i) {
        const QString name = m_work.filePath(u"s%1"_s.arg(i));
        for (const QString &command :
             {u"espeak-ng -w %1.wav \"This is song number %2 of the test stream.\""_s.arg(name).arg(i),
              u"lame --quiet --resample 44.1 -b 128 --tt \"%2\" --ta \"%3\" %1.wav %1.mp3"_s.arg(
                  name, songs[i - 1].second, songs[i - 1].first)}) {
            const auto [code, output] = run(command);
            if (code != 0)
                return command + u": "_s + QString::fromLocal8Bit(output);
        }
        playlist += QFile::encodeName(name) + ".mp3\n";
    }
    TempProfile::writeFile(path("playlist.m3u"), playlist);
    return {};
}

QString IcecastStation::start(bool burst)
{
    if (!m_work.isValid())
        return u"no temporary folder"_s;
    if (const QString failed = makeSongs(); !failed.isEmpty())
        return failed;
    if (m_port = IcyServer::refusedPort(); m_port == 0)
        return u"no free port"_s;
    const QString icecast = startServer(
        m_icecast, "icecast2", "icecast.xml",
        u"<icecast><limits><clients>10</clients><sources>2</sources>%4</limits>"
        "<authentication><source-password>sourcepw</source-password><admin-user>admin</admin-user>"
        "<admin-password>adminpw</admin-password></authentication><hostname>127.0.0.1</hostname>"
        "<listen-socket><port>%1</port><bind-address>127.0.0.1</bind-address></listen-socket>"
        "<paths><basedir>%2</basedir><logdir>%2/log</logdir><webroot>/usr/share/icecast2/web</webroot>"
        "<adminroot>/usr/share/icecast2/admin</adminroot></paths>"
        "<logging><errorlog>error.log</errorlog><loglevel>3</loglevel></logging>"
        "<security><chroot>0</chroot>%3</security></icecast>"_s.arg(m_port)
            .arg(m_work.path(),
                 geteuid() == 0 ? u"<changeowner><user>nobody</user><group>nogroup</group></changeowner>"_s
                                : QString(),
                 burst ? QString() : u"<burst-size>0</burst-size>"_s),
        "/", "HTTP/1.0 ");
    if (!icecast.isEmpty())
        return icecast;
    return startServer(
        m_ezstream, "ezstream", "ezstream.xml",
        u"<ezstream><servers><server><hostname>127.0.0.1</hostname><port>%1</port><password>sourcepw</"
        u"password>"
        "</server></servers><streams><stream><mountpoint>/stream</mountpoint><format>MP3</format>"
        "<stream_name>Icecast Test FM</stream_name><stream_genre>Speech</stream_genre>"
        "<stream_bitrate>128</stream_bitrate></stream></streams><intakes><intake><type>playlist</type>"
        "<filename>%2</filename></intake></intakes>"
        "<metadata><format_str>@a@ - @t@</format_str></metadata></ezstream>"_s.arg(m_port)
            .arg(path("playlist.m3u")),
        "/stream", "HTTP/1.0 200");
}

QString IcecastStation::startServer(Server &server, const char *program, const char *config,
                                    const QString &xml, const QByteArray &target, const QByteArray &answer)
{
    TempProfile::writeFile(path(config), xml.toUtf8());
    // ezstream refuses a configuration that others can read.
    QFile::setPermissions(path(config), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    server.process->setProcessChannelMode(QProcess::MergedChannels);
    server.process->start(tool(QLatin1StringView(program)), {u"-c"_s, path(config)});
    if (!server.process->waitForStarted())
        return QLatin1StringView(program) + u" did not start"_s;
    if (!waitUntil([&] { return answers(target).startsWith(answer); }, 15000))
        return QLatin1StringView(program) + u" did not answer: "_s +
               QString::fromLocal8Bit(server.process->readAll());
    return {};
}

QByteArray IcecastStation::answers(const QByteArray &target) const
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, m_port);
    if (!socket.waitForConnected(1000))
        return {};
    socket.write("GET " + target + " HTTP/1.0\r\n\r\n");
    socket.waitForReadyRead(2000);
    return socket.readAll();
}
