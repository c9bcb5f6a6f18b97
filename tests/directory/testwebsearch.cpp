#include "directory/websearch.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(WebSearch, AddressTakesTheGenreAndTheTextWithBlanksAsPlusAndNothingElseEscaped)
{
    const QString host = u"http://directory.test"_s;
    const QString page = host + u"/directory/index.phtml?sgenre="_s;
    const struct
    {
        QString text, genre, expected;
    } rows[] = {{u"smooth jazz"_s, u"Jazz"_s, page + u"Jazz&maxbitrate=999&numresult=25&s=smooth+jazz"_s},
                {u"rock"_s, QString(), page + u"&maxbitrate=999&numresult=25&s=rock"_s},
                {u" two  blanks "_s, u"Pop"_s, page + u"Pop&maxbitrate=999&numresult=25&s=+two++blanks+"_s},
                {u"R&B #1/\u00e9"_s, u"R&B"_s, page + u"R&B&maxbitrate=999&numresult=25&s=R&B+#1/\u00e9"_s},
                // Only the template's "AAAAA" is the genre's place; the text keeps its own.
                {u"AAAAA"_s, u"Talk"_s, page + u"Talk&maxbitrate=999&numresult=25&s=AAAAA"_s},
                {QString(), u"Jazz"_s, QString()}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text.toStdString());
        EXPECT_EQ(WebSearch::searchAddress(host, row.text, row.genre), row.expected);
    }
}

} // namespace
