#pragma once

#include <QString>

class LynxGrid;
class QColor;
class QPainter;
class QRect;

// Draws a LynxGrid's rows and its header from the grid's content and look.
class GridPainter
{
public:
    // Room between a cell's edge and its content.
    static constexpr int cellPadding = 4;

    explicit GridPainter(const LynxGrid &grid) : m_grid(grid) {}

    // Draws the rows that cross clip; returns how many.
    int paintRows(QPainter &p, const QRect &clip) const;
    // dropCol is the place a dragged heading would go; -1 for none.
    void paintHeader(QPainter &p, int width, int hotCol, int dropCol) const;
    // The cell's text through its column's format when the grid formats cells.
    QString displayText(int row, int col) const;

private:
    void paintRow(QPainter &p, int row, int display, int y, const QRect &clip) const;
    void paintCell(QPainter &p, int row, int col, const QRect &rect, bool selected) const;
    void paintFocus(QPainter &p, const QRect &rect, const QColor &color, int width) const;
    void paintCheck(QPainter &p, const QRect &box, bool checked, const QColor &color) const;

    const LynxGrid &m_grid;
};
