#include "history/historyfile.h"

#include "support/tempprofile.h"

#include <QDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class HistoryFileTest : public ProfileTest
{
protected:
    QString path() const { return profile.root() + u"/history.tsv"_s; }
};

} // namespace

TEST(HistoryLine, EveryTextSurvivesItsLine)
{
    const HistoryEntry entries[] = {
        {1714557600000, u"Jazz FM"_s, u"Miles Davis - So What"_s},
        {0, QString(), u"tab\there, line\nbreak, CR\r, back\\slash \\t"_s},
        {99, u"Ünïcödé 📻"_s, u"\\"_s},
    };
    for (const HistoryEntry &entry : entries) {
        const QByteArray line = HistoryFile::line(entry);
        EXPECT_EQ(line.count('\n'), 1);
        EXPECT_TRUE(line.endsWith('\n'));
        EXPECT_EQ(HistoryFile::parse(line.chopped(1)), entry) << line.constData();
    }
}

TEST(HistoryLine, ForeignLinesHoldNoEntry)
{
    const QByteArray lines[] = {"",
                                "12\tS",
                                "12\tS\tT\tX",
                                "12\tS\t",
                                "x12\tS\tT",
                                "-5\tS\tT",
                                "+5\tS\tT",
                                "\tS\tT",
                                "12\tS\tT\\",
                                "12\tS\tbad\\x",
                                "12\t\xff\tT",
                                "1234567890123456\tS\tT",
                                "12\tS\t" + QByteArray(HistoryFile::MaxLineBytes, 'a')};
    for (const QByteArray &line : lines)
        EXPECT_FALSE(HistoryFile::parse(line)) << line.left(40).constData();
}

TEST_F(HistoryFileTest, ReadKeepsTheNewestAndCountsBrokenLines)
{
    EXPECT_EQ(HistoryFile::read(path(), 10).entries.size(), 0u);
    QByteArray bytes;
    for (int i = 0; i < 8; ++i)
        bytes += HistoryFile::line({i, u"S"_s, u"T"_s + QString::number(i)});
    // A line longer than a read chunk, one longer than a line may be, and a torn last line.
    bytes.insert(bytes.indexOf('\n') + 1, QByteArray(3 << 20, 'x') + "\n");
    bytes += QByteArray(HistoryFile::MaxLineBytes + 5, 'y') + '\n';
    bytes += "123\tS\tT";
    TempProfile::writeFile(path(), bytes);
    const HistoryFile::Contents contents = HistoryFile::read(path(), 5);
    EXPECT_TRUE(contents.error.isEmpty());
    EXPECT_EQ(contents.goodLines, 8);
    EXPECT_EQ(contents.brokenLines, 3);
    ASSERT_EQ(contents.entries.size(), 5u);
    EXPECT_EQ(contents.entries.front().title, u"T3"_s);
    EXPECT_EQ(contents.entries.back().title, u"T7"_s);
    // Entries of one station share one string.
    EXPECT_TRUE(contents.entries.front().station.isSharedWith(contents.entries.back().station));

    QDir().mkpath(path() + u".folder"_s);
    EXPECT_FALSE(HistoryFile::read(path() + u".folder"_s, 5).error.isEmpty());
}

TEST_F(HistoryFileTest, MovingAsideNeverReplacesAnEarlierCopy)
{
    TempProfile::writeFile(path() + u".damaged-1"_s, "first");
    TempProfile::writeFile(path(), "second");
    EXPECT_EQ(HistoryFile::moveAside(path()), path() + u".damaged-2"_s);
    TempProfile::writeFile(path(), "third");
    EXPECT_EQ(HistoryFile::moveAside(path()), path() + u".damaged-3"_s);
    EXPECT_EQ(TempProfile::readFile(path() + u".damaged-1"_s), "first");
    EXPECT_EQ(TempProfile::readFile(path() + u".damaged-2"_s), "second");
    EXPECT_FALSE(QFile::exists(path()));
    EXPECT_EQ(HistoryFile::moveAside(path()), QString());
}
