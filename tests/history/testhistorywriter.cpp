#include "history/historywriter.h"

#include "support/tempprofile.h"

#include <QDir>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class HistoryWriterTest : public ProfileTest
{
protected:
    QString path() const { return profile.root() + u"/history.tsv"_s; }
};

} // namespace

TEST_F(HistoryWriterTest, FailuresAreReportedOncePerRun)
{
    HistoryWriter writer(path(), 100, 0);
    QSignalSpy failures(&writer, &HistoryWriter::failed);
    QDir().mkpath(path());
    writer.append("1\tS\tA\n", 1);
    writer.append("2\tS\tB\n", 1);
    EXPECT_EQ(failures.size(), 1);
    QDir().rmdir(path());
    writer.append("3\tS\tC\n", 1);
    EXPECT_EQ(TempProfile::readFile(path()), "3\tS\tC\n");
    QFile::remove(path());
    QDir().mkpath(path());
    writer.append("4\tS\tD\n", 1);
    EXPECT_EQ(failures.size(), 2);
}

TEST_F(HistoryWriterTest, AnOvergrownFileKeepsItsNewestLines)
{
    // Long lines: the file spans several of the chunks it is read back in.
    QByteArray lines;
    for (int i = 0; i < 25; ++i)
        lines += QByteArray::number(i) + "\tS\t" + QByteArray(100000 + i, 'x') + '\n';
    TempProfile::writeFile(path(), lines);
    HistoryWriter writer(path(), 10, 25);
    writer.compactIfDue();
    EXPECT_EQ(TempProfile::readFile(path()), lines.sliced(lines.indexOf("15\t")));
    // Growing within a tenth of the bound leaves the file as it is.
    writer.append("25\tS\tT\n", 1);
    EXPECT_EQ(TempProfile::readFile(path()).count('\n'), 11);
}
