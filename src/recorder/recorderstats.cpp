#include "recorder/recorderstats.h"

#include "base/conversions.h"
#include "recorder/recordingoutput.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <limits>

namespace RecorderStats {

namespace {

// A number as the displays write it: no trailing zeros, "." as separator.
QString numberText(double value)
{
    return QString::number(value, 'g', 15);
}

// A whole percentage clamped to 0..100; nothing when the division failed.
std::optional<int> percent(double part, double whole)
{
    if (whole == 0)
        return std::nullopt;
    const double value = Convert::roundHalfEven(part * 100 / whole);
    if (!std::isfinite(value))
        return std::nullopt;
    return static_cast<int>(std::clamp(value, 0.0, 100.0));
}

} // namespace

QString bitrateText(qint16 bitrate, const QString &format)
{
    const QString rate =
        bitrate > 0 ? QCoreApplication::translate("RecorderStats", "%1 kbit/s").arg(bitrate) : QString();
    if (format.isEmpty() || rate.isEmpty())
        return format + rate;
    return format + QStringLiteral(", ") + rate;
}

QString MakeTime(qint32 seconds)
{
    const qint32 minutes = seconds / 60;
    const qint32 rest = seconds - minutes * 60;
    return QString::number(minutes) + u':' + QStringLiteral("%1").arg(rest, 2, 10, QLatin1Char('0'));
}

QString storedSizeText(double bytesTotal)
{
    if (bytesTotal >= 950000)
        return QCoreApplication::translate("RecorderStats", "%1 MB")
            .arg(numberText(Convert::roundHalfEven(bytesTotal / 1024 / 1024 * 100) / 100));
    return QCoreApplication::translate("RecorderStats", "%1 KB")
        .arg(numberText(Convert::roundHalfEven(bytesTotal / 1024 * 100) / 100));
}

std::optional<qint32> elapsedSeconds(double bytesTotal, qint16 bitrate)
{
    if (bitrate == 0)
        return std::nullopt;
    const double seconds = Convert::roundHalfEven(bytesTotal / (bitrate / 8.0 * 1000));
    if (seconds < std::numeric_limits<qint32>::min() || seconds > std::numeric_limits<qint32>::max())
        return std::nullopt;
    return static_cast<qint32>(seconds);
}

std::optional<int> limitProgress(Limit kind, double limitValue, std::optional<qint32> elapsedSeconds,
                                 double bytesWritten)
{
    if (kind == Limit::Minutes) {
        if (!elapsedSeconds)
            return std::nullopt;
        return percent(*elapsedSeconds, limitValue * 60);
    }
    return percent(bytesWritten / 1024, limitValue * 1024);
}

bool limitReached(std::optional<int> percent, double limitValue)
{
    return percent == 100 && limitValue > 0;
}

QString bytesText(double bytes)
{
    return QCoreApplication::translate("RecorderStats", "%1 bytes").arg(numberText(bytes));
}

QString diskCacheText(qsizetype cacheLength)
{
    return QCoreApplication::translate("RecorderStats", "%1 bytes / %2 bytes")
        .arg(cacheLength)
        .arg(RecordingOutput::CacheLimit);
}

QString cutHeldText(qsizetype held, qsizetype peak)
{
    return QCoreApplication::translate("RecorderStats", "%1 (peak %2)")
        .arg(bytesText(double(held)), bytesText(double(peak)));
}

QString syncStatText(double discardedBytes, qint32 resyncCount)
{
    return QCoreApplication::translate("RecorderStats", "%1 bytes have been discarded in %2 resyncs. ")
        .arg(numberText(discardedBytes))
        .arg(resyncCount);
}

std::optional<int> bufferBarPercent(qsizetype bufferLength, double peakBuffer)
{
    return percent(static_cast<double>(bufferLength), peakBuffer);
}

int cacheBarPercent(qsizetype cacheLength)
{
    return *percent(static_cast<double>(cacheLength), RecordingOutput::CacheLimit);
}

} // namespace RecorderStats
