#include "recorder/recordingoutput.h"

#include "support/tempprofile.h"
#include "support/testaudio.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace TestAudio;
using Partial = SongFileOptions::PartialSongs;

namespace {

const QDateTime Now(QDate(2024, 3, 5), QTime(7, 9));
const QString Station = u"Radio \u00d61"_s;
const QString Address = u"http://127.0.0.1:8000/live"_s;

// A title change as the stream parser makes it: after interval `index`, with
// writing enabled or not (a song scan that waits disables it).
struct Title
{
    int index;
    QString title;
    bool enabled = true;
};

class RecordingOutputTest : public ProfileTest
{
protected:
    QString path(const QString &name) const { return profile.root() + u"/rec/"_s + name; }
    QStringList names(const QString &folder = {}) const
    {
        return QDir(path(folder)).entryList(QDir::Files, QDir::Name);
    }
    void start(StreamFormat format, qsizetype interval, SongFileOptions options = {},
               QString replaceable = {})
    {
        QDir().mkpath(path({}));
        out.resetCounters();
        out.startRecording({Station, Address, Now, options, replaceable, QDir::cleanPath(path({}))});
        // A first recording writes nothing until its first title.
        out.setWriteEnabled(false);
        out.begin(format, interval);
    }
    // Plays the audio into the output as the stream parser does: interval by
    // interval; the one in front of a title is written with flush set, then
    // NewSong, then the same interval again; the end closes the file.
    void play(const QByteArray &audio, qsizetype interval, const QList<Title> &titles, bool singleSong)
    {
        const QString song = path(u"%SONG%"_s + formatExtension(*out.format()));
        for (qsizetype at = 0, index = 0; at < audio.size(); at += interval, ++index) {
            const QByteArrayView bytes =
                QByteArrayView(audio).sliced(at, std::min(interval, audio.size() - at));
            const auto title =
                std::find_if(titles.begin(), titles.end(), [&](const Title &t) { return t.index == index; });
            if (title == titles.end()) {
                out.WriteToDisk(bytes, false);
                continue;
            }
            out.setWriteEnabled(title->enabled);
            out.WriteToDisk(bytes, true);
            out.NewSong(title->title, singleSong, song);
            out.WriteToDisk(bytes, false);
        }
        out.CloseFile();
    }
    QStringList tags(const QString &artist, const QString &title, const QString &recording) const
    {
        return {artist, title, Station, u"2024-03-05T07:09:00"_s, Address, recording, u"Tunecatch"_s};
    }
    RecordingOutput out;
};

TEST_F(RecordingOutputTest, BuildFileNameExpandsTheTemplate)
{
    const QString rec = profile.root() + u"/data/Tunecatch/Rec/"_s;
    const struct
    {
        QString templ, expected;
    } rows[] = {{u".\\%STATION%_%DATE%_%TIME%.mp3"_s, rec + u"Radio X_2024-03-05_07-09.mp3"_s},
                {u"./%SONG%.mp3"_s, rec + u"%SONG%.mp3"_s},
                {u".x\\.\\a.mp3"_s, u".x\\"_s + rec + u"a.mp3"_s},
                {u"C:\\Music\\%STATION%.mp3"_s, u"C:\\Music\\Radio X.mp3"_s},
                {u"/m/%DATE%/%DATE% %station%.mp3"_s, u"/m/2024-03-05/2024-03-05 %station%.mp3"_s}};
    for (const auto &row : rows)
        EXPECT_EQ(BuildFileName(row.templ, u"Radio: X"_s, Now, rec), row.expected)
            << row.templ.toStdString();
    EXPECT_TRUE(QFileInfo(rec).isDir());
    // A station name never names another folder.
    for (const QString &station : {u"../../x"_s, u"..\\x"_s, u"/x"_s, u".x"_s})
        EXPECT_EQ(BuildFileName(u"./%STATION%.mp3"_s, station, Now, rec), rec + u"x.mp3"_s);
    EXPECT_EQ(BuildFileName(u"./%STATION%.mp3"_s, u".."_s, Now, rec), rec + u"_.mp3"_s);

    // The folder no name can change, and a file outside it is refused.
    const QString r = QDir::cleanPath(rec);
    const struct
    {
        QString templ, folder;
    } folders[] = {{u"./%STATION%/%DATE%/%SONG%.mp3"_s, r},
                   {u"./%DATE%/../x/%SONG% - %STATION%.mp3"_s, r + u"/x"_s},
                   {u"/m/a%STATION%b/x.mp3"_s, u"/m"_s},
                   {u"/m/x.mp3"_s, u"/m"_s}};
    for (const auto &row : folders)
        EXPECT_EQ(templateFolder(row.templ, Now, rec), row.folder) << row.templ.toStdString();
    start(StreamFormat::Mp3, 5000);
    for (const QString &outside : {path(u"../x.mp3"_s), u"/tmp/x.mp3"_s}) {
        out.resetCounters();
        out.setFileName(outside);
        EXPECT_FALSE(out.OpenFile());
        EXPECT_TRUE(out.error().startsWith(u"The file name \""_s + outside + u"\" leaves its folder"_s));
    }
}

TEST_F(RecordingOutputTest, SongFilesBeginWithTheirTagsAndAWholeFrameAndSayWhetherTheyAreWhole)
{
    // The clips are noise under a tone: no quiet moment, so a quiet search cuts at the title.
    for (const auto &[clip, quietCut] :
         {std::pair(Clip::Mp3, false), std::pair(Clip::Adts, false), std::pair(Clip::Vorbis, false),
          std::pair(Clip::Mp3, true), std::pair(Clip::Adts, true), std::pair(Clip::Vorbis, true)}) {
        SCOPED_TRACE(clipName(clip).toStdString() + (quietCut ? " quiet cut" : ""));
        QDir(path({})).removeRecursively();
        const Encoded &audio = encoded(clip);
        SongFileOptions options;
        options.cutAtQuietMoment = quietCut;
        start(audio.format, 5000, options);
        play(audio.bytes, 5000, {{0, u"Alpha - One"_s}, {2, u"Beta - Two"_s}, {4, u"Three"_s}}, true);
        const QString ext = formatExtension(audio.format);
        ASSERT_EQ(names(), (QStringList{u"Alpha - One"_s + ext, u"Beta - Two"_s + ext, u"Three"_s + ext}));
        const QStringList expected[] = {
            tags(u"Alpha"_s, u"One"_s, RecordingOutput::Partial),
            tags(u"Beta"_s, u"Two"_s, quietCut ? u"complete; cut at title"_s : RecordingOutput::Complete),
            tags({}, u"Three"_s, RecordingOutput::Partial)};
        const QList<qint64> frames = frameStarts(audio);
        for (int i = 0; i < 3; ++i) {
            const QString file = path(names()[i]);
            EXPECT_EQ(readTags(file, audio.format), expected[i]) << i;
            EXPECT_EQ(decodeErrors(file), QString()) << i;
            // The audio behind the tag is the clip's from one of its frames on.
            const QByteArray bytes = TempProfile::readFile(file);
            if (audio.format != StreamFormat::Ogg) {
                const QByteArray rest = bytes.sliced(id3Size(bytes));
                EXPECT_TRUE(frames.contains(audio.bytes.indexOf(rest.first(64)))) << i;
                EXPECT_TRUE(audio.bytes.contains(rest)) << i;
            }
        }
    }
}

TEST_F(RecordingOutputTest, PartialSongsAreKeptMovedOrDeletedAndASongScanWritesNoneOfItsWait)
{
    const Encoded &mp3 = encoded(Clip::Mp3);
    const QList<Title> titles = {{0, u"A"_s}, {3, u"B"_s}, {6, u"C"_s}};
    const struct
    {
        Partial choice;
        QStringList beside, incomplete;
    } rows[] = {{Partial::Keep, {u"A.mp3"_s, u"B.mp3"_s, u"C.mp3"_s}, {}},
                {Partial::Move, {u"B.mp3"_s}, {u"A.mp3"_s, u"C.mp3"_s}},
                {Partial::Delete, {u"B.mp3"_s}, {}}};
    for (const auto &row : rows) {
        SCOPED_TRACE(int(row.choice));
        QDir(path({})).removeRecursively();
        start(StreamFormat::Mp3, 5000, {true, row.choice});
        play(mp3.bytes, 5000, titles, true);
        EXPECT_EQ(names(), row.beside);
        EXPECT_EQ(names(u"incomplete"_s), row.incomplete);
        EXPECT_TRUE(out.takeWarnings().isEmpty());
        // The files the recording made, where they went.
        QStringList made;
        for (const QString &name : {u"A.mp3"_s, u"B.mp3"_s, u"C.mp3"_s})
            made << path(row.incomplete.contains(name) ? u"incomplete/"_s + name : name);
        EXPECT_EQ(out.files(), made);
    }
    // Waiting for "B": the song before it leaves no file; the one after it
    // ends B and begins none; "D" matches again and runs to the end.
    QDir(path({})).removeRecursively();
    start(StreamFormat::Mp3, 5000);
    play(mp3.bytes, 5000, {{0, u"A"_s, false}, {2, u"B"_s}, {4, u"C"_s, false}, {6, u"D"_s}}, true);
    EXPECT_EQ(names(), (QStringList{u"B.mp3"_s, u"D.mp3"_s}));
    EXPECT_EQ(readTags(path(u"B.mp3"_s), StreamFormat::Mp3)[5], RecordingOutput::Complete);
    EXPECT_EQ(readTags(path(u"D.mp3"_s), StreamFormat::Mp3)[5], RecordingOutput::Partial);
}

TEST_F(RecordingOutputTest, UndecodableAudioIsCutAtOnceByFramesAndADropWritesWhatWasHeld)
{
    // Opus has no decoder here: the quiet search ends at once, and the files
    // are those of the whole-frame rule, byte for byte.
    const Encoded &opus = encoded(Clip::Opus);
    const QList<Title> titles = {{0, u"A"_s}, {2, u"B"_s}, {4, u"C"_s}};
    QList<QByteArray> files[2];
    for (const bool quietCut : {false, true}) {
        QDir(path({})).removeRecursively();
        SongFileOptions options;
        options.cutAtQuietMoment = quietCut;
        start(StreamFormat::Ogg, 5000, options);
        play(opus.bytes, 5000, titles, true);
        EXPECT_LE(out.peakCutBytesHeld(), 5000) << "nothing waits for a search that cannot be";
        for (const QString &name : names())
            files[quietCut].append(TempProfile::readFile(path(name)));
    }
    EXPECT_EQ(files[0].size(), 3);
    EXPECT_EQ(files[1], files[0]);

    // Songs with gaps, and a connection that drops half a second after a
    // title: the cut is made with what came and every held byte written.
    const SongPlan plan{{0.8, 0.8}, 6};
    const EncodedSound &sound = encodeSound(plan, plan.total(), {});
    const qint64 title = sound.offsetAt(plan.start(1));
    const qint64 drop = sound.offsetAt(plan.start(1) + 0.5);
    const qint64 third = sound.offsetAt(plan.start(2) + 0.3);
    QDir(path({})).removeRecursively();
    start(StreamFormat::Mp3, 4000);
    out.setWriteEnabled(true);
    const QString song = path(u"%SONG%.mp3"_s);
    out.NewSong(u"One"_s, true, song);
    for (qint64 at = 0; at < sound.bytes.size();) {
        qint64 next = std::min<qint64>(at + 4000, sound.bytes.size());
        for (const qint64 mark : {title, drop, third})
            if (mark > at)
                next = std::min(next, mark);
        const QByteArrayView bytes = QByteArrayView(sound.bytes).sliced(at, next - at);
        out.WriteToDisk(bytes, false);
        at = next;
        // As the stream parser does: the bytes before a title come again after it.
        if (at == title || at == third) {
            out.NewSong(at == title ? u"Two"_s : u"Three"_s, true, song);
            out.WriteToDisk(bytes, false);
        }
        if (at == drop) {
            out.streamBroke();
            EXPECT_EQ(out.cutBytesHeld(), 0);
            EXPECT_EQ(names(), (QStringList{u"One.mp3"_s, u"Two.mp3"_s})) << "the song began at its gap";
        }
    }
    out.CloseFile();
    ASSERT_EQ(names(), (QStringList{u"One.mp3"_s, u"Three.mp3"_s, u"Two.mp3"_s}));
    QByteArray all;
    for (const QString &name : {u"One.mp3"_s, u"Two.mp3"_s, u"Three.mp3"_s}) {
        const QByteArray bytes = TempProfile::readFile(path(name));
        all += bytes.sliced(id3Size(bytes));
    }
    // From the first cut, in the lead-in's silence, every byte once and in
    // order, up to the end but for an unfinished last frame.
    const qsizetype first = sound.bytes.indexOf(all);
    ASSERT_GE(first, 0);
    EXPECT_LT(first, sound.offsetAt(plan.lead));
    EXPECT_GE(first + all.size(), sound.bytes.size() - 1500);
    EXPECT_EQ(readTags(path(u"Two.mp3"_s), StreamFormat::Mp3)[5], u"complete; cut at silence"_s);
}

TEST_F(RecordingOutputTest, NoSongFileIsOverwrittenButTheOneTheUserAgreedTo)
{
    const Encoded &mp3 = encoded(Clip::Mp3);
    // Titles that clean to the same name, as a repeated title in the same minute does.
    const QList<Title> titles = {{0, u"Same?"_s}, {2, u"Same"_s}, {4, u"Sa:me"_s}};
    for (const bool agreed : {false, true}) {
        SCOPED_TRACE(agreed);
        QDir(path({})).removeRecursively();
        QDir().mkpath(path({}));
        TempProfile::writeFile(path(u"Same.mp3"_s), "kept");
        start(StreamFormat::Mp3, 5000, {false}, agreed ? path(u"Same.mp3"_s) : QString());
        play(mp3.bytes, 5000, titles, true);
        QStringList expected = {u"Same (2).mp3"_s, u"Same (3).mp3"_s, u"Same (4).mp3"_s, u"Same.mp3"_s};
        if (agreed)
            expected.removeAt(2);
        EXPECT_EQ(names(), expected);
        EXPECT_EQ(TempProfile::readFile(path(u"Same.mp3"_s)) == "kept", !agreed);
        EXPECT_EQ(out.FileName(), path(agreed ? u"Same (3).mp3"_s : u"Same (4).mp3"_s));
        const QStringList made = {path(agreed ? u"Same.mp3"_s : u"Same (2).mp3"_s),
                                  path(agreed ? u"Same (2).mp3"_s : u"Same (3).mp3"_s), out.FileName()};
        EXPECT_EQ(out.files(), made) << "each under the name it got";
    }
}

TEST_F(RecordingOutputTest, AContinuousFileKeepsEveryByteAndItsCueSheetTimesEachTitle)
{
    const Encoded &mp3 = encoded(Clip::Mp3);
    const QByteArray audio = mp3.bytes.repeated(2);
    constexpr qsizetype Interval = 8000;
    start(StreamFormat::Mp3, Interval);
    out.setFileName(path(u"Radio.mp3"_s));
    ASSERT_TRUE(out.OpenFile());
    play(audio, Interval, {{0, u"Intro"_s}, {4, u"Band - Song"_s}, {9, u"Late - Last"_s}}, false);
    // Every byte as it came, the interval in front of a title twice, behind the tag.
    QByteArray expected;
    for (qsizetype at = 0, index = 0; at < audio.size(); at += Interval, ++index)
        expected += audio.mid(at, Interval).repeated(index == 0 || index == 4 || index == 9 ? 2 : 1);
    const QByteArray bytes = TempProfile::readFile(path(u"Radio.mp3"_s));
    EXPECT_EQ(bytes.sliced(id3Size(bytes)), expected);
    EXPECT_EQ(readTags(path(u"Radio.mp3"_s), StreamFormat::Mp3), tags({}, Station, RecordingOutput::Partial));

    // A title's time counts the frames that lie whole in the stretches of the
    // stream the file holds before it (a copy's cut frames are none).
    QList<qint64> frames;
    for (const qint64 copy : {qint64(0), mp3.bytes.size()}) {
        for (const qint64 at : frameStarts(mp3))
            frames << copy + at;
    }
    frames << audio.size();
    const auto cueTime = [&](const QList<std::pair<qint64, qint64>> &stretches) {
        qint64 whole = 0;
        for (const auto &[from, to] : stretches) {
            for (qsizetype i = 0; i + 1 < frames.size(); ++i)
                whole += frames[i] >= from && frames[i + 1] <= to ? 1 : 0;
        }
        const qint64 cue = whole * 1152 * 75 / 44100;
        return u"%1:%2:%3"_s.arg(cue / 75 / 60, 2, 10, QLatin1Char('0'))
            .arg(cue / 75 % 60, 2, 10, QLatin1Char('0'))
            .arg(cue % 75, 2, 10, QLatin1Char('0'));
    };
    const QString sheet = QString::fromUtf8(TempProfile::readFile(path(u"Radio.cue"_s)));
    EXPECT_EQ(sheet,
              u"REM COMMENT \"Tunecatch\"\r\nPERFORMER \"Radio \u00d61\"\r\nTITLE \"Radio \u00d61\"\r\n"
              "FILE \"Radio.mp3\" MP3\r\n"
              "  TRACK 01 AUDIO\r\n    TITLE \"Intro\"\r\n    INDEX 01 00:00:00\r\n"
              "  TRACK 02 AUDIO\r\n    PERFORMER \"Band\"\r\n    TITLE \"Song\"\r\n    INDEX 01 %1\r\n"
              "  TRACK 03 AUDIO\r\n    PERFORMER \"Late\"\r\n    TITLE \"Last\"\r\n    INDEX 01 %2\r\n"_s.arg(
                  cueTime({{0, Interval}, {0, 5 * Interval}}),
                  cueTime({{0, Interval}, {0, 5 * Interval}, {4 * Interval, 10 * Interval}})));
}

TEST_F(RecordingOutputTest, AContentTypeThatLiesLosesNoBytes)
{
    const struct
    {
        Clip clip;
        StreamFormat claimed;
        bool tagged;
    } rows[] = {{Clip::Adts, StreamFormat::Mp3, true},
                {Clip::Mp3, StreamFormat::Aac, true},
                {Clip::Adts, StreamFormat::Ogg, false}};
    for (const auto &row : rows) {
        for (const bool quietCut : {false, true}) {
            SCOPED_TRACE(clipName(row.clip).toStdString() + " as " + formatName(row.claimed).toStdString() +
                         (quietCut ? " quiet cut" : ""));
            QDir(path({})).removeRecursively();
            const QByteArray &audio = encoded(row.clip).bytes;
            SongFileOptions options;
            options.cutAtQuietMoment = quietCut;
            start(row.claimed, 5000, options);
            play(audio, 5000, {{0, u"One"_s}, {3, u"Two"_s}}, true);
            const QString ext = formatExtension(row.claimed);
            ASSERT_EQ(names(), (QStringList{u"One"_s + ext, u"Two"_s + ext}));
            const QByteArray one = TempProfile::readFile(path(u"One"_s + ext));
            const QByteArray two = TempProfile::readFile(path(u"Two"_s + ext));
            // Each file holds every byte of its region: by the whole-frame rule
            // from the interval before its title, today's overlap included; cut
            // by the cutter, which finds no frame, from its title's byte.
            const qsizetype from = quietCut ? 5000 : 0;
            EXPECT_EQ(one.sliced(id3Size(one)), audio.sliced(from, 4 * 5000 - from));
            EXPECT_EQ(two.sliced(id3Size(two)), audio.sliced(quietCut ? 4 * 5000 : 3 * 5000));
            EXPECT_EQ(id3Size(one) > 0, row.tagged);
            EXPECT_EQ(out.takeWarnings().size(), row.tagged ? 0 : 2);
        }
    }
}

} // namespace
