#include "recorder/oggpagescanner.h"

#include <QtEndian>

#include <algorithm>
#include <array>

namespace {

constexpr qsizetype PageHeaderSize = 27;
constexpr int MaxLogicals = 8;
constexpr quint8 Continued = 0x01;
constexpr quint8 BeginOfStream = 0x02;
constexpr qint64 MaxPageSamples = qint64(1) << 32;

// The page checksum: CRC-32, polynomial 0x04C11DB7, no reflection, start 0.
constexpr std::array<quint32, 256> crcTable()
{
    std::array<quint32, 256> table{};
    for (quint32 i = 0; i < 256; ++i) {
        quint32 r = i << 24;
        for (int bit = 0; bit < 8; ++bit)
            r = (r & 0x80000000u) ? (r << 1) ^ 0x04C11DB7u : r << 1;
        table[i] = r;
    }
    return table;
}

constexpr std::array<quint32, 256> CrcTable = crcTable();

quint32 pageChecksum(QByteArrayView page)
{
    quint32 crc = 0;
    for (qsizetype i = 0; i < page.size(); ++i) {
        const quint8 byte = (i >= 22 && i < 26) ? 0 : quint8(page[i]);
        crc = (crc << 8) ^ CrcTable[(crc >> 24) ^ byte];
    }
    return crc;
}

quint8 at(QByteArrayView bytes, qsizetype i)
{
    return quint8(bytes[i]);
}

// Packets that end on a page: lacing values below 255 close one.
int packetsEnded(QByteArrayView page)
{
    int ended = 0;
    for (qsizetype i = 0; i < at(page, 26); ++i)
        ended += at(page, PageHeaderSize + i) < 255 ? 1 : 0;
    return ended;
}

} // namespace

FrameScanner::Verdict OggPageScanner::readHeader(QByteArrayView bytes, Header &header) const
{
    static constexpr QByteArrayView Capture("OggS");
    if (bytes.size() < Capture.size())
        return Capture.startsWith(bytes) ? Verdict::NeedMore : Verdict::NotFrame;
    if (!bytes.startsWith(Capture) || (bytes.size() > 4 && at(bytes, 4) != 0) ||
        (bytes.size() > 5 && (at(bytes, 5) & ~0x07) != 0))
        return Verdict::NotFrame;
    if (bytes.size() < PageHeaderSize)
        return Verdict::NeedMore;
    const int segments = at(bytes, 26);
    if (bytes.size() < PageHeaderSize + segments)
        return Verdict::NeedMore;
    qsizetype length = PageHeaderSize + segments;
    for (int i = 0; i < segments; ++i)
        length += at(bytes, PageHeaderSize + i);
    if (bytes.size() < length)
        return Verdict::NeedMore;
    const QByteArrayView page = bytes.first(length);
    if (pageChecksum(page) != qFromLittleEndian<quint32>(page.data() + 22))
        return Verdict::NotFrame;
    header.length = length;
    return Verdict::Frame;
}

qsizetype OggPageScanner::findSync(QByteArrayView bytes, qsizetype from) const
{
    const qsizetype found = bytes.indexOf('O', from);
    return found < 0 ? bytes.size() : found;
}

int OggPageScanner::confirmationsNeeded(bool) const
{
    return 0; // the checksum has confirmed the page
}

void OggPageScanner::describe(const Header &, QByteArrayView page, FrameMark &piece)
{
    const quint8 flags = at(page, 5);
    const auto granule = qFromLittleEndian<qint64>(page.data() + 6);
    const auto serial = qFromLittleEndian<quint32>(page.data() + 14);
    const auto sequence = qFromLittleEndian<quint32>(page.data() + 18);
    const int packets = packetsEnded(page);

    if (flags & BeginOfStream) {
        beginLogical(page, page.sliced(PageHeaderSize + at(page, 26)), packets);
        piece.kind = StreamPiece::Kind::Header;
        return;
    }
    Logical *stream = logical(serial);
    if (stream && stream->headerPacketsLeft > 0) {
        stream->headerPacketsLeft -= packets;
        stream->lastSequence = sequence;
        keepHeader(page);
        piece.kind = StreamPiece::Kind::Header;
        return;
    }

    piece.kind = StreamPiece::Kind::Frame;
    piece.canBegin = (flags & Continued) == 0;
    piece.headers = m_headers;
    m_linkHasAudio = true;
    if (!stream || stream->rate == 0)
        return;
    if (!stream->audioSeen) {
        // Audio that follows its headers directly starts at position 0; audio
        // joined later has no known start.
        stream->audioSeen = true;
        if (sequence == stream->lastSequence + 1)
            stream->lastGranule = 0;
    }
    // A page on which no packet ends counts with the next one.
    if (granule < 0)
        return;
    const qint64 from = stream->lastGranule;
    // A jump no page can hold (a damaged position) counts nothing.
    if (from >= 0 && granule >= from && granule - from < MaxPageSamples)
        piece.durationNs = (granule - from) * 1000000000 / stream->rate;
    stream->lastGranule = granule;
}

void OggPageScanner::beginLogical(QByteArrayView page, QByteArrayView body, int packets)
{
    if (m_linkHasAudio || m_logicals.isEmpty()) {
        // A new link of a chained stream: its headers replace the old ones.
        m_logicals.clear();
        m_headers.clear();
        m_headersKept = true;
        m_linkHasAudio = false;
    }
    keepHeader(page);
    if (m_logicals.size() >= MaxLogicals)
        return;
    Logical stream;
    stream.serial = qFromLittleEndian<quint32>(page.data() + 14);
    stream.lastSequence = qFromLittleEndian<quint32>(page.data() + 18);
    int headerPackets = 1;
    if (body.startsWith("\x01vorbis") && body.size() >= 16) {
        stream.rate = int(std::min<quint32>(qFromLittleEndian<quint32>(body.data() + 12), 1000000));
        headerPackets = 3;
    } else if (body.startsWith("OpusHead")) {
        stream.rate = 48000; // Opus positions count at 48 kHz, whatever the input rate
        headerPackets = 2;
    }
    stream.headerPacketsLeft = headerPackets - packets;
    m_logicals.append(stream);
}

OggPageScanner::Logical *OggPageScanner::logical(quint32 serial)
{
    for (Logical &stream : m_logicals)
        if (stream.serial == serial)
            return &stream;
    return nullptr;
}

void OggPageScanner::keepHeader(QByteArrayView page)
{
    if (!m_headersKept)
        return;
    if (m_headers.size() + page.size() > HeaderLimit) {
        m_headers.clear();
        m_headersKept = false;
        return;
    }
    m_headers.append(page);
}
