#pragma once

#include "directory/boundeddownload.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QNetworkAccessManager>
#include <QObject>
#include <QSet>
#include <QString>

// The directory stations' icons, fetched when first shown and kept in a
// folder of the user's cache, which is held to a total size by deleting the
// oldest. A download that is too large, never ends or brings no image is
// dropped and not tried again in this session. The image check looks at the
// file's first bytes only, so that this layer needs no image library; the
// window decodes what it shows.
class FaviconCache : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FaviconCache)

public:
    struct Limits
    {
        qint64 maxIconBytes = 256 * 1024;
        qint64 maxTotalBytes = 16 * 1024 * 1024;
        int maxFiles = 4000;
        int maxRunning = 4;
        int maxWaiting = 200;
        int silenceMs = 10000;
        int deadlineMs = 20000;
    };

    // "Tunecatch/favicons" in the user's cache folder ($XDG_CACHE_HOME, else ~/.cache).
    static QString defaultFolder();
    // PNG, JPEG, GIF, ICO, BMP or WebP by their first bytes.
    static bool looksLikeImage(const QByteArray &bytes);

    explicit FaviconCache(const QString &folder = defaultFolder(), QObject *parent = nullptr);
    ~FaviconCache() override;

    void setLimits(const Limits &limits);
    void setUserAgent(const QString &userAgent);
    const QString &folder() const { return m_folder; }

    // The icon's file when it is cached, else empty.
    QString cachedFile(const QString &address);
    // Fetches the icon of an http or https address unless it is cached, on
    // its way or failed before; iconReady() or iconFailed() follows. A few are
    // fetched at once; when more wait than the bound, the oldest waiting are
    // forgotten (asked again, they are fetched).
    void fetch(const QString &address);
    // Bytes of all cached icons.
    qint64 totalBytes();

signals:
    void iconReady(const QString &address, const QString &file);
    void iconFailed(const QString &address, const QString &message);

private:
    void ensureIndex();
    void startNext();
    void onDownloadEnded(const QString &address, BoundedDownload *download);
    // False with the reason when the file cannot be written.
    bool store(const QString &address, const QByteArray &bytes, QString &error);
    void evict();
    void forget(const QString &name);
    QString pathOf(const QString &name) const;

    QString m_folder;
    QNetworkAccessManager m_network;
    QString m_userAgent;
    Limits m_limits;
    bool m_indexed = false;
    // Cached files by name, oldest first, and their sizes.
    QList<QString> m_order;
    QHash<QString, qint64> m_sizes;
    qint64 m_total = 0;
    QHash<QString, BoundedDownload *> m_running;
    QList<QString> m_waiting;
    QSet<QString> m_failed;
};
