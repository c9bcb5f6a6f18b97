#include "controls/gridheader.h"
#include "controls/lynxgrid.h"
#include "base/themecolors.h"

#include <QAccessible>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// A grid of three columns (Name, Count as numbers, Tag) holding rows as given.
class GridTest : public ::testing::Test
{
public:
    void SetUp() override
    {
        grid.resize(400, 300);
        grid.AddColumn(u"Name"_s, 120);
        grid.AddColumn(u"Count"_s, 80, Qt::AlignRight, GridColumnType::Number);
        grid.AddColumn(u"Tag"_s, 80);
        for (const char *row : {"beta\t10\tx", "Alpha\t9\ty", "gamma\t100\tz"})
            grid.AddItem(QString::fromLatin1(row));
        header = grid.findChild<GridHeader *>();
        ASSERT_NE(header, nullptr);
        grid.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&grid));
    }
    QString column(int col) const
    {
        QStringList texts;
        for (int row = 0; row < grid.ItemCount(); ++row)
            texts << grid.CellText(row, col);
        return texts.join(u',');
    }
    QLineEdit *editBox() const { return grid.viewport()->findChild<QLineEdit *>(); }
    // Logs the protocol's events and answers them as the test sets.
    void attach()
    {
        QObject::connect(&grid, &LynxGrid::RequestEdit, &grid, [this](int row, int col, bool &cancel) {
            events << u"edit %1,%2"_s.arg(row).arg(col);
            cancel = cancelEdit;
        });
        QObject::connect(&grid, &LynxGrid::RequestUpdate, &grid,
                         [this](int row, int col, QString &value, bool &cancel) {
                             events << u"update %1,%2 %3"_s.arg(row).arg(col).arg(value);
                             if (!replaceWith.isNull())
                                 value = replaceWith;
                             cancel = cancelUpdate;
                         });
        QObject::connect(&grid, &LynxGrid::CellUpdated, &grid,
                         [this](int row, int col) { events << u"updated %1,%2"_s.arg(row).arg(col); });
    }
    void dragHeader(QPoint from, QPoint to)
    {
        QTest::mousePress(header, Qt::LeftButton, {}, from);
        QTest::mouseMove(header, (from + to) / 2);
        QTest::mouseMove(header, to);
        QTest::mouseRelease(header, Qt::LeftButton, {}, to);
    }
    QPoint centre(int row, int col) const
    {
        return {grid.ColLeft(col) + grid.ColWidth(col) / 2, grid.RowTop(row) + grid.RowHeight() / 2};
    }
    LynxGrid grid;
    GridHeader *header = nullptr;
    bool cancelEdit = false, cancelUpdate = false;
    QString replaceWith;
    QStringList events;
};

TEST_F(GridTest, EachStageOfTheEditProtocolDecidesWhatReachesTheCell)
{
    attach();
    const struct
    {
        const char *name;
        bool cancelEdit, cancelUpdate, track;
        const char *replaceWith, *typed; // null: the host keeps the value, the text stays as it opened
        Qt::Key finish;
        const char *events, *text;
        bool changed;
    } rows[] = {{"accepted", false, false, true, "DELTA", "delta", Qt::Key_Return,
                 "edit 0,0|update 0,0 delta|updated 0,0", "DELTA", true},
                {"host refuses the edit", true, false, true, nullptr, nullptr, Qt::Key_Return, "edit 0,0",
                 "beta", false},
                {"host refuses the update", false, true, true, nullptr, "changed", Qt::Key_Return,
                 "edit 0,0|update 0,0 changed", "beta", false},
                {"Escape asks for no update", false, false, true, nullptr, "changed", Qt::Key_Escape,
                 "edit 0,0", "beta", false},
                {"unchanged text", false, false, true, nullptr, nullptr, Qt::Key_Return,
                 "edit 0,0|update 0,0 beta|updated 0,0", "beta", false},
                {"tracking off", false, false, false, nullptr, "new", Qt::Key_Return,
                 "edit 0,0|update 0,0 new|updated 0,0", "new", false}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        grid.setCellText(0, 0, u"beta"_s);
        grid.setCellChanged(0, 0, false);
        grid.setTrackEdits(row.track);
        cancelEdit = row.cancelEdit;
        cancelUpdate = row.cancelUpdate;
        replaceWith = row.replaceWith ? QString::fromLatin1(row.replaceWith) : QString();
        events.clear();
        EXPECT_EQ(grid.EditCell(0, 0), !row.cancelEdit);
        EXPECT_EQ(editBox()->isVisible(), !row.cancelEdit);
        if (!row.cancelEdit) {
            EXPECT_EQ(editBox()->text(), u"beta"_s);
            if (row.typed)
                QTest::keyClicks(editBox(), QString::fromLatin1(row.typed));
            QTest::keyClick(editBox(), row.finish);
        }
        EXPECT_FALSE(grid.isEditing());
        EXPECT_EQ(events.join(u'|'), QLatin1StringView(row.events));
        EXPECT_EQ(grid.CellText(0, 0), QLatin1StringView(row.text));
        EXPECT_EQ(grid.CellChanged(0, 0), row.changed);
        EXPECT_FALSE(grid.CellChanged(1, 0));
    }
}

TEST_F(GridTest, TypedCharactersPassTheColumnFilterAndTheHost)
{
    const struct
    {
        const char *filter, *typed, *expected;
    } rows[] = {
        {"0123456789", "a1b2.c3", "12.3"},                     // code 46 always passes
        {"abc", "AbCdx", "AbC"},                               // compared without regard to case
        {"<", "MiXeD 1", "mixed 1"},                           // no filter: lower-cases
        {">", "MiXeD 1", "MIXED 1"},                           // no filter: upper-cases
        {"", "any<>thing", "any<>thing"},  {"7", "77\b", "7"}, // Backspace (code 8) passes any filter
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.filter);
        grid.setColInputFilter(2, QString::fromLatin1(row.filter));
        ASSERT_TRUE(grid.EditCell(0, 2));
        editBox()->clear();
        QTest::keyClicks(editBox(), QString::fromLatin1(row.typed));
        EXPECT_EQ(editBox()->text(), QString::fromLatin1(row.expected));
        grid.cancelEdit();
    }
    // EditKeyPress sees the filtered key and may change or drop it.
    QList<int> seen;
    QObject::connect(&grid, &LynxGrid::EditKeyPress, &grid, [&seen](int col, qint16 &key) {
        EXPECT_EQ(col, 1);
        seen << key;
        key = key == u'5' ? u'6' : key == u'9' ? 0 : key;
    });
    grid.setColInputFilter(1, u"0123456789"_s);
    ASSERT_TRUE(grid.EditCell(0, 1));
    editBox()->clear();
    QTest::keyClicks(editBox(), u"1x59"_s);
    EXPECT_EQ(seen, QList<int>({'1', 0, '5', '9'}));
    EXPECT_EQ(editBox()->text(), u"16"_s);
}

TEST_F(GridTest, CheckBoxCellsToggleThroughTheEditRequest)
{
    const int col = grid.AddColumn(u"On"_s, 40, Qt::AlignHCenter, GridColumnType::CheckBox);
    attach();
    grid.GotoCell(1, col);
    grid.setFocus();
    QTest::keyClick(&grid, Qt::Key_Space);
    EXPECT_TRUE(grid.CellChecked(1, col));
    EXPECT_EQ(events, QStringList({u"edit 1,3"_s, u"updated 1,3"_s}));
    cancelEdit = true;
    QTest::keyClick(&grid, Qt::Key_Space);
    EXPECT_TRUE(grid.CellChecked(1, col));
    EXPECT_FALSE(grid.isEditing());
}

TEST_F(GridTest, SortingOrdersByTheColumnsTypeFollowsTheCurrentRowAndHeadingClicksReverse)
{
    int completed = 0;
    QList<int> clicked;
    QObject::connect(&grid, &LynxGrid::SortComplete, &grid, [&completed] { ++completed; });
    QObject::connect(&grid, &LynxGrid::ColumnClick, &grid, [&clicked](int col) { clicked << col; });
    grid.GotoCell(2, 0); // gamma
    grid.Sort(1);
    EXPECT_EQ(column(1), u"9,10,100"_s);
    grid.Sort(0);
    EXPECT_EQ(column(0), u"Alpha,beta,gamma"_s);
    grid.Sort(0, GridSortOrder::Descending);
    EXPECT_EQ(column(0), u"gamma,beta,Alpha"_s);
    EXPECT_EQ(completed, 3);
    EXPECT_EQ(grid.CellText(grid.Row(), 0), u"gamma"_s) << "the current row follows its item";
    EXPECT_EQ(grid.sortColumn(), 0);
    const QPoint count(grid.ColLeft(1) + 40, header->height() / 2);
    QTest::mouseClick(header, Qt::LeftButton, {}, count);
    EXPECT_EQ(column(1), u"9,10,100"_s);
    QTest::mouseClick(header, Qt::LeftButton, {}, count);
    EXPECT_EQ(column(1), u"100,10,9"_s);
    EXPECT_EQ(clicked, QList<int>({1, 1}));
    grid.setColumnSort(false);
    QTest::mouseClick(header, Qt::LeftButton, {}, count);
    EXPECT_EQ(column(1), u"100,10,9"_s);
}

TEST_F(GridTest, DraggingAHeadingMovesTheColumnAndKeepsIndexToPositionMapping)
{
    const int y = header->height() / 2;
    // Drag "Tag" (index 2) onto the left half of "Name": it becomes the first column.
    dragHeader({grid.ColLeft(2) + 40, y}, {20, y});
    EXPECT_EQ(QList<int>({grid.ColPosition(0), grid.ColPosition(1), grid.ColPosition(2)}),
              QList<int>({1, 2, 0}));
    EXPECT_EQ(grid.ColHeading(0), u"Tag"_s);
    EXPECT_EQ(grid.CellText(0, grid.ColPosition(2)), u"x"_s);
    EXPECT_EQ(grid.CellText(0, grid.ColPosition(0)), u"beta"_s);
    EXPECT_EQ(grid.ColType(grid.ColPosition(1)), GridColumnType::Number);
    // New items fill by position, and the mapping puts each value under its heading.
    const int row = grid.AddItem();
    grid.setCellText(row, grid.ColPosition(0), u"delta"_s);
    EXPECT_EQ(grid.CellText(row, 1), u"delta"_s);
    EXPECT_EQ(grid.ColHeading(1), u"Name"_s);
    // Dropped behind the last heading, it goes back to the end.
    dragHeader({40, y}, {grid.ColLeft(2) + grid.ColWidth(2) - 5, y});
    EXPECT_EQ(grid.FormatString(), u"<Name|>Count|<Tag"_s);
    // Dragging a heading's edge resizes its column instead.
    int resized = 0;
    QObject::connect(&grid, &LynxGrid::ColumnSizeChanged, &grid, [&resized] { ++resized; });
    dragHeader({120, y}, {150, y});
    EXPECT_EQ(grid.ColWidth(0), 150);
    EXPECT_EQ(grid.ColLeft(1), 150);
    EXPECT_EQ(resized, 1);
}

TEST_F(GridTest, KeyboardAndMouseMoveTheCurrentRowSelectAndStartEdits)
{
    attach();
    grid.setFocus();
    for (const auto &[key, row] : {std::pair{Qt::Key_Down, 0},
                                   {Qt::Key_Down, 1},
                                   {Qt::Key_End, 2},
                                   {Qt::Key_Up, 1},
                                   {Qt::Key_Home, 0},
                                   {Qt::Key_PageDown, 2}}) {
        QTest::keyClick(&grid, key);
        EXPECT_EQ(grid.Row(), row) << key;
        EXPECT_EQ(grid.SelectedCount(), 1);
        EXPECT_TRUE(grid.ItemSelected(row));
    }
    QTest::keyClick(&grid, Qt::Key_Right);
    EXPECT_EQ(grid.Col(), 1);
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, centre(1, 0));
    EXPECT_EQ(grid.Row(), 1);
    EXPECT_FALSE(grid.isEditing()) << "the first click only makes the cell current";
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, centre(1, 0));
    EXPECT_TRUE(grid.isEditing());
    QTest::keyClick(editBox(), Qt::Key_Escape);
    QTest::mouseDClick(grid.viewport(), Qt::LeftButton, {}, centre(2, 2));
    EXPECT_TRUE(grid.isEditing());
    EXPECT_EQ(events.last(), u"edit 2,2"_s);
    grid.cancelEdit();
    grid.setEditTrigger(EditF2);
    QTest::mouseDClick(grid.viewport(), Qt::LeftButton, {}, centre(0, 2));
    EXPECT_FALSE(grid.isEditing());
    // Multi-select: Ctrl adds, Shift extends from the anchor, a plain click selects one.
    grid.setMultiSelect(true);
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, Qt::ControlModifier, centre(2, 0));
    EXPECT_EQ(grid.SelectedCount(), 2);
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, centre(1, 0));
    EXPECT_EQ(grid.SelectedCount(), 1);
    QTest::keyClick(&grid, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(grid.SelectedCount(), 2);
}

TEST_F(GridTest, HiddenItemsAndColumnsAreSkipped)
{
    grid.setItemVisible(1, false);
    grid.setColVisible(1, false);
    EXPECT_EQ(grid.RowTop(2), grid.RowHeight());
    EXPECT_EQ(grid.RowTop(1), -1);
    EXPECT_EQ(grid.ColLeft(2), 120);
    grid.setFocus();
    QTest::keyClick(&grid, Qt::Key_Home);
    QTest::keyClick(&grid, Qt::Key_Down);
    EXPECT_EQ(grid.Row(), 2);
    QTest::keyClick(&grid, Qt::Key_Right);
    EXPECT_EQ(grid.Col(), 2);
    grid.setItemVisible(1, true);
    EXPECT_EQ(grid.RowTop(2), 2 * grid.RowHeight());
}

TEST_F(GridTest, TypingEditsOrJumpsToTheMatchingRow)
{
    EXPECT_EQ(grid.FindItem(u"GAMMA"_s, 0), 2);
    EXPECT_EQ(grid.FindItem(u"gam"_s, 0), -1);
    EXPECT_EQ(grid.FindItem(u"gam"_s, 0, 0, true), 2);
    EXPECT_EQ(grid.FindItem(u"beta"_s, 0, 1), -1);
    grid.setFocus();
    grid.setSearchColumn(0);
    QTest::keyClicks(&grid, u"ga"_s);
    EXPECT_EQ(grid.Row(), 2);
    EXPECT_FALSE(grid.isEditing());
    grid.setEditTrigger(EditAnyKey);
    grid.setColInputFilter(0, u">"_s);
    QTest::keyClick(&grid, Qt::Key_Q);
    ASSERT_TRUE(grid.isEditing());
    EXPECT_EQ(editBox()->text(), u"Q"_s) << "the first key replaces the text, through the filter";
}

TEST_F(GridTest, CellsOutsideTheGridAnswerEmptyAndRemovalKeepsTheCurrentItem)
{
    EXPECT_EQ(grid.CellText(3, 0), QString());
    EXPECT_EQ(grid.CellText(0, 9), QString());
    EXPECT_EQ(grid.ItemData(-1), 0);
    EXPECT_FALSE(grid.CellChecked(7, 0));
    grid.GotoCell(2, 0);
    grid.RemoveItem(0);
    EXPECT_EQ(grid.Row(), 1);
    EXPECT_EQ(grid.CellText(grid.Row(), 0), u"gamma"_s);
    grid.Clear();
    EXPECT_EQ(grid.ItemCount(), 0);
    EXPECT_EQ(grid.Row(), -1);
    EXPECT_EQ(grid.Cols(), 3);
}

TEST_F(GridTest, ScreenReadersSeeATableOfHeadingsCellsAndTheCurrentCell)
{
    QAccessibleInterface *table = QAccessible::queryAccessibleInterface(&grid);
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(table->role(), QAccessible::Table);
    QAccessibleTableInterface *cells = table->tableInterface();
    ASSERT_NE(cells, nullptr);
    EXPECT_EQ(cells->rowCount(), 3);
    EXPECT_EQ(cells->columnCount(), 3);
    EXPECT_EQ(table->childCount(), 12);
    EXPECT_EQ(cells->columnDescription(1), u"Count"_s);
    EXPECT_EQ(table->child(1)->role(), QAccessible::ColumnHeader);
    EXPECT_EQ(table->child(1)->text(QAccessible::Name), u"Count"_s);
    QAccessibleInterface *cell = cells->cellAt(2, 0);
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(cell->role(), QAccessible::Cell);
    EXPECT_EQ(cell->text(QAccessible::Name), u"gamma"_s);
    EXPECT_EQ(table->indexOfChild(cell), 9);
    EXPECT_EQ(cell->parent(), table);
    EXPECT_EQ(cell->tableCellInterface()->columnHeaderCells().value(0)->text(QAccessible::Name), u"Name"_s);
    const QRect shown = cell->rect();
    EXPECT_EQ(table->childAt(shown.center().x(), shown.center().y()), cell);
    EXPECT_EQ(cells->cellAt(3, 0), nullptr);
    grid.setFocus();
    QApplication::setActiveWindow(&grid);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&grid));
    grid.GotoCell(1, 2);
    QAccessibleInterface *current = table->focusChild();
    ASSERT_NE(current, nullptr);
    EXPECT_EQ(current->text(QAccessible::Name), u"y"_s);
    EXPECT_TRUE(current->state().focused);
    EXPECT_TRUE(current->state().selected);
    EXPECT_EQ(cells->selectedRows(), QList<int>{1});
    // Sorting moves the items: the cells are asked for anew and tell the new texts.
    grid.Sort(0, GridSortOrder::Descending);
    EXPECT_FALSE(cell->isValid());
    EXPECT_EQ(cells->cellAt(2, 0)->text(QAccessible::Name), u"Alpha"_s);
    EXPECT_EQ(table->focusChild()->text(QAccessible::Name), u"y"_s);
    // A picture cell without text is named by its column, wherever the column moves.
    grid.setColImage(2, 0);
    grid.setColImageText(2, u"Play"_s);
    grid.setCellText(0, 2, QString());
    grid.setColPosition(2, 0);
    EXPECT_EQ(cells->cellAt(0, 0)->text(QAccessible::Name), u"Play"_s);
    EXPECT_EQ(cells->cellAt(0, 0)->text(QAccessible::Value), QString());
    EXPECT_EQ(cells->cellAt(1, 0)->text(QAccessible::Name), u"x"_s);
    EXPECT_EQ(table->child(0)->text(QAccessible::Name), u"Tag"_s);
}

TEST_F(GridTest, TheCurrentCellIsFramedInsideItsSelectedRowAndAFocusedEmptyPlaceFramesTheView)
{
    grid.setFullRowSelect(true);
    grid.setFocusRectStyle(GridFocusStyle::Solid);
    QApplication::setActiveWindow(&grid);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&grid));
    grid.setFocus();
    ASSERT_TRUE(grid.hasFocus());
    const auto pixel = [this](QPoint at) { return grid.viewport()->grab().toImage().pixelColor(at); };
    const QPoint edge(1, grid.RowHeight() / 2);
    EXPECT_EQ(pixel(edge), grid.FocusRectColor()) << "tabbed into the grid before any row is current";
    grid.GotoCell(1, 1);
    const int top = grid.RowTop(1);
    // The frame runs along the current cell's left edge; the row's other cells have none.
    EXPECT_EQ(pixel({grid.ColLeft(1) + 1, top + grid.RowHeight() / 2}), grid.ForeColorSel());
    EXPECT_EQ(pixel({grid.ColLeft(2) + 1, top + grid.RowHeight() / 2}), grid.BackColorSel());
    EXPECT_EQ(pixel(edge), grid.BackColor()) << "the view frame goes once a row is current";
}

TEST_F(GridTest, ThemeColorFollowsTheColoursAndClearForgetsTheSort)
{
    for (const int theme : {Themes::BlackNight, Themes::PaleBlue}) {
        grid.setThemeColors(theme == Themes::PaleBlue ? Themes::paleBlue()
                                                          : Themes::blackNight());
        EXPECT_EQ(grid.ThemeColor(), theme);
    }
    ThemeColors own = Themes::paleBlue();
    own.grid = 0xff000000;
    grid.setThemeColors(own);
    EXPECT_EQ(grid.ThemeColor(), -1);
    grid.Sort(1, GridSortOrder::Descending);
    grid.Clear();
    EXPECT_EQ(grid.sortColumn(), -1);
    grid.AddItem(u"b"_s);
    grid.AddItem(u"a"_s);
    QTest::mouseClick(header, Qt::LeftButton, {}, {20, header->height() / 2});
    EXPECT_EQ(column(0), u"a,b"_s) << "the first click after a refill sorts ascending";
}

} // namespace
