#include "catalogue/filedl.h"

#include <QNetworkReply>
#include <QNetworkRequest>

FileDL::FileDL(QObject *parent) : QObject(parent)
{
}

FileDL::~FileDL()
{
    const QList<QNetworkReply *> replies = m_running.values();
    m_running.clear();
    for (QNetworkReply *reply : replies)
        drop(reply);
}

void FileDL::BeginDownload(const QUrl &url, const QString &key)
{
    Cancel(key);
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    QNetworkReply *reply = m_network.get(request);
    m_running.insert(key, reply);
    connect(reply, &QNetworkReply::downloadProgress, this, [this, key](qint64 received, qint64 total) {
        emit DownloadProgress(key, received, total, DownloadInProgress, GetStatusCode(DownloadInProgress));
    });
    connect(reply, &QNetworkReply::redirected, this, [this, key](const QUrl &) {
        emit DownloadProgress(key, 0, -1, Redirecting, GetStatusCode(Redirecting));
    });
    connect(reply, &QNetworkReply::finished, this, [this, key, reply] { finished(key, reply); });
}

void FileDL::Cancel(const QString &key)
{
    if (QNetworkReply *reply = m_running.take(key))
        drop(reply);
}

QString FileDL::GetStatusCode(int code)
{
    switch (code) {
    case 0: return tr("An Error Has Occurred.");
    case 1: return tr("Finding Resource.");
    case 2: return tr("Connecting To Resource.");
    case 3: return tr("Redirecting.");
    case 4: return tr("Download Initialized.");
    case 5: return tr("Download In Progress.");
    case 6: return tr("Download Complete.");
    case 10: return tr("Using Cached Copy.");
    case 11: return tr("Sending Request.");
    case 13: return tr("MIME Type Is Available.");
    case 14: return tr("Local Cache File Is Available.");
    case 15: return tr("Synchronous Download Has Started.");
    case 16: return tr("Synchronous Download Complete.");
    default: return tr("Unknown.");
    }
}

void FileDL::finished(const QString &key, QNetworkReply *reply)
{
    m_running.remove(key);
    reply->deleteLater();
    const QByteArray body = reply->readAll();
    // An HTTP error page is not the body asked for; neither is an empty answer.
    if (reply->error() == QNetworkReply::NoError && !body.isEmpty())
        emit DownloadComplete(key, body);
    else
        emit DownloadError(key, ErrorOccurred, GetStatusCode(ErrorOccurred));
}

void FileDL::drop(QNetworkReply *reply)
{
    disconnect(reply, nullptr, this, nullptr);
    reply->abort();
    reply->deleteLater();
}
