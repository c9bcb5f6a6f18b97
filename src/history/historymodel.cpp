#include "history/historymodel.h"

#include "history/historystore.h"

#include <QDateTime>

HistoryModel::HistoryModel(const HistoryStore &store, QObject *parent)
    : QAbstractTableModel(parent), m_store(store)
{
    // New entries arrive as row 0, the oldest leave from the end.
    connect(&store, &HistoryStore::entryAboutToBeAdded, this, [this] { beginInsertRows({}, 0, 0); });
    connect(&store, &HistoryStore::entryAdded, this, [this] { endInsertRows(); });
    connect(&store, &HistoryStore::oldestAboutToBeDropped, this, [this](qsizetype count) {
        const int rows = rowCount();
        beginRemoveRows({}, rows - int(count), rows - 1);
    });
    connect(&store, &HistoryStore::oldestDropped, this, [this] { endRemoveRows(); });
}

int HistoryModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_store.size());
}

int HistoryModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant HistoryModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || (role != Qt::DisplayRole && role != SortRole))
        return {};
    const HistoryEntry &e = entry(index.row());
    switch (index.column()) {
    case TimeColumn:
        if (role == SortRole)
            return e.time;
        return QDateTime::fromMSecsSinceEpoch(e.time).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    case StationColumn:
        return e.station;
    default:
        return e.title;
    }
}

QVariant HistoryModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case TimeColumn:
        return tr("Time");
    case StationColumn:
        return tr("Station");
    case TitleColumn:
        return tr("Title");
    default:
        return {};
    }
}

const HistoryEntry &HistoryModel::entry(int row) const
{
    return m_store.at(m_store.size() - 1 - row);
}
