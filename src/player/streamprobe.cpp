#include "player/streamprobe.h"

#include "player/playlistfetch.h"

#include <QSslSocket>
#include <QStringDecoder>

namespace {

constexpr QByteArrayView HeaderEnd = "\r\n\r\n";

// A header field's value (name without regard to case), or nothing.
QByteArray field(const QList<QByteArray> &lines, QByteArrayView name)
{
    for (const QByteArray &line : lines) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && QByteArrayView(line).first(colon).trimmed().compare(name, Qt::CaseInsensitive) == 0)
            return line.mid(colon + 1).trimmed();
    }
    return {};
}

// Station texts are UTF-8 when they decode as such, else Latin-1.
QString decoded(QByteArrayView bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8(bytes);
    return utf8.hasError() ? QString::fromLatin1(bytes) : text;
}

bool isPlaylistType(const QString &type)
{
    return type == u"audio/x-scpls" || type == u"application/pls+xml";
}

// Text the player cannot play: pages, documents, data.
bool isTextType(const QString &type)
{
    return type.startsWith(u"text/") || type.contains(u"html") || type.contains(u"xml") ||
           type.contains(u"json");
}

} // namespace

QString ProbeReport::reason() const
{
    switch (outcome) {
    case Outcome::Stream:
        return {};
    case Outcome::BadAddress:
        return StreamProbe::tr("Not a station address: %1").arg(address);
    case Outcome::Unreachable:
        return StreamProbe::tr("Cannot reach %1").arg(host);
    case Outcome::Closed:
        return StreamProbe::tr("%1 closed the connection without answering").arg(host);
    case Outcome::HttpError:
        return StreamProbe::tr("The station answered %1").arg(status);
    case Outcome::NotAudio:
        return StreamProbe::tr("Not an audio stream");
    case Outcome::EmptyPlaylist:
        return StreamProbe::tr("The playlist names no stream");
    case Outcome::NoAnswer:
        return StreamProbe::tr("No answer from %1 within %2 s").arg(host).arg(limitSeconds);
    }
    return {};
}

StreamProbe::StreamProbe(QObject *parent) : QObject(parent)
{
    m_limit.setSingleShot(true);
    m_limit.setInterval(DefaultLimit);
    connect(&m_limit, &QTimer::timeout, this, [this] {
        // A stream that came but named no song in time is still a stream.
        finish(m_phase == Phase::Audio ? ProbeReport::Outcome::Stream : ProbeReport::Outcome::NoAnswer);
    });
}

StreamProbe::~StreamProbe()
{
    dropSocket();
}

void StreamProbe::setTimeLimit(int milliseconds)
{
    m_limit.setInterval(milliseconds);
}

void StreamProbe::start(const QString &address)
{
    cancel();
    m_running = true;
    m_report = {};
    m_report.address = address;
    m_report.limitSeconds = (m_limit.interval() + 999) / 1000;
    m_redirects = 0;
    m_playlistFollowed = false;
    QUrl url(PlaylistFetch::DownloadAddress(address.trimmed()));
    // The recorder's own scheme for a station it reaches over plain HTTP.
    if (url.scheme().compare(u"icyx", Qt::CaseInsensitive) == 0)
        url.setScheme(QStringLiteral("http"));
    m_limit.start();
    connectTo(url);
}

void StreamProbe::cancel()
{
    m_running = false;
    ++m_generation;
    m_limit.stop();
    dropSocket();
}

void StreamProbe::connectTo(const QUrl &url)
{
    dropSocket();
    m_url = url;
    m_report.address = url.toString();
    m_report.host = url.host();
    const QString scheme = url.scheme().toLower();
    if (!url.isValid() || url.host().isEmpty() || (scheme != u"http" && scheme != u"https")) {
        // Reported from the event loop, as every other outcome is.
        QMetaObject::invokeMethod(
            this,
            [this, generation = m_generation] {
                if (generation == m_generation)
                    finish(ProbeReport::Outcome::BadAddress);
            },
            Qt::QueuedConnection);
        return;
    }
    m_phase = Phase::Header;
    m_buffer.clear();
    const bool secure = scheme == u"https";
    if (secure) {
        auto *tls = new QSslSocket(this);
        m_socket = tls;
        connect(tls, &QSslSocket::encrypted, this, &StreamProbe::onConnected);
        tls->connectToHostEncrypted(url.host(), quint16(url.port(443)));
    } else {
        m_socket = new QTcpSocket(this);
        connect(m_socket, &QTcpSocket::connected, this, &StreamProbe::onConnected);
        m_socket->connectToHost(url.host(), quint16(url.port(80)));
    }
    connect(m_socket, &QTcpSocket::readyRead, this, &StreamProbe::onReadyRead);
    connect(m_socket, &QTcpSocket::errorOccurred, this, &StreamProbe::onSocketError);
}

void StreamProbe::onConnected()
{
    QByteArray path = m_url.path(QUrl::FullyEncoded).toLatin1();
    if (path.isEmpty())
        path = "/";
    if (m_url.hasQuery())
        path += '?' + m_url.query(QUrl::FullyEncoded).toLatin1();
    m_socket->write("GET " + path + " HTTP/1.0\r\nHost: " + m_url.host(QUrl::FullyEncoded).toLatin1() +
                    "\r\nUser-Agent: Tunecatch\r\nAccept: */*\r\nIcy-MetaData: 1\r\n\r\n");
}

void StreamProbe::onReadyRead()
{
    if (!m_socket)
        return;
    switch (m_phase) {
    case Phase::Header: {
        m_buffer += m_socket->readAll();
        const qsizetype end = m_buffer.indexOf(HeaderEnd);
        if (end >= 0)
            takeHeader(end);
        else if (m_buffer.size() > MaxHeader)
            finish(ProbeReport::Outcome::NotAudio);
        break;
    }
    case Phase::Playlist:
        m_buffer += m_socket->read(MaxPlaylist + 1 - m_buffer.size());
        if (m_buffer.size() > MaxPlaylist)
            takePlaylist();
        break;
    case Phase::Audio:
        readAudio();
        break;
    }
}

void StreamProbe::onSocketError()
{
    if (!m_socket)
        return;
    if (m_phase == Phase::Playlist) {
        // The playlist's end is the connection's end.
        m_buffer += m_socket->readAll();
        takePlaylist();
        return;
    }
    if (m_socket->bytesAvailable() > 0)
        onReadyRead();
    if (!m_socket)
        return;
    if (m_phase == Phase::Audio) {
        finish(ProbeReport::Outcome::Stream);
        return;
    }
    const bool closed = m_socket->error() == QAbstractSocket::RemoteHostClosedError;
    finish(closed ? ProbeReport::Outcome::Closed : ProbeReport::Outcome::Unreachable);
}

void StreamProbe::takeHeader(qsizetype end)
{
    QList<QByteArray> lines = m_buffer.first(end).split('\n');
    for (QByteArray &line : lines)
        line = line.trimmed();
    QByteArray rest = m_buffer.mid(end + HeaderEnd.size());
    m_buffer.clear();
    // "ICY 200 OK" or "HTTP/1.x 200 OK".
    const QList<QByteArray> statusWords = lines.value(0).split(' ');
    m_report.status = statusWords.value(1).toInt();
    m_report.contentType =
        QString::fromLatin1(field(lines, "Content-Type").split(';').value(0)).trimmed().toLower();
    if (m_report.status >= 300 && m_report.status < 400 && !field(lines, "Location").isEmpty()) {
        if (++m_redirects > MaxRedirects) {
            finish(ProbeReport::Outcome::HttpError);
            return;
        }
        connectTo(m_url.resolved(QUrl(QString::fromLatin1(field(lines, "Location")))));
        return;
    }
    if (m_report.status != 200) {
        finish(ProbeReport::Outcome::HttpError);
        return;
    }
    if (!m_playlistFollowed &&
        (isPlaylistType(m_report.contentType) || PlaylistFetch::IsPlaylistAddress(m_url.path()))) {
        m_phase = Phase::Playlist;
        m_buffer = rest;
        if (m_buffer.size() > MaxPlaylist)
            takePlaylist();
        return;
    }
    if (isTextType(m_report.contentType)) {
        finish(ProbeReport::Outcome::NotAudio);
        return;
    }
    m_report.bitRate = QString::fromLatin1(field(lines, "icy-br"));
    m_report.name = decoded(field(lines, "icy-name"));
    m_report.genre = decoded(field(lines, "icy-genre"));
    m_report.homePage = QString::fromLatin1(field(lines, "icy-url"));
    m_metaInt = field(lines, "icy-metaint").toLongLong();
    if (m_metaInt <= 0) {
        finish(ProbeReport::Outcome::Stream);
        return;
    }
    m_phase = Phase::Audio;
    m_toBlock = m_metaInt;
    m_buffer = rest;
    readAudio();
}

void StreamProbe::takePlaylist()
{
    const QString stream = PlaylistFetch::StreamFromPlaylist(m_buffer.left(MaxPlaylist));
    if (stream.isEmpty()) {
        finish(ProbeReport::Outcome::EmptyPlaylist);
        return;
    }
    m_playlistFollowed = true;
    connectTo(QUrl(stream));
}

// Counts through the audio to each metadata block; only a block is kept.
void StreamProbe::readAudio()
{
    m_buffer += m_socket->readAll();
    while (m_socket) {
        if (m_toBlock > 0) {
            const qint64 skipped = qMin<qint64>(m_toBlock, m_buffer.size());
            m_buffer.remove(0, skipped);
            m_toBlock -= skipped;
            if (m_toBlock > 0)
                return;
        }
        if (m_buffer.isEmpty())
            return;
        const qsizetype length = qsizetype(uchar(m_buffer.at(0))) * 16;
        if (m_buffer.size() < 1 + length)
            return;
        const QByteArray block = m_buffer.mid(1, length);
        m_buffer.remove(0, 1 + length);
        m_toBlock = m_metaInt;
        takeMetadata(block);
    }
}

void StreamProbe::takeMetadata(const QByteArray &block)
{
    ++m_blocks;
    constexpr QByteArrayView marker = "StreamTitle='";
    const qsizetype at = block.indexOf(marker);
    if (at >= 0) {
        const qsizetype from = at + marker.size();
        const qsizetype close = block.indexOf("';", from);
        const QByteArray title = close < 0 ? block.mid(from) : block.mid(from, close - from);
        m_report.title = decoded(QByteArray(title).replace('\0', QByteArray()));
    }
    if (!m_report.title.isEmpty() || m_blocks >= TitleBlocks)
        finish(ProbeReport::Outcome::Stream);
}

void StreamProbe::finish(ProbeReport::Outcome outcome)
{
    if (!m_running)
        return;
    m_running = false;
    ++m_generation;
    m_limit.stop();
    dropSocket();
    m_report.outcome = outcome;
    emit finished(m_report);
}

void StreamProbe::dropSocket()
{
    m_blocks = 0;
    if (!m_socket)
        return;
    QTcpSocket *socket = std::exchange(m_socket, nullptr);
    socket->disconnect(this);
    socket->abort();
    socket->deleteLater();
}
