#include "recorder/songwriter.h"

#include "support/tempprofile.h"
#include "support/testaudio.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using Partial = SongFileOptions::PartialSongs;

namespace {

class SongWriterTest : public ProfileTest
{
protected:
    QString path(const QString &name) const { return profile.root() + u"/songs/"_s + name; }
    QStringList names(const QString &folder = {}) const
    {
        return QDir(path(folder)).entryList(QDir::Files, QDir::Name);
    }
    void SetUp() override { QDir().mkpath(path({})); }
    SongWriter writer;
};

TEST_F(SongWriterTest, TheCacheGoesOutPast64000BytesOrWhenFlushed)
{
    ASSERT_TRUE(writer.open(path(u"a.mp3"_s), false));
    const QByteArray chunk(16000, 'a');
    for (int i = 0; i < 4; ++i)
        writer.write(chunk);
    EXPECT_EQ(writer.cache().size(), 64000);
    EXPECT_EQ(writer.blockWrites(), 0);
    writer.write("b");
    EXPECT_EQ(writer.cache().size(), 0);
    writer.write("cd");
    writer.flush();
    // A block larger than the cache goes out at once, and a close flushes.
    writer.write(QByteArray(70000, 'e'));
    writer.write("f");
    writer.close();
    EXPECT_EQ(writer.blockWrites(), 4);
    EXPECT_EQ(writer.bytesWritten(), 64000 + 3 + 70000 + 1);
    EXPECT_EQ(TempProfile::readFile(path(u"a.mp3"_s)),
              chunk.repeated(4) + "bcd" + QByteArray(70000, 'e') + "f");
    EXPECT_TRUE(writer.error().isEmpty());
}

TEST_F(SongWriterTest, ATakenNameGetsANumberUnlessReplacingWasAgreedTo)
{
    TempProfile::writeFile(path(u"Song.mp3"_s), "first");
    TempProfile::writeFile(path(u"Song (2).mp3"_s), "second");
    for (const char *bytes : {"third", "fourth"}) {
        ASSERT_TRUE(writer.open(path(u"Song.mp3"_s), false));
        writer.write(bytes);
    }
    writer.close();
    EXPECT_EQ(names(), (QStringList{u"Song (2).mp3"_s, u"Song (3).mp3"_s, u"Song (4).mp3"_s, u"Song.mp3"_s}));
    EXPECT_EQ(TempProfile::readFile(path(u"Song (4).mp3"_s)), "fourth");
    ASSERT_TRUE(writer.open(path(u"Song.mp3"_s), true));
    writer.write("replaced");
    writer.close();
    EXPECT_EQ(TempProfile::readFile(path(u"Song.mp3"_s)), "replaced");

    const struct
    {
        QString name, numbered;
    } rows[] = {{u"/a/b.c/x.mp3"_s, u"/a/b.c/x (2).mp3"_s},
                {u"/a/b.c/x"_s, u"/a/b.c/x (2)"_s},
                {u"/a/.hidden"_s, u"/a/.hidden (2)"_s},
                {u"x.tar.gz"_s, u"x.tar (2).gz"_s}};
    for (const auto &row : rows)
        EXPECT_EQ(numberedFileName(row.name, 2), row.numbered);
}

TEST_F(SongWriterTest, AFileAnotherWriterHoldsIsNeverOpenedAgainEvenToReplaceIt)
{
    SongWriter other;
    ASSERT_TRUE(other.open(path(u"Song.mp3"_s), true));
    other.write("first");
    other.flush();
    for (const bool replace : {true, false}) {
        ASSERT_TRUE(writer.open(path(u"Song.mp3"_s), replace));
        EXPECT_EQ(writer.fileName(), path(u"Song (2).mp3"_s));
        writer.write("second");
        writer.close();
        QFile::remove(writer.fileName());
    }
    other.close();
    EXPECT_EQ(TempProfile::readFile(path(u"Song.mp3"_s)), "first");
    // Once it is closed, replacing it is what was agreed to.
    ASSERT_TRUE(writer.open(path(u"Song.mp3"_s), true));
    writer.write("third");
    writer.close();
    EXPECT_EQ(TempProfile::readFile(path(u"Song.mp3"_s)), "third");
}

TEST_F(SongWriterTest, AFailureIsKeptAndNothingMoreGoesOut)
{
    EXPECT_FALSE(writer.open(path(u"missing/a.mp3"_s), false));
    EXPECT_TRUE(writer.error().startsWith(u"Unable to open \""_s + path(u"missing/a.mp3"_s)));
    writer.resetCounters();
    ASSERT_TRUE(writer.open(path(u"full.mp3"_s), false));
    {
        const TestAudio::FileSizeLimit full(100000);
        writer.write(QByteArray(70000, 'a'));
        writer.write(QByteArray(70000, 'b'));
    }
    writer.write(QByteArray(70000, 'c'));
    writer.close();
    EXPECT_TRUE(writer.error().startsWith(u"Unable to write \""_s)) << writer.error().toStdString();
    EXPECT_EQ(TempProfile::readFile(path(u"full.mp3"_s)), QByteArray(70000, 'a') + QByteArray(30000, 'b'));

    // A full disk is said in words.
    writer.resetCounters();
    ASSERT_TRUE(QFile::link(u"/dev/full"_s, path(u"disk.mp3"_s)));
    ASSERT_TRUE(writer.open(path(u"disk.mp3"_s), true));
    writer.write(QByteArray(70000, 'a'));
    EXPECT_EQ(writer.error(), u"Unable to write \""_s + path(u"disk.mp3"_s) + u"\": The disk is full"_s);
}

TEST_F(SongWriterTest, PartialSongsAreKeptMovedOrDeleted)
{
    TempProfile::writeFile(path(u"incomplete/Song.mp3"_s), "earlier");
    const auto partial = [this](Partial choice) {
        EXPECT_TRUE(writer.open(path(u"Song.mp3"_s), false));
        writer.write("part");
        writer.close();
        return writer.settlePartial(choice);
    };
    EXPECT_EQ(partial(Partial::Keep), QString());
    EXPECT_EQ(names(), QStringList{u"Song.mp3"_s});
    EXPECT_EQ(partial(Partial::Move), QString());
    EXPECT_EQ(partial(Partial::Delete), QString());
    EXPECT_EQ(names(), QStringList{u"Song.mp3"_s});
    EXPECT_EQ(names(u"incomplete"_s), (QStringList{u"Song (2).mp3"_s, u"Song.mp3"_s}));
    EXPECT_EQ(TempProfile::readFile(path(u"incomplete/Song (2).mp3"_s)), "part");
    // A folder that cannot be made there: the song stays and it is said.
    QDir(path(u"incomplete"_s)).removeRecursively();
    TempProfile::writeFile(path(u"incomplete"_s), "a file in the way");
    EXPECT_TRUE(partial(Partial::Move).startsWith(u"Could not move the partial song"_s));
    EXPECT_EQ(TempProfile::readFile(writer.fileName()), "part");
}

} // namespace
