#include "recorder/recordingoutput.h"

#include "catalogue/stationnames.h"

#include <QDir>

#include <variant>

#include <utility>

using namespace Qt::StringLiterals;

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
    m_cutter.reset();
    m_pendingSongs.clear();
    m_peakCutHeld = 0;
    m_songQuality.reset();
}

void RecordingOutput::begin(StreamFormat format, qsizetype interval)
{
    m_format = format;
    // A song begins up to one interval back; a continuous file's titles are
    // timed once the frames just after them are known, which is less.
    m_frames = std::make_unique<SongFrames>(format, std::max(interval, SongFrames::SearchLimit));
    m_cutter.reset();
    m_pendingSongs.clear();
    m_quietCut = m_recording.options.cutAtQuietMoment;
    if (m_quietCut)
        startCutter();
}

std::optional<StreamFormat> RecordingOutput::format() const
{
    if (!m_frames)
        return std::nullopt;
    return m_format;
}

bool RecordingOutput::OpenFile()
{
    // A continuous file takes every byte as it comes: nothing is held for a cut.
    flushCutter();
    m_cutter.reset();
    m_pendingSongs.clear();
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
    flushCutter();
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
    } else if (m_cutter) {
        m_cutter->push(data);
        takeCut();
        if (!m_cutter->searching())
            stopCutter();
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
    if (m_kind == FileKind::Continuous)
        closeContinuous();
    if (!m_writeEnabled) {
        // A song scan waits: the song that played ends, and none begins.
        flushCutter();
        if (m_kind == FileKind::Song) {
            writeAudio(m_frames->endFile());
            closeFile(songEnding(std::nullopt));
        }
        return;
    }
    m_skipRepeat = true;
    if (!m_cutter && m_quietCut)
        startCutter();
    if (m_cutter) {
        // The song changes once the audio around its title has come.
        m_pendingSongs.push_back({freshName, title, m_titles});
        m_cutter->changeTitle(title);
        takeCut();
        return;
    }
    startSong(freshName, title, m_titles, songStart(), std::nullopt);
}

void RecordingOutput::startSong(const QString &fileName, const QString &title, int titleNumber, qint64 start,
                                std::optional<CutQuality> quality)
{
    const SongFrames::Cut cut = m_frames->cut(start);
    if (m_kind == FileKind::Song) {
        writeAudio(cut.tail);
        closeFile(songEnding(quality));
    }
    m_fileName = fileName;
    m_fileName.replace(SongPlaceholder, StationNames::cleanShortName(title));
    SongTags tags;
    tags.setStreamTitle(title);
    if (!openFile(m_fileName, FileKind::Song, tags))
        return;
    m_songTitle = titleNumber;
    m_songQuality = quality;
    writeAudio(cut.head);
}

QString RecordingOutput::songEnding(std::optional<CutQuality> endQuality) const
{
    // The first song was joined after it began; any other that ends here was
    // recorded from its title change to this one.
    if (m_songTitle == 1)
        return Partial;
    if (!m_songQuality || !endQuality)
        return Complete;
    // Worth checking by ear unless both of its ends were cut at silence.
    const CutQuality quality = *m_songQuality == CutQuality::Silence && *endQuality == CutQuality::Silence
                                   ? CutQuality::Silence
                                   : CutQuality::Title;
    return Complete + u"; "_s + SongCutter::qualityNote(quality);
}

qint64 RecordingOutput::songStart(const SongCut *cut) const
{
    // Where the cutter put it, in this output's stream.
    if (cut)
        return m_cutterBase + cut->offset;
    // The interval just written, which the station sent in front of the title.
    return m_frames->position() - m_lastWrite;
}

void RecordingOutput::startCutter()
{
    const QString station = m_recording.station.isEmpty() ? m_recording.address : m_recording.station;
    m_cutter = std::make_unique<SongCutter>(m_format, station, true);
    m_cutterBase = m_frames->position();
}

void RecordingOutput::takeCut()
{
    for (auto &piece : m_cutter->takeOutput()) {
        if (const auto *bytes = std::get_if<QByteArray>(&piece)) {
            writeAudio(m_frames->push(*bytes));
            continue;
        }
        const SongCut &cut = std::get<SongCut>(piece);
        // A title that had no audio before the next one got no cut of its own.
        while (m_pendingSongs.size() > 1 && m_pendingSongs.front().title != cut.title)
            m_pendingSongs.pop_front();
        if (m_pendingSongs.empty())
            continue;
        const PendingSong song = m_pendingSongs.front();
        m_pendingSongs.pop_front();
        startSong(song.fileName, cut.title, song.titleNumber, songStart(&cut), cut.quality);
    }
    m_peakCutHeld = std::max(m_peakCutHeld, m_cutter->peakBytesHeld());
}

void RecordingOutput::flushCutter()
{
    if (!m_cutter)
        return;
    m_cutter->finish();
    takeCut();
}

void RecordingOutput::stopCutter()
{
    flushCutter();
    m_cutter.reset();
    m_pendingSongs.clear();
    m_quietCut = false;
}

void RecordingOutput::streamBroke()
{
    flushCutter();
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
