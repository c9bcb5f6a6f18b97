#include "catalogue/filedl.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>

#include <gtest/gtest.h>

namespace {

// A small HTTP server on 127.0.0.1 that answers by path.
class HttpResponder : public QObject
{
public:
    HttpResponder()
    {
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
        });
        m_server.listen(QHostAddress::LocalHost);
    }

    QUrl url(const char *path) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(QLatin1StringView(path)));
    }

private:
    void answer(QTcpSocket *socket)
    {
        QByteArray &request = m_requests[socket];
        request += socket->readAll();
        if (!request.contains("\r\n\r\n"))
            return;
        const QByteArray path = request.split(' ').value(1);
        QByteArray response;
        if (path == "/one" || path == "/two")
            response = "HTTP/1.0 200 OK\r\nContent-Length: 8\r\n\r\nbody " + path.mid(1);
        else if (path == "/moved")
            response = "HTTP/1.0 302 Found\r\nLocation: /one\r\nContent-Length: 0\r\n\r\n";
        else if (path == "/empty")
            response = "HTTP/1.0 200 OK\r\nContent-Length: 0\r\n\r\n";
        else
            response = "HTTP/1.0 404 Not Found\r\nContent-Length: 9\r\n\r\nnot found";
        socket->write(response);
        socket->disconnectFromHost();
    }

    QTcpServer m_server;
    QHash<QTcpSocket *, QByteArray> m_requests;
};

class FileDLTest : public ::testing::Test
{
protected:
    HttpResponder server;
    FileDL dl;
    QSignalSpy completed{&dl, &FileDL::DownloadComplete};
    QSignalSpy failed{&dl, &FileDL::DownloadError};

    void waitForEnds(int count)
    {
        for (int i = 0; i < 50 && completed.size() + failed.size() < count; ++i)
            completed.wait(100);
        ASSERT_EQ(completed.size() + failed.size(), count);
    }
};

TEST_F(FileDLTest, TwoDownloadsAtOnceComeBackByKey)
{
    QSignalSpy progress(&dl, &FileDL::DownloadProgress);
    dl.BeginDownload(server.url("/one"), QStringLiteral("K1"));
    dl.BeginDownload(server.url("/moved"), QStringLiteral("K2"));
    dl.BeginDownload(server.url("/two"), QStringLiteral("K3"));
    dl.Cancel(QStringLiteral("K3"));
    waitForEnds(2);
    QHash<QString, QByteArray> bodies;
    for (const QList<QVariant> &args : completed)
        bodies.insert(args[0].toString(), args[1].toByteArray());
    EXPECT_EQ(bodies.value(QStringLiteral("K1")), "body one");
    EXPECT_EQ(bodies.value(QStringLiteral("K2")), "body one");
    EXPECT_FALSE(bodies.contains(QStringLiteral("K3")));
    EXPECT_FALSE(dl.IsRunning(QStringLiteral("K1")));
    ASSERT_FALSE(progress.isEmpty());
    EXPECT_EQ(progress.last()[4].toString(), u"Download In Progress.");
}

TEST_F(FileDLTest, FailuresEndAsErrors)
{
    QTcpServer closed;
    closed.listen(QHostAddress::LocalHost);
    const quint16 deadPort = closed.serverPort();
    closed.close();
    dl.BeginDownload(server.url("/missing"), QStringLiteral("404"));
    dl.BeginDownload(server.url("/empty"), QStringLiteral("empty"));
    dl.BeginDownload(QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(deadPort)), QStringLiteral("refused"));
    waitForEnds(3);
    EXPECT_TRUE(completed.isEmpty());
    for (const QList<QVariant> &args : failed) {
        EXPECT_EQ(args[1].toInt(), 0) << args[0].toString().toStdString();
        EXPECT_EQ(args[2].toString(), u"An Error Has Occurred.");
    }
}

TEST(FileDLStatus, TextsByCode)
{
    EXPECT_EQ(FileDL::GetStatusCode(6), u"Download Complete.");
    EXPECT_EQ(FileDL::GetStatusCode(16), u"Synchronous Download Complete.");
    EXPECT_EQ(FileDL::GetStatusCode(12), u"Unknown.");
    EXPECT_EQ(FileDL::GetStatusCode(-1), u"Unknown.");
}

} // namespace
