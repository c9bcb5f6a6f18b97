#include "base/diskwrite.h"

#include "base/apperror.h"
#include "base/unicodefile.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// A file system of 64 KB mounted for the test, when this machine lets the test mount one.
class SmallDisk
{
public:
    SmallDisk()
    {
        if (geteuid() != 0)
            return;
        m_mounted = QProcess::execute(u"mount"_s, {u"-t"_s, u"tmpfs"_s, u"-o"_s, u"size=64k"_s, u"tmpfs"_s,
                                                   m_folder.path()}) == 0;
    }
    ~SmallDisk()
    {
        if (m_mounted)
            QProcess::execute(u"umount"_s, {m_folder.path()});
    }
    Q_DISABLE_COPY_MOVE(SmallDisk)
    bool mounted() const { return m_mounted; }
    QString path(const QString &name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
    bool m_mounted = false;
};

} // namespace

TEST(DiskWrite, AFullDiskIsSaidInWordsAndAWriteThatFitsGoesOutWhole)
{
    const QByteArray data(200 * 1024, 'x');
    QFile full(u"/dev/full"_s);
    ASSERT_TRUE(full.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    EXPECT_EQ(DiskWrite::writeAll(full, data), 0);
    EXPECT_EQ(DiskWrite::why(full), u"The disk is full"_s);

    QTemporaryDir folder;
    QFile roomy(folder.filePath(u"a.mp3"_s));
    ASSERT_TRUE(roomy.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    EXPECT_EQ(DiskWrite::writeAll(roomy, data), data.size());

    // Filling up part-way through one write: the next try says why.
    SmallDisk disk;
    if (!disk.mounted())
        GTEST_SKIP() << "no small file system can be mounted here";
    QFile partly(disk.path(u"b.mp3"_s));
    ASSERT_TRUE(partly.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    const qint64 written = DiskWrite::writeAll(partly, data);
    EXPECT_GT(written, 0);
    EXPECT_LT(written, data.size());
    EXPECT_EQ(DiskWrite::why(partly), u"The disk is full"_s);
    partly.close();
    EXPECT_EQ(QFile(partly.fileName()).size(), written) << "what was written stays";
    QFile::remove(partly.fileName());

    // A station list saved onto a disk with too little room says so.
    try {
        ModUnicodeFile::writeBytes(disk.path(u"Stations.txt"_s), QByteArray(data.size(), 'y'), true);
        ADD_FAILURE() << "a list larger than the disk was written";
    } catch (const AppError &e) {
        EXPECT_TRUE(e.description().endsWith(u": The disk is full"_s)) << e.what();
    }
}
