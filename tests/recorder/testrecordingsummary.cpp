#include "recorder/recordingsummary.h"

#include "support/tempprofile.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(RecordingSummary, CountsTheFilesStillOnDiskWithTheirSize)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QString one = folder.filePath(u"one.mp3"_s);
    const QString two = folder.filePath(u"two.mp3"_s);
    TempProfile::writeFile(one, QByteArray(1000, 'a'));
    TempProfile::writeFile(two, QByteArray(2000, 'b'));
    const QString gone = folder.filePath(u"gone.mp3"_s);

    const RecordingSummary both = RecordingSummary::of({one, two, gone}, 3725);
    EXPECT_EQ(both.files, 2);
    EXPECT_EQ(both.bytes, 3000);
    EXPECT_EQ(both.folder, QDir(folder.path()).absolutePath());
    EXPECT_TRUE(both.text().startsWith(u"Wrote 2 files ("_s)) << both.text().toStdString();
    EXPECT_TRUE(both.text().endsWith(u", 1:02:05) to "_s + both.folder));
    EXPECT_TRUE(RecordingSummary::of({one}, 59).text().startsWith(u"Wrote 1 file ("_s));
    EXPECT_TRUE(RecordingSummary::of({one}, 59).text().contains(u", 0:00:59) "_s));
    EXPECT_EQ(RecordingSummary::of({gone}, 10).text(), u"No file was written."_s);
    EXPECT_EQ(RecordingSummary::of({}, -5).seconds, 0);
    // Partial songs moved aside: the folder named holds most of the files.
    const QString aside = folder.filePath(u"incomplete/three.mp3"_s);
    TempProfile::writeFile(aside, "c");
    EXPECT_EQ(RecordingSummary::of({aside, one, two}, 1).folder, both.folder);
    EXPECT_EQ(RecordingSummary::of({one, aside}, 1).folder, QFileInfo(aside).absolutePath())
        << "a tie: the later";
}

} // namespace
