#include "recorder/icystream.h"

#include "app/apperror.h"
#include "app/conversions.h"
#include "catalogue/stationnames.h"
#include "recorder/icystreamhost.h"

#include <QStringList>

#include <algorithm>
#include <limits>

namespace {

constexpr QByteArrayView HeaderEnd = "\r\n\r\n";
constexpr QByteArrayView TitleMarker = "StreamTitle";
// Consumed bytes are moved out of the buffer only once they are at least this
// many and at least half of it, so each byte is moved a bounded number of times.
constexpr qsizetype CompactThreshold = 64 * 1024;

bool isCleanCode(uint code)
{
    return code == 0 || code == 10 || code == 13 || (code >= 32 && code <= 122);
}

// The value after a header key, without the spaces around it.
QString headerValue(const QString &line, QStringView key)
{
    return StationNames::TrimBlanks(line.mid(key.size()));
}

} // namespace

IcyStream::IcyStream(IcyStreamHost &host) : m_host(host)
{
}

void IcyStream::Reset()
{
    m_buffer.clear();
    m_offset = 0;
    m_searched = 0;
    m_rejectedHere = false;
    m_headerDone = false;
    m_lastText.clear();
    m_metaBlocks = 0;
    m_bytesTotal = 0;
    m_resyncState = 0;
    m_bitrate = 0;
    m_peakBuffer = 0;
    m_averagePacket = 0;
    m_largestPacket = 0;
    m_resyncCount = 0;
    m_discardedBytes = 0;
}

void IcyStream::OnData(QByteArrayView packet)
{
    if (m_offset == m_buffer.size()) {
        m_buffer.resize(0);
        m_offset = 0;
    } else if (m_offset >= CompactThreshold && m_offset * 2 >= m_buffer.size()) {
        m_buffer.remove(0, m_offset);
        m_offset = 0;
        ++m_compactions;
    }
    m_buffer.append(packet);
    updateStatistics(packet.size());
    try {
        if (m_headerDone)
            metadataStep();
        else
            headerStep();
    } catch (const AppError &) {
        // The event ends here; what is buffered waits for the next one.
    } catch (const std::exception &) {
    }
}

void IcyStream::FlushRest()
{
    const QByteArrayView rest = ReceiveBuffer();
    m_host.WriteToDisk(rest, true);
    m_bytesTotal += static_cast<double>(rest.size());
    m_buffer.clear();
    m_offset = 0;
    m_searched = 0;
}

void IcyStream::updateStatistics(qsizetype packetLength)
{
    const double length = static_cast<double>(ReceiveBufferLength());
    if (length > m_peakBuffer)
        m_peakBuffer = length;
    if (m_averagePacket == 0)
        m_averagePacket = static_cast<qint32>(packetLength);
    m_averagePacket = static_cast<qint32>(Convert::RoundHalfEven((static_cast<double>(packetLength) + m_averagePacket) / 2));
    if (static_cast<double>(packetLength) > m_largestPacket)
        m_largestPacket = static_cast<double>(packetLength);
}

void IcyStream::consume(qsizetype n)
{
    m_offset += n;
    m_searched = std::max<qsizetype>(0, m_searched - n);
    m_rejectedHere = false;
}

void IcyStream::headerStep()
{
    const QByteArrayView buffer = ReceiveBuffer();
    const qsizetype end = buffer.indexOf(HeaderEnd, std::max<qsizetype>(0, m_searched - (HeaderEnd.size() - 1)));
    if (end < 0) {
        m_searched = buffer.size();
        return;
    }
    const qsizetype length = end + HeaderEnd.size();
    m_lastText = QString::fromLatin1(buffer.first(length));
    m_headerText = m_lastText;
    consume(length);
    m_searched = 0;
    ParseResponseText();
    m_headerDone = true;
}

bool IcyStream::ParseResponseText()
{
    if (!m_lastText.contains(u"\r\n"))
        return ParseMetadata();
    const QStringList lines = m_lastText.split(QStringLiteral("\r\n"));
    if (lines.size() < 3)
        return false;
    bool titleChanged = false;
    for (const QString &line : lines) {
        // A number that does not fit leaves its field as it was.
        try {
            if (line.startsWith(u"icy-url:")) {
                m_stationUrl = headerValue(line, u"icy-url:");
                m_host.SetHyperlinkA(m_stationUrl);
            } else if (line.startsWith(u"icy-br:")) {
                const qint32 bitrate = Convert::LeadingInt32(headerValue(line, u"icy-br:"));
                if (bitrate < std::numeric_limits<qint16>::min() || bitrate > std::numeric_limits<qint16>::max())
                    throw AppError::overflow();
                m_bitrate = static_cast<qint16>(bitrate);
            } else if (line.startsWith(u"icy-name:")) {
                const QString name = headerValue(line, u"icy-name:");
                // A header-like line arriving as metadata names the song.
                if (m_headerDone)
                    titleChanged = applyTitle(name) || titleChanged;
                else
                    m_host.ShowStreamText(name);
            } else if (line.startsWith(u"icy-genre:")) {
                m_host.ShowGenre(headerValue(line, u"icy-genre:"));
            } else if (line.startsWith(u"icy-metaint:")) {
                m_metaInterval = Convert::LeadingInt32(headerValue(line, u"icy-metaint:"));
            }
        } catch (const AppError &) {
        }
    }
    return titleChanged;
}

bool IcyStream::ParseMetadata()
{
    bool titleChanged = false;
    const QStringList pieces = m_lastText.split(u';');
    for (const QString &piece : pieces) {
        const QStringList parts = piece.split(u'=');
        // A piece without "=" has no value: that ends the block.
        if (parts.size() < 2)
            break;
        const QString key = parts[0].toLower();
        QString value = parts[1];
        value.remove(u'\'');
        value = StationNames::TrimBlanks(value);
        if (key == u"streamtitle")
            titleChanged = applyTitle(value) || titleChanged;
        else if (key == u"streamurl")
            m_host.SetHyperlinkB(value);
    }
    return titleChanged;
}

bool IcyStream::applyTitle(const QString &value)
{
    if (value == m_host.ShownTitle())
        return false;
    m_host.SetWriteEnabled(true);
    const QString scan = m_host.ScanSongText();
    if (!scan.isEmpty()) {
        const bool found = value.contains(scan, Qt::CaseInsensitive);
        m_host.ShowWaitScan(!found);
        // Nothing is written until the awaited song arrives.
        if (!found)
            m_host.SetWriteEnabled(false);
    }
    m_host.ShowTitle(value);
    return true;
}

bool IcyStream::IsCleanText(QByteArrayView block)
{
    return std::all_of(block.begin(), block.end(), [](char c) { return isCleanCode(static_cast<uchar>(c)); });
}

bool IcyStream::IsCleanText(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return isCleanCode(c.unicode()); });
}

bool IcyStream::resync(qint32 m)
{
    const QByteArrayView buffer = ReceiveBuffer();
    const qsizetype found = buffer.indexOf(TitleMarker, std::max<qsizetype>(0, m_searched - (TitleMarker.size() - 1)));
    if (found < 0) {
        m_searched = buffer.size();
        return false;
    }
    // The interval in front of the block starts m+1 bytes before it; further
    // back, intervals of m+1 bytes (empty blocks) are assumed.
    const qsizetype step = qsizetype(m) + 1;
    qsizetype p = found - step;
    if (p >= m)
        p -= ((p - m) / step + 1) * step;
    // No place to start from: the marker is at the very front, the interval
    // would begin before the buffer, or it is the block just rejected. Waiting
    // would find the same marker forever, so it is dropped and the search goes on.
    if (found < 1 || p < 0 || (p == 0 && m_rejectedHere)) {
        m_discardedBytes += static_cast<double>(found + 1);
        consume(found + 1);
        m_searched = 0;
        return false;
    }
    m_discardedBytes += static_cast<double>(p);
    consume(p);
    m_searched = 0;
    m_resyncState = 0;
    ++m_resyncCount;
    return true;
}

void IcyStream::metadataStep()
{
    const qint32 m = m_metaInterval;
    if (m < 0)
        throw AppError::invalidArgument();
    if (m_resyncState == ResyncLost && !resync(m))
        return;

    const QByteArrayView buffer = ReceiveBuffer();
    if (buffer.size() <= m)
        return;
    const QByteArrayView audio = buffer.first(m);
    const qsizetype blockLength = qsizetype(static_cast<uchar>(buffer[m])) * 16;
    if (blockLength == 0) {
        m_host.WriteToDisk(audio, false);
        m_bytesTotal += m;
        consume(qsizetype(m) + 1);
        return;
    }
    // Deliberately m + L, not m + 1 + L: a block missing only its last byte is
    // taken one byte short.
    if (m + blockLength > buffer.size())
        return;
    const QByteArrayView block = buffer.sliced(qsizetype(m) + 1).first(std::min(blockLength, buffer.size() - m - 1));
    if (!IsCleanText(block)) {
        m_resyncState = ResyncLost;
        m_rejectedHere = true;
        m_searched = 0;
        return;
    }
    m_lastText = QString::fromLatin1(block);
    const bool titleChanged = ParseResponseText();
    m_host.WriteToDisk(audio, titleChanged);
    m_bytesTotal += m;
    if (titleChanged) {
        // The interval before the new title ends the old file and also begins the new one.
        m_host.NewSong(m_host.ShownTitle());
        m_host.WriteToDisk(audio, false);
    }
    consume(std::min(qsizetype(m) + 1 + blockLength, buffer.size()));
    ++m_metaBlocks;
    if (!m_host.IsFileOpen() && m_host.ShownTitle().isEmpty())
        m_host.SwitchToContinuous();
}
