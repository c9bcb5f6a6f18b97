#include "recorder/icystream.h"

#include "recorder/icystreamhost.h"
#include "recorder/streamconnection.h"
#include "support/eventwait.h"
#include "support/icyserver.h"
#include "support/memoryprobe.h"

#include <QSet>
#include <QStringList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// Stands in for the recorder window: keeps its labels and logs every output call.
class RecordingHost : public IcyStreamHost
{
public:
    QString shownTitle() const override { return title; }
    void showTitle(const QString &t) override { title = t; }
    void showStreamText(const QString &text) override { stream = text; }
    void showGenre(const QString &g) override { genre = g; }
    void setHyperlinkA(const QString &url) override { linkA = url; }
    void setHyperlinkB(const QString &url) override { linkB = url; }
    QString scanSongText() const override { return scan; }
    void showWaitScan(bool visible) override { waitShown = visible; }
    void setWriteEnabled(bool enabled) override { writeEnabled = enabled; }
    void WriteToDisk(QByteArrayView data, bool flush) override
    {
        if (writeEnabled)
            written.append(data);
        calls << u"write "_s + QString::fromLatin1(data.first(std::min<qsizetype>(3, data.size()))) +
                     (flush ? u" flush"_s : QString()) + (writeEnabled ? QString() : u" disabled"_s);
    }
    void NewSong(const QString &t) override { calls << u"song "_s + t; }
    bool isFileOpen() const override { return fileOpen; }
    void switchToContinuous() override
    {
        fileOpen = true;
        calls << u"continuous"_s;
    }
    QString title, stream, genre, linkA, linkB, scan;
    bool waitShown = false, writeEnabled = false, fileOpen = true;
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

const auto block = IcyServer::metadataBlock;

class IcyStreamTest : public ::testing::Test
{
protected:
    void start(int metaint)
    {
        icy.onData(header(metaint));
        ASSERT_TRUE(icy.HeaderDone());
    }
    // One packet, then events without data: each event takes one step.
    void feed(const QByteArray &bytes, int events = 1)
    {
        icy.onData(bytes);
        for (int i = 1; i < events; ++i)
            icy.onData({});
    }
    RecordingHost host;
    IcyStream icy{host};
};

TEST_F(IcyStreamTest, HeaderSplitAcrossPacketsIsConsumedWhenItsEndArrives)
{
    const QByteArray whole = header(8);
    icy.onData(whole.left(whole.size() - 1));
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

TEST_F(IcyStreamTest, SmallIntervalsTakeOneEventEachAndABacklogIsWorkedOffAtOnce)
{
    feed(header(8) + "AAAAA");
    feed("AAA" + QByteArray(1, '\0') + interval("B", 8) + '\0');
    EXPECT_EQ(icy.BytesTotal(), 8) << "audio after the header counts towards the first interval";
    EXPECT_EQ(icy.receiveBufferLength(), 9);
    icy.onData({});
    EXPECT_EQ(icy.receiveBufferLength(), 0);
    const int m = 16000;
    RecordingHost flooded;
    IcyStream stream(flooded);
    stream.onData(header(m));
    const QByteArray unit = interval("A", m) + char(0);
    const int intervals = 3 * IcyStream::BacklogLimit / unit.size();
    stream.onData(unit.repeated(intervals));
    EXPECT_EQ(stream.receiveBufferLength(), 0);
    EXPECT_EQ(flooded.written.size(), qsizetype(intervals) * m);
}

TEST_F(IcyStreamTest, MetadataValuesAreCutAndStripped)
{
    const struct
    {
        const char *text, *title, *link;
    } rows[] = {{"StreamTitle='It''s';", "Its", ""},
                {"StreamTitle='A=B';", "A", ""},
                {"STREAMTITLE=' Spaced ';", "Spaced", ""},
                {"junk;StreamTitle='Late';", "", ""},
                {" StreamTitle='Key with a blank';", "", ""},
                {"StreamUrl='http://s.example';StreamTitle='Second';", "Second", "http://s.example"},
                // Control characters go; tabs and line breaks become blanks.
                {"StreamTitle='Artist\tName - Song';", "Artist Name - Song", ""},
                {"StreamTitle='\x1b[1m\x01"
                 "Bold\x7f\r\n';",
                 "[1mBold", ""}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        host.title.clear();
        host.linkB.clear();
        icy.setLastText(QString::fromLatin1(row.text));
        EXPECT_EQ(icy.ParseMetadata(), *row.title != 0);
        EXPECT_EQ(host.title, QString::fromLatin1(row.title));
        EXPECT_EQ(host.linkB, QString::fromLatin1(row.link));
    }
}

TEST_F(IcyStreamTest, BlocksAreTakenWhenWellFormedOrClean)
{
    EXPECT_TRUE(IcyStream::IsCleanText(QByteArrayView("StreamTitle='A - z';\r\n\0\0", 24)));
    for (const char bad : {'{', '|', '~', '\x7f', '\x01', '\xe9'})
        EXPECT_FALSE(IcyStream::IsCleanText(QByteArray("ok").append(bad))) << int(bad);
    const struct
    {
        QByteArray block;
        bool wellFormed;
    } rows[] = {{"StreamTitle='Caf\xc3\xa9 {live} | 100%';\0\0\0"_ba, true},
                {"StreamTitle='It's ';' here';StreamUrl='';", true},
                {"StreamTitle='x';", true},
                {"StreamTitle='Artist\tName - Song\x1b';", true},
                {"StreamTitle='\0\x01';"_ba, true},
                {"StreamTitle='x'", false},
                {"StreamTitle='x';junk", false},
                {"StreamTitle='x';\0junk"_ba, false},
                {"Stream Title='x';", false},
                {"='x';", false},
                {QByteArray(16, '\0'), false}};
    for (const auto &row : rows)
        EXPECT_EQ(IcyStream::isWellFormed(row.block), row.wellFormed) << row.block.toStdString();
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
    EXPECT_EQ(icy.receiveBufferLength(), 0);
    // The block's last byte arrives as the next interval's first.
    feed(full.right(1));
    EXPECT_EQ(icy.ReceiveBuffer(), QByteArrayView(";"));
}

TEST_F(IcyStreamTest, ResyncDropsOnlyTheBytesBeforeTheNextGoodBlock)
{
    const int m = 32;
    // Audio of bytes 1 with its name last: a length byte read in the wrong
    // place announces a short block of bytes that no block holds.
    const auto audio = [](char name) -> QByteArray { return QByteArray(m - 1, '\x01') + name; };
    const QByteArray titled = audio('T') + block("StreamTitle='Next';");
    const QByteArray malformed = audio('A') + block("StreamTitle='Cut\x01");
    const struct
    {
        const char *name;
        QByteArray stream;
        qsizetype discarded;
        QByteArray written;
    } rows[] = {
        {"fewer stray bytes than an interval", QByteArray(5, '\x01') + titled, 5, audio('T').repeated(2)},
        {"an interval of stray bytes", QByteArray(m, '\x01') + titled, m, audio('T').repeated(2)},
        {"more than an interval", QByteArray(2 * m + 3, '\x01') + titled, 2 * m + 3, audio('T').repeated(2)},
        // The empty block in front of the title shows where the interval before it began.
        {"a malformed block", malformed + audio('B') + '\0' + titled, malformed.size(),
         audio('B') + audio('T').repeated(2)}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        RecordingHost fresh;
        fresh.title = u"Before"_s;
        fresh.writeEnabled = true;
        IcyStream stream(fresh);
        stream.onData(header(m));
        stream.onData(row.stream);
        EXPECT_EQ(stream.ResyncState(), IcyStream::ResyncLost);
        EXPECT_FALSE(stream.lastTextValid());
        EXPECT_TRUE(fresh.calls.isEmpty());
        stream.onData({});
        EXPECT_EQ(stream.ResyncState(), 0);
        EXPECT_EQ(stream.resyncCount(), 1);
        EXPECT_EQ(stream.discardedBytes(), row.discarded);
        stream.onData({});
        EXPECT_EQ(fresh.written, row.written);
        EXPECT_EQ(fresh.title, u"Next"_s);
    }
}

TEST_F(IcyStreamTest, BlocksThatNeverComeBackGiveTheTitlesUpAndTheRestIsRecordedAsItComes)
{
    host.fileOpen = false;
    start(8000);
    feed(interval("A", 8000) + block("StreamTitle='Cut\x01"));
    ASSERT_EQ(icy.ResyncState(), IcyStream::ResyncLost);
    // Audio that holds no block: only what a coming block could need is held.
    const QByteArray noise(16 * 1024, '\x01');
    for (int i = 0; i < 3; ++i) {
        feed(noise);
        EXPECT_LE(icy.receiveBufferLength(), 8001 + 10 + noise.size());
        EXPECT_FALSE(icy.titlesGivenUp());
    }
    EXPECT_TRUE(host.written.isEmpty());
    // Past 64 KB without a block the station is recorded as plain audio, in one file.
    feed(noise + "late audio");
    EXPECT_TRUE(icy.titlesGivenUp());
    EXPECT_EQ(icy.ResyncState(), 0);
    EXPECT_EQ(host.stream, IcyStream::titlesGivenUpText());
    EXPECT_EQ(host.calls.value(0), u"continuous"_s);
    EXPECT_TRUE(host.written.endsWith("late audio"));
    EXPECT_LE(host.written.size(), 8001 + 10);
    // From here on blocks are audio like the rest.
    const QByteArray rest = interval("B", 8000) + block("StreamTitle='Not read';");
    feed(rest);
    EXPECT_TRUE(host.written.endsWith(QByteArray("late audio" + rest)));
    EXPECT_TRUE(host.title.isEmpty());
    // A new answer is read afresh.
    icy.interrupt();
    feed(header(8) + interval("B", 8) + block("StreamTitle='Back';"), 2);
    EXPECT_FALSE(icy.titlesGivenUp());
    EXPECT_EQ(host.title, u"Back"_s);
}

TEST_F(IcyStreamTest, AStationAtFullSpeedWithControlCharactersInItsTitlesKeepsItsPlaceAndItsMemoryBound)
{
    IcyServer station;
    station.songs = {{"Artist\tName - Song", 1},
                     {"Clean - Title", 1},
                     {"\x01"
                      "Ctrl\x1b - Esc",
                      1}};
    station.repeat = true;
    station.flood = true;
    station.keepSent = false;
    ASSERT_TRUE(station.start());
    StreamConnection connection;
    QSet<QString> titles;
    QObject::connect(&connection, &StreamConnection::dataReceived, &connection, [&](const QByteArray &bytes) {
        icy.onData(bytes);
        titles.insert(host.title);
        host.written.clear(); // the bytes are counted, not kept
    });
    qint64 audio = 0;
    host.writeEnabled = true;
    host.calls.clear();
    HeapPeak heap;
    const qint64 limit = 40 * 1024 * 1024;
    connection.open(ParseAddress(station.url()));
    // Bytes are counted as the parser hands them on; the wait ends early when memory runs away.
    EXPECT_TRUE(waitUntil(
        [&] {
            audio = qint64(icy.BytesTotal());
            return heap.sample() > limit || audio > 200'000'000;
        },
        60000));
    connection.close();
    EXPECT_LT(heap.growth(), limit);
    EXPECT_GT(audio, 200'000'000);
    EXPECT_EQ(icy.resyncCount(), 0);
    EXPECT_EQ(icy.discardedBytes(), 0);
    EXPECT_TRUE(titles.contains(u"Artist Name - Song"_s));
    EXPECT_TRUE(titles.contains(u"Ctrl - Esc"_s));
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
    // A station that names no song records into one file, but never matches a scan.
    RecordingHost untitled;
    untitled.fileOpen = false;
    untitled.scan = u"wanted"_s;
    IcyStream stream(untitled);
    stream.onData(QByteArray("ICY 200 OK\r\n\r\n" + interval("A", 16)));
    stream.onData({});
    EXPECT_EQ(untitled.calls.value(0), u"continuous"_s);
    EXPECT_TRUE(untitled.waitShown);
    EXPECT_TRUE(untitled.written.isEmpty());
}

TEST_F(IcyStreamTest, AHeaderLikeBlockNamesTheSongButCannotMoveTheInterval)
{
    start(8);
    feed(interval("A", 8) + block("icy-name:Header Song\r\nicy-genre:Rock\r\nicy-metaint:2\r\n"));
    EXPECT_EQ(host.title, u"Header Song"_s);
    EXPECT_EQ(icy.MetaInterval(), 8);
    EXPECT_EQ(host.stream, u"Radio X") << "the station's name stays";
    EXPECT_EQ(host.genre, u"Rock");
    EXPECT_EQ(host.calls, (QStringList{u"write A.. flush"_s, u"song Header Song"_s, u"write A.."_s}));
}

TEST_F(IcyStreamTest, StopAndReconnectionFinishWhatIsHeld)
{
    start(8);
    // Three intervals wait, the last block carrying a new title, then half an interval.
    feed(interval("A", 8) + block("StreamTitle='One';") + interval("B", 8) + '\0' + interval("C", 8) +
         block("StreamTitle='Two';") + "DDDD");
    icy.interrupt();
    EXPECT_EQ(host.calls,
              (QStringList{u"write A.. flush"_s, u"song One"_s, u"write A.."_s, u"write B.."_s,
                           u"write C.. flush"_s, u"song Two"_s, u"write C.."_s, u"write DDD flush"_s}));
    EXPECT_EQ(icy.BytesTotal(), 28);
    EXPECT_FALSE(icy.HeaderDone());
    // The new connection tells the same title: the song goes on in the same file.
    host.calls.clear();
    feed(header(8));
    feed(interval("E", 8) + block("StreamTitle='Two';"));
    EXPECT_EQ(host.calls, QStringList{u"write E.."_s});
    EXPECT_EQ(icy.BytesTotal(), 36);
    EXPECT_EQ(icy.MetaBlocks(), 3) << "empty blocks are not counted";
}

TEST_F(IcyStreamTest, ResetKeepsTheIntervalAndStatisticsFollowThePackets)
{
    start(100000);
    icy.reset();
    EXPECT_FALSE(icy.HeaderDone());
    EXPECT_EQ(icy.MetaInterval(), 100000);
    EXPECT_EQ(icy.Bitrate(), 0);
    for (const int size : {100, 51, 10})
        feed(QByteArray(size, 'x'));
    EXPECT_EQ(icy.averagePacket(), 43); // 100, then (51+100)/2 = 75.5 -> 76, then (10+76)/2
    EXPECT_EQ(icy.largestPacket(), 100);
    EXPECT_EQ(icy.peakBuffer(), 161);
    icy.flushRest();
    EXPECT_EQ(host.calls, QStringList{u"write xxx flush disabled"_s});
    EXPECT_EQ(icy.BytesTotal(), 161);
    EXPECT_EQ(icy.receiveBufferLength(), 0);
}

TEST_F(IcyStreamTest, AnIntervalThatIsNotANumberFromOneToOneMegabyteIsABadHeader)
{
    for (const QByteArray interval :
         {"-5", "0", "abc", "8000x", "1048577", "2147483648", "", "1048576", "1"}) {
        SCOPED_TRACE(interval.toStdString());
        const bool good = interval == "1048576" || interval == "1";
        const QByteArray answer = "ICY 200 OK\r\nicy-metaint: " + interval + " \r\nicy-br:99999\r\n\r\n";
        EXPECT_EQ(IcyStream::headerProblem(answer).isEmpty(), good);
        RecordingHost fresh;
        IcyStream stream(fresh);
        stream.onData(QByteArray(answer + "AUDIO"));
        stream.onData(QByteArray(4096, 'x'));
        EXPECT_EQ(stream.Bitrate(), 0) << "a number that does not fit leaves its field";
        EXPECT_EQ(stream.failure(), IcyStream::headerProblem(answer));
        if (good)
            continue;
        EXPECT_TRUE(stream.failure().contains(u'"' + QString::fromLatin1(interval) + u'"'))
            << stream.failure().toStdString();
        EXPECT_EQ(stream.receiveBufferLength(), 0);
        stream.reset();
        EXPECT_TRUE(stream.failure().isEmpty());
    }
    // An answer that never ends is no header either.
    RecordingHost endless;
    IcyStream stream(endless);
    for (int i = 0; i < 20 && stream.failure().isEmpty(); ++i)
        stream.onData(QByteArray("icy-notice:x\r\n").repeated(1000));
    EXPECT_FALSE(stream.failure().isEmpty());
    EXPECT_EQ(stream.receiveBufferLength(), 0);
}

} // namespace
