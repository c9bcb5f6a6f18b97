#include "recorder/streamconnection.h"

#include "recorder/icystream.h"

#include <QCoreApplication>
#include <QSignalBlocker>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTcpSocket>
#include <QUrl>

#include <utility>

namespace {

constexpr QByteArrayView HeaderEnd = "\r\n\r\n";

bool isRedirect(int status)
{
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

// The status code of "HTTP/1.0 302 Found" or "ICY 200 OK"; 0 when there is none.
int statusCode(QByteArrayView statusLine)
{
    const QList<QByteArray> words = statusLine.toByteArray().split(' ');
    return words.size() >= 2 ? words[1].toInt() : 0;
}

// The value of a header field, its name in any letter case.
QByteArray fieldValue(QByteArrayView header, QByteArrayView name)
{
    for (const QByteArray &line : header.toByteArray().split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.first(colon).trimmed().compare(name, Qt::CaseInsensitive) == 0)
            return line.sliced(colon + 1).trimmed();
    }
    return {};
}

QString secondsText(std::chrono::milliseconds span)
{
    return QString::number((span.count() + 999) / 1000);
}

QString translated(const char *text)
{
    return QCoreApplication::translate("StreamConnection", text);
}

enum class Verdict
{
    Undecided,
    WebPage,
    Audio
};

// Blanks that may come before a page's first tag; so many of them are no page.
constexpr qsizetype MaxLeadingBlanks = 4096;

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f';
}

// Whether the first bytes of an answer's body are a web page: after an
// optional UTF-8 byte order mark and blanks, one of the openings below in any
// letter case. A stream may begin anywhere in its bytes, so a "<" alone
// proves nothing; until more bytes come (final: none will) it may stay open.
Verdict judgeFirstBytes(QByteArrayView body, bool final)
{
    static constexpr QByteArrayView openings[] = {"<!doctype", "<html",   "<head", "<body",
                                                  "<title",    "<script", "<?xml", "<!--"};
    constexpr QByteArrayView byteOrderMark = "\xEF\xBB\xBF";
    if (!final && body.size() < byteOrderMark.size() && byteOrderMark.startsWith(body))
        return Verdict::Undecided;
    qsizetype at = body.startsWith(byteOrderMark) ? byteOrderMark.size() : 0;
    while (at < body.size() && isBlank(body[at]))
        ++at;
    if (at == body.size())
        return final || at > MaxLeadingBlanks ? Verdict::Audio : Verdict::Undecided;
    const QByteArrayView rest = body.sliced(at);
    bool maybe = false;
    for (const QByteArrayView opening : openings) {
        const qsizetype n = std::min(rest.size(), opening.size());
        if (qstrnicmp(rest.data(), n, opening.data(), n) != 0)
            continue;
        if (n == opening.size())
            return Verdict::WebPage;
        maybe = true;
    }
    return maybe && !final ? Verdict::Undecided : Verdict::Audio;
}

} // namespace

StreamConnection::StreamConnection(Timing timing, QObject *parent)
    : QObject(parent), m_timing(std::move(timing))
{
    useSocket(false);
    m_stall.setSingleShot(true);
    m_pause.setSingleShot(true);
    m_answer.setSingleShot(true);
    m_firstAudio.setSingleShot(true);
    connect(&m_stall, &QTimer::timeout, this, [this] {
        lost(QStringLiteral("Radio Station has sent nothing for %1 s.").arg(secondsText(m_timing.stall)));
    });
    connect(&m_answer, &QTimer::timeout, this, [this] {
        lost(translated("Radio Station did not answer within %1 s.").arg(secondsText(m_timing.answer)));
    });
    connect(&m_firstAudio, &QTimer::timeout, this, [this] {
        lost(translated("Radio Station answered but sent no audio within %1 s.")
                 .arg(secondsText(m_timing.firstAudio)));
    });
    connect(&m_pause, &QTimer::timeout, this, [this] {
        m_redirects = 0;
        connectTo(m_origin);
    });
}

void StreamConnection::useSocket(bool secure)
{
    if (m_socket) {
        if (secure == (qobject_cast<QSslSocket *>(m_socket) != nullptr))
            return;
        // It may be the one whose signal brought us here.
        m_socket->disconnect(this);
        m_socket->setObjectName({});
        m_socket->deleteLater();
    }
    // A plain socket for plain streams: TLS costs a second buffer per connection.
    if (secure) {
        auto *tls = new QSslSocket(this);
        connect(tls, &QSslSocket::encrypted, this, &StreamConnection::sendRequest);
        connect(tls, &QSslSocket::sslErrors, this, [this](const QList<QSslError> &errors) {
            for (const QSslError &error : errors)
                m_tlsErrors.append(error.errorString());
        });
        m_socket = tls;
    } else {
        m_socket = new QTcpSocket(this);
        connect(m_socket, &QTcpSocket::connected, this, &StreamConnection::sendRequest);
    }
    m_socket->setObjectName(QStringLiteral("WS"));
    m_socket->setReadBufferSize(ReadAhead);
    connect(m_socket, &QTcpSocket::readyRead, this, &StreamConnection::onReadyRead);
    connect(m_socket, &QTcpSocket::errorOccurred, this, &StreamConnection::onError);
    connect(m_socket, &QTcpSocket::disconnected, this, &StreamConnection::onError);
}

StreamConnection::~StreamConnection()
{
    close();
}

QString StreamConnection::textWebPage()
{
    return translated("The station sent a web page, not audio");
}

const QTcpSocket &StreamConnection::socket() const
{
    return *m_socket;
}

void StreamConnection::open(const StreamAddress &address)
{
    close();
    m_origin = address;
    m_established = false;
    m_try = 0;
    m_redirects = 0;
    m_peakHeader = 0;
    emit statusChanged(QStringLiteral("Connecting to: ") + address.url());
    connectTo(address);
}

void StreamConnection::close()
{
    m_phase = Phase::Idle;
    m_stall.stop();
    m_pause.stop();
    m_answer.stop();
    m_firstAudio.stop();
    abortQuietly();
    m_header = QByteArray();
}

void StreamConnection::abortQuietly()
{
    // Our own close is no news from the station.
    const QSignalBlocker quiet(m_socket);
    m_socket->abort();
}

void StreamConnection::connectTo(const StreamAddress &address)
{
    abortQuietly();
    useSocket(address.Secure);
    m_target = address;
    m_header = QByteArray();
    m_tlsErrors.clear();
    m_streamBytes = 0;
    m_phase = Phase::Connecting;
    m_stall.start(m_timing.stall);
    m_answer.start(m_timing.answer);
    if (auto *tls = qobject_cast<QSslSocket *>(m_socket)) {
        // Picked up at each connection, so trust given to the process applies.
        tls->setSslConfiguration(QSslConfiguration::defaultConfiguration());
        tls->connectToHostEncrypted(address.Host, address.Port);
    } else {
        m_socket->connectToHost(address.Host, address.Port);
    }
}

void StreamConnection::sendRequest()
{
    m_phase = Phase::Header;
    m_socket->write(BuildRequest(m_target));
    if (m_try == 0)
        emit statusChanged(TextWaiting);
}

void StreamConnection::onReadyRead()
{
    if (m_phase != Phase::Header && m_phase != Phase::FirstAudio && m_phase != Phase::Streaming)
        return;
    const QByteArray bytes = m_socket->readAll();
    if (bytes.isEmpty())
        return;
    m_stall.start(m_timing.stall);
    if (m_phase == Phase::Streaming) {
        m_streamBytes += bytes.size();
        if (m_try > 0 && m_streamBytes >= SteadyBytes)
            m_try = 0;
        emit dataReceived(bytes);
        return;
    }
    if (m_phase == Phase::FirstAudio) {
        m_header += bytes;
        checkFirstAudio(false);
        return;
    }
    const qsizetype searched = std::max<qsizetype>(0, m_header.size() - (HeaderEnd.size() - 1));
    m_header += bytes;
    m_peakHeader = std::max(m_peakHeader, m_header.size());
    const qsizetype end = m_header.indexOf(HeaderEnd, searched);
    if (end >= 0)
        takeHeader(end);
    else if (m_header.size() > MaxHeader)
        lost(TextNoStream);
}

void StreamConnection::takeHeader(qsizetype end)
{
    const QByteArrayView header = QByteArrayView(m_header).first(end + HeaderEnd.size());
    const QByteArrayView statusLine = header.first(header.indexOf("\r\n"));
    const int status = statusCode(statusLine);
    if (isRedirect(status)) {
        redirect(fieldValue(header, "Location"));
        return;
    }
    if (status != 200) {
        lost(QStringLiteral("Radio Station answered: ") + QString::fromLatin1(statusLine));
        return;
    }
    if (fieldValue(header, "Content-Type").toLower().startsWith("text/")) {
        lost(textWebPage(), Failure::NotAudio);
        return;
    }
    if (const QString problem = IcyStream::headerProblem(header); !problem.isEmpty()) {
        lost(problem, Failure::BadHeader);
        return;
    }
    m_answer.stop();
    m_phase = Phase::FirstAudio;
    m_bodyStart = header.size();
    m_firstAudio.start(m_timing.firstAudio);
    checkFirstAudio(false);
}

void StreamConnection::checkFirstAudio(bool final)
{
    const QByteArrayView body = QByteArrayView(m_header).sliced(m_bodyStart);
    switch (judgeFirstBytes(body, final)) {
    case Verdict::Undecided:
        return;
    case Verdict::WebPage:
        lost(textWebPage(), Failure::NotAudio);
        return;
    case Verdict::Audio:
        break;
    }
    m_firstAudio.stop();
    m_phase = Phase::Streaming;
    m_established = true;
    m_streamBytes = body.size();
    emit dataReceived(std::exchange(m_header, QByteArray()));
}

void StreamConnection::redirect(const QByteArray &location)
{
    if (++m_redirects > MaxRedirects) {
        lost(QStringLiteral("Radio Station redirected more than %1 times.").arg(MaxRedirects));
        return;
    }
    const QUrl next = QUrl(m_target.url()).resolved(QUrl(QString::fromLatin1(location), QUrl::TolerantMode));
    const QString scheme = next.scheme().toLower();
    if (location.isEmpty() || next.host().isEmpty() || (scheme != u"http" && scheme != u"https")) {
        lost(QStringLiteral("Radio Station redirected to an address that cannot be recorded: ") +
             QString::fromLatin1(location));
        return;
    }
    StreamAddress address;
    address.Secure = scheme == u"https";
    address.Host = next.host();
    address.Port = quint16(next.port(address.Secure ? 443 : 80));
    address.Path = next.path(QUrl::FullyEncoded);
    if (address.Path.isEmpty())
        address.Path = QStringLiteral("/");
    if (next.hasQuery())
        address.Path += u'?' + next.query(QUrl::FullyEncoded);
    emit statusChanged(QStringLiteral("Redirected to: ") + address.url());
    connectTo(address);
}

void StreamConnection::onError()
{
    if (m_phase == Phase::Idle || m_phase == Phase::Pausing)
        return;
    // Bytes that came with the close still belong to the stream.
    if (m_socket->bytesAvailable() > 0)
        onReadyRead();
    // No more bytes will come to tell a page from audio; without any there is no stream.
    if (m_phase == Phase::FirstAudio && m_header.size() > m_bodyStart)
        checkFirstAudio(true);
    if (m_phase == Phase::Idle || m_phase == Phase::Pausing)
        return;
    if (!m_tlsErrors.isEmpty())
        lost(QStringLiteral("Secure connection refused: ") + m_tlsErrors.join(QStringLiteral(" ")));
    else if (m_phase == Phase::Streaming)
        lost(TextClosedByStation);
    else if (m_socket->error() == QAbstractSocket::RemoteHostClosedError)
        lost(TextNotAccepting);
    else if (m_socket->error() == QAbstractSocket::SslHandshakeFailedError)
        lost(QStringLiteral("Secure connection refused: ") + m_socket->errorString());
    else
        lost(TextNoConnection);
}

void StreamConnection::lost(const QString &reason, Failure kind)
{
    const bool wasStreaming = m_phase == Phase::Streaming;
    m_stall.stop();
    m_answer.stop();
    m_firstAudio.stop();
    abortQuietly();
    m_header = QByteArray();
    if (!m_established || m_try >= m_timing.pauses.size()) {
        const QString why = m_established
                                ? QStringLiteral("Radio Station could not be reached again after %1 "
                                                 "tries. %2")
                                      .arg(m_timing.pauses.size())
                                      .arg(reason)
                                : reason;
        if (wasStreaming)
            emit interrupted();
        m_phase = Phase::Idle;
        emit failed(why, m_established ? Failure::Dropped : kind);
        return;
    }
    m_phase = Phase::Pausing;
    if (wasStreaming)
        emit interrupted();
    // The window may have stopped the recording meanwhile.
    if (m_phase != Phase::Pausing)
        return;
    ++m_try;
    emit statusChanged(
        QStringLiteral("Reconnecting... (try %1 of %2)").arg(m_try).arg(m_timing.pauses.size()));
    m_pause.start(m_timing.pauses.at(m_try - 1));
}
