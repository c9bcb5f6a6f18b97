#include "controls/grideditor.h"

#include "controls/grideditbox.h"
#include "controls/lynxgrid.h"

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>

GridEditor::GridEditor(LynxGrid &grid)
    : QObject(&grid), m_grid(grid), m_editBox(new GridEditBox(*this, grid.viewport()))
{
}

void GridEditor::bindControl(int col, QWidget *control)
{
    if (!m_grid.m_data.validPosition(col))
        return;
    GridColumn &column = m_grid.m_data.column(col);
    if (column.boundControl == control)
        return;
    if (m_editing && m_col == col)
        cancel();
    if (QWidget *old = column.boundControl) {
        old->removeEventFilter(this);
        disconnect(old, nullptr, this, nullptr);
    }
    column.boundControl = control;
    if (!control)
        return;
    control->setParent(m_grid.viewport());
    control->hide();
    control->installEventFilter(this);
    if (auto *combo = qobject_cast<QComboBox *>(control)) {
        // Picking an entry ends the edit as an update.
        connect(combo, &QComboBox::activated, this, [this, combo] {
            if (m_editing && m_control == combo)
                commit();
        });
    }
}

bool GridEditor::start(int row, int col, const QString &initial, bool replace)
{
    if (m_editing)
        commit();
    if (!m_grid.m_editable || !m_grid.validCell(row, col) || !m_grid.ColVisible(col))
        return false;
    bool cancel = false;
    emit m_grid.RequestEdit(row, col, cancel);
    if (cancel || !m_grid.validCell(row, col))
        return false;

    if (m_grid.m_data.column(col).type == GridColumnType::CheckBox) {
        m_grid.toggleCheck(row, col);
        return true;
    }
    m_grid.setCurrent(row, col);
    m_grid.ensureVisible(row, col);
    m_editing = true;
    m_row = row;
    m_col = col;
    QWidget *bound = m_grid.m_data.column(col).boundControl;
    m_control = bound ? bound : m_editBox;
    if (!bound) {
        m_editBox->setText(replace ? initial : m_grid.m_data.cell(row, col).text);
        if (replace)
            m_editBox->end(false);
        else
            m_editBox->selectAll();
    }
    place();
    m_control->show();
    m_control->raise();
    m_control->setFocus(Qt::OtherFocusReason);
    return true;
}

void GridEditor::startTyping(int row, int col, qint16 key)
{
    start(row, col, QString(), true);
    // The first character goes through the column's filter like every other.
    if (m_editing && m_control == m_editBox) {
        const qint16 passed = filterKey(key);
        if (passed != 0 && passed != 8)
            m_editBox->insert(QString(QChar(static_cast<char16_t>(static_cast<quint16>(passed)))));
    }
}

void GridEditor::place()
{
    if (!m_editing || !m_control)
        return;
    QRect rect = m_grid.cellRect(m_row, m_col);
    if (m_control != m_editBox) {
        // A drop-down needs its own height; centre it on the row.
        const int height = qMax(rect.height(), m_control->sizeHint().height());
        rect = QRect(rect.left(), rect.center().y() - height / 2, qMax(rect.width(), 40), height);
    } else {
        rect.adjust(1, 1, -1, -1);
    }
    m_control->setGeometry(rect);
}

void GridEditor::close()
{
    m_editing = false;
    QWidget *control = m_control;
    m_control = nullptr;
    if (!control)
        return;
    const QWidget *focused = QApplication::focusWidget();
    if (focused && (focused == control || control->isAncestorOf(focused)))
        m_grid.setFocus(Qt::OtherFocusReason);
    control->hide();
    m_grid.refresh();
}

bool GridEditor::commit()
{
    if (!m_editing)
        return false;
    const int row = m_row;
    const int col = m_col;
    QString value;
    if (m_control == m_editBox)
        value = m_editBox->text();
    else if (auto *combo = qobject_cast<QComboBox *>(m_control.data()))
        value = combo->currentText();
    else if (m_control)
        value = m_control->property("text").toString();
    close();
    if (!m_grid.validCell(row, col))
        return false;

    bool cancel = false;
    emit m_grid.RequestUpdate(row, col, value, cancel);
    if (cancel || !m_grid.validCell(row, col))
        return false;
    GridCell &cell = m_grid.m_data.cell(row, col);
    if (cell.text != value) {
        cell.text = value;
        if (m_grid.m_trackEdits)
            cell.flags |= GridCell::Changed;
    }
    m_grid.refresh();
    emit m_grid.CellUpdated(row, col);
    return true;
}

void GridEditor::cancel()
{
    if (m_editing)
        close();
}

qint16 GridEditor::filterKey(qint16 key)
{
    const QString filter = m_grid.ColInputFilter(m_col);
    const QChar typed(static_cast<char16_t>(static_cast<quint16>(key)));
    if (filter == u"<")
        key = static_cast<qint16>(typed.toLower().unicode());
    else if (filter == u">")
        key = static_cast<qint16>(typed.toUpper().unicode());
    else if (!filter.isEmpty() && key != 8 && key != 46 && !filter.contains(typed, Qt::CaseInsensitive))
        key = 0;
    emit m_grid.EditKeyPress(m_col, key);
    return key;
}

void GridEditor::setColor(QPalette::ColorRole role, const QColor &color)
{
    QPalette palette = m_editBox->palette();
    palette.setColor(role, color);
    m_editBox->setPalette(palette);
}

void GridEditor::setFont(const QFont &font)
{
    m_editBox->setFont(font);
}

bool GridEditor::eventFilter(QObject *watched, QEvent *event)
{
    if (m_editing && watched == m_control && watched != m_editBox) {
        if (event->type() == QEvent::KeyPress) {
            const int key = static_cast<QKeyEvent *>(event)->key();
            if (key == Qt::Key_Escape) {
                cancel();
                return true;
            }
            if (key == Qt::Key_Return || key == Qt::Key_Enter) {
                commit();
                return true;
            }
        } else if (event->type() == QEvent::FocusOut) {
            const auto reason = static_cast<QFocusEvent *>(event)->reason();
            const QWidget *focused = QApplication::focusWidget();
            const bool inside = focused && (focused == m_control || m_control->isAncestorOf(focused));
            // The drop-down's own list takes the focus while it is open.
            if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason && !inside)
                commit();
        }
    }
    return QObject::eventFilter(watched, event);
}
