#include "history/historystore.h"

#include "support/tempprofile.h"

#include <QDir>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class HistoryStoreTest : public ProfileTest
{
protected:
    QString path() const { return HistoryStore::pathIn(profile.dataFolder()); }
    // Titles as "station:title", oldest first.
    static QStringList titles(const HistoryStore &store)
    {
        QStringList result;
        for (qsizetype i = 0; i < store.size(); ++i)
            result.append(store.at(i).station + u':' + store.at(i).title);
        return result;
    }
    // The entries that a fresh store reads back from the file.
    QStringList reread(qsizetype limit = HistoryStore::DefaultLimit) const
    {
        HistoryStore store(path(), limit);
        EXPECT_EQ(store.open(), QString());
        return titles(store);
    }
    static qsizetype lineCount(const QString &file) { return TempProfile::readFile(file).count('\n'); }
};

} // namespace

TEST_F(HistoryStoreTest, TitlesReachTheFileOnceEachWithTheirTime)
{
    {
        HistoryStore store(path());
        EXPECT_EQ(store.open(), QString());
        const struct
        {
            QString station, title;
            bool added;
        } steps[] = {
            {u"Jazz"_s, u"  A - One "_s, true}, {u"Jazz"_s, u"A - One"_s, false}, {u"Rock"_s, u"B"_s, true},
            {u"Jazz"_s, u"A - One"_s, false},   {u"Jazz"_s, u" "_s, false},       {u"Jazz"_s, u"C"_s, true},
            {u"Jazz"_s, u"A - One"_s, true},    {u"Rock"_s, u"A - One"_s, true},
        };
        for (const auto &step : steps)
            EXPECT_EQ(store.add(step.station, step.title, 1000), step.added) << step.title.toStdString();
        EXPECT_TRUE(store.add(u"Jazz"_s, QString(2000, u'x'), 5));
        EXPECT_EQ(store.at(store.size() - 1).title.size(), HistoryStore::MaxTextLength);
        EXPECT_EQ(store.stations(), (QStringList{u"Jazz"_s, u"Rock"_s}));
    }
    const QStringList expected = {u"Jazz:A - One"_s, u"Rock:B"_s,
                                  u"Jazz:C"_s,       u"Jazz:A - One"_s,
                                  u"Rock:A - One"_s, u"Jazz:"_s + QString(HistoryStore::MaxTextLength, u'x')};
    EXPECT_EQ(reread(), expected);
    HistoryStore store(path());
    store.open();
    EXPECT_EQ(store.at(0).time, 1000);
    EXPECT_EQ(store.at(5).time, 5);
}

TEST_F(HistoryStoreTest, MemoryAndFileStayBounded)
{
    constexpr qsizetype Limit = 20;
    {
        HistoryStore store(path(), Limit);
        store.open();
        for (int i = 0; i < 100; ++i) {
            store.add(u"S"_s, QString::number(i), i);
            ASSERT_LE(store.size(), Limit);
        }
        EXPECT_EQ(store.at(0).title, u"80"_s);
    }
    EXPECT_LE(lineCount(path()), Limit + Limit / 10);
    const QStringList kept = reread(Limit);
    EXPECT_EQ(kept.size(), Limit);
    EXPECT_EQ(kept.front(), u"S:80"_s);
    EXPECT_EQ(kept.back(), u"S:99"_s);
}

TEST_F(HistoryStoreTest, ADamagedFileIsMovedAsideAndItsReadableEntriesKept)
{
    // About 50 MB: half a million entries, a few lines of garbage among them.
    QDir().mkpath(profile.dataFolder());
    QByteArray bytes;
    bytes.reserve(52 << 20);
    for (int i = 0; i < 500000; ++i) {
        bytes += HistoryFile::line({i, u"Station with a long name"_s,
                                    u"Artist - Title number "_s + QString::number(i) + QString(40, u'.')});
        if (i % 100000 == 7)
            bytes += "\x01\x02 garbage\n";
    }
    TempProfile::writeFile(path(), bytes);
    TempProfile::writeFile(path() + u".damaged-1"_s, "older");
    HistoryStore store(path(), 1000);
    const QString message = store.open();
    EXPECT_TRUE(message.contains(u"history file: 5."_s)) << message.toStdString();
    EXPECT_TRUE(message.contains(path() + u".damaged-2"_s)) << message.toStdString();
    EXPECT_EQ(TempProfile::readFile(path() + u".damaged-1"_s), "older");
    EXPECT_EQ(TempProfile::readFile(path() + u".damaged-2"_s), bytes);
    ASSERT_EQ(store.size(), 1000);
    EXPECT_EQ(store.at(999).time, 499999);
    EXPECT_EQ(lineCount(path()), 1000);
}

TEST_F(HistoryStoreTest, AFileThatCannotBeWrittenIsReportedAndTitlesStayInMemory)
{
    HistoryStore store(path());
    store.open();
    QDir().mkpath(path()); // the file's name is taken by a folder
    QSignalSpy problems(&store, &HistoryStore::problem);
    store.add(u"S"_s, u"A"_s);
    ASSERT_TRUE(problems.wait(5000));
    EXPECT_TRUE(problems[0][0].toString().contains(path()));
    EXPECT_EQ(titles(store), QStringList{u"S:A"_s});
}
