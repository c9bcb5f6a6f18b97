#include "controls/griddata.h"

#include <QLocale>

#include <algorithm>

namespace {

std::unique_ptr<GridCell[]> newCells(int count)
{
    return std::make_unique<GridCell[]>(static_cast<std::size_t>(count));
}

} // namespace

int GridData::addColumn(GridColumn column)
{
    const int index = columnCount();
    m_columns.push_back(std::move(column));
    m_order.push_back(index);
    // Existing items get room for the new column; this is rare (columns come first).
    for (GridItem &item : m_items) {
        auto cells = newCells(index + 1);
        for (int i = 0; i < index; ++i)
            cells[static_cast<std::size_t>(i)] = std::move(item.cells[static_cast<std::size_t>(i)]);
        item.cells = std::move(cells);
    }
    return index;
}

int GridData::positionOf(int index) const
{
    const auto it = std::find(m_order.begin(), m_order.end(), index);
    return it == m_order.end() ? -1 : static_cast<int>(it - m_order.begin());
}

void GridData::moveColumn(int index, int newPos)
{
    const int from = positionOf(index);
    if (from < 0 || !validPosition(newPos) || from == newPos)
        return;
    m_order.erase(m_order.begin() + from);
    m_order.insert(m_order.begin() + newPos, index);
}

int GridData::insertItem(int row)
{
    GridItem item;
    item.cells = newCells(columnCount());
    if (!validRow(row)) {
        m_items.push_back(std::move(item));
        row = itemCount() - 1;
    } else {
        m_items.insert(m_items.begin() + row, std::move(item));
    }
    if (m_hidden > 0)
        displayChanged();
    return row;
}

void GridData::removeItem(int row)
{
    if (!validRow(row))
        return;
    if (item(row).flags & GridItem::Hidden)
        --m_hidden;
    m_items.erase(m_items.begin() + row);
    displayChanged();
}

void GridData::clear()
{
    m_items.clear();
    m_hidden = 0;
    displayChanged();
}

void GridData::reserve(int rows)
{
    m_items.reserve(static_cast<std::size_t>(rows));
}

GridItemExtra &GridData::itemExtra(int row)
{
    GridItem &it = item(row);
    if (!it.extra)
        it.extra = std::make_unique<GridItemExtra>();
    return *it.extra;
}

GridCellExtra &GridData::cellExtra(int row, int pos)
{
    GridItemExtra &extra = itemExtra(row);
    const int index = indexAt(pos);
    for (GridCellExtra &c : extra.cells) {
        if (c.column == index)
            return c;
    }
    GridCellExtra c;
    c.column = index;
    extra.cells.push_back(c);
    return extra.cells.back();
}

const GridCellExtra *GridData::findCellExtra(int row, int pos) const
{
    const GridItemExtra *extra = findItemExtra(row);
    if (!extra)
        return nullptr;
    const int index = indexAt(pos);
    for (const GridCellExtra &c : extra->cells) {
        if (c.column == index)
            return &c;
    }
    return nullptr;
}

Qt::Alignment GridData::cellAlignment(int row, int pos) const
{
    const GridCellExtra *extra = findCellExtra(row, pos);
    return extra && (extra->set & GridCellExtra::HasAlignment) ? extra->alignment : column(pos).alignment;
}

bool GridData::cellWordWrap(int row, int pos) const
{
    return cellFlag(row, pos, GridCellExtra::HasWordWrap, GridCellExtra::WordWrap, column(pos).wordWrap);
}

bool GridData::cellFlag(int row, int pos, quint16 has, quint16 flag, bool fallback) const
{
    const GridCellExtra *extra = findCellExtra(row, pos);
    return extra && (extra->set & has) ? bool(extra->set & flag) : fallback;
}

void GridData::setCellFlag(int row, int pos, quint16 has, quint16 flag, bool on)
{
    GridCellExtra &extra = cellExtra(row, pos);
    extra.set |= has;
    extra.set = on ? (extra.set | flag) : (extra.set & ~flag);
}

void GridData::setHidden(int row, bool hidden)
{
    GridItem &it = item(row);
    if (bool(it.flags & GridItem::Hidden) == hidden)
        return;
    if (hidden) {
        it.flags |= GridItem::Hidden;
        ++m_hidden;
    } else {
        it.flags &= ~GridItem::Hidden;
        --m_hidden;
    }
    displayChanged();
}

void GridData::buildDisplay() const
{
    m_display.clear();
    m_display.reserve(m_items.size());
    for (int row = 0; row < itemCount(); ++row) {
        if (!(item(row).flags & GridItem::Hidden))
            m_display.push_back(row);
    }
    m_displayValid = true;
}

int GridData::displayCount() const
{
    return itemCount() - m_hidden;
}

int GridData::rowAtDisplay(int display) const
{
    if (display < 0 || display >= displayCount())
        return -1;
    if (m_hidden == 0)
        return display;
    if (!m_displayValid)
        buildDisplay();
    return m_display[static_cast<std::size_t>(display)];
}

int GridData::displayOf(int row) const
{
    if (!validRow(row) || (item(row).flags & GridItem::Hidden))
        return -1;
    if (m_hidden == 0)
        return row;
    if (!m_displayValid)
        buildDisplay();
    return static_cast<int>(std::lower_bound(m_display.begin(), m_display.end(), row) - m_display.begin());
}

std::vector<int> GridData::reorder(const std::vector<int> &order)
{
    std::vector<GridItem> sorted;
    sorted.reserve(m_items.size());
    std::vector<int> newRowOf(m_items.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        const auto old = static_cast<std::size_t>(order[i]);
        sorted.push_back(std::move(m_items[old]));
        newRowOf[old] = static_cast<int>(i);
    }
    m_items = std::move(sorted);
    displayChanged();
    return newRowOf;
}

QDateTime GridData::cellDate(const QString &text)
{
    QDateTime when = QDateTime::fromString(text, Qt::ISODate);
    if (!when.isValid())
        when = QLocale().toDateTime(text, QLocale::ShortFormat);
    return when;
}
