#include "recorder/recordingoutput.h"

#include "support/tempprofile.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <gtest/gtest.h>

namespace {

const QDateTime Now(QDate(2024, 3, 5), QTime(7, 9));

class RecordingOutputTest : public ProfileTest
{
protected:
    QString rec() const { return profile.root() + QStringLiteral("/data/Tunecatch/Rec/"); }
    QString path(const QString &name) const { return profile.root() + u'/' + name; }
    void openAt(const QString &name)
    {
        out.SetFileName(path(name));
        ASSERT_TRUE(out.OpenFile());
        out.SetWriteEnabled(true);
    }

    QStringList errors;
    RecordingOutput out{[this](const QString &message) { errors << message; }};
};

TEST_F(RecordingOutputTest, BuildFileNameExpandsTheTemplate)
{
    const struct {
        QString templ;
        QString expected;
    } rows[] = {
        {QStringLiteral(".\\%STATION%_%DATE%_%TIME%.mp3"), rec() + QStringLiteral("Radio: X_2024-03-05_07-09.mp3")},
        {QStringLiteral("./%SONG%.mp3"), rec() + QStringLiteral("%SONG%.mp3")},
        {QStringLiteral(".x\\.\\a.mp3"), QStringLiteral(".x\\") + rec() + QStringLiteral("a.mp3")},
        {QStringLiteral("C:\\Music\\%STATION%.mp3"), QStringLiteral("C:\\Music\\Radio: X.mp3")},
        {QStringLiteral("/m/%DATE%/%DATE% %station%.mp3"), QStringLiteral("/m/2024-03-05/2024-03-05 %station%.mp3")},
    };
    for (const auto &row : rows)
        EXPECT_EQ(BuildFileName(row.templ, QStringLiteral("Radio: X"), Now, rec()), row.expected) << row.templ.toStdString();
    EXPECT_TRUE(QFileInfo(rec()).isDir());
}

TEST_F(RecordingOutputTest, CacheGoesOutPast64000BytesOrOnFlush)
{
    openAt(QStringLiteral("a.mp3"));
    const QByteArray chunk(16000, 'a');
    for (int i = 0; i < 4; ++i)
        out.WriteToDisk(chunk, false);
    EXPECT_EQ(out.DiskCache().size(), 64000);
    EXPECT_EQ(out.BlockWrites(), 0);
    out.WriteToDisk("b", false);
    EXPECT_EQ(out.DiskCache().size(), 0);
    EXPECT_EQ(out.BlockWrites(), 1);
    out.WriteToDisk("cd", true);
    EXPECT_EQ(out.BlockWrites(), 2);
    EXPECT_EQ(out.BytesWritten(), 64003);
    out.SetWriteEnabled(false);
    out.WriteToDisk("dropped", true);
    out.CloseFile();
    EXPECT_EQ(TempProfile::readFile(path(QStringLiteral("a.mp3"))), chunk.repeated(4) + "bcd");
    EXPECT_TRUE(errors.isEmpty());
}

TEST_F(RecordingOutputTest, FlushWithoutAnOpenFileDiscards)
{
    out.SetWriteEnabled(true);
    out.WriteToDisk("lost", true);
    EXPECT_TRUE(out.DiskCache().isEmpty());
    EXPECT_EQ(out.BlockWrites(), 0);
    out.ResetCounters();
    EXPECT_EQ(out.BytesWritten(), 0);
}

TEST_F(RecordingOutputTest, NewSongOpensACleanedFileInSingleSongMode)
{
    openAt(QStringLiteral("first.mp3"));
    out.WriteToDisk("old", true);
    out.NewSong(QStringLiteral(" AC/DC: Back In Black? (Live at the Garden 1980) "), true,
                path(QStringLiteral("%SONG% [%SONG%].mp3")));
    out.WriteToDisk("new", true);
    out.CloseFile();
    const QString song = QStringLiteral("ACDC Back In Black (Live at th");
    EXPECT_EQ(out.FileName(), path(song + QStringLiteral(" [") + song + QStringLiteral("].mp3")));
    EXPECT_EQ(TempProfile::readFile(path(QStringLiteral("first.mp3"))), "old");
    EXPECT_EQ(TempProfile::readFile(out.FileName()), "new");
}

TEST_F(RecordingOutputTest, ContinuousModeDropsThePlaceholderAndKeepsTheFile)
{
    openAt(QStringLiteral("one %SONG%.mp3"));
    out.WriteToDisk("1", true);
    out.NewSong(QStringLiteral("Title"), false, path(QStringLiteral("unused.mp3")));
    out.WriteToDisk("2", true);
    EXPECT_EQ(out.FileName(), path(QStringLiteral("one .mp3")));
    EXPECT_EQ(TempProfile::readFile(path(QStringLiteral("one %SONG%.mp3"))), "12");

    out.SetFileName(path(QStringLiteral("plain %SONG%.mp3")));
    out.SwitchToContinuous();
    EXPECT_TRUE(out.IsFileOpen());
    EXPECT_EQ(out.FileName(), path(QStringLiteral("plain .mp3")));
}

TEST_F(RecordingOutputTest, UnopenableFileIsReportedAndKeepsWhatWasWritten)
{
    openAt(QStringLiteral("kept.mp3"));
    out.WriteToDisk("kept", true);
    out.NewSong(QStringLiteral("x"), true, path(QStringLiteral("missing/folder/%SONG%.mp3")));
    EXPECT_FALSE(out.IsFileOpen());
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].contains(QStringLiteral("missing/folder/x.mp3")));
    out.WriteToDisk("nowhere", true);
    EXPECT_EQ(TempProfile::readFile(path(QStringLiteral("kept.mp3"))), "kept");
}

} // namespace
