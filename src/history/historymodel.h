#pragma once

#include "history/historyfile.h"

#include <QAbstractTableModel>

class HistoryStore;

// The history as a table, newest first: time, station, title. It follows the
// store as titles are added and the oldest dropped.
class HistoryModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        TimeColumn,
        StationColumn,
        TitleColumn,
        ColumnCount
    };
    // The time as milliseconds since the epoch; texts as they are.
    static constexpr int SortRole = Qt::UserRole;

    explicit HistoryModel(const HistoryStore &store, QObject *parent = nullptr);
    Q_DISABLE_COPY_MOVE(HistoryModel)

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    const HistoryEntry &entry(int row) const;

private:
    const HistoryStore &m_store;
};
