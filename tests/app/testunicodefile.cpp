#include "app/unicodefile.h"

#include "app/apperror.h"
#include "support/tempprofile.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

QByteArray bytes(std::initializer_list<unsigned char> values)
{
    QByteArray result;
    for (const unsigned char v : values)
        result.append(static_cast<char>(v));
    return result;
}

struct ReadRow
{
    const char *name;
    QByteArray file;
    bool detect;
    bool found;
    QByteArray read;
};

class ReadBytes : public ProfileTest, public ::testing::WithParamInterface<ReadRow>
{
};

class UnicodeFile : public ProfileTest
{
protected:
    QString path(const QString &name) const { return profile.root() + u'/' + name; }
};

} // namespace

TEST_P(ReadBytes, SkipsTheMarkAndLeavesTheLastByteUnread)
{
    const ReadRow &row = GetParam();
    const QString path = profile.root() + QStringLiteral("/f.bin");
    TempProfile::writeFile(path, row.file);
    QByteArray buffer;
    EXPECT_EQ(ModUnicodeFile::ReadBytes(path, buffer, row.detect), row.found);
    EXPECT_EQ(buffer.toHex(' '), row.read.toHex(' '));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ReadBytes,
    ::testing::Values(
        ReadRow{"MarkAlone", bytes({0xFF, 0xFE}), true, true, {}},
        ReadRow{"LetterCrLf", bytes({0xFF, 0xFE, 0x41, 0x00, 0x0D, 0x00, 0x0A, 0x00}), true, true,
                bytes({0x41, 0x00, 0x0D, 0x00, 0x0A})},
        ReadRow{"NoMark", bytes({0xFF, 0xFF, 0x41, 0x00}), true, false, bytes({0xFF, 0xFF, 0x41, 0x00})},
        ReadRow{"MarkNotAsked", bytes({0xFF, 0xFE, 0x41, 0x00}), false, false, bytes({0xFF, 0xFE, 0x41, 0x00})},
        ReadRow{"OneByte", bytes({0xFF}), true, false, bytes({0xFF})},
        ReadRow{"Empty", {}, true, false, {}}),
    [](const ::testing::TestParamInfo<ReadRow> &info) { return std::string(info.param.name); });

TEST_F(UnicodeFile, ReadOfAMissingFileLeavesTheBufferAsItWas)
{
    QByteArray buffer("kept");
    EXPECT_FALSE(ModUnicodeFile::ReadBytes(path(QStringLiteral("missing")), buffer, true));
    EXPECT_EQ(buffer, "kept");
}

TEST_F(UnicodeFile, WriteDeletesTheOldFileBeforeWriting)
{
    const QString target = path(QStringLiteral("t.bin"));
    const QString other = path(QStringLiteral("link.bin"));
    TempProfile::writeFile(target, "old");
    // A second name for the same file: writing in place would change it too.
    ASSERT_EQ(::link(QFile::encodeName(target).constData(), QFile::encodeName(other).constData()), 0);

    ModUnicodeFile::WriteBytes(target, bytes({0x41, 0x00}), true);
    EXPECT_EQ(TempProfile::readFile(target), bytes({0xFF, 0xFE, 0x41, 0x00}));
    EXPECT_EQ(TempProfile::readFile(other), "old");

    ModUnicodeFile::WriteBytes(target, QByteArray("xy"), false);
    EXPECT_EQ(TempProfile::readFile(target), "xy");
}

TEST_F(UnicodeFile, WriteOverAReadOnlyFileThrowsAndKeepsIt)
{
    // Root may open the file anyway; the owner's write bit is what counts.
    const QString target = path(QStringLiteral("ro.bin"));
    TempProfile::writeFile(target, "old");
    ASSERT_TRUE(QFile::setPermissions(target, QFileDevice::ReadOwner | QFileDevice::ReadGroup));
    try {
        ModUnicodeFile::WriteBytes(target, "new", true);
        ADD_FAILURE() << "no error";
    } catch (const AppError &e) {
        EXPECT_EQ(e.number(), AppError::PathFileAccess);
    }
    EXPECT_EQ(TempProfile::readFile(target), "old");
}

TEST_F(UnicodeFile, WriteUnderAFileThrows)
{
    const QString parent = path(QStringLiteral("plain"));
    TempProfile::writeFile(parent, "x");
    EXPECT_THROW(ModUnicodeFile::WriteBytes(parent + QStringLiteral("/child"), "new", false), AppError);
    EXPECT_EQ(TempProfile::readFile(parent), "x");
}

TEST_F(UnicodeFile, ReadTextGivesTheWholeFileOrFalseAndLeavesTextAlone)
{
    const QString file = path(QStringLiteral("p.pls"));
    TempProfile::writeFile(file, "[playlist]\r\nFile1=http://a/\n");
    QString text;
    EXPECT_TRUE(ModUnicodeFile::ReadText(file, text));
    EXPECT_EQ(text, QStringLiteral("[playlist]\r\nFile1=http://a/\n"));

    for (const QString &bad : {path(QStringLiteral("missing")), profile.root()}) {
        text = QStringLiteral("kept");
        EXPECT_FALSE(ModUnicodeFile::ReadText(bad, text)) << bad.toStdString();
        EXPECT_EQ(text, QStringLiteral("kept"));
    }
}
