#pragma once

#include "controls/griddata.h"
#include "controls/gridlook.h"
#include "controls/themedcontrol.h"

#include <QAbstractScrollArea>
#include <QElapsedTimer>
#include <QIcon>
#include <QList>

struct ThemeColors;
class GridEditor;
class GridHeader;

enum class GridLineMode { None, Horizontal, Vertical, Both };
enum class GridFocusMode { None, Cell, Row };
enum class GridFocusStyle { Solid, Dotted };
enum class GridThemeStyle { Flat, Gradient };
enum class GridBorder { None, Single };
enum class GridScaleUnits { Pixels, Points };
enum class GridSortOrder { Ascending, Descending };

// The user actions that start an edit; combined as flags.
enum GridEditTrigger : int {
    EditNone = 0,
    EditF2 = 1,
    EditEnter = 2,
    EditDblClick = 4,
    EditClickCurrent = 8, // a click on the cell that is already current
    EditAnyKey = 16,      // typing a character starts the edit with that character
};

// The program's own grid: items (rows) under a header of columns, drawn by
// itself so that only the rows in view cost anything.
//
// Columns are addressed by their display position everywhere ("col"); the
// index a column got from AddColumn stays with it when the user drags it, and
// ColPosition maps that index to the column's current position.
//
// Events are signals. Those with reference arguments (KeyPress, CellImageClick,
// CustomSort, EditKeyPress, RequestEdit, RequestUpdate) hand a value back to the
// grid and must be connected directly (the default for receivers on the grid's
// thread); a queued connection would lose the answer. Key codes are Qt::Key
// values; a shift state is 1 for Shift, 2 for Ctrl and 4 for Alt, added up.
class LynxGrid : public QAbstractScrollArea, public ThemedControl
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LynxGrid)

public:
    explicit LynxGrid(QWidget *parent = nullptr);
    ~LynxGrid() override;

    // Structure
    int AddColumn(const QString &heading = {}, int width = 80, Qt::Alignment alignment = Qt::AlignLeft,
                  GridColumnType type = GridColumnType::Text, const QString &format = {},
                  const QString &inputFilter = {});
    // Adds an item before row (at the end when row is -1) and returns its row.
    // A tab in text separates the cells, from position 0 on.
    int AddItem(const QString &text = {}, int row = -1);
    void RemoveItem(int row);
    // Removes every item; the columns stay.
    void Clear();
    int Cols() const { return m_data.columnCount(); }
    int ItemCount() const { return m_data.itemCount(); }
    // Headings separated by "|", each optionally led by "<" (left), "^" (centre) or ">" (right).
    QString FormatString() const;
    void setFormatString(const QString &format);
    // When on, cells of columns with a ColFormat are drawn through that format.
    bool FormatCells() const { return m_formatCells; }
    void setFormatCells(bool on);
    // Edits of the column go through control (a QComboBox or any widget with a
    // "text" property) instead of the edit box; nullptr unbinds. The grid takes
    // the control into its view and never sets its value: the host does that in
    // RequestEdit.
    void BindControl(int col, QWidget *control);
    // Room for items grows by at least this many at a time.
    int CacheIncrement() const { return m_cacheIncrement; }
    void setCacheIncrement(int items);

    // Columns
    QString ColHeading(int col) const;
    void setColHeading(int col, const QString &heading);
    int ColWidth(int col) const;
    void setColWidth(int col, int width);
    Qt::Alignment ColAlignment(int col) const;
    void setColAlignment(int col, Qt::Alignment alignment);
    Qt::Alignment ColImageAlignment(int col) const;
    void setColImageAlignment(int col, Qt::Alignment alignment);
    // Number columns: "0.00" gives two decimals; Date columns: a QDateTime format.
    QString ColFormat(int col) const;
    void setColFormat(int col, const QString &format);
    GridColumnType ColType(int col) const;
    void setColType(int col, GridColumnType type);
    // The characters a user may type into the column's cells ("<" lower-cases and
    // ">" upper-cases instead); backspace (8) and code 46 always pass.
    QString ColInputFilter(int col) const;
    void setColInputFilter(int col, const QString &filter);
    bool ColWordWrap(int col) const;
    void setColWordWrap(int col, bool wrap);
    bool ColVisible(int col) const;
    void setColVisible(int col, bool visible);
    QString ColTag(int col) const;
    void setColTag(int col, const QString &tag);
    int colImage(int col) const;
    void setColImage(int col, int image);
    // The name a screen reader gives the column's cells that have no text, such as
    // cells that only show the column's image.
    QString colImageText(int col) const;
    void setColImageText(int col, const QString &text);
    // The current position of the column created as index; -1 when there is none.
    int ColPosition(int index) const;
    void setColPosition(int index, int position);
    // Left edge of the column in the scrolled content, in pixels.
    int ColLeft(int col) const;
    bool ColumnDrag() const { return m_columnDrag; }
    void setColumnDrag(bool on) { m_columnDrag = on; }
    bool ColumnSort() const { return m_columnSort; }
    void setColumnSort(bool on) { m_columnSort = on; }
    bool AllowUserResizing() const { return m_allowResizing; }
    void setAllowUserResizing(bool on) { m_allowResizing = on; }

    // Items
    bool ItemChecked(int row) const;
    void setItemChecked(int row, bool checked);
    bool ItemSelected(int row) const;
    void setItemSelected(int row, bool selected);
    bool ItemVisible(int row) const;
    void setItemVisible(int row, bool visible);
    int ItemImage(int row) const;
    void setItemImage(int row, int image);
    QColor ItemBackColor(int row) const;
    void setItemBackColor(int row, const QColor &color);
    QColor ItemForeColor(int row) const;
    void setItemForeColor(int row, const QColor &color);
    bool ItemFontBold(int row) const;
    void setItemFontBold(int row, bool bold);
    qint32 ItemData(int row) const;
    void setItemData(int row, qint32 data);
    QString ItemTag(int row) const;
    void setItemTag(int row, const QString &tag);
    int CheckedCount() const;
    int SelectedCount() const;
    // The number of whole rows the view shows at its current height.
    int ItemsVisible() const;
    // Kept for hosts that set it; rows never collapse in this grid.
    bool RowCollaps() const { return m_rowCollaps; }
    void setRowCollaps(bool on) { m_rowCollaps = on; }
    // Kept for hosts that set it; there is no expandable row to show it on.
    int ExpandRowImage() const { return m_expandRowImage; }
    void setExpandRowImage(int image) { m_expandRowImage = image; }

    // Cells. Reading a cell that does not exist gives an empty answer.
    QString CellText(int row, int col) const;
    void setCellText(int row, int col, const QString &text);
    int CellImage(int row, int col) const;
    void setCellImage(int row, int col, int image);
    bool CellChecked(int row, int col) const;
    void setCellChecked(int row, int col, bool checked);
    // 0 to 100 draws a progress bar in ProgressBarColor; -1 draws none.
    int CellProgressValue(int row, int col) const;
    void setCellProgressValue(int row, int col, int value);
    Qt::Alignment CellAlignment(int row, int col) const;
    void setCellAlignment(int row, int col, Qt::Alignment alignment);
    QColor CellBackColor(int row, int col) const;
    void setCellBackColor(int row, int col, const QColor &color);
    QColor CellForeColor(int row, int col) const;
    void setCellForeColor(int row, int col, const QColor &color);
    QString CellFontName(int row, int col) const;
    void setCellFontName(int row, int col, const QString &family);
    bool CellFontBold(int row, int col) const;
    void setCellFontBold(int row, int col, bool on);
    bool CellFontItalic(int row, int col) const;
    void setCellFontItalic(int row, int col, bool on);
    bool CellFontUnderline(int row, int col) const;
    void setCellFontUnderline(int row, int col, bool on);
    bool CellWordWrap(int row, int col) const;
    void setCellWordWrap(int row, int col, bool wrap);
    // Set by an accepted edit that changed the text while TrackEdits is on.
    bool CellChanged(int row, int col) const;
    void setCellChanged(int row, int col, bool changed);
    bool TrackEdits() const { return m_trackEdits; }
    void setTrackEdits(bool on) { m_trackEdits = on; }

    // Position. Row is -1 when no row is current.
    int Row() const { return m_row; }
    // Makes row current and the only selected row.
    void setRow(int row);
    int Col() const { return m_col; }
    void setCol(int col);
    int TopRow() const;
    void setTopRow(int row);
    // Top of the row relative to the rows' area; -1 for a hidden or missing row.
    int RowTop(int row) const;
    int MouseRow() const { return m_mouseRow; }
    int MouseCol() const { return m_mouseCol; }
    // Makes the cell current, the row the only selected one, and scrolls it into view.
    void GotoCell(int row, int col);
    // The first row from startRow whose cell in col equals text (or begins with it
    // when partial), without regard to case; col -1 means SearchColumn. -1 when none.
    int FindItem(const QString &text, int col = -1, int startRow = 0, bool partial = false) const;
    // The column that typing jumps through when typing does not start an edit; -1 for none.
    int SearchColumn() const { return m_searchColumn; }
    void setSearchColumn(int col) { m_searchColumn = col; }

    // Sorting
    void Sort(int col, GridSortOrder order = GridSortOrder::Ascending);
    // Position of the column the items were last sorted by; -1 before any sort.
    int sortColumn() const;
    GridSortOrder sortOrder() const { return m_sortOrder; }

    // Editing
    bool Editable() const { return m_editable; }
    void setEditable(bool on) { m_editable = on; }
    int EditTrigger() const { return m_editTrigger; }
    void setEditTrigger(int triggers) { m_editTrigger = triggers; }
    // Starts the edit protocol on a cell; true when an edit (or a check toggle) went ahead.
    bool EditCell(int row, int col);
    // Ends the running edit as an update; true when the update was accepted.
    bool commitEdit();
    void cancelEdit();
    bool isEditing() const;
    QColor BackColorEdit() const { return m_look.backEdit; }
    void setBackColorEdit(const QColor &color);
    QColor ForeColorEdit() const { return m_look.foreEdit; }
    void setForeColorEdit(const QColor &color);

    // Check boxes in front of every item.
    bool CheckBoxes() const { return m_checkBoxes; }
    void setCheckBoxes(bool on);

    // Sizes, in pixels
    int RowHeight() const { return m_rowHeight; }
    void setRowHeight(int height);
    int RowHeightMin() const { return m_rowHeightMin; }
    void setRowHeightMin(int height);
    int RowHeightMax() const { return m_rowHeightMax; }
    void setRowHeightMax(int height);
    // When on, the row height follows the font, within RowHeightMin and RowHeightMax.
    bool AutoSizeRow() const { return m_autoSizeRow; }
    void setAutoSizeRow(bool on);
    // Kept for hosts that set it; every size of this grid is in pixels.
    GridScaleUnits ScaleUnits() const { return m_scaleUnits; }
    void setScaleUnits(GridScaleUnits units) { m_scaleUnits = units; }
    int GridLineWidth() const { return m_gridLineWidth; }
    void setGridLineWidth(int width);

    // Look
    QColor BackColor() const { return m_look.back; }
    void setBackColor(const QColor &color);
    // Every second row.
    QColor backColorAlt() const { return m_look.backAlt; }
    void setBackColorAlt(const QColor &color);
    QColor BackColorBkg() const { return m_look.backBkg; }
    void setBackColorBkg(const QColor &color);
    QColor BackColorFixed() const { return m_look.backFixed; }
    void setBackColorFixed(const QColor &color);
    QColor BackColorSel() const { return m_look.backSel; }
    void setBackColorSel(const QColor &color);
    QColor ForeColor() const { return m_look.fore; }
    void setForeColor(const QColor &color);
    QColor ForeColorFixed() const { return m_look.foreFixed; }
    void setForeColorFixed(const QColor &color);
    QColor ForeColorSel() const { return m_look.foreSel; }
    void setForeColorSel(const QColor &color);
    // Headings under the mouse and the sort mark.
    QColor ForeColorHdr() const { return m_look.foreHdr; }
    void setForeColorHdr(const QColor &color);
    // Kept for hosts that set it; this grid draws no totals row.
    QColor ForeColorTotals() const { return m_look.foreTotals; }
    void setForeColorTotals(const QColor &color) { m_look.foreTotals = color; }
    QColor GridColor() const { return m_look.grid; }
    void setGridColor(const QColor &color);
    GridLineMode GridLines() const { return m_gridLines; }
    void setGridLines(GridLineMode mode);
    QColor ProgressBarColor() const { return m_look.progress; }
    void setProgressBarColor(const QColor &color);
    QColor FocusRectColor() const { return m_look.focusRect; }
    void setFocusRectColor(const QColor &color);
    GridFocusMode FocusRectMode() const { return m_focusMode; }
    void setFocusRectMode(GridFocusMode mode);
    GridFocusStyle FocusRectStyle() const { return m_focusStyle; }
    void setFocusRectStyle(GridFocusStyle style);
    // Selected rows blend the selection colour over their own background.
    bool AlphaBlendSelection() const { return m_alphaBlend; }
    void setAlphaBlendSelection(bool on);
    // Images of selected rows are drawn in their selected state.
    bool ApplySelectionToImages() const { return m_selectImages; }
    void setApplySelectionToImages(bool on);
    bool HotHeaderTracking() const { return m_hotHeader; }
    void setHotHeaderTracking(bool on);
    bool DisplayEllipsis() const { return m_ellipsis; }
    void setDisplayEllipsis(bool on);
    // The selection is not drawn while the grid does not have the focus.
    bool HideSelection() const { return m_hideSelection; }
    void setHideSelection(bool on);
    bool FullRowSelect() const { return m_fullRowSelect; }
    void setFullRowSelect(bool on);
    bool MultiSelect() const { return m_multiSelect; }
    void setMultiSelect(bool on);
    GridBorder BorderStyle() const { return m_border; }
    void setBorderStyle(GridBorder border);
    // Set with QWidget::setFont.
    QFont Font() const { return font(); }
    const QList<QIcon> &ImageList() const { return m_images; }
    void setImageList(const QList<QIcon> &images);
    // The program's colour theme index (0 "Pale Blue", 1 "Black Night"), also
    // when the theme came as colours; -1 for colours of no theme. Another
    // index is kept and leaves the colours as they are.
    int ThemeColor() const { return m_themeIndex; }
    void setThemeColor(int themeIndex);
    // Takes every colour of a theme at once.
    void setThemeColors(const ThemeColors &colors) override;
    // Flat or shaded headings.
    GridThemeStyle ThemeStyle() const { return m_themeStyle; }
    void setThemeStyle(GridThemeStyle style);

    // Behaviour
    // When off, the rows follow the scroll bar only when its thumb is let go.
    bool ScrollTrack() const;
    void setScrollTrack(bool on);
    // Off stops all drawing (for bulk fills); on brings the view up to date once.
    bool Redraw() const { return m_redraw; }
    void setRedraw(bool on);
    void RefreshView();

    // Rows drawn by the last paint, to check that drawing stays limited to the view.
    int lastPaintedRows() const { return m_lastPaintedRows; }

signals:
    void Click();
    void DblClick();
    void KeyDown(int keyCode, int shift);
    void KeyPress(qint16 &key);
    void KeyUp(int keyCode, int shift);
    void MouseDown(int button, int shift, int x, int y);
    void MouseMove(int button, int shift, int x, int y);
    void MouseUp(int button, int shift, int x, int y);
    // Raised on mouse release over a cell.
    void cellClick(int row, int col);
    // Raised on mouse release after a heading was dragged to a new place.
    void columnMoved(int col);
    // Raised when the mouse moves onto another cell.
    void mouseCell(int row, int col);
    // Setting cancel keeps the click from selecting or editing.
    void CellImageClick(int row, int col, int x, int y, bool &cancel);
    void ColumnClick(int col);
    void ColumnSizeChanged();
    // Sorting a Custom column asks the host: result below 0, 0 or above 0.
    void CustomSort(int col, const QString &value1, const QString &value2, int &result);
    void ItemCountChanged();
    void RowColChanged();
    void Scroll();
    void SelectionChanged();
    void SortComplete();
    void ThemeChanged();
    // The character typed into the edit box after the column's filter (0 when
    // discarded); the host may change or discard it.
    void EditKeyPress(int col, qint16 &key);
    void EnterCell(int row, int col);
    void RequestEdit(int row, int col, bool &cancel);
    void RequestUpdate(int row, int col, QString &value, bool &cancel);
    // Raised after an accepted update (and after a check box was toggled).
    void CellUpdated(int row, int col);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    friend class GridEditor;
    friend class GridHeader;
    friend class GridPainter;
    friend class LynxGridAccessible;
    friend class LynxGridCellAccessible;

    bool validCell(int row, int col) const { return m_data.validRow(row) && m_data.validPosition(col); }
    void refresh();
    // Rows or columns moved, came or went: cells known by their place are stale.
    void rearranged();
    // Tells a screen reader which cell is current.
    void announceCurrent();
    void setLook(QColor &field, const QColor &value);
    void layoutChanged();
    void updateScrollBars();
    void placeHeader();
    int headerHeight() const;
    int pageRows() const;
    int contentWidth() const;
    int xOffset() const;
    int topDisplay() const;
    // Position of the column at a viewport x; -1 outside every column.
    int colAtX(int x) const;
    int rowAtY(int y) const;
    QRect cellRect(int row, int col) const;
    QRect checkRect(const QRect &cell, Qt::Alignment alignment) const;
    QRect itemCheckRect(int row) const;
    int firstVisibleCol() const;
    void ensureVisible(int row, int col);
    void setCurrent(int row, int col);
    void selectOnly(int row);
    void selectRange(int from, int to);
    void moveCurrent(int displayRow, int col, Qt::KeyboardModifiers mods);
    int nextVisibleCol(int col, int step) const;
    void toggleCheck(int row, int col);
    void typeAhead(const QString &text);
    void clickHeading(int col);

    GridData m_data;
    GridLook m_look;
    GridHeader *m_header;
    GridEditor *m_editor; // a child, so that it outlives the edit box in the viewport

    bool m_formatCells = false;
    int m_cacheIncrement = 1000;
    bool m_columnDrag = true;
    bool m_columnSort = true;
    bool m_allowResizing = true;
    bool m_rowCollaps = false;
    int m_expandRowImage = -1;
    bool m_trackEdits = false;
    int m_row = -1;
    int m_col = -1;
    int m_anchor = -1;
    int m_mouseRow = -1;
    int m_mouseCol = -1;
    int m_searchColumn = -1;
    int m_sortIndex = -1;
    GridSortOrder m_sortOrder = GridSortOrder::Ascending;
    bool m_editable = true;
    int m_editTrigger = EditF2 | EditEnter | EditDblClick | EditClickCurrent;
    bool m_checkBoxes = false;
    int m_rowHeight = 20;
    int m_rowHeightMin = 0;
    int m_rowHeightMax = 0;
    bool m_autoSizeRow = true;
    GridScaleUnits m_scaleUnits = GridScaleUnits::Pixels;
    int m_gridLineWidth = 1;
    GridLineMode m_gridLines = GridLineMode::Both;
    GridFocusMode m_focusMode = GridFocusMode::Cell;
    GridFocusStyle m_focusStyle = GridFocusStyle::Dotted;
    bool m_alphaBlend = false;
    bool m_selectImages = true;
    bool m_hotHeader = true;
    bool m_ellipsis = true;
    bool m_hideSelection = false;
    bool m_fullRowSelect = false;
    bool m_multiSelect = false;
    GridBorder m_border = GridBorder::Single;
    QList<QIcon> m_images;
    int m_themeIndex = 0;
    GridThemeStyle m_themeStyle = GridThemeStyle::Gradient;
    bool m_redraw = true;
    int m_lastPaintedRows = 0;
    quint32 m_arrangement = 0;

    Qt::MouseButtons m_pressButtons;
    bool m_pressedOnCurrent = false;
    QString m_typed;
    QElapsedTimer m_typedTimer;
};
