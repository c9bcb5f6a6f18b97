#include "base/unicodefile.h"

#include "base/apperror.h"
#include "support/tempprofile.h"

#include <QFile>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

class UnicodeFile : public ProfileTest
{
public:
    QString path(const char *name) const { return profile.root() + u'/' + QLatin1StringView(name); }
};

} // namespace

TEST_F(UnicodeFile, ReadBytesSkipsTheMarkAndLeavesTheLastByteUnread)
{
    // file contents, detect the mark, mark found, bytes read (all in hex)
    const struct
    {
        const char *file;
        bool detect, found;
        const char *read;
    } rows[] = {{"fffe", true, true, ""},
                {"fffe41000d000a00", true, true, "41000d000a"},
                {"ffff4100", true, false, "ffff4100"},
                {"fffe4100", false, false, "fffe4100"},
                {"ff", true, false, "ff"},
                {"", true, false, ""}};
    const QString file = path("f.bin");
    for (const auto &row : rows) {
        SCOPED_TRACE(row.file);
        TempProfile::writeFile(file, QByteArray::fromHex(row.file));
        QByteArray buffer;
        EXPECT_EQ(ModUnicodeFile::readBytes(file, buffer, row.detect), row.found);
        EXPECT_EQ(buffer.toHex(), row.read);
    }
    QByteArray buffer("kept");
    EXPECT_FALSE(ModUnicodeFile::readBytes(path("missing"), buffer, true));
    EXPECT_EQ(buffer, "kept");
}

TEST_F(UnicodeFile, WriteDeletesTheOldFileBeforeWriting)
{
    const QString target = path("t.bin");
    const QString other = path("link.bin");
    TempProfile::writeFile(target, "old");
    // A second name for the same file: writing in place would change it too.
    ASSERT_EQ(::link(QFile::encodeName(target).constData(), QFile::encodeName(other).constData()), 0);
    ModUnicodeFile::writeBytes(target, QByteArray::fromHex("4100"), true);
    EXPECT_EQ(TempProfile::readFile(target).toHex(), "fffe4100");
    EXPECT_EQ(TempProfile::readFile(other), "old");
    ModUnicodeFile::writeBytes(target, "xy", false);
    EXPECT_EQ(TempProfile::readFile(target), "xy");
}

TEST_F(UnicodeFile, WriteOverAReadOnlyFileThrowsAndKeepsIt)
{
    // Root may open the file anyway; the owner's write bit is what counts.
    const QString target = path("ro.bin");
    TempProfile::writeFile(target, "old");
    ASSERT_TRUE(QFile::setPermissions(target, QFileDevice::ReadOwner | QFileDevice::ReadGroup));
    try {
        ModUnicodeFile::writeBytes(target, "new", true);
        ADD_FAILURE() << "no error";
    } catch (const AppError &e) {
        EXPECT_EQ(e.number(), AppError::PathFileAccess);
    }
    EXPECT_EQ(TempProfile::readFile(target), "old");
    const QString parent = path("plain");
    TempProfile::writeFile(parent, "x");
    EXPECT_THROW(ModUnicodeFile::writeBytes(parent + u"/child"_s, "new", false), AppError);
}
