#pragma once

#include <QString>

// One page of a station search: text, filters, order and the page's place.
struct DirectoryQuery
{
    enum class Order
    {
        Name,
        Votes,
        ClickCount,
        BitRate,
        Codec,
    };

    static constexpr int defaultPageSize = 100;
    static constexpr int maxPageSize = 10000;

    QString text; // part of the name
    // Values picked from the directory's own lists, matched exactly.
    QString tag;
    QString country;
    QString language;
    QString codec;
    int minBitRate = 0; // kbit/s
    Order order = Order::Votes;
    bool descending = true;
    int offset = 0;
    int limit = defaultPageSize;

    // The same search, the page after this one.
    DirectoryQuery nextPage() const;
    // Path and query of the search on a directory server, every value
    // percent-encoded ("+" included, which a form reader takes for a blank).
    QString pathAndQuery() const;

    bool operator==(const DirectoryQuery &) const = default;
};
