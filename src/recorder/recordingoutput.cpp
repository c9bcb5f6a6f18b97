#include "recorder/recordingoutput.h"

#include "catalogue/stationnames.h"

#include <QCoreApplication>
#include <QDir>

namespace {

const QString SongPlaceholder = QStringLiteral("%SONG%");

// Where a template that begins with "." points into the recordings folder:
// the first ".\" and, off Windows, also the first "./", whichever comes first.
qsizetype relativeMarker(const QString &templ)
{
    const qsizetype backslash = templ.indexOf(u".\\");
#ifdef Q_OS_WIN
    return backslash;
#else
    const qsizetype slash = templ.indexOf(u"./");
    if (backslash < 0 || slash < 0)
        return std::max(backslash, slash);
    return std::min(backslash, slash);
#endif
}

} // namespace

QString BuildFileName(const QString &templ, const QString &station, const QDateTime &now,
                      const QString &recordingsFolder)
{
    QDir().mkpath(recordingsFolder);
    QString name = templ;
    if (name.startsWith(u'.')) {
        const qsizetype marker = relativeMarker(name);
        if (marker >= 0)
            name.replace(marker, 2, recordingsFolder);
    }
    name.replace(QStringLiteral("%STATION%"), station);
    name.replace(QStringLiteral("%DATE%"), now.toString(QStringLiteral("yyyy-MM-dd")));
    name.replace(QStringLiteral("%TIME%"), now.toString(QStringLiteral("HH-mm")));
    return name;
}

RecordingOutput::RecordingOutput()
{
    m_cache.reserve(CacheLimit * 2);
}

void RecordingOutput::resetCounters()
{
    m_blockWrites = 0;
    m_bytesWritten = 0;
    m_files.clear();
    m_error.clear();
}

bool RecordingOutput::OpenFile()
{
    CloseFile();
    m_file.setFileName(m_fileName);
    // Unbuffered: every cache flush is one write, and a failing one is seen at once.
    if (m_file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
        if (!m_files.contains(m_fileName))
            m_files << m_fileName;
        return true;
    }
    fail(QCoreApplication::translate("RecordingOutput", "Unable to open \"%1\": %2")
             .arg(m_fileName, m_file.errorString()));
    return false;
}

void RecordingOutput::CloseFile()
{
    if (m_file.isOpen())
        m_file.close();
}

void RecordingOutput::WriteToDisk(QByteArrayView data, bool flush)
{
    if (!m_writeEnabled)
        return;
    const bool full = m_cache.size() + data.size() > CacheLimit;
    if (!full && !flush) {
        m_cache.append(data);
        return;
    }
    // A block that goes out at once needs no trip through the cache.
    if (m_cache.isEmpty()) {
        writeBlock(data);
        return;
    }
    m_cache.append(data);
    writeBlock(m_cache);
    m_cache.resize(0); // keeps the allocation for the next block
}

void RecordingOutput::writeBlock(QByteArrayView block)
{
    // After a failure the recording is being stopped: nothing more goes out.
    if (!m_file.isOpen() || !m_error.isEmpty())
        return;
    const qint64 written = m_file.write(block.data(), block.size());
    if (written > 0)
        m_bytesWritten += static_cast<double>(written);
    ++m_blockWrites;
    if (written != block.size())
        fail(QCoreApplication::translate("RecordingOutput", "Unable to write \"%1\": %2")
                 .arg(m_file.fileName(), m_file.errorString()));
}

void RecordingOutput::NewSong(const QString &title, bool singleSong, const QString &freshName)
{
    if (singleSong) {
        QString name = freshName;
        name.replace(SongPlaceholder, StationNames::cleanShortName(title));
        m_fileName = name;
        OpenFile();
    } else {
        removeSongPlaceholder();
    }
}

void RecordingOutput::removeSongPlaceholder()
{
    m_fileName.remove(SongPlaceholder);
}

void RecordingOutput::switchToContinuous()
{
    removeSongPlaceholder();
    OpenFile();
}

void RecordingOutput::fail(const QString &message)
{
    if (m_error.isEmpty())
        m_error = message;
}
