#include "history/historyfilter.h"

#include "history/historymodel.h"

#include <QDateTime>

HistoryFilter::HistoryFilter(HistoryModel &model, QObject *parent)
    : QSortFilterProxyModel(parent), m_model(model)
{
    setSourceModel(&model);
}

void HistoryFilter::setText(const QString &text)
{
    m_text = text.trimmed();
    invalidateRowsFilter();
}

void HistoryFilter::setStation(const QString &station)
{
    m_station = station;
    invalidateRowsFilter();
}

void HistoryFilter::setDay(QDate day)
{
    // Days are not always 24 hours long: both ends come from the calendar.
    m_dayStart = day.isValid() ? day.startOfDay().toMSecsSinceEpoch() : 0;
    m_dayEnd = day.isValid() ? day.addDays(1).startOfDay().toMSecsSinceEpoch() : 0;
    invalidateRowsFilter();
}

const HistoryEntry &HistoryFilter::entry(int row) const
{
    return m_model.entry(mapToSource(index(row, 0)).row());
}

bool HistoryFilter::filterAcceptsRow(int sourceRow, const QModelIndex &) const
{
    const HistoryEntry &e = m_model.entry(sourceRow);
    if (!m_station.isEmpty() && e.station != m_station)
        return false;
    if (m_dayEnd != 0 && (e.time < m_dayStart || e.time >= m_dayEnd))
        return false;
    return m_text.isEmpty() || e.title.contains(m_text, Qt::CaseInsensitive) ||
           e.station.contains(m_text, Qt::CaseInsensitive);
}

bool HistoryFilter::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    const HistoryEntry &a = m_model.entry(left.row());
    const HistoryEntry &b = m_model.entry(right.row());
    switch (left.column()) {
    case HistoryModel::StationColumn:
        if (const int order = a.station.compare(b.station, Qt::CaseInsensitive))
            return order < 0;
        break;
    case HistoryModel::TitleColumn:
        if (const int order = a.title.compare(b.title, Qt::CaseInsensitive))
            return order < 0;
        break;
    default:
        break;
    }
    return a.time < b.time;
}
