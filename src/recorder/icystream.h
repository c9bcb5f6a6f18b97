#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

class IcyStreamHost;

// The recorder's stream parser: consumes the ICY response header, then splits
// the stream into audio intervals and in-band metadata blocks, hands the audio
// to the host's output stage and reports titles. The window feeds every socket
// read to OnData; everything else it only reads.
//
// Bytes stay bytes: the receive buffer is a QByteArray consumed from the front
// through a read offset (compacted now and then), so no step copies the whole
// buffer. Header and metadata text is decoded as Latin-1, one character per
// byte, so lengths and positions are byte counts; titles that pass IsCleanText
// are plain ASCII anyway, and header fields (icy-name, icy-genre) are shown as
// Latin-1 too.
class IcyStream
{
public:
    // ResyncState while the metadata position is lost.
    static constexpr quint16 ResyncLost = 65535;

    explicit IcyStream(IcyStreamHost &host);
    IcyStream(const IcyStream &) = delete;
    IcyStream &operator=(const IcyStream &) = delete;

    // What a new recording starts from: HeaderDone false, LastText, MetaBlocks,
    // BytesTotal, ReceiveBuffer, ResyncState, Bitrate and the statistics
    // cleared. MetaInterval, HeaderText and StationUrl keep their values.
    void Reset();

    // One socket read: appends the packet, updates the statistics and runs
    // exactly one step (the header step until the header is done, then the
    // metadata step, which consumes at most one audio interval). A run-time
    // error inside the step ends this event only; the recording goes on.
    // While the position is lost, a "StreamTitle" that gives no place to start
    // from (at the very front, too close to it, or the block just rejected) is
    // dropped up to its first byte and counted as discarded, so the search
    // moves on instead of finding the same marker at every event.
    void OnData(QByteArrayView packet);

    // End of a recording: the rest of the receive buffer goes to the output
    // with flush set, as it stands (even a partial metadata block), and counts
    // towards BytesTotal; the buffer is emptied.
    void FlushRest();

    // Parses LastText as header lines, or as metadata when it has no CR LF.
    // Returns whether the title changed.
    bool ParseResponseText();
    // Parses LastText as "key=value" pieces separated by ";". Returns whether
    // the title changed. A piece without "=" ends it.
    bool ParseMetadata();

    // True when every character is 0, 10, 13 or within 32..122: tells a real
    // metadata block from audio read at the wrong place.
    static bool IsCleanText(QByteArrayView block);
    static bool IsCleanText(QStringView text);

    void SetLastText(const QString &text) { m_lastText = text; }

    // Everything received and not yet consumed (valid until the next call).
    QByteArrayView ReceiveBuffer() const { return QByteArrayView(m_buffer).sliced(m_offset); }
    qsizetype ReceiveBufferLength() const { return m_buffer.size() - m_offset; }

    bool HeaderDone() const { return m_headerDone; }
    const QString &LastText() const { return m_lastText; }
    const QString &HeaderText() const { return m_headerText; }
    qint32 MetaInterval() const { return m_metaInterval; }
    qint32 MetaBlocks() const { return m_metaBlocks; }
    double BytesTotal() const { return m_bytesTotal; }
    quint16 ResyncState() const { return m_resyncState; }
    const QString &StationUrl() const { return m_stationUrl; }
    qint16 Bitrate() const { return m_bitrate; }

    double PeakBuffer() const { return m_peakBuffer; }
    qint32 AveragePacket() const { return m_averagePacket; }
    double LargestPacket() const { return m_largestPacket; }
    qint32 ResyncCount() const { return m_resyncCount; }
    double DiscardedBytes() const { return m_discardedBytes; }
    // How many times the receive buffer was compacted (moved to the front):
    // lets tests and the benchmark see that consuming stays cheap.
    qint64 Compactions() const { return m_compactions; }

private:
    void updateStatistics(qsizetype packetLength);
    void headerStep();
    void metadataStep();
    bool resync(qint32 m);
    bool applyTitle(const QString &value);
    void consume(qsizetype n);

    IcyStreamHost &m_host;
    QByteArray m_buffer;
    qsizetype m_offset = 0;
    // Bytes at the front of the unconsumed buffer already searched without a
    // match, so waiting for a header end or a "StreamTitle" stays linear.
    qsizetype m_searched = 0;
    // Set when a block was rejected and nothing has been consumed since.
    bool m_rejectedHere = false;

    bool m_headerDone = false;
    QString m_lastText;
    QString m_headerText;
    qint32 m_metaInterval = 0;
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
