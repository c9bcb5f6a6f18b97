#include "skin/urffile.h"
#include "support/skinfiles.h"
#include "support/tempprofile.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(UrfFile, HeaderAndSheetAreReadOrTheFileIsRefused)
{
    struct Row
    {
        const char *what;
        QByteArray bytes;
        UrfSkin::Status status;
        QString name;
        int theme;
    };
    const QByteArray sheet = "QPushButton { color: red; }\n";
    const QByteArray huge = SkinFiles::skin(u"X"_s, QByteArray(UrfSkin::maxBytes, ' '));
    const Row rows[] = {
        {"complete", SkinFiles::skin(u"Ice"_s, sheet, "Pale Blue"), UrfSkin::Ok, u"Ice"_s, 0},
        {"keys in any case, CR LF, byte-order mark, theme by number",
         "\xEF\xBB\xBFURF 1\r\nNAME: Night \r\ntheme: 1\r\nx-note: ignored\r\n---\r\n" + sheet, UrfSkin::Ok,
         u"Night"_s, 1},
        {"unknown theme", SkinFiles::skin(u"Ice"_s, sheet, "Green"), UrfSkin::Ok, u"Ice"_s, UrfSkin::NoTheme},
        {"plain style sheet", sheet, UrfSkin::NotASkin, {}, UrfSkin::NoTheme},
        {"later format", "URF 2\nName: X\n---\n" + sheet, UrfSkin::NotASkin, {}, UrfSkin::NoTheme},
        {"no name", "URF 1\nTheme: 1\n---\n" + sheet, UrfSkin::NotASkin, {}, UrfSkin::NoTheme},
        {"no end of header", "URF 1\nName: X\n" + sheet, UrfSkin::NotASkin, {}, UrfSkin::NoTheme},
        {"empty sheet", "URF 1\nName: X\n---\n  \n", UrfSkin::BadSheet, u"X"_s, UrfSkin::NoTheme},
        {"empty file", {}, UrfSkin::Empty, {}, UrfSkin::NoTheme},
        {"blanks only", " \r\n\t\n", UrfSkin::Empty, {}, UrfSkin::NoTheme},
        {"zero bytes", SkinFiles::skin(u"X"_s, QByteArray("a\0b", 3)), UrfSkin::Binary, {}, UrfSkin::NoTheme},
        {"not UTF-8", SkinFiles::skin(u"X"_s, "\xFF\xFE\x80"), UrfSkin::Binary, {}, UrfSkin::NoTheme},
        {"over a megabyte", huge, UrfSkin::TooLarge, {}, UrfSkin::NoTheme}};
    for (const Row &row : rows) {
        const UrfSkin skin = UrfSkin::parse(row.bytes);
        EXPECT_EQ(skin.status, row.status) << row.what;
        EXPECT_EQ(skin.name, row.name) << row.what;
        EXPECT_EQ(skin.theme, row.theme) << row.what;
        if (row.status == UrfSkin::Ok) {
            EXPECT_EQ(skin.sheet.trimmed(), QString::fromUtf8(sheet).trimmed()) << row.what;
        }
    }
}

TEST(UrfFile, FilesAreReadWithinTheLimit)
{
    TempProfile profile;
    const QString big = profile.root() + u"/big.urf"_s;
    TempProfile::writeFile(big, SkinFiles::skin(u"X"_s, QByteArray(2 * UrfSkin::maxBytes, ' ')));
    EXPECT_EQ(UrfSkin::read(big).status, UrfSkin::TooLarge);
    EXPECT_EQ(UrfSkin::read(profile.root() + u"/missing.urf"_s).status, UrfSkin::Unreadable);
    EXPECT_EQ(UrfSkin::read(profile.root()).status, UrfSkin::Unreadable);
    // The shipped skins, with the theme each was drawn for.
    const std::pair<const char *, int> shipped[] = {
        {"Zelvane.urf", 1}, {"Ledovec.urf", 0}, {"Kontrast.urf", 1}};
    for (const auto &[file, theme] : shipped) {
        const UrfSkin skin = UrfSkin::read(SkinFiles::shipped(file));
        EXPECT_EQ(skin.status, UrfSkin::Ok) << file;
        EXPECT_EQ(skin.name + u".urf"_s, QLatin1StringView(file));
        EXPECT_EQ(skin.theme, theme) << file;
        EXPECT_FALSE(skin.author.isEmpty()) << file;
    }
}
