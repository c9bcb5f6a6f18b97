#include "recorder/cuesheet.h"

#include "recorder/songtags.h"

#include <QFileInfo>
#include <QSaveFile>

namespace {

constexpr qint64 FramesPerSecond = 75;

// A cue sheet has no escape for quotes; a title's double quotes become single ones.
QString quoted(const QString &text)
{
    QString safe = tagSafeText(text);
    safe.replace(u'"', u'\'');
    return u'"' + safe + u'"';
}

qint64 cueFrame(qint64 timeNs)
{
    return std::max<qint64>(timeNs, 0) * FramesPerSecond / 1000000000;
}

QString indexTime(qint64 frame)
{
    const qint64 seconds = frame / FramesPerSecond;
    return QStringLiteral("%1:%2:%3")
        .arg(seconds / 60, 2, 10, QLatin1Char('0'))
        .arg(seconds % 60, 2, 10, QLatin1Char('0'))
        .arg(frame % FramesPerSecond, 2, 10, QLatin1Char('0'));
}

} // namespace

CueSheet::CueSheet(const QString &audioPath, StreamFormat format, const QString &station) : m_station(station)
{
    const QFileInfo audio(audioPath);
    m_path = audio.path() + u'/' + audio.completeBaseName() + QStringLiteral(".cue");
    // Cue sheets name a type only for MP3; WAVE is what players accept for the rest.
    m_fileLine = QStringLiteral("FILE \"%1\" %2")
                     .arg(audio.fileName(),
                          format == StreamFormat::Mp3 ? QStringLiteral("MP3") : QStringLiteral("WAVE"));
}

bool CueSheet::addTrack(const QString &streamTitle, qint64 timeNs)
{
    qint64 frame = cueFrame(timeNs);
    if (!m_tracks.isEmpty() && frame <= m_tracks.last().frame) {
        frame = m_tracks.last().frame;
        m_tracks.removeLast();
    }
    if (m_tracks.size() < MaxTracks) {
        const TitleParts parts = splitStreamTitle(streamTitle);
        m_tracks.append({parts.artist, parts.title, frame});
    }
    return write();
}

bool CueSheet::finish(qint64 endNs)
{
    if (m_tracks.size() > 1 && m_tracks.last().frame >= cueFrame(endNs))
        m_tracks.removeLast();
    return write();
}

QString CueSheet::text() const
{
    QStringList lines{QStringLiteral("REM COMMENT \"Tunecatch\""),
                      QStringLiteral("PERFORMER ") + quoted(m_station),
                      QStringLiteral("TITLE ") + quoted(m_station), m_fileLine};
    for (qsizetype i = 0; i < m_tracks.size(); ++i) {
        const Track &track = m_tracks[i];
        lines << QStringLiteral("  TRACK %1 AUDIO").arg(i + 1, 2, 10, QLatin1Char('0'));
        if (!track.artist.isEmpty())
            lines << QStringLiteral("    PERFORMER ") + quoted(track.artist);
        if (!track.title.isEmpty())
            lines << QStringLiteral("    TITLE ") + quoted(track.title);
        lines << QStringLiteral("    INDEX 01 ") + indexTime(track.frame);
    }
    return lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n");
}

bool CueSheet::write()
{
    QSaveFile file(m_path);
    const QByteArray bytes = text().toUtf8();
    // Unbuffered, so that a write the disk cuts short is seen before the commit.
    if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(bytes) == bytes.size() &&
        file.commit()) {
        m_error.clear();
        return true;
    }
    file.cancelWriting();
    m_error = tr("Could not write the cue sheet %1: %2").arg(m_path, file.errorString());
    return false;
}
