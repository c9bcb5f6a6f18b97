#include "support/icyserver.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

struct IcyServer::Client
{
    QTcpSocket *socket = nullptr;
    QByteArray received;
    bool streaming = false;
    bool announced = false;
    QByteArray lastTitle;
    qint64 audioPos = 0;
    QElapsedTimer clock;
    Sent sent;
};

namespace {

const QByteArray Header = "ICY 200 OK\r\nicy-notice1:scripted test station\r\nicy-name:Loopback FM\r\n"
                          "icy-genre:Test\r\nicy-url:http://station.example/\r\ncontent-type:audio/mpeg\r\n"
                          "icy-pub:1\r\nicy-br:128\r\nicy-metaint:";

// A header line repeated for ever never makes the empty line that ends a header.
const QByteArray EndlessLine = "icy-notice1:still going\r\n";

// Varied enough that a misplaced copy shows, cheap enough for long runs.
char audioByte(qint64 position)
{
    return char((quint64(position) * 2654435761u) >> 13);
}

} // namespace

IcyServer::IcyServer(QObject *parent) : QObject(parent), m_server(new QTcpServer(this))
{
    connect(m_server, &QTcpServer::newConnection, this, &IcyServer::onNewConnection);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        for (auto &client : m_clients) {
            if (client->streaming && client->socket && !client->sent.finished)
                pump(*client);
        }
    });
}

IcyServer::~IcyServer() = default;

bool IcyServer::start()
{
    if (!ListenOnLowPort(*m_server))
        return false;
    // A paced stream needs a steady tick; an unpaced one a fast one.
    m_timer.start(bytesPerSecond > 0 ? 20 : 1);
    return true;
}

bool IcyServer::ListenOnLowPort(QTcpServer &server)
{
    const int first = QRandomGenerator::global()->bounded(12768);
    for (int i = 0; i < 200; ++i) {
        if (server.listen(QHostAddress::LocalHost, quint16(20000 + (first + i * 61) % 12768)))
            return true;
    }
    return false;
}

quint16 IcyServer::port() const
{
    return m_server->serverPort();
}

QString IcyServer::url(const QString &path) const
{
    return u"http://127.0.0.1:"_s + QString::number(port()) + path;
}

QByteArray IcyServer::page(const QByteArray &body)
{
    return "HTTP/1.0 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
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
    if (pages.contains(path) || path.endsWith(".pls")) {
        client.socket->write(pages.value(path, "HTTP/1.0 404 Not Found\r\nContent-Length: 0\r\n\r\n"));
        client.socket->disconnectFromHost();
        return;
    }
    if (fault == Fault::EndlessHeader)
        client.socket->write("ICY 200 OK\r\n");
    else if (fault == Fault::None)
        client.socket->write(Header + QByteArray::number(metaInt) + "\r\n\r\n");
    client.streaming = true;
    client.clock.start();
}

void IcyServer::pump(Client &client)
{
    // Unpaced writes stop at each metadata block, so the reader's buffer
    // empties whenever it keeps up.
    qint64 due = qMin<qint64>(2000, metaInt - client.audioPos % metaInt);
    if (bytesPerSecond > 0)
        due = bytesPerSecond * client.clock.elapsed() / 1000 - client.audioPos;
    if (due <= 0)
        return;
    if (fault == Fault::None) {
        sendAudio(client, due);
        return;
    }
    client.socket->write(EndlessLine.repeated(qMax<qint64>(1, due / EndlessLine.size())));
    client.audioPos += due;
}

void IcyServer::sendAudio(Client &client, qint64 count)
{
    const qint64 total = scriptIntervals() * metaInt;
    if (!repeat)
        count = qMin(count, total - client.audioPos);
    QByteArray wire;
    wire.reserve(count + 64);
    const qint64 begin = client.audioPos;
    while (count > 0) {
        const qint64 n = qMin(count, metaInt - client.audioPos % metaInt);
        for (qint64 i = 0; i < n; ++i)
            wire += audioByte(client.audioPos + i);
        client.audioPos += n;
        count -= n;
        if (client.audioPos % metaInt != 0)
            continue;
        const QByteArray title = titleAfterInterval(client.audioPos / metaInt - 1);
        const bool changed = !client.announced || title != client.lastTitle;
        if (changed && keepSent)
            client.sent.marks.append({client.audioPos, title});
        wire += changed || repeatTitles ? metadataBlock("StreamTitle='" + title + "';") : QByteArray(1, '\0');
        client.announced = true;
        client.lastTitle = title;
    }
    if (keepSent) {
        for (qint64 p = begin; p < client.audioPos; ++p)
            client.sent.audio += audioByte(p);
    }
    client.socket->write(wire);
    client.sent.finished = !repeat && client.audioPos >= total;
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
