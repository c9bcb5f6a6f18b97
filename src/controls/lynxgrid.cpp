#include "controls/lynxgrid.h"

#include "controls/grideditbox.h"
#include "controls/gridheader.h"
#include "controls/lynxgridaccessible.h"
#include "skin/skinparam.h"

#include <QAccessible>
#include <QComboBox>
#include <QScrollBar>

#include <cstring>
#include <type_traits>

LynxGrid::LynxGrid(QWidget *parent)
    : QAbstractScrollArea(parent), m_header(new GridHeader(*this)), m_editBox(new GridEditBox(*this, viewport()))
{
    // Every grid is a table to screen readers, whoever hosts it.
    static const bool accessible = [] {
        QAccessible::installFactory(&LynxGridAccessible::Factory);
        return true;
    }();
    Q_UNUSED(accessible);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setAutoFillBackground(false);
    verticalScrollBar()->setSingleStep(1);
    horizontalScrollBar()->setSingleStep(20);
    SetThemeColors(cSkinParam::PaleBlueColors());
    SetBorderStyle(GridBorder::Single);
    SetAutoSizeRow(true);
}

LynxGrid::~LynxGrid() = default;

// ---- Structure ----

int LynxGrid::AddColumn(const QString &heading, int width, Qt::Alignment alignment, GridColumnType type,
                        const QString &format, const QString &inputFilter)
{
    GridColumn column;
    column.heading = heading;
    column.width = qMax(0, width);
    column.alignment = alignment;
    column.type = type;
    column.format = format;
    column.inputFilter = inputFilter;
    const int index = m_data.addColumn(std::move(column));
    if (m_col < 0 && m_row >= 0)
        m_col = 0;
    rearranged();
    layoutChanged();
    return index;
}

int LynxGrid::AddItem(const QString &text, int row)
{
    // Room grows geometrically, by at least CacheIncrement items at a time.
    const int count = m_data.itemCount();
    if (count == m_data.capacity())
        m_data.reserve(qMax(count * 2, count + qMax(1, m_cacheIncrement)));
    const bool inserted = m_data.validRow(row);
    if (inserted && m_editing && m_editRow >= row)
        CancelEdit();
    row = m_data.insertItem(row);
    if (inserted) {
        if (m_row >= row)
            ++m_row;
        if (m_anchor >= row)
            ++m_anchor;
    }
    if (!text.isEmpty()) {
        const QStringList parts = text.split(u'\t');
        for (int col = 0; col < parts.size() && col < Cols(); ++col)
            m_data.cell(row, col).text = parts.at(col);
    }
    rearranged();
    emit ItemCountChanged();
    layoutChanged();
    return row;
}

void LynxGrid::RemoveItem(int row)
{
    if (!m_data.validRow(row))
        return;
    if (m_editing && m_editRow >= row)
        CancelEdit();
    m_data.removeItem(row);
    rearranged();
    const int last = m_data.itemCount() - 1;
    const int oldRow = m_row;
    if (m_row > row || m_row > last)
        --m_row;
    if (m_anchor > row || m_anchor > last)
        --m_anchor;
    emit ItemCountChanged();
    if (m_row != oldRow || oldRow == row)
        emit RowColChanged();
    layoutChanged();
}

void LynxGrid::Clear()
{
    CancelEdit();
    m_data.clear();
    rearranged();
    const bool hadRow = m_row >= 0;
    m_row = -1;
    m_anchor = -1;
    // New items come in their own order: no heading may claim a sort they never had.
    m_sortIndex = -1;
    m_sortOrder = GridSortOrder::Ascending;
    verticalScrollBar()->setValue(0);
    emit ItemCountChanged();
    if (hadRow)
        emit RowColChanged();
    layoutChanged();
}

QString LynxGrid::FormatString() const
{
    QStringList parts;
    for (int col = 0; col < Cols(); ++col) {
        const GridColumn &c = m_data.column(col);
        QChar lead = u'<';
        if (c.alignment & Qt::AlignHCenter)
            lead = u'^';
        else if (c.alignment & Qt::AlignRight)
            lead = u'>';
        parts << (lead + c.heading);
    }
    return parts.join(u'|');
}

void LynxGrid::SetFormatString(const QString &format)
{
    const QStringList parts = format.split(u'|');
    for (int i = 0; i < parts.size(); ++i) {
        QString heading = parts.at(i);
        Qt::Alignment alignment = Qt::AlignLeft;
        if (heading.startsWith(u'^'))
            alignment = Qt::AlignHCenter;
        else if (heading.startsWith(u'>'))
            alignment = Qt::AlignRight;
        if (heading.startsWith(u'<') || heading.startsWith(u'^') || heading.startsWith(u'>'))
            heading.remove(0, 1);
        if (i < Cols()) {
            m_data.column(i).heading = heading;
            m_data.column(i).alignment = alignment;
        } else {
            AddColumn(heading, 80, alignment);
        }
    }
    layoutChanged();
}

void LynxGrid::SetFormatCells(bool on)
{
    m_formatCells = on;
    refresh();
}

void LynxGrid::BindControl(int col, QWidget *control)
{
    if (!m_data.validPosition(col))
        return;
    GridColumn &column = m_data.column(col);
    if (column.boundControl == control)
        return;
    if (m_editing && m_editCol == col)
        CancelEdit();
    if (QWidget *old = column.boundControl) {
        old->removeEventFilter(this);
        disconnect(old, nullptr, this, nullptr);
    }
    column.boundControl = control;
    if (!control)
        return;
    control->setParent(viewport());
    control->hide();
    control->installEventFilter(this);
    if (auto *combo = qobject_cast<QComboBox *>(control)) {
        // Picking an entry ends the edit as an update.
        connect(combo, &QComboBox::activated, this, [this, combo] {
            if (m_editing && m_editControl == combo)
                CommitEdit();
        });
    }
}

void LynxGrid::SetCacheIncrement(int items)
{
    m_cacheIncrement = qMax(0, items);
}

// ---- Columns ----

QString LynxGrid::ColHeading(int col) const
{
    return m_data.validPosition(col) ? m_data.column(col).heading : QString();
}

void LynxGrid::SetColHeading(int col, const QString &heading)
{
    if (!m_data.validPosition(col))
        return;
    m_data.column(col).heading = heading;
    refresh();
}

int LynxGrid::ColWidth(int col) const
{
    return m_data.validPosition(col) ? m_data.column(col).width : 0;
}

void LynxGrid::SetColWidth(int col, int width)
{
    if (!m_data.validPosition(col))
        return;
    m_data.column(col).width = qMax(0, width);
    layoutChanged();
}

Qt::Alignment LynxGrid::ColAlignment(int col) const
{
    return m_data.validPosition(col) ? m_data.column(col).alignment : Qt::Alignment();
}

void LynxGrid::SetColAlignment(int col, Qt::Alignment alignment)
{
    if (!m_data.validPosition(col))
        return;
    m_data.column(col).alignment = alignment;
    refresh();
}

Qt::Alignment LynxGrid::ColImageAlignment(int col) const
{
    return m_data.validPosition(col) ? m_data.column(col).imageAlignment : Qt::Alignment();
}

void LynxGrid::SetColImageAlignment(int col, Qt::Alignment alignment)
{
    if (!m_data.validPosition(col))
        return;
    m_data.column(col).imageAlignment = alignment;
    refresh();
}

QString LynxGrid::ColFormat(int col) const
{
    return m_data.validPosition(col) ? m_data.column(col).format : QString();
}

void LynxGrid::SetColFormat(int col, const QString &format)
{
    if (!m_data.validPosition(col))
        return;
    m_data.column(col).format = format;
    refresh();
}

GridColumnType LynxGrid::ColType(int col) const
{
    return m_data.validPosition(col) ? m_data.column(col).type : GridColumnType::Text;
}

void LynxGrid::SetColType(int col, GridColumnType type)
{
    if (!m_data.validPosition(col))
        return;
    m_data.column(col).type = type;
    refresh();
}

QString LynxGrid::ColInputFilter(int col) const
{
    return m_data.validPosition(col) ? m_data.column(col).inputFilter : QString();
}

void LynxGrid::SetColInputFilter(int col, const QString &filter)
{
    if (m_data.validPosition(col))
        m_data.column(col).inputFilter = filter;
}

bool LynxGrid::ColWordWrap(int col) const
{
    return m_data.validPosition(col) && m_data.column(col).wordWrap;
}

void LynxGrid::SetColWordWrap(int col, bool wrap)
{
    if (!m_data.validPosition(col))
        return;
    m_data.column(col).wordWrap = wrap;
    refresh();
}

bool LynxGrid::ColVisible(int col) const
{
    return m_data.validPosition(col) && m_data.column(col).visible;
}

void LynxGrid::SetColVisible(int col, bool visible)
{
    if (!m_data.validPosition(col))
        return;
    if (!visible && m_editing && m_editCol == col)
        CancelEdit();
    m_data.column(col).visible = visible;
    layoutChanged();
}

QString LynxGrid::ColTag(int col) const
{
    return m_data.validPosition(col) ? m_data.column(col).tag : QString();
}

void LynxGrid::SetColTag(int col, const QString &tag)
{
    if (m_data.validPosition(col))
        m_data.column(col).tag = tag;
}

int LynxGrid::ColImage(int col) const
{
    return m_data.validPosition(col) ? m_data.column(col).image : -1;
}

void LynxGrid::SetColImage(int col, int image)
{
    if (!m_data.validPosition(col))
        return;
    m_data.column(col).image = image;
    refresh();
}

int LynxGrid::ColPosition(int index) const
{
    return m_data.positionOf(index);
}

void LynxGrid::SetColPosition(int index, int position)
{
    if (m_data.positionOf(index) < 0 || !m_data.validPosition(position))
        return;
    CancelEdit();
    // The current cell stays on its column wherever that column goes.
    const int currentIndex = m_data.validPosition(m_col) ? m_data.indexAt(m_col) : -1;
    m_data.moveColumn(index, position);
    rearranged();
    if (currentIndex >= 0)
        m_col = m_data.positionOf(currentIndex);
    layoutChanged();
}

int LynxGrid::ColLeft(int col) const
{
    int x = 0;
    for (int c = 0; c < col && c < Cols(); ++c) {
        if (m_data.column(c).visible)
            x += m_data.column(c).width;
    }
    return x;
}

// ---- Items ----

bool LynxGrid::ItemChecked(int row) const
{
    return m_data.validRow(row) && (m_data.item(row).flags & GridItem::Checked);
}

void LynxGrid::SetItemChecked(int row, bool checked)
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

void LynxGrid::SetItemSelected(int row, bool selected)
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

void LynxGrid::SetItemVisible(int row, bool visible)
{
    if (!m_data.validRow(row))
        return;
    if (!visible && m_editing && m_editRow == row)
        CancelEdit();
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

void LynxGrid::SetItemImage(int row, int image)
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

void LynxGrid::SetItemBackColor(int row, const QColor &color)
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

void LynxGrid::SetItemForeColor(int row, const QColor &color)
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

void LynxGrid::SetItemFontBold(int row, bool bold)
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

void LynxGrid::SetItemData(int row, qint32 data)
{
    if (m_data.validRow(row))
        m_data.item(row).data = data;
}

QString LynxGrid::ItemTag(int row) const
{
    const GridItemExtra *extra = m_data.validRow(row) ? m_data.findItemExtra(row) : nullptr;
    return extra ? extra->tag : QString();
}

void LynxGrid::SetItemTag(int row, const QString &tag)
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

void LynxGrid::SetCellText(int row, int col, const QString &text)
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

void LynxGrid::SetCellImage(int row, int col, int image)
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

void LynxGrid::SetCellChecked(int row, int col, bool checked)
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

void LynxGrid::SetCellProgressValue(int row, int col, int value)
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
    const GridCellExtra *extra = m_data.findCellExtra(row, col);
    return extra && (extra->set & GridCellExtra::HasAlignment) ? extra->alignment : m_data.column(col).alignment;
}

void LynxGrid::SetCellAlignment(int row, int col, Qt::Alignment alignment)
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

void LynxGrid::SetCellBackColor(int row, int col, const QColor &color)
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

void LynxGrid::SetCellForeColor(int row, int col, const QColor &color)
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

void LynxGrid::SetCellFontName(int row, int col, const QString &family)
{
    if (!validCell(row, col))
        return;
    m_data.cellExtra(row, col).fontName = family;
    refresh();
}

namespace {

// A cell's own font flag when it has one, otherwise the fallback.
bool cellFlag(const GridCellExtra *extra, quint16 has, quint16 flag, bool fallback)
{
    return extra && (extra->set & has) ? bool(extra->set & flag) : fallback;
}

void setCellFlag(GridCellExtra &extra, quint16 has, quint16 flag, bool on)
{
    extra.set |= has;
    extra.set = on ? (extra.set | flag) : (extra.set & ~flag);
}

} // namespace

bool LynxGrid::CellFontBold(int row, int col) const
{
    if (!validCell(row, col))
        return false;
    return cellFlag(m_data.findCellExtra(row, col), GridCellExtra::HasBold, GridCellExtra::Bold,
                    ItemFontBold(row) || font().bold());
}

void LynxGrid::SetCellFontBold(int row, int col, bool on)
{
    if (!validCell(row, col))
        return;
    setCellFlag(m_data.cellExtra(row, col), GridCellExtra::HasBold, GridCellExtra::Bold, on);
    refresh();
}

bool LynxGrid::CellFontItalic(int row, int col) const
{
    if (!validCell(row, col))
        return false;
    return cellFlag(m_data.findCellExtra(row, col), GridCellExtra::HasItalic, GridCellExtra::Italic, font().italic());
}

void LynxGrid::SetCellFontItalic(int row, int col, bool on)
{
    if (!validCell(row, col))
        return;
    setCellFlag(m_data.cellExtra(row, col), GridCellExtra::HasItalic, GridCellExtra::Italic, on);
    refresh();
}

bool LynxGrid::CellFontUnderline(int row, int col) const
{
    if (!validCell(row, col))
        return false;
    return cellFlag(m_data.findCellExtra(row, col), GridCellExtra::HasUnderline, GridCellExtra::Underline,
                    font().underline());
}

void LynxGrid::SetCellFontUnderline(int row, int col, bool on)
{
    if (!validCell(row, col))
        return;
    setCellFlag(m_data.cellExtra(row, col), GridCellExtra::HasUnderline, GridCellExtra::Underline, on);
    refresh();
}

bool LynxGrid::CellWordWrap(int row, int col) const
{
    if (!validCell(row, col))
        return false;
    return cellFlag(m_data.findCellExtra(row, col), GridCellExtra::HasWordWrap, GridCellExtra::WordWrap,
                    m_data.column(col).wordWrap);
}

void LynxGrid::SetCellWordWrap(int row, int col, bool wrap)
{
    if (!validCell(row, col))
        return;
    setCellFlag(m_data.cellExtra(row, col), GridCellExtra::HasWordWrap, GridCellExtra::WordWrap, wrap);
    refresh();
}

bool LynxGrid::CellChanged(int row, int col) const
{
    return validCell(row, col) && (m_data.cell(row, col).flags & GridCell::Changed);
}

void LynxGrid::SetCellChanged(int row, int col, bool changed)
{
    if (!validCell(row, col))
        return;
    quint8 &flags = m_data.cell(row, col).flags;
    flags = changed ? (flags | GridCell::Changed) : (flags & ~GridCell::Changed);
}

// ---- Position ----

void LynxGrid::SetRow(int row)
{
    if (!m_data.validRow(row))
        return;
    GotoCell(row, m_data.validPosition(m_col) ? m_col : firstVisibleCol());
}

void LynxGrid::SetCol(int col)
{
    if (!m_data.validPosition(col))
        return;
    setCurrent(m_row, col);
    if (m_row >= 0)
        ensureVisible(m_row, col);
}

int LynxGrid::TopRow() const
{
    return m_data.rowAtDisplay(topDisplay());
}

void LynxGrid::SetTopRow(int row)
{
    const int display = m_data.displayOf(row);
    if (display < 0)
        return;
    updateScrollBars();
    verticalScrollBar()->setValue(display);
}

int LynxGrid::RowTop(int row) const
{
    const int display = m_data.displayOf(row);
    return display < 0 ? -1 : (display - topDisplay()) * m_rowHeight;
}

void LynxGrid::GotoCell(int row, int col)
{
    if (!validCell(row, col))
        return;
    setCurrent(row, col);
    selectOnly(row);
    m_anchor = row;
    ensureVisible(row, col);
}

int LynxGrid::FindItem(const QString &text, int col, int startRow, bool partial) const
{
    if (col < 0)
        col = m_searchColumn;
    if (!m_data.validPosition(col))
        return -1;
    for (int row = qMax(0, startRow); row < ItemCount(); ++row) {
        const QString &cell = m_data.cell(row, col).text;
        if (partial ? cell.startsWith(text, Qt::CaseInsensitive) : cell.compare(text, Qt::CaseInsensitive) == 0)
            return row;
    }
    return -1;
}

// ---- Sorting ----

int LynxGrid::SortColumn() const
{
    return m_sortIndex < 0 ? -1 : m_data.positionOf(m_sortIndex);
}

// ---- Editing ----

void LynxGrid::SetBackColorEdit(const QColor &color)
{
    m_look.backEdit = color;
    QPalette palette = m_editBox->palette();
    palette.setColor(QPalette::Base, color);
    m_editBox->setPalette(palette);
}

void LynxGrid::SetForeColorEdit(const QColor &color)
{
    m_look.foreEdit = color;
    QPalette palette = m_editBox->palette();
    palette.setColor(QPalette::Text, color);
    m_editBox->setPalette(palette);
}

void LynxGrid::SetCheckBoxes(bool on)
{
    m_checkBoxes = on;
    refresh();
}

// ---- Sizes ----

void LynxGrid::SetRowHeight(int height)
{
    m_autoSizeRow = false;
    m_rowHeight = qMax(1, height);
    layoutChanged();
}

void LynxGrid::SetRowHeightMin(int height)
{
    m_rowHeightMin = qMax(0, height);
    SetAutoSizeRow(m_autoSizeRow);
}

void LynxGrid::SetRowHeightMax(int height)
{
    m_rowHeightMax = qMax(0, height);
    SetAutoSizeRow(m_autoSizeRow);
}

void LynxGrid::SetAutoSizeRow(bool on)
{
    m_autoSizeRow = on;
    if (on) {
        int height = fontMetrics().height() + 8;
        if (m_rowHeightMin > 0)
            height = qMax(height, m_rowHeightMin);
        if (m_rowHeightMax > 0)
            height = qMin(height, m_rowHeightMax);
        m_rowHeight = qMax(1, height);
    }
    layoutChanged();
}

void LynxGrid::SetGridLineWidth(int width)
{
    m_gridLineWidth = qMax(0, width);
    refresh();
}

// ---- Look ----

void LynxGrid::setLook(QColor &field, const QColor &value)
{
    field = value;
    refresh();
}

void LynxGrid::SetBackColor(const QColor &color) { setLook(m_look.back, color); }
void LynxGrid::SetBackColorAlt(const QColor &color) { setLook(m_look.backAlt, color); }
void LynxGrid::SetBackColorBkg(const QColor &color) { setLook(m_look.backBkg, color); }
void LynxGrid::SetBackColorFixed(const QColor &color) { setLook(m_look.backFixed, color); }
void LynxGrid::SetBackColorSel(const QColor &color) { setLook(m_look.backSel, color); }
void LynxGrid::SetForeColor(const QColor &color) { setLook(m_look.fore, color); }
void LynxGrid::SetForeColorFixed(const QColor &color) { setLook(m_look.foreFixed, color); }
void LynxGrid::SetForeColorSel(const QColor &color) { setLook(m_look.foreSel, color); }
void LynxGrid::SetForeColorHdr(const QColor &color) { setLook(m_look.foreHdr, color); }
void LynxGrid::SetGridColor(const QColor &color) { setLook(m_look.grid, color); }
void LynxGrid::SetProgressBarColor(const QColor &color) { setLook(m_look.progress, color); }
void LynxGrid::SetFocusRectColor(const QColor &color) { setLook(m_look.focusRect, color); }

void LynxGrid::SetGridLines(GridLineMode mode)
{
    m_gridLines = mode;
    refresh();
}

void LynxGrid::SetFocusRectMode(GridFocusMode mode)
{
    m_focusMode = mode;
    refresh();
}

void LynxGrid::SetFocusRectStyle(GridFocusStyle style)
{
    m_focusStyle = style;
    refresh();
}

void LynxGrid::SetAlphaBlendSelection(bool on)
{
    m_alphaBlend = on;
    refresh();
}

void LynxGrid::SetApplySelectionToImages(bool on)
{
    m_selectImages = on;
    refresh();
}

void LynxGrid::SetHotHeaderTracking(bool on)
{
    m_hotHeader = on;
    refresh();
}

void LynxGrid::SetDisplayEllipsis(bool on)
{
    m_ellipsis = on;
    refresh();
}

void LynxGrid::SetHideSelection(bool on)
{
    m_hideSelection = on;
    refresh();
}

void LynxGrid::SetFullRowSelect(bool on)
{
    m_fullRowSelect = on;
    refresh();
}

void LynxGrid::SetMultiSelect(bool on)
{
    m_multiSelect = on;
    if (!on && m_row >= 0 && SelectedCount() > 1)
        selectOnly(m_row);
}

void LynxGrid::SetBorderStyle(GridBorder border)
{
    m_border = border;
    setFrameShape(border == GridBorder::None ? QFrame::NoFrame : QFrame::StyledPanel);
}

void LynxGrid::SetFont(const QFont &font)
{
    setFont(font);
}

void LynxGrid::SetImageList(const QList<QIcon> &images)
{
    m_images = images;
    refresh();
}

namespace {

// Which of the program's themes a set of colours is; -1 for colours of no theme.
int themeIndexOf(const ThemeColors &colors)
{
    static_assert(std::has_unique_object_representations_v<ThemeColors>, "compared byte by byte");
    const auto same = [&colors](const ThemeColors &theme) {
        return std::memcmp(&colors, &theme, sizeof colors) == 0;
    };
    if (same(cSkinParam::PaleBlueColors()))
        return cSkinParam::PaleBlue;
    if (same(cSkinParam::BlackNightColors()))
        return cSkinParam::BlackNight;
    return -1;
}

} // namespace

void LynxGrid::SetThemeColor(int themeIndex)
{
    if (themeIndex == cSkinParam::PaleBlue)
        SetThemeColors(cSkinParam::PaleBlueColors());
    else if (themeIndex == cSkinParam::BlackNight)
        SetThemeColors(cSkinParam::BlackNightColors());
    else
        m_themeIndex = themeIndex;
}

void LynxGrid::SetThemeColors(const ThemeColors &colors)
{
    m_themeIndex = themeIndexOf(colors);
    const auto color = [](quint32 argb) { return QColor::fromRgba(argb); };
    m_look.back = color(colors.Back);
    m_look.backAlt = color(colors.BackAlt);
    m_look.backBkg = color(colors.BackBkg);
    m_look.backFixed = color(colors.BackFixed);
    m_look.backSel = color(colors.BackSel);
    m_look.fore = color(colors.Fore);
    m_look.foreFixed = color(colors.ForeFixed);
    m_look.foreSel = color(colors.ForeSel);
    m_look.foreHdr = color(colors.ForeHdr);
    m_look.grid = color(colors.Grid);
    m_look.progress = color(colors.ProgressBar);
    m_look.focusRect = color(colors.FocusRect);
    SetBackColorEdit(color(colors.BackEdit));
    SetForeColorEdit(color(colors.ForeEdit));
    refresh();
    emit ThemeChanged();
}

void LynxGrid::SetThemeStyle(GridThemeStyle style)
{
    m_themeStyle = style;
    refresh();
}

// ---- Behaviour ----

bool LynxGrid::ScrollTrack() const
{
    return verticalScrollBar()->hasTracking();
}

void LynxGrid::SetScrollTrack(bool on)
{
    verticalScrollBar()->setTracking(on);
    horizontalScrollBar()->setTracking(on);
}

void LynxGrid::SetRedraw(bool on)
{
    m_redraw = on;
    if (on) {
        // What changed while drawing was off reaches screen readers at once.
        rearranged();
        RefreshView();
    }
}

void LynxGrid::rearranged()
{
    ++m_arrangement;
    if (m_redraw && QAccessible::isActive()) {
        QAccessibleTableModelChangeEvent event(this, QAccessibleTableModelChangeEvent::ModelReset);
        QAccessible::updateAccessibility(&event);
    }
}

void LynxGrid::announceCurrent()
{
    if (!hasFocus() || !QAccessible::isActive())
        return;
    QAccessibleEvent event(this, QAccessible::Focus);
    if (m_data.validRow(m_row) && m_data.validPosition(m_col))
        event.setChild(LynxGridAccessible::ChildIndex(*this, m_row, m_col));
    QAccessible::updateAccessibility(&event);
}

void LynxGrid::RefreshView()
{
    const bool was = m_redraw;
    m_redraw = true;
    layoutChanged();
    m_redraw = was;
}
