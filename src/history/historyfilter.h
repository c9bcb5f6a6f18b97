#pragma once

#include "history/historyfile.h"

#include <QDate>
#include <QSortFilterProxyModel>

class HistoryModel;

// What the History window shows: the entries whose station or title holds a
// text (any case), of one station, on one day, sorted by a column. Filters
// and comparisons read the entries themselves, not their display texts, so
// that a search over the whole history stays quick.
class HistoryFilter : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit HistoryFilter(HistoryModel &model, QObject *parent = nullptr);
    Q_DISABLE_COPY_MOVE(HistoryFilter)

    // An empty text, station or a null day lets every entry through.
    void setText(const QString &text);
    void setStation(const QString &station);
    // The day in local time.
    void setDay(QDate day);

    const HistoryEntry &entry(int row) const;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    HistoryModel &m_model;
    QString m_text;
    QString m_station;
    qint64 m_dayStart = 0;
    qint64 m_dayEnd = 0;
};
