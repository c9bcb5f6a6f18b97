#pragma once

#include <QWidget>

class LynxGrid;

// The row of headings above a LynxGrid: click to sort, drag a heading to move
// its column, drag a heading's right edge to resize it.
class GridHeader : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GridHeader)

public:
    explicit GridHeader(LynxGrid &grid);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    enum class Mode { None, Pressed, Resizing, Dragging };

    // The column whose right edge lies within reach of x; -1 when none.
    int edgeAt(int x) const;
    // The position a dragged column would take when dropped at x.
    int dropPositionAt(int x) const;

    LynxGrid &m_grid;
    Mode m_mode = Mode::None;
    int m_col = -1;      // the heading pressed, resized or dragged
    int m_pressX = 0;
    int m_startWidth = 0;
    int m_hot = -1;
    int m_drop = -1;
};
