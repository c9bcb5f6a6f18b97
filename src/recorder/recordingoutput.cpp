#include "recorder/recordingoutput.h"

#include "catalogue/stationnames.h"

#include <QDir>

#include <utility>

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
    name.replace(QStringLiteral("%STATION%"), StationNames::fileNamePart(station, 60));
    name.replace(QStringLiteral("%DATE%"), now.toString(QStringLiteral("yyyy-MM-dd")));
    name.replace(QStringLiteral("%TIME%"), now.toString(QStringLiteral("HH-mm")));
    return name;
}

QString templateFolder(const QString &templ, const QDateTime &now, const QString &recordingsFolder)
{
    // A character no cleaned name holds marks where the names go.
    const QChar mark(u'\x01');
    QString marked = templ;
    marked.replace(QStringLiteral("%STATION%"), mark).replace(SongPlaceholder, mark);
    const QStringList parts = QDir::cleanPath(BuildFileName(marked, {}, now, recordingsFolder)).split(u'/');
    QStringList folder;
    for (const QString &part : parts) {
        if (part.contains(mark) || &part == &parts.last())
            break;
        folder.append(part);
    }
    return folder.join(u'/');
}

RecordingOutput::RecordingOutput() = default;

RecordingOutput::~RecordingOutput() = default;

void RecordingOutput::resetCounters()
{
    m_writer.resetCounters();
    m_files.clear();
}

void RecordingOutput::startRecording(const Recording &recording)
{
    m_recording = recording;
    m_frames.reset();
    m_kind = FileKind::None;
    m_titles = 0;
    m_songTitle = 0;
    m_lastWrite = 0;
    m_skipRepeat = false;
    m_warnings.clear();
}

void RecordingOutput::begin(StreamFormat format, qsizetype interval)
{
    m_format = format;
    // A song begins up to one interval back; a continuous file's titles are
    // timed once the frames just after them are known, which is less.
    m_frames = std::make_unique<SongFrames>(format, std::max(interval, SongFrames::SearchLimit));
}

std::optional<StreamFormat> RecordingOutput::format() const
{
    if (!m_frames)
        return std::nullopt;
    return m_format;
}

bool RecordingOutput::OpenFile()
{
    if (m_kind == FileKind::Song)
        closeFile(Partial);
    else if (m_kind == FileKind::Continuous)
        closeContinuous();
    SongTags tags;
    tags.title = tagSafeText(m_recording.station);
    if (!openFile(m_fileName, FileKind::Continuous, tags))
        return false;
    m_fileStartNs = m_frames->timeAt(m_frames->position());
    m_cue.emplace(m_writer.fileName(), m_format, m_recording.station);
    m_pendingTitles.clear();
    return true;
}

bool RecordingOutput::openFile(const QString &name, FileKind kind, SongTags tags)
{
    // Only the first file can be the one the user agreed to overwrite.
    const bool replace = !m_recording.replaceable.isEmpty() && name == m_recording.replaceable;
    m_recording.replaceable.clear();
    const QString folder = m_recording.folder;
    if (!folder.isEmpty() && !QDir::cleanPath(name).startsWith(folder + u'/')) {
        m_writer.fail(tr("The file name \"%1\" leaves its folder \"%2\"").arg(name, folder));
        return false;
    }
    if (!m_writer.open(name, replace))
        return false;
    m_fileName = m_writer.fileName();
    if (!m_files.contains(m_fileName))
        m_files << m_fileName;
    m_kind = kind;
    m_tagger.reset();
    m_tagHead.clear();
    if (m_recording.options.writeTags) {
        tags.album = tagSafeText(m_recording.station);
        tags.date = m_recording.start;
        tags.comment = tagSafeText(m_recording.address);
        // Until the file closes whole, it is not.
        tags.recording = Partial;
        m_tagger.emplace(m_format, tags);
        // An Ogg file's tags are its comment header: they wait for the header pages.
        if (m_format != StreamFormat::Ogg)
            m_writer.write(m_tagger->start({}));
    }
    return true;
}

void RecordingOutput::closeFile(const QString &recording)
{
    if (m_tagger && !m_tagger->hasStarted() && !m_tagHead.isEmpty())
        startOggTags();
    m_writer.close();
    const bool partialSong = m_kind == FileKind::Song && recording == Partial;
    const SongFileOptions::PartialSongs choice = m_recording.options.partialSongs;
    // A file whose audio could not be written is left as it is.
    if (m_writer.error().isEmpty() && !(partialSong && choice == SongFileOptions::PartialSongs::Delete)) {
        if (m_tagger && m_tagger->hasStarted() && !m_tagger->finish(m_writer.fileName(), recording))
            warn(m_tagger->error());
    }
    if (partialSong && m_writer.error().isEmpty()) {
        const QString closed = m_writer.fileName();
        warn(m_writer.settlePartial(choice));
        // A moved partial song is counted where it went.
        const qsizetype at = m_files.indexOf(closed);
        if (at >= 0)
            m_files[at] = m_writer.fileName();
    }
    m_tagger.reset();
    m_kind = FileKind::None;
}

void RecordingOutput::closeContinuous()
{
    m_frames->endFile();
    timeTitles(true);
    if (m_cue && m_cue->trackCount() > 0 &&
        !m_cue->finish(m_frames->timeAt(m_frames->position()) - m_fileStartNs))
        warn(m_cue->error());
    m_cue.reset();
    closeFile(Partial);
}

void RecordingOutput::CloseFile()
{
    if (m_kind == FileKind::Song) {
        writeAudio(m_frames->finish());
        closeFile(Partial);
    } else if (m_kind == FileKind::Continuous) {
        closeContinuous();
    }
}

void RecordingOutput::WriteToDisk(QByteArrayView data, bool flush)
{
    if (!m_writeEnabled || !m_frames)
        return;
    if (std::exchange(m_skipRepeat, false))
        return;
    m_lastWrite = data.size();
    if (m_kind == FileKind::Continuous) {
        writeAudio(data);
        m_frames->push(data);
        timeTitles(false);
    } else {
        writeAudio(m_frames->push(data));
    }
    if (flush)
        m_writer.flush();
}

void RecordingOutput::NewSong(const QString &title, bool singleSong, const QString &freshName)
{
    ++m_titles;
    if (!m_frames)
        return;
    if (!singleSong) {
        removeSongPlaceholder();
        if (m_kind == FileKind::Continuous)
            addTitle(title);
        m_skipRepeat = m_kind == FileKind::Song;
        return;
    }
    // The first song was joined after it began; any other that ends here was
    // recorded from its title change to this one.
    const QString ending = m_songTitle == 1 ? Partial : Complete;
    if (m_kind == FileKind::Continuous)
        closeContinuous();
    if (!m_writeEnabled) {
        // A song scan waits: the song that played ends, and none begins.
        if (m_kind == FileKind::Song) {
            writeAudio(m_frames->endFile());
            closeFile(ending);
        }
        return;
    }
    const SongFrames::Cut cut = m_frames->cut(songStart());
    if (m_kind == FileKind::Song) {
        writeAudio(cut.tail);
        closeFile(ending);
    }
    m_skipRepeat = true;
    m_fileName = freshName;
    m_fileName.replace(SongPlaceholder, StationNames::cleanShortName(title));
    SongTags tags;
    tags.setStreamTitle(title);
    if (!openFile(m_fileName, FileKind::Song, tags))
        return;
    m_songTitle = m_titles;
    writeAudio(cut.head);
}

qint64 RecordingOutput::songStart() const
{
    // The interval just written, which the station sent in front of the title.
    return m_frames->position() - m_lastWrite;
}

void RecordingOutput::removeSongPlaceholder()
{
    m_fileName.remove(SongPlaceholder);
}

void RecordingOutput::writeAudio(QByteArrayView bytes)
{
    if (m_tagger && !m_tagger->hasStarted()) {
        m_tagHead += bytes;
        if (m_tagHead.size() >= SongFrames::SearchLimit)
            startOggTags();
        return;
    }
    m_writer.write(bytes);
}

void RecordingOutput::startOggTags()
{
    m_writer.write(m_tagger->start(std::exchange(m_tagHead, {})));
    // Bytes that do not begin as Ogg went out untagged: there is nothing to complete.
    if (!m_tagger->error().isEmpty()) {
        warn(m_tagger->error());
        m_tagger.reset();
    }
}

void RecordingOutput::addTitle(const QString &title)
{
    // The first title names the song the file began in.
    if (m_cue->trackCount() == 0) {
        if (!m_cue->addTrack(title, 0))
            warn(m_cue->error());
        return;
    }
    m_pendingTitles.append({title, m_frames->position()});
}

// A title's time in the file counts the frames before it, so it is known once
// the scanner has decided what the bytes around it are (or the file ends).
void RecordingOutput::timeTitles(bool all)
{
    while (!m_pendingTitles.isEmpty() && (all || m_pendingTitles.first().position < m_frames->decided())) {
        const PendingTitle pending = m_pendingTitles.takeFirst();
        if (!m_cue->addTrack(pending.title, m_frames->timeAt(pending.position) - m_fileStartNs))
            warn(m_cue->error());
    }
}

void RecordingOutput::warn(const QString &warning)
{
    if (!warning.isEmpty())
        m_warnings.append(warning);
}

QStringList RecordingOutput::takeWarnings()
{
    return std::exchange(m_warnings, {});
}
