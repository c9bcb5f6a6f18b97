// LynxGrid: geometry, mouse and keyboard, selection and sorting.
#include "controls/lynxgrid.h"

#include "controls/grideditor.h"
#include "controls/gridheader.h"
#include "controls/gridpainter.h"
#include "controls/gridsorter.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

namespace {

int shiftState(Qt::KeyboardModifiers mods)
{
    return (mods & Qt::ShiftModifier ? 1 : 0) | (mods & Qt::ControlModifier ? 2 : 0) |
           (mods & Qt::AltModifier ? 4 : 0);
}

} // namespace

// ---- Geometry ----

int LynxGrid::headerHeight() const
{
    return fontMetrics().height() + 10;
}

int LynxGrid::pageRows() const
{
    return qMax(1, viewport()->height() / m_rowHeight);
}

int LynxGrid::contentWidth() const
{
    return ColLeft(Cols());
}

int LynxGrid::xOffset() const
{
    return horizontalScrollBar()->value();
}

int LynxGrid::topDisplay() const
{
    return verticalScrollBar()->value();
}

int LynxGrid::colAtX(int x) const
{
    int left = -xOffset();
    for (int col = 0; col < Cols(); ++col) {
        const GridColumn &c = m_data.column(col);
        if (!c.visible)
            continue;
        if (x >= left && x < left + c.width)
            return col;
        left += c.width;
    }
    return -1;
}

int LynxGrid::rowAtY(int y) const
{
    if (y < 0)
        return -1;
    return m_data.rowAtDisplay(topDisplay() + y / m_rowHeight);
}

QRect LynxGrid::cellRect(int row, int col) const
{
    const int top = RowTop(row);
    if (top < 0 && m_data.displayOf(row) < 0)
        return {};
    return {ColLeft(col) - xOffset(), top, ColVisible(col) ? ColWidth(col) : 0, m_rowHeight};
}

QRect LynxGrid::checkRect(const QRect &cell, Qt::Alignment alignment) const
{
    const int size = qBound(8, m_rowHeight - 8, 15);
    int x = cell.left() + GridPainter::cellPadding;
    if (alignment & Qt::AlignHCenter)
        x = cell.left() + (cell.width() - size) / 2;
    else if (alignment & Qt::AlignRight)
        x = cell.right() - GridPainter::cellPadding - size;
    return {x, cell.top() + (cell.height() - size) / 2, size, size};
}

QRect LynxGrid::itemCheckRect(int row) const
{
    return checkRect(cellRect(row, firstVisibleCol()), Qt::AlignLeft);
}

int LynxGrid::firstVisibleCol() const
{
    return nextVisibleCol(-1, 1);
}

int LynxGrid::nextVisibleCol(int col, int step) const
{
    for (int c = col + step; c >= 0 && c < Cols(); c += step) {
        if (m_data.column(c).visible)
            return c;
    }
    return col;
}

void LynxGrid::placeHeader()
{
    const int height = headerHeight();
    setViewportMargins(0, height, 0, 0);
    const QRect view = viewport()->geometry();
    m_header->setGeometry(view.left(), view.top() - height, view.width(), height);
}

void LynxGrid::updateScrollBars()
{
    const int pages = pageRows();
    verticalScrollBar()->setPageStep(pages);
    verticalScrollBar()->setRange(0, qMax(0, m_data.displayCount() - pages));
    horizontalScrollBar()->setPageStep(viewport()->width());
    horizontalScrollBar()->setRange(0, qMax(0, contentWidth() - viewport()->width()));
}

void LynxGrid::layoutChanged()
{
    if (!m_redraw)
        return;
    placeHeader();
    updateScrollBars();
    m_editor->place();
    refresh();
}

void LynxGrid::refresh()
{
    if (!m_redraw)
        return;
    viewport()->update();
    m_header->update();
}

void LynxGrid::ensureVisible(int row, int col)
{
    const int display = m_data.displayOf(row);
    if (display < 0)
        return;
    updateScrollBars();
    const int top = topDisplay();
    const int pages = pageRows();
    if (display < top)
        verticalScrollBar()->setValue(display);
    else if (display >= top + pages)
        verticalScrollBar()->setValue(display - pages + 1);

    if (!ColVisible(col))
        return;
    const int left = ColLeft(col);
    const int right = left + ColWidth(col);
    const int width = viewport()->width();
    if (left < xOffset())
        horizontalScrollBar()->setValue(left);
    else if (right > xOffset() + width)
        horizontalScrollBar()->setValue(qMin(left, right - width));
}

void LynxGrid::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    placeHeader();
    updateScrollBars();
    m_editor->place();
}

void LynxGrid::scrollContentsBy(int, int)
{
    viewport()->update();
    m_header->update();
    m_editor->place();
    emit Scroll();
}

void LynxGrid::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        m_editor->setFont(font());
        m_header->setFont(font());
        setAutoSizeRow(m_autoSizeRow);
    }
}

// ---- Drawing ----

void LynxGrid::paintEvent(QPaintEvent *event)
{
    QPainter p(viewport());
    m_lastPaintedRows = GridPainter(*this).paintRows(p, event->rect());
}

// ---- Current cell and selection ----

void LynxGrid::setCurrent(int row, int col)
{
    if (row == m_row && col == m_col)
        return;
    m_row = row;
    m_col = col;
    refresh();
    announceCurrent();
    emit RowColChanged();
    emit EnterCell(row, col);
}

void LynxGrid::selectOnly(int row)
{
    bool changed = false;
    for (int r = 0; r < ItemCount(); ++r) {
        quint8 &flags = m_data.item(r).flags;
        const bool want = r == row;
        if (bool(flags & GridItem::Selected) != want) {
            flags = want ? (flags | GridItem::Selected) : (flags & ~GridItem::Selected);
            changed = true;
        }
    }
    if (changed) {
        refresh();
        emit SelectionChanged();
    }
}

void LynxGrid::selectRange(int from, int to)
{
    if (from < 0)
        from = to;
    const int low = qMin(from, to);
    const int high = qMax(from, to);
    for (int r = 0; r < ItemCount(); ++r) {
        quint8 &flags = m_data.item(r).flags;
        flags = (r >= low && r <= high) ? (flags | GridItem::Selected) : (flags & ~GridItem::Selected);
    }
    refresh();
    emit SelectionChanged();
}

void LynxGrid::moveCurrent(int display, int col, Qt::KeyboardModifiers mods)
{
    if (m_data.displayCount() == 0)
        return;
    display = qBound(0, display, m_data.displayCount() - 1);
    const int row = m_data.rowAtDisplay(display);
    if (!m_data.validPosition(col))
        col = firstVisibleCol();
    setCurrent(row, col);
    if (m_multiSelect && (mods & Qt::ShiftModifier)) {
        selectRange(m_anchor, row);
    } else if (!(m_multiSelect && (mods & Qt::ControlModifier))) {
        selectOnly(row);
        m_anchor = row;
    }
    ensureVisible(row, col);
}

// ---- Sorting ----

void LynxGrid::Sort(int col, GridSortOrder order)
{
    if (!m_data.validPosition(col))
        return;
    cancelEdit();
    const int index = m_data.indexAt(col);
    const std::vector<int> rows = GridSorter::order(m_data, col, order == GridSortOrder::Descending,
                                                    [this, col](const QString &a, const QString &b) {
                                                        int result = 0;
                                                        emit CustomSort(col, a, b, result);
                                                        return result;
                                                    });
    const std::vector<int> moved = m_data.reorder(rows);
    rearranged();
    if (m_row >= 0)
        m_row = moved[static_cast<std::size_t>(m_row)];
    if (m_anchor >= 0)
        m_anchor = moved[static_cast<std::size_t>(m_anchor)];
    m_sortIndex = index;
    m_sortOrder = order;
    layoutChanged();
    if (m_row >= 0)
        ensureVisible(m_row, m_col);
    emit SortComplete();
}

void LynxGrid::clickHeading(int col)
{
    emit ColumnClick(col);
    if (!m_columnSort)
        return;
    const bool again = m_sortIndex == m_data.indexAt(col) && m_sortOrder == GridSortOrder::Ascending;
    Sort(col, again ? GridSortOrder::Descending : GridSortOrder::Ascending);
}

// ---- Editing ----

bool LynxGrid::EditCell(int row, int col)
{
    return m_editor->start(row, col, QString(), false);
}

bool LynxGrid::commitEdit()
{
    return m_editor->commit();
}

void LynxGrid::cancelEdit()
{
    m_editor->cancel();
}

bool LynxGrid::isEditing() const
{
    return m_editor->isEditing();
}

void LynxGrid::toggleCheck(int row, int col)
{
    quint8 &flags = m_data.cell(row, col).flags;
    flags ^= GridCell::Checked;
    refresh();
    emit CellUpdated(row, col);
}

// ---- Mouse ----

void LynxGrid::mousePressEvent(QMouseEvent *event)
{
    const QPoint pos = event->position().toPoint();
    emit MouseDown(int(event->button()), shiftState(event->modifiers()), pos.x(), pos.y());
    commitEdit();
    setFocus(Qt::MouseFocusReason);
    m_pressButtons = event->buttons();
    m_pressedOnCurrent = false;
    const int row = rowAtY(pos.y());
    const int col = colAtX(pos.x());
    if (row < 0 || col < 0)
        return;

    const QRect cell = cellRect(row, col);
    const int image = CellImage(row, col) >= 0 ? CellImage(row, col) : colImage(col);
    if (image >= 0 && QRect(cell.left(), cell.top(), m_rowHeight, m_rowHeight).contains(pos)) {
        bool cancel = false;
        emit CellImageClick(row, col, pos.x(), pos.y(), cancel);
        if (cancel)
            return;
    }
    const bool wasCurrent = row == m_row && col == m_col;
    if (event->button() == Qt::RightButton && ItemSelected(row)) {
        setCurrent(row, col);
        return;
    }
    const Qt::KeyboardModifiers mods = event->modifiers();
    if (m_multiSelect && (mods & Qt::ControlModifier)) {
        setCurrent(row, col);
        setItemSelected(row, !ItemSelected(row));
        m_anchor = row;
    } else {
        moveCurrent(m_data.displayOf(row), col, mods);
    }
    if (event->button() != Qt::LeftButton)
        return;
    if (m_checkBoxes && col == firstVisibleCol() && itemCheckRect(row).contains(pos))
        setItemChecked(row, !ItemChecked(row));
    else if (ColType(col) == GridColumnType::CheckBox && checkRect(cell, CellAlignment(row, col)).contains(pos))
        EditCell(row, col);
    else
        m_pressedOnCurrent = wasCurrent && mods == Qt::NoModifier;
}

void LynxGrid::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint pos = event->position().toPoint();
    const int row = rowAtY(pos.y());
    const int col = row < 0 ? -1 : colAtX(pos.x());
    emit MouseMove(int(event->buttons()), shiftState(event->modifiers()), pos.x(), pos.y());
    if (row != m_mouseRow || col != m_mouseCol) {
        m_mouseRow = row;
        m_mouseCol = col;
        emit mouseCell(row, col);
    }
    if (m_multiSelect && (event->buttons() & Qt::LeftButton) && row >= 0 && row != m_row && !isEditing()) {
        setCurrent(row, col < 0 ? m_col : col);
        selectRange(m_anchor, row);
        ensureVisible(row, m_col);
    }
}

void LynxGrid::mouseReleaseEvent(QMouseEvent *event)
{
    const QPoint pos = event->position().toPoint();
    emit MouseUp(int(event->button()), shiftState(event->modifiers()), pos.x(), pos.y());
    const int row = rowAtY(pos.y());
    const int col = row < 0 ? -1 : colAtX(pos.x());
    if (row >= 0 && col >= 0) {
        emit cellClick(row, col);
        if (m_pressedOnCurrent && event->button() == Qt::LeftButton && (m_editTrigger & EditClickCurrent) &&
            row == m_row && col == m_col)
            EditCell(row, col);
    }
    m_pressedOnCurrent = false;
    if (m_pressButtons & event->button())
        emit Click();
    m_pressButtons = {};
}

void LynxGrid::mouseDoubleClickEvent(QMouseEvent *event)
{
    const QPoint pos = event->position().toPoint();
    m_pressButtons = event->buttons();
    m_pressedOnCurrent = false;
    emit DblClick();
    const int row = rowAtY(pos.y());
    const int col = row < 0 ? -1 : colAtX(pos.x());
    if (row < 0 || col < 0 || event->button() != Qt::LeftButton)
        return;
    if (ColType(col) == GridColumnType::CheckBox) {
        // The second click of a quick pair toggles like the first did.
        if (checkRect(cellRect(row, col), CellAlignment(row, col)).contains(pos))
            EditCell(row, col);
        return;
    }
    if (m_checkBoxes && col == firstVisibleCol() && itemCheckRect(row).contains(pos)) {
        setItemChecked(row, !ItemChecked(row));
        return;
    }
    if (m_editTrigger & EditDblClick)
        EditCell(row, col);
}

void LynxGrid::leaveEvent(QEvent *event)
{
    QAbstractScrollArea::leaveEvent(event);
    if (m_mouseRow >= 0 || m_mouseCol >= 0) {
        m_mouseRow = -1;
        m_mouseCol = -1;
        emit mouseCell(-1, -1);
    }
}

// ---- Keyboard ----

void LynxGrid::keyPressEvent(QKeyEvent *event)
{
    const Qt::KeyboardModifiers mods = event->modifiers();
    emit KeyDown(event->key(), shiftState(mods));
    const int current = m_data.displayOf(m_row);
    switch (event->key()) {
    case Qt::Key_Up:
        moveCurrent(current < 0 ? 0 : current - 1, m_col, mods);
        return;
    case Qt::Key_Down:
        moveCurrent(current + 1, m_col, mods);
        return;
    case Qt::Key_PageUp:
        moveCurrent(qMax(0, current - pageRows()), m_col, mods);
        return;
    case Qt::Key_PageDown:
        moveCurrent(current + pageRows(), m_col, mods);
        return;
    case Qt::Key_Home:
        moveCurrent(0, m_col, mods);
        return;
    case Qt::Key_End:
        moveCurrent(m_data.displayCount() - 1, m_col, mods);
        return;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (m_row >= 0) {
            const int col = nextVisibleCol(m_col, event->key() == Qt::Key_Left ? -1 : 1);
            setCurrent(m_row, col);
            ensureVisible(m_row, col);
        } else {
            horizontalScrollBar()->triggerAction(event->key() == Qt::Key_Left ? QAbstractSlider::SliderSingleStepSub
                                                                              : QAbstractSlider::SliderSingleStepAdd);
        }
        return;
    case Qt::Key_F2:
        if (m_editTrigger & EditF2)
            EditCell(m_row, m_col);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_editTrigger & EditEnter)
            EditCell(m_row, m_col);
        return;
    case Qt::Key_Space:
        if (m_row >= 0 && ColType(m_col) == GridColumnType::CheckBox) {
            EditCell(m_row, m_col);
            return;
        }
        if (m_row >= 0 && m_checkBoxes) {
            setItemChecked(m_row, !ItemChecked(m_row));
            return;
        }
        break;
    default:
        break;
    }

    const QString text = event->text();
    if (text.size() != 1 || !text.at(0).isPrint() || (mods & (Qt::ControlModifier | Qt::AltModifier))) {
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    qint16 key = static_cast<qint16>(text.at(0).unicode());
    emit KeyPress(key);
    if (key == 0)
        return;
    const QString typed(QChar(static_cast<char16_t>(static_cast<quint16>(key))));
    if ((m_editTrigger & EditAnyKey) && m_row >= 0) {
        m_editor->startTyping(m_row, m_col, key);
    } else if (m_searchColumn >= 0) {
        typeAhead(typed);
    }
}

void LynxGrid::keyReleaseEvent(QKeyEvent *event)
{
    emit KeyUp(event->key(), shiftState(event->modifiers()));
    QAbstractScrollArea::keyReleaseEvent(event);
}

void LynxGrid::typeAhead(const QString &text)
{
    if (!m_typedTimer.isValid() || m_typedTimer.elapsed() > 1000)
        m_typed.clear();
    m_typedTimer.restart();
    m_typed += text;
    // A new word starts below the current row; a growing one may stay on it.
    const int from = m_typed.size() == 1 ? m_row + 1 : qMax(0, m_row);
    int row = FindItem(m_typed, m_searchColumn, from, true);
    if (row < 0)
        row = FindItem(m_typed, m_searchColumn, 0, true);
    if (row >= 0)
        GotoCell(row, m_data.validPosition(m_col) ? m_col : firstVisibleCol());
}

void LynxGrid::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    refresh();
    announceCurrent();
}

void LynxGrid::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    refresh();
}
