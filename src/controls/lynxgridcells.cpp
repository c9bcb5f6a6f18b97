// LynxGrid: the properties of items and cells.
#include "controls/lynxgrid.h"

#include "controls/grideditor.h"

// ---- Items ----

bool LynxGrid::ItemChecked(int row) const
{
    return m_data.validRow(row) && (m_data.item(row).flags & GridItem::Checked);
}

void LynxGrid::setItemChecked(int row, bool checked)
{
    if (!m_data.validRow(row))
        return;
    quint8 &flags = m_data.item(row).flags;
    flags = checked ? (flags | GridItem::Checked) : (flags & ~GridItem::Checked);
    refresh();
}

bool LynxGrid::ItemSelected(int row) const
{
    return m_data.validRow(row) && (m_data.item(row).flags & GridItem::Selected);
}

void LynxGrid::setItemSelected(int row, bool selected)
{
    if (!m_data.validRow(row))
        return;
    if (selected && !m_multiSelect) {
        selectOnly(row);
        return;
    }
    quint8 &flags = m_data.item(row).flags;
    if (bool(flags & GridItem::Selected) == selected)
        return;
    flags = selected ? (flags | GridItem::Selected) : (flags & ~GridItem::Selected);
    refresh();
    emit SelectionChanged();
}

bool LynxGrid::ItemVisible(int row) const
{
    return m_data.validRow(row) && !(m_data.item(row).flags & GridItem::Hidden);
}

void LynxGrid::setItemVisible(int row, bool visible)
{
    if (!m_data.validRow(row))
        return;
    if (!visible && isEditing() && m_editor->row() == row)
        cancelEdit();
    m_data.setHidden(row, !visible);
    layoutChanged();
}

int LynxGrid::ItemImage(int row) const
{
    if (!m_data.validRow(row))
        return -1;
    const GridItemExtra *extra = m_data.findItemExtra(row);
    return extra ? extra->image : -1;
}

void LynxGrid::setItemImage(int row, int image)
{
    if (!m_data.validRow(row))
        return;
    m_data.itemExtra(row).image = image;
    refresh();
}

QColor LynxGrid::ItemBackColor(int row) const
{
    const GridItemExtra *extra = m_data.validRow(row) ? m_data.findItemExtra(row) : nullptr;
    return extra ? extra->back : QColor();
}

void LynxGrid::setItemBackColor(int row, const QColor &color)
{
    if (!m_data.validRow(row))
        return;
    m_data.itemExtra(row).back = color;
    refresh();
}

QColor LynxGrid::ItemForeColor(int row) const
{
    const GridItemExtra *extra = m_data.validRow(row) ? m_data.findItemExtra(row) : nullptr;
    return extra ? extra->fore : QColor();
}

void LynxGrid::setItemForeColor(int row, const QColor &color)
{
    if (!m_data.validRow(row))
        return;
    m_data.itemExtra(row).fore = color;
    refresh();
}

bool LynxGrid::ItemFontBold(int row) const
{
    return m_data.validRow(row) && (m_data.item(row).flags & GridItem::Bold);
}

void LynxGrid::setItemFontBold(int row, bool bold)
{
    if (!m_data.validRow(row))
        return;
    quint8 &flags = m_data.item(row).flags;
    flags = bold ? (flags | GridItem::Bold) : (flags & ~GridItem::Bold);
    refresh();
}

qint32 LynxGrid::ItemData(int row) const
{
    return m_data.validRow(row) ? m_data.item(row).data : 0;
}

void LynxGrid::setItemData(int row, qint32 value)
{
    if (m_data.validRow(row))
        m_data.item(row).data = value;
}

QString LynxGrid::ItemTag(int row) const
{
    const GridItemExtra *extra = m_data.validRow(row) ? m_data.findItemExtra(row) : nullptr;
    return extra ? extra->tag : QString();
}

void LynxGrid::setItemTag(int row, const QString &tag)
{
    if (m_data.validRow(row))
        m_data.itemExtra(row).tag = tag;
}

int LynxGrid::CheckedCount() const
{
    int count = 0;
    for (int row = 0; row < ItemCount(); ++row)
        count += (m_data.item(row).flags & GridItem::Checked) ? 1 : 0;
    return count;
}

int LynxGrid::SelectedCount() const
{
    int count = 0;
    for (int row = 0; row < ItemCount(); ++row)
        count += (m_data.item(row).flags & GridItem::Selected) ? 1 : 0;
    return count;
}

int LynxGrid::ItemsVisible() const
{
    return viewport()->height() / m_rowHeight;
}

// ---- Cells ----

QString LynxGrid::CellText(int row, int col) const
{
    return validCell(row, col) ? m_data.cell(row, col).text : QString();
}

void LynxGrid::setCellText(int row, int col, const QString &text)
{
    if (!validCell(row, col))
        return;
    m_data.cell(row, col).text = text;
    refresh();
}

int LynxGrid::CellImage(int row, int col) const
{
    const GridCellExtra *extra = validCell(row, col) ? m_data.findCellExtra(row, col) : nullptr;
    return extra ? extra->image : -1;
}

void LynxGrid::setCellImage(int row, int col, int image)
{
    if (!validCell(row, col))
        return;
    m_data.cellExtra(row, col).image = image;
    refresh();
}

bool LynxGrid::CellChecked(int row, int col) const
{
    return validCell(row, col) && (m_data.cell(row, col).flags & GridCell::Checked);
}

void LynxGrid::setCellChecked(int row, int col, bool checked)
{
    if (!validCell(row, col))
        return;
    quint8 &flags = m_data.cell(row, col).flags;
    flags = checked ? (flags | GridCell::Checked) : (flags & ~GridCell::Checked);
    refresh();
}

int LynxGrid::CellProgressValue(int row, int col) const
{
    const GridCellExtra *extra = validCell(row, col) ? m_data.findCellExtra(row, col) : nullptr;
    return extra ? extra->progress : -1;
}

void LynxGrid::setCellProgressValue(int row, int col, int value)
{
    if (!validCell(row, col))
        return;
    m_data.cellExtra(row, col).progress = value < 0 ? -1 : qMin(value, 100);
    refresh();
}

Qt::Alignment LynxGrid::CellAlignment(int row, int col) const
{
    if (!validCell(row, col))
        return {};
    return m_data.cellAlignment(row, col);
}

void LynxGrid::setCellAlignment(int row, int col, Qt::Alignment alignment)
{
    if (!validCell(row, col))
        return;
    GridCellExtra &extra = m_data.cellExtra(row, col);
    extra.alignment = alignment;
    extra.set |= GridCellExtra::HasAlignment;
    refresh();
}

QColor LynxGrid::CellBackColor(int row, int col) const
{
    const GridCellExtra *extra = validCell(row, col) ? m_data.findCellExtra(row, col) : nullptr;
    return extra ? extra->back : QColor();
}

void LynxGrid::setCellBackColor(int row, int col, const QColor &color)
{
    if (!validCell(row, col))
        return;
    m_data.cellExtra(row, col).back = color;
    refresh();
}

QColor LynxGrid::CellForeColor(int row, int col) const
{
    const GridCellExtra *extra = validCell(row, col) ? m_data.findCellExtra(row, col) : nullptr;
    return extra ? extra->fore : QColor();
}

void LynxGrid::setCellForeColor(int row, int col, const QColor &color)
{
    if (!validCell(row, col))
        return;
    m_data.cellExtra(row, col).fore = color;
    refresh();
}

QString LynxGrid::CellFontName(int row, int col) const
{
    const GridCellExtra *extra = validCell(row, col) ? m_data.findCellExtra(row, col) : nullptr;
    return extra && !extra->fontName.isEmpty() ? extra->fontName : font().family();
}

void LynxGrid::setCellFontName(int row, int col, const QString &family)
{
    if (!validCell(row, col))
        return;
    m_data.cellExtra(row, col).fontName = family;
    refresh();
}

bool LynxGrid::CellFontBold(int row, int col) const
{
    if (!validCell(row, col))
        return false;
    return m_data.cellFlag(row, col, GridCellExtra::HasBold, GridCellExtra::Bold,
                           ItemFontBold(row) || font().bold());
}

void LynxGrid::setCellFontBold(int row, int col, bool on)
{
    if (!validCell(row, col))
        return;
    m_data.setCellFlag(row, col, GridCellExtra::HasBold, GridCellExtra::Bold, on);
    refresh();
}

bool LynxGrid::CellFontItalic(int row, int col) const
{
    if (!validCell(row, col))
        return false;
    return m_data.cellFlag(row, col, GridCellExtra::HasItalic, GridCellExtra::Italic, font().italic());
}

void LynxGrid::setCellFontItalic(int row, int col, bool on)
{
    if (!validCell(row, col))
        return;
    m_data.setCellFlag(row, col, GridCellExtra::HasItalic, GridCellExtra::Italic, on);
    refresh();
}

bool LynxGrid::CellFontUnderline(int row, int col) const
{
    if (!validCell(row, col))
        return false;
    return m_data.cellFlag(row, col, GridCellExtra::HasUnderline, GridCellExtra::Underline,
                           font().underline());
}

void LynxGrid::setCellFontUnderline(int row, int col, bool on)
{
    if (!validCell(row, col))
        return;
    m_data.setCellFlag(row, col, GridCellExtra::HasUnderline, GridCellExtra::Underline, on);
    refresh();
}

bool LynxGrid::CellWordWrap(int row, int col) const
{
    if (!validCell(row, col))
        return false;
    return m_data.cellWordWrap(row, col);
}

void LynxGrid::setCellWordWrap(int row, int col, bool wrap)
{
    if (!validCell(row, col))
        return;
    m_data.setCellFlag(row, col, GridCellExtra::HasWordWrap, GridCellExtra::WordWrap, wrap);
    refresh();
}

bool LynxGrid::CellChanged(int row, int col) const
{
    return validCell(row, col) && (m_data.cell(row, col).flags & GridCell::Changed);
}

void LynxGrid::setCellChanged(int row, int col, bool changed)
{
    if (!validCell(row, col))
        return;
    quint8 &flags = m_data.cell(row, col).flags;
    flags = changed ? (flags | GridCell::Changed) : (flags & ~GridCell::Changed);
}
