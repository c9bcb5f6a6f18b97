#include "directory/faviconcache.h"

#include "catalogue/stationlistfile.h"
#include "directory/directoryclient.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QNetworkRequest>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

// Addresses that failed are not tried again in this session; past this many
// the record starts afresh rather than growing.
constexpr qsizetype maxFailedRemembered = 10000;

QString nameOf(const QString &address)
{
    return QString::fromLatin1(QCryptographicHash::hash(address.toUtf8(), QCryptographicHash::Sha1).toHex());
}

} // namespace

QString FaviconCache::defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/Tunecatch/favicons");
}

bool FaviconCache::looksLikeImage(const QByteArray &bytes)
{
    static const QByteArray signatures[] = {
        QByteArray("\x89PNG\r\n\x1a\n", 8),
        QByteArray("\xff\xd8\xff", 3),
        QByteArray("GIF87a"),
        QByteArray("GIF89a"),
        QByteArray("\0\0\1\0", 4),
        QByteArray("BM"),
    };
    for (const QByteArray &signature : signatures) {
        if (bytes.startsWith(signature))
            return bytes.size() > signature.size();
    }
    return bytes.size() > 12 && bytes.startsWith("RIFF") && bytes.mid(8, 4) == "WEBP";
}

FaviconCache::FaviconCache(const QString &folder, QObject *parent)
    : QObject(parent), m_folder(folder), m_userAgent(DirectoryClient::defaultUserAgent())
{
}

FaviconCache::~FaviconCache() = default;

void FaviconCache::setLimits(const Limits &limits)
{
    m_limits = limits;
}

void FaviconCache::setUserAgent(const QString &userAgent)
{
    m_userAgent = userAgent;
}

QString FaviconCache::cachedFile(const QString &address)
{
    ensureIndex();
    const QString name = nameOf(address);
    if (!m_sizes.contains(name))
        return QString();
    const QString path = pathOf(name);
    // Someone may have emptied the cache folder meanwhile.
    if (!QFileInfo::exists(path)) {
        forget(name);
        return QString();
    }
    return path;
}

void FaviconCache::fetch(const QString &address)
{
    const QString trimmed = address.trimmed();
    if (!StationListFile::isInternetAddress(trimmed) || m_failed.contains(trimmed) ||
        m_running.contains(trimmed) || m_waiting.contains(trimmed) || !cachedFile(trimmed).isEmpty())
        return;
    m_waiting.append(trimmed);
    while (m_waiting.size() > m_limits.maxWaiting)
        m_waiting.removeFirst();
    startNext();
}

qint64 FaviconCache::totalBytes()
{
    ensureIndex();
    return m_total;
}

void FaviconCache::ensureIndex()
{
    if (m_indexed)
        return;
    m_indexed = true;
    static const QRegularExpression ownName(QStringLiteral("^[0-9a-f]{40}$"));
    const QFileInfoList files = QDir(m_folder).entryInfoList(QDir::Files, QDir::Time | QDir::Reversed);
    for (const QFileInfo &file : files) {
        if (!ownName.match(file.fileName()).hasMatch())
            continue;
        m_order.append(file.fileName());
        m_sizes.insert(file.fileName(), file.size());
        m_total += file.size();
    }
    // The bounds may have been lowered since the files were written.
    evict();
}

void FaviconCache::startNext()
{
    while (m_running.size() < m_limits.maxRunning && !m_waiting.isEmpty()) {
        const QString address = m_waiting.takeLast(); // the latest asked is the one in view
        QNetworkRequest request{QUrl(address)};
        request.setHeader(QNetworkRequest::UserAgentHeader, m_userAgent);
        request.setMaximumRedirectsAllowed(5);
        auto *download = new BoundedDownload(
            m_network, request, {m_limits.maxIconBytes, m_limits.silenceMs, m_limits.deadlineMs}, this);
        m_running.insert(address, download);
        connect(download, &BoundedDownload::finished, this,
                [this, address, download] { onDownloadEnded(address, download); });
    }
}

void FaviconCache::onDownloadEnded(const QString &address, BoundedDownload *download)
{
    m_running.remove(address);
    download->deleteLater();
    QString error;
    if (download->outcome() != BoundedDownload::Outcome::Done)
        error = tr("The icon at %1 could not be fetched: %2.").arg(address, download->errorText());
    else if (!looksLikeImage(download->body()))
        error = tr("The icon at %1 is not an image.").arg(address);
    if (error.isEmpty() && store(address, download->body(), error)) {
        emit iconReady(address, pathOf(nameOf(address)));
    } else {
        if (m_failed.size() >= maxFailedRemembered)
            m_failed.clear();
        m_failed.insert(address);
        emit iconFailed(address, error);
    }
    startNext();
}

bool FaviconCache::store(const QString &address, const QByteArray &bytes, QString &error)
{
    ensureIndex();
    const QString name = nameOf(address);
    QSaveFile file(pathOf(name));
    if (!QDir().mkpath(m_folder) || !file.open(QIODevice::WriteOnly) || file.write(bytes) < 0 ||
        !file.commit()) {
        error = tr("The icon at %1 could not be stored: %2.").arg(address, file.errorString());
        return false;
    }
    forget(name);
    m_order.append(name);
    m_sizes.insert(name, bytes.size());
    m_total += bytes.size();
    evict();
    return true;
}

void FaviconCache::evict()
{
    while (!m_order.isEmpty() && (m_total > m_limits.maxTotalBytes || m_order.size() > m_limits.maxFiles)) {
        const QString oldest = m_order.constFirst();
        QFile::remove(pathOf(oldest));
        forget(oldest);
    }
}

void FaviconCache::forget(const QString &name)
{
    if (!m_sizes.contains(name))
        return;
    m_total -= m_sizes.take(name);
    m_order.removeOne(name);
}

QString FaviconCache::pathOf(const QString &name) const
{
    return m_folder + u'/' + name;
}
