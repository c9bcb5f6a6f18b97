#include "controls/lynxgridaccessible.h"

#include "controls/gridheader.h"
#include "controls/lynxgrid.h"

#include <QScrollBar>

// ---- The table ----

LynxGridAccessible::LynxGridAccessible(LynxGrid *grid) : QAccessibleWidget(grid, QAccessible::Table) {}

LynxGridAccessible::~LynxGridAccessible()
{
    for (const QAccessible::Id id : std::as_const(m_cells))
        QAccessible::deleteAccessibleInterface(id);
}

QAccessibleInterface *LynxGridAccessible::factory(const QString &className, QObject *object)
{
    if (className == u"LynxGrid" && object->isWidgetType())
        return new LynxGridAccessible(static_cast<LynxGrid *>(object));
    return nullptr;
}

int LynxGridAccessible::childIndex(const LynxGrid &grid, int row, int col)
{
    return (row + 1) * grid.Cols() + col;
}

LynxGrid &LynxGridAccessible::grid() const
{
    return *static_cast<LynxGrid *>(widget());
}

void *LynxGridAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TableInterface)
        return static_cast<QAccessibleTableInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

void LynxGridAccessible::dropStaleCells() const
{
    if (m_arrangement == grid().m_arrangement)
        return;
    for (const QAccessible::Id id : std::as_const(m_cells))
        QAccessible::deleteAccessibleInterface(id);
    m_cells.clear();
    m_arrangement = grid().m_arrangement;
}

int LynxGridAccessible::childCount() const
{
    return (rowCount() + 1) * columnCount();
}

QAccessibleInterface *LynxGridAccessible::child(int index) const
{
    const int cols = columnCount();
    if (index < 0 || cols == 0 || index >= childCount())
        return nullptr;
    dropStaleCells();
    if (const auto found = m_cells.constFind(index); found != m_cells.constEnd())
        return QAccessible::accessibleInterface(*found);
    auto *cell = new LynxGridCellAccessible(&grid(), index / cols - 1, index % cols);
    m_cells.insert(index, QAccessible::registerAccessibleInterface(cell));
    return cell;
}

int LynxGridAccessible::indexOfChild(const QAccessibleInterface *child) const
{
    const auto *cell = dynamic_cast<const LynxGridCellAccessible *>(child);
    if (!cell || cell->parent() != this)
        return -1;
    return childIndex(grid(), cell->rowIndex(), cell->columnIndex());
}

QAccessibleInterface *LynxGridAccessible::childAt(int x, int y) const
{
    const LynxGrid &g = grid();
    const QPoint inView = g.viewport()->mapFromGlobal(QPoint(x, y));
    const int col = g.colAtX(inView.x());
    if (col < 0)
        return nullptr;
    if (inView.y() < 0)
        return g.m_header->rect().contains(g.m_header->mapFromGlobal(QPoint(x, y))) ? cellAt(-1, col)
                                                                                    : nullptr;
    const int row = g.rowAtY(inView.y());
    return row < 0 ? nullptr : cellAt(row, col);
}

QAccessibleInterface *LynxGridAccessible::focusChild() const
{
    const LynxGrid &g = grid();
    if (!g.hasFocus())
        return nullptr;
    return g.Row() >= 0 && g.Col() >= 0 ? cellAt(g.Row(), g.Col()) : nullptr;
}

QAccessibleInterface *LynxGridAccessible::cellAt(int row, int column) const
{
    if (row < -1 || row >= rowCount() || column < 0 || column >= columnCount())
        return nullptr;
    return child(childIndex(grid(), row, column));
}

int LynxGridAccessible::selectedCellCount() const
{
    return selectedRowCount() * columnCount();
}

QList<QAccessibleInterface *> LynxGridAccessible::selectedCells() const
{
    QList<QAccessibleInterface *> cells;
    for (const int row : selectedRows()) {
        for (int col = 0; col < columnCount(); ++col)
            cells.append(cellAt(row, col));
    }
    return cells;
}

QString LynxGridAccessible::columnDescription(int column) const
{
    return grid().ColHeading(column);
}

int LynxGridAccessible::selectedRowCount() const
{
    return grid().SelectedCount();
}

int LynxGridAccessible::columnCount() const
{
    return grid().Cols();
}

int LynxGridAccessible::rowCount() const
{
    return grid().ItemCount();
}

QList<int> LynxGridAccessible::selectedRows() const
{
    QList<int> rows;
    for (int row = 0; row < rowCount(); ++row) {
        if (grid().ItemSelected(row))
            rows.append(row);
    }
    return rows;
}

bool LynxGridAccessible::isRowSelected(int row) const
{
    return grid().ItemSelected(row);
}

bool LynxGridAccessible::selectRow(int row)
{
    if (row < 0 || row >= rowCount())
        return false;
    grid().setItemSelected(row, true);
    return true;
}

bool LynxGridAccessible::unselectRow(int row)
{
    if (row < 0 || row >= rowCount())
        return false;
    grid().setItemSelected(row, false);
    return true;
}

void LynxGridAccessible::modelChange(QAccessibleTableModelChangeEvent *)
{
    dropStaleCells();
}

// ---- A cell ----

LynxGridCellAccessible::LynxGridCellAccessible(LynxGrid *grid, int row, int col)
    : m_grid(grid), m_row(row), m_col(col), m_arrangement(grid->m_arrangement)
{
}

void *LynxGridCellAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TableCellInterface)
        return static_cast<QAccessibleTableCellInterface *>(this);
    return nullptr;
}

bool LynxGridCellAccessible::isValid() const
{
    return m_grid && m_grid->m_arrangement == m_arrangement && m_row < m_grid->ItemCount() &&
           m_col < m_grid->Cols();
}

QWindow *LynxGridCellAccessible::window() const
{
    QAccessibleInterface *table = parent();
    return table ? table->window() : nullptr;
}

QAccessibleInterface *LynxGridCellAccessible::parent() const
{
    return m_grid ? QAccessible::queryAccessibleInterface(m_grid.data()) : nullptr;
}

QString LynxGridCellAccessible::text(QAccessible::Text t) const
{
    if (!isValid() || (t != QAccessible::Name && t != QAccessible::Value))
        return {};
    if (m_row < 0)
        return m_grid->ColHeading(m_col);
    const QString cellText = m_grid->CellText(m_row, m_col);
    // A cell that only shows a picture is named by what the picture stands for.
    if (t == QAccessible::Name && cellText.isEmpty())
        return m_grid->colImageText(m_col);
    return cellText;
}

QRect LynxGridCellAccessible::rect() const
{
    if (!isValid())
        return {};
    const LynxGrid &g = *m_grid;
    if (m_row < 0) {
        const QRect heading(g.ColLeft(m_col) - g.xOffset(), 0, g.ColVisible(m_col) ? g.ColWidth(m_col) : 0,
                            g.m_header->height());
        return QRect(g.m_header->mapToGlobal(heading.topLeft()), heading.size());
    }
    const QRect cell = g.cellRect(m_row, m_col);
    return cell.isNull() ? QRect() : QRect(g.viewport()->mapToGlobal(cell.topLeft()), cell.size());
}

QAccessible::Role LynxGridCellAccessible::role() const
{
    return m_row < 0 ? QAccessible::ColumnHeader : QAccessible::Cell;
}

QAccessible::State LynxGridCellAccessible::state() const
{
    QAccessible::State s;
    if (!isValid()) {
        s.invalid = true;
        return s;
    }
    const LynxGrid &g = *m_grid;
    const QRect inView = m_row < 0 ? QRect() : g.cellRect(m_row, m_col);
    s.invisible = !g.ColVisible(m_col) || (m_row >= 0 && !g.ItemVisible(m_row));
    s.offscreen = s.invisible || (m_row >= 0 && !g.viewport()->rect().intersects(inView));
    if (m_row < 0)
        return s;
    s.selectable = true;
    s.focusable = true;
    s.selected = g.ItemSelected(m_row);
    s.focused = g.hasFocus() && m_row == g.Row() && m_col == g.Col();
    if (g.ColType(m_col) == GridColumnType::CheckBox) {
        s.checkable = true;
        s.checked = g.CellChecked(m_row, m_col);
    }
    return s;
}

bool LynxGridCellAccessible::isSelected() const
{
    return isValid() && m_row >= 0 && m_grid->ItemSelected(m_row);
}

QList<QAccessibleInterface *> LynxGridCellAccessible::columnHeaderCells() const
{
    QAccessibleInterface *table = parent();
    QAccessibleTableInterface *cells = table ? table->tableInterface() : nullptr;
    QAccessibleInterface *heading = cells ? cells->cellAt(-1, m_col) : nullptr;
    return heading && m_row >= 0 ? QList<QAccessibleInterface *>{heading} : QList<QAccessibleInterface *>{};
}
