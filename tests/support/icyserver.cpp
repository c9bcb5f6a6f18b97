#include "support/icyserver.h"

#include <QElapsedTimer>
#include <QFile>
#include <QHostAddress>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>

#include <limits>

using namespace Qt::StringLiterals;

struct IcyServer::Client
{
    QTcpSocket *socket = nullptr;
    QByteArray received;
    bool streaming = false;
    bool endlessPage = false;
    QByteArray slowHeader; // what is still to go of a header sent at the stream's pace
    qint64 headerSent = 0;
    bool announced = false;
    QByteArray lastTitle;
    qint64 audioPos = 0;
    QElapsedTimer clock;
    Sent sent;
};

namespace {

const QByteArray header = "ICY 200 OK\r\nicy-notice1:scripted test station\r\nicy-name:Loopback FM\r\n"
                          "icy-genre:Test\r\nicy-url:http://station.example/\r\n"
                          "icy-pub:1\r\n";

// A header line repeated for ever never makes the empty line that ends a header.
const QByteArray endlessLine = "icy-notice1:still going\r\n";

// What a flood writes per turn of the loop, and how much may wait unsent.
constexpr qint64 floodPiece = 512 * 1024;
constexpr qint64 floodBacklog = 2 * 1024 * 1024;

// Varied enough that a misplaced copy shows, cheap enough for long runs.
char audioByte(qint64 position)
{
    return char((quint64(position) * 2654435761u) >> 13);
}

QByteArray tlsFile(const QString &name)
{
    return IcyServer::dataFile(u"../tests/support/tls/"_s + name);
}

} // namespace

IcyServer::IcyServer(QObject *parent) : QObject(parent), m_server(new QTcpServer(this))
{
    connect(&m_timer, &QTimer::timeout, this, [this] {
        for (auto &client : m_clients) {
            if (client->streaming && client->socket && !client->sent.finished)
                pump(*client);
        }
    });
}

IcyServer::~IcyServer() = default;

bool IcyServer::startTls(const QString &certificate)
{
    auto *server = new QSslServer(this);
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setLocalCertificate(QSslCertificate(tlsFile(certificate + u".pem"_s)));
    tls.setPrivateKey(QSslKey(tlsFile(u"server.key"_s), QSsl::Ec));
    server->setSslConfiguration(tls);
    delete m_server;
    m_server = server;
    m_tls = true;
    return !tls.localCertificate().isNull() && !tls.privateKey().isNull() && start();
}

quint16 IcyServer::refusedPort()
{
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost, 0) ? probe.serverPort() : 0;
}

QByteArray IcyServer::dataFile(const QString &name)
{
    QFile file(qEnvironmentVariable("TUNECATCH_SOURCE_DIR") + u"/data/"_s + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void IcyServer::trustTestAuthority()
{
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.addCaCertificate(QSslCertificate(tlsFile(u"ca.pem"_s)));
    QSslConfiguration::setDefaultConfiguration(tls);
}

bool IcyServer::start()
{
    connect(m_server, &QTcpServer::pendingConnectionAvailable, this, &IcyServer::onNewConnection);
    if (!m_server->listen(QHostAddress::LocalHost, 0))
        return false;
    // A paced stream needs a steady tick; an unpaced one a fast one.
    m_timer.start(bytesPerSecond > 0 ? 20 : 1);
    return true;
}

QString IcyServer::url(const QString &path) const
{
    return (m_tls ? u"https://localhost:"_s : u"http://127.0.0.1:"_s) + QString::number(port()) + path;
}

QByteArray IcyServer::page(const QByteArray &body)
{
    return "HTTP/1.0 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

QByteArray IcyServer::redirect(const QString &location)
{
    return "HTTP/1.0 302 Found\r\nLocation: " + location.toLatin1() + "\r\nContent-Length: 0\r\n\r\n";
}

QByteArray IcyServer::metadataBlock(const QByteArray &text)
{
    const qsizetype units = (text.size() + 15) / 16;
    return char(units) + text.leftJustified(units * 16, '\0');
}

const IcyServer::Sent &IcyServer::sent(int client) const
{
    return m_clients.at(size_t(client))->sent;
}

QByteArray IcyServer::songFile(int client, int index, qint64 consumed) const
{
    const Sent &s = sent(client);
    const qint64 start = qMax<qint64>(0, s.marks.at(index).offset - metaInt);
    const qint64 end = index + 1 < s.marks.size() ? s.marks.at(index + 1).offset : consumed;
    return s.audio.mid(start, qMin(end, consumed) - start);
}

void IcyServer::onNewConnection()
{
    while (QTcpSocket *socket = m_server->nextPendingConnection()) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        if (fault == Fault::CloseAtOnce) {
            socket->close();
            continue;
        }
        // Every write its own segment: Nagle's algorithm would merge the
        // pieces that let a reader keep up.
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        Client &c = *m_clients.emplace_back(std::make_unique<Client>());
        c.socket = socket;
        connect(socket, &QTcpSocket::readyRead, this, [this, &c] { onReadyRead(c); });
        connect(socket, &QTcpSocket::disconnected, this, [&c] { c.socket = nullptr; });
        if (socket->bytesAvailable() > 0)
            onReadyRead(c);
    }
}

void IcyServer::onReadyRead(Client &client)
{
    if (client.streaming || !client.socket)
        return;
    client.received += client.socket->readAll();
    const qsizetype end = client.received.indexOf("\r\n\r\n");
    if (end < 0)
        return;
    client.received.truncate(end + 4);
    if (keepSent)
        client.sent.request = client.received;
    const QByteArray path = client.received.split(' ').value(1);
    if (silentPages.contains(path))
        return;
    if (endlessPages.contains(path)) {
        client.socket->write("HTTP/1.0 200 OK\r\nContent-Type: audio/x-scpls\r\n\r\n[playlist]\n");
        client.endlessPage = true;
        client.streaming = true;
        return;
    }
    if (pages.contains(path) || path.endsWith(".pls")) {
        client.socket->write(pages.value(path, "HTTP/1.0 404 Not Found\r\nContent-Length: 0\r\n\r\n"));
        client.socket->disconnectFromHost();
        return;
    }
    if (fault == Fault::EndlessHeader) {
        client.socket->write("ICY 200 OK\r\n");
    } else {
        const QByteArray value =
            announcedInterval.isEmpty() ? QByteArray::number(metaInt) : announcedInterval;
        const QByteArray interval = announceInterval ? "icy-metaint:" + value + "\r\n" : QByteArray();
        const QByteArray bitrate = announceBitrate ? "icy-br:128\r\n" : QByteArray();
        const QByteArray answer =
            header + bitrate + "content-type:" + contentType + "\r\n" + interval + "\r\n";
        if (fault == Fault::SlowHeader)
            client.slowHeader = answer;
        else
            client.socket->write(answer);
    }
    client.streaming = true;
    client.clock.start();
}

void IcyServer::pump(Client &client)
{
    if (client.endlessPage) {
        if (client.socket->bytesToWrite() < floodBacklog)
            client.socket->write(QByteArray("File1=http://endless.example/\n").repeated(2000));
        return;
    }
    if (!client.slowHeader.isEmpty()) {
        const qint64 due = bytesPerSecond * client.clock.elapsed() / 1000 - client.headerSent;
        if (due > 0) {
            client.socket->write(client.slowHeader.first(qMin(due, client.slowHeader.size())));
            client.slowHeader.remove(0, qMin(due, client.slowHeader.size()));
            client.headerSent += due;
        }
        return;
    }
    // Unpaced writes stop at each metadata block, so the reader's buffer
    // empties whenever it keeps up.
    qint64 due = qMin<qint64>(2000, metaInt - client.audioPos % metaInt);
    if (flood)
        due = client.socket->bytesToWrite() < floodBacklog ? floodPiece : 0;
    else if (bytesPerSecond > 0)
        due = bytesPerSecond * client.clock.elapsed() / 1000 - client.headerSent - client.audioPos;
    if (due <= 0)
        return;
    if (fault == Fault::None) {
        sendAudio(client, due);
        return;
    }
    client.socket->write(endlessLine.repeated(qMax<qint64>(1, due / endlessLine.size())));
    client.audioPos += due;
}

void IcyServer::sendAudio(Client &client, qint64 count)
{
    const int stopAt = dropAfter > 0 ? dropAfter : stallAfter;
    qint64 end = repeat ? std::numeric_limits<qint64>::max() : scriptIntervals() * metaInt;
    if (stopAt > 0)
        end = qMin(end, qint64(stopAt) * metaInt);
    count = qMin(count, end - client.audioPos);
    QByteArray wire;
    wire.reserve(count + count / metaInt * 64 + 64);
    const qint64 begin = client.audioPos;
    while (count > 0) {
        const qint64 n = announceInterval ? qMin(count, metaInt - client.audioPos % metaInt) : count;
        for (qint64 i = 0; i < n; ++i)
            wire += audioAt(client.audioPos + i);
        client.audioPos += n;
        count -= n;
        if (!announceInterval || client.audioPos % metaInt != 0)
            continue;
        const QByteArray title = titleAfterInterval(client.audioPos / metaInt - 1);
        const bool changed = titles && (!client.announced || title != client.lastTitle);
        if (changed && keepSent)
            client.sent.marks.append({client.audioPos, title});
        wire += changed || (titles && repeatTitles) ? metadataBlock("StreamTitle='" + title + "';")
                                                    : QByteArray(1, '\0');
        client.announced = true;
        client.lastTitle = title;
    }
    if (keepSent) {
        for (qint64 p = begin; p < client.audioPos; ++p)
            client.sent.audio += audioAt(p);
    }
    client.socket->write(wire);
    client.sent.finished = client.audioPos >= end;
    if (client.sent.finished && dropAfter > 0)
        client.socket->disconnectFromHost();
}

char IcyServer::audioAt(qint64 position) const
{
    return audio.isEmpty() ? audioByte(position) : audio[position % audio.size()];
}

QByteArray IcyServer::titleAfterInterval(qint64 interval) const
{
    // A block announces what the next interval plays; the last interval of a
    // script that does not repeat keeps the last title.
    const qint64 total = scriptIntervals();
    qint64 next = repeat ? (interval + 1) % total : qMin(interval + 1, total - 1);
    for (const Song &song : songs) {
        if (next < song.intervals)
            return song.title;
        next -= song.intervals;
    }
    return {};
}

qint64 IcyServer::scriptIntervals() const
{
    qint64 total = 0;
    for (const Song &song : songs)
        total += song.intervals;
    return total;
}
