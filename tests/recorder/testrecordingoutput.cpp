#include "recorder/recordingoutput.h"

#include "support/tempprofile.h"

#include <QFileInfo>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QDateTime Now(QDate(2024, 3, 5), QTime(7, 9));

class RecordingOutputTest : public ProfileTest
{
protected:
    QString rec() const { return profile.root() + u"/data/Tunecatch/Rec/"_s; }
    QString path(const QString &name) const { return profile.root() + u'/' + name; }
    void openAt(const QString &name)
    {
        out.setFileName(path(name));
        ASSERT_TRUE(out.OpenFile());
        out.setWriteEnabled(true);
    }
    RecordingOutput out;
};

TEST_F(RecordingOutputTest, BuildFileNameExpandsTheTemplate)
{
    const struct
    {
        QString templ, expected;
    } rows[] = {{u".\\%STATION%_%DATE%_%TIME%.mp3"_s, rec() + u"Radio X_2024-03-05_07-09.mp3"_s},
                {u"./%SONG%.mp3"_s, rec() + u"%SONG%.mp3"_s},
                {u".x\\.\\a.mp3"_s, u".x\\"_s + rec() + u"a.mp3"_s},
                {u"C:\\Music\\%STATION%.mp3"_s, u"C:\\Music\\Radio X.mp3"_s},
                {u"/m/%DATE%/%DATE% %station%.mp3"_s, u"/m/2024-03-05/2024-03-05 %station%.mp3"_s}};
    for (const auto &row : rows)
        EXPECT_EQ(BuildFileName(row.templ, u"Radio: X"_s, Now, rec()), row.expected)
            << row.templ.toStdString();
    EXPECT_TRUE(QFileInfo(rec()).isDir());
    // A station name never names another folder.
    for (const QString &station : {u"../../x"_s, u"..\\x"_s, u"/x"_s, u".x"_s})
        EXPECT_EQ(BuildFileName(u"./%STATION%.mp3"_s, station, Now, rec()), rec() + u"x.mp3"_s);
    EXPECT_EQ(BuildFileName(u"./%STATION%.mp3"_s, u".."_s, Now, rec()), rec() + u"_.mp3"_s);
}

TEST_F(RecordingOutputTest, CacheGoesOutPast64000BytesOrOnFlush)
{
    openAt(u"a.mp3"_s);
    const QByteArray chunk(16000, 'a');
    for (int i = 0; i < 4; ++i)
        out.WriteToDisk(chunk, false);
    EXPECT_EQ(out.DiskCache().size(), 64000);
    EXPECT_EQ(out.blockWrites(), 0);
    out.WriteToDisk("b", false);
    EXPECT_EQ(out.DiskCache().size(), 0);
    EXPECT_EQ(out.blockWrites(), 1);
    out.WriteToDisk("cd", true);
    EXPECT_EQ(out.blockWrites(), 2);
    EXPECT_EQ(out.bytesWritten(), 64003);
    out.setWriteEnabled(false);
    out.WriteToDisk("dropped", true);
    out.CloseFile();
    EXPECT_EQ(TempProfile::readFile(path(u"a.mp3"_s)), chunk.repeated(4) + "bcd");
    EXPECT_TRUE(out.error().isEmpty());
}

TEST_F(RecordingOutputTest, NewSongOpensACleanedFileInSingleSongMode)
{
    openAt(u"first.mp3"_s);
    out.WriteToDisk("old", true);
    out.NewSong(u" AC/DC: Back In Black? (Live at the Garden 1980) "_s, true, path(u"%SONG% [%SONG%].mp3"_s));
    out.WriteToDisk("new", true);
    out.CloseFile();
    const QString song = u"ACDC Back In Black (Live at th"_s;
    EXPECT_EQ(out.FileName(), path(song + u" ["_s + song + u"].mp3"_s));
    EXPECT_EQ(TempProfile::readFile(path(u"first.mp3"_s)), "old");
    EXPECT_EQ(TempProfile::readFile(out.FileName()), "new");
}

} // namespace
