#pragma once

#include "recorder/cuesheet.h"
#include "recorder/songcutter.h"
#include "recorder/songfileoptions.h"
#include "recorder/songframes.h"
#include "recorder/songtagger.h"
#include "recorder/songwriter.h"
#include "recorder/streamformat.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QCoreApplication>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <deque>
#include <memory>
#include <optional>

// Expands a file-name template: a leading ".\" (and, off Windows, "./") goes
// into the recordings folder, which is created; every "%STATION%" becomes the
// station name cleaned as a title is (StationNames::fileNamePart, 60
// characters), so that no name reaches another folder; "%DATE%" the date
// "yyyy-MM-dd", "%TIME%" the time "HH-mm" (case-sensitive). "%SONG%" is left
// in place. A template that does not begin with "." is used as it stands.
QString BuildFileName(const QString &templ, const QString &station, const QDateTime &now,
                      const QString &recordingsFolder);

// The folder that the names in a template cannot change: the expanded
// template up to the first part of the path a "%STATION%" or "%SONG%" gives.
// Every file of a recording must lie inside it.
QString templateFolder(const QString &templ, const QDateTime &now, const QString &recordingsFolder);

// The recorder's output stage. The stream parser hands it the audio in
// intervals and says where titles change; it writes them into one continuous
// file, or into one file per song:
//
//   audio -> [SongCutter] -> SongFrames (whole frames, where a song begins) -> SongWriter (the file)
//                                        SongTagger (tags) and CueSheet beside it
//
// Song files cut at the quiet moment (the SongCutter, on unless the options
// turn it off) begin where the cutter puts each title change, once the audio
// after it has come; songs of a stream it cannot decode, or with the cut
// turned off, begin at the first whole frame of the interval before their
// title. Either way a song ends with the last whole frame before the next
// one (songStart is where that is decided); their tags say whether the song
// is complete, and how it was cut. A
// continuous file takes every byte as it comes and gets a cue sheet with a
// track per title. Failures of the audio never throw: the first file that
// cannot be made or written is kept in error() (the recorder stops and says
// why). Tags, cue sheets and moving partial songs never cost audio: what
// fails there is only reported (takeWarnings).
class RecordingOutput
{
    Q_DECLARE_TR_FUNCTIONS(RecordingOutput)

public:
    static constexpr qsizetype CacheLimit = SongWriter::CacheLimit;
    // The RECORDING field of a song recorded from its title change to the
    // next, and of one that holds only part of its song.
    static inline const QString Complete = QStringLiteral("complete");
    static inline const QString Partial = QStringLiteral("partial");

    // What a recording's files carry, known when it starts.
    struct Recording
    {
        QString station;
        QString address;
        QDateTime start;
        SongFileOptions options;
        // An existing file the user agreed to overwrite; every other name
        // that is taken gets a number instead.
        QString replaceable;
        // See templateFolder; a file outside it is refused. Empty: no check.
        QString folder;
    };

    RecordingOutput();
    ~RecordingOutput();
    RecordingOutput(const RecordingOutput &) = delete;
    RecordingOutput &operator=(const RecordingOutput &) = delete;

    const QString &FileName() const { return m_fileName; }
    void setFileName(const QString &name) { m_fileName = name; }
    // Kept across recordings: a new recording does not reset it.
    bool WriteEnabled() const { return m_writeEnabled; }
    void setWriteEnabled(bool enabled) { m_writeEnabled = enabled; }
    const QByteArray &DiskCache() const { return m_writer.cache(); }
    bool isFileOpen() const { return m_writer.isOpen(); }

    // Statistics: cache flushes that reached a file and the bytes they wrote.
    qint32 blockWrites() const { return m_writer.blockWrites(); }
    double bytesWritten() const { return m_writer.bytesWritten(); }
    // The bytes written and those in the cache: what the files hold once it goes out.
    double bytesTaken() const { return m_writer.bytesWritten() + double(m_writer.cache().size()); }
    // The audio files this recording made, each once, under the names they
    // ended with (numbered when taken, moved when a partial song was).
    const QStringList &files() const { return m_files; }
    // What a new recording starts from: both counters zero, no files, no error.
    void resetCounters();
    // Why the output cannot go on: the first open or write that failed; empty while none has.
    const QString &error() const { return m_writer.error(); }

    // A recording starts: what its files carry. The stream's format is not known yet.
    void startRecording(const Recording &recording);
    // The station's answer says what its stream holds; interval is its
    // metadata interval, the stretch a song file may begin before its title.
    void begin(StreamFormat format, qsizetype interval);
    bool hasBegun() const { return m_frames != nullptr; }
    std::optional<StreamFormat> format() const;

    // Opens FileName as the recording's one continuous file (closing any
    // open file), tags it with the station's name and starts its cue sheet.
    // Returns false (and sets error) when it cannot be made.
    bool OpenFile();
    // The recording ends: the open file gets its last whole frames and its
    // final tags; a song file then is partial.
    void CloseFile();

    // Audio of the stream, in order; dropped while writing is not enabled. In
    // one file per song, the interval repeated after NewSong (the split rule)
    // is in the new song already and is not written again; a continuous file
    // gets it twice, as it always has.
    void WriteToDisk(QByteArrayView data, bool flush);

    // A title change, after the interval in front of it was written. One file
    // per song: the open song ends, and while writing is enabled the next one
    // begins in freshName (a BuildFileName made now, "%SONG%" becoming the
    // cleaned title, 30 characters). Otherwise "%SONG%" is removed from
    // FileName, the open file stays, and a continuous file's cue sheet gets
    // the title.
    void NewSong(const QString &title, bool singleSong, const QString &freshName);

    // One file for the whole recording: its name does without "%SONG%".
    void removeSongPlaceholder();

    // The connection dropped: the cuts waiting for audio are made with what
    // came, and what was held back for them is written. A new connection's
    // audio starts afresh.
    void streamBroke();

    // Audio held back for a cut at the quiet moment, and the most held at
    // once in this recording.
    qsizetype cutBytesHeld() const { return m_cutter ? m_cutter->bytesHeld() : 0; }
    qsizetype peakCutBytesHeld() const { return m_peakCutHeld; }
    // The station's title delay the cuts of this recording use; null while
    // no song is cut at the quiet moment.
    TitleDelay *titleDelay() { return m_cutter ? &m_cutter->delay() : nullptr; }
    const TitleDelay *titleDelay() const { return m_cutter ? &m_cutter->delay() : nullptr; }

    // What went wrong beside the audio since the last call: tags, the cue
    // sheet, moving or deleting a partial song.
    QStringList takeWarnings();

private:
    enum class FileKind
    {
        None,
        Song,       // fed with whole frames from m_frames
        Continuous, // fed with every byte
    };
    // A title of a continuous file waiting until the frames around it are known.
    struct PendingTitle
    {
        QString title;
        qint64 position = 0;
    };

    // A title change the cutter has yet to place: the file it names.
    struct PendingSong
    {
        QString fileName;
        QString title;
        int titleNumber = 0;
    };

    // Where, in the stream, the song of a title change begins: the one place
    // that decides it. Without the cutter, the interval in front of the title.
    // The old song ends with the whole frames before it and the new one begins
    // with the first whole frame at or after it (SongFrames::cut).
    qint64 songStart(const SongCut *cut = nullptr) const;
    void startSong(const QString &fileName, const QString &title, int titleNumber, qint64 start,
                   std::optional<CutQuality> quality);
    // What the RECORDING field of the song that closes says.
    QString songEnding(std::optional<CutQuality> endQuality) const;
    void startCutter();
    // Writes what the cutter let go: audio to the open song, cuts as new songs.
    void takeCut();
    // Every cut made and every byte held written; the cutter stays for more.
    void flushCutter();
    // No more cuts at the quiet moment in this recording: the whole-frame rule from here.
    void stopCutter();
    bool openFile(const QString &name, FileKind kind, SongTags tags);
    void closeFile(const QString &recording);
    void closeContinuous();
    void writeAudio(QByteArrayView bytes);
    void startOggTags();
    void addTitle(const QString &title);
    void timeTitles(bool all);
    void warn(const QString &warning);

    Recording m_recording;
    QString m_fileName;
    QStringList m_files;
    bool m_writeEnabled = false;
    SongWriter m_writer;
    StreamFormat m_format = StreamFormat::Mp3;
    std::unique_ptr<SongFrames> m_frames;
    std::unique_ptr<SongCutter> m_cutter;
    // Where the cutter's stream began in SongFrames' stream.
    qint64 m_cutterBase = 0;
    std::deque<PendingSong> m_pendingSongs;
    // Cut at the quiet moment: on unless turned off, or the stream proved undecodable.
    bool m_quietCut = false;
    qsizetype m_peakCutHeld = 0;
    // How the open song began: at silence or at its title (none: by the whole-frame rule).
    std::optional<CutQuality> m_songQuality;

    FileKind m_kind = FileKind::None;
    // Title changes of this recording, and the one the open song began at.
    int m_titles = 0;
    int m_songTitle = 0;
    qint64 m_lastWrite = 0;
    bool m_skipRepeat = false;

    std::optional<SongTagger> m_tagger;
    // An Ogg file's first bytes, held until they reach past its header pages.
    QByteArray m_tagHead;

    std::optional<CueSheet> m_cue;
    QList<PendingTitle> m_pendingTitles;
    qint64 m_fileStartNs = 0;

    QStringList m_warnings;
};
