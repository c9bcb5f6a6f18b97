#pragma once

#include <QString>

#include <optional>

// Texts and figures of the recorder's statistics displays, computed from the
// counters the stream parser and the output stage keep.
namespace RecorderStats {

// The counters of one recording as the displays read them: those of the
// stream parser, then those of the output stage.
struct Counters
{
    double bytesTotal = 0;
    qint16 bitrate = 0;
    qint32 metaBlocks = 0;
    qsizetype receiveBuffer = 0;
    double peakBuffer = 0;
    qint32 averagePacket = 0;
    double largestPacket = 0;
    double discardedBytes = 0;
    qint32 resyncCount = 0;
    bool lastTextValid = true;
    bool inSync = true;
    QString lastText;   // the latest header or metadata block
    QString headerText; // the station's answer
    qsizetype diskCache = 0;
    qint32 blockWrites = 0;
    double bytesWritten = 0;
    QString format; // of the stream ("MP3", "AAC", "Ogg"); empty until its answer is in
    // Audio held back for a cut at the quiet moment: now, and the most at once.
    qsizetype cutHeld = 0;
    qsizetype peakCutHeld = 0;
};

// lbBitrate: the format beside the bit rate ("MP3, 128 kbit/s"), either
// alone while the other is not known.
QString bitrateText(qint16 bitrate, const QString &format);

// Minutes (unlimited), ":" and two-digit seconds: 59 -> "0:59", 7507 -> "125:07".
QString MakeTime(qint32 seconds);

// lbStore: below 950000 bytes in KB, from there in MB, rounded to two decimals
// ("927.73 KB", "0.91 MB"); trailing zeros are not shown ("1.5 KB").
QString storedSizeText(double bytesTotal);

// Playing time of the recorded audio at the announced bit rate (kbit/s),
// rounded to whole seconds. Nothing when the bit rate is 0 (no "icy-br:")
// or the result does not fit.
std::optional<qint32> elapsedSeconds(double bytesTotal, qint16 bitrate);

enum class Limit { Minutes, Megabytes };

// Progress towards the selected stop limit as a whole percentage in 0..100:
// elapsed seconds against limitValue minutes, or bytes written against
// limitValue megabytes. Nothing when the limit is 0 (the division fails) or
// the elapsed time is unknown.
std::optional<int> limitProgress(Limit kind, double limitValue, std::optional<qint32> elapsedSeconds,
                                 double bytesWritten);
// The limit has been reached: 100 % of a limit greater than 0.
bool limitReached(std::optional<int> percent, double limitValue);

// Monitor panel texts: a count followed by " bytes"; the disk cache as
// "n bytes / 64000 bytes"; the sync status "d bytes have been discarded in r resyncs. ".
QString bytesText(double bytes);
QString diskCacheText(qsizetype cacheLength);
// Audio held back for a cut, and the most held: "12.5 KB (peak 98.0 KB)".
QString cutHeldText(qsizetype held, qsizetype peak);
QString syncStatText(double discardedBytes, qint32 resyncCount);

// Bar_Buffer: the receive buffer against its peak, clamped to 0..100;
// nothing while the peak is 0 (the tick skips the bar).
std::optional<int> bufferBarPercent(qsizetype bufferLength, double peakBuffer);
// Bar_Cache: the disk cache against its 64000-byte limit, clamped to 0..100.
int cacheBarPercent(qsizetype cacheLength);

} // namespace RecorderStats
