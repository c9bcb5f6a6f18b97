#include "history/historycsv.h"

#include "history/historyfilter.h"
#include "history/historymodel.h"
#include "history/historystore.h"

#include "support/tempprofile.h"

#include <QBuffer>
#include <QDateTime>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class HistoryCsvTest : public ProfileTest
{
protected:
    HistoryCsvTest()
    {
        store.open();
        // Central European time (see CMakeLists.txt): summer and winter offsets.
        const auto add = [this](const char *time, const QString &station, const QString &title) {
            store.add(station, title,
                      QDateTime::fromString(QLatin1StringView(time), Qt::ISODate).toMSecsSinceEpoch());
        };
        add("2024-01-15T08:30:00", u"Plain"_s, u"Artist - Title"_s);
        add("2024-07-01T23:05:09", u"Comma, Radio"_s, u"Say \"hi\""_s);
        add("2024-07-02T00:00:00", u"Ünï"_s, u"two\r\nlines"_s);
    }
    QByteArray csv(const QAbstractItemModel &rows) const
    {
        QBuffer out;
        out.open(QIODevice::WriteOnly);
        EXPECT_EQ(writeHistoryCsv(rows, out), QString());
        return out.data();
    }
    HistoryStore store{profile.root() + u"/history.tsv"_s};
    HistoryModel model{store};
};

} // namespace

TEST_F(HistoryCsvTest, FieldsAreQuotedOnlyWhereNeeded)
{
    EXPECT_EQ(csv(model), "Time,Station,Title\r\n"
                          "2024-07-02T00:00:00+02:00,Ünï,\"two\r\nlines\"\r\n"
                          "2024-07-01T23:05:09+02:00,\"Comma, Radio\",\"Say \"\"hi\"\"\"\r\n"
                          "2024-01-15T08:30:00+01:00,Plain,Artist - Title\r\n");
}

TEST_F(HistoryCsvTest, ExportsTheRowsAsShownAndReportsAFailedWrite)
{
    HistoryFilter filter(model);
    filter.setText(u"t"_s);
    filter.sort(HistoryModel::TimeColumn);
    EXPECT_EQ(csv(filter), "Time,Station,Title\r\n"
                           "2024-01-15T08:30:00+01:00,Plain,Artist - Title\r\n"
                           "2024-07-02T00:00:00+02:00,Ünï,\"two\r\nlines\"\r\n");
    QBuffer closed;
    EXPECT_NE(writeHistoryCsv(model, closed), QString());
}
