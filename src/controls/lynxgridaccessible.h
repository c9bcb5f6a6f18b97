#pragma once

#include <QAccessibleWidget>
#include <QHash>
#include <QPointer>

class LynxGrid;

// LynxGrid as a screen reader sees it: a table whose children are the column
// headings, then the cells row by row. Cell interfaces are made when asked
// for and dropped whenever the grid's rows or columns are rearranged.
class LynxGridAccessible : public QAccessibleWidget, public QAccessibleTableInterface
{
public:
    explicit LynxGridAccessible(LynxGrid *grid);
    ~LynxGridAccessible() override;

    // The interface factory for QAccessible::installFactory.
    static QAccessibleInterface *factory(const QString &className, QObject *object);
    // The child index of a cell; row -1 is the row of headings.
    static int childIndex(const LynxGrid &grid, int row, int col);

    void *interface_cast(QAccessible::InterfaceType type) override;
    int childCount() const override;
    QAccessibleInterface *child(int index) const override;
    int indexOfChild(const QAccessibleInterface *child) const override;
    QAccessibleInterface *childAt(int x, int y) const override;
    QAccessibleInterface *focusChild() const override;

    // QAccessibleTableInterface
    QAccessibleInterface *caption() const override { return nullptr; }
    QAccessibleInterface *summary() const override { return nullptr; }
    QAccessibleInterface *cellAt(int row, int column) const override;
    int selectedCellCount() const override;
    QList<QAccessibleInterface *> selectedCells() const override;
    QString columnDescription(int column) const override;
    QString rowDescription(int) const override { return {}; }
    int selectedColumnCount() const override { return 0; }
    int selectedRowCount() const override;
    int columnCount() const override;
    int rowCount() const override;
    QList<int> selectedColumns() const override { return {}; }
    QList<int> selectedRows() const override;
    bool isColumnSelected(int) const override { return false; }
    bool isRowSelected(int row) const override;
    bool selectRow(int row) override;
    bool selectColumn(int) override { return false; }
    bool unselectRow(int row) override;
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent *event) override;

private:
    LynxGrid &grid() const;
    // Drops the cells made for an earlier arrangement of the grid.
    void dropStaleCells() const;

    mutable QHash<int, QAccessible::Id> m_cells; // by child index
    mutable quint32 m_arrangement = 0;
};

// One cell of the grid, or a heading (row -1).
class LynxGridCellAccessible : public QAccessibleInterface, public QAccessibleTableCellInterface
{
public:
    LynxGridCellAccessible(LynxGrid *grid, int row, int col);

    void *interface_cast(QAccessible::InterfaceType type) override;
    bool isValid() const override;
    QObject *object() const override { return nullptr; }
    QWindow *window() const override;
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    QAccessibleInterface *parent() const override;
    QAccessibleInterface *child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QString text(QAccessible::Text t) const override;
    void setText(QAccessible::Text, const QString &) override {}
    QRect rect() const override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;

    // QAccessibleTableCellInterface
    bool isSelected() const override;
    QList<QAccessibleInterface *> columnHeaderCells() const override;
    QList<QAccessibleInterface *> rowHeaderCells() const override { return {}; }
    int columnIndex() const override { return m_col; }
    int rowIndex() const override { return m_row; }
    int columnExtent() const override { return 1; }
    int rowExtent() const override { return 1; }
    QAccessibleInterface *table() const override { return parent(); }

private:
    QPointer<LynxGrid> m_grid;
    int m_row;
    int m_col;
    quint32 m_arrangement;
};
