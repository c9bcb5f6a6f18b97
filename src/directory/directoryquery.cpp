#include "directory/directoryquery.h"

#include <QUrl>

#include <tuple>

namespace {

QString orderName(DirectoryQuery::Order order)
{
    switch (order) {
    case DirectoryQuery::Order::Name:
        return QStringLiteral("name");
    case DirectoryQuery::Order::ClickCount:
        return QStringLiteral("clickcount");
    case DirectoryQuery::Order::BitRate:
        return QStringLiteral("bitrate");
    case DirectoryQuery::Order::Codec:
        return QStringLiteral("codec");
    case DirectoryQuery::Order::Votes:
        break;
    }
    return QStringLiteral("votes");
}

class QueryText
{
public:
    void add(const char *key, const QString &value)
    {
        if (value.isEmpty())
            return;
        m_text += (m_text.isEmpty() ? u'?' : u'&') + QLatin1StringView(key) + u'=' +
                  QString::fromLatin1(QUrl::toPercentEncoding(value));
    }
    const QString &text() const { return m_text; }

private:
    QString m_text;
};

} // namespace

DirectoryQuery DirectoryQuery::nextPage() const
{
    DirectoryQuery next = *this;
    next.offset = offset + limit;
    return next;
}

QString DirectoryQuery::pathAndQuery() const
{
    const QString yes = QStringLiteral("true");
    QueryText q;
    q.add("name", text.trimmed());
    const std::tuple<const char *, const char *, const QString *> exact[] = {
        {"tag", "tagExact", &tag},
        {"country", "countryExact", &country},
        {"language", "languageExact", &language}};
    for (const auto &[key, exactKey, value] : exact) {
        q.add(key, *value);
        q.add(exactKey, value->isEmpty() ? QString() : yes);
    }
    q.add("codec", codec);
    q.add("bitrateMin", minBitRate > 0 ? QString::number(minBitRate) : QString());
    q.add("order", orderName(order));
    q.add("reverse", descending ? yes : QStringLiteral("false"));
    q.add("offset", QString::number(qMax(offset, 0)));
    q.add("limit", QString::number(qBound(1, limit, maxPageSize)));
    // Stations the directory's checks found silent are of no use here.
    q.add("hidebroken", yes);
    return QStringLiteral("/json/stations/search") + q.text();
}
