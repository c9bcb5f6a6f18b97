#include "recorder/icystream.h"

#include "base/apperror.h"
#include "base/conversions.h"
#include "catalogue/stationnames.h"
#include "recorder/icystreamhost.h"

#include <QCoreApplication>
#include <QStringDecoder>
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

bool isKeyChar(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// Where the "='" after a key starting at `at` is, or -1 when no key starts there.
qsizetype keyEnd(QByteArrayView text, qsizetype at)
{
    qsizetype end = at;
    while (end < text.size() && isKeyChar(text[end]))
        ++end;
    if (end == at || !text.sliced(end).startsWith("='"))
        return -1;
    return end;
}

// The value after a header key, without the spaces around it.
QString headerValue(const QString &line, QStringView key)
{
    return StationNames::trimBlanks(line.mid(key.size()));
}

} // namespace

IcyStream::IcyStream(IcyStreamHost &host) : m_host(host)
{
}

void IcyStream::reset()
{
    m_buffer.clear();
    m_offset = 0;
    m_searched = 0;
    m_headerDone = false;
    m_lastText.clear();
    m_lastValid = true;
    m_failure.clear();
    m_titlesGivenUp = false;
    m_sinceAccepted = 0;
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

void IcyStream::onData(QByteArrayView packet)
{
    if (!m_failure.isEmpty())
        return;
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
        if (!m_headerDone) {
            headerStep();
            return;
        }
        metadataStep();
        // A sender faster than one interval per event must not fill memory,
        // whether the position is known or lost.
        if (receiveBufferLength() > BacklogLimit) {
            while (metadataStep()) {
            }
        }
    } catch (const AppError &) {
        // The event ends here; what is buffered waits for the next one.
    } catch (const std::exception &) {
    }
}

void IcyStream::flushRest()
{
    if (m_headerDone && m_failure.isEmpty()) {
        while (metadataStep()) {
        }
    }
    const QByteArrayView rest = ReceiveBuffer();
    m_host.WriteToDisk(rest, true);
    m_bytesTotal += static_cast<double>(rest.size());
    m_buffer.clear();
    m_offset = 0;
    m_searched = 0;
}

void IcyStream::interrupt()
{
    flushRest();
    m_headerDone = false;
    m_resyncState = 0;
}

void IcyStream::updateStatistics(qsizetype packetLength)
{
    const double length = static_cast<double>(receiveBufferLength());
    if (length > m_peakBuffer)
        m_peakBuffer = length;
    if (m_averagePacket == 0)
        m_averagePacket = static_cast<qint32>(packetLength);
    m_averagePacket = static_cast<qint32>(Convert::roundHalfEven((static_cast<double>(packetLength) + m_averagePacket) / 2));
    if (static_cast<double>(packetLength) > m_largestPacket)
        m_largestPacket = static_cast<double>(packetLength);
}

void IcyStream::consume(qsizetype n)
{
    m_offset += n;
    m_searched = std::max<qsizetype>(0, m_searched - n);
    m_sinceAccepted += n;
}

void IcyStream::discard(qsizetype n)
{
    consume(n);
    m_discardedBytes += static_cast<double>(n);
    m_searchFrom = std::max<qsizetype>(0, m_searchFrom - n);
    m_rejectedEnd -= n;
}

void IcyStream::headerStep()
{
    const QByteArrayView buffer = ReceiveBuffer();
    const qsizetype end = buffer.indexOf(HeaderEnd, std::max<qsizetype>(0, m_searched - (HeaderEnd.size() - 1)));
    if (end < 0) {
        m_searched = buffer.size();
        if (buffer.size() > MaxHeader)
            refuseHeader(
                QCoreApplication::translate("IcyStream", "The station's answer did not end within 64 KB."));
        return;
    }
    const qsizetype length = end + HeaderEnd.size();
    m_lastText = decodeText(buffer.first(length));
    m_lastValid = true;
    m_headerText = m_lastText;
    consume(length);
    m_searched = 0;
    // Each answer says for itself whether it has an interval and titles.
    m_metaInterval = 0;
    m_badInterval.reset();
    m_titlesGivenUp = false;
    m_sinceAccepted = 0;
    ParseResponseText();
    m_headerDone = true;
    if (m_badInterval) {
        refuseHeader(intervalProblem(*m_badInterval));
    } else if (m_metaInterval == 0) {
        recordWithoutTitles();
    }
}

void IcyStream::refuseHeader(const QString &reason)
{
    m_failure = reason;
    m_buffer = QByteArray();
    m_offset = 0;
    m_searched = 0;
}

std::optional<qint32> IcyStream::metaIntervalFrom(QStringView value)
{
    if (value.isEmpty() || value.size() > 10 ||
        !std::all_of(value.begin(), value.end(), [](QChar c) { return c >= u'0' && c <= u'9'; }))
        return std::nullopt;
    const qint64 interval = value.toLongLong();
    if (interval < 1 || interval > MaxMetaInterval)
        return std::nullopt;
    return static_cast<qint32>(interval);
}

QString IcyStream::intervalProblem(QStringView value)
{
    if (metaIntervalFrom(value))
        return {};
    return QCoreApplication::translate(
               "IcyStream",
               "The station's answer is bad: its metadata interval \"%1\" is not a number from 1 to %2.")
        .arg(value)
        .arg(MaxMetaInterval);
}

QString IcyStream::headerProblem(QByteArrayView header)
{
    QString problem;
    // The last line counts, as in ParseResponseText.
    for (const QString &line : decodeText(header).split(QStringLiteral("\r\n"))) {
        if (line.startsWith(u"icy-metaint:"))
            problem = intervalProblem(headerValue(line, u"icy-metaint:"));
    }
    return problem;
}

QString IcyStream::titlesGivenUpText()
{
    return QCoreApplication::translate("IcyStream",
                                       "The station's titles cannot be read: recording without titles.");
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
                m_host.setHyperlinkA(m_stationUrl);
            } else if (line.startsWith(u"icy-br:")) {
                const qint32 bitrate = Convert::leadingInt32(headerValue(line, u"icy-br:"));
                if (bitrate < std::numeric_limits<qint16>::min() || bitrate > std::numeric_limits<qint16>::max())
                    throw AppError::overflow();
                m_bitrate = static_cast<qint16>(bitrate);
            } else if (line.startsWith(u"icy-name:")) {
                const QString name = StationNames::trimBlanks(
                    StationNames::withoutControlChars(headerValue(line, u"icy-name:")));
                // A header-like line arriving as metadata names the song.
                if (m_headerDone)
                    titleChanged = applyTitle(name) || titleChanged;
                else
                    m_host.showStreamText(name);
            } else if (line.startsWith(u"icy-genre:")) {
                m_host.showGenre(headerValue(line, u"icy-genre:"));
            } else if (line.startsWith(u"icy-metaint:") && !m_headerDone) {
                // Only the answer's header sets the interval: a block cannot move its own position.
                const QString value = headerValue(line, u"icy-metaint:");
                const std::optional<qint32> interval = metaIntervalFrom(value);
                m_metaInterval = interval.value_or(0);
                if (!interval)
                    m_badInterval = value;
                else
                    m_badInterval.reset();
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
        value = StationNames::trimBlanks(StationNames::withoutControlChars(value));
        if (key == u"streamtitle")
            titleChanged = applyTitle(value) || titleChanged;
        else if (key == u"streamurl")
            m_host.setHyperlinkB(value);
    }
    return titleChanged;
}

bool IcyStream::applyTitle(const QString &value)
{
    if (value == m_host.shownTitle())
        return false;
    m_host.setWriteEnabled(true);
    const QString scan = m_host.scanSongText();
    if (!scan.isEmpty()) {
        const bool found = value.contains(scan, Qt::CaseInsensitive);
        m_host.showWaitScan(!found);
        // Nothing is written until the awaited song arrives.
        if (!found)
            m_host.setWriteEnabled(false);
    }
    m_host.showTitle(value);
    return true;
}

void IcyStream::recordWithoutTitles()
{
    if (!m_host.shownTitle().isEmpty())
        return;
    const bool scanning = !m_host.scanSongText().isEmpty();
    m_host.showWaitScan(scanning);
    m_host.setWriteEnabled(!scanning);
    if (!m_host.isFileOpen())
        m_host.switchToContinuous();
}

bool IcyStream::IsCleanText(QByteArrayView block)
{
    return std::all_of(block.begin(), block.end(), [](char c) { return isCleanCode(static_cast<uchar>(c)); });
}

bool IcyStream::isWellFormed(QByteArrayView block)
{
    qsizetype size = block.size();
    while (size > 0 && block[size - 1] == '\0')
        --size;
    const QByteArrayView text = block.first(size);
    qsizetype at = 0;
    do {
        const qsizetype key = keyEnd(text, at);
        if (key < 0)
            return false;
        // The value ends at the first "';" that is followed by the end or by
        // the next pair, so a title may hold "';" itself.
        qsizetype close = text.indexOf("';", key + 2);
        while (close >= 0 && close + 2 < text.size() && keyEnd(text, close + 2) < 0)
            close = text.indexOf("';", close + 1);
        if (close < 0)
            return false;
        at = close + 2;
    } while (at < text.size());
    return true;
}

QString IcyStream::decodeText(QByteArrayView bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8(bytes);
    return utf8.hasError() ? QString::fromLatin1(bytes) : text;
}

bool IcyStream::resync(qint32 m)
{
    const QByteArrayView buffer = ReceiveBuffer();
    const qsizetype step = qsizetype(m) + 1;
    // A marker nearer the front than that leaves no room for its interval.
    const qsizetype from = std::max(m_searchFrom, step);
    const qsizetype found = buffer.indexOf(TitleMarker, from);
    if (found < 0) {
        // Only a marker yet to come matters, with its interval in front of it.
        const qsizetype surplus = buffer.size() - (step + TitleMarker.size() - 1);
        if (surplus > 0)
            discard(surplus);
        m_searchFrom = std::max(m_searchFrom, receiveBufferLength() - (TitleMarker.size() - 1));
        return false;
    }
    // The marker opens a block; its length byte is just in front of it and
    // its interval m bytes before that. Intervals before it that end in an
    // empty block are kept too, as long as they lie after the rejected block.
    qsizetype start = found - step;
    while (start - step >= std::max<qsizetype>(0, m_rejectedEnd) && buffer[start - 1] == '\0')
        start -= step;
    discard(start);
    m_resyncState = 0;
    ++m_resyncCount;
    return true;
}

void IcyStream::writeInterval(QByteArrayView audio, bool titleChanged)
{
    m_host.WriteToDisk(audio, titleChanged);
    m_bytesTotal += static_cast<double>(audio.size());
    if (titleChanged) {
        // The interval before the new title ends the old file and also begins the new one.
        m_host.NewSong(m_host.shownTitle());
        m_host.WriteToDisk(audio, false);
    }
}

bool IcyStream::metadataStep()
{
    const qint32 m = m_metaInterval;
    if (m != 0 && !m_titlesGivenUp && m_resyncState == ResyncLost) {
        // Two intervals and a block of the longest kind must fit in before giving up.
        const qsizetype giveUpAfter = std::max(TitleGiveUp, 2 * (qsizetype(m) + 1) + 4080);
        const qsizetype before = receiveBufferLength();
        if (m_sinceAccepted < giveUpAfter && !resync(m) && m_sinceAccepted < giveUpAfter)
            return receiveBufferLength() != before;
        if (m_resyncState == ResyncLost)
            giveUpTitles();
    }
    if (m == 0 || m_titlesGivenUp) {
        const QByteArrayView audio = ReceiveBuffer();
        writeInterval(audio, false);
        consume(audio.size());
        return !audio.isEmpty();
    }

    const QByteArrayView buffer = ReceiveBuffer();
    if (buffer.size() <= m)
        return false;
    const QByteArrayView audio = buffer.first(m);
    const qsizetype blockLength = qsizetype(static_cast<uchar>(buffer[m])) * 16;
    if (blockLength == 0) {
        recordWithoutTitles();
        writeInterval(audio, false);
        consume(qsizetype(m) + 1);
        m_sinceAccepted = 0;
        return true;
    }
    // Deliberately m + L, not m + 1 + L: a block missing only its last byte is
    // taken one byte short.
    if (m + blockLength > buffer.size())
        return false;
    const QByteArrayView block = buffer.sliced(qsizetype(m) + 1).first(std::min(blockLength, buffer.size() - m - 1));
    if (!isWellFormed(block) && !IsCleanText(block)) {
        m_lastValid = false;
        m_resyncState = ResyncLost;
        m_searchFrom = qsizetype(m) + 2;
        m_rejectedEnd = qsizetype(m) + 1 + blockLength;
        return true;
    }
    m_lastValid = true;
    m_lastText = decodeText(block);
    const bool titleChanged = ParseResponseText();
    if (m_host.shownTitle().isEmpty())
        recordWithoutTitles();
    writeInterval(audio, titleChanged);
    consume(std::min(qsizetype(m) + 1 + blockLength, buffer.size()));
    m_sinceAccepted = 0;
    ++m_metaBlocks;
    return true;
}

void IcyStream::giveUpTitles()
{
    m_titlesGivenUp = true;
    m_resyncState = 0;
    m_host.showStreamText(titlesGivenUpText());
    recordWithoutTitles();
}
