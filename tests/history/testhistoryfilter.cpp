#include "history/historyfilter.h"

#include "history/historymodel.h"
#include "history/historystore.h"

#include "support/tempprofile.h"

#include <QAbstractItemModelTester>
#include <QDateTime>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// The test runs in central European time (see CMakeLists.txt): 1 May is a
// summer day, two hours ahead of UTC.
qint64 local(const char *text)
{
    return QDateTime::fromString(QLatin1StringView(text), Qt::ISODate).toMSecsSinceEpoch();
}

class HistoryFilterTest : public ProfileTest
{
protected:
    HistoryFilterTest()
    {
        store.open();
        for (const auto &[time, station, title] :
             {std::tuple{"2024-04-30T23:59:59", "Jazz FM", "Night - Owl"},
              {"2024-05-01T00:00:00", "Rock", "Dawn"},
              {"2024-05-01T12:00:00", "Jazz FM", "Noon, \"live\""},
              {"2024-05-01T23:59:59", "Rock", "jazz hands"},
              {"2024-05-02T00:00:00", "Rock", "Zebra"}})
            store.add(QString::fromUtf8(station), QString::fromUtf8(title), local(time));
    }
    QStringList shown() const
    {
        QStringList titles;
        for (int row = 0; row < filter.rowCount(); ++row)
            titles.append(filter.entry(row).title);
        return titles;
    }
    HistoryStore store{profile.root() + u"/history.tsv"_s, 6};
    HistoryModel model{store};
    HistoryFilter filter{model};
    QAbstractItemModelTester modelTester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    QAbstractItemModelTester filterTester{&filter, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

} // namespace

TEST_F(HistoryFilterTest, TheModelShowsTheNewestFirstAndFollowsTheStore)
{
    filter.sort(HistoryModel::TitleColumn);
    EXPECT_EQ(model.index(0, HistoryModel::TitleColumn).data(), u"Zebra"_s);
    EXPECT_EQ(model.index(4, HistoryModel::TimeColumn).data(), u"2024-04-30 23:59:59"_s);
    EXPECT_EQ(model.index(4, HistoryModel::TimeColumn).data(HistoryModel::SortRole),
              QDateTime(QDate(2024, 4, 30), QTime(21, 59, 59), Qt::UTC).toMSecsSinceEpoch());
    EXPECT_EQ(model.headerData(HistoryModel::StationColumn, Qt::Horizontal), u"Station"_s);
    // Three more: eight entries against a bound of six, the oldest two leave.
    for (const QString &title : {u"Third"_s, u"Again"_s, u"Anew"_s})
        store.add(u"Pop"_s, title, local("2024-05-03T10:00:00"));
    EXPECT_EQ(model.rowCount(), 6);
    EXPECT_EQ(model.index(0, HistoryModel::TitleColumn).data(), u"Anew"_s);
    EXPECT_EQ(shown(), (QStringList{u"Again"_s, u"Anew"_s, u"jazz hands"_s, u"Noon, \"live\""_s, u"Third"_s,
                                    u"Zebra"_s}));
}

TEST_F(HistoryFilterTest, TextStationAndDayNarrowTheRows)
{
    const struct
    {
        QString text, station;
        QDate day;
        QStringList titles; // newest first
    } cases[] = {
        {{}, {}, {}, {u"Zebra"_s, u"jazz hands"_s, u"Noon, \"live\""_s, u"Dawn"_s, u"Night - Owl"_s}},
        {u" JAZZ "_s, {}, {}, {u"jazz hands"_s, u"Noon, \"live\""_s, u"Night - Owl"_s}},
        {u"jazz"_s, u"Rock"_s, {}, {u"jazz hands"_s}},
        {{}, {}, QDate(2024, 5, 1), {u"jazz hands"_s, u"Noon, \"live\""_s, u"Dawn"_s}},
        {u"o"_s, u"Jazz FM"_s, QDate(2024, 5, 1), {u"Noon, \"live\""_s}},
        {{}, u"Nobody"_s, {}, {}},
    };
    for (const auto &c : cases) {
        filter.setText(c.text);
        filter.setStation(c.station);
        filter.setDay(c.day);
        EXPECT_EQ(shown(), c.titles) << c.text.toStdString() << c.station.toStdString();
    }
}

TEST_F(HistoryFilterTest, ColumnsSortByTheirOwnValues)
{
    filter.sort(HistoryModel::StationColumn, Qt::DescendingOrder);
    EXPECT_EQ(shown(),
              (QStringList{u"Zebra"_s, u"jazz hands"_s, u"Dawn"_s, u"Noon, \"live\""_s, u"Night - Owl"_s}));
    filter.sort(HistoryModel::TimeColumn);
    EXPECT_EQ(shown(),
              (QStringList{u"Night - Owl"_s, u"Dawn"_s, u"Noon, \"live\""_s, u"jazz hands"_s, u"Zebra"_s}));
}
