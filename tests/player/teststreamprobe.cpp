#include "player/streamprobe.h"

#include "support/icyserver.h"

#include <QSignalSpy>
#include <QTcpServer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using Outcome = ProbeReport::Outcome;

// Probes against the scripted station and pages on 127.0.0.1.
class StreamProbeTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        server.songs = {{"Artist - First", 2}, {"Artist - Second", 2}};
        server.repeat = true;
        server.pages["/page.html"] =
            "HTTP/1.0 200 OK\r\nContent-Type: text/html; charset=utf-8\r\n\r\n<html/>";
        server.pages["/none.pls"] = IcyServer::page("[playlist]\r\nnumberofentries=0\r\n");
        server.pages["/moved"] = IcyServer::redirect(u"/stream"_s);
        server.pages["/loop"] = IcyServer::redirect(u"/loop"_s);
        ASSERT_TRUE(server.start());
        // Names the station's own address, known once it listens.
        server.pages["/list.pls"] =
            IcyServer::page("[playlist]\r\nnumberofentries=1\r\nFile1=" + server.url().toUtf8() +
                            "\r\nTitle1=(#1 - 1/100) Loopback\r\nLength1=-1\r\nVersion=2\r\n");
    }
    ProbeReport probe(const QString &address, int limit = 5000)
    {
        StreamProbe prober;
        prober.setTimeLimit(limit);
        QSignalSpy finished(&prober, &StreamProbe::finished);
        prober.start(address);
        EXPECT_TRUE(prober.running());
        EXPECT_TRUE(finished.wait(limit + 2000)) << address.toStdString();
        EXPECT_FALSE(prober.running());
        EXPECT_EQ(finished.count(), 1);
        return finished.isEmpty() ? ProbeReport{} : finished.first().first().value<ProbeReport>();
    }
    IcyServer server;
};

TEST_F(StreamProbeTest, AStationReportsItsFieldsAndFirstTitleThroughRedirectsAndPlaylists)
{
    for (const char *path : {"/stream", "/moved", "/list.pls"}) {
        SCOPED_TRACE(path);
        const ProbeReport report = probe(server.url(QLatin1StringView(path)));
        EXPECT_EQ(report.outcome, Outcome::Stream);
        EXPECT_TRUE(report.reachable());
        EXPECT_TRUE(report.reason().isEmpty());
        EXPECT_EQ(report.address, server.url());
        EXPECT_EQ(report.contentType, u"audio/mpeg"_s);
        EXPECT_EQ(report.bitRate, u"128"_s);
        EXPECT_EQ(report.name, u"Loopback FM"_s);
        EXPECT_EQ(report.genre, u"Test"_s);
        EXPECT_EQ(report.homePage, u"http://station.example/"_s);
        EXPECT_EQ(report.title, u"Artist - First"_s);
    }
    EXPECT_TRUE(server.sent(0).request.contains("Icy-MetaData: 1\r\n"));
    // Without titles, or without metadata at all, the fields still come.
    server.titles = false;
    EXPECT_EQ(probe(server.url()).title, QString());
    server.announceInterval = false;
    const ProbeReport plain = probe(server.url());
    EXPECT_EQ(plain.outcome, Outcome::Stream);
    EXPECT_EQ(plain.name, u"Loopback FM"_s);
}

TEST_F(StreamProbeTest, WhatCannotPlaySaysWhyInPlainWords)
{
    const struct
    {
        QString address;
        Outcome outcome;
        QString reason;
    } rows[] = {
        {u"http://127.0.0.1:%1/x"_s.arg(IcyServer::refusedPort()), Outcome::Unreachable,
         u"Cannot reach 127.0.0.1"_s},
        {server.url(u"/gone.pls"_s), Outcome::HttpError, u"The station answered 404"_s},
        {server.url(u"/page.html"_s), Outcome::NotAudio, u"Not an audio stream"_s},
        {server.url(u"/none.pls"_s), Outcome::EmptyPlaylist, u"The playlist names no stream"_s},
        {server.url(u"/loop"_s), Outcome::HttpError, u"The station answered 302"_s},
        {u"javascript:alert(1)"_s, Outcome::BadAddress, u"Not a station address: javascript:alert(1)"_s},
        {u"file:///etc/passwd"_s, Outcome::BadAddress, u"Not a station address: file:///etc/passwd"_s},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.address.toStdString());
        const ProbeReport report = probe(row.address);
        EXPECT_EQ(report.outcome, row.outcome);
        EXPECT_FALSE(report.reachable());
        EXPECT_EQ(report.reason(), row.reason);
    }
}

TEST_F(StreamProbeTest, AServerThatNeverAnswersEndsAtTheLimit)
{
    EXPECT_EQ(StreamProbe::DefaultLimit, 10000);
    // The system completes the connection; nobody ever reads or answers.
    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost, 0));
    const ProbeReport report = probe(u"http://127.0.0.1:%1/"_s.arg(silent.serverPort()), 300);
    EXPECT_EQ(report.outcome, Outcome::NoAnswer);
    EXPECT_EQ(report.reason(), u"No answer from 127.0.0.1 within 1 s"_s);
    // A stream that names no song in time is still a stream.
    server.titles = false;
    server.bytesPerSecond = 1000;
    EXPECT_EQ(probe(server.url(), 300).outcome, Outcome::Stream);
}

TEST_F(StreamProbeTest, ACancelledOrRestartedProbeReportsOnlyTheLastAddress)
{
    StreamProbe prober;
    QSignalSpy finished(&prober, &StreamProbe::finished);
    prober.start(u"javascript:void(0)"_s);
    prober.start(server.url(u"/page.html"_s));
    ASSERT_TRUE(finished.wait(5000));
    prober.start(u"nonsense"_s);
    prober.cancel();
    QCoreApplication::processEvents(); // where the refusal of the address would be told
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished.first().first().value<ProbeReport>().outcome, Outcome::NotAudio);
}

} // namespace
