#pragma once

#include "recorder/streamaddress.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <chrono>

class QTcpSocket;

// How long a connection waits for bytes, and how it tries again.
struct StreamTiming
{
    // No byte for this long, connecting included: the station is gone.
    std::chrono::milliseconds stall{30000};
    // The pause before each reconnection try; as many tries as pauses.
    QList<std::chrono::milliseconds> pauses{std::chrono::seconds(5),  std::chrono::seconds(10),
                                            std::chrono::seconds(20), std::chrono::seconds(40),
                                            std::chrono::seconds(80), std::chrono::seconds(120)};
    // From connecting to the end of the answer's header, however the bytes trickle.
    std::chrono::milliseconds answer{15000};
    // From the end of the header to the first byte of the stream.
    std::chrono::milliseconds firstAudio{15000};
};

// The recorder's connection to a station: the socket (TLS with the system's
// certificate checks for "https://", plain otherwise), the request, redirects, the response
// status and - once the station has sent a stream - reconnection when it drops
// or stalls. Stream bytes, each answer's header first, go out through
// dataReceived; everything else that happens through the other signals.
//
// Only audio is taken: an answer of type text/*, one whose first bytes are a
// web page, or one whose "icy-metaint:" is no interval is refused, and every
// wait has a bound (the answer, its first audio byte, silence while streaming).
//
// The first connection of a recording gets one try: an address that does not
// work is said at once. Once a stream has come, a drop, a stall or a failed
// try is followed by the next try after its pause, with the same request to
// the same address; a reconnection that delivers SteadyBytes starts the count
// of tries afresh.
class StreamConnection : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StreamConnection)

public:
    using Timing = StreamTiming;

    // What kind of failure ended the connection, for whoever maps it to an outcome.
    enum class Failure
    {
        Unreachable, // no connection, no answer in time, a refusal, a redirect that cannot be followed
        NotAudio,    // a web page or other text instead of a stream
        BadHeader,   // a stream whose header cannot be recorded
        Dropped,     // a stream that came stopped and could not be reached again
    };
    Q_ENUM(Failure)

    static constexpr int MaxRedirects = 5;
    // An answer whose header has not ended after this many bytes is no stream.
    static constexpr qsizetype MaxHeader = 64 * 1024;
    // The socket reads no further ahead than this; the rest waits in the network.
    static constexpr qint64 ReadAhead = 256 * 1024;
    static constexpr qint64 SteadyBytes = 64 * 1024;

    static inline const QString TextNoConnection =
        QStringLiteral("Unable to create connection to Radio Station.");
    static inline const QString TextNotAccepting =
        QStringLiteral("Radio Station does not accept connections at the moment.");
    static inline const QString TextClosedByStation = QStringLiteral("Radio Station closed the connection.");
    static inline const QString TextNoStream =
        QStringLiteral("Radio Station sent no stream: its answer did not end within 64 KB.");
    static inline const QString TextWaiting =
        QStringLiteral("Connected, waiting for the station's answer...");
    static QString textWebPage();

    explicit StreamConnection(Timing timing = {}, QObject *parent = nullptr);
    ~StreamConnection() override;

    // Connects to the address and sends the request; any earlier connection
    // is closed first.
    void open(const StreamAddress &address);
    // Ends the connection without a signal: the recording was stopped.
    void close();

    // The socket ("WS"), for whoever watches the connection.
    const QTcpSocket &socket() const;
    // The largest answer header held while waiting for its end.
    qsizetype peakHeader() const { return m_peakHeader; }

signals:
    // What the window shows while connecting, redirected or reconnecting.
    void statusChanged(const QString &text);
    // Bytes of the stream; every answer begins with its header.
    void dataReceived(const QByteArray &bytes);
    // The stream stopped coming: what is held should be finished, a
    // reconnection follows.
    void interrupted();
    // The recording cannot go on; the connection is closed. The text says why.
    void failed(const QString &reason, StreamConnection::Failure kind);

private:
    enum class Phase
    {
        Idle,
        Connecting,
        Header,
        FirstAudio, // a good header came; held until the first bytes show it is no web page
        Streaming,
        Pausing
    };

    void useSocket(bool secure);
    void connectTo(const StreamAddress &address);
    void sendRequest();
    void onReadyRead();
    void onError();
    void takeHeader(qsizetype end);
    // Looks at the first bytes after the header; starts streaming once they are no web page.
    void checkFirstAudio(bool final);
    void redirect(const QByteArray &location);
    void lost(const QString &reason, Failure kind = Failure::Unreachable);
    void abortQuietly();

    Timing m_timing;
    QTcpSocket *m_socket = nullptr;
    QTimer m_stall;
    QTimer m_pause;
    QTimer m_answer;
    QTimer m_firstAudio;
    Phase m_phase = Phase::Idle;
    StreamAddress m_origin;
    StreamAddress m_target;
    // The answer until its header has ended and its first bytes are known to be audio.
    QByteArray m_header;
    qsizetype m_bodyStart = 0;
    qsizetype m_peakHeader = 0;
    QStringList m_tlsErrors;
    int m_redirects = 0;
    // Whether this recording has had a stream yet, and the reconnection try
    // under way (0 for the first connection).
    bool m_established = false;
    int m_try = 0;
    qint64 m_streamBytes = 0;
};
