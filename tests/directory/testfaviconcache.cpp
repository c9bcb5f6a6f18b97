#include "directory/faviconcache.h"

#include "directory/directoryclient.h"
#include "support/directoryserver.h"
#include "support/eventwait.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QByteArray png(int size, char fill)
{
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(size - 8, fill);
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class Favicons : public ::testing::Test
{
protected:
    void SetUp() override
    {
        for (const char name : {'a', 'b', 'c'})
            server.files["/" + QByteArray(1, name) + ".png"] = png(300, name);
        server.files["/page.png"] = "<html><body>Moved</body></html>";
        server.files["/big.png"] = png(5000, 'x');
        ASSERT_TRUE(server.start());
        limits.maxIconBytes = 2000;
        limits.maxTotalBytes = 700;
        limits.silenceMs = 300;
        limits.deadlineMs = 800;
        cache.setLimits(limits);
        QObject::connect(&cache, &FaviconCache::iconReady,
                         [this](const QString &address, const QString &file) {
                             ready.append({address, file});
                         });
        QObject::connect(&cache, &FaviconCache::iconFailed,
                         [this](const QString &address, const QString &why) {
                             failed.append({address, why});
                         });
    }
    QString url(const QString &path) const { return server.base() + path; }
    // Fetches and waits for the answer; false when none came.
    bool fetch(const QString &address)
    {
        const qsizetype before = ready.size() + failed.size();
        cache.fetch(address);
        return waitUntil([&] { return ready.size() + failed.size() > before; }, 5000);
    }

    QTemporaryDir dir;
    DirectoryServer server;
    FaviconCache::Limits limits;
    FaviconCache cache{dir.path() + u"/favicons"_s};
    QList<std::pair<QString, QString>> ready, failed;
};

TEST_F(Favicons, AnIconIsFetchedOnceAndKeptOnDisk)
{
    ASSERT_TRUE(fetch(url(u"/a.png"_s)));
    ASSERT_EQ(ready.size(), 1);
    EXPECT_EQ(ready[0].first, url(u"/a.png"_s));
    EXPECT_TRUE(ready[0].second.startsWith(cache.folder()));
    EXPECT_EQ(fileBytes(ready[0].second), png(300, 'a'));
    EXPECT_EQ(cache.cachedFile(url(u"/a.png"_s)), ready[0].second);
    EXPECT_EQ(server.requests.value(0).userAgent, DirectoryClient::defaultUserAgent().toUtf8());

    cache.fetch(url(u"/a.png"_s));
    EXPECT_EQ(server.requests.size(), 1);
    // Emptied behind its back, the cache fetches again.
    QFile::remove(ready[0].second);
    EXPECT_EQ(cache.cachedFile(url(u"/a.png"_s)), QString());
    EXPECT_TRUE(fetch(url(u"/a.png"_s)));
    EXPECT_EQ(server.requests.size(), 2);

    const QByteArray saved = qgetenv("XDG_CACHE_HOME");
    qputenv("XDG_CACHE_HOME", QFile::encodeName(dir.path()));
    EXPECT_EQ(FaviconCache::defaultFolder(), dir.path() + u"/Tunecatch/favicons"_s);
    qputenv("XDG_CACHE_HOME", saved);
}

TEST_F(Favicons, WhatIsNoIconIsDroppedAndNotAskedForAgain)
{
    const std::pair<QString, QString> rows[] = {
        {u"/page.png"_s, u"not an image"_s},
        {u"/big.png"_s, u"larger than 1 KB"_s},
        {u"/missing.png"_s, u"status 404"_s},
    };
    for (const auto &[path, reason] : rows) {
        ASSERT_TRUE(fetch(url(path)));
        ASSERT_FALSE(failed.isEmpty());
        EXPECT_TRUE(failed.constLast().second.contains(reason)) << failed.constLast().second.toStdString();
        EXPECT_EQ(cache.cachedFile(url(path)), QString());
    }
    server.endlessPiece = 1; // one byte at a time, for ever
    server.endlessIntervalMs = 100;
    ASSERT_TRUE(fetch(url(u"/endless.png"_s)));
    EXPECT_TRUE(failed.constLast().second.contains(u"did not answer in time"_s));

    const qsizetype asked = server.requests.size();
    for (const auto &[path, reason] : rows)
        cache.fetch(url(path));
    cache.fetch(u"file:///etc/passwd"_s);
    cache.fetch(u"data:image/png;base64,iVBORw0KGgo="_s);
    EXPECT_EQ(server.requests.size(), asked);
    EXPECT_TRUE(ready.isEmpty());
    EXPECT_EQ(cache.totalBytes(), 0);

    for (const QByteArray &image :
         {png(9, 'p'), QByteArray("\xff\xd8\xff\xe0", 4), QByteArray("GIF89a!"), QByteArray("\0\0\1\0\1", 5),
          QByteArray("BM6"), QByteArray("RIFF1234WEBPVP8 ")})
        EXPECT_TRUE(FaviconCache::looksLikeImage(image)) << image.toHex().toStdString();
    for (const QByteArray &other :
         {QByteArray("<svg/>"), QByteArray("\x89PNG\r\n\x1a\n", 8), QByteArray("RIFF1234WAVE")})
        EXPECT_FALSE(FaviconCache::looksLikeImage(other)) << other.toHex().toStdString();
}

TEST_F(Favicons, TheCacheKeepsToItsSizeByDroppingTheOldest)
{
    for (const QString &path : {u"/a.png"_s, u"/b.png"_s, u"/c.png"_s})
        ASSERT_TRUE(fetch(url(path)));
    ASSERT_EQ(ready.size(), 3);
    EXPECT_FALSE(QFile::exists(ready[0].second));
    EXPECT_EQ(cache.cachedFile(url(u"/a.png"_s)), QString());
    EXPECT_EQ(cache.totalBytes(), 600);

    // Another run finds the files; with a lower bound it keeps the newest.
    QFile b(ready[1].second);
    ASSERT_TRUE(b.open(QIODevice::ReadWrite));
    ASSERT_TRUE(
        b.setFileTime(QDateTime::currentDateTime().addSecs(-3600), QFileDevice::FileModificationTime));
    b.close();
    FaviconCache later(cache.folder());
    EXPECT_EQ(later.cachedFile(url(u"/b.png"_s)), ready[1].second);
    limits.maxTotalBytes = 300;
    FaviconCache smaller(cache.folder());
    smaller.setLimits(limits);
    EXPECT_EQ(smaller.cachedFile(url(u"/b.png"_s)), QString());
    EXPECT_EQ(smaller.cachedFile(url(u"/c.png"_s)), ready[2].second);
    EXPECT_EQ(smaller.totalBytes(), 300);
}

} // namespace
