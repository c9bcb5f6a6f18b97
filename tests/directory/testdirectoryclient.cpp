#include "directory/directoryclient.h"

#include "support/directoryserver.h"
#include "support/eventwait.h"
#include "support/icyserver.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using Order = DirectoryQuery::Order;

DirectoryServer::Station station(int n, const QString &name, const QString &tags, const QString &country,
                                 const QString &language, const QString &codec, int bitrate, int votes,
                                 int clicks)
{
    const QString address = u"http://s.example/"_s + QString::number(n);
    return {.uuid = u"00000000-0000-4000-8000-00000000000"_s + QString::number(n),
            .name = name,
            .url = address + u".pls"_s,
            .urlResolved = address,
            .tags = tags,
            .country = country,
            .language = language,
            .codec = codec,
            .bitrate = bitrate,
            .votes = votes,
            .clickCount = clicks};
}

DirectoryQuery query(const QString &text, Order order = Order::Votes, bool descending = true)
{
    DirectoryQuery q;
    q.text = text;
    q.order = order;
    q.descending = descending;
    return q;
}

// What a search ended with: the names found, or the failure's message.
struct Outcome
{
    bool ok = false;
    QStringList names;
    QString message;
};

class Client : public ::testing::Test
{
protected:
    void SetUp() override
    {
        server.stations = {
            station(1, u"Jazz Am Morgen"_s, u"jazz,smooth jazz"_s, u"Austria"_s, u"german"_s, u"MP3"_s, 128,
                    50, 10),
            station(2, u"Jazz Nights"_s, u"jazz"_s, u"Germany"_s, u"english"_s, u"AAC+"_s, 64, 80, 40),
            station(3, u"Smooth FM"_s, u"smooth jazz"_s, u"Austria"_s, u"german,english"_s, u"AAC+"_s, 192,
                    20, 90),
            station(4, u"Rock Antenne"_s, u"rock"_s, u"Germany"_s, u"german"_s, u"MP3"_s, 320, 99, 5),
            station(5, u"Jazzy Talk"_s, u"talk,jazz"_s, u"Austria"_s, u"german"_s, u"AAC+"_s, 128, 5, 70),
            station(6, u"Klassik"_s, u"classical"_s, u"Austria"_s, u"german"_s, u"OGG"_s, 96, 30, 30),
        };
        ASSERT_TRUE(server.start());
        ASSERT_EQ(client.setServer(server.base()), QString());
        QObject::connect(&client, &DirectoryClient::searchFinished,
                         [this](const DirectoryQuery &, const QList<DirectoryStation> &stations) {
                             Outcome o{true, {}, {}};
                             for (const DirectoryStation &s : stations)
                                 o.names.append(s.name);
                             outcomes.append(o);
                         });
        QObject::connect(&client, &DirectoryClient::searchFailed,
                         [this](const DirectoryQuery &, const QString &message) {
                             outcomes.append({false, {}, message});
                         });
    }
    bool waitForOutcomes(qsizetype count)
    {
        return waitUntil([&] { return outcomes.size() >= count; }, 5000);
    }
    Outcome search(const DirectoryQuery &q)
    {
        const qsizetype before = outcomes.size();
        client.search(q);
        return waitForOutcomes(before + 1) ? outcomes.constLast() : Outcome{false, {}, u"no answer"_s};
    }
    QStringList names(const DirectoryQuery &q)
    {
        const Outcome o = search(q);
        EXPECT_TRUE(o.ok) << o.message.toStdString();
        return o.names;
    }

    DirectoryServer server;
    DirectoryClient client;
    QList<Outcome> outcomes;
};

TEST_F(Client, SearchesFilterSortAndComeInPages)
{
    DirectoryQuery filtered = query({});
    filtered.tag = u"jazz"_s; // exact: "smooth jazz" is another tag
    filtered.country = u"Austria"_s;
    filtered.codec = u"AAC+"_s; // a "+" sent as it is would reach the server as a blank
    filtered.minBitRate = 128;
    DirectoryQuery english = query({}, Order::BitRate, false);
    english.language = u"english"_s;
    DirectoryQuery paged = query({}, Order::Name, false);
    paged.limit = 4;
    DirectoryQuery byCodec = query({}, Order::Codec, false);
    byCodec.limit = 3;
    const std::pair<DirectoryQuery, QStringList> rows[] = {
        {query(u"jazz"_s), {u"Jazz Nights"_s, u"Jazz Am Morgen"_s, u"Jazzy Talk"_s}},
        {filtered, {u"Jazzy Talk"_s}},
        {english, {u"Jazz Nights"_s, u"Smooth FM"_s}},
        {query({}, Order::ClickCount),
         {u"Smooth FM"_s, u"Jazzy Talk"_s, u"Jazz Nights"_s, u"Klassik"_s, u"Jazz Am Morgen"_s,
          u"Rock Antenne"_s}},
        {byCodec, {u"Jazz Nights"_s, u"Smooth FM"_s, u"Jazzy Talk"_s}},
        {paged, {u"Jazz Am Morgen"_s, u"Jazz Nights"_s, u"Jazzy Talk"_s, u"Klassik"_s}},
        {paged.nextPage(), {u"Rock Antenne"_s, u"Smooth FM"_s}},
        {paged.nextPage().nextPage(), {}},
    };
    for (const auto &[q, expected] : rows)
        EXPECT_EQ(names(q), expected) << q.pathAndQuery().toStdString();

    static const QRegularExpression agent(u"^Tunecatch/\\d+\\.\\d+\\.\\d+$"_s);
    for (const DirectoryServer::Request &r : std::as_const(server.requests)) {
        EXPECT_TRUE(agent.match(QString::fromUtf8(r.userAgent)).hasMatch()) << r.userAgent.toStdString();
        EXPECT_EQ(r.query.value(u"hidebroken"_s), u"true"_s);
    }
}

TEST_F(Client, ANewSearchCancelsTheOneUnderWay)
{
    server.delayMs = 200;
    client.search(query(u"Rock"_s));
    client.search(query(u"Klassik"_s));
    ASSERT_TRUE(waitForOutcomes(1));
    // Both answers were equally late, the cancelled one asked first: it would be here by now.
    ASSERT_EQ(outcomes.size(), 1);
    EXPECT_EQ(outcomes[0].names, QStringList{u"Klassik"_s});
    EXPECT_FALSE(client.isSearching());

    client.search(query(u"Rock"_s));
    EXPECT_TRUE(client.isSearching());
    client.cancelSearch();
    EXPECT_FALSE(client.isSearching());
    EXPECT_EQ(names(query(u"Smooth"_s)), QStringList{u"Smooth FM"_s});
    EXPECT_EQ(outcomes.size(), 2);
}

TEST_F(Client, AFailingServerGivesWayToTheNext)
{
    DirectoryServer failing;
    failing.failStatus = 503;
    ASSERT_TRUE(failing.start());
    const QString refused = u"http://127.0.0.1:"_s + QString::number(IcyServer::refusedPort());
    client.setServers({refused, failing.base(), server.base()});
    EXPECT_EQ(names(query(u"Klassik"_s)), QStringList{u"Klassik"_s});
    EXPECT_EQ(client.currentServer(), server.base());
    // The server that answered is asked first from now on.
    EXPECT_EQ(names(query(u"Rock"_s)), QStringList{u"Rock Antenne"_s});
    EXPECT_EQ(failing.requests.size(), 1);

    // A refusal of the request itself would be the same elsewhere.
    failing.failStatus = 404;
    client.setServers({failing.base(), server.base()});
    const Outcome notFound = search(query(u"Rock"_s));
    EXPECT_FALSE(notFound.ok);
    EXPECT_TRUE(
        notFound.message.contains(failing.base() + u" could not be used: it answered with status 404"_s))
        << notFound.message.toStdString();
    EXPECT_EQ(server.requests.size(), 2);
}

TEST_F(Client, BadAnswersEndInAReasonAndNothingElse)
{
    DirectoryClient::Limits limits;
    limits.maxSearchBytes = 64 * 1024;
    limits.silenceMs = 300;
    limits.deadlineMs = 1000;
    client.setLimits(limits);
    const struct
    {
        int failStatus;
        QByteArray body;
        int delayMs;
        int endlessPiece;
        int endlessIntervalMs;
        QString reason;
    } rows[] = {
        {500, {}, 0, 0, 0, u"status 500"_s},
        {0, R"([{"name":)", 0, 0, 0, u"damaged answer"_s},
        {0, R"({"name":"x"})", 0, 0, 0, u"not a list"_s},
        {0, QByteArray(100 * 1024, ' '), 0, 0, 0, u"larger than 64 KB"_s},
        {0, {}, 0, 4096, 1, u"larger than 64 KB"_s},
        {0, {}, 3000, 0, 0, u"did not answer in time"_s},
        {0, {}, 0, 1, 100, u"did not answer in time"_s}, // a trickle that never ends
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.reason.toStdString());
        server.failStatus = row.failStatus;
        server.body = row.body;
        server.delayMs = row.delayMs;
        server.endlessPiece = row.endlessPiece;
        server.endlessIntervalMs = row.endlessIntervalMs;
        const Outcome o = search(query(u"Klassik"_s));
        EXPECT_FALSE(o.ok);
        EXPECT_TRUE(o.message.contains(row.reason)) << o.message.toStdString();
    }

    for (const QString &base : {u"ftp://127.0.0.1"_s, u"http://127.0.0.1:8080/"_s}) {
        const QString reason = client.setServer(base);
        EXPECT_FALSE(reason.isEmpty());
        EXPECT_EQ(search(query(u"Klassik"_s)).message, reason);
    }
}

TEST_F(Client, FilterListsComeMostUsedFirst)
{
    using Kind = DirectoryClient::ListKind;
    QHash<Kind, QList<DirectoryFilterValue>> lists;
    QObject::connect(
        &client, &DirectoryClient::listFinished,
        [&](Kind kind, const QList<DirectoryFilterValue> &values) { lists.insert(kind, values); });
    for (const Kind kind : {Kind::Tags, Kind::Countries, Kind::Languages, Kind::Codecs, Kind::Tags})
        client.fetchList(kind);
    ASSERT_TRUE(waitUntil([&] { return lists.size() == 4; }, 5000));
    using Values = QList<DirectoryFilterValue>;
    EXPECT_EQ(lists[Kind::Tags].mid(0, 2), (Values{{u"jazz"_s, 3}, {u"smooth jazz"_s, 2}}));
    EXPECT_EQ(lists[Kind::Countries], (Values{{u"Austria"_s, 4}, {u"Germany"_s, 2}}));
    EXPECT_EQ(lists[Kind::Languages], (Values{{u"german"_s, 5}, {u"english"_s, 2}}));
    EXPECT_EQ(lists[Kind::Codecs], (Values{{u"AAC+"_s, 3}, {u"MP3"_s, 2}, {u"OGG"_s, 1}}));
    // A list already on its way is not asked for twice.
    EXPECT_EQ(server.requests.size(), 4);
}

TEST_F(Client, PlaysAreCountedAsTheDirectoryAsks)
{
    QList<std::pair<QString, bool>> counted;
    QObject::connect(&client, &DirectoryClient::clickCounted, [&](const QString &uuid, bool ok) {
        counted.append({uuid, ok});
    });
    const QString uuid = server.stations[2].uuid;
    EXPECT_TRUE(client.countClick(uuid));
    EXPECT_TRUE(client.countClick(u"0000"_s));
    EXPECT_FALSE(client.countClick(u"../json/tags"_s));
    ASSERT_TRUE(waitUntil([&] { return counted.size() == 2; }, 5000));
    EXPECT_TRUE(counted.contains(std::pair{uuid, true}));
    EXPECT_TRUE(counted.contains(std::pair{u"0000"_s, false}));
    EXPECT_EQ(server.stations[2].clickCount, 91);
    EXPECT_EQ(server.requests.size(), 2);
    EXPECT_TRUE(server.requests.constFirst().path.startsWith("/json/url/"));
}

} // namespace
