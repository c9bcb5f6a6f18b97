#include "recorder/songwriter.h"

#include "base/diskwrite.h"

#include <QDir>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <sys/file.h>
#endif

namespace {

// Enough for any folder a recording fills; past it something else is wrong.
constexpr int MaxNumber = 100000;

// An advisory lock on the open file for as long as it stays open: another
// recording, in this process or another, that opens the same file does not
// get it and moves on to the next name. The system drops it with the file.
bool lockExclusively(QFile &file)
{
#ifdef Q_OS_UNIX
    return ::flock(file.handle(), LOCK_EX | LOCK_NB) == 0;
#else
    Q_UNUSED(file);
    return true;
#endif
}

} // namespace

QString numberedFileName(const QString &path, int number)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    qsizetype dot = path.lastIndexOf(u'.');
    if (dot <= slash + 1)
        dot = path.size();
    return path.left(dot) + QStringLiteral(" (%1)").arg(number) + path.mid(dot);
}

SongWriter::SongWriter()
{
    m_cache.reserve(CacheLimit * 2);
}

void SongWriter::resetCounters()
{
    m_blockWrites = 0;
    m_bytesWritten = 0;
    m_error.clear();
}

bool SongWriter::open(const QString &path, bool replace)
{
    close();
    // Unbuffered: every cache flush is one write, and a failing one is seen at once.
    // NewOnly makes the test for a free name and the creation one step. A file
    // to replace is emptied only once it is locked, so that one another
    // recording is writing keeps what it holds.
    const QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Unbuffered;
    for (int number = 1; number <= MaxNumber; ++number) {
        const bool replacing = replace && number == 1;
        m_file.setFileName(number == 1 ? path : numberedFileName(path, number));
        if (m_file.open(mode | (replacing ? QIODevice::ReadWrite : QIODevice::NewOnly))) {
            if (!lockExclusively(m_file)) {
                m_file.close();
                continue;
            }
            // A device such as /dev/full has no size to cut.
            if (m_file.size() == 0 || m_file.resize(0))
                return true;
            break;
        }
        if (replacing || !m_file.exists())
            break;
    }
    fail(tr("Unable to open \"%1\": %2").arg(path, DiskWrite::why(m_file)));
    m_file.close();
    return false;
}

void SongWriter::write(QByteArrayView data)
{
    if (m_cache.size() + data.size() <= CacheLimit) {
        m_cache.append(data);
        return;
    }
    // A block that goes out at once needs no trip through the cache.
    if (m_cache.isEmpty()) {
        writeBlock(data);
        return;
    }
    m_cache.append(data);
    flush();
}

void SongWriter::flush()
{
    if (m_cache.isEmpty())
        return;
    writeBlock(m_cache);
    m_cache.resize(0); // keeps the allocation for the next block
}

void SongWriter::close()
{
    if (!m_file.isOpen())
        return;
    flush();
    m_file.close();
}

void SongWriter::writeBlock(QByteArrayView block)
{
    // After a failure the recording is being stopped: nothing more goes out.
    if (!m_file.isOpen() || !m_error.isEmpty())
        return;
    const qint64 written = DiskWrite::writeAll(m_file, block);
    m_bytesWritten += double(written);
    ++m_blockWrites;
    if (written != block.size())
        fail(tr("Unable to write \"%1\": %2").arg(m_file.fileName(), DiskWrite::why(m_file)));
}

QString SongWriter::settlePartial(SongFileOptions::PartialSongs choice)
{
    const QString path = m_file.fileName();
    switch (choice) {
    case SongFileOptions::PartialSongs::Keep:
        return {};
    case SongFileOptions::PartialSongs::Delete:
        if (QFile::remove(path))
            return {};
        return tr("Could not delete the partial song \"%1\".").arg(path);
    case SongFileOptions::PartialSongs::Move:
        break;
    }
    const QFileInfo info(path);
    const QString folder = info.dir().filePath(IncompleteFolder);
    const QString target = folder + u'/' + info.fileName();
    if (QDir().mkpath(folder)) {
        // A rename never replaces a file: a taken name is passed by.
        for (int number = 1; number <= MaxNumber; ++number) {
            const QString name = number == 1 ? target : numberedFileName(target, number);
            if (m_file.rename(name))
                return {};
            if (!QFileInfo::exists(name))
                break;
        }
    }
    return tr("Could not move the partial song \"%1\" into \"%2\".").arg(path, folder);
}

void SongWriter::fail(const QString &message)
{
    if (m_error.isEmpty())
        m_error = message;
}
