#pragma once

#include <QHash>
#include <QObject>
#include <QString>

class LynxGrid;

// The station grid's columns: made with their headings and classic widths,
// the Station column grown into the width the others leave (and at least as
// wide as the names shown need, up to a limit), and the columns' widths,
// order and sorting kept in the settings between runs.
class StationColumns : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StationColumns)

public:
    explicit StationColumns(LynxGrid &grid);

    void create();
    // Before a refill: the names are measured again.
    void clearNames();
    void measureName(const QString &name);
    void stretch();
    // As the setting key says; a setting that does not fit the columns is left aside.
    void restore(const QString &key);
    void save(const QString &key) const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    int stationPosition() const;

    LynxGrid &m_grid;
    // The width the widest station name shown needs, up to a limit.
    int m_nameWidth = 0;
    // Advance of each character met in this fill, read from the font once.
    QHash<QChar, int> m_advances;
};
