#include "recorder/songtagger.h"

#include "support/testaudio.h"

#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

using namespace TestAudio;

namespace {

SongTags sampleTags()
{
    SongTags tags{{},
                  {},
                  QStringLiteral("Radio Ö1"),
                  QDateTime(QDate(2024, 3, 5), QTime(7, 9, 30)),
                  QStringLiteral("http://127.0.0.1:8000/live"),
                  QStringLiteral("partial")};
    tags.setStreamTitle(QStringLiteral("Die Ärzte - Schrei nach Liebe"));
    return tags;
}

QStringList fields(const SongTags &tags)
{
    return {tags.artist,
            tags.title,
            tags.album,
            tags.date.toString(Qt::ISODate),
            tags.comment,
            tags.recording,
            QStringLiteral("Tunecatch")};
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A song file as the writer makes it: what the tagger starts it with, then the audio.
QString taggedFile(SongTagger &tagger, const Encoded &audio, const QString &name)
{
    const bool ogg = audio.format == StreamFormat::Ogg;
    return writeFile(name + formatExtension(audio.format),
                     ogg ? tagger.start(audio.bytes) : tagger.start({}) + audio.bytes);
}

} // namespace

TEST(SongTagger, TagsAreWrittenAtTheStartAndCompletedInPlaceAtTheClose)
{
    for (const Clip clip : {Clip::Mp3, Clip::Adts, Clip::Vorbis, Clip::Opus}) {
        SCOPED_TRACE(clipName(clip).toStdString());
        const Encoded &audio = encoded(clip);
        SongTags tags = sampleTags();
        SongTagger tagger(audio.format, tags);
        const QString path = taggedFile(tagger, audio, clipName(clip));
        EXPECT_TRUE(tagger.hasStarted() && tagger.error().isEmpty());
        EXPECT_EQ(readTags(path, audio.format), fields(tags));
        const qsizetype size = contents(path).size();
        tags.recording = QStringLiteral("complete; cut at silence");
        EXPECT_TRUE(tagger.finish(path, tags.recording)) << tagger.error().toStdString();
        EXPECT_EQ(readTags(path, audio.format), fields(tags));
        // The audio behind the tags is where and what it was, and plays.
        const qsizetype audioFrom = audio.format == StreamFormat::Ogg ? packets(audio.path).first().pos : 0;
        EXPECT_EQ(contents(path).size(), size);
        EXPECT_TRUE(contents(path).endsWith(audio.bytes.sliced(audioFrom)));
        EXPECT_EQ(decodeErrors(path), QString());
    }
}

TEST(SongTagger, TitlesAreSplitAndMadeSafe)
{
    const struct
    {
        QString streamTitle, artist, title;
    } rows[] = {
        {QStringLiteral("A - B - C"), QStringLiteral("A"), QStringLiteral("B - C")},
        {QStringLiteral("Just the news"), {}, QStringLiteral("Just the news")},
        {QStringLiteral(" - "), {}, {}},
        {QStringLiteral("- - -"), {}, {}},
        {QStringLiteral("Artist - "), QStringLiteral("Artist"), {}},
        {QStringLiteral("Tab\there\x01 - X\x1b[0mY\r\n"), QStringLiteral("Tab here"),
         QStringLiteral("X[0mY")},
        {QString::fromLatin1("Beyonc\xe9 - D\xe9j\xe0 Vu"), QStringLiteral("Beyoncé"),
         QStringLiteral("Déjà Vu")},
        {QStringLiteral("Band - ") + QString(293, u'x'), QStringLiteral("Band"), QString(293, u'x')},
    };
    for (const auto &row : rows) {
        SongTags tags = sampleTags();
        tags.setStreamTitle(row.streamTitle);
        EXPECT_EQ(QStringList({tags.artist, tags.title}), QStringList({row.artist, row.title}));
        // What is safe reaches the tag whole.
        SongTagger tagger(StreamFormat::Mp3, tags);
        EXPECT_EQ(
            readTags(taggedFile(tagger, encoded(Clip::Mp3), QStringLiteral("title")), StreamFormat::Mp3),
            fields(tags));
    }
}

TEST(SongTagger, ATagThatCannotBeWrittenNeverCostsAudio)
{
    const Encoded &mp3 = encoded(Clip::Mp3);
    SongTags tags = sampleTags();
    SongTagger tagger(StreamFormat::Mp3, tags);
    // Nothing to tag: a folder, a file that is gone; bytes that are not Ogg pass untagged.
    EXPECT_FALSE(tagger.finish(QFileInfo(mp3.path).path(), tags.recording) || tagger.error().isEmpty());
    EXPECT_FALSE(tagger.finish(mp3.path + QStringLiteral(".gone"), tags.recording));
    SongTagger ogg(StreamFormat::Ogg, tags);
    EXPECT_EQ(ogg.start(mp3.bytes), mp3.bytes);
    EXPECT_FALSE(ogg.error().isEmpty());

    // A file without a tag: on a full disk it stays as it was; with room the tag goes in front.
    const QString untagged = writeFile(QStringLiteral("untagged.mp3"), mp3.bytes);
    {
        const FileSizeLimit full(mp3.bytes.size() / 2);
        EXPECT_FALSE(tagger.finish(untagged, tags.recording));
    }
    EXPECT_EQ(contents(untagged), mp3.bytes);
    EXPECT_TRUE(tagger.finish(untagged, tags.recording));
    EXPECT_EQ(readTags(untagged, StreamFormat::Mp3), fields(tags));
    EXPECT_TRUE(contents(untagged).endsWith(mp3.bytes));

    // A value longer than the room left: the audio moves, whole.
    tags.recording = QString(SongTagger::Room * 2, u'r');
    for (const Clip clip : {Clip::Adts, Clip::Vorbis}) {
        SongTagger longer(encoded(clip).format, sampleTags());
        const QString path = taggedFile(longer, encoded(clip), QStringLiteral("longer"));
        EXPECT_TRUE(longer.finish(path, tags.recording));
        EXPECT_EQ(readTags(path, encoded(clip).format), fields(tags));
        EXPECT_EQ(decodeErrors(path), QString());
    }
}
