#include "catalogue/playlist.h"

#include "base/apperror.h"

#include <QList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

using namespace Playlist;

namespace {

// A directory playlist: one (address, title) pair per entry, LF line ends.
QString playlist(const QList<std::pair<const char *, const char *>> &entries,
                 const char *closing = "Version=2\n")
{
    QString text = u"[playlist]\nnumberofentries=%1\n"_s.arg(entries.size());
    int k = 0;
    for (const auto &[address, title] : entries) {
        ++k;
        text += u"File%1=%2\nTitle%1=%3\nLength%1=-1\n"_s.arg(k).arg(QString::fromLatin1(address),
                                                                     QString::fromLatin1(title));
    }
    return text + QString::fromLatin1(closing);
}

} // namespace

TEST(Playlist, FirstServerWithRoomWins)
{
    const struct
    {
        QString text;
        const char *expected;
    } rows[] = {
        {playlist({{"http://a:1/", "(#1 - 95/100) A"}, {"http://b:2/", "(#2 - 10/100) B"}}), "http://b:2/"},
        {playlist({{"http://a:1/", "(#1 - 90/100) A"}, {"http://b:2/", "(#2 - 10/100) B"}}), "http://a:1/"},
        {playlist({{"http://a:1/", "(#1 - 99/100) A"}, {"http://b:2/", "(#2 - 100/100) B"}}), "http://a:1/"},
        {playlist({{"http://a:1/", "Plain A"}, {"http://b:2/", "Plain B"}}), "http://a:1/"},
        // An unreadable listener count keeps the previous entry's figure.
        {playlist({{"http://a:1/", "(#1 - 95/100) A"}, {"http://b:2/", "(#2 - x/200) B"}}), "http://b:2/"},
        {playlist({{"http://a:1/?id=7", "(#1 - 1/100) A"}}), "http://a:1/?id"},
        // Entry 1 needs a line after its Length line, even an empty one.
        {playlist({{"http://a:1/", "(#1 - 1/100) A"}}, "").chopped(1), ""},
        {playlist({{"http://a:1/", "(#1 - 1/100) A"}}, ""), "http://a:1/"},
        {u"[playlist]\r\nNUMBEROFENTRIES=1\r\nFile1=http://c/\r\nTitle1=(#1 - 1/9)\r\nLength1=-1\r\n"_s,
         "http://c/\r"},
        {u"[playlist]\nentries=1\nFile1=http://c/\nTitle1=(#1 - 1/9)\nLength1=-1\n"_s, ""},
        {u"[playlist]\nnumberofentries=2147483647\nFile1=http://c/\n\n"_s, ""},
        {u"a\nb\nc"_s, ""}};
    for (const auto &row : rows)
        EXPECT_EQ(chooseStreamFromPlaylist(row.text), QString::fromLatin1(row.expected))
            << row.text.toStdString();
}

TEST(Playlist, DirectoryReferences)
{
    EXPECT_TRUE(isDirectoryReference(u"SSRN#12345.pls"_s));
    EXPECT_FALSE(isDirectoryReference(u"http://x/ssrn12345.pls"_s));
    EXPECT_EQ(directoryNumber(u"ssrn#12345.pls"_s), u"12345");
    EXPECT_THROW(directoryNumber(u"ssrn#.pl"_s), AppError);
    EXPECT_EQ(playlistServiceAddress(u"12345"_s),
              serviceHost + u"/sbin/shoutcast-playlist.pls?rn=12345&file=filename.pls"_s);
}

TEST(Playlist, UsableAddressDropsTheLineEnd)
{
    EXPECT_EQ(usableAddress(u"http://c:8000/live\r"_s), u"http://c:8000/live");
    EXPECT_EQ(usableAddress(u"http://c/ \r\n"_s), u"http://c/");
    EXPECT_EQ(usableAddress(u" http://c/x y"_s), u" http://c/x y");
    EXPECT_EQ(usableAddress(u"\r\n "_s), u"");
}

TEST(Playlist, AnEntryThatCannotBeAStreamSaysWhy)
{
    const struct
    {
        QString address;
        const char *why; // a piece of the reason; empty when the address may be a stream
    } rows[] = {
        {u"file:///etc/passwd"_s, "only http://, https:// and icyx:// addresses name a stream, not file://"},
        {u"FTP://host/x.mp3"_s, "not ftp://"},
        {u"http://host/a\u0001b"_s, "control character"},
        {u"http://host:8000/live"_s, ""},
        {u"HTTPS://host/"_s, ""},
        {u"icyx://host:9000/"_s, ""},
        {u"host:8000/a"_s, ""},
        {u"http://host/?next=file://x"_s, ""}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.address.toStdString());
        const QString problem = streamAddressProblem(row.address);
        EXPECT_EQ(problem.isEmpty(), *row.why == 0) << problem.toStdString();
        EXPECT_TRUE(problem.contains(QString::fromLatin1(row.why))) << problem.toStdString();
    }
}
