#pragma once

#include <QByteArray>
#include <QHash>
#include <QNetworkAccessManager>
#include <QObject>
#include <QString>
#include <QUrl>

#include <chrono>

class QNetworkReply;

// Background downloads of whole bodies (playlists, web pages), several at once,
// each tagged by a key that comes back with its events. Events arrive on the
// thread that owns the control. Downloads still running when the control is
// destroyed are aborted without events.
//
// Every download has a bound: a body larger than the size limit, or one that
// has not come whole within the time limit, ends as an error that says so.
class FileDL : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FileDL)

public:
    // Status codes passed with the events.
    enum StatusCode {
        ErrorOccurred = 0,
        Redirecting = 3,
        DownloadInProgress = 5,
        DownloadFinished = 6,
    };

    static constexpr qint64 DefaultMaxBytes = 1024 * 1024;
    static constexpr std::chrono::milliseconds DefaultTimeout{15000};

    explicit FileDL(QObject *parent = nullptr);
    ~FileDL() override;

    // The bounds of downloads begun from now on.
    void setLimits(qint64 maxBytes, std::chrono::milliseconds timeout);

    // Starts fetching url; redirects are followed. A download already running
    // under the same key is aborted first, without events.
    void BeginDownload(const QUrl &url, const QString &key);
    // Stops the download of that key; no further events come for it.
    void Cancel(const QString &key);

    // The status text of a code; "Unknown." for codes outside the table.
    static QString GetStatusCode(int code);

signals:
    // Progress as the network reports it (bytesTotal -1 when unknown), with
    // code 5 "Download In Progress.", or code 3 "Redirecting." on a redirect.
    void DownloadProgress(const QString &key, qint64 bytesReceived, qint64 bytesTotal, int statusCode,
                          const QString &statusText);
    // The download ended without data: a network failure, an HTTP error status
    // or an empty body (code 0, "An Error Has Occurred."), or a body past the
    // size limit or the time limit (code 0, a text that says which).
    void DownloadError(const QString &key, int statusCode, const QString &statusText);
    // The download ended with data: the whole body.
    void DownloadComplete(const QString &key, const QByteArray &body);

private:
    struct Download
    {
        QNetworkReply *reply = nullptr;
        QByteArray body;
    };
    void take(const QString &key);
    void finished(const QString &key, QNetworkReply *reply);
    void abandon(const QString &key, QNetworkReply *reply, const QString &why);
    void drop(QNetworkReply *reply);

    QNetworkAccessManager m_network;
    QHash<QString, Download> m_running;
    qint64 m_maxBytes = DefaultMaxBytes;
    std::chrono::milliseconds m_timeout = DefaultTimeout;
};
