#include "controls/gridheader.h"

#include "controls/gridpainter.h"
#include "controls/lynxgrid.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>

namespace {

constexpr int resizeGrip = 4;
constexpr int minColumnWidth = 8;

} // namespace

GridHeader::GridHeader(LynxGrid &grid) : QWidget(&grid), m_grid(grid)
{
    setMouseTracking(true);
}

void GridHeader::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    GridPainter(m_grid).paintHeader(p, width(), m_hot, m_mode == Mode::Dragging ? m_drop : -1);
}

int GridHeader::edgeAt(int x) const
{
    if (!m_grid.AllowUserResizing())
        return -1;
    int found = -1;
    for (int col = 0; col < m_grid.Cols(); ++col) {
        if (!m_grid.ColVisible(col))
            continue;
        const int right = m_grid.ColLeft(col) + m_grid.ColWidth(col) - m_grid.xOffset();
        // The last edge within reach wins, so that a narrow column can still be widened.
        if (qAbs(x - right) <= resizeGrip)
            found = col;
    }
    return found;
}

int GridHeader::dropPositionAt(int x) const
{
    for (int col = 0; col < m_grid.Cols(); ++col) {
        if (!m_grid.ColVisible(col))
            continue;
        const int left = m_grid.ColLeft(col) - m_grid.xOffset();
        if (x < left + m_grid.ColWidth(col) / 2)
            return col;
    }
    return m_grid.Cols();
}

void GridHeader::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_grid.commitEdit();
    const int x = event->position().toPoint().x();
    m_pressX = x;
    const int edge = edgeAt(x);
    if (edge >= 0) {
        m_mode = Mode::Resizing;
        m_col = edge;
        m_startWidth = m_grid.ColWidth(edge);
        return;
    }
    m_col = m_grid.colAtX(x);
    m_mode = m_col >= 0 ? Mode::Pressed : Mode::None;
}

void GridHeader::mouseMoveEvent(QMouseEvent *event)
{
    const int x = event->position().toPoint().x();
    switch (m_mode) {
    case Mode::Resizing:
        m_grid.setColWidth(m_col, qMax(minColumnWidth, m_startWidth + x - m_pressX));
        return;
    case Mode::Pressed:
        if (!m_grid.ColumnDrag() || qAbs(x - m_pressX) < QApplication::startDragDistance())
            return;
        m_mode = Mode::Dragging;
        setCursor(Qt::ClosedHandCursor);
        [[fallthrough]];
    case Mode::Dragging:
        m_drop = dropPositionAt(x);
        update();
        return;
    case Mode::None:
        break;
    }
    setCursor(edgeAt(x) >= 0 ? Qt::SplitHCursor : Qt::ArrowCursor);
    const int hot = m_grid.colAtX(x);
    if (hot != m_hot) {
        m_hot = hot;
        update();
    }
}

void GridHeader::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const Mode mode = m_mode;
    m_mode = Mode::None;
    unsetCursor();
    switch (mode) {
    case Mode::Resizing:
        emit m_grid.ColumnSizeChanged();
        break;
    case Mode::Pressed:
        m_grid.clickHeading(m_col);
        break;
    case Mode::Dragging: {
        // Dropping before a column right of the dragged one lands one place left of it.
        const int target = m_drop > m_col ? m_drop - 1 : m_drop;
        if (target != m_col && target >= 0) {
            m_grid.setColPosition(m_grid.m_data.indexAt(m_col), target);
            emit m_grid.columnMoved(target);
        }
        break;
    }
    case Mode::None:
        break;
    }
    m_drop = -1;
    update();
}

void GridHeader::leaveEvent(QEvent *)
{
    if (m_mode == Mode::None && m_hot >= 0) {
        m_hot = -1;
        update();
    }
}
