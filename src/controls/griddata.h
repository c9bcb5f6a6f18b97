#pragma once

#include <QColor>
#include <QDateTime>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>
#include <vector>

// How a column's cells are compared when sorting and how they are drawn.
enum class GridColumnType { Text, Number, Date, CheckBox, Custom };

struct GridColumn
{
    QString heading;
    int width = 80;
    Qt::Alignment alignment = Qt::AlignLeft;
    Qt::Alignment imageAlignment = Qt::AlignLeft;
    QString format;
    GridColumnType type = GridColumnType::Text;
    QString inputFilter;
    bool wordWrap = false;
    bool visible = true;
    QString tag;
    int image = -1;                 // drawn in every cell of the column that has no image of its own
    QString imageText;              // what a screen reader says for such a cell while it has no text
    QPointer<QWidget> boundControl; // the editor used instead of the edit box
};

// Attributes that only a few cells carry. They live beside the item, so that
// a plain cell is nothing but its text and two flags.
struct GridCellExtra
{
    enum Set : quint16 {
        HasAlignment = 1,
        HasWordWrap = 2,
        HasBold = 4,
        HasItalic = 8,
        HasUnderline = 16,
        Bold = 32,
        Italic = 64,
        Underline = 128,
        WordWrap = 256,
    };

    int column = 0; // the column's index, so that a moved column keeps its cells' looks
    QColor back;
    QColor fore;
    QString fontName;
    int image = -1;
    int progress = -1;
    Qt::Alignment alignment;
    quint16 set = 0;
};

struct GridItemExtra
{
    QColor back;
    QColor fore;
    int image = -1;
    QString tag;
    std::vector<GridCellExtra> cells;
};

struct GridCell
{
    enum Flag : quint8 { Checked = 1, Changed = 2 };
    QString text;
    quint8 flags = 0;
};

struct GridItem
{
    enum Flag : quint8 { Checked = 1, Selected = 2, Hidden = 4, Bold = 8 };
    std::unique_ptr<GridCell[]> cells; // one per column, by column index
    std::unique_ptr<GridItemExtra> extra;
    qint32 data = 0;
    quint8 flags = 0;
};

// The grid's content: columns by creation index with their display order, and
// the items with their cells. Callers address columns by display position;
// the mapping to the index that stores the cells lives here.
class GridData
{
public:
    // A Date cell's text as a moment: ISO form first, then the locale's short form.
    static QDateTime cellDate(const QString &text);

    // Returns the new column's index, which is also its position.
    int addColumn(GridColumn column);
    int columnCount() const { return static_cast<int>(m_columns.size()); }
    bool validPosition(int pos) const { return pos >= 0 && pos < columnCount(); }
    int indexAt(int pos) const { return m_order[static_cast<std::size_t>(pos)]; }
    // -1 for an index that does not exist.
    int positionOf(int index) const;
    void moveColumn(int index, int newPos);
    GridColumn &column(int pos) { return m_columns[static_cast<std::size_t>(indexAt(pos))]; }
    const GridColumn &column(int pos) const { return m_columns[static_cast<std::size_t>(indexAt(pos))]; }

    // Inserts an item before row (at the end when row is out of range); returns its row.
    int insertItem(int row);
    void removeItem(int row);
    void clear();
    void reserve(int rows);
    int capacity() const { return static_cast<int>(m_items.capacity()); }
    int itemCount() const { return static_cast<int>(m_items.size()); }
    bool validRow(int row) const { return row >= 0 && row < itemCount(); }
    GridItem &item(int row) { return m_items[static_cast<std::size_t>(row)]; }
    const GridItem &item(int row) const { return m_items[static_cast<std::size_t>(row)]; }
    GridCell &cell(int row, int pos) { return item(row).cells[static_cast<std::size_t>(indexAt(pos))]; }
    const GridCell &cell(int row, int pos) const { return item(row).cells[static_cast<std::size_t>(indexAt(pos))]; }

    GridItemExtra &itemExtra(int row);
    const GridItemExtra *findItemExtra(int row) const { return item(row).extra.get(); }
    GridCellExtra &cellExtra(int row, int pos);
    const GridCellExtra *findCellExtra(int row, int pos) const;
    // A cell's own alignment or word wrap where it set one, otherwise its column's.
    Qt::Alignment cellAlignment(int row, int pos) const;
    bool cellWordWrap(int row, int pos) const;
    // A cell's own flag where it set one (has), otherwise the fallback.
    bool cellFlag(int row, int pos, quint16 has, quint16 flag, bool fallback) const;
    void setCellFlag(int row, int pos, quint16 has, quint16 flag, bool on);

    // Hiding items: display rows skip hidden items.
    void setHidden(int row, bool hidden);
    int displayCount() const;
    int rowAtDisplay(int display) const;
    // The display row of an item; -1 when it is hidden or does not exist.
    int displayOf(int row) const;

    // Puts the items in the order given (new row -> old row); returns where
    // each old row went (old row -> new row).
    std::vector<int> reorder(const std::vector<int> &order);

private:
    void displayChanged() { m_displayValid = false; }
    void buildDisplay() const;

    std::vector<GridColumn> m_columns;
    std::vector<int> m_order;    // position -> index
    std::vector<GridItem> m_items;
    int m_hidden = 0;
    mutable std::vector<int> m_display; // display row -> item row, only while some are hidden
    mutable bool m_displayValid = false;
};
