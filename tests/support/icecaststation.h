#pragma once

#include <QByteArray>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <utility>

// Debian's icecast2 on 127.0.0.1, fed by ezstream with speech MP3s made on
// the spot ("Tester - Song 1", an accented "Beyoncé - Café Crème" as stations
// send all day, "Tester - Song 3"), as one station at /stream ("Icecast Test
// FM", genre "Speech"). Both servers are this process's children, stopped by
// their own process ids when the station goes.
class IcecastStation
{
public:
    // Artist and title of each song, in playing order.
    static inline const QList<std::pair<QString, QString>> songs{
        {QStringLiteral("Tester"), QStringLiteral("Song 1")},
        {QStringLiteral("Beyonc\u00e9"), QStringLiteral("Caf\u00e9 Cr\u00e8me")},
        {QStringLiteral("Tester"), QStringLiteral("Song 3")}};
    // The titles the station announces: "artist - title".
    static QStringList titles();
    IcecastStation();
    ~IcecastStation();
    Q_DISABLE_COPY_MOVE(IcecastStation)
    // Empty when the servers and the tools that make the songs are installed;
    // otherwise why the station cannot run (for GTEST_SKIP).
    static QString missing();
    // Makes the songs and starts both servers; returns once /stream answers,
    // with an empty text, or with what went wrong.
    // burst: icecast's usual burst of audio on connect; without it a listener
    // gets the audio as it is sent, so titles fall where the audio is.
    QString start(bool burst = true);
    quint16 port() const { return m_port; }
    QString url(const QString &path = QStringLiteral("/stream")) const;
    // Runs a tool's command line to its end; gives its exit code and output.
    static std::pair<int, QByteArray> run(const QString &command);
    // The path of an installed tool, empty when there is none.
    static QString tool(const QString &name) { return QStandardPaths::findExecutable(name); }

private:
    struct Server
    {
        std::unique_ptr<QProcess> process = std::make_unique<QProcess>();
        ~Server();
    };
    QString path(const char *name) const;
    QString makeSongs();
    QString startServer(Server &server, const char *program, const char *config, const QString &xml,
                        const QByteArray &target, const QByteArray &answer);
    QByteArray answers(const QByteArray &target) const;
    QTemporaryDir m_work;
    quint16 m_port = 0;
    Server m_icecast;
    Server m_ezstream;
};
