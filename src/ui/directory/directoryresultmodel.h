#pragma once

#include "directory/directoryquery.h"
#include "directory/directorystation.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QList>

#include <optional>

class FaviconIcons;

// The stations a directory search found, as the directory window lists them,
// a page at a time: a view that reaches the last row asks for more
// (canFetchMore/fetchMore), and the window fetches the next page. Held to a
// number of rows, so that scrolling on cannot grow memory without end.
class DirectoryResultModel : public QAbstractTableModel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DirectoryResultModel)

public:
    enum Column
    {
        ColName,
        ColCountry,
        ColTags,
        ColCodec,
        ColBitRate,
        ColVotes,
        ColClicks,
        ColumnCount
    };

    static constexpr int defaultMaxRows = 10000;

    // The directory's order behind a column; none for columns it cannot sort by.
    static std::optional<DirectoryQuery::Order> orderOf(int column);
    static int columnOf(DirectoryQuery::Order order);

    explicit DirectoryResultModel(FaviconIcons &icons, QObject *parent = nullptr);

    void setMaxRows(int maxRows);
    // A new search's first page; more tells whether the directory may have further pages.
    void setResults(const QList<DirectoryStation> &stations, bool more);
    // The page after the rows there are.
    void appendResults(const QList<DirectoryStation> &stations, bool more);
    // The page asked for will not come: no more are asked for this search.
    void endPaging();
    bool mayHaveMore() const { return m_more; }
    const DirectoryStation &at(int row) const { return m_stations.at(row); }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;

signals:
    // The view has reached the last row: the next page is wanted.
    void moreWanted();

private:
    void add(const QList<DirectoryStation> &stations, bool more);
    void onIconReady(const QString &address);

    FaviconIcons &m_icons;
    QList<DirectoryStation> m_stations;
    // The rows that show each icon address, to repaint them when it comes.
    QHash<QString, QList<int>> m_rowsByIcon;
    int m_maxRows = defaultMaxRows;
    bool m_more = false;
    // A page has been asked for and has not come yet.
    bool m_asked = false;
};
