#include "recorder/icystream.h"

#include "recorder/icystreamhost.h"
#include "support/icyserver.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// Stands in for the recorder window: keeps its labels and logs every output call.
class RecordingHost : public IcyStreamHost
{
public:
    QString ShownTitle() const override { return title; }
    void ShowTitle(const QString &t) override { title = t; }
    void ShowStreamText(const QString &text) override { stream = text; }
    void ShowGenre(const QString &g) override { genre = g; }
    void SetHyperlinkA(const QString &url) override { linkA = url; }
    void SetHyperlinkB(const QString &url) override { linkB = url; }
    QString ScanSongText() const override { return scan; }
    void ShowWaitScan(bool visible) override { waitShown = visible; }
    void SetWriteEnabled(bool enabled) override { writeEnabled = enabled; }
    void WriteToDisk(QByteArrayView data, bool flush) override
    {
        written.append(data);
        calls << u"write "_s + QString::fromLatin1(data.first(std::min<qsizetype>(3, data.size()))) +
                     (flush ? u" flush"_s : QString()) + (writeEnabled ? QString() : u" disabled"_s);
    }
    void NewSong(const QString &t) override { calls << u"song "_s + t; }
    bool IsFileOpen() const override { return true; }
    void SwitchToContinuous() override { calls << u"continuous"_s; }

    QString title, stream, genre, linkA, linkB, scan;
    bool waitShown = false;
    bool writeEnabled = false;
    QByteArray written;
    QStringList calls;
};

QByteArray header(int metaint)
{
    return "ICY 200 OK\r\nicy-name: Radio X "
           "\r\nIcy-Genre:Wrong\r\nicy-genre:Jazz\r\nicy-url:http://x.example\r\n"
           "icy-br:128\r\nicy-metaint:" +
           QByteArray::number(metaint) + "\r\n\r\n";
}

// An audio interval whose first bytes name it.
QByteArray interval(const char *name, int m)
{
    return QByteArray(name).leftJustified(m, '.');
}

QByteArray block(const QByteArray &text)
{
    return IcyServer::metadataBlock(text);
}

class IcyStreamTest : public ::testing::Test
{
protected:
    void start(int metaint)
    {
        icy.OnData(header(metaint));
        ASSERT_TRUE(icy.HeaderDone());
    }
    // One packet, then events without data: each event takes one step.
    void feed(const QByteArray &bytes, int events = 1)
    {
        icy.OnData(bytes);
        for (int i = 1; i < events; ++i)
            icy.OnData({});
    }

    RecordingHost host;
    IcyStream icy{host};
};

TEST_F(IcyStreamTest, HeaderSplitAcrossPacketsIsConsumedWhenItsEndArrives)
{
    const QByteArray whole = header(8);
    icy.OnData(whole.left(whole.size() - 1));
    EXPECT_FALSE(icy.HeaderDone());
    feed(whole.right(1) + "AUD");
    EXPECT_TRUE(icy.HeaderDone());
    EXPECT_EQ(icy.HeaderText(), QString::fromLatin1(whole));
    EXPECT_EQ(icy.ReceiveBuffer(), QByteArrayView("AUD"));
    EXPECT_EQ(icy.MetaInterval(), 8);
    EXPECT_EQ(icy.Bitrate(), 128);
    EXPECT_EQ(host.stream, u"Radio X");
    EXPECT_EQ(host.genre, u"Jazz");
    EXPECT_EQ(host.linkA, u"http://x.example");
    EXPECT_TRUE(host.calls.isEmpty());
}

TEST_F(IcyStreamTest, AudioAfterTheHeaderCountsTowardsTheFirstInterval)
{
    feed(header(8) + "AAAAA");
    feed("AAA" + QByteArray(1, '\0') + "BB");
    EXPECT_EQ(host.calls, QStringList{u"write AAA disabled"_s});
    EXPECT_EQ(host.written, "AAAAAAAA");
    EXPECT_EQ(icy.ReceiveBuffer(), QByteArrayView("BB"));
    EXPECT_EQ(icy.BytesTotal(), 8);
    EXPECT_EQ(icy.MetaBlocks(), 0);
}

TEST_F(IcyStreamTest, TwoIntervalsInOnePacketTakeTwoEvents)
{
    start(8);
    const QByteArray zero(1, '\0');
    feed(interval("A", 8) + zero + interval("B", 8) + zero);
    EXPECT_EQ(host.calls.size(), 1);
    icy.OnData({});
    EXPECT_EQ(host.calls, (QStringList{u"write A.. disabled"_s, u"write B.. disabled"_s}));
    EXPECT_EQ(icy.ReceiveBufferLength(), 0);
}

TEST_F(IcyStreamTest, MetadataValuesAreCutAndStripped)
{
    const struct
    {
        const char *text, *title, *link;
    } rows[] = {
        {"StreamTitle='It''s';", "Its", ""},
        {"StreamTitle='A=B';", "A", ""},
        {"STREAMTITLE=' Spaced ';", "Spaced", ""},
        {"junk;StreamTitle='Late';", "", ""},
        {" StreamTitle='Key with a blank';", "", ""},
        {"StreamUrl='http://s.example';StreamTitle='Second';", "Second", "http://s.example"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        host.title.clear();
        icy.SetLastText(QString::fromLatin1(row.text));
        EXPECT_EQ(icy.ParseMetadata(), *row.title != 0);
        EXPECT_EQ(host.title, QString::fromLatin1(row.title));
        EXPECT_EQ(host.linkB, QString::fromLatin1(row.link));
    }
}

TEST_F(IcyStreamTest, CleanTextIsTheNarrowRange)
{
    EXPECT_TRUE(IcyStream::IsCleanText(QByteArrayView("StreamTitle='A - z';\r\n\0\0", 24)));
    for (const char bad : {'{', '|', '~', '\x7f', '\x01', '\xe9'})
        EXPECT_FALSE(IcyStream::IsCleanText(QByteArray("ok").append(bad))) << int(bad);
    EXPECT_FALSE(IcyStream::IsCleanText(u"Caf\u00e9"_s));
}

TEST_F(IcyStreamTest, BlockMissingOnlyItsLastByteIsTakenShort)
{
    start(8);
    const QByteArray full = interval("A", 8) + block("StreamTitle='X';");
    feed(full.left(full.size() - 2));
    EXPECT_EQ(icy.MetaBlocks(), 0);
    feed(full.mid(full.size() - 2, 1));
    EXPECT_EQ(icy.MetaBlocks(), 1);
    EXPECT_EQ(host.title, u"X");
    EXPECT_EQ(icy.ReceiveBufferLength(), 0);
    // The block's last byte arrives as the next interval's first.
    feed(full.right(1));
    EXPECT_EQ(icy.ReceiveBuffer(), QByteArrayView(";"));
}

TEST_F(IcyStreamTest, ResyncDropsTheBytesBeforeTheNextGoodTitle)
{
    const QByteArray rejected = interval("A", 32) + block("StreamTitle='Caf\xe9';");
    const struct
    {
        const char *name;
        QByteArray stream;
        int events; // until the position is found again
        qsizetype discarded;
        QByteArray written;
        const char *title;
    } rows[] = {
        // Five stray bytes put a byte of audio where the length byte should be.
        {"stray bytes", QByteArray(37, '\x01') + block("StreamTitle='T';"), 1, 5, QByteArray(64, '\x01'),
         "T"},
        {"accented title", rejected + interval("B", 32) + block("StreamTitle='Next';"), 2, rejected.size(),
         interval("B", 32).repeated(2), "Next"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        RecordingHost fresh;
        IcyStream stream(fresh);
        stream.OnData(header(32));
        stream.OnData(row.stream);
        EXPECT_EQ(stream.ResyncState(), IcyStream::ResyncLost);
        EXPECT_TRUE(fresh.calls.isEmpty());
        for (int i = 0; i < row.events; ++i)
            stream.OnData({});
        EXPECT_EQ(stream.ResyncState(), 0);
        EXPECT_EQ(stream.ResyncCount(), 1);
        EXPECT_EQ(stream.DiscardedBytes(), row.discarded);
        EXPECT_EQ(fresh.written, row.written);
        EXPECT_EQ(fresh.title, QString::fromLatin1(row.title));
    }
}

TEST_F(IcyStreamTest, SongScanHoldsWritingUntilTheTitleMatches)
{
    host.scan = u"beatles"_s;
    start(8);
    feed(interval("A", 8) + block("StreamTitle='Queen - Flash';"));
    EXPECT_TRUE(host.waitShown);
    feed(interval("B", 8) + block("StreamTitle='The BEATLES - Help';"));
    EXPECT_FALSE(host.waitShown);
    EXPECT_EQ(host.calls,
              (QStringList{u"write A.. flush disabled"_s, u"song Queen - Flash"_s, u"write A.. disabled"_s,
                           u"write B.. flush"_s, u"song The BEATLES - Help"_s, u"write B.."_s}));
}

TEST_F(IcyStreamTest, ResetKeepsTheIntervalAndStatisticsFollowThePackets)
{
    start(100000);
    icy.Reset();
    EXPECT_FALSE(icy.HeaderDone());
    EXPECT_EQ(icy.MetaInterval(), 100000);
    EXPECT_EQ(icy.Bitrate(), 0);
    for (const int size : {100, 51, 10})
        feed(QByteArray(size, 'x'));
    EXPECT_EQ(icy.AveragePacket(), 43); // 100, then (51+100)/2 = 75.5 -> 76, then (10+76)/2
    EXPECT_EQ(icy.LargestPacket(), 100);
    EXPECT_EQ(icy.PeakBuffer(), 161);
    icy.FlushRest();
    EXPECT_EQ(host.calls, QStringList{u"write xxx flush disabled"_s});
    EXPECT_EQ(icy.BytesTotal(), 161);
    EXPECT_EQ(icy.ReceiveBufferLength(), 0);
}

TEST_F(IcyStreamTest, ErrorInAStepEndsOnlyThatEvent)
{
    icy.OnData("ICY 200 OK\r\nicy-metaint:-5\r\nicy-br:99999\r\n\r\nAUDIO");
    EXPECT_NO_THROW(icy.OnData("MORE"));
    EXPECT_EQ(icy.Bitrate(), 0);
    EXPECT_EQ(icy.ReceiveBuffer(), QByteArrayView("AUDIOMORE"));
}

TEST_F(IcyStreamTest, LargeBacklogIsConsumedWithoutMovingItPerStep)
{
    const int m = 16000;
    start(m);
    const QByteArray unit = interval("A", m) + char(0);
    const int intervals = 50 * 1000 * 1000 / unit.size();
    feed(unit.repeated(intervals), intervals);
    EXPECT_EQ(icy.BytesTotal(), double(intervals) * m);
    EXPECT_EQ(icy.ReceiveBufferLength(), 0);
    EXPECT_LE(icy.Compactions(), 12);
}

} // namespace
