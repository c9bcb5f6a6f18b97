#include "recorder/icystream.h"

#include "recorder/icystreamhost.h"

#include <QStringList>

#include <gtest/gtest.h>

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
        calls << QStringLiteral("write %1%2%3")
                     .arg(QString::fromLatin1(data.first(std::min<qsizetype>(3, data.size()))))
                     .arg(flush ? QStringLiteral(" flush") : QString())
                     .arg(writeEnabled ? QString() : QStringLiteral(" disabled"));
    }
    void NewSong(const QString &t) override
    {
        calls << QStringLiteral("song ") + t;
        fileOpen = true;
    }
    bool IsFileOpen() const override { return fileOpen; }
    void SwitchToContinuous() override
    {
        calls << QStringLiteral("continuous");
        fileOpen = true;
    }

    QString title, stream, genre, linkA, linkB, scan;
    bool waitShown = false;
    bool writeEnabled = false;
    bool fileOpen = true;
    QByteArray written;
    QStringList calls;
};

QByteArray header(int metaint)
{
    return "ICY 200 OK\r\nicy-name: Radio X \r\nIcy-Genre:Wrong\r\nicy-genre:Jazz\r\nicy-url:http://x.example\r\n"
           "icy-br:128\r\nicy-metaint:" +
           QByteArray::number(metaint) + "\r\n\r\n";
}

// An audio interval whose first bytes name it.
QByteArray interval(const char *name, int m)
{
    return QByteArray(name).leftJustified(m, '.');
}

// A metadata block with its length byte, padded with zeros to whole 16s.
QByteArray block(const QByteArray &text)
{
    const qsizetype units = (text.size() + 15) / 16;
    return char(units) + text.leftJustified(units * 16, '\0');
}

class IcyStreamTest : public ::testing::Test
{
protected:
    void start(int metaint)
    {
        icy.OnData(header(metaint));
        ASSERT_TRUE(icy.HeaderDone());
    }
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
    EXPECT_EQ(icy.StationUrl(), u"http://x.example");
    EXPECT_TRUE(host.calls.isEmpty());
}

TEST_F(IcyStreamTest, AudioAfterTheHeaderCountsTowardsTheFirstInterval)
{
    feed(header(8) + "AAAAA");
    feed("AAA" + QByteArray(1, '\0') + "BB");
    EXPECT_EQ(host.calls, QStringList{QStringLiteral("write AAA disabled")});
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
    EXPECT_EQ(host.calls, (QStringList{QStringLiteral("write A.. disabled"), QStringLiteral("write B.. disabled")}));
    EXPECT_EQ(icy.ReceiveBufferLength(), 0);
}

TEST_F(IcyStreamTest, NewTitleSplitsWithTheIntervalInBothFiles)
{
    start(8);
    feed(interval("A", 8) + block("StreamTitle='Song One';StreamUrl='http://s.example';"));
    feed(interval("B", 8) + block("StreamTitle='Song One';"));
    feed(interval("C", 8) + block("StreamTitle='Song Two';"));
    EXPECT_EQ(host.calls, (QStringList{QStringLiteral("write A.. flush"), QStringLiteral("song Song One"),
                                       QStringLiteral("write A.."), QStringLiteral("write B.."),
                                       QStringLiteral("write C.. flush"), QStringLiteral("song Song Two"),
                                       QStringLiteral("write C..")}));
    EXPECT_EQ(host.linkB, u"http://s.example");
    EXPECT_EQ(icy.MetaBlocks(), 3);
    EXPECT_EQ(icy.BytesTotal(), 24);
    EXPECT_EQ(icy.LastText(), QString::fromLatin1(block("StreamTitle='Song Two';").mid(1)));
}

TEST_F(IcyStreamTest, MetadataValuesAreCutAndStripped)
{
    const struct {
        const char *text;
        const char *title;
    } rows[] = {
        {"StreamTitle='It''s';", "Its"},
        {"StreamTitle='A=B';", "A"},
        {"STREAMTITLE=' Spaced ';", "Spaced"},
        {"junk;StreamTitle='Late';", ""},
        {" StreamTitle='Key with a blank';", ""},
        {"StreamUrl='u';StreamTitle='Second';", "Second"},
    };
    for (const auto &row : rows) {
        host.title.clear();
        icy.SetLastText(QString::fromLatin1(row.text));
        EXPECT_EQ(icy.ParseMetadata(), *row.title != 0) << row.text;
        EXPECT_EQ(host.title, QString::fromLatin1(row.title)) << row.text;
    }
}

TEST_F(IcyStreamTest, CleanTextIsTheNarrowRange)
{
    EXPECT_TRUE(IcyStream::IsCleanText(QByteArrayView("StreamTitle='A - z';\r\n\0\0", 24)));
    for (const char bad : {'{', '|', '~', '\x7f', '\x01', '\xe9'})
        EXPECT_FALSE(IcyStream::IsCleanText(QByteArray("ok").append(bad))) << int(bad);
    EXPECT_FALSE(IcyStream::IsCleanText(QStringLiteral("Caf\u00e9")));
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

TEST_F(IcyStreamTest, ResyncDropsTheBytesBeforeTheNextTitle)
{
    start(32);
    // Five stray bytes put a byte of audio where the length byte should be.
    feed(QByteArray(5, '\x01') + QByteArray(32, '\x01') + block("StreamTitle='T';"));
    EXPECT_EQ(icy.ResyncState(), IcyStream::ResyncLost);
    EXPECT_TRUE(host.calls.isEmpty());
    feed({});
    EXPECT_EQ(icy.ResyncState(), 0);
    EXPECT_EQ(icy.ResyncCount(), 1);
    EXPECT_EQ(icy.DiscardedBytes(), 5);
    EXPECT_EQ(host.written, QByteArray(32, '\x01').repeated(2));
    EXPECT_EQ(host.title, u"T");
}

TEST_F(IcyStreamTest, AccentedTitleIsLostButTheNextBlockIsFoundAgain)
{
    start(32);
    const QByteArray rejected = interval("A", 32) + block("StreamTitle='Caf\xe9';");
    feed(rejected + interval("B", 32) + block("StreamTitle='Next';"));
    EXPECT_EQ(icy.ResyncState(), IcyStream::ResyncLost);
    EXPECT_EQ(icy.ReceiveBufferLength(), rejected.size() + 32 + 33);
    feed({}, 2);
    EXPECT_EQ(icy.ResyncState(), 0);
    EXPECT_EQ(icy.ResyncCount(), 1);
    EXPECT_EQ(icy.DiscardedBytes(), rejected.size());
    EXPECT_EQ(host.calls, (QStringList{QStringLiteral("write B.. flush"), QStringLiteral("song Next"),
                                       QStringLiteral("write B..")}));
}

TEST_F(IcyStreamTest, SongScanHoldsWritingUntilTheTitleMatches)
{
    host.scan = QStringLiteral("beatles");
    start(8);
    feed(interval("A", 8) + block("StreamTitle='Queen - Flash';"));
    EXPECT_TRUE(host.waitShown);
    feed(interval("B", 8) + block("StreamTitle='The BEATLES - Help';"));
    EXPECT_FALSE(host.waitShown);
    EXPECT_TRUE(host.writeEnabled);
    EXPECT_EQ(host.calls[0], u"write A.. flush disabled");
    EXPECT_EQ(host.calls[3], u"write B.. flush");
}

TEST_F(IcyStreamTest, StationWithoutTitlesSwitchesToOneFile)
{
    host.fileOpen = false;
    start(8);
    feed(interval("A", 8) + block("StreamTitle='';"));
    feed(interval("B", 8) + block("StreamTitle='';"));
    EXPECT_EQ(host.calls, (QStringList{QStringLiteral("write A.. disabled"), QStringLiteral("continuous"),
                                       QStringLiteral("write B.. disabled")}));
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
    EXPECT_EQ(host.calls, QStringList{QStringLiteral("write xxx flush disabled")});
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
