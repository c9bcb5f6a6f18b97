#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <optional>

class IcyStreamHost;

// The recorder's stream parser: consumes the ICY response header, then splits
// the stream into audio intervals and in-band metadata blocks, hands the audio
// to the host's output stage and reports titles. The recorder feeds every
// socket read to onData; everything else it only reads.
//
// Bytes stay bytes: the receive buffer is a QByteArray consumed from the front
// through a read offset (compacted now and then), so no step copies the whole
// buffer. Header and metadata text is decoded as UTF-8 when it is valid UTF-8,
// else as Latin-1; lengths and positions are byte counts either way.
//
// Memory stays bounded whatever a station sends: a header may be at most
// MaxHeader bytes, a backlog of more than BacklogLimit bytes is worked off
// within one event (also while the position is lost), an interval may be at
// most MaxMetaInterval bytes, and while the position is lost only the bytes a
// coming block could still need are kept. A station whose blocks cannot be
// found again is recorded as plain audio rather than not at all.
class IcyStream
{
public:
    // ResyncState while the metadata position is lost.
    static constexpr quint16 ResyncLost = 65535;
    static constexpr qsizetype BacklogLimit = 1024 * 1024;
    static constexpr qint32 MaxMetaInterval = 1024 * 1024;
    static constexpr qsizetype MaxHeader = 64 * 1024;
    // While lost, no block accepted for this many bytes (and at least two
    // intervals and a block) gives the titles up.
    static constexpr qsizetype TitleGiveUp = 64 * 1024;

    explicit IcyStream(IcyStreamHost &host);
    IcyStream(const IcyStream &) = delete;
    IcyStream &operator=(const IcyStream &) = delete;

    // What a new recording starts from: HeaderDone false, LastText, MetaBlocks,
    // BytesTotal, ReceiveBuffer, ResyncState, Bitrate, failure and the
    // statistics cleared, titles no longer given up. MetaInterval, HeaderText
    // and StationUrl keep their values.
    void reset();

    // One socket read: appends the packet, updates the statistics and runs one
    // step (the header step until the header is done, then the metadata step,
    // which consumes one audio interval). Only when more than BacklogLimit
    // bytes wait does it go on consuming intervals until none is complete.
    // A run-time error inside the step ends this event only.
    //
    // A header without "icy-metaint:" makes the rest plain audio, written as it
    // comes. A station that names no song (its blocks are empty or carry no
    // title, or it has no interval) is recorded into one continuous file from
    // the first audio byte, unless a song scan waits for a title. So is one
    // whose position stays lost for TitleGiveUp bytes: the rest is written as
    // it comes, and the station's label says why (titlesGivenUp).
    void onData(QByteArrayView packet);

    // End of a recording: complete intervals still waiting are parsed as
    // usual (titles, splits), then the rest goes to the output with flush set,
    // as it stands, and counts towards BytesTotal; the buffer is emptied.
    void flushRest();

    // The connection was lost and a new one will bring its own header: what is
    // held is finished as at a stop, then the parser waits for a header again.
    // The counters and the title shown stay, so the recording goes on.
    void interrupt();

    // Why the stream cannot be recorded (a bad header: an "icy-metaint:" that
    // is not a number from 1 to MaxMetaInterval, or a header longer than
    // MaxHeader); empty while it can. Once set, data is ignored until reset.
    const QString &failure() const { return m_failure; }
    // Whether the titles were given up and the stream is written as it comes.
    bool titlesGivenUp() const { return m_titlesGivenUp; }
    // What the station's label shows once the titles are given up.
    static QString titlesGivenUpText();

    // The interval an "icy-metaint:" value names: decimal digits only, from 1
    // to MaxMetaInterval. Nothing for anything else.
    static std::optional<qint32> metaIntervalFrom(QStringView value);
    // Why such a value cannot be recorded; empty when it can.
    static QString intervalProblem(QStringView value);
    // Why an answer's header cannot be recorded, read as the header step
    // reads it; empty when it can.
    static QString headerProblem(QByteArrayView header);

    // Parses LastText as header lines, or as metadata when it has no CR LF.
    // Returns whether the title changed.
    bool ParseResponseText();
    // Parses LastText as "key=value" pieces separated by ";". Returns whether
    // the title changed. A piece without "=" ends it.
    bool ParseMetadata();

    // True when every character is 0, 10, 13 or within 32..122: tells a real
    // metadata block from audio read at the wrong place when the block is not
    // well formed.
    static bool IsCleanText(QByteArrayView block);
    // True for one or more "key='value';" pairs and nothing after them but zero
    // padding; keys are letters, digits and "_", values any bytes at all.
    static bool isWellFormed(QByteArrayView block);
    // UTF-8 when the bytes are valid UTF-8, else Latin-1.
    static QString decodeText(QByteArrayView bytes);

    void setLastText(const QString &text) { m_lastText = text; }

    // Everything received and not yet consumed (valid until the next call).
    QByteArrayView ReceiveBuffer() const { return QByteArrayView(m_buffer).sliced(m_offset); }
    qsizetype receiveBufferLength() const { return m_buffer.size() - m_offset; }

    bool HeaderDone() const { return m_headerDone; }
    const QString &LastText() const { return m_lastText; }
    // Whether the last header or block looked at was taken (the sync indicators).
    bool lastTextValid() const { return m_lastValid; }
    const QString &HeaderText() const { return m_headerText; }
    qint32 MetaInterval() const { return m_metaInterval; }
    qint32 MetaBlocks() const { return m_metaBlocks; }
    double BytesTotal() const { return m_bytesTotal; }
    quint16 ResyncState() const { return m_resyncState; }
    const QString &StationUrl() const { return m_stationUrl; }
    qint16 Bitrate() const { return m_bitrate; }

    double peakBuffer() const { return m_peakBuffer; }
    qint32 averagePacket() const { return m_averagePacket; }
    double largestPacket() const { return m_largestPacket; }
    qint32 resyncCount() const { return m_resyncCount; }
    double discardedBytes() const { return m_discardedBytes; }
    // How many times the receive buffer was compacted (moved to the front):
    // lets tests and the benchmark see that consuming stays cheap.
    qint64 compactions() const { return m_compactions; }

private:
    void updateStatistics(qsizetype packetLength);
    void headerStep();
    // One step of the stream after the header; true when it consumed or
    // dropped bytes or changed state, so that a caller may take another.
    bool metadataStep();
    bool resync(qint32 m);
    void giveUpTitles();
    bool applyTitle(const QString &value);
    void refuseHeader(const QString &reason);
    void recordWithoutTitles();
    void consume(qsizetype n);
    void discard(qsizetype n);
    void writeInterval(QByteArrayView audio, bool titleChanged);

    IcyStreamHost &m_host;
    QByteArray m_buffer;
    qsizetype m_offset = 0;
    // Bytes at the front of the unconsumed buffer already searched without a
    // match, so waiting for a header end stays linear.
    qsizetype m_searched = 0;
    // While lost: where the next search for a title starts, and where the
    // rejected block ended (intervals are taken back only after it).
    qsizetype m_searchFrom = 0;
    qsizetype m_rejectedEnd = 0;
    // Bytes taken or dropped since a block was last accepted.
    qsizetype m_sinceAccepted = 0;
    bool m_titlesGivenUp = false;

    bool m_headerDone = false;
    QString m_lastText;
    bool m_lastValid = true;
    QString m_headerText;
    QString m_failure;
    qint32 m_metaInterval = 0;
    // The "icy-metaint:" value of the header being read when it is no interval.
    std::optional<QString> m_badInterval;
    qint32 m_metaBlocks = 0;
    double m_bytesTotal = 0;
    quint16 m_resyncState = 0;
    QString m_stationUrl;
    qint16 m_bitrate = 0;

    double m_peakBuffer = 0;
    qint32 m_averagePacket = 0;
    double m_largestPacket = 0;
    qint32 m_resyncCount = 0;
    double m_discardedBytes = 0;
    qint64 m_compactions = 0;
};
