#include "recorder/streamconnection.h"

#include "recorder/icystream.h"
#include "support/eventwait.h"
#include "support/icyserver.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int Wait = 15000;

class StreamConnectionTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { IcyServer::trustTestAuthority(); }
    void SetUp() override
    {
        QObject::connect(&connection, &StreamConnection::dataReceived, &connection,
                         [this](const QByteArray &bytes) { received += bytes; });
        QObject::connect(&connection, &StreamConnection::statusChanged, &connection,
                         [this](const QString &text) { statuses << text; });
    }
    void open(const QString &url) { connection.open(ParseAddress(url)); }
    // Waits for the connection to give up; its reason, or "(still going)".
    QString failure()
    {
        if (!failed.wait(Wait))
            return u"(still going)"_s;
        return failed.first().first().toString();
    }
    bool receivedAtLeast(qsizetype bytes)
    {
        return waitUntil([&] { return received.size() >= bytes; }, Wait);
    }
    StreamConnection connection{StreamConnection::Timing{1000ms, {50ms, 100ms, 150ms}}};
    QSignalSpy failed{&connection, &StreamConnection::failed};
    QSignalSpy interrupted{&connection, &StreamConnection::interrupted};
    QByteArray received;
    QStringList statuses;
};

TEST_F(StreamConnectionTest, RedirectsAreFollowedWithTheSameRequest)
{
    IcyServer station, secure, front;
    station.songs = secure.songs = {{"Song", 50}};
    ASSERT_TRUE(station.start());
    ASSERT_TRUE(secure.startTls(u"localhost"_s));
    front.pages["/moved"] = IcyServer::redirect(station.url());
    front.pages["/relative"] = IcyServer::redirect(u"/moved"_s);
    front.pages["/secure"] = IcyServer::redirect(secure.url(u"/live?x=1"_s));
    front.pages["/loop"] = IcyServer::redirect(u"/loop"_s);
    front.pages["/ftp"] = IcyServer::redirect(u"ftp://127.0.0.1/stream"_s);
    ASSERT_TRUE(front.start());
    const QString ftpRefused =
        u"Radio Station redirected to an address that cannot be recorded: ftp://127.0.0.1/stream"_s;
    const struct
    {
        QString path;
        IcyServer *target;
        QString request, reason;
    } rows[] = {{u"/moved"_s, &station, station.url(), {}},
                {u"/relative"_s, &station, station.url(), {}},
                {u"/secure"_s, &secure, secure.url(u"/live?x=1"_s), {}},
                {u"/loop"_s, nullptr, {}, u"Radio Station redirected more than 5 times."_s},
                {u"/ftp"_s, nullptr, {}, ftpRefused}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.path.toStdString());
        received.clear();
        failed.clear();
        const int clients = row.target ? row.target->clientCount() : 0;
        open(front.url(row.path));
        if (row.target) {
            ASSERT_TRUE(receivedAtLeast(8000));
            EXPECT_TRUE(received.startsWith("ICY 200 OK\r\n"));
            EXPECT_EQ(row.target->sent(clients).request, BuildRequest(ParseAddress(row.request)));
            EXPECT_TRUE(statuses.contains(u"Redirected to: "_s + ParseAddress(row.request).url()));
            connection.close();
        } else {
            EXPECT_EQ(failure(), row.reason);
        }
    }
    EXPECT_EQ(front.clientCount(), 4 + 6 + 1) << "a loop is left after five redirects";
}

TEST_F(StreamConnectionTest, CertificatesAreCheckedAgainstTheTrustedAuthorities)
{
    const struct
    {
        QString certificate, problem;
    } rows[] = {{u"localhost"_s, {}}, {u"expired"_s, u"expired"_s}, {u"otherhost"_s, u"host name"_s}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.certificate.toStdString());
        IcyServer server;
        server.songs = {{"Song", 50}};
        ASSERT_TRUE(server.startTls(row.certificate));
        received.clear();
        failed.clear();
        open(server.url());
        if (row.problem.isEmpty()) {
            ASSERT_TRUE(receivedAtLeast(8000));
            EXPECT_EQ(server.sent(0).audio.left(1000), received.mid(received.indexOf("\r\n\r\n") + 4, 1000));
            connection.close();
        } else {
            const QString reason = failure();
            EXPECT_TRUE(reason.startsWith(u"Secure connection refused: "_s)) << reason.toStdString();
            EXPECT_TRUE(reason.contains(row.problem)) << reason.toStdString();
            EXPECT_TRUE(received.isEmpty());
        }
    }
}

TEST_F(StreamConnectionTest, AStationThatDropsIsReconnectedUntilTheTriesRunOut)
{
    IcyServer server;
    server.songs = {{"Song", 1000}};
    // Two intervals per connection: too little for the count of tries to start afresh.
    server.dropAfter = 2;
    ASSERT_TRUE(server.start());
    open(server.url());
    EXPECT_EQ(failure(), u"Radio Station could not be reached again after 3 tries. "_s +
                             StreamConnection::TextClosedByStation);
    EXPECT_EQ(server.clientCount(), 4);
    EXPECT_EQ(interrupted.size(), 4);
    for (int client = 1; client < 4; ++client)
        EXPECT_EQ(server.sent(client).request, server.sent(0).request);
    EXPECT_TRUE(statuses.contains(u"Reconnecting... (try 3 of 3)"_s));
    EXPECT_EQ(received.count("ICY 200 OK"), 4);
}

TEST_F(StreamConnectionTest, AReconnectionThatStreamsStartsTheTriesAfreshAndAStallCountsAsADrop)
{
    IcyServer server;
    server.songs = {{"Song", 1000}};
    server.dropAfter = 10; // 80000 bytes: a steady stream
    ASSERT_TRUE(server.start());
    open(server.url());
    ASSERT_TRUE(waitUntil([&] { return server.clientCount() >= 5; }, Wait));
    const QStringList reconnecting = statuses.filter(u"Reconnecting"_s);
    EXPECT_EQ(QSet<QString>(reconnecting.begin(), reconnecting.end()),
              QSet<QString>{u"Reconnecting... (try 1 of 3)"_s});
    // Now it falls silent after each interval, and at last stops answering.
    server.dropAfter = 0;
    server.stallAfter = 1;
    ASSERT_TRUE(waitUntil([&] { return statuses.contains(u"Reconnecting... (try 2 of 3)"_s); }, Wait));
    server.stopListening();
    EXPECT_EQ(failure(), u"Radio Station could not be reached again after 3 tries. "_s +
                             StreamConnection::TextNoConnection);
    EXPECT_TRUE(statuses.contains(u"Reconnecting... (try 3 of 3)"_s));
}

TEST_F(StreamConnectionTest, OnlyAudioIsTakenAndARefusalSaysWhatKindItIs)
{
    using Failure = StreamConnection::Failure;
    IcyServer front, badInterval;
    const QByteArray page = "<!DOCTYPE html>\n<html><body>Station moved</body></html>";
    front.pages["/typed"] = "HTTP/1.0 200 OK\r\nContent-Type: text/html; charset=utf-8\r\n\r\n<p>x</p>";
    front.pages["/plain"] = "ICY 200 OK\r\ncontent-type:TEXT/plain\r\n\r\nhello";
    front.pages["/sniffed"] = "HTTP/1.0 200 OK\r\nContent-Type: audio/mpeg\r\n\r\n \r\n" + page;
    front.pages["/marked"] = "HTTP/1.0 200 OK\r\n\r\n\xEF\xBB\xBF<HTML><head></head></HTML>";
    front.pages["/huge"] = "ICY 200 OK\r\nicy-metaint:2147483648\r\n\r\n" + QByteArray(100, 'a');
    // Audio may begin with any byte, "<" too.
    front.pages["/audio"] = "ICY 200 OK\r\ncontent-type:audio/mpeg\r\n\r\n<ht\xff\xfb audio";
    badInterval.songs = {{"Song", 50}};
    badInterval.announcedInterval = "abc";
    ASSERT_TRUE(front.start());
    ASSERT_TRUE(badInterval.start());
    const QString webPage = StreamConnection::textWebPage();
    const struct
    {
        QString url, reason;
        Failure kind;
    } rows[] = {{front.url(u"/typed"_s), webPage, Failure::NotAudio},
                {front.url(u"/plain"_s), webPage, Failure::NotAudio},
                {front.url(u"/sniffed"_s), webPage, Failure::NotAudio},
                {front.url(u"/marked"_s), webPage, Failure::NotAudio},
                {front.url(u"/huge"_s), IcyStream::intervalProblem(u"2147483648"), Failure::BadHeader},
                {badInterval.url(), IcyStream::intervalProblem(u"abc"), Failure::BadHeader},
                {front.url(u"/missing.pls"_s), u"Radio Station answered: HTTP/1.0 404 Not Found"_s,
                 Failure::Unreachable},
                {front.url(u"/audio"_s), {}, Failure::Unreachable}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.url.toStdString());
        received.clear();
        failed.clear();
        open(row.url);
        if (row.reason.isEmpty()) {
            ASSERT_TRUE(receivedAtLeast(50));
            EXPECT_TRUE(received.endsWith("\r\n\r\n<ht\xff\xfb audio"));
            connection.close();
            continue;
        }
        EXPECT_EQ(failure(), row.reason);
        ASSERT_EQ(failed.size(), 1);
        EXPECT_EQ(failed.first().at(1).value<Failure>(), row.kind);
        EXPECT_TRUE(received.isEmpty()) << "nothing of a refused answer is recorded";
    }
}

TEST_F(StreamConnectionTest, EveryWaitForTheStationHasABound)
{
    // Long enough that silence is never what ends these waits.
    StreamConnection bounded{StreamConnection::Timing{5000ms, {50ms}, 300ms, 300ms}};
    QSignalSpy boundedFailed(&bounded, &StreamConnection::failed);
    IcyServer silent, trickling, mute;
    silent.silentPages = {"/stream"};
    // A header that would take about two seconds to arrive.
    trickling.fault = IcyServer::Fault::SlowHeader;
    trickling.bytesPerSecond = 100;
    trickling.songs = {{"Song", 50}};
    // A header, then nothing: the script has no audio.
    ASSERT_TRUE(silent.start());
    ASSERT_TRUE(trickling.start());
    ASSERT_TRUE(mute.start());
    const QString noAnswer = u"Radio Station did not answer within 1 s."_s;
    const struct
    {
        IcyServer *station;
        QString reason;
    } rows[] = {{&silent, noAnswer},
                {&trickling, noAnswer},
                {&mute, u"Radio Station answered but sent no audio within 1 s."_s}};
    for (const auto &row : rows) {
        boundedFailed.clear();
        bounded.open(ParseAddress(row.station->url()));
        ASSERT_TRUE(boundedFailed.wait(Wait));
        EXPECT_EQ(boundedFailed.first().at(0).toString(), row.reason);
        EXPECT_EQ(boundedFailed.first().at(1).value<StreamConnection::Failure>(),
                  StreamConnection::Failure::Unreachable);
    }
}

} // namespace
