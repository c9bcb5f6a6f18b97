#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QUrl>

class QTcpSocket;

// What a station address answered when asked for its stream, the way a
// player asks: reachable or not, and if so what it sends.
struct ProbeReport
{
    enum class Outcome
    {
        Stream,        // an answer that is not text: audio, or video
        BadAddress,    // no http:// or https:// address with a host
        Unreachable,   // no connection (refused, no such host, secure connection refused)
        Closed,        // connected, then closed without an answer
        HttpError,     // an answer other than 200 or a redirect
        NotAudio,      // a web page or other text
        EmptyPlaylist, // a playlist that names no stream
        NoAnswer,      // nothing within the time limit
    };

    Outcome outcome = Outcome::NoAnswer;
    QString host;        // of the last address asked
    QString address;     // the last address asked: after redirects, the playlist's stream
    int status = 0;      // the answer's status code
    QString contentType; // without parameters, lower case
    QString bitRate;     // icy-br
    QString name;        // icy-name
    QString genre;       // icy-genre
    QString homePage;    // icy-url
    QString title;       // the first song title the stream announced
    int limitSeconds = 0;

    bool reachable() const { return outcome == Outcome::Stream; }
    // Why nothing can be played, in plain words; empty for a stream.
    QString reason() const;
};

// Connects to a station address (through its playlist, following up to five
// redirects), sends the request a player sends, and reports what came back:
// the answer's status and ICY fields, and the first song title when the
// station names songs. It keeps no audio: it counts its way to the first
// metadata block. Everything ends within the time limit.
class StreamProbe : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StreamProbe)

public:
    static constexpr int DefaultLimit = 10000;
    static constexpr int MaxRedirects = 5;
    static constexpr qsizetype MaxHeader = 64 * 1024;
    static constexpr qsizetype MaxPlaylist = 64 * 1024;
    // Metadata blocks looked at for a title before the report goes without one.
    static constexpr int TitleBlocks = 3;

    explicit StreamProbe(QObject *parent = nullptr);
    ~StreamProbe() override;

    // Milliseconds from start to the report at the latest.
    void setTimeLimit(int milliseconds);
    // Starts asking address; a probe under way is dropped without a report.
    void start(const QString &address);
    // Drops the probe under way; no report comes.
    void cancel();
    bool running() const { return m_running; }

signals:
    void finished(const ProbeReport &report);

private:
    enum class Phase
    {
        Header,
        Playlist,
        Audio,
    };

    void connectTo(const QUrl &url);
    void onConnected();
    void onReadyRead();
    void onSocketError();
    void takeHeader(qsizetype end);
    void takePlaylist();
    void readAudio();
    void takeMetadata(const QByteArray &block);
    void finish(ProbeReport::Outcome outcome);
    void dropSocket();

    QTimer m_limit;
    bool m_running = false;
    // Counts probes, so that a report queued for one dropped since is not sent.
    int m_generation = 0;
    QTcpSocket *m_socket = nullptr;
    QUrl m_url;
    Phase m_phase = Phase::Header;
    QByteArray m_buffer;
    ProbeReport m_report;
    int m_redirects = 0;
    bool m_playlistFollowed = false;
    // Audio phase: bytes until the next metadata block, the interval, blocks seen.
    qint64 m_toBlock = 0;
    qint64 m_metaInt = 0;
    int m_blocks = 0;
};
