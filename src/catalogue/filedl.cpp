#include "catalogue/filedl.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

FileDL::FileDL(QObject *parent) : QObject(parent)
{
}

FileDL::~FileDL()
{
    const QList<Download> downloads = m_running.values();
    m_running.clear();
    for (const Download &download : downloads)
        drop(download.reply);
}

void FileDL::setLimits(qint64 maxBytes, std::chrono::milliseconds timeout)
{
    m_maxBytes = maxBytes;
    m_timeout = timeout;
}

void FileDL::BeginDownload(const QUrl &url, const QString &key)
{
    Cancel(key);
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    QNetworkReply *reply = m_network.get(request);
    m_running.insert(key, {reply, {}});
    connect(reply, &QNetworkReply::downloadProgress, this, [this, key](qint64 received, qint64 total) {
        emit DownloadProgress(key, received, total, DownloadInProgress, GetStatusCode(DownloadInProgress));
    });
    connect(reply, &QNetworkReply::redirected, this, [this, key](const QUrl &) {
        emit DownloadProgress(key, 0, -1, Redirecting, GetStatusCode(Redirecting));
    });
    // The body is taken as it comes, so that its size is known at every step.
    connect(reply, &QNetworkReply::readyRead, this, [this, key] { take(key); });
    connect(reply, &QNetworkReply::finished, this, [this, key, reply] { finished(key, reply); });
    // The reply's child: it goes with the download.
    auto *deadline = new QTimer(reply);
    deadline->setSingleShot(true);
    connect(deadline, &QTimer::timeout, this, [this, key, reply, seconds = (m_timeout.count() + 999) / 1000] {
        abandon(key, reply, tr("The download did not finish within %1 s.").arg(seconds));
    });
    deadline->start(m_timeout);
}

void FileDL::Cancel(const QString &key)
{
    if (m_running.contains(key))
        drop(m_running.take(key).reply);
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

void FileDL::take(const QString &key)
{
    const auto it = m_running.find(key);
    if (it == m_running.end())
        return;
    QNetworkReply *reply = it->reply;
    it->body += reply->read(m_maxBytes + 1 - it->body.size());
    if (it->body.size() > m_maxBytes)
        abandon(key, reply, tr("The download is larger than %1 KB.").arg(m_maxBytes / 1024));
}

void FileDL::finished(const QString &key, QNetworkReply *reply)
{
    take(key);
    const auto it = m_running.find(key);
    if (it == m_running.end() || it->reply != reply)
        return;
    const QByteArray body = m_running.take(key).body;
    reply->deleteLater();
    // An HTTP error page is not the body asked for; neither is an empty answer.
    if (reply->error() == QNetworkReply::NoError && !body.isEmpty())
        emit DownloadComplete(key, body);
    else
        emit DownloadError(key, ErrorOccurred, GetStatusCode(ErrorOccurred));
}

void FileDL::abandon(const QString &key, QNetworkReply *reply, const QString &why)
{
    const auto it = m_running.find(key);
    if (it == m_running.end() || it->reply != reply)
        return;
    m_running.erase(it);
    drop(reply);
    emit DownloadError(key, ErrorOccurred, why);
}

void FileDL::drop(QNetworkReply *reply)
{
    disconnect(reply, nullptr, this, nullptr);
    reply->abort();
    reply->deleteLater();
}
