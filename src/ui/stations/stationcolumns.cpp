#include "ui/stations/stationcolumns.h"

#include "base/settingsstore.h"
#include "controls/lynxgrid.h"
#include "ui/stations/columnstate.h"
#include "ui/stations/frmstations.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>

namespace {

using Col = FrmStations::Column;

struct ColumnDef
{
    const char *heading;
    int width;
};

// Headings and widths in creation order. The Station column grows into the
// width the others leave; Output is as wide as a usual file template.
constexpr ColumnDef columns[Col::ColumnCount] = {
    {" ", 23},
    {QT_TRANSLATE_NOOP("FrmStations", "Station"), 100},
    {QT_TRANSLATE_NOOP("FrmStations", "Genre"), 46},
    {QT_TRANSLATE_NOOP("FrmStations", "Bit"), 33},
    {QT_TRANSLATE_NOOP("FrmStations", "Type"), 33},
    {QT_TRANSLATE_NOOP("FrmStations", "Category"), 100},
    {QT_TRANSLATE_NOOP("FrmStations", "Rating"), 66},
    {QT_TRANSLATE_NOOP("FrmStations", "StreamUrl"), 200},
    {QT_TRANSLATE_NOOP("FrmStations", "Single"), 46},
    {QT_TRANSLATE_NOOP("FrmStations", "LastDate"), 66},
    {QT_TRANSLATE_NOOP("FrmStations", "Sign"), 46},
    {QT_TRANSLATE_NOOP("FrmStations", "InfoUrl"), 166},
    {QT_TRANSLATE_NOOP("FrmStations", "Output"), 200},
};

// The Station column shows names whole up to this width before it takes spare room.
constexpr int StationNameWidth = 320;

} // namespace

StationColumns::StationColumns(LynxGrid &grid) : QObject(&grid), m_grid(grid)
{
    m_grid.viewport()->installEventFilter(this);
}

void StationColumns::create()
{
    for (int index = 0; index < Col::ColumnCount; ++index) {
        const ColumnDef &column = columns[index];
        const QString heading = QCoreApplication::translate("FrmStations", column.heading);
        if (index == Col::ColSingle)
            m_grid.AddColumn(heading, column.width, Qt::AlignHCenter, GridColumnType::CheckBox);
        else
            m_grid.AddColumn(heading, column.width);
    }
}

int StationColumns::stationPosition() const
{
    return m_grid.ColPosition(Col::ColStation);
}

void StationColumns::clearNames()
{
    m_nameWidth = 0;
    m_advances.clear();
}

void StationColumns::measureName(const QString &name)
{
    if (m_nameWidth >= StationNameWidth)
        return;
    // Character by character from a table: measuring each whole name of a
    // large list costs more than filling the grid, and kerning only narrows.
    int width = 14; // room for the cell's padding on either side
    for (const QChar c : name) {
        auto advance = m_advances.constFind(c);
        if (advance == m_advances.cend())
            advance = m_advances.insert(c, m_grid.fontMetrics().horizontalAdvance(c));
        width += *advance;
    }
    m_nameWidth = qMin(StationNameWidth, qMax(m_nameWidth, width));
}

void StationColumns::stretch()
{
    const int station = stationPosition();
    if (station < 0)
        return;
    int others = 0;
    for (int col = 0; col < m_grid.Cols(); ++col) {
        if (col != station && m_grid.ColVisible(col))
            others += m_grid.ColWidth(col);
    }
    const int width =
        std::max({columns[Col::ColStation].width, m_nameWidth, m_grid.viewport()->width() - others});
    if (m_grid.ColWidth(station) != width)
        m_grid.setColWidth(station, width);
}

void StationColumns::restore(const QString &key)
{
    const std::optional<ColumnState> state =
        ColumnState::fromText(SettingsStore::getSetting(key), Col::ColumnCount);
    if (state) {
        // Placed from the first position on, each move keeps the ones placed before.
        for (int position = 0; position < Col::ColumnCount; ++position)
            m_grid.setColPosition(int(state->positions.indexOf(position)), position);
        for (int index = 0; index < Col::ColumnCount; ++index) {
            if (index != Col::ColStation)
                m_grid.setColWidth(m_grid.ColPosition(index), state->widths[index]);
        }
        if (state->sortIndex >= 0)
            m_grid.Sort(m_grid.ColPosition(state->sortIndex),
                        state->descending ? GridSortOrder::Descending : GridSortOrder::Ascending);
    }
    stretch();
}

void StationColumns::save(const QString &key) const
{
    ColumnState state;
    for (int index = 0; index < Col::ColumnCount; ++index) {
        const int at = m_grid.ColPosition(index);
        state.widths << m_grid.ColWidth(at);
        state.positions << at;
        if (at == m_grid.sortColumn()) {
            state.sortIndex = index;
            state.descending = m_grid.sortOrder() == GridSortOrder::Descending;
        }
    }
    SettingsStore::saveSetting(key, state.toText());
}

bool StationColumns::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_grid.viewport() && event->type() == QEvent::Resize)
        stretch();
    return QObject::eventFilter(watched, event);
}
