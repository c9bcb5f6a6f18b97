#include "catalogue/filedl.h"

#include "support/icyserver.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class FileDLTest : public ::testing::Test
{
public:
    void SetUp() override
    {
        server.pages["/one"] = IcyServer::page("body one");
        server.pages["/two"] = IcyServer::page("body two");
        server.pages["/moved"] = "HTTP/1.0 302 Found\r\nLocation: /one\r\nContent-Length: 0\r\n\r\n";
        server.pages["/empty"] = IcyServer::page({});
        ASSERT_TRUE(server.start());
    }
    void begin(const QString &path, const QString &key) { dl.BeginDownload(QUrl(server.url(path)), key); }
    void waitForEnds(int count)
    {
        for (int i = 0; i < 50 && completed.size() + failed.size() < count; ++i)
            completed.wait(100);
        ASSERT_EQ(completed.size() + failed.size(), count);
    }
    // The completed downloads' bodies by key.
    QHash<QString, QByteArray> bodies() const
    {
        QHash<QString, QByteArray> byKey;
        for (const QList<QVariant> &args : completed)
            byKey.insert(args[0].toString(), args[1].toByteArray());
        return byKey;
    }
    IcyServer server;
    FileDL dl;
    QSignalSpy completed{&dl, &FileDL::DownloadComplete};
    QSignalSpy failed{&dl, &FileDL::DownloadError};
};

TEST_F(FileDLTest, TwoDownloadsAtOnceComeBackByKey)
{
    QSignalSpy progress(&dl, &FileDL::DownloadProgress);
    begin(u"/one"_s, u"K1"_s);
    begin(u"/moved"_s, u"K2"_s);
    begin(u"/two"_s, u"K3"_s);
    dl.Cancel(u"K3"_s);
    waitForEnds(2);
    EXPECT_EQ(bodies(), (QHash<QString, QByteArray>{{u"K1"_s, "body one"}, {u"K2"_s, "body one"}}));
    ASSERT_FALSE(progress.isEmpty());
    EXPECT_EQ(progress.last()[4].toString(), u"Download In Progress.");
}

TEST_F(FileDLTest, SecureAddressesAreFetchedWhenTheirCertificateHolds)
{
    IcyServer::trustTestAuthority();
    IcyServer secure, expired;
    secure.pages["/list.pls"] = IcyServer::page("secure body");
    expired.pages["/list.pls"] = IcyServer::page("never read");
    ASSERT_TRUE(secure.startTls(u"localhost"_s));
    ASSERT_TRUE(expired.startTls(u"expired"_s));
    server.pages["/to-secure"] = IcyServer::redirect(secure.url(u"/list.pls"_s));
    dl.BeginDownload(QUrl(secure.url(u"/list.pls"_s)), u"direct"_s);
    begin(u"/to-secure"_s, u"redirected"_s);
    dl.BeginDownload(QUrl(expired.url(u"/list.pls"_s)), u"expired"_s);
    waitForEnds(3);
    EXPECT_EQ(bodies(),
              (QHash<QString, QByteArray>{{u"direct"_s, "secure body"}, {u"redirected"_s, "secure body"}}));
    ASSERT_EQ(failed.size(), 1);
    EXPECT_EQ(failed.first().first().toString(), u"expired"_s);
}

TEST_F(FileDLTest, FailuresEndAsErrors)
{
    begin(u"/missing.pls"_s, u"404"_s);
    begin(u"/empty"_s, u"empty"_s);
    dl.BeginDownload(QUrl(u"http://127.0.0.1:%1/"_s.arg(IcyServer::refusedPort())), u"refused"_s);
    waitForEnds(3);
    EXPECT_TRUE(completed.isEmpty());
    for (const QList<QVariant> &args : failed) {
        EXPECT_EQ(args[1].toInt(), 0) << args[0].toString().toStdString();
        EXPECT_EQ(args[2].toString(), u"An Error Has Occurred.");
    }
}

TEST_F(FileDLTest, ADownloadEndsAtItsSizeOrTimeLimitAndSaysWhich)
{
    using namespace std::chrono_literals;
    const qint64 limit = 64 * 1024;
    dl.setLimits(limit, 500ms);
    server.pages["/exact"] = IcyServer::page(QByteArray(limit, 'x'));
    server.pages["/over"] = IcyServer::page(QByteArray(limit + 1, 'x'));
    server.endlessPages = {"/endless.pls"};
    server.silentPages = {"/silent.pls"};
    begin(u"/exact"_s, u"exact"_s);
    begin(u"/over"_s, u"over"_s);
    begin(u"/endless.pls"_s, u"endless"_s);
    begin(u"/silent.pls"_s, u"silent"_s);
    waitForEnds(4);
    EXPECT_EQ(bodies().keys(), QList<QString>{u"exact"_s});
    EXPECT_EQ(bodies().value(u"exact"_s).size(), limit);
    QHash<QString, QString> errors;
    for (const QList<QVariant> &args : failed)
        errors.insert(args[0].toString(), args[2].toString());
    const QString tooLarge = u"The download is larger than 64 KB."_s;
    EXPECT_EQ(errors, (QHash<QString, QString>{{u"over"_s, tooLarge},
                                               {u"endless"_s, tooLarge},
                                               {u"silent"_s, u"The download did not finish within 1 s."_s}}));
}

} // namespace
