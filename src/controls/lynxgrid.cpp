#include "controls/lynxgrid.h"

#include "controls/grideditor.h"
#include "controls/gridheader.h"
#include "controls/lynxgridaccessible.h"
#include "base/themecolors.h"

#include <QAccessible>
#include <QScrollBar>

LynxGrid::LynxGrid(QWidget *parent)
    : QAbstractScrollArea(parent), m_header(new GridHeader(*this)), m_editor(new GridEditor(*this))
{
    // Every grid is a table to screen readers, whoever hosts it.
    static const bool accessible = [] {
        QAccessible::installFactory(&LynxGridAccessible::factory);
        return true;
    }();
    Q_UNUSED(accessible);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setAutoFillBackground(false);
    verticalScrollBar()->setSingleStep(1);
    horizontalScrollBar()->setSingleStep(20);
    setThemeColors(Themes::paleBlue());
    setBorderStyle(GridBorder::Single);
    setAutoSizeRow(true);
}

LynxGrid::~LynxGrid()
{
    // The edit box goes with the children, after the grid's data: an edit still
    // open must not be committed by its losing the focus then.
    m_editor->cancel();
}

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
    if (inserted && isEditing() && m_editor->row() >= row)
        cancelEdit();
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
    if (isEditing() && m_editor->row() >= row)
        cancelEdit();
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
    cancelEdit();
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

void LynxGrid::setFormatString(const QString &format)
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

void LynxGrid::setFormatCells(bool on)
{
    m_formatCells = on;
    refresh();
}

void LynxGrid::BindControl(int col, QWidget *control)
{
    m_editor->bindControl(col, control);
}

void LynxGrid::setCacheIncrement(int items)
{
    m_cacheIncrement = qMax(0, items);
}

// ---- Columns ----

QString LynxGrid::ColHeading(int col) const
{
    return m_data.validPosition(col) ? m_data.column(col).heading : QString();
}

void LynxGrid::setColHeading(int col, const QString &heading)
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

void LynxGrid::setColWidth(int col, int width)
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

void LynxGrid::setColAlignment(int col, Qt::Alignment alignment)
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

void LynxGrid::setColImageAlignment(int col, Qt::Alignment alignment)
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

void LynxGrid::setColFormat(int col, const QString &format)
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

void LynxGrid::setColType(int col, GridColumnType type)
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

void LynxGrid::setColInputFilter(int col, const QString &filter)
{
    if (m_data.validPosition(col))
        m_data.column(col).inputFilter = filter;
}

bool LynxGrid::ColWordWrap(int col) const
{
    return m_data.validPosition(col) && m_data.column(col).wordWrap;
}

void LynxGrid::setColWordWrap(int col, bool wrap)
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

void LynxGrid::setColVisible(int col, bool visible)
{
    if (!m_data.validPosition(col))
        return;
    if (!visible && isEditing() && m_editor->col() == col)
        cancelEdit();
    m_data.column(col).visible = visible;
    layoutChanged();
}

QString LynxGrid::ColTag(int col) const
{
    return m_data.validPosition(col) ? m_data.column(col).tag : QString();
}

void LynxGrid::setColTag(int col, const QString &tag)
{
    if (m_data.validPosition(col))
        m_data.column(col).tag = tag;
}

int LynxGrid::colImage(int col) const
{
    return m_data.validPosition(col) ? m_data.column(col).image : -1;
}

void LynxGrid::setColImage(int col, int image)
{
    if (!m_data.validPosition(col))
        return;
    m_data.column(col).image = image;
    refresh();
}

QString LynxGrid::colImageText(int col) const
{
    return m_data.validPosition(col) ? m_data.column(col).imageText : QString();
}

void LynxGrid::setColImageText(int col, const QString &text)
{
    if (m_data.validPosition(col))
        m_data.column(col).imageText = text;
}

int LynxGrid::ColPosition(int index) const
{
    return m_data.positionOf(index);
}

void LynxGrid::setColPosition(int index, int position)
{
    if (m_data.positionOf(index) < 0 || !m_data.validPosition(position))
        return;
    cancelEdit();
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

// ---- Position ----

void LynxGrid::setRow(int row)
{
    if (!m_data.validRow(row))
        return;
    GotoCell(row, m_data.validPosition(m_col) ? m_col : firstVisibleCol());
}

void LynxGrid::setCol(int col)
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

void LynxGrid::setTopRow(int row)
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

int LynxGrid::sortColumn() const
{
    return m_sortIndex < 0 ? -1 : m_data.positionOf(m_sortIndex);
}

// ---- Editing ----

void LynxGrid::setBackColorEdit(const QColor &color)
{
    m_look.backEdit = color;
    m_editor->setColor(QPalette::Base, color);
}

void LynxGrid::setForeColorEdit(const QColor &color)
{
    m_look.foreEdit = color;
    m_editor->setColor(QPalette::Text, color);
}

void LynxGrid::setCheckBoxes(bool on)
{
    m_checkBoxes = on;
    refresh();
}

// ---- Sizes ----

void LynxGrid::setRowHeight(int height)
{
    m_autoSizeRow = false;
    m_rowHeight = qMax(1, height);
    layoutChanged();
}

void LynxGrid::setRowHeightMin(int height)
{
    m_rowHeightMin = qMax(0, height);
    setAutoSizeRow(m_autoSizeRow);
}

void LynxGrid::setRowHeightMax(int height)
{
    m_rowHeightMax = qMax(0, height);
    setAutoSizeRow(m_autoSizeRow);
}

void LynxGrid::setAutoSizeRow(bool on)
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

void LynxGrid::setGridLineWidth(int width)
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

void LynxGrid::setBackColor(const QColor &color) { setLook(m_look.back, color); }
void LynxGrid::setBackColorAlt(const QColor &color) { setLook(m_look.backAlt, color); }
void LynxGrid::setBackColorBkg(const QColor &color) { setLook(m_look.backBkg, color); }
void LynxGrid::setBackColorFixed(const QColor &color) { setLook(m_look.backFixed, color); }
void LynxGrid::setBackColorSel(const QColor &color) { setLook(m_look.backSel, color); }
void LynxGrid::setForeColor(const QColor &color) { setLook(m_look.fore, color); }
void LynxGrid::setForeColorFixed(const QColor &color) { setLook(m_look.foreFixed, color); }
void LynxGrid::setForeColorSel(const QColor &color) { setLook(m_look.foreSel, color); }
void LynxGrid::setForeColorHdr(const QColor &color) { setLook(m_look.foreHdr, color); }
void LynxGrid::setGridColor(const QColor &color) { setLook(m_look.grid, color); }
void LynxGrid::setProgressBarColor(const QColor &color) { setLook(m_look.progress, color); }
void LynxGrid::setFocusRectColor(const QColor &color) { setLook(m_look.focusRect, color); }

void LynxGrid::setGridLines(GridLineMode mode)
{
    m_gridLines = mode;
    refresh();
}

void LynxGrid::setFocusRectMode(GridFocusMode mode)
{
    m_focusMode = mode;
    refresh();
}

void LynxGrid::setFocusRectStyle(GridFocusStyle style)
{
    m_focusStyle = style;
    refresh();
}

void LynxGrid::setAlphaBlendSelection(bool on)
{
    m_alphaBlend = on;
    refresh();
}

void LynxGrid::setApplySelectionToImages(bool on)
{
    m_selectImages = on;
    refresh();
}

void LynxGrid::setHotHeaderTracking(bool on)
{
    m_hotHeader = on;
    refresh();
}

void LynxGrid::setDisplayEllipsis(bool on)
{
    m_ellipsis = on;
    refresh();
}

void LynxGrid::setHideSelection(bool on)
{
    m_hideSelection = on;
    refresh();
}

void LynxGrid::setFullRowSelect(bool on)
{
    m_fullRowSelect = on;
    refresh();
}

void LynxGrid::setMultiSelect(bool on)
{
    m_multiSelect = on;
    if (!on && m_row >= 0 && SelectedCount() > 1)
        selectOnly(m_row);
}

void LynxGrid::setBorderStyle(GridBorder border)
{
    m_border = border;
    setFrameShape(border == GridBorder::None ? QFrame::NoFrame : QFrame::StyledPanel);
}

void LynxGrid::setImageList(const QList<QIcon> &images)
{
    m_images = images;
    refresh();
}

void LynxGrid::setThemeColor(int themeIndex)
{
    if (themeIndex == Themes::PaleBlue)
        setThemeColors(Themes::paleBlue());
    else if (themeIndex == Themes::BlackNight)
        setThemeColors(Themes::blackNight());
    else
        m_themeIndex = themeIndex;
}

void LynxGrid::setThemeColors(const ThemeColors &colors)
{
    m_themeIndex = GridLook::themeIndexOf(colors);
    m_look.setTheme(colors);
    m_editor->setColor(QPalette::Base, m_look.backEdit);
    m_editor->setColor(QPalette::Text, m_look.foreEdit);
    refresh();
    emit ThemeChanged();
}

void LynxGrid::setThemeStyle(GridThemeStyle style)
{
    m_themeStyle = style;
    refresh();
}

// ---- Behaviour ----

bool LynxGrid::ScrollTrack() const
{
    return verticalScrollBar()->hasTracking();
}

void LynxGrid::setScrollTrack(bool on)
{
    verticalScrollBar()->setTracking(on);
    horizontalScrollBar()->setTracking(on);
}

void LynxGrid::setRedraw(bool on)
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
        event.setChild(LynxGridAccessible::childIndex(*this, m_row, m_col));
    QAccessible::updateAccessibility(&event);
}

void LynxGrid::RefreshView()
{
    const bool was = m_redraw;
    m_redraw = true;
    layoutChanged();
    m_redraw = was;
}
