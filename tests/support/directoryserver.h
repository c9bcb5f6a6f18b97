#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QTcpServer>

class QTcpSocket;

// A station directory on 127.0.0.1 that answers like the open directory's
// JSON API as its public documentation describes it: the station search with
// its filters, order and pages, the tag, country, language and codec lists,
// and the click count. Query values are read as a form is, so a "+" that is
// not percent-encoded arrives as a blank, as on the real servers. It can also
// misbehave: answer late, fail with a status, send a body of its own or one
// that never ends. Other paths are answered from `files`.
class DirectoryServer : public QObject
{
    Q_DISABLE_COPY_MOVE(DirectoryServer)

public:
    // Every field has a default, so that tests name only those they need.
    struct Station
    {
        QString uuid = {};
        QString name = {};
        QString url = {};
        QString urlResolved = {};
        QString homepage = {};
        QString favicon = {};
        QString tags = {};
        QString country = {};
        QString countryCode = {};
        QString language = {};
        QString languageCodes = {};
        QString codec = {};
        int bitrate = 0;
        int votes = 0;
        int clickCount = 0;
    };
    struct Request
    {
        QByteArray path; // without the query
        QMap<QString, QString> query;
        QByteArray userAgent;
    };

    explicit DirectoryServer(QObject *parent = nullptr);
    ~DirectoryServer() override;
    bool start();
    // "http://127.0.0.1:<port>", as a configured server address reads.
    QString base() const;

    // count stations of varied names, tags, countries, codecs and rates.
    static QList<Station> sampleStations(int count);
    // The API's station objects, every documented field present.
    static QByteArray stationsJson(const QList<Station> &stations);

    QList<Station> stations;
    QMap<QByteArray, QByteArray> files; // answered as they are, status 200
    int delayMs = 0;                    // before every answer
    int failStatus = 0;                 // answers every request with this status
    QByteArray body;                    // sent in place of the API's answer
    int endlessPiece = 0;               // > 0: sends pieces of this size without end
    int endlessIntervalMs = 10;

    QList<Request> requests;

private:
    void onNewConnection();
    void answer(QTcpSocket *socket, const Request &request);
    QByteArray apiAnswer(const Request &request, int &status);
    QByteArray search(const QMap<QString, QString> &query) const;
    QByteArray list(const QByteArray &path, const QMap<QString, QString> &query) const;
    QByteArray click(const QString &uuid);

    QTcpServer m_server;
};
