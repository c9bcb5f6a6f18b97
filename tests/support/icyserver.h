#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QTcpServer>
#include <QTimer>

#include <memory>
#include <vector>

// A scripted station on 127.0.0.1 ("Loopback FM", genre "Test", metadata every
// metaInt audio bytes, 128 kbit/s): answers a request with an ICY header, then
// sends audio with the title changing as the script says. It remembers, per
// client, the exact audio it sent and where each title was announced, so tests
// can compute the files a recorder must have written. Every client hears the
// script from its start. It can also misbehave, answer plain HTTP requests by
// path, and speak TLS with one of the test certificates.
class IcyServer : public QObject
{
    Q_DISABLE_COPY_MOVE(IcyServer)

public:
    enum class Fault
    {
        None,
        CloseAtOnce,   // closes every connection before reading the request
        EndlessHeader, // sends header lines that never end: a station that sends no answer
        SlowHeader,    // sends its header at bytesPerSecond too, then the stream
    };
    struct Song
    {
        QByteArray title;
        int intervals = 1; // audio intervals of metaInt bytes
    };
    // A metadata block announcing title sat right after audio byte offset.
    struct TitleMark
    {
        qint64 offset = 0;
        QByteArray title;
    };
    struct Sent
    {
        QByteArray request;
        QByteArray audio; // every audio byte sent, without the metadata
        QList<TitleMark> marks;
        bool finished = false;
    };
    explicit IcyServer(QObject *parent = nullptr);
    ~IcyServer() override;
    // Listens on a free port of 127.0.0.1 chosen by the system (ports from
    // 32768 up on Linux, so stations on high ports are what tests meet).
    bool start();
    // The same over TLS, with tests/support/tls/<certificate>.pem:
    // "localhost", "expired" (ended in 2021) or "otherhost" (other.example).
    bool startTls(const QString &certificate);
    // Makes the test authority that signed those trusted by this process.
    static void trustTestAuthority();
    // A port of 127.0.0.1 where nothing listens (0 if none could be found).
    static quint16 refusedPort();
    // The contents of a file under the source tree's data/ folder.
    static QByteArray dataFile(const QString &name);
    // Stops listening: further connections are refused.
    void stopListening() { m_server->close(); }
    quint16 port() const { return m_server->serverPort(); }
    // http://127.0.0.1:port/..., or https://localhost:port/... over TLS.
    QString url(const QString &path = QStringLiteral("/stream")) const;
    // The script; change it before clients connect.
    QList<Song> songs;
    bool repeat = false;          // start the songs again after the last; else stop sending
    bool repeatTitles = false;    // send the title in every block, not only on a change
    bool titles = true;           // false: every block is empty (length 0)
    bool announceInterval = true; // false: no "icy-metaint:", the stream is plain audio
    int metaInt = 8000;
    bool announceBitrate = true; // false: no "icy-br:", the time is known only by the clock
    // The audio sent, from its start and round again; empty: varied bytes that are no audio.
    QByteArray audio;
    QByteArray contentType = "audio/mpeg";
    QByteArray announcedInterval; // what "icy-metaint:" says when not metaInt as a number
    qint64 bytesPerSecond = 0; // audio pace; 0 sends as fast as the loop turns
    bool flood = false;        // unpaced and in large pieces: faster than a reader takes it
    int dropAfter = 0;         // closes each connection after so many intervals (0: never)
    int stallAfter = 0;        // falls silent after so many intervals, connection kept (0: never)
    Fault fault = Fault::None;
    bool keepSent = true; // false: remember nothing (long runs)
    // Whole HTTP answers by path; other ".pls" paths get a 404.
    QMap<QByteArray, QByteArray> pages;
    // Paths answered with a header and then a text body that never ends, sent as fast as it goes.
    QSet<QByteArray> endlessPages;
    // Paths whose request is read and never answered; the connection stays open.
    QSet<QByteArray> silentPages;
    static QByteArray page(const QByteArray &body);
    static QByteArray redirect(const QString &location);
    // A metadata block as it goes on the wire: length byte, then padded text.
    static QByteArray metadataBlock(const QByteArray &text);
    int clientCount() const { return int(m_clients.size()); }
    const Sent &sent(int client) const;
    // Audio of one file as the recorder must write it in single-song mode:
    // from the interval before the block announcing mark `index` up to the end
    // of the interval before the next announcement, or up to the first
    // `consumed` audio bytes, what the recorder took before it stopped.
    QByteArray songFile(int client, int index, qint64 consumed) const;

private:
    struct Client;
    void onNewConnection();
    void onReadyRead(Client &client);
    void pump(Client &client);
    void sendAudio(Client &client, qint64 count);
    QByteArray titleAfterInterval(qint64 interval) const;
    char audioAt(qint64 position) const;
    qint64 scriptIntervals() const;
    QTcpServer *m_server;
    bool m_tls = false;
    QTimer m_timer;
    std::vector<std::unique_ptr<Client>> m_clients;
};
